// orvenda-reports demo-db FILE|URL [--patients N] [--seed S] [--today yyyy-mm-dd] [--replace]
//
// Writes the demo practice into a new SQLite file, or into a PostgreSQL
// database (made if missing). "Today" is the --today option or the fixed
// clock, never the system clock, so one seed and one today give one
// practice on either engine: the server gets the very rows of the file,
// copied from a temporary one.
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "command.h"
#include "common/datetime.h"
#include "platform/db/connection_url.h"
#include "platform/db/copy_database.h"
#include "platform/host/partial_files.h"
#include "platform/practice/demo_practice.h"

namespace orv::app {
namespace {

bool ParseCount(const std::string& text, long long min, long long& out) {
  char* end = nullptr;
  out = std::strtoll(text.c_str(), &end, 10);
  return !text.empty() && *end == '\0' && out >= min;
}

// Writes the practice under a temporary name beside `file` and renames it
// into place when complete. An existing path is refused without --replace
// (a practice, any other file, a folder), and a folder is never replaced,
// so a slip of the file name never deletes anything.
practice::DemoSummary WriteNewFile(const std::string& file, bool replace,
                                   const practice::DemoOptions& options) {
  namespace fs = std::filesystem;
  std::error_code ec;
  fs::file_status st = fs::symlink_status(file, ec);
  if (fs::exists(st)) {
    if (fs::is_directory(fs::status(file, ec)))
      throw std::runtime_error(file + " is a folder; the demo practice needs a file name");
    if (!replace)
      throw std::runtime_error(file + " already exists; give --replace to write over it");
  }
  fs::path target(file);
  if (target.has_parent_path()) fs::create_directories(target.parent_path(), ec);
  fs::path staged = target.parent_path() /
                    ("." + target.filename().string() + ".part-" + std::to_string(getpid()));
  // SQLite keeps a journal beside the file while it writes.
  const std::string journal = staged.string() + "-journal";
  host::TrackPartialFile(staged.string());
  host::TrackPartialFile(journal);
  try {
    practice::DemoSummary s = practice::WriteDemoPracticeFile(staged.string(), options);
    host::RenamePartialFile(staged.string(), target.string(), ec);
    if (ec) throw fs::filesystem_error("cannot write " + file, ec);
    host::RemovePartialFile(journal);
    return s;
  } catch (...) {
    host::RemovePartialFile(staged.string());
    host::RemovePartialFile(journal);
    throw;
  }
}

int RunDemoDb(const std::vector<std::string>& args) {
  std::string path;
  practice::DemoOptions options;
  bool replace = false;
  // Without --today the history ends on the day the demo fixtures use.
  DateTime today = Clock::IsFixed() ? Clock::Today() : DateTime::FromParts(2026, 11, 20);
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string& a = args[i];
    const bool has_value = i + 1 < args.size();
    long long n = 0;
    if (a == "--patients" && has_value) {
      if (!ParseCount(args[++i], 0, n) || n > 10000000) {
        std::fprintf(stderr,
                     "orvenda-reports demo-db: --patients wants a number from 0 (0: the empty "
                     "tables of a new practice)\n");
        return 2;
      }
      options.patients = static_cast<int>(n);
    } else if (a == "--seed" && has_value) {
      if (!ParseCount(args[++i], 0, n)) {
        std::fprintf(stderr, "orvenda-reports demo-db: --seed wants a whole number\n");
        return 2;
      }
      options.seed = static_cast<uint64_t>(n);
    } else if (a == "--today" && has_value) {
      if (!ApplyToday(args[++i])) return 2;
      today = Clock::Today();
    } else if (a == "--replace") {
      replace = true;
    } else if (!a.empty() && a[0] != '-' && path.empty()) {
      path = a;
    } else {
      std::fprintf(stderr, "orvenda-reports demo-db: unexpected argument '%s'\n", a.c_str());
      return 2;
    }
  }
  if (path.empty()) {
    std::fprintf(stderr,
                 "usage: orvenda-reports demo-db FILE|URL [--patients N] [--seed S] [--today "
                 "yyyy-mm-dd] [--replace]\n");
    return 2;
  }
  options.today_year = today.Year();
  options.today_month = today.Month();
  options.today_day = today.Day();
  try {
    const auto t0 = std::chrono::steady_clock::now();
    practice::DemoSummary s;
    if (db::EngineOfUrl(path) == db::EngineKind::PostgreSQL) {
      std::string file = (std::filesystem::temp_directory_path() /
                          ("orvenda-demo-" + std::to_string(getpid()) + ".db"))
                             .string();
      std::filesystem::remove(file);
      try {
        s = practice::WriteDemoPracticeFile(file, options);
        db::CopyOptions copy;
        copy.replace = replace;
        db::CopyDatabase(file, path, copy);
      } catch (...) {
        std::filesystem::remove(file);
        throw;
      }
      std::filesystem::remove(file);
    } else {
      s = WriteNewFile(db::SqlitePath(path), replace, options);
    }
    const double secs =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
    std::printf(
        "%s: %lld patients, %lld invoices, %lld payments, %lld appointments, %lld rows in %.1f s\n",
        db::MaskSecrets(path).c_str(), static_cast<long long>(s.patients),
        static_cast<long long>(s.invoices), static_cast<long long>(s.payments),
        static_cast<long long>(s.appointments), static_cast<long long>(s.rows), secs);
    return 0;
  } catch (const std::exception& e) {
    std::fprintf(stderr, "orvenda-reports demo-db: %s\n", db::MaskSecrets(e.what()).c_str());
    return 1;
  }
}

const CommandRegistrar kRegister(
    {"demo-db", "demo-db FILE|URL [--patients N] [--seed S] [--today yyyy-mm-dd] [--replace]",
     "Writes a made-up dental practice into a new SQLite file or a PostgreSQL database (--replace "
     "to write over one). --patients 0 writes the tables of a new practice with nothing in them.",
     RunDemoDb});

}  // namespace
}  // namespace orv::app

// orvenda-reports copy-db FROM TO [--replace]
//
// Copies a whole practice between engines, e.g. from its SQLite file to a
// PostgreSQL server when the practice moves to several workstations, or back
// to a file for a backup or a support case. The target is written in one
// transaction; a target that already holds tables is refused unless
// --replace is given.
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "command.h"
#include "platform/db/connection_url.h"
#include "platform/db/copy_database.h"
#include "platform/host/partial_files.h"

namespace orv::app {
namespace {

// A bar on a terminal, redrawn in place; a line per quarter otherwise, so a
// log stays short.
void ShowProgress(int percent, const std::string& table) {
  static int last_quarter = -1;
  if (isatty(STDERR_FILENO)) {
    std::string bar(static_cast<size_t>(percent) / 4, '#');
    bar.resize(25, ' ');
    std::fprintf(stderr, "\rcopy-db [%s] %3d%% %-24.24s", bar.c_str(), percent, table.c_str());
    if (percent >= 100) std::fputc('\n', stderr);
  } else if (percent / 25 != last_quarter) {
    last_quarter = percent / 25;
    std::fprintf(stderr, "copy-db: %d%%%s%s\n", percent, table.empty() ? "" : " ", table.c_str());
  }
  std::fflush(stderr);
}

int RunCopyDb(const std::vector<std::string>& args) {
  std::vector<std::string> urls;
  db::CopyOptions options;
  for (const std::string& a : args) {
    if (a == "--replace") {
      options.replace = true;
    } else if (!a.empty() && a[0] == '-') {
      std::fprintf(stderr, "orvenda-reports copy-db: unknown option '%s'\n", a.c_str());
      return 2;
    } else {
      urls.push_back(a);
    }
  }
  if (urls.size() != 2) {
    std::fprintf(stderr, "usage: orvenda-reports copy-db FROM TO [--replace]\n");
    return 2;
  }
  options.progress = ShowProgress;
  // A SQLite file this copy makes is unfinished until the copy ends: a copy
  // stopped by a signal removes it and its journal rather than leave half
  // a practice that the next copy would refuse to replace.
  std::vector<std::string> made;
  if (db::EngineOfUrl(urls[1]) == db::EngineKind::SQLite) {
    std::string path = db::SqlitePath(urls[1]);
    std::error_code ec;
    if (!path.empty() && path != ":memory:" && !std::filesystem::exists(path, ec))
      made = {path, path + "-journal"};
  }
  for (const auto& f : made) host::TrackPartialFile(f);
  struct Forget {
    const std::vector<std::string>& files;
    ~Forget() {
      for (const auto& f : files) host::ForgetPartialFile(f);
    }
  } forget{made};
  try {
    const auto t0 = std::chrono::steady_clock::now();
    db::CopySummary s = db::CopyDatabase(urls[0], urls[1], options);
    const double secs = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
    std::printf("%s: %d tables, %lld rows copied in %.1f s\n", db::MaskSecrets(urls[1]).c_str(), s.tables,
                static_cast<long long>(s.rows), secs);
    return 0;
  } catch (const std::exception& e) {
    std::fprintf(stderr, "\norvenda-reports copy-db: %s\n", db::MaskSecrets(e.what()).c_str());
    return 1;
  }
}

const CommandRegistrar kRegister({"copy-db", "copy-db FROM TO [--replace]",
                                  "Copies a whole practice between databases (SQLite file, PostgreSQL server).",
                                  RunCopyDb});

}  // namespace
}  // namespace orv::app

// What the tests of the command-line host share: running the built program
// with both of its streams, and a scratch folder holding a demo practice.
#pragma once

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <unistd.h>

#include <filesystem>
#include <regex>
#include <string>

#include "support/shell.h"
#include "test_paths.h"

namespace orv::testing {

// The command's standard output and error together: the host writes its
// messages to standard error.
inline ShellResult HostShell(const std::string& cmd) {
  return RunShell(cmd + " 2>&1");
}

inline std::string HostProgram() {
  return ORVENDA_APP;
}

// Changes the practice file `db` behind the host's back, in SQLite's own
// dialect; a statement SQLite refuses fails the test with its message.
inline void EditPractice(const std::string& db, const std::string& sql) {
  sqlite3* h = nullptr;
  char* err = nullptr;
  if (sqlite3_open(db.c_str(), &h) != SQLITE_OK ||
      sqlite3_exec(h, sql.c_str(), nullptr, nullptr, &err) != SQLITE_OK)
    ADD_FAILURE() << db << ": " << (err ? err : sqlite3_errmsg(h)) << "\n" << sql;
  sqlite3_free(err);
  sqlite3_close(h);
}

// A scratch folder named for the suite and this process, with a demo
// practice in it (demo.db); removed by the suite's TearDownTestSuite.
inline std::string MakeDemoFolder(const std::string& tag, int patients, int seed) {
  std::string dir =
      (std::filesystem::temp_directory_path() / ("orv-" + tag + "-" + std::to_string(::getpid())))
          .string();
  std::filesystem::create_directories(dir);
  ShellResult r = HostShell(HostProgram() + " demo-db " + dir + "/demo.db --patients " +
                            std::to_string(patients) + " --seed " + std::to_string(seed) +
                            " --today 2026-11-20");
  EXPECT_EQ(r.status, 0) << r.out;
  return dir;
}

// A suite run against one demo practice in a scratch folder of its own:
// `dir` holds demo.db, made once for the suite and removed after it.
class HostSuite : public ::testing::Test {
 protected:
  // Makes the suite's folder and practice; called from SetUpTestSuite.
  static void MakePractice(const std::string& tag, int patients, int seed) {
    dir = MakeDemoFolder(tag, patients, seed);
  }
  static void TearDownTestSuite() { std::filesystem::remove_all(dir); }
  static std::string Db() { return dir + "/demo.db"; }
  // `name` in the suite's folder.
  static std::string At(const std::string& name) { return dir + "/" + name; }
  // The host with `args`.
  static ShellResult Host(const std::string& args) { return HostShell(HostProgram() + " " + args); }
  // A report on the suite's practice as the front desk runs it, `options`
  // (--out, --split, --printer) before the method and its arguments.
  static ShellResult Report(const std::string& options, const std::string& args) {
    return Host("--db " + Db() + " --today 2026-11-20 --office 1 --user desk " + options + " " +
                args);
  }
  // The single value `sql` reads from the suite's practice.
  static std::string Query(const std::string& sql) {
    std::string out = Host("sql --db " + Db() + " --format tsv " + ShellQuote(sql)).out;
    while (!out.empty() && (out.back() == '\n' || out.back() == '\r')) out.pop_back();
    return out.substr(out.rfind('\n') + 1);
  }
  static std::string PdfText(const std::string& path) {
    return RunShell("pdftotext -layout " + ShellQuote(path) + " -").out;
  }

  static inline std::string dir;
};

// The file a CUPS queue of this machine writes its jobs to; "" for a queue
// that prints on paper or is not there. lpstat names a file device
// "file:///tmp/q.prn" or, in some versions, "///tmp/q.prn".
inline std::string QueueFile(const std::string& queue) {
  std::smatch m;
  const std::string line = RunShell("lpstat -v " + ShellQuote(queue) + " 2>/dev/null").out;
  return std::regex_search(line, m, std::regex(R"(: (?:file:)?/*(/\S+))")) ? m[1].str() : "";
}

}  // namespace orv::testing

// The engine the report tests run on. By default a test's practice is a
// SQLite file. With ORVENDA_TEST_ENGINE=postgresql the same practice is put
// on the test server (ORVENDA_TEST_PG) and the test's connection opens it
// there, so that one set of assertions checks both engines; CTest runs the
// report programs both ways (the second time as "pg.*").
//
// A test keeps building and editing its practice as a SQLite file, in
// SQLite's dialect; PracticeDatabase takes the file to the server:
//   - A practice many tests start from (the demo, the hand-made accounts, a
//     fixture's own rows on top) is copied to the server once, into a
//     template database named after a digest of the file and of the test
//     program (a rebuilt program never clones an older copy). Each test gets
//     its own clone of it (CREATE DATABASE ... TEMPLATE), which takes a
//     third of the time of a copy. Test programs running side by side share
//     the templates: an advisory lock per template lets one of them build it
//     while the others wait, and keeps it from being dropped while it is
//     being cloned.
//   - An edit made during a test is copied over the test's database (its
//     tables dropped and made again in one transaction). Sessions already
//     open on it, the test's connection among them, read the new rows from
//     their next statement on, as they would from the edited file.
// Templates outlive the programs that made them; the last step of the CTest
// run (drop_test_templates) drops them all.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

#include "platform/db/copy_database.h"
#include "support/postgres.h"

namespace orv::testing {

// True when the tests are to run on the server (ORVENDA_TEST_ENGINE=
// postgresql), false for SQLite (unset, empty or "sqlite"). A misspelt
// engine throws rather than quietly testing SQLite again.
inline bool OnServerEngine() {
  const char* value = std::getenv("ORVENDA_TEST_ENGINE");
  std::string engine = value ? value : "";
  if (engine.empty() || engine == "sqlite") return false;
  if (engine == "postgresql") return true;
  throw std::runtime_error("ORVENDA_TEST_ENGINE=" + engine +
                           ": the engines are sqlite and postgresql");
}

// First thing in a fixture's SetUp: a test meant for the server skips, and
// says why, when no server is given. A derived fixture's SetUp returns when
// IsSkipped() after calling its base.
#define ORV_REQUIRE_TEST_ENGINE()                                                           \
  do {                                                                                      \
    if (::orv::testing::OnServerEngine() && ::orv::testing::TestServerUrl().empty())        \
      GTEST_SKIP()                                                                          \
          << "ORVENDA_TEST_PG is not set: ORVENDA_TEST_ENGINE=postgresql runs the test on " \
             "a PostgreSQL server and none is given";                                       \
  } while (0)

// Template databases are "orv_tpl_" and 16 hex digits of their digest; one
// being built has "_" and the builder's pid after that.
inline constexpr const char* kTemplatePrefix = "orv_tpl_";

// The advisory lock of the template of a digest, as the arguments of
// pg_advisory_lock(int, int) (the two-key form, apart from the engine's own
// one-key locks).
inline std::string TemplateLockArgs(const std::string& digest) {
  uint64_t h = std::stoull(digest, nullptr, 16);
  return "(" + std::to_string(static_cast<int32_t>(h >> 32)) + ", " +
         std::to_string(static_cast<int32_t>(h & 0xffffffffu)) + ")";
}

// 16 hex digits of FNV-1a over the file's bytes and the size and time of the
// running program.
inline std::string TemplateDigest(const std::string& file) {
  uint64_t h = 14695981039346656037ull;
  auto add = [&h](const std::string& bytes) {
    for (unsigned char c : bytes) h = (h ^ c) * 1099511628211ull;
  };
  std::ifstream in(file, std::ios::binary);
  add(std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()));
  std::error_code ec;
  std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", ec);
  if (!ec) {
    auto size = std::filesystem::file_size(program, ec);
    auto time = std::filesystem::last_write_time(program, ec);
    add(std::to_string(size) + ":" + std::to_string(time.time_since_epoch().count()));
  }
  char hex[17];
  std::snprintf(hex, sizeof hex, "%016llx", static_cast<unsigned long long>(h));
  return hex;
}

// A test's practice on the engine under test, made from the SQLite file the
// test builds; on the server a database of its own, dropped with this
// object (declare it before the connections that use it).
class PracticeDatabase {
 public:
  PracticeDatabase() = default;
  ~PracticeDatabase() { Drop(); }
  PracticeDatabase(const PracticeDatabase&) = delete;
  PracticeDatabase& operator=(const PracticeDatabase&) = delete;

  // Puts the file's practice on the engine. On SQLite that is the file
  // itself. On the server, `shared` (a practice every test of a fixture
  // starts from) clones the file's template, building it first if no test
  // has; otherwise the file is copied into a new database.
  void Create(const std::string& file, bool shared) {
    file_ = file;
    if (!OnServerEngine()) {
      url_ = "sqlite:" + file;
      return;
    }
    static std::atomic<int> counter{0};
    name_ = "orv_rpt_" + std::to_string(::getpid()) + "_" + std::to_string(counter++);
    url_ = UrlOfDatabase(TestServerUrl(), name_);
    ServerSession server;
    // A database of this name is a leftover of an earlier process of the
    // same pid that did not get to drop it.
    server.Exec("DROP DATABASE IF EXISTS " + name_ + " WITH (FORCE)");
    if (!shared) {
      server.Exec("CREATE DATABASE " + name_);
      db::CopyDatabase(file_, url_);
      return;
    }
    const std::string digest = TemplateDigest(file_);
    const std::string lock = TemplateLockArgs(digest);
    const std::string tpl = kTemplatePrefix + digest;
    server.Exec("SELECT pg_advisory_lock" + lock);
    if (server.Column("SELECT 1 FROM pg_database WHERE datname = '" + tpl + "'").empty()) {
      // Built under another name and renamed when complete, so that a
      // program stopped halfway leaves no template behind.
      const std::string building = tpl + "_" + std::to_string(::getpid());
      server.Exec("DROP DATABASE IF EXISTS " + building + " WITH (FORCE)");
      server.Exec("CREATE DATABASE " + building);
      try {
        db::CopyDatabase(file_, UrlOfDatabase(TestServerUrl(), building));
      } catch (...) {
        server.Exec("DROP DATABASE IF EXISTS " + building + " WITH (FORCE)");
        throw;
      }
      server.Exec("ALTER DATABASE " + building + " RENAME TO " + tpl);
    }
    // Cloned under the shared lock, so others clone at the same time and
    // only the cleanup waits.
    server.Exec("SELECT pg_advisory_lock_shared" + lock);
    server.Exec("SELECT pg_advisory_unlock" + lock);
    server.Exec("CREATE DATABASE " + name_ + " TEMPLATE " + tpl);
  }

  // After the test changed the file: the server's copy takes its content
  // again. A session of the test holding a transaction open would block the
  // copy; it then fails after the lock timeout instead of hanging the test.
  void Refresh() {
    if (name_.empty()) return;
    db::CopyOptions replace;
    replace.replace = true;
    db::CopyDatabase(file_, url_ + "?options=-c%20lock_timeout%3D20s", replace);
  }

  // What a connection opens: "sqlite:" and the file, or the server URL.
  const std::string& url() const { return url_; }

 private:
  void Drop() {
    if (name_.empty()) return;
    try {
      ServerExec("DROP DATABASE IF EXISTS " + name_ + " WITH (FORCE)");
    } catch (const std::exception& e) {
      std::fprintf(stderr, "the test database %s was left on the server: %s\n", name_.c_str(),
                   e.what());
    }
    name_.clear();
  }

  std::string file_, name_, url_;
};

}  // namespace orv::testing

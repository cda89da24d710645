// The PostgreSQL server the tests may use: ORVENDA_TEST_PG holds a libpq URL
// ("postgresql://user@host:port/postgres") of a server where the tests may
// create databases. Without it the PostgreSQL tests skip and say why.
#pragma once

#include <gtest/gtest.h>
#include <libpq-fe.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <stdexcept>
#include <string>

namespace orv::testing {

inline std::string TestServerUrl() {
  const char* url = std::getenv("ORVENDA_TEST_PG");
  return url && *url ? url : "";
}

#define ORV_REQUIRE_POSTGRES()                                                               \
  do {                                                                                       \
    if (::orv::testing::TestServerUrl().empty())                                             \
      GTEST_SKIP() << "ORVENDA_TEST_PG is not set: no PostgreSQL server to test against"; \
  } while (0)

// The server URL with another database (and, if given, another user).
inline std::string UrlOfDatabase(const std::string& server, const std::string& db,
                                 const std::string& userinfo = "") {
  size_t scheme = server.find("://") + 3;
  size_t slash = server.find('/', scheme);
  std::string authority = server.substr(scheme, slash == std::string::npos ? std::string::npos : slash - scheme);
  if (!userinfo.empty()) {
    size_t at = authority.find('@');
    authority = userinfo + "@" + (at == std::string::npos ? authority : authority.substr(at + 1));
  }
  return server.substr(0, scheme) + authority + "/" + db;
}

// Runs SQL on the server's maintenance database; throws with the server's
// message.
inline void ServerExec(const std::string& sql, const std::string& url = TestServerUrl()) {
  PGconn* c = PQconnectdb(url.c_str());
  if (PQstatus(c) != CONNECTION_OK) {
    std::string msg = PQerrorMessage(c);
    PQfinish(c);
    throw std::runtime_error("cannot reach the test server: " + msg);
  }
  PGresult* r = PQexec(c, sql.c_str());
  bool ok = PQresultStatus(r) == PGRES_COMMAND_OK || PQresultStatus(r) == PGRES_TUPLES_OK;
  std::string msg = PQresultErrorMessage(r);
  PQclear(r);
  PQfinish(c);
  if (!ok) throw std::runtime_error(sql + ": " + msg);
}

// A new empty database for one test, dropped again by the destructor.
class FreshPgDatabase {
 public:
  FreshPgDatabase() {
    static std::atomic<int> counter{0};
    name_ = "orv_test_" + std::to_string(::getpid()) + "_" + std::to_string(counter++);
    ServerExec("DROP DATABASE IF EXISTS " + name_);
    ServerExec("CREATE DATABASE " + name_);
    url_ = UrlOfDatabase(TestServerUrl(), name_);
  }
  ~FreshPgDatabase() {
    try {
      ServerExec("DROP DATABASE IF EXISTS " + name_ + " WITH (FORCE)");
    } catch (...) {
    }
  }
  FreshPgDatabase(const FreshPgDatabase&) = delete;
  FreshPgDatabase& operator=(const FreshPgDatabase&) = delete;
  const std::string& url() const { return url_; }
  const std::string& name() const { return name_; }

 private:
  std::string name_, url_;
};

}  // namespace orv::testing

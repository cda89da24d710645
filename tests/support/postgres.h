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
#include <vector>

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

// One session on the server, for work that must stay on one connection
// (advisory locks are held by the session that took them). Throws with the
// server's message.
class ServerSession {
 public:
  explicit ServerSession(const std::string& url = TestServerUrl())
      : conn_(PQconnectdb(url.c_str())) {
    if (PQstatus(conn_) != CONNECTION_OK) {
      std::string msg = PQerrorMessage(conn_);
      PQfinish(conn_);
      throw std::runtime_error("cannot reach the test server: " + msg);
    }
    PQsetNoticeProcessor(conn_, [](void*, const char*) {}, nullptr);
  }
  ~ServerSession() { PQfinish(conn_); }
  ServerSession(const ServerSession&) = delete;
  ServerSession& operator=(const ServerSession&) = delete;

  void Exec(const std::string& sql) { PQclear(Query(sql)); }
  // The first column of every row of a query's result.
  std::vector<std::string> Column(const std::string& sql) {
    PGresult* r = Query(sql);
    std::vector<std::string> out;
    for (int i = 0; i < PQntuples(r); ++i) out.push_back(PQgetvalue(r, i, 0));
    PQclear(r);
    return out;
  }

 private:
  // The result of a successful statement, which the caller clears.
  PGresult* Query(const std::string& sql) {
    PGresult* r = PQexec(conn_, sql.c_str());
    if (PQresultStatus(r) == PGRES_COMMAND_OK || PQresultStatus(r) == PGRES_TUPLES_OK) return r;
    std::string msg = PQresultErrorMessage(r);
    PQclear(r);
    throw std::runtime_error(sql + ": " + msg);
  }
  PGconn* conn_;
};

// Runs SQL on the server's maintenance database; throws with the server's
// message.
inline void ServerExec(const std::string& sql, const std::string& url = TestServerUrl()) {
  ServerSession(url).Exec(sql);
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

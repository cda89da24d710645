// Faults the practice must be able to act on: a money value out of range
// named by table, column and key; a report that would wait on a locked
// table or run without end stopped by the session's limits, with the
// statement in the message; a copy of a database onto itself refused
// whatever the spelling of its URL.
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <string>

#include "common/errors.h"
#include "platform/db/connection.h"
#include "platform/db/copy_database.h"
#include "platform/db/db_error.h"
#include "platform/db/engine.h"
#include "support/postgres.h"
#include "temp_db.h"
#include "support/throws_saying.h"

namespace orv::db {
namespace {

using orv::testing::FreshPgDatabase;
using orv::testing::ServerExec;
using orv::testing::ServerSession;
using testing::TempDb;

CopyOptions Replacing() {
  CopyOptions o;
  o.replace = true;
  return o;
}

using testing::kPracticeSql;

// The description of the ReportError `run` throws, which must be an
// overflow; "" when it throws none.
template <typename F>
std::string OverflowMessage(F run) {
  try {
    run();
  } catch (const ReportError& e) {
    EXPECT_EQ(e.number(), kErrOverflow) << e.description();
    return e.description();
  }
  return "";
}

void ExpectMoneyOverflowNamed(const std::string& url, const std::string& huge) {
  Connection conn(url);
  struct Case {
    const char* name;
    const char* statement;
  } cases[] = {
      {"the value itself", "SELECT ID, Amount FROM InvoicePaymentDetails ORDER BY ID"},
      {"a sum over it",
       "SELECT InvoiceID, SUM(Amount) AS Total FROM InvoicePaymentDetails GROUP BY InvoiceID"},
      {"joined from the invoice",
       "SELECT i.ID, d.Amount FROM Invoices i INNER JOIN InvoicePaymentDetails d ON d.InvoiceID = i.ID"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    std::string message = OverflowMessage([&] { conn.Query(c.statement); });
    EXPECT_NE(message.find("table InvoicePaymentDetails, column Amount, ID 2 holds " + huge),
              std::string::npos)
        << message;
    EXPECT_NE(message.find(c.statement), std::string::npos) << message;
  }
}

TEST(MoneyOutOfRange, SqliteNamesTableColumnAndKey) {
  TempDb db(std::string(kPracticeSql) + "UPDATE InvoicePaymentDetails SET Amount = 1e16 WHERE ID = 2;");
  ExpectMoneyOverflowNamed(db.url(), "10000000000000000");
}

TEST(MoneyOutOfRange, ATotalPastTheRangeSaysSo) {
  TempDb db(kPracticeSql);
  Connection conn(db.url());
  std::string total = OverflowMessage(
      [&] { conn.Query("SELECT SUM(Amount * 100000000000000) AS Total FROM InvoicePaymentDetails"); });
  EXPECT_NE(total.find("the column Total adds up to more than money holds"), std::string::npos)
      << total;
}

TEST(MoneyOutOfRange, PostgresNamesTableColumnAndKey) {
  ORV_REQUIRE_POSTGRES();
  testing::PracticeOnServer server(kPracticeSql);
  // Past Currency's range, inside the server's numeric(19,4).
  ServerExec("UPDATE \"InvoicePaymentDetails\" SET \"Amount\" = 950000000000000 WHERE \"ID\" = 2",
             server.url());
  ExpectMoneyOverflowNamed(server.url(), "950000000000000");
}

// The server's URL with query parameters added.
std::string WithParameters(const std::string& url, const std::string& parameters) {
  return url + (url.find('?') == std::string::npos ? "?" : "&") + parameters;
}

TEST(SessionLimits, TakenFromTheUrlWithDefaults) {
  ORV_REQUIRE_POSTGRES();
  FreshPgDatabase server;
  struct Case {
    const char* name;
    std::string url;
    const char* lock;
    const char* statement;
  } cases[] = {
      {"defaults", server.url(), "10s", "5min"},
      {"beside libpq's own", WithParameters(server.url(), "application_name=desk&lock_timeout=0"),
       "0", "5min"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    auto engine = OpenEngine(c.url);
    auto show = [&](const char* setting) {
      auto stmt = engine->Prepare(std::string("SHOW ") + setting, setting);
      EXPECT_TRUE(stmt->Step());
      return CStr(stmt->Column(0));
    };
    EXPECT_EQ(show("lock_timeout"), c.lock);
    EXPECT_EQ(show("statement_timeout"), c.statement);
  }
  EXPECT_TRUE(orv::testing::ThrowsSaying<DatabaseError>(
      [&] { OpenEngine(WithParameters(server.url(), "lock_timeout=soon")); }, {"lock_timeout must be a duration"}));
}

TEST(SessionLimits, ALockedTableStopsTheReportWithTheStatement) {
  ORV_REQUIRE_POSTGRES();
  testing::PracticeOnServer server(kPracticeSql);
  // Another workstation holds the table (a copy or a repair under way).
  ServerSession other(server.url());
  other.Exec("BEGIN");
  other.Exec("LOCK TABLE \"Invoices\" IN ACCESS EXCLUSIVE MODE");

  Connection conn(WithParameters(server.url(), "lock_timeout=300ms"));
  auto started = std::chrono::steady_clock::now();
  EXPECT_TRUE(orv::testing::ThrowsSaying<DatabaseError>([&] { conn.Query("SELECT COUNT(*) AS n FROM Invoices"); },
                                                   {"lock timeout", "SELECT COUNT(*) AS n FROM Invoices"}));
  EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(5));
  other.Exec("ROLLBACK");

  auto engine = OpenEngine(WithParameters(server.url(), "statement_timeout=200ms"));
  EXPECT_TRUE(orv::testing::ThrowsSaying<DatabaseError>(
      [&] { engine->Prepare("SELECT pg_sleep(3)", "SELECT pg_sleep(3)")->Step(); }, {"statement timeout", "pg_sleep(3)"}));
}

TEST(CopyOntoItself, RefusedUnderAnotherSpellingOfTheFile) {
  TempDb db(kPracticeSql);
  std::filesystem::path link = std::filesystem::temp_directory_path() /
                               ("orvenda_same_" + std::to_string(::getpid()) + ".db");
  std::filesystem::remove(link);
  std::filesystem::create_symlink(db.path(), link);
  std::string dotted = std::filesystem::path(db.path()).parent_path().string() + "/./" +
                       std::filesystem::path(db.path()).filename().string();
  for (const std::string& target : {"sqlite:" + link.string(), dotted}) {
    SCOPED_TRACE(target);
    EXPECT_TRUE(orv::testing::ThrowsSaying<DatabaseError>([&] { CopyDatabase(db.url(), target, Replacing()); },
                                                     {"the same database"}));
  }
  std::filesystem::remove(link);
  Connection conn(db.url());
  EXPECT_EQ(conn.Query("SELECT ID FROM InvoicePaymentDetails")->RowCount(), 5u);
}

TEST(CopyOntoItself, RefusedUnderAnotherSpellingOfTheServerUrl) {
  ORV_REQUIRE_POSTGRES();
  testing::PracticeOnServer server(kPracticeSql);
  std::string other = WithParameters(server.url(), "application_name=elsewhere");
  EXPECT_TRUE(orv::testing::ThrowsSaying<DatabaseError>([&] { CopyDatabase(server.url(), other, Replacing()); },
                                                   {"the same database"}));
  Connection conn(server.url());
  EXPECT_EQ(conn.Query("SELECT ID FROM InvoicePaymentDetails")->RowCount(), 5u);
  // Another database on the same server is no copy onto itself.
  FreshPgDatabase second;
  EXPECT_NO_THROW(CopyDatabase(server.url(), second.url()));
}

}  // namespace
}  // namespace orv::db

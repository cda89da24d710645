// Every list of the receivables family on a practice with no rows at all:
// each prints its heading, its header row and its footer, and nothing fails.
#include <gtest/gtest.h>

#include <sqlite3.h>

#include <filesystem>
#include <functional>

#include "common/datetime.h"
#include "frame/preview_form.h"
#include "frame/reports.h"
#include "platform/db/connection.h"
#include "platform/host/host_services.h"
#include "platform/practice/schema.h"
#include "support/test_engine.h"

namespace orv {
namespace {

TEST(EmptyPractice, EveryReceivablesListPrintsItsFrame) {
  ORV_REQUIRE_TEST_ENGINE();
  Clock::SetFixed(DateTime::FromParts(2026, 11, 20, 9, 0, 0));
  std::string file = (std::filesystem::temp_directory_path() /
                      ("orv-empty-" + std::to_string(::getpid()) + ".db"))
                         .string();
  std::filesystem::remove(file);
  sqlite3* h = nullptr;
  ASSERT_EQ(sqlite3_open(file.c_str(), &h), SQLITE_OK);
  practice::CreateSchema(h);
  sqlite3_close(h);

  testing::PracticeDatabase practice;
  practice.Create(file, /*shared=*/false);
  db::Connection conn(practice.url());
  PreviewForm form;
  form.SetNotifier([](const std::string&) {});
  host::RecordingHost host;
  clsReports r;
  r.Connection(conn);
  r.SetPrintPreview(&form);
  r.SetHostServices(&host);
  DateTime end = DateTime::FromParts(2026, 11, 20);

  struct Case {
    const char* name;
    std::function<void()> run;
  } cases[] = {
      {"rptAccountsReceivable", [&] { r.rptAccountsReceivable("", "ID = 3 OR ID = 5", "", "desk"); }},
      {"rptPatientsWithABalance", [&] { r.rptPatientsWithABalance("desk", end, "ProviderID = 3 OR ProviderID = 5"); }},
      {"rptUnAppliedPayments", [&] { r.rptUnAppliedPayments(end, "desk"); }},
      {"rptPatientAccountStatus", [&] { r.rptPatientAccountStatus("desk", end); }},
      {"rptFamiliesWithABalance", [&] { r.rptFamiliesWithABalance("desk"); }},
      {"rptPatientswithACredit", [&] { r.rptPatientswithACredit("desk"); }},
      {"rptPatientswithOustandingTreatment", [&] { r.rptPatientswithOustandingTreatment("desk"); }},
      {"rptBillingByClient", [&] { r.rptBillingByClient("desk", "0", "", ""); }},
  };
  for (const auto& c : cases) {
    host.messages.clear();
    ASSERT_NO_THROW(c.run()) << c.name;
    EXPECT_TRUE(host.messages.empty()) << c.name << ": " << host.messages.front().prompt;
    std::string text = DocumentText(form.VSP.Document());
    EXPECT_GE(form.VSP.PageCount(), 1) << c.name;
    EXPECT_NE(text.find("Printed On: Nov/20/2026 By: desk"), std::string::npos) << c.name << "\n" << text;
    EXPECT_NE(text.find("Printed by Orvenda - Tessalyne Inc."), std::string::npos) << c.name;
    EXPECT_NE(text.find("Page 1 of "), std::string::npos) << c.name;
  }
  conn.Close();
  std::filesystem::remove(file);
  Clock::UseSystem();
}

}  // namespace
}  // namespace orv

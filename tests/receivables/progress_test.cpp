// The long receivables lists raise Progress as they walk their patients and
// finish at 100, on the demo practice.
#include <gtest/gtest.h>

#include <functional>

#include "support/report_fixture.h"

namespace orv::testing {
namespace {

using ReceivablesProgress = ReportTest;

TEST_F(ReceivablesProgress, LongListsRiseTo100) {
  DateTime end = DateTime::FromParts(2026, 11, 20);
  struct Case {
    const char* name;
    std::function<void()> run;
  } cases[] = {
      {"rptPatientsWithABalance", [&] { reports.rptPatientsWithABalance("desk", end, ""); }},
      {"rptAccountsReceivable", [&] { reports.rptAccountsReceivable("", "", "", "desk"); }},
      {"rptPatientAccountStatus", [&] { reports.rptPatientAccountStatus("desk", end); }},
      {"rptPatientswithACredit", [&] { reports.rptPatientswithACredit("desk"); }},
  };
  for (const auto& c : cases) {
    progress.clear();
    c.run();
    EXPECT_TRUE(host.messages.empty()) << c.name;
    ASSERT_FALSE(progress.empty()) << c.name << " raised no Progress";
    EXPECT_EQ(progress.back(), 100) << c.name;
    for (uint8_t p : progress) EXPECT_LE(p, 100) << c.name;
  }
}

}  // namespace
}  // namespace orv::testing

// Every list of the receivables family on a practice with no rows at all:
// each prints its heading, its header row and its footer, and nothing
// fails; on the account practice the long ones raise Progress as they walk
// their patients and finish at 100 (the provider list's steps are
// aged_receivables_test.cpp's).
#include <gtest/gtest.h>

#include <functional>

#include "accounts/account_fixture.h"
#include "support/text_order.h"

namespace orv::testing {
namespace {

class EmptyPractice : public AccountReportTest {
 protected:
  void SetUp() override {
    SetUpReports(
        "DELETE FROM Patient; DELETE FROM Invoices; DELETE FROM InvoiceDetails; "
        "DELETE FROM InvoicePayments; DELETE FROM InvoicePaymentDetails;");
  }
};

TEST_F(EmptyPractice, EveryReceivablesListPrintsItsFrame) {
  auto& r = reports;
  DateTime end = DateTime::FromParts(2026, 11, 20);
  struct Case {
    const char* name;
    std::function<void()> run;
  } cases[] = {
      {"rptAccountsReceivable",
       [&] { r.rptAccountsReceivable("", "ID = 3 OR ID = 5", "", "desk"); }},
      {"rptPatientsWithABalance",
       [&] { r.rptPatientsWithABalance("desk", end, "ProviderID = 3 OR ProviderID = 5"); }},
      {"rptUnAppliedPayments", [&] { r.rptUnAppliedPayments(end, "desk"); }},
      {"rptPatientAccountStatus", [&] { r.rptPatientAccountStatus("desk", end); }},
      {"rptFamiliesWithABalance", [&] { r.rptFamiliesWithABalance("desk"); }},
      {"rptPatientswithACredit", [&] { r.rptPatientswithACredit("desk"); }},
      {"rptPatientswithOustandingTreatment", [&] { r.rptPatientswithOustandingTreatment("desk"); }},
      {"rptBillingByClient", [&] { r.rptBillingByClient("desk", "0", "", ""); }},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    host.messages.clear();
    ASSERT_NO_THROW(c.run());
    EXPECT_TRUE(host.messages.empty()) << host.messages.front().prompt;
    EXPECT_GE(form.VSP.PageCount(), 1);
    EXPECT_TRUE(HasAll(Text(), {"Printed On: Nov/20/2026 By: desk",
                                "Printed by Orvenda - Tessalyne Inc.", "Page 1 of "}));
  }
}

using ReceivablesProgress = LedgerTest;

TEST_F(ReceivablesProgress, LongListsRiseTo100) {
  DateTime end = DateTime::FromParts(2026, 11, 20);
  struct Case {
    const char* name;
    std::function<void()> run;
  } cases[] = {
      {"rptPatientsWithABalance", [&] { reports.rptPatientsWithABalance("desk", end, ""); }},
      {"rptPatientAccountStatus", [&] { reports.rptPatientAccountStatus("desk", end); }},
      {"rptPatientswithACredit", [&] { reports.rptPatientswithACredit("desk"); }},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    progress.clear();
    c.run();
    EXPECT_TRUE(host.messages.empty());
    ASSERT_FALSE(progress.empty()) << "no Progress raised";
    EXPECT_EQ(progress.back(), 100);
    for (uint8_t p : progress) EXPECT_LE(p, 100);
  }
}

}  // namespace
}  // namespace orv::testing

// The small closing sections on March of the closing practice, with its
// invoices, EDI sends and sign-ups (closing_practice.h).
#include <gtest/gtest.h>

#include <algorithm>

#include "closing/closing_practice.h"

namespace orv::testing {
namespace {

using PeriodSections = ClosingTest;

TEST_F(PeriodSections, IncompleteInvoicesIgnoreTheDates) {
  struct Case {
    const char* name;
    const char* filter;
    std::vector<std::string> invoices;
    const char* complete;
    const char* in_progress;
  } const cases[] = {
      // 1086 and 1004 of the account practice (no provider, by patient)
      // and November's 7005 (Moreau) are incomplete too, far from March.
      {"everyone", "", {"1086", "1004", "7005", "1310"}, nullptr, nullptr},
      {"one provider", "ProviderID = 21", {"1310"},
       "Total Complete Status Treatment($): 100.00",
       "Total In-Progress Status Treatment($): 40.00"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    NewDocument();
    reports.srptIncompleteInvoices(c.filter);
    EXPECT_TRUE(host.messages.empty());
    std::vector<std::string> invoices;
    for (const auto& line : Lines()) {
      const std::string first = line.substr(0, line.find(' '));
      if (first.size() == 4 && std::isdigit(static_cast<unsigned char>(first[0]))) {
        invoices.push_back(first);
      }
    }
    EXPECT_EQ(invoices, c.invoices);
    if (c.complete) {
      EXPECT_EQ(LineWith("1310"), "1310 Ana Ng Ana Ng Ana Ng Singh, Priya Mar/11/2026 140.00");
      EXPECT_EQ(LineWith("Total Complete"), c.complete);
      EXPECT_EQ(LineWith("Total In-Progress"), c.in_progress);
      EXPECT_EQ(LineWith("Grand Total for all"),
                "Grand Total for all Incomplete Invoices($): 140.00");
    }
  }
}

// The write-off of 50 has 20 allocated: only the allocation shows. The
// other adjustments have nothing allocated and show whole.
TEST_F(PeriodSections, AdjustmentReportByChapterAndWithoutTypes) {
  NewDocument();
  reports.srptAdjustmentReport(Mar(10), Mar(12), "", 0);
  EXPECT_TRUE(host.messages.empty());
  EXPECT_EQ(LineWith("1320"), "Mar/11/2026 1320 Ng Billed twice 80.00");
  EXPECT_EQ(LineWith("119 Ng"), "Mar/11/2026 119 Ng Office Half used 20.00");
  // Write-off (not toward paid) comes before the types toward paid.
  EXPECT_LT(Text().find("Write-off"), Text().find("NSF"));
  EXPECT_EQ(LinesWith("Total Adjustments:"),
            (std::vector<std::string>{
                "Total Adjustments: 1 Adjustment Type Total ($): 80.00",
                "Total Adjustments: 1 Adjustment Type Total ($): 20.00",
                "Total Adjustments: 1 Adjustment Type Total ($): -300.00",
                "Total Adjustments: 1 Adjustment Type Total ($): -20.00",
                "Total Adjustments: 1 Adjustment Type Total ($): -30.00"}));
  // Nobody took in the other adjustments: a provider's filter keeps only
  // what reached that provider's lines.
  NewDocument();
  reports.srptAdjustmentReport(Mar(10), Mar(12), "ID = 21", 0);
  EXPECT_EQ(LineWith("1320"), "Mar/11/2026 1320 Ng Billed twice 80.00");
  EXPECT_EQ(LineWith("119 Ng"), "Mar/11/2026 119 Ng Office Half used 20.00");
  EXPECT_EQ(LineWith("NSF"), "");

  Exec("DELETE FROM PaymentTypes;");
  NewDocument();
  reports.srptAdjustmentReport(Mar(10), Mar(12), "", 0);
  EXPECT_EQ(LineWith("1320"), "Mar/11/2026 1320 Ng Billed twice 80.00");
  EXPECT_EQ(LinesWith("Total Adjustments:").size(), 1u);
}

TEST_F(PeriodSections, EdiTransactionsAndTheirShares) {
  reports.rptEDITransactions(Mar(10), Mar(12), "Ana");
  EXPECT_TRUE(host.messages.empty());
  EXPECT_EQ(LineWith("Starting:"), "Starting: Mar/10/2026    Ending: Mar/12/2026");
  // By sequence number; the send of the 12th at 9:00 counts on its day.
  EXPECT_EQ(LineAfter("Date Posted Patient"),
            "Mar/12/2026 Claire Tremblay Predetermination 000012 3 Acknowledgement Rejected");
  EXPECT_EQ(LineAfter("Predetermination 000012"),
            "Mar/11/2026 Priya Singh Claim Yes 000011 7 EOB Accepted");
  EXPECT_EQ(LineWith("Unknown Transaction"), "");
  EXPECT_EQ(LineWith("EOB 1"), "EOB 1 50.00%");
  EXPECT_EQ(LineWith("Acknowledgment"), "Acknowledgment 1 50.00%");
  EXPECT_EQ(LineWith("Rejection"), "Rejection 1 50.00%");
  EXPECT_EQ(LineWith("Total Transactions"), "Total Transactions 2 100.00%");
}

// Wherever the list ends on a page, its four lines of counts stand together
// on one page with the list's last row.
TEST_F(PeriodSections, EdiCountsStayTogether) {
  const int kept = ExpectKeptTogether(
      60, 30, [&] { reports.srptEDITransactions(Mar(10), Mar(12), "Ana"); },
      [](const std::string& l) { return StartsWith(l, "Mar/11/2026 Priya Singh"); },
      [](const std::string& l) {
        return StartsWith(l, "EOB ") || StartsWith(l, "Acknowledgment ") ||
               StartsWith(l, "Rejection ") || StartsWith(l, "Total Transactions ");
      });
  EXPECT_GT(kept, 2);
}

TEST_F(PeriodSections, NewPatientsOfThePeriod) {
  NewDocument();
  reports.srptNewPatientReport(Mar(1), Mar(31));
  EXPECT_TRUE(host.messages.empty());
  EXPECT_NE(LineWith("Priya"), "");
  EXPECT_NE(LineWith("Mar/11/2026 Internet Website Near work"), "");
  EXPECT_EQ(LineWith("Seamus"), "");
  EXPECT_EQ(LineWith("New Patients:"), "New Patients: 1");
}

}  // namespace
}  // namespace orv::testing

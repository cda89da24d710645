// The closing runs on the demo practice (support/report_fixture.h), whose
// recent months carry reallocations, cancellations in later months,
// invoices without lines, reversed codes, write-offs and interest: both
// packages with every section read and never write, the reconciliation
// adds pages at the end without changing those before, and the receivable
// of every provider read at once is what it is read one at a time.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <regex>
#include <string>

#include "closing/opening_receivable.h"
#include "support/report_fixture.h"

namespace orv::testing {
namespace {

class ClosingOnDemo : public ReportTest {
 protected:
  std::string FileBytes() const {
    std::ifstream in(db_file, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  }
  void MonthEnd() {
    reports.rptMonthEndReport(true, true, true, true, true, true, true,
                              DateTime::FromParts(2026, 10, 1), DateTime::FromParts(2026, 10, 31),
                              0, "desk", "ProviderID = 2 OR ProviderID = 5", false, true, true,
                              true, true, "", true);
  }
  // The page's text with its page count taken out of "Page p of n".
  std::string PageWithoutCount(int page) const {
    return std::regex_replace(PageText(page), std::regex("Page ([0-9]+) of [0-9]+"), "Page $1");
  }
};

TEST_F(ClosingOnDemo, ReadOnlyAndTheReconciliationOnlyAddsPages) {
  reports.OfficeID = 1;
  const std::string before = FileBytes();
  reports.rptDayEndReport(true, true, true, true, true, true, true, true, true, true, true,
                          DateTime::FromParts(2026, 11, 16), DateTime::FromParts(2026, 11, 16), 0,
                          "desk", "ProviderID = 2 OR ProviderID = 5", false, "", true);
  EXPECT_TRUE(host.messages.empty()) << host.messages[0].prompt;

  MonthEnd();
  EXPECT_TRUE(host.messages.empty()) << host.messages[0].prompt;
  const int pages = form.VSP.PageCount();
  std::vector<std::string> plain;
  for (int p = 1; p <= pages; ++p) plain.push_back(PageWithoutCount(p));
  EXPECT_EQ(Text().find("Receivables Reconciliation"), std::string::npos);

  host::AppSettings().Override("Settings", "MonthEndReconciliation", "True");
  MonthEnd();
  host::AppSettings().Override("Settings", "MonthEndReconciliation", "False");
  EXPECT_TRUE(host.messages.empty()) << host.messages[0].prompt;
  ASSERT_GT(form.VSP.PageCount(), pages);
  for (int p = 1; p <= pages; ++p) EXPECT_EQ(PageWithoutCount(p), plain[p - 1]) << "page " << p;
  EXPECT_NE(PageText(pages + 1).find("Receivables Reconciliation"), std::string::npos);

  EXPECT_EQ(FileBytes(), before) << "a package wrote to the practice's file";
}

TEST_F(ClosingOnDemo, ReceivableReadForEveryProviderAtOnceMatchesOneProviderAtATime) {
  // The provider summary reads every provider's receivable in one grouped
  // read; each must be what the filtered read gives for that provider
  // alone, for both readings of payments (the second splits the money
  // between the lines' providers and the providers who took it in).
  const DateTime start = DateTime::FromParts(2026, 10, 1), end = DateTime::FromParts(2026, 10, 31);
  for (bool by_allocated : {true, false}) {
    SCOPED_TRACE(by_allocated ? "allocated" : "all");
    const auto grouped = closing::OpeningReceivableBy(
        reports, start, end, {"1 = 1", "1 = 1"}, by_allocated, "InvoiceDetails.ProviderID",
        "InvoicePayments.InitialProviderID");
    int nonzero = 0;
    for (int id = 1; id <= 15; ++id) {
      SCOPED_TRACE("provider " + std::to_string(id));
      const std::string key = std::to_string(id);
      Currency opening, closing;
      reports.srptOpeningReceivable(start, end,
                                    {"InvoiceDetails.ProviderID =" + key, "InitialProviderID=" + key},
                                    by_allocated, opening, closing);
      const auto it = grouped.find(key);
      EXPECT_EQ(it == grouped.end() ? Currency() : it->second.Opening, opening);
      EXPECT_EQ(it == grouped.end() ? Currency() : it->second.Closing, closing);
      nonzero += !closing.IsZero();
    }
    EXPECT_GT(nonzero, 2);
  }
}

}  // namespace
}  // namespace orv::testing

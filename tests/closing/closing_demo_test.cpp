// The closing sections on the demo practice (support/report_fixture.h),
// whose recent months carry reallocations, cancellations in later months,
// invoices without lines, reversed codes, write-offs and interest: every
// view and payment reading runs without a trap, and the figures that two
// different paths compute agree.
#include <gtest/gtest.h>

#include "closing/closing_fixture.h"
#include "closing/opening_receivable.h"
#include "common/common_functions.h"
#include "support/report_fixture.h"

namespace orv::testing {
namespace {

class ClosingOnDemo : public ReportTest {
 protected:
  void Fresh() {
    form.VSP.KillDoc();
    form.VSP.StartDoc();
  }
  std::string Last(const std::string& label) const {
    std::string found;
    const std::string text = Text();
    for (size_t at = text.find(label); at != std::string::npos; at = text.find(label, at + 1)) {
      found = text.substr(at, text.find('\n', at + 1) - at);
    }
    return found;
  }
  static std::string Figure(const std::string& line) { return line.substr(line.rfind(' ') + 1); }
};

TEST_F(ClosingOnDemo, SummaryRowsReconcileInEveryViewAndReading) {
  const DateTime start = DateTime::FromParts(2026, 10, 1), end = DateTime::FromParts(2026, 10, 31);
  for (const char* filter : {"", "ID = 2", "ID = 3 OR ID = 5", "ID = 5 OR ID = 6 OR ID = 7"}) {
    for (int16_t view = 0; view <= 3; ++view) {
      for (bool by_allocated : {true, false}) {
        SCOPED_TRACE(std::string("filter '") + filter + "' view " + std::to_string(view) +
                     (by_allocated ? " allocated" : " all"));
        Fresh();
        reports.srptSummaryAnalysis(start, end, filter, view, "Check", by_allocated);
        ASSERT_TRUE(host.messages.empty());
        Currency opening, closing;
        reports.srptOpeningReceivable(start, end, SummaryFilters(filter, view), by_allocated,
                                      opening, closing);
        EXPECT_EQ(Figure(Last("- - - - - - - - ")), reports.Common().MyFormat(opening, "Currency"));
        EXPECT_EQ(Figure(SummaryTotalRow(Text())), reports.Common().MyFormat(closing, "Currency"));
      }
    }
  }
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

TEST_F(ClosingOnDemo, DetailedAnalysisRunsInEveryViewAndItsAccountsAddUp) {
  const DateTime start = DateTime::FromParts(2026, 10, 1), end = DateTime::FromParts(2026, 10, 31);
  std::string everyone;
  for (int id = 2; id <= 15; ++id) {
    everyone += (everyone.empty() ? "" : " OR ") + std::string("ProviderID = ") + std::to_string(id);
  }
  for (int16_t view = 0; view <= 3; ++view) {
    for (bool by_allocated : {true, false}) {
      SCOPED_TRACE("view " + std::to_string(view) + (by_allocated ? " allocated" : " all"));
      Fresh();
      reports.srptDetailedAnalysis(start, end, view, "desk", everyone, by_allocated);
      ASSERT_TRUE(host.messages.empty()) << host.messages.front().prompt;
      // The account summary reads the same payment rows as the chapter.
      EXPECT_EQ(Figure(Last("Net New Payments")), Figure(Last("\nTotal ")));
      // Net total: the overall total less the write-offs by their size.
      EXPECT_NE(Last("Net Total:"), "");
    }
  }
}

}  // namespace
}  // namespace orv::testing

// The receivable of every provider of the demo practice
// (support/report_fixture.h), whose recent months carry reallocations,
// cancellations in later months, invoices without lines, reversed codes,
// write-offs and interest: read for all at once and one at a time.
#include <gtest/gtest.h>

#include "closing/opening_receivable.h"
#include "support/report_fixture.h"

namespace orv::testing {
namespace {

using ClosingOnDemo = ReportTest;

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

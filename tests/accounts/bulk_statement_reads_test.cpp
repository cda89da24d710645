// Bulk statements read the open invoices of many accounts a statement; an
// invoice whose patient and holder fall in two different reads must still
// print once on each page that lists it, and none may fall between reads.
#include <gtest/gtest.h>

#include <cstddef>
#include <string>

#include "accounts/account_model.h"
#include "support/report_fixture.h"
#include "support/text_order.h"

namespace orv::testing {
namespace {

// Two families. Ames: holder Hal (90041) and Ivy (90042). Birk: holder Joe
// (90043), who names Ivy as his secondary holder, so Ivy's invoice is on
// both pages. The keys read are 90041, 90042 and 90043: one a read, Ivy's
// invoice comes in the first (by her holder) and the second (by herself).
// The families' credits are read the same way: Ivy's 5.00 on account is
// in both families, Joe's 2.00 in his, Hal's cheque dated after today in
// neither.
//   Ames: 590141 Hal 10.00, 590142 Ivy 20.00 -> 30.00 less 5.00 = 25.00
//   Birk: 590142 Ivy 20.00, 590143 Joe 40.00 -> 60.00 less 7.00 = 53.00
using BulkStatementReads = ReportTest;

TEST_F(BulkStatementReads, EachInvoiceAndCreditOncePerFamilyWhateverTheReadSize) {
  RawExec(R"sql(
INSERT INTO Patient (ID, FirstName, LastName, FullName, PrimaryHolderID, SecondaryHolderID) VALUES
 (90041, 'Hal', 'Ames', 'Ames, Hal', 90041, NULL),
 (90042, 'Ivy', 'Ames', 'Ames, Ivy', 90041, NULL),
 (90043, 'Joe', 'Birk', 'Birk, Joe', 90043, 90042);
INSERT INTO Invoices (ID, [Invoice#], PatientID, [Date], [Time], [Complete?], InvoiceTotal) VALUES
 (90141, 590141, 90041, '2026-11-10 00:00:00', 600, 1, 10.00),
 (90142, 590142, 90042, '2026-11-11 00:00:00', 600, 1, 20.00),
 (90143, 590143, 90043, '2026-11-12 00:00:00', 600, 1, 40.00);
INSERT INTO InvoicePayments (ID, PatientID, Value, TotalAllocated, TotalToCredit, [Date], CheckDate,
  IsInsurance) VALUES
 (90241, 90042, 5.00, 0, 5.00, '2026-11-01 00:00:00', '2026-11-01 00:00:00', 0),
 (90242, 90043, 2.00, 0, 2.00, '2026-11-01 00:00:00', '2026-11-01 00:00:00', 0),
 (90243, 90041, 7.00, 0, 7.00, '2026-11-01 00:00:00', '2026-12-01 00:00:00', 0);
UPDATE OfficeInformation SET StatementFooter = NULL, Logo = NULL WHERE ID = 1;
)sql");
  reports.OfficeID = 1;
  // Put back for the tests that follow, however this one ends.
  struct Restore {
    size_t kept = BulkStatementKeysPerRead;
    ~Restore() { BulkStatementKeysPerRead = kept; }
  } restore;
  for (const size_t keys : {size_t{1}, size_t{2}, size_t{500}}) {
    SCOPED_TRACE("keys per read " + std::to_string(keys));
    BulkStatementKeysPerRead = keys;
    reports.rptBulkStatements("Patient.ID IN (90041, 90042, 90043)", "", true, "");
    ASSERT_EQ(form.VSP.PageCount(), 2) << Text();
    const std::string ames = PageText(1), birk = PageText(2);
    EXPECT_TRUE(HasAll(ames, {"Hal Ames\n90041", "590141 Nov/10/2026 Ames, Hal 10.00 0.00 10.00",
                              "590142 Nov/11/2026 Ames, Ivy 20.00 0.00 20.00", "30.00 0.00 0.00 0.00 25.00\n"}))
        << ames;
    EXPECT_TRUE(HasAll(birk, {"Joe Birk\n90043", "590142 Nov/11/2026 Ames, Ivy 20.00 0.00 20.00",
                              "590143 Nov/12/2026 Birk, Joe 40.00 0.00 40.00", "60.00 0.00 0.00 0.00 53.00\n"}))
        << birk;
    EXPECT_EQ(birk.find("590142"), birk.rfind("590142")) << birk;
    EXPECT_EQ(birk.find("590141"), std::string::npos) << birk;
  }
}

}  // namespace
}  // namespace orv::testing

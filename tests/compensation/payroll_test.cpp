// Payroll on the hand-made practice (compensation_fixture.h): both pay
// forms to the cent, the fall-backs of a missed punch-out, the split
// markers, and what the list of employees may hold.
#include <gtest/gtest.h>

#include "compensation/compensation_fixture.h"
#include "support/throws_saying.h"
#include "support/text_order.h"

namespace orv::testing {
namespace {

using PayrollTest = CompensationTest;

const DateTime kStart = DateTime::FromParts(2026, 10, 1);
const DateTime kEnd = DateTime::FromParts(2026, 10, 31);

TEST_F(PayrollTest, HourlyFormCountsMinutesWithTheFallBacksOfAMissedPunchOut) {
  reports.rptPayroll("ID = 20", kStart, kEnd, "Lead");
  ExpectLines({
      {"a full punch", "Oct/1/2026 8:00 AM 12:37 PM 4 Hours 37 Minutes", true},
      {"no punch-out, no Saturday for her: the office closes at 1", "Oct/3/2026 9:00 AM 1:00 PM 4 Hours 0 Minutes", true},
      {"no punch-out on Monday: her own day ends at 4", "Oct/5/2026 9:00 AM 4:00 PM 7 Hours 0 Minutes", true},
      {"no punch-out and nobody closes on Sunday", "Oct/4/2026", false},
      {"a shift over midnight earns nothing", "Oct/9/2026", false},
      {"a punch before the period", "Sep/30/2026", false},
      {"the minutes of the period", "Total Time Worked: 15 Hours 37 Minutes", true},
      {"the rate", "@ $20.00/Hour", true},
      // 20 x 937 / 60 = 312.333...; hours rounded first (15.62) would give 312.40.
      {"the pay, never rounded before it is formatted", "Total Payable: $312.33", true},
      {"no collections form", "Payments Made", false},
  });
}

TEST_F(PayrollTest, CollectionsFormWorksTheDentistsShareToTheCentSplitBySplit) {
  reports.rptPayroll("ID = 21", kStart, kEnd, "Lead");
  const std::string text = Text();
  const char* const lines[] = {
      // 600 (seen twice by the join, counted once) + 300 + 100 of a type
      // whose adjustment flag is unset; the September payment stays out.
      "Total Paid: 1,000.00",
      // |-30| + |20|; the courtesy that does not reduce what was paid stays out.
      "Total Adjusted: 50.00",
      // The 99111 line; "-9911" is no lab.
      "Total deductions due to labs and expenses: 120.00",
      // 80.00 at 40 % + 25.00 at "$25" + 0 at "15"; the line with no split,
      // her own invoice and the cancelled one stay out.
      "Total Overseen: 105.00",
      "Payment Sub Total: 830.00",
      "Payment Grand Total @ 35%: $290.50",
      "+ Total from Overseen Work: $105.00",
      "Payable to Dentist: $395.50",
      // The misspelled header the office knows.
      "Patient Doctor Type Acount Payment Note Paid($)",
  };
  for (const char* line : lines) EXPECT_NE(text.find(line), std::string::npos) << line << "\n" << text;
  // The detail seen twice prints once, with its note; its account cell
  // lists what the accounts query finds for that ID, both copies.
  EXPECT_EQ(text.find("600.00"), text.rfind("600.00")) << text;
  EXPECT_TRUE(
      HasAll(text, {"Ava Stone 21 Cash 2,2 Front desk 600.00",
                    // Adjustments print as money taken back: -30 shows as 30.00, 20 as -20.00.
                    "Write-off Goodwill Ava Stone 30.00", "Write-off Reversed Ava Stone -20.00",
                    "5001 99111 Stone, Ava Oct/02/2026 -120.00"}));
  // Each split marker pays its own way: a percent of the line, a fixed sum
  // whatever the line cost, nothing without a marker. Patient 2's name
  // holds a "|": it stays one cell.
  EXPECT_TRUE(HasAll(text, {"6001 Ben | Cole 22 Oct/03/2026 $200.00 40% $80.00",
                            "6001 Ben | Cole 22 Oct/03/2026 $60.00 $25 $25.00",
                            "6001 Ben | Cole 22 Oct/03/2026 $40.00 15 $0.00"}));
  EXPECT_EQ(text.find("05101"), std::string::npos) << "a line with no split is skipped";
  EXPECT_EQ(text.find("6002"), std::string::npos) << "her own work is no overseen work";
  EXPECT_EQ(text.find("6003"), std::string::npos) << "a cancelled invoice";
}

TEST_F(PayrollTest, SplitWithoutCommissionIsPaidOnOverseenWorkAloneRoundedHalfToEven) {
  reports.rptPayroll("ID = 23", kStart, kEnd, "Lead");
  const std::string text = Text();
  // With commission 0 his own work counts too; 4.005 + 5.00 is kept to the
  // cent half to even at each step: 4.00, then 9.00.
  EXPECT_TRUE(HasAll(text, {"Total Overseen: 9.00", "Payment Grand Total @ 0%: $0.00",
                            "Payable to Dentist: $9.00", "No Adjustments", "No Labs to Deduct"}));
  EXPECT_EQ(text.find("Times In/Out"), std::string::npos) << "one form only";
}

TEST_F(PayrollTest, CollectionsFormAfterAnHourlyOneStartsAPage) {
  reports.rptPayroll("ID = 21 OR ID = 20 OR ID = 23", kStart, kEnd, "Lead");
  // Dora's form opens the run on page 1; Hana's hourly form follows on the
  // same paper; Eli's collections form, after an hourly one, starts a page.
  int dora = 0, hana = 0, eli = 0;
  for (int p = 1; p <= Pages(); ++p) {
    const std::string page = PageText(p);
    if (!dora && page.find("Dora Dent") != std::string::npos) dora = p;
    if (!hana && page.find("Hana Hourly") != std::string::npos) hana = p;
    if (!eli && page.find("Eli Oakes") != std::string::npos) eli = p;
  }
  ASSERT_GT(dora, 0);
  ASSERT_GT(hana, 0);
  ASSERT_GT(eli, 0);
  EXPECT_EQ(dora, 1);
  EXPECT_GE(hana, dora);
  EXPECT_GT(eli, hana);
  EXPECT_EQ(PageText(eli).find("Hana Hourly"), std::string::npos);
}

TEST_F(PayrollTest, EmployeeListsOfEveryShape) {
  struct Case {
    const char* name;
    const char* list;
    const char* error;  // part of the error, or nullptr for a good run
  };
  const Case cases[] = {
      {"an ID the practice does not know", "ID = 99", "no employee with ID 99"},
      // The blank after "=" is part of the form: without it the first digit
      // is lost and 21 reads as 1.
      {"no blank after the equals sign", "ID =21", "no employee with ID 1 (from \"ID =21\"); write each ID as"},
      {"an empty list prints the heading alone", "", nullptr},
  };
  for (const Case& c : cases) {
    const std::string error = ErrorOf([&] { reports.rptPayroll(c.list, kStart, kEnd, "Lead"); });
    if (c.error) {
      EXPECT_NE(error.find(c.error), std::string::npos) << c.name << ": " << error;
    } else {
      EXPECT_EQ(error, "(no error)") << c.name;
      EXPECT_NE(Text().find("Payroll Report"), std::string::npos) << c.name;
      EXPECT_EQ(Text().find("Payments Made"), std::string::npos) << c.name;
    }
  }
}

TEST_F(PayrollTest, AccountListJoinsEveryAccountAndKeepsWhatItHadOnFailure) {
  const std::string sql =
      "select AccountID from invoicepayments inner join invoicepaymentDetails on invoicepayments.ID = "
      "invoicepaymentDetails.InvoicePaymentID where invoicepaymentDetails.ID = ";
  struct Case {
    const char* name;
    std::string sql;
    int32_t id;
    const char* list;
  };
  const Case cases[] = {
      {"no row", sql, 1, ""},
      {"a failing statement", "select AccountID from NoSuchTable where ID = ", 1, ""},
  };
  for (const Case& c : cases) EXPECT_EQ(reports.ReturnAccountList(c.sql, c.id), c.list) << c.name;
}

}  // namespace
}  // namespace orv::testing

// Bulk statements on a copy of the demo practice with hand-made accounts
// (IDs from 90001), each run filtered down to those accounts.
#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "frame/surface/surface.h"
#include "platform/db/recordset.h"
#include "platform/render/display_list.h"
#include "support/report_fixture.h"
#include "support/text_order.h"

namespace orv::testing {
namespace {

// Today is 2026-11-20; interest rate 0, so every invoice stands for its
// stored total.
//
// 90011 Paul Gagne (invoice, age in days, total, paid -> balance, bucket):
//   590111 Nov/10  10  100.00  40.00 ->  60.00  current
//   590116 Oct/21  30   10.00   0    ->  10.00  current (30 days is current)
//   590112 Oct/05  46   80.00   0    ->  80.00  > 30
//   590117 Sep/21  60   20.00   0    ->  20.00  > 30 (60 days is > 30)
//   590113 Sep/01  80   50.00   0    ->  50.00  > 60
//   590118 Aug/22  90   12.00   0    ->  12.00  > 60 (90 days is > 60)
//   590114 Jul/01 142   25.50   0    ->  25.50  > 90
//   590115 Oct/01       30.00  30.00  fully paid: no row
//   590119 in progress, 590120 cancelled: not listed
//   Payments: 40.00 on 590111, 30.00 on 590115, 5.00 on account.
//   Credit = (40 + 30 + 5) - (40 + 30) = 5.00.
//   Sums: current 60 + 10 = 70.00; > 30 80 + 20 = 100.00; > 60 50 + 12 =
//   62.00; > 90 25.50; balances 257.50; Total Due 257.50 - 5.00 = 252.50.
// 90012 Rita Zero: 590121 50.00 paid 50.00 -> owes exactly 0.
// 90013 Ned Empty: no invoices at all.
class BulkStatements : public ReportTest {
 protected:
  void SetUp() override {
    // The demo office's logo makes the letterhead four inches tall, which
    // pushes the age table of even a short statement onto a second page;
    // most tests use the office without it, AgeTableStaysPinnedUnderALogo
    // keeps it (office 2).
    ReportTest::SetUpPractice(R"sql(
INSERT INTO Patient (ID, FirstName, LastName, FullName, Address, PrimaryHolderID) VALUES
 (90011, 'Paul', 'Gagne', 'Gagne, Paul', '5 Elm St' || char(13) || char(10) || 'Hull, QC', 90011),
 (90012, 'Rita', 'Zero', 'Zero, Rita', NULL, 90012),
 (90013, 'Ned', 'Empty', 'Empty, Ned', NULL, NULL);
INSERT INTO Invoices (ID, [Invoice#], PatientID, [Date], [Time], [Complete?], Cancelled, InvoiceTotal) VALUES
 (90111, 590111, 90011, '2026-11-10 00:00:00', 600, 1, NULL, 100.00),
 (90116, 590116, 90011, '2026-10-21 00:00:00', 600, -1, NULL, 10.00),
 (90112, 590112, 90011, '2026-10-05 00:00:00', 600, 1, NULL, 80.00),
 (90117, 590117, 90011, '2026-09-21 00:00:00', 600, 1, NULL, 20.00),
 (90113, 590113, 90011, '2026-09-01 00:00:00', 600, 1, NULL, 50.00),
 (90118, 590118, 90011, '2026-08-22 00:00:00', 600, 1, NULL, 12.00),
 (90114, 590114, 90011, '2026-07-01 00:00:00', 600, 1, NULL, 25.50),
 (90115, 590115, 90011, '2026-10-01 00:00:00', 600, 1, NULL, 30.00),
 (90119, 590119, 90011, '2026-11-01 00:00:00', 600, 0, NULL, 15.00),
 (90120, 590120, 90011, '2026-11-01 00:00:00', 600, 1, 1, 15.00),
 (90121, 590121, 90012, '2026-11-01 00:00:00', 600, 1, NULL, 50.00);
INSERT INTO InvoicePayments (ID, PatientID, Value, TotalAllocated, TotalToCredit, [Date], CheckDate,
  IsInsurance) VALUES
 (90211, 90011, 40.00, 40.00, 0, '2026-11-11 00:00:00', '2026-11-11 00:00:00', 0),
 (90212, 90011, 30.00, 30.00, 0, '2026-10-02 00:00:00', '2026-10-02 00:00:00', 0),
 (90213, 90011, 5.00, 0, 5.00, '2026-10-02 00:00:00', '2026-10-02 00:00:00', 0),
 (90214, 90012, 50.00, 50.00, 0, '2026-11-02 00:00:00', '2026-11-02 00:00:00', 0);
INSERT INTO InvoicePaymentDetails (ID, InvoicePaymentID, InvoiceID, Amount, [Date]) VALUES
 (90411, 90211, 90111, 40.00, '2026-11-11 00:00:00'),
 (90412, 90212, 90115, 30.00, '2026-10-02 00:00:00'),
 (90414, 90214, 90121, 50.00, '2026-11-02 00:00:00');
UPDATE OfficeInformation SET StatementFooter = NULL WHERE ID = 1;
UPDATE OfficeInformation SET Logo = NULL WHERE ID = 1;
)sql");
    reports.OfficeID = 1;
  }

  // The text runs of one page (from 1) whose text is exactly `what`.
  std::vector<render::TextRun> Runs(int page, const std::string& what) const {
    std::vector<render::TextRun> out;
    for (const auto& item : form.VSP.Document().pages.at(page - 1).items) {
      if (const auto* run = std::get_if<render::TextRun>(&item); run && run->text == what)
        out.push_back(*run);
    }
    return out;
  }
  // The lowest top of any run on the page above `limit`.
  double LowestTopAbove(int page, double limit) const {
    double lowest = 0;
    for (const auto& item : form.VSP.Document().pages.at(page - 1).items) {
      if (const auto* run = std::get_if<render::TextRun>(&item)) {
        double top = run->top.value();
        if (top < limit && top > lowest) lowest = top;
      }
    }
    return lowest;
  }
  bool LastStatementSet(int id) {
    return !ValueOf("SELECT LastStatement FROM Patient WHERE ID = " + std::to_string(id)).IsNull();
  }
};

TEST_F(BulkStatements, InvoiceRowsAgeSumsAndTotalDue) {
  reports.rptBulkStatements("Patient.ID = 90011", "", false, "November statements");
  std::string text = Text();
  ASSERT_EQ(form.VSP.PageCount(), 1) << text;
  EXPECT_EQ(form.ShowCount(), 1);
  EXPECT_EQ(form.VSP.DocName(), "Patient Statement");
  // The number and date sit in the middle of the name and address cell.
  EXPECT_TRUE(HasAll(
      Text(), {"Statement\nName Account # Date\nPaul Gagne\n5 Elm St 90011 Nov/20/2026\nHull, QC",
               "Date Patient's Name Total($) Paid($) Balance($)\n",
               "590111 Nov/10/2026 Gagne, Paul 100.00 40.00 60.00\n",
               "590114 Jul/1/2026 Gagne, Paul 25.50 0.00 25.50\n"}));
  // Paid in full, in progress and cancelled invoices print no row.
  EXPECT_TRUE(HasNone(Text(), {"590115", "590119", "590120"}));
  // The invoices print oldest first.
  EXPECT_LT(text.find("590114"), text.find("590111"));

  EXPECT_TRUE(HasAll(Text(), {"Current > 30 Days > 60 Days > 90 Days Total Due($)\n"
                              "70.00 100.00 62.00 25.50 252.50\n",
                              // The fixed note where the office has none, and the run's header and
                              // the page stamp at the foot.
                              "Note: We require 48 hours notice to reschedule appointments.",
                              "November statements", "Page 1 of 1"}));
  EXPECT_TRUE(LastStatementSet(90011));
  EXPECT_FALSE(progress.empty());
  EXPECT_EQ(progress.back(), 100);
}

TEST_F(BulkStatements, InterestChargedOnAnInvoiceShowsInItsTotalCell) {
  // 590122 (Nov/19, 1.50) charges interest on 590111. 590111's total cell
  // spells it out: 100.00 + 1.50 = 101.50; its balance stays 100.00 - 40.00
  // = 60.00, and 590122 is a row of its own. Current 70.00 + 1.50 = 71.50;
  // Total Due 252.50 + 1.50 = 254.00.
  RawExec(
      "INSERT INTO Invoices (ID, [Invoice#], PatientID, [Date], [Time], [Complete?], InvoiceTotal, "
      "InterestInvoiceID) VALUES (90122, 590122, 90011, '2026-11-19 00:00:00', 600, 1, 1.50, "
      "90111)");
  reports.rptBulkStatements("Patient.ID = 90011", "", false, "");
  // The other cells sit in the middle of the three-line cell.
  EXPECT_TRUE(HasAll(
      Text(),
      {"Sub Total 100.00\n590111 Nov/10/2026 Gagne, Paul Interest 1.50 40.00 60.00\n"
       "Grand Total 101.50\n",
       "590122 Nov/19/2026 Gagne, Paul 1.50 0.00 1.50\n", "71.50 100.00 62.00 25.50 254.00\n"}));
}

TEST_F(BulkStatements, AgeTableIsPinnedToTheFootOfEveryPage) {
  // 90015 has 60 open invoices of 1.00: the invoice table runs onto a second
  // page. 90011's statement fits on one.
  std::string rows;
  for (int i = 0; i < 60; ++i) {
    rows += std::string(i ? "," : "") + "(" + std::to_string(90500 + i) + ", " +
            std::to_string(595000 + i) + ", 90015, '2026-11-18 00:00:00', 600, 1, 1.00)";
  }
  RawExec(
      "INSERT INTO Patient (ID, FirstName, LastName, FullName) VALUES (90015, 'Long', 'List', "
      "'Gagne, Zed');"
      "INSERT INTO Invoices (ID, [Invoice#], PatientID, [Date], [Time], [Complete?], InvoiceTotal) "
      "VALUES " +
      rows);
  reports.rptBulkStatements("Patient.ID IN (90011, 90015)", "", false, "");
  int pages = form.VSP.PageCount();
  ASSERT_GE(pages, 3) << "one page for Paul, at least two for the long list";
  // 60 x 1.00 = 60.00, all current.
  EXPECT_TRUE(Has("60.00 0.00 0.00 0.00 60.00\n")) << Text();

  const double bottom = form.VSP.PageHeight().value() - form.VSP.MarginBottom().value();
  std::optional<double> pinned;
  int tables = 0;
  for (int p = 1; p <= pages; ++p) {
    auto heads = Runs(p, "Total Due($)");
    if (heads.empty()) continue;
    ASSERT_EQ(heads.size(), 1u);
    ++tables;
    double top = heads[0].top.value();
    // The same place on every page that carries it...
    if (!pinned) pinned = top;
    EXPECT_DOUBLE_EQ(top, *pinned) << "page " << p;
    // ...in the last inch and a half above the bottom margin, and below
    // everything else the report wrote on that page.
    EXPECT_GT(top, bottom - 2160) << "page " << p;
    EXPECT_LT(LowestTopAbove(p, top), top);
    for (const auto& item : form.VSP.Document().pages.at(p - 1).items) {
      if (const auto* run = std::get_if<render::TextRun>(&item); run && run->top.value() > top) {
        // The sums row ends above the margin; only the stamps lie below it.
        if (run->text == "Current" || run->size_pt < 9.5) continue;
        EXPECT_LT(run->baseline.value(), bottom) << run->text << " on page " << p;
      }
    }
  }
  EXPECT_EQ(tables, 2) << "one age table per account";
  // Each account is a letter of its own: Paul's one page, then the long
  // list's pages numbered from 1.
  EXPECT_NE(PageText(1).find("Page 1 of 1"), std::string::npos) << PageText(1);
  for (int p = 2; p <= pages; ++p) {
    const std::string stamp =
        "Page " + std::to_string(p - 1) + " of " + std::to_string(pages - 1);
    EXPECT_NE(PageText(p).find(stamp), std::string::npos) << stamp << "\n" << PageText(p);
  }
}

TEST_F(BulkStatements, AgeTableStaysPinnedUnderALogo) {
  // Office 2 keeps its logo: the letterhead takes more of the first page,
  // yet the age table stands at the foot of the statement's last page, at
  // the same place as on a statement without a logo.
  reports.rptBulkStatements("Patient.ID = 90011", "", false, "");
  auto plain = Runs(1, "Total Due($)");
  ASSERT_EQ(plain.size(), 1u);

  reports.OfficeID = 2;
  reports.rptBulkStatements("Patient.ID = 90011", "", false, "");
  const auto& first = form.VSP.Document().pages.at(0).items;
  EXPECT_TRUE(std::any_of(first.begin(), first.end(),
                          [](const auto& i) { return std::holds_alternative<render::Picture>(i); }));
  int last = form.VSP.PageCount();
  for (int p = 1; p < last; ++p) EXPECT_TRUE(Runs(p, "Total Due($)").empty()) << "page " << p;
  auto pinned = Runs(last, "Total Due($)");
  ASSERT_EQ(pinned.size(), 1u);
  EXPECT_DOUBLE_EQ(pinned[0].top.value(), plain[0].top.value());
  EXPECT_NE(PageText(last).find("70.00 100.00 62.00 25.50 252.50\n"), std::string::npos)
      << PageText(last);
}

TEST_F(BulkStatements, NoZerosLeavesOutAccountsThatOweNothing) {
  // Omitted NoZeros: every account gets a page, the empty one an empty table.
  reports.rptBulkStatements("Patient.ID IN (90011, 90012, 90013)", "", false, "");
  EXPECT_EQ(form.VSP.PageCount(), 3);
  EXPECT_TRUE(HasAll(Text(), {"Ned Empty", "90013 Nov/20/2026", "Rita Zero"}));
  EXPECT_TRUE(LastStatementSet(90012));
  EXPECT_TRUE(LastStatementSet(90013));
  // In name order: Empty, Gagne, Zero.
  EXPECT_NE(PageText(1).find("Ned Empty"), std::string::npos);
  EXPECT_NE(PageText(2).find("Paul Gagne"), std::string::npos);
  EXPECT_TRUE(HasAll(PageText(3), {"Rita Zero", "0.00 0.00 0.00 0.00 0.00\n"}));

  RawExec("UPDATE Patient SET LastStatement = NULL WHERE ID IN (90011, 90012, 90013)");
  reports.rptBulkStatements("Patient.ID IN (90011, 90012, 90013)", "", false, "", Variant(true));
  EXPECT_EQ(form.VSP.PageCount(), 1);
  EXPECT_TRUE(Has("Paul Gagne"));
  EXPECT_TRUE(HasNone(Text(), {"Rita Zero", "Ned Empty"}));
  EXPECT_TRUE(LastStatementSet(90011));
  EXPECT_FALSE(LastStatementSet(90012)) << "no page, no stamp";
  EXPECT_FALSE(LastStatementSet(90013));

}

TEST_F(BulkStatements, FamiliesComeOncePerHolderInHolderNameOrder) {
  // Bell (lower IDs) and Aube (higher IDs): holder name order puts Aube
  // first. Each family has its holder and one member.
  //   Aube: 590131 Leo 70.00 (Nov/15), 590132 Anne 30.00 (Nov/16) -> 100.00
  //   Bell: 590133 Tim 45.00 (Nov/17)                              ->  45.00
  // Anne's invoice is hers and her holder's: it comes once. Tim's 590134
  // has a final total but no total, and is worth nothing.
  RawExec(R"sql(
INSERT INTO Patient (ID, FirstName, LastName, FullName, Address, PrimaryHolderID) VALUES
 (90021, 'Bob', 'Bell', 'Bell, Bob', '9 Pine Rd', 90021),
 (90022, 'Tim', 'Bell', 'Bell, Tim', NULL, 90021),
 (90031, 'Anne', 'Aube', 'Aube, Anne', '3 Oak Ave', 90031),
 (90032, 'Leo', 'Aube', 'Aube, Leo', NULL, 90031);
INSERT INTO Invoices (ID, [Invoice#], PatientID, [Date], [Time], [Complete?], InvoiceTotal) VALUES
 (90131, 590131, 90032, '2026-11-15 00:00:00', 600, 1, 70.00),
 (90132, 590132, 90031, '2026-11-16 00:00:00', 600, 1, 30.00),
 (90133, 590133, 90022, '2026-11-17 00:00:00', 600, 1, 45.00);
INSERT INTO Invoices (ID, [Invoice#], PatientID, [Date], [Time], [Complete?], InvoiceTotal, InvoiceFinalTotal)
 VALUES (90134, 590134, 90022, '2026-11-18 00:00:00', 600, 1, NULL, 40.00);
)sql");
  reports.rptBulkStatements("Patient.ID IN (90021, 90022, 90031, 90032)", "", true, "");
  ASSERT_EQ(form.VSP.PageCount(), 2) << Text();
  EXPECT_EQ(form.VSP.DocName(), "Family Statement");
  std::string first = PageText(1), second = PageText(2);
  EXPECT_TRUE(HasAll(
      first,
      {"Anne Aube\n90031 Nov/20/2026\n3 Oak Ave", "590131 Nov/15/2026 Aube, Leo 70.00 0.00 70.00",
       "590132 Nov/16/2026 Aube, Anne 30.00 0.00 30.00", "100.00 0.00 0.00 0.00 100.00\n"}));
  EXPECT_EQ(first.find("590133"), std::string::npos);
  EXPECT_TRUE(HasAll(second, {"Bob Bell\n90021 Nov/20/2026", "45.00 0.00 0.00 0.00 45.00\n"}));
  EXPECT_EQ(second.find("590134"), std::string::npos);
  // The stamp goes on the holder, whose number the account carries.
  EXPECT_TRUE(LastStatementSet(90031));
  EXPECT_TRUE(LastStatementSet(90021));
  EXPECT_FALSE(LastStatementSet(90032));
}

TEST_F(BulkStatements, PatientWithEveryColumnNullAndTheOfficesFooter) {
  RawExec("INSERT INTO Patient (ID) VALUES (90019)");
  reports.rptBulkStatements("Patient.ID = 90019", "", false, "");
  ASSERT_EQ(form.VSP.PageCount(), 1);
  EXPECT_TRUE(HasAll(Text(), {"90019 Nov/20/2026", "0.00 0.00 0.00 0.00 0.00\n"}));
  // As a family member whose holder row is gone, the policy name is empty
  // and the account is the holder's number.
  RawExec("UPDATE Patient SET PrimaryHolderID = 99999 WHERE ID = 90019");
  reports.rptBulkStatements("Patient.ID = 90019", "", true, "");
  ASSERT_EQ(form.VSP.PageCount(), 1);
  EXPECT_TRUE(Has("99999 Nov/20/2026")) << Text();

  RawExec("UPDATE OfficeInformation SET StatementFooter = 'Pay online at our site.' WHERE ID = 1");
  reports.rptBulkStatements("Patient.ID = 90011", "0", false, "");
  EXPECT_TRUE(Has("Pay online at our site.")) << Text();
  EXPECT_FALSE(Has("48 hours notice"));
}

}  // namespace
}  // namespace orv::testing

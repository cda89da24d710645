// Bulk statements on the account practice with its ledger rows
// (account_fixture.h). Today is 2026-11-20 and the rate 0, so every
// invoice stands for its stored total, or its settled total (asked as of
// today). A row is a complete, live invoice not yet paid in full;
// paid counts the shares on it dated by today.
//
// Patient pages (invoice, days old, worth, paid -> balance, bucket):
//   Claire (1): 1001, 1002 paid in full; 1003 cancelled; 1004 in progress.
//     1006 Oct/21  30   25.00   0  ->  25.00  current (30 days is current)
//     1005 Nov/18   2   60.00   0  ->  60.00  current (its 40 is dated 11-21)
//     Credit: 203's 50 (205's 30 is dated 12-01). Sums 85 | 0 | 0 | 0;
//     Total Due 85 - 50 = 35.
//   Seamus (6): 1603 in progress.
//     1601 Sep/6   75  100.00   0  -> 100.00  > 60
//     1061 Oct/1   50   45.00  15  ->  30.00  > 30 (262's share)
//     1602 Nov/1   19  100.00  40  ->  60.00  current (settled 120 -> 100)
//     Credit: 261 20 + 611 40 + 262 10 less shares 40 + 15 = 15.
//     Sums 60 | 30 | 100 | 0 = 190; Total Due 175.
//   Priya (3): 1031 paid by Arjun; credit 60 + 15 = 75: Total Due -75.
//   Zoe (7): no invoice; her cheque is dated 12-05: Total Due 0.
// Family pages (holders' own invoices and those of whoever names a holder
// as primary; credit the family's by holder, rounded to the cent), with
// Luc's invoices at whole amounts (111 100, 112 and 113 50 each):
//   Singh (holder 3): Arjun's 1041 Nov/19 40 current; Priya's paid.
//     Credit 60 + 15 + Marc's 10.0050 -> 85.00. Total Due 40 - 85 = -45.
//   Tremblay (holder 1): Claire's 1006 25 and 1005 60, Marc's 1021 Nov/1
//     75 current; Luc's 1012 Feb/28/2001 and 1013 Mar/1/2001 50 each > 90
//     (1011 paid in full). Sums 160 | 0 | 0 | 100 = 260. Credit 50 + 26 +
//     10.0050 -> 86.00. Total Due 174.
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "accounts/account_fixture.h"
#include "frame/surface/surface.h"
#include "platform/render/display_list.h"
#include "support/text_order.h"

namespace orv::testing {
namespace {

// The text runs of one page (from 1) whose text is exactly `what`.
std::vector<render::TextRun> Runs(const PreviewForm& form, int page, const std::string& what) {
  std::vector<render::TextRun> out;
  for (const auto& item : form.VSP.Document().pages.at(page - 1).items) {
    if (const auto* run = std::get_if<render::TextRun>(&item); run && run->text == what)
      out.push_back(*run);
  }
  return out;
}

class BulkStatements : public LedgerTest {
 protected:
  void SetUp() override { SetUpLetters(""); }
  bool LastStatementSet(int id) { return !LastStatementOf(id).IsNull(); }
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
};

TEST_F(BulkStatements, InvoiceRowsAgeSumsAndTotalDue) {
  // Seamus's ages at each bound: 31 days (5.00) and 60 days (20.00) are
  // > 30, 90 days (12.00) is > 60, 142 days (25.50) is > 90. His sums
  // become 60 | 30 + 5 + 20 = 55 | 100 + 12 = 112 | 25.50, 252.50 in all;
  // Total Due 252.50 - 15 = 237.50.
  Exec(
      "INSERT INTO Invoices (ID, [Invoice#], PatientID, [Date], [Complete?], InvoiceTotal) VALUES "
      "(162, 1062, 6, '2026-10-20 00:00:00', 1, 5), (163, 1063, 6, '2026-09-21 00:00:00', 1, 20),"
      "(164, 1064, 6, '2026-08-22 00:00:00', 1, 12), (165, 1065, 6, '2026-07-01 00:00:00', 1, "
      "25.5)");
  reports.rptBulkStatements("Patient.ID IN (1, 6)", "", false, "November statements");
  ASSERT_TRUE(host.messages.empty()) << host.messages[0].prompt;
  ASSERT_EQ(form.VSP.PageCount(), 2) << Text();
  EXPECT_EQ(form.ShowCount(), 1);
  EXPECT_EQ(form.VSP.DocName(), "Patient Statement");
  // In name order: O'Brien, then Tremblay.
  const std::string seamus = PageText(1), claire = PageText(2);
  EXPECT_TRUE(HasAll(seamus, {"Statement\nName Account # Date\nSeamus O'Brien\n6 Nov/20/2026\n",
                              "Date Patient's Name Total($) Paid($) Balance($)\n",
                              "1601 Sep/6/2026 O'Brien, Seamus 100.00 0.00 100.00\n",
                              "1061 Oct/1/2026 O'Brien, Seamus 45.00 15.00 30.00\n",
                              "1602 Nov/1/2026 O'Brien, Seamus 100.00 40.00 60.00\n",
                              "Current > 30 Days > 60 Days > 90 Days Total Due($)\n"
                              "60.00 55.00 112.00 25.50 237.50\n",
                              // The fixed note where the office has none, and the run's
                              // header and the page stamp at the foot.
                              "Note: We require 48 hours notice to reschedule appointments.",
                              "November statements", "Page 1 of 1"}));
  // Oldest first; the invoice in progress prints no row.
  EXPECT_TRUE(InOrder(seamus, {"1065 ", "1064 ", "1601 ", "1063 ", "1061 ", "1062 ", "1602 "}));
  EXPECT_EQ(seamus.find("1603"), std::string::npos);
  // The number and date sit in the middle of the name and address cell.
  EXPECT_TRUE(HasAll(claire, {"Claire Tremblay\n12 Main St\n1 Nov/20/2026\nOttawa, ON",
                              "1006 Oct/21/2026 Tremblay, Claire 25.00 0.00 25.00\n",
                              "1005 Nov/18/2026 Tremblay, Claire 60.00 0.00 60.00\n",
                              "85.00 0.00 0.00 0.00 35.00\n", "Page 1 of 1"}));
  // Paid in full, cancelled and in progress: no row.
  EXPECT_TRUE(HasNone(claire, {"1001 ", "1002 ", "1003 ", "1004 "}));
  EXPECT_TRUE(LastStatementSet(1));
  EXPECT_TRUE(LastStatementSet(6));
  EXPECT_FALSE(LastStatementSet(2));
  ASSERT_FALSE(progress.empty());
  EXPECT_EQ(progress.back(), 100);
}

TEST_F(BulkStatements, InterestChargedOnAnInvoiceShowsInItsTotalCell) {
  // 1066 (Nov/19, 1.50) charges interest on 1602. 1602's total cell spells
  // it out: 100.00 + 1.50 = 101.50; its balance stays 100.00 - 40.00 =
  // 60.00, and 1066 is a row of its own. Current 60.00 + 1.50 = 61.50;
  // Total Due 175.00 + 1.50 = 176.50.
  Exec(
      "INSERT INTO Invoices (ID, [Invoice#], PatientID, [Date], [Complete?], InvoiceTotal, "
      "InterestInvoiceID) VALUES (166, 1066, 6, '2026-11-19 00:00:00', 1, 1.50, 602)");
  reports.rptBulkStatements("Patient.ID = 6", "", false, "");
  // The other cells sit in the middle of the three-line cell.
  EXPECT_TRUE(HasAll(Text(), {"Sub Total 100.00\n1602 Nov/1/2026 O'Brien, Seamus Interest 1.50 "
                              "40.00 60.00\nGrand Total 101.50\n",
                              "1066 Nov/19/2026 O'Brien, Seamus 1.50 0.00 1.50\n",
                              "61.50 30.00 100.00 0.00 176.50\n"}));
}

TEST_F(BulkStatements, AgeTableIsPinnedToTheFootOfEveryPage) {
  // Zoe gets 60 open invoices of 1.00: her invoice table runs onto a second
  // page. Seamus's statement fits on one.
  std::string rows;
  for (int i = 0; i < 60; ++i) {
    rows += std::string(i ? "," : "") + "(" + std::to_string(700 + i) + ", " +
            std::to_string(1700 + i) + ", 7, '2026-11-18 00:00:00', 1, 1.00)";
  }
  Exec(
      "INSERT INTO Invoices (ID, [Invoice#], PatientID, [Date], [Complete?], InvoiceTotal) "
      "VALUES " +
      rows);
  reports.rptBulkStatements("Patient.ID IN (6, 7)", "", false, "");
  int pages = form.VSP.PageCount();
  ASSERT_GE(pages, 3) << "one page for Seamus, at least two for Zoe";
  // 60 x 1.00 = 60.00, all current; her cheque is not yet credit.
  EXPECT_TRUE(Has("60.00 0.00 0.00 0.00 60.00\n")) << Text();

  const double bottom = form.VSP.PageHeight().value() - form.VSP.MarginBottom().value();
  std::optional<double> pinned;
  int tables = 0;
  for (int p = 1; p <= pages; ++p) {
    auto heads = Runs(form, p, "Total Due($)");
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
  // Each account is a letter of its own: Seamus's one page, then Zoe's
  // pages numbered from 1.
  EXPECT_NE(PageText(1).find("Page 1 of 1"), std::string::npos) << PageText(1);
  for (int p = 2; p <= pages; ++p) {
    const std::string stamp = "Page " + std::to_string(p - 1) + " of " + std::to_string(pages - 1);
    EXPECT_NE(PageText(p).find(stamp), std::string::npos) << stamp << "\n" << PageText(p);
  }
}

TEST_F(BulkStatements, NoZerosLeavesOutAccountsThatOweNothing) {
  // Omitted NoZeros: every account gets a page, Zoe's an empty table.
  reports.rptBulkStatements("Patient.ID IN (3, 6, 7)", "", false, "");
  ASSERT_EQ(form.VSP.PageCount(), 3) << Text();
  EXPECT_TRUE(HasAll(PageText(3), {"Zoe Zero", "7 Nov/20/2026", "0.00 0.00 0.00 0.00 0.00\n"}));
  EXPECT_TRUE(LastStatementSet(7));

  Exec("UPDATE Patient SET LastStatement = NULL");
  reports.rptBulkStatements("Patient.ID IN (3, 6, 7)", "", false, "", Variant(true));
  // Priya's credit leaves her owing less than nothing: that is not zero.
  ASSERT_EQ(form.VSP.PageCount(), 2) << Text();
  EXPECT_TRUE(HasAll(PageText(1), {"Seamus O'Brien", "175.00\n"}));
  EXPECT_TRUE(HasAll(PageText(2), {"Priya Singh", "0.00 0.00 0.00 0.00 -75.00\n"}));
  EXPECT_FALSE(Has("Zoe Zero"));
  EXPECT_TRUE(LastStatementSet(3));
  EXPECT_FALSE(LastStatementSet(7)) << "no page, no stamp";
}

TEST_F(BulkStatements, FamiliesComeOncePerHolderInHolderNameOrder) {
  // Arjun's 1042 has a settled total but no total: it is worth nothing.
  Exec(
      "UPDATE Invoices SET InvoiceTotal = 100 WHERE ID = 111;"
      "UPDATE Invoices SET InvoiceTotal = 50 WHERE ID IN (112, 113);"
      "INSERT INTO Invoices (ID, [Invoice#], PatientID, [Date], [Complete?], InvoiceTotal, "
      "InvoiceFinalTotal) VALUES (142, 1042, 4, '2026-11-18 00:00:00', 1, NULL, 40);");
  // Marc, of both families by his two holders, is left out of the filter:
  // his invoice still comes through Claire, his primary holder.
  reports.rptBulkStatements("Patient.ID IN (1, 2, 3, 4)", "", true, "");
  ASSERT_EQ(form.VSP.PageCount(), 2) << Text();
  EXPECT_EQ(form.VSP.DocName(), "Family Statement");
  const std::string singh = PageText(1), tremblay = PageText(2);
  EXPECT_TRUE(HasAll(singh, {"Priya Singh\n", "1041 Nov/19/2026 Singh, Arjun 40.00 0.00 40.00\n",
                             "40.00 0.00 0.00 0.00 -45.00\n"}));
  EXPECT_TRUE(HasAll(tremblay, {"Claire Tremblay\n12 Main St\n1 Nov/20/2026\n",
                                "1012 Feb/28/2001 Tremblay, Luc 50.00 0.00 50.00\n",
                                "1013 Mar/1/2001 Tremblay, Luc 50.00 0.00 50.00\n",
                                "1021 Nov/1/2026 Tremblay, Marc 75.00 0.00 75.00\n",
                                "160.00 0.00 0.00 100.00 174.00\n"}));
  // Claire's invoices are hers and her holder's: each comes once.
  EXPECT_EQ(LinesWith("1005 Nov/18/2026").size(), 1u) << Text();
  EXPECT_EQ(LinesWith("1006 Oct/21/2026").size(), 1u) << Text();
  EXPECT_TRUE(HasNone(singh, {"1005 ", "1021 "}));
  EXPECT_TRUE(HasNone(Text(), {"1011 ", "1031 ", "1042 "}));
  // The stamp goes on the holder, whose number the account carries.
  EXPECT_TRUE(LastStatementSet(1));
  EXPECT_TRUE(LastStatementSet(3));
  EXPECT_FALSE(LastStatementSet(2));
  EXPECT_FALSE(LastStatementSet(4));
}

TEST_F(BulkStatements, PatientWithEveryColumnNullAndTheOfficesFooter) {
  Exec("INSERT INTO Patient (ID) VALUES (10)");
  reports.rptBulkStatements("Patient.ID = 10", "", false, "");
  ASSERT_EQ(form.VSP.PageCount(), 1);
  EXPECT_TRUE(HasAll(Text(), {"10 Nov/20/2026", "0.00 0.00 0.00 0.00 0.00\n"}));
  // As a family member whose holder row is gone, the policy name is empty
  // and the account is the holder's number.
  Exec("UPDATE Patient SET PrimaryHolderID = 99999 WHERE ID = 10");
  reports.rptBulkStatements("Patient.ID = 10", "", true, "");
  ASSERT_EQ(form.VSP.PageCount(), 1);
  EXPECT_TRUE(Has("99999 Nov/20/2026")) << Text();

  Exec("UPDATE OfficeInformation SET StatementFooter = 'Pay online at our site.'");
  reports.rptBulkStatements("Patient.ID = 6", "0", false, "");
  EXPECT_TRUE(Has("Pay online at our site.")) << Text();
  EXPECT_FALSE(Has("48 hours notice"));
}

}  // namespace
}  // namespace orv::testing

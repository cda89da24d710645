// Patient and family statements on the account practice with its ledger
// rows (account_fixture.h), with offices 1 and 2 (Claire's), the wording
// of three fee codes, and whole amounts for Luc (111 100.00, 112 and 113
// 50.00 each) and Marc (221 10.00 on account).
// Today is 2026-11-20; the period runs from Oct 1 to today unless said.
//
// A statement's opening is the account as of the eve of the period: the
// whole (A), the patient's portion (PP, running PB) and the insurer's (IP,
// running IB). Invoices of the period (complete, cancelled or not) charge
// their total to the patient unless assigned; the payments' shares on the
// patient's invoices and what cheques leave on account go back out, wholly
// the patient's or the insurer's.
//
// Claire (1), opening as of Sep/30: invoice 101 200.00 (patient 80,
// insurer 120) less cash 201's 80 on it: A 120, PP 0, IP 120.
//   date    line                                     amount  ins.  pat.   IB   PB
//   Oct/1   Insurance (202's share on 101)           -120  -120     0     0    0
//   Oct/5   Dental Treatment (102)                    150     0   150     0  150
//   Oct/6   Cheque - Cheque:311 (203's share, 102)   -150     0  -150     0    0
//   Oct/6   Credit from Partial Allocation (203)      -50     0   -50     0  -50
//   Oct/20  Dental Treatment (103, cancelled)          90     0    90     0   40
//   Oct/21  Dental Treatment (106)                     25     0    25     0   65
//   Nov/18  Dental Treatment (105, assigned, no        60     0    60     0  125
//           patient total: wholly hers)
//   Totals: A 125, IP 0, PP 125, IB 0, PB 125. As of Nov/1 her opening is
//   65 (all hers). Post-dated: cheques 204 Nov/21 40.00 and 205 Dec/1
//   30.00. In progress: 104 Nov/15, line 27211 Crown 300.00. Year to date,
//   hers: 80 + 150 shares + 50 left over = 280.00; the insurer's 120.00.
// Claire's detailed form reads the lines: 102 23111 Filling 150 and 103
// 23111 Filling 90 (hers), 106 without lines as "Dental Treatment" 25, and
// 105's line 01202 Recall exam 60 with no patient cost: the insurer's. From
// the same opening: A 125, IP 120 - 120 + 60 = 60, PP 65, IB 60, PB 65.
// Seamus (6), opening as of Sep/30: 601 100.00 less 261's 20 on account:
// 80. Oct/1 161 45 and 262's share -15; Nov/1 602 120 (the stored total)
// and cash 611's share -40: 190.
// Family of Claire (responsible member 1: Claire, Luc, Marc) from Nov/2:
// Claire 65 -> Nov/18 60 -> 125; Luc's opening 200 less 100 on 111 less
// 212's 26 = 74 and no line; Marc Nov/5 cash -10 after 121's 75 -> 65.
// Family balance 125 + 74 + 65 = 264.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "accounts/account_fixture.h"
#include "common/format.h"
#include "common/vbstrings.h"
#include "platform/render/display_list.h"
#include "support/host_said.h"
#include "support/text_order.h"

namespace orv::testing {
namespace {

class Statements : public LedgerTest {
 protected:
  void SetUp() override {
    SetUpLetters(R"sql(
INSERT INTO FeeCodes (ID, Description, LayPersonDescription) VALUES
 ('01202', 'Recall exam', NULL), ('23111', 'Resin 2 surf', 'Filling'), ('27211', 'Crown PFM', 'Crown');
UPDATE Invoices SET InvoiceTotal = 100 WHERE ID = 111;
UPDATE Invoices SET InvoiceTotal = 50 WHERE ID IN (112, 113);
UPDATE InvoicePayments SET Value = 10, TotalToCredit = 10 WHERE ID = 221;
)sql");
  }

  struct Options {
    bool family = false, ytd = false, details = false, stamp = false, outstanding = false;
    DateTime from = DateTime::FromParts(2026, 10, 1);
  };
  // Runs a statement for `ids` (the spare slot is added here) up to today.
  void Run(std::vector<int32_t> ids, const Options& o) {
    ids.push_back(0);
    reports.rptStatements(o.from, DateTime::FromParts(2026, 11, 20), ids, o.family, "", false, true,
                          true, o.details, o.ytd, o.stamp, o.outstanding);
  }
  std::string LastStatement(int id) {
    const Variant v = LastStatementOf(id);
    return v.IsNull() ? std::string("NULL") : Format(v, "yyyy-mm-dd");
  }
};

TEST_F(Statements, PatientStatementRunsThePortionsFromTheOpeningBalance) {
  // The province is stored in small letters.
  Exec(
      "UPDATE Patient SET Address = '12 Main St' || char(13) || char(10) || 'Ottawa, on' || "
      "char(13) || char(10) || 'K1A 0B1' WHERE ID = 1");
  Run({1}, {.ytd = true});
  const std::string text = Text();
  ASSERT_TRUE(host.messages.empty()) << host.messages[0].prompt;
  EXPECT_EQ(form.ShowCount(), 1);
  EXPECT_EQ(form.VSP.DocName(), "Patient Statement");
  // Addressee with the province in capitals; the summary box's lines sit
  // between the address lines.
  EXPECT_TRUE(HasAll(text, {"Claire Tremblay\nSummary\n12 Main St\n", "\nOttawa, ON K1A 0B1\n",
                            // Empty opening cells for the patient's figures, which are 0.
                            "Opening Balance $120.00 $120.00 $120.00\n"}));
  EXPECT_TRUE(InOrder(
      text, {"Oct/1/2026 Insurance -$120.00 -$120.00 $.00 $.00 $.00\n",
             "Oct/5/2026 Dental Treatment $150.00 $.00 $150.00 $.00 $150.00\n",
             "Oct/6/2026 Cheque - Cheque:311 -$150.00 $.00 -$150.00 $.00 $.00\n",
             // The description wraps in its column.
             "Oct/6/2026 Credit from Partial Allocation - -$50.00 $.00 -$50.00 $.00 -$50.00\n"
             "Cheque:311\n",
             "Oct/20/2026 Dental Treatment $90.00 $.00 $90.00 $.00 $40.00\n",
             "Oct/21/2026 Dental Treatment $25.00 $.00 $25.00 $.00 $65.00\n",
             "Nov/18/2026 Dental Treatment $60.00 $.00 $60.00 $.00 $125.00\n",
             "Patient Totals $125.00 $.00 $125.00 $.00 $125.00\n"}));
  EXPECT_TRUE(HasAll(
      text, {"Current Balance as of Nov/20/2026: $125.00\n", "Patient Payment YTD $280.00\n",
             "Patient Insurance Payment YTD $120.00\n",
             // The sections, and the summary box beside the address.
             "Post Dated Payments on Hand\nDate Description Amount\nNov/21/2026 Cheque $40.00\n"
             "Dec/1/2026 Cheque $30.00\n",
             "Treatments in Progress\n", "Nov/15/2026 Claire Tremblay 27211 Crown $300.00\n",
             "Summary", "Date Oct/1/2026 - Nov/20/2026", "Family Balance $125.00", kPrintedBy}));
  // The insurer owes nothing at the end: the box has no insurance rows.
  EXPECT_TRUE(HasNone(text, {"Ins. Balance", "Total Balance"}));
  ASSERT_FALSE(progress.empty());
  EXPECT_EQ(progress.back(), 100);
}

TEST_F(Statements, DetailedFrenchAndOutstandingForms) {
  Run({1}, {.details = true});
  std::string text = Text();
  EXPECT_FALSE(Has("YTD")) << text;
  EXPECT_EQ(form.VSP.DocName(), "Detailed Patient Statement");
  // The invoices as their lines; 106 has none and prints whole. The same
  // whole account, the insurer's share of 105 now its own.
  EXPECT_TRUE(
      HasAll(text, {"Oct/5/2026 23111 Filling $150.00 $.00 $150.00 $.00 $150.00\n",
                    "Oct/20/2026 23111 Filling $90.00 $.00 $90.00 $.00 $40.00\n",
                    "Oct/21/2026 Dental Treatment $25.00 $.00 $25.00 $.00 $65.00\n",
                    "Nov/18/2026 01202 Recall exam $60.00 $60.00 $.00 $60.00 $65.00\n",
                    "Patient Totals $125.00 $60.00 $65.00 $60.00 $65.00\n", "Family Balance $65.00",
                    "Ins. Balance $60.00", "Total Balance $125.00"}));
  EXPECT_FALSE(Has("Oct/5/2026 Dental Treatment")) << text;

  // Seamus's open items: 161 was settled on Oct/15, so it and the share on
  // it go; no opening. 602 120.00 less cash 611's 40.00 on it.
  Exec("UPDATE Invoices SET FinalDate = '2026-10-15 00:00:00' WHERE ID = 161");
  Run({6}, {.outstanding = true});
  text = Text();
  EXPECT_EQ(form.VSP.DocName(), "Detailed Family Statement");
  EXPECT_TRUE(HasAll(text, {"Opening Balance\nNov/1/2026 Dental Treatment $120.00 $120.00\n",
                            "Nov/5/2026 Cash -$40.00 $80.00\n", "Patient Totals $80.00 $80.00\n"}));
  EXPECT_TRUE(HasNone(text, {"Oct/1/2026 Dental Treatment", "Oct/1/2026 Cash"}));

  // In French, in full: the opening of 80.00 and the period's lines.
  Exec(
      "UPDATE Patient SET Language = 'F' WHERE ID = 6;"
      "UPDATE Invoices SET FinalDate = NULL WHERE ID = 161");
  Run({6}, {.details = true});
  EXPECT_TRUE(HasAll(
      Text(), {"État de Compte Détailer", "Date Description Honoraire du dentiste Solde\n",
               "Solde Commencement $80.00 $80.00\nOct/1/2026 Dental Treatment $45.00 $125.00\n",
               "Oct/1/2026 Cash -$15.00 $110.00\n", "Nov/1/2026 Dental Treatment $120.00 $230.00\n",
               "Nov/5/2026 Cash -$40.00 $190.00\n", "Totals du Patient $190.00 $190.00\n",
               "Solde a le moment Nov/20/2026: $190.00\n", "Résumé",
               // The label wraps in its inch-wide column.
               "Solde du $190.00\nFamille\n"}));
  EXPECT_TRUE(HasNone(Text(), {"Opening Balance", "Printed by Orvenda"}));
}

TEST_F(Statements, FamilyStatementTotalsEveryMemberAndIsAddressedToTheResponsible) {
  // Listed by Luc: the family is Claire's. Luc has no line from Nov/2 but
  // owes 74.00 from before: his opening and totals print (no insurance
  // figures) and count.
  Run({2}, {.family = true, .from = DateTime::FromParts(2026, 11, 2)});
  ASSERT_TRUE(host.messages.empty()) << host.messages[0].prompt;
  EXPECT_EQ(form.VSP.DocName(), "Family Statement");
  EXPECT_TRUE(HasAll(
      Text(),
      {"Claire Tremblay\nSummary\n12 Main St\n", "Luc Tremblay\n",
       "Opening Balance $74.00 $74.00 $74.00\nPatient Totals $74.00 $.00 $74.00 $.00 $74.00\n",
       "Opening Balance $65.00 $65.00 $65.00\n",
       "Patient Totals $125.00 $.00 $125.00 $.00 $125.00\n", "Marc Tremblay\n",
       "Nov/5/2026 Cash -$10.00 $.00 -$10.00 $.00 $65.00\n",
       "Current Family Balance as of Nov/20/2026: $264.00\n", "Family Balance $264.00"}));
}

TEST_F(Statements, LastStatementStampedOnlyWhenAskedAndRolledBackOnFailure) {
  Run({1}, {});
  EXPECT_EQ(LastStatement(1), "NULL");

  // A family run stamps every member with today, not the period's end.
  Run({2}, {.family = true, .stamp = true, .from = DateTime::FromParts(2026, 10, 1)});
  EXPECT_EQ(LastStatement(1), "2026-11-20");
  EXPECT_EQ(LastStatement(2), "2026-11-20");
  EXPECT_EQ(LastStatement(5), "2026-11-20");
  EXPECT_EQ(LastStatement(6), "NULL");

  // Seamus's 602 made assigned has no lines: in the detailed form its row
  // lacks the insurance column and the run fails after Priya's statement.
  // Her stamp goes back, and what was printed stays in the document.
  Exec("UPDATE Invoices SET IsAssignment = 1 WHERE ID = 602");
  host.messages.clear();
  Run({3, 6}, {.details = true, .stamp = true});
  ASSERT_TRUE(SaidOnce(host, "An Error has occurred in Sub rptStatements in Class clsReports.\n"));
  EXPECT_EQ(LastStatement(3), "NULL");
  // Priya's cash 232 (60.00) and the insurer's 233 (15.00), both on account.
  EXPECT_TRUE(Has("Patient Totals -$75.00 -$15.00 -$60.00 -$15.00 -$60.00")) << Text();
}

TEST_F(Statements, UnknownPatientPrintsNothingAtItsPlaceAndTheRunGoesOn) {
  // Seamus, a patient no longer on file, Priya: two statements, each a
  // letter of its own, and the unknown ID named to the host's log only.
  Run({6, 99999, 3}, {.stamp = true});
  EXPECT_TRUE(host.messages.empty()) << host.messages[0].prompt;
  ASSERT_EQ(host.notes.size(), 1u);
  EXPECT_NE(host.notes[0].find("99999"), std::string::npos) << host.notes[0];
  EXPECT_EQ(form.ShowCount(), 1);
  ASSERT_EQ(form.VSP.PageCount(), 2) << Text();
  EXPECT_NE(PageText(1).find("Seamus O'Brien"), std::string::npos) << PageText(1);
  EXPECT_TRUE(HasAll(PageText(2), {"Priya Singh", "Page 1 of 1"}));
  EXPECT_EQ(LastStatement(6), "2026-11-20");
  EXPECT_EQ(LastStatement(3), "2026-11-20");
  EXPECT_EQ(progress.back(), 100);

  // 10 has nothing but an ID, and one invoice of 10.00 with a NULL
  // assignment: it belongs wholly to the patient.
  Exec(
      "INSERT INTO Patient (ID) VALUES (10);"
      "INSERT INTO Invoices (ID, [Invoice#], PatientID, [Date], [Complete?], InvoiceTotal) "
      "VALUES (110, 1010, 10, '2026-10-09 00:00:00', 1, 10)");
  host.notes.clear();
  Run({10}, {.family = true});
  EXPECT_TRUE(host.messages.empty()) << host.messages[0].prompt;
  EXPECT_TRUE(host.notes.empty());
  EXPECT_TRUE(HasAll(Text(), {"Oct/9/2026 Dental Treatment $10.00 $10.00\n",
                              "Current Family Balance as of Nov/20/2026: $10.00"}));
}

// A run of statements is a stack of letters: each statement's pages are
// numbered within it and its footer speaks its language.
TEST_F(Statements, EachStatementNumbersItsOwnPagesUnderItsOwnFooter) {
  // Zoe (English) gets 45 invoices of 10.00 in October: two pages. Seamus
  // (French) has one.
  std::string rows =
      "UPDATE Patient SET Language = 'F' WHERE ID = 6;"
      "INSERT INTO Invoices (ID, [Invoice#], PatientID, [Date], [Complete?], InvoiceTotal) VALUES ";
  for (int i = 0; i < 45; ++i)
    rows += std::string(i ? "," : "") + "(" + std::to_string(700 + i) + ", " +
            std::to_string(1700 + i) + ", 7, '2026-10-" + (i % 28 < 9 ? "0" : "") +
            std::to_string(i % 28 + 1) + " 00:00:00', 1, 10.00)";
  Exec(rows);
  Run({7, 6}, {});
  ASSERT_TRUE(host.messages.empty()) << host.messages[0].prompt;
  ASSERT_EQ(form.VSP.PageCount(), 3) << Text();
  struct Expect {
    int page;
    const char* number;
    const char* footer;
    const char* not_footer;
  };
  const Expect pages[] = {
      {1, "Page 1 of 2", kPrintedBy, "État de Compte Détailer"},
      {2, "Page 2 of 2", kPrintedBy, "État de Compte Détailer"},
      {3, "Page 1 of 1", "État de Compte Détailer", "Printed by Orvenda"},
  };
  // The footer is the last line of each page's text; on the French page the
  // title "État de Compte Détailer" also heads the letter, so only the
  // footer line is read.
  for (const Expect& e : pages) {
    std::string page = PageText(e.page);
    while (!page.empty() && page.back() == '\n') page.pop_back();
    const std::string footer = page.substr(page.rfind('\n') + 1);
    EXPECT_NE(footer.find(e.number), std::string::npos) << "page " << e.page << ": " << footer;
    EXPECT_NE(footer.find(e.footer), std::string::npos) << "page " << e.page << ": " << footer;
    EXPECT_EQ(footer.find(e.not_footer), std::string::npos) << "page " << e.page << ": " << footer;
  }
  // 45 x 10.00 on Zoe's letter, each summary box on its own first page.
  EXPECT_NE(PageText(1).find("Family Balance $450.00"), std::string::npos) << PageText(1);
  EXPECT_NE(PageText(3).find("Résumé"), std::string::npos) << PageText(3);
  EXPECT_EQ(PageText(2).find("Summary"), std::string::npos) << PageText(2);
}

// The text runs that are not the page footer: what a page holds besides its
// furniture.
int ContentRuns(const render::Page& page, double bottom_margin_line) {
  int runs = 0;
  for (const auto& item : page.items)
    if (const auto* run = std::get_if<render::TextRun>(&item);
        run && run->top.value() < bottom_margin_line && !vb::Trim(run->text).empty())
      ++runs;
  return runs;
}

TEST_F(Statements, ComingAppointmentsNeverLeaveAPageOfFurnitureAlone) {
  // Claire's family statement grows by one October invoice of Luc's at a
  // time, so that its end passes through the foot of the first page, where
  // the section of coming appointments must decide whether to turn the
  // page. Without coming appointments no page may hold only the page
  // footer; with one, the section's heading stands on the page of its first
  // row.
  Exec("INSERT INTO ProcedureCategories (ID, Name) VALUES (1, 'Recall')");
  for (bool coming : {false, true}) {
    Exec("DELETE FROM PatientAppointments; DELETE FROM Invoices WHERE ID >= 700 AND ID < 800;");
    if (coming) {
      Exec(
          "INSERT INTO PatientAppointments (ID, PatientID, ProcedureCat, Date, Time) VALUES "
          "(1, 2, 1, '2026-12-03 00:00:00', 600)");
    }
    int one_page = 0, two_pages = 0;
    for (int n = 0; n < 24; ++n) {
      Exec(
          "INSERT INTO Invoices (ID, [Invoice#], PatientID, [Date], [Complete?], InvoiceTotal) "
          "VALUES (" +
          std::to_string(700 + n) + ", " + std::to_string(1700 + n) +
          ", 2, '2026-10-15 00:00:00', 1, 1.00)");
      std::vector<int32_t> ids{2, 0};
      reports.rptStatements(DateTime::FromParts(2026, 10, 1), DateTime::FromParts(2026, 10, 31),
                            ids, true, "", /*AppSummary=*/true, true, true, false, true);
      ASSERT_TRUE(host.messages.empty()) << host.messages[0].prompt;
      const auto& doc = form.VSP.Document();
      (doc.pages.size() == 1 ? one_page : two_pages) += 1;
      const double bottom = form.VSP.PageHeight().value() - form.VSP.MarginBottom().value();
      for (size_t p = 0; p < doc.pages.size(); ++p)
        EXPECT_GT(ContentRuns(doc.pages[p], bottom), 0)
            << (coming ? "with" : "without") << " appointments, " << n + 1
            << " extra invoices: page " << p + 1 << " holds only its footer";
      std::string text = Text();
      size_t heading = text.find("Upcoming Family Appointments");
      if (!coming) {
        EXPECT_EQ(heading, std::string::npos) << text;
        continue;
      }
      ASSERT_NE(heading, std::string::npos) << text;
      size_t row = text.find("Luc Tremblay Thursday December 3, 2026");
      ASSERT_NE(row, std::string::npos) << text;
      EXPECT_LT(heading, row);
      EXPECT_EQ(text.substr(heading, row - heading).find('\f'), std::string::npos)
          << n + 1 << " extra invoices: the heading is parted from its first row";
    }
    // The statement's end went through the foot of the first page.
    EXPECT_GT(one_page, 0);
    EXPECT_GT(two_pages, 0);
  }
}

// A name or street holding the table language's separators prints in its
// cell, on its row.
TEST_F(Statements, SeparatorsInDataStayInTheirCells) {
  Exec(
      "UPDATE Patient SET FirstName = 'Smith;Evil|9999|Row' WHERE ID = 1;"
      "UPDATE FeeCodes SET LayPersonDescription = 'Filling; two|surfaces' WHERE ID = '23111';"
      "UPDATE PaymentTypes SET Name = 'Insurance;|Till' WHERE ID = 3;");
  Run({1}, {.details = true});
  std::string text = Text();
  EXPECT_TRUE(HasAll(text, {"Oct/5/2026 23111 Filling; two|surfaces $150.00 $.00 $150.00",
                            "Oct/1/2026 Insurance;|Till -$120.00"}));
  // The treatment in progress carries the patient's name in an inch-wide
  // cell, where it may wrap; the cells after it keep their places.
  const size_t row = text.find("Nov/15/2026 Smith;Evil|9999|");
  ASSERT_NE(row, std::string::npos) << text;
  EXPECT_NE(text.substr(row, text.find('\n', row) - row).find(" 27211 Crown $300.00"),
            std::string::npos)
      << text;
}

}  // namespace
}  // namespace orv::testing

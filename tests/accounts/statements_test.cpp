// Patient and family statements on a copy of the demo practice with
// hand-made accounts (IDs from 90001). Today is 2026-11-20; the period is
// October 2026.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/format.h"
#include "common/vbstrings.h"
#include "platform/db/recordset.h"
#include "platform/render/display_list.h"
#include "support/host_said.h"
#include "support/report_fixture.h"
#include "support/text_order.h"

namespace orv::testing {
namespace {

// Family of Anne Roy (90001, responsible member of herself and of Ben).
//
// Anne, before the period: invoice 90101 Sep/15 100.00, 40.00 paid on it
// Sep/20 -> opening A = PP = PB = 60.00, IP = IB = 0.
// In October:
//   Oct/5  invoice 90102 200.00, assigned, PatientTotal 80.00
//            (lines 99001 Filling 150.00 / patient 60.00, 99003 Exam 50.00 /
//            patient 20.00)
//   Oct/5  cheque 777 of 100.00: 80.00 on 90102, 20.00 left on account
//   Oct/20 insurer's cheque 5521 of 100.00 on 90102
//   Oct/25 cash 25.00 on no invoice
// Running (Amount, Ins. portion, Pat. portion, Ins. balance, Pat. balance):
//   opening                          A  60      IB   0   PB 60
//   Dental Treatment  200 120  80 -> A 260      IB 120   PB 140
//   cheque share      -80   0 -80 -> A 180      IB 120   PB  60
//   credit left       -20   0 -20 -> A 160      IB 120   PB  40
//   insurer         -100 -100   0 -> A  60      IB  20   PB  40
//   cash             -25    0 -25 -> A  35      IB  20   PB  15
//   totals: A 35, IP 0 + 120 - 100 = 20, PP 60 + 80 - 80 - 20 - 25 = 15.
// Post-dated: cheque 778 of 50.00 dated Dec/5. In progress: invoice 90103
// Oct/28 (99002 Crown 75.00), not complete.
// Year to date (Jan/1 to Oct/31), patient's money: 25.00 unallocated +
// 40.00 + 80.00 shares + 20.00 left over = 165.00; insurer's: 100.00.
//
// Ben Roy (90002): invoice 90111 Aug/10 50.00, unpaid; nothing in October.
class Statements : public ReportTest {
 protected:
  void SetUp() override {
    ReportTest::SetUpPractice(R"sql(
INSERT INTO Patient (ID, FirstName, LastName, FullName, Address, Language, DefaultOfficeID,
  ResponsibleFamilyMemberID) VALUES
 (90001, 'Anne', 'Roy', 'Roy, Anne',
  '5 Elm St' || char(13) || char(10) || 'Ottawa, on' || char(13) || char(10) || 'K1A 0B1',
  NULL, 1, 90001),
 (90002, 'Ben', 'Roy', 'Roy, Ben', NULL, 'E', 1, 90001),
 (90004, 'Eloise', 'Caron', 'Caron, Eloise', NULL, 'F', 1, 90004),
 (90005, 'Olive', 'Open', 'Open, Olive', NULL, 'E', 1, 90005),
 (90006, 'Ivan', 'Lineless', 'Lineless, Ivan', NULL, 'E', 1, 90006);
INSERT INTO Patient (ID) VALUES (90009);
INSERT INTO FeeCodes (ID, Description, LayPersonDescription) VALUES
 ('99001', 'Resin 2 surf', 'Filling'), ('99002', 'Crown PFM', 'Crown'), ('99003', 'Exam', NULL);
INSERT INTO PaymentTypes (ID, Name, [Adjustment?], [ToTotalPaid?], BankDeposit, Refund,
  OfficePayment, BulkPayment, RecAfterDep) VALUES
 (901, 'Cheque', 0, 1, 1, 0, 0, 0, 0), (902, 'Cash', 0, 1, 1, 0, 0, 0, 0);
INSERT INTO Invoices (ID, [Invoice#], PatientID, [Date], [Time], [Complete?], InvoiceTotal,
  PatientTotal, IsAssignment, FinalDate) VALUES
 (90101, 590101, 90001, '2026-09-15 00:00:00', 600, 1, 100.00, NULL, 0, NULL),
 (90102, 590102, 90001, '2026-10-05 09:30:00', 600, 1, 200.00, 80.00, -1, NULL),
 (90103, 590103, 90001, '2026-10-28 00:00:00', 600, 0, 75.00, NULL, 0, NULL),
 (90111, 590111, 90002, '2026-08-10 00:00:00', 600, 1, 50.00, NULL, 0, NULL),
 (90141, 590141, 90004, '2026-10-12 00:00:00', 600, 1, 30.00, NULL, 0, NULL),
 (90150, 590150, 90005, '2026-09-01 00:00:00', 600, 1, 5.00, NULL, 0, NULL),
 (90151, 590151, 90005, '2026-10-03 00:00:00', 600, 1, 40.00, NULL, 0, NULL),
 (90152, 590152, 90005, '2026-10-04 00:00:00', 600, 1, 10.00, NULL, 0, '2026-10-15 00:00:00'),
 (90161, 590161, 90006, '2026-10-08 00:00:00', 600, 1, 90.00, 30.00, 1, NULL),
 (90191, 590191, 90009, '2026-10-09 00:00:00', 600, 1, 10.00, NULL, NULL, NULL);
INSERT INTO InvoiceDetails (ID, InvoiceID, Code, Cost, PatientCost, Status, [Date]) VALUES
 (90301, 90102, '99001', 150.00, 60.00, 'Complete', '2026-10-05 00:00:00'),
 (90302, 90102, '99003', 50.00, 20.00, 'Complete', '2026-10-05 00:00:00'),
 (90303, 90103, '99002', 75.00, NULL, 'Planned', '2026-10-28 00:00:00');
INSERT INTO InvoicePayments (ID, PatientID, PaymentTypeID, Value, TotalAllocated, TotalToCredit,
  [Date], CheckDate, [Check#], IsInsurance) VALUES
 (90201, 90001, 902, 40.00, 40.00, 0, '2026-09-20 00:00:00', '2026-09-20 00:00:00', '0', 0),
 (90203, 90001, 901, 100.00, 80.00, 20.00, '2026-10-05 00:00:00', '2026-10-05 00:00:00', '777', 0),
 (90202, 90001, 901, 100.00, 100.00, 0, '2026-10-20 00:00:00', '2026-10-20 00:00:00', '5521', 1),
 (90204, 90001, 902, 25.00, 0, 25.00, '2026-10-25 00:00:00', '2026-10-25 00:00:00', '0', 0),
 (90205, 90001, 901, 50.00, 0, 50.00, '2026-11-15 00:00:00', '2026-12-05 00:00:00', '778', 0);
INSERT INTO InvoicePaymentDetails (ID, InvoicePaymentID, InvoiceID, Amount, [Date]) VALUES
 (90401, 90201, 90101, 40.00, '2026-09-20 00:00:00'),
 (90402, 90203, 90102, 80.00, '2026-10-05 00:00:00'),
 (90403, 90202, 90102, 100.00, '2026-10-20 00:00:00');
UPDATE OfficeInformation SET Logo = NULL WHERE ID = 1;
)sql");
    reports.OfficeID = 1;
  }

  // Runs a statement for `ids` (the spare slot is added here) over October.
  void Run(std::vector<int32_t> ids, bool family, bool ytd = false, bool details = false,
           bool stamp = false, bool outstanding = false) {
    ids.push_back(0);
    reports.rptStatements(DateTime::FromParts(2026, 10, 1), DateTime::FromParts(2026, 10, 31), ids,
                          family, "", false, true, true, details, ytd, stamp, outstanding);
  }
  std::string LastStatement(int id) {
    Variant v = ValueOf("SELECT LastStatement FROM Patient WHERE ID = " + std::to_string(id));
    return v.IsNull() ? std::string("NULL") : Format(v, "yyyy-mm-dd");
  }
};

TEST_F(Statements, PatientStatementRunsThePortionsFromTheOpeningBalance) {
  Run({90001}, false, /*ytd=*/true);
  std::string text = Text();
  ASSERT_TRUE(host.messages.empty()) << host.messages[0].prompt;
  EXPECT_EQ(form.ShowCount(), 1);
  EXPECT_EQ(form.VSP.DocName(), "Patient Statement");
  // Addressee with the province in capitals; the summary box's lines sit
  // between the address lines.
  EXPECT_TRUE(HasAll(Text(), {"Anne Roy\nSummary\n5 Elm St\n", "\nOttawa, ON K1A 0B1\n",
                              // Empty opening cells for the insurance figures, which are 0.
                              "Opening Balance $60.00 $60.00 $60.00\n"}));
  EXPECT_TRUE(InOrder(
      text, {"Oct/5/2026 Dental Treatment $200.00 $120.00 $80.00 $120.00 $140.00\n",
             "Oct/5/2026 Cheque - Cheque:777 -$80.00 $.00 -$80.00 $120.00 $60.00\n",
             // The description wraps in its column.
             "Oct/5/2026 Credit from Partial Allocation - -$20.00 $.00 -$20.00 $120.00 "
             "$40.00\nCheque:777\n",
             "Oct/20/2026 Cheque - Cheque:5521 -$100.00 -$100.00 $.00 $20.00 $40.00\n",
             "Oct/25/2026 Cash -$25.00 $.00 -$25.00 $20.00 $15.00\n",
             "Patient Totals $35.00 $20.00 $15.00 $20.00 $15.00\n"}));
  EXPECT_TRUE(HasAll(
      Text(), {"Current Balance as of Oct/31/2026: $35.00\n", "Patient Payment YTD $165.00\n",
               "Patient Insurance Payment YTD $100.00\n",
               // The sections, and the summary box beside the address.
               "Post Dated Payments on Hand\nDate Description Amount\nDec/5/2026 Cheque $50.00\n",
               "Treatments in Progress\n", "Oct/28/2026 Anne Roy 99002 Crown $75.00\n", "Summary",
               "Date Oct/1/2026 - Oct/31/2026", "Family Balance $15.00", "Ins. Balance $20.00",
               "Total Balance $35.00", "Printed by Orvenda - Tessalyne Inc."}));
  ASSERT_FALSE(progress.empty());
  EXPECT_EQ(progress.back(), 100);
}

TEST_F(Statements, DetailedFrenchAndOutstandingForms) {
  Run({90001}, false, /*ytd=*/false, /*details=*/true);
  std::string text = Text();
  EXPECT_FALSE(Has("YTD")) << text;
  EXPECT_EQ(form.VSP.DocName(), "Detailed Patient Statement");
  // The assigned invoice as its two lines: Filling 150 (insurer 90,
  // patient 60) and Exam 50 (insurer 30, patient 20); same totals.
  EXPECT_TRUE(HasAll(Text(), {"Oct/5/2026 99001 Filling $150.00 $90.00 $60.00",
                              "Oct/5/2026 99003 Exam $50.00 $30.00 $20.00"}));
  EXPECT_FALSE(Has("Dental Treatment $200.00")) << text;
  EXPECT_TRUE(Has("Patient Totals $35.00 $20.00 $15.00 $20.00 $15.00\n")) << text;

  // Eloise: one unassigned invoice of 30.00 in October, nothing before.
  Run({90004}, false);
  EXPECT_TRUE(HasAll(
      Text(),
      {"État de Compte Détailer", "Date Description Honoraire du dentiste Solde\n",
       "Solde Commencement\nOct/12/2026 Dental Treatment $30.00 $30.00\n",
       "Totals du Patient $30.00 $30.00\n", "Solde a le moment Oct/31/2026: $30.00\n", "Résumé",
       // The label wraps in its inch-wide column.
       "Solde du $30.00\nFamille\n"}));
  EXPECT_TRUE(HasNone(Text(), {"Opening Balance", "Printed by Orvenda"}));

  // Olive: 5.00 from September (an opening, left out here), 40.00 open and
  // 10.00 settled on Oct/15 (left out).
  Run({90005}, false, false, false, false, /*outstanding=*/true);
  text = Text();
  EXPECT_EQ(form.VSP.DocName(), "Detailed Family Statement");
  EXPECT_TRUE(Has("Opening Balance\nOct/3/2026 Dental Treatment $40.00 $40.00\n")) << text;
  EXPECT_FALSE(Has("Oct/4/2026")) << text;
  EXPECT_TRUE(Has("Patient Totals $40.00 $40.00\n")) << text;
}

TEST_F(Statements, FamilyStatementTotalsEveryMemberAndIsAddressedToTheResponsible) {
  // Listed by Ben: the family is Anne's. Ben has no line in October but
  // owes 50.00 from August: his opening and totals print (no insurance
  // figures) and count. Family: patient 15.00 + 50.00 = 65.00, insurance
  // 20.00, total 85.00.
  Run({90002}, true);
  ASSERT_TRUE(host.messages.empty()) << host.messages[0].prompt;
  EXPECT_EQ(form.VSP.DocName(), "Family Statement");
  EXPECT_TRUE(HasAll(
      Text(),
      {"Anne Roy\nSummary\n5 Elm St\n", "Ben Roy\n",
       "Opening Balance $50.00 $50.00 $50.00\nPatient Totals $50.00 $.00 $50.00 $.00 $50.00\n",
       "Patient Totals $35.00 $20.00 $15.00 $20.00 $15.00\n",
       "Current Family Balance as of Oct/31/2026: $85.00\n", "Family Balance $65.00",
       "Total Balance $85.00"}));
}

TEST_F(Statements, LastStatementStampedOnlyWhenAskedAndRolledBackOnFailure) {
  Run({90001}, false);
  EXPECT_EQ(LastStatement(90001), "NULL");

  // A family run stamps every member with today, not the period's end.
  Run({90002}, true, false, false, /*stamp=*/true);
  EXPECT_EQ(LastStatement(90001), "2026-11-20");
  EXPECT_EQ(LastStatement(90002), "2026-11-20");
  EXPECT_EQ(LastStatement(90004), "NULL");

  // Ivan's assigned invoice has no lines: in the detailed form its row
  // lacks the insurance column and the run fails after Eloise's statement.
  // Her stamp goes back, and what was printed stays in the document.
  host.messages.clear();
  Run({90004, 90006}, false, false, /*details=*/true, /*stamp=*/true);
  ASSERT_TRUE(SaidOnce(host, "An Error has occurred in Sub rptStatements in Class clsReports.\n"));
  EXPECT_EQ(LastStatement(90004), "NULL");
  EXPECT_TRUE(Has("Totals du Patient $30.00 $30.00")) << Text();
}

TEST_F(Statements, UnknownPatientPrintsNothingAtItsPlaceAndTheRunGoesOn) {
  // Eloise, a patient no longer on file, Olive: two statements, each a
  // letter of its own, and the unknown ID named to the host's log only.
  Run({90004, 99999, 90005}, false, false, false, /*stamp=*/true);
  EXPECT_TRUE(host.messages.empty()) << host.messages[0].prompt;
  ASSERT_EQ(host.notes.size(), 1u);
  EXPECT_NE(host.notes[0].find("99999"), std::string::npos) << host.notes[0];
  EXPECT_EQ(form.ShowCount(), 1);
  ASSERT_EQ(form.VSP.PageCount(), 2) << Text();
  EXPECT_NE(PageText(1).find("Eloise Caron"), std::string::npos) << PageText(1);
  EXPECT_TRUE(HasAll(PageText(2), {"Olive Open", "Page 1 of 1"}));
  EXPECT_EQ(LastStatement(90004), "2026-11-20");
  EXPECT_EQ(LastStatement(90005), "2026-11-20");
  EXPECT_EQ(progress.back(), 100);

  // 90009 has nothing but an ID, and one invoice of 10.00 with a NULL
  // assignment: it belongs wholly to the patient.
  host.notes.clear();
  Run({90009}, true);
  EXPECT_TRUE(host.messages.empty()) << host.messages[0].prompt;
  EXPECT_TRUE(host.notes.empty());
  EXPECT_TRUE(HasAll(Text(), {"Oct/9/2026 Dental Treatment $10.00 $10.00\n",
                              "Current Family Balance as of Oct/31/2026: $10.00"}));
}

// A run of statements is a stack of letters: each statement's pages are
// numbered within it and its footer speaks its language.
TEST_F(Statements, EachStatementNumbersItsOwnPagesUnderItsOwnFooter) {
  // Lena Long (English) has 45 invoices in October: two pages. Eloise
  // (French) has one: one page.
  std::string rows =
      "INSERT INTO Patient (ID, FirstName, LastName, FullName, Language, DefaultOfficeID, "
      "ResponsibleFamilyMemberID) VALUES (90007, 'Lena', 'Long', 'Long, Lena', 'E', 1, 90007);"
      "INSERT INTO Invoices (ID, [Invoice#], PatientID, [Date], [Time], [Complete?], InvoiceTotal, "
      "IsAssignment) VALUES ";
  for (int i = 0; i < 45; ++i)
    rows += std::string(i ? "," : "") + "(" + std::to_string(90600 + i) + ", " +
            std::to_string(590600 + i) + ", 90007, '2026-10-" + (i % 28 < 9 ? "0" : "") +
            std::to_string(i % 28 + 1) + " 00:00:00', 600, 1, 10.00, 0)";
  RawExec(rows);
  Run({90007, 90004}, false);
  ASSERT_TRUE(host.messages.empty()) << host.messages[0].prompt;
  ASSERT_EQ(form.VSP.PageCount(), 3) << Text();
  struct Expect {
    int page;
    const char* number;
    const char* footer;
    const char* not_footer;
  };
  const Expect pages[] = {
      {1, "Page 1 of 2", "Printed by Orvenda - Tessalyne Inc.", "État de Compte Détailer"},
      {2, "Page 2 of 2", "Printed by Orvenda - Tessalyne Inc.", "État de Compte Détailer"},
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
  // 45 x 10.00 on Lena's letter, 30.00 on Eloise's, each summary box on its
  // own first page.
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
  // Anne's family statement grows by one October invoice at a time, so that
  // its end passes through the foot of the first page, where the section of
  // coming appointments must decide whether to turn the page. Without
  // coming appointments no page may hold only the page footer; with one,
  // the section's heading stands on the page of its first row.
  for (bool coming : {false, true}) {
    RawExec(
        "DELETE FROM PatientAppointments WHERE PatientID IN (90001, 90002);"
        "DELETE FROM Invoices WHERE ID >= 90700 AND ID < 90800;");
    if (coming) {
      RawExec(
          "INSERT INTO PatientAppointments (ID, PatientID, ProcedureCat, Date, Time) "
          "SELECT 90901, 90002, ID, '2026-12-03 00:00:00', 600 FROM ProcedureCategories "
          "ORDER BY ID LIMIT 1");
    }
    for (int n = 0; n < 24; ++n) {
      RawExec(
          "INSERT INTO Invoices (ID, [Invoice#], PatientID, [Date], [Time], [Complete?], "
          "InvoiceTotal, IsAssignment) VALUES (" +
          std::to_string(90700 + n) + ", " + std::to_string(590700 + n) +
          ", 90002, '2026-10-15 00:00:00', 600, 1, 1.00, 0)");
      std::vector<int32_t> ids{90002, 0};
      reports.rptStatements(DateTime::FromParts(2026, 10, 1), DateTime::FromParts(2026, 10, 31),
                            ids, true, "", /*AppSummary=*/true, true, true, false, true);
      ASSERT_TRUE(host.messages.empty()) << host.messages[0].prompt;
      const auto& doc = form.VSP.Document();
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
      size_t row = text.find("Ben Roy Thursday December 3, 2026");
      ASSERT_NE(row, std::string::npos) << text;
      EXPECT_LT(heading, row);
      EXPECT_EQ(text.substr(heading, row - heading).find('\f'), std::string::npos)
          << n + 1 << " extra invoices: the heading is parted from its first row";
    }
  }
}

// Where a letterhead ends and the addressee starts, for each kind of
// letterhead: the address must show through the envelope window.
TEST_F(Statements, AddresseeSitsAtTheWindowWhateverTheLetterhead) {
  struct Case {
    const char* name;
    const char* office_update;
  };
  const Case cases[] = {
      {"no logo", "UPDATE OfficeInformation SET Logo = NULL WHERE ID = 1"},
      {"the demo logo",
       "UPDATE OfficeInformation SET Logo = (SELECT Logo FROM OfficeInformation WHERE ID = 2) "
       "WHERE ID = 1"},
      {"logo and every line",
       "UPDATE OfficeInformation SET Logo = (SELECT Logo FROM OfficeInformation WHERE ID = 2), "
       "Street2 = 'Suite 200', Www = 'www.example.ca', EmailAddress = 'desk@example.ca', "
       "InvoiceHeader = 'Open Saturdays' || char(13) || char(10) || 'Evening hours Thursday' "
       "WHERE ID = 1"},
  };
  const double window_top = 2.5 * 1440, window_left = 0.9 * 1440;
  for (const Case& c : cases) {
    RawExec(c.office_update);
    Run({90001}, false);
    ASSERT_TRUE(host.messages.empty()) << c.name << ": " << host.messages[0].prompt;
    const auto& items = form.VSP.Document().pages.at(0).items;
    const render::TextRun* name = nullptr;
    for (const auto& item : items)
      if (const auto* run = std::get_if<render::TextRun>(&item);
          run && run->text == "Anne Roy" && name == nullptr)
        name = run;
    ASSERT_NE(name, nullptr) << c.name;
    EXPECT_DOUBLE_EQ(name->top.value(), window_top) << c.name;
    EXPECT_DOUBLE_EQ(name->x.value(), window_left) << c.name;
    // Nothing of the letterhead reaches the window line; the summary box
    // beside the address starts on it.
    for (const auto& item : items) {
      if (const auto* run = std::get_if<render::TextRun>(&item)) {
        if (run->top.value() < window_top) {
          EXPECT_LE(run->baseline.value(), window_top) << c.name << ": " << run->text;
        }
      } else if (const auto* picture = std::get_if<render::Picture>(&item)) {
        const render::Box& box = picture->box;
        EXPECT_LE((box.y + box.height).value(), window_top) << c.name << ": the logo";
        // The logo keeps its proportions.
        EXPECT_NEAR(box.width.value() / box.height.value(),
                    double(picture->image->width) / picture->image->height, 0.01)
            << c.name;
      }
    }
  }
}

// A name or street holding the table language's separators prints in its
// cell, on its row.
TEST_F(Statements, SeparatorsInDataStayInTheirCells) {
  RawExec(
      "UPDATE Patient SET FirstName = 'Smith;Evil|9999|Row', LastName = 'Roy' WHERE ID = 90001;"
      "UPDATE FeeCodes SET LayPersonDescription = 'Filling; two|surfaces' WHERE ID = '99001';"
      "UPDATE PaymentTypes SET Name = 'Cash;|Till' WHERE ID = 902;");
  Run({90001}, false, false, /*details=*/true);
  std::string text = Text();
  EXPECT_TRUE(HasAll(Text(), {"Oct/5/2026 99001 Filling; two|surfaces $150.00 $90.00 $60.00",
                              "Oct/25/2026 Cash;|Till -$25.00"}));
  // The treatment in progress carries the patient's name in an inch-wide
  // cell, where it may wrap; the cells after it keep their places.
  const size_t row = text.find("Oct/28/2026 Smith;Evil|9999|");
  ASSERT_NE(row, std::string::npos) << text;
  EXPECT_NE(text.substr(row, text.find('\n', row) - row).find(" 99002 Crown $75.00"),
            std::string::npos)
      << text;
}

}  // namespace
}  // namespace orv::testing

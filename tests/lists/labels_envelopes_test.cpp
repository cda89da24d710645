#include <gtest/gtest.h>

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "frame/surface/surface.h"
#include "support/host_said.h"
#include "support/report_fixture.h"
#include "support/text_order.h"

namespace orv::testing {
namespace {

constexpr double kInch = 1440;

std::vector<render::TextRun> Runs(const frame::PrintSurface& vsp, int page) {
  std::vector<render::TextRun> runs;
  for (const auto& item : vsp.Document().pages.at(page).items)
    if (const auto* run = std::get_if<render::TextRun>(&item)) runs.push_back(*run);
  return runs;
}

// The first run on the page that starts with `text`, or null.
const render::TextRun* Find(const std::vector<render::TextRun>& runs, const std::string& text) {
  for (const auto& r : runs)
    if (r.text.rfind(text, 0) == 0) return &r;
  return nullptr;
}

using Labels = ReportTest;

TEST_F(Labels, SheetPlacesThirtyLabelsAPageAndTheThirtyFirstOpensTheNext) {
  // Every run of a label lies inside its 2.55 x 0.89 in box, whose corner is
  // at (c * 2.75 + 0.25, r + 0.5) in; the boxes' corners found are the
  // labels placed.
  struct Case {
    const char* name;
    const char* filter;
    int pages;
    int labels_on_last;
  } cases[] = {
      {"no record: an empty page, no failure", "ID < 0", 1, 0},
      {"thirty records fill one sheet exactly", "ID <= 30", 1, 30},
      {"the 31st opens a second sheet", "ID <= 31", 2, 1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    form.VSP.DocName("");
    reports.rptMailingLabels(c.filter);
    ASSERT_EQ(form.VSP.PageCount(), c.pages);
    auto runs = Runs(form.VSP, c.pages - 1);
    std::set<std::pair<int, int>> boxes;
    for (const auto& r : runs) {
      const int col = int((r.x.value() - 0.25 * kInch) / (2.75 * kInch));
      const int row = int((r.top.value() - 0.5 * kInch) / kInch);
      ASSERT_GE(r.x.value(), col * 2.75 * kInch + 0.25 * kInch) << r.text;
      EXPECT_LE(r.x.value() + r.width.value(), (col * 2.75 + 0.25 + 2.55) * kInch + 1) << r.text;
      EXPECT_LE(r.top.value(), (row + 0.5 + 0.89) * kInch) << r.text;
      boxes.insert({col, row});
    }
    EXPECT_EQ(int(boxes.size()), c.labels_on_last);
    if (c.labels_on_last == 1) {
      EXPECT_EQ(*boxes.begin(), std::make_pair(0, 0));
    }
    if (c.labels_on_last == 30) {
      EXPECT_TRUE(boxes.count({2, 9})) << "the third column's last row";
      EXPECT_FALSE(boxes.count({3, 0}));
    }
    EXPECT_EQ(form.ShowCount(), &c - cases + 1);
  }
}

TEST_F(Labels, LabelTextIsTitleNamesAndAddressWithoutADoubleBlank) {
  RawExec(
      "UPDATE Patient SET Title = NULL, FirstName = 'Zoë', LastName = 'Aaberg', "
      "Address = '1 Rue Côté' || char(13) || char(10) || 'Québec, QC' WHERE ID = 3");
  reports.rptMailingLabels("ID = 3");
  const std::string text = Text();
  EXPECT_NE(text.find("Zoë Aaberg\n1 Rue Côté\nQuébec, QC"), std::string::npos) << text;
}

TEST_F(Labels, FolderLabelPositionWordsSetTheAlignmentAndOthersKeepIt) {
  struct Case {
    const char* position;
    int before, after;
  } cases[] = {{"top", 0, 1}, {"middle", 0, 7}, {"bottom", 0, 4}, {"Top", 2, 2}, {"", 9, 9}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.position);
    form.VSP.TextAlign(c.before);
    reports.rptFolderLabels(c.position, "ID = 1");
    EXPECT_EQ(form.VSP.TextAlign(), c.after);
  }
  // Top-aligned names start at the top of their label; bottom ones lower.
  reports.rptFolderLabels("top", "ID = 1");
  const double top = Runs(form.VSP, 0).at(0).top.value();
  reports.rptFolderLabels("bottom", "ID = 1");
  EXPECT_EQ(top, 0.5 * kInch);
  EXPECT_GT(Runs(form.VSP, 0).at(0).top.value(), top);
}

TEST_F(Labels, ReferringDentistSheetPrintsWithTheAddressAndSecondStreet) {
  RawExec("UPDATE ReferringDentists SET Title = 'Dr.', Name = 'Bo', LastName = 'Kerr', Street = '2 Elm St', "
          "Street2 = 'Unit 4', City = 'Perth', Prov = 'ON', Postal = 'K7H 1A1' WHERE ID = 2");
  reports.rptReferringDentistMailingLabels("ID = 2");
  EXPECT_EQ(form.VSP.DocName(), "Referring Dentist Mailing Labels");
  EXPECT_EQ(form.PrintCount(), 1);
  EXPECT_EQ(form.ShowCount(), 0);
  EXPECT_TRUE(Has("Dr. Bo Kerr\n2 Elm St\nUnit 4\nPerth, ON\nK7H 1A1")) << Text();
}

TEST_F(Labels, SinglePageRunsAskFirstAndPutOneLabelOnEachPage) {
  form.SetDialogAnswer(0);
  reports.rptMailingLabelsSinglePage("ID <= 3");
  reports.rptFolderLabelsSingleSheet("ID <= 3", rptTop);
  EXPECT_EQ(form.VSP.PageCount(), 0) << "a refused dialog opens no document";
  EXPECT_EQ(form.ShowCount(), 0);

  form.SetDialogAnswer(1);
  reports.rptMailingLabelsSinglePage("ID <= 3");
  EXPECT_EQ(form.VSP.PageCount(), 3) << "no empty page after the last label";
  EXPECT_EQ(form.VSP.Orientation(), 1);

  // The folded tab: landscape, the name twice, the upper half turned about
  // its box's corner at (3.5in, 0.4in) so it reads upside down above the
  // fold, the lower half upright from the left edge at 0.6in.
  reports.rptFolderLabelsSingleSheet("ID = 1", rptTwo);
  ASSERT_EQ(form.VSP.PageCount(), 1);
  EXPECT_EQ(form.VSP.Document().pages[0].width.value(), 11 * kInch);
  auto runs = Runs(form.VSP, 0);
  std::vector<render::TextRun> turned, upright;
  for (const auto& r : runs) (r.angle == 1800 ? turned : upright).push_back(r);
  ASSERT_FALSE(turned.empty());
  ASSERT_EQ(turned.size(), upright.size());
  EXPECT_NEAR(turned[0].x.value(), 3.5 * kInch, 1) << "the turned line reads leftwards from the fold's corner";
  EXPECT_LE(turned[0].top.value(), 0.4 * kInch);
  EXPECT_EQ(upright[0].x.value(), 0);
  EXPECT_GE(upright[0].top.value(), 0.6 * kInch);
  EXPECT_EQ(turned[0].size_pt, 14);

  // Top, middle and bottom go down the page in that order.
  double tops[3];
  iPosition order[3] = {rptTop, rptMiddle, rptBottom};
  for (int i = 0; i < 3; ++i) {
    reports.rptFolderLabelsSingleSheet("ID = 1", order[i]);
    EXPECT_EQ(form.VSP.Orientation(), 0);
    tops[i] = Runs(form.VSP, 0).at(0).top.value();
  }
  EXPECT_EQ(tops[0], 200);
  EXPECT_LT(tops[0], tops[1]);
  EXPECT_LT(tops[1], tops[2]);
  EXPECT_LT(tops[2], 11 * kInch - 200);
  EXPECT_TRUE(host.messages.empty());
}

TEST_F(Labels, FolderTabTrapShowsItsMessageOnABadFilter) {
  reports.rptFolderLabelsSingleSheet("NoSuchColumn = 1", rptTop);
  ASSERT_TRUE(SaidOnce(
      host, "An Error has occurred in Sub rptFolderLabelsSingleSheet in Object clsReports\n"));
  // The trap's box: the error's own words after its text, OK alone, no title.
  EXPECT_NE(host.messages[0].prompt.find("NoSuchColumn"), std::string::npos);
  EXPECT_EQ(host.messages[0].buttons, host::vbOKOnly);
  EXPECT_EQ(host.messages[0].title, "");
  EXPECT_TRUE(host.FailureShown());
}

TEST_F(Labels, InsuranceCompanySheetCarriesOneCompanyThirtyTimes) {
  reports.rptInsuranceCompanyLabels(1);
  const std::string company = TextOf("SELECT CompanyName FROM InsuranceCompany WHERE ID = 1");
  EXPECT_EQ(form.VSP.DocName(), "Insurance Company Labels - " + company);
  ASSERT_EQ(form.VSP.PageCount(), 1);
  const std::string text = Text();
  EXPECT_EQ(Occurrences(text, company), 30u);
  // Three columns: the names start at three distinct x positions.
  std::set<double> xs;
  for (const auto& r : Runs(form.VSP, 0))
    if (r.font == Runs(form.VSP, 0)[0].font && company.rfind(r.text, 0) == 0) xs.insert(r.x.value());
  EXPECT_EQ(xs.size(), 3u);
}

TEST_F(Labels, AppointmentCardLabelWritesTheTimeFromMinutes) {
  RawExec("UPDATE PatientAppointments SET Time = 785, Date = '2026-12-03' WHERE ID = 1");
  reports.rptAppointmentCardLabel(1);
  const std::string text = Text();
  EXPECT_TRUE(HasAll(text, {"Has an Appointment with:", "Thursday 03 Dec 2026 at 1:05 PM"}));
  EXPECT_EQ(form.PrintCount(), 1);
  EXPECT_EQ(form.VSP.Orientation(), 0) << "portrait is restored for the next report";

  reports.rptAppointmentCardLabel(987654);
  ASSERT_TRUE(SaidOnce(host, "You have not selected a valid appointment."));
  EXPECT_EQ(form.PrintCount(), 1);

  form.SetDialogAnswer(0);
  reports.rptAppointmentCardLabel(1);
  EXPECT_EQ(form.PrintCount(), 1) << "a refused dialog prints nothing";
}

using Envelopes = ReportTest;

TEST_F(Envelopes, EveryEnvelopeIsANumberTenOnEitherDriver) {
  // The reports that check the width turn a page reported narrow side
  // first; the referring dentists' never checks, and fits because the
  // surface reports the envelope long edge first.
  struct Case {
    const char* name;
    bool narrow_driver;
    std::function<void()> run;
    double width;
  } cases[] = {
      {"patients", false, [&] { reports.rptPatientEnvelope("ID <= 2", true); }, 9.5},
      {"patients, narrow driver", true, [&] { reports.rptPatientEnvelope("ID <= 2", true); }, 9.5},
      {"companies, narrow driver", true, [&] { reports.rptInsuranceCompanyEnvelopes("ID <= 2"); }, 9.5},
      {"dentists, narrow driver: no check", true,
       [&] { reports.rptReferringDentistMailingEnvelopes("ID <= 2"); }, 4.125},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    // The surface as it comes first, then as the other kind of driver.
    if (c.narrow_driver) form.VSP.EnvelopeNarrowFirst(true);
    c.run();
    ASSERT_EQ(form.VSP.PageCount(), 2) << "one envelope a page, no trailing page";
    for (const auto& page : form.VSP.Document().pages) {
      EXPECT_EQ(page.width.value(), c.width * kInch);
      EXPECT_EQ(page.height.value(), (13.625 - c.width) * kInch);
    }
  }
}

TEST_F(Envelopes, ReturnAddressInTheCornerAndDestinationAtThreeAndAHalfInches) {
  reports.OfficeID = 1;
  RawExec("UPDATE Patient SET Title = 'Mr.', FirstName = 'Ole', LastName = 'Berg', Address = '5 Elm St' WHERE ID = 4");
  reports.rptPatientEnvelope("ID = 4", true);
  ASSERT_EQ(form.VSP.PageCount(), 1);
  auto runs = Runs(form.VSP, 0);
  const std::string office = TextOf("SELECT Name FROM OfficeInformation WHERE ID = 1");
  const std::string first_word = office.substr(0, office.find(' '));
  const auto* from = Find(runs, first_word);
  ASSERT_NE(from, nullptr);
  EXPECT_EQ(from->x.value(), 0.2 * kInch);
  EXPECT_EQ(from->top.value(), 0.2 * kInch);
  const auto* to = Find(runs, "Mr.");
  ASSERT_NE(to, nullptr);
  EXPECT_EQ(to->x.value(), 3.7 * kInch) << "3.5 in of indent inside the 0.2 in margin";
  EXPECT_EQ(to->top.value(), 2 * kInch);
  EXPECT_NE(Text().find("Mr. Ole Berg\n5 Elm St"), std::string::npos);
  EXPECT_EQ(form.VSP.IndentLeft().value(), 0);

  // Without the return address the corner stays empty.
  reports.rptPatientEnvelope("ID = 4", false);
  EXPECT_EQ(Find(Runs(form.VSP, 0), first_word), nullptr);
  EXPECT_EQ(form.ShowCount(), 2);
}

TEST_F(Envelopes, OnePatientWithoutAnAddressStopsTheRunAndPrintsNothing) {
  RawExec("UPDATE Patient SET Address = '' WHERE ID = 3");
  reports.rptPatientEnvelope("ID <= 5", true);
  EXPECT_EQ(form.VSP.PageCount(), 0) << "not even the envelopes before it";
  EXPECT_EQ(form.ShowCount(), 0);
  ASSERT_TRUE(SaidOnce(host, "There is no address entered for this patient."));

  // A refused dialog: no document, no message.
  form.SetDialogAnswer(0);
  reports.rptPatientEnvelope("ID = 1", true);
  reports.rptInsuranceCompanyEnvelopes("0");
  EXPECT_EQ(form.VSP.PageCount(), 0);
  EXPECT_EQ(form.ShowCount(), 0);
  EXPECT_EQ(host.messages.size(), 1u);

  // The trap's message runs straight into the description.
  form.SetDialogAnswer(1);
  reports.rptPatientEnvelope("NoSuchColumn = 1", true);
  ASSERT_EQ(host.messages.size(), 2u);
  EXPECT_EQ(host.messages[1].prompt.rfind("An error has occurred in rptPatientEnvelope: ", 0), 0u);
  EXPECT_EQ(host.messages[1].prompt.find('\n'), std::string::npos);
}

}  // namespace
}  // namespace orv::testing

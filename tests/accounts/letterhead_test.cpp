// Letters on the demo practice's offices, whose letterheads carry logos:
// the one thing the account practice (account_fixture.h) has no rows for.
// Office 1 is made plain; office 2 keeps its logo, which makes the
// letterhead about four inches tall. Anne Roy owes 100.00 on an invoice of
// Oct/15 (36 days before today, Nov/20: > 30 days).
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "platform/render/display_list.h"
#include "support/forged_cells.h"
#include "support/report_fixture.h"

namespace orv::testing {
namespace {

class DemoLetterhead : public ReportTest {
 protected:
  void SetUp() override {
    ReportTest::SetUpPractice(R"sql(
INSERT INTO Patient (ID, FirstName, LastName, FullName, Address, DefaultOfficeID,
  ResponsibleFamilyMemberID) VALUES
 (90001, 'Anne', 'Roy', 'Roy, Anne', '5 Elm St' || char(13) || char(10) || 'Ottawa, ON', 1, 90001);
INSERT INTO Invoices (ID, [Invoice#], PatientID, [Date], [Time], [Complete?], InvoiceTotal) VALUES
 (90101, 590101, 90001, '2026-10-15 00:00:00', 600, 1, 100.00);
UPDATE OfficeInformation SET Logo = NULL WHERE ID = 1;
)sql");
  }
  static DateTime Day(int y, int m, int d) { return DateTime::FromParts(y, m, d); }
};

TEST_F(DemoLetterhead, AgeTableOfBulkStatementsStaysPinnedUnderALogo) {
  // Under the logo the letterhead takes more of the first page, yet the age
  // table stands at the foot of the statement's last page, at the same
  // place as on a statement without a logo.
  reports.OfficeID = 1;
  reports.rptBulkStatements("Patient.ID = 90001", "", false, "");
  const auto plain = RunsOf(form.VSP.Document(), "Total Due($)");
  ASSERT_EQ(plain.size(), 1u);

  reports.OfficeID = 2;
  reports.rptBulkStatements("Patient.ID = 90001", "", false, "");
  const auto& first = form.VSP.Document().pages.at(0).items;
  EXPECT_TRUE(std::any_of(first.begin(), first.end(), [](const auto& i) {
    return std::holds_alternative<render::Picture>(i);
  }));
  const int last = form.VSP.PageCount();
  const auto pinned = RunsOf(form.VSP.Document(), "Total Due($)");
  ASSERT_EQ(pinned.size(), 1u);
  EXPECT_DOUBLE_EQ(pinned[0].top.value(), plain[0].top.value());
  EXPECT_NE(PageText(last).find("Total Due($)\n0.00 100.00 0.00 0.00 100.00\n"), std::string::npos)
      << PageText(last);
}

// Where a letterhead ends and the addressee starts, for each kind of
// letterhead: the address must show through the envelope window.
TEST_F(DemoLetterhead, AddresseeSitsAtTheWindowWhateverTheLetterhead) {
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
    std::vector<int32_t> ids{90001, 0};
    reports.rptStatements(Day(2026, 10, 1), Day(2026, 10, 31), ids, false, "", false, true, true,
                          false, false);
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

}  // namespace
}  // namespace orv::testing

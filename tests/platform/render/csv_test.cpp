#include "platform/render/csv.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "common/named_cases.h"
#include "platform/render/renderer.h"
#include "support/shell.h"

namespace orv::render {
namespace {

namespace fs = std::filesystem;

struct ValueCase {
  const char* name;
  const char* cell;
  const char* csv;
};

class CsvValues : public ::testing::TestWithParam<ValueCase> {};

TEST_P(CsvValues, ReadAsASpreadsheetShould) {
  EXPECT_EQ(CsvValue(GetParam().cell), GetParam().csv) << GetParam().cell;
}

INSTANTIATE_TEST_SUITE_P(
    Cells, CsvValues,
    ::testing::Values(
        // Money: no sign, no grouping, two decimals, negatives with a minus.
        ValueCase{"grouped_dollars", "$1,234.50", "1234.50"},
        ValueCase{"parenthesised", "($5.00)", "-5.00"},
        ValueCase{"minus_before_sign", "-$5.00", "-5.00"},
        ValueCase{"minus_after_sign", "$-1,005.10", "-1005.10"},
        ValueCase{"blanks_around", "  $7.25 ", "7.25"}, ValueCase{"whole_dollars", "$12", "12.00"},
        ValueCase{"cents_only", "$.50", "0.50"}, ValueCase{"negative_zero", "-$0.00", "0.00"},
        ValueCase{"more_decimals_kept", "$1.2345", "1.2345"},
        ValueCase{"grouped_without_sign", "1,234.50", "1234.50"},
        // Left alone: plain numbers, counts, lists of IDs, broken groups.
        ValueCase{"plain_number", "12.50", "12.50"}, ValueCase{"grouped_count", "1,234", "1,234"},
        ValueCase{"bad_grouping", "$1,23.00", "$1,23.00"}, ValueCase{"percent", "12.5%", "12.5%"},
        ValueCase{"sign_alone", "$", "$"},
        // Dates in the shapes the reports print them.
        ValueCase{"mmm_dd_yyyy", "Nov/20/2026", "2026-11-20"},
        ValueCase{"long_date", "November 20, 2026", "2026-11-20"},
        ValueCase{"with_weekday", "Friday November 20, 2026", "2026-11-20"},
        ValueCase{"weekday_comma", "Friday, November 20, 2026", "2026-11-20"},
        ValueCase{"mmm_comma_d", "Nov, 20, 2026", "2026-11-20"},
        ValueCase{"day_first", "20 Nov 2026", "2026-11-20"},
        ValueCase{"numeric", "11/20/2026", "2026-11-20"},
        ValueCase{"iso_already", "2026-11-20", "2026-11-20"},
        ValueCase{"french_month", "déc./1/2026", "2026-12-01"},
        ValueCase{"with_time", "Nov/20/2026 9:05 AM", "2026-11-20 09:05"},
        ValueCase{"with_seconds", "11/20/2026 14:05:30", "2026-11-20 14:05:30"},
        // Not dates: no four-digit year, a period, a day that does not exist,
        // a word that is no month, text around a date.
        ValueCase{"two_digit_year", "Fri,20 Nov,26", "Fri,20 Nov,26"},
        ValueCase{"month_and_year", "November 2026", "November 2026"},
        ValueCase{"no_such_day", "Feb/30/2026", "Feb/30/2026"},
        ValueCase{"not_a_month", "Room/20/2026", "Room/20/2026"},
        ValueCase{"date_in_text", "Paid on Nov/20/2026", "Paid on Nov/20/2026"},
        // A cell of lines: each line as it would be alone, LF between them.
        ValueCase{"lines", "Sub Total $1.00\r\nInterest $0.10", "Sub Total $1.00\nInterest $0.10"},
        ValueCase{"stacked_figures", "$1,000.00\r\n($5.00)\r\n\r\n--------\n$995.00 ",
                  "1000.00\n-5.00\n\n--------\n995.00"},
        ValueCase{"dates_in_lines", "Feb/21/1953\rAug/05/2026", "1953-02-21\n2026-08-05"},
        ValueCase{"text", "Dental Treatment", "Dental Treatment"}),
    CaseName);

// (Commas and quotes in a field: OneBlockPerTableInPageOrder.)
TEST(Csv, FieldsAreQuotedOnlyWhenTheyMustBe) {
  const std::pair<const char*, const char*> cases[] = {
      {"", ""},
      {"two\nlines", "\"two\nlines\""},
      {"semi;colon|bar", "semi;colon|bar"},
  };
  for (const auto& [value, field] : cases) EXPECT_EQ(CsvField(value), field) << value;
}

TEST(Csv, OneBlockPerTableInPageOrder) {
  Document doc;
  doc.pages.resize(2);
  // Laid out in this order: a page-2 table first (an overlay drawn at the
  // end would come last but stand on page 1), then one on page 1.
  doc.tables.push_back({2, true, {{"Name", "Total"}, {"Smith, Jr.", "$1,005.10"}}});
  doc.tables.push_back({1, false, {{"Nov/20/2026", "($5.00)"}}});
  doc.tables.push_back({1, true, {{"Patient\r\nPortion", "Say \"hi\""}}});
  // Rows drawn as tables of their own, without a header, continue the
  // block before them when their columns match.
  doc.tables.push_back({1, false, {{"Employer\r\n", "$3"}}});
  doc.tables.push_back({1, false, {{"one column"}}});
  EXPECT_EQ(CsvText(doc),
            "2026-11-20,-5.00\r\n"
            "\r\n"
            "Patient Portion,\"Say \"\"hi\"\"\"\r\n"
            "Employer,3.00\r\n"
            "\r\n"
            "one column\r\n"
            "\r\n"
            "Name,Total\r\n"
            "\"Smith, Jr.\",1005.10\r\n");
}

TEST(Csv, ADocumentWithoutTablesGivesItsTextLines) {
  Document doc;
  doc.fonts.push_back({"Tahoma", "/usr/share/wine/fonts/tahoma.ttf"});
  auto run = [](std::string text, double x, double top) {
    TextRun r;
    r.text = std::move(text);
    r.x = Twips(x);
    r.width = Twips(600);
    r.top = Twips(top);
    r.baseline = Twips(top + 200);
    return r;
  };
  Page p1{Twips(12240), Twips(15840), {}};
  p1.items.push_back(run("Dear Ms. Vance,", 1440, 1440));
  p1.items.push_back(run("Thank you, truly.", 1440, 1800));
  Page p2{Twips(12240), Twips(15840), {}};
  p2.items.push_back(run("Dr. Lee", 1440, 1440));
  doc.pages = {p1, p2};
  EXPECT_EQ(CsvText(doc), "\"Dear Ms. Vance,\"\r\n\"Thank you, truly.\"\r\nDr. Lee\r\n");
}

TEST(Csv, AFailedWriteLeavesTheFileThatStoodThere) {
  const fs::path dir = fs::temp_directory_path() / ("orv_csv_" + std::to_string(::getpid()));
  fs::create_directories(dir);
  const std::string path = (dir / "list.csv").string();
  Document doc;
  doc.tables.push_back({1, true, {{"Name"}, {"Ann"}}});
  WriteCsv(doc, path);
  EXPECT_EQ(testing::Shell("cat " + path), "Name\r\nAnn\r\n");
  // A folder that cannot be written to: the write fails and the good file
  // stays as it was, with no temporary file beside it.
  fs::permissions(dir, fs::perms::owner_read | fs::perms::owner_exec);
  doc.tables[0].rows = {{"Name"}, {"Bob"}};
  if (::geteuid() != 0) {
    EXPECT_THROW(WriteCsv(doc, path), RenderError);
    EXPECT_EQ(testing::Shell("cat " + path), "Name\r\nAnn\r\n");
  }
  fs::permissions(dir, fs::perms::owner_all);
  EXPECT_THROW(WriteCsv(doc, (dir / "missing" / "list.csv").string()), RenderError);
  EXPECT_EQ(std::distance(fs::directory_iterator(dir), fs::directory_iterator()), 1);
  fs::remove_all(dir);
}

}  // namespace
}  // namespace orv::render

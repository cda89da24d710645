#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>

#include "common/errors.h"
#include "frame/blob_files.h"
#include "frame/surface/surface.h"
#include "platform/db/recordset.h"
#include "platform/host/files.h"
#include "support/forged_cells.h"
#include "support/paged_lines.h"
#include "support/report_fixture.h"
#include "support/text_order.h"

namespace orv::testing {
namespace {

using DirectoryLists = ReportTest;

TEST_F(DirectoryLists, FeeGuideRunsFromCallToPreview) {
  reports.OfficeID = 1;
  reports.rptFeeGuide(1, "dana");
  std::string text = Text();
  std::string name = CStr(ValueOf("SELECT Name FROM FeeGuides WHERE ID = 1"));

  // Heading: the guide's name over its columns. (The printed-on and office
  // lines of the shared heading: ReportHost.AListRunsToACheckedPdf.)
  EXPECT_EQ(form.VSP.DocName(), name);
  EXPECT_NE(text.find(name + "\n"), std::string::npos) << text;
  EXPECT_NE(text.find("Code Description Type Amount($)"), std::string::npos) << text;

  // Every detail row of the guide is printed, with its amount as currency.
  int rows = CLng(ValueOf("SELECT COUNT(*) FROM FeeGuideDetails WHERE FeeGuideID = 1"));
  ASSERT_GT(rows, 5);
  // Every page that the table reaches repeats its header with its "($)".
  EXPECT_EQ(
      static_cast<int>(std::count(text.begin(), text.end(), '$') - Occurrences(text, "Amount($)")),
      rows);

  // Progress after every row, rising to 100.
  ASSERT_EQ(progress.size(), static_cast<size_t>(rows));
  EXPECT_TRUE(std::is_sorted(progress.begin(), progress.end()));
  EXPECT_EQ(progress.back(), 100);

  // The form was shown and the pointer restored.
  EXPECT_EQ(form.ShowCount(), 1);
  EXPECT_EQ(host.pointer_history, (std::vector<int>{host::vbHourglass, host::vbDefault}));
}

TEST_F(DirectoryLists, HeadingLeavesOutOfficeLineAndEmptyUser) {
  reports.OfficeID = 0;
  reports.rptInsuranceCompanyList("", "");
  std::string first = PageText(1);
  EXPECT_TRUE(HasAll(first, {"Insurance Company List\n", "Printed On: Nov/20/2026\n"}));
  EXPECT_TRUE(HasNone(first, {"By:", "Phone #:"}));
}

TEST_F(DirectoryLists, ZeroFilterIsNoFilterAndEmployerListStaysHidden) {
  reports.rptInsuranceCompanyList("0", "desk");
  std::string zero = Text();
  reports.rptInsuranceCompanyList("", "desk");
  EXPECT_EQ(Text(), zero);
  EXPECT_EQ(form.ShowCount(), 2);

  reports.rptInsuranceCompanyList("ID = 1", "desk");
  EXPECT_LT(Text().size(), zero.size());

  reports.rptEmployerList("0", "desk");
  std::string employers = Text();
  EXPECT_NE(employers.find("Employer Address Phone # Policy # Insurance Company"), std::string::npos)
      << employers;
  // The employer list has always left showing the form to the host.
  EXPECT_EQ(form.ShowCount(), 3);
  EXPECT_GT(form.VSP.PageCount(), 0);
}

TEST_F(DirectoryLists, SimplePatientListBreaksPagesWithTheTwoLineHeader) {
  reports.rptPatientListSimple("0", "desk", "All Patients");
  int patients = CLng(ValueOf("SELECT COUNT(*) FROM Patient"));
  int pages = form.VSP.PageCount();
  ASSERT_GT(pages, 1) << "the fixture should need several pages";
  EXPECT_EQ(progress.size(), static_cast<size_t>(patients));
  EXPECT_EQ(progress.back(), 100);
  // The shaded column heads open page 1, and each later page starts with
  // the same heads as the header of its first patient's table.
  for (int p = 1; p <= pages; ++p) {
    std::string page = PageText(p);
    EXPECT_NE(page.find("Patient Name Address Telephone #s Birth Date"), std::string::npos)
        << "page " << p << ":\n" << page;
  }
  // Landscape letter.
  EXPECT_EQ(form.VSP.Orientation(), 1);
}

// A patient's row reads each value into its own cell: a phone with its
// extension in brackets and one without, no birth date and a signup date
// with a time of day, and a second employer and insurer that are not on
// file, which print nothing.
TEST_F(DirectoryLists, SimplePatientListRowHoldsEachValueInItsCell) {
  RawExec(
      "UPDATE Patient SET LastName = 'Roy', FirstName = 'Ana', Address = '12 Elm St', HomePhone = "
      "'555-0100', HomeExt = '12', OtherPhone = '555-0199', OtherExt = NULL, BirthDate = NULL, "
      "SignupDate = '2019-04-05 13:30:00', EmergencyContact = 'Jo; Roy', EmergencyPhone = NULL, "
      "EmployerID = (SELECT MIN(ID) FROM Employers), SecondaryEmployerID = 999999, "
      "InsuranceID = NULL, SecondaryInsuranceID = (SELECT MIN(ID) FROM InsuranceCompany) WHERE ID = 5;"
      "UPDATE Employers SET Name = 'Acme' WHERE ID = (SELECT MIN(ID) FROM Employers);"
      "UPDATE InsuranceCompany SET CompanyName = 'Blue Plan' WHERE ID = (SELECT MIN(ID) FROM InsuranceCompany)");
  reports.rptPatientListSimple("ID = 5", "desk", "Patients");
  const auto& tables = form.VSP.Document().tables;
  ASSERT_EQ(tables.size(), 2u) << "the column heads, then the one patient";
  ASSERT_EQ(tables[1].rows.size(), 1u);
  std::vector<std::string> cells;
  for (size_t i = 0; i < tables[1].rows[0].size(); ++i) cells.emplace_back(tables[1].rows[0][i]);
  EXPECT_EQ(cells, (std::vector<std::string>{"Roy, Ana", "12 Elm St", "555-0100[12]\r\n555-0199",
                                             "\r\nApr/05/2019", "Jo; Roy\r\n", "Acme\r\n",
                                             "\r\nBlue Plan"}));
}

TEST_F(DirectoryLists, SimplePatientListByEmployer) {
  int32_t id = CLng(ValueOf(
      "SELECT TOP 1 EmployerID, COUNT(*) AS N FROM Patient WHERE EmployerID IS NOT NULL GROUP BY "
      "EmployerID ORDER BY COUNT(*) DESC"));
  const std::string employer = std::to_string(id);
  reports.rptPatientListSimple("", "desk", "ignored", true, id);
  EXPECT_EQ(form.VSP.DocName(),
            CStr(ValueOf("SELECT Name FROM Employers WHERE ID = " + employer)) + " Patients");
  int expected = CLng(ValueOf("SELECT COUNT(*) FROM Patient WHERE EmployerID = " + employer +
                              " OR SecondaryEmployerID = " + employer));
  EXPECT_EQ(progress.size(), static_cast<size_t>(expected));
}

// Only every 100th patient raises Progress. A patient's block (name,
// address, employer, insurance) breaks to a new page whole: no page opens
// with one of its tables without the name.
TEST_F(DirectoryLists, DetailedPatientListRaisesProgressSparselyAndKeepsEachBlockOnOnePage) {
  reports.rptPatientListDetailed("");
  const int patients = CLng(ValueOf("SELECT COUNT(*) FROM Patient"));
  EXPECT_EQ(progress.size(), static_cast<size_t>(patients / 100));
  EXPECT_TRUE(HasAll(
      Text(), {"Patient Contact List - Detailed Version 4 Only", "Address Phones Global Notes"}));
  const auto lines = PagedLines(Text());
  ASSERT_GT(lines.back().first, 2) << "the fixture should need several pages";
  for (size_t i = 1; i < lines.size(); ++i) {
    const std::string& l = lines[i].second;
    for (const char* head : {"Address Phones Global Notes", "Employer Address Phone EDI? Notes",
                             "Primary Insurance Policy#", "Secondary Insurance Policy#"}) {
      EXPECT_TRUE(l.rfind(head, 0) != 0 || lines[i].first == lines[i - 1].first) << l;
    }
  }
}

// A patient's block: the address, the phones that are on file in their
// order with their extensions, the notes; the employer's row; each carrier
// with the patient's own numbers for it, the secondary ones from the
// "Secondary" fields.
TEST_F(DirectoryLists, DetailedPatientListBlockHoldsEachValueInItsCell) {
  RawExec(
      "UPDATE Patient SET Address = '12 Elm St', GlobalNotes = 'Prefers mornings', HomePhone = "
      "'555-0100', HomeExt = '12', CelPhone = NULL, Pager = '555-0150', PagerExt = NULL, "
      "OtherPhone = '555-0199', OtherExt = '7', EmployerID = (SELECT MIN(ID) FROM Employers), "
      "InsuranceID = (SELECT MIN(ID) FROM InsuranceCompany), SecondaryInsuranceID = (SELECT "
      "MAX(ID) FROM InsuranceCompany), [Policy#] = 'P1', [Division#] = 'D1', [SubscriberID#] = "
      "'S1', [SecondaryPolicy#] = 'P2', [SecondaryDivision#] = 'D2', [SecondarySubscriberID#] = "
      "'S2', YearEnding = '12/31' WHERE ID = 5;"
      "UPDATE Employers SET Name = 'Acme', Street = '1 Main St', Phone = '555-0000', [EDI?] = 1, "
      "Notes = 'Union' WHERE ID = (SELECT MIN(ID) FROM Employers);"
      "UPDATE InsuranceCompany SET CompanyName = 'Blue Plan' WHERE ID = (SELECT MIN(ID) FROM "
      "InsuranceCompany);"
      "UPDATE InsuranceCompany SET CompanyName = 'Green Plan' WHERE ID = (SELECT MAX(ID) FROM "
      "InsuranceCompany)");
  reports.rptPatientListDetailed("ID = 5");
  std::vector<std::vector<std::string>> rows;
  for (const auto& table : form.VSP.Document().tables) {
    ASSERT_EQ(table.rows.size(), 2u) << "the heads and the patient's row";
    std::vector<std::string> cells;
    for (size_t i = 0; i < table.rows[1].size(); ++i) cells.emplace_back(table.rows[1][i]);
    rows.push_back(cells);
  }
  const std::string edi = CStr(ValueOf("SELECT [EDI?] FROM Employers WHERE ID = (SELECT MIN(ID) FROM Employers)"));
  EXPECT_EQ(rows, (std::vector<std::vector<std::string>>{
                      {"12 Elm St", "555-0100 12\r\n555-0150\r\n555-0199 7", "Prefers mornings"},
                      {"Acme", "1 Main St", "555-0000", edi, "Union"},
                      {"Blue Plan", "P1", "D1", "S1", "12/31"},
                      {"Green Plan", "P2", "D2", "S2", "12/31"},
                  }));
}

TEST_F(DirectoryLists, LookupAndOfficeValues) {
  // Null key: Null and no query; key not found: Empty; Null column: "".
  EXPECT_TRUE(reports.ReturnLookupValue("Employers", "ID", Variant::Null(), "Name").IsNull());
  EXPECT_TRUE(reports.ReturnLookupValue("Employers", "ID", Variant(999999), "Name").IsEmpty());
  conn.Execute("UPDATE OfficeInformation SET Fax = NULL WHERE ID = 1");
  EXPECT_EQ(reports.ReturnLookupValue("OfficeInformation", "ID", Variant(1), "Fax"), Variant(""));
  // Text keys go in quotes.
  EXPECT_EQ(reports.ReturnLookupValue("FeeCodes", "ID", Variant("01202"), "Description"),
            Variant(CStr(ValueOf("SELECT Description FROM FeeCodes WHERE ID = '01202'"))));

  // The office of the CurrentOffice setting, not OfficeID; "#" names are
  // bracketed for the statement and read back bare.
  host::AppSettings().Override("Settings", "CurrentOffice", "1");
  reports.OfficeID = 99;
  EXPECT_FALSE(reports.ReturnOfficeValue("Name").IsNull());
  host::AppSettings().Override("Settings", "CurrentOffice", "424242");
  EXPECT_TRUE(reports.ReturnOfficeValue("Name").IsNull());
  EXPECT_THROW(reports.ReturnOfficeValue("NoSuchColumn#"), ReportError);
}

TEST_F(DirectoryLists, LetterheadWithAndWithoutLogo) {
  // Whether the letterhead of the office drew a picture.
  auto letterhead_has_picture = [&](int32_t office) {
    reports.OfficeID = office;
    form.VSP.StartDoc();
    reports.PrintLetterHead();
    form.VSP.EndDoc();
    const auto& items = form.VSP.Document().pages.at(0).items;
    return std::any_of(items.begin(), items.end(),
                       [](const auto& i) { return std::holds_alternative<render::Picture>(i); });
  };
  EXPECT_TRUE(letterhead_has_picture(1));

  // A logo of fewer than 10 bytes counts as none.
  RawExec("UPDATE OfficeInformation SET Logo = X'89504E470D0A1A0A' WHERE ID = 1");
  EXPECT_FALSE(letterhead_has_picture(1));
  const std::string office = CStr(ValueOf("SELECT Name FROM OfficeInformation WHERE ID = 1"));
  EXPECT_EQ(Text().rfind(office + "\n", 0), 0u) << Text();

  // An office with no row prints no letterhead, and the desk is told which.
  letterhead_has_picture(77);
  EXPECT_EQ(Text().find(office), std::string::npos);
  ASSERT_EQ(host.messages.size(), 1u);
  EXPECT_EQ(host.messages[0].prompt,
            "The office 77 is not on file: the document prints without its letterhead.");
}

// Names, addresses and codes holding "|" or ";" print inside their own
// cells in every list, and forge no row.
TEST_F(DirectoryLists, SeparatorsInTheDataStayInTheirCells) {
  const std::string forged = kForgedLastName;
  const std::string street = kForgedStreet;
  RawExec("UPDATE Patient SET LastName = '" + forged + "', Address = '" + street +
          "' WHERE ID = 5; UPDATE InsuranceCompany SET CompanyName = '" + forged + "', Street = '" +
          street + "' WHERE ID = (SELECT MIN(ID) FROM InsuranceCompany); UPDATE Employers SET Name = '" +
          forged + "', Street = '" + street +
          "' WHERE ID = (SELECT MIN(ID) FROM Employers); UPDATE FeeCodes SET Description = '" + forged +
          "' WHERE ID = (SELECT MIN(FeeCodeID) FROM FeeGuideDetails WHERE FeeGuideID = 1); "
          "UPDATE Employees SET LastName = '" + forged + "' WHERE ID = (SELECT MIN(ID) FROM Employees)");
  struct Case {
    const char* name;
    std::function<void()> run;
    std::vector<std::string> cells;
  };
  const std::vector<Case> cases = {
      {"fee guide", [&] { reports.rptFeeGuide(1, ""); }, {forged}},
      {"insurance companies", [&] { reports.rptInsuranceCompanyList("0", ""); }, {forged, street}},
      {"employers", [&] { reports.rptEmployerList("0", ""); }, {forged, street}},
      {"simple patient list", [&] { reports.rptPatientListSimple("ID = 5", "", "Patients"); },
       {forged + ",", street}},
      {"detailed patient list", [&] { reports.rptPatientListDetailed("ID = 5"); }, {street}},
      {"providers included",
       [&] {
         form.VSP.StartDoc();
         reports.PrintProvidersIncluded("");
         form.VSP.EndDoc();
       },
       {forged}},
  };
  for (const Case& c : cases) {
    c.run();
    for (const std::string& cell : c.cells) ExpectWholeCell(form.VSP.Document(), cell, c.name);
  }
}

TEST_F(DirectoryLists, BlobsAreWrittenInWholeChunksAndARemainder) {
  // Exactly one chunk, one chunk and a byte, and nothing.
  RawExec(
      "CREATE TABLE Blobs (ID INTEGER PRIMARY KEY, Data BLOB);"
      "INSERT INTO Blobs VALUES (1, zeroblob(65536)), (2, zeroblob(65537)), (3, NULL)");
  conn.RefreshSchema();
  std::string file = host::GetNewTempFile("blb");
  for (int id : {1, 2}) {
    db::Recordset rs;
    rs.Open("SELECT Data FROM Blobs WHERE ID = " + std::to_string(id), conn);
    ASSERT_TRUE(SaveFileFromDB(rs, "Data", file));
    EXPECT_EQ(std::filesystem::file_size(file), id == 1 ? 65536u : 65537u);
  }
  // A field of no size returns false and leaves the file as it was.
  db::Recordset none;
  none.Open("SELECT Data FROM Blobs WHERE ID = 3", conn);
  EXPECT_FALSE(SaveFileFromDB(none, "Data", file));
  EXPECT_EQ(std::filesystem::file_size(file), 65537u);
  std::filesystem::remove(file);

  // SaveFileToDB of a missing file shows its message and returns false.
  db::Recordset rs;
  rs.Open("SELECT ID, Data FROM Blobs WHERE ID = 3", conn, db::adOpenStatic, db::adLockOptimistic);
  EXPECT_FALSE(SaveFileToDB(rs, "Data", "/nonexistent/file.png", true, host));
  ASSERT_EQ(host.messages.size(), 1u);
  EXPECT_EQ(host.messages[0].prompt,
            "The file could not be saved to the database. Please check your temp path and try again.");
}

}  // namespace
}  // namespace orv::testing

namespace orv::testing {
namespace {

using ComponentServices = ReportTest;

TEST_F(ComponentServices, ReturnConnectionReusesTheRunsOrOpensTheSettingsDatabase) {
  // With the host's connection let, the second connection is that one, so
  // a report reads one snapshot, even with no database in the settings.
  int32_t location = 3;
  db::Connection same = ReportTest::reports.ReturnConnection(location);
  db::Recordset patients;
  patients.Open("SELECT COUNT(*) AS N FROM Patient", same);
  EXPECT_GT(CLng(patients["N"].Value()), 0);

  // A component without a connection opens the one the settings name.
  clsReports reports;
  // Nothing set up: a clear error rather than a connection to nowhere.
  EXPECT_THROW(reports.ReturnConnection(location), ReportError);
  // The server name names the practice database (a path or a URL).
  host::AppSettings().Override("Settings", "ServerName", OnServerEngine() ? db_url : db_file);
  db::Connection second = reports.ReturnConnection(location);
  db::Recordset rs;
  rs.Open("SELECT COUNT(*) AS N FROM Patient", second);
  EXPECT_GT(CLng(rs["N"].Value()), 0);
  // Without a server name the database name serves.
  host::AppSettings().Override("Settings", "ServerName", "");
  host::AppSettings().Override("Settings", "dbName", db_url);
  int32_t server_side = 2;
  EXPECT_EQ(reports.ReturnConnection(server_side).State(), db::adStateOpen);
}

}  // namespace
}  // namespace orv::testing

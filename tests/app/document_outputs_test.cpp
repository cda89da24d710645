// What the command-line host writes besides one PDF: the tables as CSV, a
// run of statements as one PDF per account, the identity every PDF
// carries, and a document printed through a real CUPS queue.
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include "host_support.h"
#include "support/postgres.h"
#include "support/shell.h"
#include "support/text_order.h"

namespace orv::testing {
namespace {

namespace fs = std::filesystem;

using Record = std::vector<std::string>;

// The records of a CSV file as Python's csv module reads it (strictly: a
// stray quote fails the test); a blank line is an empty record.
std::vector<Record> ReadCsv(const std::string& path) {
  ShellResult r = RunShell(
      "python3 -c 'import csv, json, sys; "
      "print(json.dumps(list(csv.reader(open(sys.argv[1], newline=\"\"), strict=True))))' " +
      ShellQuote(path));
  EXPECT_EQ(r.status, 0) << r.out;
  return r.status == 0 ? nlohmann::json::parse(r.out).get<std::vector<Record>>()
                       : std::vector<Record>{};
}

// A figure of the CSV in cents; fails the test for anything but a plain
// number with two decimals.
long long Cents(const std::string& figure) {
  EXPECT_TRUE(std::regex_match(figure, std::regex(R"(-?\d+\.\d\d)"))) << "'" << figure << "'";
  const bool negative = !figure.empty() && figure[0] == '-';
  std::string digits = std::regex_replace(figure, std::regex(R"([-.])"), "");
  const long long v = digits.empty() ? 0 : std::stoll(digits);
  return negative ? -v : v;
}

class DocumentOutputs : public HostSuite {
 protected:
  static void SetUpTestSuite() {
    MakePractice("outputs", 120, 3);
    // One addressee writes in French, and one patient's name holds a comma
    // and double quotes, as a CSV must keep them.
    french = Sql("SELECT MIN(ID) FROM Patient WHERE ID > 20 AND ResponsibleFamilyMemberID = ID");
    quoted = Sql("SELECT MIN(ID) FROM Patient WHERE ID > 40");
    Sql("UPDATE Patient SET Language = 'F' WHERE ID = " + french);
    Sql("UPDATE Patient SET FirstName = 'Ann \"Annie\"', LastName = 'Lee, Jr.' WHERE ID = " +
        quoted);
  }

  static std::string Sql(const std::string& sql) {
    ShellResult r = RunShell("sqlite3 " + Db() + " " + ShellQuote(sql));
    EXPECT_EQ(r.status, 0) << sql;
    while (!r.out.empty() && r.out.back() == '\n') r.out.pop_back();
    return r.out;
  }
  static int PdfPages(const std::string& path) {
    std::smatch m;
    std::string info = RunShell("pdfinfo " + path).out;
    return std::regex_search(info, m, std::regex(R"(Pages:\s+(\d+))")) ? std::stoi(m[1]) : -1;
  }
  static std::vector<std::string> FilesIn(const std::string& folder) {
    std::vector<std::string> names;
    if (!fs::exists(folder)) return names;
    for (const auto& e : fs::directory_iterator(folder)) names.push_back(e.path().filename());
    std::sort(names.begin(), names.end());
    return names;
  }

  static inline std::string french, quoted;
};

TEST_F(DocumentOutputs, BalanceListCsvTotalsEqualItsRowsToTheCent) {
  const std::string csv = dir + "/balances.csv";
  ShellResult r = Report("--out " + csv, "rptPatientsWithABalance desk 2026-11-20 \"\"");
  ASSERT_EQ(r.status, 0) << r.out;
  const std::vector<Record> records = ReadCsv(csv);
  ASSERT_GT(records.size(), 3u);
  EXPECT_EQ(records.front(), (Record{"Patient", "Balance", "Interest", "Post Dates", "0-30 Days",
                                     "> 30 Days", "> 60 Days", "> 90 Days"}));
  const Record& totals = records.back();
  ASSERT_EQ(totals.size(), 8u);
  EXPECT_EQ(totals[0], "Office Totals:");
  // Each patient's row (the obligation rows below it split the same money
  // and have no name) adds up to the office's totals, column by column.
  std::vector<long long> sums(8, 0);
  int patients = 0;
  for (size_t i = 1; i + 1 < records.size(); ++i) {
    ASSERT_EQ(records[i].size(), 8u) << "record " << i;
    if (records[i][0].empty()) continue;
    ++patients;
    for (size_t c = 1; c < 8; ++c) sums[c] += Cents(records[i][c]);
  }
  EXPECT_GT(patients, 10);
  for (size_t c = 1; c < 8; ++c) EXPECT_EQ(sums[c], Cents(totals[c])) << records.front()[c];
  EXPECT_NE(sums[1], 0);
  // The name with a comma and quotes is one field, read back as it stands:
  // the directory list names every patient, so there the name must be.
  ShellResult list =
      Report("--out " + dir + "/list.csv", "rptPatientListSimple 0 desk \"Active Patients\"");
  ASSERT_EQ(list.status, 0) << list.out;
  EXPECT_NE(FileBytes(dir + "/list.csv").find("\"Lee, Jr., Ann \"\"Annie\"\"\""), std::string::npos);
  bool found = false;
  for (const Record& rec : ReadCsv(dir + "/list.csv"))
    found = found || (!rec.empty() && rec[0] == "Lee, Jr., Ann \"Annie\"");
  EXPECT_TRUE(found);
}

TEST_F(DocumentOutputs, StatementsSplitIntoOnePdfPerAccount) {
  // Two patients of one family addressed to the same member, the French
  // addressee, and one more.
  const std::string pair = Sql(
      "SELECT group_concat(ID) FROM (SELECT ID FROM Patient WHERE ResponsibleFamilyMemberID IN "
      "(SELECT ResponsibleFamilyMemberID FROM Patient GROUP BY ResponsibleFamilyMemberID HAVING "
      "COUNT(*) > 1) AND ResponsibleFamilyMemberID <> ID ORDER BY ResponsibleFamilyMemberID, ID "
      "LIMIT 2)");
  const std::string alone =
      Sql("SELECT MIN(ID) FROM Patient WHERE ID > 60 AND ResponsibleFamilyMemberID = ID");
  const std::string ids = pair + "," + french + "," + alone;
  const std::string args = "rptStatements 2026-01-01 2026-11-20 " + ids + " False";
  const std::string whole = dir + "/statements.pdf", folder = dir + "/split/";
  ASSERT_EQ(Report("--out " + whole, args).status, 0);
  ShellResult r = Report("--split --out " + folder, args);
  ASSERT_EQ(r.status, 0) << r.out;
  EXPECT_NE(r.out.find("wrote 4 statements to " + folder), std::string::npos) << r.out;

  const std::vector<std::string> files = FilesIn(folder);
  ASSERT_EQ(files.size(), 4u);
  int pages = 0, repeated = 0;
  for (const std::string& f : files) {
    SCOPED_TRACE(f);
    repeated += f.find("-2.pdf") != std::string::npos;
    const std::string text = PdfText(folder + f);
    const int n = PdfPages(folder + f);
    pages += n;
    // Its own page numbers, from 1 to its own count, and its language.
    EXPECT_NE(text.find("Page 1 of " + std::to_string(n)), std::string::npos);
    EXPECT_EQ(text.find("Page " + std::to_string(n + 1) + " of"), std::string::npos);
    const bool is_french = f.rfind(french + "-", 0) == 0;
    EXPECT_EQ(text.find("Résumé") != std::string::npos, is_french);
    EXPECT_NE(RunShell("pdfinfo " + folder + f).out.find("Subject:         rptStatements("),
              std::string::npos);
  }
  // The one account addressed twice has two files, told apart.
  EXPECT_EQ(repeated, 1);
  EXPECT_EQ(pages, PdfPages(whole));
  // Every page of the run is in exactly one file, as it reads in the run.
  auto pages_of = [](const std::string& text) {
    std::vector<std::string> out;
    for (size_t start = 0; start < text.size();) {
      size_t end = text.find('\f', start);
      if (end == std::string::npos) end = text.size();
      out.push_back(text.substr(start, end - start));
      start = end + 1;
    }
    return out;
  };
  std::vector<std::string> split_pages;
  for (const std::string& f : files)
    for (const std::string& page : pages_of(PdfText(folder + f))) split_pages.push_back(page);
  std::vector<std::string> run_pages = pages_of(PdfText(whole));
  std::sort(split_pages.begin(), split_pages.end());
  std::sort(run_pages.begin(), run_pages.end());
  EXPECT_TRUE(split_pages == run_pages);
}

TEST_F(DocumentOutputs, BulkStatementsSplitAndOtherMethodsRefuse) {
  const std::string folder = dir + "/bulk/";
  ShellResult r =
      Report("--split --out " + folder, "rptBulkStatements \"ID < 30\" \"\" False Statement");
  ASSERT_EQ(r.status, 0) << r.out;
  const std::vector<std::string> files = FilesIn(folder);
  ASSERT_GT(files.size(), 2u);
  for (const std::string& f : files) {
    // The account number the file is named for is the one the page shows.
    const std::string account = f.substr(0, f.find('-'));
    const std::string text = PdfText(folder + f);
    EXPECT_TRUE(std::regex_search(text, std::regex("\\b" + account + "\\b"))) << f;
  }

  struct Case {
    const char* name;
    std::string options, args;
    int status;
    const char* says;
  } refused[] = {
      {"a method without statements", "--split --out " + dir + "/fees/", "rptFeeGuide 1", 1,
       "prints no statements"},
      {"a file, not a folder", "--split --out " + dir + "/one.pdf",
       "rptStatements 2026-01-01 2026-11-20 5 False", 2, "--out FOLDER/"},
      {"no statement printed", "--split --out " + dir + "/none/",
       "rptBulkStatements \"ID < 0\" \"\" False Statement", 1, "nothing to split"},
  };
  for (const auto& c : refused) {
    SCOPED_TRACE(c.name);
    ShellResult no = Report(c.options, c.args);
    EXPECT_EQ(no.status, c.status) << no.out;
    EXPECT_NE(no.out.find(c.says), std::string::npos) << no.out;
  }
  EXPECT_FALSE(fs::exists(dir + "/fees"));
  EXPECT_FALSE(fs::exists(dir + "/none"));
  EXPECT_FALSE(fs::exists(dir + "/one.pdf"));
}

TEST_F(DocumentOutputs, EveryPdfNamesWhatMadeIt) {
  ShellResult r = Report("--out " + dir + "/fees.pdf", "rptFeeGuide 1");
  ASSERT_EQ(r.status, 0) << r.out;
  const std::string info = RunShell("pdfinfo " + dir + "/fees.pdf").out;
  EXPECT_NE(info.find("Subject:         rptFeeGuide(ID=1, UserName=desk)"), std::string::npos)
      << info;
  EXPECT_TRUE(
      std::regex_search(info, std::regex("Keywords: +today=2026-11-20; database=" + dir +
                                         "/demo.db; user=desk; office=1; version=\\d+\\.\\d+")))
      << info;
  EXPECT_NE(info.find("Author:          desk"), std::string::npos) << info;
  EXPECT_TRUE(std::regex_search(info, std::regex(R"(Creator: +orvenda-reports \d+\.\d+)"))) << info;
}

// The PostgreSQL practice is reached with a password: the PDF names the
// database without it.
TEST_F(DocumentOutputs, TheDatabaseInAPdfHasNoPassword) {
  ORV_REQUIRE_POSTGRES();
  const std::string name = "orv_identity_" + std::to_string(::getpid());
  const std::string url = UrlOfDatabase(TestServerUrl(), name, "orvenda_pw:right-password");
  ShellResult copy = Host("copy-db " + Db() + " " + ShellQuote(url) + " --replace");
  ASSERT_EQ(copy.status, 0) << copy.out;
  ShellResult r = Host("--db " + ShellQuote(url) + " --today 2026-11-20 --user desk --out " +
                       At("pg.pdf") + " rptFeeGuide 1");
  ASSERT_EQ(r.status, 0) << r.out;
  const std::string info = RunShell("pdfinfo " + At("pg.pdf")).out;
  EXPECT_EQ(info.find("right-password"), std::string::npos) << info;
  EXPECT_NE(info.find("database=postgresql://orvenda_pw"), std::string::npos) << info;
  ServerExec("DROP DATABASE IF EXISTS " + name + " WITH (FORCE)");
}

// A real CUPS scheduler (scripts/cups.sh, which the test command starts)
// with the queue orvenda-test that writes each job to a file.
class Printing : public DocumentOutputs {
 protected:
  void SetUp() override {
    if (RunShell("lpstat -r 2>&1").out.find("is running") == std::string::npos)
      GTEST_SKIP() << "no CUPS scheduler answers (start one with scripts/cups.sh start DIR and "
                      "export CUPS_SERVER)";
    printed = QueueFile("orvenda-test");
    if (printed.empty()) GTEST_SKIP() << "CUPS has no queue orvenda-test that prints to a file";
  }
  void TearDown() override {
    // A failed check never leaves the queue stopped for the next test.
    if (!printed.empty()) RunShell("cupsenable orvenda-test 2>&1");
  }
  // Waits until the queue has no job left, at most 60 s.
  static bool QueueDone() {
    for (int i = 0; i < 600; ++i) {
      if (RunShell("lpstat -o orvenda-test 2>&1").out.empty()) return true;
      std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    return false;
  }
  std::string printed;
};

TEST_F(Printing, AStatementPrintsAndAStoppedQueueRefuses) {
  const std::string args = "rptStatements 2026-01-01 2026-11-20 " + french + " True";
  ASSERT_EQ(Report("--out " + dir + "/to-print.pdf", args).status, 0);
  ASSERT_TRUE(QueueDone()) << "the queue holds jobs from before";
  fs::remove(printed);
  ShellResult r = Report("--printer orvenda-test", args);
  ASSERT_EQ(r.status, 0) << r.out;
  EXPECT_TRUE(
      std::regex_search(r.out, std::regex(R"(printed on orvenda-test as job orvenda-test-\d+)")))
      << r.out;
  ASSERT_TRUE(QueueDone()) << RunShell("lpstat -o orvenda-test").out;
  ASSERT_TRUE(fs::exists(printed)) << "the queue wrote no file";
  // The job as the printer got it reads as the document.
  EXPECT_EQ(PdfText(printed), PdfText(dir + "/to-print.pdf"));

  // A stopped queue would take the job and hold it: the run says so and
  // fails, and writes nothing, not even the --out it was given.
  ASSERT_EQ(RunShell("cupsdisable orvenda-test 2>&1").status, 0);
  ShellResult stopped = Report("--printer orvenda-test --out " + dir + "/stopped.pdf", args);
  EXPECT_EQ(stopped.status, 1) << stopped.out;
  EXPECT_TRUE(
      HasAll(stopped.out, {"The printer orvenda-test is stopped", "cupsenable orvenda-test"}));
  EXPECT_FALSE(fs::exists(dir + "/stopped.pdf"));
  EXPECT_TRUE(RunShell("lpstat -o orvenda-test 2>&1").out.empty()) << "a job was queued";
  ASSERT_EQ(RunShell("cupsenable orvenda-test 2>&1").status, 0);

  ShellResult unknown = Report("--printer no-such-queue", args);
  EXPECT_EQ(unknown.status, 1) << unknown.out;
  EXPECT_NE(unknown.out.find("The printer no-such-queue is not known to CUPS"), std::string::npos)
      << unknown.out;
}

}  // namespace
}  // namespace orv::testing

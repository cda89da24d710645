// The claim forms and treatment letters from the command line, as a front
// desk runs them without a printer: the printed document lands in --out,
// French accents come back from the PDF, and a form that cannot print
// leaves no file and fails the command.
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "support/shell.h"
#include "test_paths.h"

namespace {

namespace fs = std::filesystem;
using Result = orv::testing::ShellResult;

Result Shell(const std::string& cmd) { return orv::testing::RunShell(cmd + " 2>&1"); }

// A form that cannot print, run into `dir`/`file`: exit 1, what it says,
// and no file.
struct Failing {
  const char* file;
  const char* args;
  const char* says;
};

void ExpectFailure(const std::string& dir, const Failing& c, const Result& r) {
  EXPECT_EQ(r.status, 1) << c.file << "\n" << r.out;
  EXPECT_NE(r.out.find(c.says), std::string::npos) << c.file << "\n" << r.out;
  EXPECT_FALSE(fs::exists(dir + "/" + c.file)) << c.file;
}

class ClaimsHost : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    dir = (fs::temp_directory_path() / ("orv-claims-host-" + std::to_string(::getpid()))).string();
    fs::create_directories(dir);
    Result r = Shell(std::string(ORVENDA_APP) + " demo-db " + dir +
                     "/demo.db --patients 80 --seed 3 --today 2026-11-20");
    ASSERT_EQ(r.status, 0) << r.out;
  }
  static void TearDownTestSuite() { fs::remove_all(dir); }

  static std::string Query(const std::string& sql) {
    Result r = Shell(std::string(ORVENDA_APP) + " sql --db " + dir + "/demo.db --format tsv \"" + sql + "\"");
    std::string out = r.out;
    while (!out.empty() && (out.back() == '\n' || out.back() == '\r')) out.pop_back();
    return out.substr(out.rfind('\n') + 1);
  }
  static Result Report(const std::string& out, const std::string& args) {
    return Shell(std::string(ORVENDA_APP) + " --db " + dir + "/demo.db --today 2026-11-20 --out " +
                 dir + "/" + out + " " + args);
  }
  static std::string PdfText(const std::string& file) {
    return Shell("pdftotext -layout " + dir + "/" + file + " -").out;
  }
  static inline std::string dir;
};

TEST_F(ClaimsHost, FormsAndLettersPrintToTheOutputFile) {
  const std::string invoice = Query(
      "SELECT MIN(Invoices.ID) FROM Invoices INNER JOIN Patient ON Invoices.PatientID = Patient.ID "
      "INNER JOIN Employers ON Patient.EmployerID = Employers.ID WHERE Employers.InsuranceID > 0");
  const std::string plan = Query("SELECT MAX(ID) FROM PatientPredTreatments");
  ASSERT_FALSE(invoice.empty());
  struct Case {
    const char* file;
    std::string args;
    const char* words;
  };
  const Case cases[] = {
      {"claim.pdf", "rptClaimForm " + invoice + " 1", "ALL INFORMATION RECORDED ON THIS FORM IS CONFIDENTIAL"},
      {"claim-fr.pdf", "rptClaimFormF " + invoice + " 1",
       "Réservé au dentiste pour renseignements complémentaires"},
      {"pred-fr.pdf", "rptPredClaimFormF " + plan + " 1 ''", "Signature de l'employé(e) participant(e) au régime"},
      {"plan-fr.pdf", "rptLaypersonTreatmentPlanF '' '' " + plan + " ''", "Traitement Dentaire Propose"},
      {"billing.pdf", "rptInsuranceBilling desk", "Insurance Company Billing"}};
  for (const Case& c : cases) {
    Result r = Report(c.file, c.args);
    EXPECT_EQ(r.status, 0) << c.file << "\n" << r.out;
    EXPECT_NE(PdfText(c.file).find(c.words), std::string::npos) << c.file << "\n" << PdfText(c.file);
  }
  // The French form's accents come back as written, capitals included.
  const std::string french = PdfText("claim-fr.pdf");
  for (const char* word : {"Étudient", "prothèse", "à la suite", "Lien de parenté"})
    EXPECT_NE(french.find(word), std::string::npos) << word;
  EXPECT_NE(Report("claim.pdf", "rptClaimForm " + invoice + " 1").out.find("No printer was set"),
            std::string::npos);
}

TEST_F(ClaimsHost, FormsThatCannotPrintLeaveNoFileAndFail) {
  const Failing cases[] = {
      {"bad-claim.pdf", "rptClaimForm 987654 1", "There has been an error printing."},
      {"bad-mode.pdf", "rptClaimFormF 1 1 4", "This could include any insurance information"},
      {"bad-pred.pdf", "rptPredClaimForm 987654 1 ''", "produced no document"},
      {"bad-plan.pdf", "rptLaypersonTreatmentPlan '' '' 987654 ''", "There has been an error printing."}};
  for (const Failing& c : cases) ExpectFailure(dir, c, Report(c.file, c.args));
}

// A new practice with nothing on file: every form says why it cannot print
// and leaves no file, the billing list prints its heading over an empty
// table.
TEST_F(ClaimsHost, ANewPracticePrintsOnlyTheEmptyBillingList) {
  const std::string empty = dir + "/empty.db";
  Result made = Shell(std::string(ORVENDA_APP) + " demo-db " + empty + " --patients 0");
  ASSERT_EQ(made.status, 0) << made.out;
  auto run = [&](const std::string& out, const std::string& args) {
    return Shell(std::string(ORVENDA_APP) + " --db " + empty + " --today 2026-11-20 --out " + dir +
                 "/" + out + " " + args);
  };
  const Failing cases[] = {
      {"new-claim.pdf", "rptClaimForm 1 1", "There has been an error printing."},
      {"new-claim-fr.pdf", "rptClaimFormF 1 1", "especially the primary account holder"},
      {"new-pred.pdf", "rptPredClaimForm 1 1 ''", "produced no document"},
      {"new-pred-fr.pdf", "rptPredClaimFormF 1 1 ''", "produced no document"},
      {"new-plan.pdf", "rptLaypersonTreatmentPlan '' '' 1 ''", "There has been an error printing."},
      {"new-plan-fr.pdf", "rptLaypersonTreatmentPlanF '' '' 1 ''", "There has been an error printing."}};
  for (const Failing& c : cases) ExpectFailure(dir, c, run(c.file, c.args));
  Result billing = run("new-billing.pdf", "rptInsuranceBilling desk");
  EXPECT_EQ(billing.status, 0) << billing.out;
  const std::string text = PdfText("new-billing.pdf");
  EXPECT_NE(text.find("Insurance Company Billing"), std::string::npos) << text;
  EXPECT_NE(text.find("Company Name"), std::string::npos) << text;
  EXPECT_NE(text.find("Received"), std::string::npos) << text;
  EXPECT_EQ(text.find("$"), std::string::npos) << "no company has billed anything\n" << text;
}

}  // namespace

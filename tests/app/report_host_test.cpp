// The report host run as a person runs it: the built program, a demo
// practice, PDFs checked with qpdf and read back with pdftotext; the claim
// forms and treatment letters as a front desk runs them without a printer.
#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <string>

#include "host_support.h"
#include "support/text_order.h"

namespace orv::testing {
namespace {

namespace fs = std::filesystem;

class ReportHost : public HostSuite {
 protected:
  static void SetUpTestSuite() { MakePractice("host", 120, 3); }
  // A claim form or letter as the front desk prints it, into `file` of the
  // suite's folder.
  static ShellResult Form(const std::string& db, const std::string& file, const std::string& args) {
    return Host("--db " + db + " --today 2026-11-20 --out " + At(file) + " " + args);
  }
};

// A list as the front desk runs it: a PDF qpdf finds sound, whose heading
// carries --today, --user and the office of --office.
TEST_F(ReportHost, AListRunsToACheckedPdf) {
  ShellResult r =
      Report("--out " + At("simple.pdf"), "rptPatientListSimple 0 desk \"Active Patients\"");
  ASSERT_EQ(r.status, 0) << r.out;
  ShellResult check = HostShell("qpdf --check " + At("simple.pdf"));
  EXPECT_EQ(check.status, 0) << check.out;
  std::string text = PdfText(At("simple.pdf"));
  EXPECT_TRUE(HasAll(text, {"Active Patients", "Emergency Contact"}));
  EXPECT_NE(text.find("Printed On: Nov/20/2026 By: desk"), std::string::npos);
  EXPECT_TRUE(std::regex_search(text, std::regex(R"(Phone #: \(\d{3}\) \d{3}-\d{4})")));
}

// The printed document lands in --out, French accents come back from the
// PDF (the claims tests read the whole French form), and a form that
// cannot print leaves no file and fails the command. On a new practice
// with nothing on file the billing list prints its heading over an empty
// table.
TEST_F(ReportHost, ClaimFormsAndLettersPrintToTheOutputFileOrFail) {
  const std::string invoice = Query(
      "SELECT MIN(Invoices.ID) FROM Invoices INNER JOIN Patient ON Invoices.PatientID = Patient.ID "
      "INNER JOIN Employers ON Patient.EmployerID = Employers.ID WHERE Employers.InsuranceID > 0");
  ASSERT_FALSE(invoice.empty());
  const std::string empty = At("empty.db");
  ShellResult made = Host("demo-db " + empty + " --patients 0");
  ASSERT_EQ(made.status, 0) << made.out;
  struct Case {
    const char* file;
    std::string args;
    int status;
    const char* words;  // in the PDF, or in the message of a run that fails
    bool new_practice = false;
  };
  const Case cases[] = {
      {"claim.pdf", "rptClaimForm " + invoice + " 1", 0,
       "ALL INFORMATION RECORDED ON THIS FORM IS CONFIDENTIAL"},
      {"claim-fr.pdf", "rptClaimFormF " + invoice + " 1", 0,
       "Réservé au dentiste pour renseignements complémentaires"},
      {"bad-pred.pdf", "rptPredClaimForm 987654 1 ''", 1, "produced no document"},
      {"new-billing.pdf", "rptInsuranceBilling desk", 0, "Insurance Company Billing", true}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.file);
    ShellResult r = Form(c.new_practice ? empty : Db(), c.file, c.args);
    EXPECT_EQ(r.status, c.status) << r.out;
    EXPECT_EQ(fs::exists(At(c.file)), c.status == 0);
    const std::string said = c.status == 0 ? PdfText(At(c.file)) : r.out;
    EXPECT_NE(said.find(c.words), std::string::npos) << said;
  }
  EXPECT_NE(
      Form(Db(), "claim.pdf", "rptClaimForm " + invoice + " 1").out.find("No printer was set"),
      std::string::npos);
  const std::string billing = PdfText(At("new-billing.pdf"));
  EXPECT_TRUE(HasAll(billing, {"Company Name", "Received"}));
  EXPECT_EQ(billing.find("$"), std::string::npos) << "no company has billed anything\n" << billing;
}

}  // namespace
}  // namespace orv::testing

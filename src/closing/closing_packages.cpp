// The day-end and month-end packages: the closing reports the office
// chooses, printed as one document (one preview, one set of page numbers),
// each chosen report a section. The sections are the family's own
// srpt... methods, drawn one after the other into the running document.
//
// The order of the sections is fixed by the package, never by the order in
// which the flags come. A section starts a page only when something is
// already drawn, so the first section never leaves an empty first page and
// a section that drew nothing does not force one.
#include <string>
#include <vector>

#include "closing/closing_common.h"
#include "common/common_functions.h"
#include "common/format.h"
#include "common/vbstrings.h"
#include "frame/preview_form.h"
#include "frame/reports.h"
#include "frame/surface/surface.h"
#include "platform/host/settings.h"
#include "receivables/reconciliation.h"

namespace orv {

namespace {

// Both packages trap under this one name: the front desk knows the
// message, and support reads it as "the closing package failed".
constexpr const char* kPackageTrap =
    "An Error has occurred in Sub rptAnalysisReport in Class clsReports";

constexpr const char* kNoHygienists =
    " No Hygiene providers were selected. Therefore, the Hygiene Report will be skipped.";

constexpr const char* kPracticeTotals = "Practice Totals For Selected Providers";

// The terms of a filter joined by " OR ", in order.
std::vector<std::string> OrTerms(const std::string& filter) {
  std::vector<std::string> terms;
  size_t start = 0;
  for (size_t at; (at = filter.find(" OR ", start)) != std::string::npos; start = at + 4) {
    terms.push_back(filter.substr(start, at - start));
  }
  terms.push_back(filter.substr(start));
  return terms;
}

// "From: Nov/01/2026 to Nov/30/2026", the second line of a dated heading.
std::string FromTo(DateTime dtStart, DateTime dtEnd) {
  return "From: " + Format(Variant(dtStart), "mmm/dd/yyyy") + " to " +
         Format(Variant(dtEnd), "mmm/dd/yyyy");
}

// The two lines under the summary analysis' heading that say how payments
// are read and how the figures are grouped.
void PrintSummaryReading(frame::PrintSurface& vsp, bool byAllocatedPayment, int16_t Byoption) {
  vsp.TextAlign(0);
  vsp.FontSize(10);
  vsp.FontBold(true);
  vsp.Text(std::string("This Report contains ") +
           (byAllocatedPayment ? "only allocated payments"
                               : "all payments including unallocated payments"));
  vsp.Text(Byoption == 1   ? "By Overseer"
           : Byoption == 2 ? "By Preferred Doctor"
           : Byoption == 3 ? "By Date"
                           : "By Provider");
  vsp.FontBold(false);
}

// The package's running document: the page rule before each section and
// the heading of the sections that do not head themselves.
class Package {
 public:
  Package(clsReports& r, std::string user) : r_(r), vsp_(r.VSP()), user_(std::move(user)) {}

  // A new page, unless nothing is drawn yet.
  void NewPageIfDrawn() {
    if (vsp_.CurrentY() > vsp_.MarginTop() || vsp_.PageCount() > 1) vsp_.NewPage();
  }

  // Starts a section headed by the package: the page rule, the heading
  // with its second line (none for ""), and the document's name (left as
  // it is for "").
  void Section(const std::string& title, const std::string& second_line,
               const std::string& doc_name) {
    NewPageIfDrawn();
    if (!doc_name.empty()) vsp_.DocName(doc_name);
    r_.PrintReportHeading(title, user_, second_line);
    BodyStyle();
  }

  // Starts a section that prints its own heading; it reads the document's
  // name as its title.
  void SelfHeadedSection(const std::string& doc_name) {
    NewPageIfDrawn();
    vsp_.DocName(doc_name);
  }

  void BodyStyle() {
    vsp_.TextAlign(1);
    vsp_.FontBold(false);
    vsp_.FontSize(10);
  }

 private:
  clsReports& r_;
  frame::PrintSurface& vsp_;
  std::string user_;
};

// The summary analysis of each provider of an "ID = n OR ..." filter in
// turn, titled with the provider's name, then, for more than one, once
// over all of them. No filter is the whole practice, once.
void SummaryPerProvider(clsReports& r, DateTime dtStart, DateTime dtEnd,
                        const std::string& id_filter, int16_t Byoption, bool byAllocatedPayment) {
  clsCommonFunctions& cf = r.Common();
  if (id_filter.empty()) {
    // Nobody chosen means everybody: one table for the practice, under the
    // title the totals always carry.
    r.srptSummaryAnalysis(dtStart, dtEnd, "", Byoption, kPracticeTotals, byAllocatedPayment);
    return;
  }
  const std::vector<std::string> parts = OrTerms(id_filter);
  for (const std::string& part : parts) {
    const size_t eq = part.find('=');
    const int32_t id = static_cast<int32_t>(
        cf.ReturnVal(Variant(eq == std::string::npos ? part : part.substr(eq + 1))));
    const Variant key(id);
    const std::string last = cf.returnStr(r.ReturnLookupValue("Employees", "ID", key, "LastName"));
    const std::string first =
        cf.returnStr(r.ReturnLookupValue("Employees", "ID", key, "FirstName"));
    r.srptSummaryAnalysis(dtStart, dtEnd, "ID = " + std::to_string(id), Byoption,
                          first + " " + last, byAllocatedPayment);
  }
  // A single provider's table already is the practice's total for the
  // selection: no second table with the same figures.
  if (parts.size() > 1) {
    r.srptSummaryAnalysis(dtStart, dtEnd, id_filter, Byoption, kPracticeTotals, byAllocatedPayment);
  }
}

// The hygiene company section: only for hygienists among the chosen
// providers (all hygienists when none are chosen), and only when the
// office has set up its hygiene company codes.
void HygieneSection(clsReports& r, Package& package, DateTime dtStart, DateTime dtEnd,
                    const std::string& id_filter) {
  clsCommonFunctions& cf = r.Common();
  db::Recordset rs =
      r.Open("SELECT ID FROM Employees WHERE TypeID = 5" + closing::AndFilter(id_filter),
             db::adOpenForwardOnly);
  std::string hygienists;
  while (!rs.Eof()) {
    hygienists += (hygienists.empty() ? "" : " OR ") + std::string("ID = ") +
                  std::to_string(static_cast<int32_t>(cf.ReturnVal(rs["ID"].Value())));
    rs.MoveNext();
  }
  rs.Close();
  if (hygienists.empty()) {
    r.Host().MsgBox(kNoHygienists, host::vbOKOnly, "");
    return;
  }
  package.Section("Hygiene Company Report", FromTo(dtStart, dtEnd), "Hygiene Company Report");
  // The section reads the office's hygiene company codes itself and,
  // without them, tells the office how to set them up and draws nothing.
  r.srptHygieneCompanyReport(dtStart, dtEnd, "(" + hygienists + ")");
}

// Paper and table borders of a package. Most sections draw their tables
// in whatever border the surface holds, so the package starts from the
// office's choice (setting TableBorder, none by default) rather than from
// what the last report on this form left behind: the same package then
// lays out alike on every run.
void PackagePaper(frame::PrintSurface& vsp) {
  closing::HalfInchPortrait(vsp);
  vsp.TableBorder(
      static_cast<int>(vb::Val(host::AppSettings().Get("Settings", "TableBorder", "0"))));
  vsp.TableHeaderRows(1);
  vsp.FontName("Tahoma");
  vsp.FontBold(false);
  vsp.FontSize(10);
  vsp.TextAlign(0);
}

// The workstation's choice of the reconciliation at the end of the
// month-end package; off unless set.
bool ReconciliationWanted(clsReports& r) {
  return r.Common().ReturnBool(
      Variant(host::AppSettings().Get("Settings", "MonthEndReconciliation", "False")));
}

}  // namespace

std::string clsReports::ProviderHeaderFilter(const std::string& ProviderNames) {
  if (ProviderNames.empty()) return "";
  return ReturnProviderNames(ProviderNames);
}

void clsReports::SectionProviderHeader(const std::string& IDFilter) {
  // The names print as the provider list of every other heading does,
  // title, first and last name ("Dr. Ada Bell"), three to a row.
  PrintProvidersIncluded(IDFilter);
}

void clsReports::rptDayEndReport(bool DetailedAnalysis, bool AppliedPayments,
                                 bool ProductionSummary, bool BankDeposit, bool CashIn,
                                 bool CashInAdjustment, bool IncompleteInvoices,
                                 bool UnAppliedPayments, bool NewPatient, bool ProductionByProvider,
                                 bool EDI, DateTime dtStart, DateTime dtEnd, int16_t Byoption,
                                 std::string UserName, std::string ProviderNames,
                                 bool byAllocatedPayment, std::string AccountID,
                                 bool SummaryAnalysis) {
  const db::Snapshot snapshot(conn_);
  Trap(kPackageTrap, [&] {
    frame::PrintSurface& vsp = VSP();
    clsCommonFunctions& cf = Common();
    ProviderNames = NoZeroFilter(ProviderNames);
    AccountID = vb::Trim(AccountID);
    // 1. The providers' names. Nothing prints them; reading them first
    // makes a filter the database cannot read fail here, before anything
    // is drawn, with the statement in the message.
    ProviderHeaderFilter(ProviderNames);
    const std::string id_filter = vb::Replace(ProviderNames, "ProviderID", "ID");

    // 2. One document for every section.
    PackagePaper(vsp);
    vsp.StartDoc();
    vsp.DocName("Day End Report");
    Package package(*this, UserName);

    // 3. The sections, in this order whatever the flags.
    if (DetailedAnalysis) {
      package.SelfHeadedSection("Day End Report - Detailed Analysis");
      srptDetailedAnalysis(dtStart, dtEnd, Byoption, UserName, ProviderNames, byAllocatedPayment);
    }
    if (AppliedPayments) {
      package.Section("Applied Payments Report", "", "Applied Payments Report");
      srptAppliedPayments(dtStart, dtEnd, ProviderNames, Byoption);
    }
    if (ProductionSummary) {
      package.Section("Production Report", "", "Production Report");
      srptProductionSummary(dtStart, dtEnd, id_filter, Byoption);
    }
    if (SummaryAnalysis) {
      package.Section("Summary Analysis", "", "Summary Analysis");
      PrintSummaryReading(vsp, byAllocatedPayment, Byoption);
      SectionProviderHeader(id_filter);
      srptSummaryAnalysis(dtStart, dtEnd, id_filter, Byoption, kPracticeTotals, byAllocatedPayment);
    }
    if (BankDeposit) {
      package.Section("Bank Deposit Slip", "", "Bank Deposit Report");
      Variant account(AccountID);
      srptBankDepositSlip(dtStart, dtEnd, UserName, cf.ReturnNumber(account));
    }
    if (CashIn) {
      // No account is every account: the section gets no term at all.
      package.SelfHeadedSection("Cash In Detailed Report");
      srptCashInDetailed(dtStart, dtEnd, AccountID.empty() ? "" : "AccountID = " + AccountID,
                         UserName);
    }
    if (CashInAdjustment) {
      package.Section("Adjustment Report", "", "Adjustment Report");
      srptAdjustmentReport(dtStart, dtEnd, id_filter, Byoption);
    }
    if (IncompleteInvoices) {
      // The list has no heading of its own: the package gives it its name.
      package.Section("Incomplete Invoices Report", "", "Incomplete Invoices Report");
      srptIncompleteInvoices("");
    }
    if (UnAppliedPayments) {
      package.Section("Unapplied Payments Report", "", "Unapplied Payments Report");
      srptUnAppliedPayments(dtEnd, UserName,
                            vb::Replace(ProviderNames, "ProviderID", "InitialProviderID"));
    }
    if (NewPatient) {
      package.Section("New Patient Report", "", "");
      srptNewPatientReport(dtStart, dtEnd);
    }
    if (ProductionByProvider) {
      package.Section("Production by Provider", "", "");
      srptProductionByProvider(dtStart, dtEnd, ProviderNames, "00000", "99999");
    }
    if (EDI) {
      package.Section("EDI Transaction Report", "", "");
      srptEDITransactions(dtStart, dtEnd, UserName);
    }

    // 4. The footers on every page, then the preview.
    vsp.DocName("Analysis Report");
    PrintPageFooters(kPrintedBy);
    vsp.EndDoc();
    Form().Show();
  });
}

void clsReports::rptMonthEndReport(bool DetailedAnalysis, bool SummaryAnalysis, bool AR,
                                   bool CashIn, bool CashInAdjustment, bool IncompleteInvoices,
                                   bool HygieneCompany, DateTime dtStart, DateTime dtEnd,
                                   int16_t Byoption, std::string UserName,
                                   std::string ProviderNames, bool byAllocatedPayment,
                                   bool Unapplied, bool Applied, bool Production, bool NewPatients,
                                   std::string AccountID, bool blnProviderSummary) {
  const db::Snapshot snapshot(conn_);
  Trap(kPackageTrap, [&] {
    frame::PrintSurface& vsp = VSP();
    ProviderNames = NoZeroFilter(ProviderNames);
    AccountID = vb::Trim(AccountID);
    // Read before anything is drawn, so that a setting the package cannot
    // read stops it at once rather than after every section.
    const bool reconcile = ReconciliationWanted(*this);
    // 1. The providers' names (see the day-end package).
    ProviderHeaderFilter(ProviderNames);
    const std::string id_filter = vb::Replace(ProviderNames, "ProviderID", "ID");
    const std::string period = FromTo(dtStart, dtEnd);

    // 2. One document; the month-end package keeps the name of the last
    // section until its end.
    PackagePaper(vsp);
    vsp.StartDoc();
    Package package(*this, UserName);

    // 3. The sections, in this order whatever the flags.
    if (DetailedAnalysis) {
      // The section prints its heading under the document's name, followed
      // by the range it covers: a second heading from the package would
      // only repeat it.
      package.SelfHeadedSection("Detailed Analysis Report");
      srptDetailedAnalysis(dtStart, dtEnd, Byoption, UserName, ProviderNames, byAllocatedPayment);
    }
    if (SummaryAnalysis) {
      package.Section("Summary Analysis Report", period, "Summary Analysis Report");
      PrintSummaryReading(vsp, byAllocatedPayment, Byoption);
      SummaryPerProvider(*this, dtStart, dtEnd, id_filter, Byoption, byAllocatedPayment);
    }
    if (NewPatients) {
      package.Section("New Patient Report", period, "New Patient Report");
      srptNewPatientReport(dtStart, dtEnd);
    }
    if (AR) {
      // The aged list heads itself. The package asks it for the date view
      // (3), which the list does not have: it reads that as the provider
      // view (0), as the balance lists read their view 3, so 0 is passed.
      package.SelfHeadedSection("Accounts Receivable");
      srptAccountReceivable(dtEnd, 0, ProviderNames, UserName);
    }
    if (CashIn) {
      // The month-end takes the summary of the money where the day-end
      // takes the detail; the section heads itself with the dates.
      package.SelfHeadedSection("Cash In Summary Report");
      srptCashInSummary(dtStart, dtEnd, AccountID, UserName);
    }
    if (CashInAdjustment) {
      package.Section("Adjustment Report", period, "Adjustment Report");
      srptAdjustmentReport(dtStart, dtEnd, id_filter, Byoption);
    }
    if (IncompleteInvoices) {
      package.Section("Incomplete Invoices Report", "", "Incomplete Invoices Report");
      srptIncompleteInvoices("");
    }
    if (Unapplied) {
      package.Section("Unapplied Payments Report", period, "Unapplied Payments Report");
      srptUnAppliedPayments(dtEnd, UserName,
                            vb::Replace(ProviderNames, "ProviderID", "InitialProviderID"));
    }
    if (Applied) {
      package.Section("Applied Payments Report", period, "Applied Payments Report");
      srptAppliedPayments(dtStart, dtEnd, ProviderNames, Byoption);
    }
    if (Production) {
      package.Section("Production Summary Report", period, "Production Summary Report");
      srptProductionSummary(dtStart, dtEnd, id_filter, Byoption);
    }
    if (HygieneCompany) HygieneSection(*this, package, dtStart, dtEnd, id_filter);
    if (blnProviderSummary) {
      // The summary prints its own titles and starts its own page when
      // something is drawn before it.
      ProductSumReport(dtStart, dtEnd, UserName);
    }
    if (reconcile) {
      package.NewPageIfDrawn();
      receivables::PrintReconciliation(*this, receivables::ReconcileReceivables(*this, dtEnd),
                                       UserName);
    }

    // 4. The footers on every page, then the preview.
    vsp.DocName("Analysis Report");
    PrintPageFooters(kPrintedBy);
    vsp.EndDoc();
    Form().Show();
  });
}

}  // namespace orv

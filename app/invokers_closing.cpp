// Invokers of the period-closing sections and reports.
#include "frame/preview_form.h"
#include "frame/reports.h"
#include "frame/surface/surface.h"
#include "invokers.h"

namespace orv::app {
namespace {

// A section draws into a running document. Called on its own from the
// command line, with no document running, it gets one of its own: started
// here, stamped with the page footers, ended and shown.
Variant RunSection(clsReports& r, const std::function<void()>& section) {
  frame::PrintSurface& vsp = r.VSP();
  const bool own = !vsp.IsOpen();
  if (own) {
    // The closing runs print on half-inch margins, which the sections'
    // 7.5-inch tables fill.
    vsp.Orientation(0);
    vsp.MarginLeft(".5in");
    vsp.MarginRight(".5in");
    vsp.StartDoc();
  }
  section();
  if (own && vsp.IsOpen()) {
    r.PrintPageFooters(kPrintedBy);
    vsp.EndDoc();
    r.Form().Show();
  }
  return Variant();
}

InvokerRegistrar detailed_analysis("srptDetailedAnalysis", [](clsReports& r, const MethodArgs& a) {
  return RunSection(r, [&] {
    r.srptDetailedAnalysis(a.Date(0), a.Date(1), a.Int(2), a.Str(3), a.Str(4), a.Bool(5));
  });
});
InvokerRegistrar summary_analysis("srptSummaryAnalysis", [](clsReports& r, const MethodArgs& a) {
  return RunSection(r, [&] {
    r.srptSummaryAnalysis(a.Date(0), a.Date(1), a.Str(2), a.Int(3), a.Str(4), a.Bool(5));
  });
});
InvokerRegistrar income_by_provider("rptIncomeByProvider", [](clsReports& r, const MethodArgs& a) {
  r.rptIncomeByProvider(a.Date(0), a.Date(1), a.Str(2), a.Bool(3), a.Str(4));
  return Variant();
});

InvokerRegistrar cash_in_detailed("rptCashInDetailed", [](clsReports& r, const MethodArgs& a) {
  DateTime start = a.Date(0);
  DateTime end = a.Date(1);
  r.rptCashInDetailed(start, end, a.Str(2), a.Str(3));
  return Variant();
});
InvokerRegistrar cash_in_detailed_section("srptCashInDetailed", [](clsReports& r,
                                                                   const MethodArgs& a) {
  return RunSection(r, [&] { r.srptCashInDetailed(a.Date(0), a.Date(1), a.Str(2), a.Str(3)); });
});
InvokerRegistrar cash_in_summary("rptCashInSummary", [](clsReports& r, const MethodArgs& a) {
  r.rptCashInSummary(a.Date(0), a.Date(1), a.Str(2), a.Str(3));
  return Variant();
});
InvokerRegistrar cash_in_summary_section("srptCashInSummary", [](clsReports& r,
                                                                 const MethodArgs& a) {
  return RunSection(r, [&] { r.srptCashInSummary(a.Date(0), a.Date(1), a.Str(2), a.Str(3)); });
});
InvokerRegistrar deposit_slip("rptBankDepositSlip", [](clsReports& r, const MethodArgs& a) {
  r.rptBankDepositSlip(a.Date(0), a.Date(1), a.Str(2), a.Long(3));
  return Variant();
});
InvokerRegistrar deposit_slip_section("srptBankDepositSlip", [](clsReports& r,
                                                                const MethodArgs& a) {
  return RunSection(r, [&] { r.srptBankDepositSlip(a.Date(0), a.Date(1), a.Str(2), a.Long(3)); });
});
InvokerRegistrar adjustment_report("rptAdjustmentReport", [](clsReports& r, const MethodArgs& a) {
  r.rptAdjustmentReport(a.Date(0), a.Date(1), a.Str(2));
  return Variant();
});

InvokerRegistrar incomplete_invoices("rptIncompleteInvoices", [](clsReports& r,
                                                                  const MethodArgs& a) {
  r.rptIncompleteInvoices(a.Date(0), a.Date(1), a.Str(2), a.Str(3), a.Str(4));
  return Variant();
});
InvokerRegistrar incomplete_invoices_section("srptIncompleteInvoices", [](clsReports& r,
                                                                          const MethodArgs& a) {
  return RunSection(r, [&] { r.srptIncompleteInvoices(a.Str(0)); });
});
InvokerRegistrar adjustment_section("srptAdjustmentReport", [](clsReports& r,
                                                               const MethodArgs& a) {
  return RunSection(r, [&] { r.srptAdjustmentReport(a.Date(0), a.Date(1), a.Str(2), a.Int(3)); });
});
InvokerRegistrar adjustment_reallocation("srptAdjustmentReallocation", [](clsReports& r,
                                                                          const MethodArgs& a) {
  return RunSection(r, [&] {
    r.srptAdjustmentReallocation(a.Long(0), a.Date(1), a.Date(2), a.Int(3));
  });
});
InvokerRegistrar edi("rptEDITransactions", [](clsReports& r, const MethodArgs& a) {
  r.rptEDITransactions(a.Date(0), a.Date(1), a.Str(2));
  return Variant();
});
InvokerRegistrar edi_section("srptEDITransactions", [](clsReports& r, const MethodArgs& a) {
  return RunSection(r, [&] { r.srptEDITransactions(a.Date(0), a.Date(1), a.Str(2)); });
});
InvokerRegistrar new_patients("srptNewPatientReport", [](clsReports& r, const MethodArgs& a) {
  return RunSection(r, [&] { r.srptNewPatientReport(a.Date(0), a.Date(1)); });
});

}  // namespace
}  // namespace orv::app

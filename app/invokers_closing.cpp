// Invokers of the period-closing sections and reports. The sections run in
// a document the host starts for them (report_host.cpp).
#include "frame/reports.h"
#include "invokers.h"

namespace orv::app {
namespace {

InvokerRegistrar detailed_analysis("srptDetailedAnalysis", [](clsReports& r, const MethodArgs& a) {
  r.srptDetailedAnalysis(a.Date(0), a.Date(1), a.Int(2), a.Str(3), a.Str(4), a.Bool(5));
  return Variant();
});
InvokerRegistrar summary_analysis("srptSummaryAnalysis", [](clsReports& r, const MethodArgs& a) {
  r.srptSummaryAnalysis(a.Date(0), a.Date(1), a.Str(2), a.Int(3), a.Str(4), a.Bool(5));
  return Variant();
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
  r.srptCashInDetailed(a.Date(0), a.Date(1), a.Str(2), a.Str(3));
  return Variant();
});
InvokerRegistrar cash_in_summary("rptCashInSummary", [](clsReports& r, const MethodArgs& a) {
  r.rptCashInSummary(a.Date(0), a.Date(1), a.Str(2), a.Str(3));
  return Variant();
});
InvokerRegistrar cash_in_summary_section("srptCashInSummary", [](clsReports& r,
                                                                 const MethodArgs& a) {
  r.srptCashInSummary(a.Date(0), a.Date(1), a.Str(2), a.Str(3));
  return Variant();
});
InvokerRegistrar deposit_slip("rptBankDepositSlip", [](clsReports& r, const MethodArgs& a) {
  r.rptBankDepositSlip(a.Date(0), a.Date(1), a.Str(2), a.Long(3));
  return Variant();
});
InvokerRegistrar deposit_slip_section("srptBankDepositSlip", [](clsReports& r,
                                                                const MethodArgs& a) {
  r.srptBankDepositSlip(a.Date(0), a.Date(1), a.Str(2), a.Long(3));
  return Variant();
});
InvokerRegistrar adjustment_report("rptAdjustmentReport", [](clsReports& r, const MethodArgs& a) {
  r.rptAdjustmentReport(a.Date(0), a.Date(1), a.Str(2));
  return Variant();
});

InvokerRegistrar day_end_summary("rptDayEndSummary", [](clsReports& r, const MethodArgs& a) {
  r.rptDayEndSummary(a.Date(0), a.Date(1), a.Str(2));
  return Variant();
});

InvokerRegistrar incomplete_invoices("rptIncompleteInvoices", [](clsReports& r,
                                                                  const MethodArgs& a) {
  r.rptIncompleteInvoices(a.Date(0), a.Date(1), a.Str(2), a.Str(3), a.Str(4));
  return Variant();
});
InvokerRegistrar incomplete_invoices_section("srptIncompleteInvoices", [](clsReports& r,
                                                                          const MethodArgs& a) {
  r.srptIncompleteInvoices(a.Str(0));
  return Variant();
});
InvokerRegistrar adjustment_section("srptAdjustmentReport", [](clsReports& r,
                                                               const MethodArgs& a) {
  r.srptAdjustmentReport(a.Date(0), a.Date(1), a.Str(2), a.Int(3));
  return Variant();
});
InvokerRegistrar adjustment_reallocation("srptAdjustmentReallocation", [](clsReports& r,
                                                                          const MethodArgs& a) {
  r.srptAdjustmentReallocation(a.Long(0), a.Date(1), a.Date(2), a.Int(3));
  return Variant();
});
InvokerRegistrar edi("rptEDITransactions", [](clsReports& r, const MethodArgs& a) {
  r.rptEDITransactions(a.Date(0), a.Date(1), a.Str(2));
  return Variant();
});
InvokerRegistrar edi_section("srptEDITransactions", [](clsReports& r, const MethodArgs& a) {
  r.srptEDITransactions(a.Date(0), a.Date(1), a.Str(2));
  return Variant();
});
InvokerRegistrar new_patients("srptNewPatientReport", [](clsReports& r, const MethodArgs& a) {
  r.srptNewPatientReport(a.Date(0), a.Date(1));
  return Variant();
});

InvokerRegistrar month_end_analysis("rptMonthEndAnalysis", [](clsReports& r,
                                                               const MethodArgs& a) {
  r.rptMonthEndAnalysis(a.Date(0), a.Date(1), a.Str(2), a.Str(3), a.Str(4));
  return Variant();
});

InvokerRegistrar non_aged_ar("rptNonAgedAR", [](clsReports& r, const MethodArgs& a) {
  r.rptNonAgedAR(a.Date(0), a.Date(1), a.Str(2), a.Str(3), a.Str(4), a.Str(5));
  return Variant();
});

InvokerRegistrar month_end_summary("rptMonthEndSummary", [](clsReports& r, const MethodArgs& a) {
  std::vector<int32_t> ids = a.LongArray(5);
  r.rptMonthEndSummary(a.Date(0), a.Date(1), a.Str(2), a.Str(3), a.Str(4), ids);
  return Variant();
});

InvokerRegistrar day_end("rptDayEndReport", [](clsReports& r, const MethodArgs& a) {
  r.rptDayEndReport(a.Bool(0), a.Bool(1), a.Bool(2), a.Bool(3), a.Bool(4), a.Bool(5), a.Bool(6),
                    a.Bool(7), a.Bool(8), a.Bool(9), a.Bool(10), a.Date(11), a.Date(12), a.Int(13),
                    a.Str(14), a.Str(15), a.Bool(16), a.Str(17), a.Bool(18));
  return Variant();
});
InvokerRegistrar month_end("rptMonthEndReport", [](clsReports& r, const MethodArgs& a) {
  r.rptMonthEndReport(a.Bool(0), a.Bool(1), a.Bool(2), a.Bool(3), a.Bool(4), a.Bool(5), a.Bool(6),
                      a.Date(7), a.Date(8), a.Int(9), a.Str(10), a.Str(11), a.Bool(12), a.Bool(13),
                      a.Bool(14), a.Bool(15), a.Bool(16), a.Str(17), a.Given(18) && a.Bool(18));
  return Variant();
});

}  // namespace
}  // namespace orv::app

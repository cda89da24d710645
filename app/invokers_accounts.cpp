// Invokers of the statements, invoices, receipts and bulk statements.
#include "frame/reports.h"
#include "invokers.h"

namespace orv::app {
namespace {

InvokerRegistrar invoice("rptInvoice", [](clsReports& r, const MethodArgs& a) {
  r.rptInvoice(a.Long(0), a.Str(1), a.Str(2));
  return Variant();
});
InvokerRegistrar invoice_statement("rptInvoiceStatement", [](clsReports& r, const MethodArgs& a) {
  r.rptInvoiceStatement(a.Long(0), a.Str(1), a.Str(2));
  return Variant();
});
InvokerRegistrar receipt("rptReceipt", [](clsReports& r, const MethodArgs& a) {
  r.rptReceipt(a.Long(0), a.Str(1), a.Str(2));
  return Variant();
});
InvokerRegistrar statements("rptStatements", [](clsReports& r, const MethodArgs& a) {
  // The command line lists the patients; the report's list ends with a
  // spare slot that it does not print, as the host's always does.
  std::vector<int32_t> ids = a.LongArray(2);
  ids.push_back(0);
  r.rptStatements(a.Date(0), a.Date(1), ids, a.Bool(3), a.Given(4) ? a.Str(4) : std::string(),
                  a.Given(5) && a.Bool(5), a.Given(6) && a.Bool(6), a.Given(7) && a.Bool(7),
                  a.Given(8) && a.Bool(8), a.Given(9) && a.Bool(9), a.Given(10) && a.Bool(10),
                  a.Given(11) && a.Bool(11));
  return Variant();
});
InvokerRegistrar bulk("rptBulkStatements", [](clsReports& r, const MethodArgs& a) {
  // An omitted NoZeros reaches the report as Empty, which it reads as false.
  r.rptBulkStatements(a.Str(0), a.Str(1), a.Bool(2), a.Str(3), a.Given(4) ? a.Var(4) : Variant());
  return Variant();
});

}  // namespace
}  // namespace orv::app

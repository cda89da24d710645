// Invokers of the invoices, receipts and bulk statements.
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
InvokerRegistrar bulk("rptBulkStatements", [](clsReports& r, const MethodArgs& a) {
  // An omitted NoZeros reaches the report as Empty, which it reads as false.
  r.rptBulkStatements(a.Str(0), a.Str(1), a.Bool(2), a.Str(3), a.Given(4) ? a.Var(4) : Variant());
  return Variant();
});

}  // namespace
}  // namespace orv::app

// Invokers of the production reports, the provider summary and the hygiene
// company report.
#include "frame/reports.h"
#include "invokers.h"

namespace orv::app {
namespace {

InvokerRegistrar production_reports("rptProductionReports", [](clsReports& r,
                                                               const MethodArgs& a) {
  r.rptProductionReports(a.Bool(0), a.Bool(1), a.Bool(2), a.Bool(3), a.Bool(4), a.Bool(5),
                         a.Date(6), a.Date(7), a.Int(8), a.Str(9), a.Str(10), a.Str(11),
                         a.Str(12));
  return Variant();
});
InvokerRegistrar product_sum("ProductSumReport", [](clsReports& r, const MethodArgs& a) {
  r.ProductSumReport(a.Date(0), a.Date(1), a.Str(2));
  return Variant();
});
InvokerRegistrar partnership("rptPartnershipReport", [](clsReports& r, const MethodArgs& a) {
  r.rptPartnershipReport(a.Date(0), a.Date(1), a.Str(2));
  return Variant();
});
InvokerRegistrar hygiene_company("rptHygieneCompanyReport", [](clsReports& r,
                                                               const MethodArgs& a) {
  r.rptHygieneCompanyReport(a.Date(0), a.Date(1), a.Str(2), a.Str(3));
  return Variant();
});

}  // namespace
}  // namespace orv::app

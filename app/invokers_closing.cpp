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

}  // namespace
}  // namespace orv::app

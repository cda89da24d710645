// Invokers of the claim forms, the insurance billing list and the
// layperson treatment plans.
#include "frame/reports.h"
#include "invokers.h"

namespace orv::app {
namespace {

InvokerRegistrar claim("rptClaimForm", [](clsReports& r, const MethodArgs& a) {
  r.rptClaimForm(a.Long(0), a.Long(1), a.Given(2) ? a.Int(2) : int16_t(0));
  return Variant();
});
InvokerRegistrar claim_french("rptClaimFormF", [](clsReports& r, const MethodArgs& a) {
  r.rptClaimFormF(a.Long(0), a.Long(1), a.Given(2) ? a.Int(2) : int16_t(0));
  return Variant();
});
InvokerRegistrar predetermination("rptPredClaimForm", [](clsReports& r, const MethodArgs& a) {
  r.rptPredClaimForm(a.Long(0), a.Long(1), a.Str(2));
  return Variant();
});
InvokerRegistrar predetermination_french("rptPredClaimFormF", [](clsReports& r, const MethodArgs& a) {
  r.rptPredClaimFormF(a.Long(0), a.Long(1), a.Str(2));
  return Variant();
});
InvokerRegistrar billing("rptInsuranceBilling", [](clsReports& r, const MethodArgs& a) {
  r.rptInsuranceBilling(a.Str(0));
  return Variant();
});
InvokerRegistrar plan("rptLaypersonTreatmentPlan", [](clsReports& r, const MethodArgs& a) {
  r.rptLaypersonTreatmentPlan(a.Str(0), a.Str(1), a.Long(2), a.Str(3));
  return Variant();
});
InvokerRegistrar plan_french("rptLaypersonTreatmentPlanF", [](clsReports& r, const MethodArgs& a) {
  r.rptLaypersonTreatmentPlanF(a.Str(0), a.Str(1), a.Long(2), a.Str(3));
  return Variant();
});

}  // namespace
}  // namespace orv::app

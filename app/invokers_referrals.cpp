// Invokers of the referral package, its sections and the referral link
// check.
#include "frame/reports.h"
#include "invokers.h"

namespace orv::app {
namespace {

InvokerRegistrar referral_reports("rptReferralReports", [](clsReports& r, const MethodArgs& a) {
  r.rptReferralReports(a.Bool(0), a.Bool(1), a.Bool(2), a.Bool(3), a.Bool(4), a.Bool(5), a.Date(6),
                       a.Date(7), a.Str(8), a.Str(9), a.Long(10), a.LongArray(11), a.Long(12));
  return Variant();
});
InvokerRegistrar dentist_list("srptReferringDentistList", [](clsReports& r, const MethodArgs&) {
  r.srptReferringDentistList();
  return Variant();
});
InvokerRegistrar dentist_type("srptReferringDentistType", [](clsReports& r, const MethodArgs& a) {
  r.srptReferringDentistType(a.Date(0), a.Date(1));
  return Variant();
});
InvokerRegistrar dentist_summary("srptReferringDentistSummary",
                                 [](clsReports& r, const MethodArgs& a) {
                                   r.srptReferringDentistSummary(a.Date(0), a.Date(1), a.Long(2));
                                   return Variant();
                                 });
InvokerRegistrar dentist_detailed("srptReferringDentistDetailed", [](clsReports& r,
                                                                     const MethodArgs& a) {
  r.srptReferringDentistDetailed(a.Date(0), a.Date(1), a.LongArray(2), a.Long(3));
  return Variant();
});
InvokerRegistrar by_patient("srptRefferedByPatient", [](clsReports& r, const MethodArgs& a) {
  r.srptRefferedByPatient(a.Date(0), a.Date(1));
  return Variant();
});
InvokerRegistrar referral_production("ReferralProductSumReport",
                                     [](clsReports& r, const MethodArgs& a) {
                                       r.ReferralProductSumReport(a.Date(0), a.Date(1), a.Str(2));
                                       return Variant();
                                     });
InvokerRegistrar check_relationships("CheckRelationships", [](clsReports& r, const MethodArgs& a) {
  return Variant(r.CheckRelationships(a.Str(0), a.Str(1), a.Str(2), a.Str(3)));
});

}  // namespace
}  // namespace orv::app

// Invokers of the receivables reports.
#include "frame/reports.h"
#include "invokers.h"

namespace orv::app {
namespace {

InvokerRegistrar accounts_receivable("rptAccountsReceivable", [](clsReports& r,
                                                                 const MethodArgs& a) {
  r.rptAccountsReceivable(a.Str(0), a.Str(1), a.Str(2), a.Str(3));
  return Variant();
});
InvokerRegistrar patients_with_a_balance("rptPatientsWithABalance", [](clsReports& r,
                                                                       const MethodArgs& a) {
  r.rptPatientsWithABalance(a.Str(0), a.Date(1), a.Str(2), a.Given(3) ? a.Int(3) : 0);
  return Variant();
});
InvokerRegistrar unapplied_payments("rptUnAppliedPayments", [](clsReports& r, const MethodArgs& a) {
  r.rptUnAppliedPayments(a.Date(0), a.Str(1));
  return Variant();
});
InvokerRegistrar unapplied_payments_part("srptUnAppliedPayments", [](clsReports& r,
                                                                     const MethodArgs& a) {
  r.srptUnAppliedPayments(a.Date(0), a.Str(1), a.Given(2) ? a.Str(2) : "");
  return Variant();
});

InvokerRegistrar account_receivable_part("srptAccountReceivable", [](clsReports& r,
                                                                    const MethodArgs& a) {
  r.srptAccountReceivable(a.Date(0), a.Int(1), a.Str(2), a.Given(3) ? a.Str(3) : "");
  return Variant();
});
InvokerRegistrar account_status("rptPatientAccountStatus", [](clsReports& r, const MethodArgs& a) {
  r.rptPatientAccountStatus(a.Str(0), a.Date(1));
  return Variant();
});
InvokerRegistrar families_with_a_balance("rptFamiliesWithABalance",
                                         [](clsReports& r, const MethodArgs& a) {
                                           r.rptFamiliesWithABalance(a.Str(0));
                                           return Variant();
                                         });
InvokerRegistrar patients_with_a_credit("rptPatientswithACredit",
                                        [](clsReports& r, const MethodArgs& a) {
                                          r.rptPatientswithACredit(a.Str(0));
                                          return Variant();
                                        });
InvokerRegistrar outstanding_treatment("rptPatientswithOustandingTreatment",
                                       [](clsReports& r, const MethodArgs& a) {
                                         r.rptPatientswithOustandingTreatment(a.Str(0));
                                         return Variant();
                                       });
InvokerRegistrar billing_by_client("rptBillingByClient", [](clsReports& r, const MethodArgs& a) {
  r.rptBillingByClient(a.Str(0), a.Str(1), a.Str(2), a.Str(3));
  return Variant();
});

}  // namespace
}  // namespace orv::app

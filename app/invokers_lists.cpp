// Invokers of the component's services and the directory lists.
#include "frame/reports.h"
#include "invokers.h"

namespace orv::app {
namespace {

InvokerRegistrar office_value("ReturnOfficeValue", [](clsReports& r, const MethodArgs& a) {
  return r.ReturnOfficeValue(a.Str(0));
});
InvokerRegistrar address_part("ReturnAddressPart", [](clsReports& r, const MethodArgs& a) {
  return Variant(r.ReturnAddressPart(a.Str(0), a.Long(1)));
});
InvokerRegistrar fee_guide("rptFeeGuide", [](clsReports& r, const MethodArgs& a) {
  r.rptFeeGuide(a.Long(0), a.Str(1));
  return Variant();
});
InvokerRegistrar insurance_list("rptInsuranceCompanyList", [](clsReports& r, const MethodArgs& a) {
  r.rptInsuranceCompanyList(a.Str(0), a.Str(1));
  return Variant();
});
InvokerRegistrar employer_list("rptEmployerList", [](clsReports& r, const MethodArgs& a) {
  r.rptEmployerList(a.Str(0), a.Str(1));
  return Variant();
});
InvokerRegistrar patient_simple("rptPatientListSimple", [](clsReports& r, const MethodArgs& a) {
  r.rptPatientListSimple(a.Str(0), a.Str(1), a.Str(2), a.Bool(3), a.Long(4));
  return Variant();
});
InvokerRegistrar patient_detailed("rptPatientListDetailed", [](clsReports& r, const MethodArgs& a) {
  r.rptPatientListDetailed(a.Str(0));
  return Variant();
});

}  // namespace
}  // namespace orv::app

namespace orv::app {
namespace {

InvokerRegistrar family_credit("ReturnFamilyCredit", [](clsReports& r, const MethodArgs& a) {
  int32_t id = a.Long(0);
  return Variant(r.ReturnFamilyCredit(id, a.Bool(1)));
});

}  // namespace
}  // namespace orv::app

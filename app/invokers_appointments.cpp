// Invokers of the appointment cards and family schedules.
#include "frame/reports.h"
#include "invokers.h"

namespace orv::app {
namespace {

InvokerRegistrar card("rptAppointmentCard", [](clsReports& r, const MethodArgs& a) {
  r.rptAppointmentCard(a.Long(0), a.Str(1), a.Str(2), a.Str(3), a.Str(4), a.Int(5), a.Bool(6));
  return Variant();
});
InvokerRegistrar detailed("rptFamilyAppointmentsDetailed", [](clsReports& r, const MethodArgs& a) {
  r.rptFamilyAppointmentsDetailed(a.Long(0), a.Str(1), a.Str(2), a.Str(3), a.Str(4), a.Str(5),
                                  a.Int(6));
  return Variant();
});
InvokerRegistrar summary("rptFamilyAppointmentsSummary", [](clsReports& r, const MethodArgs& a) {
  r.rptFamilyAppointmentsSummary(a.Long(0), a.Str(1), a.Str(2), a.Str(3), a.Str(4), a.Str(5), a.Int(6));
  return Variant();
});
InvokerRegistrar family("FamilyAppointmentsSummary", [](clsReports& r, const MethodArgs& a) {
  r.FamilyAppointmentsSummary(a.Long(0));
  return Variant();
});

}  // namespace
}  // namespace orv::app

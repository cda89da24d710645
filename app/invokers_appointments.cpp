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

// Invokers of the appointment report set, the day sheet and the routing slip.
namespace orv::app {
namespace {

InvokerRegistrar reports_set("rptAppointmentReports", [](clsReports& r, const MethodArgs& a) {
  r.rptAppointmentReports(a.Bool(0), a.Bool(1), a.Bool(2), a.Bool(3), a.Bool(4), a.Bool(5), a.Bool(6),
                          a.Date(7), a.Date(8), a.Str(9), a.Str(10), a.Long(11));
  return Variant();
});
InvokerRegistrar appointments("srptAppointments", [](clsReports& r, const MethodArgs& a) {
  r.srptAppointments(a.Date(0), a.Date(1), a.Str(2), a.Given(3) ? a.Long(3) : 0,
                     a.Given(4) ? a.Bool(4) : false);
  return Variant();
});
InvokerRegistrar operatory("srptOperatoryList", [](clsReports& r, const MethodArgs& a) {
  r.srptOperatoryList(a.Str(0), a.Date(1), a.Date(2), a.Long(3));
  return Variant();
});
InvokerRegistrar planned("srptPlannedAppointmentsList", [](clsReports& r, const MethodArgs& a) {
  r.srptPlannedAppointmentsList(a.Str(0), a.Date(1), a.Date(2), a.Given(3) ? a.Long(3) : 0);
  return Variant();
});
InvokerRegistrar plans("srptTreatmentPlansOutstanding", [](clsReports& r, const MethodArgs& a) {
  r.srptTreatmentPlansOutstanding(a.Str(0), a.Date(1), a.Date(2));
  return Variant();
});
InvokerRegistrar reschedules("srptAppointmentReschedules", [](clsReports& r, const MethodArgs& a) {
  r.srptAppointmentReschedules(a.Str(0), a.Date(1), a.Date(2));
  return Variant();
});
InvokerRegistrar by_patient("rptAppointmentsByPatient", [](clsReports& r, const MethodArgs& a) {
  r.rptAppointmentsByPatient(a.Str(0), a.Str(1));
  return Variant();
});
InvokerRegistrar analysis("rptRescheduleAnalysis", [](clsReports& r, const MethodArgs& a) {
  r.rptRescheduleAnalysis(a.Int(0), a.Str(1));
  return Variant();
});
InvokerRegistrar overdue("OverDueTreatmentPlans", [](clsReports& r, const MethodArgs& a) {
  r.OverDueTreatmentPlans(a.Date(0), a.Date(1), a.Str(2));
  return Variant();
});
InvokerRegistrar day_sheet("rptDaySheet", [](clsReports& r, const MethodArgs& a) {
  std::vector<int32_t> providers = a.LongArray(1);
  r.rptDaySheet(a.Date(0), providers, a.Str(2), a.Str(3));
  return Variant();
});
InvokerRegistrar routing_slip("rptRoutingSlip", [](clsReports& r, const MethodArgs& a) {
  r.rptRoutingSlip(a.Str(0), a.Str(1));
  return Variant();
});

}  // namespace
}  // namespace orv::app

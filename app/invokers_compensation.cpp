// Invokers of the compensation reports.
#include "frame/reports.h"
#include "invokers.h"

namespace orv::app {
namespace {

InvokerRegistrar payroll("rptPayroll", [](clsReports& r, const MethodArgs& a) {
  r.rptPayroll(a.Str(0), a.Date(1), a.Date(2), a.Str(3));
  return Variant();
});
InvokerRegistrar yearly_employee_summary("rptYearlyEmployeeSummary",
                                         [](clsReports& r, const MethodArgs& a) {
                                           r.rptYearlyEmployeeSummary(a.Long(0), a.Date(1), a.Date(2),
                                                                      a.Int(3));
                                           return Variant();
                                         });
InvokerRegistrar specialist_yearly_summary("rptSpecialistYearlySummary",
                                           [](clsReports& r, const MethodArgs& a) {
                                             r.rptSpecialistYearlySummary(a.Str(0), a.Str(1), a.Date(2),
                                                                          a.Date(3));
                                             return Variant();
                                           });

}  // namespace
}  // namespace orv::app

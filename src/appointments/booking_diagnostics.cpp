// Booking diagnostics: how many appointment units each provider had free in
// a period against how many were booked, this year and the same period a
// year before, then the same counts per team member who booked them.
#include "appointments/availability.h"
#include "common/common_functions.h"
#include "common/datetime.h"
#include "common/errors.h"
#include "common/format.h"
#include "frame/reports.h"
#include "frame/surface/surface.h"
#include "frame/surface/table_model.h"

namespace orv {

namespace {

std::string Day(const DateTime& d) { return Format(Variant(d), "yyyy-mm-dd"); }

}  // namespace

void clsReports::srptBookingDiagnostics(DateTime dtStart, DateTime dtEnd) {
  const db::Snapshot snapshot(conn_);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  // Last year is each date less one year: Feb 29 becomes Feb 28.
  const DateTime ly_start = DateAdd("yyyy", -1, dtStart);
  const DateTime ly_end = DateAdd("yyyy", -1, dtEnd);
  auto sums = [&](const std::string& where, Variant& units, Variant& estimate) {
    db::Recordset rs = Open("Select SUM([Units]) as theCount, SUM([Estimate]) as Estimate from "
                            "PatientAppointments where " + where);
    units = rs["theCount"].Value();
    estimate = rs["Estimate"].Value();
  };
  auto period = [&](const DateTime& a, const DateTime& b) {
    return "Date >= '" + Day(a) + "' AND Date <= '" + Day(b) + "'";
  };
  Variant office_units, office_est, office_units_ly, office_est_ly;
  sums(period(dtStart, dtEnd), office_units, office_est);
  sums(period(ly_start, ly_end), office_units_ly, office_est_ly);
  const int32_t office_booked = cf.ReturnNumber(office_units);
  const int32_t office_booked_ly = cf.ReturnNumber(office_units_ly);

  appointments::Availability availability(*this, OfficeID);

  // DisplayName joins ChairID with "+": the chair is text in the schedule,
  // so the concatenation stays a text one on every engine.
  db::Recordset providers = Open(
      "SELECT Employees.*, 'DisplayName' = CASE WHEN ChairID IS NULL THEN LastName + ', ' + "
      "FirstName  ELSE LastName +', ' + FirstName + ' ' + ChairID END FROM Employees WHERE FirstName "
      "<> N'(None)' AND ( TypeID = 3 or TypeID = 5 or TypeID = 10 or TypeID = 13 or TypeID = 8 OR "
      "TypeID = 12 OR TypeID = 13 OR TypeID = 14 OR TypeID = 15 OR TypeID = 16 OR TypeID = 17) ORDER "
      "BY DisplayName");
  const long total = providers.RecordCount();
  long done = 0;
  int64_t avail_sum = 0, avail_sum_ly = 0, booked_sum = 0, booked_sum_ly = 0;
  std::string body;
  while (!providers.Eof()) {
    const std::string key = cf.returnStr(providers["ID"].Value());
    int32_t avail = 0, avail_ly = 0;
    availability.AddPeriod(providers, key, dtStart, dtEnd, appointments::DayStatements::LastYear, avail,
                           avail_ly);
    Variant units, est, units_ly, est_ly;
    sums("ProviderID = " + key + " AND " + period(dtStart, dtEnd), units, est);
    sums("ProviderID = " + key + " AND " + period(ly_start, ly_end), units_ly, est_ly);
    const int32_t booked = cf.ReturnNumber(units), booked_ly = cf.ReturnNumber(units_ly);
    avail_sum += avail;
    avail_sum_ly += avail_ly;
    booked_sum += booked;
    booked_sum_ly += booked_ly;
    body += frame::EscapeCell(cf.returnStr(providers["DisplayName"].Value())) + "|" +
            std::to_string(avail) + "|" + std::to_string(booked) + "|" +
            ReturnPercent(Variant(booked), Variant(avail)) + "|" +
            ReturnPercent(Variant(booked), Variant(office_booked)) + "|" + std::to_string(avail_ly) +
            "|" + std::to_string(booked_ly) + "|" + ReturnPercent(Variant(booked_ly), Variant(avail_ly)) +
            "|" + ReturnPercent(Variant(booked_ly), Variant(office_booked_ly)) + ";";
    ++done;
    RaiseProgress(static_cast<uint8_t>(50 + (total > 0 ? done * 50 / total : 50)));
    providers.MoveNext();
  }
  // The office's row: what the providers had free, what the office booked
  // (appointments of every provider, listed or not), and the shares of it.
  body += "Office Totals|" + std::to_string(avail_sum) + "|" + std::to_string(office_booked) + "|" +
          ReturnPercent(Variant(static_cast<double>(office_booked)), Variant(static_cast<double>(avail_sum))) + "|" +
          ReturnPercent(Variant(static_cast<double>(booked_sum)), Variant(office_booked)) + "|" +
          std::to_string(avail_sum_ly) + "|" + std::to_string(office_booked_ly) + "|" +
          ReturnPercent(Variant(static_cast<double>(office_booked_ly)), Variant(static_cast<double>(avail_sum_ly))) +
          "|" + ReturnPercent(Variant(static_cast<double>(booked_sum_ly)), Variant(office_booked_ly)) + "|;";
  vsp.TextAlign(1);
  vsp.StartTable();
  vsp.AddTable("<2.3in|^.6in|^.6in|>.7in|>.7in|^.6in|^.6in|>.7in|>.7in",
               "Provider\r\n(Last Name, First Name)|Avail|Booked|Personal\r\nPercent|Office\r\nPercent|L/Y "
               "Avail|L/Y Booked|L/Y Personal|L/Y\r\nOffice\r\nPercent",
               body, kHeaderColor);
  vsp.EndTable();
  vsp.TextAlign(0);
  vsp.Text(" ");

  // The team: appointments each member booked (by EmployeeID, who made the
  // booking), their share of the office's bookings, units and estimate.
  vsp.FontBold(true);
  vsp.Text("Team Booking Diagnostics");
  vsp.FontBold(false);
  vsp.KeepWithNext();
  auto scalar = [&](const std::string& sql) {
    db::Recordset rs = Open(sql);
    return rs[0L].Value();
  };
  auto team_period = [&](const DateTime& a, const DateTime& b) {
    return "[Date] >= '" + Day(a) + "' AND [Date] <= '" + Day(b) + "'";
  };
  const Variant count = scalar("Select Count(*) from PatientAppointments where " +
                               team_period(dtStart, dtEnd) + " AND EmployeeID is not NULL");
  const Variant count_ly = scalar("Select Count(*) from PatientAppointments where " +
                                  team_period(ly_start, ly_end) + " AND EmployeeID is not NULL");
  const Variant t_units = scalar("Select SUM([Units]) from PatientAppointments where " + team_period(dtStart, dtEnd));
  const Variant t_units_ly = scalar("Select SUM([Units]) from PatientAppointments where " + team_period(ly_start, ly_end));
  const Variant t_est = scalar("Select SUM([Estimate]) from PatientAppointments where " + team_period(dtStart, dtEnd));
  const Variant t_est_ly = scalar("Select SUM([Estimate]) from PatientAppointments where " + team_period(ly_start, ly_end));
  db::Recordset members = Open("SELECT * FROM Employees WHERE (Active is null or Active <> 0) AND ID > 1 ORDER BY LastName");
  std::string team;
  auto member_row = [&](const std::string& key, const DateTime& a, const DateTime& b, const Variant& all) {
    db::Recordset rs = Open("Select Count(*) as N, SUM([Units]) as U, SUM([Estimate]) as E from "
                            "PatientAppointments where EmployeeID = " + key + " AND " + team_period(a, b));
    const Variant n = rs["N"].Value();
    return cf.returnStr(n) + "|" + ReturnPercent(n, all) + "|" +
           std::to_string(static_cast<long>(cf.ReturnVal(rs["U"].Value()))) + "|" +
           Format(Variant(cf.ReturnCur(rs["E"].Value())), "Currency");
  };
  while (!members.Eof()) {
    const std::string key = cf.returnStr(members["ID"].Value());
    team += frame::EscapeCell(cf.returnStr(members["LastName"].Value()) + ", " +
                              cf.returnStr(members["FirstName"].Value())) +
            "|" + member_row(key, dtStart, dtEnd, count) + "|" + member_row(key, ly_start, ly_end, count_ly) + ";";
    members.MoveNext();
  }
  auto totals = [&](const Variant& n, const Variant& u, const Variant& e) {
    return cf.returnStr(n) + "|" + ReturnPercent(n, n) + "|" +
           std::to_string(static_cast<long>(cf.ReturnVal(u))) + "|" +
           Format(Variant(cf.ReturnCur(e)), "Currency");
  };
  team += "Totals|" + totals(count, t_units, t_est) + "|" + totals(count_ly, t_units_ly, t_est_ly) + ";";
  vsp.StartTable();
  vsp.AddTable("<2.1in|^.5in|>.7in|^.6in|>.9in|^.5in|>.7in|^.6in|>.9in",
               "Team Member\r\n(Last Name, First Name)|App.#|Total%|Units#|Est. Income$|L/Y App.#|L/Y "
               "Total%|L/Y Units#|L/Y Est. Income$",
               team, kHeaderColor);
  vsp.EndTable();
  vsp.Text(" ");
}

}  // namespace orv

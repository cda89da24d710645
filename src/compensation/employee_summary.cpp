// The yearly employee monitor: one employee's clinical day by day over a
// range, by the fee-guide codes the practice watches, with a summary per
// month and for the range.
#include <array>
#include <cmath>
#include <vector>

#include "common/common_functions.h"
#include "common/format.h"
#include "common/report_math.h"
#include "frame/preview_form.h"
#include "frame/reports.h"
#include "frame/surface/surface.h"
#include "frame/surface/table_model.h"
#include "platform/db/lookup.h"
#include "platform/practice/employee_types.h"

namespace orv {

namespace {

const char* const kWeekdayNames[] = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                     "Thursday", "Friday", "Saturday"};

// The figures of one day, and the sums of a month or of the range.
struct MonitorFigures {
  Currency payments;
  double patients = 0;
  double selfcares = 0, followups = 0, npes = 0, emerges = 0, whitenings = 0, nightguards = 0;
  double perio = 0, scaling = 0, therapy = 0, recall = 0;
  Currency production;
  double units_worked = 0;
  double hours = 0;
  double booked = 0;
  double scheduled = 0;  // the employee's scheduled units
  int days = 0;          // days with activity

  void Add(const MonitorFigures& d) {
    payments += d.payments;
    patients += d.patients;
    selfcares += d.selfcares;
    followups += d.followups;
    npes += d.npes;
    emerges += d.emerges;
    whitenings += d.whitenings;
    nightguards += d.nightguards;
    perio += d.perio;
    scaling += d.scaling;
    therapy += d.therapy;
    recall += d.recall;
    production += d.production;
    units_worked += d.units_worked;
    hours += d.hours;
    booked += d.booked;
    scheduled += d.scheduled;
    days += d.days;
  }
};

// A count that can hold a half unit: "3", "1.5".
std::string Count(double v) { return Format(Variant(v), ""); }
// Hours and other ratios to the hundredth: 5.5 units of 10 minutes read
// 0.92, 12 patients over 17 days 0.71.
std::string Hours(double v) { return Format(Variant(v), "0.00"); }
std::string Amount(clsCommonFunctions& cf, Currency c) { return cf.MyFormat(c, "Currency"); }
std::string Amount(clsCommonFunctions& cf, double v) {
  return cf.MyFormat(Currency::FromDouble(v), "Currency");
}
double Ratio(double a, double b) { return b == 0 ? 0 : a / b; }

}  // namespace

void clsReports::rptYearlyEmployeeSummary(int32_t ID, DateTime StartDate, DateTime Enddate,
                                          int16_t UnitValue) {
  const db::Snapshot snapshot(conn_);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  const std::string id = std::to_string(ID);

  // ---- The hygiene company codes of the office ----
  // Total Production counts only the codes the office bills through its
  // hygiene company; without them the monitor has nothing to measure. They
  // are asked for before the employee: a practice not yet set up for the
  // monitor gets the set-up message whoever it is run for.
  db::Recordset codes =
      Open("Select * from OfficeHygieneCompanyCodes WHERE OfficeID = " + std::to_string(OfficeID));
  if (codes.Eof()) {
    Host().MsgBox(
        "You must setup the codes you wish to use for your hygiene company before you can run this "
        "report.\nTo do so go to Office Setup and click on the Hygiene Company tab and add the codes "
        "you wish to use.",
        host::vbOKOnly, "");
    return;
  }
  std::string hygiene_condition;
  while (!codes.Eof()) {
    hygiene_condition += "(Code >= '" + cf.returnStr(codes["Startcode"].Value()) +
                         "' AND Code <= '" + cf.returnStr(codes["EndCode"].Value()) + "') OR ";
    codes.MoveNext();
  }
  codes.Close();
  // The rows are joined by " OR ", and the one after the last would leave
  // the statement unfinished.
  hygiene_condition.resize(hygiene_condition.size() - 4);

  db::Recordset employee = Open(
      "SELECT ID, FirstName, LastName, Commission, TypeID, [Professional Title], PayRate, BillRate, "
      "Salary, Commission, SundayFrom, SundayTo, MondayFrom, MondayTo, TuesdayFrom, TuesdayTo, "
      "WednesdayFrom, WednesdayTo, ThursdayFrom, ThursdayTo, FridayFrom, FridayTo, SaturdayFrom, "
      "SaturdayTo, TargetIncomePerDay, TargetIncomePerHour From Employees WHERE ID = " +
      id);
  if (employee.Eof()) {
    throw ReportError(kErrInvalidProcedureCall,
                      "rptYearlyEmployeeSummary: no employee with ID " + id);
  }

  // The unit size of the office the component runs for (its OfficeID).
  const double unit_minutes = cf.ReturnVal(
      db::ReturnValue(conn_, "OfficeInformation", "ID", Variant(OfficeID), "UnitMinutes"));

  Variant type_value = employee["TypeID"].Value();
  const practice::MonitorKind kind = practice::MonitorKindOf(cf.ReturnNumber(type_value));
  const char* kind_title = kind == practice::MonitorKind::kHygienist   ? "Hygienist"
                           : kind == practice::MonitorKind::kAssistant ? "PDA"
                           : kind == practice::MonitorKind::kDentist   ? "Dentist"
                                                                       : "Specialist";
  const std::string name =
      cf.returnStr(employee["FirstName"].Value()) + " " + cf.returnStr(employee["LastName"].Value());

  // The scheduled units of each weekday from the employee's hours.
  std::array<double, 7> weekday_units{};
  for (int d = 0; d < 7; ++d) {
    const int32_t from = cf.TimeToInt(employee[std::string(kWeekdayNames[d]) + "From"].Value());
    const int32_t to = cf.TimeToInt(employee[std::string(kWeekdayNames[d]) + "To"].Value());
    weekday_units[d] = unit_minutes > 0 && to > from ? (to - from) / unit_minutes : 0;
  }

  // ---- Heading ----
  vsp.Orientation(1);
  vsp.MarginLeft(".5in");
  vsp.MarginRight(".5in");
  vsp.StartDoc();
  vsp.TextAlign(1);
  vsp.FontBold(true);
  vsp.FontSize(20);
  vsp.Text(std::string(kind_title) + " Monitor for " + name);
  vsp.FontSize(10);
  vsp.Text(Format(Variant(StartDate), "MMM/d/yyyy") + " to " + Format(Variant(Enddate), "MMM/d/yyyy"));
  vsp.FontBold(false);
  vsp.FontSize(7);

  const char* const kDayFormat =
      "<.8in|>.6in|^.6in|^.6in|^.6in|^.6in|^.6in|^.6in|^.5in|^.4in|^.4in|^.5in|^.6in|>.6in|^.5in|>.6in|"
      "^.5in|>.6in";
  const char* const kDayHeader =
      "Date|Net App. Pymts|# Patients|# Selfcares|#Follow-ups|# NPEs|# Emerges|# Whitenings|"
      "# Night-Guards|Perio Units|Scaling Units|Therapy Units|3/4 Month Units|Total Production|"
      "Units Worked|Production/Unit|Hours Worked|Production/Hour";
  auto row_cells = [&](const MonitorFigures& f) {
    return Amount(cf, f.payments) + "|" + Count(f.patients) + "|" + Count(f.selfcares) + "|" +
           Count(f.followups) + "|" + Count(f.npes) + "|" + Count(f.emerges) + "|" +
           Count(f.whitenings) + "|" + Count(f.nightguards) + "|" + Count(f.perio) + "|" +
           Count(f.scaling) + "|" + Count(f.therapy) + "|" + Count(f.recall) + "|" +
           Amount(cf, f.production) + "|" + Count(f.units_worked) + "|" +
           Amount(cf, Ratio(f.production.ToDouble(), f.units_worked)) + "|" + Hours(f.hours) + "|" +
           Amount(cf, Ratio(f.production.ToDouble(), f.hours)) + ";";
  };

  // One count of lines of the employee's invoices on the day, by a tail of
  // the statement that names the codes. `Code` is text in the database and
  // the numbers of the tails compare with it as numbers.
  std::string day_text;
  auto count_of = [&](const std::string& tail) {
    db::Recordset rs = Open(
        "SELECT COUNT(*) AS theCount FROM Invoices INNER JOIN InvoiceDetails ON Invoices.ID = "
        "InvoiceDetails.InvoiceID WHERE Invoices.ProviderID = " +
            id + " AND InvoiceDetails.Date = '" + day_text + tail,
        db::adOpenForwardOnly);
    const double n = rs.Eof() ? 0 : cf.ReturnVal(rs["theCount"].Value());
    rs.Close();
    return n;
  };
  auto sum_of = [&](const std::string& sql) {
    db::Recordset rs = Open(sql, db::adOpenForwardOnly);
    const Currency c = rs.Eof() ? Currency() : cf.ReturnCur(rs["theTotal"].Value());
    rs.Close();
    return c;
  };

  // ---- Summaries ----
  // The cells the hygiene counts leave open are this practice's rules:
  //  - RC # (recalls) is the count of 3/4-month recall units (01202).
  //  - C&B Units counts the crown and bridge lines (codes 27000 to 29999
  //    and 62000 to 69999) over the period.
  //  - Gross Pay is PayRate times the hours worked, plus Commission percent
  //    of the net payments, plus the Salary (a yearly figure) for the
  //    calendar days of the period over 365.
  //  - Projected $ is TargetIncomePerDay times the days worked; without it
  //    TargetIncomePerHour times the hours; without either, UnitValue times
  //    the scheduled units (what a full book would bring in).
  //  - Cost % and PDA Cost% are Gross Pay over the actual production: what
  //    the person costs for what the chair produced.
  //  - An assistant (PDA) gets the dentist's summary: pay, hours and cost,
  //    without the hygiene counts.
  const Currency pay_rate = cf.ReturnCur(employee["PayRate"].Value());
  const Currency salary = cf.ReturnCur(employee["Salary"].Value());
  Variant commission_value = employee["Commission"].Value();
  const int32_t commission = cf.ReturnNumber(commission_value);
  const Currency per_day = cf.ReturnCur(employee["TargetIncomePerDay"].Value());
  const Currency per_hour = cf.ReturnCur(employee["TargetIncomePerHour"].Value());

  auto summary = [&](const MonitorFigures& f, DateTime from, DateTime to, const MonitorFigures* whole) {
    const double calendar_days = std::floor(to.serial()) - std::floor(from.serial()) + 1;
    const double gross = pay_rate.ToDouble() * f.hours + f.payments.ToDouble() * commission / 100.0 +
                         salary.ToDouble() * calendar_days / 365.0;
    double projected = 0;
    if (!per_day.IsZero()) projected = per_day.ToDouble() * f.days;
    else if (!per_hour.IsZero()) projected = per_hour.ToDouble() * f.hours;
    else projected = static_cast<double>(UnitValue) * f.scheduled;
    const double actual = f.production.ToDouble();
    const double open_units = f.scheduled - f.booked;
    auto pct = [&](double part, double total) { return ReturnPercent(Variant(part), Variant(total)); };

    vsp.Text("");
    vsp.TableBorder(7);
    if (kind == practice::MonitorKind::kHygienist) {
      std::string body = "Total|" + std::to_string(f.days) + "|" + Count(f.patients) + "|" +
                         Count(f.recall) + "|" + Count(f.selfcares) + "|" + Count(f.followups) + "|" +
                         Count(f.npes) + "|" + Count(f.emerges) + "|" + Count(f.whitenings) + "|" +
                         Count(f.scheduled) + "|" + Count(f.booked) + "|" + Count(open_units) + "|" +
                         Count(f.nightguards) + "|" + Amount(cf, gross) + ";";
      // The percent row: the part of the whole range this month holds.
      if (whole) {
        body += "Percent|" + pct(f.days, whole->days) + "|" + pct(f.patients, whole->patients) + "|" +
                pct(f.recall, whole->recall) + "|" + pct(f.selfcares, whole->selfcares) + "|" +
                pct(f.followups, whole->followups) + "|" + pct(f.npes, whole->npes) + "|" +
                pct(f.emerges, whole->emerges) + "|" + pct(f.whitenings, whole->whitenings) + "|" +
                pct(f.scheduled, whole->scheduled) + "|" + pct(f.booked, whole->booked) + "|" +
                pct(open_units, whole->scheduled - whole->booked) + "|" +
                pct(f.nightguards, whole->nightguards) + "|;";
      }
      vsp.AddTable(">.8in|>.5in|>.5in|>.65in|>.65in|>.65in|>.65in|>.65in|>.65in|>.65in|>.65in|>.65in|>.65in|>.65in",
                   "|No. Days|Pat #|RC #|Self Care|Follow Ups|NPE#|Emerg|Whitening|Units Sched.|Units Booked|Open Units|Niteguards|Gross Pay",
                   body, kHeaderColor);
      vsp.AddTable(">.8in|>.5in|>.65in|>.65in|>.65in|>.65in|>.65in|>.65in",
                   "|Pt/Day|% Booked|Projected $|Actual $|Diff $|$/Hr. Prod|PDA Cost%",
                   "Total|" + Hours(Ratio(f.patients, f.days)) + "|" + pct(f.booked, f.scheduled) + "|" +
                       Amount(cf, projected) + "|" + Amount(cf, actual) + "|" +
                       Amount(cf, actual - projected) + "|" + Amount(cf, Ratio(actual, f.hours)) + "|" +
                       pct(gross, actual) + ";",
                   kHeaderColor);
    } else {
      db::Recordset cb = Open(
          "SELECT COUNT(*) AS theCount FROM Invoices INNER JOIN InvoiceDetails ON Invoices.ID = "
          "InvoiceDetails.InvoiceID WHERE Invoices.ProviderID = " +
              id + " AND InvoiceDetails.Date >= '" + from.ToIsoDate() + "' AND InvoiceDetails.Date <= '" +
              to.ToIsoDate() +
              "' AND ((Code >= '27000' AND Code <= '29999') OR (Code >= '62000' AND Code <= '69999'))",
          db::adOpenForwardOnly);
      const double crowns = cb.Eof() ? 0 : cf.ReturnVal(cb["theCount"].Value());
      cb.Close();
      std::string body = "Total|" + std::to_string(f.days) + "|" + Count(f.patients) + "|" + Count(crowns) +
                         "|" + Count(f.scheduled) + "|" + Count(f.booked) + "|" + Count(open_units) + "|" +
                         Amount(cf, gross) + "|" + Hours(Ratio(f.patients, f.days)) + "|" +
                         pct(f.booked, f.scheduled) + "|" + Amount(cf, projected) + "|" +
                         Amount(cf, actual) + "|" + Amount(cf, actual - projected) + "|" + Hours(f.hours) +
                         "|" + Amount(cf, Ratio(actual, f.hours)) + "|" + pct(gross, actual) + ";";
      if (whole) {
        body += "Percent|" + pct(f.days, whole->days) + "|" + pct(f.patients, whole->patients) + "||" +
                pct(f.scheduled, whole->scheduled) + "|" + pct(f.booked, whole->booked) + "|||||||||" +
                pct(f.hours, whole->hours) + "||;";
      }
      vsp.AddTable(">.8in|>.5in|>.5in|>.65in|>.65in|>.65in|>.65in|>.65in|>.65in|>.65in|>.65in|>.65in|>.65in|>.65in|>.65in|>.65in",
                   "|No. Days|Pat #|C&B Units|Units Sched.|Units Booked|Open Units|Gross Pay|Pt/Day|% Booked|Projected $|Actual $|Diff $|Worked Hours|$/Hr. Prod|Cost %",
                   body, kHeaderColor);
    }
  };

  // ---- Day by day ----
  // The months are read first and printed after, so that each month's
  // summary can show its share of the range.
  struct Month {
    DateTime first, last;
    std::string rows;
    MonitorFigures sums;
  };
  std::vector<Month> months;
  MonitorFigures range;
  const double first_day = std::floor(StartDate.serial());
  const double last_day = std::floor(Enddate.serial());
  for (double serial = first_day; serial <= last_day; serial += 1.0) {
    const DateTime day(serial);
    day_text = day.ToIsoDate();
    if (months.empty() || months.back().first.Month() != day.Month() ||
        months.back().first.Year() != day.Year()) {
      months.push_back(Month{day, day, "", {}});
    }
    Month& month = months.back();
    month.last = day;

    MonitorFigures d;
    // Payment adjustments that count as paid stay in; a NULL
    // [Adjustment?] compares as unknown and drops the row.
    d.payments = sum_of(
        "SELECT SUM(InvoicePaymentDetails.Amount) as theTotal  FROM (InvoicePayments INNER JOIN PaymentTypes ON "
        "InvoicePayments.PaymentTypeID = PaymentTypes.ID) INNER JOIN (Invoices INNER JOIN InvoicePaymentDetails ON "
        "Invoices.ID = InvoicePaymentDetails.InvoiceID) ON InvoicePayments.ID = InvoicePaymentDetails.InvoicePaymentID "
        "where InvoicePaymentDetails.Date = '" +
        day_text + "' and ProviderID = " + id + " AND (InvoicePayments.CancellationDate IS NULL OR "
        "InvoicePayments.CancellationDate > '" + day_text +
        "') AND ([Adjustment?] = 0 OR ([Adjustment?] <> 0 AND [ToTotalPaid?] <> 0))");
    {
      db::Recordset rs = Open("Select COUNT(*) as theCount from Invoices where Date = '" + day_text +
                                  "' AND ProviderID = " + id,
                              db::adOpenForwardOnly);
      d.patients = rs.Eof() ? 0 : cf.ReturnVal(rs["theCount"].Value());
      rs.Close();
    }
    d.selfcares = count_of("' AND Code >= 13211 and Code <= 13214");
    d.followups = count_of("' AND Code = 01400");
    d.npes = count_of("' AND Code >= 01101 and Code <= 01103");
    d.emerges = count_of("' AND Code = 01205");
    d.whitenings = count_of("' AND Code = 97123");
    d.nightguards = count_of("' AND Code = 43612");
    // 43421 and 43427 are both perio and therapy: each line counts in both
    // columns, a 43427 as half a unit.
    d.perio = count_of("' AND Code >= 43421 and Code <= 43421") + count_of("' AND Code = 43427") / 2.0;
    d.scaling = count_of("' AND (Code = 11111 OR Code = 11119)");
    for (int unit = 2; unit <= 6; ++unit)
      d.scaling += unit * count_of("' AND Code = 1111" + std::to_string(unit));
    d.scaling += count_of("' AND Code = 11117") / 2.0;
    d.therapy = count_of("' AND (Code = 43421 or Code = 43429 or Code = 49211 or Code = 49219)");
    for (int unit = 2; unit <= 6; ++unit)
      d.therapy += unit * count_of("' AND Code = 4342" + std::to_string(unit));
    d.therapy += count_of("' AND Code = 43427") / 2.0;
    d.recall = count_of("' AND Code = 01202");
    d.units_worked = d.scaling + d.therapy + d.recall;
    d.production = sum_of(
        "SELECT SUM(InvoiceDetails.Cost) AS theTotal FROM Invoices INNER JOIN InvoiceDetails ON Invoices.ID = "
        "InvoiceDetails.InvoiceID WHERE Invoices.ProviderID = " +
        id + " AND InvoiceDetails.Date = '" + day_text + "' AND (" + hygiene_condition + ")");
    {
      db::Recordset rs = Open("Select SUM([Units]) AS theTotal FROM PatientAppointments where [Date] = '" +
                                  day_text + "' AND ProviderID = " + id,
                              db::adOpenForwardOnly);
      d.booked = rs.Eof() ? 0 : cf.ReturnVal(rs["theTotal"].Value());
      rs.Close();
    }
    d.hours = d.units_worked * unit_minutes / 60.0;
    d.scheduled = weekday_units[day.Weekday() - 1];

    // A day is worked when anything happened on it: money, patients, coded
    // work, production or bookings. A quiet day prints no row and is not
    // counted in No. Days (its scheduled units still count as open).
    const bool active = !d.payments.IsZero() || d.patients != 0 || d.selfcares != 0 || d.followups != 0 ||
                        d.npes != 0 || d.emerges != 0 || d.whitenings != 0 || d.nightguards != 0 ||
                        d.perio != 0 || d.units_worked != 0 || !d.production.IsZero() || d.booked != 0;
    if (active) {
      d.days = 1;
      month.rows += Format(Variant(day), "mmm/dd/yyyy") + "|" + row_cells(d);
    }
    month.sums.Add(d);
    range.Add(d);
    RaiseProgress(ProgressPercent(static_cast<long>(serial - first_day + 1),
                                  static_cast<long>(last_day - first_day + 1)));
  }

  // ---- Printing: a page per month, then the range ----
  for (size_t m = 0; m < months.size(); ++m) {
    const Month& month = months[m];
    if (m > 0) vsp.NewPage();
    vsp.TextAlign(0);
    vsp.FontBold(true);
    vsp.FontSize(10);
    vsp.Text(Format(Variant(month.first), "mmmm yyyy"));
    vsp.FontBold(false);
    vsp.FontSize(7);
    vsp.TableBorder(7);
    std::string body = month.rows;
    if (m + 1 == months.size()) body += "Range Totals|" + row_cells(range);
    vsp.AddTable(kDayFormat, kDayHeader, body, kHeaderColor);
    summary(month.sums, month.first, month.last, &range);
  }
  vsp.NewPage();
  vsp.TextAlign(0);
  vsp.FontBold(true);
  vsp.FontSize(10);
  vsp.Text("Range Summary");
  vsp.FontBold(false);
  vsp.FontSize(7);
  summary(range, StartDate, Enddate, nullptr);

  employee.Close();
  PrintPageFooters(kPrintedBy);
  vsp.EndDoc();
  Form().Show();
}

}  // namespace orv

// The appointment report set: one run that chains the day book, the
// reschedules, the incomplete and planned appointments, the treatment plans,
// the operatory list and the booking diagnostics, and the sections that the
// host may also call alone; the appointments by patient.
#include <bit>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "appointments/appointment_text.h"
#include "common/common_functions.h"
#include "common/format.h"
#include "common/formatted_texts.h"
#include "common/vbstrings.h"
#include "frame/preview_form.h"
#include "frame/reports.h"
#include "frame/surface/color.h"
#include "frame/surface/surface.h"
#include "frame/surface/table_model.h"

namespace orv {

namespace appointments {

std::string ProviderCondition(const std::string& filter, const std::string& column) {
  const std::string f = NoZeroFilter(filter);
  if (f.empty()) return "";
  return " AND (" + vb::Replace(f, "ProviderID", column) + ")";
}

namespace {

// A time outside a day (negative, or past the last minute) prints as the
// time of day it stands for, the count taken modulo one day: the grid
// never holds such values, and a report should not fail on one.
long MinuteOfDay(clsCommonFunctions& cf, const Variant& minutes) {
  long m = static_cast<long>(cf.ReturnVal(minutes));
  m %= 1440;
  if (m < 0) m += 1440;
  return m;
}

std::string TimeOfDayText(clsCommonFunctions& cf, long m) {
  return Format(Variant(cf.IntToTime(static_cast<int16_t>(m))), "h:nn AMPM");
}

}  // namespace

std::string PrintedTime(clsCommonFunctions& cf, const Variant& minutes) {
  return TimeOfDayText(cf, MinuteOfDay(cf, minutes));
}

const std::string& TimeTexts::operator()(const Variant& minutes) {
  const long m = MinuteOfDay(cf_, minutes);
  std::string& text = texts_[static_cast<size_t>(m)];
  if (text.empty()) text = TimeOfDayText(cf_, m);
  return text;
}

int32_t Minutes(clsCommonFunctions& cf, const Variant& value) {
  if (value.IsNumeric()) return static_cast<int32_t>(cf.ReturnVal(value));
  return cf.TimeToInt(value);
}

}  // namespace appointments

namespace {

using appointments::PrintedTime;
using appointments::ProviderCondition;

// The grey of the date and provider bars (the host language's colour 8).
constexpr uint32_t kBarGrey = frame::RGB(128, 128, 128);

std::string Day(const DateTime& d) { return Format(Variant(d), "yyyy-mm-dd"); }

std::string Esc(clsCommonFunctions& cf, const Variant& v) { return frame::EscapeCell(cf.returnStr(v)); }

// How a data text joins what a listing builds: escaped into a table
// string (frame::AppendEscapedCell), or as it stands into a cell handed to
// the surface as cells (AppendPlain).
using AppendData = void (*)(std::string& out, std::string_view text);

void AppendPlain(std::string& out, std::string_view text) { out += text; }

// A field's text (as returnStr gives it), escaped, added to `out`: read
// where the recordset holds it, without a Variant or a copy of its own.
void AppendText(std::string& out, const db::Field& field, std::string& scratch,
                AppendData append = frame::AppendEscapedCell) {
  append(out, field.Text(scratch));
}

// The phone cell of the appointment listings: the home phone over the
// work phone with its extension in brackets, each where it is filled. The
// fields are found by name once, for the whole listing.
struct PhoneFields {
  explicit PhoneFields(const db::Recordset& rs) : home(rs["HomePhone"]), work(rs["WorkPhone"]), ext(rs["WorkExt"]) {}

  void AppendCell(std::string& out, std::string& scratch, AppendData append = frame::AppendEscapedCell) const {
    AppendText(out, home, scratch, append);
    out += "\r\n";
    AppendText(out, work, scratch, append);
    const std::string_view extension = ext.Text(scratch);
    if (extension.empty()) return;
    out += '[';
    append(out, extension);
    out += ']';
  }

  db::Field home, work, ext;
};

// The patient's cells of the day book and the planned list: the name over
// the category, the units, and the phones. Each row's cells are added to
// the listing's body in place.
struct PatientCells {
  explicit PatientCells(const db::Recordset& rs)
      : first_name(rs["PatientFirstName"]), last_name(rs["PatientLastName"]), category(rs["CategoryName"]),
        units(rs["Units"]), phones(rs) {}

  void Append(std::string& out) const {
    AppendText(out, first_name, scratch_);
    out += ' ';
    AppendText(out, last_name, scratch_);
    out += "\r\n";
    AppendDetails(out);
  }
  // The cells after the name's: category, units and the two phones.
  void AppendDetails(std::string& out) const {
    AppendText(out, category, scratch_);
    out += '|';
    AppendText(out, units, scratch_);
    out += '|';
    phones.AppendCell(out, scratch_);
  }
  // The same three texts as cells of their own, as they stand: the name
  // over the category, the units, the phones (`cells` has room for three).
  void FillCells(std::string* cells) const {
    cells[0].assign(first_name.Text(scratch_));
    cells[0] += ' ';
    cells[0] += last_name.Text(scratch_);
    cells[0] += "\r\n";
    cells[0] += category.Text(scratch_);
    cells[1].assign(units.Text(scratch_));
    cells[2].clear();
    phones.AppendCell(cells[2], scratch_, AppendPlain);
  }

  db::Field first_name, last_name, category, units;
  PhoneFields phones;

 private:
  mutable std::string scratch_;  // the text of a value that is not text
};

// A value of a listing's column as the key of its printed text: the
// value's kind and bits, enough to make the same value again. Text and
// Empty have none.
using ValueKey = std::pair<VarType, int64_t>;

std::optional<ValueKey> KeyOf(const Variant& v) {
  switch (const VarType type = v.type()) {
    case VarType::Null:
      return ValueKey{type, 0};
    case VarType::Boolean:
      return ValueKey{type, v.AsBool() ? 1 : 0};
    case VarType::Long:
    case VarType::LongLong:
      return ValueKey{type, v.AsInteger()};
    case VarType::Currency:
      return ValueKey{type, v.AsCurrency().raw()};
    case VarType::Double:
      return ValueKey{type, std::bit_cast<int64_t>(v.AsDouble())};
    case VarType::Date:
      return ValueKey{type, std::bit_cast<int64_t>(v.AsDate().serial())};
    default:
      return std::nullopt;
  }
}

Variant ValueOf(const ValueKey& key) {
  switch (key.first) {
    case VarType::Boolean:
      return Variant(key.second != 0);
    case VarType::Long:
      return Variant(static_cast<int32_t>(key.second));
    case VarType::LongLong:
      return Variant(static_cast<long long>(key.second));
    case VarType::Currency:
      return Variant(Currency::FromRaw(key.second));
    case VarType::Double:
      return Variant(std::bit_cast<double>(key.second));
    case VarType::Date:
      return Variant(DateTime(std::bit_cast<double>(key.second)));
    default:
      return Variant::Null();
  }
}

// One column's texts for the many rows of a listing (a flag as Yes/No, an
// estimate, a day): each distinct value is formatted once, and a value
// that cannot key them (text) is formatted as it comes.
class ColumnTexts {
 public:
  using Format = std::string (*)(const Variant&);
  explicit ColumnTexts(Format format)
      : format_(format), texts_([format](const ValueKey& key) { return format(ValueOf(key)); }) {}

  void Append(std::string& out, const Variant& v) {
    if (const auto key = KeyOf(v)) {
      out += texts_(*key);
    } else {
      out += format_(v);
    }
  }

 private:
  Format format_;
  FormattedTexts<ValueKey> texts_;
};

std::string YesNoText(const Variant& v) {
  return Format(v, "Yes/No");
}

// The appointments' days from `dtStart` to `dtEnd`, both whole.
std::string DayBookDays(const DateTime& dtStart, const DateTime& dtEnd) {
  return "([Date] >= '" + Day(dtStart) + "' AND [Date] <= '" + Day(dtEnd) + "')";
}

// The joins, the period, the providers and the category that the day book
// and the operatory list read alike.
std::string DayBookFrom(const DateTime& dtStart, const DateTime& dtEnd, const std::string& ProviderFilter,
                        int32_t Category) {
  std::string sql =
      " FROM PatientAppointments INNER JOIN Patient ON PatientAppointments.PatientID = Patient.ID "
      "INNER JOIN Employees ON PatientAppointments.ProviderID = Employees.ID INNER JOIN "
      "ProcedureCategories ON PatientAppointments.ProcedureCat = ProcedureCategories.ID WHERE " +
      DayBookDays(dtStart, dtEnd) + ProviderCondition(ProviderFilter, "PatientAppointments.ProviderID");
  if (Category != 0) sql += " AND ProcedureCat = " + std::to_string(Category);
  return sql;
}

std::string EstimateText(const Variant& v) { return v.IsNull() ? "N/E" : Format(v, "Currency"); }

// The day book and the operatory list walk their rows alike: a date bar
// when the day changes, a provider bar when the provider does, and one
// table per provider block. The walker holds the block's cell rows.
class DayWalk {
 public:
  DayWalk(clsReports& r, std::function<void(bool last)> flush) : r_(r), flush_(std::move(flush)) {}

  // Opens the bars the row needs; flushes what the previous block held.
  void Row(const DateTime& date, std::string_view provider) {
    frame::PrintSurface& vsp = r_.VSP();
    if (!have_date_ || date != date_) {
      if (!body.empty()) flush_(false);
      have_date_ = true;
      date_ = date;
      vsp.IndentLeft(0);
      vsp.FontName("Tahoma");
      vsp.FontSize(14);
      vsp.FontBold(true);
      vsp.AddTable("<!~+6.5in", frame::EscapeCell(Format(Variant(date), "Long Date")), "", kBarGrey);
      vsp.Text(" ");
      // The bar introduces the day: it never stands alone at a page's foot.
      vsp.KeepWithNext();
      // A new day always opens a new provider block.
      have_provider_ = false;
    }
    if (!have_provider_ || provider != provider_) {
      if (!body.empty()) flush_(false);
      have_provider_ = true;
      provider_ = provider;
      sum = Currency();
      vsp.FontName("Tahoma");
      vsp.FontSize(10);
      vsp.FontBold(true);
      vsp.TextColor(frame::RGB(255, 255, 255));
      vsp.AddTable("<!~+2in", frame::EscapeCell(provider_), "", kBarGrey);
      vsp.KeepWithNext();
      vsp.TextColor(0);
      vsp.FontSize(10);
      vsp.FontBold(false);
    }
  }
  void Finish() {
    if (!body.empty()) flush_(true);
  }

  std::string body;
  Currency sum;

 private:
  clsReports& r_;
  std::function<void(bool)> flush_;
  bool have_date_ = false, have_provider_ = false;
  DateTime date_;
  std::string provider_;
};

}  // namespace

void clsReports::rptAppointmentReports(bool blnApp, bool blnAppIncomplete, bool blnAppPlanned,
                                       bool blnAppReschedules, bool blnTreatmentPlans,
                                       bool blnOperatory, bool blnBooking, DateTime dtStart,
                                       DateTime dtEnd, std::string UserName,
                                       std::string ProviderNames, int32_t Category) {
  const db::Snapshot snapshot(conn_);
  // The run keeps its own trap around the chained sections, so that a
  // failure in one section names the run and the document is not left
  // half-made in the preview.
  Trap("An Error has occurred in Sub rptAppointmentReport in Class clsReports", [&] {
    frame::PrintSurface& vsp = VSP();
    // "" and "0" both ask for every provider: the names stay empty.
    const std::string filter = NoZeroFilter(ProviderNames);
    // The names are read for what they check: a filter naming a column
    // that is not there fails here, under the run's message, before any
    // section draws.
    ReturnProviderNames(filter);
    vsp.StartDoc();
    vsp.DocName("Appointment Report");
    const std::string subtitle = "From: " + Format(Variant(dtStart), "mmm/dd/yyyy") + " to " +
                                 Format(Variant(dtEnd), "mmm/dd/yyyy");
    bool printed = false;
    // The sections print in this order whatever the order of the flags.
    auto section = [&](bool flag, const char* title, const std::function<void()>& body) {
      if (!flag) return;
      if (printed) vsp.NewPage();
      printed = true;
      PrintReportHeading(title, UserName, subtitle);
      body();
    };
    section(blnApp, "Appointment Report",
            [&] { srptAppointments(dtStart, dtEnd, filter, Category, false); });
    section(blnAppReschedules, "Appointment Reschedule Report",
            [&] { srptAppointmentReschedules(filter, dtStart, dtEnd); });
    section(blnAppIncomplete, "Incomplete Appointment Report",
            [&] { srptAppointments(dtStart, dtEnd, filter, Category, true); });
    section(blnAppPlanned, "Outstanding Planned Appointments Report",
            [&] { srptPlannedAppointmentsList(filter, dtStart, dtEnd, Category); });
    section(blnTreatmentPlans, "Treatment Plan Report",
            [&] { srptTreatmentPlansOutstanding(filter, dtStart, dtEnd); });
    section(blnOperatory, "Operatory Report",
            [&] { srptOperatoryList(filter, dtStart, dtEnd, Category); });
    // The run's heading names the whole report; the booking section's own
    // heading, when called alone, is the shorter "Appointment Booking
    // Diagnostics".
    section(blnBooking, "Appointment Booking Diagnostics Report",
            [&] { srptBookingDiagnostics(dtStart, dtEnd); });
    vsp.DocName("Appointment Report");
    PrintPageFooters(kPrintedBy);
    vsp.EndDoc();
    Form().Show();
  });
}

void clsReports::srptAppointments(DateTime dtStart, DateTime dtEnd, std::string ProviderFilter,
                                  int32_t Category, bool Complete) {
  const db::Snapshot snapshot(conn_);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  std::string sql =
      "SELECT Patient.FirstName AS PatientFirstName, Patient.HomePhone as HomePhone, "
      "Patient.OtherPhone as WorkPhone, Patient.OtherExt as WorkExt, Employees.LastName AS Provider, "
      "Patient.LastName AS PatientLastName, PatientAppointments.*, ProcedureCategories.Name AS "
      "CategoryName, ProcedureCategories.ID as ProcedureCategoryID" +
      DayBookFrom(dtStart, dtEnd, ProviderFilter, Category);
  if (Complete) sql += " AND (Complete = 0 OR Complete IS NULL)";
  sql += " ORDER BY [Date], Provider, [Time]";
  // Of the appointment's own columns the day book reads five.
  db::Recordset rs = OpenKeeping(sql, {"Date", "Provider", "Time", "PatientFirstName", "PatientLastName",
                                       "CategoryName", "Units", "HomePhone", "WorkPhone", "WorkExt", "Confirmed",
                                       "Estimate"});
  const db::Field date = rs["Date"], provider = rs["Provider"], time = rs["Time"], confirmed = rs["Confirmed"],
                  estimate_field = rs["Estimate"];
  const PatientCells patient(rs);
  appointments::TimeTexts times(cf);
  ColumnTexts yes_no(YesNoText), estimate_texts(EstimateText);
  std::string scratch;
  vsp.TextAlign(0);

  DayWalk* walk_ptr = nullptr;
  DayWalk walk(*this, [&](bool last) {
    DayWalk& w = *walk_ptr;
    vsp.IndentLeft(0);
    vsp.StartTable();
    // The total row goes on the end of the block's rows in place.
    std::string& body = w.body;
    body += " | | | |Total($)|";
    body += Format(Variant(w.sum), "Currency");
    if (!last) body += ";";
    vsp.AddTable("<!~+.8in|<!~+1.68in|^!~+.8in|<!~+1.5in|^!~+.7in|>!~+.8in",
                 "Time|Patient Name\r\nCategory|Units|Home Phone #\r\nWork Phone #|Confirmed|Estimate",
                 body, frame::kSystemButtonFace, std::nullopt, true);
    if (last) vsp.TableCell(frame::tcIndent) = 300;
    const int rows = static_cast<int>(vsp.TableCell(frame::tcRows).Number());
    vsp.TableCell(frame::tcRowBorderAbove, rows, 1, rows, 6) = 1;
    vsp.TableCell(frame::tcFontBold, rows, 1, rows, 6) = true;
    vsp.TableBorder(7);
    vsp.EndTable();
    vsp.Text(" ");
    w.body.clear();
  });
  walk_ptr = &walk;
  while (!rs.Eof()) {
    walk.Row(cf.ReturnDate(date.Value()), provider.Text(scratch));
    const Variant estimate = estimate_field.Value();
    std::string& b = walk.body;
    b += times(time.Value());
    b += "|";
    patient.Append(b);
    b += "|";
    yes_no.Append(b, confirmed.Value());
    b += "|";
    estimate_texts.Append(b, estimate);
    b += ";";
    // A NULL estimate adds nothing: ReturnCur reads it as zero.
    walk.sum = walk.sum + cf.ReturnCur(estimate);
    RaiseProgress(rs);
    rs.MoveNext();
  }
  walk.Finish();
}

void clsReports::srptOperatoryList(std::string ProviderFilter, DateTime dtStart, DateTime dtEnd,
                                   int32_t Category) {
  const db::Snapshot snapshot(conn_);
  // The operatory list keeps its own trap: a fault in one patient's alerts
  // names this list rather than the run around it.
  Trap("An Error has occurred in Sub rptOperatoryList in Class Module clsReports", [&] {
    frame::PrintSurface& vsp = VSP();
    clsCommonFunctions& cf = Common();
    std::string sql =
        "SELECT Patient.ManualChartNumber, Patient.ID AS ClientID, Patient.Title as PatientTitle, "
        "ISNULL(Patient.PreferredName, Patient.FirstName) AS PatientFirstName, Patient.HomePhone as "
        "HomePhone, Patient.OtherPhone as WorkPhone, Patient.OtherExt as WorkExt, Employees.LastName "
        "AS Provider, Patient.LastName AS PatientLastName, PatientAppointments.*, "
        "ProcedureCategories.Name AS CategoryName, ProcedureCategories.ID as ProcedureCategoryID" +
        DayBookFrom(dtStart, dtEnd, ProviderFilter, Category);
    sql += " ORDER BY [Date], Provider, [Time]";
    db::Recordset rs = OpenKeeping(
        sql, {"ClientID", "Date", "Provider", "Reason", "ManualChartNumber", "PatientTitle", "PatientFirstName",
              "PatientLastName", "CategoryName", "Time", "Units", "HomePhone", "WorkPhone", "WorkExt", "Confirmed"});
    const db::Field client = rs["ClientID"], date = rs["Date"], provider = rs["Provider"], reason_field = rs["Reason"],
                    chart = rs["ManualChartNumber"], title = rs["PatientTitle"], time = rs["Time"],
                    confirmed = rs["Confirmed"];
    const PatientCells patient(rs);
    appointments::TimeTexts times(cf);
    ColumnTexts yes_no(YesNoText);

    // The alerts of every patient on the sheet, read at once rather than
    // one statement per appointment, each patient's in the order of the
    // practice's alert list: the join alone leaves their order to the
    // engine's plan, and the same sheet printed from the file and from the
    // server must read alike. The patients are those booked in the period
    // with the providers asked for, without the listing's joins: a few
    // more than the sheet shows cost nothing, running the joins twice did.
    std::unordered_map<std::string, std::string> alerts_of;
    {
      db::Recordset alerts = Open(
          "SELECT PatientAlerts.PatientID, ListAlerts.Name AS AlertName FROM PatientAlerts INNER JOIN ListAlerts "
          "ON PatientAlerts.AlertID = ListAlerts.ID WHERE PatientAlerts.PatientID IN (SELECT PatientID FROM "
          "PatientAppointments WHERE " +
          DayBookDays(dtStart, dtEnd) + ProviderCondition(ProviderFilter, "PatientAppointments.ProviderID") +
          ") ORDER BY PatientAlerts.PatientID, PatientAlerts.AlertID");
      const db::Field patient = alerts["PatientID"], name = alerts["AlertName"];
      while (!alerts.Eof()) {
        std::string& notes = alerts_of[cf.returnStr(patient.Value())];
        if (!notes.empty()) notes += "\r\n";
        notes += cf.returnStr(name.Value());
        alerts.MoveNext();
      }
    }
    vsp.TextAlign(0);

    // The header's name cell shows the chart-number mark only where the
    // block's rows carry a manual chart number.
    bool has_mcn = false;
    DayWalk* walk_ptr = nullptr;
    DayWalk walk(*this, [&](bool last) {
      DayWalk& w = *walk_ptr;
      vsp.IndentLeft(0);
      vsp.StartTable();
      std::string& body = w.body;
      if (last && !body.empty() && body.back() == ';') body.pop_back();
      vsp.AddTable("<!~+.8in|<!~+1.68in|^!~+.4in|<!~+1.2in|^!~+.4in|<!+2.1in",
                   std::string(has_mcn ? "Time|Patient Name(MCN)" : "Time|Patient Name") +
                       "\r\nCategory|Units|Home Phone #\r\nWork Phone #|Conf.|Alerts and Notes",
                   body, frame::kSystemButtonFace, std::nullopt, true);
      if (last) vsp.TableCell(frame::tcIndent) = 300;
      vsp.TableBorder(7);
      vsp.EndTable();
      vsp.Text(" ");
      w.body.clear();
      has_mcn = false;
    });
    walk_ptr = &walk;
    // Each row's cells are written into the block's body in place; the
    // texts are read where the recordset holds them.
    std::string scratch, reason_scratch, name;
    while (!rs.Eof()) {
      walk.Row(cf.ReturnDate(date.Value()), provider.Text(scratch));
      const auto found = alerts_of.find(std::string(client.Text(scratch)));
      const std::string_view alerts = found == alerts_of.end() ? std::string_view() : found->second;
      const std::string_view reason = reason_field.Text(reason_scratch);
      // The name without the blanks an empty title or first name leaves.
      name.clear();
      name += title.Text(scratch);
      name += ' ';
      name += patient.first_name.Text(scratch);
      name += ' ';
      name += patient.last_name.Text(scratch);
      std::string& b = walk.body;
      b += times(time.Value());
      b += '|';
      frame::AppendEscapedCell(b, vb::TrimView(name));
      const std::string_view mcn = chart.Text(scratch);
      if (!mcn.empty()) {
        has_mcn = true;
        b += "\r\nChart Number: ";
        frame::AppendEscapedCell(b, mcn);
      }
      b += "\r\n";
      patient.AppendDetails(b);
      b += '|';
      yes_no.Append(b, confirmed.Value());
      b += '|';
      // The patient's alerts over the appointment's reason; "N/A" when
      // there is neither.
      if (alerts.empty() && reason.empty()) {
        b += "N/A";
      } else {
        frame::AppendEscapedCell(b, alerts);
        if (!alerts.empty() && !reason.empty()) b += "\r\n";
        frame::AppendEscapedCell(b, reason);
      }
      b += ';';
      RaiseProgress(rs);
      rs.MoveNext();
    }
    walk.Finish();
  });
}

void clsReports::srptPlannedAppointmentsList(std::string ProviderFilter, DateTime dtStart,
                                             DateTime dtEnd, int32_t Category) {
  const db::Snapshot snapshot(conn_);
  frame::PrintSurface& vsp = VSP();
  std::string sql =
      "SELECT Patient.FirstName AS PatientFirstName, Patient.HomePhone AS HomePhone, "
      "Patient.OtherPhone AS WorkPhone, Patient.OtherExt AS WorkExt, Patient.LastName AS "
      "PatientLastName, ProcedureCategories.Name AS CategoryName, ProcedureCategories.ID AS "
      "ProcedureCategoryID, PatientFuture.*, (Employees.FirstName + ' ' + Employees.LastName) AS "
      "ProviderName FROM Patient INNER JOIN PatientFuture ON Patient.ID = PatientFuture.PatientID "
      "INNER JOIN ProcedureCategories ON PatientFuture.ProcedureCategoryID = ProcedureCategories.ID "
      "LEFT OUTER JOIN Employees On Employees.ID = PatientFuture.ProviderID WHERE (EstScheduleDate "
      ">= '" +
      Day(dtStart) + "' AND EstScheduleDate <= '" + Day(dtEnd) + "')" +
      ProviderCondition(ProviderFilter, "PatientFuture.ProviderID");
  if (Category != 0) sql += " AND ProcedureCategoryID = " + std::to_string(Category);
  sql +=
      " and not EstScheduleDate is null and (Approved is null or Approved <> 0) ORDER BY "
      "PatientFuture.EstScheduleDate";
  db::Recordset rs = OpenKeeping(sql, {"EstScheduleDate", "ProviderName", "PatientFirstName", "PatientLastName",
                                       "CategoryName", "Units", "HomePhone", "WorkPhone", "WorkExt", "Estimate"});
  const db::Field scheduled = rs["EstScheduleDate"], provider = rs["ProviderName"], estimate = rs["Estimate"];
  const PatientCells patient(rs);
  // The list is in the order of its days: each day's text is made once.
  // Each row goes to the table as its five cells, the texts as they stand
  // (no escaping into a table string and splitting back).
  ColumnTexts scheduled_days([](const Variant& v) { return Format(v, "dddd mmmm d, yyyy"); });
  ColumnTexts estimate_texts(EstimateText);
  constexpr size_t kRowCells = 5;
  std::vector<std::string> cells;
  std::string scratch;
  size_t used = 0;
  while (!rs.Eof()) {
    if (cells.size() < used + kRowCells) cells.resize(used + kRowCells);
    std::string* row = cells.data() + used;
    row[0].clear();
    scheduled_days.Append(row[0], scheduled.Value());
    row[0] += "\r\n";
    row[0] += provider.Text(scratch);
    patient.FillCells(row + 1);
    row[4].clear();
    estimate_texts.Append(row[4], estimate.Value());
    used += kRowCells;
    RaiseProgress(rs);
    rs.MoveNext();
  }
  // The border is the table's as it is laid out.
  vsp.TableBorder(7);
  vsp.AddTableRows("<!~+1.9in|<!~+1.68in|^!~+.8in|<!~+1.5in|>!~+.8in",
                   "Schedule Date\r\nProvider|Patient Name\r\nCategory|Units|Home Phone #\r\nWork Phone "
                   "#|Estimate",
                   std::span(cells).first(used), kRowCells, frame::kSystemButtonFace);
  vsp.Text(" ");
}

void clsReports::srptTreatmentPlansOutstanding(std::string ProviderFilter, DateTime dtStart,
                                               DateTime dtEnd) {
  const db::Snapshot snapshot(conn_);
  Trap("An Error has occurred in Sub rptTreatmentPlansOutstanding in Class Module clsReports", [&] {
    frame::PrintSurface& vsp = VSP();
    clsCommonFunctions& cf = Common();
    // All providers: the condition is left out, never "AND ()".
    std::string where = NoZeroFilter(ProviderFilter);
    where = where.empty() ? "" : "(" + vb::Replace(where, "ProviderID", "PatientPredTreatments.ProviderID") + ") AND ";
    db::Recordset rs = OpenKeeping(
        "SELECT PatientPredTreatments.Complete as Complete, Patient.LastName AS PatientLastName, "
        "Patient.FirstName AS PatientFirstName, PatientPredTreatments.*, (SELECT Employees.LastName "
        "FROM Employees WHERE Employees.ID = PatientPredTreatments.ProviderID) AS Provider, "
        "PatientPredTreatments.Notes, (SELECT Employees.LastName + ', ' + Employees.FirstName FROM "
        "Employees WHERE Employees.ID = PatientPredTreatments.CreatedbyID) AS UserName FROM "
        "PatientPredTreatments INNER JOIN Patient ON PatientPredTreatments.PatientID = Patient.ID "
        "WHERE " +
            where + "DatePosted >= '" + Day(dtStart) + "' AND DatePosted <= '" + Day(dtEnd) +
            "' ORDER BY PatientPredTreatments.ProviderID,PatientPredTreatments.DatePosted",
        {"Complete", "TotalAmount", "DatePosted", "PatientFirstName", "PatientLastName", "Provider", "UserName",
         "Notes"});
    const db::Field complete_field = rs["Complete"], total = rs["TotalAmount"], posted = rs["DatePosted"],
                    first_name = rs["PatientFirstName"], last_name = rs["PatientLastName"],
                    provider = rs["Provider"], user = rs["UserName"], notes = rs["Notes"];
    // A provider's plans come in the order of their days, and their totals
    // are a few fees over and over: each distinct text is made once. Each
    // plan goes to the table as its seven cells, the texts as they stand
    // (no escaping into a table string and splitting back).
    ColumnTexts posted_days([](const Variant& v) { return Format(v, "mmm, d, yyyy"); });
    ColumnTexts totals([](const Variant& v) { return Format(v, "Currency"); });
    constexpr size_t kRowCells = 7;
    std::vector<std::string> cells;
    std::string scratch;
    size_t used = 0;
    long done = 0, open = 0;
    Currency done_sum, open_sum;
    while (!rs.Eof()) {
      const bool complete = cf.ReturnBool(complete_field.Value());
      const Variant total_value = total.Value();
      const Currency amount = cf.ReturnCur(total_value);
      if (complete) {
        ++done;
        done_sum = done_sum + amount;
      } else {
        ++open;
        open_sum = open_sum + amount;
      }
      if (cells.size() < used + kRowCells) cells.resize(used + kRowCells);
      std::string* row = cells.data() + used;
      row[0].clear();
      posted_days.Append(row[0], posted.Value());
      row[1].assign(first_name.Text(scratch));
      row[1] += ' ';
      row[1] += last_name.Text(scratch);
      row[2].assign(provider.Text(scratch));
      row[3].clear();
      totals.Append(row[3], total_value);
      row[4].assign(complete ? "C" : "I");
      row[5].assign(user.Text(scratch));
      row[6].assign(notes.Text(scratch));
      used += kRowCells;
      RaiseProgress(rs);
      rs.MoveNext();
    }
    vsp.AddTableRows("<!~+.8in|<!~+1.4in|^!~+1in|>!~+.8in|<!~+0.2in|<!~+.8in|<!1.7in",
                     "Date|Patient Name|Provider|Total ($)|S|Entered by:|Notes",
                     std::span(cells).first(used), kRowCells, frame::kSystemButtonFace);
    vsp.Text(" ");
    vsp.FontBold(true);
    vsp.TextAlign(2);
    vsp.TableBorder(0);
    auto money = [](Currency c) { return Format(Variant(c), "Currency"); };
    vsp.AddTable("<2.3in|>1in", "",
                 "Completed Treatments|" + std::to_string(done) + ";Total Completed Treatments|" +
                     money(done_sum) + ";|;Incompleted Treatments|" + std::to_string(open) +
                     ";Total Incompleted Treatments|" + money(open_sum) + ";|;Treatments|" +
                     std::to_string(done + open) + ";Total Treatments|" + money(done_sum + open_sum) +
                     ";");
    vsp.FontBold(false);
    vsp.TextAlign(0);
  });
}

void clsReports::srptAppointmentReschedules(std::string ProviderFilter, DateTime dtStart,
                                            DateTime dtEnd) {
  const db::Snapshot snapshot(conn_);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  // The appointments and, apart, every detail row with a reschedule mark;
  // the two are related by the appointment's key as a shaped recordset would.
  // Any non-NULL mark counts, 0 too: the test is written with "or".
  db::Recordset appts = Open(
      "SELECT ID, PatientID, Date, Time, Estimate, ProcedureCat, Units FROM PatientAppointments "
      "WHERE ([Date] >= '" +
      Day(dtStart) + "' AND [Date] <= '" + Day(dtEnd) + "')" +
      ProviderCondition(ProviderFilter, "PatientAppointments.ProviderID") + " ORDER BY [Date], [Time], ID");
  db::Recordset details = Open(
      "SELECT AppointmentID, ID, Date, Time, Specific, Note, EmployeeID FROM "
      "PatientAppointmentDetails where [Reschedule?]<> 0 or [Reschedule?] is not null ORDER BY ID");
  while (!appts.Eof()) {
    const std::string id = cf.returnStr(appts["ID"].Value());
    details.Filter(Variant("AppointmentID = " + id));
    if (!details.Eof()) {
      const Variant patient = appts["PatientID"].Value();
      const Variant employee = details["EmployeeID"].Value();
      if (patient.IsNull() || employee.IsNull()) {
        Host().MsgBox(
            "There is a NULL PatientID in the Appointments Table or a NULL EmployeeID in the "
            "AppointmentsDetails Table\r\nPlease contact Technical Support to resolve this issue.",
            host::vbOKOnly, "");
      } else {
        db::Recordset p = Open("Select ID, HomePhone, FirstName, LastName, OtherPhone from Patient where ID = " +
                               cf.returnStr(patient));
        auto pv = [&](const char* f) { return p.Eof() ? std::string() : cf.returnStr(p[f].Value()); };
        vsp.TableBorder(0);
        vsp.StartTable();
        vsp.TableCell(frame::tcCols) = 4;
        vsp.TableCell(frame::tcRows) = 2;
        for (int c = 1; c <= 4; ++c) vsp.TableCell(frame::tcColWidth, 0, c) = "1.75in";
        vsp.TableCell(frame::tcText, 1, 1) = "Date: " + Format(appts["Date"].Value(), "mmm/dd/yyyy");
        vsp.TableCell(frame::tcText, 1, 2) = "Time: " + PrintedTime(cf, appts["Time"].Value());
        vsp.TableCell(frame::tcText, 1, 3) = "Estimate: " + Format(Variant(cf.ReturnCur(appts["Estimate"].Value())), "Currency");
        vsp.TableCell(frame::tcText, 1, 4) = "Units: " + cf.returnStr(appts["Units"].Value());
        vsp.TableCell(frame::tcText, 2, 1) = "Patient: " + pv("FirstName") + " " + pv("LastName");
        vsp.TableCell(frame::tcColSpan, 2, 1) = 2;
        std::string phone = "Phone: " + pv("HomePhone");
        if (!pv("OtherPhone").empty()) phone += "  Other: " + pv("OtherPhone");
        vsp.TableCell(frame::tcText, 2, 3) = phone;
        vsp.TableCell(frame::tcColSpan, 2, 3) = 2;
        vsp.EndTable();
        // The appointment's block stays with its reschedules.
        vsp.KeepWithNext();
        std::string body;
        while (!details.Eof()) {
          db::Recordset e = Open("Select ID, FirstName, LastName from Employees where ID = " +
                                 cf.returnStr(details["EmployeeID"].Value()));
          const std::string who = e.Eof() ? "" : cf.returnStr(e["FirstName"].Value()) + " " +
                                                     cf.returnStr(e["LastName"].Value());
          body += frame::EscapeCell(Format(details["Date"].Value(), "mmm/dd/yyyy")) + "|" +
                  PrintedTime(cf, details["Time"].Value()) + "|" + Esc(cf, details["Specific"].Value()) +
                  "|" + Esc(cf, details["Note"].Value()) + "|" + frame::EscapeCell(who) + ";";
          details.MoveNext();
        }
        vsp.AddTable("<1.25in|<1in|<2in|<2in|<1in", "Reschedule Date|Reschedule Time|Reason|Note|Employee",
                     body, kHeaderColor);
        vsp.Text(" ");
      }
    }
    RaiseProgress(appts);
    appts.MoveNext();
  }
}

void clsReports::rptAppointmentsByPatient(std::string txtfilter, std::string UserName) {
  const db::Snapshot snapshot(conn_);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  const std::string filter = NoZeroFilter(txtfilter);
  db::Recordset patients = Open("SELECT ID, FullName, BirthDate FROM Patient" +
                                (filter.empty() ? std::string() : " WHERE (" + filter + ")") +
                                " ORDER BY FullName");
  // The child rows of every patient at once, related by PatientID as the
  // shaped recordset relates them; the order within a patient is the
  // appointments' own. Only the chosen patients' rows are read: the list
  // of one patient read every appointment of the practice (5 s and 130 MB
  // at 100,000 patients).
  db::Recordset appts = Open(
      "SELECT PatientAppointments.*, ProcedureCategories.Name AS Category, Employees.LastName AS "
      "Provider, Employees1.LastName AS BookedBy FROM PatientAppointments INNER JOIN "
      "ProcedureCategories ON PatientAppointments.ProcedureCat = ProcedureCategories.ID INNER JOIN "
      "Employees ON PatientAppointments.ProviderID = Employees.ID INNER JOIN Employees Employees1 ON "
      "PatientAppointments.EmployeeID = Employees1.ID" +
      (filter.empty() ? std::string()
                      : " WHERE PatientAppointments.PatientID IN (SELECT ID FROM Patient WHERE (" +
                            filter + "))") +
      " ORDER BY PatientAppointments.PatientID, [Date], [Time]");
  vsp.DocName("Appointments By Patient");
  vsp.StartDoc();
  PrintReportHeading("Appointments By Patient", UserName, "");
  bool any = false;
  while (!patients.Eof()) {
    appts.Filter(Variant("PatientID = " + cf.returnStr(patients["ID"].Value())));
    std::string body;
    while (!appts.Eof()) {
      body += Esc(cf, appts["Provider"].Value()) + "|" + Format(appts["Date"].Value(), "MMM/d/yyyy") +
              "|" + PrintedTime(cf, appts["Time"].Value()) + "|" + Esc(cf, appts["Units"].Value()) +
              "|" + Esc(cf, appts["Category"].Value()) + "|" + Esc(cf, appts["Reason"].Value()) + ";";
      appts.MoveNext();
    }
    if (!body.empty()) {
      any = true;
      vsp.AddTable("<2in|^1in", "",
                   Esc(cf, patients["FullName"].Value()) + "|" +
                       Format(patients["BirthDate"].Value(), "MMM/d/yyyy") + ";",
                   std::nullopt, kHeaderColor);
      vsp.KeepWithNext();
      vsp.StartTable();
      // The time column is a tenth of an inch wider than the category gives
      // up, so that "12:50 PM" stands on one line at the list's size.
      vsp.AddTable("<1in|^1in|^.7in|^.5in|<1.4in|<1.7in", "Provider|Date|Time|Units|Category|Note", body,
                   kHeaderColor);
      vsp.TableCell(frame::tcIndent) = ".2in";
      // A time reads as one: "11:10 AM" never breaks after its minutes.
      const int rows = static_cast<int>(vsp.TableCell(frame::tcRows).Number());
      vsp.TableCell(frame::tcNoWrap, 1, 3, rows, 3) = true;
      vsp.EndTable();
      vsp.Text(" ");
    }
    RaiseProgress(patients);
    patients.MoveNext();
  }
  if (!any) vsp.Text("No Results to display");
  PrintPageFooters(kPrintedBy);
  vsp.EndDoc();
  Form().Show();
}

// Kept as entries of the interface: the host may call them, they draw
// nothing and return at once.
void clsReports::rptRescheduleAnalysis(int16_t theType, std::string Header) {
  (void)theType;
  (void)Header;
}

void clsReports::OverDueTreatmentPlans(DateTime StartDate, DateTime Enddate, std::string Header) {
  (void)StartDate;
  (void)Enddate;
  (void)Header;
}

}  // namespace orv

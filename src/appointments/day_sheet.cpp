// The day sheet: one page for one day, a column per chosen provider and a
// row per booking unit of the office's day. Time out of the office is
// shaded; each appointment covers as many rows as it has units, in the
// colour of its procedure category.
#include <cmath>
#include <limits>
#include <set>

#include "appointments/appointment_text.h"
#include "common/common_functions.h"
#include "common/errors.h"
#include "common/format.h"
#include "common/vbstrings.h"
#include "frame/preview_form.h"
#include "frame/reports.h"
#include "frame/surface/color.h"
#include "frame/surface/surface.h"
#include "frame/surface/table_model.h"
#include "platform/host/settings.h"

namespace orv {

namespace appointments {

namespace {
// A row number as the sheet stores it: a 16-bit integer, the value rounded
// to the nearest, ties to even.
int16_t RowNumber(double v) {
  const double r = std::nearbyint(v);
  if (r > std::numeric_limits<int16_t>::max() || r < std::numeric_limits<int16_t>::min())
    throw OverflowError();
  return static_cast<int16_t>(r);
}
double Units(int32_t t, int32_t s, int u) {
  if (u == 0) throw DivisionByZeroError();
  return static_cast<double>(t - s) / u;
}
}  // namespace

int GridRows(int32_t s, int32_t e, int u) { return RowNumber(Units(e, s, u) + 1); }
int StartRow(int32_t t, int32_t s, int u) { return RowNumber(Units(t, s, u) + 2); }
int EndRow(int32_t t, int32_t s, int u) { return RowNumber(Units(t, s, u) + 1); }

}  // namespace appointments

namespace {

using appointments::EndRow;
using appointments::GridRows;
using appointments::Minutes;
using appointments::StartRow;

constexpr uint32_t kShade = frame::RGB(188, 188, 188);

std::string Day(const DateTime& d) { return Format(Variant(d), "yyyy-mm-dd"); }

// The sheet's trap resumes: a cell that cannot be set is reported and the
// sheet goes on. The same fault (a day with no hours, an office without a
// unit length) repeats in every cell of the day: it is told once.
class Resume {
 public:
  explicit Resume(clsReports& r) : r_(r) {}
  template <class F>
  void operator()(F&& step) {
    try {
      step();
    } catch (const std::exception& e) {
      if (told_.insert(e.what()).second)
        r_.Host().MsgBox(std::string("An Error has occurred in Sub rptDaySheet in Object clsReports") +
                             "\r\n" + e.what(),
                         host::vbOKOnly, "");
    }
  }

 private:
  clsReports& r_;
  std::set<std::string> told_;
};

}  // namespace

void clsReports::rptDaySheet(DateTime theDate, std::vector<int32_t>& Providers, std::string UserName,
                             std::string OfficeName) {
  const db::Snapshot snapshot(conn_);
  PreviewForm& form = Form();
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  // The host tells this run from the others by the flag; a run that fails
  // leaves it set.
  form.IsDaySheet = true;
  Resume resume(*this);
  // The sheet goes to paper: the person picks the printer first, and a
  // cancelled dialog prints nothing.
  if (vsp.PrintDialog(0) == 0) {
    form.IsDaySheet = false;
    return;
  }

  const std::string weekday = Format(Variant(theDate), "dddd");
  const std::string heading = Format(Variant(theDate), "dddd mmmm dd, yyyy") + " - " + OfficeName;
  const bool landscape = cf.ReturnVal(Variant(host::AppSettings().Get("Settings", "DaysheetLandscape", "0"))) != 0;
  const bool long_form = host::AppSettings().Get("Settings", "DaySheetType", "") == "O";

  // The office's day and its unit.
  int32_t S = 0, E = 0;
  int U = 0;
  bool office_ok = false;
  resume([&] {
    db::Recordset office = Open("Select * from OfficeInformation where ID = " + std::to_string(OfficeID));
    if (office.Eof()) throw ReportError(0, "The office " + std::to_string(OfficeID) + " is not on file");
    office_ok = true;
    U = static_cast<int>(cf.ReturnVal(office["UnitMinutes"].Value()));
    S = Minutes(cf, office["HourFrom" + weekday].Value());
    E = Minutes(cf, office["HourTo" + weekday].Value());
  });
  // Without an office there is no day to lay out: its message stands
  // alone, not followed by the division that its missing unit would fail.
  int rows = 1;
  if (office_ok) resume([&] { rows = std::max(1, GridRows(S, E, U)); });

  vsp.DocName(heading);
  vsp.Orientation(landscape ? 1 : 0);
  vsp.MarginTop(100);
  vsp.MarginBottom(100);
  vsp.MarginLeft(300);
  vsp.MarginRight(landscape ? 500 : 100);
  vsp.StartDoc();
  vsp.CurrentX(400);
  // The heading starts at the top margin's band that a printer leaves
  // blank, not at the paper's very edge, where it would be cut.
  vsp.CurrentY(frame::PrintSurface::kPaperInset);
  vsp.TextAlign(1);
  vsp.FontSize(12);
  vsp.FontBold(true);
  vsp.Text(heading);
  const long x_height = static_cast<long>(vsp.TextHeight("X").value());
  vsp.FontSize(8);
  vsp.FontBold(false);
  {
    const Twips width(1800);
    const Twips right = vsp.PageWidth() - vsp.MarginRight() - frame::PrintSurface::kPaperInset;
    vsp.TextBox("By: " + UserName + "\r\nOn: " + Format(Variant(Clock::Today()), "mmm/dd/yyyy"),
                right - width, Twips(vsp.MarginTop().value() + 2 * x_height), width, Twips(2 * x_height + 60));
    // The grid starts below the box, so that the two never overlap.
    vsp.CurrentY(Twips(vsp.MarginTop().value() + 4 * x_height + 120));
  }
  vsp.TextAlign(0);
  // The height below the heading goes to the rows, so that the whole day
  // stands on one page: the text is Arial Narrow at 9 points where the rows
  // leave room for it, smaller on a long day.
  // The paper's blank band at the foot, and as much again for the two
  // header rows' taller text, stay clear.
  const double free_h = (vsp.PageHeight() - vsp.MarginBottom() - vsp.CurrentY() -
                         frame::PrintSurface::kPaperInset * 2)
                            .value();
  const double row_h = std::max(60.0, free_h / (rows + 2));
  const double points =
      std::min(9.0, std::max(4.0, (row_h - 2 * frame::PrintSurface::kCellPadY.value()) / 20.0 / 1.3));
  vsp.StartTable();
  vsp.FontName("Arial Narrow");
  vsp.FontSize(points);

  // The grid: the time column first, then the providers in the order given.
  // The time column stands in column 1, so provider i (from 0) stands in
  // column i + 2. Row 1, under the names, holds each provider's hours of
  // the day; the first unit of the office's day stands in row 2.
  const int cols = static_cast<int>(Providers.size()) + 1;
  std::string header = "Time";
  std::string body;
  for (int r = 1; r <= rows; ++r) {
    const int32_t t = S + (r - 2) * U;
    body += (r >= 2 && U > 0) ? frame::EscapeCell(Format(Variant(cf.IntToTime(static_cast<int16_t>(t))), "h:nn AMPM")) : "";
    for (int c = 1; c < cols; ++c) body += "|";
    body += ";";
  }
  std::string format = "^+.7in";
  for (int c = 1; c < cols; ++c) format += "|<+1in";

  struct Column {
    std::string header, hours;
  };
  std::vector<Column> heads(Providers.size());
  for (size_t i = 0; i < Providers.size(); ++i) {
    resume([&] {
      db::Recordset emp = Open("Select * from Employees where ID = " + std::to_string(Providers[i]));
      if (emp.Eof()) throw ReportError(0, "The provider " + std::to_string(Providers[i]) + " is not on file");
      heads[i].header = cf.returnStr(emp["LastName"].Value()) + " " + cf.returnStr(emp["ChairID"].Value());
    });
    header += "|" + frame::EscapeCell(heads[i].header);
  }
  vsp.AddTable(format, header, body, kHeaderColor);
  vsp.TableHeaderRows(2);

  // The width goes to the providers; the height, below the heading, to the
  // rows, so that the whole day stands on one page.
  const Twips printable_w = vsp.PageWidth() - vsp.MarginLeft() - vsp.MarginRight() - Twips(1008) -
                            frame::PrintSurface::kPaperInset;
  const double provider_w = Providers.empty() ? 0 : printable_w.value() / double(Providers.size());
  for (int c = 2; c <= cols; ++c) vsp.TableCell(frame::tcColWidth, 0, c) = provider_w;

  auto shade = [&](int c, int r1, int r2) {
    r1 = std::max(r1, 2);
    r2 = std::min(r2, rows);
    if (r1 > r2) return;
    vsp.TableCell(frame::tcBackColor, r1, c, r2, c) = kShade;
    // The shaded cells carry the colour's number as their text, as the
    // sheet always has; offices read it as the mark of time not booked.
    vsp.TableCell(frame::tcText, r1, c, r2, c) = std::to_string(kShade);
  };

  db::Recordset appts;
  resume([&] {
    appts = Open(
        "SELECT ProcedureCategories.Colour AS CategoryColor, PatientAppointments.*, "
        "ProcedureCategories.Name AS Category, 'PreMed' = CASE WHEN Patient.PremedType IS NULL OR "
        "CAST(Patient.PremedType AS char(1)) = '' THEN 0 ELSE 1 END, 'MedAlert' = CASE WHEN "
        "Patient.MedicalAlert IS NULL OR CAST(Patient.MedicalAlert AS char(1)) = '' THEN 0 ELSE 1 END, "
        "Patient.FirstName AS FirstName, Patient.PreferredName, Patient.HomePhone, Patient.LastName AS "
        "LastName, LabIO.SentDate, LabIO.ReceivedDate FROM PatientAppointments INNER JOIN Patient ON "
        "PatientAppointments.PatientID = Patient.ID LEFT OUTER JOIN LabIO ON PatientAppointments.ID = "
        "LabIO.AppointmentID LEFT OUTER JOIN ProcedureCategories ON PatientAppointments.ProcedureCat = "
        "ProcedureCategories.ID where [Date] = '" +
        Day(theDate) + "' order by [Time]");
  });

  for (size_t i = 0; i < Providers.size(); ++i) {
    const int c = static_cast<int>(i) + 2;
    const std::string key = std::to_string(Providers[i]);
    db::Recordset emp;
    resume([&] { emp = Open("Select * from Employees where ID = " + key); });
    if (emp.State() == 0 || emp.Eof() || !office_ok) continue;
    std::string hours;
    // Working hours: before the start and after the end is out of the office.
    resume([&] {
      const int32_t from = Minutes(cf, emp[weekday + "From"].Value());
      const int32_t to = Minutes(cf, emp[weekday + "to"].Value());
      if (from > S) shade(c, 2, EndRow(from, S, U));
      if (to < E) shade(c, StartRow(to, S, U), rows);
      if (from != 0 || to != 0)
        hours = appointments::PrintedTime(cf, Variant(from)) + " - " + appointments::PrintedTime(cf, Variant(to));
    });
    resume([&] {
      db::Recordset hol = Open("Select * from EmployeeHolidays where EmployeeID = " + key + " AND FromDate <= '" +
                               Day(theDate) + "' AND ToDate >= '" + Day(theDate) + "'");
      while (!hol.Eof()) {
        if (cf.returnStr(hol["FromTime"].Value()).empty() || cf.returnStr(hol["ToTime"].Value()).empty()) {
          shade(c, 2, rows);
          hours = "Away";
        } else {
          shade(c, StartRow(Minutes(cf, hol["FromTime"].Value()), S, U),
                EndRow(Minutes(cf, hol["ToTime"].Value()), S, U));
        }
        hol.MoveNext();
      }
    });
    // A special day overrides the working hours: its span is set back to
    // the plain cell, no colour and no text.
    resume([&] {
      db::Recordset sp = Open("Select * from EmployeeSpecialDays where EmployeeID = " + key + " and StartDate <= '" +
                              Day(theDate) + "' and EndDate >= '" + Day(theDate) + "'");
      while (!sp.Eof()) {
        int32_t from = Minutes(cf, sp["StartTime"].Value());
        int32_t to = Minutes(cf, sp["EndTime"].Value());
        const int r1 = std::max(2, StartRow(from, S, U));
        const int r2 = std::min(rows, EndRow(to, S, U));
        if (r1 <= r2) {
          vsp.TableCell(frame::tcBackColor, r1, c, r2, c) = frame::RGB(255, 255, 255);
          vsp.TableCell(frame::tcText, r1, c, r2, c) = "";
        }
        hours = appointments::PrintedTime(cf, Variant(from)) + " - " + appointments::PrintedTime(cf, Variant(to));
        sp.MoveNext();
      }
    });
    resume([&] {
      const Variant lf = emp["LunchFrom" + weekday].Value();
      const Variant lt = emp["Lunchto" + weekday].Value();
      if (!cf.returnStr(lf).empty() && !cf.returnStr(lt).empty())
        shade(c, StartRow(Minutes(cf, lf), S, U), EndRow(Minutes(cf, lt), S, U));
    });
    vsp.TableCell(frame::tcText, 1, c) = hours;

    if (appts.State() == 0) continue;
    appts.Filter(Variant("ProviderID = " + key));
    while (!appts.Eof()) {
      resume([&] {
        const int r = StartRow(Minutes(cf, appts["Time"].Value()), S, U);
        // An appointment past the grid is not on the sheet; one before the
        // office opens stands in the first row.
        if (r > rows) return;
        const int row = std::max(r, 2);
        const Variant colour = appts["CategoryColor"].Value();
        vsp.TableCell(frame::tcBackColor, row, c) = cf.ReturnVal(colour);
        vsp.TableCell(frame::tcText, row, c) = cf.returnStr(colour);
        // The full span is asked for; the table cuts it at its last row.
        vsp.TableCell(frame::tcRowSpan, row, c) = cf.ReturnVal(appts["Units"].Value());
        std::string name = cf.returnStr(appts["LastName"].Value()) + " ";
        const std::string preferred = cf.returnStr(appts["PreferredName"].Value());
        name += preferred.empty() ? cf.returnStr(appts["FirstName"].Value()) : preferred;
        std::string flags = cf.ReturnBool(appts["Confirmed"].Value()) ? "C" : "NC";
        if (cf.ReturnBool(appts["Message"].Value())) flags += "M";
        if (cf.ReturnVal(appts["PreMed"].Value()) == 1) flags += "P";
        if (cf.ReturnVal(appts["MedAlert"].Value()) == 1) flags += "A";
        const std::string reason =
            vb::Replace(vb::Replace(cf.returnStr(appts["Reason"].Value()), "\r", ""), "\n", "");
        const std::string tmpl = cf.returnStr(appts["Template"].Value());
        std::string text;
        if (long_form) {
          const Variant over = appts["OverSeerID"].Value();
          const std::string symbol =
              over.IsNull() ? "" : cf.returnStr(ReturnLookupValue("Employees", "ID", over, "Symbol"));
          text = "\t" + name + ", " + symbol + flags + "\r\n" + cf.returnStr(appts["Category"].Value()) +
                 "\r\n" + reason + "\t" + tmpl;
        } else {
          text = "\t" + name + " " + flags + " \r\n" + reason + "\t" + tmpl;
        }
        vsp.TableCell(frame::tcText, row, c) = text;
      });
      appts.MoveNext();
    }
  }

  // Close: row heights share the page, the header rows stay bold and
  // shaded, and the table starts on the page it fits.
  resume([&] {
    vsp.TableCell(frame::tcRowHeight, 1, 1, rows, cols) = row_h;
    // The grid is sized to the page below the heading, so it never needs
    // to move to a page of its own: keeping it together would only leave
    // the heading alone on the first page when a long day's text grows it.
    vsp.TableCell(frame::tcKeepTogether) = 0;
    vsp.TableCell(frame::tcRowHeader, 0) = 1;
    vsp.TableCell(frame::tcMarginTop, 1, 1, rows, cols) = 0;
    vsp.TableCell(frame::tcMarginBottom, 1, 1, rows, cols) = 0;
    vsp.TableCell(frame::tcBackColor, 0, 1, 1, cols) = kHeaderColor;
    vsp.TableCell(frame::tcFontBold, 0, 1, 1, cols) = true;
  });
  vsp.TableBorder(7);
  vsp.EndTable();
  vsp.TableHeaderRows(1);
  vsp.EndDoc();
  Host().DoEvents();
  vsp.PrintDoc();
  form.IsDaySheet = false;
}

}  // namespace orv

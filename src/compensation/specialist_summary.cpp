// The specialist analysis: month by month, what each visiting specialist
// produced, what the specialist cost the practice and what the lab cost,
// and the profit over the range.
#include <algorithm>
#include <cmath>
#include <map>
#include <vector>

#include "common/common_functions.h"
#include "common/errors.h"
#include "common/format.h"
#include "frame/preview_form.h"
#include "frame/reports.h"
#include "frame/surface/surface.h"
#include "frame/surface/table_model.h"
#include "platform/db/lookup.h"

namespace orv {

namespace {

const char* const kWeekdayNames[] = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                     "Thursday", "Friday", "Saturday"};

// Specialists side by side on one page. A landscape page could hold a
// fourth, but three keep each name's header readable and match the paper
// the practice files.
constexpr size_t kSpecialistsPerPage = 3;

}  // namespace

std::string clsReports::TableRowsOf(const std::string& Body, int32_t FirstColumn, int32_t ColumnCount) {
  // Cells of escaped data hold no raw "|" or ";", so the separators found
  // here are the table's own.
  std::string out;
  size_t pos = 0;
  while (pos < Body.size()) {
    size_t row_end = Body.find(';', pos);
    if (row_end == std::string::npos) row_end = Body.size();
    const std::string row = Body.substr(pos, row_end - pos);
    int32_t column = 1;
    size_t cell_start = 0;
    std::string kept;
    bool first = true;
    for (size_t i = 0; i <= row.size(); ++i) {
      if (i == row.size() || row[i] == '|') {
        if (column >= FirstColumn && column < FirstColumn + ColumnCount) {
          if (!first) kept += "|";
          kept += row.substr(cell_start, i - cell_start);
          first = false;
        }
        ++column;
        cell_start = i + 1;
      }
    }
    out += kept + ";";
    pos = row_end + 1;
  }
  return out;
}

void clsReports::rptSpecialistYearlySummary(std::string SpecFilter, std::string SpecNames,
                                            DateTime StartDate, DateTime Enddate) {
  const db::Snapshot snapshot(conn_);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  if (NoZeroFilter(SpecFilter).empty()) {
    throw ReportError(kErrInvalidProcedureCall,
                      "rptSpecialistYearlySummary: SpecFilter is empty, so \"SELECT ID, FullName FROM "
                      "Employees WHERE \" names no specialist");
  }
  const std::string start = StartDate.ToIsoDate();
  const std::string end = Enddate.ToIsoDate();

  // ---- The months of the range ----
  // The first month starts at the range's start and the last ends at its
  // end; each is named with its year ("Jan 2026"), so a range over New
  // Year reads in order.
  struct MonthSpan {
    DateTime first, last;
  };
  std::vector<MonthSpan> months;
  for (DateTime m = DateTime(std::floor(StartDate.serial())); m <= Enddate;) {
    const DateTime next = DateTime::FromParts(m.Year(), m.Month() + 1, 1);
    const DateTime last = std::min(DateTime(next.serial() - 1), DateTime(std::floor(Enddate.serial())));
    months.push_back({m, last});
    m = next;
  }
  auto month_of = [&](DateTime d) -> int {
    for (size_t i = 0; i < months.size(); ++i)
      if (d.Year() == months[i].first.Year() && d.Month() == months[i].first.Month()) return int(i);
    return -1;
  };

  // ---- Reading ----
  struct Specialist {
    int32_t id = 0;
    std::string name;
    std::vector<Currency> production, cost, lab;
  };
  std::vector<Specialist> specialists;
  db::Recordset shape = Open(
      "SHAPE {SELECT ID, FirstName, LastName, Commission, PayRate FROM Employees WHERE " + SpecFilter +
      "}  AS Specialists APPEND (( SHAPE {SELECT ID, ProviderID, Date, InvoiceTotal FROM Invoices WHERE Date >= '" +
      start + "' AND Date <= '" + end +
      "'}  AS SpecInv APPEND ({SELECT InvoiceID, Code, Cost FROM InvoiceDetails}  AS SpecInvDetails RELATE 'ID' TO "
      "'InvoiceID') AS SpecInvDetails) AS SpecInv RELATE 'ID' TO 'ProviderID') AS SpecInv");
  while (!shape.Eof()) {
    Specialist s;
    Variant id_value = shape["ID"].Value();
    s.id = cf.ReturnNumber(id_value);
    s.production.assign(months.size(), Currency());
    s.cost.assign(months.size(), Currency());
    s.lab.assign(months.size(), Currency());

    // Production is every invoice of the month as billed, cancelled or not;
    // lab is the lines whose code begins "99" ("-99" is a reversal, not lab).
    db::Recordset invoices = shape["SpecInv"].Chapter();
    while (!invoices.Eof()) {
      const int m = month_of(cf.ReturnDate(invoices["Date"].Value()));
      if (m >= 0) {
        s.production[m] += cf.ReturnCur(invoices["InvoiceTotal"].Value());
        db::Recordset details = invoices["SpecInvDetails"].Chapter();
        while (!details.Eof()) {
          if (cf.returnStr(details["Code"].Value()).substr(0, 2) == "99")
            s.lab[m] += cf.ReturnCur(details["Cost"].Value());
          details.MoveNext();
        }
      }
      invoices.MoveNext();
    }

    const Currency pay_rate = cf.ReturnCur(shape["PayRate"].Value());
    Variant commission_value = shape["Commission"].Value();
    const int32_t commission = cf.ReturnNumber(commission_value);
    for (size_t m = 0; m < months.size(); ++m) {
      const std::string a = months[m].first.ToIsoDate();
      const std::string b = months[m].last.ToIsoDate();
      // Paid by the hour: the time clock as in payroll, except that a
      // missed punch-out falls back to the start of the person's day, so
      // such a shift costs nothing until the office corrects it.
      if (!pay_rate.IsZero()) {
        db::Recordset punches = Open("Select * from Punch where UserID = " + std::to_string(s.id) +
                                         " AND [Date] >= '" + a + "' AND [Date] <= '" + b + "'",
                                     db::adOpenForwardOnly);
        int64_t minutes = 0;
        while (!punches.Eof()) {
          Variant out = punches["Timeout"].Value();
          if (out.IsNull()) {
            const DateTime day = cf.ReturnDate(punches["Date"].Value());
            out = db::ReturnValue(conn_, "Employees", "ID", Variant(s.id),
                                  std::string(kWeekdayNames[day.Weekday() - 1]) + "From");
          }
          const int32_t out_minutes = cf.TimeToInt(out);
          const int32_t in_minutes = cf.TimeToInt(punches["TimeIn"].Value());
          if (out_minutes > in_minutes) minutes += out_minutes - in_minutes;
          punches.MoveNext();
        }
        punches.Close();
        s.cost[m] += Currency::FromDouble(pay_rate.ToDouble() * (static_cast<double>(minutes) / 60.0));
      }
      // On commission: the share of the month's money collected, without
      // the adjustments. A specialist with a rate and a commission costs
      // both.
      if (commission != 0) {
        db::Recordset money = Open(
            "SELECT InvoicePaymentDetails.Amount, PaymentTypes.[Adjustment?], InvoicePayments.CheckDate, "
            "InvoicePaymentDetails.InvoiceID, InvoicePayments.ID, Invoices.ProviderID FROM (InvoicePayments "
            "INNER JOIN PaymentTypes ON InvoicePayments.PaymentTypeID = PaymentTypes.ID) INNER JOIN (Invoices "
            "INNER JOIN InvoicePaymentDetails ON Invoices.ID = InvoicePaymentDetails.InvoiceID) ON "
            "InvoicePayments.ID = InvoicePaymentDetails.InvoicePaymentID WHERE CheckDate >= '" +
                a + "' AND CheckDate <= '" + b + "' AND Amount > 0 and ProviderID = " + std::to_string(s.id),
            db::adOpenForwardOnly);
        Currency collected;
        while (!money.Eof()) {
          if (cf.ReturnVal(money["Adjustment?"].Value()) == 0)
            collected += cf.ReturnCur(money["Amount"].Value());
          money.MoveNext();
        }
        money.Close();
        s.cost[m] += Currency::FromDouble(collected.ToDouble() * commission / 100.0);
      }
    }
    specialists.push_back(std::move(s));
    RaiseProgress(shape);
    shape.MoveNext();
  }
  shape.Close();

  // The names over the columns, by ID.
  std::map<int32_t, std::string> names;
  db::Recordset name_rs = Open("SELECT FirstName, LastName, ID FROM Employees WHERE " + SpecFilter);
  while (!name_rs.Eof()) {
    Variant id_value = name_rs["ID"].Value();
    names[cf.ReturnNumber(id_value)] =
        cf.returnStr(name_rs["FirstName"].Value()) + " " + cf.returnStr(name_rs["LastName"].Value());
    name_rs.MoveNext();
  }
  name_rs.Close();
  for (Specialist& s : specialists) s.name = names[s.id];

  // ---- The table: built whole, then cut three specialists a page ----
  std::string body;
  for (size_t m = 0; m <= months.size(); ++m) {
    const bool totals = m == months.size();
    body += totals ? "Totals" : Format(Variant(months[m].first), "mmm yyyy");
    for (const Specialist& s : specialists) {
      Currency p, c, l;
      if (totals) {
        for (size_t k = 0; k < months.size(); ++k) {
          p += s.production[k];
          c += s.cost[k];
          l += s.lab[k];
        }
      } else {
        p = s.production[m];
        c = s.cost[m];
        l = s.lab[m];
      }
      body += "|" + cf.MyFormat(p, "Currency") + "|" + cf.MyFormat(c, "Currency") + "|" + cf.MyFormat(l, "Currency");
    }
    body += ";";
  }

  vsp.Orientation(1);
  vsp.StartDoc();
  PrintReportHeading("Specialist Analysis", "", "For: " + SpecNames);
  vsp.TextAlign(1);
  vsp.FontSize(10);
  vsp.Text(Format(Variant(StartDate), "mmm/dd/yyyy") + " to " + Format(Variant(Enddate), "mmm/dd/yyyy"));
  vsp.Text("");
  vsp.FontSize(8);
  vsp.TableBorder(7);
  for (size_t first = 0; first < specialists.size() || first == 0; first += kSpecialistsPerPage) {
    const size_t last = std::min(specialists.size(), first + kSpecialistsPerPage);
    if (first > 0) {
      vsp.Text("(Table continued on next page)");
      vsp.NewPage();
    }
    // The Month column repeats on every page: a page of figures without
    // its months cannot be read alone.
    std::string name_format = "<.65in", name_header = "", format = "<.65in", header = "Month";
    for (size_t i = first; i < last; ++i) {
      name_format += "|^1.95in";
      name_header += "|" + frame::EscapeCell(specialists[i].name);
      format += "|>.65in|>.65in|>.65in";
      header += "|Production|Cost|Lab Costs";
    }
    vsp.TextAlign(1);
    vsp.AddTable(name_format, name_header, "", kHeaderColor);
    std::string page_body = TableRowsOf(body, 1, 1);
    if (last > first) {
      const std::string months_col = page_body;
      const std::string figures = TableRowsOf(body, 2 + int32_t(first) * 3, int32_t(last - first) * 3);
      // Join the Month column and the figures row by row.
      page_body.clear();
      size_t a = 0, b = 0;
      while (a < months_col.size()) {
        const size_t ea = months_col.find(';', a), eb = figures.find(';', b);
        page_body += months_col.substr(a, ea - a) + "|" + figures.substr(b, eb - b) + ";";
        a = ea + 1;
        b = eb + 1;
      }
    }
    vsp.AddTable(format, header, page_body, kHeaderColor);
    if (specialists.empty()) break;
  }

  // ---- The foot: each specialist's range ----
  vsp.Text("");
  vsp.TextAlign(0);
  vsp.FontSize(10);
  for (const Specialist& s : specialists) {
    Currency p, c, l;
    for (size_t k = 0; k < months.size(); ++k) {
      p += s.production[k];
      c += s.cost[k];
      l += s.lab[k];
    }
    vsp.FontBold(true);
    vsp.Text(s.name);
    vsp.FontBold(false);
    vsp.Text("Total Production:       " + cf.MyFormat(p, "Currency"));
    vsp.Text("Total Specialist Costs: " + cf.MyFormat(c, "Currency"));
    vsp.Text("Total Lab Costs:        " + cf.MyFormat(l, "Currency"));
    vsp.Text("Specialist Profit:      " + cf.MyFormat(p - c - l, "Currency"));
    vsp.Text("");
  }
  PrintPageFooters(kPrintedBy);
  vsp.EndDoc();
  Form().Show();
}

}  // namespace orv

// Production: what the practice produced over a period, as the fees of its
// treatment lines. rptProductionReports prints one document with a section
// per flag; the sections (srptProductionBy...) also serve the day-end run.
//
// Everywhere here: lines 'In Progress' are not production; the code
// "-00100" is left out (its positive form is not); a code starting with
// "-" is a reversal, its fee summed but not counted as a procedure; codes
// "99..." and "-99..." are laboratory fees. Code ranges take reversals with
// their positive code (closing/code_ranges.h).
#include <algorithm>
#include <map>
#include <numeric>
#include <optional>
#include <stdexcept>
#include <vector>

#include "closing/code_ranges.h"
#include "common/common_functions.h"
#include "common/errors.h"
#include "common/format.h"
#include "common/formatted_texts.h"
#include "common/report_math.h"
#include "common/vbstrings.h"
#include "frame/preview_form.h"
#include "frame/reports.h"
#include "frame/surface/surface.h"
#include "platform/host/settings.h"

namespace orv {

namespace {

using closing::CodeRange;
using frame::EscapeCell;

// The date column a production section reads: 1 the treatment date, 0 the
// entry date, and any other value none (every line, whatever its date).
std::string ProductionDateColumn(int16_t byDate) {
  if (byDate == 1) return "InvoiceDetails.[Date]";
  if (byDate == 0) return "InvoiceDetails.EntryDate";
  return "";
}

std::string ProductionDateTerm(int16_t byDate, DateTime dtStart, DateTime dtEnd) {
  const std::string column = ProductionDateColumn(byDate);
  if (column.empty()) return "";
  return " AND " + column + " >= '" + dtStart.ToIsoDate() + "' AND " + column + " <= '" +
         dtEnd.ToIsoDate() + "'";
}

// The host's provider filter, a condition over "ProviderID", put on
// `column` as " AND (...)"; none for "" or "0".
std::string AndProviders(const std::string& filter, const std::string& column) {
  const std::string f = NoZeroFilter(filter);
  if (f.empty()) return "";
  return " AND (" + vb::Replace(f, "ProviderID", column) + ")";
}

std::string Money(Currency c) { return Format(Variant(c), "Currency"); }

// The fee texts of a list's lines: most lines of a code, or of a provider's
// day, bill one of a few fees, and each amount is formatted once.
using MoneyTexts = FormattedTexts<Currency>;

// Totals print with brackets for negatives and without a currency sign.
std::string TotalFigure(Currency c) {
  return Format(Variant(c), "###,###,##0.00;(###,###,##0.00)");
}

// Table borders are the office's choice (settings), 3 when none is set.
int BorderFromSettings() {
  return static_cast<int>(
      vb::Val(host::AppSettings().Get("Settings", "TableBorder", "3")));
}

std::string DateWords(int16_t byDate) {
  if (byDate == 1) return "By Treatment Date";
  if (byDate == 0) return "By Entry Date";
  // No date term: every line counts, whatever its dates.
  return "All Dates";
}

}  // namespace

void clsReports::PrintProductionTotals(Currency ProductionTotal, Currency LabTotal, bool Grand) {
  frame::PrintSurface& vsp = VSP();
  // A figure of a million or more ("1,000,000.00", or bracketed) needs the
  // wider cell to stay on one line; the threshold is on the size of the
  // figure, so a negative million widens its cell too.
  const Currency million = Currency::FromInt(1000000);
  auto width = [&](Currency c) {
    return (c >= million || c <= -million) ? std::string("3in") : std::string("2.2in");
  };
  vsp.FontBold(true);
  vsp.AddTable("<1.5in|>" + width(ProductionTotal) + "|>" + width(LabTotal), "",
               std::string(Grand ? "Grand" : "Overall") + " Total: |Production Total " +
                   TotalFigure(ProductionTotal) + "|Lab Total " + TotalFigure(LabTotal) + ";");
  vsp.FontBold(false);
}

namespace {

// The provider and overseer sections differ only in whom a line belongs to
// and in the provider column the overseer adds; one walk serves both.
void ProductionByPerson(clsReports& r, bool byOverseer, DateTime dtStart, DateTime dtEnd,
                        const std::string& ProviderFilter, const std::string& Startcode,
                        const std::string& Endcode, int16_t byDate) {
  frame::PrintSurface& vsp = r.VSP();
  clsCommonFunctions& cf = r.Common();
  const CodeRange range = closing::NormaliseCodeRange(Startcode, Endcode);
  vsp.TableBorder(BorderFromSettings());

  const std::string filter = NoZeroFilter(ProviderFilter);
  const std::string people_where =
      filter.empty() ? "" : " WHERE " + vb::Replace(filter, "ProviderID", "ID");
  // An invoice without an overseer is overseen by its provider, as in the
  // analysis reports; otherwise its lines would belong to nobody here.
  const std::string relate_column =
      byOverseer ? "ISNULL(Invoices.OverseerID, Invoices.ProviderID) AS OverseerID, " : "";
  const std::string provider_name =
      byOverseer ? "(Employees.FirstName + ' ' + Employees.LastName) AS ProviderName, " : "";
  const std::string provider_join =
      byOverseer ? " INNER JOIN Employees ON Employees.ID = InvoiceDetails.ProviderID" : "";
  const std::string date_column =
      byDate == 1 ? "InvoiceDetails.[Date]" : "InvoiceDetails.EntryDate";
  // A patient's lines of one day tie on date and name; code and line
  // settle the order, the same on every engine.
  const std::string child =
      "SELECT InvoiceDetails.ProviderID, " + relate_column + provider_name +
      "InvoiceDetails.Cost, InvoiceDetails.[Date], InvoiceDetails.EntryDate, "
      "InvoiceDetails.[Tooth#], InvoiceDetails.Surface, Invoices.[Invoice#], InvoiceDetails.Code, "
      "Patient.FirstName AS PatientFirstName, Patient.LastName AS PatientLastName "
      "FROM InvoiceDetails INNER JOIN Invoices ON InvoiceDetails.InvoiceID = Invoices.ID "
      "INNER JOIN Patient ON Invoices.PatientID = Patient.ID" +
      provider_join + " WHERE STATUS <> 'In Progress'" +
      ProductionDateTerm(byDate, dtStart, dtEnd) + " AND " +
      closing::CodeRangeCondition("Code", range) + " AND Code <> '-00100' ORDER BY " +
      date_column + ", Patient.LastName, Patient.FirstName, InvoiceDetails.Code, InvoiceDetails.ID";
  db::Recordset people = r.Open(
      "SHAPE {SELECT ID, FirstName, LastName, [Professional Title] as Title FROM Employees" +
      people_where + " ORDER BY LastName, FirstName}  AS rptProceduresByProvider APPEND ({" +
      child + "}  AS rptProceduresByCodeDetails RELATE 'ID' TO '" +
      (byOverseer ? "OverseerID" : "ProviderID") + "') AS rptProceduresByCodeDetails");

  const std::string date_header = byDate == 1 ? "Treatment Date" : "Entry Date";
  const std::string format = byOverseer ? "<1.1in|<.6in|<1.4in|<1.3in|<.7in|^.6in|^.6in|>.8in"
                                        : "<1.1in|<.8in|<2in|<.8in|^1in|^1in|>.8in";
  const std::string header =
      byOverseer ? date_header + "|Code|Patient|Provider|Invoice #|Tooth#|Surface|Fee"
                 : date_header + "|Code|Patient|Invoice #|Tooth#|Surface|Fee";
  const std::string blank_row = byOverseer ? "|||||||;" : "||||||;";

  Currency overall, overall_lab;
  MoneyTexts money_texts(Money);
  // The day cell of a line: its day alone, whatever its time.
  const DateFormatter day_format("mmm/dd/yyyy");
  while (!people.Eof()) {
    db::Recordset lines = people["rptProceduresByCodeDetails"].Chapter();
    if (!lines.Eof()) {
      vsp.FontBold(true);
      vsp.AddTable("<7.5in", "",
                   std::string(byOverseer ? "Overseer: " : "Provider: ") +
                       EscapeCell(vb::Trim(cf.returnStr(people["Title"].Value()) + " " +
                                           cf.returnStr(people["FirstName"].Value()) + " " +
                                           cf.returnStr(people["LastName"].Value()))) +
                       ";");
      // The person heads the lines below, whose count and total close them:
      // the heading goes with the first lines, the count with the last.
      vsp.KeepWithNext();
      vsp.FontBold(false);
      Currency total, lab;
      long count = 0;
      std::string body;
      // The day cell of the row before: the rows of one day share it.
      std::string day_cell, next_day_cell, scratch;
      const db::Field day_field = lines[byDate == 1 ? "Date" : "EntryDate"],
                      code_field = lines["Code"], cost_field = lines["Cost"],
                      first_name = lines["PatientFirstName"], last_name = lines["PatientLastName"],
                      invoice = lines["Invoice#"], tooth = lines["Tooth#"],
                      surface = lines["Surface"];
      const std::optional<db::Field> provider =
          byOverseer ? std::optional<db::Field>(lines["ProviderName"]) : std::nullopt;
      auto text = [&](const db::Field& f) {
        frame::AppendEscapedCell(body, f.Text(scratch));
        body += '|';
      };
      while (!lines.Eof()) {
        const std::string code = cf.returnStr(code_field.Value(), true);
        const Currency cost = cf.ReturnCur(cost_field.Value());
        // A new day starts after an empty row, so each day reads as a block.
        next_day_cell.clear();
        day_format.Append(day_field.Value(), next_day_cell);
        if (next_day_cell != day_cell) {
          if (!body.empty()) body += blank_row;
          day_cell.swap(next_day_cell);
        }
        frame::AppendEscapedCell(body, day_cell);
        body += '|';
        frame::AppendEscapedCell(body, code);
        body += '|';
        frame::AppendEscapedCell(body, first_name.Text(scratch));
        body += ' ';
        text(last_name);
        if (provider) text(*provider);
        text(invoice);
        text(tooth);
        text(surface);
        body += money_texts(cost);
        body += ';';
        total += cost;
        if (closing::IsLabCode(code)) lab += cost;
        if (!closing::IsReversal(code)) ++count;
        lines.MoveNext();
      }
      body += byOverseer ? "Total|||||||;" : "Total||||||;";
      vsp.AddTable(format, header, body, kHeaderColor);
      vsp.KeepWithNext();
      vsp.AddTable(">7.5in", "",
                   "Procedure Count: " + std::to_string(count) + "       Total($): " +
                       Money(total) + ";");
      overall += total;
      overall_lab += lab;
    }
    r.RaiseProgress(people);
    r.Host().DoEvents();
    people.MoveNext();
  }
  people.Close();
  r.PrintProductionTotals(overall, overall_lab, false);
}

}  // namespace

void clsReports::srptProductionByProvider(DateTime dtStart, DateTime dtEnd,
                                          std::string ProviderFilter, std::string Startcode,
                                          std::string Endcode, int16_t byDate) {
  const db::Snapshot snapshot(conn_, db::Snapshot::OnFailure::RunWithout);
  ProductionByPerson(*this, false, dtStart, dtEnd, ProviderFilter, Startcode, Endcode, byDate);
}

void clsReports::srptProductionByOverseer(DateTime dtStart, DateTime dtEnd,
                                          std::string ProviderFilter, std::string Startcode,
                                          std::string Endcode, int16_t byDate) {
  const db::Snapshot snapshot(conn_, db::Snapshot::OnFailure::RunWithout);
  ProductionByPerson(*this, true, dtStart, dtEnd, ProviderFilter, Startcode, Endcode, byDate);
}

void clsReports::srptProductionByCategory(DateTime dtStart, DateTime dtEnd,
                                          std::string ProviderFilter, std::string Startcode,
                                          std::string Endcode, int16_t byDate) {
  const db::Snapshot snapshot(conn_, db::Snapshot::OnFailure::RunWithout);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  const CodeRange range = closing::NormaliseCodeRange(Startcode, Endcode);
  ProviderFilter = NoZeroFilter(ProviderFilter);
  vsp.TableBorder(BorderFromSettings());

  vsp.FontBold(true);
  vsp.FontSize(12);
  vsp.Text("Production by Category - Summary");
  vsp.FontSize(10);
  // Who the figures cover.
  if (ProviderFilter.empty()) {
    vsp.Text("All Providers Selected");
  } else {
    db::Recordset people = Open(
        "Select ID, [Professional Title] AS Title, FirstName, LastName from Employees WHERE " +
            vb::Replace(ProviderFilter, "ProviderID", "ID") + " ORDER BY LastName, FirstName",
        db::adOpenStatic);
    std::string names;
    while (!people.Eof()) {
      if (!names.empty()) names += "; ";
      names += cf.returnStr(people["LastName"].Value()) + ", " +
               cf.returnStr(people["FirstName"].Value());
      people.MoveNext();
    }
    vsp.Text((people.RecordCount() == 1 ? "Provider: " : "Providers: ") + names);
  }
  vsp.FontBold(false);

  struct Category {
    const char* name;
    CodeRange range;
    long count = 0;
    Currency income;
  };
  std::vector<Category> categories = {
      {"Orvenda Internal Codes", {"00000", "00299"}, 0, {}},
      {"In House Codes", {"00300", "00999"}, 0, {}},
      {"Diagnostic Services", {"01000", "09999"}, 0, {}},
      {"Preventive Services", {"10000", "19999"}, 0, {}},
      {"Restorative Services", {"20000", "29999"}, 0, {}},
      {"Endodontic Services", {"30000", "39999"}, 0, {}},
      {"Periodontal Services", {"40000", "49999"}, 0, {}},
      {"Prosthodontics - Removable", {"50000", "59999"}, 0, {}},
      {"Prosthodontics - Fixed", {"60000", "69999"}, 0, {}},
      {"Oral and Maxillofacial Surgery", {"70000", "79999"}, 0, {}},
      {"Orthodontic Services", {"80000", "89999"}, 0, {}},
      {"Adjunctive General Services", {"90000", "99999"}, 0, {}},
  };

  // One pass over the lines: each goes to the category its code (reversal
  // sign set aside) falls in, instead of filtering the rows again for each
  // category.
  db::Recordset rs = Open(
      "SELECT InvoiceDetails.Code, InvoiceDetails.Cost, InvoiceDetails.ProviderID FROM Invoices "
      "INNER JOIN InvoiceDetails ON Invoices.ID = InvoiceDetails.InvoiceID WHERE Status <> 'In "
      "Progress'" +
      AndProviders(ProviderFilter, "InvoiceDetails.ProviderID") +
      ProductionDateTerm(byDate, dtStart, dtEnd) + " AND " +
      closing::CodeRangeCondition("InvoiceDetails.Code", range) + " AND Code <> '-00100'");
  Currency total;
  long total_count = 0;
  while (!rs.Eof()) {
    const std::string code = cf.returnStr(rs["Code"].Value(), true);
    const Currency cost = cf.ReturnCur(rs["Cost"].Value());
    for (Category& c : categories) {
      if (!closing::CodeInRange(code, c.range)) continue;
      c.income += cost;
      total += cost;
      if (!closing::IsReversal(code)) {
        ++c.count;
        ++total_count;
      }
      break;
    }
    RaiseProgress(rs);
    rs.MoveNext();
  }
  rs.Close();

  std::string body;
  for (const Category& c : categories) {
    // A share of nothing is "0%", never a division by zero.
    const std::string share =
        total.IsZero() ? "0%" : Format(Variant(c.income / total * 100), "0.00") + "%";
    body += std::string(c.name) + "|" + c.range.from + "-" + c.range.to + "|" +
            Format(Variant(static_cast<int32_t>(c.count)), "General Number") + "|" +
            Money(c.income) + "|" + share + ";";
  }
  body += "Total||" + Format(Variant(static_cast<int32_t>(total_count)), "General Number") + "|" +
          Money(total) + "|100;";
  vsp.AddTable("<2.2in|^1in|^0.6in|>1.3in|>1in", "Category Name|Codes|Total #|Income|% of Total",
               body, kHeaderColor);
}

void clsReports::srptProductionSummaryByCode(DateTime dtStart, DateTime dtEnd,
                                             std::string ProviderFilter, std::string Startcode,
                                             std::string Endcode, int16_t byDate) {
  (void)dtStart;  // the four periods are all counted back from the end date
  const db::Snapshot snapshot(conn_, db::Snapshot::OnFailure::RunWithout);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  const CodeRange range = closing::NormaliseCodeRange(Startcode, Endcode);
  vsp.TableBorder(BorderFromSettings());

  vsp.FontBold(true);
  vsp.FontSize(12);
  vsp.Text("Production Summary - By Code");
  vsp.FontSize(10);
  vsp.FontBold(false);

  // The four periods, from the end date: this year's month and year to
  // date, and the same two a year earlier. A 29 February end date has no
  // twin last year; the 28th stands in for it.
  const int year = dtEnd.Year();
  const int month = dtEnd.Month();
  const DateTime end = dtEnd.DatePart();
  const int last_day = (month == 2 && dtEnd.Day() == 29) ? 28 : dtEnd.Day();
  const DateTime last_end = DateTime::FromParts(year - 1, month, last_day);
  struct Period {
    DateTime from, to;
    std::map<std::string, std::pair<long, Currency>> codes;  // positive code -> count, sum
    Currency total;
    long count = 0;
  };
  Period periods[4] = {
      {DateTime::FromParts(year, month, 1), end, {}, {}, 0},
      {DateTime::FromParts(year, 1, 1), end, {}, {}, 0},
      {DateTime::FromParts(year - 1, month, 1), last_end, {}, {}, 0},
      {DateTime::FromParts(year - 1, 1, 1), last_end, {}, {}, 0},
  };
  // Only the two dates have a meaning here: a period needs a date column.
  const std::string column = byDate == 1 ? "InvoiceDetails.[Date]" : "InvoiceDetails.EntryDate";
  const std::string where_common =
      " WHERE Code <> '-00100'" + AndProviders(ProviderFilter, "InvoiceDetails.ProviderID") +
      " AND Status <> 'In Progress' AND " + closing::CodeRangeCondition("Code", range);

  // Per period one grouped read; a code and its reversal meet under the
  // positive code: the fees add, the reversals take their count off
  // (a reversed procedure was not done).
  int step = 0;
  for (Period& p : periods) {
    db::Recordset rs = Open(
        "select Code, sum(InvoiceDetails.Cost) as Cost, count(Code) as Num FROM Invoices INNER "
        "JOIN InvoiceDetails ON Invoices.ID = InvoiceDetails.InvoiceID" +
        where_common + " AND (" + column + " >= '" + p.from.ToIsoDate() + "' AND " + column +
        " <= '" + p.to.ToIsoDate() + "') group by code order by code");
    while (!rs.Eof()) {
      const std::string code = cf.returnStr(rs["Code"].Value(), true);
      const long num = static_cast<long>(cf.ReturnVal(rs["Num"].Value()));
      const Currency cost = cf.ReturnCur(rs["Cost"].Value());
      auto& cell = p.codes[std::string(closing::PositiveCode(code))];
      cell.first += closing::IsReversal(code) ? -num : num;
      cell.second += cost;
      p.count += closing::IsReversal(code) ? -num : num;
      p.total += cost;
      rs.MoveNext();
    }
    rs.Close();
    RaiseProgress(static_cast<uint8_t>(++step * 20));
  }

  // The codes: every positive fee code of the range, and any code billed
  // without a row of its own in the fee guide (so no fee is lost).
  std::map<std::string, bool> codes;
  db::Recordset fee_codes = Open(
      "Select ID from feeCodes WHERE NOT ID LIKE '-%' AND ID >= '" + range.from + "' AND ID <= '" +
      range.to + "' order by ID");
  while (!fee_codes.Eof()) {
    codes[cf.returnStr(fee_codes["ID"].Value(), true)] = true;
    fee_codes.MoveNext();
  }
  fee_codes.Close();
  for (const Period& p : periods) {
    for (const auto& [code, cell] : p.codes) codes[code] = true;
  }

  auto cells = [&](const Period& p, const std::string& code) {
    auto it = p.codes.find(code);
    const long n = it == p.codes.end() ? 0 : it->second.first;
    const Currency amount = it == p.codes.end() ? Currency() : it->second.second;
    // The share is of the period's total; with nothing in the period, 0.
    const std::string share =
        p.total.IsZero() ? "0" : Format(Variant(amount / p.total * 100), "0.00");
    return "|" + std::to_string(n) + "|" + TotalFigure(amount) + "|" + share;
  };
  std::string body;
  for (const auto& [code, unused] : codes) {
    bool used = false;
    for (const Period& p : periods) used = used || p.codes.count(code) > 0;
    // A code idle in all four periods takes no row.
    if (!used) continue;
    body += EscapeCell(code);
    for (const Period& p : periods) body += cells(p, code);
    body += ";";
  }
  RaiseProgress(static_cast<uint8_t>(100));

  const std::string month_name = Format(Variant(dtEnd), "mmmm");
  // Thirteen narrow columns: the smaller type keeps "Procedure" and the
  // figures whole in their cells.
  const double font_size = vsp.FontSize();
  vsp.FontSize(8);
  vsp.FontBold(true);
  vsp.AddTable("<0.6in|^3.9in|^3.9in", "",
               "|This Year (" + std::to_string(year) + ")|Last Year (" + std::to_string(year - 1) +
                   ");",
               std::nullopt, kHeaderColor);
  vsp.AddTable("<0.6in|^1.9in|^2.0in|^1.9in|^2.0in", "",
               "|Month To Date (" + month_name + ")|Year To Date|Month To Date|Year To Date;",
               std::nullopt, kHeaderColor);
  vsp.FontBold(false);
  vsp.AddTable(
      "<0.6in|^.3in|^1in|^.6in|^.4in|^1in|^.6in|^.3in|^1in|^.6in|^.4in|^1in|^.6in",
      "Procedure|cnt|Amount$|Percent%|cnt|Amount$|Percent%|cnt|Amount$|Percent%|Cnt|Amount$|"
      "Percent%",
      body, kHeaderColor);
  std::string totals = "Total";
  for (const Period& p : periods) {
    totals += "|" + std::to_string(p.count) + "|" + TotalFigure(p.total) + "|100";
  }
  vsp.AddTable("<0.6in|^.3in|^1in|^.6in|^.4in|^1in|^.6in|^.3in|^1in|^.6in|^.4in|^1in|^.6in", "",
               totals + ";");
  vsp.FontSize(font_size);
}

void clsReports::srptProductionByCode(DateTime dtStart, DateTime dtEnd, std::string ProviderFilter,
                                      std::string Startcode, std::string Endcode,
                                      int16_t byDate) {
  const db::Snapshot snapshot(conn_, db::Snapshot::OnFailure::RunWithout);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  const CodeRange range = closing::NormaliseCodeRange(Startcode, Endcode);
  vsp.TableBorder(BorderFromSettings());

  // Two reads for every code at once, instead of one per fee code: the
  // lines dated in the period as they stand, and, because a cancelled
  // invoice is undone in the period of its cancellation, its lines once
  // more with their fees negated. An invoice entered and cancelled in one
  // period nets to nothing, in fees and in count. The provider filter
  // tests the provider of the line.
  const std::string select =
      "SELECT InvoiceDetails.Cost, InvoiceDetails.[Date], InvoiceDetails.EntryDate, "
      "Invoices.CancellationDate, InvoiceDetails.[Tooth#], InvoiceDetails.Surface, "
      "Invoices.[Invoice#], Employees.FirstName, Employees.LastName, InvoiceDetails.Code, "
      "Patient.FirstName AS PatientFirstName, Patient.LastName AS PatientLastName FROM "
      "InvoiceDetails INNER JOIN Invoices ON InvoiceDetails.InvoiceID = Invoices.ID INNER JOIN "
      "Patient ON Invoices.PatientID = Patient.ID LEFT OUTER JOIN Employees ON Employees.ID = "
      "InvoiceDetails.ProviderID WHERE  (" +
      closing::CodeRangeCondition("InvoiceDetails.Code", range) +
      ") AND STATUS <> 'In Progress' AND Code <> '-00100'" +
      AndProviders(ProviderFilter, "InvoiceDetails.ProviderID");
  struct Line {
    // The sort keys: the date with its time as a serial (0 for none) and
    // the provider, as the place of the provider's name in lower case
    // among the names of the lines' providers (see `provider_keys`).
    double day;
    size_t provider;
    std::string cells;
    Currency cost;
    int counts;  // +1 a procedure, -1 a cancelled one, 0 a reversal
  };
  // The lines of a period name a handful of providers: each name is put in
  // lower case once, and a line holds the number of its provider's name,
  // made the name's place in their order before the lines are sorted.
  std::map<std::string, size_t, std::less<>> provider_of;  // a name as stored -> its number
  std::vector<std::string> provider_keys;                  // by number, in lower case
  std::map<std::string, std::vector<Line>> by_code;
  // The lines of a month fall on a few dozen days: each day's text is
  // formatted once (the format shows the day alone, not the time).
  FormattedTexts<double> day_texts(
      [](const double& day) { return EscapeCell(Format(Variant(DateTime(day)), "mmm/dd/yyyy")); });
  auto append_day = [&](std::string& out, const Variant& date) {
    if (date.IsDate()) {
      out += day_texts(date.AsDate().DatePart().serial());
    } else {
      out += EscapeCell(Format(date, "mmm/dd/yyyy"));
    }
  };
  MoneyTexts money_texts(Money);
  auto read = [&](const std::string& sql, bool cancelling) {
    db::Recordset rs = Open(sql);
    const db::Field code_field = rs["Code"], cost_field = rs["Cost"],
                    date_field = cancelling ? rs["CancellationDate"] : rs[byDate == 1 ? "Date" : "EntryDate"],
                    last_name = rs["LastName"], first_name = rs["FirstName"],
                    patient_first = rs["PatientFirstName"], patient_last = rs["PatientLastName"],
                    invoice = rs["Invoice#"], tooth = rs["Tooth#"], surface = rs["Surface"];
    // Each line's cells are written into its text in place, every value
    // read where the recordset holds it.
    std::string scratch;
    auto text = [&](std::string& out, const db::Field& f) { frame::AppendEscapedCell(out, f.Text(scratch)); };
    while (!rs.Eof()) {
      const std::string code = cf.returnStr(code_field.Value(), true);
      Line l;
      Currency cost = cf.ReturnCur(cost_field.Value());
      if (cancelling) cost = -cost;
      l.cost = cost;
      const Variant date = date_field.Value();
      l.day = date.IsNull() ? 0 : CDate(date).serial();
      l.counts = closing::IsReversal(code) ? 0 : (cancelling ? -1 : 1);
      text(l.cells, first_name);
      l.cells += ' ';
      text(l.cells, last_name);
      const std::string_view provider_name = last_name.Text(scratch);
      auto provider = provider_of.find(provider_name);
      if (provider == provider_of.end()) {
        provider = provider_of.emplace(std::string(provider_name), provider_keys.size()).first;
        provider_keys.push_back(vb::LCase(provider_name));
      }
      l.provider = provider->second;
      l.cells += '|';
      text(l.cells, patient_first);
      l.cells += ' ';
      text(l.cells, patient_last);
      l.cells += '|';
      text(l.cells, invoice);
      l.cells += '|';
      append_day(l.cells, date);
      l.cells += '|';
      text(l.cells, tooth);
      l.cells += '|';
      text(l.cells, surface);
      l.cells += '|';
      l.cells += money_texts(cost);
      by_code[std::string(closing::PositiveCode(code))].push_back(std::move(l));
      rs.MoveNext();
    }
    rs.Close();
  };
  read(select + ProductionDateTerm(byDate, dtStart, dtEnd), false);
  if (byDate == 0 || byDate == 1) {
    read(select + " AND Invoices.Cancelled = 1 AND Invoices.CancellationDate >= '" +
             dtStart.ToIsoDate() + "' AND Invoices.CancellationDate <= '" + dtEnd.ToIsoDate() + "'",
         true);
  }

  // Descriptions from the fee guide's codes; a billed code missing there
  // still prints, with its code alone.
  std::map<std::string, std::string> descriptions;
  db::Recordset fee_codes =
      Open("Select ID,Description from feeCodes where (ID >= '" + range.from + "' and ID <= '" +
           range.to + "') AND NOT ID LIKE '-%' order by ID");
  while (!fee_codes.Eof()) {
    descriptions[cf.returnStr(fee_codes["ID"].Value(), true)] =
        cf.returnStr(fee_codes["Description"].Value());
    fee_codes.MoveNext();
  }
  fee_codes.Close();

  // Each provider's number becomes its name's place in lower case; names
  // alike but for case share a place, so their lines keep their order.
  std::vector<size_t> order(provider_keys.size()), place(provider_keys.size());
  std::iota(order.begin(), order.end(), size_t{0});
  std::sort(order.begin(), order.end(),
            [&](size_t a, size_t b) { return provider_keys[a] < provider_keys[b]; });
  for (size_t i = 0; i < order.size(); ++i) {
    const bool alike = i > 0 && provider_keys[order[i]] == provider_keys[order[i - 1]];
    place[order[i]] = i == 0 ? 0 : place[order[i - 1]] + (alike ? 0 : 1);
  }

  const std::string date_header = byDate == 1 ? "Treatment Date" : "Entry Date";
  Currency grand, grand_lab;
  size_t done = 0;
  for (auto& [code, lines] : by_code) {
    // In each code, by date and then by the provider's name.
    for (Line& l : lines) l.provider = place[l.provider];
    std::stable_sort(lines.begin(), lines.end(), [](const Line& a, const Line& b) {
      if (a.day != b.day) return a.day < b.day;
      return a.provider < b.provider;
    });
    std::string body;
    Currency total;
    long count = 0;
    for (const Line& l : lines) {
      body += l.cells;
      body += ';';
      total += l.cost;
      count += l.counts;
    }
    vsp.FontBold(true);
    auto d = descriptions.find(code);
    vsp.AddTable("<3.5in", "",
                 EscapeCell(code + ": " + (d == descriptions.end() ? "" : d->second)) + ";");
    // The code heads its lines and the count closes them, on their pages.
    vsp.KeepWithNext();
    vsp.FontBold(false);
    vsp.AddTable("<1.4in|<1.4in|<.70in|<1in|^.5in|^.6in|>.9in",
                 "Provider|Patient|Invoice #|" + date_header + "|Tooth#|Surface|Fee", body,
                 kHeaderColor);
    vsp.KeepWithNext();
    vsp.AddTable(">6.495in", "",
                 "Procedure Count: " + std::to_string(count) + "       Total($): " + Money(total) +
                     ";");
    grand += total;
    if (closing::IsLabCode(code)) grand_lab += total;
    RaiseProgress(ProgressPercent(static_cast<long>(++done), static_cast<long>(by_code.size())));
    Host().DoEvents();
  }
  PrintProductionTotals(grand, grand_lab, true);
}

void clsReports::rptProductionReports(bool ProductionByCode, bool ProductionByProvider,
                                      bool ProductionByOverseer, bool ProductionSummary,
                                      bool ProductionSummaryCode, bool ProductionByCategory,
                                      DateTime dtStart, DateTime dtEnd, int16_t byDate,
                                      std::string UserName, std::string ProviderNames,
                                      std::string Startcode, std::string Endcode) {
  const db::Snapshot snapshot(conn_, db::Snapshot::OnFailure::RunWithout);
  // Bad input is refused before anything is drawn, in words the front desk
  // can act on.
  CodeRange range;
  try {
    range = closing::NormaliseCodeRange(Startcode, Endcode);
  } catch (const std::invalid_argument& e) {
    Host().MsgBox(e.what(), host::vbOKOnly, "");
    return;
  }
  if ((byDate == 0 || byDate == 1) && dtEnd.DatePart() < dtStart.DatePart()) {
    Host().MsgBox("The period ends (" + Format(Variant(dtEnd), "mmm/dd/yyyy") +
                      ") before it starts (" + Format(Variant(dtStart), "mmm/dd/yyyy") + ").",
                  host::vbOKOnly, "");
    return;
  }
  Trap("An Error has occurred in Sub rptProductionReports in Class clsReports", [&] {
    frame::PrintSurface& vsp = VSP();
    ProviderNames = NoZeroFilter(ProviderNames);
    // The code summary is 8.4 inches wide and the listings 7.5: the
    // document is printed across the page.
    vsp.Orientation(1);
    vsp.DocName("Production Report");
    vsp.StartDoc();

    const std::string period = "From: " + Format(Variant(dtStart), "mmm/dd/yyyy") + " to " +
                               Format(Variant(dtEnd), "mmm/dd/yyyy");
    const std::string providers =
        ProviderNames.empty() ? "All Providers" : ReturnProviderNames(ProviderNames);
    auto section = [&](const std::string& title) {
      // A section starts a page unless nothing has been written yet.
      if (vsp.CurrentY() > vsp.MarginTop() || vsp.PageCount() > 1) vsp.NewPage();
      vsp.DocName(title);
      PrintReportHeading(title, UserName, period);
      vsp.FontBold(true);
      vsp.TextAlign(0);
      vsp.Text("For: " + providers);
      vsp.Text("Code Range: " + range.from + " - " + range.to + "   Date: " + DateWords(byDate));
      vsp.FontBold(false);
      vsp.TextAlign(1);
      vsp.FontSize(10);
    };
    // The sections come in this order whatever the order of the flags.
    if (ProductionByProvider) {
      section("Production by Provider");
      srptProductionByProvider(dtStart, dtEnd, ProviderNames, range.from, range.to, byDate);
    }
    if (ProductionByOverseer) {
      section("Production by Overseer");
      srptProductionByOverseer(dtStart, dtEnd, ProviderNames, range.from, range.to, byDate);
    }
    if (ProductionSummary) {
      section("Production Summary ");
      // The summary's by-date view (3) reads the treatment date.
      srptProductionSummary(dtStart, dtEnd, vb::Replace(ProviderNames, "ProviderID", "ID"),
                            byDate == 1 ? 3 : 0);
    }
    if (ProductionByCategory) {
      section("Production by Category ");
      srptProductionByCategory(dtStart, dtEnd, ProviderNames, range.from, range.to, byDate);
    }
    if (ProductionSummaryCode) {
      section("Production Summary by Code ");
      srptProductionSummaryByCode(dtStart, dtEnd, ProviderNames, range.from, range.to, byDate);
    }
    if (ProductionByCode) {
      section("Production by Code Report");
      srptProductionByCode(dtStart, dtEnd, ProviderNames, range.from, range.to, byDate);
    }
    vsp.DocName("Production Report");
    PrintPageFooters(kPrintedBy);
    vsp.EndDoc();
    Form().Show();
  });
}

}  // namespace orv

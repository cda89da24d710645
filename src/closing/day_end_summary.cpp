// The practice analysis: the practice's vital signs for a period beside the
// same figures one year before, in eleven sections printed in this order:
// production, production by provider, how quickly invoices are paid,
// payment types, adjustments, post-dated payments, appointment booking,
// who booked, appointment planning, referrals and office growth.
//
// Last year is always the period's two dates moved back one calendar year
// (Feb 29 becomes Feb 28), and every "Last Year" figure repeats this
// year's statement with those dates.
#include <algorithm>
#include <string>

#include "appointments/availability.h"
#include "closing/closing_common.h"
#include "closing/code_ranges.h"
#include "common/common_functions.h"
#include "common/currency.h"
#include "common/format.h"
#include "frame/preview_form.h"
#include "frame/reports.h"
#include "frame/surface/surface.h"
#include "frame/surface/table_model.h"

namespace orv {
namespace {

// The ten categories of fee codes, in print order. "Preventitive" is spelled
// as the practice's paper has always printed it on this report.
struct Category {
  const char* row;
  const char* from;
  const char* to;
};
constexpr Category kCategories[] = {
    {"Diagnostic Services|", "01000", "09999"},
    {"Preventitive Services|", "10000", "19999"},
    {"Restorative Services|", "20000", "29999"},
    {"Endodontic Services|", "30000", "39999"},
    {"Periodontal Services|", "40000", "49999"},
    {"Prosthodontics - Removable|", "50000", "59999"},
    {"Prosthodontics - Fixed|", "60000", "69999"},
    {"Oral and Maxillofacial Surgery|", "70000", "79999"},
    {"Orthodontic Services|", "80000", "89999"},
    {"Adjunctive General Services|", "90000", "99999"},
};

// The producing staff: dentists, hygienists and the other treating types,
// active or never marked. `ChairID` joins the name with a blank.
constexpr const char* kProducingStaffWhere =
    "FROM Employees WHERE FirstName <> N'(None)' AND (TypeID = 3 OR TypeID = 5 OR TypeID = 10 OR "
    "TypeID = 0 OR TypeID = 8 OR TypeID >= 12) AND (Active IS NULL OR Active <> 0) ORDER BY "
    "DisplayName";

// A count and a sum of one year.
struct Tally {
  long count = 0;
  Currency amount;
};

// What every section of one run needs: the component, its surface and value
// routines, and both periods as the statements write them.
struct Run {
  clsReports& r;
  frame::PrintSurface& vsp;
  clsCommonFunctions& cf;
  DateTime start, end;        // this year
  DateTime ly_start, ly_end;  // last year

  static std::string Day(const DateTime& d) { return Format(Variant(d), "yyyy-mm-dd"); }

  // The production date term: production here goes by invoice date.
  static std::string InvoiceTerm(const DateTime& a, const DateTime& b) {
    return "Invoices.[Date] >= '" + Day(a) + "' AND Invoices.[Date] <= '" + Day(b) + "'";
  }

  // The section's heading, bold as the report's heading, kept with what
  // it introduces.
  void Heading(const std::string& title) {
    vsp.FontBold(true);
    vsp.FontSize(12);
    vsp.Text(title);
    vsp.FontSize(8);
    vsp.FontBold(false);
    vsp.KeepWithNext();
  }
  void Gap() { vsp.Text(" "); }

  // A cost as the report adds it: turned into money text and back, which
  // rounds it to the cent (half away from zero) before it joins a sum.
  Currency Cents(const Variant& cost) {
    return cf.ReturnCur(Variant(Format(Variant(cf.ReturnCur(cost)), "Currency")));
  }

  std::string Money(Currency c) { return Format(Variant(c), "Currency"); }
  static std::string Count(long n) {
    return Format(Variant(static_cast<int32_t>(n)), "General Number");
  }
  std::string Share(Currency part, Currency whole) {
    return r.ReturnPercent(Variant(part), Variant(whole));
  }
  std::string Share(long part, long whole) {
    return r.ReturnPercent(Variant(static_cast<int32_t>(part)),
                           Variant(static_cast<int32_t>(whole)));
  }

  Variant Scalar(const std::string& sql) {
    db::Recordset rs = r.Open(sql);
    return rs.Eof() ? Variant() : rs[0L].Value();
  }

  // Production (sum of cost) and procedures of the lines that `where`
  // selects. A reversal line ("-" before its code) nets its fee out of the
  // production but is no procedure of its own, so the count leaves it out,
  // as the category rows do.
  Tally Production(const std::string& where) {
    db::Recordset rs = r.Open(
        "SELECT SUM([Cost]) as Cost, SUM(CASE WHEN Code LIKE '-%' THEN 0 ELSE 1 END) as theNumber "
        "FROM Invoices INNER JOIN InvoiceDetails ON Invoices.ID = InvoiceDetails.InvoiceID where " +
        where);
    return {static_cast<long>(cf.ReturnVal(rs["theNumber"].Value())),
            cf.ReturnCur(rs["Cost"].Value())};
  }

  // One category's lines, walked: each cost rounded to the cent joins the
  // sum, each procedure counts one. The range takes a code's reversal with
  // it ("-23111" belongs where 23111 does), so that a reversed crown leaves
  // Restorative as it leaves the total.
  Tally CategoryTally(const Category& c, const std::string& term) {
    db::Recordset rs = r.Open(
        "SELECT Invoices.ProviderID, InvoiceDetails.* FROM Invoices INNER JOIN InvoiceDetails ON "
        "Invoices.ID = InvoiceDetails.InvoiceID where " +
            closing::CodeRangeCondition("Code", {c.from, c.to}) + " and (" + term + ")",
        db::adOpenForwardOnly);
    Tally t;
    for (; !rs.Eof(); rs.MoveNext()) {
      t.amount += Cents(rs["Cost"].Value());
      if (!closing::IsReversal(cf.returnStr(rs["Code"].Value()))) ++t.count;
    }
    return t;
  }

  // The ten category rows for the lines `extra` selects ("" for the whole
  // practice), each year's shares of that year's `total`.
  std::string CategoryRows(const std::string& extra, Currency total, Currency ly_total) {
    std::string body;
    for (const Category& c : kCategories) {
      const Tally now = CategoryTally(c, InvoiceTerm(start, end) + extra);
      const Tally last = CategoryTally(c, InvoiceTerm(ly_start, ly_end) + extra);
      body += std::string(c.row) + Count(now.count) + "|" + Money(now.amount) + "|" +
              Share(now.amount, total) + "|" + Count(last.count) + "|" + Money(last.amount) + "|" +
              Share(last.amount, ly_total) + ";";
    }
    return body;
  }

  void Line(const std::string& text) { vsp.Text(text); }

  // ---- 1. Production Diagnostics ----
  void ProductionDiagnostics() {
    Heading("Production Diagnostics");
    const Tally now = Production(InvoiceTerm(start, end));
    const Tally last = Production(InvoiceTerm(ly_start, ly_end));
    vsp.AddTable("<2in|^.7in|>.9in|>.9in|^1in|>1in|>1in",
                 "Category|Total #|Income|% of Total|Last Year #|Last Year $|Last Year %",
                 CategoryRows("", now.amount, last.amount), kHeaderColor);
    Line("Total Procedures Performed: " + Count(now.count));
    Line("Total Production: " + Money(now.amount));
    // Last year's lines only when last year produced something: an idle
    // year would print a row of zeros and a comparison with nothing.
    if (last.amount > Currency()) {
      Line("Last Year Total Procedure Performed: " + Count(last.count));
      Line("Last Year Total Production: " + Money(last.amount));
    }
    // The differences are this year as a share of last year: a rise of a
    // fifth prints 120%, not 20%. The front desk has always read them so.
    // One procedure last year is too few to compare with.
    if (last.count > 1) {
      Line("Procedures Difference This Year Compared to Last Year: " +
           Format(Variant(static_cast<double>(now.count) / static_cast<double>(last.count)),
                  "Percent"));
    }
    if (last.amount > Currency()) {
      Line("Production Difference This Year Compared to Last Year: " +
           Format(Variant(now.amount / last.amount), "Percent"));
    }
    Gap();
  }

  // ---- 2. Provider Diagnostics ----
  void ProviderDiagnostics() {
    Heading("Provider Diagnostics");
    // The practice's totals, for each provider's share of the office.
    const Tally office = Production(InvoiceTerm(start, end));
    const Tally office_ly = Production(InvoiceTerm(ly_start, ly_end));
    db::Recordset providers = r.Open(
        std::string(
            "SELECT ID, FullName, LastName, UserName, CDA#, TypeID, FirstName, 'DisplayName' = "
            "CASE WHEN ChairID IS NULL THEN LastName ELSE LastName + ' ' + ChairID END ") +
        kProducingStaffWhere);
    if (providers.Eof()) Line("None on File");
    for (; !providers.Eof(); providers.MoveNext()) {
      const std::string id = cf.returnStr(providers["ID"].Value());
      const std::string by = " AND Invoices.ProviderID = " + id;
      const Tally now =
          Production("Invoices.ProviderID = " + id + " AND (" + InvoiceTerm(start, end) + ")");
      const Tally last = Production("Invoices.ProviderID = " + id + " AND (" +
                                    InvoiceTerm(ly_start, ly_end) + ")");
      // The name never stands alone at a page's foot: with less than four
      // lines left it starts the next page, with its table.
      vsp.FontBold(true);
      if (vsp.CurrentY() > vsp.PageHeight() - vsp.MarginBottom() - 4 * vsp.TextHeight("X"))
        vsp.NewPage();
      vsp.AddTable("<3in", "", frame::EscapeCell(cf.returnStr(providers["DisplayName"].Value())),
                   0);
      vsp.KeepWithNext();
      vsp.FontBold(false);
      vsp.AddTable("<2in|^.6in|>.9in|>.8in|^.9in|>.9in|>.9in",
                   "Category|Total #|Income|% of Total|Last Year #|Last Year $|Last Year %",
                   CategoryRows(by, now.amount, last.amount), kHeaderColor);
      vsp.KeepWithNext();
      // The provider's closing row: every line of the provider (codes
      // outside the ten categories too) and the provider's share of the
      // practice's production, each year.
      vsp.AddTable("<2.25in|^.6in|>.9in|>.8in|^.9in|>.9in|>.9in", "",
                   "Provider Total|" + Count(now.count) + "|" + Money(now.amount) + "|" +
                       Share(now.amount, office.amount) + "|" + Count(last.count) + "|" +
                       Money(last.amount) + "|" + Share(last.amount, office_ly.amount) + ";",
                   0);
      Gap();
      r.RaiseProgress(static_cast<uint8_t>(10 + 20 * providers.AbsolutePosition() /
                                                    std::max(1L, providers.RecordCount())));
    }
    Gap();
  }

  // ---- 3. Cash In Diagnostics ----
  // How soon the money of an invoice came in: payments by the age of the
  // invoices they were applied to in the period, D the day of the
  // allocation and I the invoice's date.
  struct Bucket {
    const char* row;
    const char* test;
  };
  static constexpr Bucket kBuckets[] = {
      {"Immediate Payment|", "InvoicePaymentDetails.[Date] = Invoices.[Date]"},
      {"1-30 Day Payment|",
       "InvoicePaymentDetails.[Date] - 30 <= Invoices.[Date] AND InvoicePaymentDetails.[Date] > Invoices.[Date]"},
      {"30-60 Day Payment|",
       "InvoicePaymentDetails.[Date] - 60 <= Invoices.[Date] AND InvoicePaymentDetails.[Date] - 30 > "
       "Invoices.[Date]"},
      {"61-90 Day Payment|",
       "InvoicePaymentDetails.[Date] - 90 <= Invoices.[Date] AND InvoicePaymentDetails.[Date] - 60 > "
       "Invoices.[Date]"},
      {">90 Day Payment|", "InvoicePaymentDetails.[Date] - 90 > Invoices.[Date]"},
  };

  Tally Payments(const DateTime& a, const DateTime& b) {
    const std::string when = "([Date] >= '" + Day(a) + "' AND [Date] <= '" + Day(b) + "')";
    const std::string where =
        " FROM InvoicePayments WHERE EXISTS (SELECT * FROM InvoicePaymentDetails WHERE " + when +
        " AND InvoicePaymentDetails.InvoicePaymentID = InvoicePayments.ID) OR " + when;
    return {static_cast<long>(cf.ReturnVal(Scalar("SELECT COUNT(*)" + where))),
            cf.ReturnCur(Scalar("SELECT SUM([Value])" + where))};
  }

  // A payment applied to invoices of several ages counts in each of their
  // rows with its whole value: the rows ask whether such an allocation
  // exists, so they need not add up to the total.
  Tally BucketTally(const Bucket& b, const DateTime& a, const DateTime& z) {
    db::Recordset rs = r.Open(
        std::string(
            "SELECT SUM([Value]) as Amount, COUNT(*) as theNumber FROM InvoicePayments WHERE "
            "EXISTS (SELECT * FROM InvoicePaymentDetails INNER JOIN Invoices ON "
            "InvoicePaymentDetails.InvoiceID = Invoices.ID AND ") +
        b.test + " WHERE InvoicePaymentDetails.[Date] >= '" + Day(a) +
        "' AND InvoicePaymentDetails.[Date] <= '" + Day(z) +
        "' AND InvoicePaymentDetails.InvoicePaymentID = InvoicePayments.ID)");
    return {static_cast<long>(cf.ReturnVal(rs["theNumber"].Value())),
            cf.ReturnCur(rs["Amount"].Value())};
  }

  Tally Unpaid(const DateTime& a, const DateTime& b) {
    db::Recordset rs = r.Open(
        "SELECT SUM([InvoiceTotal]) as Amount, COUNT(*) as theNumber FROM Invoices WHERE (NOT EXISTS "
        "(SELECT * FROM InvoicePaymentDetails WHERE InvoicePaymentDetails.InvoiceID = Invoices.ID)) AND "
        "[Date] >= '" +
        Day(a) + "' AND [Date] <= '" + Day(b) + "'");
    return {static_cast<long>(cf.ReturnVal(rs["theNumber"].Value())),
            cf.ReturnCur(rs["Amount"].Value())};
  }

  void CashInDiagnostics() {
    Heading("Cash In Diagnostics");
    const Tally all = Payments(start, end);
    const Tally all_ly = Payments(ly_start, ly_end);
    // A row's percent is its share of the money of the period's payments;
    // the unpaid invoices' row is the share of the period's invoicing left
    // without any payment.
    std::string body;
    for (const Bucket& b : kBuckets) {
      const Tally now = BucketTally(b, start, end);
      const Tally last = BucketTally(b, ly_start, ly_end);
      body += std::string(b.row) + Count(now.count) + "|" + Money(now.amount) + "|" +
              Share(now.amount, all.amount) + "|" + Count(last.count) + "|" + Money(last.amount) +
              "|" + Share(last.amount, all_ly.amount) + ";";
    }
    const Tally unpaid = Unpaid(start, end);
    const Tally unpaid_ly = Unpaid(ly_start, ly_end);
    const Tally billed = Production(InvoiceTerm(start, end));
    const Tally billed_ly = Production(InvoiceTerm(ly_start, ly_end));
    body += "No Payments Made|" + Count(unpaid.count) + "|" + Money(unpaid.amount) + "|" +
            Share(unpaid.amount, billed.amount) + "|" + Count(unpaid_ly.count) + "|" +
            Money(unpaid_ly.amount) + "|" + Share(unpaid_ly.amount, billed_ly.amount) + ";";
    body += "Total Payments|" + Count(all.count) + "|" + Money(all.amount) + "|" +
            Share(all.amount, all.amount) + "|" + Count(all_ly.count) + "|" + Money(all_ly.amount) +
            "|" + Share(all_ly.amount, all_ly.amount) + ";";
    vsp.AddTable("<2.1in|^.8in|>1in|>.9in|^.8in|>1in|>.9in",
                 "Type|Number|Amount|Percent|Last Year #|Last Year $|Last Year %", body,
                 kHeaderColor);
    Line(
        "Note: These numbers will only show accurately for 2002 and later. Any previous year's data "
        "does not have the data to be able to generate these numbers correctly.");
    Gap();
  }

  // ---- 4. to 6. Payment types, adjustments, post-dated payments ----
  // One table per kind: per payment type with payments in the period, the
  // money, the number of payments and the money per payment. Cancelled
  // payments are in: these count what was entered, as the cash-in gross
  // does.
  void TypeTable(const std::string& title, const std::string& types, const std::string& payments) {
    Heading(title);
    db::Recordset rs = r.Open(
        "SHAPE {SELECT Name, ID FROM PaymentTypes WHERE " + types +
        " ORDER BY Name}  AS rptPaymentTypes APPEND ({SELECT InvoicePayments.ID, InvoicePayments.Value, "
        "InvoicePayments.PaymentTypeID FROM InvoicePayments WHERE " +
        payments +
        " ORDER BY InvoicePayments.ID}  AS rptPaymentTypeDetails RELATE 'ID' TO 'PaymentTypeID') AS "
        "rptPaymentTypeDetails");
    std::string body;
    for (; !rs.Eof(); rs.MoveNext()) {
      db::Recordset rows = rs["rptPaymentTypeDetails"].Chapter();
      if (rows.Eof()) continue;
      Currency sum;
      long n = 0;
      for (; !rows.Eof(); rows.MoveNext(), ++n) sum += cf.ReturnCur(rows["Value"].Value());
      body += frame::EscapeCell(cf.returnStr(rs["Name"].Value())) + "|" + Money(sum) + "|" +
              Count(n) + "|" + Money(Currency::FromDouble(sum.ToDouble() / n)) + ";";
    }
    // A kind with no payment in the period says so rather than print an
    // empty table.
    if (body.empty()) {
      Line("None on File");
    } else {
      vsp.AddTable("<3in|>1.5in|^1in|>2in", "Name|Total $|Total #|/ Item $", body, kHeaderColor);
    }
    Gap();
  }

  void PaymentTypeDiagnostics() {
    TypeTable("Payment Type Diagnostics", "([Adjustment?] = 0) OR ([Adjustment?] IS NULL)",
              ChequeDays());
  }
  void AdjustmentDiagnostics() {
    TypeTable("Adjustment Diagnostics", "([Adjustment?] <> 0)", ChequeDays());
  }
  // A post-dated payment: entered in the period, its cheque dated later.
  void PostDatedPaymentDiagnostics() {
    TypeTable("Post-Dated Payment Diagnostics", "([Adjustment?] = 0) OR ([Adjustment?] IS NULL)",
              "Date >= '" + Day(start) + "' AND Date <= '" + Day(end) + "' AND CheckDate > Date");
  }
  std::string ChequeDays() const {
    return "CheckDate >= '" + Day(start) + "' AND CheckDate <= '" + Day(end) + "'";
  }

  // ---- 7. Appointment Booking Diagnostics ----
  // The booked units run to the period's end: a start alone would count
  // every appointment booked into the future, which is no figure of the
  // period (nor of last year's, whose open end would take this year in).
  std::string AppointmentDays(const DateTime& a, const DateTime& b) const {
    return "Date >= '" + Day(a) + "' AND Date <= '" + Day(b) + "'";
  }
  long BookedUnits(const std::string& where) {
    db::Recordset rs = r.Open(
        "Select SUM([Units]) as theCount, SUM([Estimate]) as Estimate from PatientAppointments where " +
        where);
    Variant units = rs["theCount"].Value();
    return cf.ReturnNumber(units);
  }

  void AppointmentBookingDiagnostics() {
    Heading("Appointment Booking Diagnostics");
    const long office = BookedUnits(AppointmentDays(start, end));
    const long office_ly = BookedUnits(AppointmentDays(ly_start, ly_end));
    appointments::Availability availability(r, r.OfficeID);
    db::Recordset providers = r.Open(
        std::string(
            "SELECT Employees.*, 'DisplayName' = CASE WHEN ChairID IS NULL THEN LastName ELSE "
            "LastName + ' ' + ChairID END ") +
        kProducingStaffWhere);
    long avail_sum = 0, avail_sum_ly = 0;
    std::string body;
    for (; !providers.Eof(); providers.MoveNext()) {
      const std::string id = cf.returnStr(providers["ID"].Value());
      int32_t avail = 0, avail_ly = 0;
      // Last year's days are read by the same statements as this year's.
      availability.AddPeriod(providers, id, start, end, appointments::DayStatements::ThisYear,
                             avail, avail_ly);
      const long booked = BookedUnits("ProviderID = " + id + " AND " + AppointmentDays(start, end));
      const long booked_ly =
          BookedUnits("ProviderID = " + id + " AND " + AppointmentDays(ly_start, ly_end));
      avail_sum += avail;
      avail_sum_ly += avail_ly;
      body += frame::EscapeCell(cf.returnStr(providers["DisplayName"].Value())) + "|" +
              Count(avail) + "|" + Count(booked) + "|" + Share(booked, avail) + "|" +
              Share(booked, office) + "|" + Count(avail_ly) + "|" + Count(booked_ly) + "|" +
              Share(booked_ly, avail_ly) + "|" + Share(booked_ly, office_ly) + ";";
      r.RaiseProgress(static_cast<uint8_t>(50 + 30 * providers.AbsolutePosition() /
                                                    std::max(1L, providers.RecordCount())));
    }
    // The office books for providers who are no longer listed too: its row
    // holds all of its bookings against the listed providers' time.
    body += "Office Totals|" + Count(avail_sum) + "|" + Count(office) + "|" +
            Share(office, avail_sum) + "|N/A|" + Count(avail_sum_ly) + "|" + Count(office_ly) +
            "|" + Share(office_ly, avail_sum_ly) + "|N/A;";
    vsp.AddTable("<1.2in|^.7in|^.8in|>.7in|^.8in|^.8in|>.9in|>.8in|>.8in",
                 "Provider|Avail|Booked|Percent|% of Office|L/Y Avail|L/Y Booked|L/Y Percent|L/Y %",
                 body, kHeaderColor);
    Line(
        "Note: The percentages etc. for overall may not add up due to providers from the past being "
        "inactivated and not showing up on this report.");
    Gap();
  }

  // ---- 8. Team Booking Diagnostics ----
  // Who booked: the appointments of the period by the member of staff who
  // made them, against the office's bookings. The period ends at its last
  // day here too, as the booked units above do.
  struct Booked {
    long count = 0, units = 0;
    Currency estimate;
  };
  Booked Bookings(const std::string& who, const DateTime& a, const DateTime& b) {
    const std::string where = "[Date] >= '" + Day(a) + "' AND [Date] <= '" + Day(b) + "'" + who;
    return {static_cast<long>(
                cf.ReturnVal(Scalar("Select Count(*) from PatientAppointments where " + where))),
            static_cast<long>(cf.ReturnVal(
                Scalar("Select SUM([Units]) from PatientAppointments where " + where))),
            cf.ReturnCur(Scalar("Select SUM([Estimate]) from PatientAppointments where " + where))};
  }
  std::string TeamCells(const Booked& b, const Booked& office) {
    return Count(b.count) + "|" + Share(b.count, office.count) + "|" + Count(b.units) + "|" +
           Money(b.estimate);
  }

  void TeamBookingDiagnostics() {
    Heading("Team Booking Diagnostics");
    // The office's appointments that someone booked: the rows without a
    // booker belong to no member and would make the shares fall short.
    const Booked office = Bookings(" AND EmployeeID is not NULL", start, end);
    const Booked office_ly = Bookings(" AND EmployeeID is not NULL", ly_start, ly_end);
    db::Recordset members = r.Open(
        "SELECT * FROM Employees WHERE (Active is null or Active <> 0) AND ID > 1 ORDER BY LastName");
    std::string body;
    for (; !members.Eof(); members.MoveNext()) {
      const std::string who = " AND EmployeeID = " + cf.returnStr(members["ID"].Value());
      body += frame::EscapeCell(cf.returnStr(members["FirstName"].Value()) + " " +
                                cf.returnStr(members["LastName"].Value())) +
              "|" + TeamCells(Bookings(who, start, end), office) + "|" +
              TeamCells(Bookings(who, ly_start, ly_end), office_ly) + ";";
    }
    body += "Totals|" + TeamCells(office, office) + "|" + TeamCells(office_ly, office_ly) + ";";
    vsp.AddTable(
        "<2.1in|^.5in|>.7in|^.6in|>.9in|^.5in|>.7in|^.6in|>.9in",
        "Team Member|# App.|% of Total|# Units|Est. Income|L/Y # App.|L/Y % of Total|L/Y # Units|L/Y "
        "Est. $",
        body, kHeaderColor);
    Gap();
  }

  // ---- 9. Appointment Planning Diagnostics ----
  // How well appointments were planned against what was billed for them.
  void AppointmentPlanningDiagnostics() {
    Heading("Appointment Planning Diagnostics");
    const std::string days = "PatientAppointments.[Date] >= '" + Day(start) +
                             "' AND PatientAppointments.[Date] <= '" + Day(end) + "'";
    const std::string joined =
        "SELECT COUNT(*) FROM Invoices INNER JOIN PatientAppointments ON Invoices.AppointmentID = "
        "PatientAppointments.ID WHERE " +
        days + " AND ";
    struct Row {
      const char* row;
      std::string sql;
    } const rows[] = {
        {"Number of appointments that were more units than were actually required:|",
         joined + "Invoices.Units < PatientAppointments.Units"},
        {"Number of appointments that were less units than were actually required:|",
         joined + "Invoices.Units > PatientAppointments.Units"},
        {"Number of appointments that were estimated at more income than actually billed:|",
         joined + "Invoices.InvoiceTotal < PatientAppointments.Estimate"},
        {"Number of appointments that were estimated at less income than actually billed:|",
         joined + "Invoices.InvoiceTotal > PatientAppointments.Estimate"},
        {"Number of appointments that were not billed for:|",
         "SELECT COUNT(*) FROM PatientAppointments WHERE " + days +
             " AND (NOT EXISTS (SELECT Units FROM Invoices WHERE Invoices.AppointmentID = PatientAppointments.ID))"},
    };
    std::string body;
    for (const Row& row : rows)
      body += std::string(row.row) + Count(static_cast<long>(cf.ReturnVal(Scalar(row.sql)))) + ";";
    vsp.AddTable("<6in|^1in", "", body, 0);
    Line(
        "These numbers will only be relevant if staff are setting the units used on the Invoice AS WELL "
        "as on the appointment.");
    Gap();
  }

  // ---- 10. Referral Diagnostics ----
  void ReferralDiagnostics() {
    Heading("Referral Diagnostics");
    db::Recordset rs = r.Open(
        "SELECT COUNT(*) AS theCount, ReferredByAddID FROM Patient WHERE (NOT (ReferredByAddID IS NULL) AND "
        "ReferredByAddID <> '') AND SignupDate >= '" +
        Day(start) + "' AND SignupDate <= '" + Day(end) +
        "' GROUP BY ReferredByAddID WITH ROLLUP ORDER BY ReferredByAddID");
    if (rs.Eof()) {
      Line("None on File");
      Gap();
      return;
    }
    // The rollup row (no referral source) sorts first and holds the total
    // that every source's share is taken of.
    const long total = static_cast<long>(cf.ReturnVal(rs["theCount"].Value()));
    std::string body;
    for (rs.MoveNext(); !rs.Eof(); rs.MoveNext()) {
      const long n = static_cast<long>(cf.ReturnVal(rs["theCount"].Value()));
      body += frame::EscapeCell(cf.returnStr(rs["ReferredByAddID"].Value())) + "|" + Count(n) +
              "|" +
              Format(Variant(static_cast<double>(n) / static_cast<double>(total)), "Percent") + ";";
    }
    body += "Office Totals:|" + Count(total) + "|100.00%;";
    vsp.AddTable("<3in|^1in|>1in", "Type|Number|Percent", body, kHeaderColor);
    Gap();
  }

  // ---- 11. Office Growth ----
  // A new patient counts once seen: active, and examined (codes 01101 to
  // 01103) within 360 days of signing up.
  void OfficeGrowth() {
    Heading("Office Growth");
    const long joined = static_cast<long>(cf.ReturnVal(Scalar(
        "Select count(*) FROM Patient where SignUpDate >= '" + Day(start) +
        "' AND SignUpDate <= '" + Day(end) +
        "' AND [Active?] <> 0 AND Exists(SELECT PatientAppointments.ID FROM PatientAppointments INNER JOIN "
        "PatientAppointmentCodes ON PatientAppointments.ID = PatientAppointmentCodes.PatientAppointmentID WHERE "
        "PatientAppointments.PatientID = Patient.ID AND PatientAppointments.[Date] <= Patient.SignUpDate + 360 "
        "AND PatientAppointments.[Date] >= Patient.SignUpDate AND Code >= 1101 and Code <= 1103)")));
    const long left = static_cast<long>(
        cf.ReturnVal(Scalar("Select count(*) FROM Patient where InactivationDate >= '" +
                            Day(start) + "' AND InactivationDate <= '" + Day(end) + "'")));
    Line("New Patients: " + Count(joined));
    Line("Patients Inactivated: " + Count(left));
    Line("Office Growth: " + Count(joined - left));
  }
};

}  // namespace

void clsReports::rptDayEndSummary(DateTime dtStartDate, DateTime dtEndDate, std::string UserName) {
  const db::Snapshot snapshot(conn_);
  Trap("An Error has occurred in Sub rptDayEndSummary in Class clsReports", [&] {
    frame::PrintSurface& vsp = VSP();
    // Last year by calendar subtraction: Feb 29 moves to Feb 28.
    Run run{*this,
            vsp,
            Common(),
            dtStartDate,
            dtEndDate,
            DateAdd("yyyy", -1, dtStartDate),
            DateAdd("yyyy", -1, dtEndDate)};
    closing::HalfInchPortrait(vsp);
    vsp.DocName("Practice Analysis Report");
    vsp.StartDoc();
    PrintReportHeading("Practice Analysis Report", UserName,
                       "From: " + Format(Variant(dtStartDate), "MMM/d/yyyy") +
                           " To: " + Format(Variant(dtEndDate), "MMM/d/yyyy"));
    vsp.FontSize(8);
    run.ProductionDiagnostics();
    RaiseProgress(10);
    run.ProviderDiagnostics();
    RaiseProgress(30);
    run.CashInDiagnostics();
    RaiseProgress(40);
    run.PaymentTypeDiagnostics();
    run.AdjustmentDiagnostics();
    run.PostDatedPaymentDiagnostics();
    RaiseProgress(50);
    run.AppointmentBookingDiagnostics();
    run.TeamBookingDiagnostics();
    RaiseProgress(85);
    run.AppointmentPlanningDiagnostics();
    run.ReferralDiagnostics();
    run.OfficeGrowth();
    RaiseProgress(100);
    PrintPageFooters(kPrintedBy);
    vsp.EndDoc();
    Form().Show();
  });
}

}  // namespace orv

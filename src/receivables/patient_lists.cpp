// Lists of patients by their account: the account status with credits,
// the families with a net balance, the patients with money on file, the
// patients with treatment still to come, and each patient's billing.
#include <algorithm>
#include <array>
#include <vector>

#include "accounts/account_model.h"
#include "common/common_functions.h"
#include "common/currency.h"
#include "common/format.h"
#include "common/vbstrings.h"
#include "frame/contact_cells.h"
#include "frame/preview_form.h"
#include "frame/reports.h"
#include "frame/surface/surface.h"
#include "frame/surface/table_model.h"
#include "receivables/age_class.h"

namespace orv {

namespace {

// The patient list with the names of both insurers and both employers.
// `join` is "LEFT OUTER" for everyone or "INNER" for only the patients with
// all four.
std::string PatientsWithCarriers(const std::string& join) {
  return "SELECT InsuranceCompany.CompanyName AS PrimaryInsurance, InsuranceCompany1.CompanyName "
         "AS "
         "SecondaryInsurance, Employers.Name AS PrimaryEmployer, Employers1.Name AS "
         "SecondaryEmployer, "
         "Patient.* FROM Patient " +
         join + " JOIN InsuranceCompany ON Patient.InsuranceID = InsuranceCompany.ID " + join +
         " JOIN InsuranceCompany InsuranceCompany1 ON Patient.SecondaryInsuranceID = "
         "InsuranceCompany1.ID " +
         join + " JOIN Employers ON Patient.EmployerID = Employers.ID " + join +
         " JOIN Employers Employers1 ON Patient.SecondaryEmployerID = Employers1.ID";
}

}  // namespace

void clsReports::rptPatientAccountStatus(std::string UserName, DateTime dtEndDate) {
  const db::Snapshot snapshot(conn_, db::Snapshot::OnFailure::RunWithout);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  AccountModel accounts(conn(), InterestRate);
  const std::string end = dtEndDate.ToIsoDate();

  vsp.MarginLeft(".6in");
  vsp.MarginRight(".6in");
  vsp.MarginTop(".6in");
  vsp.MarginBottom(".6in");
  vsp.Orientation(0);
  vsp.DocName("Patients Account Status");
  db::Recordset patients = Open(
      "SHAPE {SELECT FullName, ID FROM Patient ORDER BY FullName} AS rptPatientsWithABalance "
      "APPEND "
      "({SELECT Invoices.ID, Invoices.[Date], Invoices.InvoiceTotal, Invoices.[Complete?], "
      "Invoices.InvoiceFinalTotal, Patient.Interest, Invoices.PatientID FROM Invoices INNER JOIN "
      "Patient ON Invoices.PatientID = Patient.ID WHERE Invoices.[Complete?] <> 0 AND "
      "(Invoices.Cancelled IS NULL OR Invoices.Cancelled = 0) AND (InvoiceFinalTotal IS NULL OR "
      "(FinalDate > '" +
      end + "' AND [Date] <= '" + end +
      "')) AND InvoiceTotal > 0}  AS rptPatientsWithABalanceInvoices RELATE 'ID' TO 'PatientID') "
      "AS "
      "rptPatientsWithABalanceInvoices");
  vsp.StartDoc();
  PrintReportHeading(vsp.DocName(), UserName, "");
  vsp.FontSize(10);
  vsp.FontBold(true);
  vsp.TextAlign(7);
  vsp.Text("Ending " + Format(Variant(dtEndDate), "MMM/dd/yyyy"));
  vsp.FontBold(false);
  vsp.TextAlign(0);
  vsp.FontSize(8);

  // Balance, credit, post dates, then the four classes.
  using Row = std::array<Currency, 7>;
  Row office{};
  auto cells = [](const Row& r) {
    std::string s;
    for (const Currency& c : r) s += "|" + Format(Variant(c), "Currency");
    return s;
  };
  std::string body;
  while (!patients.Eof()) {
    Row row{};
    db::Recordset invoices = patients["rptPatientsWithABalanceInvoices"].Chapter();
    while (!invoices.Eof()) {
      const int32_t id = static_cast<int32_t>(cf.ReturnVal(invoices["ID"].Value()));
      const Currency paid = accounts.ReturnInvoicePaid(true, id, dtEndDate, 0);
      const Currency amount = cf.ReturnCur(invoices["InvoiceTotal"].Value());
      row[2] += accounts.ReturnInvoicePaid(false, id, dtEndDate, 0);
      // An undated invoice (its settled total absent, the statement takes
      // it whatever its date) goes to the oldest class.
      if (amount > paid) row[3 + AgeClass(invoices["Date"].Value(), dtEndDate)] += amount - paid;
      invoices.MoveNext();
    }
    // The credit is the patient's money on no invoice, from every payer, by
    // cheque date up to the end date. The balance is what is owed less it.
    row[1] = accounts.ReturnAccountCredit(
        static_cast<int32_t>(cf.ReturnVal(patients["ID"].Value())), false, 0, "", dtEndDate);
    const Currency owed = row[3] + row[4] + row[5] + row[6];
    row[0] = owed - row[1];
    if (!owed.IsZero() || !row[1].IsZero()) {
      body += frame::EscapeCell(cf.returnStr(patients["FullName"].Value())) + cells(row) + ";";
      for (size_t i = 0; i < row.size(); ++i) office[i] += row[i];
    }
    RaiseProgress(patients);
    Host().DoEvents();
    patients.MoveNext();
  }
  body += "Office Totals: " + cells(office) + ";";
  vsp.CurrentY(vsp.CurrentY() + Twips(200));
  vsp.AddTable("<!~+2in|>+!~.9in|>+!~.9in|>+!~.9in|>+!~.9in|>+!~.9in|>+!~.9in|>+!~.9in",
               "Patient|Balance|Credit|Post Dates|0-30 Days|> 30 Days|> 60 Days|> 90 Days", body,
               kHeaderColor);
  // The closing note never opens a page alone: the totals row comes along.
  vsp.KeepWithNext();
  vsp.FontSize(10);
  vsp.Text("");
  vsp.Text(
      "Note that because this includes credit the balance on this report WILL NOT equal that of "
      "your "
      "Patients with a net Balance Report.");
  PrintPageFooters(kPrintedBy);
  vsp.EndDoc();
  Form().Visible(true);
}

void clsReports::rptFamiliesWithABalance(std::string UserName) {
  const db::Snapshot snapshot(conn_, db::Snapshot::OnFailure::RunWithout);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  AccountModel accounts(conn(), InterestRate);
  vsp.Orientation(0);
  vsp.DocName("Families With a Net Balance");
  db::Recordset holders = Open(
      "SHAPE {SELECT ID, PrimaryHolderID, FirstName, LastName FROM Patient WHERE (PrimaryHolderID "
      "= "
      "ID)}  AS PrimaryPolicyHolders APPEND (( SHAPE {SELECT FirstName, PrimaryHolderID, ID FROM "
      "Patient}  AS FamilyMembers APPEND (( SHAPE {SELECT InvoiceTotal, PatientID, Date, ID FROM "
      "Invoices where Invoices.[Complete?] = -1 or Invoices.[Complete?] = 1}  AS MemberInvoices "
      "APPEND ({SELECT InvoicePayments.CheckDate, InvoicePaymentDetails.InvoiceID, "
      "InvoicePaymentDetails.Amount FROM InvoicePayments INNER JOIN InvoicePaymentDetails ON "
      "InvoicePayments.ID = InvoicePaymentDetails.InvoicePaymentID}  AS MemberInvoiceDetails "
      "RELATE "
      "'ID' TO 'InvoiceID') AS MemberInvoiceDetails) AS MemberInvoices RELATE 'ID' TO 'PatientID') "
      "AS "
      "MemberInvoices) AS FamilyMembers RELATE 'ID' TO 'PrimaryHolderID') AS FamilyMembers");
  vsp.StartDoc();
  PrintReportHeading(vsp.DocName(), UserName, "");
  vsp.TextAlign(1);
  vsp.FontBold(false);
  vsp.FontSize(10);

  const DateTime today = Clock::Today();
  const DateTime overdue_before = DateAdd("d", -30, today);
  // Total, post dates, current, over 30 days.
  using Row = std::array<Currency, 4>;
  auto cells = [](const Row& r) {
    std::string s;
    for (const Currency& c : r) s += "|" + Format(Variant(c), "Currency");
    return s;
  };
  Row office{};
  std::string body;
  // Body rows of the account holders who have member rows under them: each
  // is kept on the page of its first member.
  std::vector<int> holder_rows;
  int rows = 0;
  // Fields found by name once; each chapter follows its parent's row.
  const db::Field holder_last = holders["LastName"], holder_first = holders["FirstName"];
  db::Recordset people = holders["FamilyMembers"].Chapter();
  const db::Field member_first = people["FirstName"];
  db::Recordset invoices = people["MemberInvoices"].Chapter();
  const db::Field invoice_id = invoices["ID"], invoice_date = invoices["Date"];
  db::Recordset details = invoices["MemberInvoiceDetails"].Chapter();
  const db::Field check_date_field = details["CheckDate"], amount_field = details["Amount"];
  while (!holders.Eof()) {
    Row family{};
    std::string members;
    int member_rows = 0;
    while (!people.Eof()) {
      Row member{};
      while (!invoices.Eof()) {
        const int32_t id = static_cast<int32_t>(cf.ReturnVal(invoice_id.Value()));
        const Currency amount = accounts.ReturnInvoiceAmount(id);
        // Paid: the shares on cheques dated up to today. A post-dated
        // cheque is not money yet, as everywhere in the account model.
        Currency paid;
        while (!details.Eof()) {
          const Variant check_date = check_date_field.Value();
          if (!check_date.IsNull() && CDate(check_date).DatePart() <= today) {
            paid += cf.ReturnCur(amount_field.Value());
          }
          details.MoveNext();
        }
        const Currency open = amount - paid;
        const Variant date = invoice_date.Value();
        // An undated invoice is of no known age: overdue, as the oldest
        // class takes it in the other aged lists.
        if (date.IsNull() || CDate(date).DatePart() < overdue_before) {
          member[3] += open;
        } else if (CDate(date).DatePart() > today) {
          member[1] += open;
        } else {
          member[2] += open;
        }
        invoices.MoveNext();
      }
      member[0] = member[1] + member[2] + member[3];
      // Every member of a family that owes has a row, a member who owes
      // nothing with its zeros: the holder sees the whole family.
      members += "  " + frame::EscapeCell(cf.returnStr(member_first.Value())) +
                 cells(member) + ";";
      ++member_rows;
      for (size_t i = 0; i < member.size(); ++i) family[i] += member[i];
      people.MoveNext();
    }
    if (!family[0].IsZero()) {
      body += frame::EscapeCell(cf.returnStr(holder_last.Value()) + ", " + cf.returnStr(holder_first.Value())) +
              cells(family) + ";" + members;
      if (member_rows > 0) holder_rows.push_back(rows + 1);
      rows += 1 + member_rows;
      for (size_t i = 0; i < family.size(); ++i) office[i] += family[i];
    }
    RaiseProgress(holders);
    Host().DoEvents();
    holders.MoveNext();
  }
  body += "Office Totals:  " + cells(office) + ";";
  vsp.StartTable();
  vsp.AddTable(">2in|<1in|<1in|<1in|<2in",
               "Account Holder  |Total|Post Dates|Current|>30 Days (incl. >60 and >90)", body,
               kHeaderColor);
  for (const int r : holder_rows) vsp.TableCell(frame::tcKeepWithNext, r, 0) = true;
  vsp.EndTable();
  PrintPageFooters(kPrintedBy);
  vsp.EndDoc();
  Form().Show();
}

void clsReports::rptPatientswithACredit(std::string UserName) {
  const db::Snapshot snapshot(conn_, db::Snapshot::OnFailure::RunWithout);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  AccountModel accounts(conn(), InterestRate);
  vsp.Orientation(1);
  vsp.DocName("Patients with A Credit");
  db::Recordset rs = Open(PatientsWithCarriers("LEFT OUTER"));
  vsp.StartDoc();
  PrintReportHeading(vsp.DocName(), UserName, "");
  vsp.TextAlign(1);
  vsp.FontBold(false);
  vsp.FontSize(10);

  auto str = [&](const char* f) { return cf.returnStr(rs[f].Value()); };
  Currency total;
  std::string body;
  while (!rs.Eof()) {
    // Money on file today: every payer's money on no invoice, by cheque
    // date up to today, for whichever provider took it in.
    const Currency credit = accounts.ReturnAccountCredit(
        static_cast<int32_t>(cf.ReturnVal(rs["ID"].Value())), false, 0);
    if (credit > Currency()) {
      body += PatientContactRow(cf, rs, str("LastName") + ", " + str("FirstName"),
                                "Credit: " + Format(Variant(credit), "Currency"),
                                str("PrimaryEmployer"), str("SecondaryEmployer"),
                                str("PrimaryInsurance"), str("SecondaryInsurance"));
      total += credit;
    }
    RaiseProgress(rs);
    Host().DoEvents();
    rs.MoveNext();
  }
  if (body.empty()) {
    vsp.Text("None on file.");
  } else {
    vsp.AddTable(kPatientContactFormat, kPatientContactHeader, body, kHeaderColor);
    // The total never opens a page alone: the last patient comes along.
    vsp.KeepWithNext();
  }
  vsp.Text("");
  vsp.Text("Total Credit On File: " + Format(Variant(total), "Currency"));
  PrintPageFooters(kPrintedBy);
  vsp.EndDoc();
  Form().Show();
}

void clsReports::rptPatientswithOustandingTreatment(std::string UserName) {
  const db::Snapshot snapshot(conn_, db::Snapshot::OnFailure::RunWithout);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  AccountModel accounts(conn(), InterestRate);
  vsp.Orientation(0);
  vsp.DocName("Patients with Outstanding Treatments");
  // Inner joins: a patient without both insurers and both employers is not
  // listed, as the list has always been.
  db::Recordset rs = Open(PatientsWithCarriers("INNER") + " ORDER BY LastName");
  vsp.StartDoc();
  PrintReportHeading(vsp.DocName(), UserName, "");
  vsp.TextAlign(1);
  vsp.FontBold(false);
  vsp.FontSize(10);

  // The figures and the reminder date print as the database holds them,
  // under labels that carry their own "($)"; the texts are escaped, as
  // each line is one cell of the table.
  auto raw = [&](const db::Recordset& r, const char* f) {
    return frame::EscapeCell(cf.returnStr(r[f].Value()));
  };
  std::string body;
  // The patients' name rows, each kept on the page of its first line.
  std::vector<int> name_rows;
  int rows = 0;
  while (!rs.Eof()) {
    const int32_t id = static_cast<int32_t>(cf.ReturnVal(rs["ID"].Value()));
    const std::string key = std::to_string(id);
    std::string lines;
    db::Recordset plan =
        Open("Select * from PatientTreatmentPlan where PatientID = " + key + " ORDER BY ID",
             db::adOpenForwardOnly);
    while (!plan.Eof()) {
      lines += "Procedure: " + raw(plan, "Code") + " Tooth #: " + raw(plan, "Tooth#") +
               " Surface: " + raw(plan, "Surface") + " Fee: " + raw(plan, "Cost") + "||;";
      plan.MoveNext();
    }
    db::Recordset future =
        Open("Select * from PatientFuture where PatientID = " + key, db::adOpenForwardOnly);
    while (!future.Eof()) {
      lines += "Planned Appointment: " + raw(future, "Description") +
               " Est. Schedule Date: " + Format(future["EstScheduleDate"].Value(), "mmm/dd/yyyy") +
               " Units: " + raw(future, "Units") +
               " ShortNotice?: " + (cf.ReturnBool(future["ShortNotice?"].Value()) ? "Yes" : "No") +
               " Estimate($): " + raw(future, "Estimate") + "||;";
      future.MoveNext();
    }
    // No blank before ORDER BY: the server reads "5ORDER" as the number
    // and the keyword.
    db::Recordset predeterminations =
        Open("Select * from PatientPredTreatments where PatientID = " + key + "ORDER BY ID",
             db::adOpenForwardOnly);
    while (!predeterminations.Eof()) {
      lines += "Treatment Plan: Total($): " + raw(predeterminations, "TotalAmount") +
               " Benefit Amount($): " + raw(predeterminations, "TotalBenefitAmount") +
               " Reminder Date: " + raw(predeterminations, "ReminderDate") + "||;";
      predeterminations.MoveNext();
    }
    if (!lines.empty()) {
      // The balance is what is owed on complete live invoices of any age
      // less every payment on them and less the patient's own credit: the
      // balance as it stands today.
      body +=
          frame::EscapeCell(cf.returnStr(rs["LastName"].Value()) + ", " +
                            cf.returnStr(rs["FirstName"].Value())) +
          "|Credit($): " + Format(Variant(accounts.ReturnAccountCredit(id, false, 0)), "Currency") +
          "|Balance($): " + Format(accounts.ReturnOldBalance(id, true, 0, Variant(0)), "Currency") +
          ";" + lines;
      name_rows.push_back(rows + 1);
      rows += 1 + int(std::count(lines.begin(), lines.end(), ';'));
    }
    RaiseProgress(rs);
    Host().DoEvents();
    rs.MoveNext();
  }
  vsp.StartTable();
  vsp.AddTable("<4.5in|>2in|>2in", "", body);
  vsp.TableCell(frame::tcRepeatHeader) = true;
  for (const int r : name_rows) vsp.TableCell(frame::tcKeepWithNext, r, 0) = true;
  vsp.EndTable();
  PrintPageFooters(kPrintedBy);
  vsp.EndDoc();
  Form().Show();
}

void clsReports::rptBillingByClient(std::string UserName, std::string txtfilter,
                                    std::string OfficeAddress, std::string OfficeName) {
  const db::Snapshot snapshot(conn_, db::Snapshot::OnFailure::RunWithout);
  frame::PrintSurface& vsp = VSP();
  txtfilter = NoZeroFilter(txtfilter);
  vsp.Orientation(0);
  vsp.DocName("Billing By Client");
  const std::string invoices =
      " order by FullName} AS Patients APPEND (( SHAPE {SELECT Invoices.ID AS ID, "
      "Invoices.ProviderID, "
      "Invoices.InvoiceTotal, Invoices.Invoice#, Invoices.Date, Employees.FullName, Employees.ID "
      "as "
      "EmpID, Invoices.PatientID FROM Invoices INNER JOIN Employees ON Invoices.ProviderID = "
      "Employees.ID}  AS PatientInvoices APPEND ({SELECT InvoiceDetails.InvoiceID, "
      "InvoiceDetails.Code, "
      "InvoiceDetails.Date, InvoiceDetails.Cost, FeeCodes.ID, FeeCodes.Description FROM "
      "InvoiceDetails "
      "INNER JOIN FeeCodes ON InvoiceDetails.Code = FeeCodes.ID}  AS PatientInvoiceDetails RELATE "
      "'ID' "
      "TO 'InvoiceID') AS PatientInvoiceDetails) AS PatientInvoices RELATE 'ID' TO 'PatientID') AS "
      "PatientInvoices";
  // The invoices and their lines come with columns the list does not
  // print (the provider's and fee code's keys, the invoice's total and
  // date): only what it prints is read.
  db::Recordset patients;
  patients.KeepFields({"FirstName", "LastName", "PatientInvoices.FullName", "PatientInvoices.Invoice#",
                       "PatientInvoices.PatientInvoiceDetails.Date", "PatientInvoices.PatientInvoiceDetails.Code",
                       "PatientInvoices.PatientInvoiceDetails.Description",
                       "PatientInvoices.PatientInvoiceDetails.Cost"});
  patients.Open(txtfilter.empty() ? "SHAPE {SELECT FirstName, LastName, ID FROM Patient" + invoices
                                  : "SHAPE {SELECT FirstName, LastName, ID FROM Patient WHERE " + txtfilter +
                                        invoices,
                conn_, db::adOpenStatic, db::adLockReadOnly, db::adCmdText);
  vsp.StartDoc();
  PrintReportHeading(vsp.DocName(), UserName, "");
  vsp.TextAlign(1);
  vsp.FontBold(false);
  vsp.FontSize(10);

  // Fields found by name once; the chapters follow their parents' rows.
  const db::Field first_name = patients["FirstName"], last_name = patients["LastName"];
  db::Recordset bills = patients["PatientInvoices"].Chapter();
  const db::Field provider = bills["FullName"], invoice_number = bills["Invoice#"];
  db::Recordset lines = bills["PatientInvoiceDetails"].Chapter();
  const db::Field line_date = lines["Date"], code = lines["Code"], description = lines["Description"],
                  cost = lines["Cost"];
  // A large practice prints hundreds of thousands of lines: each line is
  // handed to the table as its six cells, the texts as they stand (no
  // escaping into a table string and splitting back), built in the same
  // strings patient after patient; names and codes are read where the
  // recordset holds them and dates through a format read once.
  const DateFormatter line_date_format("mmm/dd/yyyy");
  constexpr size_t kLineCells = 6;
  std::vector<std::string> name_bar(2), cells;
  std::string scratch, invoice_provider, invoice_number_text;
  while (!patients.Eof()) {
    if (!bills.Eof()) {
      name_bar[0].clear();
      name_bar[0] += first_name.Text(scratch);
      name_bar[0] += ' ';
      name_bar[0] += last_name.Text(scratch);
      vsp.AddTableRow("<6.5in|>1in", "", name_bar, std::nullopt, kHeaderColor);
      // The name bar introduces the patient's invoice lines.
      vsp.KeepWithNext();
      size_t used = 0;
      while (!bills.Eof()) {
        // The provider and invoice number open every line of the invoice.
        if (!lines.Eof()) {
          invoice_provider.assign(provider.Text(scratch));
          invoice_number_text.assign(invoice_number.Text(scratch));
        }
        while (!lines.Eof()) {
          if (cells.size() < used + kLineCells) cells.resize(used + kLineCells);
          std::string* line = cells.data() + used;
          line[0].assign(invoice_provider);
          line[1].assign(invoice_number_text);
          line[2].clear();
          line_date_format.Append(line_date.Value(), line[2]);
          line[3].assign(code.Text(scratch));
          line[4].assign(description.Text(scratch));
          line[5] = Format(cost.Value(), "Currency");
          used += kLineCells;
          lines.MoveNext();
        }
        bills.MoveNext();
      }
      vsp.AddTableRows("<2in|<.75in|<1in|<.75in|<2in|>1in",
                       "Provider|Invoice#|Date|Code|Description|Fee",
                       std::span(cells).first(used), kLineCells, kHeaderColor);
      vsp.Text("");
    }
    RaiseProgress(patients);
    Host().DoEvents();
    patients.MoveNext();
  }
  PrintPageFooters(kPrintedBy);
  vsp.EndDoc();
  Form().Show();
}

}  // namespace orv

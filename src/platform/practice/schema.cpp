#include "platform/practice/schema.h"

#include <sqlite3.h>

#include <algorithm>
#include <cctype>

namespace orv::practice {
namespace {

Column K(std::string n) { return {std::move(n), ColumnType::Key}; }
Column I(std::string n) { return {std::move(n), ColumnType::Integer}; }
Column F(std::string n) { return {std::move(n), ColumnType::Flag}; }
Column M(std::string n) { return {std::move(n), ColumnType::Money}; }
Column D(std::string n) { return {std::move(n), ColumnType::Date}; }
Column T(std::string n, int len) { return {std::move(n), ColumnType::Text, len}; }
Column C(std::string n, int len) { return {std::move(n), ColumnType::Char, len}; }
Column Memo(std::string n) { return {std::move(n), ColumnType::Memo}; }
Column Fl(std::string n) { return {std::move(n), ColumnType::Float}; }
Column B(std::string n) { return {std::move(n), ColumnType::Blob}; }

const char* const kWeekdays[] = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                 "Thursday", "Friday", "Saturday"};

// Appends one text-time column per weekday, named prefix + day + suffix.
void AddWeekdays(std::vector<Column>& cols, const std::string& prefix, const std::string& suffix) {
  for (const char* day : kWeekdays) cols.push_back(T(prefix + day + suffix, 8));
}

std::vector<Column> EmployeeColumns() {
  std::vector<Column> cols = {
      K("ID"), T("LastName", 30), T("FirstName", 30), T("FullName", 60),
      T("Professional Title", 20), I("TypeID"), T("ChairID", 10), T("Symbol", 5),
      T("CDA#", 10), T("Reg#", 10), T("UserName", 20), F("Active"),
      // Pay: Commission is a whole percentage of collections (rptPayroll);
      // PayRate money per hour; BillRate, Salary and the targets are read by
      // rptYearlyEmployeeSummary.
      I("Commission"), M("PayRate"), M("BillRate"), M("Salary"), M("TargetIncomePerDay"),
      M("TargetIncomePerHour")};
  // Working hours as text times ("08:00 AM"). The day sheet and booking
  // diagnostics read "<Weekday>From" and "<Weekday>to"; rptYearlyEmployeeSummary
  // and rptPayroll write "<Weekday>To", the same column as names ignore case.
  AddWeekdays(cols, "", "From");
  AddWeekdays(cols, "", "to");
  // Lunch. rptDaySheet reads "LunchFrom<Weekday>" and "Lunchto<Weekday>", the
  // names kept here. srptBookingDiagnostics and the booking section of the
  // day-end summary name the same values "<Weekday>LunchFrom" and
  // "<Weekday>LunchTo"; those statements need the names mapped (or a view)
  // to run against this schema.
  AddWeekdays(cols, "LunchFrom", "");
  AddWeekdays(cols, "Lunchto", "");
  return cols;
}

std::vector<Column> OfficeColumns() {
  std::vector<Column> cols = {
      K("ID"), T("Name", 60), T("Street", 60), T("Street2", 60), T("City", 40),
      T("Province", 2), T("PostalCode", 7), T("Phone", 10), T("PhoneExt", 5), T("Fax", 10),
      T("Www", 60), T("EmailAddress", 60), B("Logo"), Memo("InvoiceHeader"),
      Memo("InvoiceFooter"), Memo("StatementFooter"), T("Message", 200), Memo("LaypersonHeader"),
      I("UnitMinutes"),
      // rptAppointmentCard: fees are left off the card when set.
      F("HideFinancial"),
      // Letter bodies of rptRefferalLetter: ReferralLetter to a dentist,
      // RefferalLetterBody to a patient.
      Memo("ReferralLetter"), Memo("RefferalLetterBody"),
      // The four policies of OfficePolicyAcknowledgement.
      Memo("ConfirmationPolicyText"), Memo("BillingPolicyText"),
      Memo("BillingOverCoveragePolicyText"), Memo("ReschedulePolicyText")};
  // The office's day as text times, "HourFrom" or "HourTo" and the weekday.
  AddWeekdays(cols, "HourFrom", "");
  AddWeekdays(cols, "HourTo", "");
  return cols;
}

std::vector<Column> PatientColumns() {
  std::vector<Column> cols = {
      K("ID"), T("LastName", 30), T("FirstName", 30), T("MiddleInitial", 1), T("Title", 10),
      T("PreferredName", 10), T("FullName", 60), T("Sex", 6), D("BirthDate"), T("SIN", 9),
      D("SignupDate"),
      // "12 Main St" CR LF ["Unit 4" CR LF] "Ottawa, ON" CR LF "K1A 0B1"
      T("Address", 200), F("Active?"), D("InactivationDate"), T("ManualChartNumber", 10),
      C("Language", 1), D("LastStatement"), F("Interest"), F("AccountholderOnly"),
      F("Assignment"), I("OfficeID"),
      // clsPatient loads the office from DefaultOfficeID and the third
      // employer from ThirdEmployerID.
      I("DefaultOfficeID"),
      // Contact.
      T("HomePhone", 10), T("HomeExt", 5), T("OtherPhone", 10), T("OtherExt", 5),
      T("CelPhone", 10), T("Pager", 10), T("PagerExt", 5), T("EmergencyContact", 60),
      T("EmergencyPhone", 10), Memo("GlobalNotes"), T("MedicalAlert", 100), T("PremedType", 30),
      // Family and care.
      I("ResponsibleFamilyMemberID"), I("PrimaryHolderID"), I("SecondaryHolderID"),
      I("DoctorID"), I("ReferringDentistID"), T("RefferedBy", 40), T("ReferalReason", 60),
      T("ReferredByAddID", 20), I("categoryID"),
      // Coverage.
      I("EmployerID"), I("SecondaryEmployerID"), I("ThirdEmployerID"), I("InsuranceID"),
      I("SecondaryInsuranceID"), T("Policy#", 15), T("Division#", 10), T("SubscriberID#", 15),
      T("YearEnding", 10), T("SecondaryPolicy#", 15), T("SecondaryDivision#", 10),
      T("SecondarySubscriberID#", 15), T("Relationship", 12), T("SecondaryRelationship", 12),
      T("DependantCode", 2), T("SecondaryDependantCode", 2), F("Student"), T("Schoolname", 60),
      // Booking preferences printed by OfficePolicyAcknowledgement.
      T("BestAppointmentTime", 30), T("BestPhoneNumber", 10), T("BestTime", 30),
      F("ShortNotice")};
  // "Days Available" of OfficePolicyAcknowledgement: one flag per weekday.
  for (const char* day : kWeekdays) cols.push_back(F(std::string(day) + "Avail"));
  return cols;
}

std::vector<Table> BuildTables() {
  return {
      // Office and staff.
      {"OfficeInformation", OfficeColumns(), "ID", {}},
      {"OfficeHygieneCompanyCodes",
       {I("OfficeID"), T("Startcode", 6), T("EndCode", 6)},
       "",
       {{{"OfficeID"}}}},
      {"Employees", EmployeeColumns(), "ID", {}},
      {"EmployeeHolidays",
       {I("EmployeeID"), D("FromDate"), D("ToDate"), I("FromTime"), I("ToTime")},
       "",
       {{{"EmployeeID", "FromDate"}}}},
      {"EmployeeSpecialDays",
       {I("EmployeeID"), D("StartDate"), D("EndDate"), I("StartTime"), I("EndTime")},
       "",
       {{{"EmployeeID", "StartDate"}}}},
      {"EmployeeBPN", {I("EmployeeID"), I("InsuranceID"), T("BPN", 15)}, "", {{{"EmployeeID"}}}},
      // Amount is "40%" or "$50": a share of the line or a fixed sum.
      {"EmployeeCodeSplit",
       {K("ID"), I("EmployeeID"), T("StartCode", 6), T("EndCode", 6), T("Amount", 10)},
       "ID",
       {{{"EmployeeID"}}}},
      // The time clock. TimeIn and Timeout hold the punch's date and time;
      // a NULL Timeout is a missed punch-out.
      {"Punch",
       {K("ID"), I("UserID"), D("Date"), D("TimeIn"), D("Timeout")},
       "ID",
       {{{"UserID", "Date"}}}},
      {"ReferringDentists",
       {K("ID"), T("Title", 10), T("Name", 30), T("LastName", 30), T("Phone", 10),
        T("Street", 60), T("Street2", 60), T("City", 40), T("Prov", 2), T("Postal", 7)},
       "ID",
       {}},
      {"ReferralAlerts",
       {I("EmployeeID"), I("AtLeast"), Fl("InLast"), Fl("AverageOver"), Fl("AlertWhen")},
       "",
       {}},
      // Lookups.
      {"Patientcategories", {K("ID"), T("Name", 30)}, "ID", {}},
      {"ListAlerts", {K("ID"), T("Name", 40)}, "ID", {}},
      {"ProcedureCategories", {K("ID"), T("Name", 30), I("Colour")}, "ID", {}},
      {"Reasons", {K("ID"), T("Name", 40)}, "ID", {}},
      // Insurance.
      {"EDINetworks", {K("ID"), T("Name", 40)}, "ID", {}},
      {"InsuranceCompany",
       {K("ID"), T("CompanyName", 60), T("Street", 60), T("Street2", 60), T("City", 40),
        T("Prov", 2), T("Country", 30), T("PostalCode", 7), T("Phone", 10), T("PhoneExt", 5),
        T("CDA#", 10), I("NetworkID"), T("BillingProviderNumber", 10), T("Notes", 200)},
       "ID",
       {}},
      {"Employers",
       {K("ID"), T("Name", 60), T("Street", 60), T("Street2", 60), T("City", 40), T("Prov", 2),
        T("PostalCode", 7), T("Phone", 10), T("PhoneExt", 5), T("Policy#", 15),
        T("DivisionNumber", 10), T("Notes", 200), F("EDI?"), I("InsuranceID")},
       "ID",
       {}},
      // People.
      {"Patient",
       PatientColumns(),
       "ID",
       {{{"ResponsibleFamilyMemberID"}},
        {{"PrimaryHolderID"}},
        {{"SecondaryHolderID"}},
        {{"LastName", "FirstName"}},
        {{"FullName"}},
        {{"SignupDate"}},
        {{"ReferringDentistID"}}}},
      {"PatientAlerts", {I("PatientID"), I("AlertID")}, "", {{{"PatientID"}}}},
      // Fees. FeeCodes.ID is the five-digit code as text, "-" before a
      // reversal, "99" before a laboratory fee.
      {"FeeCodes",
       {T("ID", 6), T("Description", 100), T("LayPersonDescription", 255), I("Type")},
       "ID",
       {}},
      {"FeeGuides", {K("ID"), T("Name", 60)}, "ID", {}},
      {"FeeGuideDetails",
       {I("FeeGuideID"), T("FeeCodeID", 6), M("Amount")},
       "",
       {{{"FeeGuideID", "FeeCodeID"}}}},
      // Billing.
      {"Invoices",
       {K("ID"), I("Invoice#"), I("PatientID"), I("ProviderID"), I("OverseerID"), I("DoctorID"),
        I("AppointmentID"), D("Date"), I("Time"), D("EntryDate"), D("FinalDate"),
        F("Complete?"), F("Cancelled"), D("CancellationDate"), M("InvoiceTotal"),
        M("InvoiceFinalTotal"), M("PatientTotal"), F("IsAssignment"), F("IsSecondaryAssignment"),
        F("IsTertiaryAssignment"), I("Units"), I("InterestInvoiceID"),
        // Set on an invoice that bears interest; the summary analysis sums
        // the invoices that interest invoices point at through it.
        F("ChargeInterest"), T("PredeterminationNumber", 20), T("InsuranceNotes", 200),
        T("notes", 200)},
       "ID",
       {{{"PatientID", "Date"}},
        {{"Date"}},
        {{"ProviderID", "Date"}},
        {{"OverseerID"}},
        {{"AppointmentID"}},
        {{"CancellationDate"}},
        {{"FinalDate"}},
        {{"InterestInvoiceID"}}}},
      {"InvoiceDetails",
       {K("ID"), I("InvoiceID"), T("Code", 6), T("Tooth#", 3), T("Surface", 5), M("Cost"),
        M("PatientCost"), M("PrimaryInsCost"), M("SecondaryInsCost"), M("TertiaryInsCost"),
        M("Discount"), T("Status", 12), D("Date"), D("EntryDate"), I("ProviderID"),
        I("EmployeeID")},
       "ID",
       {{{"InvoiceID", "EntryDate"}}, {{"EntryDate"}}, {{"Date"}}, {{"Code"}},
        {{"ProviderID", "EntryDate"}}}},
      // Payments.
      {"Accounts",
       {K("ID"), T("Name", 40), T("AccountNumber", 12), T("TransitNumber", 8)},
       "ID",
       {}},
      // Expenses by bank account, read by rptMonthEndSummary.
      {"AccountsPayable",
       {K("ID"), I("AccountID"), D("Date"), M("Amount")},
       "ID",
       {{{"AccountID", "Date"}}}},
      {"PaymentTypes",
       {K("ID"), T("Name", 30), T("Description", 60), F("Adjustment?"), F("ToTotalPaid?"),
        F("BankDeposit"), F("Refund"), F("OfficePayment"), F("BulkPayment"), F("RecAfterDep"),
        F("NSF")},
       "ID",
       {}},
      // Value = TotalAllocated + TotalToCredit; TotalAllocated is the sum of
      // the payment's InvoicePaymentDetails. RefundAmount is the part of the
      // credit paid back on RefundDate (srptUnAppliedPayments).
      {"InvoicePayments",
       {K("ID"), I("PatientID"), I("PaymentTypeID"), I("AccountID"), I("EmployeeID"),
        I("InsuranceID"), I("InitialProviderID"), T("PaymentName", 60), M("Value"),
        M("TotalAllocated"), M("TotalToCredit"), T("Notes", 100), D("Date"), D("CheckDate"),
        T("Check#", 10), F("IsInsurance"), F("Cancelled"), D("CancellationDate"),
        M("RefundAmount"), D("RefundDate")},
       "ID",
       {{{"PatientID", "CheckDate"}},
        {{"CheckDate"}},
        {{"PaymentTypeID"}},
        {{"InitialProviderID"}}}},
      {"InvoicePaymentDetails",
       {K("ID"), I("InvoicePaymentID"), I("InvoiceID"), M("Amount"), D("Date")},
       "ID",
       {{{"InvoicePaymentID"}}, {{"InvoiceID", "Date"}}, {{"Date"}}}},
      {"InvoicePaymentAllocations",
       {I("InvoicePaymentID"), I("InvoiceDetailsID"), I("PatientID"), M("Amount"),
        D("AppliedDate")},
       "",
       {{{"InvoiceDetailsID"}},
        {{"InvoicePaymentID"}},
        {{"PatientID", "AppliedDate"}},
        {{"AppliedDate"}}}},
      {"BulkPayments",
       {K("ID"), I("PaymentTypeID"), I("AccountID"), I("EmployeeID"), M("Amount"),
        D("EntryDate"), T("CheckNo", 12), T("PaymentName", 60)},
       "ID",
       {{{"EntryDate"}}}},
      {"BulkPaymentDetails",
       {I("BulkPaymentID"), I("InvoicePaymentID")},
       "",
       {{{"BulkPaymentID"}}, {{"InvoicePaymentID"}}}},
      // Claims. Type: 0 claim, 1 predetermination, 2 eligibility, 3 reversal.
      {"PatientEDISends",
       {K("ID"), I("InvoiceID"), I("PatientID"), I("SequenceNumber"), I("Type"),
        D("DatePosted"), F("Sent?"), T("CarrierNumber", 10)},
       "ID",
       {{{"DatePosted"}}, {{"InvoiceID"}}, {{"PatientID"}}}},
      // TrsCode 21 is an explanation of benefits, 11 an acknowledgement;
      // Status 0 held, 1 accepted, 2 rejected.
      {"PatientEDIResponses",
       {K("ID"), I("EDISendID"), I("Status"), I("TrsCode"), M("TotalBenefitAmounts")},
       "ID",
       {{{"EDISendID"}}}},
      // Treatment plans. PatientPredTreatmentDetails.Type is the section of
      // the layperson plan as text: 'Required' (or NULL), 'Suggested',
      // 'Optional', 'Phase 1'..'Phase 6', 'Option 1'...
      {"PatientPredTreatments",
       {K("ID"), I("PatientID"), I("ProviderID"), I("CreatedbyID"), D("DatePosted"),
        F("Complete"), T("Notes", 100), T("PatientNotes", 255), T("CarrierNotes", 100),
        M("TotalAmount"), M("TotalBenefitAmount"), M("TotalSecondBeneFitAmount"),
        D("ReminderDate")},
       "ID",
       {{{"PatientID"}}, {{"DatePosted"}}}},
      {"PatientPredTreatmentDetails",
       {K("ID"), I("PatientPredTreatmentsID"), T("Type", 12), I("LineNumber"), T("Code", 6),
        T("Tooth#", 3), T("Surface", 5), I("ReasonID"), M("Cost"), M("BenefitAmountProcedure"),
        M("SecondBenefitAmount")},
       "ID",
       {{{"PatientPredTreatmentsID", "LineNumber"}}}},
      // Work planned and not yet booked, read by
      // rptPatientswithOustandingTreatment.
      {"PatientTreatmentPlan",
       {K("ID"), I("PatientID"), T("Code", 6), T("Tooth#", 3),
        T("Surface", 5), M("Cost")},
       "ID",
       {{{"PatientID"}}}},
      // Appointments. [Time] is minutes since midnight; Units are schedule
      // units of OfficeInformation.UnitMinutes.
      {"PatientAppointments",
       {K("ID"), I("PatientID"), I("ProviderID"), I("EmployeeID"), I("OverSeerID"),
        I("ProcedureCat"), D("Date"), I("Time"), I("Units"), M("Estimate"), F("Confirmed"),
        F("Complete"), F("Message"), T("Reason", 200), T("Template", 30)},
       "ID",
       {{{"Date", "ProviderID"}}, {{"PatientID", "Date"}}, {{"ProviderID", "Date"}}}},
      {"PatientAppointmentCodes",
       {I("PatientAppointmentID"), T("Code", 6), M("Fee"), T("Tooth#", 3), T("Surface", 5)},
       "",
       {{{"PatientAppointmentID"}}}},
      {"PatientAppointmentDetails",
       {K("ID"), I("AppointmentID"), D("Date"), I("Time"), T("Specific", 40), T("Note", 100),
        I("EmployeeID"), F("Reschedule?")},
       "ID",
       {{{"AppointmentID"}}}},
      {"PatientFuture",
       {K("ID"), I("PatientID"), I("ProviderID"), I("ProcedureCategoryID"), D("DueDate"),
        D("EstScheduleDate"), M("Estimate"), I("Units"), F("Approved"), T("Description", 60),
        F("ShortNotice?")},
       "ID",
       {{{"PatientID"}}, {{"EstScheduleDate"}}}},
      {"LabIO",
       {I("AppointmentID"), D("SentDate"), D("ReceivedDate")},
       "",
       {{{"AppointmentID"}}}},
      // Notes. PatientProgressNotes.Type above 1 asks for a follow-up on
      // ReminderDate.
      {"PatientProgressNotes",
       {K("ID"), I("PatientID"), I("EmployeeID"), I("AppointmentID"), D("Date"),
        Memo("Treatment"), F("Complete"), D("ReminderDate"), I("Type")},
       "ID",
       {{{"PatientID"}}, {{"ReminderDate"}}}},
      {"PatientProgressNoteDetails",
       {K("ID"), I("PatientProgressNoteID"), T("Code", 6), T("Tooth#", 3), T("Liner", 30),
        T("Material", 30), T("Colour", 20), T("Surface", 5), I("Units"), T("Instruments", 60),
        T("AnaestheticNote", 100), T("ProceduralNote", 200)},
       "ID",
       {{{"PatientProgressNoteID"}}}},
      {"PatientPrescriptions",
       {K("ID"), I("PatientID"), I("EmployeeID"), D("Date")},
       "ID",
       {{{"PatientID"}}}},
      {"PatientPrescriptionDetails",
       {K("ID"), I("PatientPrescriptionID"), T("RX", 60), T("Dispense", 30), T("Label", 100),
        I("Repeats")},
       "ID",
       {{{"PatientPrescriptionID"}}}},
      // DestinationID 0 addresses everybody; Importance 0 low, 1 medium, 2 high.
      {"Memos",
       {K("ID"), I("EmployeeID"), I("DestinationID"), D("Date"), D("DueDate"), I("Importance"),
        T("Message", 200)},
       "ID",
       {{{"DestinationID", "DueDate"}}}},
  };
}

bool SameName(std::string_view a, std::string_view b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
           return std::tolower(static_cast<unsigned char>(x)) ==
                  std::tolower(static_cast<unsigned char>(y));
         });
}

bool IsPlainIdentifier(std::string_view name) {
  if (name.empty() || std::isdigit(static_cast<unsigned char>(name[0]))) return false;
  return std::all_of(name.begin(), name.end(), [](char c) {
    return std::isalnum(static_cast<unsigned char>(c)) || c == '_';
  });
}

// Words that SQLite would read as keywords in a column list.
bool IsKeyword(std::string_view name) {
  static const char* const kWords[] = {"Date", "Time", "Type", "Value", "Status", "Message"};
  for (const char* w : kWords)
    if (SameName(name, w)) return true;
  return false;
}

}  // namespace

const Column* Table::FindColumn(std::string_view column) const {
  for (const auto& c : columns)
    if (SameName(c.name, column)) return &c;
  return nullptr;
}

const std::vector<Table>& Tables() {
  static const std::vector<Table> tables = BuildTables();
  return tables;
}

const Table* FindTable(std::string_view name) {
  for (const auto& t : Tables())
    if (SameName(t.name, name)) return &t;
  return nullptr;
}

std::string SqliteType(const Column& column) {
  switch (column.type) {
    case ColumnType::Key:
    case ColumnType::Integer:
    case ColumnType::Flag:
      return "INTEGER";
    case ColumnType::Money:
      return "MONEY";
    case ColumnType::Date:
      return "DATETIME";
    case ColumnType::Text:
      return "VARCHAR(" + std::to_string(column.length) + ")";
    case ColumnType::Char:
      return "CHAR(" + std::to_string(column.length) + ")";
    case ColumnType::Memo:
      return "TEXT";
    case ColumnType::Float:
      return "FLOAT";
    case ColumnType::Blob:
      return "BLOB";
  }
  return "TEXT";
}

std::string QuoteName(std::string_view name) {
  if (IsPlainIdentifier(name) && !IsKeyword(name)) return std::string(name);
  return "[" + std::string(name) + "]";
}

std::string SqliteDdl() {
  std::string out;
  for (const auto& t : Tables()) {
    out += "CREATE TABLE " + QuoteName(t.name) + " (\n";
    for (size_t i = 0; i < t.columns.size(); ++i) {
      const auto& c = t.columns[i];
      out += "  " + QuoteName(c.name) + " " + SqliteType(c);
      if (SameName(c.name, t.primary_key)) out += " PRIMARY KEY";
      out += i + 1 < t.columns.size() ? ",\n" : "\n";
    }
    out += ");\n";
    for (const auto& ix : t.indexes) {
      std::string name = "IX_" + t.name, cols;
      for (const auto& c : ix.columns) {
        std::string plain;
        for (char ch : c)
          if (std::isalnum(static_cast<unsigned char>(ch))) plain += ch;
        name += "_" + plain;
        cols += (cols.empty() ? "" : ", ") + QuoteName(c);
      }
      out += "CREATE INDEX " + name + " ON " + QuoteName(t.name) + " (" + cols + ");\n";
    }
  }
  // The insurers under the plural name the routing slip looks its second
  // insurer up in: one table, two names.
  out += "CREATE VIEW \"InsuranceCompanies\" AS SELECT * FROM \"InsuranceCompany\";\n";
  return out;
}

void CreateSchema(sqlite3* db) {
  char* err = nullptr;
  if (sqlite3_exec(db, SqliteDdl().c_str(), nullptr, nullptr, &err) != SQLITE_OK) {
    std::string message = err ? err : "unknown error";
    sqlite3_free(err);
    throw SchemaError("creating the practice schema: " + message);
  }
}

}  // namespace orv::practice

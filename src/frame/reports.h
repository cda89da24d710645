// clsReports: the report component a host application sees.
//
// The host creates it, lets `Connection`, calls `SetPrintPreview` with its
// preview form, sets `OfficeID`, `InterestRate` and `InterestDelay`, and calls
// one report method at a time. Each report opens its own recordsets on the
// host's connection, draws on the form's surface, raises `Progress`, and
// shows or prints the document. The report methods live in the folders of
// their families (lists/, accounts/, ...); this header declares them all.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "common/variant.h"
#include "frame/page_parts.h"
#include "frame/report_types.h"
#include "platform/db/connection.h"
#include "platform/db/recordset.h"
#include "platform/host/host_services.h"
#include "platform/render/twips.h"

namespace orv {

class PreviewForm;
class clsCommonFunctions;
class clsPatient;
namespace frame {
class PrintSurface;
}

// The footer text every report stamps on its pages.
inline constexpr const char* kPrintedBy = "Printed by Orvenda - Tessalyne Inc.";
// The header colour of every table heading.
inline constexpr uint32_t kHeaderColor = 12169126;

class clsReports {
 public:
  clsReports();
  ~clsReports();
  clsReports(const clsReports&) = delete;
  clsReports& operator=(const clsReports&) = delete;

  // ---- Public state ----
  float InterestRate = 0;
  int16_t InterestDelay = 0;
  int32_t OfficeID = 0;

  // `Connection` let: keeps the host's connection (the main and the lookup
  // reference are the same object). Nothing is opened, tested or closed.
  // Every report method holds a db::Snapshot on it for its whole run, so
  // that on a server all of a report's statements read one moment of the
  // practice, however busy it is (on SQLite that costs nothing). A server
  // that went away since the last report gives no snapshot: the report runs
  // on and meets the fault in its first statement, in its own error
  // handling.
  void Connection(const db::Connection& connection);
  // Keeps the form and its surface `VSP`. The form must outlive the runs.
  void SetPrintPreview(PreviewForm* theFrm);
  // The host's interactive services (message box, pointer, message pump).
  // Default: a batch host that writes messages to stderr.
  void SetHostServices(host::HostServices* services);

  // The `Progress` event: the host's sink, called with the percentage.
  std::function<void(uint8_t& Percentage)> Progress;

  // Credit on account held by the patient's family by holder, rounded to the
  // cent; IncludePostDates false leaves out cheques dated after today.
  Currency ReturnFamilyCredit(int32_t& PatientID, bool IncludePostDates = false);

  // ---- Services that do not print ----
  Variant ReturnOfficeValue(const std::string& fld);
  std::string ReturnAddressPart(const std::string& Address, int Part);

  // ---- Directory lists ----
  void rptPatientListDetailed(std::string txtfilter);
  void rptInsuranceCompanyList(std::string txtfilter, std::string UserName);
  void rptEmployerList(std::string txtfilter, std::string UserName);
  void rptPatientListSimple(std::string txtfilter, std::string UserName, std::string Title,
                            bool ByEmployer = false, int32_t EmployerID = 0);
  void rptFeeGuide(int32_t ID, std::string UserName);

  // ---- Labels and envelopes ----
  // Sheets of 3 x 10 labels (2.55 x 0.89 in), 30 to a page, in last-name
  // order; filters are conditions over the table ("" or "0": none).
  void rptMailingLabels(std::string txtfilter);
  // `Position` "top", "middle" or "bottom" aligns the name on its label;
  // another word keeps the alignment in force.
  void rptFolderLabels(std::string Position, std::string txtfilter);
  // Printed with the printer dialog.
  void rptReferringDentistMailingLabels(std::string txtfilter);
  // One label per page after the page set-up dialog; a refusal prints
  // nothing.
  void rptMailingLabelsSinglePage(std::string txtfilter);
  // One folder label per page: the name at the top, middle or bottom, or
  // (`rptTwo`, landscape) twice on a folded tab, once upside down.
  void rptFolderLabelsSingleSheet(std::string txtfilter, iPosition Position);
  // One company 30 times on a sheet; an unknown company fails.
  void rptInsuranceCompanyLabels(int32_t ID);
  // No. 10 envelopes (9.5 x 4.125 in), one a page, after the printer
  // dialog. A patient without an address stops the run with a message and
  // nothing printed.
  void rptPatientEnvelope(std::string txtfilter, bool ReturnAddress);
  void rptInsuranceCompanyEnvelopes(std::string txtfilter);
  // Printed with the printer dialog.
  void rptReferringDentistMailingEnvelopes(std::string txtfilter);
  // A small landscape label for one appointment, printed without the
  // dialog once the printer dialog was confirmed.
  void rptAppointmentCardLabel(int32_t AppointmentID);

  // ---- Letters (printed; each sets its patient on `Patient()` and takes
  // the patient's office as `OfficeID`, which stays set after the run) ----
  // A letter to each patient of the filter not seen this calendar month,
  // with a return slip; each letter ends with a new page.
  void rptReActivationLetter(std::string txtfilter, std::string OfficeName, std::string Header);
  // After a missed appointment (PatientAppointments.ID); a patient under 18
  // with a primary holder gets the guardian's letter.
  void rptNoShowLetter(int32_t ID, std::string SignedBy, Variant Body, std::string OfficeName,
                       std::string Header);
  // Thanks to whoever referred the patient; `IsDentist` true takes the
  // office's letter to dentists, anything else the one to patients.
  void rptRefferalLetter(int32_t ID, std::optional<bool> IsDentist = std::nullopt);
  // A welcome letter, printed whatever the page set-up box answers.
  void NewPatientLetter(int32_t ID, std::string LetterBody, std::string OfficeName);
  // The patient's details and the office's policies, to sign.
  void OfficePolicyAcknowledgement(int32_t PatientID, int32_t OfficeID);

  // ---- Notes and memos ----
  // Progress notes not complete whose reminder date has come (Type above
  // 1), by doctor; previewed.
  void rptProgressNotesList();
  // The progress notes of the filter ("" or "0": every note) in full, each
  // with its treatment details; previewed. An error shows the notes'
  // message and ends the run.
  void rptProgressNotes(std::string txtfilter, std::string UserName);
  // One page per memo of the filter ("" or "0": all), printed.
  void rptMemos(std::string txtfilter, DateTime printDate, std::string UserName);
  // One prescription with its lines, printed; sets the patient's office.
  void rptPrescriptions(int32_t ID, std::string Header, std::string OfficeName);
  // -1 when memos are due for the user or for everyone (drawing them on
  // the surface, unshown), else 0 with nothing drawn.
  int16_t ToDoEmail(int32_t UserID);

  // ---- Appointment cards and family schedules ----
  void rptAppointmentCard(int32_t ID, std::string Header, std::string Footer, std::string OfficeName,
                          std::string OfficePhone, int16_t UnitMinutes, bool Assignment);
  void rptFamilyAppointmentsDetailed(int32_t ID, std::string OfficeName, std::string OfficeAddress,
                                     std::string PatientName, std::string Header, std::string Footer,
                                     int16_t UnitMinutes);
  void rptFamilyAppointmentsSummary(int32_t ID, std::string OfficeName, std::string OfficeAddress,
                                    std::string PatientName, std::string Header, std::string Footer,
                                    int16_t UnitMinutes);
  // Draws the family's coming appointments into the running document.
  void FamilyAppointmentsSummary(int32_t ID);
  // Whether FamilyAppointmentsSummary would draw anything for `ID`.
  bool FamilyHasComingAppointments(int32_t ID);

  // ---- The appointment report set ----
  // Chains the sections whose flags are set, always in the order: day book,
  // reschedules, incomplete, planned, treatment plans, operatory, booking;
  // each after a new page but the first. `ProviderNames` is a provider
  // filter ("ProviderID = 3 OR ProviderID = 5"; "" or "0": all).
  // `Category` a ProcedureCategories.ID, 0 for all.
  void rptAppointmentReports(bool blnApp, bool blnAppIncomplete, bool blnAppPlanned,
                             bool blnAppReschedules, bool blnTreatmentPlans, bool blnOperatory,
                             bool blnBooking, DateTime dtStart, DateTime dtEnd, std::string UserName,
                             std::string ProviderNames, int32_t Category);
  // The sections, drawn into the running document. `Complete` true lists
  // only appointments not yet complete.
  void srptAppointments(DateTime dtStart, DateTime dtEnd, std::string ProviderFilter,
                        int32_t Category = 0, bool Complete = false);
  void srptOperatoryList(std::string ProviderFilter, DateTime dtStart, DateTime dtEnd,
                         int32_t Category);
  void srptPlannedAppointmentsList(std::string ProviderFilter, DateTime dtStart, DateTime dtEnd,
                                   int32_t Category = 0);
  void srptTreatmentPlansOutstanding(std::string ProviderFilter, DateTime dtStart, DateTime dtEnd);
  void srptAppointmentReschedules(std::string ProviderFilter, DateTime dtStart, DateTime dtEnd);
  // Units available and booked per provider and per team member, this
  // period and the same period a year before.
  void srptBookingDiagnostics(DateTime dtStart, DateTime dtEnd);
  // Every patient's appointments; `txtfilter` a condition on Patient.
  void rptAppointmentsByPatient(std::string txtfilter, std::string UserName);
  // Entries kept for hosts that call them: they draw nothing.
  void rptRescheduleAnalysis(int16_t theType, std::string Header);
  void OverDueTreatmentPlans(DateTime StartDate, DateTime Enddate, std::string Header);
  // One page for one day: a column per provider, a row per booking unit.
  // Goes to the printer; the form's IsDaySheet is true during the run.
  void rptDaySheet(DateTime theDate, std::vector<int32_t>& Providers, std::string UserName,
                   std::string OfficeName);
  // The slip that travels with the patient on the day of the appointment;
  // `txtfilter` the condition after " where " of the appointment query.
  void rptRoutingSlip(std::string txtfilter, std::string UserName);

  // ---- Invoices, receipts and bulk statements ----
  // One invoice on the office letterhead, addressed to the patient or, for a
  // minor with a primary holder, to the holder; previewed. An unknown
  // invoice shows a message and makes no document. `Name` and `Address`
  // stand in only where the database has no name for the addressee.
  void rptInvoice(int32_t ID, std::string Name, std::string Address);
  // The invoice with the payments made towards it and what remains; stamps
  // the patient's LastStatement and goes to the printer with the dialog.
  void rptInvoiceStatement(int32_t ID, std::string Name, std::string Address);
  // The receipt of one payment (InvoicePayments.ID) with its shares on
  // invoices and its credit; goes to the printer with the dialog.
  void rptReceipt(int32_t ID, std::string Name, std::string Address);
  // A statement page per patient or per family (by primary holder) with the
  // open invoices and an age table at the foot of each page; stamps
  // LastStatement of every account printed; each account's pages are
  // numbered within it. Filters are ready conditions
  // ("" or "0": none). `NoZeros` true (Empty: false) leaves out the accounts
  // with nothing to pay.
  void rptBulkStatements(std::string txtPatientFilter, std::string txtFamilyFilter,
                         bool IsFamilyStatement, std::string Header, Variant NoZeros = Variant());
  // One document with a statement per listed patient, or with `Family` per
  // family (everyone sharing the patient's ResponsibleFamilyMemberID), for
  // the period `dtStart` to `dtEnd`: opening balance, the period's charges
  // and payments with running patient and insurance portions, totals and
  // the current balance, then the sections asked for. `PatientIDs` ends
  // with one spare slot that is not printed. `Details` prints invoice lines
  // instead of invoices; `DetailOutstanding` only the invoices still open
  // at `dtEnd`, without an opening balance. `YTD` adds the payments of the
  // year of `dtStart` up to `dtEnd`. `UpdateLastStatementDate` stamps
  // Patient.LastStatement with today for each list position, in one
  // transaction that a failed run rolls back. French wording for an
  // addressee whose Language is "F". Each statement's pages are numbered
  // within it, under a footer in its language. A listed ID not on file
  // prints nothing and is named to the host's Note; the run goes on.
  // Errors show the report's message box.
  void rptStatements(DateTime dtStart, DateTime dtEnd, std::vector<int32_t>& PatientIDs,
                     bool Family, std::string PatientFooter = "", bool AppSummary = false,
                     bool IncompleteTreatment = false, bool PostDated = false,
                     bool Details = false, bool YTD = false, bool UpdateLastStatementDate = false,
                     bool DetailOutstanding = false);

  // ---- Receivables ----
  // Aged receivables by provider on the invoice-level model, aged from
  // today. `txtProvFilter` selects from Employees, `txtInvFilter` from
  // Invoices ("" or "0": none). `Comments` is accepted and not printed.
  void rptAccountsReceivable(std::string Comments, std::string txtProvFilter,
                             std::string txtInvFilter, std::string UserName);
  // Practice-wide aged list, one row per patient, on the line-level model
  // as of `dtEndDate`; draws into the running document. `Byoption` is the
  // view of the month-end run (0 provider, 1 overseer, 2 preferred doctor,
  // 3 date); `ProviderFilter` a condition over "ProviderID" ("" for none);
  // `UserName` for the "By: " line.
  void srptAccountReceivable(DateTime dtEndDate, int16_t Byoption, std::string ProviderFilter,
                             std::string UserName = "");
  // Patients owing money at `dtEndDate`, aged by invoice date, without
  // credits; `SortType` as `Byoption` above. Shown by letting Visible.
  void rptPatientsWithABalance(std::string UserName, DateTime dtEndDate, std::string txtfilter,
                               int16_t SortType = 0);
  // The body of the list above, drawn into the running document; with
  // `NoCredits` false each row carries Debit, Credit and Balance.
  void srptPatientsWithaBalance(std::string UserName, DateTime dtEndDate, std::string txtfilter,
                                int16_t SortType, bool NoCredits);
  // Payments with money not yet put on any invoice at `dtEndDate`.
  void rptUnAppliedPayments(DateTime dtEndDate, std::string UserName);
  void srptUnAppliedPayments(DateTime dtEndDate, std::string UserName, std::string strFilter = "");
  // Aged debts with each patient's money on file at `dtEndDate`; the
  // balance is what is owed less the credit. Shown by letting Visible.
  void rptPatientAccountStatus(std::string UserName, DateTime dtEndDate);
  // Families by primary holder with what they owe today: total, post
  // dates, current and over 30 days; families owing nothing are left out.
  void rptFamiliesWithABalance(std::string UserName);
  // Patients with money on file today, with contacts and carriers.
  void rptPatientswithACredit(std::string UserName);
  // Patients with plans, planned appointments or predeterminations still
  // open, with their credit and balance.
  void rptPatientswithOustandingTreatment(std::string UserName);
  // Each patient's invoices line by line ("" or "0": every patient).
  // `OfficeAddress` and `OfficeName` are accepted and not printed.
  void rptBillingByClient(std::string UserName, std::string txtfilter, std::string OfficeAddress,
                          std::string OfficeName);

  // ---- Compensation ----
  // Pay for the period for each employee of `strEmployees` ("ID = 12 OR
  // ID = 14", with the blank after each "="): the hourly form from the time
  // clock for staff with no code split and no commission, otherwise the
  // collections form (payments, overseen work, adjustments, lab deductions
  // and the dentist's share). An ID the practice does not know stops the
  // run with an error naming it. The document is ended, not shown.
  void rptPayroll(std::string strEmployees, DateTime dtStart, DateTime dtEnd, std::string UserName);
  // One employee's day-by-day monitor over the range, landscape, a page per
  // month with its summary, then the range's summary. `UnitValue` is the
  // money of one scheduled unit. Without hygiene company codes for the
  // component's office it shows a message and makes no document.
  void rptYearlyEmployeeSummary(int32_t ID, DateTime StartDate, DateTime Enddate, int16_t UnitValue);
  // Production, cost and lab per month for each specialist of `SpecFilter`
  // (a condition over Employees), three specialists a page, with each
  // one's profit at the foot. `SpecNames` is printed under the title.
  void rptSpecialistYearlySummary(std::string SpecFilter, std::string SpecNames, DateTime StartDate,
                                  DateTime Enddate);
  // The AccountID values of `Sql` with `ID` appended, joined by ","; on a
  // failure, what was gathered so far.
  std::string ReturnAccountList(const std::string& Sql, int32_t ID);
  // The cells `FirstColumn` (from 1) to FirstColumn + ColumnCount - 1 of
  // every row of a "|" and ";" table body, as a body of their own.
  static std::string TableRowsOf(const std::string& Body, int32_t FirstColumn, int32_t ColumnCount);
  // The white-on-grey bar over a payroll section, and the note spanning a
  // section's `columns` where it has no rows.
  void PayrollBar(const std::string& caption);
  void PayrollNote(const std::string& format, const std::string& note, int columns);

  // ---- Period closing: detailed and summary analysis, applied payments ----
  // The views (`Byoption`) are 0 by provider, 1 by overseer, 2 by preferred
  // doctor, 3 by date; any other value is refused with a ReportError before
  // anything is drawn. Provider filters are conditions over "ProviderID"
  // (over "ID" for the summary analysis), as the closing runs build them.

  // Draws into the running document the treatment entered from `dtStart`
  // to `dtEnd` (by entry date; cancellations negated on their day; invoices
  // without lines by their date), grouped by the view with lab fees,
  // invoice adjustments and write-offs, then on a new page the payments of
  // the period (`byAllocatedPayment`: by applied date only; otherwise the
  // cheques of the period with their unallocated credit), the money moved
  // between providers, and the totals by bank account. An empty
  // `ProviderNames` prints "Please select a provider" and nothing else.
  void srptDetailedAnalysis(DateTime dtStart, DateTime dtEnd, int16_t Byoption,
                            std::string UserName, std::string ProviderNames,
                            bool byAllocatedPayment);
  // The money applied between the dates away from and onto one provider
  // (by overseer: onto one overseer) after its cheque's day. Adds what left
  // to `AdjustmentSum` and what arrived to `PaymentSum`. Prints nothing when
  // nothing moved.
  void srptPaymentReallocation(int32_t ProviderID, DateTime dtStart, DateTime dtEnd,
                               int16_t Byoption, Currency& AdjustmentSum, Currency& PaymentSum);
  // The payments of `Payments` (the detailed analysis' payment rows) totalled
  // by bank account, with those on no account as "None".
  void srptAccountSummary(db::Recordset& Payments);
  // One row per day with activity: fees, lab fees, invoice adjustments,
  // payments, payment adjustments and the running receivable, from the
  // receivable before `dtStart` to the one at `dtEnd`; then the adjustments
  // by type and the period's totals under `Title`. `ProviderFilter` "" or
  // "0" covers the whole practice.
  void srptSummaryAnalysis(DateTime dtStart, DateTime dtEnd, std::string ProviderFilter,
                           int16_t Byoption, std::string Title, bool byAllocatedPayment);
  // The receivable of the filter's people before `dtStart` (`Opening`) and
  // at the end of `dtEnd` (`Closing`), on the same reading of payments as
  // the summary's day rows. `Filters` holds the filter for the charges, for
  // allocations and for payments taken in, already in SQL.
  struct ReceivableFilters {
    std::string charges;      // over the line's or invoice's person
    std::string taken_in;     // over InvoicePayments.InitialProviderID
  };
  void srptOpeningReceivable(DateTime dtStart, DateTime dtEnd, const ReceivableFilters& Filters,
                             bool byAllocatedPayment, Currency& Opening, Currency& Closing);
  // Per person of the filter, the payments applied to their invoices in the
  // period (by the day they were applied), with a grand total and a note.
  void srptAppliedPayments(DateTime dtStart, DateTime dtEnd, std::string ProviderFilter,
                           int16_t Byoption);
  // The applied payments as a document of their own; `Overseeing` groups by
  // overseer instead of provider.
  void rptIncomeByProvider(DateTime dtStartDate, DateTime dtEndDate, std::string strProviderFilter,
                           bool Overseeing, std::string UserName);
  // ---- Period closing: cash in and the bank deposit ----
  // Every payment of the period by type (bank deposit, then direct), with
  // same-day reversals, the bulk cheques, reversals and refunds entered as
  // adjustments, the cash and bank summaries and the bulk cheques split by
  // patient. The period is by the money's date (CheckDate), bulk cheques by
  // entry date. `txtfilter` / `AccountID` is "" (every account) or the term
  // "AccountID = n".
  void rptCashInDetailed(DateTime& dtStart, DateTime& dtEnd, std::string txtfilter,
                         std::string UserName);
  void srptCashInDetailed(DateTime dtStart, DateTime dtEnd, std::string AccountID,
                          std::string UserName);
  // One row per day with money (deposits direct and bank, NSF, reversals,
  // refunds, net), the period's figures and the payment types' shares.
  // `AccountID` is "" (every account) or a bare account number.
  void rptCashInSummary(DateTime dtStart, DateTime dtEnd, std::string AccountID,
                        std::string UserName);
  void srptCashInSummary(DateTime dtStart, DateTime dtEnd, std::string AccountID,
                         std::string UserName);
  // The slip for the bank: the bank-deposit payments of the period by type,
  // the bank bulk cheques, the grand total and a cash-count grid.
  // `AccountID` below 1 is every account.
  void rptBankDepositSlip(DateTime StartDate, DateTime Enddate, std::string UserName,
                          int32_t AccountID);
  void srptBankDepositSlip(DateTime StartDate, DateTime Enddate, std::string UserName,
                           int32_t AccountID);
  // Kept for hosts that call it: draws nothing, writes no file.
  void rptAdjustmentReport(DateTime StartDate, DateTime Enddate, std::string UserName);
  // "Account: " name, number and transit of the account `AccountID` (a
  // bare number), or nothing when it is not on file.
  void PrintAccountLine(const std::string& AccountID);
  // ---- Practice analysis ----
  // The practice's vital signs from `dtStartDate` to `dtEndDate` (whole
  // days) beside the same days one calendar year before: production by
  // category and provider, how soon invoices were paid, payment types,
  // adjustments and post-dated payments, booked against available units,
  // who booked, appointment planning, referrals and office growth. Reads
  // only. Errors show the report's message box; the document stays as far
  // as it got.
  void rptDayEndSummary(DateTime dtStartDate, DateTime dtEndDate, std::string UserName);
  // ---- Period closing: small sections ----
  // Every invoice not yet complete (the dates do not limit it) with its
  // people and totals, and its lines' complete and in-progress sums.
  // `txtfilter` is a condition over "ProviderID" ("" or "0": everyone).
  void rptIncompleteInvoices(DateTime StartDate, DateTime Enddate, std::string OfficeName,
                             std::string UserName, std::string txtfilter);
  void srptIncompleteInvoices(std::string txtfilter);
  // Invoices cancelled in the period, adjustments by type (not toward
  // paid, then toward paid) and, per provider of `ProviderFilter` (a
  // condition over "ID"), the money moved between providers.
  void srptAdjustmentReport(DateTime dtStart, DateTime dtEnd, std::string ProviderFilter,
                            int16_t Byoption);
  // The money moved away from and onto one provider, as the detailed
  // analysis lists it, drawn under the adjustment report.
  void srptAdjustmentReallocation(int32_t ProviderID, DateTime dtStart, DateTime dtEnd,
                                  int16_t Byoption);
  // EDI sends posted between the dates (whole days) with their responses,
  // and counts of EOBs, acknowledgements and rejections.
  void rptEDITransactions(DateTime DateFrom, DateTime DateTo, std::string UserName);
  void srptEDITransactions(DateTime DateFrom, DateTime DateTo, std::string UserName);
  // Patients who signed up between the dates, by preferred dentist.
  void srptNewPatientReport(DateTime fromdate, DateTime todate);
  // ---- The day-end and month-end packages ----
  // One document with a section per flag that is set, always in the same
  // order whatever the flags' order: each section starts a page unless
  // nothing is drawn yet, and all flags false gives one empty page with its
  // footer. `ProviderNames` is a filter of "ProviderID = n" terms joined by
  // " OR " ("" for everyone); `AccountID` a bare account number or "" for
  // every account; `Byoption` the view of the analysis sections (0
  // provider, 1 overseer, 2 preferred doctor, 3 date). Errors show the
  // packages' message box and leave the document as far as it got.
  void rptDayEndReport(bool DetailedAnalysis, bool AppliedPayments, bool ProductionSummary,
                       bool BankDeposit, bool CashIn, bool CashInAdjustment,
                       bool IncompleteInvoices, bool UnAppliedPayments, bool NewPatient,
                       bool ProductionByProvider, bool EDI, DateTime dtStart, DateTime dtEnd,
                       int16_t Byoption, std::string UserName, std::string ProviderNames,
                       bool byAllocatedPayment, std::string AccountID, bool SummaryAnalysis);
  // With the workstation setting MonthEndReconciliation true (section
  // Settings, default False) the package ends with the receivables
  // reconciliation as of `dtEnd` (receivables/reconciliation.h).
  void rptMonthEndReport(bool DetailedAnalysis, bool SummaryAnalysis, bool AR, bool CashIn,
                         bool CashInAdjustment, bool IncompleteInvoices, bool HygieneCompany,
                         DateTime dtStart, DateTime dtEnd, int16_t Byoption, std::string UserName,
                         std::string ProviderNames, bool byAllocatedPayment, bool Unapplied,
                         bool Applied, bool Production, bool NewPatients, std::string AccountID,
                         bool blnProviderSummary = false);
  // The names of the providers of a "ProviderID = n OR ..." filter,
  // "LastName,FirstName" joined by ","; "" for an empty filter.
  std::string ProviderHeaderFilter(const std::string& ProviderNames);
  // "Providers included:" and the providers of an "ID = n OR ..." filter,
  // three to a row (everyone for an empty filter).
  void SectionProviderHeader(const std::string& IDFilter);

  // ---- Month-end figures ----
  // Day by day from `fromdate` to `todate`: dental and lab fees, invoice
  // adjustments, applied payments and payment adjustments, and the
  // provider A/R running on from the opening; then the adjustment types
  // and the interest collected. `txtInvFilter` (over the invoice) and
  // `txtPayFilter` (over the invoice money was applied to) are SQL
  // conditions, "" or "0" for the whole practice.
  void rptMonthEndAnalysis(DateTime fromdate, DateTime todate, std::string txtInvFilter,
                           std::string txtPayFilter, std::string ProviderNames);
  // The same range in detail: the complete invoices by day (regular and
  // lab billing), the invoice adjustments, applied payments and applied
  // payment adjustments, and the change of the provider A/R.
  void rptNonAgedAR(DateTime dtStart, DateTime dtEnd, std::string txtPayFilter,
                    std::string txtInvFilter, std::string UserName, std::string ProviderNames);
  // Month by month from `StartDate`: production, collection, new-patient
  // examinations, the running A/R and the expenses of each bank account
  // against production. `ProviderID` lists the providers (empty: by
  // txtInvFilter, "" for the whole practice).
  void rptMonthEndSummary(DateTime StartDate, DateTime Enddate, std::string txtInvFilter,
                          std::string txtPayFilter, std::string ProviderNames,
                          std::vector<int32_t>& ProviderID);
  // ---- Production ----
  // Production figures of a period as one document, a section per flag in
  // the fixed order by provider, by overseer, summary, by category, summary
  // by code, by code. `byDate` 1 reads the treatment date, 0 the entry
  // date, anything else no date at all. `ProviderNames` is a condition over
  // "ProviderID" ("" or "0": everyone); an empty `Startcode` or `Endcode` is
  // 00000 or 99999. Errors show the report's message box.
  void rptProductionReports(bool ProductionByCode, bool ProductionByProvider,
                            bool ProductionByOverseer, bool ProductionSummary,
                            bool ProductionSummaryCode, bool ProductionByCategory, DateTime dtStart,
                            DateTime dtEnd, int16_t byDate, std::string UserName,
                            std::string ProviderNames, std::string Startcode, std::string Endcode);
  // The sections, drawn into the running document. `ProviderFilter` is a
  // condition over "ProviderID" ("" or "0": everyone); `byDate` as above.
  void srptProductionByProvider(DateTime dtStart, DateTime dtEnd, std::string ProviderFilter,
                                std::string Startcode, std::string Endcode, int16_t byDate = 0);
  void srptProductionByOverseer(DateTime dtStart, DateTime dtEnd, std::string ProviderFilter,
                                std::string Startcode, std::string Endcode, int16_t byDate = 0);
  void srptProductionByCategory(DateTime dtStart, DateTime dtEnd, std::string ProviderFilter,
                                std::string Startcode, std::string Endcode, int16_t byDate = 0);
  void srptProductionSummaryByCode(DateTime dtStart, DateTime dtEnd, std::string ProviderFilter,
                                   std::string Startcode, std::string Endcode, int16_t byDate = 0);
  void srptProductionByCode(DateTime dtStart, DateTime dtEnd, std::string ProviderFilter,
                            std::string Startcode, std::string Endcode, int16_t byDate = 0);
  // "Overall Total: " (or "Grand Total: ") with the production and lab
  // totals; a total of a million or more takes the wider cell.
  void PrintProductionTotals(Currency ProductionTotal, Currency LabTotal, bool Grand = false);
  // Fee, lab, adjustments and write-offs per provider over the period.
  // `ProviderFilter` is a condition over "ID" ("ID = 3 OR ID = 5"; "" or
  // "0": every employee with figures). `Byoption` 0, 1, 2 take the
  // invoice's provider, overseer or preferred doctor; 3, the by-date view,
  // the provider on the treatment date instead of the entry date.
  void srptProductionSummary(DateTime dtStart, DateTime dtEnd, std::string ProviderFilter,
                             int16_t Byoption = 0);
  // The partners' summary: fees and payments per provider, the
  // hygienists, and the new receivable per provider; starts its own
  // document unless a run has one open.
  void ProductSumReport(DateTime dtStartDate, DateTime dtEndDate, std::string UserName);
  // The same report under the name the partnership menu uses.
  void rptPartnershipReport(DateTime dtStartDate, DateTime dtEndDate, std::string UserName);
  // The payments of the period allocated to each provider's lines, added to
  // the records' payment cells (RegPayment, LabPayment).
  void srptProductSumPayments(DateTime dtStartDate, DateTime dtEndDate,
                              std::vector<RepEmpData>& Providers);
  // Billing and collections of the hygienists (`txtfilter` a condition on
  // Employees, "" or "0": every hygienist) against the office's hygiene
  // company codes, with opening and closing receivables.
  void rptHygieneCompanyReport(DateTime dtStart, DateTime dtEnd, std::string txtfilter,
                               std::string UserName);
  void srptHygieneCompanyReport(DateTime dtStart, DateTime dtEnd, std::string txtfilter);

  // ---- Claim forms and insurance billing ----
  // The dental claim form of one invoice (Invoices.ID), English or French,
  // with the address of office `CurrentOfficeID`; printed at once.
  // `InsuranceCompany` 0, 1, 2 reads the primary, secondary or tertiary
  // assignment of the invoice; 3 prints the subscriber labels without values
  // and pays the subscriber. An invoice, employer or mode the form cannot
  // print shows the claim failure message and prints nothing.
  void rptClaimForm(int32_t ID, int32_t CurrentOfficeID, int16_t InsuranceCompany = 0);
  void rptClaimFormF(int32_t ID, int32_t CurrentOfficeID, int16_t InsuranceCompany = 0);
  // The same form asking in advance for a proposed treatment
  // (PatientPredTreatments.ID); `strFilter` ("" or "0": none) selects its
  // lines. A treatment the form cannot print ends silently, printing nothing.
  void rptPredClaimForm(int32_t ID, int32_t CurrentOfficeID, std::string strFilter);
  void rptPredClaimFormF(int32_t ID, int32_t CurrentOfficeID, std::string strFilter);
  // Per insurance company, what electronic claims billed and what their
  // explanations of benefits returned; previewed.
  void rptInsuranceBilling(std::string UserName);
  // The insurer of an employer (Employers.InsuranceID); 0 for Null, blank,
  // a value not above 0 or an employer not on file.
  int32_t InsuranceOfEmployer(const Variant& EmployerID);

  // ---- Treatment plans ----
  // One proposed treatment (PatientPredTreatments.ID) as a letter in plain
  // words on the patient's office letterhead, section by section with fees
  // and, for a patient who assigned benefits, the insurance share; printed
  // at once. `strFilter` ("" or "0": none) selects the lines; OfficeName
  // and OfficeAddress are accepted and not used. Sets OfficeID to the
  // patient's office.
  void rptLaypersonTreatmentPlan(std::string OfficeName, std::string OfficeAddress, int32_t ID,
                                 std::string strFilter);
  void rptLaypersonTreatmentPlanF(std::string OfficeName, std::string OfficeAddress, int32_t ID,
                                  std::string strFilter);

  // ---- Referrals ----
  // The referral package: the procedure types of referred patients, the
  // referrals in detail, the referral production summary and the alerts of
  // `arrProviderIDs`, each when its flag is set. `blnRefDentistList`,
  // `blnRefPatient` and `Category` are accepted and change nothing.
  // `OrderFlag` 0 by preferred doctor, 1 by referring dentist, 3 by number
  // of referred patients. Errors show the package's message box.
  void rptReferralReports(bool blnRefDentistList, bool blnRefDentistType, bool blnRefDetailed,
                          bool blnRefPatient, bool blnRefSummary, bool blnRefAlert,
                          DateTime dtStart, DateTime dtEnd, std::string UserName,
                          std::string ProviderNames, int32_t Category,
                          std::vector<int32_t> arrProviderIDs = {}, int32_t OrderFlag = 0);
  // Sections drawn into the running document.
  void srptReferringDentistList();
  void srptReferringDentistType(DateTime dtStart, DateTime dtEnd);
  void srptReferringDentistSummary(DateTime Stardate, DateTime Enddate, int32_t SortBy = 0);
  void srptReferringDentistDetailed(DateTime StartDate, DateTime Enddate,
                                    std::vector<int32_t> arrProviderIDs = {}, int32_t SortBy = 0);
  void srptRefferedByPatient(DateTime dtStart, DateTime dtEnd);
  // One provider's referral alert page; `ReferralAlertWarned` keeps the
  // warning about providers without criteria to one per run.
  void srptReferralAlerts(std::string EmployeeID);
  bool ReferralAlertWarned = false;
  // Production and income of the period credited to each patient's
  // referring dentist, after the referral links are checked (and, if the
  // user agrees, repaired). Draws into a running document or makes its own.
  void ReferralProductSumReport(DateTime dtStartDate, DateTime dtEndDate, std::string UserName);
  // True when every `lngFkField` of `strForeignKeyTable` names a row of
  // `strLookupTable` by `lngField`; otherwise asks whether to repair, and
  // repairs on Yes. False while a broken link remains.
  bool CheckRelationships(std::string strLookupTable, std::string lngField,
                          std::string strForeignKeyTable, std::string lngFkField);
  // The repair behind CheckRelationships, in one transaction.
  void RepairRelationships(const std::string& strLookupTable, const std::string& lngField,
                           const std::string& strForeignKeyTable, const std::string& lngFkField);
  // Each dentist's payments of the period, by row of `Rows` (see
  // ReferralProductSumReport).
  struct ReferralRow {
    int32_t id = 0;
    std::string label;
    Currency dental, lab, interest, total, writeoff, net;
    Currency pay_dental, pay_labs, pay_adjusts, pay_net;
    bool used = false;
  };
  void srptReferralPayments(DateTime dtStartDate, DateTime dtEndDate,
                            std::vector<ReferralRow>& Rows);

  // ---- For report code: private services of the component ----
  // (Public in C++ so that the report families in other folders, which are
  // all part of this class's implementation, can reach them.)

  // A second connection to the practice database from the settings
  // ServerName, dbLogin and dbName; `CursorLocation` 3 asks for the shaping
  // provider (client cursors), anything else the plain one.
  db::Connection ReturnConnection(int32_t& CursorLocation);
  // a / b in the percent format, or "0.00%" unless both are nonzero.
  std::string ReturnPercent(const Variant& a, const Variant& b);
  bool IsMonthEnd(DateTime date) const;
  bool IsPayrollEmployee(int32_t ID) const;
  std::vector<int32_t>& EmployeeIDs() { return employee_ids_; }

  // Page furniture.
  void PrintReportHeading(const std::string& Title, const std::string& UserName,
                          const std::string& SubTitle);
  // The same heading with `OfficeLine` (may hold line breaks; "" for none)
  // in place of the component's office, for reports the host hands an
  // office of its own.
  void PrintReportHeading(const std::string& Title, const std::string& UserName,
                          const std::string& SubTitle, const std::string& OfficeLine);
  void PrintPageFooters(const std::string& FooterText);
  // The same stamp for a document of several letters: each page is numbered
  // within its letter ("Page 1 of 2") and carries its letter's footer text.
  void PrintPageFooters(const std::vector<frame::DocumentPart>& Parts);
  Variant ReturnLookupValue(const std::string& Table, const std::string& KeyField,
                            const Variant& KeyValue, const std::string& Field);
  // The office letterhead from the header margin down. With `EndAbove`
  // above 0, the letterhead ends above that line from the paper's top (the
  // logo shrinks, keeping its proportions), so that what is set there, the
  // addressee of a window envelope, stays clear of it.
  void PrintLetterHead(Twips EndAbove = Twips(0));
  std::string ReturnProviderNames(std::string ProviderFilter);
  void PrintProvidersIncluded(const std::string& ProviderFilter);

  // Raises Progress for the current row of a static recordset.
  void RaiseProgress(const db::Recordset& rs);
  // Raises Progress with a computed percentage.
  void RaiseProgress(uint8_t percentage);

  // Runs `body` under a report's trap: any error shows one message box with
  // `text`, a line break and the error's description, and the method then
  // returns normally. Nothing is rolled back.
  void Trap(const std::string& text, const std::function<void()>& body);

  db::Connection& conn() { return conn_; }
  db::Connection& lookup_conn() { return conn_; }
  frame::PrintSurface& VSP();
  PreviewForm& Form();
  clsCommonFunctions& Common();
  // The patient record made by the last `Connection` let.
  clsPatient& Patient();
  host::HostServices& Host() { return *host_; }

  // Opens a recordset on the main connection.
  db::Recordset Open(const std::string& sql, int cursor = db::adOpenStatic,
                     int lock = db::adLockReadOnly);
  // Opens a static recordset on the main connection that holds only the
  // fields named (Recordset::KeepFields): for a listing that reads a few
  // columns of a "Table.*".
  db::Recordset OpenKeeping(const std::string& sql, std::vector<std::string> keep);

 private:
  db::Connection conn_;
  bool has_connection_ = false;
  PreviewForm* form_ = nullptr;
  std::unique_ptr<clsCommonFunctions> common_;
  std::unique_ptr<clsPatient> patient_;
  std::unique_ptr<host::HostServices> own_host_;
  host::HostServices* host_ = nullptr;
  std::vector<int32_t> employee_ids_;
};

// A filter of "0" means none, like the empty string.
inline std::string NoZeroFilter(std::string filter) { return filter == "0" ? std::string() : filter; }

}  // namespace orv

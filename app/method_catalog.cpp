// Every public method of the report component, with its parameters as the
// host passes them ("Name: Type", optional ones in brackets), its family, a
// line that says what it prints, an example run on the demo practice
// (`orvenda-reports demo-db`, 500 patients, seed 1) and notes on the
// parameters whose names say too little. The host parses these to read a
// method's arguments from the command line, to list the methods and to
// print `help METHOD`.
#include "method_catalog.h"

#include <map>

#include "common/vbstrings.h"

namespace orv::app {

const std::vector<MethodSignature>& MethodCatalog() {
  static const std::vector<MethodSignature> catalog = {
      {"SetPrintPreview", "theFrm: object", "", "Component", "Hands the component its preview form (the command line does this itself).", "", ""},
      {"ReturnOfficeValue", "fld: String", "Variant", "Component", "Prints one column of the workstation's office (setting CurrentOffice).", "Name", "fld: a column of OfficeInformation, e.g. Name, Phone, StatementFooter"},
      {"ReturnAddressPart", "Address: String, Part: AddressParts", "String", "Component", "Prints one part of a multi-line address.", "\"$(printf '12 Main St\\r\\nOttawa, ON\\r\\nK1A 0B1')\" City", "Address: lines ended by CR LF: street, [second street], \"City, Prov\", postal code"},
      {"CheckVersion", "version: String", "Boolean", "Component", "Compares an offered version with the running one and, for a newer one, asks whether to install it now. Prints False when the person answers No, else True.", "9.0.0", "version: major.minor.revision as the update service names it; the Yes/No question is answered by --answer yes|no (default no, so a newer version prints False)"},
      {"rptPatientListDetailed", "txtfilter: String", "", "Directory lists", "Patients with contacts, insurance and notes, one block each.", "\"ID < 40\"", ""},
      {"rptInsuranceCompanyList", "txtfilter: String, UserName: String", "", "Directory lists", "Insurance companies with addresses and CDA numbers.", "0 desk", ""},
      {"rptEmployerList", "txtfilter: String, UserName: String", "", "Directory lists", "Employers with their insurance companies.", "0 desk", ""},
      {"rptPatientListSimple", "txtfilter: String, UserName: String, Title: String, [ByEmployer: Boolean], [EmployerID: Long]", "", "Directory lists", "One line per patient: phone, address and emergency contact.", "0 desk \"Active Patients\"", "Title: the heading of the list; ByEmployer: group by employer; EmployerID: the employer when grouped"},
      {"rptFeeGuide", "ID: Long, UserName: String", "", "Directory lists", "The codes and fees of one fee guide.", "1 desk", "ID: the fee guide (FeeGuides.ID)"},
      {"rptAppointmentCardLabel", "AppointmentID: Long", "", "Labels and envelopes", "A small landscape label with one appointment's patient, provider, day and time (printed).", "1", "AppointmentID: PatientAppointments.ID; the printer dialog is asked first"},
      {"rptInsuranceCompanyEnvelopes", "txtfilter: String", "", "Labels and envelopes", "A No. 10 envelope per insurance company, with the office's return address.", "0", "txtfilter: a condition over InsuranceCompany, 0 for all"},
      {"rptReferringDentistMailingEnvelopes", "txtfilter: String", "", "Labels and envelopes", "A No. 10 envelope per referring dentist, with the office's return address (printed).", "0", "txtfilter: a condition over ReferringDentists, 0 for all"},
      {"rptReferringDentistMailingLabels", "txtfilter: String", "", "Labels and envelopes", "Mailing labels of the referring dentists, 30 to a sheet (printed).", "0", "txtfilter: a condition over ReferringDentists, 0 for all"},
      {"rptInsuranceCompanyLabels", "ID: Long", "", "Labels and envelopes", "One insurance company's address 30 times on a sheet of labels.", "1", "ID: the insurance company (InsuranceCompany.ID)"},
      {"rptFolderLabels", "Position: String, txtfilter: String", "", "Labels and envelopes", "Folder labels of patients (the full name), 30 to a sheet.", "middle 0", "Position: top, middle or bottom of each label; txtfilter: a condition over Patient, 0 for all"},
      {"rptMailingLabels", "txtfilter: String", "", "Labels and envelopes", "Mailing labels of patients, 30 to a sheet in last-name order.", "0", "txtfilter: a condition over Patient, 0 for all"},
      {"rptMailingLabelsSinglePage", "txtfilter: String", "", "Labels and envelopes", "Mailing labels of patients, one label per page (label printers).", "\"ID < 5\"", "txtfilter: a condition over Patient, 0 for all; the page set-up dialog is asked first"},
      {"rptFolderLabelsSingleSheet", "txtfilter: String, Position: iPosition", "", "Labels and envelopes", "Folder labels, one per page: the name at the top, middle or bottom, or twice on a folded tab.", "\"ID < 5\" rptTwo", "Position: rptTop, rptMiddle, rptBottom or rptTwo (the tab, one half upside down)"},
      {"rptPatientEnvelope", "txtfilter: String, ReturnAddress: Boolean", "", "Labels and envelopes", "A No. 10 envelope per patient; stops if a patient has no address.", "\"ID = 12\" True", "txtfilter: a condition over Patient; ReturnAddress: print the office's return address"},
      {"rptReActivationLetter", "txtfilter: String, OfficeName: String, Header: String", "", "Letters", "A letter to each patient not seen this month, with a return slip (printed).", "\"ID < 30\" \"Demo Dental\" \"Demo Dental, Ottawa\"", "txtfilter: a condition over Patient, 0 for all; OfficeName: heads each letter; Header: the practice line under the doctor's name"},
      {"OfficePolicyAcknowledgement", "PatientID: Long, OfficeID: Long", "", "Letters", "The patient's details and the office's policies, to sign (printed).", "12 1", "OfficeID: the office whose policies print (OfficeInformation.ID)"},
      {"NewPatientLetter", "ID: Long, LetterBody: String, OfficeName: String", "", "Letters", "A welcome letter to a new patient (printed).", "12 \"Welcome to the practice.\" \"Demo Dental\"", "ID: Patient.ID; the page set-up box is offered and the letter prints whatever it answers"},
      {"rptRefferalLetter", "ID: Long, [IsDentist: Boolean]", "", "Letters", "Thanks to whoever referred a patient (printed).", "12 True", "ID: Patient.ID; IsDentist: True takes the office's letter to dentists, otherwise the one to patients"},
      {"rptNoShowLetter", "ID: Long, SignedBy: String, Body: Variant, OfficeName: String, Header: String", "", "Letters", "A letter after a missed appointment, to a guardian for a minor (printed).", "1 \"Dr. Demo\" \"Please call us to rebook.\" \"Demo Dental\" \"Front desk\"", "ID: PatientAppointments.ID; Body: the paragraph after the opening; Header: the line under the signature"},
      {"ToDoEmail", "UserID: Long", "Integer", "Notes and memos", "Whether memos are due for a user or for everyone: -1 yes (the memos drawn to --out), 0 no.", "1", "UserID: Employees.ID of the user"},
      {"rptProgressNotesList", "", "", "Notes and memos", "Progress notes awaiting follow-up whose reminder date has come, by doctor.", "", ""},
      {"rptProgressNotes", "txtfilter: String, UserName: String", "", "Notes and memos", "Progress notes in full: patient, signer, date, the appointment when there is one, the note and its treatment details.", "\"PatientProgressNotes.PatientID = 12\" desk", "txtfilter: a condition over the notes (PatientProgressNotes, PatientAppointments, Employees), 0 for all, with a column two of them share named by its table (PatientProgressNotes.ID); UserName: in the heading"},
      {"rptMemos", "txtfilter: String, printDate: Date, UserName: String", "", "Notes and memos", "Staff memos, one a page (printed).", "0 2026-11-20 desk", "txtfilter: a condition over Memos, 0 for all; printDate: accepted, not printed; UserName: in the title"},
      {"rptPrescriptions", "ID: Long, Header: String, OfficeName: String", "", "Notes and memos", "One prescription with its drugs, to sign (printed).", "1 \"Prescription\" \"Demo Dental\"", "ID: PatientPrescriptions.ID; Header and OfficeName head the page"},
      {"rptAppointmentsByPatient", "txtfilter: String, UserName: String", "", "Appointments", "Every patient's appointments, one table per patient.", "\"ID = 12\" desk", "txtfilter: a condition on Patient (\"ID = 12\", \"LastName LIKE 'B%'\"), \"\" for all"},
      {"rptAppointmentReports", "blnApp: Boolean, blnAppIncomplete: Boolean, blnAppPlanned: Boolean, blnAppReschedules: Boolean, blnTreatmentPlans: Boolean, blnOperatory: Boolean, blnBooking: Boolean, dtStart: Date, dtEnd: Date, UserName: String, ProviderNames: String, Category: Long", "", "Appointments", "The appointment package: lists chosen by flag for a period.", "True False False False False False False 2026-11-01 2026-11-30 desk \"\" 0", "The sections print in the order day book, reschedules, incomplete, planned, treatment plans, operatory, booking, whatever the flags' order; ProviderNames: a condition such as \"ProviderID = 2 OR ProviderID = 3\", \"\" or 0 for all; Category: a procedure category, 0 for all; the booking section counts in the units of --office"},
      {"rptRescheduleAnalysis", "theType: RescheduleTypes, Header: String", "", "Appointments", "Kept for hosts that call it: draws nothing.", "All \"Reschedules\"", "", false, false, true},
      {"OverDueTreatmentPlans", "StartDate: Date, Enddate: Date, Header: String", "", "Appointments", "Kept for hosts that call it: draws nothing.", "2026-01-01 2026-11-20 \"Overdue plans\"", "", false, false, true},
      {"srptAppointmentReschedules", "ProviderFilter: String, dtStart: Date, dtEnd: Date", "", "Appointments", "Rescheduled appointments of a period (section).", "\"\" 2026-11-01 2026-11-30", "ProviderFilter: a condition over ProviderID, \"\" for all"},
      {"srptAppointments", "dtStart: Date, dtEnd: Date, ProviderFilter: String, [Category: Long], [Complete: Boolean]", "", "Appointments", "Appointments of a period (section).", "2026-11-01 2026-11-30 \"\"", "ProviderFilter: a condition over ProviderID, \"\" or 0 for all; Category: a procedure category, 0 for all; Complete: True lists only the appointments not yet complete"},
      {"srptOperatoryList", "ProviderFilter: String, dtStart: Date, dtEnd: Date, Category: Long", "", "Appointments", "Appointments by operatory (section).", "\"\" 2026-11-01 2026-11-30 0", ""},
      {"srptPlannedAppointmentsList", "ProviderFilter: String, dtStart: Date, dtEnd: Date, [Category: Long]", "", "Appointments", "Planned appointments (section).", "\"\" 2026-11-01 2026-11-30", ""},
      {"srptTreatmentPlansOutstanding", "ProviderFilter: String, dtStart: Date, dtEnd: Date", "", "Appointments", "Outstanding treatment plans (section).", "\"\" 2026-01-01 2026-11-30", ""},
      {"rptFamilyAppointmentsDetailed", "ID: Long, OfficeName: String, OfficeAddress: String, PatientName: String, Header: String, Footer: String, UnitMinutes: Integer", "", "Appointment cards and schedules", "A family's coming appointments in detail.", "141 \"Demo Dental\" \"1 Main St\" \"\" \"Appointments\" \"See you soon\" 10", "ID: a patient of the family (Patient.ID); UnitMinutes: minutes per booking unit"},
      {"rptFamilyAppointmentsSummary", "ID: Long, OfficeName: String, OfficeAddress: String, PatientName: String, Header: String, Footer: String, UnitMinutes: Integer", "", "Appointment cards and schedules", "A family's coming appointments in short.", "141 \"Demo Dental\" \"1 Main St\" \"\" \"Appointments\" \"See you soon\" 10", "ID: a patient of the family (Patient.ID); UnitMinutes: minutes per booking unit"},
      {"FamilyAppointmentsSummary", "ID: Long", "", "Appointment cards and schedules", "A family's coming appointments (section).", "141", "ID: a patient of the family (Patient.ID)", true},
      {"rptAppointmentCard", "ID: Long, Header: String, Footer: String, OfficeName: String, OfficePhone: String, UnitMinutes: Integer, Assignment: Boolean", "", "Appointment cards and schedules", "An appointment card (printed).", "1 \"Your next visit\" \"Call to change\" \"Demo Dental\" \"555-0100\" 10 False", "ID: the appointment (PatientAppointments.ID); UnitMinutes: minutes per booking unit; Assignment: print the assignment line"},
      {"rptDaySheet", "theDate: Date, Providers: array of Long, UserName: String, OfficeName: String", "", "Day sheet and routing slip", "One day's grid, a column per provider (printed).", "2026-11-23 2,3 desk \"Demo Dental\"", "Providers: provider numbers (Employees.ID), in the order of the columns; the office's day and unit come from --office; --setting DaysheetLandscape=1 prints it across the page, --setting DaySheetType=O the long appointment cell"},
      {"rptRoutingSlip", "txtfilter: String, UserName: String", "", "Day sheet and routing slip", "The routing slip of one appointment (printed).", "\"PatientAppointments.ID = 1\" desk", "txtfilter: the condition after WHERE of the appointment query; the first appointment it finds is the slip's"},
      {"rptStatements", "dtStart: Date, dtEnd: Date, PatientIDs: array of Long, Family: Boolean, [PatientFooter: String], [AppSummary: Boolean], [IncompleteTreatment: Boolean], [PostDated: Boolean], [Details: Boolean], [YTD: Boolean], [UpdateLastStatementDate: Boolean], [DetailOutstanding: Boolean]", "", "Statements", "Statements of listed patients or their families for a period.", "2026-01-01 2026-11-20 12 True", "PatientIDs: patient numbers (Patient.ID); Family: one statement per family; PatientFooter: a line printed at the foot of each statement; AppSummary: coming appointments; IncompleteTreatment: open treatment; PostDated: post-dated payments; Details: invoice lines; YTD: payments of the year; UpdateLastStatementDate: stamp the patients' LastStatement; DetailOutstanding: only invoices still open"},
      {"rptBulkStatements", "txtPatientFilter: String, txtFamilyFilter: String, IsFamilyStatement: Boolean, Header: String, [NoZeros: Variant]", "", "Statements", "Statements of every patient or family that a filter selects.", "\"ID < 40\" \"\" False \"Statement\"", "txtPatientFilter: a condition over Patient; txtFamilyFilter: a condition over the primary holders; IsFamilyStatement: one per family; NoZeros: leave out accounts with nothing to pay"},
      {"ReturnFamilyCredit", "PatientID: Long, [IncludePostDates: Boolean]", "Currency", "Statements", "Prints the credit on account of a patient's family.", "12", ""},
      {"rptInvoiceStatement", "ID: Long, Name: String, Address: String", "", "Invoices and receipts", "An invoice with its payments and balance (printed).", "2 \"\" \"\"", "ID: the invoice (Invoices.ID); Name, Address: used only where the database has no name"},
      {"rptReceipt", "ID: Long, Name: String, Address: String", "", "Invoices and receipts", "The receipt of one payment (printed).", "1 \"\" \"\"", "ID: the payment (InvoicePayments.ID); Name, Address: used only where the database has no name"},
      {"rptInvoice", "ID: Long, Name: String, Address: String", "", "Invoices and receipts", "One invoice on the office letterhead.", "1 \"\" \"\"", "ID: the invoice (Invoices.ID); Name, Address: used only where the database has no name"},
      {"rptAccountsReceivable", "Comments: String, txtProvFilter: String, txtInvFilter: String, UserName: String", "", "Receivables", "Aged receivables by provider.", "\"\" \"\" \"\" desk", "Comments: accepted, not printed; txtProvFilter: a condition over Employees; txtInvFilter: a condition over Invoices"},
      {"rptUnAppliedPayments", "dtEndDate: Date, UserName: String", "", "Receivables", "Payments not yet put on any invoice.", "2026-11-20 desk", ""},
      {"srptUnAppliedPayments", "dtEndDate: Date, UserName: String, [strFilter: String]", "", "Receivables", "Payments not yet put on any invoice (section).", "2026-11-20 desk", "strFilter: a condition over the payments"},
      {"srptAccountReceivable", "dtEndDate: Date, Byoption: Integer, ProviderFilter: String, [UserName: String]", "", "Receivables", "Practice-wide aged list, one row per patient, as the month-end run prints it (section).", "2026-11-20 0 \"\" desk", "dtEndDate: the day the debts are aged at", false, true},
      {"rptPatientAccountStatus", "UserName: String, dtEndDate: Date", "", "Receivables", "Aged debts with each patient's money on file.", "desk 2026-11-20", ""},
      {"rptFamiliesWithABalance", "UserName: String", "", "Receivables", "Families that owe money, by primary holder.", "desk", ""},
      {"rptPatientswithOustandingTreatment", "UserName: String", "", "Receivables", "Patients with treatment still open, with credit and balance.", "desk", ""},
      {"rptPatientswithACredit", "UserName: String", "", "Receivables", "Patients with money on file.", "desk", ""},
      {"rptBillingByClient", "UserName: String, txtfilter: String, OfficeAddress: String, OfficeName: String", "", "Receivables", "Each patient's invoices line by line.", "desk \"ID < 80\" \"\" \"\"", ""},
      {"rptPatientsWithABalance", "UserName: String, dtEndDate: Date, txtfilter: String, [SortType: Integer]", "", "Receivables", "Patients owing money at a date, aged by invoice date.", "desk 2026-11-20 \"\"", "SortType: 0 by provider, 1 by overseer, 2 by preferred doctor, 3 by date"},
      {"rptMonthEndSummary", "StartDate: Date, Enddate: Date, txtInvFilter: String, txtPayFilter: String, ProviderNames: String, ProviderID: array of Long", "", "Receivables", "Month-end summary of charges and payments.", "2026-07-01 2026-10-31 \"\" \"\" \"Practice\" \"\"", ""},
      {"rptNonAgedAR", "dtStart: Date, dtEnd: Date, txtPayFilter: String, txtInvFilter: String, UserName: String, ProviderNames: String", "", "Receivables", "Receivables of a period without ageing.", "2026-11-01 2026-11-30 \"\" \"\" desk \"\"", ""},
      {"rptMonthEndAnalysis", "fromdate: Date, todate: Date, txtInvFilter: String, txtPayFilter: String, ProviderNames: String", "", "Receivables", "Month-end analysis of a period.", "2026-11-01 2026-11-30 \"\" \"\" \"\"", ""},
      {"rptPayroll", "strEmployees: String, dtStart: Date, dtEnd: Date, UserName: String", "", "Compensation", "What each listed employee is owed for a period: hours from the time clock, or a dentist's share of collections.", "\"ID = 5 OR ID = 3\" 2026-10-01 2026-10-31 desk", "strEmployees: employee IDs written \"ID = 12 OR ID = 14\", with a blank after each \"=\" (\"ID =12\" reads as ID 2); dtStart, dtEnd: the pay period, whole days"},
      {"rptYearlyEmployeeSummary", "ID: Long, StartDate: Date, Enddate: Date, UnitValue: Integer", "", "Compensation", "One employee's day-by-day monitor by the codes the practice watches, a page a month, with summaries.", "5 2025-11-01 2026-10-31 50", "ID: the employee (Employees.ID); UnitValue: the money of one scheduled unit, -32768 to 32767, for Projected $ when the employee has no income target; the office (--office) needs its hygiene company codes"},
      {"rptSpecialistYearlySummary", "SpecFilter: String, SpecNames: String, StartDate: Date, Enddate: Date", "", "Compensation", "Production, cost and lab costs of each specialist month by month, and the profit over the range.", "\"ID = 8 OR ID = 9 OR ID = 3 OR ID = 5\" \"Vance, Greaves, Holloway, Everly\" 2025-11-01 2026-10-31", "SpecFilter: a condition over Employees, e.g. \"ID = 8 OR ID = 9\"; SpecNames: the names printed under the title"},
      {"rptPartnershipReport", "dtStartDate: Date, dtEndDate: Date, UserName: String", "", "Production", "Production of the partners.", "2026-11-01 2026-11-30 desk", ""},
      {"rptCashInDetailed", "dtStart: Date, dtEnd: Date, txtfilter: String, UserName: String", "", "Period closing", "Money received, payment by payment.", "2026-11-01 2026-11-30 \"\" desk", ""},
      {"srptCashInDetailed", "dtStart: Date, dtEnd: Date, AccountID: String, UserName: String", "", "Period closing", "Money received, payment by payment (section).", "2026-11-01 2026-11-30 \"\" desk", "", false, true},
      {"rptCashInSummary", "dtStart: Date, dtEnd: Date, AccountID: String, UserName: String", "", "Period closing", "Money received, by kind of payment.", "2026-11-01 2026-11-30 \"\" desk", ""},
      {"srptCashInSummary", "dtStart: Date, dtEnd: Date, AccountID: String, UserName: String", "", "Period closing", "Money received, by day and kind of payment (section).", "2026-11-01 2026-11-30 \"\" desk", "", false, true},
      {"rptBankDepositSlip", "StartDate: Date, Enddate: Date, UserName: String, AccountID: Long", "", "Period closing", "The bank deposit slip of a period.", "2026-11-20 2026-11-20 desk 1", ""},
      {"srptBankDepositSlip", "StartDate: Date, Enddate: Date, UserName: String, AccountID: Long", "", "Period closing", "The bank deposit slip (section).", "2026-11-20 2026-11-20 desk 1", ""},
      {"rptMonthEndReport", "DetailedAnalysis: Boolean, SummaryAnalysis: Boolean, AR: Boolean, CashIn: Boolean, CashInAdjustment: Boolean, IncompleteInvoices: Boolean, HygieneCompany: Boolean, dtStart: Date, dtEnd: Date, Byoption: Integer, UserName: String, ProviderNames: String, byAllocatedPayment: Boolean, Unapplied: Boolean, Applied: Boolean, Production: Boolean, NewPatients: Boolean, AccountID: String, [blnProviderSummary: Boolean]", "", "Period closing", "The month-end package: the closing reports chosen by flag in one document.", "True True True True True True True 2026-10-01 2026-10-31 0 desk \"ProviderID = 2 OR ProviderID = 5\" False True True True True \"\" True", "The sections print in the order detailed analysis, summary analysis (one per provider, then practice totals), new patients, aged receivables, cash-in summary, adjustments, incomplete invoices, unapplied, applied, production summary, hygiene company, provider summary, whatever the flags' order; Byoption: 0 by provider, 1 by overseer, 2 by preferred doctor, 3 by date; ProviderNames: a filter \"ProviderID = 2 OR ProviderID = 5\", \"\" for everyone; byAllocatedPayment: True reads only allocated payments; AccountID: a bank account number, \"\" for every account; blnProviderSummary: the partners' provider summary; --setting MonthEndReconciliation=True ends the package with the receivables reconciliation"},
      {"rptDayEndReport", "DetailedAnalysis: Boolean, AppliedPayments: Boolean, ProductionSummary: Boolean, BankDeposit: Boolean, CashIn: Boolean, CashInAdjustment: Boolean, IncompleteInvoices: Boolean, UnAppliedPayments: Boolean, NewPatient: Boolean, ProductionByProvider: Boolean, EDI: Boolean, dtStart: Date, dtEnd: Date, Byoption: Integer, UserName: String, ProviderNames: String, byAllocatedPayment: Boolean, AccountID: String, SummaryAnalysis: Boolean", "", "Period closing", "The day-end package: the closing reports chosen by flag in one document.", "True True True True True True True True True True True 2026-11-16 2026-11-16 0 desk \"ProviderID = 2 OR ProviderID = 5\" False \"\" True", "The sections print in the order detailed analysis, applied payments, production summary, summary analysis, bank deposit slip, cash-in detail, adjustments, incomplete invoices, unapplied, new patients, production by provider, EDI, whatever the flags' order; Byoption: 0 by provider, 1 by overseer, 2 by preferred doctor, 3 by date; ProviderNames: a filter \"ProviderID = 2 OR ProviderID = 5\", \"\" for everyone; byAllocatedPayment: True reads only allocated payments; AccountID: a bank account number, \"\" for every account"},
      {"rptDayEndSummary", "dtStartDate: Date, dtEndDate: Date, UserName: String", "", "Period closing", "Practice analysis: production by category and provider, payment speed, payment types, booked against free units, who booked, planning, referrals and growth, each beside the same days a year before.", "2026-10-01 2026-10-31 desk", "dtStartDate, dtEndDate: whole days; last year is the same dates one calendar year back (Feb 29 reads Feb 28). Free units need the office's UnitMinutes (setting CurrentOffice): when a provider has working hours on file, 0 there stops the run with a message"},
      {"rptIncompleteInvoices", "StartDate: Date, Enddate: Date, OfficeName: String, UserName: String, txtfilter: String", "", "Period closing", "Invoices not yet completed.", "2026-11-01 2026-11-30 \"Demo Dental\" desk \"\"", ""},
      {"srptNewPatientReport", "fromdate: Date, todate: Date", "", "Period closing", "New patients of a period (section).", "2026-11-01 2026-11-30", ""},
      {"srptIncompleteInvoices", "txtfilter: String", "", "Period closing", "Invoices not yet complete (section).", "\"\"", ""},
      {"srptAdjustmentReport", "dtStart: Date, dtEnd: Date, ProviderFilter: String, Byoption: Integer", "", "Period closing", "Invoice reversals and adjustments of a period (section).", "2026-11-01 2026-11-30 \"\" 0", ""},
      {"srptAdjustmentReallocation", "ProviderID: Long, dtStart: Date, dtEnd: Date, Byoption: Integer", "", "Period closing", "Money moved between providers, under the adjustment report (section).", "2 2026-11-01 2026-11-30 0", ""},
      {"rptEDITransactions", "DateFrom: Date, DateTo: Date, UserName: String", "", "Period closing", "Electronic claim transactions of a period.", "2026-11-01 2026-11-30 desk", ""},
      {"srptEDITransactions", "DateFrom: Date, DateTo: Date, UserName: String", "", "Period closing", "Electronic claim transactions (section).", "2026-11-01 2026-11-30 desk", ""},
      {"rptAdjustmentReport", "StartDate: Date, Enddate: Date, UserName: String", "", "Period closing", "Kept for hosts that call it: draws nothing.", "2026-11-01 2026-11-30 desk", "", false, false, true},
      {"rptHygieneCompanyReport", "dtStart: Date, dtEnd: Date, txtfilter: String, UserName: String", "", "Period closing", "The hygiene company report.", "2026-11-01 2026-11-30 \"\" desk", ""},
      {"rptProductionReports", "ProductionByCode: Boolean, ProductionByProvider: Boolean, ProductionByOverseer: Boolean, ProductionSummary: Boolean, ProductionSummaryCode: Boolean, ProductionByCategory: Boolean, dtStart: Date, dtEnd: Date, byDate: Integer, UserName: String, ProviderNames: String, Startcode: String, Endcode: String", "", "Production", "Production reports chosen by flag.", "True False False False False False 2026-11-01 2026-11-30 0 desk \"\" \"\" \"\"", ""},
      {"ProductSumReport", "dtStartDate: Date, dtEndDate: Date, UserName: String", "", "Production", "Product summary of a period.", "2026-11-01 2026-11-30 desk", ""},
      {"rptIncomeByProvider", "dtStartDate: Date, dtEndDate: Date, strProviderFilter: String, Overseeing: Boolean, UserName: String", "", "Production", "Income by provider.", "2026-11-01 2026-11-30 \"\" False desk", ""},
      {"srptDetailedAnalysis", "dtStart: Date, dtEnd: Date, Byoption: Integer, UserName: String, ProviderNames: String, byAllocatedPayment: Boolean", "", "Period closing", "Treatment, payments and write-offs of a period by provider, overseer, doctor or date (section).", "2026-11-01 2026-11-30 0 desk \"ProviderID = 3 OR ProviderID = 5\" True", "Byoption: 0 provider, 1 overseer, 2 preferred doctor, 3 date; ProviderNames: a condition over ProviderID, \"\" for all; byAllocatedPayment: False adds the unallocated share of each payment", false, true},
      {"srptSummaryAnalysis", "dtStart: Date, dtEnd: Date, ProviderFilter: String, Byoption: Integer, Title: String, byAllocatedPayment: Boolean", "", "Period closing", "Summary analysis of a period, day by day: treatment, payments, adjustments and the receivable (section).", "2026-11-01 2026-11-30 \"\" 0 \"Summary Analysis\" True", "ProviderFilter: a condition over ProviderID, \"\" for all; Byoption: 0 provider, 1 overseer, 2 preferred doctor, 3 date"},
      {"rptClaimForm", "ID: Long, CurrentOfficeID: Long, [InsuranceCompany: Integer]", "", "Insurance claims", "An insurance claim form (printed).", "1 1", "ID: the invoice (Invoices.ID); InsuranceCompany: whose assignment decides the payee: 0 the primary insurer (the default), 1 the secondary, 2 the tertiary, 3 the subscriber boxes left blank and the form payable to the subscriber"},
      {"rptClaimFormF", "ID: Long, CurrentOfficeID: Long, [InsuranceCompany: Integer]", "", "Insurance claims", "An insurance claim form in French (printed).", "1 1", "ID: the invoice (Invoices.ID); InsuranceCompany: whose assignment decides the payee: 0 the primary insurer (the default), 1 the secondary, 2 the tertiary, 3 the subscriber boxes left blank and the form payable to the subscriber"},
      {"rptPredClaimForm", "ID: Long, CurrentOfficeID: Long, strFilter: String", "", "Insurance claims", "A predetermination form (printed).", "1 1 \"\"", "ID: the treatment plan (PatientPredTreatments.ID); strFilter: a condition over the plan's lines, put behind the plan's key as it stands, so it begins with AND, e.g. \"AND LineNumber <= 8\" (0 or \"\" for every line)"},
      {"rptPredClaimFormF", "ID: Long, CurrentOfficeID: Long, strFilter: String", "", "Insurance claims", "A predetermination form in French (printed).", "1 1 \"\"", "ID: the treatment plan (PatientPredTreatments.ID); strFilter: a condition over the plan's lines, put behind the plan's key as it stands, so it begins with AND, e.g. \"AND LineNumber <= 8\" (0 or \"\" for every line)"},
      {"rptInsuranceBilling", "UserName: String", "", "Insurance claims", "Insurance billing list.", "desk", ""},
      {"rptLaypersonTreatmentPlan", "OfficeName: String, OfficeAddress: String, ID: Long, strFilter: String", "", "Treatment plans", "A treatment plan for the patient (printed).", "\"Demo Dental\" \"1 Main St\" 12 \"\"", "ID: the treatment plan (PatientPredTreatments.ID); strFilter: a condition over the plan's lines, put behind the plan's key as it stands, so it begins with AND, e.g. \"AND LineNumber <= 8\" (0 or \"\" for every line)"},
      {"rptLaypersonTreatmentPlanF", "OfficeName: String, OfficeAddress: String, ID: Long, strFilter: String", "", "Treatment plans", "A treatment plan for the patient in French (printed).", "\"Demo Dental\" \"1 Main St\" 12 \"\"", "ID: the treatment plan (PatientPredTreatments.ID); strFilter: a condition over the plan's lines, put behind the plan's key as it stands, so it begins with AND, e.g. \"AND LineNumber <= 8\" (0 or \"\" for every line)"},
      {"rptReferralReports", "blnRefDentistList: Boolean, blnRefDentistType: Boolean, blnRefDetailed: Boolean, blnRefPatient: Boolean, blnRefSummary: Boolean, blnRefAlert: Boolean, dtStart: Date, dtEnd: Date, UserName: String, ProviderNames: String, Category: Long, [arrProviderIDs: array of Long], [OrderFlag: Long]", "", "Referrals", "The referral package: procedure types, details, the referral summary and alerts, by flag.", "False True True False True True 2026-01-01 2026-11-30 desk \"\" 0 1,2,3 1", "blnRefDentistList, blnRefPatient, Category: accepted, no effect; blnRefSummary: the referral production summary (it may ask to repair referral links: --answer yes); arrProviderIDs: the providers whose referral alerts print, and for the details the preferred doctors; OrderFlag: 0 by preferred doctor, 1 by referring dentist, 3 by number of referred patients, other values print no details"},
      {"srptReferringDentistList", "", "", "Referrals", "Referring dentists with the date each last referred a patient (section).", "", ""},
      {"srptReferringDentistType", "dtStart: Date, dtEnd: Date", "", "Referrals", "Procedure types of referred patients (the codes billed to each referring dentist's patients in the period, with counts) (section).", "2026-01-01 2026-11-30", "dtStart, dtEnd: the invoices' dates"},
      {"srptReferringDentistSummary", "Stardate: Date, Enddate: Date, [SortBy: Long]", "", "Referrals", "Referral summary per referring dentist (patients signed up in the period, their billing and payments) (section).", "2026-01-01 2026-11-30", "Stardate, Enddate: the patients' sign-up dates; billing and payments are all time; SortBy: accepted, the order is by name"},
      {"srptReferringDentistDetailed", "StartDate: Date, Enddate: Date, [arrProviderIDs: array of Long], [SortBy: Long]", "", "Referrals", "Referred patients signed up in the period, grouped (section).", "2026-01-01 2026-11-30 \"\" 3", "arrProviderIDs: preferred doctors (Employees.ID) to keep, empty for all; SortBy: 0 by preferred doctor, 1 by referring dentist, 3 by number of referred patients"},
      {"srptRefferedByPatient", "dtStart: Date, dtEnd: Date", "", "Referrals", "Patients signed up in the period who were referred by someone (section).", "2026-01-01 2026-11-30", ""},
      {"ReferralProductSumReport", "dtStartDate: Date, dtEndDate: Date, UserName: String", "", "Referrals", "Fees and payments of the period per referring dentist, and the hygienists' production.", "2026-11-01 2026-11-30 desk", "Broken referral links are offered for repair first: --answer yes repairs, the default no leaves the data"},
      {"CheckRelationships", "strLookupTable: String, lngField: String, strForeignKeyTable: String, lngFkField: String", "Boolean", "Referrals", "Checks that every key of a table names a row of another; offers to repair referral links.", "ReferringDentists ID Patient ReferringDentistID", "Prints True when no broken link remains; --answer yes repairs (placeholder dentists 'No Referring Dentist' and 'Deleted Referring Dentist')"},
  };
  return catalog;
}

const MethodSignature* FindMethod(const std::string& name) {
  for (const auto& m : MethodCatalog()) {
    if (vb::LCase(m.name) == vb::LCase(name)) return &m;
  }
  return nullptr;
}

bool DrawsIntoRunningDocument(const MethodSignature& m) {
  return m.section || std::string(m.name).rfind("srpt", 0) == 0;
}

const std::vector<std::pair<std::string, int>>& EnumerationMembers(const std::string& type) {
  static const std::map<std::string, std::vector<std::pair<std::string, int>>> enums = {
      {"RescheduleTypes",
       {{"NoShow", 1}, {"ShortNotice", 2}, {"Office", 3}, {"All", 4}, {"NoShowAndShortNotice", 5}}},
      {"iPosition", {{"rptTop", 1}, {"rptBottom", 2}, {"rptMiddle", 3}, {"rptTwo", 4}}},
      {"AddressParts", {{"Street1", 0}, {"Street2", 1}, {"City", 2}, {"Prov", 3}, {"Postal", 4}}},
  };
  static const std::vector<std::pair<std::string, int>> none;
  auto it = enums.find(type);
  return it == enums.end() ? none : it->second;
}

std::string ParamMeaning(const MethodSignature& m, const Param& p) {
  // The method's own note first: "ID: the payment (InvoicePayments.ID); ..."
  std::string notes = m.notes;
  size_t pos = 0;
  while (pos < notes.size()) {
    size_t end = notes.find("; ", pos);
    std::string item = notes.substr(pos, end == std::string::npos ? std::string::npos : end - pos);
    pos = end == std::string::npos ? notes.size() : end + 2;
    size_t colon = item.find(": ");
    if (colon == std::string::npos) continue;
    // "Name, Address: ..." describes several parameters at once.
    std::string names = item.substr(0, colon);
    size_t at = 0;
    while (at <= names.size()) {
      size_t comma = names.find(", ", at);
      std::string one = names.substr(at, comma == std::string::npos ? std::string::npos : comma - at);
      if (vb::LCase(one) == vb::LCase(p.name)) return item.substr(colon + 2);
      if (comma == std::string::npos) break;
      at = comma + 2;
    }
  }
  // Then what the name means across the component.
  static const std::map<std::string, const char*> by_name = {
      {"txtfilter", "a SQL condition that selects the rows (0 or \"\" for all)"},
      {"strfilter", "a SQL condition that selects the rows (0 or \"\" for all)"},
      {"txtinvfilter", "a SQL condition over Invoices (0 or \"\" for all)"},
      {"txtpayfilter", "a SQL condition over the payments (0 or \"\" for all)"},
      {"txtprovfilter", "a SQL condition over Employees, the providers (0 or \"\" for all)"},
      {"providerfilter", "a SQL condition over ProviderID (\"\" for all)"},
      {"username", "the signed-in user, printed as \"By:\" (default: --user)"},
      {"providernames", "the providers' names as the heading lists them (\"\" for none)"},
      {"officename", "the office's name as printed"},
      {"officeaddress", "the office's address as printed"},
      {"officephone", "the office's phone as printed"},
      {"header", "the heading text"},
      {"footer", "the text at the foot"},
      {"title", "the heading text"},
      {"patientname", "the patient's name as printed (\"\" to read it from the database)"},
      {"unitminutes", "minutes per booking unit"},
      {"accountid", "the bank account (\"\" for all)"},
      {"category", "a procedure category (0 for all)"},
      {"byoption", "0 by provider, 1 by overseer, 2 by preferred doctor, 3 by date"},
      {"currentofficeid", "the office printed on the form (OfficeInformation.ID)"},
      {"patientid", "the patient (Patient.ID)"},
      {"officeid", "the office (OfficeInformation.ID)"},
      {"id", "the record the report prints, by its number"},
  };
  std::string lname = vb::LCase(p.name);
  if (auto it = by_name.find(lname); it != by_name.end()) return it->second;
  if (p.type == "Date") {
    if (lname.find("start") != std::string::npos || lname.find("from") != std::string::npos)
      return "the first day of the period";
    if (lname.find("end") != std::string::npos || lname.find("to") != std::string::npos)
      return "the last day of the period";
    return "the day";
  }
  if (p.type == "Boolean" && (lname.rfind("bln", 0) == 0 || m.summary[0] != 0))
    return "include this part (True) or not (False)";
  return "";
}

std::string ParamForm(const Param& p) {
  const std::string& t = p.type;
  if (t == "String" || t == "Variant") {
    std::string l = vb::LCase(p.name);
    if (l.find("filter") != std::string::npos)
      return "a SQL condition in quotes; 0 or \"\" for none";
    return "text, in quotes when it holds blanks";
  }
  if (t == "Long") return "a whole number from -2147483648 to 2147483647, e.g. 12";
  if (t == "Integer") return "a whole number from -32768 to 32767, e.g. 10";
  if (t == "Date") return "a date yyyy-mm-dd (1753-01-01 to 9999-12-31), optionally with hh:mm[:ss], e.g. 2026-11-20";
  if (t == "Boolean") return "True or False (also 1/0, -1, yes/no)";
  if (t == "Currency") return "an amount with up to four decimals, e.g. 125.50";
  if (t == "array of Long") return "numbers separated by commas, e.g. 12,14,20";
  if (!EnumerationMembers(t).empty()) {
    std::string s = "a name or its number:";
    for (const auto& [name, value] : EnumerationMembers(t)) s += " " + name + "=" + std::to_string(value);
    return s;
  }
  return "cannot be given on the command line";
}

}  // namespace orv::app

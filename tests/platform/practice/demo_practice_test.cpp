// The demo practice checked with raw SQL: the money relationships the
// account reports compute with, keys that point somewhere, every column
// filled, and the same file for the same seed.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <fstream>
#include <iterator>
#include <string>

#include "platform/practice/demo_practice.h"
#include "support/shell.h"

namespace orv::practice {
namespace {

// The first value `sql` reads as a number; -1 when it reads no row.
long long CountIn(sqlite3* db, const std::string& sql) {
  sqlite3_stmt* st = nullptr;
  EXPECT_EQ(sqlite3_prepare_v2(db, sql.c_str(), -1, &st, nullptr), SQLITE_OK) << sql;
  long long n = -1;
  if (sqlite3_step(st) == SQLITE_ROW) n = sqlite3_column_int64(st, 0);
  sqlite3_finalize(st);
  return n;
}

class DemoPractice : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    sqlite3_open(":memory:", &db_);
    DemoOptions o;
    o.patients = 500;
    o.seed = 7;
    summary_ = WriteDemoPractice(db_, o);
  }
  static void TearDownTestSuite() { sqlite3_close(db_); }

  static long long Count(const std::string& sql) { return CountIn(db_, sql); }

  static sqlite3* db_;
  static DemoSummary summary_;
};
sqlite3* DemoPractice::db_ = nullptr;
DemoSummary DemoPractice::summary_;

TEST_F(DemoPractice, MakesThePatientsAskedForWithHistory) {
  EXPECT_EQ(Count("SELECT COUNT(*) FROM Patient"), 500);
  EXPECT_GT(summary_.invoices, 1000);
  EXPECT_GT(summary_.payments, 1000);
  EXPECT_GT(Count("SELECT COUNT(*) FROM PatientAppointments WHERE Date > '2026-11-20'"), 50);
}

// The money relationships the account reports compute with: each statement
// counts the rows that break one, and none may.
TEST_F(DemoPractice, NoRowBreaksTheMoneyRules) {
  struct {
    const char* rule;
    const char* breaking;  // counts the rows that break it
  } const rules[] = {
      {"an invoice's total is the sum of its lines",
       "SELECT COUNT(*) FROM Invoices i WHERE ROUND(InvoiceTotal, 2) <> "
       "(SELECT ROUND(SUM(Cost), 2) FROM InvoiceDetails d WHERE d.InvoiceID = i.ID)"},
      {"a line splits into the patient's and the insurers' shares",
       "SELECT COUNT(*) FROM InvoiceDetails WHERE ROUND(Cost - PatientCost - "
       "PrimaryInsCost - SecondaryInsCost - IFNULL(TertiaryInsCost, 0), 2) <> 0"},
      {"an assigned invoice's PatientTotal is the patients' share of its lines",
       "SELECT COUNT(*) FROM Invoices i WHERE IsAssignment <> 0 AND "
       "ROUND(PatientTotal, 2) <> (SELECT ROUND(SUM(PatientCost), 2) FROM "
       "InvoiceDetails d WHERE d.InvoiceID = i.ID)"},
      {"a payment's allocated total is the sum of its details",
       "SELECT COUNT(*) FROM InvoicePayments p WHERE ROUND(TotalAllocated, 2) <> "
       "ROUND(IFNULL((SELECT SUM(Amount) FROM InvoicePaymentDetails d WHERE "
       "d.InvoicePaymentID = p.ID), 0), 2)"},
      {"a payment's details plus its credit equal its value",
       "SELECT COUNT(*) FROM InvoicePayments WHERE "
       "ROUND(Value - TotalAllocated - TotalToCredit, 2) <> 0"},
      {"a payment's allocations add up to its details",
       "SELECT COUNT(*) FROM InvoicePayments p WHERE ROUND(TotalAllocated, 2) <> "
       "ROUND(IFNULL((SELECT SUM(Amount) FROM InvoicePaymentAllocations a WHERE "
       "a.InvoicePaymentID = p.ID), 0), 2)"},
      {"allocations lie on complete lines of the payer's family",
       "SELECT COUNT(*) FROM InvoicePaymentAllocations a "
       "JOIN InvoiceDetails d ON d.ID = a.InvoiceDetailsID "
       "JOIN Invoices i ON i.ID = d.InvoiceID "
       "JOIN InvoicePayments p ON p.ID = a.InvoicePaymentID "
       "JOIN Patient payer ON payer.ID = p.PatientID "
       "JOIN Patient owner ON owner.ID = i.PatientID "
       "WHERE d.Status <> 'Complete' OR a.PatientID <> i.PatientID OR "
       "payer.ResponsibleFamilyMemberID <> owner.ResponsibleFamilyMemberID"},
      // A reversal line (negative cost) takes back a charge and receives
      // nothing.
      {"no line receives more than it costs",
       "SELECT COUNT(*) FROM InvoiceDetails d WHERE d.Cost >= 0 AND "
       "ROUND((SELECT IFNULL(SUM(Amount), 0) "
       "FROM InvoicePaymentAllocations a WHERE a.InvoiceDetailsID = d.ID), 2) > "
       "ROUND(d.Cost, 2)"},
      {"a bulk payment adds up its insurer payments",
       "SELECT COUNT(*) FROM BulkPayments b WHERE ROUND(Amount, 2) <> ROUND((SELECT "
       "SUM(p.Value) FROM BulkPaymentDetails x JOIN InvoicePayments p ON p.ID = "
       "x.InvoicePaymentID WHERE x.BulkPaymentID = b.ID), 2)"},
      {"a paid-off invoice carries its final figures",
       "SELECT COUNT(*) FROM Invoices i WHERE FinalDate IS NOT NULL AND "
       "ROUND(InvoiceTotal, 2) <> ROUND((SELECT SUM(Amount) FROM "
       "InvoicePaymentDetails d WHERE d.InvoiceID = i.ID), 2)"},
  };
  for (const auto& r : rules) EXPECT_EQ(Count(r.breaking), 0) << r.rule;
  // The rules hold over rows that are there.
  EXPECT_GT(Count("SELECT COUNT(*) FROM BulkPayments"), 0);
  EXPECT_GT(Count("SELECT COUNT(*) FROM Invoices WHERE FinalDate IS NOT NULL"), 0);
}

TEST_F(DemoPractice, EveryKindOfPaymentOccurs) {
  for (int type = 1; type <= 11; ++type)
    EXPECT_GT(Count("SELECT COUNT(*) FROM InvoicePayments WHERE PaymentTypeID = " +
                    std::to_string(type)),
              0)
        << "payment type " << type;
  // Post-dated cheques and open invoices (credits, interest and
  // cancellations: every recent month holds them, below).
  EXPECT_GT(Count("SELECT COUNT(*) FROM InvoicePayments WHERE CheckDate > '2026-11-20'"), 0);
  EXPECT_GT(Count("SELECT COUNT(*) FROM Invoices WHERE [Complete?] = 0"), 0);
}

struct Link {
  const char* table;
  const char* column;
  const char* target;
};
const Link kLinks[] = {
    {"Invoices", "PatientID", "Patient"},          {"Invoices", "ProviderID", "Employees"},
    {"Invoices", "AppointmentID", "PatientAppointments"},
    {"Invoices", "InterestInvoiceID", "Invoices"}, {"InvoiceDetails", "InvoiceID", "Invoices"},
    {"InvoicePayments", "PatientID", "Patient"},   {"InvoicePayments", "PaymentTypeID", "PaymentTypes"},
    {"InvoicePayments", "AccountID", "Accounts"},  {"InvoicePayments", "InsuranceID", "InsuranceCompany"},
    {"InvoicePaymentDetails", "InvoicePaymentID", "InvoicePayments"},
    {"InvoicePaymentDetails", "InvoiceID", "Invoices"},
    {"InvoicePaymentAllocations", "InvoiceDetailsID", "InvoiceDetails"},
    {"BulkPaymentDetails", "InvoicePaymentID", "InvoicePayments"},
    {"Patient", "ResponsibleFamilyMemberID", "Patient"}, {"Patient", "PrimaryHolderID", "Patient"},
    {"Patient", "SecondaryHolderID", "Patient"},   {"Patient", "DoctorID", "Employees"},
    {"Patient", "ReferringDentistID", "ReferringDentists"}, {"Patient", "EmployerID", "Employers"},
    {"Patient", "InsuranceID", "InsuranceCompany"}, {"Patient", "OfficeID", "OfficeInformation"},
    {"PatientAppointments", "PatientID", "Patient"}, {"PatientAppointments", "ProcedureCat", "ProcedureCategories"},
    {"PatientAppointmentCodes", "PatientAppointmentID", "PatientAppointments"},
    {"PatientAppointmentCodes", "Code", "FeeCodes"}, {"InvoiceDetails", "Code", "FeeCodes"},
    {"PatientEDIResponses", "EDISendID", "PatientEDISends"},
    {"PatientPredTreatmentDetails", "PatientPredTreatmentsID", "PatientPredTreatments"},
    {"PatientProgressNoteDetails", "PatientProgressNoteID", "PatientProgressNotes"},
    {"Employers", "InsuranceID", "InsuranceCompany"}, {"Punch", "UserID", "Employees"},
};

TEST_F(DemoPractice, NoKeyPointsNowhere) {
  for (const auto& l : kLinks) {
    // Older records store 0 for "no holder"; it points at no one on purpose.
    const bool zero_is_none = std::string(l.column).find("HolderID") != std::string::npos;
    const std::string sql = std::string("SELECT COUNT(*) FROM ") + l.table + " x WHERE x." +
                            l.column + " IS NOT NULL" +
                            (zero_is_none ? std::string(" AND x.") + l.column + " <> 0" : "") +
                            " AND NOT EXISTS (SELECT 1 FROM " + l.target + " t WHERE t.ID = x." +
                            l.column + ")";
    EXPECT_EQ(Count(sql), 0) << l.table << "." << l.column;
  }
}

TEST_F(DemoPractice, EveryColumnIsFilledSomewhere) {
  for (const auto& t : Tables())
    for (const auto& c : t.columns)
      EXPECT_GT(Count("SELECT COUNT(*) FROM " + QuoteName(t.name) + " WHERE " +
                      QuoteName(c.name) + " IS NOT NULL"),
                0)
          << t.name << "." << c.name;
}

// Each of the last six months holds every case the period-closing figures
// must get right; a month without one would let a fault in that case pass
// unseen on the demo.
TEST_F(DemoPractice, EveryRecentMonthHoldsTheClosingCases) {
  struct Case {
    const char* name;
    const char* sql;  // counts rows of month ?1 (yyyy-mm)
    int at_least = 1;
  } const cases[] = {
      {"money moved from the overseer to another provider days after the cheque",
       "SELECT COUNT(*) FROM InvoicePayments p JOIN InvoicePaymentAllocations a ON "
       "a.InvoicePaymentID = p.ID JOIN InvoiceDetails d ON d.ID = a.InvoiceDetailsID JOIN "
       "Invoices i ON i.ID = d.InvoiceID WHERE p.CheckDate <> a.AppliedDate AND "
       "p.InitialProviderID <> d.ProviderID AND p.InitialProviderID = i.OverseerID AND "
       "substr(a.AppliedDate, 1, 7) = ?1"},
      {"a cheque with a credit left over", "SELECT COUNT(*) FROM InvoicePayments WHERE "
       "TotalToCredit > 0 AND TotalAllocated > 0 AND substr(CheckDate, 1, 7) = ?1"},
      {"an invoice cancelled in its own month",
       "SELECT COUNT(*) FROM Invoices WHERE Cancelled = 1 AND substr(CancellationDate, 1, 7) = "
       "?1 AND substr([Date], 1, 7) = ?1"},
      {"an invoice without lines",
       "SELECT COUNT(*) FROM Invoices i WHERE substr([Date], 1, 7) = ?1 AND NOT EXISTS (SELECT 1 "
       "FROM InvoiceDetails d WHERE d.InvoiceID = i.ID)"},
      {"a line posted after its treatment date",
       "SELECT COUNT(*) FROM InvoiceDetails WHERE [Date] < EntryDate AND substr(EntryDate, 1, 7) "
       "= ?1"},
      {"a limited exam", "SELECT COUNT(*) FROM InvoiceDetails WHERE Code = '00100' AND "
       "substr(EntryDate, 1, 7) = ?1"},
      {"a reversed exam", "SELECT COUNT(*) FROM InvoiceDetails WHERE Code = '-01101' AND Cost < 0 "
       "AND substr(EntryDate, 1, 7) = ?1"},
      {"a reversed lab fee", "SELECT COUNT(*) FROM InvoiceDetails WHERE Code LIKE '-99%' AND Cost < 0 "
       "AND substr(EntryDate, 1, 7) = ?1"},
      {"a write-off", "SELECT COUNT(*) FROM InvoicePayments p JOIN PaymentTypes t ON t.ID = "
       "p.PaymentTypeID WHERE t.OfficePayment = 1 AND substr(p.CheckDate, 1, 7) = ?1"},
      {"an interest charge", "SELECT COUNT(*) FROM Invoices WHERE ChargeInterest = 1 AND "
       "InterestInvoiceID IS NOT NULL AND substr([Date], 1, 7) = ?1"},
      {"a hygienist paid for codes inside and outside the hygiene ranges",
       "SELECT COUNT(DISTINCT CASE WHEN d.Code BETWEEN '11000' AND '11999' THEN 1 ELSE 0 END) "
       "FROM InvoiceDetails d JOIN Employees e ON e.ID = d.ProviderID JOIN "
       "InvoicePaymentAllocations a ON a.InvoiceDetailsID = d.ID WHERE e.TypeID = 5 AND "
       "substr(d.EntryDate, 1, 7) = ?1",
       2},
  };
  for (const char* month : {"2026-06", "2026-07", "2026-08", "2026-09", "2026-10", "2026-11"}) {
    for (const Case& c : cases) {
      std::string sql = c.sql;
      for (size_t at; (at = sql.find("?1")) != std::string::npos;)
        sql.replace(at, 2, std::string("'") + month + "'");
      EXPECT_GE(Count(sql), c.at_least) << c.name << " in " << month;
    }
  }
  // Invoices cancelled in a later month than they were entered.
  EXPECT_GE(Count("SELECT COUNT(*) FROM Invoices WHERE Cancelled = 1 AND "
                  "substr(CancellationDate, 1, 7) > substr([Date], 1, 7) AND [Date] >= '2026-06-01'"),
            5);
  // Dates that reports compare by the day hold midnight.
  for (const char* column : {"Invoices.[Date]", "Invoices.CancellationDate", "InvoiceDetails.[Date]",
                             "InvoiceDetails.EntryDate", "InvoicePayments.[Date]",
                             "InvoicePayments.CheckDate", "InvoicePaymentDetails.[Date]",
                             "InvoicePaymentAllocations.AppliedDate"}) {
    const std::string c = column;
    const std::string table = c.substr(0, c.find('.'));
    EXPECT_EQ(Count("SELECT COUNT(*) FROM " + table + " WHERE " + c + " IS NOT NULL AND substr(" +
                    c + ", 12) <> '00:00:00'"),
              0)
        << column;
  }
}

// The paper claim form has eight procedure lines; the desk must be able to
// try one that runs past them, for an insured patient.
TEST_F(DemoPractice, AClaimHasMoreLinesThanThePaperForm) {
  EXPECT_GE(Count("SELECT COUNT(*) FROM Invoices i JOIN Patient p ON p.ID = i.PatientID JOIN "
                  "Employers e ON e.ID = p.EmployerID WHERE e.InsuranceID > 0 AND (SELECT "
                  "COUNT(*) FROM InvoiceDetails d WHERE d.InvoiceID = i.ID AND d.Cost <> 0 AND "
                  "instr(d.Code, '-') = 0) >= 9"),
            1);
}

TEST_F(DemoPractice, AddressesHaveTheLinesThatReturnAddressPartTakesApart) {
  // Street CR LF [street 2 CR LF] "City, PR" CR LF postal code.
  EXPECT_EQ(Count("SELECT COUNT(*) FROM Patient WHERE Address NOT LIKE '%' || char(13, 10) || "
                  "'%, __' || char(13, 10) || '___ ___'"),
            0);
  EXPECT_GT(Count("SELECT COUNT(*) FROM Patient WHERE Language = 'F'"), 0);
}

using orv::testing::FileBytes;

TEST(DemoPracticeFile, SameSeedGivesTheSameFileAndAnotherSeedAnother) {
  const std::string dir = ::testing::TempDir();
  DemoOptions o;
  o.patients = 60;
  o.seed = 3;
  WriteDemoPracticeFile(dir + "demo_a.db", o);
  WriteDemoPracticeFile(dir + "demo_b.db", o);
  o.seed = 4;
  WriteDemoPracticeFile(dir + "demo_c.db", o);
  const std::string a = FileBytes(dir + "demo_a.db");
  EXPECT_FALSE(a.empty());
  EXPECT_EQ(a, FileBytes(dir + "demo_b.db"));
  EXPECT_NE(a, FileBytes(dir + "demo_c.db"));
}

// No patients: a new practice's tables, all of them, each empty; fewer
// than none is refused.
TEST(DemoPracticeFile, NoPatientsIsANewPracticesEmptyTables) {
  sqlite3* db = nullptr;
  sqlite3_open(":memory:", &db);
  DemoOptions o;
  o.patients = 0;
  const DemoSummary s = WriteDemoPractice(db, o);
  EXPECT_EQ(s.rows, 0);
  for (const Table& t : Tables())
    EXPECT_EQ(CountIn(db, "SELECT COUNT(*) FROM " + QuoteName(t.name)), 0) << t.name;
  o.patients = -1;
  EXPECT_THROW(WriteDemoPractice(db, o), SchemaError);
  sqlite3_close(db);
}

}  // namespace
}  // namespace orv::practice

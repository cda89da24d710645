// Translation without rows: errors with their positions, result column
// names and kinds, writes, and statements of the sizes the reports build.
// (The text printed for PostgreSQL, where the text itself matters:
// print_postgres_test.cpp.)
#include <gtest/gtest.h>

#include <chrono>

#include "platform/sql/date_text.h"
#include "sql_test_support.h"

namespace orv::sql::testing {
namespace {

struct ErrorCase {
  const char* name;
  const char* tsql;
  const char* reason;  // a part of the description
  int line, column;
};

TEST(SqlErrors, ReasonLineColumnAndStatement) {
  FixtureDb db;
  const ErrorCase cases[] = {
      {"unknown_table", "SELECT * FROM Patients", "Invalid object name 'Patients'", 1, 15},
      {"unknown_column", "SELECT Nickname FROM Patient", "Invalid column name 'Nickname'", 1, 8},
      // SQLite would read an unknown double-quoted or bare name as text.
      {"bare_word_is_no_string", "SELECT ID FROM Patient WHERE LastName = Tremblay", "Invalid column name 'Tremblay'", 1,
       41},
      {"ambiguous_column", "SELECT ID FROM Patient INNER JOIN Invoices ON Patient.ID = Invoices.PatientID",
       "Ambiguous column name 'ID'", 1, 8},
      {"unbound_qualifier", "SELECT Patientx.ID FROM Patient", "could not be bound", 1, 8},
      {"unclosed_parenthesis", "SELECT ID FROM Patient WHERE (LastName = 'x'", "Expected ')'", 1, 45},
      {"dangling_and", "SELECT ID FROM Patient WHERE AND ID = 1", "Incorrect syntax near 'AND'", 1, 30},
      {"filter_with_value_only", "SELECT ID FROM Patient WHERE (ID)", "non-boolean", 1, 31},
      {"unknown_function", "SELECT FOO(ID) FROM Patient", "'FOO' is not a recognized built-in function name", 1, 8},
      {"not_a_date", "SELECT ID FROM Invoices WHERE [Date] >= '2026-13-45'", "Conversion failed", 1, 41},
      {"position_on_third_line", "SELECT ID\nFROM Patient\nWHERE Foo = 1", "Invalid column name 'Foo'", 3, 7},
      {"variable", "SELECT @x", "Variables are not supported", 1, 8},
      {"unclosed_string", "SELECT 'abc", "Unclosed quotation mark", 1, 8},
      {"union_order_not_in_list", "SELECT ID FROM Reasons UNION ALL SELECT ID FROM FeeGuides ORDER BY Name",
       "must appear in the select list", 1, 68},
      {"unsupported_clause", "SELECT ID FROM Patient FOR XML AUTO", "Unsupported clause FOR", 1, 24},
      {"sum_of_text", "SELECT SUM(LastName) FROM Patient", "invalid for sum operator", 1, 8},
      {"aggregate_in_where", "SELECT ID FROM Patient WHERE COUNT(*) > 1", "aggregate may not appear", 1, 30},
      {"union_width", "SELECT ID, Name FROM Reasons UNION SELECT ID FROM FeeGuides", "equal number of expressions", 1,
       36},
      {"true_with_less_than", "SELECT ID FROM Invoices WHERE [Complete?] < True", "only be compared with = or <>", 1,
       43},
  };
  for (const ErrorCase& c : cases) {
    SCOPED_TRACE(c.name);
    try {
      Translate(c.tsql, db.schema(), Dialect::SQLite);
      ADD_FAILURE() << "no error for " << c.tsql;
    } catch (const SqlError& e) {
      EXPECT_NE(std::string::npos, e.description().find(c.reason)) << e.description();
      EXPECT_NE(std::string::npos, e.description().find(c.tsql)) << e.description();
      EXPECT_EQ(c.line, e.line()) << e.description();
      EXPECT_EQ(c.column, e.column()) << e.description();
    }
  }
}

struct KindCase {
  const char* name;
  const char* tsql;
  std::vector<ResultColumn> columns;
};

std::string Describe(const std::vector<ResultColumn>& columns) {
  std::string s;
  for (const ResultColumn& c : columns) s += "{" + c.name + ", " + std::to_string(static_cast<int>(c.kind)) + "} ";
  return s;
}

// Names and kinds of result columns as SQL Server types them.
// https://learn.microsoft.com/en-us/sql/t-sql/data-types/money-and-smallmoney-transact-sql
// https://learn.microsoft.com/en-us/sql/t-sql/functions/sum-transact-sql
// https://learn.microsoft.com/en-us/sql/t-sql/functions/avg-transact-sql
TEST(SqlResultColumns, NamesAndKinds) {
  FixtureDb db;
  using K = ValueKind;
  const KindCase cases[] = {
      {"columns_and_expressions",
       "SELECT ID, [Date], InvoiceTotal, notes, ISNULL(PatientTotal, 0) AS P, -InvoiceTotal AS Neg, InvoiceTotal * 2 "
       "AS Dbl, [Time] / 60 AS H, [Date] + 1 AS Tomorrow, 1.5 * 2 AS D FROM Invoices",
       {{"ID", K::Integer},
        {"Date", K::Date},
        {"InvoiceTotal", K::Money},
        {"notes", K::Text},
        {"P", K::Money},
        {"Neg", K::Money},
        {"Dbl", K::Money},
        {"H", K::Integer},
        {"Tomorrow", K::Date},
        {"D", K::Decimal}}},
      {"aggregates",
       "SELECT COUNT(*), SUM(InvoiceTotal) AS S, SUM(InvoiceTotal) - SUM(PatientTotal) AS Diff, AVG([Time]) AS A, "
       "MAX([Date]) AS Latest FROM Invoices",
       {{"", K::Integer}, {"S", K::Money}, {"Diff", K::Money}, {"A", K::Integer}, {"Latest", K::Date}}},
      {"casts",
       "SELECT InLast, CAST(AtLeast AS float) AS F, CAST(InLast AS decimal(10, 2)) AS Dec, CAST(AtLeast AS varchar(5)) "
       "AS T, CAST(AtLeast AS money) AS M FROM ReferralAlerts",
       {{"InLast", K::Float}, {"F", K::Float}, {"Dec", K::Decimal}, {"T", K::Text}, {"M", K::Money}}},
      {"star_then_alias", "SELECT Reasons.*, 'x' AS Flag FROM Reasons",
       {{"ID", K::Integer}, {"Name", K::Text}, {"Flag", K::Text}}},
      {"union_takes_first_names", "SELECT NULL AS A, Name FROM Reasons UNION ALL SELECT Amount, 'x' FROM FeeGuideDetails",
       {{"A", K::Money}, {"Name", K::Text}}},
  };
  for (const KindCase& c : cases) {
    SCOPED_TRACE(c.name);
    Translation t = Translate(c.tsql, db.schema(), Dialect::SQLite);
    EXPECT_TRUE(t.is_query);
    EXPECT_EQ(Describe(c.columns), Describe(t.columns));
  }
}

struct WriteCase {
  const char* name;
  const char* write;
  const char* check;  // a query whose single value shows the effect
  const char* value;
};

TEST(SqlWrites, UpdateInsertDelete) {
  const WriteCase cases[] = {
      {"update_date_iso", "UPDATE Patient SET LastStatement = '2026-11-20' WHERE ID = 5",
       "SELECT LastStatement FROM Patient WHERE ID = 5", "2026-11-20 00:00:00"},
      // Patient 6's dentist 7 does not exist; a NULL key is left alone.
      {"update_with_subquery",
       "UPDATE Patient SET ReferringDentistID = 3 WHERE ReferringDentistID NOT IN (SELECT ID FROM ReferringDentists)",
       "SELECT COUNT(*) FROM Patient WHERE ReferringDentistID = 3", "1"},
      // A NULL key has no match either, so it is repaired too (ANSI_NULLS).
      {"update_correlated_not_exists",
       "Update Patient Set ReferringDentistID =3 WHERE (NOT EXISTS (SELECT 1 From ReferringDentists WHERE "
       "ReferringDentists.ID=Patient.ReferringDentistID))",
       "SELECT COUNT(*) FROM Patient WHERE ReferringDentistID = 3", "2"},
      {"insert_values", "INSERT INTO ReferringDentists (ID, Name, LastName) VALUES (6, 'Deleted', 'Referring Dentist')",
       "SELECT COUNT(*) FROM ReferringDentists WHERE Name = 'deleted'", "2"},
      {"insert_select", "INSERT INTO Reasons (ID, Name) SELECT ID + 10, Name FROM Patientcategories",
       "SELECT COUNT(*) FROM Reasons WHERE ID > 10", "2"},
      {"delete_by_date", "DELETE FROM Memos WHERE DueDate < '2026-11-15'", "SELECT COUNT(*) FROM Memos", "5"},
  };
  for (const WriteCase& c : cases) {
    SCOPED_TRACE(c.name);
    FixtureDb db;
    Translation t = Translate(c.write, db.schema(), Dialect::SQLite);
    EXPECT_FALSE(t.is_query);
    EXPECT_TRUE(t.columns.empty());
    db.RunTranslated(t);
    EXPECT_EQ(db.Run(c.check).rows, (Rows{{c.value}}));
  }
}

// Reports build IN lists of thousands of keys and long OR chains; both must
// translate in time proportional to their length.
TEST(SqlScale, LongInListsAndOrChains) {
  std::string in_list = "SELECT COUNT(*) FROM Invoices WHERE ID IN (";
  std::string ors = "SELECT COUNT(*) FROM Invoices WHERE ";
  for (int i = 1; i <= 20000; ++i) {
    in_list += (i > 1 ? ", " : "") + std::to_string(i);
    ors += (i > 1 ? " OR ID = " : "ID = ") + std::to_string(i);
  }
  in_list += ")";
  auto start = std::chrono::steady_clock::now();
  ExpectRows({{"in_list", in_list.c_str(), {"9"}}, {"or_chain", ors.c_str(), {"9"}}});
  double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  EXPECT_LT(seconds, 10.0);
}

// Declared types of a SQLite database to the kinds the binder types with.
TEST(SqlSchema, KindsOfDeclaredTypes) {
  struct Case {
    const char* declared;
    ValueKind kind;
    int length;
  };
  const Case cases[] = {
      {"MONEY", ValueKind::Money, 0},       {"smallmoney", ValueKind::Money, 0},
      {"DATETIME", ValueKind::Date, 0},     {"INTEGER", ValueKind::Integer, 0},
      {"bigint", ValueKind::Integer, 0},    {"BIT", ValueKind::Boolean, 0},
      {"VARCHAR(30)", ValueKind::Text, 30}, {"char (2)", ValueKind::Text, 2},
      {"TEXT", ValueKind::Text, 0},         {"FLOAT", ValueKind::Float, 0},
      {"DECIMAL(10,2)", ValueKind::Decimal, 10}, {"BLOB", ValueKind::Blob, 0},
      {"", ValueKind::Unknown, 0},
  };
  for (const Case& c : cases) {
    int length = -1;
    EXPECT_EQ(c.kind, Schema::KindOfDeclared(c.declared, &length)) << c.declared;
    EXPECT_EQ(c.length, length) << c.declared;
  }
}

// Date text as the server reads it (DATEFORMAT mdy).
TEST(SqlDateText, ServerForms) {
  const std::pair<const char*, const char*> cases[] = {
      {"2026-11-01", "2026-11-01 00:00:00"},    {"11-01-2026", "2026-11-01 00:00:00"},
      {"11/01/2026", "2026-11-01 00:00:00"},    {"Nov/1/2026", "2026-11-01 00:00:00"},
      {"November 1, 2026", "2026-11-01 00:00:00"}, {"1 Nov 2026", "2026-11-01 00:00:00"},
      {" 2026-11-01 ", "2026-11-01 00:00:00"},  {"20261101", "2026-11-01 00:00:00"},
      {"2026-11-01 16:45", "2026-11-01 16:45:00"}, {"11/01/2026 4:45 PM", "2026-11-01 16:45:00"},
      {"2026-11-01T08:05:09", "2026-11-01 08:05:09"}, {"11/1/26", "2026-11-01 00:00:00"},
      {"2026-02-29", ""},                       {"13/01/2026", ""},
      {"yesterday", ""},                        {"2026-11-01 25:00", ""},
      {"", "1900-01-01 00:00:00"},
      // The form reports write, read on its own short path.
      {"2026-11-01 08:05:09", "2026-11-01 08:05:09"}, {"2026-11-01 24:00:00", ""},
      {"1752-12-31", ""},
  };
  for (const auto& [text, iso] : cases) EXPECT_EQ(iso, NormaliseDateText(text)) << "'" << text << "'";
}

}  // namespace
}  // namespace orv::sql::testing

// Rows of statements per construct, run on the project's fixture in SQLite
// and, with ORVENDA_TEST_PG, on its copy on the server. Each expected row is
// what SQL Server returns under the server assumptions of the conformance
// cases (us_english, case-insensitive collation, CONCAT_NULL_YIELDS_NULL,
// ANSI_NULLS), worked out from the fixture's rows and the vendor
// documentation named beside the less obvious ones.
#include <gtest/gtest.h>

#include "common/datetime.h"
#include "sql_test_support.h"

namespace orv::sql::testing {
namespace {

// Database identifiers: brackets, '#', blanks around dots, schema prefixes,
// names in any case, numbers run into keywords.
// https://learn.microsoft.com/en-us/sql/relational-databases/databases/database-identifiers
TEST(SqlNames, RowsOfEachSpelling) {
  FixtureDb db;
  const RowCase cases[] = {
      {"brackets_and_schema", "SELECT [Invoice#], [Complete?] FROM dbo.Invoices WHERE ID = 2", {"1002\t-1"}},
      {"unbracketed_hash", "SELECT Invoices.Invoice# AS Inv# FROM Invoices WHERE Invoices.ID = 3", {"1003"}},
      {"blanks_around_dot_any_case", "select p. firstname from PATIENT p where p .ID = 4", {"Kenji"}},
      {"bracketed_schema", "SELECT Name FROM [dbo].[FeeGuides] WHERE ID = 2", {"Specialist 2026"}},
      {"number_run_into_and", "SELECT ID FROM Invoices WHERE PatientID = 4AND [Invoice#] > 1003", {"7"}},
      {"alias_equals_forms", "SELECT 'Last' = LastName, First = FirstName FROM Employees WHERE ID = 3",
       {"Okafor\tLena"}},
      {"name_with_blank", "SELECT [Professional Title] FROM Employees WHERE ID = 7", {"RDH"}},
      {"distinct_parenthesised", "SELECT Distinct(LastName) FROM Patient WHERE ID <= 3", {"Tremblay"}},
      {"n_literal", "SELECT ID FROM Employees WHERE FirstName = N'(None)'", {"1"}},
      {"text_alias_with_as", "SELECT LastName AS 'Family Name' FROM Patient WHERE ID = 6", {"O'Brien"}},
      {"comments", "SELECT ID -- the key\nFROM /* guides */ FeeGuides WHERE ID = 1", {"1"}},
      {"star_in_declared_order", "SELECT r.* FROM Reasons r WHERE r.ID = 2", {"2\tFracture"}},
      // A quote inside a text or a name is doubled where the engine's
      // statement encloses it.
      {"quotes_inside_text_and_names",
       "SELECT LastName + '''s' AS [Patient's \"Name\"] FROM Patient WHERE LastName = 'O''Brien'",
       {"O'Brien's"}},
  };
  for (const RowCase& c : cases) ExpectRows(db, c);
}

// `+` concatenates texts and adds numbers; the types come from the schema.
// https://learn.microsoft.com/en-us/sql/t-sql/language-elements/add-transact-sql
// https://learn.microsoft.com/en-us/sql/t-sql/data-types/data-type-precedence-transact-sql
TEST(SqlExpressions, ConcatenationAndArithmetic) {
  FixtureDb db;
  const RowCase cases[] = {
      {"concat_text_columns", "SELECT LastName + ', ' + FirstName FROM Patient WHERE ID = 6", {"O'Brien, Seamus"}},
      // CONCAT_NULL_YIELDS_NULL: patient 6 has no title.
      {"concat_null_yields_null", "SELECT Title + ' ' + LastName FROM Patient WHERE ID = 6", {"NULL"}},
      {"plus_on_integers_adds", "SELECT PatientID + ProviderID FROM Invoices WHERE ID = 3", {"8"}},
      // int outranks varchar: '01101' + 1 is 1102.
      {"text_plus_number_is_numeric", "SELECT Code + 1 FROM InvoiceDetails WHERE ID = 1", {"1102"}},
      {"integer_division_and_modulo", "SELECT [Time] / 60, [Time] % 60 FROM Invoices WHERE ID = 3", {"16\t45"}},
      {"money_division_keeps_fraction", "SELECT Cost / 2 FROM InvoiceDetails WHERE ID = 1", {"37.5000"}},
      {"decimal_division", "SELECT 7 / 2, 7 / 2.0", {"3\t~3.5"}},
      {"money_times_int", "SELECT Estimate * Units FROM PatientAppointments WHERE ID = 2", {"541.5000"}},
      // ISNULL returns the first argument's type: varchar(10) cuts 'Maximilienne'.
      // https://learn.microsoft.com/en-us/sql/t-sql/functions/isnull-transact-sql
      {"isnull_cuts_to_first_length",
       "SELECT ISNULL(PreferredName, FirstName) FROM Patient WHERE ID IN (5, 7) ORDER BY ID",
       {"Maximilien", "Pree"}},
      {"isnull_cuts_a_literal", "SELECT ISNULL(Title, 'Professor Emeritus') FROM Patient WHERE ID = 6", {"Professor "}},
      {"isnull_money_zero", "SELECT ISNULL(InvoiceFinalTotal, 0) FROM Invoices WHERE ID = 2", {"0.0000"}},
      {"coalesce_takes_first_value", "SELECT COALESCE(PreferredName, Title, 'x') FROM Patient WHERE ID = 1",
       {"Mrs."}},
      {"searched_case",
       "SELECT CASE WHEN [Complete?] <> 0 THEN 'Done' ELSE 'Open' END FROM Invoices WHERE ID IN (2, 4) ORDER BY ID",
       {"Done", "Open"}},
      {"simple_case_under_collation",
       "SELECT CASE Status WHEN 'complete' THEN 'C' ELSE 'I' END FROM InvoiceDetails WHERE ID IN (1, 5) ORDER BY ID",
       {"C", "I"}},
      // https://learn.microsoft.com/en-us/sql/t-sql/functions/cast-and-convert-transact-sql
      {"cast_varchar_truncates", "SELECT CAST(Description AS varchar(7)) FROM FeeCodes WHERE ID = '11101'",
       {"Scaling"}},
      {"cast_char_pads", "SELECT '[' + CAST(Surface AS char(4)) + ']' FROM InvoiceDetails WHERE ID = 5",
       {"[O   ]"}},
      {"cast_money_to_text_two_decimals",
       "SELECT 'Total ' + CAST(InvoiceTotal AS varchar(20)) FROM Invoices WHERE ID = 2", {"Total 180.50"}},
      {"convert_date_style_101", "SELECT CONVERT(varchar(10), [Date], 101) FROM Invoices WHERE ID = 3",
       {"11/19/2026"}},
      {"cast_text_to_int", "SELECT CAST(Code AS int) FROM InvoiceDetails WHERE ID = 8", {"-99111"}},
      {"isnull_of_cast_tooth",
       "SELECT InvoiceDetails.Code + ' ' + ISNULL(CAST(InvoiceDetails.[Tooth#] AS varchar(2)), '') + ' ' + "
       "ISNULL(InvoiceDetails.Surface, '') FROM InvoiceDetails WHERE ID IN (1, 5) ORDER BY ID",
       {"01101  ", "21211 36 O"}},
      // LEN leaves out trailing blanks: PremedType ' ' has length 0.
      {"len_ignores_trailing_blanks", "SELECT LEN(PremedType) FROM Patient WHERE ID = 3", {"0"}},
      {"left_right_substring",
       "SELECT LEFT(LastName, 3), RIGHT(LastName, 3), SUBSTRING(LastName, 2, 3) FROM Patient WHERE ID = 4",
       {"Nak\tura\taka"}},
      {"charindex_under_collation", "SELECT CHARINDEX('MURA', LastName) FROM Patient WHERE ID = 4", {"5"}},
      {"replace_under_collation", "SELECT REPLACE(FullName, 'TREMBLAY', 'T.') FROM Patient WHERE ID = 1",
       {"Claire T."}},
      // DATALENGTH counts what is stored: every byte of a picture, zero bytes
      // included, and every character of text, where LEN leaves out
      // trailing blanks.
      {"datalength_bytes_and_characters",
       "SELECT DATALENGTH(Logo), DATALENGTH(Caption), LEN(Caption) FROM Pictures ORDER BY ID",
       {"16\t7\t5", "NULL\t0\t0"}},
  };
  for (const RowCase& c : cases) ExpectRows(db, c);
}

// Date literals under DATEFORMAT mdy; a date without a time is midnight.
// https://learn.microsoft.com/en-us/sql/t-sql/data-types/datetime-transact-sql
// https://learn.microsoft.com/en-us/sql/t-sql/functions/dateadd-transact-sql
// https://learn.microsoft.com/en-us/sql/t-sql/functions/datediff-transact-sql
TEST(SqlDates, LiteralsAndArithmetic) {
  FixtureDb db;
  const RowCase cases[] = {
      // Invoice 3 (2026-11-19 16:45) lies after midnight of the bound.
      {"date_only_bound_excludes_later_times", "SELECT COUNT(*) FROM Invoices WHERE [Date] <= '2026-11-19'", {"6"}},
      {"literal_with_time", "SELECT ID FROM Invoices WHERE [Date] = '2026-11-19 16:45'", {"3"}},
      {"in_list_of_dates", "SELECT COUNT(*) FROM PatientAppointments WHERE [Date] IN ('11/20/2026', '2026-11-03')",
       {"4"}},
      {"between_dates", "SELECT COUNT(*) FROM InvoicePayments WHERE CheckDate BETWEEN '2026-11-01' AND '2026-11-19'",
       {"6"}},
      {"getdate_minus_days", "SELECT COUNT(*) FROM Invoices WHERE [Date] >= GETDATE() - 30", {"5"}},
      {"dateadd_days", "SELECT DATEADD(d, 10, [Date]) FROM Invoices WHERE ID = 3", {"2026-11-29 16:45:00"}},
      {"dateadd_month_clips_to_month_end", "SELECT DATEADD(month, 1, '2026-01-31')", {"2026-02-28 00:00:00"}},
      {"dateadd_year_from_leap_day", "SELECT DATEADD(yy, -1, BirthDate) FROM Patient WHERE ID = 9",
       {"1971-02-28 00:00:00"}},
      {"datetime_plus_and_minus_days", "SELECT [Date] + 1, [Date] - 2 FROM Invoices WHERE ID = 3",
       {"2026-11-20 16:45:00\t2026-11-17 16:45:00"}},
      {"datediff_days", "SELECT DATEDIFF(d, '2026-11-01', [Date]) FROM Invoices WHERE ID = 3", {"18"}},
      {"datediff_counts_year_boundaries", "SELECT DATEDIFF(yyyy, BirthDate, GETDATE()) FROM Patient WHERE ID = 4",
       {"61"}},
      // 2026-11-19 is a Thursday: weekday 5 with Sunday first (us_english).
      {"date_parts",
       "SELECT YEAR([Date]), MONTH([Date]), DAY([Date]), DATEPART(hh, [Date]), DATEPART(dw, [Date]) FROM Invoices "
       "WHERE ID = 3",
       {"2026\t11\t19\t16\t5"}},
  };
  for (const RowCase& c : cases) ExpectRows(db, c);
}

// A translation reads the clock when it runs, not when it was made, so a
// cached translation follows a changed clock.
TEST(SqlDates, GetDateReadsTheClockWhenTheStatementRuns) {
  FixtureDb db;
  Translation t = Translate("SELECT GETDATE()", db.schema(), Dialect::SQLite);
  EXPECT_EQ("2026-11-20 10:00:00", db.Scalar(t.sql));
  Clock::SetFixed(DateTime::FromParts(2027, 1, 2, 3, 4, 5));
  EXPECT_EQ("2027-01-02 03:04:05", db.Scalar(t.sql));
}

// Text compared with a number converts to the number's type.
// https://learn.microsoft.com/en-us/sql/t-sql/data-types/data-type-precedence-transact-sql
TEST(SqlConversion, TextComparedWithNumbers) {
  FixtureDb db;
  const RowCase cases[] = {
      {"text_code_at_least_number", "SELECT COUNT(*) FROM FeeCodes WHERE ID >= 1101", {"8"}},
      {"text_code_between_numbers", "SELECT COUNT(*) FROM FeeCodes WHERE ID BETWEEN 1000 AND 3000", {"4"}},
      {"text_code_in_numbers", "SELECT COUNT(*) FROM FeeCodes WHERE ID IN (1101, 99111)", {"2"}},
      {"leading_zero_number", "SELECT Description FROM FeeCodes WHERE ID = 01103",
       {"Examination, complete, permanent dentition"}},
      {"negative_codes", "SELECT COUNT(*) FROM InvoiceDetails WHERE Code < 0", {"2"}},
      {"integer_column_with_quoted_number", "SELECT LastName FROM Patient WHERE ID = '4'", {"Nakamura"}},
      {"text_range_stays_text",
       "SELECT COUNT(*) FROM InvoiceDetails INNER JOIN OfficeHygieneCompanyCodes ON Code >= Startcode AND Code <= "
       "EndCode",
       {"2"}},
  };
  for (const RowCase& c : cases) ExpectRows(db, c);
}

// The default collation: case-insensitive, trailing blanks ignored.
// https://learn.microsoft.com/en-us/sql/relational-databases/collations/collation-and-unicode-support
// https://learn.microsoft.com/en-us/sql/t-sql/language-elements/like-transact-sql
TEST(SqlCollation, TextComparisonsGroupingAndOrder) {
  FixtureDb db;
  const RowCase cases[] = {
      {"equality_ignores_case", "SELECT COUNT(*) FROM InvoiceDetails WHERE Status = 'COMPLETE'", {"12"}},
      {"equality_ignores_trailing_blanks", "SELECT COUNT(*) FROM InvoiceDetails WHERE Status = 'Complete   '", {"12"}},
      {"in_list", "SELECT COUNT(*) FROM Patient WHERE LastName IN ('tremblay', 'SINGH ')", {"4"}},
      {"like_ignores_case", "SELECT COUNT(*) FROM Patient WHERE LastName LIKE 'tr%'", {"3"}},
      {"like_range_class", "SELECT COUNT(*) FROM FeeCodes WHERE ID LIKE '[0-2]%'", {"7"}},
      {"like_negated_class", "SELECT COUNT(*) FROM FeeCodes WHERE ID LIKE '[^0-9]%'", {"2"}},
      {"like_underscore", "SELECT COUNT(*) FROM FeeCodes WHERE ID LIKE '0110_'", {"3"}},
      {"not_like", "SELECT COUNT(*) FROM FeeCodes WHERE ID NOT LIKE '%1%'", {"0"}},
      {"group_by", "SELECT COUNT(*) FROM (SELECT 'a' AS x UNION ALL SELECT 'A' UNION ALL SELECT 'a ') AS d GROUP BY x",
       {"3"}},
      {"distinct",
       "SELECT COUNT(*) FROM (SELECT DISTINCT x FROM (SELECT 'b' AS x UNION ALL SELECT 'B' UNION ALL SELECT 'b  ') AS "
       "d) AS e",
       {"1"}},
      {"order_by", "SELECT x FROM (SELECT 'B' AS x UNION ALL SELECT 'a' UNION ALL SELECT 'C') AS d ORDER BY x",
       {"a", "B", "C"}},
      {"min_max", "SELECT MIN(x), MAX(x) FROM (SELECT 'b' AS x UNION ALL SELECT 'A' UNION ALL SELECT 'C') AS d",
       {"A\tC"}},
      // Case-insensitive but accent-sensitive (a _CI_AS collation).
      {"accented_letters_fold_case",
       "SELECT COUNT(*) FROM (SELECT 'École' AS x) AS d WHERE x = 'éCOLE'", {"1"}},
      {"accents_stay_significant", "SELECT COUNT(*) FROM (SELECT 'École' AS x) AS d WHERE x = 'Ecole'", {"0"}},
      {"order_by_position_uses_collation",
       "SELECT x FROM (SELECT 'B' AS x UNION ALL SELECT 'a') AS d ORDER BY 1", {"a", "B"}},
      {"count_distinct", "SELECT COUNT(DISTINCT n) FROM (SELECT 'x' AS n UNION ALL SELECT 'X') AS d", {"1"}},
  };
  for (const RowCase& c : cases) ExpectRows(db, c);
}

// Flags hold 0, 1, -1 or NULL; host filters may write True and False.
TEST(SqlFlags, TestsOfZeroOneMinusOneAndNull) {
  FixtureDb db;
  const RowCase cases[] = {
      {"nonzero", "SELECT COUNT(*) FROM Invoices WHERE [Complete?] <> 0", {"6"}},
      {"equals_one", "SELECT COUNT(*) FROM Invoices WHERE [Complete?] = 1", {"5"}},
      {"is_null", "SELECT COUNT(*) FROM Invoices WHERE [Complete?] IS NULL", {"1"}},
      {"equals_true", "SELECT COUNT(*) FROM Invoices WHERE [Complete?] = True", {"6"}},
      {"equals_false", "SELECT COUNT(*) FROM Invoices WHERE [Complete?] = False", {"2"}},
      {"not_true", "SELECT COUNT(*) FROM Invoices WHERE Invoices.[Complete?] <> TRUE", {"2"}},
  };
  for (const RowCase& c : cases) ExpectRows(db, c);
}

// Joins, subqueries, set operations and grouping.
// https://learn.microsoft.com/en-us/sql/t-sql/queries/from-transact-sql
// https://learn.microsoft.com/en-us/sql/t-sql/language-elements/in-transact-sql
// https://learn.microsoft.com/en-us/sql/t-sql/queries/select-group-by-transact-sql
TEST(SqlQueries, JoinsSubqueriesAndGrouping) {
  FixtureDb db;
  const RowCase cases[] = {
      {"right_outer_join_keeps_unmatched",
       "SELECT Patient.ID, PatientPrescriptions.ID FROM PatientPrescriptions RIGHT OUTER JOIN Patient ON "
       "PatientPrescriptions.PatientID = Patient.ID WHERE Patient.ID IN (4, 5, 8) ORDER BY Patient.ID",
       {"4\t1", "5\tNULL", "8\t2"}},
      {"left_join_to_parenthesised_join",
       "SELECT Patient.ID, ListAlerts.Name FROM Patient LEFT OUTER JOIN (PatientAlerts INNER JOIN ListAlerts ON "
       "PatientAlerts.AlertID = ListAlerts.ID) ON Patient.ID = PatientAlerts.PatientID WHERE Patient.ID IN (1, 2, 6) "
       "ORDER BY Patient.ID, ListAlerts.Name",
       {"1\tAnxious patient", "1\tLatex allergy", "2\tNULL", "6\tHard of hearing"}},
      {"union_all_ordered_by_name",
       "SELECT Name FROM Reasons UNION ALL SELECT Name FROM Patientcategories ORDER BY Name",
       {"Adult", "Child", "Decay", "Fracture"}},
      {"union_removes_duplicates", "SELECT LastName FROM Patient WHERE ID < 4 UNION SELECT 'Tremblay'",
       {"Tremblay"}},
      {"correlated_scalar_subquery",
       "SELECT ID, (SELECT COUNT(*) FROM Invoices WHERE Invoices.PatientID = Patient.ID) FROM Patient WHERE ID IN "
       "(1, 4, 8) ORDER BY ID",
       {"1\t2", "4\t2", "8\t0"}},
      {"exists",
       "SELECT COUNT(*) FROM Patient WHERE EXISTS (SELECT 1 FROM PatientAlerts WHERE PatientAlerts.PatientID = "
       "Patient.ID)",
       {"3"}},
      {"not_in_subquery", "SELECT COUNT(*) FROM Employees WHERE ID NOT IN (SELECT ProviderID FROM Invoices)", {"4"}},
      // ANSI_NULLS: NOT IN over a list holding NULL is never true.
      {"not_in_with_null_is_empty", "SELECT COUNT(*) FROM Employees WHERE ID NOT IN (SELECT OverseerID FROM Invoices)",
       {"0"}},
      {"in_subquery",
       "SELECT COUNT(*) FROM Patient WHERE ID IN (SELECT PatientID FROM Invoices WHERE [Complete?] = 0)", {"2"}},
      {"having",
       "SELECT PatientID, SUM(InvoiceTotal) FROM Invoices GROUP BY PatientID HAVING SUM(InvoiceTotal) > 300 ORDER BY "
       "PatientID",
       {"1\t345.0000", "4\t1102.5000", "6\t345.0000"}},
      {"order_by_subquery",
       "SELECT ID FROM Patient WHERE ID IN (1, 4, 7) ORDER BY (SELECT COUNT(*) FROM PatientAlerts WHERE "
       "PatientAlerts.PatientID = Patient.ID) DESC, ID",
       {"1", "4", "7"}},
      {"derived_table",
       "SELECT d.n FROM (SELECT PatientID, COUNT(*) AS n FROM Invoices GROUP BY PatientID) AS d WHERE d.PatientID = 4",
       {"2"}},
      {"top_inside_union_member",
       "SELECT TOP 1 ID FROM Reasons WHERE ID = 2 UNION ALL SELECT ID FROM FeeGuides", {"2", "1", "2"}, false},
      {"comma_join", "SELECT COUNT(*) FROM Reasons, FeeGuides", {"4"}},
      {"cross_join", "SELECT COUNT(*) FROM Reasons CROSS JOIN Patientcategories", {"4"}},
      {"full_outer_join",
       "SELECT COUNT(*) FROM ListAlerts FULL OUTER JOIN PatientAlerts ON ListAlerts.ID = PatientAlerts.AlertID", {"4"}},
      {"except", "SELECT ID FROM Patient WHERE ID < 4 EXCEPT SELECT PatientID FROM Invoices", {"3"}},
      {"intersect", "SELECT ID FROM Patient INTERSECT SELECT PatientID FROM PatientAlerts", {"1", "4", "6"}, false},
      // The rolled-up row (NULL) sorts first and holds the total.
      {"rollup_one_column",
       "SELECT COUNT(*) AS theCount, ReferredByAddID FROM Patient WHERE (NOT (ReferredByAddID IS NULL) AND "
       "ReferredByAddID <> '') GROUP BY ReferredByAddID WITH ROLLUP ORDER BY ReferredByAddID",
       {"7\tNULL", "3\tDentist", "3\tInternet", "1\tPatient"}},
      {"rollup_two_columns",
       "SELECT Sex, categoryID, COUNT(*) FROM Patient WHERE categoryID IS NOT NULL GROUP BY Sex, categoryID WITH "
       "ROLLUP",
       {"Female\t1\t2", "Female\t2\t1", "Male\t1\t4", "Female\tNULL\t3", "Male\tNULL\t4", "NULL\tNULL\t7"},
       false},
      {"rollup_of_no_rows",
       "SELECT COUNT(*), ReferredByAddID FROM Patient WHERE ID > 100 GROUP BY ReferredByAddID WITH ROLLUP", {}},
  };
  for (const RowCase& c : cases) ExpectRows(db, c);
}

// Built-in functions the reports may use, with the server's results.
// https://learn.microsoft.com/en-us/sql/t-sql/functions/round-transact-sql
// https://learn.microsoft.com/en-us/sql/t-sql/functions/str-transact-sql
// https://learn.microsoft.com/en-us/sql/t-sql/functions/datepart-transact-sql
// https://learn.microsoft.com/en-us/sql/t-sql/functions/cast-and-convert-transact-sql
TEST(SqlFunctions, ServerResults) {
  FixtureDb db;
  const RowCase cases[] = {
      {"round_decimal", "SELECT ROUND(2.675, 2), ROUND(1234.5678, -2), ROUND(-2.5, 0)", {"~2.68\t~1200\t~-3"}},
      {"round_money_half_away", "SELECT ROUND(Cost, 0) FROM InvoiceDetails WHERE ID = 4", {"61.0000"}},
      {"round_truncating", "SELECT ROUND(150.75, 0, 1)", {"~150"}},
      {"str_pads_and_rounds", "SELECT STR(123.456, 8, 2), STR(12345, 3)", {"  123.46\t***"}},
      {"datename", "SELECT DATENAME(month, [Date]), DATENAME(dw, [Date]) FROM Invoices WHERE ID = 3",
       {"November\tThursday"}},
      // 2026-01-01 is a Thursday; weeks start on Sunday.
      {"datepart_week", "SELECT DATEPART(wk, '2026-01-03'), DATEPART(wk, '2026-01-04')", {"1\t2"}},
      {"datediff_month_boundary", "SELECT DATEDIFF(month, '2026-01-31', '2026-02-01')", {"1"}},
      {"convert_styles",
       "SELECT CONVERT(varchar(20), [Date], 100), CONVERT(varchar(10), [Date], 103), CONVERT(varchar(8), [Date], 112), "
       "CONVERT(varchar(19), [Date], 120) FROM Invoices WHERE ID = 3",
       {"Nov 19 2026  4:45PM\t19/11/2026\t20261119\t2026-11-19 16:45:00"}},
      {"float_to_text", "SELECT CAST(InLast AS varchar(10)) FROM ReferralAlerts WHERE EmployeeID = 2", {"30"}},
      {"space_replicate", "SELECT SPACE(3) + 'x', REPLICATE('ab', 3)", {"   x\tababab"}},
      {"isnumeric", "SELECT ISNUMERIC('12.5'), ISNUMERIC('abc')", {"1\t0"}},
      {"floor_ceiling", "SELECT FLOOR(-1.5), CEILING(1.2)", {"~-2\t~2"}},
      {"abs_money", "SELECT ABS(Cost) FROM InvoiceDetails WHERE ID = 8", {"110.0000"}},
      {"bitwise", "SELECT 5 & 3, 5 | 3, 5 ^ 3", {"1\t7\t6"}},
      {"nullif_under_collation", "SELECT NULLIF(Status, 'COMPLETE') FROM InvoiceDetails WHERE ID = 1", {"NULL"}},
      {"trims", "SELECT LTRIM('  a'), RTRIM('a  ') + '|'", {"a\ta|"}},
      {"char_ascii", "SELECT CHAR(65), ASCII('A')", {"A\t65"}},
      {"like_trailing_blanks", "SELECT COUNT(*) FROM InvoiceDetails WHERE Status LIKE 'Complete  '", {"12"}},
      {"like_escape",
       "SELECT COUNT(*) FROM (SELECT '50%' AS t UNION ALL SELECT '50 percent') AS d WHERE t LIKE '%!%' ESCAPE '!'",
       {"1"}},
      {"blank_is_day_zero", "SELECT COUNT(*) FROM Patient WHERE InactivationDate > ''", {"1"}},
      {"text_between_dates",
       "SELECT COUNT(*) FROM EmployeeHolidays WHERE '2026-11-20' BETWEEN FromDate AND ToDate", {"3"}},
  };
  for (const RowCase& c : cases) ExpectRows(db, c);
}

// Conversions the server refuses fail the statement, on each engine,
// instead of reading as 0 or as text.
TEST(SqlFunctions, FailedConversionsFailTheStatement) {
  FixtureDb db;
  const ServerFixture* server = ServerFixture::Get();
  const std::pair<const char*, const char*> cases[] = {
      {"SELECT COUNT(*) FROM Patient WHERE ManualChartNumber > 5", "Conversion failed when converting the varchar value"},
      {"SELECT CAST(LastName AS int) FROM Patient WHERE ID = 1", "Conversion failed when converting the varchar value"},
      {"SELECT DATEADD(d, 1, LastName) FROM Patient WHERE ID = 1", "Conversion failed when converting date"},
  };
  for (const auto& [tsql, message] : cases) {
    std::string error = db.RunError(tsql);
    EXPECT_NE(std::string::npos, error.find(message)) << tsql << ": " << error;
    if (!server) continue;
    error.clear();
    server->Run(tsql, &error);
    EXPECT_NE(std::string::npos, error.find(message)) << "postgres: " << tsql << ": " << error;
  }
}

// Where PostgreSQL's own semantics differ from SQL Server's.
TEST(SqlServerSemantics, RowsOnEachEngine) {
  FixtureDb db;
  const RowCase cases[] = {
      // bpchar to text drops trailing blanks; varchar keeps them.
      {"concat_keeps_trailing_blanks", "SELECT '[' + PremedType + ']' FROM Patient WHERE ID = 3", {"[ ]"}},
      // Text order is folded code points: '(' (0x28) before letters, 'é'
      // (0xE9) after 'z'; ICU would put 'é' beside 'e'.
      {"order_by_dictionary",
       "SELECT x FROM (SELECT 'zed' AS x UNION ALL SELECT 'École' UNION ALL SELECT '(none)' UNION ALL SELECT 'Eve') AS d "
       "ORDER BY x",
       {"(none)", "École", "Eve", "zed"}},
      {"order_by_desc_nulls_last", "SELECT ID FROM Employees WHERE ID IN (1, 3, 4) ORDER BY [Professional Title] DESC",
       {"3", "4", "1"}},
      {"distinct_ordered_by_text",
       "SELECT DISTINCT x FROM (SELECT 'b' AS x UNION ALL SELECT 'B' UNION ALL SELECT 'a') AS d ORDER BY x DESC",
       {"b", "a"}, true},
      {"union_ci_ordered", "SELECT 'Adult' AS n UNION SELECT Name FROM Patientcategories ORDER BY n", {"Adult", "Child"}},
      {"group_by_concatenation",
       "SELECT LastName + 'X' AS k, COUNT(*) FROM Patient GROUP BY LastName + 'X' HAVING COUNT(*) > 1", {"TremblayX\t3"}},
      // A function of the grouped text: the server would convert the
      // grouping key beneath its collation and no longer find it grouped.
      {"functions_of_grouped_concatenation",
       "SELECT LEN(LastName + 'X'), UPPER(LastName + 'X') FROM Patient GROUP BY LastName + 'X' "
       "HAVING LEFT(LastName + 'X', 1) = 't'",
       {"9\tTREMBLAYX"}},
      // COALESCE and NULLIF of bpchar (a column, a subquery) are bpchar.
      {"coalesce_nullif_keep_trailing_blanks",
       "SELECT '[' + COALESCE(PremedType, 'x') + ']', '[' + NULLIF((SELECT PremedType FROM Patient WHERE ID = 3), 'x') + ']', "
       "COALESCE((SELECT TOP 1 'ab  ' + Symbol FROM Employees WHERE ID = 2), '') + '|' FROM Patient WHERE ID = 3",
       {"[ ]\t[ ]\tab  DW|"}},
      {"min_max_by_dictionary_hyphen_left_out",
       "SELECT MIN(x), MAX(x) FROM (SELECT 'b' AS x UNION ALL SELECT 'Éa' UNION ALL SELECT '-z') AS d", {"b\t-z"}},
      {"like_sets_and_escape",
       "SELECT COUNT(*) FROM (SELECT 'a-b' AS t UNION ALL SELECT 'A_B' UNION ALL SELECT 'a.b') AS d "
       "WHERE t LIKE 'a[-_]B' OR t LIKE 'x!%' ESCAPE '!'",
       {"2"}},
      {"like_special_characters_literal", "SELECT COUNT(*) FROM (SELECT 'a.c' AS t UNION ALL SELECT 'abc') AS d WHERE t LIKE 'a.c'",
       {"1"}},
      {"integer_division_and_avg", "SELECT -7 / 2, AVG(x) FROM (SELECT 1 AS x UNION ALL SELECT 2) AS d", {"-3\t1"}},
      {"money_sum_and_division", "SELECT SUM(Cost), SUM(Cost) / 3 FROM InvoiceDetails WHERE ID IN (1, 4)",
       {"135.5000\t45.1667"}},
      {"getdate_from_session", "SELECT DATEADD(d, 1, GETDATE())", {"2026-11-21 10:00:00"}},
      {"datediff_parts",
       "SELECT DATEDIFF(week, '2026-11-14', '2026-11-15'), DATEDIFF(hh, '2026-11-19 23:59', '2026-11-20 00:01'), "
       "DATEDIFF(yy, '2026-12-31', '2027-01-01')",
       {"1\t1\t1"}},
      {"text_to_date_at_run_time", "SELECT DATEADD(d, 1, x) FROM (SELECT 'Nov 19, 2026 4:45 PM' AS x) AS d",
       {"2026-11-20 16:45:00"}},
      {"convert_float_and_money", "SELECT CAST(1234567.0E0 AS varchar(20)), CAST(CAST(2.5 AS money) AS varchar(10))",
       {"1.23457e+06\t2.50"}},
  };
  for (const RowCase& c : cases) ExpectRows(db, c);
}

// The statement cache puts bigint parameters where whole numbers stood
// after "="; integer, text and money columns compare with them.
TEST(SqlServerSemantics, BigintParametersAfterEquals) {
  const ServerFixture* server = ServerFixture::Get();
  if (!server) GTEST_SKIP() << "ORVENDA_TEST_PG is not set: no PostgreSQL server to test against";
  FixtureDb db;
  const std::pair<const char*, const char*> cases[] = {
      {"SELECT COUNT(*) FROM Patient WHERE ID = 4", "1"},
      {"SELECT COUNT(*) FROM FeeCodes WHERE ID = 1101", "1"},
      {"SELECT COUNT(*) FROM InvoiceDetails WHERE Cost = 75", "1"},
  };
  for (const auto& [tsql, count] : cases) {
    const std::string sql = Translate(tsql, db.schema(), Dialect::PostgreSQL).sql;
    const size_t at = sql.rfind(' ');
    EXPECT_EQ(server->ScalarWithBigint(sql.substr(0, at + 1) + "$1", sql.substr(at + 1)), count) << sql;
  }
}

}  // namespace
}  // namespace orv::sql::testing

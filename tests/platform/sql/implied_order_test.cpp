// The order a statement gets when it gives none: its tables' primary keys,
// its grouping, or its DISTINCT result columns; nothing where that would
// not make the order total or where the order shows nowhere.
#include <gtest/gtest.h>

#include "platform/sql/translate.h"
#include "sql_test_support.h"

namespace orv::sql {
namespace {

ColumnType Column(const char* name, const char* declared) {
  ColumnType c;
  c.name = name;
  c.declared = declared;
  c.kind = Schema::KindOfDeclared(declared, &c.length);
  return c;
}

TEST(SqlImpliedOrder, KeyGroupingOrResultColumns) {
  Schema schema;
  // The key's columns in another order than declared, one named in
  // another case than declared.
  schema.AddTable("Lines",
                  {Column("Note", "VARCHAR(20)"), Column("Seq", "INTEGER"), Column("Chart", "VARCHAR(10)"),
                   Column("Fee", "MONEY")},
                  {"Chart", "seq"});
  schema.AddTable("Charts", {Column("Chart", "VARCHAR(10)"), Column("Name", "VARCHAR(30)")}, {"Chart"});
  schema.AddTable("Log", {Column("At", "DATETIME"), Column("Note", "TEXT")});

  const std::pair<const char*, const char*> sqlite[] = {
      // By the key alone: it leaves no ties to break.
      {"SELECT Seq, Fee FROM Lines WHERE Seq > 1",
       R"(SELECT "t1"."Seq" AS "Seq", "t1"."Fee" AS "Fee" FROM "Lines" AS "t1" WHERE "t1"."Seq" > 1 ORDER BY "t1"."Chart" COLLATE orv_ci, "t1"."Seq")"},
      // A written order still gets its tie-breakers: the number, money and
      // date columns, then the keys none of them holds.
      {"SELECT Seq, Fee FROM Lines ORDER BY Chart",
       R"(SELECT "t1"."Seq" AS "Seq", "t1"."Fee" AS "Fee" FROM "Lines" AS "t1" ORDER BY "t1"."Chart" COLLATE orv_ci, 1, 2)"},
      {"SELECT Note FROM Lines ORDER BY Fee DESC",
       R"(SELECT "t1"."Note" AS "Note" FROM "Lines" AS "t1" ORDER BY "t1"."Fee" DESC, "t1"."Chart" COLLATE orv_ci, "t1"."Seq")"},
      {"SELECT c.Name, l.Fee FROM Charts c INNER JOIN Lines l ON l.Chart = c.Chart ORDER BY c.Name",
       R"(SELECT "t1"."Name" AS "Name", "t2"."Fee" AS "Fee" FROM "Charts" AS "t1" INNER JOIN "Lines" AS "t2" ON "t2"."Chart" COLLATE orv_ci = "t1"."Chart" ORDER BY "t1"."Name" COLLATE orv_ci, 2, "t1"."Chart" COLLATE orv_ci, "t2"."Chart" COLLATE orv_ci, "t2"."Seq")"},
      // Grouped or distinct rows are a key of themselves; rows without a
      // key have none to add.
      {"SELECT Chart, SUM(Fee) AS Total FROM Lines GROUP BY Chart ORDER BY Total",
       R"(SELECT "t1"."Chart" AS "Chart", SUM("t1"."Fee") AS "Total" FROM "Lines" AS "t1" GROUP BY "t1"."Chart" COLLATE orv_ci ORDER BY 2)"},
      {"SELECT At FROM Log ORDER BY Note", R"(SELECT "t1"."At" AS "At" FROM "Log" AS "t1" ORDER BY "t1"."Note" COLLATE orv_ci, 1)"},
      {"SELECT c.Name, l.Seq FROM Charts c LEFT JOIN Lines l ON l.Chart = c.Chart",
       R"(SELECT "t1"."Name" AS "Name", "t2"."Seq" AS "Seq" FROM "Charts" AS "t1" LEFT JOIN "Lines" AS "t2" ON "t2"."Chart" COLLATE orv_ci = "t1"."Chart" ORDER BY "t1"."Chart" COLLATE orv_ci, "t2"."Chart" COLLATE orv_ci, "t2"."Seq")"},
      {"SELECT Chart, SUM(Fee) AS Total FROM Lines GROUP BY Chart",
       R"(SELECT "t1"."Chart" AS "Chart", SUM("t1"."Fee") AS "Total" FROM "Lines" AS "t1" GROUP BY "t1"."Chart" COLLATE orv_ci ORDER BY "t1"."Chart" COLLATE orv_ci)"},
      {"SELECT DISTINCT Chart, Seq FROM Lines",
       R"(SELECT DISTINCT "t1"."Chart" COLLATE orv_ci AS "Chart", "t1"."Seq" AS "Seq" FROM "Lines" AS "t1" ORDER BY 1 COLLATE orv_ci, 2)"},
      // Only the statement's own query is ordered.
      {"SELECT Name FROM Charts WHERE Chart IN (SELECT Chart FROM Lines WHERE Seq = 1)",
       R"(SELECT "t1"."Name" AS "Name" FROM "Charts" AS "t1" WHERE "t1"."Chart" COLLATE orv_ci IN (SELECT "t2"."Chart" AS "Chart" FROM "Lines" AS "t2" WHERE "t2"."Seq" = 1) ORDER BY "t1"."Chart" COLLATE orv_ci)"},
      {"INSERT INTO Log (Note) SELECT Note FROM Lines",
       R"(INSERT INTO "Log" ("Note") SELECT "t1"."Note" AS "Note" FROM "Lines" AS "t1")"},
      // No key for some of the rows: left as it was.
      {"SELECT Note FROM Log", R"(SELECT "t1"."Note" AS "Note" FROM "Log" AS "t1")"},
      {"SELECT l.Seq FROM Lines l CROSS JOIN Log",
       R"(SELECT "t1"."Seq" AS "Seq" FROM "Lines" AS "t1" CROSS JOIN "Log" AS "t2")"},
      {"SELECT d.Chart FROM (SELECT Chart FROM Lines) AS d",
       R"(SELECT "t2"."Chart" AS "Chart" FROM (SELECT "t1"."Chart" AS "Chart" FROM "Lines" AS "t1") AS "t2")"},
      // One row, and a compound: left alone.
      {"SELECT COUNT(*) FROM Lines", R"(SELECT COUNT(*) FROM "Lines" AS "t1")"},
      {"SELECT Chart FROM Lines UNION ALL SELECT Chart FROM Charts",
       R"(SELECT "t1"."Chart" AS "Chart" FROM "Lines" AS "t1" UNION ALL SELECT "t2"."Chart" AS "Chart" FROM "Charts" AS "t2")"},
  };
  for (const auto& [tsql, text] : sqlite) EXPECT_EQ(text, Translate(tsql, schema, Dialect::SQLite).sql) << tsql;

  const std::pair<const char*, const char*> postgres[] = {
      {"SELECT Seq FROM Lines",
       R"(SELECT "t1"."Seq" AS "Seq" FROM "Lines" AS "t1" ORDER BY orvenda.orv_key("t1"."Chart") COLLATE "C" NULLS FIRST, "t1"."Seq" NULLS FIRST)"},
      // Tie-breakers put NULLs first, as SQLite does; a table joined by its
      // whole key adds no key of its own.
      {"SELECT l.Note, c.Name FROM Lines l INNER JOIN Charts c ON c.Chart = l.Chart ORDER BY l.Fee",
       R"(SELECT "t1"."Note" AS "Note", "t2"."Name" AS "Name" FROM "Lines" AS "t1" INNER JOIN "Charts" AS "t2" ON "t2"."Chart" = "t1"."Chart" ORDER BY "t1"."Fee" NULLS FIRST, orvenda.orv_key("t1"."Chart") COLLATE "C" NULLS FIRST, "t1"."Seq" NULLS FIRST)"},
      {"SELECT Seq, Fee FROM Lines ORDER BY Chart",
       R"(SELECT "t1"."Seq" AS "Seq", "t1"."Fee" AS "Fee" FROM "Lines" AS "t1" ORDER BY orvenda.orv_key("t1"."Chart") COLLATE "C" NULLS FIRST, 1 NULLS FIRST, 2 NULLS FIRST)"},
      // A table joined by its whole key adds no sort key: each line has
      // one chart at most. Joined by part of its key, it does.
      {"SELECT l.Seq, c.Name FROM Lines l INNER JOIN Charts c ON c.Chart = l.Chart",
       R"(SELECT "t1"."Seq" AS "Seq", "t2"."Name" AS "Name" FROM "Lines" AS "t1" INNER JOIN "Charts" AS "t2" ON "t2"."Chart" = "t1"."Chart" ORDER BY orvenda.orv_key("t1"."Chart") COLLATE "C" NULLS FIRST, "t1"."Seq" NULLS FIRST)"},
      {"SELECT c.Name, l.Seq FROM Charts c LEFT JOIN Lines l ON l.Chart = c.Chart",
       R"(SELECT "t1"."Name" AS "Name", "t2"."Seq" AS "Seq" FROM "Charts" AS "t1" LEFT JOIN "Lines" AS "t2" ON "t2"."Chart" = "t1"."Chart" ORDER BY orvenda.orv_key("t1"."Chart") COLLATE "C" NULLS FIRST, orvenda.orv_key("t2"."Chart") COLLATE "C" NULLS FIRST, "t2"."Seq" NULLS FIRST)"},
      // The grouped text is selected and ordered through the grouping key
      // itself (read by orv_text, which takes bpchar as it is): the server
      // refuses a sort key over the ungrouped column.
      {"SELECT Chart + 'X' AS k, COUNT(*) FROM Lines GROUP BY Chart + 'X'",
       R"(SELECT orvenda.orv_text(CAST(orvenda.orv_text("t1"."Chart") || 'X' AS bpchar) COLLATE orvenda.orv_ci) AS "k", COUNT(*) FROM "Lines" AS "t1" GROUP BY CAST(orvenda.orv_text("t1"."Chart") || 'X' AS bpchar) COLLATE orvenda.orv_ci ORDER BY orvenda.orv_key((orvenda.orv_text(CAST(orvenda.orv_text("t1"."Chart") || 'X' AS bpchar) COLLATE orvenda.orv_ci))) COLLATE "C" NULLS FIRST)"},
  };
  for (const auto& [tsql, text] : postgres) EXPECT_EQ(text, Translate(tsql, schema, Dialect::PostgreSQL).sql) << tsql;
}

// Rows tied on every written key come out in one order on each engine: by
// the tie-breaking result columns with NULLs first, then by the keys.
TEST(SqlImpliedOrder, TiedRowsInOneOrderOnEachEngine) {
  testing::ExpectRows({
      // Appointments 3, 4 and 10 share the day; Confirmed is 0, 1 and NULL.
      {"null_tie_breaker_first",
       "SELECT Reason, Confirmed FROM PatientAppointments WHERE [Date] = '2026-11-20' ORDER BY [Date]",
       {"Follow-up\tNULL", "Cleaning\t0", "NULL\t1"}},
      // Only text is selected: payment 3's two details and payment 9's one
      // tie on the type, and come by payment, then detail. SQLite's scan of
      // the details alone would give Luc, Maximilienne, Luc.
      {"keys_after_written_order",
       "SELECT p.PaymentName FROM InvoicePayments p INNER JOIN InvoicePaymentDetails d "
       "ON d.InvoicePaymentID = p.ID WHERE p.PaymentTypeID IN (1, 2) ORDER BY p.PaymentTypeID",
       {"Luc Tremblay", "Luc Tremblay", "Maximilienne Beaulieu", "Claire Tremblay", "Seamus O'Brien"}},
  });
}

}  // namespace
}  // namespace orv::sql

// The PostgreSQL text of statements where the text itself matters: quoted
// names as declared, whole numbers printed once as written (the statement
// cache turns them into $n parameters), the casts and helpers that keep SQL
// Server's meaning. Rows are run on both engines in constructs_test.cpp.
#include <gtest/gtest.h>

#include "sql_test_support.h"

namespace orv::sql::testing {
namespace {

TEST(SqlPrintPostgres, TextOfTranslations) {
  FixtureDb db;
  const std::pair<const char*, const char*> cases[] = {
      // Tables by their declared name: PostgreSQL's quoted names keep case.
      {"select [Invoice#] from invoices where id = 2",
       R"(SELECT "t1"."Invoice#" AS "Invoice#" FROM "Invoices" AS "t1" WHERE "t1"."ID" = 2 ORDER BY "t1"."ID" NULLS FIRST)"},
      // A text code against a number: strict conversion, the number once.
      {"SELECT Description FROM FeeCodes WHERE ID = 01103",
       R"(SELECT "t1"."Description" AS "Description" FROM "FeeCodes" AS "t1" WHERE orvenda.orv_int("t1"."ID") = 1103 ORDER BY orvenda.orv_key("t1"."ID") COLLATE "C" NULLS FIRST)"},
      // bpchar keeps its trailing blanks only through orv_text.
      {"SELECT LastName + ', ' + FirstName FROM Patient WHERE ID = 5",
       R"(SELECT orvenda.orv_text("t1"."LastName") || ', ' || orvenda.orv_text("t1"."FirstName") FROM "Patient" AS "t1" WHERE "t1"."ID" = 5 ORDER BY "t1"."ID" NULLS FIRST)"},
      // A column compares natively; derived text is cast under the collation.
      {"SELECT ID FROM Patient WHERE LastName = FirstName + 'x'",
       R"(SELECT "t1"."ID" AS "ID" FROM "Patient" AS "t1" WHERE "t1"."LastName" = CAST(orvenda.orv_text("t1"."FirstName") || 'x' AS bpchar) ORDER BY "t1"."ID" NULLS FIRST)"},
      // Dates are typed literals; text order by sort key, NULLs first.
      {"SELECT TOP 3 ID FROM Invoices WHERE [Date] <= '11/19/2026' ORDER BY notes, ID DESC",
       R"(SELECT "t1"."ID" AS "ID" FROM "Invoices" AS "t1" WHERE "t1"."Date" <= TIMESTAMP '2026-11-19 00:00:00' ORDER BY orvenda.orv_key("t1"."notes") COLLATE "C" NULLS FIRST, "t1"."ID" DESC NULLS LAST LIMIT 3)"},
      // UNION orders from outside, by result column.
      {"SELECT Name FROM Reasons UNION SELECT Name FROM FeeGuides ORDER BY Name",
       R"(SELECT * FROM (SELECT "t1"."Name" AS "Name" FROM "Reasons" AS "t1" UNION SELECT "t2"."Name" AS "Name" FROM "FeeGuides" AS "t2") AS "q"("Name") ORDER BY orvenda.orv_key("q"."Name") COLLATE "C" NULLS FIRST)"},
      {"SELECT 7 / 2, Cost / 2, 5 ^ 3 FROM InvoiceDetails WHERE ID = 1",
       R"(SELECT 7 / 2, CAST("t1"."Cost" AS numeric) / 2, 5 # 3 FROM "InvoiceDetails" AS "t1" WHERE "t1"."ID" = 1 ORDER BY "t1"."ID" NULLS FIRST)"},
      {"SELECT GETDATE() - 30",
       R"(SELECT orvenda.orv_adddays(orvenda.orv_getdate(), -30))"},
      // Ordered comparisons of one text column with literals: the column's
      // key once a row, tested against the key ranges they admit, which are
      // worked out once a run; each literal still printed once. The
      // comparisons of the column gather where the first of them stood.
      {"SELECT ID FROM Invoices WHERE ProviderID = 2 AND notes >= '100' AND ID > 0 AND notes < '200'",
       R"(SELECT "t1"."ID" AS "ID" FROM "Invoices" AS "t1" WHERE "t1"."ProviderID" = 2 AND (orvenda.orv_key("t1"."notes") COLLATE "C" <@ (SELECT (orvenda.orv_keyranges(orvenda.orv_keyrange(orvenda.orv_key('100'), NULL, '[)')) * orvenda.orv_keyranges(orvenda.orv_keyrange(NULL, orvenda.orv_key('200'), '()'))))) AND "t1"."ID" > 0 ORDER BY "t1"."ID" NULLS FIRST)"},
      {"SELECT ID FROM Invoices WHERE notes BETWEEN 'a' AND 'c' OR 'x' <= notes",
       R"(SELECT "t1"."ID" AS "ID" FROM "Invoices" AS "t1" WHERE (orvenda.orv_key("t1"."notes") COLLATE "C" <@ (SELECT ((orvenda.orv_keyranges(orvenda.orv_keyrange(orvenda.orv_key('a'), NULL, '[)')) * orvenda.orv_keyranges(orvenda.orv_keyrange(NULL, orvenda.orv_key('c'), '(]'))) + orvenda.orv_keyranges(orvenda.orv_keyrange(orvenda.orv_key('x'), NULL, '[)'))))) ORDER BY "t1"."ID" NULLS FIRST)"},
      // One comparison computes the column's key once anyway.
      {"SELECT ID FROM Invoices WHERE notes > 'm'",
       R"(SELECT "t1"."ID" AS "ID" FROM "Invoices" AS "t1" WHERE (orvenda.orv_key("t1"."notes") COLLATE "C") > (orvenda.orv_key('m') COLLATE "C") ORDER BY "t1"."ID" NULLS FIRST)"},
  };
  for (const auto& [tsql, postgres] : cases) {
    EXPECT_EQ(postgres, Translate(tsql, db.schema(), Dialect::PostgreSQL).sql) << tsql;
  }
}

}  // namespace
}  // namespace orv::sql::testing

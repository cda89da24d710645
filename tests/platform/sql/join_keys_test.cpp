// A family condition spread over Invoices and Patient is moved onto Patient,
// where its indexes answer it, and selects the same rows; where the move
// would change the rows, nothing moves.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "sql_test_support.h"

namespace orv::sql::testing {
namespace {


// Fixture families: holder 1 has patients 1, 2 and 3 (invoices 1, 2, 4);
// patients 2 and 3 have secondary holder 2; holder 4 has patient 4
// (invoices 3 and 7).
TEST(JoinKeys, AFamilyConditionMovesOntoOneTableWithTheSameRows) {
  FixtureDb db;
  struct Case {
    const char* tsql;
    const char* printed;  // the condition as the engine gets it
    Rows rows;
  };
  const std::string from = "SELECT Invoices.ID FROM Invoices INNER JOIN Patient ON Invoices.PatientID = Patient.ID ";
  const Case moved[] = {
      {"WHERE (Invoices.PatientID = 1 OR Patient.PrimaryHolderID = 1) ORDER BY Invoices.ID",
       R"(WHERE "t2"."ID" = 1 OR "t2"."PrimaryHolderID" = 1)", {{"1"}, {"2"}, {"4"}}},
      {"WHERE [Complete?] <> 0 AND (Patient.SecondaryHolderID = 2 OR 2 = Invoices.PatientID) ORDER BY Invoices.ID",
       R"(("t2"."SecondaryHolderID" = 2 OR 2 = "t2"."ID"))", {{"2"}}},
      // Two families at once, each in its own parentheses.
      {"WHERE ((Invoices.PatientID = 4 OR Patient.PrimaryHolderID = 4) OR (Invoices.PatientID = 2 OR "
       "Patient.PrimaryHolderID = 2)) ORDER BY Invoices.ID",
       R"("t2"."ID" = 4 OR "t2"."PrimaryHolderID" = 4) OR ("t2"."ID" = 2)", {{"2"}, {"3"}, {"7"}}},
  };
  for (const Case& c : moved) {
    const std::string tsql = from + c.tsql;
    SCOPED_TRACE(tsql);
    EXPECT_NE(Translate(tsql, db.schema(), Dialect::SQLite).sql.find(c.printed), std::string::npos)
        << Translate(tsql, db.schema(), Dialect::SQLite).sql;
    EXPECT_EQ(db.Run(tsql).rows, c.rows);
  }

  // Left as written: under a LEFT JOIN an invoice without its patient row
  // still has its PatientID; a text term cannot move, nor can a term
  // beside a subquery or one that is no "column = number". (A text term on
  // the table the others move onto is no hindrance.)
  struct Kept {
    const char* tsql;
    const char* printed;
  };
  const Kept kept[] = {
      {"SELECT Invoices.ID FROM Invoices LEFT JOIN Patient ON Invoices.PatientID = Patient.ID WHERE "
       "(Invoices.PatientID = 6 OR Patient.PrimaryHolderID = 1)",
       R"("t1"."PatientID" = 6 OR)"},
      {"SELECT Invoices.ID FROM Invoices INNER JOIN Patient ON Invoices.PatientID = Patient.ID WHERE "
       "(Invoices.notes = 'Interest' OR Patient.PrimaryHolderID = 1)",
       R"(OR "t2"."PrimaryHolderID" = 1)"},
      {"SELECT Invoices.ID FROM Invoices INNER JOIN Patient ON Invoices.PatientID = Patient.ID WHERE "
       "(Invoices.PatientID = 6 OR Patient.ID IN (SELECT PatientID FROM InvoicePayments))",
       R"("t1"."PatientID" = 6 OR)"},
      {"SELECT Invoices.ID FROM Invoices INNER JOIN Patient ON Invoices.PatientID = Patient.ID WHERE "
       "(Invoices.PatientID > 6 OR Patient.PrimaryHolderID = 1)",
       R"("t1"."PatientID" > 6 OR)"},
  };
  for (const Kept& k : kept) {
    const std::string sql = Translate(k.tsql, db.schema(), Dialect::SQLite).sql;
    EXPECT_NE(sql.find(k.printed), std::string::npos) << sql;
  }
}

}  // namespace
}  // namespace orv::sql::testing

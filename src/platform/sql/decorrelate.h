// Per-row aggregate subqueries in a select list, read as grouped joins.
//
// The aged receivables read fifteen figures per patient, each written as
//
//   ISNULL((SELECT SUM(Cost) FROM InvoiceDetails INNER JOIN Invoices ...
//           WHERE Invoices.PatientID = Patient.ID AND ...), 0)
//
// SQLite runs such a subquery per patient in a few microseconds; PostgreSQL
// spends several times that per run in executor start-up, which for
// thousands of patients makes the report several times slower on the
// server. The same figures come from one grouped read joined to the list:
//
//   LEFT JOIN (SELECT Invoices.PatientID AS k, SUM(Cost) AS v FROM ...
//              WHERE ... GROUP BY Invoices.PatientID) AS d1 ON d1.k = Patient.ID
//
// and the item reads d1.v. A patient without rows finds no group and reads
// NULL, as the subquery gives for no rows.
#pragma once

#include <set>
#include <string>

#include "platform/sql/ast.h"

namespace orv::sql {

// The engine aliases of the tables a source reads (every table of a join).
void Aliases(const TableSource& src, std::set<std::string>& out);
// True when `e` holds a subquery.
bool HasQuery(const Expr& e);
// True when `e` names a column of a table outside `own` (engine aliases).
bool NamesOuter(const Expr& e, const std::set<std::string>& own);

// Rewrites, in the statement's own SELECT (one SELECT, not grouped, no
// aggregates of its own), each select-list subquery that is one bare SUM,
// MIN, MAX or AVG (no TOP, DISTINCT, GROUP BY, ORDER BY or nested query)
// whose only reference to the outer query is one top-level WHERE conjunct
// "inner integer column = outer integer column".
void DecorrelateAggregateSubqueries(Statement& st);

}  // namespace orv::sql

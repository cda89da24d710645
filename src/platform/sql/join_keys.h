// A disjunction spread over two joined tables, moved onto one of them.
//
// The family's invoices are asked for as
//
//   ... FROM Invoices INNER JOIN Patient ON Invoices.PatientID = Patient.ID
//   WHERE (Invoices.PatientID = 17 OR Patient.PrimaryHolderID = 17)
//
// An OR whose terms name two tables cannot be answered from either table's
// indexes, so both engines read every invoice of the practice for each
// family. In the joined rows Invoices.PatientID equals Patient.ID, so the
// first term may name Patient.ID instead; the OR then lies on Patient alone,
// which its key and holder index answer, and the invoices follow by their
// PatientID index. The rows are the same: only how they are found changes.
#pragma once

#include "platform/sql/ast.h"

namespace orv::sql {

// Rewrites, in every SELECT of a bound statement, each top-level OR of the
// WHERE clause whose terms name exactly two tables, when every term on one
// of them is "integer column = number" and that column is joined by "=" to
// an integer column of the other (an INNER JOIN's ON clause or the WHERE
// clause itself, on a side no outer join leaves NULL). The term then names
// the other table's column.
void MoveDisjunctionsOntoOneTable(Statement& st);

}  // namespace orv::sql

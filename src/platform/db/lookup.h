// The single-value lookup and the list builder the report helpers share.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "common/variant.h"
#include "platform/db/connection.h"
#include "platform/db/recordset.h"

namespace orv::db {

// One value as text in a Variant: runs
//   "Select " field " from " table " where " keyField " = " key
// with a String key in single quotes and any other key as its bare text,
// and returns the first row's `field` (square brackets taken out for the
// field lookup) as text, untrimmed. A Null or blank key gives "" without a
// query; no row, a Null value, or any failure gives "".
Variant ReturnValue(const Connection& connection, const std::string& table,
                    const std::string& keyField, const Variant& keyValue, const std::string& field);

// Walks `recordset` from its first row, if it has rows, appending
// "|#" fieldA ";" fieldB "|" per row (Null as ""); leaves it at its end.
std::string ReturnList(Recordset& recordset, const std::string& fieldA, const std::string& fieldB);

// The host's second list builder, kept beside the first as an overload: the
// host calls both by one name, and the kind of the second argument (one
// column name, or the list of them) tells them apart. It walks `recordset`
// from its first row, if it has rows, and writes each row as `rowMark`
// followed by the values of `columns` joined with "|" (Null as ""), ending
// the row with ";": a ready table body. The mark "|#" is the drop-down's
// keyed form and takes the row's count, from 1, and ";" after it, so that
// each entry is keyed by its place in the list:
//   {"ID", "LastName"}, ""    ->  "1|Tremblay;2|Singh;"
//   {"LastName"},      "|#"   ->  "|#1;Tremblay;|#2;Singh;"
// Leaves the recordset at its end; a column the recordset lacks raises.
std::string ReturnList(Recordset& recordset, const std::vector<std::string>& columns,
                       std::string_view rowMark);
// The columns as a braced list, `ReturnList(rs, {"ID"}, "|#")`: without it a
// list of one name would read as one text and match both forms.
inline std::string ReturnList(Recordset& recordset, std::initializer_list<std::string> columns,
                              std::string_view rowMark) {
  return ReturnList(recordset, std::vector<std::string>(columns), rowMark);
}

// Puts the recordset back at its first row if it has rows; an empty one is
// left as it is.
void ResetRecordset(Recordset& recordset);

// The `Name` of the row whose `ID` is `ID`: the recordset is reset, then
// searched from its first row. Null, Empty or blank `ID`, an empty
// recordset or no such row give "". The recordset stays on the row found,
// or at its end.
std::string ReturnName(Recordset& recordset, const Variant& ID);

}  // namespace orv::db

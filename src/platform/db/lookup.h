// The single-value lookup and the list builder the report helpers share.
#pragma once

#include <string>

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

}  // namespace orv::db

#include "platform/db/lookup.h"

#include <algorithm>

namespace orv::db {

namespace {

// The text of a value as the reports print it, with Null and Empty as "".
std::string TextOf(const Variant& v) {
  if (v.IsNull() || v.IsEmpty()) return {};
  return CStr(v);
}

}  // namespace

Variant ReturnValue(const Connection& connection, const std::string& table,
                    const std::string& keyField, const Variant& keyValue, const std::string& field) {
  try {
    std::string key = TextOf(keyValue);
    if (key.find_first_not_of(' ') == std::string::npos) return Variant(std::string());
    std::string statement = "Select " + field + " from " + table + " where " + keyField + " = ";
    if (keyValue.IsString())
      statement += "'" + key + "'";
    else
      statement += key;
    Recordset rs;
    rs.Open(statement, connection, adOpenForwardOnly, adLockReadOnly);
    if (rs.Eof()) return Variant(std::string());
    std::string name = field;
    name.erase(std::remove_if(name.begin(), name.end(), [](char c) { return c == '[' || c == ']'; }),
               name.end());
    Variant out(TextOf(rs.Fields(name).Value()));
    rs.Close();
    return out;
  } catch (const ReportError&) {
    // The lookup traps every failure of its own: a missing table, a bad key
    // text or a closed connection all read as "no value".
    return Variant(std::string());
  }
}

std::string ReturnList(Recordset& recordset, const std::string& fieldA, const std::string& fieldB) {
  std::string out;
  if (recordset.Eof() && recordset.Bof()) return out;
  recordset.MoveFirst();
  while (!recordset.Eof()) {
    out += "|#" + TextOf(recordset.Fields(fieldA).Value()) + ";" +
           TextOf(recordset.Fields(fieldB).Value()) + "|";
    recordset.MoveNext();
  }
  return out;
}

std::string ReturnList(Recordset& recordset, const std::vector<std::string>& columns,
                       std::string_view rowMark) {
  std::string out;
  if (recordset.Eof() && recordset.Bof()) return out;
  recordset.MoveFirst();
  long count = 0;
  while (!recordset.Eof()) {
    out += rowMark;
    if (rowMark == "|#") out += std::to_string(++count) + ";";
    for (size_t c = 0; c < columns.size(); ++c)
      out += (c ? "|" : "") + TextOf(recordset.Fields(columns[c]).Value());
    out += ";";
    recordset.MoveNext();
  }
  return out;
}

void ResetRecordset(Recordset& recordset) {
  if (!(recordset.Eof() && recordset.Bof())) recordset.MoveFirst();
}

std::string ReturnName(Recordset& recordset, const Variant& ID) {
  const std::string key = TextOf(ID);
  if (key.find_first_not_of(' ') == std::string::npos) return {};
  ResetRecordset(recordset);
  if (recordset.Eof()) return {};
  recordset.Find("ID = " + key);
  if (recordset.Eof()) return {};
  return TextOf(recordset.Fields("Name").Value());
}

}  // namespace orv::db

// Field types (the numbers of ADO's DataTypeEnum that the reports and the
// fabricated recordsets use) and the conversion of engine values into the
// Variants a field yields.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "common/variant.h"
#include "platform/sql/translate.h"

namespace orv::db {

enum FieldType : int {
  adEmpty = 0,
  adSmallInt = 2,
  adInteger = 3,
  adSingle = 4,
  adDouble = 5,
  adCurrency = 6,
  adDate = 7,
  adBoolean = 11,
  adVariant = 12,
  adDecimal = 14,
  adBigInt = 20,
  adChar = 129,
  adNumeric = 131,
  adDBTimeStamp = 135,
  adChapter = 136,
  adVarChar = 200,
  adLongVarChar = 201,
  adVarWChar = 202,
  adLongVarWChar = 203,
  adVarBinary = 204,
  adLongVarBinary = 205,
};

// The field type of a result column of the server-side kind `kind`.
FieldType FieldTypeOfKind(sql::ValueKind kind);

// Turns a value as the engine stores it (Null, 64-bit integer, double, text,
// Bytes) into the Variant a field of `kind` yields:
//   Integer  int32, or int64 when out of the 32-bit range
//   Boolean  bool (nonzero is true)
//   Money    Currency, rounded to four decimals, so 0.1 + 0.2 reads 0.3000
//   Date     DateTime from the stored "yyyy-mm-dd[ hh:nn[:ss[.fff]]]" text
//   Float, Decimal  double
//   Text     string (a number stored in a text column reads as its text)
//   Blob     Bytes
//   Unknown  by the storage class.
// Null stays Null. Text that is no value of the kind is returned as text
// rather than guessed at.
Variant ValueOfKind(Variant stored, sql::ValueKind kind);

// Coerces a value assigned to a field of a fabricated recordset to the
// field's type, as the field would hold it (CLng for adInteger, CCur for
// adCurrency, ...). Null and Empty pass unchanged. Throws ConversionError.
Variant CoerceToFieldType(const Variant& value, FieldType type);

// Parses "yyyy-mm-dd", "yyyy-mm-dd hh:nn", "yyyy-mm-dd hh:nn:ss[.fff]" (a 'T'
// may stand for the blank). nullopt for anything else.
std::optional<DateTime> ParseIsoDateTime(std::string_view text);

}  // namespace orv::db

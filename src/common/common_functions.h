// clsCommonFunctions: the coercions that turn a database value that may be
// Null, empty or of an unexpected type into a typed value without failing the
// report, and the small formatting, time and filter routines every
// report calls. The class holds no state; reports keep one instance.
//
// The coercions trap their own failures: an input that cannot be converted
// gives the type's zero value ("abc" as money is 0). MyFormat, TimeToInt,
// IntToTime, GetIDFromProviderName, GetNumberOfIDFromProviderName,
// PursePaymentName and BoolToInt have no trap: MyFormat of text that is no
// number and TimeToInt of a value that does not format as a time raise
// ReportError to the caller.
//
// The routines of the class that need the database live with it
// (platform/db/lookup.h): ReturnValue, both ReturnList, ResetRecordset and
// ReturnName. CheckVersion asks its question through the host's services
// and lives with them (platform/host/version_check.h). The window routines
// have no windows to work on here, and the character table of
// ConvertToAscii belongs to the host's data exchange: neither is part of
// this component.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "common/currency.h"
#include "common/datetime.h"
#include "common/variant.h"

namespace orv {

// Named lists of keys and the ID each stands for, as the host's screens keep
// them for their drop-downs: each list is found by its name in upper case,
// and within it each key's entry is a ready search, "ID = " and the ID.
struct IDLists {
  std::vector<std::pair<std::string, std::map<std::string, std::string>>> lists;
};

class clsCommonFunctions {
 public:
  // Money. Null, Empty and text that is blank once trimmed give 0; otherwise
  // CCur (four decimals, half to even), reading formatted text by the locale
  // ("$1,234.50", "(5.00)"). Anything that does not convert gives 0.
  Currency ReturnCur(const Variant& value) const;

  // A 32-bit whole number from a masked input field. Every "_" is removed
  // from text first and the cleaned text is written back into `value`, so the
  // caller's variable no longer holds the underscores ("1_2_" becomes "12").
  // Null and blank text give 0; otherwise CLng, rounding half to even
  // ("2.5" -> 2); anything that does not convert gives 0. Values that are not
  // text are left as they are.
  int32_t ReturnNumber(Variant& value) const;

  // The leading number of the value's text as the host language's Val reads
  // it ("12abc" -> 12, "abc" -> 0, "1,234" -> 1). Null gives 0.
  double ReturnVal(const Variant& value) const;

  // A date. Null gives today (Clock::Today(), no time), not the zero date; a
  // value that does not convert gives the zero date (1899-12-30).
  DateTime ReturnDate(const Variant& value) const;

  // A flag. Null and "" give false; otherwise CBool ("True", "false", a
  // number in text, nonzero numbers); anything that does not convert gives
  // false.
  bool ReturnBool(const Variant& value) const;

  // 1 when the leading number of the value's text (as ReturnVal reads it) is
  // nonzero, else 0; Null gives 0.
  uint8_t Return01(const Variant& value) const;

  // "Y" when the value converts to true, "N" when to false or when Null, and
  // "" when it does not convert at all ("abc", "").
  std::string ReturnYN(const Variant& value) const;

  // 1 for any nonzero value, else 0.
  int16_t BoolToInt(int16_t value) const;

  // Text of the value, "" for Null and Empty; with `trim` the blanks at both
  // ends are removed. The default does not trim.
  std::string returnStr(const Variant& value, bool trim = false) const;

  // An amount as money. With fmt "Currency" the result is in "##,##0.00",
  // without a sign ("1,234.50"); with any other fmt it is the named format
  // "Currency" ("$1,234.50"). The inversion is deliberate: every caller passes
  // "Currency" and gets a plain amount under a heading that carries the ($).
  // The value goes through CCur first: Null raises NullError and text that is
  // no number raises ConversionError.
  std::string MyFormat(const Variant& value, std::string_view fmt) const;
  std::string MyFormat(Currency value, std::string_view fmt) const;

  // A date for the claim forms' fixed-width fields: Null, or a date before
  // 1900, gives "00000000"; otherwise Format(date, fmt). A value that is no
  // date gives "".
  std::string ReturnFormatedDate(const Variant& value, std::string_view fmt) const;

  // The reverse for YYYYMMDD text: Null gives Empty, "00000000" gives Null,
  // and other text the date it spells, read the same whatever the locale's
  // order of day and month. Text that is no such date gives Empty.
  Variant ConvertToNormalDate(const Variant& value) const;

  // Digits with an implied decimal point: text longer than 2 characters gets
  // a "." before its last two ("150" -> 1.50, "12345" -> 123.45); shorter
  // text, Null, and text that is no number give 0.
  Currency ConvertoNormalCurrency(const Variant& value) const;

  // Minutes since midnight of a time: Null, "" and "0" give 0; otherwise the
  // value in "Medium Time" ("09:05 AM") is read back: 12:30 AM is 30,
  // 12:30 PM is 750, 1:05 PM is 785. A value that does not format as a time
  // raises ReportError.
  int32_t TimeToInt(const Variant& value) const;

  // The time of a count of minutes since midnight in the locale's long time,
  // with seconds: 0 is "12:00:00 AM", 720 "12:00:00 PM", 785 "1:05:00 PM".
  std::string IntToTime(int16_t minutes) const;

  // The number of "=" in a provider filter such as "ID = 12 OR ID = 14" (2).
  int32_t GetNumberOfIDFromProviderName(std::string_view text) const;

  // The n-th ID (from 1) of such a filter: the digits starting two
  // characters after the n-th "=", so the filter must keep its blank after
  // "=". 0 when there are fewer than n "=" or no digits there.
  int32_t GetIDFromProviderName(std::string_view text, int32_t n) const;

  // Splits a bulk payment's name "insurer-patient" at its last "-". With
  // which "Insurance": the whole name when there is no "-", the first 15
  // characters when the "-" is past position 15, else the text before the
  // "-". With "Patient": the text after the "-", or "". Any other `which`
  // gives "". Nothing is trimmed.
  std::string PursePaymentName(std::string_view name, std::string_view which) const;

  // ---- Text routines the host shares ----
  // Line breaks become blanks, then the text is broken with CR LF at the
  // last blank that keeps a line within `width` characters. A line with no
  // such blank ends the wrapping: the rest stays whole on it. Null or blank
  // gives "".
  std::string WrapText(const Variant& text, int width) const;
  // Line `n` (from 1) of text broken by CR LF; past the last line, "".
  std::string ReturnLine(std::string_view text, int n) const;
  // The digits of the text; with `words`, spoken numbers first become
  // digits, inside words too ("tomorrow" gives "2").
  std::string ReturnNumberOnly(std::string_view text, bool words) const;
  // Digits and "." only; Null or blank gives "".
  std::string KeepNumbers(const Variant& text) const;
  // Letters, digits, blank and "()," (only digits with `digitsOnly`),
  // trimmed; text that starts with three blanks gives "".
  std::string StripNonAlphaNum(std::string_view text, bool digitsOnly) const;
  // True when every character of the trimmed text is in `allowed`.
  bool ValidateText(std::string_view text, std::string_view allowed) const;
  // A fixed-width field: Null stays Null; CR and LF are dropped; with
  // `isMoney` the amount in cents' digits. Longer than `length` it is cut,
  // `side` 1 keeping the right end; shorter it is filled with `fill` (""
  // is a blank) on the left for `side` 1, on the right otherwise.
  Variant PadString(const Variant& value, int side, int length, std::string fill, bool isMoney) const;
  struct RGBColor {
    uint8_t red, green, blue;
  };
  // A colour as the host stores it (red in the low byte) split in three.
  RGBColor returnRGBColor(uint32_t color) const;

  // ---- ID lists the host shares ----
  // Stores "ID = " and `value` for `key` in the list named `name` (any case),
  // which a new name adds. A key set again takes the new ID: a screen that
  // reloads its list expects the ID it loaded last. Keys are compared as
  // text, exactly; Null reads as "".
  void setID(IDLists& list, std::string_view name, const Variant& key, const Variant& value) const;
  // The entry of `key` in the list named `name` ("ID = 12"), or Empty when
  // there is no such list or key.
  Variant GetID(const IDLists& list, std::string_view name, const Variant& key) const;
};

}  // namespace orv

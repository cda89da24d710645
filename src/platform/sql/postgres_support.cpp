#include "platform/sql/postgres_support.h"

#include <string_view>

#include "common/collation.h"

namespace orv::sql {

namespace {

// Letters folded by the server's case-insensitive collation as the SQLite
// path folds them: ASCII and the Latin-1 capitals (not the sign ×).
constexpr const char* kFold =
    R"SQL(CREATE OR REPLACE FUNCTION orvenda.orv_fold(s text) RETURNS text LANGUAGE sql IMMUTABLE PARALLEL SAFE AS $$
  SELECT translate(s, 'ABCDEFGHIJKLMNOPQRSTUVWXYZÀÁÂÃÄÅÆÇÈÉÊËÌÍÎÏÐÑÒÓÔÕÖØÙÚÛÜÝÞ',
                      'abcdefghijklmnopqrstuvwxyzàáâãäåæçèéêëìíîïðñòóôõöøùúûüýþ') $$)SQL";

std::string Utf8(std::u32string_view cps) {
  std::string out;
  for (char32_t c : cps) collation::AppendUtf8(c, out);
  return out;
}

// The sort key of common/collation.h, written in SQL from the same table of
// letters, so that ORDER BY, MIN, MAX, < and > on the server order text as
// the SQLite collation and the recordsets do (a test holds the two keys
// equal over names of every kind). Each level is one mapping of the folded
// text by translate (two-letter bases spelled out first by replace).
//
// translate() looks each character of its text up in its "from" list one
// entry after another, so a key costs the text's length times the length
// of the lists it goes through: folding and mapping a 20-letter name over
// the table's letters cost about 200,000 instructions. Hence four paths,
// the cheapest first, each giving the key byte for byte:
//   1. ASCII without a hyphen or an apostrophe, most names: every level is
//      the text in small letters (one regular expression tells);
//   2. ASCII with a hyphen or an apostrophe: levels 1 and 2 leave them out,
//      level 3 marks them, each a translate over those two characters;
//   3. other text without a capital beyond ASCII: lower() under "C" folds
//      it, then one translate a level over the small letters;
//   4. text with such a capital: orv_key_capitals folds it with one more
//      translate, in plpgsql so that the fold is made once, not once a
//      level as in an inlined SQL function.
// orv_key stays a single SQL expression, which the planner inlines into the
// statement: the first three paths cost no function call.
struct SortKeyText {
  std::string capitals, smalls;  // the table's capitals beyond ASCII
  std::string single_from, single_to, accented, accents;
  std::string level1 = "f", level2 = "f";
  std::string ignorable;  // as a SQL literal's text, an apostrophe doubled
  std::string separator = " || chr(" + std::to_string(collation::kLevelSeparator) + ")";

  SortKeyText() {
    for (const collation::Letter& l : collation::Letters()) {
      std::string small = Utf8(std::u32string(1, l.small));
      if (l.capital) {
        capitals += Utf8(std::u32string(1, l.capital));
        smalls += small;
      }
      accented += small;
      accents += Utf8(std::u32string(1, l.accent));
      if (l.base[1] == '\0') {
        single_from += small;
        single_to += l.base;
      } else {
        level1 = "replace(" + level1 + ", '" + small + "', '" + l.base + "')";
        level2 = "replace(" + level2 + ", '" + small + "', '" + small + small + "')";
      }
    }
    for (char c : Utf8(collation::kIgnorable)) ignorable += c == '\'' ? std::string("''") : std::string(1, c);
  }

  // The three levels of `folded` (the text with capitals in small letters
  // and trailing blanks dropped). The ignorables, listed last in a
  // translate's "from" with nothing to map to, are deleted.
  std::string Levels(const std::string& folded) const {
    auto of = [&](std::string expr) { return expr.replace(expr.find("(f,"), 3, "(" + folded + ","); };
    return "translate(" + of(level1) + ", '" + single_from + ignorable + "', '" + single_to + "')" + separator +
           "\n      || translate(" + of(level2) + ", '" + accented + ignorable + "', '" + accents + "')" +
           separator + "\n      || translate(" + folded + ", '" + ignorable + "', '" +
           Utf8(collation::kIgnorableMarks) + "')";
  }
};

// The text in small ASCII letters without its trailing blanks. Under "C":
// the argument may come under orv_ci, whose nondeterminism the server
// refuses in replace and in regular expressions, and under which lower()
// would fold more than ASCII.
constexpr const char* kSmallAscii = "lower(rtrim(s COLLATE \"C\", ' '))";

std::string SortKeyCapitalsFunction() {
  SortKeyText k;
  return "CREATE OR REPLACE FUNCTION orvenda.orv_key_capitals(s text) RETURNS text LANGUAGE plpgsql IMMUTABLE "
         "PARALLEL SAFE AS $$\nDECLARE\n  f text COLLATE \"C\" := translate(" + std::string(kSmallAscii) + ", '" +
         k.capitals + "', '" + k.smalls + "');\nBEGIN\n  RETURN " + k.Levels("f") + ";\nEND $$";
}

std::string SortKeyFunction() {
  SortKeyText k;
  const std::string small = kSmallAscii;
  // The apostrophe and the hyphen, the first two ignorables, and their marks.
  const std::string marks = Utf8(collation::kIgnorableMarks.substr(0, 2));
  const std::string level = small + k.separator;
  return "CREATE OR REPLACE FUNCTION orvenda.orv_key(s text) RETURNS text LANGUAGE sql IMMUTABLE PARALLEL SAFE "
         "AS $$\n  SELECT CASE WHEN (s COLLATE \"C\") ~ '^[\\x01-&(-,.-\\x7f]*$'\n"
         "    THEN left(repeat(" + level + ", 3), -1)\n"
         "    WHEN octet_length(s) = length(s)\n"
         "    THEN left(repeat(translate(" + small + ", '''-', '')" + k.separator + ", 2), -1)" + k.separator +
         "\n      || translate(" + small + ", '''-', '" + marks + "')\n"
         "    WHEN (s COLLATE \"C\") ~ '[" + k.capitals + "]' THEN orvenda.orv_key_capitals(s)\n"
         "    ELSE " + k.Levels(small) + " END $$";
}

}  // namespace

const std::vector<std::string>& PostgresSupportStatements() {
  static const std::vector<std::string> kStatements = {
      "CREATE SCHEMA IF NOT EXISTS orvenda",
      // The server's default collation: case-insensitive, accent-sensitive.
      // Text columns are bpchar under it, so trailing blanks do not count.
      "CREATE COLLATION IF NOT EXISTS orvenda.orv_ci "
      "(provider = icu, locale = 'und-u-ks-level2', deterministic = false)",

      // Raises `message` as the failed conversion does on the server; typed
      // by `model` so that it can stand in a CASE branch of any type.
      R"SQL(CREATE OR REPLACE FUNCTION orvenda.orv_fail(message text, model anyelement) RETURNS anyelement
LANGUAGE plpgsql IMMUTABLE AS $$ BEGIN RAISE EXCEPTION '%', message USING ERRCODE = '22018'; END $$)SQL",

      // A bpchar value as text with its trailing blanks: the cast to text
      // drops them, a varchar column on the server keeps them.
      R"SQL(CREATE OR REPLACE FUNCTION orvenda.orv_text(s bpchar) RETURNS text LANGUAGE sql IMMUTABLE PARALLEL SAFE AS $$
  SELECT textin(bpcharout(s)) $$)SQL",

      kFold,
      // The sort key of text, compared bytewise under COLLATE "C" by the
      // caller.
      SortKeyCapitalsFunction(),
      SortKeyFunction(),
      // MIN and MAX of text by that key.
      R"SQL(CREATE OR REPLACE FUNCTION orvenda.orv_min_step(a text, b text) RETURNS text LANGUAGE sql IMMUTABLE PARALLEL SAFE AS $$
  SELECT CASE WHEN b IS NULL THEN a WHEN a IS NULL THEN b
              WHEN orvenda.orv_key(b) COLLATE "C" < orvenda.orv_key(a) COLLATE "C" THEN b ELSE a END $$)SQL",
      R"SQL(CREATE OR REPLACE FUNCTION orvenda.orv_max_step(a text, b text) RETURNS text LANGUAGE sql IMMUTABLE PARALLEL SAFE AS $$
  SELECT CASE WHEN b IS NULL THEN a WHEN a IS NULL THEN b
              WHEN orvenda.orv_key(b) COLLATE "C" > orvenda.orv_key(a) COLLATE "C" THEN b ELSE a END $$)SQL",
      "CREATE OR REPLACE AGGREGATE orvenda.orv_min(text) (SFUNC = orvenda.orv_min_step, STYPE = text)",
      "CREATE OR REPLACE AGGREGATE orvenda.orv_max(text) (SFUNC = orvenda.orv_max_step, STYPE = text)",
      // Ranges of sort keys, and sets of them, compared bytewise: several
      // ordered comparisons of one column with literals test the column's
      // key once against the set they admit (print_postgres.cpp). A type
      // has no CREATE OR REPLACE; one made by an earlier install stays.
      R"SQL(DO $$ BEGIN
  CREATE TYPE orvenda.orv_keyrange AS RANGE (subtype = text, collation = "C", multirange_type_name = orvenda.orv_keyranges);
EXCEPTION WHEN duplicate_object THEN NULL; END $$)SQL",

      // ---- the clock and dates ----
      R"SQL(CREATE OR REPLACE FUNCTION orvenda.orv_getdate() RETURNS timestamp LANGUAGE sql STABLE PARALLEL SAFE AS $$
  SELECT COALESCE(CAST(NULLIF(current_setting('orvenda.now', true), '') AS timestamp), LOCALTIMESTAMP(0)) $$)SQL",
      R"SQL(CREATE OR REPLACE FUNCTION orvenda.orv_adddays(d timestamp, n double precision) RETURNS timestamp
LANGUAGE sql IMMUTABLE PARALLEL SAFE AS $$ SELECT d + n * INTERVAL '1 day' $$)SQL",
      // DATEADD: the number is truncated to an integer; months past the end
      // of the target month clip to its last day.
      R"SQL(CREATE OR REPLACE FUNCTION orvenda.orv_dateadd(part text, n double precision, d timestamp) RETURNS timestamp
LANGUAGE sql IMMUTABLE PARALLEL SAFE AS $$
  SELECT CASE part
    WHEN 'year' THEN d + make_interval(years => CAST(trunc(n) AS integer))
    WHEN 'quarter' THEN d + make_interval(months => 3 * CAST(trunc(n) AS integer))
    WHEN 'month' THEN d + make_interval(months => CAST(trunc(n) AS integer))
    WHEN 'week' THEN d + make_interval(days => 7 * CAST(trunc(n) AS integer))
    WHEN 'hour' THEN d + make_interval(hours => CAST(trunc(n) AS integer))
    WHEN 'minute' THEN d + make_interval(mins => CAST(trunc(n) AS integer))
    WHEN 'second' THEN d + make_interval(secs => trunc(n))
    ELSE d + make_interval(days => CAST(trunc(n) AS integer)) END $$)SQL",
      // DATEDIFF counts the boundaries crossed: years, quarters, months,
      // midnights, Sundays (weeks start on Sunday; 1899-12-31 is one),
      // hours, minutes, seconds.
      R"SQL(CREATE OR REPLACE FUNCTION orvenda.orv_datediff(part text, a timestamp, b timestamp) RETURNS bigint
LANGUAGE sql IMMUTABLE PARALLEL SAFE AS $$
  SELECT CAST(CASE part
    WHEN 'year' THEN extract(year FROM b) - extract(year FROM a)
    WHEN 'quarter' THEN (extract(year FROM b) * 4 + extract(quarter FROM b)) - (extract(year FROM a) * 4 + extract(quarter FROM a))
    WHEN 'month' THEN (extract(year FROM b) * 12 + extract(month FROM b)) - (extract(year FROM a) * 12 + extract(month FROM a))
    WHEN 'week' THEN floor((CAST(b AS date) - DATE '1899-12-31') / 7.0) - floor((CAST(a AS date) - DATE '1899-12-31') / 7.0)
    WHEN 'hour' THEN floor(extract(epoch FROM b) / 3600) - floor(extract(epoch FROM a) / 3600)
    WHEN 'minute' THEN floor(extract(epoch FROM b) / 60) - floor(extract(epoch FROM a) / 60)
    WHEN 'second' THEN floor(extract(epoch FROM b)) - floor(extract(epoch FROM a))
    ELSE CAST(b AS date) - CAST(a AS date) END AS bigint) $$)SQL",
      // DATEPART under us_english: weekday 1 is Sunday; week 1 holds
      // January 1 and weeks start on Sunday.
      R"SQL(CREATE OR REPLACE FUNCTION orvenda.orv_datepart(part text, d timestamp) RETURNS integer
LANGUAGE sql IMMUTABLE PARALLEL SAFE AS $$
  SELECT CAST(CASE part
    WHEN 'year' THEN extract(year FROM d)
    WHEN 'quarter' THEN extract(quarter FROM d)
    WHEN 'month' THEN extract(month FROM d)
    WHEN 'dayofyear' THEN extract(doy FROM d)
    WHEN 'weekday' THEN extract(dow FROM d) + 1
    WHEN 'week' THEN floor((extract(doy FROM d) + extract(dow FROM date_trunc('year', d)) - 1) / 7) + 1
    WHEN 'hour' THEN extract(hour FROM d)
    WHEN 'minute' THEN extract(minute FROM d)
    WHEN 'second' THEN floor(extract(second FROM d))
    ELSE extract(day FROM d) END AS integer) $$)SQL",
      R"SQL(CREATE OR REPLACE FUNCTION orvenda.orv_datename(part text, d timestamp) RETURNS text
LANGUAGE sql IMMUTABLE PARALLEL SAFE AS $$
  SELECT CASE part WHEN 'month' THEN to_char(d, 'FMMonth') WHEN 'weekday' THEN to_char(d, 'FMDay')
              ELSE CAST(orvenda.orv_datepart(part, d) AS text) END $$)SQL",
      // CONVERT(varchar, datetime, style); 0 and 100 give "Nov 19 2026  4:45PM".
      R"SQL(CREATE OR REPLACE FUNCTION orvenda.orv_date_text(d timestamp, style bigint) RETURNS text
LANGUAGE sql IMMUTABLE PARALLEL SAFE AS $$
  SELECT CASE style
    WHEN 1 THEN to_char(d, 'MM/DD/YY') WHEN 3 THEN to_char(d, 'DD/MM/YY') WHEN 10 THEN to_char(d, 'MM-DD-YY')
    WHEN 23 THEN to_char(d, 'YYYY-MM-DD') WHEN 101 THEN to_char(d, 'MM/DD/YYYY') WHEN 103 THEN to_char(d, 'DD/MM/YYYY')
    WHEN 106 THEN to_char(d, 'DD Mon YYYY') WHEN 107 THEN to_char(d, 'Mon DD, YYYY') WHEN 108 THEN to_char(d, 'HH24:MI:SS')
    WHEN 110 THEN to_char(d, 'MM-DD-YYYY') WHEN 111 THEN to_char(d, 'YYYY/MM/DD') WHEN 112 THEN to_char(d, 'YYYYMMDD')
    WHEN 120 THEN to_char(d, 'YYYY-MM-DD HH24:MI:SS') WHEN 121 THEN to_char(d, 'YYYY-MM-DD HH24:MI:SS.MS')
    ELSE to_char(d, 'Mon ') || lpad(to_char(d, 'FMDD'), 2) || to_char(d, ' YYYY ') || lpad(to_char(d, 'FMHH12'), 2)
         || to_char(d, ':MIAM') END $$)SQL",
      // Text to a date the way the server reads it under us_english (see
      // date_text.h for the forms); NULL when it is no date.
      R"SQL(CREATE OR REPLACE FUNCTION orvenda.orv_try_date(s text) RETURNS timestamp LANGUAGE plpgsql IMMUTABLE PARALLEL SAFE AS $$
DECLARE
  t text COLLATE "C" := s;
  dpart text COLLATE "C" := s;
  tpart text COLLATE "C" := '';
  colon int; start int; cut int;
  vals text[] := '{}'; kinds text COLLATE "C" := ''; tok text COLLATE "C";
  y int; m int := 0; d int; h int := 0; mi int := 0; sec int := 0;
  tm text[]; tail text COLLATE "C";
  ok boolean := false;
  names text[] := ARRAY['jan','feb','mar','apr','may','jun','jul','aug','sep','oct','nov','dec'];
  full_names text[] := ARRAY['january','february','march','april','may','june','july','august','september',
                             'october','november','december'];
BEGIN
  IF s IS NULL THEN RETURN NULL; END IF;
  IF btrim(t, E' \t') = '' THEN RETURN TIMESTAMP '1900-01-01'; END IF;
  -- The time starts at the hour digits before the first ':'; ISO 8601
  -- puts a 'T' between date and time.
  colon := strpos(t, ':');
  IF colon > 0 THEN
    start := colon;
    WHILE start > 1 AND ascii(substr(t, start - 1, 1)) BETWEEN 48 AND 57 LOOP start := start - 1; END LOOP;
    cut := start;
    IF cut > 1 AND substr(t, cut - 1, 1) IN ('T', 't') THEN cut := cut - 1; END IF;
    dpart := substr(t, 1, cut - 1);
    tpart := substr(t, start);
  END IF;
  IF dpart ~ '[^0-9A-Za-z./, \t\n\r\f\v-]' THEN RETURN NULL; END IF;
  FOR tok IN SELECT (regexp_matches(dpart, '[0-9]+|[A-Za-z]+', 'g'))[1] LOOP
    IF tok ~ '^[0-9]' THEN
      IF length(tok) > 8 THEN RETURN NULL; END IF;
      kinds := kinds || 'N';
    ELSE
      kinds := kinds || 'W';
    END IF;
    vals := vals || CAST(tok AS text);
  END LOOP;
  IF kinds = 'N' AND length(vals[1]) = 8 THEN
    y := substr(vals[1], 1, 4); m := substr(vals[1], 5, 2); d := substr(vals[1], 7, 2); ok := true;
  ELSIF kinds = 'NNN' THEN
    IF length(vals[1]) = 4 THEN
      y := vals[1]; m := vals[2]; d := vals[3]; ok := length(vals[2]) <= 2 AND length(vals[3]) <= 2;
    ELSIF length(vals[1]) <= 2 AND length(vals[2]) <= 2 AND length(vals[3]) IN (2, 4) THEN
      m := vals[1]; d := vals[2]; y := vals[3]; ok := true;
      IF length(vals[3]) = 2 THEN y := y + CASE WHEN y < 50 THEN 2000 ELSE 1900 END; END IF;
    END IF;
  ELSIF kinds IN ('WNN', 'NWN') THEN
    tok := lower(CASE WHEN kinds = 'WNN' THEN vals[1] ELSE vals[2] END);
    FOR i IN 1..12 LOOP
      IF left(tok, 3) = names[i] AND (length(tok) = 3 OR tok = full_names[i] OR (i = 9 AND tok = 'sept')) THEN m := i; END IF;
    END LOOP;
    tok := CASE WHEN kinds = 'WNN' THEN vals[2] ELSE vals[1] END;
    ok := m > 0 AND length(tok) <= 2 AND length(vals[3]) IN (2, 4);
    IF ok THEN
      d := tok; y := vals[3];
      IF length(vals[3]) = 2 THEN y := y + CASE WHEN y < 50 THEN 2000 ELSE 1900 END; END IF;
    END IF;
  ELSIF kinds = '' AND tpart <> '' THEN
    y := 1900; m := 1; d := 1; ok := true;
  END IF;
  IF NOT ok OR m < 1 OR m > 12 OR d < 1 OR y < 1753 OR y > 9999
     OR d > extract(day FROM make_date(y, m, 1) + INTERVAL '1 month - 1 day') THEN
    RETURN NULL;
  END IF;
  -- hh[:mm[:ss[.fff]]] [AM|PM]; a bare hour needs AM or PM.
  IF tpart ~ '\S' THEN
    tm := regexp_match(tpart, '^\s*([0-9]{1,2})\s*(:\s*([0-9]{1,2})\s*(:\s*([0-9]{1,2})\s*([.:]\s*[0-9]{1,7}\s*)?)?)?(.*)$');
    IF tm IS NULL THEN RETURN NULL; END IF;
    tail := upper(regexp_replace(tm[7], '\s', '', 'g'));
    IF tail NOT IN ('', 'AM', 'PM') OR (tm[2] IS NULL AND tail = '') THEN RETURN NULL; END IF;
    h := tm[1]; mi := COALESCE(tm[3], '0'); sec := COALESCE(tm[5], '0');
    IF tail <> '' THEN
      IF h < 1 OR h > 12 THEN RETURN NULL; END IF;
      h := h % 12 + CASE WHEN tail = 'PM' THEN 12 ELSE 0 END;
    END IF;
    IF h > 23 OR mi > 59 OR sec > 59 THEN RETURN NULL; END IF;
  END IF;
  RETURN make_timestamp(y, m, d, h, mi, sec);
END $$)SQL",
      R"SQL(CREATE OR REPLACE FUNCTION orvenda.orv_date(s text) RETURNS timestamp LANGUAGE sql IMMUTABLE PARALLEL SAFE AS $$
  SELECT CASE WHEN s IS NULL THEN NULL
              ELSE COALESCE(orvenda.orv_try_date(s COLLATE "C"), orvenda.orv_fail(
                'Conversion failed when converting date and/or time from character string ''' || s || '''',
                CAST(NULL AS timestamp))) END $$)SQL",
      // A number is days since 1900-01-01, the server's day zero.
      R"SQL(CREATE OR REPLACE FUNCTION orvenda.orv_date(n double precision) RETURNS timestamp
LANGUAGE sql IMMUTABLE PARALLEL SAFE AS $$ SELECT TIMESTAMP '1900-01-01' + n * INTERVAL '1 day' $$)SQL",
      R"SQL(CREATE OR REPLACE FUNCTION orvenda.orv_isdate(s text) RETURNS integer LANGUAGE sql IMMUTABLE PARALLEL SAFE AS $$
  SELECT CASE WHEN orvenda.orv_try_date(s COLLATE "C") IS NULL THEN 0 ELSE 1 END $$)SQL",

      // ---- text to numbers, strictly: text that is no number fails the
      // statement as the conversion does on the server; empty text is 0 ----
      R"SQL(CREATE OR REPLACE FUNCTION orvenda.orv_int(s text) RETURNS bigint LANGUAGE sql IMMUTABLE PARALLEL SAFE AS $$
  SELECT CASE WHEN s IS NULL THEN NULL
              WHEN (s COLLATE "C") ~ '^[ \t]*$' THEN CAST(0 AS bigint)
              WHEN (s COLLATE "C") ~ '^[ \t]*[-+]?[0-9]+[ \t]*$' THEN CAST(btrim(s, E' \t') AS bigint)
              ELSE orvenda.orv_fail('Conversion failed when converting the varchar value ''' || s || ''' to data type int',
                                    CAST(NULL AS bigint)) END $$)SQL",
      R"SQL(CREATE OR REPLACE FUNCTION orvenda.orv_num(s text) RETURNS numeric LANGUAGE sql IMMUTABLE PARALLEL SAFE AS $$
  SELECT CASE WHEN s IS NULL THEN NULL
              WHEN (s COLLATE "C") ~ '^[ \t]*$' THEN CAST(0 AS numeric)
              WHEN (s COLLATE "C") ~ '^[ \t]*[-+]?([0-9]+[.]?[0-9]*|[.][0-9]+)([eE][-+]?[0-9]+)?[ \t]*$'
                THEN CAST(btrim(s, E' \t') AS numeric)
              ELSE orvenda.orv_fail('Conversion failed when converting the varchar value ''' || s || ''' to data type float',
                                    CAST(NULL AS numeric)) END $$)SQL",
      R"SQL(CREATE OR REPLACE FUNCTION orvenda.orv_float(s text) RETURNS double precision
LANGUAGE sql IMMUTABLE PARALLEL SAFE AS $$ SELECT CAST(orvenda.orv_num(s) AS double precision) $$)SQL",
      R"SQL(CREATE OR REPLACE FUNCTION orvenda.orv_isnumeric(s text) RETURNS integer LANGUAGE sql IMMUTABLE PARALLEL SAFE AS $$
  SELECT CASE WHEN (s COLLATE "C") ~ '^ *[$]?[ \t]*[-+]?([0-9]+[.]?[0-9]*|[.][0-9]+)([eE][-+]?[0-9]+)? *$'
              THEN 1 ELSE 0 END $$)SQL",

      // ---- numbers to text ----
      // Money converts with two decimals.
      R"SQL(CREATE OR REPLACE FUNCTION orvenda.orv_money_text(x numeric) RETURNS text
LANGUAGE sql IMMUTABLE PARALLEL SAFE AS $$ SELECT CAST(round(x, 2) AS text) $$)SQL",
      // Float converts with up to six significant digits, as C's "%.6g".
      R"SQL(CREATE OR REPLACE FUNCTION orvenda.orv_float_text(x double precision) RETURNS text
LANGUAGE plpgsql IMMUTABLE PARALLEL SAFE AS $$
DECLARE
  e int; r numeric; mantissa text;
BEGIN
  IF x IS NULL THEN RETURN NULL; END IF;
  IF x = 0 THEN RETURN '0'; END IF;
  e := floor(log(abs(CAST(x AS numeric))));
  r := round(CAST(x AS numeric), 5 - e);
  IF abs(r) >= power(CAST(10 AS numeric), e + 1) THEN e := e + 1; r := round(CAST(x AS numeric), 5 - e); END IF;
  IF e < -4 OR e >= 6 THEN
    mantissa := CAST(round(r / power(CAST(10 AS numeric), e), 5) AS text);
    IF strpos(mantissa, '.') > 0 THEN mantissa := rtrim(rtrim(mantissa, '0'), '.'); END IF;
    RETURN mantissa || 'e' || CASE WHEN e < 0 THEN '-' ELSE '+' END || lpad(CAST(abs(e) AS text), 2, '0');
  END IF;
  mantissa := CAST(r AS text);
  IF strpos(mantissa, '.') > 0 THEN mantissa := rtrim(rtrim(mantissa, '0'), '.'); END IF;
  RETURN mantissa;
END $$)SQL",
      // STR(x[, length[, decimals]]): right-aligned; too long gives fewer
      // decimals first, then stars.
      R"SQL(CREATE OR REPLACE FUNCTION orvenda.orv_str(x double precision, len bigint DEFAULT 10, decimals bigint DEFAULT 0)
RETURNS text LANGUAGE plpgsql IMMUTABLE PARALLEL SAFE AS $$
DECLARE
  dec int; s text;
BEGIN
  IF x IS NULL OR len IS NULL OR decimals IS NULL OR len < 1 OR len > 8000 THEN RETURN NULL; END IF;
  dec := greatest(0, least(decimals, 16));
  s := CAST(round(CAST(x AS numeric), dec) AS text);
  WHILE length(s) > len AND dec > 0 LOOP
    dec := dec - 1;
    s := CAST(round(CAST(x AS numeric), dec) AS text);
  END LOOP;
  IF length(s) > len THEN s := repeat('*', CAST(len AS int)); END IF;
  RETURN lpad(s, CAST(len AS int));
END $$)SQL",
      // ROUND(x, n[, f]): half away from zero (exact decimals); n may be
      // negative; a nonzero f truncates instead.
      R"SQL(CREATE OR REPLACE FUNCTION orvenda.orv_round(x numeric, n bigint, f bigint DEFAULT 0) RETURNS numeric
LANGUAGE sql IMMUTABLE PARALLEL SAFE AS $$
  SELECT CASE WHEN f <> 0 THEN trunc(x, CAST(greatest(-18, least(n, 18)) AS int))
              ELSE round(x, CAST(greatest(-18, least(n, 18)) AS int)) END $$)SQL",
      R"SQL(CREATE OR REPLACE FUNCTION orvenda.orv_round(x double precision, n bigint, f bigint DEFAULT 0)
RETURNS double precision LANGUAGE sql IMMUTABLE PARALLEL SAFE AS $$
  SELECT CAST(orvenda.orv_round(CAST(x AS numeric), n, f) AS double precision) $$)SQL",

      // ---- text functions under the collation ----
      R"SQL(CREATE OR REPLACE FUNCTION orvenda.orv_right(s text, n bigint) RETURNS text LANGUAGE sql IMMUTABLE PARALLEL SAFE AS $$
  SELECT CASE WHEN n < 0 THEN orvenda.orv_fail('Invalid length parameter passed to the right function', s)
              ELSE right(s, CAST(least(n, 2147483647) AS int)) END $$)SQL",
      R"SQL(CREATE OR REPLACE FUNCTION orvenda.orv_charindex(needle text, hay text, start bigint DEFAULT 1) RETURNS bigint
LANGUAGE sql IMMUTABLE PARALLEL SAFE AS $$
  SELECT CASE WHEN needle IS NULL OR hay IS NULL OR start IS NULL THEN NULL
              WHEN length(needle) = 0 THEN 0
              ELSE COALESCE(NULLIF(strpos(substr(orvenda.orv_fold(hay), CAST(greatest(start, 1) AS int)) COLLATE "C",
                                          orvenda.orv_fold(needle) COLLATE "C"), 0)
                            + greatest(start, 1) - 1, 0) END $$)SQL",
      // Folding keeps every character's length, so a match found in the
      // folded text sits at the same place in the original.
      R"SQL(CREATE OR REPLACE FUNCTION orvenda.orv_replace(s text, old text, new text) RETURNS text
LANGUAGE plpgsql IMMUTABLE PARALLEL SAFE AS $$
DECLARE
  folded text COLLATE "C" := orvenda.orv_fold(s);
  key text COLLATE "C" := orvenda.orv_fold(old);
  result text := '';
  i int := 1;
  found int;
BEGIN
  IF s IS NULL OR old IS NULL OR new IS NULL THEN RETURN NULL; END IF;
  IF length(old) = 0 THEN RETURN s; END IF;
  LOOP
    found := strpos(substr(folded, i), key);
    EXIT WHEN found = 0;
    result := result || substr(s, i, found - 1) || new;
    i := i + found - 1 + length(old);
  END LOOP;
  RETURN result || substr(s, i);
END $$)SQL",
      R"SQL(CREATE OR REPLACE FUNCTION orvenda.orv_space(n bigint) RETURNS text LANGUAGE sql IMMUTABLE PARALLEL SAFE AS $$
  SELECT CASE WHEN n < 0 THEN NULL ELSE repeat(' ', CAST(least(n, 8000) AS int)) END $$)SQL",
      // Copies are added while the text is shorter than 8000 bytes.
      R"SQL(CREATE OR REPLACE FUNCTION orvenda.orv_replicate(s text, n bigint) RETURNS text LANGUAGE sql IMMUTABLE PARALLEL SAFE AS $$
  SELECT CASE WHEN n < 0 THEN NULL WHEN octet_length(s) = 0 THEN ''
              ELSE repeat(s, CAST(least(n, 7999 / octet_length(s) + 1) AS int)) END $$)SQL",

      // ---- LIKE ----
      // One character as a regular expression matching just it.
      R"SQL(CREATE OR REPLACE FUNCTION orvenda.orv_regex_char(c text) RETURNS text LANGUAGE sql IMMUTABLE PARALLEL SAFE AS $$
  SELECT CASE WHEN (c COLLATE "C") ~ '^[A-Za-z0-9]$' OR ascii(c) > 127 THEN c
              ELSE '\u' || lpad(to_hex(ascii(c)), 4, '0') END $$)SQL",
      // A T-SQL pattern (% _ [abc] [a-c] [^a], an optional escape) as an
      // anchored regular expression over folded text; trailing blanks are
      // dropped as the subject's are. Characters other than letters and
      // digits are written as \uXXXX so that none is special.
      R"SQL(CREATE OR REPLACE FUNCTION orvenda.orv_like_regex(pattern text, esc text) RETURNS text
LANGUAGE plpgsql IMMUTABLE PARALLEL SAFE AS $$
DECLARE
  p text[] := regexp_split_to_array(rtrim(orvenda.orv_fold(pattern COLLATE "C"), ' '), '');
  n int := COALESCE(array_length(p, 1), 0);
  e text := orvenda.orv_fold(esc COLLATE "C");
  i int := 1; j int; close int; negate boolean; members text; result text := '^';
BEGIN
  IF pattern IS NULL THEN RETURN NULL; END IF;
  IF esc IS NOT NULL AND length(esc) <> 1 THEN
    RAISE EXCEPTION 'The ESCAPE clause must be one character' USING ERRCODE = '22025';
  END IF;
  WHILE i <= n LOOP
    IF e IS NOT NULL AND p[i] = e AND i < n THEN
      result := result || orvenda.orv_regex_char(p[i + 1]);
      i := i + 2;
    ELSIF p[i] = '%' THEN
      result := result || '.*'; i := i + 1;
    ELSIF p[i] = '_' THEN
      result := result || '.'; i := i + 1;
    ELSIF p[i] = '[' THEN
      -- "[]]" holds ']'; an unclosed '[' stands for itself.
      close := i + 1;
      IF close <= n AND p[close] = '^' THEN close := close + 1; END IF;
      IF close <= n AND p[close] = ']' THEN close := close + 1; END IF;
      WHILE close <= n AND p[close] <> ']' LOOP close := close + 1; END LOOP;
      IF close > n THEN
        result := result || orvenda.orv_regex_char('['); i := i + 1;
        CONTINUE;
      END IF;
      j := i + 1;
      negate := p[j] = '^';
      IF negate THEN j := j + 1; END IF;
      members := '';
      WHILE j < close LOOP
        IF j + 2 < close AND p[j + 1] = '-' THEN
          -- A reversed range holds nothing.
          IF ascii(p[j]) <= ascii(p[j + 2]) THEN
            members := members || orvenda.orv_regex_char(p[j]) || '-' || orvenda.orv_regex_char(p[j + 2]);
          END IF;
          j := j + 3;
        ELSE
          members := members || orvenda.orv_regex_char(p[j]); j := j + 1;
        END IF;
      END LOOP;
      IF members = '' THEN
        result := result || CASE WHEN negate THEN '.' ELSE '[^\s\S]' END;
      ELSE
        result := result || '[' || CASE WHEN negate THEN '^' ELSE '' END || members || ']';
      END IF;
      i := close + 1;
    ELSE
      result := result || orvenda.orv_regex_char(p[i]); i := i + 1;
    END IF;
  END LOOP;
  RETURN result || '$';
END $$)SQL",
      R"SQL(CREATE OR REPLACE FUNCTION orvenda.orv_like(s text, pattern text) RETURNS boolean
LANGUAGE sql IMMUTABLE PARALLEL SAFE AS $$
  SELECT (rtrim(orvenda.orv_fold(s), ' ') COLLATE "C") ~ orvenda.orv_like_regex(pattern, NULL) $$)SQL",
      R"SQL(CREATE OR REPLACE FUNCTION orvenda.orv_like(s text, pattern text, esc text) RETURNS boolean
LANGUAGE sql IMMUTABLE PARALLEL SAFE AS $$
  SELECT (rtrim(orvenda.orv_fold(s), ' ') COLLATE "C") ~ orvenda.orv_like_regex(pattern, esc) $$)SQL",
      "CREATE OR REPLACE FUNCTION orvenda.orv_support_version() RETURNS integer LANGUAGE sql IMMUTABLE AS $$ SELECT " +
          std::to_string(kPostgresSupportVersion) + " $$",
  };
  return kStatements;
}

}  // namespace orv::sql

// Names in dictionary order wherever text is ordered: SQLite's collation,
// the PostgreSQL sort key and the recordset's Sort and Filter give the
// order a French-Canadian front desk works out by hand.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "common/collation.h"
#include "platform/db/connection.h"
#include "platform/db/engine.h"
#include "platform/db/recordset.h"
#include "temp_db.h"

namespace orv::db {
namespace {

// The order worked by hand: base letters first, case ignored, a hyphen or an
// apostrophe left out until the letters tie; then the plain letter before
// the accented one; trailing blanks never count. The two spellings of Côté
// are equal and keep their ID order.
const std::vector<std::string> kHandOrder = {
    "Abbott",       "Aubé",         "Aubert",   "Belanger", "Bélanger",   "Bell   ",
    "Caron",        "Çelik",        "Cote",     "coté",     "Côté",       "CÔTÉ  ",
    "Dagenais",     "Dallaire",     "D'Amour",  "Dupont",   "Dupontel",   "Dupont-Roy",
    "Elise",        "Élise",        "Emma",     "Étienne",  "Laetitia",   "Lætitia",
    "Lafleur",      "Levesque",     "Lévesque", "Lindgren", "Mac Donald", "MacDonald",
    "McDonald",     "Obrien",       "O'Brien",  "O'Neil",   "Ouellet",    "Saint Pierre",
    "Sainte-Marie", "Saint-Pierre", "Yves",     "Zoe",      "Zoé",
};

// `text` as a SQL string literal.
std::string Quoted(const std::string& text) {
  std::string quoted = "'";
  for (char c : text) quoted += c == '\'' ? std::string("''") : std::string(1, c);
  return quoted + "'";
}

// The names stored in a shuffled order, each with its place in kHandOrder
// as its ID, so that ties fall back on the hand order.
std::string NamesTable() {
  std::vector<size_t> order(kHandOrder.size());
  for (size_t i = 0; i < order.size(); ++i) order[i] = i;
  std::shuffle(order.begin(), order.end(), std::mt19937(7));
  std::string sql = "CREATE TABLE Names (ID INTEGER PRIMARY KEY, Name VARCHAR(40));";
  for (size_t i : order) sql += "INSERT INTO Names VALUES (" + std::to_string(i + 1) + ", " + Quoted(kHandOrder[i]) + ");";
  return sql;
}

std::vector<std::string> Column(const std::shared_ptr<RowSet>& rows, size_t column) {
  std::vector<std::string> out;
  for (size_t r = 0; r < rows->RowCount(); ++r) out.push_back(CStr(rows->Get(r, static_cast<int>(column))));
  return out;
}

// Every way an engine's statements, and a recordset over its rows, order
// text or compare it by order.
void ExpectHandOrder(Connection& conn) {
  // Statements return the text as stored; trailing blanks are data.
  EXPECT_EQ(Column(conn.Query("SELECT Name FROM Names ORDER BY Name, ID"), 0), kHandOrder);
  EXPECT_EQ(Column(conn.Query("SELECT Name FROM Names ORDER BY Name DESC, ID DESC"), 0),
            std::vector<std::string>(kHandOrder.rbegin(), kHandOrder.rend()));
  auto extremes = conn.Query("SELECT MIN(Name), MAX(Name) FROM Names");
  EXPECT_EQ(CStr(extremes->Get(0, 0)), "Abbott");
  EXPECT_EQ(CStr(extremes->Get(0, 1)), "Zoé");
  const std::vector<std::string> elise_to_etienne = {"Elise", "Élise", "Emma", "Étienne"};
  EXPECT_EQ(Column(conn.Query("SELECT Name FROM Names WHERE Name BETWEEN 'Elise' AND 'Étienne' ORDER BY ID"), 0),
            elise_to_etienne);
  // Everything up to "Elise", "Élise", then "Emma" > "Émile"; "Émile" is not
  // stored.
  const long below = std::find(kHandOrder.begin(), kHandOrder.end(), "Emma") - kHandOrder.begin();
  EXPECT_EQ(CLng(conn.Query("SELECT COUNT(*) FROM Names WHERE Name < 'Émile'")->Get(0, 0)), below);

  Recordset rs;
  rs.Open("SELECT ID, Name FROM Names", conn, adOpenStatic, adLockReadOnly, adCmdText);
  rs.Sort("Name, ID");
  std::vector<std::string> sorted;
  for (rs.MoveFirst(); !rs.Eof(); rs.MoveNext()) sorted.push_back(CStr(rs["Name"].Value()));
  EXPECT_EQ(sorted, kHandOrder);
  rs.Sort("ID");
  rs.Filter("Name >= 'Elise' AND Name <= 'Étienne'");
  std::vector<std::string> between;
  for (rs.MoveFirst(); !rs.Eof(); rs.MoveNext()) between.push_back(CStr(rs["Name"].Value()));
  EXPECT_EQ(between, elise_to_etienne);
  rs.Filter("Name < 'Émile'");
  EXPECT_EQ(rs.RecordCount(), below);
}

// Several ordered comparisons of one column, however they are combined,
// select the names the hand order puts between their bounds: a range with
// its ends in or out, an open end, bounds the wrong way round, a literal
// on the left, ranges joined by OR, and other conditions beside them.
TEST(DictionaryOrder, RangesOfOneColumnSelectTheNamesBetweenTheirBounds) {
  testing::EachEngine engines(NamesTable());
  const std::vector<std::string> all = kHandOrder;
  const struct {
    const char* where;
    std::vector<std::string> names;
  } cases[] = {
      {"Name >= 'Elise' AND Name <= 'Étienne'", {"Elise", "Élise", "Emma", "Étienne"}},
      {"Name > 'Elise' AND Name < 'Étienne'", {"Élise", "Emma"}},
      // Case never counts, trailing blanks neither; accents only once the
      // letters tie.
      {"Name > 'cote' AND Name <= 'CÔTÉ'", {"coté", "Côté", "CÔTÉ  "}},
      {"Name >= 'bell' AND Name <= 'BELL '", {"Bell   "}},
      // A hyphen or an apostrophe counts only once the letters tie.
      {"'Dupont' < Name AND Name !> 'Dupont-Roy'", {"Dupontel", "Dupont-Roy"}},
      {"Name !< 'DAmour' AND Name < 'Dupont'", {"D'Amour"}},
      {"(Name >= 'Caron' AND Name < 'Cote') OR Name BETWEEN 'Yves' AND 'Zoe'", {"Caron", "Çelik", "Yves", "Zoe"}},
      {"Name < 'Aubert' OR Name > 'Zoe' OR Name BETWEEN 'Lafleur' AND 'Levesque'",
       {"Abbott", "Aubé", "Lafleur", "Levesque", "Zoé"}},
      {"Name NOT BETWEEN 'B' AND 'Y' AND ID > 0", {"Abbott", "Aubé", "Aubert", "Yves", "Zoe", "Zoé"}},
      {"ID < 20 AND Name >= 'O' AND ID > 2 AND Name <= 'P'", {}},
      {"ID > 30 AND Name >= 'O' AND ID < 40 AND Name <= 'P'", {"Obrien", "O'Brien", "O'Neil", "Ouellet"}},
      // Bounds the wrong way round hold nothing between them.
      {"Name >= 'Z' AND Name <= 'A'", {}},
      {"Name NOT BETWEEN 'Z' AND 'A'", all},
      {"Name >= '' AND Name < 'Abbott'", {}},
  };
  engines.Run([&](Connection& conn) {
    for (const auto& c : cases) {
      SCOPED_TRACE(c.where);
      EXPECT_EQ(Column(conn.Query(std::string("SELECT Name FROM Names WHERE ") + c.where + " ORDER BY ID"), 0),
                c.names);
    }
  });
}

TEST(DictionaryOrder, EachEngineAndItsRecordsetsGiveTheHandOrder) {
  testing::EachEngine engines(NamesTable());
  engines.Run(ExpectHandOrder);
  if (engines.urls().size() < 2) return;

  // The server's key is the layer's key, byte for byte, for every name and
  // for text that takes each of the server's ways to the key: capitals
  // beyond ASCII, letters outside the table, the typographic apostrophe,
  // control characters.
  const std::vector<std::string> kEveryWay = {
      "Œuvre", "ŸVES",     "Straße", "ÞÓRDÍS", "Þórdís", "Nguyễn", "Ăstrid-Ånne", "O’Brien",
      "D'ŒIL", "ÉVE-MARIE", "tab\tin", "Ωmega-x", "Šimon Žák", "x",   "",            "  "};
  std::string values;
  for (const std::string& name : kEveryWay) values += (values.empty() ? "(" : ", (") + Quoted(name) + ")";
  auto engine = OpenEngine(engines.urls()[1]);
  int rows = 0;
  auto expect_layer_keys = [&](const std::string& sql, const std::string& name) {
    auto stmt = engine->Prepare(sql, name);
    while (stmt->Step()) {
      std::string text = CStr(stmt->Column(0));
      SCOPED_TRACE(text);
      EXPECT_EQ(CStr(stmt->Column(1)), collation::SortKey(text));
      ++rows;
    }
  };
  expect_layer_keys("SELECT \"Name\", orvenda.orv_key(\"Name\") FROM \"Names\"", "keys");
  expect_layer_keys("SELECT v, orvenda.orv_key(v) FROM (VALUES " + values + ") AS t(v)", "more_keys");
  EXPECT_EQ(rows, static_cast<int>(kHandOrder.size() + kEveryWay.size()));
}

}  // namespace
}  // namespace orv::db

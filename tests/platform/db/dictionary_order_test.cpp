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

// The names stored in a shuffled order, each with its place in kHandOrder
// as its ID, so that ties fall back on the hand order.
std::string NamesTable() {
  std::vector<size_t> order(kHandOrder.size());
  for (size_t i = 0; i < order.size(); ++i) order[i] = i;
  std::shuffle(order.begin(), order.end(), std::mt19937(7));
  std::string sql = "CREATE TABLE Names (ID INTEGER PRIMARY KEY, Name VARCHAR(40));";
  for (size_t i : order) {
    std::string quoted;
    for (char c : kHandOrder[i]) quoted += c == '\'' ? std::string("''") : std::string(1, c);
    sql += "INSERT INTO Names VALUES (" + std::to_string(i + 1) + ", '" + quoted + "');";
  }
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

TEST(DictionaryOrder, EachEngineAndItsRecordsetsGiveTheHandOrder) {
  testing::EachEngine engines(NamesTable());
  engines.Run(ExpectHandOrder);
  if (engines.urls().size() < 2) return;

  // The server's key is the layer's key, byte for byte, for every name.
  auto engine = OpenEngine(engines.urls()[1]);
  auto stmt = engine->Prepare("SELECT \"Name\", orvenda.orv_key(\"Name\") FROM \"Names\"", "keys");
  int rows = 0;
  while (stmt->Step()) {
    std::string name = CStr(stmt->Column(0));
    SCOPED_TRACE(name);
    EXPECT_EQ(CStr(stmt->Column(1)), collation::SortKey(name));
    ++rows;
  }
  EXPECT_EQ(rows, static_cast<int>(kHandOrder.size()));
}

}  // namespace
}  // namespace orv::db

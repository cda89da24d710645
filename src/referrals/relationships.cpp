// The check and repair of the referral links: every patient's
// ReferringDentistID should name a referring dentist. A patient whose
// dentist was deleted, or who never had one, is moved under a placeholder
// dentist of its own, so that the referral figures keep the patient.
#include <string>

#include "common/common_functions.h"
#include "frame/reports.h"
#include "platform/db/connection.h"
#include "platform/db/recordset.h"
#include "platform/sql/translate.h"

namespace orv {

namespace {

constexpr const char* kAskRepair =
    "There are one or more broken relationships in the tables.\r"
    "Would you like to repair these relationships? (For an accurate report please choose 'Yes'";

// The placeholder of `name` `last_name` in `table`, made when missing; its
// ID. Read and made inside the repair's transaction, after the write lock,
// so that two workstations repairing at once make one of a kind.
int64_t Placeholder(clsReports& r, const std::string& table, const std::string& name,
                    const std::string& last_name) {
  db::Recordset rs;
  rs.Open("SELECT ID,Name,LastName From " + table + " WHERE Name='" + name + "'and LastName='" +
              last_name + "'",
          r.conn(), db::adOpenStatic, db::adLockOptimistic);
  if (!rs.Eof()) return static_cast<int64_t>(r.Common().ReturnVal(rs["ID"].Value()));
  rs.AddNew();
  rs["Name"].Value(Variant(name));
  rs["LastName"].Value(Variant(last_name));
  rs.Update();
  return static_cast<int64_t>(r.Common().ReturnVal(rs["ID"].Value()));
}

}  // namespace

bool clsReports::CheckRelationships(std::string strLookupTable, std::string lngField,
                                    std::string strForeignKeyTable, std::string lngFkField) {
  // No snapshot is held across the check: after a repair the caller reads
  // the repaired rows, and on a server a snapshot taken before the repair
  // would not show them.
  bool broken = false;
  {
    db::Recordset rs =
        Open("SELECT DISTINCT " + lngFkField + " From " + strForeignKeyTable +
             " WHERE (NOT EXISTS (SELECT 1 From " + strLookupTable + " WHERE " + strLookupTable +
             "." + lngField + " = " + strForeignKeyTable + "." + lngFkField + "))");
    if (!rs.Eof()) broken = true;
  }
  {
    db::Recordset rs = Open("SELECT " + lngFkField + " From " + strForeignKeyTable + " WHERE " +
                            lngFkField + " IS NULL");
    if (!rs.Eof()) broken = true;
  }
  if (!broken) return true;

  if (Host().MsgBox(kAskRepair, host::vbYesNo, "Invalid Relationship") != host::vbYes) {
    // No: the data stays as it is and the report goes on with it.
    return false;
  }
  try {
    RepairRelationships(strLookupTable, lngField, strForeignKeyTable, lngFkField);
  } catch (const std::exception&) {
    // The repair rolled back: nothing changed, and the report goes on with
    // the data as it was, as after No.
    Host().ShowFailure("Error repairing referring dentist relationships.", host::vbOKOnly,
                       "Unspecified Error");
    return false;
  }
  return true;
}

void clsReports::RepairRelationships(const std::string& strLookupTable, const std::string& lngField,
                                     const std::string& strForeignKeyTable,
                                     const std::string& lngFkField) {
  // Both placeholders and both updates go in one transaction: a failure
  // part way leaves no placeholder made and no patient moved, where the
  // statements one by one would leave half a repair that the next run
  // could not tell from a whole one.
  db::Connection& c = conn();
  c.BeginTrans();
  try {
    // The write lock first, before the placeholders are looked for: a
    // second workstation repairing at the same moment waits here, then
    // finds the rows this one made instead of making its own.
    if (c.Dialect() == sql::Dialect::PostgreSQL) {
      // The table's name as the server knows it, from the layer's own
      // translation of a statement on it.
      std::string text = c.EngineText("DELETE FROM " + strLookupTable + " WHERE 1=0");
      const size_t from = text.find("FROM ") + 5;
      const std::string table = text.substr(from, text.find(" WHERE") - from);
      c.RunEngineSql("LOCK TABLE " + table + " IN SHARE ROW EXCLUSIVE MODE", {},
                     "the lock of the referral repair");
    } else {
      // A write that changes nothing takes SQLite's write lock at once, as
      // BEGIN IMMEDIATE would.
      c.Execute("UPDATE " + strLookupTable + " SET " + lngField + " = " + lngField + " WHERE 1=0");
    }
    const int64_t no_referring = Placeholder(*this, strLookupTable, "No Referring", "Dentist");
    const int64_t deleted = Placeholder(*this, strLookupTable, "Deleted", "Referring Dentist");
    c.Execute("Update " + strForeignKeyTable + " Set " + lngFkField + " =" +
              std::to_string(no_referring) + " WHERE " + lngFkField + " IS NULL");
    c.Execute("Update " + strForeignKeyTable + " Set " + lngFkField + " =" +
              std::to_string(deleted) + " WHERE (NOT EXISTS (SELECT 1 From " + strLookupTable +
              " WHERE " + strLookupTable + "." + lngField + "=" + strForeignKeyTable + "." +
              lngFkField + "))");
    c.CommitTrans();
  } catch (...) {
    try {
      c.RollbackTrans();
    } catch (...) {
      // The first error is the one that counts.
    }
    throw;
  }
}

}  // namespace orv

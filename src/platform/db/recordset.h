// Recordset: the rows of one statement, walked by a report.
//
//   Recordset rs;
//   rs.Open("SELECT ID, LastName FROM Patient", conn, adOpenStatic, adLockReadOnly, adCmdText);
//   while (!rs.Eof()) { Variant v = rs["LastName"]; ...; rs.MoveNext(); }
//
// A Recordset is a handle: copies share position and rows, as object
// references do. The rows are read when the recordset opens (forward-only
// ones too), so the statement is done before the first row is used and one
// connection can serve nested recordsets.
//
// Every recordset holds all its rows, compactly (column_store.h), rather
// than streaming the ones walked once: the reports open their recordsets
// static and count, rewind, filter and search them; a forward-only one may
// still be filtered, sorted and moved to its first row; and a report runs
// its per-row lookups on the same connection while it walks the main
// listing, which a PostgreSQL session cannot do with a result still coming.
// Holding the rows at about nine bytes a value plus their text costs less
// than the result set itself did in the engine.
//
// Measured on a 20,000-patient practice, the large listings do not walk
// once forward: the billing list and the unapplied payments are SHAPEs
// whose children are related in memory (read whole whatever the parent
// does), the payments are sorted, and the patient list, a SHAPE too, asks
// RecordCount and AbsolutePosition on every row for its progress. What a
// run holds at its peak is its document (the cells kept for CSV, the
// packed pages) as much as its rows: the patient list's 20,000 rows are
// 18 MB of its 41 MB. Streaming would save that share only for a report
// that gives up its progress and its chapters, so rows are read whole.
// A static recordset knows
// RecordCount and AbsolutePosition; a forward-only one gives -1 for both
// and cannot move backwards.
//
// The end-of-file test is Eof() (EOF is a macro of the C library).
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "common/variant.h"
#include "platform/db/connection.h"
#include "platform/db/field.h"

namespace orv::db {

enum CursorType : int {
  adOpenUnspecified = -1,
  adOpenForwardOnly = 0,
  adOpenKeyset = 1,
  adOpenDynamic = 2,
  adOpenStatic = 3
};
enum LockType : int {
  adLockUnspecified = -1,
  adLockReadOnly = 1,
  adLockPessimistic = 2,
  adLockOptimistic = 3,
  adLockBatchOptimistic = 4
};
enum CommandType : int { adCmdUnspecified = -1, adCmdText = 1, adCmdTable = 2 };
enum PositionEnum : long { adPosUnknown = -1, adPosBOF = -2, adPosEOF = -3 };
enum SearchDirection : int { adSearchBackward = -1, adSearchForward = 1 };
enum BookmarkEnum : int { adBookmarkCurrent = 0, adBookmarkFirst = 1, adBookmarkLast = 2 };
enum EditMode : int { adEditNone = 0, adEditInProgress = 1, adEditAdd = 2 };

class Recordset {
 public:
  Recordset();

  // Runs `source` on `connection` and positions on the first row. `source`
  // is a T-SQL statement (SHAPE included) or, with adCmdTable or as a single
  // name, a table. Cursor types other than forward-only (and unspecified)
  // behave as static.
  // Throws DatabaseError or sql::SqlError naming the statement.
  void Open(const std::string& source, const Connection& connection,
            int cursor_type = adOpenForwardOnly, int lock_type = adLockReadOnly,
            int options = adCmdUnspecified);
  // Holds, at the next Open (and its Requery), only the values of the
  // fields named: "Value", and "Chapter.Amount" for a field of a SHAPE
  // chapter (see FieldSelection). For a report that walks a large result
  // and reads a few of its columns: the unapplied payments read 8 of the
  // 22 columns of 180,000 payments and 2 of the 5 of their lines, and
  // making cells of the others was a sixth of the run.
  //
  // The line: the report names what it reads; the recordset does not guess.
  // A recordset cannot learn on its first walk what it will be asked for
  // (a sorted listing is held whole before its first row is seen, and a
  // field read once on the last row must be there), and reading the
  // statement again for a field missed would double its time and, on a
  // file without a snapshot, might read other rows. So every field keeps
  // its name, type and place in Fields; a field not held fails loudly when
  // its value is read, or when a Sort, Filter or Find names it, never
  // reads as Empty; and a recordset that holds part of its fields is
  // read-only. A recordset opened without a list holds everything, as ever.
  void KeepFields(std::vector<std::string> names);

  // Opens a fabricated recordset on the fields appended to Fields(); it
  // starts empty and takes rows by AddNew.
  void Open();
  void Close();
  // adStateOpen or adStateClosed.
  int State() const;

  bool Eof() const;
  bool Bof() const;
  void MoveNext();
  void MovePrevious();
  void MoveFirst();
  void MoveLast();
  // Moves `n` rows from the current one.
  void Move(long n);

  // Rows visible (after Filter); -1 on a forward-only cursor.
  long RecordCount() const;
  // 1-based position of the current row; adPosBOF, adPosEOF, or
  // adPosUnknown on a forward-only cursor.
  long AbsolutePosition() const;
  void AbsolutePosition(long position);

  FieldsCollection Fields() const;
  Field Fields(std::string_view name) const;
  Field Fields(long index) const;
  Field operator[](std::string_view name) const { return Fields(name); }
  Field operator[](long index) const { return Fields(index); }
  Field operator[](int index) const { return Fields(static_cast<long>(index)); }
  Field operator[](const char* name) const { return Fields(std::string_view(name)); }

  // Finds the next row that meets one comparison ("ID = 5",
  // "LastName = 'O''Brien'", "DueDate >= #2026-11-01#", "Name LIKE 'Sm*'"),
  // starting `skip` rows from `start` (the current row by default) in
  // `direction`. Not found leaves the recordset at EOF (forward) or BOF.
  void Find(const std::string& criteria, long skip = 0, int direction = adSearchForward,
            int start = adBookmarkCurrent);

  // Shows only the rows that meet the criteria (see criteria.h) and moves
  // to the first of them; "" or 0 shows all rows again.
  void Filter(const Variant& criteria);
  const Variant& Filter() const;
  // Orders the rows by "A, B DESC, [C] ASC": stable, so rows with equal keys
  // keep their order; "" restores the statement's order. A sort of every
  // row of a large recordset also lays its rows out in that order (see
  // RecordsetState::LayOutInViewOrder): nothing read changes but the speed
  // of a walk.
  void Sort(const std::string& keys);
  const std::string& Sort() const;

  // Runs the statement again; Filter and Sort stay.
  void Requery();
  // The statement as given to Open.
  const std::string& Source() const;

  // Adds a row and makes it current; set its fields, then Update.
  void AddNew();
  // Writes the added or changed current row: into the fabricated rows, or
  // to the recordset's table by its key (INSERT or UPDATE).
  void Update();
  void CancelUpdate();
  int EditMode() const;

 private:
  friend class Field;
  friend class FieldsCollection;
  explicit Recordset(std::shared_ptr<RecordsetState> s) : s_(std::move(s)) {}
  std::shared_ptr<RecordsetState> s_;
};

}  // namespace orv::db

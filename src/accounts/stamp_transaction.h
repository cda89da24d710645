// The LastStatement stamps of one statement run, in one transaction.
#pragma once

#include <exception>

#include "platform/db/connection.h"

namespace orv {

// Committed when the whole run has been printed, rolled back when the run
// fails part way, so that no patient is recorded as sent a statement the run
// never finished (the document still keeps the pages made, for the host to
// see). One transaction also saves a disk sync per stamp, which was most of a
// month's bulk run. A host that already holds a transaction on the
// connection keeps it: the stamps then go into the host's transaction and
// are the host's to commit.
class StampTransaction {
 public:
  explicit StampTransaction(db::Connection& conn) : conn_(conn) {
    try {
      conn_.BeginTrans();
      open_ = true;
    } catch (const std::exception&) {
      open_ = false;
    }
  }
  ~StampTransaction() {
    if (!open_) return;
    try {
      conn_.RollbackTrans();
    } catch (const std::exception&) {
      // Already failing: the first error is the one the host sees.
    }
  }
  StampTransaction(const StampTransaction&) = delete;
  StampTransaction& operator=(const StampTransaction&) = delete;

  void Commit() {
    if (!open_) return;
    open_ = false;
    conn_.CommitTrans();
  }

 private:
  db::Connection& conn_;
  bool open_ = false;
};

}  // namespace orv

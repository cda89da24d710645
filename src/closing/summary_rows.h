// The money tables of the summaries the partners read (by provider, by
// referring dentist): a row of figures per person, then the Total row.
#pragma once

#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "common/currency.h"
#include "common/datetime.h"
#include "common/format.h"
#include "common/variant.h"
#include "frame/surface/table_model.h"

namespace orv::closing {

// Money as the summaries print it: thousands grouped, two decimals, a
// negative amount in brackets.
inline std::string SummaryFigure(Currency c) {
  return Format(Variant(c), "###,###,##0.00;(###,###,##0.00)");
}

// True when the day of `v` lies from `start` to `end`, both days included;
// an empty or NULL date lies in no period.
inline bool InPeriod(const Variant& v, DateTime start, DateTime end) {
  if (v.IsNull() || v.IsEmpty()) return false;
  const DateTime d = CDate(v).DatePart();
  return d >= start.DatePart() && d <= end.DatePart();
}

// The body of a summary table in the table language: first the row of
// column names the caller passes (";" ended), then "name|figure|...;" per
// person added, then "Total|...;" with `figures` columns, zeros when no
// row was added. Each Total figure adds that column's figures of the rows
// printed, so the Total row equals their sum to the cent whatever formulas
// made them.
class SummaryRows {
 public:
  SummaryRows(std::string column_names, size_t figures) : body_(std::move(column_names)), sums_(figures) {}

  // One person's row; `figures` in the order of the columns, as many as
  // the table has (extra ones are dropped, missing ones are blank).
  void Add(const std::string& name, std::initializer_list<Currency> figures) {
    body_ += frame::EscapeCell(name);
    auto f = figures.begin();
    for (Currency& sum : sums_) {
      body_ += "|";
      if (f == figures.end()) continue;
      body_ += SummaryFigure(*f);
      sum += *f++;
    }
    body_ += ";";
  }

  // The rows added so far and the Total row.
  std::string Body() const {
    std::string body = body_ + "Total";
    for (const Currency& s : sums_) body += "|" + SummaryFigure(s);
    return body + ";";
  }

 private:
  std::string body_;
  std::vector<Currency> sums_;
};

}  // namespace orv::closing

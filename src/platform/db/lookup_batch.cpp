#include "platform/db/lookup_batch.h"

#include <algorithm>
#include <exception>

#include "platform/db/field_type.h"
#include "platform/sql/lookup_batch.h"

namespace orv::db {

namespace {

// The line and column (as the T-SQL lexer counts them: bytes, from 1) of
// `offset` in `text`.
sql::Pos PosOf(const std::string& text, size_t offset) {
  sql::Pos p;
  for (size_t i = 0; i < offset && i < text.size(); ++i) {
    if (text[i] == '\n') {
      ++p.line;
      p.column = 1;
    } else {
      ++p.column;
    }
  }
  return p;
}

std::string OtherLiterals(const std::vector<std::string>& written, size_t key) {
  std::string s;
  for (size_t i = 0; i < written.size(); ++i) {
    if (i == key) continue;
    s += written[i];
    s += ',';
  }
  return s;
}

}  // namespace

void LookupBatcher::Clear() {
  forms_.clear();
  declined_ = nullptr;
  stats_ = Stats();
}

void LookupBatcher::Spent(double seconds) {
  if (declined_) {
    declined_->spent += seconds;
    ++declined_->spent_runs;
  }
  declined_ = nullptr;
}

std::shared_ptr<RowSet> LookupBatcher::Find(const std::string& statement, const StatementForm& f) {
  declined_ = nullptr;
  // The literals a key may be: the whole numbers, then the whole numbers
  // written as text ("PatientID = '17'"). Each is also kept as written, so
  // that '07' and '7' stay apart where they are no key (compared with text,
  // they differ). Runs on different days are different lookups: quoted
  // dates belong to the form's name, as they did before they were lifted
  // out.
  std::vector<int64_t> values = f.values;
  std::vector<size_t> offsets = f.offsets;
  std::vector<std::string> written;
  written.reserve(values.size() + f.quoted.size());
  for (int64_t v : f.values) written.push_back(std::to_string(v));
  std::string name = f.form;
  for (size_t i = 0; i < f.quoted.size(); ++i) {
    const Variant& q = f.quoted[i];
    if (q.IsDate()) {
      name += "\n" + CDate(q).ToIso();
      continue;
    }
    const std::string text = CStr(q);
    values.push_back(std::stoll(text));
    offsets.push_back(f.quoted_offsets[i]);
    written.push_back("'" + text);
  }
  if (values.empty()) return nullptr;
  Form& form = forms_[name];
  if (form.refused) return nullptr;
  declined_ = &form;

  // The key is the literal that changes from run to run while the others
  // stay: the invoice of "InvoiceID = 17 AND IsInsurance = 1".
  bool chosen_now = false;
  if (form.key < 0) {
    if (form.last.size() == written.size()) {
      int changed = -1, count = 0;
      for (size_t i = 0; i < written.size(); ++i)
        if (written[i] != form.last[i]) changed = static_cast<int>(i), ++count;
      if (count == 1) {
        form.varied.resize(written.size());
        form.varied_values.resize(written.size());
        std::vector<int64_t>& seen = form.varied_values[changed];
        if (seen.empty()) seen.push_back(form.last_values[changed]);
        seen.push_back(values[changed]);
        if (++form.varied[changed] >= kThreshold) {
          form.key = changed;
          chosen_now = true;
        }
      }
    }
    form.last = written;
    form.last_values = values;
    if (form.key < 0) return nullptr;
  }

  const size_t key = static_cast<size_t>(form.key);
  Group& group = form.groups[OtherLiterals(written, key)];
  if (!group.batch) {
    if (chosen_now) {
      // The runs that made the key known are this group's first.
      group.asked = std::move(form.varied_values[key]);
      form.varied_values.clear();
      group.runs = static_cast<int>(group.asked.size()) - 1;
    } else if (group.asked.size() <= static_cast<size_t>(kThreshold)) {
      group.asked.push_back(values[key]);
    }
    if (++group.runs < kThreshold && !chosen_now) return nullptr;
    auto refuse = [&] {
      declined_ = nullptr;
      form.refused = true;
      form.groups.clear();
      return nullptr;
    };
    if (!group.priced && !Prepare(group, statement, offsets[key])) return refuse();
    // Rent before buying: key by key until the form has spent what the
    // batched read is expected to cost, or until the keys of the walk still
    // to come would cost as much at the mean time of a run so far.
    bool buy = !group.cost || form.spent >= *group.cost;
    if (!buy && group.walked && form.spent_runs > 0) {
      const double to_come = static_cast<double>(group.walked->size()) - group.runs;
      buy = to_come * (form.spent / form.spent_runs) >= *group.cost;
    }
    if (!buy) return nullptr;
    group.batch = Build(*group.lookup, statement);
    group.lookup.reset();
    if (!group.batch) return refuse();
    if (group.walked_only) {
      group.batch->chosen = group.walked;
      ++stats_.chosen;
    }
  }
  auto rows = Serve(*group.batch, values[key]);
  if (rows) {
    declined_ = nullptr;
    return rows;
  }
  // A key beyond a batch of chosen keys: the report has gone on to walk
  // other rows (the next provider's invoices). Once it has asked for as many
  // such keys as make a form qualify, the batch makes way for one of every
  // key, which serves whatever the report walks next: the receivables of 13
  // providers read each provider's invoice payments in 0.1 s where one read
  // of all took 0.4 s.
  group.missed.push_back(values[key]);
  if (group.missed.size() >= static_cast<size_t>(kThreshold)) {
    stats_.rows -= group.batch->held;
    std::vector<int64_t> asked = std::move(group.missed);
    group = Group();
    group.runs = static_cast<int>(asked.size()) - 1;
    group.asked = std::move(asked);
    group.every_key = true;
  }
  return nullptr;
}

bool LookupBatcher::Prepare(Group& group, const std::string& statement, size_t offset) {
  const int64_t room = std::min(kBatchRows, kTotalRows - stats_.rows);
  if (room <= 0) return false;
  // A statement that is no lookup by this literal: the form is run key by
  // key, as it always could be.
  const sql::Pos at = PosOf(statement, offset);
  try {
    group.lookup = sql::TranslateBatchedLookup(statement, at, schema_, dialect_, room);
  } catch (const std::exception&) {
    return false;
  }
  if (!group.lookup) return false;
  group.priced = true;

  std::optional<Estimate> whole;
  if (estimate_) {
    try {
      whole = estimate_(group.lookup->translation, statement);
    } catch (const std::exception&) {
      return false;
    }
  }
  if (whole) group.cost = whole->seconds;
  if (!walked_) return true;
  group.walked = walked_(group.asked);
  const double keys = group.walked ? static_cast<double>(group.walked->size()) : 0;
  if (!group.walked || group.every_key || keys > kChosenKeysMax || (whole && 2 * keys > whole->rows)) return true;
  std::optional<sql::BatchedLookup> walked;
  try {
    walked = sql::TranslateBatchedLookup(statement, at, schema_, dialect_, room, group.walked.get());
  } catch (const std::exception&) {
    // Translated once already; the whole read serves.
  }
  if (!walked) return true;
  std::optional<Estimate> part;
  if (estimate_) {
    try {
      part = estimate_(walked->translation, statement);
    } catch (const std::exception&) {
      return true;  // the whole read was priced; it serves
    }
  }
  // Without prices the chosen keys are the better guess: they read no more
  // than all keys do.
  if (whole && (!part || part->seconds >= whole->seconds)) return true;
  group.cost = part ? std::optional<double>(part->seconds) : std::nullopt;
  group.lookup = std::move(walked);
  group.walked_only = true;
  return true;
}

std::unique_ptr<LookupBatcher::Batch> LookupBatcher::Build(const sql::BatchedLookup& lookup,
                                                          const std::string& statement) {
  const int64_t room = std::min(kBatchRows, kTotalRows - stats_.rows);
  if (room <= 0) return nullptr;
  // A batched read the engine refuses, or one too large to hold: the form
  // is run key by key.
  std::shared_ptr<RowSet> read;
  try {
    read = read_(lookup.translation, statement);
  } catch (const std::exception&) {
    return nullptr;
  }
  if (static_cast<int64_t>(read->RowCount()) > room || read->fields.empty()) return nullptr;

  auto batch = std::make_unique<Batch>();
  batch->aggregate = lookup.aggregate;
  batch->fields.assign(read->fields.begin() + 1, read->fields.end());
  if (batch->aggregate) {
    for (size_t i = 0; i < batch->fields.size(); ++i)
      batch->empty_row.push_back(lookup.count_columns[i] ? ValueOfKind(Variant::Int64(0), batch->fields[i].kind)
                                                         : Variant::Null());
  }
  // A plain lookup's rows come ordered by the key, an aggregate's one row
  // a key in any order; a NULL key matches no "=" and is dropped.
  // The rows stay where they were read, the key in their first field.
  int64_t held = 0;
  for (size_t r = 0; r < read->RowCount(); ++r) {
    const Variant key = read->Get(r, 0);
    if (key.IsNull()) continue;
    auto [it, added] = batch->by_key.try_emplace(key.AsInteger(), r, r);
    if (!added && it->second.second != r) return nullptr;  // not grouped: keep per key
    it->second.second = r + 1;
    ++held;
  }
  batch->rows = std::move(read);
  batch->held = held;
  ++stats_.batches;
  stats_.rows += held;
  return batch;
}

std::shared_ptr<RowSet> LookupBatcher::Serve(const Batch& batch, int64_t key) {
  auto hit = batch.by_key.find(key);
  // A key the batch did not read is run as its own statement.
  if (hit == batch.by_key.end() && batch.chosen &&
      !std::binary_search(batch.chosen->begin(), batch.chosen->end(), key))
    return nullptr;
  auto rows = std::make_shared<RowSet>();
  rows->fields = batch.fields;
  if (hit != batch.by_key.end()) {
    rows->Reserve(hit->second.second - hit->second.first);
    for (size_t r = hit->second.first; r < hit->second.second; ++r) rows->AppendRowFrom(*batch.rows, r, 1);
  } else if (batch.aggregate) {
    rows->AppendRow(batch.empty_row);
  }
  ++stats_.served;
  return rows;
}

}  // namespace orv::db

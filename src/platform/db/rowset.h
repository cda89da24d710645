// The rows a recordset reads: field descriptions and values, shared by every
// recordset handle, clone and chapter that looks at them.
#pragma once

#include <cstdint>

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "common/variant.h"
#include "platform/db/field_type.h"
#include "platform/sql/translate.h"

namespace orv::db {

struct RowSet;

struct FieldInfo {
  std::string name;
  FieldType type = adVariant;
  sql::ValueKind kind = sql::ValueKind::Unknown;
  int defined_size = 0;
  int chapter = -1;  // index into RowSet::chapters for a chapter field
};

// A SHAPE child related to its parent: the child's rows, hashed by the
// child's relate columns so that the rows of one parent row are found
// without a scan.
struct ChapterLink {
  std::shared_ptr<RowSet> child;
  std::vector<int> parent_fields;
  std::vector<int> child_fields;
  std::unordered_map<std::string, std::vector<size_t>> rows_by_key;
};

uint64_t NextRowSetId();

struct RowSet {
  std::vector<FieldInfo> fields;
  // One vector per row, one value per field (chapter fields hold Empty).
  std::vector<std::vector<Variant>> rows;
  std::vector<ChapterLink> chapters;
  // Bumped whenever a row is added or a value changes, so that indexes built
  // over the rows (see RecordsetState's filter index) know they are stale.
  uint64_t version = 0;
  // Unique for the life of the process, so that an index never mistakes a
  // new row set (after Requery) for the one it was built on.
  uint64_t id = NextRowSetId();

  // Index of the field `name` (case-insensitive, square brackets ignored),
  // or -1.
  int FindField(std::string_view name) const;
  // Appends a field; returns its index.
  int AddField(FieldInfo f);
};

// The relate key of `row` over `fields`; empty when any part is Null.
std::string RowKey(const std::vector<Variant>& row, const std::vector<int>& fields, bool* has_null);

}  // namespace orv::db

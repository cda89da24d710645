#include "platform/sql/translate.h"

#include <cctype>
#include <cstdlib>

#include "platform/sql/binder.h"
#include "platform/sql/decorrelate.h"
#include "platform/sql/join_keys.h"
#include "platform/sql/lexer.h"
#include "platform/sql/parser.h"
#include "platform/sql/print_postgres.h"
#include "platform/sql/print_sqlite.h"

namespace orv::sql {

namespace {

std::string Lower(std::string_view s) {
  std::string out(s);
  for (char& c : out) c = AsciiLower(c);
  return out;
}

std::string Describe(const std::string& reason, int line, int column, const std::string& statement) {
  return reason + " (line " + std::to_string(line) + ", column " + std::to_string(column) + ") in: " + statement;
}

}  // namespace

SqlError::SqlError(const std::string& reason, int line, int column, const std::string& statement)
    : ReportError(kErrDatabase, Describe(reason, line, column, statement)), line_(line), column_(column) {}

void Schema::AddTable(const std::string& table, std::vector<ColumnType> columns,
                      std::vector<std::string> primary_key) {
  tables_[Lower(table)] = Entry{table, std::move(columns), std::move(primary_key)};
}

const Schema::Entry* Schema::Find(std::string_view table) const {
  std::string key = Lower(table);
  auto it = tables_.find(key);
  if (it != tables_.end()) return &it->second;
  if (!reader_) return nullptr;
  std::optional<TableColumns> read = reader_(table);
  if (!read) return nullptr;
  Entry& e = tables_[std::move(key)];
  e = Entry{std::move(read->name), std::move(read->columns), std::move(read->primary_key)};
  return &e;
}

const std::vector<std::string>& Schema::PrimaryKey(std::string_view table) const {
  static const std::vector<std::string> kNone;
  const Entry* e = Find(table);
  return e ? e->key : kNone;
}

std::string Schema::TableName(std::string_view table) const {
  const Entry* e = Find(table);
  return e ? e->name : std::string(table);
}

const std::vector<ColumnType>* Schema::FindTable(std::string_view table) const {
  const Entry* e = Find(table);
  return e ? &e->columns : nullptr;
}

ValueKind Schema::KindOfDeclared(std::string_view declared, int* length) {
  std::string d = Lower(declared);
  if (length) *length = 0;
  size_t paren = d.find('(');
  std::string base = d.substr(0, paren);
  while (!base.empty() && std::isspace(static_cast<unsigned char>(base.back()))) base.pop_back();
  while (!base.empty() && std::isspace(static_cast<unsigned char>(base.front()))) base.erase(0, 1);
  if (length && paren != std::string::npos) {
    long n = std::strtol(d.c_str() + paren + 1, nullptr, 10);
    *length = n < 0 ? 0 : n > (1 << 30) ? (1 << 30) : static_cast<int>(n);
  }
  if (base == "money" || base == "smallmoney") return ValueKind::Money;
  if (base == "datetime" || base == "smalldatetime" || base == "date" || base == "datetime2" || base == "timestamp")
    return ValueKind::Date;
  if (base == "bit" || base == "boolean") return ValueKind::Boolean;
  if (base.find("int") != std::string::npos) return ValueKind::Integer;
  if (base.find("char") != std::string::npos || base.find("text") != std::string::npos || base == "clob")
    return ValueKind::Text;
  if (base == "float" || base == "real" || base.find("double") != std::string::npos) return ValueKind::Float;
  if (base == "decimal" || base == "numeric") return ValueKind::Decimal;
  if (base == "blob" || base == "image" || base.find("binary") != std::string::npos) return ValueKind::Blob;
  return ValueKind::Unknown;
}

Translation Translate(std::string_view tsql, const Schema& schema, Dialect dialect) {
  Statement st = Parse(tsql);
  Bind(st, schema, tsql);
  MoveDisjunctionsOntoOneTable(st);
  // The server pays per subquery run what SQLite does not (see decorrelate.h).
  if (dialect == Dialect::PostgreSQL) DecorrelateAggregateSubqueries(st);
  Translation t;
  t.sql = dialect == Dialect::PostgreSQL ? PrintPostgres(st) : PrintSqlite(st);
  t.is_query = st.kind == Statement::Kind::Select;
  if (t.is_query) {
    for (const SelectItem& item : st.query->selects[0]->items) {
      for (const auto& out : item.outputs) {
        ValueKind kind = out.type.kind;
        // A NULL literal column has no type of its own; the engine's value decides.
        t.columns.push_back({out.name, out.type.is_null ? ValueKind::Unknown : kind});
      }
    }
    // In a UNION, a column takes the type of highest precedence among the
    // SELECTs; a NULL in the first SELECT takes the next one's type.
    for (size_t s = 1; s < st.query->selects.size(); ++s) {
      size_t i = 0;
      for (const SelectItem& item : st.query->selects[s]->items) {
        for (const auto& out : item.outputs) {
          if (i < t.columns.size() && t.columns[i].kind == ValueKind::Unknown && !out.type.is_null) {
            t.columns[i].kind = out.type.kind;
          }
          ++i;
        }
      }
    }
  }
  return t;
}

}  // namespace orv::sql

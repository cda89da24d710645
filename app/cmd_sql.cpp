// orvenda-reports sql: runs one statement through the database layer exactly
// as a report would (T-SQL text, SHAPE included) and prints what comes back.
#include <charconv>
#include <cstdio>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

#include "command.h"
#include "platform/db/connection.h"
#include "platform/db/connection_url.h"
#include "platform/db/db_error.h"
#include "platform/db/recordset.h"
#include "platform/db/shape.h"
#include "platform/practice/schema.h"
#include "platform/sql/translate.h"

namespace orv::app {
namespace {

using db::Recordset;

enum class Format { Tsv, Csv, Table };

// A value as the layer returns it: dates "yyyy-mm-dd hh:nn:ss", money with
// four decimals, Null as NULL, flags as the server's bit (1/0), floats in
// the shortest form that reads back the same, binary as 0x and hex digits.
std::string ValueText(const Variant& v) {
  const auto& s = v.storage();
  switch (v.type()) {
    case VarType::Empty: return "";
    case VarType::Null: return "NULL";
    case VarType::Long: return std::to_string(std::get<int32_t>(s));
    case VarType::LongLong: return std::to_string(std::get<int64_t>(s));
    case VarType::Double: {
      char buf[64];
      auto r = std::to_chars(buf, buf + sizeof buf, std::get<double>(s));
      return std::string(buf, r.ptr);
    }
    case VarType::Currency: return std::get<Currency>(s).ToFixed4();
    case VarType::Date: return std::get<DateTime>(s).ToIso();
    case VarType::String: return std::get<std::string>(s);
    case VarType::Boolean: return std::get<bool>(s) ? "1" : "0";
    case VarType::Binary: {
      static const char* hex = "0123456789ABCDEF";
      std::string out = "0x";
      for (unsigned char b : std::get<Bytes>(s)) {
        out += hex[b >> 4];
        out += hex[b & 15];
      }
      return out;
    }
  }
  return "";
}

std::string CsvCell(const std::string& t) {
  if (t.find_first_of(",\"\n\r") == std::string::npos) return t;
  std::string q = "\"";
  for (char c : t) {
    if (c == '"') q += '"';
    q += c;
  }
  return q + "\"";
}

// Collects lines of cells with their nesting depth, then prints them in the
// chosen format (the table format needs every width first).
class Printer {
 public:
  explicit Printer(Format f) : format_(f) {}
  void Add(int depth, std::vector<std::string> cells) { lines_.push_back({depth, std::move(cells)}); }

  void Print(std::FILE* out) const {
    std::vector<size_t> widths;
    if (format_ == Format::Table) {
      for (const auto& l : lines_)
        for (size_t i = 0; i < l.cells.size(); ++i) {
          size_t at = i + l.depth;
          if (widths.size() <= at) widths.resize(at + 1, 0);
          widths[at] = std::max(widths[at], l.cells[i].size());
        }
    }
    for (size_t n = 0; n < lines_.size(); ++n) {
      const auto& l = lines_[n];
      std::string text;
      if (format_ == Format::Tsv) {
        text.assign(l.depth, '\t');
        for (size_t i = 0; i < l.cells.size(); ++i) {
          if (i) text += '\t';
          text += l.cells[i];
        }
      } else if (format_ == Format::Csv) {
        text.assign(l.depth, ',');
        for (size_t i = 0; i < l.cells.size(); ++i) {
          if (i) text += ',';
          text += CsvCell(l.cells[i]);
        }
      } else {
        for (int d = 0; d < l.depth; ++d) text += std::string(widths[d], ' ') + " | ";
        for (size_t i = 0; i < l.cells.size(); ++i) {
          std::string cell = l.cells[i];
          cell.resize(std::max(cell.size(), widths[i + l.depth]), ' ');
          if (i) text += " | ";
          text += cell;
        }
        while (!text.empty() && text.back() == ' ') text.pop_back();
      }
      std::fprintf(out, "%s\n", text.c_str());
      if (format_ == Format::Table && n == 0) {
        std::string rule;
        for (size_t i = 0; i < l.cells.size(); ++i) {
          if (i) rule += "-+-";
          rule.append(widths[i], '-');
        }
        std::fprintf(out, "%s\n", rule.c_str());
      }
    }
  }

 private:
  struct Line {
    int depth;
    std::vector<std::string> cells;
  };
  Format format_;
  std::vector<Line> lines_;
};

// Rows of a recordset at `depth`, each followed by the rows of its chapters
// one level deeper, chapter by chapter in APPEND order.
void AddRows(Recordset& rs, int depth, Printer& p) {
  auto fields = rs.Fields();
  long n = fields.Count();
  std::vector<int> chapters;
  for (long i = 0; i < n; ++i)
    if (fields(i).IsChapter()) chapters.push_back(static_cast<int>(i));
  while (!rs.Eof()) {
    std::vector<std::string> cells;
    for (long i = 0; i < n; ++i)
      if (!fields(i).IsChapter()) cells.push_back(ValueText(fields(i).Value()));
    p.Add(depth, std::move(cells));
    for (int c : chapters) {
      Recordset child = fields(c).Chapter();
      if (!child.Eof()) AddRows(child, depth + 1, p);
    }
    rs.MoveNext();
  }
}

void PrintTranslation(db::Connection& conn, const db::ShapeNode& node, int depth) {
  std::printf("%s%s\n", std::string(depth, '\t').c_str(), conn.EngineText(node.command).c_str());
  for (const auto& c : node.children) PrintTranslation(conn, c.node, depth + 1);
}

void PrintTranslation(const sql::Schema& schema, const db::ShapeNode& node, int depth) {
  std::printf("%s%s\n", std::string(depth, '\t').c_str(),
              sql::Translate(node.command, schema, sql::Dialect::SQLite).sql.c_str());
  for (const auto& c : node.children) PrintTranslation(schema, c.node, depth + 1);
}

sql::Schema PracticeSchema() {
  sql::Schema schema;
  for (const auto& t : practice::Tables()) {
    std::vector<sql::ColumnType> columns;
    for (const auto& c : t.columns) {
      sql::ColumnType ct;
      ct.name = c.name;
      ct.declared = practice::SqliteType(c);
      ct.kind = sql::Schema::KindOfDeclared(ct.declared, &ct.length);
      columns.push_back(std::move(ct));
    }
    std::vector<std::string> key;
    if (!t.primary_key.empty()) key.push_back(t.primary_key);
    schema.AddTable(t.name, std::move(columns), std::move(key));
  }
  return schema;
}

void PrintTranslation(const sql::Schema& schema, const std::string& statement) {
  if (db::IsShapeStatement(statement))
    PrintTranslation(schema, db::ParseShape(statement), 0);
  else
    std::printf("%s\n", sql::Translate(statement, schema, sql::Dialect::SQLite).sql.c_str());
}

int Usage() {
  std::fprintf(stderr,
               "usage: orvenda-reports sql [--db URL] [--today yyyy-mm-dd] [--format tsv|csv|table] "
               "[--translate] [--write] [--] STATEMENT|-\n"
               "  A statement that changes the database (UPDATE, INSERT, DELETE, DDL) runs only with --write.\n"
               "  A statement that starts with -- (a comment) goes after a lone --.\n");
  return 2;
}

int RunSql(const std::vector<std::string>& args) {
  std::string url, statement;
  Format format = Format::Tsv;
  bool translate = false, have_statement = false, write = false, only_statement = false;
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string& a = args[i];
    if (only_statement || (!have_statement && a.rfind("--", 0) == 0 &&
                           a.find_first_of(" \t\r\n") != std::string::npos)) {
      // After a lone "--", or a statement that opens with a "--" comment
      // line: the statement itself, never an option.
      if (have_statement) return Usage();
      statement = a;
      have_statement = true;
    } else if (a == "--") {
      only_statement = true;
    } else if (a == "--db" && i + 1 < args.size()) {
      url = args[++i];
    } else if (a == "--today" && i + 1 < args.size()) {
      if (!ApplyToday(args[++i])) return 2;
    } else if (a == "--format" && i + 1 < args.size()) {
      std::string f = args[++i];
      if (f == "tsv") format = Format::Tsv;
      else if (f == "csv") format = Format::Csv;
      else if (f == "table") format = Format::Table;
      else return Usage();
    } else if (a == "--translate") {
      translate = true;
    } else if (a == "--write") {
      write = true;
    } else if (!have_statement && (a == "-" || a.rfind("--", 0) != 0)) {
      statement = a;
      have_statement = true;
    } else {
      return Usage();
    }
  }
  if (!have_statement) return Usage();
  if (statement == "-")
    statement.assign(std::istreambuf_iterator<char>(std::cin), std::istreambuf_iterator<char>());
  try {
    if (url.empty() && translate) {
      // Without a database the statement is bound against the practice
      // database's own description of its tables.
      PrintTranslation(PracticeSchema(), statement);
      return 0;
    }
    if (url.empty()) {
      std::fprintf(stderr, "orvenda-reports sql: --db URL is needed (sqlite:/path/practice.db)\n");
      return 2;
    }
    db::Connection conn(url);
    if (translate) {
      if (db::IsShapeStatement(statement))
        PrintTranslation(conn, db::ParseShape(statement), 0);
      else
        std::printf("%s\n", conn.EngineText(statement).c_str());
      return 0;
    }
    if (!db::IsShapeStatement(statement) && !conn.ReturnsRows(statement)) {
      // The command reads; a change to the practice has to be asked for.
      if (!write) {
        std::fprintf(stderr,
                     "orvenda-reports sql: the statement changes the database and returns no rows; "
                     "give --write to run it\n");
        return 2;
      }
      std::printf("%ld\n", conn.Execute(statement));
      return 0;
    }
    Recordset rs;
    rs.Open(statement, conn, db::adOpenStatic, db::adLockReadOnly);
    Printer p(format);
    std::vector<std::string> header;
    for (long i = 0; i < rs.Fields().Count(); ++i)
      if (!rs.Fields(i).IsChapter()) header.push_back(rs.Fields(i).Name());
    p.Add(0, std::move(header));
    AddRows(rs, 0, p);
    p.Print(stdout);
    return 0;
  } catch (const ReportError& e) {
    std::fprintf(stderr, "orvenda-reports sql: %s\n", db::MaskSecrets(e.description()).c_str());
    return 1;
  }
}

const CommandRegistrar kRegisterSql({
    "sql",
    "sql [--db URL] [--today yyyy-mm-dd] [--format tsv|csv|table] [--translate] [--write] [--] STATEMENT|-",
    "Runs one T-SQL statement (SHAPE included) through the database layer and prints its rows; changes need --write.",
    RunSql,
});

}  // namespace
}  // namespace orv::app

#include "platform/render/pdf_metadata.h"

namespace orv::render {

namespace {

// `value` as one item of a list whose items end at `separators`.
std::string Item(const std::string& value, const char* separators) {
  const bool plain = value.find_first_of(std::string(separators) + "()\"") == std::string::npos &&
                     (value.empty() || (value.front() != ' ' && value.back() != ' '));
  if (plain) return value;
  std::string out = "\"";
  for (char c : value) {
    if (c == '"') out += '"';
    out += c;
  }
  return out + "\"";
}

}  // namespace

PdfMetadata MetadataOf(const Document& doc) {
  const DocumentIdentity& id = doc.identity;
  PdfMetadata m;
  m.title = doc.name;
  m.author = id.user;
  if (!id.method.empty()) {
    m.subject = id.method + "(";
    for (size_t i = 0; i < id.arguments.size(); ++i) {
      if (i) m.subject += ", ";
      m.subject += id.arguments[i].first + "=" + Item(id.arguments[i].second, ",");
    }
    m.subject += ")";
  }
  const std::pair<const char*, const std::string*> keywords[] = {
      {"today", &id.today},   {"database", &id.database}, {"user", &id.user},
      {"office", &id.office}, {"version", &id.version},
  };
  for (const auto& [name, value] : keywords) {
    if (value->empty()) continue;
    if (!m.keywords.empty()) m.keywords += "; ";
    m.keywords += std::string(name) + "=" + Item(*value, ";");
  }
  if (!id.program.empty()) m.creator = id.program + (id.version.empty() ? "" : " " + id.version);
  return m;
}

}  // namespace orv::render

#include "platform/db/connection_url.h"

#include <cctype>

namespace orv::db {

namespace {

bool StartsWith(const std::string& s, const char* prefix) { return s.rfind(prefix, 0) == 0; }

bool IsUrlForm(const std::string& url) {
  return StartsWith(url, "postgresql://") || StartsWith(url, "postgres://");
}

// Removes "password=value" items from a key=value list, where values may be
// single-quoted with backslash escapes (libpq's rules).
std::string RedactKeyValues(const std::string& text) {
  std::string out;
  size_t i = 0;
  while (i < text.size()) {
    size_t start = i;
    while (i < text.size() && std::isspace(static_cast<unsigned char>(text[i]))) ++i;
    size_t key_begin = i;
    while (i < text.size() && text[i] != '=' && !std::isspace(static_cast<unsigned char>(text[i]))) ++i;
    std::string key = text.substr(key_begin, i - key_begin);
    while (i < text.size() && std::isspace(static_cast<unsigned char>(text[i]))) ++i;
    if (i < text.size() && text[i] == '=') {
      ++i;
      while (i < text.size() && std::isspace(static_cast<unsigned char>(text[i]))) ++i;
      if (i < text.size() && text[i] == '\'') {
        for (++i; i < text.size() && text[i] != '\''; ++i)
          if (text[i] == '\\' && i + 1 < text.size()) ++i;
        if (i < text.size()) ++i;
      } else {
        while (i < text.size() && !std::isspace(static_cast<unsigned char>(text[i]))) ++i;
      }
    }
    std::string lowered;
    for (char c : key) lowered += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    if (lowered != "password") out += text.substr(start, i - start);
    if (i == start) ++i;  // never stall on a stray character
  }
  size_t b = out.find_first_not_of(' ');
  return b == std::string::npos ? std::string() : out.substr(b);
}

}  // namespace

EngineKind EngineOfUrl(const std::string& url) {
  if (IsUrlForm(url) || StartsWith(url, "postgresql:") || StartsWith(url, "postgres:"))
    return EngineKind::PostgreSQL;
  if (StartsWith(url, "sqlite:")) return EngineKind::SQLite;
  // libpq's key=value form: "name=value" pairs, no path separators before
  // the first "=".
  size_t eq = url.find('=');
  if (eq != std::string::npos && eq > 0 && url.find('/') > eq) {
    static const char* keys[] = {"host", "hostaddr", "port", "dbname", "user", "service", "sslmode"};
    for (const char* k : keys)
      if (url.find(std::string(k) + "=") != std::string::npos ||
          url.find(std::string(k) + " =") != std::string::npos)
        return EngineKind::PostgreSQL;
  }
  return EngineKind::SQLite;
}

std::string RedactPassword(const std::string& url) {
  if (EngineOfUrl(url) != EngineKind::PostgreSQL) return url;
  if (!IsUrlForm(url)) return RedactKeyValues(url);
  // scheme://[user[:password]@]hosts[/db][?params]
  size_t auth = url.find("://") + 3;
  size_t end_authority = url.find_first_of("/?", auth);
  if (end_authority == std::string::npos) end_authority = url.size();
  std::string out = url.substr(0, auth);
  size_t at = url.rfind('@', end_authority == url.size() ? std::string::npos : end_authority);
  if (at != std::string::npos && at >= auth && at < end_authority) {
    std::string userinfo = url.substr(auth, at - auth);
    size_t colon = userinfo.find(':');
    out += userinfo.substr(0, colon) + url.substr(at, end_authority - at);
  } else {
    out += url.substr(auth, end_authority - auth);
  }
  size_t q = url.find('?', end_authority);
  out += url.substr(end_authority, q == std::string::npos ? std::string::npos : q - end_authority);
  if (q != std::string::npos) {
    std::string kept;
    size_t i = q + 1;
    while (i <= url.size()) {
      size_t amp = url.find('&', i);
      if (amp == std::string::npos) amp = url.size();
      std::string item = url.substr(i, amp - i);
      std::string key = item.substr(0, item.find('='));
      for (char& c : key) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
      if (!item.empty() && key != "password") kept += (kept.empty() ? "" : "&") + item;
      i = amp + 1;
    }
    if (!kept.empty()) out += "?" + kept;
  }
  return out;
}

}  // namespace orv::db

#include "platform/db/connection_url.h"

#include <cctype>
#include <string_view>

namespace orv::db {

namespace {

std::string Lower(std::string s) {
  for (char& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return s;
}

bool StartsWithNoCase(const std::string& s, const char* prefix) {
  std::string p(prefix);
  return s.size() >= p.size() && Lower(s.substr(0, p.size())) == p;
}

// The scheme of "scheme://...", or "" when the text does not start so.
std::string SchemeOf(const std::string& url) {
  size_t i = 0;
  while (i < url.size() && (std::isalnum(static_cast<unsigned char>(url[i])) || url[i] == '+' ||
                            url[i] == '-' || url[i] == '.'))
    ++i;
  if (i == 0 || !std::isalpha(static_cast<unsigned char>(url[0])) || url.compare(i, 3, "://") != 0)
    return "";
  return Lower(url.substr(0, i));
}

bool IsPostgresScheme(const std::string& scheme) {
  return scheme == "postgresql" || scheme == "postgres";
}

// Where a URL quoted in a message ends: at a blank or a quote.
bool EndsToken(char c) {
  return std::isspace(static_cast<unsigned char>(c)) || c == '"' || c == '\'' || c == '<' ||
         c == '>';
}

bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
}

// The end of a libpq "password = value" item that starts at `i` ("password"
// in any case, blanks around "=", the value up to the next blank, or quoted
// with backslash escapes and possibly unclosed), or npos when none starts
// there.
size_t PasswordItemEnd(const std::string& s, size_t i) {
  static constexpr std::string_view kWord = "password";
  if (s.size() - i < kWord.size()) return std::string::npos;
  for (size_t k = 0; k < kWord.size(); ++k)
    if (std::tolower(static_cast<unsigned char>(s[i + k])) != kWord[k]) return std::string::npos;
  i += kWord.size();
  while (i < s.size() && IsBlank(s[i])) ++i;
  if (i == s.size() || s[i] != '=') return std::string::npos;
  ++i;
  while (i < s.size() && IsBlank(s[i])) ++i;
  if (i < s.size() && s[i] == '\'') {
    ++i;
    while (i < s.size() && s[i] != '\'') {
      // An escape takes the next character, save a line end, which ends
      // the value before its backslash.
      if (s[i] == '\\') {
        if (i + 1 == s.size() || s[i + 1] == '\n' || s[i + 1] == '\r') return i;
        ++i;
      }
      ++i;
    }
    return i < s.size() ? i + 1 : i;
  }
  while (i < s.size() && !IsBlank(s[i])) ++i;
  return i;
}

// Drops the "password=value" items of a libpq connection text, each with
// the blanks before it, by plain scanning: this runs on every message the
// host prints.
std::string DropPasswordItems(const std::string& s) {
  std::string out;
  size_t copied = 0;  // s[0, copied) is in out or dropped
  size_t i = 0;
  if (size_t end = PasswordItemEnd(s, 0); end != std::string::npos) copied = i = end;
  while (i < s.size()) {
    if (!IsBlank(s[i])) {
      ++i;
      continue;
    }
    size_t word = i;
    while (word < s.size() && IsBlank(s[word])) ++word;
    size_t end = PasswordItemEnd(s, word);
    if (end == std::string::npos) {
      i = word;
      continue;
    }
    out.append(s, copied, i - copied);
    copied = i = end;
  }
  out.append(s, copied, std::string::npos);
  return out;
}

// Drops "password=..." items from the query part of one URL.
std::string MaskQuery(const std::string& query) {
  std::string kept;
  size_t i = 0;
  while (i <= query.size()) {
    size_t amp = query.find('&', i);
    if (amp == std::string::npos) amp = query.size();
    std::string item = query.substr(i, amp - i);
    if (!item.empty() && Lower(item.substr(0, item.find('='))) != "password")
      kept += (kept.empty() ? "" : "&") + item;
    i = amp + 1;
  }
  return kept;
}

// One URL (scheme and "://" included) without its secrets.
std::string MaskOneUrl(const std::string& url) {
  size_t auth = url.find("://") + 3;
  std::string out = url.substr(0, auth);
  std::string rest = url.substr(auth);
  size_t at = rest.rfind('@');
  if (at != std::string::npos) {
    std::string userinfo = rest.substr(0, at);
    out += userinfo.substr(0, userinfo.find(':'));
    rest = rest.substr(at);
  }
  size_t q = rest.find('?');
  if (q == std::string::npos) return out + rest;
  std::string kept = MaskQuery(rest.substr(q + 1));
  return out + rest.substr(0, q) + (kept.empty() ? "" : "?" + kept);
}

}  // namespace

EngineKind EngineOfUrl(const std::string& url) {
  if (IsPostgresScheme(SchemeOf(url)) || StartsWithNoCase(url, "postgresql:") ||
      StartsWithNoCase(url, "postgres:"))
    return EngineKind::PostgreSQL;
  if (StartsWithNoCase(url, "sqlite:")) return EngineKind::SQLite;
  // libpq's key=value form: "name=value" pairs, no path separators before
  // the first "=".
  size_t eq = url.find('=');
  if (eq != std::string::npos && eq > 0 && url.find('/') > eq) {
    static const char* keys[] = {"host", "hostaddr", "port",   "dbname",
                                 "user", "service",  "sslmode"};
    for (const char* k : keys)
      if (url.find(std::string(k) + "=") != std::string::npos ||
          url.find(std::string(k) + " =") != std::string::npos)
        return EngineKind::PostgreSQL;
  }
  return EngineKind::SQLite;
}

std::string UnknownScheme(const std::string& url) {
  std::string scheme = SchemeOf(url);
  if (scheme.empty() || IsPostgresScheme(scheme) || scheme == "sqlite") return "";
  return scheme;
}

std::string SqlitePath(const std::string& url) {
  if (!StartsWithNoCase(url, "sqlite:")) return url;
  std::string path = url.substr(7);
  // "sqlite:///abs/path" and "sqlite://rel" are accepted like "sqlite:/abs".
  if (path.rfind("//", 0) == 0) path = path.substr(2);
  return path;
}

std::string EncodeUserInfo(const std::string& url) {
  if (!IsPostgresScheme(SchemeOf(url))) return url;
  size_t auth = url.find("://") + 3;
  size_t at = url.rfind('@');
  if (at == std::string::npos || at < auth) return url;
  std::string userinfo = url.substr(auth, at - auth);
  size_t colon = userinfo.find(':');
  std::string encoded;
  for (size_t i = 0; i < userinfo.size(); ++i) {
    char c = userinfo[i];
    bool reserved = c == '@' || c == '/' || c == '?' || c == '#' || c == '[' || c == ']' ||
                    (c == ':' && i != colon);
    if (!reserved) {
      encoded += c;
      continue;
    }
    static const char* hex = "0123456789ABCDEF";
    encoded += '%';
    encoded += hex[static_cast<unsigned char>(c) >> 4];
    encoded += hex[static_cast<unsigned char>(c) & 15];
  }
  return url.substr(0, auth) + encoded + url.substr(at);
}

std::string MaskSecrets(const std::string& text) {
  // 1. Every "scheme://..." of any scheme, up to the next blank or quote.
  std::string out;
  size_t i = 0;
  while (i < text.size()) {
    size_t sep = text.find("://", i);
    if (sep == std::string::npos) break;
    size_t start = sep;
    while (start > i &&
           (std::isalnum(static_cast<unsigned char>(text[start - 1])) || text[start - 1] == '+' ||
            text[start - 1] == '-' || text[start - 1] == '.'))
      --start;
    size_t end = sep + 3;
    while (end < text.size() && !EndsToken(text[end])) ++end;
    out += text.substr(i, start - i);
    out += start == sep ? text.substr(start, end - start)
                        : MaskOneUrl(text.substr(start, end - start));
    i = end;
  }
  out += text.substr(i);
  // 2. libpq's "password=value" items, where they stand as items (at the
  //    start or after a blank), quoted values included.
  out = DropPasswordItems(out);
  size_t b = out.find_first_not_of(' ');
  return b == std::string::npos ? std::string() : out.substr(b);
}

std::string RedactPassword(const std::string& url) {
  if (EngineOfUrl(url) != EngineKind::PostgreSQL && SchemeOf(url).empty()) return url;
  return MaskSecrets(url);
}

}  // namespace orv::db

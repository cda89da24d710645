// T-SQL tokens with their source positions.
//
// The lexer follows SQL Server's reading of the text rather than the SQL
// standard's where the reports depend on it: a number ends where a letter
// that cannot continue it begins (`= 5AND`, `123ORDER BY`), `#` and `$`
// continue an unquoted name (`Invoice#`, `Check#`), `[...]` and `"..."` quote
// a name, and N'...' is a text literal like '...'.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace orv::sql {

// Line and column of a token or node, both counted from 1.
struct Pos {
  int line = 1;
  int column = 1;
};

enum class TokenType {
  Identifier,  // unquoted name or keyword; `text` keeps the spelling
  Quoted,      // [name] or "name"; `text` is the name without its quotes
  Number,      // digits with an optional fraction and exponent
  String,      // '...' or N'...'; `text` is the value with '' undoubled
  Variable,    // @name: never supported, kept so the error can name it
  Symbol,      // operator or punctuation; `text` is the symbol
  End,
};

// Case folding of names and keywords. Names compare as SQL Server's
// case-insensitive collation compares them, and the layer runs in the "C"
// locale, where only A-Z and a-z have a case: folding those inline gives the
// very answers std::tolower gave, without a library call for every
// character of every name the parser, the binder and the schema compare.
inline char AsciiLower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; }
inline char AsciiUpper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - ('a' - 'A')) : c; }
inline bool EqualNoCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i)
    if (a[i] != b[i] && AsciiLower(a[i]) != AsciiLower(b[i])) return false;
  return true;
}

struct Token {
  TokenType type = TokenType::End;
  std::string text;
  Pos pos;
  // True for an Identifier whose spelling is `word`, ignoring case.
  bool Is(std::string_view word) const;
  bool IsSymbol(std::string_view symbol) const { return type == TokenType::Symbol && text == symbol; }
};

// Splits a statement into tokens. Comments (`-- ...`, `/* ... */`) are
// dropped. Throws SqlError for an unterminated literal or an unknown
// character. The last token is always End.
std::vector<Token> Tokenize(std::string_view text);

}  // namespace orv::sql

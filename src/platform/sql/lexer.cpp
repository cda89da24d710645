#include "platform/sql/lexer.h"

#include <cctype>

#include "platform/sql/translate.h"

namespace orv::sql {

namespace {

// The character classes of the "C" locale, tested inline: the lexer asks
// one of them of every character of a statement.
bool IsDigit(unsigned char c) { return c >= '0' && c <= '9'; }
bool IsLetter(unsigned char c) { return (c | 0x20) >= 'a' && (c | 0x20) <= 'z'; }
bool IsIdentStart(unsigned char c) { return IsLetter(c) || c == '_' || c >= 0x80; }
bool IsIdentPart(unsigned char c) {
  return IsLetter(c) || IsDigit(c) || c == '_' || c == '#' || c == '$' || c == '@' || c >= 0x80;
}

class Lexer {
 public:
  explicit Lexer(std::string_view text) : text_(text) {}

  std::vector<Token> Run() {
    // The engine's text ends at a NUL, so a NUL inside a literal or name
    // could not be printed faithfully; statements never hold one.
    size_t nul = text_.find('\0');
    if (nul != std::string_view::npos) {
      while (i_ < nul) Advance();
      Fail("The statement holds a NUL character", pos_);
    }
    // A report's statement has about a token for every six characters;
    // room for that many spares the vector its doublings.
    std::vector<Token> out;
    out.reserve(text_.size() / 6 + 8);
    for (;;) {
      SkipBlanksAndComments();
      Token t;
      t.pos = pos_;
      if (i_ >= text_.size()) {
        out.push_back(t);
        return out;
      }
      unsigned char c = text_[i_];
      if ((c == 'N' || c == 'n') && Peek(1) == '\'') {
        Advance();
        ReadString(t);
      } else if (c == '\'') {
        ReadString(t);
      } else if (IsDigit(c) || (c == '.' && IsDigit(static_cast<unsigned char>(Peek(1))))) {
        ReadNumber(t);
      } else if (IsIdentStart(c) || c == '#') {
        t.type = TokenType::Identifier;
        ReadName(t);
      } else if (c == '@') {
        t.type = TokenType::Variable;
        ReadName(t);
      } else if (c == '[') {
        ReadQuoted(t, ']');
      } else if (c == '"') {
        ReadQuoted(t, '"');
      } else {
        ReadSymbol(t);
      }
      out.push_back(std::move(t));
    }
  }

 private:
  char Peek(size_t ahead) const { return i_ + ahead < text_.size() ? text_[i_ + ahead] : '\0'; }

  char Advance() {
    char c = text_[i_++];
    if (c == '\n') {
      ++pos_.line;
      pos_.column = 1;
    } else {
      ++pos_.column;
    }
    return c;
  }

  // A name is taken whole: it holds no line end, so only the column moves.
  void ReadName(Token& t) {
    size_t end = i_;
    while (end < text_.size() && IsIdentPart(text_[end])) ++end;
    t.text.assign(text_.substr(i_, end - i_));
    pos_.column += static_cast<int>(end - i_);
    i_ = end;
  }

  [[noreturn]] void Fail(const std::string& reason, Pos at) const {
    throw SqlError(reason, at.line, at.column, std::string(text_));
  }

  void SkipBlanksAndComments() {
    while (i_ < text_.size()) {
      unsigned char c = text_[i_];
      if (c == ' ') {
        // Blanks, by far the most common, move the column alone.
        ++i_;
        ++pos_.column;
      } else if (std::isspace(c)) {
        Advance();
      } else if (c == '-' && Peek(1) == '-') {
        while (i_ < text_.size() && text_[i_] != '\n') Advance();
      } else if (c == '/' && Peek(1) == '*') {
        Pos start = pos_;
        Advance();
        Advance();
        // SQL Server nests block comments.
        int depth = 1;
        while (depth > 0) {
          if (i_ >= text_.size()) Fail("Missing end comment mark '*/'", start);
          if (text_[i_] == '/' && Peek(1) == '*') {
            Advance();
            Advance();
            ++depth;
          } else if (text_[i_] == '*' && Peek(1) == '/') {
            Advance();
            Advance();
            --depth;
          } else {
            Advance();
          }
        }
      } else {
        return;
      }
    }
  }

  void ReadString(Token& t) {
    t.type = TokenType::String;
    Advance();  // opening quote
    for (;;) {
      if (i_ >= text_.size()) Fail("Unclosed quotation mark after the character string", t.pos);
      // The text up to the next quote or line end is taken in one piece.
      const size_t stop = text_.find_first_of("'\n", i_);
      if (stop != i_) {
        const size_t end = stop == std::string_view::npos ? text_.size() : stop;
        t.text.append(text_.substr(i_, end - i_));
        pos_.column += static_cast<int>(end - i_);
        i_ = end;
        continue;
      }
      char c = Advance();
      if (c == '\'') {
        if (Peek(0) == '\'') {
          Advance();
          t.text += '\'';
          continue;
        }
        return;
      }
      t.text += c;
    }
  }

  void ReadQuoted(Token& t, char close) {
    t.type = TokenType::Quoted;
    Advance();
    for (;;) {
      if (i_ >= text_.size()) Fail("Unclosed quoted name", t.pos);
      char c = Advance();
      if (c == close) {
        // A doubled closing character stands for itself.
        if (Peek(0) == close) {
          Advance();
          t.text += close;
          continue;
        }
        return;
      }
      t.text += c;
    }
  }

  // A number stops at the first character that cannot continue it, so
  // `5AND` is the number 5 followed by AND, as SQL Server reads it. An `e`
  // starts an exponent only when a digit (or a sign and a digit) follows.
  void ReadNumber(Token& t) {
    t.type = TokenType::Number;
    while (IsDigit(static_cast<unsigned char>(Peek(0)))) t.text += Advance();
    if (Peek(0) == '.') {
      t.text += Advance();
      while (IsDigit(static_cast<unsigned char>(Peek(0)))) t.text += Advance();
    }
    char e = Peek(0);
    if (e == 'e' || e == 'E') {
      char n1 = Peek(1), n2 = Peek(2);
      bool digit1 = IsDigit(static_cast<unsigned char>(n1));
      bool signed_digit = (n1 == '+' || n1 == '-') && IsDigit(static_cast<unsigned char>(n2));
      if (digit1 || signed_digit) {
        t.text += Advance();
        if (signed_digit) t.text += Advance();
        while (IsDigit(static_cast<unsigned char>(Peek(0)))) t.text += Advance();
      }
    }
  }

  void ReadSymbol(Token& t) {
    t.type = TokenType::Symbol;
    static const char* const kTwo[] = {"<>", "!=", "<=", ">=", "!<", "!>", "||"};
    for (const char* two : kTwo) {
      if (text_[i_] == two[0] && Peek(1) == two[1]) {
        t.text += Advance();
        t.text += Advance();
        return;
      }
    }
    static const std::string_view kOne = "(),.;*+-/%=<>&|^~{}";
    if (kOne.find(text_[i_]) == std::string_view::npos) {
      Fail("Incorrect syntax near '" + std::string(1, text_[i_]) + "'", pos_);
    }
    t.text += Advance();
  }

  std::string_view text_;
  size_t i_ = 0;
  Pos pos_;
};

}  // namespace

bool Token::Is(std::string_view word) const {
  return type == TokenType::Identifier && EqualNoCase(text, word);
}

std::vector<Token> Tokenize(std::string_view text) { return Lexer(text).Run(); }

}  // namespace orv::sql

#include "platform/render/letters.h"

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <set>

#include "common/collation.h"
#include "platform/host/partial_files.h"
#include "platform/render/renderer.h"

namespace orv::render {

namespace {

// The next code point of UTF-8 text at `i`, moving `i` past it; a byte that
// starts no valid sequence stands for itself.
char32_t NextCodePoint(const std::string& s, size_t& i) {
  const auto b = static_cast<unsigned char>(s[i]);
  const int len = b < 0x80 ? 1 : (b >> 5) == 6 ? 2 : (b >> 4) == 14 ? 3 : (b >> 3) == 30 ? 4 : 0;
  if (len <= 1 || i + len > s.size()) {
    ++i;
    return b;
  }
  char32_t c = b & (0x7F >> len);
  for (int k = 1; k < len; ++k) {
    const auto next = static_cast<unsigned char>(s[i + k]);
    if ((next >> 6) != 2) {
      ++i;
      return b;
    }
    c = (c << 6) | (next & 0x3F);
  }
  i += len;
  return c;
}

// The plain letters an accented letter is written with in a file name, ""
// for any other character.
std::string PlainLetters(char32_t c) {
  for (const auto& letter : collation::Letters()) {
    if (letter.small != c && letter.capital != c) continue;
    std::string base = letter.base;
    if (letter.capital == c)
      for (char& b : base) b = char(std::toupper(static_cast<unsigned char>(b)));
    return base;
  }
  return "";
}

std::string Lower(std::string s) {
  for (char& c : s) c = char(std::tolower(static_cast<unsigned char>(c)));
  return s;
}

}  // namespace

std::string LetterFileStem(int32_t account, const std::string& name) {
  constexpr size_t kLongestName = 60;
  std::string safe;
  bool gap = false;
  for (size_t i = 0; i < name.size();) {
    const char32_t c = NextCodePoint(name, i);
    std::string letters;
    if ((c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9'))
      letters = std::string(1, char(c));
    else if (c == '\'' || c == U'\u2019')
      continue;  // O'Brien is OBrien, not O_Brien
    else if (c >= 0x80)
      letters = PlainLetters(c);
    if (letters.empty()) {
      gap = !safe.empty();
      continue;
    }
    if (gap) safe += '_';
    gap = false;
    safe += letters;
  }
  if (safe.size() > kLongestName) {
    safe.resize(kLongestName);
    while (!safe.empty() && safe.back() == '_') safe.pop_back();
  }
  std::string stem = std::to_string(account);
  return safe.empty() ? stem : stem + "-" + safe;
}

std::vector<LetterFile> LetterFiles(const Document& doc) {
  std::vector<Letter> letters = doc.letters;
  const int pages = int(doc.pages.size());
  std::stable_sort(letters.begin(), letters.end(),
                   [](const Letter& a, const Letter& b) { return a.first_page < b.first_page; });
  std::vector<LetterFile> files;
  std::set<std::string> taken;  // lower case, as a zip or Windows compares
  for (size_t i = 0; i < letters.size(); ++i) {
    const int first = letters[i].first_page;
    const int last = i + 1 < letters.size() ? letters[i + 1].first_page - 1 : pages;
    if (first < 1 || first > pages || last < first) continue;  // no page of its own
    const std::string stem = LetterFileStem(letters[i].account, letters[i].name);
    std::string name = stem + ".pdf";
    for (int n = 2; !taken.insert(Lower(name)).second; ++n)
      name = stem + "-" + std::to_string(n) + ".pdf";
    files.push_back({name, first, last, letters[i].account});
  }
  return files;
}

std::vector<std::string> WriteLetterPdfs(const Document& doc, const std::string& folder) {
  namespace fs = std::filesystem;
  const std::vector<LetterFile> files = LetterFiles(doc);
  if (files.empty()) throw RenderError("The document is not a run of letters: nothing to split");
  std::error_code ec;
  fs::create_directories(folder, ec);
  if (!fs::is_directory(folder)) throw RenderError("Cannot make the folder " + folder);
  std::vector<std::pair<fs::path, fs::path>> staged;  // temporary, target
  auto remove_staged = [&] {
    for (const auto& [tmp, target] : staged) host::RemovePartialFile(tmp.string());
  };
  try {
    for (const LetterFile& f : files) {
      const fs::path target = fs::path(folder) / f.name;
      const fs::path tmp =
          fs::path(folder) / ("." + f.name + ".part-" + std::to_string(::getpid()) + ".pdf");
      staged.emplace_back(tmp, target);
      host::TrackPartialFile(tmp.string());
      RenderPdf(doc, tmp.string(), f.first_page, f.last_page);
    }
  } catch (...) {
    remove_staged();
    throw;
  }
  std::vector<std::string> written;
  for (const auto& [tmp, target] : staged) {
    host::RenamePartialFile(tmp.string(), target.string(), ec);
    if (ec) {
      remove_staged();
      throw RenderError("Cannot write " + target.string());
    }
    written.push_back(target.string());
  }
  return written;
}

}  // namespace orv::render

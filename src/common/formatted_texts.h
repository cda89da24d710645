// FormattedTexts: the printed text of each distinct value of a column,
// formatted once, for a listing that prints the same few values on
// thousands of rows (the fees of a day book, the days of a month, a
// Yes/No column).
#pragma once

#include <functional>
#include <map>
#include <string>
#include <utility>

namespace orv {

// Keeps the text `format(key)` of every key it is asked for. The formatter
// runs once per distinct key, the first time that key is seen; every later
// call returns the kept text, an empty one too. It is given at
// construction, so one cache never mixes two formats: a column printed two
// ways takes two caches. Key is ordered by `<`, and the key alone must
// decide the text. A returned reference lasts as long as the cache; the
// cache is neither copied nor moved, as those references point into it.
// A formatter that throws leaves nothing kept for its key.
//
//   FormattedTexts<Currency> fees([](Currency c) { return Format(Variant(c), "Currency"); });
//   row += fees(line.cost);
template <typename Key>
class FormattedTexts {
 public:
  using Formatter = std::function<std::string(const Key&)>;

  explicit FormattedTexts(Formatter format) : format_(std::move(format)) {}
  FormattedTexts(const FormattedTexts&) = delete;
  FormattedTexts& operator=(const FormattedTexts&) = delete;

  const std::string& operator()(const Key& key) {
    // A listing is sorted by what it prints, so most rows ask for the key
    // the row before asked for: that one is answered without a search.
    if (last_ != texts_.end() && !(last_->first < key) && !(key < last_->first))
      return last_->second;
    auto it = texts_.lower_bound(key);
    if (it == texts_.end() || key < it->first) it = texts_.emplace_hint(it, key, format_(key));
    last_ = it;
    return it->second;
  }

 private:
  using Texts = std::map<Key, std::string>;
  Formatter format_;
  Texts texts_;
  typename Texts::iterator last_ = texts_.end();
};

}  // namespace orv

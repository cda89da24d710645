// Packing finished pages of the display list (PageStore in display_list.h).
//
// A page of a long table holds a few hundred items; as plain items each
// takes about 130 bytes and its text another allocation. Packed, an item is
// a kind byte, a byte saying how each of its coordinates is written, the
// coordinates that the one before does not predict, and its text inline:
// some 20 bytes and the text.
//
// Every coordinate is kept bit for bit: it is written as "as predicted",
// as a 16-bit whole number, as a float or as the double itself, whichever
// is the shortest that gives back the same bits. Predictions come from the
// item of the same kind before it on the page (the next row's cell starts
// at the same x, a run's baseline lies as far below its top as the last
// one's), so each page unpacks alone.

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <iterator>
#include <map>
#include <mutex>
#include <stdexcept>
#include <tuple>

#include "platform/render/display_list.h"
#include "platform/render/spill_file.h"

namespace orv::render {

namespace {

enum Kind : uint8_t { kText = 0, kLine = 1, kFill = 2, kPicture = 3, kScaled = 4 };
constexpr uint8_t kKindMask = 0x07;
constexpr uint8_t kSameStyle = 0x08;  // the style of the item of its kind before
constexpr uint8_t kHasClip = 0x10;    // a text run with a clip box

// How a coordinate is written (two bits of the item's coordinate byte).
enum Code : uint8_t { kPredicted = 0, kShort = 1, kFloat = 2, kDouble = 3 };

bool SameBits(double a, double b) { return std::memcmp(&a, &b, sizeof a) == 0; }

struct TextStyle {
  uint16_t font;
  float size_pt;
  uint8_t r, g, b;
  bool underline;
  int16_t angle;
  auto Key() const { return std::tuple(font, size_pt, r, g, b, underline, angle); }
  bool operator<(const TextStyle& o) const { return Key() < o.Key(); }
};

struct LineStyle {
  double width;
  uint8_t r, g, b;
  bool dotted;
  auto Key() const { return std::tuple(width, r, g, b, dotted); }
  bool operator<(const LineStyle& o) const { return Key() < o.Key(); }
};

// Where the previous item of each kind stood, for the predictions.
struct Predictions {
  TextRun run;
  Line line;
  Box fill, picture, scaled;
  int64_t text_style = -1, line_style = -1;
};

// Writes packed items. The bytes gather in a small buffer of its own and go
// to the output a buffer at a time, and at Flush, which ends the writing: a
// page of a long list is some thousands of bytes written a byte or a
// coordinate at a time, and appending each to the string alone was a third
// of the packing.
class Writer {
 public:
  explicit Writer(std::string& out) : out_(out) {}
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;

  void Byte(uint8_t b) {
    Room(1);
    buf_[n_++] = char(b);
  }
  void Raw(const void* p, size_t n) {
    if (n > kLong) {
      Flush();
      out_.append(static_cast<const char*>(p), n);
      return;
    }
    Room(n);
    std::memcpy(buf_ + n_, p, n);
    n_ += n;
  }
  void Varint(uint64_t v) {
    Room(10);
    while (v >= 0x80) {
      buf_[n_++] = char(uint8_t(v | 0x80));
      v >>= 7;
    }
    buf_[n_++] = char(uint8_t(v));
  }
  // Up to four coordinates with their predictions: one byte of codes, then
  // each coordinate that the prediction misses, in its shortest exact form.
  void Coords(std::initializer_list<std::pair<double, double>> values) {
    Room(1 + 4 * sizeof(double));
    char* const codes_at = buf_ + n_++;
    uint8_t codes = 0;
    size_t shift = 0;
    for (const auto& [v, predicted] : values) {
      Code c = kDouble;
      if (SameBits(v, predicted)) {
        c = kPredicted;
      } else if (const bool in_short = v >= -32768 && v <= 32767;
                 in_short && SameBits(double(int16_t(v)), v)) {
        // The conversions are tried only within the range of their type.
        c = kShort;
        const auto s = int16_t(v);
        std::memcpy(buf_ + n_, &s, sizeof s);
        n_ += sizeof s;
      } else if (const bool in_float = std::abs(v) < 3e38;
                 in_float && SameBits(double(float(v)), v)) {
        c = kFloat;
        const auto f = float(v);
        std::memcpy(buf_ + n_, &f, sizeof f);
        n_ += sizeof f;
      } else {
        std::memcpy(buf_ + n_, &v, sizeof v);
        n_ += sizeof v;
      }
      codes |= uint8_t(c << shift);
      shift += 2;
    }
    *codes_at = char(codes);
  }
  void Flush() {
    out_.append(buf_, n_);
    n_ = 0;
  }

 private:
  static constexpr size_t kLong = 64;  // written past the buffer
  void Room(size_t n) {
    if (n_ + n > sizeof buf_) Flush();
  }
  std::string& out_;
  char buf_[512];
  size_t n_ = 0;
};

class Reader {
 public:
  Reader(const char* p, size_t n) : p_(p), end_(p + n) {}
  bool AtEnd() const { return p_ == end_; }
  uint8_t Byte() {
    Need(1);
    return uint8_t(*p_++);
  }
  void Raw(void* to, size_t n) {
    Need(n);
    std::memcpy(to, p_, n);
    p_ += n;
  }
  uint64_t Varint() {
    uint64_t v = 0;
    for (int shift = 0;; shift += 7) {
      const uint8_t b = Byte();
      v |= uint64_t(b & 0x7f) << shift;
      if (!(b & 0x80)) return v;
    }
  }
  std::string Text(size_t n) {
    Need(n);
    std::string s(p_, n);
    p_ += n;
    return s;
  }
  uint8_t Codes() { return Byte(); }
  // The coordinate `k` of a coordinate byte, given its prediction.
  double Coord(uint8_t codes, int k, double predicted) {
    switch (Code((codes >> (2 * k)) & 3)) {
      case kPredicted:
        return predicted;
      case kShort: {
        int16_t s;
        Raw(&s, sizeof s);
        return double(s);
      }
      case kFloat: {
        float f;
        Raw(&f, sizeof f);
        return double(f);
      }
      case kDouble:
        break;
    }
    double d;
    Raw(&d, sizeof d);
    return d;
  }

 private:
  void Need(size_t n) const {
    if (size_t(end_ - p_) < n) throw std::runtime_error("a packed page of the document is damaged");
  }
  const char* p_;
  const char* end_;
};

// A line's second end is predicted from its first when the line before was
// upright (vertical rules of a table) or flat, else from that line's end.
double SecondEnd(double first, double prev_first, double prev_second) {
  return SameBits(prev_first, prev_second) ? first : prev_second;
}

// A run's baseline is predicted from the run before: the same where the two
// share their top (cells of one row), as far below the top otherwise.
double Baseline(double top, const TextRun& prev) {
  if (SameBits(top, prev.top.value())) return prev.baseline.value();
  return top + (prev.baseline.value() - prev.top.value());
}

}  // namespace

struct PageStore::Shared {
  // The tables grow as pages are packed, on the thread that paints them as
  // well as on the store's; packing and unpacking a page each hold this.
  std::mutex mu;
  std::vector<TextStyle> text_styles;
  std::map<TextStyle, size_t> text_index;
  std::vector<LineStyle> line_styles;
  std::map<LineStyle, size_t> line_index;
  std::vector<std::shared_ptr<const Image>> images;
  std::map<const Image*, size_t> image_index;

  // Packed pages past the memory budget.
  SpillFile file;

  size_t TextStyleIndex(const TextRun& t) {
    const TextStyle s{t.font, t.size_pt, t.color.r, t.color.g, t.color.b, t.underline, t.angle};
    auto [it, added] = text_index.emplace(s, text_styles.size());
    if (added) text_styles.push_back(s);
    return it->second;
  }
  size_t LineStyleIndex(const Line& l) {
    const LineStyle s{l.width.value(), l.color.r, l.color.g, l.color.b, l.dotted};
    auto [it, added] = line_index.emplace(s, line_styles.size());
    if (added) line_styles.push_back(s);
    return it->second;
  }
  size_t ImageIndex(const std::shared_ptr<const Image>& image) {
    auto [it, added] = image_index.emplace(image.get(), images.size());
    if (added) images.push_back(image);
    return it->second;
  }

  int64_t Spill(const std::string& bytes) { return file.Append(bytes); }
  std::string Load(int64_t at, size_t size) const { return file.Read(at, size); }
};

namespace {

void Pack(const std::vector<DisplayItem>& items, PageStore::Shared& shared, std::string& out) {
  const std::lock_guard lock(shared.mu);
  Writer w(out);
  // The count first, so that unpacking takes the room for the items at once.
  w.Varint(items.size());
  Predictions prev;
  for (const DisplayItem& item : items) {
    if (const auto* t = std::get_if<TextRun>(&item)) {
      // Runs mostly share the style of the run before; the table of styles
      // is searched only when it changes.
      const bool as_before = prev.text_style >= 0 && t->font == prev.run.font &&
                             t->size_pt == prev.run.size_pt && t->color == prev.run.color &&
                             t->underline == prev.run.underline && t->angle == prev.run.angle;
      const auto style = as_before ? prev.text_style : int64_t(shared.TextStyleIndex(*t));
      uint8_t kind = kText;
      if (style == prev.text_style) kind |= kSameStyle;
      if (t->clip) kind |= kHasClip;
      w.Byte(kind);
      if (style != prev.text_style) w.Varint(uint64_t(style));
      w.Coords({{t->x.value(), prev.run.x.value()},
                {t->top.value(), prev.run.top.value()},
                {t->baseline.value(), Baseline(t->top.value(), prev.run)},
                {t->width.value(), prev.run.width.value()}});
      w.Varint(t->text.size());
      w.Raw(t->text.data(), t->text.size());
      if (t->clip) {
        const double box[4] = {t->clip->x.value(), t->clip->y.value(), t->clip->width.value(),
                               t->clip->height.value()};
        w.Raw(box, sizeof box);
      }
      prev.text_style = style;
      prev.run.font = t->font;
      prev.run.size_pt = t->size_pt;
      prev.run.color = t->color;
      prev.run.underline = t->underline;
      prev.run.angle = t->angle;
      prev.run.x = t->x;
      prev.run.top = t->top;
      prev.run.baseline = t->baseline;
      prev.run.width = t->width;
    } else if (const auto* l = std::get_if<Line>(&item)) {
      const auto style = int64_t(shared.LineStyleIndex(*l));
      w.Byte(uint8_t(kLine | (style == prev.line_style ? kSameStyle : 0)));
      if (style != prev.line_style) w.Varint(uint64_t(style));
      const Line& p = prev.line;
      w.Coords({{l->x1.value(), p.x1.value()},
                {l->y1.value(), p.y1.value()},
                {l->x2.value(), SecondEnd(l->x1.value(), p.x1.value(), p.x2.value())},
                {l->y2.value(), SecondEnd(l->y1.value(), p.y1.value(), p.y2.value())}});
      prev.line_style = style;
      prev.line = *l;
    } else {
      // Boxes: a filled rectangle, a picture, a scaled block.
      const Box* box = nullptr;
      Box* predicted = nullptr;
      if (const auto* f = std::get_if<FilledRect>(&item)) {
        w.Byte(kFill);
        w.Raw(&f->color, 3);
        box = &f->box;
        predicted = &prev.fill;
      } else if (const auto* pic = std::get_if<Picture>(&item)) {
        w.Byte(kPicture);
        w.Varint(shared.ImageIndex(pic->image));
        box = &pic->box;
        predicted = &prev.picture;
      } else {
        const auto& s = std::get<ScaledBlock>(item);
        w.Byte(kScaled);
        w.Raw(&s.scale, sizeof s.scale);
        box = &s.box;
        predicted = &prev.scaled;
      }
      w.Coords({{box->x.value(), predicted->x.value()},
                {box->y.value(), predicted->y.value()},
                {box->width.value(), predicted->width.value()},
                {box->height.value(), predicted->height.value()}});
      *predicted = *box;
    }
  }
  w.Flush();
}

std::vector<DisplayItem> UnpackItems(const std::string& bytes, PageStore::Shared& shared) {
  const std::lock_guard lock(shared.mu);
  std::vector<DisplayItem> items;
  Reader r(bytes.data(), bytes.size());
  // Never more items than bytes: a damaged count cannot ask for more.
  items.reserve(std::min<uint64_t>(r.Varint(), bytes.size()));
  Predictions prev;
  auto read_box = [&](Box& predicted) {
    const uint8_t c = r.Codes();
    Box b;
    b.x = Twips(r.Coord(c, 0, predicted.x.value()));
    b.y = Twips(r.Coord(c, 1, predicted.y.value()));
    b.width = Twips(r.Coord(c, 2, predicted.width.value()));
    b.height = Twips(r.Coord(c, 3, predicted.height.value()));
    predicted = b;
    return b;
  };
  while (!r.AtEnd()) {
    const uint8_t kind = r.Byte();
    switch (kind & kKindMask) {
      case kText: {
        if (!(kind & kSameStyle)) prev.text_style = int64_t(r.Varint());
        const TextStyle& s = shared.text_styles.at(size_t(prev.text_style));
        TextRun t;
        t.font = s.font;
        t.size_pt = s.size_pt;
        t.color = Rgb{s.r, s.g, s.b};
        t.underline = s.underline;
        t.angle = s.angle;
        const uint8_t c = r.Codes();
        t.x = Twips(r.Coord(c, 0, prev.run.x.value()));
        t.top = Twips(r.Coord(c, 1, prev.run.top.value()));
        t.baseline = Twips(r.Coord(c, 2, Baseline(t.top.value(), prev.run)));
        t.width = Twips(r.Coord(c, 3, prev.run.width.value()));
        t.text = r.Text(size_t(r.Varint()));
        if (kind & kHasClip) {
          double box[4];
          r.Raw(box, sizeof box);
          t.clip = Box{Twips(box[0]), Twips(box[1]), Twips(box[2]), Twips(box[3])};
        }
        prev.run.x = t.x;
        prev.run.top = t.top;
        prev.run.baseline = t.baseline;
        prev.run.width = t.width;
        items.emplace_back(std::move(t));
        break;
      }
      case kLine: {
        if (!(kind & kSameStyle)) prev.line_style = int64_t(r.Varint());
        const LineStyle& s = shared.line_styles.at(size_t(prev.line_style));
        const Line& p = prev.line;
        const uint8_t c = r.Codes();
        Line l;
        l.width = Twips(s.width);
        l.color = Rgb{s.r, s.g, s.b};
        l.dotted = s.dotted;
        l.x1 = Twips(r.Coord(c, 0, p.x1.value()));
        l.y1 = Twips(r.Coord(c, 1, p.y1.value()));
        l.x2 = Twips(r.Coord(c, 2, SecondEnd(l.x1.value(), p.x1.value(), p.x2.value())));
        l.y2 = Twips(r.Coord(c, 3, SecondEnd(l.y1.value(), p.y1.value(), p.y2.value())));
        prev.line = l;
        items.emplace_back(l);
        break;
      }
      case kFill: {
        FilledRect f;
        r.Raw(&f.color, 3);
        f.box = read_box(prev.fill);
        items.emplace_back(f);
        break;
      }
      case kPicture: {
        Picture p;
        p.image = shared.images.at(size_t(r.Varint()));
        p.box = read_box(prev.picture);
        items.emplace_back(std::move(p));
        break;
      }
      case kScaled: {
        ScaledBlock s;
        r.Raw(&s.scale, sizeof s.scale);
        s.box = read_box(prev.scaled);
        items.emplace_back(s);
        break;
      }
      default:
        throw std::runtime_error("a packed page of the document is damaged");
    }
  }
  return items;
}

}  // namespace

struct PageStore::Packing {
  std::string bytes;
  std::exception_ptr error;  // raised packing
  std::atomic<bool> done = false;
};

void PageStore::Packer::operator()(const std::vector<DisplayItem>& items) const {
  if (!into_) return;
  try {
    Pack(items, *shared_, into_->bytes);
  } catch (...) {
    into_->error = std::current_exception();
  }
  into_->done.store(true, std::memory_order_release);
}

PageStore::PageStore() : shared_(std::make_shared<Shared>()) {}

// A copy takes the pages packed: what the sink still packs is waited for,
// and the copy holds bytes of its own.
PageStore::PageStore(const PageStore& o)
    : slots_((o.AwaitPacking(), o.slots_)),
      shared_(o.shared_),
      packed_bytes_(o.packed_bytes_),
      budget_(o.budget_) {
  for (Slot& slot : slots_) {
    if (!slot.packing) continue;
    slot.packed = Packed(*slot.packing);
    packed_bytes_ += slot.packed.size();
    slot.packing.reset();
  }
}

// The pages the sink packs are waited for, as it stays with the store
// moved from; the store moved to takes their bytes as it settles.
PageStore::PageStore(PageStore&& o) noexcept
    : slots_((o.AwaitPacking(), std::move(o.slots_))),
      shared_(std::move(o.shared_)),
      packed_bytes_(o.packed_bytes_),
      budget_(o.budget_),
      pending_(std::move(o.pending_)) {}

// A store that takes other pages keeps its sink, which forgets what it was
// handed: none of these pages went through it.
PageStore& PageStore::operator=(const PageStore& o) {
  if (this == &o) return *this;
  PageStore copy(o);
  return *this = std::move(copy);
}

PageStore& PageStore::operator=(PageStore&& o) noexcept {
  if (this == &o) return *this;
  o.AwaitPacking();
  if (sink_) sink_->Cleared();
  slots_ = std::move(o.slots_);
  shared_ = std::move(o.shared_);
  packed_bytes_ = o.packed_bytes_;
  budget_ = o.budget_;
  pending_ = std::move(o.pending_);
  return *this;
}

void PageStore::HandOver(std::shared_ptr<PageSink> sink) {
  // The pages handed to the sink that goes are packed before it goes.
  if (sink_ != sink) AwaitPacking();
  sink_ = std::move(sink);
}

const std::string& PageStore::Packed(const Packing& packing) const {
  if (!packing.done.load(std::memory_order_acquire) && sink_) sink_->Drain();
  if (!packing.done.load(std::memory_order_acquire))
    throw std::runtime_error("a page of the document was handed over and never packed");
  if (packing.error) std::rethrow_exception(packing.error);
  return packing.bytes;
}

void PageStore::AwaitPacking() const {
  if (!sink_) return;
  for (const Slot& slot : slots_) {
    if (slot.packing && !slot.packing->done.load(std::memory_order_acquire)) {
      sink_->Drain();
      return;
    }
  }
}

void PageStore::Keep(Slot& slot, std::string bytes) {
  if (packed_bytes_ + bytes.size() > budget_) {
    if (const int64_t at = shared_->Spill(bytes); at >= 0) {
      slot.spilled = at;
      slot.spilled_size = uint32_t(bytes.size());
      return;
    }
  }
  packed_bytes_ += bytes.size();
  bytes.shrink_to_fit();
  slot.packed = std::move(bytes);
}

void PageStore::Settle() {
  while (!pending_.empty()) {
    const size_t i = pending_.front();
    Slot* slot = i < slots_.size() ? &slots_[i] : nullptr;
    if (slot && slot->packing) {
      if (!slot->packing->done.load(std::memory_order_acquire)) return;
      std::shared_ptr<Packing> packing = std::move(slot->packing);
      if (packing->error) std::rethrow_exception(packing->error);
      Keep(*slot, std::move(packing->bytes));
    }
    pending_.pop_front();
  }
}

PageStore::~PageStore() = default;

void PageStore::clear() {
  if (sink_) sink_->Cleared();
  slots_.clear();
  pending_.clear();
  packed_bytes_ = 0;
  shared_ = std::make_shared<Shared>();
}

void PageStore::push_back(Page page) {
  Slot slot;
  slot.page = std::move(page);
  if (sink_ && slot.page.items.empty() && slot.page.items.capacity() == 0)
    slot.page.items = sink_->Spare();
  slots_.push_back(std::move(slot));
}

PageStore& PageStore::operator=(std::vector<Page> pages) {
  clear();
  for (Page& p : pages) push_back(std::move(p));
  return *this;
}

void PageStore::resize(size_t n) {
  while (slots_.size() > n) {
    if (sink_) sink_->Changed(slots_.size() - 1);
    packed_bytes_ -= slots_.back().packed.size() + slots_.back().added.size();
    slots_.pop_back();
  }
  while (slots_.size() < n) push_back(Page{});
}

Page& PageStore::Unsealed(size_t i) {
  Slot& slot = slots_.at(i);
  if (slot.sealed) {
    // A page already read is taken as it was read, not unpacked again; a
    // reopened page's view is never kept, as its additions may change.
    std::vector<DisplayItem> items = !slot.reopened && slot.view && slot.view.use_count() == 1
                                         ? std::move(slot.view->items)
                                         : Unpack(slot);
    if (sink_) sink_->Changed(i);
    if (slot.reopened) std::move(slot.page.items.begin(), slot.page.items.end(), std::back_inserter(items));
    slot.page.items = std::move(items);
    packed_bytes_ -= slot.packed.size() + slot.added.size();
    std::string().swap(slot.packed);
    std::string().swap(slot.added);
    slot.packing.reset();
    slot.spilled = -1;
    slot.sealed = false;
    slot.reopened = false;
  }
  slot.view.reset();
  return slot.page;
}

Page& PageStore::Reopen(size_t i) {
  Slot& slot = slots_.at(i);
  if (slot.sealed && !slot.reopened) {
    slot.reopened = true;
    slot.view.reset();
  }
  return slot.page;
}

const Page& PageStore::operator[](size_t i) const {
  const Slot& slot = slots_.at(i);
  if (!slot.sealed) return slot.page;
  if (!slot.view || slot.reopened) slot.view = std::make_shared<Page>(Read(i));
  return *slot.view;
}

Page PageStore::Read(size_t i) const {
  const Slot& slot = slots_.at(i);
  if (!slot.sealed) return slot.page;
  Page page{slot.page.width, slot.page.height, Unpack(slot)};
  if (slot.reopened) page.items.insert(page.items.end(), slot.page.items.begin(), slot.page.items.end());
  return page;
}

std::vector<DisplayItem> PageStore::Unpack(const Slot& slot) const {
  std::vector<DisplayItem> items =
      slot.packing        ? UnpackItems(Packed(*slot.packing), *shared_)
      : slot.spilled >= 0 ? UnpackItems(shared_->Load(slot.spilled, slot.spilled_size), *shared_)
                          : UnpackItems(slot.packed, *shared_);
  // Each batch added later unpacks alone, as it was packed.
  Reader r(slot.added.data(), slot.added.size());
  while (!r.AtEnd()) {
    const std::string batch = r.Text(size_t(r.Varint()));
    std::vector<DisplayItem> more = UnpackItems(batch, *shared_);
    std::move(more.begin(), more.end(), std::back_inserter(items));
  }
  return items;
}

void PageStore::Seal(size_t i) {
  Slot& slot = slots_.at(i);
  if (slot.reopened) {
    if (!slot.page.items.empty()) {
      std::string bytes;
      Pack(slot.page.items, *shared_, bytes);
      const size_t before = slot.added.size();
      Writer size(slot.added);
      size.Varint(bytes.size());
      size.Flush();
      slot.added += bytes;
      packed_bytes_ += slot.added.size() - before;
      if (sink_) sink_->Added(i, std::move(slot.page.items));
    }
    std::vector<DisplayItem>().swap(slot.page.items);
    slot.reopened = false;
    slot.view.reset();
    return;
  }
  if (slot.sealed) return;
  slot.view.reset();
  slot.sealed = true;
  if (sink_) {
    // The sink packs the page where it paints it; its bytes are taken in
    // as they are done.
    slot.packing = std::make_shared<Packing>();
    pending_.push_back(i);
    sink_->Finished(i, slot.page.width, slot.page.height, std::move(slot.page.items),
                    Packer(shared_, slot.packing));
    std::vector<DisplayItem>().swap(slot.page.items);
    Settle();
    return;
  }
  std::string bytes;
  Pack(slot.page.items, *shared_, bytes);
  std::vector<DisplayItem>().swap(slot.page.items);
  Keep(slot, std::move(bytes));
}

size_t PageStore::SpilledBytes() const {
  size_t n = 0;
  for (const Slot& s : slots_)
    if (s.sealed && s.spilled >= 0) n += s.spilled_size;
  return n;
}

}  // namespace orv::render

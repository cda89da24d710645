// The display list: what a page of the print surface holds, as plain data.
//
// The surface lays text, tables, lines and pictures out and appends the
// results here; the renderers only paint these items, and tests read them.
// All positions are twips from the top left corner of the page.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <variant>
#include <vector>

#include "platform/render/document_record.h"
#include "platform/render/twips.h"

namespace orv::render {

struct Rgb {
  uint8_t r = 0, g = 0, b = 0;
  friend bool operator==(Rgb, Rgb) = default;
};

struct Box {
  Twips x, y, width, height;
  friend bool operator==(const Box&, const Box&) = default;
};

// A font file in the document's font table. Text runs refer to it by index so
// that a run stays small; the renderer loads each file once.
struct FontFace {
  std::string family;  // the name the report asked for, e.g. "Tahoma"
  std::string file;    // the TrueType file that stands for it
  bool bold = false;
  bool italic = false;
  // The file has no bold (italic) design of its own, so the renderer
  // emboldens (slants) the regular one.
  bool synthetic_bold = false;
  bool synthetic_italic = false;
};

// One run of text on one line in one font. `x` and `top` are the reference
// point: the left end of the run and the top of its line; `baseline` is the
// top plus the font's ascent. An angle rotates the run about its reference
// point, counter-clockwise in tenths of a degree.
struct TextRun {
  std::string text;  // UTF-8, without line breaks or tabs
  uint16_t font = 0;
  float size_pt = 10;
  Rgb color;
  bool underline = false;
  int16_t angle = 0;
  Twips x, top, baseline;
  Twips width;              // advance width as measured by the layout
  std::optional<Box> clip;  // text outside this box is not painted
};

struct Line {
  Twips x1, y1, x2, y2;
  Twips width;  // 0 is the thinnest line the device can draw
  Rgb color;
  bool dotted = false;
};

struct FilledRect {
  Box box;
  Rgb color;
};

// A decoded picture: rows of 32-bit premultiplied ARGB pixels, native byte
// order, stride = width * 4.
struct Image {
  int width = 0;
  int height = 0;
  std::vector<uint32_t> pixels;
};

struct Picture {
  Box box;  // the picture is scaled to fill it
  std::shared_ptr<const Image> image;
};

// A part of the page that the layout set smaller than the report asked, so
// that it stays inside the margins: a table wider than the body, scaled as a
// whole. `scale` is the factor applied to its widths and type sizes. It
// paints nothing; tests and checks read it.
struct ScaledBlock {
  Box box;
  double scale = 1;
};

using DisplayItem = std::variant<TextRun, Line, FilledRect, Picture, ScaledBlock>;

struct Page {
  Twips width, height;
  std::vector<DisplayItem> items;
};

// The top of an item on its page.
inline Twips TopOf(const DisplayItem& item) {
  return std::visit(
      [](const auto& x) {
        using T = std::decay_t<decltype(x)>;
        if constexpr (std::is_same_v<T, TextRun>) {
          return x.top;
        } else if constexpr (std::is_same_v<T, Line>) {
          return x.y1 < x.y2 ? x.y1 : x.y2;
        } else {
          return x.box.y;
        }
      },
      item);
}

// Moves an item `dy` down its page (up for a negative `dy`).
inline void Shift(DisplayItem& item, Twips dy) {
  std::visit(
      [&](auto& x) {
        using T = std::decay_t<decltype(x)>;
        if constexpr (std::is_same_v<T, TextRun>) {
          x.top += dy;
          x.baseline += dy;
          if (x.clip) x.clip->y += dy;
        } else if constexpr (std::is_same_v<T, Line>) {
          x.y1 += dy;
          x.y2 += dy;
        } else {
          x.box.y += dy;
        }
      },
      item);
}

class PageSink;

// The pages of a document. The page being written is held as plain items;
// a finished page is packed (Seal) into a few bytes an item: its text
// inline, text and line styles and pictures as indices into tables that the
// pages share, every position kept bit for bit, so that unpacking gives the
// very items that were packed. Past a budget of memory, packed pages go to a
// temporary file that lives as long as the store. A long list (thousands of
// pages) then costs little until it is written, and any page can still be
// read or reopened: "Page n of N" and the footers stamped after the last
// page reopen every page.
class PageStore {
 public:
  PageStore();
  // A copy (or a store moved from) has the pages and not the sink: what was
  // handed over belongs to the store it was handed over from.
  PageStore(const PageStore& o);
  PageStore(PageStore&& o) noexcept;
  PageStore& operator=(const PageStore& o);
  PageStore& operator=(PageStore&& o) noexcept;
  ~PageStore();

  // Hands every page to `sink` as it is finished from now on (none:
  // stops), to be packed there. Pages finished before are not handed over.
  void HandOver(std::shared_ptr<PageSink> sink);
  PageSink* Sink() const { return sink_.get(); }

  size_t size() const { return slots_.size(); }
  bool empty() const { return slots_.empty(); }
  // Drops every page, and the temporary file once no copy of the store
  // needs it.
  void clear();
  void push_back(Page page);
  // The document made of these pages, none packed (tests build documents
  // by hand).
  PageStore& operator=(std::vector<Page> pages);
  void assign(size_t n, const Page& page) { *this = std::vector<Page>(n, page); }
  // Drops the pages from `n` on, or adds empty ones up to `n`.
  void resize(size_t n);

  // Page `i` for writing, unpacked where it stands if it was packed. The
  // surface writes only the page it is on and a page an overlay reopens,
  // and packs each again when it is done with it.
  Page& operator[](size_t i) {
    // The page being written, the surface's every call: as it stands.
    Slot& slot = slots_.at(i);
    if (!slot.sealed && !slot.view) return slot.page;
    return Unsealed(i);
  }
  // Page `i` for reading. A packed page is unpacked into a copy the store
  // keeps until that page is written or the store cleared, so that the
  // reference stays good as it did when pages were plain items; code that
  // reads every page once (the renderers) takes Read instead.
  const Page& operator[](size_t i) const;
  const Page& at(size_t i) const { return (*this)[i]; }
  // A copy of page `i`, unpacked, that the store does not keep.
  Page Read(size_t i) const;

  // Page `i` for adding items at its end, without unpacking what it holds:
  // the page handed back holds only the items added since, and Seal packs
  // them after the rest. Readers (operator[] const, Read) see the whole
  // page all the while. A page that is not packed is handed back whole.
  // The footers stamped on every page of a long list once its page count
  // is known take this, so that each page is not unpacked and packed again
  // for a line of text.
  Page& Reopen(size_t i);

  // Packs page `i` (a packed page stays as it is; a reopened one packs what
  // was added to it).
  void Seal(size_t i);
  bool Sealed(size_t i) const { return slots_.at(i).sealed && !slots_.at(i).reopened; }

  // Packed pages held in memory beyond this many bytes go to the temporary
  // file; 0 sends every packed page there.
  void MemoryBudget(size_t bytes) { budget_ = bytes; }
  // The bytes packed pages take in memory and in the temporary file.
  size_t PackedBytes() const { return packed_bytes_; }
  size_t SpilledBytes() const;

  // The pages in order, for reading (as operator[] const).
  class const_iterator {
   public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = Page;
    using difference_type = std::ptrdiff_t;
    using pointer = const Page*;
    using reference = const Page&;
    const_iterator() = default;
    const_iterator(const PageStore* store, size_t i) : store_(store), i_(i) {}
    const Page& operator*() const { return (*store_)[i_]; }
    const Page* operator->() const { return &(*store_)[i_]; }
    const_iterator& operator++() {
      ++i_;
      return *this;
    }
    const_iterator operator++(int) {
      const_iterator was = *this;
      ++i_;
      return was;
    }
    bool operator==(const const_iterator& o) const { return i_ == o.i_; }

   private:
    const PageStore* store_ = nullptr;
    size_t i_ = 0;
  };
  const_iterator begin() const { return {this, 0}; }
  const_iterator end() const { return {this, slots_.size()}; }

  struct Shared;   // the style and picture tables and the temporary file
  struct Packing;  // a page's packed bytes, made where its sink works

  // Packs the items of one page handed to a sink into its store's form
  // (PageSink::Finished). The tables it adds styles to are the store's,
  // guarded there, so it may run on any thread.
  class Packer {
   public:
    Packer() = default;
    explicit operator bool() const { return into_ != nullptr; }
    void operator()(const std::vector<DisplayItem>& items) const;

   private:
    friend class PageStore;
    Packer(std::shared_ptr<Shared> shared, std::shared_ptr<Packing> into)
        : shared_(std::move(shared)), into_(std::move(into)) {}
    std::shared_ptr<Shared> shared_;
    std::shared_ptr<Packing> into_;
  };

 private:
  struct Slot {
    Page page;             // its size always; its items while not packed
    bool sealed = false;
    std::string packed;    // the packed items, when held in memory
    int64_t spilled = -1;  // else their offset in the temporary file
    uint32_t spilled_size = 0;
    // Items added to the packed page since it was first packed (Reopen),
    // each batch packed on its own and preceded by its size; always held in
    // memory, as they are a few bytes a page.
    std::string added;
    bool reopened = false;  // page.items holds what is being added
    // Handed to the sink to be packed, and not yet taken into `packed`
    // (Settle); its bytes, once done, are the page's.
    std::shared_ptr<Packing> packing;
    // A packed page as it was last read, kept for the references handed
    // out; its own allocation, so that they outlive a move of the slots.
    mutable std::shared_ptr<Page> view;
  };
  std::vector<DisplayItem> Unpack(const Slot& slot) const;
  // operator[] for a page that is packed or was read packed.
  Page& Unsealed(size_t i);
  // The packed bytes of a page handed to the sink, once packed: waits for
  // the sink to pack every page handed over when this one is not yet.
  const std::string& Packed(const Packing& packing) const;
  // Waits until every page handed to the sink is packed.
  void AwaitPacking() const;
  // Keeps `bytes` as the packed items of `slot`: in memory, or in the
  // temporary file past the budget.
  void Keep(Slot& slot, std::string bytes);
  // Takes the pages the sink has packed, oldest first, into their slots.
  void Settle();

  std::vector<Slot> slots_;
  // Shared with copies of the store: the tables and the file only grow, so
  // what one copy packed the other still reads.
  std::shared_ptr<Shared> shared_;
  size_t packed_bytes_ = 0;
  size_t budget_ = size_t(16) << 20;
  std::shared_ptr<PageSink> sink_;
  std::deque<size_t> pending_;  // pages handed to the sink, in order, to Settle
};

// Told of each page of a store as it is finished, so that work on the
// finished pages (painting them for a PDF file) can go on while the rest of
// the document is laid out. Called on the thread that packs the pages, in
// the order things happen to them.
class PageSink {
 public:
  virtual ~PageSink() = default;
  // Page `i`, `width` by `height`, is finished holding `items`, which the
  // sink keeps. The sink calls `pack` with them once, on whichever thread
  // it does its work, before or after its own use of them: that makes the
  // store's packed copy, so the packing leaves the thread that lays pages
  // out. The store waits for it (Drain) only where it reads the page.
  virtual void Finished(size_t i, Twips width, Twips height, std::vector<DisplayItem> items,
                        PageStore::Packer pack) = 0;
  // `items` were added at the end of page `i` after it was finished (an
  // overlay reopened it) and are packed now.
  virtual void Added(size_t i, std::vector<DisplayItem> items) = 0;
  // Page `i` is open for writing again, or gone: what was handed over for
  // it no longer holds. A page written again is handed over again when it
  // is packed.
  virtual void Changed(size_t i) = 0;
  // Every page is gone.
  virtual void Cleared() = 0;
  // An empty list with room for a page's items, for the page the store
  // opens next; called on the thread that lays pages out. A sink that is
  // done with the items of a page it was handed gives their list back here,
  // the items freed on this thread, where they were made, rather than on
  // the sink's, and the next page's list not allocated afresh. The default
  // has none to give.
  virtual std::vector<DisplayItem> Spare() { return {}; }
  // Returns once every page handed over has been packed (its Packer
  // called), doing on this thread what waits to be done.
  virtual void Drain() = 0;
};

struct Document {
  std::string name;
  std::vector<FontFace> fonts;
  PageStore pages;
  // Beside the pages (document_record.h): the tables' cells in the order
  // they were laid out, the letters of a run of statements, and the
  // document's identity.
  std::vector<TableCells> tables;
  std::vector<Letter> letters;
  DocumentIdentity identity;
};

}  // namespace orv::render

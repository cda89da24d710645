#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "platform/render/display_list.h"

namespace orv::render {
namespace {

constexpr size_t kInMemory = size_t(1) << 30;
constexpr size_t kSpilled = 0;

bool SameBits(Twips a, Twips b) {
  const double x = a.value(), y = b.value();
  return std::memcmp(&x, &y, sizeof x) == 0;
}

bool SameBox(const Box& a, const Box& b) {
  return SameBits(a.x, b.x) && SameBits(a.y, b.y) && SameBits(a.width, b.width) &&
         SameBits(a.height, b.height);
}

// Whether two items are the same to the last bit of every coordinate (0 and
// -0 differ here), and a picture the same picture, not an equal one.
bool SameItem(const DisplayItem& a, const DisplayItem& b) {
  if (a.index() != b.index()) return false;
  if (const auto* t = std::get_if<TextRun>(&a)) {
    const auto& u = std::get<TextRun>(b);
    return t->text == u.text && t->font == u.font && t->size_pt == u.size_pt && t->color == u.color &&
           t->underline == u.underline && t->angle == u.angle && SameBits(t->x, u.x) &&
           SameBits(t->top, u.top) && SameBits(t->baseline, u.baseline) && SameBits(t->width, u.width) &&
           t->clip.has_value() == u.clip.has_value() && (!t->clip || SameBox(*t->clip, *u.clip));
  }
  if (const auto* l = std::get_if<Line>(&a)) {
    const auto& m = std::get<Line>(b);
    return SameBits(l->x1, m.x1) && SameBits(l->y1, m.y1) && SameBits(l->x2, m.x2) &&
           SameBits(l->y2, m.y2) && SameBits(l->width, m.width) && l->color == m.color &&
           l->dotted == m.dotted;
  }
  if (const auto* f = std::get_if<FilledRect>(&a)) {
    const auto& g = std::get<FilledRect>(b);
    return SameBox(f->box, g.box) && f->color == g.color;
  }
  if (const auto* p = std::get_if<Picture>(&a)) {
    const auto& q = std::get<Picture>(b);
    return SameBox(p->box, q.box) && p->image == q.image;
  }
  const auto& s = std::get<ScaledBlock>(a);
  const auto& z = std::get<ScaledBlock>(b);
  return SameBox(s.box, z.box) && s.scale == z.scale;
}

void ExpectSameItems(const std::vector<DisplayItem>& want, const std::vector<DisplayItem>& got,
                     const std::string& name) {
  ASSERT_EQ(got.size(), want.size()) << name;
  for (size_t i = 0; i < want.size(); ++i) EXPECT_TRUE(SameItem(want[i], got[i])) << name << ": item " << i;
}

TextRun Cell(std::string text, double x, double top, double width, double ascent = 190.125) {
  TextRun r;
  r.text = std::move(text);
  r.size_pt = 10;
  r.x = Twips(x);
  r.top = Twips(top);
  r.baseline = Twips(top + ascent);
  r.width = Twips(width);
  return r;
}

// A page of a long list: rows of cells at the same columns, each row a
// line lower, with a rule under each row. Positions are the fractions
// measured text gives.
std::vector<DisplayItem> TablePage(int rows, int cols, size_t* text_bytes = nullptr) {
  std::vector<DisplayItem> items;
  for (int r = 0; r < rows; ++r) {
    const double top = 1440.3 + r * 240.7;
    for (int c = 0; c < cols; ++c) {
      const std::string text = c == 0 ? "Patient " + std::to_string(1000 + r) : std::to_string(r * c) + ".25";
      if (text_bytes) *text_bytes += text.size();
      items.emplace_back(Cell(text, 1500.1 + c * 1713.37 + (r % 3) * 0.11, top, 600.3 + r + c * 0.7));
    }
    items.emplace_back(Line{Twips(1440), Twips(top + 240.7), Twips(10800.5), Twips(top + 240.7), Twips(0), {}, false});
  }
  return items;
}

TEST(PageStore, PackedPagesReadBackBitForBit) {
  auto logo = std::make_shared<Image>();
  logo->width = 1;
  logo->height = 1;
  logo->pixels = {0xFF102030u};
  TextRun clipped = Cell("Upside down", 7000.5, 3000.25, 1234.5);
  clipped.clip = Box{Twips(-4000.5), Twips(-100), Twips(4000.5), Twips(1440.125)};
  clipped.angle = 1800;
  clipped.underline = true;
  clipped.color = {200, 10, 30};
  clipped.font = 3;
  clipped.size_pt = 7.5f;
  TextRun wide = Cell(std::string(300, 'w') + "\xC3\xA9", 0.1, 1e300, 1e-300, 0.3);
  TextRun odd = Cell("", std::numeric_limits<double>::quiet_NaN(), -0.0, 32768, -190);
  TextRun limits = Cell("Total", -32768, 32767, 16777217, 1e10);

  struct Case {
    const char* name;
    std::vector<DisplayItem> items;
  };
  const std::vector<Case> cases = {
      {"an empty page", {}},
      {"a table's rows and rules", TablePage(12, 6)},
      {"coordinates past every short form", {wide, odd, limits, wide}},
      {"clipped, turned, underlined and coloured text", {Cell("Plain", 1440, 1440, 500), clipped, clipped}},
      {"rules, fills, pictures and a scaled block",
       {Line{Twips(2000), Twips(1000.5), Twips(2000), Twips(9000.25), Twips(10), {1, 2, 3}, true},
        Line{Twips(2500), Twips(1000.5), Twips(2500), Twips(9000.25), Twips(10), {1, 2, 3}, true},
        Line{Twips(1440), Twips(700), Twips(9999.9), Twips(700), Twips(0), {}, false},
        Line{Twips(1440), Twips(700), Twips(9999.9), Twips(800.5), Twips(0), {}, false},
        FilledRect{{Twips(1440), Twips(1300), Twips(4000.75), Twips(400)}, {166, 175, 185}},
        FilledRect{{Twips(1440), Twips(1700), Twips(4000.75), Twips(400)}, {166, 175, 185}},
        Picture{{Twips(100), Twips(200), Twips(1440), Twips(1440)}, logo},
        Picture{{Twips(100), Twips(2000), Twips(1440), Twips(1440)}, logo},
        ScaledBlock{{Twips(1440), Twips(3000), Twips(9360), Twips(2000.5)}, 0.8125}}},
  };
  for (const size_t budget : {kInMemory, kSpilled}) {
    for (const Case& c : cases) {
      const std::string name = std::string(c.name) + (budget == kSpilled ? ", spilled" : ", in memory");
      PageStore store;
      store.MemoryBudget(budget);
      store.push_back(Page{Twips(12240.5), Twips(15840), c.items});
      store.push_back(Page{Twips(15840), Twips(12240), c.items});
      store.Seal(0);
      store.Seal(1);
      EXPECT_TRUE(store.Sealed(0) && store.Sealed(1)) << name;
      if (!c.items.empty()) {
        EXPECT_EQ(store.SpilledBytes() > 0, budget == kSpilled) << name;
      }
      const Page first = store.Read(0);
      EXPECT_TRUE(SameBits(first.width, Twips(12240.5)) && SameBits(first.height, Twips(15840))) << name;
      ExpectSameItems(c.items, first.items, name);
      ExpectSameItems(c.items, std::as_const(store)[1].items, name + ", read in place");
      EXPECT_EQ(std::as_const(store)[1].width, Twips(15840)) << name;
    }
  }
}

// Footers are added to packed pages through Reopen, which keeps what the
// page holds packed and packs the additions after it: every reader sees
// the page whole, in order, bit for bit, whether its body was spilled or
// not, and writing the page in place afterwards still gives all of it.
TEST(PageStore, ItemsAddedToAReopenedPageFollowItsPackedItems) {
  for (const size_t budget : {kInMemory, kSpilled}) {
    const std::string how = budget == kSpilled ? "spilled" : "in memory";
    PageStore store;
    store.MemoryBudget(budget);
    const auto body = TablePage(40, 5);
    store.push_back(Page{Twips(12240), Twips(15840), body});
    store.Seal(0);
    const size_t packed = store.PackedBytes() + store.SpilledBytes();

    const TextRun date = Cell("Nov/20/2026", 1440, 15000.5, 700.25);
    const TextRun stamp = Cell("Page 1 of 1", 9000.75, 15000.5, 800.5);
    Page& adding = store.Reopen(0);
    EXPECT_TRUE(adding.items.empty()) << how << ": a reopened page holds only what is added";
    EXPECT_FALSE(store.Sealed(0)) << how;
    adding.items.emplace_back(date);
    auto want = body;
    want.emplace_back(date);
    ExpectSameItems(want, store.Read(0).items, how + ", read while reopened");
    ExpectSameItems(want, std::as_const(store)[0].items, how + ", read in place while reopened");
    store.Reopen(0).items.emplace_back(stamp);
    store.Seal(0);
    EXPECT_TRUE(store.Sealed(0)) << how;
    want.emplace_back(stamp);
    ExpectSameItems(want, store.Read(0).items, how + ", sealed again");
    const size_t grew = store.PackedBytes() + store.SpilledBytes() - packed;
    EXPECT_GT(grew, 0u) << how;
    EXPECT_LT(grew, 100u) << how << ": the additions alone are packed, not the page again";

    // A second pass adds a second batch; sealing with nothing added changes nothing.
    store.Reopen(0).items.emplace_back(Cell("Copy", 500, 500, 300));
    store.Seal(0);
    store.Reopen(0);
    store.Seal(0);
    want.emplace_back(Cell("Copy", 500, 500, 300));
    ExpectSameItems(want, std::as_const(store)[0].items, how + ", two batches");
    // Written in place, the page is all of it, unpacked.
    store[0].items.pop_back();
    want.pop_back();
    EXPECT_FALSE(store.Sealed(0)) << how;
    store.Seal(0);
    ExpectSameItems(want, store.Read(0).items, how + ", written in place and sealed");
    // A page that was never packed is handed back whole.
    store.push_back(Page{Twips(12240), Twips(15840), TablePage(2, 2)});
    EXPECT_EQ(store.Reopen(1).items.size(), TablePage(2, 2).size()) << how;
  }
}

TEST(PageStore, ReadPagesOutliveMorePagesAndCopiesOutliveTheOriginal) {
  PageStore store;
  store.MemoryBudget(kSpilled);
  const auto body = TablePage(30, 4);
  store.push_back(Page{Twips(12240), Twips(15840), body});
  store.Seal(0);
  const Page& first = std::as_const(store)[0];
  // Enough pages to move the slots elsewhere in memory.
  for (int p = 1; p < 200; ++p) {
    store.push_back(Page{Twips(12240), Twips(15840), TablePage(2, 2)});
    store.Seal(size_t(p));
  }
  ExpectSameItems(body, first.items, "a page read before 199 more were added");

  PageStore copy = store;
  store.clear();
  EXPECT_TRUE(store.empty());
  ASSERT_EQ(copy.size(), 200u);
  ExpectSameItems(body, copy.Read(0).items, "the copy's first page, spilled");
  ExpectSameItems(TablePage(2, 2), copy.Read(199).items, "the copy's last page, spilled");
  // The copy keeps writing where the original left the file.
  copy[5].items.emplace_back(Cell("Stamp", 1, 2, 3));
  copy.Seal(5);
  EXPECT_EQ(copy.Read(5).items.size(), TablePage(2, 2).size() + 1);
  ExpectSameItems(TablePage(2, 2), copy.Read(6).items, "the page after the one written again");
}

}  // namespace
}  // namespace orv::render

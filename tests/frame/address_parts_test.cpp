#include <gtest/gtest.h>

#include "frame/address_parts.h"

namespace {

struct AddressCase {
  const char* name;
  std::string address;
  const char* parts[5];  // Street1, Street2, City, Prov, Postal
};

TEST(ReturnAddressPart, SplitsOneAndTwoStreetLinesAndFailsQuietly) {
  const AddressCase cases[] = {
      {"one street line", "12 Main St\r\nOttawa, ON\r\nK1A 0B1",
       {"12 Main St", "", "Ottawa", "ON", "K1A 0B1"}},
      {"two street lines", "12 Main St\r\nSuite 300\r\nOttawa, ON\r\nK1A 0B1",
       {"12 Main St", "Suite 300", "Ottawa", "ON", "K1A 0B1"}},
      // A comma in the first street line does not make a second line.
      {"comma in street", "12 Main St, Unit 4\r\nHull, QC\r\nJ8X 1A1",
       {"12 Main St, Unit 4", "", "Hull", "QC", "J8X 1A1"}},
      // Blanks around the city and the second street are trimmed; the
      // province is cut by position after ", ".
      {"padded pieces", "5 Elm\r\n  Rear  \r\n  Kanata , ON\r\nK2K 1X1",
       {"5 Elm", "Rear", "Kanata", "ON", "K2K 1X1"}},
      {"no line end", "12 Main St Ottawa ON K1A 0B1", {"", "", "", "", ""}},
      {"no comma", "12 Main St\r\nOttawa ON\r\nK1A 0B1", {"", "", "", "", ""}},
      {"empty", "", {"", "", "", "", ""}},
  };
  for (const auto& c : cases) {
    for (int part = 0; part < 5; ++part) {
      EXPECT_EQ(orv::ReturnAddressPart(c.address, part), c.parts[part])
          << c.name << ", part " << part;
    }
    EXPECT_EQ(orv::ReturnAddressPart(c.address, 5), "") << c.name;
  }
}

}  // namespace

#include "serve/zip.h"

#include <cstdint>
#include <stdexcept>

#include "platform/practice/png.h"

namespace orv::app::serve {

namespace {

void Put16(std::string& out, uint32_t v) {
  out += static_cast<char>(v & 0xFF);
  out += static_cast<char>((v >> 8) & 0xFF);
}
void Put32(std::string& out, uint32_t v) {
  Put16(out, v & 0xFFFF);
  Put16(out, v >> 16);
}

}  // namespace

std::string StoredZip(const std::vector<std::pair<std::string, std::string>>& files) {
  // The layout of the format's note (APPNOTE): a local header and the bytes
  // of each file, then the central directory naming them all, then its end
  // record. Method 0 (stored); flag bit 11 says the names are UTF-8.
  std::string out, central;
  for (const auto& [name, bytes] : files) {
    if (bytes.size() >= 0xFFFFFFFFu || out.size() >= 0xFFFFFFFFu || files.size() >= 0xFFFF)
      throw std::length_error("the statements are too large for one zip; split them further");
    uint32_t crc = practice::Crc32(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()),
             size = static_cast<uint32_t>(bytes.size());
    uint32_t offset = static_cast<uint32_t>(out.size());
    Put32(out, 0x04034b50);
    Put16(out, 20);      // version needed
    Put16(out, 0x0800);  // UTF-8 names
    Put16(out, 0);       // stored
    Put16(out, 0);       // time
    Put16(out, 0x21);    // date: 1980-01-01
    Put32(out, crc);
    Put32(out, size);
    Put32(out, size);
    Put16(out, static_cast<uint32_t>(name.size()));
    Put16(out, 0);
    out += name;
    out += bytes;

    Put32(central, 0x02014b50);
    Put16(central, 20);  // made by
    Put16(central, 20);
    Put16(central, 0x0800);
    Put16(central, 0);
    Put16(central, 0);
    Put16(central, 0x21);
    Put32(central, crc);
    Put32(central, size);
    Put32(central, size);
    Put16(central, static_cast<uint32_t>(name.size()));
    Put16(central, 0);  // extra
    Put16(central, 0);  // comment
    Put16(central, 0);  // disk
    Put16(central, 0);  // internal attributes
    Put32(central, 0);  // external attributes
    Put32(central, offset);
    central += name;
  }
  uint32_t directory_at = static_cast<uint32_t>(out.size());
  out += central;
  Put32(out, 0x06054b50);
  Put16(out, 0);
  Put16(out, 0);
  Put16(out, static_cast<uint32_t>(files.size()));
  Put16(out, static_cast<uint32_t>(files.size()));
  Put32(out, static_cast<uint32_t>(central.size()));
  Put32(out, directory_at);
  Put16(out, 0);
  return out;
}

}  // namespace orv::app::serve

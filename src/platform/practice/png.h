// A minimal PNG writer for the demo offices' logos: 8-bit RGB, no filter,
// the image data in stored (uncompressed) deflate blocks, so no zlib is
// needed. Enough for a small picture that any viewer opens.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace orv::practice {

// rgb holds width * height * 3 bytes, row by row from the top.
std::vector<uint8_t> EncodePng(int width, int height, const std::vector<uint8_t>& rgb);

// CRC-32 (ISO 3309, the one PNG chunks carry) and Adler-32 (zlib's check).
uint32_t Crc32(const uint8_t* data, size_t size);
uint32_t Adler32(const uint8_t* data, size_t size);

}  // namespace orv::practice

// A temporary file for bytes put aside until they are wanted again: packed
// pages past the page store's memory budget, page contents painted ahead
// of their PDF file. Made when first needed and unlinked at once, so that
// nothing is left behind, whatever ends the process.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace orv::render {

class SpillFile {
 public:
  SpillFile() = default;
  ~SpillFile();
  SpillFile(const SpillFile&) = delete;
  SpillFile& operator=(const SpillFile&) = delete;

  // Appends `bytes` and returns where they begin; -1 when there is no file
  // to be had (a full or read-only temporary folder): the caller keeps
  // them in memory then.
  int64_t Append(std::string_view bytes);
  // The `size` bytes at `at`; raises std::runtime_error when they cannot
  // be read back.
  std::string Read(int64_t at, size_t size) const;

 private:
  int fd_ = -1;
  int64_t end_ = 0;
  bool failed_ = false;
};

}  // namespace orv::render

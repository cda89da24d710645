// A temporary file for bytes put aside until they are wanted again: packed
// pages past the page store's memory budget, page contents painted ahead
// of their PDF file. Made when first needed and unlinked at once, so that
// nothing is left behind, whatever ends the process.
#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>

namespace orv::render {

class SpillFile {
 public:
  // Bytes appended gather in memory and go to the file `block` bytes at a
  // time (a long list puts aside thousands of pages of a few kilobytes
  // each, and a write per page was a system call per page).
  explicit SpillFile(size_t block = kBlock) : block_(block) {}
  ~SpillFile();
  SpillFile(const SpillFile&) = delete;
  SpillFile& operator=(const SpillFile&) = delete;

  // Appends `bytes` and returns where they begin; -1 when there is no file
  // to be had (a full or read-only temporary folder): the caller keeps
  // them in memory then. Bytes already taken stay readable even when the
  // file fails later: what could not be written stays in memory.
  int64_t Append(std::string_view bytes);
  // The `size` bytes at `at`; raises std::runtime_error when they cannot
  // be read back.
  std::string Read(int64_t at, size_t size) const;

  // The bytes a block gathers by default.
  static constexpr size_t kBlock = size_t(256) << 10;

 private:
  // Writes what gathered; false, keeping it, when the file refuses it.
  bool WritePending();

  const size_t block_;
  mutable std::mutex mu_;  // appends and reads may come from two threads
  int fd_ = -1;
  bool failed_ = false;
  int64_t written_ = 0;  // bytes in the file
  std::string pending_;  // the bytes after them, not yet written
};

}  // namespace orv::render

#include "platform/render/spill_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <stdexcept>

namespace orv::render {

namespace {

// Writes all of `bytes` at `at`; false when the file takes less.
bool WriteAll(int fd, std::string_view bytes, int64_t at) {
  size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t n = ::pwrite(fd, bytes.data() + done, bytes.size() - done, at + int64_t(done));
    if (n <= 0) return false;
    done += size_t(n);
  }
  return true;
}

}  // namespace

SpillFile::~SpillFile() {
  if (fd_ >= 0) ::close(fd_);
}

bool SpillFile::WritePending() {
  if (pending_.empty()) return true;
  if (!WriteAll(fd_, pending_, written_)) return false;
  written_ += int64_t(pending_.size());
  pending_.clear();
  return true;
}

int64_t SpillFile::Append(std::string_view bytes) {
  const std::lock_guard lock(mu_);
  if (fd_ < 0 && !failed_) {
    std::error_code ec;
    std::string path = (std::filesystem::temp_directory_path(ec) / "orvenda-pages-XXXXXX").string();
    fd_ = ec ? -1 : ::mkstemp(path.data());
    if (fd_ >= 0) ::unlink(path.c_str());
    failed_ = fd_ < 0;
    if (fd_ >= 0) pending_.reserve(block_);
  }
  if (failed_) return -1;
  const int64_t at = written_ + int64_t(pending_.size());
  if (pending_.size() + bytes.size() <= block_) {
    pending_.append(bytes);
    // A file that stops taking bytes keeps what gathered in memory, where
    // it is still read; nothing more is put aside.
    if (pending_.size() == block_ && !WritePending()) failed_ = true;
    return at;
  }
  if (!WritePending()) {
    failed_ = true;
    return -1;
  }
  if (bytes.size() < block_) {
    pending_.append(bytes);
    return at;
  }
  // Bytes of a block or more go to the file as they are; when it refuses
  // them, the space is reused by the next bytes.
  if (!WriteAll(fd_, bytes, at)) return -1;
  written_ += int64_t(bytes.size());
  return at;
}

std::string SpillFile::Read(int64_t at, size_t size) const {
  const std::lock_guard lock(mu_);
  const int64_t end = written_ + int64_t(pending_.size());
  if (at < 0 || at > end || int64_t(size) > end - at)
    throw std::runtime_error(
        "a page of the document could not be read back from its temporary file");
  std::string bytes(size, '\0');
  // The part in the file, then the part still in memory.
  const size_t in_file = at < written_ ? std::min(size, size_t(written_ - at)) : 0;
  size_t done = 0;
  while (done < in_file) {
    const ssize_t n = ::pread(fd_, bytes.data() + done, in_file - done, at + int64_t(done));
    if (n <= 0)
      throw std::runtime_error(
          "a page of the document could not be read back from its temporary file");
    done += size_t(n);
  }
  if (in_file < size)
    std::memcpy(bytes.data() + in_file, pending_.data() + (at + int64_t(in_file) - written_),
                size - in_file);
  return bytes;
}

}  // namespace orv::render

#include "platform/render/spill_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <stdexcept>

namespace orv::render {

SpillFile::~SpillFile() {
  if (fd_ >= 0) ::close(fd_);
}

int64_t SpillFile::Append(std::string_view bytes) {
  if (fd_ < 0 && !failed_) {
    std::error_code ec;
    std::string path = (std::filesystem::temp_directory_path(ec) / "orvenda-pages-XXXXXX").string();
    fd_ = ec ? -1 : ::mkstemp(path.data());
    if (fd_ >= 0) ::unlink(path.c_str());
    failed_ = fd_ < 0;
  }
  if (fd_ < 0) return -1;
  size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t n = ::pwrite(fd_, bytes.data() + done, bytes.size() - done, end_ + int64_t(done));
    if (n <= 0) return -1;  // the space written is reused by the next bytes
    done += size_t(n);
  }
  const int64_t at = end_;
  end_ += int64_t(bytes.size());
  return at;
}

std::string SpillFile::Read(int64_t at, size_t size) const {
  std::string bytes(size, '\0');
  size_t done = 0;
  while (done < size) {
    const ssize_t n = ::pread(fd_, bytes.data() + done, size - done, at + int64_t(done));
    if (n <= 0)
      throw std::runtime_error(
          "a page of the document could not be read back from its temporary file");
    done += size_t(n);
  }
  return bytes;
}

}  // namespace orv::render

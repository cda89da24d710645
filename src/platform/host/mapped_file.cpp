#include "platform/host/mapped_file.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace orv::host {

MappedFile::MappedFile(const std::string& path) {
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return;
  opened_ = true;
  struct stat st {};
  if (::fstat(fd, &st) == 0 && st.st_size > 0) {
    void* p = ::mmap(nullptr, size_t(st.st_size), PROT_READ, MAP_PRIVATE, fd, 0);
    if (p != MAP_FAILED) {
      data_ = static_cast<const char*>(p);
      size_ = size_t(st.st_size);
    }
  }
  // The mapping outlives the descriptor.
  ::close(fd);
}

MappedFile::~MappedFile() {
  if (data_) ::munmap(const_cast<char*>(data_), size_);
}

}  // namespace orv::host

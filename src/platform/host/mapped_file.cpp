#include "platform/host/mapped_file.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <map>
#include <mutex>

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

std::shared_ptr<const MappedFile> MappedFile::Shared(const std::string& path) {
  static std::mutex mu;
  static std::map<std::string, std::shared_ptr<const MappedFile>, std::less<>> files;
  std::lock_guard lock(mu);
  if (auto it = files.find(path); it != files.end()) return it->second;
  auto file = std::make_shared<const MappedFile>(path);
  if (file->opened()) files.emplace(path, file);
  return file;
}

MappedFile::~MappedFile() {
  if (data_) ::munmap(const_cast<char*>(data_), size_);
}

}  // namespace orv::host

// A file read by mapping it into memory: the bytes a reader touches are
// paged in from the system's file cache, the rest never are. Font files are
// read this way (a TrueType file is mostly glyph outlines, of which a
// document shows a few dozen), and a mapped file costs no fresh memory of
// the process's own.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace orv::host {

class MappedFile {
 public:
  // Maps the whole file at `path`, read only. A file that cannot be opened
  // leaves opened() false; an empty one, or one that cannot be mapped,
  // opens with no bytes.
  explicit MappedFile(const std::string& path);
  ~MappedFile();
  MappedFile(const MappedFile&) = delete;
  MappedFile& operator=(const MappedFile&) = delete;

  // The mapping of `path` that every reader in the process shares, made
  // at its first use and kept until the process ends: the layout measures
  // a font from its file and the PDF writer embeds the same file, and
  // mapping it again for each, and unmapping it after, cost a short report
  // more than reading the tables. A file that cannot be opened is not kept
  // (opened() false), so one installed later is found. For files that are
  // replaced rather than rewritten in place, as packages replace fonts.
  static std::shared_ptr<const MappedFile> Shared(const std::string& path);

  bool opened() const { return opened_; }
  std::string_view bytes() const { return {data_, size_}; }

 private:
  bool opened_ = false;
  const char* data_ = nullptr;
  size_t size_ = 0;
};

}  // namespace orv::host

#include "platform/render/spill_file.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

namespace orv::render {
namespace {

// Bytes that differ from place to place, so that a read from the wrong
// offset shows.
std::string Bytes(size_t n, int seed) {
  std::string s(n, '\0');
  for (size_t i = 0; i < n; ++i) s[i] = char((i * 31 + size_t(seed) * 7) % 251);
  return s;
}

struct Put {
  int64_t at;
  std::string bytes;
};

// Appends pieces of the given sizes and checks where each begins.
std::vector<Put> AppendAll(SpillFile& file, const std::vector<size_t>& sizes) {
  std::vector<Put> put;
  int64_t end = 0;
  for (size_t i = 0; i < sizes.size(); ++i) {
    Put p{file.Append(Bytes(sizes[i], int(i))), Bytes(sizes[i], int(i))};
    EXPECT_EQ(p.at, end) << "piece " << i;
    end += int64_t(sizes[i]);
    put.push_back(std::move(p));
  }
  return put;
}

// Pieces smaller than a block, ones that fill it to the byte, ones that
// overflow it and ones larger than a block come back as they were put, and
// so does any stretch of the file, whether its bytes were written out or
// still gather in memory, or lie across the two.
TEST(SpillFile, GivesBackWhatWasPut) {
  SpillFile file(64);
  const std::vector<Put> put = AppendAll(file, {10, 54, 0, 30, 40, 64, 200, 5, 63, 1, 70, 20, 25});
  std::string all;
  for (const Put& p : put) {
    EXPECT_EQ(file.Read(p.at, p.bytes.size()), p.bytes) << "at " << p.at;
    all += p.bytes;
  }
  for (size_t at = 0; at < all.size(); at += 13)
    for (const size_t n : {size_t(1), size_t(50), size_t(130)})
      if (at + n <= all.size()) {
        EXPECT_EQ(file.Read(int64_t(at), n), all.substr(at, n)) << at << "+" << n;
      }
  EXPECT_EQ(file.Read(int64_t(all.size()), 0), "");
  EXPECT_THROW(file.Read(int64_t(all.size()) - 4, 5), std::runtime_error);
  EXPECT_THROW(file.Read(-1, 1), std::runtime_error);
}

// A file that stops taking bytes part way (here at the size a process may
// write, in the middle of a block) still gives back every piece it took;
// the pieces after that are refused, for the caller to keep.
TEST(SpillFile, KeepsWhatTheFileRefused) {
  struct rlimit before {};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
  const auto old_handler = std::signal(SIGXFSZ, SIG_IGN);
  struct rlimit small = before;
  small.rlim_cur = 170;
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
  std::vector<Put> put;
  std::vector<int64_t> refused;
  {
    SpillFile file(64);
    // The fourth piece is the block that passes the limit.
    put = AppendAll(file, {40, 40, 60, 60});
    refused = {file.Append(Bytes(30, 100)), file.Append(Bytes(100, 101)), file.Append("x")};
    setrlimit(RLIMIT_FSIZE, &before);
    for (const Put& p : put) EXPECT_EQ(file.Read(p.at, p.bytes.size()), p.bytes) << "at " << p.at;
  }
  setrlimit(RLIMIT_FSIZE, &before);
  std::signal(SIGXFSZ, old_handler);
  for (const int64_t at : refused) EXPECT_EQ(at, -1);
}

// Without a temporary folder nothing is put aside.
TEST(SpillFile, RefusesWithoutAFolder) {
  const char* old = std::getenv("TMPDIR");
  const std::string kept = old ? old : "";
  setenv("TMPDIR", "/nonexistent/orvenda-spill-test", 1);
  SpillFile file(64);
  EXPECT_EQ(file.Append("abc"), -1);
  if (old)
    setenv("TMPDIR", kept.c_str(), 1);
  else
    unsetenv("TMPDIR");
}

}  // namespace
}  // namespace orv::render

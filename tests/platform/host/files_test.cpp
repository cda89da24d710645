#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "common/errors.h"
#include "platform/host/files.h"
#include "platform/host/mapped_file.h"

using namespace orv::host;

TEST(Files, TempFolderAndNewTempFiles) {
  ::setenv("TMPDIR", "/tmp", 1);
  EXPECT_EQ(GetTempDirectory(), "/tmp/");
  std::string a = GetNewTempFile("Orvenda");
  std::string b = GetNewTempFile("Orvenda");
  ASSERT_FALSE(a.empty());
  EXPECT_NE(a, b);
  EXPECT_EQ(a.rfind("/tmp/Orv", 0), 0u) << a;
  EXPECT_TRUE(FileExists(a));
  EXPECT_EQ(GetFileSize(a), 0);
  std::filesystem::remove(a);
  std::filesystem::remove(b);
  EXPECT_FALSE(FileExists(a));
  EXPECT_FALSE(FileExists(""));
  EXPECT_THROW(GetFileSize(a), orv::ReportError);
  // A temporary folder path of 512 characters or more is refused.
  std::string longdir = "/tmp/" + std::string(600, 'x');
  ::setenv("TMPDIR", longdir.c_str(), 1);
  EXPECT_EQ(GetTempDirectory(), "");
  EXPECT_EQ(GetNewTempFile("abc"), "");
  ::unsetenv("TMPDIR");
}

// Every reader of a file gets the one mapping; a file missing when first
// asked for is looked for again, so one installed later is read.
TEST(Files, SharedMappingIsOnePerFileAndAMissingFileIsLookedForAgain) {
  const std::string path =
      (std::filesystem::temp_directory_path() / ("orv_shared_" + std::to_string(::getpid()))).string();
  std::filesystem::remove(path);
  EXPECT_FALSE(MappedFile::Shared(path)->opened());
  std::ofstream(path, std::ios::binary) << "glyphs";
  const auto first = MappedFile::Shared(path);
  ASSERT_TRUE(first->opened());
  EXPECT_EQ(first->bytes(), "glyphs");
  EXPECT_EQ(MappedFile::Shared(path).get(), first.get());
  std::filesystem::remove(path);
}

TEST(Files, TaggedPathsResolveWithoutRegardToCase) {
  ::setenv("HOME", "/home/desk", 1);
  ::setenv("XDG_CONFIG_HOME", "/home/desk/.cfg", 1);
  struct {
    const char* in;
    const char* out;
  } cases[] = {
      {"<mydocuments>\\Letters\\Recall.rtf", "/home/desk/Documents/Letters/Recall.rtf"},
      {"<Desktop>\\x.pdf", "/home/desk/Desktop/x.pdf"},
      {"<APPDATA>\\Orvenda\\a.ini", "/home/desk/.cfg/Orvenda/a.ini"},
      {"<COMMONSHAREDFILES>Forms\\claim.txt", "/usr/share/Halvorine/Forms/claim.txt"},
      {"<PROGRAMFILES>\\Orvenda", "/opt/Orvenda"},
      // Only the first tag in the list's order is resolved.
      {"<WINDIR>\\<DESKTOP>", "/usr/share/<DESKTOP>"},
      {"/var/data/plain.txt", "/var/data/plain.txt"},
  };
  for (const auto& c : cases) EXPECT_EQ(GetFilePath(c.in), c.out) << c.in;
  ::unsetenv("XDG_CONFIG_HOME");
}

TEST(Files, SyncShellWaitsAndTimesOut) {
  EXPECT_TRUE(SyncShell("true", 0));
  EXPECT_FALSE(SyncShell("exit 3", 0));
  EXPECT_TRUE(SyncShell("sleep 0.05", 5000));
  EXPECT_FALSE(SyncShell("sleep 2", 50));
}

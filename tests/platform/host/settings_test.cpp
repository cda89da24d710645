#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "platform/host/host_services.h"
#include "platform/host/settings.h"

namespace fs = std::filesystem;
using orv::host::SettingsStore;

namespace {

fs::path TempDir(const char* name) {
  fs::path p = fs::temp_directory_path() / (std::string("orv-settings-") + name + "-" +
                                            std::to_string(::getpid()));
  fs::remove_all(p);
  fs::create_directories(p);
  return p;
}

}  // namespace

TEST(Settings, DefaultsOverridesAndRoundTrip) {
  fs::path dir = TempDir("rt");
  std::string path = (dir / "Orvenda" / "settings.ini").string();
  {
    SettingsStore s(path);
    // Nothing on disk yet: every read gives its default.
    EXPECT_EQ(s.Get("Settings", "CurrentOffice", "0"), "0");
    EXPECT_EQ(s.Get("Settings", "ServerName"), "");
    s.Save("Settings", "CurrentOffice", "2");
    s.Save("Settings", "TableBorder", "7");
    s.Save("Printing", "Printer", "Front Desk");
  }
  SettingsStore again(path);
  // Sections and keys compare without regard to case, as the registry does.
  EXPECT_EQ(again.Get("settings", "currentoffice", "0"), "2");
  EXPECT_EQ(again.Get("Settings", "TableBorder", "0"), "7");
  EXPECT_EQ(again.Get("Printing", "Printer"), "Front Desk");
  EXPECT_EQ(again.Get("Printing", "CurrentOffice", "none"), "none");

  // An override wins for this object only and never reaches the file.
  again.Override("Settings", "CurrentOffice", "5");
  EXPECT_EQ(again.Get("Settings", "CurrentOffice", "0"), "5");
  EXPECT_EQ(SettingsStore(path).Get("Settings", "CurrentOffice", "0"), "2");
  fs::remove_all(dir);
}

TEST(Settings, ReadsHandWrittenFilesAndFollowsXdg) {
  fs::path dir = TempDir("xdg");
  fs::create_directories(dir / "Orvenda");
  std::ofstream(dir / "Orvenda" / "settings.ini")
      << "; written by hand\n[Settings]\n  dbName = practice.db  \nbroken line\n\n[Other]\nx=1\n";
  ::setenv("XDG_CONFIG_HOME", dir.c_str(), 1);
  SettingsStore s = SettingsStore::ForApplication("Orvenda");
  EXPECT_EQ(s.path(), (dir / "Orvenda" / "settings.ini").string());
  EXPECT_EQ(s.Get("Settings", "dbName"), "practice.db");
  EXPECT_EQ(s.Get("Other", "x"), "1");
  ::unsetenv("XDG_CONFIG_HOME");
  fs::remove_all(dir);
}

// The command line's host answers every question with the answer it was
// given, an OK/Cancel box by its OK, and a bare message by OK.
TEST(HostServices, BatchAnswers) {
  orv::host::BatchHost batch(orv::host::vbYes);
  EXPECT_EQ(batch.MsgBox("x", orv::host::vbYesNoCancel, ""), orv::host::vbYes);
  EXPECT_EQ(batch.MsgBox("x", orv::host::vbOKCancel, ""), orv::host::vbOK);
  EXPECT_EQ(batch.MsgBox("x", orv::host::vbCritical, ""), orv::host::vbOK);
  orv::host::BatchHost refusing;
  EXPECT_EQ(refusing.MsgBox("x", orv::host::vbOKCancel, ""), orv::host::vbCancel);
}

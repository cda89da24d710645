// What the tests of the command-line host share: running the built program
// with both of its streams, and a scratch folder holding a demo practice.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "support/shell.h"
#include "test_paths.h"

namespace orv::testing {

// The command's standard output and error together: the host writes its
// messages to standard error.
inline ShellResult HostShell(const std::string& cmd) {
  return RunShell(cmd + " 2>&1");
}

inline std::string HostProgram() {
  return ORVENDA_APP;
}

// A scratch folder named for the suite and this process, with a demo
// practice in it (demo.db); removed by the suite's TearDownTestSuite.
inline std::string MakeDemoFolder(const std::string& tag, int patients, int seed) {
  std::string dir =
      (std::filesystem::temp_directory_path() / ("orv-" + tag + "-" + std::to_string(::getpid())))
          .string();
  std::filesystem::create_directories(dir);
  ShellResult r = HostShell(HostProgram() + " demo-db " + dir + "/demo.db --patients " +
                            std::to_string(patients) + " --seed " + std::to_string(seed) +
                            " --today 2026-11-20");
  EXPECT_EQ(r.status, 0) << r.out;
  return dir;
}

// The whole of a file, as bytes.
inline std::string ReadFile(const std::string& path) {
  std::ifstream f(path, std::ios::binary);
  std::stringstream ss;
  ss << f.rdbuf();
  return ss.str();
}

}  // namespace orv::testing

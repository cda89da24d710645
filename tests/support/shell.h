// Runs a shell command from a test and collects what it prints on standard
// output, with its exit status, and reads back the files it wrote. Tests
// that check a built program or an outside tool (qpdf, pdftotext) go
// through it.
#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace orv::testing {

struct ShellResult {
  int status = -1;  // the exit status, -1 when the command did not exit
  std::string out;
};

inline ShellResult RunShell(const std::string& cmd) {
  ShellResult r;
  FILE* p = ::popen(cmd.c_str(), "r");
  if (p == nullptr) return r;
  char buf[4096];
  size_t n;
  while ((n = std::fread(buf, 1, sizeof buf, p)) > 0) r.out.append(buf, n);
  int st = ::pclose(p);
  r.status = WIFEXITED(st) ? WEXITSTATUS(st) : -1;
  return r;
}

// The standard output alone.
inline std::string Shell(const std::string& cmd) {
  return RunShell(cmd).out;
}

// `text` quoted for the shell as one word.
inline std::string ShellQuote(const std::string& text) {
  std::string q = "'";
  for (char c : text) q += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return q + "'";
}

// The bytes of a file as they are on disk; "" when it cannot be read.
inline std::string FileBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// A path in the temporary folder, unique to this test process:
// `prefix`, the process id and `name`.
inline std::string TempPath(const std::string& prefix, const std::string& name) {
  return (std::filesystem::temp_directory_path() /
          (prefix + std::to_string(::getpid()) + "_" + name))
      .string();
}

}  // namespace orv::testing

#include "platform/host/files.h"

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <thread>

#include "common/errors.h"
#include "common/vbstrings.h"

namespace orv::host {

namespace fs = std::filesystem;

namespace {

std::string Home() {
  const char* h = std::getenv("HOME");
  return h && *h ? h : "/root";
}

std::string ProgramFolder() {
  std::error_code ec;
  fs::path exe = fs::read_symlink("/proc/self/exe", ec);
  return ec ? fs::current_path().string() : exe.parent_path().string();
}

std::string ConfigFolder() {
  const char* x = std::getenv("XDG_CONFIG_HOME");
  return x && *x ? std::string(x) : Home() + "/.config";
}

}  // namespace

std::string GetTempDirectory() {
  const char* t = std::getenv("TMPDIR");
  std::string dir = t && *t ? t : "/tmp";
  if (dir.back() != '/') dir += '/';
  if (dir.size() >= 512) return "";
  return dir;
}

std::string GetNewTempFile(const std::string& prefix) {
  std::string dir = GetTempDirectory();
  if (dir.empty()) return "";
  std::string templ = dir + prefix.substr(0, 3) + "XXXXXX.tmp";
  int fd = ::mkstemps(templ.data(), 4);
  if (fd < 0) return "";
  ::close(fd);
  return templ;
}

bool FileExists(const std::string& path) {
  std::error_code ec;
  return !path.empty() && fs::exists(path, ec);
}

int64_t GetFileSize(const std::string& path) {
  std::error_code ec;
  auto n = fs::file_size(path, ec);
  if (ec) throw ReportError(53, "File not found: " + path);
  return static_cast<int64_t>(n);
}

DateTime GetFileModifiedDate(const std::string& path) {
  struct stat st {};
  if (::stat(path.c_str(), &st) != 0) throw ReportError(53, "File not found: " + path);
  std::tm local{};
  localtime_r(&st.st_mtime, &local);
  return DateTime::FromParts(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour,
                             local.tm_min, local.tm_sec);
}

std::string strGetCommonFilesPath() { return "/usr/share"; }

std::string GetFilePath(const std::string& path) {
  const std::pair<const char*, std::string> tags[] = {
      {"<PROGRAMFILES>", "/opt"},
      {"<ORVENDAPATH>", ProgramFolder()},
      {"<SYSTEM32PATH>", "/usr/lib"},
      {"<WINDIR>", "/usr/share"},
      {"<DESKTOP>", Home() + "/Desktop"},
      {"<MYDOCUMENTS>", Home() + "/Documents"},
      {"<COMMONSHAREDFILES>", strGetCommonFilesPath() + "/Halvorine/"},
      {"<APPDATA>", ConfigFolder()},
      {"<ALLUSERAPPDATA>", "/var/lib"},
  };
  // The tags are found in the upper-cased text, so "<MyDocuments>" resolves
  // too; the replacement goes into the original so file names keep their case.
  std::string upper = vb::UCase(path);
  for (const auto& [tag, folder] : tags) {
    size_t pos = upper.find(tag);
    if (pos == std::string::npos) continue;
    std::string out = path.substr(0, pos) + folder + path.substr(pos + std::string(tag).size());
    for (char& c : out) {
      if (c == '\\') c = '/';
    }
    // A folder that ends in "/" followed by a path that starts with one.
    std::string clean;
    for (char c : out) {
      if (c == '/' && !clean.empty() && clean.back() == '/') continue;
      clean += c;
    }
    return clean;
  }
  return path;
}

bool SyncShell(const std::string& command, long wait_ms) {
  pid_t pid = ::fork();
  if (pid < 0) return false;
  if (pid == 0) {
    ::execl("/bin/sh", "sh", "-c", command.c_str(), static_cast<char*>(nullptr));
    ::_exit(127);
  }
  auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(wait_ms);
  while (true) {
    int status = 0;
    pid_t r = ::waitpid(pid, &status, wait_ms > 0 ? WNOHANG : 0);
    if (r == pid) return WIFEXITED(status) && WEXITSTATUS(status) == 0;
    if (r < 0 && errno != EINTR) return false;
    if (wait_ms > 0 && std::chrono::steady_clock::now() >= deadline) return false;
    if (wait_ms > 0) std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
}

}  // namespace orv::host

#include "platform/host/partial_files.h"

#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <mutex>
#include <set>
#include <thread>

namespace orv::host {

namespace {

std::mutex& Mutex() {
  static std::mutex m;
  return m;
}

std::set<std::string>& Files() {
  static std::set<std::string> files;
  return files;
}

// The handler only writes the signal's number to a pipe: deleting files
// and taking a lock are not safe inside a handler. A thread of its own
// reads the pipe and does the rest.
int g_pipe[2] = {-1, -1};

void OnSignal(int sig) {
  const int saved = errno;
  unsigned char b = static_cast<unsigned char>(sig);
  ssize_t ignored = ::write(g_pipe[1], &b, 1);
  (void)ignored;
  errno = saved;
}

const char* SignalName(int sig) {
  switch (sig) {
    case SIGINT:
      return "SIGINT";
    case SIGTERM:
      return "SIGTERM";
    case SIGHUP:
      return "SIGHUP";
    default:
      return "a signal";
  }
}

[[noreturn]] void RemoveAndDie() {
  unsigned char b = 0;
  while (::read(g_pipe[0], &b, 1) != 1) {
    if (errno != EINTR) std::_Exit(1);
  }
  // The lock is held to the end: a writer that lists a new file waits,
  // so nothing is created after the sweep.
  Mutex().lock();
  size_t removed = 0;
  for (const auto& f : Files()) removed += ::unlink(f.c_str()) == 0;
  std::fprintf(
      stderr,
      "\norvenda-reports: stopped by %s; %zu unfinished file%s removed, nothing was written\n",
      SignalName(b), removed, removed == 1 ? "" : "s");
  std::fflush(stderr);
  std::signal(b, SIG_DFL);
  std::raise(b);
  std::_Exit(128 + b);
}

}  // namespace

void TrackPartialFile(const std::string& path) {
  std::lock_guard lock(Mutex());
  Files().insert(path);
}

void RenamePartialFile(const std::string& path, const std::string& target, std::error_code& ec) {
  std::lock_guard lock(Mutex());
  std::filesystem::rename(path, target, ec);
  if (!ec) Files().erase(path);
}

void RemovePartialFile(const std::string& path) {
  std::lock_guard lock(Mutex());
  std::error_code ec;
  std::filesystem::remove(path, ec);
  Files().erase(path);
}

void ForgetPartialFile(const std::string& path) {
  std::lock_guard lock(Mutex());
  Files().erase(path);
}

void RemovePartialFilesOnSignal() {
  static std::once_flag once;
  std::call_once(once, [] {
    if (::pipe(g_pipe) != 0) return;
    std::thread(RemoveAndDie).detach();
    struct sigaction sa {};
    sa.sa_handler = OnSignal;
    sigemptyset(&sa.sa_mask);
    sa.sa_flags = SA_RESTART;
    for (int sig : {SIGINT, SIGTERM, SIGHUP}) ::sigaction(sig, &sa, nullptr);
  });
}

}  // namespace orv::host

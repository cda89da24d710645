#include "platform/host/cups.h"

#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <regex>

extern char** environ;

namespace orv::host {

namespace {

struct Ran {
  int status = -1;  // the exit status; -1 when it did not run or was stopped
  std::string out;  // standard output and error together
};

// Runs a CUPS client without a shell (the printer's name and the title are
// data) with its messages in English, so that the state it reports reads
// the same on every workstation. A client that has not finished after
// `seconds` (a scheduler that does not answer) is stopped.
Ran RunClient(const std::vector<std::string>& argv, int seconds = 30) {
  Ran ran;
  // Everything the child needs is made before fork: a program with threads
  // (the browser host) may only exec there.
  std::vector<std::string> env_text;
  for (char** e = environ; *e; ++e) {
    if (std::strncmp(*e, "LC_ALL=", 7) != 0 && std::strncmp(*e, "LANG=", 5) != 0)
      env_text.emplace_back(*e);
  }
  env_text.emplace_back("LC_ALL=C");
  env_text.emplace_back("LANG=C");
  std::vector<char*> env, args;
  for (auto& e : env_text) env.push_back(e.data());
  env.push_back(nullptr);
  std::vector<std::string> argv_copy = argv;
  for (auto& a : argv_copy) args.push_back(a.data());
  args.push_back(nullptr);

  int fds[2];
  if (::pipe(fds) != 0) return ran;
  pid_t pid = ::fork();
  if (pid < 0) {
    ::close(fds[0]);
    ::close(fds[1]);
    return ran;
  }
  if (pid == 0) {
    ::dup2(fds[1], 1);
    ::dup2(fds[1], 2);
    ::close(fds[0]);
    ::close(fds[1]);
    ::execvpe(args[0], args.data(), env.data());
    const char msg[] = "the CUPS client programs (lpstat, lp) are not installed\n";
    [[maybe_unused]] ssize_t w = ::write(2, msg, sizeof msg - 1);
    ::_exit(127);
  }
  ::close(fds[1]);
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
  bool stopped = false;
  char buf[4096];
  while (true) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                          deadline - std::chrono::steady_clock::now())
                          .count();
    if (left <= 0) {
      ::kill(pid, SIGKILL);
      stopped = true;
      break;
    }
    pollfd p{fds[0], POLLIN, 0};
    int r = ::poll(&p, 1, int(left));
    if (r < 0 && errno == EINTR) continue;
    if (r <= 0) continue;
    ssize_t n = ::read(fds[0], buf, sizeof buf);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) break;
    ran.out.append(buf, size_t(n));
  }
  ::close(fds[0]);
  int status = 0;
  while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
  }
  if (stopped) {
    ran.out = "no answer from the CUPS scheduler within " + std::to_string(seconds) + " seconds";
    return ran;
  }
  ran.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  while (!ran.out.empty() && (ran.out.back() == '\n' || ran.out.back() == ' ')) ran.out.pop_back();
  return ran;
}

}  // namespace

PrintOutcome PrintPdfWithCups(const std::string& printer, const std::string& pdf,
                              const std::string& title) {
  PrintOutcome outcome;
  // 1. The queue's state. lpstat -p says "printer NAME is idle.  enabled
  //    since ..." or "printer NAME disabled since ...", the reason on the
  //    lines below; it fails for a name it does not know.
  Ran state = RunClient({"lpstat", "-p", printer});
  if (state.status != 0) {
    // A scheduler that does not answer makes every name unknown: say which.
    Ran scheduler = RunClient({"lpstat", "-r"});
    if (scheduler.out.find("is running") == std::string::npos) {
      const char* server = std::getenv("CUPS_SERVER");
      outcome.message = "No CUPS scheduler answers" +
                        (server && *server ? " at " + std::string(server) : std::string()) +
                        ", so the printer " + printer + " cannot be reached";
    } else {
      outcome.message = "The printer " + printer + " is not known to CUPS (" +
                        (state.out.empty() ? "lpstat failed" : state.out) + ")";
    }
    return outcome;
  }
  if (state.out.rfind("printer " + printer + " disabled", 0) == 0) {
    std::string reason;
    if (size_t nl = state.out.find('\n'); nl != std::string::npos) {
      reason = state.out.substr(nl + 1);
      reason.erase(0, reason.find_first_not_of(" \t"));
    }
    outcome.message = "The printer " + printer + " is stopped" +
                      (reason.empty() ? "" : " (" + reason + ")") +
                      ": nothing was printed. Start it again with: cupsenable " + printer;
    return outcome;
  }
  // 2. The job. lp answers "request id is NAME-12 (1 file(s))".
  Ran lp = RunClient({"lp", "-d", printer, "-t", title.empty() ? "document" : title, "--", pdf});
  std::smatch m;
  if (lp.status != 0 || !std::regex_search(lp.out, m, std::regex("request id is (\\S+)"))) {
    outcome.message = "The printer " + printer + " did not take the document (" +
                      (lp.out.empty() ? "lp failed" : lp.out) + ")";
    return outcome;
  }
  outcome.printed = true;
  outcome.job = m[1];
  return outcome;
}

std::vector<std::string> CupsPrinters() {
  std::vector<std::string> names;
  Ran ran = RunClient({"lpstat", "-e"});
  if (ran.status != 0) return names;
  size_t start = 0;
  while (start < ran.out.size()) {
    size_t end = ran.out.find('\n', start);
    if (end == std::string::npos) end = ran.out.size();
    std::string name = ran.out.substr(start, end - start);
    if (!name.empty()) names.push_back(name);
    start = end + 1;
  }
  return names;
}

}  // namespace orv::host

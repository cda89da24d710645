// Every built report on one practice: each method of the host's catalogue
// that the command line can run, with the catalogue's example arguments, run
// as `orvenda-reports` runs it (the same host code, a document written to a
// temporary file). Prints per report, in milliseconds, two spans and the
// time spent in SQL (inside SQLite, or waiting on the server) within each:
//   command  the whole command: reading its arguments, opening the practice
//            (the connection, the settings), the report, writing the file,
//            and closing everything again;
//   report   the report's own part of it: from the call of its method, on a
//            component already connected and set up, to the document
//            written where --out names it;
// then the report's time over its SQL time, the peak memory the run grew by
// and the peak of the whole process, and the pages of the document; the
// medians when runs are repeated. A report that lands in the catalogue is
// benchmarked from then on without a change here.
//
// A report is held to "within 2x of its own SQL time" by the "x SQL"
// column, the report span over the SQL inside it. A host application opens
// the practice once for a working session and calls one method per report;
// what the command line does around that call (arguments, the connection,
// the settings, closing them) it does once per command because a command
// is a session of one report, and that belongs to no report. The command
// span stays beside it so nothing of the run is out of sight: on a short
// report the difference is most of the run. The report span still holds
// what a first report of a session pays once and a second would not
// (SQLite reading its schema at the first statement, the tables' columns
// read when first named, font files opened and mapped), inside as well as
// outside its SQL; none of it is taken out.
//
//   bench_all_reports DB [--today yyyy-mm-dd] [--office N] [--repeat N]
//                        [--only METHOD,...] [--out pdf|txt] [--limit SECONDS]
//                        [-- METHOD ARG...]
//
// DB is a practice file or a server URL, as --db takes it. After "--" one
// method with arguments of one's own runs instead of the catalogue (the
// billing list of every patient: -- rptBillingByClient desk "" "" "").
// Build it Release; the figures of a debug build say little.
//
// Each run is a child process of its own (fork): its peak is its own, not
// hidden by memory an earlier report freed into the allocator's lists, it
// starts as the program does (a new connection, empty caches), and a report
// that crashes is reported without ending the benchmark. The child resets
// the kernel's high-water mark at its start (/proc/self/clear_refs 5), so
// "grew" is the peak resident memory above what the process held when the
// report began. With --limit a run that takes longer is stopped and
// reported as not finished, so one runaway statement on a large practice
// does not hold up the rest of the catalogue.
#include <libpq-fe.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "invokers.h"
#include "method_catalog.h"
#include "report_host.h"
#include "sql_time.h"

namespace {

// Time waiting on the server, gathered by the libpq wrappers below. libpq
// may call its own exported functions (PQexec calls PQgetResult), so only
// the outermost call is timed.
SqlClock::duration g_server_wait{};
int g_pq_depth = 0;

template <typename R, typename... A>
R TimedPq(R (*real)(A...), A... args) {
  if (g_pq_depth > 0) return real(args...);
  ++g_pq_depth;
  const auto start = SqlClock::now();
  R r = real(args...);
  g_server_wait += SqlClock::now() - start;
  --g_pq_depth;
  return r;
}

}  // namespace

// The program's own definitions come before libpq's, so the database
// layer's calls land here and are passed on.
extern "C" PGresult* PQexec(PGconn* conn, const char* query) {
  static auto real = Real<PGresult* (*)(PGconn*, const char*)>("PQexec");
  return TimedPq(real, conn, query);
}

extern "C" PGresult* PQexecParams(PGconn* conn, const char* command, int n, const Oid* types,
                                  const char* const* values, const int* lengths, const int* formats,
                                  int result_format) {
  static auto real = Real<PGresult* (*)(PGconn*, const char*, int, const Oid*, const char* const*,
                                        const int*, const int*, int)>("PQexecParams");
  return TimedPq(real, conn, command, n, types, values, lengths, formats, result_format);
}

extern "C" PGresult* PQprepare(PGconn* conn, const char* name, const char* query, int n,
                               const Oid* types) {
  static auto real =
      Real<PGresult* (*)(PGconn*, const char*, const char*, int, const Oid*)>("PQprepare");
  return TimedPq(real, conn, name, query, n, types);
}

extern "C" PGresult* PQexecPrepared(PGconn* conn, const char* name, int n, const char* const* values,
                                    const int* lengths, const int* formats, int result_format) {
  static auto real = Real<PGresult* (*)(PGconn*, const char*, int, const char* const*, const int*,
                                        const int*, int)>("PQexecPrepared");
  return TimedPq(real, conn, name, n, values, lengths, formats, result_format);
}

// Results read in portions (single-row mode, a cursor) wait here.
extern "C" PGresult* PQgetResult(PGconn* conn) {
  static auto real = Real<PGresult* (*)(PGconn*)>("PQgetResult");
  return TimedPq(real, conn);
}

namespace {

namespace fs = std::filesystem;

struct Options {
  std::string db;
  std::string today = "2026-11-20";
  std::string office = "1";
  std::string out_kind = "pdf";
  int repeat = 1;
  int limit_s = 0;  // 0: no limit
  std::vector<std::string> only;
  std::vector<std::string> own_run;  // METHOD ARG... after "--"
};

// One report to run: its method and the words of its command line.
struct Job {
  std::string method;
  std::vector<std::string> words;
};

// What a child sends back through its pipe; times in seconds.
struct Outcome {
  double wall = 0;  // the whole command
  double sql = 0;
  double report = 0;  // the method call to the written document
  double report_sql = 0;
  long grew_kb = 0;  // the peak resident memory above the start
  long peak_kb = 0;  // the peak of the process
  int pages = 0;
  int status = 0;  // the host's exit status
  bool timed_out = false;
};

// The words of a catalogue example as a shell reads them: blanks split,
// double and single quotes group and go. False for an example that needs
// the shell itself ("$(...)").
bool SplitExample(const std::string& text, std::vector<std::string>& words) {
  if (text.find("$(") != std::string::npos) return false;
  std::string word;
  bool in_word = false;
  for (size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c == ' ') {
      if (in_word) words.push_back(word);
      word.clear();
      in_word = false;
    } else if (c == '"' || c == '\'') {
      const size_t end = text.find(c, i + 1);
      if (end == std::string::npos) return false;
      word += text.substr(i + 1, end - i - 1);
      in_word = true;
      i = end;
    } else {
      word += c;
      in_word = true;
    }
  }
  if (in_word) words.push_back(word);
  return true;
}

// A field of /proc/self/status in kB ("VmHWM"), 0 when absent.
long StatusKb(const char* field) {
  std::ifstream in("/proc/self/status");
  const std::string prefix = std::string(field) + ":";
  for (std::string line; std::getline(in, line);)
    if (line.rfind(prefix, 0) == 0) return std::atol(line.c_str() + prefix.size());
  return 0;
}

std::string LoadAverage() {
  std::ifstream in("/proc/loadavg");
  std::string one, five, fifteen;
  in >> one >> five >> fifteen;
  return one + " " + five + " " + fifteen;
}

// Runs one job in a child process; `log` receives what the host said.
Outcome RunChild(const Options& opt, const Job& job, const fs::path& dir, const std::string& log) {
  int fds[2];
  if (::pipe(fds) != 0) {
    std::perror("pipe");
    std::exit(1);
  }
  std::fflush(stdout);
  const pid_t pid = ::fork();
  if (pid == 0) {
    ::close(fds[0]);
    if (FILE* f = std::freopen(log.c_str(), "w", stdout)) ::dup2(::fileno(f), 2);
    // The high-water mark from here: what the report itself takes.
    if (std::ofstream clear("/proc/self/clear_refs"); clear) clear << "5";
    Outcome o;
    const long start_kb = StatusKb("VmRSS");
    const std::string out = (dir / (job.method + "." + opt.out_kind)).string();
    std::vector<std::string> args = {"--db",   opt.db,   "--today", opt.today, "--office", opt.office,
                                     "--user", "bench",  "--out",   out,       job.method};
    args.insert(args.end(), job.words.begin(), job.words.end());
    auto seconds = [](SqlClock::duration d) { return std::chrono::duration<double>(d).count(); };
    const auto sql0 = g_sql_time + g_server_wait;
    const auto t0 = SqlClock::now();
    SqlClock::duration report_sql0{};
    SqlClock::time_point report0;
    orv::app::RunWatch watch;
    watch.report_called = [&] {
      report_sql0 = g_sql_time + g_server_wait;
      report0 = SqlClock::now();
    };
    watch.document_written = [&] {
      o.report = seconds(SqlClock::now() - report0);
      o.report_sql = seconds(g_sql_time + g_server_wait - report_sql0);
    };
    o.status = orv::app::RunReportHost(args, &watch);
    o.wall = seconds(SqlClock::now() - t0);
    o.sql = seconds(g_sql_time + g_server_wait - sql0);
    o.pages = watch.pages;
    o.peak_kb = StatusKb("VmHWM");
    o.grew_kb = o.peak_kb - start_kb;
    std::fflush(stdout);
    std::error_code ec;
    fs::remove(out, ec);
    [[maybe_unused]] ssize_t n = ::write(fds[1], &o, sizeof o);
    ::_exit(0);
  }
  ::close(fds[1]);
  Outcome o;
  bool timed_out = false;
  if (opt.limit_s > 0) {
    pollfd pfd{fds[0], POLLIN, 0};
    int ready;
    do {
      ready = ::poll(&pfd, 1, opt.limit_s * 1000);
    } while (ready < 0 && errno == EINTR);
    if (ready == 0) {
      ::kill(pid, SIGKILL);
      timed_out = true;
    }
  }
  const bool got = !timed_out && ::read(fds[0], &o, sizeof o) == static_cast<ssize_t>(sizeof o);
  ::close(fds[0]);
  int wstatus = 0;
  ::waitpid(pid, &wstatus, 0);
  if (!got) o.status = WIFSIGNALED(wstatus) ? 128 + WTERMSIG(wstatus) : 1;
  o.timed_out = timed_out;
  return o;
}

// The last non-blank line of a file, to say why a run failed.
std::string LastLine(const std::string& path) {
  std::ifstream in(path);
  std::string last;
  for (std::string line; std::getline(in, line);)
    if (line.find_first_not_of(" \r\n") != std::string::npos) last = line;
  return last;
}

// "2.31" for a span 2.31 times the SQL in it; "-" when it ran no SQL.
std::string Ratio(double span, double sql) {
  if (sql <= 0) return "-";
  char text[16];
  std::snprintf(text, sizeof text, "%.2f", span / sql);
  return text;
}

template <typename T>
T Median(std::vector<T> v) {
  std::sort(v.begin(), v.end());
  return v[v.size() / 2];
}

bool ParseOptions(int argc, char** argv, Options& opt) {
  for (int i = 1; i < argc; ++i) {
    const std::string a = argv[i];
    auto value = [&]() -> std::string { return i + 1 < argc ? argv[++i] : ""; };
    if (a == "--") {
      opt.own_run.assign(argv + i + 1, argv + argc);
      break;
    } else if (a == "--today") {
      opt.today = value();
    } else if (a == "--office") {
      opt.office = value();
    } else if (a == "--repeat") {
      opt.repeat = std::atoi(value().c_str());
    } else if (a == "--limit") {
      opt.limit_s = std::atoi(value().c_str());
    } else if (a == "--out") {
      opt.out_kind = value();
    } else if (a == "--only") {
      std::stringstream list(value());
      for (std::string m; std::getline(list, m, ',');) opt.only.push_back(m);
    } else if (opt.db.empty() && a.rfind("--", 0) != 0) {
      opt.db = a;
    } else {
      return false;
    }
  }
  return !opt.db.empty() && opt.repeat >= 1 && (opt.out_kind == "pdf" || opt.out_kind == "txt") &&
         (opt.own_run.empty() || !opt.own_run.front().empty());
}

}  // namespace

int main(int argc, char** argv) {
  Options opt;
  if (!ParseOptions(argc, argv, opt)) {
    std::fprintf(stderr,
                 "usage: bench_all_reports DB [--today yyyy-mm-dd] [--office N] [--repeat N]\n"
                 "                         [--only METHOD,...] [--out pdf|txt] [--limit SECONDS]\n"
                 "                         [-- METHOD ARG...]\n");
    return 2;
  }
  std::setvbuf(stdout, nullptr, _IOLBF, 0);

  std::vector<Job> jobs;
  if (!opt.own_run.empty()) {
    jobs.push_back({opt.own_run.front(), {opt.own_run.begin() + 1, opt.own_run.end()}});
  } else {
    for (const auto& m : orv::app::MethodCatalog()) {
      // The component's own methods (the preview form, an office's value)
      // are no reports.
      if (std::string(m.family) == "Component" || orv::app::Invokers().count(m.name) == 0) continue;
      if (!opt.only.empty() && std::find(opt.only.begin(), opt.only.end(), m.name) == opt.only.end())
        continue;
      Job job{m.name, {}};
      if (!SplitExample(m.example, job.words)) {
        std::printf("%-36s skipped: its example needs a shell\n", m.name);
        continue;
      }
      jobs.push_back(std::move(job));
    }
  }

  const fs::path dir = fs::temp_directory_path() / ("orvenda_bench_all_" + std::to_string(::getpid()));
  fs::create_directories(dir);
  std::printf("practice %s, today %s, office %s, %d run%s each, documents as %s; clock %s; load %s\n",
              opt.db.c_str(), opt.today.c_str(), opt.office.c_str(), opt.repeat,
              opt.repeat == 1 ? "" : "s (medians)", opt.out_kind.c_str(),
              SqlClock::CountsTicks() ? "time-stamp counter" : "steady_clock", LoadAverage().c_str());
  std::printf("%-36s %19s %19s %6s %8s %8s %6s\n", "", "---- command ms ---", "---- report ms ----",
              "", "", "", "");
  std::printf("%-36s %9s %9s %9s %9s %6s %8s %8s %6s\n", "report", "wall", "SQL", "wall", "SQL",
              "x SQL", "grew MB", "peak MB", "pages");
  double total_wall = 0, total_sql = 0, total_report = 0, total_report_sql = 0;
  int failed = 0;
  for (const Job& job : jobs) {
    std::vector<Outcome> runs;
    const std::string log = (dir / (job.method + ".log")).string();
    for (int r = 0; r < opt.repeat; ++r) {
      runs.push_back(RunChild(opt, job, dir, log));
      if (runs.back().status != 0) break;
    }
    if (runs.back().timed_out) {
      ++failed;
      std::printf("%-36s NOT FINISHED: stopped after %d s\n", job.method.c_str(), opt.limit_s);
      continue;
    }
    if (runs.back().status != 0) {
      ++failed;
      std::printf("%-36s FAILED (status %d): %.160s\n", job.method.c_str(), runs.back().status,
                  LastLine(log).c_str());
      continue;
    }
    auto field = [&](auto member) {
      std::vector<std::decay_t<decltype(runs[0].*member)>> v;
      for (const Outcome& o : runs) v.push_back(o.*member);
      return Median(v);
    };
    // Each column its own median: the ratio is the one of the median runs'
    // figures, not a median of ratios.
    const double wall = field(&Outcome::wall), sql = field(&Outcome::sql);
    const double report = field(&Outcome::report), report_sql = field(&Outcome::report_sql);
    total_wall += wall;
    total_sql += sql;
    total_report += report;
    total_report_sql += report_sql;
    std::printf("%-36s %9.2f %9.2f %9.2f %9.2f %6s %8.1f %8.1f %6d\n", job.method.c_str(),
                1000 * wall, 1000 * sql, 1000 * report, 1000 * report_sql,
                Ratio(report, report_sql).c_str(), field(&Outcome::grew_kb) / 1024.0,
                field(&Outcome::peak_kb) / 1024.0, field(&Outcome::pages));
  }
  std::printf("%-36s %9.2f %9.2f %9.2f %9.2f %6s   %zu reports, %d failed; load %s\n", "total",
              1000 * total_wall, 1000 * total_sql, 1000 * total_report, 1000 * total_report_sql,
              Ratio(total_report, total_report_sql).c_str(), jobs.size(), failed,
              LoadAverage().c_str());
  std::error_code ec;
  fs::remove_all(dir, ec);
  return failed == 0 ? 0 : 1;
}

// The receivables reports and the bulk statements on both engines, with the
// same practice: the demo practice is written to a temporary SQLite file,
// copied to a database on a PostgreSQL server (replacing what an earlier
// run left there), and each report then runs once on the file and once on
// the server, each inside a snapshot as the report host runs it, writing
// its text to a temporary folder. The server runs each report twice: with
// per-row lookups batched (the default) and key by key ("1by1"), whose
// texts must agree. Prints per report the seconds on each
// engine, their ratio, the pages (which must agree), whether the texts
// agree, the time spent waiting on the engine, and on the server the round
// trips the library made (counted by wrapping libpq's calls below), then
// the server statements that took the most time in all. "same" is "order"
// where the texts hold the same lines and only rows of equal sort keys (two
// patients of one name) come in another order: neither engine promises an
// order among equal keys.
//
//   bench_engines SERVER_URL [PATIENTS=5000]
//
// The server's tables are analyzed after the copy (BENCH_ENGINES_NO_ANALYZE
// set: not). Server settings for a trial come through libpq's environment,
// e.g. PGOPTIONS="-c jit=off". BENCH_ENGINES_KEEP set keeps the practice
// file and the reports' texts; BENCH_ENGINES_STATEMENTS=FILE writes every
// server statement with its time and runs; BENCH_ENGINES_ONLY=NAME,...
// runs only the reports named.
//
// SERVER_URL names any database of the server, e.g. the one pg.sh prints
// (postgresql://orvenda@127.0.0.1:PORT/postgres); the practice goes into
// database orvenda_bench_engines of that server.
#include <dlfcn.h>
#include <libpq-fe.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "common/datetime.h"
#include "frame/preview_form.h"
#include "frame/reports.h"
#include "platform/db/connection.h"
#include "platform/db/copy_database.h"
#include "platform/db/recordset.h"
#include "platform/host/host_services.h"
#include "platform/host/settings.h"
#include "platform/practice/demo_practice.h"
#include "sql_time.h"

namespace {

using BenchClock = std::chrono::steady_clock;

// Time waiting on the server and the calls made, gathered by the libpq
// wrappers below; each call is one round trip.
struct ServerCalls {
  BenchClock::duration wait{};
  long prepares = 0;
  long executes = 0;  // PQexecPrepared and PQsendQueryPrepared
  long others = 0;    // PQexec and PQexecParams (session, transaction, DEALLOCATE)
  long round_trips() const { return prepares + executes + others; }
};
ServerCalls g_server;
// Time in PQexecPrepared by the server's statement text, and its runs.
struct StatementTime {
  BenchClock::duration spent{};
  long runs = 0;
};
std::map<std::string, StatementTime> g_server_by_statement;
// The entry of each prepared statement by its name, to charge its runs
// (looked up by the short name, so the wrapper adds next to nothing).
std::map<std::string, StatementTime*> g_prepared;
// What PQexec sent, by its first word (BEGIN, DEALLOCATE, SELECT, ...).
std::map<std::string, long> g_exec_by_word;

// libpq calls its own exported functions (PQexec calls PQgetResult), so
// only the outermost call is timed and counted.
int g_pq_depth = 0;
// The statement whose results PQgetResult is reading, to charge its wait.
StatementTime* g_reading = nullptr;

struct PqCall {
  PqCall() : outer(g_pq_depth++ == 0), start(BenchClock::now()) {}
  ~PqCall() { --g_pq_depth; }
  // The time since the call began, added to the wait when outermost.
  BenchClock::duration Done() {
    const auto spent = BenchClock::now() - start;
    if (outer) g_server.wait += spent;
    return spent;
  }
  bool outer;
  BenchClock::time_point start;
};

template <typename F>
F RealPq(const char* name) {
  static_assert(sizeof(F) == sizeof(void*));
  void* sym = dlsym(RTLD_NEXT, name);
  if (sym == nullptr) {
    std::fprintf(stderr, "cannot find %s in libpq\n", name);
    std::abort();
  }
  F f;
  std::memcpy(&f, &sym, sizeof f);
  return f;
}

}  // namespace

// The program's own definitions come before libpq's, so every call from the
// database layer lands here first and is passed on.
extern "C" PGresult* PQexec(PGconn* conn, const char* query) {
  static auto real = RealPq<PGresult* (*)(PGconn*, const char*)>("PQexec");
  PqCall call;
  PGresult* r = real(conn, query);
  call.Done();
  if (!call.outer) return r;
  ++g_server.others;
  g_reading = nullptr;
  std::string text(query ? query : "");
  ++g_exec_by_word[text.substr(0, text.find_first_of(" (;"))];
  return r;
}

extern "C" PGresult* PQexecParams(PGconn* conn, const char* command, int nParams, const Oid* paramTypes,
                                  const char* const* paramValues, const int* paramLengths,
                                  const int* paramFormats, int resultFormat) {
  static auto real = RealPq<PGresult* (*)(PGconn*, const char*, int, const Oid*, const char* const*,
                                          const int*, const int*, int)>("PQexecParams");
  PqCall call;
  PGresult* r = real(conn, command, nParams, paramTypes, paramValues, paramLengths, paramFormats, resultFormat);
  call.Done();
  if (call.outer) ++g_server.others;
  return r;
}

extern "C" PGresult* PQprepare(PGconn* conn, const char* stmtName, const char* query, int nParams,
                               const Oid* paramTypes) {
  static auto real = RealPq<PGresult* (*)(PGconn*, const char*, const char*, int, const Oid*)>("PQprepare");
  PqCall call;
  PGresult* r = real(conn, stmtName, query, nParams, paramTypes);
  call.Done();
  if (!call.outer) return r;
  ++g_server.prepares;
  g_prepared[stmtName ? stmtName : ""] = &g_server_by_statement[query ? query : ""];
  return r;
}

// A prepared statement run whole.
extern "C" PGresult* PQexecPrepared(PGconn* conn, const char* stmtName, int nParams,
                                    const char* const* paramValues, const int* paramLengths,
                                    const int* paramFormats, int resultFormat) {
  static auto real = RealPq<PGresult* (*)(PGconn*, const char*, int, const char* const*, const int*,
                                          const int*, int)>("PQexecPrepared");
  PqCall call;
  PGresult* r = real(conn, stmtName, nParams, paramValues, paramLengths, paramFormats, resultFormat);
  const auto spent = call.Done();
  if (!call.outer) return r;
  ++g_server.executes;
  if (auto it = g_prepared.find(stmtName ? stmtName : ""); it != g_prepared.end()) {
    it->second->spent += spent;
    ++it->second->runs;
  }
  return r;
}

// A prepared statement sent, its rows read after by PQgetResult (in
// portions), whose waits are charged to it.
extern "C" int PQsendQueryPrepared(PGconn* conn, const char* stmtName, int nParams,
                                   const char* const* paramValues, const int* paramLengths,
                                   const int* paramFormats, int resultFormat) {
  static auto real = RealPq<int (*)(PGconn*, const char*, int, const char* const*, const int*, const int*,
                                    int)>("PQsendQueryPrepared");
  PqCall call;
  const int sent = real(conn, stmtName, nParams, paramValues, paramLengths, paramFormats, resultFormat);
  const auto spent = call.Done();
  if (!call.outer) return sent;
  ++g_server.executes;
  g_reading = nullptr;
  if (auto it = g_prepared.find(stmtName ? stmtName : ""); it != g_prepared.end()) {
    g_reading = it->second;
    g_reading->spent += spent;
    ++g_reading->runs;
  }
  return sent;
}

extern "C" PGresult* PQgetResult(PGconn* conn) {
  static auto real = RealPq<PGresult* (*)(PGconn*)>("PQgetResult");
  PqCall call;
  PGresult* r = real(conn);
  const auto spent = call.Done();
  if (call.outer && g_reading != nullptr) g_reading->spent += spent;
  return r;
}

namespace {

// The server URL with its database name replaced: "postgresql://u@h:p/x?o"
// becomes "postgresql://u@h:p/NAME?o".
std::string WithDatabase(const std::string& url, const std::string& name) {
  const size_t scheme = url.find("://");
  if (scheme == std::string::npos) return "";
  const size_t query = url.find('?', scheme + 3);
  const size_t slash = url.find('/', scheme + 3);
  const std::string tail = query == std::string::npos ? "" : url.substr(query);
  const size_t host_end = slash != std::string::npos && slash < query ? slash : std::min(query, url.size());
  return url.substr(0, host_end) + "/" + name + tail;
}

std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// The lines of a text, sorted: two reports that list the same rows and
// differ only in the order of rows with equal sort keys (two patients of one
// name) have the same sorted lines.
std::vector<std::string> SortedLines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  std::sort(lines.begin(), lines.end());
  return lines;
}

double Seconds(BenchClock::duration d) { return std::chrono::duration<double>(d).count(); }

// One run of one report on one engine.
struct Run {
  double seconds = 0;
  double engine_seconds = 0;  // inside SQLite, or waiting on the server
  int pages = 0;
  long round_trips = 0;       // on the server
  long prepares = 0;
  int64_t batched = 0;        // lookups answered from a batched read
  std::string text;           // what the report wrote
  std::string message;        // the first message box it showed, if any
};

}  // namespace

int main(int argc, char** argv) {
  using namespace orv;
  if (argc < 2) {
    std::fprintf(stderr, "usage: bench_engines SERVER_URL [PATIENTS=5000]\n");
    return 2;
  }
  // A line at a time, so that a long run shows its progress in a log.
  std::setvbuf(stdout, nullptr, _IOLBF, 0);
  const std::string server_url = argv[1];
  const int patients = argc > 2 ? std::atoi(argv[2]) : 5000;
  const std::string pg_url = WithDatabase(server_url, "orvenda_bench_engines");
  if (pg_url.empty() || patients < 1) {
    std::fprintf(stderr, "bench_engines: want a postgresql:// URL and a number of patients from 1\n");
    return 2;
  }
  const std::filesystem::path dir =
      std::filesystem::temp_directory_path() / ("orvenda_bench_engines_" + std::to_string(::getpid()));
  std::filesystem::create_directories(dir);
  const std::string sqlite_path = (dir / "practice.db").string();

  // One practice for both engines: the file, and the server copy of it made
  // before any report runs (the bulk statements stamp the accounts).
  practice::DemoOptions options;
  options.patients = patients;
  options.seed = 20261120;
  options.today_year = 2026;
  options.today_month = 11;
  options.today_day = 23;
  auto t0 = BenchClock::now();
  const practice::DemoSummary demo = practice::WriteDemoPracticeFile(sqlite_path, options);
  const double made = Seconds(BenchClock::now() - t0);
  t0 = BenchClock::now();
  db::CopyOptions copy;
  copy.replace = true;
  const db::CopySummary copied = db::CopyDatabase(sqlite_path, pg_url, copy);
  const double copy_seconds = Seconds(BenchClock::now() - t0);
  // The copy leaves the server without statistics on the new tables until
  // autovacuum comes round (up to a minute later, longer on a busy server);
  // a report planned before that can take minutes where it takes seconds
  // after. Measured here is the settled server: ANALYZE now, unless
  // BENCH_ENGINES_NO_ANALYZE asks for the state right after the copy.
  const bool analyze = std::getenv("BENCH_ENGINES_NO_ANALYZE") == nullptr;
  double analyze_seconds = 0;
  if (analyze) {
    t0 = BenchClock::now();
    PGconn* admin = PQconnectdb(pg_url.c_str());
    PGresult* done = PQstatus(admin) == CONNECTION_OK ? PQexec(admin, "ANALYZE") : nullptr;
    const bool ok = done != nullptr && PQresultStatus(done) == PGRES_COMMAND_OK;
    if (!ok) std::fprintf(stderr, "bench_engines: ANALYZE failed: %s", PQerrorMessage(admin));
    PQclear(done);
    PQfinish(admin);
    if (!ok) return 1;
    analyze_seconds = Seconds(BenchClock::now() - t0);
  }
  std::printf("practice: %lld patients, %lld invoices, %lld payments (%.1f s); copied %d tables, %lld rows to %s (%.1f s)\n",
              static_cast<long long>(demo.patients), static_cast<long long>(demo.invoices),
              static_cast<long long>(demo.payments), made, copied.tables, static_cast<long long>(copied.rows),
              pg_url.c_str(), copy_seconds);
  if (analyze) std::printf("ANALYZE on the server: %.1f s\n", analyze_seconds);
  else std::printf("no ANALYZE: the server plans without statistics\n");

  // The counts below are the reports' alone, not the copy's.
  g_server = ServerCalls();
  g_exec_by_word.clear();
  for (auto& [text, t] : g_server_by_statement) t = StatementTime();

  Clock::SetFixed(DateTime::FromParts(2026, 11, 23, 10, 0, 0));
  const DateTime end = DateTime::FromParts(2026, 11, 23);

  struct Engine {
    const char* name;
    std::string url;
    db::Connection conn;
  };
  // The server twice: with per-row lookups batched (the default), and with
  // every lookup sent as its own statement, to show what batching saves.
  Engine engines[3] = {{"sqlite", sqlite_path, {}}, {"postgresql", pg_url, {}}, {"postgresql-1by1", pg_url, {}}};
  for (Engine& e : engines) e.conn.Open(e.url);
  engines[2].conn.BatchLookups(false);

  {
    db::Recordset families;
    families.Open("SELECT COUNT(DISTINCT PrimaryHolderID) AS N FROM Patient WHERE NOT PrimaryHolderID IS NULL",
                  engines[0].conn);
    std::printf("families: %d\n", static_cast<int>(CLng(families["N"].Value())));
    families.Close();
  }

  // Runs a report on one engine as the report host does: a form writing to
  // a text file, the settings naming the same database for any second
  // connection, one snapshot around the whole report.
  auto run = [&](Engine& e, const std::string& report, const std::function<void(clsReports&, PreviewForm&)>& body) {
    host::AppSettings().Override("Settings", "ServerName", e.url);
    const std::string out = (dir / (report + "-" + e.name + ".txt")).string();
    PreviewForm form;
    form.SetNotifier([](const std::string&) {});
    form.SetOutput(out);
    host::RecordingHost host;
    clsReports reports;
    reports.SetHostServices(&host);
    reports.Connection(e.conn);
    reports.SetPrintPreview(&form);
    reports.OfficeID = 1;
    reports.InterestRate = 0.02f;

    const auto sql0 = g_sql_time;
    const ServerCalls server0 = g_server;
    const auto start = BenchClock::now();
    Run r;
    {
      db::Snapshot snapshot(e.conn);
      body(reports, form);
      r.batched = e.conn.BatchedLookupCount();
    }
    if (form.ShowCount() == 0 && form.PrintCount() == 0 && form.VSP.PageCount() > 0) form.Show();
    r.seconds = Seconds(BenchClock::now() - start);
    r.engine_seconds = Seconds((g_sql_time - sql0) + (g_server.wait - server0.wait));
    r.round_trips = g_server.round_trips() - server0.round_trips();
    r.prepares = g_server.prepares - server0.prepares;
    r.pages = form.VSP.PageCount();
    r.text = ReadFile(out);
    if (!host.messages.empty()) r.message = host.messages.front().prompt;
    return r;
  };

  struct Report {
    std::string name;
    std::function<void(clsReports&, PreviewForm&)> body;
  };
  const std::vector<Report> reports = {
      {"rptAccountsReceivable", [](clsReports& r, PreviewForm&) { r.rptAccountsReceivable("", "", "", "bench"); }},
      {"srptAccountReceivable",
       [&](clsReports& r, PreviewForm& f) {
         f.VSP.StartDoc();
         r.srptAccountReceivable(end, 0, "", "bench");
         f.VSP.EndDoc();
       }},
      {"rptPatientsWithABalance", [&](clsReports& r, PreviewForm&) { r.rptPatientsWithABalance("bench", end, ""); }},
      {"rptUnAppliedPayments", [&](clsReports& r, PreviewForm&) { r.rptUnAppliedPayments(end, "bench"); }},
      {"rptFamiliesWithABalance", [](clsReports& r, PreviewForm&) { r.rptFamiliesWithABalance("bench"); }},
      // A statement for every family with something to pay.
      {"rptBulkStatements",
       [](clsReports& r, PreviewForm&) { r.rptBulkStatements("", "", true, "Bench statements", Variant(true)); }},
  };

  std::printf("\n%-24s %9s %9s %7s %9s %7s %6s %6s %5s %9s %9s %8s %8s %8s\n", "report", "sqlite s", "pg s",
              "pg/lite", "1by1 s", "1/lite", "pages", "pg pg", "same", "in lite", "wait pg", "trips", "prepares",
              "batched");
  double total[3] = {0, 0, 0};
  bool all_same = true;
  // BENCH_ENGINES_ONLY=rptA,rptB runs those reports alone.
  const std::string only = std::getenv("BENCH_ENGINES_ONLY") ? std::getenv("BENCH_ENGINES_ONLY") : "";
  for (const Report& report : reports) {
    if (!only.empty() && ("," + only + ",").find("," + report.name + ",") == std::string::npos) continue;
    const Run lite = run(engines[0], report.name, report.body);
    const Run single = run(engines[2], report.name, report.body);
    const Run pg = run(engines[1], report.name, report.body);
    total[0] += lite.seconds;
    total[1] += pg.seconds;
    total[2] += single.seconds;
    // "order": the same lines, but rows of equal sort keys in another order.
    const bool same = lite.text == pg.text && single.text == pg.text;
    const bool reordered = !same && SortedLines(lite.text) == SortedLines(pg.text) &&
                           SortedLines(single.text) == SortedLines(pg.text);
    all_same = all_same && (same || reordered) && lite.pages == pg.pages && single.pages == pg.pages;
    std::printf("%-24s %9.3f %9.3f %7.2f %9.3f %7.2f %6d %6d %5s %9.3f %9.3f %8ld %8ld %8lld\n", report.name.c_str(),
                lite.seconds, pg.seconds, lite.seconds > 0 ? pg.seconds / lite.seconds : 0.0, single.seconds,
                lite.seconds > 0 ? single.seconds / lite.seconds : 0.0, lite.pages, pg.pages,
                same ? "yes" : reordered ? "order" : "NO", lite.engine_seconds, pg.engine_seconds, pg.round_trips,
                pg.prepares, static_cast<long long>(pg.batched));
    if (lite.pages != pg.pages || single.pages != pg.pages)
      std::printf("  WARNING: %s made %d pages on SQLite, %d on PostgreSQL, %d key by key\n", report.name.c_str(),
                  lite.pages, pg.pages, single.pages);
    if (!same && !reordered)
      std::printf("  WARNING: %s wrote different text on SQLite, PostgreSQL and PostgreSQL key by key\n",
                  report.name.c_str());
    for (const Run* r : {&lite, &pg, &single})
      if (!r->message.empty())
        std::printf("  %s showed: %.200s\n", r == &lite ? "sqlite" : r == &pg ? "postgresql" : "key by key",
                    r->message.c_str());
  }
  std::printf("%-24s %9.3f %9.3f %7.2f %9.3f %7.2f\n", "total", total[0], total[1],
              total[0] > 0 ? total[1] / total[0] : 0.0, total[2], total[0] > 0 ? total[2] / total[0] : 0.0);

  // Where the server's time went, over every report.
  std::printf("\nround trips to the server: %ld prepares, %ld executes, %ld others (", g_server.prepares,
              g_server.executes, g_server.others);
  bool first = true;
  for (const auto& [word, n] : g_exec_by_word) {
    std::printf("%s%s %ld", first ? "" : ", ", word.c_str(), n);
    first = false;
  }
  std::printf(")\nserver statements that took the most time:\n");
  std::vector<std::pair<BenchClock::duration, const std::string*>> slowest;
  for (const auto& [text, t] : g_server_by_statement)
    if (t.runs > 0) slowest.emplace_back(t.spent, &text);
  std::sort(slowest.begin(), slowest.end(), [](const auto& a, const auto& b) { return a.first > b.first; });
  for (size_t i = 0; i < slowest.size() && i < 8; ++i) {
    const StatementTime& t = g_server_by_statement[*slowest[i].second];
    std::printf("  %7.3f s %7ld runs %8.1f us/run  %.300s\n", Seconds(t.spent), t.runs,
                t.runs ? 1e6 * Seconds(t.spent) / static_cast<double>(t.runs) : 0.0, slowest[i].second->c_str());
  }
  if (std::getenv("BENCH_ENGINES_STATEMENTS") != nullptr) {
    // Every server statement with its time, for a closer look.
    std::ofstream all(std::getenv("BENCH_ENGINES_STATEMENTS"));
    for (const auto& [spent, text] : slowest) {
      const StatementTime& t = g_server_by_statement[*text];
      all << Seconds(spent) << '\t' << t.runs << '\t' << *text << "\n\n";
    }
  }

  for (Engine& e : engines) e.conn.Close();
  // BENCH_ENGINES_KEEP set: the practice file and the reports' texts stay.
  if (std::getenv("BENCH_ENGINES_KEEP") != nullptr) std::printf("\nfile and outputs kept in %s\n", dir.c_str());
  else std::filesystem::remove_all(dir);
  return all_same ? 0 : 1;
}

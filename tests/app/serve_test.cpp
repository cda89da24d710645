// The browser host's HTTP interface, served in the test's own process and
// asked as the page asks it: the catalogue, runs to their end, documents
// whose text equals the command line's, bad input refused field by field,
// the token, and two runs at once on SQLite and on PostgreSQL.
#include <gtest/gtest.h>
#include <httplib.h>

#include <nlohmann/json.hpp>
#include <set>
#include <thread>

#include "app/host_support.h"
#include "command.h"
#include "serve/server.h"
#include "support/postgres.h"

namespace {

namespace fs = std::filesystem;
using json = nlohmann::json;
using orv::app::serve::ReportServer;
using orv::app::serve::ServeOptions;
using orv::testing::HostProgram;
using orv::testing::HostShell;
using orv::testing::ShellQuote;

// A server on a free loopback port in a thread of its own, stopped and
// joined by the destructor.
class LiveServer {
 public:
  explicit LiveServer(ServeOptions options) : server_(std::move(options)) {
    port_ = server_.Bind();
    thread_ = std::thread([this] { server_.Listen(); });
  }
  ~LiveServer() {
    server_.Stop();
    thread_.join();
  }
  httplib::Client Client() const {
    httplib::Client c("127.0.0.1", port_);
    c.set_read_timeout(600, 0);
    return c;
  }
  ReportServer& server() { return server_; }

 private:
  ReportServer server_;
  int port_ = 0;
  std::thread thread_;
};

ServeOptions Options(const std::string& db, int workers = 2) {
  ServeOptions o;
  o.run.db = db;
  o.run.office = 1;
  o.run.user = "desk";
  o.run.workers = workers;
  o.port = 0;
  return o;
}

json Json(const httplib::Result& r) {
  EXPECT_TRUE(r) << "no answer";
  return r ? json::parse(r->body) : json();
}

// The address of a run the server started.
std::string RunUrl(const json& run) {
  return "/api/runs/" + std::to_string(run["id"].get<int>());
}
json Status(httplib::Client& c, const json& run) {
  return Json(c.Get(RunUrl(run)));
}
bool Ended(const json& status) {
  return status["state"] == "done" || status["state"] == "failed";
}
httplib::Result PostJson(httplib::Client& c, const std::string& path, const std::string& body) {
  return c.Post(path, body, "application/json");
}

json StartRun(httplib::Client& c, const json& body) {
  auto r = PostJson(c, "/api/runs", body.dump());
  EXPECT_TRUE(r);
  EXPECT_EQ(r->status, 202) << r->body;
  return json::parse(r->body);
}

// Polls the run until it has ended (bounded: two minutes at most), calling
// `each` with every status seen.
json WaitEnded(httplib::Client& c, const json& run,
               const std::function<void(const json&)>& each = {}) {
  json s;
  for (int i = 0; i < 1200; ++i) {
    s = Status(c, run);
    if (each) each(s);
    if (Ended(s)) return s;
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  }
  ADD_FAILURE() << RunUrl(run) << " did not end: " << s.dump();
  return s;
}

// Polls two runs every 10 ms, calling `each` with both statuses, until
// `until` says so (at most 24 s).
void Watch(httplib::Client& c, const json& a, const json& b,
           const std::function<bool(const json&, const json&)>& each) {
  for (int i = 0; i < 2400; ++i) {
    if (each(Status(c, a), Status(c, b))) return;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
}

std::string PdfTextOfBytes(const std::string& bytes, const std::string& dir,
                           const std::string& name) {
  std::string file = dir + "/" + name + ".pdf";
  std::ofstream(file, std::ios::binary) << bytes;
  return orv::testing::RunShell("pdftotext -layout " + file + " -").out;
}

// The same report from the command line, as its PDF's text.
std::string CommandLineText(const std::string& db, const std::string& dir, const std::string& name,
                            const std::string& args) {
  std::string file = dir + "/" + name + "-cli.pdf";
  auto r = HostShell(HostProgram() + " --db " + ShellQuote(db) +
                     " --today 2026-11-20 --office 1 --user desk --out " + file + " " + args);
  EXPECT_EQ(r.status, 0) << r.out;
  return orv::testing::RunShell("pdftotext -layout " + file + " -").out;
}

class Serve : public orv::testing::HostSuite {
 protected:
  static void SetUpTestSuite() {
    MakePractice("serve", 200, 2);
    orv::app::ApplyToday("2026-11-20");
  }
  // A copy of the demo practice named `name`, changed by `updates`.
  static std::string ChangedCopy(const std::string& name,
                                 std::initializer_list<std::string> updates) {
    std::string db = At(name);
    fs::copy_file(Db(), db, fs::copy_options::overwrite_existing);
    for (const auto& update : updates) orv::testing::EditPractice(db, update);
    return db;
  }
  static std::string ReferralOfPatient5(const std::string& db) {
    return Host("sql --db " + db + " \"SELECT ReferringDentistID FROM Patient WHERE ID = 5\"").out;
  }
  // A referral link that points nowhere makes the check ask to repair it.
  static constexpr const char* kBrokenReferral =
      "UPDATE Patient SET ReferringDentistID = 99999 WHERE ID = 5";
};

TEST_F(Serve, CatalogueGivesEachParameterItsField) {
  LiveServer live(Options(Db()));
  auto c = live.Client();
  json m = Json(c.Get("/api/methods"));
  EXPECT_EQ(m["allow_filters"], false);
  EXPECT_EQ(m["today"], "2026-11-20");
  auto find = [&](const std::string& name) {
    for (const auto& x : m["methods"])
      if (x["name"] == name) return x;
    ADD_FAILURE() << "no method " << name;
    return json();
  };
  struct Case {
    const char* method;
    const char* param;
    const char* kind;
    const char* column;
  } cases[] = {
      {"rptStatements", "dtStart", "date", ""},
      {"rptStatements", "PatientIDs", "patients", ""},
      {"rptStatements", "Family", "boolean", ""},
      {"rptAccountsReceivable", "txtProvFilter", "providers", "ID"},
      {"rptAccountsReceivable", "txtInvFilter", "filter", ""},
      {"rptAccountsReceivable", "UserName", "user", ""},
      {"srptAppointments", "ProviderFilter", "providers", "ProviderID"},
      {"rptDaySheet", "Providers", "provider-list", ""},
      {"rptFamilyAppointmentsSummary", "ID", "patient", ""},
      {"rptFolderLabelsSingleSheet", "Position", "enum", ""},
      {"rptFeeGuide", "ID", "integer", ""},
  };
  for (const auto& k : cases) {
    SCOPED_TRACE(std::string(k.method) + "." + k.param);
    json method = find(k.method);
    ASSERT_TRUE(method.is_object());
    EXPECT_EQ(method["built"], true);
    bool seen = false;
    for (const auto& p : method["params"]) {
      if (p["name"] != k.param) continue;
      seen = true;
      EXPECT_EQ(p["kind"], k.kind);
      EXPECT_EQ(p["column"], k.column);
    }
    EXPECT_TRUE(seen);
  }
  // Enumerations carry their members for the select.
  json position = find("rptFolderLabelsSingleSheet")["params"][1];
  ASSERT_EQ(position["values"].size(), 4u);
  EXPECT_EQ(position["values"][0]["name"], "rptTop");
  // Every family the catalogue names, in its order, once.
  std::set<std::string> families(m["families"].begin(), m["families"].end());
  EXPECT_EQ(families.size(), m["families"].size());
  EXPECT_TRUE(families.count("Receivables"));
  EXPECT_TRUE(families.count("Statements"));
}

TEST_F(Serve, RunsEndWithTheCommandLinesDocument) {
  LiveServer live(Options(Db()));
  auto c = live.Client();
  // A run of statements, its arguments by name (in order, and other
  // reports' documents against the command line's: TwoRunsAtOnce).
  const std::string cli = "rptStatements 2026-01-01 2026-11-20 12,20,31 True";
  const json started = StartRun(c, {{"method", "rptStatements"},
                                    {"args",
                                     {{"dtStart", "2026-01-01"},
                                      {"dtEnd", "2026-11-20"},
                                      {"PatientIDs", "12,20,31"},
                                      {"Family", true}}}});
  const std::string run = RunUrl(started);
  int last_progress = 0;
  bool rose = true;
  json s = WaitEnded(c, started, [&](const json& st) {
    rose = rose && st["progress"].get<int>() >= last_progress;
    last_progress = st["progress"];
  });
  ASSERT_EQ(s["state"], "done") << s.dump();
  EXPECT_TRUE(rose) << "progress went back";
  EXPECT_EQ(s["progress"], 100);
  const int pages = s["pages"];
  ASSERT_GE(pages, 1);
  auto pdf = c.Get(run + "/document.pdf");
  ASSERT_TRUE(pdf);
  ASSERT_EQ(pdf->status, 200);
  EXPECT_EQ(pdf->get_header_value("Content-Type"), "application/pdf");
  EXPECT_EQ(PdfTextOfBytes(pdf->body, dir, "by-name"), CommandLineText(Db(), dir, "by-name", cli));

  // A page image is a PNG, the same bytes the second time (kept, not drawn
  // again), and there is no page past the last. The CSV is the command
  // line's --out FILE.csv.
  const std::string page = run + "/pages/";
  auto png = c.Get(page + "1.png");
  ASSERT_TRUE(png);
  ASSERT_EQ(png->status, 200);
  EXPECT_EQ(png->body.substr(1, 3), "PNG");
  EXPECT_EQ(c.Get(page + "1.png")->body, png->body);
  EXPECT_LT(c.Get(page + "1.png?dpi=20")->body.size(), png->body.size());
  EXPECT_EQ(c.Get(page + std::to_string(pages + 1) + ".png")->status, 404);
  EXPECT_EQ(c.Get(page + "99999999999999999999.png")->status, 404);
  auto cli_csv = Report("--out " + At("run-cli.csv"), cli);
  ASSERT_EQ(cli_csv.status, 0) << cli_csv.out;
  auto csv = c.Get(run + "/document.csv");
  ASSERT_EQ(csv->status, 200);
  EXPECT_EQ(csv->body, orv::testing::FileBytes(At("run-cli.csv")));
  EXPECT_NE(c.Get(run + "/document.txt")->body.find("Page 1 of"), std::string::npos);
  // One PDF per statement, zipped: the files the command line's --split
  // writes, by the same names, each intact.
  auto zip = c.Get(run + "/statements.zip");
  ASSERT_EQ(zip->status, 200) << zip->body;
  std::ofstream(dir + "/statements.zip", std::ios::binary) << zip->body;
  std::string listed = orv::testing::RunShell(
                           "python3 -c \"import zipfile,sys; z=zipfile.ZipFile(sys.argv[1]); "
                           "assert z.testzip() is None; "
                           "print('\\n'.join(sorted(z.namelist())))\" " +
                           dir + "/statements.zip")
                           .out;
  auto split = Report("--split --out " + At("split/"), cli);
  ASSERT_EQ(split.status, 0) << split.out;
  EXPECT_EQ(listed, orv::testing::RunShell("ls " + dir + "/split | sort").out);
  EXPECT_NE(listed.find(".pdf"), std::string::npos);

  // The synchronous link: the same PDF for arguments by name.
  auto linked = c.Get("/run/rptAccountsReceivable?Comments=&txtProvFilter=&txtInvFilter=");
  ASSERT_TRUE(linked);
  ASSERT_EQ(linked->status, 200) << linked->body;
  EXPECT_EQ(PdfTextOfBytes(linked->body, dir, "linked"),
            CommandLineText(Db(), dir, "aged", "rptAccountsReceivable '' '' '' desk"));
  // Providers as the picker writes them pass without --allow-filters, and
  // the run prints those two and nobody else.
  auto picked = c.Get(
      "/run/rptAccountsReceivable?Comments=&txtProvFilter=ID%20%3D%203%20OR%20ID%20%3D%204"
      "&txtInvFilter=");
  ASSERT_TRUE(picked);
  ASSERT_EQ(picked->status, 200) << picked->body;
  const std::string picked_text = PdfTextOfBytes(picked->body, dir, "picked");
  EXPECT_EQ(picked_text, CommandLineText(Db(), dir, "aged-picked",
                                         "rptAccountsReceivable '' 'ID = 3 OR ID = 4' '' desk"));
  EXPECT_NE(picked_text.find("Odette Holloway"), std::string::npos) << picked_text;
  EXPECT_NE(picked_text.find("Maren Northcott"), std::string::npos) << picked_text;
  EXPECT_EQ(picked_text.find("Priya Vance"), std::string::npos) << picked_text;
}

TEST_F(Serve, BadInputIsRefusedBesideItsField) {
  LiveServer live(Options(Db()));
  auto c = live.Client();
  struct Case {
    const char* name;
    json body;
    const char* field;  // "" for the request as a whole
    const char* says;
  } cases[] = {
      {"no date",
       {{"method", "rptUnAppliedPayments"}, {"args", {{"dtEndDate", "2026-02-30"}}}},
       "dtEndDate",
       "wants a date"},
      {"missing",
       {{"method", "rptUnAppliedPayments"}, {"args", json::object()}},
       "dtEndDate",
       "missing argument dtEndDate"},
      {"typed SQL",
       {{"method", "rptAccountsReceivable"}, {"args", {"", "1=1; DROP TABLE Patient", "", ""}}},
       "txtProvFilter",
       "--allow-filters"},
      {"unknown parameter",
       {{"method", "rptFeeGuide"}, {"args", {{"Guide", "1"}}}},
       "",
       "has no parameter Guide"},
      {"unknown method",
       {{"method", "rptNothing"}, {"args", json::array()}},
       "",
       "no report rptNothing"},
      {"not built", {{"method", "SetPrintPreview"}, {"args", json::array()}}, "", "not built"},
  };
  for (const auto& k : cases) {
    SCOPED_TRACE(k.name);
    auto r = PostJson(c, "/api/runs", k.body.dump());
    ASSERT_TRUE(r);
    EXPECT_EQ(r->status, 400);
    json e = json::parse(r->body);
    std::string said = *k.field ? e["fields"].value(k.field, "") : e["error"].get<std::string>();
    EXPECT_NE(said.find(k.says), std::string::npos) << r->body;
  }
  auto garbled = PostJson(c, "/api/runs", "{method");
  EXPECT_EQ(garbled->status, 400);
  // A report that fails says why; its document is not offered.
  json started = StartRun(c, {{"method", "rptInsuranceCompanyLabels"}, {"args", {"999999"}}});
  json s = WaitEnded(c, started);
  EXPECT_EQ(s["state"], "failed");
  EXPECT_FALSE(s["error"].get<std::string>().empty());
  EXPECT_EQ(c.Get(RunUrl(started) + "/document.pdf")->status, 409);
  EXPECT_EQ(c.Get("/api/runs/424242")->status, 404);
  EXPECT_EQ(c.Get("/api/runs/99999999999999999999")->status, 404);
}

TEST_F(Serve, AQuestionWaitsForItsAnswer) {
  std::string db = ChangedCopy("broken.db", {kBrokenReferral});
  LiveServer live(Options(db));
  auto c = live.Client();
  json started =
      StartRun(c, {{"method", "CheckRelationships"},
                   {"args", {"ReferringDentists", "ID", "Patient", "ReferringDentistID"}}});
  const std::string answer = RunUrl(started) + "/answer";
  json asked;
  for (int i = 0; i < 600 && asked.is_null(); ++i) {
    json s = Status(c, started);
    if (s["state"] == "question")
      asked = s;
    else
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  ASSERT_FALSE(asked.is_null()) << "no question came";
  EXPECT_NE(asked["question"].get<std::string>().find("repair"), std::string::npos);
  EXPECT_EQ(PostJson(c, answer, R"({"answer":"maybe"})")->status, 400);
  EXPECT_EQ(PostJson(c, answer, R"({"answer":"no"})")->status, 200);
  json s = WaitEnded(c, started);
  ASSERT_EQ(s["state"], "done");
  // Not repaired: the link stays broken and the check says False.
  EXPECT_EQ(s["result"], "False");
  EXPECT_EQ(ReferralOfPatient5(db), "ReferringDentistID\n99999\n");
  // Nothing waits any more.
  EXPECT_EQ(PostJson(c, answer, R"({"answer":"yes"})")->status, 409);
}

TEST_F(Serve, TokenGuardsEveryRequest) {
  ServeOptions o = Options(Db());
  o.token = "s3cret-token";
  LiveServer live(o);
  auto c = live.Client();
  struct Case {
    const char* name;
    httplib::Headers headers;
    const char* path;
    int status;
  } cases[] = {
      {"none", {}, "/api/methods", 401},
      {"wrong", {{"Authorization", "Bearer s3cret-tokeN"}}, "/api/methods", 401},
      {"bearer", {{"Authorization", "Bearer s3cret-token"}}, "/api/methods", 200},
      {"cookie", {{"Cookie", "a=b; orvenda_token=s3cret-token"}}, "/api/providers", 200},
      {"parameter", {}, "/api/methods?token=s3cret-token", 200},
  };
  for (const auto& k : cases) {
    SCOPED_TRACE(k.name);
    auto r = c.Get(k.path, k.headers);
    ASSERT_TRUE(r);
    EXPECT_EQ(r->status, k.status);
  }
  // Opened with its token, the page keeps it as a cookie for its own
  // requests.
  auto page = c.Get("/?token=s3cret-token");
  EXPECT_EQ(page->status, 200);
  EXPECT_NE(page->get_header_value("Set-Cookie").find("orvenda_token=s3cret-token"),
            std::string::npos);
  EXPECT_NE(page->body.find("<title>Orvenda reports</title>"), std::string::npos);
}

TEST_F(Serve, OtherMachinesNeedAToken) {
  ServeOptions open = Options(Db());
  open.host = "0.0.0.0";
  EXPECT_THROW(ReportServer{open}, std::invalid_argument);
  // Without a token, a name that is not this machine's is refused, so a
  // page elsewhere cannot reach the server through its own DNS name.
  LiveServer live(Options(Db()));
  auto c = live.Client();
  EXPECT_EQ(c.Get("/api/methods", {{"Host", "reports.example.com"}})->status, 403);
  EXPECT_EQ(c.Get("/api/methods", {{"Host", "localhost:8640"}})->status, 200);
  // The command refuses to start as well, and says how.
  auto r = HostShell(HostProgram() + " serve --db " + Db() + " --listen 0.0.0.0:0");
  EXPECT_EQ(r.status, 2);
  EXPECT_NE(r.out.find("--token"), std::string::npos) << r.out;
}

TEST_F(Serve, RefusesToStartWithoutItsDatabase) {
  auto r = HostShell(HostProgram() + " serve --db " + dir + "/missing.db --listen 127.0.0.1:0");
  EXPECT_EQ(r.status, 2);
  EXPECT_NE(r.out.find("cannot open the database"), std::string::npos) << r.out;
  EXPECT_FALSE(fs::exists(dir + "/missing.db"));
}

// Two long runs started together on a server with two workers: both are
// running at one moment, each ends with the document it would have alone.
void TwoRunsAtOnce(const std::string& db, const std::string& dir) {
  LiveServer live(Options(db, 2));
  auto c = live.Client();
  json a = StartRun(c, {{"method", "rptAccountsReceivable"}, {"args", {"", "", "", "desk"}}});
  json b = StartRun(c, {{"method", "rptStatements"},
                        {"args", {"2026-01-01", "2026-11-20", "12,20,31,40", "True"}}});
  bool together = false;
  Watch(c, a, b, [&](const json& sa, const json& sb) {
    together = together || (sa["state"] == "running" && sb["state"] == "running");
    return Ended(sa) && Ended(sb);
  });
  EXPECT_TRUE(together) << "the two runs never ran at the same time";
  ASSERT_EQ(WaitEnded(c, a)["state"], "done");
  ASSERT_EQ(WaitEnded(c, b)["state"], "done");
  EXPECT_EQ(PdfTextOfBytes(c.Get(RunUrl(a) + "/document.pdf")->body, dir, "two-a"),
            CommandLineText(db, dir, "two-a", "rptAccountsReceivable '' '' '' desk"));
  EXPECT_EQ(
      PdfTextOfBytes(c.Get(RunUrl(b) + "/document.pdf")->body, dir, "two-b"),
      CommandLineText(db, dir, "two-b", "rptStatements 2026-01-01 2026-11-20 12,20,31,40 True"));
}

// A run is cancelled from the page: a queued one never starts; one in
// progress stops at its next progress raise, ends as a failed run marked
// cancelled with no document, and frees its worker; one that waits on a
// question stops without its answer.
TEST_F(Serve, ACancelledRunStopsAndFreesItsWorker) {
  std::string db = ChangedCopy("cancel.db", {kBrokenReferral});
  LiveServer live(Options(db, 1));
  auto c = live.Client();
  auto cancel = [&](const json& run) { return PostJson(c, RunUrl(run) + "/cancel", ""); };
  auto status = [&](const json& run) { return Status(c, run); };
  json longer = StartRun(c, {{"method", "rptBillingByClient"}, {"args", {"desk", "", "", ""}}});
  json queued = StartRun(c, {{"method", "rptFeeGuide"}, {"args", {"1"}}});
  json s;
  for (int i = 0; i < 6000; ++i) {
    s = status(longer);
    if (s["state"] != "queued" && s["progress"].get<int>() > 0) break;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  ASSERT_EQ(s["state"], "running") << s.dump();
  ASSERT_EQ(status(queued)["state"], "queued");

  auto r = cancel(queued);
  ASSERT_TRUE(r);
  EXPECT_EQ(r->status, 200) << r->body;
  r = cancel(longer);
  ASSERT_TRUE(r);
  EXPECT_EQ(r->status, 200) << r->body;
  json ended = WaitEnded(c, longer);
  EXPECT_EQ(ended["state"], "failed");
  EXPECT_EQ(ended["cancelled"], true) << ended.dump();
  EXPECT_EQ(ended["error"], "Cancelled.");
  EXPECT_LT(ended["progress"].get<int>(), 100);
  EXPECT_EQ(c.Get(RunUrl(longer) + "/document.pdf")->status, 409);
  json never = status(queued);
  EXPECT_EQ(never["state"], "failed");
  EXPECT_EQ(never["cancelled"], true);
  EXPECT_EQ(never["seconds"], 0) << "the queued run started";
  // An ended run cannot be cancelled.
  EXPECT_EQ(cancel(longer)->status, 409);

  // The worker is free for the next run, which asks a question; cancelled
  // while it waits, it stops without repairing anything.
  json asks = StartRun(c, {{"method", "CheckRelationships"},
                           {"args", {"ReferringDentists", "ID", "Patient", "ReferringDentistID"}}});
  for (int i = 0; i < 6000 && status(asks)["state"] != "question"; ++i)
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  ASSERT_EQ(status(asks)["state"], "question");
  EXPECT_EQ(cancel(asks)->status, 200);
  json stopped = WaitEnded(c, asks);
  EXPECT_EQ(stopped["cancelled"], true) << stopped.dump();
  EXPECT_EQ(ReferralOfPatient5(db), "ReferringDentistID\n99999\n");
  json next = StartRun(c, {{"method", "rptFeeGuide"}, {"args", {"1"}}});
  EXPECT_EQ(WaitEnded(c, next)["state"], "done");
  // A report without statements has none to zip.
  EXPECT_EQ(c.Get(RunUrl(next) + "/statements.zip")->status, 400);
}

TEST_F(Serve, TwoRunsAtOnceOnSqlite) {
  TwoRunsAtOnce(Db(), dir);
}

TEST_F(Serve, TwoRunsAtOnceOnPostgres) {
  ORV_REQUIRE_POSTGRES();
  orv::testing::FreshPgDatabase pg;
  auto copy = Host("copy-db " + Db() + " " + ShellQuote(pg.url()) + " --replace");
  ASSERT_EQ(copy.status, 0) << copy.out;
  TwoRunsAtOnce(pg.url(), dir);
}

// The patient picker finds a name however it is typed: with or without
// its accents, in any case, hyphens and apostrophes optional; every word
// must start the last or the first name. Both engines answer alike.
void PatientSearchFoldsAccentsAndCase(const std::string& db) {
  LiveServer live(Options(db));
  auto c = live.Client();
  struct Case {
    const char* name;
    const char* query;
    std::set<int> found, not_found;  // among patients 5, 6 and 7
  } cases[] = {
      {"accents left out", "etienne", {5}, {6, 7}},
      {"capitals with accents", "ÉTIENNE LEFÈVRE", {5}, {6, 7}},
      {"hyphenated last name", "lefevre-dube", {5}, {6, 7}},
      {"the second half is no prefix", "dube", {}, {5, 6, 7}},
      {"apostrophe left out", "oneil zoe", {6}, {5, 7}},
      {"apostrophe typed", "O'NEIL", {6}, {5, 7}},
      {"an accent on a plain name", "éric éthier", {7}, {5, 6}},
      {"every word must match", "etienne oneil", {}, {5, 6, 7}},
      {"a number is the patient", "6", {6}, {5, 7}},
  };
  for (const auto& k : cases) {
    SCOPED_TRACE(k.name);
    json found = Json(c.Get("/api/patients?q=" + httplib::detail::encode_query_param(k.query)));
    std::set<int> ids;
    for (const auto& p : found) ids.insert(p["id"].get<int>());
    for (int id : k.found) EXPECT_TRUE(ids.count(id)) << id << " " << found.dump();
    for (int id : k.not_found) EXPECT_FALSE(ids.count(id)) << id << " " << found.dump();
  }
}

TEST_F(Serve, PatientSearchFoldsAccentsAndCase) {
  std::string db = ChangedCopy(
      "names.db",
      {"UPDATE Patient SET LastName = 'Lefèvre-Dubé', FirstName = 'Étienne' WHERE ID = 5",
       "UPDATE Patient SET LastName = 'O''Neil', FirstName = 'Zoë' WHERE ID = 6",
       "UPDATE Patient SET LastName = 'Ethier', FirstName = 'Eric' WHERE ID = 7"});
  {
    SCOPED_TRACE("SQLite");
    PatientSearchFoldsAccentsAndCase(db);
  }
  if (orv::testing::TestServerUrl().empty()) return;
  SCOPED_TRACE("PostgreSQL");
  orv::testing::FreshPgDatabase pg;
  auto copy = Host("copy-db " + db + " " + ShellQuote(pg.url()) + " --replace");
  ASSERT_EQ(copy.status, 0) << copy.out;
  PatientSearchFoldsAccentsAndCase(pg.url());
}

TEST_F(Serve, PrintsToAQueueOfThisMachine) {
  LiveServer live(Options(Db()));
  auto c = live.Client();
  json started = StartRun(
      c, {{"method", "rptStatements"}, {"args", {"2026-01-01", "2026-11-20", "12", "True"}}});
  std::string run = RunUrl(started);
  ASSERT_EQ(WaitEnded(c, started)["state"], "done");
  // A queue the machine does not have is refused by name, before lp.
  auto unknown = PostJson(c, run + "/print", R"({"printer":"no-such-queue"})");
  EXPECT_EQ(unknown->status, 502);
  EXPECT_NE(unknown->body.find("no printer no-such-queue"), std::string::npos) << unknown->body;
  EXPECT_EQ(PostJson(c, run + "/print", "{}")->status, 400);

  // With a queue that writes its jobs to a file (the test command starts
  // one), the printed job reads back as the statement.
  json printers = Json(c.Get("/api/printers"))["printers"];
  std::string queue, file;
  for (const auto& p : printers)
    if (file.empty() && !(file = orv::testing::QueueFile(p)).empty()) queue = p;
  if (queue.empty()) GTEST_SKIP() << "no CUPS queue that prints to a file on this machine";
  fs::remove(file);
  auto printed = PostJson(c, run + "/print", json{{"printer", queue}}.dump());
  ASSERT_EQ(printed->status, 200) << printed->body;
  std::string expected = c.Get(run + "/document.txt")->body;
  std::string first_line = expected.substr(0, expected.find('\n'));
  std::string got;
  for (int i = 0; i < 300 && got.find(first_line) == std::string::npos; ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    if (fs::exists(file))
      got = orv::testing::RunShell("pdftotext -layout " + ShellQuote(file) + " - 2>/dev/null").out;
  }
  EXPECT_NE(got.find(first_line), std::string::npos)
      << "the printed job does not read as the statement";
}

}  // namespace

namespace {

TEST(ServeOptions, ReadsTheCommandsOptions) {
  using orv::app::serve::ParseServeOptions;
  struct Case {
    const char* name;
    std::vector<std::string> args;
    const char* host;
    int port;
  } good[] = {
      {"default", {}, "127.0.0.1", 8640},
      {"address", {"--listen", "192.168.1.20:9000", "--token", "t"}, "192.168.1.20", 9000},
      {"IPv6", {"--listen", "[::1]:8641"}, "::1", 8641},
      {"any port", {"--listen", "127.0.0.1:0"}, "127.0.0.1", 0},
  };
  for (const auto& k : good) {
    SCOPED_TRACE(k.name);
    auto o = ParseServeOptions(k.args);
    EXPECT_EQ(o.host, k.host);
    EXPECT_EQ(o.port, k.port);
  }
  struct Bad {
    const char* name;
    std::vector<std::string> args;
    const char* says;
  } bad[] = {
      {"no port", {"--listen", "127.0.0.1"}, "HOST:PORT"},
      {"port too big", {"--listen", "127.0.0.1:70000"}, "HOST:PORT"},
      {"no date", {"--today", "2026-02-30"}, "--today"},
      {"office", {"--office", "one"}, "--office"},
      {"workers", {"--workers", "0"}, "--workers"},
      {"unknown", {"--port", "1"}, "unknown option --port"},
      {"no value", {"--db"}, "--db wants a value"},
  };
  for (const auto& k : bad) {
    SCOPED_TRACE(k.name);
    try {
      ParseServeOptions(k.args);
      ADD_FAILURE() << "accepted";
    } catch (const std::invalid_argument& e) {
      EXPECT_NE(std::string(e.what()).find(k.says), std::string::npos) << e.what();
    }
  }
  // "new" stands for a fresh random token, different each time.
  auto a = ParseServeOptions({"--token", "new"}), b = ParseServeOptions({"--token", "new"});
  EXPECT_EQ(a.token.size(), 32u);
  EXPECT_NE(a.token, b.token);
  EXPECT_EQ(a.token.find_first_not_of("0123456789abcdef"), std::string::npos);
}

TEST(ServeOptions, TellsLoopbackAndPickedFilters) {
  using orv::app::serve::IsLoopback;
  using orv::app::serve::IsPickedFilter;
  for (const char* h : {"127.0.0.1", "127.1.2.3", "::1", "[::1]", "localhost", "LocalHost"})
    EXPECT_TRUE(IsLoopback(h)) << h;
  for (const char* h :
       {"0.0.0.0", "192.168.1.2", "::", "127.0.0.1.example.com", "localhost.example.com", ""})
    EXPECT_FALSE(IsLoopback(h)) << h;
  // What the pickers write passes; anything more is SQL a person typed.
  for (const char* f :
       {"", "0", "ProviderID = 3", "ProviderID = 3 OR ProviderID = 5", " ID=12 or ID = 14 "})
    EXPECT_TRUE(IsPickedFilter(f)) << f;
  for (const char* f : {"1=1", "ProviderID = 3 OR 1=1", "ProviderID = 3; DELETE FROM Patient",
                        "ProviderID IN (SELECT ID FROM Employees)", "ProviderID = 3 AND ID = 4",
                        "ProviderID = -1", "LastName = 'x'", "ProviderID = 3 --"})
    EXPECT_FALSE(IsPickedFilter(f)) << f;
}

}  // namespace

#include "serve/server.h"

#include <httplib.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <regex>

#include "command.h"
#include "common/collation.h"
#include "common/datetime.h"
#include "common/format.h"
#include "common/vbstrings.h"
#include "invokers.h"
#include "platform/db/connection_url.h"
#include "platform/db/recordset.h"
#include "platform/host/host_services.h"
#include "platform/render/csv.h"
#include "platform/render/letters.h"
#include "report_host.h"
#include "serve/catalog_json.h"
#include "serve/page.h"
#include "serve/printers.h"
#include "serve/zip.h"

namespace orv::app::serve {

using json = nlohmann::json;
namespace fs = std::filesystem;

bool IsLoopback(const std::string& host) {
  std::string h = vb::LCase(host);
  if (h == "localhost" || h == "::1" || h == "[::1]") return true;
  static const std::regex v4(R"(127\.\d{1,3}\.\d{1,3}\.\d{1,3})");
  return std::regex_match(h, v4);
}

std::string NewToken() {
  std::ifstream random("/dev/urandom", std::ios::binary);
  unsigned char bytes[16] = {};
  if (!random.read(reinterpret_cast<char*>(bytes), sizeof bytes))
    throw std::runtime_error("cannot read /dev/urandom for a token");
  std::string out;
  char hex[3];
  for (unsigned char b : bytes) {
    std::snprintf(hex, sizeof hex, "%02x", b);
    out += hex;
  }
  return out;
}

ServeOptions ParseServeOptions(const std::vector<std::string>& args) {
  ServeOptions o;
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string& a = args[i];
    auto value = [&]() -> std::string {
      if (i + 1 >= args.size()) throw std::invalid_argument(a + " wants a value");
      return args[++i];
    };
    if (a == "--db") {
      o.run.db = value();
    } else if (a == "--listen") {
      std::string v = value();
      size_t colon = v.rfind(':');
      auto port = colon == std::string::npos ? std::nullopt
                                             : ParseWholeNumber(v.substr(colon + 1), 0, 65535);
      if (!port || colon == 0)
        throw std::invalid_argument(
            "--listen wants HOST:PORT, e.g. --listen 127.0.0.1:8640; not '" + v + "'");
      o.host = v.substr(0, colon);
      // "[::1]:8640": the brackets only set the address apart from the port.
      if (o.host.size() > 2 && o.host.front() == '[' && o.host.back() == ']')
        o.host = o.host.substr(1, o.host.size() - 2);
      o.port = static_cast<int>(*port);
    } else if (a == "--today") {
      std::string v = value();
      if (!ParseDateArgument(v))
        throw std::invalid_argument("--today wants a date yyyy-mm-dd, e.g. 2026-11-20; not '" + v +
                                    "'");
      ApplyToday(v);
    } else if (a == "--office") {
      std::string v = value();
      auto n = ParseWholeNumber(v, 0, INT32_MAX);
      if (!n)
        throw std::invalid_argument("--office wants an office number, e.g. 1; not '" + v + "'");
      o.run.office = static_cast<int32_t>(*n);
    } else if (a == "--user") {
      o.run.user = value();
    } else if (a == "--token") {
      o.token = value();
      // "new" asks for a random token, printed at start.
      if (o.token == "new") o.token = NewToken();
      if (o.token.empty()) throw std::invalid_argument("--token wants a value, or 'new'");
    } else if (a == "--allow-filters") {
      o.run.allow_filters = true;
    } else if (a == "--workers") {
      std::string v = value();
      auto n = ParseWholeNumber(v, 1, 16);
      if (!n) throw std::invalid_argument("--workers wants 1 to 16; not '" + v + "'");
      o.run.workers = static_cast<int>(*n);
    } else if (a == "--interest-rate") {
      std::string v = value();
      char* end = nullptr;
      float r = std::strtof(v.c_str(), &end);
      if (v.empty() || *end != '\0')
        throw std::invalid_argument("--interest-rate wants a number, e.g. 1.5; not '" + v + "'");
      o.run.interest_rate = r;
    } else if (a == "--interest-delay") {
      std::string v = value();
      auto n = ParseWholeNumber(v, INT16_MIN, INT16_MAX);
      if (!n) throw std::invalid_argument("--interest-delay wants days, e.g. 30; not '" + v + "'");
      o.run.interest_delay = static_cast<int16_t>(*n);
    } else {
      throw std::invalid_argument("unknown option " + a);
    }
  }
  return o;
}

namespace {

json StatusJson(const Run::Status& s) {
  json messages = json::array();
  for (const auto& m : s.messages)
    messages.push_back({{"text", m.text}, {"title", m.title}, {"failure", m.failure}});
  json out = {{"id", s.id},
              {"method", s.method},
              {"state", RunStateName(s.state)},
              {"progress", s.progress},
              {"messages", messages},
              {"pages", s.pages},
              {"seconds", s.seconds}};
  if (!s.question.empty()) out["question"] = s.question;
  if (!s.error.empty()) out["error"] = s.error;
  if (!s.result.empty()) out["result"] = s.result;
  if (s.cancelled) out["cancelled"] = true;
  return out;
}

void Reply(httplib::Response& res, int status, const json& body) {
  res.status = status;
  res.set_content(body.dump(), "application/json; charset=utf-8");
}

void Refuse(httplib::Response& res, int status, const std::string& message) {
  Reply(res, status, {{"error", message}});
}

json RequestErrorJson(const RequestError& e) {
  json fields = json::object();
  for (const auto& f : e.fields) fields[f.field] = f.message;
  return {{"error", e.what()}, {"fields", fields}};
}

// An argument's value as text, the way the command line takes it: JSON
// true/false as True/False, numbers in decimal, lists joined by commas.
std::string ArgumentText(const json& v) {
  if (v.is_string()) return v.get<std::string>();
  if (v.is_boolean()) return v.get<bool>() ? "True" : "False";
  if (v.is_number_integer()) return std::to_string(v.get<long long>());
  if (v.is_number()) return v.dump();
  if (v.is_null()) return "";
  if (v.is_array()) {
    std::string s;
    for (const auto& item : v) s += (s.empty() ? "" : ",") + ArgumentText(item);
    return s;
  }
  throw std::invalid_argument("an argument is an object; give its text");
}

// The cookie the page carries once opened with its token.
std::string CookieToken(const httplib::Request& req) {
  std::string cookies = req.get_header_value("Cookie");
  static const std::regex token(R"((?:^|;\s*)orvenda_token=([0-9A-Za-z._~-]+))");
  std::smatch m;
  return std::regex_search(cookies, m, token) ? m[1].str() : "";
}

// "127.0.0.1:8640" -> 127.0.0.1, "[::1]:8640" -> ::1.
std::string HostOfHeader(const std::string& header) {
  if (!header.empty() && header.front() == '[') return header.substr(1, header.find(']') - 1);
  return header.substr(0, header.rfind(':'));
}

// Compares without stopping at the first difference.
bool SameSecret(const std::string& a, const std::string& b) {
  if (a.size() != b.size()) return false;
  unsigned char diff = 0;
  for (size_t i = 0; i < a.size(); ++i) diff |= static_cast<unsigned char>(a[i] ^ b[i]);
  return diff == 0;
}

}  // namespace

ReportServer::ReportServer(ServeOptions options)
    : options_(std::move(options)),
      runs_(options_.run),
      http_(std::make_unique<httplib::Server>()) {
  if (!IsLoopback(options_.host) && options_.token.empty())
    throw std::invalid_argument("listening on " + options_.host +
                                " reaches other machines: give --token T (or --token new for a "
                                "random one), or listen on 127.0.0.1");
  Route();
}

ReportServer::~ReportServer() {
  Stop();
}

int ReportServer::Bind() {
  int port = options_.port == 0
                 ? http_->bind_to_any_port(options_.host)
                 : (http_->bind_to_port(options_.host, options_.port) ? options_.port : -1);
  if (port <= 0)
    throw std::runtime_error("cannot listen on " + options_.host + ":" +
                             std::to_string(options_.port) + " (taken, or not this machine's)");
  options_.port = port;
  return port;
}

void ReportServer::Listen() {
  http_->listen_after_bind();
}

void ReportServer::Stop() {
  if (http_ && http_->is_running()) http_->stop();
}

namespace {

// A name as the search compares it: its base letters in small letters,
// hyphens and apostrophes left out ("Étienne" and "ETIENNE" read "etienne",
// "O'Neil" reads "oneil"), as the practice's dictionary order sees it.
std::string SearchFold(std::string_view text) {
  std::string key = collation::SortKey(text);
  return key.substr(0, key.find(collation::kLevelSeparator));
}

// The names whose folded text starts with `folded`, as a range of the
// practice's dictionary order, which compares base letters first and both
// engines apply to < and >=: every such name lies from the word itself
// (its plain spelling sorts first) up to the word followed by the highest
// character there is. A range asks no function per row.
std::string PrefixCondition(const std::string& folded) {
  std::string low = vb::Replace(folded, "'", "''");
  std::string high = low;
  collation::AppendUtf8(U'\U0010FFFD', high);
  std::string any;
  for (const char* column : {"LastName", "FirstName"})
    any += (any.empty() ? "" : " OR ") + std::string("(") + column + " >= '" + low + "' AND " +
           column + " < '" + high + "')";
  return "(" + any + ")";
}

}  // namespace

std::string ReportServer::PatientsJson(const std::string& query) {
  // Words of a name, or a patient's number: only letters, digits, blanks,
  // hyphens and apostrophes count.
  std::vector<std::string> words;
  std::string word;
  for (char c : query + " ") {
    bool keep = std::isalnum(static_cast<unsigned char>(c)) || c == '-' || c == '\'' ||
                (static_cast<unsigned char>(c) >= 0x80);
    if (keep && word.size() < 30) {
      word += c;
    } else if (!keep && !word.empty()) {
      words.push_back(word);
      word.clear();
    }
  }
  json out = json::array();
  if (words.empty() || words.size() > 4) return out.dump();
  // The front desk types names with or without their accents and in any
  // case, and both engines must answer alike: each word is a prefix of the
  // last or the first name compared on folded text. The statement asks
  // for that by ranges of the dictionary order; the folded comparison
  // below has the last word.
  std::string where;
  std::vector<std::string> names;  // folded words
  for (const auto& w : words) {
    bool number = std::all_of(w.begin(), w.end(), [](char c) { return c >= '0' && c <= '9'; });
    std::string term;
    if (number && w.size() < 10) {
      term = "ID = " + w;
    } else {
      std::string folded = SearchFold(w);
      if (folded.empty()) continue;
      names.push_back(folded);
      term = PrefixCondition(folded);
    }
    where += (where.empty() ? "" : " AND ") + term;
  }
  if (where.empty()) return out.dump();
  std::lock_guard lock(lookup_mu_);
  if (!lookup_) lookup_ = std::make_unique<db::Connection>(options_.run.db);
  db::Recordset rs;
  rs.Open(
      "SELECT TOP 200 ID, LastName, FirstName, BirthDate, ResponsibleFamilyMemberID "
      "FROM Patient WHERE " +
          where + " ORDER BY LastName, FirstName, ID",
      *lookup_, db::adOpenStatic);
  for (; !rs.Eof() && out.size() < 25; rs.MoveNext()) {
    const std::string last = CStr(rs["LastName"].Value()), first = CStr(rs["FirstName"].Value());
    const std::string last_key = SearchFold(last), first_key = SearchFold(first);
    bool all = std::all_of(names.begin(), names.end(), [&](const std::string& n) {
      return last_key.rfind(n, 0) == 0 || first_key.rfind(n, 0) == 0;
    });
    if (!all) continue;
    Variant birth = rs["BirthDate"];
    Variant family = rs["ResponsibleFamilyMemberID"];
    out.push_back({{"id", CLng(rs["ID"].Value())},
                   {"name", last + ", " + first},
                   {"birth", birth.IsNull() ? "" : Format(birth, "yyyy-mm-dd")},
                   {"family", family.IsNull() ? 0 : CLng(family)}});
  }
  return out.dump();
}

std::string ReportServer::ProvidersJson() {
  std::lock_guard lock(lookup_mu_);
  if (!lookup_) lookup_ = std::make_unique<db::Connection>(options_.run.db);
  db::Recordset rs;
  // TypeID 0 is the "(None)" placeholder of the setup screens.
  rs.Open(
      "SELECT ID, FullName, TypeID, Active FROM Employees WHERE TypeID <> 0 "
      "ORDER BY LastName, FirstName, ID",
      *lookup_, db::adOpenStatic);
  json out = json::array();
  while (!rs.Eof()) {
    int type = CLng(rs["TypeID"].Value());
    Variant active = rs["Active"];
    out.push_back({{"id", CLng(rs["ID"].Value())},
                   {"name", CStr(rs["FullName"].Value())},
                   {"type", type},
                   {"active", !active.IsNull() && CBool(active)}});
    rs.MoveNext();
  }
  return out.dump();
}

void ReportServer::Route() {
  httplib::Server& s = *http_;

  // Every request passes here: the token where one is set; without one,
  // only a Host header of this machine, so a page elsewhere cannot reach the
  // server through a name it points at 127.0.0.1.
  s.set_pre_routing_handler([this](const httplib::Request& req, httplib::Response& res) {
    if (options_.token.empty()) {
      std::string host = HostOfHeader(req.get_header_value("Host"));
      if (!host.empty() && !IsLoopback(host)) {
        Refuse(res, 403, "This server answers only to 127.0.0.1 and localhost.");
        return httplib::Server::HandlerResponse::Handled;
      }
      return httplib::Server::HandlerResponse::Unhandled;
    }
    std::string given;
    std::string auth = req.get_header_value("Authorization");
    if (auth.rfind("Bearer ", 0) == 0) given = auth.substr(7);
    if (given.empty() && req.has_param("token")) given = req.get_param_value("token");
    if (given.empty()) given = CookieToken(req);
    if (!SameSecret(given, options_.token)) {
      Refuse(res, 401,
             "This server wants its token: open the address it printed at start "
             "(…/?token=...), or send Authorization: Bearer TOKEN.");
      return httplib::Server::HandlerResponse::Handled;
    }
    return httplib::Server::HandlerResponse::Unhandled;
  });

  s.Get("/", [this](const httplib::Request& req, httplib::Response& res) {
    // Opened with its token, the page keeps it as a cookie that its own
    // requests (images and downloads too) then carry.
    if (!options_.token.empty() && req.has_param("token"))
      res.set_header("Set-Cookie",
                     "orvenda_token=" + options_.token + "; Path=/; HttpOnly; SameSite=Strict");
    res.set_header("Cache-Control", "no-store");
    res.set_content(PageHtml(), "text/html; charset=utf-8");
  });

  s.Get("/api/methods", [this](const httplib::Request&, httplib::Response& res) {
    json body = MethodsJson();
    body["allow_filters"] = options_.run.allow_filters;
    body["user"] = options_.run.user;
    body["office"] = options_.run.office;
    body["database"] = db::MaskSecrets(options_.run.db);
    body["today"] = Format(Variant(Clock::Today()), "yyyy-mm-dd");
    Reply(res, 200, body);
  });

  s.Post("/api/runs", [this](const httplib::Request& req, httplib::Response& res) {
    RunRequest request;
    try {
      json body = json::parse(req.body);
      request.method = body.value("method", "");
      if (body.contains("args")) {
        const json& args = body["args"];
        if (args.is_array()) {
          for (const auto& v : args) request.positional.push_back(ArgumentText(v));
        } else if (args.is_object()) {
          for (const auto& [name, v] : args.items())
            request.named.emplace_back(name, ArgumentText(v));
        } else {
          throw std::invalid_argument("args is a list (in order) or an object (by name)");
        }
      }
    } catch (const std::exception& e) {
      Refuse(res, 400,
             std::string("The request is no run: ") + e.what() +
                 R"( (send {"method": "rptFeeGuide", "args": ["1", "desk"]}))");
      return;
    }
    try {
      auto run = runs_.Start(request);
      Reply(res, 202, {{"id", run->id()}, {"method", run->method()}});
    } catch (const RequestError& e) {
      Reply(res, 400, RequestErrorJson(e));
    }
  });

  auto find = [this](const httplib::Request& req, httplib::Response& res) -> std::shared_ptr<Run> {
    auto number = ParseWholeNumber(req.matches[1], 0, INT32_MAX);
    auto run = number ? runs_.Find(static_cast<int>(*number)) : nullptr;
    if (!run)
      Refuse(res, 404, "There is no run " + req.matches[1].str() + " (or it was dropped as old).");
    return run;
  };
  // A document's outputs wait for its run; before then they say so.
  auto serve = [find](const httplib::Request& req, httplib::Response& res, auto produce) {
    auto run = find(req, res);
    if (!run) return;
    auto st = run->Snapshot();
    if (st.state == RunState::kFailed) return Refuse(res, 409, "The run failed: " + st.error);
    if (st.state != RunState::kDone) return Refuse(res, 409, "The run is not finished yet.");
    try {
      produce(*run, res);
    } catch (const std::out_of_range& e) {
      Refuse(res, 404, e.what());
    } catch (const std::exception& e) {
      Refuse(res, 500, e.what());
    }
  };

  s.Get(R"(/api/runs/(\d+))", [find](const httplib::Request& req, httplib::Response& res) {
    if (auto run = find(req, res)) Reply(res, 200, StatusJson(run->Snapshot()));
  });

  s.Post(R"(/api/runs/(\d+)/answer)", [find](const httplib::Request& req, httplib::Response& res) {
    auto run = find(req, res);
    if (!run) return;
    std::string answer;
    try {
      answer = vb::LCase(json::parse(req.body).value("answer", ""));
    } catch (const std::exception&) {
    }
    if (answer != "yes" && answer != "no")
      return Refuse(res, 400, R"(Send {"answer": "yes"} or {"answer": "no"}.)");
    if (!run->Answer(answer == "yes" ? host::vbYes : host::vbNo))
      return Refuse(res, 409, "The run asks no question now.");
    Reply(res, 200, StatusJson(run->Snapshot()));
  });

  // Stops a run: a queued one never starts, one in progress ends at its
  // next progress raise or row as a failed run, without a document.
  s.Post(R"(/api/runs/(\d+)/cancel)",
         [this, find](const httplib::Request& req, httplib::Response& res) {
           auto run = find(req, res);
           if (!run) return;
           if (!runs_.Cancel(*run)) return Refuse(res, 409, "The run has already ended.");
           Reply(res, 200, StatusJson(run->Snapshot()));
         });

  s.Get(R"(/api/runs/(\d+)/pages/(\d+)\.png)",
        [serve](const httplib::Request& req, httplib::Response& res) {
          serve(req, res, [&](Run& run, httplib::Response& r) {
            // 96 dots per inch by default; thumbnails ask for less, zoom for more.
            int dpi = 96;
            if (req.has_param("dpi"))
              dpi = std::clamp(std::atoi(req.get_param_value("dpi").c_str()), 12, 300);
            r.set_header("Cache-Control", "private, max-age=3600");
            auto page = ParseWholeNumber(req.matches[2], 0, INT32_MAX);
            r.set_content(run.PagePng(page ? static_cast<int>(*page) : 0, dpi), "image/png");
          });
        });

  auto file_name = [](Run& run, const char* ext) {
    return "attachment; filename=\"" + run.method() + "-" + std::to_string(run.id()) + ext + "\"";
  };
  s.Get(R"(/api/runs/(\d+)/document\.pdf)",
        [serve, file_name](const httplib::Request& req, httplib::Response& res) {
          serve(req, res, [&](Run& run, httplib::Response& r) {
            r.set_header("Content-Disposition", file_name(run, ".pdf"));
            r.set_content(run.Pdf(), "application/pdf");
          });
        });
  s.Get(R"(/api/runs/(\d+)/document\.txt)",
        [serve](const httplib::Request& req, httplib::Response& res) {
          serve(req, res, [&](Run& run, httplib::Response& r) {
            r.set_content(run.Text(), "text/plain; charset=utf-8");
          });
        });
  s.Get(R"(/api/runs/(\d+)/document\.csv)", [this, serve, file_name](const httplib::Request& req,
                                                                     httplib::Response& res) {
    serve(req, res, [&](Run& run, httplib::Response& r) {
      std::string path = runs_.ScratchFolder() + "/document-" + NewToken() + ".csv";
      render::WriteCsv(run.Document(), path);
      std::ifstream in(path, std::ios::binary);
      std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
      std::remove(path.c_str());
      r.set_header("Content-Disposition", file_name(run, ".csv"));
      r.set_content(bytes, "text/csv; charset=utf-8");
    });
  });

  // One PDF per statement, zipped, for statements sent by e-mail: the
  // command line's --split, written to a folder of the run's own and
  // packed.
  s.Get(R"(/api/runs/(\d+)/statements\.zip)", [this, serve](const httplib::Request& req,
                                                            httplib::Response& res) {
    serve(req, res, [&](Run& run, httplib::Response& r) {
      const MethodSignature* sig = FindMethod(run.method());
      if (sig == nullptr || !MakesLetters(*sig))
        return Refuse(r, 400, run.method() + " prints no statements to split.");
      std::string folder = runs_.ScratchFolder() + "/split-" + NewToken();
      std::vector<std::pair<std::string, std::string>> files;
      for (const auto& path : render::WriteLetterPdfs(run.Document(), folder)) {
        std::ifstream in(path, std::ios::binary);
        files.emplace_back(
            fs::path(path).filename().string(),
            std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>()));
      }
      std::error_code ec;
      fs::remove_all(folder, ec);
      r.set_header("Content-Disposition",
                   "attachment; filename=\"statements-" + std::to_string(run.id()) + ".zip\"");
      r.set_content(StoredZip(files), "application/zip");
    });
  });

  s.Post(R"(/api/runs/(\d+)/print)", [serve](const httplib::Request& req, httplib::Response& res) {
    serve(req, res, [&](Run& run, httplib::Response& r) {
      std::string printer;
      try {
        printer = json::parse(req.body).value("printer", "");
      } catch (const std::exception&) {
      }
      if (printer.empty())
        return Refuse(r, 400, R"(Send {"printer": "NAME"}; GET /api/printers lists them.)");
      std::string failure = PrintDocument(run.Document(), printer);
      if (!failure.empty()) return Refuse(r, 502, failure);
      Reply(r, 200, {{"printed", printer}});
    });
  });

  s.Get("/api/printers", [](const httplib::Request&, httplib::Response& res) {
    Reply(res, 200, {{"printers", ListPrinters()}});
  });

  s.Get("/api/patients", [this](const httplib::Request& req, httplib::Response& res) {
    try {
      res.set_content(PatientsJson(req.get_param_value("q")), "application/json; charset=utf-8");
    } catch (const std::exception& e) {
      Refuse(res, 500, db::MaskSecrets(e.what()));
    }
  });

  s.Get("/api/providers", [this](const httplib::Request&, httplib::Response& res) {
    try {
      res.set_content(ProvidersJson(), "application/json; charset=utf-8");
    } catch (const std::exception& e) {
      Refuse(res, 500, db::MaskSecrets(e.what()));
    }
  });

  // A report as a link: its arguments by name in the query; the PDF when
  // it is done, the reason as text when it is not.
  s.Get(R"(/run/(\w+))", [this](const httplib::Request& req, httplib::Response& res) {
    RunRequest request;
    request.method = req.matches[1];
    request.interactive = false;
    for (const auto& [name, value] : req.params)
      if (name != "token") request.named.emplace_back(name, value);
    std::shared_ptr<Run> run;
    try {
      run = runs_.Start(request);
    } catch (const RequestError& e) {
      std::string text = e.what();
      for (const auto& f : e.fields)
        if (f.message != text) text += "\n" + f.message;
      res.status = 400;
      res.set_content(text + "\n", "text/plain; charset=utf-8");
      return;
    }
    // Bounded: a report that has not ended in an hour is left to its worker.
    if (!run->WaitFinished(std::chrono::hours(1))) {
      res.status = 504;
      res.set_content(
          "The report is still running: see /api/runs/" + std::to_string(run->id()) + "\n",
          "text/plain; charset=utf-8");
      return;
    }
    auto st = run->Snapshot();
    if (st.state != RunState::kDone) {
      std::string text = st.error;
      for (const auto& m : st.messages) text += "\n" + m.text;
      res.status = 422;
      res.set_content(text + "\n", "text/plain; charset=utf-8");
      return;
    }
    if (st.pages == 0) {
      res.set_content(st.result.empty() ? std::string("(nothing drawn)\n") : st.result + "\n",
                      "text/plain; charset=utf-8");
      return;
    }
    res.set_header("Content-Disposition", "inline; filename=\"" + run->method() + ".pdf\"");
    res.set_content(run->Pdf(), "application/pdf");
  });
}

}  // namespace orv::app::serve

#include "report_host.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <regex>
#include <stdexcept>

#include "app_paths.h"
#include "command.h"
#include "common/datetime.h"
#include "common/errors.h"
#include "common/vbstrings.h"
#include "frame/preview_form.h"
#include "frame/reports.h"
#include "frame/surface/surface.h"
#include "invokers.h"
#include "method_catalog.h"
#include "platform/db/connection.h"
#include "platform/db/connection_url.h"
#include "platform/host/host_services.h"
#include "platform/host/settings.h"
#include "platform/render/letters.h"

namespace orv::app {

namespace fs = std::filesystem;

namespace {

const char* kUsage =
    "usage: orvenda-reports [OPTIONS] METHOD [ARG]... [OPTIONS]\n"
    "       orvenda-reports list              every method by family, and which are built\n"
    "       orvenda-reports help METHOD       a method's parameters and an example\n"
    "\n"
    "options (before or after the method):\n"
    "  --db FILE|URL          the practice database (default: $ORVENDA_DB, else the demo "
    "practice)\n"
    "  --out FILE             where the document goes: .pdf, .png (one file per page), .txt\n"
    "                         (its text) or .csv (its tables: one block per table, header\n"
    "                         row first, money as 1234.50, dates as yyyy-mm-dd; a report\n"
    "                         without tables gives its text lines); default out/METHOD.pdf.\n"
    "                         Reports that print go here too when no --printer is given.\n"
    "  --split                with --out FOLDER/: one PDF per statement, FOLDER/ACCOUNT-NAME.pdf\n"
    "                         (rptStatements, rptBulkStatements), each numbered on its own\n"
    "  --printer NAME         the CUPS printer: reports that print go there, and a report\n"
    "                         that shows its pages is printed there once it has run (the\n"
    "                         file is then written only when --out is given)\n"
    "  --office N             the office the report is for (OfficeID, and the workstation's\n"
    "                         CurrentOffice unless --setting CurrentOffice=... says otherwise)\n"
    "  --user NAME            the signed-in user (fills every UserName argument not given)\n"
    "  --today yyyy-mm-dd     fixes the clock every report reads\n"
    "  --answer yes|no        the answer to a report's Yes/No question (default no: a run\n"
    "                         never writes unasked); the question goes to stderr\n"
    "  --setting [Section.]Key=Value   a workstation setting (Section defaults to Settings)\n"
    "  --interest-rate R      the account interest rate (a number, e.g. 1.5)\n"
    "  --interest-delay DAYS  its grace period in days (-32768 to 32767)\n"
    "  --arg Name=Value       an argument by its parameter's name, in any order\n"
    "  --                     everything after it is an argument, even when it starts with --\n"
    "\n"
    "Arguments: in the order of the method's parameters (see help METHOD). A bare word is\n"
    "always taken as the next argument, so a filter such as \"EmployerID=3\" stays a filter;\n"
    "only --arg names an argument.\n"
    "\n"
    "Every PDF names what made it in its document properties (pdfinfo FILE): Author the\n"
    "user; Subject the method and its arguments, e.g. rptFeeGuide(ID=1, UserName=desk);\n"
    "Keywords today=..., database=... (never its password), user=..., office=...,\n"
    "version=...; Creator the program and its version.\n";

// A progress bar on stderr, when stderr is a terminal.
void ShowProgress(uint8_t pct) {
  int filled = pct / 5;
  std::fprintf(stderr, "\r[%-20s] %3d%%", std::string(static_cast<size_t>(filled), '#').c_str(),
               pct);
  std::fflush(stderr);
}

// Every message of the host passes here: the database's and libpq's texts
// may quote a URL, and a password never reaches the screen.
void Say(const std::string& text) {
  std::fprintf(stderr, "%s\n", db::MaskSecrets(text).c_str());
}

struct Invocation {
  std::string db = DefaultDatabase();
  bool db_given = false;
  std::string out, user, printer;
  bool split = false;  // one PDF per statement into the folder --out names
  std::optional<int32_t> office;
  float interest_rate = 0;
  int16_t interest_delay = 0;
  std::vector<std::pair<std::string, std::string>> settings;
  std::vector<std::pair<std::string, std::string>> named;  // --arg Name=Value
  std::string method;
  std::vector<std::string> positional;
  bool help = false;
  // The answer to a Yes/No question of the report: no unless asked, so a
  // run never writes to the practice unasked.
  int answer = host::vbNo;
};

// Options may stand anywhere; the first word that is no option is the
// method, the words after it its arguments. Throws std::invalid_argument.
Invocation ParseCommandLine(const std::vector<std::string>& args) {
  Invocation inv;
  size_t i = 0;
  auto value = [&](const std::string& opt) -> std::string {
    if (i + 1 >= args.size()) throw std::invalid_argument(opt + " wants a value");
    return args[++i];
  };
  bool only_arguments = false;
  for (; i < args.size(); ++i) {
    const std::string& a = args[i];
    auto word = [&] {
      if (inv.method.empty())
        inv.method = a;
      else
        inv.positional.push_back(a);
    };
    if (only_arguments) {
      word();
    } else if (a == "--") {
      only_arguments = true;
    } else if (a == "--db") {
      inv.db = value(a);
      inv.db_given = true;
    } else if (a == "--out") {
      inv.out = value(a);
    } else if (a == "--split") {
      inv.split = true;
    } else if (a == "--user") {
      inv.user = value(a);
    } else if (a == "--answer") {
      std::string v = value(a);
      if (v == "yes")
        inv.answer = host::vbYes;
      else if (v == "no")
        inv.answer = host::vbNo;
      else
        throw std::invalid_argument("--answer wants yes or no, e.g. --answer yes; not '" + v + "'");
    } else if (a == "--printer") {
      inv.printer = value(a);
    } else if (a == "--office") {
      std::string v = value(a);
      auto n = ParseWholeNumber(v, 0, INT32_MAX);
      if (!n)
        throw std::invalid_argument(
            "--office (Long) wants an office number, e.g. --office 1; not '" + v + "'");
      inv.office = static_cast<int32_t>(*n);
    } else if (a == "--interest-rate") {
      std::string v = value(a);
      char* end = nullptr;
      float r = std::strtof(v.c_str(), &end);
      if (v.empty() || *end != '\0' || !std::isfinite(r))
        throw std::invalid_argument(
            "--interest-rate (Single) wants a number, e.g. --interest-rate 1.5; not '" + v + "'");
      inv.interest_rate = r;
    } else if (a == "--interest-delay") {
      std::string v = value(a);
      auto n = ParseWholeNumber(v, INT16_MIN, INT16_MAX);
      if (!n)
        throw std::invalid_argument(
            "--interest-delay (Integer) wants days from -32768 to 32767, e.g. "
            "--interest-delay 30; not '" +
            v + "'");
      inv.interest_delay = static_cast<int16_t>(*n);
    } else if (a == "--today") {
      std::string v = value(a);
      if (!ParseDateArgument(v))
        throw std::invalid_argument(
            "--today (Date) wants a date yyyy-mm-dd from 1753-01-01, e.g. --today "
            "2026-11-20; not '" +
            v + "'");
      ApplyToday(v);
    } else if (a == "--setting" || a == "--arg") {
      std::string kv = value(a);
      size_t eq = kv.find('=');
      if (eq == std::string::npos || eq == 0)
        throw std::invalid_argument(
            a + " wants Name=Value, e.g. " +
            (a == "--arg" ? "--arg EmployerID=3" : "--setting CurrentOffice=2") + "; not '" + kv +
            "'");
      (a == "--arg" ? inv.named : inv.settings).emplace_back(kv.substr(0, eq), kv.substr(eq + 1));
    } else if (a == "--help" || a == "-h") {
      inv.help = true;
    } else if (a.rfind("--", 0) == 0 && a.find_first_of(" \t\r\n") == std::string::npos) {
      // A text with blanks that starts with "--" (a commented condition)
      // is an argument; a single word is a mistyped option.
      throw std::invalid_argument("unknown option " + a +
                                  " (an argument that starts with -- goes after a lone --)");
    } else {
      word();
    }
  }
  return inv;
}

// The SQLite file a URL names, or "" for a server.
std::string DatabaseFile(const std::string& url) {
  if (url.empty() || db::EngineOfUrl(url) != db::EngineKind::SQLite) return "";
  return db::SqlitePath(url);
}

// The path with ".", ".." and symbolic links resolved as far as it exists,
// from the working folder for a relative one.
fs::path Resolved(const fs::path& p) {
  std::error_code ec;
  return fs::weakly_canonical(fs::absolute(p, ec), ec);
}

bool SamePath(const fs::path& a, const fs::path& b) {
  std::error_code ec1, ec2;
  if (fs::exists(a, ec1) && fs::exists(b, ec2)) return fs::equivalent(a, b, ec1);
  return Resolved(a) == Resolved(b);
}

// True when writing `out` (or, for PNG, one of its numbered pages) would
// overwrite `database` or one of the files SQLite keeps beside it, whatever
// the spelling of either path (./, .., symbolic links, hard links).
bool OutputHitsDatabase(const std::string& out, const std::string& database) {
  if (database.empty()) return false;
  for (const char* suffix : {"", "-wal", "-shm", "-journal"}) {
    fs::path db_file(database + suffix);
    if (SamePath(out, db_file)) return true;
    if (vb::LCase(fs::path(out).extension().string()) == ".png") {
      // Pages 2 and on go to NAME-2.png, NAME-3.png ...
      fs::path o = Resolved(out), d = Resolved(db_file);
      std::regex page(
          std::regex_replace(o.stem().string(), std::regex(R"([.^$|()\[\]{}*+?\\])"), R"(\$&)") +
              R"(-\d+\.png)",
          std::regex::icase);
      if (o.parent_path() == d.parent_path() && std::regex_match(d.filename().string(), page))
        return true;
    }
  }
  return false;
}

const char* kDemoCommand = "--patients 500 --seed 1 --today 2026-11-20";

// Starts a document for a method that draws into a running one, heads it
// with the method's summary, runs it, stamps the footers and shows it, as
// the packages that call these sections do.
Variant RunInOwnDocument(clsReports& reports, PreviewForm& form, const MethodSignature& sig,
                         const std::string& user, const Invoker& invoker, const MethodArgs& margs) {
  // The summary up to its first clause is the document's title: "Practice-
  // wide aged list, one row per patient, ... (section)." heads the page as
  // "Practice-wide aged list"; the section prints its own headings below.
  std::string title = sig.summary;
  title = title.substr(0, title.find_first_of(",.("));
  while (!title.empty() && title.back() == ' ') title.pop_back();
  if (title.empty()) title = sig.name;
  frame::PrintSurface& vsp = form.VSP;
  vsp.Orientation(0);
  vsp.DocName(title);
  vsp.StartDoc();
  if (!sig.heads_itself) reports.PrintReportHeading(title, user, "");
  Variant result = invoker(reports, margs);
  reports.PrintPageFooters(kPrintedBy);
  vsp.EndDoc();
  form.Show();
  return result;
}

// The host's message box: the messages of a run go to stderr, without
// passwords.
struct CliHost : host::BatchHost {
  explicit CliHost(int yes_no_answer) : BatchHost(yes_no_answer) {}
  int MsgBox(const std::string& prompt, int buttons, const std::string& title) override {
    return BatchHost::MsgBox(db::MaskSecrets(prompt), buttons, db::MaskSecrets(title));
  }
  void Note(const std::string& text) override { BatchHost::Note(db::MaskSecrets(text)); }
};

}  // namespace

Variant CallMethod(clsReports& reports, PreviewForm& form, const MethodSignature& sig,
                   const MethodArgs& args, const std::string& user) {
  const Invoker& invoker = Invokers().at(sig.name);
  return DrawsIntoRunningDocument(sig) ? RunInOwnDocument(reports, form, sig, user, invoker, args)
                                       : invoker(reports, args);
}

const char* ReportUsage() {
  return kUsage;
}

bool MakesLetters(const MethodSignature& sig) {
  const std::string name = sig.name;
  return name == "rptStatements" || name == "rptBulkStatements";
}

render::DocumentIdentity RunIdentity(const std::string& method,
                                     std::vector<std::pair<std::string, std::string>> arguments,
                                     const std::string& database, const std::string& user,
                                     std::optional<int32_t> office) {
  render::DocumentIdentity id;
  id.method = method;
  id.arguments = std::move(arguments);
  // A practice file by its absolute path, so that the run can be traced
  // from any folder; a server's URL as given, less its password.
  const std::string file = DatabaseFile(database);
  std::error_code ec;
  id.database = file.empty() ? db::MaskSecrets(database) : fs::absolute(file, ec).string();
  // The day the run takes as today: --today's, or the clock's.
  id.today = Clock::Today().ToIsoDate();
  id.user = user;
  if (office) id.office = std::to_string(*office);
  id.version = ORVENDA_VERSION;
  id.program = "orvenda-reports";
  return id;
}

std::string DefaultDatabase() {
  const char* env = std::getenv("ORVENDA_DB");
  return env && *env ? env : ORVENDA_DEMO_DB;
}

int RunReportHost(const std::vector<std::string>& args, RunWatch* watch) {
  Invocation inv;
  try {
    inv = ParseCommandLine(args);
  } catch (const std::exception& e) {
    Say("orvenda-reports: " + std::string(e.what()));
    std::fprintf(stderr, "%s", kUsage);
    return 2;
  }
  if (inv.method.empty()) {
    std::fprintf(inv.help ? stdout : stderr, "%s", kUsage);
    return inv.help ? 0 : 2;
  }
  const MethodSignature* sig = FindMethod(inv.method);
  if (sig == nullptr) {
    for (const auto& c : Commands()) {
      // "orvenda-reports --db x list": a command after options.
      if (c.name == inv.method) return c.run(inv.positional);
    }
    Say("orvenda-reports: no method or command '" + inv.method + "' (see 'orvenda-reports list')");
    return 2;
  }
  if (inv.help) {
    std::vector<std::string> name{sig->name};
    for (const auto& c : Commands())
      if (c.name == "help") return c.run(name);
  }
  auto invoker = Invokers().find(sig->name);
  if (invoker == Invokers().end()) {
    Say("orvenda-reports: " + std::string(sig->name) +
        " is not built yet (see 'orvenda-reports list')");
    return 2;
  }

  // Arguments: the bare words in signature order, then --arg Name=Value.
  std::optional<MethodArgs> margs;
  try {
    margs = BindArguments(*sig, inv.positional, inv.named, inv.user);
  } catch (const std::exception& e) {
    Say("orvenda-reports: " + std::string(e.what()));
    return 2;
  }

  // One PDF per statement: only runs of statements are letters to split,
  // and they go into a folder. Refused before the run, so nothing is
  // written and no statement date is stamped.
  if (inv.split) {
    if (!MakesLetters(*sig)) {
      Say("orvenda-reports: --split writes one PDF per statement, and " + std::string(sig->name) +
          " prints no statements (rptStatements and rptBulkStatements do); nothing was written");
      return 1;
    }
    std::error_code ec;
    if (inv.out.empty() || !(inv.out.back() == '/' || fs::is_directory(inv.out, ec))) {
      Say("orvenda-reports: --split wants the folder the statements go to: --out FOLDER/");
      return 2;
    }
  }
  // A report that shows its pages and is sent to a printer writes a file
  // only when asked to.
  const bool out_given = !inv.out.empty();

  // The output: never a database the run reads, and of a known kind.
  if (inv.out.empty()) inv.out = "out/" + std::string(sig->name) + ".pdf";
  std::vector<std::string> databases{DatabaseFile(inv.db)};
  for (const auto& [key, val] : inv.settings) {
    std::string k = vb::LCase(key);
    if (k == "servername" || k == "settings.servername" || k == "dbname" || k == "settings.dbname")
      databases.push_back(DatabaseFile(val));
  }
  for (const auto& database : databases) {
    if (OutputHitsDatabase(inv.out, database)) {
      Say("orvenda-reports: --out " + inv.out + " names the database " + database +
          " that the report reads; choose another file");
      return 2;
    }
  }
  if (!inv.split && !PreviewForm::IsKnownOutput(inv.out)) {
    Say("orvenda-reports: --out " + inv.out +
        " has no known kind: name it .pdf, .png, .txt or .csv (or a folder with --split)");
    return 2;
  }
  if (std::string file = DatabaseFile(inv.db);
      !file.empty() && db::UnknownScheme(inv.db).empty() && !fs::exists(file)) {
    if (!inv.db_given && !std::getenv("ORVENDA_DB"))
      Say("orvenda-reports: there is no practice database at " + file +
          ".\n  Make the demo practice there with:\n    orvenda-reports demo-db " + file + " " +
          kDemoCommand + "\n  or name a database with --db FILE|URL or the ORVENDA_DB variable.");
    else
      Say("orvenda-reports: there is no practice database at " + file +
          " (make one with 'orvenda-reports demo-db FILE', or copy one with 'orvenda-reports "
          "copy-db')");
    return 2;
  }
  // The output's folder is made for a method that writes a document; a
  // method with a result only prints it.
  std::error_code ec;
  fs::path outp(inv.out);
  // Split statements make their folder once they are written.
  if (!*sig->result && !inv.split && outp.has_parent_path())
    fs::create_directories(outp.parent_path(), ec);

  PreviewForm form;
  // Nothing reaches the output until the report has succeeded.
  form.HoldWrites(true);
  form.SetNotifier([](const std::string& m) { Say(m); });
  try {
    db::Connection conn(inv.db);
    // A second connection the component opens names the same database.
    host::SettingsStore& store = host::AppSettings();
    store.Override("Settings", "ServerName", inv.db);
    // The workstation's office follows --office (statements read their
    // footer from it) unless a --setting below names another.
    if (inv.office) store.Override("Settings", "CurrentOffice", std::to_string(*inv.office));
    for (const auto& [key, val] : inv.settings) {
      size_t dot = key.find('.');
      if (dot == std::string::npos)
        store.Override("Settings", key, val);
      else
        store.Override(key.substr(0, dot), key.substr(dot + 1), val);
    }
    // Split statements are written from the finished document below.
    form.SetOutput(inv.split || (!inv.printer.empty() && !out_given) ? "" : inv.out);
    if (!inv.split && !inv.printer.empty() && !out_given) form.SetPrintFile(inv.out);
    if (!inv.printer.empty()) form.SetPrinter(inv.printer);
    form.VSP.Identity(RunIdentity(sig->name, margs->GivenTexts(), inv.db, inv.user, inv.office));
    CliHost cli_host(inv.answer);
    clsReports reports;
    reports.SetHostServices(&cli_host);
    reports.Connection(conn);
    reports.SetPrintPreview(&form);
    reports.OfficeID = inv.office.value_or(0);
    reports.InterestRate = inv.interest_rate;
    reports.InterestDelay = inv.interest_delay;
    bool tty = ::isatty(2);
    if (tty) reports.Progress = [](uint8_t& p) { ShowProgress(p); };

    cli_host.ClearFailure();
    if (watch && watch->report_called) watch->report_called();
    // Each report reads one moment of the database itself (clsReports holds
    // a snapshot for every report call).
    Variant result = CallMethod(reports, form, *sig, *margs, inv.user);
    if (tty) std::fprintf(stderr, "\n");
    // A report that showed a failure (its trap, an input it refused) or a
    // printer that refused the job: the run failed, and the output keeps
    // whatever stood there before.
    if (cli_host.FailureShown() || form.PrintRefused()) {
      form.DiscardWrites();
      Say("orvenda-reports: " + std::string(sig->name) +
          " failed (see the message above); nothing was written");
      return 1;
    }
    if (!result.IsEmpty()) std::printf("%s\n", result.IsNull() ? "Null" : CStr(result).c_str());
    // A report that leaves showing the form to the host still has its
    // pages written.
    if (form.ShowCount() == 0 && form.PrintCount() == 0 && form.VSP.PageCount() > 0) form.Show();
    // A report that showed its pages goes to the printer as the person
    // would send it from the preview.
    if (!inv.printer.empty() && form.PrintCount() == 0 && form.VSP.PageCount() > 0) {
      form.Print(form.VSP.Document(), false);
      if (form.PrintRefused()) {
        form.DiscardWrites();
        Say("orvenda-reports: " + std::string(sig->name) + " was not printed; nothing was written");
        return 1;
      }
    }
    if (inv.split) {
      if (form.VSP.Document().letters.empty()) {
        form.DiscardWrites();
        Say("orvenda-reports: " + std::string(sig->name) +
            " printed no statement, so there is nothing to split; nothing was written");
        return 1;
      }
      std::vector<std::string> letters = render::WriteLetterPdfs(form.VSP.Document(), inv.out);
      form.CommitWrites();
      if (watch && watch->document_written) watch->document_written();
      Say("wrote " + std::to_string(letters.size()) + " statement" +
          (letters.size() == 1 ? "" : "s") + " to " + inv.out + ": " +
          fs::path(letters.front()).filename().string() +
          (letters.size() > 1 ? " ... " + fs::path(letters.back()).filename().string() : ""));
      return 0;
    }
    form.CommitWrites();
    if (watch && watch->document_written) watch->document_written();
    for (const auto& job : form.PrintJobs()) Say("printed on " + inv.printer + " as job " + job);
    const auto& files = form.WrittenFiles();
    // A report that ends without a word and without a document (the
    // predetermination forms do so on an error) still failed for the script.
    if (result.IsEmpty() && files.empty() && form.VSP.PageCount() == 0 && !sig->draws_nothing) {
      Say("orvenda-reports: " + std::string(sig->name) + " produced no document");
      return 1;
    }
    int pages = form.VSP.PageCount();
    if (watch) watch->pages = pages;
    std::string count = std::to_string(pages) + " page" + (pages == 1 ? "" : "s");
    if (files.size() == 1)
      Say("wrote " + files.front() + " (" + count + ")");
    else if (files.size() > 1)
      Say("wrote " + count + ": " + files.front() + " ... " + files.back());
    // Some methods draw nothing by design (entries kept for older hosts, a
    // slip without its appointment): say so rather than stay silent.
    else if (result.IsEmpty() && form.PrintJobs().empty())
      Say(std::string(sig->name) + " drew nothing; no file was written");
  } catch (const ReportError& e) {
    form.DiscardWrites();
    Say("\norvenda-reports: " + std::string(sig->name) + " failed: " + e.description());
    return 1;
  } catch (const std::exception& e) {
    form.DiscardWrites();
    Say("\norvenda-reports: " + std::string(sig->name) + " failed: " + e.what());
    return 1;
  }
  return 0;
}

namespace {

int RunList(const std::vector<std::string>&) {
  // Families in the order the catalogue first names them.
  std::vector<std::string> families;
  for (const auto& m : MethodCatalog())
    if (std::find(families.begin(), families.end(), m.family) == families.end())
      families.push_back(m.family);
  int built = 0, total = 0;
  for (const auto& family : families) {
    std::printf("%s\n", family.c_str());
    for (const auto& m : MethodCatalog()) {
      if (m.family != family) continue;
      bool runs = Invokers().count(m.name) > 0;
      const char* mark = runs ? ""
                         : std::string(m.params).find(": object") != std::string::npos
                             ? "  [done by the host]"
                             : "  [not built yet]";
      std::printf("  %-36s %s%s\n", m.name, m.summary, mark);
      ++total;
      built += runs;
    }
    std::printf("\n");
  }
  std::printf(
      "%d of %d methods are built. 'orvenda-reports help METHOD' shows a method's parameters and\n"
      "an example; methods marked (section) run in a document of their own here.\n",
      built, total);
  return 0;
}

// The words of a catalogue example as the shell passes them: blanks split,
// double and single quotes group (and stay, so the word reads as typed),
// "$(...)" is one word.
std::vector<std::string> ExampleWords(const std::string& text) {
  std::vector<std::string> words;
  std::string word;
  bool in_word = false;
  for (size_t i = 0; i < text.size(); ++i) {
    char c = text[i];
    if (c == ' ' && in_word) {
      words.push_back(word);
      word.clear();
      in_word = false;
      continue;
    }
    if (c == ' ') continue;
    in_word = true;
    if (c == '"' || c == '\'') {
      size_t end = text.find(c, i + 1);
      if (end == std::string::npos) end = text.size() - 1;
      word += text.substr(i, end - i + 1);
      i = end;
    } else if (c == '$' && i + 1 < text.size() && text[i + 1] == '(') {
      size_t end = text.find(')', i);
      // The closing parenthesis of "$(printf '...')" follows the quote.
      size_t quote = text.find('\'', i);
      if (quote != std::string::npos && quote < end)
        end = text.find(')', text.find('\'', quote + 1));
      if (end == std::string::npos) end = text.size() - 1;
      word += text.substr(i, end - i + 1);
      i = end;
    } else {
      word += c;
    }
  }
  if (in_word) words.push_back(word);
  return words;
}

// One example command line of a method, on the demo practice.
std::string ExampleRun(const MethodSignature& m) {
  // A method with a result prints it; the others write a document.
  std::string out = *m.result ? "" : " --out out/" + std::string(m.name) + ".pdf";
  return "orvenda-reports --today 2026-11-20 --office 1 --user desk" + out + " " + m.name +
         (*m.example ? " " + std::string(m.example) : "");
}

int RunHelp(const std::vector<std::string>& args) {
  if (args.size() != 1) {
    std::fprintf(stderr,
                 "usage: orvenda-reports help METHOD   (the methods: orvenda-reports list)\n");
    return 2;
  }
  const MethodSignature* m = FindMethod(args[0]);
  if (m == nullptr) {
    for (const auto& c : Commands()) {
      if (c.name == args[0]) {
        std::printf("%s\n  %s\n", c.usage.c_str(), c.summary.c_str());
        return 0;
      }
    }
    Say("orvenda-reports: no method '" + args[0] + "' (see 'orvenda-reports list')");
    return 2;
  }
  bool built = Invokers().count(m->name) > 0;
  std::printf("%s(%s)%s%s\n", m->name, m->params, *m->result ? " -> " : "", m->result);
  std::printf("  %s\n  Family: %s. %s\n", m->summary, m->family,
              built ? "Built." : "Not built yet: the command line cannot run it.");
  if (std::string(m->summary).find("(printed)") != std::string::npos)
    std::printf(
        "  It prints: to --printer NAME when given; without a printer the document goes to\n"
        "  --out and a note on stderr says that no printer was set.\n");
  if (DrawsIntoRunningDocument(*m))
    std::printf(
        "  It draws into a running document: here it runs in one of its own, headed and\n"
        "  footed like a report.\n");
  if (*m->result) std::printf("  It prints its result on standard output.\n");
  if (MakesLetters(*m))
    std::printf(
        "  With --split --out FOLDER/ each statement is a PDF of its own,\n"
        "  FOLDER/ACCOUNT-NAME.pdf, numbered and worded as it prints in the run.\n");
  std::vector<Param> params = ParseParams(m->params);
  std::vector<std::string> example = ExampleWords(m->example);
  std::printf(
      "\nParameters, in order (a bare argument fills the next one; --arg Name=Value any one):\n");
  if (params.empty()) std::printf("  none\n");
  for (size_t k = 0; k < params.size(); ++k) {
    const Param& p = params[k];
    std::string meaning = ParamMeaning(*m, p);
    std::printf("  %s%s  %s%s%s\n", p.name.c_str(), p.optional ? " (optional)" : "", p.type.c_str(),
                meaning.empty() ? "" : ": ", meaning.c_str());
    std::printf("      written as %s%s%s\n", ParamForm(p).c_str(),
                k < example.size() ? "; in the example: " : "",
                k < example.size() ? example[k].c_str() : "");
  }
  if (built) {
    std::printf("\nExample on the demo practice (orvenda-reports demo-db %s %s):\n  %s\n",
                ORVENDA_DEMO_DB, kDemoCommand, ExampleRun(*m).c_str());
  }
  return 0;
}

CommandRegistrar list_command(
    {"list", "list", "Lists every method by family with what it prints, and which are built.",
     &RunList});
CommandRegistrar help_command(
    {"help", "help METHOD",
     "Prints a method's parameters (type, meaning, how to write them) and an example.", &RunHelp});

}  // namespace

}  // namespace orv::app

#include "report_host.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <stdexcept>

#include "command.h"
#include "common/errors.h"
#include "common/vbstrings.h"
#include "frame/preview_form.h"
#include "frame/reports.h"
#include "invokers.h"
#include "method_catalog.h"
#include "platform/db/connection.h"
#include "platform/host/host_services.h"
#include "platform/host/settings.h"

namespace orv::app {

namespace {

const char* kUsage =
    "usage: orvenda-reports [--db URL] [--out FILE.pdf|.png|.txt] [--office N] [--user NAME]\n"
    "                       [--today yyyy-mm-dd] [--setting [Section.]Key=Value]...\n"
    "                       [--interest-rate R] [--interest-delay DAYS] [--printer NAME]\n"
    "                       METHOD [ARG | Name=Value]...\n"
    "       orvenda-reports list      (every method, its parameters, and which are built)\n";

const MethodSignature* FindMethod(const std::string& name) {
  for (const auto& m : MethodCatalog()) {
    if (vb::LCase(m.name) == vb::LCase(name)) return &m;
  }
  return nullptr;
}

// A progress bar on stderr, when stderr is a terminal.
void ShowProgress(uint8_t pct) {
  int filled = pct / 5;
  std::fprintf(stderr, "\r[%-20s] %3d%%", std::string(static_cast<size_t>(filled), '#').c_str(), pct);
  std::fflush(stderr);
}

}  // namespace

std::string DefaultDatabase() {
  const char* env = std::getenv("ORVENDA_DB");
  return env && *env ? env : "out/demo.db";
}

int RunReportHost(const std::vector<std::string>& args) {
  std::string db = DefaultDatabase(), out, user, printer;
  int32_t office = 0;
  float interest_rate = 0;
  int16_t interest_delay = 0;
  std::vector<std::pair<std::string, std::string>> settings;
  size_t i = 0;
  auto value = [&](const std::string& opt) -> std::string {
    if (i + 1 >= args.size()) throw std::invalid_argument(opt + " wants a value");
    return args[++i];
  };
  std::string method;
  std::vector<std::string> rest;
  try {
    for (; i < args.size(); ++i) {
      const std::string& a = args[i];
      if (a == "--db") db = value(a);
      else if (a == "--out") out = value(a);
      else if (a == "--office") office = std::stoi(value(a));
      else if (a == "--user") user = value(a);
      else if (a == "--printer") printer = value(a);
      else if (a == "--interest-rate") interest_rate = std::stof(value(a));
      else if (a == "--interest-delay") interest_delay = static_cast<int16_t>(std::stoi(value(a)));
      else if (a == "--today") {
        if (!ApplyToday(value(a))) return 2;
      } else if (a == "--setting") {
        std::string kv = value(a);
        size_t eq = kv.find('=');
        if (eq == std::string::npos) throw std::invalid_argument("--setting wants Key=Value");
        settings.emplace_back(kv.substr(0, eq), kv.substr(eq + 1));
      } else if (a == "--help" || a == "-h") {
        std::printf("%s", kUsage);
        return 0;
      } else if (a.rfind("--", 0) == 0) {
        throw std::invalid_argument("unknown option " + a);
      } else {
        method = a;
        rest.assign(args.begin() + static_cast<long>(i) + 1, args.end());
        break;
      }
    }
  } catch (const std::exception& e) {
    std::fprintf(stderr, "orvenda-reports: %s\n%s", e.what(), kUsage);
    return 2;
  }
  if (method.empty()) {
    std::fprintf(stderr, "%s", kUsage);
    return 2;
  }
  const MethodSignature* sig = FindMethod(method);
  if (sig == nullptr) {
    std::fprintf(stderr, "orvenda-reports: no method or command '%s' (see 'orvenda-reports list')\n",
                 method.c_str());
    return 2;
  }
  auto inv = Invokers().find(sig->name);
  if (inv == Invokers().end()) {
    std::fprintf(stderr, "orvenda-reports: %s is not built yet\n", sig->name);
    return 2;
  }

  // Arguments: positional in signature order, or Name=Value in any order.
  std::vector<Param> params = ParseParams(sig->params);
  std::vector<Variant> values(params.size());
  std::vector<bool> given(params.size(), false);
  try {
    size_t next = 0;
    for (const std::string& a : rest) {
      size_t eq = a.find('=');
      size_t slot = params.size();
      std::string text = a;
      if (eq != std::string::npos && eq > 0) {
        std::string name = a.substr(0, eq);
        for (size_t k = 0; k < params.size(); ++k) {
          if (vb::LCase(params[k].name) == vb::LCase(name)) slot = k;
        }
        if (slot < params.size()) text = a.substr(eq + 1);
      }
      if (slot == params.size()) {
        while (next < params.size() && given[next]) ++next;
        slot = next;
      }
      if (slot >= params.size()) throw std::invalid_argument("too many arguments for " + std::string(sig->name));
      values[slot] = ParseArgument(params[slot], text);
      given[slot] = true;
    }
    for (size_t k = 0; k < params.size(); ++k) {
      if (given[k] || params[k].optional) continue;
      // The signed-in user's name comes from --user when not passed.
      if (params[k].name == "UserName") {
        values[k] = Variant(user);
        given[k] = true;
        continue;
      }
      throw std::invalid_argument("missing argument " + params[k].name + " (" + params[k].type +
                                  ") of " + sig->name + "(" + sig->params + ")");
    }
  } catch (const std::exception& e) {
    std::fprintf(stderr, "orvenda-reports: %s\n", e.what());
    return 2;
  }

  if (out.empty()) out = "out/" + std::string(sig->name) + ".pdf";
  std::error_code ec;
  std::filesystem::path outp(out);
  if (outp.has_parent_path()) std::filesystem::create_directories(outp.parent_path(), ec);

  try {
    db::Connection conn(db);
    // A second connection the component opens names the same database.
    host::SettingsStore& store = host::AppSettings();
    store.Override("Settings", "ServerName", db);
    for (const auto& [key, val] : settings) {
      size_t dot = key.find('.');
      if (dot == std::string::npos) store.Override("Settings", key, val);
      else store.Override(key.substr(0, dot), key.substr(dot + 1), val);
    }
    PreviewForm form;
    form.SetOutput(out);
    if (!printer.empty()) form.SetPrinter(printer);
    // A report that traps an error shows it in a message box and ends; the
    // command must still fail, so that a script sees the error.
    struct CliHost : host::BatchHost {
      bool trapped = false;
      int MsgBox(const std::string& prompt, int buttons, const std::string& title) override {
        if (prompt.rfind("An Error has occurred", 0) == 0) trapped = true;
        return BatchHost::MsgBox(prompt, buttons, title);
      }
    } cli_host;
    clsReports reports;
    reports.SetHostServices(&cli_host);
    reports.Connection(conn);
    reports.SetPrintPreview(&form);
    reports.OfficeID = office;
    reports.InterestRate = interest_rate;
    reports.InterestDelay = interest_delay;
    bool tty = ::isatty(2);
    if (tty) reports.Progress = [](uint8_t& p) { ShowProgress(p); };

    MethodArgs margs(params, values, given);
    Variant result;
    // Each report reads one moment of the database itself (clsReports holds
    // a snapshot for every report call).
    result = inv->second(reports, margs);
    if (tty) std::fprintf(stderr, "\n");
    if (!result.IsEmpty()) std::printf("%s\n", result.IsNull() ? "Null" : CStr(result).c_str());
    // A report that leaves showing the form to the host (or was trapped
    // before showing it) still has its pages written.
    if (form.ShowCount() == 0 && form.PrintCount() == 0 && form.VSP.PageCount() > 0) form.Show();
    for (const auto& f : form.WrittenFiles()) {
      std::fprintf(stderr, "wrote %s (%d page%s)\n", f.c_str(), form.VSP.PageCount(),
                   form.VSP.PageCount() == 1 ? "" : "s");
    }
    if (cli_host.trapped) return 1;
  } catch (const ReportError& e) {
    std::fprintf(stderr, "\norvenda-reports: %s failed: %s\n", sig->name, e.description().c_str());
    return 1;
  } catch (const std::exception& e) {
    std::fprintf(stderr, "\norvenda-reports: %s failed: %s\n", sig->name, e.what());
    return 1;
  }
  return 0;
}

namespace {

int RunList(const std::vector<std::string>&) {
  for (const auto& m : MethodCatalog()) {
    bool built = Invokers().count(m.name) > 0;
    std::printf("%-40s %s%s\n    (%s)%s%s\n", m.name, built ? "" : "[not built yet]", "", m.params,
                *m.result ? " -> " : "", m.result);
  }
  return 0;
}

CommandRegistrar list_command({"list", "list", "Lists every public method with its parameters, and which are built.",
                               &RunList});

}  // namespace

}  // namespace orv::app

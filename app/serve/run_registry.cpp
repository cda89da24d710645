#include "serve/run_registry.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>

#include "common/errors.h"
#include "common/vbstrings.h"
#include "frame/preview_form.h"
#include "frame/reports.h"
#include "invokers.h"
#include "method_catalog.h"
#include "platform/db/connection.h"
#include "platform/db/connection_url.h"
#include "platform/host/host_services.h"
#include "platform/host/settings.h"
#include "platform/render/renderer.h"
#include "report_host.h"
#include "serve/catalog_json.h"

namespace orv::app::serve {

namespace fs = std::filesystem;

const char* RunStateName(RunState s) {
  switch (s) {
    case RunState::kQueued:
      return "queued";
    case RunState::kRunning:
      return "running";
    case RunState::kQuestion:
      return "question";
    case RunState::kDone:
      return "done";
    case RunState::kFailed:
      return "failed";
  }
  return "?";
}

bool IsPickedFilter(const std::string& text) {
  static const std::regex picked(
      R"(\s*(0|[A-Za-z_][A-Za-z0-9_]*\s*=\s*\d{1,10}(\s+OR\s+[A-Za-z_][A-Za-z0-9_]*\s*=\s*\d{1,10})*)?\s*)",
      std::regex::icase);
  return std::regex_match(text, picked);
}

// ---------------------------------------------------------------- Run

Run::Status Run::Snapshot() const {
  std::lock_guard lock(mu_);
  return status_;
}

bool Run::Answer(int answer) {
  std::lock_guard lock(mu_);
  if (status_.state != RunState::kQuestion || answer_) return false;
  answer_ = answer;
  changed_.notify_all();
  return true;
}

bool Run::Cancel() {
  std::lock_guard lock(mu_);
  // A run whose document is kept has ended, though its state may not say
  // so yet.
  if (status_.state == RunState::kDone || status_.state == RunState::kFailed || doc_) return false;
  cancel_requested_ = true;
  // A question in wait takes No, the answer that never writes, and the
  // message box then leaves the report.
  if (status_.state == RunState::kQuestion && !answer_) answer_ = host::vbNo;
  changed_.notify_all();
  return true;
}

void Run::StopIfCancelled() const {
  if (cancel_requested_) throw RunCancelled{};
}

bool Run::WaitFinished(std::chrono::milliseconds timeout) const {
  std::unique_lock lock(mu_);
  return changed_.wait_for(lock, timeout, [&] {
    return status_.state == RunState::kDone || status_.state == RunState::kFailed;
  });
}

int Run::Ask(const std::string& prompt, const std::string& title, std::chrono::seconds timeout) {
  std::unique_lock lock(mu_);
  status_.state = RunState::kQuestion;
  status_.question = prompt;
  answer_.reset();
  changed_.notify_all();
  bool answered = changed_.wait_for(lock, timeout, [&] { return answer_.has_value(); });
  int answer = answered ? *answer_ : host::vbNo;
  status_.messages.push_back({prompt + (answer == host::vbYes ? "  Yes." : "  No."), title, false});
  status_.question.clear();
  status_.state = RunState::kRunning;
  answer_.reset();
  return answer;
}

void Run::Finish(RunState state, std::string error) {
  std::lock_guard lock(mu_);
  status_.state = state;
  status_.error = db::MaskSecrets(error);
  status_.cancelled = cancel_requested_;
  status_.seconds =
      started_ == std::chrono::steady_clock::time_point{}
          ? 0
          : std::chrono::duration<double>(std::chrono::steady_clock::now() - started_).count();
  if (state == RunState::kDone) status_.progress = 100;
  changed_.notify_all();
}

const render::Document& Run::Document() const {
  std::lock_guard lock(mu_);
  if (status_.state != RunState::kDone || !doc_)
    throw std::logic_error("the run " + std::to_string(id_) + " has no document yet");
  return *doc_;
}

namespace {

std::string ReadWhole(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream ss;
  ss << in.rdbuf();
  return ss.str();
}

// Renders into a file with `render` and returns its bytes; the file goes.
template <typename F>
std::string RenderedBytes(const std::string& path, F render) {
  render(path);
  std::string bytes = ReadWhole(path);
  std::error_code ec;
  fs::remove(path, ec);
  return bytes;
}

}  // namespace

std::string Run::PagePng(int page, int dpi) {
  const render::Document& doc = Document();
  if (page < 1 || page > static_cast<int>(doc.pages.size()))
    throw std::out_of_range("the document has no page " + std::to_string(page));
  std::lock_guard lock(render_mu_);
  auto key = std::pair{page, dpi};
  if (auto it = png_.find(key); it != png_.end()) return it->second;
  std::string bytes = RenderedBytes(
      scratch_ + "-page.png", [&](const std::string& f) { render::RenderPng(doc, page, dpi, f); });
  png_.emplace(key, bytes);
  return bytes;
}

std::string Run::Pdf() {
  const render::Document& doc = Document();
  std::lock_guard lock(render_mu_);
  if (!pdf_)
    pdf_ = RenderedBytes(scratch_ + "-document.pdf",
                         [&](const std::string& f) { render::RenderPdf(doc, f); });
  return *pdf_;
}

std::string Run::Text() {
  return DocumentText(Document());
}

// ---------------------------------------------------------------- WebHost

// The message box of a browser run: messages are kept with the run for the
// page to show; a question with Yes and No (or OK and Cancel) waits for the
// person's answer through the page.
class WebHost : public host::HostServices {
 public:
  WebHost(Run& run, bool interactive, std::chrono::seconds timeout)
      : run_(run), interactive_(interactive), timeout_(timeout) {}

  int MsgBox(const std::string& prompt, int buttons, const std::string& title) override {
    std::string text = db::MaskSecrets(prompt);
    int kind = buttons & 7;
    if (kind == host::vbYesNo || kind == host::vbYesNoCancel || kind == host::vbOKCancel) {
      run_.StopIfCancelled();
      int answer = interactive_ ? run_.Ask(text, title, timeout_) : host::vbNo;
      if (!interactive_) Keep(text + "  No (a link to a report cannot answer).", title);
      run_.StopIfCancelled();
      // OK/Cancel boxes take Yes as OK and anything else as Cancel.
      if (kind == host::vbOKCancel) return answer == host::vbYes ? host::vbOK : host::vbCancel;
      return answer;
    }
    Keep(text, title);
    return host::vbOK;
  }
  void SetMousePointer(int pointer) override { pointer_ = pointer; }
  int MousePointer() const override { return pointer_; }
  // The reports call the message pump between rows: where a cancelled run
  // stops.
  void DoEvents() override { run_.StopIfCancelled(); }
  void Note(const std::string& text) override { Keep(db::MaskSecrets(text), ""); }

 private:
  void Keep(const std::string& text, const std::string& title) {
    std::lock_guard lock(run_.mu_);
    run_.status_.messages.push_back({text, title, FailureShown()});
  }
  Run& run_;
  bool interactive_;
  std::chrono::seconds timeout_;
  int pointer_ = host::vbDefault;
};

// ---------------------------------------------------------------- RunRegistry

RunRegistry::RunRegistry(RunSettings settings) : settings_(std::move(settings)) {
  char pattern[] = "/tmp/orvenda-serve-XXXXXX";
  if (::mkdtemp(pattern) == nullptr) throw std::runtime_error("cannot make a temporary folder");
  folder_ = pattern;
  // A second connection the component opens (the reports' writes on a
  // server) names the same database; the workstation's office follows the
  // server's. Set once here, before any worker reads them.
  host::SettingsStore& store = host::AppSettings();
  store.Override("Settings", "ServerName", settings_.db);
  if (settings_.office)
    store.Override("Settings", "CurrentOffice", std::to_string(settings_.office));
  int n = std::max(1, settings_.workers);
  for (int i = 0; i < n; ++i) workers_.emplace_back([this] { Work(); });
}

RunRegistry::~RunRegistry() {
  {
    std::lock_guard lock(mu_);
    stopping_ = true;
    queue_.clear();
    // A run waiting on a question takes No, so its worker can end.
    for (auto& [id, run] : runs_) run->Answer(host::vbNo);
  }
  queued_.notify_all();
  for (auto& w : workers_) w.join();
  std::error_code ec;
  fs::remove_all(folder_, ec);
}

std::shared_ptr<Run> RunRegistry::Start(const RunRequest& request) {
  const MethodSignature* sig = FindMethod(request.method);
  if (sig == nullptr) throw RequestError("There is no report " + request.method + ".", {});
  if (Invokers().count(sig->name) == 0)
    throw RequestError(std::string(sig->name) + " is not built yet.", {});

  // Every argument by itself first, so that the page can mark each bad
  // field; then the whole call through the command line's reader.
  std::vector<Param> params = ParseParams(sig->params);
  std::vector<FieldError> fields;
  auto check = [&](const Param& p, const std::string& text) {
    try {
      ParseArgument(p, text);
    } catch (const std::exception& e) {
      fields.push_back({p.name, e.what()});
      return;
    }
    // A filter is SQL: without --allow-filters only what the pickers
    // write may reach the report.
    if (!settings_.allow_filters && IsConditionKind(KindOf(*sig, p)) && !IsPickedFilter(text))
      fields.push_back({p.name, "argument " + p.name +
                                    " takes only the choices of its list here (a typed SQL "
                                    "condition needs a server started with --allow-filters)"});
  };
  for (size_t k = 0; k < request.positional.size() && k < params.size(); ++k)
    check(params[k], request.positional[k]);
  for (const auto& [name, text] : request.named)
    for (const Param& p : params)
      if (vb::LCase(p.name) == vb::LCase(name)) check(p, text);
  if (!fields.empty()) throw RequestError("Some arguments are not right.", fields);
  try {
    BindArguments(*sig, request.positional, request.named, settings_.user);
  } catch (const std::exception& e) {
    std::string msg = e.what();
    // "missing argument dtStart (Date) of ..." belongs beside dtStart.
    static const std::regex missing(R"(missing argument (\w+) )");
    std::smatch m;
    std::string field = std::regex_search(msg, m, missing) ? m[1].str() : "";
    throw RequestError(msg, {{field, msg}});
  }

  std::lock_guard lock(mu_);
  auto run = std::make_shared<Run>(next_id_++, sig->name);
  run->scratch_ = folder_ + "/run-" + std::to_string(run->id());
  runs_[run->id()] = run;
  // The oldest finished runs give way; a run in progress is always kept.
  while (runs_.size() > settings_.keep_runs) {
    auto old = std::find_if(runs_.begin(), runs_.end(), [](const auto& r) {
      auto s = r.second->Snapshot().state;
      return s == RunState::kDone || s == RunState::kFailed;
    });
    if (old == runs_.end()) break;
    runs_.erase(old);
  }
  RunRequest bound = request;
  bound.method = sig->name;
  queue_.emplace_back(run, std::move(bound));
  queued_.notify_one();
  return run;
}

bool RunRegistry::Cancel(Run& run) {
  {
    std::lock_guard lock(mu_);
    auto queued = std::find_if(queue_.begin(), queue_.end(),
                               [&](const auto& job) { return job.first.get() == &run; });
    if (queued != queue_.end()) {
      queue_.erase(queued);
      run.Cancel();
      run.Finish(RunState::kFailed, "Cancelled before it started.");
      return true;
    }
  }
  // Taken by a worker (perhaps not yet started: Execute checks first), or
  // ended.
  return run.Cancel();
}

std::shared_ptr<Run> RunRegistry::Find(int id) const {
  std::lock_guard lock(mu_);
  auto it = runs_.find(id);
  return it == runs_.end() ? nullptr : it->second;
}

void RunRegistry::Work() {
  for (;;) {
    std::pair<std::shared_ptr<Run>, RunRequest> job;
    {
      std::unique_lock lock(mu_);
      queued_.wait(lock, [&] { return stopping_ || !queue_.empty(); });
      if (stopping_) return;
      job = std::move(queue_.front());
      queue_.pop_front();
    }
    Execute(*job.first, job.second);
  }
}

void RunRegistry::Execute(Run& run, const RunRequest& request) {
  {
    std::lock_guard lock(run.mu_);
    // Cancelled between leaving the queue and starting.
    if (run.cancel_requested_) {
      run.status_.state = RunState::kFailed;
      run.status_.error = "Cancelled before it started.";
      run.status_.cancelled = true;
      run.changed_.notify_all();
      return;
    }
    run.status_.state = RunState::kRunning;
    run.started_ = std::chrono::steady_clock::now();
  }
  const MethodSignature& sig = *FindMethod(request.method);
  std::string stray_print = run.scratch_ + "-printed.pdf";
  try {
    MethodArgs args = BindArguments(sig, request.positional, request.named, settings_.user);
    // The same wiring as the command line's: a connection of this run's
    // own, a component, its form, the office and the interest settings.
    db::Connection conn(settings_.db);
    PreviewForm form;
    // A report that prints keeps its pages here as well; the person prints
    // them from the page to a printer of their choice.
    form.SetPrintFile(stray_print);
    form.SetNotifier([](const std::string&) {});
    // The PDF says where it came from, as the command line's does.
    form.VSP.Identity(
        RunIdentity(sig.name, args.GivenTexts(), settings_.db, settings_.user,
                    settings_.office ? std::optional<int32_t>(settings_.office) : std::nullopt));
    WebHost web(run, request.interactive, settings_.question_timeout);
    clsReports reports;
    reports.SetHostServices(&web);
    reports.Connection(conn);
    reports.SetPrintPreview(&form);
    reports.OfficeID = settings_.office;
    reports.InterestRate = settings_.interest_rate;
    reports.InterestDelay = settings_.interest_delay;
    reports.Progress = [&run](uint8_t& pct) {
      {
        std::lock_guard lock(run.mu_);
        run.status_.progress = std::min<int>(pct, 100);
      }
      run.StopIfCancelled();
    };
    web.ClearFailure();
    Variant result = CallMethod(reports, form, sig, args, settings_.user);
    std::error_code ec;
    fs::remove(stray_print, ec);
    // A run asked to stop ends cancelled, whatever the report said.
    if (run.cancel_requested_) throw RunCancelled{};
    if (web.FailureShown()) {
      run.Finish(RunState::kFailed, std::string(sig.name) + " did not finish: see its message.");
      return;
    }
    int pages = form.VSP.PageCount();
    if (result.IsEmpty() && pages == 0 && !sig.draws_nothing) {
      run.Finish(RunState::kFailed, std::string(sig.name) + " produced no document.");
      return;
    }
    {
      std::lock_guard lock(run.mu_);
      // Asked to stop after its last check: what it made is not kept. The
      // check and the keeping are one step under the lock, so a request
      // either stops the run or finds it ended.
      if (run.cancel_requested_) throw RunCancelled{};
      // A report that prints at once (a receipt, a card) has no printer
      // here: its pages wait in the page for the person to print them.
      if (form.PrintedWithoutPrinter())
        run.status_.messages.push_back(
            {"This report prints: choose a printer below its pages and press Print.", "", false});
      run.doc_ = std::make_unique<render::Document>(form.VSP.Document());
      run.status_.pages = pages;
      if (!result.IsEmpty()) run.status_.result = result.IsNull() ? "Null" : CStr(result);
    }
    run.Finish(RunState::kDone, "");
  } catch (const RunCancelled&) {
    // Nothing of the run is kept: its form, pages and connection went
    // with the stack; the worker takes the next run.
    run.Finish(RunState::kFailed, "Cancelled.");
  } catch (const ReportError& e) {
    run.Finish(RunState::kFailed, std::string(sig.name) + " failed: " + e.description());
  } catch (const std::exception& e) {
    run.Finish(RunState::kFailed, std::string(sig.name) + " failed: " + e.what());
  }
  std::error_code ec;
  fs::remove(stray_print, ec);
}

}  // namespace orv::app::serve

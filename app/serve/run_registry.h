// The runs of the browser host: each report a person starts gets a Run,
// queued until a worker is free, then executed on its own clsReports, its
// own preview form and its own connection (on a server: its own snapshot),
// exactly as the command line executes one. The registry keeps the finished
// documents for their pages and downloads.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/render/display_list.h"

namespace orv::app::serve {

// What every run of one server shares.
struct RunSettings {
  std::string db;      // the practice database (file or URL)
  int32_t office = 0;  // OfficeID and the workstation's CurrentOffice
  std::string user;    // fills every UserName argument not given
  float interest_rate = 0;
  int16_t interest_delay = 0;
  // True lets a person type a raw SQL condition into a filter argument;
  // otherwise filters are limited to lists of numbers the pickers write.
  bool allow_filters = false;
  // Reports that run at once, each on its own component and connection.
  int workers = 2;
  // Finished runs kept for their pages; the oldest go first.
  size_t keep_runs = 40;
  // How long a Yes/No question waits for its answer before the run takes
  // No, the answer that never writes to the practice.
  std::chrono::seconds question_timeout{600};
};

// One argument that was refused, for the page to show beside its field.
struct FieldError {
  std::string field;  // the parameter's name; "" for the call as a whole
  std::string message;
};

// Thrown by RunRegistry::Start for input refused before the run starts.
struct RequestError : std::runtime_error {
  RequestError(std::string message, std::vector<FieldError> fields)
      : std::runtime_error(message), fields(std::move(fields)) {}
  std::vector<FieldError> fields;
};

struct RunRequest {
  std::string method;
  // The command line's forms: texts in signature order, then Name=value.
  std::vector<std::string> positional;
  std::vector<std::pair<std::string, std::string>> named;
  // False for the synchronous /run/ links: a Yes/No question is answered
  // No at once, as the command line answers it by default.
  bool interactive = true;
};

enum class RunState { kQueued, kRunning, kQuestion, kDone, kFailed };
const char* RunStateName(RunState s);

struct RunMessage {
  std::string text;
  std::string title;
  bool failure = false;  // the report said it did not do its work
};

class Run {
 public:
  struct Status {
    int id = 0;
    std::string method;
    RunState state = RunState::kQueued;
    int progress = 0;  // 0-100, from the report's Progress event
    std::vector<RunMessage> messages;
    std::string question;  // the pending Yes/No question, when kQuestion
    std::string error;     // why a failed run failed
    std::string result;    // what a method with a result returned
    int pages = 0;
    double seconds = 0;      // from start to end of the run
    bool cancelled = false;  // stopped at the person's request
  };

  Run(int id, std::string method) : id_(id), method_(std::move(method)) {
    status_.id = id_;
    status_.method = method_;
  }

  int id() const { return id_; }
  const std::string& method() const { return method_; }
  Status Snapshot() const;
  // Answers the pending question (a vbYes/vbNo value); false when no
  // question waits.
  bool Answer(int answer);
  // Asks the run to stop. A run in progress stops at its next progress
  // raise, message-pump call or message box (the host services check the
  // request there) and ends as a failed run without a document; a pending
  // question is answered No first. False when the run has already ended.
  // A queued run is cancelled through RunRegistry::Cancel, so that it never
  // starts.
  bool Cancel();
  // Throws RunCancelled when the run was asked to stop.
  void StopIfCancelled() const;
  // Waits until the run is done or failed, up to `timeout`; true if it is.
  bool WaitFinished(std::chrono::milliseconds timeout) const;

  // The finished document's outputs, rendered when first asked for and
  // kept. Throw std::out_of_range for a page the document does not have and
  // std::logic_error before the run is done.
  std::string PagePng(int page, int dpi);
  std::string Pdf();
  std::string Text();
  // The finished document, for a print request; throws as above.
  const render::Document& Document() const;

 private:
  friend class RunRegistry;
  friend class WebHost;
  void Finish(RunState state, std::string error);
  // Asks a Yes/No question and waits for its answer, or `timeout`.
  int Ask(const std::string& prompt, const std::string& title, std::chrono::seconds timeout);

  const int id_;
  const std::string method_;
  std::string scratch_;  // a file name prefix for rendering, in the registry's folder

  mutable std::mutex mu_;
  mutable std::condition_variable changed_;
  Status status_;
  std::optional<int> answer_;
  std::atomic<bool> cancel_requested_{false};
  std::chrono::steady_clock::time_point started_;
  std::unique_ptr<render::Document> doc_;

  std::mutex render_mu_;  // one render at a time per run; the cache below
  std::map<std::pair<int, int>, std::string> png_;
  std::optional<std::string> pdf_;
};

// What a cancelled run throws from the host services to leave the report.
// It is not a ReportError nor a std::exception, so the reports' traps,
// which would show their failure box and carry on, let it pass.
struct RunCancelled {};

class RunRegistry {
 public:
  explicit RunRegistry(RunSettings settings);
  // Lets the runs in progress finish; the queued ones are dropped.
  ~RunRegistry();
  RunRegistry(const RunRegistry&) = delete;
  RunRegistry& operator=(const RunRegistry&) = delete;

  // Reads the method and its arguments now, so that bad input is answered
  // at once field by field (RequestError), then queues the run.
  std::shared_ptr<Run> Start(const RunRequest& request);
  // The run of that id, or null (never started, or dropped as old).
  std::shared_ptr<Run> Find(int id) const;
  // Cancels a run: a queued one leaves the queue and never starts; one in
  // progress is asked to stop (Run::Cancel). False when it has ended.
  bool Cancel(Run& run);

  const RunSettings& settings() const { return settings_; }
  // A private temporary folder for files made on the way to an answer.
  const std::string& ScratchFolder() const { return folder_; }

 private:
  void Work();
  void Execute(Run& run, const RunRequest& request);

  const RunSettings settings_;
  std::string folder_;  // a private temporary folder for rendering and stray print files

  mutable std::mutex mu_;
  std::condition_variable queued_;
  bool stopping_ = false;
  int next_id_ = 1;
  std::deque<std::pair<std::shared_ptr<Run>, RunRequest>> queue_;
  std::map<int, std::shared_ptr<Run>> runs_;
  std::vector<std::thread> workers_;
};

// True for a text a filter argument may carry without --allow-filters:
// none ("", "0") or "Column = N" terms joined by OR, which is all the
// pickers write ("ProviderID = 3 OR ProviderID = 5").
bool IsPickedFilter(const std::string& text);

}  // namespace orv::app::serve

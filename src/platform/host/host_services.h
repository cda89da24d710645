// The interactive services of the host platform that the reports call:
// the message box, the screen's mouse pointer and the message pump.
//
// A report never talks to a screen directly; it asks the HostServices the
// component was given. BatchHost serves command-line runs (messages go to
// stderr and are answered with a configured default); RecordingHost serves
// tests, which assert the exact texts a report showed.
#pragma once

#include <string>
#include <vector>

namespace orv::host {

// Buttons and answers of the message box, with the host language's values.
enum MsgBoxButtons : int {
  vbOKOnly = 0,
  vbOKCancel = 1,
  vbYesNoCancel = 3,
  vbYesNo = 4,
  vbCritical = 16,
  vbQuestion = 32,
  vbExclamation = 48,
  vbInformation = 64,
};
enum MsgBoxResult : int { vbOK = 1, vbCancel = 2, vbYes = 6, vbNo = 7 };

// Mouse pointers the reports set: default and hourglass.
enum MousePointer : int { vbDefault = 0, vbHourglass = 11 };

class HostServices {
 public:
  virtual ~HostServices() = default;
  // Shows `prompt` with the buttons and title; returns the person's answer.
  virtual int MsgBox(const std::string& prompt, int buttons = vbOKOnly,
                     const std::string& title = "") = 0;
  virtual void SetMousePointer(int pointer) = 0;
  virtual int MousePointer() const = 0;
  // Lets the host run its pending events (DoEvents).
  virtual void DoEvents() = 0;
  // A remark on a run that goes on regardless (a listed patient not on file):
  // for the log, never a box the person must answer. Dropped unless the
  // host keeps a log.
  virtual void Note(const std::string& text) { (void)text; }

  // Shows a message that says a report did not do its work (a trap's box,
  // an input the report refused) and marks the run failed. A host that
  // runs unattended reads the mark after the call instead of reading the
  // message's words, whose wording differs from report to report.
  int ShowFailure(const std::string& prompt, int buttons = vbOKOnly, const std::string& title = "") {
    failure_shown_ = true;
    return MsgBox(prompt, buttons, title);
  }
  bool FailureShown() const { return failure_shown_; }
  void ClearFailure() { failure_shown_ = false; }

 private:
  bool failure_shown_ = false;
};

// Command-line host: prints each message to stderr and answers `answer`
// (OK for an OK box; for Yes/No boxes the configured default).
class BatchHost : public HostServices {
 public:
  explicit BatchHost(int yes_no_answer = vbNo) : yes_no_answer_(yes_no_answer) {}
  int MsgBox(const std::string& prompt, int buttons, const std::string& title) override;
  void SetMousePointer(int pointer) override { pointer_ = pointer; }
  int MousePointer() const override { return pointer_; }
  void DoEvents() override {}
  // Printed to stderr.
  void Note(const std::string& text) override;

 private:
  int yes_no_answer_;
  int pointer_ = vbDefault;
};

// Test host: records every message box and pointer change.
class RecordingHost : public HostServices {
 public:
  struct Message {
    std::string prompt;
    int buttons;
    std::string title;
  };
  int MsgBox(const std::string& prompt, int buttons, const std::string& title) override;
  void SetMousePointer(int pointer) override {
    pointer_ = pointer;
    pointer_history.push_back(pointer);
  }
  int MousePointer() const override { return pointer_; }
  void DoEvents() override { ++events_pumped; }
  void Note(const std::string& text) override { notes.push_back(text); }

  std::vector<Message> messages;
  std::vector<std::string> notes;
  std::vector<int> pointer_history;
  int events_pumped = 0;
  // Answer given to Yes/No and OK/Cancel boxes.
  int answer = vbYes;

 private:
  int pointer_ = vbDefault;
};

}  // namespace orv::host

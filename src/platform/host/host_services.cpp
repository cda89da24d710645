#include "platform/host/host_services.h"

#include <cstdio>

namespace orv::host {

namespace {

// The button group is the low nibble of the buttons argument.
bool AsksQuestion(int buttons) {
  int group = buttons & 7;
  return group == vbYesNo || group == vbYesNoCancel || group == vbOKCancel;
}

}  // namespace

int BatchHost::MsgBox(const std::string& prompt, int buttons, const std::string& title) {
  if (!title.empty()) std::fprintf(stderr, "[%s] ", title.c_str());
  std::fprintf(stderr, "%s\n", prompt.c_str());
  if (!AsksQuestion(buttons)) return vbOK;
  int group = buttons & 7;
  if (group == vbOKCancel) return yes_no_answer_ == vbYes ? vbOK : vbCancel;
  return yes_no_answer_;
}

void BatchHost::Note(const std::string& text) {
  std::fprintf(stderr, "%s\n", text.c_str());
}

int RecordingHost::MsgBox(const std::string& prompt, int buttons, const std::string& title) {
  messages.push_back({prompt, buttons, title});
  if (!AsksQuestion(buttons)) return vbOK;
  if ((buttons & 7) == vbOKCancel) return answer == vbYes ? vbOK : vbCancel;
  return answer;
}

}  // namespace orv::host

#include "platform/host/version_check.h"

#include <charconv>
#include <string>

#include "common/errors.h"

namespace orv::host {

const char* const kNewerVersionPrompt =
    "There currently is a newer version of Orvenda available to install than the one running on "
    "this computer.\nWould you like to install it now?\nNote: If you do not install the new "
    "version of Orvenda at this time it is likely that the program will not function correctly.";

ComponentVersion RunningVersion() {
  // ORVENDA_VERSION is the project's version as the build was configured
  // ("0.1"); its revision, when it names none, is 0.
  return ParseVersion(ORVENDA_VERSION);
}

ComponentVersion ParseVersion(std::string_view text) {
  int parts[3] = {0, 0, 0};
  size_t start = 0;
  for (int i = 0;; ++i) {
    const size_t dot = text.find('.', start);
    const std::string_view part = text.substr(start, dot == std::string_view::npos ? dot : dot - start);
    int value = 0;
    auto [end, ec] = std::from_chars(part.data(), part.data() + part.size(), value);
    if (i == 3 || part.empty() || ec != std::errc() || end != part.data() + part.size() || value < 0)
      throw ConversionError("Not a version of the form major.minor.revision: \"" +
                            std::string(text) + "\"");
    parts[i] = value;
    if (dot == std::string_view::npos) break;
    start = dot + 1;
  }
  return {parts[0], parts[1], parts[2]};
}

bool CheckVersion(std::string_view version, HostServices& host, ComponentVersion running) {
  if (ParseVersion(version) <= running) return true;
  return host.MsgBox(kNewerVersionPrompt, vbYesNo) == vbYes;
}

}  // namespace orv::host

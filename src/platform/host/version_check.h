// The component's own version, and the question the host asks when its
// update service names a newer one.
#pragma once

#include <string_view>

#include "platform/host/host_services.h"

namespace orv::host {

// Major, minor and revision, compared in that order.
struct ComponentVersion {
  int major = 0, minor = 0, revision = 0;
  friend auto operator<=>(const ComponentVersion&, const ComponentVersion&) = default;
};

// The version of the running component, as the build names it.
ComponentVersion RunningVersion();

// Reads "major.minor.revision"; missing parts are 0 ("2.1" is 2.1.0). Raises
// ReportError naming the text when a part is not a whole number or there
// are more than three.
ComponentVersion ParseVersion(std::string_view text);

// The message shown when `version` is newer than `running`.
extern const char* const kNewerVersionPrompt;

// When `version` names a newer component than `running`, asks on `host`
// with Yes and No whether to install it now, and gives true for Yes and
// false for No; otherwise true without a question. False thus means the
// person chose to go on with a version older than the one offered.
bool CheckVersion(std::string_view version, HostServices& host,
                  ComponentVersion running = RunningVersion());

}  // namespace orv::host

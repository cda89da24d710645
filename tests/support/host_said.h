// Checks what the host was told: the one message box a failed run shows.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "platform/host/host_services.h"

namespace orv::testing {

// Success when the host showed exactly one message and it starts with
// `start` (a trap's fixed text, before the error's own description).
inline ::testing::AssertionResult SaidOnce(const host::RecordingHost& host,
                                           const std::string& start) {
  if (host.messages.size() != 1)
    return ::testing::AssertionFailure() << host.messages.size() << " messages, not one";
  const std::string& said = host.messages[0].prompt;
  if (said.rfind(start, 0) != 0)
    return ::testing::AssertionFailure() << "the message does not start with \"" << start << "\":\n"
                                         << said;
  return ::testing::AssertionSuccess();
}

}  // namespace orv::testing

// The update check: which versions count as newer, and the question asked.
#include "platform/host/version_check.h"

#include <gtest/gtest.h>

#include "common/errors.h"

namespace orv::host {
namespace {

TEST(VersionCheck, ComparesPartByPartAndAsksOnlyForANewerOne) {
  const ComponentVersion running{2, 5, 10};
  struct Case {
    const char* name;
    const char* offered;
    bool asks;
  } cases[] = {
      {"the same", "2.5.10", false},
      {"a later revision", "2.5.11", true},
      {"a later minor with a lower revision", "2.6.0", true},
      {"a later major with lower parts", "3.0.0", true},
      {"an older major with higher parts", "1.9.99", false},
      {"parts compared as numbers, not text", "2.10.0", true},
      {"a missing revision is 0", "2.5", false},
      {"a missing minor is 0", "3", true},
  };
  for (const Case& c : cases) {
    for (int answer : {vbYes, vbNo}) {
      RecordingHost host;
      host.answer = answer;
      const bool go_on = CheckVersion(c.offered, host, running);
      ASSERT_EQ(host.messages.size(), c.asks ? 1u : 0u) << c.name;
      if (c.asks) {
        EXPECT_EQ(host.messages[0].prompt, kNewerVersionPrompt);
        EXPECT_EQ(host.messages[0].buttons, vbYesNo);
        EXPECT_EQ(go_on, answer == vbYes) << c.name << ": Yes installs, No refuses";
      } else {
        EXPECT_TRUE(go_on) << c.name;
      }
    }
  }
}

TEST(VersionCheck, TextThatIsNoVersionIsRefused) {
  for (const char* bad : {"", "2..1", "2.5.x", "v2.5.1", "2.5.1.4", "-1.0.0", "2.5."}) {
    RecordingHost host;
    EXPECT_THROW(CheckVersion(bad, host, {1, 0, 0}), ConversionError) << bad;
    EXPECT_TRUE(host.messages.empty()) << bad;
  }
  // The build's own version reads back and is never newer than itself.
  RecordingHost host;
  const ComponentVersion running = RunningVersion();
  EXPECT_TRUE(CheckVersion(std::to_string(running.major) + "." + std::to_string(running.minor) +
                               "." + std::to_string(running.revision),
                           host));
  EXPECT_TRUE(host.messages.empty());
}

}  // namespace
}  // namespace orv::host

// The last step of a test run on the server: drops the template databases
// the report tests made there (support/test_engine.h), each under its
// advisory lock, so none goes while a test is cloning it. Without a server
// there is nothing to drop, and the step says it is skipped.
#include <cstdio>
#include <exception>
#include <string>

#include "support/postgres.h"
#include "support/test_engine.h"

int main() {
  using namespace orv::testing;
  if (TestServerUrl().empty()) {
    std::puts("ORVENDA_TEST_PG is not set: no server, no templates to drop");
    return 77;
  }
  try {
    ServerSession server;
    const std::string prefix = kTemplatePrefix;
    int dropped = 0;
    for (const std::string& name : server.Column("SELECT datname FROM pg_database WHERE datname "
                                                 "LIKE 'orv\\_tpl\\_%' ORDER BY datname")) {
      std::string lock = TemplateLockArgs(name.substr(prefix.size(), 16));
      server.Exec("SELECT pg_advisory_lock" + lock);
      server.Exec("DROP DATABASE IF EXISTS " + name + " WITH (FORCE)");
      server.Exec("SELECT pg_advisory_unlock" + lock);
      ++dropped;
    }
    std::printf("dropped %d template databases\n", dropped);
    return 0;
  } catch (const std::exception& e) {
    std::fprintf(stderr, "%s\n", e.what());
    return 1;
  }
}

// The subcommands of the command-line host. Each lives in its own file
// (cmd_<name>.cpp) and registers itself with a static CommandRegistrar, so
// adding a command touches no other file.
#pragma once

#include <string>
#include <vector>

namespace orv::app {

struct Command {
  std::string name;     // "sql", "demo-db", ...
  std::string usage;    // one line: "sql [--db URL] [--format tsv|csv|table] STATEMENT"
  std::string summary;  // one sentence for --help
  // Runs with the arguments after the command name; returns the exit status.
  int (*run)(const std::vector<std::string>& args);
};

std::vector<Command>& Commands();

struct CommandRegistrar {
  explicit CommandRegistrar(Command c) { Commands().push_back(std::move(c)); }
};

// Fixes the clock from "yyyy-mm-dd" (the --today option); returns false and
// prints an error for text that is no date.
bool ApplyToday(const std::string& text);

}  // namespace orv::app

// The browser host: an HTTP server that serves the page, the method
// catalogue, the runs and their documents, the pickers' lists and the
// printers. Routes and their answers are in server.cpp; the runs live in
// the RunRegistry.
#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/db/connection.h"
#include "serve/run_registry.h"

namespace httplib {
class Server;
}

namespace orv::app::serve {

struct ServeOptions {
  RunSettings run;
  std::string host = "127.0.0.1";
  int port = 8640;  // 0: any free port
  // When set, every request carries it (an Authorization: Bearer header, a
  // token=... parameter, or the cookie the page gets when opened with it).
  std::string token;
};

// Reads the serve command's options: --db, --listen HOST:PORT, --today,
// --office, --user, --token T (or "--token new" for a random one),
// --allow-filters, --workers N, --interest-rate, --interest-delay. Throws
// std::invalid_argument naming the option.
ServeOptions ParseServeOptions(const std::vector<std::string>& args);

// True for an address only this machine reaches (127.0.0.0/8, ::1,
// localhost).
bool IsLoopback(const std::string& host);

// A token of 32 hexadecimal digits from the system's random source.
std::string NewToken();

class ReportServer {
 public:
  // Refuses (std::invalid_argument) a non-loopback address without a token.
  explicit ReportServer(ServeOptions options);
  ~ReportServer();
  ReportServer(const ReportServer&) = delete;
  ReportServer& operator=(const ReportServer&) = delete;

  // Binds the address; returns the port. Throws std::runtime_error when the
  // address is taken or not this machine's.
  int Bind();
  // Serves until Stop (from another thread or a signal).
  void Listen();
  void Stop();

  RunRegistry& runs() { return runs_; }
  const ServeOptions& options() const { return options_; }

 private:
  void Route();
  // The pickers' lookups run on one connection of their own.
  std::string PatientsJson(const std::string& query);
  std::string ProvidersJson();

  ServeOptions options_;
  RunRegistry runs_;
  std::unique_ptr<httplib::Server> http_;
  std::mutex lookup_mu_;
  std::unique_ptr<db::Connection> lookup_;
};

}  // namespace orv::app::serve

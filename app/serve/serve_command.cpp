// `orvenda-reports serve`: the reports in a browser.
#include <csignal>
#include <cstdio>

#include "command.h"
#include "platform/db/connection.h"
#include "platform/db/connection_url.h"
#include "report_host.h"
#include "serve/server.h"

namespace orv::app::serve {
namespace {

ReportServer* g_server = nullptr;

void StopOnSignal(int) {
  if (g_server) g_server->Stop();
}

int RunServe(const std::vector<std::string>& args) {
  ServeOptions options;
  try {
    options = ParseServeOptions(args);
  } catch (const std::exception& e) {
    std::fprintf(stderr, "orvenda-reports serve: %s\n", e.what());
    return 2;
  }
  if (options.run.db.empty()) options.run.db = DefaultDatabase();
  try {
    // The database answers now, or the server does not start: a missing
    // file or an unreachable server is said once here rather than on every
    // report.
    db::Connection(options.run.db).Close();
    ReportServer server(options);
    int port = server.Bind();
    std::string host =
        options.host.find(':') != std::string::npos ? "[" + options.host + "]" : options.host;
    std::string url = "http://" + host + ":" + std::to_string(port) + "/";
    if (!options.token.empty()) url += "?token=" + options.token;
    std::fprintf(stderr, "orvenda-reports serve: the reports of %s at\n  %s\n(Ctrl-C stops)\n",
                 db::MaskSecrets(options.run.db).c_str(), url.c_str());
    g_server = &server;
    std::signal(SIGINT, StopOnSignal);
    std::signal(SIGTERM, StopOnSignal);
    server.Listen();
    g_server = nullptr;
  } catch (const std::exception& e) {
    std::fprintf(stderr, "orvenda-reports serve: %s\n", db::MaskSecrets(e.what()).c_str());
    return 2;
  }
  return 0;
}

CommandRegistrar serve_command(
    {"serve",
     "serve [--db URL] [--listen 127.0.0.1:8640] [--today yyyy-mm-dd] [--office N] [--user NAME] "
     "[--token T|new] [--allow-filters] [--workers N]",
     "Serves the reports to a browser: pick a report, fill its form, watch it run, see, print or "
     "download its pages.",
     &RunServe});

}  // namespace
}  // namespace orv::app::serve

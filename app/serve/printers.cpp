#include "serve/printers.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>

#include "frame/preview_form.h"
#include "platform/host/files.h"

namespace orv::app::serve {

std::vector<std::string> ListPrinters() {
  std::vector<std::string> out;
  FILE* p = ::popen("lpstat -e 2>/dev/null", "r");
  if (p == nullptr) return out;
  char line[512];
  while (std::fgets(line, sizeof line, p)) {
    std::string name(line);
    while (!name.empty() && (name.back() == '\n' || name.back() == '\r' || name.back() == ' '))
      name.pop_back();
    if (!name.empty()) out.push_back(name);
  }
  ::pclose(p);
  return out;
}

std::string PrintDocument(const render::Document& doc, const std::string& printer) {
  // Only a queue the machine has: the name reaches a shell command.
  std::vector<std::string> queues = ListPrinters();
  if (std::find(queues.begin(), queues.end(), printer) == queues.end())
    return "There is no printer " + printer + " on this machine.";
  PreviewForm form;
  form.SetPrinter(printer);
  std::string spare = host::GetNewTempFile("orv");
  std::string kept = spare + ".pdf";
  // Where the form keeps a job the queue refused; removed at once, as the
  // person still has the pages in the browser.
  form.SetPrintFile(kept);
  form.SetNotifier([](const std::string&) {});
  form.Print(doc, false);
  std::error_code ec;
  std::filesystem::remove(kept, ec);
  std::filesystem::remove(spare, ec);
  if (form.PrintRefused()) return "The printer " + printer + " did not take the document.";
  return "";
}

}  // namespace orv::app::serve

// Printing through CUPS with its own command-line clients (lpstat, lp), as
// a workstation prints: the scheduler is the one CUPS_SERVER or the
// client's configuration names.
#pragma once

#include <string>
#include <vector>

namespace orv::host {

// What became of a document handed to a CUPS queue.
struct PrintOutcome {
  bool printed = false;  // the queue took the job and is not stopped
  std::string job;       // the job's ID, "orvenda-test-12", when printed
  std::string message;   // why not, for the person, when not printed
};

// Sends the PDF file `pdf` to the queue `printer` under the job title
// `title`. The queue is asked first: a queue CUPS does not know, or one
// that is stopped (cupsdisable: it would take the job and hold it
// unprinted), or a scheduler that cannot be reached, prints nothing and
// says why; then lp submits it, and a refusal (cupsreject) says lp's reason.
PrintOutcome PrintPdfWithCups(const std::string& printer, const std::string& pdf,
                              const std::string& title);

// The queues the scheduler offers (lpstat -e), for a person to choose from;
// empty when none or when no scheduler answers.
std::vector<std::string> CupsPrinters();

}  // namespace orv::host

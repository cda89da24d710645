// The printers of the machine and printing a finished document to one, for
// the browser host: the same CUPS path the command line prints through.
#pragma once

#include <string>
#include <vector>

#include "platform/render/display_list.h"

namespace orv::app::serve {

// The CUPS queues `lpstat -e` names, in its order; empty when there are
// none or CUPS is not installed.
std::vector<std::string> ListPrinters();

// Sends the document to the queue through the preview form's printing (a
// PDF handed to lp). Returns "" when the queue took the job, else the
// reason for the person.
std::string PrintDocument(const render::Document& doc, const std::string& printer);

}  // namespace orv::app::serve

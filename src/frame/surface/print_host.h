// What the print surface asks of the preview form that owns it: printing and
// the printer dialogs. The form implements it; the surface records each
// request and forwards it.
#pragma once

#include <string>

#include "platform/render/display_list.h"

namespace orv::frame {

class PrintHost {
 public:
  virtual ~PrintHost() = default;
  // Sends the finished document to the printer; `ask` shows the printer
  // dialog first.
  virtual void Print(const render::Document& doc, bool ask) = 0;
  // Shows a dialog (0 printer, 2 page setup); nonzero if the person confirms.
  virtual int ShowDialog(int kind) = 0;
  virtual void SelectPrinter(const std::string& device) = 0;
};

}  // namespace orv::frame

// Invokers of the common routines the host shares with the component.
#include "frame/reports.h"
#include "invokers.h"
#include "platform/host/version_check.h"

namespace orv::app {
namespace {

// The question goes to the command line's host, which answers it by
// `--answer`.
InvokerRegistrar check_version("CheckVersion", [](clsReports& r, const MethodArgs& a) {
  return Variant(host::CheckVersion(a.Str(0), r.Host()));
});

}  // namespace
}  // namespace orv::app

// The receivable before a period and at its end for every person at once,
// as srptOpeningReceivable reads it for one filter.
#pragma once

#include <map>
#include <string>

#include "common/currency.h"
#include "common/datetime.h"
#include "frame/reports.h"

namespace orv::closing {

struct OpeningClosing {
  Currency Opening, Closing;
};

// The two figures keyed by the text of `charge_key` (a column of the line
// or invoice, e.g. "InvoiceDetails.ProviderID") and, for payments taken in,
// of `taken_in_key` (e.g. "InvoicePayments.InitialProviderID"); an empty
// key gives one total under "". `filters` still applies. A person with
// nothing on file has no entry.
std::map<std::string, OpeningClosing> OpeningReceivableBy(
    clsReports& reports, DateTime start, DateTime end,
    const clsReports::ReceivableFilters& filters, bool by_allocated_payment,
    const std::string& charge_key, const std::string& taken_in_key);

}  // namespace orv::closing

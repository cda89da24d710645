// A zip archive of whole files, stored without compression: how the browser
// host hands over one PDF per statement in a single download. PDFs are
// compressed already, so storing them costs little.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace orv::app::serve {

// The archive's bytes for (name in the archive, file bytes) pairs.
std::string StoredZip(const std::vector<std::pair<std::string, std::string>>& files);

}  // namespace orv::app::serve

// Moving binary columns between the database and files: the office logo
// written to a temporary picture file for the letterhead, and a file read
// into a column for the host.
#pragma once

#include <string>

#include "platform/db/recordset.h"
#include "platform/host/host_services.h"

namespace orv {

// The size of the pieces a binary field is read in.
inline constexpr long kBlobChunk = 65536;

// Writes the field of the current row to `path` in pieces of kBlobChunk
// bytes, the remainder last. A field of no size returns false and leaves any
// file at `path` untouched; otherwise an existing file is replaced.
bool SaveFileFromDB(const db::Recordset& rs, const std::string& field, const std::string& path);

// Reads the whole file into the field of the current row, and with `update`
// writes the row. A failure shows "The file could not be saved to the
// database. Please check your temp path and try again." and returns false.
bool SaveFileToDB(db::Recordset& rs, const std::string& field, const std::string& path,
                  bool update, host::HostServices& host);

// The report writer's field definition file cannot be written here; raises
// ReportError saying so.
void CreateTTX(const db::Recordset& rs, const std::string& path);

}  // namespace orv

#include "frame/blob_files.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "common/errors.h"

namespace orv {

bool SaveFileFromDB(const db::Recordset& rs, const std::string& field, const std::string& path) {
  db::Field f = rs[field];
  long size = f.ActualSize();
  if (size <= 0) return false;
  std::error_code ec;
  if (std::filesystem::exists(path, ec)) std::filesystem::remove(path, ec);
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  if (!out) throw ReportError(75, "Path/File access error: " + path);
  // Whole pieces first, then the remainder, so a field of exactly one piece
  // writes no empty tail.
  long whole = size / kBlobChunk;
  for (long i = 0; i < whole; ++i) {
    Bytes chunk = f.GetChunk(kBlobChunk);
    out.write(reinterpret_cast<const char*>(chunk.data()), static_cast<std::streamsize>(chunk.size()));
  }
  long rest = size % kBlobChunk;
  if (rest > 0) {
    Bytes chunk = f.GetChunk(rest);
    out.write(reinterpret_cast<const char*>(chunk.data()), static_cast<std::streamsize>(chunk.size()));
  }
  out.close();
  if (!out) throw ReportError(75, "Path/File access error: " + path);
  return true;
}

bool SaveFileToDB(db::Recordset& rs, const std::string& field, const std::string& path, bool update,
                  host::HostServices& host) {
  try {
    std::ifstream in(path, std::ios::binary);
    if (!in) throw ReportError(53, "File not found: " + path);
    Bytes data((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    rs[field].Value(Variant(std::move(data)));
    if (update) rs.Update();
    return true;
  } catch (const std::exception&) {
    host.ShowFailure(
        "The file could not be saved to the database. Please check your temp path and try again.",
        host::vbOKOnly, "");
    return false;
  }
}

void CreateTTX(const db::Recordset&, const std::string& path) {
  throw ReportError(kErrInvalidProcedureCall,
                    "The report writer's field definition file (" + path +
                        ") cannot be written on this system");
}

}  // namespace orv

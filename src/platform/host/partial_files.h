// Files written under a temporary name and renamed into place once whole.
//
// Every writer of the program lists its temporary file here while it
// exists. When the command line is stopped (Ctrl-C, kill, a closed
// terminal), the handler that RemovePartialFilesOnSignal installs deletes
// every file still listed before the program dies of the signal, so a
// stopped run leaves no half-written file behind, and the file it would
// have replaced stands as it was.
#pragma once

#include <string>
#include <system_error>

namespace orv::host {

// Lists `path` as a file being written (before it is created).
void TrackPartialFile(const std::string& path);

// Renames a listed file into place and drops it from the list. Sets `ec`
// as std::filesystem::rename does; a failed rename keeps the file listed.
void RenamePartialFile(const std::string& path, const std::string& target, std::error_code& ec);

// Removes a listed file, if it is there, and drops it from the list.
void RemovePartialFile(const std::string& path);

// Drops a file from the list where it stands: it is whole now.
void ForgetPartialFile(const std::string& path);

// Installs handlers for SIGINT, SIGTERM and SIGHUP that remove the listed
// files, say so on stderr, and end the program by the same signal (so the
// shell sees 128 + the signal's number). A command that stops in a manner
// of its own (the browser host) installs its handlers after this.
void RemovePartialFilesOnSignal();

}  // namespace orv::host

// File-system services of the common functions: the temporary folder, new
// temporary files, existence and size checks, and the tagged paths the
// practice keeps in its settings ("<MYDOCUMENTS>\Letters\...").
//
// Tags name the folders of the desktop the settings were written on; here
// they map to the Linux folders that play the same part (see GetFilePath).
#pragma once

#include <cstdint>
#include <string>

#include "common/datetime.h"

namespace orv::host {

// The system's temporary folder with a trailing "/" ($TMPDIR, else /tmp/);
// "" when it cannot be had or the path is 512 characters or longer.
std::string GetTempDirectory();
// A new, empty file in the temporary folder whose name starts with the first
// three characters of `prefix`; "" on failure.
std::string GetNewTempFile(const std::string& prefix);
bool FileExists(const std::string& path);
// Size in bytes, and last modification time; throw ReportError when the file
// is missing.
int64_t GetFileSize(const std::string& path);
DateTime GetFileModifiedDate(const std::string& path);

// Resolves the first tag found, searching the upper-cased path for, in order:
// <PROGRAMFILES> /opt, <ORVENDAPATH> the program's own folder,
// <SYSTEM32PATH> /usr/lib, <WINDIR> /usr/share, <DESKTOP> ~/Desktop,
// <MYDOCUMENTS> ~/Documents, <COMMONSHAREDFILES> /usr/share/Halvorine/,
// <APPDATA> $XDG_CONFIG_HOME (~/.config), <ALLUSERAPPDATA> /var/lib.
// The rest of the path keeps its case; backslashes become slashes. A path
// without a tag comes back as it stands.
std::string GetFilePath(const std::string& path);
// The folder of shared program files (/usr/share).
std::string strGetCommonFilesPath();

// Runs a command through the shell and waits at most `wait_ms` milliseconds
// (0 or less: for ever). True when the command finished in time with status 0.
bool SyncShell(const std::string& command, long wait_ms);

}  // namespace orv::host

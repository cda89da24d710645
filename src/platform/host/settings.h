// The per-application settings store the reports read: values by
// application, section and key, with a default.
//
// Kept in an INI file, one per application, under the user's configuration
// folder ($XDG_CONFIG_HOME/<application>/settings.ini, else
// ~/.config/<application>/settings.ini). A host can override any key for one
// run (the command line's --set Section.Key=value) without touching the file.
#pragma once

#include <map>
#include <optional>
#include <string>

namespace orv::host {

class SettingsStore {
 public:
  // A store reading and writing the INI file at `path`; the file need not
  // exist yet.
  explicit SettingsStore(std::string path);
  // The store of an application in the user's configuration folder.
  static SettingsStore ForApplication(const std::string& application);

  // GetSetting(section, key, default): the override if any, else the file's
  // value, else `def`. Section and key compare case-insensitively.
  std::string Get(const std::string& section, const std::string& key,
                  const std::string& def = "") const;
  // Writes the value to the file at once.
  void Save(const std::string& section, const std::string& key, const std::string& value);
  // Overrides a value for the life of this object only.
  void Override(const std::string& section, const std::string& key, const std::string& value);

  const std::string& path() const { return path_; }

 private:
  using Sections = std::map<std::string, std::map<std::string, std::pair<std::string, std::string>>>;
  void Load();
  void Write() const;

  std::string path_;
  // lower-case section -> lower-case key -> (key as written, value)
  Sections file_;
  Sections overrides_;
  std::map<std::string, std::string> section_names_;  // lower -> as written
};

// The store the component reads: application "Orvenda". Hosts and tests may
// replace it (the command-line host points it at its own file or overrides).
SettingsStore& AppSettings();
void SetAppSettings(SettingsStore store);

}  // namespace orv::host

#include "platform/host/settings.h"

#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>

#include "common/errors.h"

namespace orv::host {

namespace {

std::string Lower(std::string s) {
  for (char& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return s;
}

std::string Trim(const std::string& s) {
  size_t b = s.find_first_not_of(" \t\r\n");
  if (b == std::string::npos) return "";
  size_t e = s.find_last_not_of(" \t\r\n");
  return s.substr(b, e - b + 1);
}

std::unique_ptr<SettingsStore>& Current() {
  static std::unique_ptr<SettingsStore> store;
  return store;
}

}  // namespace

SettingsStore::SettingsStore(std::string path) : path_(std::move(path)) { Load(); }

SettingsStore SettingsStore::ForApplication(const std::string& application) {
  std::filesystem::path base;
  if (const char* xdg = std::getenv("XDG_CONFIG_HOME"); xdg && *xdg) {
    base = xdg;
  } else if (const char* home = std::getenv("HOME"); home && *home) {
    base = std::filesystem::path(home) / ".config";
  } else {
    base = std::filesystem::temp_directory_path();
  }
  return SettingsStore((base / application / "settings.ini").string());
}

void SettingsStore::Load() {
  file_.clear();
  std::ifstream in(path_);
  if (!in) return;
  std::string line, section;
  while (std::getline(in, line)) {
    std::string t = Trim(line);
    if (t.empty() || t[0] == ';' || t[0] == '#') continue;
    if (t.front() == '[' && t.back() == ']') {
      section = Trim(t.substr(1, t.size() - 2));
      section_names_[Lower(section)] = section;
      continue;
    }
    size_t eq = t.find('=');
    if (eq == std::string::npos) continue;
    std::string key = Trim(t.substr(0, eq));
    file_[Lower(section)][Lower(key)] = {key, Trim(t.substr(eq + 1))};
  }
}

void SettingsStore::Write() const {
  std::filesystem::path p(path_);
  std::error_code ec;
  if (p.has_parent_path()) std::filesystem::create_directories(p.parent_path(), ec);
  // Write a sibling file and rename it over the old one, so a crash never
  // leaves a half-written settings file.
  std::string tmp = path_ + ".tmp";
  {
    std::ofstream out(tmp, std::ios::trunc);
    if (!out) throw ReportError(kErrInvalidProcedureCall, "Cannot write the settings file " + path_);
    for (const auto& [lsec, keys] : file_) {
      auto name = section_names_.find(lsec);
      out << '[' << (name != section_names_.end() ? name->second : lsec) << "]\n";
      for (const auto& [lkey, kv] : keys) out << kv.first << '=' << kv.second << '\n';
      out << '\n';
    }
  }
  std::filesystem::rename(tmp, path_, ec);
  if (ec) throw ReportError(kErrInvalidProcedureCall, "Cannot write the settings file " + path_);
}

std::string SettingsStore::Get(const std::string& section, const std::string& key,
                               const std::string& def) const {
  for (const Sections* s : {&overrides_, &file_}) {
    auto sec = s->find(Lower(section));
    if (sec == s->end()) continue;
    auto it = sec->second.find(Lower(key));
    if (it != sec->second.end()) return it->second.second;
  }
  return def;
}

void SettingsStore::Save(const std::string& section, const std::string& key,
                         const std::string& value) {
  section_names_.emplace(Lower(section), section);
  file_[Lower(section)][Lower(key)] = {key, value};
  Write();
}

void SettingsStore::Override(const std::string& section, const std::string& key,
                             const std::string& value) {
  overrides_[Lower(section)][Lower(key)] = {key, value};
}

SettingsStore& AppSettings() {
  auto& cur = Current();
  if (!cur) cur = std::make_unique<SettingsStore>(SettingsStore::ForApplication("Orvenda"));
  return *cur;
}

void SetAppSettings(SettingsStore store) { Current() = std::make_unique<SettingsStore>(std::move(store)); }

}  // namespace orv::host

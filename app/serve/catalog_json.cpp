#include "serve/catalog_json.h"

#include <algorithm>

#include "common/vbstrings.h"
#include "invokers.h"

namespace orv::app::serve {

namespace {

bool Contains(const std::string& text, const std::string& part) {
  return vb::LCase(text).find(vb::LCase(part)) != std::string::npos;
}

}  // namespace

FieldKind KindOf(const MethodSignature& m, const Param& p) {
  const std::string name = vb::LCase(p.name);
  const std::string meaning = ParamMeaning(m, p);
  const std::string& t = p.type;
  if (t == "object") return {"object", ""};
  if (t == "Date") return {"date", ""};
  if (t == "Boolean") return {"boolean", ""};
  if (t == "Long" || t == "Integer") {
    // A patient by number: the methods say so in the parameter's meaning
    // ("Patient.ID", "a patient of the family").
    if (name == "patientid" || Contains(meaning, "Patient.ID") ||
        Contains(meaning, "a patient of the family"))
      return {"patient", ""};
    return {"integer", ""};
  }
  if (t == "Currency") return {"currency", ""};
  if (!EnumerationMembers(t).empty()) return {"enum", ""};
  if (t == "array of Long") {
    if (Contains(name, "patient")) return {"patients", ""};
    if (Contains(name, "provider")) return {"provider-list", ""};
    return {"text", ""};
  }
  if (name == "username") return {"user", ""};
  // Filters over the providers or the staff: the multi-select writes the
  // condition the report expects, by the column that condition names.
  if (name == "providerfilter" || name == "providernames") return {"providers", "ProviderID"};
  if (name == "txtprovfilter" || name == "stremployees") return {"providers", "ID"};
  if (Contains(name, "filter") || Contains(meaning, "condition")) return {"filter", ""};
  return {"text", ""};
}

bool IsConditionKind(const FieldKind& k) {
  return k.kind == "providers" || k.kind == "filter";
}

nlohmann::json MethodsJson() {
  nlohmann::json families = nlohmann::json::array();
  nlohmann::json methods = nlohmann::json::array();
  for (const auto& m : MethodCatalog()) {
    if (std::find(families.begin(), families.end(), m.family) == families.end())
      families.push_back(m.family);
    nlohmann::json params = nlohmann::json::array();
    for (const Param& p : ParseParams(m.params)) {
      FieldKind k = KindOf(m, p);
      nlohmann::json values = nlohmann::json::array();
      for (const auto& [name, value] : EnumerationMembers(p.type))
        values.push_back({{"name", name}, {"value", value}});
      params.push_back({{"name", p.name},
                        {"type", p.type},
                        {"optional", p.optional},
                        {"kind", k.kind},
                        {"column", k.column},
                        {"meaning", ParamMeaning(m, p)},
                        {"values", values}});
    }
    methods.push_back({{"name", m.name},
                       {"family", m.family},
                       {"summary", m.summary},
                       {"result", m.result},
                       {"built", Invokers().count(m.name) > 0},
                       {"section", DrawsIntoRunningDocument(m)},
                       {"params", params}});
  }
  return {{"families", families}, {"methods", methods}};
}

}  // namespace orv::app::serve

// The method catalogue as the page reads it: every public method with its
// family, its line of description and its parameters, each with the kind of
// field the form draws for it (a date picker, a checkbox, a patient picker,
// a providers multi-select, ...).
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "method_catalog.h"

namespace orv::app::serve {

// The field a parameter gets on the form.
struct FieldKind {
  // date, boolean, integer, currency, enum, text, user, patient (one
  // Patient.ID), patients (a list of them), providers (a filter
  // "Column = N OR ..." over `column`), provider-list (a list of
  // Employees.ID), filter (a raw SQL condition), object (not passable).
  std::string kind;
  std::string column;  // for providers: the column the filter names
};

FieldKind KindOf(const MethodSignature& m, const Param& p);

// True for the kinds whose text reaches the report's SQL as a condition.
bool IsConditionKind(const FieldKind& k);

// {"families": [...], "methods": [{name, family, summary, built, section,
// params: [{name, type, optional, kind, column, meaning, values}]}]}.
nlohmann::json MethodsJson();

}  // namespace orv::app::serve

// The catalogue of the component's public methods (name, parameters,
// result) that the command-line host reads arguments by.
#pragma once

#include <string>
#include <vector>

namespace orv::app {

struct MethodSignature {
  const char* name;
  // "txtfilter: String, UserName: String, [ByEmployer: Boolean]"
  const char* params;
  // Result type, "" for none.
  const char* result;
};

const std::vector<MethodSignature>& MethodCatalog();

struct Param {
  std::string name;
  std::string type;  // String, Long, Integer, Date, Boolean, Currency, Variant, array of Long, ...
  bool optional = false;
};

// Splits a signature's parameter text into parameters.
std::vector<Param> ParseParams(const std::string& params);

}  // namespace orv::app

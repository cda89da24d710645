// How the command-line host calls a report method: the arguments of the
// command line, typed by the method's signature, handed to a small invoker
// per method. The invokers of each report family live in their own file
// (invokers_<family>.cpp) and register themselves.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "common/variant.h"
#include "method_catalog.h"

namespace orv {
class clsReports;
}

namespace orv::app {

// The arguments of one call, in signature order. An optional argument that
// was not given is Empty; `given` says which were.
class MethodArgs {
 public:
  MethodArgs(std::vector<Param> params, std::vector<Variant> values, std::vector<bool> given,
             std::vector<std::string> texts = {})
      : params_(std::move(params)),
        values_(std::move(values)),
        given_(std::move(given)),
        texts_(std::move(texts)) {}
  bool Given(size_t i) const { return i < given_.size() && given_[i]; }
  std::string Str(size_t i) const;
  int32_t Long(size_t i) const;
  int16_t Int(size_t i) const;
  bool Bool(size_t i) const;
  DateTime Date(size_t i) const;
  Currency Cur(size_t i) const;
  const Variant& Var(size_t i) const { return values_.at(i); }
  std::vector<int32_t> LongArray(size_t i) const;
  // The arguments given, by parameter name, as their texts were written
  // (what a document's identity records).
  std::vector<std::pair<std::string, std::string>> GivenTexts() const;

 private:
  std::vector<Param> params_;
  std::vector<Variant> values_;
  std::vector<bool> given_;
  std::vector<std::string> texts_;
};

// Calls the method; a method with a result returns it, others Empty.
using Invoker = std::function<Variant(clsReports&, const MethodArgs&)>;

std::map<std::string, Invoker>& Invokers();

struct InvokerRegistrar {
  InvokerRegistrar(const char* name, Invoker f) { Invokers()[name] = std::move(f); }
};

// Reads one argument's text as the parameter's type, strictly: Boolean
// True/False (also -1, 0, 1, yes/no), Date yyyy-mm-dd from 1753-01-01 to
// 9999-12-31 with an optional hh:mm[:ss], Long and Integer as decimal text
// within their 32- and 16-bit ranges, Currency within its range, an array of
// Long as "1,2,3", an enumeration by member name or value, String and
// filters as they are. Throws std::invalid_argument naming the parameter,
// its type and an example on bad text.
Variant ParseArgument(const Param& p, const std::string& text);

// Reads the arguments of one call of `sig` as both hosts take them: the
// texts of `positional` fill the parameters in signature order, then each
// Name=value pair of `named` fills its parameter (any case), then a missing
// UserName takes `user`. Throws std::invalid_argument naming the parameter
// for a bad value, an unknown or repeated name, too many arguments or a
// required one missing.
MethodArgs BindArguments(const MethodSignature& sig, const std::vector<std::string>& positional,
                         const std::vector<std::pair<std::string, std::string>>& named,
                         const std::string& user);

// A date as the command line takes it (see ParseArgument); nullopt for
// anything else.
std::optional<DateTime> ParseDateArgument(const std::string& text);

// A whole number within [min, max] written as plain decimal text (an
// optional sign, digits only); nullopt for anything else.
std::optional<int64_t> ParseWholeNumber(const std::string& text, int64_t min, int64_t max);

}  // namespace orv::app

// The catalogue of the component's public methods: name, parameters,
// result, and what a person needs to run one from the command line (family,
// one-line summary, an example on the demo practice, what the less obvious
// parameters mean). `list`, `help METHOD` and the argument reader all read
// it, so a new report is one line here plus its invoker.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace orv::app {

struct MethodSignature {
  const char* name;
  // "txtfilter: String, UserName: String, [ByEmployer: Boolean]"
  const char* params;
  // Result type, "" for none.
  const char* result;
  // The family `list` groups the method under ("Receivables").
  const char* family = "Other";
  // One line for `list`.
  const char* summary = "";
  // The arguments of one run on the demo practice, as typed after the name.
  const char* example = "";
  // "Name: meaning; Name: meaning" for parameters whose name says too
  // little; the others are described by their name or type.
  const char* notes = "";
  // True for a method that draws into a document a run has started (besides
  // every `srpt...`): the host starts, heads, stamps and ends one for it.
  bool section = false;
  // True for a section that prints its own heading (the detailed analysis,
  // the practice-wide aged list): the host's document then goes without
  // one of its own, so the title does not stand twice.
  bool heads_itself = false;
};

const std::vector<MethodSignature>& MethodCatalog();

// The method of that name, any case; nullptr for none.
const MethodSignature* FindMethod(const std::string& name);

// True when the method needs a running document (see `section`).
bool DrawsIntoRunningDocument(const MethodSignature& m);

struct Param {
  std::string name;
  std::string type;  // String, Long, Integer, Date, Boolean, Currency, Variant, array of Long, ...
  bool optional = false;
};

// Splits a signature's parameter text into parameters.
std::vector<Param> ParseParams(const std::string& params);

// The members of an enumeration type ("AddressParts": Street1 = 0, ...), in
// order; empty for a type that is no enumeration.
const std::vector<std::pair<std::string, int>>& EnumerationMembers(const std::string& type);

// What a parameter means: the method's note for it, else the meaning its
// name has across the component ("txtfilter", "UserName", "dtStart"...).
std::string ParamMeaning(const MethodSignature& m, const Param& p);

// How the parameter is written on the command line, with an example.
std::string ParamForm(const Param& p);

}  // namespace orv::app

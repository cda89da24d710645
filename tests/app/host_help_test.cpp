// The help a new user reads: `list` by family, `help METHOD` with every
// parameter and an example, and that every method `list` calls built runs
// alone from its example on the demo practice.
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "host_support.h"
#include "support/text_order.h"

namespace {

namespace fs = std::filesystem;
using Result = orv::testing::ShellResult;
using orv::testing::HostShell;

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> out;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) out.push_back(line);
  return out;
}

class HostHelp : public orv::testing::HostSuite {
 protected:
  // The practice the catalogue's examples are written for.
  static void SetUpTestSuite() { MakePractice("help", 500, 1); }
  static std::string app() { return orv::testing::HostProgram(); }

  // The methods `list` calls built, with the family they are listed under.
  static std::vector<std::pair<std::string, std::string>> BuiltMethods(const std::string& list) {
    std::vector<std::pair<std::string, std::string>> built;
    std::string family;
    static const std::regex method(R"(  (\w+) +(\S.*))");
    for (const auto& line : Lines(list)) {
      std::smatch m;
      if (!line.empty() && line[0] != ' ' && line.find("methods are built") == std::string::npos &&
          line.find("an example") == std::string::npos) {
        family = line;
      } else if (std::regex_match(line, m, method) &&
                 m[2].str().find("[not built yet]") == std::string::npos &&
                 m[2].str().find("[done by the host]") == std::string::npos) {
        built.emplace_back(m[1], family);
      }
    }
    return built;
  }
};

TEST_F(HostHelp, ListGroupsEveryMethodByFamilyWithALine) {
  Result list = Host("list");
  ASSERT_EQ(list.status, 0);
  auto built = BuiltMethods(list.out);
  std::set<std::string> families;
  for (const auto& [name, family] : built) {
    EXPECT_FALSE(family.empty()) << name;
    families.insert(family);
  }
  // A handful of families, not one heading per method.
  EXPECT_GE(families.size(), 5u);
  EXPECT_LT(families.size(), built.size());
  // Every method line carries a description after its name.
  for (const auto& line : Lines(list.out)) {
    if (line.rfind("  ", 0) == 0) {
      EXPECT_TRUE(std::regex_match(line, std::regex(R"(  \w+ +\S.*)"))) << line;
    }
  }
}

TEST_F(HostHelp, HelpDescribesEveryParameter) {
  struct Case {
    const char* method;
    std::vector<std::string> says;
  } cases[] = {
      {"rptReceipt",
       {"ID  Long: the payment (InvoicePayments.ID)", "written as a whole number", "(printed)",
        "no printer was set", "Example on the demo practice"}},
      {"ReturnAddressPart",
       {"Part  AddressParts", "Street1=0 Street2=1 City=2 Prov=3 Postal=4", "standard output"}},
      {"rptStatements",
       {"dtStart  Date", "written as a date yyyy-mm-dd", "PatientIDs  array of Long",
        "written as numbers separated by commas", "Family  Boolean: one statement per family",
        "YTD (optional)  Boolean"}},
      {"srptUnAppliedPayments", {"runs in one of its own", "strFilter (optional)  String"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.method);
    Result r = Host(std::string("help ") + c.method);
    ASSERT_EQ(r.status, 0) << r.out;
    for (const auto& s : c.says) EXPECT_NE(r.out.find(s), std::string::npos) << s << "\n" << r.out;
  }
  EXPECT_EQ(Host("help rptNoSuchReport").status, 2);
  // Asked for help after the method, as a person might.
  EXPECT_NE(Host("rptReceipt --help").out.find("InvoicePayments.ID"), std::string::npos);
}

// What `list` calls built runs alone: each built method's example from
// `help`, run as printed on the demo practice, exits 0 and writes its
// document (or prints its value). The methods are dealt into four shares,
// so that each share is a test of its own and ctest can run them side by
// side within its time limit.
class HostHelpExamples : public HostHelp, public ::testing::WithParamInterface<size_t> {};
constexpr size_t kExampleShares = 4;

TEST_P(HostHelpExamples, EveryBuiltMethodRunsFromItsExample) {
  auto built = BuiltMethods(Host("list").out);
  ASSERT_GT(built.size(), 20u);
  for (size_t i = GetParam(); i < built.size(); i += kExampleShares) {
    const auto& name = built[i].first;
    SCOPED_TRACE(name);
    Result help = Host("help " + name);
    auto lines = Lines(help.out);
    auto at = std::find_if(lines.begin(), lines.end(), [](const std::string& l) {
      return l.rfind("Example on the demo practice", 0) == 0;
    });
    ASSERT_TRUE(at != lines.end() && at + 1 != lines.end()) << help.out;
    std::string example = *(at + 1);
    ASSERT_EQ(example.rfind("  orvenda-reports ", 0), 0u) << example;
    std::string out = At(name + ".pdf");
    Result r = Host(example.substr(17) + " --db " + Db() + " --out " + out);
    EXPECT_EQ(r.status, 0) << example << "\n" << r.out;
    EXPECT_TRUE(fs::exists(out) || (r.out.find("wrote") == std::string::npos && !r.out.empty()))
        << example << "\n"
        << r.out;
    // A section runs in the host's document: headed once, by the host or by
    // the section itself, never by both.
    if (help.out.find("(section)") != std::string::npos) {
      const std::string text = At(name + ".txt");
      Host(example.substr(17) + " --db " + Db() + " --out " + text);
      std::string first_page = orv::testing::FileBytes(text);
      first_page = first_page.substr(0, first_page.find('\f'));
      EXPECT_LE(orv::testing::Occurrences(first_page, "Printed On:"), 1u) << first_page;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Shares, HostHelpExamples, ::testing::Range<size_t>(0, kExampleShares));

// The default database is one absolute path wherever the command runs, and
// a missing one says how to make it.
TEST_F(HostHelp, DefaultDatabaseIsFoundTheSameWayEverywhere) {
  Result help = HostShell("cd / && env -u ORVENDA_DB " + app() + " --help");
  std::smatch m;
  ASSERT_TRUE(std::regex_search(help.out, m, std::regex(R"(default database: (\S+))"))) << help.out;
  EXPECT_EQ(m[1].str()[0], '/') << help.out;
  Result here = HostShell("cd " + dir + " && env -u ORVENDA_DB " + app() + " --help");
  EXPECT_NE(here.out.find("default database: " + m[1].str()), std::string::npos) << here.out;

  Result missing =
      HostShell("cd / && ORVENDA_DB=" + dir + "/none.db " + app() + " rptFeeGuide 1 desk");
  EXPECT_EQ(missing.status, 2) << missing.out;
  EXPECT_NE(missing.out.find("no practice database at " + dir + "/none.db"), std::string::npos)
      << missing.out;
  EXPECT_NE(missing.out.find("demo-db"), std::string::npos) << missing.out;
  EXPECT_FALSE(fs::exists(dir + "/none.db"));
  Result from_env = HostShell("cd / && ORVENDA_DB=" + dir + "/demo.db " + app() + " --out " + dir +
                              "/env.pdf rptFeeGuide 1 desk");
  EXPECT_EQ(from_env.status, 0) << from_env.out;
}

}  // namespace

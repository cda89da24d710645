// Both closing packages with every section on the demo practice
// (support/report_fixture.h): they read and never write, and the
// reconciliation adds pages at the end without changing those before.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <regex>
#include <string>

#include "support/report_fixture.h"

namespace orv::testing {
namespace {

class PackagesOnDemo : public ReportTest {
 protected:
  std::string FileBytes() const {
    std::ifstream in(db_file, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  }
  void MonthEnd() {
    reports.rptMonthEndReport(true, true, true, true, true, true, true,
                              DateTime::FromParts(2026, 10, 1), DateTime::FromParts(2026, 10, 31),
                              0, "desk", "ProviderID = 2 OR ProviderID = 5", false, true, true,
                              true, true, "", true);
  }
  // The page's text with its page count taken out of "Page p of n".
  std::string PageWithoutCount(int page) const {
    return std::regex_replace(PageText(page), std::regex("Page ([0-9]+) of [0-9]+"), "Page $1");
  }
};

TEST_F(PackagesOnDemo, ReadOnlyAndTheReconciliationOnlyAddsPages) {
  reports.OfficeID = 1;
  const std::string before = FileBytes();
  reports.rptDayEndReport(true, true, true, true, true, true, true, true, true, true, true,
                          DateTime::FromParts(2026, 11, 16), DateTime::FromParts(2026, 11, 16), 0,
                          "desk", "ProviderID = 2 OR ProviderID = 5", false, "", true);
  EXPECT_TRUE(host.messages.empty()) << host.messages[0].prompt;

  MonthEnd();
  EXPECT_TRUE(host.messages.empty()) << host.messages[0].prompt;
  const int pages = form.VSP.PageCount();
  std::vector<std::string> plain;
  for (int p = 1; p <= pages; ++p) plain.push_back(PageWithoutCount(p));
  EXPECT_EQ(Text().find("Receivables Reconciliation"), std::string::npos);

  host::AppSettings().Override("Settings", "MonthEndReconciliation", "True");
  MonthEnd();
  host::AppSettings().Override("Settings", "MonthEndReconciliation", "False");
  EXPECT_TRUE(host.messages.empty()) << host.messages[0].prompt;
  ASSERT_GT(form.VSP.PageCount(), pages);
  for (int p = 1; p <= pages; ++p) EXPECT_EQ(PageWithoutCount(p), plain[p - 1]) << "page " << p;
  EXPECT_NE(PageText(pages + 1).find("Receivables Reconciliation"), std::string::npos);

  EXPECT_EQ(FileBytes(), before) << "a package wrote to the practice's file";
}

}  // namespace
}  // namespace orv::testing

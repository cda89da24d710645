// The referral production summary and the repair of referral links, on the
// November of referral_fixture.h; figures by hand.
#include <gtest/gtest.h>

#include <thread>

#include "referral_fixture.h"
#include "support/postgres.h"
#include "support/text_order.h"

namespace orv::testing {
namespace {

using ReferralProduction = ReferralTest;
using ReferralRepair = ReferralTest;

TEST_F(ReferralProduction, FeesOncePerLineAllocationsEachAndTheTotalIsTheSum) {
  reports.ReferralProductSumReport(Nov(1), Nov(30), "dana");
  // Patients without a referrer break the links; the host answers Yes.
  ASSERT_EQ(Asked("Invalid Relationship"), 1);
  EXPECT_EQ(form.ShowCount(), 1);
  EXPECT_TRUE(
      HasAll(Text(), {"Fees($) Payments($)",
                      // Lind (patient 1): dental 71 100 + 73 100 (three allocations, counted
                      // once) + 74 50 = 250; lab 72 200; W/O the write-off -10 on 74 and the
                      // discount -5 on 71; net 450 - 15. Payments applied: 73 80 + 20 + 10,
                      // 74 50: dental 160; 72 20: labs; adjustments -10 and -5 applied, and
                      // payment 204 of the account practice (a write-off type, 40, cheque
                      // 11-21, on no line): 25; net 160 + 20 + 25.
                      "Lind, Ada 250.00 200.00 0.00 450.00 (15.00) 435.00 160.00 20.00 25.00 "
                      "205.00",
                      // Kerr (patient 3): the reversal 75 -120, the -00100 line -50 and its
                      // 00100 50 all count; 79 entered 11-03 and cancelled 11-20 nets to 0;
                      // 78 is not complete.
                      "Kerr, Bo (120.00) 0.00 0.00 (120.00) 0.00 (120.00) 0.00 0.00 0.00 0.00",
                      "Total 130.00 200.00 0.00 330.00 (15.00) 315.00 229.33 20.00 25.00 274.33",
                      // After the repair the patients without a referrer stand under No
                      // Referring Dentist: their November money on no line (212 26, 221
                      // 10.005, 291 33.325) is credit, dental: 69.33.
                      "Dentist, No 0.00 0.00 0.00 0.00 0.00 0.00 69.33 0.00 0.00 69.33"}));
  // Moss and Park have no figure: no row.
  EXPECT_TRUE(HasNone(Text(), {"Moss,", "Park,"}));
  // The hygienists by the lines' provider: Chen 100 + 50 - 120.
  EXPECT_TRUE(HasAll(
      Text(), {"Chen, Paul 30.00 0.00 30.00 100.00", "Hygenists Totals 30.00 0.00 30.00 100.00"}));
}

TEST_F(ReferralProduction, CancelledInThePeriodCountsNegativeAndAMinusOneFlagBringsNoLine) {
  struct Case {
    const char* name;
    DateTime start, end;
    const char* kerr_row;  // null: no row
  };
  const Case cases[] = {
      // December: 79 was entered in November and cancelled in it; nothing
      // of Kerr's happens in December.
      {"after", DateTime::FromParts(2026, 12, 1), DateTime::FromParts(2026, 12, 31), nullptr},
      // From the 4th: 79 was entered before and cancelled in the period:
      // -60 with the reversal 75 (-120) and 76/77 (0): -180.
      {"cancelled only", Nov(4), Nov(30), "Kerr, Bo (180.00) 0.00 0.00 (180.00)"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    reports.ReferralProductSumReport(c.start, c.end, "dana");
    EXPECT_EQ(Has(c.kerr_row ? c.kerr_row : "Kerr,"), c.kerr_row != nullptr) << Text();
  }
  // A write-off type whose flag is stored -1 is no adjustment to this
  // report: its allocation brings no W/O.
  Exec("UPDATE PaymentTypes SET [Adjustment?] = -1 WHERE ID = 2;");
  reports.ReferralProductSumReport(Nov(1), Nov(30), "dana");
  EXPECT_TRUE(Has("Lind, Ada 250.00 200.00 0.00 450.00 (5.00)")) << Text();
}

TEST_F(ReferralRepair, NoLeavesTheDataYesRepairsAndASecondRunAsksNothing) {
  // Patient 2 names a dentist that was deleted; the rest have none.
  Exec("UPDATE Patient SET ReferringDentistID = 99 WHERE ID = 2;");
  const std::string nulls = Scalar("SELECT COUNT(*) FROM Patient WHERE ReferringDentistID IS NULL");
  ASSERT_NE(nulls, "0");

  // No: nothing written, and False.
  host.answer = host::vbNo;
  EXPECT_FALSE(
      reports.CheckRelationships("ReferringDentists", "ID", "Patient", "ReferringDentistID"));
  EXPECT_EQ(Asked("Invalid Relationship"), 1);
  EXPECT_NE(host.messages.back().prompt.find("(For an accurate report please choose 'Yes'"),
            std::string::npos);
  EXPECT_EQ(Scalar("SELECT COUNT(*) FROM ReferringDentists"), "4");
  EXPECT_EQ(Scalar("SELECT ReferringDentistID FROM Patient WHERE ID = 2"), "99");

  // Yes: the two placeholders are made, the NULLs go under No Referring
  // Dentist and the dangling key under Deleted Referring Dentist.
  host.answer = host::vbYes;
  EXPECT_TRUE(
      reports.CheckRelationships("ReferringDentists", "ID", "Patient", "ReferringDentistID"));
  const std::string no_ref = Scalar(
      "SELECT ID FROM ReferringDentists WHERE Name = 'No Referring' AND LastName = 'Dentist'");
  const std::string deleted = Scalar(
      "SELECT ID FROM ReferringDentists WHERE Name = 'Deleted' AND LastName = 'Referring Dentist'");
  ASSERT_NE(no_ref, "<none>");
  ASSERT_NE(deleted, "<none>");
  EXPECT_EQ(Scalar("SELECT ReferringDentistID FROM Patient WHERE ID = 2"), deleted);
  EXPECT_EQ(Scalar("SELECT COUNT(*) FROM Patient WHERE ReferringDentistID = " + no_ref), nulls);
  EXPECT_EQ(Scalar("SELECT COUNT(*) FROM Patient WHERE ReferringDentistID IS NULL"), "0");

  // Again: nothing broken, no question, True, no third placeholder.
  host.messages.clear();
  EXPECT_TRUE(
      reports.CheckRelationships("ReferringDentists", "ID", "Patient", "ReferringDentistID"));
  EXPECT_TRUE(host.messages.empty());
  EXPECT_EQ(Scalar("SELECT COUNT(*) FROM ReferringDentists"), "6");
}

TEST_F(ReferralRepair, AnsweredNoTheReportDropsPatientsWithoutADentistRow) {
  // Patient 1's dentist is gone: Lind's figures have no row to go to.
  Exec("DELETE FROM ReferringDentists WHERE ID = 1;");
  host.answer = host::vbNo;
  reports.ReferralProductSumReport(Nov(1), Nov(30), "dana");
  EXPECT_TRUE(HasNone(Text(), {"Lind", "Deleted"}));
  EXPECT_TRUE(Has("Total (120.00) 0.00 0.00 (120.00)")) << Text();
  // Answered Yes they come back under the Deleted placeholder.
  host.answer = host::vbYes;
  reports.ReferralProductSumReport(Nov(1), Nov(30), "dana");
  EXPECT_TRUE(Has("Referring Dentist, 250.00 200.00 0.00 450.00 (15.00) 435.00 160.00 20.00 25.00 "
                  "205.00\nDeleted"))
      << Text();
}

TEST_F(ReferralRepair, AFailureAfterTheFirstUpdateLeavesNothingChanged) {
  Exec("UPDATE Patient SET ReferringDentistID = 99 WHERE ID = 2;");
  // The second update, the dangling key to the Deleted placeholder, fails
  // as a full disk would, after the NULLs went to No Referring Dentist.
  if (OnServerEngine()) {
    ServerExec(
        "CREATE FUNCTION fail_second_update() RETURNS trigger LANGUAGE plpgsql AS $$ BEGIN "
        "IF NEW.\"ReferringDentistID\" = (SELECT \"ID\" FROM \"ReferringDentists\" WHERE \"Name\" = 'Deleted') "
        "THEN RAISE EXCEPTION 'disk full'; END IF; RETURN NEW; END $$;"
        "CREATE TRIGGER fail_second_update BEFORE UPDATE OF \"ReferringDentistID\" ON \"Patient\" "
        "FOR EACH ROW EXECUTE FUNCTION fail_second_update();",
        practice_.url());
  } else {
    Exec(
        "CREATE TRIGGER fail_second_update BEFORE UPDATE OF ReferringDentistID ON Patient "
        "WHEN NEW.ReferringDentistID = (SELECT ID FROM ReferringDentists WHERE Name = 'Deleted') "
        "BEGIN SELECT RAISE(ABORT, 'disk full'); END;");
  }
  host.answer = host::vbYes;
  reports.ReferralProductSumReport(Nov(1), Nov(30), "dana");
  EXPECT_EQ(Asked("Unspecified Error"), 1);
  EXPECT_EQ(host.messages.back().prompt, "Error repairing referring dentist relationships.");
  // Neither placeholder stays, no NULL was moved, the dangling key stands.
  EXPECT_EQ(Scalar("SELECT COUNT(*) FROM ReferringDentists"), "4");
  EXPECT_EQ(Scalar("SELECT ReferringDentistID FROM Patient WHERE ID = 2"), "99");
  EXPECT_NE(Scalar("SELECT COUNT(*) FROM Patient WHERE ReferringDentistID IS NULL"), "0");
  // The report went on with the data as it was.
  EXPECT_TRUE(Has("Lind, Ada 250.00")) << Text();
  EXPECT_EQ(form.ShowCount(), 1);
}

TEST_F(ReferralRepair, AnUnknownTableIsTheDatabasesErrorAndWritesNothing) {
  EXPECT_ANY_THROW(
      reports.CheckRelationships("NoSuchTable", "ID", "Patient", "ReferringDentistID"));
  EXPECT_ANY_THROW(reports.CheckRelationships("ReferringDentists", "ID", "Patient", "NoColumn"));
  EXPECT_EQ(Scalar("SELECT COUNT(*) FROM ReferringDentists"), "4");
  EXPECT_TRUE(host.messages.empty());
}

}  // namespace
}  // namespace orv::testing

namespace orv::testing {
namespace {

TEST_F(ReferralRepair, TwoWorkstationsRepairingAtOnceMakeOnePlaceholderOfEachKind) {
  Exec("UPDATE Patient SET ReferringDentistID = 99 WHERE ID = 2;");
  struct Workstation {
    db::Connection conn;
    host::RecordingHost host;
    clsReports reports;
    bool result = false;
  };
  Workstation a, b;
  for (Workstation* w : {&a, &b}) {
    w->conn.Open(practice_.url());
    w->host.answer = host::vbYes;
    w->reports.SetHostServices(&w->host);
    w->reports.Connection(w->conn);
  }
  auto run = [](Workstation* w) {
    w->result =
        w->reports.CheckRelationships("ReferringDentists", "ID", "Patient", "ReferringDentistID");
  };
  std::thread first(run, &a), second(run, &b);
  first.join();
  second.join();
  // Whichever came second waited for the first, then found its rows (or
  // found nothing left to repair): both end with every link whole.
  EXPECT_TRUE(a.result);
  EXPECT_TRUE(b.result);
  EXPECT_EQ(Scalar("SELECT COUNT(*) FROM ReferringDentists WHERE Name = 'Deleted'"), "1");
  EXPECT_EQ(Scalar("SELECT COUNT(*) FROM ReferringDentists WHERE Name = 'No Referring'"), "1");
  EXPECT_EQ(Scalar("SELECT COUNT(*) FROM Patient WHERE ReferringDentistID IS NULL OR "
                   "ReferringDentistID NOT IN (SELECT ID FROM ReferringDentists)"),
            "0");
  for (Workstation* w : {&a, &b}) w->conn.Close();
}

}  // namespace
}  // namespace orv::testing

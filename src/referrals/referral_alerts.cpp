// The referral alert page of one provider: referring dentists who stopped
// sending patients, then those who send fewer than their own average, under
// the criteria the provider keeps in ReferralAlerts.
#include <string>

#include "common/common_functions.h"
#include "common/format.h"
#include "frame/preview_form.h"
#include "frame/reports.h"
#include "frame/surface/surface.h"
#include "frame/surface/table_model.h"
#include "platform/db/field_type.h"

namespace orv {

namespace {

constexpr const char* kNoCriteria =
    "One or more of the selected providers do not have Referral Alerts setup in Dental "
    "Team->Referral Alerts.  As a result the report will not display those providers.  To set "
    "up the criteria for this report, go to Dental Team->Referral Alerts and run this report "
    "again.";

}  // namespace

void clsReports::srptReferralAlerts(std::string EmployeeID) {
  const db::Snapshot snapshot(conn_, db::Snapshot::OnFailure::RunWithout);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();

  // Step 1: the provider's criteria. A provider without them, or with a
  // period or percentage of 0, gets nothing drawn; the warning is given
  // once per run however many providers lack criteria.
  db::Recordset crit = Open("SELECT * FROM ReferralAlerts WHERE EmployeeID=" + EmployeeID);
  int32_t AtLeast = 0;
  double InLast = 0, AverageOver = 0, AlertWhen = 0;
  if (!crit.Eof()) {
    AtLeast = static_cast<int32_t>(cf.ReturnVal(crit["AtLeast"].Value()));
    InLast = cf.ReturnVal(crit["InLast"].Value());
    AverageOver = cf.ReturnVal(crit["AverageOver"].Value());
    AlertWhen = cf.ReturnVal(crit["AlertWhen"].Value());
  }
  if (crit.Eof() || InLast == 0 || AverageOver == 0 || AlertWhen == 0) {
    if (!ReferralAlertWarned) {
      Host().MsgBox(kNoCriteria, host::vbInformation, "Referral Alerts");
      ReferralAlertWarned = true;
    }
    return;
  }
  crit.Close();
  // R as the host language writes a double: 180 over 30 is "6", so the
  // database divides Count(ID) by a whole number and the long average is a
  // whole number too (integer division); 45 over 30 is "1.5" and the
  // average keeps its fraction. The text always has a point for a decimal
  // separator, which both engines read.
  const double R = AverageOver / InLast;
  const std::string Rtext = CStr(Variant(R));
  const std::string inlast_text = CStr(Variant(InLast));
  const std::string averageover_text = CStr(Variant(AverageOver));

  // Step 2: every provider starts a page, but the first on an untouched one.
  if (vsp.PageCount() > 1 || vsp.CurrentY() > vsp.MarginTop()) vsp.NewPage();
  vsp.FontName("Tahoma");
  vsp.TextAlign(7);
  vsp.FontSize(20);
  vsp.FontBold(true);
  vsp.Text("Referral Alert Report\n");
  vsp.TextAlign(7);
  vsp.FontSize(10);
  vsp.FontBold(true);
  // Employees has no Name column: the provider is named by FirstName and
  // LastName, which is what the front desk calls the provider.
  const std::string first =
      cf.returnStr(ReturnLookupValue("Employees", "ID", Variant(EmployeeID), "FirstName"), true);
  const std::string last =
      cf.returnStr(ReturnLookupValue("Employees", "ID", Variant(EmployeeID), "LastName"), true);
  std::string printed_on = "Printed On: " + Format(Variant(Clock::Today()), "mmm/dd/yyyy");
  if (!first.empty() || !last.empty()) printed_on += " For: " + first + " " + last;
  vsp.Text(printed_on + "\n");
  vsp.TextAlign(0);
  vsp.FontBold(false);
  vsp.Orientation(0);
  vsp.TextAlign(1);

  // Step 3: the criteria line.
  vsp.TextAlign(0);
  vsp.Text("At least " + std::to_string(AtLeast) + " in last " + inlast_text +
           " days, averaged over " + averageover_text + " days.\nAlert when referrals drop by " +
           CStr(Variant(AlertWhen)) + "%.\n");
  vsp.TextAlign(7);

  // Step 4: one query gives each dentist's expected (EXPR1) and actual
  // (EXPR2) count, both counted back from the database's clock.
  //
  // The counts are read grouped, in one pass over the patients. Counted
  // by a subquery per referred patient, a practice whose referral repair
  // put most of its patients under one placeholder dentist ("No Referring
  // Dentist") counts that dentist's patients once for each of them: 18,000
  // such patients took minutes. Count(ID)/R keeps its meaning: Count of
  // the CASE counts the same IDs, and dividing it by a whole R is still
  // whole-number division on both engines. Dentists of equal average come
  // in the order of their ID, the same on every engine.
  db::Recordset rs = Open(
      "SELECT ReferringDentistID, Count(CASE WHEN signupdate>=Dateadd(d,-" + averageover_text +
      ",getdate()) THEN ID END)/" + Rtext +
      " as expr1, Count(CASE WHEN signupdate>=Dateadd(d,-" + inlast_text +
      ",getdate()) THEN ID END) as expr2 "
      "FROM Patient WHERE ReferringDentistID IS NOT NULL GROUP BY ReferringDentistID "
      "Order By EXPR1 DESC, ReferringDentistID");
  const std::string bar = std::to_string(AtLeast);
  auto dentist_cell = [&](const Variant& id) {
    const std::string name =
        cf.returnStr(ReturnLookupValue("ReferringDentists", "ID", id, "Name"), true);
    const std::string lname =
        cf.returnStr(ReturnLookupValue("ReferringDentists", "ID", id, "LastName"), true);
    const std::string phone =
        cf.returnStr(ReturnLookupValue("ReferringDentists", "ID", id, "Phone"), true);
    return frame::EscapeCell(name + " " + lname) + "\n" + frame::EscapeCell(phone);
  };

  // The dentists who stopped: the expected count clears the bar and none
  // came in the recent period.
  std::string body;
  rs.Filter(Variant("EXPR1>=" + bar + " AND EXPR2=0"));
  while (!rs.Eof()) {
    const double e1 = cf.ReturnVal(rs["expr1"].Value());
    body += dentist_cell(rs["ReferringDentistID"].Value()) + "|" +
            Format(Variant(e1 * R), "##.00") + "|" + Format(Variant(e1), "##.##") + "|" +
            CStr(rs["expr2"].Value()) + "|100 %;";
    rs.MoveNext();
  }

  // Step 5: the dentists who slackened. The recent count must lie under
  // the same bar the average had to clear, not under the average: 4
  // expected and 3 received is a drop of 25 % and stands nowhere. The
  // alert percentage takes no part in the choice; it is only printed.
  rs.Filter(Variant("EXPR1>=" + bar + " AND ( EXPR2 > 0 AND EXPR2 <" + bar + ")"));
  db::Recordset drops;
  drops.Fields().Append("ReferringDentistID", db::adInteger);
  drops.Fields().Append("ReferringDentistName", db::adVarChar, 255);
  drops.Fields().Append("ReferringDentistPhone", db::adVarChar, 20);
  drops.Fields().Append("LongPeriodAverage", db::adDouble);
  drops.Fields().Append("ShortPeriodAverage", db::adDouble);
  // The percentage is kept as the number its formatted text shows, not as
  // the text: sorted as text "75" would stand above "100", and the reader
  // expects the biggest drop first.
  drops.Fields().Append("PercentChange", db::adDouble);
  drops.Open();
  while (!rs.Eof()) {
    const Variant id = rs["ReferringDentistID"].Value();
    const double e1 = cf.ReturnVal(rs["expr1"].Value());
    const double e2 = cf.ReturnVal(rs["expr2"].Value());
    drops.AddNew();
    drops["ReferringDentistID"].Value(id);
    drops["ReferringDentistName"].Value(
        Variant(cf.returnStr(ReturnLookupValue("ReferringDentists", "ID", id, "Name"), true) + " " +
                cf.returnStr(ReturnLookupValue("ReferringDentists", "ID", id, "LastName"), true)));
    std::string phone =
        cf.returnStr(ReturnLookupValue("ReferringDentists", "ID", id, "Phone"), true);
    drops["ReferringDentistPhone"].Value(Variant(phone.substr(0, 20)));
    drops["LongPeriodAverage"].Value(Variant(cf.ReturnVal(Variant(Format(Variant(e1), "##.##")))));
    drops["ShortPeriodAverage"].Value(Variant(e2));
    drops["PercentChange"].Value(
        Variant(cf.ReturnVal(Variant(Format(Variant(100 - 100 * e2 / e1), "###.##")))));
    drops.Update();
    rs.MoveNext();
  }
  rs.Close();

  // Step 7: the biggest drop first.
  drops.Sort("PercentChange  DESC");
  if (drops.RecordCount() > 0) drops.MoveFirst();
  while (!drops.Eof()) {
    const double avg = cf.ReturnVal(drops["LongPeriodAverage"].Value());
    body += frame::EscapeCell(cf.returnStr(drops["ReferringDentistName"].Value())) + "\n" +
            frame::EscapeCell(cf.returnStr(drops["ReferringDentistPhone"].Value())) + "|" +
            Format(Variant(avg * R), "##.00") + "|" + Format(Variant(avg), "##.##") + "|" +
            CStr(drops["ShortPeriodAverage"].Value()) + "|" +
            Format(drops["PercentChange"].Value(), "###.##") + " %;";
    drops.MoveNext();
  }

  // Step 9: the table, a header alone when no dentist stands in it.
  vsp.AddTable("^!~+1.8in|^!~+1.7in|^!~+1.7in|^!~+1.5in|<!~+.8in",
               "Referring Dentist\nPhone|Total Refs Last \n" + averageover_text +
                   " Days|Avg Refs Last \n" + inlast_text + " Days\n" + averageover_text +
                   " Day Avg|Refs last " + inlast_text + " days|Percent\nDrop",
               body, kHeaderColor);
}

}  // namespace orv

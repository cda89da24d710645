// The referral package and its sections: who sends the practice its
// patients, what was done for them, and which patients were sent by other
// patients.
#include <string>
#include <vector>

#include "accounts/account_model.h"
#include "common/common_functions.h"
#include "common/format.h"
#include "frame/preview_form.h"
#include "frame/reports.h"
#include "frame/surface/surface.h"
#include "frame/surface/table_model.h"

namespace orv {

namespace {

// The order line of the detailed and summary sections; none for an order
// the package does not know.
std::string OrderLine(int32_t OrderFlag) {
  switch (OrderFlag) {
    case 0:
      return "By Preferred Doctor";
    case 1:
      return "By Referring Dentist";
    case 3:
      return "By Number of Referred Patients";
    default:
      return "";
  }
}

// Text for a quoted SQL literal: quotes doubled.
std::string Quoted(const std::string& s) {
  std::string out;
  for (char c : s) {
    out += c;
    if (c == '\'') out += '\'';
  }
  return out;
}

// The sign-up period of the detailed queries, dates as yyyy-mm-dd.
std::string SignupPeriod(DateTime start, DateTime end) {
  return "(Patient.Signupdate >= '" + start.ToIsoDate() + "' and Patient.Signupdate <= '" +
         end.ToIsoDate() + "')";
}

}  // namespace

void clsReports::rptReferralReports(bool blnRefDentistList, bool blnRefDentistType,
                                    bool blnRefDetailed, bool blnRefPatient, bool blnRefSummary,
                                    bool blnRefAlert, DateTime dtStart, DateTime dtEnd,
                                    std::string UserName, std::string ProviderNames,
                                    int32_t Category, std::vector<int32_t> arrProviderIDs,
                                    int32_t OrderFlag) {
  // The list of referring dentists and the patients referred by patients
  // are sections the host calls on their own; the package takes their
  // flags, and the category, without drawing anything for them.
  (void)blnRefDentistList;
  (void)blnRefPatient;
  (void)Category;
  Trap("An Error has occurred in Sub rptReferralReport in Class clsReports", [&] {
    frame::PrintSurface& vsp = VSP();
    vsp.Orientation(0);
    vsp.DocName("Referral Reports");
    vsp.StartDoc();
    vsp.CurrentY(vsp.MarginTop());
    const std::string order_line = OrderLine(OrderFlag);
    auto new_page_if_used = [&] {
      if (vsp.PageCount() >= 2 || vsp.CurrentY() > vsp.MarginTop()) vsp.NewPage();
    };
    auto print_order_line = [&] {
      if (order_line.empty()) return;
      vsp.FontBold(true);
      vsp.Text(order_line);
      vsp.FontBold(false);
    };
    {
      // The first two sections read one moment of the practice. The
      // summary below may repair referral links first; it reads after the
      // repair, so these sections show the moment before it.
      const db::Snapshot snapshot(conn_, db::Snapshot::OnFailure::RunWithout);
      if (blnRefDentistType) {
        PrintReportHeading("Referral Dentist Procedure Type Report", UserName,
                           "From: " + Format(Variant(dtStart), "mmm/dd/yyyy") + " to " +
                               Format(Variant(dtEnd), "mmm/dd/yyyy"));
        vsp.TextAlign(0);
        if (!ProviderNames.empty()) vsp.Text(ProviderNames);
        srptReferringDentistType(dtStart, dtEnd);
      }
      if (blnRefDetailed) {
        new_page_if_used();
        PrintReportHeading("Referral Details Report", UserName, "");
        print_order_line();
        srptReferringDentistDetailed(dtStart, dtEnd, arrProviderIDs, OrderFlag);
      }
    }
    if (blnRefSummary) {
      new_page_if_used();
      PrintReportHeading("Referral Summary Report", UserName, "");
      print_order_line();
      vsp.TextAlign(1);
      ReferralProductSumReport(dtStart, dtEnd, UserName);
    }
    if (blnRefAlert) {
      ReferralAlertWarned = false;
      Trap("An Error has occurred in Sub rptAnalysisReport in Class clsReports", [&] {
        for (int32_t id : arrProviderIDs) srptReferralAlerts(std::to_string(id));
      });
    }
    PrintPageFooters(kPrintedBy);
    vsp.EndDoc();
    Form().Show();
  });
}

void clsReports::srptReferringDentistList() {
  const db::Snapshot snapshot(conn_, db::Snapshot::OnFailure::RunWithout);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  vsp.Orientation(0);
  vsp.Text(" ");
  vsp.TextAlign(0);
  std::string body;
  db::Recordset rs =
      Open("Select ID, Title, Name, LastName from ReferringDentists order by LastName, Name");
  while (!rs.Eof()) {
    const std::string name = cf.returnStr(rs["Title"].Value(), true) + " " +
                             cf.returnStr(rs["Name"].Value(), true) + " " +
                             cf.returnStr(rs["LastName"].Value(), true);
    db::Recordset last = Open("SELECT TOP 1 SignupDate from Patient where ReferringDentistID = " +
                              CStr(rs["ID"].Value()) + " ORDER BY SignupDate DESC");
    if (!last.Eof() && !last["SignupDate"].Value().IsNull()) {
      body +=
          frame::EscapeCell(name) + "|" + Format(last["SignupDate"].Value(), "mmm/dd/yyyy") + ";";
    } else {
      body += frame::EscapeCell(name) + "| N/A ;";
    }
    RaiseProgress(rs);
    rs.MoveNext();
  }
  vsp.AddTable("<4in|<2in", "Referring Dentist|Date Last Patient Referred", body, kHeaderColor);
}

void clsReports::srptReferringDentistType(DateTime dtStart, DateTime dtEnd) {
  const db::Snapshot snapshot(conn_, db::Snapshot::OnFailure::RunWithout);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  // The period is the invoice's date, written yyyy-mm-dd so that both
  // engines read it; the count of each code carries the same period, so
  // that the counts are those of the codes listed.
  const std::string period = " AND Invoices.[Date] >= '" + dtStart.ToIsoDate() +
                             "' AND Invoices.[Date] <= '" + dtEnd.ToIsoDate() + "'";
  db::Recordset rs =
      Open("Select ID, Title, Name, LastName FROM ReferringDentists order by LastName, Name");
  while (!rs.Eof()) {
    const std::string id = CStr(rs["ID"].Value());
    db::Recordset codes = Open(
        "SELECT DISTINCT InvoiceDetails.Code, FeeCodes.Description FROM Invoices INNER JOIN "
        "InvoiceDetails ON Invoices.ID = InvoiceDetails.InvoiceID INNER JOIN Patient ON "
        "Invoices.PatientID = Patient.ID INNER JOIN FeeCodes ON InvoiceDetails.Code = FeeCodes.ID "
        "WHERE Patient.ReferringDentistID = " +
        id + period + " ORDER BY InvoiceDetails.Code");
    if (!codes.Eof()) {
      const std::string name = cf.returnStr(rs["Title"].Value(), true) + " " +
                               cf.returnStr(rs["Name"].Value(), true) + " " +
                               cf.returnStr(rs["LastName"].Value(), true);
      vsp.AddTable("<!2in", "", frame::EscapeCell(name) + ";");
      // The dentist's name heads the codes that follow: never alone at a
      // page's foot.
      vsp.KeepWithNext();
      std::string body;
      while (!codes.Eof()) {
        const std::string code = cf.returnStr(codes["Code"].Value());
        // The code goes in quoted: codes are text ("01202"), and compared
        // as a number "01202" would not equal the stored text on every
        // engine.
        db::Recordset count = Open(
            "SELECT COUNT(Code) AS CodeCount From Invoices INNER JOIN InvoiceDetails ON "
            "Invoices.ID = InvoiceDetails.InvoiceID INNER JOIN Patient ON Invoices.PatientID = "
            "Patient.ID INNER JOIN FeeCodes ON InvoiceDetails.Code = FeeCodes.ID WHERE "
            "Patient.ReferringDentistID = " +
            id + " AND InvoiceDetails.Code = '" + Quoted(code) + "'" + period);
        body += frame::EscapeCell(code) + "|" +
                frame::EscapeCell(cf.returnStr(codes["Description"].Value())) + "|" +
                CStr(count["CodeCount"].Value()) + ";";
        codes.MoveNext();
      }
      vsp.AddTable("<1in|<5in|<1in", "Fee Code|Fee Code Description|Fee Code Occurrence", body,
                   kHeaderColor);
    }
    RaiseProgress(rs);
    rs.MoveNext();
  }
}

void clsReports::srptReferringDentistSummary(DateTime Stardate, DateTime Enddate, int32_t SortBy) {
  // SortBy is accepted: the summary is always by the dentists' names.
  (void)SortBy;
  const db::Snapshot snapshot(conn_, db::Snapshot::OnFailure::RunWithout);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  AccountModel accounts(conn_, InterestRate);
  vsp.Orientation(0);
  vsp.Text("For the Period " + Format(Variant(Stardate), "mmm/dd/yyyy") + " to " +
           Format(Variant(Enddate), "mmm/dd/yyyy"));
  vsp.Text(" ");
  std::string body;
  db::Recordset rs = Open("Select * from ReferringDentists order by LastName, Name");
  while (!rs.Eof()) {
    db::Recordset patients =
        Open("Select ID From Patient where ReferringDentistID = " + CStr(rs["ID"].Value()) +
             " and SignupDate >= '" + Stardate.ToIsoDate() + "' and SignUpDate <='" +
             Enddate.ToIsoDate() + "'");
    long count = 0;
    Currency billing, payments;
    while (!patients.Eof()) {
      ++count;
      // Billing and payments over all time, on the finished invoices of
      // the patients who signed up in the period.
      db::Recordset inv =
          Open("Select ID, InvoiceTotal from Invoices where PatientID = " +
               CStr(patients["ID"].Value()) + " and [Complete?] <> 0 and not [Complete?] is null");
      while (!inv.Eof()) {
        billing += cf.ReturnCur(inv["InvoiceTotal"].Value());
        payments += accounts.ReturnInvoicePaid(
            true, static_cast<int32_t>(cf.ReturnVal(inv["ID"].Value())), Clock::Today(), 0);
        inv.MoveNext();
      }
      patients.MoveNext();
    }
    body += frame::EscapeCell(cf.returnStr(rs["Title"].Value(), true) + " " +
                              cf.returnStr(rs["Name"].Value(), true) + " " +
                              cf.returnStr(rs["LastName"].Value(), true)) +
            "|" + std::to_string(count) + "|" + Format(Variant(billing), "Currency") + "|" +
            Format(Variant(payments), "Currency") + ";";
    RaiseProgress(rs);
    rs.MoveNext();
  }
  vsp.AddTable("<!3in|^!1in|>1in|>1in", "Dentist|# Patients|Billing|Payments", body, kHeaderColor);
}

void clsReports::srptReferringDentistDetailed(DateTime StartDate, DateTime Enddate,
                                              std::vector<int32_t> arrProviderIDs, int32_t SortBy) {
  try {
    const db::Snapshot snapshot(conn_, db::Snapshot::OnFailure::RunWithout);
    frame::PrintSurface& vsp = VSP();
    clsCommonFunctions& cf = Common();
    const std::string period = SignupPeriod(StartDate, Enddate);
    // An active patient is one whose [Active?] flag is set: the practice
    // stores true as -1, and a test for 1 would list nobody.
    // The providers chosen filter the patients by their preferred doctor.
    std::string providers;
    for (int32_t id : arrProviderIDs)
      providers += (providers.empty() ? "" : ",") + std::to_string(id);
    const std::string provider_filter =
        providers.empty() ? "" : " and Patient.DoctorID in (" + providers + ")";
    auto text_or = [&](const Variant& v, const char* fallback) {
      std::string s = cf.returnStr(v, true);
      return s.empty() ? std::string(fallback) : s;
    };
    long grand = 0;
    auto group = [&](const std::string& heading, const std::string& format,
                     const std::string& header, const std::string& body, long n) {
      if (n == 0) return;  // an empty group prints nothing
      // The heading stays with the group's first rows, and the count with
      // its last row: neither is left alone on a page.
      vsp.AddTable("<7.5in", "", frame::EscapeCell(heading) + ";");
      vsp.KeepWithNext();
      vsp.AddTable(format, header, body, kHeaderColor);
      vsp.KeepWithNext();
      vsp.Text("Total: " + std::to_string(n) + " for " + heading);
      grand += n;
    };

    if (SortBy == 1 || SortBy == 3) {
      // By referring dentist (1) the dentists go by name; by number (3) by
      // how many active, real patients each sent in the period, most
      // first. The two orders are given by what the orders are called.
      const std::string dentists =
          SortBy == 1
              ? "SELECT ID,(referringDentists.Title + ' ' + referringDentists.Name + ' ' + "
                "referringDentists.LastName) AS ReferringDoctor from referringDentists order by "
                "LastName"
              : "SELECT ID,(referringDentists.Title + ' ' + referringDentists.Name + ' ' + "
                "referringDentists.LastName) AS ReferringDoctor from ReferringDentists order by "
                "(select count(ID) from Patient where Patient.ReferringDentistID = "
                "ReferringDentists.ID and ISNULL(patient.[active?], 0) <> 0 and "
                "Patient.AccountholderOnly = 0 "
                "and Patient.FullName is not NULL and " +
                    period + ") DESC, LastName";
      db::Recordset patients = Open(
          "SELECT (Select LastName +' ' + FirstName from Employees where Employees.ID = "
          "Patient.DoctorID) as Name ,Patient.DoctorID,(Patient.Title + ' ' + Patient.FirstName + "
          "' ' + Patient.LastName) AS PatientName,Patient.SignupDate, (select name from "
          "Patientcategories where id = Patient.categoryID) as category , (referringDentists.Title "
          "+ ' ' + referringDentists.Name + ' ' + referringDentists.LastName) AS ReferringDoctor, "
          "Patient.ReferalReason, Patient.ReferringDentistID from patient inner join "
          "referringDentists on Patient.ReferringDentistID = ReferringDentists.ID where "
          "ISNULL(patient.[active?], 0) <> 0 and Patient.AccountholderOnly = 0 and "
          "Patient.FullName is not "
          "NULL and " +
          period + provider_filter + " ORDER BY Patient.LastName, Patient.FirstName");
      db::Recordset rs = Open(dentists);
      while (!rs.Eof()) {
        patients.Filter(Variant("ReferringDentistID = " + CStr(rs["ID"].Value())));
        std::string body;
        long n = 0;
        while (!patients.Eof()) {
          body += frame::EscapeCell(text_or(patients["Name"].Value(), "Doctor Name Unspecified")) +
                  "|" + frame::EscapeCell(cf.returnStr(patients["PatientName"].Value(), true)) +
                  "|" + Format(patients["SignupDate"].Value(), "MMM/dd/yyyy") + "|" +
                  frame::EscapeCell(cf.returnStr(patients["category"].Value())) + "|" +
                  frame::EscapeCell(cf.returnStr(patients["ReferalReason"].Value())) + ";";
          ++n;
          patients.MoveNext();
        }
        group(text_or(rs["ReferringDoctor"].Value(), "Unspecified"),
              "<1.2in|<1.8in|1in|1.8in|1.7in", "Preferred Dentist|Patient|Date|Category|Notes",
              body, n);
        RaiseProgress(rs);
        rs.MoveNext();
      }
      vsp.Text("Grand Total: " + std::to_string(grand) + " Referring Dentists");
    } else if (SortBy == 0) {
      const std::string columns =
          "SELECT Patient.DoctorID as DoctorID, Patient.Title, Patient.FirstName, "
          "Patient.LastName, Patient.SignupDate, (select name from Patientcategories where id = "
          "Patient.categoryID) as category , (referringDentists.Title + ' ' + "
          "referringDentists.Name + ' ' + referringDentists.LastName) AS ReferringDoctor, "
          "Patient.ReferalReason, Patient.ReferringDentistID from patient inner join "
          "referringDentists on Patient.ReferringDentistID = ReferringDentists.ID where ";
      auto rows_of = [&](db::Recordset& p, long& n) {
        std::string body;
        while (!p.Eof()) {
          body += frame::EscapeCell(cf.returnStr(p["Title"].Value(), true) + " " +
                                    cf.returnStr(p["FirstName"].Value(), true) + " " +
                                    cf.returnStr(p["LastName"].Value(), true)) +
                  "|" + Format(p["SignupDate"].Value(), "MMM/dd/yyyy") + "|" +
                  frame::EscapeCell(cf.returnStr(p["category"].Value())) + "|" +
                  frame::EscapeCell(text_or(p["ReferringDoctor"].Value(), "Unspecified")) + "|" +
                  frame::EscapeCell(cf.returnStr(p["ReferalReason"].Value())) + ";";
          ++n;
          p.MoveNext();
        }
        return body;
      };
      const char* format = "<1.8in|<1.2in|1in|1.8in|1.7in";
      const char* header = "Patient|Date|Category|Referring Dentist|Notes";
      db::Recordset known =
          Open(columns +
               "Patient.DoctorID in (select id from Employees) and ISNULL(patient.[active?], 0) <> "
               "0 and "
               "Patient.AccountholderOnly = 0 and Patient.FullName is not NULL and " +
               period + provider_filter + " ORDER BY Patient.LastName, Patient.FirstName");
      db::Recordset emp = Open(
          "SELECT ID, FirstName, LastName, [Professional Title] as Title, Fullname from "
          "Employees ORDER BY LastName, FirstName");
      while (!emp.Eof()) {
        known.Filter(Variant("DoctorID= " + CStr(emp["ID"].Value())));
        long n = 0;
        const std::string body = rows_of(known, n);
        std::string name = cf.returnStr(emp["Title"].Value(), true);
        for (const char* part : {"FirstName", "LastName"}) {
          const std::string s = cf.returnStr(emp[part].Value(), true);
          if (!s.empty()) name += (name.empty() ? "" : " ") + s;
        }
        group(name.empty() ? "Unspecified" : name, format, header, body, n);
        RaiseProgress(emp);
        emp.MoveNext();
      }
      // Patients whose preferred doctor is no employee (or none), when no
      // providers were chosen: chosen providers are employees.
      if (providers.empty()) {
        db::Recordset unknown =
            Open(columns +
                 "isnull(Patient.DoctorID,0) not in (select id from Employees) and "
                 "ISNULL(patient.[active?], 0) <> 0 and patient.Fullname is not NULL and "
                 "Patient.AccountholderOnly = 0 and " +
                 period + " ORDER BY Patient.LastName, Patient.FirstName");
        long n = 0;
        const std::string body = rows_of(unknown, n);
        group("Doctor Name Unspecified", format, header, body, n);
      }
      vsp.Text("Grand Total: " + std::to_string(grand) + " Preferred Dentists");
    }
    // Any other order draws nothing.
  } catch (const std::exception& e) {
    Host().ShowFailure("An Unexpected Error Has Occurred in clsReport.\n" + std::string(e.what()),
                       host::vbOKOnly, "Error");
  }
}

void clsReports::srptRefferedByPatient(DateTime dtStart, DateTime dtEnd) {
  const db::Snapshot snapshot(conn_, db::Snapshot::OnFailure::RunWithout);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  db::Recordset rs = Open("Select * from patient where SignupDate >= '" + dtStart.ToIsoDate() +
                          "' AND SignupDate <= '" + dtEnd.ToIsoDate() + "'");
  std::string body;
  while (!rs.Eof()) {
    // "0" is the front desk's "nobody"; an empty or NULL one names nobody
    // either and is left out too.
    const std::string by = cf.returnStr(rs["RefferedBy"].Value(), true);
    if (!by.empty() && by != "0") {
      body += frame::EscapeCell(cf.returnStr(rs["FirstName"].Value(), true) + " " +
                                cf.returnStr(rs["LastName"].Value(), true)) +
              "|" + frame::EscapeCell(by) + "|" +
              frame::EscapeCell(cf.returnStr(rs["ReferalReason"].Value())) + "|" +
              frame::EscapeCell(cf.returnStr(rs["ReferredByAddID"].Value())) + ";";
    }
    RaiseProgress(rs);
    rs.MoveNext();
  }
  vsp.AddTable(">1.5in|>1.5in|1.5in|1.5in", "Patient Name|Referred By|Reason|Referral Type", body,
               kHeaderColor);
}

}  // namespace orv

// The directory lists: the fee guide, the insurance company and employer
// lists, and the simple and detailed patient lists.
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "common/common_functions.h"
#include "common/format.h"
#include "common/vbstrings.h"
#include "frame/contact_cells.h"
#include "frame/preview_form.h"
#include "frame/reports.h"
#include "frame/surface/surface.h"
#include "frame/surface/table_model.h"
#include "platform/db/db_error.h"
#include "platform/host/host_services.h"

namespace orv {

void clsReports::rptFeeGuide(int32_t ID, std::string UserName) {
  const db::Snapshot snapshot(conn_, db::Snapshot::OnFailure::RunWithout);
  frame::PrintSurface& vsp = VSP();
  vsp.Orientation(0);
  Host().SetMousePointer(host::vbHourglass);
  Host().DoEvents();

  db::Recordset rs = Open(
      "SELECT FeeGuides.*, FeeGuideDetails.*, FeeCodes.* FROM FeeCodes INNER JOIN (FeeGuides "
      "INNER JOIN FeeGuideDetails ON FeeGuides.ID = FeeGuideDetails.FeeGuideID) ON FeeCodes.ID = "
      "FeeGuideDetails.FeeCodeID where FeeGuides.ID = " +
      std::to_string(ID) + " ORDER BY FeeGuideDetails.FeeCodeID");
  // The title is the guide's own name, read from the first row: a guide
  // without detail rows fails here and the error goes to the host. The
  // failure names the guide, and says whether it is missing or only empty,
  // so the front desk knows which list to fix.
  if (rs.Eof()) {
    db::Recordset guide = Open("SELECT Name FROM FeeGuides WHERE ID = " + std::to_string(ID));
    throw db::DatabaseError(db::kErrNoCurrentRecord,
                            guide.Eof() ? "There is no fee guide " + std::to_string(ID) +
                                              " (FeeGuides.ID); nothing was printed."
                                        : "The fee guide " + std::to_string(ID) + " (" +
                                              CStr(guide["Name"].Value()) +
                                              ") has no fees on file; nothing was printed.");
  }
  vsp.DocName(CStr(rs["Name"].Value()));
  vsp.StartDoc();
  PrintReportHeading(vsp.DocName(), UserName, "");
  vsp.TextAlign(1);
  vsp.FontBold(false);
  vsp.FontSize(10);

  // No coercion here: a Null amount formats to "" and a Null text is an
  // empty cell.
  auto text = [](const Variant& v) { return v.IsNull() ? std::string() : frame::EscapeCell(CStr(v)); };
  std::string body;
  while (!rs.Eof()) {
    body += text(rs["FeeCodeID"].Value());
    body += "|";
    body += text(rs["Description"].Value());
    body += "|";
    body += text(rs["Type"].Value());
    body += "|";
    body += Format(rs["Amount"].Value(), "Currency");
    body += ";";
    RaiseProgress(rs);
    rs.MoveNext();
  }
  vsp.AddTable("<.6in|<3.5in|<1.5in|>.75in", "Code|Description|Type|Amount($)", body, kHeaderColor);
  PrintPageFooters(kPrintedBy);
  vsp.EndDoc();
  Form().Show();
  Host().SetMousePointer(host::vbDefault);
}

namespace {

// The address cell of the company and employer lists: each of the first
// four parts only when it has text, then the postal code with no test.
// Escaped whole: its line breaks are no separators of the table.
std::string AddressCell(clsCommonFunctions& cf, const db::Recordset& rs) {
  std::string cell;
  if (!cf.returnStr(rs["Street"].Value()).empty()) cell += cf.returnStr(rs["Street"].Value()) + "\r\n";
  if (!cf.returnStr(rs["Street2"].Value()).empty()) cell += cf.returnStr(rs["Street2"].Value()) + "\r\n";
  if (!cf.returnStr(rs["City"].Value()).empty()) cell += cf.returnStr(rs["City"].Value()) + ", ";
  if (!cf.returnStr(rs["Prov"].Value()).empty()) cell += cf.returnStr(rs["Prov"].Value()) + ", ";
  cell += cf.returnStr(rs["PostalCode"].Value());
  return frame::EscapeCell(cell);
}

std::string PhoneCell(clsCommonFunctions& cf, const db::Recordset& rs) {
  return frame::EscapeCell(
      PhoneWithExt(cf.returnStr(rs["Phone"].Value()), cf.returnStr(rs["PhoneExt"].Value()), " [", "]"));
}

// A value of the database as one escaped cell.
std::string CellOf(clsCommonFunctions& cf, const Variant& v) { return frame::EscapeCell(cf.returnStr(v)); }

}  // namespace

void clsReports::rptInsuranceCompanyList(std::string txtfilter, std::string UserName) {
  const db::Snapshot snapshot(conn_, db::Snapshot::OnFailure::RunWithout);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  txtfilter = NoZeroFilter(txtfilter);
  std::string sql = txtfilter.empty()
                        ? "SELECT InsuranceCompany.* FROM InsuranceCompany ORDER BY CompanyName"
                        : "SELECT InsuranceCompany.* FROM InsuranceCompany where " + txtfilter +
                              " ORDER BY CompanyName";
  db::Recordset rs = Open(sql, db::adOpenForwardOnly, db::adLockReadOnly);
  vsp.DocName("Insurance Company List");
  vsp.Orientation(0);
  vsp.StartDoc();
  PrintReportHeading(vsp.DocName(), UserName, "");
  vsp.CurrentY(vsp.CurrentY() + Twips(500));
  vsp.TextAlign(1);
  vsp.FontBold(false);
  vsp.FontSize(10);
  std::string body;
  while (!rs.Eof()) {
    body += CellOf(cf, rs["CompanyName"].Value()) + "|" + AddressCell(cf, rs) + "|" +
            PhoneCell(cf, rs) + "|" + CellOf(cf, rs["CDA#"].Value()) + "|" +
            CellOf(cf, ReturnLookupValue("EDINetworks", "ID", rs["NetworkID"].Value(), "Name")) +
            ";";
    rs.MoveNext();
  }
  vsp.AddTable("<1.5in|<1.5in|<1.2in|<.6in|<1.5in", "Company|Address|Phone #|CDA#|Network", body,
               kHeaderColor);
  PrintPageFooters(kPrintedBy);
  vsp.EndDoc();
  Form().Show();
}

void clsReports::rptEmployerList(std::string txtfilter, std::string UserName) {
  const db::Snapshot snapshot(conn_, db::Snapshot::OnFailure::RunWithout);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  txtfilter = NoZeroFilter(txtfilter);
  std::string sql = txtfilter.empty() ? "Select * from Employers order by Name"
                                      : "Select * from Employers where " + txtfilter + " order by Name";
  db::Recordset rs = Open(sql, db::adOpenForwardOnly, db::adLockReadOnly);
  vsp.DocName("Employer List");
  vsp.Orientation(0);
  vsp.StartDoc();
  PrintReportHeading(vsp.DocName(), UserName, "");
  vsp.CurrentY(vsp.CurrentY() + Twips(500));
  vsp.TextAlign(1);
  vsp.FontBold(false);
  vsp.FontSize(10);
  std::string body;
  while (!rs.Eof()) {
    body += CellOf(cf, rs["Name"].Value()) + "|" + AddressCell(cf, rs) + "|" + PhoneCell(cf, rs) +
            "|" + CellOf(cf, rs["Policy#"].Value()) + "|" +
            CellOf(cf, ReturnLookupValue("InsuranceCompany", "ID", rs["InsuranceID"].Value(),
                                         "CompanyName")) +
            ";";
    rs.MoveNext();
  }
  vsp.AddTable("<1.5in|<1.5in|<1.2in|<.6in|<1.5in",
               "Employer|Address|Phone #|Policy #|Insurance Company", body, kHeaderColor);
  PrintPageFooters(kPrintedBy);
  vsp.EndDoc();
  // No Show here: the employer list has always left showing the form to the
  // host.
}

void clsReports::rptPatientListSimple(std::string txtfilter, std::string UserName,
                                      std::string Title, bool ByEmployer, int32_t EmployerID) {
  const db::Snapshot snapshot(conn_, db::Snapshot::OnFailure::RunWithout);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  txtfilter = NoZeroFilter(txtfilter);
  const std::string tail =
      " order by LastName}  AS Patients APPEND ({SELECT ID, Name FROM Employers}  AS SecEmployer "
      "RELATE 'SecondaryEmployerID' TO 'ID') AS SecEmployer,({SELECT ID, Name FROM Employers}  AS "
      "PrimEmployer RELATE 'EmployerID' TO 'ID') AS PrimEmployer,({Select ID, companyname from "
      "InsuranceCompany}  AS PrimInsurance RELATE 'InsuranceID' TO 'ID') AS PrimInsurance,({select "
      "ID, CompanyName from InsuranceCompany}  AS SecInsurance RELATE 'SecondaryInsuranceID' TO "
      "'ID') AS SecInsurance";
  std::string sql;
  std::string emp = std::to_string(EmployerID);
  if (ByEmployer) {
    if (txtfilter.empty()) {
      sql = "SHAPE {SELECT * FROM Patient where EmployerID = " + emp + " or SecondaryEmployerID = " + emp;
    } else {
      sql = "SHAPE {SELECT * FROM Patient where (EmployerID = " + emp + " or SecondaryEmployerID = " +
            emp + ") and (" + txtfilter + ")";
    }
    vsp.DocName(cf.returnStr(ReturnLookupValue("Employers", "ID", Variant(EmployerID), "Name")) +
                " Patients");
  } else {
    vsp.DocName(Title);
    // The shaping provider only took the server's form of the active test.
    txtfilter = vb::Replace(txtfilter, "Patient.[Active?] = True", "[Active?] <> 0");
    sql = txtfilter.empty() ? "SHAPE {select * from Patient" : "SHAPE {select * from Patient where " + txtfilter;
  }
  sql += tail;
  // Every column of a patient comes back (some 70), and the list prints
  // fifteen of them and a name from each chapter: only those are read into
  // the recordset. Holding them all was a fifth of the run on 20,000
  // patients.
  db::Recordset rs;
  std::vector<std::string> printed = {"LastName",         "FirstName",
                                      "PrimEmployer.Name", "SecEmployer.Name",
                                      "PrimInsurance.CompanyName", "SecInsurance.CompanyName"};
  printed.insert(printed.end(), std::begin(kPatientContactFieldNames), std::end(kPatientContactFieldNames));
  rs.KeepFields(std::move(printed));
  rs.Open(sql, conn_, db::adOpenStatic, db::adLockReadOnly, db::adCmdText);

  vsp.Orientation(1);
  vsp.StartDoc();
  PrintReportHeading(vsp.DocName(), UserName, "");
  vsp.TextAlign(1);
  vsp.FontBold(false);
  vsp.FontSize(10);

  const std::string format = kPatientContactFormat;
  const std::string header = kPatientContactHeader;
  // The column heads, drawn as a shaded body row.
  vsp.AddTable(format, "", header, std::nullopt, kHeaderColor);

  // The fields are looked up by name at the first patient and read row by
  // row after: a chapter's recordset follows its parent as it moves.
  struct Related {
    db::Field link;
    db::Recordset child;
    db::Field name;
    std::string scratch;
  };
  auto related = [&](const char* link, const char* chapter, const char* field) {
    db::Recordset child = rs[chapter].Chapter();
    const db::Field name = child[field];
    return Related{rs[link], std::move(child), name, std::string()};
  };
  auto child_text = [](Related& r) -> std::string_view {
    if (r.link.IsNull() || r.child.Eof()) return {};
    return r.name.Text(r.scratch);
  };
  struct PatientFields {
    db::Field last_name, first_name;
    Related prim_employer, sec_employer, prim_insurance, sec_insurance;
    PatientContactFields contact;
  };
  std::optional<PatientFields> f;
  // Each row's cells are built in the same strings, patient after patient,
  // and handed to the table as they are.
  std::string name, scratch;
  PatientContactCells cells;
  while (!rs.Eof()) {
    if (!f)
      f.emplace(PatientFields{rs["LastName"],
                              rs["FirstName"],
                              related("EmployerID", "PrimEmployer", "Name"),
                              related("SecondaryEmployerID", "SecEmployer", "Name"),
                              related("InsuranceID", "PrimInsurance", "CompanyName"),
                              related("SecondaryInsuranceID", "SecInsurance", "CompanyName"),
                              PatientContactFields(rs)});
    name.clear();
    name += f->last_name.Text(scratch);
    name += ", ";
    name += f->first_name.Text(scratch);
    FillPatientContactCells(cells, f->contact, name, "", child_text(f->prim_employer),
                            child_text(f->sec_employer), child_text(f->prim_insurance),
                            child_text(f->sec_insurance));
    // Each patient is a table of its own; past 9500 twips (landscape
    // letter) a new page starts with the column heads as a header.
    if (vsp.CurrentY() > Twips(9500)) {
      vsp.NewPage();
      vsp.AddTableRow(format, header, cells, kHeaderColor);
    } else {
      vsp.AddTableRow(format, "", cells);
    }
    RaiseProgress(rs);
    Host().DoEvents();
    rs.MoveNext();
  }
  PrintPageFooters(kPrintedBy);
  vsp.EndDoc();
  Form().Show();
}

void clsReports::rptPatientListDetailed(std::string txtfilter) {
  const db::Snapshot snapshot(conn_, db::Snapshot::OnFailure::RunWithout);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  txtfilter = NoZeroFilter(txtfilter);
  // Of the patient's columns the list prints these; the row's others are
  // not held.
  db::Recordset rs = OpenKeeping(
      txtfilter.empty() ? "SELECT * FROM Patient ORDER BY LastName"
                        : "SELECT * FROM Patient where " + txtfilter + " ORDER BY LastName",
      {"FullName", "Address", "GlobalNotes", "HomePhone", "HomeExt", "CelPhone", "Pager", "PagerExt", "OtherPhone",
       "OtherExt", "EmployerID", "InsuranceID", "SecondaryInsuranceID", "Policy#", "Division#", "SubscriberID#",
       "SecondaryPolicy#", "SecondaryDivision#", "SecondarySubscriberID#", "YearEnding"});
  // Reference tables searched with Find while the patients are walked.
  db::Recordset employers = Open("SELECT * FROM Employers", db::adOpenStatic, db::adLockOptimistic);
  db::Recordset companies =
      Open("SELECT * FROM InsuranceCompany", db::adOpenStatic, db::adLockOptimistic);

  vsp.DocName("Patient Contact List - Detailed Version 4 Only");
  vsp.Orientation(0);
  vsp.StartDoc();
  vsp.MarginLeft("1in");
  vsp.MarginRight("1in");
  vsp.MarginTop("1in");
  vsp.MarginBottom("1in");

  vsp.TextAlign(2);
  vsp.FontSize(10);
  vsp.Text(Format(Variant(Clock::Today()), "mmm/dd/yyyy"));
  vsp.TextAlign(1);
  vsp.FontSize(14);
  vsp.FontBold(true);
  vsp.Text(vsp.DocName());
  vsp.Text(" ");
  vsp.TextAlign(0);
  vsp.FontSize(10);

  // Each table is one row of cells handed to the surface as they are,
  // the values as they stand (no escaping into a table string and
  // splitting back); the cells' strings serve patient after patient. The
  // fields are looked up by name once, not for every patient.
  auto str = [&](const db::Field& f) { return cf.returnStr(f.Value()); };
  const db::Field full_name = rs["FullName"], address = rs["Address"], notes = rs["GlobalNotes"],
                  employer_id = rs["EmployerID"], year_ending = rs["YearEnding"];
  const db::Field employer_name = employers["Name"], employer_street = employers["Street"],
                  employer_phone = employers["Phone"], employer_edi = employers["EDI?"],
                  employer_notes = employers["Notes"], company_name = companies["CompanyName"];
  // The patient's phones in the order they are listed, each with its
  // extension where it has one.
  const std::pair<db::Field, std::optional<db::Field>> phones[] = {
      {rs["HomePhone"], rs["HomeExt"]},
      {rs["CelPhone"], std::nullopt},
      {rs["Pager"], rs["PagerExt"]},
      {rs["OtherPhone"], rs["OtherExt"]},
  };
  std::vector<std::string> cells;
  auto row_of = [&](size_t count) -> std::span<std::string> {
    if (cells.size() < count) cells.resize(count);
    return std::span(cells).first(count);
  };
  // A patient's tables read as one block under the name: each table after
  // the first is marked to go with the one before it, as it is written, so
  // the block breaks to a new page whole and never leaves a table of
  // someone else's without the name above it.
  //
  // The primary and the secondary carrier tables: the company found by its
  // ID among the reference rows, then the patient's own policy numbers (the
  // secondary ones are the fields prefixed "Secondary"); the year end is
  // the same field for both.
  struct Carrier {
    db::Field link, policy, division, subscriber;
    std::string caption;
  };
  auto carrier = [&](const char* link, const std::string& caption, const std::string& prefix) {
    return Carrier{rs[link], rs[prefix + "Policy#"], rs[prefix + "Division#"],
                   rs[prefix + "SubscriberID#"], caption + "|Policy#|Division#|SubscriberID#|Year Ending"};
  };
  const Carrier carriers[] = {carrier("InsuranceID", "Primary Insurance", ""),
                              carrier("SecondaryInsuranceID", "Secondary Insurance", "Secondary")};
  auto insurance_table = [&](const Carrier& c) {
    const Variant id = c.link.Value();
    if (id.IsNull()) return;
    companies.MoveFirst();
    companies.Find("ID = " + CStr(id));
    if (companies.Eof()) return;
    vsp.KeepWithNext();
    const std::span<std::string> row = row_of(5);
    row[0] = str(company_name);
    row[1] = str(c.policy);
    row[2] = str(c.division);
    row[3] = str(c.subscriber);
    row[4] = str(year_ending);
    vsp.AddTableRow("2in|1in|1in|1in|1in", c.caption, row, kHeaderColor);
  };
  while (!rs.Eof()) {
    vsp.FontBold(true);
    vsp.Text(str(full_name));
    // The name introduces the patient's tables: never last on a page.
    vsp.KeepWithNext();
    vsp.FontBold(false);

    std::span<std::string> row = row_of(3);
    row[0] = str(address);
    row[1].clear();
    for (const auto& [number, ext] : phones) {
      const std::string n = str(number);
      if (n.empty()) continue;
      if (!row[1].empty()) row[1] += "\r\n";
      row[1] += PhoneWithExt(n, ext ? str(*ext) : std::string(), " ");
    }
    row[2] = str(notes);
    vsp.AddTableRow("2in|1in|3in", "Address |Phones|Global Notes", row, kHeaderColor);

    if (const Variant id = employer_id.Value(); !id.IsNull()) {
      employers.MoveFirst();
      employers.Find("ID = " + CStr(id));
      if (!employers.Eof()) {
        vsp.KeepWithNext();
        row = row_of(5);
        row[0] = str(employer_name);
        row[1] = str(employer_street);
        row[2] = str(employer_phone);
        row[3] = str(employer_edi);
        row[4] = str(employer_notes);
        vsp.AddTableRow("1in|1in|1in|1in|2in", "Employer|Address|Phone|EDI?|Notes", row, kHeaderColor);
      }
    }
    for (const Carrier& c : carriers) insurance_table(c);
    vsp.Text("");
    // Progress and the message pump only every 100th patient.
    if (rs.AbsolutePosition() % 100 == 0) {
      RaiseProgress(rs);
      Host().DoEvents();
    }
    rs.MoveNext();
  }
  vsp.EndDoc();
  PrintPageFooters(kPrintedBy);
  Form().Show();
}

}  // namespace orv

#include "frame/reports.h"

#include "common/common_functions.h"
#include "common/errors.h"
#include "common/format.h"
#include "common/report_math.h"
#include "frame/address_parts.h"
#include "frame/patient.h"
#include "frame/preview_form.h"
#include "platform/host/settings.h"

namespace orv {

clsReports::clsReports() : own_host_(std::make_unique<host::BatchHost>()) { host_ = own_host_.get(); }

clsReports::~clsReports() = default;

void clsReports::Connection(const db::Connection& connection) {
  // The host's object is kept by reference (a shared handle); it is never
  // opened, tested or closed here.
  conn_ = connection;
  has_connection_ = true;
  // Every let makes a new patient record on the same connection.
  patient_ = std::make_unique<clsPatient>();
  patient_->SetHostServices(host_);
  patient_->Connection(connection);
}

clsPatient& clsReports::Patient() {
  if (!patient_) {
    // Before any connection the record still exists; a PatientID let then
    // shows its "no connection" message.
    patient_ = std::make_unique<clsPatient>();
    patient_->SetHostServices(host_);
  }
  return *patient_;
}

void clsReports::SetPrintPreview(PreviewForm* theFrm) {
  if (theFrm == nullptr) throw ReportError(91, "Object variable or With block variable not set");
  form_ = theFrm;
}

void clsReports::SetHostServices(host::HostServices* services) {
  host_ = services ? services : own_host_.get();
  if (patient_) patient_->SetHostServices(host_);
}

frame::PrintSurface& clsReports::VSP() {
  if (form_ == nullptr) throw ReportError(91, "Object variable or With block variable not set");
  return form_->VSP;
}

PreviewForm& clsReports::Form() {
  if (form_ == nullptr) throw ReportError(91, "Object variable or With block variable not set");
  return *form_;
}

clsCommonFunctions& clsReports::Common() {
  if (!common_) common_ = std::make_unique<clsCommonFunctions>();
  return *common_;
}

db::Recordset clsReports::Open(const std::string& sql, int cursor, int lock) {
  db::Recordset rs;
  rs.Open(sql, conn_, cursor, lock, db::adCmdText);
  return rs;
}

db::Recordset clsReports::OpenKeeping(const std::string& sql, std::vector<std::string> keep) {
  db::Recordset rs;
  rs.KeepFields(std::move(keep));
  rs.Open(sql, conn_, db::adOpenStatic, db::adLockReadOnly, db::adCmdText);
  return rs;
}

std::string clsReports::ReturnAddressPart(const std::string& Address, int Part) {
  return orv::ReturnAddressPart(Address, Part);
}

Variant clsReports::ReturnOfficeValue(const std::string& fld) {
  // Column names with "#" or "?" need brackets in the statement; the field is
  // then read back by its bare name.
  std::string column = fld;
  if (fld.find('#') != std::string::npos || fld.find('?') != std::string::npos) {
    column = "[" + fld + "]";
  }
  std::string office = host::AppSettings().Get("Settings", "CurrentOffice", "0");
  db::Recordset rs;
  rs.Open("Select ID, " + column + " from OfficeInformation where ID = " + office, conn_,
          db::adOpenForwardOnly, db::adLockReadOnly, db::adCmdText);
  Variant result = Variant::Null();
  if (!rs.Eof()) {
    std::string bare;
    for (char c : fld) {
      if (c != '[' && c != ']') bare += c;
    }
    result = rs[bare].Value();
  }
  rs.Close();
  return result;
}

db::Connection clsReports::ReturnConnection(int32_t& CursorLocation) {
  // Once the host has let its connection, the "second" connection is that
  // same connection: a report that asks for one per record (the hygiene
  // company report) then reads the same snapshot of a server as the rest
  // of its run, and never opens a session of its own.
  if (has_connection_) return conn_;
  host::SettingsStore& settings = host::AppSettings();
  std::string server = settings.Get("Settings", "ServerName", "");
  std::string login = settings.Get("Settings", "dbLogin", "");
  std::string name = settings.Get("Settings", "dbName", "");
  // The provider string the product has always built. Our engines open a
  // URL instead: with SQLite the data source is the database file, so the
  // server name (a URL or a path) names it, or the database name where no
  // server is set.
  std::string connection_string = "Persist Security Info=True;Data Source=" + server +
                                  ";User ID=" + login + ";Password=qolvemta;Initial Catalog=" +
                                  name + ";Data Provider=SQLOLEDB.1";
  (void)connection_string;
  std::string target = !server.empty() ? server : name;
  if (target.empty()) {
    throw ReportError(kErrDatabase,
                      "No database is set up: the settings ServerName and dbName are both empty");
  }
  // Cursor location 3 asks for the shaping provider on the client; our
  // connections run SHAPE and plain statements alike, so both open the same.
  db::Connection c;
  c.Open(target);
  return c;
}

std::string clsReports::ReturnPercent(const Variant& a, const Variant& b) {
  return orv::ReturnPercent(a, b);
}

bool clsReports::IsMonthEnd(DateTime date) const { return orv::IsMonthEnd(date); }

bool clsReports::IsPayrollEmployee(int32_t ID) const {
  // The list is searched from index 1, as it was filled; slot 0 is unused.
  for (size_t i = 1; i < employee_ids_.size(); ++i) {
    if (employee_ids_[i] == ID) return true;
  }
  return false;
}

void clsReports::RaiseProgress(const db::Recordset& rs) {
  RaiseProgress(ProgressPercent(rs.AbsolutePosition(), rs.RecordCount()));
}

void clsReports::RaiseProgress(uint8_t percentage) {
  if (Progress) Progress(percentage);
}

void clsReports::Trap(const std::string& text, const std::function<void()>& body) {
  try {
    body();
  } catch (const ReportError& e) {
    host_->ShowFailure(text + "\n" + e.description(), host::vbOKOnly, "");
  } catch (const std::exception& e) {
    host_->ShowFailure(text + "\n" + e.what(), host::vbOKOnly, "");
  }
}

}  // namespace orv

#include "frame/patient.h"

#include <exception>

#include "common/variant.h"

namespace orv {
namespace {

// A text column: NULL (and Empty) become "".
std::string TextOf(const db::Recordset& rs, const char* column) {
  Variant v = rs[column].Value();
  return v.IsNull() || v.IsEmpty() ? std::string() : CStr(v);
}

// An ID column: NULL becomes 0, so that a patient without an office gives
// OfficeID 0 rather than a failed load.
int32_t IdOf(const db::Recordset& rs, const char* column) {
  Variant v = rs[column].Value();
  return v.IsNull() || v.IsEmpty() ? 0 : CLng(v);
}

// A date column: NULL becomes the zero date, for the same reason.
DateTime DateOf(const db::Recordset& rs, const char* column) {
  Variant v = rs[column].Value();
  return v.IsNull() || v.IsEmpty() ? DateTime() : CDate(v);
}

}  // namespace

clsPatient::clsPatient() = default;

clsPatient::~clsPatient() {
  if (rs_.State() == db::adStateOpen) rs_.Close();
}

void clsPatient::Connection(const db::Connection& connection) {
  connection_ = connection;
}

void clsPatient::SetHostServices(host::HostServices* services) {
  host_ = services;
}

host::HostServices& clsPatient::Host() {
  if (host_) return *host_;
  if (!own_host_) own_host_ = std::make_unique<host::BatchHost>();
  return *own_host_;
}

void clsPatient::PatientID(int32_t value) {
  patient_id_ = value;
  LoadPatient();
}

void clsPatient::LoadPatient() {
  if (!connection_) {
    Host().ShowFailure(kNoConnectionMessage);
    return;
  }
  // A failure anywhere in the read is swallowed: the properties keep what
  // was copied before it, and the setter returns normally.
  try {
    if (rs_.State() == db::adStateOpen) rs_.Close();
    // Only the fields copied below are held: a letter run loads each of
    // its patients, and making cells of every column of the patient's row
    // cost more than the statement itself.
    rs_.KeepFields({"FirstName", "LastName", "MiddleInitial", "Title", "FullName", "Address", "SIN",
                    "SignupDate", "EmployerID", "SecondaryEmployerID", "ThirdEmployerID",
                    "DefaultOfficeID"});
    rs_.Open("Select Patient.* FROM Patient WHERE ID = " + std::to_string(patient_id_),
             *connection_, db::adOpenStatic, db::adLockReadOnly, db::adCmdText);
    // The recordset holds its rows once open, so it is already as good as
    // disconnected from the host's connection.
    if (rs_.Eof()) return;
    first_name_ = TextOf(rs_, "FirstName");
    last_name_ = TextOf(rs_, "LastName");
    middle_initial_ = TextOf(rs_, "MiddleInitial");
    title_ = TextOf(rs_, "Title");
    full_name_ = TextOf(rs_, "FullName");
    address_ = TextOf(rs_, "Address");
    secondary_address_.clear();
    sin_ = TextOf(rs_, "SIN");
    signup_date_ = DateOf(rs_, "SignupDate");
    primary_employer_id_ = IdOf(rs_, "EmployerID");
    secondary_employer_id_ = IdOf(rs_, "SecondaryEmployerID");
    tertiary_employer_id_ = IdOf(rs_, "ThirdEmployerID");
    office_id_ = IdOf(rs_, "DefaultOfficeID");
  } catch (const std::exception&) {
  }
}

}  // namespace orv

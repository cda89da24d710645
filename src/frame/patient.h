// clsPatient: the identity of one patient, loaded from the practice
// database the moment `PatientID` is set.
//
// Reports keep one instance (made by the component's `Connection` setter)
// and use it to turn a patient's ID into the patient's office. Every other
// property is a plain value: setting one neither loads nor writes anything.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "common/datetime.h"
#include "platform/db/connection.h"
#include "platform/db/recordset.h"
#include "platform/host/host_services.h"

namespace orv {

class clsPatient {
 public:
  // The message shown when `PatientID` is set before any connection.
  static constexpr const char* kNoConnectionMessage = "No Connection available for Database";

  clsPatient();
  ~clsPatient();
  clsPatient(const clsPatient&) = delete;
  clsPatient& operator=(const clsPatient&) = delete;

  // Write-only: the host's connection, held by reference (a shared handle)
  // and never closed here.
  void Connection(const db::Connection& connection);

  // Where the "no connection" message box goes. Default: a batch host that
  // writes it to stderr. The services must outlive this object.
  void SetHostServices(host::HostServices* services);

  // Setting the ID stores it and loads the patient's row at once (see
  // LoadPatient in patient.cpp): a key that does not exist leaves every other
  // property as it was; a failed read leaves them as far as it got and
  // returns normally.
  int32_t PatientID() const { return patient_id_; }
  void PatientID(int32_t value);

  // Loaded from the column of the same name; a NULL column gives "".
  const std::string& FirstName() const { return first_name_; }
  void FirstName(std::string value) { first_name_ = std::move(value); }
  const std::string& LastName() const { return last_name_; }
  void LastName(std::string value) { last_name_ = std::move(value); }
  // From `MiddleInitial`; the property keeps its interface spelling.
  const std::string& MiddleInital() const { return middle_initial_; }
  void MiddleInital(std::string value) { middle_initial_ = std::move(value); }
  const std::string& FullName() const { return full_name_; }
  void FullName(std::string value) { full_name_ = std::move(value); }
  // The multi-line address (street, [street 2], "City, Prov", postal code).
  const std::string& Address() const { return address_; }
  void Address(std::string value) { address_ = std::move(value); }
  // No column of the practice database holds a second address; a load
  // clears it so that it never shows a former patient's value.
  const std::string& SecondaryAddress() const { return secondary_address_; }
  void SecondaryAddress(std::string value) { secondary_address_ = std::move(value); }
  const std::string& SIN() const { return sin_; }
  void SIN(std::string value) { sin_ = std::move(value); }

  // A NULL date loads as the zero date (1899-12-30).
  DateTime SignupDate() const { return signup_date_; }
  void SignupDate(DateTime value) { signup_date_ = value; }

  // IDs; a NULL column loads as 0. `PrimaryEmployerID` comes from
  // `EmployerID`, `TertiaryEmployerID` from `ThirdEmployerID` and `OfficeID`
  // from `DefaultOfficeID`.
  int32_t PrimaryEmployerID() const { return primary_employer_id_; }
  void PrimaryEmployerID(int32_t value) { primary_employer_id_ = value; }
  int32_t SecondaryEmployerID() const { return secondary_employer_id_; }
  void SecondaryEmployerID(int32_t value) { secondary_employer_id_ = value; }
  int32_t TertiaryEmployerID() const { return tertiary_employer_id_; }
  void TertiaryEmployerID(int32_t value) { tertiary_employer_id_ = value; }
  int32_t OfficeID() const { return office_id_; }
  void OfficeID(int32_t value) { office_id_ = value; }

 private:
  void LoadPatient();
  host::HostServices& Host();

  std::optional<db::Connection> connection_;
  // Made with the object and kept for its life; reopened by each load.
  db::Recordset rs_;
  host::HostServices* host_ = nullptr;
  std::unique_ptr<host::HostServices> own_host_;

  int32_t patient_id_ = 0;
  std::string first_name_, last_name_, middle_initial_, full_name_, address_, secondary_address_,
      sin_;
  // Loaded with the rest; no property shows it.
  std::string title_;
  DateTime signup_date_;
  int32_t primary_employer_id_ = 0, secondary_employer_id_ = 0, tertiary_employer_id_ = 0,
          office_id_ = 0;
};

}  // namespace orv

// clsReports: the report component a host application sees.
//
// The host creates it, lets `Connection`, calls `SetPrintPreview` with its
// preview form, sets `OfficeID`, `InterestRate` and `InterestDelay`, and calls
// one report method at a time. Each report opens its own recordsets on the
// host's connection, draws on the form's surface, raises `Progress`, and
// shows or prints the document. The report methods live in the folders of
// their families (lists/, accounts/, ...); this header declares them all.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "common/variant.h"
#include "frame/report_types.h"
#include "platform/db/connection.h"
#include "platform/db/recordset.h"
#include "platform/host/host_services.h"

namespace orv {

class PreviewForm;
class clsCommonFunctions;
class clsPatient;
namespace frame {
class PrintSurface;
}

// The footer text every report stamps on its pages.
inline constexpr const char* kPrintedBy = "Printed by Orvenda - Tessalyne Inc.";
// The header colour of every table heading.
inline constexpr uint32_t kHeaderColor = 12169126;

class clsReports {
 public:
  clsReports();
  ~clsReports();
  clsReports(const clsReports&) = delete;
  clsReports& operator=(const clsReports&) = delete;

  // ---- Public state ----
  float InterestRate = 0;
  int16_t InterestDelay = 0;
  int32_t OfficeID = 0;

  // `Connection` let: keeps the host's connection (the main and the lookup
  // reference are the same object). Nothing is opened, tested or closed.
  void Connection(const db::Connection& connection);
  // Keeps the form and its surface `VSP`. The form must outlive the runs.
  void SetPrintPreview(PreviewForm* theFrm);
  // The host's interactive services (message box, pointer, message pump).
  // Default: a batch host that writes messages to stderr.
  void SetHostServices(host::HostServices* services);

  // The `Progress` event: the host's sink, called with the percentage.
  std::function<void(uint8_t& Percentage)> Progress;

  // Credit on account held by the patient's family by holder, rounded to the
  // cent; IncludePostDates false leaves out cheques dated after today.
  Currency ReturnFamilyCredit(int32_t& PatientID, bool IncludePostDates = false);

  // ---- Services that do not print ----
  Variant ReturnOfficeValue(const std::string& fld);
  std::string ReturnAddressPart(const std::string& Address, int Part);

  // ---- Directory lists ----
  void rptPatientListDetailed(std::string txtfilter);
  void rptInsuranceCompanyList(std::string txtfilter, std::string UserName);
  void rptEmployerList(std::string txtfilter, std::string UserName);
  void rptPatientListSimple(std::string txtfilter, std::string UserName, std::string Title,
                            bool ByEmployer = false, int32_t EmployerID = 0);
  void rptFeeGuide(int32_t ID, std::string UserName);

  // ---- Appointment cards and family schedules ----
  void rptAppointmentCard(int32_t ID, std::string Header, std::string Footer, std::string OfficeName,
                          std::string OfficePhone, int16_t UnitMinutes, bool Assignment);
  void rptFamilyAppointmentsDetailed(int32_t ID, std::string OfficeName, std::string OfficeAddress,
                                     std::string PatientName, std::string Header, std::string Footer,
                                     int16_t UnitMinutes);
  void rptFamilyAppointmentsSummary(int32_t ID, std::string OfficeName, std::string OfficeAddress,
                                    std::string PatientName, std::string Header, std::string Footer,
                                    int16_t UnitMinutes);
  // Draws the family's coming appointments into the running document.
  void FamilyAppointmentsSummary(int32_t ID);

  // ---- For report code: private services of the component ----
  // (Public in C++ so that the report families in other folders, which are
  // all part of this class's implementation, can reach them.)

  // A second connection to the practice database from the settings
  // ServerName, dbLogin and dbName; `CursorLocation` 3 asks for the shaping
  // provider (client cursors), anything else the plain one.
  db::Connection ReturnConnection(int32_t& CursorLocation);
  // a / b in the percent format, or "0.00%" unless both are nonzero.
  std::string ReturnPercent(const Variant& a, const Variant& b);
  bool IsMonthEnd(DateTime date) const;
  bool IsPayrollEmployee(int32_t ID) const;
  std::vector<int32_t>& EmployeeIDs() { return employee_ids_; }

  // Page furniture.
  void PrintReportHeading(const std::string& Title, const std::string& UserName,
                          const std::string& SubTitle);
  void PrintPageFooters(const std::string& FooterText);
  Variant ReturnLookupValue(const std::string& Table, const std::string& KeyField,
                            const Variant& KeyValue, const std::string& Field);
  void PrintLetterHead();
  std::string ReturnProviderNames(std::string ProviderFilter);
  void PrintProvidersIncluded(const std::string& ProviderFilter);

  // Raises Progress for the current row of a static recordset.
  void RaiseProgress(const db::Recordset& rs);
  // Raises Progress with a computed percentage.
  void RaiseProgress(uint8_t percentage);

  // Runs `body` under a report's trap: any error shows one message box with
  // `text`, a line break and the error's description, and the method then
  // returns normally. Nothing is rolled back.
  void Trap(const std::string& text, const std::function<void()>& body);

  db::Connection& conn() { return conn_; }
  db::Connection& lookup_conn() { return conn_; }
  frame::PrintSurface& VSP();
  PreviewForm& Form();
  clsCommonFunctions& Common();
  // The patient record made by the last `Connection` let.
  clsPatient& Patient();
  host::HostServices& Host() { return *host_; }

  // Opens a recordset on the main connection.
  db::Recordset Open(const std::string& sql, int cursor = db::adOpenStatic,
                     int lock = db::adLockReadOnly);

 private:
  db::Connection conn_;
  bool has_connection_ = false;
  PreviewForm* form_ = nullptr;
  std::unique_ptr<clsCommonFunctions> common_;
  std::unique_ptr<clsPatient> patient_;
  std::unique_ptr<host::HostServices> own_host_;
  host::HostServices* host_ = nullptr;
  std::vector<int32_t> employee_ids_;
};

// A filter of "0" means none, like the empty string.
inline std::string NoZeroFilter(std::string filter) { return filter == "0" ? std::string() : filter; }

}  // namespace orv

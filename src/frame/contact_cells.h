// The contact texts several reports print alike: a phone number with its
// extension, and the seven-cell patient contact row of the patient lists.
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "common/common_functions.h"
#include "common/format.h"
#include "platform/db/recordset.h"

namespace orv {

// `number`, then `before`, `ext` and `after` when there is an extension:
// PhoneWithExt("555-0100", "12", " Ext: ") is "555-0100 Ext: 12". Nothing is
// added for an empty extension, so no brackets or label dangle.
std::string PhoneWithExt(const std::string& number, const std::string& ext,
                         const std::string& before, const std::string& after = "");

// The patient contact table: seven columns, the fourth holding the birth
// and the signup date on two lines.
inline constexpr const char* kPatientContactFormat =
    "<1.5in|<1.5in|<1.2in|<1in|<1.5in|<1.5in|<1.5in";
inline constexpr const char* kPatientContactHeader =
    "Patient Name|Address|Telephone #s|Birth Date\r\nSignup Date|Emergency Contact|Employer(s)|"
    "Insurance Carrier(s)";

// One row of the patient contact table, ";" included, every value escaped
// for the table language. The address, phones, dates and emergency contact
// are read from the patient row `rs` (fields Address, HomePhone, HomeExt,
// OtherPhone, OtherExt, BirthDate, SignupDate, EmergencyContact,
// EmergencyPhone); the name cell's lines and the two employer and two
// insurer names come from the caller, each as plain text.
std::string PatientContactRow(clsCommonFunctions& cf, const db::Recordset& rs,
                              const std::string& name_line, const std::string& second_name_line,
                              const std::string& employer1, const std::string& employer2,
                              const std::string& insurer1, const std::string& insurer2);

// The fields of a patient row that PatientContactRow reads, by name; a
// recordset opened for the row holds at least these (KeepFields).
inline constexpr const char* kPatientContactFieldNames[] = {
    "Address",   "HomePhone",  "HomeExt",          "OtherPhone",    "OtherExt",
    "BirthDate", "SignupDate", "EmergencyContact", "EmergencyPhone"};

// The fields of a patient row that PatientContactRow reads, looked up by
// name once: each reads the row the recordset is on, so a list of
// thousands of patients need not look nine names up again for each. The
// date format is read once with them.
struct PatientContactFields {
  explicit PatientContactFields(const db::Recordset& rs);
  db::Field address, home_phone, home_ext, other_phone, other_ext, birth_date, signup_date,
      emergency_contact, emergency_phone;
  DateFormatter dates{"mmm/dd/yyyy"};
};

// The seven cells of one row of the patient contact table, as texts (data,
// not a table string: nothing in them is escaped).
using PatientContactCells = std::array<std::string, 7>;

// The cells of the same row, read through fields looked up once, into
// `cells` (cleared first): a list of thousands of rows builds each in the
// same strings and hands them to the surface's AddTableRow.
void FillPatientContactCells(PatientContactCells& cells, const PatientContactFields& fields,
                             std::string_view name_line, std::string_view second_name_line,
                             std::string_view employer1, std::string_view employer2,
                             std::string_view insurer1, std::string_view insurer2);

}  // namespace orv

#include "frame/contact_cells.h"

#include "common/format.h"
#include "frame/surface/table_model.h"

namespace orv {

std::string PhoneWithExt(const std::string& number, const std::string& ext,
                         const std::string& before, const std::string& after) {
  return ext.empty() ? number : number + before + ext + after;
}

PatientContactFields::PatientContactFields(const db::Recordset& rs)
    : address(rs["Address"]),
      home_phone(rs["HomePhone"]),
      home_ext(rs["HomeExt"]),
      other_phone(rs["OtherPhone"]),
      other_ext(rs["OtherExt"]),
      birth_date(rs["BirthDate"]),
      signup_date(rs["SignupDate"]),
      emergency_contact(rs["EmergencyContact"]),
      emergency_phone(rs["EmergencyPhone"]) {}

std::string PatientContactRow(clsCommonFunctions& cf, const db::Recordset& rs,
                              const std::string& name_line, const std::string& second_name_line,
                              const std::string& employer1, const std::string& employer2,
                              const std::string& insurer1, const std::string& insurer2) {
  return PatientContactRow(cf, PatientContactFields(rs), name_line, second_name_line, employer1,
                           employer2, insurer1, insurer2);
}

std::string PatientContactRow(clsCommonFunctions& cf, const PatientContactFields& fields,
                              const std::string& name_line, const std::string& second_name_line,
                              const std::string& employer1, const std::string& employer2,
                              const std::string& insurer1, const std::string& insurer2) {
  auto str = [&](const db::Field& f) { return cf.returnStr(f.Value()); };
  // Two values on two lines of one cell: each escaped, the line break is
  // the row's own.
  auto two_lines = [](const std::string& a, const std::string& b) {
    return frame::EscapeCell(a) + "\r\n" + frame::EscapeCell(b);
  };
  auto phone = [&](const db::Field& number, const db::Field& ext) {
    return PhoneWithExt(str(number), str(ext), "[", "]");
  };
  std::string row = second_name_line.empty() ? frame::EscapeCell(name_line)
                                             : two_lines(name_line, second_name_line);
  row += "|" + frame::EscapeCell(str(fields.address));
  row += "|" + two_lines(phone(fields.home_phone, fields.home_ext),
                         phone(fields.other_phone, fields.other_ext));
  row += "|" + two_lines(Format(fields.birth_date.Value(), "mmm/dd/yyyy"),
                         Format(fields.signup_date.Value(), "mmm/dd/yyyy"));
  row += "|" + two_lines(str(fields.emergency_contact), str(fields.emergency_phone));
  row += "|" + two_lines(employer1, employer2);
  row += "|" + two_lines(insurer1, insurer2);
  return row + ";";
}

}  // namespace orv

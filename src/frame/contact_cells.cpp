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

std::string PatientContactRow(clsCommonFunctions&, const db::Recordset& rs, const std::string& name_line,
                              const std::string& second_name_line, const std::string& employer1,
                              const std::string& employer2, const std::string& insurer1,
                              const std::string& insurer2) {
  std::string row;
  AppendPatientContactRow(row, PatientContactFields(rs), name_line, second_name_line, employer1, employer2,
                          insurer1, insurer2);
  return row;
}

void AppendPatientContactRow(std::string& row, const PatientContactFields& fields,
                             std::string_view name_line, std::string_view second_name_line,
                             std::string_view employer1, std::string_view employer2,
                             std::string_view insurer1, std::string_view insurer2) {
  std::string scratch;
  auto text = [&](const db::Field& f) { frame::AppendEscapedCell(row, f.Text(scratch)); };
  // Two values on two lines of one cell: each escaped, the line break is
  // the row's own.
  auto two_lines = [&](std::string_view a, std::string_view b) {
    frame::AppendEscapedCell(row, a);
    row += "\r\n";
    frame::AppendEscapedCell(row, b);
  };
  // The number, then the extension in brackets when there is one.
  auto phone = [&](const db::Field& number, const db::Field& ext) {
    text(number);
    const std::string_view ext_text = ext.Text(scratch);
    if (ext_text.empty()) return;
    row += '[';
    frame::AppendEscapedCell(row, ext_text);
    row += ']';
  };
  auto date = [&](const db::Field& f) {
    scratch.clear();
    fields.dates.Append(f.Value(), scratch);
    frame::AppendEscapedCell(row, scratch);
  };
  if (second_name_line.empty())
    frame::AppendEscapedCell(row, name_line);
  else
    two_lines(name_line, second_name_line);
  row += '|';
  text(fields.address);
  row += '|';
  phone(fields.home_phone, fields.home_ext);
  row += "\r\n";
  phone(fields.other_phone, fields.other_ext);
  row += '|';
  date(fields.birth_date);
  row += "\r\n";
  date(fields.signup_date);
  row += '|';
  text(fields.emergency_contact);
  row += "\r\n";
  text(fields.emergency_phone);
  row += '|';
  two_lines(employer1, employer2);
  row += '|';
  two_lines(insurer1, insurer2);
  row += ';';
}

}  // namespace orv

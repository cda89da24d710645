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
  PatientContactCells cells;
  FillPatientContactCells(cells, PatientContactFields(rs), name_line, second_name_line, employer1, employer2,
                          insurer1, insurer2);
  std::string row;
  for (const std::string& cell : cells) {
    frame::AppendEscapedCell(row, cell);
    row += '|';
  }
  row.back() = ';';
  return row;
}

void FillPatientContactCells(PatientContactCells& cells, const PatientContactFields& fields,
                             std::string_view name_line, std::string_view second_name_line,
                             std::string_view employer1, std::string_view employer2,
                             std::string_view insurer1, std::string_view insurer2) {
  for (std::string& cell : cells) cell.clear();
  std::string scratch;
  // Two values on two lines of one cell.
  auto two_lines = [](std::string& cell, std::string_view a, std::string_view b) {
    cell += a;
    cell += "\r\n";
    cell += b;
  };
  // The number, then the extension in brackets when there is one.
  auto phone = [&](std::string& cell, const db::Field& number, const db::Field& ext) {
    cell += number.Text(scratch);
    const std::string_view ext_text = ext.Text(scratch);
    if (ext_text.empty()) return;
    cell += '[';
    cell += ext_text;
    cell += ']';
  };
  auto& [name, address, phones, dates, emergency, employers, insurers] = cells;
  name += name_line;
  if (!second_name_line.empty()) {
    name += "\r\n";
    name += second_name_line;
  }
  address += fields.address.Text(scratch);
  phone(phones, fields.home_phone, fields.home_ext);
  phones += "\r\n";
  phone(phones, fields.other_phone, fields.other_ext);
  fields.dates.Append(fields.birth_date.Value(), dates);
  dates += "\r\n";
  fields.dates.Append(fields.signup_date.Value(), dates);
  emergency += fields.emergency_contact.Text(scratch);
  emergency += "\r\n";
  emergency += fields.emergency_phone.Text(scratch);
  two_lines(employers, employer1, employer2);
  two_lines(insurers, insurer1, insurer2);
}

}  // namespace orv

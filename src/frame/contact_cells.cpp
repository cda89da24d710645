#include "frame/contact_cells.h"

#include "common/format.h"
#include "frame/surface/table_model.h"

namespace orv {

std::string PhoneWithExt(const std::string& number, const std::string& ext,
                         const std::string& before, const std::string& after) {
  return ext.empty() ? number : number + before + ext + after;
}

std::string PatientContactRow(clsCommonFunctions& cf, const db::Recordset& rs,
                              const std::string& name_line, const std::string& second_name_line,
                              const std::string& employer1, const std::string& employer2,
                              const std::string& insurer1, const std::string& insurer2) {
  auto str = [&](const char* f) { return cf.returnStr(rs[f].Value()); };
  // Two values on two lines of one cell: each escaped, the line break is
  // the row's own.
  auto two_lines = [](const std::string& a, const std::string& b) {
    return frame::EscapeCell(a) + "\r\n" + frame::EscapeCell(b);
  };
  auto phone = [&](const char* number, const char* ext) {
    return PhoneWithExt(str(number), str(ext), "[", "]");
  };
  std::string row = second_name_line.empty() ? frame::EscapeCell(name_line)
                                             : two_lines(name_line, second_name_line);
  row += "|" + frame::EscapeCell(str("Address"));
  row += "|" + two_lines(phone("HomePhone", "HomeExt"), phone("OtherPhone", "OtherExt"));
  row += "|" + two_lines(Format(rs["BirthDate"].Value(), "mmm/dd/yyyy"),
                         Format(rs["SignupDate"].Value(), "mmm/dd/yyyy"));
  row += "|" + two_lines(str("EmergencyContact"), str("EmergencyPhone"));
  row += "|" + two_lines(employer1, employer2);
  row += "|" + two_lines(insurer1, insurer2);
  return row + ";";
}

}  // namespace orv

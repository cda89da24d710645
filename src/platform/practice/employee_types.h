// The kinds of employee by Employees.TypeID, as the practice's setup
// screens store them. The demo practice writes these values and the reports
// that pick a layout or a query by kind read them, so both keep to this one
// table.
#pragma once

#include <cstdint>

namespace orv::practice {

enum EmployeeType : int32_t {
  kTypeNone = 0,           // the "(None)" placeholder row
  kTypeDentist = 3,        // the practice's own dentist
  kTypeOfficeManager = 4,  // signs the letters
  kTypeHygienist = 5,
  kTypeAssistant = 6,      // chairside assistant (PDA)
  kTypeFrontDesk = 7,
  kTypeAssociate = 8,      // associate dentist
  kTypeDentistOther = 10,  // a dentist under another title
  kTypeSpecialist = 12,    // visiting specialists: 12 and every type above
};

// The monitor's four kinds of employee.
enum class MonitorKind { kHygienist, kAssistant, kDentist, kSpecialist };

// Hygienists and assistants by their type; 12 and above are specialists;
// every other type (dentists, and staff who are neither) reads as a dentist,
// whose summary carries pay, hours and cost without the hygiene counts.
inline MonitorKind MonitorKindOf(int32_t type) {
  if (type == kTypeHygienist) return MonitorKind::kHygienist;
  if (type == kTypeAssistant) return MonitorKind::kAssistant;
  if (type >= kTypeSpecialist) return MonitorKind::kSpecialist;
  return MonitorKind::kDentist;
}

}  // namespace orv::practice

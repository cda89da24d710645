// The one balance routine the host can call directly.
#include "accounts/account_model.h"
#include "frame/reports.h"

namespace orv {

Currency clsReports::ReturnFamilyCredit(int32_t& PatientID, bool IncludePostDates) {
  return AccountModel(conn(), InterestRate).ReturnFamilyCredit(PatientID, IncludePostDates);
}

}  // namespace orv

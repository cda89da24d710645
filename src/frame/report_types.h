// Public enumerations and records of the report component, with the values
// and field order the host relies on.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "common/currency.h"

namespace orv {

enum RescheduleTypes : int {
  NoShow = 1,
  ShortNotice = 2,
  Office = 3,
  All = 4,
  NoShowAndShortNotice = 5,
};

enum iPosition : int { rptTop = 1, rptBottom = 2, rptMiddle = 3, rptTwo = 4 };

enum AddressParts : int { Street1 = 0, Street2 = 1, City = 2, Prov = 3, Postal = 4 };

struct ProducerData {
  int32_t ProducerID = 0;
  std::string ProducerName;
  Currency TotalProduction;
  Currency TotalLab;
};

struct RepEmpData {
  bool isUsed = false;
  int32_t TypeID = 0;
  int32_t EmployeeID = 0;
  std::string EmpName;
  Currency DocFee, LabFee, IntFee, TotalFees, Adjustments, CurFee, RegPayment, LabPayment,
      PayAdjustments;
  std::vector<ProducerData> ProducerList;
  bool ProducerIncome = false;
};

struct ReferralInfo {
  std::string FName, LName;
  int32_t ID = 0;
  double Val1 = 0, Val2 = 0, Val3 = 0;
};

}  // namespace orv

Select * from EmployeeSpecialDays where StartDate <= '2026-11-20' and EndDate >='2026-11-20' and EmployeeID = 7

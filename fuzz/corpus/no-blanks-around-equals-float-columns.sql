SELECT * FROM ReferralAlerts WHERE EmployeeID=2

SELECT COUNT(ID) as Count, EmployeeID FROM EmployeeCodeSplit group by EmployeeID

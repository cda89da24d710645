SELECT ID, LastName + ', ' + FirstName AS PatientName FROM Patient ORDER BY LastName, FirstName

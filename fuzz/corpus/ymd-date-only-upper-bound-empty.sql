Select ID, InvoiceTotal, PatientTotal, IsAssignment from Invoices WHERE [Complete?] <> 0 AND NOT InvoiceTotal IS NULL and [Date] <= '2026-11-19' AND PatientID = 4 ORDER BY ID

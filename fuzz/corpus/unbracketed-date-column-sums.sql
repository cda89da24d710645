Select SUM([Units]) as theCount, SUM([Estimate]) as Estimate from PatientAppointments where Date >= '2026-11-01' AND Date <= '2026-11-30'

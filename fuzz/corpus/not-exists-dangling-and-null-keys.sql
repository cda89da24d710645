SELECT DISTINCT ReferringDentistID From Patient WHERE (NOT EXISTS (SELECT 1 From ReferringDentists WHERE ReferringDentists.ID = Patient.ReferringDentistID))

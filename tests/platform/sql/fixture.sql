-- The practice database the T-SQL layer's tests run on: the tables and rows
-- that the statements of tests/platform/sql read, with the declared types of
-- the practice database (INTEGER keys, links and flags; MONEY with four
-- decimals; DATETIME as 'YYYY-MM-DD HH:MM:SS' text; VARCHAR(n)/CHAR(n) text;
-- TEXT; BLOB; FLOAT), names with their odd characters ([Complete?],
-- [Invoice#], [Check#]) as the reports write them.
--
-- "Today" for every test is 2026-11-20 (GETDATE() = 2026-11-20 10:00:00);
-- no value compared with GETDATE() lies on that day after midnight.
--
-- The expected rows in the tests were worked out from these rows: a change
-- here changes what they expect.

PRAGMA foreign_keys = OFF;

CREATE TABLE Employees (
  ID INTEGER PRIMARY KEY,
  LastName VARCHAR(30), FirstName VARCHAR(30), FullName VARCHAR(60),
  [Professional Title] VARCHAR(20), TypeID INTEGER, ChairID VARCHAR(10), Symbol VARCHAR(5),
  [CDA#] VARCHAR(10), [Reg#] VARCHAR(10), UserName VARCHAR(20), Active INTEGER,
  Commission INTEGER, PayRate MONEY
);
INSERT INTO Employees VALUES
 (1, 'None',      '(None)', '(None)',          NULL,  0,  NULL,  NULL, NULL,     NULL,    NULL,    1,    NULL, NULL),
 (2, 'Whitfield', 'Dana',   'Dana Whitfield',  'Dr.', 3,  'Op1', 'DW', '112233', 'R-501', 'dana',  1,    NULL, NULL),
 (3, 'Okafor',    'Lena',   'Lena Okafor',     'RDH', 5,  'Op3', 'LO', NULL,     'H-77',  'lena',  NULL, NULL, 28.5),
 (4, 'Brandt',    'Felix',  'Felix Brandt',    'Dr.', 12, NULL,  'FB', '445566', 'R-612', 'felix', -1,   40,   NULL),
 (5, 'Arsenault', 'Marie',  'Marie Arsenault', NULL,  4,  NULL,  'MA', NULL,     NULL,    'marie', 1,    NULL, NULL),
 (6, 'Quinlan',   'Rory',   'Rory Quinlan',    'Dr.', 8,  NULL,  'RQ', '778899', 'R-733', 'rory',  0,    NULL, NULL),
 (7, 'Yee',       'Tom',    'Tom Yee',         'RDH', 5,  'Op2', 'TY', NULL,     'H-80',  'tom',   1,    NULL, 31);

CREATE TABLE EmployeeHolidays (
  EmployeeID INTEGER, FromDate DATETIME, ToDate DATETIME, FromTime INTEGER, ToTime INTEGER
);
INSERT INTO EmployeeHolidays VALUES
 (2, '2026-11-20 00:00:00', '2026-11-20 00:00:00', NULL, NULL),
 (3, '2026-11-16 00:00:00', '2026-11-27 00:00:00', 720, 1020),
 (3, '2026-11-20 00:00:00', '2026-11-21 00:00:00', NULL, NULL),
 (4, '2026-11-19 00:00:00', '2026-11-19 00:00:00', NULL, NULL);

CREATE TABLE ReferringDentists (
  ID INTEGER PRIMARY KEY, Title VARCHAR(10), Name VARCHAR(30), LastName VARCHAR(30),
  Phone VARCHAR(10), Street VARCHAR(60), Street2 VARCHAR(60), City VARCHAR(40),
  Prov VARCHAR(2), Postal VARCHAR(7)
);
INSERT INTO ReferringDentists VALUES
 (1, 'Dr.', 'Amara',        'Osei',              '6135557001', '10 Bank St', NULL, 'Ottawa', 'ON', 'K1P 1A1'),
 (2, 'Dr.', 'Victor',       'Lindqvist',         '6135557002', '22 Main St', 'Unit 4', 'Nepean', 'ON', 'K2G 3B3'),
 (3, NULL,  'Deleted',      'referring dentist', NULL,         NULL, NULL, NULL, NULL, NULL),
 (4, NULL,  'No Referring', 'Dentist',           NULL,         NULL, NULL, NULL, NULL, NULL),
 (5, 'Dr.', 'Helene',       'Roy',               '6135557005', '7 Elgin St', NULL, 'Ottawa', 'ON', 'K1P 5W1');

CREATE TABLE ReferralAlerts (
  EmployeeID INTEGER, AtLeast INTEGER, InLast FLOAT, AverageOver FLOAT, AlertWhen FLOAT
);
INSERT INTO ReferralAlerts VALUES (2, 1, 30, 90, 50), (4, 2, 45, 0, 25);

CREATE TABLE Patientcategories (ID INTEGER PRIMARY KEY, Name VARCHAR(30));
INSERT INTO Patientcategories VALUES (1, 'Adult'), (2, 'Child');

CREATE TABLE ListAlerts (ID INTEGER PRIMARY KEY, Name VARCHAR(40));
INSERT INTO ListAlerts VALUES (1, 'Latex allergy'), (2, 'Anxious patient'), (3, 'Hard of hearing');

CREATE TABLE PatientAlerts (PatientID INTEGER, AlertID INTEGER);
INSERT INTO PatientAlerts VALUES (1, 1), (1, 2), (4, 2), (6, 3);

CREATE TABLE Patient (
  ID INTEGER PRIMARY KEY,
  LastName VARCHAR(30), FirstName VARCHAR(30), Title VARCHAR(10), PreferredName VARCHAR(10),
  FullName VARCHAR(60), Sex VARCHAR(6), BirthDate DATETIME, SignupDate DATETIME,
  Address VARCHAR(200), [Active?] INTEGER, InactivationDate DATETIME, ManualChartNumber VARCHAR(10),
  LastStatement DATETIME, Interest INTEGER, AccountholderOnly INTEGER,
  HomePhone VARCHAR(10), OtherPhone VARCHAR(10), OtherExt VARCHAR(5),
  MedicalAlert VARCHAR(100), PremedType VARCHAR(30),
  ResponsibleFamilyMemberID INTEGER, PrimaryHolderID INTEGER, SecondaryHolderID INTEGER,
  DoctorID INTEGER, ReferringDentistID INTEGER, RefferedBy VARCHAR(40), ReferalReason VARCHAR(60),
  ReferredByAddID VARCHAR(20), categoryID INTEGER,
  EmployerID INTEGER, SecondaryEmployerID INTEGER, InsuranceID INTEGER, SecondaryInsuranceID INTEGER,
  [Policy#] VARCHAR(15), [Division#] VARCHAR(10), [SubscriberID#] VARCHAR(15)
);
-- Patient 8 has a NULL FullName; patient 6 has a NULL Title, a dangling DoctorID (99)
-- and a dangling ReferringDentistID (7); patient 5's FirstName is longer than
-- PreferredName's declared length; PremedType holds NULL, '', ' ' and a text.
INSERT INTO Patient VALUES
 (1, 'Tremblay', 'Claire', 'Mrs.', NULL, 'Claire Tremblay', 'Female', '1980-03-14 00:00:00', '2026-09-14 16:00:00',
  '12 Elm St, Ottawa ON K1A 0B1', 1, NULL, 'T-100', '2026-10-31 00:00:00', 1, 0,
  '6135550101', '6135550199', '22', 'Latex allergy', NULL,
  1, 1, NULL, 2, 1, 'Website', 'Cleaning', 'Internet', 1,
  1, NULL, 1, NULL, 'POL-1', 'D1', 'S-111'),
 (2, 'Tremblay', 'Luc', 'Mr.', 'Lucky', 'Luc Tremblay', 'Male', '1978-07-02 00:00:00', '2026-10-28 11:45:00',
  '12 Elm St, Ottawa ON K1A 0B1', 1, NULL, '', NULL, 0, 0,
  '6135550101', NULL, NULL, '', 'Amoxicillin 2g',
  1, 1, 2, 2, 1, '0', NULL, 'Internet', 1,
  1, 2, 1, 2, 'POL-1', 'D1', 'S-112'),
 (3, 'Tremblay', 'Emma', 'Miss', NULL, 'Emma Tremblay', 'Female', '2015-05-20 00:00:00', '2026-11-02 09:00:00',
  '12 Elm St, Ottawa ON K1A 0B1', 1, NULL, 'T-102', NULL, 0, 0,
  '6135550101', NULL, NULL, NULL, ' ',
  1, 1, 2, 3, 1, 'Sibling', NULL, '', 2,
  NULL, NULL, NULL, NULL, NULL, NULL, NULL),
 (4, 'Nakamura', 'Kenji', 'Mr.', NULL, 'Kenji Nakamura', 'Male', '1965-01-30 00:00:00', '2026-10-25 14:15:00',
  '88 Bank St, Ottawa ON K1P 5N2', 1, NULL, 'N-400', NULL, 1, 0,
  '6135550404', '6135550444', NULL, NULL, NULL,
  4, 4, NULL, 4, 2, 'Dr. Lindqvist', 'Implant consult', 'Dentist', 1,
  2, NULL, 2, NULL, 'POL-2', NULL, 'S-400'),
 (5, 'Beaulieu', 'Maximilienne', 'Ms.', NULL, 'Maximilienne Beaulieu', 'Female', '1990-12-01 00:00:00', '2026-06-10 10:00:00',
  '5 Rue Main, Gatineau QC J8X 1A1', 0, '2026-11-05 16:20:00', NULL, NULL, 0, 0,
  '8195550505', NULL, NULL, NULL, NULL,
  5, 5, NULL, NULL, 2, 'Friend', NULL, 'Patient', NULL,
  NULL, NULL, NULL, NULL, NULL, NULL, NULL),
 (6, 'O''Brien', 'Seamus', NULL, NULL, 'Seamus O''Brien', 'Male', '1955-08-08 00:00:00', '2026-11-10 08:30:00',
  '40 Wellington St, Ottawa ON K1P 5A1', 1, NULL, 'O-600', NULL, 0, 0,
  '6135550606', NULL, NULL, 'Pacemaker', 'Cephalexin',
  6, NULL, NULL, 99, 7, 'Walk-in', 'Toothache', 'Internet', 1,
  3, NULL, 3, NULL, 'POL-3', NULL, 'S-600'),
 (7, 'Singh', 'Priya', 'Dr.', 'Pree', 'Priya Singh', 'Female', '1988-04-04 00:00:00', '2026-10-05 13:00:00',
  '9 Laurier Ave, Ottawa ON K1N 6N5', 1, NULL, 'S-700', NULL, 0, 1,
  '6135550707', NULL, NULL, NULL, NULL,
  7, 7, NULL, 4, 2, 'Dr. Lindqvist', 'Second opinion', 'Dentist', 1,
  2, 1, 2, 1, 'POL-2', NULL, 'S-700'),
 (8, 'Lopez', 'Ana', 'Ms.', NULL, NULL, 'Female', '2001-09-09 00:00:00', '2025-11-20 12:00:00',
  '3 Kent St, Ottawa ON K1R 1A1', -1, NULL, NULL, NULL, 0, 0,
  '6135550808', NULL, NULL, NULL, NULL,
  8, NULL, NULL, NULL, NULL, '0', NULL, NULL, NULL,
  NULL, NULL, NULL, NULL, NULL, NULL, NULL),
 (9, 'Dubois', 'Marc', 'Mr.', NULL, 'Marc Dubois', 'Male', '1972-02-29 00:00:00', '2026-11-20 00:00:00',
  '77 Sparks St, Ottawa ON K1P 5B5', 1, NULL, 'D-900', NULL, 0, 0,
  '6135550909', NULL, NULL, NULL, NULL,
  9, 9, NULL, NULL, 1, 'Dr. Osei', 'Ortho', 'Dentist', 1,
  NULL, NULL, NULL, NULL, NULL, NULL, NULL);

CREATE TABLE PatientAppointments (
  ID INTEGER PRIMARY KEY, PatientID INTEGER, ProviderID INTEGER, EmployeeID INTEGER, ProcedureCat INTEGER,
  [Date] DATETIME, [Time] INTEGER, Units INTEGER, Estimate MONEY,
  Confirmed INTEGER, Complete INTEGER, Reason VARCHAR(60)
);
INSERT INTO PatientAppointments VALUES
 (1,  1, 2, 5,    1, '2026-09-15 00:00:00', 600, 4, 250,    1,    1,    'New patient exam'),
 (2,  2, 3, 5,    2, '2026-11-03 00:00:00', 840, 3, 180.5,  -1,   1,    NULL),
 (3,  3, 3, 5,    2, '2026-11-20 00:00:00', 540, 2, NULL,   0,    NULL, 'Cleaning'),
 (4,  1, 2, 7,    1, '2026-11-20 00:00:00', 615, 2, 95,     1,    0,    NULL),
 (5,  2, 2, NULL, 3, '2026-12-04 00:00:00', 780, 6, 600,    0,    NULL, 'Crown prep'),
 (6,  4, 4, 5,    1, '2026-10-26 00:00:00', 900, 4, 300,    1,    1,    NULL),
 (7,  3, 3, 5,    2, '2026-12-18 00:00:00', 555, 2, 130,    0,    NULL, NULL),
 (8,  6, 2, 5,    1, '2026-11-10 00:00:00', 510, 3, 0,      1,    1,    'Emergency'),
 (9,  7, 4, 7,    1, '2026-10-06 00:00:00', 720, 2, 90,     1,    1,    NULL),
 (10, 2, 2, 5,    2, '2026-11-20 00:00:00', 660, 1, 45,     NULL, NULL, 'Follow-up'),
 (11, 5, 3, 5,    2, '2026-11-13 00:00:00', 570, 2, 130,    1,    1,    NULL);

CREATE TABLE FeeCodes (
  ID VARCHAR(6) PRIMARY KEY, Description VARCHAR(100), LayPersonDescription VARCHAR(120), Type INTEGER
);
INSERT INTO FeeCodes VALUES
 ('01101',  'Examination, complete, primary dentition',   'Complete exam', 1),
 ('01102',  'Examination, complete, mixed dentition',     NULL, 1),
 ('01103',  'Examination, complete, permanent dentition',
            'Full check-up of teeth, gums, bite and the soft tissues of the mouth and neck', 1),
 ('02102',  'Radiographs, periapical, two films',         'X-rays (2)', 1),
 ('11101',  'Scaling, one unit',                          'Cleaning', 2),
 ('21211',  'Amalgam, one surface, permanent',            'Silver filling', 3),
 ('27201',  'Crown, porcelain fused to metal',            'Crown', 6),
 ('99111',  'Laboratory fee',                             'Lab fee', 9),
 ('-00100', 'Reversal of examination',                    NULL, 0),
 ('-99111', 'Laboratory fee reversal',                    NULL, 9);

CREATE TABLE FeeGuides (ID INTEGER PRIMARY KEY, Name VARCHAR(60));
INSERT INTO FeeGuides VALUES (1, 'ODA 2026 General'), (2, 'Specialist 2026');

CREATE TABLE FeeGuideDetails (FeeGuideID INTEGER, FeeCodeID VARCHAR(6), Amount MONEY);
INSERT INTO FeeGuideDetails VALUES
 (1, '11101', 61.2), (1, '01101', 75), (1, '02102', 45.35), (1, '99111', 0),
 (2, '01103', 120), (2, '27201', 1180.75);

CREATE TABLE Reasons (ID INTEGER PRIMARY KEY, Name VARCHAR(40));
INSERT INTO Reasons VALUES (1, 'Decay'), (2, 'Fracture');

CREATE TABLE Invoices (
  ID INTEGER PRIMARY KEY, [Invoice#] INTEGER, PatientID INTEGER, ProviderID INTEGER, OverseerID INTEGER,
  DoctorID INTEGER, AppointmentID INTEGER, [Date] DATETIME, [Time] INTEGER, EntryDate DATETIME,
  FinalDate DATETIME, [Complete?] INTEGER, Cancelled INTEGER, CancellationDate DATETIME,
  InvoiceTotal MONEY, InvoiceFinalTotal MONEY, PatientTotal MONEY, IsAssignment INTEGER,
  InterestInvoiceID INTEGER, ChargeInterest INTEGER, InsuranceNotes VARCHAR(200), notes VARCHAR(200)
);
-- [Complete?] holds 1, -1, 0 and NULL; Cancelled holds NULL, 1 and 0.
INSERT INTO Invoices VALUES
 (1, 1001, 1, 2, 2, 2, 1,    '2026-09-15 10:00:00', 600,  '2026-09-15 10:30:00', '2026-10-01 00:00:00', 1,    NULL, NULL,
  250, 250, 50, 1, NULL, 0, NULL, NULL),
 (2, 1002, 2, 3, 2, 2, 2,    '2026-11-03 14:00:00', 840,  '2026-11-03 14:20:00', NULL, -1, NULL, NULL,
  180.5, NULL, NULL, 0, NULL, 0, NULL, 'Filling to finish'),
 (3, 1003, 4, 4, 4, 4, 6,    '2026-11-19 16:45:00', 1005, '2026-11-19 17:00:00', NULL, 1,    NULL, NULL,
  1090, NULL, 400, 1, NULL, 1, 'Lab case 7781', NULL),
 (4, 1004, 1, 2, 2, 2, 4,    '2026-11-20 09:15:00', 555,  '2026-11-20 09:30:00', NULL, 0,    NULL, NULL,
  95, NULL, NULL, 0, NULL, 0, NULL, NULL),
 (5, 1005, 6, 2, 2, 99, 8,   '2026-10-10 11:00:00', 660,  '2026-10-10 11:10:00', NULL, 1,    1,    '2026-11-12 15:00:00',
  300, NULL, NULL, 0, NULL, 0, NULL, 'Entered on wrong patient'),
 (6, 1006, 5, 3, 2, NULL, NULL, '2026-08-01 09:00:00', 540, '2026-08-01 09:05:00', '2026-08-15 00:00:00', 1, 0, NULL,
  120, 120, NULL, 0, NULL, 0, NULL, NULL),
 (7, 1007, 4, 4, 4, 4, NULL, '2026-11-30 00:00:00', 0,    '2026-11-19 17:05:00', NULL, 1,    NULL, NULL,
  12.5, NULL, NULL, 0, 3, 0, NULL, 'Interest'),
 (8, 1008, 7, 4, 4, 4, 9,    '2026-10-06 12:00:00', 720,  '2026-10-06 12:30:00', NULL, NULL, NULL, NULL,
  90, NULL, NULL, 0, NULL, 0, NULL, NULL),
 (9, 1009, 6, 3, NULL, 99, NULL, '2026-11-16 10:00:00', 600, '2026-11-16 10:05:00', NULL, 0, NULL, NULL,
  45, NULL, NULL, 0, NULL, 0, NULL, NULL);

CREATE TABLE InvoiceDetails (
  ID INTEGER PRIMARY KEY, InvoiceID INTEGER, Code VARCHAR(6), [Tooth#] VARCHAR(3), Surface VARCHAR(5),
  Cost MONEY, PatientCost MONEY, PrimaryInsCost MONEY, SecondaryInsCost MONEY, TertiaryInsCost MONEY,
  Discount MONEY, Status VARCHAR(12), [Date] DATETIME, EntryDate DATETIME, ProviderID INTEGER, EmployeeID INTEGER
);
-- Every Code is a digit string with an optional leading '-' (reversals).
INSERT INTO InvoiceDetails VALUES
 (1,  1, '01101',  NULL, NULL,  75,   15,   60,   NULL, NULL, NULL, 'Complete',    '2026-09-15 10:00:00', '2026-09-15 00:00:00', 2, 5),
 (2,  1, '02102',  NULL, NULL,  45,   9,    36,   NULL, NULL, NULL, 'Complete',    '2026-09-15 10:00:00', '2026-09-15 00:00:00', 2, 5),
 (3,  1, '11101',  NULL, NULL,  130,  26,   104,  NULL, NULL, NULL, 'Complete',    '2026-09-15 10:00:00', '2026-09-15 00:00:00', 3, 5),
 (4,  2, '01102',  NULL, NULL,  60.5, NULL, NULL, NULL, NULL, NULL, 'Complete',    '2026-11-03 14:00:00', '2026-11-03 00:00:00', 3, 7),
 (5,  2, '21211',  '36', 'O',   120,  120,  0,    NULL, NULL, 5,    'In Progress', '2026-11-03 14:00:00', '2026-11-03 00:00:00', 2, 7),
 (6,  3, '01103',  NULL, NULL,  90,   30,   60,   0,    NULL, NULL, 'Complete',    '2026-11-19 16:45:00', '2026-11-19 00:00:00', 4, 5),
 (7,  3, '99111',  NULL, NULL,  1110, 370,  740,  NULL, NULL, NULL, 'Complete',    '2026-11-19 16:45:00', '2026-11-19 00:00:00', 4, 5),
 (8,  3, '-99111', NULL, NULL,  -110, NULL, NULL, NULL, NULL, NULL, 'Complete',    '2026-11-19 16:45:00', '2026-11-19 17:00:00', 4, 5),
 (9,  4, '11101',  NULL, NULL,  95,   NULL, NULL, NULL, NULL, NULL, 'In Progress', '2026-11-20 09:15:00', '2026-11-20 00:00:00', 3, 7),
 (10, 5, '21211',  '46', 'MO',  300,  300,  0,    NULL, NULL, NULL, 'Complete',    '2026-10-10 11:00:00', '2026-10-10 00:00:00', 2, 5),
 (11, 6, '01101',  NULL, NULL,  120,  120,  0,    NULL, NULL, NULL, 'Complete',    '2026-08-01 09:00:00', '2026-08-01 00:00:00', 3, 5),
 (12, 8, '01101',  NULL, NULL,  90,   90,   NULL, NULL, NULL, NULL, 'Complete',    '2026-10-06 12:00:00', '2026-10-06 00:00:00', 4, 7),
 (13, 8, '-00100', NULL, NULL,  0,    NULL, NULL, NULL, NULL, NULL, 'Complete',    '2026-10-06 12:00:00', '2026-10-06 00:00:00', 4, 7),
 (14, 7, '99111',  NULL, NULL,  12.5, 12.5, NULL, NULL, NULL, NULL, 'Complete',    NULL,                  '2026-11-19 00:00:00', 4, 5);

CREATE TABLE InvoicePayments (
  ID INTEGER PRIMARY KEY, PatientID INTEGER, PaymentTypeID INTEGER, AccountID INTEGER, EmployeeID INTEGER,
  InsuranceID INTEGER, InitialProviderID INTEGER, PaymentName VARCHAR(60), Value MONEY, TotalAllocated MONEY,
  TotalToCredit MONEY, Notes VARCHAR(100), [Date] DATETIME, CheckDate DATETIME, [Check#] VARCHAR(10),
  IsInsurance INTEGER, Cancelled INTEGER, CancellationDate DATETIME
);
-- [Check#] is the text '0' for none; IsInsurance holds 1, 0 and NULL.
INSERT INTO InvoicePayments VALUES
 (1,  1, 2, 1,    5, NULL, 2, 'Claire Tremblay',            50,   50,   0,    'Co-pay',       '2026-09-15 11:00:00', '2026-09-15 00:00:00', '1042', 0,    NULL, NULL),
 (2,  1, 4, 1,    5, 1,    2, 'Maple Life-Claire Tremblay', 200,  200,  0,    NULL,           '2026-10-01 09:00:00', '2026-10-01 00:00:00', '0',    1,    NULL, NULL),
 (3,  2, 1, 1,    5, NULL, 3, 'Luc Tremblay',               100,  40,   60,   'Partial',      '2026-11-03 00:00:00', '2026-11-03 00:00:00', '0',    NULL, NULL, NULL),
 (4,  4, 3, 2,    5, NULL, 4, 'Kenji Nakamura',             400,  400,  0,    NULL,           '2026-11-19 17:30:00', '2026-11-19 00:00:00', '0',    0,    NULL, NULL),
 (5,  4, 2, 1,    5, NULL, 4, 'Kenji Nakamura',             250,  0,    250,  'Post-dated',   '2026-11-19 17:35:00', '2026-11-25 00:00:00', '2001', 0,    NULL, NULL),
 (6,  6, 2, 1,    5, NULL, 2, 'Seamus O''Brien',            300,  300,  0,    NULL,           '2026-10-10 11:30:00', '2026-10-10 00:00:00', '0877', 0,    1,    '2026-11-12 15:10:00'),
 (7,  5, 5, NULL, 5, NULL, 3, 'Office',                     20,   20,   0,    'Courtesy w/o', '2026-08-15 00:00:00', '2026-08-15 00:00:00', '0',    NULL, NULL, NULL),
 (8,  2, 6, NULL, 5, NULL, 3, 'Office',                     15,   0,    15,   NULL,           '2026-11-05 00:00:00', '2026-11-05 00:00:00', '0',    0,    NULL, NULL),
 (9,  5, 1, 1,    5, NULL, 3, 'Maximilienne Beaulieu',      100,  100,  0,    NULL,           '2026-08-15 09:00:00', '2026-08-15 00:00:00', '0',    0,    NULL, NULL),
 (10, 7, 1, 1,    5, NULL, 4, 'Priya Singh',                80,   0,    80,   NULL,           '2026-11-12 00:00:00', '2026-11-12 00:00:00', '0',    0,    1,    '2026-11-14 10:00:00'),
 (11, 3, 2, 1,    5, NULL, 3, 'Luc Tremblay',               35,   0,    35,   'Bounced',      '2026-11-16 00:00:00', '2026-11-16 00:00:00', '3310', 0,    1,    '2026-11-16 00:00:00'),
 (12, 1, 7, 1,    5, NULL, 2, 'Claire Tremblay',            -50,  -50,  0,    'NSF 1042',     '2026-11-18 00:00:00', '2026-11-18 00:00:00', '1042', 0,    NULL, NULL);

CREATE TABLE InvoicePaymentDetails (
  ID INTEGER PRIMARY KEY, InvoicePaymentID INTEGER, InvoiceID INTEGER, Amount MONEY, [Date] DATETIME
);
INSERT INTO InvoicePaymentDetails VALUES
 (1, 1, 1, 50,   '2026-09-15 00:00:00'),
 (2, 2, 1, 200,  '2026-10-01 00:00:00'),
 (3, 3, 2, 40,   '2026-11-03 00:00:00'),
 (4, 4, 3, 400,  '2026-11-19 00:00:00'),
 (5, 6, 5, 300,  '2026-10-10 00:00:00'),
 (6, 7, 6, 20,   '2026-08-15 00:00:00'),
 (7, 9, 6, 100,  '2026-08-15 00:00:00'),
 (8, 3, 8, NULL, NULL),
 (9, 12, 1, -50, '2026-11-18 00:00:00');

CREATE TABLE PatientPrescriptions (ID INTEGER PRIMARY KEY, PatientID INTEGER, EmployeeID INTEGER, [Date] DATETIME);
INSERT INTO PatientPrescriptions VALUES (1, 4, 4, '2026-11-19 00:00:00'), (2, 8, NULL, '2026-11-02 00:00:00');

CREATE TABLE Memos (
  ID INTEGER PRIMARY KEY, EmployeeID INTEGER, DestinationID INTEGER, DueDate DATETIME, Importance INTEGER, Message VARCHAR(200)
);
INSERT INTO Memos VALUES
 (1, 5, 0, '2026-11-18 00:00:00', 1, 'Staff meeting Friday'),
 (2, 2, 0, '2026-11-20 00:00:00', 2, NULL),
 (3, 5, 3, '2026-11-19 00:00:00', 0, 'Order gloves'),
 (4, 5, 3, '2026-11-15 00:00:00', 0, NULL),
 (5, 2, 3, '2026-11-25 00:00:00', 1, 'Future memo'),
 (6, 3, 2, '2026-11-10 00:00:00', 1, 'For Dana');

CREATE TABLE OfficeHygieneCompanyCodes (OfficeID INTEGER, Startcode VARCHAR(6), EndCode VARCHAR(6));
INSERT INTO OfficeHygieneCompanyCodes VALUES (1, '11000', '11999'), (1, '13000', '13999');

-- A PNG's signature and the start of its first chunk: 16 bytes, the ninth a
-- zero; a caption with an accent and trailing blanks.
CREATE TABLE Pictures (ID INTEGER PRIMARY KEY, Logo BLOB, Caption VARCHAR(20));
INSERT INTO Pictures VALUES (1, X'89504E470D0A1A0A0000000D49484452', 'Élise  '), (2, NULL, '');

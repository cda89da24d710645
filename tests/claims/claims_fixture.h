// Hand-made claims on top of the demo practice (IDs from 95001, clear of
// the demo's), and readers of a printed form's display list.
//
// Dentists: 95001 Dr. Ada Moreau, CDA# 123456, BPN 77 with insurer 95001;
//           95002 Dr. Paul Girard (overseer), CDA# 654321, no BPN.
// Insurers: 95001 "North; Shore Life" (the ";" is data), 95002 "Second Life".
// Employers: 95001 Acme (insurer 95001, Policy# P-1, no division),
//            95002 Beta (insurer 95002), 95003 Gamma (no insurer).
// Patients: 95001 Lea Moreau, employers 95001 and 95002, holders 95001 and
//           95002, student at "Lycee Nord"; 95002 Marc Moreau, her second
//           holder; 95003 Tom Blanc, no employer; 95004 Ina Roy, employer
//           95003 without insurer; 95005 Eve Roy, assigned, office 2.
// Invoices (patient, stored total, lines):
//   95101 Lea, 999.99, IsAssignment -1: 100.00 "01202", 0.00 "02102",
//         50.00 "-0120" (a reversal), 25.00 "11101"; predetermination PD-9
//   95102 Lea, overseer 95002, 0.00: three lines of 0.00
//   95103 Lea, 900.00: nine lines of 100.00
//   95104 Tom, 10.00    95105 Ina, 10.00
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "frame/surface/surface.h"
#include "support/report_fixture.h"

namespace orv::testing {

class ClaimTest : public ReportTest {
 protected:
  void SetUp() override {
    std::string nine;
    for (int i = 0; i < 9; ++i)
      nine += std::string(i ? "," : "") + "(" + std::to_string(95320 + i) +
              ", 95103, '01202', NULL, NULL, 100.00, '2026-11-0" + std::to_string(i + 1) +
              " 00:00:00')";
    ReportTest::SetUpPractice(R"sql(
INSERT INTO Employees (ID, [Professional Title], FirstName, LastName, [CDA#]) VALUES
 (95001, 'Dr.', 'Ada', 'Moreau', '123456'), (95002, 'Dr.', 'Paul', 'Girard', '654321');
INSERT INTO InsuranceCompany (ID, CompanyName, Street, Street2, City, Prov, PostalCode, Country) VALUES
 (95001, 'North; Shore Life', '1 Bay St', NULL, 'Toronto', 'ON', 'M5J 2N8', 'Canada'),
 (95002, 'Second Life', '2 Rue Peel', 'Bureau 4', 'Montreal', 'QC', 'H3A 1T1', NULL);
INSERT INTO EmployeeBPN (EmployeeID, InsuranceID, BPN) VALUES (95001, 95001, '77');
INSERT INTO Employers (ID, Name, [Policy#], DivisionNumber, InsuranceID) VALUES
 (95001, 'Acme', 'P-1', NULL, 95001), (95002, 'Beta', NULL, 'D7', 95002),
 (95003, 'Gamma', 'G-3', NULL, NULL);
INSERT INTO Patient (ID, FirstName, LastName, FullName, BirthDate, Sex, Address, HomePhone,
  EmployerID, SecondaryEmployerID, PrimaryHolderID, SecondaryHolderID, [SubscriberID#],
  [SecondarySubscriberID#], Relationship, SecondaryRelationship, DependantCode,
  SecondaryDependantCode, Student, Schoolname, Assignment, DefaultOfficeID) VALUES
 (95001, 'Lea', 'Moreau', 'Lea Moreau', '2010-04-05 00:00:00', 'Female', '9 Elm St', '6135550101',
  95001, 95002, 95001, 95002, 'S-11', 'S-22', 'Self', 'Child', '01', '02', -1, 'Lycee Nord', 0, 1),
 (95002, 'Marc', 'Moreau', 'Marc Moreau', '1975-01-02 00:00:00', 'Male', '9 Elm St', NULL,
  NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, 0, NULL, 0, 1),
 (95003, 'Tom', 'Blanc', 'Tom Blanc', '1990-01-01 00:00:00', 'Male', '3 Oak St', NULL,
  NULL, NULL, 95003, NULL, 'T-1', NULL, 'Self', NULL, '00', NULL, 0, NULL, 0, 1),
 (95004, 'Ina', 'Roy', 'Ina Roy', '1985-06-07 00:00:00', 'Female', '4 Ash St', NULL,
  95003, NULL, 95004, NULL, 'I-1', NULL, 'Self', NULL, '00', NULL, 0, NULL, 0, 1),
 (95005, 'Eve', 'Roy', 'Eve Roy', '1988-06-07 00:00:00', 'Female', '5 Ash St', NULL,
  NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, 0, NULL, -1, 2);
INSERT INTO Invoices (ID, [Invoice#], PatientID, ProviderID, OverseerID, [Date], InvoiceTotal,
  IsAssignment, IsSecondaryAssignment, PredeterminationNumber, InsuranceNotes) VALUES
 (95101, 595101, 95001, 95001, NULL, '2026-11-02 00:00:00', 999.99, -1, NULL, 'PD-9', 'Root canal done in two visits'),
 (95102, 595102, 95001, 95001, 95002, '2026-11-03 00:00:00', 0, 0, NULL, NULL, NULL),
 (95103, 595103, 95001, 95001, 0, '2026-11-04 00:00:00', 900.00, 0, NULL, NULL, NULL),
 (95104, 595104, 95003, 95001, NULL, '2026-11-05 00:00:00', 10.00, 0, NULL, NULL, NULL),
 (95105, 595105, 95004, 95001, NULL, '2026-11-06 00:00:00', 10.00, 0, NULL, NULL, NULL);
INSERT INTO InvoiceDetails (ID, InvoiceID, Code, [Tooth#], Surface, Cost, [Date]) VALUES
 (95301, 95101, '01202', '16', 'MOD', 100.00, '2026-11-02 00:00:00'),
 (95302, 95101, '02102', NULL, NULL, 0, '2026-11-02 00:00:00'),
 (95303, 95101, '-0120', NULL, NULL, 50.00, '2026-11-02 00:00:00'),
 (95304, 95101, '11101', NULL, NULL, 25.00, '2026-11-02 00:00:00'),
 (95311, 95102, '01202', NULL, NULL, 0, '2026-11-03 00:00:00'),
 (95312, 95102, '01202', NULL, NULL, 0, '2026-11-03 00:00:00'),
 (95313, 95102, '01202', NULL, NULL, 0, '2026-11-03 00:00:00'),
 (95330, 95104, '01202', NULL, NULL, 10.00, '2026-11-05 00:00:00'),
 (95331, 95105, '01202', NULL, NULL, 10.00, '2026-11-06 00:00:00');
INSERT INTO InvoiceDetails (ID, InvoiceID, Code, [Tooth#], Surface, Cost, [Date]) VALUES )sql" +
                              nine + ";\n" + rows_);
  }

  // Rows a derived fixture adds (SQLite text).
  std::string rows_;

  static std::string Squeezed(const std::string& text) {
    std::string s;
    for (char c : text)
      if (c != ' ' && c != '\t' && c != '\r' && c != '\n') s += c;
    return s;
  }

  // The runs `keep` picks, in the order of `key`, their words joined with
  // every blank, tab and line break removed. `key` is given each run with
  // its page's offset, so that pages follow one another.
  template <class Key, class Keep>
  std::string Joined(Key key, Keep keep) const {
    std::vector<std::pair<long long, render::TextRun>> placed;
    long long offset = 0;
    for (const auto& page : form.VSP.Document().pages) {
      for (const auto& item : page.items)
        if (auto t = std::get_if<render::TextRun>(&item); t && keep(*t)) placed.emplace_back(offset, *t);
      offset += 100000;
    }
    std::stable_sort(placed.begin(), placed.end(),
                     [&](const auto& a, const auto& b) { return key(a) < key(b); });
    std::string s;
    for (const auto& [off, r] : placed) s += Squeezed(r.text);
    return s;
  }
  static double Top(const std::pair<long long, render::TextRun>& p) { return p.first + p.second.top.value(); }

  // Whether the form shows `text` in one of three readings: lines down the
  // page, each half of the page down on its own (two-column boxes), and
  // each left edge down on its own (a cell's wrapped lines).
  bool Shows(const std::string& text) const {
    const std::string want = Squeezed(text);
    const auto all = [](const render::TextRun&) { return true; };
    for (const std::string& reading :
         {Joined([](const auto& p) { return std::make_tuple(Top(p), p.second.x.value()); }, all),
          Joined([](const auto& p) {
            return std::make_tuple(p.first, p.second.x.value() >= 6120, Top(p), p.second.x.value());
          }, all),
          Joined([](const auto& p) { return std::make_tuple(p.first, p.second.x.value(), Top(p)); }, all)})
      if (reading.find(want) != std::string::npos) return true;
    return false;
  }

  // Whether `text` stands between `from` and `to` inches from the paper's
  // left edge: the runs there read down the page and across each line.
  bool ShowsWithin(const std::string& text, double from, double to) const {
    return Joined([](const auto& p) { return std::make_tuple(Top(p), p.second.x.value()); },
                  [&](const render::TextRun& t) {
                    return t.x.value() >= from * 1440 && t.x.value() < to * 1440;
                  })
               .find(Squeezed(text)) != std::string::npos;
  }

  // The first text run, in page order, that begins with `prefix`; null
  // when none does.
  const render::TextRun* RunStarting(const std::string& prefix) const {
    for (const auto& page : form.VSP.Document().pages)
      for (const auto& item : page.items)
        if (auto t = std::get_if<render::TextRun>(&item); t && t->text.rfind(prefix, 0) == 0) return t;
    return nullptr;
  }
  // The size in points of that run; 0 when there is none.
  double SizeOf(const std::string& prefix) const {
    const render::TextRun* r = RunStarting(prefix);
    return r ? r->size_pt : 0;
  }
};

}  // namespace orv::testing

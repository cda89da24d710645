// The paper dental claim form and the predetermination form built on it:
// the words of each form and the one drawing routine they share.
//
// Insurers read these forms box by box, so the texts are the printed form's
// own, misspellings and missing accents included; nothing here is for
// translating or correcting.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "frame/reports.h"
#include "platform/db/recordset.h"

namespace orv::claims {

// Every text the form prints that differs between languages or between the
// claim and the predetermination.
struct ClaimTexts {
  const char* payee_subscriber;
  const char* payee_dentist;
  const char* assignment_sentence;
  const char* assignment_signature;
  const char* table1_header;
  const char* consent_first;
  const char* consent_second;
  const char* patient_signature;
  const char* dentist_use;
  const char* duplicate_mark;
  const char* table3_header;
  const char* total_row;
  const char* subscriber_heading;
  const char* name_label;
  const char* birth_label;
  const char* policy_label;
  const char* division_label;
  const char* certificate_first;
  const char* certificate_second;
  const char* employer_label;
  const char* relationship_label;
  const char* table5_header;
  const char* dob6;
  const char* relationship6;
  const char* dependant6;
  const char* child_line;
  const char* handicap_mark;
  const char* school_line;
  const char* other_coverage;
  const char* accident_question;
  const char* denture_question;
  const char* release_sentence;
  const char* subscriber_signature;
  const char* date_line1;
  const char* date_line2;
  const char* date_line3;
  const char* date_line4;
  const char* authorised_signature;
  const char* position_caption;
  const char* table7_header;
  const char* table8_header;
  const char* foot_line;
  const char* other_yes;  // answer to the other-coverage question
  const char* other_no;
  const char* sex_label;  // in the subscriber rows
  const char* table7_second_line;
  bool french;
};

const ClaimTexts& EnglishClaimTexts();
const ClaimTexts& FrenchClaimTexts();
const ClaimTexts& EnglishPredeterminationTexts();
const ClaimTexts& FrenchPredeterminationTexts();

// What one form is drawn from: the claim's invoice or the predetermination's
// treatment in `header`, with the column names that differ between them.
struct ClaimSource {
  bool predetermination = false;
  db::Recordset header;        // Invoices or PatientPredTreatments row
  db::Recordset patient;       // Patient row
  db::Recordset employee;      // the dentist the claim goes under
  db::Recordset lines;         // InvoiceDetails or PatientPredTreatmentDetails
  std::string doc_name;
  std::string title;
  std::string assignment_field;  // of `header` (claim) or `patient` (predetermination)
  std::string notes_field;       // InsuranceNotes or CarrierNotes of `header`
  int32_t office_id = 0;
  // 3 blanks every subscriber value and pays the subscriber.
  int16_t mode = 0;
};

// Draws the whole form on the component's surface and prints it. Raises on
// a field that cannot be read, leaving the document open for the caller's
// failure path.
void PrintClaimForm(clsReports& r, ClaimSource& src, const ClaimTexts& t);

// Runs a form under the claim forms' failure path: any error shows the
// failure message with its description, and the surface's document is
// discarded, whether the form had begun drawing or not (it reads its data
// first), so that nothing half-drawn or left from an earlier form is
// printed or saved.
void RunClaimForm(clsReports& r, const std::function<void()>& body);

// The failure message of the claim forms and the treatment plans, the same
// in both languages.
extern const char* const kClaimFailure;

}  // namespace orv::claims

// The layperson treatment plan: a letter the patient takes home, on the
// letterhead of the patient's own office, listing one proposed treatment
// section by section in plain words, with the fees and, for a patient who
// assigned benefits, what the insurers pay and what is left to the patient.
// The plain words live in FeeCodes.LayPersonDescription, not here.
#include <optional>
#include <string>

#include "claims/claim_form.h"
#include "common/common_functions.h"
#include "common/datetime.h"
#include "common/format.h"
#include "common/locale.h"
#include "common/vbstrings.h"
#include "frame/patient.h"
#include "frame/reports.h"
#include "frame/surface/surface.h"
#include "frame/surface/table_model.h"

namespace orv {

namespace {

// One section of the plan: the lines of one `Type`, in printing order.
struct PlanSection {
  const char* detail_tail;
  const char* sum_tail;
  const char* english_title;
  const char* french_title;  // nullptr: the French letter leaves the section out
  bool option_3_to_6;        // its unassigned totals say "Total", not "Totals"
};

constexpr PlanSection kSections[] = {
    {" and (Type = 'Required' or Type is null) order by LineNumber, ID",
     " AND (Type = 'Required' or Type is null)", "Required Treatment:", "Traitement Requis:", false},
    {" and Type = 'Suggested' ORDER BY LineNumber, ID", " AND Type = 'Suggested'",
     "Suggested Treatment:", "Traitement Suggéré:", false},
    {" and Type = 'Optional' order by LineNumber, ID", " AND Type = 'Optional'",
     "Optional Treatment:", "Traitement Facutatif:", false},
    {" and Type = 'Phase 1' order by LineNumber, ID", " AND Type = 'Phase 1'", "Phase 1 Treatment:",
     "1er Phase Traitement:", false},
    {" and Type = 'Phase 2' order by LineNumber, ID", " AND Type = 'Phase 2'", "Phase 2 Treatment:",
     "2e Phase Traitement:", false},
    {" and Type = 'Phase 3' order by LineNumber, ID", " AND Type = 'Phase 3'", "Phase 3 Treatment:",
     "3e Phase Traitement:", false},
    {" and Type = 'Phase 4' order by LineNumber, ID", " AND Type = 'Phase 4'", "Phase 4 Treatment:",
     nullptr, false},
    {" and Type = 'Phase 5' order by LineNumber, ID", " AND Type = 'Phase 5'", "Phase 5 Treatment:",
     nullptr, false},
    {" and Type = 'Phase 6' order by LineNumber, ID", " AND Type = 'Phase 6'", "Phase 6 Treatment:",
     nullptr, false},
    {" and Type = 'Option 1' order by LineNumber, ID", " AND Type = 'Option 1'",
     "Option 1 Treatment:", "1er option Traitement:", false},
    {" and Type = 'Option 2' order by LineNumber, ID", " AND Type = 'Option 2'",
     "Option 2 Treatment:", "2e option Traitement:", false},
    {" and Type = 'Option 3' order by LineNumber, ID", " AND Type = 'Option 3'",
     "Option 3 Treatment:", "3e option Traitement:", true},
    {" and Type = 'Option 4' order by LineNumber, ID", " AND Type = 'Option 4'",
     "Option 4 Treatment:", nullptr, true},
    {" and Type = 'Option 5' order by LineNumber, ID", " AND Type = 'Option 5'",
     "Option 5 Treatment:", nullptr, true},
    {" and Type = 'Option 6' order by LineNumber, ID", " AND Type = 'Option 6'",
     "Option 6 Treatment:", nullptr, true},
};

struct PlanWords {
  const char* title;
  const char* estimate_for;
  const char* assigned_header;
  const char* plain_header;
  const char* stock_introduction;
  const char* closing;
  const char* signature;
  bool french;
};

constexpr PlanWords kEnglishPlan = {
    "Proposed Dental Treatment",
    "Estimate prepared for: ",
    "Code|Tooth|Description|Total Fee|Benefits|Your Portion",
    "Code|Tooth|Description|Total Fee",
    "Below you will find a break down of the work that has been recommended to you, including "
    "descriptions of the work, and if available, what your dental insurance coverage will pay "
    "towards each procedure.  Please note that while all dental work is an important component to "
    "your oral health, items marked as required are STRONGLY recommended and should be scheduled "
    "at the earliest possible time unless otherwise noted by the staff member assisting you.",
    "Should you have any questions regarding the proposed treatment, please do not hesitate to "
    "ask. Our staff will be more than happy to assist you in your decision.",
    "Sincerely,",
    false};

constexpr PlanWords kFrenchPlan = {
    "Traitement Dentaire Propose",
    "Coûts estimatifs préparés pour: ",
    "Code de l'acte|Code de dents|Description|Honoraire du dentiste|Avantages|Portion du vous",
    "Code de l'acte|Code de dents|Description|Honoraire du dentiste",
    "Ci-dessous, vous trouvez un plan detaille du traitement dentaire qui a été recommende pour "
    "vous. Incluant une description du traitement et si posiible ce que votre régime va contribuer "
    "envers chaque procédure.",
    "Notre Personnel est disponsible pour répondre à vos Questions et assister à la prise de "
    "decision à l'égard du traitement proposé",
    "Bien à vous,",
    true};

std::string Money(Currency c) { return Format(Variant(c), "Currency"); }

// Whether the patient assigned benefits. The flag is stored as -1 by the
// front desk's screen and as 1 by imports and by the server; both mean
// assigned, so any nonzero value counts, not only -1.
bool Assigned(const Variant& v) { return clsCommonFunctions().ReturnBool(v); }

// One section: its title, its lines and its totals row; nothing at all
// when the section has no line.
void PrintSection(clsReports& r, const PlanSection& s, const char* title, const PlanWords& w,
                  const std::string& plan_id, const std::string& strFilter, bool assigned) {
  frame::PrintSurface& vsp = r.VSP();
  clsCommonFunctions& cf = r.Common();
  db::Recordset lines =
      r.Open("Select * from PatientPredTreatmentDetails where PatientPredTreatmentsID = " + plan_id +
             strFilter + s.detail_tail);
  if (lines.Eof()) return;
  vsp.Text(" ");
  vsp.FontBold(true);
  vsp.Text(title);
  vsp.FontBold(false);

  std::string rows;
  while (!lines.Eof()) {
    Variant code = lines["Code"].Value();
    Variant reason = lines["ReasonID"].Value();
    // Plain words first; the clinical wording for codes nobody has put into
    // plain words (a blank-only text counts as none); the bare reason key
    // when the code is not on file at all.
    std::string lay = vb::Trim(cf.returnStr(r.ReturnLookupValue("FeeCodes", "ID", code, "LayPersonDescription")));
    std::string description =
        !lay.empty() ? cf.returnStr(r.ReturnLookupValue("FeeCodes", "ID", code, "LayPersonDescription"))
                     : cf.returnStr(r.ReturnLookupValue("FeeCodes", "ID", code, "Description"));
    std::string cell;
    if (description.empty()) {
      cell = frame::EscapeCell(cf.returnStr(reason));
    } else if (!vb::Trim(cf.returnStr(reason)).empty()) {
      // The reason for the procedure on a second line of its cell.
      cell = frame::EscapeCell(description) + "\r\n" +
             frame::EscapeCell(cf.returnStr(r.ReturnLookupValue("Reasons", "ID", reason, "Name")));
    } else {
      cell = frame::EscapeCell(description);
    }
    Currency cost = cf.ReturnCur(lines["Cost"].Value());
    std::string row = frame::EscapeCell(cf.returnStr(code)) + "|" +
                      frame::EscapeCell(cf.returnStr(lines["Tooth#"].Value())) + "|" + cell + "|" +
                      Money(cost);
    if (assigned) {
      // The two insurers are one figure to the patient.
      Currency first = cf.ReturnCur(lines["BenefitAmountProcedure"].Value());
      Currency second = cf.ReturnCur(lines["SecondBenefitAmount"].Value());
      row += "|" + Money(first + second) + "|" + Money(cost - first - second);
    }
    rows += row + ";";
    lines.MoveNext();
  }
  if (assigned) {
    vsp.AddTable("^+.5in|^+.5in|<+2.9in|>+.9in|>+.8in|>+.9in", w.assigned_header, rows, kHeaderColor);
  } else {
    vsp.AddTable("^+.5in|^+.5in|<+4.4in|>+.9in", w.plain_header, rows, kHeaderColor);
  }
  vsp.FontBold(true);

  // The totals come from the database's sums under the same filter, not
  // from the lines: a Null benefit leaves its row out of SUM.
  db::Recordset sums = r.Open(
      "Select SUM(Cost) as TotalFee, SUM(BenefitAmountProcedure) + SUM(SecondBenefitAmount) as "
      "TotalBenefits, SUM(Cost) -  (SUM(BenefitAmountProcedure) + SUM(SecondBenefitAmount)) as "
      "TotalPatient FROM PatientPredTreatmentDetails where PatientPredTreatmentsID = " +
      plan_id + strFilter + s.sum_tail);
  std::string figures = Money(cf.ReturnCur(sums["TotalFee"].Value())) + "|" +
                        Money(cf.ReturnCur(sums["TotalBenefits"].Value())) + "|" +
                        Money(cf.ReturnCur(sums["TotalPatient"].Value()));
  std::string label = w.french                              ? "Total des honoraires demandés|"
                      : (!assigned && s.option_3_to_6) ? "Total|"
                                                            : "Totals|";
  // The unassigned row keeps all three figures in two columns; the surface
  // drops the cells beyond the format, so a patient who did not assign
  // benefits sees the total fee alone, as the line table shows no
  // insurance figure to such a patient.
  vsp.AddTable(assigned ? "<3.9in|>.9in|>.8in|>.9in" : "<5.4in|>.9in", "", label + figures,
               std::nullopt, kHeaderColor);
  vsp.FontBold(false);
  vsp.Text(" ");
}

void LaypersonPlan(clsReports& r, int32_t ID, const std::string& filter, const PlanWords& w) {
  r.Trap(claims::kClaimFailure, [&] {
    frame::PrintSurface& vsp = r.VSP();
    clsCommonFunctions& cf = r.Common();
    try {
      const std::string strFilter = NoZeroFilter(filter);
      db::Recordset rs = r.Open(
          "SELECT PatientPredTreatments.ID, PatientPredTreatments.PatientID, "
          "PatientPredTreatments.PatientNotes, PatientPredTreatments.ProviderID, "
          "PatientPredTreatments.TotalAmount, PatientPredTreatments.TotalBenefitAmount, "
          "PatientPredTreatments.TotalSecondBeneFitAmount, Patient.Title, Patient.FirstName, "
          "Patient.LastName, Patient.Assignment FROM PatientPredTreatments INNER JOIN Patient ON "
          "PatientPredTreatments.PatientID = Patient.ID where PatientPredTreatments.ID = " +
          std::to_string(ID));
      // An unknown treatment fails here, on the first field read.
      const std::string plan_id = cf.returnStr(rs["ID"].Value());
      Variant patient_id = rs["PatientID"].Value();

      vsp.DocName("Layperson Treatment Plan");
      vsp.Orientation(0);
      vsp.StartDoc();
      // The letterhead of the patient's own office; the component keeps
      // that office afterwards.
      r.Patient().PatientID(cf.ReturnNumber(patient_id));
      r.OfficeID = r.Patient().OfficeID();
      r.PrintLetterHead();

      vsp.Text(" ");
      vsp.TextAlign(1);
      vsp.FontSize(14);
      vsp.FontBold(true);
      vsp.Text(w.title);
      vsp.TextAlign(0);
      vsp.FontSize(10);
      vsp.Text(" ");
      vsp.Text(" ");
      vsp.FontBold(false);
      // The French letter dates itself with French day and month names in
      // the same pattern.
      vsp.Text(Format(Variant(Clock::Today()), "dddd mmmm d, yyyy",
                      w.french ? FrenchCanada() : EnglishCanada()));
      vsp.Text(" ");
      vsp.Text(" ");

      const bool assigned = Assigned(rs["Assignment"].Value());
      vsp.Text(w.estimate_for + cf.returnStr(rs["FirstName"].Value()) + " " +
               cf.returnStr(rs["LastName"].Value()));
      vsp.Text(" ");
      std::string header = cf.returnStr(
          r.ReturnLookupValue("OfficeInformation", "ID", Variant(r.OfficeID), "LaypersonHeader"));
      vsp.Text(!header.empty() ? vb::Trim(header) : std::string(w.stock_introduction));

      for (const PlanSection& s : kSections) {
        const char* title = w.french ? s.french_title : s.english_title;
        if (title == nullptr) continue;
        PrintSection(r, s, title, w, plan_id, strFilter, assigned);
      }

      // The office's own note replaces the closing and the signature line.
      std::string notes = cf.returnStr(rs["PatientNotes"].Value());
      vsp.Text(" ");
      if (!notes.empty()) {
        vsp.Text(notes);
      } else {
        vsp.Text(w.closing);
        vsp.Text(" ");
        vsp.Text(w.signature);
      }
      vsp.EndDoc();
      vsp.PrintDoc(true);
    } catch (...) {
      if (vsp.IsOpen()) vsp.KillDoc();
      throw;
    }
  });
}

}  // namespace

void clsReports::rptLaypersonTreatmentPlan(std::string /*OfficeName*/, std::string /*OfficeAddress*/,
                                           int32_t ID, std::string strFilter) {
  const db::Snapshot snapshot(conn_, db::Snapshot::OnFailure::RunWithout);
  LaypersonPlan(*this, ID, strFilter, kEnglishPlan);
}

void clsReports::rptLaypersonTreatmentPlanF(std::string /*OfficeName*/, std::string /*OfficeAddress*/,
                                            int32_t ID, std::string strFilter) {
  const db::Snapshot snapshot(conn_, db::Snapshot::OnFailure::RunWithout);
  LaypersonPlan(*this, ID, strFilter, kFrenchPlan);
}

}  // namespace orv

// The predetermination form: the claim form asking an insurer in advance
// what it will pay for a proposed treatment. Always under the treatment's
// provider, payable as the patient assigned benefits, every proposed line
// printed with its total. On an error the form ends without a word and
// prints nothing, as the front desk's predetermination screen expects.
#include "claims/claim_form.h"
#include "common/common_functions.h"
#include "frame/surface/surface.h"

namespace orv {

namespace {

void PredeterminationForm(clsReports& r, int32_t ID, int32_t CurrentOfficeID,
                          const std::string& strFilter, const claims::ClaimTexts& texts) {
  try {
    clsCommonFunctions& cf = r.Common();
    claims::ClaimSource src;
    src.predetermination = true;
    src.header = r.Open("Select * from PatientPredTreatments where ID = " + std::to_string(ID));
    src.patient = r.Open("Select * from Patient where ID = " + cf.returnStr(src.header["PatientID"].Value()));
    src.employee = r.Open(
        "Select ID, FirstName, LastName, [Professional Title], [CDA#] FROM Employees WHERE ID = " +
        cf.returnStr(src.header["ProviderID"].Value()));
    // A filter of "0" selects nothing away, as every filter of the host.
    src.lines = r.Open("Select * from PatientPredTreatmentDetails where PatientPredTreatmentsID = " +
                       cf.returnStr(src.header["ID"].Value()) + NoZeroFilter(strFilter) +
                       " ORDER BY LineNumber, ID");
    src.doc_name = "Predeterminaion Claim Form";
    src.title = "Predetermination Form";
    src.assignment_field = "Assignment";
    src.notes_field = "CarrierNotes";
    src.office_id = CurrentOfficeID;
    claims::PrintClaimForm(r, src, texts);
  } catch (const std::exception&) {
    // Silent by design; the half-drawn document is dropped.
    if (r.VSP().IsOpen()) r.VSP().KillDoc();
  }
}

}  // namespace

void clsReports::rptPredClaimForm(int32_t ID, int32_t CurrentOfficeID, std::string strFilter) {
  const db::Snapshot snapshot(conn_, db::Snapshot::OnFailure::RunWithout);
  PredeterminationForm(*this, ID, CurrentOfficeID, strFilter, claims::EnglishPredeterminationTexts());
}

void clsReports::rptPredClaimFormF(int32_t ID, int32_t CurrentOfficeID, std::string strFilter) {
  const db::Snapshot snapshot(conn_, db::Snapshot::OnFailure::RunWithout);
  PredeterminationForm(*this, ID, CurrentOfficeID, strFilter, claims::FrenchPredeterminationTexts());
}

}  // namespace orv

// Invokers of the labels, envelopes, letters, notes and memos.
#include "frame/reports.h"
#include "invokers.h"

namespace orv::app {
namespace {

InvokerRegistrar mailing_labels("rptMailingLabels", [](clsReports& r, const MethodArgs& a) {
  r.rptMailingLabels(a.Str(0));
  return Variant();
});
InvokerRegistrar folder_labels("rptFolderLabels", [](clsReports& r, const MethodArgs& a) {
  r.rptFolderLabels(a.Str(0), a.Str(1));
  return Variant();
});
InvokerRegistrar dentist_labels("rptReferringDentistMailingLabels", [](clsReports& r, const MethodArgs& a) {
  r.rptReferringDentistMailingLabels(a.Str(0));
  return Variant();
});
InvokerRegistrar single_labels("rptMailingLabelsSinglePage", [](clsReports& r, const MethodArgs& a) {
  r.rptMailingLabelsSinglePage(a.Str(0));
  return Variant();
});
InvokerRegistrar folder_single("rptFolderLabelsSingleSheet", [](clsReports& r, const MethodArgs& a) {
  r.rptFolderLabelsSingleSheet(a.Str(0), static_cast<iPosition>(a.Long(1)));
  return Variant();
});
InvokerRegistrar company_labels("rptInsuranceCompanyLabels", [](clsReports& r, const MethodArgs& a) {
  r.rptInsuranceCompanyLabels(a.Long(0));
  return Variant();
});
InvokerRegistrar patient_envelope("rptPatientEnvelope", [](clsReports& r, const MethodArgs& a) {
  r.rptPatientEnvelope(a.Str(0), a.Bool(1));
  return Variant();
});
InvokerRegistrar company_envelopes("rptInsuranceCompanyEnvelopes", [](clsReports& r, const MethodArgs& a) {
  r.rptInsuranceCompanyEnvelopes(a.Str(0));
  return Variant();
});
InvokerRegistrar dentist_envelopes("rptReferringDentistMailingEnvelopes", [](clsReports& r, const MethodArgs& a) {
  r.rptReferringDentistMailingEnvelopes(a.Str(0));
  return Variant();
});
InvokerRegistrar card_label("rptAppointmentCardLabel", [](clsReports& r, const MethodArgs& a) {
  r.rptAppointmentCardLabel(a.Long(0));
  return Variant();
});

}  // namespace
}  // namespace orv::app

namespace orv::app {
namespace {

InvokerRegistrar reactivation("rptReActivationLetter", [](clsReports& r, const MethodArgs& a) {
  r.rptReActivationLetter(a.Str(0), a.Str(1), a.Str(2));
  return Variant();
});
InvokerRegistrar no_show("rptNoShowLetter", [](clsReports& r, const MethodArgs& a) {
  r.rptNoShowLetter(a.Long(0), a.Str(1), a.Var(2), a.Str(3), a.Str(4));
  return Variant();
});
InvokerRegistrar referral("rptRefferalLetter", [](clsReports& r, const MethodArgs& a) {
  r.rptRefferalLetter(a.Long(0), a.Given(1) ? std::optional<bool>(a.Bool(1)) : std::nullopt);
  return Variant();
});
InvokerRegistrar new_patient("NewPatientLetter", [](clsReports& r, const MethodArgs& a) {
  r.NewPatientLetter(a.Long(0), a.Str(1), a.Str(2));
  return Variant();
});
InvokerRegistrar policy("OfficePolicyAcknowledgement", [](clsReports& r, const MethodArgs& a) {
  r.OfficePolicyAcknowledgement(a.Long(0), a.Long(1));
  return Variant();
});

}  // namespace
}  // namespace orv::app

namespace orv::app {
namespace {

InvokerRegistrar notes_list("rptProgressNotesList", [](clsReports& r, const MethodArgs&) {
  r.rptProgressNotesList();
  return Variant();
});
InvokerRegistrar notes("rptProgressNotes", [](clsReports& r, const MethodArgs& a) {
  r.rptProgressNotes(a.Str(0), a.Str(1));
  return Variant();
});
InvokerRegistrar memos("rptMemos", [](clsReports& r, const MethodArgs& a) {
  r.rptMemos(a.Str(0), a.Date(1), a.Str(2));
  return Variant();
});
InvokerRegistrar prescriptions("rptPrescriptions", [](clsReports& r, const MethodArgs& a) {
  r.rptPrescriptions(a.Long(0), a.Str(1), a.Str(2));
  return Variant();
});
InvokerRegistrar todo("ToDoEmail", [](clsReports& r, const MethodArgs& a) {
  return Variant(r.ToDoEmail(a.Long(0)));
});

}  // namespace
}  // namespace orv::app

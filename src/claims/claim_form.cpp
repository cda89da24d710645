// The dental claim form of one invoice, English and French: eight stacked
// tables on one portrait letter page, straight to the printer. The insurer's
// clerk finds every box where the printed form has it, so widths, borders
// and texts follow the paper form exactly.
#include "claims/claim_form.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "common/common_functions.h"
#include "common/datetime.h"
#include "common/errors.h"
#include "common/format.h"
#include "common/vbstrings.h"
#include "frame/surface/color.h"
#include "frame/surface/surface.h"
#include "frame/surface/table_model.h"

namespace orv {

namespace claims {

const char* const kClaimFailure =
    "There has been an error printing. One or more pieces of information has not been correctly "
    "entered for the patient.\nThis could include any insurance information, especially the "
    "primary account holder, and or insurance company.";

namespace {

constexpr const char* CR = "\r\n";
constexpr const char* TAB = "\t";

// The form's own grey: the system button face, fixed on paper.
constexpr uint32_t kFormHeader = frame::kSystemButtonFace;

const ClaimTexts kEnglish = {
    "PAYABLE TO SUBSCRIBER",
    "PAYABLE TO DENTIST",
    "I hereby assign benefits payable from this claim to the named dentist.",
    "Signature of Subscriber",
    "Patient Information|Dentist Information|Assignment",
    "I understand that the fee listed in this claim request may not be covered by or may exceed "
    "my plan benefits. I understand that if I opt for these treatments that I am financially "
    "responsible to my dentist for the entire treatment.",
    " I authorize the release of the information contained in this claim form to my insuring "
    "company/plan administrator. I also authorize the communication of information related to "
    "the coverage of services described to the named dentist.",
    "Signature of Patient",
    "For Dentist's use only:  For additional information, diagnosis, procedures, or special "
    "consideration:",
    "Duplicate Form? ______",
    "Procedure|Tooth#|Surface|Date|Charge",
    "This is an accurate statement of service performed and the total fee due and payable E & "
    "OE.|Total Fee Submitted: ",
    "Primary Subscriber|Secondary Subscriber",
    "Name: ",
    "Birth Date: ",
    "Policy#: ",
    "Division#: ",
    "Certificate #: ",
    "|Certificate#: ",
    "Employer: ",
    "Relationship: ",
    "Employee/Plan Member/Subscriber and Patient Information",
    "D.O.B. ",
    "Relationship: ",
    "Dependant Code: ",
    "If Child Indicate:  Student: ",
    "  Handicapped: ____",
    "If Student Indicate School: ",
    "Are there any dental benefits or services provided under any other group insurance or "
    "dental plan, W.C.B. or Gov't Plan?  ",
    "|Is any treatment required as a result of an accident? (If Yes, give date and details "
    "separately.)  ",
    "If denture, crown or bridge, is this initial placement? (Give date of prior placement and "
    "reason for replacement if necessary.)  _____",
    "I authorize the release of any information or records requested in respect of this claim to "
    "the insurer/Plan administrator and certify that the information given is true, correct and "
    "complete to the best of my knowledge.",
    "Signature of Employee/Plan Member/Subscriber",
    "1. Date Coverage Commenced: __________________",
    "2. Date Dependant Covered: __________________",
    "3. Date Terminated: __________________|",
    "4. Contracted Holder (Date): __________________",
    "Authorized Signature",
    "Position or Title",
    "Policy Holder/Employer (Complete only if applicable to your policy.)",
    "Instructions for Claim Submission",
    "ALL INFORMATION RECORDED ON THIS FORM IS CONFIDENTIAL",
    "Yes",
    "No",
    "Sex: ",
    "_______________________",
    false};

const ClaimTexts kFrench = {
    "PAYABLE L'ABONNE",
    "PAYABLE AU DENTISTE",
    "Je cède au dentiste nommé dans la présente les incimmites payables en vertu de cette "
    "demande de règlement et le consents a ce qu'elles lui soient versés directemant",
    "Signature de 'employé participant au regime",
    "Information du patient|Information du Dentiste|Allocation",
    "Il se peut que les frais indiqués sur cette demande ne soient pas couverts par le régime "
    "auquel je participe ou qu'il ne soient couverts qu'en partie. Il m'incombe donc de voir a ce "
    "que mon dentiste soit rénuméré pour tous les soins rendus,",
    "Je consens à ce quetous les renseignements contenus dans la presente demande soient "
    "divulgues à l'assureur ou à l'administrateur du régime. J'autorise aussi la communication "
    "d'information apparentée au reportage de services d'écrit dans cette forme au dentiste nommé",
    "Signature du patient",
    "Réservé au dentiste pour renseignements complémentaires sur la diagnostic, ou les actes, ou "
    "autres considérations particulières.",
    "Duplicata? ______",
    "Code de l'acte|Code des dents|Surfaces des dents|Date du traitement|Honoraire du dentiste",
    "La présente est une déclaration exacte des soins rendus et des Honorarires demandés sauf "
    "erreurs ou omissions|Total des honoraires Demands: ",
    "Premiere employé(e) participante au régime|Deuxieme employé(e) participante au régime",
    "Nom: ",
    "Date de naissance: ",
    "No. du regime d'assurance collective: ",
    "No. de la section ou de la division: ",
    "No. de certificate d'assurance social ou d'identité: ",
    "|No. de certificate d'assurance social ou d'identité: ",
    "Employeur: ",
    "Lien de parenté avec l'employé participante au régime: ",
    "Renseignements sur l'employé(e) / participant(e) au régime",
    "Date de naissance: ",
    "Rapport: ",
    "Code dépendant: ",
    "S'il s'agit d'un enfant, est-il:  Étudient: ",
    "  Handicape: ____",
    "S'il est étudient, nom de L'estalissement scolaire: ",
    "Ces soins dentaires sont-ils couverts par une autre assurance collective ou dentaire, la "
    "C.A.T. ou un regime d'assurance d'etat?  ",
    "|Ces soins sont-ils requis à la suite d'un accident? (Si oui, indiquez la date et donnez des "
    "precisions sur une feuille distincte.)  ",
    "Si le traitment comprend une prothèse, une courone ou un pont, est-ce la première mise en "
    "bouche? (Si non, indiquez la date de la mise en bouche précédente et les raisons du "
    "remplacement.)  _____",
    "Je consens a ce que tout renseignement ou dossier exige au sujet de la presente demande soit "
    "divulgue a lassureur ou a l'administrateur du regime et je declare que les renseignements "
    "donnes sont a ma connaissance, verdfiques, exacts et complets",
    "Signature de l'employé(e) participant(e) au régime",
    "1. Date d'entrée en vigeur de l'assurance: __________________",
    "2. Date d'entrée en vigeur de l'assurance de la personne à charge: __________________",
    "3. Date de résiliation de l'assurance: __________________|",
    "4. Titulaire du régime (Date): __________________",
    "Signature autorisée",
    "Poste ou Titre",
    "A remplir par titulaire du regime / employeurs s'il ya lieu (voir ci-dessus.)",
    "Directive pour sousmission de demande d'indemnisation",
    "Tous les renseignements inscrits sur ce formulaire sont confidentiels",
    "Oui",
    "Non",
    "Sex: ",
    "_______________________",
    true};

ClaimTexts EnglishPredetermination() {
  ClaimTexts t = kEnglish;
  t.assignment_sentence =
      "I hereby assign benefits payable from this predetermination to the named dentist.";
  t.consent_first =
      "I understand that the fee listed in this predetermination request may not be covered by "
      "or may exceed my plan benefits. I understand that if I opt for these treatments that I am "
      "financially responsible to my dentist for the entire treatment.";
  // The predetermination's second sentence carries no leading blank.
  t.consent_second =
      "I authorize the release of the information contained in this predetermination form to my "
      "insuring company/plan administrator. I also authorize the communication of information "
      "related to the coverage of services described to the named dentist.";
  t.table3_header = "Procedure|Tooth#|Surface|Charge";
  t.total_row = "This is an accurate statement of proposed service.|Total Fee Proposed: ";
  t.relationship_label = "Patient's Relationship: ";
  t.table7_header = "Policy Holder/Employer (For Complete only if applicable to your policy.)";
  t.table7_second_line = "___________________________";
  return t;
}

// The French predetermination keeps the French claim texts wherever the
// paper claim form has them (assignment, consent, relationship, table 7's
// header: the insurer's French form carries no predetermination wording of
// its own) and prints "Sexe: ". Two texts exist only on the
// predetermination: its four-column procedure header takes the French claim
// form's own column titles without the date column, and its total row says
// "proposed" as the English one does, in the claim form's wording.
ClaimTexts FrenchPredetermination() {
  ClaimTexts t = kFrench;
  t.table3_header = "Code de l'acte|Code des dents|Surfaces des dents|Honoraire du dentiste";
  t.total_row =
      "La présente est une déclaration exacte des soins proposés|Total des honoraires proposés: ";
  t.sex_label = "Sexe: ";
  t.table7_second_line = "___________________________";
  return t;
}

// A date as the form prints it ("Nov/20/2026"); Null prints nothing.
std::string FormDate(const Variant& v) { return Format(v, "mmm/dd/yyyy"); }

// A field of a recordset as text, escaped for its cell.
std::string Cell(clsCommonFunctions& cf, const db::Recordset& rs, const char* field) {
  return frame::EscapeCell(cf.returnStr(rs[field].Value()));
}

// A looked-up value as text, escaped for its cell.
std::string Cell(clsCommonFunctions& cf, const Variant& v) {
  return frame::EscapeCell(cf.returnStr(v));
}

// An insurer's address block. The form's rule makes every ";" a ":" so that
// an address cannot end the row; "|" is escaped as in any cell.
std::string InsurerCell(clsCommonFunctions& cf, const db::Recordset& ins) {
  std::string s = cf.returnStr(ins["CompanyName"].Value()) + CR + cf.returnStr(ins["Street"].Value());
  std::string street2 = cf.returnStr(ins["Street2"].Value());
  if (!street2.empty()) s += ", " + street2;
  s += CR + cf.returnStr(ins["City"].Value()) + ", " + cf.returnStr(ins["Prov"].Value()) + ", " +
       cf.returnStr(ins["PostalCode"].Value());
  std::string country = cf.returnStr(ins["Country"].Value());
  if (!vb::Trim(country).empty()) s += ", " + country;
  return frame::EscapeCell(vb::Replace(s, ";", ":"));
}

// A flag column: any nonzero value is true (stored -1 by the desk's screens,
// 1 by imports); Null is false.
bool IsTrue(const Variant& v) { return clsCommonFunctions().ReturnBool(v); }

// A `TableCell` setting of the paper form cut to the table under
// construction: the form names its subscriber rows up to row 10 and a third
// column for the whole-row bold, whatever the rows of this claim are, and
// the surface refuses cells outside its table.
void SetCells(frame::PrintSurface& vsp, int sel, int r1, int c1, int r2, int c2,
              const frame::CellValue& value) {
  const int rows = int(vsp.TableCell(frame::tcRows).Number());
  const int cols = int(vsp.TableCell(frame::tcCols).Number());
  vsp.TableCell(sel, std::min(r1, rows), std::min(c1, cols), std::min(r2, rows),
                std::min(c2, cols)) = value;
}

}  // namespace

const ClaimTexts& EnglishClaimTexts() { return kEnglish; }
const ClaimTexts& FrenchClaimTexts() { return kFrench; }
const ClaimTexts& EnglishPredeterminationTexts() {
  static const ClaimTexts t = EnglishPredetermination();
  return t;
}
const ClaimTexts& FrenchPredeterminationTexts() {
  static const ClaimTexts t = FrenchPredetermination();
  return t;
}

void PrintClaimForm(clsReports& r, ClaimSource& src, const ClaimTexts& t) {
  frame::PrintSurface& vsp = r.VSP();
  clsCommonFunctions& cf = r.Common();
  const db::Recordset& head = src.header;
  const db::Recordset& pat = src.patient;
  const db::Recordset& emp = src.employee;
  const bool mode3 = src.mode == 3;
  const bool pred = src.predetermination;

  // ---- Employers and the primary insurer ----
  const Variant employer_id = pat["EmployerID"].Value();
  const Variant second_employer_id = pat["SecondaryEmployerID"].Value();
  const bool has_primary = !employer_id.IsNull();
  const bool has_secondary = !second_employer_id.IsNull();
  db::Recordset employer1, employer2;
  if (has_primary) employer1 = r.Open("Select * from Employers where ID = " + cf.returnStr(employer_id));
  if (has_secondary)
    employer2 = r.Open("Select * from Employers where ID = " + cf.returnStr(second_employer_id));
  // The primary employer's insurer stands in the first block whichever
  // insurer the claim is printed for.
  db::Recordset insurer = r.Open(
      std::string("SELECT ID, CompanyName, Street, Street2, City, Prov, PostalCode, Country") +
      (pred ? ", BillingProviderNumber" : "") + " FROM InsuranceCompany WHERE ID = " +
      std::to_string(r.InsuranceOfEmployer(employer_id)));

  // ---- The billing number ----
  // The dentist's number framing the insurer's provider number: "12" + BPN
  // + "56" for CDA# 123456; the bare CDA# without a number for this insurer.
  const std::string cda = cf.returnStr(emp["CDA#"].Value());
  std::string bpn_number = cda;
  if (!insurer.Eof()) {
    db::Recordset bpn = r.Open("SELECT BPN FROM EmployeeBPN WHERE EmployeeID = " +
                               cf.returnStr(emp["ID"].Value()) + " AND InsuranceID = " +
                               cf.returnStr(insurer["ID"].Value()));
    if (!bpn.Eof())
      bpn_number = vb::Left(cda, 2) + cf.returnStr(bpn["BPN"].Value()) + vb::Right(cda, 2);
  }

  // ---- The payee ----
  // An empty column name (a mode the form does not know) fails here, in
  // the form's failure path.
  const db::Recordset& assignment_row = pred ? pat : head;
  const Variant assigned = assignment_row[src.assignment_field].Value();
  const bool to_subscriber = mode3 || assigned.IsNull() || !IsTrue(assigned);

  // ---- Table 1: patient, dentist, assignment ----
  auto office = [&](const char* field) {
    return cf.returnStr(r.ReturnLookupValue("OfficeInformation", "ID", Variant(src.office_id), field));
  };
  std::string dentist;
  if (!emp.Eof()) {
    dentist = Cell(cf, emp, "Professional Title") + " " + Cell(cf, emp, "FirstName") + " " +
              Cell(cf, emp, "LastName") + CR;
  }
  std::string street2 = office("Street2");
  dentist += frame::EscapeCell(office("Street") + (street2.empty() ? "" : ", " + street2)) + CR +
             frame::EscapeCell(office("City") + ", " + office("Province") + ", " + office("PostalCode")) +
             CR + frame::EscapeCell(office("Phone")) + CR + "Unique#: " + frame::EscapeCell(cda) + CR +
             "BPN#: " + frame::EscapeCell(bpn_number);
  std::string payee = to_subscriber
                          ? std::string(CR) + CR + t.payee_subscriber
                          : std::string(t.payee_dentist) + CR + t.assignment_sentence + CR + CR +
                                "________________________" + CR + t.assignment_signature;
  const std::string t1 = Cell(cf, pat, "FullName") + CR + Cell(cf, pat, "Address") + CR +
                         Cell(cf, pat, "HomePhone") + "|" + dentist + "|" + payee + ";";

  // ---- Table 2: consent and the dentist's notes ----
  std::string notes = cf.returnStr(head[src.notes_field].Value());
  const std::string consent =
      std::string(t.consent_first) + t.consent_second + CR + CR + TAB + "_______________________" +
      TAB + TAB + TAB + TAB + "________________________________" + TAB + TAB +
      Format(Variant(Clock::Today()), "mmm/dd/yyyy") + CR + TAB + t.patient_signature + TAB + TAB +
      TAB + TAB + "Office Verification;" + t.dentist_use + TAB + TAB + t.duplicate_mark + CR +
      (notes.empty() ? std::string(CR) + CR + CR + CR : frame::EscapeCell(notes) + CR + CR) + ";";

  std::string predetermination_number;
  if (!pred) {
    Variant number = head["PredeterminationNumber"].Value();
    if (!number.IsNull() && !cf.returnStr(number).empty())
      predetermination_number = "Predetermination Number: " + cf.returnStr(number);
  }

  // ---- Table 3: the procedures ----
  // `first_eight` holds the rows the paper form has room for: the first
  // eight printed lines, or all of them (on the claim padded with empty
  // lines).
  std::string rows, first_eight;
  Currency proposed;
  int printed = 0;
  db::Recordset& lines = src.lines;
  while (!lines.Eof()) {
    Variant cost = lines["Cost"].Value();
    std::string code = cf.returnStr(lines["Code"].Value());
    if (pred) {
      // Every proposed line stands, a fee of 0 too.
      rows += frame::EscapeCell(code) + "|" + Cell(cf, lines, "Tooth#") + "|" +
              Cell(cf, lines, "Surface") + "|" + Format(cost, "Currency") + ";";
      proposed += cf.ReturnCur(cost);
      if (++printed == 8) first_eight = rows;
    } else if (cf.ReturnCur(cost) != Currency() && vb::InStr(1, code, "-") == 0) {
      // A claim carries no line without a fee and no reversal ("-" code).
      rows += frame::EscapeCell(code) + "|" + Cell(cf, lines, "Tooth#") + "|" +
              Cell(cf, lines, "Surface") + "|" + FormDate(lines["Date"].Value()) + "|" +
              Format(cost, "Currency") + ";";
      if (++printed == 8) first_eight = rows;
    }
    lines.MoveNext();
  }
  // The paper form has eight procedure lines: fewer are padded with empty
  // ones; more simply run on and the surface carries them to a next page.
  if (!pred)
    for (int i = printed; i <= 7; ++i) rows += "||||;";
  if (printed <= 8) first_eight = rows;

  // ---- Table 4: the total ----
  // The claim states the invoice's stored total, not a sum of the printed
  // lines; the predetermination sums what it printed.
  const std::string total = std::string(t.total_row) +
                            (pred ? Format(Variant(proposed), "Currency")
                                  : Format(head["Invoicetotal"].Value(), "Currency")) +
                            ";";

  // ---- Table 5: subscribers ----
  auto holder = [&](const char* id_field, const char* field) {
    Variant id = pat[id_field].Value();
    return r.ReturnLookupValue("Patient", "ID", Variant(cf.ReturnNumber(id)), field);
  };
  auto birth_and_sex = [&](const char* id_field) {
    return FormDate(holder(id_field, "BirthDate")) + TAB + t.sex_label +
           Cell(cf, holder(id_field, "Sex"));
  };
  const bool show1 = has_primary && !mode3;
  const bool show2 = has_secondary && !mode3;
  std::string t5 = std::string(t.subscriber_heading) + ";";
  // Name.
  t5 += t.name_label;
  if (!mode3) t5 += Cell(cf, holder("PrimaryHolderID", "FullName"));
  if (t.french && !pred && !mode3) {
    // The French claim form names the secondary holder in a second cell of
    // the first row and again in a row of its own below.
    t5 += "|Name: " + Cell(cf, holder("SecondaryHolderID", "FullName")) + ";";
  }
  t5 += std::string("|") + t.name_label;
  if (show2) t5 += Cell(cf, holder("SecondaryHolderID", "FullName"));
  t5 += ";";
  // Birth date and sex.
  t5 += t.birth_label;
  if (show1) {
    t5 += birth_and_sex("PrimaryHolderID");
    if (t.french && !pred)
      t5 += std::string("|Birth Date: ") + FormDate(holder("SecondaryHolderID", "BirthDate")) + TAB +
            "Sex: " + Cell(cf, holder("SecondaryHolderID", "Sex")) + ";";
  }
  t5 += std::string("|") + t.birth_label;
  if (show2) t5 += birth_and_sex("SecondaryHolderID");
  t5 += ";";
  // Policy and division: eight blanks stand for a missing policy number,
  // six for a subscriber left blank, as the paper form's boxes have it.
  auto policy = [&](bool show, db::Recordset& employer) {
    if (!show) return std::string(t.policy_label) + "      " + TAB + t.division_label + " ";
    Variant number = employer["Policy#"].Value();
    std::string division = cf.returnStr(employer["DivisionNumber"].Value());
    return std::string(t.policy_label) + (number.IsNull() ? "        " : Cell(cf, number)) + TAB +
           t.division_label + (division.empty() ? "(N/A)" : frame::EscapeCell(division));
  };
  t5 += policy(show1, employer1) + "|" + policy(show2, employer2) + ";";
  // Certificates.
  t5 += t.certificate_first;
  if (!mode3) t5 += Cell(cf, pat, "SubscriberID#");
  t5 += t.certificate_second;
  if (!mode3) t5 += Cell(cf, pat, "SecondarySubscriberID#");
  t5 += ";";
  // Employers.
  t5 += t.employer_label;
  if (show1) t5 += Cell(cf, r.ReturnLookupValue("Employers", "ID", employer_id, "Name"));
  if (show2) {
    t5 += std::string("|") + t.employer_label +
          Cell(cf, r.ReturnLookupValue("Employers", "ID", second_employer_id, "Name")) + ";";
  } else if (t.french && !pred) {
    // The French blank case has no row end: the relationship row goes on
    // in the same table row. The patient's relationship and dependant code
    // then stand in the second column behind the blank employer, and the
    // second subscriber's relationship label, a third cell in a table of
    // two columns, is not printed. Nothing of the patient's is lost that
    // way: with no second employer that label would head an empty box.
    t5 += "|Employeur: ";
  } else {
    t5 += std::string("|") + t.employer_label + ";";
  }
  // Relationship.
  t5 += t.relationship_label;
  if (!mode3)
    t5 += Cell(cf, pat, "Relationship") + TAB + TAB + "Dependant Code: " + Cell(cf, pat, "DependantCode");
  t5 += std::string("|") + t.relationship_label;
  if (show2) {
    t5 += Cell(cf, pat, "SecondaryRelationship") + TAB + TAB + "Dependant Code: " +
          Cell(cf, pat, "SecondaryDependantCode") + ";";
  } else {
    t5 += std::string(TAB) + TAB + "DependantCode:;";
  }

  // ---- Table 6: the patient's questions ----
  Variant school = pat["Schoolname"].Value();
  const std::string t6 =
      std::string(t.dob6) + FormDate(pat["BirthDate"].Value()) + CR + t.relationship6 +
      Cell(cf, pat, "Relationship") + CR + t.dependant6 + Cell(cf, pat, "DependantCode") + CR +
      t.child_line + (IsTrue(pat["Student"].Value()) ? "Yes" : "No") + t.handicap_mark + CR + CR +
      t.school_line +
      (school.IsNull() ? std::string("____________________") : Cell(cf, school)) + CR + CR +
      t.other_coverage +
      (r.InsuranceOfEmployer(second_employer_id) > 0 ? t.other_yes : t.other_no) +
      t.accident_question + "______" + CR + CR + t.denture_question + CR + CR + t.release_sentence +
      CR + "___________________________________" + TAB + "_____________" + CR +
      t.subscriber_signature + TAB + "Date;";

  // ---- Table 7: the policy holder's part ----
  const std::string t7 = std::string(t.date_line1) + CR + CR + t.date_line2 + CR + CR +
                         t.date_line3 + t.date_line4 + CR + CR + "____________________________" +
                         TAB + t.table7_second_line + CR + t.authorised_signature + TAB + TAB +
                         t.position_caption + ";";

  // ---- Table 8: where the claim goes ----
  // Only a patient with an employer; an employer without a valid insurer
  // fails here, since the first block is read without a test.
  std::string t8;
  if (has_primary) {
    t8 = InsurerCell(cf, insurer) + "|";
    db::Recordset insurer2;
    if (has_secondary)
      insurer2 = r.Open("SELECT * from InsuranceCompany where ID = " +
                        std::to_string(r.InsuranceOfEmployer(second_employer_id)));
    t8 += has_secondary && !insurer2.Eof() ? InsurerCell(cf, insurer2) + ";" : std::string(" ;");
  }

  // ---- Drawing ----
  // Lays the form out from the page set-up to the last box, its body after
  // the title in `body_pt` Tahoma, with `row_extra` added to the height of
  // every procedure row, and returns the page the last box ends on and the
  // room left under it there.
  const Twips pen_width = vsp.PenWidth();
  struct Drawn {
    int page;
    Twips room;
  };
  auto draw = [&](const std::string& procedure_rows, Twips row_extra, double body_pt) {
    // Page set-up.
    vsp.DocName(src.doc_name);
    vsp.Orientation(0);
    vsp.MarginLeft(Twips(720));
    vsp.MarginRight(Twips(720));
    vsp.MarginTop(Twips(720));
    vsp.MarginBottom(Twips(720));
    vsp.StartDoc();
    vsp.PenWidth(Twips(int64_t(pen_width.value() * 1.5)));
    vsp.TextAlign(7);
    vsp.FontName("Tahoma");
    vsp.FontSize(20);
    vsp.FontBold(true);
    vsp.Text(src.title);
    vsp.FontSize(8);

    // The foot line stands two heights of "X" above the bottom margin of
    // the last page, drawn by position after the tables. The tables flow
    // above it: their page ends where the foot line begins, so a long claim
    // carries its last boxes over with the foot line instead of running
    // them under it. The band is measured in the foot line's own 8 points
    // whatever the body's size. The margin the form was given comes back
    // for the foot line itself, and on the failure path too.
    const Twips margin_bottom = vsp.MarginBottom();
    struct RestoreMargin {
      frame::PrintSurface& vsp;
      Twips margin;
      ~RestoreMargin() { vsp.MarginBottom(margin); }
    } restore{vsp, margin_bottom};
    vsp.MarginBottom(margin_bottom + vsp.TextHeight("X") * 2.0);

    vsp.FontSize(body_pt);
    vsp.Text(" ");
    vsp.FontBold(false);

    vsp.TextAlign(7);
    vsp.StartTable();
    vsp.TableBorder(7);
    vsp.AddTable("<2in|<2in|^3.5in", t.table1_header, t1, kFormHeader);
    vsp.EndTable();

    vsp.TextAlign(7);
    vsp.StartTable();
    vsp.TableBorder(7);
    vsp.AddTable("<7.5in", "", consent);
    vsp.EndTable();

    if (!pred) {
      vsp.TextAlign(0);
      if (!predetermination_number.empty()) vsp.Text(predetermination_number);
      vsp.TextAlign(7);
      vsp.CurrentX(vsp.MarginLeft());
    }

    vsp.TextAlign(7);
    vsp.StartTable();
    vsp.TableBorder(7);
    const int columns = pred ? 4 : 5;
    if (pred)
      vsp.AddTable("<3in|^1in|^1in|>2.5in", t.table3_header, procedure_rows, kFormHeader);
    else
      vsp.AddTable("<2.5in|^1in|^1in|<1in|>2in", t.table3_header, procedure_rows, kFormHeader);
    vsp.TableCell(frame::tcRowBorderAbove, 0, 1, 0, columns) = 1;
    vsp.TableCell(frame::tcFontBold, 0, 1, 0, columns) = true;
    if (row_extra > Twips(0)) {
      // The paper form's eight lines take the extra height, half above and
      // half below their text; the lines of a longer claim after them take
      // no more paper than they need.
      const int ruled = std::min(8, int(vsp.TableCell(frame::tcRows).Number()));
      const double above = std::floor(row_extra.value() / 2);
      vsp.TableCell(frame::tcMarginTop, 1, 0, ruled, 0) = above;
      vsp.TableCell(frame::tcMarginBottom, 1, 0, ruled, 0) = row_extra.value() - above;
    }
    vsp.EndTable();

    vsp.StartTable();
    vsp.TableBorder(0);
    vsp.AddTable("<5in|>2.5in", "", total);
    vsp.TableCell(frame::tcRowBorderAbove, 1, 1, 1, 2) = 1;
    vsp.EndTable();
    vsp.Text(" ");

    vsp.StartTable();
    vsp.TableBorder(4);
    vsp.AddTable("<3.75in|<3.75in", t.table5_header, t5, kFormHeader);
    vsp.TableCell(frame::tcColSpan, 0, 1, 0, 2) = 2;
    SetCells(vsp, frame::tcColBorder, 1, 1, 10, 1, 1);
    SetCells(vsp, frame::tcFontBold, 0, 0, 1, 3, true);
    vsp.EndTable();

    vsp.StartTable();
    vsp.TableBorder(4);
    vsp.AddTable("<3.75in|<3.75in", "Patient Information", t6, kFormHeader);
    vsp.TableCell(frame::tcColSpan, 0, 1, 0, 2) = 2;
    vsp.EndTable();

    vsp.StartTable();
    vsp.TableBorder(4);
    vsp.AddTable("<3.75in|<3.75in", t.table7_header, t7, kFormHeader);
    vsp.TableCell(frame::tcColSpan, 0, 1, 0, 2) = 2;
    vsp.TableCell(frame::tcFontBold, 0, 1, 0, 2) = true;
    vsp.EndTable();

    if (has_primary) {
      vsp.TextAlign(4);
      vsp.StartTable();
      vsp.TableBorder(7);
      vsp.AddTable("<3.75in|<3.75in", t.table8_header, t8, kFormHeader);
      vsp.TableCell(frame::tcColSpan, 0, 1, 0, 1) = 2;
      vsp.EndTable();
    }
    return Drawn{vsp.CurrentPage(), vsp.PageHeight() - vsp.MarginBottom() - vsp.CurrentY()};
  };

  // The paper claim form's procedure box has eight ruled lines and fills
  // the page between the boxes above and below it, so that its ninth line
  // is the one that no longer fits. With our rows at their least height the
  // last box ends anywhere from 1,350 twips above the foot line to 1,450
  // below it: the room varies with the language, a predetermination
  // number, the insurers' box (only with an employer) and the length of the
  // notes, by more than any one line pitch could take up. So the form is
  // laid out once with its first eight procedure rows, and the room left on
  // the page is shared out among those eight: with eight lines or fewer the
  // boxes then reach the foot line, and a ninth line runs onto page 2 on
  // every variant.
  //
  // One sheet per claim comes before the 8-point body. The French form's
  // texts are longer and stay exactly as the insurers print them: in 8
  // points its procedure header and total row wrap to two lines, its
  // subscriber box has the doubled secondary holder's two rows and its
  // policy rows wrap, so with an employer or a predetermination number its
  // eight rows overrun the page even at their least height. Such a form is
  // laid out again with the whole body after the title a half point smaller
  // at a time, down to 7 points, and keeps the largest size at which its
  // eight rows fit. With an employer that is 7 points: at 7.5 it still
  // overruns, at 7 it keeps some 1,100 twips to spare with short notes. The
  // boxes keep their widths and proportions, the title and the foot line
  // their sizes. A claim of nine lines or more takes the size its first
  // eight fit at, so that its first page reads like an eight-line claim's.
  // A form that fits at none of these sizes (notes of half a page) is two
  // sheets whatever its size and prints in 8 points, carried over like a
  // long claim.
  //
  // The predetermination form has no ruled lines to fill, but the same
  // sheet: its French form with an employer overruns in 8 points at eight
  // proposed lines where the English one fits, so it takes the same sizes
  // by its first eight lines.
  double body_pt = 8;
  Drawn eight = draw(first_eight, Twips(0), body_pt);
  for (double smaller : {7.5, 7.0}) {
    if (eight.page == 1) break;
    eight = draw(first_eight, Twips(0), smaller);
    body_pt = eight.page == 1 ? smaller : 8;
  }
  const bool fits = eight.page == 1;
  const Twips extra(fits && !pred ? std::floor((eight.room.value() - 1) / 8) : 0.0);
  if (extra > Twips(0) || rows != first_eight || !fits) draw(rows, std::max(extra, Twips(0)), body_pt);

  // ---- Foot of the form ----
  // Two heights of "X" above the bottom margin of the last page.
  vsp.FontSize(8);
  vsp.TextAlign(0);
  vsp.CurrentX(vsp.MarginLeft());
  vsp.CurrentY(vsp.PageHeight() - vsp.MarginBottom() - vsp.TextHeight("X") - vsp.TextHeight("X"));
  vsp.InlineText(t.foot_line);
  vsp.EndDoc();
  vsp.PrintDoc(true);
}

void RunClaimForm(clsReports& r, const std::function<void()>& body) {
  r.Trap(kClaimFailure, [&] {
    try {
      body();
    } catch (...) {
      r.VSP().KillDoc();
      throw;
    }
  });
}

}  // namespace claims

int32_t clsReports::InsuranceOfEmployer(const Variant& EmployerID) {
  clsCommonFunctions& cf = Common();
  if (EmployerID.IsNull() || EmployerID.IsEmpty() || cf.returnStr(EmployerID).empty()) return 0;
  Variant id = EmployerID;
  if (cf.ReturnNumber(id) <= 0) return 0;
  db::Recordset rs = Open("Select InsuranceID FROM Employers WHERE ID = " + cf.returnStr(EmployerID));
  int32_t insurer = 0;
  if (!rs.Eof()) {
    Variant v = rs["InsuranceID"].Value();
    insurer = cf.ReturnNumber(v);
  }
  rs.Close();
  return insurer;
}

namespace {

void ClaimForm(clsReports& r, int32_t ID, int32_t CurrentOfficeID, int16_t InsuranceCompany,
               const claims::ClaimTexts& texts) {
  claims::RunClaimForm(r, [&] {
    clsCommonFunctions& cf = r.Common();
    claims::ClaimSource src;
    src.header = r.Open("Select * from Invoices where ID = " + std::to_string(ID));
    src.patient = r.Open("Select * from Patient where ID = " + cf.returnStr(src.header["PatientID"].Value()));
    // A supervised invoice is claimed under the overseer.
    Variant overseer = src.header["OverseerID"].Value();
    Variant dentist = cf.ReturnNumber(overseer) >= 1 ? src.header["OverseerID"].Value()
                                                     : src.header["ProviderID"].Value();
    src.employee = r.Open(
        "Select ID, [Professional Title], FirstName, LastName, [CDA#] from Employees where ID = " +
        cf.returnStr(dentist));
    src.lines = r.Open("SELECT * FROM InvoiceDetails WHERE InvoiceID = " +
                       cf.returnStr(src.header["ID"].Value()) + " ORDER BY ID");
    src.doc_name = "Claim Form For Invoice# " + cf.returnStr(src.header["Invoice#"].Value());
    // The form's title is the same on the French form: insurers file it
    // under this name in both languages.
    src.title = "Dental Claim Form";
    switch (InsuranceCompany) {
      case 0: case 3: src.assignment_field = "IsAssignment"; break;
      case 1: src.assignment_field = "IsSecondaryAssignment"; break;
      case 2: src.assignment_field = "IsTertiaryAssignment"; break;
      default: break;  // no column: reading it fails the form
    }
    src.notes_field = "InsuranceNotes";
    src.office_id = CurrentOfficeID;
    src.mode = InsuranceCompany;
    claims::PrintClaimForm(r, src, texts);
  });
}

}  // namespace

void clsReports::rptClaimForm(int32_t ID, int32_t CurrentOfficeID, int16_t InsuranceCompany) {
  const db::Snapshot snapshot(conn_, db::Snapshot::OnFailure::RunWithout);
  ClaimForm(*this, ID, CurrentOfficeID, InsuranceCompany, claims::EnglishClaimTexts());
}

void clsReports::rptClaimFormF(int32_t ID, int32_t CurrentOfficeID, int16_t InsuranceCompany) {
  const db::Snapshot snapshot(conn_, db::Snapshot::OnFailure::RunWithout);
  ClaimForm(*this, ID, CurrentOfficeID, InsuranceCompany, claims::FrenchClaimTexts());
}

}  // namespace orv

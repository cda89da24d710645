// The wording of a patient statement in English and in French. A statement
// speaks the language of the person it is addressed to (Patient.Language
// "F" for French); everything else on the page follows the same choice.
#pragma once

namespace orv::statements {

struct StatementWords {
  const char* title;
  // Table headers without and with the insurance columns.
  const char* header_plain;
  const char* header_insurance;
  const char* opening;
  const char* totals;
  // "Current ... Balance as of " for a family and for one patient.
  const char* family_balance;
  const char* patient_balance;
  const char* family_payment_ytd;
  const char* patient_payment_ytd;
  const char* family_insurance_ytd;
  const char* patient_insurance_ytd;
  const char* post_dated_heading;
  const char* post_dated_header;
  const char* in_progress_heading;
  const char* in_progress_header;
  const char* appointments_heading;
  // The summary box laid over the first page.
  const char* summary_header;
  const char* summary_family;
  const char* summary_insurance;
  const char* summary_total;
};

inline constexpr StatementWords kEnglish = {
    "Detailed Statement",
    "Date|Description|Amount|Balance",
    "Date|Description|Amount|Insurance\nPortion|Patient\nPortion|Insurance\nBalance|Patient\nBalance",
    "|Opening Balance|",
    "|Patient Totals|",
    "Current Family Balance as of ",
    "Current Balance as of ",
    "Family Payment YTD ",
    "Patient Payment YTD ",
    "Family Insurance Payment YTD ",
    "Patient Insurance Payment YTD ",
    "Post Dated Payments on Hand",
    "Date|Description|Amount",
    "Treatments in Progress",
    "Date|Patient|Description|Amount",
    "Upcoming Family Appointments",
    "Summary",
    "Family Balance|",
    "Ins. Balance|",
    "Total Balance|",
};

// The insurance header's last three cells and the two section headings that
// have no French wording of long standing are given plain French here.
inline constexpr StatementWords kFrench = {
    "État de Compte Détailer",
    "Date|Description|Honoraire du dentiste|Solde",
    "Date|Description|Honoraire du dentiste|Honoraire d'assurance|Portion du\nPatient|Solde "
    "d'Assurance|Solde du\nPatient",
    "|Solde Commencement|",
    "|Totals du Patient|",
    "Solde du famille a le moment ",
    "Solde a le moment ",
    "Les paiements au famille dans cette anné ",
    "Les paiements au Client dans cette anné ",
    "Les paiements au famille insurance dans cette anné ",
    "Les paiements au Client Insurance dans cette anné ",
    "Paiements postdatés en main",
    "Date|Description|Somme",
    "Traitements en cours",
    "Date|Patient|Description|Somme",
    "Appointments du Famille en le Futur",
    "Résumé",
    "Solde du Famille|",
    "Solde d'Assurance|",
    "Solde Total|",
};

}  // namespace orv::statements

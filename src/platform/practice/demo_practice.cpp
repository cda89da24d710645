#include "platform/practice/demo_practice.h"
#include "platform/practice/employee_types.h"

#include <sqlite3.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <memory>

#include "platform/practice/png.h"
#include "platform/practice/random.h"
#include "platform/practice/row_writer.h"

namespace orv::practice {
namespace {

// The first n characters of UTF-8 text: names such as "Noémie" must not be
// cut inside a letter, which would leave bytes no database takes as text.
std::string Initials(const std::string& text, size_t n) {
  size_t at = 0;
  for (size_t chars = 0; at < text.size() && chars < n; ++chars) {
    ++at;
    while (at < text.size() && (static_cast<unsigned char>(text[at]) & 0xC0) == 0x80) ++at;
  }
  return text.substr(0, at);
}

// ---- Calendar: days since 1970-01-01 ------------------------------------

int64_t DaysFromCivil(int y, int m, int d) {
  y -= m <= 2;
  const int64_t era = (y >= 0 ? y : y - 399) / 400;
  const int64_t yoe = y - era * 400;
  const int64_t doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
  const int64_t doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + doe - 719468;
}

void CivilFromDays(int64_t z, int& y, int& m, int& d) {
  z += 719468;
  const int64_t era = (z >= 0 ? z : z - 146096) / 146097;
  const int64_t doe = z - era * 146097;
  const int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const int64_t mp = (5 * doy + 2) / 153;
  d = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
  m = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
  y = static_cast<int>(yoe + era * 400 + (m <= 2));
}

// 0 = Sunday ... 6 = Saturday.
int WeekdayOf(int64_t day) { return static_cast<int>(((day % 7) + 11) % 7); }

// 'YYYY-MM-DD HH:MM:SS', minutes after midnight for the time.
std::string Iso(int64_t day, int minutes = 0) {
  int y, m, d;
  CivilFromDays(day, y, m, d);
  char buf[64];
  std::snprintf(buf, sizeof buf, "%04d-%02d-%02d %02d:%02d:00", y, m, d, minutes / 60,
                minutes % 60);
  return buf;
}

// "08:30 AM": the text times of the weekday hours.
std::string TextTime(int minutes) {
  int h = minutes / 60 % 12;
  if (h == 0) h = 12;
  char buf[32];
  std::snprintf(buf, sizeof buf, "%02d:%02d %s", h, minutes % 60, minutes < 720 ? "AM" : "PM");
  return buf;
}

const char* const kWeekdayNames[] = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                     "Thursday", "Friday", "Saturday"};

// ---- Invented names and places ------------------------------------------

const char* const kLastNames[] = {
    "Ashgrove", "Bellwether", "Calloway", "Dunmore",  "Everly",   "Fairbairn", "Galloway",
    "Hartwell", "Inglis",     "Jessop",   "Kettering", "Lindgren", "Marchetti", "Northcott",
    "Okonedo",  "Pemberton",  "Quenneville", "Rowntree", "Sutcliffe", "Thackeray", "Underhill",
    "Vance",    "Whitlock",   "Yardley",  "Zeller",   "Abernathy", "Brightwater", "Castellan",
    "Dorsey",   "Ellison",    "Fenwick",  "Greaves",  "Holloway", "Ivanova",   "Kowalczyk",
    "Nakagawa", "O'Donnell",  "Patel",    "Raghavan", "Sorensen", "Tremaine",  "Wexford"};
const char* const kFrenchLastNames[] = {
    "Beauchemin", "Charbonneau", "Desrosiers", "Lafleur",  "Marchand", "Ouellette",
    "Pelletier",  "Rochefort",   "Thibodeau",  "Vaillancourt", "Brassard", "Lévesque"};
const char* const kMaleNames[] = {"Adrian", "Bennett", "Callum", "Dmitri", "Elliot", "Farid",
                                  "Graham", "Hugo",    "Isaac",  "Jonah",  "Kieran", "Lucas",
                                  "Marcus", "Nolan",   "Owen",   "Rohan",  "Silas",  "Tobias"};
const char* const kFemaleNames[] = {"Abigail", "Beatrix", "Celeste", "Daphne", "Elena", "Freya",
                                    "Greta",   "Harriet", "Imogen",  "Juno",   "Keira", "Lydia",
                                    "Maren",   "Nadia",   "Odette",  "Priya",  "Rosalind", "Talia"};
const char* const kFrenchMale[] = {"Étienne", "Gaston", "Jacques", "Mathieu", "Rémi", "Yves"};
const char* const kFrenchFemale[] = {"Amélie", "Brigitte", "Élise", "Geneviève", "Mireille",
                                     "Solène"};
const char* const kStreets[] = {"Alder Lane",    "Birchmount Rd", "Cobblestone Cres",
                                "Driftwood Ave", "Elmridge Dr",   "Foxglove St",
                                "Greenhollow Rd", "Heron Way",    "Ironwood Blvd",
                                "Juniper Crt",   "Kestrel St",    "Larkspur Ave"};
const char* const kRues[] = {"rue des Érables", "rue du Moulin", "boul. des Pins",
                             "rue Champlain-Ouest", "ch. de la Colline"};

struct Town {
  const char* city;
  const char* prov;
  const char* postal_prefix;
  const char* area;
};
const Town kOntarioTowns[] = {{"Ottawa", "ON", "K1", "613"},   {"Nepean", "ON", "K2", "613"},
                              {"Kanata", "ON", "K2", "613"},   {"Orleans", "ON", "K4", "613"},
                              {"Kingston", "ON", "K7", "613"}, {"Toronto", "ON", "M4", "416"}};
const Town kQuebecTowns[] = {{"Gatineau", "QC", "J8", "819"}, {"Aylmer", "QC", "J9", "819"},
                             {"Chelsea", "QC", "J9", "819"}};

// ---- Fee codes ------------------------------------------------------------

struct Code {
  const char* id;
  const char* description;
  const char* lay;  // nullptr: no plain wording (the report falls back)
  int type;
  int fee_cents;
  int minutes;
};

const Code kCodes[] = {
    {"00090", "Interest on overdue account", "Interest charge", 0, 0, 0},
    {"01101", "Examination, complete, primary dentition", "Complete check-up (child)", 1, 9800, 30},
    {"01102", "Examination, complete, mixed dentition", "Complete check-up", 1, 10500, 30},
    {"01103", "Examination, complete, permanent dentition",
     "Full check-up of teeth, gums, bite and the soft tissues of the mouth", 1, 12400, 45},
    {"01202", "Examination, recall", "Regular check-up", 1, 4200, 15},
    {"01205", "Examination, emergency", "Emergency visit", 1, 5800, 20},
    {"01400", "Follow-up visit", "Follow-up visit", 1, 3100, 15},
    {"02102", "Radiographs, periapical, two films", "X-rays (2)", 1, 3200, 10},
    {"02202", "Radiographs, bitewing, two films", "Bitewing X-rays", 1, 3400, 10},
    {"11101", "Scaling, one unit", "Cleaning (1 unit)", 2, 5900, 15},
    {"11102", "Scaling, two units", "Cleaning (2 units)", 2, 11800, 30},
    {"11111", "Polishing, one unit", nullptr, 2, 4100, 15},
    {"13211", "Oral hygiene instruction", "Home care instruction", 2, 3600, 15},
    {"13401", "Fluoride treatment", "Fluoride", 2, 2500, 10},
    {"21211", "Amalgam, one surface, permanent", "Silver filling (1 surface)", 3, 11900, 30},
    {"23311", "Composite, one surface, anterior", "White filling (1 surface)", 3, 14500, 30},
    {"23312", "Composite, two surfaces, anterior", "White filling (2 surfaces)", 3, 18900, 45},
    {"27201", "Crown, porcelain fused to metal", "Crown", 6, 118000, 90},
    {"32221", "Root canal, two canals", "Root canal treatment", 4, 92000, 90},
    {"43421", "Periodontal therapy, one unit", "Gum treatment", 5, 8800, 30},
    {"43612", "Occlusal guard", "Night guard", 6, 52000, 30},
    {"71101", "Extraction, erupted tooth", "Tooth removal", 7, 16500, 30},
    {"97123", "Tooth whitening", "Whitening", 8, 45000, 60},
    {"99111", "Laboratory fee, crown", "Lab fee", 9, 0, 0},
    {"99222", "Laboratory fee, appliance", "Lab fee (appliance)", 9, 0, 0},
    {"-00100", "Reversal of examination", nullptr, 0, 0, 0},
    {"-99111", "Laboratory fee reversal", nullptr, 9, 0, 0},
    {"00100", "Examination, limited", "Short check-up", 1, 3500, 15},
    {"-01101", "Reversal of complete examination, primary dentition", nullptr, 1, 0, 0},
};

const Code& CodeById(const std::string& id) {
  for (const auto& c : kCodes)
    if (id == c.id) return c;
  return kCodes[0];
}

// Fixed keys of the reference rows.
enum PaymentType : int {
  kCash = 1,
  kCheque,
  kVisa,
  kDebit,
  kInsuranceCheque,
  kInsuranceBulk,
  kWriteOff,
  kCourtesy,
  kNsf,
  kRefund,
  kReEntry,
  kPaymentTypeCount = kReEntry
};

struct Employee {
  int64_t id;
  int type;
  std::string first, last;
  int start, end;  // minutes, weekdays
  bool hourly;
};

struct Person {
  int64_t id;
  std::string first, last, full;
  int64_t birth;
  bool adult;
  bool french;
};

struct Line {
  int64_t id;
  int64_t patient_cents, ins1_cents, ins2_cents;
  int64_t patient_paid = 0, ins1_paid = 0, ins2_paid = 0;
};

struct Insurer {
  int64_t id;
  std::string name, cda;
};

class Generator {
 public:
  Generator(sqlite3* db, const DemoOptions& o)
      : db_(db), o_(o), rng_(o.seed * 0x2545F4914F6CDD1Dull + 17) {
    today_ = DaysFromCivil(o.today_year, o.today_month, o.today_day);
    today_day_ = o.today_day;
    start_ = today_ - 365 * o.history_years;
  }

  DemoSummary Run() {
    Open();
    Offices();
    Lookups();
    Insurance();
    Fees();
    Staff();
    Patients();
    ClosingMonths();
    Bulk();
    Compensation();
    ClaimsAndPlans();
    ReferralHistory();
    AppointmentBook();
    MonthlyVariety();
    LongClaim();
    DemoSummary s;
    s.patients = w_["Patient"]->rows();
    s.invoices = w_["Invoices"]->rows();
    s.payments = w_["InvoicePayments"]->rows();
    s.appointments = w_["PatientAppointments"]->rows();
    for (auto& [name, writer] : w_) s.rows += writer->rows();
    return s;
  }

 private:
  RowWriter& W(const char* table) { return *w_.at(table); }
  int producers_with_criteria_ = 0;

  void Open() {
    for (const auto& t : Tables()) w_[t.name] = std::make_unique<RowWriter>(db_, t.name);
  }

  std::string Digits(int n) {
    std::string s;
    for (int i = 0; i < n; ++i) s += static_cast<char>('0' + rng_.Range(0, 9));
    return s;
  }
  std::string Phone(const char* area) { return std::string(area) + "555" + Digits(4); }
  std::string Postal(const char* prefix) {
    static const char kLetters[] = "ABCEGHJKLMNPRSTVXY";
    std::string p = prefix;
    p += kLetters[rng_.Range(0, 17)];
    p += ' ';
    p += static_cast<char>('0' + rng_.Range(0, 9));
    p += kLetters[rng_.Range(0, 17)];
    p += static_cast<char>('0' + rng_.Range(0, 9));
    return p;
  }

  // ---- Offices, accounts, payment types ----------------------------------

  void Offices() {
    static const char* const kNames[] = {"Cedar Ridge Dental Centre", "Riverside Dental Studio",
                                         "Clinique dentaire du Ruisseau"};
    offices_ = static_cast<int>(rng_.Range(1, 3));
    for (int i = 1; i <= offices_; ++i) {
      const bool quebec = i == 3;
      const Town& t = quebec ? kQuebecTowns[0] : kOntarioTowns[i - 1];
      auto& r = W("OfficeInformation");
      r.Int("ID", i)
          .Text("Name", kNames[i - 1])
          .Text("Street", std::to_string(100 + 110 * i) + " " + kStreets[i + 2])
          .Text("Street2", "Suite " + std::to_string(200 + i))
          .Text("City", t.city)
          .Text("Province", t.prov)
          .Text("PostalCode", Postal(t.postal_prefix))
          .Text("Phone", Phone(t.area))
          .Text("PhoneExt", std::to_string(10 + i))
          .Text("Fax", Phone(t.area))
          .Text("Www", "www.example.org/office" + std::to_string(i))
          .Text("EmailAddress", "desk" + std::to_string(i) + "@example.org")
          .Blob("Logo", Logo(i))
          .Text("InvoiceHeader", "Thank you for choosing our practice.")
          .Text("InvoiceFooter", "Payment is due on the date of service. We accept cash, "
                                 "cheque, debit and credit cards.")
          .Text("StatementFooter", "Accounts over 30 days bear interest at 1.5% per month.")
          .Text("Message", "Closed December 24 to 26.")
          .Text("LaypersonHeader", "The treatment below has been recommended for you.")
          .Int("UnitMinutes", i == 2 ? 15 : 10)
          .Int("HideFinancial", i == 2 ? 1 : 0)
          .Text("ReferralLetter", "Thank you for your confidence in our practice. We will "
                                  "send you our findings after the consultation.")
          .Text("RefferalLetterBody", "Thank you for recommending us to your friends and "
                                      "family. Referrals are the greatest compliment.")
          .Text("ConfirmationPolicyText", "We confirm appointments two days ahead by phone.")
          .Text("BillingPolicyText", "Payment is expected at the time of treatment.")
          .Text("BillingOverCoveragePolicyText",
                "Fees above your plan's coverage are your responsibility.")
          .Text("ReschedulePolicyText", "Please give us 48 hours notice to reschedule.");
      for (int d = 0; d < 7; ++d) {
        // Weekdays 8 to 5; the first office also opens weekend mornings.
        const bool weekend = d == 0 || d == 6;
        if (!weekend || i == 1) {
          r.Text(std::string("HourFrom") + kWeekdayNames[d], TextTime(weekend ? 540 : 480));
          r.Text(std::string("HourTo") + kWeekdayNames[d], TextTime(weekend ? 780 : 1020));
        }
      }
      r.Insert();
      // The second office bills no hygiene company: its monitor asks for
      // the codes to be set up.
      if (i == 2) continue;
      auto& h = W("OfficeHygieneCompanyCodes");
      h.Int("OfficeID", i).Text("Startcode", "11000").Text("EndCode", "11999").Insert();
      h.Int("OfficeID", i).Text("Startcode", "13000").Text("EndCode", "13999").Insert();
    }
    static const char* const kAccounts[] = {"Operating", "Payroll", "Savings"};
    for (int i = 1; i <= 3; ++i)
      W("Accounts")
          .Int("ID", i)
          .Text("Name", kAccounts[i - 1])
          .Text("AccountNumber", Digits(7))
          .Text("TransitNumber", "0" + Digits(4))
          .Insert();
    struct PT {
      const char* name;
      const char* description;
      int adj, to_paid, bank, refund, office, bulk, rec_after, nsf;
    };
    // [Adjustment?] is 1 or -1 as the office set it up; both occur.
    static const PT kTypes[] = {
        {"Cash", "Cash", 0, 0, 1, 0, 0, 0, 0, 0},
        {"Cheque", "Personal cheque", 0, 0, 1, 0, 0, 0, 0, 0},
        {"Visa", "Credit card", 0, 0, 0, 0, 0, 0, 0, 0},
        {"Debit", "Debit card", 0, 0, 1, 0, 0, 0, 0, 0},
        {"Insurance Cheque", "Cheque from an insurer", 0, 0, 1, 0, 0, 0, 0, 0},
        {"Insurance EFT", "Insurer deposit over several patients", 0, 0, 0, 0, 0, 1, 0, 0},
        {"Write-off", "Office write-off of a small balance", 1, 0, 0, 0, 1, 0, 0, 0},
        {"Courtesy", "Courtesy adjustment", -1, 1, 0, 0, 0, 0, 0, 0},
        {"NSF", "Cheque returned for insufficient funds", 1, 1, 1, 0, 0, 0, 0, 1},
        {"Refund", "Credit paid back to the patient", 1, 1, 0, 1, 0, 0, 0, 0},
        {"Re-entry", "Payment entered again after the deposit", 0, 0, 1, 0, 0, 0, 1, 0},
    };
    for (int i = 0; i < kPaymentTypeCount; ++i) {
      const PT& p = kTypes[i];
      W("PaymentTypes")
          .Int("ID", i + 1)
          .Text("Name", p.name)
          .Text("Description", p.description)
          .Int("Adjustment?", p.adj)
          .Int("ToTotalPaid?", p.to_paid)
          .Int("BankDeposit", p.bank)
          .Int("Refund", p.refund)
          .Int("OfficePayment", p.office)
          .Int("BulkPayment", p.bulk)
          .Int("RecAfterDep", p.rec_after)
          .Int("NSF", p.nsf)
          .Insert();
    }
    // Monthly expenses.
    for (int64_t d = start_; d <= today_; d += 30)
      for (int a = 1; a <= 2; ++a)
        W("AccountsPayable")
            .Int("AccountID", a)
            .Text("Date", Iso(d))
            .Cents("Amount", rng_.Range(80000, 900000))
            .Insert();
  }

  std::vector<uint8_t> Logo(int office) {
    const int w = 32, h = 16;
    std::vector<uint8_t> rgb(w * h * 3);
    for (int y = 0; y < h; ++y)
      for (int x = 0; x < w; ++x) {
        uint8_t* p = &rgb[(y * w + x) * 3];
        const bool tooth = (x - 16) * (x - 16) / 4 + (y - 7) * (y - 7) < 30 - office;
        p[0] = tooth ? 250 : static_cast<uint8_t>(20 + 60 * office);
        p[1] = tooth ? 250 : static_cast<uint8_t>(90 + 8 * y);
        p[2] = tooth ? 250 : static_cast<uint8_t>(140 + 3 * x);
      }
    return EncodePng(w, h, rgb);
  }

  void Lookups() {
    static const char* const kCats[] = {"Adult", "Child", "Senior", "Student"};
    for (int i = 0; i < 4; ++i)
      W("Patientcategories").Int("ID", i + 1).Text("Name", kCats[i]).Insert();
    static const char* const kAlerts[] = {"Latex allergy", "Anxious patient", "Hard of hearing",
                                          "Needs wheelchair access", "Penicillin allergy"};
    for (int i = 0; i < 5; ++i) W("ListAlerts").Int("ID", i + 1).Text("Name", kAlerts[i]).Insert();
    struct Cat {
      const char* name;
      int colour;
    };
    static const Cat kCatsP[] = {{"Exam", 0xFF8080}, {"Hygiene", 0x80FF80}, {"Restorative", 0x8080FF},
                                 {"Crown and bridge", 0xFFC000}, {"Emergency", 0x0000FF},
                                 {"Consultation", 0xC0C0C0}};
    for (int i = 0; i < 6; ++i)
      W("ProcedureCategories")
          .Int("ID", i + 1)
          .Text("Name", kCatsP[i].name)
          .Int("Colour", kCatsP[i].colour)
          .Insert();
    static const char* const kReasons[] = {"Decay", "Fracture", "Worn restoration", "Infection",
                                           "Gum disease"};
    for (int i = 0; i < 5; ++i) W("Reasons").Int("ID", i + 1).Text("Name", kReasons[i]).Insert();
  }

  void Insurance() {
    static const char* const kNetworks[] = {"Claimlink", "Dentanet Direct"};
    for (int i = 0; i < 2; ++i) W("EDINetworks").Int("ID", i + 1).Text("Name", kNetworks[i]).Insert();
    static const char* const kInsurers[] = {"Maplecrest Life",     "Northern Harbour Mutual",
                                            "Prairie Shield",      "Laurentian Assurance",
                                            "Bluewater Benefits",  "Granite Trust Health"};
    for (int i = 0; i < 6; ++i) {
      const Town& t = i == 3 ? kQuebecTowns[0] : kOntarioTowns[(i * 2) % 6];
      Insurer ins{i + 1, kInsurers[i], "0000" + std::to_string(10 + i)};
      auto& r = W("InsuranceCompany");
      r.Int("ID", ins.id)
          .Text("CompanyName", ins.name)
          .Text("Street", std::to_string(1 + i * 17) + " " + kStreets[i])
          .Text("City", t.city)
          .Text("Prov", t.prov)
          .Text("PostalCode", Postal(t.postal_prefix))
          .Text("Phone", "800555" + Digits(4))
          .Text("CDA#", ins.cda)
          .Text("BillingProviderNumber", "BP" + Digits(5))
          .Text("Notes", i % 2 ? "Claims by EDI only" : "Send paper claims to the claims unit");
      if (i % 3 == 1) r.Text("Street2", "Floor " + std::to_string(i + 2));
      if (i != 5) r.Int("NetworkID", 1 + i % 2);
      if (i % 2) r.Text("PhoneExt", std::to_string(100 + i));
      if (i % 2 == 0) r.Text("Country", "Canada");
      r.Insert();
      insurers_.push_back(ins);
    }
    static const char* const kEmployers[] = {
        "Cobalt Widget Works",  "Bytown Transit Co-op", "Fernleaf Bakery",
        "Quarry Hill Software", "Tamarack School Board", "Glenora Logistics",
        "Papeterie Boréale",    "Silver Birch Hospital"};
    for (int i = 0; i < 8; ++i) {
      const Town& t = i == 6 ? kQuebecTowns[1] : kOntarioTowns[i % 6];
      auto& r = W("Employers");
      r.Int("ID", i + 1)
          .Text("Name", kEmployers[i])
          .Text("Street", std::to_string(20 + i * 31) + " " + kStreets[(i + 5) % 12])
          .Text("City", t.city)
          .Text("Prov", t.prov)
          .Text("PostalCode", Postal(t.postal_prefix))
          .Text("Phone", Phone(t.area))
          .Text("Policy#", "G" + Digits(6))
          .Text("Notes", "Group plan renews in January")
          .Int("EDI?", i % 3 ? 1 : 0)
          .Int("InsuranceID", 1 + i % 6);
      if (i % 2) r.Text("Street2", "Unit " + std::to_string(i));
      if (i % 3 == 0) r.Text("PhoneExt", std::to_string(200 + i));
      if (i % 2 == 0) r.Text("DivisionNumber", "D" + Digits(3));
      r.Insert();
    }
    static const char* const kDentists[][3] = {
        {"Dr.", "Amara", "Osei-Lindqvist"}, {"Dr.", "Victor", "Halloran"},
        {"Dr.", "Helene", "Roybal"},       {"Dr.", "Samir", "Quaresma"}};
    for (int i = 0; i < 4; ++i) {
      const Town& t = kOntarioTowns[i];
      auto& r = W("ReferringDentists");
      r.Int("ID", i + 1)
          .Text("Title", kDentists[i][0])
          .Text("Name", kDentists[i][1])
          .Text("LastName", kDentists[i][2])
          .Text("Phone", Phone(t.area))
          .Text("Street", std::to_string(10 + i) + " " + kStreets[i + 4])
          .Text("City", t.city)
          .Text("Prov", t.prov)
          .Text("Postal", Postal(t.postal_prefix));
      if (i == 1) r.Text("Street2", "Unit 4");
      r.Insert();
    }
    // The two rows the referral repair keeps up.
    W("ReferringDentists").Int("ID", 5).Text("Name", "Deleted").Text("LastName", "Referring Dentist").Insert();
    W("ReferringDentists").Int("ID", 6).Text("Name", "No Referring").Text("LastName", "Dentist").Insert();
  }

  void Fees() {
    for (const auto& c : kCodes) {
      auto& r = W("FeeCodes");
      r.Text("ID", c.id).Text("Description", c.description).Int("Type", c.type);
      if (c.lay) r.Text("LayPersonDescription", c.lay);
      r.Insert();
    }
    int y, m, d;
    CivilFromDays(today_, y, m, d);
    W("FeeGuides").Int("ID", 1).Text("Name", "General practice " + std::to_string(y)).Insert();
    W("FeeGuides").Int("ID", 2).Text("Name", "Specialist " + std::to_string(y)).Insert();
    for (const auto& c : kCodes) {
      if (c.id[0] == '-') continue;
      W("FeeGuideDetails").Int("FeeGuideID", 1).Text("FeeCodeID", c.id).Cents("Amount", c.fee_cents).Insert();
      if (c.fee_cents > 50000)
        W("FeeGuideDetails")
            .Int("FeeGuideID", 2)
            .Text("FeeCodeID", c.id)
            .Cents("Amount", c.fee_cents * 115 / 100)
            .Insert();
    }
  }

  // ---- Staff -------------------------------------------------------------

  void Staff() {
    // The placeholder row that the lists leave out by its "(None)".
    W("Employees").Int("ID", 1).Text("LastName", "None").Text("FirstName", "(None)")
        .Text("FullName", "(None)").Int("TypeID", 0).Int("Active", 1).Insert();
    struct Role {
      int type;
      const char* title;
      bool hourly;
      int commission;
    };
    // The types of employee_types.h; specialists are 12 and above.
    const Role roles[] = {{kTypeDentist, "Dr.", false, 0},        {kTypeAssociate, "Dr.", false, 40},
                          {kTypeDentist, "Dr.", false, 0},        {kTypeHygienist, "RDH", true, 0},
                          {kTypeHygienist, "RDH", true, 0},       {kTypeHygienist, "RDH", true, 0},
                          {kTypeSpecialist, "Dr.", false, 45},    {kTypeSpecialist + 2, "Dr.", true, 0},
                          {kTypeOfficeManager, "", false, 0},     {kTypeAssistant, "CDA", true, 0},
                          {kTypeAssistant, "CDA", true, 0},       {kTypeFrontDesk, "", true, 0},
                          {kTypeFrontDesk, "", true, 0},          {kTypeSpecialist + 1, "Dr.", false, 35}};
    const int count = static_cast<int>(rng_.Range(8, 14));
    for (int i = 0; i < count; ++i) {
      const Role& role = roles[i];
      const bool female = rng_.Percent(55);
      Employee e{i + 2, role.type, female ? rng_.Pick(kFemaleNames) : rng_.Pick(kMaleNames),
                 rng_.Pick(kLastNames), 480 + 30 * static_cast<int>(rng_.Range(0, 2)), 0,
                 role.hourly};
      e.end = e.start + 480 + 30 * static_cast<int>(rng_.Range(0, 2));
      const bool producer = role.type == kTypeDentist || role.type == kTypeHygienist ||
                            role.type == kTypeAssociate || role.type >= kTypeSpecialist;
      auto& r = W("Employees");
      r.Int("ID", e.id)
          .Text("LastName", e.last)
          .Text("FirstName", e.first)
          .Text("FullName", e.first + " " + e.last)
          .Int("TypeID", role.type)
          .Text("Symbol", Initials(e.first, 1) + Initials(e.last, 1))
          .Text("UserName", e.first + std::to_string(e.id))
          .Int("Commission", role.commission)
          .Cents("TargetIncomePerDay", producer ? 250000 : 0)
          .Cents("TargetIncomePerHour", producer ? 32000 : 0);
      if (*role.title) r.Text("Professional Title", role.title);
      if (producer) {
        r.Text("ChairID", "Op" + std::to_string(1 + i % 6))
            .Text("Reg#", "R-" + Digits(4))
            .Cents("BillRate", role.type == kTypeHygienist ? 9500 : 22000);
        if (role.type != 5) r.Text("CDA#", Digits(6));
      }
      // Active: NULL, 1 and -1 all mean active; one specialist has left.
      if (i == count - 1 && role.type >= kTypeSpecialist) r.Int("Active", 0);
      else if (i % 4 == 1) r.Int("Active", -1);
      else if (i % 4 != 3) r.Int("Active", 1);
      if (role.hourly) r.Cents("PayRate", role.type == kTypeHygienist ? 4250 : 2400 + 100 * i);
      if (role.type == kTypeOfficeManager) r.Cents("Salary", 6200000);
      // The first dentist also takes the weekend mornings of the first office.
      const int first_day = i == 0 ? 0 : 1, last_day = i == 0 ? 6 : 5;
      for (int d = first_day; d <= last_day; ++d) {
        if (role.type >= kTypeSpecialist && d % 2 == 0) continue;  // specialists visit three days
        r.Text(std::string(kWeekdayNames[d]) + "From", TextTime(e.start));
        r.Text(std::string(kWeekdayNames[d]) + "to", TextTime(e.end));
        r.Text(std::string("LunchFrom") + kWeekdayNames[d], TextTime(720));
        r.Text(std::string("Lunchto") + kWeekdayNames[d], TextTime(780));
      }
      r.Insert();
      staff_.push_back(e);
      if (producer) {
        for (const auto& ins : insurers_)
          W("EmployeeBPN").Int("EmployeeID", e.id).Int("InsuranceID", ins.id).Text("BPN", Digits(9)).Insert();
        ReferralCriteria(e.id, rng_.Range(1, 3));
      }
      if (role.commission > 0 || (role.type == kTypeDentist && i == 0)) {
        auto& s = W("EmployeeCodeSplit");
        s.Int("EmployeeID", e.id).Text("StartCode", "20000").Text("EndCode", "39999").Text("Amount", "40%").Insert();
        s.Int("EmployeeID", e.id).Text("StartCode", "99000").Text("EndCode", "99999").Text("Amount", "$50").Insert();
      }
      Days(e);
    }
    for (const auto& e : staff_) {
      if (e.type == kTypeDentist || e.type == kTypeAssociate) dentists_.push_back(e.id);
      if (e.type == kTypeHygienist) hygienists_.push_back(e.id);
      if (e.type >= kTypeSpecialist) specialists_.push_back(e.id);
      if (e.type == kTypeAssistant || e.type == kTypeFrontDesk || e.type == kTypeOfficeManager) desk_.push_back(e.id);
    }
    if (hygienists_.empty()) hygienists_ = dentists_;
    if (desk_.empty()) desk_.push_back(2);
    // Memos between staff; DestinationID 0 is everybody.
    for (int i = 0; i < 24; ++i) {
      auto& r = W("Memos");
      const int64_t day = today_ - rng_.Range(-20, 60);
      r.Int("EmployeeID", staff_[i % staff_.size()].id)
          .Int("DestinationID", i % 3 == 0 ? 0 : staff_[(i * 5 + 1) % staff_.size()].id)
          .Text("Date", Iso(day - 7))
          .Text("DueDate", Iso(day))
          .Int("Importance", i % 3);
      if (i % 5 != 4) r.Text("Message", i % 2 ? "Order more gloves and masks" : "Staff meeting Friday at noon");
      r.Insert();
    }
  }

  // Holidays, special days and the time clock of one employee.
  void Days(const Employee& e) {
    for (int64_t y0 = start_; y0 < today_ + 60; y0 += 365) {
      const int64_t from = y0 + rng_.Range(150, 220);
      W("EmployeeHolidays").Int("EmployeeID", e.id).Text("FromDate", Iso(from)).Text("ToDate", Iso(from + 9)).Insert();
      const int64_t part = y0 + rng_.Range(30, 120);
      W("EmployeeHolidays")
          .Int("EmployeeID", e.id)
          .Text("FromDate", Iso(part))
          .Text("ToDate", Iso(part))
          .Int("FromTime", 780)
          .Int("ToTime", e.end)
          .Insert();
      int64_t sat = y0 + rng_.Range(250, 300);
      sat += (6 - WeekdayOf(sat) + 7) % 7;
      W("EmployeeSpecialDays")
          .Int("EmployeeID", e.id)
          .Text("StartDate", Iso(sat))
          .Text("EndDate", Iso(sat))
          .Int("StartTime", 540)
          .Int("EndTime", 780)
          .Insert();
    }
    if (!e.hourly) return;
    for (int64_t d = today_ - 180; d < today_; ++d) {
      const int wd = WeekdayOf(d);
      if (wd == 0 || wd == 6) continue;
      auto& p = W("Punch");
      const int in = e.start - 10 + static_cast<int>(rng_.Range(0, 15));
      p.Int("UserID", e.id).Text("Date", Iso(d)).Text("TimeIn", Iso(d, in));
      if (!rng_.Percent(3)) p.Text("Timeout", Iso(d, e.end + static_cast<int>(rng_.Range(-5, 20))));
      p.Insert();
    }
  }

  // ---- Patients and their history -----------------------------------------

  std::string AddressText(bool quebec, const Town& t, bool second_line) {
    std::string a = std::to_string(rng_.Range(1, 2400)) + " " +
                    (quebec ? rng_.Pick(kRues) : rng_.Pick(kStreets)) + "\r\n";
    if (second_line) a += "Unit " + std::to_string(rng_.Range(1, 40)) + "\r\n";
    a += std::string(t.city) + ", " + t.prov + "\r\n" + Postal(t.postal_prefix);
    return a;
  }

  void Patients() {
    int64_t next_id = 1;
    while (next_id <= o_.patients) {
      const int size = static_cast<int>(std::min<int64_t>(rng_.Range(1, 5), o_.patients - next_id + 1));
      Family(next_id, size);
      next_id += size;
    }
  }

  void Family(int64_t first_id, int size) {
    const int office = static_cast<int>(rng_.Range(1, offices_));
    const bool quebec = office == 3 || rng_.Percent(4);
    const bool french = quebec ? rng_.Percent(70) : rng_.Percent(5);
    const Town& town = quebec ? rng_.Pick(kQuebecTowns) : rng_.Pick(kOntarioTowns);
    const std::string last = french ? rng_.Pick(kFrenchLastNames) : rng_.Pick(kLastNames);
    const std::string address = AddressText(quebec, town, rng_.Percent(20));
    const std::string home = Phone(town.area);
    const bool insured = rng_.Percent(75);
    const int employer = static_cast<int>(rng_.Range(1, 8));
    const int insurer = (employer - 1) % 6 + 1;
    const bool two_plans = insured && size >= 2 && rng_.Percent(30);
    const int employer2 = employer % 8 + 1;
    const int insurer2 = (employer2 - 1) % 6 + 1;
    const bool assigned = insured && rng_.Percent(80);
    const int64_t doctor = dentists_[rng_.Range(0, dentists_.size() - 1)];
    const int64_t signup = start_ + rng_.Range(-400, today_ - start_ - 20);
    const std::string policy = "P" + Digits(7);
    const bool interest = rng_.Percent(15);
    std::vector<Person> members;
    for (int k = 0; k < size; ++k) {
      const bool adult = k < 2 || rng_.Percent(10);
      const bool female = k == 1 ? true : (k == 0 ? rng_.Percent(40) : rng_.Percent(50));
      Person p;
      p.id = first_id + k;
      p.first = french ? (female ? rng_.Pick(kFrenchFemale) : rng_.Pick(kFrenchMale))
                       : (female ? rng_.Pick(kFemaleNames) : rng_.Pick(kMaleNames));
      p.last = last;
      p.full = p.first + " " + p.last;
      p.adult = adult;
      p.french = french;
      p.birth = adult ? today_ - rng_.Range(22 * 365, 80 * 365) : today_ - rng_.Range(2 * 365, 17 * 365);
      const int64_t holder2 = two_plans ? first_id + 1 : 0;
      const bool self_sign = k == 0 ? true : signup + rng_.Range(0, 200) < today_;
      auto& r = W("Patient");
      r.Int("ID", p.id)
          .Text("LastName", p.last)
          .Text("FirstName", p.first)
          .Text("Title", adult ? (female ? (k == 1 ? "Mrs." : "Ms.") : "Mr.") : (female ? "Miss" : "Master"))
          .Text("FullName", p.full)
          .Text("Sex", female ? "Female" : "Male")
          .Text("BirthDate", Iso(p.birth))
          .Text("SignupDate", Iso(self_sign ? signup : signup + 30, 540 + 15 * (p.id % 20)))
          .Text("Address", address)
          .Text("ManualChartNumber", Initials(last, 1) + "-" + std::to_string(p.id))
          .Text("Language", french ? "F" : "E")
          .Int("Interest", interest ? 1 : 0)
          .Int("AccountholderOnly", 0)
          .Int("Assignment", assigned ? -1 : 0)
          .Int("OfficeID", office)
          .Int("DefaultOfficeID", office)
          .Text("HomePhone", home)
          .Int("ResponsibleFamilyMemberID", first_id)
          .Int("DoctorID", doctor)
          .Int("categoryID", adult ? (today_ - p.birth > 65 * 365 ? 3 : 1) : 2)
          .Text("BestAppointmentTime", k % 2 ? "Mornings" : "After school")
          .Text("BestPhoneNumber", home)
          .Text("BestTime", "Evenings")
          .Int("ShortNotice", k % 2)
          .Int("MondayAvail", 1)
          .Int("WednesdayAvail", k % 2)
          .Int("FridayAvail", 1);
      for (const char* day : {"SundayAvail", "TuesdayAvail", "ThursdayAvail", "SaturdayAvail"})
        if ((p.id + day[1]) % 3 == 0) r.Int(day, day[0] == 'S' ? -1 : 1);
      // Statements went out at the end of last month to about half the families.
      if (k == 0 && rng_.Percent(50)) r.Text("LastStatement", Iso(today_ - today_day_, 0));
      if (rng_.Percent(90)) r.Int("Active?", rng_.Percent(50) ? 1 : -1);
      else {
        r.Int("Active?", 0).Text("InactivationDate", Iso(today_ - rng_.Range(10, 700), 600));
      }
      if (adult) {
        r.Text("MiddleInitial", std::string(1, static_cast<char>('A' + p.id % 26)))
            .Text("SIN", "9" + Digits(8))
            .Text("OtherPhone", Phone(town.area))
            .Text("CelPhone", Phone(town.area))
            .Text("EmergencyContact", (k == 0 ? "Spouse, " : "Parent, ") + p.last)
            .Text("EmergencyPhone", Phone(town.area));
        if (p.id % 7 == 0) r.Text("OtherExt", std::to_string(p.id % 900 + 100));
        if (p.id % 11 == 0) r.Text("HomeExt", "2");
        if (p.id % 13 == 0) r.Text("Pager", Phone(town.area)).Text("PagerExt", "9");
      } else {
        r.Int("Student", p.birth < today_ - 5 * 365 ? 1 : 0)
            .Text("Schoolname", quebec ? "École du Boisé" : "Maple Grove Public School");
      }
      if (p.id % 17 == 0) r.Text("PreferredName", Initials(p.first, 3));
      if (p.id % 9 == 0) r.Text("MedicalAlert", "Heart murmur");
      if (p.id % 23 == 0) r.Text("PremedType", "Amoxicillin 2 g");
      if (p.id % 5 == 0) r.Text("GlobalNotes", "Prefers text reminders.");
      if (k == 0 && rng_.Percent(25)) {
        r.Int("ReferringDentistID", rng_.Range(1, 4)).Text("RefferedBy", "0").Text("ReferalReason", "Second opinion")
            .Text("ReferredByAddID", "Dentist");
      } else if (k == 0 && rng_.Percent(30) && first_id > 1) {
        const int64_t by = rng_.Range(1, first_id - 1);
        r.Text("RefferedBy", "Patient #" + std::to_string(by)).Text("ReferalReason", "Friend")
            .Text("ReferredByAddID", "Patient");
      } else if (k == 0) {
        r.Text("RefferedBy", "Website").Text("ReferredByAddID", "Internet");
      }
      if (insured) {
        r.Int("PrimaryHolderID", first_id)
            .Int("EmployerID", employer)
            .Int("InsuranceID", insurer)
            .Text("Policy#", policy)
            .Text("Division#", "D" + std::to_string(employer))
            .Text("SubscriberID#", "S" + std::to_string(first_id * 7))
            .Text("YearEnding", "12/31")
            .Text("Relationship", k == 0 ? "Self" : (adult ? "Spouse" : "Child"))
            .Text("DependantCode", k == 0 ? "00" : "0" + std::to_string(k));
        if (holder2) {
          r.Int("SecondaryHolderID", holder2)
              .Int("SecondaryEmployerID", employer2)
              .Int("SecondaryInsuranceID", insurer2)
              .Text("SecondaryPolicy#", "Q" + std::to_string(first_id * 3))
              .Text("SecondaryDivision#", "E" + std::to_string(employer2))
              .Text("SecondarySubscriberID#", "T" + std::to_string(first_id * 5))
              .Text("SecondaryRelationship", k == 1 ? "Self" : (adult ? "Spouse" : "Child"))
              .Text("SecondaryDependantCode", k == 1 ? "00" : "0" + std::to_string(k));
          if (k == 0) r.Int("ThirdEmployerID", 1 + (employer + 2) % 8);
        }
      }
      // Older records store 0 rather than nothing in an unused secondary
      // holder; the account routines must read it as no holder.
      if (!(insured && holder2) && p.id % 3 == 0) r.Int("SecondaryHolderID", 0);
      r.Insert();
      if (p.id % 6 == 0) W("PatientAlerts").Int("PatientID", p.id).Int("AlertID", 1 + p.id % 5).Insert();
      if (p.id % 29 == 0) W("PatientAlerts").Int("PatientID", p.id).Int("AlertID", 1 + (p.id + 2) % 5).Insert();
      members.push_back(p);
    }
    FamilyState fam{first_id, members, office, doctor, insured, assigned, two_plans, insurer,
                    insurer2, interest, signup};
    households_.push_back({members.front().id, doctor, office});
    for (const auto& p : members) History(fam, p);
    if (rng_.Percent(3)) PostDated(fam);
  }

  struct FamilyState {
    int64_t head;
    std::vector<Person> members;
    int office;
    int64_t doctor;
    bool insured, assigned, two_plans;
    int insurer, insurer2;
    bool interest;
    int64_t signup;
  };

  int64_t PickStaff(const std::vector<int64_t>& ids) { return ids[rng_.Range(0, ids.size() - 1)]; }

  // Visits every six months or so from sign-up to today, then the booked
  // future and the plans.
  void History(const FamilyState& fam, const Person& p) {
    int64_t day = std::max(fam.signup, p.birth + 2 * 365) + rng_.Range(0, 60);
    bool first = true;
    while (day < today_) {
      const int wd = WeekdayOf(day);
      if (wd == 0 || wd == 6) day += wd == 0 ? 1 : 2;
      if (day >= today_) break;
      Visit(fam, p, day, first, day >= today_ - 20 && rng_.Percent(25));
      first = false;
      day += rng_.Range(150, 220);
      if (rng_.Percent(15)) day += rng_.Range(15, 60);  // a treatment visit between recalls
    }
    // The booked future.
    if (rng_.Percent(45)) {
      int64_t next = today_ + rng_.Range(1, 120);
      if (WeekdayOf(next) == 0) ++next;
      if (WeekdayOf(next) == 6) next += 2;
      Appointment(fam, p, next, -1, rng_.Percent(50) ? "11101" : "21211", 0);
    } else if (rng_.Percent(60)) {
      auto& f = W("PatientFuture");
      f.Int("PatientID", p.id)
          .Int("ProcedureCategoryID", 2)
          .Text("DueDate", Iso(today_ + rng_.Range(-30, 150)))
          .Int("Units", 3)
          .Text("Description", "Recall cleaning")
          .Int("ShortNotice?", p.id % 2);
      if (rng_.Percent(80)) f.Text("EstScheduleDate", Iso(today_ + rng_.Range(-10, 170)));
      if (rng_.Percent(85)) f.Int("ProviderID", PickStaff(hygienists_));
      if (rng_.Percent(70)) f.Cents("Estimate", 14100);
      if (rng_.Percent(50)) f.Int("Approved", rng_.Percent(80) ? 1 : 0);
      f.Insert();
    }
    if (p.adult && rng_.Percent(10)) Plan(fam, p);
    if (rng_.Percent(8)) {
      const Code& c = CodeById(rng_.Percent(50) ? "23312" : "27201");
      W("PatientTreatmentPlan")
          .Int("PatientID", p.id)
          .Text("Code", c.id)
          .Text("Tooth#", std::to_string(11 + rng_.Range(0, 36)))
          .Text("Surface", "MO")
          .Cents("Cost", c.fee_cents)
          .Insert();
    }
  }

  // A booked appointment; invoice < 0 for one in the future.
  int64_t Appointment(const FamilyState& fam, const Person& p, int64_t day, int64_t invoice,
                      const std::string& code, int time) {
    const Code& c = CodeById(code);
    const bool hygiene = code[0] == '1';
    const int64_t provider = hygiene ? PickStaff(hygienists_) : fam.doctor;
    if (time == 0) time = 480 + 10 * static_cast<int>(rng_.Range(0, 50));
    auto& a = W("PatientAppointments");
    a.Int("PatientID", p.id)
        .Int("ProviderID", provider)
        .Int("OverSeerID", fam.doctor)
        .Int("ProcedureCat", hygiene ? 2 : 3)
        .Text("Date", Iso(day))
        .Int("Time", time)
        .Int("Units", std::max(1, c.minutes / 10 + 1))
        .Int("Message", rng_.Percent(20) ? 1 : 0)
        .Text("Template", hygiene ? "Recall" : "Treatment");
    if (rng_.Percent(92)) a.Int("EmployeeID", PickStaff(desk_));
    if (rng_.Percent(90)) a.Cents("Estimate", c.fee_cents);
    if (invoice >= 0) {
      a.Int("Confirmed", 1).Int("Complete", 1);
    } else {
      if (rng_.Percent(80)) a.Int("Confirmed", rng_.Percent(50) ? 1 : (rng_.Percent(50) ? 0 : -1));
      if (rng_.Percent(50)) a.Int("Complete", 0);
    }
    if (rng_.Percent(40)) a.Text("Reason", hygiene ? "Recall cleaning\r\nCheck gums" : "Filling");
    const int64_t id = a.Insert();
    if (invoice < 0) {
      auto& ac = W("PatientAppointmentCodes");
      ac.Int("PatientAppointmentID", id).Text("Code", code).Cents("Fee", c.fee_cents);
      if (c.type == 3) ac.Text("Tooth#", std::to_string(36 + id % 3)).Text("Surface", "MO");
      ac.Insert();
      if (rng_.Percent(8)) {
        W("PatientAppointmentDetails")
            .Int("AppointmentID", id)
            .Text("Date", Iso(today_ - rng_.Range(1, 20)))
            .Int("Time", time)
            .Text("Specific", "Moved at patient's request")
            .Text("Note", "Called to move the appointment")
            .Int("EmployeeID", PickStaff(desk_))
            .Int("Reschedule?", rng_.Percent(80) ? 1 : -1)
            .Insert();
      }
    }
    return id;
  }

  // The week around today as the front desk books it, for the day sheet,
  // the appointment set and the routing slip: every provider busy from
  // three days back to four ahead, every category's colour, NULL estimates,
  // unconfirmed and incomplete visits, reschedules marked 1, -1, 0 and
  // NULL, and the providers' days off, partly free days and an extra
  // Saturday. Written last and without the random stream, so that nothing
  // generated before it changes.
  void AppointmentBook() {
    const int64_t patients = w_["Patient"]->rows();
    if (patients == 0) return;
    std::vector<int64_t> providers = dentists_;
    providers.insert(providers.end(), hygienists_.begin(), hygienists_.end());
    static const int kTimes[] = {540, 600, 650, 800, 870, 930};
    static const char* const kReasons[] = {"Check the filling on 36", "Recall cleaning\r\nCheck gums", "",
                                           "Crown prep", "Broken tooth, pain since Sunday", ""};
    int64_t n = 0;
    for (int64_t day = today_ - 3; day <= today_ + 4; ++day) {
      if (WeekdayOf(day) == 0) continue;  // no bookings on Sundays
      for (size_t k = 0; k < providers.size(); ++k) {
        for (int slot = 0; slot < 6; ++slot, ++n) {
          if ((n + k) % 4 == 3) continue;  // some gaps in the book
          const bool past = day < today_;
          auto& a = W("PatientAppointments");
          a.Int("PatientID", 1 + (n * 7) % patients)
              .Int("ProviderID", providers[k])
              .Int("OverSeerID", dentists_[0])
              .Int("ProcedureCat", 1 + n % 6)
              .Text("Date", Iso(day))
              .Int("Time", kTimes[slot])
              .Int("Units", 1 + n % 5)
              .Int("Message", n % 5 == 0 ? 1 : 0)
              .Text("Template", n % 2 ? "Standard" : "Long visit")
              .Int("EmployeeID", desk_[n % desk_.size()]);
          if (kReasons[n % 6][0] != '\0') a.Text("Reason", kReasons[n % 6]);
          if (n % 7 != 3) a.Cents("Estimate", 4500 + 2500 * (n % 9));
          if (n % 3 != 1) a.Int("Confirmed", n % 3 == 0 ? 1 : -1);
          if (past && n % 5 != 2) a.Int("Complete", 1);
          else if (n % 2 == 0) a.Int("Complete", 0);
          const int64_t id = a.Insert();
          if (n % 6 == 1) {
            static const int kMarks[] = {1, -1, 0, 2};  // 2: no mark at all
            auto& d = W("PatientAppointmentDetails");
            d.Int("AppointmentID", id)
                .Text("Date", Iso(day - 2 - n % 5))
                .Int("Time", kTimes[(slot + 2) % 6])
                .Text("Specific", n % 4 == 0 ? "No show" : "Short notice")
                .Text("Note", "Moved by phone")
                .Int("EmployeeID", desk_[0]);
            const int mark = kMarks[(n / 6) % 4];
            if (mark != 2) d.Int("Reschedule?", mark);
            d.Insert();
          }
        }
      }
    }
    // Days off near today: a whole day, an afternoon, and a Saturday worked.
    W("EmployeeHolidays")
        .Int("EmployeeID", providers.back())
        .Text("FromDate", Iso(today_ + 3))
        .Text("ToDate", Iso(today_ + 3))
        .Insert();
    W("EmployeeHolidays")
        .Int("EmployeeID", dentists_[0])
        .Text("FromDate", Iso(today_ + 1))
        .Text("ToDate", Iso(today_ + 1))
        .Int("FromTime", 780)
        .Int("ToTime", 900)
        .Insert();
    int64_t saturday = today_;
    while (WeekdayOf(saturday) != 6) ++saturday;
    W("EmployeeSpecialDays")
        .Int("EmployeeID", dentists_.back())
        .Text("StartDate", Iso(saturday))
        .Text("EndDate", Iso(saturday))
        .Int("StartTime", 540)
        .Int("EndTime", 720)
        .Insert();
  }

  void Plan(const FamilyState& fam, const Person& p) {
    const int64_t day = today_ - rng_.Range(5, 400);
    struct L {
      const char* code;
      const char* type;
    };
    static const L kLines[] = {{"21211", "Required"}, {"27201", "Suggested"}, {"99111", nullptr},
                               {"32221", "Phase 1"},  {"43612", "Optional"}};
    auto& pt = W("PatientPredTreatments");
    int64_t total = 0, ben = 0, ben2 = 0;
    const int n = static_cast<int>(rng_.Range(2, 5));
    std::vector<std::tuple<const L*, int64_t, int64_t, int64_t>> lines;
    for (int i = 0; i < n; ++i) {
      const L* l = &kLines[i];
      const int64_t cost = l->code[0] == '9' ? 31000 : CodeById(l->code).fee_cents;
      const int64_t b = fam.insured ? cost * 60 / 100 : 0;
      const int64_t b2 = fam.two_plans ? cost * 20 / 100 : 0;
      total += cost;
      ben += b;
      ben2 += b2;
      lines.emplace_back(l, cost, b, b2);
    }
    pt.Int("PatientID", p.id)
        .Int("ProviderID", fam.doctor)
        .Int("CreatedbyID", PickStaff(desk_))
        .Text("DatePosted", Iso(day, 600))
        .Text("Notes", "Crown and filling plan")
        .Text("CarrierNotes", "Predetermination sent by EDI")
        .Cents("TotalAmount", total)
        .Cents("TotalBenefitAmount", ben)
        .Cents("TotalSecondBeneFitAmount", ben2)
        .Text("ReminderDate", Iso(day + 30));
    if (rng_.Percent(60)) pt.Int("Complete", rng_.Percent(50) ? 1 : 0);
    if (rng_.Percent(30)) pt.Text("PatientNotes", "Ask about a payment plan.");
    const int64_t plan = pt.Insert();
    int line = 1;
    for (auto& [l, cost, b, b2] : lines) {
      auto& d = W("PatientPredTreatmentDetails");
      d.Int("PatientPredTreatmentsID", plan)
          .Int("LineNumber", line++)
          .Text("Code", l->code)
          .Text("Tooth#", "36")
          .Cents("Cost", cost)
          .Cents("BenefitAmountProcedure", b)
          .Cents("SecondBenefitAmount", b2);
      if (l->type) d.Text("Type", l->type);
      if (l->code[0] == '2') d.Text("Surface", "O").Int("ReasonID", 1 + line % 5);
      d.Insert();
    }
    if (fam.insured) {
      const int64_t send = Send(p, 0, 1, day, fam.insurer);
      Response(send, 11, 1, 0);
    }
  }

  // ---- What the claim forms and the treatment letters meet -----------------
  // An insurer whose name holds ";", an employer insured by it and one with
  // no insurer at all, a few patients moved onto them; provider numbers per
  // insurer; sends of every type; a second, complete plan for one patient of
  // each office with a line in every section (NULL Type included); codes
  // with blank-only plain wording; one office's own introduction. Patients
  // and plans already on file are reused, so the other lists keep their
  // people.
  void ClaimsAndPlans() {
    auto sql = [this](const std::string& text) {
      char* err = nullptr;
      if (sqlite3_exec(db_, text.c_str(), nullptr, nullptr, &err) != SQLITE_OK) {
        std::string m = err ? err : "unknown error";
        sqlite3_free(err);
        throw SchemaError(text + ": " + m);
      }
    };
    const Town& t = kOntarioTowns[1];
    W("InsuranceCompany")
        .Int("ID", 7)
        .Text("CompanyName", "Laurier Mutual; Group Claims")
        .Text("Street", "400 Wellington St; Suite 9")
        .Text("City", t.city)
        .Text("Prov", t.prov)
        .Text("PostalCode", Postal(t.postal_prefix))
        .Text("Phone", "800555" + Digits(4))
        .Text("CDA#", "000017")
        .Text("Notes", "Paper claims only")
        .Insert();
    W("Employers").Int("ID", 9).Text("Name", "Harbourfront Marina").Text("Policy#", "H" + Digits(6))
        .Int("InsuranceID", 7).Insert();
    W("Employers").Int("ID", 10).Text("Name", "Juniper Crafts").Insert();
    // The first insured patient with two plans moves to the marina (the
    // second plan kept as it was); the last insured one to the employer
    // without an insurer, whose claim the desk cannot print.
    sql("UPDATE Patient SET EmployerID = 9 WHERE ID = (SELECT MIN(ID) FROM Patient WHERE EmployerID "
        "IS NOT NULL AND SecondaryEmployerID IS NOT NULL)");
    sql("UPDATE Patient SET EmployerID = 10, SecondaryEmployerID = NULL WHERE ID = (SELECT MAX(ID) "
        "FROM Patient WHERE EmployerID IS NOT NULL AND EmployerID < 9 AND SecondaryEmployerID IS "
        "NULL)");
    for (int64_t dentist : dentists_) {
      W("EmployeeBPN").Int("EmployeeID", dentist).Int("InsuranceID", 7).Text("BPN", Digits(4)).Insert();
    }
    sql("UPDATE FeeCodes SET LayPersonDescription = '   ' WHERE ID IN (SELECT ID FROM FeeCodes "
        "WHERE LayPersonDescription IS NOT NULL AND ID NOT LIKE '-%' ORDER BY ID DESC LIMIT 2)");
    sql("UPDATE OfficeInformation SET LaypersonHeader = '  Here is the treatment your dentist "
        "proposes, step by step, with what your plan is expected to pay.  ' WHERE ID = 2");
    // Eligibility checks (2) and reversals (3) never count as billed.
    for (int type = 2; type <= 3; ++type) {
      for (int i = 0; i < 3; ++i) {
        auto& s = W("PatientEDISends");
        s.Int("PatientID", 1 + i).Int("SequenceNumber", ++sequence_).Int("Type", type)
            .Text("DatePosted", Iso(today_ - 10 - i, 600)).Int("Sent?", 1).Text("CarrierNumber", "000010")
            .Insert();
      }
    }
    static const char* const kTypes[] = {nullptr,   "Required", "Suggested", "Optional", "Phase 1",
                                         "Phase 2", "Phase 3",  "Phase 4",   "Phase 5",  "Phase 6",
                                         "Option 1", "Option 2", "Option 3", "Option 4", "Option 5",
                                         "Option 6"};
    static const char* const kCodes[] = {"21211", "27201", "32221", "43612", "11111", "02102"};
    for (int office = 1; office <= 3; ++office) {
      sqlite3_stmt* st = nullptr;
      sqlite3_prepare_v2(db_,
                         "SELECT p.ID, t.ProviderID FROM Patient p JOIN PatientPredTreatments t ON "
                         "t.PatientID = p.ID WHERE p.DefaultOfficeID = ? ORDER BY p.ID LIMIT 1",
                         -1, &st, nullptr);
      sqlite3_bind_int(st, 1, office);
      int64_t patient = 0, provider = 0;
      if (sqlite3_step(st) == SQLITE_ROW) {
        patient = sqlite3_column_int64(st, 0);
        provider = sqlite3_column_int64(st, 1);
      }
      sqlite3_finalize(st);
      if (patient == 0) continue;
      auto& pt = W("PatientPredTreatments");
      pt.Int("PatientID", patient).Int("ProviderID", provider).Text("DatePosted", Iso(today_ - 3, 600))
          .Int("Complete", 1).Text("Notes", "Full mouth plan in phases")
          .Text("CarrierNotes", "Phases may be sent separately; x-rays on request");
      if (office == 3) pt.Text("PatientNotes", "Please call Dr. Lemieux's desk to book phase 1.");
      const int64_t plan = pt.Insert();
      int64_t total = 0;
      int line = 1;
      for (const char* type : kTypes) {
        const char* code = kCodes[line % 6];
        const int64_t cost = line % 7 == 0 ? 0 : 4000 + 1500 * line;
        total += cost;
        auto& d = W("PatientPredTreatmentDetails");
        d.Int("PatientPredTreatmentsID", plan).Int("LineNumber", line).Text("Code", code)
            .Cents("Cost", cost).Cents("BenefitAmountProcedure", cost * 60 / 100);
        // A second plan pays a tenth of every third line; the Phase 2 line
        // has no figure at all, so its section's sums come out Null.
        if (line != 6) d.Cents("SecondBenefitAmount", line % 3 == 0 ? cost * 10 / 100 : 0);
        if (type) d.Text("Type", type);
        if (line % 2 == 0) d.Text("Tooth#", std::to_string(11 + line)).Int("ReasonID", 1 + line % 5);
        d.Insert();
        ++line;
      }
      sql("UPDATE PatientPredTreatments SET TotalAmount = " + std::to_string(total / 100) + "." +
          std::to_string(total % 100 / 10) + std::to_string(total % 10) + " WHERE ID = " +
          std::to_string(plan));
    }
  }

  // A visit whose claim has more lines than the paper form's eight: an
  // examination, x-rays, a scaling and six fillings, billed yesterday to the
  // patient with two plans under the insurer whose name holds ";". Made
  // last and without the random draws, so that nothing made before it
  // changes.
  void LongClaim() {
    sqlite3_stmt* st = nullptr;
    sqlite3_prepare_v2(db_, "SELECT MIN(ID) FROM Patient WHERE EmployerID = 9", -1, &st, nullptr);
    int64_t patient = 0;
    if (sqlite3_step(st) == SQLITE_ROW) patient = sqlite3_column_int64(st, 0);
    sqlite3_finalize(st);
    if (patient == 0 || dentists_.empty()) return;
    struct Planned {
      const char* code;
      const char* tooth;
      const char* surface;
    };
    static const Planned kLines[] = {{"01202", nullptr, nullptr}, {"02202", nullptr, nullptr},
                                     {"11101", nullptr, nullptr}, {"21211", "16", "O"},
                                     {"21211", "17", "O"},        {"23311", "11", "M"},
                                     {"23311", "21", "M"},        {"23312", "12", "MO"},
                                     {"23312", "22", "MO"}};
    const int64_t day = today_ - 1;
    const int64_t dentist = dentists_.front();
    const int64_t id = ++invoice_number_;
    // The insurers' shares of a line as for any visit of a patient with two
    // plans: the first pays 80% of diagnostic and preventive codes and 50%
    // of the rest, the second half of what is left.
    auto shares = [](const Code& code) {
      const int64_t ins1 = code.fee_cents * (code.id[0] == '0' || code.id[0] == '1' ? 80 : 50) / 100;
      return std::pair<int64_t, int64_t>{ins1, (code.fee_cents - ins1) * 50 / 100};
    };
    int64_t total = 0, patient_total = 0;
    int units = 0;
    for (const auto& l : kLines) {
      const Code& code = CodeById(l.code);
      const auto [ins1, ins2] = shares(code);
      total += code.fee_cents;
      patient_total += code.fee_cents - ins1 - ins2;
      units += code.minutes / 10;
    }
    W("Invoices")
        .Int("ID", id)
        .Int("Invoice#", 10000 + id)
        .Int("PatientID", patient)
        .Int("ProviderID", dentist)
        .Int("DoctorID", dentist)
        .Text("Date", Iso(day))
        .Int("Time", 540)
        .Text("EntryDate", Iso(day, 600))
        .Int("Complete?", 1)
        .Cents("InvoiceTotal", total)
        .Cents("PatientTotal", patient_total)
        .Int("IsAssignment", -1)
        .Int("IsSecondaryAssignment", -1)
        .Int("IsTertiaryAssignment", 0)
        .Int("Units", units)
        .Int("ChargeInterest", 0)
        .Text("InsuranceNotes", "Fillings of both upper quadrants done in one visit")
        .Insert();
    for (const auto& l : kLines) {
      const Code& code = CodeById(l.code);
      const auto [ins1, ins2] = shares(code);
      auto& d = W("InvoiceDetails");
      d.Int("InvoiceID", id)
          .Text("Code", l.code)
          .Cents("Cost", code.fee_cents)
          .Cents("PatientCost", code.fee_cents - ins1 - ins2)
          .Cents("PrimaryInsCost", ins1)
          .Cents("SecondaryInsCost", ins2)
          .Cents("TertiaryInsCost", 0)
          .Text("Status", "Complete")
          .Text("Date", Iso(day))
          .Text("EntryDate", Iso(day))
          .Int("ProviderID", dentist);
      if (l.tooth) d.Text("Tooth#", l.tooth);
      if (l.surface) d.Text("Surface", l.surface);
      d.Insert();
    }
  }

  int64_t Send(const Person& p, int64_t invoice, int type, int64_t day, int insurer) {
    auto& s = W("PatientEDISends");
    s.Int("PatientID", p.id)
        .Int("SequenceNumber", ++sequence_)
        .Int("Type", type)
        .Text("DatePosted", Iso(day, 660))
        .Int("Sent?", rng_.Percent(95) ? 1 : 0)
        .Text("CarrierNumber", insurers_[insurer - 1].cda);
    if (invoice > 0) s.Int("InvoiceID", invoice);
    return s.Insert();
  }

  void Response(int64_t send, int trs, int status, int64_t benefit) {
    W("PatientEDIResponses")
        .Int("EDISendID", send)
        .Int("Status", status)
        .Int("TrsCode", trs)
        .Cents("TotalBenefitAmounts", benefit)
        .Insert();
  }

  // One visit: appointment, invoice with its lines, claims and payments.
  void Visit(const FamilyState& fam, const Person& p, int64_t day, bool first, bool in_progress) {
    std::vector<std::string> codes;
    const bool hygiene = !first && rng_.Percent(70);
    int64_t provider = fam.doctor;
    if (first) {
      codes = {p.adult ? "01103" : "01102", "02202", "11101"};
    } else if (hygiene) {
      codes = {"01202", rng_.Percent(50) ? "11101" : "11102", "11111"};
      if (!p.adult) codes.push_back("13401");
      if (rng_.Percent(20)) codes.push_back("13211");
      provider = PickStaff(hygienists_);
    } else {
      static const char* const kWork[] = {"21211", "23311", "23312", "27201", "32221",
                                          "43421", "71101", "01205", "43612", "97123", "01400"};
      codes = {rng_.Pick(kWork)};
      if (codes[0] == "27201") codes.push_back("99111");
      if (codes[0] == "43612") codes.push_back("99222");
      if (codes[0] == "32221" && !specialists_.empty() && rng_.Percent(60)) provider = PickStaff(specialists_);
      if (rng_.Percent(5)) codes.push_back("-00100");
    }
    const int time = 480 + 10 * static_cast<int>(rng_.Range(0, 48));
    const bool cancelled = !in_progress && rng_.Percent(1);
    const int64_t invoice_no = ++invoice_number_;
    const int64_t invoice_id = invoice_no;
    invoice_patient_ = p.id;
    invoice_cancelled_ = cancelled;

    // The lines.
    struct Planned {
      const Code* code;
      int64_t cost, pat, ins1, ins2;
      std::string tooth, surface;
    };
    std::vector<Planned> planned;
    int64_t total = 0, patient_total = 0;
    int units = 0;
    for (const auto& c : codes) {
      const Code& code = CodeById(c);
      Planned l{&code, code.fee_cents, 0, 0, 0, "", ""};
      if (c == "99111") l.cost = rng_.Range(25000, 42000);
      if (c == "99222") l.cost = rng_.Range(12000, 18000);
      if (fam.assigned && c[0] != '-' && c != "13401") {
        const int pct = c[0] == '0' || c[0] == '1' ? 80 : 50;
        l.ins1 = l.cost * pct / 100;
        if (fam.two_plans) l.ins2 = (l.cost - l.ins1) * 50 / 100;
      }
      l.pat = l.cost - l.ins1 - l.ins2;
      if (code.type == 3 || code.type == 6 || code.type == 4) {
        l.tooth = std::to_string(10 * rng_.Range(1, 4) + rng_.Range(1, 8));
        if (code.type == 3) l.surface = c == "23312" ? "MO" : "O";
      }
      total += l.cost;
      patient_total += l.pat;
      units += code.minutes / 10;
      planned.push_back(l);
    }

    const int64_t appointment = Appointment(fam, p, day, invoice_id, codes[0] == "-00100" ? "01202" : codes[0], time);
    // Invoice row first: lines refer to it.
    auto& inv = W("Invoices");
    inv.Int("ID", invoice_id)
        .Int("Invoice#", 10000 + invoice_no)
        .Int("PatientID", p.id)
        .Int("ProviderID", provider)
        .Int("OverseerID", fam.doctor)
        .Int("DoctorID", fam.doctor)
        .Int("AppointmentID", appointment)
        .Text("Date", Iso(day))
        .Int("Time", time)
        .Text("EntryDate", Iso(day, time + 30))
        .Int("Complete?", in_progress ? 0 : (invoice_no % 4 == 0 ? -1 : 1))
        .Cents("InvoiceTotal", total)
        .Int("IsAssignment", fam.assigned ? -1 : 0)
        .Int("Units", units)
        .Int("ChargeInterest", fam.interest ? 1 : 0);
    if (fam.assigned) {
      inv.Cents("PatientTotal", patient_total).Int("IsSecondaryAssignment", fam.two_plans ? -1 : 0).Int("IsTertiaryAssignment", 0);
      if (p.id % 3 == 0) inv.Text("InsuranceNotes", "Claim sent by EDI");
    }
    if (codes[0] == "27201") inv.Text("PredeterminationNumber", "PD" + std::to_string(invoice_no));
    if (cancelled) {
      inv.Int("Cancelled", 1).Text("CancellationDate", Iso(std::min(today_, day + rng_.Range(1, 10))))
          .Text("notes", "Entered on the wrong patient");
    } else if (rng_.Percent(30)) {
      inv.Int("Cancelled", 0);
    }
    if (in_progress) inv.Text("notes", "Treatment to finish");
    // FinalDate and InvoiceFinalTotal are known only once the payments are
    // made; Bulk() sets them on the invoices paid off.
    inv.Insert();

    std::vector<Line> lines;
    for (const auto& l : planned) {
      auto& d = W("InvoiceDetails");
      d.Int("InvoiceID", invoice_id)
          .Text("Code", l.code->id)
          .Cents("Cost", l.cost)
          .Cents("PatientCost", l.pat)
          .Cents("PrimaryInsCost", l.ins1)
          .Cents("SecondaryInsCost", l.ins2)
          .Cents("TertiaryInsCost", 0)
          .Text("Status", in_progress ? "In Progress" : "Complete")
          .Text("Date", Iso(day))
          .Text("EntryDate", Iso(day))
          .Int("ProviderID", provider)
          .Int("EmployeeID", PickStaff(desk_));
      if (!l.tooth.empty()) d.Text("Tooth#", l.tooth);
      if (!l.surface.empty()) d.Text("Surface", l.surface);
      if (p.id % 19 == 0 && l.cost > 0) d.Real("Discount", 0.05);
      const int64_t id = d.Insert();
      lines.push_back({id, l.pat, l.ins1, l.ins2});
    }
    if (codes.size() > 1 && codes[1][0] == '9')
      W("LabIO").Int("AppointmentID", appointment).Text("SentDate", Iso(day + 1)).Text("ReceivedDate", Iso(day + 8)).Insert();
    if (rng_.Percent(25)) Note(p, provider, appointment, day, codes[0]);
    if (rng_.Percent(3)) Prescription(p, fam.doctor, day);
    if (in_progress) return;

    // Claims.
    if (fam.assigned) {
      const int64_t send = Send(p, invoice_id, 0, day, fam.insurer);
      const bool answered = day + 14 <= today_;
      int64_t ins1 = 0;
      for (const auto& l : lines) ins1 += l.ins1_cents;
      Response(send, answered ? 21 : 11, answered ? (rng_.Percent(97) ? 1 : 2) : 0, answered ? ins1 : 0);
    }

    // Payments.
    int64_t last_paid = 0;
    const int64_t payer = p.adult ? p.id : fam.head;
    if (cancelled) {
      // Paid at the visit, then the invoice and its payment were cancelled.
      const int64_t pay = Payment(fam, payer, kCheque, day, day, lines, 0, invoice_id, provider, false);
      (void)pay;
      return;
    }
    const int64_t age = today_ - day;
    const bool bad_debt = rng_.Percent(4);
    if (!(age < 30 && rng_.Percent(30)) && !bad_debt) {
      const int64_t pay_day = rng_.Percent(75) ? day : std::min(today_, day + rng_.Range(3, 45));
      static const int kKinds[] = {kCash, kCheque, kCheque, kVisa, kDebit, kDebit};
      const int kind = rng_.Pick(kKinds);
      const bool courtesy = categoryIsSenior(p) && rng_.Percent(30);
      const bool write_off = !courtesy && rng_.Percent(6);
      int64_t held_back = 0;
      if (courtesy || write_off) held_back = std::min<int64_t>(PatientOwing(lines), rng_.Range(100, 1500));
      const int64_t pay = Payment(fam, payer, kind, pay_day, pay_day, lines, held_back, invoice_id,
                                  provider, false);
      last_paid = pay_day;
      const auto cheque_alloc = last_alloc_;
      if (held_back > 0) {
        Payment(fam, payer, courtesy ? kCourtesy : kWriteOff, pay_day, pay_day, lines, held_back, invoice_id,
                provider, false);
      }
      if (kind == kCheque && rng_.Percent(3) && pay > 0)
        Nsf(fam, payer, pay, pay_day, lines, cheque_alloc, invoice_id, provider);
    } else if (bad_debt && fam.interest && age > 60) {
      Interest(p, fam, invoice_id, day + 60, PatientOwing(lines), provider);
    }
    if (fam.assigned && day + 14 <= today_) {
      const int64_t ins_day = day + rng_.Range(10, 30);
      if (ins_day <= today_ && rng_.Percent(95)) {
        const int kind = WeekdayOf(ins_day) == 5 ? kInsuranceBulk : kInsuranceCheque;
        Payment(fam, payer, kind, ins_day, ins_day, lines, 0, invoice_id, provider, true, 1);
        last_paid = std::max(last_paid, ins_day);
        if (fam.two_plans && ins_day + 10 <= today_) {
          Payment(fam, payer, kInsuranceCheque, ins_day + 10, ins_day + 10, lines, 0, invoice_id, provider, true, 2);
          last_paid = std::max(last_paid, ins_day + 10);
        }
      }
    }
    bool paid_off = true;
    for (const auto& l : lines)
      if (l.patient_paid < l.patient_cents || l.ins1_paid < l.ins1_cents || l.ins2_paid < l.ins2_cents) paid_off = false;
    if (paid_off && last_paid > 0) finals_.emplace_back(invoice_id, last_paid, total);
  }

  bool categoryIsSenior(const Person& p) const { return today_ - p.birth > 65 * 365; }

  static int64_t PatientOwing(const std::vector<Line>& lines) {
    int64_t owing = 0;
    for (const auto& l : lines) owing += l.patient_cents - l.patient_paid;
    return owing;
  }

  // A payment on one invoice: allocates line by line what is still owed on
  // the payer's side (the patient's share, or insurer `plan`'s share), less
  // `held_back`; what a round cash amount leaves over goes to credit.
  // Returns the amount allocated.
  int64_t Payment(const FamilyState& fam, int64_t payer, int kind, int64_t entry, int64_t check,
                  std::vector<Line>& lines, int64_t held_back, int64_t invoice, int64_t provider,
                  bool insurance, int plan = 0) {
    std::vector<std::pair<size_t, int64_t>> alloc;
    int64_t allocated = 0, budget = -1;
    if (kind == kWriteOff || kind == kCourtesy) budget = held_back, held_back = 0;
    for (size_t i = 0; i < lines.size(); ++i) {
      Line& l = lines[i];
      int64_t* paid = plan == 1 ? &l.ins1_paid : plan == 2 ? &l.ins2_paid : &l.patient_paid;
      const int64_t owed = (plan == 1 ? l.ins1_cents : plan == 2 ? l.ins2_cents : l.patient_cents) - *paid;
      if (owed <= 0) continue;
      int64_t take = owed;
      if (budget >= 0) take = std::min(take, budget - allocated);
      if (take <= 0) continue;
      alloc.emplace_back(i, take);
      allocated += take;
      *paid += take;
    }
    // Held back from the last lines for a write-off that follows.
    while (held_back > 0 && !alloc.empty()) {
      auto& [i, amount] = alloc.back();
      const int64_t cut = std::min(amount, held_back);
      amount -= cut;
      held_back -= cut;
      allocated -= cut;
      int64_t* paid = plan == 1 ? &lines[i].ins1_paid : plan == 2 ? &lines[i].ins2_paid : &lines[i].patient_paid;
      *paid -= cut;
      if (amount == 0) alloc.pop_back();
    }
    if (allocated <= 0) return 0;
    int64_t value = allocated;
    if (kind == kCash && rng_.Percent(25)) value = (allocated + 999) / 1000 * 1000;  // round sum, change left as credit
    const int insurer = plan == 2 ? fam.insurer2 : fam.insurer;
    const std::string payer_name = PayerName(fam, payer);
    auto& pay = W("InvoicePayments");
    const bool cheque = kind == kCheque || kind == kInsuranceCheque;
    pay.Int("PatientID", payer)
        .Int("PaymentTypeID", kind)
        .Int("EmployeeID", PickStaff(desk_))
        .Int("InitialProviderID", provider)
        .Cents("Value", value)
        .Cents("TotalAllocated", allocated)
        .Cents("TotalToCredit", value - allocated)
        .Text("Date", Iso(entry))
        .Text("CheckDate", Iso(check))
        .Text("Check#", cheque ? std::to_string(rng_.Range(100, 9999)) : "0");
    if (kind == kWriteOff || kind == kCourtesy) {
      pay.Text("PaymentName", "Office").Text("Notes", kind == kWriteOff ? "Small balance written off" : "Senior courtesy");
    } else {
      pay.Int("AccountID", kind == kVisa ? 2 : 1);
    }
    if (insurance) {
      pay.Int("IsInsurance", 1).Int("InsuranceID", insurer)
          .Text("PaymentName", insurers_[insurer - 1].name + "-" + payer_name);
    } else if (kind != kWriteOff && kind != kCourtesy) {
      pay.Text("PaymentName", payer_name);
      if (payer % 3 == 0) pay.Int("IsInsurance", 0);
      if (value > allocated) pay.Text("Notes", "Change left on account");
    }
    const bool cancel_it = kind == kCheque && invoice_cancelled_;
    if (cancel_it) pay.Int("Cancelled", 1).Text("CancellationDate", Iso(check));
    const bool refund = !insurance && value > allocated && rng_.Percent(10) && check + 30 <= today_;
    if (refund) pay.Cents("RefundAmount", value - allocated).Text("RefundDate", Iso(check + 30));
    const int64_t id = pay.Insert();
    if (kind == kInsuranceBulk) bulk_[{insurer, check}].push_back({id, value});
    auto& det = W("InvoicePaymentDetails");
    det.Int("InvoicePaymentID", id).Int("InvoiceID", invoice).Cents("Amount", allocated).Text("Date", Iso(check)).Insert();
    for (const auto& [i, amount] : alloc)
      W("InvoicePaymentAllocations")
          .Int("InvoicePaymentID", id)
          .Int("InvoiceDetailsID", lines[i].id)
          .Int("PatientID", invoice_patient_)
          .Cents("Amount", amount)
          .Text("AppliedDate", Iso(check))
          .Insert();
    last_alloc_ = alloc;
    if (refund) {
      // The credit goes back to the patient as a payment of its own.
      W("InvoicePayments")
          .Int("PatientID", payer)
          .Int("PaymentTypeID", kRefund)
          .Int("AccountID", 1)
          .Int("EmployeeID", PickStaff(desk_))
          .Int("InitialProviderID", provider)
          .Text("PaymentName", payer_name)
          .Cents("Value", -(value - allocated))
          .Cents("TotalAllocated", 0)
          .Cents("TotalToCredit", -(value - allocated))
          .Text("Notes", "Refund of credit")
          .Text("Date", Iso(check + 30))
          .Text("CheckDate", Iso(check + 30))
          .Text("Check#", std::to_string(rng_.Range(100, 999)))
          .Int("IsInsurance", 0)
          .Insert();
    }
    return allocated;
  }

  std::string PayerName(const FamilyState& fam, int64_t payer) const {
    for (const auto& m : fam.members)
      if (m.id == payer) return m.full;
    return fam.members.front().full;
  }

  // A cheque that came back: the NSF row takes the money off the invoice
  // and its lines again, and the patient pays again in cash a week later.
  void Nsf(const FamilyState& fam, int64_t payer, int64_t amount, int64_t day, std::vector<Line>& lines,
           const std::vector<std::pair<size_t, int64_t>>& alloc, int64_t invoice, int64_t provider) {
    const int64_t when = day + 5;
    if (when > today_) return;
    const int64_t id = W("InvoicePayments")
                           .Int("PatientID", payer)
                           .Int("PaymentTypeID", kNsf)
                           .Int("AccountID", 1)
                           .Int("EmployeeID", PickStaff(desk_))
                           .Int("InitialProviderID", provider)
                           .Text("PaymentName", PayerName(fam, payer))
                           .Cents("Value", -amount)
                           .Cents("TotalAllocated", -amount)
                           .Cents("TotalToCredit", 0)
                           .Text("Notes", "Cheque returned NSF")
                           .Text("Date", Iso(when))
                           .Text("CheckDate", Iso(when))
                           .Text("Check#", "0")
                           .Insert();
    W("InvoicePaymentDetails").Int("InvoicePaymentID", id).Int("InvoiceID", invoice).Cents("Amount", -amount).Text("Date", Iso(when)).Insert();
    for (const auto& [i, a] : alloc) {
      W("InvoicePaymentAllocations")
          .Int("InvoicePaymentID", id)
          .Int("InvoiceDetailsID", lines[i].id)
          .Int("PatientID", invoice_patient_)
          .Cents("Amount", -a)
          .Text("AppliedDate", Iso(when))
          .Insert();
      lines[i].patient_paid -= a;
    }
    if (when + 7 <= today_)
      Payment(fam, payer, rng_.Percent(50) ? kCash : kReEntry, when + 7, when + 7, lines, 0, invoice, provider, false);
  }

  void Interest(const Person& p, const FamilyState& fam, int64_t original, int64_t day, int64_t owing,
                int64_t provider) {
    if (owing <= 0 || day > today_) return;
    const int64_t cents = std::max<int64_t>(1, owing * 15 / 1000);
    const int64_t id = ++invoice_number_;
    W("Invoices")
        .Int("ID", id)
        .Int("Invoice#", 10000 + id)
        .Int("PatientID", p.id)
        .Int("ProviderID", provider)
        .Int("OverseerID", fam.doctor)
        .Int("DoctorID", fam.doctor)
        .Text("Date", Iso(day))
        .Int("Time", 0)
        .Text("EntryDate", Iso(day, 1))
        .Int("Complete?", 1)
        .Cents("InvoiceTotal", cents)
        .Int("IsAssignment", 0)
        .Int("InterestInvoiceID", original)
        .Int("ChargeInterest", 1)
        .Text("notes", "Interest")
        .Insert();
    W("InvoiceDetails")
        .Int("InvoiceID", id)
        .Text("Code", "00090")
        .Cents("Cost", cents)
        .Cents("PatientCost", cents)
        .Cents("PrimaryInsCost", 0)
        .Text("Status", "Complete")
        .Text("Date", Iso(day))
        .Text("EntryDate", Iso(day))
        .Int("ProviderID", provider)
        .Int("EmployeeID", PickStaff(desk_))
        .Insert();
  }

  // A cheque dated ahead, on hand: entered, not yet allocated.
  void PostDated(const FamilyState& fam) {
    const int64_t entry = today_ - rng_.Range(0, 10);
    W("InvoicePayments")
        .Int("PatientID", fam.head)
        .Int("PaymentTypeID", kCheque)
        .Int("AccountID", 1)
        .Int("EmployeeID", PickStaff(desk_))
        .Int("InitialProviderID", fam.doctor)
        .Text("PaymentName", fam.members.front().full)
        .Cents("Value", 25000)
        .Cents("TotalAllocated", 0)
        .Cents("TotalToCredit", 25000)
        .Text("Notes", "Post-dated cheque")
        .Text("Date", Iso(entry))
        .Text("CheckDate", Iso(today_ + rng_.Range(5, 60)))
        .Text("Check#", std::to_string(rng_.Range(100, 999)))
        .Int("IsInsurance", 0)
        .Insert();
  }

  void Note(const Person& p, int64_t provider, int64_t appointment, int64_t day, const std::string& code) {
    const bool follow = rng_.Percent(40);
    auto& n = W("PatientProgressNotes");
    n.Int("PatientID", p.id)
        .Int("EmployeeID", provider)
        .Text("Date", Iso(day))
        .Text("Treatment", follow ? "Watch area on lower left; call in two weeks" : "Treatment as planned, no complications")
        .Int("Complete", follow && day > today_ - 30 ? 0 : 1)
        .Int("Type", follow ? 2 : 1);
    if (rng_.Percent(90)) n.Int("AppointmentID", appointment);
    if (follow) n.Text("ReminderDate", Iso(day + 14));
    const int64_t id = n.Insert();
    W("PatientProgressNoteDetails")
        .Int("PatientProgressNoteID", id)
        .Text("Code", code)
        .Text("Tooth#", "36")
        .Text("Liner", "Calcium hydroxide")
        .Text("Material", "Composite A2")
        .Text("Colour", "A2")
        .Text("Surface", "O")
        .Int("Units", 1)
        .Text("Instruments", "Standard tray")
        .Text("AnaestheticNote", "Lidocaine 2% 1 carpule")
        .Text("ProceduralNote", "Isolation with cotton rolls")
        .Insert();
  }

  void Prescription(const Person& p, int64_t doctor, int64_t day) {
    auto& rx = W("PatientPrescriptions");
    rx.Int("PatientID", p.id).Text("Date", Iso(day));
    if (rng_.Percent(90)) rx.Int("EmployeeID", doctor);
    const int64_t id = rx.Insert();
    W("PatientPrescriptionDetails")
        .Int("PatientPrescriptionID", id)
        .Text("RX", "Amoxicillin 500 mg")
        .Text("Dispense", "21 capsules")
        .Text("Label", "One capsule three times a day")
        .Int("Repeats", 0)
        .Insert();
  }

  // ---- The closing months ------------------------------------------------
  //
  // The day-end and month-end figures meet cases that ordinary visits bring
  // only now and then. Each of the last six months gets every one of them on
  // households already made: a payment taken in under the overseer and put
  // on a hygienist's lines days later (moving money between providers,
  // with a credit left over), invoices cancelled in the same and in a later
  // month, an invoice without lines, lines posted after their treatment
  // date, limited exams, reversed codes and reversed lab fees, a write-off,
  // an interest charge, and a hygienist's paid visit with codes inside and
  // outside the hygiene company's ranges.

  struct Household {
    int64_t patient;
    int64_t doctor;
    int office;
  };

  struct ExtraLine {
    const char* code;
    int64_t cents;
    int64_t provider;
    int64_t treated;  // the treatment date; the entry date is the invoice's
  };

  // The months a closing run looks at: the last six, oldest first, each
  // from its first day to its last (today for the current one), with the
  // first day of the month after; months before the history are left out.
  template <typename Body>
  void ForEachClosingMonth(Body body) {
    int y, m, d;
    CivilFromDays(today_, y, m, d);
    for (int back = 5; back >= 0; --back) {
      int my = y, mm = m - back;
      while (mm < 1) mm += 12, --my;
      const int64_t first = DaysFromCivil(my, mm, 1);
      const int64_t next = mm == 12 ? DaysFromCivil(my + 1, 1, 1) : DaysFromCivil(my, mm + 1, 1);
      if (first < start_) continue;
      body(first, std::min(today_, next - 1), next);
    }
  }

  void ClosingMonths() {
    if (households_.empty()) return;
    ForEachClosingMonth([&](int64_t first, int64_t last, int64_t next) { ClosingMonth(first, last, next); });
  }

  // A weekday between `from` and `to` (`from` when there is none).
  int64_t WorkDay(int64_t from, int64_t to) {
    for (int tries = 0; tries < 8; ++tries) {
      const int64_t day = rng_.Range(from, to);
      const int wd = WeekdayOf(day);
      if (wd != 0 && wd != 6) return day;
    }
    return from;
  }

  const Household& AnyHousehold() { return households_[rng_.Range(0, households_.size() - 1)]; }

  void ClosingMonth(int64_t first, int64_t last, int64_t next_month) {
    // Leave the last two days of a month for the allocations made later.
    const int64_t early_end = std::max(first, last - 2);

    // Money moved between providers: a cheque taken in under the overseer,
    // put on the hygienist's lines two to four days later; what is left
    // over stays on account.
    {
      const Household& h = AnyHousehold();
      const int64_t hygienist = PickStaff(hygienists_);
      const int64_t day = WorkDay(first, early_end);
      std::vector<Line> lines;
      const int64_t inv = ExtraInvoice(h, day, hygienist,
                                       {{"01202", 4200, hygienist, day}, {"11102", 11800, hygienist, day}},
                                       lines);
      const int64_t applied = std::min(last, day + rng_.Range(2, 4));
      const int64_t due = 4200 + 11800;
      ExtraPayment(h, kCheque, day, applied, h.doctor, (due + 4999) / 5000 * 5000 + 5000,
                   {{lines[0].id, 4200}, {lines[1].id, 11800}}, inv, false);
    }
    // Cancelled in its own month, and cancelled in the month after.
    for (const bool later : {false, true}) {
      const Household& h = AnyHousehold();
      const int64_t day = WorkDay(first, early_end);
      const int64_t cancel = later ? next_month + rng_.Range(0, 9) : std::min(last, day + 1);
      std::vector<Line> lines;
      ExtraInvoice(h, day, h.doctor, {{"23311", 14500, h.doctor, day}}, lines,
                   cancel <= today_ ? cancel : -1);
    }
    // An invoice without lines: a charge entered on the invoice alone.
    {
      const Household& h = AnyHousehold();
      const int64_t day = WorkDay(first, last);
      const int64_t id = ++invoice_number_;
      W("Invoices")
          .Int("ID", id)
          .Int("Invoice#", 10000 + id)
          .Int("PatientID", h.patient)
          .Int("ProviderID", h.doctor)
          .Int("OverseerID", h.doctor)
          .Int("DoctorID", h.doctor)
          .Text("Date", Iso(day))
          .Int("Time", 600)
          .Text("EntryDate", Iso(day, 600))
          .Int("Complete?", 1)
          .Cents("InvoiceTotal", 7500)
          .Cents("PatientTotal", 7500)
          .Int("IsAssignment", 0)
          .Text("notes", "Missed appointment fee")
          .Insert();
    }
    // Lines posted after their treatment, a limited exam, reversed codes
    // (a complete exam taken back, a lab fee taken back) and a lab fee.
    {
      const Household& h = AnyHousehold();
      const int64_t day = WorkDay(first, last);
      const int64_t treated = day - rng_.Range(5, 20);
      std::vector<Line> lines;
      ExtraInvoice(h, day, h.doctor,
                   {{"00100", 3500, h.doctor, treated},
                    {"27201", 118000, h.doctor, treated},
                    {"99111", 31000, h.doctor, treated},
                    {"-01101", -9800, h.doctor, treated},
                    {"-99111", -31000, h.doctor, day},
                    {"-00100", 0, h.doctor, day}},
                   lines);
    }
    // A hygienist's visit, paid the same day in cash, with codes inside the
    // hygiene company's ranges (11000-11999, 13000-13999) and outside; a
    // small balance written off.
    {
      const Household& h = AnyHousehold();
      const int64_t hygienist = PickStaff(hygienists_);
      const int64_t day = WorkDay(first, last);
      std::vector<Line> lines;
      const int64_t inv = ExtraInvoice(h, day, hygienist,
                                       {{"01202", 4200, hygienist, day},
                                        {"11101", 5900, hygienist, day},
                                        {"13211", 3600, hygienist, day}},
                                       lines);
      ExtraPayment(h, kCash, day, day, hygienist, 4200 + 5900 + 3100,
                   {{lines[0].id, 4200}, {lines[1].id, 5900}, {lines[2].id, 3100}}, inv, false);
      ExtraPayment(h, kWriteOff, day, day, hygienist, 500, {{lines[2].id, 500}}, inv, false);
    }
    // Interest on an overdue account.
    {
      const Household& h = AnyHousehold();
      const int64_t day = WorkDay(first, last);
      std::vector<Line> lines;
      const int64_t inv = ExtraInvoice(h, day, h.doctor, {{"00090", 1275, h.doctor, day}}, lines);
      sqlite3_stmt* st = nullptr;
      sqlite3_prepare_v2(db_, "UPDATE Invoices SET ChargeInterest = 1, InterestInvoiceID = "
                              "(SELECT MIN(ID) FROM Invoices WHERE PatientID = ?) WHERE ID = ?",
                         -1, &st, nullptr);
      sqlite3_bind_int64(st, 1, h.patient);
      sqlite3_bind_int64(st, 2, inv);
      sqlite3_step(st);
      sqlite3_finalize(st);
    }
  }

  // ---- What every month of a closing run meets ----------------------------

  // Added last, so that nothing written before it changes: in each of the
  // last six months a payment cancelled the day it came in and one
  // cancelled days later, a money order (a type whose [Adjustment?] was
  // never set), a cheque dated before it was entered and a post-dated one,
  // an insurer's bulk cheque for the bank, the expenses of both accounts,
  // claim messages of every type answered with every response code and
  // status, and new patients examined (01101-01103) after signing up.
  void MonthlyVariety() {
    if (households_.empty()) return;
    const int64_t money_order = kPaymentTypeCount + 1, bank_bulk = kPaymentTypeCount + 2;
    W("PaymentTypes")
        .Int("ID", money_order)
        .Text("Name", "Money Order")
        .Text("Description", "Postal money order")
        .Int("ToTotalPaid?", 0)
        .Int("BankDeposit", 1)
        .Int("Refund", 0)
        .Int("OfficePayment", 0)
        .Int("BulkPayment", 0)
        .Int("RecAfterDep", 0)
        .Int("NSF", 0)
        .Insert();
    W("PaymentTypes")
        .Int("ID", bank_bulk)
        .Text("Name", "Insurance Bulk Cheque")
        .Text("Description", "Insurer cheque over several patients")
        .Int("Adjustment?", 0)
        .Int("ToTotalPaid?", 0)
        .Int("BankDeposit", 1)
        .Int("Refund", 0)
        .Int("OfficePayment", 0)
        .Int("BulkPayment", 1)
        .Int("RecAfterDep", 0)
        .Int("NSF", 0)
        .Insert();
    ForEachClosingMonth([&](int64_t first, int64_t last, int64_t) {
      VarietyPayments(first, last, money_order, bank_bulk);
      for (int a = 1; a <= 2; ++a)
        W("AccountsPayable")
            .Int("AccountID", a)
            .Text("Date", Iso(WorkDay(first, last)))
            .Cents("Amount", rng_.Range(50000, 400000))
            .Insert();
      VarietyClaims(first, last);
      ExaminedSignUps(first, last);
    });
  }

  // A payment on account (nothing applied), all dates at midnight.
  int64_t OnAccount(const Household& h, int kind, int64_t entered, int64_t dated, int64_t cents,
                    const std::string& cheque, int64_t cancelled = -1) {
    auto& pay = W("InvoicePayments");
    pay.Int("PatientID", h.patient)
        .Int("PaymentTypeID", kind)
        .Int("AccountID", 1)
        .Int("EmployeeID", PickStaff(desk_))
        .Int("InitialProviderID", h.doctor)
        .Text("PaymentName", PatientName(h.patient))
        .Cents("Value", cents)
        .Cents("TotalAllocated", 0)
        .Cents("TotalToCredit", cents)
        .Text("Date", Iso(entered))
        .Text("CheckDate", Iso(dated))
        .Text("Check#", cheque)
        .Int("IsInsurance", 0);
    if (cancelled >= 0) pay.Int("Cancelled", 1).Text("CancellationDate", Iso(cancelled)).Text("Notes", "Entered in error");
    return pay.Insert();
  }

  void VarietyPayments(int64_t first, int64_t last, int64_t money_order, int64_t bank_bulk) {
    const int64_t early_end = std::max(first, last - 3);
    const std::string number = std::to_string(rng_.Range(100, 9999));
    // Cancelled the day it came in, and three days later.
    {
      const int64_t day = WorkDay(first, early_end);
      OnAccount(AnyHousehold(), kCash, day, day, rng_.Range(20, 90) * 500, "0", day);
      OnAccount(AnyHousehold(), kCheque, day, day, rng_.Range(20, 90) * 500, number, std::min(today_, day + 3));
    }
    {
      const int64_t day = WorkDay(first, last);
      OnAccount(AnyHousehold(), static_cast<int>(money_order), day, day, rng_.Range(20, 90) * 500, "MO" + number);
    }
    // Dated two days before it was entered, and dated three weeks ahead.
    {
      const int64_t day = WorkDay(std::min(last, first + 2), last);
      OnAccount(AnyHousehold(), kCheque, day, day - 2, rng_.Range(20, 90) * 500, number + "1");
      OnAccount(AnyHousehold(), kCheque, day, day + 21, rng_.Range(20, 90) * 500, number + "2");
    }
    // An insurer's cheque for two patients, deposited at the bank.
    {
      const int64_t day = WorkDay(first, last);
      const int insurer = static_cast<int>(rng_.Range(1, insurers_.size()));
      int64_t sum = 0;
      std::vector<int64_t> ids;
      for (int i = 0; i < 2; ++i) {
        const Household& h = AnyHousehold();
        const int64_t cents = rng_.Range(40, 200) * 500;
        sum += cents;
        ids.push_back(W("InvoicePayments")
                          .Int("PatientID", h.patient)
                          .Int("PaymentTypeID", bank_bulk)
                          .Int("AccountID", 1)
                          .Int("EmployeeID", PickStaff(desk_))
                          .Int("InitialProviderID", h.doctor)
                          .Int("InsuranceID", insurer)
                          .Text("PaymentName", insurers_[insurer - 1].name + "-" + PatientName(h.patient))
                          .Cents("Value", cents)
                          .Cents("TotalAllocated", 0)
                          .Cents("TotalToCredit", cents)
                          .Text("Date", Iso(day))
                          .Text("CheckDate", Iso(day))
                          .Text("Check#", "0")
                          .Int("IsInsurance", 1)
                          .Insert());
      }
      const int64_t bulk = W("BulkPayments")
                               .Int("PaymentTypeID", bank_bulk)
                               .Int("AccountID", 1)
                               .Int("EmployeeID", desk_.front())
                               .Cents("Amount", sum)
                               .Text("EntryDate", Iso(day))
                               .Text("CheckNo", "BC" + std::to_string(day % 100000))
                               .Text("PaymentName", insurers_[insurer - 1].name)
                               .Insert();
      for (const int64_t id : ids) W("BulkPaymentDetails").Int("BulkPaymentID", bulk).Int("InvoicePaymentID", id).Insert();
    }
  }

  // A claim, a predetermination, an eligibility request and a reversal,
  // each answered by an acknowledgement (11) and an explanation of benefits
  // (21), each held (0), accepted (1) and rejected (2).
  void VarietyClaims(int64_t first, int64_t last) {
    for (int type = 0; type <= 3; ++type)
      for (const int trs : {11, 21})
        for (int status = 0; status <= 2; ++status) {
          const int insurer = static_cast<int>(rng_.Range(1, insurers_.size()));
          const int64_t send = W("PatientEDISends")
                                   .Int("PatientID", AnyHousehold().patient)
                                   .Int("SequenceNumber", ++sequence_)
                                   .Int("Type", type)
                                   .Text("DatePosted", Iso(WorkDay(first, last), 660))
                                   .Int("Sent?", 1)
                                   .Text("CarrierNumber", insurers_[insurer - 1].cda)
                                   .Insert();
          Response(send, trs, status, trs == 21 && status == 1 ? rng_.Range(20, 200) * 100 : 0);
        }
  }

  // Two of the month's active sign-ups come in for their examination a few
  // days after signing up (sign-ups carry a time of day; the visit is on a
  // later day).
  void ExaminedSignUps(int64_t first, int64_t last) {
    static const char* const kExams[] = {"01101", "01102", "01103"};
    sqlite3_stmt* st = nullptr;
    sqlite3_prepare_v2(db_,
                       "SELECT ID, SignupDate FROM Patient WHERE SignupDate >= ? AND SignupDate < ? AND "
                       "[Active?] <> 0 ORDER BY ID LIMIT 2",
                       -1, &st, nullptr);
    const std::string from = Iso(first), to = Iso(last + 1);
    sqlite3_bind_text(st, 1, from.c_str(), -1, SQLITE_TRANSIENT);
    sqlite3_bind_text(st, 2, to.c_str(), -1, SQLITE_TRANSIENT);
    std::vector<std::pair<int64_t, std::string>> joined;
    while (sqlite3_step(st) == SQLITE_ROW)
      joined.emplace_back(sqlite3_column_int64(st, 0), reinterpret_cast<const char*>(sqlite3_column_text(st, 1)));
    sqlite3_finalize(st);
    for (const auto& [patient, signed_up] : joined) {
      int sy, sm, sd;
      std::sscanf(signed_up.c_str(), "%d-%d-%d", &sy, &sm, &sd);
      const int64_t day = DaysFromCivil(sy, sm, sd) + rng_.Range(1, 14);
      const char* code = kExams[patient % 3];
      const int64_t fee = CodeById(code).fee_cents;
      const int64_t doctor = dentists_[patient % dentists_.size()];
      const int64_t id = W("PatientAppointments")
                             .Int("PatientID", patient)
                             .Int("ProviderID", doctor)
                             .Int("OverSeerID", doctor)
                             .Int("ProcedureCat", 1)
                             .Text("Date", Iso(day))
                             .Int("Time", 540 + 30 * static_cast<int>(patient % 12))
                             .Int("Units", 3)
                             .Cents("Estimate", fee)
                             .Int("EmployeeID", PickStaff(desk_))
                             .Int("Confirmed", 1)
                             .Text("Template", "New patient")
                             .Text("Reason", "New patient examination")
                             .Insert();
      W("PatientAppointmentCodes").Int("PatientAppointmentID", id).Text("Code", code).Cents("Fee", fee).Insert();
    }
  }

  // An invoice of the household's patient entered on `day`, the patient
  // paying all of it; `cancelled` >= 0 cancels it on that day.
  int64_t ExtraInvoice(const Household& h, int64_t day, int64_t provider,
                       const std::vector<ExtraLine>& planned, std::vector<Line>& lines,
                       int64_t cancelled = -1) {
    const int64_t id = ++invoice_number_;
    int64_t total = 0;
    for (const auto& l : planned) total += l.cents;
    auto& inv = W("Invoices");
    inv.Int("ID", id)
        .Int("Invoice#", 10000 + id)
        .Int("PatientID", h.patient)
        .Int("ProviderID", provider)
        .Int("OverseerID", h.doctor)
        .Int("DoctorID", h.doctor)
        .Text("Date", Iso(day))
        .Int("Time", 540)
        .Text("EntryDate", Iso(day, 570))
        .Int("Complete?", 1)
        .Cents("InvoiceTotal", total)
        .Cents("PatientTotal", total)
        .Int("IsAssignment", 0)
        .Int("ChargeInterest", 0);
    if (cancelled >= 0) inv.Int("Cancelled", 1).Text("CancellationDate", Iso(cancelled)).Text("notes", "Billed in error");
    inv.Insert();
    for (const auto& l : planned) {
      const int64_t line = W("InvoiceDetails")
                               .Int("InvoiceID", id)
                               .Text("Code", l.code)
                               .Cents("Cost", l.cents)
                               .Cents("PatientCost", l.cents)
                               .Cents("PrimaryInsCost", 0)
                               .Cents("SecondaryInsCost", 0)
                               .Cents("TertiaryInsCost", 0)
                               .Text("Status", "Complete")
                               .Text("Date", Iso(l.treated))
                               .Text("EntryDate", Iso(day))
                               .Int("ProviderID", l.provider)
                               .Int("EmployeeID", PickStaff(desk_))
                               .Insert();
      lines.push_back({line, l.cents, 0, 0});
    }
    return id;
  }

  // A payment by the household's patient taken in on `check` under
  // `initial` and put on the invoice's lines on `applied`; what `value`
  // leaves over stays on account.
  void ExtraPayment(const Household& h, int kind, int64_t check, int64_t applied, int64_t initial,
                    int64_t value, const std::vector<std::pair<int64_t, int64_t>>& alloc,
                    int64_t invoice, bool insurance) {
    int64_t allocated = 0;
    for (const auto& a : alloc) allocated += a.second;
    const bool office = kind == kWriteOff;
    auto& pay = W("InvoicePayments");
    pay.Int("PatientID", h.patient)
        .Int("PaymentTypeID", kind)
        .Int("EmployeeID", PickStaff(desk_))
        .Int("InitialProviderID", initial)
        .Cents("Value", value)
        .Cents("TotalAllocated", allocated)
        .Cents("TotalToCredit", value - allocated)
        .Text("Date", Iso(check))
        .Text("CheckDate", Iso(check))
        .Text("Check#", kind == kCheque ? std::to_string(rng_.Range(100, 9999)) : "0")
        .Int("IsInsurance", insurance ? 1 : 0);
    if (office) pay.Text("PaymentName", "Office").Text("Notes", "Small balance written off");
    else pay.Int("AccountID", 1).Text("PaymentName", PatientName(h.patient));
    const int64_t id = pay.Insert();
    W("InvoicePaymentDetails")
        .Int("InvoicePaymentID", id)
        .Int("InvoiceID", invoice)
        .Cents("Amount", allocated)
        .Text("Date", Iso(applied))
        .Insert();
    for (const auto& [line, amount] : alloc)
      W("InvoicePaymentAllocations")
          .Int("InvoicePaymentID", id)
          .Int("InvoiceDetailsID", line)
          .Int("PatientID", h.patient)
          .Cents("Amount", amount)
          .Text("AppliedDate", Iso(applied))
          .Insert();
  }

  std::string PatientName(int64_t id) {
    sqlite3_stmt* st = nullptr;
    sqlite3_prepare_v2(db_, "SELECT FullName FROM Patient WHERE ID = ?", -1, &st, nullptr);
    sqlite3_bind_int64(st, 1, id);
    std::string name;
    if (sqlite3_step(st) == SQLITE_ROW) name = reinterpret_cast<const char*>(sqlite3_column_text(st, 0));
    sqlite3_finalize(st);
    return name;
  }

  // Insurer deposits of one day become bulk payments; the invoices paid off
  // get their final figures.
  // Referral alert criteria of a producer: most compare 30 days with 180
  // (a whole ratio, 6), the second producer 30 with 45 (1.5), and the third
  // has none, so that the alerts warn about a provider without criteria.
  void ReferralCriteria(int64_t employee, int64_t at_least) {
    ++producers_with_criteria_;
    if (producers_with_criteria_ == 3) return;
    const bool fractional = producers_with_criteria_ == 2;
    W("ReferralAlerts")
        .Int("EmployeeID", employee)
        .Int("AtLeast", fractional ? 1 : at_least)
        .Real("InLast", 30)
        .Real("AverageOver", fractional ? 45 : 180)
        .Real("AlertWhen", 25)
        .Insert();
  }

  // Who sent the practice's newest patients over the last half year, for
  // the referral alerts: Halloran sent 18 until a month ago and none since
  // (stopped); Roybal 23 before the last month and 1 in it (slackened, a
  // drop of 75 %); Quaresma 13 and 2 (a smaller drop); Osei-Lindqvist 10
  // and 2, as steady as ever. A sixth referrer, Dr. Noor Castellanos, has
  // sent nobody yet. The practice keeps its number of patients: the last
  // patients on file are the ones who signed up lately, days counted back
  // from today. A practice too small to spare them keeps its history as it
  // was.
  void ReferralHistory() {
    struct Batch {
      int dentist, older, recent;
    };
    static const Batch kBatches[] = {{2, 18, 0}, {3, 23, 1}, {4, 13, 2}, {1, 10, 2}};
    int64_t total = 0;
    for (const Batch& b : kBatches) total += b.older + b.recent;
    if (o_.patients < 4 * total) return;
    W("ReferringDentists").Int("ID", 7).Text("Title", "Dr.").Text("Name", "Noor")
        .Text("LastName", "Castellanos").Text("Phone", "6135550177").Text("City", "Kingston")
        .Text("Prov", "ON").Insert();
    sqlite3_stmt* st = nullptr;
    sqlite3_prepare_v2(db_,
                       "UPDATE Patient SET SignupDate = ?, ReferringDentistID = ?, RefferedBy = '0', "
                       "ReferalReason = ?, ReferredByAddID = 'Dentist', [Active?] = -1, "
                       "AccountholderOnly = 0 WHERE ID = ?",
                       -1, &st, nullptr);
    int64_t id = o_.patients - total + 1;
    for (const Batch& b : kBatches) {
      for (int i = 0; i < b.older + b.recent; ++i, ++id) {
        // The older ones spread over 35 to 170 days ago, the recent ones
        // within the last 25 days.
        const int64_t ago = i < b.older ? 35 + (135 * i) / std::max(1, b.older - 1)
                                        : 3 + 10 * (i - b.older);
        const std::string signup = Iso(today_ - ago, 600);
        const char* reason = id % 3 ? "Second opinion" : "Orthodontic assessment";
        sqlite3_bind_text(st, 1, signup.c_str(), -1, SQLITE_TRANSIENT);
        sqlite3_bind_int64(st, 2, b.dentist);
        sqlite3_bind_text(st, 3, reason, -1, SQLITE_STATIC);
        sqlite3_bind_int64(st, 4, id);
        sqlite3_step(st);
        sqlite3_reset(st);
      }
    }
    sqlite3_finalize(st);
  }

  void Bulk() {
    for (const auto& [key, payments] : bulk_) {
      int64_t sum = 0;
      for (const auto& pv : payments) sum += pv.second;
      const int64_t id = W("BulkPayments")
                             .Int("PaymentTypeID", kInsuranceBulk)
                             .Int("AccountID", 1)
                             .Int("EmployeeID", desk_.front())
                             .Cents("Amount", sum)
                             .Text("EntryDate", Iso(key.second))
                             .Text("CheckNo", "EFT" + std::to_string(key.second % 100000))
                             .Text("PaymentName", insurers_[key.first - 1].name)
                             .Insert();
      for (const auto& pv : payments)
        W("BulkPaymentDetails").Int("BulkPaymentID", id).Int("InvoicePaymentID", pv.first).Insert();
    }
    sqlite3_stmt* st = nullptr;
    sqlite3_prepare_v2(db_, "UPDATE Invoices SET FinalDate = ?, InvoiceFinalTotal = ? WHERE ID = ?", -1, &st, nullptr);
    for (const auto& [id, day, total] : finals_) {
      const std::string d = Iso(day);
      sqlite3_bind_text(st, 1, d.c_str(), -1, SQLITE_TRANSIENT);
      sqlite3_bind_double(st, 2, static_cast<double>(total) / 100.0);
      sqlite3_bind_int64(st, 3, id);
      sqlite3_step(st);
      sqlite3_reset(st);
    }
    sqlite3_finalize(st);
  }

  // ---- Pay and monitors ----------------------------------------------------

  // What payroll, the employee monitor and the specialist analysis read
  // beyond the practice's history: every monitored code in the fee guide, a
  // hygienist's year of those codes with booked units, monthly work of the
  // specialists, a share with no "$" or "%", and time-clock rows with a
  // missed punch-out on a weekend and a shift over midnight.
  void Compensation() {
    static const struct {
      const char* id;
      const char* description;
      int64_t fee_cents;
    } kMonitorCodes[] = {
        {"13212", "Oral hygiene instruction, 2 units", 3600}, {"13213", "Oral hygiene instruction, 3 units", 5400},
        {"13214", "Oral hygiene instruction, 4 units", 7200}, {"11112", "Scaling, 2 units", 10800},
        {"11113", "Scaling, 3 units", 16200},                 {"11114", "Scaling, 4 units", 21600},
        {"11115", "Scaling, 5 units", 27000},                 {"11116", "Scaling, 6 units", 32400},
        {"11117", "Scaling, half unit", 2700},                {"11119", "Scaling, each additional unit", 5400},
        {"43422", "Root planing, 2 units", 11400},            {"43423", "Root planing, 3 units", 17100},
        {"43424", "Root planing, 4 units", 22800},            {"43425", "Root planing, 5 units", 28500},
        {"43426", "Root planing, 6 units", 34200},            {"43427", "Root planing, half unit", 2850},
        {"43429", "Root planing, each additional unit", 5700}, {"49211", "Desensitization, 1 unit", 4200},
        {"49219", "Desensitization, each additional unit", 4200},
    };
    for (const auto& c : kMonitorCodes) {
      W("FeeCodes").Text("ID", c.id).Text("Description", c.description).Int("Type", 1).Insert();
      W("FeeGuideDetails").Int("FeeGuideID", 1).Text("FeeCodeID", c.id).Cents("Amount", c.fee_cents).Insert();
    }
    // The monitored codes with their fees, the fee guide's first.
    static const struct {
      const char* code;
      int64_t cents;
    } kHygiene[] = {{"13211", 1800}, {"13212", 3600}, {"13213", 5400}, {"13214", 7200}, {"01400", 4500},
                    {"01101", 9000}, {"01102", 6500}, {"01103", 4000}, {"01205", 5500}, {"97123", 35000},
                    {"43612", 48000}, {"43421", 5700}, {"43422", 11400}, {"43423", 17100}, {"43424", 22800},
                    {"43425", 28500}, {"43426", 34200}, {"43427", 2850}, {"43429", 5700}, {"49211", 4200},
                    {"49219", 4200}, {"11111", 5400}, {"11112", 10800}, {"11113", 16200}, {"11114", 21600},
                    {"11115", 27000}, {"11116", 32400}, {"11117", 2700}, {"11119", 5400}, {"01202", 4000}};
    const int64_t patients = w_["Patient"]->rows();
    if (patients == 0 || staff_.empty()) return;
    size_t next_code = 0;
    if (!hygienists_.empty()) {
      const int64_t hygienist = hygienists_.front();
      for (int64_t day = today_ - 365; day < today_; ++day) {
        const int wd = WeekdayOf(day);
        if (wd == 0 || wd == 6 || rng_.Percent(60)) continue;
        std::vector<std::pair<const char*, int64_t>> lines;
        for (int n = 0; n < 3; ++n) {
          lines.push_back({kHygiene[next_code].code, kHygiene[next_code].cents});
          next_code = (next_code + 1) % (sizeof kHygiene / sizeof kHygiene[0]);
        }
        const int64_t patient = rng_.Range(1, patients);
        PaidVisit(patient, hygienist, dentists_.empty() ? hygienist : dentists_.front(), day, lines, 3);
      }
    }
    // Each specialist sees patients every month; a crown brings a lab line.
    for (const int64_t specialist : specialists_) {
      for (int64_t day = today_ - 365; day < today_; day += 14) {
        std::vector<std::pair<const char*, int64_t>> lines = {{"01202", 12000}, {"27201", 95000}};
        if (rng_.Percent(50)) lines.push_back({"99111", 21000});
        PaidVisit(rng_.Range(1, patients), specialist, specialist, day + rng_.Range(0, 4), lines, 4);
      }
    }
    // A share typed without "$" or "%" for the dentist on commission: it
    // pays nothing until the office puts its marker in.
    for (const auto& e : staff_) {
      if (e.type == kTypeAssociate) {
        W("EmployeeCodeSplit").Int("EmployeeID", e.id).Text("StartCode", "01000").Text("EndCode", "01999")
            .Text("Amount", "15").Insert();
        break;
      }
    }
    // The time clock of the first hourly employee: a Saturday and a Sunday
    // without a punch-out (no closing time of her own: the office's, where
    // it has one), and a Friday night shift that ends after midnight.
    for (const auto& e : staff_) {
      if (!e.hourly) continue;
      int64_t saturday = today_ - 40;
      while (WeekdayOf(saturday) != 6) ++saturday;
      auto& p = W("Punch");
      p.Int("UserID", e.id).Text("Date", Iso(saturday)).Text("TimeIn", Iso(saturday, 540)).Insert();
      p.Int("UserID", e.id).Text("Date", Iso(saturday + 1)).Text("TimeIn", Iso(saturday + 1, 600)).Insert();
      p.Int("UserID", e.id).Text("Date", Iso(saturday - 1)).Text("TimeIn", Iso(saturday - 1, 1320))
          .Text("Timeout", Iso(saturday, 60)).Insert();
      break;
    }
  }

  // One completed invoice paid in full in cash on the day: the invoice, its
  // lines (whole-day dates), a booking of `units`, the payment, its detail
  // and its allocations, and the invoice settled.
  void PaidVisit(int64_t patient, int64_t provider, int64_t overseer, int64_t day,
                 const std::vector<std::pair<const char*, int64_t>>& lines, int units) {
    int64_t total = 0;
    for (const auto& l : lines) total += l.second;
    const int64_t appointment = W("PatientAppointments")
                                    .Int("PatientID", patient)
                                    .Int("ProviderID", provider)
                                    .Int("OverSeerID", overseer)
                                    .Text("Date", Iso(day))
                                    .Int("Time", 540)
                                    .Int("Units", units)
                                    .Int("Complete", 1)
                                    .Insert();
    ++invoice_number_;
    const int64_t invoice = W("Invoices")
                                .Int("Invoice#", 10000 + invoice_number_)
                                .Int("PatientID", patient)
                                .Int("ProviderID", provider)
                                .Int("OverseerID", overseer)
                                .Int("DoctorID", overseer)
                                .Int("AppointmentID", appointment)
                                .Text("Date", Iso(day))
                                .Int("Time", 540)
                                .Text("EntryDate", Iso(day, 600))
                                .Int("Complete?", 1)
                                .Cents("InvoiceTotal", total)
                                .Int("IsAssignment", 0)
                                .Int("Units", units)
                                .Text("FinalDate", Iso(day))
                                .Cents("InvoiceFinalTotal", total)
                                .Insert();
    const int64_t payment = W("InvoicePayments")
                                .Int("PatientID", patient)
                                .Int("PaymentTypeID", 1)
                                .Int("AccountID", 1)
                                .Int("EmployeeID", desk_.front())
                                .Int("InitialProviderID", provider)
                                .Cents("Value", total)
                                .Cents("TotalAllocated", total)
                                .Cents("TotalToCredit", 0)
                                .Text("Date", Iso(day))
                                .Text("CheckDate", Iso(day))
                                .Text("Check#", "0")
                                .Int("IsInsurance", 0)
                                .Insert();
    W("InvoicePaymentDetails").Int("InvoicePaymentID", payment).Int("InvoiceID", invoice).Cents("Amount", total)
        .Text("Date", Iso(day)).Insert();
    for (const auto& l : lines) {
      const int64_t detail = W("InvoiceDetails")
                                 .Int("InvoiceID", invoice)
                                 .Text("Code", l.first)
                                 .Cents("Cost", l.second)
                                 .Cents("PatientCost", l.second)
                                 .Cents("PrimaryInsCost", 0)
                                 .Cents("SecondaryInsCost", 0)
                                 .Cents("TertiaryInsCost", 0)
                                 .Text("Status", "Complete")
                                 .Text("Date", Iso(day))
                                 .Text("EntryDate", Iso(day))
                                 .Int("ProviderID", provider)
                                 .Insert();
      W("InvoicePaymentAllocations").Int("InvoicePaymentID", payment).Int("InvoiceDetailsID", detail)
          .Int("PatientID", patient).Cents("Amount", l.second).Text("AppliedDate", Iso(day)).Insert();
    }
  }

  sqlite3* db_;
  DemoOptions o_;
  Random rng_;
  int64_t today_, start_;
  int today_day_;
  int offices_ = 1;
  std::map<std::string, std::unique_ptr<RowWriter>> w_;
  std::vector<Insurer> insurers_;
  std::vector<Employee> staff_;
  std::vector<int64_t> dentists_, hygienists_, specialists_, desk_;
  std::vector<Household> households_;  // first member, doctor, office of each family
  int64_t invoice_number_ = 0, sequence_ = 0;
  int64_t invoice_patient_ = 0;  // patient and state of the invoice being paid
  bool invoice_cancelled_ = false;
  std::map<std::pair<int, int64_t>, std::vector<std::pair<int64_t, int64_t>>> bulk_;
  std::vector<std::tuple<int64_t, int64_t, int64_t>> finals_;
  std::vector<std::pair<size_t, int64_t>> last_alloc_;
};

void Exec(sqlite3* db, const char* sql) {
  char* err = nullptr;
  if (sqlite3_exec(db, sql, nullptr, nullptr, &err) != SQLITE_OK) {
    std::string m = err ? err : "unknown error";
    sqlite3_free(err);
    throw SchemaError(std::string(sql) + ": " + m);
  }
}

}  // namespace

DemoSummary WriteDemoPractice(sqlite3* db, const DemoOptions& options) {
  if (options.patients < 0) throw SchemaError("the demo practice cannot have fewer than no patients");
  Exec(db, "BEGIN");
  try {
    CreateSchema(db);
    // No patients is a practice on its first day: every table and nothing
    // in them, not even an office or a provider, for trying what each
    // report says with nothing to report.
    DemoSummary s;
    if (options.patients > 0) s = Generator(db, options).Run();
    Exec(db, "COMMIT");
    // A practice's database server keeps statistics of its tables; without
    // them SQLite guesses, and drives a period's query from the provider
    // index of every treatment line instead of from the period's dates.
    Exec(db, "ANALYZE");
    return s;
  } catch (...) {
    sqlite3_exec(db, "ROLLBACK", nullptr, nullptr, nullptr);
    throw;
  }
}

DemoSummary WriteDemoPracticeFile(const std::string& path, const DemoOptions& options) {
  std::remove(path.c_str());
  sqlite3* db = nullptr;
  if (sqlite3_open(path.c_str(), &db) != SQLITE_OK) {
    std::string m = db ? sqlite3_errmsg(db) : "out of memory";
    sqlite3_close(db);
    throw SchemaError("opening " + path + ": " + m);
  }
  // The file is written once from scratch: no journal is needed for safety.
  sqlite3_exec(db, "PRAGMA journal_mode = OFF; PRAGMA synchronous = OFF", nullptr, nullptr, nullptr);
  try {
    DemoSummary s = WriteDemoPractice(db, options);
    sqlite3_close(db);
    return s;
  } catch (...) {
    sqlite3_close(db);
    throw;
  }
}

}  // namespace orv::practice

// The dental claim form in English and French: where its boxes stand, what
// the insurer reads in them, and the forms that must not print.
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "claims/claims_fixture.h"
#include "frame/surface/color.h"
#include "support/text_order.h"

namespace orv::testing {
namespace {

constexpr long kLeft = 720;             // every margin
constexpr long kRight = 720 + 7.5 * 1440;  // the 7.5 in the page holds between them

const char* const kFailure =
    "There has been an error printing. One or more pieces of information has not been correctly "
    "entered for the patient.\nThis could include any insurance information, especially the "
    "primary account holder, and or insurance company.\n";

using ClaimForm = ClaimTest;

// The header bands of the form's tables: filled with its grey.
std::vector<render::FilledRect> GreyBands(const render::Page& page) {
  std::vector<render::FilledRect> out;
  const render::Rgb grey = frame::ToRgb(frame::kSystemButtonFace);
  for (const auto& item : page.items)
    if (auto f = std::get_if<render::FilledRect>(&item); f && f->color == grey) out.push_back(*f);
  return out;
}

TEST_F(ClaimForm, TablesSpanTheBodyWithTheirCellSettingsAndTheFootSitsAboveTheMargin) {
  form.VSP.FontName("Tahoma");
  form.VSP.FontSize(8);
  const double x_height = form.VSP.TextHeight("X").value();
  struct Title {
    const char* english;
    const char* french;
    bool bold;
  };
  const Title titles[] = {
      {"Procedure", "Code de l'acte", true},                    // procedures' header
      {"Employee/Plan Member", "Renseignements sur", true},     // subscribers' header
      {"Primary Subscriber", "Premiere employé(e)", true},      // and their heading row
      {"Policy Holder/Employer", "A remplir par titulaire", true},
      {"Dentist Information", "Information du Dentiste", false},
      {"Instructions for Claim", "Directive pour sousmission", false},
      {"01202", "01202", false},
      {"Birth Date: Apr", "Date de naissance: Apr", false}};
  // The French form of this claim prints its body smaller to stay on one
  // sheet: its boxes keep their places and widths all the same.
  for (bool french : {false, true}) {
    const char* lang = french ? "French" : "English";
    if (french) reports.rptClaimFormF(95101, 1, 0);
    else reports.rptClaimForm(95101, 1, 0);
    ASSERT_TRUE(host.messages.empty()) << host.messages[0].prompt;
    EXPECT_EQ(form.PrintCount(), french ? 2 : 1) << "the form goes to the printer";
    EXPECT_EQ(form.ShowCount(), 0) << "and is never previewed";
    EXPECT_TRUE(progress.empty());
    EXPECT_EQ(form.VSP.DocName(), "Claim Form For Invoice# 595101");
    ASSERT_EQ(form.VSP.PageCount(), 1) << lang << ": up to eight lines the form is one page";
    const render::Page& page = form.VSP.Document().pages[0];
    EXPECT_EQ(page.width.value(), 12240) << "portrait letter";

    // Tables 1, 3, 5, 6, 7 and 8 carry a grey header band (one fill per
    // header cell); each band is 7.5 in wide from the left margin.
    std::map<long, std::pair<long, long>> bands;  // top -> left, right
    for (const auto& b : GreyBands(page)) {
      auto [it, fresh] = bands.try_emplace(b.box.y.value(), b.box.x.value(),
                                           b.box.x.value() + b.box.width.value());
      it->second.first = std::min(it->second.first, long(b.box.x.value()));
      it->second.second = std::max(it->second.second, long(b.box.x.value() + b.box.width.value()));
    }
    ASSERT_EQ(bands.size(), 6u) << lang;
    for (const auto& [top, band] : bands) {
      EXPECT_EQ(band.first, kLeft) << lang << ", band at " << top;
      EXPECT_EQ(band.second, kRight) << lang << ", band at " << top;
    }
    // No line of any table reaches past the margins; tables 2 and 4,
    // without a header, draw full-width rules too.
    int full_width = 0;
    for (const auto& item : page.items) {
      if (auto l = std::get_if<render::Line>(&item)) {
        EXPECT_GE(std::min(l->x1, l->x2).value(), kLeft - 10) << lang;
        EXPECT_LE(std::max(l->x1, l->x2).value(), kRight + 10) << lang;
        if (l->y1 == l->y2 && std::min(l->x1, l->x2).value() == kLeft &&
            std::max(l->x1, l->x2).value() == kRight)
          ++full_width;
      }
    }
    EXPECT_GT(full_width, 12) << lang;

    // The foot line: left margin, two heights of "X" (8 pt) above the
    // bottom margin, in 8 points on both forms.
    const render::TextRun* foot = RunStarting(french ? "Tous les renseignements" : "ALL INFORMATION");
    ASSERT_NE(foot, nullptr) << Text();
    EXPECT_EQ(foot->x.value(), kLeft) << lang;
    EXPECT_NEAR(foot->top.value(), 15840 - 720 - 2 * x_height, 1) << lang;
    EXPECT_FLOAT_EQ(foot->size_pt, 8) << lang;

    // The cell settings as the insurer's clerk sees them: which titles stand
    // in bold, and the subscriber box divided down the middle where the
    // patient's box is not.
    const render::Document& doc = form.VSP.Document();
    for (const Title& t : titles) {
      const char* text = french ? t.french : t.english;
      const render::TextRun* r = RunStarting(text);
      ASSERT_NE(r, nullptr) << text << "\n" << Text();
      EXPECT_EQ(doc.fonts[r->font].bold, t.bold) << text;
    }
    // A rule at the middle of the page, 3.75 in from the left margin, past
    // the line of `prefix`.
    auto divided = [&](const std::string& prefix) {
      const render::TextRun* r = RunStarting(prefix);
      if (!r) return false;
      const double y = r->baseline.value();
      return std::any_of(page.items.begin(), page.items.end(), [&](const auto& item) {
        auto l = std::get_if<render::Line>(&item);
        return l && l->x1 == l->x2 && std::abs(l->x1.value() - (kLeft + 3.75 * 1440)) <= 1 &&
               std::min(l->y1, l->y2).value() < y && std::max(l->y1, l->y2).value() > y;
      });
    };
    EXPECT_TRUE(divided(french ? "No. de certificate" : "Certificate #")) << "subscribers";
    EXPECT_FALSE(divided(french ? "Rapport: " : "D.O.B. ")) << "the patient's box";
  }
}

// Body rows of the procedure table (the form's third table) as the form
// handed them to the surface.
size_t ProcedureRows(const render::Document& doc) {
  return doc.tables.size() > 2 ? doc.tables[2].rows.size() - 1 : 0;
}

TEST_F(ClaimForm, ProcedureTableHoldsEightRowsAndLongerInvoicesRunOn) {
  // Three lines of 0.00: none printed, eight empty rows, as for an invoice
  // of one line.
  reports.rptClaimForm(95102, 1, 0);
  EXPECT_FALSE(Has("01202")) << "a line without a fee is not claimed";
  EXPECT_TRUE(Has("Total Fee Submitted: $0.00"));
  EXPECT_EQ(ProcedureRows(form.VSP.Document()), 8u);
  // Nine lines: no padding to a multiple of eight.
  reports.rptClaimForm(95103, 1, 0);
  EXPECT_EQ(ProcedureRows(form.VSP.Document()), 9u);
}

// The procedure box has the paper form's eight lines and fills the page
// between the boxes above and below it: up to eight lines the form is one
// page, a ninth runs onto page 2, on both forms, with and without a
// predetermination number and the insurers' box. The French form with an
// employer or a predetermination number is longer than the page at 8
// points even at the least row height: it prints its body smaller, at the
// largest half point down to 7 at which eight lines fit, and a longer
// claim keeps that size. On no page does a box run under the foot line,
// and every box is closed where a page cuts it.
TEST_F(ClaimForm, LongClaimsCarryOnAboveTheFootLine) {
  form.VSP.FontName("Tahoma");
  form.VSP.FontSize(8);
  const double x_height = form.VSP.TextHeight("X").value();
  const double foot_top = 15840 - 720 - 2 * x_height;
  // The tightest English form (two employers and a predetermination
  // number), and French forms on both sides of the 8-point fit.
  struct Form {
    const char* name;
    int32_t id;
    bool french, numbered;
  };
  const Form forms[] = {{"two employers, English, numbered", 95001, false, true},
                        {"two employers, French, numbered", 95001, true, true},
                        {"no employer, French", 95003, true, false},
                        {"no employer, French, numbered", 95003, true, true}};
  struct Case {
    int lines;
    int pages;
  };
  const Case cases[] = {{8, 1}, {9, 2}, {80, 3}};
  // The size of the procedure rows' text: the body's size.
  auto body_pt = [&] { return SizeOf("02102"); };

  for (const Form& p : forms) {
    const bool french = p.french, numbered = p.numbered;
    double eight_lines_pt = 0;
    for (const Case& c : cases) {
      const std::string name = std::string(p.name) + ", " + std::to_string(c.lines) + " lines";
      std::string lines;
      for (int i = 0; i < c.lines; ++i)
        lines += std::string(i ? "," : "") + "(" + std::to_string(95400 + i) +
                 ", 95103, '02102', '11', 'MOD', 5.00, '2026-11-10 00:00:00')";
      RawExec("UPDATE Invoices SET PatientID = " + std::to_string(p.id) +
              ", PredeterminationNumber = " + (numbered ? "'PD-3'" : "NULL") + " WHERE ID = 95103");
      RawExec("DELETE FROM InvoiceDetails WHERE InvoiceID = 95103");
      RawExec("INSERT INTO InvoiceDetails (ID, InvoiceID, Code, [Tooth#], Surface, Cost, [Date]) VALUES " + lines);
      if (french) reports.rptClaimFormF(95103, 1, 0);
      else reports.rptClaimForm(95103, 1, 0);
      ASSERT_TRUE(host.messages.empty()) << name << host.messages[0].prompt;

      const int pages = c.pages;
      ASSERT_EQ(form.VSP.PageCount(), pages) << name;
      // 8 points wherever eight lines fit in 8 points: every English
      // form and the French one without employer or number. The French
      // form with an employer overruns in 8 points by far more than a
      // predetermination number's line.
      if (c.lines == 8) {
        eight_lines_pt = body_pt();
        if (!french || (!numbered && p.id == 95003)) {
          EXPECT_EQ(eight_lines_pt, 8) << name;
        } else {
          if (p.id != 95003) {
            EXPECT_LT(eight_lines_pt, 8) << name;
          }
          EXPECT_GE(eight_lines_pt, 7) << name;
        }
      } else {
        EXPECT_EQ(body_pt(), eight_lines_pt) << name << ": a longer claim keeps the size of eight lines";
      }
      EXPECT_EQ(Occurrences(Text(), "02102 11 MOD Nov/10/2026 $5.00"), size_t(c.lines)) << name;
      const std::string last = PageText(pages);
      // The last box: the insurers' with an employer, else the policy
      // holder's.
      const char* last_box = p.id == 95003 ? (french ? "A remplir par titulaire" : "Policy Holder/Employer")
                                           : (french ? "Directive pour sousmission" : "Instructions for Claim");
      EXPECT_NE(last.find(last_box), std::string::npos) << name << last;
      EXPECT_NE(last.find(french ? "Tous les renseignements inscrits" : "ALL INFORMATION"),
                std::string::npos) << name;
      if (pages > 1) {
        EXPECT_EQ(PageText(1).find(french ? "Tous les renseignements" : "ALL INFORMATION"),
                  std::string::npos) << name;
      }

      for (int n = 0; n < pages; ++n) {
        const render::Page& page = form.VSP.Document().pages[n];
        std::vector<render::Line> across;
        for (const auto& item : page.items) {
          if (auto t = std::get_if<render::TextRun>(&item)) {
            // Nothing but the foot line, in 8 points whatever the
            // body's size, reaches the foot line's band.
            if (t->top.value() >= foot_top - 1) {
              EXPECT_TRUE(t->text.rfind("ALL INFORMATION", 0) == 0 ||
                          t->text.rfind("Tous les renseignements", 0) == 0)
                  << name << ", page " << n + 1 << ": " << t->text;
              EXPECT_FLOAT_EQ(t->size_pt, 8) << name;
            } else {
              EXPECT_LE(t->top.value() + x_height * t->size_pt / 8, foot_top + 1)
                  << name << ", page " << n + 1 << ": " << t->text;
            }
          } else if (auto l = std::get_if<render::Line>(&item)) {
            EXPECT_LE(std::max(l->y1, l->y2).value(), foot_top + 1) << name;
            if (l->y1 == l->y2) across.push_back(*l);
          }
        }
        // Both sides of every box meet a line across at each end.
        for (const auto& item : page.items) {
          auto l = std::get_if<render::Line>(&item);
          if (!l || l->x1 != l->x2 || (std::abs(l->x1.value() - kLeft) > 1 &&
                                       std::abs(l->x1.value() - kRight) > 1))
            continue;
          for (double y : {std::min(l->y1, l->y2).value(), std::max(l->y1, l->y2).value()}) {
            const bool met = std::any_of(across.begin(), across.end(), [&](const render::Line& h) {
              return std::abs(h.y1.value() - y) <= 1 &&
                     std::min(h.x1, h.x2).value() <= l->x1.value() + 1 &&
                     std::max(h.x1, h.x2).value() >= l->x1.value() - 1;
            });
            EXPECT_TRUE(met) << name << ", page " << n + 1 << ": an open box at x "
                             << l->x1.value() << ", y " << y;
          }
        }
      }
    }
  }

  // Notes of forty-five short lines (within the column's 200 characters)
  // leave no size at which eight lines fit: such a claim is two sheets
  // whatever its size and keeps its 8 points.
  std::string notes, eight;
  for (int i = 0; i < 45; ++i) notes += "x\r\n";
  for (int i = 0; i < 8; ++i)
    eight += std::string(i ? "," : "") + "(" + std::to_string(95400 + i) +
             ", 95103, '02102', '11', 'MOD', 5.00, '2026-11-10 00:00:00')";
  RawExec("UPDATE Invoices SET PatientID = 95001, PredeterminationNumber = NULL, InsuranceNotes = '" +
          notes + "' WHERE ID = 95103");
  RawExec("DELETE FROM InvoiceDetails WHERE InvoiceID = 95103");
  RawExec("INSERT INTO InvoiceDetails (ID, InvoiceID, Code, [Tooth#], Surface, Cost, [Date]) VALUES " + eight);
  reports.rptClaimFormF(95103, 1, 0);
  ASSERT_TRUE(host.messages.empty()) << host.messages[0].prompt;
  EXPECT_EQ(form.VSP.PageCount(), 2);
  EXPECT_EQ(body_pt(), 8);
}

TEST_F(ClaimForm, ClaimRules) {
  reports.rptClaimForm(95101, 1, 0);
  // The dentist's number around the per-insurer number: 12 77 56. Lines:
  // the priced ones; not the 0.00 line, not the reversal. The stored total,
  // not the 125.00 of the printed lines. Table 8: the ";" of the insurer's
  // name printed as ":", on one row with the second insurer.
  EXPECT_TRUE(HasAll(Text(), {"Unique#: 123456", "BPN#: 127756", "Dr. Ada Moreau",
                              "01202 16 MOD Nov/02/2026 $100.00", "11101 Nov/02/2026 $25.00",
                              "Total Fee Submitted: $999.99", "Predetermination Number: PD-9",
                              "Root canal done in two visits", "PAYABLE TO DENTIST",
                              "North: Shore Life Second Life", "2 Rue Peel, Bureau 4",
                              "Toronto, ON, M5J 2N8, Canada"}));
  EXPECT_TRUE(HasNone(Text(), {"02102", "-0120", "North;"}));
  // Subscribers: the holders, the primary policy with no division, the
  // secondary's missing policy as eight blanks; the second employer has an
  // insurer.
  for (const char* box :
       {"Name: Lea Moreau", "Name: Marc Moreau", "Policy#: P-1 Division#: (N/A)", "Division#: D7",
        "Certificate #: S-11", "Certificate#: S-22", "If Child Indicate: Student: Yes",
        "If Student Indicate School: Lycee Nord", "W.C.B. or Gov't Plan? Yes"})
    EXPECT_TRUE(Shows(box)) << box << "\n" << Text();

  // Without the provider number for this insurer, the bare CDA#.
  RawExec("DELETE FROM EmployeeBPN WHERE EmployeeID = 95001");
  reports.rptClaimForm(95101, 1, 0);
  EXPECT_TRUE(Has("BPN#: 123456")) << Text();

  // A supervised invoice goes under the overseer; OverseerID 0 under the
  // provider.
  reports.rptClaimForm(95102, 1, 0);
  EXPECT_TRUE(Has("Dr. Paul Girard")) << Text();
  EXPECT_TRUE(Has("Unique#: 654321"));
  reports.rptClaimForm(95103, 1, 0);
  EXPECT_TRUE(Has("Dr. Ada Moreau"));
  EXPECT_TRUE(host.messages.empty());
}

TEST_F(ClaimForm, ModesChooseTheAssignmentColumnAndModeThreeBlanksTheSubscribers) {
  struct Case {
    const char* name;
    int16_t mode;
    const char* payee;
  };
  // 95101: IsAssignment -1, IsSecondaryAssignment NULL, IsTertiaryAssignment NULL.
  const Case cases[] = {{"primary assigned", 0, "PAYABLE TO DENTIST"},
                        {"secondary null", 1, "PAYABLE TO SUBSCRIBER"},
                        {"tertiary null", 2, "PAYABLE TO SUBSCRIBER"},
                        {"mode 3 with a true IsAssignment", 3, "PAYABLE TO SUBSCRIBER"}};
  for (const Case& c : cases) {
    reports.rptClaimForm(95101, 1, c.mode);
    EXPECT_TRUE(Has(c.payee)) << c.name;
    EXPECT_EQ(Has("I hereby assign benefits"), std::string(c.payee) == "PAYABLE TO DENTIST") << c.name;
    // The insurer blocks stay those of the primary employer in every mode.
    EXPECT_TRUE(Has("North: Shore Life")) << c.name;
  }
  // Mode 3: labels only; the policy row with six blanks and the division
  // label with one; the patient's own box still filled.
  EXPECT_FALSE(Shows("Name: Lea Moreau")) << Text();
  EXPECT_FALSE(Shows("Certificate #: S-11"));
  EXPECT_FALSE(Has("Acme"));
  EXPECT_TRUE(Shows("Relationship: DependantCode:"));
  EXPECT_TRUE(Shows("D.O.B. Apr/05/2010"));
  EXPECT_TRUE(host.messages.empty());
}

TEST_F(ClaimForm, PatientWithoutEmployerHasNoInsurerTable) {
  reports.rptClaimForm(95104, 1, 0);
  ASSERT_TRUE(host.messages.empty()) << host.messages[0].prompt;
  EXPECT_FALSE(Has("Instructions for Claim Submission"));
  EXPECT_TRUE(Shows("Name: Tom Blanc")) << Text();
  EXPECT_TRUE(Shows("Birth Date: Birth Date:")) << "both birth cells blank without employers";
  EXPECT_TRUE(Shows("Employer: Employer:"));
  EXPECT_TRUE(Shows("W.C.B. or Gov't Plan? No"));
  EXPECT_FALSE(Has("North: Shore Life"));
}

TEST_F(ClaimForm, FormsThatCannotPrintShowTheMessageAndPrintNothing) {
  struct Case {
    const char* name;
    int32_t invoice;
    int16_t mode;
  };
  const Case cases[] = {{"unknown invoice", 987654, 0},
                        {"employer without insurer", 95105, 0},
                        {"unknown mode", 95101, 4}};
  for (bool french : {false, true}) {
    for (const Case& c : cases) {
      // A good form first: the surface then holds a finished document.
      reports.rptClaimForm(95104, 1, 0);
      ASSERT_EQ(form.VSP.PageCount(), 1);
      const int printed = form.PrintCount();
      host.messages.clear();
      if (french) reports.rptClaimFormF(c.invoice, 1, c.mode);
      else reports.rptClaimForm(c.invoice, 1, c.mode);
      ASSERT_EQ(host.messages.size(), 1u) << c.name;
      // The same English message on both forms, then the error itself.
      EXPECT_EQ(host.messages[0].prompt.rfind(kFailure, 0), 0u) << c.name << host.messages[0].prompt;
      EXPECT_GT(host.messages[0].prompt.size(), std::string(kFailure).size()) << c.name;
      EXPECT_EQ(form.PrintCount(), printed) << c.name;
      EXPECT_EQ(form.VSP.PageCount(), 0) << c.name << ": nothing half-drawn is kept";
    }
  }
}

TEST_F(ClaimForm, InsuranceOfEmployer) {
  struct Case {
    const char* name;
    Variant value;
    int32_t insurer;
  };
  const Case cases[] = {{"null", Variant::Null(), 0},       {"empty text", Variant(""), 0},
                        {"zero", Variant(0), 0},            {"negative", Variant(-3), 0},
                        {"no such employer", Variant(99999), 0},
                        {"employer without insurer", Variant(95003), 0},
                        {"insured employer", Variant(95001), 95001},
                        {"as text", Variant("95002"), 95002}};
  for (const Case& c : cases) EXPECT_EQ(reports.InsuranceOfEmployer(c.value), c.insurer) << c.name;
}

// ---- French ----

TEST_F(ClaimForm, FrenchFormPrintsTheFormsOwnWords) {
  reports.rptClaimFormF(95101, 1, 0);
  ASSERT_TRUE(host.messages.empty()) << host.messages[0].prompt;
  EXPECT_EQ(form.PrintCount(), 1);
  // What the insurer reads in the French boxes: the data under their French
  // labels (the form's own spelling slips included), a few labels that stay
  // English, and nothing of the English form.
  const char* const texts[] = {
      "PAYABLE AU DENTISTE", "Je cède au dentiste", "Total des honoraires Demands: $999.99",
      "Nom: Lea Moreau", "No. du regime d'assurance collective: P-1",
      "No. de la section ou de la division: (N/A)",
      "No. de certificate d'assurance social ou d'identité: S-11", "Employeur: Acme",
      "Lien de parenté avec l'employé participante au régime: Self",
      "Date de naissance: Apr/05/2010", "Code dépendant: 01",
      "S'il s'agit d'un enfant, est-il:  Étudient: Yes  Handicape: ____",
      "S'il est étudient, nom de L'estalissement scolaire: Lycee Nord",
      "ou un regime d'assurance d'etat?  Oui", "Sex: Female"};
  for (const char* t : texts) EXPECT_TRUE(Shows(t)) << t;
  // The procedure titles, each in its own column (from the paper's edge:
  // 0.5 in margin, then 2.5, 1, 1, 1 and 2 in).
  struct Column {
    const char* title;
    double from, to;
  };
  for (const Column& c : {Column{"Code de l'acte", 0.5, 3}, Column{"Code des dents", 3, 4},
                          Column{"Surfaces des dents", 4, 5}, Column{"Date du traitement", 5, 6},
                          Column{"Honoraire du dentiste", 6, 8}})
    EXPECT_TRUE(ShowsWithin(c.title, c.from, c.to)) << c.title;
  for (const char* english : {"PAYABLE TO", "Procedure", "Employer: ", "D.O.B.", "ALL INFORMATION"})
    EXPECT_FALSE(Shows(english)) << english;

  // The secondary holder twice: beside the primary, under English labels,
  // and in a row of its own.
  EXPECT_TRUE(Shows("Nom: Lea Moreau Name: Marc Moreau")) << Text();
  EXPECT_TRUE(Shows("Birth Date: Jan/02/1975 Sex: Male")) << Text();
  EXPECT_TRUE(Shows("Nom: Marc Moreau"));

  // The subscriber's signature caption ends a hair short of a tab stop;
  // "Date" still stands a blank's width clear of it, on the same line.
  form.VSP.FontName("Tahoma");
  form.VSP.FontSize(8);
  const double blank = form.VSP.TextWidth(" ").value();
  const render::TextRun* caption = nullptr;
  const render::TextRun* date = nullptr;
  for (const auto& item : form.VSP.Document().pages[0].items)
    if (auto t = std::get_if<render::TextRun>(&item)) {
      if (t->text == "Signature de l'employé(e) participant(e) au régime") caption = t;
      if (t->text == "Date" && caption && t->top == caption->top) date = t;
    }
  ASSERT_TRUE(caption && date) << Text();
  EXPECT_GE(date->x.value(), caption->x.value() + caption->width.value() + blank);

  // Not assigned: "PAYABLE L'ABONNE".
  reports.rptClaimFormF(95101, 1, 1);
  EXPECT_TRUE(Shows("PAYABLE L'ABONNE"));
  EXPECT_FALSE(Shows("Je cède au dentiste"));
}

TEST_F(ClaimForm, FrenchFormAnswersOtherCoverageNonAndKeepsTheEmployerRowOpen) {
  // Tom has no employer: the second employer cell has no row end, so the
  // relationship text runs into the employer row's surplus cells.
  reports.rptClaimFormF(95104, 1, 0);
  ASSERT_TRUE(host.messages.empty()) << host.messages[0].prompt;
  EXPECT_TRUE(Shows("d'etat?  Non")) << Text();
  EXPECT_TRUE(Shows("Étudient: No"));
  EXPECT_TRUE(Shows("Employeur: Employeur:")) << Text();
  // The patient's relationship goes on in the second column, behind the
  // blank employer, whole and at the form's size: its tabs break the line
  // rather than shrink the cell. The secondary column's own relationship
  // label falls beyond the table's two columns and is not printed.
  EXPECT_TRUE(ShowsWithin(
      "Employeur: Lien de parenté avec l'employé participante au régime: Self Dependant Code: 00",
      4.25, 8.5))
      << Text();
  int relationship_labels = 0;
  for (const auto& item : form.VSP.Document().pages[0].items) {
    auto t = std::get_if<render::TextRun>(&item);
    if (!t) continue;
    if (t->text.find("Lien de parent") != std::string::npos) ++relationship_labels;
    if (t->text.find("Lien de parent") != std::string::npos || t->text.find("Dependant Code") == 0) {
      EXPECT_FLOAT_EQ(t->size_pt, 8) << t->text;
    }
  }
  EXPECT_EQ(relationship_labels, 1);
}

}  // namespace
}  // namespace orv::testing

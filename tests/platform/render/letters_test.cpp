#include "platform/render/letters.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "platform/render/pdf_metadata.h"
#include "platform/render/renderer.h"

namespace orv::render {
namespace {

namespace fs = std::filesystem;

TEST(Letters, FileNamesAreSafeEverywhere) {
  struct Case {
    int32_t account;
    const char* name;
    const char* stem;
  } cases[] = {
      {12, "Callum Nakagawa", "12-Callum_Nakagawa"},
      {7, "Hélène Bédard-Côté", "7-Helene_Bedard_Cote"},
      {8, "ÉLODIE Œuvrard", "8-ELODIE_OEuvrard"},
      {9, "Seán O'Brien", "9-Sean_OBrien"},
      {10, "Ann   \"Annie\"  Lee, Jr.", "10-Ann_Annie_Lee_Jr"},
      {11, "../../etc/passwd", "11-etc_passwd"},
      {14, "", "14"},
      {15, "李 Wei", "15-Wei"},
  };
  for (const auto& c : cases) {
    const std::string stem = LetterFileStem(c.account, c.name);
    EXPECT_EQ(stem, c.stem) << c.name;
    EXPECT_EQ(
        stem.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-"),
        std::string::npos)
        << c.name;
  }
  EXPECT_EQ(LetterFileStem(16, std::string(80, 'x')), "16-" + std::string(60, 'x'));
}

// A document of `pages` blank pages whose letters start where `letters` say.
Document LetterRun(int pages, std::vector<Letter> letters) {
  Document doc;
  doc.name = "Patient Statement";
  doc.pages.assign(size_t(pages), Page{Twips(12240), Twips(15840), {}});
  doc.letters = std::move(letters);
  return doc;
}

TEST(Letters, EachLetterRunsToTheNextAndNamesNeverClash) {
  // One account addressed twice (two patients with one responsible
  // member), and two names equal but for case.
  const Document doc = LetterRun(7, {{1, 12, "Callum Nakagawa"},
                                     {3, 20, "Greta Northcott"},
                                     {4, 12, "Callum Nakagawa"},
                                     {5, 31, "ann lee"},
                                     {6, 31, "Ann Lee"}});
  const auto files = LetterFiles(doc);
  ASSERT_EQ(files.size(), 5u);
  struct Expected {
    const char* name;
    int first, last;
  } expected[] = {{"12-Callum_Nakagawa.pdf", 1, 2},
                  {"20-Greta_Northcott.pdf", 3, 3},
                  {"12-Callum_Nakagawa-2.pdf", 4, 4},
                  {"31-ann_lee.pdf", 5, 5},
                  {"31-Ann_Lee-2.pdf", 6, 7}};
  for (size_t i = 0; i < files.size(); ++i) {
    EXPECT_EQ(files[i].name, expected[i].name);
    EXPECT_EQ(files[i].first_page, expected[i].first) << expected[i].name;
    EXPECT_EQ(files[i].last_page, expected[i].last) << expected[i].name;
  }
  // Letters recorded out of page order are taken in page order.
  const auto reordered = LetterFiles(LetterRun(3, {{2, 5, "B"}, {1, 4, "A"}}));
  ASSERT_EQ(reordered.size(), 2u);
  EXPECT_EQ(reordered[0].name, "4-A.pdf");
  EXPECT_EQ(reordered[0].last_page, 1);
  EXPECT_TRUE(LetterFiles(LetterRun(3, {})).empty());
}

// (Each file's pages and identity, as a run of statements is split:
// tests/app/document_outputs_test.cpp.)
TEST(Letters, WritesOnePdfPerLetterAndNothingElse) {
  const fs::path dir = fs::temp_directory_path() / ("orv_letters_" + std::to_string(::getpid()));
  const Document doc = LetterRun(3, {{1, 12, "Callum Nakagawa"}, {3, 20, "Greta Northcott"}});
  const auto written = WriteLetterPdfs(doc, (dir / "run").string());
  ASSERT_EQ(written.size(), 2u);
  EXPECT_EQ(written[0], (dir / "run" / "12-Callum_Nakagawa.pdf").string());
  // Nothing else in the folder: no temporary file stays behind.
  EXPECT_EQ(std::distance(fs::directory_iterator(dir / "run"), fs::directory_iterator()), 2);
  // A document that is no run of letters writes nothing.
  EXPECT_THROW(WriteLetterPdfs(LetterRun(2, {}), (dir / "none").string()), RenderError);
  EXPECT_FALSE(fs::exists(dir / "none" / "1.pdf"));
  fs::remove_all(dir);
}

TEST(PdfMetadata, TheIdentityReadsBackFromTheFile) {
  Document doc = LetterRun(1, {});
  doc.name = "Aged Receivables";
  doc.identity = {"rptAgedReceivables",
                  {{"Comments", "Month, end"}, {"txtProvFilter", "ProviderID = 3"}, {"Flag", ""}},
                  "postgresql://ann@db.example/practice",
                  "2026-11-20",
                  "desk",
                  "1",
                  "0.1",
                  "orvenda-reports"};
  const PdfMetadata m = MetadataOf(doc);
  EXPECT_EQ(m.subject,
            "rptAgedReceivables(Comments=\"Month, end\", txtProvFilter=ProviderID = 3, Flag=)");
  EXPECT_EQ(m.keywords,
            "today=2026-11-20; database=postgresql://ann@db.example/practice; user=desk; "
            "office=1; version=0.1");
  EXPECT_EQ(m.creator, "orvenda-reports 0.1");
  // Items that hold a list's separator or a quote are quoted; empty ones go.
  doc.identity.arguments = {{"txtfilter", "Name = \"O;Neil\""}};
  doc.identity.user = "";
  doc.identity.office = "";
  doc.identity.database = "sqlite:/data/a;b.db";
  const PdfMetadata q = MetadataOf(doc);
  EXPECT_EQ(q.subject, "rptAgedReceivables(txtfilter=\"Name = \"\"O;Neil\"\"\")");
  EXPECT_EQ(q.keywords, "today=2026-11-20; database=\"sqlite:/data/a;b.db\"; version=0.1");
  EXPECT_EQ(q.author, "");

}

}  // namespace
}  // namespace orv::render

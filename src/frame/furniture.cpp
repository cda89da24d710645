// Page furniture: the heading of a list, the footer stamped on every page,
// the single-value lookup, the office letterhead and the provider blocks.
#include <algorithm>
#include <utility>
#include <vector>

#include "common/common_functions.h"
#include "common/errors.h"
#include "common/format.h"
#include "common/vbstrings.h"
#include "frame/contact_cells.h"
#include "frame/preview_form.h"
#include "frame/reports.h"
#include "frame/surface/surface.h"
#include "frame/surface/table_model.h"
#include "platform/host/host_services.h"

namespace orv {

void clsReports::PrintReportHeading(const std::string& Title, const std::string& UserName,
                                    const std::string& SubTitle) {
  std::string office;
  if (OfficeID > 0) {
    Variant name = ReturnLookupValue("OfficeInformation", "ID", Variant(OfficeID), "Name");
    Variant phone = ReturnLookupValue("OfficeInformation", "ID", Variant(OfficeID), "Phone");
    office = Common().returnStr(name) + " Phone #: " + Format(phone, "(###) ###-####");
  }
  PrintReportHeading(Title, UserName, SubTitle, office);
}

void clsReports::PrintReportHeading(const std::string& Title, const std::string& UserName,
                                    const std::string& SubTitle, const std::string& OfficeLine) {
  frame::PrintSurface& vsp = VSP();
  vsp.FontName("Tahoma");
  vsp.TextAlign(7);
  vsp.FontSize(20);
  vsp.FontBold(true);
  vsp.Text(Title);

  vsp.TextAlign(7);
  vsp.FontSize(10);
  vsp.FontBold(true);
  std::string printed = "Printed On: " + Format(Variant(Clock::Today()), "mmm/dd/yyyy");
  if (!UserName.empty()) printed += " By: " + UserName;
  vsp.Text(printed);

  vsp.TextAlign(7);
  vsp.FontSize(10);
  vsp.FontBold(true);
  if (!OfficeLine.empty()) vsp.Text(OfficeLine);
  if (!SubTitle.empty()) vsp.Text(SubTitle);
  vsp.FontBold(false);
  vsp.FontSize(10);
}

void clsReports::PrintPageFooters(const std::string& FooterText) {
  PrintPageFooters(std::vector<frame::DocumentPart>{{1, FooterText, 0, {}}});
}

void clsReports::PrintPageFooters(const std::vector<frame::DocumentPart>& Parts) {
  // A failure while stamping is dropped: the report goes on without footers
  // on the pages not yet stamped.
  try {
    frame::PrintSurface& vsp = VSP();
    vsp.Action(6);
    // Parts that are letters (statements) are kept for one file per letter.
    if (auto letters = frame::LettersOf(Parts); !letters.empty()) vsp.Letters(std::move(letters));
    int n = vsp.PageCount();
    std::string today = Format(Variant(Clock::Today()), "mmm/dd/yyyy");
    for (int p = 1; p <= n; ++p) {
      const frame::PagePlace place = frame::PlaceOfPage(p, n, Parts);
      const std::string footer = place.part ? place.part->footer : std::string();
      vsp.StartOverlay(p, false);
      vsp.CurrentY(vsp.PageHeight() - vsp.MarginBottom());
      vsp.FontName("Tahoma");
      vsp.FontSize(8);
      vsp.FontBold(false);
      vsp.CurrentX(vsp.MarginLeft());
      vsp.TextAlign(0);
      vsp.InlineText(today);
      if (!footer.empty()) {
        vsp.TextAlign(1);
        vsp.InlineText(footer);
      }
      vsp.TextAlign(2);
      vsp.InlineText("Page " + std::to_string(place.number) + " of " +
                     std::to_string(place.count));
      vsp.EndOverlay();
    }
  } catch (const std::exception&) {
  }
}

Variant clsReports::ReturnLookupValue(const std::string& Table, const std::string& KeyField,
                                      const Variant& KeyValue, const std::string& Field) {
  if (KeyValue.IsNull()) return Variant::Null();
  std::string sql = "Select ID, " + Field + " from " + Table + " where " + KeyField + " = ";
  if (KeyValue.IsString()) {
    sql += "'" + KeyValue.AsString() + "'";
  } else {
    sql += CStr(KeyValue);
  }
  db::Recordset rs;
  rs.Open(sql, conn_, db::adOpenForwardOnly, db::adLockReadOnly, db::adCmdText);
  // Without a row the result stays as it was declared: Empty.
  Variant result;
  if (!rs.Eof()) {
    std::string bare = vb::Replace(vb::Replace(Field, "[", ""), "]", "");
    result = Variant(Common().returnStr(rs[bare].Value(), false));
  }
  rs.Close();
  return result;
}

namespace {

// The size of a picture of `image_w` by `image_h` pixels set inside a box of
// `box_w` by `box_h`: as large as the box allows with its own proportions, so
// that a wide logo is not squeezed into a square.
std::pair<Twips, Twips> FitInBox(Twips box_w, Twips box_h, int image_w, int image_h) {
  if (image_w <= 0 || image_h <= 0) return {box_w, box_h};
  const double scale = std::min(box_w.value() / image_w, box_h.value() / image_h);
  return {Twips(image_w * scale), Twips(image_h * scale)};
}

}  // namespace

void clsReports::PrintLetterHead(Twips EndAbove) {
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  db::Recordset rs;
  rs.Open(
      "Select Logo, Name, Street, Street2, City, Province, PostalCode, Phone, PhoneExt, Fax, Www, "
      "EmailAddress, InvoiceHeader from OfficeInformation where ID = " +
          std::to_string(OfficeID),
      conn_, db::adOpenStatic, db::adLockReadOnly, db::adCmdText);
  // An office with no row (a wrong OfficeID) gets no letterhead. The
  // document still prints, an invoice being worth more than its heading,
  // but the desk is told, so that a run for the wrong office is not taken
  // for a good one.
  if (rs.Eof()) {
    rs.Close();
    Host().MsgBox("The office " + std::to_string(OfficeID) +
                      " is not on file: the document prints without its letterhead.",
                  host::vbOKOnly, "");
    return;
  }
  auto str = [&](const char* f) { return cf.returnStr(rs[f].Value(), true); };

  // The lines under the office's name, in the order they print. An empty
  // second street line leaves no blank line.
  std::vector<std::string> lines;
  lines.push_back(str("Street"));
  if (!str("Street2").empty()) lines.push_back(str("Street2"));
  lines.push_back(str("City") + ", " + str("Province") + "  " + str("PostalCode"));
  std::string phone = "Phone # " + PhoneWithExt(str("Phone"), str("PhoneExt"), " Ext: ");
  if (!str("Fax").empty()) phone += "    Fax # " + str("Fax");
  lines.push_back(phone);
  std::string web;
  if (!str("Www").empty()) web = "Web: " + str("Www");
  if (!str("EmailAddress").empty()) web += (web.empty() ? "Email: " : "   Email: ") + str("EmailAddress");
  if (!web.empty()) lines.push_back(web);
  // The free text of the invoice header comes last; a text with its own
  // line ends is written as it stands, one without as one line.
  std::string header = cf.returnStr(rs["InvoiceHeader"].Value(), false);
  if (!vb::Trim(header).empty()) lines.push_back(header);

  // A Null logo, or one of fewer than 10 bytes, counts as no logo.
  Variant logo = rs["Logo"].Value();
  bool has_logo = !logo.IsNull() && rs["Logo"].ActualSize() >= 10;

  // The logo's box is 400 device pixels each way. Under a bound, the box
  // shrinks to the room the name, the lines and the closing gap leave above
  // it; with less than a quarter inch of room the logo is left out.
  const Twips full_box = Twips(400 * vsp.TwipsPerPixelX());
  Twips box = full_box;
  if (has_logo && EndAbove > Twips(0)) {
    vsp.FontName("Tahoma");
    vsp.FontSize(14);
    vsp.FontBold(true);
    Twips text = vsp.TextHeight("X");
    vsp.FontSize(10);
    vsp.FontBold(false);
    for (const std::string& line : lines) text += vsp.TextHeight(line);
    text += vsp.TextHeight("X");
    box = std::min(full_box, EndAbove - vsp.MarginHeader() - text);
    if (box < Twips::Inches(0.25)) has_logo = false;
  }

  Twips bottom_of_picture = vsp.MarginHeader();
  if (has_logo) {
    // The picture is decoded from the field's bytes, with no temporary
    // file to make, write, read back and remove for every document. A bad
    // picture only leaves the letterhead without it.
    try {
      Bytes data;
      if (logo.type() == VarType::Binary) {
        data = logo.AsBytes();
      } else {
        const std::string text = CStr(logo);
        data.assign(text.begin(), text.end());
      }
      // The picture sits in the box's top left corner with its own
      // proportions.
      frame::PictureImage image = frame::DecodePicture(data, "the office's logo");
      const auto [w, h] = FitInBox(box, box, image->width, image->height);
      vsp.PictureLeft(vsp.MarginLeft());
      vsp.PictureRight(vsp.MarginLeft() + w);
      vsp.PictureTop(vsp.MarginHeader());
      vsp.PictureBottom(vsp.MarginHeader() + h);
      vsp.Picture(image);
    } catch (const std::exception&) {
    }
    vsp.CurrentX(vsp.MarginLeft() + box);
    vsp.CurrentY(vsp.MarginHeader() + box);
    bottom_of_picture = vsp.CurrentY();
    vsp.FontName("Tahoma");
    vsp.FontSize(14);
    vsp.FontBold(true);
    Twips line = vsp.TextHeight("X");
    Twips x = vsp.CurrentX();
    vsp.TextBox(str("Name"), x, vsp.CurrentY(), vsp.PageWidth() - vsp.MarginRight() - x, line);
    // The address lines follow below the name, in a block that starts at
    // the pen's X.
    vsp.CurrentY(vsp.CurrentY() + line);
    vsp.IndentLeft(x - vsp.MarginLeft());
    vsp.CurrentX(x);
  } else {
    vsp.TextAlign(0);
    vsp.CurrentX(vsp.MarginLeft());
    vsp.CurrentY(vsp.MarginHeader());
    vsp.FontName("Tahoma");
    vsp.FontSize(14);
    vsp.FontBold(true);
    vsp.Text(str("Name"));
  }

  vsp.TextAlign(0);
  vsp.FontSize(10);
  vsp.FontBold(false);
  for (const std::string& line : lines) vsp.Text(line);
  if (!has_logo) vsp.Text(" ");

  vsp.IndentLeft(0);
  Twips below = vsp.CurrentY();
  if (has_logo && bottom_of_picture > below) below = bottom_of_picture;
  vsp.CurrentX(vsp.MarginLeft());
  vsp.CurrentY(below + vsp.TextHeight("X"));
  rs.Close();
}

std::string clsReports::ReturnProviderNames(std::string ProviderFilter) {
  std::string where;
  if (!ProviderFilter.empty()) where = " Where " + vb::Replace(ProviderFilter, "Provider", "");
  db::Recordset rs;
  rs.Open("SELECT LastName,FirstName FROM Employees" + where + " ORDER BY LastName", conn_,
          db::adOpenForwardOnly, db::adLockReadOnly, db::adCmdText);
  std::string names;
  clsCommonFunctions& cf = Common();
  while (!rs.Eof()) {
    if (!names.empty()) names += ",";
    names += cf.returnStr(rs["LastName"].Value()) + "," + cf.returnStr(rs["FirstName"].Value());
    rs.MoveNext();
  }
  rs.Close();
  return names;
}

void clsReports::PrintProvidersIncluded(const std::string& ProviderFilter) {
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  vsp.TextAlign(0);
  vsp.FontSize(10);
  vsp.FontBold(true);
  vsp.Text("Providers included:");
  vsp.FontBold(false);
  vsp.FontSize(8);

  int count = cf.GetNumberOfIDFromProviderName(ProviderFilter);
  std::vector<int32_t> ids;
  for (int i = 1; i <= count; ++i) ids.push_back(cf.GetIDFromProviderName(ProviderFilter, i));

  db::Recordset rs;
  rs.Open("SELECT ID,[professional title] as Title,LastName,FirstName FROM Employees ORDER BY LastName",
          conn_, db::adOpenStatic, db::adLockReadOnly, db::adCmdText);
  std::string body;
  int in_row = 0;
  while (!rs.Eof()) {
    int32_t id = CLng(rs["ID"].Value());
    bool keep = ids.empty() || std::find(ids.begin(), ids.end(), id) != ids.end();
    if (keep) {
      body += frame::EscapeCell(cf.returnStr(rs["Title"].Value()) + " " +
                                cf.returnStr(rs["FirstName"].Value()) + " " +
                                cf.returnStr(rs["LastName"].Value()));
      if (++in_row == 3) {
        body += ";";
        in_row = 0;
      } else {
        body += "|";
      }
    }
    rs.MoveNext();
  }
  rs.Close();
  vsp.StartTable();
  vsp.TableBorder(0);
  vsp.AddTable("2.5in|2.5in|2.5in", "", body);
  vsp.EndTable();
  vsp.FontSize(10);
}

}  // namespace orv

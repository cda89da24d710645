#include "closing/hygiene_production.h"

#include <string>
#include <vector>

#include "common/common_functions.h"
#include "common/format.h"
#include "frame/reports.h"
#include "frame/surface/surface.h"
#include "frame/surface/table_model.h"

namespace orv::closing {

namespace {
std::string Money(Currency c) {
  return Format(Variant(c), "###,###,##0.00;(###,###,##0.00)");
}
}  // namespace

void PrintHygieneProduction(clsReports& reports,
                            const std::map<int32_t, HygieneFigures>& by_provider) {
  frame::PrintSurface& vsp = reports.VSP();
  clsCommonFunctions& cf = reports.Common();
  vsp.FontBold(true);
  vsp.FontSize(11);
  vsp.TextAlign(0);
  vsp.Text("Hygiene Production Report");
  vsp.FontSize(9);
  vsp.FontBold(false);
  struct Row {
    std::string name;
    HygieneFigures f;
  };
  std::vector<Row> rows;
  Currency all;
  db::Recordset hyg = reports.Open(
      "Select ID, LastName, FirstName from Employees where TypeID = 5 ORDER BY LastName");
  while (!hyg.Eof()) {
    auto it = by_provider.find(static_cast<int32_t>(cf.ReturnVal(hyg["ID"].Value())));
    if (it != by_provider.end()) {
      rows.push_back(
          {cf.returnStr(hyg["LastName"].Value()) + ", " + cf.returnStr(hyg["FirstName"].Value()),
           it->second});
      all += it->second.production + it->second.lab;
    }
    hyg.MoveNext();
  }
  std::string body;
  Currency t_prod, t_lab;
  for (const Row& r : rows) {
    const Currency total = r.f.production + r.f.lab;
    const std::string share = all.IsZero() ? "0.00" : Format(Variant(total / all * 100), "##0.00");
    body += frame::EscapeCell(r.name) + "|" + Money(r.f.production) + "|" + Money(r.f.lab) + "|" +
            Money(total) + "|" + share + ";";
    t_prod += r.f.production;
    t_lab += r.f.lab;
  }
  body += "Hygenists Totals|" + Money(t_prod) + "|" + Money(t_lab) + "|" + Money(t_prod + t_lab) +
          "|" + (all.IsZero() ? "0.00" : "100.00") + ";";
  vsp.AddTable("<2in|>1.02in|>.8in|>.95in|>.7in",
               "Hygienist|Production($)|Lab($)|Total($)|Total(%)", body, kHeaderColor);
}

}  // namespace orv::closing

// Bulk statements: a month's worth of plain statements in one run, a page
// per patient or per family (by primary holder), each with its open
// invoices and an age table set at the foot of the page. Each account's
// pages are numbered within it.
#include <algorithm>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <unordered_set>
#include <utility>
#include <vector>

#include "accounts/account_model.h"
#include "accounts/stamp_transaction.h"
#include "common/common_functions.h"
#include "common/datetime.h"
#include "common/format.h"
#include "common/vbstrings.h"
#include "frame/page_parts.h"
#include "frame/preview_form.h"
#include "frame/reports.h"
#include "frame/surface/surface.h"
#include "frame/surface/table_model.h"

namespace orv {

void clsReports::rptBulkStatements(std::string txtPatientFilter, std::string txtFamilyFilter,
                                   bool IsFamilyStatement, std::string Header, Variant NoZeros) {
  const db::Snapshot snapshot(conn_, db::Snapshot::OnFailure::RunWithout);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  AccountModel model(conn(), InterestRate);
  txtPatientFilter = NoZeroFilter(txtPatientFilter);
  txtFamilyFilter = NoZeroFilter(txtFamilyFilter);
  // An omitted NoZeros acts as false.
  const bool no_zeros = !NoZeros.IsEmpty() && cf.ReturnBool(NoZeros);
  const DateTime today = Clock::Today();

  vsp.Orientation(0);
  vsp.Action(3);

  std::string sql;
  if (IsFamilyStatement) {
    std::string filter = txtFamilyFilter;
    if (!txtPatientFilter.empty() && !txtFamilyFilter.empty()) {
      filter = "(" + txtPatientFilter + ") and " + txtFamilyFilter;
    } else if (!txtPatientFilter.empty()) {
      filter = txtPatientFilter;
    }
    sql =
        "SELECT Patient.ID, Patient.FirstName, Patient.LastName, Patient.SecondaryHolderID, "
        "Patient.FullName, Patient.Address, Patient_1.FirstName AS PolicyFirstName, "
        "Patient_1.LastName AS PolicyLastName, Patient_1.FullName AS PolicyFullName, "
        "Patient_1.Address AS PolicyAddress, Patient.PrimaryHolderID FROM Patient LEFT OUTER JOIN "
        "Patient Patient_1 ON Patient.PrimaryHolderID = Patient_1.ID";
    sql += filter.empty()
               ? " WHERE NOT Patient.PrimaryHolderID is null order by Patient_1.FullName"
               : " where (" + filter +
                     ") and NOT Patient.PrimaryHolderID is null order by Patient_1.FullName";
  } else {
    sql = txtPatientFilter.empty()
              ? "Select * from Patient order by FullName"
              : "Select * from Patient where " + txtPatientFilter + " order by FullName";
  }
  db::Recordset rs = Open(sql);

  // With the invoice's own figures (its completion, final total and date)
  // for what it stands for, and the patient's holder to find a family's.
  const std::string invoice_select =
      "SELECT Invoices.ID, Invoices.PatientID, Patient.PrimaryHolderID, Patient.FullName as FullName, "
      "Invoices.[Invoice#], Invoices.Date, Invoices.InvoiceTotal, Invoices.[Complete?], "
      "Invoices.InvoiceFinalTotal FROM Invoices INNER JOIN Patient ON Invoices.PatientID = Patient.ID ";
  const std::string age_format = "^!~+1.3in|^!~+1.3in|^!~+1.3in|^!~+1.3in|^!~+1.3in";
  const std::string age_header = "Current|> 30 Days|> 60 Days|> 90 Days|Total Due($)";

  // Interest charged on an invoice stands on live invoices of its own that
  // point back at it. Read once for the run: the column has no index, and a
  // search per invoice row would read the whole table each time.
  std::map<int32_t, Currency> interest;
  {
    db::Recordset charged = Open(
        "SELECT InterestInvoiceID, SUM(InvoiceTotal) AS Interest FROM Invoices WHERE Cancelled IS "
        "NULL AND NOT InterestInvoiceID IS NULL GROUP BY InterestInvoiceID",
        db::adOpenForwardOnly);
    while (!charged.Eof()) {
      interest[CLng(charged["InterestInvoiceID"].Value())] =
          cf.ReturnCur(charged["Interest"].Value());
      charged.MoveNext();
    }
  }

  // 1. The run's open invoices. A page lists an account's invoices that are
  // still owed: for a patient, the patient's own; for a family, those of
  // its holders and of everyone who names one of them as primary holder.
  // They are read for many accounts at once, by the keys the accounts find
  // them by, and not by a statement per account: on the server each
  // statement is a round trip, and with the stamp a page used to make,
  // the run for 1,241 families (5,000 patients) waited about 0.5 s on
  // them where SQLite ran the whole report in 0.35 s. The keys
  // are each patient's number, or each family's holders as the pages below
  // take them (the first row of a holder names the secondary holder).
  std::vector<int32_t> keys;
  std::vector<int32_t> families;  // each family's holder, whose account it is
  {
    std::set<int32_t> holders_seen;
    while (!rs.Eof()) {
      if (!IsFamilyStatement) {
        keys.push_back(CLng(rs["ID"].Value()));
      } else if (holders_seen.insert(CLng(rs["PrimaryHolderID"].Value())).second) {
        keys.push_back(CLng(rs["PrimaryHolderID"].Value()));
        families.push_back(keys.back());
        const Variant secondary = rs["SecondaryHolderID"].Value();
        if (!secondary.IsNull() && CLng(secondary) != 0) keys.push_back(CLng(secondary));
      }
      rs.MoveNext();
    }
    if (rs.RecordCount() > 0) rs.MoveFirst();
    std::sort(keys.begin(), keys.end());
    keys.erase(std::unique(keys.begin(), keys.end()), keys.end());
  }
  struct Row {
    std::string cells;
    Currency balance;
    long long days;
    DateTime date;
    double number;
    int32_t id;
    int32_t patient;
    std::optional<int32_t> holder;
  };
  std::vector<Row> open_rows;
  const size_t keys_per_read = BulkStatementKeysPerRead;
  // Each open invoice by its patient and by its patient's primary holder.
  std::vector<std::pair<int32_t, uint32_t>> by_patient, by_holder;
  {
    // An invoice whose patient and holder are keys of two reads comes in
    // both; it is taken from the first, so that its payments are summed
    // once and the pages find one row of it under either key.
    std::unordered_set<int32_t> taken;
    for (const std::string& list : IdLists(keys, keys_per_read)) {
      std::string condition =
          IsFamilyStatement
              ? "WHERE (Invoices.[Complete?] = - 1 or Invoices.[Complete?] = 1) and (Invoices.PatientID IN (" +
                    list + ") or Patient.PrimaryHolderID IN (" + list + ")) AND Cancelled IS NULL"
              : "WHERE (Invoices.[Complete?] = - 1 or [Complete?] = 1) and Cancelled IS NULL AND Patient.ID IN (" +
                    list + ")";
      if (!IsFamilyStatement && !txtFamilyFilter.empty())
        condition += " and (" + txtFamilyFilter + ") AND Cancelled IS NULL";
      db::Recordset inv = Open(invoice_select + condition);
      while (!inv.Eof()) {
        const int32_t id = CLng(inv["ID"].Value());
        if (!taken.insert(id).second) {
          inv.MoveNext();
          continue;
        }
        // The invoice's worth from its own row; one without a total is
        // worth nothing, as when it is looked up by its number.
        const Currency amount =
            inv["InvoiceTotal"].Value().IsNull() ? Currency() : model.ReturnInvoiceAmount(id, Variant::Null(), &inv);
        const Currency paid = model.ReturnInvoicePaid(true, id, DateTime(), 0);
        if (paid < amount) {
          const Currency balance = amount - paid;
          std::string total_cell = cf.MyFormat(amount, "Currency");
          if (auto charged = interest.find(id); charged != interest.end()) {
            Currency added = charged->second;
            total_cell = "Sub Total " + cf.MyFormat(amount, "Currency") + "\r\nInterest " +
                         cf.MyFormat(added, "Currency") + "\r\nGrand Total " +
                         cf.MyFormat(amount + added, "Currency");
          }
          const DateTime date = cf.ReturnDate(inv["Date"].Value());
          const Variant holder = inv["PrimaryHolderID"].Value();
          const auto index = static_cast<uint32_t>(open_rows.size());
          open_rows.push_back(
              {frame::EscapeCell(cf.returnStr(inv["Invoice#"].Value())) + "|" +
                   Format(inv["Date"].Value(), "MMM/d/yyyy") + "|" +
                   frame::EscapeCell(cf.returnStr(inv["FullName"].Value())) + "|" + total_cell + "|" +
                   cf.MyFormat(paid, "Currency") + "|" + cf.MyFormat(balance, "Currency") + ";",
               balance, DateDiff("d", date, today), date, cf.ReturnVal(inv["Invoice#"].Value()), id,
               CLng(inv["PatientID"].Value()),
               holder.IsNull() ? std::nullopt : std::optional<int32_t>(CLng(holder))});
          by_patient.emplace_back(open_rows.back().patient, index);
          if (open_rows.back().holder) by_holder.emplace_back(*open_rows.back().holder, index);
        }
        inv.MoveNext();
      }
      inv.Close();
    }
    std::sort(by_patient.begin(), by_patient.end());
    std::sort(by_holder.begin(), by_holder.end());
  }
  // The families' credits, read for many families at once as their
  // invoices are: each family's three statements (its holders, then their
  // credit) were round trips of their own on the server.
  std::map<int32_t, Currency> family_credits;
  if (IsFamilyStatement) family_credits = model.ReturnFamilyCredits(families, keys_per_read);
  // The open invoices of the rows of `index` whose key is `key`, added to
  // `found`.
  auto add_found = [](const std::vector<std::pair<int32_t, uint32_t>>& index, int32_t key,
                      std::vector<uint32_t>& found) {
    for (auto it = std::lower_bound(index.begin(), index.end(), std::make_pair(key, uint32_t{0}));
         it != index.end() && it->first == key; ++it)
      found.push_back(it->second);
  };

  // Families come sorted by the holder's name, so each holder's rows stand
  // together; holders already done are remembered all the same, so that two
  // holders of one name cannot interleave into a second page.
  std::set<int32_t> holders_done;
  int pages_made = 0;
  // Each account's first page: the pages of one account are numbered
  // within it, since each goes out as a letter of its own.
  std::vector<frame::DocumentPart> accounts;
  // The accounts stamped as sent a statement, written together at the end
  // of the run (one statement for many, not a round trip a page), within
  // the run's transaction as before: a run that fails stamps no one.
  std::vector<int32_t> stamped;
  StampTransaction stamps(conn());
  while (!rs.Eof()) {
    int32_t account = CLng(rs["ID"].Value());
    std::string name, address;
    std::string printed_name;  // as it prints, unescaped, for the letter's file
    std::vector<uint32_t> found;
    if (IsFamilyStatement) {
      int32_t holder = CLng(rs["PrimaryHolderID"].Value());
      if (!holders_done.insert(holder).second) {
        RaiseProgress(rs);
        rs.MoveNext();
        continue;
      }
      account = holder;
      printed_name = vb::Trim(cf.returnStr(rs["PolicyFirstName"].Value()) + " " +
                              cf.returnStr(rs["PolicyLastName"].Value()));
      name = frame::EscapeCell(printed_name);
      address = frame::EscapeCell(cf.returnStr(rs["PolicyAddress"].Value()));
      // The holder's ID finds the invoices, the row's patient's does not:
      // the page is the holder's account, so it holds the holder's own
      // invoices and those of everyone who names the holder. The member
      // whose row came first in the sort has no standing of their own; with
      // that member's ID the page would change with the order of the rows.
      // A secondary holder stored as 0 is no holder: it would bring in
      // strangers who store 0.
      std::vector<int32_t> family = {holder};
      const Variant secondary = rs["SecondaryHolderID"].Value();
      if (!secondary.IsNull() && CLng(secondary) != 0) family.push_back(CLng(secondary));
      for (int32_t key : family) {
        add_found(by_patient, key, found);
        add_found(by_holder, key, found);
      }
    } else {
      printed_name = vb::Trim(cf.returnStr(rs["FirstName"].Value()) + " " +
                              cf.returnStr(rs["LastName"].Value()));
      name = frame::EscapeCell(printed_name);
      address = frame::EscapeCell(cf.returnStr(rs["Address"].Value()));
      add_found(by_patient, account, found);
    }
    // Each invoice once (a family's holder may find it by the patient and
    // by the holder), in the order of their numbers, as a statement of the
    // account's own would give them. There is one row per invoice, so a
    // copy is the same row found twice.
    std::sort(found.begin(), found.end(),
              [&](uint32_t a, uint32_t b) { return open_rows[a].id < open_rows[b].id; });
    found.erase(std::unique(found.begin(), found.end()), found.end());
    // The account's figures first: a page is made only once the account is
    // known to owe something, where NoZeros asks for that.
    std::vector<Row> rows;
    Currency balances;
    for (uint32_t i : found) {
      rows.push_back(open_rows[i]);
      balances += open_rows[i].balance;
    }
    // Oldest first. Sorted here and not by the reads: an ORDER BY on the
    // families' OR condition makes the engine walk the whole invoice table
    // in date order, ten times slower than reading it once.
    std::stable_sort(rows.begin(), rows.end(), [](const Row& a, const Row& b) {
      return a.date != b.date ? a.date < b.date : a.number < b.number;
    });
    // Money on account and on no invoice lowers what is due: the family's
    // credit by holder, or the patient's own unspent payments.
    Currency credit = IsFamilyStatement ? family_credits.at(account) : model.ReturnAccountCredit(account, false, 0);
    Currency due = balances - credit;
    if (no_zeros && due == Currency()) {
      RaiseProgress(rs);
      Host().DoEvents();
      rs.MoveNext();
      continue;
    }

    // 2. The page: letterhead, title, the account's name and number.
    if (pages_made > 0) vsp.NewPage();
    ++pages_made;
    accounts.push_back({vsp.CurrentPage(), Header, account, printed_name});
    vsp.DocName(IsFamilyStatement ? "Family Statement" : "Patient Statement");
    PrintLetterHead();
    vsp.FontName("Tahoma");
    vsp.FontSize(20);
    vsp.FontBold(true);
    vsp.TextAlign(1);
    vsp.Text("Statement");
    vsp.FontSize(10);
    vsp.FontBold(false);
    vsp.TextAlign(0);
    vsp.TableBorder(7);
    vsp.AddTable("<!~+4in|^!+~.8in|^+!~1in", "Name|Account #|Date",
                 name + "\r\n" + address + "|" + std::to_string(account) + "|" +
                     Format(Variant(today), "MMM/dd/yyyy"),
                 kHeaderColor);
    stamped.push_back(account);
    vsp.Text(" ");

    // 3. The open invoices, and their balances into the age sums.
    Currency current, over30, over60, over90;
    std::string body;
    for (const Row& row : rows) {
      body += row.cells;
      if (row.days <= 30) {
        current += row.balance;
      } else if (row.days <= 60) {
        over30 += row.balance;
      } else if (row.days <= 90) {
        over60 += row.balance;
      } else {
        over90 += row.balance;
      }
    }
    body += "| | |;";
    vsp.AddTable(">!~+.6in|>+!~.9in|<+!~2in|>+!~1.4in|>+!~.8in|>+!~.8in",
                 "Invoice#|Date|Patient's Name|Total($)|Paid($)|Balance($)", body, kHeaderColor);

    // 4. The age table at the foot of the page, one text line above the
    // bottom margin; on a new page when the invoices reach that far.
    std::string sums = cf.MyFormat(current, "Currency") + "|" + cf.MyFormat(over30, "Currency") +
                       "|" + cf.MyFormat(over60, "Currency") + "|" +
                       cf.MyFormat(over90, "Currency") + "|" + cf.MyFormat(due, "Currency") + ";";
    vsp.MeasureTable(age_format + ";" + age_header + ";" + sums);
    Twips foot =
        vsp.PageHeight() - vsp.MarginBottom() - vsp.MeasuredTableHeight() - vsp.TextHeight("X");
    if (foot < vsp.CurrentY()) vsp.NewPage();
    vsp.CurrentY(foot);
    vsp.StartTable();
    vsp.AddTable(age_format, age_header, sums, kHeaderColor);
    vsp.EndTable();

    RaiseProgress(rs);
    Host().DoEvents();
    rs.MoveNext();
  }
  rs.Close();
  for (const std::string& list : IdLists(stamped, keys_per_read))
    conn().Execute("UPDATE Patient SET LastStatement = GETDATE() WHERE ID IN (" + list + ")");
  stamps.Commit();

  // The footers go on by overlay once the page count is known: the office's
  // statement note on the line below the age table, and under the margin
  // the date, the run's header and the page number. A failure here is
  // dropped so that what was printed is still shown.
  vsp.Letters(frame::LettersOf(accounts));
  try {
    vsp.Action(6);
    std::string note = cf.returnStr(
        ReturnLookupValue("OfficeInformation", "ID", Variant(OfficeID), "StatementFooter"), true);
    if (note.empty()) note = "Note: We require 48 hours notice to reschedule appointments.";
    std::string printed = Format(Variant(today), "mmm/dd/yyyy");
    int n = vsp.PageCount();
    for (int p = 1; p <= n; ++p) {
      vsp.StartOverlay(p, false);
      vsp.FontName("Tahoma");
      vsp.FontBold(false);
      vsp.FontSize(9);
      vsp.CurrentX(vsp.MarginLeft());
      vsp.CurrentY(vsp.PageHeight() - vsp.MarginBottom() - vsp.TextHeight("X"));
      vsp.TextAlign(1);
      vsp.InlineText(note);
      vsp.FontSize(8);
      vsp.CurrentX(vsp.MarginLeft());
      vsp.CurrentY(vsp.PageHeight() - vsp.MarginBottom() + vsp.TextHeight("X"));
      vsp.TextAlign(0);
      vsp.InlineText(printed);
      if (!Header.empty()) {
        vsp.TextAlign(1);
        vsp.InlineText(Header);
      }
      vsp.TextAlign(2);
      const frame::PagePlace place = frame::PlaceOfPage(p, n, accounts);
      vsp.InlineText("Page " + std::to_string(place.number) + " of " +
                     std::to_string(place.count));
      vsp.EndOverlay();
    }
  } catch (const std::exception&) {
  }
  Form().Show();
}

}  // namespace orv

// Patient balances: the three portions, cancelled invoices, cheque dates and
// post-dated cheques, credits on account, and the balance of old invoices.
// Figures by hand from the rows listed in account_fixture.h; today is
// 2026-11-20.
#include <gtest/gtest.h>

#include "account_fixture.h"
#include "accounts/account_model.h"
#include "common/errors.h"

namespace orv::testing {
namespace {

using PatientBalanceTest = AccountFixture;

TEST_F(PatientBalanceTest, ByPortionAndDate) {
  AccountModel model(conn_, 0);
  struct Case {
    const char* name;
    int32_t patient;
    bool ignore_date;
    DateTime end;
    int16_t portion;
    const char* expected;
  };
  const Case cases[] = {
      // Invoices 101 200 + 102 150 + 103 90 (cancelled, still counted)
      // + 105 60 = 500 (104 is in progress). Shares by cheque date <= 11-20:
      // 80 + 120 + 150 = 350 (204's 40 is dated tomorrow). Credit: 203's 50
      // (205's 30 is dated 12-01). 500 - 350 - 50 = 100.
      {"whole account today", 1, false, Day(2026, 11, 20), 0, "100.00"},
      // Patient portion: 101 assigned -> its PatientTotal 80; 102 150; 103 90;
      // 105 assigned with NULL PatientTotal -> 0. 320. Patient shares: 201's
      // 80 + 203's 150 (IsInsurance NULL) = 230. Credit 50. 320 - 230 - 50.
      {"patient portion today", 1, false, Day(2026, 11, 20), 1, "40.00"},
      // Insurance portion: 101 200 - 80 = 120; 105 has no PatientTotal -> 0.
      // Insurer's share 202's 120; no insurer credit. 120 - 120.
      {"insurance portion today", 1, false, Day(2026, 11, 20), 2, "0"},
      // Every payment whatever its date: shares 350 + 40 = 390, credit
      // 50 + 30 = 80; invoices still by date, 500. 500 - 390 - 80.
      {"whole account, dates ignored", 1, true, Day(2026, 11, 20), 0, "30.00"},
      // As of 10-25: 101 200 + 102 150 + cancelled 103 90 = 440; shares
      // 80 + 120 + 150 = 350; credit 50 (cheque 10-06). 440 - 350 - 50.
      // Leaving out the cancelled invoice would give -50.
      {"cancelled invoice is a charge", 1, false, Day(2026, 10, 25), 0, "40.00"},
      // As of 10-01: only 101 200; shares 80 (09-15) + 120 (cheque 10-01,
      // the day itself counts) = 200; no credit yet. 0.
      {"cheque on the day counts", 1, false, Day(2026, 10, 1), 0, "0"},
      // As of 09-30: 101 200 less 80. 120.
      {"cheque after the day does not", 1, false, Day(2026, 9, 30), 0, "120.00"},
      // Priya: invoice 131 80 paid by Arjun's 80: the share lowers her
      // balance whoever paid. Credit 60 + 15 (insurer's too). 80 - 80 - 75.
      {"paid by another family member", 3, false, Day(2026, 11, 20), 0, "-75.00"},
      // Marc: 121 75 less his unspent 10.0050; nothing is rounded.
      {"credit with four decimals", 5, false, Day(2026, 11, 20), 0, "64.9950"},
  };
  for (const Case& c : cases) {
    Variant balance =
        model.ReturnPatientBalance(c.patient, c.ignore_date, Variant(c.end), c.portion);
    ASSERT_EQ(balance.type(), VarType::Currency) << c.name;
    EXPECT_EQ(balance.AsCurrency(), Money(c.expected)) << c.name;
  }
}

TEST_F(PatientBalanceTest, UnsupportedRequestsFail) {
  AccountModel model(conn_, 0);
  // The patient portion with dates ignored names InvoicePayments without
  // joining it: the database rejects it.
  EXPECT_THROW(model.ReturnPatientBalance(1, true, Variant(Day(2026, 11, 20)), 1), ReportError);
  EXPECT_THROW(model.ReturnPatientBalance(1, false, Variant(Day(2026, 11, 20)), 3), ReportError);
  EXPECT_THROW(model.ReturnAccountCredit(1, false, -1), ReportError);
  EXPECT_THROW(model.ReturnInvoicePaid(true, 101, Day(2026, 11, 20), 3), ReportError);
}

TEST_F(PatientBalanceTest, OldBalance) {
  struct Case {
    const char* name;
    int32_t patient;
    float rate;
    bool all_payments;
    int16_t days;
    Variant days_variant;
    const char* expected;
  };
  const Case cases[] = {
      // Cut-off 11-20 - 30 = 10-21: live complete invoices 101 200 + 102 150
      // = 350 (103 is cancelled). All shares on live invoices: 80 + 120 + 150
      // + 40 (post-dated too) = 390. Own credit today, patient payers only:
      // values 80 + 200 = 280 less their shares 80 + 150 = 50.
      // 350 - 390 - 50.
      {"all payments", 1, 0, true, 30, Variant(30), "-90.00"},
      // Shares by cheque date <= 10-21: 80 + 120 + 150 = 350. 350 - 350 - 50.
      {"payments by cheque date", 1, 0, false, 30, Variant(30), "-50.00"},
      // Invoices cut at 11-20 - 60 = 09-21 (DaysVariant): 101 only, 200.
      // Payments cut at 10-21 (Days): 350. 200 - 350 - 50.
      {"invoices by DaysVariant, payments by Days", 1, 0, false, 30, Variant(60), "-200.00"},
      // Cut-off today: 101 200 + 102 150 + 105 60 = 410, cancelled 103 left
      // out. Shares by today 350, credit 50. Counting 103 would give 100.
      {"cancelled invoice is no charge", 1, 0, false, 0, Variant(0), "10.00"},
      // Nadia, rate 5, cut-off 10-21: 184 (Feb 28 2001) 50.0250 stored +
      // 185 (Mar 1 2001) 50.025 -> 50.02 = 100.0450. The undated 189, the
      // in-progress 186 and the NULL-flag 187 are left out by the query.
      // Shares 50.02 + 50.02 = 100.04; credit 100.04 - 100.04 = 0.
      // 0.0050 stays as it is.
      {"half a cent stays", 8, 5, true, 30, Variant(30), "0.0050"},
      // Cut-off today adds 181, 182, 183 (11-02) by their settled totals as
      // stored: 100.0050 + 0 + (-5). 100.005 + 0 - 5 + 50.025 + 50.02 =
      // 195.05; 188 (NULL total) is left out. Less 100.04.
      {"settled totals as stored", 8, 5, true, 0, Variant(0), "95.01"},
  };
  for (const Case& c : cases) {
    AccountModel model(conn_, c.rate);
    Variant old = model.ReturnOldBalance(c.patient, c.all_payments, c.days, c.days_variant);
    EXPECT_EQ(CCur(old), Money(c.expected)) << c.name;
  }
}

TEST_F(PatientBalanceTest, AccountCredit) {
  AccountModel model(conn_, 0);
  struct Case {
    const char* name;
    int32_t patient;
    bool ignore_date;
    int16_t kind;
    const char* filter;
    DateTime end;
    const char* expected;
  };
  const Case cases[] = {
      // Values with cheque date <= today: 80 + 120 + 200 = 400 (204 and 205
      // are post-dated); their shares 80 + 120 + 150 = 350.
      {"all payers, today", 1, false, 0, "", NoEndDate(), "50.00"},
      // Every payment: 80 + 120 + 200 + 40 + 30 = 470; shares 390.
      {"all payers, dates ignored", 1, true, 0, "", NoEndDate(), "80.00"},
      // Cheques up to 10-01: 80 + 120 = 200, all spread.
      {"as of an earlier day", 1, false, 0, "", Day(2026, 10, 1), "0"},
      // Provider 2 took payment 203 only: 200 - 150.
      {"provider filter", 1, false, 0, "ProviderID = 2", NoEndDate(), "50.00"},
      // "0" is no filter: as the first case.
      {"filter of \"0\"", 1, false, 0, "0", NoEndDate(), "50.00"},
      // Priya's own 60, and the insurer's 15 apart.
      {"patient money on account", 3, false, 1, "", NoEndDate(), "60.00"},
      {"insurer money on account", 3, false, 2, "", NoEndDate(), "15.00"},
      // Arjun's 80 lies on Priya's invoice: spent, so no credit for him.
      {"spread over another's invoice", 4, false, 0, "", NoEndDate(), "0"},
      // Not rounded: 10.0050.
      {"four decimals kept", 5, false, 0, "", NoEndDate(), "10.0050"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(model.ReturnAccountCredit(c.patient, c.ignore_date, c.kind, c.filter, c.end),
              Money(c.expected))
        << c.name;
  }
}

TEST_F(PatientBalanceTest, InvoicePaid) {
  AccountModel model(conn_, 0);
  struct Case {
    const char* name;
    bool on_or_before;
    int32_t invoice;
    DateTime end;
    int16_t kind;
    const char* expected;
  };
  const Case cases[] = {
      // Invoice 101: 80 from the patient (share dated 09-15) and 120 from the
      // insurer (10-01).
      {"everything by today", true, 101, Day(2026, 11, 20), 0, "200.00"},
      {"patient's part", true, 101, Day(2026, 11, 20), 1, "80.00"},
      {"insurer's part", true, 101, Day(2026, 11, 20), 2, "120.00"},
      {"by an earlier day", true, 101, Day(2026, 9, 30), 0, "80.00"},
      // After 09-30 lies the insurer's 120, entered on its cheque date: not
      // post-dated, so Kind 0 leaves it out; Kind 2 counts it.
      {"after the day, post-dated only", false, 101, Day(2026, 9, 30), 0, "0"},
      {"after the day, insurer", false, 101, Day(2026, 9, 30), 2, "120.00"},
      // Invoice 105: the 40 cheque entered 11-10, dated 11-21.
      {"post-dated share", false, 105, Day(2026, 11, 20), 0, "40.00"},
      {"post-dated share is not paid yet", true, 105, Day(2026, 11, 20), 0, "0"},
      // A year before 1900 means today: 200 by today (by the zero date
      // itself it would be 0).
      {"zero date means today", true, 101, DateTime(), 0, "200.00"},
      // 33.3250 rounds half-even to 33.32.
      {"rounded to the cent", true, 191, Day(2026, 11, 20), 0, "33.32"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(model.ReturnInvoicePaid(c.on_or_before, c.invoice, c.end, c.kind), Money(c.expected))
        << c.name;
  }
}

}  // namespace
}  // namespace orv::testing

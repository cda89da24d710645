// Format over numbers: the report columns' format strings, sections, rounding,
// grouping, scaling, literals and the named number formats. Every expected
// text is worked out by hand from the rules in format.h.
#include <gtest/gtest.h>

#include "common/errors.h"
#include "common/format.h"
#include "common/locale.h"
#include "named_cases.h"

namespace orv {
namespace {

class FormatNumber : public ::testing::TestWithParam<FormatCase> {};

TEST_P(FormatNumber, GivesTheText) {
  const FormatCase& c = GetParam();
  EXPECT_EQ(Format(c.value, c.fmt), c.expected);
}

// The number format strings of the report columns.
const FormatCase kReportColumns[] = {
    {"MyFormatPattern", 1234.5, "##,##0.00", "1,234.50"},
    {"ParenthesesNegative", -1234.5, "###,###,##0.00;(###,###,##0.00)", "(1,234.50)"},
    {"ParenthesesZero", 0, "###,###,##0.00;(###,###,##0.00)", "0.00"},
    {"DollarHashesOverflowDigits", 1234567.5, "$######.00", "$1234567.50"},
    {"DollarHashesBelowOne", 0.25, "$######.00", "$.25"},
    {"DollarZero", 12.345, "$0.00", "$12.35"},
    {"DollarZeroNegative", -3, "$0.00", "-$3.00"},
    {"HashesOfZeroIsPoint", 0, "##.##", "."},
    {"HashesHalf", 0.5, "##.##", ".5"},
    {"HashesWhole", 10, "##.##", "10."},
    {"HashPointZeros", 0.5, "##.00", ".50"},
    {"PercentLiteral", 0.1234, "0.00%", "12.34%"},
    {"PercentZeroMoney", Cur("0"), "0.00%", "0.00%"},
    {"PercentHashesZero", 0, "#.##%", ".%"},
    {"PhoneNumber", Variant(4165551234LL), "(###) ###-####", "(416) 555-1234"},
    {"PhoneNumberFromText", "4165551234", "(###) ###-####", "(416) 555-1234"},
    {"PhoneNumberShort", 5551234, "(###) ###-####", "() 555-1234"},
    {"PhoneTextWithDashesUnchanged", "416-555-1234", "(###) ###-####", "416-555-1234"},
    {"ZeroFilled", 1202, "00000", "01202"},
    {"ZeroFilledTooLong", 123456, "00000", "123456"},
};
INSTANTIATE_TEST_SUITE_P(ReportColumns, FormatNumber, ::testing::ValuesIn(kReportColumns),
                         CaseName);

// Half away from zero on the decimal digits; floats as 15 significant digits.
const FormatCase kRounding[] = {
    {"HalfUp", 2.5, "0", "3"},
    {"HalfUpNegative", -2.5, "0", "-3"},
    {"BinaryBelowHalfStillUp", 2.675, "0.00", "2.68"},
    {"MoneyHalfCent", Cur("2.675"), "0.00", "2.68"},
    {"MoneyHalfCentNegative", Cur("-0.005"), "0.00", "-0.01"},
    {"CarryThroughNines", 0.995, "0.00", "1.00"},
    {"CarryAddsGroup", 999.5, "#,##0", "1,000"},
    {"BelowHalfDown", 0.0049, "0.00", "0.00"},
    // The section is chosen before rounding, as the host language does.
    {"NegativeRoundsToMinusZero", -0.001, "0.00", "-0.00"},
    {"NegativeSectionRoundsToZero", -0.001, "0.00;(0.00)", "(0.00)"},
    {"FloatNoise", 0.1 + 0.2, "0.000000000000000", "0.300000000000000"},
};
INSTANTIATE_TEST_SUITE_P(Rounding, FormatNumber, ::testing::ValuesIn(kRounding), CaseName);

const FormatCase kStructure[] = {
    {"GroupingNegativeMillions", -1234567, "#,##0", "-1,234,567"},
    {"GroupingExactInt64", Variant::Int64(9007199254740993LL), "#,##0", "9,007,199,254,740,993"},
    {"ScaleByThousand", 1234567, "#,##0,", "1,235"},
    {"ScaleBeforePoint", 1234567, "0,.00", "1234.57"},
    {"LeadingCommaPrints", 5, ",0", ",5"},
    {"ThreeSectionsZero", 0, "0.00;(0.00);\\Z\\e\\r\\o", "Zero"},
    {"EmptyNegativeSectionUsesFirst", -5, "0;;\\z", "-5"},
    {"EmptyZeroSectionUsesFirst", 0, "0.0;(0.0);", "0.0"},
    {"NullSection", Variant::Null(), "0;-0;\\z;\\N\\u\\l\\l", "Null"},
    {"NullWithoutSection", Variant::Null(), "0.00", ""},
    {"EmptyValue", Variant(), "0.00", ""},
    {"TrueIsMinusOne", true, "0", "-1"},
    {"DateAsSerial", DateTime(36951.5), "0.00", "36951.50"},
    {"TextNotNumberUnchanged", "abc", "0.00", "abc"},
    {"LocaleText", "$1,234.50", "0.0", "1234.5"},
    {"ParenthesesText", "(5)", "0.00", "-5.00"},
    {"EscapedLiterals", 5, "\\T\\o\\t\\a\\l\\: 0", "Total: 5"},
    {"QuotedSemicolon", -5, "\"a;b\"0", "-a;b5"},
    {"NoIntegerPlaceholders", 12.5, ".00", "12.50"},
    {"Scientific", 12345, "0.00E+00", "1.23E+04"},
    {"ScientificSmall", 0.000123, "0.00E+00", "1.23E-04"},
    {"ScientificMinusSignOnly", 12345, "0.00E-00", "1.23E04"},
    {"ScientificCarry", 9.999, "0.00E+00", "1.00E+01"},
    {"ScientificZero", 0, "0.00E+00", "0.00E+00"},
};
INSTANTIATE_TEST_SUITE_P(Structure, FormatNumber, ::testing::ValuesIn(kStructure), CaseName);

const FormatCase kNamed[] = {
    {"Currency", 1234.5, "Currency", "$1,234.50"},
    {"CurrencyNegative", -5, "Currency", "-$5.00"},
    {"CurrencyMoney", Cur("1234567.125"), "Currency", "$1,234,567.13"},
    {"CurrencyAnyCase", 2, "CURRENCY", "$2.00"},
    {"CurrencyNull", Variant::Null(), "Currency", ""},
    {"CurrencyTextUnchanged", "n/a", "Currency", "n/a"},
    {"GeneralNumber", 1234.5, "General Number", "1234.5"},
    {"GeneralNumberText", "$1,234.50", "General Number", "1234.5"},
    {"GeneralNumberHuge", 1e20, "General Number", "1E+20"},
    {"Fixed", 1234.567, "Fixed", "1234.57"},
    {"Standard", 1234.567, "Standard", "1,234.57"},
    {"Percent", 0.5, "Percent", "50.00%"},
    {"PercentSmall", 0.00006, "Percent", "0.01%"},
    {"ScientificNamed", 12345, "Scientific", "1.23E+04"},
    {"YesNoTrue", true, "Yes/No", "Yes"},
    {"YesNoNumber", 5, "Yes/No", "Yes"},
    {"YesNoNull", Variant::Null(), "Yes/No", ""},
    {"TrueFalse", 0, "True/False", "False"},
    {"OnOff", -1, "On/Off", "On"},
};
INSTANTIATE_TEST_SUITE_P(Named, FormatNumber, ::testing::ValuesIn(kNamed), CaseName);

const FormatCase kPlain[] = {
    {"PlainFloat", 1234.5, "", "1234.5"},
    {"PlainFloatNoise", 0.1 + 0.2, "", "0.3"},
    {"PlainMoney", Cur("12.5000"), "", "12.5"},
    {"PlainTrue", true, "", "True"},
    {"PlainNull", Variant::Null(), "", ""},
    {"PlainText", "abc", "", "abc"},
    {"PlainDate", DateTime(36951.0), "", "2001-03-01"},
};
INSTANTIATE_TEST_SUITE_P(Plain, FormatNumber, ::testing::ValuesIn(kPlain), CaseName);

TEST(FormatNumberFrench, UsesTheLocaleSeparatorsAndSymbol) {
  EXPECT_EQ(Format(1234.5, "#,##0.00", FrenchCanada()), "1 234,50");
  EXPECT_EQ(Format(1234.5, "Currency", FrenchCanada()), "1 234,50 $");
  EXPECT_EQ(Format(-5, "Currency", FrenchCanada()), "-5,00 $");
}

// Money is formatted by whole ten-thousandths, a number of any other kind
// through the format's digits: the two agree on every amount, in every
// locale and at every number of currency digits, at the half-cent rounding,
// the thousands, and a negative amount that rounds to nothing.
TEST(FormatNumberMoney, MoneyFormatsAsTheSameNumberGivenAsDouble) {
  const long long raws[] = {0,         1,          49,           50,        51,
                            149,       150,        5000,         9999,      -1,
                            -49,       -50,        -12345678,    99995000,  99999950,
                            -99999950, 1234567890, 1000000000000, 123456789012345};
  for (const LocaleInfo* base : {&EnglishCanada(), &FrenchCanada()}) {
    for (int digits : {0, 2, 3, 4}) {
      LocaleInfo loc = *base;
      loc.currency_digits = digits;
      for (const long long raw : raws) {
        EXPECT_EQ(Format(Variant(Currency::FromRaw(raw)), "Currency", loc),
                  Format(Variant(double(raw) / 10000), "Currency", loc))
            << raw << " at " << digits << " digits";
      }
    }
  }
}

TEST(FormatNumberCache, ManyDistinctStringsStillFormat) {
  // More distinct strings than the cache holds: the overflow is parsed anew.
  for (int i = 0; i < 600; ++i) {
    std::string fmt = "0.00\" #" + std::to_string(i) + "\"";
    EXPECT_EQ(Format(1.5, fmt), "1.50 #" + std::to_string(i));
  }
}

}  // namespace
}  // namespace orv

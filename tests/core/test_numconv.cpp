// Number text routines: pictures, float forms, rounding, parsing, amounts in words, and the exact
// 18-digit generator checked against std::to_chars.
#include <qxnum/numconv.h>

#include <gtest/gtest.h>

#include "settingsguard.h"

#include <cfloat>
#include <charconv>
#include <clocale>
#include <cmath>
#include <cstring>
#include <limits>
#include <locale.h>
#include <random>
#include <string>

using namespace qxnum;

namespace {

const Extended Nan = std::numeric_limits<Extended>::quiet_NaN();
const Extended Inf = std::numeric_limits<Extended>::infinity();

TFormatSettings Dot() {
    return TFormatSettings::Invariant();
}

TFormatSettings Comma() {
    return test::CommaSettings();
}

using test::SettingsGuard;

struct TPictureCase {
    const char* Format;
    Extended Value;
    const char* Expected;
};

template <std::size_t N> void CheckPictures(const TPictureCase (&Cases)[N], const TFormatSettings& Settings) {
    for (const TPictureCase& C : Cases)
        EXPECT_EQ(FormatFloat(QString::fromUtf8(C.Format), C.Value, Settings), QString::fromUtf8(C.Expected))
            << "format " << C.Format << " value " << static_cast<double>(C.Value);
}

} // namespace

// ---- FormatFloat ----

TEST(FormatFloat, PlatformTable) {
    // 1.005 is the double just below 1.005.
    const TPictureCase Cases[] = {{"0.000##", 2.5L, "2.500"},
                                  {"0.0000E+00", 12345.678L, "1.2346E+04"},
                                  {"0", 2.5L, "3"},
                                  {"0", 3.5L, "4"},
                                  {"0", 0.5L, "1"},
                                  {"0", -0.5L, "-1"},
                                  {"0", -0.4L, "0"},
                                  {"0.00", -0.001L, "0.00"},
                                  {"0.00", -0.005L, "-0.01"},
                                  {"#,##0.00", 1234567.891L, "1,234,567.89"},
                                  {"000000", 12, "000012"},
                                  {"0,000", 12, "0,012"},
                                  {"#.##", 0, ""},
                                  {"#.##", 0.5L, ".5"},
                                  {"0.##", 0.5L, "0.5"},
                                  {"0.##", 2, "2"},
                                  {"0.00;(0.00)", -1.5L, "(1.50)"},
                                  {"0.00;(0.00);\"zero\"", 0, "zero"},
                                  {"0.00;(0.00);\"zero\"", -0.001L, "zero"},
                                  {"0.00;;\"zero\"", -1.5L, "-1.50"},
                                  {"00.00E+0", 12345.678L, "12.35E+3"},
                                  {"#.###E-0", 0.000123L, "1.23E-4"},
                                  {"0.0E-000", 12345, "1.2E004"},
                                  {"0.00E+00", 0, "0.00E+00"},
                                  {"\"$\"0.00", -5, "-$5.00"},
                                  {"0.0 kg", 1.25L, "1.3 kg"},
                                  {"a0b0", 12345, "a1234b5"},
                                  {"0.00", 1.005, "1.00"},
                                  {"0.00", 1.5E20L, "1.5E20"}};
    CheckPictures(Cases, Dot());
}

TEST(FormatFloat, PictureElementsAndSections) {
    const TPictureCase Cases[] = {
        // literals: quotes of both kinds, an unclosed quote, no scaling by '%', a lone E, a second '.'
        {"'#'0", 5, "#5"},
        {"0 'kg", 5, "5 kg"},
        {"0.00%", 0.5L, "0.50%"},
        {"0E", 5, "5E"},
        {"0.#.#", 1.25L, "1.2.5"},
        // exponent forms: lower case, at most 4 digits, only the first E counts, carry into the exponent
        {"0.0e+00", 12345, "1.2e+04"},
        {"0.0E+000000", 12345, "1.2E+0004"},
        {"0.0E+00 E+00", 12345, "1.2E+04 E+00"},
        {"0.00E+00", -12345, "-1.23E+04"},
        {"0.###E+0", 1, "1E+0"},
        {"##.##E+0", 1, "10E-1"},
        {"E+00", 5, "5E+00"},
        {"0.00E+00", 9.999L, "1.00E+01"},
        {"0.0E+0", 1e-4000L, "1.0E-4000"},
        // placeholders and grouping
        {"#,##0", -1234, "-1,234"},
        {"0,0", 1234567, "1,234,567"},
        {"#,##0.00", 999.995L, "1,000.00"},
        {"#", 0.4L, ""},
        {"#0#", 0, "00"},
        {"0.#0", 0.5L, "0.50"},
        {".00", 12.5L, "12.50"},
        {"0.0", 0.05L, "0.1"},
        // sections; a value that rounds to zero without a zero section keeps the negative one
        {"0.00;(0.00)", -0.001L, "(0.00)"},
        {"0.00;(0.00);zero;ignored", 0, "zero"},
        {"0;;", 0, "0"},
        {"0.00;'a;b'0", -1, "a;b1"},
        {";0.00", -1.5L, "-1.5"}, // empty first section: general format
        {"", 0.1L, "0.1"},
        {"0.00;;0.000", 0.001L, "0.000"}, // rounds to zero in the first: zero section
        {"0.00;;0.000", -0.0L, "0.000"}};
    CheckPictures(Cases, Dot());
}

TEST(FormatFloat, RoundingLimitsAndSpecialValues) {
    const TPictureCase Cases[] = {
        {"0.00", 0.125L, "0.13"}, // exactly half in binary
        // 1e-20 below the half: its 18 digits read ...500000, which then round up
        {"0.00", 0.12499999999999999999L, "0.13"},
        // but 1e-17 below the half shows in the 18 digits and rounds down
        {"0.00", 0.12499999999999999L, "0.12"},
        {"0.000000000000000", 1.0000000000000005L, "1.000000000000001"},
        {"0", 0.49999999999999999L, "0"},
        {"0", 99999999999999999.0L, "99999999999999999"},
        {"0", 99999999999999999.5L, "1E17"}, // rounds up to 18 digits
        {"0.0", 123456789012345678.0L, "1.23456789012346E17"},
        {"#,##0", 1e30L, "1E30"},
        {"0.0E+00", 1e30L, "1.0E+30"}, // scientific pictures never fall back
        {"0.00", Nan, "NAN"},
        {"0.00", Inf, "INF"},
        {"0.00;(0.00)", -Inf, "-INF"},
        {"0.0", LDBL_MAX, "1.18973149535723E4932"},
        {"0.00E+0", LDBL_MAX, "1.19E+4932"},
        {"0.00E+0", LDBL_TRUE_MIN, "3.65E-4951"},
        {"0.00", LDBL_TRUE_MIN, "0.00"},
        {"0.00000000000000000000E+00", 1.0L / 3.0L, "3.33333333333333333000E-01"}}; // 18 digits at most
    CheckPictures(Cases, Dot());
}

TEST(FormatFloat, SeparatorsComeFromTheSettings) {
    const TPictureCase Cases[] = {{"#,##0.00", 1234567.891L, "1.234.567,89"},
                                  {"0.000##", 2.5L, "2,500"},
                                  {"0.0E+00", 12345, "1,2E+04"},
                                  {"#.##", 0.5L, ",5"}};
    CheckPictures(Cases, Comma());
    TFormatSettings NoGroup = Dot();
    NoGroup.ThousandSeparator = QChar();
    EXPECT_EQ(FormatFloat(QStringLiteral("#,##0"), 1234567, NoGroup), QStringLiteral("1234567"));

    SettingsGuard Guard;
    FormatSettings = Comma();
    EXPECT_EQ(FormatFloat(QStringLiteral("0.00"), 1.5L), QStringLiteral("1,50"));
    EXPECT_EQ(FloatToStr(1.5L), QStringLiteral("1,5"));
    EXPECT_EQ(FloatToStrF(1234.5L, ffNumber, 15, 1), QStringLiteral("1.234,5"));
}

TEST(FormatFloat, ManyPicturesInTurn) {
    // More pictures than the parse cache holds, used alternately: each must keep its own meaning.
    const char* Formats[] = {"0.0", "0.00", "0.000", "0.0000", "0.00000", "0.000000", "#,##0"};
    const char* Expected[] = {"1.2", "1.23", "1.235", "1.2346", "1.23457", "1.234568", "1"};
    for (int I = 0; I < 21; ++I)
        EXPECT_EQ(FormatFloat(QString::fromLatin1(Formats[I % 7]), 1.2345678L, Dot()),
                  QString::fromLatin1(Expected[I % 7]));
}

TEST(FormatFloat, RandomPicturesStayBounded) {
    // Any text is a picture: the result is never longer than the picture's own characters, the
    // grouped digits and an exponent allow.
    std::mt19937 Rng(11);
    const char Alphabet[] = "0#.,;E+e-'\" x%";
    const Extended Values[] = {0,      -0.0L,          1.5L,     -2.5L,         1e-300L,
                               1e300L, 123456789.125L, LDBL_MAX, -LDBL_TRUE_MIN};
    for (int I = 0; I < 20000; ++I) {
        QString Picture;
        const int Len = static_cast<int>(Rng() % 16);
        for (int K = 0; K < Len; ++K)
            Picture += QLatin1Char(Alphabet[Rng() % (sizeof Alphabet - 1)]);
        for (Extended V : Values)
            EXPECT_LE(FormatFloat(Picture, V, Dot()).size(), 2 * Len + 48) << Picture.toStdString();
    }
}

// ---- FloatToStrF ----

TEST(FloatToStrF, FormsLimitsAndFallbacks) {
    const struct {
        Extended Value;
        TFloatFormat Format;
        int Precision, Digits;
        const char* Expected;
    } Cases[] = {
        {1E20L, ffGeneral, 15, 0, "1E20"},
        {1.5E-5L, ffGeneral, 15, 0, "1.5E-5"},
        {0.0001L, ffGeneral, 15, 0, "0.0001"},
        {0.00001L, ffGeneral, 15, 0, "1E-5"},
        {1234567890.123456789L, ffGeneral, 15, 0, "1234567890.12346"},
        {1234567890123456.123L, ffGeneral, 15, 0, "1.23456789012346E15"},
        {123456, ffGeneral, 4, 2, "1.235E05"},
        {1234.5L, ffExponent, 4, 2, "1.235E+03"},
        {1234.5L, ffExponent, 4, 0, "1.235E+3"},
        {0, ffExponent, 4, 2, "0.000E+00"},
        {-0.00123L, ffExponent, 3, 3, "-1.23E-003"},
        {2.5L, ffFixed, 15, 0, "3"},
        {-0.001L, ffFixed, 15, 2, "0.00"},
        {-1234567.891L, ffNumber, 15, 2, "-1,234,567.89"},
        {1234.5L, ffCurrency, 15, 2, "$1,234.50"},
        {-1234.5L, ffCurrency, 15, 2, "($1,234.50)"},
        {1.0L / 3, ffGeneral, 1, 0, "0.33"}, // Precision clamped to 2..18
        {1.0L / 3, ffGeneral, 30, 0, "0.333333333333333333"},
        {1e-20L, ffGeneral, 15, 4, "1E-0020"},
        {1e-20L, ffGeneral, 15, 9, "1E-20"}, // Digits above 4: no minimum width
        {-0.00001L, ffGeneral, 12, 5, "-1E-5"},
        {-0.00001L, ffGeneral, 12, 2, "-1E-05"},
        {-0.00001L, ffExponent, 12, 5, "-1.00000000000E-5"},
        {-0.00001L, ffExponent, 12, 2, "-1.00000000000E-05"},
        {0.00001L, ffExponent, 12, 5, "1.00000000000E-5"},
        // Precision limits the fixed forms as well as the decimals do.
        {1234.567L, ffFixed, 4, 4, "1235.0000"},
        {-1234.567L, ffFixed, 4, 4, "-1235.0000"},
        {1234.567L, ffFixed, 4, 2, "1235.00"},
        {1234.567L, ffNumber, 4, 2, "1,235.00"},
        {-1234.567L, ffNumber, 4, 2, "-1,235.00"},
        {1234.567L, ffCurrency, 4, 2, "$1,235.00"},
        {-1234.567L, ffCurrency, 4, 2, "($1,235.00)"},
        {0.123456L, ffFixed, 3, 5, "0.12300"},
        {-0.123456L, ffFixed, 3, 5, "-0.12300"},
        {0.123456L, ffFixed, 3, 2, "0.12"}, // the decimals are the shorter limit
        {9999.5L, ffFixed, 4, 2, "1E04"},   // rounds past Precision: general form
        {12345, ffGeneral, 4, 0, "1.235E4"},
        {1e15L, ffGeneral, 15, 0, "1E15"},
        {1e14L, ffGeneral, 15, 0, "100000000000000"},
        {0.00099999999999999999L, ffGeneral, 15, 0, "0.001"},
        {-0.0L, ffGeneral, 15, 0, "0"},
        {-1e-20L, ffGeneral, 15, 0, "-1E-20"},
        {1e-4000L, ffGeneral, 15, 0, "1E-4000"},
        {1, ffExponent, 2, 0, "1.0E+0"},
        {-0.0L, ffExponent, 4, 2, "0.000E+00"},
        {9.9999L, ffExponent, 3, 2, "1.00E+01"},
        {1e-4000L, ffExponent, 3, 0, "1.00E-4000"},
        {-0.5L, ffFixed, 15, 0, "-1"},
        {12, ffFixed, 15, 20, "12.000000000000000000"}, // decimals clamped to 18
        {12, ffFixed, 15, -3, "12"},
        {1e20L, ffFixed, 15, 2, "1E20"}, // more integer digits than Precision
        {123456, ffFixed, 4, 2, "1.235E05"},
        {123456, ffNumber, 4, 2, "1.235E05"},
        {123456, ffCurrency, 4, 2, "1.235E05"},
        {999.995L, ffNumber, 15, 2, "1,000.00"},
        {-0.004L, ffCurrency, 15, 2, "$0.00"}, // rounds to zero: the positive form
    };
    for (const auto& C : Cases)
        EXPECT_EQ(FloatToStrF(C.Value, C.Format, C.Precision, C.Digits, Dot()),
                  QString::fromLatin1(C.Expected))
            << static_cast<double>(C.Value) << " form " << int(C.Format) << " " << C.Precision << " "
            << C.Digits;
    for (TFloatFormat F : {ffGeneral, ffExponent, ffFixed, ffNumber, ffCurrency}) {
        EXPECT_EQ(FloatToStrF(Nan, F, 15, 2, Dot()), QStringLiteral("NAN"));
        EXPECT_EQ(FloatToStrF(Inf, F, 15, 2, Dot()), QStringLiteral("INF"));
        EXPECT_EQ(FloatToStrF(-Inf, F, 15, 2, Dot()), QStringLiteral("-INF"));
    }
    EXPECT_EQ(FloatToStr(0.1L, Dot()), QStringLiteral("0.1"));
    EXPECT_EQ(FloatToStr(100, Comma()), QStringLiteral("100"));
}

TEST(FloatToStrF, CurrencyPlacements) {
    const char* Positive[4] = {"$1,234.50", "1,234.50$", "$ 1,234.50", "1,234.50 $"};
    const char* Negative[16] = {"($1,234.50)", "-$1,234.50",  "$-1,234.50",   "$1,234.50-",
                                "(1,234.50$)", "-1,234.50$",  "1,234.50-$",   "1,234.50$-",
                                "-1,234.50 $", "-$ 1,234.50", "1,234.50 $-",  "$ 1,234.50-",
                                "$ -1,234.50", "1,234.50- $", "($ 1,234.50)", "(1,234.50 $)"};
    TFormatSettings S = Dot();
    for (quint8 F = 0; F < 16; ++F) {
        S.CurrencyFormat = F % 4;
        S.NegCurrFormat = F;
        EXPECT_EQ(FloatToStrF(1234.5L, ffCurrency, 15, 2, S), QString::fromLatin1(Positive[F % 4])) << int(F);
        EXPECT_EQ(FloatToStrF(-1234.5L, ffCurrency, 15, 2, S), QString::fromLatin1(Negative[F])) << int(F);
    }
    S = Comma();
    S.CurrencyString = QStringLiteral("EUR");
    S.CurrencyFormat = 3;
    S.NegCurrFormat = 8;
    EXPECT_EQ(FloatToStrF(1234.5L, ffCurrency, 15, 2, S), QStringLiteral("1.234,50 EUR"));
    EXPECT_EQ(FloatToStrF(-1234.5L, ffCurrency, 15, 0, S), QStringLiteral("-1.235 EUR"));
}

// ---- FormatWidth, TrimNumZeroes, Round ----

TEST(NumText, FormatWidth) {
    const struct {
        int Width;
        const char* Text;
        const char* Expected;
    } Cases[] = {{-6, "ab", "ab    "}, {6, "ab", "    ab"}, {2, "abc", "abc"},
                 {-2, "abc", "abc"},   {0, "", ""},         {3, "", "   "}};
    for (const auto& C : Cases)
        EXPECT_EQ(FormatWidth(C.Width, QString::fromLatin1(C.Text)), QString::fromLatin1(C.Expected))
            << C.Width << " " << C.Text;
}

TEST(NumText, TrimNumZeroes) {
    const char* Cases[][2] = {{"2.500", "2.5"},
                              {"2.000", "2"},
                              {"100", "100"},
                              {"1000.", "1000."},
                              {"-0.0100", "-0.01"},
                              {"1.2500E+03", "1.25E+03"},
                              {"1.0E+03", "1E+03"},
                              {"1E+03", "1E+03"},
                              {"1,234.500", "1,234.5"},
                              {"1.500 kg", "1.5 kg"},
                              {".000", "0"},
                              {".50", ".5"},
                              {"NAN", "NAN"},
                              {"", ""}};
    for (const auto& C : Cases)
        EXPECT_EQ(TrimNumZeroes(QString::fromLatin1(C[0]), Dot()), QString::fromLatin1(C[1])) << C[0];
    EXPECT_EQ(TrimNumZeroes(QStringLiteral("1.234,500"), Comma()), QStringLiteral("1.234,5"));
    EXPECT_EQ(TrimNumZeroes(QStringLiteral("1.200"), Comma()), QStringLiteral("1.200")); // '.' groups here

    SettingsGuard Guard;
    FormatSettings = Comma();
    EXPECT_EQ(TrimNumZeroes(QStringLiteral("2,500")), QStringLiteral("2,5"));
}

TEST(NumText, RoundHalfToEven) {
    const qint64 Max = std::numeric_limits<qint64>::max(), Min = std::numeric_limits<qint64>::min();
    const struct {
        Extended Value;
        qint64 Expected;
    } Cases[] = {{0.5L, 0},
                 {1.5L, 2},
                 {2.5L, 2},
                 {-2.5L, -2},
                 {-1.5L, -2},
                 {2.4999999999L, 2},
                 {2.5000000001L, 3},
                 {4503599627370497.5L, 4503599627370498},
                 {9223372036854775806.5L, 9223372036854775806},
                 {9223372036854775807.5L, Max}, // 2^63 saturates
                 {1e19L, Max},
                 {-9223372036854775808.0L, Min},
                 {-1e19L, Min},
                 {Inf, Max},
                 {-Inf, Min},
                 {Nan, 0}};
    for (const auto& C : Cases)
        EXPECT_EQ(Round(C.Value), C.Expected) << static_cast<double>(C.Value);
}

// ---- parsing ----

TEST(StrToFloat, AcceptedTexts) {
    const struct {
        const char16_t* Text;
        Extended Expected;
    } Cases[] = {{u" 1.5 ", 1.5L},
                 {u"+3", 3},
                 {u".5", 0.5L},
                 {u"5.", 5},
                 {u"1E+3", 1000},
                 {u"1e-3", 0.001L},
                 {u"\t7\r\n", 7},
                 {u"00012", 12},
                 {u"-.25e1", -2.5L},
                 {u"0.000", 0},
                 {u"1e0000000", 1},
                 {u"\u00a012\u2003", 12},
                 {u"123456789012345678901234567890", 123456789012345678901234567890.0L},
                 {u"0.000000000000000000000000000000001", 1e-33L},
                 {u"1e4000", 1e4000L},
                 {u"1e-4940", 1e-4940L}};
    for (const auto& C : Cases) {
        const QString S = QString::fromUtf16(C.Text);
        Extended V = -99;
        EXPECT_TRUE(TryQX_StrToFloat(S, V, Dot())) << S.toStdString();
        EXPECT_EQ(V, C.Expected) << S.toStdString();
        EXPECT_EQ(QX_StrToFloat(S, Dot()), C.Expected);
        EXPECT_EQ(QX_StrToFloatDef(S, 42, Dot()), C.Expected);
    }
    Extended V = 1;
    ASSERT_TRUE(TryQX_StrToFloat(QStringLiteral("-0"), V, Dot()));
    EXPECT_TRUE(V == 0 && std::signbit(V));
}

TEST(StrToFloat, RejectedTexts) {
    const char16_t* Cases[] = {u"",       u"  ",           u".",      u"-",      u"+",
                               u"e5",     u"1e",           u"1e+",    u"1..2",   u"1.2.3",
                               u"1,000",  u"$5",           u"0x10",   u"1 000",  u"INF",
                               u"NAN",    u"--1",          u"1-",     u"1e5.5",  u"1e1e1",
                               u"1.5 kg", u"\u0661\u0662", u"\uff11", u"1e4933", u"-1e99999999999999999999",
                               u"(1)",    u"1d5"};
    for (const char16_t* C : Cases) {
        const QString S = QString::fromUtf16(C);
        Extended V = 7;
        double D = 7;
        EXPECT_FALSE(TryQX_StrToFloat(S, V, Dot())) << S.toStdString();
        EXPECT_FALSE(TryQX_StrToFloat(S, D, Dot())) << S.toStdString();
        EXPECT_EQ(V, 7); // untouched
        EXPECT_EQ(D, 7);
        EXPECT_EQ(QX_StrToFloatDef(S, 42, Dot()), 42);
        EXPECT_THROW(QX_StrToFloat(S, Dot()), EConvertError);
    }
    // NUL characters are not blanks and not digits.
    EXPECT_EQ(QX_StrToFloatDef(QStringLiteral("1.5") + QChar(0), -1, Dot()), -1);
    EXPECT_EQ(QX_StrToFloatDef(QChar(0) + QStringLiteral("1"), -1, Dot()), -1);
    try {
        QX_StrToFloat(QStringLiteral("abc"), Dot());
        ADD_FAILURE() << "no exception";
    } catch (const EConvertError& E) {
        EXPECT_EQ(E.Message(), QStringLiteral("'abc' is not a valid floating point value"));
    }
}

TEST(StrToFloat, RangeOfTheTarget) {
    double D = 0;
    Extended E = 0;
    EXPECT_FALSE(TryQX_StrToFloat(QStringLiteral("1e400"), D, Dot())); // beyond double
    EXPECT_TRUE(TryQX_StrToFloat(QStringLiteral("1e400"), E, Dot()));
    EXPECT_FALSE(TryQX_StrToFloat(QStringLiteral("-1.2e4932"), E, Dot())); // beyond extended
    EXPECT_TRUE(TryQX_StrToFloat(QStringLiteral("1e-400"), D, Dot()));     // underflow reads as 0
    EXPECT_EQ(D, 0.0);
    EXPECT_TRUE(TryQX_StrToFloat(QStringLiteral("4e-320"), D, Dot())); // a double denormal
    EXPECT_EQ(D, 4e-320);
    EXPECT_TRUE(TryQX_StrToFloat(QStringLiteral("1e-5000"), E, Dot()));
    EXPECT_EQ(E, 0.0L);
    EXPECT_TRUE(TryQX_StrToFloat(QStringLiteral("1.7976931348623157e308"), D, Dot()));
    EXPECT_EQ(D, DBL_MAX);
}

TEST(StrToFloat, LocaleSeparator) {
    const struct {
        const char* Text;
        bool Ok;
        Extended Value;
    } Cases[] = {{"1,5", true, 1.5L}, {"1.5", true, 1.5L}, {",25", true, 0.25L},   {"1.234,5", false, 0},
                 {"1,2,3", false, 0}, {"1,2.3", false, 0}, {"-3,5e2", true, -350}, {"1.000.000", false, 0}};
    for (const auto& C : Cases) {
        Extended V = 0;
        EXPECT_EQ(TryQX_StrToFloat(QString::fromLatin1(C.Text), V, Comma()), C.Ok) << C.Text;
        EXPECT_EQ(V, C.Value) << C.Text; // a refused text leaves V as it was
    }
    // With '.' as the separator a ',' is never taken.
    EXPECT_EQ(QX_StrToFloatDef(QStringLiteral("1,5"), -1, Dot()), -1);

    SettingsGuard Guard;
    NumInpFormatSettings = Comma();
    EXPECT_EQ(QX_StrToFloat(QStringLiteral("2,5")), 2.5L);
    EXPECT_EQ(QX_StrToFloatDef(QStringLiteral("x"), 3), 3);
    double D = 0;
    EXPECT_TRUE(TryQX_StrToFloat(QStringLiteral("0,1"), D));
    EXPECT_EQ(D, 0.1);
}

TEST(StrToFloat, ExtendedIsExact) {
    // Decimal texts, short and long, against the C library's correctly rounding readers; "0.1" first,
    // which a widened double would miss.
    locale_t C = newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(nullptr));
    ASSERT_TRUE(C);
    std::mt19937_64 Rng(20240611);
    for (int I = 0; I < 30000; ++I) {
        std::string T;
        if (Rng() & 1) T += '-';
        const int Digits = 1 + static_cast<int>(Rng() % (I % 3 == 0 ? 40 : 20));
        const int Point = static_cast<int>(Rng() % static_cast<unsigned>(Digits + 1));
        for (int K = 0; K < Digits; ++K) {
            if (K == Point) T += '.';
            T += static_cast<char>('0' + Rng() % 10);
        }
        if (Rng() % 3 != 0) T += "e" + std::to_string(static_cast<int>(Rng() % 90) - 45);
        if (I == 0) T = "0.1";
        Extended Got = 0;
        double GotD = 0;
        ASSERT_TRUE(TryQX_StrToFloat(QString::fromLatin1(T), Got, Dot())) << T;
        ASSERT_TRUE(TryQX_StrToFloat(QString::fromLatin1(T), GotD, Dot())) << T;
        EXPECT_EQ(Got, strtold_l(T.c_str(), nullptr, C)) << T;
        EXPECT_EQ(GotD, strtod_l(T.c_str(), nullptr, C)) << T;
    }
    freelocale(C);
}

TEST(StrToFloat, HostileTexts) {
    // Very long texts of every kind are read or rejected, quickly and without harm.
    const QString Nines = QString(100000, QLatin1Char('9'));
    Extended V = 0;
    EXPECT_TRUE(TryQX_StrToFloat(QStringLiteral("0.") + Nines, V, Dot()));
    EXPECT_EQ(V, 1.0L);
    EXPECT_FALSE(TryQX_StrToFloat(Nines, V, Dot())); // 1e100000: overflow
    EXPECT_TRUE(TryQX_StrToFloat(QStringLiteral("0.") + QString(100000, QLatin1Char('0')) + QLatin1Char('1'),
                                 V, Dot()));
    EXPECT_EQ(V, 0.0L);
    EXPECT_FALSE(TryQX_StrToFloat(Nines + QLatin1Char('x'), V, Dot()));
    EXPECT_TRUE(TryQX_StrToFloat(QStringLiteral("1e-") + QString(50, QLatin1Char('9')), V, Dot()));
    EXPECT_EQ(V, 0.0L);
    std::mt19937 Rng(7);
    const char16_t Alphabet[] = u"0123456789.,+-eE \t\0\u00e9\u0661\uffff";
    for (int I = 0; I < 20000; ++I) {
        QString S;
        const int Len = static_cast<int>(Rng() % 12);
        for (int K = 0; K < Len; ++K)
            S += QChar(Alphabet[Rng() % (std::size(Alphabet) - 1)]);
        double D;
        TryQX_StrToFloat(S, V, Dot());
        TryQX_StrToFloat(S, D, Comma());
    }
}

// ---- MoneyStr ----

TEST(MoneyStr, WordsAndRefusals) {
    const char* Cases[][2] = {
        {"1234.5", "one thousand two hundred thirty-four dollars and fifty cents"},
        {"1", "one dollar"},
        {"0.01", "zero dollars and one cent"},
        {"0", "zero dollars"},
        {"-2", "minus two dollars"},
        {"100", "one hundred dollars"},
        {"1.005", "one dollar and one cent"},
        {"-0.004", "zero dollars"},
        {"0.999", "one dollar"},
        {"19.99", "nineteen dollars and ninety-nine cents"},
        {"90", "ninety dollars"},
        {"110", "one hundred ten dollars"},
        {"1000001", "one million one dollars"},
        {"1.5e3", "one thousand five hundred dollars"},
        {"$1,234.50", "one thousand two hundred thirty-four dollars and fifty cents"},
        {"1,000,000 $", "one million dollars"},
        {"(5.25)", "minus five dollars and twenty-five cents"},
        {"-$7", "minus seven dollars"},
        {"$-7", "minus seven dollars"},
        {"7-", "minus seven dollars"},
        {"12345678901234",
         "twelve trillion three hundred forty-five billion six hundred seventy-eight million "
         "nine hundred one thousand two hundred thirty-four dollars"},
        {"999999999999999999999.99",
         "nine hundred ninety-nine quintillion nine hundred ninety-nine quadrillion nine hundred ninety-nine "
         "trillion nine hundred ninety-nine billion nine hundred ninety-nine million nine hundred "
         "ninety-nine thousand nine hundred ninety-nine dollars and ninety-nine cents"},
        {"1e-99999999999999999999", "zero dollars"}};
    for (const auto& C : Cases)
        EXPECT_EQ(MoneyStr(QString::fromLatin1(C[0])), QString::fromLatin1(C[1])) << C[0];
    const QString TooLarge = QString(21, QLatin1Char('9')) + QStringLiteral(".995");
    for (const char* C : {"", "abc", "1,23", "1,2345", "1.2.3", "--5", "5$5", "($-5)", "1e21", "$", "()",
                          "1 2", "1e999999999999999999999"})
        EXPECT_THROW(MoneyStr(QString::fromLatin1(C)), EConvertError) << C;
    EXPECT_THROW(MoneyStr(TooLarge), EConvertError);
}

// ---- the digit generator ----

namespace {

Extended FromBits(std::uint64_t Mantissa, unsigned SignExp) {
    Extended V = 0;
    std::memcpy(&V, &Mantissa, 8);
    const unsigned short SE = static_cast<unsigned short>(SignExp);
    std::memcpy(reinterpret_cast<char*>(&V) + 8, &SE, 2);
    return V;
}

// The 18 significant digits of the float forms against std::to_chars(scientific, 17): the digit
// generator is internal, so it is checked through FloatToStrF at full precision.
class ExtendedDigits : public ::testing::Test {
protected:
    void Check(Extended V) {
        const QString Ours = FloatToStrF(std::fabs(V), ffExponent, 18, 2, Dot());
        char Ref[64];
        const auto R = std::to_chars(Ref, Ref + sizeof Ref, std::fabs(V), std::chars_format::scientific, 17);
        *R.ptr = 0;
        const char* E = std::strchr(Ref, 'e');
        const QString Want = QString::fromLatin1(Ref, static_cast<qsizetype>(E - Ref)) + QLatin1Char('E') +
                             QLatin1Char(E[1]) +
                             QString::number(std::atoi(E + 2)).rightJustified(2, QLatin1Char('0'));
        if (Ours != Want && ++Failures <= 10) ADD_FAILURE() << Ref << " but got " << Ours.toStdString();
    }
    void TearDown() override { EXPECT_EQ(Failures, 0); }
    int Failures = 0;
    std::mt19937_64 Rng{0x5eed};
};

} // namespace

TEST_F(ExtendedDigits, RandomBitPatterns) {
    for (int I = 0; I < 100000; ++I) // every exponent
        Check(FromBits(Rng() | (1ULL << 63), static_cast<unsigned>((1 + Rng() % 32766) | ((Rng() & 1) << 15))));
    for (int I = 0; I < 60000; ++I) // the decades people use
        Check(FromBits(Rng() | (1ULL << 63), static_cast<unsigned>(16383 - 80 + Rng() % 160)));
    for (int I = 0; I < 20000; ++I) { // denormals, short and long
        const std::uint64_t M = (Rng() & ~(1ULL << 63)) >> (Rng() % 63);
        if (M) Check(FromBits(M, 0));
    }
}

TEST_F(ExtendedDigits, ExactTies) {
    // Values whose exact decimal has 19 significant digits ending in 5: the 18 digits tie and must go
    // to the even neighbour, like the reference does.
    std::uint64_t Pow5 = 1;
    for (int J = 1; J <= 20; ++J) {
        Pow5 *= 5;
        // R / 2^J = (R * 5^J) / 10^J with R * 5^J a 19-digit number ending in 5.
        const std::uint64_t Lo = (1000000000000000000ULL + Pow5 - 1) / Pow5,
                            Hi = 10000000000000000000ULL / Pow5;
        for (int I = 0; I < 300; ++I)
            Check(std::ldexp(static_cast<Extended>((Lo + Rng() % (Hi - Lo)) | 1), -J));
    }
    for (int I = 0; I < 3000; ++I) { // 19-digit integers ending in 5, and their halves
        const std::uint64_t N = (1000000000000000000ULL + Rng() % 8000000000000000000ULL) / 10 * 10 + 5;
        Check(static_cast<Extended>(N));
        Check(static_cast<Extended>(N) * 2);
    }
    Check(1000000000000000005.0L);
    Check(0.5L);
}

TEST_F(ExtendedDigits, EdgesOfTheRange) {
    for (Extended V : {LDBL_MAX, LDBL_MIN, LDBL_TRUE_MIN, 1.0L, 9.999999999999999999e17L,
                       99999999999999999.95L, 1e18L, 1e-18L, 123456789012345678.0L, 18446744073709551615.0L})
        Check(V);
    for (int E = -16445; E <= 16383; ++E) // every power of two, and its neighbours
        for (Extended V : {std::ldexp(1.0L, E), std::nextafter(std::ldexp(1.0L, E), 0.0L)})
            if (V != 0) Check(V);
    EXPECT_EQ(FloatToStrF(0.0L, ffExponent, 18, 2, Dot()), "0.00000000000000000E+00");
    EXPECT_EQ(FloatToStrF(-2.5L, ffExponent, 18, 2, Dot()), "-2.50000000000000000E+00");
}

#include <qxnum/numconv.h>
#include <qxnum/numtext.h>

#include <gtest/gtest.h>

#include "settingsguard.h"

#include <cmath>
#include <limits>

using namespace qxnum;

namespace {

using test::SettingsGuard;

TFormatSettings CommaDecimal() {
    return test::CommaSettings();
}

constexpr Extended NaN = std::numeric_limits<Extended>::quiet_NaN();
constexpr Extended Inf = std::numeric_limits<Extended>::infinity();

QString VS(Extended V, TDataType Dt, TNumericType Nt, quint16 Digits, quint16 Decimals, TParType P = ptNone,
           TUnitSystem U = usSI, const QString& Format = QString(), Extended Scale = 1, Extended Offset = 0,
           bool Scaled = true, bool Trim = false) {
    return ValueString(V, Dt, Nt, Digits, Decimals, P, U, Format, Scale, Offset, Scaled, Trim,
                       NumInpFormatSettings);
}

} // namespace

TEST(ValueString, IntegerTypesRoundHalfToEvenWhateverTheForm) {
    struct Case {
        TDataType Dt;
        TNumericType Nt;
        Extended V;
        const char* Text;
    };
    const Case Cases[] = {
        {dtInteger, ntFixed, 2.5L, "2"},
        {dtInteger, ntFixed, 3.5L, "4"},
        {dtInteger, ntFixed, -2.5L, "-2"},
        {dtSmallInt, ntExponent, 1234.4L, "1234"},
        {dtByte, ntParType, 254.5L, "254"},
        {dtWord, ntCurrency, 65535.0L, "65535"},
        {dtShortint, ntNumber, -0.5L, "0"},
        {dtInteger, ntNumber, 1234567.0L, "1234567"},
        {dtInteger, ntGeneral, 1e17L, "100000000000000000"},
    };
    for (const Case& C : Cases)
        EXPECT_EQ(VS(C.V, C.Dt, C.Nt, 15, 3), QLatin1String(C.Text)) << static_cast<double>(C.V);
}

TEST(ValueString, IntegerTypesIgnoreTrimZeroesButApplyTheCustomScale) {
    EXPECT_EQ(VS(100.0L, dtInteger, ntFixed, 15, 3, ptNone, usSI, {}, 1, 0, true, true),
              QStringLiteral("100"));
    // Scaled: value / CustomScale + ScaleOffset before rounding.
    EXPECT_EQ(VS(500.0L, dtWord, ntFixed, 15, 0, ptNone, usSI, {}, 2, 1, true), QStringLiteral("251"));
    EXPECT_EQ(VS(500.0L, dtWord, ntFixed, 15, 0, ptNone, usSI, {}, 2, 1, false), QStringLiteral("500"));
}

TEST(ValueString, IntegerTypesWithNonFiniteOrHugeValuesDoNotOverflow) {
    EXPECT_EQ(VS(NaN, dtInteger, ntFixed, 15, 0), QStringLiteral("NAN"));
    EXPECT_EQ(VS(-Inf, dtInteger, ntFixed, 15, 0), QStringLiteral("-INF"));
    EXPECT_EQ(VS(1e30L, dtInteger, ntFixed, 15, 0), QStringLiteral("1E30"));
}

TEST(ValueString, ParTypePressureScaledAndUnscaled) {
    EXPECT_EQ(VS(250000, dtDouble, ntParType, 15, 3, ptPress, usSI), QStringLiteral("2.500"));
    EXPECT_EQ(VS(250000, dtDouble, ntParType, 15, 3, ptPress, usSI, {}, 1, 0, false),
              QStringLiteral("250000"));
    EXPECT_EQ(VS(250000, dtDouble, ntParType, 15, 3, ptPress, usSI, {}, 1, 0, true, true),
              QStringLiteral("2.5"));
    // 21 psi
    EXPECT_EQ(VS(21 * 6894.76L, dtExtended, ntParType, 15, 3, ptPress, usImperial), QStringLiteral("21.00"));
    // A custom picture overrides the table.
    EXPECT_EQ(VS(123456, dtDouble, ntParType, 15, 3, ptPress, usSI, QStringLiteral("0.0")),
              QStringLiteral("1.2"));
    // Custom scale and offset act before the table factor: (x / 2 + 100000) / 1e5 bar.
    EXPECT_EQ(VS(100000, dtDouble, ntParType, 15, 3, ptPress, usSI, {}, 2, 100000), QStringLiteral("1.500"));
}

TEST(ValueString, FloatFormsUseTheGlobalSettings) {
    SettingsGuard Guard(TFormatSettings::Invariant(), CommaDecimal());
    EXPECT_EQ(VS(2.5L, dtDouble, ntFixed, 15, 0), QStringLiteral("3"));
    EXPECT_EQ(VS(2.5L, dtDouble, ntFixed, 15, 4), QStringLiteral("2.5000"));
    EXPECT_EQ(VS(2.5L, dtDouble, ntFixed, 15, 4, ptNone, usSI, {}, 1, 0, true, true), QStringLiteral("2.5"));
    EXPECT_EQ(VS(-1234.5L, dtSingle, ntCurrency, 15, 2), QStringLiteral("($1,234.50)"));
    EXPECT_EQ(VS(1234.5L, dtExtended, ntExponent, 4, 2), QStringLiteral("1.235E+03"));
    EXPECT_EQ(VS(-1234567.891L, dtDouble, ntNumber, 15, 2), QStringLiteral("-1,234,567.89"));
    EXPECT_EQ(VS(1e20L, dtDouble, ntGeneral, 15, 0), QStringLiteral("1E20"));
}

TEST(ValueString, ParTypePictureIsWrittenWithTheGlobalSeparator) {
    // The parameter-type path searches the NumInp separator in the picture but writes through the
    // global settings; with "," for NumInp the unscaled picture gains nothing and keeps its decimals.
    SettingsGuard Guard(TFormatSettings::Invariant(), CommaDecimal());
    EXPECT_EQ(ParToStr(ptPress, usSI, {}, true, 250000), QStringLiteral("2.500"));
    EXPECT_EQ(UnscaledFormat(ptPress, usSI, {}, NumInpFormatSettings), QStringLiteral("0.000##"));
    EXPECT_EQ(ParToStr(ptPress, usSI, {}, false, 250000), QStringLiteral("250000.000"));
    // Step 3 appends the locale separator to a picture written with ".".
    EXPECT_EQ(UnscaledFormat(ptLength, usImperial, {}, NumInpFormatSettings), QStringLiteral("0.####,00"));
}

TEST(ValueString, CommaLocaleThroughout) {
    SettingsGuard Guard(CommaDecimal(), CommaDecimal());
    EXPECT_EQ(VS(250000, dtDouble, ntParType, 15, 3, ptPress, usSI), QStringLiteral("2,500"));
    EXPECT_EQ(VS(1234567.891L, dtDouble, ntNumber, 15, 2), QStringLiteral("1.234.567,89"));
}

TEST(ValueString, ReportLine) {
    EXPECT_EQ(ValueString(QStringLiteral("p"), ptPress, usSI, 250000, 8, 10, 6),
              QStringLiteral("p        =      2.500 [bar] "));
    // Zero widths add no padding; a unit-less type leaves the unit empty.
    EXPECT_EQ(ValueString(QStringLiteral("n"), ptCount, usSI, 3, 0, 0, 0), QStringLiteral("n = 3 "));
}

TEST(UnscaledFormat, OneDecimalPerDecadeOfTheFactor) {
    const TFormatSettings Dot = TFormatSettings::Invariant();
    struct Case {
        TParType P;
        TUnitSystem U;
        const char* Format;
        const char* Expected;
    };
    const Case Cases[] = {
        {ptPress, usSI, "", "0"},               // 1e5 eats all five decimals and the separator
        {ptForce, usImperial, "", "0.00"},      // 4.448 takes one
        {ptTemp, usImperial, "", "0.000"},      // 0.5555 adds one
        {ptLength, usImperial, "", "0.00####"}, // 0.0254 adds two
        {ptNrpm, usSI, "", "0"},                // factor 1: unchanged
        {ptZp, usImperial, "", "0.0"},          // no separator yet: appended, then a zero
        {ptEnergy, usSI, "0.0", "0"},
        {ptSFCshaft, usSI, "", "0.000000000000"},
    };
    for (const Case& C : Cases)
        EXPECT_EQ(UnscaledFormat(C.P, C.U, QLatin1String(C.Format), Dot), QLatin1String(C.Expected))
            << GetEnumName(C.P).toStdString();
}

TEST(UnscaledFormat, DegenerateFactorsDoNotHang) {
    struct Guard {
        ~Guard() { SetStdFormats(); }
    } Restore;
    const TFormatSettings Dot = TFormatSettings::Invariant();
    for (double F : {0.0, std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(),
                     std::numeric_limits<double>::quiet_NaN(), 1e300, 1e-300, -1000.0}) {
        ParScale[ptArea][usSI] = F;
        const QString S = UnscaledFormat(ptArea, usSI, {}, Dot);
        EXPECT_LE(S.size(), 400) << F;
    }
    ParScale[ptArea][usSI] = -1000.0;
    EXPECT_EQ(UnscaledFormat(ptArea, usSI, {}, Dot), QStringLiteral("0.0##"));
}

TEST(FormatPictures, EffectiveExponentAndDecimalCounts) {
    const TFormatSettings Dot = TFormatSettings::Invariant();
    EXPECT_EQ(EffectiveFormat(ptPress, usImperial, {}), QStringLiteral("0.00#"));
    EXPECT_EQ(EffectiveFormat(ptPress, usSI, QStringLiteral("   ")), QStringLiteral("   "));
    struct Case {
        TParType P;
        const char* Format;
        quint16 Exponent, Decimals;
    };
    const Case Cases[] = {
        {ptNone, "", 4, 4},           {ptPress, "", 0, 5},        {ptNrpm, "", 0, 0},
        {ptNone, "  0.0e-0  ", 3, 1}, {ptNone, "#,##0.0#", 0, 2}, {ptNone, "0.00 kg", 0, 2},
        {ptNone, "0.", 0, 0},         {ptNone, "   ", 0, 0},
    };
    for (const Case& C : Cases) {
        EXPECT_EQ(FormatExponentLength(C.P, usSI, QLatin1String(C.Format)), C.Exponent) << C.Format;
        EXPECT_EQ(FormatDecimalCount(C.P, usSI, QLatin1String(C.Format), Dot), C.Decimals) << C.Format;
    }
    EXPECT_EQ(FormatDecimalCount(ptNone, usSI, QStringLiteral("0.000"), CommaDecimal()), 0);
    EXPECT_EQ(FormatDecimalCount(ptNone, usSI, QStringLiteral("0,0#0"), CommaDecimal()), 3);
}

TEST(StrToPar, ParsesOrGivesZero) {
    EXPECT_EQ(StrToPar(QStringLiteral("abc"), ntParType, ptPress, usSI), 0.0L);
    EXPECT_EQ(StrToPar(QStringLiteral("2"), ntParType, ptPress, usSI), 200000.0L);
    EXPECT_EQ(StrToPar(QStringLiteral("2"), ntFixed, ptPress, usSI), 2.0L);
    EXPECT_EQ(StrToPar(QStringLiteral(""), ntParType, ptTemp, usImperial), 0.0L);
    EXPECT_NEAR(static_cast<double>(StrToPar(QStringLiteral("-14.5037"), ntParType, ptPress, usImperial)),
                -14.5037 * 6894.76, 1e-9);
    EXPECT_EQ(StrToPar(QStringLiteral("0.1"), ntGeneral, ptPress, usSI), 0.1L);
}

TEST(CheckNumRange, ResetsWhatLiesOutsideTheDataType) {
    struct Case {
        TDataType Dt;
        Extended Min, Max, Value, ExpMin, ExpMax, ExpValue;
    };
    const Extended SingleMax = static_cast<Extended>(3.4e38f);
    const Case Cases[] = {
        {dtByte, -5, 300, 1000, 0, 255, 0},
        {dtByte, 10, 20, 255, 10, 20, 255},
        {dtInteger, -2147483648.0L, 2147483647.0L, -2147483648.0L, -2147483647.0L, 2147483647.0L, 0},
        {dtShortint, -129, 128, -128, -128, 127, -128},
        {dtSmallInt, 5, 1, 40000, 5, 1, 0}, // Min and Max are not compared with each other
        {dtWord, -1, 65536, 65535, 0, 65535, 65535},
        {dtSingle, -1e39L, 1e39L, 3e38L, -SingleMax, SingleMax, 3e38L},
        {dtDouble, -1.8e308L, 1.7e308L, 1e308L, -1.7e308L, 1.7e308L, 1e308L},
        {dtExtended, -Inf, Inf, 1e4000L, -1.1e4932L, 1.1e4932L, 1e4000L},
        {dtExtended, NaN, NaN, NaN, -1.1e4932L, 1.1e4932L, 0},
        {dtDouble, 0, 0, Inf, 0, 0, 0},
        {static_cast<TDataType>(77), NaN, 1, 2, -1.1e4932L, 1, 2},
    };
    for (const Case& C : Cases) {
        Extended Min = C.Min, Max = C.Max, Value = C.Value;
        CheckNumRange(C.Dt, Min, Max, Value);
        EXPECT_EQ(Min, C.ExpMin) << static_cast<int>(C.Dt);
        EXPECT_EQ(Max, C.ExpMax) << static_cast<int>(C.Dt);
        EXPECT_EQ(Value, C.ExpValue) << static_cast<int>(C.Dt);
    }
}

#include <qxnum/formatsettings.h>
#include <qxnum/parser.h>

#include <QObject>
#include <QString>
#include <gtest/gtest.h>

#include "settingsguard.h"

#include <cfenv>
#include <chrono>
#include <cmath>
#include <map>
#include <numbers>
#include <ostream>
#include <random>

using namespace qxnum;

// Readable failure output for QString comparisons.
static void PrintTo(const QString& S, std::ostream* Os) {
    *Os << '"' << S.toStdString() << '"';
}

namespace {

using TVars = std::map<QString, Extended>;

// The message P raises, or a text saying there was none.
QString MessageOf(TQXParser& P) {
    try {
        return QStringLiteral("no error, value %1").arg(static_cast<double>(P.CalcValue()));
    } catch (const EQXParserError& E) {
        return E.Message();
    }
}

struct TValueCase {
    const char* Text;
    double Expected;
};

class ParserTest : public ::testing::Test {
protected:
    void UseDecimalComma() { NumInpFormatSettings.DecimalSeparator = QLatin1Char(','); }

    // Evaluates Text with the variables in Vars; an unknown name is left unresolved.
    Extended Calc(const QString& Text, const TVars& Vars = {}) {
        TQXParser P(&Owner);
        P.SetDescription(QStringLiteral("p1 expression in Pressure"));
        P.SetOnCheckVariable([&Vars](QObject*, const QString& Name, Extended& Value, bool& Found) {
            const auto It = Vars.find(Name);
            if (It == Vars.end()) return;
            Value = It->second;
            Found = true;
        });
        P.SetExpression(Text);
        return P.CalcValue();
    }
    double CalcD(const char* Text, const TVars& Vars = {}) {
        return static_cast<double>(Calc(QString::fromUtf8(Text), Vars));
    }

    // The message of the error Text raises, without the description prefix.
    QString ErrorOf(const QString& Text) {
        try {
            return QStringLiteral("no error, value %1").arg(static_cast<double>(Calc(Text)));
        } catch (const EQXParserError& E) {
            const QString Prefix = QStringLiteral("p1 expression in Pressure: ");
            if (!E.Message().startsWith(Prefix)) return QStringLiteral("no description: ") + E.Message();
            return E.Message().mid(Prefix.size());
        }
    }

    test::SettingsGuard Saved;
    QObject Owner;
};

TEST_F(ParserTest, EvaluatesArithmeticFunctionsAndConstants) {
    const auto Check = [this](const char* Text, double Expected) {
        try {
            EXPECT_DOUBLE_EQ(CalcD(Text), Expected) << Text;
        } catch (const EQXParserError& E) {
            ADD_FAILURE() << Text << ": " << E.what();
        }
    };
    // Power is right-associative and binds tighter than a sign; names are case-insensitive.
    const TValueCase Arithmetic[] = {
        {"1+2*3", 7},      {"(1+2)*3", 9},    {"10-4-3", 3},     {"10/4/5", 0.5},     {"2^3^2", 512},
        {"2*3^2", 18},     {"-2^2", -4},      {"-(2)^2", -4},    {"(-2)^2", 4},       {"2^-2", 0.25},
        {"2*-3", -6},      {"+3-+1", 2},      {" \t1 +  2 ", 3}, {"log10(1000)", 3},  {"abs(-3.5)", 3.5},
        {"min(3,1,2)", 1}, {"max(3,1,2)", 3}, {"Sqrt (16)", 4},  {"1.5E+03*2", 3000}, {"2.5e-3*1000", 2.5},
        {".5+5.", 5.5}};
    for (const auto& C : Arithmetic)
        Check(C.Text, C.Expected);
    const TValueCase Functions[] = {{"max(min(4,2),1+1.5)", 2.5},
                                    {"max(1,2,3,4,5,6,7,8,9,10,11,12)", 12},
                                    {"sin(0.5)", std::sin(0.5)},
                                    {"cos(0.5)+tan(0.5)", std::cos(0.5) + std::tan(0.5)},
                                    {"asin(0.5)*acos(0.5)", std::asin(0.5) * std::acos(0.5)},
                                    {"atan(1)*4", std::atan(1.0) * 4},
                                    {"exp(2)", std::exp(2.0)},
                                    {"ln(10)", std::log(10.0)},
                                    {"sqrt(2)", std::sqrt(2.0)},
                                    {"PI/2", std::numbers::pi / 2}};
    for (const auto& C : Functions)
        Check(C.Text, C.Expected);
}

TEST_F(ParserTest, PlainNumbersKeepExtendedPrecision) {
    // pi is the double nearest pi; a number is the long double nearest its text, even with a sign
    // apart or beyond double range.
    EXPECT_EQ(Calc(QStringLiteral("pi")), static_cast<Extended>(std::numbers::pi));
    EXPECT_EQ(Calc(QStringLiteral("0.1")), 0.1L);
    EXPECT_NE(Calc(QStringLiteral("0.1")), static_cast<Extended>(0.1));
    EXPECT_EQ(Calc(QStringLiteral("  -0.1 ")), -0.1L);
    EXPECT_EQ(Calc(QStringLiteral("- 0.1")), -0.1L);
    EXPECT_EQ(Calc(QStringLiteral("1.000000000000000001")), 1.000000000000000001L);
    EXPECT_EQ(Calc(QStringLiteral("1e400")), 1e400L);
    UseDecimalComma();
    EXPECT_EQ(Calc(QStringLiteral("0,1")), 0.1L);
}

TEST_F(ParserTest, DecimalCommaUsesSemicolonBetweenArguments) {
    UseDecimalComma();
    EXPECT_DOUBLE_EQ(CalcD("1,5*2"), 3.0);
    EXPECT_DOUBLE_EQ(CalcD("max(1,5;2,25)"), 2.25);
    EXPECT_DOUBLE_EQ(CalcD("min(1,5; 2; 0,25)"), 0.25);
    EXPECT_DOUBLE_EQ(CalcD("1,5E+03*2"), 3000.0);
    EXPECT_DOUBLE_EQ(CalcD("1.5*2"), 3.0); // a point can only be a decimal point
    // "1,2" is one number here, so max gets one argument.
    EXPECT_EQ(ErrorOf(QStringLiteral("max(1,2)")),
              QStringLiteral("too few arguments for 'max' at position 1"));
    // The settings are read on every evaluation, not when the parser is made.
    TQXParser P;
    P.SetExpression(QStringLiteral("max(1,5;2)"));
    EXPECT_DOUBLE_EQ(static_cast<double>(P.CalcValue()), 2.0);
    NumInpFormatSettings.DecimalSeparator = QLatin1Char('.');
    EXPECT_DOUBLE_EQ(static_cast<double>(P.CalcValue()), 5.0); // now three arguments: 1, 5 and 2
    P.SetExpression(QStringLiteral("max(1;5,2)"));
    EXPECT_DOUBLE_EQ(static_cast<double>(P.CalcValue()), 5.0);
}

TEST_F(ParserTest, ResolvesVariablesThroughTheEvent) {
    EXPECT_DOUBLE_EQ(CalcD("2*p1+1", {{QStringLiteral("p1"), 10}}), 21.0);
    EXPECT_DOUBLE_EQ(CalcD("T_amb-273.15", {{QStringLiteral("T_amb"), 300}}), 300 - 273.15);
    // Function names without "(" are ordinary identifiers; non-ASCII names reach the host unchanged.
    EXPECT_DOUBLE_EQ(CalcD("abs*2+max", {{QStringLiteral("abs"), 3}, {QStringLiteral("max"), 1}}), 7.0);
    EXPECT_DOUBLE_EQ(CalcD("Δp/2+Größe", {{QStringLiteral("Δp"), 4}, {QStringLiteral("Größe"), 1}}), 3.0);
}

TEST_F(ParserTest, EventSeesOwnerAndNamesAsTypedOncePerEvaluation) {
    TQXParser P(&Owner);
    EXPECT_EQ(P.Owner(), &Owner);
    std::vector<QString> Asked;
    Extended P1 = 1;
    P.SetOnCheckVariable([&](QObject* Sender, const QString& Name, Extended& Value, bool& Found) {
        EXPECT_EQ(Sender, &Owner);
        Asked.push_back(Name);
        Value = Name == QStringLiteral("p1") ? P1 : 100;
        Found = true;
    });
    P.SetExpression(QStringLiteral("p1+P1+p1*p1"));
    EXPECT_DOUBLE_EQ(static_cast<double>(P.CalcValue()), 1 + 100 + 1);
    EXPECT_EQ(Asked, (std::vector<QString>{QStringLiteral("p1"), QStringLiteral("P1")}));
    // A second evaluation asks again and sees the host's new value.
    P1 = 5;
    EXPECT_DOUBLE_EQ(static_cast<double>(P.CalcValue()), 5 + 100 + 25);
    EXPECT_EQ(Asked.size(), 4u);
}

TEST_F(ParserTest, ReportsErrorsWithReasonAndPosition) {
    const char* Cases[][2] = {
        {"", "empty expression"},
        {"   ", "empty expression"},
        {"2*q", "unknown identifier 'q' at position 3"},
        {"x + 1 + y", "unknown identifier 'x' at position 1"},
        {"1+", "unexpected end of expression at position 3"},
        {"(1+2)*", "unexpected end of expression at position 7"},
        {"1+*2", "unexpected '*' at position 3"},
        {"--2", "unexpected '-' at position 2"},
        {"*2", "unexpected '*' at position 1"},
        {"2 3", "missing operator before '3' at position 3"},
        {"2(3)", "missing operator before '(' at position 2"},
        {"pi pi", "missing operator before 'pi' at position 4"},
        {"((1)+(2)", "missing ')' for '(' at position 1"},
        {"1+2)", "unmatched ')' at position 4"},
        {"()", "unexpected ')' at position 2"},
        {"sin(1,2)", "too many arguments for 'sin' at position 1"},
        {"3*MIN(3)", "too few arguments for 'MIN' at position 3"},
        {"max()", "unexpected ')' at position 5"},
        {"max(1,,2)", "unexpected ',' at position 7"},
        {"1,2", "unexpected ',' at position 2"},
        {"(1,2)", "unexpected ',' at position 3"},
        {"log(100)", "unknown function 'log' at position 1"},
        {"pi(2)", "unknown function 'pi' at position 1"},
        {"2x", "invalid number '2x' at position 1"},
        {"1+2e", "invalid number '2e' at position 3"},
        {"3e+x", "invalid number '3e+x' at position 1"},
        {"1.2.3", "invalid number '1.2.3' at position 1"},
        {"1e999999", "number '1e999999' out of range at position 1"},
        {"2*1e-999999", "number '1e-999999' out of range at position 3"},
        {"p1=3", "invalid character '=' at position 3"},
        {"1\a", "invalid character U+0007 at position 2"},
        {"Δp+ü+€", "invalid character '€' at position 6"},
        {"1+\xF0\x9D\x91\xA5", "invalid character U+1D465 at position 3"},
        {"1/0", "division by zero"},
        {"ln(0)", "division by zero"},
        {"1/(1/0)", "division by zero"},
        {"sqrt(-1)", "undefined result"},
        {"(-8)^(1/3)", "undefined result"},
        {"exp(1000)", "result out of range"},
        {"1e308*10/100", "result out of range"}, // an intermediate overflow, though the end is finite
    };
    for (const auto& C : Cases)
        EXPECT_EQ(ErrorOf(QString::fromUtf8(C[0])), QString::fromUtf8(C[1])) << C[0];
}

TEST_F(ParserTest, VariableErrorsComeAfterSyntaxAndNameTheIdentifier) {
    int Calls = 0;
    TQXParser P(&Owner);
    P.SetOnCheckVariable([&](QObject*, const QString& Name, Extended& Value, bool& Found) {
        ++Calls;
        Found = Name == QStringLiteral("nan") || Name == QStringLiteral("huge");
        // 1e400 is fine as extended, not as double
        Value = Name == QStringLiteral("nan") ? std::numeric_limits<Extended>::quiet_NaN() : 1e400L;
    });
    const struct {
        const char* Text;
        const char* Message;
        int Calls;
    } Cases[] = {
        {"q+", "unexpected end of expression at position 3", 0},
        {"2*nan", "identifier 'nan' has no finite value at position 3", 1},
        {"huge/2", "identifier 'huge' has no finite value at position 1", 1},
    };
    for (const auto& C : Cases) {
        Calls = 0;
        P.SetExpression(QString::fromUtf8(C.Text));
        EXPECT_EQ(MessageOf(P), QString::fromUtf8(C.Message)) << C.Text;
        EXPECT_EQ(Calls, C.Calls) << C.Text;
    }
    // No event at all: every identifier is unknown.
    TQXParser NoEvent;
    NoEvent.SetExpression(QStringLiteral("1 + T_amb"));
    EXPECT_EQ(MessageOf(NoEvent), QStringLiteral("unknown identifier 'T_amb' at position 5"));
}

TEST_F(ParserTest, CapsLengthAndNesting) {
    EXPECT_EQ(ErrorOf(QStringLiteral("1+").repeated(50000) + QStringLiteral("1")),
              QStringLiteral("expression longer than 1000 characters"));
    const auto Nested = [](int Depth) {
        return QStringLiteral("(").repeated(Depth) + QStringLiteral("1") +
               QStringLiteral(")").repeated(Depth);
    };
    EXPECT_DOUBLE_EQ(static_cast<double>(Calc(Nested(100))), 1.0);
    EXPECT_EQ(ErrorOf(Nested(101)),
              QStringLiteral("parentheses nested deeper than 100 levels at position 101"));
    EXPECT_EQ(ErrorOf(QStringLiteral("sin(").repeated(150) + QStringLiteral("1") +
                      QStringLiteral(")").repeated(150)),
              QStringLiteral("parentheses nested deeper than 100 levels at position 404"));
    // A long plain number is still a number, and a long name is quoted shortened.
    EXPECT_EQ(Calc(QStringLiteral("0.") + QStringLiteral("0").repeated(3000) + QStringLiteral("1")),
              1e-3001L);
    EXPECT_EQ(ErrorOf(QStringLiteral("a").repeated(500)), QStringLiteral("unknown identifier '") +
                                                              QStringLiteral("a").repeated(40) +
                                                              QStringLiteral("...' at position 1"));
}

TEST_F(ParserTest, HostileInputGivesValueOrError) {
    // Characters, including ones that are never valid, and fragments that make real expressions.
    static const char16_t Alphabet[] = u"0123456789+-*/^()(),;.eEpsinmaxl_ \t\aé€Δ#=<>?:\"'\\\x00\xd835";
    static const char* const Fragments[] = {"1",  "2.5", "x",    "y",    "pi",   "1e3",  ".5",   "(",
                                            "(",  ")",   ")",    "+",    "-",    "*",    "/",    "^",
                                            ",",  ";",   "sin(", "max(", "min(", "abs(", "ln(",  "sqrt(",
                                            "  ", "e",   "E5",   "0",    "1,5",  "MAX(", "exp(", "Δp"};
    std::mt19937 Rng(12345);
    TQXParser P(&Owner);
    P.SetDescription(QStringLiteral("fuzz"));
    P.SetOnCheckVariable([](QObject*, const QString& Name, Extended& Value, bool& Found) {
        Found = Name != QStringLiteral("y");
        Value = Name.size();
    });
    int Values = 0, Errors = 0;
    const auto Start = std::chrono::steady_clock::now();
    for (int I = 0; I < 40000; ++I) {
        QString Text;
        for (auto K = Rng() % (I % 2 ? 14 : 40); K > 0; --K)
            Text += I % 2 ? QString::fromUtf8(Fragments[Rng() % std::size(Fragments)])
                          : QString(QChar(Alphabet[Rng() % (std::size(Alphabet) - 1)]));
        if (I % 3 == 0) NumInpFormatSettings.DecimalSeparator = QLatin1Char(I % 5 ? '.' : ',');
        P.SetExpression(Text);
        try {
            EXPECT_TRUE(std::isfinite(P.CalcValue())) << Text.toStdString();
            ++Values;
        } catch (const EQXParserError& E) {
            EXPECT_TRUE(E.Message().startsWith(QStringLiteral("fuzz: "))) << Text.toStdString();
            // Every error the engine could raise is caught by our own checks first, with a position.
            EXPECT_FALSE(E.Message().contains(QStringLiteral("invalid expression")))
                << Text.toStdString() << " -> " << E.what();
            ++Errors;
        }
    }
    // Both outcomes must occur in numbers, or the loop tested nothing.
    EXPECT_GT(Values, 1000);
    EXPECT_GT(Errors, 1000);
    EXPECT_LT(std::chrono::steady_clock::now() - Start, std::chrono::seconds(60));
}

TEST_F(ParserTest, CallersFloatingPointFlagsAreKept) {
    std::feclearexcept(FE_ALL_EXCEPT);
    std::feraiseexcept(FE_DIVBYZERO);
    // A flag raised before the call is no error of this expression, and is still set afterwards.
    EXPECT_DOUBLE_EQ(CalcD("1+1*2"), 3.0);
    EXPECT_TRUE(std::fetestexcept(FE_DIVBYZERO));
    std::feclearexcept(FE_ALL_EXCEPT);
    EXPECT_EQ(ErrorOf(QStringLiteral("1/0")), QStringLiteral("division by zero"));
    EXPECT_FALSE(std::fetestexcept(FE_DIVBYZERO));
}

} // namespace

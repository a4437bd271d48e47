// The numeric edit as a Qt widget: properties and signals, SetRange, visible refusals, exact
// values on focus traversal, expression input without variables, translatable messages.
#include <qxnum/numtext.h>
#include <qxnum/units.h>
#include <qxnum/widgets/numedit.h>

#include "dialogrecorder.h"
#include "editform.h"
#include "proptest.h"
#include "widgettest.h"

#include <QApplication>
#include <QClipboard>
#include <QMetaEnum>
#include <QMetaProperty>
#include <QSignalSpy>
#include <QTest>
#include <QToolTip>
#include <QTranslator>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <new>

using namespace qxnum;
using qxnum::test::DialogRecorder;

namespace {

using TForm = test::TEditForm;

bool BitIdentical(Extended A, Extended B) {
    return std::memcmp(&A, &B, 10) == 0; // the 80 value bits; the padding is not part of it
}

} // namespace

// ---- properties and signals ----------------------------------------------------------------------------

TEST(NumEditQt, PropertiesByPublishedNameActLikeTheSetters) {
    TNumEdit E;
    const QMetaObject* Meta = E.metaObject();
    struct Case {
        const char* Name;
        QVariant Value;
        std::function<bool(TNumEdit&)> Effect;
    };
    const Case Cases[] = {
        {"Max", 500.0, [](TNumEdit& X) { return X.Max() == 500.0L; }},
        {"Min", -20.0, [](TNumEdit& X) { return X.Min() == -20.0L; }},
        {"Value", 12.5,
         [](TNumEdit& X) { return X.GetFValue() == 12.5L && X.text() == QStringLiteral("12.5"); }},
        {"Digits", 8, [](TNumEdit& X) { return X.Digits() == 8 && X.MaxTextLength() == 8 + 3 + 2; }},
        {"DataType", QVariant::fromValue(dtInteger),
         [](TNumEdit& X) { return X.DataType() == dtInteger && X.Decimals() == 0; }},
        {"DataType", QVariant::fromValue(dtExtended), [](TNumEdit& X) { return X.DataType() == dtExtended; }},
        {"ParType", QVariant::fromValue(ptPress),
         [](TNumEdit& X) { return X.NumericType() == ntParType && X.Decimals() == 5; }},
        {"UnitSystem", QVariant::fromValue(usImperial),
         [](TNumEdit& X) { return X.UnitSystem() == usImperial; }},
        {"CustomFormat", QStringLiteral("0.0"),
         [](TNumEdit& X) { return X.text() == QStringLiteral("0.0"); }},
        {"CustomScale", 2.0, [](TNumEdit& X) { return X.CustomScale() == 2.0L; }},
        {"ScaleOffset", 1.5, [](TNumEdit& X) { return X.ScaleOffset() == 1.5L; }},
        {"NumericType", QVariant::fromValue(ntFixed),
         [](TNumEdit& X) { return X.NumericType() == ntFixed && X.ParType() == ptNone; }},
        {"Decimals", 3, [](TNumEdit& X) { return X.Decimals() == 3; }},
        {"ScaledValue", 4.0, [](TNumEdit& X) { return X.GetFValue() == 5.0L; }}, // (4 - 1.5) * 2
        {"TrimZeroes", true, [](TNumEdit& X) { return X.TrimZeroes(); }},
        {"AllowEmpty", true, [](TNumEdit& X) { return X.AllowEmpty(); }},
        {"ClearIsNaN", true, [](TNumEdit& X) { return X.ClearIsNaN(); }},
        {"NegCol", QColor(Qt::red), [](TNumEdit& X) { return X.NegCol() == QColor(Qt::red); }},
        {"Validate", false, [](TNumEdit& X) { return !X.Validate(); }},
        {"ReadOnlyFontColor", QColor(Qt::green),
         [](TNumEdit& X) { return X.ReadOnlyFontColor() == Qt::green; }},
        {"Alignment", QVariant::fromValue(Qt::Alignment(Qt::AlignHCenter)),
         [](TNumEdit& X) { return X.Alignment() == Qt::AlignHCenter; }},
        {"TabOnEnterKey", true, [](TNumEdit& X) { return X.TabOnEnterKey(); }},
        {"InhibitExprCheckVar", true, [](TNumEdit& X) { return X.InhibitExprCheckVar(); }},
        {"ExpressionInput", true, [](TNumEdit& X) { return X.ExpressionInput(); }},
        {"CopyEnabled", false, [](TNumEdit& X) { return !X.CopyEnabled(); }},
        {"CopyVisible", false, [](TNumEdit& X) { return !X.CopyVisible(); }},
    };
    for (const Case& C : Cases) {
        SCOPED_TRACE(C.Name);
        test::SetPublished(E, C.Name, C.Value);
        EXPECT_TRUE(C.Effect(E));
    }
    // Enumerations show their names.
    const QMetaProperty ParType = Meta->property(Meta->indexOfProperty("ParType"));
    ASSERT_TRUE(ParType.isEnumType());
    EXPECT_STREQ(ParType.enumerator().valueToKey(ptTemp), "ptTemp");
}

TEST(NumEditQt, ValueChangedOncePerChangeOfTheHeldValue) {
    TForm F;
    TNumEdit& E = *F.E1;
    QSignalSpy Spy(&E, &TCustomNumEdit::valueChanged);
    DialogRecorder Rec;
    struct Step {
        const char* Name;
        std::function<void()> Act;
        int Signals;
        double Reported; // the value of the last signal
    };
    const Step Steps[] = {
        {"SetRange pulls nothing", [&] { E.SetRange(0, 100); }, 0, 0},
        {"SetValue", [&] { E.SetValue(5); }, 1, 5},
        {"same value", [&] { E.SetValue(5); }, 0, 0},
        {"refused value", [&] { E.SetValue(500); }, 0, 0},
        {"NaN", [&] { E.SetValue(TCustomNumEdit::NaN()); }, 1, std::nan("")},
        {"NaN again", [&] { E.SetValue(TCustomNumEdit::NaN()); }, 0, 0},
        {"from NaN", [&] { E.SetValue(50); }, 1, 50},
        {"limit pulls the value", [&] { E.SetMax(40); }, 1, 40},
        {"range pulls the value", [&] { E.SetRange(45, 60); }, 1, 45},
        {"scaled value", [&] { E.SetScaledValue(46); }, 1, 46},
        {"Clear", [&] { E.Clear(); }, 1, 0},
        {"typed and taken",
         [&] {
             F.Enter();
             E.selectAll();
             QTest::keyClicks(&E, QStringLiteral("55"));
             F.Leave();
         },
         1, 55},
        {"traversal without typing",
         [&] {
             F.Enter();
             F.Leave();
         },
         0, 0},
        {"typed, refused",
         [&] {
             F.Enter();
             E.selectAll();
             QTest::keyClicks(&E, QStringLiteral("99"));
             F.Leave();
         },
         0, 0},
    };
    ASSERT_TRUE(F.Activate());
    for (const Step& S : Steps) {
        SCOPED_TRACE(S.Name);
        Spy.clear();
        S.Act();
        ASSERT_EQ(Spy.count(), S.Signals);
        if (S.Signals == 0) continue;
        const double Got = Spy.last().at(0).toDouble();
        if (std::isnan(S.Reported))
            EXPECT_TRUE(std::isnan(Got));
        else
            EXPECT_EQ(Got, S.Reported);
    }
    EXPECT_EQ(Rec.Count(), 2); // the two refused values
}

TEST(NumEditQt, UnitSystemAndEditingFinishedSignals) {
    TForm F;
    TNumEdit& E = *F.E1;
    E.SetRange(0, 100);
    int Hook = 0;
    E.SetOnUnitSystemChange([&](QObject*) { ++Hook; });
    QSignalSpy Units(&E, &TCustomNumEdit::unitSystemChanged);
    E.SetUnitSystem(usImperial);
    E.SetUnitSystem(usImperial);
    EXPECT_EQ(Hook, 2); // the hook fires on every set, the signal on a change only
    ASSERT_EQ(Units.count(), 1);
    EXPECT_EQ(Units.at(0).at(0).value<TUnitSystem>(), usImperial);

    QSignalSpy Finished(&E, &TCustomNumEdit::valueEditingFinished);
    ASSERT_TRUE(F.Activate());
    DialogRecorder Rec;
    const auto TypeAnd = [&](const char* Text, const std::function<void()>& Then) {
        F.Enter();
        E.selectAll();
        QTest::keyClicks(&E, QString::fromLatin1(Text));
        Finished.clear();
        Then();
        return Finished.count();
    };
    EXPECT_EQ(TypeAnd("7", [&] { F.Leave(); }), 1);
    EXPECT_EQ(TypeAnd("8.50", [&] { QTest::keyClick(&E, Qt::Key_Return); }), 1);
    EXPECT_EQ(E.text(), QStringLiteral("8.5")); // Enter takes the text
    EXPECT_TRUE(E.hasFocus());
    EXPECT_EQ(TypeAnd("700", [&] { QTest::keyClick(&E, Qt::Key_Return); }), 0);
    EXPECT_EQ(TypeAnd("700", [&] { F.Leave(); }), 0);
    EXPECT_EQ(Rec.Count(), 2);
    EXPECT_EQ(E.GetFValue(), 8.5L);
}

// ---- SetRange ------------------------------------------------------------------------------------------

TEST(NumEditQt, SetRangeGivesTheSameLimitsWhateverCameBefore) {
    struct Case {
        const char* Name;
        Extended Lo, Hi, Value;
        TDataType Type;
        Extended ExpectLo, ExpectHi, ExpectValue;
    };
    const Case Cases[] = {
        {"above the old range", 180, 400, 300, dtExtended, 180, 400, 300},
        {"value pulled up", 180, 400, 20, dtExtended, 180, 400, 180},
        {"value pulled down", 180, 400, 900, dtExtended, 180, 400, 400},
        {"crossed: only the minimum", 50, 10, 30, dtExtended, 50, 50, 50},
        {"clipped by the data type", -5, 300, 10, dtByte, 0, 255, 10},
    };
    // Earlier limits below, around and above the new pair.
    const std::pair<Extended, Extended> Before[] = {{0, 0}, {-1000, 1000}, {500, 1000}, {-10, -5}};
    for (const Case& C : Cases)
        for (const auto& [OldLo, OldHi] : Before) {
            SCOPED_TRACE(testing::Message() << C.Name << " after " << double(OldLo) << ".." << double(OldHi));
            TNumEdit E;
            E.SetDataType(C.Type);
            E.SetValidate(false); // any value may be set; SetRange still pulls it inside
            E.SetRange(OldLo, OldHi);
            E.SetValue(C.Value);
            E.SetRange(C.Lo, C.Hi);
            EXPECT_EQ(E.Min(), C.ExpectLo);
            EXPECT_EQ(E.Max(), C.ExpectHi);
            EXPECT_EQ(E.GetFValue(), C.ExpectValue);
            EXPECT_EQ(E.text(), E.GetValueString(C.ExpectValue));
        }
}

// ---- refused input -------------------------------------------------------------------------------------

TEST(NumEditQt, RefusedInputShowsItsRuleUntilTheNextAcceptedKey) {
    TForm F;
    TNumEdit& E = *F.E1;
    E.SetNumericType(ntFixed);
    ASSERT_TRUE(F.Activate());
    struct Case {
        const char* Name;
        const char* Start;
        std::function<void()> Act;
        const char* Rule;
    };
    const auto Paste = [&](const char* Clip) {
        QGuiApplication::clipboard()->setText(QString::fromLatin1(Clip));
        QTest::keyClick(&E, Qt::Key_V, Qt::ControlModifier);
    };
    const Case Cases[] = {
        {"comma", "12", [&] { QTest::keyClick(&E, Qt::Key_Comma); }, "The decimal separator here is \".\""},
        {"letter", "12", [&] { QTest::keyClick(&E, Qt::Key_X); }, "Letters are not allowed here"},
        {"second separator", "1.2", [&] { QTest::keyClick(&E, Qt::Key_Period); },
         "Only one decimal separator, not in the exponent"},
        {"third decimal", "1.25", [&] { QTest::keyClick(&E, Qt::Key_7); }, "At most 2 decimals here"},
        {"paste 12,5", "", [&] { Paste("12,5"); }, "The decimal separator here is \".\""},
    };
    for (const Case& C : Cases) {
        SCOPED_TRACE(C.Name);
        E.setText(QString::fromLatin1(C.Start));
        E.end(false);
        C.Act();
        EXPECT_EQ(E.text(), QString::fromLatin1(C.Start)); // refused, not dropped silently
        EXPECT_EQ(E.LastRefusal(), QString::fromLatin1(C.Rule));
        EXPECT_TRUE(test::WaitFor([] { return QToolTip::isVisible(); }));
        EXPECT_EQ(QToolTip::text(), QString::fromLatin1(C.Rule));
        E.setText(QStringLiteral("1"));
        E.end(false);
        QTest::keyClick(&E, Qt::Key_0);
        EXPECT_EQ(E.text(), QStringLiteral("10"));
        EXPECT_TRUE(E.LastRefusal().isEmpty());
        EXPECT_TRUE(test::WaitFor([] { return !QToolTip::isVisible(); }));
    }
}

// ---- exact values on traversal -------------------------------------------------------------------------

TEST(NumEditQt, FocusTraversalKeepsEveryValueBitIdentical) {
    TForm F;
    TNumEdit& E = *F.E1;
    E.SetRange(-1e30L, 1e30L);
    ASSERT_TRUE(F.Activate());
    const Extended Values[] = {5.8e-8L, 1.0L / 3, -273.15L + 1e-12L, 101325.0000001L, 7e20L, -2.5e-25L};
    for (int P = 0; P < ParTypeCount; ++P)
        for (const Extended V : Values) {
            SCOPED_TRACE(testing::Message()
                         << GetEnumName(static_cast<TParType>(P)).toStdString() << " " << double(V));
            E.SetParType(static_cast<TParType>(P));
            E.SetUnitSystem(usSI);
            E.SetValue(V);
            ASSERT_TRUE(BitIdentical(E.GetFValue(), V));
            for (const TUnitSystem U : {usImperial, usSI, usImperial}) {
                E.SetUnitSystem(U);
                F.Enter();
                F.Leave();
                ASSERT_TRUE(BitIdentical(E.GetFValue(), V)) << E.text().toStdString();
            }
            E.SetUnitSystem(usSI);
        }
    // Edited text is evaluated; a text typed back to the formatted one leaves the value alone.
    E.SetParType(ptNone);
    E.SetNumericType(ntGeneral);
    const Extended Third = 1.0L / 3;
    E.SetValue(Third);
    F.Enter();
    QTest::keyClick(&E, Qt::Key_End);
    QTest::keyClick(&E, Qt::Key_1);
    const QString Typed = E.text();
    EXPECT_EQ(Typed, QStringLiteral("0.3333333333331"));
    F.Leave();
    EXPECT_EQ(E.GetFValue(), StrToPar(Typed, ntGeneral, ptNone, usSI));
    E.SetValue(Third);
    F.Enter();
    QTest::keyClick(&E, Qt::Key_End);
    QTest::keyClick(&E, Qt::Key_Backspace);
    QTest::keyClick(&E, Qt::Key_3);
    F.Leave();
    EXPECT_TRUE(BitIdentical(E.GetFValue(), Third));
}

// ---- expression input ----------------------------------------------------------------------------------

TEST(NumEditQt, ExpressionInputCalculatesWithoutVariables) {
    TForm F;
    TNumEdit& E = *F.E1;
    E.SetRange(-1e6L, 1e6L);
    E.SetExpressionInput(true);
    E.SetNumericType(ntNumber);
    EXPECT_FALSE(E.ExprPathActive()); // the variable path stays the callback's
    EXPECT_TRUE(E.IsAcceptableEdit(QString(), QStringLiteral("sqrt(16)*2")));
    struct Case {
        const char* Text;
        bool Taken;
        Extended Value;
        const char* Shown;
    };
    const Case Cases[] = {
        {"sqrt(16)*2", true, 8, "8.00"},
        {"1,234.50", true, 1234.5L, "1,234.50"}, // a formatted number does not calculate
        {"10-2.5", true, 7.5L, "7.50"},
        {"2e6", false, 7.5L, nullptr}, // out of range
        {"2*q", false, 7.5L, nullptr}, // no variables: the parser's error
    };
    DialogRecorder Rec;
    for (const Case& C : Cases) {
        SCOPED_TRACE(C.Text);
        E.setText(QString::fromLatin1(C.Text));
        EXPECT_EQ(E.UpdateValue(false), C.Taken);
        EXPECT_EQ(E.GetFValue(), C.Value);
        if (C.Shown) {
            EXPECT_EQ(E.text(), QString::fromLatin1(C.Shown));
        }
    }
    ASSERT_EQ(Rec.Count(), 2);
    EXPECT_TRUE(Rec.Messages()[1].startsWith(QStringLiteral("'2*q' is no valid numeric input.\n")));
    EXPECT_TRUE(Rec.Messages()[1].contains(QStringLiteral("'q'")));
}

// ---- errors --------------------------------------------------------------------------------------------

TEST(NumEditQt, OnlyTheLibrarysErrorsBecomeMessagesAndTheyAreTranslatable) {
    TNumEdit E;
    E.SetMax(10);
    E.SetOnSetNumValue([](QObject*, const QString& Text, Extended&) {
        if (Text == QLatin1String("6")) throw std::bad_alloc();
    });
    DialogRecorder Rec;
    E.setText(QStringLiteral("6"));
    EXPECT_THROW(E.UpdateValue(false), std::bad_alloc);
    EXPECT_EQ(Rec.Count(), 0);

    struct TGerman : QTranslator {
        QString translate(const char* Context, const char* Source, const char*, int) const override {
            if (qstrcmp(Context, "TCustomNumEdit") != 0) return {};
            if (qstrcmp(Source, "Value of %s (=%s), form %s must be between %s and %s") == 0)
                return QStringLiteral("Wert von %s (=%s) in %s muss zwischen %s und %s liegen");
            if (qstrcmp(Source, "(no name)") == 0) return QStringLiteral("(ohne Namen)");
            return {};
        }
        bool isEmpty() const override { return false; }
    } German;
    QCoreApplication::installTranslator(&German);
    E.setObjectName(QStringLiteral("p"));
    E.SetValue(20);
    QCoreApplication::removeTranslator(&German);
    E.SetValue(30);
    EXPECT_EQ(Rec.Messages(),
              (QStringList{QStringLiteral("Wert von p (=20) in (ohne Namen) muss zwischen 0 und 10 liegen"),
                           QStringLiteral("Value of p (=30), form (no name) must be between 0 and 10")}));
}

// The numeric edit: coupled properties, value and text, range checks, evaluation of typed text and
// expressions, typed read-outs, the keystroke filter and the focus cycle.
#include <qxnum/numconv.h>
#include <qxnum/registry.h>
#include <qxnum/widgets/numedit.h>

#include "dialogrecorder.h"

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QDialog>
#include <QDialogButtonBox>
#include <QElapsedTimer>
#include <QMenu>
#include <QPushButton>
#include <QRandomGenerator>
#include <QTest>
#include <QVBoxLayout>
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <iterator>
#include <memory>

using namespace qxnum;
using qxnum::test::DialogRecorder;

namespace {

bool WaitFor(const std::function<bool()>& Pred, int Ms = 3000) {
    QElapsedTimer T;
    T.start();
    while (!Pred()) {
        if (T.elapsed() > Ms) return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    }
    return true;
}

// A shown, active window with two edits and a button; the first edit has the focus.
struct TForm {
    QWidget W;
    TNumEdit* E1;
    TNumEdit* E2;
    QPushButton* Button;
    TForm() {
        W.setObjectName(QStringLiteral("Form1"));
        auto* L = new QVBoxLayout(&W);
        E1 = new TNumEdit(&W);
        E1->setObjectName(QStringLiteral("p1"));
        E2 = new TNumEdit(&W);
        E2->setObjectName(QStringLiteral("p2"));
        Button = new QPushButton(QStringLiteral("Go"), &W);
        L->addWidget(E1);
        L->addWidget(E2);
        L->addWidget(Button);
        for (TNumEdit* E : {E1, E2}) {
            E->SetMax(1000);
            E->SetMin(-1000);
        }
    }
    bool Activate(QWidget* Focus) {
        W.show();
        W.activateWindow();
        if (!QTest::qWaitForWindowActive(&W)) return false;
        Focus->setFocus(Qt::OtherFocusReason);
        return WaitFor([Focus] { return Focus->hasFocus(); });
    }
};

constexpr Extended Psi = 6894.76L;

} // namespace

// ---- defaults and coupled properties -------------------------------------------------------------

TEST(NumEditProperties, NewEditShowsZeroAndRefusesOtherValuesUntilLimitsAreSet) {
    TNumEdit E;
    E.setObjectName(QStringLiteral("e"));
    EXPECT_EQ(E.width(), 85);
    EXPECT_EQ(E.text(), QStringLiteral("0"));
    EXPECT_EQ(E.MaxTextLength(), 12 + 3 + 2); // general extended text leaves room for an exponent
    DialogRecorder Rec;
    E.SetValue(1);
    EXPECT_EQ(Rec.Messages(),
              QStringList{QStringLiteral("Value of e (=1), form (no name) must be between 0 and 0")});
    EXPECT_EQ(E.GetFValue(), 0.0L);
}

TEST(NumEditProperties, DecimalsFollowDataTypeAndPicture) {
    TNumEdit E;
    E.SetDataType(dtInteger);
    E.SetDecimals(5);
    EXPECT_EQ(E.Decimals(), 0);
    E.SetDataType(dtDouble);
    E.SetDecimals(5);
    EXPECT_EQ(E.Decimals(), 5);
    E.SetDataType(dtExtended);
    E.SetParType(ptPress); // "0.000##" in SI
    EXPECT_EQ(E.Decimals(), 5);
    E.SetUnitSystem(usImperial); // "0.00#"
    EXPECT_EQ(E.Decimals(), 3);
    E.SetCustomFormat(QStringLiteral("0.0"));
    EXPECT_EQ(E.Decimals(), 1);
}

TEST(NumEditProperties, ParTypeNumericTypeAndDataTypeCorrectEachOther) {
    TNumEdit E;
    int ParTypeChanges = 0;
    E.SetOnParTypeChange([&](QObject* Sender) {
        EXPECT_EQ(Sender, &E);
        ++ParTypeChanges;
    });
    E.SetDataType(dtDouble);
    E.SetParType(ptPress);
    EXPECT_EQ(E.NumericType(), ntParType);
    EXPECT_EQ(E.DataType(), dtExtended);
    E.SetParType(ptPress);
    EXPECT_EQ(ParTypeChanges, 1);

    E.SetDataType(dtDouble);
    EXPECT_EQ(E.ParType(), ptNone);
    EXPECT_EQ(ParTypeChanges, 2);

    E.SetParType(ptTemp);
    E.SetNumericType(ntFixed);
    EXPECT_EQ(E.NumericType(), ntFixed);
    EXPECT_EQ(E.ParType(), ptNone);

    E.SetDataType(dtWord);
    EXPECT_EQ(E.NumericType(), ntGeneral);
    E.SetNumericType(ntFixed);
    EXPECT_EQ(E.NumericType(), ntGeneral);
}

TEST(NumEditProperties, DataTypeKeepsLimitsInsideItsRange) {
    TNumEdit E;
    E.SetValidate(false);
    E.SetMax(300);
    E.SetMin(-5);
    E.SetValue(1000);
    E.SetDataType(dtByte);
    EXPECT_EQ(E.Min(), 0.0L);
    EXPECT_EQ(E.Max(), 255.0L);
    EXPECT_EQ(E.GetFValue(), 0.0L);
    EXPECT_EQ(E.text(), QStringLiteral("0"));
}

TEST(NumEditProperties, LimitsThatCrossAreReplacedByTheOtherLimit) {
    TNumEdit E;
    E.SetMax(5);
    E.SetValue(2);
    E.SetMin(10);
    EXPECT_EQ(E.Min(), 5.0L);
    EXPECT_EQ(E.GetFValue(), 5.0L);
    EXPECT_EQ(E.text(), QStringLiteral("5"));

    E.SetMin(1);
    E.SetMax(0);
    EXPECT_EQ(E.Max(), 1.0L);
    EXPECT_EQ(E.GetFValue(), 1.0L);
}

TEST(NumEditProperties, CustomScaleAtOrBelowTheThresholdIsIgnored) {
    TNumEdit E;
    E.SetCustomScale(1e-14L);
    EXPECT_EQ(E.CustomScale(), 1.0L);
    E.SetCustomScale(-2);
    EXPECT_EQ(E.CustomScale(), 1.0L);
    E.SetCustomScale(2e-14L);
    EXPECT_EQ(E.CustomScale(), 2e-14L);
}

TEST(NumEditProperties, ScaledValueConvertsThroughTheUnitTable) {
    TNumEdit E;
    E.SetParType(ptPress);
    E.SetUnitSystem(usImperial);
    E.SetScaledValue(21);
    EXPECT_NEAR(static_cast<double>(E.GetFValue()), static_cast<double>(21 * Psi), 1e-9);
    EXPECT_NEAR(static_cast<double>(E.ScaledValue()), 21.0, 1e-12);
    EXPECT_EQ(E.text(), E.GetValueString(E.GetFValue()));
    EXPECT_NEAR(static_cast<double>(E.Scale()), static_cast<double>(Psi), 1e-12);
}

TEST(NumEditProperties, UnitSystemAlwaysNotifiesAndReformatsUnlessExpressionsAreOn) {
    TNumEdit E;
    E.SetValidate(false);
    E.SetParType(ptPress);
    E.SetValue(100000); // 1 bar
    int Notified = 0;
    E.SetOnUnitSystemChange([&](QObject*) { ++Notified; });
    E.SetUnitSystem(usSI);
    EXPECT_EQ(Notified, 1);
    const QString SIText = E.text();
    E.SetUnitSystem(usImperial);
    EXPECT_NE(E.text(), SIText);

    E.SetOnExprCheckVariable([](QObject*, const QString&, Extended&, bool&) {});
    const QString Before = E.text();
    E.SetUnitSystem(usSI);
    EXPECT_EQ(E.text(), Before);
    EXPECT_EQ(Notified, 3);
}

TEST(NumEditProperties, SwitchingValidateOnPullsAnOutsideValueToMin) {
    TNumEdit E;
    E.SetValidate(false);
    E.SetMax(10);
    E.SetMin(2);
    E.SetValue(50);
    EXPECT_EQ(E.GetFValue(), 50.0L);
    E.SetValidate(true);
    EXPECT_EQ(E.GetFValue(), 2.0L);
    EXPECT_EQ(E.text(), QStringLiteral("2"));
}

// ---- NaN -----------------------------------------------------------------------------------------------

TEST(NumEditNaN, NaNIsAlwaysAcceptedAndEmptiesTheText) {
    TNumEdit E; // Min = Max = 0: any other number would be refused
    E.SetValue(TCustomNumEdit::NaN());
    EXPECT_TRUE(std::isnan(E.GetFValue()));
    EXPECT_TRUE(std::signbit(E.GetFValue()));
    EXPECT_EQ(E.text(), QString());
    // From "no value" any value is taken without a range check.
    E.SetValue(7);
    EXPECT_EQ(E.GetFValue(), 7.0L);
    // NaN survives limits and data type changes.
    E.SetValue(TCustomNumEdit::NaN());
    E.SetMin(-1);
    E.SetMax(1);
    E.SetDataType(dtDouble);
    EXPECT_TRUE(std::isnan(E.GetFValue()));
}

TEST(NumEditNaN, ClearAndEmptyTextFollowClearIsNaNAndAllowEmpty) {
    struct Case {
        bool ClearIsNaN, AllowEmpty;
        bool ExpectNaN;
        const char* ClearedText;
        const char* EmptyTextAfterUpdate;
    };
    const Case Cases[] = {
        {false, false, false, "0", "0"},
        {true, false, true, "", "0"},
        {false, true, false, "", ""},
        {true, true, true, "", ""},
    };
    for (const Case& C : Cases) {
        SCOPED_TRACE(testing::Message() << C.ClearIsNaN << C.AllowEmpty);
        TNumEdit E;
        E.SetMax(100);
        E.SetValue(5);
        E.SetClearIsNaN(C.ClearIsNaN);
        E.SetAllowEmpty(C.AllowEmpty);
        E.Clear();
        EXPECT_EQ(std::isnan(E.GetFValue()), C.ExpectNaN);
        EXPECT_EQ(E.text(), QString::fromLatin1(C.ClearedText));

        E.SetValue(5);
        E.setText(QString());
        EXPECT_TRUE(E.UpdateValue(false));
        EXPECT_EQ(std::isnan(E.GetFValue()), C.ClearIsNaN && C.AllowEmpty);
        if (!std::isnan(E.GetFValue())) {
            EXPECT_EQ(E.GetFValue(), 0.0L);
        }
        EXPECT_EQ(E.text(), QString::fromLatin1(C.EmptyTextAfterUpdate));
    }
}

// ---- evaluating the text ---------------------------------------------------------------------------------

TEST(NumEditUpdate, TextIsFilteredConvertedAndReformatted) {
    struct Case {
        TNumericType Numeric;
        TParType Par;
        TUnitSystem Units;
        Extended CustomScale, Offset;
        const char* Text;
        Extended Expected;
    };
    const Case Cases[] = {
        {ntGeneral, ptNone, usSI, 1, 0, "12.5", 12.5L},
        {ntGeneral, ptNone, usSI, 1, 0, " 1x2y.5 ", 12.5L},
        {ntParType, ptPress, usSI, 1, 0, "2.5", 250000.0L},
        {ntParType, ptPress, usImperial, 1, 0, "21", 21 * Psi},
        // display = base / scale + offset, so base = (display - offset) * scale
        {ntGeneral, ptNone, usSI, 2, 1, "6", 10.0L},
        {ntCurrency, ptNone, usSI, 1, 0, "(1,234.50)", -1234.5L},
        {ntCurrency, ptNone, usSI, 1, 0, "$1,234.50-", -1234.5L},
        {ntCurrency, ptNone, usSI, 1, 0, "$2.25", 2.25L},
    };
    for (const Case& C : Cases) {
        SCOPED_TRACE(C.Text);
        TNumEdit E;
        E.SetMax(1e9L);
        E.SetMin(-1e9L);
        E.SetDigits(15);
        E.SetNumericType(C.Numeric);
        E.SetParType(C.Par);
        E.SetUnitSystem(C.Units);
        E.SetCustomScale(C.CustomScale);
        E.SetScaleOffset(C.Offset);
        E.setText(QString::fromLatin1(C.Text));
        EXPECT_TRUE(E.UpdateValue(false));
        EXPECT_NEAR(static_cast<double>(E.GetFValue()), static_cast<double>(C.Expected),
                    1e-12 * std::fabs(static_cast<double>(C.Expected)));
        EXPECT_EQ(E.text(), E.GetValueString(E.GetFValue()));
        EXPECT_TRUE(E.IsValid());
    }
}

TEST(NumEditUpdate, EventsSeeTheTextAndTheDisplayValue) {
    TNumEdit E;
    E.SetMax(1000);
    E.SetCustomScale(2);
    E.SetScaleOffset(1);
    Extended Shown = -1;
    E.SetOnGetNumText([&](QObject* Sender, QString& Text, Extended AValue) {
        EXPECT_EQ(Sender, &E);
        Shown = AValue;
        Text += QStringLiteral(" u");
    });
    E.SetValue(10);
    EXPECT_EQ(Shown, 6.0L);
    EXPECT_EQ(E.text(), QStringLiteral("6 u"));

    QString SeenText;
    E.SetOnSetNumValue([&](QObject*, const QString& Text, Extended& AValue) {
        SeenText = Text;
        AValue += 100;
    });
    E.setText(QStringLiteral("3"));
    EXPECT_TRUE(E.UpdateValue(false));
    EXPECT_EQ(SeenText, QStringLiteral("3"));
    EXPECT_EQ(E.GetFValue(), (3.0L - 1) * 2 + 100);

    E.SetOnGetNumValue([](QObject*, Extended& AValue) { AValue = 42; });
    EXPECT_EQ(E.Value(), 42.0L);
    EXPECT_EQ(E.GetFValue(), 42.0L);
}

TEST(NumEditUpdate, ChangeNotificationDoesNotRewriteTheText) {
    TNumEdit E;
    E.SetMax(1000);
    bool SawChanging = false;
    Extended Read = -1;
    E.SetOnChange([&](QObject*) {
        SawChanging = E.IsChanging();
        EXPECT_TRUE(E.UpdateValue(false));
        Read = E.GetFValue();
        E.SetValue(999); // no reformat while the text is changing
    });
    E.setText(QStringLiteral("1x2"));
    EXPECT_TRUE(SawChanging);
    EXPECT_FALSE(E.IsChanging());
    EXPECT_EQ(Read, 12.0L);
    EXPECT_EQ(E.text(), QStringLiteral("1x2"));
}

// ---- range checks
// ------------------------------------------------------------------------------------------

TEST(NumEditValid, OutOfRangeValueIsRefusedWithTheMessage) {
    QWidget Form;
    Form.setObjectName(QStringLiteral("Form1"));
    auto* E = new TNumEdit(&Form);
    E->setObjectName(QStringLiteral("p1"));
    E->SetMax(10);
    E->SetValue(3);
    DialogRecorder Rec;
    E->SetValue(20);
    ASSERT_EQ(Rec.Count(), 1);
    EXPECT_EQ(Rec.Messages().first(),
              QStringLiteral("Value of p1 (=20), form Form1 must be between 0 and 10"));
    EXPECT_EQ(E->GetFValue(), 3.0L);
    EXPECT_EQ(E->text(), QStringLiteral("3"));

    // NaN is outside any range for the check itself.
    Rec.Clear();
    EXPECT_FALSE(E->Valid(TCustomNumEdit::NaN()));
    EXPECT_EQ(Rec.Count(), 1);
}

TEST(NumEditValid, ApplicationCheckCanForbidValuesInsideTheRange) {
    TNumEdit E;
    E.SetMax(10);
    E.SetOnRangeValidate([](QObject*, Extended AValue, Extended AMin, Extended AMax, QString& Msg) {
        EXPECT_EQ(AMin, 0.0L);
        EXPECT_EQ(AMax, 10.0L);
        if (AValue == 5) Msg = QStringLiteral("five is bad luck");
    });
    DialogRecorder Rec;
    E.SetValue(5);
    EXPECT_EQ(E.GetFValue(), 0.0L);
    E.SetValue(6);
    EXPECT_EQ(E.GetFValue(), 6.0L);
    E.SetValue(20); // the handler says nothing; the built-in check still runs
    EXPECT_EQ(E.GetFValue(), 6.0L);
    ASSERT_EQ(Rec.Count(), 2);
    EXPECT_EQ(Rec.Messages()[0], QStringLiteral("five is bad luck"));
    EXPECT_TRUE(Rec.Messages()[1].startsWith(QStringLiteral("Value of ")));
    E.SetValidate(false);
    E.SetValue(5);
    EXPECT_EQ(E.GetFValue(), 5.0L);
}

TEST(NumEditValid, LeavingWithAnOutOfRangeTextKeepsValueAndFocus) {
    TForm F;
    F.E1->SetMin(0);
    F.E1->SetMax(10);
    F.E1->SetValue(4);
    ASSERT_TRUE(F.Activate(F.E1));
    EXPECT_TRUE(F.E1->Focused());
    DialogRecorder Rec;
    F.E1->selectAll();
    QTest::keyClicks(F.E1, QStringLiteral("20"));
    F.E2->setFocus(Qt::TabFocusReason);
    ASSERT_EQ(Rec.Count(), 1);
    EXPECT_EQ(Rec.Messages().first(),
              QStringLiteral("Value of p1 (=20), form Form1 must be between 0 and 10"));
    EXPECT_EQ(F.E1->Value(), 4.0L);
    EXPECT_FALSE(F.E1->IsValid());
    EXPECT_TRUE(F.E1->hasFocus());
    EXPECT_EQ(F.E1->selectedText(), QStringLiteral("20"));

    // A good text is taken on leaving and reformatted.
    QTest::keyClicks(F.E1, QStringLiteral("7.50"));
    F.E2->setFocus(Qt::TabFocusReason);
    EXPECT_EQ(Rec.Count(), 1);
    EXPECT_TRUE(F.E2->hasFocus());
    EXPECT_EQ(F.E1->Value(), 7.5L);
    EXPECT_TRUE(F.E1->IsValid());
    EXPECT_FALSE(F.E1->Focused());
    EXPECT_EQ(F.E1->text(), QStringLiteral("7.5"));
}

TEST(NumEditValid, CancelButtonsSkipTheCheck) {
    enum Kind { BoxCancel, BoxOk, ModalResultCancel, ModalResultOk, OtherWindowCancel };
    struct Case {
        Kind K;
        bool ExpectMessage;
    };
    const Case Cases[] = {
        {BoxCancel, false},        {BoxOk, true}, {ModalResultCancel, false}, {ModalResultOk, true},
        {OtherWindowCancel, true},
    };
    for (const Case& C : Cases) {
        SCOPED_TRACE(static_cast<int>(C.K));
        QDialog D;
        auto* L = new QVBoxLayout(&D);
        auto* E = new TNumEdit(&D);
        E->SetMax(10);
        auto* Box = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, &D);
        auto* Plain = new QPushButton(QStringLiteral("Close"), &D);
        L->addWidget(E);
        L->addWidget(Box);
        L->addWidget(Plain);
        QWidget Other;
        auto* OtherCancel = new QPushButton(QStringLiteral("Cancel"), &Other);
        OtherCancel->setProperty("ModalResult", mrCancel);

        D.show();
        D.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&D));
        E->setFocus(Qt::OtherFocusReason);
        ASSERT_TRUE(WaitFor([E] { return E->hasFocus(); }));
        E->selectAll();
        QTest::keyClicks(E, QStringLiteral("20"));

        DialogRecorder Rec;
        switch (C.K) {
        case BoxCancel:
            Box->button(QDialogButtonBox::Cancel)->setFocus(Qt::MouseFocusReason);
            break;
        case BoxOk:
            Box->button(QDialogButtonBox::Ok)->setFocus(Qt::MouseFocusReason);
            break;
        case ModalResultCancel:
            Plain->setProperty("ModalResult", mrCancel);
            Plain->setFocus(Qt::MouseFocusReason);
            break;
        case ModalResultOk:
            Plain->setProperty("ModalResult", mrOk);
            Plain->setFocus(Qt::MouseFocusReason);
            break;
        case OtherWindowCancel:
            // A cancel button of another window does not cancel this one.
            EXPECT_TRUE(TCustomNumEdit::IsCancelButton(OtherCancel));
            Plain->setFocus(Qt::MouseFocusReason);
            break;
        }
        EXPECT_EQ(Rec.Count() == 1, C.ExpectMessage);
        EXPECT_EQ(E->GetFValue(), C.ExpectMessage ? 0.0L : 20.0L);
    }
}

// ---- expressions
// -------------------------------------------------------------------------------------------

TEST(NumEditExpression, ImperialPressureExpressionIsStoredInPascal) {
    TForm F;
    TNumEdit* E = F.E1;
    E->SetParType(ptPress);
    E->SetUnitSystem(usImperial);
    E->SetMax(1e9L);
    E->SetMin(-1e9L);
    QObject* SeenSender = nullptr;
    E->SetOnExprCheckVariable([&](QObject* Sender, const QString& Id, Extended& Value, bool& Found) {
        SeenSender = Sender;
        if (Id == QLatin1String("p1")) {
            Value = 10;
            Found = true;
        }
    });
    ASSERT_TRUE(F.Activate(E));
    E->selectAll();
    QTest::keyClicks(E, QStringLiteral("2*p1+1"));
    EXPECT_EQ(E->text(), QStringLiteral("2*p1+1"));
    F.E2->setFocus(Qt::TabFocusReason);
    EXPECT_EQ(SeenSender, E);
    EXPECT_NEAR(static_cast<double>(E->Value()), static_cast<double>(21 * Psi), 1e-9);
    // The expression stays visible.
    EXPECT_EQ(E->text(), QStringLiteral("2*p1+1"));

    DialogRecorder Rec;
    E->setFocus(Qt::OtherFocusReason);
    E->selectAll();
    QTest::keyClicks(E, QStringLiteral("2*q"));
    F.E2->setFocus(Qt::TabFocusReason);
    ASSERT_EQ(Rec.Count(), 1);
    EXPECT_EQ(Rec.Messages().first(), QStringLiteral("'2*q' is no valid numeric input."));
    EXPECT_EQ(Rec.Dialogs().front().DlgType, mtError);
    EXPECT_TRUE(E->hasFocus());
    EXPECT_NEAR(static_cast<double>(E->GetFValue()), static_cast<double>(21 * Psi), 1e-9);

    // While the edit has the focus a typed number is read as it stands, without units; on
    // leaving it is taken in psi.
    E->selectAll();
    QTest::keyClicks(E, QStringLiteral("3"));
    EXPECT_EQ(E->Value(), 3.0L);
    F.E2->setFocus(Qt::TabFocusReason);
    EXPECT_NEAR(static_cast<double>(E->Value()), static_cast<double>(3 * Psi), 1e-9);
}

TEST(NumEditExpression, NumbersAndSelfReferences) {
    TNumEdit E;
    E.SetMax(1000);
    E.SetOnExprCheckVariable([&](QObject*, const QString& Id, Extended& Value, bool& Found) {
        if (Id == QLatin1String("me")) {
            Value = E.Value(); // reading itself while evaluating must not recurse
            Found = true;
        }
    });
    E.SetValue(3);
    E.setText(QStringLiteral("me+1"));
    EXPECT_TRUE(E.UpdateValue(false));
    EXPECT_EQ(E.GetFValue(), 4.0L);

    // A plain number is taken and reformatted.
    E.setText(QStringLiteral("5.500"));
    EXPECT_TRUE(E.UpdateValue(false));
    EXPECT_EQ(E.GetFValue(), 5.5L);
    EXPECT_EQ(E.text(), QStringLiteral("5.5"));

    // With the path inhibited the text is filtered as a plain number instead.
    E.SetInhibitExprCheckVar(true);
    E.setText(QStringLiteral("x+1"));
    EXPECT_TRUE(E.UpdateValue(false));
    EXPECT_EQ(E.GetFValue(), 1.0L);
    EXPECT_EQ(E.text(), QStringLiteral("1"));
}

// ---- typed read-outs
// ----------------------------------------------------------------------------------------

TEST(NumEditReadOuts, ValuesAtAndBeyondTheRangeLimits) {
    enum Target { Byte, ShortInt, Word, Integer, Longint, Single, Double };
    struct Case {
        Target T;
        Extended V;
        double Expected;
    };
    const Case Cases[] = {
        {Byte, 255, 255},
        {Byte, 256, 0},
        {Byte, 0, 0},
        {Byte, 254.5L, 254}, // halves to even
        {Byte, 253.5L, 254},
        {Byte, -1, 0},
        {ShortInt, -128, -128},
        {ShortInt, 127, 127},
        {ShortInt, -129, 0},
        {Word, 65535, 65535},
        {Word, 65536, 0},
        {Integer, 2147483647.0L, 2147483647.0},
        {Integer, -2147483647.0L, -2147483647.0},
        {Integer, -2147483648.0L, 0},
        {Longint, -2147483647.0L, -2147483647.0},
        {Longint, 2147483648.0L, 0},
        {Single, 1.5L, 1.5},
        {Single, 3.4e38L, 0},
        {Double, -1.7e308L, -1.7e308},
        {Double, 1.8e308L, 0},
    };
    for (const Case& C : Cases) {
        SCOPED_TRACE(testing::Message() << C.T << " " << static_cast<double>(C.V));
        TNumEdit E;
        E.SetValidate(false);
        E.SetDigits(18);
        E.SetValue(C.V);
        double Got = 0;
        switch (C.T) {
        case Byte:
            Got = E.AsByte();
            break;
        case ShortInt:
            Got = E.AsShortInt();
            break;
        case Word:
            Got = E.AsWord();
            break;
        case Integer:
            Got = E.AsInteger();
            break;
        case Longint:
            Got = E.AsLongint();
            break;
        case Single:
            Got = E.AsSingle();
            break;
        case Double:
            Got = E.AsDouble();
            break;
        }
        EXPECT_EQ(Got, C.Expected);
    }
}

TEST(NumEditReadOuts, FailedUpdateGivesZero) {
    TNumEdit E;
    E.SetMax(100);
    E.SetValue(50);
    EXPECT_EQ(E.AsInteger(), 50);
    E.setText(QStringLiteral("200"));
    DialogRecorder Rec;
    EXPECT_EQ(E.AsInteger(), 0);
    EXPECT_EQ(E.AsDouble(), 0.0);
    EXPECT_EQ(Rec.Count(), 2);
    EXPECT_EQ(E.GetFValue(), 50.0L);
}

TEST(NumEditReadOuts, MoneyText) {
    TNumEdit E;
    E.setText(QStringLiteral("12.50"));
    const QString Words = E.AsMoneyStr();
    EXPECT_FALSE(Words.isEmpty());
    EXPECT_NE(Words, QStringLiteral("ERROR"));
    E.setText(QStringLiteral("twelve"));
    EXPECT_EQ(E.AsMoneyStr(), QStringLiteral("ERROR"));
}

// ---- keystroke filter
// ----------------------------------------------------------------------------------------

TEST(NumEditFilter, EditsAreJudgedAgainstTheRulesOfTheDisplayForm) {
    enum Setup { General, Fixed2, Number2, Currency2, PressSI, NoneParType, Integer, Short, Expression };
    struct Case {
        Setup S;
        const char* Old;
        const char* New;
        bool Accepted;
    };
    const Case Cases[] = {
        {General, "", "-", true},
        {General, "12", "-12", true},
        {General, "12", "1-2", false},
        {General, "-12", "--12", false},
        {General, "12", "12a", false},
        {General, "1.2", "1.2.", false},
        {General, "1.2345678", "1.23456789", true}, // general counts significant digits only
        {General, "", "E", false},                  // an exponent needs a digit first
        {General, "1", "1e", true},
        {General, "1e", "1e-", true},
        {General, "1e-", "1e-4932", true},
        {General, "1e-4932", "1e-49321", false},
        {General, "1e5", "1e5.", false},
        {General, "1e5", "1e5-", false},
        {General, "12345678901234567", "123456789012345678", false}, // 17 characters at most
        {General, "1234", "124", true},                              // deleting is always fine
        {Fixed2, "1.2", "1.23", true},
        {Fixed2, "1.23", "1.234", false},
        {Fixed2, "1.23", "11.23", true},
        {Number2, "1,234.50", "1,2345.50", true}, // a formatted text stays editable
        {Number2, "1,234.50", "1,234.501", false},
        {Number2, "1234", "1,234", true},
        {Currency2, "$1,234.50", "($1,234.50)", true},
        {Currency2, "1", "1e", false},
        {Currency2, "-1", "-1-", false},
        {PressSI, "2.5", "2.5e", false}, // "0.000##" has no exponent
        {PressSI, "2.5000", "2.50000", true},
        {PressSI, "2.50000", "2.500000", false},
        {NoneParType, "1.5E+0", "1.5E+05", true}, // "0.0000E+00": four exponent characters
        {NoneParType, "1.5E+05", "1.5E+051", false},
        {Integer, "12", "12.", false},
        {Integer, "12", "12e", false},
        {Integer, "12", "-12", true},
        {Short, "12345", "123456", false}, // Digits 5
        {Short, "12345", "1234", true},
        {Expression, "", "2*p1+(x_2/3)^2", true},
        {Expression, "max(a,b)", "max(a,b)#", false},
    };
    for (const Case& C : Cases) {
        SCOPED_TRACE(testing::Message() << C.S << " '" << C.Old << "' -> '" << C.New << "'");
        TNumEdit E;
        switch (C.S) {
        case General:
            break;
        case Fixed2:
            E.SetNumericType(ntFixed);
            break;
        case Number2:
            E.SetNumericType(ntNumber);
            break;
        case Currency2:
            E.SetNumericType(ntCurrency);
            break;
        case PressSI:
            E.SetParType(ptPress);
            break;
        case NoneParType:
            E.SetNumericType(ntParType);
            break;
        case Integer:
            E.SetDataType(dtInteger);
            break;
        case Short:
            E.SetNumericType(ntFixed);
            E.SetDigits(5);
            break;
        case Expression:
            E.SetOnExprCheckVariable([](QObject*, const QString&, Extended&, bool&) {});
            break;
        }
        EXPECT_EQ(E.IsAcceptableEdit(QString::fromLatin1(C.Old), QString::fromLatin1(C.New)), C.Accepted);
    }
}

TEST(NumEditFilter, TypingPastingAndEditingKeys) {
    TForm F;
    TNumEdit* E = F.E1;
    E->SetNumericType(ntFixed);
    ASSERT_TRUE(F.Activate(E));
    E->selectAll();
    QTest::keyClicks(E, QStringLiteral("1a2.3.45"));
    EXPECT_EQ(E->text(), QStringLiteral("12.34"));

    // The keypad's decimal key types the locale's separator.
    E->selectAll();
    QTest::keyClick(E, Qt::Key_7);
    QTest::keyClick(E, Qt::Key_Comma, Qt::KeypadModifier);
    QTest::keyClick(E, Qt::Key_5);
    EXPECT_EQ(E->text(), QStringLiteral("7.5"));

    // Qt's editing keys keep working.
    QTest::keyClick(E, Qt::Key_Backspace);
    EXPECT_EQ(E->text(), QStringLiteral("7."));
    QTest::keyClick(E, Qt::Key_Home);
    QTest::keyClick(E, Qt::Key_Minus);
    EXPECT_EQ(E->text(), QStringLiteral("-7."));
    QTest::keyClick(E, Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(E->text(), QStringLiteral("7."));
    QTest::keyClick(E, Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(E->selectedText(), QStringLiteral("7."));

    // Paste: trimmed, first line only, refused when it does not fit.
    QGuiApplication::clipboard()->setText(QStringLiteral("  12.5 \nmore"));
    QTest::keyClick(E, Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(E->text(), QStringLiteral("12.5"));
    QGuiApplication::clipboard()->setText(QStringLiteral("abc"));
    QTest::keyClick(E, Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(E->text(), QStringLiteral("12.5"));
    E->selectAll();
    QGuiApplication::clipboard()->setText(QStringLiteral("1.999"));
    EXPECT_FALSE(E->PasteChecked());
    EXPECT_EQ(E->text(), QStringLiteral("12.5"));
}

TEST(NumEditFilter, ContextMenuPasteGoesThroughTheFilter) {
    TForm F;
    TNumEdit* E = F.E1;
    E->SetNumericType(ntFixed);
    ASSERT_TRUE(F.Activate(E));
    E->setText(QStringLiteral("1"));
    E->end(false);
    const auto PasteFromMenu = [E](const QString& Clip) {
        QGuiApplication::clipboard()->setText(Clip);
        QContextMenuEvent Ev(QContextMenuEvent::Keyboard, QPoint(5, 5), E->mapToGlobal(QPoint(5, 5)));
        QApplication::sendEvent(E, &Ev);
        // Offscreen popups are shown but not always made the active popup.
        QMenu* Menu = nullptr;
        for (QWidget* Top : QApplication::topLevelWidgets())
            if (auto* M = qobject_cast<QMenu*>(Top); M && M->isVisible()) Menu = M;
        if (!Menu) return false;
        bool Found = false;
        for (QAction* A : Menu->actions()) {
            if (!A->text().contains(QLatin1String("Paste"))) continue;
            Found = true;
            A->trigger();
        }
        Menu->close();
        return Found;
    };
    ASSERT_TRUE(PasteFromMenu(QStringLiteral("x9")));
    EXPECT_EQ(E->text(), QStringLiteral("1"));
    ASSERT_TRUE(PasteFromMenu(QStringLiteral("2.5")));
    EXPECT_EQ(E->text(), QStringLiteral("12.5"));
}

TEST(NumEditFocus, EnterAndArrowKeysMoveTheFocus) {
    TForm F;
    ASSERT_TRUE(F.Activate(F.E1));
    QTest::keyClick(F.E1, Qt::Key_Return);
    EXPECT_TRUE(F.E1->hasFocus()); // TabOnEnterKey is off

    F.E1->SetTabOnEnterKey(true);
    QTest::keyClick(F.E1, Qt::Key_Return);
    EXPECT_TRUE(F.E2->hasFocus());

    QTest::keyClick(F.E2, Qt::Key_Up);
    EXPECT_TRUE(WaitFor([&] { return F.E1->hasFocus(); }));
    QTest::keyClick(F.E1, Qt::Key_Down);
    EXPECT_TRUE(WaitFor([&] { return F.E2->hasFocus(); }));
}

// ---- registration
// ----------------------------------------------------------------------------------------------

TEST(NumEditRegistry, CreatedByClassName) {
    QWidget Owner;
    QObject* O = CreateComponent(QStringLiteral("TNumEdit"), &Owner);
    ASSERT_NE(O, nullptr);
    EXPECT_NE(qobject_cast<TNumEdit*>(O), nullptr);
    EXPECT_EQ(O->parent(), &Owner);
}

// ---- random use
// ----------------------------------------------------------------------------------------------

TEST(NumEditRandom, RandomPropertiesTextsAndKeysKeepValueAndTextConsistent) {
    QRandomGenerator Rng(20240611u);
    TForm F;
    TNumEdit* E = F.E1;
    ASSERT_TRUE(F.Activate(E));
    DialogRecorder Rec; // range messages are expected here
    const QString Alphabet = QStringLiteral("0123456789+-.,eE()$ aZ*/#\t");
    const auto RandomText = [&] {
        QString S;
        const int N = Rng.bounded(0, 25);
        for (int I = 0; I < N; ++I)
            S += Alphabet[Rng.bounded(static_cast<int>(Alphabet.size()))];
        return S;
    };
    const auto RandomValue = [&]() -> Extended {
        switch (Rng.bounded(6)) {
        case 0:
            return 0;
        case 1:
            return TCustomNumEdit::NaN();
        case 2:
            return std::ldexp(Rng.generateDouble() - 0.5, Rng.bounded(-1100, 1100));
        case 3:
            return static_cast<Extended>(Rng.bounded(-100000, 100000)) / 8;
        case 4:
            return Rng.bounded(2) ? 1e4000L : -1e4000L;
        default:
            return Rng.generateDouble() * 1000;
        }
    };
    bool ExprOn = false;
    for (int Step = 0; Step < 10000; ++Step) {
        switch (Rng.bounded(16)) {
        case 0:
            E->SetDataType(static_cast<TDataType>(Rng.bounded(8)));
            break;
        case 1:
            E->SetNumericType(static_cast<TNumericType>(Rng.bounded(6)));
            break;
        case 2:
            E->SetParType(static_cast<TParType>(Rng.bounded(ParTypeCount)));
            break;
        case 3:
            E->SetUnitSystem(static_cast<TUnitSystem>(Rng.bounded(2)));
            break;
        case 4:
            E->SetDigits(static_cast<quint16>(Rng.bounded(0, 25)));
            break;
        case 5:
            E->SetDecimals(static_cast<quint16>(Rng.bounded(0, 12)));
            break;
        case 6:
            E->SetMin(RandomValue());
            break;
        case 7:
            E->SetMax(RandomValue());
            break;
        case 8:
            E->SetCustomScale(RandomValue());
            break;
        case 9:
            E->SetScaleOffset(Rng.bounded(2) ? 0 : RandomValue());
            break;
        case 10:
            E->SetTrimZeroes(Rng.bounded(2));
            E->SetAllowEmpty(Rng.bounded(2));
            E->SetClearIsNaN(Rng.bounded(2));
            E->SetValidate(Rng.bounded(2));
            break;
        case 11:
            E->SetValue(RandomValue());
            break;
        case 12:
            E->setText(RandomText());
            break;
        case 13:
            if (Rng.bounded(2)) {
                QTest::keyClicks(E, RandomText());
            } else {
                static constexpr Qt::Key Keys[] = {
                    Qt::Key_Backspace, Qt::Key_Delete, Qt::Key_Home, Qt::Key_End, Qt::Key_Left,  Qt::Key_Z,
                    Qt::Key_A,         Qt::Key_V,      Qt::Key_X,    Qt::Key_Up,  Qt::Key_Return};
                const Qt::Key K = Keys[Rng.bounded(static_cast<int>(std::size(Keys)))];
                const bool Ctrl = K == Qt::Key_Z || K == Qt::Key_A || K == Qt::Key_V || K == Qt::Key_X;
                if (K == Qt::Key_V) QGuiApplication::clipboard()->setText(RandomText());
                QTest::keyClick(E, K, Ctrl ? Qt::ControlModifier : Qt::NoModifier);
                E->SetTabOnEnterKey(Rng.bounded(2));
            }
            break;
        case 14:
            ExprOn = !ExprOn;
            if (ExprOn)
                E->SetOnExprCheckVariable([](QObject*, const QString& Id, Extended& V, bool& Found) {
                    Found = Id.size() == 1;
                    V = Id.size();
                });
            else
                E->SetOnExprCheckVariable({});
            break;
        default:
            E->Clear();
            break;
        }
        if (!E->hasFocus()) E->setFocus(Qt::OtherFocusReason);
        const bool Taken = E->UpdateValue(false);
        if (Taken && !E->ExprPathActive()) {
            // A taken text shows the stored value as the edit formats it.
            const Extended V = E->GetFValue();
            if (std::isnan(V)) {
                EXPECT_TRUE(E->text().isEmpty()) << "step " << Step;
            } else if (!E->text().isEmpty()) {
                EXPECT_EQ(E->text(), E->GetValueString(V)) << "step " << Step;
            }
            EXPECT_TRUE(E->IsValid());
        }
        if (!Taken) {
            EXPECT_FALSE(E->IsValid()) << "step " << Step;
        }
    }
}

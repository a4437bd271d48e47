// The numeric edit: coupled properties, value and text, range checks, evaluation of typed text and
// expressions, typed read-outs, the keystroke filter and the focus cycle.
#include <qxnum/numconv.h>
#include <qxnum/registry.h>
#include <qxnum/widgets/numedit.h>

#include "dialogrecorder.h"
#include "editform.h"
#include "widgettest.h"

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QDialog>
#include <QDialogButtonBox>
#include <QMenu>
#include <QPushButton>
#include <QRandomGenerator>
#include <QTest>
#include <QVBoxLayout>
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <iterator>
#include <utility>
#include <vector>

using namespace qxnum;
using qxnum::test::DialogRecorder;

using qxnum::test::Activate;
using qxnum::test::WaitFor;

namespace {

constexpr Extended Psi = 6894.76L;

double D(Extended V) {
    return static_cast<double>(V);
}

void Retype(TNumEdit* E, const QString& Text) {
    E->selectAll();
    QTest::keyClicks(E, Text);
}

using TForm = test::TEditForm;

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

TEST(NumEditProperties, CreatedByClassName) {
    QWidget Owner;
    QObject* O = CreateComponent(QStringLiteral("TNumEdit"), &Owner);
    EXPECT_NE(qobject_cast<TNumEdit*>(O), nullptr);
    EXPECT_EQ(O ? O->parent() : nullptr, &Owner);
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

TEST(NumEditProperties, ValueIsPulledIntoRangeWhenLimitsDataTypeOrValidateChange) {
    TNumEdit E; // Min that crosses Max is replaced by Max, and the other way round
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

    TNumEdit B; // the data type clips the limits
    B.SetValidate(false);
    B.SetMax(300);
    B.SetMin(-5);
    B.SetValue(1000);
    B.SetDataType(dtByte);
    EXPECT_EQ(B.Min(), 0.0L);
    EXPECT_EQ(B.Max(), 255.0L);
    EXPECT_EQ(B.GetFValue(), 0.0L);
    EXPECT_EQ(B.text(), QStringLiteral("0"));

    TNumEdit V; // switching Validate on pulls an outside value to Min
    V.SetValidate(false);
    V.SetMax(10);
    V.SetMin(2);
    V.SetValue(50);
    EXPECT_EQ(V.GetFValue(), 50.0L);
    V.SetValidate(true);
    EXPECT_EQ(V.GetFValue(), 2.0L);
    EXPECT_EQ(V.text(), QStringLiteral("2"));
}

TEST(NumEditProperties, ScalesAndUnitSystem) {
    TNumEdit E; // a custom scale at or below 1e-14 is ignored
    E.SetCustomScale(1e-14L);
    EXPECT_EQ(E.CustomScale(), 1.0L);
    E.SetCustomScale(-2);
    EXPECT_EQ(E.CustomScale(), 1.0L);
    E.SetCustomScale(2e-14L);
    EXPECT_EQ(E.CustomScale(), 2e-14L);

    TNumEdit P;
    P.SetParType(ptPress);
    P.SetUnitSystem(usImperial);
    P.SetScaledValue(21);
    EXPECT_NEAR(D(P.GetFValue()), D(21 * Psi), 1e-9);
    EXPECT_NEAR(D(P.ScaledValue()), 21.0, 1e-12);
    EXPECT_EQ(P.text(), P.GetValueString(P.GetFValue()));
    EXPECT_NEAR(D(P.Scale()), D(Psi), 1e-12);

    // The unit system always notifies, and reformats unless expressions are on.
    P.SetValidate(false);
    P.SetValue(100000); // 1 bar
    int Notified = 0;
    P.SetOnUnitSystemChange([&](QObject*) { ++Notified; });
    P.SetUnitSystem(usSI);
    EXPECT_EQ(Notified, 1);
    const QString SIText = P.text();
    P.SetUnitSystem(usImperial);
    EXPECT_NE(P.text(), SIText);
    P.SetOnExprCheckVariable([](QObject*, const QString&, Extended&, bool&) {});
    const QString Before = P.text();
    P.SetUnitSystem(usSI);
    EXPECT_EQ(P.text(), Before);
    EXPECT_EQ(Notified, 3);
}

// ---- NaN -----------------------------------------------------------------------------------------------

TEST(NumEditNaN, NaNIsAlwaysAcceptedAndEmptiesTheText) {
    TNumEdit E; // Min = Max = 0: any other number would be refused
    E.SetValue(TCustomNumEdit::NaN());
    EXPECT_TRUE(std::isnan(E.GetFValue()));
    EXPECT_TRUE(std::signbit(E.GetFValue()));
    EXPECT_EQ(E.text(), QString());
    E.SetValue(7); // from "no value" any value is taken without a range check
    EXPECT_EQ(E.GetFValue(), 7.0L);
    E.SetValue(TCustomNumEdit::NaN()); // and NaN survives limit and data type changes
    E.SetMin(-1);
    E.SetMax(1);
    E.SetDataType(dtDouble);
    EXPECT_TRUE(std::isnan(E.GetFValue()));
}

TEST(NumEditNaN, ClearAndEmptyTextFollowClearIsNaNAndAllowEmpty) {
    struct Case {
        bool ClearIsNaN, AllowEmpty, ExpectNaN;
        const char *ClearedText, *EmptyTextAfterUpdate;
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
        {ntGeneral, ptNone, usSI, 1, 0, " 1x2y.5 ", 12.5L},
        {ntParType, ptPress, usSI, 1, 0, "2.5", 250000.0L},
        {ntParType, ptPress, usImperial, 1, 0, "21", 21 * Psi},
        {ntGeneral, ptNone, usSI, 2, 1, "6", 10.0L}, // base = (display - offset) * scale
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
        EXPECT_NEAR(D(E.GetFValue()), D(C.Expected), 1e-12 * std::fabs(D(C.Expected)));
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

// ---- range checks ------------------------------------------------------------------------------------

TEST(NumEditValid, OutOfRangeValueIsRefusedBySetterAndOnLeaving) {
    TForm F;
    F.E1->SetMin(0);
    F.E1->SetMax(10);
    F.E1->SetValue(4);
    const QStringList Message{QStringLiteral("Value of p1 (=20), form Form1 must be between 0 and 10")};
    DialogRecorder Rec;
    F.E1->SetValue(20);
    EXPECT_EQ(Rec.Messages(), Message);
    EXPECT_EQ(F.E1->GetFValue(), 4.0L);
    EXPECT_EQ(F.E1->text(), QStringLiteral("4"));
    Rec.Clear(); // NaN is outside any range for the check itself
    EXPECT_FALSE(F.E1->Valid(TCustomNumEdit::NaN()));
    EXPECT_EQ(Rec.Count(), 1);
    Rec.Clear();

    ASSERT_TRUE(F.Activate(F.E1));
    EXPECT_TRUE(F.E1->Focused());
    Retype(F.E1, QStringLiteral("20"));
    F.Leave();
    EXPECT_EQ(Rec.Messages(), Message);
    EXPECT_EQ(F.E1->Value(), 4.0L);
    EXPECT_FALSE(F.E1->IsValid());
    EXPECT_TRUE(F.E1->hasFocus());
    EXPECT_EQ(F.E1->selectedText(), QStringLiteral("20"));

    // A good text is taken on leaving and reformatted.
    QTest::keyClicks(F.E1, QStringLiteral("7.50"));
    F.Leave();
    EXPECT_EQ(Rec.Count(), 1);
    EXPECT_TRUE(F.E2->hasFocus());
    EXPECT_EQ(F.E1->Value(), 7.5L);
    EXPECT_TRUE(F.E1->IsValid());
    EXPECT_FALSE(F.E1->Focused());
    EXPECT_EQ(F.E1->text(), QStringLiteral("7.5"));
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

TEST(NumEditValid, CancelButtonsSkipTheCheck) {
    // A cancel button, but of another window: it must not exempt the dialogs below.
    QPushButton OtherCancel(QStringLiteral("Cancel"));
    OtherCancel.setProperty("ModalResult", mrCancel);
    EXPECT_TRUE(TCustomNumEdit::IsCancelButton(&OtherCancel));
    enum Target { BoxCancel, BoxOk, Plain };
    struct Case {
        const char* Name;
        Target T;
        int ModalResult; // of the plain button; -1: none
        bool ExpectMessage;
    };
    const Case Cases[] = {
        {"box cancel", BoxCancel, -1, false},
        {"box ok", BoxOk, -1, true},
        {"ModalResult cancel", Plain, mrCancel, false},
        {"ModalResult ok", Plain, mrOk, true},
        {"plain button", Plain, -1, true},
    };
    for (const Case& C : Cases) {
        SCOPED_TRACE(C.Name);
        QDialog Dlg;
        auto* L = new QVBoxLayout(&Dlg);
        auto* E = new TNumEdit(&Dlg);
        E->SetMax(10);
        auto* Box = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, &Dlg);
        auto* Close = new QPushButton(QStringLiteral("Close"), &Dlg);
        if (C.ModalResult >= 0) Close->setProperty("ModalResult", C.ModalResult);
        L->addWidget(E);
        L->addWidget(Box);
        L->addWidget(Close);
        ASSERT_TRUE(Activate(Dlg, E));
        Retype(E, QStringLiteral("20"));
        DialogRecorder Rec;
        QWidget* To = C.T == Plain
                          ? Close
                          : Box->button(C.T == BoxOk ? QDialogButtonBox::Ok : QDialogButtonBox::Cancel);
        To->setFocus(Qt::MouseFocusReason);
        EXPECT_EQ(Rec.Count() == 1, C.ExpectMessage);
        EXPECT_EQ(E->GetFValue(), C.ExpectMessage ? 0.0L : 20.0L);
    }
}

// ---- expressions -------------------------------------------------------------------------------------

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
    Retype(E, QStringLiteral("2*p1+1"));
    EXPECT_EQ(E->text(), QStringLiteral("2*p1+1"));
    F.Leave();
    EXPECT_EQ(SeenSender, E);
    EXPECT_NEAR(D(E->Value()), D(21 * Psi), 1e-9);
    EXPECT_EQ(E->text(), QStringLiteral("2*p1+1")); // the expression stays visible

    DialogRecorder Rec;
    E->setFocus(Qt::OtherFocusReason);
    Retype(E, QStringLiteral("2*q"));
    F.Leave();
    EXPECT_EQ(Rec.Messages(), QStringList{QStringLiteral("'2*q' is no valid numeric input.")});
    ASSERT_EQ(Rec.Count(), 1);
    EXPECT_EQ(Rec.Dialogs().front().DlgType, mtError);
    EXPECT_TRUE(E->hasFocus());
    EXPECT_NEAR(D(E->GetFValue()), D(21 * Psi), 1e-9);

    // While focused a typed number is read as it stands, without units; on leaving it is in psi.
    Retype(E, QStringLiteral("3"));
    EXPECT_EQ(E->Value(), 3.0L);
    F.Leave();
    EXPECT_NEAR(D(E->Value()), D(3 * Psi), 1e-9);
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
    const auto Update = [&E](const char* Text) {
        E.setText(QString::fromLatin1(Text));
        EXPECT_TRUE(E.UpdateValue(false)) << Text;
    };
    E.SetValue(3);
    Update("me+1");
    EXPECT_EQ(E.GetFValue(), 4.0L);
    Update("5.500"); // a plain number is taken and reformatted
    EXPECT_EQ(E.GetFValue(), 5.5L);
    EXPECT_EQ(E.text(), QStringLiteral("5.5"));
    E.SetInhibitExprCheckVar(true); // now the text is filtered as a plain number
    Update("x+1");
    EXPECT_EQ(E.GetFValue(), 1.0L);
    EXPECT_EQ(E.text(), QStringLiteral("1"));
}

// ---- typed read-outs ---------------------------------------------------------------------------------

TEST(NumEditReadOuts, ValuesAtAndBeyondTheRangeLimits) {
    struct TReader {
        const char* Name;
        double (*Read)(TNumEdit&);
    };
    const TReader Byte{"AsByte", [](TNumEdit& E) -> double { return E.AsByte(); }};
    const TReader Short{"AsShortInt", [](TNumEdit& E) -> double { return E.AsShortInt(); }};
    const TReader Word{"AsWord", [](TNumEdit& E) -> double { return E.AsWord(); }};
    const TReader Integer{"AsInteger", [](TNumEdit& E) -> double { return E.AsInteger(); }};
    const TReader Longint{"AsLongint", [](TNumEdit& E) -> double { return E.AsLongint(); }};
    const TReader Single{"AsSingle", [](TNumEdit& E) -> double { return E.AsSingle(); }};
    const TReader Double{"AsDouble", [](TNumEdit& E) -> double { return E.AsDouble(); }};
    struct Case {
        TReader R;
        std::vector<std::pair<Extended, double>> ValueAndExpected;
    };
    const Case Cases[] = {
        {Byte, {{255, 255}, {256, 0}, {0, 0}, {254.5L, 254}, {253.5L, 254}, {-1, 0}}}, // halves to even
        {Short, {{-128, -128}, {127, 127}, {-129, 0}}},
        {Word, {{65535, 65535}, {65536, 0}}},
        {Integer, {{2147483647.0L, 2147483647.0}, {-2147483647.0L, -2147483647.0}, {-2147483648.0L, 0}}},
        {Longint, {{-2147483647.0L, -2147483647.0}, {2147483648.0L, 0}}},
        {Single, {{1.5L, 1.5}, {3.4e38L, 0}}},
        {Double, {{-1.7e308L, -1.7e308}, {1.8e308L, 0}}},
    };
    for (const Case& C : Cases)
        for (const auto& [V, Expected] : C.ValueAndExpected) {
            SCOPED_TRACE(testing::Message() << C.R.Name << " " << D(V));
            TNumEdit E;
            E.SetValidate(false);
            E.SetDigits(18);
            E.SetValue(V);
            EXPECT_EQ(C.R.Read(E), Expected);
        }
}

TEST(NumEditReadOuts, FailedUpdateGivesZeroAndMoneyTextERROR) {
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

    E.setText(QStringLiteral("12.50"));
    const QString Words = E.AsMoneyStr();
    EXPECT_FALSE(Words.isEmpty());
    EXPECT_NE(Words, QStringLiteral("ERROR"));
    E.setText(QStringLiteral("twelve"));
    EXPECT_EQ(E.AsMoneyStr(), QStringLiteral("ERROR"));
}

// ---- keystroke filter --------------------------------------------------------------------------------

TEST(NumEditFilter, EditsAreJudgedAgainstTheRulesOfTheDisplayForm) {
    struct TSetup {
        const char* Name;
        void (*Apply)(TNumEdit&);
    };
    const TSetup General{"general", [](TNumEdit&) {}};
    const TSetup Fixed2{"fixed", [](TNumEdit& E) { E.SetNumericType(ntFixed); }};
    const TSetup Number2{"number", [](TNumEdit& E) { E.SetNumericType(ntNumber); }};
    const TSetup Currency2{"currency", [](TNumEdit& E) { E.SetNumericType(ntCurrency); }};
    const TSetup PressSI{"ptPress \"0.000##\"", [](TNumEdit& E) { E.SetParType(ptPress); }};
    const TSetup NoneParType{"ptNone \"0.0000E+00\"", [](TNumEdit& E) { E.SetNumericType(ntParType); }};
    const TSetup Integer{"integer", [](TNumEdit& E) { E.SetDataType(dtInteger); }};
    const TSetup Digits5{"Digits 5", [](TNumEdit& E) {
                             E.SetNumericType(ntFixed);
                             E.SetDigits(5);
                         }};
    const TSetup Expression{"expression", [](TNumEdit& E) {
                                E.SetOnExprCheckVariable([](QObject*, const QString&, Extended&, bool&) {});
                            }};
    struct TEdit {
        const char *Old, *New;
        bool Accepted;
    };
    const std::pair<TSetup, std::vector<TEdit>> Cases[] = {
        // Signs, foreign characters and separators; general counts significant digits only.
        {General, {{"", "-", true}, {"12", "-12", true}, {"12", "1-2", false}, {"-12", "--12", false}}},
        {General, {{"12", "12a", false}, {"1.2", "1.2.", false}, {"1.2345678", "1.23456789", true}}},
        // An exponent needs a digit first and has at most four digits, no point and one sign.
        {General, {{"", "E", false}, {"1", "1e", true}, {"1e", "1e-", true}, {"1e-", "1e-4932", true}}},
        {General, {{"1e-4932", "1e-49321", false}, {"1e5", "1e5.", false}, {"1e5", "1e5-", false}}},
        // 17 characters at most; deleting is always fine.
        {General, {{"12345678901234567", "123456789012345678", false}, {"1234", "124", true}}},
        {Fixed2, {{"1.2", "1.23", true}, {"1.23", "1.234", false}, {"1.23", "11.23", true}}},
        // A formatted text stays editable.
        {Number2,
         {{"1,234.50", "1,2345.50", true}, {"1,234.50", "1,234.501", false}, {"1234", "1,234", true}}},
        {Currency2, {{"$1,234.50", "($1,234.50)", true}, {"1", "1e", false}, {"-1", "-1-", false}}},
        {PressSI, {{"2.5", "2.5e", false}, {"2.5000", "2.50000", true}, {"2.50000", "2.500000", false}}},
        {NoneParType, {{"1.5E+0", "1.5E+05", true}, {"1.5E+05", "1.5E+051", false}}},
        {Integer, {{"12", "12.", false}, {"12", "12e", false}, {"12", "-12", true}}},
        {Digits5, {{"12345", "123456", false}}},
        {Expression, {{"", "2*p1+(x_2/3)^2", true}, {"max(a,b)", "max(a,b)#", false}}},
    };
    for (const auto& [Setup, Edits] : Cases)
        for (const TEdit& C : Edits) {
            SCOPED_TRACE(testing::Message() << Setup.Name << " '" << C.Old << "' -> '" << C.New << "'");
            TNumEdit E;
            Setup.Apply(E);
            EXPECT_EQ(E.IsAcceptableEdit(QString::fromLatin1(C.Old), QString::fromLatin1(C.New)), C.Accepted);
        }
}

TEST(NumEditFilter, TypingPastingAndEditingKeys) {
    TForm F;
    TNumEdit* E = F.E1;
    E->SetNumericType(ntFixed);
    ASSERT_TRUE(F.Activate(E));
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

    // Paste: trimmed, first line only; PasteChecked refuses what does not fit.
    const auto Paste = [E](const char* Clip) {
        QGuiApplication::clipboard()->setText(QString::fromLatin1(Clip));
        QTest::keyClick(E, Qt::Key_V, Qt::ControlModifier);
    };
    Paste("  12.5 \nmore");
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
        for (QAction* A : Menu->actions())
            if (A->text().contains(QLatin1String("Paste"))) {
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
    F.E1->SetTabOnEnterKey(true);
    QTest::keyClick(F.E1, Qt::Key_Return);
    EXPECT_TRUE(F.E2->hasFocus());
    QTest::keyClick(F.E2, Qt::Key_Up);
    EXPECT_TRUE(WaitFor([&] { return F.E1->hasFocus(); }));
    QTest::keyClick(F.E1, Qt::Key_Down);
    EXPECT_TRUE(WaitFor([&] { return F.E2->hasFocus(); }));
}

// ---- random use --------------------------------------------------------------------------------------

TEST(NumEditRandom, RandomPropertiesTextsAndKeysKeepValueAndTextConsistent) {
    QRandomGenerator Rng(20240611u);
    TForm F;
    TNumEdit* E = F.E1;
    ASSERT_TRUE(F.Activate(E));
    DialogRecorder Rec; // range messages are expected here
    const QString Alphabet = QStringLiteral("0123456789+-.,eE()$ aZ*/#\t");
    const auto RandomText = [&] {
        QString S;
        for (int I = 0, N = Rng.bounded(0, 25); I < N; ++I)
            S += Alphabet[Rng.bounded(static_cast<int>(Alphabet.size()))];
        return S;
    };
    const std::function<Extended()> Values[] = {
        [] { return Extended(0); },
        [] { return TCustomNumEdit::NaN(); },
        [&] { return Extended(std::ldexp(Rng.generateDouble() - 0.5, Rng.bounded(-1100, 1100))); },
        [&] { return static_cast<Extended>(Rng.bounded(-100000, 100000)) / 8; },
        [&] { return Rng.bounded(2) ? 1e4000L : -1e4000L; },
        [&] { return Extended(Rng.generateDouble() * 1000); },
    };
    const auto RandomValue = [&] { return Values[Rng.bounded(6)](); };
    const auto PressKey = [&] {
        static constexpr Qt::Key Keys[] = {Qt::Key_Backspace, Qt::Key_Delete, Qt::Key_Home,  Qt::Key_End,
                                           Qt::Key_Left,      Qt::Key_Z,      Qt::Key_A,     Qt::Key_V,
                                           Qt::Key_X,         Qt::Key_Up,     Qt::Key_Return};
        const Qt::Key K = Keys[Rng.bounded(static_cast<int>(std::size(Keys)))];
        const bool Ctrl = K == Qt::Key_Z || K == Qt::Key_A || K == Qt::Key_V || K == Qt::Key_X;
        if (K == Qt::Key_V) QGuiApplication::clipboard()->setText(RandomText());
        QTest::keyClick(E, K, Ctrl ? Qt::ControlModifier : Qt::NoModifier);
        E->SetTabOnEnterKey(Rng.bounded(2));
    };
    bool ExprOn = false;
    const std::function<void()> Actions[] = {
        [&] { E->SetDataType(static_cast<TDataType>(Rng.bounded(8))); },
        [&] { E->SetNumericType(static_cast<TNumericType>(Rng.bounded(6))); },
        [&] { E->SetParType(static_cast<TParType>(Rng.bounded(ParTypeCount))); },
        [&] { E->SetUnitSystem(static_cast<TUnitSystem>(Rng.bounded(2))); },
        [&] { E->SetDigits(static_cast<quint16>(Rng.bounded(0, 25))); },
        [&] { E->SetDecimals(static_cast<quint16>(Rng.bounded(0, 12))); },
        [&] { E->SetMin(RandomValue()); },
        [&] { E->SetMax(RandomValue()); },
        [&] { E->SetCustomScale(RandomValue()); },
        [&] { E->SetScaleOffset(Rng.bounded(2) ? 0 : RandomValue()); },
        [&] {
            E->SetTrimZeroes(Rng.bounded(2));
            E->SetAllowEmpty(Rng.bounded(2));
            E->SetClearIsNaN(Rng.bounded(2));
            E->SetValidate(Rng.bounded(2));
        },
        [&] { E->SetValue(RandomValue()); },
        [&] { E->setText(RandomText()); },
        [&] { Rng.bounded(2) ? QTest::keyClicks(E, RandomText()) : PressKey(); },
        [&] {
            ExprOn = !ExprOn;
            if (ExprOn)
                E->SetOnExprCheckVariable([](QObject*, const QString& Id, Extended& V, bool& Found) {
                    Found = Id.size() == 1;
                    V = Id.size();
                });
            else
                E->SetOnExprCheckVariable({});
        },
        [&] { E->Clear(); },
    };
    for (int Step = 0; Step < 10000; ++Step) {
        Actions[Rng.bounded(static_cast<int>(std::size(Actions)))]();
        if (!E->hasFocus()) E->setFocus(Qt::OtherFocusReason);
        const bool Taken = E->UpdateValue(false);
        if (!Taken) {
            EXPECT_FALSE(E->IsValid()) << "step " << Step;
        } else if (!E->ExprPathActive()) {
            // A taken text shows the stored value as the edit formats it.
            const Extended V = E->GetFValue();
            if (std::isnan(V)) {
                EXPECT_TRUE(E->text().isEmpty()) << "step " << Step;
            } else if (!E->text().isEmpty()) {
                EXPECT_EQ(E->text(), E->GetValueString(V)) << "step " << Step;
            }
            EXPECT_TRUE(E->IsValid());
        }
    }
}

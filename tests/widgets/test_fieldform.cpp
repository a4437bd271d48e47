// The field form as a dialog: its buttons, OK and Cancel, creation values and resets, focus on a
// named field behind a tab, visibility, Assign, Help and the report lines.
#include <qxnum/registry.h>
#include <qxnum/widgets/fieldform.h>
#include <qxnum/widgets/fields.h>
#include <qxnum/widgets/numfld.h>
#include <qxnum/widgets/numgrid.h>

#include "dialogrecorder.h"
#include "settingsguard.h"
#include "widgettest.h"

#include <QApplication>
#include <QGroupBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QTest>
#include <QTimer>
#include <QVBoxLayout>
#include <gtest/gtest.h>

using namespace qxnum;
using qxnum::test::DialogRecorder;
using qxnum::test::SettingsGuard;

namespace {

template <typename T> T* Add(QWidget* Owner, const char* Name) {
    auto* W = new T(Owner);
    W->setObjectName(QString::fromLatin1(Name));
    if (Owner->layout()) Owner->layout()->addWidget(W);
    return W;
}

// Two tab pages: P1 and a frame on the first, S2 on the second; Top above the tabs.
struct TabForm : TFieldForm {
    TCheckFld* Top;
    QTabWidget* Tabs;
    QWidget* Page1;
    QWidget* Page2;
    TNumFld* P1;
    TFieldFrame* Frame;
    TStringFld* FS;
    TStringFld* S2;
    QGroupBox* Box;
    TStringFld* InBox;
    explicit TabForm(bool CallFormCreate = true) {
        setObjectName(QStringLiteral("TabForm"));
        new QVBoxLayout(ClientArea());
        Top = Add<TCheckFld>(ClientArea(), "Top");
        Tabs = Add<QTabWidget>(ClientArea(), "Tabs");
        Page1 = new QWidget;
        Page2 = new QWidget;
        new QVBoxLayout(Page1);
        new QVBoxLayout(Page2);
        Tabs->addTab(Page1, QStringLiteral("One"));
        Tabs->addTab(Page2, QStringLiteral("Two"));
        P1 = Add<TNumFld>(Page1, "P1");
        P1->SetMin(-1000);
        P1->SetMax(1000);
        P1->SetValue(1);
        Frame = Add<TFieldFrame>(Page1, "Fr");
        new QVBoxLayout(Frame);
        FS = Add<TStringFld>(Frame, "FS");
        FS->setText(QStringLiteral("frame"));
        S2 = Add<TStringFld>(Page2, "S2");
        S2->setText(QStringLiteral("two"));
        Box = Add<QGroupBox>(Page1, "Box");
        new QVBoxLayout(Box);
        InBox = Add<TStringFld>(Box, "InBox");
        if (CallFormCreate) FormCreate();
    }
};

struct FormTest : ::testing::Test {
    SettingsGuard Guard{TFormatSettings::Invariant(), TFormatSettings::Invariant()};
    DialogRecorder Dialogs;
};

TEST_F(FormTest, TheFormHasTheClassicCaptionSizeAndButtons) {
    TFieldForm F;
    EXPECT_EQ(F.windowTitle(), QStringLiteral("FieldForm"));
    EXPECT_EQ(F.IDstr(), QStringLiteral("FieldForm"));
    EXPECT_EQ(F.size(), QSize(455, 308));
    ASSERT_TRUE(test::Activate(F, F.OKbtn()));
    EXPECT_EQ(F.BottomButtonsPanel()->height(), 44);
    struct Case {
        QPushButton* B;
        const char* Text;
        int Width;
    };
    const Case Cases[] = {{F.OKbtn(), "OK", 93}, {F.Cancelbtn(), "Cancel", 93}, {F.HelpBtn(), "&Help", 94}};
    int Left = 0;
    for (const Case& K : Cases) {
        EXPECT_EQ(K.B->text(), QString::fromLatin1(K.Text));
        EXPECT_EQ(K.B->size(), QSize(K.Width, 32));
        EXPECT_GT(K.B->x(), Left) << K.Text << ": OK, Cancel, Help from left to right";
        EXPECT_EQ(K.B->y(), 6);
        Left = K.B->x();
    }
    EXPECT_EQ(F.HelpBtn()->geometry().right() + 1, F.BottomButtonsPanel()->width() - 6);
    EXPECT_TRUE(F.OKbtn()->isDefault());
    EXPECT_EQ(F.EndCode, NullStreamCode);
    F.reject();
}

// Cancel in each of its forms restores every field, those of frames included.
TEST_F(FormTest, OpensInTheFirstFieldAndTabReachesTheButtonsLast) {
    TabForm F;
    F.show();
    ASSERT_TRUE(test::WaitFor([&] { return F.isActiveWindow(); }));
    EXPECT_EQ(F.focusWidget(), F.Top) << "the first field, not OK";
    // Along the chain from the first field: every field of the visible page before the buttons.
    QWidget* W = F.Top;
    int FieldsBefore = 0;
    for (int I = 0; I < 40 && W != F.OKbtn(); ++I) {
        W = W->nextInFocusChain();
        if (Supports(W)) ++FieldsBefore;
    }
    ASSERT_EQ(W, F.OKbtn());
    EXPECT_GE(FieldsBefore, 3) << "P1, FS and InBox come before OK";
    EXPECT_EQ(F.OKbtn()->nextInFocusChain(), F.Cancelbtn());
    EXPECT_EQ(F.Cancelbtn()->nextInFocusChain(), F.HelpBtn());
    F.reject();
}

TEST_F(FormTest, CancelByButtonEscapeOrCloseRestoresEveryField) {
    const std::function<void(TabForm&)> Ways[] = {
        [](TabForm& F) { QTest::mouseClick(F.Cancelbtn(), Qt::LeftButton); },
        [](TabForm& F) { QTest::keyClick(&F, Qt::Key_Escape); },
        [](TabForm& F) { F.close(); },
    };
    for (const auto& Cancel : Ways) {
        TabForm F;
        ASSERT_TRUE(test::Activate(F, F.S2));
        F.P1->SetValue(5);
        F.FS->setText(QStringLiteral("changed"));
        F.Top->setChecked(true);
        Cancel(F);
        EXPECT_FALSE(F.isVisible());
        EXPECT_EQ(F.ModalResult(), mrCancel);
        EXPECT_EQ(F.P1->Value(), 1.0L);
        EXPECT_EQ(F.FS->text(), QStringLiteral("frame"));
        EXPECT_FALSE(F.Top->isChecked());
        EXPECT_FALSE(F.P1->ChangedAfterOK);
    }
    EXPECT_EQ(Dialogs.Count(), 0);
}

TEST_F(FormTest, OkConfirmsChangedFieldsOnlyAndOtherResultsTouchNothing) {
    TabForm F;
    ASSERT_TRUE(test::Activate(F, F.S2));
    F.FS->setText(QStringLiteral("changed"));
    QTest::mouseClick(F.OKbtn(), Qt::LeftButton);
    EXPECT_FALSE(F.isVisible());
    EXPECT_EQ(F.ModalResult(), mrOk);
    EXPECT_TRUE(F.FS->ChangedAfterOK);
    EXPECT_FALSE(F.P1->ChangedAfterOK);
    EXPECT_EQ(F.FS->text(), QStringLiteral("changed"));

    ASSERT_TRUE(test::Activate(F, F.S2));
    F.S2->setText(QStringLiteral("other"));
    F.done(mrAbort);
    EXPECT_EQ(F.ModalResult(), mrAbort);
    EXPECT_EQ(F.S2->text(), QStringLiteral("other"));
    EXPECT_FALSE(F.S2->ChangedAfterOK);
}

TEST_F(FormTest, OkWithARefusedNumericTextStaysOpenAndConfirmsNothing) {
    struct Case {
        const char* Typed;
        QString Message;
        TMsgDlgType Type;
    };
    const Case Cases[] = {
        {"2*q", QStringLiteral("'2*q' is no valid numeric input."), mtError},
        {"5000", QStringLiteral("Value of P1 (=5000), form TabForm must be between -1000 and 1000"), mtError},
    };
    for (const Case& K : Cases) {
        SCOPED_TRACE(K.Typed);
        Dialogs.Clear();
        TabForm F;
        F.P1->SetExpressionInput(true);
        ASSERT_TRUE(test::Activate(F, F.P1));
        F.FS->setText(QStringLiteral("changed"));
        F.P1->selectAll();
        QTest::keyClicks(F.P1, QString::fromLatin1(K.Typed));
        QTest::mouseClick(F.OKbtn(), Qt::LeftButton);
        EXPECT_TRUE(F.isVisible());
        EXPECT_EQ(F.ModalResult(), mrNone);
        EXPECT_FALSE(F.FS->ChangedAfterOK);
        ASSERT_EQ(Dialogs.Count(), 1) << "one message per click";
        EXPECT_TRUE(Dialogs.Messages()[0].startsWith(K.Message)) << Dialogs.Messages()[0].toStdString();
        EXPECT_EQ(Dialogs.Dialogs()[0].DlgType, K.Type);
        EXPECT_EQ(Dialogs.Dialogs()[0].Buttons, TMsgDlgButtons(mbOK));
        EXPECT_FALSE(F.P1->IsValid());
        EXPECT_EQ(QApplication::focusWidget(), F.P1);

        // Corrected and confirmed with Enter on the default button.
        F.P1->selectAll();
        QTest::keyClicks(F.P1, QStringLiteral("7"));
        QTest::keyClick(F.P1, Qt::Key_Return);
        EXPECT_FALSE(F.isVisible());
        EXPECT_EQ(F.P1->Value(), 7.0L);
        EXPECT_TRUE(F.P1->ChangedAfterOK);
        EXPECT_TRUE(F.FS->ChangedAfterOK);
    }
}

// The points the numeric edit left to the form.
TEST_F(FormTest, TheCancelButtonIsExemptAndScaledValuesReformat) {
    TabForm F;
    ASSERT_TRUE(test::Activate(F, F.P1));
    F.P1->selectAll();
    QTest::keyClicks(F.P1, QStringLiteral("5000"));
    // Tabbing onto Cancel does not validate; Cancel then restores.
    F.Cancelbtn()->setFocus(Qt::TabFocusReason);
    EXPECT_EQ(Dialogs.Count(), 0);
    QTest::keyClick(F.Cancelbtn(), Qt::Key_Space);
    EXPECT_FALSE(F.isVisible());
    EXPECT_EQ(F.P1->Value(), 1.0L);
    EXPECT_EQ(Dialogs.Count(), 0);

    F.P1->SetScaledValue(2.5L);
    EXPECT_EQ(F.P1->text(), F.P1->GetValueString(2.5L));
}

TEST_F(FormTest, OkTakesAGridCellThatIsStillBeingEdited) {
    TabForm F;
    auto* Grid = Add<TNumGrid>(F.Page1, "Grid");
    Grid->SetColCount(2);
    Grid->SetRowCount(3);
    F.SetCopyValues();
    ASSERT_TRUE(test::Activate(F, Grid));
    Grid->SetCol(1);
    Grid->SetRow(1);
    QTest::keyClick(Grid, Qt::Key_F2);
    ASSERT_TRUE(Grid->EditorMode());
    QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("42"));
    QTest::mouseClick(F.OKbtn(), Qt::LeftButton);
    EXPECT_FALSE(F.isVisible());
    EXPECT_EQ(Grid->Cells(1, 1), QStringLiteral("42"));
    EXPECT_TRUE(Grid->ChangedAfterOK);
}

TEST_F(FormTest, ShowModalFocusedOpensTheTabOfTheField) {
    for (const char* Name : {"S2", " S2 ", "Fr.FS"}) {
        SCOPED_TRACE(Name);
        TabForm F;
        F.Tabs->setCurrentIndex(std::strcmp(Name, "Fr.FS") == 0 ? 1 : 0);
        QWidget* Focused = nullptr;
        int TabShown = -1;
        QTimer::singleShot(0, &F, [&] {
            test::WaitFor([&] { return F.isActiveWindow(); });
            Focused = QApplication::focusWidget();
            TabShown = F.Tabs->currentIndex();
            F.reject();
        });
        EXPECT_EQ(F.ShowModalFocused(QString::fromLatin1(Name)), mrCancel);
        QWidget* Expected = std::strcmp(Name, "Fr.FS") == 0 ? static_cast<QWidget*>(F.FS) : F.S2;
        EXPECT_EQ(Focused, Expected);
        EXPECT_EQ(TabShown, Expected == F.S2 ? 1 : 0);
    }
    // Already visible: only brought up, the focus moved, no second modal loop.
    TabForm F;
    ASSERT_TRUE(test::Activate(F, F.Top));
    EXPECT_EQ(F.ShowModalFocused(QStringLiteral("S2")), mrNone);
    EXPECT_EQ(F.Tabs->currentIndex(), 1);
    EXPECT_TRUE(test::WaitFor([&] { return QApplication::focusWidget() == F.S2; }));
    F.reject();
}

TEST_F(FormTest, ResetToCreateStateLeavesInactivePagesUnlessAskedForAll) {
    for (const bool CallFormCreate : {true, false}) {
        SCOPED_TRACE(CallFormCreate);
        TabForm F(CallFormCreate);
        // Without FormCreate the first use takes the creation values: still the constructor's.
        F.SetCopyValues();
        F.P1->SetValue(9);
        F.S2->setText(QStringLiteral("x"));
        F.ResetToCreateFormState(false);
        EXPECT_TRUE(F.RevertingToDefaults);
        EXPECT_EQ(F.P1->Value(), 1.0L);
        EXPECT_EQ(F.S2->text(), QStringLiteral("x")) << "page Two is not the current page";
        F.ResetToCreateFormState(true);
        EXPECT_EQ(F.S2->text(), QStringLiteral("two"));
        F.FormCreate();
        EXPECT_FALSE(F.RevertingToDefaults);
    }
}

TEST_F(FormTest, ControlIsVisibleFollowsFlagsAndCurrentPagesUpToTheForm) {
    TabForm F;
    F.Box->hide();
    // The form itself is judged by its own flag (not shown yet); its controls are not.
    struct Case {
        QWidget* W;
        bool Visible;
    };
    const Case Cases[] = {{F.Top, true},   {F.P1, true},     {F.FS, true},   {F.S2, false},  {F.Page2, false},
                          {F.Page1, true}, {F.InBox, false}, {F.Box, false}, {F.Tabs, true}, {&F, false}};
    for (const Case& K : Cases)
        EXPECT_EQ(F.ControlIsVisible(K.W), K.Visible) << K.W->objectName().toStdString();
    F.Tabs->setCurrentIndex(1);
    EXPECT_TRUE(F.ControlIsVisible(F.S2));
    EXPECT_FALSE(F.ControlIsVisible(F.P1));
    F.Tabs->hide();
    EXPECT_FALSE(F.ControlIsVisible(F.S2));
    F.P1->hide();
    EXPECT_FALSE(F.ControlIsVisible(nullptr));
}

struct OtherForm : TFieldForm {};

TEST_F(FormTest, AssignCopiesFieldsAndFramesBetweenFormsOfOneClass) {
    TabForm Source, Target;
    Source.P1->SetValue(42);
    Source.FS->setText(QStringLiteral("from source"));
    Source.Top->setChecked(true);
    Target.Assign(Source);
    EXPECT_EQ(Target.P1->Value(), 42.0L);
    EXPECT_EQ(Target.FS->text(), QStringLiteral("from source"));
    EXPECT_TRUE(Target.Top->isChecked());
    EXPECT_EQ(Target.S2->text(), QStringLiteral("two"));
    OtherForm Other;
    EXPECT_THROW(Other.Assign(Source), EConvertError);
}

TEST_F(FormTest, HelpAsksTheHelpHandlerForTheFormsContext) {
    std::vector<int> Asked;
    const THelpHandler Old = SetHelpHandler([&](int Ctx) {
        Asked.push_back(Ctx);
        return true;
    });
    TabForm F;
    F.SetHelpContext(42);
    ASSERT_TRUE(test::Activate(F, F.S2));
    QTest::mouseClick(F.HelpBtn(), Qt::LeftButton);
    EXPECT_EQ(Asked, std::vector<int>{42});
    EXPECT_TRUE(F.isVisible());
    EXPECT_EQ(QApplication::focusWidget(), F.S2) << "a click on Help leaves the focus";
    F.reject();
    SetHelpHandler(Old);
}

TEST(EditToLines, CaptionColumnValueAndIdentifier) {
    QLineEdit E(QStringLiteral("101.325"));
    const QString Long61(61, QLatin1Char('L'));
    const QString Wide50(50, QLatin1Char('W'));
    struct Case {
        QString Caption;
        QString ParID;
        QStringList Lines;
    };
    const Case Cases[] = {
        {QStringLiteral("Pressure"),
         QStringLiteral("kPa"),
         {QStringLiteral("Pressure") + QString(32, QLatin1Char(' ')) + QStringLiteral(" 101.325 kPa")}},
        {QStringLiteral("Ratio"),
         QString(),
         {QStringLiteral("Ratio") + QString(35, QLatin1Char(' ')) + QStringLiteral(" 101.325")}},
        {Wide50, QStringLiteral("kPa"), {Wide50 + QStringLiteral(" 101.325 kPa")}},
        {Long61,
         QStringLiteral("kPa"),
         {Long61, QString(40, QLatin1Char(' ')) + QStringLiteral(" 101.325 kPa")}},
    };
    for (const Case& K : Cases) {
        QStringList Lines{QStringLiteral("before")};
        TEditToLines(Lines, K.Caption, K.ParID, &E);
        EXPECT_EQ(Lines, QStringList{QStringLiteral("before")} + K.Lines) << K.Caption.toStdString();
    }
}

} // namespace

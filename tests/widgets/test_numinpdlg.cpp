// The numeric input query, driven through its hook as a user would: clamping, captions, Help,
// the focus on activation, and OK refusing a value outside the limits.
#include <qxnum/dialogs.h>
#include <qxnum/widgets/numfld.h>
#include <qxnum/widgets/numinpdlg.h>

#include "dialogrecorder.h"
#include "fieldtest.h"
#include "settingsguard.h"
#include "widgettest.h"

#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

#include <cmath>

using namespace qxnum;
using qxnum::test::DialogRecorder;
using qxnum::test::SettingsGuard;

namespace {

// Runs Action on the dialog once its event loop runs; Seen gets the dialog's state before it shows.
struct QueryDriver {
    std::function<void(TNumInpDlgForm*)> Seen;
    std::function<void(TNumInpDlgForm*)> Action;
    TNumInpDlgHook Previous;
    QueryDriver() {
        Previous = SetNumInpDlgHook([this](TNumInpDlgForm* Dlg) {
            if (Seen) Seen(Dlg);
            QTimer::singleShot(0, Dlg, [this, Dlg] {
                qxnum::test::WaitFor([Dlg] { return Dlg->isActiveWindow(); });
                Action(Dlg);
            });
        });
    }
    ~QueryDriver() { SetNumInpDlgHook(Previous); }
};

void Cancel(TNumInpDlgForm* Dlg) {
    QTest::mouseClick(Dlg->Cancelbtn(), Qt::LeftButton);
}

void TypeAndOk(TNumInpDlgForm* Dlg, const QString& Text) {
    TNumFld* F = Dlg->NumFld1();
    F->selectAll();
    for (QChar C : Text)
        QTest::keyClick(F, C.toLatin1());
    QTest::mouseClick(Dlg->OKbtn(), Qt::LeftButton);
}

struct NumInpTest : ::testing::Test {
    SettingsGuard Guard{TFormatSettings::Invariant(), TFormatSettings::Invariant()};
    DialogRecorder Dialogs;
    QueryDriver Driver;
};

TEST_F(NumInpTest, StartValueIsClampedAndStaysClampedAfterCancel) {
    struct Case {
        double Value, Min, Max, Clamped;
    };
    for (const Case& C :
         std::vector<Case>{{50, 0, 10, 10}, {-5, 0, 10, 0}, {NAN, 0, 10, 0}, {5, 0, 10, 5}, {3, 7, 7, 7}}) {
        double Shown = -1.0;
        Driver.Seen = [&](TNumInpDlgForm* Dlg) { Shown = static_cast<double>(Dlg->NumFld1()->GetValue()); };
        Driver.Action = Cancel;
        double V = C.Value;
        EXPECT_FALSE(NumInputQuery(QString(), QString(), 0, ntGeneral, 2, C.Min, C.Max, V, FormatSettings));
        EXPECT_EQ(V, C.Clamped) << "from " << C.Value;
        EXPECT_EQ(Shown, C.Clamped);
    }
}

TEST_F(NumInpTest, CaptionsPromptAndHelpButton) {
    struct Case {
        QString Caption, Prompt;
        int Help;
        QString Title, Label;
    };
    const std::vector<Case> Cases = {
        {QString(), QString(), 0, QStringLiteral("Enter Numerical Value"), QStringLiteral("Enter value")},
        {QStringLiteral("Mission"), QStringLiteral("Time of the phase"), 12, QStringLiteral("Mission"),
         QStringLiteral("Time of the phase")},
    };
    std::vector<int> HelpAsked;
    const THelpHandler OldHelp = SetHelpHandler([&](int Context) {
        HelpAsked.push_back(Context);
        return true;
    });
    for (const Case& C : Cases) {
        Driver.Seen = [&](TNumInpDlgForm* Dlg) {
            EXPECT_EQ(Dlg->objectName(), QStringLiteral("NumInpDlgForm"));
            EXPECT_EQ(Dlg->windowTitle(), C.Title);
            EXPECT_EQ(Dlg->NumFld1()->EditLabel()->text(), C.Label);
            EXPECT_EQ(Dlg->HelpContext(), C.Help);
            EXPECT_EQ(!Dlg->HelpBtn()->isHidden(), C.Help != 0);
        };
        Driver.Action = [&](TNumInpDlgForm* Dlg) {
            if (!Dlg->HelpBtn()->isHidden()) QTest::mouseClick(Dlg->HelpBtn(), Qt::LeftButton);
            Cancel(Dlg);
        };
        double V = 1.0;
        NumInputQuery(C.Caption, C.Prompt, C.Help, ntGeneral, 2, 0, 10, V, FormatSettings);
    }
    SetHelpHandler(OldHelp);
    EXPECT_EQ(HelpAsked, std::vector<int>{12});
}

TEST_F(NumInpTest, TheFieldHasTheFocusAndOkReturnsTheTypedValue) {
    QString Focused;
    Driver.Action = [&](TNumInpDlgForm* Dlg) {
        Focused = QApplication::focusWidget() ? QApplication::focusWidget()->objectName() : QString();
        TypeAndOk(Dlg, QStringLiteral("7.25"));
    };
    double V = 1.0;
    EXPECT_TRUE(NumInputQuery(QStringLiteral("Q"), QString(), 0, ntFixed, 2, 0, 10, V, FormatSettings));
    EXPECT_EQ(V, 7.25);
    EXPECT_EQ(Focused, QStringLiteral("NumFld1"));
    EXPECT_EQ(Dialogs.Count(), 0);
}

TEST_F(NumInpTest, OkRefusesAValueOutsideTheLimitsAndStaysOpen) {
    int Tries = 0;
    bool StillOpen = false;
    Driver.Action = [&](TNumInpDlgForm* Dlg) {
        ++Tries;
        TypeAndOk(Dlg, QStringLiteral("8"));
        TypeAndOk(Dlg, QStringLiteral("3"));
        StillOpen = Dlg->isVisible();
        // Only the one value of a range whose limits are equal is taken.
        TypeAndOk(Dlg, QStringLiteral("7"));
    };
    double V = 7.0;
    EXPECT_TRUE(NumInputQuery(QString(), QString(), 0, ntGeneral, 2, 7, 7, V, FormatSettings));
    EXPECT_EQ(Tries, 1);
    EXPECT_TRUE(StillOpen);
    EXPECT_EQ(V, 7.0);
    ASSERT_EQ(Dialogs.Count(), 2) << "above and below the one value";
    EXPECT_EQ(Dialogs.Dialogs()[1].DlgType, mtError);
}

} // namespace

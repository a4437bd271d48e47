#include <qxnum/dialogs.h>
#include <qxnum/widgets/messagebox.h>

#include "dialogrecorder.h"

#include <QApplication>
#include <QTimer>
#include <QWidget>
#include <gtest/gtest.h>

#include <vector>

using namespace qxnum;
using qxnum::test::DialogRecorder;

TEST(MessageDlg, RecorderScriptsAnswersAndRecordsEverything) {
    DialogRecorder Recorder;
    Recorder.Script({mrNo, mrYes});
    EXPECT_EQ(MessageDlg(QStringLiteral("Save?"), mtConfirmation, mbYesNoCancel), mrNo);
    EXPECT_EQ(MessageDlg(QStringLiteral("Sure?"), mtConfirmation, mbYesNo), mrYes);
    // Script exhausted: the dialog is closed, which is Cancel when offered.
    EXPECT_EQ(MessageDlg(QStringLiteral("Again?"), mtWarning, mbYesNoCancel), mrCancel);
    ASSERT_EQ(Recorder.Count(), 3);
    EXPECT_EQ(Recorder.Messages(), (QStringList{"Save?", "Sure?", "Again?"}));
    EXPECT_EQ(Recorder.Dialogs()[0].DlgType, mtConfirmation);
    EXPECT_EQ(Recorder.Dialogs()[1].Buttons, mbYesNo);
    EXPECT_EQ(Recorder.Dialogs()[2].DlgType, mtWarning);
}

TEST(MessageDlg, DefaultResultWhenClosedWithoutAButton) {
    struct Case {
        TMsgDlgButtons Buttons;
        int Result;
    };
    const Case Cases[] = {
        {mbOK, mrOk},   {mbOKCancel, mrCancel}, {mbYesNoCancel, mrCancel},  {mbYesNo, mrNone},
        {mbYes, mrYes}, {mbClose, mrClose},     {TMsgDlgButtons(), mrNone},
    };
    for (const Case& C : Cases)
        EXPECT_EQ(DefaultDialogResult(C.Buttons), C.Result) << C.Buttons.toInt();
}

TEST(MessageDlg, HandlersNestAndRestore) {
    int Outer = 0;
    const TMessageDlgHandler Saved = SetMessageDlgHandler([&](const QString&, TMsgDlgType, TMsgDlgButtons) {
        ++Outer;
        return mrOk;
    });
    {
        DialogRecorder Inner;
        MessageDlg(QStringLiteral("to the recorder"), mtError, mbOK);
        EXPECT_EQ(Inner.Count(), 1);
    }
    EXPECT_EQ(MessageDlg(QStringLiteral("to the outer handler"), mtError, mbOK), mrOk);
    EXPECT_EQ(Outer, 1);
    // An empty handler brings back the built-in one, which answers with the default result.
    SetMessageDlgHandler(nullptr);
    EXPECT_EQ(MessageDlg(QStringLiteral("built-in (printed to stderr)"), mtInformation, mbOKCancel),
              mrCancel);
    SetMessageDlgHandler(Saved);
}

TEST(MessageDlg, HandlerMayReplaceItselfWhileRunning) {
    TMessageDlgHandler Saved;
    Saved = SetMessageDlgHandler([&](const QString&, TMsgDlgType, TMsgDlgButtons) {
        SetMessageDlgHandler([](const QString&, TMsgDlgType, TMsgDlgButtons) { return mrNo; });
        return mrYes;
    });
    EXPECT_EQ(MessageDlg(QStringLiteral("first"), mtConfirmation, mbYesNo), mrYes);
    EXPECT_EQ(MessageDlg(QStringLiteral("second"), mtConfirmation, mbYesNo), mrNo);
    SetMessageDlgHandler(Saved);
}

TEST(ShowHelp, GoesToTheInstalledHandlerAndNowhereWithoutOne) {
    EXPECT_FALSE(ShowHelp(17));
    std::vector<int> Asked;
    const THelpHandler Old = SetHelpHandler([&](int Ctx) {
        Asked.push_back(Ctx);
        return Ctx != 0;
    });
    EXPECT_FALSE(Old);
    EXPECT_TRUE(ShowHelp(17));
    EXPECT_FALSE(ShowHelp(0));
    EXPECT_EQ(Asked, (std::vector<int>{17, 0}));
    SetHelpHandler({});
    EXPECT_FALSE(ShowHelp(17));
    EXPECT_EQ(Asked.size(), 2u);
}

// The tests run on the offscreen platform, where no one can close a box: the default handler logs
// the message and answers with the default button at once.
TEST(MessageBoxHandler, WithoutAScreenLogsAndAnswersWithTheDefaultButton) {
    ASSERT_EQ(QGuiApplication::platformName(), QStringLiteral("offscreen"));
    static QStringList Logged;
    Logged.clear();
    const QtMessageHandler Saved =
        qInstallMessageHandler([](QtMsgType Type, const QMessageLogContext&, const QString& Msg) {
            if (Type == QtWarningMsg) Logged << Msg;
        });
    // A box that does come up is closed after a while, so that the old behaviour fails, not hangs.
    int BoxesShown = 0;
    QTimer Closer;
    QObject::connect(&Closer, &QTimer::timeout, [&] {
        if (QWidget* Box = QApplication::activeModalWidget()) {
            ++BoxesShown;
            Box->close();
        }
    });
    Closer.start(100);
    struct Case {
        TMsgDlgType DlgType;
        TMsgDlgButtons Buttons;
        int Result;
        const char* Logged;
    };
    const Case Cases[] = {
        {mtError, mbOK, mrOk, "Error: out of range"},
        {mtConfirmation, mbYesNo, mrYes, "Confirm: out of range"},
        {mtConfirmation, mbYesNoCancel, mrYes, "Confirm: out of range"},
        {mtWarning, mbOKCancel, mrOk, "Warning: out of range"},
        {mtWarning, TMsgDlgButtons(mbAbort) | mbRetry | mbIgnore, mrRetry, "Warning: out of range"},
        {mtInformation, TMsgDlgButtons(mbNo) | mbCancel, mrNo, "Information: out of range"},
        {mtInformation, TMsgDlgButtons(), mrOk, "Information: out of range"},
    };
    for (const Case& C : Cases) {
        SCOPED_TRACE(C.Buttons.toInt());
        Logged.clear();
        EXPECT_EQ(MessageBoxHandler(QStringLiteral("out of range"), C.DlgType, C.Buttons), C.Result);
        EXPECT_EQ(Logged, QStringList{QString::fromUtf8(C.Logged)});
    }
    EXPECT_EQ(BoxesShown, 0);
    qInstallMessageHandler(Saved);
}

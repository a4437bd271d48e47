// Test main: an offscreen QApplication, fixed format settings, and a dialog handler that fails
// the running test on any message that no DialogRecorder expected.
#include <qxnum/dialogs.h>
#include <qxnum/formatsettings.h>

#include <QApplication>
#include <gtest/gtest.h>

#include <cstdlib>

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    qputenv("QT_QPA_PLATFORM",
            qgetenv("QT_QPA_PLATFORM").isEmpty() ? "offscreen" : qgetenv("QT_QPA_PLATFORM"));
    QApplication App(argc, argv);
    qxnum::FormatSettings = qxnum::TFormatSettings::Invariant();
    qxnum::NumInpFormatSettings = qxnum::TFormatSettings::Invariant();
    qxnum::SetMessageDlgHandler([](const QString& Msg, qxnum::TMsgDlgType, qxnum::TMsgDlgButtons Buttons) {
        ADD_FAILURE() << "unexpected message dialog: " << Msg.toStdString();
        return qxnum::DefaultDialogResult(Buttons);
    });
    return RUN_ALL_TESTS();
}

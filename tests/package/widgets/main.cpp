// A widgets host: the value text of a unit table entry and a numeric edit holding a value.
#include <qxnum/qxnum.h>

#include <QApplication>

#include <cstdio>

int main(int argc, char** argv) {
    using namespace qxnum;
    QApplication App(argc, argv);
    FormatSettings = TFormatSettings::Invariant();
    NumInpFormatSettings = TFormatSettings::Invariant();
    const QString Text = ParToStr(ptPress, usSI, QString(), true, 250000.0L);
    std::printf("%s\n", Text.toUtf8().constData());
    if (Text != QStringLiteral("2.500")) return 1;

    // A message would open a modal box and wait; a host test reports it and fails instead.
    int Messages = 0;
    SetMessageDlgHandler([&Messages](const QString& Msg, TMsgDlgType, TMsgDlgButtons Buttons) {
        std::printf("message: %s\n", Msg.toUtf8().constData());
        ++Messages;
        return DefaultDialogResult(Buttons);
    });
    TNumEdit Edit;
    Edit.SetMax(1e6L);
    Edit.SetValue(250000.0L);
    const Extended Held = Edit.Value();
    std::printf("held %.6Lg, shown %s\n", Held, Edit.text().toUtf8().constData());
    return Held == 250000.0L && Messages == 0 ? 0 : 2;
}

// The default message-dialog handler of a widgets application: a modal QMessageBox, or the log
// on a platform without a screen.
#include <qxnum/widgets/messagebox.h>

#include <QApplication>
#include <QMessageBox>
#include <QtDebug>

namespace qxnum {

namespace {

struct TButtonMap {
    TMsgDlgBtn Button;
    QMessageBox::StandardButton Standard;
    int Result;
};

constexpr TButtonMap ButtonMap[] = {
    {mbYes, QMessageBox::Yes, mrYes},
    {mbNo, QMessageBox::No, mrNo},
    {mbOK, QMessageBox::Ok, mrOk},
    {mbCancel, QMessageBox::Cancel, mrCancel},
    {mbAbort, QMessageBox::Abort, mrAbort},
    {mbRetry, QMessageBox::Retry, mrRetry},
    {mbIgnore, QMessageBox::Ignore, mrIgnore},
    {mbNoToAll, QMessageBox::NoToAll, mrNoToAll},
    {mbYesToAll, QMessageBox::YesToAll, mrYesToAll},
    {mbHelp, QMessageBox::Help, mrHelp},
    {mbClose, QMessageBox::Close, mrClose},
};

// The button Enter presses: OK, else Yes, else Retry, else the first one offered; a box without
// buttons shows OK.
const TButtonMap& DefaultButton(TMsgDlgButtons Buttons) {
    static const TButtonMap Ok{mbOK, QMessageBox::Ok, mrOk};
    for (const TMsgDlgBtn B : {mbOK, mbYes, mbRetry})
        for (const auto& M : ButtonMap)
            if (M.Button == B && Buttons.testFlag(B)) return M;
    for (const auto& M : ButtonMap)
        if (Buttons.testFlag(M.Button)) return M;
    return Ok;
}

QString Title(TMsgDlgType DlgType) {
    switch (DlgType) {
    case mtWarning:
        return QObject::tr("Warning");
    case mtError:
        return QObject::tr("Error");
    case mtInformation:
        return QObject::tr("Information");
    case mtConfirmation:
        return QObject::tr("Confirm");
    case mtCustom:
        break;
    }
    return QApplication::applicationDisplayName();
}

// Platforms on which no user can see, let alone close, a window.
bool Headless() {
    const QString P = QGuiApplication::platformName();
    return P.compare(QLatin1String("offscreen"), Qt::CaseInsensitive) == 0 ||
           P.compare(QLatin1String("minimal"), Qt::CaseInsensitive) == 0;
}

} // namespace

int MessageBoxHandler(const QString& Msg, TMsgDlgType DlgType, TMsgDlgButtons Buttons) {
    if (!qobject_cast<QApplication*>(QCoreApplication::instance())) return DefaultDialogResult(Buttons);
    const TButtonMap& Default = DefaultButton(Buttons);
    if (Headless()) {
        qWarning().noquote() << Title(DlgType) + QStringLiteral(": ") + Msg;
        return Default.Result;
    }
    QMessageBox Box(QApplication::activeWindow());
    Box.setText(Msg);
    Box.setWindowTitle(Title(DlgType));
    switch (DlgType) {
    case mtWarning:
        Box.setIcon(QMessageBox::Warning);
        break;
    case mtError:
        Box.setIcon(QMessageBox::Critical);
        break;
    case mtInformation:
        Box.setIcon(QMessageBox::Information);
        break;
    case mtConfirmation:
        Box.setIcon(QMessageBox::Question);
        break;
    case mtCustom:
        break;
    }
    QMessageBox::StandardButtons Standard;
    for (const auto& M : ButtonMap)
        if (Buttons.testFlag(M.Button)) Standard |= M.Standard;
    if (Standard == QMessageBox::NoButton) Standard = QMessageBox::Ok;
    Box.setStandardButtons(Standard);
    Box.setDefaultButton(Default.Standard);
    Box.exec();
    const auto Clicked = Box.standardButton(Box.clickedButton());
    for (const auto& M : ButtonMap)
        if (M.Standard == Clicked && Buttons.testFlag(M.Button)) return M.Result;
    if (Clicked == QMessageBox::Ok) return mrOk;
    return Buttons.testFlag(mbCancel) ? mrCancel : DefaultDialogResult(Buttons);
}

namespace {

// Installed when the widgets library is loaded.
const bool Installed = [] {
    SetMessageDlgHandler(MessageBoxHandler);
    return true;
}();

} // namespace

} // namespace qxnum

// The default message-dialog handler of a widgets application: a modal QMessageBox.
#include <qxnum/dialogs.h>

#include <QApplication>
#include <QMessageBox>

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

int MessageBoxHandler(const QString& Msg, TMsgDlgType DlgType, TMsgDlgButtons Buttons) {
    if (!qobject_cast<QApplication*>(QCoreApplication::instance())) return DefaultDialogResult(Buttons);
    QMessageBox Box(QApplication::activeWindow());
    Box.setText(Msg);
    switch (DlgType) {
    case mtWarning:
        Box.setIcon(QMessageBox::Warning);
        Box.setWindowTitle(QObject::tr("Warning"));
        break;
    case mtError:
        Box.setIcon(QMessageBox::Critical);
        Box.setWindowTitle(QObject::tr("Error"));
        break;
    case mtInformation:
        Box.setIcon(QMessageBox::Information);
        Box.setWindowTitle(QObject::tr("Information"));
        break;
    case mtConfirmation:
        Box.setIcon(QMessageBox::Question);
        Box.setWindowTitle(QObject::tr("Confirm"));
        break;
    case mtCustom:
        Box.setWindowTitle(QApplication::applicationDisplayName());
        break;
    }
    QMessageBox::StandardButtons Standard;
    for (const auto& M : ButtonMap)
        if (Buttons.testFlag(M.Button)) Standard |= M.Standard;
    if (Standard == QMessageBox::NoButton) Standard = QMessageBox::Ok;
    Box.setStandardButtons(Standard);
    Box.exec();
    const auto Clicked = Box.standardButton(Box.clickedButton());
    for (const auto& M : ButtonMap)
        if (M.Standard == Clicked && Buttons.testFlag(M.Button)) return M.Result;
    if (Clicked == QMessageBox::Ok) return mrOk;
    return Buttons.testFlag(mbCancel) ? mrCancel : DefaultDialogResult(Buttons);
}

// Installed when the widgets library is loaded.
const bool Installed = [] {
    SetMessageDlgHandler(MessageBoxHandler);
    return true;
}();

} // namespace

} // namespace qxnum

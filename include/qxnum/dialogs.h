/// \file
/// The message-dialog service. Every message the library shows goes through MessageDlg, whose
/// handler a host (or a test) can replace. The widgets library installs a QMessageBox handler when
/// it is loaded (MessageBoxHandler, qxnum/widgets/messagebox.h); without it, messages go to stderr
/// and are answered with the default result.
/// Unlike the original, a program without a screen never waits on a message (deliberate
/// deviation 7): on the offscreen and minimal platforms the QMessageBox handler writes the message
/// to the log (qWarning) and answers with the dialog's default button (OK, else Yes, else Retry),
/// so a headless host that calls SetValue outside the limits goes on instead of hanging.
#pragma once

#include <qxnum/core_export.h>

#include <QFlags>
#include <QString>

#include <functional>

namespace qxnum {

enum TMsgDlgType : quint8 { mtWarning, mtError, mtInformation, mtConfirmation, mtCustom };

enum TMsgDlgBtn : quint16 {
    mbYes = 0x0001,
    mbNo = 0x0002,
    mbOK = 0x0004,
    mbCancel = 0x0008,
    mbAbort = 0x0010,
    mbRetry = 0x0020,
    mbIgnore = 0x0040,
    mbAll = 0x0080,
    mbNoToAll = 0x0100,
    mbYesToAll = 0x0200,
    mbHelp = 0x0400,
    mbClose = 0x0800,
};
Q_DECLARE_FLAGS(TMsgDlgButtons, TMsgDlgBtn)
Q_DECLARE_OPERATORS_FOR_FLAGS(TMsgDlgButtons)

inline constexpr TMsgDlgButtons mbYesNo = mbYes | mbNo;
inline constexpr TMsgDlgButtons mbYesNoCancel = mbYes | mbNo | mbCancel;
inline constexpr TMsgDlgButtons mbOKCancel = mbOK | mbCancel;

/// Modal results.
enum : int {
    mrNone = 0,
    mrOk = 1,
    mrCancel = 2,
    mrAbort = 3,
    mrRetry = 4,
    mrIgnore = 5,
    mrYes = 6,
    mrNo = 7,
    mrClose = 8,
    mrHelp = 9,
    mrAll = 12,
    mrNoToAll = 13,
    mrYesToAll = 14,
};

using TMessageDlgHandler =
    std::function<int(const QString& Msg, TMsgDlgType DlgType, TMsgDlgButtons Buttons)>;

/// Shows Msg and returns the modal result of the button pressed.
QXNUM_CORE_EXPORT int MessageDlg(const QString& Msg, TMsgDlgType DlgType, TMsgDlgButtons Buttons,
                                 int HelpCtx = 0);
/// Replaces the handler and returns the previous one. An empty handler restores the built-in one.
QXNUM_CORE_EXPORT TMessageDlgHandler SetMessageDlgHandler(TMessageDlgHandler Handler);
/// The help service: a Help button (of a field form, of the numeric input query) asks the host's
/// help system for the topic of a help context through this handler. Without one, nothing happens
/// and ShowHelp returns false.
using THelpHandler = std::function<bool(int HelpContext)>;
/// Asks the help handler for the topic of HelpContext; false when there is no handler or it
/// declined.
QXNUM_CORE_EXPORT bool ShowHelp(int HelpContext);
/// Replaces the help handler and returns the previous one; an empty handler removes it.
QXNUM_CORE_EXPORT THelpHandler SetHelpHandler(THelpHandler Handler);

/// The result a dialog gives when it is closed without a button: Cancel when offered, else the
/// only affirmative button offered (OK, Yes), else mrNone.
QXNUM_CORE_EXPORT int DefaultDialogResult(TMsgDlgButtons Buttons);

} // namespace qxnum

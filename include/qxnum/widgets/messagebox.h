/// \file
/// The widgets library's message-dialog handler, which MessageDlg uses unless a host installs its
/// own (SetMessageDlgHandler). It is installed when the library is loaded; a host that replaced
/// it can put it back with SetMessageDlgHandler(MessageBoxHandler).
#pragma once

#include <qxnum/dialogs.h>
#include <qxnum/widgets_export.h>

namespace qxnum {

/// Shows Msg in a modal QMessageBox (icon and title from DlgType) and returns the modal result of
/// the button pressed; the default button (Enter) is OK when offered, else Yes, else Retry, else
/// the first button offered.
/// Unlike the original, it does not block a program without a screen (deliberate deviation 7): on
/// the offscreen and minimal platforms, where nobody could press a button, the message goes to
/// the log (qWarning, "Warning: " or "Error: " and the text) and the answer is the default
/// button's result at once. Without a QApplication the answer is DefaultDialogResult(Buttons).
QXNUM_WIDGETS_EXPORT int MessageBoxHandler(const QString& Msg, TMsgDlgType DlgType, TMsgDlgButtons Buttons);

} // namespace qxnum

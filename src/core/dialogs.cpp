#include <qxnum/dialogs.h>

#include <cstdio>

namespace qxnum {

namespace {

int StderrHandler(const QString& Msg, TMsgDlgType, TMsgDlgButtons Buttons) {
    std::fprintf(stderr, "%s\n", Msg.toLocal8Bit().constData());
    return DefaultDialogResult(Buttons);
}

TMessageDlgHandler& CurrentHandler() {
    static TMessageDlgHandler Handler = StderrHandler;
    return Handler;
}

THelpHandler& CurrentHelpHandler() {
    static THelpHandler Handler;
    return Handler;
}

} // namespace

bool ShowHelp(int HelpContext) {
    const THelpHandler Handler = CurrentHelpHandler();
    return Handler ? Handler(HelpContext) : false;
}

THelpHandler SetHelpHandler(THelpHandler Handler) {
    THelpHandler Previous = CurrentHelpHandler();
    CurrentHelpHandler() = std::move(Handler);
    return Previous;
}

int DefaultDialogResult(TMsgDlgButtons Buttons) {
    if (Buttons.testFlag(mbCancel)) return mrCancel;
    if (Buttons.testFlag(mbOK)) return mrOk;
    if (Buttons.testFlag(mbClose)) return mrClose;
    if (Buttons == TMsgDlgButtons(mbYes)) return mrYes;
    return mrNone;
}

int MessageDlg(const QString& Msg, TMsgDlgType DlgType, TMsgDlgButtons Buttons, int /*HelpCtx*/) {
    // Copy first: a handler may replace itself while it runs.
    const TMessageDlgHandler Handler = CurrentHandler();
    return Handler(Msg, DlgType, Buttons);
}

TMessageDlgHandler SetMessageDlgHandler(TMessageDlgHandler Handler) {
    TMessageDlgHandler Previous = CurrentHandler();
    CurrentHandler() = Handler ? std::move(Handler) : TMessageDlgHandler(StderrHandler);
    return Previous;
}

} // namespace qxnum

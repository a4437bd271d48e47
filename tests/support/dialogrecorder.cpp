#include "dialogrecorder.h"

namespace qxnum::test {

DialogRecorder::DialogRecorder() {
    FPrevious = SetMessageDlgHandler([this](const QString& Msg, TMsgDlgType DlgType, TMsgDlgButtons Buttons) {
        FDialogs.push_back({Msg, DlgType, Buttons});
        if (FAnswers.empty()) return DefaultDialogResult(Buttons);
        const int Answer = FAnswers.front();
        FAnswers.pop_front();
        return Answer;
    });
}

DialogRecorder::~DialogRecorder() {
    SetMessageDlgHandler(FPrevious);
}

QStringList DialogRecorder::Messages() const {
    QStringList List;
    for (const auto& D : FDialogs)
        List << D.Msg;
    return List;
}

} // namespace qxnum::test

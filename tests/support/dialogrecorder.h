// Test double for the message-dialog service: records every dialog and answers from a script.
#pragma once

#include <qxnum/dialogs.h>

#include <QString>
#include <QStringList>

#include <deque>
#include <vector>

namespace qxnum::test {

struct TRecordedDialog {
    QString Msg;
    TMsgDlgType DlgType;
    TMsgDlgButtons Buttons;
};

// Installs itself for its lifetime; dialogs without a scripted answer get DefaultDialogResult.
class DialogRecorder {
public:
    DialogRecorder();
    ~DialogRecorder();
    DialogRecorder(const DialogRecorder&) = delete;
    DialogRecorder& operator=(const DialogRecorder&) = delete;

    // Answers for the next dialogs, in order.
    void Script(std::initializer_list<int> Answers) { FAnswers.insert(FAnswers.end(), Answers); }
    const std::vector<TRecordedDialog>& Dialogs() const { return FDialogs; }
    QStringList Messages() const;
    int Count() const { return static_cast<int>(FDialogs.size()); }
    void Clear() { FDialogs.clear(); }

private:
    std::vector<TRecordedDialog> FDialogs;
    std::deque<int> FAnswers;
    TMessageDlgHandler FPrevious;
};

} // namespace qxnum::test

// The private state of TFieldBase; field classes with state of their own derive from it.
#pragma once

#include <qxnum/widgets/fieldbase.h>

namespace qxnum {

class TFieldBasePrivate {
public:
    TFieldBasePrivate() = default;
    virtual ~TFieldBasePrivate();
    TFieldBasePrivate(const TFieldBasePrivate&) = delete;
    TFieldBasePrivate& operator=(const TFieldBasePrivate&) = delete;

    QWidget* FControl = nullptr;
    int FTagXML = 0;
    int FTag = 0;
    QString FCustomIDstring;
    bool FEnforceXMLchanged = false;
    bool FStreamReadVisibleandEnabled = false;
    bool FNoSaveWrite = false;
    TNotifyEvent FOnAfterRead;
    TXmlNodeEvent FOnAfterXMLWrite;
    TXmlNodeEvent FOnXmlWriteValueChanged;
};

inline Qt::CheckState CheckStateToQt(TCheckBoxState S) {
    switch (S) {
    case cbChecked:
        return Qt::Checked;
    case cbGrayed:
        return Qt::PartiallyChecked;
    default:
        return Qt::Unchecked;
    }
}

inline TCheckBoxState CheckStateFromQt(Qt::CheckState S) {
    switch (S) {
    case Qt::Checked:
        return cbChecked;
    case Qt::PartiallyChecked:
        return cbGrayed;
    default:
        return cbUnchecked;
    }
}

} // namespace qxnum

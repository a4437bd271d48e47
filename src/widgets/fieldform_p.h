// Private state of TFieldForm and the walks over its fields that both halves use.
#pragma once

#include <qxnum/registry.h>
#include <qxnum/widgets/fieldform.h>

#include <QPointer>
#include <QPushButton>

namespace qxnum {

class TFieldFramePrivate {};

class TFieldFormPrivate {
public:
    QWidget* Client = nullptr;
    QWidget* Panel = nullptr;
    QPushButton* OK = nullptr;
    QPushButton* Cancel = nullptr;
    QPushButton* Help = nullptr;
    int HelpContext = 0;
    bool Created = false;
    int ModalResult = 0;
    // The field ShowModalFocused wants focused once the form shows.
    QPointer<QWidget> PendingFocus;

    // Calls Do(component, field) for each directly owned field, in component order.
    template <typename F> static void ForEachOwnField(QObject* Owner, F&& Do) {
        for (QObject* C : ComponentsOf(Owner))
            if (INumFld* Fld = Supports(C)) Do(C, Fld);
    }
    // The same, then the fields of each directly owned frame (one level, as the frame is a unit).
    template <typename F> static void ForEachFieldAndFrameField(QObject* Owner, F&& Do) {
        for (QObject* C : ComponentsOf(Owner)) {
            if (INumFld* Fld = Supports(C))
                Do(C, Fld);
            else if (IsFieldFrame(C))
                ForEachOwnField(C, Do);
        }
    }
};

} // namespace qxnum

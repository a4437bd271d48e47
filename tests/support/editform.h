// A window "Form1" with the numeric edits "p1" and "p2" (range -1000..1000) and a button, for
// tests that move the focus.
#pragma once

#include <qxnum/widgets/numedit.h>

#include "widgettest.h"

#include <QPushButton>
#include <QVBoxLayout>

namespace qxnum::test {

struct TEditForm {
    QWidget W;
    TNumEdit* E1 = new TNumEdit(&W);
    TNumEdit* E2 = new TNumEdit(&W);
    TEditForm() {
        W.setObjectName(QStringLiteral("Form1"));
        E1->setObjectName(QStringLiteral("p1"));
        E2->setObjectName(QStringLiteral("p2"));
        auto* L = new QVBoxLayout(&W);
        for (TNumEdit* E : {E1, E2}) {
            E->SetMax(1000);
            E->SetMin(-1000);
            L->addWidget(E);
        }
        L->addWidget(new QPushButton(QStringLiteral("Go"), &W));
    }
    bool Activate(QWidget* Focus = nullptr) { return test::Activate(W, Focus ? Focus : E1); }
    void Enter() { E1->setFocus(Qt::TabFocusReason); }
    void Leave() { E2->setFocus(Qt::TabFocusReason); }
};

} // namespace qxnum::test

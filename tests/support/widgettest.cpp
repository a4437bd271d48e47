#include "widgettest.h"

#include <QTest>
#include <QWidget>

namespace qxnum::test {

bool WaitFor(const std::function<bool()>& Pred, int Ms) {
    return QTest::qWaitFor(Pred, Ms);
}

bool Activate(QWidget& Window, QWidget* Focus, int Reason) {
    Window.show();
    Window.activateWindow();
    if (!QTest::qWaitForWindowActive(&Window)) return false;
    Focus->setFocus(static_cast<Qt::FocusReason>(Reason));
    return WaitFor([Focus] { return Focus->hasFocus(); });
}

} // namespace qxnum::test

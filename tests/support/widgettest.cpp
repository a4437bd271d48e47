#include "widgettest.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTest>
#include <QWidget>

namespace qxnum::test {

bool WaitFor(const std::function<bool()>& Pred, int Ms) {
    QElapsedTimer T;
    T.start();
    while (!Pred()) {
        if (T.elapsed() > Ms) return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    }
    return true;
}

bool Activate(QWidget& Window, QWidget* Focus, int Reason) {
    Window.show();
    Window.activateWindow();
    if (!QTest::qWaitForWindowActive(&Window)) return false;
    Focus->setFocus(static_cast<Qt::FocusReason>(Reason));
    return WaitFor([Focus] { return Focus->hasFocus(); });
}

} // namespace qxnum::test

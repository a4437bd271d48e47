// Helpers for offscreen widget tests.
#pragma once

#include <functional>

class QWidget;

namespace qxnum::test {

// Runs the event loop until Pred holds; false after Ms milliseconds.
bool WaitFor(const std::function<bool()>& Pred, int Ms = 3000);
// Shows Window, waits until it is active and gives Focus the focus (Reason: a Qt::FocusReason).
bool Activate(QWidget& Window, QWidget* Focus, int Reason = 7 /* Qt::OtherFocusReason */);

} // namespace qxnum::test

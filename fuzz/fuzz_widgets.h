// Shared by the fuzz targets that need the widgets: an offscreen application made once, with a
// message handler that answers instead of opening boxes, and the invariant check.
#pragma once

#include <qxnum/dialogs.h>

#include <QApplication>

#include <cstdio>
#include <cstdlib>

namespace fuzz {

// Aborts (a finding) when Ok is false, naming the check that failed.
inline void Check(bool Ok, const char* File = __builtin_FILE(), int Line = __builtin_LINE()) {
    if (Ok) return;
    std::fprintf(stderr, "check failed at %s:%d\n", File, Line);
    std::abort();
}

// The application, made on the first call with Handler answering every message.
inline QApplication& App(const char* Name, qxnum::TMessageDlgHandler Handler) {
    static int Argc = 1;
    static char* Argv[] = {const_cast<char*>(Name), nullptr};
    static QApplication* A = [&] {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        qxnum::SetMessageDlgHandler(std::move(Handler));
        return new QApplication(Argc, Argv);
    }();
    return *A;
}

} // namespace fuzz

// Font configuration keeps caches for the life of the process; they are not the library's.
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libfontconfig\n";
}

// User-facing texts of the core library (not installed).
#pragma once

#include <QCoreApplication>
#include <QString>

namespace qxnum::detail {

// Source is the English text, which is also what an untranslated host shows; Context is
// "qxnum::<class or area>". For lupdate: -tr-function-alias translate+=Tr.
inline QString Tr(const char* Context, const char* Source) {
    return QCoreApplication::translate(Context, Source);
}

} // namespace qxnum::detail

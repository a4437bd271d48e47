// Helpers for field tests: one stream record written or read on its own, readable QString and
// QVariant values in failure messages.
#pragma once

#include <qxnum/numfld_intf.h>

#include <QBuffer>
#include <QVariant>

#include <ostream>

QT_BEGIN_NAMESPACE
inline void PrintTo(const QString& S, std::ostream* Os) {
    *Os << '"' << S.toStdString() << '"';
}
inline void PrintTo(const QVariant& V, std::ostream* Os) {
    *Os << V.typeName() << ' ' << V.toString().toStdString();
}
QT_END_NAMESPACE

namespace qxnum::test {

inline QByteArray WriteRecord(INumFld& F) {
    QBuffer B;
    B.open(QIODevice::WriteOnly);
    {
        TWriter W(&B);
        F.WritetoStream(W);
    }
    return B.data();
}

// Reads (or skips) one record and returns the reader's position afterwards.
inline qint64 ReadRecord(INumFld& F, const QByteArray& Bytes, bool Skip = false) {
    QBuffer B;
    B.setData(Bytes);
    B.open(QIODevice::ReadOnly);
    TReader R(&B);
    if (Skip)
        F.SkipfromStream(R);
    else
        F.ReadfromStream(R);
    return R.Position();
}

} // namespace qxnum::test

/// \file
/// Number and date format settings, the library's equivalent of a locale record.
#pragma once

#include <qxnum/core_export.h>

#include <QChar>
#include <QString>

namespace qxnum {

struct QXNUM_CORE_EXPORT TFormatSettings {
    QChar DecimalSeparator = QLatin1Char('.');
    QChar ThousandSeparator = QLatin1Char(',');
    QString CurrencyString = QStringLiteral("$");
    quint8 CurrencyFormat = 0; // 0 "$1", 1 "1$", 2 "$ 1", 3 "1 $"
    quint8 NegCurrFormat = 0;  // 0 "($1)" ... 15 "(1 $)"
    quint8 CurrencyDecimals = 2;
    QChar DateSeparator = QLatin1Char('/');
    QChar TimeSeparator = QLatin1Char(':');
    QString ShortDateFormat = QStringLiteral("M/d/yyyy");
    QString LongDateFormat = QStringLiteral("dddd, MMMM d, yyyy");
    QString ShortTimeFormat = QStringLiteral("h:mm");
    QString LongTimeFormat = QStringLiteral("h:mm:ss");

    /// Settings of the default locale (QLocale()).
    static TFormatSettings Create();
    /// "." decimal separator, "," thousands, "$" currency: the same on every machine.
    static TFormatSettings Invariant() { return {}; }
};

/// Settings of the generic float path (FormatFloat, FloatToStrF without explicit settings).
QXNUM_CORE_EXPORT extern TFormatSettings FormatSettings;
/// Settings of the parameter-type path and of the numeric controls; made once at start-up.
QXNUM_CORE_EXPORT extern TFormatSettings NumInpFormatSettings;

} // namespace qxnum

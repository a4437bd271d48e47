#include <qxnum/formatsettings.h>

#include <QLocale>

namespace qxnum {

namespace {

// Maps the locale's currency placement onto the platform's positive and negative currency formats.
void SetCurrencyFormats(const QLocale& Locale, TFormatSettings& S) {
    const QString Positive = Locale.toCurrencyString(1.0, S.CurrencyString, 0);
    const QString Negative = Locale.toCurrencyString(-1.0, S.CurrencyString, 0);
    const bool SymbolFirst = Positive.startsWith(S.CurrencyString);
    const bool Spaced =
        Positive.contains(QChar(' ')) || Positive.contains(QChar(0x00A0)) || Positive.contains(QChar(0x202F));
    S.CurrencyFormat = static_cast<quint8>((SymbolFirst ? 0 : 1) + (Spaced ? 2 : 0));
    if (Negative.startsWith(QLatin1Char('(')))
        S.NegCurrFormat = SymbolFirst ? (Spaced ? 14 : 0) : (Spaced ? 15 : 4);
    else if (SymbolFirst)
        S.NegCurrFormat = Negative.startsWith(QLatin1Char('-')) ? (Spaced ? 9 : 1) : (Spaced ? 12 : 2);
    else
        S.NegCurrFormat = Spaced ? 8 : 5;
}

} // namespace

TFormatSettings TFormatSettings::Create() {
    const QLocale Locale;
    // The C locale knows no currency placement; use the invariant record rather than a guess.
    if (Locale.language() == QLocale::C) return Invariant();
    TFormatSettings S;
    const QString Decimal = Locale.decimalPoint();
    const QString Group = Locale.groupSeparator();
    S.DecimalSeparator = Decimal.size() == 1 ? Decimal.at(0) : QLatin1Char('.');
    S.ThousandSeparator = Group.size() == 1 ? Group.at(0) : QLatin1Char(',');
    if (S.ThousandSeparator == S.DecimalSeparator)
        S.ThousandSeparator = S.DecimalSeparator == QLatin1Char(',') ? QLatin1Char('.') : QLatin1Char(',');
    const QString Symbol = Locale.currencySymbol(QLocale::CurrencySymbol);
    if (!Symbol.isEmpty()) S.CurrencyString = Symbol;
    S.CurrencyDecimals = 2;
    SetCurrencyFormats(Locale, S);
    S.ShortDateFormat = Locale.dateFormat(QLocale::ShortFormat);
    S.LongDateFormat = Locale.dateFormat(QLocale::LongFormat);
    S.ShortTimeFormat = Locale.timeFormat(QLocale::ShortFormat);
    S.LongTimeFormat = Locale.timeFormat(QLocale::LongFormat);
    return S;
}

TFormatSettings FormatSettings = TFormatSettings::Create();
TFormatSettings NumInpFormatSettings = TFormatSettings::Create();

} // namespace qxnum

// Amounts in words ("one thousand two hundred thirty-four dollars and fifty cents"). The amount is
// rounded to cents on its decimal text, so "1.005" gives one cent however the binary value falls.
#include <qxnum/numconv.h>

#include "tr_p.h"

#include <QStringList>

#include <algorithm>

namespace qxnum {

namespace {

__extension__ using u128 = unsigned __int128; // a GCC/Clang extension

constexpr const char* Ones[20] = {"zero",    "one",     "two",       "three",    "four",
                                  "five",    "six",     "seven",     "eight",    "nine",
                                  "ten",     "eleven",  "twelve",    "thirteen", "fourteen",
                                  "fifteen", "sixteen", "seventeen", "eighteen", "nineteen"};
constexpr const char* Tens[10] = {"",      "",      "twenty",  "thirty", "forty",
                                  "fifty", "sixty", "seventy", "eighty", "ninety"};
constexpr const char* Scales[7] = {"",         "thousand",    "million",    "billion",
                                   "trillion", "quadrillion", "quintillion"};

// 10^21 dollars in cents: the first amount we have no scale word for.
const u128 CentLimit = static_cast<u128>(1000000000000000000ULL) * 100000ULL;

[[noreturn]] void NotAnAmount(const QString& Amount) {
    throw EConvertError(detail::Tr("qxnum::MoneyStr", "'%1' is not a valid amount").arg(Amount));
}

void AppendWord(QString& Out, const char* Word) {
    if (!Out.isEmpty()) Out += QLatin1Char(' ');
    Out += QLatin1String(Word);
}

// 1..999
void AppendHundreds(QString& Out, unsigned N) {
    if (N >= 100) {
        AppendWord(Out, Ones[N / 100]);
        AppendWord(Out, "hundred");
        N %= 100;
    }
    if (N >= 20) {
        AppendWord(Out, Tens[N / 10]);
        if (N % 10) {
            Out += QLatin1Char('-');
            Out += QLatin1String(Ones[N % 10]);
        }
    } else if (N > 0) {
        AppendWord(Out, Ones[N]);
    }
}

// 0 .. 10^21 - 1
QString NumberWords(u128 N) {
    if (N == 0) return QStringLiteral("zero");
    unsigned Groups[7] = {};
    for (int I = 0; I < 7 && N != 0; ++I) {
        Groups[I] = static_cast<unsigned>(N % 1000);
        N /= 1000;
    }
    QString Out;
    for (int I = 6; I >= 0; --I) {
        if (Groups[I] == 0) continue;
        AppendHundreds(Out, Groups[I]);
        if (I > 0) AppendWord(Out, Scales[I]);
    }
    return Out;
}

// Strips a leading or trailing Token (after blanks); true when it was there.
bool StripFront(QString& S, const QString& Token) {
    if (Token.isEmpty() || !S.startsWith(Token)) return false;
    S = S.mid(Token.size()).trimmed();
    return true;
}
bool StripBack(QString& S, const QString& Token) {
    if (Token.isEmpty() || !S.endsWith(Token)) return false;
    S.chop(Token.size());
    S = S.trimmed();
    return true;
}

// Removes thousands separators when they group the integer part by three; false when misplaced.
bool RemoveGrouping(QString& S, QChar Thousand, QChar Decimal) {
    if (Thousand.isNull() || Thousand == Decimal || !S.contains(Thousand)) return true;
    qsizetype IntEnd = S.indexOf(Decimal);
    if (IntEnd < 0) IntEnd = S.size();
    const QStringList Groups = S.left(IntEnd).split(Thousand);
    if (S.indexOf(Thousand, IntEnd) >= 0) return false;
    for (qsizetype I = 0; I < Groups.size(); ++I) {
        const qsizetype N = Groups[I].size();
        if (I == 0 ? (N < 1 || N > 3) : N != 3) return false;
    }
    S = Groups.join(QString()) + S.mid(IntEnd);
    return true;
}

} // namespace

QString MoneyStr(const QString& Amount) {
    const TFormatSettings& Settings = NumInpFormatSettings;
    QString S = Amount.trimmed();
    bool Negative = false;
    int Signs = 0;
    if (S.size() >= 2 && S.startsWith(QLatin1Char('(')) && S.endsWith(QLatin1Char(')'))) {
        S = S.mid(1, S.size() - 2).trimmed();
        Negative = true;
        ++Signs;
    }
    const auto TakeSign = [&](bool Front) {
        const QChar C = S.isEmpty() ? QChar() : Front ? S.front() : S.back();
        if (C != QLatin1Char('-') && C != QLatin1Char('+')) return;
        Negative = Negative || C == QLatin1Char('-');
        ++Signs;
        S = (Front ? S.mid(1) : S.left(S.size() - 1)).trimmed();
    };
    TakeSign(true);
    if (StripFront(S, Settings.CurrencyString)) TakeSign(true);
    TakeSign(false);
    if (StripBack(S, Settings.CurrencyString)) TakeSign(false);
    if (Signs > 1 || S.isEmpty() || !RemoveGrouping(S, Settings.ThousandSeparator, Settings.DecimalSeparator))
        NotAnAmount(Amount);
    Extended Check;
    if (S.front() == QLatin1Char('+') || S.front() == QLatin1Char('-') ||
        !TryQX_StrToFloat(S, Check, Settings))
        NotAnAmount(Amount);

    // S is now digits, at most one separator and an optional exponent: read it as Digits * 10^Exp.
    QByteArray Digits;
    qint64 Exp = 0;
    qsizetype I = 0;
    bool Point = false;
    for (; I < S.size(); ++I) {
        const QChar C = S[I];
        if (C.isDigit() && C.unicode() < 0x80) {
            if (!(Digits.isEmpty() && C == QLatin1Char('0'))) Digits.append(static_cast<char>(C.unicode()));
            if (Point) --Exp;
        } else if (C == QLatin1Char('e') || C == QLatin1Char('E')) {
            break;
        } else {
            Point = true;
        }
    }
    if (I < S.size()) {
        bool Ok = false;
        const qint64 X = S.mid(I + 1).toLongLong(&Ok);
        // A huge exponent of a non-zero amount is too large (or rounds to nothing).
        Exp +=
            Ok ? std::clamp<qint64>(X, -100000, 100000) : (S[I + 1] == QLatin1Char('-') ? -100000 : 100000);
    }

    // Cents = Digits * 10^(Exp + 2), rounded half away from zero.
    u128 Cents = 0;
    if (!Digits.isEmpty()) {
        const qint64 Shift = Exp + 2;
        const qint64 Kept = Digits.size() + std::min<qint64>(Shift, 0);
        if (Digits.size() + Shift > 23)
            throw EConvertError(detail::Tr("qxnum::MoneyStr", "'%1' is too large an amount").arg(Amount));
        for (qint64 J = 0; J < Kept; ++J)
            Cents = Cents * 10 + static_cast<unsigned>(Digits[J] - '0');
        for (qint64 J = 0; J < Shift; ++J)
            Cents *= 10;
        if (Kept >= 0 && Kept < Digits.size() && Digits[Kept] >= '5') ++Cents;
    }
    if (Cents >= CentLimit)
        throw EConvertError(detail::Tr("qxnum::MoneyStr", "'%1' is too large an amount").arg(Amount));

    const u128 Dollars = Cents / 100;
    const unsigned Rest = static_cast<unsigned>(Cents % 100);
    QString Out;
    if (Negative && Cents != 0) Out = QStringLiteral("minus ");
    Out += NumberWords(Dollars);
    Out += Dollars == 1 ? QStringLiteral(" dollar") : QStringLiteral(" dollars");
    if (Rest != 0) {
        Out += QStringLiteral(" and ");
        Out += NumberWords(Rest);
        Out += Rest == 1 ? QStringLiteral(" cent") : QStringLiteral(" cents");
    }
    return Out;
}

} // namespace qxnum

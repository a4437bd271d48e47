// Decimal text to float, correctly rounded into the target type. Short texts (up to 19 significant
// digits, power of ten exact in the target) take one multiplication or division; the rest go to
// strtold_l/strtod_l in the "C" locale, which round correctly for any length.
#include <qxnum/numconv.h>

#include "tr_p.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <locale.h>
#include <string>

namespace qxnum {

namespace {

using u64 = std::uint64_t;

constexpr long double Pow10L[28] = {1e0L,  1e1L,  1e2L,  1e3L,  1e4L,  1e5L,  1e6L,  1e7L,  1e8L,  1e9L,
                                    1e10L, 1e11L, 1e12L, 1e13L, 1e14L, 1e15L, 1e16L, 1e17L, 1e18L, 1e19L,
                                    1e20L, 1e21L, 1e22L, 1e23L, 1e24L, 1e25L, 1e26L, 1e27L};
constexpr double Pow10D[23] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                               1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
constexpr std::array<u64, 20> Pow10U = [] {
    std::array<u64, 20> P{};
    P[0] = 1;
    for (std::size_t I = 1; I < P.size(); ++I)
        P[I] = P[I - 1] * 10;
    return P;
}();

// What a scan of the text found: value = (-)W * 10^Exp10, exact unless Truncated.
struct TScan {
    u64 W = 0;
    std::int64_t Exp10 = 0;
    bool Negative = false;
    bool Truncated = false;          // non-zero digits beyond the 19th
    const char16_t* Begin = nullptr; // the text without blanks, for the slow path
    const char16_t* End = nullptr;
};

bool IsBlank(char16_t C) {
    return C == u' ' || (C < 0x80 ? (C >= 9 && C <= 13) : QChar::isSpace(C));
}

bool Scan(const QString& S, QChar Separator, TScan& R) {
    const auto* P = reinterpret_cast<const char16_t*>(S.constData());
    const char16_t* End = P + S.size();
    while (P < End && IsBlank(*P))
        ++P;
    while (End > P && IsBlank(End[-1]))
        --End;
    R.Begin = P;
    R.End = End;
    if (P < End && (*P == u'+' || *P == u'-')) R.Negative = *P++ == u'-';
    const char16_t Sep = Separator.unicode();
    int Sig = 0;
    bool Point = false, AnyDigit = false;
    for (; P < End; ++P) {
        const char16_t C = *P;
        if (C >= u'0' && C <= u'9') {
            AnyDigit = true;
            const unsigned D = C - u'0';
            if (Sig < 19) {
                if (Sig > 0 || D != 0) {
                    R.W = R.W * 10 + D;
                    ++Sig;
                }
                if (Point) --R.Exp10;
            } else {
                if (D != 0) R.Truncated = true;
                if (!Point) ++R.Exp10;
            }
        } else if ((C == Sep || C == u'.') && !Point) {
            Point = true; // '.' stands in for another locale separator; still only one of either
        } else {
            break;
        }
    }
    if (!AnyDigit) return false;
    if (P < End) {
        if (*P != u'e' && *P != u'E') return false;
        ++P;
        bool NegExp = false;
        if (P < End && (*P == u'+' || *P == u'-')) NegExp = *P++ == u'-';
        if (P == End) return false;
        std::int64_t X = 0;
        for (; P < End; ++P) {
            if (*P < u'0' || *P > u'9') return false;
            if (X < 1000000000) X = X * 10 + (*P - u'0'); // beyond this only the sign matters
        }
        R.Exp10 += NegExp ? -X : X;
    }
    return true;
}

locale_t CLocale() {
    static const locale_t L = newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(nullptr));
    return L;
}

// The scanned text as ASCII with '.' as separator (already validated).
std::string AsciiText(const TScan& R, QChar Separator) {
    std::string T;
    T.reserve(static_cast<std::size_t>(R.End - R.Begin));
    for (const char16_t* P = R.Begin; P < R.End; ++P)
        T.push_back(*P == Separator.unicode() ? '.' : static_cast<char>(*P));
    return T;
}

bool ToExtended(const TScan& R, QChar Separator, Extended& Value) {
    if (R.W == 0) {
        Value = R.Negative ? -0.0L : 0.0L;
        return true;
    }
    if (!R.Truncated) {
        u64 W = R.W;
        std::int64_t K = R.Exp10;
        // Move surplus powers into W while it stays exact ("1e30" = 1000 * 10^27).
        if (K > 27 && K - 27 < 20 && W <= ~0ULL / Pow10U[static_cast<std::size_t>(K - 27)]) {
            W *= Pow10U[static_cast<std::size_t>(K - 27)];
            K = 27;
        }
        if (K >= -27 && K <= 27) {
            const long double V =
                K >= 0 ? static_cast<long double>(W) * Pow10L[K] : static_cast<long double>(W) / Pow10L[-K];
            Value = R.Negative ? -V : V;
            return true;
        }
    }
    if (!CLocale()) return false;
    const std::string T = AsciiText(R, Separator);
    const long double V = strtold_l(T.c_str(), nullptr, CLocale());
    if (!std::isfinite(V)) return false;
    Value = V;
    return true;
}

bool ToDouble(const TScan& R, QChar Separator, double& Value) {
    if (R.W == 0) {
        Value = R.Negative ? -0.0 : 0.0;
        return true;
    }
    if (!R.Truncated && R.W <= (1ULL << 53) && R.Exp10 >= -22 && R.Exp10 <= 22) {
        const double V = R.Exp10 >= 0 ? static_cast<double>(R.W) * Pow10D[R.Exp10]
                                      : static_cast<double>(R.W) / Pow10D[-R.Exp10];
        Value = R.Negative ? -V : V;
        return true;
    }
    if (!CLocale()) return false;
    const std::string T = AsciiText(R, Separator);
    const double V = strtod_l(T.c_str(), nullptr, CLocale());
    if (!std::isfinite(V)) return false;
    Value = V;
    return true;
}

} // namespace

bool TryQX_StrToFloat(const QString& S, Extended& Value, const TFormatSettings& Settings) {
    TScan R;
    return Scan(S, Settings.DecimalSeparator, R) && ToExtended(R, Settings.DecimalSeparator, Value);
}

bool TryQX_StrToFloat(const QString& S, double& Value, const TFormatSettings& Settings) {
    TScan R;
    return Scan(S, Settings.DecimalSeparator, R) && ToDouble(R, Settings.DecimalSeparator, Value);
}

Extended QX_StrToFloat(const QString& S, const TFormatSettings& Settings) {
    Extended V = 0;
    if (!TryQX_StrToFloat(S, V, Settings))
        throw EConvertError(
            detail::Tr("qxnum::QX_StrToFloat", "'%1' is not a valid floating point value").arg(S));
    return V;
}

Extended QX_StrToFloatDef(const QString& S, Extended Default, const TFormatSettings& Settings) {
    Extended V = 0;
    return TryQX_StrToFloat(S, V, Settings) ? V : Default;
}

Extended QX_StrToFloat(const QString& S) {
    return QX_StrToFloat(S, NumInpFormatSettings);
}
bool TryQX_StrToFloat(const QString& S, double& Value) {
    return TryQX_StrToFloat(S, Value, NumInpFormatSettings);
}
bool TryQX_StrToFloat(const QString& S, Extended& Value) {
    return TryQX_StrToFloat(S, Value, NumInpFormatSettings);
}
Extended QX_StrToFloatDef(const QString& S, Extended Default) {
    return QX_StrToFloatDef(S, Default, NumInpFormatSettings);
}

} // namespace qxnum

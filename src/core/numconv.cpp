// Float to text: FormatFloat pictures and the FloatToStrF forms, on the 18-digit decimal form of the
// value (correctly rounded from the binary value) rounded half away from zero to what is shown.
#include <qxnum/numconv.h>

#include "numconv_digits.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace qxnum {

namespace {

// 0.D[0]D[1]...D[Count-1] * 10^Exp without trailing zeros; Count 0 is zero (Exp 0).
struct TDecimal {
    char Digits[24]; // 18 digits, then room for the word-wise zero scan
    int Count = 0;
    int Exp = 0;
    bool Negative = false;

    char Digit(int I) const { return I >= 0 && I < Count ? Digits[I] : '0'; }
    bool IsZero() const { return Count == 0; }
};

TDecimal ToDecimal(const Extended& Value) {
    TDecimal D;
    D.Negative = std::signbit(Value);
    if (Value == 0) return D;
    D.Exp = detail::ExtendedDigits18(Value, D.Digits) + 1;
    // Drop trailing zeros eight digits at a time: the last byte that is not '0' ends the digits.
    static_assert(std::endian::native == std::endian::little);
    std::memset(D.Digits + 18, '0', 6);
    for (int W = 2; W >= 0; --W) {
        std::uint64_t X;
        std::memcpy(&X, D.Digits + 8 * W, 8);
        X ^= 0x3030303030303030ULL;
        if (X != 0) {
            D.Count = 8 * W + (static_cast<int>(std::bit_width(X)) - 1) / 8 + 1;
            break;
        }
    }
    return D;
}

// Keeps Keep significant digits, rounding half away from zero on the digit string.
void RoundTo(TDecimal& D, int Keep) {
    if (D.Count <= Keep) return;
    if (Keep < 0) {
        D.Count = D.Exp = 0;
        return;
    }
    int N = Keep;
    if (D.Digits[Keep] >= '5') {
        int I = Keep - 1;
        while (I >= 0 && D.Digits[I] == '9')
            --I;
        if (I < 0) {
            D.Digits[0] = '1';
            N = 1;
            ++D.Exp;
        } else {
            ++D.Digits[I];
            N = I + 1;
        }
    } else {
        while (N > 0 && D.Digits[N - 1] == '0')
            --N;
    }
    D.Count = N;
    if (N == 0) D.Exp = 0;
}

class TOut {
public:
    TOut() = default;
    TOut(const TOut&) = delete;
    TOut& operator=(const TOut&) = delete;
    void Put(char16_t C) {
        if (FLen == FCap) Grow(1);
        FData[FLen++] = C;
    }
    void Put(QChar C) { Put(C.unicode()); }
    void PutAscii(char C) { Put(static_cast<char16_t>(C)); }
    void Put(const char16_t* S, qsizetype N) {
        if (FLen + N > FCap) Grow(N);
        std::memcpy(FData + FLen, S, static_cast<std::size_t>(N) * sizeof(char16_t));
        FLen += N;
    }
    void Put(const QString& S) { Put(reinterpret_cast<const char16_t*>(S.constData()), S.size()); }
    void PutExponent(int X, int MinDigits) {
        char Buf[12];
        int N = 0;
        unsigned U = X < 0 ? 0u - static_cast<unsigned>(X) : static_cast<unsigned>(X);
        do {
            Buf[N++] = static_cast<char>('0' + U % 10);
            U /= 10;
        } while (U != 0);
        for (int I = N; I < MinDigits; ++I)
            PutAscii('0');
        while (N > 0)
            PutAscii(Buf[--N]);
    }
    // The text written so far, in a string of exactly its length: grid cells keep these texts by
    // the hundred thousand, so spare capacity would cost more than the text itself.
    QString Text() const { return QString(reinterpret_cast<const QChar*>(FData), FLen); }

private:
    void Grow(qsizetype N) {
        const qsizetype Cap = std::max(FCap * 2, FLen + N);
        auto Heap = std::make_unique<char16_t[]>(static_cast<std::size_t>(Cap));
        std::memcpy(Heap.get(), FData, static_cast<std::size_t>(FLen) * sizeof(char16_t));
        FHeap = std::move(Heap);
        FData = FHeap.get();
        FCap = Cap;
    }

    char16_t FBuf[64]; // written in place: the result is the one allocation of a formatting call
    std::unique_ptr<char16_t[]> FHeap;
    char16_t* FData = FBuf;
    qsizetype FCap = 64;
    qsizetype FLen = 0;
};

// Integer digits of D in fixed notation; "0" when there are none.
void PutFixedInt(TOut& Out, const TDecimal& D, bool Grouping, QChar Thousand) {
    if (D.IsZero() || D.Exp <= 0) {
        Out.PutAscii('0');
        return;
    }
    for (int I = 0; I < D.Exp; ++I) {
        Out.PutAscii(D.Digit(I));
        const int Left = D.Exp - 1 - I;
        if (Grouping && Left > 0 && Left % 3 == 0 && !Thousand.isNull()) Out.Put(Thousand);
    }
}

void PutGeneral(TOut& Out, TDecimal D, int Precision, int ExpDigits, QChar Separator) {
    RoundTo(D, Precision);
    if (D.IsZero()) {
        Out.PutAscii('0');
        return;
    }
    if (D.Negative) Out.PutAscii('-');
    if (D.Exp > Precision || D.Exp < -3) {
        Out.PutAscii(D.Digits[0]);
        if (D.Count > 1) {
            Out.Put(Separator);
            for (int I = 1; I < D.Count; ++I)
                Out.PutAscii(D.Digits[I]);
        }
        Out.PutAscii('E');
        if (D.Exp - 1 < 0) Out.PutAscii('-');
        Out.PutExponent(D.Exp - 1, ExpDigits);
        return;
    }
    PutFixedInt(Out, D, false, QChar());
    if (D.Count > D.Exp) {
        Out.Put(Separator);
        for (int I = D.Exp; I < D.Count; ++I)
            Out.PutAscii(D.Digit(I)); // Digit(<0) is a leading '0'
    }
}

QString GeneralText(const Extended& Value, int Precision, int ExpDigits, const TFormatSettings& Settings) {
    TOut Out;
    PutGeneral(Out, ToDecimal(Value), Precision, ExpDigits, Settings.DecimalSeparator);
    return Out.Text();
}

QString NonFiniteText(const Extended& Value) {
    if (std::isnan(Value)) return QStringLiteral("NAN");
    return Value > 0 ? QStringLiteral("INF") : QStringLiteral("-INF");
}

// ---- pictures ----

enum TTokenKind : quint8 { tkLiteral, tkDigit, tkPoint, tkExponent };

struct TToken {
    TTokenKind Kind;
    bool Zero;      // tkDigit: '0' rather than '#'
    bool Fraction;  // tkDigit: after the decimal point
    int Start, Len; // tkLiteral: range in TPicture::Literals
};

struct TSection {
    bool Empty = true;
    int FirstToken = 0, TokenCount = 0;
    int IntCount = 0, FracCount = 0; // placeholders before / after the point
    int IntForced = 0;               // integer digits always shown: from the first '0' on
    int FracForced = 0;              // decimals always shown: up to the last '0'
    bool Grouping = false, Scientific = false, HasPoint = false;
    char16_t ExpChar = u'E';
    bool ExpPlus = false;
    int ExpDigits = 0;
};

struct TPicture {
    std::array<TSection, 3> Sections;
    std::vector<TToken> Tokens;
    std::u16string Literals;
};

// Appends literal text, extending the section's last token when that is literal text too.
void AddLiteral(TPicture& P, const TSection& Section, const char16_t* S, int N) {
    if (N <= 0) return;
    if (static_cast<int>(P.Tokens.size()) > Section.FirstToken && P.Tokens.back().Kind == tkLiteral &&
        P.Tokens.back().Start + P.Tokens.back().Len == static_cast<int>(P.Literals.size())) {
        P.Tokens.back().Len += N;
    } else {
        P.Tokens.push_back({tkLiteral, false, false, static_cast<int>(P.Literals.size()), N});
    }
    P.Literals.append(S, static_cast<std::size_t>(N));
}

void ParseSection(TPicture& P, TSection& S, const char16_t* F, int Begin, int End) {
    S.Empty = Begin >= End;
    S.FirstToken = static_cast<int>(P.Tokens.size());
    int FirstIntZero = -1;
    for (int I = Begin; I < End; ++I) {
        const char16_t C = F[I];
        switch (C) {
        case u'\'':
        case u'"': {
            int J = I + 1;
            while (J < End && F[J] != C)
                ++J;
            AddLiteral(P, S, F + I + 1, J - I - 1);
            I = J; // at the closing quote, or End for an unclosed one
            break;
        }
        case u'0':
        case u'#':
            P.Tokens.push_back({tkDigit, C == u'0', S.HasPoint, 0, 0});
            if (S.HasPoint) {
                ++S.FracCount;
                if (C == u'0') S.FracForced = S.FracCount;
            } else {
                if (C == u'0' && FirstIntZero < 0) FirstIntZero = S.IntCount;
                ++S.IntCount;
            }
            break;
        case u'.':
            if (S.HasPoint) {
                AddLiteral(P, S, F + I, 1);
            } else {
                S.HasPoint = true;
                P.Tokens.push_back({tkPoint, false, false, 0, 0});
            }
            break;
        case u',':
            S.Grouping = true;
            break;
        case u'E':
        case u'e':
            if (I + 1 < End && (F[I + 1] == u'+' || F[I + 1] == u'-')) {
                int J = I + 2;
                while (J < End && F[J] == u'0')
                    ++J;
                if (S.Scientific) {
                    AddLiteral(P, S, F + I, J - I); // only the first exponent counts
                } else {
                    S.Scientific = true;
                    S.ExpChar = C;
                    S.ExpPlus = F[I + 1] == u'+';
                    S.ExpDigits = std::min(J - I - 2, 4);
                    P.Tokens.push_back({tkExponent, false, false, 0, 0});
                }
                I = J - 1;
            } else {
                AddLiteral(P, S, F + I, 1);
            }
            break;
        default:
            AddLiteral(P, S, F + I, 1);
            break;
        }
    }
    S.IntForced = FirstIntZero < 0 ? 0 : S.IntCount - FirstIntZero;
    S.TokenCount = static_cast<int>(P.Tokens.size()) - S.FirstToken;
}

void ParsePicture(TPicture& P, const QString& Format) {
    P.Tokens.clear();
    P.Literals.clear();
    P.Sections = {};
    const auto* F = reinterpret_cast<const char16_t*>(Format.constData());
    const int Len = static_cast<int>(std::min<qsizetype>(Format.size(), std::numeric_limits<int>::max() / 2));
    int Begin = 0, Index = 0;
    char16_t Quote = 0;
    for (int I = 0; I <= Len && Index < 3; ++I) {
        if (I < Len && Quote) {
            if (F[I] == Quote) Quote = 0;
            continue;
        }
        if (I < Len && (F[I] == u'\'' || F[I] == u'"')) {
            Quote = F[I];
            continue;
        }
        if (I == Len || F[I] == u';') {
            ParseSection(P, P.Sections[static_cast<std::size_t>(Index)], F, Begin, I);
            ++Index;
            Begin = I + 1;
        }
    }
}

// The last few pictures, so that a control formatting with one picture parses it once. One per
// thread; the hot path reads a single trivial thread-local pointer (no guard, no constructor check).
struct TPictureCache {
    struct TEntry {
        QString Key;
        TPicture Picture;
    };
    std::array<TEntry, 4> Entries;
    std::size_t Used = 0, Next = 0;
};

thread_local TPictureCache* PictureCache = nullptr;

TPictureCache& NewPictureCache() {
    struct TOwner {
        std::unique_ptr<TPictureCache> Cache = std::make_unique<TPictureCache>();
        ~TOwner() { PictureCache = nullptr; }
    };
    thread_local TOwner Owner;
    PictureCache = Owner.Cache.get();
    return *PictureCache;
}

const TPicture& CachedPicture(const QString& Format) {
    TPictureCache& Cache = PictureCache ? *PictureCache : NewPictureCache();
    for (std::size_t I = 0; I < Cache.Used; ++I) {
        TPictureCache::TEntry& E = Cache.Entries[I];
        // Pictures usually come from the same shared string (a table or a property).
        if (E.Key.size() == Format.size() && (E.Key.constData() == Format.constData() || E.Key == Format))
            return E.Picture;
    }
    TPictureCache::TEntry& E = Cache.Entries[Cache.Next];
    Cache.Next = (Cache.Next + 1) % Cache.Entries.size();
    Cache.Used = std::max(Cache.Used, Cache.Next == 0 ? Cache.Entries.size() : Cache.Next);
    E.Key = Format;
    ParsePicture(E.Picture, Format);
    return E.Picture;
}

// Writes D through section S. For a scientific section D is already rounded to the placeholders and
// IntDigits digits stand before the point; for a fixed one D is rounded to the decimals.
QString ApplySection(const TPicture& P, const TSection& S, const TDecimal& D, bool Minus,
                     const TFormatSettings& Settings) {
    int IntActual, FracActual, Exponent = 0;
    int FracStart; // index in D of the first decimal
    if (S.Scientific) {
        const int IntDigits = (S.IntCount + S.FracCount == 0) ? 1 : S.IntCount;
        IntActual = D.IsZero() ? 0 : IntDigits;
        FracStart = IntDigits;
        FracActual = D.IsZero() ? 0 : std::max(D.Count - IntDigits, 0);
        if (!D.IsZero()) Exponent = D.Exp - IntDigits;
    } else {
        IntActual = D.IsZero() ? 0 : std::max(D.Exp, 0);
        FracStart = D.Exp;
        FracActual = D.IsZero() ? 0 : std::max(D.Count - D.Exp, 0);
    }
    const int IntTotal = std::max(IntActual, S.IntForced);
    const int Pad = IntTotal - IntActual; // leading zeros before the value's own integer digits
    const int FracTotal = std::min(std::max(FracActual, S.FracForced), S.FracCount);
    const int Excess = IntTotal - S.IntCount;
    const bool Group = S.Grouping && !Settings.ThousandSeparator.isNull();

    TOut Out;
    if (Minus) Out.PutAscii('-');
    auto PutInt = [&](int From, int To) {
        for (int T = std::max(From, 0); T < To; ++T) {
            Out.PutAscii(T < Pad ? '0' : D.Digit(T - Pad));
            const int Left = IntTotal - 1 - T;
            if (Group && Left > 0 && Left % 3 == 0) Out.Put(Settings.ThousandSeparator);
        }
    };
    bool IntDone = false;
    int IntIndex = 0, FracIndex = 0;
    const TToken* Tok = P.Tokens.data() + S.FirstToken;
    for (int K = 0; K < S.TokenCount; ++K, ++Tok) {
        switch (Tok->Kind) {
        case tkLiteral:
            Out.Put(P.Literals.data() + Tok->Start, Tok->Len);
            break;
        case tkDigit:
            if (!Tok->Fraction) {
                const int I = IntIndex++;
                if (I == 0) {
                    PutInt(0, Excess + 1);
                    IntDone = true;
                } else {
                    PutInt(I + Excess, I + Excess + 1);
                }
            } else {
                const int I = FracIndex++;
                if (I < FracTotal) Out.PutAscii(D.Digit(FracStart + I));
            }
            break;
        case tkPoint:
            if (!IntDone) {
                PutInt(0, IntTotal);
                IntDone = true;
            }
            if (FracTotal > 0) Out.Put(Settings.DecimalSeparator);
            break;
        case tkExponent:
            if (!IntDone) {
                PutInt(0, IntTotal);
                IntDone = true;
            }
            Out.Put(S.ExpChar);
            if (Exponent < 0)
                Out.PutAscii('-');
            else if (S.ExpPlus)
                Out.PutAscii('+');
            Out.PutExponent(Exponent, S.ExpDigits);
            break;
        }
    }
    if (!IntDone) PutInt(0, IntTotal);
    return Out.Text();
}

constexpr const char* NegCurrPatterns[16] = {"($1)", "-$1",  "$-1",   "$1-",  "(1$)", "-1$",
                                             "1-$",  "1$-",  "-1 $",  "-$ 1", "1 $-", "$ 1-",
                                             "$ -1", "1- $", "($ 1)", "(1 $)"};
constexpr const char* CurrPatterns[4] = {"$1", "1$", "$ 1", "1 $"};

// Long doubles travel by reference inside: copying them through x87 loads and stores costs more than
// the rest of a short picture.
QString FormatFloatImpl(const QString& Format, const Extended& Value, const TFormatSettings& Settings) {
    if (!std::isfinite(Value)) return NonFiniteText(Value);
    const TPicture& P = CachedPicture(Format);
    if (P.Sections[0].Empty) return GeneralText(Value, 15, 0, Settings);
    std::size_t Index = Value > 0 ? 0 : Value < 0 ? 1 : 2;
    if (P.Sections[Index].Empty) Index = 0;
    const TSection* S = &P.Sections[Index];

    TDecimal D = ToDecimal(Value);
    if (S->Scientific) {
        RoundTo(D, std::min(std::max(S->IntCount + S->FracCount, 1), 18));
    } else {
        RoundTo(D, D.Exp + S->FracCount);
        if (D.Exp >= 18) return GeneralText(Value, 15, 0, Settings);
    }
    if (D.IsZero() && !P.Sections[2].Empty && Index != 2) {
        Index = 2;
        S = &P.Sections[2];
    }
    return ApplySection(P, *S, D, Index == 0 && D.Negative && !D.IsZero(), Settings);
}

} // namespace

QString FormatFloat(const QString& Format, Extended Value, const TFormatSettings& Settings) {
    return FormatFloatImpl(Format, Value, Settings);
}

QString FormatFloat(const QString& Format, Extended Value) {
    return FormatFloatImpl(Format, Value, FormatSettings);
}

QString FloatToStrF(Extended Value, TFloatFormat Format, int Precision, int Digits,
                    const TFormatSettings& Settings) {
    if (!std::isfinite(Value)) return NonFiniteText(Value);
    Precision = std::clamp(Precision, 2, 18);
    // A width above 4 means none at all, not the widest.
    const int ExpDigits = Digits > 4 ? 0 : std::max(Digits, 0);
    const TDecimal Exact = ToDecimal(Value);
    TOut Out;
    switch (Format) {
    case ffExponent: {
        TDecimal D = Exact;
        RoundTo(D, Precision);
        if (D.Negative && !D.IsZero()) Out.PutAscii('-');
        Out.PutAscii(D.Digit(0));
        Out.Put(Settings.DecimalSeparator);
        for (int I = 1; I < Precision; ++I)
            Out.PutAscii(D.Digit(I));
        const int X = D.IsZero() ? 0 : D.Exp - 1;
        Out.PutAscii('E');
        Out.PutAscii(X < 0 ? '-' : '+');
        Out.PutExponent(X, ExpDigits);
        break;
    }
    case ffFixed:
    case ffNumber:
    case ffCurrency: {
        const int Decimals = std::clamp(Digits, 0, 18);
        TDecimal D = Exact;
        // One rounding to whichever is shorter: Precision significant digits or the decimals.
        RoundTo(D, std::min(Precision, D.Exp + Decimals));
        if (D.Exp > Precision) {
            PutGeneral(Out, Exact, Precision, ExpDigits, Settings.DecimalSeparator);
            break;
        }
        const bool Minus = D.Negative && !D.IsZero();
        TOut Num;
        PutFixedInt(Num, D, Format != ffFixed, Settings.ThousandSeparator);
        if (Decimals > 0) {
            Num.Put(Settings.DecimalSeparator);
            for (int I = 0; I < Decimals; ++I)
                Num.PutAscii(D.Digit(D.Exp + I));
        }
        if (Format != ffCurrency) {
            if (Minus) Out.PutAscii('-');
            const QString T = Num.Text();
            Out.Put(T);
            break;
        }
        const char* Pattern = Minus
                                  ? NegCurrPatterns[Settings.NegCurrFormat < 16 ? Settings.NegCurrFormat : 0]
                                  : CurrPatterns[Settings.CurrencyFormat < 4 ? Settings.CurrencyFormat : 0];
        const QString T = Num.Text();
        for (const char* C = Pattern; *C; ++C) {
            if (*C == '$')
                Out.Put(Settings.CurrencyString);
            else if (*C == '1')
                Out.Put(T);
            else
                Out.PutAscii(*C);
        }
        break;
    }
    case ffGeneral:
    default:
        PutGeneral(Out, Exact, Precision, ExpDigits, Settings.DecimalSeparator);
        break;
    }
    return Out.Text();
}

QString FloatToStrF(Extended Value, TFloatFormat Format, int Precision, int Digits) {
    return FloatToStrF(Value, Format, Precision, Digits, FormatSettings);
}

QString FloatToStr(Extended Value) {
    return FloatToStrF(Value, ffGeneral, 15, 0, FormatSettings);
}
QString FloatToStr(Extended Value, const TFormatSettings& Settings) {
    return FloatToStrF(Value, ffGeneral, 15, 0, Settings);
}

QString FormatWidth(int Width, const QString& S) {
    const qint64 W = Width < 0 ? -static_cast<qint64>(Width) : Width;
    if (S.size() >= W) return S;
    const QString Blanks(W - S.size(), QLatin1Char(' ')); // pad <= 2^31; qsizetype is 64-bit
    return Width < 0 ? S + Blanks : Blanks + S;
}

QString TrimNumZeroes(const QString& S, const TFormatSettings& Settings) {
    const QChar Sep = Settings.DecimalSeparator;
    const auto IsDigit = [](QChar C) { return C >= QLatin1Char('0') && C <= QLatin1Char('9'); };
    for (qsizetype I = 0; I + 1 < S.size(); ++I) {
        if (S[I] != Sep || !IsDigit(S[I + 1])) continue;
        qsizetype End = I + 1;
        while (End < S.size() && IsDigit(S[End]))
            ++End;
        qsizetype Keep = End;
        while (Keep > I + 1 && S[Keep - 1] == QLatin1Char('0'))
            --Keep;
        if (Keep > I + 1) return QString(S).remove(Keep, End - Keep);
        // Nothing significant after the separator: drop it too, keeping at least one digit.
        const bool DigitBefore = I > 0 && IsDigit(S[I - 1]);
        QString R = QString(S).remove(I, End - I);
        if (!DigitBefore) R.insert(I, QLatin1Char('0'));
        return R;
    }
    return S;
}

QString TrimNumZeroes(const QString& S) {
    return TrimNumZeroes(S, FormatSettings);
}

qint64 Round(Extended Value) {
    constexpr Extended Two63 = 9223372036854775808.0L;
    if (std::isnan(Value)) return 0;
    if (Value >= Two63) return std::numeric_limits<qint64>::max();
    if (Value < -Two63) return std::numeric_limits<qint64>::min();
    const Extended Floor = std::floor(Value);
    const Extended Frac = Value - Floor; // exact: 64 significand bits cover |Value| < 2^63
    qint64 I = static_cast<qint64>(Floor);
    if (Frac > 0.5L || (Frac == 0.5L && (I & 1))) {
        if (I == std::numeric_limits<qint64>::max()) return I;
        ++I;
    }
    return I;
}

} // namespace qxnum

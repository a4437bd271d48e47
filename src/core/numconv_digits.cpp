// The 18 significant decimal digits of an 80-bit extended value, correctly rounded (ties to even).
//
// |v| = m * 2^e is scaled by 10^p, p = 17 - k with k a lower estimate of its decade, so that the
// integer part Q of X = v * 10^p has 18 or 19 digits.
// - 0 <= p <= 27 (about 1e-10 to 1e18): X = m * 5^p * 2^(e+p) exactly in 128 bits.
// - -27 <= p < 0 (1e18 to 1e45): X = m * 2^(e+p) / 5^-p by an exact 128-bit division.
// In both every rounding decision is exact, ties included. Elsewhere 10^p = 10^(27a) * 5^b * 2^b:
// the 10^(27a) come from a small table of 128-bit lower bounds built once at first use, so X is a
// lower bound within 2^-61 of the true value; only when it lies that close to a rounding boundary
// (never for random values in practice) do we hand the value to std::to_chars.
#include <qxnum/numconv.h>

#include "numconv_digits.h"

#include <array>
#include <bit>
#include <charconv>
#include <cstdint>
#include <cstring>

namespace qxnum::detail {

namespace {

using u64 = std::uint64_t;
__extension__ using u128 = unsigned __int128; // a GCC/Clang extension

constexpr u64 Pow10_17 = 100000000000000000ULL;
constexpr u64 Pow10_18 = 1000000000000000000ULL;

constexpr std::array<u64, 28> Pow5 = [] {
    std::array<u64, 28> P{};
    P[0] = 1;
    for (std::size_t I = 1; I < P.size(); ++I)
        P[I] = P[I - 1] * 5;
    return P;
}();
constexpr u64 Pow5_27 = Pow5[27];

int BitLength(u64 X) {
    return static_cast<int>(std::bit_width(X));
}

// A 256-bit mantissa W (top bit set) times 2^Exp, used only to build the table.
struct TWide {
    u64 W[4]; // little-endian limbs
    int Exp;
    bool Exact;
};

TWide WideMul(const TWide& A, const TWide& B) {
    u64 P[8] = {};
    for (int I = 0; I < 4; ++I) {
        u64 Carry = 0;
        for (int J = 0; J < 4; ++J) {
            const u128 T = static_cast<u128>(A.W[I]) * B.W[J] + P[I + J] + Carry;
            P[I + J] = static_cast<u64>(T);
            Carry = static_cast<u64>(T >> 64);
        }
        P[I + 4] = Carry;
    }
    // The product lies in [2^510, 2^512): keep its top 256 bits, truncating (a lower bound).
    TWide R{};
    R.Exact = A.Exact && B.Exact;
    if (P[7] >> 63) {
        for (int I = 0; I < 4; ++I)
            R.W[I] = P[I + 4];
        R.Exp = A.Exp + B.Exp + 256;
        if (P[0] | P[1] | P[2] | P[3]) R.Exact = false;
    } else {
        for (int I = 0; I < 4; ++I)
            R.W[I] = (P[I + 4] << 1) | (P[I + 3] >> 63);
        R.Exp = A.Exp + B.Exp + 255;
        if ((P[3] << 1) | P[2] | P[1] | P[0]) R.Exact = false;
    }
    return R;
}

// 10^(27a) for a in [MinA, MaxA]: the top 128 bits of its mantissa, truncated, times 2^Exp.
constexpr int MinA = -185;
constexpr int MaxA = 186;

struct TPow {
    u64 Hi, Lo;
    int Exp;
    bool Exact;
};

struct TPowTable {
    TPow Entry[MaxA - MinA + 1];

    TPowTable() {
        // 5^27 exactly, and 5^-27 = floor(2^320 / 5^27) normalised (a lower bound).
        const TWide Five{{0, 0, 0, Pow5_27 << 1}, -(256 - 63), true}; // 5^27 has 63 bits
        u64 Q[5];
        u128 Rem = 1; // long division of 2^320 (limbs 0..4 are zero below the leading 1)
        for (int I = 4; I >= 0; --I) {
            const u128 Cur = (Rem << 64);
            Q[I] = static_cast<u64>(Cur / Pow5_27);
            Rem = Cur % Pow5_27;
        }
        // Q = 2^320 / 5^27 has 258 bits: shift it down to 256.
        const int Shift = BitLength(Q[4]); // bits above limb 3
        TWide Inv{};
        for (int I = 0; I < 4; ++I)
            Inv.W[I] = (Q[I] >> Shift) | (Q[I + 1] << (64 - Shift));
        Inv.Exp = -320 + Shift;
        Inv.Exact = false;

        TWide One{{0, 0, 0, 1ULL << 63}, -255, true};
        Set(0, One);
        TWide Up = One, Down = One;
        for (int A = 1; A <= MaxA; ++A) {
            Up = WideMul(Up, Five);
            TWide T = Up;
            T.Exp += 27 * A;
            Set(A, T);
        }
        for (int A = 1; A <= -MinA; ++A) {
            Down = WideMul(Down, Inv);
            TWide T = Down;
            T.Exp -= 27 * A;
            Set(-A, T);
        }
    }

    void Set(int A, const TWide& V) {
        TPow& P = Entry[A - MinA];
        P.Hi = V.W[3];
        P.Lo = V.W[2];
        P.Exp = V.Exp + 128;
        P.Exact = V.Exact && V.W[1] == 0 && V.W[0] == 0;
    }
};

const TPowTable& PowTable() {
    static const TPowTable Table;
    return Table;
}

// Bits [Off, Off + 64) of the 192-bit number P (little-endian limbs); 0 <= Off < 192.
u64 Bits64(const u64 P[3], int Off) {
    const int Limb = Off >> 6, Bit = Off & 63;
    const u64 Low = P[Limb] >> Bit;
    const u64 High = (Limb + 1 < 3 && Bit) ? P[Limb + 1] << (64 - Bit) : 0;
    return Low | High;
}

// Any of bits [0, N) of P set.
bool AnyBits(const u64 P[3], int N) {
    for (int Limb = 0; Limb < 3 && N > 0; ++Limb, N -= 64) {
        const u64 Mask = N >= 64 ? ~0ULL : ((1ULL << N) - 1);
        if (P[Limb] & Mask) return true;
    }
    return false;
}

const char DigitPairs[] = "00010203040506070809101112131415161718192021222324252627282930313233343536373839"
                          "40414243444546474849505152535455565758596061626364656667686970717273747576777879"
                          "8081828384858687888990919293949596979899";

// V < 10^9: nine digits, leading zeros kept. V * ceil(2^57 / 10^8) is V / 10^8 in fixed point with 57
// fraction bits; each multiplication of the fraction by 100 brings the next two digits above the point.
// Checked for every V below 10^9.
void Write9(char* Out, u64 V) {
    constexpr u64 Mask = (1ULL << 57) - 1;
    u64 T = V * 1441151881ULL;
    Out[0] = static_cast<char>('0' + (T >> 57));
    for (int I = 0; I < 4; ++I) {
        T = (T & Mask) * 100;
        std::memcpy(Out + 1 + 2 * I, DigitPairs + 2 * (T >> 57), 2);
    }
}

int SlowDigits18(const Extended& Value, char* Digits) {
    char Buf[64];
    const auto Res =
        std::to_chars(Buf, Buf + sizeof Buf, Value < 0 ? -Value : Value, std::chars_format::scientific, 17);
    // "d.ddddddddddddddddde[+-]x..."
    Digits[0] = Buf[0];
    std::memcpy(Digits + 1, Buf + 2, 17);
    int Exp = 0;
    std::from_chars(Buf + 21, Res.ptr, Exp);
    if (Buf[20] == '-') Exp = -Exp;
    return Exp;
}

bool DecodeExtended(const Extended& Value, std::uint64_t& Mantissa, int& Exponent, bool& Negative) {
    unsigned char Bytes[10];
    static_assert(sizeof(Extended) >= 10);
    std::memcpy(Bytes, &Value, 10);
    u64 M;
    std::memcpy(&M, Bytes, 8);
    const unsigned SignExp = Bytes[8] | (static_cast<unsigned>(Bytes[9]) << 8);
    Negative = (SignExp & 0x8000) != 0;
    const int BiasedExp = static_cast<int>(SignExp & 0x7FFF);
    if (BiasedExp == 0x7FFF) return false;
    Mantissa = M;
    Exponent = (BiasedExp == 0 ? 1 : BiasedExp) - 16383 - 63;
    return true;
}

} // namespace

int ExtendedDigits18(const Extended& Value, char* Digits) {
    u64 M;
    int E;
    bool Negative;
    if (!DecodeExtended(Value, M, E, Negative) || M == 0) {
        std::memset(Digits, '0', 18);
        return 0;
    }
    const int B = BitLength(M) + E; // 2^(B-1) <= |v| < 2^B
    // floor((B - 1) * log10(2)), exact over the whole extended range.
    const int K = static_cast<int>((static_cast<std::int64_t>(B - 1) * 646456993) >> 31);
    const int P = 17 - K;
    // X = Q + fraction. Cmp: the fraction against 1/2; NonZero: the fraction is not 0.
    u64 Q;
    int Cmp;
    bool NonZero;
    if (P >= 0 && P <= 27) {
        // The decades around 1 (10^-10 to 10^17): X = M * 5^P * 2^(E+P) exactly in 128 bits.
        const u128 Prod = static_cast<u128>(M) * Pow5[static_cast<std::size_t>(P)]; // 0 <= P <= 27
        const int S = -(E + P);
        if (S <= 0) {
            Q = static_cast<u64>(Prod << -S); // an integer below 2 * 10^18
            Cmp = -1;
            NonZero = false;
        } else {
            if (S >= 128) return SlowDigits18(Value, Digits);
            const u128 Rem = Prod & ((static_cast<u128>(1) << S) - 1), Half = static_cast<u128>(1) << (S - 1);
            const u128 Quot = Prod >> S;
            if (Quot >> 64) return SlowDigits18(Value, Digits);
            Q = static_cast<u64>(Quot);
            Cmp = Rem > Half ? 1 : Rem == Half ? 0 : -1;
            NonZero = Rem != 0;
        }
    } else if (P < 0 && P >= -27) {
        // Large values (10^18 to 10^45): divide exactly, so that ties like 10^18 + 5 are seen.
        const int T = E + P; // X = M * 2^T / 5^-P
        if (T > 63 || T < -64) return SlowDigits18(Value, Digits);
        const u128 Num = T >= 0 ? static_cast<u128>(M) << T : static_cast<u128>(M);
        const u128 Five = Pow5[static_cast<std::size_t>(-P)]; // 1 <= -P <= 27
        const u128 Den = T >= 0 ? Five : Five << -T;
        const u128 Quot = Num / Den, Rem = Num % Den;
        if (Quot >> 64) return SlowDigits18(Value, Digits);
        Q = static_cast<u64>(Quot);
        Cmp = 2 * Rem > Den ? 1 : 2 * Rem == Den ? 0 : -1;
        NonZero = Rem != 0;
    } else {
        int A = P >= 0 ? P / 27 : -((-P + 26) / 27);
        const int Bq = P - 27 * A; // 0 <= Bq <= 26
        const u64 Pow5Bq = Pow5[static_cast<std::size_t>(Bq)];
        if (A < MinA || A > MaxA) return SlowDigits18(Value, Digits);
        const TPow& C = PowTable().Entry[A - MinA];

        // F = top 128 bits of C * 5^Bq; F * 2^G = 10^P (or a lower bound of it).
        const u128 CLo = static_cast<u128>(C.Lo) * Pow5Bq;
        const u128 CHi = static_cast<u128>(C.Hi) * Pow5Bq + static_cast<u64>(CLo >> 64);
        const u64 T0 = static_cast<u64>(CLo), T1 = static_cast<u64>(CHi), T2 = static_cast<u64>(CHi >> 64);
        const int Top = BitLength(T2); // bits of the product above 128
        u64 FHi, FLo;
        bool Exact = C.Exact;
        if (Top == 0) {
            FHi = T1;
            FLo = T0;
        } else {
            FHi = (T2 << (64 - Top)) | (T1 >> Top);
            FLo = (T1 << (64 - Top)) | (T0 >> Top);
            if (T0 << (64 - Top)) Exact = false;
        }
        const int G = C.Exp + Top + Bq; // 10^P = 10^(27A) * 5^Bq * 2^Bq

        // X = M * F * 2^(E + G), with M * F held exactly in 192 bits.
        const u128 PLo = static_cast<u128>(M) * FLo;
        const u128 PHi = static_cast<u128>(M) * FHi + static_cast<u64>(PLo >> 64);
        const u64 Prod[3] = {static_cast<u64>(PLo), static_cast<u64>(PHi), static_cast<u64>(PHi >> 64)};
        const int S = -(E + G);
        if (S < 64 || S > 191) return SlowDigits18(Value, Digits);
        Q = Bits64(Prod, S);
        if (S + 64 < 192 && Bits64(Prod, S + 64) != 0) return SlowDigits18(Value, Digits);
        const u64 Frac = Bits64(Prod, S - 64); // first 64 bits below the point
        const bool Sticky = AnyBits(Prod, S - 64);
        constexpr u64 Half = 1ULL << 63;
        Cmp = Frac > Half || (Frac == Half && Sticky) ? 1 : Frac == Half ? 0 : -1;
        NonZero = Frac != 0 || Sticky;
        if (!Exact) {
            // The approximate X is at most 2^-61 below the true one (64 units of Frac are 2^-58):
            // near a place where the rounding changes, ask the exact printer.
            constexpr u64 Margin = 64;
            const bool NearHalf = Frac >= Half - Margin && Frac <= Half;
            const bool NearWhole = Frac >= ~0ULL - Margin || (Frac == 0 && !Sticky);
            if (Q < Pow10_18 ? NearHalf : (NearWhole && (Q % 10 == 4 || Q % 10 == 5)))
                return SlowDigits18(Value, Digits);
        }
    }
    if (Q < Pow10_17) return SlowDigits18(Value, Digits);

    u64 N;
    bool Up;
    int Exp10 = K;
    if (Q < Pow10_18) {
        N = Q;
        Up = Cmp > 0 || (Cmp == 0 && (N & 1));
    } else {
        N = Q / 10;
        const unsigned D = static_cast<unsigned>(Q % 10);
        ++Exp10;
        Up = D > 5 || (D == 5 && (NonZero || (N & 1)));
    }
    N += Up;
    if (N == Pow10_18) {
        N = Pow10_17;
        ++Exp10;
    }
    Write9(Digits, N / 1000000000);
    Write9(Digits + 9, N % 1000000000);
    return Exp10;
}

} // namespace qxnum::detail

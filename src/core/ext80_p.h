// The 80-bit extended format of the stream, taken apart with bit operations so that the result is
// the same on any CPU (not installed). The hot read of a double is inline here for the filer.
#pragma once

#include <qxnum/filer.h>

#include <QtEndian>

#include <bit>

namespace qxnum::ext80 {

inline constexpr quint64 IntegerBit = 0x8000000000000000ULL;
inline constexpr quint64 QuietNaNMantissa = 0xC000000000000000ULL;
inline constexpr int ExtBias = 16383;
// Exponent of the least significant significand bit of an 80-bit denormal: 2^(1 - 16383 - 63).
inline constexpr int ExtDenormalShift = 1 - ExtBias - 63;

inline TExt80Bytes Pack(bool Negative, quint16 Exponent, quint64 Mantissa) {
    TExt80Bytes B;
    qToLittleEndian<quint64>(Mantissa, B.data());
    qToLittleEndian<quint16>(static_cast<quint16>((Negative ? 0x8000 : 0) | (Exponent & 0x7FFF)),
                             B.data() + 8);
    return B;
}

struct TExtFields {
    bool Negative;
    quint16 Exponent;
    quint64 Mantissa;
};

inline TExtFields Unpack(const quint8* B) {
    const quint16 SignExp = qFromLittleEndian<quint16>(B + 8);
    return {(SignExp & 0x8000) != 0, static_cast<quint16>(SignExp & 0x7FFF), qFromLittleEndian<quint64>(B)};
}

// Mantissa / 2^Shift rounded half to even; Mantissa has its top bit set.
inline quint64 RoundShift(quint64 Mantissa, int Shift) {
    if (Shift <= 0) return Mantissa;
    if (Shift > 64) return 0;
    if (Shift == 64) return Mantissa > IntegerBit ? 1 : 0;
    quint64 Q = Mantissa >> Shift;
    const quint64 Rem = Mantissa & ((quint64(1) << Shift) - 1);
    const quint64 Half = quint64(1) << (Shift - 1);
    if (Rem > Half || (Rem == Half && (Q & 1))) ++Q;
    return Q;
}

inline double DoubleFromExt(const TExtFields& F) {
    const quint64 Sign = F.Negative ? IntegerBit : 0;
    const bool IntBitSet = (F.Mantissa & IntegerBit) != 0;
    if (F.Exponent == 0x7FFF) {
        if (IntBitSet && (F.Mantissa << 1) == 0) return std::bit_cast<double>(Sign | 0x7FF0000000000000ULL);
        // Keep what fits of the payload, always quiet.
        return std::bit_cast<double>(Sign | 0x7FF8000000000000ULL |
                                     ((F.Mantissa >> 11) & 0x000FFFFFFFFFFFFFULL));
    }
    if (F.Exponent != 0 && !IntBitSet) return std::bit_cast<double>(Sign | 0x7FF8000000000000ULL);
    if (F.Mantissa == 0) return std::bit_cast<double>(Sign);

    // Value = Mantissa * 2^E0; normalise so that the top bit is set.
    int E0 = (F.Exponent == 0 ? 1 : F.Exponent) - ExtBias - 63;
    const int Lz = std::countl_zero(F.Mantissa);
    const quint64 M = F.Mantissa << Lz;
    E0 -= Lz;
    int E = E0 + 63; // exponent of the leading bit
    if (E > 1023) return std::bit_cast<double>(Sign | 0x7FF0000000000000ULL);
    if (E >= -1022) {
        quint64 Q = RoundShift(M, 11);
        if (Q == (quint64(1) << 53)) {
            Q >>= 1;
            ++E;
            if (E > 1023) return std::bit_cast<double>(Sign | 0x7FF0000000000000ULL);
        }
        return std::bit_cast<double>(Sign | (quint64(E + 1023) << 52) | (Q & 0x000FFFFFFFFFFFFFULL));
    }
    // Denormal double: units of 2^-1074. A carry into bit 52 gives the smallest normal, which
    // the same bit pattern encodes.
    return std::bit_cast<double>(Sign | RoundShift(M, -1074 - E0));
}

} // namespace qxnum::ext80

// Conversions between the stream's 80-bit extended values and long double / double.
#include "ext80_p.h"

#include <cfloat>
#include <cmath>
#include <limits>

namespace qxnum {

using namespace ext80;

namespace {

Extended SignedNaN(bool Negative) {
    return std::copysign(std::numeric_limits<Extended>::quiet_NaN(), Negative ? -1.0L : 1.0L);
}

} // namespace

TExt80Bytes ExtendedToExt80(Extended Value) {
    const bool Negative = std::signbit(Value);
    if (std::isnan(Value)) return Pack(Negative, 0x7FFF, QuietNaNMantissa);
    if (std::isinf(Value)) return Pack(Negative, 0x7FFF, IntegerBit);
    if (Value == 0) return Pack(Negative, 0, 0);

    const Extended A = std::fabs(Value);
    int E = 0;
    const Extended F = std::frexp(A, &E); // A = F * 2^E, F in [0.5, 1)
    int Biased = E - 1 + ExtBias;
    if (Biased >= 1) {
        Extended Scaled = std::ldexp(F, 64);
        if constexpr (LDBL_MANT_DIG > 64) Scaled = std::rint(Scaled);
        if (Scaled >= 18446744073709551616.0L) { // rounding carried out of 64 bits
            Scaled /= 2;
            ++Biased;
        }
        if (Biased >= 0x7FFF) return Pack(Negative, 0x7FFF, IntegerBit);
        return Pack(Negative, static_cast<quint16>(Biased), static_cast<quint64>(Scaled));
    }
    Extended Scaled = std::ldexp(A, -ExtDenormalShift);
    if constexpr (LDBL_MANT_DIG > 64) Scaled = std::rint(Scaled);
    const quint64 M = static_cast<quint64>(Scaled);
    // A denormal that rounded up to 2^63 is the smallest normal.
    return Pack(Negative, (M & IntegerBit) ? 1 : 0, M);
}

Extended Ext80ToExtended(const TExt80Bytes& Bytes) {
    if constexpr (LDBL_MANT_DIG < 64) {
        return Ext80ToDouble(Bytes);
    } else {
        const TExtFields F = Unpack(Bytes.data());
        const bool IntBitSet = (F.Mantissa & IntegerBit) != 0;
        if (F.Exponent == 0x7FFF) {
            if (IntBitSet && (F.Mantissa << 1) == 0)
                return F.Negative ? -std::numeric_limits<Extended>::infinity()
                                  : std::numeric_limits<Extended>::infinity();
            return SignedNaN(F.Negative);
        }
        if (F.Exponent == 0) {
            if (F.Mantissa == 0) return F.Negative ? -0.0L : 0.0L;
            const Extended V = std::ldexp(static_cast<Extended>(F.Mantissa), ExtDenormalShift);
            return F.Negative ? -V : V;
        }
        if (!IntBitSet) return SignedNaN(F.Negative);
        const Extended V = std::ldexp(static_cast<Extended>(F.Mantissa), F.Exponent - ExtBias - 63);
        return F.Negative ? -V : V;
    }
}

double Ext80ToDouble(const TExt80Bytes& Bytes) {
    return DoubleFromExt(Unpack(Bytes.data()));
}

Extended MakeExtended(bool Negative, quint16 Exponent, quint64 Mantissa) {
    return Ext80ToExtended(Pack(Negative, Exponent, Mantissa));
}

} // namespace qxnum

#include <qxnum/numconv.h>
#include <qxnum/numtext.h>

#include <cmath>
#include <limits>

namespace qxnum {

namespace {

struct TDataRange {
    Extended Min, Max;
};

constexpr TDataRange DataRanges[] = {
    {0.0L, 255.0L},                                                    // dtByte
    {-1.7e308L, 1.7e308L},                                             // dtDouble
    {-1.1e4932L, 1.1e4932L},                                           // dtExtended
    {-2147483647.0L, 2147483647.0L},                                   // dtInteger (one above INT_MIN, kept)
    {-128.0L, 127.0L},                                                 // dtShortint
    {-static_cast<Extended>(3.4e38f), static_cast<Extended>(3.4e38f)}, // dtSingle
    {-32768.0L, 32767.0L},                                             // dtSmallInt
    {0.0L, 65535.0L},                                                  // dtWord
};
constexpr int DataTypeCount = static_cast<int>(std::size(DataRanges));

const TDataRange& RangeOf(TDataType DataType) {
    // A corrupt ordinal gets the widest range.
    return DataRanges[DataType < DataTypeCount ? DataType : dtExtended];
}

bool Within(Extended V, const TDataRange& R) {
    return V >= R.Min && V <= R.Max;
} // false for NaN

} // namespace

bool IsIntegerDataType(TDataType DataType) {
    switch (DataType) {
    case dtByte:
    case dtInteger:
    case dtShortint:
    case dtSmallInt:
    case dtWord:
        return true;
    default:
        return false;
    }
}

Extended DataTypeMin(TDataType DataType) {
    return RangeOf(DataType).Min;
}
Extended DataTypeMax(TDataType DataType) {
    return RangeOf(DataType).Max;
}

QString EffectiveFormat(TParType ParType, TUnitSystem UnitSystem, const QString& Format) {
    return Format.isEmpty() ? ParFormatOf(ParType, UnitSystem) : Format;
}

QString UnscaledFormat(TParType ParType, TUnitSystem UnitSystem, const QString& Format,
                       const TFormatSettings& Settings) {
    double F = ParScaleOf(ParType, UnitSystem);
    QString S = EffectiveFormat(ParType, UnitSystem, Format);
    const QChar D = Settings.DecimalSeparator;
    // A zero or non-finite factor in a changed table has no decade; leave the picture alone.
    if (F == 1.0 || F == 0.0 || !std::isfinite(F)) return S;
    if (std::fabs(F) > 1.0) {
        while (std::fabs(F) > 1.00000000000001) {
            const qsizetype P = S.indexOf(D);
            if (P >= 0) {
                if (P + 1 < S.size()) S.remove(P + 1, 1);
                if (S.endsWith(D)) S.chop(1);
            }
            F /= 10.0;
        }
    } else {
        while (std::fabs(F) < 0.99999999999999) {
            qsizetype P = S.indexOf(D);
            if (P < 0) {
                S.append(D);
                P = S.size() - 1;
            }
            S.insert(P + 1, QLatin1Char('0'));
            F *= 10.0;
        }
    }
    return S;
}

QString ParToStr(TParType ParType, TUnitSystem UnitSystem, const QString& Format, bool Scaled, Extended Value,
                 const TFormatSettings& Settings) {
    if (Scaled) {
        // This runs for every value an edit or grid cell shows: no picture copy, no identity division.
        const QString& Picture = Format.isEmpty() ? ParFormatOf(ParType, UnitSystem) : Format;
        const double F = ParScaleOf(ParType, UnitSystem);
        return FormatFloat(Picture, F == 1.0 ? Value : Value / static_cast<Extended>(F));
    }
    return FormatFloat(UnscaledFormat(ParType, UnitSystem, Format, Settings), Value);
}

QString ParToStr(TParType ParType, TUnitSystem UnitSystem, const QString& Format, bool Scaled,
                 Extended Value) {
    return ParToStr(ParType, UnitSystem, Format, Scaled, Value, NumInpFormatSettings);
}

QString ValueString(Extended Value, TDataType DataType, TNumericType NumericType, quint16 Digits,
                    quint16 Decimals, TParType ParType, TUnitSystem UnitSystem, const QString& Format,
                    Extended CustomScale, Extended ScaleOffset, bool Scaled, bool TrimZeroes,
                    const TFormatSettings& Settings) {
    Extended V = Value;
    // Skipping the identity division keeps the common case cheap; "+ 0" still turns -0 into +0
    // exactly as the full expression would.
    if (Scaled) V = CustomScale == 1.0L ? Value + ScaleOffset : Value / CustomScale + ScaleOffset;

    if (IsIntegerDataType(DataType)) {
        // Round covers the 64-bit range; beyond it (and for NaN) the float text says what is there.
        constexpr Extended Limit = 9223372036854775807.0L;
        if (std::isfinite(V) && V > -Limit && V < Limit) return QString::number(Round(V));
        return FloatToStrF(V, ffGeneral, 18, 0);
    }

    QString S;
    if (NumericType <= ntCurrency)
        S = FloatToStrF(V, static_cast<TFloatFormat>(NumericType), Digits, Decimals);
    else if (NumericType == ntParType)
        S = ParToStr(ParType, UnitSystem, Format, Scaled, V, Settings);
    else
        S = FloatToStrF(V, ffGeneral, Digits, Decimals);
    if (TrimZeroes) return TrimNumZeroes(S);
    return S;
}

QString ValueString(Extended Value, TDataType DataType, TNumericType NumericType, quint16 Digits,
                    quint16 Decimals, TParType ParType, TUnitSystem UnitSystem, const QString& Format,
                    Extended CustomScale, Extended ScaleOffset, bool Scaled, bool TrimZeroes) {
    return ValueString(Value, DataType, NumericType, Digits, Decimals, ParType, UnitSystem, Format,
                       CustomScale, ScaleOffset, Scaled, TrimZeroes, FormatSettings);
}

QString ValueString(const QString& Name, TParType ParType, TUnitSystem UnitSystem, double Value,
                    int NameWidth, int ValueWidth, int UnitWidth) {
    return FormatWidth(-NameWidth, Name) + QStringLiteral(" = ") +
           FormatWidth(ValueWidth, ParToStr(ParType, UnitSystem, QString(), true, Value)) + QLatin1Char(' ') +
           FormatWidth(-UnitWidth, ParUnitStrOf(ParType, UnitSystem));
}

Extended StrToPar(const QString& S, TNumericType NumericType, TParType ParType, TUnitSystem UnitSystem) {
    const Extended V = QX_StrToFloatDef(S, 0.0L);
    return NumericType == ntParType ? V * static_cast<Extended>(ParScaleOf(ParType, UnitSystem)) : V;
}

void CheckNumRange(TDataType DataType, Extended& Min, Extended& Max, Extended& Value) {
    const TDataRange& R = RangeOf(DataType);
    if (!Within(Min, R)) Min = R.Min;
    if (!Within(Max, R)) Max = R.Max;
    if (!Within(Value, R)) Value = 0.0L;
}

quint16 FormatExponentLength(TParType ParType, TUnitSystem UnitSystem, const QString& Format) {
    const QString S = EffectiveFormat(ParType, UnitSystem, Format).trimmed().toUpper();
    const qsizetype P = S.indexOf(QLatin1Char('E'));
    return P < 0 ? 0 : static_cast<quint16>(qMin<qsizetype>(S.size() - P, 0xFFFF));
}

quint16 FormatDecimalCount(TParType ParType, TUnitSystem UnitSystem, const QString& Format,
                           const TFormatSettings& Settings) {
    const QString S = EffectiveFormat(ParType, UnitSystem, Format).trimmed();
    const qsizetype P = S.indexOf(Settings.DecimalSeparator);
    if (P < 0) return 0;
    quint16 Count = 0;
    for (qsizetype I = P + 1; I < S.size() && (S[I] == QLatin1Char('0') || S[I] == QLatin1Char('#')); ++I)
        if (Count < 0xFFFF) ++Count;
    return Count;
}

} // namespace qxnum

/// \file
/// Value text: formatting of stored values for display, parsing of display text, storage ranges.
#pragma once

#include <qxnum/formatsettings.h>
#include <qxnum/units.h>

namespace qxnum {

/// True for the data types stored as integers (their text is a rounded integer).
QXNUM_CORE_EXPORT bool IsIntegerDataType(TDataType DataType);
/// The fixed range of a data type.
QXNUM_CORE_EXPORT Extended DataTypeMin(TDataType DataType);
QXNUM_CORE_EXPORT Extended DataTypeMax(TDataType DataType);

/// The main formatter. Integer data types give the value rounded half to even, whatever NumericType
/// says; float types use FloatToStrF (global FormatSettings) or, for ntParType, ParToStr.
QXNUM_CORE_EXPORT QString ValueString(Extended Value, TDataType DataType, TNumericType NumericType,
                                      quint16 Digits, quint16 Decimals, TParType ParType,
                                      TUnitSystem UnitSystem, const QString& Format, Extended CustomScale,
                                      Extended ScaleOffset, bool Scaled, bool TrimZeroes,
                                      const TFormatSettings& Settings);
/// The same with the global FormatSettings.
QXNUM_CORE_EXPORT QString ValueString(Extended Value, TDataType DataType, TNumericType NumericType,
                                      quint16 Digits, quint16 Decimals, TParType ParType,
                                      TUnitSystem UnitSystem, const QString& Format, Extended CustomScale,
                                      Extended ScaleOffset, bool Scaled, bool TrimZeroes);
/// The report line "name = value unit" with "%*s = %*s %*s" and widths -NameWidth, ValueWidth, -UnitWidth.
QXNUM_CORE_EXPORT QString ValueString(const QString& Name, TParType ParType, TUnitSystem UnitSystem,
                                      double Value, int NameWidth, int ValueWidth, int UnitWidth);

/// Picture text of a value of ParType; Scaled divides by the table factor first, otherwise the picture
/// is adapted to base units (UnscaledFormat).
QXNUM_CORE_EXPORT QString ParToStr(TParType ParType, TUnitSystem UnitSystem, const QString& Format,
                                   bool Scaled, Extended Value, const TFormatSettings& Settings);
/// The same with NumInpFormatSettings.
QXNUM_CORE_EXPORT QString ParToStr(TParType ParType, TUnitSystem UnitSystem, const QString& Format,
                                   bool Scaled, Extended Value);

/// Parses display text (0 for text that is not a number); ntParType multiplies by the table factor.
QXNUM_CORE_EXPORT Extended StrToPar(const QString& S, TNumericType NumericType, TParType ParType,
                                    TUnitSystem UnitSystem);

/// Resets Min or Max outside the data type's range (or NaN) to the range limit, and Value to 0.
QXNUM_CORE_EXPORT void CheckNumRange(TDataType DataType, Extended& Min, Extended& Max, Extended& Value);

/// Format when not empty, otherwise the standard picture of the parameter type.
QXNUM_CORE_EXPORT QString EffectiveFormat(TParType ParType, TUnitSystem UnitSystem, const QString& Format);
/// The effective picture adapted to base units: one decimal less or more per decade of the factor.
QXNUM_CORE_EXPORT QString UnscaledFormat(TParType ParType, TUnitSystem UnitSystem, const QString& Format,
                                         const TFormatSettings& Settings);
/// Characters from the first "E" of the trimmed effective picture to its end (0 without "E").
QXNUM_CORE_EXPORT quint16 FormatExponentLength(TParType ParType, TUnitSystem UnitSystem,
                                               const QString& Format);
/// Digit placeholders right after the first decimal separator of the trimmed effective picture.
QXNUM_CORE_EXPORT quint16 FormatDecimalCount(TParType ParType, TUnitSystem UnitSystem, const QString& Format,
                                             const TFormatSettings& Settings);

} // namespace qxnum

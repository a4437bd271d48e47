// Number <-> text routines with the semantics of the original host platform: picture formatting,
// the five float forms, decimal parsing, rounding, and amounts in words.
#pragma once

#include <qxnum/formatsettings.h>
#include <qxnum/global.h>

namespace qxnum {

enum TFloatFormat : quint8 { ffGeneral, ffExponent, ffFixed, ffNumber, ffCurrency };

// Picture formatting ("0.000##", "#,##0.00", "0.0000E+00", sections split by ';').
QString FormatFloat(const QString& Format, Extended Value);   // global FormatSettings
QString FormatFloat(const QString& Format, Extended Value, const TFormatSettings& Settings);

// The five float forms; Precision is clamped to 2..18.
QString FloatToStrF(Extended Value, TFloatFormat Format, int Precision, int Digits);   // global FormatSettings
QString FloatToStrF(Extended Value, TFloatFormat Format, int Precision, int Digits,
                    const TFormatSettings& Settings);
// FloatToStrF(Value, ffGeneral, 15, 0).
QString FloatToStr(Extended Value);
QString FloatToStr(Extended Value, const TFormatSettings& Settings);

// "%*s": S padded with blanks to |Width|; a negative width left-justifies.
QString FormatWidth(int Width, const QString& S);

// Removes non-significant trailing zeros of the decimal part (and a then trailing separator).
QString TrimNumZeroes(const QString& S);

// Rounds half to even to a 64-bit integer.
qint64 Round(Extended Value);

// Decimal parsing with the decimal separator of NumInpFormatSettings.
Extended QX_StrToFloat(const QString& S);   // throws EConvertError
bool TryQX_StrToFloat(const QString& S, double& Value);
bool TryQX_StrToFloat(const QString& S, Extended& Value);
Extended QX_StrToFloatDef(const QString& S, Extended Default);
// The same with explicit settings.
Extended QX_StrToFloat(const QString& S, const TFormatSettings& Settings);
bool TryQX_StrToFloat(const QString& S, double& Value, const TFormatSettings& Settings);
bool TryQX_StrToFloat(const QString& S, Extended& Value, const TFormatSettings& Settings);
Extended QX_StrToFloatDef(const QString& S, Extended Default, const TFormatSettings& Settings);

// An amount in words in dollars and cents; throws EConvertError for text that is not an amount.
QString MoneyStr(const QString& Amount);

} // namespace qxnum

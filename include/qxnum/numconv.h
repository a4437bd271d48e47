/// \file
/// Number <-> text routines with the semantics of the original host platform: picture formatting,
/// the five float forms, decimal parsing, rounding, and amounts in words.
#pragma once

#include <qxnum/formatsettings.h>
#include <qxnum/global.h>

namespace qxnum {

enum TFloatFormat : quint8 { ffGeneral, ffExponent, ffFixed, ffNumber, ffCurrency };

/// Picture formatting ("0.000##", "#,##0.00", "0.0000E+00", sections split by ';').
/// Digits are the value's 18 significant digits, rounded half away from zero to the picture.
/// Details beyond the usual picture rules:
/// - a value that rounds to zero takes the third section when it is not empty, otherwise it stays in
///   the section chosen by its sign; it never gets a '-' (a negative section's literals still show);
/// - all '0's right after E+/E-/e+/e- belong to the exponent (at most 4 count as minimum digits);
///   a second E+ (with its zeros) and a second '.' are literal text;
/// - integer digits that have no integer placeholder go where the decimal point (or else the
///   exponent, or else the end of the section) is; a scientific picture prints as many mantissa
///   digits as it has placeholders (at least one);
/// - a fixed value with 18 or more integer digits, NaN and infinities give FloatToStrF(v, ffGeneral, 15, 0).
QXNUM_CORE_EXPORT QString FormatFloat(const QString& Format, Extended Value); // global FormatSettings
QXNUM_CORE_EXPORT QString FormatFloat(const QString& Format, Extended Value, const TFormatSettings& Settings);

/// The five float forms; Precision is clamped to 2..18. Digits is clamped to 0..18 (decimals of
/// ffFixed, ffNumber, ffCurrency) or 0..4 (exponent digits of ffGeneral and ffExponent). NaN and
/// infinities give "NAN", "INF", "-INF"; a value that rounds to zero never shows a '-'.
/// A null ThousandSeparator means no grouping.
QXNUM_CORE_EXPORT QString FloatToStrF(Extended Value, TFloatFormat Format, int Precision,
                                      int Digits); // global FormatSettings
QXNUM_CORE_EXPORT QString FloatToStrF(Extended Value, TFloatFormat Format, int Precision, int Digits,
                                      const TFormatSettings& Settings);
/// FloatToStrF(Value, ffGeneral, 15, 0).
QXNUM_CORE_EXPORT QString FloatToStr(Extended Value);
QXNUM_CORE_EXPORT QString FloatToStr(Extended Value, const TFormatSettings& Settings);

/// "%*s": S padded with blanks to |Width|; a negative width left-justifies. Longer text is kept whole.
QXNUM_CORE_EXPORT QString FormatWidth(int Width, const QString& S);

/// Removes the non-significant trailing zeros of the decimal part of the first number in S, and then
/// a trailing separator: "2.500" -> "2.5", "2.000" -> "2", "1.2500E+03" -> "1.25E+03",
/// "1.500 kg" -> "1.5 kg". Text without a decimal separator ("100", "1E+03") is returned unchanged;
/// ".000" becomes "0". The separator is the DecimalSeparator of the global FormatSettings, the settings
/// that ValueString's texts are formatted with; '.' is not taken as well, because it may be the
/// thousands separator there.
QXNUM_CORE_EXPORT QString TrimNumZeroes(const QString& S);
QXNUM_CORE_EXPORT QString TrimNumZeroes(const QString& S, const TFormatSettings& Settings);

/// Rounds half to even to a 64-bit integer (0.5 -> 0, 1.5 -> 2, -2.5 -> -2). Values beyond the
/// 64-bit range saturate to its ends; NaN gives 0.
QXNUM_CORE_EXPORT qint64 Round(Extended Value);

/// Decimal parsing. Accepted: blanks around the text (Unicode white space), an optional sign, ASCII
/// digits with at most one decimal separator (".5" and "5." are fine, "." is not), an optional
/// exponent E/e with optional sign and at least one digit. No thousands separators, currency, hex,
/// "INF"/"NAN", non-ASCII digits or NUL characters; empty text fails.
/// The separator is the settings' DecimalSeparator (NumInpFormatSettings by default). When that is
/// not '.', a text that contains no such separator may use '.' instead (numbers pasted from other
/// programs); note that under a locale with '.' as thousands separator "1.234" then reads as 1.234.
/// The result is the correctly rounded value of the decimal text in the target type. A magnitude
/// beyond the target's range is an error (as the original's overflow error); an underflow gives the
/// nearest denormal or zero.
QXNUM_CORE_EXPORT Extended
QX_StrToFloat(const QString& S); // throws EConvertError "'S' is not a valid floating point value"
QXNUM_CORE_EXPORT bool TryQX_StrToFloat(const QString& S, double& Value);   // Value untouched on failure
QXNUM_CORE_EXPORT bool TryQX_StrToFloat(const QString& S, Extended& Value); // Value untouched on failure
QXNUM_CORE_EXPORT Extended QX_StrToFloatDef(const QString& S, Extended Default);
/// The same with explicit settings.
QXNUM_CORE_EXPORT Extended QX_StrToFloat(const QString& S, const TFormatSettings& Settings);
QXNUM_CORE_EXPORT bool TryQX_StrToFloat(const QString& S, double& Value, const TFormatSettings& Settings);
QXNUM_CORE_EXPORT bool TryQX_StrToFloat(const QString& S, Extended& Value, const TFormatSettings& Settings);
QXNUM_CORE_EXPORT Extended QX_StrToFloatDef(const QString& S, Extended Default,
                                            const TFormatSettings& Settings);

/// An amount in words in dollars and cents, rounded to cents half away from zero (exactly, on the
/// decimal text): "1234.5" -> "one thousand two hundred thirty-four dollars and fifty cents",
/// "1" -> "one dollar", "0.01" -> "zero dollars and one cent", "0" -> "zero dollars",
/// "-2" -> "minus two dollars", "100" -> "one hundred dollars" (no "and zero cents").
/// The text is a number as QX_StrToFloat reads it with NumInpFormatSettings, and may in addition carry
/// that record's CurrencyString before or after the number, thousands separators in groups of three,
/// and parentheses for a negative amount. Up to 999 quintillion dollars.
/// Throws EConvertError for text that is not an amount or is too large.
QXNUM_CORE_EXPORT QString MoneyStr(const QString& Amount);

} // namespace qxnum

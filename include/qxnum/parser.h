/// \file
/// Expression evaluator used by the numeric edit and the grid's expression columns (over muparser).
///
/// Syntax: numbers, + - * / and ^ (power, right-associative: 2^3^2 = 512), parentheses, one unary
/// minus or plus in a row, the functions sin cos tan asin acos atan exp ln log10 sqrt abs (one
/// argument) and min max (two or more), and the constant pi. The sign binds weaker than the power:
/// "-2^2" is -4, "2^-2" is 0.25. Function names and pi are case-insensitive ("SQRT(4)", "Pi").
/// A name not followed by "(" is a variable, even "abs" or "max"; "e" is not a constant, since it
/// would be confused with exponent notation ("1.5E+03"). No implicit multiplication ("2x").
///
/// Variables: after the whole text has passed the syntax check, OnCheckVariable is asked once per
/// distinct identifier, in order of first appearance, on every CalcValue (the host's values may
/// change between calls). Identifiers go to the host exactly as typed: "p1" and "P1" are two names
/// and any case rule is the host's. Letters beyond ASCII are allowed ("Δp", "T_aus"). Exceptions the
/// event throws pass through unchanged.
///
/// Separators are those of NumInpFormatSettings, read on every CalcValue: numbers take its decimal
/// separator (a '.' is read as a decimal point too); ';' always separates function arguments, and
/// ',' as well unless it is the decimal separator. No thousands separators.
///
/// Precision: expressions are computed in double, so numbers and variable values in an expression
/// must lie within double range. A text that is only a number (with an optional sign) is returned
/// as its exact Extended value, parsed by TryQX_StrToFloat, so typed numbers keep full precision.
///
/// CalcValue raises EQXParserError for an empty text, a text longer than 1000 characters (plain
/// numbers excepted), parentheses nested deeper than 100 levels, an invalid character or number,
/// bad syntax, an unknown function, a wrong argument count, an identifier the event does not
/// resolve or resolves to a value that is not a finite double, and a result that is not a finite
/// number. Division by zero, undefined operations (sqrt(-1), ln(-1)) and overflow count even in an
/// intermediate result, as in 1/(1/0). The message reads
///   "<Description>: <reason> at position <n>"
///   e.g. "p1 expression in Pressure: unknown identifier 'q' at position 3"
/// with n the 1-based character (UTF-16 unit) position in the text given to SetExpression. Errors of
/// the whole text or its result have no position part; without a description the reason stands alone.
#pragma once

#include <qxnum/core_export.h>

#include <qxnum/global.h>

#include <QString>

#include <functional>
#include <memory>

class QObject;

namespace qxnum {

class QXNUM_CORE_EXPORT EQXParserError : public Exception {
public:
    using Exception::Exception;
};

/// Resolves an identifier the parser does not know: set Value and Found = true.
/// Sender is the parser's owner (the edit or grid that evaluates the text).
using TOnCheckVariableEvent =
    std::function<void(QObject* Sender, const QString& Identifier, Extended& Value, bool& Found)>;

class QXNUM_CORE_EXPORT TQXParser {
public:
    explicit TQXParser(QObject* Owner = nullptr);
    ~TQXParser();
    TQXParser(const TQXParser&) = delete;
    TQXParser& operator=(const TQXParser&) = delete;

    QObject* Owner() const;

    /// Names the expression in error messages, e.g. "p1 expression in Pressure".
    QString Description() const;
    void SetDescription(const QString& Description);

    QString Expression() const;
    void SetExpression(const QString& Expression);

    TOnCheckVariableEvent OnCheckVariable() const;
    void SetOnCheckVariable(TOnCheckVariableEvent Event);

    /// Evaluates the current expression afresh; variables are re-resolved on every call.
    Extended CalcValue(); // throws EQXParserError

private:
    struct TImpl;
    std::unique_ptr<TImpl> FImpl;
};

} // namespace qxnum

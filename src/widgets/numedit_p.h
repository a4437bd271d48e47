// State of the numeric edit, shared by its value model (numedit.cpp) and edit cycle
// (numedit_input.cpp). Not installed.
#pragma once

#include <qxnum/widgets/numedit.h>

#include <QColor>
#include <QPalette>
#include <QString>

namespace qxnum {

class TCustomNumEditPrivate {
public:
    // The published state, in the published declaration order.
    TGetNumTextEvent FOnGetNumText;
    TSetNumValueEvent FOnSetNumValue;
    TGetNumValueEvent FOnGetNumValue;
    TRangeValidateEvent FOnRangeValidate;
    TUnitSystem FUnitSystem = usSI;
    bool FCopyEnabled = true;
    bool FCopyVisible = true;
    Extended FCustomScale = 1.0L;
    Extended FScaleOffset = 0.0L;
    QString FCustomFormat;
    TNotifyEvent FOnParTypeChange;
    TNotifyEvent FOnUnitSystemChange;
    bool FTrimZeroes = false;
    bool FAllowEmpty = false;
    QColor FReadOnlyFontColor = QColor(0, 0, 255);
    Qt::Alignment FAlignment = Qt::AlignRight;
    quint16 FDecimals = 2;
    quint16 FDigits = 12;
    bool FFocused = false;
    Extended FMax = 0.0L;
    Extended FMin = 0.0L;
    QColor FNegColor = QColor(0, 0, 0);
    TNumericType FNumericType = ntGeneral;
    QColor FNormalColor; // the font colour for values >= 0
    TDataType FDataType = dtExtended;
    bool FTabOnEnterKey = false;
    Extended FValue = 0.0L;
    bool FValidate = true;
    bool FInhibitExprCheckVar = false;
    TOnCheckVariableEvent FOnExprCheckVariable;
    bool FClearIsNaN = false;
    TParType FParType = ptNone;
    bool FChanging = false;
    bool FIsValid = true;

    // Our own additions.
    TNotifyEvent FOnChange;
    int FMaxTextLength = 12;
    bool FDesigning = false;
    bool FExpressionInput = false;
    bool FEvaluating = false;      // an expression of this edit is being calculated
    bool FApplyingPalette = false; // our own palette change, not the host's
    QColor FFontColor;             // the colour FormatText chose (negative or normal)
    bool FNegColSet = false;       // the host chose NegCol: it is drawn exactly as chosen
    // The colour negative values are drawn in: NegCol when the host chose it or when the default
    // (black) reads on Base; otherwise a colour that does (deliberate deviation 8).
    QColor DrawnNegColor(const QPalette& Palette) const;
    QColor FAppliedColour; // the text colour last put into the palette
    // The text FormatText last showed; while the text equals it the held value is not re-read.
    QString FFormattedText;
    Extended FSignalledValue = 0.0L; // the value valueChanged last reported
    QString FLastRefusal;

    struct TTypingRules {
        bool Expression = false;
        bool Currency = false;
        QChar Sep;
        int MaxDecimals = -1; // -1: no limit, 0: no decimal separator
        int MaxExponent = 0;  // characters from "E" to the end; 0: no exponent
        int MaxLength = 0;
        QString Decoration; // tolerated characters that carry no number structure
    };
    TTypingRules TypingRules() const;
    // Expression characters are typed: the variable path or ExpressionInput.
    bool TypesExpressions() const;
    // The text on screen is still the one FormatText showed.
    bool TextUnedited(const QString& Text) const { return !Text.isEmpty() && Text == FFormattedText; }
};

} // namespace qxnum

// State of the grid's columns and titles. Not installed.
#pragma once

#include <qxnum/widgets/numcolumn.h>

#include <QPointer>

#include <vector>

namespace qxnum {

class TNumColTitlePrivate {
public:
    TNumColumn* FColumn = nullptr;
    QString FCaption;
    QFont FFont;
    QColor FColor;
    TAlignment FAlignment = taCenter;
};

class TNumColumnPrivate {
public:
    TNumColumns* FCollection = nullptr;
    int FIndex = -1; // position in the collection, kept by TNumColumns
    TGetColNumTextEvent FOnGetNumText;
    TSetColNumValueEvent FOnSetNumValue;
    QColor FColor; // invalid: DefaultColor
    int FWidth = 64;
    TNumColTitle* FTitle = nullptr; // owned (QObject child)
    QFont FFont;
    TImeMode FImeMode = imDontCare;
    QString FImeName;
    QPointer<QMenu> FPopupMenu;
    TAlignment FAlignment = taRightJustify;
    bool FReadonly = false;
    bool FVisible = true;
    quint16 FDecimals = 2;
    quint16 FDigits = 12;
    Extended FMax = 0.0L;
    Extended FMin = 0.0L;
    TDataType FDataType = dtExtended;
    TNumericType FNumericType = ntGeneral;
    TParType FParType = ptNone;
    TUnitSystem FUnitSystem = usSI;
    Extended FCustomScale = 1.0L;
    Extended FScaleOffset = 0.0L;
    QString Fcustomformat;
    QString Fcustomunitstr;
    bool FStringCol = false;
    bool FCheckBoxCol = false;
    QString FDefaultStr;
    bool FValidate = true;
    bool FTrimZeroes = false;
    bool FAutoReformat = true;
    TNotifyEvent FOnUnitSystemChange;
    TOnCheckVariableEvent FOnExprCheckVariable;
    int FTag = 0;
    bool UnitSystemSet = false;

    // Changes with every setting that decides a cell's value or text; with the store's column
    // version it tells whether the column's cells are known to be checked (CheckedVersion and
    // CheckedStamp as they were after the last full check or unit switch of the column).
    quint64 Stamp = 1;
    quint64 CheckedVersion = 0;
    quint64 CheckedStamp = 0;

    // Whether the column's cells hold their values beside their texts: numeric, no expressions.
    bool HoldsValues() const { return !FStringCol && !FOnExprCheckVariable; }
    // Whether a checked cell stays checked: no hook may read or write its value differently.
    bool ChecksRepeatable() const { return !FOnSetNumValue && !FOnGetNumText; }
    // The base value a numeric column reads from Text before its limits and hook: the display number
    // times the unit factor, less ScaleOffset, times CustomScale. Text that is no number reads as 0
    // and gives Ok false.
    Extended ParseBase(const QString& Text, bool& Ok) const;
    // The column's limits (when Max - Min exceeds the tolerance), as every read applies them.
    void Clamp(Extended& Value) const;
};

class TNumColumnsPrivate {
public:
    TNumGrid* FGrid = nullptr;
    TNumColumnFactory FFactory;
    std::vector<TNumColumn*> FItems; // owned
    int FUpdateCount = 0;
};

} // namespace qxnum

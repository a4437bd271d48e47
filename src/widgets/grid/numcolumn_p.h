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
};

class TNumColumnsPrivate {
public:
    TNumGrid* FGrid = nullptr;
    TNumColumnFactory FFactory;
    std::vector<TNumColumn*> FItems; // owned
    int FUpdateCount = 0;
};

} // namespace qxnum

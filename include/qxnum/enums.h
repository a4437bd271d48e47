/// \file
/// The enumerations that appear in files and in properties. They are registered with Qt's
/// meta-object system, so that properties show their names in tools and QMetaEnum gives them.
#pragma once

#include <qxnum/core_export.h>
#include <qxnum/global.h>

#include <QObject>

namespace qxnum {
Q_NAMESPACE_EXPORT(QXNUM_CORE_EXPORT)

/// Physical quantity of a value; selects the unit factor, unit text and picture.
enum TParType : quint8 {
    ptNone,
    ptAngle,
    ptArea,
    ptConcM,
    ptConcV,
    ptCount,
    ptCpS,
    ptdB,
    ptEnergy,
    ptForce,
    ptFraction,
    ptH,
    ptMomInertia,
    ptLength,
    ptMass,
    ptMassflow,
    ptMu,
    ptNrpm,
    ptPercent,
    ptPress,
    ptPR,
    ptPower,
    ptQ,
    ptRatio,
    ptRho,
    ptSFCshaft,
    ptTemp,
    ptTime,
    ptTorque,
    ptTSFC,
    ptVelocity,
    ptVolume,
    ptZp,
    pthtcoef
};
enum TUnitSystem : quint8 { usSI, usImperial };

QXNUM_ENUM_NAMES(TParType, "ptNone", "ptAngle", "ptArea", "ptConcM", "ptConcV", "ptCount", "ptCpS", "ptdB",
                 "ptEnergy", "ptForce", "ptFraction", "ptH", "ptMomInertia", "ptLength", "ptMass",
                 "ptMassflow", "ptMu", "ptNrpm", "ptPercent", "ptPress", "ptPR", "ptPower", "ptQ", "ptRatio",
                 "ptRho", "ptSFCshaft", "ptTemp", "ptTime", "ptTorque", "ptTSFC", "ptVelocity", "ptVolume",
                 "ptZp", "pthtcoef")
QXNUM_ENUM_NAMES(TUnitSystem, "usSI", "usImperial")

/// Display form of a floating value. 0..4 map one to one onto TFloatFormat.
enum TNumericType : quint8 { ntGeneral, ntExponent, ntFixed, ntNumber, ntCurrency, ntParType };
/// Storage type of a value; CheckNumRange keeps values inside its range.
enum TDataType : quint8 { dtByte, dtDouble, dtExtended, dtInteger, dtShortint, dtSingle, dtSmallInt, dtWord };

QXNUM_ENUM_NAMES(TNumericType, "ntGeneral", "ntExponent", "ntFixed", "ntNumber", "ntCurrency", "ntParType")
QXNUM_ENUM_NAMES(TDataType, "dtByte", "dtDouble", "dtExtended", "dtInteger", "dtShortint", "dtSingle",
                 "dtSmallInt", "dtWord")

/// Where a labelled input shows its name and unit labels.
enum TLabelPosition : quint8 { lpAbove, lpBelow, lpLeft, lpRight };
QXNUM_ENUM_NAMES(TLabelPosition, "lpAbove", "lpBelow", "lpLeft", "lpRight")

enum TCheckBoxState : quint8 { cbUnchecked, cbChecked, cbGrayed };
QXNUM_ENUM_NAMES(TCheckBoxState, "cbUnchecked", "cbChecked", "cbGrayed")

/// Style of a combo box; only csDropDownList (2, a list without an edit) behaves differently here.
enum TComboBoxStyle : quint8 { csDropDown, csSimple, csDropDownList, csOwnerDrawFixed, csOwnerDrawVariable };
QXNUM_ENUM_NAMES(TComboBoxStyle, "csDropDown", "csSimple", "csDropDownList", "csOwnerDrawFixed",
                 "csOwnerDrawVariable")

/// Alignment of a grid column's cells and titles.
enum TAlignment : quint8 { taLeftJustify, taRightJustify, taCenter };
QXNUM_ENUM_NAMES(TAlignment, "taLeftJustify", "taRightJustify", "taCenter")

/// Input-method mode of a grid column; stored for the host, the grid attaches no behaviour to it.
enum TImeMode : quint8 {
    imDisable,
    imClose,
    imOpen,
    imDontCare,
    imSAlpha,
    imAlpha,
    imHira,
    imSKata,
    imKata,
    imChinese,
    imSHanguel,
    imHanguel
};
QXNUM_ENUM_NAMES(TImeMode, "imDisable", "imClose", "imOpen", "imDontCare", "imSAlpha", "imAlpha", "imHira",
                 "imSKata", "imKata", "imChinese", "imSHanguel", "imHanguel")

/// How a grid fits its columns to its width.
enum TColStretchOption : quint8 { csoAutoStretch = 1, csoAllowShrink = 2, csoLastColOnly = 4 };
Q_DECLARE_FLAGS(TColStretchOptions, TColStretchOption)

/// The options of a grid, with the bit values of the original string grid.
enum TGridOption : quint32 {
    goFixedVertLine = 1,
    goFixedHorzLine = 2,
    goVertLine = 4,
    goHorzLine = 8,
    goRangeSelect = 16,
    goDrawFocusSelected = 32,
    goRowSizing = 64,
    goColSizing = 128,
    goRowMoving = 256,
    goColMoving = 512,
    goEditing = 1024,
    goTabs = 2048,
    goRowSelect = 4096,
    goAlwaysShowEditor = 8192,
    goThumbTracking = 16384
};
Q_DECLARE_FLAGS(TGridOptions, TGridOption)

/// Result of a field form's last read.
enum TReadResultCode : quint8 {
    rrcOk,
    rrcUnknownComp,
    rrcUnknownClass,
    rrcClassMisMatch,
    rrcStreamError,
    rrcXmlError
};

/// How the values of a grid column run from row to row (table look-up).
enum TColumnOrder : quint8 { coAscending, coDescending, coNeitherAnorD, coAutoDetermine };

/// The buttons of the grid navigator, in bar order.
enum TNumGridBtn : quint8 {
    ngbFirst,
    ngbPrior,
    ngbNext,
    ngbLast,
    ngbAdd,
    ngbInsert,
    ngbDelete,
    ngbEdit,
    ngbPost,
    ngbCancel,
    ngbRefresh
};

Q_ENUM_NS(TParType)
Q_ENUM_NS(TUnitSystem)
Q_ENUM_NS(TNumericType)
Q_ENUM_NS(TDataType)
Q_ENUM_NS(TLabelPosition)
Q_ENUM_NS(TCheckBoxState)
Q_ENUM_NS(TComboBoxStyle)
Q_ENUM_NS(TAlignment)
Q_ENUM_NS(TImeMode)
Q_FLAG_NS(TColStretchOptions)
Q_FLAG_NS(TGridOptions)
Q_ENUM_NS(TReadResultCode)
Q_ENUM_NS(TColumnOrder)
Q_ENUM_NS(TNumGridBtn)

} // namespace qxnum

Q_DECLARE_OPERATORS_FOR_FLAGS(qxnum::TColStretchOptions)
Q_DECLARE_OPERATORS_FOR_FLAGS(qxnum::TGridOptions)

// The enumerations that appear in files and in properties. They are registered with Qt's
// meta-object system, so that properties show their names in tools and QMetaEnum gives them.
#pragma once

#include <qxnum/core_export.h>
#include <qxnum/global.h>

#include <QObject>

namespace qxnum {
Q_NAMESPACE_EXPORT(QXNUM_CORE_EXPORT)

// Physical quantity of a value; selects the unit factor, unit text and picture.
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

// Display form of a floating value. 0..4 map one to one onto TFloatFormat.
enum TNumericType : quint8 { ntGeneral, ntExponent, ntFixed, ntNumber, ntCurrency, ntParType };
// Storage type of a value; CheckNumRange keeps values inside its range.
enum TDataType : quint8 { dtByte, dtDouble, dtExtended, dtInteger, dtShortint, dtSingle, dtSmallInt, dtWord };

QXNUM_ENUM_NAMES(TNumericType, "ntGeneral", "ntExponent", "ntFixed", "ntNumber", "ntCurrency", "ntParType")
QXNUM_ENUM_NAMES(TDataType, "dtByte", "dtDouble", "dtExtended", "dtInteger", "dtShortint", "dtSingle",
                 "dtSmallInt", "dtWord")

// Where a labelled input shows its name and unit labels.
enum TLabelPosition : quint8 { lpAbove, lpBelow, lpLeft, lpRight };
QXNUM_ENUM_NAMES(TLabelPosition, "lpAbove", "lpBelow", "lpLeft", "lpRight")

enum TCheckBoxState : quint8 { cbUnchecked, cbChecked, cbGrayed };
QXNUM_ENUM_NAMES(TCheckBoxState, "cbUnchecked", "cbChecked", "cbGrayed")

// Style of a combo box; only csDropDownList (2, a list without an edit) behaves differently here.
enum TComboBoxStyle : quint8 { csDropDown, csSimple, csDropDownList, csOwnerDrawFixed, csOwnerDrawVariable };
QXNUM_ENUM_NAMES(TComboBoxStyle, "csDropDown", "csSimple", "csDropDownList", "csOwnerDrawFixed",
                 "csOwnerDrawVariable")

Q_ENUM_NS(TParType)
Q_ENUM_NS(TUnitSystem)
Q_ENUM_NS(TNumericType)
Q_ENUM_NS(TDataType)
Q_ENUM_NS(TLabelPosition)
Q_ENUM_NS(TCheckBoxState)
Q_ENUM_NS(TComboBoxStyle)

} // namespace qxnum

// Physical parameter types, the two unit systems and the process-wide unit tables.
//
// Values are held in base units ("unscaled"); what the user sees is "scaled":
//   display = (base / CustomScale + ScaleOffset) / ParScale[type][unit system]
//   base    = (display * ParScale - ScaleOffset) * CustomScale
#pragma once

#include <qxnum/global.h>

namespace qxnum {

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
inline constexpr int ParTypeCount = 34;

enum TUnitSystem : quint8 { usSI, usImperial };
inline constexpr int UnitSystemCount = 2;

QXNUM_ENUM_NAMES(TParType, "ptNone", "ptAngle", "ptArea", "ptConcM", "ptConcV", "ptCount", "ptCpS", "ptdB",
                 "ptEnergy", "ptForce", "ptFraction", "ptH", "ptMomInertia", "ptLength", "ptMass",
                 "ptMassflow", "ptMu", "ptNrpm", "ptPercent", "ptPress", "ptPR", "ptPower", "ptQ", "ptRatio",
                 "ptRho", "ptSFCshaft", "ptTemp", "ptTime", "ptTorque", "ptTSFC", "ptVelocity", "ptVolume",
                 "ptZp", "pthtcoef")
QXNUM_ENUM_NAMES(TUnitSystem, "usSI", "usImperial")

using TParScaleArray = double[ParTypeCount][UnitSystemCount];
using TParStrArray = QString[ParTypeCount][UnitSystemCount];
using TParFormatArray = TParStrArray;

// Working tables: an application may change a row; SetStdFormats restores them.
extern TParScaleArray ParScale;   // display unit -> base unit factor
extern TParStrArray ParUnitStr;   // unit text with its brackets, e.g. "[bar]"
extern TParFormatArray ParFormat; // standard picture for ntParType display

// The standard contents, never written.
extern const TParScaleArray ParscaleStd;
extern const TParStrArray ParunitstrStd;
extern const TParFormatArray ParformatStd;

// Safe readers of the working tables: an ordinal outside the enumerations (a corrupt file, a cast
// integer) reads factor 1, no unit and the picture of ptNone.
double ParScaleOf(TParType ParType, TUnitSystem UnitSystem);
QString ParUnitStrOf(TParType ParType, TUnitSystem UnitSystem);
const QString& ParFormatOf(TParType ParType, TUnitSystem UnitSystem);

// Copies the three standard tables into the working tables.
void SetStdFormats();

// Display value -> base value: (Value * F - ScaleOffset) * CustomScale.
Extended ScaledToUnScaled(Extended Value, TParType ParType, TUnitSystem UnitSystem, Extended CustomScale,
                          Extended ScaleOffset);
// Base value -> display value: (Value / CustomScale + ScaleOffset) / F.
Extended UnScaledToScaled(Extended Value, TParType ParType, TUnitSystem UnitSystem, Extended CustomScale,
                          Extended ScaleOffset);

} // namespace qxnum

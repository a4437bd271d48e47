/// \file
/// Physical parameter types, the two unit systems and the process-wide unit tables.
///
/// Values are held in base units ("unscaled"); what the user sees is "scaled":
///   display = (base / CustomScale + ScaleOffset) / ParScale[type][unit system]
///   base    = (display * ParScale - ScaleOffset) * CustomScale
#pragma once

#include <qxnum/enums.h>
#include <qxnum/global.h>

namespace qxnum {

inline constexpr int ParTypeCount = 34;

inline constexpr int UnitSystemCount = 2;

using TParScaleArray = double[ParTypeCount][UnitSystemCount];
using TParStrArray = QString[ParTypeCount][UnitSystemCount];
using TParFormatArray = TParStrArray;

/// Working tables: an application may change a row; SetStdFormats restores them.
QXNUM_CORE_EXPORT extern TParScaleArray ParScale;   // display unit -> base unit factor
QXNUM_CORE_EXPORT extern TParStrArray ParUnitStr;   // unit text with its brackets, e.g. "[bar]"
QXNUM_CORE_EXPORT extern TParFormatArray ParFormat; // standard picture for ntParType display

/// The standard contents, never written.
QXNUM_CORE_EXPORT extern const TParScaleArray ParscaleStd;
QXNUM_CORE_EXPORT extern const TParStrArray ParunitstrStd;
QXNUM_CORE_EXPORT extern const TParFormatArray ParformatStd;

/// Safe readers of the working tables: an ordinal outside the enumerations (a corrupt file, a cast
/// integer) reads factor 1, no unit and the picture of ptNone.
QXNUM_CORE_EXPORT double ParScaleOf(TParType ParType, TUnitSystem UnitSystem);
QXNUM_CORE_EXPORT QString ParUnitStrOf(TParType ParType, TUnitSystem UnitSystem);
QXNUM_CORE_EXPORT const QString& ParFormatOf(TParType ParType, TUnitSystem UnitSystem);

/// Copies the three standard tables into the working tables.
QXNUM_CORE_EXPORT void SetStdFormats();

/// Puts the factors exact by their definitions into the working tables where the standard ones
/// are rounded or come from other definitions: the Imperial factors of ptArea, ptEnergy, ptForce,
/// ptH, ptMomInertia, ptMu, ptPress, ptPower, ptQ, ptRho, ptSFCshaft, ptTorque, ptTSFC and
/// pthtcoef (international pound and foot, standard gravity, the International Table Btu and
/// calorie). ptMu's Imperial factor is that of lbf s/ft², so its unit text becomes "[lbf s/ft²]"
/// (the standard "[lb/(s ft)]" would be 1.488...). Nothing else changes; SetStdFormats restores
/// the standard tables. The guide lists every factor with its definition and difference.
QXNUM_CORE_EXPORT void SetExactUnitFactors();

/// Display value -> base value: (Value * F - ScaleOffset) * CustomScale.
QXNUM_CORE_EXPORT Extended ScaledToUnScaled(Extended Value, TParType ParType, TUnitSystem UnitSystem,
                                            Extended CustomScale, Extended ScaleOffset);
/// Base value -> display value: (Value / CustomScale + ScaleOffset) / F.
QXNUM_CORE_EXPORT Extended UnScaledToScaled(Extended Value, TParType ParType, TUnitSystem UnitSystem,
                                            Extended CustomScale, Extended ScaleOffset);

} // namespace qxnum

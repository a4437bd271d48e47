#include <qxnum/units.h>

namespace qxnum {

namespace {

struct TStdRow {
    double ScaleSI, ScaleImp;
    const char16_t *UnitSI, *UnitImp, *FormatSI, *FormatImp;
};

// One row per TParType, in ordinal order.
constexpr TStdRow StdRows[ParTypeCount] = {
    {1.0, 1.0, u"", u"", u"0.0000E+00", u"0.0000E+00"},                      // ptNone
    {1.0, 1.0, u"[°]", u"[°]", u"0.######", u"0.######"},                    // ptAngle
    {1.0, 0.092903, u"[m²]", u"[ft²]", u"0.0000##", u"0.00##"},              // ptArea
    {1.0, 1.0, u"[m%]", u"[m%]", u"0.0000E+00", u"0.0000E+00"},              // ptConcM
    {1.0, 1.0, u"[v%]", u"[v%]", u"0.0000E+00", u"0.0000E+00"},              // ptConcV
    {1.0, 1.0, u"", u"", u"0.#####", u"0.#####"},                            // ptCount
    {1.0, 4186.8, u"[J/(kg K)]", u"[Btu/(lb R)]", u"0.00", u"0.00"},         // ptCpS
    {1.0, 1.0, u"[dB]", u"[dB]", u"0.0", u"0.0"},                            // ptdB
    {1000.0, 1055.055598655, u"[kJ]", u"[Btu]", u"0.00", u"0.00"},           // ptEnergy
    {1000.0, 4.4482208939, u"[kN]", u"[lbf]", u"0.000", u"0.000"},           // ptForce
    {1.0, 1.0, u"[-]", u"[-]", u"0.0000", u"0.0000"},                        // ptFraction
    {1000.0, 2325.99752906, u"[kJ/kg]", u"[Btu/lb]", u"0.000", u"0.000"},    // ptH
    {1.0, 0.04214004, u"[kg m²]", u"[lb ft²]", u"0.####", u"0.###"},         // ptMomInertia
    {1.0, 0.0254, u"[m]", u"[in]", u"0.####", u"0.####"},                    // ptLength
    {1.0, 0.45359237, u"[kg]", u"[lb]", u"0.000#", u"0.000#"},               // ptMass
    {1.0, 0.45359237, u"[kg/s]", u"[lb/s]", u"0.000#", u"0.000#"},           // ptMassflow
    {1.0, 47.88, u"[N s/m²]", u"[lb/(s ft)]", u"0.0000E+00", u"0.0000E+00"}, // ptMu
    {1.0, 1.0, u"[rpm]", u"[rpm]", u"0", u"0"},                              // ptNrpm
    {1.0, 1.0, u"[%]", u"[%]", u"0.00", u"0.00"},                            // ptPercent
    {100000.0, 6894.76, u"[bar]", u"[psi]", u"0.000##", u"0.00#"},           // ptPress
    {1.0, 1.0, u"[-]", u"[-]", u"0.000#", u"0.000#"},                        // ptPR
    {1000.0, 745.7, u"[kW]", u"[hp]", u"0.00", u"0.00"},                     // ptPower
    {1000.0, 1055.055598655, u"[kW]", u"[Btu/s]", u"0.00", u"0.00"},         // ptQ
    {1.0, 1.0, u"[-]", u"[-]", u"0.000###", u"0.000###"},                    // ptRatio
    {1.0, 16.0185, u"[kg/m³]", u"[lb/ft³]", u"0.0000", u"0.0000"},           // ptRho
    {2.7777777777777776e-07, 1.6896666666666666e-07, u"[kg/(kW h)]", u"[lb/(hp h)]", u"0.00000",
     u"0.00000"},                                                                                // ptSFCshaft
    {1.0, 0.5555555555555556, u"[K]", u"[R]", u"0.00", u"0.00"},                                 // ptTemp
    {1.0, 1.0, u"[s]", u"[s]", u"0.000##", u"0.000##"},                                          // ptTime
    {1.0, 1.35582, u"[N m]", u"[lbf ft]", u"0.###", u"0.###"},                                   // ptTorque
    {0.0002777777777777778, 2.8325e-05, u"[kg/(N h)]", u"[lb/(lbf h)]", u"0.00000", u"0.00000"}, // ptTSFC
    {1.0, 0.3048, u"[m/s]", u"[ft/s]", u"0.0", u"0.0"},                                          // ptVelocity
    {1.0, 0.028316846592, u"[m³]", u"[ft³]", u"0.00####", u"0.00####"},                          // ptVolume
    {1.0, 0.3048, u"[m]", u"[ft]", u"0", u"0"},                                                  // ptZp
    {1.0, 20430.2, u"[W/(m² K)]", u"[Btu/(s ft² R)]", u"0.00", u"0.00"},                         // pthtcoef
};

} // namespace

#define QXNUM_PAR_ROWS(X)                                                                                    \
    X(0)                                                                                                     \
    X(1)                                                                                                     \
    X(2) X(3) X(4) X(5) X(6) X(7) X(8) X(9) X(10) X(11) X(12) X(13) X(14) X(15) X(16) X(17) X(18) X(19)      \
        X(20) X(21) X(22) X(23) X(24) X(25) X(26) X(27) X(28) X(29) X(30) X(31) X(32) X(33)
#define QXNUM_SCALE_ROW(I) {StdRows[I].ScaleSI, StdRows[I].ScaleImp},
#define QXNUM_UNIT_ROW(I) {QString::fromUtf16(StdRows[I].UnitSI), QString::fromUtf16(StdRows[I].UnitImp)},
#define QXNUM_FORMAT_ROW(I)                                                                                  \
    {QString::fromUtf16(StdRows[I].FormatSI), QString::fromUtf16(StdRows[I].FormatImp)},

// Each table is initialised from the rows above on its own, so no table depends on the order of
// static initialisation.
const TParScaleArray ParscaleStd = {QXNUM_PAR_ROWS(QXNUM_SCALE_ROW)};
const TParStrArray ParunitstrStd = {QXNUM_PAR_ROWS(QXNUM_UNIT_ROW)};
const TParFormatArray ParformatStd = {QXNUM_PAR_ROWS(QXNUM_FORMAT_ROW)};

TParScaleArray ParScale = {QXNUM_PAR_ROWS(QXNUM_SCALE_ROW)};
TParStrArray ParUnitStr = {QXNUM_PAR_ROWS(QXNUM_UNIT_ROW)};
TParFormatArray ParFormat = {QXNUM_PAR_ROWS(QXNUM_FORMAT_ROW)};

void SetStdFormats() {
    for (int P = 0; P < ParTypeCount; ++P) {
        for (int U = 0; U < UnitSystemCount; ++U) {
            ParFormat[P][U] = ParformatStd[P][U];
            ParUnitStr[P][U] = ParunitstrStd[P][U];
            ParScale[P][U] = ParscaleStd[P][U];
        }
    }
}

void SetExactUnitFactors() {
    // The nearest doubles to the exact values; lb = 0.45359237 kg, ft = 0.3048 m, in = 0.0254 m,
    // g = 9.80665 m/s², lbf = lb g, R = 5/9 K, Btu(IT) = 4.1868 J/(g K) lb R = 1055.05585262 J.
    struct TExact {
        TParType ParType;
        double Factor;
    };
    static constexpr TExact Exact[] = {
        {ptArea, 0.09290304},                 // ft²
        {ptEnergy, 1055.05585262},            // Btu
        {ptForce, 4.4482216152605},           // lbf
        {ptH, 2326.0},                        // Btu/lb
        {ptMomInertia, 0.0421401100938048},   // lb ft²
        {ptMu, 47.880258980335846},           // lbf s/ft²
        {ptPress, 6894.757293168362},         // lbf/in²
        {ptPower, 745.6998715822702},         // 550 ft lbf/s
        {ptQ, 1055.05585262},                 // Btu/s
        {ptRho, 16.018463373960138},          // lb/ft³
        {ptSFCshaft, 1.6896594106715585e-07}, // lb/(hp h)
        {ptTorque, 1.3558179483314003},       // lbf ft
        {ptTSFC, 2.8325450360498007e-05},     // lb/(lbf h)
        {pthtcoef, 20441.748028008555},       // Btu/(s ft² R)
    };
    for (const TExact& E : Exact)
        ParScale[E.ParType][usImperial] = E.Factor;
    ParUnitStr[ptMu][usImperial] = QStringLiteral("[lbf s/ft²]");
}

static bool InTables(TParType ParType, TUnitSystem UnitSystem) {
    return ParType < ParTypeCount && UnitSystem < UnitSystemCount;
}

double ParScaleOf(TParType ParType, TUnitSystem UnitSystem) {
    return InTables(ParType, UnitSystem) ? ParScale[ParType][UnitSystem] : 1.0;
}

QString ParUnitStrOf(TParType ParType, TUnitSystem UnitSystem) {
    return InTables(ParType, UnitSystem) ? ParUnitStr[ParType][UnitSystem] : QString();
}

const QString& ParFormatOf(TParType ParType, TUnitSystem UnitSystem) {
    return InTables(ParType, UnitSystem) ? ParFormat[ParType][UnitSystem] : ParFormat[ptNone][usSI];
}

Extended ScaledToUnScaled(Extended Value, TParType ParType, TUnitSystem UnitSystem, Extended CustomScale,
                          Extended ScaleOffset) {
    const Extended F = ParScaleOf(ParType, UnitSystem);
    return (Value * F - ScaleOffset) * CustomScale;
}

Extended UnScaledToScaled(Extended Value, TParType ParType, TUnitSystem UnitSystem, Extended CustomScale,
                          Extended ScaleOffset) {
    const Extended F = ParScaleOf(ParType, UnitSystem);
    return (Value / CustomScale + ScaleOffset) / F;
}

} // namespace qxnum

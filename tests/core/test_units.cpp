#include <qxnum/units.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace qxnum;

namespace {

// Restores the working tables after a test changes them.
struct TablesGuard {
    ~TablesGuard() { SetStdFormats(); }
};

} // namespace

TEST(UnitTables, StandardRowsCarryTheirUnitsScalesAndPictures) {
    struct Row {
        TParType P;
        double SI, Imp;
        const char16_t *UnitSI, *UnitImp, *FmtSI, *FmtImp;
    };
    const Row Rows[] = {
        {ptNone, 1.0, 1.0, u"", u"", u"0.0000E+00", u"0.0000E+00"},
        {ptAngle, 1.0, 1.0, u"[°]", u"[°]", u"0.######", u"0.######"},
        {ptArea, 1.0, 0.092903, u"[m²]", u"[ft²]", u"0.0000##", u"0.00##"},
        {ptEnergy, 1000.0, 1055.055598655, u"[kJ]", u"[Btu]", u"0.00", u"0.00"},
        {ptMomInertia, 1.0, 0.04214004, u"[kg m²]", u"[lb ft²]", u"0.####", u"0.###"},
        {ptPress, 100000.0, 6894.76, u"[bar]", u"[psi]", u"0.000##", u"0.00#"},
        {ptQ, 1000.0, 1055.055598655, u"[kW]", u"[Btu/s]", u"0.00", u"0.00"},
        {ptRho, 1.0, 16.0185, u"[kg/m³]", u"[lb/ft³]", u"0.0000", u"0.0000"},
        {ptSFCshaft, 2.7777777777777776e-07, 1.6896666666666666e-07, u"[kg/(kW h)]", u"[lb/(hp h)]",
         u"0.00000", u"0.00000"},
        {ptTemp, 1.0, 0.5555555555555556, u"[K]", u"[R]", u"0.00", u"0.00"},
        {ptTSFC, 0.0002777777777777778, 2.8325e-05, u"[kg/(N h)]", u"[lb/(lbf h)]", u"0.00000", u"0.00000"},
        {ptVolume, 1.0, 0.028316846592, u"[m³]", u"[ft³]", u"0.00####", u"0.00####"},
        {ptZp, 1.0, 0.3048, u"[m]", u"[ft]", u"0", u"0"},
        {pthtcoef, 1.0, 20430.2, u"[W/(m² K)]", u"[Btu/(s ft² R)]", u"0.00", u"0.00"},
    };
    for (const Row& R : Rows) {
        SCOPED_TRACE(GetEnumName(R.P).toStdString());
        EXPECT_EQ(ParscaleStd[R.P][usSI], R.SI);
        EXPECT_EQ(ParscaleStd[R.P][usImperial], R.Imp);
        EXPECT_EQ(ParunitstrStd[R.P][usSI], QString::fromUtf16(R.UnitSI));
        EXPECT_EQ(ParunitstrStd[R.P][usImperial], QString::fromUtf16(R.UnitImp));
        EXPECT_EQ(ParformatStd[R.P][usSI], QString::fromUtf16(R.FmtSI));
        EXPECT_EQ(ParformatStd[R.P][usImperial], QString::fromUtf16(R.FmtImp));
    }
}

TEST(UnitTables, WorkingTablesStartAsTheStandardOnes) {
    for (int P = 0; P < ParTypeCount; ++P) {
        for (int U = 0; U < UnitSystemCount; ++U) {
            EXPECT_EQ(ParScale[P][U], ParscaleStd[P][U]) << P;
            EXPECT_EQ(ParUnitStr[P][U], ParunitstrStd[P][U]) << P;
            EXPECT_EQ(ParFormat[P][U], ParformatStd[P][U]) << P;
            EXPECT_GT(ParscaleStd[P][U], 0.0) << P;
            EXPECT_FALSE(ParformatStd[P][U].isEmpty()) << P;
        }
    }
    // Only ptNone and ptCount go without a unit.
    for (int P = 0; P < ParTypeCount; ++P)
        EXPECT_EQ(ParunitstrStd[P][usSI].isEmpty(), P == ptNone || P == ptCount) << P;
}

TEST(UnitTables, SetStdFormatsRestoresChangedRows) {
    TablesGuard Guard;
    ParUnitStr[ptTemp][usSI] = QStringLiteral("[°C]");
    ParScale[ptPress][usImperial] = 1.0;
    ParFormat[ptLength][usSI] = QStringLiteral("0.0");
    ParScale[ptNone][usSI] = 0.0;
    SetStdFormats();
    EXPECT_EQ(ParUnitStr[ptTemp][usSI], QStringLiteral("[K]"));
    EXPECT_EQ(ParScale[ptPress][usImperial], 6894.76);
    EXPECT_EQ(ParFormat[ptLength][usSI], QStringLiteral("0.####"));
    EXPECT_EQ(ParScale[ptNone][usSI], 1.0);
}

TEST(UnitTables, ChangedRowIsUsedByConversions) {
    TablesGuard Guard;
    ParScale[ptPress][usSI] = 1000.0; // kPa instead of bar
    EXPECT_EQ(ScaledToUnScaled(2.0L, ptPress, usSI, 1.0L, 0.0L), 2000.0L);
    EXPECT_EQ(UnScaledToScaled(2000.0L, ptPress, usSI, 1.0L, 0.0L), 2.0L);
}

TEST(UnitConversion, KnownValues) {
    struct Case {
        TParType P;
        TUnitSystem U;
        Extended Scale, Offset, Display, Base;
    };
    const Case Cases[] = {
        {ptPress, usSI, 1, 0, 2, 200000},
        {ptTemp, usImperial, 1, 0, 540, 300},
        {ptSFCshaft, usSI, 1, 0, 1, static_cast<Extended>(2.7777777777777776e-07)},
        // The offset is subtracted after the table factor and before the custom scale.
        {ptPress, usSI, 3, 5, 2, (2.0L * 100000.0L - 5.0L) * 3.0L},
        {ptTemp, usSI, 1, -273.15L, 20, 293.15L},
    };
    for (const Case& C : Cases) {
        SCOPED_TRACE(GetEnumName(C.P).toStdString());
        EXPECT_NEAR(static_cast<double>(ScaledToUnScaled(C.Display, C.P, C.U, C.Scale, C.Offset)),
                    static_cast<double>(C.Base), 1e-12 * std::fabs(static_cast<double>(C.Base)));
        EXPECT_NEAR(static_cast<double>(UnScaledToScaled(C.Base, C.P, C.U, C.Scale, C.Offset)),
                    static_cast<double>(C.Display), 1e-12 * std::fabs(static_cast<double>(C.Display)));
    }
    // 500 R is 277.777... K
    EXPECT_NEAR(static_cast<double>(ScaledToUnScaled(500, ptTemp, usImperial, 1, 0)), 2500.0 / 9.0, 1e-12);
}

TEST(UnitConversion, RoundTripForEveryTypeAndUnitSystem) {
    const Extended Scales[] = {1.0L, -2.5L, 1e-6L, 3e7L};
    const Extended Offsets[] = {0.0L, 273.15L, -1e3L};
    const Extended Values[] = {0.0L, 1.0L, -17.25L, 123456.789L, 1e-9L};
    for (int P = 0; P < ParTypeCount; ++P) {
        for (int U = 0; U < UnitSystemCount; ++U) {
            for (Extended C : Scales) {
                for (Extended O : Offsets) {
                    for (Extended X : Values) {
                        const auto Pt = static_cast<TParType>(P);
                        const auto Us = static_cast<TUnitSystem>(U);
                        const Extended Back =
                            UnScaledToScaled(ScaledToUnScaled(X, Pt, Us, C, O), Pt, Us, C, O);
                        // The offset cancels on the way back: the error grows with |O| / F.
                        const Extended F = ParScale[P][U];
                        const Extended Tol = 64 * std::numeric_limits<Extended>::epsilon() *
                                             (std::fabs(X) + std::fabs(O) / F + 1.0L);
                        ASSERT_NEAR(static_cast<double>(Back), static_cast<double>(X),
                                    static_cast<double>(Tol))
                            << P << ' ' << U << ' ' << static_cast<double>(C) << ' '
                            << static_cast<double>(O);
                    }
                }
            }
        }
    }
}

TEST(UnitConversion, OrdinalOutsideTheTablesScalesByOne) {
    const auto Bad = static_cast<TParType>(200);
    EXPECT_EQ(ScaledToUnScaled(7.0L, Bad, usSI, 1.0L, 0.0L), 7.0L);
    EXPECT_EQ(UnScaledToScaled(7.0L, ptPress, static_cast<TUnitSystem>(9), 1.0L, 0.0L), 7.0L);
    EXPECT_TRUE(ParUnitStrOf(Bad, usSI).isEmpty());
    EXPECT_EQ(ParFormatOf(Bad, usImperial), ParFormat[ptNone][usSI]);
}

TEST(EnumNames, NamesAndLookUp) {
    EXPECT_EQ(GetEnumName(ptPress), QStringLiteral("ptPress"));
    EXPECT_EQ(GetEnumName(pthtcoef), QStringLiteral("pthtcoef"));
    EXPECT_EQ(GetEnumName(usImperial), QStringLiteral("usImperial"));
    EXPECT_TRUE(GetEnumName(static_cast<TParType>(34)).isEmpty());
    EXPECT_EQ(GetEnumValue<TParType>(QStringLiteral("ptPress")), ptPress);
    EXPECT_EQ(GetEnumValue<TParType>(QStringLiteral("PTPRESS")), ptPress);
    EXPECT_EQ(GetEnumValue<TParType>(QStringLiteral("ptpress ")), -1);
    EXPECT_EQ(GetEnumValue<TUnitSystem>(QStringLiteral("ussi")), usSI);
    EXPECT_EQ(GetEnumValue<TUnitSystem>(QString()), -1);
    // Every name maps back to its own ordinal.
    for (int P = 0; P < ParTypeCount; ++P)
        EXPECT_EQ(GetEnumValue<TParType>(GetEnumName(static_cast<TParType>(P))), P);
}

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

TEST(UnitTables, StandardRowsCarryTheirUnitsAndPictures) {
    struct Row {
        TParType P;
        const char16_t *UnitSI, *UnitImp, *FmtSI, *FmtImp;
    };
    const Row Rows[] = {
        {ptNone, u"", u"", u"0.0000E+00", u"0.0000E+00"},
        {ptAngle, u"[°]", u"[°]", u"0.######", u"0.######"},
        {ptArea, u"[m²]", u"[ft²]", u"0.0000##", u"0.00##"},
        {ptEnergy, u"[kJ]", u"[Btu]", u"0.00", u"0.00"},
        {ptMomInertia, u"[kg m²]", u"[lb ft²]", u"0.####", u"0.###"},
        {ptPress, u"[bar]", u"[psi]", u"0.000##", u"0.00#"},
        {ptQ, u"[kW]", u"[Btu/s]", u"0.00", u"0.00"},
        {ptRho, u"[kg/m³]", u"[lb/ft³]", u"0.0000", u"0.0000"},
        {ptSFCshaft, u"[kg/(kW h)]", u"[lb/(hp h)]", u"0.00000", u"0.00000"},
        {ptTemp, u"[K]", u"[R]", u"0.00", u"0.00"},
        {ptTSFC, u"[kg/(N h)]", u"[lb/(lbf h)]", u"0.00000", u"0.00000"},
        {ptVolume, u"[m³]", u"[ft³]", u"0.00####", u"0.00####"},
        {ptZp, u"[m]", u"[ft]", u"0", u"0"},
        {pthtcoef, u"[W/(m² K)]", u"[Btu/(s ft² R)]", u"0.00", u"0.00"},
    };
    for (const Row& R : Rows) {
        SCOPED_TRACE(GetEnumName(R.P).toStdString());
        EXPECT_EQ(ParunitstrStd[R.P][usSI], QString::fromUtf16(R.UnitSI));
        EXPECT_EQ(ParunitstrStd[R.P][usImperial], QString::fromUtf16(R.UnitImp));
        EXPECT_EQ(ParformatStd[R.P][usSI], QString::fromUtf16(R.FmtSI));
        EXPECT_EQ(ParformatStd[R.P][usImperial], QString::fromUtf16(R.FmtImp));
    }
}

// Factors worked out from the definitions of the units rather than copied from the table.
namespace def {
constexpr double Lb = 0.45359237;                 // kg
constexpr double Ft = 0.3048;                     // m
constexpr double In = 0.0254;                     // m
constexpr double G0 = 9.80665;                    // m/s², standard gravity
constexpr double Lbf = Lb * G0;                   // N
constexpr double R = 5.0 / 9.0;                   // K per degree Rankine
constexpr double CalIT = 4.1868;                  // J, international table calorie
constexpr double BtuIT = CalIT * 1000.0 * Lb * R; // J: a calorie per gram and kelvin, in lb and R
constexpr double Hour = 3600.0;                   // s
constexpr double Hp = 550 * Ft * Lbf;             // W, mechanical horsepower
} // namespace def

TEST(UnitTables, FactorsThatAreExactByDefinition) {
    struct Case {
        TParType P;
        TUnitSystem U;
        double Derived;
    };
    const Case Cases[] = {
        {ptLength, usImperial, def::In},
        {ptZp, usImperial, def::Ft},
        {ptVelocity, usImperial, def::Ft},
        {ptVolume, usImperial, def::Ft * def::Ft * def::Ft},
        {ptMass, usImperial, def::Lb},
        {ptMassflow, usImperial, def::Lb},
        {ptTemp, usImperial, def::R},
        {ptCpS, usImperial, def::BtuIT / (def::Lb * def::R)},
        {ptPress, usSI, 1e5},
        {ptEnergy, usSI, 1000.0},
        {ptPower, usSI, 1000.0},
        {ptSFCshaft, usSI, 1.0 / (1000.0 * def::Hour)},
        {ptTSFC, usSI, 1.0 / def::Hour},
    };
    for (const Case& C : Cases) {
        SCOPED_TRACE(GetEnumName(C.P).toStdString() + (C.U == usSI ? " SI" : " Imperial"));
        EXPECT_NEAR(ParscaleStd[C.P][C.U], C.Derived, 1e-12 * C.Derived);
    }
    // Rows whose SI unit is the base unit itself.
    for (TParType P : {ptNone, ptAngle, ptArea, ptCpS, ptMomInertia, ptRho, ptTemp, ptVolume, ptZp, pthtcoef})
        EXPECT_EQ(ParscaleStd[P][usSI], 1.0) << GetEnumName(P).toStdString();
}

// The table gives these to a few digits; each must be its definition rounded to those digits.
TEST(UnitTables, RoundedFactorsMatchTheirDefinitionToTheDigitsShown) {
    struct Case {
        TParType P;
        double Derived, HalfLastDigit;
    };
    const Case Cases[] = {
        {ptPress, def::Lbf / (def::In * def::In), 0.005},       // psi, 6894.76
        {ptPower, def::Hp, 0.05},                               // hp, 745.7
        {ptArea, def::Ft * def::Ft, 5e-7},                      // ft², 0.092903
        {ptRho, def::Lb / (def::Ft * def::Ft * def::Ft), 5e-5}, // lb/ft³, 16.0185
        {ptTorque, def::Lbf * def::Ft, 5e-6},                   // lbf ft, 1.35582
        {ptTSFC, def::Lb / (def::Lbf * def::Hour), 5e-10},      // lb/(lbf h), 2.8325e-5
    };
    for (const Case& C : Cases) {
        SCOPED_TRACE(GetEnumName(C.P).toStdString());
        EXPECT_NEAR(ParscaleStd[C.P][usImperial], C.Derived, C.HalfLastDigit);
    }
}

// Factors that no exact definition reproduces: the table's own values.
TEST(UnitTables, FactorsWithoutAnExactDefinition) {
    EXPECT_EQ(ParscaleStd[ptEnergy][usImperial], 1055.055598655);
    EXPECT_EQ(ParscaleStd[ptQ][usImperial], ParscaleStd[ptEnergy][usImperial]);
    EXPECT_EQ(ParscaleStd[ptQ][usSI], ParscaleStd[ptEnergy][usSI]);
    EXPECT_EQ(ParscaleStd[ptMomInertia][usImperial], 0.04214004);
    EXPECT_EQ(ParscaleStd[ptSFCshaft][usImperial], 1.6896666666666666e-07);
    EXPECT_EQ(ParscaleStd[pthtcoef][usImperial], 20430.2);
}

// The exact factors, each derived from the definitions of its units. Every Imperial factor that
// differs from its definition is in this table; all other entries keep their standard values.
TEST(UnitTables, ExactFactorsFromTheirDefinitions) {
    TablesGuard Guard;
    struct Case {
        TParType P;
        double Derived;
    };
    const Case Cases[] = {
        {ptArea, def::Ft * def::Ft},
        {ptEnergy, def::BtuIT},
        {ptForce, def::Lbf},
        {ptH, 2326.0}, // Btu(IT)/lb is 2.326 kJ/kg by the definition of the IT calorie
        {ptMomInertia, def::Lb * def::Ft * def::Ft},
        {ptMu, def::Lbf / (def::Ft * def::Ft)}, // lbf s/ft²
        {ptPress, def::Lbf / (def::In * def::In)},
        {ptPower, def::Hp},
        {ptQ, def::BtuIT},
        {ptRho, def::Lb / (def::Ft * def::Ft * def::Ft)},
        {ptSFCshaft, def::Lb / (def::Hp * def::Hour)},
        {ptTorque, def::Lbf * def::Ft},
        {ptTSFC, def::Lb / (def::Lbf * def::Hour)},
        {pthtcoef, def::BtuIT / (def::Ft * def::Ft * def::R)},
    };
    SetExactUnitFactors();
    bool Exact[ParTypeCount] = {};
    for (const Case& C : Cases) {
        SCOPED_TRACE(GetEnumName(C.P).toStdString());
        Exact[C.P] = true;
        EXPECT_NEAR(ParScale[C.P][usImperial], C.Derived, 1e-15 * C.Derived);
    }
    EXPECT_DOUBLE_EQ(def::BtuIT, 1055.05585262);
    EXPECT_DOUBLE_EQ(def::BtuIT / def::Lb, 2326.0);
    EXPECT_EQ(ParUnitStr[ptMu][usImperial], QStringLiteral("[lbf s/ft²]"));
    for (int P = 0; P < ParTypeCount; ++P) {
        for (int U = 0; U < UnitSystemCount; ++U) {
            if (!(Exact[P] && U == usImperial)) {
                EXPECT_EQ(ParScale[P][U], ParscaleStd[P][U]) << P;
            }
            if (!(P == ptMu && U == usImperial)) {
                EXPECT_EQ(ParUnitStr[P][U], ParunitstrStd[P][U]) << P;
            }
            EXPECT_EQ(ParFormat[P][U], ParformatStd[P][U]) << P;
        }
    }
    // Conversions use them: 1 lbf is 0.45359237 kg under standard gravity.
    EXPECT_NEAR(static_cast<double>(ScaledToUnScaled(1.0L, ptForce, usImperial, 1, 0)), def::Lb * def::G0,
                1e-15);
    SetStdFormats();
    for (const Case& C : Cases)
        EXPECT_EQ(ParScale[C.P][usImperial], ParscaleStd[C.P][usImperial]) << GetEnumName(C.P).toStdString();
    EXPECT_EQ(ParUnitStr[ptMu][usImperial], QStringLiteral("[lb/(s ft)]"));
}

// Degrees Fahrenheit are degrees Rankine shifted by 459.67: a host gets them through the offset.
TEST(UnitConversion, FahrenheitThroughTheRankineRowAndAnOffset) {
    const Extended Offset = -459.67L * 5.0L / 9.0L; // 0 °F in kelvin, negated
    const struct { Extended F, K; } Points[] = {{32, 273.15L}, {212, 373.15L}, {-40, 233.15L}, {-459.67L, 0}};
    for (const auto& P : Points) {
        EXPECT_NEAR(static_cast<double>(ScaledToUnScaled(P.F, ptTemp, usImperial, 1, Offset)),
                    static_cast<double>(P.K), 1e-12 * 373.15);
        EXPECT_NEAR(static_cast<double>(UnScaledToScaled(P.K, ptTemp, usImperial, 1, Offset)),
                    static_cast<double>(P.F), 1e-12 * 459.67);
    }
    // Pounds per hour through the lb/s row and a custom scale of one hour.
    EXPECT_NEAR(static_cast<double>(ScaledToUnScaled(3600, ptMassflow, usImperial, 1.0L / 3600, 0)), def::Lb,
                1e-12 * def::Lb);
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

// Table look-up in the grid: bracketing, linear and quadratic interpolation, column order and
// statistics; the parabola routine.
#include <qxnum/mathutil.h>
#include <qxnum/units.h>
#include <qxnum/widgets/numgrid.h>

#include "dialogrecorder.h"
#include "fieldtest.h"
#include "settingsguard.h"

#include <QWidget>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <climits>
#include <cmath>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <random>
#include <thread>

using namespace qxnum;
using qxnum::test::DialogRecorder;
using qxnum::test::SettingsGuard;

namespace {

struct InterpTest : ::testing::Test {
    SettingsGuard Guard{TFormatSettings::Invariant(), TFormatSettings::Invariant()};
    DialogRecorder Dialogs;
    QWidget Form;
    TNumGrid* Grid = nullptr;
    InterpTest() {
        Form.setObjectName(QStringLiteral("CurveForm"));
        Grid = new TNumGrid(&Form);
        Grid->SetColCount(3);
    }
    // Column 1 the input, column 2 the output, one data row per pair.
    void Table(const std::vector<double>& In, const std::vector<double>& Out) {
        Grid->SetRowCount(static_cast<int>(In.size()) + 1);
        for (size_t I = 0; I < In.size(); ++I) {
            Grid->SetDValues(1, static_cast<int>(I) + 1, In[I]);
            Grid->SetDValues(2, static_cast<int>(I) + 1, Out[I]);
        }
    }
};

struct LookupCase {
    const char* Name;
    std::vector<double> In, Out;
    bool Ascending, Extrapolate;
    double X;
    int Row2;
    double Factor, Value;
};

TEST_F(InterpTest, BracketsAndInterpolatesLinearly) {
    const std::vector<LookupCase> Cases = {
        {"between rows", {1, 2, 4}, {10, 20, 40}, true, false, 3, 3, 0.5, 30},
        {"equality is pushed to the next interval", {1, 2, 4}, {10, 20, 40}, true, false, 2, 3, 0.0, 20},
        {"beyond the end is held at the last value", {1, 2, 4}, {10, 20, 40}, true, false, 5, 3, 1.0, 40},
        {"beyond the end extrapolates on the last interval",
         {1, 2, 4},
         {10, 20, 40},
         true,
         true,
         5,
         3,
         1.5,
         50},
        {"before the start is held at the first value", {1, 2, 4}, {10, 20, 40}, true, false, 0, 2, 0.0, 10},
        {"before the start extrapolates on the first interval",
         {1, 2, 4},
         {10, 20, 40},
         true,
         true,
         0,
         2,
         -1.0,
         0},
        {"a descending column", {4, 2, 1}, {40, 20, 10}, false, false, 3, 2, 0.5, 30},
        {"negative values: the tolerance scales with the input",
         {-4, -2, -1},
         {1, 2, 3},
         true,
         false,
         -3,
         2,
         0.5,
         1.5},
    };
    for (const LookupCase& C : Cases) {
        SCOPED_TRACE(C.Name);
        Table(C.In, C.Out);
        Grid->SetExtrapolate(C.Extrapolate);
        int Row2 = -1;
        double Factor = -9.0, Value = -9.0;
        ASSERT_TRUE(Grid->GetInterpPars(1, C.Ascending, C.X, Row2, Factor));
        EXPECT_EQ(Row2, C.Row2);
        EXPECT_DOUBLE_EQ(Factor, C.Factor);
        ASSERT_TRUE(Grid->GetInterpVal(2, Row2, Factor, Value));
        EXPECT_DOUBLE_EQ(Value, C.Value);
        // The order form gives the same bracket when told or when it finds the order itself.
        int AutoRow2 = -1;
        double AutoFactor = -9.0;
        ASSERT_TRUE(Grid->GetInterpPars(1, coAutoDetermine, C.X, AutoRow2, AutoFactor));
        EXPECT_EQ(AutoRow2, Row2);
        EXPECT_DOUBLE_EQ(AutoFactor, Factor);
    }
    EXPECT_EQ(Dialogs.Count(), 0);
}

TEST_F(InterpTest, FailuresShowOneMessageAndReturnFalse) {
    struct Case {
        const char* Name;
        std::vector<double> In;
        std::function<bool()> Call;
        const char* Message;
    };
    int Row2 = 0;
    double F = 0.0, V = 0.0;
    const std::vector<Case> Cases = {
        {"equal values make a zero denominator",
         {5, 5, 7},
         [&] { return Grid->GetInterpPars(1, true, 1.0, Row2, F); },
         "Exception error interpolating column nr.1\r\nin CurveForm"},
        {"an order that is none",
         {1, 2, 4},
         [&] { return Grid->GetInterpPars(1, coNeitherAnorD, 3.0, Row2, F); },
         "Exception error interpolating column nr.1\r\nin CurveForm"},
        {"an order that cannot be found",
         {1, 3, 2},
         [&] { return Grid->GetInterpPars(1, coAutoDetermine, 2.5, Row2, F); },
         "Exception error interpolating column nr.1\r\nin CurveForm"},
        {"an order that is none, before the rows are counted",
         {1},
         [&] { return Grid->GetInterpPars(1, coNeitherAnorD, 3.0, Row2, F); },
         "Exception error interpolating column nr.1\r\nin CurveForm"},
        {"an order to be found in one data row",
         {1},
         [&] { return Grid->GetInterpPars(1, coAutoDetermine, 3.0, Row2, F); },
         "Exception error interpolating column nr.1\r\nin CurveForm"},
        {"an order to be found in a text column",
         {1, 2, 4},
         [&] {
             Grid->Columns()->Items(1)->SetStringCol(true);
             return Grid->GetInterpPars(1, coAutoDetermine, 3.0, Row2, F);
         },
         "Exception error interpolating column nr.1\r\nin CurveForm"},
        {"an order that is none in a text column",
         {1, 2, 4},
         [&] {
             Grid->Columns()->Items(1)->SetStringCol(true);
             return Grid->GetInterpPars(1, coNeitherAnorD, 3.0, Row2, F);
         },
         "Exception error interpolating column nr.1\r\nin CurveForm"},
        {"a text column",
         {1, 2, 4},
         [&] {
             Grid->Columns()->Items(1)->SetStringCol(true);
             return Grid->GetInterpPars(1, true, 3.0, Row2, F);
         },
         "Cannot interpolate in non-numerical column nr.1\r\nin CurveForm"},
        {"a text output column",
         {1, 2, 4},
         [&] {
             Grid->Columns()->Items(2)->SetStringCol(true);
             return Grid->GetInterpVal(2, 2, 0.5, V);
         },
         "Cannot interpolate in non-numerical column nr.2\r\nin CurveForm"},
        {"a text column in the quadratic form",
         {1, 2, 4},
         [&] {
             Grid->Columns()->Items(2)->SetStringCol(true);
             return Grid->GetQuadInterpVal(1, 2, true, 3.0, V);
         },
         "Cannot interpolate in non-numerical column\r\nin CurveForm"},
        {"two data rows give no parabola",
         {1, 2},
         [&] { return Grid->GetQuadInterpVal(1, 2, true, 1.5, V); },
         "Exception error quadr. interp. column nr.2\r\nin CurveForm"},
    };
    for (const Case& C : Cases) {
        SCOPED_TRACE(C.Name);
        Grid->Columns()->Items(1)->SetStringCol(false);
        Grid->Columns()->Items(2)->SetStringCol(false);
        Table(C.In, std::vector<double>(C.In.size(), 1.0));
        Dialogs.Clear();
        EXPECT_FALSE(C.Call());
        ASSERT_EQ(Dialogs.Count(), 1);
        EXPECT_EQ(Dialogs.Messages()[0], QString::fromLatin1(C.Message));
        EXPECT_EQ(Dialogs.Dialogs()[0].DlgType, mtError);
    }
}

TEST_F(InterpTest, OneDataRowAnswersWithThatRowForAnyInput) {
    Table({3}, {42});
    int Row2 = -1;
    double F = 0.25, V = 0.0;
    EXPECT_TRUE(Grid->GetInterpPars(1, true, 100.0, Row2, F));
    EXPECT_EQ(Row2, 0);
    EXPECT_EQ(F, 0.25) << "the factor is left alone";
    ASSERT_TRUE(Grid->GetInterpVal(2, Row2, F, V));
    EXPECT_EQ(V, 42.0);
    V = 0.0;
    ASSERT_TRUE(Grid->GetQuadInterpVal(1, 2, true, -7.0, V));
    EXPECT_EQ(V, 42.0);
}

TEST_F(InterpTest, QuadraticLookUpFollowsTheParabolaOfNeighbouringRows) {
    Table({1, 2, 4, 8}, {1, 4, 16, 64});
    double V = 0.0;
    ASSERT_TRUE(Grid->GetQuadInterpVal(1, 2, true, 3.0, V));
    EXPECT_NEAR(V, 9.0, 1e-12);
    ASSERT_TRUE(Grid->GetQuadInterpVal(1, 2, coAutoDetermine, 6.0, V));
    EXPECT_NEAR(V, 36.0, 1e-12) << "the last three rows";
    ASSERT_TRUE(Grid->GetQuadInterpVal(1, 2, true, 1.5, V));
    EXPECT_NEAR(V, 2.25, 1e-12) << "the first three rows";
}

TEST(Parabola, ExactThroughThreePointsAndRaisesOnCoincidentX) {
    struct Case {
        double x1, y1, x2, y2, x3, y3, A, B, C;
    };
    for (const Case& P : std::vector<Case>{{0, 1, 1, 3, 2, 7, 1, 1, 1},
                                           {3, 0, 1, 0, 2, -1, 1, -4, 3},
                                           {-1, 5, 0, 5, 1, 5, 0, 0, 5},
                                           {1e6, 1, 2e6, 2, 3e6, 3, 0, 1e-6, 0}}) {
        double A = 9, B = 9, C = 9;
        parabola(P.x1, P.y1, P.x2, P.y2, P.x3, P.y3, A, B, C);
        EXPECT_NEAR(A, P.A, 1e-12);
        EXPECT_NEAR(B, P.B, 1e-12);
        EXPECT_NEAR(C, P.C, 1e-9);
    }
    double A = 9, B = 9, C = 9;
    EXPECT_THROW(parabola(1, 1, 1, 2, 3, 3, A, B, C), EMathError);
    EXPECT_THROW(parabola(1, 1, 2, 2, 1, 3, A, B, C), EMathError);
    EXPECT_THROW(parabola(1, 1, 2, 2, NAN, 3, A, B, C), EMathError);
    EXPECT_EQ(A, 9) << "nothing written on failure";
}

TEST_F(InterpTest, ColumnOrderOfTheDataRows) {
    struct Case {
        std::vector<double> In;
        TColumnOrder Order;
    };
    for (const Case& C : std::vector<Case>{{{1, 2, 4}, coAscending},
                                           {{4, 2, 1}, coDescending},
                                           {{5, 5, 7}, coNeitherAnorD},
                                           {{1, 3, 2}, coNeitherAnorD},
                                           {{1, 2, 2}, coNeitherAnorD},
                                           {{1}, coNeitherAnorD}}) {
        Table(C.In, C.In);
        EXPECT_EQ(Grid->ColumnOrder(1), C.Order) << C.In.size() << " rows from " << C.In[0];
    }
    Table({1, 2, 4}, {1, 2, 4});
    Grid->Columns()->Items(1)->SetStringCol(true);
    EXPECT_EQ(Grid->ColumnOrder(1), coNeitherAnorD);
}

// ---- the look-up against a plain scan --------------------------------------------------------------

// The bracketing written out step by step over the data values alone (index 0 the first data row):
// the order settled first, then a scan from the second value on, the factor from the two values
// around the row found, limited to [0, 1] unless extrapolating. Row is a data index; Ok false for
// every failure (all of them show the same message).
struct RefBracket {
    bool Ok = false;
    int Row = 0;
    double Factor = 0.0;
};

constexpr double RefTolerance = 1e-14;

TColumnOrder RefOrder(const std::vector<double>& V) {
    if (V.size() < 2 || std::abs(V[0] - V[1]) <= RefTolerance) return coNeitherAnorD;
    const bool Rising = V[0] < V[1];
    for (size_t I = 1; I + 1 < V.size(); ++I)
        if ((V[I] < V[I + 1]) != Rising || std::abs(V[I] - V[I + 1]) < RefTolerance) return coNeitherAnorD;
    return Rising ? coAscending : coDescending;
}

RefBracket RefLookup(const std::vector<double>& V, TColumnOrder Order, double x, bool Extrapolate) {
    RefBracket B;
    if (Order == coAutoDetermine) Order = RefOrder(V);
    if (Order == coNeitherAnorD) return B;
    B.Ok = true;
    if (V.size() < 2) return B;
    size_t r = 1;
    for (; r < V.size() - 1; ++r) {
        const bool Hit = Order == coAscending ? x < V[r] - RefTolerance * x : V[r] + RefTolerance * x < x;
        if (Hit) break;
    }
    const double Denominator = V[r] - V[r - 1];
    double f = (x - V[r - 1]) / Denominator;
    // A zero denominator, and a quotient too large for a double, are errors.
    if (Denominator == 0.0 || std::isinf(f)) {
        B.Ok = false;
        return B;
    }
    if (!Extrapolate) {
        if (f < 0.0 || std::isnan(f))
            f = 0.0;
        else if (f > 1.0)
            f = 1.0;
    }
    B.Row = static_cast<int>(r);
    B.Factor = f;
    return B;
}

// Tables of every shape the search meets: rising, falling, with ties, with neighbours closer than the
// tolerance, unordered; and inputs inside, outside, on and next to their values.
struct RandomTables {
    std::mt19937_64 Rng{20261125};

    double Uniform(double Lo, double Hi) { return std::uniform_real_distribution<double>(Lo, Hi)(Rng); }
    int Pick(int Lo, int Hi) { return std::uniform_int_distribution<int>(Lo, Hi)(Rng); }

    static double Ulps(double v, int Count) {
        for (; Count != 0; Count += Count > 0 ? -1 : 1)
            v = std::nextafter(v, Count > 0 ? 1e300 : -1e300);
        return v;
    }

    // Kind 0 rising, 1 falling, 2 rising with ties and near ties, 3 falling with them, 4 unordered,
    // 5 all but the first value equal, 6 rising and 7 falling a few ulps apart around powers of
    // two (where the band's edge rounds differently on either side of a value).
    std::vector<double> Table(int Kind, int N) {
        std::vector<double> V(static_cast<size_t>(N));
        if (Kind >= 6) {
            double v = Ulps(std::ldexp(1.0, Pick(-20, 20)), -Pick(0, 100));
            for (double& Item : V) {
                Item = v;
                v = Pick(0, 5) == 0 ? std::max(v, Ulps(std::ldexp(1.0, std::ilogb(v) + 1), -Pick(0, 60)))
                                    : Ulps(v, Pick(0, 60));
            }
            if (Pick(0, 1) == 1) {
                for (double& Item : V)
                    Item = -Item;
                std::reverse(V.begin(), V.end());
            }
            if (Kind == 7) std::reverse(V.begin(), V.end());
            return V;
        }
        double v = Uniform(-50.0, 50.0);
        for (double& Item : V) {
            Item = v;
            double Step = Uniform(0.01, 10.0);
            if (Kind == 2 || Kind == 3) {
                switch (Pick(0, 3)) {
                case 0:
                    Step = 0.0;
                    break; // a tie
                case 1:
                    Step = std::abs(v) * RefTolerance * Uniform(0.01, 0.99);
                    break; // inside the band
                case 2:
                    Step = std::abs(v) * RefTolerance * Uniform(0.99, 3.0);
                    break; // just outside it
                default:
                    break;
                }
            }
            v += Kind == 1 || Kind == 3 ? -Step : Step;
            if (Kind == 4) v = Uniform(-50.0, 50.0);
            if (Kind == 5) v = V[0] + 1.0;
        }
        return V;
    }

    double Input(const std::vector<double>& V) {
        const double Lo = *std::min_element(V.begin(), V.end()), Hi = *std::max_element(V.begin(), V.end());
        const double At = V[static_cast<size_t>(Pick(0, static_cast<int>(V.size()) - 1))];
        switch (Pick(0, 10)) {
        case 7:
        case 8:
        case 9:
        case 10: {
            // Where the tolerance band ends at a value, for either direction, give or take an ulp.
            return Ulps(At / (Pick(0, 1) ? 1.0 + RefTolerance : 1.0 - RefTolerance), Pick(-3, 3));
        }
        case 0:
            return At;
        case 1:
            return Ulps(At, Pick(0, 1) ? 1 : -1);
        case 2:
            return At + std::abs(At) * RefTolerance * Uniform(-2.0, 2.0);
        case 3:
            return Lo - Uniform(0.0, 20.0);
        case 4:
            return Hi + Uniform(0.0, 20.0);
        case 5:
            return 0.0;
        default:
            return Uniform(Lo, Hi);
        }
    }
};

TEST_F(InterpTest, LookUpFindsTheRowsOfAPlainScan) {
    RandomTables Random;
    const QString PairsError = QStringLiteral("Exception error interpolating column nr.1\r\nin CurveForm");
    const QString QuadError = QStringLiteral("Exception error quadr. interp. column nr.2\r\nin CurveForm");
    int Found = 0, Failed = 0;
    for (int T = 0; T < 800; ++T) {
        const int Kind = T % 8;
        const int N = T % 23 == 0 ? 2 : Random.Pick(2, 50);
        const int Fixed = Random.Pick(0, 2);
        const std::vector<double> In = Random.Table(Kind, N), Out = Random.Table(4, N);
        // A fresh table each time, in new cells.
        Grid->SetRowCount(1);
        Grid->SetRowCount(Fixed + N);
        Grid->SetFixedRows(Fixed);
        for (int I = 0; I < N; ++I) {
            Grid->SetDValues(1, Fixed + I, In[static_cast<size_t>(I)]);
            Grid->SetDValues(2, Fixed + I, Out[static_cast<size_t>(I)]);
        }
        const bool Extrapolate = Random.Pick(0, 1) == 1;
        Grid->SetExtrapolate(Extrapolate);
        EXPECT_EQ(Grid->ColumnOrder(1), RefOrder(In)) << "table " << T;
        for (int K = 0; K < 30; ++K) {
            const double X = Random.Input(In);
            const TColumnOrder Order =
                std::array{coAscending, coDescending, coAutoDetermine}[static_cast<size_t>(K % 3)];
            SCOPED_TRACE(testing::Message() << "table " << T << " kind " << Kind << " rows " << N << " fixed "
                                            << Fixed << " order " << Order << " extrapolate " << Extrapolate
                                            << " x " << std::hexfloat << X);
            const RefBracket Want = RefLookup(In, Order, X, Extrapolate);
            int Row2 = -7;
            double Factor = -7.0;
            Dialogs.Clear();
            const bool Ok = Order == coAutoDetermine
                                ? Grid->GetInterpPars(1, Order, X, Row2, Factor)
                                : Grid->GetInterpPars(1, Order == coAscending, X, Row2, Factor);
            ASSERT_EQ(Ok, Want.Ok);
            if (!Ok) {
                ++Failed;
                ASSERT_EQ(Dialogs.Count(), 1);
                EXPECT_EQ(Dialogs.Messages()[0], PairsError);
            } else {
                ++Found;
                EXPECT_EQ(Dialogs.Count(), 0);
                EXPECT_EQ(Row2, Fixed + Want.Row);
                EXPECT_EQ(Factor, Want.Factor);
                double Value = 0.0;
                ASSERT_TRUE(Grid->GetInterpVal(2, Row2, Factor, Value));
                const double Low = Out[static_cast<size_t>(Want.Row - 1)];
                EXPECT_EQ(Value, Low + (Out[static_cast<size_t>(Want.Row)] - Low) * Want.Factor);
            }

            // The quadratic form brackets the same way, then fits the three rows around the bracket.
            Dialogs.Clear();
            double Quad = 0.0;
            const bool QuadOk = Grid->GetQuadInterpVal(1, 2, Order, X, Quad);
            bool WantQuad = Want.Ok;
            double Expected = 0.0;
            if (Want.Ok) {
                const int m = std::min(Want.Row, N - 2);
                const auto r1 = static_cast<size_t>(std::max(m - 1, 0)), r2 = static_cast<size_t>(m),
                           r3 = static_cast<size_t>(m + 1);
                double A = 0.0, B = 0.0, C = 0.0;
                try {
                    parabola(In[r1], Out[r1], In[r2], Out[r2], In[r3], Out[r3], A, B, C);
                    Expected = (A * X + B) * X + C;
                } catch (const EMathError&) {
                    WantQuad = false;
                }
            }
            ASSERT_EQ(QuadOk, WantQuad);
            ASSERT_EQ(Dialogs.Count(), QuadOk ? 0 : 1);
            if (QuadOk)
                EXPECT_EQ(Quad, Expected);
            else
                EXPECT_EQ(Dialogs.Messages()[0], Want.Ok ? QuadError : PairsError);
        }
    }
    // Both outcomes were met often enough to mean something.
    EXPECT_GT(Found, 4000);
    EXPECT_GT(Failed, 1000);
}

TEST_F(InterpTest, LookUpSeesEveryChangeOfItsColumn) {
    using Values = std::vector<double>;
    struct Case {
        const char* Name;
        double X;
        std::function<void(Values&)> Change; // changes the grid, and the expected values with it
    };
    TNumColumn* Input = Grid->Columns()->Items(1);
    const std::vector<Case> Cases = {
        {"a value set", 2.2,
         [&](Values& In) {
             Grid->SetDValues(1, 3, 2.5);
             In[2] = 2.5;
         }},
        {"a value that keeps its text", 2.5,
         [&](Values& In) {
             Grid->SetDValues(1, 3, 3.00000000000001);
             In[2] = 3.00000000000001;
         }},
        {"a text set, leaving the column unordered", 1.5,
         [&](Values& In) {
             Grid->SetCells(1, 2, QStringLiteral("0.5"));
             In[1] = 0.5;
         }},
        {"a row inserted", 2.5,
         [&](Values& In) {
             Grid->InsertRow(3);
             In.insert(In.begin() + 2, static_cast<double>(Grid->GetDValues(1, 3)));
         }},
        {"a row deleted", 2.5,
         [&](Values& In) {
             Grid->DeleteRow(3);
             In.erase(In.begin() + 2);
         }},
        {"a row moved", 4.5,
         [&](Values& In) {
             Grid->MoveRow(5, 1);
             std::rotate(In.begin(), In.begin() + 4, In.end());
         }},
        {"limits set on the column", 1.2,
         [&](Values& In) {
             Input->SetRange(1.5, 4.5);
             for (double& V : In)
                 V = std::clamp(V, 1.5, 4.5);
         }},
        {"a hook that doubles every value read", 3.0,
         [&](Values& In) {
             Input->SetOnSetNumValue([](QObject*, int, const QString&, Extended& V) { V *= 2; });
             for (double& V : In)
                 V *= 2;
         }},
        {"another title row", 1.5,
         [&](Values& In) {
             Grid->SetFixedRows(2);
             In.erase(In.begin());
         }},
    };
    for (const Case& C : Cases) {
        SCOPED_TRACE(C.Name);
        Grid->SetFixedRows(1);
        Input->SetRange(0, 0);
        Input->SetOnSetNumValue(nullptr);
        Values In = {1, 2, 3, 4, 5};
        Table(In, {10, 20, 30, 40, 50});
        const RefBracket Before = RefLookup(In, coAscending, C.X, false);
        int Row2 = 0;
        double F = 0.0;
        ASSERT_TRUE(Grid->GetInterpPars(1, true, C.X, Row2, F));
        ASSERT_EQ(Row2, 1 + Before.Row);
        ASSERT_EQ(F, Before.Factor);

        C.Change(In);
        const RefBracket After = RefLookup(In, coAscending, C.X, false);
        ASSERT_TRUE(After.Row != Before.Row || After.Factor != Before.Factor) << "the case changes nothing";
        ASSERT_TRUE(Grid->GetInterpPars(1, true, C.X, Row2, F));
        EXPECT_EQ(Row2, Grid->FixedRows() + After.Row);
        EXPECT_EQ(F, After.Factor);
        EXPECT_EQ(Grid->ColumnOrder(1), RefOrder(In));
    }
    EXPECT_EQ(Dialogs.Count(), 0);
}

// Ends the test program when the guarded code runs far beyond any reasonable time: a loop over
// the whole integer range would otherwise hang the suite instead of failing it.
class HangGuard {
public:
    explicit HangGuard(const char* What) {
        Thread = std::thread([this, What] {
            std::unique_lock<std::mutex> Lock(M);
            if (!Cv.wait_for(Lock, std::chrono::seconds(60), [this] { return Done; })) {
                std::fprintf(stderr, "%s did not end within 60 s\n", What);
                std::abort();
            }
        });
    }
    ~HangGuard() {
        {
            const std::lock_guard<std::mutex> Lock(M);
            Done = true;
        }
        Cv.notify_one();
        Thread.join();
    }
    HangGuard(const HangGuard&) = delete;
    HangGuard& operator=(const HangGuard&) = delete;

private:
    std::mutex M;
    std::condition_variable Cv;
    bool Done = false;
    std::thread Thread;
};

TEST_F(InterpTest, StatisticsClampOrRefuseIndexesOutsideTheGrid) {
    // No title row here, so that every row of the grid holds a value: 5, 10, -20, 40.
    Table({1, 2, 4}, {10, -20, 40});
    Grid->SetFixedRows(0);
    Grid->SetDValues(2, 0, 5);
    // Every cell read formats through the column's hook: the count is the rows visited.
    int Reads = 0;
    Grid->Columns()->Items(2)->SetOnGetNumtext([&](QObject*, int, Extended, Extended, QString&) { ++Reads; });
    struct {
        int Col, Start, End;
        double Sum;
    } const Sums[] = {
        {2, INT_MIN, 3, 35},      {2, 2, INT_MAX, 20},       {2, INT_MIN, INT_MAX, 35},
        {2, INT_MAX, INT_MIN, 0}, {2, 4, INT_MAX, 0},        {2, INT_MIN, -1, 0},
        {2, INT_MAX, INT_MAX, 0}, {99, INT_MIN, INT_MAX, 0}, {-1, INT_MIN, 3, 0},
    };
    const HangGuard Watch("ColSum");
    for (const auto& C : Sums) {
        SCOPED_TRACE(testing::Message() << C.Col << ": " << C.Start << ".." << C.End);
        Reads = 0;
        EXPECT_EQ(Grid->ColSum(C.Col, C.Start, C.End), C.Sum);
        EXPECT_LE(Reads, Grid->RowCount());
    }

    // A column the grid does not have leaves the bounds as they came in.
    for (int Col : {-1, 3, INT_MAX}) {
        double Min = 3.0, Max = 4.0;
        Grid->GetColMinMax(Col, Min, Max, false, true);
        EXPECT_EQ(Min, 3.0) << Col;
        EXPECT_EQ(Max, 4.0) << Col;
    }
    EXPECT_EQ(Dialogs.Count(), 0);
}

TEST_F(InterpTest, SumsAndBoundsOfAColumn) {
    Table({1, 2, 4}, {10, -20, 40});
    EXPECT_EQ(Grid->ColSum(2, 1, 3), 30.0);
    EXPECT_EQ(Grid->ColSum(2, 2, 2), -20.0);
    EXPECT_EQ(Grid->ColSum(2, 5, 4), 0.0);

    double Min = 0.0, Max = 0.0;
    Grid->GetColMinMax(2, Min, Max, true, true);
    EXPECT_EQ(Min, -20.0);
    EXPECT_EQ(Max, 40.0);
    Min = -100.0;
    Max = 100.0;
    Grid->GetColMinMax(1, Min, Max, false, true);
    EXPECT_EQ(Min, -100.0) << "accumulates over the values passed in";
    EXPECT_EQ(Max, 100.0);
    Grid->GetColMinMax(1, Min, Max, true, true);
    EXPECT_EQ(Min, 1.0);
    EXPECT_EQ(Max, 4.0);

    // Scaled values are in base units, unscaled ones as shown.
    TNumColumn* P = Grid->Columns()->Items(1);
    P->SetParType(ptPress);
    for (int R = 1; R <= 3; ++R)
        Grid->SetDValues(1, R, 1e5 * R);
    Grid->GetColMinMax(1, Min, Max, true, false);
    EXPECT_NEAR(Max, 3e5 / ParScaleOf(ptPress, P->UnitSystem()), 1e-9);
    Grid->GetColMinMax(1, Min, Max, true, true);
    EXPECT_NEAR(Max, 3e5, 1e-6);

    P->SetStringCol(true);
    Min = 3.0;
    Max = 4.0;
    Grid->GetColMinMax(1, Min, Max, false, true);
    EXPECT_EQ(Min, 3.0);
    EXPECT_EQ(Max, 4.0);
}

} // namespace

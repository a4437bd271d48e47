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

#include <chrono>
#include <climits>
#include <cmath>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>
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

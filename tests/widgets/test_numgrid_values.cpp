// The value each numeric cell holds beside its text: exact through unit switches and reformats,
// replaced by the value of any new text, and the column-only checks it makes possible.
#include <qxnum/units.h>
#include <qxnum/widgets/numgrid.h>
#include <qxnum/xml.h>

#include "dialogrecorder.h"
#include "settingsguard.h"

#include <QApplication>
#include <QClipboard>
#include <QWidget>
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <map>

using namespace qxnum;
using qxnum::test::DialogRecorder;
using qxnum::test::SettingsGuard;

namespace {

bool SameBits(Extended A, Extended B) {
    // The significant bytes of an x87 extended value; padding may differ.
    return std::memcmp(&A, &B, std::numeric_limits<Extended>::digits == 64 ? 10 : sizeof A) == 0;
}

QString XmlOf(TNumGrid& G) {
    TXmlDocument Doc;
    Doc.LoadFromString(QStringLiteral("<g/>"));
    G.WriteToXML(Doc.Root());
    return Doc.SaveToString();
}

// Counts the cell checks per column.
struct CountingGrid : TNumGrid {
    std::map<int, int> Checks;
    bool CheckCell(int ACol, int ARow) override {
        ++Checks[ACol];
        return TNumGrid::CheckCell(ACol, ARow);
    }
};

struct ValuesTest : ::testing::Test {
    SettingsGuard Guard{TFormatSettings::Invariant(), TFormatSettings::Invariant()};
    DialogRecorder Dialogs;
    QWidget Form;
};

// Values across magnitudes and signs, none of them a round number in any unit.
const Extended Magnitudes[] = {1.234567890123e-7L, 0.0254L / 3,       2.718281828459045L, -77.7777777777L,
                               1013.25L / 7,       123456.789012345L, -9.87654321e8L,     6.02214076e13L};

TEST_F(ValuesTest, TenUnitSwitchesLeaveEveryValueBitForBit) {
    // Every parameter type in one grid: a column per type, a row per magnitude.
    TNumGrid Grid(&Form);
    Grid.SetColCount(ParTypeCount);
    Grid.SetFixedCols(0);
    Grid.SetRowCount(static_cast<int>(std::size(Magnitudes)) + 1);
    for (int T = 0; T < ParTypeCount; ++T) {
        TNumColumn* C = Grid.Columns()->Items(T);
        C->SetParType(static_cast<TParType>(T));
        C->SetUnitSystem(usSI);
        for (int R = 1; R < Grid.RowCount(); ++R)
            Grid.SetDValues(T, R, Magnitudes[R - 1]);
    }
    const QString XmlBefore = XmlOf(Grid);
    // What a column that starts in Imperial shows for the same values.
    TNumGrid Imperial(&Form);
    Imperial.SetColCount(Grid.ColCount());
    Imperial.SetRowCount(Grid.RowCount());
    for (int T = 0; T < ParTypeCount; ++T) {
        Imperial.Columns()->Items(T)->SetParType(static_cast<TParType>(T));
        Imperial.Columns()->Items(T)->SetUnitSystem(usImperial);
        for (int R = 1; R < Grid.RowCount(); ++R)
            Imperial.SetDValues(T, R, Magnitudes[R - 1]);
    }

    const struct {
        const char* Name;
        std::function<void(TUnitSystem)> Switch;
    } Ways[] = {
        {"per column",
         [&](TUnitSystem U) {
             for (int C = 0; C < Grid.ColCount(); ++C)
                 Grid.Columns()->Items(C)->SetUnitSystem(U);
         }},
        {"grid-level", [&](TUnitSystem U) { Grid.SwitchUnitSystem(U); }},
    };
    for (const auto& Way : Ways) {
        SCOPED_TRACE(Way.Name);
        for (int Round = 0; Round < 10; ++Round) {
            Way.Switch(usImperial);
            for (int C = 0; C < Grid.ColCount(); ++C)
                for (int R = 1; R < Grid.RowCount(); ++R)
                    ASSERT_EQ(Grid.Cells(C, R), Imperial.Cells(C, R)) << "type " << C << " row " << R;
            Way.Switch(usSI);
        }
        for (int C = 0; C < Grid.ColCount(); ++C)
            for (int R = 1; R < Grid.RowCount(); ++R)
                ASSERT_TRUE(SameBits(Grid.GetDValues(C, R), Magnitudes[R - 1]))
                    << "type " << C << " row " << R;
        EXPECT_EQ(XmlOf(Grid), XmlBefore) << "the file does not drift either";
    }
    EXPECT_EQ(Dialogs.Count(), 0);
}

TEST_F(ValuesTest, AReformatKeepsTheValueANewTextBringsItsOwn) {
    TNumGrid Grid(&Form);
    TNumColumn* C = Grid.Columns()->Items(1);
    C->SetParType(ptPress);
    C->SetUnitSystem(usSI);
    const Extended Exact = 123456.789012345L;
    Grid.SetDValues(1, 1, Exact);
    C->SetDecimals(0);
    C->SetDecimals(5);
    C->SetCustomFormat(QStringLiteral("0.0"));
    C->SetCustomFormat(QString());
    EXPECT_TRUE(SameBits(Grid.GetDValues(1, 1), Exact)) << "reformats re-express the held value";

    // Text typed, set or pasted is the truth again: its own value, read in the column's units.
    const Extended Factor = static_cast<Extended>(ParScaleOf(ptPress, usImperial));
    C->SetUnitSystem(usImperial);
    const struct {
        const char* Name;
        std::function<void()> Put;
    } Sources[] = {
        {"SetCells", [&] { Grid.SetCells(1, 1, QStringLiteral("12.3456789")); }},
        {"paste",
         [&] {
             QApplication::clipboard()->setText(QStringLiteral("12.3456789\r\n"));
             Dialogs.Script({mrNo}); // from the current cell
             Grid.SetCol(1);
             Grid.SetRow(1);
             Grid.PasteFromClipboard();
         }},
        {"XML read",
         [&] {
             TXmlDocument Doc;
             Doc.LoadFromString(QStringLiteral("<g/>"));
             Grid.WriteToXML(Doc.Root());
             Doc.LoadFromString(Doc.SaveToString().replace(Grid.Cells(1, 1), QStringLiteral("12.3456789")));
             Grid.ReadFromXML(Doc.Root());
         }},
    };
    for (const auto& S : Sources) {
        SCOPED_TRACE(S.Name);
        Grid.SetDValues(1, 1, Exact);
        S.Put();
        EXPECT_EQ(Grid.GetDValues(1, 1), std::strtold("12.3456789", nullptr) * Factor);
    }
    EXPECT_EQ(Dialogs.Count(), 1) << "the paste's question";
}

TEST_F(ValuesTest, AColumnChangeChecksThatColumnOnly) {
    CountingGrid Grid;
    Grid.SetColCount(4);
    Grid.SetRowCount(100'001);
    for (int C = 0; C < 4; ++C) {
        if (C > 0) Grid.Columns()->Items(C)->SetParType(ptTemp);
        Grid.Columns()->Items(C)->SetUnitSystem(usSI);
    }
    Grid.CheckAllCells();
    const int Rows = Grid.RowCount() - 1;

    const struct {
        const char* Name;
        std::function<void()> Change;
        std::map<int, int> Expected;
    } Cases[] = {
        {"decimals", [&] { Grid.Columns()->Items(2)->SetDecimals(4); }, {{2, Rows}}},
        {"limits", [&] { Grid.Columns()->Items(3)->SetRange(-5, 5); }, {{3, Rows}}},
        {"unit system", [&] { Grid.Columns()->Items(1)->SetUnitSystem(usImperial); }, {}},
        {"grid-level unit system", [&] { Grid.SwitchUnitSystem(usSI); }, {}},
        {"a batch of changes",
         [&] {
             Grid.BeginUpdate();
             for (int C = 1; C < 4; ++C)
                 Grid.Columns()->Items(C)->SetDecimals(1);
             Grid.EndUpdate();
         },
         {{1, Rows}, {2, Rows}, {3, Rows}}},
        {"a title", [&] { Grid.Columns()->Items(1)->Title()->SetCaption(QStringLiteral("T")); }, {}},
    };
    for (const auto& Case : Cases) {
        SCOPED_TRACE(Case.Name);
        Grid.Checks.clear();
        Case.Change();
        EXPECT_EQ(Grid.Checks, Case.Expected);
    }
}

} // namespace

// The grid as users meet it: keys, mouse, the in-place editor, checks on leaving a cell, painting
// of large grids and the accessible table. Run at device pixel ratio 1 and (through QT_SCALE_FACTOR,
// see tests/CMakeLists.txt) 2.
#include <qxnum/widgets/numgrid.h>
#include <qxnum/widgets/timeseriesgrid.h>

#include "dialogrecorder.h"
#include "settingsguard.h"
#include "widgettest.h"

#include <QAccessible>
#include <QLineEdit>
#include <QScrollBar>
#include <QTest>
#include <QVBoxLayout>
#include <gtest/gtest.h>

using namespace qxnum;
using qxnum::test::DialogRecorder;
using qxnum::test::SettingsGuard;

namespace {

struct GridViewTest : ::testing::Test {
    SettingsGuard Guard{TFormatSettings::Invariant(), TFormatSettings::Invariant()};
    DialogRecorder Dialogs;
    QWidget Form;
    TNumGrid* Grid = nullptr;
    QLineEdit* Other = nullptr;
    GridViewTest() {
        Form.setObjectName(QStringLiteral("Form"));
        auto* L = new QVBoxLayout(&Form);
        Grid = new TNumGrid(&Form);
        Other = new QLineEdit(&Form);
        L->addWidget(Grid);
        L->addWidget(Other);
        Form.resize(520, 360);
        Grid->Columns()->Items(1)->SetDataType(dtDouble);
        Grid->Columns()->Items(1)->SetNumericType(ntFixed);
        Grid->Columns()->Items(2)->SetDataType(dtInteger);
        Grid->Columns()->Items(3)->SetCheckBoxCol(true);
        Grid->Columns()->Items(4)->SetStringCol(true);
    }
    void SetUp() override { ASSERT_TRUE(qxnum::test::Activate(Form, Grid)); }
    QLineEdit* Editor() const { return Grid->viewport()->findChild<QLineEdit*>(); }
    // Each key goes where the focus is at that moment (the first one opens the editor).
    void Type(const char* Text) {
        for (const char* P = Text; *P; ++P)
            QTest::keyClick(QApplication::focusWidget(), *P);
    }
};

TEST_F(GridViewTest, TypingAndEnterStoreTheColumnsTextAndMoveDown) {
    Type("12.5");
    ASSERT_TRUE(Grid->EditorMode());
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    EXPECT_FALSE(Grid->EditorMode());
    EXPECT_EQ(Grid->Cells(1, 1), QStringLiteral("12.50")) << "checked and shown in the column's format";
    EXPECT_EQ(Grid->Row(), 2);
    EXPECT_TRUE(Grid->hasFocus());
    EXPECT_EQ(Dialogs.Count(), 0);
}

TEST_F(GridViewTest, InvalidTextIsReportedOnceAndKeptInItsCell) {
    Type("1e");
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Down);
    ASSERT_EQ(Dialogs.Count(), 1);
    EXPECT_EQ(Dialogs.Dialogs()[0].Msg, QStringLiteral("1e is no valid numeric input.\r\nin Form"));
    EXPECT_EQ(Grid->Row(), 1) << "the move does not happen";
    EXPECT_EQ(Grid->Cells(1, 1), QStringLiteral("1e"));
    EXPECT_TRUE(qxnum::test::WaitFor([&] { return Grid->hasFocus(); }));
    // Leaving the grid with the cell still invalid brings the focus back, with one more message.
    Other->setFocus();
    EXPECT_EQ(Dialogs.Count(), 2);
    EXPECT_TRUE(qxnum::test::WaitFor([&] { return Grid->hasFocus(); }));
    // Fixed, the cell is taken and the move goes through.
    QTest::keyClick(Grid, Qt::Key_F2);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Backspace);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    EXPECT_EQ(Grid->Cells(1, 1), QStringLiteral("1.00"));
    EXPECT_EQ(Grid->Row(), 2);
    EXPECT_EQ(Dialogs.Count(), 2);
}

TEST_F(GridViewTest, LeavingFromAnOpenEditorChecksTheCellToo) {
    Type("-");
    ASSERT_TRUE(Grid->EditorMode());
    Other->setFocus();
    ASSERT_EQ(Dialogs.Count(), 1);
    EXPECT_EQ(Dialogs.Dialogs()[0].Msg, QStringLiteral("- is no valid numeric input.\r\nin Form"));
    EXPECT_EQ(Grid->Cells(1, 1), QStringLiteral("-"));
    EXPECT_TRUE(qxnum::test::WaitFor([&] { return Grid->hasFocus(); }));
}

TEST_F(GridViewTest, EscapeRestoresAndTheEditorFollowsTheNumericRules) {
    Grid->SetCells(1, 1, QStringLiteral("3.00"));
    QTest::keyClick(Grid, Qt::Key_F2);
    ASSERT_TRUE(Grid->EditorMode());
    Type("9");
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
    EXPECT_FALSE(Grid->EditorMode());
    EXPECT_EQ(Grid->Cells(1, 1), QStringLiteral("3.00"));

    Grid->SetCol(2); // dtInteger
    Type("4a.5");
    ASSERT_NE(Editor(), nullptr);
    EXPECT_EQ(Editor()->text(), QStringLiteral("45")) << "letters and separators refused";
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    Grid->SetCol(4); // string column: anything goes
    Type("a;b c");
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    EXPECT_EQ(Grid->Cells(4, 1), QStringLiteral("a;b c"));
    EXPECT_EQ(Grid->Cells(2, 1), QStringLiteral("45"));
}

TEST_F(GridViewTest, CheckBoxesToggleBySpaceAndClickButNotWhenReadOnly) {
    Grid->SetCol(3);
    const QString Before = Grid->Cells(3, 1);
    QTest::keyClick(Grid, Qt::Key_Space);
    EXPECT_TRUE(Grid->CheckedStatus(3, 1));
    const QRect R = Grid->CellRect(3, 2);
    ASSERT_FALSE(R.isEmpty());
    QTest::mouseClick(Grid->viewport(), Qt::LeftButton, {}, R.center());
    EXPECT_EQ(Grid->Row(), 2);
    EXPECT_TRUE(Grid->CheckedStatus(3, 2));
    Grid->Columns()->Items(3)->SetReadOnly(true);
    QTest::keyClick(Grid, Qt::Key_Space);
    EXPECT_TRUE(Grid->CheckedStatus(3, 2));
    Grid->SetCol(1);
    Grid->Columns()->Items(1)->SetReadOnly(true);
    Type("5");
    EXPECT_FALSE(Grid->EditorMode()) << "read-only cells open no editor";
    (void)Before;
}

TEST_F(GridViewTest, SpreadsheetKeys) {
    Grid->SetRowCount(60);
    Grid->SetOptions(Grid->Options() | goTabs);
    struct {
        Qt::Key Key;
        Qt::KeyboardModifiers Mods;
        int Col, Row;
    } const Steps[] = {
        {Qt::Key_Right, {}, 2, 1},
        {Qt::Key_End, {}, 4, 1},
        {Qt::Key_Home, {}, 1, 1},
        {Qt::Key_End, Qt::ControlModifier, 4, 59},
        {Qt::Key_Home, Qt::ControlModifier, 1, 1},
        {Qt::Key_Tab, {}, 2, 1},
        {Qt::Key_Backtab, Qt::ShiftModifier, 1, 1},
        {Qt::Key_Up, {}, 1, 1},
        {Qt::Key_Left, {}, 1, 1},
    };
    for (const auto& S : Steps) {
        QTest::keyClick(Grid, S.Key, S.Mods);
        EXPECT_EQ(Grid->Col(), S.Col) << QKeySequence(S.Key).toString().toStdString();
        EXPECT_EQ(Grid->Row(), S.Row) << QKeySequence(S.Key).toString().toStdString();
    }
    QTest::keyClick(Grid, Qt::Key_PageDown);
    EXPECT_EQ(Grid->Row(), 1 + Grid->VisibleRowCount());
    EXPECT_GE(Grid->TopRow(), 2) << "the view follows the current cell";
    Grid->SetCol(4);
    QTest::keyClick(Grid, Qt::Key_Tab);
    EXPECT_EQ(Grid->Col(), 1) << "Tab wraps to the next row";
}

TEST_F(GridViewTest, DownOnTheLastRowAppendsWithAutoAddRow) {
    Grid->SetRow(4);
    QTest::keyClick(Grid, Qt::Key_Down);
    EXPECT_EQ(Grid->RowCount(), 5);
    Grid->SetAutoAddRow(true);
    QTest::keyClick(Grid, Qt::Key_Down);
    EXPECT_EQ(Grid->RowCount(), 6);
    EXPECT_EQ(Grid->Row(), 5);
    EXPECT_EQ(Grid->Cells(1, 5), QStringLiteral("0.00")) << "the new row has its defaults";
}

TEST_F(GridViewTest, ALargeGridScrollsToItsEndAndHitTestsThere) {
    Grid->SetRowCount(100000);
    QTest::keyClick(Grid, Qt::Key_End, Qt::ControlModifier);
    EXPECT_EQ(Grid->Row(), 99999);
    const QRect R = Grid->CellRect(Grid->Col(), Grid->Row());
    ASSERT_FALSE(R.isEmpty()) << "the last cell is in view";
    int C = -1, Row = -1;
    ASSERT_TRUE(Grid->MouseToCell(R.center(), C, Row));
    EXPECT_EQ(Row, 99999);
    EXPECT_EQ(C, 4);
    // The title row stays in view.
    ASSERT_TRUE(Grid->MouseToCell(QPoint(R.center().x(), 2), C, Row));
    EXPECT_EQ(Row, 0);
    Grid->SetCells(4, 99999, QStringLiteral("last"));
    const QImage Shot = Grid->viewport()->grab().toImage();
    EXPECT_FALSE(Shot.isNull());
}

TEST_F(GridViewTest, AccessibleAsATable) {
    Grid->Columns()->Items(1)->Title()->SetCaption(QStringLiteral("Flow"));
    Grid->SetCells(1, 2, QStringLiteral("4.25"));
    Grid->SetCells(0, 2, QStringLiteral("P2"));
    QAccessibleInterface* Iface = QAccessible::queryAccessibleInterface(Grid);
    ASSERT_NE(Iface, nullptr);
    EXPECT_EQ(Iface->role(), QAccessible::Table);
    QAccessibleTableInterface* Table = Iface->tableInterface();
    ASSERT_NE(Table, nullptr);
    EXPECT_EQ(Table->rowCount(), 4);
    EXPECT_EQ(Table->columnCount(), 4);
    EXPECT_EQ(Table->columnDescription(0), QStringLiteral("Flow"));
    EXPECT_EQ(Table->columnDescription(1), QStringLiteral("Title 2,1 Title 2,2"));
    EXPECT_EQ(Table->rowDescription(1), QStringLiteral("P2"));
    QAccessibleInterface* Cell = Table->cellAt(1, 0);
    ASSERT_NE(Cell, nullptr);
    EXPECT_EQ(Cell->role(), QAccessible::Cell);
    EXPECT_EQ(Cell->text(QAccessible::Name), QStringLiteral("4.25"));
    EXPECT_EQ(Cell->tableCellInterface()->rowIndex(), 1);
    EXPECT_EQ(Iface->indexOfChild(Cell), 4);
}

TEST_F(GridViewTest, ScrollBarsOnlyWhenTheCellsDoNotFit) {
    EXPECT_EQ(Grid->verticalScrollBar()->maximum(), 0);
    Grid->SetRowCount(200);
    EXPECT_GT(Grid->verticalScrollBar()->maximum(), 150);
    Grid->SetRowCount(5);
    EXPECT_EQ(Grid->verticalScrollBar()->maximum(), 0);
    EXPECT_EQ(Grid->TopRow(), 1);
}

// The case editor's speed line: seven stretched columns, nine rows, in a layout.
TEST(GridLookTest, NoScrollBarsWhileTheCellsFitAndThemWhenTheyDoNot) {
    QWidget Form;
    auto* L = new QVBoxLayout(&Form);
    auto* Grid = new TNumGrid(&Form);
    L->addWidget(Grid);
    Grid->SetColCount(7);
    Grid->SetRowCount(9);
    Grid->SetColStretchOptions(csoAutoStretch);
    Form.resize(760, 460);
    Form.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&Form));
    const auto Bars = [&] {
        QCoreApplication::processEvents(); // the scroll area shows and hides its bars queued
        return std::pair(Grid->horizontalScrollBar()->isVisible(), Grid->verticalScrollBar()->isVisible());
    };
    EXPECT_EQ(Bars(), std::pair(false, false));
    Grid->SetRowCount(200);
    EXPECT_EQ(Bars(), std::pair(false, true));
    Grid->SetColStretchOptions({});
    Grid->SetColCount(20);
    EXPECT_EQ(Bars(), std::pair(true, true));
    Grid->SetColCount(7);
    Grid->SetRowCount(9);
    Grid->SetColStretchOptions(csoAutoStretch);
    EXPECT_EQ(Bars(), std::pair(false, false));
}

// Check-box cells on a dark palette: the box stands out from the cell.
TEST(GridLookTest, CheckBoxCellsAreVisibleOnADarkPalette) {
    QPalette Dark;
    for (auto [Role, Colour] : {std::pair{QPalette::Window, QColor(45, 45, 48)},
                                {QPalette::Base, QColor(30, 30, 32)},
                                {QPalette::AlternateBase, QColor(40, 40, 44)},
                                {QPalette::Button, QColor(50, 50, 54)},
                                {QPalette::Text, QColor(225, 225, 225)},
                                {QPalette::WindowText, QColor(225, 225, 225)},
                                {QPalette::ButtonText, QColor(225, 225, 225)}})
        Dark.setColor(Role, Colour);
    for (const bool IsDark : {false, true}) {
        SCOPED_TRACE(IsDark ? "dark" : "light");
        QWidget Form;
        if (IsDark) Form.setPalette(Dark);
        auto* Grid = new TNumGrid(&Form);
        Grid->resize(400, 200);
        Grid->Columns()->Items(2)->SetCheckBoxCol(true);
        Grid->SetCells(2, 2, QStringLiteral("FALSE"));
        Grid->SetCol(1); // the box is not the current cell
        Form.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&Form));
        const QRect Cell = Grid->CellRect(2, 2).adjusted(2, 2, -2, -2);
        const QImage Shot = Grid->viewport()->grab(Cell).toImage();
        const QColor Back = Shot.pixelColor(1, 1);
        int Outline = 0;
        for (int Y = 0; Y < Shot.height(); ++Y)
            for (int X = 0; X < Shot.width(); ++X)
                if (std::abs(Shot.pixelColor(X, Y).lightness() - Back.lightness()) > 60) ++Outline;
        EXPECT_GT(Outline, 20) << "pixels of the unchecked box that differ clearly from the cell";
    }
}

TEST_F(GridViewTest, ColumnsStretchToTheWidth) {
    Grid->SetColStretchOptions(csoAutoStretch);
    int Total = 0;
    for (int C = 0; C < Grid->ColCount(); ++C)
        Total += Grid->ColWidths(C);
    EXPECT_EQ(Total, Grid->viewport()->width());
    Grid->SetColStretchOptions(TColStretchOptions(csoAutoStretch) | csoLastColOnly);
    EXPECT_EQ(Grid->ColWidths(1), Grid->DefaultColWidth());
    EXPECT_GT(Grid->ColWidths(4), Grid->DefaultColWidth());
}

// ---- typing with goTabs: the text lands in the cell it was typed into ----------------------------

enum class Commit { Enter, Tab, ClickCell, ClickOther, Escape };

struct TabsCase {
    bool Series; // a TTimeSeriesGrid (column 0 holds the times, no fixed column) or a TNumGrid
    Commit How;
};

struct TabsTypingTest : ::testing::TestWithParam<TabsCase> {
    SettingsGuard Guard{TFormatSettings::Invariant(), TFormatSettings::Invariant()};
    DialogRecorder Dialogs;
    QWidget Form;
    TNumGrid* Grid = nullptr;
    QLineEdit* Other = nullptr;
    TabsTypingTest() {
        Form.setObjectName(QStringLiteral("Form"));
        auto* L = new QVBoxLayout(&Form);
        if (GetParam().Series) {
            auto* S = new TTimeSeriesGrid(&Form);
            S->SetAllowDataDialog(false);
            S->SetColCount(5);
            S->SetFixedCols(0);
            Grid = S;
        } else {
            Grid = new TNumGrid(&Form);
        }
        Other = new QLineEdit(&Form);
        L->addWidget(Grid);
        L->addWidget(Other);
        Form.resize(560, 360);
        Grid->SetOptions(Grid->Options() | goTabs);
        Grid->Columns()->Items(4)->SetStringCol(true);
        Grid->SetRowCount(4);
        for (int R = 1; R < 4; ++R)
            for (int C = Grid->FixedCols(); C < 4; ++C)
                Grid->SetDValues(C, R, R * 10);
    }
    void SetUp() override { ASSERT_TRUE(qxnum::test::Activate(Form, Grid)); }
};

TEST_P(TabsTypingTest, EveryColumnOfARowKeepsWhatWasTypedIntoIt) {
    const Commit How = GetParam().How;
    const int R = 2;
    for (int C = Grid->FixedCols(); C < Grid->ColCount(); ++C) {
        if (!Grid->hasFocus()) Grid->setFocus();
        Grid->SetRow(R);
        Grid->SetCol(C);
        ASSERT_EQ(Grid->Col(), C);
        const QStringList Before[] = {Grid->Rows(1), Grid->Rows(2), Grid->Rows(3)};
        // Between the neighbours' 10 and 30, so the time column stays ascending.
        const QString Typed = C == 4 ? QStringLiteral("x%1").arg(C) : QStringLiteral("1%1").arg(C + 2);
        for (QChar Ch : Typed)
            QTest::keyClick(QApplication::focusWidget(), Ch.toLatin1());
        ASSERT_TRUE(Grid->EditorMode()) << C;
        switch (How) {
        case Commit::Enter:
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
            break;
        case Commit::Tab:
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            break;
        case Commit::Escape:
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
            break;
        case Commit::ClickCell:
            QTest::mouseClick(Grid->viewport(), Qt::LeftButton, {}, Grid->CellRect(C, 3).center());
            break;
        case Commit::ClickOther:
            QTest::mouseClick(Other, Qt::LeftButton);
            break;
        }
        EXPECT_FALSE(Grid->EditorMode()) << C;
        for (int Row = 1; Row < 4; ++Row)
            for (int Col = 0; Col < Grid->ColCount(); ++Col) {
                const QString Was = Before[Row - 1].value(Col);
                if (Row != R || Col != C || How == Commit::Escape) {
                    EXPECT_EQ(Grid->Cells(Col, Row).toStdString(), Was.toStdString())
                        << "typed into " << C << ", cell " << Col << "," << Row;
                } else if (C == 4) {
                    EXPECT_EQ(Grid->Cells(Col, Row).toStdString(), Typed.toStdString());
                } else {
                    EXPECT_EQ(Grid->GetCValues(Col, Row), Typed.toDouble()) << "typed into " << C;
                }
            }
        // Where the current cell goes: down, right (wrapping), where clicked, or nowhere.
        const int Cols = Grid->ColCount();
        const std::pair<int, int> Want =
            How == Commit::Enter ? std::pair{C, R + 1}
            : How == Commit::Tab ? (C + 1 < Cols ? std::pair{C + 1, R} : std::pair{Grid->FixedCols(), R + 1})
            : How == Commit::ClickCell ? std::pair{C, 3}
                                       : std::pair{C, R};
        EXPECT_EQ(std::pair(Grid->Col(), Grid->Row()), Want) << "typed into " << C;
    }
    EXPECT_EQ(Dialogs.Count(), 0);
}

const TabsCase TabsCases[] = {{false, Commit::Enter},     {false, Commit::Tab},
                              {false, Commit::ClickCell}, {false, Commit::ClickOther},
                              {false, Commit::Escape},    {true, Commit::Enter},
                              {true, Commit::Tab},        {true, Commit::ClickCell},
                              {true, Commit::ClickOther}, {true, Commit::Escape}};

std::string TabsCaseName(const ::testing::TestParamInfo<TabsCase>& Info) {
    const char* How[] = {"Enter", "Tab", "ClickCell", "ClickOther", "Escape"};
    return std::string(Info.param.Series ? "Series" : "Grid") + How[static_cast<int>(Info.param.How)];
}

INSTANTIATE_TEST_SUITE_P(GridsAndCommits, TabsTypingTest, ::testing::ValuesIn(TabsCases), TabsCaseName);

} // namespace

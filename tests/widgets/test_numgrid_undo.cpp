// The grid's undo history: every kind of step undoes and redoes exactly, a paste is one step, and
// reads and restorations clear the history.
#include <qxnum/widgets/numgrid.h>
#include <qxnum/widgets/numgridnav.h>
#include <qxnum/xml.h>

#include "dialogrecorder.h"
#include "fieldtest.h"
#include "settingsguard.h"
#include "widgettest.h"

#include <QApplication>
#include <QClipboard>
#include <QLineEdit>
#include <QTest>
#include <QUndoStack>
#include <QWidget>
#include <gtest/gtest.h>

using namespace qxnum;
using qxnum::test::DialogRecorder;
using qxnum::test::SettingsGuard;

namespace {

struct State {
    std::vector<QStringList> Rows;
    int Col = 0, Row = 0;
    bool operator==(const State&) const = default;
};

std::ostream& operator<<(std::ostream& Os, const State& S) {
    Os << S.Rows.size() << " rows, cell " << S.Col << "," << S.Row << ":";
    for (const QStringList& R : S.Rows)
        Os << " [" << R.join(QLatin1Char('|')).toStdString() << "]";
    return Os;
}

struct UndoTest : ::testing::Test {
    SettingsGuard Guard{TFormatSettings::Invariant(), TFormatSettings::Invariant()};
    DialogRecorder Dialogs;
    QWidget Form;
    TNumGrid* Grid = nullptr;
    TNumGridNavigator* Nav = nullptr;
    int Events = 0;
    UndoTest() {
        Form.setObjectName(QStringLiteral("CaseForm"));
        Grid = new TNumGrid(&Form);
        Grid->setGeometry(0, 0, 400, 300);
        Nav = new TNumGridNavigator(&Form);
        Nav->SetNumGrid(Grid);
        Nav->setGeometry(0, 310, 300, 25);
        Grid->SetColCount(4);
        Grid->SetRowCount(5);
        for (int R = 1; R < 5; ++R)
            for (int C = 1; C < 4; ++C)
                Grid->SetDValues(C, R, R * 10 + C);
    }
    void SetUp() override { ASSERT_TRUE(qxnum::test::Activate(Form, Grid)); }
    State Now() const {
        State S;
        for (int R = 0; R < Grid->RowCount(); ++R)
            S.Rows.push_back(Grid->Rows(R));
        S.Col = Grid->Col();
        S.Row = Grid->Row();
        return S;
    }
    // Keys to whatever has the focus: the first opens the editor, the rest go to it.
    static void Type(const QString& Text) {
        for (QChar C : Text)
            QTest::keyClick(QApplication::focusWidget(), C.toLatin1());
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    }
    void Count() {
        Grid->SetOnCellChange([this](QObject*, int, int, int, int) { ++Events; });
        Grid->SetOnCellTxtChange([this](QObject*, int, int, const QString&) { ++Events; });
    }
};

TEST_F(UndoTest, EachKindOfStepUndoesAndRedoesExactly) {
    struct Case {
        const char* Name;
        std::function<void()> Prepare, Step;
    };
    const auto Nothing = [] {};
    const std::vector<Case> Cases = {
        {"a cell edited in the editor",
         [&] {
             Grid->SetCol(2);
             Grid->SetRow(3);
         },
         [&] { Type(QStringLiteral("77")); }},
        {"a check box toggled",
         [&] {
             Grid->Columns()->Items(3)->SetCheckBoxCol(true);
             Grid->SetCol(3);
             Grid->SetRow(2);
         },
         [&] { QTest::keyClick(Grid, Qt::Key_Space); }},
        {"a row appended by Down on the last row",
         [&] {
             Grid->SetAutoAddRow(true);
             Grid->SetRow(4);
         },
         [&] { QTest::keyClick(Grid, Qt::Key_Down); }},
        {"a paste that adds rows",
         [&] {
             Grid->SetRow(3);
             QGuiApplication::clipboard()->setText(QStringLiteral("1\t2\r\n3\t4\r\n5\t6\r\n7\r\n"));
         },
         [&] {
             Dialogs.Script({mrNo});
             QTest::keyClick(Grid, Qt::Key_V, Qt::ControlModifier);
         }},
        {"a row inserted by the navigator", [&] { Grid->SetRow(2); }, [&] { Nav->BtnClick(ngbInsert); }},
        {"a row copied by the navigator",
         [&] {
             Grid->SetInsertCopyRow(true);
             Grid->SetRow(3);
         },
         [&] { Nav->BtnClick(ngbInsert); }},
        {"a row appended by the navigator", Nothing, [&] { Nav->BtnClick(ngbAdd); }},
        {"a row deleted by the navigator", [&] { Grid->SetRow(2); }, [&] { Nav->BtnClick(ngbDelete); }},
        {"the last data row cleared by delete",
         [&] {
             Grid->SetClearLastDelRow(true);
             Grid->SetRowCount(2);
             Grid->SetDValues(1, 1, 5);
         },
         [&] { Nav->BtnClick(ngbDelete); }},
        {"the table cleared by the navigator", Nothing,
         [&] {
             Dialogs.Script({mrYes});
             Nav->BtnClick(ngbCancel);
         }},
    };
    for (const Case& C : Cases) {
        SCOPED_TRACE(C.Name);
        Grid->SetRowCount(5);
        for (int R = 1; R < 5; ++R)
            for (int Col = 1; Col < 4; ++Col)
                Grid->SetDValues(Col, R, R * 10 + Col);
        Grid->SetCol(1);
        Grid->SetRow(1);
        C.Prepare();
        Grid->UndoStack()->clear();
        const State Before = Now();
        C.Step();
        const State After = Now();
        ASSERT_NE(After.Rows, Before.Rows) << "the step changed nothing";
        EXPECT_EQ(Grid->UndoStack()->count(), 1) << "one step";
        Count();
        Events = 0;
        QTest::keyClick(Grid, Qt::Key_Z, Qt::ControlModifier);
        EXPECT_EQ(Now(), Before);
        QTest::keyClick(Grid, Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
        EXPECT_EQ(Now(), After);
        Grid->UndoStack()->undo();
        QTest::keyClick(Grid, Qt::Key_Y, Qt::ControlModifier);
        EXPECT_EQ(Now(), After);
        EXPECT_EQ(Events, 0) << "undo and redo fire none of the grid's events";
        Grid->SetOnCellChange({});
        Grid->SetOnCellTxtChange({});
        Grid->Columns()->Items(3)->SetCheckBoxCol(false);
        Grid->SetInsertCopyRow(false);
        Grid->SetAutoAddRow(false);
        Grid->SetClearLastDelRow(false);
    }
}

TEST_F(UndoTest, UndoBackToTheCopyMeansUnchanged) {
    Grid->SetCopyValue();
    Grid->SetCol(1);
    Grid->SetRow(1);
    Type(QStringLiteral("5"));
    EXPECT_TRUE(Grid->HasChanged());
    Grid->UndoStack()->undo();
    EXPECT_FALSE(Grid->HasChanged());
    Grid->UndoStack()->redo();
    EXPECT_TRUE(Grid->HasChanged());
}

TEST_F(UndoTest, ReadsRestorationsAndShapeChangesByProgramClearTheHistory) {
    int Typed = 0;
    auto Edit = [&] {
        Grid->SetCol(1);
        Grid->SetRow(1);
        Type(QString::number(++Typed));
        ASSERT_GT(Grid->UndoStack()->count(), 0);
    };
    TXmlDocument Doc;
    TXmlNode Root = Doc.CreateRoot(QStringLiteral("Case"));
    Grid->WriteToXML(Root);

    Edit();
    Grid->ReadFromXML(Root);
    EXPECT_EQ(Grid->UndoStack()->count(), 0) << "read from XML";

    Grid->SetCopyValue();
    Edit();
    Grid->RestoreCopyValue();
    EXPECT_EQ(Grid->UndoStack()->count(), 0) << "RestoreCopyValue";

    Edit();
    Grid->SetRowCount(9);
    EXPECT_EQ(Grid->UndoStack()->count(), 0) << "rows set by program";

    Edit();
    Grid->InsertRow(2);
    EXPECT_EQ(Grid->UndoStack()->count(), 0) << "a row inserted by program";

    Edit();
    Grid->SetCells(2, 2, QStringLiteral("8"));
    EXPECT_EQ(Grid->UndoStack()->count(), 1) << "cells set by program are not recorded and keep the history";
}

TEST_F(UndoTest, AnUndoneUnfinishedEditLeavesNoStaleCheck) {
    // Undo while the editor is open: the editor's own undo (Ctrl+Z goes to the line edit).
    Grid->SetCol(1);
    Grid->SetRow(1);
    const QString Old = Grid->Cells(1, 1);
    QTest::keyClick(Grid, '1');
    QTest::keyClick(QApplication::focusWidget(), '2');
    auto* Editor = qobject_cast<QLineEdit*>(QApplication::focusWidget());
    ASSERT_NE(Editor, nullptr);
    QTest::keyClick(Editor, Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(Grid->UndoStack()->count(), 0) << "nothing committed yet";
    QTest::keyClick(Editor, Qt::Key_Escape);
    EXPECT_EQ(Grid->Cells(1, 1), Old);
}

} // namespace

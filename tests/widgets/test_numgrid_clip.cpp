// The grid's clipboard: the paste scanner, its question and limits, copy, and the text table.
#include <qxnum/units.h>
#include <qxnum/widgets/numgrid.h>

#include "dialogrecorder.h"
#include "fieldtest.h"
#include "settingsguard.h"
#include "widgettest.h"

#include <QApplication>
#include <QClipboard>
#include <QElapsedTimer>
#include <QMenu>
#include <QMimeData>
#include <QTest>
#include <QTextDocument>
#include <QTextTable>
#include <QTimer>
#include <QUndoStack>
#include <QWidget>
#include <gtest/gtest.h>

#include <optional>

using namespace qxnum;
using qxnum::test::DialogRecorder;
using qxnum::test::SettingsGuard;

namespace {

struct PasteTest : ::testing::Test {
    SettingsGuard Guard{TFormatSettings::Invariant(), TFormatSettings::Invariant()};
    DialogRecorder Dialogs;
    QWidget Form;
    TNumGrid* Grid = nullptr;
    std::optional<std::array<int, 4>> AfterPaste;
    PasteTest() {
        Form.setObjectName(QStringLiteral("CaseForm"));
        Grid = new TNumGrid(&Form);
        Grid->setObjectName(QStringLiteral("Table"));
        Grid->SetAfterPaste([this](QObject* Sender, int ACol, int ARow, int OldCol, int OldRow) {
            EXPECT_EQ(Sender, Grid);
            AfterPaste = std::array<int, 4>{ACol, ARow, OldCol, OldRow};
        });
    }
    void Paste(const QString& Text, int Answer) {
        QGuiApplication::clipboard()->setText(Text);
        Dialogs.Script({Answer});
        Grid->PasteFromClipboard();
    }
};

struct ScanCase {
    const char* Name;
    const char* Text;
    int Answer;
    int StartRows; // RowCount before the paste
    std::vector<std::tuple<int, int, const char*>> Cells;
    std::array<int, 2> After; // AfterPaste ACol, ARow
    int RowsAfter;
};

TEST_F(PasteTest, ScannerPlacesFieldsAsTheRulesSay) {
    const std::vector<ScanCase> Cases = {
        {"tab and CR LF, No",
         "1\t2\r\n3\t4\r\n",
         mrNo,
         2,
         {{1, 1, "1"}, {2, 1, "2"}, {1, 2, "3"}, {2, 2, "4"}},
         {2, 2},
         3},
        {"tab and CR LF, Yes drops the first line on the title row",
         "1\t2\r\n3\t4\r\n",
         mrYes,
         3,
         {{1, 1, "3"}, {2, 1, "4"}, {1, 2, "9"}},
         {2, 1},
         3},
        // The scan ends at the last field, before the line end after it: ARow is one less.
        {"LF alone ends a line too", "1\n2\n", mrNo, 3, {{1, 1, "1"}, {1, 2, "2"}}, {1, 1}, 3},
        {"two blanks align, they open one column",
         "1  2\r\n",
         mrNo,
         2,
         {{1, 1, "1"}, {2, 1, "2"}},
         {2, 1},
         2},
        {"a blank after a TAB counts nothing", "1\t 2\r\n", mrNo, 2, {{1, 1, "1"}, {2, 1, "2"}}, {2, 1}, 2},
        {"two semicolons leave a column untouched",
         "1;;2\r\n",
         mrNo,
         2,
         {{1, 1, "1"}, {2, 1, "9"}, {3, 1, "2"}},
         {3, 1},
         2},
        {"a last field without a line end loses its last character", "12", mrNo, 2, {{1, 1, "1"}}, {1, 0}, 2},
        {"with a line end it is whole", "12\r\n", mrNo, 2, {{1, 1, "12"}}, {1, 1}, 2},
        {"a one-character last field is kept", "7", mrNo, 2, {{1, 1, "7"}}, {1, 0}, 2},
        {"an empty field leaves a numeric cell as it was",
         "5\t\t",
         mrNo,
         2,
         {{1, 1, "5"}, {3, 1, "9"}},
         {3, 0},
         2},
    };
    for (const ScanCase& C : Cases) {
        SCOPED_TRACE(C.Name);
        Grid->SetRowCount(C.StartRows);
        for (int R = 1; R < Grid->RowCount(); ++R)
            for (int Col = 1; Col < Grid->ColCount(); ++Col)
                Grid->SetCells(Col, R, QStringLiteral("9"));
        Grid->SetCol(1);
        Grid->SetRow(1);
        AfterPaste.reset();
        Dialogs.Clear();
        Paste(QString::fromLatin1(C.Text), C.Answer);
        for (const auto& [Col, Row, Text] : C.Cells)
            EXPECT_EQ(Grid->Cells(Col, Row), QString::fromLatin1(Text)) << "cell " << Col << "," << Row;
        ASSERT_TRUE(AfterPaste.has_value());
        EXPECT_EQ((*AfterPaste)[0], C.After[0]);
        EXPECT_EQ((*AfterPaste)[1], C.After[1]);
        EXPECT_EQ((*AfterPaste)[2], 1);
        EXPECT_EQ((*AfterPaste)[3], 1);
        EXPECT_EQ(Grid->RowCount(), C.RowsAfter);
        ASSERT_EQ(Dialogs.Count(), 1);
        EXPECT_EQ(Dialogs.Dialogs()[0].Msg,
                  QStringLiteral("Paste from upper left cell? (Yes)\r\n(No = from selected cell)"));
        EXPECT_EQ(Dialogs.Dialogs()[0].DlgType, mtConfirmation);
        EXPECT_EQ(Dialogs.Dialogs()[0].Buttons, mbYesNoCancel);
        EXPECT_FALSE(Grid->PastingOrCopying());
    }
}

TEST_F(PasteTest, StringReadOnlyAndLeftColumnRules) {
    Grid->Columns()->Items(0)->SetStringCol(true);
    Grid->Columns()->Items(2)->SetStringCol(true);
    Grid->Columns()->Items(3)->SetReadOnly(true);
    Grid->SetCells(3, 4, QStringLiteral("77"));
    Grid->SetAlwaysPasteFromLeftCol(true);
    std::vector<bool> DialogAllowed;
    Grid->SetOnNewRow([&](QObject*, int) { DialogAllowed.push_back(Grid->AllowDataDialog()); });
    Grid->SetCol(2);
    Grid->SetRow(4);
    // No with AlwaysPasteFromLeftCol starts in column 0 of the selected row.
    Paste(QStringLiteral("a;1.5;txt;4\r\nb\r\n"), mrNo);
    EXPECT_EQ(Dialogs.Dialogs()[0].Msg,
              QStringLiteral("Paste from upper row? (Yes)\r\n(No = from selected row)"));
    EXPECT_EQ(Grid->Rows(4), (QStringList{"a", "1.5", "txt", "77", "0"}));
    EXPECT_EQ(Grid->Cells(0, 5), QStringLiteral("b"));
    EXPECT_EQ(DialogAllowed, std::vector<bool>{false}) << "no data dialog for the rows a paste adds";
    EXPECT_TRUE(Grid->AllowDataDialog()) << "and the flag is back afterwards";
}

TEST_F(PasteTest, ErrorsEndThePasteWithTheirMessageAndNoAfterPaste) {
    Grid->SetCol(1);
    Grid->SetRow(1);
    // Columns 1..4 take four fields; the fifth has no column.
    Paste(QStringLiteral("1\t2\t3\t4\t5\r\n6\r\n"), mrNo);
    EXPECT_EQ(Dialogs.Messages().last(),
              QStringLiteral("Error encountered pasting string \"5\" into grid at col 5, row 1"));
    EXPECT_EQ(Dialogs.Dialogs().back().DlgType, mtError);
    EXPECT_EQ(Grid->Cells(4, 1), QStringLiteral("4")) << "cells written before the error stay";
    EXPECT_EQ(Grid->Cells(1, 2), QStringLiteral("0")) << "the paste stopped at the error";
    EXPECT_FALSE(AfterPaste.has_value());

    Dialogs.Clear();
    Paste(QStringLiteral("1\tabc\r\n"), mrNo);
    EXPECT_EQ(Dialogs.Messages().last(),
              QStringLiteral("Error encountered pasting string \"abc\" into grid at col 2, row 1"));
    EXPECT_FALSE(AfterPaste.has_value());
}

TEST_F(PasteTest, CancelAndAnEmptyClipboardChangeNothing) {
    Grid->SetCells(1, 1, QStringLiteral("3"));
    Paste(QStringLiteral("1\t2\r\n"), mrCancel);
    EXPECT_EQ(Grid->Cells(1, 1), QStringLiteral("3"));
    EXPECT_FALSE(AfterPaste.has_value());
    EXPECT_FALSE(Grid->DialogCancelled());
    EXPECT_TRUE(Grid->toolTip().isEmpty()) << "the stop hint is taken away";
    EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);

    QGuiApplication::clipboard()->clear();
    Dialogs.Clear();
    Grid->PasteFromClipboard();
    EXPECT_EQ(Dialogs.Count(), 0) << "no text, no question";
    EXPECT_FALSE(AfterPaste.has_value());
}

TEST_F(PasteTest, RowLimitStopsAtRow10001WithTheWarning) {
    Grid->SetColCount(2);
    Grid->SetRowCount(2);
    QString Text;
    for (int I = 0; I < 10005; ++I)
        Text += QStringLiteral("%1\r\n").arg(I + 1);
    Grid->SetCol(1);
    Grid->SetRow(1);
    Paste(Text, mrNo);
    EXPECT_EQ(Dialogs.Messages().last(), QStringLiteral("Maximum of 10000 rows in numgrid encountered"));
    EXPECT_EQ(Dialogs.Dialogs().back().DlgType, mtWarning);
    EXPECT_EQ(Grid->RowCount(), 10002);
    EXPECT_EQ(Grid->Cells(1, 10001), QStringLiteral("10001"));
    ASSERT_TRUE(AfterPaste.has_value());
    EXPECT_EQ((*AfterPaste)[1], 10000);
}

TEST_F(PasteTest, ParTypeColumnTakesTheDisplayedUnits) {
    TNumColumn* P = Grid->Columns()->Items(1);
    P->SetParType(ptPress);
    P->SetUnitSystem(usImperial);
    Grid->SetCol(1);
    Grid->SetRow(1);
    Paste(QStringLiteral("14.5\r\n"), mrNo);
    EXPECT_NEAR(static_cast<double>(Grid->GetDValues(1, 1)), 14.5 * ParScaleOf(ptPress, usImperial), 1e-6);
    EXPECT_NEAR(static_cast<double>(Grid->GetCValues(1, 1)), 14.5, 1e-9) << "shown as typed";
}

TEST_F(PasteTest, InTheEditorANumberIsTakenAndTextIsUndoneWithABeep) {
    ASSERT_TRUE(qxnum::test::Activate(Form, Grid));
    Grid->SetCol(1);
    Grid->SetRow(2);
    Grid->ShowEditor();
    ASSERT_TRUE(Grid->EditorMode());
    auto* Editor = qobject_cast<QLineEdit*>(QApplication::focusWidget());
    ASSERT_NE(Editor, nullptr);
    Editor->clear();
    QGuiApplication::clipboard()->setText(QStringLiteral("12.5"));
    QTest::keyClick(Editor, Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(Editor->text(), QStringLiteral("12.5"));
    ASSERT_TRUE(AfterPaste.has_value());
    EXPECT_EQ(*AfterPaste, (std::array<int, 4>{1, 1, 1, 2})) << "ARow is Row - 1, as it always was";
    QGuiApplication::clipboard()->setText(QStringLiteral("abc"));
    Grid->PasteFromClipboard();
    EXPECT_EQ(Editor->text(), QStringLiteral("12.5")) << "the paste is taken back";
    EXPECT_EQ(Dialogs.Count(), 0) << "silently, apart from the beep";
}

TEST_F(PasteTest, KeysPasteAndCopyAndAllowPasteGatesThePaste) {
    ASSERT_TRUE(qxnum::test::Activate(Form, Grid));
    Grid->SetCol(1);
    Grid->SetRow(1);
    QGuiApplication::clipboard()->setText(QStringLiteral("4\r\n"));
    Grid->SetAllowPaste(false);
    QTest::keyClick(Grid, Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(Dialogs.Count(), 0);
    Grid->SetAllowPaste(true);
    Dialogs.Script({mrNo});
    QTest::keyClick(Grid, Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(Grid->Cells(1, 1), QStringLiteral("4"));
    QGuiApplication::clipboard()->clear();
    QTest::keyClick(Grid, Qt::Key_C, Qt::ControlModifier);
    EXPECT_TRUE(QGuiApplication::clipboard()->text().contains(QStringLiteral("4\t")));
}

TEST_F(PasteTest, CopyThenPasteWithYesGivesTheSameDataAndTheHtmlIsTheTable) {
    Grid->SetColCount(4);
    Grid->SetRowCount(4);
    for (int R = 1; R < 4; ++R)
        for (int C = 1; C < 4; ++C)
            Grid->SetDValues(C, R, R * 10 + C + 0.5L);
    ASSERT_TRUE(Grid->CopyToClipboard());
    const QMimeData* Mime = QGuiApplication::clipboard()->mimeData();
    ASSERT_TRUE(Mime->hasHtml());
    QTextDocument Doc;
    Doc.setHtml(Mime->html());
    QTextTable* Table = nullptr;
    for (QTextBlock B = Doc.begin(); B.isValid() && !Table; B = B.next())
        Table = QTextCursor(B).currentTable();
    ASSERT_NE(Table, nullptr);
    EXPECT_EQ(Table->rows(), 4);
    EXPECT_EQ(Table->columns(), 3);
    EXPECT_EQ(Table->cellAt(2, 1).firstCursorPosition().block().text(), Grid->Cells(2, 2));

    TNumGrid Copy(&Form);
    Copy.SetColCount(4);
    Copy.SetRowCount(2);
    Dialogs.Script({mrYes});
    Copy.PasteFromClipboard();
    ASSERT_EQ(Copy.RowCount(), 4);
    for (int R = 1; R < 4; ++R)
        EXPECT_EQ(Copy.Rows(R).mid(1), Grid->Rows(R).mid(1)) << "row " << R;
    EXPECT_EQ(Copy.Cells(1, 0), Grid->Cells(1, 0)) << "the titles stay";
}

TEST_F(PasteTest, ACopyRefusesWhileEditing) {
    ASSERT_TRUE(qxnum::test::Activate(Form, Grid));
    Grid->ShowEditor();
    QGuiApplication::clipboard()->setText(QStringLiteral("before"));
    EXPECT_FALSE(Grid->CopyToClipboard());
    EXPECT_EQ(QGuiApplication::clipboard()->text(), QStringLiteral("before"));
}

TEST_F(PasteTest, AClickStopsALongPasteAndKeepsWhatWasWritten) {
    Grid->SetColCount(11);
    Grid->SetRowCount(2);
    QString Text;
    for (int R = 0; R < 10000; ++R) {
        for (int C = 0; C < 10; ++C)
            Text += QStringLiteral("%1%2").arg(R * 10 + C).arg(C < 9 ? QLatin1Char('\t') : QLatin1Char('\r'));
        Text += QLatin1Char('\n');
    }
    QElapsedTimer Clicked;
    qint64 Latency = -1;
    Grid->SetOnNewRow([&](QObject*, int ARow) {
        if (ARow != 2000) return;
        // The click arrives through the event loop, as a user's would.
        QTimer::singleShot(0, Grid, [&] {
            Clicked.start();
            QTest::mouseClick(Grid->viewport(), Qt::LeftButton, {}, QPoint(5, 5));
        });
    });
    Grid->SetAfterPaste([&](QObject*, int, int ARow, int, int) {
        Latency = Clicked.isValid() ? Clicked.elapsed() : -1;
        AfterPaste = std::array<int, 4>{0, ARow, 0, 0};
    });
    Grid->SetCol(1);
    Grid->SetRow(1);
    Paste(Text, mrNo);
    ASSERT_TRUE(AfterPaste.has_value());
    EXPECT_GE(Grid->RowCount(), 2001);
    EXPECT_LT(Grid->RowCount(), 10001) << "stopped";
    EXPECT_GE(Latency, 0);
    EXPECT_LT(Latency, 50) << "ms from the click to the end of the paste";
    EXPECT_EQ(Grid->Cells(10, 1999), QStringLiteral("19989"));
    EXPECT_FALSE(Grid->PastingOrCopying());
}

TEST_F(PasteTest, TheContextMenuOffersUndoRedoCopyAndPaste) {
    QGuiApplication::clipboard()->clear();
    std::unique_ptr<QMenu> Menu(Grid->createStandardContextMenu());
    QList<QAction*> Actions;
    for (QAction* A : Menu->actions())
        if (!A->isSeparator()) Actions << A;
    ASSERT_EQ(Actions.size(), 6) << "and Insert row, Delete row";
    EXPECT_FALSE(Actions[0]->isEnabled()) << "nothing to undo";
    EXPECT_FALSE(Actions[1]->isEnabled());
    EXPECT_FALSE(Actions[3]->isEnabled()) << "nothing to paste";
    Actions[2]->trigger();
    EXPECT_TRUE(QGuiApplication::clipboard()->text().startsWith(
        Grid->Cells(1, 0).split(QStringLiteral("\r\n")).first()));

    Grid->SetCol(1);
    Grid->SetRow(1);
    Paste(QStringLiteral("5\r\n"), mrNo);
    Menu.reset(Grid->createStandardContextMenu());
    EXPECT_TRUE(Menu->actions()[0]->isEnabled());
    EXPECT_EQ(Menu->actions()[0]->text(), QStringLiteral("&Undo Paste"));
    Menu->actions()[0]->trigger();
    EXPECT_EQ(Grid->Cells(1, 1), QStringLiteral("0"));
    Grid->SetAllowPaste(false);
    Menu.reset(Grid->createStandardContextMenu());
    EXPECT_FALSE(Menu->actions()[4]->isEnabled()) << "AllowPaste gates the menu too";
}

// ---- keys and menu on the selection, as in every spreadsheet (deliberate deviation 9) -----------

struct SelectionTest : PasteTest {
    SelectionTest() {
        Grid->resize(420, 200);
        Grid->SetRowCount(4);
        for (int R = 1; R < 4; ++R)
            for (int C = 0; C < 5; ++C)
                Grid->SetCells(C, R, QString::number(R * 10 + C));
    }
    void SetUp() override { ASSERT_TRUE(qxnum::test::Activate(Form, Grid)); }
    // From cell A, a shift-click on cell B.
    void Select(QPoint A, QPoint B) {
        Grid->SetCol(A.x());
        Grid->SetRow(A.y());
        if (A != B)
            QTest::mouseClick(Grid->viewport(), Qt::LeftButton, Qt::ShiftModifier,
                              Grid->CellRect(B.x(), B.y()).center());
        ASSERT_EQ(QPoint(Grid->Col(), Grid->Row()), B);
    }
};

TEST_F(SelectionTest, CtrlCCopiesASelectionOfMoreThanOneCellAndElseTheWholeTable) {
    struct {
        const char* Name;
        QPoint From, To;
        bool RowSelect;
        const char* Text; // nullptr: the whole table, title row first
    } const Cases[] = {
        {"one cell", {2, 2}, {2, 2}, false, nullptr},
        {"a block", {1, 1}, {2, 2}, false, "11\t12\r\n21\t22\r\n"},
        {"a block selected upwards", {3, 3}, {2, 2}, false, "22\t23\r\n32\t33\r\n"},
        {"one column", {4, 1}, {4, 3}, false, "14\r\n24\r\n34\r\n"},
        {"whole rows", {3, 2}, {3, 3}, true, "21\t22\t23\t24\r\n31\t32\t33\t34\r\n"},
    };
    for (const auto& C : Cases) {
        SCOPED_TRACE(C.Name);
        Grid->SetOptions(C.RowSelect ? Grid->Options() | goRowSelect
                                     : Grid->Options() & ~TGridOptions(goRowSelect));
        Select(C.From, C.To);
        QGuiApplication::clipboard()->clear();
        QTest::keyClick(Grid, Qt::Key_C, Qt::ControlModifier);
        const QString Got = QGuiApplication::clipboard()->text();
        if (C.Text) {
            EXPECT_EQ(Got.toStdString(), C.Text);
        } else {
            EXPECT_EQ(Got.count(QStringLiteral("\r\n")), 4) << "every row, the title row included";
            EXPECT_TRUE(Got.startsWith(Grid->Cells(1, 0).split(QStringLiteral("\r\n")).first()));
        }
        std::unique_ptr<QMenu> Menu(Grid->createStandardContextMenu());
        EXPECT_EQ(Menu->actions()[3]->text(),
                  C.Text ? QStringLiteral("&Copy selection") : QStringLiteral("&Copy table"))
            << "the menu copies what Ctrl+C copies";
    }
}

TEST_F(SelectionTest, DeleteAndBackspaceClearTheSelectedEditableCellsAsOneUndoStep) {
    Grid->Columns()->Items(2)->SetReadOnly(true);
    Grid->Columns()->Items(3)->SetCheckBoxCol(true);
    Grid->Columns()->Items(4)->SetStringCol(true);
    for (const Qt::Key Key : {Qt::Key_Delete, Qt::Key_Backspace}) {
        SCOPED_TRACE(QKeySequence(Key).toString().toStdString());
        for (int R = 1; R < 4; ++R)
            Grid->SetCheckedStatus(3, R, true);
        const QStringList Before[] = {Grid->Rows(0), Grid->Rows(1), Grid->Rows(2), Grid->Rows(3)};
        Grid->UndoStack()->clear();
        Select({1, 1}, {4, 2});
        QTest::keyClick(Grid, Key);
        for (int R = 0; R < 4; ++R)
            for (int C = 0; C < 5; ++C) {
                const bool Cleared = R >= 1 && R <= 2 && C != 0 && C != 2;
                const QString Want = !Cleared ? Before[R][C] : C == 3 ? QStringLiteral("FALSE") : QString();
                EXPECT_EQ(Grid->Cells(C, R), Want) << C << "," << R;
            }
        EXPECT_EQ(Grid->UndoStack()->count(), 1);
        QTest::keyClick(Grid, Qt::Key_Z, Qt::ControlModifier);
        for (int R = 0; R < 4; ++R)
            EXPECT_EQ(Grid->Rows(R), Before[R]) << "undone, row " << R;
        // One cell: just that cell.
        Select({4, 3}, {4, 3});
        QTest::keyClick(Grid, Key);
        EXPECT_EQ(Grid->Cells(4, 3), QString());
        EXPECT_EQ(Grid->Cells(1, 3), Before[3][1]);
        Grid->SetCells(4, 3, Before[3][4]);
    }
    EXPECT_EQ(Dialogs.Count(), 0);
}

TEST_F(SelectionTest, TheContextMenuInsertsAndDeletesRowsThroughTheGrid) {
    const auto Trigger = [this](const char* Text) {
        std::unique_ptr<QMenu> Menu(Grid->createStandardContextMenu());
        for (QAction* A : Menu->actions())
            if (A->text() == QLatin1String(Text)) {
                EXPECT_TRUE(A->isEnabled()) << Text;
                A->trigger();
                return;
            }
        ADD_FAILURE() << Text << " is not in the menu";
    };
    int NewRows = 0;
    Grid->SetOnNewRow([&](QObject*, int ARow) {
        EXPECT_EQ(ARow, 2);
        ++NewRows;
    });
    Grid->SetRow(2);
    Grid->UndoStack()->clear();
    Trigger("&Insert row");
    EXPECT_EQ(NewRows, 1);
    ASSERT_EQ(Grid->RowCount(), 5);
    EXPECT_EQ(Grid->Cells(1, 3), QStringLiteral("21")) << "the rows from 2 on moved down";
    Grid->SetConfirmDelete(true);
    Dialogs.Script({mrCancel});
    Trigger("&Delete row");
    EXPECT_EQ(Dialogs.Messages().last(), QStringLiteral("Delete Row ?"));
    EXPECT_EQ(Grid->RowCount(), 5);
    Dialogs.Script({mrOk});
    Trigger("&Delete row");
    EXPECT_EQ(Grid->RowCount(), 4);
    EXPECT_EQ(Grid->Cells(1, 2), QStringLiteral("21"));
    EXPECT_EQ(Grid->UndoStack()->count(), 2) << "each a step of the history";
    Grid->SetRowCountFixed(true);
    std::unique_ptr<QMenu> Menu(Grid->createStandardContextMenu());
    EXPECT_FALSE(Menu->actions().at(Menu->actions().size() - 1)->isEnabled());
    EXPECT_FALSE(Menu->actions().at(Menu->actions().size() - 2)->isEnabled());
}

TEST(AddToLinesTest, FixedAndTitleWidthsWithSeparators) {
    SettingsGuard Guard{TFormatSettings::Invariant(), TFormatSettings::Invariant()};
    TNumGrid Grid;
    Grid.SetRowCount(3);
    Grid.Columns()->Items(0)->Title()->SetCaption(QStringLiteral("Nr"));
    Grid.Columns()->Items(0)->SetAlignment(taLeftJustify);
    Grid.Columns()->Items(2)->Title()->SetCaption(QStringLiteral("Mass\r\nflow"));
    Grid.Columns()->Items(2)->SetAlignment(taRightJustify);
    Grid.SetCells(0, 1, QStringLiteral("1"));
    Grid.SetCells(2, 1, QStringLiteral("2.5"));
    Grid.SetCells(2, 2, QStringLiteral("123456789012"));
    TColSet Cols;
    Cols.set(0).set(2);

    QStringList Lines(QStringLiteral("existing"));
    Grid.AddToLines(Lines, Cols, QStringLiteral(" "), 10, true);
    ASSERT_EQ(Lines.size(), 4);
    EXPECT_EQ(Lines[0], QStringLiteral("existing"));
    EXPECT_EQ(Lines[1], QStringLiteral("Nr         Mass||flow"));
    EXPECT_EQ(Lines[2], QStringLiteral("1                 2.5"));
    EXPECT_EQ(Lines[3], QStringLiteral("0          123456789012")) << "longer text is kept whole";

    Lines.clear();
    Grid.AddToLines(Lines, Cols, QStringLiteral("|"), 3, false);
    EXPECT_EQ(Lines[0], QStringLiteral("Nr|Mass||flow"));
    EXPECT_EQ(Lines[1], QStringLiteral("1 |2.5")) << "widths follow the titles, at most MaxWidth";
}

} // namespace

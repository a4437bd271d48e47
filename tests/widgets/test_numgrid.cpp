// The grid's columns and cell model: setter coupling, value <-> text, unit switches, rows, checks
// and the change test.
#include <qxnum/widgets/numgrid.h>
#include <qxnum/xml.h>

#include "dialogrecorder.h"
#include "proptest.h"
#include "settingsguard.h"

#include <QMenu>
#include <QMetaProperty>
#include <QWidget>
#include <gtest/gtest.h>

using namespace qxnum;
using qxnum::test::DialogRecorder;
using qxnum::test::SettingsGuard;

namespace {

struct GridTest : ::testing::Test {
    SettingsGuard Guard{TFormatSettings::Invariant(), TFormatSettings::Invariant()};
    DialogRecorder Dialogs;
    QWidget Form;
    TNumGrid* Grid = nullptr;
    GridTest() {
        Form.setObjectName(QStringLiteral("CaseForm"));
        Grid = new TNumGrid(&Form);
        Grid->setObjectName(QStringLiteral("Table"));
    }
    TNumColumn* Col(int C) const { return Grid->Columns()->Items(C); }
};

TEST_F(GridTest, StartsWithTheStringGridDefaultsAndOneColumnPerGridColumn) {
    EXPECT_EQ(Grid->ColCount(), 5);
    EXPECT_EQ(Grid->RowCount(), 5);
    EXPECT_EQ(Grid->FixedCols(), 1);
    EXPECT_EQ(Grid->FixedRows(), 1);
    EXPECT_EQ(Grid->Columns()->Count(), 5);
    EXPECT_TRUE(Grid->Options().testFlag(goEditing));
    EXPECT_EQ(Grid->ColFormats(), QStringList(5, QStringLiteral("###0.000")));
    EXPECT_EQ(Grid->Cells(2, 0), QStringLiteral("Title 2,1\r\nTitle 2,2"));
    EXPECT_EQ(Grid->Cells(2, 3), QStringLiteral("0"));
    Grid->SetColCount(7);
    EXPECT_EQ(Grid->Columns()->Count(), 7);
    EXPECT_EQ(Grid->Cells(6, 0), QStringLiteral("Title 6,1\r\nTitle 6,2"));
    Grid->SetColCount(2);
    EXPECT_EQ(Grid->Columns()->Count(), 2);
    EXPECT_EQ(Grid->Columns()->Items(1)->Index(), 1);
}

TEST_F(GridTest, CoupledColumnPropertiesCorrectEachOther) {
    TNumColumn* C = Col(1);
    C->SetParType(ptPress);
    EXPECT_EQ(C->NumericType(), ntParType);
    EXPECT_EQ(C->DataType(), dtExtended);
    C->SetDataType(dtInteger);
    EXPECT_EQ(C->ParType(), ptNone);
    EXPECT_EQ(C->NumericType(), ntGeneral);
    EXPECT_EQ(C->Decimals(), 0);
    C->SetDecimals(3);
    EXPECT_EQ(C->Decimals(), 0) << "an integer column keeps no decimals";
    C->SetDataType(dtWord);
    C->SetNumericType(ntFixed);
    EXPECT_EQ(C->NumericType(), ntGeneral);
    C->SetDataType(dtDouble);
    C->SetNumericType(ntFixed);
    EXPECT_EQ(C->NumericType(), ntFixed);
    C->SetParType(ptTemp);
    C->SetNumericType(ntExponent);
    EXPECT_EQ(C->ParType(), ptNone) << "only ntParType keeps a parameter type";
}

TEST_F(GridTest, LimitsAndScalesYieldOrAreIgnored) {
    TNumColumn* C = Col(1);
    C->SetMin(10);
    EXPECT_EQ(C->Min(), 0) << "a minimum above the maximum yields";
    C->SetMax(20);
    C->SetMin(10);
    C->SetMax(5);
    EXPECT_EQ(C->Max(), 10);
    C->SetMin(20);
    EXPECT_EQ(C->Min(), 10);
    C->SetRange(3, 1);
    EXPECT_EQ(C->Min(), 3);
    EXPECT_EQ(C->Max(), 3);
    C->SetCustomScale(1e-15L);
    EXPECT_EQ(C->CustomScale(), 1.0L);
    C->SetCustomScale(-2);
    EXPECT_EQ(C->CustomScale(), -2.0L);
    C->SetWidth(90);
    C->SetWidth(-1);
    EXPECT_EQ(C->Width(), 90);
    EXPECT_EQ(Grid->ColWidths(1), 90);
    C->SetVisible(false);
    EXPECT_EQ(C->Width(), -1);
}

TEST_F(GridTest, DefaultStrTitlesAndCheckBoxFlags) {
    Col(1)->SetDecimals(2);
    Col(1)->SetNumericType(ntFixed);
    Col(1)->SetDefaultStr(QStringLiteral("abc"));
    EXPECT_EQ(Col(1)->DefaultStr(), QStringLiteral("0.00"));
    Col(2)->SetStringCol(true);
    Col(2)->SetDefaultStr(QStringLiteral("abc"));
    EXPECT_EQ(Col(2)->DefaultStr(), QStringLiteral("abc"));
    EXPECT_EQ(Grid->Cells(2, 1), QString()) << "a string column starts empty";

    Col(3)->SetCheckBoxCol(true);
    EXPECT_TRUE(Col(3)->StringCol());
    Col(3)->SetCheckBoxCol(false);
    EXPECT_TRUE(Col(3)->StringCol());

    Grid->SetTitleLineCount(3);
    Grid->SetColCount(6);
    EXPECT_EQ(Col(5)->Title()->Caption(), QStringLiteral("Title 5,1\r\nTitle 5,2\r\nTitle 5,3"));
    Col(1)->SetParType(ptPress);
    Col(1)->Title()->SetCaption(QStringLiteral(" P "));
    // Trimmed as a whole, so the caption's inner blank before the line break stays.
    EXPECT_EQ(Col(1)->TitleString(), QStringLiteral("P \r\n[bar]"));
    EXPECT_EQ(Grid->Cells(1, 0), QStringLiteral("P \r\n[bar]"));
    Col(4)->Title()->SetCaption(QStringLiteral("P"));
    EXPECT_EQ(Col(4)->TitleString(), QStringLiteral("P"));
    Col(4)->SetCustomUnitStr(QStringLiteral("[x]"));
    EXPECT_EQ(Grid->Cells(4, 0), QStringLiteral("P\r\n[x]"));
}

TEST_F(GridTest, TitleStringTrimsCaptionAndUnitTextAsAWhole) {
    struct {
        const char* Caption;
        TParType Par;
        const char* CustomUnit;
        const char* Expected;
    } const Cases[] = {
        {"P", ptPress, "", "P\r\n[bar]"},
        {"", ptPress, "", "[bar]"},
        {"  ", ptPress, "", "[bar]"},
        {"", ptNone, "[x]", "[x]"},
        {"P\r\n", ptNone, "", "P"},
        {"P", ptNone, "", "P"},
        {"", ptNone, "", ""},
        {"Two\r\nlines", ptTemp, "", "Two\r\nlines\r\n[K]"},
    };
    for (const auto& C : Cases) {
        SCOPED_TRACE(C.Caption);
        Col(1)->SetParType(C.Par);
        Col(1)->SetCustomUnitStr(QString::fromUtf8(C.CustomUnit));
        Col(1)->Title()->SetCaption(QString::fromUtf8(C.Caption));
        EXPECT_EQ(Col(1)->TitleString(), QString::fromUtf8(C.Expected));
        EXPECT_EQ(Grid->Cells(1, 0), QString::fromUtf8(C.Expected)) << "the title cell";
    }
}

TEST_F(GridTest, TheFirstUnitSwitchRecordsTheSecondReexpresses) {
    TNumColumn* C = Col(1);
    C->SetParType(ptLength);
    Grid->SetCells(1, 1, QStringLiteral("1"));
    C->SetUnitSystem(usImperial);
    EXPECT_EQ(Grid->Cells(1, 1), QStringLiteral("1")) << "the first setting leaves the texts";
    EXPECT_TRUE(C->UnitSystemSet());
    C->SetUnitSystem(usSI);
    EXPECT_EQ(Grid->Cells(1, 1), C->GetValueString(1, 0.0254L, true));
    EXPECT_NEAR(static_cast<double>(Grid->GetDValues(1, 1)), 0.0254, 1e-6);

    Col(2)->SetStringCol(true);
    Grid->SetCells(2, 1, QStringLiteral("12"));
    Col(2)->SetUnitSystem(usSI);
    Col(2)->SetUnitSystem(usImperial);
    EXPECT_EQ(Grid->Cells(2, 1), QStringLiteral("12")) << "string columns are never rewritten";
}

TEST_F(GridTest, ValuesThroughTheColumnsFormatAndLimits) {
    TNumColumn* C = Col(1);
    C->SetDataType(dtDouble);
    C->SetNumericType(ntFixed);
    C->SetDecimals(2);
    C->SetRange(0, 10);
    Grid->SetCells(1, 2, QStringLiteral("12"));
    EXPECT_TRUE(Grid->CheckCell(1, 2));
    EXPECT_EQ(Grid->Cells(1, 2), QStringLiteral("10.00")) << "clamped and reformatted";
    Grid->SetCValues(1, 3, 2.5L);
    EXPECT_EQ(Grid->Cells(1, 3), QStringLiteral("2.50"));
    EXPECT_EQ(Grid->GetCValues(1, 3), 2.5L);
    Grid->SetIntValues(1, 4, 7);
    EXPECT_EQ(Grid->GetIntValues(1, 4), 7);
    Grid->SetDValues(1, 4, std::numeric_limits<Extended>::quiet_NaN());
    EXPECT_EQ(Grid->Cells(1, 4), QStringLiteral("0.00"));
    Grid->SetCells(1, 4, QStringLiteral("x"));
    EXPECT_EQ(Grid->GetIntValues(1, 4), 0);

    // Hooks see the value and may change the text or the value.
    C->SetOnGetNumtext([](QObject*, int Row, Extended, Extended Scaled, QString& Text) {
        Text = QStringLiteral("%1:%2").arg(Row).arg(static_cast<double>(Scaled));
    });
    EXPECT_EQ(C->GetValueString(3, 4, true), QStringLiteral("3:4"));
    C->SetOnSetNumValue([](QObject*, int, const QString&, Extended& V) { V = V * 2; });
    Extended V = 0;
    C->SetValuefromStr(1, QStringLiteral("4"), V, true);
    EXPECT_EQ(V, 8.0L) << "the hook runs after the clamp";
}

TEST_F(GridTest, ExpressionColumnsEvaluateOutsideUpdates) {
    TNumColumn* C = Col(1);
    C->SetOnExprCheckVariable([](QObject*, const QString& Id, Extended& V, bool& Found) {
        Found = Id == QLatin1String("p1");
        V = 3;
    });
    C->Title()->SetCaption(QStringLiteral("Flow"));
    Extended V = 0;
    C->SetValuefromStr(1, QStringLiteral("2*p1"), V, false);
    EXPECT_EQ(V, 6.0L);
    Grid->BeginUpdate();
    C->SetValuefromStr(1, QStringLiteral("2*p1"), V, false);
    EXPECT_EQ(V, 0.0L) << "no evaluation while the grid updates";
    Grid->EndUpdate();
    try {
        C->SetValuefromStr(1, QStringLiteral("2*q"), V, false);
        ADD_FAILURE() << "an unknown identifier must raise";
    } catch (const EQXParserError& E) {
        EXPECT_TRUE(E.Message().startsWith(QStringLiteral("Table expression in Flow")))
            << E.Message().toStdString();
    }
    EXPECT_TRUE(Grid->CheckCell(1, 1)) << "expression columns are not checked";
}

TEST_F(GridTest, MessagesNameTheCellAndTheForm) {
    Col(2)->SetStringCol(true);
    Extended V = 0;
    EXPECT_FALSE(Grid->GetValueFromCell(2, 1, V, true));
    Grid->SetCells(1, 2, QStringLiteral("abc"));
    EXPECT_FALSE(Grid->GetValueFromCell(1, 2, V, false));
    EXPECT_EQ(Grid->Cells(1, 2), QStringLiteral("abc")) << "the text stays as typed";
    ASSERT_EQ(Dialogs.Count(), 2);
    EXPECT_EQ(Dialogs.Dialogs()[0].Msg, QStringLiteral("Column nr. 2 is String column\r\nin CaseForm"));
    EXPECT_EQ(Dialogs.Dialogs()[1].Msg, QStringLiteral("abc is no valid numeric input.\r\nin CaseForm"));
    EXPECT_EQ(Dialogs.Dialogs()[1].DlgType, mtError);
}

TEST_F(GridTest, CellMessagesGiveTheUnitAfterANumber) {
    // A hook of the host refuses the number 5, so that a number reaches the message.
    struct {
        const char* Name;
        TParType Par;
        const char* CustomUnit;
        const char* Text;
        const char* Message;
    } const Cases[] = {
        {"a pressure", ptPress, "", "5", "5 bar is no valid numeric input.\r\nin CaseForm"},
        {"a unit of the host's", ptNone, "kg/s", "5", "5 kg/s is no valid numeric input.\r\nin CaseForm"},
        {"a ratio, whose unit is none", ptPR, "", "5", "5 is no valid numeric input.\r\nin CaseForm"},
        {"no unit at all", ptNone, "", "5", "5 is no valid numeric input.\r\nin CaseForm"},
        {"text that is no number", ptPress, "", "abc", "abc is no valid numeric input.\r\nin CaseForm"},
    };
    Col(1)->SetOnSetNumValue([](QObject*, int, const QString& Text, Extended&) {
        if (Text == QLatin1String("5")) throw EConvertError(QStringLiteral("refused"));
    });
    for (const auto& C : Cases) {
        SCOPED_TRACE(C.Name);
        Col(1)->SetParType(C.Par);
        Col(1)->SetCustomUnitStr(QString::fromUtf8(C.CustomUnit));
        Grid->SetCells(1, 2, QString::fromUtf8(C.Text));
        Dialogs.Clear();
        Extended V = 0;
        EXPECT_FALSE(Grid->GetValueFromCell(1, 2, V, false));
        ASSERT_EQ(Dialogs.Count(), 1);
        EXPECT_EQ(Dialogs.Messages()[0], QString::fromUtf8(C.Message));
    }
}

TEST(GridOwner, MessagesOfAGridWithoutANamedOwnerEndInIn) {
    SettingsGuard Guard{TFormatSettings::Invariant(), TFormatSettings::Invariant()};
    DialogRecorder Dialogs;
    QWidget Named, Unnamed;
    Named.setObjectName(QStringLiteral("CaseForm"));
    TNumGrid Alone;
    struct {
        const char* Owner;
        TNumGrid* Grid;
        const char* Ending;
    } const Cases[] = {
        {"a named form", new TNumGrid(&Named), "\r\nin CaseForm"},
        {"a form without a name", new TNumGrid(&Unnamed), "\r\nin "},
        {"no form at all", &Alone, "\r\nin "},
    };
    for (const auto& C : Cases) {
        SCOPED_TRACE(C.Owner);
        Dialogs.Clear();
        C.Grid->SetCells(1, 1, QStringLiteral("abc"));
        Extended V = 0;
        EXPECT_FALSE(C.Grid->GetValueFromCell(1, 1, V, false));
        ASSERT_EQ(Dialogs.Count(), 1);
        EXPECT_EQ(Dialogs.Messages()[0],
                  QStringLiteral("abc is no valid numeric input.") + QLatin1String(C.Ending));
    }
}

TEST_F(GridTest, CheckAllCellsStartsAtRowOneAndStopsAtTheFirstFailure) {
    Grid->SetFixedRows(2);
    Col(3)->SetNumericType(ntFixed);
    Col(3)->SetDataType(dtDouble);
    Grid->SetCells(3, 1, QStringLiteral("5"));
    EXPECT_TRUE(Grid->CheckAllCells());
    EXPECT_EQ(Grid->Cells(3, 1), QStringLiteral("5.00")) << "row 1 is checked although it is fixed";
    Grid->SetFixedRows(1);
}

TEST_F(GridTest, CheckBoxTexts) {
    struct {
        const char* Text;
        bool Checked;
    } const Cases[] = {{"yes", true}, {" x ", true}, {"1", true},  {"TRUE", true},   {"Y", true},
                       {"no", false}, {"", false},   {"0", false}, {"false", false}, {"xx", false}};
    for (const auto& C : Cases)
        EXPECT_EQ(TNumGrid::StringCheckedStatus(QLatin1String(C.Text)), C.Checked) << C.Text;
    Col(2)->SetCheckBoxCol(true);
    Grid->SetCells(2, 1, QStringLiteral("yes"));
    Grid->ToggleCheckedStatus(2, 1);
    EXPECT_EQ(Grid->Cells(2, 1), QStringLiteral("FALSE"));
    Grid->ToggleCheckedStatus(2, 1);
    EXPECT_EQ(Grid->Cells(2, 1), QStringLiteral("TRUE"));
    Grid->ToggleCheckedStatus(1, 1);
    EXPECT_EQ(Grid->Cells(1, 1), QStringLiteral("0")) << "only check-box columns toggle";
}

TEST_F(GridTest, InsertAndDeleteRows) {
    std::vector<int> NewRows, Deleted;
    Grid->SetOnNewRow([&](QObject*, int R) { NewRows.push_back(R); });
    Grid->SetAfterDeleteRow([&](QObject*, int R) { Deleted.push_back(R); });
    for (int R = 1; R < 5; ++R)
        Grid->SetCells(1, R, QString::number(R * 10));
    Grid->SetInsertCopyRow(true);
    Grid->InsertRow(1);
    EXPECT_EQ(Grid->RowCount(), 6);
    EXPECT_EQ(Grid->Cells(1, 1), QStringLiteral("0")) << "no data row above: defaults";
    EXPECT_EQ(Grid->Cells(1, 2), QStringLiteral("10"));
    Grid->InsertRow(3);
    EXPECT_EQ(Grid->Cells(1, 3), QStringLiteral("10")) << "a copy of the row above";
    EXPECT_EQ(Grid->Row(), 3);
    EXPECT_EQ(NewRows, (std::vector<int>{1, 3}));

    Grid->DeleteARow(3);
    EXPECT_EQ(Grid->RowCount(), 6);
    EXPECT_EQ(Deleted, std::vector<int>{3});
    Grid->SetRowCountFixed(true);
    Grid->InsertRow(1);
    Grid->DeleteARow(1);
    EXPECT_EQ(Grid->RowCount(), 6);
    Grid->SetRowCountFixed(false);

    Grid->SetRowCount(2);
    Grid->SetCells(1, 1, QStringLiteral("9"));
    Grid->SetCells(0, 1, QStringLiteral("fixed"));
    Grid->DeleteARow(1);
    EXPECT_EQ(Grid->RowCount(), 2) << "the last data row stays";
    EXPECT_EQ(Grid->Cells(1, 1), QStringLiteral("9")) << "and is only cleared with ClearLastDelRow";
    Grid->SetClearLastDelRow(true);
    Grid->DeleteARow(1);
    EXPECT_EQ(Grid->Cells(1, 1), QString());
    EXPECT_EQ(Grid->Cells(0, 1), QStringLiteral("fixed"));
    EXPECT_EQ(Deleted.size(), 1u) << "no AfterDeleteRow for the last row";

    Grid->SetRowCount(4);
    Grid->SetConfirmDelete(true);
    Dialogs.Script({mrCancel});
    Grid->DeleteARow(2);
    EXPECT_EQ(Grid->RowCount(), 4);
    ASSERT_EQ(Dialogs.Count(), 1);
    EXPECT_EQ(Dialogs.Dialogs()[0].Msg, QStringLiteral("Delete Row ?"));
}

TEST(GridColumns, InsertColKeepsEveryTextAndInitialisesOnlyTheNewLastColumn) {
    SettingsGuard Guard{TFormatSettings::Invariant(), TFormatSettings::Invariant()};
    DialogRecorder Dialogs;
    for (int At : {1, 2, 4, 5}) {
        SCOPED_TRACE(At);
        TNumGrid G;
        // The last column is a text column whose default marks the cells it initialises.
        TNumColumn* Last = G.Columns()->Items(4);
        Last->SetStringCol(true);
        Last->SetDefaultStr(QStringLiteral("tail"));
        for (int C = 0; C < 5; ++C)
            for (int R = 1; R < 5; ++R)
                G.SetCells(C, R, QString::number(C * 10 + R));
        G.InsertCol(At);
        ASSERT_EQ(G.ColCount(), 6);
        ASSERT_EQ(G.Columns()->Count(), 6);
        for (int C = 0; C < 5; ++C)
            for (int R = 1; R < 5; ++R)
                EXPECT_EQ(G.Cells(C, R), QString::number(C * 10 + R)) << C << "," << R;
        EXPECT_EQ(G.Columns()->Items(5) == Last, At < 5) << "the descriptions from At on moved right";
        const QString NewDefault = At < 5 ? QStringLiteral("tail") : QStringLiteral("0");
        for (int R = 1; R < 5; ++R)
            EXPECT_EQ(G.Cells(5, R), NewDefault) << R;
        EXPECT_EQ(G.Cells(At, 0), QStringLiteral("Title %1,1\r\nTitle %1,2").arg(At)) << "the new title";
    }
    EXPECT_EQ(Dialogs.Count(), 0);
}

// Counts the cell checks, the work that each column added used to repeat over the whole grid.
struct CountingGrid : TNumGrid {
    int Checks = 0;
    bool CheckCell(int ACol, int ARow) override {
        ++Checks;
        return TNumGrid::CheckCell(ACol, ARow);
    }
};

TEST(GridColumns, MakingNColumnsChecksEachCellOnce) {
    SettingsGuard Guard{TFormatSettings::Invariant(), TFormatSettings::Invariant()};
    DialogRecorder Dialogs;
    constexpr int N = 1000;
    struct {
        const char* Name;
        std::function<void(TNumGrid&)> Make;
    } const Cases[] = {
        {"SetColCount", [](TNumGrid& G) { G.SetColCount(N); }},
        {"an XML file that holds only a column count",
         [](TNumGrid& G) {
             TXmlDocument Doc;
             Doc.LoadFromString(QStringLiteral("<g><Colcount>%1</Colcount></g>").arg(N));
             G.ReadFromXML(Doc.Root());
         }},
    };
    for (const auto& C : Cases) {
        SCOPED_TRACE(C.Name);
        CountingGrid G;
        C.Make(G);
        ASSERT_EQ(G.ColCount(), N);
        ASSERT_EQ(G.Columns()->Count(), N);
        // The data cells once (four rows), with room for a second pass, not once per column added.
        EXPECT_LE(G.Checks, 2 * N * G.RowCount());
        EXPECT_EQ(G.Columns()->Items(N - 1)->Index(), N - 1);
        EXPECT_EQ(G.Cells(N - 1, 0), QStringLiteral("Title %1,1\r\nTitle %1,2").arg(N - 1));
        EXPECT_EQ(G.Cells(N - 1, 4), QStringLiteral("0"));
    }
    EXPECT_EQ(Dialogs.Count(), 0);
}

TEST_F(GridTest, CopyValueAndTheExactChangeTest) {
    Col(1)->SetNumericType(ntFixed);
    Col(1)->SetDataType(dtDouble);
    Col(1)->SetDecimals(3);
    Grid->SetCells(1, 1, QStringLiteral("1.000"));
    EXPECT_TRUE(Grid->HasChanged()) << "no copy yet";
    Grid->SetCopyValue();
    EXPECT_FALSE(Grid->HasChanged());
    Grid->SetCells(1, 1, QStringLiteral("1.0"));
    EXPECT_TRUE(Grid->HasChanged()) << "texts, not values, are compared";
    Grid->SetRowCount(9);
    Grid->SetColCount(6);
    Grid->SetCells(5, 8, QStringLiteral("x"));
    Grid->RestoreCopyValue();
    EXPECT_EQ(Grid->RowCount(), 5);
    EXPECT_EQ(Grid->ColCount(), 5);
    EXPECT_EQ(Grid->Cells(1, 1), QStringLiteral("1.000"));
    EXPECT_FALSE(Grid->HasChanged());
    Grid->SetCells(1, 2, QStringLiteral("4"));
    Grid->OkChanges();
    EXPECT_TRUE(Grid->ChangedAfterOK);
    Grid->ResetToFormCreateVal();
    EXPECT_EQ(Grid->Cells(1, 2), QStringLiteral("0.000"));
}

TEST_F(GridTest, CellEventsFireOnMovesAndChangedTexts) {
    std::vector<QString> Log;
    Grid->SetOnCellChange([&](QObject*, int C, int R, int OC, int OR) {
        Log.push_back(QStringLiteral("move %1,%2 from %3,%4").arg(C).arg(R).arg(OC).arg(OR));
    });
    Grid->SetOnCellTxtChange([&](QObject*, int C, int R, const QString& Old) {
        Log.push_back(QStringLiteral("text %1,%2 was %3").arg(C).arg(R).arg(Old));
    });
    Grid->SetCol(2);
    Grid->SetCells(2, 1, QStringLiteral("5"));
    Grid->SetRow(3);
    Grid->SetRow(3);
    // The grid was never entered, so the first cell's text is compared with the empty text.
    EXPECT_EQ(Log,
              (std::vector<QString>{QStringLiteral("text 1,1 was "), QStringLiteral("move 2,1 from 1,1"),
                                    QStringLiteral("text 2,1 was 0"), QStringLiteral("move 2,3 from 2,1")}));
}

TEST_F(GridTest, ValueTextsAreShortAndSingleLine) {
    Grid->SetColCount(12);
    Grid->SetRowCount(40);
    const QString S = Grid->GetValueText();
    EXPECT_TRUE(S.startsWith(QStringLiteral("Row0:Title 0,1 Title 0,2;"))) << S.toStdString();
    EXPECT_TRUE(S.endsWith(QStringLiteral("..."))) << S.toStdString();
    EXPECT_FALSE(S.contains(QLatin1Char('\n')));
    EXPECT_LT(S.size(), 160);
    EXPECT_EQ(Grid->GetVariantValue().toString(), S);
}

TEST_F(GridTest, AssignTakesCountsAndTextsButNotColumns) {
    TNumGrid Other;
    Other.SetColCount(3);
    Other.SetRowCount(4);
    Other.SetCells(2, 3, QStringLiteral("7"));
    Other.Columns()->Items(2)->SetParType(ptPress);
    Grid->Assign(&Other);
    EXPECT_EQ(Grid->ColCount(), 3);
    EXPECT_EQ(Grid->RowCount(), 4);
    EXPECT_EQ(Grid->Cells(2, 3), QStringLiteral("7"));
    EXPECT_EQ(Col(2)->ParType(), ptNone);
    QWidget NotAGrid;
    EXPECT_THROW(Grid->Assign(&NotAGrid), EConvertError);
}

TEST_F(GridTest, AbsurdCountsAreRefused) {
    EXPECT_THROW(Grid->SetRowCount(100'000'000), EConvertError);
    EXPECT_EQ(Grid->RowCount(), 5);
    Grid->SetRowCount(-3);
    EXPECT_EQ(Grid->RowCount(), 0);
    EXPECT_EQ(Grid->Cells(0, 0), QString());
    EXPECT_EQ(Grid->FixedRows(), 0) << "no rows, no fixed rows";
    Grid->SetRowCount(3);
    Grid->SetFixedRows(1);
    EXPECT_EQ(Grid->Cells(1, 0), QStringLiteral("Title 1,1\r\nTitle 1,2")) << "the title row comes back";
}

TEST_F(GridTest, ColumnPublishesEveryPropertyInItsOrderIncludingPopupMenuAndTitle) {
    const QStringList Published = {
        "Alignment",   "Color",        "Font",          "ImeMode",     "ImeName",     "PopupMenu",
        "ReadOnly",    "Title",        "Width",         "Visible",     "Decimals",    "Digits",
        "Max",         "Min",          "DataType",      "NumericType", "ParType",     "CustomScale",
        "ScaleOffset", "CustomFormat", "CustomUnitStr", "TrimZeroes",  "StringCol",   "CheckBoxCol",
        "DefaultStr",  "Validate",     "UnitSystem",    "Tag",         "AutoReformat"};
    const QMetaObject& M = TNumColumn::staticMetaObject;
    QStringList Names;
    for (int I = M.propertyOffset(); I < M.propertyCount(); ++I)
        Names << QString::fromLatin1(M.property(I).name());
    EXPECT_EQ(Names, Published);

    // Designer and setProperty reach the menu and the title; the title is copied, not replaced.
    QMenu Menu;
    qxnum::test::SetPublished(*Col(1), "PopupMenu", QVariant::fromValue(&Menu));
    EXPECT_EQ(Col(1)->PopupMenu(), &Menu);
    TNumGrid Other;
    Other.Columns()->Items(1)->Title()->SetCaption(QStringLiteral("Mass flow"));
    qxnum::test::SetPublished(*Col(1), "Title", QVariant::fromValue(Other.Columns()->Items(1)->Title()),
                              false);
    EXPECT_EQ(Col(1)->property("Title").value<TNumColTitle*>(), Col(1)->Title());
    EXPECT_EQ(Col(1)->Title()->Caption(), QStringLiteral("Mass flow"));
    EXPECT_EQ(Grid->Cells(1, 0), QStringLiteral("Mass flow"));
}

TEST_F(GridTest, ColumnAssignCopiesRawFields) {
    TNumGrid Other;
    TNumColumn* S = Other.Columns()->Items(1);
    S->SetParType(ptTemp);
    S->SetUnitSystem(usSI);
    S->SetUnitSystem(usImperial);
    S->SetDefaultStr(QStringLiteral("5"));
    S->SetTag(4);
    S->Title()->SetCaption(QStringLiteral("T"));
    Col(1)->Assign(*S);
    EXPECT_EQ(Col(1)->ParType(), ptTemp);
    EXPECT_EQ(Col(1)->UnitSystem(), usImperial);
    EXPECT_EQ(Col(1)->Title()->Caption(), QStringLiteral("T"));
    EXPECT_EQ(Col(1)->Tag(), 0);
    EXPECT_FALSE(Col(1)->UnitSystemSet());
    EXPECT_EQ(Col(1)->DefaultStr(), QString());
}

} // namespace

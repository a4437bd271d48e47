// The time-series grid (times of new rows, the time row, the order checks, the time dialog) and
// the navigator that drives it.
#include <qxnum/registry.h>
#include <qxnum/widgets/numfld.h>
#include <qxnum/widgets/numgridnav.h>
#include <qxnum/widgets/numinpdlg.h>
#include <qxnum/widgets/timeseriesgrid.h>
#include <qxnum/xml.h>

#include "dialogrecorder.h"
#include "fieldtest.h"
#include "proptest.h"
#include "settingsguard.h"
#include "widgettest.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

using namespace qxnum;
using qxnum::test::DialogRecorder;
using qxnum::test::SettingsGuard;

namespace {

struct SeriesTest : ::testing::Test {
    SettingsGuard Guard{TFormatSettings::Invariant(), TFormatSettings::Invariant()};
    DialogRecorder Dialogs;
    QWidget Form;
    TTimeSeriesGrid* Grid = nullptr;
    SeriesTest() {
        Form.setObjectName(QStringLiteral("MissionForm"));
        Grid = new TTimeSeriesGrid(&Form);
        Grid->SetColCount(3);
        Grid->SetAllowDataDialog(false);
    }
    // Data rows with these times; column 1 gets 1, 2, 3 ...
    void Times(const std::vector<QString>& T) {
        Grid->SetRowCount(static_cast<int>(T.size()) + 1);
        for (size_t I = 0; I < T.size(); ++I) {
            Grid->SetCells(0, static_cast<int>(I) + 1, T[I]);
            Grid->SetDValues(1, static_cast<int>(I) + 1, static_cast<double>(I + 1));
        }
    }
};

TEST_F(SeriesTest, ANewGridHasOneOpenEndedDataRow) {
    TTimeSeriesGrid Fresh;
    EXPECT_EQ(Fresh.RowCount(), 2);
    EXPECT_EQ(Fresh.EndTime(), 1e20);
    EXPECT_EQ(Fresh.Columns()->Items(0)->ParType(), ptTime);
    EXPECT_EQ(Fresh.Columns()->Items(0)->Title()->Caption(), QStringLiteral("Time"));
    EXPECT_TRUE(Fresh.Cells(0, 0).startsWith(QStringLiteral("Time")));
    EXPECT_EQ(Fresh.TimeRow.size(), static_cast<size_t>(Fresh.ColCount()));
    std::unique_ptr<QObject> Made(CreateComponent(QStringLiteral("TTimeSeriesGrid"), nullptr));
    EXPECT_NE(qobject_cast<TTimeSeriesGrid*>(Made.get()), nullptr);
}

TEST_F(SeriesTest, InitRowGivesSensibleTimes) {
    struct Case {
        const char* Name;
        std::vector<QString> Times;
        int Row;
        double Expected;
    };
    const std::vector<Case> Cases = {
        {"the last step repeated", {"0", "10", ""}, 3, 20},
        {"one step after a single row", {"10", ""}, 2, 11},
        {"the midpoint before a following row", {"10", "", "20"}, 2, 15},
        {"one on when the following time is empty", {"10", "", ""}, 2, 11},
    };
    for (const Case& C : Cases) {
        SCOPED_TRACE(C.Name);
        Times(C.Times);
        Grid->SetCells(0, C.Row, QString());
        Grid->InitRow(C.Row);
        EXPECT_EQ(Grid->GetDValues(0, C.Row), C.Expected);
        EXPECT_EQ(Grid->Cells(1, C.Row), Grid->Cells(1, C.Row - 1)) << "values copied from the row above";
    }
}

TEST_F(SeriesTest, ANeighbouringTimeThatIsNoNumberIsReportedNotReadAsZero) {
    struct Case {
        const char* Name;
        std::vector<QString> Times;
        std::function<void()> Call;
        const char* Bad;
    };
    const std::vector<Case> Cases = {
        {"the row above", {"10", "abc", ""}, [this] { Grid->InitRow(3); }, "abc"},
        {"the row below", {"10", "", "1..5"}, [this] { Grid->InitRow(2); }, "1..5"},
        {"the row before the row above", {"x1", "10", ""}, [this] { Grid->InitRow(3); }, "x1"},
        {"a row appended by InsertRow", {"10", "abc"}, [this] { Grid->InsertRow(3); }, "abc"},
        {"InsertRow in front of a first time that is no number",
         {"abc", "10"},
         [this] { Grid->InsertRow(1); },
         "abc"},
    };
    for (const Case& C : Cases) {
        SCOPED_TRACE(C.Name);
        Times(C.Times);
        Dialogs.Clear();
        C.Call();
        ASSERT_EQ(Dialogs.Count(), 1) << "one message, not a time computed from 0";
        EXPECT_EQ(Dialogs.Messages()[0], QString::fromLatin1(C.Bad) +
                                             QStringLiteral(" is no valid numeric input.\r\nin MissionForm"));
        EXPECT_EQ(Dialogs.Dialogs()[0].DlgType, mtError);
    }
}

TEST_F(SeriesTest, AGridReadWithoutColumnsHasNoTimeColumnToCheck) {
    TXmlDocument Doc;
    Doc.LoadFromString(QStringLiteral("<g><Colcount>0</Colcount><Rowcount>3</Rowcount></g>"));
    Grid->ReadFromXML(Doc.Root());
    ASSERT_EQ(Grid->ColCount(), 0);
    ASSERT_EQ(Grid->RowCount(), 3);
    Grid->SetAllowDataDialog(true);
    int Row2 = 0;
    double F = 0.0;
    struct Case {
        const char* Name;
        std::function<bool()> Call;
        bool Result;
    };
    const std::vector<Case> Cases = {
        {"CheckAllCells", [this] { return Grid->CheckAllCells(); }, true},
        {"CheckRow", [this] { return Grid->CheckRow(2); }, true},
        {"CheckCell", [this] { return Grid->CheckCell(0, 2); }, true},
        {"CheckGrid", [this] { return Grid->CheckGrid(); }, true},
        {"InitRow", [this] { return Grid->InitRow(2), true; }, true},
        {"InsertRow", [this] { return Grid->InsertRow(1), Grid->RowCount() == 4; }, true},
        {"SetTimeRowtoRow", [this] { return Grid->SetTimeRowtoRow(2), Grid->TimeRow.empty(); }, true},
        {"EndTime", [this] { return Grid->EndTime() == 0.0; }, true},
        {"TimeEditDialog", [this] { return Grid->TimeEditDialog(2), true; }, true},
        {"GetInterpPars", [&] { return Grid->GetInterpPars(0, true, 1.0, Row2, F); }, false},
        {"CalcTimeRowAtTime", [this] { return Grid->CalcTimeRowAtTime(1.0); }, false},
    };
    for (const Case& C : Cases) {
        SCOPED_TRACE(C.Name);
        EXPECT_EQ(C.Call(), C.Result);
    }
    // Only the two look-ups have something to say: there is no column 0 to interpolate in.
    EXPECT_EQ(Dialogs.Count(), 2);
}

TEST_F(SeriesTest, InsertRowPlacesAndTimesTheNewRow) {
    struct Case {
        const char* Name;
        std::vector<QString> Times;
        int At;
        int NewRow;
        double Expected;
    };
    const std::vector<Case> Cases = {
        {"appended after 10", {"10"}, 2, 2, 11},
        {"never in front of a start time of zero", {"0", "10"}, 1, 2, 5},
        {"the half interval between 10 and 20, as it always was", {"10", "20"}, 2, 2, 5},
        {"in front of a start time above zero", {"10", "20"}, 1, 1, 0},
    };
    for (const Case& C : Cases) {
        SCOPED_TRACE(C.Name);
        Times(C.Times);
        const int Rows = Grid->RowCount();
        Grid->InsertRow(C.At);
        ASSERT_EQ(Grid->RowCount(), Rows + 1);
        EXPECT_EQ(Grid->Row(), C.NewRow);
        if (C.Expected != 0) {
            EXPECT_EQ(Grid->GetDValues(0, C.NewRow), C.Expected);
        }
    }
    Grid->SetRowCountFixed(true);
    const int Rows = Grid->RowCount();
    Grid->InsertRow(1);
    EXPECT_EQ(Grid->RowCount(), Rows);
}

TEST_F(SeriesTest, TimeRowAtATimeInterpolatesNumbersAndTakesTheEarlierText) {
    Grid->SetColCount(4);
    Grid->Columns()->Items(3)->SetStringCol(true);
    Times({"10", "20"});
    Grid->SetDValues(1, 2, 3.0);
    Grid->SetCells(3, 1, QStringLiteral("climb"));
    Grid->SetCells(3, 2, QStringLiteral("cruise"));
    ASSERT_TRUE(Grid->CalcTimeRowAtTime(15));
    EXPECT_EQ(Grid->TimeRow[0], 15.0);
    EXPECT_EQ(Grid->TimeRow[1], 2.0);
    EXPECT_EQ(Grid->TimeRowStrings[3], QStringLiteral("climb"));
    Grid->SetTimeRowtoRow(2);
    EXPECT_EQ(Grid->TimeRow[0], 20.0);
    EXPECT_EQ(Grid->TimeRowStrings[3], QStringLiteral("cruise"));
    EXPECT_EQ(Grid->EndTime(), 20.0);

    Times({"10", "10"});
    EXPECT_FALSE(Grid->CalcTimeRowAtTime(15));
    EXPECT_EQ(Dialogs.Messages().last(),
              QStringLiteral("Exception error interpolating column nr.0\r\nin MissionForm"));
}

TEST_F(SeriesTest, TimesThatDoNotAscendAreReported) {
    Times({"10", "10", "30"});
    Dialogs.Clear();
    EXPECT_FALSE(Grid->CheckRow(2));
    ASSERT_EQ(Dialogs.Count(), 1);
    EXPECT_EQ(Dialogs.Messages()[0],
              QStringLiteral("Time column not ascending in MissionForm\r\nplease update grid !"));
    EXPECT_EQ(Dialogs.Dialogs()[0].DlgType, mtWarning);
    EXPECT_TRUE(Grid->CheckRow(3));
    EXPECT_TRUE(Grid->CheckRow(1)) << "the first data row has no prior row";

    Dialogs.Clear();
    EXPECT_FALSE(Grid->CheckCell(0, 2));
    EXPECT_EQ(Dialogs.Messages().value(0), QStringLiteral("10.000 s is no valid numeric input.\r\nTime value "
                                                          "less than prior row time !\r\nin MissionForm"));
    Dialogs.Clear();
    EXPECT_FALSE(Grid->CheckCell(0, 1));
    EXPECT_EQ(
        Dialogs.Messages().value(0),
        QStringLiteral(
            "10.000 s is no valid numeric input.\r\nTime value exceeds next row time\r\nin MissionForm"));
    Dialogs.Clear();
    EXPECT_TRUE(Grid->CheckCell(1, 2)) << "only the time column is ordered";
    EXPECT_TRUE(Grid->CheckCell(0, 3));
    EXPECT_EQ(Dialogs.Count(), 0);
}

// The time dialog through the input query's hook.
struct TimeDialogTest : SeriesTest {
    TNumInpDlgHook Previous;
    QString Prompt, Caption;
    QString Typed; // empty: Cancel
    int Asked = 0;
    TimeDialogTest() {
        Grid->SetAllowDataDialog(true);
        Previous = SetNumInpDlgHook([this](TNumInpDlgForm* Dlg) {
            ++Asked;
            Prompt = Dlg->NumFld1()->EditLabel()->text();
            Caption = Dlg->windowTitle();
            QTimer::singleShot(0, Dlg, [this, Dlg] {
                qxnum::test::WaitFor([Dlg] { return Dlg->isActiveWindow(); });
                if (Typed.isEmpty()) {
                    QTest::mouseClick(Dlg->Cancelbtn(), Qt::LeftButton);
                    return;
                }
                Dlg->NumFld1()->selectAll();
                QTest::keyClicks(Dlg->NumFld1(), Typed);
                QTest::mouseClick(Dlg->OKbtn(), Qt::LeftButton);
            });
        });
    }
    ~TimeDialogTest() override { SetNumInpDlgHook(Previous); }
};

TEST_F(TimeDialogTest, AskedTimeIsWrittenAndCancelKeepsTheOldOne) {
    Times({"10", "15", "20"});
    Typed = QStringLiteral("12");
    Grid->TimeEditDialog(2);
    EXPECT_EQ(Caption, QStringLiteral("Time series table"));
    EXPECT_EQ(Prompt, QStringLiteral("Enter Time value larger than 10.000   smaller than 20.000"));
    EXPECT_EQ(Grid->GetDValues(0, 2), 12.0);
    EXPECT_FALSE(Grid->DialogCancelled());

    Typed.clear();
    Grid->TimeEditDialog(2);
    EXPECT_EQ(Grid->GetDValues(0, 2), 12.0);
    EXPECT_TRUE(Grid->DialogCancelled());

    Grid->TimeEditDialog(1);
    EXPECT_EQ(Prompt, QStringLiteral("Enter Time value   smaller than 12.000"))
        << "no lower bound for the first row";

    Times({"30", "20", "10"});
    Asked = 0;
    Grid->TimeEditDialog(2);
    EXPECT_EQ(Asked, 0);
    EXPECT_EQ(Dialogs.Messages().last(),
              QStringLiteral("Time column not ascending in MissionForm\r\nplease update grid"));
}

TEST_F(TimeDialogTest, AnInsertedRowAsksAndACancelStopsAPaste) {
    Times({"10"});
    Typed = QStringLiteral("14");
    Grid->InsertRow(2);
    EXPECT_EQ(Asked, 1);
    EXPECT_EQ(Grid->GetDValues(0, 2), 14.0);

    // Pasting from the selected cell keeps the data dialog: its Cancel ends the paste.
    Typed.clear();
    Asked = 0;
    Grid->SetCol(1);
    Grid->SetRow(2);
    QGuiApplication::clipboard()->setText(QStringLiteral("1\r\n2\r\n3\r\n4\r\n"));
    Dialogs.Script({mrNo});
    Grid->PasteFromClipboard();
    EXPECT_EQ(Asked, 1);
    EXPECT_EQ(Grid->RowCount(), 4) << "one row added, then the paste stopped";
    EXPECT_FALSE(Grid->DialogCancelled()) << "cleared at the end of the paste";
}

TEST_F(SeriesTest, PersistsAsTheGridDoes) {
    Times({"0", "60", "120"});
    TXmlDocument Doc;
    Grid->WriteToXML(Doc.CreateRoot(QStringLiteral("Case")));
    TTimeSeriesGrid Copy(&Form);
    Copy.SetColCount(3);
    Copy.ReadFromXML(Doc.Root());
    ASSERT_EQ(Copy.RowCount(), 4);
    for (int R = 0; R < 4; ++R)
        EXPECT_EQ(Copy.Rows(R), Grid->Rows(R));
    EXPECT_EQ(Copy.EndTime(), 120.0);
    EXPECT_EQ(Dialogs.Count(), 0);
}

// ---- the navigator -------------------------------------------------------------------------------

struct NavTest : ::testing::Test {
    SettingsGuard Guard{TFormatSettings::Invariant(), TFormatSettings::Invariant()};
    DialogRecorder Dialogs;
    QWidget Form;
    TNumGrid* Grid = nullptr;
    TNumGridNavigator* Nav = nullptr;
    std::vector<std::pair<TNumGridBtn, int>> Clicks; // button and the grid's row afterwards
    int AfterClicks = 0;
    NavTest() {
        Form.setObjectName(QStringLiteral("NavForm"));
        Grid = new TNumGrid(&Form);
        Grid->setGeometry(0, 0, 300, 200);
        Nav = new TNumGridNavigator(&Form);
        Nav->setGeometry(0, 210, 300, 25);
        Nav->SetNumGrid(Grid);
        Nav->SetOnNavClick([this](QObject* Sender, TNumGridBtn B) {
            EXPECT_EQ(Sender, Nav);
            Clicks.emplace_back(B, Grid->Row());
        });
        Nav->SetAfterClick([this](QObject*) { ++AfterClicks; });
    }
};

TEST_F(NavTest, ElevenButtonsWithHintsAndAccessibleNames) {
    const QStringList Defaults = {"First Row",  "Prior Row",   "Next Row",   "Last Row",
                                  "Append Row", "Insert Row",  "Delete Row", "Edit Row",
                                  "Post Row",   "Clear Table", "Refresh Row"};
    for (int I = 0; I < 11; ++I) {
        TNumgButton* B = Nav->Buttons(static_cast<TNumGridBtn>(I));
        ASSERT_NE(B, nullptr);
        EXPECT_EQ(B->Index(), I);
        EXPECT_EQ(B->toolTip(), Defaults[I]);
        EXPECT_EQ(B->accessibleName(), Defaults[I]);
        EXPECT_EQ(B->RepeatClicks(), I == ngbPrior || I == ngbNext);
        EXPECT_FALSE(B->icon().isNull());
    }
    Nav->SetHints({QStringLiteral("Start"), QStringLiteral("Back"), QString(), QStringLiteral("End")});
    EXPECT_EQ(Nav->Buttons(ngbFirst)->toolTip(), QStringLiteral("Start"));
    EXPECT_EQ(Nav->Buttons(ngbNext)->toolTip(), QStringLiteral("Next Row"))
        << "an empty line keeps the default";
    EXPECT_EQ(Nav->Buttons(ngbLast)->accessibleName(), QStringLiteral("End"));
    EXPECT_EQ(Nav->Buttons(ngbAdd)->toolTip(), QStringLiteral("Append Row"));

    TButtonSet Few;
    Few.set(ngbPrior).set(ngbNext);
    Nav->SetVisibleButtons(Few);
    EXPECT_TRUE(Nav->Buttons(ngbFirst)->isHidden());
    EXPECT_FALSE(Nav->Buttons(ngbNext)->isHidden());
    EXPECT_EQ(Nav->PropVisibleButtons(), (1 << ngbPrior) | (1 << ngbNext));
}

TEST_F(NavTest, GlyphsAreDrawnAtTheDevicePixelRatioAndGreyWhenDisabled) {
    const QIcon Icon = Nav->Buttons(ngbPost)->icon();
    const QImage Normal = Icon.pixmap(QSize(16, 16), 2.0, QIcon::Normal).toImage();
    const QImage Disabled = Icon.pixmap(QSize(16, 16), 2.0, QIcon::Disabled).toImage();
    EXPECT_EQ(Normal.size(), QSize(32, 32)) << "rendered for the device, not scaled up";
    auto Ink = [](const QImage& I) {
        int N = 0;
        QColor C;
        for (int Y = 0; Y < I.height(); ++Y)
            for (int X = 0; X < I.width(); ++X)
                if (qAlpha(I.pixel(X, Y)) == 255) {
                    ++N;
                    C = I.pixelColor(X, Y);
                }
        return std::make_pair(N, C);
    };
    const auto [NormalInk, NormalColour] = Ink(Normal);
    const auto [DisabledInk, DisabledColour] = Ink(Disabled);
    EXPECT_GT(NormalInk, 50);
    EXPECT_EQ(NormalInk, DisabledInk) << "the same shape";
    EXPECT_NE(NormalColour, DisabledColour);
    Nav->setEnabled(false);
    for (int I = 0; I < 11; ++I)
        EXPECT_FALSE(Nav->Buttons(static_cast<TNumGridBtn>(I))->isEnabled());
}

TEST_F(NavTest, ButtonsMoveInsertDeleteAndPassRequestsOn) {
    Grid->SetRowCount(5);
    std::vector<std::pair<const char*, int>> Events;
    Grid->SetOnRowEdit([&](QObject* S, int R) {
        EXPECT_EQ(S, Nav);
        Events.emplace_back("edit", R);
    });
    Grid->SetOnPost([&](QObject*, int R) { Events.emplace_back("post", R); });
    Grid->SetOnRefresh([&](QObject*, int R) { Events.emplace_back("refresh", R); });
    Grid->SetOnCancel([&](QObject*, int R) { Events.emplace_back("cancel", R); });
    int Cleared = 0;
    Grid->SetAfterClear([&](QObject* S) {
        EXPECT_EQ(S, Nav);
        ++Cleared;
    });
    struct Step {
        TNumGridBtn Button;
        int Row, RowCount;
    };
    Grid->SetRow(2);
    const std::vector<Step> Steps = {
        {ngbNext, 3, 5},  {ngbLast, 4, 5}, {ngbNext, 4, 5},    {ngbFirst, 1, 5},
        {ngbPrior, 1, 5}, {ngbAdd, 5, 6},  {ngbInsert, 5, 7},  {ngbDelete, 5, 6},
        {ngbEdit, 5, 6},  {ngbPost, 5, 6}, {ngbRefresh, 5, 6},
    };
    for (const Step& S : Steps) {
        Nav->BtnClick(S.Button);
        EXPECT_EQ(Grid->Row(), S.Row) << "after button " << S.Button;
        EXPECT_EQ(Grid->RowCount(), S.RowCount) << "after button " << S.Button;
    }
    ASSERT_EQ(Clicks.size(), Steps.size()) << "every button reports, moved or not";
    EXPECT_EQ(AfterClicks, 0) << "AfterClick follows clicks, not BtnClick";
    EXPECT_EQ(Events, (std::vector<std::pair<const char*, int>>{{"edit", 5}, {"post", 5}, {"refresh", 5}}));

    Events.clear();
    Dialogs.Script({mrNo});
    Nav->BtnClick(ngbCancel);
    EXPECT_EQ(Dialogs.Messages().last(), QStringLiteral("Clear entire table?"));
    EXPECT_EQ(Events, (std::vector<std::pair<const char*, int>>{{"cancel", 5}}))
        << "OnCancel comes before the question";
    EXPECT_EQ(Grid->RowCount(), 6);
    EXPECT_EQ(Cleared, 0);
    Dialogs.Script({mrYes});
    Nav->BtnClick(ngbCancel);
    EXPECT_EQ(Grid->RowCount(), 2);
    EXPECT_EQ(Cleared, 1);
}

// A row change is reported once: by the Row setter when it moved the row, by the navigator when a
// deleted last row or a cleared table moved it.
TEST_F(NavTest, EveryRowChangeIsReportedOnceAndTakesTheNewCellsText) {
    struct Case {
        const char* Name;
        TNumGridBtn Button;
        int StartRow;
        std::vector<QString> Events; // cell changes "C,R<-C,R" and text changes "txt C,R"
        bool Arrived;                // the row changed: its text was taken on arrival
    } const Cases[] = {
        {"delete the last row", ngbDelete, 4, {"txt 1,4", "1,3<-1,4"}, true},
        {"clear the table", ngbCancel, 3, {"txt 1,3", "1,1<-1,3"}, true},
        {"delete a middle row", ngbDelete, 2, {}, false},
        {"next", ngbNext, 2, {"1,3<-1,2"}, true},
        {"append", ngbAdd, 2, {"1,5<-1,2"}, false}, // arrives before its row is initialised
        {"insert", ngbInsert, 2, {}, false},
    };
    for (const Case& C : Cases) {
        Grid->SetRowCount(5);
        for (int R = 1; R < 5; ++R)
            Grid->SetDValues(1, R, R);
        Grid->SetCol(1);
        Grid->SetRow(C.StartRow == 1 ? 2 : 1); // arriving at the start row takes its text
        Grid->SetRow(C.StartRow);
        std::vector<QString> Events;
        Grid->SetOnCellChange([&](QObject*, int Col, int Row, int OldCol, int OldRow) {
            Events.push_back(QStringLiteral("%1,%2<-%3,%4").arg(Col).arg(Row).arg(OldCol).arg(OldRow));
        });
        Grid->SetOnCellTxtChange([&](QObject*, int Col, int Row, const QString&) {
            Events.push_back(QStringLiteral("txt %1,%2").arg(Col).arg(Row));
        });
        Dialogs.Script({mrYes});
        Nav->BtnClick(C.Button);
        EXPECT_EQ(Events, C.Events) << C.Name;
        // The text of the cell now current was taken on arrival: leaving it unchanged reports nothing.
        Events.clear();
        Grid->SetCol(2);
        if (C.Arrived) {
            EXPECT_EQ(Events.size(), 1U) << C.Name << ": only the move, no text change";
        }
        Grid->SetOnCellChange(nullptr);
        Grid->SetOnCellTxtChange(nullptr);
    }
}

TEST_F(NavTest, PublishedPropertiesReachTheNavigator) {
    auto* Series = new TTimeSeriesGrid(&Form);
    Series->SetAllowDataDialog(false);
    struct {
        const char* Name;
        QVariant Value;
        std::function<QVariant()> Get;
    } const Props[] = {
        {"NumGrid", QVariant::fromValue(static_cast<TNumGrid*>(Series)),
         [&] { return QVariant::fromValue(Nav->NumGrid()); }},
        {"Hints", QStringList{QStringLiteral("Start")}, [&] { return QVariant(Nav->Hints()); }},
        {"ConfirmDelete", true, [&] { return QVariant(Nav->ConfirmDelete()); }},
        {"VisibleButtons", 5, [&] { return QVariant(static_cast<int>(Nav->VisibleButtons().to_ulong())); }},
    };
    for (const auto& P : Props) {
        test::SetPublished(*Nav, P.Name, P.Value);
        EXPECT_EQ(P.Get(), P.Value) << P.Name;
    }
    Nav->BtnClick(ngbAdd);
    EXPECT_EQ(Series->RowCount(), 3) << "the grid set as a property is the one driven";
}

TEST_F(NavTest, UndoAndRedoKeysReachTheGridsHistoryFromTheNavigator) {
    // A window shortcut on the same keys does not take them from the navigator.
    int WindowUndo = 0;
    auto* Undo = new QAction(&Form);
    Undo->setShortcuts({QKeySequence::Undo, QKeySequence(Qt::CTRL | Qt::Key_Y)});
    QObject::connect(Undo, &QAction::triggered, [&] { ++WindowUndo; });
    Form.addAction(Undo);
    ASSERT_TRUE(qxnum::test::Activate(Form, Nav));
    Nav->BtnClick(ngbAdd);
    ASSERT_EQ(Grid->RowCount(), 6);
    struct {
        Qt::Key Key;
        Qt::KeyboardModifiers Mods;
        int Rows;
    } const Keys[] = {{Qt::Key_Z, Qt::ControlModifier, 5},
                      {Qt::Key_Y, Qt::ControlModifier, 6},
                      {Qt::Key_Z, Qt::ControlModifier, 5},
                      {Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier, 6}};
    for (const auto& K : Keys) {
        QTest::keyClick(Nav, K.Key, K.Mods);
        EXPECT_EQ(Grid->RowCount(), K.Rows) << QKeySequence(K.Key | K.Mods).toString().toStdString();
    }
    EXPECT_EQ(WindowUndo, 0);
    EXPECT_TRUE(Nav->hasFocus());
}

TEST_F(NavTest, FirstGoesToRowOneEvenWhenItIsFixed) {
    Grid->SetRowCount(6);
    Grid->SetFixedRows(2);
    Grid->SetRow(4);
    Nav->BtnClick(ngbFirst);
    EXPECT_EQ(Grid->Row(), 1);
}

TEST_F(NavTest, WithoutAGridOnlyTheEventRuns) {
    Nav->SetNumGrid(nullptr);
    Nav->BtnClick(ngbDelete);
    ASSERT_EQ(Clicks.size(), 1U);
    EXPECT_EQ(Clicks[0].first, ngbDelete);
    // A destroyed grid is forgotten.
    auto* Other = new TNumGrid(&Form);
    Nav->SetNumGrid(Other);
    delete Other;
    EXPECT_EQ(Nav->NumGrid(), nullptr);
    Nav->BtnClick(ngbNext);
    EXPECT_EQ(Clicks.size(), 2U);
}

TEST_F(NavTest, AnInvalidCellStopsNavigationButNotDelete) {
    auto* Series = new TTimeSeriesGrid(&Form);
    Series->SetAllowDataDialog(false);
    Series->SetRowCount(5);
    Series->SetFixedCols(0);
    for (int R = 1; R < 5; ++R)
        Series->SetDValues(0, R, R * 10.0);
    Nav->SetNumGrid(Series);
    Series->SetCol(0);
    Series->SetRow(2);
    Series->SetCells(0, 2, QStringLiteral("50")); // beyond the next row's 30
    Dialogs.Clear();
    Nav->BtnClick(ngbNext);
    EXPECT_EQ(Series->Row(), 2);
    EXPECT_EQ(Dialogs.Count(), 1);
    EXPECT_TRUE(Clicks.empty()) << "a failed check ends the click";
    Nav->BtnClick(ngbDelete);
    EXPECT_EQ(Series->RowCount(), 4) << "the row was deleted before the check";
}

// One expiry of a timer, standing in for the clock.
void Expire(QTimer* Timer) {
    QMetaObject::invokeMethod(Timer, "timeout", Qt::DirectConnection);
}

TEST_F(NavTest, PriorAndNextRepeatWhileHeld) {
    ASSERT_TRUE(qxnum::test::Activate(Form, Grid));
    Grid->SetRowCount(30);
    Grid->SetRow(1);
    TNumgButton* Next = Nav->Buttons(ngbNext);
    QTest::mousePress(Next, Qt::LeftButton);
    EXPECT_EQ(Grid->Row(), 2) << "one row at once";
    QTimer* Timer = Next->RepeatTimer();
    ASSERT_NE(Timer, nullptr);
    EXPECT_TRUE(Timer->isActive());
    EXPECT_EQ(Timer->interval(), 400);
    Expire(Timer);
    EXPECT_EQ(Grid->Row(), 3);
    EXPECT_EQ(Timer->interval(), 100);
    Expire(Timer);
    Expire(Timer);
    EXPECT_EQ(Grid->Row(), 5);
    QTest::mouseRelease(Next, Qt::LeftButton);
    EXPECT_FALSE(Timer->isActive());
    EXPECT_EQ(Grid->Row(), 5) << "the release adds no step";
    EXPECT_EQ(AfterClicks, 4);

    // The real clock, with room for a slow machine: nothing before 400 ms, then steps.
    QTest::mousePress(Next, Qt::LeftButton);
    QTest::qWait(150);
    EXPECT_EQ(Grid->Row(), 6);
    EXPECT_TRUE(qxnum::test::WaitFor([&] { return Grid->Row() >= 8; }, 2000));
    QTest::mouseRelease(Next, Qt::LeftButton);

    // Last does not repeat: it acts once, on the click.
    QTest::mousePress(Nav->Buttons(ngbLast), Qt::LeftButton);
    EXPECT_EQ(Nav->Buttons(ngbLast)->RepeatTimer(), nullptr);
    QTest::mouseRelease(Nav->Buttons(ngbLast), Qt::LeftButton);
    EXPECT_EQ(Grid->Row(), 29);
}

TEST_F(NavTest, PressingAButtonTakesTheFocusAndKeysChooseAndPress) {
    ASSERT_TRUE(qxnum::test::Activate(Form, Grid));
    Grid->SetRowCount(5);
    Grid->SetRow(1);
    QTest::mouseClick(Nav->Buttons(ngbLast), Qt::LeftButton);
    EXPECT_TRUE(Nav->hasFocus());
    QTest::mouseClick(Nav->Buttons(ngbFirst), Qt::LeftButton);
    EXPECT_EQ(Nav->FocusedButton(), ngbFirst);
    QTest::keyClick(Nav, Qt::Key_Right);
    EXPECT_EQ(Nav->FocusedButton(), ngbPrior);
    QTest::keyClick(Nav, Qt::Key_Right);
    QTest::keyClick(Nav, Qt::Key_Space);
    EXPECT_EQ(Grid->Row(), 2);
    EXPECT_EQ(AfterClicks, 3);
}

} // namespace

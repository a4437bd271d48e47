// The grid's item model: Qt's views, a sorting proxy and a mapper stay current through every kind of
// grid change, under Qt's own model checker; edits through the model follow the column's rules.
#include <qxnum/widgets/numgrid.h>
#include <qxnum/widgets/numgridmodel.h>
#include <qxnum/widgets/timeseriesgrid.h>
#include <qxnum/xml.h>

#include "dialogrecorder.h"
#include "fieldtest.h"
#include "settingsguard.h"

#include <QAbstractItemModelTester>
#include <QClipboard>
#include <QDataWidgetMapper>
#include <QGuiApplication>
#include <QHeaderView>
#include <QLineEdit>
#include <QMenu>
#include <QSignalSpy>
#include <QSortFilterProxyModel>
#include <QTableView>
#include <QUndoStack>
#include <QWidget>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>

using namespace qxnum;
using qxnum::test::DialogRecorder;
using qxnum::test::SettingsGuard;

namespace {

// What Qt's model checker reports (category qt.modeltest) fails the test that caused it.
QStringList ModelReports;
QtMessageHandler PreviousHandler = nullptr;
void CatchModelReports(QtMsgType Type, const QMessageLogContext& Context, const QString& Msg) {
    if (Context.category && QByteArray(Context.category).startsWith("qt.modeltest"))
        ModelReports << Msg;
    else if (PreviousHandler)
        PreviousHandler(Type, Context, Msg);
}

constexpr int Pressure = 1, Amount = 2, Name = 3, Check = 4;

// A grid with a table view, a proxy sorted by base value and a mapper on its model.
struct GridWithViews {
    SettingsGuard Guard{TFormatSettings::Invariant(), TFormatSettings::Invariant()};
    DialogRecorder Dialogs;
    QWidget Form;
    TNumGrid* Grid = nullptr;
    TNumGridModel* Model = nullptr;
    QSortFilterProxyModel Sorted;
    QTableView Table;
    QDataWidgetMapper Mapper;
    QLineEdit MappedAmount, MappedName;
    QString HeaderSeen; // the pressure column's header as the last headerDataChanged left it
    std::unique_ptr<QAbstractItemModelTester> Checker, ProxyChecker;

    GridWithViews() {
        Form.setObjectName(QStringLiteral("CaseForm"));
        Grid = new TNumGrid(&Form);
        Grid->SetRowCount(6);
        Col(Pressure)->SetParType(ptPress);
        Col(Pressure)->SetUnitSystem(usSI); // the first setting only records the unit system
        Col(Pressure)->Title()->SetCaption(QStringLiteral("Pressure"));
        Col(Amount)->SetNumericType(ntFixed);
        Col(Amount)->SetDecimals(2);
        Col(Amount)->SetRange(0, 100);
        Col(Name)->SetStringCol(true);
        Col(Check)->SetCheckBoxCol(true);
        const double Bar[] = {3, 1, 5, 2, 4};
        for (int R = 1; R < 6; ++R) {
            Grid->SetDValues(Pressure, R, Bar[R - 1] * 1e5);
            Grid->SetDValues(Amount, R, R * 10);
            Grid->SetCells(Name, R, QStringLiteral("r%1").arg(R));
            Grid->SetCheckedStatus(Check, R, R % 2 == 1);
        }
        PreviousHandler = qInstallMessageHandler(CatchModelReports);
        ModelReports.clear();
        Model = Grid->Model();
        Checker = std::make_unique<QAbstractItemModelTester>(
            Model, QAbstractItemModelTester::FailureReportingMode::Warning);
        Sorted.setSourceModel(Model);
        Sorted.setSortRole(TNumGridModel::BaseValueRole);
        Sorted.sort(Pressure);
        ProxyChecker = std::make_unique<QAbstractItemModelTester>(
            &Sorted, QAbstractItemModelTester::FailureReportingMode::Warning);
        Table.setModel(Model);
        Mapper.setModel(Model);
        Mapper.addMapping(&MappedAmount, Amount);
        Mapper.addMapping(&MappedName, Name);
        Mapper.setCurrentIndex(2);
        HeaderSeen = Model->headerData(Pressure, Qt::Horizontal).toString();
        QObject::connect(Model, &QAbstractItemModel::headerDataChanged, Model,
                         [this] { HeaderSeen = Model->headerData(Pressure, Qt::Horizontal).toString(); });
    }
    ~GridWithViews() {
        Checker.reset();
        ProxyChecker.reset();
        qInstallMessageHandler(PreviousHandler);
        EXPECT_EQ(ModelReports, QStringList());
    }
    TNumColumn* Col(int C) const { return Grid->Columns()->Items(C); }
    QModelIndex At(int Row, int C) const { return Model->index(Row, C); }

    // The views, the proxy and the mapper show the grid as it is now.
    void ExpectCurrent() {
        const int Rows = Grid->RowCount() - Grid->FixedRows();
        ASSERT_EQ(Model->rowCount(), Rows);
        ASSERT_EQ(Model->columnCount(), Grid->ColCount());
        EXPECT_EQ(Table.verticalHeader()->count(), Rows);
        EXPECT_EQ(Table.horizontalHeader()->count(), Grid->ColCount());
        // Sorted by base value: the pressures the grid shows, in ascending order.
        std::vector<double> Expected, Shown;
        for (int R = Grid->FixedRows(); R < Grid->RowCount(); ++R)
            Expected.push_back(Grid->Cells(Pressure, R).toDouble());
        std::sort(Expected.begin(), Expected.end());
        for (int R = 0; R < Sorted.rowCount(); ++R)
            Shown.push_back(Sorted.index(R, Pressure).data().toString().toDouble());
        EXPECT_EQ(Shown, Expected);
        if (const int M = Mapper.currentIndex(); M >= 0 && M < Rows) {
            EXPECT_EQ(MappedName.text(), Grid->Cells(Name, M + Grid->FixedRows()));
            EXPECT_DOUBLE_EQ(MappedAmount.text().toDouble(),
                             Grid->Cells(Amount, M + Grid->FixedRows()).toDouble());
        }
        EXPECT_EQ(HeaderSeen, Model->headerData(Pressure, Qt::Horizontal).toString());
    }
    // A row operation as the user makes it (one undo step), from the grid's context menu.
    void MenuOnRow(int GridRow, const QString& Entry) {
        Grid->SetRow(GridRow);
        const std::unique_ptr<QMenu> Menu(Grid->createStandardContextMenu());
        for (QAction* A : Menu->actions())
            if (A->text() == Entry) return A->trigger();
        ADD_FAILURE() << "no menu entry " << Entry.toStdString();
    }
    void Paste(const QString& Text, int Answer) {
        QGuiApplication::clipboard()->setText(Text);
        Dialogs.Script({Answer});
        Grid->PasteFromClipboard();
    }
};

struct ModelTest : ::testing::Test, GridWithViews {};

struct Step {
    const char* Name;
    std::function<void(GridWithViews&)> Action;
    bool KeepsRows; // a row tracked through the model is still the same row afterwards
};

TEST_F(ModelTest, ViewsProxyAndMapperStayCurrentThroughEveryChange) {
    const auto SetByProgram = [](GridWithViews& T) {
        T.Grid->SetCells(Amount, 3, QStringLiteral("12.00"));
        T.Grid->SetDValues(Pressure, 2, 9e5);
    };
    const auto ReadStream = [](GridWithViews& T) {
        TNumGrid Source;
        Source.SetColCount(5);
        Source.SetRowCount(9);
        for (int R = 1; R < 9; ++R)
            Source.SetCells(Pressure, R, QString::number(R % 4));
        test::ReadRecord(*T.Grid, test::WriteRecord(Source));
    };
    const auto ReadXml = [](GridWithViews& T) {
        TNumGrid Source;
        Source.SetColCount(6);
        Source.SetRowCount(4);
        Source.SetCells(Pressure, 2, QStringLiteral("0.5"));
        TXmlDocument Doc;
        Source.WriteToXML(Doc.CreateRoot(QStringLiteral("INumFld")));
        T.Grid->ReadFromXML(Doc.Root());
    };
    const Step Steps[] = {
        {"edit through the model", [](GridWithViews& T) { T.Model->setData(T.At(1, Pressure), 7.0); }, true},
        {"cells set by program", SetByProgram, true},
        {"row inserted above the tracked row",
         [](GridWithViews& T) { T.MenuOnRow(2, QStringLiteral("&Insert row")); }, true},
        {"undo of the insert", [](GridWithViews& T) { T.Grid->UndoStack()->undo(); }, true},
        {"redo of the insert", [](GridWithViews& T) { T.Grid->UndoStack()->redo(); }, true},
        {"row deleted above the tracked row",
         [](GridWithViews& T) { T.MenuOnRow(1, QStringLiteral("&Delete row")); }, true},
        {"undo of the delete", [](GridWithViews& T) { T.Grid->UndoStack()->undo(); }, true},
        {"row moved", [](GridWithViews& T) { T.Grid->MoveRow(1, 4); }, true},
        {"unit switch", [](GridWithViews& T) { T.Col(Pressure)->SetUnitSystem(usImperial); }, true},
        {"paste from the last row adds rows",
         [](GridWithViews& T) {
             T.Grid->SetRow(T.Grid->RowCount() - 1);
             T.Grid->SetCol(Pressure);
             T.Paste(QStringLiteral("99\t20\tp1\r\n1\t30\tp2\r\n0.5\t40\tp3\r\n"), mrNo);
         },
         false},
        {"undo of the paste", [](GridWithViews& T) { T.Grid->UndoStack()->undo(); }, false},
        {"grid-level unit switch back", [](GridWithViews& T) { T.Grid->SwitchUnitSystem(usSI); }, true},
        {"batched changes",
         [](GridWithViews& T) {
             T.Grid->BeginUpdate();
             T.Grid->SetRowCount(T.Grid->RowCount() + 2);
             T.Grid->SetCells(Pressure, 1, QStringLiteral("0.25"));
             T.Grid->EndUpdate();
         },
         true},
        {"more fixed rows", [](GridWithViews& T) { T.Grid->SetFixedRows(2); }, true},
        {"fewer fixed rows", [](GridWithViews& T) { T.Grid->SetFixedRows(1); }, true},
        {"a column more", [](GridWithViews& T) { T.Grid->SetColCount(6); }, true},
        {"a column less", [](GridWithViews& T) { T.Grid->SetColCount(5); }, true},
        {"stream read", ReadStream, false},
        {"XML read", ReadXml, false},
        {"cells initialised", [](GridWithViews& T) { T.Grid->InitCells(); }, false},
    };
    for (const Step& S : Steps) {
        SCOPED_TRACE(S.Name);
        // A row away from the edges, tracked by a persistent index: row operations move it along.
        const QPersistentModelIndex Tracked = At(std::min(3, Model->rowCount() - 1), Name);
        const QString TrackedName = Tracked.data().toString();
        S.Action(*this);
        ExpectCurrent();
        if (S.KeepsRows) {
            ASSERT_TRUE(Tracked.isValid());
            EXPECT_EQ(Tracked.data().toString(), TrackedName);
        }
        EXPECT_EQ(ModelReports, QStringList());
        ModelReports.clear();
    }
}

TEST_F(ModelTest, BatchedUpdateTellsTheViewsOnceAtItsEnd) {
    QSignalSpy Changed(Model, &QAbstractItemModel::dataChanged);
    QSignalSpy Inserted(Model, &QAbstractItemModel::rowsInserted);
    QSignalSpy Reset(Model, &QAbstractItemModel::modelReset);
    Grid->BeginUpdate();
    Grid->SetRowCount(9);
    for (int R = 1; R < 9; ++R)
        Grid->SetDValues(Pressure, R, R * 1e5);
    Grid->InsertRow(2);
    EXPECT_EQ(Model->rowCount(), 5) << "the views keep the shape they were told";
    EXPECT_EQ(Changed.count() + Inserted.count(), 0);
    Grid->EndUpdate();
    EXPECT_EQ(Inserted.count(), 1);
    EXPECT_EQ(Changed.count(), 1);
    EXPECT_EQ(Reset.count(), 0);
    ExpectCurrent();
}

struct EditCase {
    const char* Name;
    int Col;
    int Role;
    QVariant Value;
    const char* Text; // the cell afterwards; nullptr: refused
    std::function<void(TNumGrid&)> Prepare = {};
};

TEST(ModelEdit, SetDataFollowsTheColumnRulesOrRefusesQuietly) {
    const EditCase Cases[] = {
        {"display units", Pressure, Qt::EditRole, 2.5, "2.500"},
        {"base units", Pressure, TNumGridModel::BaseValueRole, 350000.0, "3.500"},
        {"a number as text", Amount, Qt::EditRole, QStringLiteral(" 7.5"), "7.50"},
        {"clamped to the maximum", Amount, Qt::EditRole, 150, "100.00"},
        {"clamped to the minimum", Amount, TNumGridModel::BaseValueRole, -3.0, "0.00"},
        {"string column", Name, Qt::EditRole, QStringLiteral("abc"), "abc"},
        {"check state", Check, Qt::CheckStateRole, Qt::Unchecked, "FALSE"},
        {"check box as bool", Check, Qt::EditRole, false, "FALSE"},
        {"text that is no number", Amount, Qt::EditRole, QStringLiteral("abc"), nullptr},
        {"no finite number", Amount, Qt::EditRole, std::numeric_limits<double>::quiet_NaN(), nullptr},
        {"base units of a string column", Name, TNumGridModel::BaseValueRole, 1.0, nullptr},
        {"partly checked", Check, Qt::CheckStateRole, Qt::PartiallyChecked, nullptr},
        {"fixed column", 0, Qt::EditRole, QStringLiteral("x"), nullptr},
        {"read-only column", Amount, Qt::EditRole, 5.0, nullptr,
         [](TNumGrid& G) { G.Columns()->Items(Amount)->SetReadOnly(true); }},
        {"read-only grid", Name, Qt::EditRole, QStringLiteral("x"), nullptr,
         [](TNumGrid& G) { G.SetOptions(G.Options() & ~TGridOptions(goEditing)); }},
    };
    for (const EditCase& E : Cases) {
        SCOPED_TRACE(E.Name);
        GridWithViews T; // each case on a grid of its own
        if (E.Prepare) E.Prepare(*T.Grid);
        const int GridRow = 1; // model row 0; its check box is on
        const QString Before = T.Grid->Cells(E.Col, GridRow);
        std::vector<QString> Reported;
        T.Grid->SetOnCellTxtChange([&](QObject*, int C, int R, const QString& Old) {
            EXPECT_EQ(std::make_pair(C, R), std::make_pair(E.Col, GridRow));
            Reported.push_back(Old);
        });
        QSignalSpy TextSignal(T.Grid, &TNumGrid::cellTextChanged);
        QSignalSpy Changed(T.Model, &QAbstractItemModel::dataChanged);
        const int Steps = T.Grid->UndoStack()->count();
        const bool Accepted = T.Model->setData(T.At(0, E.Col), E.Value, E.Role);
        EXPECT_EQ(T.Dialogs.Count(), 0);
        if (!E.Text) {
            EXPECT_FALSE(Accepted);
            EXPECT_EQ(T.Grid->Cells(E.Col, GridRow), Before);
            EXPECT_EQ(T.Grid->UndoStack()->count(), Steps);
            EXPECT_TRUE(Reported.empty());
            EXPECT_EQ(Changed.count(), 0);
            continue;
        }
        EXPECT_TRUE(Accepted);
        EXPECT_EQ(T.Grid->Cells(E.Col, GridRow), QString::fromLatin1(E.Text));
        EXPECT_EQ(Reported, std::vector<QString>{Before});
        EXPECT_EQ(TextSignal.count(), 1);
        EXPECT_EQ(Changed.count(), 1);
        ASSERT_EQ(T.Grid->UndoStack()->count(), Steps + 1);
        T.Grid->UndoStack()->undo();
        EXPECT_EQ(T.Grid->Cells(E.Col, GridRow), Before);
        T.ExpectCurrent();
    }
}

TEST_F(ModelTest, AnEditKeepsItsExactValueBesideTheRoundedText) {
    std::vector<QString> Reported;
    Grid->SetOnCellTxtChange([&](QObject*, int, int, const QString& Old) { Reported.push_back(Old); });
    QSignalSpy Changed(Model, &QAbstractItemModel::dataChanged);
    ASSERT_TRUE(Model->setData(At(0, Pressure), 123456.789, TNumGridModel::BaseValueRole));
    EXPECT_EQ(Grid->Cells(Pressure, 1), QStringLiteral("1.23457"));
    EXPECT_EQ(Grid->GetDValues(Pressure, 1), static_cast<Extended>(123456.789));
    EXPECT_EQ(At(0, Pressure).data(TNumGridModel::BaseValueRole), QVariant(123456.789));
    // The same text with another value: no text change to report, but the views learn the value.
    ASSERT_TRUE(Model->setData(At(0, Pressure), 123456.7891, TNumGridModel::BaseValueRole));
    EXPECT_EQ(Grid->Cells(Pressure, 1), QStringLiteral("1.23457"));
    EXPECT_EQ(At(0, Pressure).data(TNumGridModel::BaseValueRole), QVariant(123456.7891));
    EXPECT_EQ(Reported, std::vector<QString>{QStringLiteral("3.000")});
    EXPECT_EQ(Changed.count(), 2);
}

TEST_F(ModelTest, RolesReadTheCellQuietly) {
    Grid->SetCells(Pressure, 1, QStringLiteral("2.500"));
    Grid->SetCells(Pressure, 2, QStringLiteral("abc"));
    Grid->SetCells(Pressure, 3, QString());
    Grid->SetCells(Amount, 1, QStringLiteral("150"));
    EXPECT_EQ(At(0, Pressure).data(), QVariant(QStringLiteral("2.500")));
    EXPECT_EQ(At(0, Pressure).data(Qt::EditRole), QVariant(2.5));
    EXPECT_EQ(At(0, Pressure).data(TNumGridModel::BaseValueRole), QVariant(250000.0));
    EXPECT_FALSE(At(1, Pressure).data(TNumGridModel::BaseValueRole).isValid());
    EXPECT_FALSE(At(1, Pressure).data(Qt::EditRole).isValid());
    EXPECT_EQ(At(2, Pressure).data(TNumGridModel::BaseValueRole), QVariant(0.0));
    EXPECT_EQ(At(0, Amount).data(TNumGridModel::BaseValueRole), QVariant(100.0)) << "clamped as GetDValues";
    EXPECT_EQ(Grid->Cells(Amount, 1), QStringLiteral("150")) << "and not reformatted";
    EXPECT_EQ(At(0, Name).data(Qt::EditRole), QVariant(QStringLiteral("r1")));
    EXPECT_FALSE(At(0, Name).data(TNumGridModel::BaseValueRole).isValid());
    EXPECT_EQ(At(0, Check).data(Qt::CheckStateRole), QVariant(Qt::Checked));
    EXPECT_EQ(At(1, Check).data(Qt::EditRole), QVariant(false));
    EXPECT_EQ(Model->headerData(Pressure, Qt::Horizontal), QVariant(QStringLiteral("Pressure\n[bar]")));
    EXPECT_EQ(Model->headerData(0, Qt::Vertical), QVariant(1));
    EXPECT_EQ(Model->flags(At(0, Check)) & (Qt::ItemIsUserCheckable | Qt::ItemIsEditable),
              Qt::ItemIsUserCheckable);
    EXPECT_FALSE(Model->flags(At(0, 0)) & Qt::ItemIsEditable);
    EXPECT_EQ(Model->roleNames().value(TNumGridModel::BaseValueRole), QByteArray("baseValue"));
    EXPECT_EQ(Dialogs.Count(), 0);
}

} // namespace

namespace {

// The time-series grid inserts and times its rows in its own overrides: the model follows them.
TEST(ModelOfTimeSeries, FollowsItsTimedRows) {
    DialogRecorder Dialogs;
    TTimeSeriesGrid Grid;
    Grid.SetAllowDataDialog(false);
    for (int R = 0; R < 3; ++R)
        Grid.InsertRow(Grid.RowCount());
    PreviousHandler = qInstallMessageHandler(CatchModelReports);
    ModelReports.clear();
    {
        QAbstractItemModelTester Checker(Grid.Model(),
                                         QAbstractItemModelTester::FailureReportingMode::Warning);
        const QPersistentModelIndex Last = Grid.Model()->index(Grid.Model()->rowCount() - 1, 0);
        const QString LastTime = Last.data().toString();
        const std::function<void()> Changes[] = {[&] { Grid.InsertRow(2); }, [&] { Grid.DeleteARow(1); }};
        for (const auto& Change : Changes) {
            Change();
            EXPECT_EQ(Grid.Model()->rowCount(), Grid.RowCount() - Grid.FixedRows());
            EXPECT_EQ(Last.data().toString(), LastTime) << "the last row moved along";
        }
    }
    qInstallMessageHandler(PreviousHandler);
    EXPECT_EQ(ModelReports, QStringList());
    EXPECT_EQ(Dialogs.Count(), 0);
}

} // namespace

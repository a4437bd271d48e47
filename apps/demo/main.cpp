// QXNumCtrls demo: an engine case with fields, a grid and a field form; a mission profile in a
// time-series grid with its navigator; an overview of the parameter types in both unit systems.
// Copy, Paste, Undo and Redo in the Edit menu act on the grid that has the focus.
// Run with --screenshot FILE to render the window into a PNG and exit.
#include <qxnum/qxnum.h>

#include <QApplication>
#include <QComboBox>
#include <QCommandLineParser>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMainWindow>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QTableWidget>
#include <QUndoGroup>
#include <QUndoStack>
#include <QVBoxLayout>

#include <cmath>
#include <vector>

using namespace qxnum;

namespace {

// A plausible base-unit value for each parameter type, so the table reads like real data.
constexpr Extended SampleValues[ParTypeCount] = {
    12345.678L, // ptNone
    0.785398L,  // ptAngle
    1.25L,      // ptArea
    0.0123L,    // ptConcM
    0.0456L,    // ptConcV
    42.0L,      // ptCount
    1004.5L,    // ptCpS
    85.3L,      // ptdB
    2.5e6L,     // ptEnergy
    125000.0L,  // ptForce
    0.125L,     // ptFraction
    3.0e5L,     // ptH
    12.5L,      // ptMomInertia
    1.2345L,    // ptLength
    75.0L,      // ptMass
    120.5L,     // ptMassflow
    1.8e-5L,    // ptMu
    10250.0L,   // ptNrpm
    12.75L,     // ptPercent
    101325.0L,  // ptPress
    14.2L,      // ptPR
    25.0e6L,    // ptPower
    1.5e6L,     // ptQ
    0.82L,      // ptRatio
    1.225L,     // ptRho
    5.8e-8L,    // ptSFCshaft
    288.15L,    // ptTemp
    3600.0L,    // ptTime
    1250.0L,    // ptTorque
    1.6e-5L,    // ptTSFC
    250.0L,     // ptVelocity
    0.75L,      // ptVolume
    10668.0L,   // ptZp
    45.0L,      // pthtcoef
};

QString Display(Extended Base, TParType P, TUnitSystem U) {
    return ValueString(Base, dtExtended, ntParType, 18, 3, P, U, QString(), 1.0L, 0.0L, true, false,
                       NumInpFormatSettings);
}

QTableWidget* MakeUnitTable(QWidget* Parent) {
    const QStringList Headers = {QObject::tr("Parameter"), QObject::tr("Base value"),
                                 QObject::tr("SI"),        QObject::tr("SI unit"),
                                 QObject::tr("Imperial"),  QObject::tr("Imperial unit")};
    auto* Table = new QTableWidget(ParTypeCount, static_cast<int>(Headers.size()), Parent);
    Table->setHorizontalHeaderLabels(Headers);
    Table->verticalHeader()->setVisible(false);
    Table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    for (int Row = 0; Row < ParTypeCount; ++Row) {
        const auto P = static_cast<TParType>(Row);
        const Extended V = SampleValues[Row];
        const QString Cells[] = {
            GetEnumName(P),      FloatToStr(V, NumInpFormatSettings), Display(V, P, usSI),
            ParUnitStr[P][usSI], Display(V, P, usImperial),           ParUnitStr[P][usImperial]};
        for (int Col = 0; Col < Headers.size(); ++Col) {
            auto* Item = new QTableWidgetItem(Cells[Col]);
            if (Col == 1 || Col == 2 || Col == 4) Item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
            Table->setItem(Row, Col, Item);
        }
    }
    Table->resizeColumnsToContents();
    Table->horizontalHeader()->setStretchLastSection(true);
    return Table;
}

// A small engine case: persistent fields placed by hand (the labels sit beside their edits), a unit
// system switch, and the XML the fields write for themselves.
// A field form as a host derives one: fields on two tab pages and a frame of ambient conditions.
// OK confirms, Cancel (or Escape) restores everything typed since the form was opened.
class TEngineForm : public TFieldForm {
public:
    explicit TEngineForm(QWidget* Parent) : TFieldForm(Parent) {
        setObjectName(QStringLiteral("EngineForm"));
        setWindowTitle(tr("Engine data"));
        EndCode = FieldFormEndCode; // a damaged stream resynchronises at this form's end marker
        auto* Tabs = new QTabWidget(ClientArea());
        auto* Layout = new QVBoxLayout(ClientArea());
        Layout->addWidget(Tabs);
        auto* Perf = new QWidget(Tabs);
        auto* PerfLayout = new QVBoxLayout(Perf);
        PerfLayout->addWidget(Num(Perf, "PWdesign", tr("Design power"), ptPower, 25.0e6L, 0.0L, 1.0e8L));
        PerfLayout->addWidget(Num(Perf, "Nrpm", tr("Shaft speed"), ptNrpm, 3600.0L, 0.0L, 20000.0L));
        PerfLayout->addWidget(Num(Perf, "EtaC", tr("Compressor efficiency"), ptFraction, 0.86L, 0.0L, 1.0L));
        auto* Ambient = new TFieldFrame(Perf);
        Ambient->setObjectName(QStringLiteral("Ambient"));
        Ambient->setFrameShape(QFrame::StyledPanel);
        auto* AmbLayout = new QVBoxLayout(Ambient);
        AmbLayout->addWidget(Num(Ambient, "P", tr("Ambient pressure"), ptPress, 101325.0L, 1000.0L, 2.0e5L));
        AmbLayout->addWidget(Num(Ambient, "T", tr("Ambient temperature"), ptTemp, 288.15L, 180.0L, 350.0L));
        PerfLayout->addWidget(Ambient);
        PerfLayout->addStretch();
        Tabs->addTab(Perf, tr("Performance"));
        auto* Fuel = new QWidget(Tabs);
        auto* FuelLayout = new QVBoxLayout(Fuel);
        FuelLayout->addWidget(Num(Fuel, "LHV", tr("Lower heating value"), ptH, 43.1e6L, 1.0e6L, 1.5e8L));
        auto* Kind = new TComboBoxFld(Fuel);
        Kind->setObjectName(QStringLiteral("FuelKind"));
        Kind->addItems({QStringLiteral("Jet A-1"), QStringLiteral("Natural gas"), QStringLiteral("Diesel")});
        FuelLayout->addWidget(Kind);
        FuelLayout->addStretch();
        Tabs->addTab(Fuel, tr("Fuel"));
        FormCreate();
    }
    void SetUnitSystem(TUnitSystem U) {
        for (TNumFld* F : findChildren<TNumFld*>())
            F->SetUnitSystem(U);
    }

private:
    static TNumFld* Num(QWidget* Parent, const char* Name, const QString& Caption, TParType P, Extended V,
                        Extended Min, Extended Max) {
        auto* F = new TNumFld(Parent);
        F->setObjectName(QLatin1String(Name));
        F->SetParType(P);
        F->SetRange(Min, Max);
        F->SetExpressionInput(true);
        F->SetValue(V);
        F->SetEditLabelPosition(lpLeft);
        F->SetEditUnitLabelPosition(lpRight);
        F->SetCustomIDstring(QLatin1String(Name)); // files name the field, whatever its caption says
        if (F->EditLabel()) F->EditLabel()->SetCaption(Caption);
        return F;
    }
};

class TCasePage : public QWidget {
public:
    // The unit switch serves the other pages too.
    std::function<void(TUnitSystem)> OnUnitSystem;

    explicit TCasePage(QWidget* Parent) : QWidget(Parent) {
        auto* Fields = new QWidget(this);
        Fields->setMinimumSize(520, 330);

        auto* Name = new TStringFld(Fields);
        Name->setObjectName(QStringLiteral("CaseName"));
        Name->setText(QStringLiteral("Take-off, ISA +15"));
        Name->setGeometry(180, 10, 220, 24);
        auto* NameLabel = new QLabel(tr("Case name"), Fields);
        NameLabel->setGeometry(10, 10, 164, 24);
        NameLabel->setAlignment(Qt::AlignRight | Qt::AlignVCenter);

        struct TQuantity {
            const char* Id;
            const char* Caption;
            TParType ParType;
            Extended Value, Min, Max;
        };
        const TQuantity Quantities[] = {
            {"Pamb", "Ambient pressure", ptPress, 101325.0L, 1000.0L, 2.0e5L},
            {"Tamb", "Ambient temperature", ptTemp, 303.15L, 180.0L, 350.0L},
            {"W1", "Inlet mass flow", ptMassflow, 120.5L, 0.0L, 1000.0L},
            {"PWshaft", "Shaft power", ptPower, 25.0e6L, 0.0L, 1.0e8L},
            {"SFC", "Fuel consumption", ptSFCshaft, 5.8e-8L, 0.0L, 1.0e-6L},
            {"Alt", "Altitude", ptZp, 0.0L, -500.0L, 20000.0L},
        };
        int Top = 50;
        for (const TQuantity& Q : Quantities) {
            auto* Fld = new TNumFld(Fields);
            Fld->setObjectName(QLatin1String(Q.Id));
            Fld->SetParType(Q.ParType);
            Fld->SetRange(Q.Min, Q.Max);
            Fld->SetExpressionInput(true); // "2*101.3" is as good as "202.6"
            Fld->SetValue(Q.Value);
            Fld->SetEditLabelPosition(lpLeft);
            Fld->SetEditUnitLabelPosition(lpRight);
            if (Fld->EditLabel()) Fld->EditLabel()->SetCaption(tr(Q.Caption));
            Fld->SetBounds(180, Top, 120, 24);
            FNumFields.push_back(Fld);
            Top += 34;
        }

        auto* Fuel = new TComboBoxFld(Fields);
        Fuel->setObjectName(QStringLiteral("Fuel"));
        Fuel->addItems({QStringLiteral("Jet A-1"), QStringLiteral("JP-8"), QStringLiteral("Diesel")});
        Fuel->setGeometry(180, Top, 120, 24);
        auto* FuelLabel = new QLabel(tr("Fuel"), Fields);
        FuelLabel->setGeometry(10, Top, 164, 24);
        FuelLabel->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        auto* AntiIce = new TCheckFld(Fields);
        AntiIce->setObjectName(QStringLiteral("AntiIce"));
        AntiIce->setText(tr("Anti-ice on"));
        AntiIce->move(320, Top + 2);
        FAllFields = {Name, Fuel, AntiIce};

        FLine = MakeCompressorLine(this);

        auto* Units = new QComboBox(this);
        Units->addItems({tr("SI units"), tr("Imperial units")});
        auto* Show = new QPushButton(tr("Write XML"), this);
        FEngine = new TEngineForm(this);
        auto* Engine = new QPushButton(tr("Engine data..."), this);
        FXml = new QPlainTextEdit(this);
        FXml->setReadOnly(true);

        auto* Bar = new QHBoxLayout;
        Bar->addWidget(Units);
        Bar->addWidget(Show);
        Bar->addWidget(Engine);
        Bar->addStretch();
        auto* Layout = new QVBoxLayout(this);
        Layout->addWidget(Fields);
        Layout->addWidget(
            new QLabel(tr("Compressor speed line (the Surge column marks points beyond the surge "
                          "line; Ctrl+End goes to the last point)"),
                       this));
        Layout->addWidget(FLine, 1);
        Layout->addLayout(Bar);
        Layout->addWidget(FXml, 1);

        connect(Units, &QComboBox::currentIndexChanged, this, [this](int Index) {
            const TUnitSystem U = Index == 1 ? usImperial : usSI;
            for (TNumFld* Fld : FNumFields)
                Fld->SetUnitSystem(U);
            for (int C = 0; C < FLine->ColCount(); ++C)
                FLine->Columns()->Items(C)->SetUnitSystem(U);
            FEngine->SetUnitSystem(U);
            if (OnUnitSystem) OnUnitSystem(U);
        });
        connect(Engine, &QPushButton::clicked, this, [this] {
            if (FEngine->exec() == QDialog::Accepted) WriteXml();
        });
        connect(Show, &QPushButton::clicked, this, [this] { WriteXml(); });
        WriteXml();
    }

private:
    // Every field writes its own content under an element that names it, as a case file keeps it.
    void WriteXml() {
        TXmlDocument Doc;
        TXmlNode Case = Doc.CreateRoot(QStringLiteral("config")).NodeNew(QStringLiteral("case"));
        auto Write = [&](QObject* Obj, const char* ClassName) {
            INumFld* Fld = Supports(Obj);
            if (!Fld) return;
            TXmlNode Node = Case.NodeNew(QStringLiteral("INumFld"));
            Node.WriteAttributeString(QStringLiteral("ID"), Fld->GetIDstring());
            Node.WriteAttributeString(QStringLiteral("ClassName"), QLatin1String(ClassName));
            Fld->WriteToXML(Node);
        };
        for (QObject* Obj : FAllFields)
            Write(Obj, QByteArray(Obj->metaObject()->className()).split(':').last().constData());
        for (TNumFld* Fld : FNumFields)
            Write(Fld, "TNumFld");
        Write(FLine, "TNumGrid");
        FEngine->WriteToXML(Case.NodeNew(FEngine->IDstr()));
        FXml->setPlainText(Doc.SaveToString());
    }

    // One speed line of a compressor map: corrected flow, pressure ratio, efficiency, outlet
    // temperature and power per operating point, a remark and a surge flag.
    static TNumGrid* MakeCompressorLine(QWidget* Parent) {
        auto* Grid = new TNumGrid(Parent);
        Grid->setObjectName(QStringLiteral("CompressorLine"));
        Grid->SetColCount(8);
        Grid->SetRowCount(9);
        Grid->SetOptions(Grid->Options() | goTabs | goColSizing);
        Grid->SetColStretchOptions(csoAutoStretch);
        Grid->SetAutoAddRow(true);
        struct TColDef {
            const char* Caption;
            TParType ParType;
        };
        const TColDef Defs[] = {{"Point", ptNone},        {"Mass flow", ptMassflow},
                                {"Pressure ratio", ptPR}, {"Efficiency", ptFraction},
                                {"Outlet temp.", ptTemp}, {"Power", ptPower},
                                {"Remark", ptNone},       {"Surge", ptNone}};
        for (int C = 0; C < 8; ++C) {
            TNumColumn* Col = Grid->Columns()->Items(C);
            Col->SetParType(Defs[C].ParType);
            Col->SetUnitSystem(usSI); // the first setting records the unit system of the texts below
            Col->Title()->SetCaption(tr(Defs[C].Caption));
        }
        Grid->Columns()->Items(0)->SetStringCol(true);
        Grid->Columns()->Items(0)->SetReadOnly(true);
        Grid->Columns()->Items(6)->SetStringCol(true);
        Grid->Columns()->Items(6)->SetAlignment(taLeftJustify);
        Grid->Columns()->Items(7)->SetCheckBoxCol(true);
        Grid->Columns()->Items(3)->SetRange(0.0L, 1.0L);
        // Points from choke to surge at 100 % speed.
        const Extended Flow[] = {128.0L, 127.5L, 126.4L, 124.6L, 122.0L, 118.5L, 114.2L, 109.0L};
        const Extended PR[] = {11.2L, 12.9L, 14.5L, 15.9L, 17.0L, 17.8L, 18.3L, 18.5L};
        const Extended Eta[] = {0.80L, 0.842L, 0.861L, 0.866L, 0.860L, 0.846L, 0.823L, 0.795L};
        for (int P = 0; P < 8; ++P) {
            const int R = P + 1;
            Grid->SetCells(0, R, QString::number(R));
            Grid->SetDValues(1, R, Flow[P]);
            Grid->SetDValues(2, R, PR[P]);
            Grid->SetDValues(3, R, Eta[P]);
            // Outlet temperature and power of an ideal gas with the point's efficiency.
            const Extended T2 = 288.15L * (1.0L + (std::pow(PR[P], 0.2857L) - 1.0L) / Eta[P]);
            Grid->SetDValues(4, R, T2);
            Grid->SetDValues(5, R, Flow[P] * 1004.5L * (T2 - 288.15L));
            Grid->SetCells(6, R, P == 0 ? tr("choke") : P == 3 ? tr("design point") : QString());
            Grid->SetCheckedStatus(7, R, P == 7);
        }
        Grid->SetCopyValue();
        return Grid;
    }

    TNumGrid* FLine = nullptr;
    TEngineForm* FEngine = nullptr;
    std::vector<TNumFld*> FNumFields;
    std::vector<QObject*> FAllFields;
    QPlainTextEdit* FXml = nullptr;
};

// A mission profile: time, altitude, Mach number, power setting and the phase's name, one row per
// point; the navigator moves, appends (asking for the time) and deletes points, and the time row
// shows the profile interpolated at any time.
class TMissionPage : public QWidget {
public:
    explicit TMissionPage(QWidget* Parent) : QWidget(Parent) {
        FGrid = new TTimeSeriesGrid(this);
        FGrid->setObjectName(QStringLiteral("MissionProfile"));
        FGrid->SetColCount(5);
        FGrid->SetFixedCols(0);
        FGrid->SetOptions(FGrid->Options() | goTabs | goColSizing);
        FGrid->SetColStretchOptions(csoAutoStretch);
        struct TColDef {
            const char* Caption;
            TParType ParType;
        };
        const TColDef Defs[] = {{"Time", ptTime},
                                {"Altitude", ptZp},
                                {"Mach number", ptRatio},
                                {"Power setting", ptPercent},
                                {"Phase", ptNone}};
        for (int C = 0; C < 5; ++C) {
            TNumColumn* Col = FGrid->Columns()->Items(C);
            Col->SetParType(Defs[C].ParType);
            Col->SetUnitSystem(usSI);
            Col->Title()->SetCaption(tr(Defs[C].Caption));
        }
        FGrid->Columns()->Items(4)->SetStringCol(true);
        FGrid->Columns()->Items(4)->SetAlignment(taLeftJustify);
        FGrid->Columns()->Items(2)->SetRange(0.0L, 3.0L);
        FGrid->Columns()->Items(3)->SetRange(0.0L, 110.0L);
        struct TPoint {
            Extended Time, Alt, Mach, Power;
            const char* Phase;
        };
        const TPoint Points[] = {{0, 0, 0.0L, 20, "taxi"},
                                 {60, 0, 0.2L, 100, "take-off"},
                                 {120, 300, 0.4L, 90, "climb"},
                                 {1500, 10668, 0.78L, 75, "cruise"},
                                 {5000, 10668, 0.78L, 72, "descent"},
                                 {6000, 900, 0.3L, 30, "approach"},
                                 {6300, 0, 0.2L, 15, "landing"}};
        FGrid->BeginUpdate();
        FGrid->SetRowCount(8);
        for (int R = 1; R <= 7; ++R) {
            const TPoint& P = Points[R - 1];
            FGrid->SetDValues(0, R, P.Time);
            FGrid->SetDValues(1, R, P.Alt);
            FGrid->SetDValues(2, R, P.Mach);
            FGrid->SetDValues(3, R, P.Power);
            FGrid->SetCells(4, R, tr(P.Phase));
        }
        FGrid->EndUpdate();
        FGrid->SetCopyValue();

        auto* Nav = new TNumGridNavigator(this);
        Nav->SetNumGrid(FGrid);
        TButtonSet Buttons;
        for (TNumGridBtn B :
             {ngbFirst, ngbPrior, ngbNext, ngbLast, ngbAdd, ngbInsert, ngbDelete, ngbEdit, ngbCancel})
            Buttons.set(B);
        Nav->SetVisibleButtons(Buttons);
        Nav->setFixedSize(Nav->sizeHint());
        FGrid->SetAfterClear([this](QObject*) { FGrid->SetCells(4, 1, tr("start")); });
        // Edit Row asks for the point's time between its neighbours'.
        Nav->SetHints({QString(), QString(), QString(), QString(), QString(), QString(), QString(),
                       tr("Edit the time of the row")});
        FGrid->SetOnRowEdit([this](QObject*, int ARow) { FGrid->TimeEditDialog(ARow); });

        FAt = new TNumFld(this);
        FAt->setObjectName(QStringLiteral("AtTime"));
        FAt->SetParType(ptTime);
        FAt->SetRange(0.0L, 1.0e6L);
        FAt->SetValue(3000.0L);
        FAt->SetEditLabelPosition(lpLeft);
        FAt->SetEditUnitLabelPosition(lpRight);
        if (FAt->EditLabel()) FAt->EditLabel()->SetCaption(tr("Profile at time"));
        FAt->setMaximumWidth(110);
        FRow = new QLabel(this);
        FRow->setTextFormat(Qt::PlainText);

        auto* Bar = new QHBoxLayout;
        Bar->addWidget(Nav);
        Bar->addStretch();
        auto* At = new QHBoxLayout;
        At->addWidget(FAt->EditLabel());
        At->addWidget(FAt);
        At->addWidget(FAt->EditUnitLabel());
        At->addWidget(FRow, 1);
        auto* Layout = new QVBoxLayout(this);
        Layout->addWidget(
            new QLabel(tr("Mission profile: paste a table from a spreadsheet (Ctrl+V), insert a "
                          "point with the navigator, undo with Ctrl+Z"),
                       this));
        Layout->addWidget(FGrid, 1);
        Layout->addLayout(Bar);
        Layout->addLayout(At);

        connect(FAt, &TNumFld::valueChanged, this, [this] { ShowTimeRow(); });
        connect(FGrid, &TNumGrid::cellTextChanged, this, [this] { ShowTimeRow(); });
        connect(FGrid->UndoStack(), &QUndoStack::indexChanged, this, [this] { ShowTimeRow(); });
        ShowTimeRow();
    }

    void SetUnitSystem(TUnitSystem U) {
        for (int C = 0; C < FGrid->ColCount(); ++C)
            FGrid->Columns()->Items(C)->SetUnitSystem(U);
        FAt->SetUnitSystem(U);
        ShowTimeRow();
    }

private:
    void ShowTimeRow() {
        const auto T = static_cast<double>(FAt->GetValue());
        if (T > FGrid->EndTime()) {
            FRow->setText(tr("after the end of the mission"));
            return;
        }
        // Look-up failures (times out of order) are reported by the grid itself.
        if (!FGrid->CalcTimeRowAtTime(T)) {
            FRow->clear();
            return;
        }
        QStringList Parts;
        for (int C = 1; C < FGrid->ColCount(); ++C) {
            TNumColumn* Col = FGrid->Columns()->Items(C);
            const QString Value =
                Col->StringCol() ? FGrid->TimeRowStrings[static_cast<size_t>(C)]
                                 : Col->GetValueString(1, FGrid->TimeRow[static_cast<size_t>(C)], true) +
                                       QLatin1Char(' ') + ParUnitStrOf(Col->ParType(), Col->UnitSystem());
            Parts << Col->Title()->Caption() + QStringLiteral(": ") + Value;
        }
        FRow->setText(Parts.join(QStringLiteral(",  ")));
    }

    TTimeSeriesGrid* FGrid = nullptr;
    TNumFld* FAt = nullptr;
    QLabel* FRow = nullptr;
};

// The grid that has the focus, or else the first one on the current tab.
TNumGrid* CurrentGrid(QTabWidget* Tabs) {
    for (QWidget* W = QApplication::focusWidget(); W; W = W->parentWidget())
        if (auto* G = qobject_cast<TNumGrid*>(W)) return G;
    return Tabs->currentWidget() ? Tabs->currentWidget()->findChild<TNumGrid*>() : nullptr;
}

// Edit menu: Copy and Paste act on the current grid; Undo and Redo follow the undo history of the
// grid that last had the focus.
void AddEditMenu(QMainWindow& Window, QTabWidget* Tabs) {
    auto* Group = new QUndoGroup(&Window);
    for (TNumGrid* G : Window.findChildren<TNumGrid*>())
        Group->addStack(G->UndoStack());
    if (TNumGrid* G = CurrentGrid(Tabs)) Group->setActiveStack(G->UndoStack());
    QObject::connect(qApp, &QApplication::focusChanged, Group, [Group](QWidget*, QWidget* Now) {
        for (QWidget* W = Now; W; W = W->parentWidget())
            if (auto* G = qobject_cast<TNumGrid*>(W)) {
                Group->setActiveStack(G->UndoStack());
                return;
            }
    });
    QMenu* Edit = Window.menuBar()->addMenu(QObject::tr("&Edit"));
    QAction* Undo = Group->createUndoAction(Edit);
    Undo->setShortcut(QKeySequence::Undo);
    QAction* Redo = Group->createRedoAction(Edit);
    Redo->setShortcuts({QKeySequence::Redo, QKeySequence(QStringLiteral("Ctrl+Y"))});
    // The grid takes these keys itself while it has the focus; the menu serves the mouse.
    Undo->setShortcutContext(Qt::WidgetShortcut);
    Redo->setShortcutContext(Qt::WidgetShortcut);
    Edit->addAction(Undo);
    Edit->addAction(Redo);
    Edit->addSeparator();
    QAction* Copy = Edit->addAction(QObject::tr("&Copy table"), &Window, [Tabs] {
        if (TNumGrid* G = CurrentGrid(Tabs)) G->CopyToClipboard();
    });
    Copy->setShortcut(QKeySequence::Copy);
    Copy->setShortcutContext(Qt::WidgetShortcut);
    QAction* Paste = Edit->addAction(QObject::tr("&Paste"), &Window, [Tabs] {
        if (TNumGrid* G = CurrentGrid(Tabs)) G->PasteFromClipboard();
    });
    Paste->setShortcut(QKeySequence::Paste);
    Paste->setShortcutContext(Qt::WidgetShortcut);
}

} // namespace

int main(int argc, char** argv) {
    QApplication App(argc, argv);
    QApplication::setApplicationName(QStringLiteral("QXNumCtrls demo"));

    QCommandLineParser Parser;
    Parser.addHelpOption();
    QCommandLineOption Screenshot(QStringLiteral("screenshot"),
                                  QStringLiteral("Render the window to FILE and exit."),
                                  QStringLiteral("FILE"));
    Parser.addOption(Screenshot);
    Parser.process(App);

    QMainWindow Window;
    Window.setWindowTitle(QStringLiteral("QXNumCtrls demo"));
    auto* Tabs = new QTabWidget(&Window);
    auto* Case = new TCasePage(Tabs);
    Tabs->addTab(Case, QObject::tr("Case"));
    auto* Mission = new TMissionPage(Tabs);
    Tabs->addTab(Mission, QObject::tr("Mission"));
    Case->OnUnitSystem = [Mission](TUnitSystem U) { Mission->SetUnitSystem(U); };
    auto* Units = new QWidget(Tabs);
    auto* Layout = new QVBoxLayout(Units);
    Layout->addWidget(new QLabel(QObject::tr("Each value is held in base units and shown with the standard "
                                             "format of its parameter type in both unit systems."),
                                 Units));
    Layout->addWidget(MakeUnitTable(Units));
    Tabs->addTab(Units, QObject::tr("Parameter types"));
    Window.setCentralWidget(Tabs);
    AddEditMenu(Window, Tabs);
    Window.resize(820, 900);

    if (Parser.isSet(Screenshot)) {
        Window.show();
        const QString File = Parser.value(Screenshot);
        if (!Window.grab().save(File)) {
            qCritical("Cannot write %s", qPrintable(File));
            return 1;
        }
        return 0;
    }
    Window.show();
    return App.exec();
}

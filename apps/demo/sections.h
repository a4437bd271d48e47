// The sections of an engine case: one field form each, as a host program derives them.
#pragma once

#include <qxnum/qxnum.h>

#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QTabWidget>
#include <QVBoxLayout>

#include <cmath>
#include <memory>
#include <vector>

namespace demo {

using namespace qxnum;

// A numeric field for a form layout: the layout shows the caption, the field its unit.
inline TNumFld* NumField(QWidget* Parent, const char* Name, TParType P, Extended V, Extended Min,
                         Extended Max) {
    auto* F = new TNumFld(Parent);
    F->setObjectName(QLatin1String(Name)); // the field's name in the case files
    F->SetParType(P);
    F->SetRange(Min, Max);
    F->SetExpressionInput(true); // "2*101.3" is as good as "202.6"
    F->SetValue(V);
    F->SetNameLabelVisible(false);
    return F;
}

// Installation losses: a frame placed on two forms (Engine and Compressor). Its fields are the
// frame's own; in XML their IDs carry the frame's name ("Losses.InletLoss").
class TLossesFrame : public TFieldFrame {
public:
    explicit TLossesFrame(QWidget* Parent) : TFieldFrame(Parent) {
        setObjectName(QStringLiteral("Losses"));
        setFrameShape(QFrame::StyledPanel);
        auto* L = new QFormLayout(this);
        L->addRow(new QLabel(QObject::tr("<b>Installation losses</b>"), this));
        L->addRow(QObject::tr("Inlet pressure loss"), NumField(this, "InletLoss", ptPercent, 0.5L, 0, 20));
        L->addRow(QObject::tr("Exhaust pressure loss"),
                  NumField(this, "ExhaustLoss", ptPercent, 1.0L, 0, 20));
    }
};

class TAmbientForm : public TFieldForm {
public:
    explicit TAmbientForm(QWidget* Parent) : TFieldForm(Parent) {
        setObjectName(QStringLiteral("Ambient"));
        SetHelpContext(3); // the guide's section 3: the numeric edit and expressions
        setWindowTitle(QObject::tr("Ambient conditions"));
        EndCode = FieldFormEndCode;
        auto* L = new QFormLayout(ClientArea());
        auto* Station = new TStringFld(ClientArea());
        Station->setObjectName(QStringLiteral("Station"));
        Station->setText(QStringLiteral("Sea level, ISA"));
        L->addRow(QObject::tr("Station"), Station);
        L->addRow(QObject::tr("Pressure"), NumField(ClientArea(), "Pamb", ptPress, 101325.0L, 1000, 2e5));
        L->addRow(QObject::tr("Temperature"), NumField(ClientArea(), "Tamb", ptTemp, 288.15L, 180, 350));
        L->addRow(QObject::tr("Relative humidity"),
                  NumField(ClientArea(), "Humidity", ptPercent, 60, 0, 100));
        L->addRow(QObject::tr("Altitude"), NumField(ClientArea(), "Alt", ptZp, 0, -500, 20000));
        L->addRow(QObject::tr("Flight Mach number"), NumField(ClientArea(), "Mach", ptRatio, 0, 0, 3));
        FormCreate();
    }
};

class TEngineForm : public TFieldForm {
public:
    explicit TEngineForm(QWidget* Parent) : TFieldForm(Parent) {
        setObjectName(QStringLiteral("Engine"));
        SetHelpContext(6); // the guide's section 6: field forms, frames and old files
        setWindowTitle(QObject::tr("Engine"));
        EndCode = FieldFormEndCode;
        resize(520, 360);
        auto* Tabs = new QTabWidget(ClientArea());
        auto* Perf = new QWidget(Tabs);
        auto* P = new QFormLayout(Perf);
        P->addRow(QObject::tr("Shaft power"), NumField(Perf, "PWshaft", ptPower, 25.0e6L, 0, 1e8));
        P->addRow(QObject::tr("Inlet mass flow"), NumField(Perf, "W1", ptMassflow, 120.5L, 0, 1000));
        P->addRow(QObject::tr("Pressure ratio"), NumField(Perf, "PR", ptPR, 18.5L, 1, 60));
        P->addRow(QObject::tr("Shaft speed"), NumField(Perf, "Nrpm", ptNrpm, 10250, 0, 60000));
        P->addRow(QObject::tr("Fuel consumption"), NumField(Perf, "SFC", ptSFCshaft, 5.8e-8L, 0, 1e-6));
        Tabs->addTab(Perf, QObject::tr("Performance"));
        auto* Limits = new QWidget(Tabs);
        auto* Lim = new QVBoxLayout(Limits);
        auto* LimForm = new QFormLayout;
        LimForm->addRow(QObject::tr("Turbine inlet temperature"),
                        NumField(Limits, "TIT", ptTemp, 1600, 800, 2200));
        Lim->addLayout(LimForm);
        auto* Rating = new TRadioGrpFld(Limits);
        Rating->setObjectName(QStringLiteral("Rating"));
        Rating->SetCaption(QObject::tr("Rating"));
        Rating->SetItems({QObject::tr("Take-off"), QObject::tr("Climb"), QObject::tr("Cruise")});
        Rating->SetItemIndex(0);
        Lim->addWidget(Rating);
        auto* AntiIce = new TCheckFld(Limits);
        AntiIce->setObjectName(QStringLiteral("AntiIce"));
        AntiIce->setText(QObject::tr("Anti-ice on"));
        Lim->addWidget(AntiIce);
        Lim->addStretch();
        Tabs->addTab(Limits, QObject::tr("Limits"));
        auto* Outer = new QVBoxLayout(ClientArea());
        Outer->addWidget(Tabs);
        Outer->addWidget(new TLossesFrame(ClientArea()));
        // Version 1 of the section called the shaft power "Power".
        AddFieldAlias(QStringLiteral("Power"), QStringLiteral("PWshaft"));
        FormCreate();
    }
};

class TFuelForm : public TFieldForm {
public:
    explicit TFuelForm(QWidget* Parent) : TFieldForm(Parent) {
        setObjectName(QStringLiteral("Fuel"));
        SetHelpContext(4); // the guide's section 4: fields
        setWindowTitle(QObject::tr("Fuel"));
        EndCode = FieldFormEndCode;
        resize(480, 380);
        auto* L = new QFormLayout(ClientArea());
        auto* Type = new TComboBoxFld(ClientArea());
        Type->setObjectName(QStringLiteral("FuelType"));
        Type->addItems({QStringLiteral("Jet A-1"), QStringLiteral("JP-8"), QStringLiteral("Diesel"),
                        QStringLiteral("Natural gas")});
        L->addRow(QObject::tr("Fuel"), Type);
        L->addRow(QObject::tr("Lower heating value"), NumField(ClientArea(), "LHV", ptH, 43.1e6L, 1e6, 1e8));
        L->addRow(QObject::tr("Density"), NumField(ClientArea(), "Density", ptRho, 804, 0.5, 1200));
        L->addRow(QObject::tr("Fuel temperature"),
                  NumField(ClientArea(), "Tfuel", ptTemp, 288.15L, 200, 450));
        auto* Additives = new TCheckListBoxFld(ClientArea());
        Additives->setObjectName(QStringLiteral("Additives"));
        Additives->SetItems(
            {QObject::tr("Anti-icing"), QObject::tr("Anti-static"), QObject::tr("Corrosion inhibitor")});
        Additives->setMaximumHeight(80);
        L->addRow(QObject::tr("Additives"), Additives);
        auto* Notes = new TMemoFld(ClientArea());
        Notes->setObjectName(QStringLiteral("Notes"));
        Notes->setPlaceholderText(QObject::tr("Supplier, batch, remarks"));
        L->addRow(QObject::tr("Notes"), Notes);
        FormCreate();
    }
};

// One speed line of the compressor map: a point per row.
class TCompressorForm : public TFieldForm {
public:
    explicit TCompressorForm(QWidget* Parent) : TFieldForm(Parent) {
        setObjectName(QStringLiteral("Compressor"));
        SetHelpContext(5); // the guide's section 5: the grid
        setWindowTitle(QObject::tr("Compressor characteristic"));
        EndCode = FieldFormEndCode;
        resize(760, 460);
        auto* Grid = new TNumGrid(ClientArea());
        Grid->setObjectName(QStringLiteral("SpeedLine"));
        Grid->SetColCount(7);
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
                                {"Outlet temp.", ptTemp}, {"Remark", ptNone},
                                {"Surge", ptNone}};
        for (int C = 0; C < 7; ++C) {
            TNumColumn* Col = Grid->Columns()->Items(C);
            Col->SetParType(Defs[C].ParType);
            Col->SetUnitSystem(usSI);
            Col->Title()->SetCaption(QObject::tr(Defs[C].Caption));
        }
        Grid->Columns()->Items(0)->SetStringCol(true);
        Grid->Columns()->Items(0)->SetReadOnly(true);
        Grid->Columns()->Items(5)->SetStringCol(true);
        Grid->Columns()->Items(5)->SetAlignment(taLeftJustify);
        Grid->Columns()->Items(6)->SetCheckBoxCol(true);
        Grid->Columns()->Items(3)->SetRange(0.0L, 1.0L);
        const Extended Flow[] = {128.0L, 127.5L, 126.4L, 124.6L, 122.0L, 118.5L, 114.2L, 109.0L};
        const Extended PR[] = {11.2L, 12.9L, 14.5L, 15.9L, 17.0L, 17.8L, 18.3L, 18.5L};
        const Extended Eta[] = {0.80L, 0.842L, 0.861L, 0.866L, 0.860L, 0.846L, 0.823L, 0.795L};
        Grid->BeginUpdate();
        for (int P = 0; P < 8; ++P) {
            const int R = P + 1;
            Grid->SetCells(0, R, QString::number(R));
            Grid->SetDValues(1, R, Flow[P]);
            Grid->SetDValues(2, R, PR[P]);
            Grid->SetDValues(3, R, Eta[P]);
            Grid->SetDValues(4, R, 288.15L * (1.0L + (std::pow(PR[P], 0.2857L) - 1.0L) / Eta[P]));
            Grid->SetCells(5, R, P == 0 ? QObject::tr("choke") : P == 3 ? QObject::tr("design") : QString());
            Grid->SetCheckedStatus(6, R, P == 7);
        }
        Grid->EndUpdate();
        auto* L = new QVBoxLayout(ClientArea());
        L->addWidget(
            new QLabel(QObject::tr("Points from choke to surge at 100 % speed; Ctrl+V pastes a table, "
                                   "Ctrl+Z undoes"),
                       ClientArea()));
        L->addWidget(Grid, 1);
        L->addWidget(new TLossesFrame(ClientArea()));
        FormCreate();
    }
};

// The mission profile: a time series with its navigator.
class TMissionForm : public TFieldForm {
public:
    explicit TMissionForm(QWidget* Parent) : TFieldForm(Parent) {
        setObjectName(QStringLiteral("Mission"));
        SetHelpContext(5); // the guide's section 5: the grid and the time series
        setWindowTitle(QObject::tr("Mission profile"));
        EndCode = FieldFormEndCode;
        resize(720, 440);
        auto* Grid = new TTimeSeriesGrid(ClientArea());
        Grid->setObjectName(QStringLiteral("Profile"));
        Grid->SetColCount(5);
        Grid->SetFixedCols(0);
        Grid->SetOptions(Grid->Options() | goTabs | goColSizing);
        Grid->SetColStretchOptions(csoAutoStretch);
        const char* Captions[] = {"Time", "Altitude", "Mach number", "Power setting", "Phase"};
        const TParType Types[] = {ptTime, ptZp, ptRatio, ptPercent, ptNone};
        for (int C = 0; C < 5; ++C) {
            TNumColumn* Col = Grid->Columns()->Items(C);
            Col->SetParType(Types[C]);
            Col->SetUnitSystem(usSI);
            Col->Title()->SetCaption(QObject::tr(Captions[C]));
        }
        Grid->Columns()->Items(4)->SetStringCol(true);
        Grid->Columns()->Items(4)->SetAlignment(taLeftJustify);
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
        Grid->BeginUpdate();
        Grid->SetRowCount(8);
        for (int R = 1; R <= 7; ++R) {
            const TPoint& P = Points[R - 1];
            Grid->SetDValues(0, R, P.Time);
            Grid->SetDValues(1, R, P.Alt);
            Grid->SetDValues(2, R, P.Mach);
            Grid->SetDValues(3, R, P.Power);
            Grid->SetCells(4, R, QObject::tr(P.Phase));
        }
        Grid->EndUpdate();
        Grid->SetOnRowEdit([Grid](QObject*, int ARow) { Grid->TimeEditDialog(ARow); });
        auto* Nav = new TNumGridNavigator(ClientArea());
        Nav->SetNumGrid(Grid);
        TButtonSet Buttons;
        for (TNumGridBtn B :
             {ngbFirst, ngbPrior, ngbNext, ngbLast, ngbAdd, ngbInsert, ngbDelete, ngbEdit, ngbCancel})
            Buttons.set(B);
        Nav->SetVisibleButtons(Buttons);
        Nav->SetHints({QString(), QString(), QString(), QString(), QString(), QString(), QString(),
                       QObject::tr("Edit the time of the row")});
        Nav->setFixedSize(Nav->sizeHint());
        auto* Date = new TDateTimePickerFld(ClientArea());
        Date->setObjectName(QStringLiteral("Date"));
        Date->setDateTime(QDateTime(QDate(2026, 11, 23), QTime(8, 0)));
        auto* Bar = new QHBoxLayout;
        Bar->addWidget(Nav);
        Bar->addStretch();
        Bar->addWidget(new QLabel(QObject::tr("Departure"), ClientArea()));
        Bar->addWidget(Date);
        auto* L = new QVBoxLayout(ClientArea());
        L->addWidget(Grid, 1);
        L->addLayout(Bar);
        FormCreate();
    }
};

} // namespace demo

// The time-series grid.
#include "numgrid_p.h"

#include <qxnum/dialogs.h>
#include <qxnum/numconv.h>
#include <qxnum/registry.h>
#include <qxnum/widgets/numfld.h>
#include <qxnum/widgets/numinpdlg.h>
#include <qxnum/widgets/timeseriesgrid.h>

#include <QCoreApplication>

#include <cmath>
#include <utility>

namespace qxnum {

namespace {

const TClassRegistrar TimeSeriesGridRegistrar("TTimeSeriesGrid", [](QObject* Owner) -> QObject* {
    return new TTimeSeriesGrid(qobject_cast<QWidget*>(Owner));
});

constexpr double Tolerance = 1e-14;

QString Tr(const char* Source) {
    return QCoreApplication::translate("TTimeSeriesGrid", Source);
}

// A bad neighbouring time met while a new row is timed: the text, for the grid's message.
struct TBadTime {
    QString Text;
};

// The number a time cell shows. An empty cell is 0, as the grid reads it; other text that is no
// number raises, so that a row is never timed from a silent 0.
double ShownNumber(const QString& Text) {
    if (Text.trimmed().isEmpty()) return 0.0;
    try {
        return static_cast<double>(QX_StrToFloat(Text.trimmed()));
    } catch (const EConvertError&) {
        throw TBadTime{Text};
    }
}

} // namespace

class TTimeSeriesGridPrivate {
public:
    bool Creating = true;
    // CheckRow reports the order of its row itself; the cell check leaves it to it meanwhile.
    bool CheckingRow = false;
    // InitRow met a neighbouring time that is no number and said so; the insertion stops there.
    bool BadNeighbour = false;
};

TTimeSeriesGrid::TTimeSeriesGrid(QWidget* Owner) : TNumGrid(Owner), d(new TTimeSeriesGridPrivate) {
    SetRowCount(2);
    SetTimeRowtoRow(1);
    if (TNumColumn* Time = Columns()->Items(0)) {
        Time->SetParType(ptTime);
        Time->Title()->SetCaption(QStringLiteral("Time"));
    }
    ResetTitles();
    d->Creating = false;
}

TTimeSeriesGrid::~TTimeSeriesGrid() = default;

double TTimeSeriesGrid::Time(int ARow) {
    return static_cast<double>(GetDValues(0, ARow));
}

bool TTimeSeriesGrid::Exempt() const {
    return d->Creating || ResizingNumGrid() || ReadingFromStream() || InitializingCells();
}

void TTimeSeriesGrid::SetTimeRowtoRow(int irow) {
    const int Cols = ColCount();
    TimeRow.assign(static_cast<size_t>(Cols), 0.0);
    TimeRowStrings.assign(static_cast<size_t>(Cols), QString());
    for (int C = 0; C < Cols; ++C) {
        TNumColumn* Column = Columns()->Items(C);
        if (!Column) continue;
        if (Column->StringCol()) {
            TimeRowStrings[static_cast<size_t>(C)] = Cells(C, irow);
        } else if (ResizingNumGrid()) {
            // The table is being reshaped (or read): no message about a cell it is about to fill.
            double V = 0.0;
            try {
                V = TNumGridPrivate::Of(this)->QuietValue(C, irow);
            } catch (const std::exception&) {
            }
            TimeRow[static_cast<size_t>(C)] = V;
        } else {
            TimeRow[static_cast<size_t>(C)] = static_cast<double>(GetDValues(C, irow));
        }
    }
}

bool TTimeSeriesGrid::CalcTimeRowAtTime(double ATime) {
    if (RowCount() == 2) {
        SetTimeRowtoRow(1);
        return true;
    }
    int row2 = 0;
    double f = 0.0;
    if (!GetInterpPars(0, true, ATime, row2, f)) return false;
    const auto Cols = static_cast<size_t>(ColCount());
    TimeRow.resize(Cols, 0.0);
    TimeRowStrings.resize(Cols);
    if (Cols > 0) TimeRow[0] = ATime;
    for (int C = 1; C < ColCount(); ++C) {
        const TNumColumn* Column = Columns()->Items(C);
        if (Column && Column->StringCol()) {
            TimeRowStrings[static_cast<size_t>(C)] = Cells(C, row2 - 1);
            continue;
        }
        double V = 0.0;
        if (!GetInterpVal(C, row2, f, V)) return false;
        TimeRow[static_cast<size_t>(C)] = V;
    }
    return true;
}

double TTimeSeriesGrid::EndTime() {
    return RowCount() == 2 ? 1e20 : Time(RowCount() - 1);
}

void TTimeSeriesGrid::InitRow(int irow) {
    TNumGrid::InitRow(irow);
    d->BadNeighbour = false;
    if (irow <= 1 || irow >= RowCount() || !Columns()->Items(0)) return;
    double t = 0.0;
    try {
        const double tp = ShownNumber(Cells(0, irow - 1));
        t = tp + 1.0;
        if (irow < RowCount() - 1) {
            if (!Cells(0, irow + 1).isEmpty()) t = (ShownNumber(Cells(0, irow + 1)) + tp) / 2.0;
        } else if (RowCount() > 3) {
            t = tp - ShownNumber(Cells(0, irow - 2)) + tp; // the last step once more
        }
    } catch (const TBadTime& Bad) {
        // The row keeps its defaults; the user corrects the neighbour first.
        d->BadNeighbour = true;
        MessageDlg(GridMessage(Bad.Text + Tr(" is no valid numeric input.")), mtError, mbOK);
        return;
    }
    SetDValues(0, irow, t);
    for (int C = 1; C < ColCount(); ++C)
        SetCells(C, irow, Cells(C, irow - 1));
}

void TTimeSeriesGrid::InsertRow(int atrow) {
    if (RowCountFixed()) return;
    const int Fixed = FixedRows();
    if (atrow == Fixed && Fixed < RowCount()) {
        // Nothing goes in front of a start time of zero, nor of one that is no number (read
        // quietly: the new row's own timing reports it).
        double First = std::nan("");
        try {
            First = TNumGridPrivate::Of(this)->QuietValue(0, atrow);
        } catch (const std::exception&) {
        }
        if (First < Tolerance || std::isnan(First)) atrow = Fixed + 1;
    }
    d->BadNeighbour = false;
    TNumGrid::InsertRow(atrow);
    // A neighbour that is no number has been reported; timing or asking would only repeat that.
    if (std::exchange(d->BadNeighbour, false)) return;
    atrow = std::clamp(atrow, 0, RowCount() - 1);
    if (atrow >= Fixed) {
        const bool HasPrev = atrow > Fixed, HasNext = atrow + 1 < RowCount();
        const double Prev = HasPrev ? Time(atrow - 1) : 0.0;
        const double Next = HasNext ? Time(atrow + 1) : 0.0;
        if (HasPrev && HasNext && Next > Prev)
            SetDValues(0, atrow, (Next - Prev) / 2.0); // the half interval itself, as it always was
        else if (!HasNext && HasPrev)
            SetDValues(0, atrow, Prev + 1.0);
    }
    if (FixedCols() > 0 && AllowDataDialog()) TimeEditDialog(atrow);
}

void TTimeSeriesGrid::TimeEditDialog(int ARow) {
    TNumColumn* Column = Columns()->Items(0);
    if (!Column || ARow < 0 || ARow >= RowCount()) return;
    const QString Title = Column->Title()->Caption();
    double Lower = -1000000.0, Upper = 1e15;
    QString Bounds;
    if (ARow >= 2) {
        Lower = Time(ARow - 1);
        Bounds += Tr(" larger than ") + Column->GetValueString(ARow - 1, Lower, true);
    }
    if (ARow + 1 < RowCount()) {
        Upper = Time(ARow + 1);
        Bounds += Tr("   smaller than ") + Column->GetValueString(ARow + 1, Upper, true);
    }
    if (Lower + Tolerance > Upper && !InitializingCells()) {
        MessageDlg(Title + Tr(" column not ascending in ") + OwnerName() + QStringLiteral("\r\n") +
                       Tr("please update grid"),
                   mtWarning, mbOK);
        return;
    }
    const double Old = Time(ARow);
    double Value = Old;
    // The field shows the time as the column does (its parameter type, units and picture); the
    // query itself knows only the numeric type. A hook of the host still sees the dialog.
    const TNumInpDlgHook Outer = SetNumInpDlgHook({});
    SetNumInpDlgHook([&Outer, Column](TNumInpDlgForm* Dlg) {
        TNumFld* Field = Dlg->NumFld1();
        if (Column->NumericType() == ntParType) {
            Field->SetParType(Column->ParType());
            Field->SetUnitSystem(Column->UnitSystem());
        }
        Field->SetCustomFormat(Column->CustomFormat());
        if (Outer) Outer(Dlg);
    });
    struct TRestore {
        const TNumInpDlgHook& Hook;
        ~TRestore() { SetNumInpDlgHook(Hook); }
    } Restore{Outer};
    if (NumInputQuery(Title + Tr(" series table"), Tr("Enter ") + Title + Tr(" value") + Bounds, 0,
                      Column->NumericType(), Column->Decimals(), Lower, Upper, Value, FormatSettings)) {
        SetCells(0, ARow, Column->GetValueString(ARow, Value, true));
        SetDialogCancelled(false);
    } else {
        SetCells(0, ARow, Column->GetValueString(ARow, Old, true));
        SetDialogCancelled(true);
    }
    CheckCellTxtChange(0, ARow);
}

bool TTimeSeriesGrid::CheckRow(int ARow) {
    d->CheckingRow = true;
    const bool CellsValid = TNumGrid::CheckRow(ARow);
    d->CheckingRow = false;
    if (!CellsValid) return false;
    // A grid read with no columns has no time column, and so no order to keep.
    TNumColumn* TimeColumn = Columns()->Items(0);
    if (Exempt() || ARow <= 1 || ARow >= RowCount() || !TimeColumn) return true;
    if (Time(ARow - 1) > Time(ARow) - Tolerance) {
        MessageDlg(TimeColumn->Title()->Caption() + Tr(" column not ascending in ") + OwnerName() +
                       QStringLiteral("\r\n") + Tr("please update grid !"),
                   mtWarning, mbOK);
        return false;
    }
    return true;
}

bool TTimeSeriesGrid::CheckCell(int icol, int irow) {
    if (!TNumGrid::CheckCell(icol, irow)) return false;
    TNumColumn* TimeColumn = Columns()->Items(0);
    if (icol != 0 || !TimeColumn || irow < 0 || irow >= RowCount() || d->CheckingRow || Exempt()) return true;
    const char* Problem = nullptr;
    const double T = Time(irow);
    if (irow > 1 && Time(irow - 1) > T - Tolerance)
        Problem = " value less than prior row time !";
    else if (irow + 1 < RowCount() && !(Time(irow + 1) >= T + Tolerance))
        Problem = " value exceeds next row time";
    if (!Problem) return true;
    MessageDlg(TNumGridPrivate::Of(this)->QuotedCellText(0, Cells(0, irow)) +
                   Tr(" is no valid numeric input.") + QStringLiteral("\r\n") +
                   TimeColumn->Title()->Caption() + Tr(Problem) + QStringLiteral("\r\n") +
                   QStringLiteral("in ") + OwnerName(),
               mtError, mbOK);
    return false;
}

void TTimeSeriesGrid::SizeChanged(int OldColCount, int OldRowCount) {
    TNumGrid::SizeChanged(OldColCount, OldRowCount);
    TNumGridPrivate* D = TNumGridPrivate::Of(this);
    const bool Was = D->ResizingNumGrid;
    D->ResizingNumGrid = true;
    SetTimeRowtoRow(1);
    D->ResizingNumGrid = Was;
}

} // namespace qxnum

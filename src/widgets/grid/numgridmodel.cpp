// The grid's item model: its cells for Qt's views, edits through the column's rules, and the
// signals that keep the views current (see numgridmodel_p.h for how).
#include "numcolumn_p.h"
#include "numgridmodel_p.h"

#include <qxnum/numconv.h>
#include <qxnum/units.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace qxnum {

namespace {

// Between the units a cell shows and base units, as the column formats and reads its texts.
Extended BaseOf(const TNumColumn* Column, Extended Shown) {
    return ScaledToUnScaled(Shown, Column->NumericType() == ntParType ? Column->ParType() : ptNone,
                            Column->UnitSystem(), Column->CustomScale(), Column->ScaleOffset());
}
Extended ShownOf(const TNumColumn* Column, Extended Base) {
    return UnScaledToScaled(Base, Column->NumericType() == ntParType ? Column->ParType() : ptNone,
                            Column->UnitSystem(), Column->CustomScale(), Column->ScaleOffset());
}

bool IsText(const QVariant& V) {
    return V.typeId() == QMetaType::QString || V.typeId() == QMetaType::QByteArray;
}

} // namespace

// ---- keeping the views current -------------------------------------------------------------------------

TNumGridModelPrivate::TNumGridModelPrivate(TNumGridModel* Model, TNumGrid* G)
    : m(Model), Grid(G), D(TNumGridPrivate::Of(G)) {
    Fixed = D->FFixedRows;
    Cols = D->Store.ColCount();
    Rows = std::max(D->Store.RowCount() - Fixed, 0);
}

void TNumGridModelPrivate::MarkCells(int C0, int R0, int C1, int R1) {
    if (Top > Bottom) {
        Top = R0, Bottom = R1, Left = C0, Right = C1;
        return;
    }
    Top = std::min(Top, R0), Bottom = std::max(Bottom, R1);
    Left = std::min(Left, C0), Right = std::max(Right, C1);
}

void TNumGridModelPrivate::SyncShape() {
    // Each step reads the grid afresh: a view's slot may have changed it meanwhile.
    bool Shifted = false;
    if (D->FFixedRows > Fixed) {
        // Data rows became fixed rows: they leave at the top.
        const int N = std::min(D->FFixedRows - Fixed, Rows);
        if (N > 0) {
            m->beginRemoveRows({}, 0, N - 1);
            Rows -= N;
            Fixed = D->FFixedRows;
            m->endRemoveRows();
        }
        Fixed = D->FFixedRows;
        Shifted = true;
    } else if (D->FFixedRows < Fixed) {
        const int N = Fixed - D->FFixedRows;
        m->beginInsertRows({}, 0, N - 1);
        Rows += N;
        Fixed = D->FFixedRows;
        m->endInsertRows();
        Shifted = true;
    }
    // Whatever else changed the counts is told at the end, and every cell as changed.
    if (const int NC = D->Store.ColCount(); NC < Cols) {
        m->beginRemoveColumns({}, NC, Cols - 1);
        Cols = NC;
        m->endRemoveColumns();
        Shifted = true;
    }
    if (const int NR = std::max(D->Store.RowCount() - Fixed, 0); NR < Rows) {
        m->beginRemoveRows({}, NR, Rows - 1);
        Rows = NR;
        m->endRemoveRows();
        Shifted = true;
    }
    if (const int NC = D->Store.ColCount(); NC > Cols) {
        m->beginInsertColumns({}, Cols, NC - 1);
        Cols = NC;
        m->endInsertColumns();
        Shifted = true;
    }
    if (const int NR = std::max(D->Store.RowCount() - Fixed, 0); NR > Rows) {
        m->beginInsertRows({}, Rows, NR - 1);
        Rows = NR;
        m->endInsertRows();
        Shifted = true;
    }
    if (Shifted) {
        MarkAll();
        Titles = true;
    }
}

void TNumGridModelPrivate::Flush() {
    if (Held()) return;
    SyncShape();
    if (Top <= Bottom) {
        const int R0 = std::max(Top - Fixed, 0), R1 = std::min(Bottom - Fixed, Rows - 1);
        const int C0 = std::max(Left, 0), C1 = std::min(Right, Cols - 1);
        Top = 1, Bottom = 0;
        if (R0 <= R1 && C0 <= C1) Q_EMIT m->dataChanged(m->index(R0, C0), m->index(R1, C1));
    }
    if (Titles) {
        Titles = false;
        if (Cols > 0) Q_EMIT m->headerDataChanged(Qt::Horizontal, 0, Cols - 1);
    }
}

void TNumGridModelPrivate::CellChanged(TNumGridModel* M, int C, int R) {
    TNumGridModelPrivate* P = Of(M);
    if (R < P->D->FFixedRows)
        P->Titles = true;
    else
        P->MarkCells(C, R, C, R);
    P->Flush();
}

void TNumGridModelPrivate::CellsChanged(TNumGridModel* M) {
    TNumGridModelPrivate* P = Of(M);
    P->MarkAll();
    P->Titles = true;
    P->Flush();
}

void TNumGridModelPrivate::LayoutChanged(TNumGridModel* M) {
    Of(M)->Flush();
}

TModelHold::TModelHold(TNumGridPrivate* D) : M(D->Model) {
    if (!M) return;
    Unwinding = std::uncaught_exceptions();
    ++TNumGridModelPrivate::Of(M)->Hold;
}

// Signals are no place for exceptions (Qt does not carry them through its connections); one from
// a host's slot must not turn an unwinding grid operation into a termination either.
TModelHold::~TModelHold() {
    if (!M) return;
    TNumGridModelPrivate* P = TNumGridModelPrivate::Of(M);
    --P->Hold;
    // An operation cut short by an exception may have changed any cell on its way.
    if (std::uncaught_exceptions() > Unwinding) P->MarkAll();
    try {
        P->Flush();
    } catch (...) {
    }
}

TModelRowsChange::TModelRowsChange(TNumGridPrivate* D, TKind AKind, int First, int ACount, int To)
    : M(D->Model), Kind(AKind), Count(ACount) {
    if (!M) return;
    Unwinding = std::uncaught_exceptions();
    TNumGridModelPrivate* P = TNumGridModelPrivate::Of(M);
    if (!P->Held() && Count > 0) Announced = P->Announce(Kind, First, Count, To);
    ++P->Hold;
}

void TModelRowsChange::Done() {
    if (!M || !Announced) return;
    Announced = false;
    TNumGridModelPrivate::Of(M)->Complete(Kind, Count);
}

TModelRowsChange::~TModelRowsChange() {
    if (!M) return;
    TNumGridModelPrivate* P = TNumGridModelPrivate::Of(M);
    --P->Hold;
    try {
        if (std::exchange(Announced, false)) P->Complete(Kind, Count);
        // An operation cut short by an exception: its rows may not be where it announced them.
        if (std::uncaught_exceptions() > Unwinding) P->MarkAll();
        // An operation that did something else than it announced is caught up here as well.
        P->Flush();
    } catch (...) {
    }
}

bool TNumGridModelPrivate::Announce(TModelRowsChange::TKind Kind, int First, int Count, int To) {
    Flush(); // the views know the grid as it is before the operation
    switch (Kind) {
    case TModelRowsChange::Insert: {
        const int At = std::clamp(First - Fixed, 0, Rows);
        m->beginInsertRows({}, At, At + Count - 1);
        return true;
    }
    case TModelRowsChange::Remove:
        if (First >= Fixed && First - Fixed + Count <= Rows) {
            m->beginRemoveRows({}, First - Fixed, First - Fixed + Count - 1);
            return true;
        }
        if (First >= 0 && First < Fixed && Count == 1 && Rows > 0) {
            // A fixed row removed takes the first data row into the fixed rows.
            m->beginRemoveRows({}, 0, 0);
            return true;
        }
        return false;
    case TModelRowsChange::Move: {
        const int From = First - Fixed, Dest = To - Fixed;
        return Count == 1 && From != Dest && std::min(From, Dest) >= 0 && std::max(From, Dest) < Rows &&
               m->beginMoveRows({}, From, From, {}, Dest > From ? Dest + 1 : Dest);
    }
    }
    return false;
}

void TNumGridModelPrivate::Complete(TModelRowsChange::TKind Kind, int Count) {
    switch (Kind) {
    case TModelRowsChange::Insert:
        Rows += Count;
        m->endInsertRows();
        break;
    case TModelRowsChange::Remove:
        Rows -= Count;
        m->endRemoveRows();
        break;
    case TModelRowsChange::Move:
        m->endMoveRows();
        break;
    }
}

// ---- reading ---------------------------------------------------------------------------------------------

std::optional<double> TNumGridModelPrivate::BaseValue(int C, int R) const {
    // The column's reading takes text that is no number for 0; the model says that there is none.
    // A cell holding its value holds a number.
    const TNumColumn* Column = D->FColumns->Items(C);
    if (Column && !Column->OnExprCheckVariable() && D->Store.Contains(C, R) &&
        !D->Store.At(C, R).HasValue()) {
        const QString Text = D->Store.Cell(C, R).trimmed();
        Extended Probe = 0.0L;
        if (!Text.isEmpty() && !TryQX_StrToFloat(Text, Probe)) return std::nullopt;
    }
    try {
        return D->QuietValue(C, R);
    } catch (...) {
        return std::nullopt;
    }
}

TNumGridModel* TNumGrid::Model() const {
    TNumGridPrivate* D = Priv();
    if (!D->Model) D->Model = new TNumGridModel(const_cast<TNumGrid*>(this));
    return D->Model;
}

TNumGridModel::TNumGridModel(TNumGrid* Grid)
    : QAbstractTableModel(Grid), d(std::make_unique<TNumGridModelPrivate>(this, Grid)) {}

TNumGridModel::~TNumGridModel() {
    if (d->D->Model == this) d->D->Model = nullptr;
}

TNumGrid* TNumGridModel::Grid() const {
    return d->Grid;
}

int TNumGridModel::rowCount(const QModelIndex& Parent) const {
    return Parent.isValid() ? 0 : d->Rows;
}

int TNumGridModel::columnCount(const QModelIndex& Parent) const {
    return Parent.isValid() ? 0 : d->Cols;
}

QVariant TNumGridModel::data(const QModelIndex& Index, int Role) const {
    if (!Index.isValid() || Index.model() != this || Index.row() >= d->Rows || Index.column() >= d->Cols)
        return {};
    const int C = Index.column(), R = Index.row() + d->Fixed;
    const TCellStore& Store = d->D->Store;
    // Between a change and the signal that tells it (while the grid updates) the counts may differ.
    if (!Store.Contains(C, R)) return {};
    const TNumColumn* Column = d->D->FColumns ? d->D->FColumns->Items(C) : nullptr;
    const bool Numeric = Column && !Column->StringCol();
    switch (Role) {
    case Qt::DisplayRole:
        return Store.Cell(C, R);
    case Qt::EditRole:
        if (Column && Column->CheckBoxCol()) return TNumGrid::StringCheckedStatus(Store.Cell(C, R));
        if (!Numeric) return Store.Cell(C, R);
        if (const auto Base = d->BaseValue(C, R)) return static_cast<double>(ShownOf(Column, *Base));
        return {};
    case BaseValueRole:
        if (!Numeric) return {};
        if (const auto Base = d->BaseValue(C, R)) return *Base;
        return {};
    case Qt::CheckStateRole:
        if (!Column || !Column->CheckBoxCol()) return {};
        return TNumGrid::StringCheckedStatus(Store.Cell(C, R)) ? Qt::Checked : Qt::Unchecked;
    case Qt::TextAlignmentRole:
        if (!Column) return {};
        return QVariant::fromValue(ToQtAlignment(Column->Alignment()));
    default:
        return {};
    }
}

QVariant TNumGridModel::headerData(int Section, Qt::Orientation Orientation, int Role) const {
    if (Orientation == Qt::Vertical) {
        if (Role != Qt::DisplayRole || Section < 0 || Section >= d->Rows) return {};
        return Section + d->Fixed;
    }
    const TNumColumn* Column =
        Section >= 0 && Section < d->Cols && d->D->FColumns ? d->D->FColumns->Items(Section) : nullptr;
    if (!Column) return {};
    if (Role == Qt::DisplayRole)
        return Column->TitleString().replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    if (Role == Qt::TextAlignmentRole)
        return QVariant::fromValue(ToQtAlignment(Column->Title()->Alignment()));
    return {};
}

QHash<int, QByteArray> TNumGridModel::roleNames() const {
    QHash<int, QByteArray> Names = QAbstractTableModel::roleNames();
    Names.insert(BaseValueRole, QByteArrayLiteral("baseValue"));
    return Names;
}

Qt::ItemFlags TNumGridModel::flags(const QModelIndex& Index) const {
    if (!Index.isValid() || Index.model() != this || Index.row() >= d->Rows || Index.column() >= d->Cols)
        return Qt::NoItemFlags;
    Qt::ItemFlags F = Qt::ItemIsSelectable | Qt::ItemIsEnabled | Qt::ItemNeverHasChildren;
    const int C = Index.column(), R = Index.row() + d->Fixed;
    if (d->Fixed != d->D->FFixedRows || !d->D->CellEditable(C, R)) return F;
    const TNumColumn* Column = d->D->FColumns->Items(C);
    return F | (Column && Column->CheckBoxCol() ? Qt::ItemIsUserCheckable : Qt::ItemIsEditable);
}

// ---- editing ---------------------------------------------------------------------------------------------

bool TNumGridModel::setData(const QModelIndex& Index, const QVariant& Value, int Role) {
    if (!Index.isValid() || Index.model() != this || Index.row() >= d->Rows || Index.column() >= d->Cols)
        return false;
    // While the views have not been told of a change of the fixed rows, the index means another row.
    if (d->Fixed != d->D->FFixedRows) return false;
    return d->SetCell(Index.column(), Index.row() + d->Fixed, Value, Role);
}

bool TNumGridModelPrivate::SetCell(int C, int R, const QVariant& Value, int Role) {
    TNumColumn* Column = D->FColumns ? D->FColumns->Items(C) : nullptr;
    if (!Column || !D->CellEditable(C, R) || !Value.isValid()) return false;
    const bool AsText = Role == Qt::EditRole || Role == Qt::DisplayRole;
    QString Text;
    std::optional<Extended> Number; // a numeric column's new value, in base units
    if (Column->CheckBoxCol()) {
        bool Checked = false;
        if (Role == Qt::CheckStateRole) {
            bool Ok = false;
            const int State = Value.toInt(&Ok);
            if (!Ok || (State != Qt::Checked && State != Qt::Unchecked)) return false;
            Checked = State == Qt::Checked;
        } else if (AsText && IsText(Value)) {
            Checked = TNumGrid::StringCheckedStatus(Value.toString());
        } else if (AsText && Value.canConvert<bool>()) {
            Checked = Value.toBool();
        } else {
            return false;
        }
        Text = Checked ? QStringLiteral("TRUE") : QStringLiteral("FALSE");
    } else if (Column->StringCol()) {
        if (!AsText || !Value.canConvert<QString>()) return false;
        Text = Value.toString();
    } else {
        const bool Base = Role == TNumGridModel::BaseValueRole;
        if (!AsText && !Base) return false;
        Extended V = 0.0L;
        if (IsText(Value)) {
            const QString Typed = Value.toString();
            if (!TryQX_StrToFloat(Typed.trimmed(), V)) {
                // An expression column keeps an expression as typed, once it evaluates.
                if (Base || !Column->OnExprCheckVariable() || Typed.trimmed().isEmpty()) return false;
                try {
                    Extended Probe = 0.0L;
                    Column->SetValuefromStr(R, Typed, Probe, true);
                } catch (...) {
                    return false;
                }
                Text = Typed;
            }
        } else {
            bool Ok = false;
            V = Value.toDouble(&Ok);
            if (!Ok) return false;
        }
        if (Text.isNull()) {
            if (!std::isfinite(V)) return false;
            if (!Base) V = BaseOf(Column, V);
            // Clamped as the grid's checks clamp a typed number, then formatted as they reformat it.
            TNumGridPrivate::Of(Column)->Clamp(V);
            Number = V;
            Text = Column->GetValueString(R, V, true);
        }
    }
    const QString Old = Grid->Cells(C, R);
    const bool NewText = Text != Old || Text.isNull() != Old.isNull();
    {
        TGridUndoStep Step(D, R, 1, "Edit cell");
        // A number keeps its exact value beside its text (deliberate deviation 4), even when the
        // text stays the same.
        if (Number)
            Grid->SetDValues(C, R, *Number);
        else if (NewText)
            Grid->SetCells(C, R, Text);
    }
    if (!NewText) {
        if (Number) TNumGridModelPrivate::CellChanged(m, C, R); // the value may have changed
        return true;
    }
    // As a committed edit once the cell is left; the current cell's edit is then reported already.
    if (C == D->FCol && R == D->FRow) D->OldCelltxt = Grid->Cells(C, R);
    if (D->FOnCellTxtChange) D->FOnCellTxtChange(Grid, C, R, Old);
    Q_EMIT Grid->cellTextChanged(C, R, Old);
    return true;
}

} // namespace qxnum

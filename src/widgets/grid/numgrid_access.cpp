// The grid as an accessible table: data rows and columns, the title row and the fixed column as
// headers, one accessible cell per data cell (made on demand).
#include "numgrid_view_p.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QHash>

namespace qxnum {

namespace {

QString Flat(const QString& S) {
    QString T = S;
    return T.replace(QStringLiteral("\r\n"), QStringLiteral(" "));
}

class TGridAccessible;

class TGridCellAccessible : public QAccessibleInterface, public QAccessibleTableCellInterface {
public:
    TGridCellAccessible(TNumGrid* Grid, int Row, int Column) : FGrid(Grid), FRow(Row), FColumn(Column) {}

    bool isValid() const override { return !FGrid.isNull(); }
    QObject* object() const override { return nullptr; }
    QAccessibleInterface* parent() const override { return QAccessible::queryAccessibleInterface(FGrid); }
    QAccessibleInterface* child(int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }
    QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    QString text(QAccessible::Text T) const override {
        if (!FGrid || (T != QAccessible::Name && T != QAccessible::Value)) return {};
        return Flat(FGrid->Cells(GridCol(), GridRow()));
    }
    void setText(QAccessible::Text, const QString&) override {}
    QRect rect() const override {
        if (!FGrid) return {};
        const QRect R = FGrid->CellRect(GridCol(), GridRow());
        return R.isEmpty() ? QRect() : QRect(FGrid->viewport()->mapToGlobal(R.topLeft()), R.size());
    }
    QAccessible::Role role() const override { return QAccessible::Cell; }
    QAccessible::State state() const override {
        QAccessible::State S;
        if (!FGrid) return S;
        S.selectable = true;
        S.focusable = true;
        S.selected = isSelected();
        S.focused = S.selected && FGrid->hasFocus();
        S.invisible = rect().isEmpty();
        S.readOnly = !FGrid->Options().testFlag(goEditing);
        return S;
    }
    void* interface_cast(QAccessible::InterfaceType T) override {
        return T == QAccessible::TableCellInterface ? static_cast<QAccessibleTableCellInterface*>(this)
                                                    : nullptr;
    }

    bool isSelected() const override {
        return FGrid && FGrid->Col() == GridCol() && FGrid->Row() == GridRow();
    }
    QList<QAccessibleInterface*> columnHeaderCells() const override { return {}; }
    QList<QAccessibleInterface*> rowHeaderCells() const override { return {}; }
    int columnIndex() const override { return FColumn; }
    int rowIndex() const override { return FRow; }
    int columnExtent() const override { return 1; }
    int rowExtent() const override { return 1; }
    QAccessibleInterface* table() const override { return parent(); }

private:
    int GridCol() const { return FColumn + FGrid->FixedCols(); }
    int GridRow() const { return FRow + FGrid->FixedRows(); }
    QPointer<TNumGrid> FGrid;
    int FRow, FColumn;
};

class TGridAccessible : public QAccessibleWidget, public QAccessibleTableInterface {
public:
    explicit TGridAccessible(TNumGrid* Grid) : QAccessibleWidget(Grid, QAccessible::Table) {}
    ~TGridAccessible() override { ClearCells(); }

    TNumGrid* Grid() const { return static_cast<TNumGrid*>(widget()); }

    void* interface_cast(QAccessible::InterfaceType T) override {
        if (T == QAccessible::TableInterface) return static_cast<QAccessibleTableInterface*>(this);
        return QAccessibleWidget::interface_cast(T);
    }

    int childCount() const override { return rowCount() * columnCount(); }
    QAccessibleInterface* child(int Index) const override {
        const int Cols = columnCount();
        if (Index < 0 || Cols == 0 || Index >= childCount()) return nullptr;
        return cellAt(Index / Cols, Index % Cols);
    }
    int indexOfChild(const QAccessibleInterface* Child) const override {
        if (!Child || Child->role() != QAccessible::Cell) return -1;
        auto* Cell = const_cast<QAccessibleInterface*>(Child)->tableCellInterface();
        return Cell ? Cell->rowIndex() * columnCount() + Cell->columnIndex() : -1;
    }
    QAccessibleInterface* childAt(int X, int Y) const override {
        const QPoint P = Grid()->viewport()->mapFromGlobal(QPoint(X, Y));
        int C = 0, R = 0;
        if (!Grid()->MouseToCell(P, C, R) || C < Grid()->FixedCols() || R < Grid()->FixedRows())
            return nullptr;
        return cellAt(R - Grid()->FixedRows(), C - Grid()->FixedCols());
    }

    // QAccessibleTableInterface
    QAccessibleInterface* caption() const override { return nullptr; }
    QAccessibleInterface* summary() const override { return nullptr; }
    int columnCount() const override { return std::max(0, Grid()->ColCount() - Grid()->FixedCols()); }
    int rowCount() const override { return std::max(0, Grid()->RowCount() - Grid()->FixedRows()); }
    QAccessibleInterface* cellAt(int Row, int Column) const override {
        if (Row < 0 || Column < 0 || Row >= rowCount() || Column >= columnCount()) return nullptr;
        const qint64 Key = (qint64(Row) << 20) | Column;
        auto It = FCells.constFind(Key);
        if (It != FCells.constEnd()) return QAccessible::accessibleInterface(*It);
        auto* Cell = new TGridCellAccessible(Grid(), Row, Column);
        const QAccessible::Id Id = QAccessible::registerAccessibleInterface(Cell);
        FCells.insert(Key, Id);
        return Cell;
    }
    QString columnDescription(int Column) const override {
        if (Grid()->FixedRows() == 0) return {};
        return Flat(Grid()->Cells(Column + Grid()->FixedCols(), 0));
    }
    QString rowDescription(int Row) const override {
        if (Grid()->FixedCols() == 0) return {};
        return Flat(Grid()->Cells(0, Row + Grid()->FixedRows()));
    }
    int selectedCellCount() const override { return rowCount() > 0 && columnCount() > 0 ? 1 : 0; }
    int selectedColumnCount() const override { return 0; }
    int selectedRowCount() const override { return 0; }
    QList<QAccessibleInterface*> selectedCells() const override {
        QAccessibleInterface* C =
            cellAt(Grid()->Row() - Grid()->FixedRows(), Grid()->Col() - Grid()->FixedCols());
        return C ? QList<QAccessibleInterface*>{C} : QList<QAccessibleInterface*>{};
    }
    QList<int> selectedColumns() const override { return {}; }
    QList<int> selectedRows() const override { return {}; }
    bool isColumnSelected(int) const override { return false; }
    bool isRowSelected(int) const override { return false; }
    bool selectRow(int Row) override {
        Grid()->SetRow(Row + Grid()->FixedRows());
        return true;
    }
    bool selectColumn(int Column) override {
        Grid()->SetCol(Column + Grid()->FixedCols());
        return true;
    }
    bool unselectRow(int) override { return false; }
    bool unselectColumn(int) override { return false; }
    void modelChange(QAccessibleTableModelChangeEvent*) override { ClearCells(); }

private:
    void ClearCells() {
        for (QAccessible::Id Id : std::as_const(FCells))
            QAccessible::deleteAccessibleInterface(Id);
        FCells.clear();
    }
    mutable QHash<qint64, QAccessible::Id> FCells;
};

QAccessibleInterface* GridAccessibleFactory(const QString& ClassName, QObject* Object) {
    if (ClassName == QLatin1String("qxnum::TNumGrid") || qobject_cast<TNumGrid*>(Object)) {
        if (auto* G = qobject_cast<TNumGrid*>(Object)) return new TGridAccessible(G);
    }
    return nullptr;
}

struct TInstallFactory {
    TInstallFactory() { QAccessible::installFactory(GridAccessibleFactory); }
} InstallFactory;

} // namespace

void TNumGridPrivate::NotifyAccessibleFocus() {
    if (!QAccessible::isActive()) return;
    QAccessibleInterface* Iface = QAccessible::queryAccessibleInterface(q);
    auto* Table = Iface ? Iface->tableInterface() : nullptr;
    if (!Table) return;
    QAccessibleInterface* Cell = Table->cellAt(FRow - FFixedRows, FCol - FFixedCols);
    if (!Cell) return;
    QAccessibleEvent Event(Cell, QAccessible::Focus);
    QAccessible::updateAccessibility(&Event);
}

void TNumGridPrivate::NotifyAccessibleModel() {
    if (!QAccessible::isActive()) return;
    if (QAccessibleInterface* Iface = QAccessible::queryAccessibleInterface(q)) {
        if (QAccessibleTableInterface* Table = Iface->tableInterface()) {
            QAccessibleTableModelChangeEvent Event(q, QAccessibleTableModelChangeEvent::ModelReset);
            Table->modelChange(&Event);
        }
    }
}

} // namespace qxnum

/// \file
/// The numeric grid as a Qt item model, for Qt's views, proxies, mappers and plots.
///
/// Shape
///   TNumGrid::Model() makes the model on first use; the grid owns it, and a grid that is never
///   asked for one pays nothing for it. One model row per data row (grid rows FixedRows ..
///   RowCount - 1, model row 0 being grid row FixedRows), one model column per grid column, fixed
///   columns included.
///
/// Roles
///   Qt::DisplayRole      the cell text, exactly as the grid holds it.
///   Qt::EditRole         a numeric column: the value in the column's display units (double), read
///                        as BaseValueRole and expressed in the units the cell shows; a string
///                        column: the text; a check-box column: a bool.
///   BaseValueRole        a numeric column: the value in base units (double), read as GetDValues
///                        reads it (clamped to the column's limits) but quietly: no message and no
///                        reformat. An empty cell reads 0; text that is no number, and every string
///                        column, give an invalid QVariant.
///   Qt::CheckStateRole   check-box columns only.
///   Qt::TextAlignmentRole the column's Alignment.
///   Horizontal header: what the grid's title row shows for the column, its caption lines and then
///   its unit text, each on a line of its own ("Pressure\n[bar]"): TNumColumn::TitleString with
///   "\n" for the caption's "\r\n". Its alignment is the title's. Vertical header: the grid row
///   number (FixedRows + section).
///
/// Editing (setData)
///   A cell is edited through the model as the in-place editor edits it: only cells the user may
///   edit (goEditing on, no fixed column, the column not ReadOnly) take a value. A numeric column
///   takes a number in display units (EditRole, also as text) or in base units (BaseValueRole);
///   it is clamped to the column's limits as the grid's checks clamp it and formatted by the
///   column. A string column takes text, a check-box column a bool (EditRole) or a check state.
///   An accepted value is one step on the grid's undo stack and fires OnCellTxtChange and
///   cellTextChanged, as a committed edit does. A refusal (text that is no number, a value that is
///   no finite number, a cell the user could not edit, a role the column does not take) shows no
///   message: setData returns false and nothing changes.
///
/// Signals
///   Every change made through the grid reaches the model's signals while it happens:
///   - one cell set (SetCells, SetDValues, an edit, a toggled check box): dataChanged for that cell;
///   - InsertRow, DeleteRow (DeleteARow), MoveRow, and undo or redo of a step that added or removed
///     rows: rowsInserted / rowsRemoved / rowsMoved where it happened, told before the grid's
///     events of the operation (OnCellChange, OnNewRow) run, then dataChanged over the table;
///   - RowCount, ColCount or FixedRows changed by any other means (SetRowCount, a read): rows and
///     columns inserted or removed at the end (for FixedRows: at the top), then dataChanged over
///     the table;
///   - many cells at once (a paste, a file read, a unit switch, InitCells, a column property, any
///     undo or redo): dataChanged over the table;
///   - titles (ResetTitles, a caption or unit text): headerDataChanged for every column.
///   Between BeginUpdate and EndUpdate the model stays silent and keeps the shape its views know;
///   EndUpdate tells them everything in one round, as does each file read and each refresh of the
///   grid's checks. The model never resets, so persistent indexes (a QDataWidgetMapper's row, a
///   selection) stay on their rows.
///
///   The grid's own view keeps drawing from the cells directly: it needs no roles, and its paint
///   must stay as cheap as it is on 100,000 rows.
#pragma once

#include <qxnum/widgets_export.h>

#include <QAbstractTableModel>

#include <memory>

namespace qxnum {

class TNumGrid;
class TNumGridModelPrivate;

class QXNUM_WIDGETS_EXPORT TNumGridModel : public QAbstractTableModel {
    Q_OBJECT

public:
    enum Roles { BaseValueRole = Qt::UserRole + 1 };
    Q_ENUM(Roles)

    ~TNumGridModel() override;

    TNumGrid* Grid() const;

    int rowCount(const QModelIndex& Parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& Parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& Index, int Role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex& Index, const QVariant& Value, int Role = Qt::EditRole) override;
    Qt::ItemFlags flags(const QModelIndex& Index) const override;
    QVariant headerData(int Section, Qt::Orientation Orientation, int Role = Qt::DisplayRole) const override;
    QHash<int, QByteArray> roleNames() const override;

private:
    friend class TNumGrid;
    friend class TNumGridModelPrivate;
    explicit TNumGridModel(TNumGrid* Grid);
    const std::unique_ptr<TNumGridModelPrivate> d;
};

} // namespace qxnum

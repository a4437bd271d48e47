// The grid's undo history: each step keeps the rows that an edit, a paste or a row operation
// changed, before and after, so that undo and redo splice them back whatever the table's size.
#include "numgrid_view_p.h"

#include <QCoreApplication>
#include <QUndoStack>

#include <algorithm>

namespace qxnum {

namespace {

using TRows = std::vector<TCellRow>;

TRows TakeRows(const TCellStore& Store, int First, int Count) {
    TRows Rows;
    Rows.reserve(static_cast<size_t>(std::max(Count, 0)));
    for (int R = First; R < First + Count; ++R)
        Rows.push_back(Store.Row(R));
    return Rows;
}

class TGridUndoCommand : public QUndoCommand {
public:
    TGridUndoCommand(TNumGridPrivate* Grid, const QString& Text, int At, TRows Before, TRows After,
                     QPoint From, QPoint To)
        : QUndoCommand(Text), D(Grid), First(At), Old(std::move(Before)), New(std::move(After)),
          CellBefore(From), CellAfter(To) {}

    void undo() override {
        if (FirstUndo) {
            // What followed the step without a step of its own (a reformat by the grid's checks, a
            // move of the current cell) belongs to it: redo returns to the table as it was undone.
            FirstUndo = false;
            New = TakeRows(D->Store, First, static_cast<int>(New.size()));
            CellAfter = QPoint(D->FCol, D->FRow);
        }
        Apply(New, Old, CellBefore);
    }
    void redo() override {
        // The step has happened when it is pushed.
        if (Pushed) {
            Pushed = false;
            return;
        }
        Apply(Old, New, CellAfter);
    }

private:
    void Apply(const TRows& Remove, const TRows& Insert, QPoint Cell) {
        D->ApplyUndo(First, static_cast<int>(Remove.size()), Insert, Cell);
    }

    TNumGridPrivate* D;
    int First;
    TRows Old, New;
    QPoint CellBefore, CellAfter;
    bool Pushed = true;
    bool FirstUndo = true;
};

} // namespace

void TNumGridPrivate::ApplyUndo(int First, int Remove, const std::vector<TCellRow>& Insert, QPoint Cell) {
    const int OldRows = q->RowCount();
    if (First + Remove > OldRows) return; // cannot happen: shape changes clear the history
    ApplyingUndo = true;
    if (View->EditorOpen) CancelEdit();
    Store.Splice(First, Remove, Insert);
    const int Rows = q->RowCount(), Cols = q->ColCount();
    FRow = std::clamp(Cell.y(), std::min(FFixedRows, std::max(Rows - 1, 0)), std::max(Rows - 1, 0));
    FCol = std::clamp(Cell.x(), std::min(FFixedCols, std::max(Cols - 1, 0)), std::max(Cols - 1, 0));
    View->AnchorCol = FCol;
    View->AnchorRow = FRow;
    View->CellEdited = false;
    OldCelltxt = q->Cells(FCol, FRow);
    if (Rows != OldRows) q->SizeChanged(Cols, OldRows);
    LayoutChanged();
    CellsChanged();
    ScrollIntoView(FCol, FRow);
    ApplyingUndo = false;
}

QUndoStack* TNumGridPrivate::UndoStack() const {
    if (!Undo) {
        Undo = new QUndoStack(q);
        // Each step holds only the rows it changed, but a paste may hold many.
        Undo->setUndoLimit(100);
    }
    return Undo;
}

void TNumGridPrivate::ShapeChanged() {
    if (Undo && UndoDepth == 0 && !ApplyingUndo) Undo->clear();
}

TGridUndoStep::TGridUndoStep(TNumGridPrivate* Grid, int At, int Count, const char* What)
    : D(Grid), Text(What) {
    if (D->UndoDepth++ > 0 || D->ApplyingUndo) return;
    Active = true;
    RowsBefore = D->Store.RowCount();
    ColsBefore = D->Store.ColCount();
    FixedBefore = D->FFixedRows;
    ColBefore = D->FCol;
    RowBefore = D->FRow;
    First = std::clamp(At, 0, RowsBefore);
    Count = Count < 0 ? RowsBefore - First : std::min(Count, RowsBefore - First);
    Old = TakeRows(D->Store, First, Count);
}

TGridUndoStep::~TGridUndoStep() {
    --D->UndoDepth;
    if (!Active) return;
    const TCellStore& Store = D->Store;
    const int Count = static_cast<int>(Old.size()) + Store.RowCount() - RowsBefore;
    if (Store.ColCount() != ColsBefore || D->FFixedRows != FixedBefore || Count < 0 ||
        First + Count > Store.RowCount()) {
        // The operation changed more than rows: the earlier steps no longer apply.
        if (D->Undo) D->Undo->clear();
        return;
    }
    // Keep only the rows that differ: a common head and tail are the same rows before and after.
    const int OldCount = static_cast<int>(Old.size());
    int Head = 0;
    while (Head < OldCount && Head < Count && Old[static_cast<size_t>(Head)] == Store.Row(First + Head))
        ++Head;
    int Tail = 0;
    while (Tail < OldCount - Head && Tail < Count - Head &&
           Old[static_cast<size_t>(OldCount - 1 - Tail)] == Store.Row(First + Count - 1 - Tail))
        ++Tail;
    if (Head == OldCount && Head == Count) return; // nothing changed
    TRows Before(std::make_move_iterator(Old.begin() + Head), std::make_move_iterator(Old.end() - Tail));
    TRows After = TakeRows(Store, First + Head, Count - Head - Tail);
    D->UndoStack()->push(new TGridUndoCommand(D, QCoreApplication::translate("TNumGrid", Text), First + Head,
                                              std::move(Before), std::move(After),
                                              QPoint(ColBefore, RowBefore), QPoint(D->FCol, D->FRow)));
}

QUndoStack* TNumGrid::UndoStack() const {
    return Priv()->UndoStack();
}

} // namespace qxnum

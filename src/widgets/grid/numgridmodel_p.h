// What the grid tells its model face (numgridmodel.cpp). Not installed.
//
// The grid changes its cells first and says so afterwards (TNumGridPrivate::CellChanged,
// CellsChanged, LayoutChanged). The model therefore keeps its own idea of its shape (rows, columns,
// fixed rows) and answers rowCount and columnCount from it until it has told its views of a change:
// a view never sees a count that no signal announced. Row operations that know where they act
// announce themselves beforehand (TModelRowsChange), everything else is caught up afterwards.
#pragma once

#include "numgrid_p.h"

#include <qxnum/widgets/numgridmodel.h>

#include <QPointer>

#include <climits>
#include <exception>
#include <optional>

namespace qxnum {

// Holds the model's signals for the scope: what changes inside is told once at its end.
class TModelHold {
public:
    explicit TModelHold(TNumGridPrivate* D);
    ~TModelHold();
    TModelHold(const TModelHold&) = delete;
    TModelHold& operator=(const TModelHold&) = delete;

private:
    QPointer<TNumGridModel> M;
    int Unwinding = 0; // exceptions in flight when the scope began
};

// A row operation at a known place, announced to the model before the grid changes anything and
// completed at the end of the scope (whatever happens in between, even an exception): rows
// inserted at grid row First, the row First removed, or the row First moved to To. An operation
// the model cannot describe exactly (rows in the fixed area, the grid updating, Count 0) only holds
// the model, which then catches up as after any other change.
class TModelRowsChange {
public:
    enum TKind { Insert, Remove, Move };
    TModelRowsChange(TNumGridPrivate* D, TKind Kind, int First, int Count, int To = 0);
    ~TModelRowsChange();
    // The rows are in place: the views are told now, so that the grid's events that follow see
    // them; the rest of the scope is still held.
    void Done();
    TModelRowsChange(const TModelRowsChange&) = delete;
    TModelRowsChange& operator=(const TModelRowsChange&) = delete;

private:
    QPointer<TNumGridModel> M;
    TKind Kind = Insert;
    int Count = 0;
    bool Announced = false;
    int Unwinding = 0; // exceptions in flight when the scope began
};

class TNumGridModelPrivate {
public:
    TNumGridModelPrivate(TNumGridModel* Model, TNumGrid* Grid);

    TNumGridModel* const m;
    TNumGrid* const Grid;
    TNumGridPrivate* const D;

    // The shape the views know.
    int Rows = 0, Cols = 0, Fixed = 0;
    // Signals are held while > 0 (and while the grid is updating); what they would have said is
    // kept below and said once when the last hold ends.
    int Hold = 0;
    // Cells changed since the last signal (grid coordinates; none while Top > Bottom).
    int Top = 1, Bottom = 0, Left = 1, Right = 0;
    bool Titles = false;

    bool Held() const { return Hold > 0 || D->Updating; }
    void MarkCells(int C0, int R0, int C1, int R1);
    void MarkAll() { MarkCells(0, 0, INT_MAX, INT_MAX); }
    // Brings the views up to date: the shape first, then the cells and the titles.
    void Flush();
    void SyncShape();
    // A cell's value in base units, read quietly; nullopt for text that is no number.
    std::optional<double> BaseValue(int C, int R) const;
    bool SetCell(int C, int R, const QVariant& Value, int Role);
    // The begin and end of a TModelRowsChange; false when the change cannot be described exactly.
    bool Announce(TModelRowsChange::TKind Kind, int First, int Count, int To);
    void Complete(TModelRowsChange::TKind Kind, int Count);

    // The notifications; each costs a comparison while the model is held.
    static void CellChanged(TNumGridModel* M, int C, int R);
    static void CellsChanged(TNumGridModel* M);
    static void LayoutChanged(TNumGridModel* M);
    static TNumGridModelPrivate* Of(TNumGridModel* M) { return M->d.get(); }
};

} // namespace qxnum

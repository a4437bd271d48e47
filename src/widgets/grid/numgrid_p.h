// State of the numeric grid, shared by its model (numgrid.cpp), files (numgrid_io.cpp) and view
// (numgrid_view*.cpp). Not installed.
#pragma once

#include "fieldbase_p.h"

#include <qxnum/widgets/numgrid.h>

#include <QPointer>

class QKeyEvent;
class QPainter;
class QUndoStack;

namespace qxnum {
class TNumColumnPrivate;
}

#include <algorithm>
#include <cstring>
#include <functional>
#include <limits>
#include <memory>
#include <vector>

namespace qxnum {

// Whether a grid of Cols x Rows is within the limits: MaxCellCount() cells, counting a row without
// columns or a column without rows as one cell, and MaxGridCols columns, since each column is an
// object of its own (a short file must not build millions of them in a one-row grid).
constexpr int MaxGridCols = 16384;
inline bool GridSizeAllowed(qint64 Cols, qint64 Rows) {
    return Cols >= 0 && Rows >= 0 && Cols <= MaxGridCols &&
           std::max<qint64>(Cols, 1) * std::max<qint64>(Rows, 1) <= TNumGrid::MaxCellCount();
}

// One cell: its text, and beside a numeric cell's text the base value that text was formatted
// from or parsed to, valid while the text is unchanged (deliberate deviation 4). The value keeps the
// significant bytes of an Extended only, so that a cell stays at 40 bytes on x86-64.
class TCell {
public:
    TCell() = default;
    TCell(const QString& Text) : FText(Text) {} // NOLINT: a text alone is a cell without a value

    const QString& Text() const { return FText; }
    bool HasValue() const { return FHasValue; }
    Extended Value() const {
        Extended V = 0.0L;
        std::memcpy(&V, FValue, ValueBytes);
        return V;
    }

    // A new text: its value is no longer known.
    void SetText(const QString& Text) {
        FText = Text;
        if (FText.capacity() > FText.size() + 3) FText.squeeze();
        FHasValue = false;
    }
    void SetText(QString&& Text) {
        FText = std::move(Text);
        if (FText.capacity() > FText.size() + 3) FText.squeeze();
        FHasValue = false;
    }
    void SetText(QString&& Text, Extended Value) {
        SetText(std::move(Text));
        SetValue(Value);
    }
    // A text formatted from Value, or Value parsed from the unchanged text.
    void SetText(const QString& Text, Extended Value) {
        SetText(Text);
        SetValue(Value);
    }
    void SetValue(Extended Value) {
        std::memcpy(FValue, &Value, ValueBytes);
        FHasValue = true;
    }
    void Clear() {
        FText.clear();
        FHasValue = false;
    }

    // Same text and same value (undo compares rows with it); HasChanged compares texts only.
    friend bool operator==(const TCell& A, const TCell& B) {
        return A.FText == B.FText && A.FText.isNull() == B.FText.isNull() && A.FHasValue == B.FHasValue &&
               (!A.FHasValue || std::memcmp(A.FValue, B.FValue, ValueBytes) == 0);
    }

private:
    static constexpr size_t ValueBytes =
        std::numeric_limits<Extended>::digits == 64 ? size_t(10) : sizeof(Extended);
    QString FText;
    unsigned char FValue[ValueBytes] = {};
    bool FHasValue = false;
};

static_assert(sizeof(void*) != 8 || std::numeric_limits<Extended>::digits != 64 || sizeof(TCell) == 40,
              "a cell is a text and 11 bytes");

using TCellRow = std::vector<TCell>;

// The cells, row-major as a vector of rows, so that moving, inserting and deleting rows moves row
// handles, not texts. The object slots are made only when a host sets one. Each column has a
// version that changes with any change of its cells (a row operation changes all of them), so
// that what is derived from a column (its order for the table look-up, a finished check) knows
// when it is stale.
class TCellStore {
public:
    int ColCount() const { return FColCount; }
    int RowCount() const { return static_cast<int>(FRows.size()); }
    bool Contains(int C, int R) const { return C >= 0 && R >= 0 && C < FColCount && R < RowCount(); }

    const QString& Cell(int C, int R) const { return At(C, R).Text(); }
    const TCell& At(int C, int R) const { return FRows[static_cast<size_t>(R)][static_cast<size_t>(C)]; }
    const TCellRow& Row(int R) const { return FRows[static_cast<size_t>(R)]; }

    // A new text (its value unknown), or a text with the value it stands for.
    void Put(int C, int R, const QString& Text) {
        Mut(C, R).SetText(Text);
        Touch(C);
    }
    void Put(int C, int R, const QString& Text, Extended Value) {
        Mut(C, R).SetText(Text, Value);
        Touch(C);
    }
    void Put(int C, int R, QString&& Text, Extended Value) {
        Mut(C, R).SetText(std::move(Text), Value);
        Touch(C);
    }
    // A title in row 0: no data cell changes, so the column's version stays.
    void PutTitle(int C, const QString& Text) {
        if (Cell(C, 0) != Text || Cell(C, 0).isNull()) Mut(C, 0).SetText(Text);
    }
    // A new value behind the same text (SetDValues of a value that rounds to the shown text): the
    // column's contents change.
    void Revalue(int C, int R, Extended Value) {
        Mut(C, R).SetValue(Value);
        Touch(C);
    }
    // The value parsed from a cell's unchanged text: the column's contents do not change.
    void Hold(int C, int R, Extended Value) { Mut(C, R).SetValue(Value); }
    void Clear(int C, int R) {
        Mut(C, R).Clear();
        Touch(C);
    }
    void PutCell(int C, int R, const TCell& Cell) {
        Mut(C, R) = Cell;
        Touch(C);
    }
    // Replaces a whole row (cells beyond the row's width are empty).
    void PutRow(int R, const TCellRow& Cells);

    quint64 ColumnVersion(int C) const {
        return C >= 0 && C < FColCount ? FVersions[static_cast<size_t>(C)] + FAllVersion : 0;
    }

    QObject* Object(int C, int R) const {
        return FObjects.empty() ? nullptr : FObjects[static_cast<size_t>(R)][static_cast<size_t>(C)];
    }
    void SetObject(int C, int R, QObject* O);
    void ClearObjects() { FObjects.clear(); }
    void ClearColumnObjects(int C);

    // New cells are empty; cells beyond the new size are dropped.
    void Resize(int Cols, int Rows);
    // Moves row From to position To, the rows between shifting by one (the string grid's MoveRow).
    void MoveRow(int From, int To);
    void MoveColumn(int From, int To);
    void DeleteRow(int R);
    // Replaces Remove rows from At by Insert (undo and redo); new object slots are empty.
    void Splice(int At, int Remove, std::vector<TCellRow> Insert);

    // Heap bytes held by the store, for the benchmark of its footprint.
    size_t MemoryBytes() const;

private:
    TCell& Mut(int C, int R) { return FRows[static_cast<size_t>(R)][static_cast<size_t>(C)]; }
    void Touch(int C) { ++FVersions[static_cast<size_t>(C)]; }
    void TouchAll() { ++FAllVersion; }

    int FColCount = 0;
    std::vector<TCellRow> FRows;
    std::vector<std::vector<QObject*>> FObjects; // empty, or one slot per cell
    std::vector<quint64> FVersions;              // per column
    quint64 FAllVersion = 1;
};

// A column's alignment as the grid draws it (vertically centred), for the view and the model.
inline Qt::Alignment ToQtAlignment(TAlignment A) {
    switch (A) {
    case taRightJustify:
        return Qt::AlignRight | Qt::AlignVCenter;
    case taCenter:
        return Qt::AlignHCenter | Qt::AlignVCenter;
    default:
        return Qt::AlignLeft | Qt::AlignVCenter;
    }
}

// The view's own state (scroll, editor, selection, layout caches); defined in numgrid_view_p.h.
struct TGridViewState;
struct TGridViewStateDeleter {
    void operator()(TGridViewState* S) const;
};

class TNumGridPrivate : public TFieldBasePrivate {
public:
    explicit TNumGridPrivate(TNumGrid* Q);
    ~TNumGridPrivate() override;

    TNumGrid* const q;
    TCellStore Store;

    // The string grid's state.
    int FFixedCols = 1;
    int FFixedRows = 1;
    int FCol = 1;
    int FRow = 1;
    TGridOptions FOptions =
        TGridOptions(goFixedVertLine | goFixedHorzLine | goVertLine | goHorzLine | goRangeSelect);
    int FDefaultColWidth = 64;
    int FDefaultRowHeight = 24;
    QColor FFixedColor; // invalid: the palette's button colour

    // The grid's own fields, with their values after construction.
    TRowEvent FOnRowEdit, FOnCancel, FOnRefresh, FOnPost, FOnNewRow, FAfterDeleteRow, FBeforeDeleteRow,
        FAfterInitRow;
    TCellChangeEvent FOnCellChange;
    TCellTxtChangeEvent FOnCellTxtChange;
    TNotifyEvent FAfterClear, FOnColWidthsChanged;
    TGetEditEvent FOnGetCellText;
    QStringList FColFormats;
    bool FConfirmDelete = false;
    bool FRowCountFixed = false;
    bool FAutoAddRow = false;
    bool FInsertCopyRow = false;
    std::vector<TCellRow> FCopyRows;
    bool FHasCopy = false;
    bool FAlwaysPasteFromLeftCol = false;
    bool FClearLastDelRow = false;
    bool FExtrapolate = false;
    bool FAllowDataDialog = true;
    bool FAllowPaste = true;
    TCellChangeEvent FAfterPaste;
    bool Rowheightssizing = false;
    bool ReadingFromStream = false;
    bool ResizingNumGrid = false;
    bool EditingColumns = false;
    bool FReadColTitlesFromStream = false;
    TColStretchOptions FColStretchOptions;
    TNumColumns* FColumns = nullptr; // owned through its QObject parent
    QFont FTitleFont;
    int FTitleLineCount = 2;
    bool InitializingCells = false;
    // Several columns are being initialised at once: one repaint at the end instead of one each.
    bool InitializingColumns = false;
    bool FStoreParTypes = false;
    bool FHighLightSelect = true;
    bool FIgnoreColCountRead = false;
    bool FIgnoreRowCountRead = false;
    bool FIgnoreColPropsRead = false;
    QString OldCelltxt;
    // Moves of the current cell that SelectCell has reported (CheckCellChange), and where the last
    // one ended: the navigator reports a row change only when no such report covers it.
    quint64 MovesReported = 0;
    QPoint LastReportedCell;
    TGridOptions DesignSaveOptions;
    bool Updating = false;
    bool DialogCancelled = false;
    bool Pasting_or_Copying = false;

    // Undo: the stack (made on first use), the nesting of recorded steps, and whether a step is
    // being undone or redone.
    mutable QUndoStack* Undo = nullptr;
    int UndoDepth = 0;
    bool ApplyingUndo = false;
    QUndoStack* UndoStack() const;
    // Undo and redo: replaces Remove rows from First by Insert and makes Cell the current cell.
    void ApplyUndo(int First, int Remove, const std::vector<TCellRow>& Insert, QPoint Cell);
    // The table's shape was changed outside a recorded step: the history no longer fits it.
    void ShapeChanged();

    // Runs the apply step of a read (numgrid_io.cpp): the history is cleared only once the step
    // has succeeded; a step that raises puts back the cells, counts and read column fields and
    // leaves the history as it was.
    void ApplyRead(const std::function<void()>& Apply);
    // Set while a read applies its cells: CheckCell keeps a numeric cell's text that holds no
    // number as it was read (deliberate deviation 11).
    bool KeepReadTexts = false;

    std::unique_ptr<TGridViewState, TGridViewStateDeleter> View;

    // The owning form or frame (for messages).
    QString OwnerName() const;
    // A cell text as messages quote it: a number is followed by its column's unit ("7.000 bar",
    // the unit text without its brackets; none for "[-]"), any other text stands alone.
    QString QuotedCellText(int C, const QString& Text) const;
    // A cell's value in base units, as GetDValues reads it but without its message and reformat:
    // text that is no number reads as a displayed 0, as GetDValues reads it; an expression the
    // parser cannot evaluate raises (the table look-up and the time row report for themselves).
    double QuietValue(int C, int R) const;
    // A numeric cell's base value before its column's limits and hook: the value it holds, or its
    // text read once and held from then on when it is a number (Ok false, 0, for text that is not).
    Extended RawValue(TNumColumn* Column, int C, int R, bool& Ok);
    // Writes a text formatted from Value, keeping Value beside it; reports the change when the text
    // differs.
    void PutValue(int C, int R, const QString& Text, Extended Value);
    // Checks the data cells of the columns Only (every column when empty), row by row, skipping
    // columns whose cells and settings have not changed since their last check unless Force; false
    // at the first invalid cell (reported).
    bool CheckColumns(const std::vector<int>& Only, bool Force);
    // Switches the unit system of the value-holding columns Cols, whose unit system is already
    // set, re-expressing each cell's held value (or its text read under the old unit system when
    // it holds none) in the new one.
    void SwitchColumns(const std::vector<int>& Cols, TUnitSystem AValue);
    bool ColumnChecked(const TNumColumnPrivate* P, int C) const;
    void MarkChecked(TNumColumnPrivate* P, int C) const;

    // The table look-up's copy of a column's data values (numgrid_interp.cpp), kept while the
    // column's cells, its settings and the row counts are those it was made from.
    struct TLookupColumn {
        // The state of the column it describes: its object (null once gone), cells, settings and
        // the row counts.
        QPointer<TNumColumn> Column;
        quint64 Version = 0, Stamp = 0;
        int Rows = -1, Fixed = -1;
        // Whether the values below are made for that state; until then single reads are counted,
        // so that a column read a few cells at a time between changes is not copied each time.
        bool Made = false;
        int Reads = 0;
        std::vector<double> Values; // rows Fixed .. Rows - 1
        bool Numbers = false;       // every data cell holds a number (an empty one does not)
        // The data rows after the first never fall / never rise, none NaN: the bracketing test is
        // then false up to one row and true from there on, so that row can be found by halving.
        bool Rising = false, Falling = false;
        TColumnOrder Order = coNeitherAnorD; // ColumnOrder of these values
        // Where to look for a value in such rows: the range [Lo, Hi] of the rows after the first
        // (negated when falling) cut into equal buckets; Index[b] counts the rows in the buckets
        // before b, so a key in bucket b lies between rows Index[b] and Index[b + 1].
        std::vector<quint32> Index;
        double IndexLo = 0.0, IndexScale = 0.0;
    };
    // One slot per column looked up (a slot stays where it is while others are added).
    std::vector<std::unique_ptr<TLookupColumn>> Lookup;
    // Column C's copy, made anew when stale. A caller that reads only a cell or two passes Make
    // false: it gets null until enough such reads have been counted to pay for the copy. Null too
    // when the column's values may not be kept: no such column, a text or expression column, or
    // one whose hooks may read a cell differently each time.
    const TLookupColumn* LookupColumn(TNumColumn* Column, int C, bool Make);
    const TLookupColumn* LookupColumn(int C, bool Make = true) {
        return LookupColumn(FColumns->Items(C), C, Make);
    }

    static TNumGridPrivate* Of(TNumGrid* G) { return G->Priv(); }
    // A column's state, for the grid's companions (the column lets the grid's state in).
    static TNumColumnPrivate* Of(const TNumColumn* C) { return C->Priv(); }

    // The Qt item model face (numgridmodel.cpp), made on first use: without it the notifications
    // below cost one test each.
    TNumGridModel* Model = nullptr;

    // Told by the model, done by the view (numgrid_view.cpp):
    // counts, fixed counts, widths, heights, title font or line count changed.
    void LayoutChanged();
    // Texts changed somewhere (repaint what is in view).
    void CellsChanged();
    // One cell's text changed.
    void CellChanged(int ACol, int ARow);
    // While Updating the view only notes that it is behind; this brings it up to date.
    void CatchUpView();

    // The view's workings (numgrid_view.cpp).
    TGridViewState& V() const;
    int ColWidth(int C) const; // 0 for a hidden column
    int RowHeight(int R) const;
    int FixedWidth() const;
    int FixedHeight() const;
    void UpdateTitleHeight();
    int MaxTopRow() const;
    int MaxLeftCol() const;
    void UpdateScrollBars();
    void Stretch();
    bool CellEditable(int C, int R) const;
    void PlaceEditor();
    // Opens the editor on the current cell; Initial: the typed text that replaces the cell's.
    void OpenEditor(const QString* Initial);
    void CommitEdit();
    void CancelEdit();
    // Hides the editor's widget without letting the focus wander through the grid's cells.
    void HideEditorWidget();
    // Checks the current cell when an edit changed it; false (message shown) when it is invalid.
    bool ValidateCurrent();
    void MoveTo(int C, int R, bool Extend);
    // The navigator's Row := R: any existing row, fixed rows included, as the original allowed.
    void NavigateToRow(int R);
    void ScrollIntoView(int C, int R);
    void EditorKey(QKeyEvent* E);
    // A check box toggled by the user (one undoable step).
    void UserToggle(int C, int R);
    // The navigator's row change that no SelectCell reported (a deleted last row, a cleared table).
    void ReportRowChange(int OldRow) { q->CheckCellChange(FCol, OldRow); }
    // The selected cells: the rectangle from the anchor to the current cell (whole rows with
    // goRowSelect). More than one cell changes what Ctrl+C, Delete and Backspace do.
    QRect SelectedCells() const;
    bool MultiCellSelection() const;
    // Delete / Backspace: the selected cells of editable columns are cleared, as one undo step.
    void ClearSelectedCells();
    // Puts the cells of Area on the clipboard (text and HTML); title rows as table headers.
    bool CopyCells(const QRect& Area);
    // The focus left the grid for another widget of the window.
    void LeaveGrid();
    void PaintCell(QPainter& P, int C, int R, const QRect& Rect);
    int ColumnBorderAt(const QPoint& Pos) const;
    // Accessibility (numgrid_access.cpp).
    void NotifyAccessibleFocus();
    void NotifyAccessibleModel();
};

// Records one undoable step: the rows from First that the operation may change (Count rows, or
// to the end when Count < 0) are taken before it and compared afterwards; only the rows that differ
// are kept. Nested steps belong to the outermost. A step that changes the column or fixed-row count
// clears the history instead.
class TGridUndoStep {
public:
    TGridUndoStep(TNumGridPrivate* D, int First, int Count, const char* Text);
    ~TGridUndoStep();
    TGridUndoStep(const TGridUndoStep&) = delete;
    TGridUndoStep& operator=(const TGridUndoStep&) = delete;

private:
    TNumGridPrivate* D;
    bool Active = false;
    int First = 0, RowsBefore = 0, ColsBefore = 0, FixedBefore = 0, ColBefore = 0, RowBefore = 0;
    std::vector<TCellRow> Old;
    const char* Text;
};

} // namespace qxnum

// The grid view's own state. Not installed.
#pragma once

#include "numgrid_p.h"

#include <QLineEdit>
#include <QPointer>

#include <map>
#include <vector>

namespace qxnum {

class TNumEdit;

// The in-place editor: a line edit over the current cell. For a numeric column every edit is
// checked with the keystroke rules of a numeric edit set up like the column.
class TGridCellEditor : public QLineEdit {
public:
    explicit TGridCellEditor(TNumGrid* Grid);
    ~TGridCellEditor() override;
    // Sets the rules for column Column (nullptr: any text).
    void SetColumn(TNumColumn* Column);

protected:
    void keyPressEvent(QKeyEvent* E) override;
    void focusOutEvent(QFocusEvent* E) override;
    void inputMethodEvent(QInputMethodEvent* E) override;

private:
    bool Acceptable(const QString& Inserted);
    TNumGrid* FGrid;
    TNumEdit* FRules = nullptr; // never shown; the numeric edit's keystroke rules
};

struct TGridViewState {
    std::vector<int> ColWidths;       // per column; -1 hides the column
    std::map<int, int> RowHeights;    // rows whose height differs from the default
    int TitleHeight = 0;              // height of the title rows, from their lines
    int TopRow = 1, LeftCol = 1;      // first scrolling row and column in view
    int AnchorCol = 1, AnchorRow = 1; // the other corner of the selection
    TGridCellEditor* Editor = nullptr;
    bool EditorOpen = false;
    // The current cell's text was changed by an edit since the cell was entered: leaving it checks it.
    bool CellEdited = false;
    bool Selecting = false; // a mouse drag extends the selection
    int SizingCol = -1;     // column being resized by the mouse
    int SizingStartX = 0, SizingStartWidth = 0;
    bool Moving = false;         // re-entrance guard of the current-cell move
    bool SyncingBars = false;    // the view sets its scroll bars: their moves are no scrolling
    bool Validating = false;     // a message about the current cell is on screen
    std::vector<int> BaseWidths; // widths before stretching
    // Changes told while the grid is updating: the view catches up once, in EndUpdate.
    bool Deferred = false;
};

} // namespace qxnum

/// \file
/// The numeric grid: a grid of text cells whose columns (TNumColumn) say how the text is read as a
/// number, with row operations, cell checks, change tracking and the field contract.
///
/// Cells
///   A cell's text is always in its column's display units, and it is what every reader, writer,
///   event and message sees. Beside the text of a numeric cell the grid keeps the value in base
///   units that the text was formatted from (SetDValues, defaults, a paste, a unit switch) or that
///   was read from it the first time it was needed (text typed, set by SetCells or read from a
///   file). Unlike the original grid, which re-reads its rounded text every time (deliberate
///   deviation 4): a cell whose text has not changed since the grid formatted it from a value keeps
///   that value exactly; a unit switch, a reformat or a column property change re-expresses the
///   held value, not the rounded text. So switching SI -> Imperial -> SI any number of times gives
///   GetDValues back bit for bit, and each system shows the correctly rounded text; a new text is
///   the truth again from then on. GetDValues still applies the column's limits and OnSetNumValue
///   to the held value on every read; GetCValues and GetIntValues read the text. Files keep their
///   layout: they hold the texts. Checks, look-ups and unit switches read held values, so they
///   cost no parsing; a column property change checks that column only, and BeginUpdate /
///   EndUpdate check each changed column once. Row 0 is the title row when FixedRows
///   > 0 (ResetTitles writes each column's TitleString there); data rows are FixedRows ..
///   RowCount - 1. There is one TNumColumn per grid column, fixed columns included; changing
///   ColCount adds or removes columns at the end. Check-box columns hold "TRUE" / "FALSE".
///   New grids have 5 columns, 5 rows, 1 fixed column, 1 fixed row and two title lines.
///
/// Messages (through MessageDlg, error type with OK) end in `"\r\n"` + "in " + the name of the form
///   or frame the grid sits in ("in " alone when that has no name). A cell that is no valid number
///   is reported once, the focus returns to it and its text is kept; CheckAllCells, CheckRow and
///   OkChanges stop at the first such cell. A cell text that is a number is quoted with its
///   column's unit after it ("5 bar is no valid numeric input."). Out-of-range numbers are clamped
///   by their column, silently.
///
/// Files (field contract)
///   XML: "Delimiter", "Colcount", "Rowcount", "Cols" ("Units", "StringCols", with StoreParTypes
///   "ParTypes") and "Rows" with one "Row"NN element per row, cells joined by ";". Stream record:
///   RowCount, ColCount, the unit systems and string flags of the columns, every cell's text row
///   by row, Visible, Enabled. The stored text is what the cells show, with each column's unit
///   system, so the two always agree; reading restores the unit systems without converting.
///   Reads are all-or-nothing: the whole section is read and checked before the grid changes, so a
///   read that raises (EReadError, EConvertError) leaves the grid, its columns and its undo history
///   as they were. Counts are bounded: more than MaxCellCount() cells (also counting a count kept
///   by IgnoreRowCountRead / IgnoreColCountRead), a negative count or a row name beyond the stored
///   rows raise instead of allocating. A grid without rows or without columns reads back what it
///   wrote in both media (an empty "Units" or "StringCols" holds no entries; in a stream record
///   without cells the string flags are one per column, so Visible and Enabled stay themselves).
///   A unit system other than 0 or 1 in a stream raises only when IgnoreColPropsRead is off.
///   XML row texts are split at ';' and stored as they stand; only the title row taken with
///   ReadColTitlesFromStream turns "&#13;&#10;" back into a line break. Titles read (from the
///   file's title row in XML, from the grid's own title cells in a stream) become captions without
///   the unit line the grid adds itself, so round trips do not stack unit lines.
///
///   Unlike the original layout, SkipfromStream consumes exactly what WritetoStream wrote, string
///   flags included, so a form reading past a grid it no longer has goes on with the next field
///   (deliberate deviation 10).
///
///   Unlike the original, a read keeps a numeric cell whose text is no number, or is empty, as it
///   was read instead of turning it into 0 (deliberate deviation 11); numbers are still checked,
///   clamped and reformatted (the stream read checks every cell, the XML read none). Such a cell
///   stays as it is until something checks it: GetDValues, GetCValues, CheckCell, CheckAllCells,
///   OkChanges and every refresh that re-checks the grid (a column property changed, EndUpdate)
///   treat it as the original does. GetDValues then gives, without a message: for an empty cell
///   0; for text that is no number the base value of a displayed 0 (-ScaleOffset x CustomScale,
///   so 0 in a column without offset), clamped to the column's limits when Max - Min exceeds
///   1e-14, then passed through OnSetNumValue. In both cases AutoReformat rewrites the cell to
///   that number's text, so the kept text is gone from then on. In a column with
///   OnExprCheckVariable the text goes to the expression parser instead: text it cannot evaluate
///   is reported once, the text stays, and GetDValues returns 0.
///
/// View
///   A virtualized scroll area: painting and scrolling cost the same whatever the row count. Fixed
///   rows and columns stay in view and are drawn as headers; the current cell and the selection are
///   highlighted (HighLightSelect). Keys as in spreadsheets: arrows, Tab / Shift+Tab, Home / End,
///   Ctrl+Home / Ctrl+End, PgUp / PgDn; F2, Enter or typing starts the in-place editor, Enter
///   commits and moves down, Escape cancels. The editor of a numeric column follows the numeric
///   edit's keystroke rules for the column. Space and a click toggle a check-box cell.
///   Ctrl+V pastes (when AllowPaste), Ctrl+C copies, Ctrl+Z undoes, Ctrl+Shift+Z and Ctrl+Y redo.
///   As in every spreadsheet, and unlike the original grid (deliberate deviation 9): Ctrl+C with a
///   selection of more than one cell copies just that selection (whole rows with goRowSelect), as
///   text and HTML; with one cell or none it copies the whole table (CopyToClipboard, which always
///   copies the whole table). Delete and Backspace clear the selected cells of editable columns
///   (check boxes become "FALSE", other cells empty) as one undo step.
///   The context menu (createStandardContextMenu) offers Undo, Redo, Copy, Paste, Insert row and
///   Delete row; the row entries go through CheckGrid / InsertRow and DeleteARow (ConfirmDelete).
///
/// Clipboard
///   PasteFromClipboard reads text separated by TAB, ';' or blanks, line by line, adding rows as it
///   goes (at most up to row 10,000). Numbers are taken in the units each column shows. A mouse
///   click on the grid stops a running paste; what was pasted so far stays. CopyToClipboard writes
///   every row, title rows included, from the column a paste answered Yes starts at (FixedCols, or 0
///   with AlwaysPasteFromLeftCol): TAB between cells, CR LF after each row, line breaks inside a
///   cell as blanks; and the same table as HTML. So a copy pasted back with Yes gives the same data.
///
/// Undo
///   A cell edit, a paste, a row inserted, copied or deleted and a cleared table (through the keys or
///   the navigator) are each one step on UndoStack(). Cells set by program are not recorded, but a
///   change of the row or column count made by program, a read from a file, RestoreCopyValue and
///   Assign clear the stack: its steps would no longer fit the table. A refused count and a read
///   that fails leave it as it was. Undo and redo set the cells
///   and the current cell directly, without the grid's events and checks.
#pragma once

#include <qxnum/mathutil.h>
#include <qxnum/widgets/fieldbase.h>
#include <qxnum/widgets/numcolumn.h>

#include <QAbstractScrollArea>
#include <QFont>
#include <QStringList>

#include <bitset>
#include <functional>
#include <memory>

class QMenu;
class QUndoStack;

namespace qxnum {

/// A set of grid column numbers 0..255 (AddToLines).
using TColSet = std::bitset<256>;

class TNumGridPrivate;

using TCellChangeEvent = std::function<void(QObject* Sender, int ACol, int ARow, int OldCol, int OldRow)>;
using TCellTxtChangeEvent = std::function<void(QObject* Sender, int ACol, int ARow, const QString& OldTxt)>;
using TRowEvent = std::function<void(QObject* Sender, int ARow)>;
/// The text the in-place editor starts with for cell (ACol, ARow); Value holds the cell text.
using TGetEditEvent = std::function<void(QObject* Sender, int ACol, int ARow, QString& Value)>;

class QXNUM_WIDGETS_EXPORT TNumGrid : public QAbstractScrollArea, public TFieldBase {
    Q_OBJECT
    Q_INTERFACES(qxnum::INumFld)
    QXNUM_FIELD_PROPERTIES
    Q_PROPERTY(int ColCount READ ColCount WRITE SetColCount)
    Q_PROPERTY(int RowCount READ RowCount WRITE SetRowCount)
    Q_PROPERTY(int FixedCols READ FixedCols WRITE SetFixedCols)
    Q_PROPERTY(int FixedRows READ FixedRows WRITE SetFixedRows)
    Q_PROPERTY(int Col READ Col WRITE SetCol)
    Q_PROPERTY(int Row READ Row WRITE SetRow)
    Q_PROPERTY(qxnum::TGridOptions Options READ Options WRITE SetOptions)
    Q_PROPERTY(int DefaultColWidth READ DefaultColWidth WRITE SetDefaultColWidth)
    Q_PROPERTY(int DefaultRowHeight READ DefaultRowHeight WRITE SetDefaultRowHeight)
    Q_PROPERTY(QColor FixedColor READ FixedColor WRITE SetFixedColor)
    Q_PROPERTY(QStringList ColFormats READ ColFormats WRITE SetColFormats)
    Q_PROPERTY(bool ConfirmDelete READ ConfirmDelete WRITE SetConfirmDelete)
    Q_PROPERTY(bool RowCountFixed READ RowCountFixed WRITE SetRowCountFixed)
    Q_PROPERTY(bool AutoAddRow READ AutoAddRow WRITE SetAutoAddRow)
    Q_PROPERTY(bool InsertCopyRow READ InsertCopyRow WRITE SetInsertCopyRow)
    Q_PROPERTY(bool AlwaysPasteFromLeftCol READ AlwaysPasteFromLeftCol WRITE SetAlwaysPasteFromLeftCol)
    Q_PROPERTY(bool ClearLastDelRow READ ClearLastDelRow WRITE SetClearLastDelRow)
    Q_PROPERTY(bool Extrapolate READ Extrapolate WRITE SetExtrapolate)
    Q_PROPERTY(bool AllowDataDialog READ AllowDataDialog WRITE SetAllowDataDialog)
    Q_PROPERTY(bool AllowPaste READ AllowPaste WRITE SetAllowPaste)
    Q_PROPERTY(bool ReadColTitlesFromStream READ ReadColTitlesFromStream WRITE SetReadColTitlesFromStream)
    Q_PROPERTY(qxnum::TColStretchOptions ColStretchOptions READ ColStretchOptions WRITE SetColStretchOptions)
    Q_PROPERTY(QFont TitleFont READ TitleFont WRITE SetTitleFont)
    Q_PROPERTY(int TitleLineCount READ TitleLineCount WRITE SetTitleLineCount)
    Q_PROPERTY(bool StoreParTypes READ StoreParTypes WRITE SetStoreParTypes)
    Q_PROPERTY(bool HighLightSelect READ HighLightSelect WRITE SetHighLightSelect)
    Q_PROPERTY(bool IgnoreColCountRead READ IgnoreColCountRead WRITE SetIgnoreColCountRead)
    Q_PROPERTY(bool IgnoreRowCountRead READ IgnoreRowCountRead WRITE SetIgnoreRowCountRead)
    Q_PROPERTY(bool IgnoreColPropsRead READ IgnoreColPropsRead WRITE SetIgnoreColPropsRead)

public:
    /// Qt-style setters of the properties above, which forms compiled by uic call.
    void setColCount(int AValue) { SetColCount(AValue); }
    void setRowCount(int AValue) { SetRowCount(AValue); }
    void setFixedCols(int AValue) { SetFixedCols(AValue); }
    void setFixedRows(int AValue) { SetFixedRows(AValue); }
    void setCol(int AValue) { SetCol(AValue); }
    void setRow(int AValue) { SetRow(AValue); }
    void setOptions(TGridOptions AValue) { SetOptions(AValue); }
    void setDefaultColWidth(int AValue) { SetDefaultColWidth(AValue); }
    void setDefaultRowHeight(int AValue) { SetDefaultRowHeight(AValue); }
    void setFixedColor(const QColor& AValue) { SetFixedColor(AValue); }
    void setColFormats(const QStringList& AValue) { SetColFormats(AValue); }
    void setConfirmDelete(bool AValue) { SetConfirmDelete(AValue); }
    void setRowCountFixed(bool AValue) { SetRowCountFixed(AValue); }
    void setAutoAddRow(bool AValue) { SetAutoAddRow(AValue); }
    void setInsertCopyRow(bool AValue) { SetInsertCopyRow(AValue); }
    void setAlwaysPasteFromLeftCol(bool AValue) { SetAlwaysPasteFromLeftCol(AValue); }
    void setClearLastDelRow(bool AValue) { SetClearLastDelRow(AValue); }
    void setExtrapolate(bool AValue) { SetExtrapolate(AValue); }
    void setAllowDataDialog(bool AValue) { SetAllowDataDialog(AValue); }
    void setAllowPaste(bool AValue) { SetAllowPaste(AValue); }
    void setReadColTitlesFromStream(bool AValue) { SetReadColTitlesFromStream(AValue); }
    void setColStretchOptions(TColStretchOptions AValue) { SetColStretchOptions(AValue); }
    void setTitleFont(const QFont& AValue) { SetTitleFont(AValue); }
    void setTitleLineCount(int AValue) { SetTitleLineCount(AValue); }
    void setStoreParTypes(bool AValue) { SetStoreParTypes(AValue); }
    void setHighLightSelect(bool AValue) { SetHighLightSelect(AValue); }
    void setIgnoreColCountRead(bool AValue) { SetIgnoreColCountRead(AValue); }
    void setIgnoreRowCountRead(bool AValue) { SetIgnoreRowCountRead(AValue); }
    void setIgnoreColPropsRead(bool AValue) { SetIgnoreColPropsRead(AValue); }

    explicit TNumGrid(QWidget* Owner = nullptr);
    ~TNumGrid() override;

    /// The largest ColCount x RowCount a file may ask for (10,000,000 cells); ColCount is also
    /// limited to 16,384, since every column is an object of its own.
    static qint64 MaxCellCount();

    TNumColumns* Columns() const;

    /// --- The string grid ---
    int ColCount() const;
    void SetColCount(int AValue);
    int RowCount() const;
    void SetRowCount(int AValue);
    int FixedCols() const;
    void SetFixedCols(int AValue);
    int FixedRows() const;
    void SetFixedRows(int AValue);
    /// The current cell. Setting it moves the current cell as a click would (CheckCellChange).
    int Col() const;
    void SetCol(int AValue);
    int Row() const;
    void SetRow(int AValue);
    /// Empty text outside the grid; setting outside the grid does nothing.
    QString Cells(int ACol, int ARow) const;
    void SetCells(int ACol, int ARow, const QString& Value);
    /// One row's texts, column 0 first; setting takes at most ColCount texts.
    QStringList Rows(int ARow) const;
    void SetRows(int ARow, const QStringList& Value);
    /// Not owned; initialisation and restoration clear them.
    QObject* Objects(int ACol, int ARow) const;
    void SetObjects(int ACol, int ARow, QObject* Value);
    void MoveRow(int FromIndex, int ToIndex);
    void MoveColumn(int FromIndex, int ToIndex);
    void DeleteRow(int ARow);
    int ColWidths(int ACol) const;
    void SetColWidths(int ACol, int AValue);
    int RowHeights(int ARow) const;
    void SetRowHeights(int ARow, int AValue);
    int DefaultColWidth() const;
    void SetDefaultColWidth(int AValue);
    int DefaultRowHeight() const;
    void SetDefaultRowHeight(int AValue);
    QColor FixedColor() const;
    void SetFixedColor(const QColor& AValue);
    TGridOptions Options() const;
    void SetOptions(TGridOptions AValue);
    /// First data row and column shown below and right of the fixed ones.
    int TopRow() const;
    void SetTopRow(int AValue);
    int LeftCol() const;
    void SetLeftCol(int AValue);
    /// Rows and columns that fit completely into the scrolling part of the viewport.
    int VisibleRowCount() const;
    int VisibleColCount() const;
    /// Viewport rectangle of a cell; empty when the cell is not in view.
    QRect CellRect(int ACol, int ARow) const;
    /// The cell under a viewport position; false when there is none.
    bool MouseToCell(const QPoint& Pos, int& ACol, int& ARow) const;
    /// The in-place editor.
    bool EditorMode() const;
    void SetEditorMode(bool AValue);
    void ShowEditor();
    void HideEditor();

    /// --- Cell values ---
    bool GetValueFromCell(int ACol, int ARow, Extended& Value, bool Scaled);
    Extended GetDValues(int ACol, int ARow);
    void SetDValues(int ACol, int ARow, Extended Value);
    Extended GetCValues(int ACol, int ARow);
    void SetCValues(int ACol, int ARow, Extended Value);
    int GetIntValues(int ACol, int ARow);
    void SetIntValues(int ACol, int ARow, int Value);

    /// --- Check boxes ---
    static bool StringCheckedStatus(const QString& S);
    bool CheckedStatus(int ACol, int ARow) const;
    void SetCheckedStatus(int ACol, int ARow, bool Checked);
    void ToggleCheckedStatus(int ACol, int ARow);

    /// --- Rows and columns ---
    void InitCells();
    virtual void InitCol(int ACol);
    virtual void InitRow(int ARow);
    virtual void InsCopyRow(int ARow);
    virtual void InsertRow(int ARow);
    void ClearRow(int ARow);
    void DeleteARow(int ARow);
    /// Inserts a new column description at ACol. The cell texts are not shifted: the descriptions
    /// from ACol on move one place right, and the grid gains its new cells at the right-hand end,
    /// initialised by the last description. Hosts insert columns before filling cells.
    void InsertCol(int ACol);

    /// --- Titles and refresh ---
    void ResetTitles();
    /// Re-titles and checks after a change: a column (or its title) as Sender checks that column
    /// only; anything else checks every column whose cells or settings changed since its last check.
    void GridStringsChanged(QObject* Sender = nullptr);
    /// Between BeginUpdate and EndUpdate, changes of cells and columns are not checked or painted;
    /// EndUpdate does it once for all of them.
    void BeginUpdate();
    void EndUpdate();
    /// Switches every column that is neither a string column nor expression-driven to AValue in
    /// one pass: each cell's held value is re-expressed (see Cells), then one check and one repaint.
    /// Columns that already show AValue are left alone, so their texts are not rewritten.
    void SwitchUnitSystem(TUnitSystem AValue);
    bool IsUpdating() const;
    QStringList ColFormats() const;
    void SetColFormats(const QStringList& List);

    /// --- Checks ---
    virtual bool CheckCell(int ACol, int ARow);
    virtual bool CheckRow(int ARow);
    /// Checks every data cell, also of columns known to be checked: call it after changing the
    /// working unit tables or the format settings, which the grid cannot see.
    bool CheckAllCells();
    virtual bool CheckGrid();

    /// --- Clipboard and text export ---
    /// Reads the clipboard's text into the grid (see the header comment). In the in-place editor it
    /// pastes into the editor and takes the paste back, with a beep, when a numeric column does not
    /// read it as a number.
    void PasteFromClipboard();
    /// Puts the table on the clipboard (see the header comment); false while the in-place editor is open.
    bool CopyToClipboard();
    /// Appends a text table of the columns in Cols: a title line (line breaks shown as '|'), then a
    /// line per data row. Each column is padded to MaxWidth (FixedWidth) or to its title's length,
    /// at most MaxWidth; longer texts are kept whole. Separator goes before every column but 0.
    void AddToLines(QStringList& Lines, const TColSet& Cols, const QString& Separator, int MaxWidth,
                    bool FixedWidth);
    /// True while a paste or a copy runs.
    bool PastingOrCopying() const;
    /// A data dialog opened for a pasted row (the time-series grid's) was cancelled: the paste
    /// stops. Every paste clears it at its end.
    bool DialogCancelled() const;
    void SetDialogCancelled(bool AValue);

    /// --- Table look-up ---
    /// The row pair that brackets InValue in the monotonic column ACol: row2 is the later row and
    /// Intfactor the fraction of the way from row2 - 1 to row2 (limited to [0, 1] unless
    /// Extrapolate). Errors are shown in a message and give false.
    bool GetInterpPars(int ACol, bool ascending, double InValue, int& row2, double& Intfactor);
    /// The order is settled first: coAutoDetermine finds it (ColumnOrder); an order that is none or
    /// cannot be found (a text column, fewer than two data rows) fails with the look-up message.
    bool GetInterpPars(int ACol, TColumnOrder AColOrder, double InValue, int& row2, double& Intfactor);
    /// Column ACol's value at the bracket from GetInterpPars.
    bool GetInterpVal(int ACol, int row2, double Intfactor, double& Value);
    /// Outcol's value at InValue of Incol, through the parabola of three neighbouring rows.
    bool GetQuadInterpVal(int Incol, int Outcol, bool ascending, double InValue, double& Value);
    bool GetQuadInterpVal(int Incol, int Outcol, TColumnOrder AColOrder, double InValue, double& Value);
    /// The sum of rows startrow..endrow (0 when endrow < startrow). Rows outside the grid add
    /// nothing: the limits are clamped to the grid's rows first, so any pair of limits is cheap.
    double ColSum(int icol, int startrow, int endrow);
    /// Widens ColMin / ColMax by the column's values (base units when Scale, else as shown);
    /// ResetColMinMax starts from 1e20 / -1e20. A text column, or a column the grid does not
    /// have, leaves them as they came in.
    void GetColMinMax(int icol, double& ColMin, double& ColMax, bool ResetColMinMax, bool Scale);
    TColumnOrder ColumnOrder(int ACol);

    /// --- Undo ---
    /// The grid's undo history, for a host's Edit menu (QUndoStack::createUndoAction).
    QUndoStack* UndoStack() const;
    /// The menu the grid shows on a right click: Undo, Redo, Copy (the selection or the table, as
    /// Ctrl+C), Paste, Insert row and Delete row. A host may extend it
    /// (override contextMenuEvent and add to this menu); the caller owns it.
    QMenu* createStandardContextMenu();

    /// --- Field contract ---
    bool HasChanged() override;
    void SetCopyValue() override;
    void RestoreCopyValue() override;
    void OkChanges() override;
    void SetFormCreateVal() override;
    void ResetToFormCreateVal() override;
    bool GetReadOnly() const override;
    /// Sets ReadingFromStream for the duration of the read; it is false again when OnAfterRead fires.
    void ReadfromStream(TReader& Reader) override;
    /// Consumes the whole record, string flags included (deliberate deviation 10).
    void SkipfromStream(TReader& Reader) override;
    bool XmlValueChanged(TXmlNode ParentXmlNode) override;
    QVariant GetVariantValue() override;
    QString GetValueText() override;
    QString GetXMLValueText(TXmlNode ParentXmlNode) override;
    /// From another TNumGrid: counts and every cell's text, then CheckAllCells. Any other source
    /// raises EConvertError.
    void Assign(const QObject* Source);

    /// --- Flags ---
    bool ConfirmDelete() const;
    void SetConfirmDelete(bool AValue);
    bool RowCountFixed() const;
    void SetRowCountFixed(bool AValue);
    /// Down on the last row appends a row (InsertRow).
    bool AutoAddRow() const;
    void SetAutoAddRow(bool AValue);
    bool InsertCopyRow() const;
    void SetInsertCopyRow(bool AValue);
    bool AlwaysPasteFromLeftCol() const;
    void SetAlwaysPasteFromLeftCol(bool AValue);
    bool ClearLastDelRow() const;
    void SetClearLastDelRow(bool AValue);
    bool Extrapolate() const;
    void SetExtrapolate(bool AValue);
    bool AllowDataDialog() const;
    void SetAllowDataDialog(bool AValue);
    bool AllowPaste() const;
    void SetAllowPaste(bool AValue);
    bool ReadColTitlesFromStream() const;
    void SetReadColTitlesFromStream(bool AValue);
    TColStretchOptions ColStretchOptions() const;
    void SetColStretchOptions(TColStretchOptions AValue);
    QFont TitleFont() const;
    void SetTitleFont(const QFont& AValue);
    int TitleLineCount() const;
    void SetTitleLineCount(int AValue);
    bool StoreParTypes() const;
    void SetStoreParTypes(bool AValue);
    bool HighLightSelect() const;
    void SetHighLightSelect(bool AValue);
    bool IgnoreColCountRead() const;
    void SetIgnoreColCountRead(bool AValue);
    bool IgnoreRowCountRead() const;
    void SetIgnoreRowCountRead(bool AValue);
    bool IgnoreColPropsRead() const;
    void SetIgnoreColPropsRead(bool AValue);
    /// True while InitCells runs, while a stream is read, between BeginUpdate and EndUpdate.
    bool InitializingCells() const;
    bool ReadingFromStream() const;

    /// --- Events ---
    TCellChangeEvent OnCellChange() const;
    void SetOnCellChange(TCellChangeEvent AEvent);
    TCellTxtChangeEvent OnCellTxtChange() const;
    void SetOnCellTxtChange(TCellTxtChangeEvent AEvent);
    TRowEvent OnRowEdit() const;
    void SetOnRowEdit(TRowEvent AEvent);
    TRowEvent OnCancel() const;
    void SetOnCancel(TRowEvent AEvent);
    TRowEvent OnRefresh() const;
    void SetOnRefresh(TRowEvent AEvent);
    TRowEvent OnPost() const;
    void SetOnPost(TRowEvent AEvent);
    TRowEvent OnNewRow() const;
    void SetOnNewRow(TRowEvent AEvent);
    TRowEvent AfterDeleteRow() const;
    void SetAfterDeleteRow(TRowEvent AEvent);
    TRowEvent BeforeDeleteRow() const;
    void SetBeforeDeleteRow(TRowEvent AEvent);
    TRowEvent AfterInitRow() const;
    void SetAfterInitRow(TRowEvent AEvent);
    TNotifyEvent AfterClear() const;
    void SetAfterClear(TNotifyEvent AEvent);
    TNotifyEvent OnColWidthsChanged() const;
    void SetOnColWidthsChanged(TNotifyEvent AEvent);
    TGetEditEvent OnGetCellText() const;
    void SetOnGetCellText(TGetEditEvent AEvent);
    TCellChangeEvent AfterPaste() const;
    void SetAfterPaste(TCellChangeEvent AEvent);

    /// Set by OkChanges when the grid had changed; cleared by every read.
    using TFieldBase::ChangedAfterOK;

Q_SIGNALS:
    /// The current cell moved (after OnCellChange).
    void currentCellChanged(int ACol, int ARow, int OldCol, int OldRow);
    /// A cell's text was changed by the user's edit (after OnCellTxtChange).
    void cellTextChanged(int ACol, int ARow, const QString& OldTxt);

protected:
    /// The column collection. The constructor calls the grid's own version; a descendant that
    /// returns its own column class calls RecreateColumns() at the end of its constructor.
    virtual TNumColumns* CreateColumns();
    /// Replaces the columns by CreateColumns(), one per grid column, and initialises the cells.
    void RecreateColumns();

    /// Moves the current cell to (ACol, ARow) when the cell may be selected; false when it may not.
    virtual bool SelectCell(int ACol, int ARow);
    /// Whether the in-place editor may open on the current cell.
    virtual bool CanEditShow() const;
    virtual bool CanEditModify() const;
    /// Called after the current cell moved, with the cell that was left.
    virtual void CheckCellChange(int OldCol, int OldRow);
    /// Fires OnCellTxtChange when the cell's text differs from its text on entering.
    virtual void CheckCellTxtChange(int ACol, int ARow);
    /// After ColCount or RowCount changed (the time-series grid keeps its time row in step).
    virtual void SizeChanged(int OldColCount, int OldRowCount);
    /// The grid's message text: Text + `"\r\n"` + "in " + the owner's name.
    QString GridMessage(const QString& Text) const;
    /// The owner's name as messages give it.
    QString OwnerName() const;
    /// True while a change of the counts re-initialises the grid.
    bool ResizingNumGrid() const;

    /// --- TFieldBase hooks ---
    void WriteStreamValue(TWriter& Writer) override;
    TApplyValue ReadStreamValue(TReader& Reader) override;
    void WriteXmlValue(TXmlNode Node) override;
    TApplyValue ReadXmlValue(TXmlNode Node) override;

    /// --- Qt ---
    bool event(QEvent* E) override;
    void paintEvent(QPaintEvent* E) override;
    void resizeEvent(QResizeEvent* E) override;
    void keyPressEvent(QKeyEvent* E) override;
    void mousePressEvent(QMouseEvent* E) override;
    void mouseMoveEvent(QMouseEvent* E) override;
    void mouseReleaseEvent(QMouseEvent* E) override;
    void mouseDoubleClickEvent(QMouseEvent* E) override;
    void focusInEvent(QFocusEvent* E) override;
    void focusOutEvent(QFocusEvent* E) override;
    void contextMenuEvent(QContextMenuEvent* E) override;
    void scrollContentsBy(int Dx, int Dy) override;
    bool viewportEvent(QEvent* E) override;
    bool focusNextPrevChild(bool Next) override;
    void changeEvent(QEvent* E) override;
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

private:
    friend class TNumColumn;
    friend class TNumColumns;
    friend class TNumGridPrivate;
    TNumGridPrivate* Priv() const;
    void ViewSetup();
    static void CheckCellCount(qint64 Cols, qint64 Rows);
    void ShowCellError(const QString& Text, int ACol, int ARow);
    QString DefaultCellText(int ACol, int ARow, bool ExpressionAsString);
    QString XmlRowText(int ARow) const;
    QString XmlColumnList(int Kind) const;
    void ReadCounts(TReader& Reader, int& Rows, int& Cols) const;
};

} // namespace qxnum

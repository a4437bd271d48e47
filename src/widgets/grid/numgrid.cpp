// The grid's model: cells and counts, values, rows, titles, checks, change tracking and the
// field contract's copy value. Files are in numgrid_io.cpp, the view in numgrid_view.cpp.
#include "numcolumn_p.h"
#include "numgrid_p.h"

#include <qxnum/dialogs.h>
#include <qxnum/numconv.h>
#include <qxnum/numtext.h>
#include <qxnum/registry.h>

#include <QCoreApplication>
#include <QFontInfo>
#include <QUndoStack>

#include <cmath>
#include <utility>

namespace qxnum {

namespace {

const TClassRegistrar NumGridRegistrar("TNumGrid", [](QObject* Owner) -> QObject* {
    return new TNumGrid(qobject_cast<QWidget*>(Owner));
});

QString Tr(const char* Source) {
    return QCoreApplication::translate("TNumGrid", Source);
}

const QString LineBreak = QStringLiteral("\r\n");

} // namespace

// ---- private ---------------------------------------------------------------------------------------

TNumGridPrivate::TNumGridPrivate(TNumGrid* Q) : q(Q) {}
TNumGridPrivate::~TNumGridPrivate() = default;

QString TNumGridPrivate::OwnerName() const {
    // A form without a name (or no form at all) leaves the message ending in "in ".
    for (QWidget* P = q->parentWidget(); P; P = P->parentWidget())
        if (P->isWindow() || IsFieldFrame(P)) return P->objectName();
    return {};
}

QString TNumGridPrivate::QuotedCellText(int C, const QString& Text) const {
    const TNumColumn* Column = FColumns ? FColumns->Items(C) : nullptr;
    Extended V = 0.0L;
    if (!Column || !TryQX_StrToFloat(Text.trimmed(), V)) return Text;
    QString Unit = Column->UnitString().trimmed();
    if (Unit.startsWith(QLatin1Char('[')) && Unit.endsWith(QLatin1Char(']')))
        Unit = Unit.mid(1, Unit.size() - 2).trimmed();
    if (Unit.isEmpty() || Unit == QLatin1String("-")) return Text;
    return Text + QLatin1Char(' ') + Unit;
}

double TNumGridPrivate::QuietValue(int C, int R) const {
    TNumColumn* Column = FColumns->Items(C);
    if (!Column) throw EConvertError(Tr("Column nr. %1 does not exist").arg(C));
    if (!Store.Contains(C, R)) return 0.0;
    const TCell& Cell = Store.At(C, R);
    if (Cell.Text().isEmpty()) return 0.0;
    TNumColumnPrivate* P = Column->Priv();
    if (!Cell.HasValue() || !P->HoldsValues()) {
        Extended V = 0.0L;
        Column->SetValuefromStr(R, Cell.Text(), V, true);
        return static_cast<double>(V);
    }
    Extended V = Cell.Value();
    P->Clamp(V);
    if (P->FOnSetNumValue) P->FOnSetNumValue(Column, R, Cell.Text(), V);
    return static_cast<double>(V);
}

Extended TNumGridPrivate::RawValue(TNumColumn* Column, int C, int R, bool& Ok) {
    const TCell& Cell = Store.At(C, R);
    if (Cell.HasValue()) {
        Ok = true;
        return Cell.Value();
    }
    const Extended V = Column->Priv()->ParseBase(Cell.Text(), Ok);
    // Read once: the text is the truth, and its value stays with it until the text changes.
    if (Ok) Store.Hold(C, R, V);
    return V;
}

void TNumGridPrivate::PutValue(int C, int R, const QString& Text, Extended Value) {
    const TCell& Cell = Store.At(C, R);
    const bool SameText = Cell.Text() == Text && !Cell.Text().isNull();
    if (SameText && Cell.HasValue() && Cell.Value() == Value) return;
    if (SameText) {
        Store.Hold(C, R, Value);
        return;
    }
    Store.Put(C, R, Text, Value);
    CellChanged(C, R);
}

bool TNumGridPrivate::ColumnChecked(const TNumColumnPrivate* P, int C) const {
    return P->CheckedStamp == P->Stamp && P->CheckedVersion == Store.ColumnVersion(C);
}

void TNumGridPrivate::MarkChecked(TNumColumnPrivate* P, int C) const {
    if (!P->ChecksRepeatable()) return;
    P->CheckedVersion = Store.ColumnVersion(C);
    P->CheckedStamp = P->Stamp;
}

bool TNumGridPrivate::CheckColumns(const std::vector<int>& Only, bool Force) {
    const int Count = std::min(FColumns->Count(), Store.ColCount());
    std::vector<int> Cols;
    for (int C = 0; C < Count; ++C) {
        if (!Only.empty() && std::find(Only.begin(), Only.end(), C) == Only.end()) continue;
        TNumColumnPrivate* P = FColumns->Items(C)->Priv();
        if (!P->HoldsValues()) continue; // nothing to check
        if (!Force && ColumnChecked(P, C)) continue;
        Cols.push_back(C);
    }
    int Holding = 0;
    for (int C = 0; C < Count; ++C)
        Holding += FColumns->Items(C)->Priv()->HoldsValues() ? 1 : 0;
    // Row by row, as CheckAllCells reports the first invalid cell; through CheckRow when every
    // column is checked, so that a derived grid's row rules apply.
    const bool Whole = Only.empty() && static_cast<int>(Cols.size()) == Holding;
    for (int R = 1; R < Store.RowCount(); ++R) {
        if (Whole) {
            if (!q->CheckRow(R)) return false;
            continue;
        }
        for (int C : Cols)
            if (!q->CheckCell(C, R)) return false;
    }
    // A read's kept texts (deliberate deviation 11) still meet the next check.
    if (!KeepReadTexts)
        for (int C : Cols)
            MarkChecked(FColumns->Items(C)->Priv(), C);
    return true;
}

// ---- construction ------------------------------------------------------------------------------------

TNumGrid::TNumGrid(QWidget* Owner) : QAbstractScrollArea(Owner), TFieldBase(this, new TNumGridPrivate(this)) {
    TNumGridPrivate* D = Priv();
    D->Store.Resize(5, 5);
    D->FTitleFont = font();
    // Room for the text and a margin, as the original row height of 7 pixels plus the font height.
    D->FDefaultRowHeight = std::max(QFontInfo(font()).pixelSize(), QFontMetrics(font()).height()) + 7;
    for (int C = 0; C < ColCount(); ++C)
        D->FColFormats << QStringLiteral("###0.000");
    D->FTitleLineCount = 2;
    D->FColumns = CreateColumns();
    D->FColumns->BeginUpdate();
    for (int C = 0; C < ColCount(); ++C)
        D->FColumns->Add();
    D->FColumns->EndUpdate();
    InitCells();
    D->FOptions |= goEditing;
    D->DesignSaveOptions = D->FOptions;
    ViewSetup();
}

TNumGrid::~TNumGrid() {
    // Columns are QObject children; drop them first so that nothing reaches a half-destroyed grid.
    delete Priv()->FColumns;
    Priv()->FColumns = nullptr;
}

TNumGridPrivate* TNumGrid::Priv() const {
    return static_cast<TNumGridPrivate*>(FieldPrivate());
}

qint64 TNumGrid::MaxCellCount() {
    return 10'000'000;
}

TNumColumns* TNumGrid::CreateColumns() {
    return new TNumColumns(this);
}

void TNumGrid::RecreateColumns() {
    TNumGridPrivate* D = Priv();
    TNumColumns* Old = D->FColumns;
    D->FColumns = CreateColumns();
    delete Old;
    D->FColumns->BeginUpdate();
    for (int C = 0; C < ColCount(); ++C)
        D->FColumns->Add();
    D->FColumns->EndUpdate();
    InitCells();
}

TNumColumns* TNumGrid::Columns() const {
    return Priv()->FColumns;
}

// ---- the string grid ------------------------------------------------------------------------------

int TNumGrid::ColCount() const {
    return Priv()->Store.ColCount();
}
int TNumGrid::RowCount() const {
    return Priv()->Store.RowCount();
}
int TNumGrid::FixedCols() const {
    return Priv()->FFixedCols;
}
int TNumGrid::FixedRows() const {
    return Priv()->FFixedRows;
}
int TNumGrid::Col() const {
    return Priv()->FCol;
}
int TNumGrid::Row() const {
    return Priv()->FRow;
}

void TNumGrid::CheckCellCount(qint64 Cols, qint64 Rows) {
    if (!GridSizeAllowed(Cols, Rows))
        throw EConvertError(
            Tr("A grid of %1 columns and %2 rows exceeds the limits of %3 cells and %4 columns")
                .arg(Cols)
                .arg(Rows)
                .arg(MaxCellCount())
                .arg(MaxGridCols));
}

void TNumGrid::SetColCount(int AValue) {
    TNumGridPrivate* D = Priv();
    AValue = std::max(AValue, 0);
    if (AValue == ColCount()) return;
    // Refused before the history goes: a refused count changes nothing.
    CheckCellCount(AValue, RowCount());
    D->ShapeChanged();
    const int OldCols = ColCount();
    D->Store.Resize(AValue, RowCount());
    D->FFixedCols = std::min(D->FFixedCols, std::max(AValue - 1, 0));
    D->FCol = std::clamp(D->FCol, std::min(D->FFixedCols, std::max(AValue - 1, 0)), std::max(AValue - 1, 0));
    TNumColumns* Cols = D->FColumns;
    bool Added = false;
    if (Cols) {
        while (Cols->Count() > AValue)
            Cols->Delete(Cols->Count() - 1);
        // Each new column initialises its own cells; their change reports, each of which would
        // re-title and re-check the whole grid, are collected into the one refresh below, so that
        // making N columns costs N column initialisations.
        Cols->BeginUpdate();
        const bool Was = std::exchange(D->InitializingColumns, true);
        while (Cols->Count() < AValue) {
            Cols->Add();
            Added = true;
        }
        D->InitializingColumns = Was;
        Cols->EndUpdate();
    }
    SizeChanged(OldCols, RowCount());
    D->LayoutChanged();
    if (Added) GridStringsChanged(this);
}

void TNumGrid::SetRowCount(int AValue) {
    TNumGridPrivate* D = Priv();
    AValue = std::max(AValue, 0);
    if (AValue == RowCount()) return;
    // Refused before the history goes: a refused count changes nothing.
    CheckCellCount(ColCount(), AValue);
    D->ShapeChanged();
    const int OldRows = RowCount();
    D->Store.Resize(ColCount(), AValue);
    D->FFixedRows = std::min(D->FFixedRows, std::max(AValue - 1, 0));
    D->FRow = std::clamp(D->FRow, std::min(D->FFixedRows, std::max(AValue - 1, 0)), std::max(AValue - 1, 0));
    if (OldRows == 0) ResetTitles();
    SizeChanged(ColCount(), OldRows);
    D->LayoutChanged();
}

void TNumGrid::SetFixedCols(int AValue) {
    TNumGridPrivate* D = Priv();
    AValue = std::clamp(AValue, 0, std::max(ColCount() - 1, 0));
    if (AValue == D->FFixedCols) return;
    D->FFixedCols = AValue;
    if (D->FCol < AValue) D->FCol = std::min(AValue, std::max(ColCount() - 1, 0));
    D->LayoutChanged();
}

void TNumGrid::SetFixedRows(int AValue) {
    TNumGridPrivate* D = Priv();
    AValue = std::clamp(AValue, 0, std::max(RowCount() - 1, 0));
    if (AValue == D->FFixedRows) return;
    D->ShapeChanged();
    D->FFixedRows = AValue;
    if (D->FRow < AValue) D->FRow = std::min(AValue, std::max(RowCount() - 1, 0));
    ResetTitles();
    D->LayoutChanged();
}

QString TNumGrid::Cells(int ACol, int ARow) const {
    const TCellStore& S = Priv()->Store;
    return S.Contains(ACol, ARow) ? S.Cell(ACol, ARow) : QString();
}

void TNumGrid::SetCells(int ACol, int ARow, const QString& Value) {
    TCellStore& S = Priv()->Store;
    if (!S.Contains(ACol, ARow)) return;
    const QString& Cell = S.Cell(ACol, ARow);
    if (Cell == Value && Cell.isNull() == Value.isNull()) return;
    S.Put(ACol, ARow, Value);
    Priv()->CellChanged(ACol, ARow);
}

QStringList TNumGrid::Rows(int ARow) const {
    const TCellStore& S = Priv()->Store;
    if (ARow < 0 || ARow >= S.RowCount()) return {};
    QStringList L;
    L.reserve(S.ColCount());
    for (const TCell& Cell : S.Row(ARow))
        L << Cell.Text();
    return L;
}

void TNumGrid::SetRows(int ARow, const QStringList& Value) {
    TCellStore& S = Priv()->Store;
    if (ARow < 0 || ARow >= S.RowCount()) return;
    for (int C = 0; C < S.ColCount(); ++C)
        S.Put(C, ARow, C < Value.size() ? Value[C] : QString());
    Priv()->CellsChanged();
}

QObject* TNumGrid::Objects(int ACol, int ARow) const {
    const TCellStore& S = Priv()->Store;
    return S.Contains(ACol, ARow) ? S.Object(ACol, ARow) : nullptr;
}

void TNumGrid::SetObjects(int ACol, int ARow, QObject* Value) {
    Priv()->Store.SetObject(ACol, ARow, Value);
}

void TNumGrid::MoveRow(int FromIndex, int ToIndex) {
    Priv()->ShapeChanged();
    Priv()->Store.MoveRow(FromIndex, ToIndex);
    Priv()->CellsChanged();
}

void TNumGrid::MoveColumn(int FromIndex, int ToIndex) {
    Priv()->ShapeChanged();
    Priv()->Store.MoveColumn(FromIndex, ToIndex);
    Priv()->CellsChanged();
}

void TNumGrid::DeleteRow(int ARow) {
    TNumGridPrivate* D = Priv();
    if (ARow < 0 || ARow >= RowCount()) return;
    D->ShapeChanged();
    const int OldRows = RowCount();
    D->Store.DeleteRow(ARow);
    D->FRow = std::clamp(D->FRow, std::min(D->FFixedRows, std::max(RowCount() - 1, 0)),
                         std::max(RowCount() - 1, 0));
    SizeChanged(ColCount(), OldRows);
    D->LayoutChanged();
}

TGridOptions TNumGrid::Options() const {
    return Priv()->FOptions;
}
void TNumGrid::SetOptions(TGridOptions AValue) {
    if (AValue == Priv()->FOptions) return;
    Priv()->FOptions = AValue;
    if (!AValue.testFlag(goEditing)) HideEditor();
    Priv()->LayoutChanged();
}

void TNumGrid::SizeChanged(int, int) {}

// ---- values -----------------------------------------------------------------------------------------

void TNumGrid::ShowCellError(const QString& Text, int ACol, int ARow) {
    MessageDlg(GridMessage(Text), mtError, mbOK);
    if (window()->isVisible()) setFocus(Qt::OtherFocusReason);
    SelectCell(ACol, ARow);
}

bool TNumGrid::GetValueFromCell(int ACol, int ARow, Extended& Value, bool Scaled) {
    TNumColumn* Column = Priv()->FColumns->Items(ACol);
    if (!Column) {
        Value = 0.0L;
        return false;
    }
    TNumColumnPrivate* C = Column->Priv();
    if (C->FStringCol) {
        ShowCellError(QString::asprintf("Column nr. %d is String column", ACol), ACol, ARow);
        return false;
    }
    TNumGridPrivate* D = Priv();
    if (!D->Store.Contains(ACol, ARow)) {
        Value = 0.0L;
        return true;
    }
    const QString Text = D->Store.Cell(ACol, ARow);
    try {
        if (Text.isEmpty()) {
            Value = 0.0L;
        } else if (Scaled && C->HoldsValues()) {
            // The held value, or the text read once (deliberate deviation 4).
            bool Ok = true;
            Value = D->RawValue(Column, ACol, ARow, Ok);
            C->Clamp(Value);
            if (C->FOnSetNumValue) C->FOnSetNumValue(Column, ARow, Text, Value);
        } else {
            Column->SetValuefromStr(ARow, Text, Value, Scaled);
        }
        if (!C->FOnExprCheckVariable && C->FAutoReformat && Scaled) {
            const QString Canonical = Column->GetValueString(ARow, Value, Scaled);
            if (Canonical != Text) D->PutValue(ACol, ARow, Canonical, Value);
        }
        return true;
    } catch (const std::exception&) {
        ShowCellError(Priv()->QuotedCellText(ACol, Text) + Tr(" is no valid numeric input."), ACol, ARow);
        return false;
    }
}

Extended TNumGrid::GetDValues(int ACol, int ARow) {
    Extended V = 0.0L;
    return GetValueFromCell(ACol, ARow, V, true) ? V : 0.0L;
}

void TNumGrid::SetDValues(int ACol, int ARow, Extended Value) {
    TNumColumn* Column = Priv()->FColumns->Items(ACol);
    if (!Column || !Priv()->Store.Contains(ACol, ARow)) return;
    if (std::isnan(Value)) Value = 0.0L;
    const QString Text = Column->GetValueString(ARow, Value, true);
    // The text is formatted from Value: the cell keeps it (deliberate deviation 4).
    if (Column->Priv()->HoldsValues())
        Priv()->PutValue(ACol, ARow, Text, Value);
    else
        SetCells(ACol, ARow, Text);
}

Extended TNumGrid::GetCValues(int ACol, int ARow) {
    Extended V = 0.0L;
    return GetValueFromCell(ACol, ARow, V, false) ? V : 0.0L;
}

void TNumGrid::SetCValues(int ACol, int ARow, Extended Value) {
    TNumColumn* Column = Priv()->FColumns->Items(ACol);
    if (!Column) return;
    if (std::isnan(Value)) Value = 0.0L;
    SetCells(ACol, ARow, Column->GetValueString(ARow, Value, false));
}

int TNumGrid::GetIntValues(int ACol, int ARow) {
    bool Ok = false;
    const int V = Cells(ACol, ARow).trimmed().toInt(&Ok);
    return Ok ? V : 0;
}

void TNumGrid::SetIntValues(int ACol, int ARow, int Value) {
    SetCells(ACol, ARow, QString::number(Value));
}

// ---- check boxes ------------------------------------------------------------------------------------

bool TNumGrid::StringCheckedStatus(const QString& S) {
    const QString T = S.trimmed().toUpper();
    return T == QLatin1String("TRUE") || T == QLatin1String("1") || T == QLatin1String("X") ||
           T.startsWith(QLatin1Char('Y'));
}

bool TNumGrid::CheckedStatus(int ACol, int ARow) const {
    return StringCheckedStatus(Cells(ACol, ARow));
}

void TNumGrid::SetCheckedStatus(int ACol, int ARow, bool Checked) {
    TNumColumn* Column = Priv()->FColumns->Items(ACol);
    if (!Column || !Column->CheckBoxCol()) return;
    SetCells(ACol, ARow, Checked ? QStringLiteral("TRUE") : QStringLiteral("FALSE"));
}

void TNumGrid::ToggleCheckedStatus(int ACol, int ARow) {
    TNumColumn* Column = Priv()->FColumns->Items(ACol);
    if (!Column || !Column->CheckBoxCol()) return;
    SetCheckedStatus(ACol, ARow, !CheckedStatus(ACol, ARow));
}

// ---- rows and columns ---------------------------------------------------------------------------------

QString TNumGrid::DefaultCellText(int ACol, int ARow, bool ExpressionAsString) {
    TNumColumn* Column = Priv()->FColumns->Items(ACol);
    if (!Column) return {};
    TNumColumnPrivate* C = Column->Priv();
    if (C->FStringCol || (ExpressionAsString && C->FOnExprCheckVariable)) return C->FDefaultStr;
    return Column->GetValueString(ARow, QX_StrToFloatDef(C->FDefaultStr, 0.0L), true);
}

void TNumGrid::InitCells() {
    TNumGridPrivate* D = Priv();
    D->ShapeChanged();
    D->InitializingCells = true;
    ResetTitles();
    // The columns' change reports are collected into one refresh at the end: each would re-check
    // the whole grid, and checking it once gives the same texts.
    D->FColumns->BeginUpdate();
    const bool Was = std::exchange(D->InitializingColumns, true);
    for (int C = 0; C < D->FColumns->Count(); ++C)
        InitCol(C);
    D->InitializingColumns = Was;
    D->FColumns->EndUpdate();
    D->InitializingCells = false;
    GridStringsChanged(this);
}

void TNumGrid::InitCol(int ACol) {
    TNumGridPrivate* D = Priv();
    TNumColumn* Column = D->FColumns->Items(ACol);
    if (!Column || ACol >= ColCount()) return;
    QString Text = DefaultCellText(ACol, D->FFixedRows, false);
    Text.squeeze(); // shared by every cell of the column
    TNumColumnPrivate* P = Column->Priv();
    // Only a hook can make the default depend on the row.
    const bool PerRow = static_cast<bool>(P->FOnGetNumText) && !P->FStringCol;
    const bool Held = !P->FStringCol;
    const Extended Value = QX_StrToFloatDef(P->FDefaultStr, 0.0L);
    for (int R = D->FFixedRows; R < RowCount(); ++R) {
        const QString& T = PerRow ? DefaultCellText(ACol, R, false) : Text;
        if (Held)
            D->Store.Put(ACol, R, T, Value);
        else
            D->Store.Put(ACol, R, T);
        D->Store.SetObject(ACol, R, nullptr);
    }
    if (!D->InitializingColumns) D->CellsChanged();
    Column->Changed();
}

void TNumGrid::InitRow(int ARow) {
    TNumGridPrivate* D = Priv();
    if (ARow < 0 || ARow >= RowCount()) return;
    for (int C = 0; C < std::min(ColCount(), D->FColumns->Count()); ++C) {
        const TNumColumnPrivate* P = D->FColumns->Items(C)->Priv();
        if (P->HoldsValues())
            D->Store.Put(C, ARow, DefaultCellText(C, ARow, true), QX_StrToFloatDef(P->FDefaultStr, 0.0L));
        else
            D->Store.Put(C, ARow, DefaultCellText(C, ARow, true));
    }
    D->CellsChanged();
    if (D->FAfterInitRow) D->FAfterInitRow(this, ARow);
}

void TNumGrid::InsCopyRow(int ARow) {
    if (ARow < 1 || ARow >= RowCount()) return;
    for (int C = 0; C < ColCount(); ++C)
        Priv()->Store.PutCell(C, ARow, Priv()->Store.At(C, ARow - 1));
    Priv()->CellsChanged();
}

void TNumGrid::InsertRow(int ARow) {
    TNumGridPrivate* D = Priv();
    if (D->FRowCountFixed) return;
    ARow = std::clamp(ARow, 0, RowCount());
    SetRowCount(RowCount() + 1);
    // The new empty last row moves up to ARow; the rows from ARow on shift down by one.
    D->Store.MoveRow(RowCount() - 1, ARow);
    SetRow(ARow);
    if (!D->Updating) InitRow(ARow);
    if (D->FInsertCopyRow && ARow > D->FFixedRows) InsCopyRow(ARow);
    D->CellsChanged();
    if (D->FOnNewRow) D->FOnNewRow(this, ARow);
}

void TNumGrid::ClearRow(int ARow) {
    TNumGridPrivate* D = Priv();
    if (ARow < 0 || ARow >= RowCount()) return;
    for (int C = D->FFixedCols; C < ColCount(); ++C)
        D->Store.Clear(C, ARow);
    D->CellsChanged();
}

void TNumGrid::DeleteARow(int ARow) {
    TNumGridPrivate* D = Priv();
    if (D->FRowCountFixed || RowCount() <= D->FFixedRows) return;
    if (ARow < D->FFixedRows || ARow >= RowCount()) return;
    if (D->FConfirmDelete &&
        MessageDlg(Tr("Delete Row ?"), mtConfirmation, TMsgDlgButtons(mbOK) | mbCancel) != mrOk)
        return;
    if (D->FBeforeDeleteRow) D->FBeforeDeleteRow(this, ARow);
    const int Remembered = D->FRow;
    if (RowCount() - D->FFixedRows > 1) {
        DeleteRow(ARow);
        if (D->FAfterDeleteRow) D->FAfterDeleteRow(this, ARow);
    } else if (D->FClearLastDelRow) {
        ClearRow(ARow);
    }
    if (Remembered < RowCount()) SetRow(Remembered);
    if (D->FOptions.testFlag(goAlwaysShowEditor)) ShowEditor();
}

void TNumGrid::InsertCol(int ACol) {
    TNumGridPrivate* D = Priv();
    CheckCellCount(qint64(D->FColumns->Count()) + 1, RowCount());
    D->ShapeChanged();
    D->FColumns->Insert(ACol);
    // The texts stay where they are: the grid gains its new cells at the right-hand end, and only
    // those take a default (that of the last column description).
    const int OldCols = ColCount();
    D->Store.Resize(D->FColumns->Count(), RowCount());
    InitCol(D->FColumns->Count() - 1);
    SizeChanged(OldCols, RowCount());
    ResetTitles();
    D->LayoutChanged();
}

// ---- titles and refresh -------------------------------------------------------------------------------

void TNumGrid::ResetTitles() {
    TNumGridPrivate* D = Priv();
    if (D->FFixedRows <= 0 || RowCount() == 0 || !D->FColumns) return;
    const int N = std::min(ColCount(), D->FColumns->Count());
    for (int C = 0; C < N; ++C)
        D->Store.PutTitle(C, D->FColumns->Items(C)->TitleString());
    D->CellsChanged();
}

void TNumGrid::GridStringsChanged(QObject* Sender) {
    TNumGridPrivate* D = Priv();
    if (D->Updating) return;
    ResetTitles();
    // A column (or its title) that changed is checked alone; anything else checks every column
    // whose cells or settings changed since its last check.
    std::vector<int> Only;
    if (auto* T = qobject_cast<TNumColTitle*>(Sender)) Sender = T->Column();
    if (auto* Column = qobject_cast<TNumColumn*>(Sender); Column && Column->Grid() == this) {
        if (Column->Index() < 0) return;
        Only.push_back(Column->Index());
    }
    D->CheckColumns(Only, false);
    D->CellsChanged();
}

void TNumGrid::BeginUpdate() {
    Priv()->Updating = true;
}

void TNumGrid::EndUpdate() {
    Priv()->Updating = false;
    Priv()->CatchUpView();
    GridStringsChanged(this);
}

bool TNumGrid::IsUpdating() const {
    return Priv()->Updating;
}
QStringList TNumGrid::ColFormats() const {
    return Priv()->FColFormats;
}
void TNumGrid::SetColFormats(const QStringList& List) {
    Priv()->FColFormats = List;
}

// ---- checks --------------------------------------------------------------------------------------------

bool TNumGrid::CheckCell(int ACol, int ARow) {
    TNumGridPrivate* D = Priv();
    TNumColumn* Column = D->FColumns->Items(ACol);
    if (!Column) return true;
    if (Column->Priv()->FStringCol || Column->Priv()->FOnExprCheckVariable) return true;
    if (!D->Store.Contains(ACol, ARow)) return true;
    Extended V = 0.0L;
    // A read keeps text that holds no number (or nothing) as it was read (deliberate deviation 11).
    if (D->KeepReadTexts) {
        bool Ok = true;
        D->RawValue(Column, ACol, ARow, Ok);
        if (!Ok) return true;
    }
    return GetValueFromCell(ACol, ARow, V, true);
}

bool TNumGrid::CheckRow(int ARow) {
    for (int C = 0; C < Priv()->FColumns->Count(); ++C)
        if (!CheckCell(C, ARow)) return false;
    return true;
}

bool TNumGrid::CheckAllCells() {
    // From row 1 whatever FixedRows is: a second title row is checked as data. Every cell, even of
    // a column known to be checked: the host may have changed the unit tables or format settings.
    return Priv()->CheckColumns({}, true);
}

void TNumGrid::SwitchUnitSystem(TUnitSystem AValue) {
    TNumGridPrivate* D = Priv();
    const bool Outer = D->Updating;
    D->Updating = true;
    TNumColumns* Cols = D->FColumns;
    std::vector<int> Switched;
    for (int C = 0; C < Cols->Count(); ++C) {
        TNumColumn* Column = Cols->Items(C);
        // A column already showing AValue is left as it is: neither rewritten nor checked.
        if (Column->Priv()->HoldsValues() && !(Column->UnitSystemSet() && Column->UnitSystem() == AValue)) {
            Column->SetUnitSystem(AValue);
            Switched.push_back(C);
        }
    }
    D->Updating = Outer;
    if (Outer || Switched.empty()) return;
    D->CatchUpView();
    ResetTitles();
    D->CheckColumns(Switched, false);
    D->CellsChanged();
}

bool TNumGrid::CheckGrid() {
    if (CheckCell(Col(), Row())) return true;
    if (window()->isVisible()) setFocus(Qt::OtherFocusReason);
    SelectCell(Col(), Row());
    return false;
}

// ---- field contract -------------------------------------------------------------------------------------

bool TNumGrid::HasChanged() {
    const TNumGridPrivate* D = Priv();
    if (!D->FHasCopy || static_cast<int>(D->FCopyRows.size()) != RowCount()) return true;
    // Exact texts, no numeric tolerance: 1.0 and 1.00 differ.
    for (int R = 0; R < RowCount(); ++R) {
        const TCellRow& Copy = D->FCopyRows[static_cast<size_t>(R)];
        const TCellRow& Now = D->Store.Row(R);
        if (Copy.size() != Now.size()) return true;
        for (size_t C = 0; C < Now.size(); ++C)
            if (Copy[C].Text() != Now[C].Text()) return true;
    }
    return false;
}

void TNumGrid::SetCopyValue() {
    TNumGridPrivate* D = Priv();
    D->FCopyRows.clear();
    D->FCopyRows.reserve(static_cast<size_t>(RowCount()));
    for (int R = 0; R < RowCount(); ++R)
        D->FCopyRows.push_back(D->Store.Row(R));
    D->FHasCopy = true;
}

void TNumGrid::RestoreCopyValue() {
    TNumGridPrivate* D = Priv();
    if (!D->FHasCopy) return;
    if (D->Undo) D->Undo->clear();
    const std::vector<TCellRow> Copy = D->FCopyRows;
    SetRowCount(static_cast<int>(Copy.size()));
    if (!Copy.empty()) SetColCount(static_cast<int>(Copy.front().size()));
    for (int R = 0; R < RowCount(); ++R)
        D->Store.PutRow(R, Copy[static_cast<size_t>(R)]);
    D->Store.ClearObjects();
    D->CellsChanged();
}

void TNumGrid::OkChanges() {
    if (!CheckAllCells()) return;
    if (HasChanged()) ChangedAfterOK = true;
}

void TNumGrid::SetFormCreateVal() {}
void TNumGrid::ResetToFormCreateVal() {
    InitCells();
}
bool TNumGrid::GetReadOnly() const {
    return !Priv()->FOptions.testFlag(goEditing);
}

void TNumGrid::Assign(const QObject* Source) {
    const auto* S = qobject_cast<const TNumGrid*>(Source);
    if (!S) AssignError(Source);
    if (S == this) return;
    if (Priv()->Undo) Priv()->Undo->clear();
    SetRowCount(S->RowCount());
    SetColCount(S->ColCount());
    // Texts only: the other grid's columns may read them differently.
    for (int R = 0; R < RowCount(); ++R)
        for (int C = 0; C < ColCount(); ++C)
            Priv()->Store.Put(C, R, S->Priv()->Store.Cell(C, R));
    Priv()->CellsChanged();
    CheckAllCells();
}

QVariant TNumGrid::GetVariantValue() {
    return GetValueText();
}

QString TNumGrid::GetValueText() {
    constexpr int Limit = 120;
    QString S;
    for (int R = 0; R < RowCount(); ++R) {
        if (!S.isEmpty()) S += QStringLiteral("; ");
        S += QStringLiteral("Row%1:").arg(R);
        for (int C = 0; C < ColCount(); ++C) {
            if (S.size() > Limit) {
                S += QStringLiteral("...");
                break;
            }
            if (C > 0) S += QLatin1Char(';');
            S += Priv()->Store.Cell(C, R);
        }
        if (S.size() > Limit) break;
    }
    return S.replace(LineBreak, QStringLiteral(" "));
}

QString TNumGrid::GetXMLValueText(TXmlNode ParentXmlNode) {
    constexpr int Limit = 120;
    QString S;
    const TXmlNode RowsNode =
        ParentXmlNode.IsNull() ? TXmlNode() : ParentXmlNode.NodeByName(QStringLiteral("Rows"));
    bool First = true;
    for (TXmlNode N = RowsNode.IsNull() ? TXmlNode() : RowsNode.FirstChild(); !N.IsNull();
         N = N.NextSibling()) {
        if (S.size() > Limit) break;
        if (!First) S += QStringLiteral("; ");
        First = false;
        S += N.Name() + QLatin1Char(':') + N.ValueAsString();
    }
    if (S.size() > Limit) S = S.left(Limit) + QStringLiteral("...");
    return S.replace(LineBreak, QStringLiteral(" "));
}

// ---- change tracking -------------------------------------------------------------------------------------

void TNumGrid::CheckCellChange(int OldCol, int OldRow) {
    TNumGridPrivate* D = Priv();
    if (D->FCol == OldCol && D->FRow == OldRow) return;
    CheckCellTxtChange(OldCol, OldRow);
    if (D->FOnCellChange) D->FOnCellChange(this, D->FCol, D->FRow, OldCol, OldRow);
    Q_EMIT currentCellChanged(D->FCol, D->FRow, OldCol, OldRow);
    D->OldCelltxt = Cells(D->FCol, D->FRow);
}

void TNumGrid::CheckCellTxtChange(int ACol, int ARow) {
    TNumGridPrivate* D = Priv();
    const QString Text = Cells(ACol, ARow);
    if (Text == D->OldCelltxt) return;
    const QString Old = D->OldCelltxt;
    if (D->FOnCellTxtChange) D->FOnCellTxtChange(this, ACol, ARow, Old);
    Q_EMIT cellTextChanged(ACol, ARow, Old);
}

bool TNumGrid::DialogCancelled() const {
    return Priv()->DialogCancelled;
}
void TNumGrid::SetDialogCancelled(bool AValue) {
    Priv()->DialogCancelled = AValue;
}
bool TNumGrid::ResizingNumGrid() const {
    return Priv()->ResizingNumGrid;
}
QString TNumGrid::OwnerName() const {
    return Priv()->OwnerName();
}

QString TNumGrid::GridMessage(const QString& Text) const {
    return Text + LineBreak + QStringLiteral("in ") + Priv()->OwnerName();
}

// ---- flags and events ----------------------------------------------------------------------------------

#define QXNUM_GRID_FLAG(Name, Field)                                                                         \
    bool TNumGrid::Name() const {                                                                            \
        return Priv()->Field;                                                                                \
    }                                                                                                        \
    void TNumGrid::Set##Name(bool AValue) {                                                                  \
        Priv()->Field = AValue;                                                                              \
    }

QXNUM_GRID_FLAG(ConfirmDelete, FConfirmDelete)
QXNUM_GRID_FLAG(RowCountFixed, FRowCountFixed)
QXNUM_GRID_FLAG(AutoAddRow, FAutoAddRow)
QXNUM_GRID_FLAG(InsertCopyRow, FInsertCopyRow)
QXNUM_GRID_FLAG(AlwaysPasteFromLeftCol, FAlwaysPasteFromLeftCol)
QXNUM_GRID_FLAG(ClearLastDelRow, FClearLastDelRow)
QXNUM_GRID_FLAG(Extrapolate, FExtrapolate)
QXNUM_GRID_FLAG(AllowDataDialog, FAllowDataDialog)
QXNUM_GRID_FLAG(AllowPaste, FAllowPaste)
QXNUM_GRID_FLAG(ReadColTitlesFromStream, FReadColTitlesFromStream)
QXNUM_GRID_FLAG(StoreParTypes, FStoreParTypes)
QXNUM_GRID_FLAG(IgnoreColCountRead, FIgnoreColCountRead)
QXNUM_GRID_FLAG(IgnoreRowCountRead, FIgnoreRowCountRead)
QXNUM_GRID_FLAG(IgnoreColPropsRead, FIgnoreColPropsRead)
#undef QXNUM_GRID_FLAG

bool TNumGrid::HighLightSelect() const {
    return Priv()->FHighLightSelect;
}
void TNumGrid::SetHighLightSelect(bool AValue) {
    Priv()->FHighLightSelect = AValue;
    Priv()->CellsChanged();
}

TColStretchOptions TNumGrid::ColStretchOptions() const {
    return Priv()->FColStretchOptions;
}
void TNumGrid::SetColStretchOptions(TColStretchOptions AValue) {
    Priv()->FColStretchOptions = AValue;
    Priv()->LayoutChanged();
}

QFont TNumGrid::TitleFont() const {
    return Priv()->FTitleFont;
}
void TNumGrid::SetTitleFont(const QFont& AValue) {
    Priv()->FTitleFont = AValue;
    Priv()->LayoutChanged();
}

int TNumGrid::TitleLineCount() const {
    return Priv()->FTitleLineCount;
}
void TNumGrid::SetTitleLineCount(int AValue) {
    if (AValue == Priv()->FTitleLineCount) return;
    Priv()->FTitleLineCount = AValue;
    Priv()->LayoutChanged();
}

bool TNumGrid::InitializingCells() const {
    return Priv()->InitializingCells;
}
bool TNumGrid::ReadingFromStream() const {
    return Priv()->ReadingFromStream;
}

#define QXNUM_GRID_EVENT(Type, Getter, Setter, Field)                                                        \
    Type TNumGrid::Getter() const {                                                                          \
        return Priv()->Field;                                                                                \
    }                                                                                                        \
    void TNumGrid::Setter(Type AEvent) {                                                                     \
        Priv()->Field = std::move(AEvent);                                                                   \
    }

QXNUM_GRID_EVENT(TCellChangeEvent, OnCellChange, SetOnCellChange, FOnCellChange)
QXNUM_GRID_EVENT(TCellTxtChangeEvent, OnCellTxtChange, SetOnCellTxtChange, FOnCellTxtChange)
QXNUM_GRID_EVENT(TRowEvent, OnRowEdit, SetOnRowEdit, FOnRowEdit)
QXNUM_GRID_EVENT(TRowEvent, OnCancel, SetOnCancel, FOnCancel)
QXNUM_GRID_EVENT(TRowEvent, OnRefresh, SetOnRefresh, FOnRefresh)
QXNUM_GRID_EVENT(TRowEvent, OnPost, SetOnPost, FOnPost)
QXNUM_GRID_EVENT(TRowEvent, OnNewRow, SetOnNewRow, FOnNewRow)
QXNUM_GRID_EVENT(TRowEvent, AfterDeleteRow, SetAfterDeleteRow, FAfterDeleteRow)
QXNUM_GRID_EVENT(TRowEvent, BeforeDeleteRow, SetBeforeDeleteRow, FBeforeDeleteRow)
QXNUM_GRID_EVENT(TRowEvent, AfterInitRow, SetAfterInitRow, FAfterInitRow)
QXNUM_GRID_EVENT(TNotifyEvent, AfterClear, SetAfterClear, FAfterClear)
QXNUM_GRID_EVENT(TNotifyEvent, OnColWidthsChanged, SetOnColWidthsChanged, FOnColWidthsChanged)
QXNUM_GRID_EVENT(TGetEditEvent, OnGetCellText, SetOnGetCellText, FOnGetCellText)
QXNUM_GRID_EVENT(TCellChangeEvent, AfterPaste, SetAfterPaste, FAfterPaste)
#undef QXNUM_GRID_EVENT

} // namespace qxnum

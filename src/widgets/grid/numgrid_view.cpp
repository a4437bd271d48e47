// The grid's view: layout, painting, keyboard, mouse and the in-place editor.
//
// Scrolling is by whole rows and columns, as in a spreadsheet: the scroll bars hold the index of
// the first scrolling row and column, so painting and hit tests only ever look at the rows in
// view, whatever the row count.
#include "numcolumn_p.h"
#include "numgrid_view_p.h"
#include "numgridmodel_p.h"

#include <qxnum/dialogs.h>
#include <qxnum/numconv.h>
#include <qxnum/widgets/numedit.h>

#include <QApplication>
#include <QClipboard>
#include <QFocusEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QStyle>
#include <QStyleOption>
#include <QTimer>
#include <QToolTip>
#include <QUndoStack>

namespace qxnum {

namespace {

constexpr int CellMargin = 4;
constexpr int SizingZone = 4; // pixels either side of a column border that start a resize

QString DisplayText(const QString& S) {
    QString T = S;
    return T.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
}

} // namespace

void TGridViewStateDeleter::operator()(TGridViewState* S) const {
    delete S;
}

// ---- the editor -----------------------------------------------------------------------------------

TGridCellEditor::TGridCellEditor(TNumGrid* Grid) : QLineEdit(Grid->viewport()), FGrid(Grid) {
    setFrame(false);
    hide();
}

TGridCellEditor::~TGridCellEditor() {
    delete FRules;
}

void TGridCellEditor::SetColumn(TNumColumn* Column) {
    delete FRules;
    FRules = nullptr;
    if (!Column || Column->StringCol()) return;
    FRules = new TNumEdit;
    FRules->SetDataType(Column->DataType());
    FRules->SetNumericType(Column->NumericType());
    FRules->SetParType(Column->ParType());
    FRules->SetUnitSystem(Column->UnitSystem());
    FRules->SetCustomFormat(Column->CustomFormat());
    FRules->SetDigits(Column->Digits());
    FRules->SetDecimals(Column->Decimals());
    FRules->SetExpressionInput(static_cast<bool>(Column->OnExprCheckVariable()));
    if (Column->OnExprCheckVariable())
        FRules->SetOnExprCheckVariable([](QObject*, const QString&, Extended&, bool&) {});
}

bool TGridCellEditor::Acceptable(const QString& Inserted) {
    if (!FRules || Inserted.isEmpty()) return true;
    const QString Old = text();
    QString New = Old;
    int Pos = cursorPosition();
    if (hasSelectedText()) {
        Pos = selectionStart();
        New.remove(Pos, static_cast<int>(selectedText().size()));
    }
    New.insert(Pos, Inserted);
    if (FRules->IsAcceptableEdit(Old, New)) return true;
    QApplication::beep();
    QToolTip::showText(mapToGlobal(cursorRect().bottomLeft()), FRules->RefusalReason(Old, New), this);
    return false;
}

void TGridCellEditor::keyPressEvent(QKeyEvent* E) {
    switch (E->key()) {
    case Qt::Key_Escape:
        TNumGridPrivate::Of(FGrid)->CancelEdit();
        return;
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
        // Navigation keys end the edit and move, as in the grid itself.
        TNumGridPrivate::Of(FGrid)->EditorKey(E);
        return;
    default:
        break;
    }
    if (!E->text().isEmpty() && E->text().at(0).isPrint() && !(E->modifiers() & Qt::ControlModifier)) {
        QString T = E->text();
        if (E->modifiers() & Qt::KeypadModifier && (T == QLatin1String(".") || T == QLatin1String(",")) &&
            FRules)
            T = NumInpFormatSettings.DecimalSeparator;
        if (!Acceptable(T)) return;
        if (T != E->text()) {
            insert(T);
            return;
        }
    }
    if (E->matches(QKeySequence::Paste) && FGrid->AllowPaste()) {
        FGrid->PasteFromClipboard();
        return;
    }
    if (E->matches(QKeySequence::Paste)) {
        // As in the numeric edit: the first line, trimmed, checked as a whole.
        const QString T = QGuiApplication::clipboard()->text().split(QLatin1Char('\n')).value(0).trimmed();
        if (Acceptable(T)) insert(T);
        return;
    }
    QLineEdit::keyPressEvent(E);
}

void TGridCellEditor::inputMethodEvent(QInputMethodEvent* E) {
    if (!E->commitString().isEmpty() && !Acceptable(E->commitString())) {
        E->setCommitString(QString());
    }
    QLineEdit::inputMethodEvent(E);
}

void TGridCellEditor::focusOutEvent(QFocusEvent* E) {
    QLineEdit::focusOutEvent(E);
    // A click elsewhere in the window ends the edit; a popup or another window does not.
    if (E->reason() == Qt::PopupFocusReason || E->reason() == Qt::ActiveWindowFocusReason) return;
    QWidget* Next = QApplication::focusWidget();
    if (Next == FGrid || !isVisible()) return;
    TNumGridPrivate* D = TNumGridPrivate::Of(FGrid);
    D->CommitEdit();
    // Straight from the editor to another widget: this is leaving the grid as well.
    if (!Next || !FGrid->isAncestorOf(Next)) D->LeaveGrid();
}

// ---- private: layout -------------------------------------------------------------------------------

TGridViewState& TNumGridPrivate::V() const {
    return *View;
}

int TNumGridPrivate::ColWidth(int C) const {
    const auto& W = View->ColWidths;
    if (C < 0 || C >= static_cast<int>(W.size())) return FDefaultColWidth;
    return W[static_cast<size_t>(C)] < 0 ? 0 : W[static_cast<size_t>(C)];
}

int TNumGridPrivate::RowHeight(int R) const {
    if (R < FFixedRows && View->TitleHeight > 0 && !View->RowHeights.count(R)) return View->TitleHeight;
    const auto It = View->RowHeights.find(R);
    return It == View->RowHeights.end() ? FDefaultRowHeight : It->second;
}

int TNumGridPrivate::FixedWidth() const {
    int W = 0;
    for (int C = 0; C < std::min(FFixedCols, Store.ColCount()); ++C)
        W += ColWidth(C);
    return W;
}

int TNumGridPrivate::FixedHeight() const {
    int H = 0;
    for (int R = 0; R < std::min(FFixedRows, Store.RowCount()); ++R)
        H += RowHeight(R);
    return H;
}

void TNumGridPrivate::UpdateTitleHeight() {
    // Enough lines for the longest title, and at least the title line count plus a unit line.
    int Lines = 1;
    if (FFixedRows > 0 && Store.RowCount() > 0)
        for (int C = 0; C < Store.ColCount(); ++C)
            Lines =
                std::max(Lines, static_cast<int>(DisplayText(Store.Cell(C, 0)).count(QLatin1Char('\n'))) + 1);
    const QFontMetrics Fm(FTitleFont);
    View->TitleHeight = std::max(FDefaultRowHeight, Lines * Fm.lineSpacing() + 6);
}

int TNumGridPrivate::MaxTopRow() const {
    const int Avail = q->viewport()->height() - FixedHeight();
    int R = Store.RowCount() - 1, Used = 0;
    while (R >= FFixedRows && Used + RowHeight(R) <= Avail)
        Used += RowHeight(R--);
    return std::max(FFixedRows, R + 1 > Store.RowCount() - 1 ? Store.RowCount() - 1 : R + 1);
}

int TNumGridPrivate::MaxLeftCol() const {
    const int Avail = q->viewport()->width() - FixedWidth();
    int C = Store.ColCount() - 1, Used = 0;
    while (C >= FFixedCols && Used + ColWidth(C) <= Avail)
        Used += ColWidth(C--);
    return std::max(FFixedCols, std::min(C + 1, Store.ColCount() - 1));
}

void TNumGridPrivate::UpdateScrollBars() {
    TGridViewState& S = *View;
    QScrollBar* VBar = q->verticalScrollBar();
    QScrollBar* HBar = q->horizontalScrollBar();
    const int MaxTop = MaxTopRow(), MaxLeft = MaxLeftCol();
    S.TopRow = std::clamp(S.TopRow, FFixedRows, std::max(FFixedRows, MaxTop));
    S.LeftCol = std::clamp(S.LeftCol, FFixedCols, std::max(FFixedCols, MaxLeft));
    // The bars' signals stay on: their range changes are what shows or hides them (no scroll bar
    // while the cells fit). Their value changes on the way are no scrolling.
    const int Top = S.TopRow, Left = S.LeftCol;
    const bool Old = S.SyncingBars;
    S.SyncingBars = true;
    VBar->setRange(0, std::max(0, MaxTop - FFixedRows));
    VBar->setPageStep(std::max(1, q->VisibleRowCount()));
    VBar->setValue(Top - FFixedRows);
    HBar->setRange(0, std::max(0, MaxLeft - FFixedCols));
    HBar->setPageStep(std::max(1, q->VisibleColCount()));
    HBar->setValue(Left - FFixedCols);
    S.SyncingBars = Old;
}

void TNumGridPrivate::Stretch() {
    TGridViewState& S = *View;
    const int N = Store.ColCount();
    if (static_cast<int>(S.BaseWidths.size()) != N) S.BaseWidths = S.ColWidths;
    if (!FColStretchOptions.testFlag(csoAutoStretch) || N == 0) return;
    const int Avail = q->viewport()->width();
    int Total = 0;
    for (int C = 0; C < N; ++C)
        Total += std::max(0, S.BaseWidths[static_cast<size_t>(C)]);
    const int Extra = Avail - Total;
    if (Extra < 0 && !FColStretchOptions.testFlag(csoAllowShrink)) {
        S.ColWidths = S.BaseWidths;
        return;
    }
    std::vector<int> W = S.BaseWidths;
    if (FColStretchOptions.testFlag(csoLastColOnly)) {
        int Last = N - 1;
        while (Last > 0 && W[static_cast<size_t>(Last)] < 0)
            --Last;
        W[static_cast<size_t>(Last)] = std::max(8, W[static_cast<size_t>(Last)] + Extra);
    } else if (Total > 0) {
        int Given = 0, LastVisible = -1;
        for (int C = 0; C < N; ++C) {
            int& X = W[static_cast<size_t>(C)];
            if (X < 0) continue;
            const int Add = static_cast<int>(static_cast<qint64>(Extra) * X / Total);
            X = std::max(8, X + Add);
            Given += Add;
            LastVisible = C;
        }
        if (LastVisible >= 0) W[static_cast<size_t>(LastVisible)] += Extra - Given;
    }
    if (W != S.ColWidths) {
        S.ColWidths = W;
        if (FOnColWidthsChanged) FOnColWidthsChanged(q);
    }
}

void TNumGridPrivate::LayoutChanged() {
    if (Model) TNumGridModelPrivate::LayoutChanged(Model);
    if (!View) return;
    TGridViewState& S = *View;
    if (Updating) {
        S.Deferred = true;
        return;
    }
    const int N = Store.ColCount();
    if (static_cast<int>(S.ColWidths.size()) != N) {
        S.ColWidths.resize(static_cast<size_t>(N), FDefaultColWidth);
        S.BaseWidths = S.ColWidths;
    }
    for (auto It = S.RowHeights.begin(); It != S.RowHeights.end();)
        It = It->first >= Store.RowCount() ? S.RowHeights.erase(It) : std::next(It);
    FCol = std::clamp(FCol, 0, std::max(0, N - 1));
    FRow = std::clamp(FRow, 0, std::max(0, Store.RowCount() - 1));
    S.AnchorCol = std::clamp(S.AnchorCol, 0, std::max(0, N - 1));
    S.AnchorRow = std::clamp(S.AnchorRow, 0, std::max(0, Store.RowCount() - 1));
    UpdateTitleHeight();
    Stretch();
    UpdateScrollBars();
    NotifyAccessibleModel();
    PlaceEditor();
    q->viewport()->update();
    q->updateGeometry();
}

void TNumGridPrivate::CellsChanged() {
    if (Model) TNumGridModelPrivate::CellsChanged(Model);
    if (!View) return;
    if (Updating) {
        View->Deferred = true;
        return;
    }
    const int Old = View->TitleHeight;
    UpdateTitleHeight();
    if (Old != View->TitleHeight) {
        UpdateScrollBars();
        PlaceEditor();
    }
    q->viewport()->update();
}

void TNumGridPrivate::CellChanged(int ACol, int ARow) {
    if (Model) TNumGridModelPrivate::CellChanged(Model, ACol, ARow);
    if (!View) return;
    if (Updating) {
        View->Deferred = true;
        return;
    }
    if (ARow < FFixedRows) {
        CellsChanged();
        return;
    }
    const QRect R = q->CellRect(ACol, ARow);
    if (!R.isEmpty()) q->viewport()->update(R);
}

// ---- private: editing and moving ----------------------------------------------------------------------

bool TNumGridPrivate::CellEditable(int C, int R) const {
    if (!FOptions.testFlag(goEditing) || C < FFixedCols || R < FFixedRows) return false;
    if (C >= Store.ColCount() || R >= Store.RowCount()) return false;
    const TNumColumn* Column = FColumns->Items(C);
    return !(Column && Column->ReadOnly());
}

void TNumGridPrivate::PlaceEditor() {
    TGridViewState& S = *View;
    if (!S.EditorOpen || !S.Editor) return;
    const QRect R = q->CellRect(FCol, FRow);
    if (R.isEmpty()) {
        HideEditorWidget();
        return;
    }
    S.Editor->setGeometry(R.adjusted(1, 1, -1, -1));
    if (!S.Editor->isVisible()) S.Editor->show();
}

void TNumGridPrivate::OpenEditor(const QString* Initial) {
    TGridViewState& S = *View;
    if (S.EditorOpen || !CellEditable(FCol, FRow) || !q->CanEditShow()) return;
    TNumColumn* Column = FColumns->Items(FCol);
    if (Column && Column->CheckBoxCol()) return;
    if (!S.Editor) S.Editor = new TGridCellEditor(q);
    S.Editor->SetColumn(Column);
    QString Text = Store.Cell(FCol, FRow);
    if (FOnGetCellText) FOnGetCellText(q, FCol, FRow, Text);
    S.Editor->setFont(Column ? Column->Font() : q->font());
    S.Editor->setAlignment(Column ? ToQtAlignment(Column->Alignment()) : Qt::AlignLeft);
    S.Editor->setText(Text);
    S.EditorOpen = true;
    PlaceEditor();
    S.Editor->setFocus(Qt::OtherFocusReason);
    if (Initial) {
        S.Editor->clear();
        if (!Initial->isEmpty()) {
            QKeyEvent Key(QEvent::KeyPress, 0, Qt::NoModifier, *Initial);
            QApplication::sendEvent(S.Editor, &Key);
        }
    } else {
        // As F2 in a spreadsheet: the text stays, the cursor goes to its end.
        S.Editor->end(false);
    }
}

void TNumGridPrivate::HideEditorWidget() {
    TGridViewState& S = *View;
    // Hiding the focused editor would let Qt move the focus on through the grid's
    // focusNextPrevChild, which with goTabs moves the current cell one column on: the grid takes the
    // focus first (while EditorOpen still says that this is no entering of the grid).
    if (S.Editor->hasFocus() && q->isVisible()) q->setFocus(Qt::OtherFocusReason);
    S.Editor->hide();
}

void TNumGridPrivate::CommitEdit() {
    TGridViewState& S = *View;
    if (!S.EditorOpen) return;
    const QString Text = S.Editor->text();
    HideEditorWidget();
    S.EditorOpen = false;
    if (q->CanEditModify() && Text != Store.Cell(FCol, FRow)) {
        TGridUndoStep Step(this, FRow, 1, "Edit cell");
        q->SetCells(FCol, FRow, Text);
        S.CellEdited = true;
    }
    if (q->isVisible() && !q->hasFocus()) {
        QWidget* F = QApplication::focusWidget();
        if (!F || F == S.Editor) q->setFocus(Qt::OtherFocusReason);
    }
}

void TNumGridPrivate::CancelEdit() {
    TGridViewState& S = *View;
    if (!S.EditorOpen) return;
    HideEditorWidget();
    S.EditorOpen = false;
    q->setFocus(Qt::OtherFocusReason);
    q->viewport()->update();
}

bool TNumGridPrivate::ValidateCurrent() {
    TGridViewState& S = *View;
    if (!S.CellEdited || S.Validating) return true;
    TNumColumn* Column = FColumns->Items(FCol);
    if (!Column || !Column->Validate()) {
        S.CellEdited = false;
        return true;
    }
    S.Validating = true;
    bool Ok = true;
    const QString Text = Store.Cell(FCol, FRow);
    Extended Probe = 0.0L;
    // Text the numeric rules would read as 0 is refused rather than silently zeroed.
    if (!Column->StringCol() && !Column->OnExprCheckVariable() && !Text.trimmed().isEmpty() &&
        !TryQX_StrToFloat(Text.trimmed(), Probe)) {
        MessageDlg(
            q->GridMessage(Text + QCoreApplication::translate("TNumGrid", " is no valid numeric input.")),
            mtError, mbOK);
        Ok = false;
    } else {
        Ok = q->CheckCell(FCol, FRow);
    }
    S.Validating = false;
    if (Ok) {
        S.CellEdited = false;
    } else if (q->window()->isVisible()) {
        q->setFocus(Qt::OtherFocusReason);
    }
    return Ok;
}

void TNumGridPrivate::MoveTo(int C, int R, bool Extend) {
    TGridViewState& S = *View;
    if (S.Moving || Store.ColCount() == 0 || Store.RowCount() == 0) return;
    C = std::clamp(C, FFixedCols, std::max(FFixedCols, Store.ColCount() - 1));
    R = std::clamp(R, FFixedRows, std::max(FFixedRows, Store.RowCount() - 1));
    CommitEdit();
    if ((C != FCol || R != FRow) && !ValidateCurrent()) return;
    if (!q->SelectCell(C, R)) return;
    if (!Extend || !FOptions.testFlag(goRangeSelect)) {
        S.AnchorCol = FCol;
        S.AnchorRow = FRow;
    }
    q->viewport()->update();
}

void TNumGridPrivate::NavigateToRow(int R) {
    TGridViewState& S = *View;
    if (S.Moving || R < 0 || R >= Store.RowCount() || R == FRow) return;
    CommitEdit();
    if (!ValidateCurrent() || !q->SelectCell(FCol, R)) return;
    S.AnchorCol = FCol;
    S.AnchorRow = FRow;
    q->viewport()->update();
}

void TNumGridPrivate::ScrollIntoView(int C, int R) {
    TGridViewState& S = *View;
    if (Updating) {
        S.Deferred = true;
        return;
    }
    if (R >= FFixedRows) {
        if (R < S.TopRow) {
            S.TopRow = R;
        } else {
            const int Avail = q->viewport()->height() - FixedHeight();
            int Used = 0, Top = R;
            while (Top > FFixedRows && Used + RowHeight(Top) + RowHeight(Top - 1) <= Avail)
                Used += RowHeight(Top--);
            if (S.TopRow < Top) S.TopRow = Top;
        }
    }
    if (C >= FFixedCols) {
        if (C < S.LeftCol) {
            S.LeftCol = C;
        } else {
            const int Avail = q->viewport()->width() - FixedWidth();
            int Used = 0, Left = C;
            while (Left > FFixedCols && Used + ColWidth(Left) + ColWidth(Left - 1) <= Avail)
                Used += ColWidth(Left--);
            if (S.LeftCol < Left) S.LeftCol = Left;
        }
    }
    UpdateScrollBars();
    PlaceEditor();
}

void TNumGridPrivate::CatchUpView() {
    if (!View || !View->Deferred) return;
    View->Deferred = false;
    LayoutChanged();
    ScrollIntoView(FCol, FRow);
}

void TNumGridPrivate::UserToggle(int C, int R) {
    TGridUndoStep Step(this, R, 1, "Toggle check box");
    q->ToggleCheckedStatus(C, R);
}

QRect TNumGridPrivate::SelectedCells() const {
    const TGridViewState& S = *View;
    const int Top = std::min(S.AnchorRow, FRow), Bottom = std::max(S.AnchorRow, FRow);
    if (FOptions.testFlag(goRowSelect))
        return QRect(QPoint(FFixedCols, Top), QPoint(std::max(FFixedCols, Store.ColCount() - 1), Bottom));
    return QRect(QPoint(std::min(S.AnchorCol, FCol), Top), QPoint(std::max(S.AnchorCol, FCol), Bottom));
}

bool TNumGridPrivate::MultiCellSelection() const {
    const QRect Area = SelectedCells();
    return Area.width() > 1 || Area.height() > 1;
}

void TNumGridPrivate::ClearSelectedCells() {
    const QRect Area = SelectedCells() & QRect(0, 0, Store.ColCount(), Store.RowCount());
    bool Any = false;
    for (int C = Area.left(); C <= Area.right(); ++C)
        Any = Any || CellEditable(C, Area.top());
    if (!Any) {
        QApplication::beep();
        return;
    }
    TGridUndoStep Step(this, Area.top(), Area.height(), "Clear cells");
    for (int R = Area.top(); R <= Area.bottom(); ++R)
        for (int C = Area.left(); C <= Area.right(); ++C) {
            if (!CellEditable(C, R)) continue;
            const TNumColumn* Column = FColumns->Items(C);
            // A check box keeps its stored form; any other cell becomes empty (a number reads as 0).
            q->SetCells(C, R, Column && Column->CheckBoxCol() ? QStringLiteral("FALSE") : QString());
        }
}

void TNumGridPrivate::EditorKey(QKeyEvent* E) {
    CommitEdit();
    q->keyPressEvent(E);
}

// ---- TNumGrid: view API --------------------------------------------------------------------------------

void TNumGrid::ViewSetup() {
    TNumGridPrivate* D = Priv();
    D->View.reset(new TGridViewState);
    D->View->ColWidths.assign(static_cast<size_t>(ColCount()), D->FDefaultColWidth);
    D->View->BaseWidths = D->View->ColWidths;
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_InputMethodEnabled);
    viewport()->setMouseTracking(true);
    viewport()->setBackgroundRole(QPalette::Base);
    verticalScrollBar()->setSingleStep(1);
    horizontalScrollBar()->setSingleStep(1);
    D->LayoutChanged();
}

void TNumGrid::SetCol(int AValue) {
    Priv()->MoveTo(AValue, Row(), false);
}
void TNumGrid::SetRow(int AValue) {
    Priv()->MoveTo(Col(), AValue, false);
}

bool TNumGrid::SelectCell(int ACol, int ARow) {
    TNumGridPrivate* D = Priv();
    if (!D->Store.Contains(ACol, ARow)) return false;
    if (ACol == D->FCol && ARow == D->FRow) {
        D->ScrollIntoView(ACol, ARow);
        return true;
    }
    const int OldCol = D->FCol, OldRow = D->FRow;
    D->View->Moving = true;
    D->FCol = ACol;
    D->FRow = ARow;
    D->View->CellEdited = false;
    D->ScrollIntoView(ACol, ARow);
    CheckCellChange(OldCol, OldRow);
    ++D->MovesReported;
    D->LastReportedCell = QPoint(D->FCol, D->FRow);
    D->NotifyAccessibleFocus();
    D->View->Moving = false;
    viewport()->update();
    return true;
}

bool TNumGrid::CanEditShow() const {
    return Priv()->CellEditable(Col(), Row());
}
bool TNumGrid::CanEditModify() const {
    return Priv()->CellEditable(Col(), Row());
}

int TNumGrid::TopRow() const {
    return Priv()->View->TopRow;
}
void TNumGrid::SetTopRow(int AValue) {
    Priv()->View->TopRow = AValue;
    Priv()->UpdateScrollBars();
    Priv()->PlaceEditor();
    viewport()->update();
}
int TNumGrid::LeftCol() const {
    return Priv()->View->LeftCol;
}
void TNumGrid::SetLeftCol(int AValue) {
    Priv()->View->LeftCol = AValue;
    Priv()->UpdateScrollBars();
    Priv()->PlaceEditor();
    viewport()->update();
}

int TNumGrid::VisibleRowCount() const {
    const TNumGridPrivate* D = Priv();
    const int Avail = viewport()->height() - D->FixedHeight();
    int N = 0, Used = 0;
    for (int R = D->View->TopRow; R < RowCount() && Used + D->RowHeight(R) <= Avail; ++R, ++N)
        Used += D->RowHeight(R);
    return N;
}

int TNumGrid::VisibleColCount() const {
    const TNumGridPrivate* D = Priv();
    const int Avail = viewport()->width() - D->FixedWidth();
    int N = 0, Used = 0;
    for (int C = D->View->LeftCol; C < ColCount() && Used + D->ColWidth(C) <= Avail; ++C, ++N)
        Used += D->ColWidth(C);
    return N;
}

QRect TNumGrid::CellRect(int ACol, int ARow) const {
    const TNumGridPrivate* D = Priv();
    if (!D->Store.Contains(ACol, ARow)) return {};
    int X = 0, Y = 0;
    if (ACol < D->FFixedCols) {
        for (int C = 0; C < ACol; ++C)
            X += D->ColWidth(C);
    } else {
        if (ACol < D->View->LeftCol) return {};
        X = D->FixedWidth();
        for (int C = D->View->LeftCol; C < ACol; ++C) {
            X += D->ColWidth(C);
            if (X > viewport()->width()) return {};
        }
    }
    if (ARow < D->FFixedRows) {
        for (int R = 0; R < ARow; ++R)
            Y += D->RowHeight(R);
    } else {
        if (ARow < D->View->TopRow) return {};
        Y = D->FixedHeight();
        for (int R = D->View->TopRow; R < ARow; ++R) {
            Y += D->RowHeight(R);
            if (Y > viewport()->height()) return {};
        }
    }
    const QRect Cell(X, Y, D->ColWidth(ACol), D->RowHeight(ARow));
    return Cell.width() > 0 && Cell.intersects(viewport()->rect()) ? Cell : QRect();
}

bool TNumGrid::MouseToCell(const QPoint& Pos, int& ACol, int& ARow) const {
    const TNumGridPrivate* D = Priv();
    if (!viewport()->rect().contains(Pos)) return false;
    int Col = -1, Row = -1;
    int X = 0;
    for (int C = 0; C < D->FFixedCols && C < ColCount(); ++C) {
        if (Pos.x() < X + D->ColWidth(C) && D->ColWidth(C) > 0) {
            Col = C;
            break;
        }
        X += D->ColWidth(C);
    }
    for (int C = D->View->LeftCol; Col < 0 && C < ColCount() && X <= Pos.x(); ++C) {
        if (Pos.x() < X + D->ColWidth(C) && D->ColWidth(C) > 0) Col = C;
        X += D->ColWidth(C);
    }
    int Y = 0;
    for (int R = 0; R < D->FFixedRows && R < RowCount(); ++R) {
        if (Pos.y() < Y + D->RowHeight(R)) {
            Row = R;
            break;
        }
        Y += D->RowHeight(R);
    }
    for (int R = D->View->TopRow; Row < 0 && R < RowCount() && Y <= Pos.y(); ++R) {
        if (Pos.y() < Y + D->RowHeight(R)) Row = R;
        Y += D->RowHeight(R);
    }
    if (Col < 0 || Row < 0) return false;
    ACol = Col;
    ARow = Row;
    return true;
}

bool TNumGrid::EditorMode() const {
    return Priv()->View->EditorOpen;
}
void TNumGrid::SetEditorMode(bool AValue) {
    AValue ? ShowEditor() : HideEditor();
}
void TNumGrid::ShowEditor() {
    Priv()->OpenEditor(nullptr);
}
void TNumGrid::HideEditor() {
    if (Priv()->View) Priv()->CommitEdit();
}

int TNumGrid::ColWidths(int ACol) const {
    const auto& W = Priv()->View->ColWidths;
    return ACol >= 0 && ACol < static_cast<int>(W.size()) ? W[static_cast<size_t>(ACol)] : 0;
}

void TNumGrid::SetColWidths(int ACol, int AValue) {
    TGridViewState& S = *Priv()->View;
    if (ACol < 0 || ACol >= static_cast<int>(S.ColWidths.size())) return;
    if (S.BaseWidths.size() != S.ColWidths.size()) S.BaseWidths = S.ColWidths;
    if (S.BaseWidths[static_cast<size_t>(ACol)] == AValue && S.ColWidths[static_cast<size_t>(ACol)] == AValue)
        return;
    S.BaseWidths[static_cast<size_t>(ACol)] = AValue;
    S.ColWidths[static_cast<size_t>(ACol)] = AValue;
    Priv()->LayoutChanged();
}

int TNumGrid::RowHeights(int ARow) const {
    return Priv()->RowHeight(ARow);
}
void TNumGrid::SetRowHeights(int ARow, int AValue) {
    if (ARow < 0 || ARow >= RowCount()) return;
    Priv()->View->RowHeights[ARow] = std::max(0, AValue);
    Priv()->LayoutChanged();
}

int TNumGrid::DefaultColWidth() const {
    return Priv()->FDefaultColWidth;
}
void TNumGrid::SetDefaultColWidth(int AValue) {
    TNumGridPrivate* D = Priv();
    D->FDefaultColWidth = std::max(0, AValue);
    if (D->View) {
        std::fill(D->View->ColWidths.begin(), D->View->ColWidths.end(), D->FDefaultColWidth);
        D->View->BaseWidths = D->View->ColWidths;
    }
    D->LayoutChanged();
}

int TNumGrid::DefaultRowHeight() const {
    return Priv()->FDefaultRowHeight;
}
void TNumGrid::SetDefaultRowHeight(int AValue) {
    Priv()->FDefaultRowHeight = std::max(1, AValue);
    Priv()->LayoutChanged();
}

QColor TNumGrid::FixedColor() const {
    return Priv()->FFixedColor.isValid() ? Priv()->FFixedColor : palette().color(QPalette::Button);
}
void TNumGrid::SetFixedColor(const QColor& AValue) {
    Priv()->FFixedColor = AValue;
    viewport()->update();
}

// ---- painting ------------------------------------------------------------------------------------------

void TNumGridPrivate::PaintCell(QPainter& P, int C, int R, const QRect& Rect) {
    const QPalette& Pal = q->palette();
    const bool Fixed = C < FFixedCols || R < FFixedRows;
    TNumColumn* Column = FColumns->Items(C);
    const QString& Text = Store.Cell(C, R);
    if (Fixed) {
        const QColor Custom = R == 0 && R < FFixedRows && Column && Column->Title()->Color().isValid() &&
                                      Column->Title()->Color() != q->palette().color(QPalette::Button)
                                  ? Column->Title()->Color()
                                  : FFixedColor;
        QStyleOptionHeader Opt;
        Opt.initFrom(q);
        Opt.rect = Rect;
        Opt.state |= QStyle::State_Raised;
        Opt.orientation = R < FFixedRows ? Qt::Horizontal : Qt::Vertical;
        Opt.position = QStyleOptionHeader::Middle;
        if ((R < FFixedRows && C == FCol) || (C < FFixedCols && R == FRow)) Opt.state |= QStyle::State_Sunken;
        if (Custom.isValid())
            P.fillRect(Rect, Custom);
        else
            q->style()->drawControl(QStyle::CE_HeaderSection, &Opt, &P, q);
        P.setFont(R < FFixedRows ? FTitleFont : q->font());
        P.setPen(Pal.color(QPalette::ButtonText));
        const Qt::Alignment A = R == 0 && R < FFixedRows && Column
                                    ? ToQtAlignment(Column->Title()->Alignment())
                                    : Qt::AlignLeft | Qt::AlignVCenter;
        P.drawText(Rect.adjusted(CellMargin, 1, -CellMargin, -1), static_cast<int>(A), DisplayText(Text));
        return;
    }
    const bool ReadOnly = !CellEditable(C, R) && FOptions.testFlag(goEditing);
    const TGridViewState& S = *View;
    const bool Current = C == FCol && R == FRow;
    const bool InRange = FOptions.testFlag(goRowSelect)
                             ? (R >= std::min(S.AnchorRow, FRow) && R <= std::max(S.AnchorRow, FRow))
                             : (C >= std::min(S.AnchorCol, FCol) && C <= std::max(S.AnchorCol, FCol) &&
                                R >= std::min(S.AnchorRow, FRow) && R <= std::max(S.AnchorRow, FRow));
    const bool Highlight =
        FHighLightSelect && InRange &&
        (!Current || FOptions.testFlag(goDrawFocusSelected) || FOptions.testFlag(goRowSelect));
    const QPalette::ColorGroup Group =
        q->isEnabled() ? (q->hasFocus() || (S.EditorOpen) ? QPalette::Active : QPalette::Inactive)
                       : QPalette::Disabled;
    QColor Back = Column && Column->Priv()->FColor.isValid() ? Column->Priv()->FColor
                                                             : Pal.color(Group, QPalette::Base);
    if (ReadOnly) Back = Pal.color(Group, QPalette::AlternateBase);
    QColor Fore = Pal.color(ReadOnly ? QPalette::Disabled : Group, QPalette::Text);
    if (Highlight) {
        Back = Pal.color(Group, QPalette::Highlight);
        Fore = Pal.color(Group, QPalette::HighlightedText);
    }
    P.fillRect(Rect, Back);
    if (Column && Column->CheckBoxCol()) {
        QStyleOptionButton Opt;
        Opt.initFrom(q);
        const int Size = q->style()->pixelMetric(QStyle::PM_IndicatorWidth, &Opt, q);
        Opt.rect = QRect(Rect.center().x() - Size / 2 + 1, Rect.center().y() - Size / 2 + 1, Size, Size);
        Opt.state = (Opt.state & ~(QStyle::State_HasFocus | QStyle::State_MouseOver)) |
                    (q->CheckedStatus(C, R) ? QStyle::State_On : QStyle::State_Off);
        if (ReadOnly) Opt.state &= ~QStyle::State_Enabled;
        q->style()->drawPrimitive(QStyle::PE_IndicatorCheckBox, &Opt, &P, q);
        // Styles outline the box in a shade of the window colour, which all but vanishes on a
        // dark palette: the box gets an outline in the cell's text colour there.
        if (Back.lightnessF() < 0.5) {
            QColor Outline = Fore;
            Outline.setAlphaF(ReadOnly ? 0.4f : 0.7f);
            P.setPen(QPen(Outline, 1));
            P.setBrush(Qt::NoBrush);
            P.drawRect(QRectF(Opt.rect).adjusted(0.5, 0.5, -0.5, -0.5));
        }
    } else if (!Text.isEmpty()) {
        P.setFont(Column ? Column->Font() : q->font());
        P.setPen(Fore);
        const Qt::Alignment A =
            Column ? ToQtAlignment(Column->Alignment()) : Qt::AlignLeft | Qt::AlignVCenter;
        const QRect TextRect = Rect.adjusted(CellMargin, 0, -CellMargin, 0);
        P.drawText(TextRect, static_cast<int>(A),
                   P.fontMetrics().elidedText(DisplayText(Text), Qt::ElideRight, TextRect.width()));
    }
}

void TNumGrid::paintEvent(QPaintEvent* E) {
    TNumGridPrivate* D = Priv();
    QPainter P(viewport());
    const QPalette& Pal = palette();
    P.fillRect(E->rect(), Pal.color(QPalette::Base));
    if (ColCount() == 0 || RowCount() == 0) return;
    const TGridViewState& S = *D->View;
    const int VW = viewport()->width(), VH = viewport()->height();
    // Rows and columns in view: the fixed ones first, then the scrolling ones from TopRow / LeftCol.
    std::vector<std::pair<int, int>> Cols, Rows; // index, position
    int X = 0;
    for (int C = 0; C < D->FFixedCols && C < ColCount(); ++C) {
        Cols.emplace_back(C, X);
        X += D->ColWidth(C);
    }
    for (int C = S.LeftCol; C < ColCount() && X < VW; ++C) {
        Cols.emplace_back(C, X);
        X += D->ColWidth(C);
    }
    int Y = 0;
    for (int R = 0; R < D->FFixedRows && R < RowCount(); ++R) {
        Rows.emplace_back(R, Y);
        Y += D->RowHeight(R);
    }
    for (int R = S.TopRow; R < RowCount() && Y < VH; ++R) {
        Rows.emplace_back(R, Y);
        Y += D->RowHeight(R);
    }
    const QColor Line = Pal.color(QPalette::Mid);
    for (const auto& [R, RY] : Rows) {
        const int H = D->RowHeight(R);
        if (H <= 0 || !E->rect().intersects(QRect(0, RY, VW, H))) continue;
        for (const auto& [C, CX] : Cols) {
            const int W = D->ColWidth(C);
            if (W <= 0) continue;
            const QRect Cell(CX, RY, W, H);
            if (!E->rect().intersects(Cell)) continue;
            P.save();
            P.setClipRect(Cell);
            D->PaintCell(P, C, R, Cell);
            P.restore();
            const bool Fixed = C < D->FFixedCols || R < D->FFixedRows;
            if (!Fixed || (D->FFixedColor.isValid())) {
                if (D->FOptions.testFlag(Fixed ? goFixedVertLine : goVertLine))
                    P.fillRect(QRect(CX + W - 1, RY, 1, H), Line);
                if (D->FOptions.testFlag(Fixed ? goFixedHorzLine : goHorzLine))
                    P.fillRect(QRect(CX, RY + H - 1, W, 1), Line);
            }
        }
    }
    // The current cell's frame.
    const QRect Current = CellRect(Col(), Row());
    if (!Current.isEmpty() && !S.EditorOpen && Row() >= D->FFixedRows && Col() >= D->FFixedCols) {
        const QColor Frame =
            Pal.color(hasFocus() ? QPalette::Active : QPalette::Inactive, QPalette::Highlight);
        P.setPen(QPen(Frame, 2));
        P.setBrush(Qt::NoBrush);
        P.drawRect(QRectF(Current).adjusted(1, 1, -1.5, -1.5));
    }
}

// ---- events --------------------------------------------------------------------------------------------

bool TNumGrid::event(QEvent* E) {
    if (E->type() == QEvent::ShortcutOverride) {
        // Keys the grid handles itself are not taken by the window's shortcuts.
        auto* K = static_cast<QKeyEvent*>(E);
        if (K->key() == Qt::Key_Home || K->key() == Qt::Key_End || K->key() == Qt::Key_Space) {
            E->accept();
            return true;
        }
    }
    return QAbstractScrollArea::event(E);
}

bool TNumGrid::viewportEvent(QEvent* E) {
    return QAbstractScrollArea::viewportEvent(E);
}

void TNumGrid::resizeEvent(QResizeEvent* E) {
    QAbstractScrollArea::resizeEvent(E);
    Priv()->LayoutChanged();
}

void TNumGrid::scrollContentsBy(int, int) {
    TNumGridPrivate* D = Priv();
    if (D->View->SyncingBars) return;
    D->View->TopRow = D->FFixedRows + verticalScrollBar()->value();
    D->View->LeftCol = D->FFixedCols + horizontalScrollBar()->value();
    D->PlaceEditor();
    viewport()->update();
}

void TNumGrid::keyPressEvent(QKeyEvent* E) {
    TNumGridPrivate* D = Priv();
    const bool Ctrl = E->modifiers() & Qt::ControlModifier;
    const bool Shift = E->modifiers() & Qt::ShiftModifier;
    const int C = Col(), R = Row();
    const int FirstCol = D->FFixedCols, LastCol = ColCount() - 1;
    const int FirstRow = D->FFixedRows, LastRow = RowCount() - 1;
    switch (E->key()) {
    case Qt::Key_Up:
        D->MoveTo(C, R - 1, Shift);
        return;
    case Qt::Key_Down:
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (R >= LastRow && D->FAutoAddRow && !D->FRowCountFixed && E->key() == Qt::Key_Down) {
            D->CommitEdit();
            if (!D->ValidateCurrent()) return;
            TGridUndoStep Step(D, RowCount() - 1, 2, "Append row");
            InsertRow(RowCount());
            return;
        }
        D->MoveTo(C, R + 1, Shift && E->key() == Qt::Key_Down);
        return;
    case Qt::Key_Left:
        D->MoveTo(C - 1, R, Shift);
        return;
    case Qt::Key_Right:
        D->MoveTo(C + 1, R, Shift);
        return;
    case Qt::Key_Home:
        Ctrl ? D->MoveTo(FirstCol, FirstRow, Shift) : D->MoveTo(FirstCol, R, Shift);
        return;
    case Qt::Key_End:
        Ctrl ? D->MoveTo(LastCol, LastRow, Shift) : D->MoveTo(LastCol, R, Shift);
        return;
    case Qt::Key_PageUp:
        D->MoveTo(C, R - std::max(1, VisibleRowCount()), Shift);
        return;
    case Qt::Key_PageDown:
        D->MoveTo(C, R + std::max(1, VisibleRowCount()), Shift);
        return;
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
        if (D->FOptions.testFlag(goTabs)) {
            focusNextPrevChild(E->key() == Qt::Key_Tab && !Shift);
            return;
        }
        break;
    case Qt::Key_F2:
        ShowEditor();
        return;
    case Qt::Key_Delete:
    case Qt::Key_Backspace:
        if (E->modifiers() & ~Qt::KeypadModifier) break;
        D->ClearSelectedCells();
        return;
    case Qt::Key_Space: {
        TNumColumn* Column = D->FColumns->Items(C);
        if (Column && Column->CheckBoxCol()) {
            if (D->CellEditable(C, R)) D->UserToggle(C, R);
            return;
        }
        break;
    }
    default:
        break;
    }
    if (E->matches(QKeySequence::Paste)) {
        if (D->FAllowPaste) PasteFromClipboard();
        return;
    }
    if (E->matches(QKeySequence::Copy)) {
        if (D->MultiCellSelection())
            D->CopyCells(D->SelectedCells());
        else
            CopyToClipboard();
        return;
    }
    if (E->matches(QKeySequence::Undo)) {
        D->CommitEdit();
        D->UndoStack()->undo();
        return;
    }
    // Ctrl+Y as well as the platform's redo key: both are in common use.
    if (E->matches(QKeySequence::Redo) || (Ctrl && !Shift && E->key() == Qt::Key_Y)) {
        D->CommitEdit();
        D->UndoStack()->redo();
        return;
    }
    const QString T = E->text();
    if (!T.isEmpty() && T.at(0).isPrint() && !Ctrl) {
        if (D->CellEditable(C, R)) {
            D->OpenEditor(&T);
        } else {
            QApplication::beep();
        }
        return;
    }
    QAbstractScrollArea::keyPressEvent(E);
}

bool TNumGrid::focusNextPrevChild(bool Next) {
    TNumGridPrivate* D = Priv();
    if (!D->FOptions.testFlag(goTabs) || !D->View) return QAbstractScrollArea::focusNextPrevChild(Next);
    int C = Col(), R = Row();
    if (Next) {
        if (++C >= ColCount()) {
            if (R + 1 >= RowCount()) return QAbstractScrollArea::focusNextPrevChild(Next);
            C = D->FFixedCols;
            ++R;
        }
    } else if (--C < D->FFixedCols) {
        if (R - 1 < D->FFixedRows) return QAbstractScrollArea::focusNextPrevChild(Next);
        C = ColCount() - 1;
        --R;
    }
    D->MoveTo(C, R, false);
    return true;
}

void TNumGrid::mousePressEvent(QMouseEvent* E) {
    TNumGridPrivate* D = Priv();
    if (E->button() != Qt::LeftButton) return QAbstractScrollArea::mousePressEvent(E);
    setFocus(Qt::MouseFocusReason);
    const QPoint Pos = E->position().toPoint();
    const int Border = D->ColumnBorderAt(Pos);
    if (Border >= 0) {
        D->View->SizingCol = Border;
        D->View->SizingStartX = Pos.x();
        D->View->SizingStartWidth = D->ColWidth(Border);
        return;
    }
    int C = 0, R = 0;
    if (!MouseToCell(Pos, C, R) || C < D->FFixedCols || R < D->FFixedRows) return;
    const bool WasCurrent = C == Col() && R == Row() && !D->View->EditorOpen;
    D->MoveTo(C, R, E->modifiers() & Qt::ShiftModifier);
    if (Col() != C || Row() != R) return;
    TNumColumn* Column = D->FColumns->Items(C);
    if (Column && Column->CheckBoxCol()) {
        if (D->CellEditable(C, R)) D->UserToggle(C, R);
        return;
    }
    if (WasCurrent && D->FOptions.testFlag(goEditing)) {
        ShowEditor();
        return;
    }
    D->View->Selecting = D->FOptions.testFlag(goRangeSelect);
}

void TNumGrid::mouseMoveEvent(QMouseEvent* E) {
    TNumGridPrivate* D = Priv();
    const QPoint Pos = E->position().toPoint();
    if (D->View->SizingCol >= 0) {
        SetColWidths(D->View->SizingCol,
                     std::max(4, D->View->SizingStartWidth + Pos.x() - D->View->SizingStartX));
        if (D->FOnColWidthsChanged) D->FOnColWidthsChanged(this);
        return;
    }
    viewport()->setCursor(D->ColumnBorderAt(Pos) >= 0 ? Qt::SplitHCursor : Qt::ArrowCursor);
    if (D->View->Selecting && (E->buttons() & Qt::LeftButton)) {
        int C = 0, R = 0;
        if (MouseToCell(Pos, C, R) && C >= D->FFixedCols && R >= D->FFixedRows) D->MoveTo(C, R, true);
    }
}

void TNumGrid::mouseReleaseEvent(QMouseEvent* E) {
    Priv()->View->Selecting = false;
    Priv()->View->SizingCol = -1;
    QAbstractScrollArea::mouseReleaseEvent(E);
}

void TNumGrid::mouseDoubleClickEvent(QMouseEvent* E) {
    int C = 0, R = 0;
    if (E->button() == Qt::LeftButton && MouseToCell(E->position().toPoint(), C, R) && C == Col() &&
        R == Row()) {
        TNumColumn* Column = Priv()->FColumns->Items(C);
        if (Column && Column->CheckBoxCol()) {
            // The second click of a double click toggles as well, as two single clicks would.
            if (Priv()->CellEditable(C, R)) Priv()->UserToggle(C, R);
            return;
        }
        ShowEditor();
    }
}

int TNumGridPrivate::ColumnBorderAt(const QPoint& Pos) const {
    if (!FOptions.testFlag(goColSizing) || FFixedRows == 0 || Pos.y() >= FixedHeight()) return -1;
    int X = 0;
    auto Check = [&](int C) {
        X += ColWidth(C);
        return ColWidth(C) > 0 && std::abs(Pos.x() - X) <= SizingZone;
    };
    for (int C = 0; C < FFixedCols && C < Store.ColCount(); ++C)
        if (Check(C)) return C;
    for (int C = View->LeftCol; C < Store.ColCount() && X <= q->viewport()->width(); ++C)
        if (Check(C)) return C;
    return -1;
}

void TNumGrid::focusInEvent(QFocusEvent* E) {
    QAbstractScrollArea::focusInEvent(E);
    TNumGridPrivate* D = Priv();
    if (E->reason() != Qt::PopupFocusReason && E->reason() != Qt::ActiveWindowFocusReason &&
        !D->View->EditorOpen && !D->View->Validating)
        D->OldCelltxt = Cells(Col(), Row());
    viewport()->update();
}

void TNumGrid::focusOutEvent(QFocusEvent* E) {
    QAbstractScrollArea::focusOutEvent(E);
    TNumGridPrivate* D = Priv();
    viewport()->update();
    if (E->reason() == Qt::PopupFocusReason || E->reason() == Qt::ActiveWindowFocusReason) return;
    QWidget* Next = QApplication::focusWidget();
    if (Next && (Next == D->View->Editor || isAncestorOf(Next))) return;
    if (D->View->Validating) return;
    D->LeaveGrid();
}

void TNumGridPrivate::LeaveGrid() {
    // An edited cell is checked; an invalid one takes the focus back.
    if (View->CellEdited && !ValidateCurrent()) return;
    q->CheckCellTxtChange(FCol, FRow);
}

void TNumGrid::changeEvent(QEvent* E) {
    QAbstractScrollArea::changeEvent(E);
    if (E->type() == QEvent::FontChange || E->type() == QEvent::StyleChange) Priv()->LayoutChanged();
    if (E->type() == QEvent::PaletteChange || E->type() == QEvent::EnabledChange) viewport()->update();
}

QSize TNumGrid::sizeHint() const {
    const TNumGridPrivate* D = Priv();
    int W = 2 * frameWidth(), H = 2 * frameWidth();
    for (int C = 0; C < std::min(ColCount(), 8); ++C)
        W += D->ColWidth(C);
    for (int R = 0; R < std::min(RowCount(), 10); ++R)
        H += D->RowHeight(R);
    return {std::max(W, 120), std::max(H, 80)};
}

QSize TNumGrid::minimumSizeHint() const {
    return {60, 40};
}

} // namespace qxnum

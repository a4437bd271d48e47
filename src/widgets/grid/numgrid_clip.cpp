// The grid's clipboard: paste of delimited text, copy of every cell, and the text table export.
#include "numcolumn_p.h"
#include "numgrid_view_p.h"
#include "numgridmodel_p.h"

#include <qxnum/dialogs.h>
#include <qxnum/numconv.h>
#include <qxnum/units.h>

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QElapsedTimer>
#include <QMenu>
#include <QMimeData>
#include <QMouseEvent>
#include <QToolTip>
#include <QUndoStack>

#include <algorithm>
#include <optional>

namespace qxnum {

namespace {

QString Tr(const char* Source) {
    return QCoreApplication::translate("TNumGrid", Source);
}

constexpr int MaxPasteRow = 10000;
// The event loop runs at most this often during a paste: a click still stops it at once, and the
// loop costs nothing beside the parsing.
constexpr qint64 PasteEventInterval = 10;

struct TPasteCancelled {};

bool IsDelimiter(QChar C) {
    const char16_t U = C.unicode();
    return U == 9 || U == 10 || U == 13 || U == 32 || U == 59;
}

bool IsLineEnd(QChar C) {
    return C.unicode() == 10 || C.unicode() == 13;
}

// While a paste runs the application is busy: user input is swallowed, except a mouse press on
// the grid, which stops the paste, and input to a dialog that the paste itself opened.
class TPasteInputGuard : public QObject {
public:
    explicit TPasteInputGuard(TNumGridPrivate* Grid)
        : D(Grid), ModalAtStart(QApplication::activeModalWidget()) {
        qApp->installEventFilter(this);
    }
    ~TPasteInputGuard() override { qApp->removeEventFilter(this); }

protected:
    bool eventFilter(QObject* O, QEvent* E) override {
        switch (E->type()) {
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonDblClick:
        case QEvent::MouseButtonRelease:
        case QEvent::KeyPress:
        case QEvent::KeyRelease:
        case QEvent::ShortcutOverride:
        case QEvent::Wheel:
        case QEvent::TouchBegin:
        case QEvent::Close:
            break;
        default:
            return false;
        }
        auto* W = qobject_cast<QWidget*>(O);
        if (!W) return false;
        QWidget* Modal = QApplication::activeModalWidget();
        if (Modal && Modal != ModalAtStart && (Modal == W || Modal->isAncestorOf(W))) return false;
        if (E->type() == QEvent::MouseButtonPress && (W == D->q || D->q->isAncestorOf(W)))
            D->Pasting_or_Copying = false;
        return true;
    }

private:
    TNumGridPrivate* D;
    QWidget* ModalAtStart;
};

// A cell's text in the text flavour: one line, no TAB, so that the table keeps its shape.
QString FlatCell(const QString& S) {
    QString T = S;
    T.replace(QStringLiteral("\r\n"), QStringLiteral(" "));
    for (QChar& C : T)
        if (C.unicode() == 9 || C.unicode() == 10 || C.unicode() == 13) C = QLatin1Char(' ');
    return T;
}

QString HtmlCell(const QString& S) {
    QString T = S.toHtmlEscaped();
    T.replace(QStringLiteral("\r\n"), QStringLiteral("<br>"));
    T.replace(QLatin1Char('\n'), QStringLiteral("<br>"));
    return T;
}

} // namespace

QMenu* TNumGrid::createStandardContextMenu() {
    TNumGridPrivate* D = Priv();
    auto* Menu = new QMenu(this);
    Menu->setObjectName(QStringLiteral("qt_numgrid_menu"));
    QUndoStack* Stack = D->UndoStack();
    QAction* Undo =
        Menu->addAction(Stack->undoText().isEmpty() ? Tr("&Undo") : Tr("&Undo %1").arg(Stack->undoText()),
                        Stack, &QUndoStack::undo);
    Undo->setShortcut(QKeySequence::Undo);
    Undo->setEnabled(Stack->canUndo());
    QAction* Redo =
        Menu->addAction(Stack->redoText().isEmpty() ? Tr("&Redo") : Tr("&Redo %1").arg(Stack->redoText()),
                        Stack, &QUndoStack::redo);
    Redo->setShortcut(QKeySequence::Redo);
    Redo->setEnabled(Stack->canRedo());
    Menu->addSeparator();
    // As Ctrl+C: a selection of more than one cell is copied as selected, else the whole table.
    QAction* Copy =
        D->MultiCellSelection()
            ? Menu->addAction(Tr("&Copy selection"), this, [D] { D->CopyCells(D->SelectedCells()); })
            : Menu->addAction(Tr("&Copy table"), this, [this] { CopyToClipboard(); });
    Copy->setShortcut(QKeySequence::Copy);
    Copy->setEnabled(!D->View->EditorOpen);
    QAction* Paste = Menu->addAction(Tr("&Paste"), this, [this] { PasteFromClipboard(); });
    Paste->setShortcut(QKeySequence::Paste);
    const QMimeData* Mime = QGuiApplication::clipboard()->mimeData();
    Paste->setEnabled(D->FAllowPaste && !GetReadOnly() && Mime && Mime->hasText());
    Menu->addSeparator();
    // The row operations of the navigator, with the grid's own confirmation and undo steps.
    const bool Rows = !GetReadOnly() && !D->FRowCountFixed;
    QAction* Insert = Menu->addAction(Tr("&Insert row"), this, [this, D] {
        D->CommitEdit();
        if (!CheckGrid()) return;
        TGridUndoStep Step(D, Row() - 1, 3, "Insert row");
        InsertRow(Row());
    });
    Insert->setEnabled(Rows);
    QAction* Delete = Menu->addAction(Tr("&Delete row"), this, [this, D] {
        D->CommitEdit();
        TGridUndoStep Step(D, Row() - 1, 3, "Delete row");
        DeleteARow(Row());
    });
    Delete->setEnabled(Rows && Row() >= D->FFixedRows && RowCount() > D->FFixedRows);
    return Menu;
}

void TNumGrid::contextMenuEvent(QContextMenuEvent* E) {
    if (Priv()->Pasting_or_Copying) return;
    QMenu* Menu = createStandardContextMenu();
    Menu->setAttribute(Qt::WA_DeleteOnClose);
    Menu->popup(E->globalPos());
}

bool TNumGrid::PastingOrCopying() const {
    return Priv()->Pasting_or_Copying;
}

void TNumGrid::PasteFromClipboard() {
    TNumGridPrivate* D = Priv();
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    const QString SavedHint = toolTip();
    setToolTip(Tr("Click mouse to stop"));
    if (isVisible()) QToolTip::showText(mapToGlobal(rect().center()), toolTip(), this);
    D->Pasting_or_Copying = true;
    const QString Question = D->FAlwaysPasteFromLeftCol
                                 ? Tr("Paste from upper row? (Yes)\r\n(No = from selected row)")
                                 : Tr("Paste from upper left cell? (Yes)\r\n(No = from selected cell)");
    const bool SavedAllowDataDialog = D->FAllowDataDialog;
    BeginUpdate();
    const int OldCol = Col(), OldRow = Row();
    int c = 0, r = 0, Widest = 0;
    bool Ended = false;     // reached the end normally: AfterPaste is called
    bool Cancelled = false; // the question was answered Cancel
    // One undo step, to the end of the refresh (its checks may reformat what was pasted).
    std::optional<TGridUndoStep> Step;
    // The clipboard text, and the field being pasted as a view of it (quoted when it fails).
    QString S;
    QStringView Field;
    try {
        if (D->View->EditorOpen) {
            // The editor takes the text itself; a numeric column takes it back if it is no number.
            TGridCellEditor* Editor = D->View->Editor;
            const QString Line =
                QGuiApplication::clipboard()->text().split(QLatin1Char('\n')).value(0).trimmed();
            const QString Before = Editor->text();
            const int Cursor = Editor->cursorPosition();
            Editor->insert(Line);
            const TNumColumn* Column = D->FColumns->Items(Col());
            Extended Probe = 0.0L;
            if (Column && !Column->StringCol() && !TryQX_StrToFloat(Editor->text().left(40), Probe)) {
                // Taken back exactly, whatever the editor's own undo history holds.
                Editor->setText(Before);
                Editor->setCursorPosition(Cursor);
                QApplication::beep();
            }
            r = Row();
            Widest = Col();
            Ended = true;
        } else if (QGuiApplication::clipboard()->mimeData() &&
                   QGuiApplication::clipboard()->mimeData()->hasText()) {
            if (Col() < D->FFixedCols) D->FCol = D->FFixedCols;
            if (Row() < D->FFixedRows) D->FRow = D->FFixedRows;
            int StartCol = 0, StartRow = 0;
            switch (MessageDlg(Question, mtConfirmation, mbYesNoCancel)) {
            case mrYes:
                StartCol = D->FAlwaysPasteFromLeftCol ? 0 : D->FFixedCols;
                StartRow = 0;
                D->FAllowDataDialog = false;
                break;
            case mrNo:
                if (D->FAlwaysPasteFromLeftCol) {
                    D->FAllowDataDialog = false;
                    StartCol = 0;
                } else {
                    StartCol = Col();
                }
                StartRow = Row();
                break;
            default:
                throw TPasteCancelled();
            }
            S = QGuiApplication::clipboard()->text();
            const int L = static_cast<int>(S.size());
            auto At = [&S](int Pos) { return S.at(Pos - 1); }; // positions 1..L
            Step.emplace(D, std::max(StartRow, D->FFixedRows), -1, "Paste");
            TPasteInputGuard Guard(D);
            QElapsedTimer Clock;
            Clock.start();
            int i = 1;
            unsigned Fields = 0; // the clock is read every 64 fields: reading it costs as much as a field
            c = StartCol;
            r = StartRow;
            Widest = c;
            for (;;) {
                while (i <= L && IsDelimiter(At(i))) {
                    if (IsLineEnd(At(i))) {
                        c = StartCol;
                        ++r;
                        if (At(i).unicode() == 13) ++i; // the LF of CR LF is passed unread
                        if (i < L && r > RowCount() - 1) {
                            InsertRow(r);
                            TNumColumn* First = D->FColumns->Items(StartCol);
                            if (First && !First->StringCol() && !First->Priv()->FOnExprCheckVariable)
                                SetDValues(StartCol, r, 0.0L);
                            else
                                SetCells(StartCol, r, QString());
                        }
                    } else if (!(At(i).unicode() == 32 && i > 1 && IsDelimiter(At(i - 1)))) {
                        ++c; // blanks after a delimiter only align, they open no column
                    }
                    ++i;
                }
                int j = i;
                do {
                    ++j;
                } while (j < L && !IsDelimiter(At(j)));
                // The scan stops at L: a last field without a line end loses its last character.
                Field = i <= L ? QStringView(S).mid(i - 1, j - i) : QStringView();
                if (r >= D->FFixedRows) {
                    TNumColumn* Column = D->FColumns->Items(c);
                    if (!Column) throw std::out_of_range("column");
                    if (Column->ReadOnly()) {
                    } else if (Column->StringCol() || Column->Priv()->FOnExprCheckVariable) {
                        SetCells(c, r, Field.toString());
                    } else if (const QStringView Trimmed = Field.trimmed(); !Trimmed.isEmpty()) {
                        // The pasted text's own value, held beside its text (deliberate deviation
                        // 4), parsed in place: the number needs no copy of its own.
                        Extended V = QX_StrToFloat(QString::fromRawData(Trimmed.data(), Trimmed.size()));
                        const auto F =
                            Column->NumericType() == ntParType
                                ? static_cast<Extended>(ParScaleOf(Column->ParType(), Column->UnitSystem()))
                                : 1.0L;
                        V = (V * F - Column->ScaleOffset()) * Column->CustomScale();
                        SetDValues(c, r, V);
                    }
                }
                i = j;
                if (c > ColCount() - 1)
                    while (i <= L && !IsLineEnd(At(i)))
                        ++i;
                Widest = std::max(Widest, c);
                if ((++Fields & 63) == 0 && Clock.elapsed() >= PasteEventInterval) {
                    QCoreApplication::processEvents();
                    Clock.restart();
                }
                if (r > MaxPasteRow || i >= L || !D->Pasting_or_Copying || D->DialogCancelled) break;
            }
            if (r > MaxPasteRow)
                MessageDlg(Tr("Maximum of 10000 rows in numgrid encountered"), mtWarning, mbOK);
            Ended = true;
        }
    } catch (const TPasteCancelled&) {
        Cancelled = true;
    } catch (const std::exception&) {
        MessageDlg(QString::asprintf("Error encountered pasting string \"%s\" into grid at col %d, row %d",
                                     qUtf8Printable(Field.toString()), c, r),
                   mtError, mbOK);
    }
    if (Ended && D->FAfterPaste) D->FAfterPaste(this, Widest, r - 1, OldCol, OldRow);
    if (Cancelled) {
        // Nothing was pasted: no refresh either, which could reformat cells outside any undo step.
        const TModelHold Hold(D);
        D->Updating = false;
        D->CatchUpView();
    } else {
        EndUpdate();
    }
    Step.reset();
    D->FAllowDataDialog = SavedAllowDataDialog;
    QGuiApplication::restoreOverrideCursor();
    setToolTip(SavedHint);
    QToolTip::hideText();
    D->Pasting_or_Copying = false;
    D->DialogCancelled = false;
}

bool TNumGrid::CopyToClipboard() {
    TNumGridPrivate* D = Priv();
    if (D->View->EditorOpen) return false;
    // The columns a paste answered Yes starts at, so that copy and paste are each other's inverse.
    const int FirstCol = D->FAlwaysPasteFromLeftCol ? 0 : std::min(D->FFixedCols, ColCount());
    return D->CopyCells(QRect(QPoint(FirstCol, 0), QPoint(ColCount() - 1, RowCount() - 1)));
}

bool TNumGridPrivate::CopyCells(const QRect& Area) {
    if (View->EditorOpen) return false;
    const QString SavedHint = q->toolTip();
    q->setToolTip(Tr("Click mouse or type \"e\" to stop"));
    Pasting_or_Copying = true;
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    bool Result = false;
    try {
        const QRect Cells = Area & QRect(0, 0, Store.ColCount(), Store.RowCount());
        QString Text, Html = QStringLiteral("<table>\n");
        for (int R = Cells.top(); R <= Cells.bottom(); ++R) {
            Html += QStringLiteral("<tr>");
            const char* Tag = R < FFixedRows ? "th" : "td";
            for (int C = Cells.left(); C <= Cells.right(); ++C) {
                if (C > Cells.left()) Text += QLatin1Char('\t');
                Text += FlatCell(Store.Cell(C, R));
                Html += QStringLiteral("<%1>%2</%1>").arg(QLatin1String(Tag), HtmlCell(Store.Cell(C, R)));
            }
            Text += QStringLiteral("\r\n");
            Html += QStringLiteral("</tr>\n");
        }
        Html += QStringLiteral("</table>\n");
        auto* Mime = new QMimeData;
        Mime->setText(Text);
        Mime->setHtml(Html);
        QGuiApplication::clipboard()->setMimeData(Mime);
        Result = true;
    } catch (const std::exception&) {
        Result = false;
    }
    QGuiApplication::restoreOverrideCursor();
    q->setToolTip(SavedHint);
    Pasting_or_Copying = false;
    if (!Result) MessageDlg(Tr("Error copying NumGrid to Clipboard\r\nin ") + OwnerName(), mtError, mbOK);
    return Result;
}

void TNumGrid::AddToLines(QStringList& Lines, const TColSet& Cols, const QString& Separator, int MaxWidth,
                          bool FixedWidth) {
    TNumGridPrivate* D = Priv();
    const int Count = std::min(D->FColumns->Count(), static_cast<int>(Cols.size()));
    auto Width = [&](const TNumColumn* Column) {
        return FixedWidth ? MaxWidth
                          : std::min(static_cast<int>(Column->Title()->Caption().size()), MaxWidth);
    };
    auto Append = [&](QString& Line, int C, const QString& Text) {
        const TNumColumn* Column = D->FColumns->Items(C);
        if (C > 0) Line += Separator;
        const int W = Width(Column);
        Line += FormatWidth(Column->Alignment() == taRightJustify ? W : -W, Text);
    };
    QString Title;
    for (int C = 0; C < Count; ++C) {
        if (!Cols.test(static_cast<size_t>(C))) continue;
        QString Caption = D->FColumns->Items(C)->Title()->Caption();
        Caption.replace(QLatin1Char('\n'), QLatin1Char('|')).replace(QLatin1Char('\r'), QLatin1Char('|'));
        Append(Title, C, Caption);
    }
    Lines.append(Title);
    const int DataCols = std::min(ColCount(), Count);
    for (int R = D->FFixedRows; R < RowCount(); ++R) {
        QString Line;
        for (int C = 0; C < DataCols; ++C)
            if (Cols.test(static_cast<size_t>(C))) Append(Line, C, D->Store.Cell(C, R));
        Lines.append(Line);
    }
}

} // namespace qxnum

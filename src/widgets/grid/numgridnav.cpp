// The grid navigator and its buttons.
#include "numgrid_p.h"

#include <qxnum/dialogs.h>
#include <qxnum/widgets/numgridnav.h>

#include <QApplication>
#include <QIconEngine>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPointer>
#include <QStyleOptionFocusRect>
#include <QSvgRenderer>
#include <QTimer>
#include <QUndoStack>

#include <array>

namespace qxnum {

namespace {

constexpr int ButtonCount = 11;
constexpr int RepeatDelay = 400, RepeatInterval = 100;
constexpr int MinBtnSize = 20;

const std::array<const char*, ButtonCount> DefaultHints = {
    QT_TRANSLATE_NOOP("TNumGridNavigator", "First Row"),
    QT_TRANSLATE_NOOP("TNumGridNavigator", "Prior Row"),
    QT_TRANSLATE_NOOP("TNumGridNavigator", "Next Row"),
    QT_TRANSLATE_NOOP("TNumGridNavigator", "Last Row"),
    QT_TRANSLATE_NOOP("TNumGridNavigator", "Append Row"),
    QT_TRANSLATE_NOOP("TNumGridNavigator", "Insert Row"),
    QT_TRANSLATE_NOOP("TNumGridNavigator", "Delete Row"),
    QT_TRANSLATE_NOOP("TNumGridNavigator", "Edit Row"),
    QT_TRANSLATE_NOOP("TNumGridNavigator", "Post Row"),
    QT_TRANSLATE_NOOP("TNumGridNavigator", "Clear Table"),
    QT_TRANSLATE_NOOP("TNumGridNavigator", "Refresh Row")};

const std::array<const char*, ButtonCount> GlyphWords = {
    "FIRST", "PRIOR", "NEXT", "LAST", "ADD", "INSERT", "DELETE", "EDIT", "POST", "CANCEL", "REFRESH"};

QString Tr(const char* Source) {
    return QCoreApplication::translate("TNumGridNavigator", Source);
}

// A monochrome glyph drawn from its SVG at the exact device size, in the palette's text colour
// (the disabled text colour for a disabled button).
class TGlyphEngine : public QIconEngine {
public:
    explicit TGlyphEngine(const QString& File) : FFile(File) {}

    void paint(QPainter* P, const QRect& Rect, QIcon::Mode Mode, QIcon::State State) override {
        const qreal Ratio = P->device() ? P->device()->devicePixelRatioF() : 1.0;
        P->drawPixmap(Rect, scaledPixmap(Rect.size() * Ratio, Mode, State, Ratio));
    }
    QPixmap pixmap(const QSize& Size, QIcon::Mode Mode, QIcon::State State) override {
        return scaledPixmap(Size, Mode, State, 1.0);
    }
    // Size is in device pixels already.
    QPixmap scaledPixmap(const QSize& Size, QIcon::Mode Mode, QIcon::State, qreal Scale) override {
        QImage Image(Size, QImage::Format_ARGB32_Premultiplied);
        Image.fill(Qt::transparent);
        {
            QPainter P(&Image);
            QSvgRenderer Renderer(FFile);
            Renderer.render(&P, QRectF(QPointF(0, 0), QSizeF(Image.size())));
            P.setCompositionMode(QPainter::CompositionMode_SourceIn);
            const QPalette Pal = QApplication::palette();
            P.fillRect(Image.rect(), Mode == QIcon::Disabled
                                         ? Pal.color(QPalette::Disabled, QPalette::WindowText)
                                         : Pal.color(QPalette::Active, QPalette::ButtonText));
        }
        QPixmap Pixmap = QPixmap::fromImage(Image);
        Pixmap.setDevicePixelRatio(Scale);
        return Pixmap;
    }
    QSize actualSize(const QSize& Size, QIcon::Mode, QIcon::State) override { return Size; }
    QIconEngine* clone() const override { return new TGlyphEngine(FFile); }
    QString key() const override { return QStringLiteral("TGlyphEngine"); }

private:
    QString FFile;
};

QIcon Glyph(TNumGridBtn Index) {
    return QIcon(new TGlyphEngine(QStringLiteral(":/qxnum/navigator/NQX_%1")
                                      .arg(QLatin1String(GlyphWords[static_cast<size_t>(Index)]))));
}

} // namespace

// ---- the button -----------------------------------------------------------------------------------

class TNumgButtonPrivate {
public:
    TNumGridBtn Index = ngbFirst;
    bool Repeat = false;
    QTimer* Timer = nullptr;
    bool ClickedOnPress = false;
    bool ShowFocus = false;
};

TNumgButton::TNumgButton(QWidget* Parent) : QToolButton(Parent), d(new TNumgButtonPrivate) {
    setFocusPolicy(Qt::NoFocus);
    setToolButtonStyle(Qt::ToolButtonIconOnly);
    connect(this, &QToolButton::clicked, this, [this] {
        // A repeating button has clicked on its press already; a click from the keyboard still counts.
        if (d->ClickedOnPress) {
            d->ClickedOnPress = false;
            return;
        }
        Q_EMIT navClick();
    });
}

TNumgButton::~TNumgButton() = default;

TNumGridBtn TNumgButton::Index() const {
    return d->Index;
}
void TNumgButton::SetIndex(TNumGridBtn AValue) {
    d->Index = AValue;
}
bool TNumgButton::RepeatClicks() const {
    return d->Repeat;
}
void TNumgButton::SetRepeatClicks(bool AValue) {
    d->Repeat = AValue;
}
QTimer* TNumgButton::RepeatTimer() const {
    return d->Timer;
}

void TNumgButton::mousePressEvent(QMouseEvent* E) {
    QToolButton::mousePressEvent(E);
    if (!d->Repeat || E->button() != Qt::LeftButton || !isDown()) return;
    if (!d->Timer) {
        d->Timer = new QTimer(this);
        connect(d->Timer, &QTimer::timeout, this, [this] { TimerExpired(); });
    }
    d->Timer->start(RepeatDelay);
    d->ClickedOnPress = true;
    const QPointer<TNumgButton> Self(this);
    Q_EMIT navClick();
    if (Self && !isDown()) d->ClickedOnPress = false;
}

void TNumgButton::mouseReleaseEvent(QMouseEvent* E) {
    if (d->Timer) d->Timer->stop();
    QToolButton::mouseReleaseEvent(E);
    // Released outside the button: no click came to consume the press.
    d->ClickedOnPress = false;
}

void TNumgButton::TimerExpired() {
    d->Timer->setInterval(RepeatInterval);
    if (isDown()) {
        Q_EMIT navClick();
    } else {
        d->Timer->stop();
    }
}

void TNumgButton::paintEvent(QPaintEvent* E) {
    QToolButton::paintEvent(E);
    if (!d->ShowFocus) return;
    QPainter P(this);
    QStyleOptionFocusRect Option;
    Option.initFrom(this);
    Option.rect = rect().adjusted(3, 3, -3, -3);
    style()->drawPrimitive(QStyle::PE_FrameFocusRect, &Option, &P, this);
}

// ---- the navigator ----------------------------------------------------------------------------------

class TNumGridNavigatorPrivate {
public:
    QPointer<TNumGrid> Grid;
    TButtonSet Visible = TButtonSet().set();
    QStringList Hints;
    ENavClick OnNavClick;
    TNumGridBtn Focused = ngbFirst;
    bool ConfirmDelete = false;
    TNotifyEvent AfterClick;
    std::array<TNumgButton*, ButtonCount> Buttons{};
};

TNumGridNavigator::TNumGridNavigator(QWidget* Parent) : QWidget(Parent), d(new TNumGridNavigatorPrivate) {
    setFocusPolicy(Qt::TabFocus);
    InitButtons();
}

TNumGridNavigator::~TNumGridNavigator() = default;

void TNumGridNavigator::InitButtons() {
    for (int I = 0; I < ButtonCount; ++I) {
        const auto Index = static_cast<TNumGridBtn>(I);
        auto* B = new TNumgButton(this);
        B->setObjectName(QStringLiteral("NQX_%1").arg(QLatin1String(GlyphWords[static_cast<size_t>(I)])));
        B->SetIndex(Index);
        B->setIcon(Glyph(Index));
        B->setIconSize(QSize(16, 16));
        B->SetRepeatClicks(Index == ngbPrior || Index == ngbNext);
        B->setVisible(d->Visible.test(static_cast<size_t>(I)));
        connect(B, &TNumgButton::navClick, this, [this, Index] { Click(Index); });
        connect(B, &QToolButton::pressed, this, [this, Index] { ButtonPressed(Index); });
        d->Buttons[static_cast<size_t>(I)] = B;
    }
    InitHints();
    PlaceButtons();
}

void TNumGridNavigator::InitHints() {
    for (int I = 0; I < ButtonCount; ++I) {
        QString Hint = Tr(DefaultHints[static_cast<size_t>(I)]);
        if (I < d->Hints.size() && !d->Hints.at(I).isEmpty()) Hint = d->Hints.at(I);
        TNumgButton* B = d->Buttons[static_cast<size_t>(I)];
        B->setToolTip(Hint);
        B->setAccessibleName(Hint);
    }
}

void TNumGridNavigator::SetNumGrid(TNumGrid* AGrid) {
    d->Grid = AGrid;
}
TNumGrid* TNumGridNavigator::NumGrid() const {
    return d->Grid;
}
TNumgButton* TNumGridNavigator::Buttons(TNumGridBtn Index) const {
    const auto I = static_cast<size_t>(Index);
    return I < d->Buttons.size() ? d->Buttons[I] : nullptr;
}
TButtonSet TNumGridNavigator::VisibleButtons() const {
    return d->Visible;
}
void TNumGridNavigator::SetVisibleButtons(const TButtonSet& AValue) {
    d->Visible = AValue;
    for (size_t I = 0; I < d->Buttons.size(); ++I)
        d->Buttons[I]->setVisible(AValue.test(I));
    PlaceButtons();
    updateGeometry();
}
int TNumGridNavigator::PropVisibleButtons() const {
    return static_cast<int>(d->Visible.to_ulong());
}
void TNumGridNavigator::SetPropVisibleButtons(int AValue) {
    SetVisibleButtons(TButtonSet(static_cast<unsigned long long>(static_cast<unsigned>(AValue))));
}
QStringList TNumGridNavigator::Hints() const {
    return d->Hints;
}
void TNumGridNavigator::SetHints(const QStringList& AValue) {
    d->Hints = AValue;
    InitHints();
}
bool TNumGridNavigator::ConfirmDelete() const {
    return d->ConfirmDelete;
}
void TNumGridNavigator::SetConfirmDelete(bool AValue) {
    d->ConfirmDelete = AValue;
}
TNumGridBtn TNumGridNavigator::FocusedButton() const {
    return d->Focused;
}
ENavClick TNumGridNavigator::OnNavClick() const {
    return d->OnNavClick;
}
void TNumGridNavigator::SetOnNavClick(ENavClick AEvent) {
    d->OnNavClick = std::move(AEvent);
}
TNotifyEvent TNumGridNavigator::AfterClick() const {
    return d->AfterClick;
}
void TNumGridNavigator::SetAfterClick(TNotifyEvent AEvent) {
    d->AfterClick = std::move(AEvent);
}

void TNumGridNavigator::EditingChanged() {
    for (TNumgButton* B : d->Buttons)
        B->setEnabled(isEnabled());
}
void TNumGridNavigator::ActiveChanged() {
    EditingChanged(); // the same rule: every button follows the navigator
}
void TNumGridNavigator::DataChanged() {}

void TNumGridNavigator::BtnClick(TNumGridBtn Index) {
    const QPointer<TNumGridNavigator> Self(this);
    if (TNumGrid* G = d->Grid) {
        TNumGridPrivate* D = TNumGridPrivate::Of(G);
        const int OldRow = G->Row();
        const quint64 Reports = D->MovesReported;
        if (Index == ngbDelete) {
            TGridUndoStep DeleteStep(D, G->Row() - 1, 3, "Delete row");
            G->DeleteARow(G->Row());
        } else if (Index == ngbCancel && G->OnCancel()) {
            G->OnCancel()(this, G->Row());
        }
        if (!d->Grid || !G->CheckGrid()) return; // no navigation with an invalid cell
        switch (Index) {
        case ngbFirst:
            D->NavigateToRow(1); // row 1, not the first data row, as it always was
            break;
        case ngbPrior:
            if (G->Row() > 1) D->NavigateToRow(G->Row() - 1);
            break;
        case ngbNext:
            if (G->Row() < G->RowCount() - 1) D->NavigateToRow(G->Row() + 1);
            break;
        case ngbLast:
            D->NavigateToRow(G->RowCount() - 1);
            break;
        case ngbAdd: {
            TGridUndoStep Append(D, G->RowCount() - 1, 2, "Append row");
            G->InsertRow(G->RowCount());
            break;
        }
        case ngbInsert: {
            TGridUndoStep Insert(D, G->Row() - 1, 3, "Insert row");
            G->InsertRow(G->Row());
            break;
        }
        case ngbEdit:
            if (G->OnRowEdit()) G->OnRowEdit()(this, G->Row());
            break;
        case ngbPost:
            if (G->OnPost()) G->OnPost()(this, G->Row());
            break;
        case ngbCancel:
            if (MessageDlg(Tr("Clear entire table?"), mtConfirmation, mbYesNo) == mrYes && d->Grid) {
                {
                    TGridUndoStep Clear(D, 1, -1, "Clear table");
                    G->SetRowCount(2);
                    G->InitRow(1);
                }
                if (G->AfterClear()) G->AfterClear()(this);
            }
            break;
        case ngbRefresh:
            if (G->OnRefresh()) G->OnRefresh()(this, G->Row());
            break;
        default:
            break;
        }
        // A row change is reported once: the Row setter's own report covers it when it ended on
        // the current cell; a deleted last row or a cleared table has none, so it is made here.
        if (d->Grid && G->Row() != OldRow &&
            (D->MovesReported == Reports || D->LastReportedCell != QPoint(G->Col(), G->Row())))
            D->ReportRowChange(OldRow);
    }
    if (!Self) return;
    if (d->OnNavClick) d->OnNavClick(this, Index);
    if (Self) Q_EMIT navClicked(Index);
}

void TNumGridNavigator::Click(TNumGridBtn Index) {
    const QPointer<TNumGridNavigator> Self(this);
    BtnClick(Index);
    if (Self && d->AfterClick) d->AfterClick(this);
}

void TNumGridNavigator::ButtonPressed(TNumGridBtn Index) {
    if (!hasFocus()) {
        if (focusPolicy() != Qt::NoFocus && isEnabled()) setFocus(Qt::MouseFocusReason);
        return;
    }
    SetFocusedButton(Index);
}

void TNumGridNavigator::SetFocusedButton(TNumGridBtn Index) {
    TNumgButton* Old = Buttons(d->Focused);
    d->Focused = Index;
    for (TNumgButton* B : d->Buttons)
        B->d->ShowFocus = hasFocus() && B == Buttons(Index);
    if (Old) Old->update();
    Buttons(Index)->update();
}

void TNumGridNavigator::focusInEvent(QFocusEvent* E) {
    QWidget::focusInEvent(E);
    if (!d->Visible.test(static_cast<size_t>(d->Focused)))
        for (int I = 0; I < ButtonCount; ++I)
            if (d->Visible.test(static_cast<size_t>(I))) {
                d->Focused = static_cast<TNumGridBtn>(I);
                break;
            }
    SetFocusedButton(d->Focused);
}

void TNumGridNavigator::focusOutEvent(QFocusEvent* E) {
    QWidget::focusOutEvent(E);
    SetFocusedButton(d->Focused);
}

namespace {
bool IsUndoKey(const QKeyEvent* E) {
    return E->matches(QKeySequence::Undo);
}
// Ctrl+Y as well as the platform's redo key, as in the grid.
bool IsRedoKey(const QKeyEvent* E) {
    return E->matches(QKeySequence::Redo) || (E->key() == Qt::Key_Y && E->modifiers() == Qt::ControlModifier);
}
} // namespace

bool TNumGridNavigator::event(QEvent* E) {
    // Undo and redo belong to the driven grid's history, not to the window's shortcuts.
    if (E->type() == QEvent::ShortcutOverride && d->Grid) {
        auto* K = static_cast<QKeyEvent*>(E);
        if (IsUndoKey(K) || IsRedoKey(K)) {
            E->accept();
            return true;
        }
    }
    return QWidget::event(E);
}

void TNumGridNavigator::keyPressEvent(QKeyEvent* E) {
    if (TNumGrid* G = d->Grid; G && (IsUndoKey(E) || IsRedoKey(E))) {
        IsUndoKey(E) ? G->UndoStack()->undo() : G->UndoStack()->redo();
        return;
    }
    const int Step = E->key() == Qt::Key_Left ? -1 : E->key() == Qt::Key_Right ? 1 : 0;
    if (Step != 0) {
        for (int I = d->Focused + Step; I >= 0 && I < ButtonCount; I += Step)
            if (d->Visible.test(static_cast<size_t>(I))) {
                SetFocusedButton(static_cast<TNumGridBtn>(I));
                break;
            }
        return;
    }
    if (E->key() == Qt::Key_Space && d->Buttons[d->Focused]->isEnabled()) {
        Click(d->Focused);
        return;
    }
    QWidget::keyPressEvent(E);
}

void TNumGridNavigator::PlaceButtons() {
    const int Count = static_cast<int>(d->Visible.count());
    if (Count == 0) return;
    // Equal widths; the pixels left over go to the first buttons, one each.
    const int Width = std::max(width(), Count * MinBtnSize);
    const int Each = Width / Count, Extra = Width % Count;
    int X = 0, N = 0;
    for (size_t I = 0; I < d->Buttons.size(); ++I) {
        if (!d->Visible.test(I)) continue;
        const int W = Each + (N++ < Extra ? 1 : 0);
        d->Buttons[I]->setGeometry(X, 0, W, height());
        X += W;
    }
}

void TNumGridNavigator::resizeEvent(QResizeEvent* E) {
    QWidget::resizeEvent(E);
    PlaceButtons();
}

void TNumGridNavigator::changeEvent(QEvent* E) {
    QWidget::changeEvent(E);
    if (E->type() == QEvent::EnabledChange) ActiveChanged();
    // Glyphs take the palette's text colour: repaint them when it changes.
    if (E->type() == QEvent::PaletteChange || E->type() == QEvent::StyleChange)
        for (TNumgButton* B : d->Buttons)
            B->update();
}

QSize TNumGridNavigator::sizeHint() const {
    const int Count = std::max(1, static_cast<int>(d->Visible.count()));
    const QSize Button = d->Buttons[0]->sizeHint().expandedTo(QSize(25, 25));
    return {Count * Button.width(), Button.height()};
}

QSize TNumGridNavigator::minimumSizeHint() const {
    const int Count = std::max(1, static_cast<int>(d->Visible.count()));
    return {Count * MinBtnSize, MinBtnSize};
}

} // namespace qxnum

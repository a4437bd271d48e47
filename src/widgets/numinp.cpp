// The labelled numeric input and its bound labels.
#include <qxnum/widgets/numinp.h>

#include <qxnum/registry.h>

#include <QBoxLayout>
#include <QEvent>
#include <QFormLayout>
#include <QGridLayout>
#include <QPointer>
#include <QRegularExpression>
#include <QScopedValueRollback>
#include <QStyle>

#include <algorithm>
#include <vector>

namespace qxnum {

namespace {

const TClassRegistrar NumInpRegistrar("TNumInp", [](QObject* Owner) -> QObject* {
    return new TNumInp(qobject_cast<QWidget*>(Owner));
});

// The caption as a screen reader should say it: without the mnemonic marks.
QString WithoutMnemonic(QString S) {
    static const QRegularExpression Mark(QStringLiteral("&(?!&)"));
    S.remove(Mark);
    return S;
}

} // namespace

class TNumFldBoundLabelPrivate {
public:
    QPointer<TCustomNumInp> FOwner;
};

class TCustomNumInpPrivate {
public:
    QPointer<TNumFldBoundLabel> FEditLabel;
    QPointer<TNumFldBoundLabel> FEditUnitLabel;
    TLabelPosition FEditLabelPosition = lpLeft;
    TLabelPosition FEditUnitLabelPosition = lpRight;
    int FEditLabelSpacing = 4;
    int FEditUnitLabelSpacing = 4;
    QString Fcustomunitstr;
    bool FUnitVisible = true;
    bool NameLabelVisible = true;
    QString FLastName;

    // Layout mode (see the header): the rectangle the layout gave, the edit rectangle set for it.
    QRect Outer;
    QRect Inner;
    bool Adjusting = false;            // the edit is setting its own inner geometry
    TNumInpLayoutItem* Item = nullptr; // the item that replaced the plain one in the layout
    bool ItemPending = false;          // a replacement is queued
};

// The layout item of a labelled input: hands the whole cell to the edit, which keeps the inner part
// for itself, and reports sizes with the label room.
class TNumInpLayoutItem : public QWidgetItem {
public:
    explicit TNumInpLayoutItem(TCustomNumInp* Edit) : QWidgetItem(Edit), Owner(Edit) {}
    ~TNumInpLayoutItem() override {
        if (!Owner) return;
        Owner->DInp->Item = nullptr;
        Owner->DInp->Outer = Owner->DInp->Inner = QRect();
    }

    QSize sizeHint() const override {
        if (!Owner || isEmpty()) return QWidgetItem::sizeHint();
        return Owner->sizeHint()
            .expandedTo(Owner->minimumSizeHint())
            .boundedTo(EditMax())
            .expandedTo(EditMin());
    }
    QSize minimumSize() const override {
        if (!Owner || isEmpty()) return QWidgetItem::minimumSize();
        // As QWidgetItem does it, with the edit's explicit limits widened by the label room.
        const QSizePolicy P = Owner->sizePolicy();
        const QSize Hint = sizeHint();
        const QSize MinHint = Owner->minimumSizeHint();
        const auto Dim = [](QSizePolicy::Policy Pol, int H, int MH) {
            if (Pol == QSizePolicy::Ignored) return 0;
            return (Pol & QSizePolicy::ShrinkFlag) ? MH : std::max(H, MH);
        };
        QSize S(Dim(P.horizontalPolicy(), Hint.width(), MinHint.width()),
                Dim(P.verticalPolicy(), Hint.height(), MinHint.height()));
        S = S.boundedTo(EditMax());
        const QSize Explicit = Owner->minimumSize();
        const QSize Min = EditMin();
        if (Explicit.width() > 0) S.setWidth(Min.width());
        if (Explicit.height() > 0) S.setHeight(Min.height());
        return S.expandedTo(QSize(0, 0));
    }
    QSize maximumSize() const override {
        if (!Owner || isEmpty()) return QWidgetItem::maximumSize();
        const Qt::Alignment A = alignment();
        const QSizePolicy P = Owner->sizePolicy();
        const QSize Hint = sizeHint();
        QSize S = EditMax();
        if (Owner->maximumWidth() == QWIDGETSIZE_MAX && !(A & Qt::AlignHorizontal_Mask) &&
            !(P.horizontalPolicy() & QSizePolicy::GrowFlag))
            S.setWidth(Hint.width());
        if (Owner->maximumHeight() == QWIDGETSIZE_MAX && !(A & Qt::AlignVertical_Mask) &&
            !(P.verticalPolicy() & QSizePolicy::GrowFlag))
            S.setHeight(Hint.height());
        if (A & Qt::AlignHorizontal_Mask) S.setWidth(QLAYOUTSIZE_MAX);
        if (A & Qt::AlignVertical_Mask) S.setHeight(QLAYOUTSIZE_MAX);
        return S;
    }
    bool hasHeightForWidth() const override { return false; }

    void setGeometry(const QRect& R) override {
        if (!Owner) {
            QWidgetItem::setGeometry(R);
            return;
        }
        if (isEmpty()) return;
        // Within the cell as QWidgetItem places a widget: bounded, and aligned when asked to.
        const Qt::Alignment A = QStyle::visualAlignment(Owner->layoutDirection(), alignment());
        QSize S = R.size().boundedTo(maximumSize());
        if (A & Qt::AlignHorizontal_Mask) S.setWidth(std::min(S.width(), sizeHint().width()));
        if (A & Qt::AlignVertical_Mask) S.setHeight(std::min(S.height(), sizeHint().height()));
        int X = R.x();
        if (A & Qt::AlignRight)
            X += R.width() - S.width();
        else if (!(A & Qt::AlignLeft))
            X += (R.width() - S.width()) / 2;
        int Y = R.y();
        if (A & Qt::AlignBottom)
            Y += R.height() - S.height();
        else if (!(A & Qt::AlignTop))
            Y += (R.height() - S.height()) / 2;
        Owner->SetOuterGeometry(QRect(QPoint(X, Y), S));
    }

    QPointer<TCustomNumInp> Owner;

private:
    // The edit's explicit limits, widened by the label room.
    QSize EditMin() const { return Owner->OuterSize(Owner->minimumSize()); }
    QSize EditMax() const {
        const QSize M = Owner->maximumSize();
        const QSize O = Owner->OuterSize(M);
        return QSize(M.width() >= QWIDGETSIZE_MAX ? QWIDGETSIZE_MAX : std::min(O.width(), QWIDGETSIZE_MAX),
                     M.height() >= QWIDGETSIZE_MAX ? QWIDGETSIZE_MAX : std::min(O.height(), QWIDGETSIZE_MAX));
    }
};

// ---- TNumFldBoundLabel ---------------------------------------------------------------------------

TNumFldBoundLabel::TNumFldBoundLabel(TCustomNumInp* Owner)
    : QLabel(Owner ? Owner->parentWidget() : nullptr), DLabel(std::make_unique<TNumFldBoundLabelPrivate>()) {
    DLabel->FOwner = Owner;
}

TNumFldBoundLabel::~TNumFldBoundLabel() = default;

TCustomNumInp* TNumFldBoundLabel::OwnerControl() const {
    return DLabel->FOwner;
}

void TNumFldBoundLabel::setText(const QString& S) {
    QLabel::setText(S);
    AdjustBounds();
}

void TNumFldBoundLabel::AdjustBounds() {
    resize(sizeHint());
    if (DLabel->FOwner) DLabel->FOwner->LabelChanged(this);
}

void TNumFldBoundLabel::changeEvent(QEvent* E) {
    QLabel::changeEvent(E);
    if (E->type() == QEvent::FontChange || E->type() == QEvent::StyleChange) AdjustBounds();
}

// ---- TCustomNumInp -------------------------------------------------------------------------------

TCustomNumInp::TCustomNumInp(QWidget* Parent)
    : TCustomNumEdit(Parent), DInp(std::make_unique<TCustomNumInpPrivate>()) {
    DInp->FLastName = objectName();
    connect(this, &QObject::objectNameChanged, this, &TCustomNumInp::NameChanged);
    SetupInternalEditUnitLabels();
}

TCustomNumInp::~TCustomNumInp() {
    if (DInp->Item) DInp->Item->Owner = nullptr;
    delete DInp->FEditLabel.data();
    delete DInp->FEditUnitLabel.data();
}

TNumFldBoundLabel* TCustomNumInp::EditLabel() const {
    return DInp->FEditLabel;
}
TNumFldBoundLabel* TCustomNumInp::EditUnitLabel() const {
    return DInp->FEditUnitLabel;
}
TLabelPosition TCustomNumInp::EditLabelPosition() const {
    return DInp->FEditLabelPosition;
}
TLabelPosition TCustomNumInp::EditUnitLabelPosition() const {
    return DInp->FEditUnitLabelPosition;
}
int TCustomNumInp::EditLabelSpacing() const {
    return DInp->FEditLabelSpacing;
}
int TCustomNumInp::EditUnitLabelSpacing() const {
    return DInp->FEditUnitLabelSpacing;
}
QString TCustomNumInp::CustomUnitStr() const {
    return DInp->Fcustomunitstr;
}
bool TCustomNumInp::UnitVisible() const {
    return DInp->FUnitVisible;
}

void TCustomNumInp::SetupInternalEditUnitLabels() {
    const auto Make = [this](const QString& Caption) {
        auto* L = new TNumFldBoundLabel(this);
        L->setObjectName(UniqueLabelName(L));
        if (testAttribute(Qt::WA_SetLayoutDirection)) L->setLayoutDirection(layoutDirection());
        L->setText(Caption);
        return L;
    };
    if (!DInp->FEditLabel) {
        DInp->FEditLabel = Make(objectName());
        DInp->FEditLabel->setBuddy(this);
    }
    if (!DInp->FEditUnitLabel) DInp->FEditUnitLabel = Make(QStringLiteral("Unit"));
    SyncLabelEnabled();
    SyncLabelVisibility();
    PlaceLabels();
    LabelChanged(nullptr);
}

QString TCustomNumInp::UniqueLabelName(const QObject* Except) const {
    // One pass over the owner's descendants, marking the numbers in use; a form with hundreds of
    // inputs must not pay a search per candidate name.
    static const QString Prefix = QStringLiteral("SubLabel");
    QObjectList Pending;
    if (QWidget* Owner = OwnerWidget()) Pending = Owner->children();
    for (const TNumFldBoundLabel* L : {DInp->FEditLabel.data(), DInp->FEditUnitLabel.data()})
        if (L) Pending.append(const_cast<TNumFldBoundLabel*>(L));
    std::vector<int> Taken;
    while (!Pending.isEmpty()) {
        const QObject* O = Pending.takeLast();
        if (O != Except) {
            const QString Name = O->objectName();
            if (Name.startsWith(Prefix)) {
                bool Ok = false;
                const QStringView Digits = QStringView(Name).mid(Prefix.size());
                const int N = Digits.toInt(&Ok);
                // Only the canonical spelling can clash with a name made here.
                if (Ok && N > 0 && Digits == QString::number(N)) Taken.push_back(N);
            }
        }
        Pending.append(O->children());
    }
    std::sort(Taken.begin(), Taken.end());
    int N = 1;
    for (const int T : Taken) {
        if (T > N) break;
        if (T == N) ++N;
    }
    return Prefix + QString::number(N);
}

void TCustomNumInp::NameChanged(const QString& NewName) {
    if (DInp->FEditLabel && (DInp->FEditLabel->text().isEmpty() ||
                             DInp->FEditLabel->text().compare(DInp->FLastName, Qt::CaseInsensitive) == 0))
        DInp->FEditLabel->setText(NewName);
    DInp->FLastName = NewName;
}

void TCustomNumInp::LabelChanged(TNumFldBoundLabel* Label) {
    if (Label && Label != DInp->FEditLabel && Label != DInp->FEditUnitLabel) return;
    PlaceLabels();
    if (Label) LabelRoomChanged();
    if (DInp->FEditLabel) setAccessibleName(WithoutMnemonic(DInp->FEditLabel->text()));
    if (DInp->FEditUnitLabel) setAccessibleDescription(DInp->FEditUnitLabel->text());
}

void TCustomNumInp::SetEditLabelPosition(TLabelPosition AValue) {
    if (!DInp->FEditLabel) return;
    DInp->FEditLabelPosition = AValue;
    SetNumLabelPosition(DInp->FEditLabel, DInp->FEditLabelPosition, DInp->FEditLabelSpacing);
    LabelRoomChanged();
}

void TCustomNumInp::SetEditUnitLabelPosition(TLabelPosition AValue) {
    if (!DInp->FEditUnitLabel) return;
    DInp->FEditUnitLabelPosition = AValue;
    SetNumLabelPosition(DInp->FEditUnitLabel, DInp->FEditUnitLabelPosition, DInp->FEditUnitLabelSpacing);
    LabelRoomChanged();
}

void TCustomNumInp::SetEditLabelSpacing(int AValue) {
    DInp->FEditLabelSpacing = AValue;
    SetNumLabelPosition(DInp->FEditLabel, DInp->FEditLabelPosition, DInp->FEditLabelSpacing);
    LabelRoomChanged();
}

void TCustomNumInp::SetEditUnitLabelSpacing(int AValue) {
    DInp->FEditUnitLabelSpacing = AValue;
    SetNumLabelPosition(DInp->FEditUnitLabel, DInp->FEditUnitLabelPosition, DInp->FEditUnitLabelSpacing);
    LabelRoomChanged();
}

void TCustomNumInp::SetNumLabelPosition(TNumFldBoundLabel* Label, TLabelPosition Position, int Spacing) {
    if (!Label) return;
    const QRect R = geometry();
    const int W = Label->width();
    const int H = Label->height();
    const Qt::Alignment Horizontal =
        QStyle::visualAlignment(Label->layoutDirection(), Label->alignment()) & Qt::AlignHorizontal_Mask;
    int Start = R.left();
    if (Horizontal & Qt::AlignRight)
        Start = R.left() + R.width() - W;
    else if (Horizontal & Qt::AlignHCenter)
        Start = R.left() + (R.width() - W) / 2;
    QPoint P;
    switch (Position) {
    case lpAbove:
        P = QPoint(Start, R.top() - H - Spacing);
        break;
    case lpBelow:
        P = QPoint(Start, R.top() + R.height() + Spacing);
        break;
    case lpLeft:
        P = QPoint(R.left() - W - Spacing, R.top() + (R.height() - H) / 2);
        break;
    case lpRight:
    default:
        P = QPoint(R.left() + R.width() + Spacing, R.top() + (R.height() - H) / 2);
        break;
    }
    Label->setGeometry(P.x(), P.y(), W, H);
}

void TCustomNumInp::PlaceLabels() {
    if (!DInp->Outer.isValid() || !InLayout()) {
        SetNumLabelPosition(DInp->FEditLabel, DInp->FEditLabelPosition, DInp->FEditLabelSpacing);
        SetNumLabelPosition(DInp->FEditUnitLabel, DInp->FEditUnitLabelPosition, DInp->FEditUnitLabelSpacing);
        return;
    }
    // In the layout's rectangle: stacked outwards from the edit, the unit label first, and kept
    // inside the outer rectangle (a caption wider than the edit above or below it).
    const QRect Edit = geometry();
    const QRect& Outer = DInp->Outer;
    int Used[4] = {0, 0, 0, 0};
    const struct {
        TNumFldBoundLabel* Label;
        TLabelPosition Pos;
        int Spacing;
        bool Shown;
    } Labels[] = {
        {DInp->FEditUnitLabel, DInp->FEditUnitLabelPosition, DInp->FEditUnitLabelSpacing, DInp->FUnitVisible},
        {DInp->FEditLabel, DInp->FEditLabelPosition, DInp->FEditLabelSpacing, DInp->NameLabelVisible},
    };
    for (const auto& L : Labels) {
        if (!L.Label) continue;
        const int Gap = std::max(0, L.Spacing);
        const QSize S = L.Label->size();
        const int Side = std::clamp(static_cast<int>(L.Pos), 0, 3);
        QRect Beside = Edit;
        switch (L.Pos) {
        case lpAbove:
            Beside.setTop(Edit.top() - Used[Side]);
            break;
        case lpBelow:
            Beside.setBottom(Edit.bottom() + Used[Side]);
            break;
        case lpLeft:
            Beside.setLeft(Edit.left() - Used[Side]);
            break;
        default:
            Beside.setRight(Edit.right() + Used[Side]);
            break;
        }
        const Qt::Alignment Horizontal =
            QStyle::visualAlignment(L.Label->layoutDirection(), L.Label->alignment()) &
            Qt::AlignHorizontal_Mask;
        int Start = Beside.left();
        if (Horizontal & Qt::AlignRight)
            Start = Beside.left() + Beside.width() - S.width();
        else if (Horizontal & Qt::AlignHCenter)
            Start = Beside.left() + (Beside.width() - S.width()) / 2;
        QPoint P;
        switch (L.Pos) {
        case lpAbove:
            P = QPoint(Start, Beside.top() - S.height() - Gap);
            break;
        case lpBelow:
            P = QPoint(Start, Beside.bottom() + 1 + Gap);
            break;
        case lpLeft:
            P = QPoint(Beside.left() - S.width() - Gap, Beside.top() + (Beside.height() - S.height()) / 2);
            break;
        default:
            P = QPoint(Beside.right() + 1 + Gap, Beside.top() + (Beside.height() - S.height()) / 2);
            break;
        }
        if (L.Shown) Used[Side] += ((L.Pos == lpAbove || L.Pos == lpBelow) ? S.height() : S.width()) + Gap;
        P.setX(std::max(Outer.left(), std::min(P.x(), Outer.right() + 1 - S.width())));
        P.setY(std::max(Outer.top(), std::min(P.y(), Outer.bottom() + 1 - S.height())));
        L.Label->setGeometry(QRect(P, S));
    }
}

// ---- layout item -------------------------------------------------------------------------------------

struct TCustomNumInp::TLabelRoom {
    QMargins Sides;  // room beside the edit
    int Widest = 0;  // widest label above or below
    int Tallest = 0; // tallest label left or right
};

TCustomNumInp::TLabelRoom TCustomNumInp::LabelRoom() const {
    TLabelRoom R;
    const auto Add = [&R](const TNumFldBoundLabel* L, TLabelPosition Pos, int Spacing, bool Shown) {
        if (!L || !Shown) return;
        const int Gap = std::max(0, Spacing);
        switch (Pos) {
        case lpAbove:
            R.Sides.setTop(R.Sides.top() + L->height() + Gap);
            R.Widest = std::max(R.Widest, L->width());
            break;
        case lpBelow:
            R.Sides.setBottom(R.Sides.bottom() + L->height() + Gap);
            R.Widest = std::max(R.Widest, L->width());
            break;
        case lpLeft:
            R.Sides.setLeft(R.Sides.left() + L->width() + Gap);
            R.Tallest = std::max(R.Tallest, L->height());
            break;
        default:
            R.Sides.setRight(R.Sides.right() + L->width() + Gap);
            R.Tallest = std::max(R.Tallest, L->height());
            break;
        }
    };
    Add(DInp->FEditLabel, DInp->FEditLabelPosition, DInp->FEditLabelSpacing, DInp->NameLabelVisible);
    Add(DInp->FEditUnitLabel, DInp->FEditUnitLabelPosition, DInp->FEditUnitLabelSpacing, DInp->FUnitVisible);
    return R;
}

QSize TCustomNumInp::OuterSize(QSize Inner) const {
    const TLabelRoom R = LabelRoom();
    return QSize(std::max(Inner.width() + R.Sides.left() + R.Sides.right(), R.Widest),
                 std::max(Inner.height(), R.Tallest) + R.Sides.top() + R.Sides.bottom());
}

namespace {

QLayout* FindHolder(QLayout* L, const QWidget* W, int* Index) {
    for (int I = 0, N = L->count(); I < N; ++I) {
        QLayoutItem* Item = L->itemAt(I);
        if (!Item) continue;
        if (Item->widget() == W) {
            if (Index) *Index = I;
            return L;
        }
        if (QLayout* Sub = Item->layout())
            if (QLayout* Found = FindHolder(Sub, W, Index)) return Found;
    }
    return nullptr;
}

} // namespace

QLayout* TCustomNumInp::HoldingLayout(int* Index) const {
    // Qt marks every widget ever added to a layout; the others need no search.
    QWidget* P = parentWidget();
    if (!P || !P->layout() || !testAttribute(Qt::WA_LaidOut)) return nullptr;
    return FindHolder(P->layout(), this, Index);
}

bool TCustomNumInp::InLayout() const {
    return DInp->Item || HoldingLayout();
}

QSize TCustomNumInp::sizeHint() const {
    const QSize S = TCustomNumEdit::sizeHint();
    return InLayout() ? OuterSize(S) : S;
}

QSize TCustomNumInp::minimumSizeHint() const {
    const QSize S = TCustomNumEdit::minimumSizeHint();
    return InLayout() ? OuterSize(S) : S;
}

void TCustomNumInp::SetOuterGeometry(const QRect& Outer) {
    DInp->Outer = Outer;
    const TLabelRoom R = LabelRoom();
    {
        const QScopedValueRollback Guard(DInp->Adjusting, true);
        setGeometry(Outer - R.Sides);
    }
    // The edit's own limits may have bounded the size; that is the rectangle to recognise.
    DInp->Inner = geometry();
    PlaceLabels();
}

void TCustomNumInp::GeometryChanged() {
    if (DInp->Adjusting) return;
    if (!DInp->Item) {
        if (HoldingLayout()) {
            // A layout moved the edit: what it gave is the outer rectangle, unless it is the one
            // set here (a move or resize event delivered late, when the edit is shown).
            if (geometry() != DInp->Inner) SetOuterGeometry(geometry());
            if (!DInp->ItemPending) {
                DInp->ItemPending = true;
                // Not now: the layout may be walking its items.
                QMetaObject::invokeMethod(
                    this, [this] { ReplaceLayoutItem(); }, Qt::QueuedConnection);
            }
            return;
        }
        DInp->Outer = DInp->Inner = QRect();
    }
    PlaceLabels();
}

void TCustomNumInp::ReplaceLayoutItem() {
    DInp->ItemPending = false;
    int Index = -1;
    QLayout* L = DInp->Item ? nullptr : HoldingLayout(&Index);
    if (!L) return;
    QLayoutItem* Old = L->itemAt(Index);
    const Qt::Alignment Align = Old->alignment();
    auto* New = new TNumInpLayoutItem(this);
    New->setAlignment(Align);
    if (auto* Box = qobject_cast<QBoxLayout*>(L)) {
        const int Stretch = Box->stretch(Index);
        delete Box->takeAt(Index);
        Box->insertItem(Index, New);
        Box->setStretch(Index, Stretch);
    } else if (auto* Grid = qobject_cast<QGridLayout*>(L)) {
        int Row = 0, Col = 0, RowSpan = 1, ColSpan = 1;
        Grid->getItemPosition(Index, &Row, &Col, &RowSpan, &ColSpan);
        delete Grid->takeAt(Index);
        Grid->addItem(New, Row, Col, RowSpan, ColSpan, Align);
    } else if (auto* Form = qobject_cast<QFormLayout*>(L)) {
        int Row = 0;
        QFormLayout::ItemRole Role = QFormLayout::FieldRole;
        Form->getItemPosition(Index, &Row, &Role);
        delete Form->takeAt(Index);
        Form->setItem(Row, Role, New);
    } else {
        // Another kind of layout: the geometry events alone serve.
        New->Owner = nullptr;
        delete New;
        return;
    }
    DInp->Item = New;
}

void TCustomNumInp::LabelRoomChanged() {
    if (!InLayout()) return;
    updateGeometry();
    PlaceLabels();
}

void TCustomNumInp::SetBounds(int ALeft, int ATop, int AWidth, int AHeight) {
    setGeometry(ALeft, ATop, AWidth, AHeight);
    PlaceLabels();
}

void TCustomNumInp::UpdateUnitCaption() {
    if (DInp->FEditUnitLabel && DInp->Fcustomunitstr.trimmed().isEmpty())
        DInp->FEditUnitLabel->setText(ParUnitStrOf(ParType(), UnitSystem()).trimmed());
}

void TCustomNumInp::SetCustomUnitStr(const QString& AValue) {
    if (AValue == DInp->Fcustomunitstr) return;
    DInp->Fcustomunitstr = AValue;
    if (!DInp->FEditUnitLabel) return;
    if (AValue.trimmed().isEmpty())
        DInp->FEditUnitLabel->setText(ParUnitStrOf(ParType(), UnitSystem()).trimmed());
    else
        DInp->FEditUnitLabel->setText(AValue);
}

void TCustomNumInp::SetParType(TParType AValue) {
    TCustomNumEdit::SetParType(AValue);
    UpdateUnitCaption();
}

void TCustomNumInp::SetUnitSystem(TUnitSystem AValue) {
    TCustomNumEdit::SetUnitSystem(AValue);
    UpdateUnitCaption();
}

void TCustomNumInp::SetUnitVisible(bool AValue) {
    DInp->FUnitVisible = AValue;
    if (DInp->FEditUnitLabel) DInp->FEditUnitLabel->setVisible(AValue && ControlShown());
    LabelRoomChanged();
}

bool TCustomNumInp::NameLabelVisible() const {
    return DInp->NameLabelVisible;
}

void TCustomNumInp::SetNameLabelVisible(bool AValue) {
    if (AValue == DInp->NameLabelVisible) return;
    DInp->NameLabelVisible = AValue;
    if (DInp->FEditLabel) DInp->FEditLabel->setVisible(AValue && ControlShown());
    LabelRoomChanged();
}

// ---- following the edit ----------------------------------------------------------------------------

bool TCustomNumInp::ControlShown() const {
    const QWidget* P = parentWidget();
    // Without a parent a label would be a window of its own.
    if (!P) return false;
    if (isVisible()) return true;
    if (testAttribute(Qt::WA_WState_ExplicitShowHide)) return !testAttribute(Qt::WA_WState_Hidden);
    // Neither shown nor hidden yet: it appears with its parent unless the parent is already up.
    return !P->isVisible();
}

void TCustomNumInp::SyncLabelVisibility() {
    const bool Shown = ControlShown();
    if (DInp->FEditLabel) DInp->FEditLabel->setVisible(Shown && DInp->NameLabelVisible);
    if (DInp->FEditUnitLabel) DInp->FEditUnitLabel->setVisible(Shown && DInp->FUnitVisible);
}

void TCustomNumInp::SyncLabelEnabled() {
    const bool Enabled = parentWidget() ? isEnabledTo(parentWidget()) : isEnabled();
    if (DInp->FEditLabel) DInp->FEditLabel->setEnabled(Enabled);
    if (DInp->FEditUnitLabel) DInp->FEditUnitLabel->setEnabled(Enabled);
}

void TCustomNumInp::SyncLabelParents() {
    QWidget* P = parentWidget();
    for (TNumFldBoundLabel* L : {DInp->FEditLabel.data(), DInp->FEditUnitLabel.data()}) {
        if (!L) continue;
        if (L->parentWidget() != P) L->setParent(P);
        // The new owner may already hold a component of that name.
        const QWidget* Owner = OwnerWidget();
        bool Clash = false;
        if (Owner)
            for (const QObject* O : Owner->findChildren<QObject*>(L->objectName()))
                if (O != L) Clash = true;
        if (Clash) L->setObjectName(UniqueLabelName(L));
    }
    SyncLabelEnabled();
    SyncLabelVisibility();
    PlaceLabels();
}

bool TCustomNumInp::event(QEvent* E) {
    const bool Result = TCustomNumEdit::event(E);
    switch (E->type()) {
    case QEvent::ParentChange:
        SyncLabelParents();
        break;
    case QEvent::ShowToParent:
    case QEvent::HideToParent:
        if (CopyVisible()) SyncLabelVisibility();
        break;
    case QEvent::EnabledChange:
        if (CopyEnabled()) SyncLabelEnabled();
        break;
    case QEvent::LayoutDirectionChange:
        for (TNumFldBoundLabel* L : {DInp->FEditLabel.data(), DInp->FEditUnitLabel.data()})
            if (L) L->setLayoutDirection(layoutDirection());
        PlaceLabels();
        break;
    default:
        break;
    }
    return Result;
}

void TCustomNumInp::moveEvent(QMoveEvent* E) {
    TCustomNumEdit::moveEvent(E);
    GeometryChanged();
}

void TCustomNumInp::resizeEvent(QResizeEvent* E) {
    TCustomNumEdit::resizeEvent(E);
    GeometryChanged();
}

} // namespace qxnum

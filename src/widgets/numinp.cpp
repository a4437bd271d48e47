// The labelled numeric input and its bound labels.
#include <qxnum/widgets/numinp.h>

#include <qxnum/registry.h>

#include <QEvent>
#include <QRegularExpression>
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

// ---- TNumFldBoundLabel ---------------------------------------------------------------------------

TNumFldBoundLabel::TNumFldBoundLabel(TCustomNumInp* Owner)
    : QLabel(Owner ? Owner->parentWidget() : nullptr), FOwner(Owner) {}

void TNumFldBoundLabel::setText(const QString& S) {
    QLabel::setText(S);
    AdjustBounds();
}

void TNumFldBoundLabel::AdjustBounds() {
    resize(sizeHint());
    if (FOwner) FOwner->LabelChanged(this);
}

void TNumFldBoundLabel::changeEvent(QEvent* E) {
    QLabel::changeEvent(E);
    if (E->type() == QEvent::FontChange || E->type() == QEvent::StyleChange) AdjustBounds();
}

// ---- TCustomNumInp -------------------------------------------------------------------------------

TCustomNumInp::TCustomNumInp(QWidget* Parent) : TCustomNumEdit(Parent) {
    FLastName = objectName();
    connect(this, &QObject::objectNameChanged, this, &TCustomNumInp::NameChanged);
    SetupInternalEditUnitLabels();
}

TCustomNumInp::~TCustomNumInp() {
    delete FEditLabel.data();
    delete FEditUnitLabel.data();
}

void TCustomNumInp::SetupInternalEditUnitLabels() {
    const auto Make = [this](const QString& Caption) {
        auto* L = new TNumFldBoundLabel(this);
        L->setObjectName(UniqueLabelName(L));
        if (testAttribute(Qt::WA_SetLayoutDirection)) L->setLayoutDirection(layoutDirection());
        L->setText(Caption);
        return L;
    };
    if (!FEditLabel) {
        FEditLabel = Make(objectName());
        FEditLabel->setBuddy(this);
    }
    if (!FEditUnitLabel) FEditUnitLabel = Make(QStringLiteral("Unit"));
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
    for (const TNumFldBoundLabel* L : {FEditLabel.data(), FEditUnitLabel.data()})
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
    if (FEditLabel &&
        (FEditLabel->text().isEmpty() || FEditLabel->text().compare(FLastName, Qt::CaseInsensitive) == 0))
        FEditLabel->setText(NewName);
    FLastName = NewName;
}

void TCustomNumInp::LabelChanged(TNumFldBoundLabel* Label) {
    if (Label && Label != FEditLabel && Label != FEditUnitLabel) return;
    PlaceLabels();
    if (FEditLabel) setAccessibleName(WithoutMnemonic(FEditLabel->text()));
    if (FEditUnitLabel) setAccessibleDescription(FEditUnitLabel->text());
}

void TCustomNumInp::SetEditLabelPosition(TLabelPosition AValue) {
    if (!FEditLabel) return;
    FEditLabelPosition = AValue;
    SetNumLabelPosition(FEditLabel, FEditLabelPosition, FEditLabelSpacing);
}

void TCustomNumInp::SetEditUnitLabelPosition(TLabelPosition AValue) {
    if (!FEditUnitLabel) return;
    FEditUnitLabelPosition = AValue;
    SetNumLabelPosition(FEditUnitLabel, FEditUnitLabelPosition, FEditUnitLabelSpacing);
}

void TCustomNumInp::SetEditLabelSpacing(int AValue) {
    FEditLabelSpacing = AValue;
    SetNumLabelPosition(FEditLabel, FEditLabelPosition, FEditLabelSpacing);
}

void TCustomNumInp::SetEditUnitLabelSpacing(int AValue) {
    FEditUnitLabelSpacing = AValue;
    SetNumLabelPosition(FEditUnitLabel, FEditUnitLabelPosition, FEditUnitLabelSpacing);
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
    SetNumLabelPosition(FEditLabel, FEditLabelPosition, FEditLabelSpacing);
    SetNumLabelPosition(FEditUnitLabel, FEditUnitLabelPosition, FEditUnitLabelSpacing);
}

void TCustomNumInp::SetBounds(int ALeft, int ATop, int AWidth, int AHeight) {
    setGeometry(ALeft, ATop, AWidth, AHeight);
    PlaceLabels();
}

void TCustomNumInp::UpdateUnitCaption() {
    if (FEditUnitLabel && Fcustomunitstr.trimmed().isEmpty())
        FEditUnitLabel->setText(ParUnitStrOf(ParType(), UnitSystem()).trimmed());
}

void TCustomNumInp::SetCustomUnitStr(const QString& AValue) {
    if (AValue == Fcustomunitstr) return;
    Fcustomunitstr = AValue;
    if (!FEditUnitLabel) return;
    if (AValue.trimmed().isEmpty())
        FEditUnitLabel->setText(ParUnitStrOf(ParType(), UnitSystem()).trimmed());
    else
        FEditUnitLabel->setText(AValue);
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
    FUnitVisible = AValue;
    if (FEditUnitLabel) FEditUnitLabel->setVisible(AValue && ControlShown());
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
    if (FEditLabel) FEditLabel->setVisible(Shown);
    if (FEditUnitLabel) FEditUnitLabel->setVisible(Shown && FUnitVisible);
}

void TCustomNumInp::SyncLabelEnabled() {
    const bool Enabled = parentWidget() ? isEnabledTo(parentWidget()) : isEnabled();
    if (FEditLabel) FEditLabel->setEnabled(Enabled);
    if (FEditUnitLabel) FEditUnitLabel->setEnabled(Enabled);
}

void TCustomNumInp::SyncLabelParents() {
    QWidget* P = parentWidget();
    for (TNumFldBoundLabel* L : {FEditLabel.data(), FEditUnitLabel.data()}) {
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
        for (TNumFldBoundLabel* L : {FEditLabel.data(), FEditUnitLabel.data()})
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
    PlaceLabels();
}

void TCustomNumInp::resizeEvent(QResizeEvent* E) {
    TCustomNumEdit::resizeEvent(E);
    PlaceLabels();
}

} // namespace qxnum

// The labelled numeric input and its bound labels.
#include <qxnum/widgets/numinp.h>

#include <qxnum/registry.h>

#include <QEvent>
#include <QPointer>
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
    QString FLastName;
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
    if (DInp->FEditLabel) setAccessibleName(WithoutMnemonic(DInp->FEditLabel->text()));
    if (DInp->FEditUnitLabel) setAccessibleDescription(DInp->FEditUnitLabel->text());
}

void TCustomNumInp::SetEditLabelPosition(TLabelPosition AValue) {
    if (!DInp->FEditLabel) return;
    DInp->FEditLabelPosition = AValue;
    SetNumLabelPosition(DInp->FEditLabel, DInp->FEditLabelPosition, DInp->FEditLabelSpacing);
}

void TCustomNumInp::SetEditUnitLabelPosition(TLabelPosition AValue) {
    if (!DInp->FEditUnitLabel) return;
    DInp->FEditUnitLabelPosition = AValue;
    SetNumLabelPosition(DInp->FEditUnitLabel, DInp->FEditUnitLabelPosition, DInp->FEditUnitLabelSpacing);
}

void TCustomNumInp::SetEditLabelSpacing(int AValue) {
    DInp->FEditLabelSpacing = AValue;
    SetNumLabelPosition(DInp->FEditLabel, DInp->FEditLabelPosition, DInp->FEditLabelSpacing);
}

void TCustomNumInp::SetEditUnitLabelSpacing(int AValue) {
    DInp->FEditUnitLabelSpacing = AValue;
    SetNumLabelPosition(DInp->FEditUnitLabel, DInp->FEditUnitLabelPosition, DInp->FEditUnitLabelSpacing);
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
    SetNumLabelPosition(DInp->FEditLabel, DInp->FEditLabelPosition, DInp->FEditLabelSpacing);
    SetNumLabelPosition(DInp->FEditUnitLabel, DInp->FEditUnitLabelPosition, DInp->FEditUnitLabelSpacing);
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
    if (DInp->FEditLabel) DInp->FEditLabel->setVisible(Shown);
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
    PlaceLabels();
}

void TCustomNumInp::resizeEvent(QResizeEvent* E) {
    TCustomNumEdit::resizeEvent(E);
    PlaceLabels();
}

} // namespace qxnum

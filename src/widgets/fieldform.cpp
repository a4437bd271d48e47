// TFieldForm: the dialog half (buttons, life cycle, focus, visibility, Assign).
#include "fieldform_p.h"

#include <qxnum/dialogs.h>
#include <qxnum/widgets/fields.h>
#include <qxnum/widgets/numfld.h>
#include <qxnum/widgets/numgrid.h>

#include <QBuffer>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QShowEvent>
#include <QStackedWidget>
#include <QTabWidget>
#include <QVBoxLayout>
#include <typeinfo>

namespace qxnum {

TFieldFrame::TFieldFrame(QWidget* Parent) : QFrame(Parent), d(std::make_unique<TFieldFramePrivate>()) {}
TFieldFrame::~TFieldFrame() = default;

namespace {

QPushButton* MakeButton(QWidget* Panel, const QString& Name, const QString& Caption, int Width,
                        int ModalResult) {
    auto* B = new QPushButton(Caption, Panel);
    B->setObjectName(Name);
    B->setFixedSize(Width, 32);
    // Clicks leave the focus where it is (see the header); Tab still reaches the buttons.
    B->setFocusPolicy(Qt::TabFocus);
    B->setAutoDefault(false);
    // Lets a numeric edit recognise the Cancel button when the focus moves to it.
    if (ModalResult) B->setProperty("ModalResult", ModalResult);
    return B;
}

// The tab widget and index when W is a page of a QTabWidget.
std::pair<QTabWidget*, int> TabSheetOf(const QWidget* W) {
    if (!W) return {nullptr, -1};
    auto* Stack = qobject_cast<QStackedWidget*>(W->parentWidget());
    if (!Stack) return {nullptr, -1};
    auto* Tabs = qobject_cast<QTabWidget*>(Stack->parentWidget());
    if (!Tabs) return {nullptr, -1};
    const int Index = Tabs->indexOf(const_cast<QWidget*>(W));
    return Index < 0 ? std::pair<QTabWidget*, int>{nullptr, -1} : std::pair{Tabs, Index};
}

bool IsForm(const QWidget* W) {
    return W->isWindow() || qobject_cast<const TFieldForm*>(W);
}

bool Shown(const QWidget* W) {
    if (const auto [Tabs, Index] = TabSheetOf(W); Tabs) return Tabs->currentIndex() == Index;
    return !W->isHidden();
}

bool VisibleByRule(const QWidget* C) {
    // Iterative: a deep nesting of containers needs no deep recursion.
    while (true) {
        if (!Shown(C)) return false;
        const QWidget* P = C->parentWidget();
        if (!P || IsForm(C) || IsForm(P)) return true;
        if (const auto [Tabs, Index] = TabSheetOf(P); Tabs) {
            if (Tabs->currentIndex() != Index) return false;
            C = Tabs;
            continue;
        }
        if (P->isHidden()) return false;
        C = P;
    }
}

template <typename T, typename S> bool TryAssign(QObject* Target, S* Source) {
    auto* Field = qobject_cast<T*>(Target);
    if (!Field) return false;
    Field->Assign(Source);
    return true;
}

// Field-level Assign. A host's own field class is copied through its stream record, which
// carries exactly what the field persists.
void AssignField(QObject* Target, QObject* Source) {
    if (TryAssign<TNumGrid>(Target, Source) || TryAssign<TNumFld>(Target, Source) ||
        TryAssign<TStringFld>(Target, Source) || TryAssign<TMemoFld>(Target, Source) ||
        TryAssign<TCheckFld>(Target, Source) || TryAssign<TRadioBtnFld>(Target, Source) ||
        TryAssign<TRadioGrpFld>(Target, Source) || TryAssign<TCheckListBoxFld>(Target, Source) ||
        TryAssign<TComboBoxFld>(Target, Source) || TryAssign<TDateTimePickerFld>(Target, Source))
        return;
    INumFld* To = Supports(Target);
    INumFld* From = Supports(Source);
    if (!To || !From || FileClassName(Target) != FileClassName(Source))
        throw EConvertError(
            QStringLiteral("Cannot assign a %1 to a %2").arg(FileClassName(Source), FileClassName(Target)));
    QBuffer Buffer;
    Buffer.open(QIODevice::ReadWrite);
    {
        TWriter Writer(&Buffer);
        From->WritetoStream(Writer);
    }
    Buffer.seek(0);
    TReader Reader(&Buffer);
    To->ReadfromStream(Reader);
}

QObject* ComponentNamed(QObject* Owner, const QString& Name) {
    for (QObject* C : ComponentsOf(Owner))
        if (C->objectName() == Name) return C;
    return nullptr;
}

} // namespace

TFieldForm::TFieldForm(QWidget* Parent) : QDialog(Parent), d(std::make_unique<TFieldFormPrivate>()) {
    setObjectName(QStringLiteral("FieldForm"));
    setWindowTitle(QStringLiteral("FieldForm"));
    auto* Main = new QVBoxLayout(this);
    Main->setContentsMargins(0, 0, 0, 0);
    Main->setSpacing(0);
    d->Client = new QWidget(this);
    d->Client->setObjectName(QStringLiteral("ClientArea"));
    Main->addWidget(d->Client, 1);
    d->Panel = new QWidget(this);
    d->Panel->setObjectName(QStringLiteral("BottomButtonsPanel"));
    d->Panel->setFixedHeight(44);
    auto* Row = new QHBoxLayout(d->Panel);
    // 6 pixels above, right and below each button, as in the classic form.
    Row->setContentsMargins(0, 6, 6, 6);
    Row->setSpacing(6);
    Row->addStretch(1);
    d->OK = MakeButton(d->Panel, QStringLiteral("OKbtn"), tr("OK"), 93, mrOk);
    d->Cancel = MakeButton(d->Panel, QStringLiteral("Cancelbtn"), tr("Cancel"), 93, mrCancel);
    d->Help = MakeButton(d->Panel, QStringLiteral("HelpBtn"), tr("&Help"), 94, 0);
    d->OK->setDefault(true);
    for (QPushButton* B : {d->OK, d->Cancel, d->Help})
        Row->addWidget(B);
    Main->addWidget(d->Panel);
    connect(d->OK, &QPushButton::clicked, this, [this] { OKbtnClick(); });
    connect(d->Cancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(d->Help, &QPushButton::clicked, this, [this] { HelpBtnClick(); });
    resize(455, 308);
}

TFieldForm::~TFieldForm() = default;

QWidget* TFieldForm::ClientArea() const {
    return d->Client;
}
QWidget* TFieldForm::BottomButtonsPanel() const {
    return d->Panel;
}
QPushButton* TFieldForm::OKbtn() const {
    return d->OK;
}
QPushButton* TFieldForm::Cancelbtn() const {
    return d->Cancel;
}
QPushButton* TFieldForm::HelpBtn() const {
    return d->Help;
}
int TFieldForm::HelpContext() const {
    return d->HelpContext;
}
void TFieldForm::SetHelpContext(int AValue) {
    d->HelpContext = AValue;
}
int TFieldForm::ModalResult() const {
    return d->ModalResult;
}
QString TFieldForm::IDstr() const {
    return objectName();
}

void TFieldForm::EnsureCreated() {
    if (!d->Created) FormCreate();
}

void TFieldForm::FormCreate() {
    d->Created = true;
    ReadResultCode = rrcOk;
    VersionUpdated = false;
    RevertingToDefaults = false;
    TFieldFormPrivate::ForEachOwnField(this, [](QObject*, INumFld* F) { F->SetFormCreateVal(); });
}

void TFieldForm::SetCopyValues() {
    EnsureCreated();
    TFieldFormPrivate::ForEachFieldAndFrameField(this, [](QObject*, INumFld* F) { F->SetCopyValue(); });
}

void TFieldForm::FormShow() {
    SetCopyValues();
}

void TFieldForm::showEvent(QShowEvent* E) {
    QDialog::showEvent(E);
    if (E->spontaneous()) return;
    EnsureCreated();
    d->ModalResult = mrNone;
    FormShow();
    // The buttons are made before the derived form's fields: put them at the end of the tab chain,
    // and start in the first field, as a dialog does.
    QWidget* First = nullptr;
    QWidget* Last = nullptr;
    for (QWidget* W = d->Client->nextInFocusChain(); W && W != d->Client; W = W->nextInFocusChain()) {
        if (!d->Client->isAncestorOf(W)) continue;
        if ((W->focusPolicy() & Qt::TabFocus) && W->isEnabled() && W->isVisibleTo(this)) {
            if (!First) First = W;
            Last = W;
        }
    }
    if (Last) {
        setTabOrder(Last, d->OK);
        setTabOrder(d->OK, d->Cancel);
        setTabOrder(d->Cancel, d->Help);
    }
    if (QWidget* Target = d->PendingFocus) {
        d->PendingFocus = nullptr;
        Target->setFocus(Qt::OtherFocusReason);
    } else if (First) {
        QWidget* Focus = focusWidget();
        if (!Focus || Focus == d->OK || Focus == d->Cancel || Focus == d->Help)
            First->setFocus(Qt::TabFocusReason);
    }
}

void TFieldForm::OKbtnClick() {
    EnsureCreated();
    d->ModalResult = mrOk;
    QWidget* Focus = focusWidget();
    if (auto* Edit = qobject_cast<TCustomNumEdit*>(Focus)) {
        // The text the user is typing counts: evaluate it as leaving the edit would.
        const QPointer<TFieldForm> Self(this);
        const bool Taken = Edit->UpdateValue(true);
        if (!Self) return;
        if (!Taken || !Edit->IsValid()) {
            d->ModalResult = mrNone;
            return;
        }
    } else if (Focus && Focus != d->OK && isActiveWindow()) {
        // Any other editor (a grid cell) gets its leave processing by giving the focus away; one
        // that refuses takes it back.
        d->OK->setFocus(Qt::OtherFocusReason);
        if (focusWidget() != d->OK) {
            d->ModalResult = mrNone;
            return;
        }
    }
    accept();
}

void TFieldForm::HelpBtnClick() {
    ShowHelp(d->HelpContext);
}

void TFieldForm::done(int r) {
    EnsureCreated();
    const int Result = r == QDialog::Accepted ? int(mrOk) : r == QDialog::Rejected ? int(mrCancel) : r;
    d->ModalResult = Result;
    FormClose(Result);
    QDialog::done(r);
}

void TFieldForm::FormClose(int AModalResult) {
    if (AModalResult == mrOk)
        TFieldFormPrivate::ForEachFieldAndFrameField(this, [](QObject*, INumFld* F) { F->OkChanges(); });
    else if (AModalResult == mrCancel)
        TFieldFormPrivate::ForEachFieldAndFrameField(this,
                                                     [](QObject*, INumFld* F) { F->RestoreCopyValue(); });
    if (!d->OK->isHidden() && d->OK->isEnabled()) d->OK->setFocus(Qt::OtherFocusReason);
}

void TFieldForm::ResetToCreateFormState(bool AlsoIfInvisible) {
    EnsureCreated();
    RevertingToDefaults = true;
    TFieldFormPrivate::ForEachOwnField(this, [&](QObject* C, INumFld* F) {
        const auto* W = qobject_cast<const QWidget*>(C);
        if (AlsoIfInvisible || !W || ControlIsVisible(W)) F->ResetToFormCreateVal();
    });
}

bool TFieldForm::ControlIsVisible(const QWidget* AControl) const {
    return AControl && VisibleByRule(AControl);
}

int TFieldForm::ShowModalFocused(const QString& FocusControlName) {
    EnsureCreated();
    const QString Name = FocusControlName.trimmed();
    if (auto* Target = qobject_cast<QWidget*>(Name.isEmpty() ? nullptr : FindNumFld(Name))) {
        for (QWidget* P = Target->parentWidget(); P && P != this; P = P->parentWidget())
            if (const auto [Tabs, Index] = TabSheetOf(P); Tabs && Tabs->isTabEnabled(Index))
                Tabs->setCurrentIndex(Index);
        if (Target->isEnabled() && !Target->isHidden() && (Target->focusPolicy() & Qt::TabFocus)) {
            if (isVisible())
                Target->setFocus(Qt::OtherFocusReason);
            else
                d->PendingFocus = Target;
        }
    }
    if (!isVisible()) {
        exec();
        return d->ModalResult;
    }
    show();
    raise();
    activateWindow();
    return mrNone;
}

void TFieldForm::Assign(const TFieldForm& Source) {
    EnsureCreated();
    if (typeid(*this) != typeid(Source))
        throw EConvertError(
            QStringLiteral("Cannot assign a %1 to a %2").arg(FileClassName(&Source), FileClassName(this)));
    auto* From = const_cast<TFieldForm*>(&Source);
    for (QObject* C : ComponentsOf(this)) {
        if (Supports(C)) {
            if (QObject* S = ComponentNamed(From, C->objectName())) AssignField(C, S);
        } else if (IsFieldFrame(C)) {
            QObject* SourceFrame = ComponentNamed(From, C->objectName());
            if (!SourceFrame || !IsFieldFrame(SourceFrame)) continue;
            TFieldFormPrivate::ForEachOwnField(C, [&](QObject* Inner, INumFld*) {
                if (QObject* S = ComponentNamed(SourceFrame, Inner->objectName())) AssignField(Inner, S);
            });
        }
    }
}

void TEditToLines(QStringList& Lines, const QString& Caption, const QString& ParID, const QLineEdit* Edit) {
    constexpr int Column = 40;
    constexpr int LongCaption = 60;
    QString Head = Caption;
    if (Caption.size() > LongCaption) {
        Lines.append(Caption);
        Head.clear();
    }
    QString Line = Head.leftJustified(std::max<int>(Column, static_cast<int>(Head.size())));
    Line += QLatin1Char(' ') + (Edit ? Edit->text() : QString());
    if (!ParID.isEmpty()) Line += QLatin1Char(' ') + ParID;
    Lines.append(Line);
}

} // namespace qxnum

// The numeric input query and its dialog.
#include <qxnum/dialogs.h>
#include <qxnum/widgets/numfld.h>
#include <qxnum/widgets/numinpdlg.h>

#include <QApplication>
#include <QEvent>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QShowEvent>

#include <cmath>

namespace qxnum {

namespace {

QString Tr(const char* Source) {
    return QCoreApplication::translate("TNumInpDlgForm", Source);
}

TNumInpDlgHook& Hook() {
    static TNumInpDlgHook H;
    return H;
}

constexpr int ClientWidth = 410, ClientHeight = 96;
constexpr int EditWidth = 89, EditHeight = 24, EditRightMargin = ClientWidth - 304 - EditWidth;

} // namespace

class TNumInpDlgFormPrivate {
public:
    QLabel* Label1 = nullptr;
    TNumFld* NumFld1 = nullptr;
    QPushButton* OK = nullptr;
    QPushButton* Cancel = nullptr;
    QPushButton* Help = nullptr;
    int HelpContext = 0;
};

TNumInpDlgForm::TNumInpDlgForm(QWidget* Parent) : QDialog(Parent), d(new TNumInpDlgFormPrivate) {
    setObjectName(QStringLiteral("NumInpDlgForm"));
    setWindowTitle(Tr("Enter Numerical Value"));
    d->Label1 = new QLabel(QStringLiteral("  "), this);
    d->Label1->setObjectName(QStringLiteral("Label1"));
    d->Label1->move(8, 12);
    d->NumFld1 = new TNumFld(this);
    d->NumFld1->setObjectName(QStringLiteral("NumFld1"));
    d->NumFld1->SetDigits(16);
    d->NumFld1->SetDecimals(2);
    d->NumFld1->SetTabOnEnterKey(false);
    d->NumFld1->SetValidate(true);
    d->NumFld1->SetCustomScale(1.0L);
    d->NumFld1->SetReadOnlyFontColor(Qt::blue);
    d->NumFld1->SetEditLabelPosition(lpLeft);
    d->NumFld1->EditLabel()->setText(Tr("Enter value"));
    d->NumFld1->EditLabel()->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    d->NumFld1->SetEditUnitLabelPosition(lpRight);
    d->NumFld1->SetEditUnitLabelSpacing(0);
    d->NumFld1->EditUnitLabel()->setText(QStringLiteral(" "));
    d->NumFld1->EditUnitLabel()->setVisible(false);
    d->NumFld1->resize(EditWidth, EditHeight);
    d->OK = new QPushButton(Tr("OK"), this);
    d->OK->setObjectName(QStringLiteral("OKbtn"));
    d->OK->setDefault(true);
    d->Cancel = new QPushButton(Tr("Cancel"), this);
    d->Cancel->setObjectName(QStringLiteral("Cancelbtn"));
    d->Help = new QPushButton(Tr("&Help"), this);
    d->Help->setObjectName(QStringLiteral("HelpBtn"));
    d->Help->setVisible(false);
    for (QPushButton* B : {d->OK, d->Cancel, d->Help}) {
        B->resize(93, 32);
        // A click leaves the focus in the field, so its text is evaluated once, by OK itself.
        B->setFocusPolicy(Qt::TabFocus);
    }
    d->Cancel->setProperty("ModalResult", 2);
    setTabOrder(d->NumFld1, d->OK);
    setTabOrder(d->OK, d->Cancel);
    setTabOrder(d->Cancel, d->Help);
    connect(d->OK, &QPushButton::clicked, this, [this] { OKbtnClick(); });
    connect(d->Cancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(d->Help, &QPushButton::clicked, this, [this] { ShowHelp(d->HelpContext); });
    resize(ClientWidth, ClientHeight);
}

TNumInpDlgForm::~TNumInpDlgForm() = default;

QLabel* TNumInpDlgForm::Label1() const {
    return d->Label1;
}
TNumFld* TNumInpDlgForm::NumFld1() const {
    return d->NumFld1;
}
QPushButton* TNumInpDlgForm::OKbtn() const {
    return d->OK;
}
QPushButton* TNumInpDlgForm::Cancelbtn() const {
    return d->Cancel;
}
QPushButton* TNumInpDlgForm::HelpBtn() const {
    return d->Help;
}
int TNumInpDlgForm::HelpContext() const {
    return d->HelpContext;
}
void TNumInpDlgForm::SetHelpContext(int AValue) {
    d->HelpContext = AValue;
    d->Help->setVisible(AValue != 0);
}

bool TNumInpDlgForm::event(QEvent* E) {
    const bool Result = QDialog::event(E);
    if (E->type() == QEvent::WindowActivate) FormActivate();
    return Result;
}

void TNumInpDlgForm::showEvent(QShowEvent* E) {
    // The form keeps its size unless the prompt needs more room to the left of the edit.
    QLabel* Prompt = d->NumFld1->EditLabel();
    Prompt->adjustSize();
    // A unit shown beside the edit (a host's hook may give the field a parameter type) needs room too.
    QLabel* Unit = d->NumFld1->EditUnitLabel();
    int UnitRoom = 0;
    if (Unit && !Unit->isHidden()) {
        Unit->adjustSize();
        UnitRoom = Unit->width() + 4;
    }
    const int Width = std::max(ClientWidth, 8 + Prompt->width() + 8 + EditWidth + UnitRoom + EditRightMargin);
    resize(Width, ClientHeight);
    d->NumFld1->move(Width - EditRightMargin - UnitRoom - EditWidth, 9);
    const int Right = Width - (ClientWidth - 305 - 93);
    d->Help->move(Right - 93, 55);
    d->Cancel->move(Right - 93 - 98, 55);
    d->OK->move(Right - 93 - 2 * 98 - 1, 55);
    if (!E->spontaneous()) {
        const QScreen* Screen = parentWidget() ? parentWidget()->screen() : QGuiApplication::primaryScreen();
        if (Screen) move(Screen->availableGeometry().center() - rect().center());
    }
    QDialog::showEvent(E);
}

void TNumInpDlgForm::FormActivate() {
    d->NumFld1->setFocus(Qt::ActiveWindowFocusReason);
    d->NumFld1->selectAll();
}

void TNumInpDlgForm::OKbtnClick() {
    // The text being typed counts: evaluate it as leaving the field would, and stay while it is refused.
    const QPointer<TNumInpDlgForm> Self(this);
    const bool Taken = d->NumFld1->UpdateValue(true);
    if (!Self) return;
    if (!Taken || !d->NumFld1->IsValid()) {
        d->NumFld1->setFocus(Qt::OtherFocusReason);
        return;
    }
    accept();
}

TNumInpDlgHook SetNumInpDlgHook(TNumInpDlgHook H) {
    return std::exchange(Hook(), std::move(H));
}

bool NumInputQuery(const QString& ACaption, const QString& APrompt, int AHelpContext,
                   TNumericType ANumericType, int ADecimals, double AMin, double AMax, double& AValue,
                   const TFormatSettings&) {
    TNumInpDlgForm Form(QApplication::activeWindow());
    if (!ACaption.isEmpty()) Form.setWindowTitle(ACaption);
    if (!APrompt.isEmpty()) Form.NumFld1()->EditLabel()->setText(APrompt);
    Form.SetHelpContext(AHelpContext);
    TNumFld* Field = Form.NumFld1();
    Field->SetNumericType(ANumericType);
    Field->SetDecimals(static_cast<quint16>(ADecimals));
    // Both limits at once: one at a time, each would be pulled to the field's old other limit (0),
    // and a positive minimum or a negative maximum would be lost.
    Field->SetRange(AMin, AMax);
    // The caller's variable is clamped even when the user cancels, deliberately.
    if (AValue > AMax) AValue = AMax;
    if (AValue < AMin || std::isnan(AValue)) AValue = AMin;
    Field->SetValue(AValue);
    if (Hook()) Hook()(&Form);
    if (Form.exec() != QDialog::Accepted) return false;
    AValue = static_cast<double>(Field->GetValue());
    return true;
}

} // namespace qxnum

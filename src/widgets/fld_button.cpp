// TCheckFld, TRadioBtnFld and TRadioGrpFld: the button fields.
#include "fieldbase_p.h"

#include <qxnum/registry.h>
#include <qxnum/widgets/fields.h>

#include <QButtonGroup>
#include <QGridLayout>

#include <algorithm>

namespace qxnum {

namespace {

const QString ValueElement = QStringLiteral("Value");
const QString ItemIndexElement = QStringLiteral("ItemIndex");

const TClassRegistrar CheckFldRegistrar("TCheckFld", [](QObject* Owner) -> QObject* {
    return new TCheckFld(qobject_cast<QWidget*>(Owner));
});
const TClassRegistrar RadioBtnFldRegistrar("TRadioBtnFld", [](QObject* Owner) -> QObject* {
    return new TRadioBtnFld(qobject_cast<QWidget*>(Owner));
});
const TClassRegistrar RadioGrpFldRegistrar("TRadioGrpFld", [](QObject* Owner) -> QObject* {
    return new TRadioGrpFld(qobject_cast<QWidget*>(Owner));
});

QString CheckedText(bool Checked) {
    return Checked ? QStringLiteral("checked") : QStringLiteral("unchecked");
}

// The "Value" element of a boolean field: changed when it differs or is not a boolean.
bool BoolDiffers(TXmlNode C, bool Current) {
    bool B = false;
    return !XmlTryStrToBool(C.ValueAsString(), B) || B != Current;
}

QString BoolXmlText(TXmlNode Node) {
    const TXmlNode C = Node.NodeByName(ValueElement);
    if (!C) return TFieldBase::NoValueText();
    bool B = false;
    return XmlTryStrToBool(C.ValueAsString(), B) ? CheckedText(B) : C.ValueAsString();
}

} // namespace

// --- TCheckFld ----------------------------------------------------------------------------------

TCheckFld::TCheckFld(QWidget* Parent) : QCheckBox(Parent), TValueField(this) {}

TCheckFld::~TCheckFld() = default;

void TCheckFld::Assign(QObject* Source) {
    if (const auto* S = qobject_cast<TCheckFld*>(Source))
        SetChecked(S->Checked());
    else
        AssignError(Source);
}

bool TCheckFld::XmlValueChanged(TXmlNode ParentXmlNode) {
    return XmlChildChanged(ParentXmlNode, ValueElement,
                           [this](TXmlNode C) { return BoolDiffers(C, Checked()); });
}

QString TCheckFld::GetValueText() {
    return CheckedText(Checked());
}

QString TCheckFld::GetXMLValueText(TXmlNode ParentXmlNode) {
    return BoolXmlText(ParentXmlNode);
}

void TCheckFld::WriteStreamValue(TWriter& Writer) {
    Writer.WriteBoolean(Checked());
}

TFieldBase::TApplyValue TCheckFld::ReadStreamValue(TReader& Reader) {
    return [this, B = Reader.ReadBoolean()] { SetChecked(B); };
}

void TCheckFld::WriteXmlValue(TXmlNode Node) {
    Node.WriteBool(ValueElement, Checked());
}

TFieldBase::TApplyValue TCheckFld::ReadXmlValue(TXmlNode Node) {
    bool B = false;
    if (!ReadXmlBool(Node, ValueElement, B)) return {};
    return [this, B] { SetChecked(B); };
}

// --- TRadioBtnFld -------------------------------------------------------------------------------

TRadioBtnFld::TRadioBtnFld(QWidget* Parent) : QRadioButton(Parent), TValueField(this) {}

TRadioBtnFld::~TRadioBtnFld() = default;

void TRadioBtnFld::SetChecked(bool AValue) {
    if (AValue || !isChecked() || !autoExclusive()) {
        setChecked(AValue);
        return;
    }
    // The checked button of an exclusive set refuses to be unchecked.
    setAutoExclusive(false);
    setChecked(false);
    setAutoExclusive(true);
}

void TRadioBtnFld::Assign(QObject* Source) {
    if (const auto* S = qobject_cast<TRadioBtnFld*>(Source))
        SetChecked(S->isChecked());
    else
        AssignError(Source);
}

bool TRadioBtnFld::XmlValueChanged(TXmlNode ParentXmlNode) {
    return XmlChildChanged(ParentXmlNode, ValueElement,
                           [this](TXmlNode C) { return BoolDiffers(C, isChecked()); });
}

QString TRadioBtnFld::GetValueText() {
    return CheckedText(isChecked());
}

QString TRadioBtnFld::GetXMLValueText(TXmlNode ParentXmlNode) {
    return BoolXmlText(ParentXmlNode);
}

void TRadioBtnFld::WriteStreamValue(TWriter& Writer) {
    Writer.WriteBoolean(isChecked());
}

TFieldBase::TApplyValue TRadioBtnFld::ReadStreamValue(TReader& Reader) {
    return [this, B = Reader.ReadBoolean()] { SetChecked(B); };
}

void TRadioBtnFld::WriteXmlValue(TXmlNode Node) {
    Node.WriteBool(ValueElement, isChecked());
}

TFieldBase::TApplyValue TRadioBtnFld::ReadXmlValue(TXmlNode Node) {
    bool B = false;
    if (!ReadXmlBool(Node, ValueElement, B)) return {};
    return [this, B] { SetChecked(B); };
}

// --- TRadioGrpFld -------------------------------------------------------------------------------

class TRadioGrpFldPrivate : public TFieldBasePrivate {
public:
    QStringList FItems;
    int FItemIndex = -1;
    int FColumns = 1;
    QGridLayout* FLayout = nullptr;
    QButtonGroup* FGroup = nullptr;
    QList<QRadioButton*> FButtons;
    TNotifyEvent FOnClick;
};

TRadioGrpFld::TRadioGrpFld(QWidget* Parent) : QGroupBox(Parent), TValueField(this, new TRadioGrpFldPrivate) {
    Priv()->FLayout = new QGridLayout(this);
    Priv()->FGroup = new QButtonGroup(this);
    // No item is checked: the copy and form-create values are -1 too.
    SetCopyValue();
    SetFormCreateVal();
    // Keyboard navigation and a host checking a button directly move ItemIndex as well.
    connect(Priv()->FGroup, &QButtonGroup::idToggled, this, [this](int Id, bool Checked) {
        if (Checked) Priv()->FItemIndex = Id;
    });
    connect(Priv()->FGroup, &QButtonGroup::idClicked, this, [this](int Id) {
        SetItemIndex(Id);
        if (Priv()->FOnClick) Priv()->FOnClick(this);
    });
}

TRadioGrpFld::~TRadioGrpFld() = default;

TRadioGrpFldPrivate* TRadioGrpFld::Priv() const {
    return static_cast<TRadioGrpFldPrivate*>(FieldPrivate());
}

QStringList TRadioGrpFld::Items() const {
    return Priv()->FItems;
}

int TRadioGrpFld::ItemIndex() const {
    return Priv()->FItemIndex;
}

int TRadioGrpFld::Columns() const {
    return Priv()->FColumns;
}

TNotifyEvent TRadioGrpFld::OnClick() const {
    return Priv()->FOnClick;
}

void TRadioGrpFld::SetOnClick(TNotifyEvent AEvent) {
    Priv()->FOnClick = std::move(AEvent);
}

void TRadioGrpFld::SetItems(const QStringList& AValue) {
    if (AValue == Priv()->FItems) return;
    Priv()->FItems = AValue;
    BuildButtons();
}

void TRadioGrpFld::SetItemIndex(int AValue) {
    Priv()->FItemIndex = AValue;
    UpdateChecks();
}

void TRadioGrpFld::SetColumns(int AValue) {
    AValue = std::max(AValue, 1);
    if (AValue == Priv()->FColumns) return;
    Priv()->FColumns = AValue;
    BuildButtons();
}

QRadioButton* TRadioGrpFld::Button(int Index) const {
    return Index >= 0 && Index < Priv()->FButtons.size() ? Priv()->FButtons[Index] : nullptr;
}

void TRadioGrpFld::BuildButtons() {
    // Buttons are rebuilt rather than relabelled: the item count and the column layout may both
    // have changed.
    for (QRadioButton* B : std::as_const(Priv()->FButtons)) {
        Priv()->FGroup->removeButton(B);
        delete B;
    }
    Priv()->FButtons.clear();
    const int N = static_cast<int>(Priv()->FItems.size());
    const int Rows = (N + Priv()->FColumns - 1) / Priv()->FColumns;
    for (int I = 0; I < N; ++I) {
        auto* B = new QRadioButton(Priv()->FItems[I], this);
        Priv()->FGroup->addButton(B, I);
        Priv()->FLayout->addWidget(B, I % std::max(Rows, 1), I / std::max(Rows, 1));
        Priv()->FButtons.append(B);
    }
    UpdateChecks();
}

void TRadioGrpFld::UpdateChecks() {
    if (QRadioButton* B = Button(Priv()->FItemIndex)) {
        B->setChecked(true);
        return;
    }
    // An exclusive group does not let its checked button go.
    if (QAbstractButton* Checked = Priv()->FGroup->checkedButton()) {
        Priv()->FGroup->setExclusive(false);
        Checked->setChecked(false);
        Priv()->FGroup->setExclusive(true);
    }
}

QString TRadioGrpFld::ItemCaption(int Index) const {
    return Index >= 0 && Index < Priv()->FItems.size() ? Priv()->FItems[Index] : QString();
}

void TRadioGrpFld::Assign(QObject* Source) {
    if (const auto* S = qobject_cast<TRadioGrpFld*>(Source))
        SetItemIndex(S->ItemIndex());
    else
        AssignError(Source);
}

bool TRadioGrpFld::XmlValueChanged(TXmlNode ParentXmlNode) {
    return XmlChildChanged(ParentXmlNode, ItemIndexElement, [this](TXmlNode C) {
        int I = 0;
        return !XmlTryStrToInt(C.ValueAsString(), I) || I != Priv()->FItemIndex;
    });
}

QString TRadioGrpFld::GetValueText() {
    return ItemCaption(Priv()->FItemIndex);
}

QString TRadioGrpFld::GetXMLValueText(TXmlNode ParentXmlNode) {
    const TXmlNode C = ParentXmlNode.NodeByName(ItemIndexElement);
    if (!C) return NoValueText();
    int I = 0;
    return XmlTryStrToInt(C.ValueAsString(), I) ? ItemCaption(I) : C.ValueAsString();
}

void TRadioGrpFld::WriteStreamValue(TWriter& Writer) {
    Writer.WriteInteger(Priv()->FItemIndex);
}

TFieldBase::TApplyValue TRadioGrpFld::ReadStreamValue(TReader& Reader) {
    return [this, I = Reader.ReadInteger()] { SetItemIndex(I); };
}

void TRadioGrpFld::WriteXmlValue(TXmlNode Node) {
    Node.WriteInteger(ItemIndexElement, Priv()->FItemIndex);
}

TFieldBase::TApplyValue TRadioGrpFld::ReadXmlValue(TXmlNode Node) {
    int I = 0;
    if (!ReadXmlInteger(Node, ItemIndexElement, I)) return {};
    return [this, I] { SetItemIndex(I); };
}

} // namespace qxnum

// TCheckFld, TRadioBtnFld and TRadioGrpFld: the button fields.
#include "fieldbase_p.h"

#include <qxnum/registry.h>
#include <qxnum/widgets/fields.h>

#include <QButtonGroup>
#include <QCoreApplication>
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
    return Checked ? QCoreApplication::translate("qxnum::TBoolField", "checked")
                   : QCoreApplication::translate("qxnum::TBoolField", "unchecked");
}

} // namespace

// --- TBoolField ---------------------------------------------------------------------------------

class TBoolFieldPrivate : public TFieldBasePrivate {
public:
    explicit TBoolFieldPrivate(const QMetaObject& FieldClass) : FFieldClass(&FieldClass) {}
    const QMetaObject* FFieldClass;
};

TBoolField::TBoolField(QWidget* Control, const QMetaObject& FieldClass)
    : TValueField(Control, new TBoolFieldPrivate(FieldClass)) {}

TBoolFieldPrivate* TBoolField::Priv() const {
    return static_cast<TBoolFieldPrivate*>(FieldPrivate());
}

void TBoolField::Assign(QObject* Source) {
    auto* S = Source && Source->metaObject()->inherits(Priv()->FFieldClass)
                  ? dynamic_cast<TBoolField*>(Source)
                  : nullptr;
    if (!S) AssignError(Source);
    PutValue(S->CurrentValue());
}

bool TBoolField::XmlValueChanged(TXmlNode ParentXmlNode) {
    return XmlChildChanged(ParentXmlNode, ValueElement, [this](TXmlNode C) {
        bool B = false;
        return !XmlTryStrToBool(C.ValueAsString(), B) || B != CurrentValue();
    });
}

QVariant TBoolField::GetVariantValue() {
    return CurrentValue();
}

QString TBoolField::GetValueText() {
    return CheckedText(CurrentValue());
}

QString TBoolField::GetXMLValueText(TXmlNode ParentXmlNode) {
    const TXmlNode C = ParentXmlNode.NodeByName(ValueElement);
    if (!C) return NoValueText();
    bool B = false;
    return XmlTryStrToBool(C.ValueAsString(), B) ? CheckedText(B) : C.ValueAsString();
}

void TBoolField::WriteStreamValue(TWriter& Writer) {
    Writer.WriteBoolean(CurrentValue());
}

TFieldBase::TApplyValue TBoolField::ReadStreamValue(TReader& Reader) {
    return [this, B = Reader.ReadBoolean()] { PutValue(B); };
}

void TBoolField::WriteXmlValue(TXmlNode Node) {
    Node.WriteBool(ValueElement, CurrentValue());
}

TFieldBase::TApplyValue TBoolField::ReadXmlValue(TXmlNode Node) {
    bool B = false;
    if (!ReadXmlBool(Node, ValueElement, B)) return {};
    return [this, B] { PutValue(B); };
}

// --- TCheckFld ----------------------------------------------------------------------------------

TCheckFld::TCheckFld(QWidget* Parent) : QCheckBox(Parent), TBoolField(this, staticMetaObject) {}

TCheckFld::~TCheckFld() = default;

TCheckBoxState TCheckFld::State() const {
    return CheckStateFromQt(checkState());
}

void TCheckFld::SetState(TCheckBoxState AValue) {
    setCheckState(CheckStateToQt(AValue));
}

// --- TRadioBtnFld -------------------------------------------------------------------------------

TRadioBtnFld::TRadioBtnFld(QWidget* Parent) : QRadioButton(Parent), TBoolField(this, staticMetaObject) {}

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

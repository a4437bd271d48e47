// TComboBoxFld: the combo-box field, with its saved text and the older stream layout.
#include "fieldbase_p.h"

#include <qxnum/registry.h>
#include <qxnum/widgets/fields.h>

#include <QLineEdit>

#include <optional>
#include <utility>

namespace qxnum {

namespace {

const QString ItemIndexElement = QStringLiteral("ItemIndex");
const QString TextElement = QStringLiteral("Text");

const TClassRegistrar ComboBoxFldRegistrar("TComboBoxFld", [](QObject* Owner) -> QObject* {
    return new TComboBoxFld(qobject_cast<QWidget*>(Owner));
});

bool IsStringTag(TValueType Tag) {
    return Tag == vaString || Tag == vaLString || Tag == vaWString || Tag == vaUTF8String;
}

} // namespace

class TComboBoxFldPrivate : public TFieldBasePrivate {
public:
    TComboBoxStyle FStyle = csDropDown;
    QString FSavedText;
    int FCopyVal = -1;
    int FFormCreateItemIndex = -1;
    QString FFormCreateText;
    TNotifyEvent FOnChange;
    // The index and text the last read put into the box: while the box still shows both, the
    // files get that index back, even when the text is none of the items.
    std::optional<std::pair<int, QString>> FAsRead;

    // The index files record: as read (above); else the item the edit text names, -1 for a text
    // that is none of the items, as the classic combo box reports after typing.
    int StoredIndex(const QComboBox& Box) const {
        const int I = Box.currentIndex();
        const QString T = Box.currentText();
        if (FAsRead && FAsRead->first == I && FAsRead->second == T) return I;
        if (I >= 0 && Box.itemText(I) == T) return I;
        return Box.findText(T, Qt::MatchExactly | Qt::MatchCaseSensitive);
    }
};

TComboBoxFld::TComboBoxFld(QWidget* Parent) : QComboBox(Parent), TFieldBase(this, new TComboBoxFldPrivate) {
    setEditable(true);
    // A typed text is the field's text, not a new item.
    setInsertPolicy(QComboBox::NoInsert);
    ConnectEdit();
    connect(this, &QComboBox::activated, this, [this](int) { Change(); });
}

TComboBoxFld::~TComboBoxFld() = default;

TComboBoxFldPrivate* TComboBoxFld::Priv() const {
    return static_cast<TComboBoxFldPrivate*>(FieldPrivate());
}

TComboBoxStyle TComboBoxFld::Style() const {
    return Priv()->FStyle;
}

QString TComboBoxFld::SavedText() const {
    return Priv()->FSavedText;
}

void TComboBoxFld::SetSavedText(const QString& AValue) {
    Priv()->FSavedText = AValue;
}

TNotifyEvent TComboBoxFld::OnChange() const {
    return Priv()->FOnChange;
}

void TComboBoxFld::SetOnChange(TNotifyEvent AEvent) {
    Priv()->FOnChange = std::move(AEvent);
}

bool TComboBoxFld::HasChanged() {
    return currentIndex() != Priv()->FCopyVal;
}

void TComboBoxFld::SetCopyValue() {
    Priv()->FCopyVal = currentIndex();
}

void TComboBoxFld::RestoreCopyValue() {
    SetItemIndex(Priv()->FCopyVal);
}

void TComboBoxFld::ConnectEdit() {
    if (QLineEdit* E = lineEdit())
        connect(E, &QLineEdit::textEdited, this, [this](const QString&) { Change(); });
}

void TComboBoxFld::SetStyle(TComboBoxStyle AValue) {
    if (AValue == Priv()->FStyle) return;
    Priv()->FStyle = AValue;
    const bool WasEditable = isEditable();
    const bool Editable = AValue != csDropDownList;
    setEditable(Editable);
    // Becoming editable creates a new line edit.
    if (Editable && !WasEditable) {
        setInsertPolicy(QComboBox::NoInsert);
        ConnectEdit();
    }
}

QStringList TComboBoxFld::Items() const {
    QStringList L;
    L.reserve(count());
    for (int I = 0; I < count(); ++I)
        L.append(itemText(I));
    return L;
}

void TComboBoxFld::SetItems(const QStringList& AValue) {
    clear();
    addItems(AValue);
    setCurrentIndex(-1);
}

void TComboBoxFld::SetItemIndex(int AValue) {
    setCurrentIndex(AValue >= 0 && AValue < count() ? AValue : -1);
}

void TComboBoxFld::SetText(const QString& AValue) {
    if (Priv()->FStyle == csDropDownList)
        setCurrentIndex(findText(AValue));
    else
        setEditText(AValue);
}

void TComboBoxFld::RevertToSavedText() {
    // The index first: selecting an item rewrites the edit text.
    setCurrentIndex(findText(Priv()->FSavedText));
    if (Priv()->FStyle != csDropDownList) setEditText(Priv()->FSavedText);
}

void TComboBoxFld::Change() {
    Priv()->FSavedText = currentText();
    if (Priv()->FOnChange) Priv()->FOnChange(this);
    Q_EMIT changed();
}

void TComboBoxFld::Assign(QObject* Source) {
    const auto* S = qobject_cast<TComboBoxFld*>(Source);
    if (!S) AssignError(Source);
    SetItemIndex(S->ItemIndex());
    if (Priv()->FStyle != csDropDownList) setEditText(S->Text());
}

void TComboBoxFld::SetFormCreateVal() {
    Priv()->FFormCreateItemIndex = currentIndex();
    Priv()->FFormCreateText = currentText();
}

void TComboBoxFld::ResetToFormCreateVal() {
    SetItemIndex(Priv()->FFormCreateItemIndex);
    if (Priv()->FStyle != csDropDownList) setEditText(Priv()->FFormCreateText);
}

bool TComboBoxFld::XmlValueChanged(TXmlNode ParentXmlNode) {
    bool Changed = XmlChildChanged(ParentXmlNode, ItemIndexElement, [this](TXmlNode C) {
        int I = 0;
        return !XmlTryStrToInt(C.ValueAsString(), I) || I != Priv()->StoredIndex(*this);
    });
    // A drop-down list has no text of its own: the index says everything.
    if (!Changed && Priv()->FStyle != csDropDownList)
        Changed = XmlChildChanged(ParentXmlNode, TextElement,
                                  [this](TXmlNode C) { return C.ValueAsString() != currentText(); });
    return Changed;
}

QString TComboBoxFld::GetValueText() {
    const int I = currentIndex();
    return I >= 0 && I < count() ? itemText(I) : currentText();
}

QString TComboBoxFld::GetXMLValueText(TXmlNode ParentXmlNode) {
    const TXmlNode C = ParentXmlNode.NodeByName(TextElement);
    return C ? C.ValueAsString() : NoValueText();
}

void TComboBoxFld::ApplyRead(std::optional<int> Index, const std::optional<QString>& NewText,
                             bool SaveEmptyText) {
    const QString T0 = currentText();
    if (Index) SetItemIndex(*Index);
    if (NewText) {
        if (Priv()->FStyle != csDropDownList || !Index) SetText(*NewText);
        Priv()->FSavedText = *NewText;
    } else if (Index) {
        // Selecting the item rewrote the edit text; the box keeps the text it had.
        if (Priv()->FStyle != csDropDownList) setEditText(T0);
        if (SaveEmptyText || !T0.isEmpty()) Priv()->FSavedText = T0;
    }
    if (Index)
        Priv()->FAsRead.emplace(currentIndex(), currentText());
    else
        Priv()->FAsRead.reset();
}

void TComboBoxFld::WriteStreamValue(TWriter& Writer) {
    Writer.WriteInteger(Priv()->StoredIndex(*this));
    Writer.WriteString(currentText());
}

TFieldBase::TApplyValue TComboBoxFld::ReadStreamValue(TReader& Reader) {
    const int Index = Reader.ReadInteger();
    std::optional<QString> Text;
    // The older layout has no text: its next value is Visible, a boolean.
    if (IsStringTag(Reader.NextValue())) Text = Reader.ReadString();
    return [this, Index, Text] { ApplyRead(Index, Text, true); };
}

void TComboBoxFld::WriteXmlValue(TXmlNode Node) {
    Node.WriteInteger(ItemIndexElement, Priv()->StoredIndex(*this));
    Node.WriteString(TextElement, currentText());
}

TFieldBase::TApplyValue TComboBoxFld::ReadXmlValue(TXmlNode Node) {
    int I = 0;
    std::optional<int> Index;
    if (ReadXmlInteger(Node, ItemIndexElement, I)) Index = I;
    QString S;
    std::optional<QString> Text;
    if (ReadXmlString(Node, TextElement, S)) Text = S;
    if (!Index && !Text) return {};
    return [this, Index, Text] { ApplyRead(Index, Text, false); };
}

} // namespace qxnum

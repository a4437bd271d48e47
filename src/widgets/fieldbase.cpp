#include "fieldbase_p.h"

#include <QCoreApplication>
#include <QPalette>

#include <optional>

namespace qxnum {

namespace {

const QString VisibleElement = QStringLiteral("Visible");
const QString EnabledElement = QStringLiteral("Enabled");

} // namespace

TFieldBasePrivate::~TFieldBasePrivate() = default;

TFieldBase::TFieldBase(QWidget* Control) : TFieldBase(Control, new TFieldBasePrivate) {}

TFieldBase::TFieldBase(QWidget* Control, TFieldBasePrivate* D) : d(D) {
    d->FControl = Control;
}

TFieldBase::~TFieldBase() = default;

QWidget* TFieldBase::FieldControl() const {
    return d->FControl;
}

int TFieldBase::TagXML() const {
    return d->FTagXML;
}

void TFieldBase::SetTagXML(int AValue) {
    d->FTagXML = AValue;
}

int TFieldBase::Tag() const {
    return d->FTag;
}

void TFieldBase::SetTag(int AValue) {
    d->FTag = AValue;
}

QString TFieldBase::CustomIDstring() const {
    return d->FCustomIDstring;
}

void TFieldBase::SetCustomIDstring(const QString& AValue) {
    d->FCustomIDstring = AValue;
}

bool TFieldBase::EnforceXMLchanged() const {
    return d->FEnforceXMLchanged;
}

void TFieldBase::SetEnforceXMLchanged(bool AValue) {
    d->FEnforceXMLchanged = AValue;
}

bool TFieldBase::StreamReadVisibleandEnabled() const {
    return d->FStreamReadVisibleandEnabled;
}

void TFieldBase::SetStreamReadVisibleandEnabled(bool AValue) {
    d->FStreamReadVisibleandEnabled = AValue;
}

TNotifyEvent TFieldBase::OnAfterRead() const {
    return d->FOnAfterRead;
}

void TFieldBase::SetOnAfterRead(TNotifyEvent AEvent) {
    d->FOnAfterRead = std::move(AEvent);
}

TXmlNodeEvent TFieldBase::OnAfterXMLWrite() const {
    return d->FOnAfterXMLWrite;
}

void TFieldBase::SetOnAfterXMLWrite(TXmlNodeEvent AEvent) {
    d->FOnAfterXMLWrite = std::move(AEvent);
}

TXmlNodeEvent TFieldBase::OnXmlWriteValueChanged() const {
    return d->FOnXmlWriteValueChanged;
}

void TFieldBase::SetOnXmlWriteValueChanged(TXmlNodeEvent AEvent) {
    d->FOnXmlWriteValueChanged = std::move(AEvent);
}

bool TFieldBase::GetNoSaveWrite() const {
    return d->FNoSaveWrite;
}

void TFieldBase::SetNoSaveWrite(bool Value) {
    d->FNoSaveWrite = Value;
}

bool TFieldBase::FieldVisible() const {
    return !d->FControl->isHidden();
}

void TFieldBase::SetFieldVisible(bool AValue) {
    d->FControl->setVisible(AValue);
}

bool TFieldBase::FieldEnabled() const {
    return !d->FControl->testAttribute(Qt::WA_ForceDisabled);
}

void TFieldBase::SetFieldEnabled(bool AValue) {
    d->FControl->setEnabled(AValue);
}

void TFieldBase::OkChanges() {
    if (HasChanged()) ChangedAfterOK = true;
}

QColor TFieldBase::FontColor() const {
    return d->FControl->palette().color(d->FControl->foregroundRole());
}

void TFieldBase::SetFontColor(const QColor& aColor) {
    QPalette P = d->FControl->palette();
    for (const QPalette::ColorRole Role : {QPalette::Text, QPalette::WindowText, QPalette::ButtonText})
        for (const QPalette::ColorGroup Group : {QPalette::Active, QPalette::Inactive})
            P.setColor(Group, Role, aColor);
    d->FControl->setPalette(P);
}

void TFieldBase::ReadfromStream(TReader& Reader) {
    ChangedAfterOK = false;
    const TApplyValue Apply = ReadStreamValue(Reader);
    bool Visible = false;
    bool Enabled = false;
    const bool HasPair = StreamHasVisibleEnabled();
    if (HasPair) {
        Visible = Reader.ReadBoolean();
        Enabled = Reader.ReadBoolean();
    }
    if (Apply) Apply();
    if (HasPair && d->FStreamReadVisibleandEnabled) {
        SetFieldVisible(Visible);
        SetFieldEnabled(Enabled);
    }
    SetCopyValue();
    DoAfterRead();
}

void TFieldBase::SkipfromStream(TReader& Reader) {
    ReadStreamValue(Reader);
    if (StreamHasVisibleEnabled()) {
        Reader.ReadBoolean();
        Reader.ReadBoolean();
    }
}

void TFieldBase::WritetoStream(TWriter& Writer) {
    WriteStreamValue(Writer);
    if (StreamHasVisibleEnabled()) {
        Writer.WriteBoolean(FieldVisible());
        Writer.WriteBoolean(FieldEnabled());
    }
}

void TFieldBase::WriteToXML(TXmlNode ParentXmlNode) {
    if (d->FOnXmlWriteValueChanged && (d->FEnforceXMLchanged || XmlValueChanged(ParentXmlNode)))
        d->FOnXmlWriteValueChanged(d->FControl, ParentXmlNode);
    WriteXmlValue(ParentXmlNode);
    if (d->FStreamReadVisibleandEnabled) {
        ParentXmlNode.WriteBool(VisibleElement, FieldVisible());
        ParentXmlNode.WriteBool(EnabledElement, FieldEnabled());
    }
    d->FEnforceXMLchanged = false;
    if (d->FOnAfterXMLWrite) d->FOnAfterXMLWrite(d->FControl, ParentXmlNode);
}

void TFieldBase::ReadFromXML(TXmlNode ParentXmlNode) {
    ChangedAfterOK = false;
    std::optional<bool> Visible;
    std::optional<bool> Enabled;
    if (d->FStreamReadVisibleandEnabled) {
        bool B = false;
        if (ReadXmlBool(ParentXmlNode, VisibleElement, B)) Visible = B;
        if (ReadXmlBool(ParentXmlNode, EnabledElement, B)) Enabled = B;
    }
    const TApplyValue Apply = ReadXmlValue(ParentXmlNode);
    if (Apply) Apply();
    if (Visible) SetFieldVisible(*Visible);
    if (Enabled) SetFieldEnabled(*Enabled);
    DoAfterRead();
}

QString TFieldBase::GetIDstring() const {
    return d->FCustomIDstring.isEmpty() ? d->FControl->objectName() : d->FCustomIDstring;
}

bool TFieldBase::GetReadOnly() const {
    return !FieldEnabled();
}

void TFieldBase::AssignXmlWriteValueChanged(TXmlNodeEvent AnXmlNodeEvent) {
    d->FOnXmlWriteValueChanged = std::move(AnXmlNodeEvent);
}

QString TFieldBase::NoValueText() {
    return QCoreApplication::translate("qxnum::TFieldBase", "<no value>");
}

void TFieldBase::DoAfterRead() {
    if (d->FOnAfterRead) d->FOnAfterRead(d->FControl);
}

bool TFieldBase::XmlChildChanged(TXmlNode Node, const QString& Name,
                                 const std::function<bool(TXmlNode)>& Differs) const {
    const TXmlNode Child = Node.NodeByName(Name);
    return Child ? Differs(Child) : ChangedAfterOK;
}

bool TFieldBase::ReadXmlBool(TXmlNode Node, const QString& Name, bool& Value) const {
    const TXmlNode Child = Node.NodeByName(Name);
    if (!Child) return false;
    const QString Text = Child.ValueAsString();
    if (!XmlTryStrToBool(Text, Value))
        XmlConvertError(
            Name,
            QCoreApplication::translate("qxnum::TFieldBase", "'%1' is not a valid boolean value").arg(Text));
    return true;
}

bool TFieldBase::ReadXmlInteger(TXmlNode Node, const QString& Name, int& Value) const {
    const TXmlNode Child = Node.NodeByName(Name);
    if (!Child) return false;
    const QString Text = Child.ValueAsString();
    if (!XmlTryStrToInt(Text, Value))
        XmlConvertError(
            Name,
            QCoreApplication::translate("qxnum::TFieldBase", "'%1' is not a valid integer value").arg(Text));
    return true;
}

bool TFieldBase::ReadXmlString(TXmlNode Node, const QString& Name, QString& Value) const {
    const TXmlNode Child = Node.NodeByName(Name);
    if (!Child) return false;
    Value = Child.ValueAsString();
    return true;
}

void TFieldBase::XmlConvertError(const QString& Element, const QString& Reason) const {
    throw EConvertError(QCoreApplication::translate("qxnum::TFieldBase", "Field \"%1\", element \"%2\": %3")
                            .arg(GetIDstring(), Element, Reason));
}

void TFieldBase::StreamValueError(const TReader& Reader, const QString& Reason) const {
    throw EReadError(QCoreApplication::translate("qxnum::TFieldBase", "Field \"%1\": %2 at offset %3")
                         .arg(GetIDstring(), Reason)
                         .arg(Reader.Position()),
                     Reader.Position());
}

void TFieldBase::AssignError(const QObject* Source) const {
    // Class names as the files know them, without the namespace.
    const auto ShortName = [](const QObject* O) {
        if (!O) return QStringLiteral("nil");
        const QString Name = QString::fromLatin1(O->metaObject()->className());
        return Name.mid(Name.lastIndexOf(QLatin1Char(':')) + 1);
    };
    throw EConvertError(QCoreApplication::translate("qxnum::TFieldBase", "Cannot assign a %1 to a %2")
                            .arg(ShortName(Source), ShortName(d->FControl)));
}

} // namespace qxnum

#include <qxnum/widgets/fieldbase.h>

#include <QPalette>

#include <optional>

namespace qxnum {

namespace {

const QString VisibleElement = QStringLiteral("Visible");
const QString EnabledElement = QStringLiteral("Enabled");

} // namespace

TFieldBase::TFieldBase(QWidget* Control) : FControl(Control) {}

TFieldBase::~TFieldBase() = default;

bool TFieldBase::FieldVisible() const {
    return !FControl->isHidden();
}

void TFieldBase::SetFieldVisible(bool AValue) {
    FControl->setVisible(AValue);
}

bool TFieldBase::FieldEnabled() const {
    return !FControl->testAttribute(Qt::WA_ForceDisabled);
}

void TFieldBase::SetFieldEnabled(bool AValue) {
    FControl->setEnabled(AValue);
}

void TFieldBase::OkChanges() {
    if (HasChanged()) ChangedAfterOK = true;
}

QColor TFieldBase::FontColor() const {
    return FControl->palette().color(FControl->foregroundRole());
}

void TFieldBase::SetFontColor(const QColor& aColor) {
    QPalette P = FControl->palette();
    for (const QPalette::ColorRole Role : {QPalette::Text, QPalette::WindowText, QPalette::ButtonText})
        for (const QPalette::ColorGroup Group : {QPalette::Active, QPalette::Inactive})
            P.setColor(Group, Role, aColor);
    FControl->setPalette(P);
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
    if (HasPair && FStreamReadVisibleandEnabled) {
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
    if (FOnXmlWriteValueChanged && (FEnforceXMLchanged || XmlValueChanged(ParentXmlNode)))
        FOnXmlWriteValueChanged(FControl, ParentXmlNode);
    WriteXmlValue(ParentXmlNode);
    if (FStreamReadVisibleandEnabled) {
        ParentXmlNode.WriteBool(VisibleElement, FieldVisible());
        ParentXmlNode.WriteBool(EnabledElement, FieldEnabled());
    }
    FEnforceXMLchanged = false;
    if (FOnAfterXMLWrite) FOnAfterXMLWrite(FControl, ParentXmlNode);
}

void TFieldBase::ReadFromXML(TXmlNode ParentXmlNode) {
    ChangedAfterOK = false;
    std::optional<bool> Visible;
    std::optional<bool> Enabled;
    if (FStreamReadVisibleandEnabled) {
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
    return FCustomIDstring.isEmpty() ? FControl->objectName() : FCustomIDstring;
}

bool TFieldBase::GetReadOnly() const {
    return !FieldEnabled();
}

void TFieldBase::AssignXmlWriteValueChanged(TXmlNodeEvent AnXmlNodeEvent) {
    FOnXmlWriteValueChanged = std::move(AnXmlNodeEvent);
}

QString TFieldBase::NoValueText() {
    return QStringLiteral("<no value>");
}

void TFieldBase::DoAfterRead() {
    if (FOnAfterRead) FOnAfterRead(FControl);
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
        XmlConvertError(Name, QStringLiteral("'%1' is not a valid boolean value").arg(Text));
    return true;
}

bool TFieldBase::ReadXmlInteger(TXmlNode Node, const QString& Name, int& Value) const {
    const TXmlNode Child = Node.NodeByName(Name);
    if (!Child) return false;
    const QString Text = Child.ValueAsString();
    if (!XmlTryStrToInt(Text, Value))
        XmlConvertError(Name, QStringLiteral("'%1' is not a valid integer value").arg(Text));
    return true;
}

bool TFieldBase::ReadXmlString(TXmlNode Node, const QString& Name, QString& Value) const {
    const TXmlNode Child = Node.NodeByName(Name);
    if (!Child) return false;
    Value = Child.ValueAsString();
    return true;
}

void TFieldBase::XmlConvertError(const QString& Element, const QString& Reason) const {
    throw EConvertError(
        QStringLiteral("Field \"%1\", element \"%2\": %3").arg(GetIDstring(), Element, Reason));
}

void TFieldBase::StreamValueError(const TReader& Reader, const QString& Reason) const {
    throw EReadError(
        QStringLiteral("Field \"%1\": %2 at offset %3").arg(GetIDstring(), Reason).arg(Reader.Position()),
        Reader.Position());
}

void TFieldBase::AssignError(const QObject* Source) const {
    // Class names as the files know them, without the namespace.
    const auto ShortName = [](const QObject* O) {
        if (!O) return QStringLiteral("nil");
        const QString Name = QString::fromLatin1(O->metaObject()->className());
        return Name.mid(Name.lastIndexOf(QLatin1Char(':')) + 1);
    };
    throw EConvertError(
        QStringLiteral("Cannot assign a %1 to a %2").arg(ShortName(Source), ShortName(FControl)));
}

} // namespace qxnum

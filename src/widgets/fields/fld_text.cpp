// TStringFld and TMemoFld: the text fields.
#include <qxnum/registry.h>
#include <qxnum/widgets/fields.h>

#include <QCoreApplication>
#include <QTextDocument>

#include <limits>

namespace qxnum {

namespace {

const QString ValueElement = QStringLiteral("Value");
constexpr qsizetype ShownChars = 120;

const TClassRegistrar StringFldRegistrar("TStringFld", [](QObject* Owner) -> QObject* {
    return new TStringFld(qobject_cast<QWidget*>(Owner));
});
const TClassRegistrar MemoFldRegistrar("TMemoFld", [](QObject* Owner) -> QObject* {
    return new TMemoFld(qobject_cast<QWidget*>(Owner));
});

} // namespace

// --- TStringFld ---------------------------------------------------------------------------------

TStringFld::TStringFld(QWidget* Parent) : QLineEdit(Parent), TValueField(this) {
    // QLineEdit would cut a text read from a file at 32767 characters.
    setMaxLength(std::numeric_limits<int>::max());
}

TStringFld::~TStringFld() = default;

void TStringFld::Assign(QObject* Source) {
    if (const auto* S = qobject_cast<TStringFld*>(Source))
        setText(S->text());
    else
        AssignError(Source);
}

bool TStringFld::XmlValueChanged(TXmlNode ParentXmlNode) {
    return XmlChildChanged(ParentXmlNode, ValueElement,
                           [this](TXmlNode C) { return C.ValueAsString() != text(); });
}

QString TStringFld::GetXMLValueText(TXmlNode ParentXmlNode) {
    const TXmlNode C = ParentXmlNode.NodeByName(ValueElement);
    return C ? C.ValueAsString() : NoValueText();
}

void TStringFld::WriteStreamValue(TWriter& Writer) {
    Writer.WriteString(text());
}

TFieldBase::TApplyValue TStringFld::ReadStreamValue(TReader& Reader) {
    return [this, S = Reader.ReadString()] { setText(S); };
}

void TStringFld::WriteXmlValue(TXmlNode Node) {
    Node.WriteString(ValueElement, text());
}

TFieldBase::TApplyValue TStringFld::ReadXmlValue(TXmlNode Node) {
    QString S;
    if (!ReadXmlString(Node, ValueElement, S)) return {};
    return [this, S] { setText(S); };
}

// --- TMemoFld -----------------------------------------------------------------------------------

TMemoFld::TMemoFld(QWidget* Parent) : QPlainTextEdit(Parent), TValueField(this) {}

TMemoFld::~TMemoFld() = default;

QString TMemoFld::Text() const {
    // toPlainText would turn non-breaking spaces into blanks; the raw text keeps every character
    // and only its block separators need to become line breaks.
    QString S = document()->toRawText();
    for (QChar& C : S)
        if (C == QChar::ParagraphSeparator || C == QChar::LineSeparator) C = QLatin1Char('\n');
    return S;
}

QStringList TMemoFld::Lines() const {
    const QString S = Text();
    return S.isEmpty() ? QStringList() : S.split(QLatin1Char('\n'));
}

void TMemoFld::SetLines(const QStringList& AValue) {
    setPlainText(AValue.join(QLatin1Char('\n')));
}

void TMemoFld::Assign(QObject* Source) {
    if (const auto* S = qobject_cast<TMemoFld*>(Source))
        setPlainText(S->Text());
    else
        AssignError(Source);
}

bool TMemoFld::XmlValueChanged(TXmlNode ParentXmlNode) {
    return XmlChildChanged(ParentXmlNode, ValueElement,
                           [this](TXmlNode C) { return C.ValueAsString() != Text(); });
}

QString TMemoFld::GetValueText() {
    const QString S = Text();
    if (S.size() <= ShownChars) return S;
    qsizetype N = ShownChars;
    if (S[N - 1].isHighSurrogate()) --N; // do not leave half a character
    return S.left(N) + QStringLiteral("...");
}

QString TMemoFld::GetXMLValueText(TXmlNode ParentXmlNode) {
    const TXmlNode C = ParentXmlNode.NodeByName(ValueElement);
    return C ? C.ValueAsString() : NoValueText();
}

void TMemoFld::WriteStreamValue(TWriter& Writer) {
    const QStringList L = Lines();
    Writer.WriteInteger(static_cast<int>(L.size()));
    for (const QString& Line : L)
        Writer.WriteString(Line);
}

TFieldBase::TApplyValue TMemoFld::ReadStreamValue(TReader& Reader) {
    const int N = Reader.ReadInteger();
    if (N < 0)
        StreamValueError(Reader,
                         QCoreApplication::translate("qxnum::TMemoFld", "negative line count %1").arg(N));
    QStringList L;
    // Each line takes at least two bytes, so a lying count ends at the end of the stream.
    for (int I = 0; I < N; ++I)
        L.append(Reader.ReadString());
    return [this, L] { SetLines(L); };
}

void TMemoFld::WriteXmlValue(TXmlNode Node) {
    Node.WriteString(ValueElement, Text());
}

TFieldBase::TApplyValue TMemoFld::ReadXmlValue(TXmlNode Node) {
    QString S;
    if (!ReadXmlString(Node, ValueElement, S)) return {};
    return [this, S] { setPlainText(S); };
}

} // namespace qxnum

// TDateTimePickerFld: the date-time field.
#include <qxnum/formatsettings.h>
#include <qxnum/registry.h>
#include <qxnum/widgets/fields.h>

#include <QCoreApplication>

namespace qxnum {

namespace {

const QString ValueElement = QStringLiteral("Value");

const TClassRegistrar DateTimePickerFldRegistrar("TDateTimePickerFld", [](QObject* Owner) -> QObject* {
    return new TDateTimePickerFld(qobject_cast<QWidget*>(Owner));
});

} // namespace

TDateTimePickerFld::TDateTimePickerFld(QWidget* Parent) : QDateTimeEdit(Parent), TValueField(this) {
    // QDateTimeEdit's default range starts in 1752; files may name any year from 100 on.
    setDateTimeRange(QDateTime(QDate(100, 1, 1), QTime(0, 0)),
                     QDateTime(QDate(9999, 12, 31), QTime(23, 59, 59, 999)));
    SetCopyValue();
    SetFormCreateVal();
}

TDateTimePickerFld::~TDateTimePickerFld() = default;

QString TDateTimePickerFld::DateTimeText(const QDateTime& Value) {
    if (!Value.isValid()) return {};
    QString S = Value.date().toString(FormatSettings.ShortDateFormat);
    if (Value.time().msecsSinceStartOfDay() != 0)
        S += QLatin1Char(' ') + Value.time().toString(FormatSettings.LongTimeFormat);
    return S;
}

QString TDateTimePickerFld::XmlText(const QDateTime& Value) {
    return Value.isValid() ? Value.toString(QStringLiteral("yyyy-MM-dd'T'HH:mm:ss.zzz")) : QString();
}

bool TDateTimePickerFld::InRange(const QDateTime& Value) const {
    return Value.isValid() && Value >= minimumDateTime() && Value <= maximumDateTime();
}

bool TDateTimePickerFld::SameValue(const QDateTime& A, const QDateTime& B) const {
    // Wall-clock time to the millisecond, the precision of both media.
    if (A.isValid() != B.isValid()) return false;
    return !A.isValid() ||
           (A.date() == B.date() && A.time().msecsSinceStartOfDay() == B.time().msecsSinceStartOfDay());
}

void TDateTimePickerFld::Assign(QObject* Source) {
    if (const auto* S = qobject_cast<TDateTimePickerFld*>(Source))
        setDateTime(S->dateTime());
    else
        AssignError(Source);
}

bool TDateTimePickerFld::XmlValueChanged(TXmlNode ParentXmlNode) {
    return XmlChildChanged(ParentXmlNode, ValueElement, [this](TXmlNode C) {
        QDateTime V;
        return !XmlTryStrToDateTime(C.ValueAsString(), V) || !SameValue(V, dateTime());
    });
}

QString TDateTimePickerFld::GetXMLValueText(TXmlNode ParentXmlNode) {
    const TXmlNode C = ParentXmlNode.NodeByName(ValueElement);
    if (!C) return NoValueText();
    QDateTime V;
    return XmlTryStrToDateTime(C.ValueAsString(), V) ? DateTimeText(V) : C.ValueAsString();
}

void TDateTimePickerFld::WriteStreamValue(TWriter& Writer) {
    Writer.WriteFloat(DateTimeToFileDate(dateTime()));
}

TFieldBase::TApplyValue TDateTimePickerFld::ReadStreamValue(TReader& Reader) {
    const double Days = Reader.ReadDouble();
    const QDateTime V = FileDateToDateTime(Days);
    if (!InRange(V))
        StreamValueError(Reader, QCoreApplication::translate("qxnum::TDateTimePickerFld",
                                                             "date-time value %1 out of range")
                                     .arg(Days));
    return [this, V] { setDateTime(V); };
}

void TDateTimePickerFld::WriteXmlValue(TXmlNode Node) {
    Node.WriteString(ValueElement, XmlText(dateTime()));
}

TFieldBase::TApplyValue TDateTimePickerFld::ReadXmlValue(TXmlNode Node) {
    QString S;
    if (!ReadXmlString(Node, ValueElement, S)) return {};
    QDateTime V;
    if (!XmlTryStrToDateTime(S, V))
        XmlConvertError(ValueElement, QCoreApplication::translate("qxnum::TDateTimePickerFld",
                                                                  "'%1' is not a valid date and time")
                                          .arg(S));
    if (!InRange(V))
        XmlConvertError(
            ValueElement,
            QCoreApplication::translate("qxnum::TDateTimePickerFld", "'%1' is out of range").arg(S));
    return [this, V] { setDateTime(V); };
}

} // namespace qxnum

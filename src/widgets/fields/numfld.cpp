// The persistent numeric field.
#include <qxnum/widgets/numfld.h>

#include <qxnum/numconv.h>
#include <qxnum/registry.h>
#include <qxnum/xml.h>

#include <cmath>
#include <limits>

namespace qxnum {

namespace {

const TClassRegistrar NumFldRegistrar("TNumFld", [](QObject* Owner) -> QObject* {
    return new TNumFld(qobject_cast<QWidget*>(Owner));
});

const QString ValueElement = QStringLiteral("Value");
const QString ParTypeElement = QStringLiteral("ParType");

// Absolute tolerance of the numeric change tests.
constexpr Extended ChangeTolerance = 1e-14L;

// Numbers, and the words the XML writer uses for values without digits.
bool ParsesAsNumber(const QString& S, Extended& V) {
    if (TryQX_StrToFloat(S, V)) return true;
    const QString T = S.trimmed();
    const bool Minus = T.startsWith(QLatin1Char('-'));
    const QStringView Word = QStringView(T).mid(Minus ? 1 : 0);
    if (Word.compare(QLatin1String("INF"), Qt::CaseInsensitive) == 0)
        V = Minus ? -std::numeric_limits<Extended>::infinity() : std::numeric_limits<Extended>::infinity();
    else if (!Minus && Word.compare(QLatin1String("NAN"), Qt::CaseInsensitive) == 0)
        V = std::numeric_limits<Extended>::quiet_NaN();
    else
        return false;
    return true;
}

bool ParsesAsNumber(const QString& S) {
    Extended V = 0.0L;
    return ParsesAsNumber(S, V);
}

// The shortest text that reads back to exactly V, in the form the classic reader takes: the
// locale's decimal separator, an upper-case exponent, "INF"/"-INF" for the infinities.
QString ExactNumberText(Extended V) {
    QString S = XmlExtendedToStr(V);
    S.replace(QLatin1Char('e'), QLatin1Char('E'));
    S.replace(QLatin1Char('.'), NumInpFormatSettings.DecimalSeparator);
    return S;
}

// Equal infinities count as the same; their difference alone would be NaN.
bool SameNumber(Extended A, Extended B) {
    return A == B || std::fabs(A - B) <= ChangeTolerance;
}

} // namespace

class TNumFldPrivate {
public:
    int FTag2 = 0;
    Extended FRefValue = TNumFld::RefValueSentinel();
    bool FControllableIfDisabled = false;
    bool FStoreParType = false;
    bool FXmlValueAsDisplayed = false;
};

TNumFld::TNumFld(QWidget* Parent)
    : TCustomNumInp(Parent), TValueField(this), DFld(std::make_unique<TNumFldPrivate>()) {}

TNumFld::~TNumFld() = default;

int TNumFld::Tag2() const {
    return DFld->FTag2;
}
void TNumFld::SetTag2(int AValue) {
    DFld->FTag2 = AValue;
}
Extended TNumFld::RefValue() const {
    return DFld->FRefValue;
}
void TNumFld::SetRefValue(Extended AValue) {
    DFld->FRefValue = AValue;
}
bool TNumFld::ControllableIfDisabled() const {
    return DFld->FControllableIfDisabled;
}
void TNumFld::SetControllableIfDisabled(bool AValue) {
    DFld->FControllableIfDisabled = AValue;
}
bool TNumFld::StoreParType() const {
    return DFld->FStoreParType;
}
void TNumFld::SetStoreParType(bool AValue) {
    DFld->FStoreParType = AValue;
}

bool TNumFld::XmlValueAsDisplayed() const {
    return DFld->FXmlValueAsDisplayed;
}
void TNumFld::SetXmlValueAsDisplayed(bool AValue) {
    DFld->FXmlValueAsDisplayed = AValue;
}

Extended TNumFld::RefValueSentinel() {
    // The exact pattern: the nearest extended to the decimal text is one unit lower.
    static const Extended V = MakeExtended(true, 0x7FE1, 0x89705F4136B4A597ULL);
    return V;
}

Extended TNumFld::RefValueThreshold() {
    static const Extended V = MakeExtended(true, 0x7FA5, 0x9E74D1B791E07E48ULL);
    return V;
}

void TNumFld::Assign(const QObject* Source) {
    if (const auto* Other = qobject_cast<const TNumFld*>(Source)) {
        setText(Other->text());
        UpdateValue(false);
        return;
    }
    AssignError(Source);
}

QString TNumFld::GetIDstring() const {
    if (!CustomIDstring().isEmpty()) return CustomIDstring();
    if (EditLabel() && !EditLabel()->Caption().isEmpty()) return EditLabel()->Caption();
    return objectName();
}

// ---- reference value and limits ---------------------------------------------------------------

void TNumFld::SetValueToRefValue() {
    if (std::isnan(DFld->FRefValue) || DFld->FRefValue > RefValueThreshold()) SetValue(DFld->FRefValue);
}

bool TNumFld::SetValue_inside_MinMax(Extended AValue) {
    // Written so that NaN, which fails every comparison, takes the minimum.
    if (!(AValue >= Min())) {
        SetValue(Min());
        return false;
    }
    if (!(AValue <= Max())) {
        SetValue(Max());
        return false;
    }
    SetValue(AValue);
    return true;
}

// ---- copy values ----------------------------------------------------------------------------------

void TNumFld::PutValue(const QString& AValue) {
    setText(AValue);
    // An expression that only the application's callback can resolve stays text until it is used.
    if (OnExprCheckVariable() && !ParsesAsNumber(AValue)) return;
    UpdateValue(false);
}

bool TNumFld::SameValue(const QString& A, const QString& B) const {
    Extended VA = 0.0L;
    Extended VB = 0.0L;
    if (ParsesAsNumber(A, VA) && ParsesAsNumber(B, VB)) return SameNumber(VA, VB);
    return A == B;
}

QVariant TNumFld::GetVariantValue() {
    return QVariant(static_cast<double>(Value()));
}

// ---- stream ---------------------------------------------------------------------------------------

void TNumFld::WriteStreamValue(TWriter& Writer) {
    Writer.WriteFloat(Value());
}

TFieldBase::TApplyValue TNumFld::ReadStreamValue(TReader& Reader) {
    const Extended V = Reader.ReadFloat();
    return [this, V] { SetValue(V); };
}

// ---- XML ------------------------------------------------------------------------------------------

QString TNumFld::XmlValueText() {
    const QString S = text();
    if (!ParsesAsNumber(S)) return S;
    const Extended V = Value();
    if (std::isnan(V)) return QString();
    // Unscaled: the file holds base units, so the text reads back into Value as it stands.
    if (!DFld->FXmlValueAsDisplayed) return ExactNumberText(V);
    return ValueString(V, DataType(), NumericType(), Digits(), Decimals(), ParType(), UnitSystem(),
                       CustomFormat(), CustomScale(), ScaleOffset(), false, TrimZeroes(),
                       NumInpFormatSettings);
}

void TNumFld::WriteXmlValue(TXmlNode Node) {
    const QString S = XmlValueText();
    if (DFld->FStoreParType) Node.WriteString(ParTypeElement, GetEnumName(ParType()));
    Node.WriteString(ValueElement, S);
}

TFieldBase::TApplyValue TNumFld::ReadXmlValue(TXmlNode Node) {
    bool HasParType = false;
    TParType NewParType = ptNone;
    if (DFld->FStoreParType) {
        QString Name;
        if (ReadXmlString(Node, ParTypeElement, Name)) {
            HasParType = true;
            // An unknown name gives -1, kept as the out-of-range ordinal 255 (see the header).
            NewParType = static_cast<TParType>(static_cast<quint8>(GetEnumValue<TParType>(Name.trimmed())));
        }
    }
    QString Text;
    const bool HasValue = ReadXmlString(Node, ValueElement, Text);
    if (!HasParType && !HasValue) return {};
    Extended V = 0.0L;
    const bool IsNumber = HasValue && ParsesAsNumber(Text, V);
    return [this, HasParType, NewParType, HasValue, IsNumber, V, Text] {
        if (HasParType) SetParType(NewParType);
        if (!HasValue) return;
        if (IsNumber) {
            SetValue(V);
            return;
        }
        setText(Text);
        if (text().isEmpty() && AllowEmpty() && ClearIsNaN()) SetValue(NaN());
    };
}

bool TNumFld::XmlValueChanged(TXmlNode ParentXmlNode) {
    return XmlChildChanged(ParentXmlNode, ValueElement, [this](TXmlNode Child) {
        const QString Stored = Child.ValueAsString();
        if (text() == Stored) return false;
        Extended StoredValue = 0.0L;
        if (ParsesAsNumber(Stored, StoredValue)) {
            const Extended Current = Value();
            if (!std::isnan(Current)) return !SameNumber(StoredValue, Current);
        }
        return true;
    });
}

QString TNumFld::GetXMLValueText(TXmlNode ParentXmlNode) {
    const TXmlNode Child = ParentXmlNode.NodeByName(ValueElement);
    if (!Child) return NoValueText();
    const QString Stored = Child.ValueAsString();
    Extended V = 0.0L;
    if (!ParsesAsNumber(Stored, V)) return Stored;
    return std::isnan(V) ? QString() : GetValueString(V);
}

} // namespace qxnum

// The numeric edit's value model: properties, formatting, evaluation of the text, range checks.
// The keystroke filter, focus handling and colours live in numedit_input.cpp.
#include "caption_p.h"
#include "numedit_p.h"

#include <qxnum/numconv.h>
#include <qxnum/registry.h>
#include <qxnum/units.h>
#include <qxnum/widgets/numinp.h>

#include <QAbstractButton>
#include <QApplication>
#include <QDialogButtonBox>
#include <QGroupBox>
#include <QLabel>
#include <QScopedValueRollback>
#include <QTextDocumentFragment>

#include <cmath>
#include <limits>

namespace qxnum {

namespace {

const TClassRegistrar NumEditRegistrar("TNumEdit", [](QObject* Owner) -> QObject* {
    return new TNumEdit(qobject_cast<QWidget*>(Owner));
});

QString Tr(const char* Source, const char* Disambiguation = nullptr) {
    return QCoreApplication::translate("TCustomNumEdit", Source, Disambiguation);
}

// The published message patterns use "%s"; each one takes the next argument.
QString FormatPercentS(const QString& Pattern, const QStringList& Args) {
    QString Out;
    qsizetype Next = 0;
    for (qsizetype I = 0; I < Pattern.size(); ++I) {
        if (Pattern[I] == QLatin1Char('%') && I + 1 < Pattern.size() && Pattern[I + 1] == QLatin1Char('s') &&
            Next < Args.size()) {
            Out += Args[Next++];
            ++I;
        } else {
            Out += Pattern[I];
        }
    }
    return Out;
}

bool SameValue(Extended A, Extended B) {
    return (std::isnan(A) && std::isnan(B)) || A == B;
}

bool IsFloatDataType(TDataType DataType) {
    return DataType == dtDouble || DataType == dtExtended || DataType == dtSingle;
}

// WCAG contrast ratio of two colours, 1 (none) to 21 (black on white).
double Contrast(const QColor& A, const QColor& B) {
    const auto Luminance = [](const QColor& C) {
        const auto Channel = [](double V) {
            return V <= 0.04045 ? V / 12.92 : std::pow((V + 0.055) / 1.055, 2.4);
        };
        return 0.2126 * Channel(C.redF()) + 0.7152 * Channel(C.greenF()) + 0.0722 * Channel(C.blueF());
    };
    const double La = Luminance(A), Lb = Luminance(B);
    return (std::max(La, Lb) + 0.05) / (std::min(La, Lb) + 0.05);
}

} // namespace

QColor TCustomNumEditPrivate::DrawnNegColor(const QPalette& Palette) const {
    constexpr double Readable = 4.5; // the usual minimum for body text
    const QColor Base = Palette.color(QPalette::Active, QPalette::Base);
    if (FNegColSet || Contrast(FNegColor, Base) >= Readable) return FNegColor;
    if (Contrast(FNormalColor, Base) >= Readable) return FNormalColor;
    return Base.lightnessF() < 0.5 ? QColor(Qt::white) : QColor(Qt::black);
}

TCustomNumEdit::TCustomNumEdit(QWidget* Parent)
    : QLineEdit(Parent), d(std::make_unique<TCustomNumEditPrivate>()) {
    d->FNormalColor = palette().color(QPalette::Active, QPalette::Text);
    d->FFontColor = d->FNormalColor;
    d->FAppliedColour = d->FNormalColor;
    resize(85, sizeHint().height());
    d->FMaxTextLength = d->FDigits;
    connect(this, &QLineEdit::textChanged, this, [this] { Change(); });
    setText(QStringLiteral("0"));
    ApplyAlignment();
    FormatText();
}

TCustomNumEdit::~TCustomNumEdit() = default;

Extended TCustomNumEdit::NaN() {
    return -std::numeric_limits<Extended>::quiet_NaN();
}

bool TCustomNumEdit::IsCancelButton(const QWidget* Widget) {
    const auto* Button = qobject_cast<const QAbstractButton*>(Widget);
    if (!Button) return false;
    const QVariant ModalResult = Button->property("ModalResult");
    if (ModalResult.isValid()) {
        bool Ok = false;
        const int Result = ModalResult.toInt(&Ok);
        if (Ok && Result == mrCancel) return true;
    }
    if (const auto* Box = qobject_cast<const QDialogButtonBox*>(Button->parentWidget()))
        return Box->buttonRole(const_cast<QAbstractButton*>(Button)) == QDialogButtonBox::RejectRole;
    return false;
}

bool TCustomNumEdit::ExprPathActive() const {
    return d->FOnExprCheckVariable && !d->FInhibitExprCheckVar;
}

bool TCustomNumEditPrivate::TypesExpressions() const {
    return (FOnExprCheckVariable && !FInhibitExprCheckVar) || FExpressionInput;
}

void TCustomNumEdit::NotifyValue() {
    if (SameValue(d->FValue, d->FSignalledValue)) return;
    d->FSignalledValue = d->FValue;
    Q_EMIT valueChanged(static_cast<double>(d->FValue));
}

// ---- plain accessors ---------------------------------------------------------------------------

// clang-format off
Extended TCustomNumEdit::Min() const { return d->FMin; }
Extended TCustomNumEdit::Max() const { return d->FMax; }
quint16 TCustomNumEdit::Digits() const { return d->FDigits; }
TDataType TCustomNumEdit::DataType() const { return d->FDataType; }
TNumericType TCustomNumEdit::NumericType() const { return d->FNumericType; }
TParType TCustomNumEdit::ParType() const { return d->FParType; }
TUnitSystem TCustomNumEdit::UnitSystem() const { return d->FUnitSystem; }
QString TCustomNumEdit::CustomFormat() const { return d->FCustomFormat; }
Extended TCustomNumEdit::CustomScale() const { return d->FCustomScale; }
Extended TCustomNumEdit::ScaleOffset() const { return d->FScaleOffset; }
bool TCustomNumEdit::TrimZeroes() const { return d->FTrimZeroes; }
bool TCustomNumEdit::AllowEmpty() const { return d->FAllowEmpty; }
bool TCustomNumEdit::ClearIsNaN() const { return d->FClearIsNaN; }
void TCustomNumEdit::SetClearIsNaN(bool AValue) { d->FClearIsNaN = AValue; }
QColor TCustomNumEdit::NegCol() const { return d->FNegColor; }
bool TCustomNumEdit::Validate() const { return d->FValidate; }
QColor TCustomNumEdit::ReadOnlyFontColor() const { return d->FReadOnlyFontColor; }
Qt::Alignment TCustomNumEdit::Alignment() const { return d->FAlignment; }
bool TCustomNumEdit::TabOnEnterKey() const { return d->FTabOnEnterKey; }
void TCustomNumEdit::SetTabOnEnterKey(bool AValue) { d->FTabOnEnterKey = AValue; }
bool TCustomNumEdit::InhibitExprCheckVar() const { return d->FInhibitExprCheckVar; }
void TCustomNumEdit::SetInhibitExprCheckVar(bool AValue) { d->FInhibitExprCheckVar = AValue; }
bool TCustomNumEdit::ExpressionInput() const { return d->FExpressionInput; }
void TCustomNumEdit::SetExpressionInput(bool AValue) { d->FExpressionInput = AValue; }
bool TCustomNumEdit::CopyEnabled() const { return d->FCopyEnabled; }
void TCustomNumEdit::SetCopyEnabled(bool AValue) { d->FCopyEnabled = AValue; }
bool TCustomNumEdit::CopyVisible() const { return d->FCopyVisible; }
void TCustomNumEdit::SetCopyVisible(bool AValue) { d->FCopyVisible = AValue; }
QColor TCustomNumEdit::NormalFontColor() const { return d->FNormalColor; }
bool TCustomNumEdit::IsValid() const { return d->FIsValid; }
bool TCustomNumEdit::IsChanging() const { return d->FChanging; }
bool TCustomNumEdit::Focused() const { return d->FFocused; }
bool TCustomNumEdit::IsDesigning() const { return d->FDesigning; }
void TCustomNumEdit::SetDesigning(bool AValue) { d->FDesigning = AValue; }
int TCustomNumEdit::MaxTextLength() const { return d->FMaxTextLength; }
QString TCustomNumEdit::LastRefusal() const { return d->FLastRefusal; }

TGetNumTextEvent TCustomNumEdit::OnGetNumText() const { return d->FOnGetNumText; }
void TCustomNumEdit::SetOnGetNumText(TGetNumTextEvent AEvent) { d->FOnGetNumText = std::move(AEvent); }
TSetNumValueEvent TCustomNumEdit::OnSetNumValue() const { return d->FOnSetNumValue; }
void TCustomNumEdit::SetOnSetNumValue(TSetNumValueEvent AEvent) { d->FOnSetNumValue = std::move(AEvent); }
TGetNumValueEvent TCustomNumEdit::OnGetNumValue() const { return d->FOnGetNumValue; }
void TCustomNumEdit::SetOnGetNumValue(TGetNumValueEvent AEvent) { d->FOnGetNumValue = std::move(AEvent); }
TRangeValidateEvent TCustomNumEdit::OnRangeValidate() const { return d->FOnRangeValidate; }
void TCustomNumEdit::SetOnRangeValidate(TRangeValidateEvent AEvent) { d->FOnRangeValidate = std::move(AEvent); }
TNotifyEvent TCustomNumEdit::OnParTypeChange() const { return d->FOnParTypeChange; }
void TCustomNumEdit::SetOnParTypeChange(TNotifyEvent AEvent) { d->FOnParTypeChange = std::move(AEvent); }
TNotifyEvent TCustomNumEdit::OnUnitSystemChange() const { return d->FOnUnitSystemChange; }
void TCustomNumEdit::SetOnUnitSystemChange(TNotifyEvent AEvent) { d->FOnUnitSystemChange = std::move(AEvent); }
TOnCheckVariableEvent TCustomNumEdit::OnExprCheckVariable() const { return d->FOnExprCheckVariable; }
void TCustomNumEdit::SetOnExprCheckVariable(TOnCheckVariableEvent AEvent) { d->FOnExprCheckVariable = std::move(AEvent); }
TNotifyEvent TCustomNumEdit::OnChange() const { return d->FOnChange; }
void TCustomNumEdit::SetOnChange(TNotifyEvent AEvent) { d->FOnChange = std::move(AEvent); }
// clang-format on

Extended TCustomNumEdit::Scale() const {
    return d->FCustomScale * static_cast<Extended>(ParScaleOf(d->FParType, d->FUnitSystem));
}

QWidget* TCustomNumEdit::OwnerWidget() const {
    for (QWidget* P = parentWidget(); P; P = P->parentWidget())
        if (P->isWindow() || IsFieldFrame(P)) return P;
    return nullptr;
}

// ---- value -------------------------------------------------------------------------------------

Extended TCustomNumEdit::GetFValue() {
    if (d->FOnGetNumValue) {
        d->FOnGetNumValue(this, d->FValue);
        // The hook's own change is not signalled; later changes are measured from it.
        d->FSignalledValue = d->FValue;
    }
    return d->FValue;
}

Extended TCustomNumEdit::GetValue() {
    if (ExprPathActive() && !d->FEvaluating) {
        const QString S = text().trimmed();
        double D = 0.0;
        if (d->TextUnedited(S)) {
            // The formatted text of the held value: nothing was typed.
        } else if (TryQX_StrToFloat(S, D)) {
            // A number typed but not yet taken counts as it stands (no unit conversion).
            if (d->FFocused) {
                d->FValue = D;
                NotifyValue();
            }
        } else {
            UpdateValue(false);
        }
    }
    return GetFValue();
}

Extended TCustomNumEdit::GetUpdatedValue() {
    UpdateValue(false);
    return GetFValue();
}

void TCustomNumEdit::SetValue(Extended AValue) {
    if (std::isnan(AValue) || std::isnan(d->FValue) || (AValue != d->FValue && Valid(AValue))) {
        d->FValue = AValue;
        FormatText();
    }
    if (!ExprPathActive()) FormatText();
    NotifyValue();
}

Extended TCustomNumEdit::ScaledValue() const {
    return UnScaledToScaled(d->FValue, d->FParType, d->FUnitSystem, d->FCustomScale, d->FScaleOffset);
}

void TCustomNumEdit::SetScaledValue(Extended AValue) {
    d->FValue = ScaledToUnScaled(AValue, d->FParType, d->FUnitSystem, d->FCustomScale, d->FScaleOffset);
    // Keep the text in step, or leaving the edit would take the old text back.
    FormatText();
    NotifyValue();
}

// ---- coupled properties --------------------------------------------------------------------------

void TCustomNumEdit::SetMin(Extended AValue) {
    if (AValue == d->FMin) return;
    d->FMin = AValue;
    CheckRange();
    if (d->FMax < d->FMin) d->FMin = d->FMax;
    if (d->FValue < d->FMin) d->FValue = d->FMin;
    FormatText();
    NotifyValue();
}

void TCustomNumEdit::SetMax(Extended AValue) {
    if (AValue == d->FMax) return;
    d->FMax = AValue;
    CheckRange();
    if (d->FMax < d->FMin) d->FMax = d->FMin;
    if (d->FValue > d->FMax) d->FValue = d->FMax;
    FormatText();
    NotifyValue();
}

void TCustomNumEdit::SetRange(Extended AMin, Extended AMax) {
    d->FMin = AMin;
    d->FMax = AMax;
    CheckRange();
    // As QAbstractSpinBox::setRange: a maximum below the minimum leaves only the minimum.
    if (d->FMax < d->FMin) d->FMax = d->FMin;
    if (d->FValue < d->FMin) d->FValue = d->FMin;
    if (d->FValue > d->FMax) d->FValue = d->FMax;
    FormatText();
    NotifyValue();
}

void TCustomNumEdit::CheckRange() {
    // NaN is "no value", not a value outside the type's range: it survives the check.
    if (std::isnan(d->FValue)) {
        Extended Dummy = 0.0L;
        CheckNumRange(d->FDataType, d->FMin, d->FMax, Dummy);
    } else {
        CheckNumRange(d->FDataType, d->FMin, d->FMax, d->FValue);
    }
}

void TCustomNumEdit::SetDigits(quint16 AValue) {
    if (AValue == d->FDigits) return;
    d->FDigits = AValue;
    d->FMaxTextLength = d->FDigits;
    FormatText();
}

quint16 TCustomNumEdit::Decimals() const {
    if (d->FNumericType == ntParType)
        return FormatDecimalCount(d->FParType, d->FUnitSystem, d->FCustomFormat, NumInpFormatSettings);
    return d->FDecimals;
}

void TCustomNumEdit::SetDecimals(quint16 AValue) {
    const quint16 New = IsIntegerDataType(d->FDataType) ? 0 : AValue;
    if (New == d->FDecimals) return;
    d->FDecimals = New;
    FormatText();
}

void TCustomNumEdit::SetDataType(TDataType AValue) {
    if (AValue == d->FDataType) return;
    d->FDataType = AValue;
    if (d->FDataType != dtExtended && d->FParType != ptNone) SetParType(ptNone);
    if (IsIntegerDataType(d->FDataType)) {
        d->FNumericType = ntGeneral;
        d->FDecimals = 0;
    }
    CheckRange();
    FormatText();
    NotifyValue();
}

void TCustomNumEdit::SetNumericType(TNumericType AValue) {
    if (AValue == d->FNumericType) return;
    if (IsFloatDataType(d->FDataType)) {
        d->FNumericType = AValue;
        FormatText();
    } else {
        d->FNumericType = ntGeneral;
    }
    if (d->FNumericType != ntParType && d->FParType != ptNone) SetParType(ptNone);
}

void TCustomNumEdit::SetParType(TParType AValue) {
    if (AValue == d->FParType) return;
    d->FParType = AValue;
    if (d->FParType != ptNone) {
        d->FNumericType = ntParType;
        d->FDataType = dtExtended;
    }
    FormatText();
    if (d->FOnParTypeChange) d->FOnParTypeChange(this);
    Q_EMIT parTypeChanged(d->FParType);
}

void TCustomNumEdit::SetUnitSystem(TUnitSystem AValue) {
    const bool Changed = AValue != d->FUnitSystem;
    d->FUnitSystem = AValue;
    if (!ExprPathActive())
        FormatText();
    else
        d->FFormattedText.clear(); // the old text now reads in the new units, as published
    if (d->FOnUnitSystemChange) d->FOnUnitSystemChange(this);
    if (Changed) Q_EMIT unitSystemChanged(AValue);
}

void TCustomNumEdit::SetCustomFormat(const QString& AValue) {
    if (AValue == d->FCustomFormat) return;
    d->FCustomFormat = AValue;
    FormatText();
}

void TCustomNumEdit::SetCustomScale(Extended AValue) {
    if (AValue == d->FCustomScale || !(AValue > 1e-14L)) return;
    d->FCustomScale = AValue;
    FormatText();
}

void TCustomNumEdit::SetScaleOffset(Extended AValue) {
    if (AValue == d->FScaleOffset) return;
    d->FScaleOffset = AValue;
    FormatText();
}

void TCustomNumEdit::SetTrimZeroes(bool AValue) {
    if (AValue == d->FTrimZeroes) return;
    d->FTrimZeroes = AValue;
    FormatText();
}

void TCustomNumEdit::SetAllowEmpty(bool AValue) {
    if (AValue == d->FAllowEmpty) return;
    d->FAllowEmpty = AValue;
    FormatText();
}

void TCustomNumEdit::SetNegCol(const QColor& AValue) {
    d->FNegColor = AValue;
    d->FNegColSet = true;
    FormatText();
}

void TCustomNumEdit::SetValidate(bool AValue) {
    if (AValue == d->FValidate) return;
    d->FValidate = AValue;
    if (d->FValidate && (d->FValue < d->FMin || d->FValue > d->FMax)) {
        d->FValue = d->FMin;
        FormatText();
        NotifyValue();
    }
}

void TCustomNumEdit::SetReadOnlyFontColor(const QColor& AValue) {
    if (AValue == d->FReadOnlyFontColor) return;
    d->FReadOnlyFontColor = AValue;
    ApplyTextColour();
    update();
}

void TCustomNumEdit::SetAlignment(Qt::Alignment AValue) {
    AValue &= Qt::AlignHorizontal_Mask;
    if (AValue == d->FAlignment) return;
    d->FAlignment = AValue;
    ApplyAlignment();
}

// ---- text ----------------------------------------------------------------------------------------

QString TCustomNumEdit::GetValueString(Extended AValue) {
    QString S = ValueString(AValue, d->FDataType, d->FNumericType, d->FDigits, d->FDecimals, d->FParType,
                            d->FUnitSystem, d->FCustomFormat, d->FCustomScale, d->FScaleOffset, true,
                            d->FTrimZeroes, NumInpFormatSettings);
    if (d->FOnGetNumText) d->FOnGetNumText(this, S, AValue / d->FCustomScale + d->FScaleOffset);
    return S;
}

void TCustomNumEdit::SetTextIfDiffers(const QString& S) {
    if (text() != S) setText(S);
}

void TCustomNumEdit::FormatText() {
    if (d->FChanging) {
        // The text no longer follows the value: read it again when it is next evaluated.
        d->FFormattedText.clear();
        return;
    }
    bool ExponentRoom = false;
    if (d->FDataType == dtDouble || d->FDataType == dtExtended) {
        if (d->FNumericType == ntGeneral || d->FNumericType == ntExponent)
            ExponentRoom = true;
        else if (d->FNumericType == ntParType)
            ExponentRoom = EffectiveFormat(d->FParType, d->FUnitSystem, d->FCustomFormat)
                               .toUpper()
                               .contains(QLatin1Char('E'));
    }
    d->FMaxTextLength = ExponentRoom ? d->FDigits + 3 + Decimals() : d->FDigits;
    if (std::isnan(d->FValue)) {
        d->FFormattedText.clear();
        SetTextIfDiffers(QString());
        return;
    }
    d->FFormattedText = GetValueString(d->FValue);
    SetTextIfDiffers(d->FFormattedText);
    d->FFontColor = d->FValue < 0 ? d->DrawnNegColor(palette()) : d->FNormalColor;
    ApplyTextColour();
}

void TCustomNumEdit::Clear() {
    d->FValue = d->FClearIsNaN ? NaN() : 0.0L;
    if (d->FAllowEmpty)
        SetTextIfDiffers(QString());
    else
        FormatText();
    NotifyValue();
}

void TCustomNumEdit::Change() {
    const QScopedValueRollback Guard(d->FChanging, true);
    if (d->FOnChange) d->FOnChange(this);
    Q_EMIT changed();
}

// ---- checks and evaluation -------------------------------------------------------------------------

bool TCustomNumEdit::CancelButtonActivated() const {
    const QWidget* Target = QApplication::focusWidget();
    if (!Target || Target == this || !IsCancelButton(Target)) return false;
    return Target->window() == window();
}

bool TCustomNumEdit::Valid(Extended AValue) {
    if (CancelButtonActivated()) return true;
    if (!d->FValidate) return true;
    QString ErrorMessage;
    if (d->FOnRangeValidate) d->FOnRangeValidate(this, AValue, d->FMin, d->FMax, ErrorMessage);
    if (ErrorMessage.isEmpty() && !(AValue >= d->FMin && AValue <= d->FMax)) {
        const QWidget* Owner = OwnerWidget();
        QString OwnerName = Owner ? Owner->objectName() : QString();
        if (OwnerName.isEmpty()) OwnerName = Tr("(no name)");
        // The words of the form: the field's caption, and its unit after each value.
        const QString Unit = MessageUnit(this);
        const auto WithUnit = [&Unit, this](Extended V) {
            return Unit.isEmpty() ? GetValueString(V) : GetValueString(V) + QLatin1Char(' ') + Unit;
        };
        ErrorMessage = FormatPercentS(
            Tr("Value of %s (=%s), form %s must be between %s and %s"),
            {FieldCaption(this), WithUnit(AValue), OwnerName, WithUnit(d->FMin), WithUnit(d->FMax)});
    }
    if (ErrorMessage.isEmpty()) return true;
    MessageDlg(ErrorMessage, mtError, mbOK);
    if (!d->FDesigning) {
        selectAll();
        if (window()->isVisible() && isVisible() && isEnabled()) setFocus(Qt::OtherFocusReason);
    }
    return false;
}

void TCustomNumEdit::SelectAndFocus() {
    if (d->FDesigning || !isVisible() || !isEnabled() || focusPolicy() == Qt::NoFocus) return;
    selectAll();
    setFocus(Qt::OtherFocusReason);
}

bool TCustomNumEdit::UpdateValue(bool Exiting) {
    // An expression callback that reads this edit again gets the stored value.
    if (d->FEvaluating) return true;
    const bool Taken = EvaluateText(Exiting);
    NotifyValue();
    return Taken;
}

bool TCustomNumEdit::EvaluateText(bool Exiting) {
    // After a refused or unreadable text: the message, then the text selected and focused.
    const auto Refused = [this](const QString& Message) {
        d->FIsValid = false;
        if (!Message.isEmpty()) MessageDlg(Message, mtError, mbOK);
        SelectAndFocus();
        return false;
    };
    const auto NoValidInput = [this](const QString& Detail) {
        QString Message = QStringLiteral("'") + text() + Tr("' is no valid numeric input.");
        if (!Detail.isEmpty()) Message += QLatin1Char('\n') + Detail;
        return Message;
    };
    // Takes a value of the plain and the calculated paths: check, store, reformat.
    const auto Take = [&](Extended V) {
        if (d->FOnSetNumValue) d->FOnSetNumValue(this, text(), V);
        if (!std::isnan(V) && !Valid(V)) return Refused(QString());
        d->FIsValid = true;
        d->FValue = V;
        if (!d->FChanging) {
            if (!text().isEmpty()) FormatText();
            setCursorPosition(static_cast<int>(text().size()));
            if (Exiting) d->FFocused = false;
            update();
        }
        return true;
    };

    if (d->TextUnedited(text())) {
        // Only edited text is read back: the rounded display text would change the held value.
        if (!std::isnan(d->FValue) && !Valid(d->FValue)) return Refused(QString());
        d->FIsValid = true;
        if (!d->FChanging) {
            setCursorPosition(static_cast<int>(text().size()));
            if (Exiting) d->FFocused = false;
            update();
        }
        return true;
    }

    // Only the library's own errors (bad numbers, parser errors; the parser turns muparser's into
    // its own) are the user's input; anything else is a fault for the caller to see.
    try {
        if (ExprPathActive()) {
            d->FIsValid = true;
            const QString S = text().trimmed();
            Extended V = 0.0L;
            bool Parsed = false;
            if (S.isEmpty()) {
                if (d->FAllowEmpty && d->FClearIsNaN) {
                    V = NaN();
                } else {
                    V = 0.0L;
                    Parsed = true;
                }
            } else if (TryQX_StrToFloat(S, V)) {
                Parsed = true;
                if (!Valid(V)) {
                    d->FIsValid = false;
                    SelectAndFocus();
                }
            } else if (!d->FChanging) {
                TQXParser Parser(this);
                Parser.SetDescription(objectName());
                Parser.SetOnCheckVariable(d->FOnExprCheckVariable);
                Parser.SetExpression(S);
                const QScopedValueRollback Guard(d->FEvaluating, true);
                V = Parser.CalcValue();
            } else {
                // An expression is evaluated only when no change notification is running.
                return true;
            }
            if (d->FNumericType == ntParType)
                V *= static_cast<Extended>(ParScaleOf(d->FParType, d->FUnitSystem));
            V = (V - d->FScaleOffset) * d->FCustomScale;
            if (d->FOnSetNumValue) d->FOnSetNumValue(this, text(), V);
            d->FValue = V;
            if ((!S.isEmpty() || !d->FAllowEmpty) && Parsed && !d->FChanging) {
                FormatText();
                d->FFocused = false;
                update();
            }
            return true;
        }

        if (d->FExpressionInput && !d->FChanging) {
            // Arithmetic without variables; a formatted number of the display form that does not
            // calculate ("1,234.50") goes on to the plain path below.
            const QString S = text().trimmed();
            Extended V = 0.0L;
            if (!S.isEmpty() && !TryQX_StrToFloat(S, V)) {
                TQXParser Parser(this);
                Parser.SetDescription(objectName());
                Parser.SetExpression(S);
                bool Calculated = false;
                try {
                    V = Parser.CalcValue();
                    Calculated = true;
                } catch (const EQXParserError& Error) {
                    const TCustomNumEditPrivate::TTypingRules R = d->TypingRules();
                    for (const QChar C : S) {
                        const bool NumberChar =
                            C.isDigit() || C == QLatin1Char('+') || C == QLatin1Char('-') || C == R.Sep ||
                            R.Decoration.contains(C) ||
                            (!R.Currency && (C == QLatin1Char('E') || C == QLatin1Char('e')));
                        if (!NumberChar) return Refused(NoValidInput(Error.Message()));
                    }
                }
                if (Calculated) {
                    if (d->FNumericType == ntParType)
                        V *= static_cast<Extended>(ParScaleOf(d->FParType, d->FUnitSystem));
                    return Take((V - d->FScaleOffset) * d->FCustomScale);
                }
            }
        }

        // Plain numbers: keep the characters a number can have, then convert.
        const QChar Sep = NumInpFormatSettings.DecimalSeparator;
        const bool Currency = d->FNumericType == ntCurrency;
        Extended SignFactor = 1.0L;
        QString Kept;
        const QString Raw = text();
        Kept.reserve(Raw.size());
        for (const QChar C : Raw) {
            if (Currency && (C == QLatin1Char('(') || C == QLatin1Char('-'))) {
                SignFactor = -1.0L;
                continue;
            }
            const bool Allowed = (C >= QLatin1Char('0') && C <= QLatin1Char('9')) || C == QLatin1Char('+') ||
                                 C == QLatin1Char('-') || C == Sep ||
                                 (!Currency && (C == QLatin1Char('E') || C == QLatin1Char('e')));
            if (Allowed) Kept += C;
        }
        Kept = Kept.trimmed();
        if (!d->FChanging) SetTextIfDiffers(Kept);

        Extended V;
        if (!Kept.isEmpty()) {
            V = (StrToPar(Kept, d->FNumericType, d->FParType, d->FUnitSystem) - d->FScaleOffset) *
                (SignFactor * d->FCustomScale);
        } else if (d->FAllowEmpty && d->FClearIsNaN) {
            V = NaN();
        } else {
            V = 0.0L;
            if (!d->FChanging && !d->FAllowEmpty) SetTextIfDiffers(QStringLiteral("0"));
        }
        return Take(V);
    } catch (const Exception&) {
        return Refused(NoValidInput(QString()));
    }
}

// ---- typed read-outs ---------------------------------------------------------------------------------

bool TCustomNumEdit::ReadOutRange(TDataType RangeOf, Extended Hi) {
    if (!UpdateValue(false)) return false;
    return d->FValue >= DataTypeMin(RangeOf) && d->FValue <= Hi;
}

quint8 TCustomNumEdit::AsByte() {
    return ReadOutRange(dtByte, DataTypeMax(dtByte)) ? static_cast<quint8>(Round(d->FValue)) : 0;
}

qint8 TCustomNumEdit::AsShortInt() {
    return ReadOutRange(dtShortint, DataTypeMax(dtShortint)) ? static_cast<qint8>(Round(d->FValue)) : 0;
}

quint16 TCustomNumEdit::AsWord() {
    return ReadOutRange(dtWord, DataTypeMax(dtWord)) ? static_cast<quint16>(Round(d->FValue)) : 0;
}

int TCustomNumEdit::AsInteger() {
    return ReadOutRange(dtInteger, DataTypeMax(dtInteger)) ? static_cast<int>(Round(d->FValue)) : 0;
}

int TCustomNumEdit::AsLongint() {
    // The slightly lower upper bound is the original's and is kept.
    return ReadOutRange(dtInteger, 2147483646.999999999999999L) ? static_cast<int>(Round(d->FValue)) : 0;
}

float TCustomNumEdit::AsSingle() {
    return ReadOutRange(dtSingle, DataTypeMax(dtSingle)) ? static_cast<float>(d->FValue) : 0.0f;
}

double TCustomNumEdit::AsDouble() {
    return ReadOutRange(dtDouble, DataTypeMax(dtDouble)) ? static_cast<double>(d->FValue) : 0.0;
}

QString TCustomNumEdit::AsMoneyStr() const {
    try {
        return MoneyStr(text());
    } catch (const Exception&) {
        return QStringLiteral("ERROR");
    }
}

// ---- how messages name a field --------------------------------------------------------------------

namespace {

QString PlainCaption(const QString& Text) {
    const QString S = Qt::mightBeRichText(Text) ? QTextDocumentFragment::fromHtml(Text).toPlainText() : Text;
    // A single '&' marks the mnemonic; "&&" is an ampersand.
    QString Out;
    Out.reserve(S.size());
    for (qsizetype I = 0; I < S.size(); ++I) {
        if (S[I] == QLatin1Char('&')) {
            if (I + 1 < S.size() && S[I + 1] == QLatin1Char('&')) Out += S[++I];
            continue;
        }
        Out += S[I];
    }
    Out = Out.trimmed();
    if (Out.endsWith(QLatin1Char(':'))) Out.chop(1);
    return Out.trimmed();
}

} // namespace

QString FieldCaption(const QWidget* Field) {
    if (!Field) return {};
    const QString Name = Field->objectName();
    // A caption that merely repeats the object name (a name label's default) says nothing more.
    const auto Own = [&Name](const QString& S) { return !S.isEmpty() && S != Name; };
    if (const auto* Inp = qobject_cast<const TCustomNumInp*>(Field))
        if (const TNumFldBoundLabel* L = Inp->EditLabel())
            if (const QString S = PlainCaption(L->Caption()); Own(S)) return S;
    for (const QLabel* L : Field->window()->findChildren<QLabel*>())
        if (L->buddy() == Field)
            if (const QString S = PlainCaption(L->text()); Own(S)) return S;
    if (const auto* G = qobject_cast<const QGroupBox*>(Field))
        if (const QString S = PlainCaption(G->title()); !S.isEmpty()) return S;
    if (const auto* B = qobject_cast<const QAbstractButton*>(Field))
        if (const QString S = PlainCaption(B->text()); !S.isEmpty()) return S;
    return Name;
}

QString MessageUnit(const TCustomNumEdit* Edit) {
    QString U;
    if (const auto* Inp = qobject_cast<const TCustomNumInp*>(Edit)) U = Inp->CustomUnitStr().trimmed();
    if (U.isEmpty() && Edit->ParType() != ptNone)
        U = ParUnitStrOf(Edit->ParType(), Edit->UnitSystem()).trimmed();
    if (U.startsWith(QLatin1Char('[')) && U.endsWith(QLatin1Char(']'))) U = U.mid(1, U.size() - 2).trimmed();
    return U == QLatin1String("-") ? QString() : U;
}

} // namespace qxnum

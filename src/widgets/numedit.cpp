// The numeric edit's value model: properties, formatting, evaluation of the text, range checks.
// The keystroke filter, focus handling and colours live in numedit_input.cpp.
#include <qxnum/widgets/numedit.h>

#include <qxnum/numconv.h>
#include <qxnum/registry.h>

#include <QAbstractButton>
#include <QApplication>
#include <QDialogButtonBox>

#include <cmath>
#include <limits>

namespace qxnum {

namespace {

const TClassRegistrar NumEditRegistrar("TNumEdit", [](QObject* Owner) -> QObject* {
    return new TNumEdit(qobject_cast<QWidget*>(Owner));
});

// Restores a flag when a scope ends, also when a handler throws.
class TFlagScope {
public:
    TFlagScope(bool& Flag, bool Value) : FFlag(Flag), FOld(Flag) { FFlag = Value; }
    ~TFlagScope() { FFlag = FOld; }
    TFlagScope(const TFlagScope&) = delete;
    TFlagScope& operator=(const TFlagScope&) = delete;

private:
    bool& FFlag;
    bool FOld;
};

bool IsFloatDataType(TDataType DataType) {
    return DataType == dtDouble || DataType == dtExtended || DataType == dtSingle;
}

} // namespace

TCustomNumEdit::TCustomNumEdit(QWidget* Parent) : QLineEdit(Parent) {
    OldColor = palette().color(QPalette::Active, QPalette::Text);
    FFontColor = OldColor;
    FAppliedColour = OldColor;
    resize(85, sizeHint().height());
    FMaxTextLength = FDigits;
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
    return FOnExprCheckVariable && !FInhibitExprCheckVar;
}

Extended TCustomNumEdit::Scale() const {
    return FCustomScale * static_cast<Extended>(ParScaleOf(FParType, FUnitSystem));
}

QWidget* TCustomNumEdit::OwnerWidget() const {
    for (QWidget* P = parentWidget(); P; P = P->parentWidget())
        if (P->isWindow() || IsFieldFrame(P)) return P;
    return nullptr;
}

// ---- value -------------------------------------------------------------------------------------

Extended TCustomNumEdit::GetFValue() {
    if (FOnGetNumValue) FOnGetNumValue(this, FValue);
    return FValue;
}

Extended TCustomNumEdit::GetValue() {
    if (ExprPathActive() && !FEvaluating) {
        const QString S = text().trimmed();
        double D = 0.0;
        if (TryQX_StrToFloat(S, D)) {
            // A number typed but not yet taken counts as it stands (no unit conversion).
            if (FFocused) FValue = D;
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
    if (std::isnan(AValue) || std::isnan(FValue) || (AValue != FValue && Valid(AValue))) {
        FValue = AValue;
        FormatText();
    }
    if (!ExprPathActive()) FormatText();
}

Extended TCustomNumEdit::ScaledValue() const {
    return UnScaledToScaled(FValue, FParType, FUnitSystem, FCustomScale, FScaleOffset);
}

void TCustomNumEdit::SetScaledValue(Extended AValue) {
    FValue = ScaledToUnScaled(AValue, FParType, FUnitSystem, FCustomScale, FScaleOffset);
    // Keep the text in step, or leaving the edit would take the old text back.
    FormatText();
}

// ---- coupled properties --------------------------------------------------------------------------

void TCustomNumEdit::SetMin(Extended AValue) {
    if (AValue == FMin) return;
    FMin = AValue;
    CheckRange();
    if (FMax < FMin) FMin = FMax;
    if (FValue < FMin) FValue = FMin;
    FormatText();
}

void TCustomNumEdit::SetMax(Extended AValue) {
    if (AValue == FMax) return;
    FMax = AValue;
    CheckRange();
    if (FMax < FMin) FMax = FMin;
    if (FValue > FMax) FValue = FMax;
    FormatText();
}

void TCustomNumEdit::CheckRange() {
    // NaN is "no value", not a value outside the type's range: it survives the check.
    if (std::isnan(FValue)) {
        Extended Dummy = 0.0L;
        CheckNumRange(FDataType, FMin, FMax, Dummy);
    } else {
        CheckNumRange(FDataType, FMin, FMax, FValue);
    }
}

void TCustomNumEdit::SetDigits(quint16 AValue) {
    if (AValue == FDigits) return;
    FDigits = AValue;
    FMaxTextLength = FDigits;
    FormatText();
}

quint16 TCustomNumEdit::Decimals() const {
    if (FNumericType == ntParType)
        return FormatDecimalCount(FParType, FUnitSystem, Fcustomformat, NumInpFormatSettings);
    return FDecimals;
}

void TCustomNumEdit::SetDecimals(quint16 AValue) {
    const quint16 New = IsIntegerDataType(FDataType) ? 0 : AValue;
    if (New == FDecimals) return;
    FDecimals = New;
    FormatText();
}

void TCustomNumEdit::SetDataType(TDataType AValue) {
    if (AValue == FDataType) return;
    FDataType = AValue;
    if (FDataType != dtExtended && FParType != ptNone) SetParType(ptNone);
    if (IsIntegerDataType(FDataType)) {
        FNumericType = ntGeneral;
        FDecimals = 0;
    }
    CheckRange();
    FormatText();
}

void TCustomNumEdit::SetNumericType(TNumericType AValue) {
    if (AValue == FNumericType) return;
    if (IsFloatDataType(FDataType)) {
        FNumericType = AValue;
        FormatText();
    } else {
        FNumericType = ntGeneral;
    }
    if (FNumericType != ntParType && FParType != ptNone) SetParType(ptNone);
}

void TCustomNumEdit::SetParType(TParType AValue) {
    if (AValue == FParType) return;
    FParType = AValue;
    if (FParType != ptNone) {
        FNumericType = ntParType;
        FDataType = dtExtended;
    }
    FormatText();
    if (FOnParTypeChange) FOnParTypeChange(this);
    Q_EMIT parTypeChanged();
}

void TCustomNumEdit::SetUnitSystem(TUnitSystem AValue) {
    FUnitSystem = AValue;
    if (!ExprPathActive()) FormatText();
    if (FOnUnitSystemChange) FOnUnitSystemChange(this);
    Q_EMIT unitSystemChanged();
}

void TCustomNumEdit::SetCustomFormat(const QString& AValue) {
    if (AValue == Fcustomformat) return;
    Fcustomformat = AValue;
    FormatText();
}

void TCustomNumEdit::SetCustomScale(Extended AValue) {
    if (AValue == FCustomScale || !(AValue > 1e-14L)) return;
    FCustomScale = AValue;
    FormatText();
}

void TCustomNumEdit::SetScaleOffset(Extended AValue) {
    if (AValue == FScaleOffset) return;
    FScaleOffset = AValue;
    FormatText();
}

void TCustomNumEdit::SetTrimZeroes(bool AValue) {
    if (AValue == FTrimZeroes) return;
    FTrimZeroes = AValue;
    FormatText();
}

void TCustomNumEdit::SetAllowEmpty(bool AValue) {
    if (AValue == FAllowEmpty) return;
    FAllowEmpty = AValue;
    FormatText();
}

void TCustomNumEdit::SetNegCol(const QColor& AValue) {
    FNegColor = AValue;
    FormatText();
}

void TCustomNumEdit::SetValidate(bool AValue) {
    if (AValue == FValidate) return;
    FValidate = AValue;
    if (FValidate && (FValue < FMin || FValue > FMax)) {
        FValue = FMin;
        FormatText();
    }
}

void TCustomNumEdit::SetReadOnlyFontColor(const QColor& AValue) {
    if (AValue == FReadOnlyFontColor) return;
    FReadOnlyFontColor = AValue;
    ApplyTextColour();
    update();
}

void TCustomNumEdit::SetAlignment(Qt::Alignment AValue) {
    AValue &= Qt::AlignHorizontal_Mask;
    if (AValue == FAlignment) return;
    FAlignment = AValue;
    ApplyAlignment();
}

// ---- text ----------------------------------------------------------------------------------------

QString TCustomNumEdit::GetValueString(Extended AValue) {
    QString S =
        ValueString(AValue, FDataType, FNumericType, FDigits, FDecimals, FParType, FUnitSystem, Fcustomformat,
                    FCustomScale, FScaleOffset, true, FTrimZeroes, NumInpFormatSettings);
    if (FOnGetNumText) FOnGetNumText(this, S, AValue / FCustomScale + FScaleOffset);
    return S;
}

void TCustomNumEdit::SetTextIfDiffers(const QString& S) {
    if (text() != S) setText(S);
}

void TCustomNumEdit::FormatText() {
    if (FChanging) return;
    bool ExponentRoom = false;
    if (FDataType == dtDouble || FDataType == dtExtended) {
        if (FNumericType == ntGeneral || FNumericType == ntExponent)
            ExponentRoom = true;
        else if (FNumericType == ntParType)
            ExponentRoom =
                EffectiveFormat(FParType, FUnitSystem, Fcustomformat).toUpper().contains(QLatin1Char('E'));
    }
    FMaxTextLength = ExponentRoom ? FDigits + 3 + Decimals() : FDigits;
    if (std::isnan(FValue)) {
        SetTextIfDiffers(QString());
        return;
    }
    SetTextIfDiffers(GetValueString(FValue));
    FFontColor = FValue < 0 ? FNegColor : OldColor;
    ApplyTextColour();
}

void TCustomNumEdit::Clear() {
    FValue = FClearIsNaN ? NaN() : 0.0L;
    if (FAllowEmpty)
        SetTextIfDiffers(QString());
    else
        FormatText();
}

void TCustomNumEdit::Change() {
    TFlagScope Guard(FChanging, true);
    if (FOnChange) FOnChange(this);
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
    if (!FValidate) return true;
    QString ErrorMessage;
    if (FOnRangeValidate) FOnRangeValidate(this, AValue, FMin, FMax, ErrorMessage);
    if (ErrorMessage.isEmpty() && !(AValue >= FMin && AValue <= FMax)) {
        const QWidget* Owner = OwnerWidget();
        QString OwnerName = Owner ? Owner->objectName() : QString();
        if (OwnerName.isEmpty()) OwnerName = QStringLiteral("(no name)");
        ErrorMessage = QStringLiteral("Value of %1 (=%2), form %3 must be between %4 and %5")
                           .arg(objectName(), GetValueString(AValue), OwnerName, GetValueString(FMin),
                                GetValueString(FMax));
    }
    if (ErrorMessage.isEmpty()) return true;
    MessageDlg(ErrorMessage, mtError, mbOK);
    if (!FDesigning) {
        selectAll();
        if (window()->isVisible() && isVisible() && isEnabled()) setFocus(Qt::OtherFocusReason);
    }
    return false;
}

void TCustomNumEdit::SelectAndFocus() {
    if (FDesigning || !isVisible() || !isEnabled() || focusPolicy() == Qt::NoFocus) return;
    selectAll();
    setFocus(Qt::OtherFocusReason);
}

bool TCustomNumEdit::UpdateValue(bool Exiting) {
    // An expression callback that reads this edit again gets the stored value.
    if (FEvaluating) return true;
    try {
        if (ExprPathActive()) {
            FIsValid = true;
            const QString S = text().trimmed();
            Extended V = 0.0L;
            bool Parsed = false;
            if (S.isEmpty()) {
                if (FAllowEmpty && FClearIsNaN) {
                    V = NaN();
                } else {
                    V = 0.0L;
                    Parsed = true;
                }
            } else if (TryQX_StrToFloat(S, V)) {
                Parsed = true;
                if (!Valid(V)) {
                    FIsValid = false;
                    SelectAndFocus();
                }
            } else if (!FChanging) {
                TQXParser Parser(this);
                Parser.SetDescription(objectName());
                Parser.SetOnCheckVariable(FOnExprCheckVariable);
                Parser.SetExpression(S);
                TFlagScope Guard(FEvaluating, true);
                V = Parser.CalcValue();
            } else {
                // An expression is evaluated only when no change notification is running.
                return true;
            }
            if (FNumericType == ntParType) V *= static_cast<Extended>(ParScaleOf(FParType, FUnitSystem));
            V = (V - FScaleOffset) * FCustomScale;
            if (FOnSetNumValue) FOnSetNumValue(this, text(), V);
            FValue = V;
            if ((!S.isEmpty() || !FAllowEmpty) && Parsed && !FChanging) {
                FormatText();
                FFocused = false;
                update();
            }
            return true;
        }

        // Plain numbers: keep the characters a number can have, then convert.
        const QChar Sep = NumInpFormatSettings.DecimalSeparator;
        const bool Currency = FNumericType == ntCurrency;
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
        if (!FChanging) SetTextIfDiffers(Kept);

        Extended V;
        if (!Kept.isEmpty()) {
            V = (StrToPar(Kept, FNumericType, FParType, FUnitSystem) - FScaleOffset) *
                (SignFactor * FCustomScale);
        } else if (FAllowEmpty && FClearIsNaN) {
            V = NaN();
        } else {
            V = 0.0L;
            if (!FChanging && !FAllowEmpty) SetTextIfDiffers(QStringLiteral("0"));
        }
        if (FOnSetNumValue) FOnSetNumValue(this, text(), V);
        if (!std::isnan(V) && !Valid(V)) {
            FIsValid = false;
            SelectAndFocus();
            return false;
        }
        FIsValid = true;
        FValue = V;
        if (!FChanging) {
            if (!text().isEmpty()) FormatText();
            setCursorPosition(static_cast<int>(text().size()));
            if (Exiting) FFocused = false;
            update();
        }
        return true;
    } catch (const std::exception&) {
        FIsValid = false;
        MessageDlg(QStringLiteral("'") + text() + QStringLiteral("' is no valid numeric input."), mtError,
                   mbOK);
        SelectAndFocus();
        return false;
    }
}

// ---- typed read-outs ---------------------------------------------------------------------------------

bool TCustomNumEdit::ReadOutRange(TDataType RangeOf, Extended Hi) {
    if (!UpdateValue(false)) return false;
    return FValue >= DataTypeMin(RangeOf) && FValue <= Hi;
}

quint8 TCustomNumEdit::AsByte() {
    return ReadOutRange(dtByte, DataTypeMax(dtByte)) ? static_cast<quint8>(Round(FValue)) : 0;
}

qint8 TCustomNumEdit::AsShortInt() {
    return ReadOutRange(dtShortint, DataTypeMax(dtShortint)) ? static_cast<qint8>(Round(FValue)) : 0;
}

quint16 TCustomNumEdit::AsWord() {
    return ReadOutRange(dtWord, DataTypeMax(dtWord)) ? static_cast<quint16>(Round(FValue)) : 0;
}

int TCustomNumEdit::AsInteger() {
    return ReadOutRange(dtInteger, DataTypeMax(dtInteger)) ? static_cast<int>(Round(FValue)) : 0;
}

int TCustomNumEdit::AsLongint() {
    // The slightly lower upper bound is the original's and is kept.
    return ReadOutRange(dtInteger, 2147483646.999999999999999L) ? static_cast<int>(Round(FValue)) : 0;
}

float TCustomNumEdit::AsSingle() {
    return ReadOutRange(dtSingle, DataTypeMax(dtSingle)) ? static_cast<float>(FValue) : 0.0f;
}

double TCustomNumEdit::AsDouble() {
    return ReadOutRange(dtDouble, DataTypeMax(dtDouble)) ? static_cast<double>(FValue) : 0.0;
}

QString TCustomNumEdit::AsMoneyStr() const {
    try {
        return MoneyStr(text());
    } catch (const std::exception&) {
        return QStringLiteral("ERROR");
    }
}

} // namespace qxnum

/// \file
/// The persistent numeric field: a labelled numeric input that saves and restores its value as a
/// field of a field form.
///
/// Files
///   Stream record: the value as an 80-bit float (full precision, NaN and infinities included),
///   then Visible and Enabled as two booleans. XML: "ParType" (the enumeration name, only with
///   StoreParType), "Value" and, with StreamReadVisibleandEnabled, "Visible" and "Enabled".
///   The XML value is text in base units: the shortest plain number that reads back to exactly
///   Value ("0.0012345", "1.2345E-9", with NumInpFormatSettings' decimal separator, no grouping),
///   or the edit's text as typed when that is not a plain number (an expression, or "1,234.50" of
///   ntNumber), or "" for no value. Unlike the original layout, which writes the value rounded to
///   the edit's decimals (0.0012345 kg/s as "0.0012"), the text keeps every digit (deliberate
///   deviation 5); any reader of the original layout still reads it as a number. A host that must
///   reproduce old files byte for byte sets XmlValueAsDisplayed: the value is then formatted like
///   the edit formats it, unscaled, as the original does.
///   Reading a "Value" that is not a plain number puts the text into the edit without
///   evaluating it; an empty text gives NaN when both AllowEmpty and ClearIsNaN are set.
///   A "ParType" name that is not a parameter type is stored unchecked as the ordinal 255; the
///   edit then shows base units with the picture of ptNone and no unit text.
///   A value is taken with SetValue, so a number outside Min/Max is refused with the edit's
///   range message and the old value stays.
///
/// Identifier in files: CustomIDstring, else the caption of the name label, else the object name.
/// A field without a custom identifier is therefore found by its label text.
///
/// Copy and form-create values are the edit's text. Two texts that are both numbers count as the
/// same when they differ by at most 1e-14 (absolute); other texts are compared exactly. Restoring
/// a text re-evaluates it, except an expression that only OnExprCheckVariable can resolve.
///
/// RefValue holds a value the application may load with SetValueToRefValue. Its default is a
/// sentinel far below any real value (-1.189731495357231765e4923, the exact 80-bit pattern
/// FFE1 89705F4136B4A597) that means "no reference value": values at or below
/// RefValueThreshold() are not loaded. A NaN reference value is loaded and clears the field.
#pragma once

#include <qxnum/widgets/fieldbase.h>
#include <qxnum/widgets/numinp.h>

#include <memory>

namespace qxnum {

class TNumFldPrivate;

class QXNUM_WIDGETS_EXPORT TNumFld : public TCustomNumInp, public TValueField<QString> {
    Q_OBJECT
    Q_INTERFACES(qxnum::INumFld)
    QXNUM_FIELD_PROPERTIES
    Q_PROPERTY(int Tag2 READ Tag2 WRITE SetTag2)
    /// As a double: QVariant has no 80-bit type.
    Q_PROPERTY(double RefValue READ RefValueAsDouble WRITE SetRefValueAsDouble)
    Q_PROPERTY(bool ControllableIfDisabled READ ControllableIfDisabled WRITE SetControllableIfDisabled)
    Q_PROPERTY(bool StoreParType READ StoreParType WRITE SetStoreParType)
    /// The XML value rounded as displayed (the original layout) instead of exact; default false.
    Q_PROPERTY(bool XmlValueAsDisplayed READ XmlValueAsDisplayed WRITE SetXmlValueAsDisplayed)

public:
    /// Qt-style setters of the properties above, which forms compiled by uic call.
    void setTag2(int AValue) { SetTag2(AValue); }
    void setRefValue(double AValue) { SetRefValueAsDouble(AValue); }
    void setControllableIfDisabled(bool AValue) { SetControllableIfDisabled(AValue); }
    void setStoreParType(bool AValue) { SetStoreParType(AValue); }
    void setXmlValueAsDisplayed(bool AValue) { SetXmlValueAsDisplayed(AValue); }

    explicit TNumFld(QWidget* Parent = nullptr);
    ~TNumFld() override;

    /// The default RefValue and the limit at or below which a reference value counts as unset.
    static Extended RefValueSentinel();
    static Extended RefValueThreshold();

    /// From another TNumFld: its text, then evaluated. Any other source raises EConvertError.
    void Assign(const QObject* Source);

    int Tag2() const;
    void SetTag2(int AValue);
    Extended RefValue() const;
    void SetRefValue(Extended AValue);
    Extended GetRefValue() const { return RefValue(); }
    /// Stored for the container; the field itself attaches no behaviour to it.
    bool ControllableIfDisabled() const;
    void SetControllableIfDisabled(bool AValue);
    bool StoreParType() const;
    void SetStoreParType(bool AValue);
    bool XmlValueAsDisplayed() const;
    void SetXmlValueAsDisplayed(bool AValue);
    /// CustomIDstring as it is (possibly empty).
    QString GetIDstr() const { return CustomIDstring(); }

    /// Loads RefValue with SetValue when it is NaN or above RefValueThreshold().
    void SetValueToRefValue();
    /// Stores AValue when it lies in [Min, Max] and returns true; otherwise stores the nearer
    /// limit (Min for NaN) and returns false.
    bool SetValue_inside_MinMax(Extended AValue);

    /// Identifier text for the application's error reports; not used by the field.
    QString ErrorIDstring;

    /// --- INumFld ---
    QString GetIDstring() const override;
    bool GetReadOnly() const override { return isReadOnly(); }
    bool XmlValueChanged(TXmlNode ParentXmlNode) override;
    /// Value as a double.
    QVariant GetVariantValue() override;
    /// The edit's text as shown.
    QString GetValueText() override { return text(); }
    QString GetXMLValueText(TXmlNode ParentXmlNode) override;

protected:
    QString CurrentValue() override { return text(); }
    void PutValue(const QString& AValue) override;
    bool SameValue(const QString& A, const QString& B) const override;

    void WriteStreamValue(TWriter& Writer) override;
    TApplyValue ReadStreamValue(TReader& Reader) override;
    void WriteXmlValue(TXmlNode Node) override;
    TApplyValue ReadXmlValue(TXmlNode Node) override;

private:
    /// The XML text of the current value (see the header comment).
    QString XmlValueText();
    double RefValueAsDouble() const { return static_cast<double>(RefValue()); }
    void SetRefValueAsDouble(double AValue) { SetRefValue(AValue); }

    const std::unique_ptr<TNumFldPrivate> DFld;
};

} // namespace qxnum

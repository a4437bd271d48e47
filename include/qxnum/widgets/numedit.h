/// \file
/// The numeric edit: a QLineEdit that holds one value in base units and shows it in display units.
///
/// Value model
///   Value() is kept in base units; the text shows it through ValueString with the parameter type,
///   unit system, custom scale/offset, data type and numeric type. Leaving the edit evaluates the
///   text (UpdateValue): a plain number is converted to base units and checked against Min/Max; a
///   value out of range is refused with a message, the text is selected and the focus comes back.
///   NaN stands for "no value" (empty text with AllowEmpty and ClearIsNaN, Clear with ClearIsNaN).
///   With OnExprCheckVariable assigned (and InhibitExprCheckVar off) the text may be an expression;
///   its identifiers are resolved through that callback.
///
/// Keystroke filter (typing, Ctrl+V / Shift+Insert, the context menu's Paste, middle-click paste,
/// drops and input-method commits all go through it):
///   - Deleting is always allowed, and so are Qt's editing keys (selection, undo/redo, Home/End,
///     Ctrl+A, cut, copy). Everything else that inserts text is checked as a whole edit: the
///     inserted characters must be allowed, and the new text may not break a rule more than the old
///     one did (so a formatted text such as "1,234.50" stays editable).
///   - Allowed: digits, one leading "+" or "-", one decimal separator (NumInpFormatSettings) when
///     decimals are allowed, and "E"/"e" after at least one digit, followed by an optional sign and
///     digits. ntNumber also accepts the thousands separator; ntCurrency the thousands separator,
///     the currency string, parentheses and blanks, a sign anywhere but no exponent.
///   - Decimals: at most Decimals for ntFixed, ntNumber and ntCurrency, at most FormatDecimalCount
///     of the picture for ntParType, no limit for ntGeneral and ntExponent (they count significant
///     digits), none for the integer data types (which take no exponent either).
///   - Exponent, counted from the "E" to the end: at most FormatExponentLength characters for
///     ntParType (none when the picture has no "E"), otherwise at most "E-4932" (6).
///   - Length: at most MaxTextLength() characters (Digits, or Digits + 3 + Decimals for the float
///     forms that may show an exponent). It limits typing only: the edit's own text is never cut
///     (QLineEdit's maxLength is left at its default).
///   - While the expression path is active: letters, digits, "_", the decimal separator, the
///     parser's argument separator, + - * / ^, parentheses and blanks, without a length limit; the
///     expression itself is checked by UpdateValue on leaving.
///   - A pasted text is trimmed and only its first line is taken.
///   - A key from the keypad's decimal key types the locale's decimal separator.
///   - A refused edit beeps (QApplication::beep) and changes nothing.
///   - Enter moves to the next control when TabOnEnterKey is set; Up and Down move to the previous
///     and next control (posted, after the edit's own key handling).
///
/// Focus: entering sets Focused(); moving the focus to another widget of the window runs
/// UpdateValue(true). Another window or a popup (context menu, message box) taking the focus is not
/// leaving the edit.
///
/// The cancel-button exemption of Valid: when the widget receiving the focus is a button of the
/// edit's own window that cancels it, no range check is made. A button cancels when it has the
/// dynamic property "ModalResult" equal to mrCancel (2), or sits in a QDialogButtonBox with the
/// RejectRole (the standard Cancel, Close and Abort buttons).
///
/// Painting: QLineEdit paints; the edit keeps its alignment (the resting Alignment(), left while it
/// has the focus) and the palette's text colour (NegCol for negative values, the normal colour
/// otherwise, ReadOnlyFontColor when read-only) in step with the value. The disabled colour group
/// is left alone so a disabled edit still looks disabled. The normal colour is the palette's text
/// colour: a palette the host gives the edit (or its parent) sets a new normal colour.
/// Unlike the original, NegCol left at its default (black) is drawn in a colour that reads on the
/// current palette's Base (the normal text colour on a dark palette) (deliberate deviation 8);
/// NegCol() still reads black, and a colour the host sets, black included, is drawn exactly.
///
/// Change notification: use OnChange or the changed() signal. While they run IsChanging() is true
/// and the edit neither reformats nor rewrites its text, so a handler may read Value safely.
/// Handlers connected directly to textChanged run after that window.
#pragma once

#include <qxnum/widgets_export.h>

#include <qxnum/dialogs.h>
#include <qxnum/numtext.h>
#include <qxnum/parser.h>

#include <QClipboard>
#include <QColor>
#include <QLineEdit>

#include <functional>
#include <memory>

namespace qxnum {

using TNotifyEvent = std::function<void(QObject* Sender)>;
/// Supplies or changes the value on every read (AValue is the stored base value).
using TGetNumValueEvent = std::function<void(QObject* Sender, Extended& AValue)>;
/// Changes a value parsed from NumText before it is stored.
using TSetNumValueEvent = std::function<void(QObject* Sender, const QString& NumText, Extended& AValue)>;
/// Called after every value-to-text formatting; may change NumText. AValue is the display value
/// before the unit table factor (base / CustomScale + ScaleOffset).
using TGetNumTextEvent = std::function<void(QObject* Sender, QString& NumText, Extended AValue)>;
/// Application range check: set ErrorMessage to refuse AValue. The built-in Min/Max check still
/// runs when the message is left empty.
using TRangeValidateEvent = std::function<void(QObject* Sender, Extended AValue, Extended AMin, Extended AMax,
                                               QString& ErrorMessage)>;

class TCustomNumEditPrivate;

/// Qt integration
///   Every published property is a Q_PROPERTY under its published name. Extended-valued ones
///   (Value, ScaledValue, Min, Max, CustomScale, ScaleOffset) are exposed as double there; the C++
///   accessors keep the full extended precision. Writing a property runs the same setter.
///   Signals beside the std::function hooks (the hooks remain the contract):
///   - valueChanged(double): the base-unit value, once per accepted change of the held value
///     (typed text taken, SetValue, limits or data type pulling it, Clear, ...). Never for a value
///     that stays the same; NaN to NaN is no change. A change made by the OnGetNumValue hook during
///     a read is the hook owner's own and is not signalled.
///   - unitSystemChanged(TUnitSystem) and parTypeChanged(TParType): only when the value really
///     changes (OnUnitSystemChange fires on every SetUnitSystem, as published).
///   - valueEditingFinished(): after the user's text has been evaluated and taken, on leaving the
///     edit or on Enter. QLineEdit::editingFinished is left as Qt defines it: it also fires for Enter
///     without any evaluation and when a refused text could not take the focus back, so it cannot
///     carry that guarantee.
///
/// Expression input without variables: ExpressionInput lets the user type arithmetic ("2*3.5",
/// "sqrt(2)") in an edit that has no OnExprCheckVariable. Such a text is calculated by the parser on
/// leaving; the result is range checked and shown formatted. Any identifier is then unknown and
/// gives the parser's error beside the usual "is no valid numeric input" message. A text that does
/// not calculate but is a formatted number of the display form ("1,234.50", "($2.25)") is taken as
/// before. With OnExprCheckVariable assigned the variable path applies instead.
///
/// Exactness: a text the user has not changed since the edit last formatted it is not evaluated
/// again on leaving or reading; the held value stays exactly as it was (the text shows it rounded).
///
/// Refused input: beside the beep a tooltip at the cursor names the refused character and the
/// rule; LastRefusal() holds that text until the next accepted edit.
class QXNUM_WIDGETS_EXPORT TCustomNumEdit : public QLineEdit {
    Q_OBJECT
    Q_PROPERTY(double Value READ PropValue WRITE SetPropValue NOTIFY valueChanged)
    Q_PROPERTY(double ScaledValue READ PropScaledValue WRITE SetPropScaledValue)
    Q_PROPERTY(double Min READ PropMin WRITE SetPropMin)
    Q_PROPERTY(double Max READ PropMax WRITE SetPropMax)
    Q_PROPERTY(quint16 Digits READ Digits WRITE SetDigits)
    Q_PROPERTY(quint16 Decimals READ Decimals WRITE SetDecimals)
    Q_PROPERTY(qxnum::TDataType DataType READ DataType WRITE SetDataType)
    Q_PROPERTY(qxnum::TNumericType NumericType READ NumericType WRITE SetNumericType)
    Q_PROPERTY(qxnum::TParType ParType READ ParType WRITE SetParType NOTIFY parTypeChanged)
    Q_PROPERTY(qxnum::TUnitSystem UnitSystem READ UnitSystem WRITE SetUnitSystem NOTIFY unitSystemChanged)
    Q_PROPERTY(QString CustomFormat READ CustomFormat WRITE SetCustomFormat)
    Q_PROPERTY(double CustomScale READ PropCustomScale WRITE SetPropCustomScale)
    Q_PROPERTY(double ScaleOffset READ PropScaleOffset WRITE SetPropScaleOffset)
    Q_PROPERTY(bool TrimZeroes READ TrimZeroes WRITE SetTrimZeroes)
    Q_PROPERTY(bool AllowEmpty READ AllowEmpty WRITE SetAllowEmpty)
    Q_PROPERTY(bool ClearIsNaN READ ClearIsNaN WRITE SetClearIsNaN)
    Q_PROPERTY(QColor NegCol READ NegCol WRITE SetNegCol)
    Q_PROPERTY(bool Validate READ Validate WRITE SetValidate)
    Q_PROPERTY(QColor ReadOnlyFontColor READ ReadOnlyFontColor WRITE SetReadOnlyFontColor)
    Q_PROPERTY(Qt::Alignment Alignment READ Alignment WRITE SetAlignment)
    Q_PROPERTY(bool TabOnEnterKey READ TabOnEnterKey WRITE SetTabOnEnterKey)
    Q_PROPERTY(bool InhibitExprCheckVar READ InhibitExprCheckVar WRITE SetInhibitExprCheckVar)
    Q_PROPERTY(bool ExpressionInput READ ExpressionInput WRITE SetExpressionInput)
    Q_PROPERTY(bool CopyEnabled READ CopyEnabled WRITE SetCopyEnabled)
    Q_PROPERTY(bool CopyVisible READ CopyVisible WRITE SetCopyVisible)

public:
    /// Qt-style setters of the properties above, which forms compiled by uic call.
    void setValue(double AValue) { SetPropValue(AValue); }
    void setScaledValue(double AValue) { SetPropScaledValue(AValue); }
    void setMin(double AValue) { SetPropMin(AValue); }
    void setMax(double AValue) { SetPropMax(AValue); }
    void setDigits(quint16 AValue) { SetDigits(AValue); }
    void setDecimals(quint16 AValue) { SetDecimals(AValue); }
    void setDataType(TDataType AValue) { SetDataType(AValue); }
    void setNumericType(TNumericType AValue) { SetNumericType(AValue); }
    void setParType(TParType AValue) { SetParType(AValue); }
    void setUnitSystem(TUnitSystem AValue) { SetUnitSystem(AValue); }
    void setCustomFormat(const QString& AValue) { SetCustomFormat(AValue); }
    void setCustomScale(double AValue) { SetPropCustomScale(AValue); }
    void setScaleOffset(double AValue) { SetPropScaleOffset(AValue); }
    void setTrimZeroes(bool AValue) { SetTrimZeroes(AValue); }
    void setAllowEmpty(bool AValue) { SetAllowEmpty(AValue); }
    void setClearIsNaN(bool AValue) { SetClearIsNaN(AValue); }
    void setNegCol(const QColor& AValue) { SetNegCol(AValue); }
    void setValidate(bool AValue) { SetValidate(AValue); }
    void setReadOnlyFontColor(const QColor& AValue) { SetReadOnlyFontColor(AValue); }
    void setTabOnEnterKey(bool AValue) { SetTabOnEnterKey(AValue); }
    void setInhibitExprCheckVar(bool AValue) { SetInhibitExprCheckVar(AValue); }
    void setExpressionInput(bool AValue) { SetExpressionInput(AValue); }
    void setCopyEnabled(bool AValue) { SetCopyEnabled(AValue); }
    void setCopyVisible(bool AValue) { SetCopyVisible(AValue); }

    explicit TCustomNumEdit(QWidget* Parent = nullptr);
    ~TCustomNumEdit() override;

    /// "No value": the quiet NaN with the sign bit set.
    static Extended NaN();
    /// A button that cancels its dialog (see the header comment).
    static bool IsCancelButton(const QWidget* Widget);

    /// Value in base units. Value() may evaluate the text (expression path) and fires OnGetNumValue.
    Extended Value() { return GetValue(); }
    void SetValue(Extended AValue);
    Extended GetValue();
    /// The stored value after OnGetNumValue, without looking at the text.
    Extended GetFValue();
    /// Evaluates the text first (UpdateValue(false)).
    Extended GetUpdatedValue();
    /// Value in display units.
    Extended ScaledValue() const;
    void SetScaledValue(Extended AValue);

    Extended Min() const;
    void SetMin(Extended AValue);
    Extended Max() const;
    void SetMax(Extended AValue);
    /// Sets both limits whatever they were before, then corrects the pair as the single setters do:
    /// the data type's range clips them, a Max below Min becomes Min, and the value is pulled inside.
    void SetRange(Extended AMin, Extended AMax);
    quint16 Digits() const;
    void SetDigits(quint16 AValue);
    /// For ntParType the decimal count of the effective picture, otherwise the stored count.
    quint16 Decimals() const;
    void SetDecimals(quint16 AValue);
    TDataType DataType() const;
    void SetDataType(TDataType AValue);
    TNumericType NumericType() const;
    void SetNumericType(TNumericType AValue);
    TParType ParType() const;
    virtual void SetParType(TParType AValue);
    TUnitSystem UnitSystem() const;
    virtual void SetUnitSystem(TUnitSystem AValue);
    QString CustomFormat() const;
    void SetCustomFormat(const QString& AValue);
    Extended CustomScale() const;
    /// Ignored unless greater than 1e-14.
    void SetCustomScale(Extended AValue);
    Extended ScaleOffset() const;
    void SetScaleOffset(Extended AValue);
    bool TrimZeroes() const;
    void SetTrimZeroes(bool AValue);
    bool AllowEmpty() const;
    void SetAllowEmpty(bool AValue);
    bool ClearIsNaN() const;
    void SetClearIsNaN(bool AValue);
    QColor NegCol() const;
    void SetNegCol(const QColor& AValue);
    bool Validate() const;
    void SetValidate(bool AValue);
    QColor ReadOnlyFontColor() const;
    void SetReadOnlyFontColor(const QColor& AValue);
    /// Resting horizontal alignment: Qt::AlignLeft, Qt::AlignRight (default) or Qt::AlignHCenter.
    Qt::Alignment Alignment() const;
    void SetAlignment(Qt::Alignment AValue);
    bool TabOnEnterKey() const;
    void SetTabOnEnterKey(bool AValue);
    bool InhibitExprCheckVar() const;
    void SetInhibitExprCheckVar(bool AValue);
    /// Arithmetic input without a variable callback (see the header comment). Off by default.
    bool ExpressionInput() const;
    void SetExpressionInput(bool AValue);
    /// Used by the labelled input: whether its labels follow the edit's enabled and visible state.
    bool CopyEnabled() const;
    void SetCopyEnabled(bool AValue);
    bool CopyVisible() const;
    void SetCopyVisible(bool AValue);
    /// The normal (non-negative) text colour, taken from the palette.
    QColor NormalFontColor() const;

    /// Events.
    TGetNumTextEvent OnGetNumText() const;
    void SetOnGetNumText(TGetNumTextEvent AEvent);
    TSetNumValueEvent OnSetNumValue() const;
    void SetOnSetNumValue(TSetNumValueEvent AEvent);
    TGetNumValueEvent OnGetNumValue() const;
    void SetOnGetNumValue(TGetNumValueEvent AEvent);
    TRangeValidateEvent OnRangeValidate() const;
    void SetOnRangeValidate(TRangeValidateEvent AEvent);
    TNotifyEvent OnParTypeChange() const;
    void SetOnParTypeChange(TNotifyEvent AEvent);
    TNotifyEvent OnUnitSystemChange() const;
    void SetOnUnitSystemChange(TNotifyEvent AEvent);
    TOnCheckVariableEvent OnExprCheckVariable() const;
    void SetOnExprCheckVariable(TOnCheckVariableEvent AEvent);
    TNotifyEvent OnChange() const;
    void SetOnChange(TNotifyEvent AEvent);

    /// True while OnExprCheckVariable is assigned and InhibitExprCheckVar is off.
    bool ExprPathActive() const;
    /// FCustomScale * ParScale[ParType][UnitSystem].
    Extended Scale() const;
    /// Text of a base value as this edit shows it (fires OnGetNumText).
    QString GetValueString(Extended AValue);

    /// Reformats the text from the value and sets the length limit and the text colour.
    virtual void FormatText();
    /// Keeps Min, Max and the value inside the data type's range (NaN stays "no value").
    virtual void CheckRange();
    /// Range check with message; false when AValue is refused. The message reads "Value of
    /// <field> (=<value> <unit>), form <owner> must be between <min> <unit> and <max> <unit>":
    /// the field is named by its caption where it has one (a numeric input's own label caption,
    /// else the label that has it as buddy, as a QFormLayout row's label), else by its object name;
    /// the unit is the unit text without brackets (none for "-" or no parameter type).
    virtual bool Valid(Extended AValue);
    /// Evaluates the text into the value; false after a refused or unreadable text.
    bool UpdateValue(bool Exiting);
    /// Value NaN (ClearIsNaN) or 0; an empty text with AllowEmpty, otherwise the formatted value.
    void Clear();
    /// The text-changed notification (OnChange, changed()) with the IsChanging() guard.
    virtual void Change();

    /// Typed read-outs: 0 after a failed update or for a value outside the target's range.
    virtual quint8 AsByte();
    virtual double AsDouble();
    virtual int AsInteger();
    virtual int AsLongint();
    virtual qint8 AsShortInt();
    virtual float AsSingle();
    virtual quint16 AsWord();
    /// The text as an amount in words; "ERROR" when it is not an amount.
    QString AsMoneyStr() const;

    bool IsValid() const;
    bool IsChanging() const;
    /// Set on entering the edit, cleared when a text is taken on leaving.
    bool Focused() const;

    /// The form or field frame the edit sits in (nullptr for a parentless edit).
    QWidget* OwnerWidget() const;
    /// Design mode: no focus moves from checks; a designer plugin sets it.
    bool IsDesigning() const;
    void SetDesigning(bool AValue);

    /// The keystroke filter's length limit for the current settings.
    int MaxTextLength() const;
    /// Whether the keystroke filter lets the text change from OldText to NewText.
    bool IsAcceptableEdit(const QString& OldText, const QString& NewText) const;
    /// Why the filter refuses the change from OldText to NewText; empty when it accepts it.
    QString RefusalReason(const QString& OldText, const QString& NewText) const;
    /// The reason last shown for a refused edit; empty after an accepted one.
    QString LastRefusal() const;
    /// Inserts S at the cursor (replacing the selection) when the filter accepts it; beeps otherwise.
    bool InsertChecked(const QString& S);
    /// Pastes from the clipboard through the filter.
    bool PasteChecked(QClipboard::Mode Mode = QClipboard::Clipboard);

Q_SIGNALS:
    void changed();
    void parTypeChanged(qxnum::TParType ParType);
    void unitSystemChanged(qxnum::TUnitSystem UnitSystem);
    void valueChanged(double Value);
    void valueEditingFinished();

protected:
    bool event(QEvent* E) override;
    void keyPressEvent(QKeyEvent* E) override;
    void focusInEvent(QFocusEvent* E) override;
    void focusOutEvent(QFocusEvent* E) override;
    void contextMenuEvent(QContextMenuEvent* E) override;
    void mouseReleaseEvent(QMouseEvent* E) override;
    void dropEvent(QDropEvent* E) override;
    void inputMethodEvent(QInputMethodEvent* E) override;

    /// Text with the selection (or nothing at the cursor) replaced by S.
    QString CandidateText(const QString& S) const;
    void ApplyAlignment();
    void ApplyTextColour();
    void SelectAndFocus();

private:
    friend class TCustomNumEditPrivate;
    bool CancelButtonActivated() const;
    bool ReadOutRange(TDataType RangeOf, Extended Hi);
    void SetTextIfDiffers(const QString& S);
    bool EvaluateText(bool Exiting);
    /// Emits valueChanged when the held value differs from the one last signalled.
    void NotifyValue();
    /// Beep and tooltip for a refused edit; hides a shown tooltip after an accepted one.
    void Refuse(const QString& Reason);
    void Accepted();

    double PropValue() { return static_cast<double>(GetValue()); }
    void SetPropValue(double AValue) { SetValue(AValue); }
    double PropScaledValue() const { return static_cast<double>(ScaledValue()); }
    void SetPropScaledValue(double AValue) { SetScaledValue(AValue); }
    double PropMin() const { return static_cast<double>(Min()); }
    void SetPropMin(double AValue) { SetMin(AValue); }
    double PropMax() const { return static_cast<double>(Max()); }
    void SetPropMax(double AValue) { SetMax(AValue); }
    double PropCustomScale() const { return static_cast<double>(CustomScale()); }
    void SetPropCustomScale(double AValue) { SetCustomScale(AValue); }
    double PropScaleOffset() const { return static_cast<double>(ScaleOffset()); }
    void SetPropScaleOffset(double AValue) { SetScaleOffset(AValue); }

    const std::unique_ptr<TCustomNumEditPrivate> d;
};

/// The published numeric edit, registered as "TNumEdit".
class QXNUM_WIDGETS_EXPORT TNumEdit : public TCustomNumEdit {
    Q_OBJECT

public:
    explicit TNumEdit(QWidget* Parent = nullptr) : TCustomNumEdit(Parent) {}
};

} // namespace qxnum

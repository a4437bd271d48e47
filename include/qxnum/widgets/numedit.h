// The numeric edit: a QLineEdit that holds one value in base units and shows it in display units.
//
// Value model
//   Value() is kept in base units; the text shows it through ValueString with the parameter type,
//   unit system, custom scale/offset, data type and numeric type. Leaving the edit evaluates the
//   text (UpdateValue): a plain number is converted to base units and checked against Min/Max; a
//   value out of range is refused with a message, the text is selected and the focus comes back.
//   NaN stands for "no value" (empty text with AllowEmpty and ClearIsNaN, Clear with ClearIsNaN).
//   With OnExprCheckVariable assigned (and InhibitExprCheckVar off) the text may be an expression;
//   its identifiers are resolved through that callback.
//
// Keystroke filter (typing, Ctrl+V / Shift+Insert, the context menu's Paste, middle-click paste,
// drops and input-method commits all go through it):
//   - Deleting is always allowed, and so are Qt's editing keys (selection, undo/redo, Home/End,
//     Ctrl+A, cut, copy). Everything else that inserts text is checked as a whole edit: the
//     inserted characters must be allowed, and the new text may not break a rule more than the old
//     one did (so a formatted text such as "1,234.50" stays editable).
//   - Allowed: digits, one leading "+" or "-", one decimal separator (NumInpFormatSettings) when
//     decimals are allowed, and "E"/"e" after at least one digit, followed by an optional sign and
//     digits. ntNumber also accepts the thousands separator; ntCurrency the thousands separator,
//     the currency string, parentheses and blanks, a sign anywhere but no exponent.
//   - Decimals: at most Decimals for ntFixed, ntNumber and ntCurrency, at most FormatDecimalCount
//     of the picture for ntParType, no limit for ntGeneral and ntExponent (they count significant
//     digits), none for the integer data types (which take no exponent either).
//   - Exponent, counted from the "E" to the end: at most FormatExponentLength characters for
//     ntParType (none when the picture has no "E"), otherwise at most "E-4932" (6).
//   - Length: at most MaxTextLength() characters (Digits, or Digits + 3 + Decimals for the float
//     forms that may show an exponent). It limits typing only: the edit's own text is never cut
//     (QLineEdit's maxLength is left at its default).
//   - While the expression path is active: letters, digits, "_", the decimal separator, the
//     parser's argument separator, + - * / ^, parentheses and blanks, without a length limit; the
//     expression itself is checked by UpdateValue on leaving.
//   - A pasted text is trimmed and only its first line is taken.
//   - A key from the keypad's decimal key types the locale's decimal separator.
//   - A refused edit beeps (QApplication::beep) and changes nothing.
//   - Enter moves to the next control when TabOnEnterKey is set; Up and Down move to the previous
//     and next control (posted, after the edit's own key handling).
//
// Focus: entering sets Focused(); moving the focus to another widget of the window runs
// UpdateValue(true). Another window or a popup (context menu, message box) taking the focus is not
// leaving the edit.
//
// The cancel-button exemption of Valid: when the widget receiving the focus is a button of the
// edit's own window that cancels it, no range check is made. A button cancels when it has the
// dynamic property "ModalResult" equal to mrCancel (2), or sits in a QDialogButtonBox with the
// RejectRole (the standard Cancel, Close and Abort buttons).
//
// Painting: QLineEdit paints; the edit keeps its alignment (the resting Alignment(), left while it
// has the focus) and the palette's text colour (NegCol for negative values, the normal colour
// otherwise, ReadOnlyFontColor when read-only) in step with the value. The disabled colour group
// is left alone so a disabled edit still looks disabled. The normal colour is the palette's text
// colour: a palette the host gives the edit (or its parent) sets a new normal colour.
//
// Change notification: use OnChange or the changed() signal. While they run IsChanging() is true
// and the edit neither reformats nor rewrites its text, so a handler may read Value safely.
// Handlers connected directly to textChanged run after that window.
#pragma once

#include <qxnum/widgets_export.h>

#include <qxnum/dialogs.h>
#include <qxnum/numtext.h>
#include <qxnum/parser.h>

#include <QClipboard>
#include <QColor>
#include <QLineEdit>

#include <functional>

namespace qxnum {

using TNotifyEvent = std::function<void(QObject* Sender)>;
// Supplies or changes the value on every read (AValue is the stored base value).
using TGetNumValueEvent = std::function<void(QObject* Sender, Extended& AValue)>;
// Changes a value parsed from NumText before it is stored.
using TSetNumValueEvent = std::function<void(QObject* Sender, const QString& NumText, Extended& AValue)>;
// Called after every value-to-text formatting; may change NumText. AValue is the display value
// before the unit table factor (base / CustomScale + ScaleOffset).
using TGetNumTextEvent = std::function<void(QObject* Sender, QString& NumText, Extended AValue)>;
// Application range check: set ErrorMessage to refuse AValue. The built-in Min/Max check still
// runs when the message is left empty.
using TRangeValidateEvent = std::function<void(QObject* Sender, Extended AValue, Extended AMin, Extended AMax,
                                               QString& ErrorMessage)>;

class QXNUM_WIDGETS_EXPORT TCustomNumEdit : public QLineEdit {
    Q_OBJECT

public:
    explicit TCustomNumEdit(QWidget* Parent = nullptr);
    ~TCustomNumEdit() override;

    // "No value": the quiet NaN with the sign bit set.
    static Extended NaN();
    // A button that cancels its dialog (see the header comment).
    static bool IsCancelButton(const QWidget* Widget);

    // Value in base units. Value() may evaluate the text (expression path) and fires OnGetNumValue.
    Extended Value() { return GetValue(); }
    void SetValue(Extended AValue);
    Extended GetValue();
    // The stored value after OnGetNumValue, without looking at the text.
    Extended GetFValue();
    // Evaluates the text first (UpdateValue(false)).
    Extended GetUpdatedValue();
    // Value in display units.
    Extended ScaledValue() const;
    void SetScaledValue(Extended AValue);

    Extended Min() const { return FMin; }
    void SetMin(Extended AValue);
    Extended Max() const { return FMax; }
    void SetMax(Extended AValue);
    quint16 Digits() const { return FDigits; }
    void SetDigits(quint16 AValue);
    // For ntParType the decimal count of the effective picture, otherwise the stored count.
    quint16 Decimals() const;
    void SetDecimals(quint16 AValue);
    TDataType DataType() const { return FDataType; }
    void SetDataType(TDataType AValue);
    TNumericType NumericType() const { return FNumericType; }
    void SetNumericType(TNumericType AValue);
    TParType ParType() const { return FParType; }
    virtual void SetParType(TParType AValue);
    TUnitSystem UnitSystem() const { return FUnitSystem; }
    virtual void SetUnitSystem(TUnitSystem AValue);
    QString CustomFormat() const { return Fcustomformat; }
    void SetCustomFormat(const QString& AValue);
    Extended CustomScale() const { return FCustomScale; }
    // Ignored unless greater than 1e-14.
    void SetCustomScale(Extended AValue);
    Extended ScaleOffset() const { return FScaleOffset; }
    void SetScaleOffset(Extended AValue);
    bool TrimZeroes() const { return FTrimZeroes; }
    void SetTrimZeroes(bool AValue);
    bool AllowEmpty() const { return FAllowEmpty; }
    void SetAllowEmpty(bool AValue);
    bool ClearIsNaN() const { return FClearIsNaN; }
    void SetClearIsNaN(bool AValue) { FClearIsNaN = AValue; }
    QColor NegCol() const { return FNegColor; }
    void SetNegCol(const QColor& AValue);
    bool Validate() const { return FValidate; }
    void SetValidate(bool AValue);
    QColor ReadOnlyFontColor() const { return FReadOnlyFontColor; }
    void SetReadOnlyFontColor(const QColor& AValue);
    // Resting horizontal alignment: Qt::AlignLeft, Qt::AlignRight (default) or Qt::AlignHCenter.
    Qt::Alignment Alignment() const { return FAlignment; }
    void SetAlignment(Qt::Alignment AValue);
    bool TabOnEnterKey() const { return FTabOnEnterKey; }
    void SetTabOnEnterKey(bool AValue) { FTabOnEnterKey = AValue; }
    bool InhibitExprCheckVar() const { return FInhibitExprCheckVar; }
    void SetInhibitExprCheckVar(bool AValue) { FInhibitExprCheckVar = AValue; }
    // Used by the labelled input: whether its labels follow the edit's enabled and visible state.
    bool CopyEnabled() const { return FCopyEnabled; }
    void SetCopyEnabled(bool AValue) { FCopyEnabled = AValue; }
    bool CopyVisible() const { return FCopyVisible; }
    void SetCopyVisible(bool AValue) { FCopyVisible = AValue; }
    // The normal (non-negative) text colour, taken from the palette.
    QColor NormalFontColor() const { return OldColor; }

    // Events.
    TGetNumTextEvent OnGetNumText() const { return FOnGetNumText; }
    void SetOnGetNumText(TGetNumTextEvent AEvent) { FOnGetNumText = std::move(AEvent); }
    TSetNumValueEvent OnSetNumValue() const { return FOnSetNumValue; }
    void SetOnSetNumValue(TSetNumValueEvent AEvent) { FOnSetNumValue = std::move(AEvent); }
    TGetNumValueEvent OnGetNumValue() const { return FOnGetNumValue; }
    void SetOnGetNumValue(TGetNumValueEvent AEvent) { FOnGetNumValue = std::move(AEvent); }
    TRangeValidateEvent OnRangeValidate() const { return FOnRangeValidate; }
    void SetOnRangeValidate(TRangeValidateEvent AEvent) { FOnRangeValidate = std::move(AEvent); }
    TNotifyEvent OnParTypeChange() const { return FOnParTypeChange; }
    void SetOnParTypeChange(TNotifyEvent AEvent) { FOnParTypeChange = std::move(AEvent); }
    TNotifyEvent OnUnitSystemChange() const { return FOnUnitSystemChange; }
    void SetOnUnitSystemChange(TNotifyEvent AEvent) { FOnUnitSystemChange = std::move(AEvent); }
    TOnCheckVariableEvent OnExprCheckVariable() const { return FOnExprCheckVariable; }
    void SetOnExprCheckVariable(TOnCheckVariableEvent AEvent) { FOnExprCheckVariable = std::move(AEvent); }
    TNotifyEvent OnChange() const { return FOnChange; }
    void SetOnChange(TNotifyEvent AEvent) { FOnChange = std::move(AEvent); }

    // True while OnExprCheckVariable is assigned and InhibitExprCheckVar is off.
    bool ExprPathActive() const;
    // FCustomScale * ParScale[ParType][UnitSystem].
    Extended Scale() const;
    // Text of a base value as this edit shows it (fires OnGetNumText).
    QString GetValueString(Extended AValue);

    // Reformats the text from the value and sets the length limit and the text colour.
    virtual void FormatText();
    // Keeps Min, Max and the value inside the data type's range (NaN stays "no value").
    virtual void CheckRange();
    // Range check with message; false when AValue is refused.
    virtual bool Valid(Extended AValue);
    // Evaluates the text into the value; false after a refused or unreadable text.
    bool UpdateValue(bool Exiting);
    // Value NaN (ClearIsNaN) or 0; an empty text with AllowEmpty, otherwise the formatted value.
    void Clear();
    // The text-changed notification (OnChange, changed()) with the IsChanging() guard.
    virtual void Change();

    // Typed read-outs: 0 after a failed update or for a value outside the target's range.
    virtual quint8 AsByte();
    virtual double AsDouble();
    virtual int AsInteger();
    virtual int AsLongint();
    virtual qint8 AsShortInt();
    virtual float AsSingle();
    virtual quint16 AsWord();
    // The text as an amount in words; "ERROR" when it is not an amount.
    QString AsMoneyStr() const;

    bool IsValid() const { return FIsValid; }
    bool IsChanging() const { return FChanging; }
    // Set on entering the edit, cleared when a text is taken on leaving.
    bool Focused() const { return FFocused; }

    // The form or field frame the edit sits in (nullptr for a parentless edit).
    QWidget* OwnerWidget() const;
    // Design mode: no focus moves from checks; a designer plugin sets it.
    bool IsDesigning() const { return FDesigning; }
    void SetDesigning(bool AValue) { FDesigning = AValue; }

    // The keystroke filter's length limit for the current settings.
    int MaxTextLength() const { return FMaxTextLength; }
    // Whether the keystroke filter lets the text change from OldText to NewText.
    bool IsAcceptableEdit(const QString& OldText, const QString& NewText) const;
    // Inserts S at the cursor (replacing the selection) when the filter accepts it; beeps otherwise.
    bool InsertChecked(const QString& S);
    // Pastes from the clipboard through the filter.
    bool PasteChecked(QClipboard::Mode Mode = QClipboard::Clipboard);

Q_SIGNALS:
    void changed();
    void parTypeChanged();
    void unitSystemChanged();

protected:
    bool event(QEvent* E) override;
    void keyPressEvent(QKeyEvent* E) override;
    void focusInEvent(QFocusEvent* E) override;
    void focusOutEvent(QFocusEvent* E) override;
    void contextMenuEvent(QContextMenuEvent* E) override;
    void mouseReleaseEvent(QMouseEvent* E) override;
    void dropEvent(QDropEvent* E) override;
    void inputMethodEvent(QInputMethodEvent* E) override;

    // Text with the selection (or nothing at the cursor) replaced by S.
    QString CandidateText(const QString& S) const;
    void ApplyAlignment();
    void ApplyTextColour();
    void SelectAndFocus();

private:
    struct TTypingRules;
    TTypingRules TypingRules() const;
    bool CancelButtonActivated() const;
    bool ReadOutRange(TDataType RangeOf, Extended Hi);
    void SetTextIfDiffers(const QString& S);

    TGetNumTextEvent FOnGetNumText;
    TSetNumValueEvent FOnSetNumValue;
    TGetNumValueEvent FOnGetNumValue;
    TRangeValidateEvent FOnRangeValidate;
    TUnitSystem FUnitSystem = usSI;
    bool FCopyEnabled = true;
    bool FCopyVisible = true;
    Extended FCustomScale = 1.0L;
    Extended FScaleOffset = 0.0L;
    QString Fcustomformat;
    TNotifyEvent FOnParTypeChange;
    TNotifyEvent FOnUnitSystemChange;
    bool FTrimZeroes = false;
    bool FAllowEmpty = false;
    QColor FReadOnlyFontColor = QColor(0, 0, 255);
    Qt::Alignment FAlignment = Qt::AlignRight;
    quint16 FDecimals = 2;
    quint16 FDigits = 12;
    bool FFocused = false;
    Extended FMax = 0.0L;
    Extended FMin = 0.0L;
    QColor FNegColor = QColor(0, 0, 0);
    TNumericType FNumericType = ntGeneral;
    QColor OldColor;
    TDataType FDataType = dtExtended;
    bool FTabOnEnterKey = false;
    Extended FValue = 0.0L;
    bool FValidate = true;
    bool FInhibitExprCheckVar = false;
    TOnCheckVariableEvent FOnExprCheckVariable;
    bool FClearIsNaN = false;
    TParType FParType = ptNone;
    bool FChanging = false;
    bool FIsValid = true;

    TNotifyEvent FOnChange;
    int FMaxTextLength = 12;
    bool FDesigning = false;
    bool FEvaluating = false;      // an expression of this edit is being calculated
    bool FApplyingPalette = false; // our own palette change, not the host's
    QColor FFontColor;             // the colour FormatText chose (negative or normal)
    QColor FAppliedColour;         // the text colour last put into the palette
};

// The published numeric edit, registered as "TNumEdit".
class QXNUM_WIDGETS_EXPORT TNumEdit : public TCustomNumEdit {
    Q_OBJECT

public:
    explicit TNumEdit(QWidget* Parent = nullptr) : TCustomNumEdit(Parent) {}
};

} // namespace qxnum

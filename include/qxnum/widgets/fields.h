/// \file
/// The eight control fields: the ordinary input controls of a form, each with the field contract
/// (INumFld) so that a field form can save, restore, compare and reset them. The common behaviour
/// (properties, stream record, XML content, events, copy and form-create values) is TFieldBase's;
/// this header lists what each control stores.
///
///  class               control                 stream record (then Visible, Enabled)   XML children
///  TStringFld          QLineEdit               text                                     "Value"
///  TMemoFld            QPlainTextEdit          line count, each line (no Visible/Enabled) "Value" (the text)
///  TCheckFld           QCheckBox               Checked (boolean)                        "Value" (boolean)
///  TRadioBtnFld        QRadioButton            Checked (boolean)                        "Value" (boolean)
///  TRadioGrpFld        QGroupBox + buttons     ItemIndex (integer)                      "ItemIndex"
///  TCheckListBoxFld    QListWidget             item count N, N states (integers)        "Items" / "Item"
///  TComboBoxFld        QComboBox               ItemIndex, text                          "ItemIndex", "Text"
///  TDateTimePickerFld  QDateTimeEdit           days since 1899-12-30 (float)            "Value" (date-time)
///
/// Every class registers itself under its class name ("TStringFld", ...) so that a form can create
/// it by name. Assign(Source) copies the value from a field of the same class (or a subclass) and
/// raises EConvertError "Cannot assign a X to a Y" for anything else.
///
/// XmlValueChanged treats an element whose text is not of its type as a change (the write that
/// follows replaces it). GetXMLValueText shows a stored value the way GetValueText shows the current
/// one, the raw text when it is not of its type, and "<no value>" when the element is missing.
#pragma once

#include <qxnum/widgets/fieldbase.h>

#include <QCheckBox>
#include <QComboBox>
#include <QDateTimeEdit>
#include <QGroupBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QRadioButton>

#include <optional>

namespace qxnum {

class TRadioGrpFldPrivate;
class TCheckListBoxFldPrivate;
class TComboBoxFldPrivate;

/// State of a check-list item; the names are the ones written to XML, the ordinals the stream's.

/// Display text of a list of captions: joined by "; ", and once the text is longer than 120
/// characters, "..." is appended and the rest left out. Shared by the check-list field and tests.
QXNUM_WIDGETS_EXPORT QString JoinCaptions(const QStringList& Captions);

/// --- Text ---------------------------------------------------------------------------------------

/// A single-line text. GetReadOnly is the edit's ReadOnly; the variant value is the text.
class QXNUM_WIDGETS_EXPORT TStringFld : public QLineEdit, public TValueField<QString> {
    Q_OBJECT
    Q_INTERFACES(qxnum::INumFld)
    QXNUM_FIELD_PROPERTIES
    Q_PROPERTY(QString Text READ Text WRITE SetText)

public:
    explicit TStringFld(QWidget* Parent = nullptr);
    ~TStringFld() override;

    QString Text() const { return text(); }
    void SetText(const QString& AValue) { setText(AValue); }
    void Assign(QObject* Source);

    bool GetReadOnly() const override { return isReadOnly(); }
    bool XmlValueChanged(TXmlNode ParentXmlNode) override;
    QVariant GetVariantValue() override { return text(); }
    QString GetValueText() override { return text(); }
    QString GetXMLValueText(TXmlNode ParentXmlNode) override;

protected:
    QString CurrentValue() override { return text(); }
    void PutValue(const QString& AValue) override { setText(AValue); }
    void WriteStreamValue(TWriter& Writer) override;
    TApplyValue ReadStreamValue(TReader& Reader) override;
    void WriteXmlValue(TXmlNode Node) override;
    TApplyValue ReadXmlValue(TXmlNode Node) override;
};

/// A multi-line text. The stream record is the line count and the lines, without Visible and
/// Enabled; lines are the text split at `"\n"`, and the empty text has no lines (a single empty line
/// reads back as the empty text too). The copy value is the whole text. GetValueText shows the first
/// 120 characters and "..." when the text is longer (119 when the 120th would split a surrogate
/// pair). GetReadOnly is the memo's ReadOnly.
class QXNUM_WIDGETS_EXPORT TMemoFld : public QPlainTextEdit, public TValueField<QString> {
    Q_OBJECT
    Q_INTERFACES(qxnum::INumFld)
    QXNUM_FIELD_PROPERTIES
    Q_PROPERTY(QString Text READ Text WRITE SetText)
    Q_PROPERTY(QStringList Lines READ Lines WRITE SetLines)

public:
    /// Qt-style setters of the properties above, which forms compiled by uic call.
    void setLines(const QStringList& AValue) { SetLines(AValue); }

    explicit TMemoFld(QWidget* Parent = nullptr);
    ~TMemoFld() override;

    /// The text with its line breaks as `"\n"` (non-breaking spaces stay as they are).
    QString Text() const;
    void SetText(const QString& AValue) { setPlainText(AValue); }
    QStringList Lines() const;
    void SetLines(const QStringList& AValue);
    void Assign(QObject* Source);

    bool GetReadOnly() const override { return isReadOnly(); }
    bool XmlValueChanged(TXmlNode ParentXmlNode) override;
    QVariant GetVariantValue() override { return Text(); }
    QString GetValueText() override;
    QString GetXMLValueText(TXmlNode ParentXmlNode) override;

protected:
    QString CurrentValue() override { return Text(); }
    void PutValue(const QString& AValue) override { setPlainText(AValue); }
    void WriteStreamValue(TWriter& Writer) override;
    TApplyValue ReadStreamValue(TReader& Reader) override;
    bool StreamHasVisibleEnabled() const override { return false; }
    void WriteXmlValue(TXmlNode Node) override;
    TApplyValue ReadXmlValue(TXmlNode Node) override;
};

/// --- Buttons ------------------------------------------------------------------------------------

class TBoolFieldPrivate;

/// What a check box and a radio button field share: the value is Checked, a boolean in both media
/// ("Value" in XML), shown as "checked" or "unchecked". A class passes its own meta-object, so that
/// Assign accepts a field of that class or a subclass.
class QXNUM_WIDGETS_EXPORT TBoolField : public TValueField<bool> {
public:
    TBoolField(QWidget* Control, const QMetaObject& FieldClass);

    void Assign(QObject* Source);

    bool XmlValueChanged(TXmlNode ParentXmlNode) override;
    QVariant GetVariantValue() override;
    QString GetValueText() override;
    QString GetXMLValueText(TXmlNode ParentXmlNode) override;

protected:
    void WriteStreamValue(TWriter& Writer) override;
    TApplyValue ReadStreamValue(TReader& Reader) override;
    void WriteXmlValue(TXmlNode Node) override;
    TApplyValue ReadXmlValue(TXmlNode Node) override;

private:
    TBoolFieldPrivate* Priv() const;
};

/// A check box; its value is Checked (a partially checked tri-state box is not Checked). State
/// gives all three states; AllowGrayed is Qt's tristate, and setting cbGrayed turns it on (a
/// QCheckBox holds a partial check only while it is tristate).
class QXNUM_WIDGETS_EXPORT TCheckFld : public QCheckBox, public TBoolField {
    Q_OBJECT
    Q_INTERFACES(qxnum::INumFld)
    QXNUM_FIELD_PROPERTIES
    Q_PROPERTY(bool Checked READ Checked WRITE SetChecked)
    Q_PROPERTY(bool AllowGrayed READ AllowGrayed WRITE SetAllowGrayed)
    Q_PROPERTY(qxnum::TCheckBoxState State READ State WRITE SetState)

public:
    /// Qt-style setters of the properties above, which forms compiled by uic call.
    void setAllowGrayed(bool AValue) { SetAllowGrayed(AValue); }

    explicit TCheckFld(QWidget* Parent = nullptr);
    ~TCheckFld() override;

    bool Checked() const { return checkState() == Qt::Checked; }
    void SetChecked(bool AValue) { setCheckState(AValue ? Qt::Checked : Qt::Unchecked); }
    bool AllowGrayed() const { return isTristate(); }
    void SetAllowGrayed(bool AValue) { setTristate(AValue); }
    TCheckBoxState State() const;
    void SetState(TCheckBoxState AValue);

protected:
    bool CurrentValue() override { return Checked(); }
    void PutValue(const bool& AValue) override { SetChecked(AValue); }
};

/// A radio button. SetChecked(false) unchecks it also when it is the checked button of its
/// auto-exclusive siblings (Qt alone refuses that), so a read or a restore can always clear it;
/// SetChecked(true) unchecks the siblings as usual.
class QXNUM_WIDGETS_EXPORT TRadioBtnFld : public QRadioButton, public TBoolField {
    Q_OBJECT
    Q_INTERFACES(qxnum::INumFld)
    QXNUM_FIELD_PROPERTIES
    Q_PROPERTY(bool Checked READ Checked WRITE SetChecked)

public:
    explicit TRadioBtnFld(QWidget* Parent = nullptr);
    ~TRadioBtnFld() override;

    bool Checked() const { return isChecked(); }
    void SetChecked(bool AValue);

protected:
    bool CurrentValue() override { return isChecked(); }
    void PutValue(const bool& AValue) override { SetChecked(AValue); }
};

/// A radio group: a group box (its title is the caption) holding one radio button per item, laid
/// out in Columns columns, filled top to bottom. ItemIndex is the checked item; an index without a
/// button (-1, or past the last item, e.g. from a file written when the group had more items)
/// checks none and is kept as it is, so writing the field back loses nothing, and setting the
/// items later checks the button it names. A click on a button sets ItemIndex and fires OnClick.
class QXNUM_WIDGETS_EXPORT TRadioGrpFld : public QGroupBox, public TValueField<int> {
    Q_OBJECT
    Q_INTERFACES(qxnum::INumFld)
    QXNUM_FIELD_PROPERTIES
    Q_PROPERTY(QString Caption READ Caption WRITE SetCaption)
    Q_PROPERTY(QStringList Items READ Items WRITE SetItems)
    Q_PROPERTY(int ItemIndex READ ItemIndex WRITE SetItemIndex)
    Q_PROPERTY(int Columns READ Columns WRITE SetColumns)

public:
    /// Qt-style setters of the properties above, which forms compiled by uic call.
    void setCaption(const QString& AValue) { SetCaption(AValue); }
    void setItems(const QStringList& AValue) { SetItems(AValue); }
    void setItemIndex(int AValue) { SetItemIndex(AValue); }
    void setColumns(int AValue) { SetColumns(AValue); }

    explicit TRadioGrpFld(QWidget* Parent = nullptr);
    ~TRadioGrpFld() override;

    QString Caption() const { return title(); }
    void SetCaption(const QString& AValue) { setTitle(AValue); }
    QStringList Items() const;
    void SetItems(const QStringList& AValue);
    int ItemIndex() const;
    void SetItemIndex(int AValue);
    int Columns() const;
    /// At least 1.
    void SetColumns(int AValue);
    /// The button of item Index, nullptr when there is none.
    QRadioButton* Button(int Index) const;
    TNotifyEvent OnClick() const;
    void SetOnClick(TNotifyEvent AEvent);
    void Assign(QObject* Source);

    bool XmlValueChanged(TXmlNode ParentXmlNode) override;
    QVariant GetVariantValue() override { return ItemIndex(); }
    /// The caption of the checked item; empty when ItemIndex names no item.
    QString GetValueText() override;
    QString GetXMLValueText(TXmlNode ParentXmlNode) override;

protected:
    int CurrentValue() override { return ItemIndex(); }
    void PutValue(const int& AValue) override { SetItemIndex(AValue); }
    void WriteStreamValue(TWriter& Writer) override;
    TApplyValue ReadStreamValue(TReader& Reader) override;
    void WriteXmlValue(TXmlNode Node) override;
    TApplyValue ReadXmlValue(TXmlNode Node) override;

private:
    TRadioGrpFldPrivate* Priv() const;
    void BuildButtons();
    void UpdateChecks();
    QString ItemCaption(int Index) const;
};

/// --- Lists --------------------------------------------------------------------------------------

/// A check-list box: one tri-state check per item (the user cycles through grayed only with
/// AllowGrayed; a program may set any state). Items that a host adds straight through QListWidget
/// take part as well. A state counts as "checked" for GetValueText when it is not cbUnchecked.
///
/// Reading tolerates a changed item list. Stream: the first min(N, Count) states are applied in
/// order, the rest are read and dropped (the reader ends after all N). XML: each current item takes
/// the state of the first "Item" whose "Caption" is its text; items without an entry keep their
/// state, entries without an item are ignored. A state outside the three (stream ordinal or XML
/// name) is an error and the read changes nothing.
/// Writing XML rewrites "Items" whole (an "Items" left from older content is emptied first, so
/// entries of items that no longer exist go away) and leaves an existing "NoMSND" element untouched
/// (this field writes none).
/// XmlValueChanged: with "Items", changed when the entries are not exactly the current items with
/// their states (an item without an entry, a different state, or a different number of entries);
/// without it, ChangedAfterOK.
class QXNUM_WIDGETS_EXPORT TCheckListBoxFld : public QListWidget, public TValueField<QList<TCheckBoxState>> {
    Q_OBJECT
    Q_INTERFACES(qxnum::INumFld)
    QXNUM_FIELD_PROPERTIES
    Q_PROPERTY(QStringList Items READ Items WRITE SetItems)
    Q_PROPERTY(bool AllowGrayed READ AllowGrayed WRITE SetAllowGrayed)

public:
    /// Qt-style setters of the properties above, which forms compiled by uic call.
    void setItems(const QStringList& AValue) { SetItems(AValue); }
    void setAllowGrayed(bool AValue) { SetAllowGrayed(AValue); }

    explicit TCheckListBoxFld(QWidget* Parent = nullptr);
    ~TCheckListBoxFld() override;

    int Count() const { return count(); }
    QStringList Items() const;
    /// Replaces the items; every new item is unchecked.
    void SetItems(const QStringList& AValue);
    void AddItem(const QString& Caption, TCheckBoxState AState = cbUnchecked);
    /// cbUnchecked for an index out of range; setting one out of range does nothing.
    TCheckBoxState State(int Index) const;
    void SetState(int Index, TCheckBoxState AValue);
    bool Checked(int Index) const { return State(Index) != cbUnchecked; }
    void SetChecked(int Index, bool AValue) { SetState(Index, AValue ? cbChecked : cbUnchecked); }
    bool AllowGrayed() const;
    void SetAllowGrayed(bool AValue);
    /// The state of every item, in order.
    QList<TCheckBoxState> States() const;
    /// Applies the first min(size, Count) states.
    void SetStates(const QList<TCheckBoxState>& AValue);
    /// Copies the states (by position, as far as both lists go).
    void Assign(QObject* Source);

    bool XmlValueChanged(TXmlNode ParentXmlNode) override;
    /// The states as a list of ordinals.
    QVariant GetVariantValue() override;
    /// The captions of the checked items (see JoinCaptions).
    QString GetValueText() override;
    /// The captions of the checked entries of "Items", in stored order.
    QString GetXMLValueText(TXmlNode ParentXmlNode) override;

protected:
    QList<TCheckBoxState> CurrentValue() override { return States(); }
    void PutValue(const QList<TCheckBoxState>& AValue) override { SetStates(AValue); }
    void WriteStreamValue(TWriter& Writer) override;
    TApplyValue ReadStreamValue(TReader& Reader) override;
    void WriteXmlValue(TXmlNode Node) override;
    TApplyValue ReadXmlValue(TXmlNode Node) override;

private:
    TCheckListBoxFldPrivate* Priv() const;
    void PrepareItem(QListWidgetItem* Item) const;
};

/// A combo box with an item index and a text. In every style but csDropDownList the box is
/// editable and the text is free: setting ItemIndex shows that item's text, setting the text
/// leaves ItemIndex alone. In csDropDownList the text is always the selected item's: SetText
/// selects the item of that text (-1 when there is none), and a read that restores ItemIndex keeps
/// the stored text only as SavedText, because the index decides.
///
/// SavedText is the last text the user confirmed (Change, run on picking an item or typing) or a
/// read brought in; RevertToSavedText goes back to it. The copy value is ItemIndex alone (the text
/// is not compared); the form-create value is ItemIndex and text.
///
/// Stream record: ItemIndex (integer), the text (string), Visible, Enabled. The older layout had no
/// text: when the value after ItemIndex is not a string (any of the filer's string tags 06, 0C, 12,
/// 14), the text the box had before the read is kept. XML: "ItemIndex" and "Text".
/// The index written is the item the text names, -1 for a text that is none of the items (as the
/// classic box reports after typing), except that what a read brought in is written back as read:
/// while the box still shows the index and text of the last read, that index is written, even
/// when the text is another item's or none.
/// GetValueText is the selected item's text, or the edit text when ItemIndex names no item.
class QXNUM_WIDGETS_EXPORT TComboBoxFld : public QComboBox, public TFieldBase {
    Q_OBJECT
    Q_INTERFACES(qxnum::INumFld)
    QXNUM_FIELD_PROPERTIES
    Q_PROPERTY(qxnum::TComboBoxStyle Style READ Style WRITE SetStyle)
    Q_PROPERTY(QStringList Items READ Items WRITE SetItems)
    Q_PROPERTY(int ItemIndex READ ItemIndex WRITE SetItemIndex)
    Q_PROPERTY(QString Text READ Text WRITE SetText)

public:
    /// Qt-style setters of the properties above, which forms compiled by uic call.
    void setItems(const QStringList& AValue) { SetItems(AValue); }
    void setItemIndex(int AValue) { SetItemIndex(AValue); }

    explicit TComboBoxFld(QWidget* Parent = nullptr);
    ~TComboBoxFld() override;

    TComboBoxStyle Style() const;
    void SetStyle(TComboBoxStyle AValue);
    QStringList Items() const;
    void SetItems(const QStringList& AValue);
    int ItemIndex() const { return currentIndex(); }
    /// An index outside the items selects none (-1).
    void SetItemIndex(int AValue);
    QString Text() const { return currentText(); }
    void SetText(const QString& AValue);
    QString SavedText() const;
    void SetSavedText(const QString& AValue);
    void RevertToSavedText();
    /// Runs after every change the user makes (OnChange, then the changed() signal).
    TNotifyEvent OnChange() const;
    void SetOnChange(TNotifyEvent AEvent);
    /// Copies ItemIndex and text.
    void Assign(QObject* Source);

    bool HasChanged() override;
    void SetCopyValue() override;
    void RestoreCopyValue() override;
    void SetFormCreateVal() override;
    void ResetToFormCreateVal() override;
    bool XmlValueChanged(TXmlNode ParentXmlNode) override;
    /// The text.
    QVariant GetVariantValue() override { return currentText(); }
    QString GetValueText() override;
    /// The "Text" element's text.
    QString GetXMLValueText(TXmlNode ParentXmlNode) override;

Q_SIGNALS:
    void changed();

protected:
    /// The user changed the selection or the text: SavedText := text, then OnChange and changed().
    virtual void Change();

    void WriteStreamValue(TWriter& Writer) override;
    TApplyValue ReadStreamValue(TReader& Reader) override;
    void WriteXmlValue(TXmlNode Node) override;
    TApplyValue ReadXmlValue(TXmlNode Node) override;

private:
    TComboBoxFldPrivate* Priv() const;
    void ConnectEdit();
    /// Puts a read index and text into the box following the style's rule (see the class comment).
    void ApplyRead(std::optional<int> Index, const std::optional<QString>& NewText, bool SaveEmptyText);
};

/// --- Date and time ------------------------------------------------------------------------------

/// A date-time picker. The range covers every date a file can name that QDateTimeEdit can show,
/// 0100-01-01 00:00:00.000 to 9999-12-31 23:59:59.999, local time; a read value outside it, or no
/// valid date at all (NaN days), is an error, not a silent clamp.
/// Values are equal when they agree to the millisecond (the finest step of both media).
/// Stream: days since 1899-12-30 as a float. XML "Value": ISO 8601 local time with milliseconds,
/// "yyyy-MM-ddTHH:mm:ss.zzz"; reading also takes a blank for the "T", no milliseconds, or a date
/// alone (midnight).
/// GetValueText: FormatSettings' ShortDateFormat, then a blank and LongTimeFormat unless the time
/// is midnight (both are Qt date-time patterns).
class QXNUM_WIDGETS_EXPORT TDateTimePickerFld : public QDateTimeEdit, public TValueField<QDateTime> {
    Q_OBJECT
    Q_INTERFACES(qxnum::INumFld)
    QXNUM_FIELD_PROPERTIES
    Q_PROPERTY(QDateTime DateTime READ DateTime WRITE SetDateTime)

public:
    explicit TDateTimePickerFld(QWidget* Parent = nullptr);
    ~TDateTimePickerFld() override;

    QDateTime DateTime() const { return dateTime(); }
    void SetDateTime(const QDateTime& AValue) { setDateTime(AValue); }
    void Assign(QObject* Source);

    /// The display text of a date-time value (see the class comment).
    static QString DateTimeText(const QDateTime& Value);
    /// The XML text of a value.
    static QString XmlText(const QDateTime& Value);

    bool XmlValueChanged(TXmlNode ParentXmlNode) override;
    QVariant GetVariantValue() override { return dateTime(); }
    QString GetValueText() override { return DateTimeText(dateTime()); }
    QString GetXMLValueText(TXmlNode ParentXmlNode) override;

protected:
    QDateTime CurrentValue() override { return dateTime(); }
    void PutValue(const QDateTime& AValue) override { setDateTime(AValue); }
    bool SameValue(const QDateTime& A, const QDateTime& B) const override;
    void WriteStreamValue(TWriter& Writer) override;
    TApplyValue ReadStreamValue(TReader& Reader) override;
    void WriteXmlValue(TXmlNode Node) override;
    TApplyValue ReadXmlValue(TXmlNode Node) override;

private:
    bool InRange(const QDateTime& Value) const;
};

} // namespace qxnum

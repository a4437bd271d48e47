/// \file
/// The common part of every persistent field: the state that all fields keep, the two file media
/// (stream record and XML content) and the copy / form-create bookkeeping, written once.
///
/// A field class derives from its Qt control first and from TFieldBase (usually through
/// TValueField<T>) second, and passes itself to the base constructor:
///
///     class TStringFld : public QLineEdit, public TValueField<QString> {
///         Q_OBJECT
///         Q_INTERFACES(qxnum::INumFld)
///         QXNUM_FIELD_PROPERTIES
///     public:
///         explicit TStringFld(QWidget* Parent = nullptr) : QLineEdit(Parent), TValueField(this) {}
///     protected:
///         QString CurrentValue() override { return text(); }
///         void PutValue(const QString& V) override { setText(V); }
///         ...the four media hooks...
///     };
///
/// What the base does, so that no field repeats it:
///
/// Stream record: the value item(s) from WriteStreamValue, then Visible and Enabled as two filer
///   booleans (always written; a class whose record has no such pair says so through
///   StreamHasVisibleEnabled). ReadfromStream clears ChangedAfterOK, reads the whole record, and
///   only then changes the control: the value, and Visible / Enabled when
///   StreamReadVisibleandEnabled is set (otherwise they are read and dropped). Then SetCopyValue,
///   so a freshly read field has not changed, and last OnAfterRead. SkipfromStream reads the same
///   items through ReadStreamValue and throws the result away.
///
/// XML content (children of the field's own element): the value element(s) from WriteXmlValue,
///   then "Visible" and "Enabled" (booleans) when StreamReadVisibleandEnabled is set; the flag gates
///   the reading of them too. WriteToXML, in this order: OnXmlWriteValueChanged when the node holds
///   another value (XmlValueChanged) or EnforceXMLchanged is set, so the event sees the node before
///   the new value goes in; the value; Visible / Enabled; EnforceXMLchanged := false (it lasts for
///   exactly one write); OnAfterXMLWrite. ReadFromXML clears ChangedAfterOK, reads what is present
///   (a missing element leaves its state alone), fires OnAfterRead and, unlike the stream read,
///   takes no copy value.
///
/// Reads are all-or-nothing: the readers (ReadStreamValue, ReadXmlValue) parse and check first and
/// return an action that puts the value into the control; the base runs the actions only after
/// everything has been read. So a read that fails leaves the control exactly as it was:
/// - a stream error (EReadError from the filer, or from a field for a value it cannot hold)
///   propagates to the caller, with the reader somewhere inside the record;
/// - an XML element whose text is not of its type ("abc" where a boolean or an integer belongs)
///   raises EConvertError naming the field and the element. The container decides what to report.
///
/// Visible and Enabled are the control's own flags, as a form designer sets them, not what the
/// screen shows: Visible is !isHidden() (a field on a hidden page or in a window not shown yet is
/// still Visible), Enabled is the control's own enabled flag (not cleared by a disabled parent).
/// GetReadOnly of the non-edit fields is the negation of that Enabled.
///
/// Sender of every event is the field's control. Not copyable; meant for the user-interface thread.
///
/// Private state: TFieldBase keeps everything behind one pointer to a private class, and a field
/// class with state of its own derives its private class from that one and hands it to the
/// protected constructor (Qt's d-pointer inheritance). So every field, with or without state of
/// its own, can gain state without changing its size. TValueField<T> keeps its copy and
/// form-create value in the template itself: the contract fixes that pair, and a template's
/// layout is compiled into its users anyway; any further state of a field goes to the private
/// class.
#pragma once

#include <qxnum/numfld_intf.h>
#include <qxnum/widgets/numedit.h>

#include <QColor>
#include <QWidget>

#include <functional>
#include <memory>

namespace qxnum {

class TFieldBasePrivate;

/// The published properties that every field shares, as Qt properties. TFieldBase is no QObject,
/// so each field class puts this line into its own declaration, after Q_OBJECT.
#define QXNUM_FIELD_PROPERTIES                                                                               \
    Q_PROPERTY(int TagXML READ TagXML WRITE SetTagXML)                                                       \
    Q_PROPERTY(int Tag READ Tag WRITE SetTag)                                                                \
    Q_PROPERTY(QString CustomIDstring READ CustomIDstring WRITE SetCustomIDstring)                           \
    Q_PROPERTY(bool EnforceXMLchanged READ EnforceXMLchanged WRITE SetEnforceXMLchanged)                     \
    Q_PROPERTY(bool StreamReadVisibleandEnabled READ StreamReadVisibleandEnabled WRITE                       \
                   SetStreamReadVisibleandEnabled)                                                           \
    Q_PROPERTY(bool NoSaveWrite READ GetNoSaveWrite WRITE SetNoSaveWrite)

/// TXmlNodeEvent (Sender, Node), the type of OnAfterXMLWrite and OnXmlWriteValueChanged, comes
/// from numfld_intf.h; TNotifyEvent (Sender) from numedit.h.

class QXNUM_WIDGETS_EXPORT TFieldBase : public INumFld {
public:
    /// Control is the widget this field is; the base keeps the pointer and never owns it.
    explicit TFieldBase(QWidget* Control);
    ~TFieldBase() override;
    TFieldBase(const TFieldBase&) = delete;
    TFieldBase& operator=(const TFieldBase&) = delete;

    QWidget* FieldControl() const;

    /// Qt-style setters of the common properties (QXNUM_FIELD_PROPERTIES), which forms compiled by
    /// uic call.
    void setTagXML(int AValue) { SetTagXML(AValue); }
    void setTag(int AValue) { SetTag(AValue); }
    void setCustomIDstring(const QString& AValue) { SetCustomIDstring(AValue); }
    void setEnforceXMLchanged(bool AValue) { SetEnforceXMLchanged(AValue); }
    void setStreamReadVisibleandEnabled(bool AValue) { SetStreamReadVisibleandEnabled(AValue); }
    void setNoSaveWrite(bool AValue) { SetNoSaveWrite(AValue); }

    /// --- Common properties ---
    int TagXML() const;
    void SetTagXML(int AValue);
    /// The component's ordinary Tag (GetTag).
    int Tag() const;
    void SetTag(int AValue);
    QString CustomIDstring() const;
    void SetCustomIDstring(const QString& AValue);
    bool EnforceXMLchanged() const;
    void SetEnforceXMLchanged(bool AValue);
    bool StreamReadVisibleandEnabled() const;
    void SetStreamReadVisibleandEnabled(bool AValue);
    bool NoSaveWrite() const { return GetNoSaveWrite(); }
    TNotifyEvent OnAfterRead() const;
    void SetOnAfterRead(TNotifyEvent AEvent);
    TXmlNodeEvent OnAfterXMLWrite() const;
    void SetOnAfterXMLWrite(TXmlNodeEvent AEvent);
    TXmlNodeEvent OnXmlWriteValueChanged() const;
    void SetOnXmlWriteValueChanged(TXmlNodeEvent AEvent);

    /// Set by OkChanges when the value had changed; cleared at the start of every read. A public
    /// member by contract.
    bool ChangedAfterOK = false;

    /// Visible and Enabled as files hold them (see the header comment).
    bool FieldVisible() const;
    void SetFieldVisible(bool AValue);
    bool FieldEnabled() const;
    void SetFieldEnabled(bool AValue);

    /// --- INumFld: the operations that are the same for every field ---
    void OkChanges() override;
    /// The palette's colour for the control's foreground role; setting it sets the text,
    /// window-text and button-text colours, so that every kind of control shows it.
    QColor FontColor() const override;
    void SetFontColor(const QColor& aColor) override;
    void ReadfromStream(TReader& Reader) override;
    void SkipfromStream(TReader& Reader) override;
    void WritetoStream(TWriter& Writer) override;
    void WriteToXML(TXmlNode ParentXmlNode) override;
    void ReadFromXML(TXmlNode ParentXmlNode) override;
    bool GetNoSaveWrite() const override;
    void SetNoSaveWrite(bool Value) override;
    /// CustomIDstring when not empty, else the component name (objectName).
    QString GetIDstring() const override;
    int GetTag() const override { return Tag(); }
    int GetTagXML() const override { return TagXML(); }
    /// Not Enabled; edit-like fields override this with their ReadOnly.
    bool GetReadOnly() const override;
    void AssignXmlWriteValueChanged(TXmlNodeEvent AnXmlNodeEvent) override;

    /// Text of a missing element in GetXMLValueText.
    static QString NoValueText();

protected:
    /// For a field class with a private class of its own (derived from TFieldBasePrivate): the
    /// base takes ownership of D.
    TFieldBase(QWidget* Control, TFieldBasePrivate* D);
    TFieldBasePrivate* FieldPrivate() const { return d.get(); }

    /// Puts a value that has been read into the control; an empty action changes nothing.
    using TApplyValue = std::function<void()>;

    /// --- Hooks of the field classes ---
    /// The value item(s) of the stream record (before Visible and Enabled).
    virtual void WriteStreamValue(TWriter& Writer) = 0;
    /// Reads the value item(s) and returns what puts them into the control. Must not change the
    /// control itself; raises EReadError for a record it cannot read.
    virtual TApplyValue ReadStreamValue(TReader& Reader) = 0;
    /// False for a record without the Visible / Enabled pair.
    virtual bool StreamHasVisibleEnabled() const { return true; }
    /// Writes the value element(s) into the field's node.
    virtual void WriteXmlValue(TXmlNode Node) = 0;
    /// Parses the value element(s) that are present and returns what applies them (empty when
    /// none is present). Raises EConvertError (see XmlConvertError) for text of the wrong type.
    virtual TApplyValue ReadXmlValue(TXmlNode Node) = 0;

    /// Fires OnAfterRead.
    void DoAfterRead();

    /// --- Helpers for the hooks ---
    /// The usual XmlValueChanged: ChangedAfterOK when Node has no child Name, else Differs(child).
    bool XmlChildChanged(TXmlNode Node, const QString& Name,
                         const std::function<bool(TXmlNode)>& Differs) const;
    /// Strict readers of a child element: false when it is missing; EConvertError naming this
    /// field and the element when its text is not of the type.
    bool ReadXmlBool(TXmlNode Node, const QString& Name, bool& Value) const;
    bool ReadXmlInteger(TXmlNode Node, const QString& Name, int& Value) const;
    bool ReadXmlString(TXmlNode Node, const QString& Name, QString& Value) const;
    /// EConvertError `Field "<ID>", element "<Element>": <Reason>`.
    [[noreturn]] void XmlConvertError(const QString& Element, const QString& Reason) const;
    /// EReadError for a stream value the field cannot hold, at the reader's position.
    [[noreturn]] void StreamValueError(const TReader& Reader, const QString& Reason) const;
    /// What Assign does with a source of another class: EConvertError "Cannot assign a X to a Y".
    [[noreturn]] void AssignError(const QObject* Source) const;

private:
    const std::unique_ptr<TFieldBasePrivate> d;
};

/// A field whose copy value and form-create value are one value of type T: HasChanged,
/// SetCopyValue, RestoreCopyValue, SetFormCreateVal and ResetToFormCreateVal for free. Both
/// values start as T{}; a field whose empty value is another takes them in its constructor.
template <typename T> class QXNUM_WIDGETS_EXPORT TValueField : public TFieldBase {
public:
    using TFieldBase::TFieldBase;

    bool HasChanged() override { return !SameValue(CurrentValue(), FCopyVal); }
    void SetCopyValue() override { FCopyVal = CurrentValue(); }
    void RestoreCopyValue() override { PutValue(FCopyVal); }
    void SetFormCreateVal() override { FFormCreateVal = CurrentValue(); }
    void ResetToFormCreateVal() override { PutValue(FFormCreateVal); }

protected:
    virtual T CurrentValue() = 0;
    virtual void PutValue(const T& AValue) = 0;
    virtual bool SameValue(const T& A, const T& B) const { return A == B; }

private:
    T FCopyVal{};
    T FFormCreateVal{};
};

} // namespace qxnum

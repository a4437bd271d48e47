/// \file
/// INumFld: the contract every persistent input field implements, so that a field form can save,
/// restore, compare and reset its fields without knowing their classes.
///
/// The operations are declared in their historical slot order. Value queries are not const: a
/// field may have to evaluate pending edit text before it can answer.
#pragma once

#include <qxnum/filer.h>
#include <qxnum/xml.h>

#include <QObject>
#include <QString>
#include <QVariant>

#include <functional>

class QColor; // QtGui; only the widgets library calls FontColor / SetFontColor

namespace qxnum {

/// Interface identity of INumFld, as recorded in existing programs.
inline constexpr char INumFldIID[] = "{3B540773-C5BE-4307-8964-983787301682}";

/// A node event: the field (Sender) and the XML node it is writing.
using TXmlNodeEvent = std::function<void(QObject* Sender, TXmlNode Node)>;

class QXNUM_CORE_EXPORT INumFld {
public:
    virtual ~INumFld();

    /// 1. The current value differs from the copy value.
    virtual bool HasChanged() = 0;
    /// 2. Copy value := current value.
    virtual void SetCopyValue() = 0;
    /// 3. Current value := copy value.
    virtual void RestoreCopyValue() = 0;
    /// 4. Sets ChangedAfterOK when HasChanged (never clears it).
    virtual void OkChanges() = 0;
    /// 5. Font colour of the wrapped control.
    virtual QColor FontColor() const = 0;
    /// 6. Sets the font colour of the wrapped control.
    virtual void SetFontColor(const QColor& aColor) = 0;
    /// 7. Reads the field's stream record, then takes the copy value.
    virtual void ReadfromStream(TReader& Reader) = 0;
    /// 8. Consumes the field's stream record without changing anything.
    virtual void SkipfromStream(TReader& Reader) = 0;
    /// 9. Writes the field's stream record.
    virtual void WritetoStream(TWriter& Writer) = 0;
    /// 10. Writes the field's content into ParentXmlNode (the field's own "INumFld" element).
    virtual void WriteToXML(TXmlNode ParentXmlNode) = 0;
    /// 11. Reads the field's content from ParentXmlNode; missing elements leave values alone.
    virtual void ReadFromXML(TXmlNode ParentXmlNode) = 0;
    /// 12. The field is not to be saved.
    virtual bool GetNoSaveWrite() const = 0;
    /// 13. Sets the not-to-be-saved flag.
    virtual void SetNoSaveWrite(bool Value) = 0;
    /// 14. Identifier in files: CustomIDstring when set, else a class-specific fallback.
    virtual QString GetIDstring() const = 0;
    /// 15. The component's ordinary Tag.
    virtual int GetTag() const = 0;
    /// 16. TagXML, a free number for the XML writer.
    virtual int GetTagXML() const = 0;
    /// 17. ReadOnly of edit-like controls, otherwise not Enabled.
    virtual bool GetReadOnly() const = 0;
    /// 18. Sets OnXmlWriteValueChanged.
    virtual void AssignXmlWriteValueChanged(TXmlNodeEvent AnXmlNodeEvent) = 0;
    /// 19. The value stored under the node differs from the current value.
    virtual bool XmlValueChanged(TXmlNode ParentXmlNode) = 0;
    /// 20. The current value as a variant (text for text controls).
    virtual QVariant GetVariantValue() = 0;
    /// 21. The current value as display text.
    virtual QString GetValueText() = 0;
    /// 22. The value stored under the node as display text ("<no value>" when there is none).
    virtual QString GetXMLValueText(TXmlNode ParentXmlNode) = 0;
    /// 23. Form-create value := current value.
    virtual void SetFormCreateVal() = 0;
    /// 24. Current value := form-create value.
    virtual void ResetToFormCreateVal() = 0;

protected:
    INumFld() = default;
    INumFld(const INumFld&) = default;
    INumFld& operator=(const INumFld&) = default;
};

} // namespace qxnum

/// Lets a field class list INumFld in Q_INTERFACES so that qobject_cast finds it as well.
Q_DECLARE_INTERFACE(qxnum::INumFld, "{3B540773-C5BE-4307-8964-983787301682}")

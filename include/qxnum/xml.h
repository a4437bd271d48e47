/// \file
/// XML documents and element handles for case files.
///
/// TXmlDocument loads and saves UTF-8 text and keeps it faithful: a document loaded and saved
/// without edits comes out byte for byte as it went in (declaration, byte order mark, comments,
/// processing instructions, DOCTYPE, CDATA, entity references, quoting and white space included).
/// Edits touch only what they change: an element whose attributes are rewritten gets a regenerated
/// start tag, everything else keeps its original text. New elements are indented like their
/// siblings (two more spaces than their parent when they are the first child).
///
/// Accepted input: UTF-8 with or without a byte order mark; one root element; characters of the
/// XML 1.0 character set (no control characters other than tab, line feed and carriage return,
/// no U+FFFE, U+FFFF); no character references to others either, except to the controls U+0001 to
/// U+001F, which earlier versions wrote; elements nested at most 1000 levels deep.
/// Anything else raises EXmlError with the line and column of the fault, and leaves the document
/// as it was. Entity references declared in a DOCTYPE are not expanded (a value shows "&name;"
/// as it stands); duplicate attribute names are tolerated (the first one is used).
///
/// Values are decoded the XML way when read: line ends become `"\n"`, character references and the
/// five predefined entities are resolved, and attribute values have tab and line breaks normalised
/// to spaces. Written values are escaped so that they read back exactly, `"\r"`, tabs and line
/// breaks in attributes included, with one exception: what XML 1.0 cannot carry at all (U+0000,
/// the other controls except tab and line ends, unpaired surrogates, U+FFFE, U+FFFF) is written
/// as U+FFFD. Binary streams keep such text as it is.
///
/// Typed values:
///   integer   decimal, optional sign, blanks around are ignored, 32-bit range
///   boolean   written "True" / "False"; read "true"/"false" in any case, or a decimal number
///             (non-zero is true)
///   float     written in the shortest form that reads back exactly, "." as decimal separator,
///             "INF", "-INF", "NAN"; read the same (any case for the words)
///   date-time written "yyyy-MM-ddTHH:mm:ss" (".zzz" added when there are milliseconds), local
///             time; read ISO 8601 with "T" or a blank between date and time, or a date alone
///             (midnight); a zone designator is honoured and the result given in local time
/// The strict readers (ValueAsInteger, ValueAsBool, ...) raise EConvertError for text that is not
/// of the type ("'abc' is not a valid integer value"); the *Def readers and the Read* helpers on
/// child elements return the default instead, both for a missing element and for bad text.
///
/// Lifetime: TXmlNode is a small value handle (an element of a document, or null). It stays valid
/// while its element is part of the document. It becomes invalid, and must not be used any more,
/// when the element or one of its ancestors is deleted, when the document is loaded again,
/// cleared or given a new root, or when the TXmlDocument is destroyed. Using an invalid handle is undefined
/// behaviour; a null handle is always safe: every query returns the empty value or the default, every search
/// returns null and every write is ignored.
///
/// Element and attribute names given to the write operations must be XML names; anything else
/// raises EXmlError (line and column 0). Not thread-safe: one thread per document.
#pragma once

#include <qxnum/global.h>

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QString>
#include <QStringList>

#include <memory>

namespace qxnum {

/// A malformed document, or an invalid name handed to a write operation. Line and column count
/// from 1 (the column in characters); both are 0 when there is no position.
class QXNUM_CORE_EXPORT EXmlError : public Exception {
public:
    EXmlError(const QString& Reason, int Line, int Column, const QString& Source = {});
    const QString& Reason() const noexcept { return FReason; }
    int Line() const noexcept { return FLine; }
    int Column() const noexcept { return FColumn; }

private:
    QString FReason;
    int FLine;
    int FColumn;
};

class TXmlDocument;
struct TXmlDocumentData;

class QXNUM_CORE_EXPORT TXmlNode {
public:
    TXmlNode() = default;

    bool IsNull() const noexcept { return FNode == nullptr; }
    explicit operator bool() const noexcept { return FNode != nullptr; }
    friend bool operator==(const TXmlNode& A, const TXmlNode& B) noexcept { return A.FNode == B.FNode; }

    QString Name() const;
    /// The parent element; null for the root element.
    TXmlNode Parent() const;

    /// --- Child elements (direct children only; text, comments and the like are not counted) ---
    /// Searches walk the children from the first one: to visit many children, loop with
    /// FirstChild / NextSibling or take ChildNodes() once instead of calling Nodes(I) for each.
    int NodeCount() const;
    /// The Index-th child element, null when out of range.
    TXmlNode Nodes(int Index) const;
    QList<TXmlNode> ChildNodes() const;
    /// The first child element named Name (empty Name: any), and the next sibling element named
    /// Name after this one; for loops that need no list.
    TXmlNode FirstChild(const QString& Name = {}) const;
    TXmlNode NextSibling(const QString& Name = {}) const;
    /// The first child element named Name, null when there is none.
    TXmlNode NodeByName(const QString& Name) const;
    /// Every child element named Name, in document order.
    QList<TXmlNode> NodesByName(const QString& Name) const;
    /// The first child element named NodeName (empty: any name) whose attribute AttribName has
    /// the value AttribValue (exact comparison of the decoded value). With ShouldRecurse the
    /// search goes on depth-first through all descendants.
    TXmlNode NodeByAttributeValue(const QString& NodeName, const QString& AttribName,
                                  const QString& AttribValue, bool ShouldRecurse = false) const;

    /// Appends a new child element and returns it.
    TXmlNode NodeNew(const QString& Name);
    TXmlNode AddChild(const QString& Name) { return NodeNew(Name); }
    /// NodeByName, or NodeNew when there is no such child.
    TXmlNode NodeFindOrCreate(const QString& Name);
    /// Deletes the Index-th child element with its content; false when out of range.
    bool NodeDelete(int Index);
    /// Deletes the given child element with its content; false when it is not a child of this
    /// element. Handles to the deleted element become invalid.
    bool NodeRemove(const TXmlNode& Child);
    /// Deletes every child element named Name; returns how many.
    int NodesDelete(const QString& Name);
    /// Deletes all content: child elements, text, comments, everything.
    void DeleteChildren();
    /// Deletes this element from its parent (not the root element: false). This handle becomes
    /// null; copies of it become invalid.
    bool Delete();

    /// --- Attributes ---
    int AttributeCount() const;
    QString AttributeName(int Index) const;
    QString AttributeValue(int Index) const;
    QStringList AttributeNames() const;
    bool HasAttribute(const QString& Name) const;
    /// The decoded value, Default when there is no such attribute.
    QString AttributeByName(const QString& Name, const QString& Default = {}) const;
    QString ReadAttributeString(const QString& Name, const QString& Default = {}) const {
        return AttributeByName(Name, Default);
    }
    int ReadAttributeInteger(const QString& Name, int Default = 0) const;
    bool ReadAttributeBool(const QString& Name, bool Default = false) const;
    /// Sets the attribute, adding it at the end when it does not exist yet.
    void WriteAttributeString(const QString& Name, const QString& Value);
    void WriteAttributeInteger(const QString& Name, int Value);
    void WriteAttributeBool(const QString& Name, bool Value);
    /// False when there was no such attribute.
    bool AttributeDelete(const QString& Name);

    /// --- The element's own value: its text and CDATA content ---
    /// White-space-only text between child elements is formatting and not part of the value.
    QString ValueAsString() const;
    /// Replaces the text and CDATA content (child elements are kept).
    void SetValueAsString(const QString& Value);
    int ValueAsInteger() const;
    int ValueAsIntegerDef(int Default) const;
    void SetValueAsInteger(int Value);
    bool ValueAsBool() const;
    bool ValueAsBoolDef(bool Default) const;
    void SetValueAsBool(bool Value);
    double ValueAsFloat() const;
    double ValueAsFloatDef(double Default) const;
    void SetValueAsFloat(double Value);
    QDateTime ValueAsDateTime() const;
    QDateTime ValueAsDateTimeDef(const QDateTime& Default) const;
    /// An invalid date-time writes the empty text.
    void SetValueAsDateTime(const QDateTime& Value);

    /// --- Values of child elements by name: Default when the child is missing or its text is
    /// not of the type; the writers create the child when needed and replace its value. Each
    /// call looks the child up by name; to fill a container afresh with many children, use
    /// NodeNew(Name).SetValueAsString(Value), which does not search. ---
    QString ReadString(const QString& Name, const QString& Default = {}) const;
    int ReadInteger(const QString& Name, int Default = 0) const;
    bool ReadBool(const QString& Name, bool Default = false) const;
    double ReadFloat(const QString& Name, double Default = 0.0) const;
    QDateTime ReadDateTime(const QString& Name, const QDateTime& Default = {}) const;
    void WriteString(const QString& Name, const QString& Value);
    void WriteInteger(const QString& Name, int Value);
    void WriteBool(const QString& Name, bool Value);
    void WriteFloat(const QString& Name, double Value);
    void WriteDateTime(const QString& Name, const QDateTime& Value);

private:
    friend class TXmlDocument;
    friend struct TXmlDocumentData;
    TXmlNode(TXmlDocumentData* Doc, void* Node) noexcept : FDoc(Doc), FNode(Node) {}

    TXmlDocumentData* FDoc = nullptr;
    void* FNode = nullptr; // the element inside the document's tree
};

class QXNUM_CORE_EXPORT TXmlDocument {
public:
    TXmlDocument();
    ~TXmlDocument();
    TXmlDocument(TXmlDocument&&) noexcept;
    TXmlDocument& operator=(TXmlDocument&&) noexcept;
    TXmlDocument(const TXmlDocument&) = delete;
    TXmlDocument& operator=(const TXmlDocument&) = delete;

    /// Replace the content; EXmlError for malformed text (the document is then unchanged).
    /// LoadFromFile raises Exception when the file cannot be read.
    void LoadFromFile(const QString& FileName);
    void LoadFromBytes(const QByteArray& Utf8);
    void LoadFromString(const QString& Text) { LoadFromBytes(Text.toUtf8()); }

    /// The document as UTF-8; SaveToFile replaces the file atomically and raises Exception when
    /// it cannot be written.
    void SaveToFile(const QString& FileName) const;
    QByteArray SaveToBytes() const;
    QString SaveToString() const { return QString::fromUtf8(SaveToBytes()); }

    bool IsEmpty() const;
    /// The root element; null for an empty document.
    TXmlNode Root() const;
    /// Starts a new document: the XML declaration and an empty root element named Name.
    TXmlNode CreateRoot(const QString& Name);
    /// An empty document: no root, saves as an empty text.
    void Clear();

private:
    std::unique_ptr<TXmlDocumentData> D;
};

/// Text forms of the typed values, as the node readers and writers use them. The Try forms
/// return false for text that is not of the type and leave Value untouched.
QXNUM_CORE_EXPORT QString XmlBoolToStr(bool Value);
QXNUM_CORE_EXPORT bool XmlTryStrToBool(const QString& Text, bool& Value);
QXNUM_CORE_EXPORT QString XmlIntToStr(int Value);
QXNUM_CORE_EXPORT bool XmlTryStrToInt(const QString& Text, int& Value);
QXNUM_CORE_EXPORT QString XmlFloatToStr(double Value);
/// The same for an extended value: the shortest text that reads back to it as an extended.
QXNUM_CORE_EXPORT QString XmlExtendedToStr(Extended Value);
QXNUM_CORE_EXPORT bool XmlTryStrToFloat(const QString& Text, double& Value);
QXNUM_CORE_EXPORT QString XmlDateTimeToStr(const QDateTime& Value);
QXNUM_CORE_EXPORT bool XmlTryStrToDateTime(const QString& Text, QDateTime& Value);

} // namespace qxnum

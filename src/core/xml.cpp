// The node API: element handles and the document, with tree edits that keep the side table and
// the layout of the original text in order.
#include "xml_p.h"

#include "tr_p.h"

#include <QFile>
#include <QSaveFile>

#include <cstring>

namespace qxnum {

// --- Errors --------------------------------------------------------------------------------------

namespace {

QString ErrorText(const QString& Reason, int Line, int Column, const QString& Source) {
    QString Text;
    if (!Source.isEmpty()) Text += Source + QStringLiteral(": ");
    if (Line > 0) Text += detail::Tr("qxnum::EXmlError", "line %1, column %2: ").arg(Line).arg(Column);
    return Text + Reason;
}

} // namespace

EXmlError::EXmlError(const QString& Reason, int Line, int Column, const QString& Source)
    : Exception(ErrorText(Reason, Line, Column, Source)), FReason(Reason), FLine(Line), FColumn(Column) {}

using namespace xmlimpl;

// --- Tree edits that keep the side table and the layout in order ---------------------------------

namespace {

// Name match: empty Query matches every element.
bool ElementNamed(pugi::xml_node N, std::string_view Query) {
    return N.type() == pugi::node_element && (Query.empty() || std::string_view(N.name()) == Query);
}

// pugixml frees a subtree recursively; taking it apart from the leaves up keeps any depth off the stack.
void RemoveSubtree(pugi::xml_node Parent, pugi::xml_node Child) {
    pugi::xml_node Cur = Child;
    for (;;) {
        while (Cur.first_child())
            Cur = Cur.first_child();
        if (Cur == Child) break;
        pugi::xml_node Up = Cur.parent();
        Up.remove_child(Cur);
        Cur = Up;
    }
    Parent.remove_child(Child);
}
} // namespace

void TXmlDocumentData::ForgetTree(pugi::xml_node Top) {
    if (Raw.empty()) return;
    Raw.erase(Top.internal_object());
    pugi::xml_node Cur = Top.first_child();
    while (Cur) {
        Raw.erase(Cur.internal_object());
        if (Cur.first_child()) {
            Cur = Cur.first_child();
            continue;
        }
        while (Cur && !Cur.next_sibling()) {
            Cur = Cur.parent();
            if (Cur == Top) Cur = pugi::xml_node();
        }
        if (Cur) Cur = Cur.next_sibling();
    }
}

void TXmlDocumentData::RemoveElement(pugi::xml_node Child) {
    pugi::xml_node Parent = Child.parent();
    const pugi::xml_node Before = Child.previous_sibling();
    ForgetTree(Child);
    RemoveSubtree(Parent, Child);
    // The indentation in front of the element goes with it.
    if (Before && IsSpaceNode(Before)) Parent.remove_child(Before);
    for (pugi::xml_node N = Parent.first_child(); N; N = N.next_sibling())
        if (!IsSpaceNode(N)) return;
    Parent.remove_children();
}

pugi::xml_node TXmlDocumentData::AppendElement(pugi::xml_node Parent, const char* Name) {
    pugi::xml_node Last;
    for (pugi::xml_node N = Parent.last_child(); N; N = N.previous_sibling()) {
        if (N.type() == pugi::node_element) {
            Last = N;
            break;
        }
    }
    pugi::xml_node New;
    if (Last) {
        // Indent like the last sibling.
        const pugi::xml_node Before = Last.previous_sibling();
        pugi::xml_node After = Last;
        if (Before && IsSpaceNode(Before)) {
            After = Parent.insert_child_after(pugi::node_pcdata, Last);
            After.set_value(Before.value());
        }
        New = Parent.insert_child_after(pugi::node_element, After);
    } else {
        bool OnlySpace = true;
        for (pugi::xml_node N = Parent.first_child(); N && OnlySpace; N = N.next_sibling())
            OnlySpace = IsSpaceNode(N);
        // The parent's own indentation: the blanks after the last line break in front of it.
        bool Pretty = false;
        std::string Indent;
        if (OnlySpace) {
            const pugi::xml_node Before = Parent.previous_sibling();
            if (Parent.parent() == Doc) {
                Pretty = true;
            } else if (Before && IsSpaceNode(Before)) {
                const std::string_view Ws(Before.value());
                const std::size_t Lf = Ws.find_last_of("\r\n");
                // Indentation stops growing somewhere: a tree built thousands of levels deep
                // would otherwise hold blanks quadratic in its depth.
                if (Lf != std::string_view::npos && Ws.size() - Lf - 1 < MaxIndent) {
                    Pretty = true;
                    Indent = std::string(Ws.substr(Lf + 1));
                }
            }
        }
        if (Pretty) {
            Parent.remove_children();
            Parent.append_child(pugi::node_pcdata).set_value((Eol + Indent + "  ").c_str());
            New = Parent.append_child(pugi::node_element);
            Parent.append_child(pugi::node_pcdata).set_value((Eol + Indent).c_str());
        } else {
            New = Parent.append_child(pugi::node_element);
        }
    }
    New.set_name(Name);
    Forget(New);
    return New;
}

// --- TXmlNode ------------------------------------------------------------------------------------

QString TXmlNode::Name() const {
    return FNode ? FromUtf8(PN(FNode).name()) : QString();
}

TXmlNode TXmlNode::Parent() const {
    if (!FNode) return {};
    const pugi::xml_node P = PN(FNode).parent();
    return P.type() == pugi::node_element ? TXmlDocumentData::Wrap(FDoc, P) : TXmlNode();
}

int TXmlNode::NodeCount() const {
    int Count = 0;
    if (FNode)
        for (pugi::xml_node N = PN(FNode).first_child(); N; N = N.next_sibling())
            if (N.type() == pugi::node_element) ++Count;
    return Count;
}

TXmlNode TXmlNode::Nodes(int Index) const {
    if (!FNode || Index < 0) return {};
    for (pugi::xml_node N = PN(FNode).first_child(); N; N = N.next_sibling())
        if (N.type() == pugi::node_element && Index-- == 0) return TXmlDocumentData::Wrap(FDoc, N);
    return {};
}

QList<TXmlNode> TXmlNode::ChildNodes() const {
    return NodesByName({});
}

TXmlNode TXmlNode::FirstChild(const QString& Name) const {
    if (!FNode) return {};
    const std::string Q = Utf8(Name);
    for (pugi::xml_node N = PN(FNode).first_child(); N; N = N.next_sibling())
        if (ElementNamed(N, Q)) return TXmlDocumentData::Wrap(FDoc, N);
    return {};
}

TXmlNode TXmlNode::NextSibling(const QString& Name) const {
    if (!FNode) return {};
    const std::string Q = Utf8(Name);
    for (pugi::xml_node N = PN(FNode).next_sibling(); N; N = N.next_sibling())
        if (ElementNamed(N, Q)) return TXmlDocumentData::Wrap(FDoc, N);
    return {};
}

TXmlNode TXmlNode::NodeByName(const QString& Name) const {
    return Name.isEmpty() ? TXmlNode() : FirstChild(Name);
}

QList<TXmlNode> TXmlNode::NodesByName(const QString& Name) const {
    QList<TXmlNode> List;
    if (!FNode) return List;
    const std::string Q = Utf8(Name);
    for (pugi::xml_node N = PN(FNode).first_child(); N; N = N.next_sibling())
        if (ElementNamed(N, Q)) List.append(TXmlDocumentData::Wrap(FDoc, N));
    return List;
}

TXmlNode TXmlNode::NodeByAttributeValue(const QString& NodeName, const QString& AttribName,
                                        const QString& AttribValue, bool ShouldRecurse) const {
    if (!FNode || AttribName.isEmpty()) return {};
    const std::string QName = Utf8(NodeName), QAttr = Utf8(AttribName), QValue = Utf8(AttribValue);
    // No name holds a NUL; such a query matches nothing (and must not reach strcmp).
    if (QName.find('\0') != std::string::npos || QAttr.find('\0') != std::string::npos) return {};
    auto Matches = [&](pugi::xml_node N) {
        if (N.type() != pugi::node_element) return false;
        if (!QName.empty() && std::strcmp(N.name(), QName.c_str()) != 0) return false;
        const pugi::xml_attribute A = N.attribute(QAttr.c_str());
        return A && AttrValueIs(A.value(), QValue);
    };
    const pugi::xml_node Top = PN(FNode);
    if (!ShouldRecurse) {
        // The common case (a form looking up its fields), kept to one pass over the children.
        for (pugi::xml_node N = Top.first_child(); N; N = N.next_sibling())
            if (Matches(N)) return TXmlDocumentData::Wrap(FDoc, N);
        return {};
    }
    pugi::xml_node Cur = Top.first_child();
    while (Cur) {
        if (Matches(Cur)) return TXmlDocumentData::Wrap(FDoc, Cur);
        if (Cur.type() == pugi::node_element && Cur.first_child()) {
            Cur = Cur.first_child();
            continue;
        }
        while (Cur && !Cur.next_sibling()) {
            Cur = Cur.parent();
            if (Cur == Top) Cur = pugi::xml_node();
        }
        if (Cur) Cur = Cur.next_sibling();
    }
    return {};
}

TXmlNode TXmlNode::NodeNew(const QString& Name) {
    const std::string N = CheckedName(Name);
    if (!FNode) return {};
    return TXmlDocumentData::Wrap(FDoc, FDoc->AppendElement(PN(FNode), N.c_str()));
}

TXmlNode TXmlNode::NodeFindOrCreate(const QString& Name) {
    const TXmlNode Found = NodeByName(Name);
    return Found ? Found : NodeNew(Name);
}

bool TXmlNode::NodeDelete(int Index) {
    const TXmlNode Child = Nodes(Index);
    if (!Child) return false;
    FDoc->RemoveElement(PN(Child.FNode));
    return true;
}

bool TXmlNode::NodeRemove(const TXmlNode& Child) {
    if (!FNode || !Child || PN(Child.FNode).parent() != PN(FNode)) return false;
    FDoc->RemoveElement(PN(Child.FNode));
    return true;
}

int TXmlNode::NodesDelete(const QString& Name) {
    const QList<TXmlNode> Victims = NodesByName(Name);
    for (const TXmlNode& V : Victims)
        FDoc->RemoveElement(PN(V.FNode));
    return static_cast<int>(Victims.size());
}

void TXmlNode::DeleteChildren() {
    if (!FNode) return;
    pugi::xml_node N = PN(FNode);
    while (pugi::xml_node C = N.first_child()) {
        FDoc->ForgetTree(C);
        RemoveSubtree(N, C);
    }
}

bool TXmlNode::Delete() {
    if (!FNode || PN(FNode).parent().type() != pugi::node_element) return false;
    FDoc->RemoveElement(PN(FNode));
    FNode = nullptr;
    FDoc = nullptr;
    return true;
}

// --- Attributes ---

int TXmlNode::AttributeCount() const {
    int Count = 0;
    if (FNode)
        for (pugi::xml_attribute A = PN(FNode).first_attribute(); A; A = A.next_attribute())
            ++Count;
    return Count;
}

namespace {
pugi::xml_attribute AttributeAt(void* Node, int Index) {
    if (!Node || Index < 0) return {};
    pugi::xml_attribute A = PN(Node).first_attribute();
    while (A && Index-- > 0)
        A = A.next_attribute();
    return A;
}
} // namespace

QString TXmlNode::AttributeName(int Index) const {
    const pugi::xml_attribute A = AttributeAt(FNode, Index);
    return A ? FromUtf8(A.name()) : QString();
}

QString TXmlNode::AttributeValue(int Index) const {
    const pugi::xml_attribute A = AttributeAt(FNode, Index);
    return A ? Decode(A.value(), dAttribute) : QString();
}

QStringList TXmlNode::AttributeNames() const {
    QStringList Names;
    if (FNode)
        for (pugi::xml_attribute A = PN(FNode).first_attribute(); A; A = A.next_attribute())
            Names.append(FromUtf8(A.name()));
    return Names;
}

bool TXmlNode::HasAttribute(const QString& Name) const {
    return FNode && PN(FNode).attribute(Utf8(Name).c_str());
}

QString TXmlNode::AttributeByName(const QString& Name, const QString& Default) const {
    if (!FNode) return Default;
    const pugi::xml_attribute A = PN(FNode).attribute(Utf8(Name).c_str());
    return A ? Decode(A.value(), dAttribute) : Default;
}

int TXmlNode::ReadAttributeInteger(const QString& Name, int Default) const {
    int V = Default;
    return HasAttribute(Name) && XmlTryStrToInt(AttributeByName(Name), V) ? V : Default;
}

bool TXmlNode::ReadAttributeBool(const QString& Name, bool Default) const {
    bool V = Default;
    return HasAttribute(Name) && XmlTryStrToBool(AttributeByName(Name), V) ? V : Default;
}

void TXmlNode::WriteAttributeString(const QString& Name, const QString& Value) {
    const std::string N = CheckedName(Name);
    if (!FNode) return;
    pugi::xml_node E = PN(FNode);
    pugi::xml_attribute A = E.attribute(N.c_str());
    // Rewriting the value it has already keeps the tag as it was written.
    if (A && Decode(A.value(), dAttribute) == Value) return;
    if (!A) A = E.append_attribute(N.c_str());
    A.set_value(Escape(Value, true).c_str());
    FDoc->Forget(E);
}

void TXmlNode::WriteAttributeInteger(const QString& Name, int Value) {
    WriteAttributeString(Name, XmlIntToStr(Value));
}

void TXmlNode::WriteAttributeBool(const QString& Name, bool Value) {
    WriteAttributeString(Name, XmlBoolToStr(Value));
}

bool TXmlNode::AttributeDelete(const QString& Name) {
    if (!FNode) return false;
    pugi::xml_node E = PN(FNode);
    if (!E.remove_attribute(Utf8(Name).c_str())) return false;
    FDoc->Forget(E);
    return true;
}

// --- Own value ---

QString TXmlNode::ValueAsString() const {
    if (!FNode) return {};
    const pugi::xml_node E = PN(FNode);
    const pugi::xml_node First = E.first_child();
    if (!First) return {};
    if (First.type() == pugi::node_pcdata && !First.next_sibling()) return Decode(First.value(), dText);
    bool HasElements = false;
    for (pugi::xml_node N = First; N && !HasElements; N = N.next_sibling())
        HasElements = N.type() == pugi::node_element;
    std::string Out;
    for (pugi::xml_node N = First; N; N = N.next_sibling()) {
        if (N.type() == pugi::node_pcdata && !(HasElements && IsSpaceText(N.value())))
            DecodeInto(Out, N.value(), dText);
        else if (N.type() == pugi::node_cdata)
            DecodeInto(Out, N.value(), dCData);
    }
    return FromUtf8(Out);
}

void TXmlNode::SetValueAsString(const QString& Value) {
    if (!FNode || ValueAsString() == Value) return;
    pugi::xml_node E = PN(FNode);
    bool HasElements = false;
    for (pugi::xml_node N = E.first_child(); N && !HasElements; N = N.next_sibling())
        HasElements = N.type() == pugi::node_element;
    for (pugi::xml_node N = E.first_child(); N;) {
        const pugi::xml_node Next = N.next_sibling();
        if (N.type() == pugi::node_cdata ||
            (N.type() == pugi::node_pcdata && !(HasElements && IsSpaceText(N.value()))))
            E.remove_child(N);
        N = Next;
    }
    if (!Value.isEmpty()) E.prepend_child(pugi::node_pcdata).set_value(Escape(Value, false).c_str());
}

namespace {
// Message is a translated text with '%1' for the value.
[[noreturn]] void NotA(const QString& Text, const QString& Message) {
    throw EConvertError(Message.arg(Text));
}
} // namespace

int TXmlNode::ValueAsInteger() const {
    const QString T = ValueAsString();
    int V = 0;
    if (!XmlTryStrToInt(T, V)) NotA(T, detail::Tr("qxnum::TXmlNode", "'%1' is not a valid integer value"));
    return V;
}

int TXmlNode::ValueAsIntegerDef(int Default) const {
    int V = Default;
    return XmlTryStrToInt(ValueAsString(), V) ? V : Default;
}

void TXmlNode::SetValueAsInteger(int Value) {
    SetValueAsString(XmlIntToStr(Value));
}

bool TXmlNode::ValueAsBool() const {
    const QString T = ValueAsString();
    bool V = false;
    if (!XmlTryStrToBool(T, V)) NotA(T, detail::Tr("qxnum::TXmlNode", "'%1' is not a valid boolean value"));
    return V;
}

bool TXmlNode::ValueAsBoolDef(bool Default) const {
    bool V = Default;
    return XmlTryStrToBool(ValueAsString(), V) ? V : Default;
}

void TXmlNode::SetValueAsBool(bool Value) {
    SetValueAsString(XmlBoolToStr(Value));
}

double TXmlNode::ValueAsFloat() const {
    const QString T = ValueAsString();
    double V = 0;
    if (!XmlTryStrToFloat(T, V))
        NotA(T, detail::Tr("qxnum::TXmlNode", "'%1' is not a valid floating point value"));
    return V;
}

double TXmlNode::ValueAsFloatDef(double Default) const {
    double V = Default;
    return XmlTryStrToFloat(ValueAsString(), V) ? V : Default;
}

void TXmlNode::SetValueAsFloat(double Value) {
    SetValueAsString(XmlFloatToStr(Value));
}

QDateTime TXmlNode::ValueAsDateTime() const {
    const QString T = ValueAsString();
    QDateTime V;
    if (!XmlTryStrToDateTime(T, V))
        NotA(T, detail::Tr("qxnum::TXmlNode", "'%1' is not a valid date and time"));
    return V;
}

QDateTime TXmlNode::ValueAsDateTimeDef(const QDateTime& Default) const {
    QDateTime V;
    return XmlTryStrToDateTime(ValueAsString(), V) ? V : Default;
}

void TXmlNode::SetValueAsDateTime(const QDateTime& Value) {
    SetValueAsString(XmlDateTimeToStr(Value));
}

// --- Child values ---

QString TXmlNode::ReadString(const QString& Name, const QString& Default) const {
    const TXmlNode C = NodeByName(Name);
    return C ? C.ValueAsString() : Default;
}

int TXmlNode::ReadInteger(const QString& Name, int Default) const {
    const TXmlNode C = NodeByName(Name);
    return C ? C.ValueAsIntegerDef(Default) : Default;
}

bool TXmlNode::ReadBool(const QString& Name, bool Default) const {
    const TXmlNode C = NodeByName(Name);
    return C ? C.ValueAsBoolDef(Default) : Default;
}

double TXmlNode::ReadFloat(const QString& Name, double Default) const {
    const TXmlNode C = NodeByName(Name);
    return C ? C.ValueAsFloatDef(Default) : Default;
}

QDateTime TXmlNode::ReadDateTime(const QString& Name, const QDateTime& Default) const {
    const TXmlNode C = NodeByName(Name);
    return C ? C.ValueAsDateTimeDef(Default) : Default;
}

void TXmlNode::WriteString(const QString& Name, const QString& Value) {
    NodeFindOrCreate(Name).SetValueAsString(Value);
}

void TXmlNode::WriteInteger(const QString& Name, int Value) {
    NodeFindOrCreate(Name).SetValueAsInteger(Value);
}

void TXmlNode::WriteBool(const QString& Name, bool Value) {
    NodeFindOrCreate(Name).SetValueAsBool(Value);
}

void TXmlNode::WriteFloat(const QString& Name, double Value) {
    NodeFindOrCreate(Name).SetValueAsFloat(Value);
}

void TXmlNode::WriteDateTime(const QString& Name, const QDateTime& Value) {
    NodeFindOrCreate(Name).SetValueAsDateTime(Value);
}

// --- TXmlDocument --------------------------------------------------------------------------------

TXmlDocument::TXmlDocument() : D(std::make_unique<TXmlDocumentData>()) {}
TXmlDocument::~TXmlDocument() = default;
TXmlDocument::TXmlDocument(TXmlDocument&&) noexcept = default;
TXmlDocument& TXmlDocument::operator=(TXmlDocument&&) noexcept = default;

void TXmlDocument::LoadFromFile(const QString& FileName) {
    QFile F(FileName);
    if (!F.open(QIODevice::ReadOnly))
        throw Exception(
            detail::Tr("qxnum::TXmlDocument", "Cannot open \"%1\": %2").arg(FileName, F.errorString()));
    const QByteArray Bytes = F.readAll();
    if (F.error() != QFileDevice::NoError)
        throw Exception(
            detail::Tr("qxnum::TXmlDocument", "Cannot read \"%1\": %2").arg(FileName, F.errorString()));
    D = xmlimpl::Parse(Bytes, FileName);
}

void TXmlDocument::LoadFromBytes(const QByteArray& Utf8) {
    D = Parse(Utf8, {});
}

void TXmlDocument::SaveToFile(const QString& FileName) const {
    const QByteArray Bytes = SaveToBytes();
    QSaveFile F(FileName);
    if (!F.open(QIODevice::WriteOnly) || F.write(Bytes) != Bytes.size() || !F.commit())
        throw Exception(
            detail::Tr("qxnum::TXmlDocument", "Cannot write \"%1\": %2").arg(FileName, F.errorString()));
}

QByteArray TXmlDocument::SaveToBytes() const {
    if (!D) return {};
    const std::string Out = Print(*D);
    return QByteArray(Out.data(), static_cast<qsizetype>(Out.size()));
}

bool TXmlDocument::IsEmpty() const {
    return Root().IsNull();
}

TXmlNode TXmlDocument::Root() const {
    if (!D) return {};
    return TXmlDocumentData::Wrap(D.get(), D->Doc.document_element());
}

TXmlNode TXmlDocument::CreateRoot(const QString& Name) {
    const std::string N = CheckedName(Name);
    auto New = std::make_unique<TXmlDocumentData>();
    pugi::xml_node Decl = New->Doc.append_child(pugi::node_declaration);
    Decl.set_name("xml");
    Decl.append_attribute("version").set_value("1.0");
    Decl.append_attribute("encoding").set_value("UTF-8");
    New->Doc.append_child(pugi::node_pcdata).set_value("\n");
    New->Doc.append_child(pugi::node_element).set_name(N.c_str());
    New->Doc.append_child(pugi::node_pcdata).set_value("\n");
    D = std::move(New);
    return Root();
}

void TXmlDocument::Clear() {
    D = std::make_unique<TXmlDocumentData>();
}
} // namespace qxnum

// Shared inside the XML layer (not installed): the document's data and the routines that the
// node API, the text helpers, the loader and the printer call across their files.
//
// pugixml parses without resolving references or line ends, so every text and attribute value in
// the tree is the raw text of the file: values are decoded on read and escaped on write
// (xml_text.cpp). Saving prints tags from the tree except where the original text differs from
// that canonical form; those texts are kept in a side table keyed by the tree node and dropped
// when the node's attributes change (xml_print.cpp).
#pragma once

#include <qxnum/xml.h>

#include <QByteArray>
#include <QString>

#include <pugixml.hpp>

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>
#include <unordered_map>

namespace qxnum {

// Original text of a tag that differs from what the printer would produce. For an element, Start
// is its start tag and End its end tag, or empty when it was written as "<a/>". For a declaration,
// processing instruction or DOCTYPE, Start is the whole markup.
struct TRawTag {
    std::string Start;
    std::string End;
};

struct TXmlDocumentData {
    pugi::xml_document Doc;
    std::unordered_map<const void*, TRawTag> Raw;
    bool Bom = false;
    const char* Eol = "\n";   // line end used for the indentation of new elements
    std::size_t SizeHint = 0; // size of the text last loaded, to size the output buffer

    const TRawTag* RawOf(pugi::xml_node N) const {
        if (Raw.empty()) return nullptr;
        const auto It = Raw.find(N.internal_object());
        return It == Raw.end() ? nullptr : &It->second;
    }

    static TXmlNode Wrap(TXmlDocumentData* D, pugi::xml_node N) {
        return N ? TXmlNode(D, N.internal_object()) : TXmlNode();
    }
    void Forget(pugi::xml_node N) {
        if (!Raw.empty()) Raw.erase(N.internal_object());
    }
    void ForgetTree(pugi::xml_node Top);
    void RemoveElement(pugi::xml_node Child);
    pugi::xml_node AppendElement(pugi::xml_node Parent, const char* Name);
};

namespace xmlimpl {

// No case file comes near this; far deeper documents are refused before anything walks them.
inline constexpr int MaxDepth = 1000;
// Indentation of new elements stops growing here: a tree built thousands of levels deep would
// otherwise hold blanks quadratic in its depth.
inline constexpr std::size_t MaxIndent = 100;

inline pugi::xml_node PN(void* P) {
    return pugi::xml_node(static_cast<pugi::xml_node_struct*>(P));
}

inline bool IsXmlSpace(char C) {
    return C == ' ' || C == '\t' || C == '\n' || C == '\r';
}

inline bool IsSpaceText(const char* S) {
    for (; *S; ++S)
        if (!IsXmlSpace(*S)) return false;
    return true;
}

inline bool IsSpaceNode(pugi::xml_node N) {
    return N.type() == pugi::node_pcdata && IsSpaceText(N.value());
}

// --- Text (xml_text.cpp) ---

std::string Utf8(const QString& S);
// UTF-8 of the tree as text, a leading U+FEFF kept.
QString FromUtf8(std::string_view S);
// Name as UTF-8; EXmlError when it is not an XML name.
std::string CheckedName(const QString& Name);
std::string Escape(const QString& Value, bool Attribute);

// Raw text or attribute value as the application sees it. CDATA gets line ends normalised only.
enum TDecode { dText, dAttribute, dCData };
void DecodeInto(std::string& Out, std::string_view Raw, TDecode Mode);
QString Decode(std::string_view Raw, TDecode Mode);
// Decoded attribute value equals Value (UTF-8), without building a QString when not needed.
bool AttrValueIs(const char* Raw, std::string_view Value);

// Offset in Raw of the first character reference that names no XML character, or npos.
std::size_t FindBadCharRef(std::string_view Raw);
// Offset of the first byte that is not well-formed UTF-8 or not an XML character (Reason says
// which), or npos.
std::size_t FindBadCharacter(std::string_view T, QString& Reason);

// The number parsers of the layer: all of S, digits in Base after an optional sign when Signed
// (from_chars alone takes no '+'). errc::result_out_of_range when the digits are fine but the
// value does not fit.
std::errc ParseInteger(std::string_view S, long long& Value, int Base = 10, bool Signed = true);
bool ParseFloat(std::string_view S, double& Value);

// --- Printer (xml_print.cpp) ---

// The '>' that ends a tag whose attribute values may hold '>': the first one outside quotes
// after From, npos when there is none.
std::size_t TagEnd(std::string_view S, std::size_t From);
// "<?xml" followed by a blank or "?>": the declaration, whose attributes are quoted.
bool IsDeclarationAt(std::string_view S, std::size_t P);
// Fills the side table from the original text; see xml_print.cpp.
std::size_t CollectRawTags(TXmlDocumentData& D, std::string_view Text);
std::string Print(const TXmlDocumentData& D);

// --- Loader (xml_load.cpp) ---

std::unique_ptr<TXmlDocumentData> Parse(const QByteArray& Bytes, const QString& Source);

} // namespace xmlimpl
} // namespace qxnum

// XML documents over pugixml, kept faithful to their original text.
//
// pugixml parses without resolving references or line ends, so every text and attribute value in
// the tree is the raw text of the file; this file decodes on read and escapes on write. pugixml's
// own printer normalises tags (quotes, blanks, "<a></a>"), so saving is done here: start and end
// tags, the declaration, processing instructions and the DOCTYPE are printed from the tree, except
// where the original text differs from that canonical form; those original texts are kept in a
// side table keyed by the tree node and dropped when the node's attributes change.
#include <qxnum/xml.h>

#include "textcodec.h"

#include <QFile>
#include <QSaveFile>
#include <QStringDecoder>

#include <pugixml.hpp>

#include <charconv>
#include <cmath>
#include <cstring>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace qxnum {

// --- Errors --------------------------------------------------------------------------------------

namespace {

QString ErrorText(const QString& Reason, int Line, int Column, const QString& Source) {
    QString Text;
    if (!Source.isEmpty()) Text += Source + QStringLiteral(": ");
    if (Line > 0) Text += QStringLiteral("line %1, column %2: ").arg(Line).arg(Column);
    return Text + Reason;
}

} // namespace

EXmlError::EXmlError(const QString& Reason, int Line, int Column, const QString& Source)
    : Exception(ErrorText(Reason, Line, Column, Source)), FReason(Reason), FLine(Line), FColumn(Column) {}

// --- Document data -------------------------------------------------------------------------------

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

namespace {

using pugi::xml_node;

xml_node PN(void* P) {
    return xml_node(static_cast<pugi::xml_node_struct*>(P));
}

bool IsXmlSpace(char C) {
    return C == ' ' || C == '\t' || C == '\n' || C == '\r';
}

bool IsSpaceText(const char* S) {
    for (; *S; ++S)
        if (!IsXmlSpace(*S)) return false;
    return true;
}

bool IsSpaceNode(xml_node N) {
    return N.type() == pugi::node_pcdata && IsSpaceText(N.value());
}

// Name match: empty Query matches every element.
bool ElementNamed(xml_node N, std::string_view Query) {
    return N.type() == pugi::node_element && (Query.empty() || std::string_view(N.name()) == Query);
}

std::string Utf8(const QString& S) {
    const QByteArray B = S.toUtf8();
    return std::string(B.constData(), static_cast<std::size_t>(B.size()));
}

// The XML Name production, simplified: non-ASCII characters are all accepted as name characters.
bool IsXmlName(const QString& Name) {
    if (Name.isEmpty()) return false;
    for (qsizetype I = 0; I < Name.size(); ++I) {
        const QChar Q = Name[I];
        const char16_t C = Q.unicode();
        if (C >= 0x80) {
            if (C == 0xFFFE || C == 0xFFFF) return false;
            // Surrogates only in pairs: a lone one would not survive the UTF-8 form.
            if (Q.isHighSurrogate() && !(I + 1 < Name.size() && Name[I + 1].isLowSurrogate())) return false;
            if (Q.isLowSurrogate() && !(I > 0 && Name[I - 1].isHighSurrogate())) return false;
            continue;
        }
        const bool Start = (C >= 'A' && C <= 'Z') || (C >= 'a' && C <= 'z') || C == '_' || C == ':';
        const bool More = (C >= '0' && C <= '9') || C == '-' || C == '.';
        if (!Start && !(I > 0 && More)) return false;
    }
    return true;
}

std::string CheckedName(const QString& Name) {
    if (!IsXmlName(Name)) throw EXmlError(QStringLiteral("\"%1\" is not a valid XML name").arg(Name), 0, 0);
    return Utf8(Name);
}

// --- Escaping and decoding ---

void AppendCharRef(std::string& Out, unsigned C) {
    Out += "&#";
    Out += std::to_string(C);
    Out += ';';
}

// What XML 1.0 cannot carry (U+0000, lone surrogates, U+FFFE, U+FFFF) becomes U+FFFD.
QString XmlCharacters(const QString& Value) {
    const qsizetype N = Value.size();
    const QChar* U = Value.constData();
    QString Out;
    for (qsizetype I = 0; I < N; ++I) {
        const char16_t C = U[I].unicode();
        bool Bad = C == 0 || C == 0xFFFE || C == 0xFFFF;
        if (QChar::isHighSurrogate(C)) {
            if (I + 1 < N && U[I + 1].isLowSurrogate())
                ++I;
            else
                Bad = true;
        } else if (QChar::isLowSurrogate(C)) {
            Bad = true;
        }
        if (!Bad) continue;
        if (Out.isNull()) Out = Value;
        Out[I] = QChar::ReplacementCharacter;
    }
    return Out.isNull() ? Value : Out;
}

std::string Escape(const QString& Value, bool Attribute) {
    const QByteArray B = XmlCharacters(Value).toUtf8();
    std::string Out;
    Out.reserve(static_cast<std::size_t>(B.size()) + 8);
    for (const char Ch : B) {
        const auto C = static_cast<unsigned char>(Ch);
        switch (C) {
        case '&':
            Out += "&amp;";
            break;
        case '<':
            Out += "&lt;";
            break;
        case '>':
            Out += "&gt;";
            break;
        case '"':
            if (Attribute)
                Out += "&quot;";
            else
                Out += '"';
            break;
        case '\t':
        case '\n':
            if (Attribute)
                AppendCharRef(Out, C);
            else
                Out += Ch;
            break;
        case '\r':
            // A literal one would become a line feed when read.
            AppendCharRef(Out, C);
            break;
        default:
            // Other controls are no XML characters, not even as references.
            if (C < 0x20)
                Out += "\xEF\xBF\xBD";
            else
                Out += Ch;
        }
    }
    return Out;
}

void AppendUtf8(std::string& Out, char32_t C) {
    if (C < 0x80) {
        Out += static_cast<char>(C);
    } else if (C < 0x800) {
        Out += static_cast<char>(0xC0 | (C >> 6));
        Out += static_cast<char>(0x80 | (C & 0x3F));
    } else if (C < 0x10000) {
        Out += static_cast<char>(0xE0 | (C >> 12));
        Out += static_cast<char>(0x80 | ((C >> 6) & 0x3F));
        Out += static_cast<char>(0x80 | (C & 0x3F));
    } else {
        Out += static_cast<char>(0xF0 | (C >> 18));
        Out += static_cast<char>(0x80 | ((C >> 12) & 0x3F));
        Out += static_cast<char>(0x80 | ((C >> 6) & 0x3F));
        Out += static_cast<char>(0x80 | (C & 0x3F));
    }
}

// The number of a character reference body "#65" or "#x41"; NoCharRef when it is not one.
constexpr unsigned long NoCharRef = static_cast<unsigned long>(-1);

unsigned long CharRefValue(std::string_view Body) {
    const bool Hex = Body.size() >= 2 && Body[1] == 'x';
    const std::string_view Digits = Body.substr(Hex ? 2 : 1);
    if (Digits.empty()) return NoCharRef;
    unsigned long V = 0;
    const auto R = std::from_chars(Digits.data(), Digits.data() + Digits.size(), V, Hex ? 16 : 10);
    if (R.ec == std::errc::result_out_of_range) return 0x110000;
    if (R.ec != std::errc() || R.ptr != Digits.data() + Digits.size()) return NoCharRef;
    return V;
}

// References to controls other than tab and line ends are accepted for files of earlier versions,
// which wrote them.
bool IsCharRefAllowed(unsigned long V) {
    return V != 0 && V <= 0x10FFFF && !(V >= 0xD800 && V <= 0xDFFF) && V != 0xFFFE && V != 0xFFFF;
}

// Offset in Raw of the first character reference that names no XML character, or npos.
std::size_t FindBadCharRef(std::string_view Raw) {
    for (std::size_t I = Raw.find("&#"); I != std::string_view::npos; I = Raw.find("&#", I + 2)) {
        const std::size_t Semi = Raw.find(';', I + 2);
        if (Semi == std::string_view::npos) return std::string_view::npos;
        const unsigned long V = CharRefValue(Raw.substr(I + 1, Semi - I - 1));
        if (V != NoCharRef && !IsCharRefAllowed(V)) return I;
    }
    return std::string_view::npos;
}

// A reference starting at S[0] == '&'; on success appends the character and returns the length
// of the reference, otherwise 0 (the '&' is then literal text).
std::size_t DecodeReference(std::string_view S, std::string& Out) {
    const std::size_t Semi = S.find(';', 1);
    if (Semi == std::string_view::npos || Semi > 12) return 0;
    const std::string_view Body = S.substr(1, Semi - 1);
    char32_t C = 0;
    if (Body == "lt")
        C = '<';
    else if (Body == "gt")
        C = '>';
    else if (Body == "amp")
        C = '&';
    else if (Body == "quot")
        C = '"';
    else if (Body == "apos")
        C = '\'';
    else if (Body.size() >= 2 && Body[0] == '#') {
        const unsigned long V = CharRefValue(Body);
        if (!IsCharRefAllowed(V)) return 0; // refused on load; never reached for a loaded text
        C = static_cast<char32_t>(V);
    } else {
        return 0;
    }
    AppendUtf8(Out, C);
    return Semi + 1;
}

// Raw text or attribute value as the application sees it. CDATA gets line ends normalised only.
enum TDecode { dText, dAttribute, dCData };

void DecodeInto(std::string& Out, std::string_view Raw, TDecode Mode) {
    for (std::size_t I = 0; I < Raw.size(); ++I) {
        const char C = Raw[I];
        if (C == '\r') {
            if (I + 1 < Raw.size() && Raw[I + 1] == '\n') ++I;
            Out += Mode == dAttribute ? ' ' : '\n';
        } else if (Mode == dAttribute && (C == '\n' || C == '\t')) {
            Out += ' ';
        } else if (C == '&' && Mode != dCData) {
            const std::size_t Len = DecodeReference(Raw.substr(I), Out);
            if (Len == 0)
                Out += C;
            else
                I += Len - 1;
        } else {
            Out += C;
        }
    }
}

bool NeedsDecoding(std::string_view Raw, TDecode Mode) {
    for (const char C : Raw) {
        if (C == '\r' || (C == '&' && Mode != dCData) || (Mode == dAttribute && (C == '\n' || C == '\t')))
            return true;
    }
    return false;
}

QString FromUtf8(std::string_view S) {
    return detail::Utf8KeepBom(QByteArrayView(S.data(), static_cast<qsizetype>(S.size())));
}

QString Decode(std::string_view Raw, TDecode Mode) {
    if (!NeedsDecoding(Raw, Mode)) return FromUtf8(Raw);
    std::string Out;
    Out.reserve(Raw.size());
    DecodeInto(Out, Raw, Mode);
    return FromUtf8(Out);
}

// Decoded attribute value equals Value (UTF-8), without building a QString when not needed.
bool AttrValueIs(const char* Raw, std::string_view Value) {
    const std::string_view R(Raw);
    if (!NeedsDecoding(R, dAttribute)) return R == Value;
    std::string Out;
    DecodeInto(Out, R, dAttribute);
    return Out == Value;
}

// --- Canonical printing ---

void AppendAttributes(std::string& Out, xml_node N) {
    for (pugi::xml_attribute A = N.first_attribute(); A; A = A.next_attribute()) {
        const char* V = A.value();
        const char Q = std::strchr(V, '"') ? '\'' : '"';
        Out += ' ';
        Out += A.name();
        Out += '=';
        Out += Q;
        Out += V;
        Out += Q;
    }
}

void AppendCanonicalStart(std::string& Out, xml_node N, bool SelfClose) {
    Out += '<';
    Out += N.name();
    AppendAttributes(Out, N);
    Out += SelfClose ? "/>" : ">";
}

void AppendCanonicalEnd(std::string& Out, xml_node N) {
    Out += "</";
    Out += N.name();
    Out += '>';
}

// Declaration, processing instruction or DOCTYPE.
void AppendCanonicalMarkup(std::string& Out, xml_node N) {
    switch (N.type()) {
    case pugi::node_declaration:
        Out += "<?";
        Out += N.name();
        AppendAttributes(Out, N);
        Out += "?>";
        break;
    case pugi::node_pi:
        Out += "<?";
        Out += N.name();
        if (*N.value()) {
            Out += ' ';
            Out += N.value();
        }
        Out += "?>";
        break;
    case pugi::node_doctype:
        Out += "<!DOCTYPE ";
        Out += N.value();
        Out += '>';
        break;
    default:
        break;
    }
}

// --- Tokens of the original text, to recover the text of tags -------------------------------------

enum TTokenKind { tkEnd, tkText, tkComment, tkCData, tkPI, tkDoctype, tkStart, tkEndTag, tkBad };

struct TToken {
    TTokenKind Kind = tkEnd;
    std::string_view Text;
    bool SelfClosed = false;
};

// The '>' that ends a tag whose attribute values may hold '>': the first one outside quotes
// after From, npos when there is none.
std::size_t TagEnd(std::string_view S, std::size_t From) {
    char Quote = 0;
    for (std::size_t Q = From; Q < S.size(); ++Q) {
        const char C = S[Q];
        if (Quote) {
            if (C == Quote) Quote = 0;
        } else if (C == '"' || C == '\'') {
            Quote = C;
        } else if (C == '>') {
            return Q;
        }
    }
    return std::string_view::npos;
}

// "<?xml" followed by a blank or "?>": the declaration, whose attributes are quoted.
bool IsDeclarationAt(std::string_view S, std::size_t P) {
    if (S.substr(P, 5) != "<?xml" || P + 5 >= S.size()) return false;
    return IsXmlSpace(S[P + 5]) || S[P + 5] == '?';
}

// Splits a text that pugixml has accepted into markup and text runs, following pugixml's rules
// where they matter (the DOCTYPE scan in particular).
class TRawScanner {
public:
    explicit TRawScanner(std::string_view Text) : S(Text) {}

    TToken Next() {
        TToken T;
        if (P >= S.size()) return T;
        const std::size_t Begin = P;
        if (S[P] != '<') {
            const std::size_t Lt = S.find('<', P);
            P = Lt == std::string_view::npos ? S.size() : Lt;
            T.Kind = tkText;
        } else if (StartsWith("<!--")) {
            T.Kind = SkipPast("-->", P + 4) ? tkComment : tkBad;
        } else if (StartsWith("<![CDATA[")) {
            T.Kind = SkipPast("]]>", P + 9) ? tkCData : tkBad;
        } else if (StartsWith("<!DOCTYPE")) {
            T.Kind = SkipDoctype() ? tkDoctype : tkBad;
        } else if (IsDeclarationAt(S, P)) {
            const std::size_t Q = TagEnd(S, P + 5);
            if (Q == std::string_view::npos || S[Q - 1] != '?') return Bad(Begin);
            T.Kind = tkPI;
            P = Q + 1;
        } else if (StartsWith("<?")) {
            T.Kind = SkipPast("?>", P + 2) ? tkPI : tkBad;
        } else if (StartsWith("</")) {
            T.Kind = SkipPast(">", P + 2) ? tkEndTag : tkBad;
        } else {
            const std::size_t Q = TagEnd(S, P + 1);
            if (Q == std::string_view::npos) return Bad(Begin);
            T.Kind = tkStart;
            T.SelfClosed = S[Q - 1] == '/';
            P = Q + 1;
        }
        if (T.Kind == tkBad) return Bad(Begin);
        T.Text = S.substr(Begin, P - Begin);
        return T;
    }

private:
    TToken Bad(std::size_t Begin) {
        P = S.size();
        TToken T;
        T.Kind = tkBad;
        T.Text = S.substr(Begin, 0);
        return T;
    }
    char At(std::size_t I) const { return I < S.size() ? S[I] : '\0'; }
    bool StartsWith(std::string_view Prefix) const { return S.substr(P, Prefix.size()) == Prefix; }
    bool SkipPast(std::string_view Tail, std::size_t From) {
        const std::size_t F = S.find(Tail, From);
        if (F == std::string_view::npos) return false;
        P = F + Tail.size();
        return true;
    }
    // "<![" ... "]]>" with nesting, I at "<![".
    bool SkipIgnore(std::size_t& I) const {
        std::size_t Depth = 0;
        I += 3;
        while (I < S.size()) {
            if (At(I) == '<' && At(I + 1) == '!' && At(I + 2) == '[') {
                I += 3;
                ++Depth;
            } else if (At(I) == ']' && At(I + 1) == ']' && At(I + 2) == '>') {
                I += 3;
                if (Depth == 0) return true;
                --Depth;
            } else {
                ++I;
            }
        }
        return false;
    }
    bool SkipPrimitive(std::size_t& I) const {
        const char C = At(I);
        std::size_t F;
        if (C == '"' || C == '\'') {
            F = S.find(C, I + 1);
            if (F == std::string_view::npos) return false;
            I = F + 1;
        } else if (At(I + 1) == '?') {
            F = S.find("?>", I + 2);
            if (F == std::string_view::npos) return false;
            I = F + 2;
        } else if (At(I + 1) == '!' && At(I + 2) == '-' && At(I + 3) == '-') {
            F = S.find("-->", I + 4);
            if (F == std::string_view::npos) return false;
            I = F + 3;
        } else {
            return false;
        }
        return true;
    }
    bool SkipDoctype() {
        std::size_t I = P + 2;
        std::size_t Depth = 0;
        while (I < S.size()) {
            const char C = S[I];
            if (C == '<' && At(I + 1) == '!' && At(I + 2) != '-') {
                if (At(I + 2) == '[') {
                    if (!SkipIgnore(I)) return false;
                } else {
                    I += 2;
                    ++Depth;
                }
            } else if (C == '<' || C == '"' || C == '\'') {
                if (!SkipPrimitive(I)) return false;
            } else if (C == '>') {
                if (Depth == 0) {
                    P = I + 1;
                    return true;
                }
                --Depth;
                ++I;
            } else {
                ++I;
            }
        }
        return false;
    }

    std::string_view S;
    std::size_t P = 0;
};

bool StartTagNames(std::string_view Tag, const char* Name, std::size_t Skip) {
    const std::size_t Len = std::strlen(Name);
    if (Tag.substr(Skip, Len) != std::string_view(Name, Len)) return false;
    const char After = Skip + Len < Tag.size() ? Tag[Skip + Len] : '\0';
    return After == '>' || After == '/' || IsXmlSpace(After);
}

struct TOpen {
    xml_node Node;
    std::string_view Start;
};

// Walks the tree in document order next to the tokens of the original text and keeps the text
// of every tag that the printer would not reproduce. When the two do not line up the table is
// cleared and saving prints canonical tags. Returns the offset of text left over after the whole
// tree (pugixml drops an incomplete tag at the very end), npos when there is none.
std::size_t CollectRawTags(TXmlDocumentData& D, std::string_view Text) {
    TRawScanner Scan(Text);
    std::vector<TOpen> Open;
    std::string Canon;

    auto CloseElement = [&]() {
        const TToken T = Scan.Next();
        const TOpen Top = Open.back();
        Open.pop_back();
        if (T.Kind != tkEndTag || !StartTagNames(T.Text, Top.Node.name(), 2)) return false;
        const bool HasChildren = static_cast<bool>(Top.Node.first_child());
        Canon.clear();
        AppendCanonicalStart(Canon, Top.Node, !HasChildren);
        if (!HasChildren || Canon != Top.Start || T.Text.size() != std::strlen(Top.Node.name()) + 3)
            D.Raw[Top.Node.internal_object()] = TRawTag{std::string(Top.Start), std::string(T.Text)};
        return true;
    };

    auto Match = [&](xml_node N, const TToken& T) {
        switch (N.type()) {
        case pugi::node_pcdata:
            return T.Kind == tkText && T.Text.size() == std::strlen(N.value());
        case pugi::node_cdata:
            return T.Kind == tkCData;
        case pugi::node_comment:
            return T.Kind == tkComment;
        case pugi::node_pi:
        case pugi::node_declaration:
        case pugi::node_doctype:
            if (T.Kind != (N.type() == pugi::node_doctype ? tkDoctype : tkPI)) return false;
            Canon.clear();
            AppendCanonicalMarkup(Canon, N);
            if (Canon != T.Text) D.Raw[N.internal_object()] = TRawTag{std::string(T.Text), {}};
            return true;
        case pugi::node_element:
            if (T.Kind != tkStart || !StartTagNames(T.Text, N.name(), 1)) return false;
            if (T.SelfClosed) {
                if (N.first_child()) return false;
                Canon.clear();
                AppendCanonicalStart(Canon, N, true);
                if (Canon != T.Text) D.Raw[N.internal_object()] = TRawTag{std::string(T.Text), {}};
            } else {
                Open.push_back({N, T.Text});
            }
            return true;
        default:
            return false;
        }
    };

    const xml_node Top = D.Doc;
    xml_node Cur = Top.first_child();
    bool Ok = true;
    while (Cur && Ok) {
        const TToken T = Scan.Next();
        if (!Match(Cur, T)) {
            Ok = false;
            break;
        }
        const bool Opened = !Open.empty() && Open.back().Node == Cur;
        if (Opened && Cur.first_child()) {
            Cur = Cur.first_child();
            continue;
        }
        if (Opened && !CloseElement()) {
            Ok = false;
            break;
        }
        while (Cur && !Cur.next_sibling()) {
            Cur = Cur.parent();
            if (Cur == Top)
                Cur = xml_node();
            else if (!CloseElement())
                Ok = false;
            if (!Ok) break;
        }
        if (Cur && Ok) Cur = Cur.next_sibling();
    }
    std::size_t Leftover = std::string_view::npos;
    if (Ok && Open.empty()) {
        const TToken T = Scan.Next();
        if (T.Kind != tkEnd) Leftover = static_cast<std::size_t>(T.Text.data() - Text.data());
    } else {
        D.Raw.clear();
    }
    return Leftover;
}

// --- Loading ---

struct TTextPos {
    int Line;
    int Column;
};

TTextPos PositionOf(std::string_view Text, std::size_t Offset) {
    if (Offset > Text.size()) Offset = Text.size();
    int Line = 1;
    std::size_t LineStart = 0;
    for (std::size_t I = 0; I < Offset; ++I) {
        if (Text[I] == '\n') {
            ++Line;
            LineStart = I + 1;
        }
    }
    int Column = 1;
    for (std::size_t I = LineStart; I < Offset; ++I)
        if ((static_cast<unsigned char>(Text[I]) & 0xC0) != 0x80) ++Column;
    return {Line, Column};
}

[[noreturn]] void Fail(std::string_view Text, std::size_t Offset, const QString& Reason,
                       const QString& Source) {
    const TTextPos Pos = PositionOf(Text, Offset);
    throw EXmlError(Reason, Pos.Line, Pos.Column, Source);
}

// Offset of the first byte that is not well-formed UTF-8 or not an XML character, or npos.
std::size_t FindBadCharacter(std::string_view T, QString& Reason) {
    const auto* B = reinterpret_cast<const unsigned char*>(T.data());
    const std::size_t N = T.size();
    const std::size_t BadUtf8 = detail::Utf8ErrorOffset(QByteArrayView(T.data(), static_cast<qsizetype>(N)));
    const std::size_t End = BadUtf8 == detail::Utf8Valid ? N : BadUtf8;
    std::size_t I = 0;
    while (I < End) {
        // Eight bytes at a time that hold no control and no EF (the lead byte of U+FFFE/FFFF).
        if (I + 8 <= End) {
            quint64 W;
            std::memcpy(&W, B + I, 8);
            constexpr quint64 Ones = 0x0101010101010101ULL, Highs = 0x8080808080808080ULL;
            const quint64 Ef = W ^ (Ones * 0xEF);
            const quint64 AnyBelowBlank = (W - Ones * 0x20) & ~W & Highs;
            const quint64 AnyEf = (Ef - Ones) & ~Ef & Highs;
            if ((AnyBelowBlank | AnyEf) == 0) {
                I += 8;
                continue;
            }
        }
        const unsigned C = B[I];
        if (C < 0x20 && C != '\t' && C != '\n' && C != '\r') {
            Reason = QStringLiteral("invalid character U+%1")
                         .arg(QString::number(C, 16).toUpper().rightJustified(4, QLatin1Char('0')));
            return I;
        }
        if (C == 0xEF && I + 2 < N && B[I + 1] == 0xBF && (B[I + 2] == 0xBE || B[I + 2] == 0xBF)) {
            Reason = QStringLiteral("invalid character U+%1").arg(B[I + 2] == 0xBE ? u"FFFE" : u"FFFF");
            return I;
        }
        ++I;
    }
    if (BadUtf8 != detail::Utf8Valid) Reason = QStringLiteral("invalid UTF-8 byte sequence");
    return BadUtf8 == detail::Utf8Valid ? std::string_view::npos : BadUtf8;
}

std::size_t NodeOffset(xml_node N) {
    const std::ptrdiff_t Off = N.offset_debug();
    return Off < 0 ? 0 : static_cast<std::size_t>(Off);
}

// Top-level rules that pugixml leaves to its caller in fragment mode.
void CheckTopLevel(const TXmlDocumentData& D, std::string_view Text, const QString& Source) {
    int Elements = 0;
    bool SeenMarkup = false;
    for (xml_node N = D.Doc.first_child(); N; N = N.next_sibling()) {
        switch (N.type()) {
        case pugi::node_element:
            // The offset is that of the name; the tag starts one byte earlier.
            if (++Elements > 1)
                Fail(Text, NodeOffset(N) ? NodeOffset(N) - 1 : 0,
                     QStringLiteral("more than one root element"), Source);
            break;
        case pugi::node_pcdata:
            if (!IsSpaceText(N.value()))
                Fail(Text, NodeOffset(N), QStringLiteral("text outside the root element"), Source);
            continue;
        case pugi::node_cdata:
            Fail(Text, NodeOffset(N), QStringLiteral("CDATA outside the root element"), Source);
        case pugi::node_declaration: {
            // The offset is that of the name "xml", after "<?".
            const std::size_t Start = NodeOffset(N) >= 2 ? NodeOffset(N) - 2 : 0;
            if (SeenMarkup || !IsDeclarationAt(Text, Start))
                Fail(Text, Start, QStringLiteral("XML declaration not at the start"), Source);
            // pugixml also ends a declaration at "/>" and reads on; only "?>" ends one.
            const std::size_t End = TagEnd(Text, Start + 5);
            if (End == std::string_view::npos || Text[End - 1] != '?')
                Fail(Text, End == std::string_view::npos ? Text.size() : End,
                     QStringLiteral("malformed XML declaration"), Source);
            break;
        }
        case pugi::node_doctype:
            if (Elements > 0)
                Fail(Text, NodeOffset(N), QStringLiteral("DOCTYPE after the root element"), Source);
            break;
        default:
            break;
        }
        SeenMarkup = true;
    }
    if (Elements == 0) Fail(Text, Text.size(), QStringLiteral("no root element"), Source);
}

// No case file comes near this; far deeper documents are refused before anything walks them.
constexpr int MaxDepth = 1000;
constexpr std::size_t MaxIndent = 100;

// Nesting depth and character references, which pugixml leaves unchecked.
void CheckTree(const TXmlDocumentData& D, std::string_view Text, const QString& Source) {
    const QString BadRef = QStringLiteral("character reference to a character XML does not allow");
    const xml_node Top = D.Doc;
    xml_node Cur = Top.first_child();
    int Depth = 1;
    while (Cur) {
        if (Cur.type() == pugi::node_pcdata) {
            const std::size_t Bad = FindBadCharRef(Cur.value());
            if (Bad != std::string_view::npos) Fail(Text, NodeOffset(Cur) + Bad, BadRef, Source);
        } else if (Cur.type() == pugi::node_element) {
            if (Depth > MaxDepth)
                Fail(Text, NodeOffset(Cur) ? NodeOffset(Cur) - 1 : 0,
                     QStringLiteral("elements nested deeper than %1 levels").arg(MaxDepth), Source);
            for (pugi::xml_attribute A = Cur.first_attribute(); A; A = A.next_attribute())
                if (FindBadCharRef(A.value()) != std::string_view::npos)
                    Fail(Text, NodeOffset(Cur), BadRef, Source);
            if (Cur.first_child()) {
                Cur = Cur.first_child();
                ++Depth;
                continue;
            }
        }
        while (Cur && !Cur.next_sibling()) {
            Cur = Cur.parent();
            --Depth;
            if (Cur == Top) Cur = xml_node();
        }
        if (Cur) Cur = Cur.next_sibling();
    }
}

constexpr unsigned ParseOptions = pugi::parse_pi | pugi::parse_comments | pugi::parse_cdata |
                                  pugi::parse_ws_pcdata | pugi::parse_declaration | pugi::parse_doctype |
                                  pugi::parse_fragment;

std::unique_ptr<TXmlDocumentData> Parse(const QByteArray& Bytes, const QString& Source) {
    auto D = std::make_unique<TXmlDocumentData>();
    std::string_view Text(Bytes.constData(), static_cast<std::size_t>(Bytes.size()));
    if (Text.substr(0, 3) == "\xEF\xBB\xBF") {
        D->Bom = true;
        Text.remove_prefix(3);
    } else if (Text.substr(0, 2) == "\xFF\xFE" || Text.substr(0, 2) == "\xFE\xFF" ||
               Text.substr(0, 4) == std::string_view("\0\0\xFE\xFF", 4)) {
        throw EXmlError(QStringLiteral("the document is not UTF-8 (UTF-16 or UTF-32 byte order mark)"), 1, 1,
                        Source);
    }
    // pugixml would drop a second byte order mark silently; it is a character outside the root.
    if (Text.substr(0, 3) == "\xEF\xBB\xBF")
        Fail(Text, 0, QStringLiteral("text outside the root element"), Source);
    QString Reason;
    const std::size_t Bad = FindBadCharacter(Text, Reason);
    if (Bad != std::string_view::npos) Fail(Text, Bad, Reason, Source);

    const pugi::xml_parse_result R =
        D->Doc.load_buffer(Text.data(), Text.size(), ParseOptions, pugi::encoding_utf8);
    if (!R) Fail(Text, static_cast<std::size_t>(R.offset), QString::fromUtf8(R.description()), Source);
    CheckTopLevel(*D, Text, Source);
    CheckTree(*D, Text, Source);
    const std::size_t Leftover = CollectRawTags(*D, Text);
    if (Leftover != std::string_view::npos) Fail(Text, Leftover, QStringLiteral("incomplete markup"), Source);

    D->SizeHint = Text.size();
    const std::size_t Lf = Text.find('\n');
    if (Lf != std::string_view::npos && Lf > 0 && Text[Lf - 1] == '\r') D->Eol = "\r\n";
    return D;
}

// --- Printing ---

void AppendOpen(std::string& Out, const TXmlDocumentData& D, xml_node N) {
    switch (N.type()) {
    case pugi::node_pcdata:
        Out += N.value();
        break;
    case pugi::node_cdata:
        Out += "<![CDATA[";
        Out += N.value();
        Out += "]]>";
        break;
    case pugi::node_comment:
        Out += "<!--";
        Out += N.value();
        Out += "-->";
        break;
    case pugi::node_declaration:
    case pugi::node_pi:
    case pugi::node_doctype:
        if (const TRawTag* Raw = D.RawOf(N))
            Out += Raw->Start;
        else
            AppendCanonicalMarkup(Out, N);
        break;
    case pugi::node_element: {
        const bool HasChildren = static_cast<bool>(N.first_child());
        const TRawTag* Raw = D.RawOf(N);
        if (Raw && (!Raw->End.empty() || !HasChildren))
            Out += Raw->Start;
        else
            AppendCanonicalStart(Out, N, !HasChildren);
        break;
    }
    default:
        break;
    }
}

// The end tag of an element, when it has one.
void AppendClose(std::string& Out, const TXmlDocumentData& D, xml_node N) {
    const TRawTag* Raw = D.RawOf(N);
    if (Raw && !Raw->End.empty())
        Out += Raw->End;
    else if (N.first_child())
        AppendCanonicalEnd(Out, N);
}

std::string Print(const TXmlDocumentData& D) {
    std::string Out;
    Out.reserve(D.SizeHint + D.SizeHint / 8 + 64);
    if (D.Bom) Out += "\xEF\xBB\xBF";
    const xml_node Top = D.Doc;
    xml_node Cur = Top.first_child();
    while (Cur) {
        AppendOpen(Out, D, Cur);
        if (Cur.type() == pugi::node_element && Cur.first_child()) {
            Cur = Cur.first_child();
            continue;
        }
        if (Cur.type() == pugi::node_element) AppendClose(Out, D, Cur);
        while (Cur && !Cur.next_sibling()) {
            Cur = Cur.parent();
            if (Cur == Top)
                Cur = xml_node();
            else
                AppendClose(Out, D, Cur);
        }
        if (Cur) Cur = Cur.next_sibling();
    }
    return Out;
}

} // namespace

// --- Tree edits that keep the side table and the layout in order ---------------------------------

namespace {
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
[[noreturn]] void NotA(const QString& Text, const char* What) {
    throw EConvertError(QStringLiteral("'%1' is not a valid %2").arg(Text, QLatin1String(What)));
}
} // namespace

int TXmlNode::ValueAsInteger() const {
    const QString T = ValueAsString();
    int V = 0;
    if (!XmlTryStrToInt(T, V)) NotA(T, "integer value");
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
    if (!XmlTryStrToBool(T, V)) NotA(T, "boolean value");
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
    if (!XmlTryStrToFloat(T, V)) NotA(T, "floating point value");
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
    if (!XmlTryStrToDateTime(T, V)) NotA(T, "date and time");
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
        throw Exception(QStringLiteral("Cannot open \"%1\": %2").arg(FileName, F.errorString()));
    const QByteArray Bytes = F.readAll();
    if (F.error() != QFileDevice::NoError)
        throw Exception(QStringLiteral("Cannot read \"%1\": %2").arg(FileName, F.errorString()));
    D = Parse(Bytes, FileName);
}

void TXmlDocument::LoadFromBytes(const QByteArray& Utf8) {
    D = Parse(Utf8, {});
}

void TXmlDocument::SaveToFile(const QString& FileName) const {
    const QByteArray Bytes = SaveToBytes();
    QSaveFile F(FileName);
    if (!F.open(QIODevice::WriteOnly) || F.write(Bytes) != Bytes.size() || !F.commit())
        throw Exception(QStringLiteral("Cannot write \"%1\": %2").arg(FileName, F.errorString()));
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

// --- Typed text ----------------------------------------------------------------------------------

QString XmlBoolToStr(bool Value) {
    return Value ? QStringLiteral("True") : QStringLiteral("False");
}

QString XmlIntToStr(int Value) {
    return QString::number(Value);
}

namespace {
// Trimmed ASCII text, or empty when the text holds anything else (which no number does).
std::string AsciiTrimmed(const QString& Text) {
    const QString T = Text.trimmed();
    std::string S;
    S.reserve(static_cast<std::size_t>(T.size()));
    for (const QChar C : T) {
        if (C.unicode() >= 0x80) return {};
        S += static_cast<char>(C.unicode());
    }
    return S;
}

bool ParseDouble(const std::string& S, double& Value) {
    std::size_t Skip = 0;
    if (!S.empty() && S[0] == '+') Skip = 1;
    if (Skip == S.size() || (Skip == 1 && S[1] == '-')) return false;
    double V = 0;
    const char* End = S.data() + S.size();
    const auto R = std::from_chars(S.data() + Skip, End, V, std::chars_format::general);
    if (R.ec != std::errc() || R.ptr != End) return false;
    Value = V;
    return true;
}
} // namespace

bool XmlTryStrToInt(const QString& Text, int& Value) {
    const std::string S = AsciiTrimmed(Text);
    std::size_t Skip = 0;
    if (!S.empty() && S[0] == '+') Skip = 1;
    if (Skip == S.size() || (Skip == 1 && S[1] == '-')) return false;
    int V = 0;
    const char* End = S.data() + S.size();
    const auto R = std::from_chars(S.data() + Skip, End, V);
    if (R.ec != std::errc() || R.ptr != End) return false;
    Value = V;
    return true;
}

bool XmlTryStrToBool(const QString& Text, bool& Value) {
    const QString T = Text.trimmed();
    if (T.compare(QLatin1String("true"), Qt::CaseInsensitive) == 0) {
        Value = true;
        return true;
    }
    if (T.compare(QLatin1String("false"), Qt::CaseInsensitive) == 0) {
        Value = false;
        return true;
    }
    double V = 0;
    if (!ParseDouble(AsciiTrimmed(T), V) || std::isnan(V)) return false;
    Value = V != 0;
    return true;
}

QString XmlFloatToStr(double Value) {
    if (std::isnan(Value)) return QStringLiteral("NAN");
    if (std::isinf(Value)) return Value > 0 ? QStringLiteral("INF") : QStringLiteral("-INF");
    char Buf[64];
    const auto R = std::to_chars(Buf, Buf + sizeof Buf, Value);
    return QString::fromLatin1(Buf, static_cast<qsizetype>(R.ptr - Buf));
}

bool XmlTryStrToFloat(const QString& Text, double& Value) {
    return ParseDouble(AsciiTrimmed(Text), Value);
}

QString XmlDateTimeToStr(const QDateTime& Value) {
    if (!Value.isValid()) return {};
    const QDateTime L = Value.toLocalTime();
    return L.toString(L.time().msec() ? QStringLiteral("yyyy-MM-dd'T'HH:mm:ss.zzz")
                                      : QStringLiteral("yyyy-MM-dd'T'HH:mm:ss"));
}

bool XmlTryStrToDateTime(const QString& Text, QDateTime& Value) {
    QString T = Text.trimmed();
    if (T.size() > 10 && T[10] == QLatin1Char(' ')) T[10] = QLatin1Char('T');
    QDateTime V;
    if (T.size() > 10) {
        V = QDateTime::fromString(T, Qt::ISODateWithMs);
    } else {
        const QDate Date = QDate::fromString(T, Qt::ISODate);
        if (Date.isValid()) V = Date.startOfDay();
    }
    if (!V.isValid()) return false;
    Value = V.toLocalTime();
    return true;
}

} // namespace qxnum

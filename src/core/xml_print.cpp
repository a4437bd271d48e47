// The byte-faithful printer: canonical tags, the tokenizer that recovers the original text of
// tags on load, and the side table that keeps those texts. pugixml's own printer normalises tags
// (quotes, blanks, "<a></a>"), so saving is done here: tags are printed from the tree except where
// the original text differs from that canonical form.
#include "xml_p.h"

#include <cstring>
#include <vector>

namespace qxnum::xmlimpl {

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

namespace {

// --- Canonical printing ---

void AppendAttributes(std::string& Out, pugi::xml_node N) {
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

void AppendCanonicalStart(std::string& Out, pugi::xml_node N, bool SelfClose) {
    Out += '<';
    Out += N.name();
    AppendAttributes(Out, N);
    Out += SelfClose ? "/>" : ">";
}

void AppendCanonicalEnd(std::string& Out, pugi::xml_node N) {
    Out += "</";
    Out += N.name();
    Out += '>';
}

// Declaration, processing instruction or DOCTYPE.
void AppendCanonicalMarkup(std::string& Out, pugi::xml_node N) {
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
    pugi::xml_node Node;
    std::string_view Start;
};

// --- Printing ---

void AppendOpen(std::string& Out, const TXmlDocumentData& D, pugi::xml_node N) {
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
void AppendClose(std::string& Out, const TXmlDocumentData& D, pugi::xml_node N) {
    const TRawTag* Raw = D.RawOf(N);
    if (Raw && !Raw->End.empty())
        Out += Raw->End;
    else if (N.first_child())
        AppendCanonicalEnd(Out, N);
}

} // namespace

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

    auto Match = [&](pugi::xml_node N, const TToken& T) {
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

    const pugi::xml_node Top = D.Doc;
    pugi::xml_node Cur = Top.first_child();
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
                Cur = pugi::xml_node();
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

std::string Print(const TXmlDocumentData& D) {
    std::string Out;
    Out.reserve(D.SizeHint + D.SizeHint / 8 + 64);
    if (D.Bom) Out += "\xEF\xBB\xBF";
    const pugi::xml_node Top = D.Doc;
    pugi::xml_node Cur = Top.first_child();
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
                Cur = pugi::xml_node();
            else
                AppendClose(Out, D, Cur);
        }
        if (Cur) Cur = Cur.next_sibling();
    }
    return Out;
}

} // namespace qxnum::xmlimpl

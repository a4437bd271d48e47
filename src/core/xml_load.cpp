// Loading: pugixml parses, and the rules it leaves to its caller are checked here (characters,
// the top level, nesting depth, character references), all before the document is replaced.
#include "xml_p.h"

#include "tr_p.h"

namespace qxnum::xmlimpl {

namespace {

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

std::size_t NodeOffset(pugi::xml_node N) {
    const std::ptrdiff_t Off = N.offset_debug();
    return Off < 0 ? 0 : static_cast<std::size_t>(Off);
}

// Top-level rules that pugixml leaves to its caller in fragment mode.
void CheckTopLevel(const TXmlDocumentData& D, std::string_view Text, const QString& Source) {
    int Elements = 0;
    bool SeenMarkup = false;
    for (pugi::xml_node N = D.Doc.first_child(); N; N = N.next_sibling()) {
        switch (N.type()) {
        case pugi::node_element:
            // The offset is that of the name; the tag starts one byte earlier.
            if (++Elements > 1)
                Fail(Text, NodeOffset(N) ? NodeOffset(N) - 1 : 0,
                     detail::Tr("qxnum::TXmlDocument", "more than one root element"), Source);
            break;
        case pugi::node_pcdata:
            if (!IsSpaceText(N.value()))
                Fail(Text, NodeOffset(N), detail::Tr("qxnum::TXmlDocument", "text outside the root element"),
                     Source);
            continue;
        case pugi::node_cdata:
            Fail(Text, NodeOffset(N), detail::Tr("qxnum::TXmlDocument", "CDATA outside the root element"),
                 Source);
        case pugi::node_declaration: {
            // The offset is that of the name "xml", after "<?".
            const std::size_t Start = NodeOffset(N) >= 2 ? NodeOffset(N) - 2 : 0;
            if (SeenMarkup || !IsDeclarationAt(Text, Start))
                Fail(Text, Start, detail::Tr("qxnum::TXmlDocument", "XML declaration not at the start"),
                     Source);
            // pugixml also ends a declaration at "/>" and reads on; only "?>" ends one.
            const std::size_t End = TagEnd(Text, Start + 5);
            if (End == std::string_view::npos || Text[End - 1] != '?')
                Fail(Text, End == std::string_view::npos ? Text.size() : End,
                     detail::Tr("qxnum::TXmlDocument", "malformed XML declaration"), Source);
            break;
        }
        case pugi::node_doctype:
            if (Elements > 0)
                Fail(Text, NodeOffset(N), detail::Tr("qxnum::TXmlDocument", "DOCTYPE after the root element"),
                     Source);
            break;
        default:
            break;
        }
        SeenMarkup = true;
    }
    if (Elements == 0) Fail(Text, Text.size(), detail::Tr("qxnum::TXmlDocument", "no root element"), Source);
}

// Nesting depth and character references, which pugixml leaves unchecked.
void CheckTree(const TXmlDocumentData& D, std::string_view Text, const QString& Source) {
    const QString BadRef =
        detail::Tr("qxnum::TXmlDocument", "character reference to a character XML does not allow");
    const pugi::xml_node Top = D.Doc;
    pugi::xml_node Cur = Top.first_child();
    int Depth = 1;
    while (Cur) {
        if (Cur.type() == pugi::node_pcdata) {
            const std::size_t Bad = FindBadCharRef(Cur.value());
            if (Bad != std::string_view::npos) Fail(Text, NodeOffset(Cur) + Bad, BadRef, Source);
        } else if (Cur.type() == pugi::node_element) {
            if (Depth > MaxDepth)
                Fail(Text, NodeOffset(Cur) ? NodeOffset(Cur) - 1 : 0,
                     detail::Tr("qxnum::TXmlDocument", "elements nested deeper than %1 levels").arg(MaxDepth),
                     Source);
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
            if (Cur == Top) Cur = pugi::xml_node();
        }
        if (Cur) Cur = Cur.next_sibling();
    }
}

constexpr unsigned ParseOptions = pugi::parse_pi | pugi::parse_comments | pugi::parse_cdata |
                                  pugi::parse_ws_pcdata | pugi::parse_declaration | pugi::parse_doctype |
                                  pugi::parse_fragment;

} // namespace

std::unique_ptr<TXmlDocumentData> Parse(const QByteArray& Bytes, const QString& Source) {
    auto D = std::make_unique<TXmlDocumentData>();
    std::string_view Text(Bytes.constData(), static_cast<std::size_t>(Bytes.size()));
    if (Text.substr(0, 3) == "\xEF\xBB\xBF") {
        D->Bom = true;
        Text.remove_prefix(3);
    } else if (Text.substr(0, 2) == "\xFF\xFE" || Text.substr(0, 2) == "\xFE\xFF" ||
               Text.substr(0, 4) == std::string_view("\0\0\xFE\xFF", 4)) {
        throw EXmlError(
            detail::Tr("qxnum::TXmlDocument", "the document is not UTF-8 (UTF-16 or UTF-32 byte order mark)"),
            1, 1, Source);
    }
    // pugixml would drop a second byte order mark silently; it is a character outside the root.
    if (Text.substr(0, 3) == "\xEF\xBB\xBF")
        Fail(Text, 0, detail::Tr("qxnum::TXmlDocument", "text outside the root element"), Source);
    QString Reason;
    const std::size_t Bad = FindBadCharacter(Text, Reason);
    if (Bad != std::string_view::npos) Fail(Text, Bad, Reason, Source);

    const pugi::xml_parse_result R =
        D->Doc.load_buffer(Text.data(), Text.size(), ParseOptions, pugi::encoding_utf8);
    if (!R)
        Fail(Text, static_cast<std::size_t>(R.offset), detail::Tr("qxnum::TXmlDocument", R.description()),
             Source);
    CheckTopLevel(*D, Text, Source);
    CheckTree(*D, Text, Source);
    const std::size_t Leftover = CollectRawTags(*D, Text);
    if (Leftover != std::string_view::npos)
        Fail(Text, Leftover, detail::Tr("qxnum::TXmlDocument", "incomplete markup"), Source);

    D->SizeHint = Text.size();
    const std::size_t Lf = Text.find('\n');
    if (Lf != std::string_view::npos && Lf > 0 && Text[Lf - 1] == '\r') D->Eol = "\r\n";
    return D;
}

} // namespace qxnum::xmlimpl

#include <qxnum/xml.h>

#include "throwmsg.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <pugixml.hpp>

#include <cmath>
#include <limits>
#include <optional>

using namespace qxnum;

namespace {

TXmlDocument Load(const QByteArray& Text) {
    TXmlDocument Doc;
    Doc.LoadFromBytes(Text);
    return Doc;
}

// What a strict reader returns, or nullopt when it raises EConvertError.
template <typename T, typename F> std::optional<T> Strict(F&& Read) {
    try {
        return Read();
    } catch (const EConvertError&) {
        return std::nullopt;
    }
}

} // namespace

// --- Faithful round trips -------------------------------------------------------------------------

TEST(XmlDocument, UnchangedDocumentsSaveByteForByte) {
    const QByteArray Cases[] = {
        // byte order mark, declaration in single quotes with odd blanks, CRLF line ends
        "\xEF\xBB\xBF<?xml version='1.0'  encoding=\"utf-8\" ?>\r\n<Case>\r\n  <a/>\r\n</Case>\r\n",
        // comments, processing instructions, DOCTYPE with an internal subset holding '>'
        "<!-- head -->\n<!DOCTYPE  Case [ <!ENTITY e \"x>y\"> <!-- c > --> ]>\n<?app   keep  this ?>\n"
        "<Case><?inner?><!--in--></Case>\n<!-- tail -->",
        // references stay as written (predefined, numeric, unknown, a lone ampersand); CDATA;
        // non-ASCII names and values; blanks and line breaks inside tags, empty element forms
        "<r a=\"1&amp;2&#x41;&apos;\" b='say \"hi\"'>&lt;&#65;&#x42;&e; &amp; R&D &gt;</r>",
        "<Größe Einheit=\"°C\"><![CDATA[<b>&amp;</b>]]>Ω 😀 ü</Größe>",
        "<r  x = '1'\n   y=\"2\" ><e></e><f /><g\t/><h ></h ></r >",
        // whitespace before the declaration, none at the end; '>' and tabs in attribute values
        "  <?xml version=\"1.0\"?><r a=\"x>y\" b=\"\t&#9;\"/>",
        "<?xml version='1.0' encoding = \"x>y\"?>\n<r/>",
        // foreign elements around fields, text with CR LF inside values
        "<Form>\n\t<Unknown deep=\"1\"><More>text\r\nline</More></Unknown>\n\t<INumFld ID=\"a\" "
        "ClassName=\"TStringFld\"><Value>x</Value></INumFld>\n</Form>\n\n",
        // as deep as a document may nest
        QByteArray("<n>").repeated(1000) + "x" + QByteArray("</n >").repeated(1000),
    };
    for (const QByteArray& In : Cases)
        EXPECT_EQ(Load(In).SaveToBytes(), In) << In.left(200).toStdString();
}

TEST(XmlDocument, EditsLeaveForeignContentAlone) {
    TXmlDocument Doc =
        Load("<?xml version='1.0'?>\n"
             "<Form version = '2'>\n"
             "  <!-- written by another program -->\n"
             "  <INumFld ID=\"a\" ClassName='TStringFld' ><Value>old</Value><Extra/></INumFld>\n"
             "  <INumFld ID=\"b\" ClassName=\"TCheckFld\"><Value>True</Value></INumFld>\n"
             "  <Foreign x='1'/>\n"
             "</Form>\n");
    TXmlNode Form = Doc.Root();
    TXmlNode A = Form.NodeByAttributeValue("INumFld", "ID", "a");
    ASSERT_TRUE(A);
    A.WriteString("Value", "new & <improved>");
    A.WriteAttributeString("ClassName", "TStringFld"); // unchanged: the tag keeps its quoting
    ASSERT_TRUE(Form.NodeRemove(Form.NodeByAttributeValue("INumFld", "ID", "b")));
    TXmlNode C = Form.NodeNew("INumFld");
    C.WriteAttributeString("ID", "c");
    C.WriteAttributeString("ClassName", "TNumFld");
    C.WriteString("Value", "1.5");
    EXPECT_EQ(Doc.SaveToBytes(), QByteArray("<?xml version='1.0'?>\n"
                                            "<Form version = '2'>\n"
                                            "  <!-- written by another program -->\n"
                                            "  <INumFld ID=\"a\" ClassName='TStringFld' ><Value>new &amp; "
                                            "&lt;improved&gt;</Value><Extra/></INumFld>\n"
                                            "  <Foreign x='1'/>\n"
                                            "  <INumFld ID=\"c\" ClassName=\"TNumFld\">\n"
                                            "    <Value>1.5</Value>\n"
                                            "  </INumFld>\n"
                                            "</Form>\n"));

    // Rewriting the values a document already holds changes nothing; a new value regenerates the tag.
    const QByteArray Text("<r a='x&#32;y' b=\"&quot;\"><v>a &gt; b</v><w><![CDATA[c]]></w><e></e></r>");
    Doc.LoadFromBytes(Text);
    TXmlNode R = Doc.Root();
    R.WriteAttributeString("a", "x y");
    R.WriteAttributeString("b", "\"");
    R.WriteString("v", "a > b");
    R.WriteString("w", "c");
    R.WriteString("e", "");
    EXPECT_EQ(Doc.SaveToBytes(), Text);
    R.WriteAttributeString("a", "z");
    EXPECT_EQ(Doc.SaveToBytes(),
              QByteArray("<r a=\"z\" b=\"&quot;\"><v>a &gt; b</v><w><![CDATA[c]]></w><e></e></r>"));
}

TEST(XmlDocument, NewAndDeletedContentFollowTheIndentation) {
    TXmlDocument Doc;
    TXmlNode F = Doc.CreateRoot("Case").NodeNew("INumFld");
    F.WriteAttributeString("ID", "p");
    F.WriteString("Value", "1.5");
    F.WriteBool("Visible", true);
    Doc.Root().NodeNew("Empty");
    EXPECT_EQ(Doc.SaveToBytes(), QByteArray("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                            "<Case>\n"
                                            "  <INumFld ID=\"p\">\n"
                                            "    <Value>1.5</Value>\n"
                                            "    <Visible>True</Visible>\n"
                                            "  </INumFld>\n"
                                            "  <Empty/>\n"
                                            "</Case>\n"));
    // CR LF documents get CR LF; compact documents stay compact.
    TXmlDocument Crlf = Load("<a>\r\n\t<b/>\r\n</a>\r\n");
    Crlf.Root().NodeNew("c").NodeNew("d");
    EXPECT_EQ(Crlf.SaveToBytes(), QByteArray("<a>\r\n\t<b/>\r\n\t<c>\r\n\t  <d/>\r\n\t</c>\r\n</a>\r\n"));
    TXmlDocument Compact = Load("<a><b><c/></b></a>");
    Compact.Root().NodeByName("b").NodeNew("d");
    EXPECT_EQ(Compact.SaveToBytes(), QByteArray("<a><b><c/><d/></b></a>"));

    // Deleting takes the indentation along.
    Doc.LoadFromBytes("<a>\n  <x/>\n  <y/>\n  <x/>\n</a>\n");
    TXmlNode A = Doc.Root();
    EXPECT_EQ(A.NodesDelete("x"), 2);
    EXPECT_EQ(Doc.SaveToBytes(), QByteArray("<a>\n  <y/>\n</a>\n"));
    EXPECT_TRUE(A.NodeDelete(0));
    EXPECT_FALSE(A.NodeDelete(0));
    EXPECT_EQ(Doc.SaveToBytes(), QByteArray("<a/>\n"));
    // A grid rewrites its rows afresh: all content goes, the new rows are indented again.
    Doc.LoadFromBytes("<g>\n  <Rows>\n    <Row0>a</Row0>\n    <!-- c -->\n  </Rows>\n</g>");
    TXmlNode Rows = Doc.Root().NodeByName("Rows");
    Rows.DeleteChildren();
    Rows.WriteString("Row0", "b");
    EXPECT_EQ(Doc.SaveToBytes(), QByteArray("<g>\n  <Rows>\n    <Row0>b</Row0>\n  </Rows>\n</g>"));
}

// --- Malformed input -----------------------------------------------------------------------------

TEST(XmlDocument, MalformedInputReportsWhereAndKeepsTheDocument) {
    const struct {
        QByteArray Text;
        int Line, Column;
        const char* Reason; // part of the reason text
    } Cases[] = {
        {"", 1, 1, "no root element"},
        {"  \n ", 2, 2, "no root element"},
        {"<a>\n  <b>\n</a>", 3, 3, "mismatch"},
        {"<a>\n<b x=1/></a>", 2, 6, ""},
        {"<a/>\n<b/>", 2, 1, "more than one root element"},
        {"text<a/>", 1, 1, "text outside the root element"},
        {"\xEF\xBB\xBF\xEF\xBB\xBF<a/>", 1, 1, "text outside the root element"},
        {"<a/>\n<?xml version=\"1.0\"?>", 2, 1, "declaration"},
        {"<?xml version='1.0' /> junk ?><a/>", 1, 22, "malformed XML declaration"},
        {"<a>\n\x01</a>", 2, 1, "invalid character U+0001"},
        {QByteArray("<a>\0</a>", 8), 1, 4, "invalid character U+0000"},
        {"<a>\xC3\x28</a>", 1, 4, "invalid UTF-8"},
        {"<a>abcdefgh\x1Fijklmnop</a>", 1, 12, "invalid character U+001F"},
        {"<a>abcdefghijk\xC3\x28</a>", 1, 15, "invalid UTF-8"},
        {"<a>\xED\xA0\x80</a>", 1, 4, "invalid UTF-8"},       // an encoded surrogate
        {"<a>\xC0\xAF</a>", 1, 4, "invalid UTF-8"},           // overlong
        {"<\xC3\xA4>\xC3\xA4\xFF</\xC3\xA4>", 1, 5, "UTF-8"}, // columns count characters
        {"\xFF\xFE<\0a\0/\0>\0", 1, 1, "not UTF-8"},
        {"<a><!-- open </a>", 1, 17, "comment"},
        {"<a", 1, 2, "start element"},
        {"<a>\n</a>\n<", 3, 1, "incomplete markup"},
        {"<a>\xEF\xBF\xBE</a>", 1, 4, "invalid character U+FFFE"},
        {"<a>x&#0;</a>", 1, 5, "character reference"},
        {"<a>&#xD800;</a>", 1, 4, "character reference"},
        {"<a>&#99999999999;</a>", 1, 4, "character reference"},
        {"<a>\n <b c='&#xDFFF;'/></a>", 2, 3, "character reference"},
        // Unfinished references that deleting <b/> would complete.
        {"<a>&#xEE<b/>EEE1;</a>", 1, 4, "character reference"},
        {"<a>x &<b/>#xD800;</a>", 1, 6, "character reference"},
        {QByteArray("<a>").repeated(1001) + QByteArray("</a>").repeated(1001), 1, 3001,
         "nested deeper than 1000"},
    };
    for (const auto& C : Cases) {
        SCOPED_TRACE(C.Text.toStdString());
        TXmlDocument Doc = Load("<keep>me</keep>");
        try {
            Doc.LoadFromBytes(C.Text);
            ADD_FAILURE() << "accepted";
        } catch (const EXmlError& E) {
            EXPECT_EQ(std::pair(E.Line(), E.Column()), std::pair(C.Line, C.Column)) << E.what();
            EXPECT_TRUE(E.Reason().contains(QLatin1String(C.Reason))) << E.what();
            EXPECT_TRUE(
                E.Message().startsWith(QStringLiteral("line %1, column %2: ").arg(C.Line).arg(C.Column)))
                << E.what();
        }
        EXPECT_EQ(Doc.SaveToBytes(), QByteArray("<keep>me</keep>"));
        EXPECT_EQ(Doc.Root().ValueAsString(), QStringLiteral("me"));
    }
}

TEST(XmlDocument, FilesLoadAndSaveWithTheFileNameInErrors) {
    QTemporaryDir Dir;
    ASSERT_TRUE(Dir.isValid());
    const QString Good = Dir.filePath("good.xml"), Bad = Dir.filePath("bad.xml");
    TXmlDocument Doc;
    Doc.CreateRoot("Case").WriteString("Größe", "°C");
    Doc.SaveToFile(Good);
    TXmlDocument Again;
    Again.LoadFromFile(Good);
    EXPECT_EQ(Again.Root().ReadString("Größe"), QStringLiteral("°C"));

    QFile F(Bad);
    ASSERT_TRUE(F.open(QIODevice::WriteOnly) && F.write("<a>\n</b>") == 8);
    F.close();
    try {
        Again.LoadFromFile(Bad);
        ADD_FAILURE() << "bad file accepted";
    } catch (const EXmlError& E) {
        EXPECT_TRUE(E.Message().startsWith(Bad + QStringLiteral(": line 2, column 3"))) << E.what();
    }
    EXPECT_EQ(Again.Root().Name(), QStringLiteral("Case"));
    EXPECT_THROW_MSG(Again.LoadFromFile(Dir.filePath("missing.xml")), Exception, "Cannot open");
    EXPECT_THROW_MSG(Doc.SaveToFile(Dir.filePath("no/such/dir/x.xml")), Exception, "Cannot write");
}

// --- Values --------------------------------------------------------------------------------------

TEST(XmlNode, TextAndAttributeValuesSurviveSaveAndLoad) {
    const QString Values[] = {
        QString(),
        QStringLiteral("  leading and trailing  "),
        QStringLiteral("a<b>&c\"d'e"),
        QStringLiteral("line1\r\nline2\nline3\rend"),
        QStringLiteral("tab\there"),
        QStringLiteral("Größe ° µ Ω 😀 漢字"),
        QStringLiteral("]]> &amp; &#65; <![CDATA["),
        QString(QChar(0xFEFF)) + QStringLiteral("starts with a byte order mark"),
    };
    for (const QString& V : Values) {
        TXmlDocument Doc;
        TXmlNode Root = Doc.CreateRoot("r");
        Root.WriteString("v", V);
        Root.WriteAttributeString("a", V);
        const TXmlDocument Back = Load(Doc.SaveToBytes());
        EXPECT_EQ(Back.Root().ReadString("v"), V) << V.toStdString();
        EXPECT_EQ(Back.Root().AttributeByName("a"), V) << V.toStdString();
    }
}

// What XML 1.0 cannot carry is written as U+FFFD, so that the file stays well-formed.
TEST(XmlNode, CharactersOutsideXmlBecomeReplacementCharacters) {
    const QChar Fffd = QChar::ReplacementCharacter;
    const struct {
        QString Value, Expected;
    } Cases[] = {
        {QStringLiteral("a") + QChar(0) + QStringLiteral("b"),
         QStringLiteral("a") + Fffd + QStringLiteral("b")},
        {QString(QChar(1)) + QStringLiteral("control") + QChar(0x1F),
         Fffd + QStringLiteral("control") + Fffd},
        {QString(QChar(0xFFFE)) + QChar(0xFFFF), QString(Fffd) + Fffd},
        {QStringLiteral("x") + QChar(0xD800) + QStringLiteral("y") + QChar(0xDC00),
         QStringLiteral("x") + Fffd + QStringLiteral("y") + Fffd},
        {QString::fromUtf8("😀\t\r\n"), QString::fromUtf8("😀\t\r\n")}, // pairs and line ends stay
    };
    for (const auto& C : Cases) {
        TXmlDocument Doc;
        TXmlNode Root = Doc.CreateRoot("r");
        Root.WriteString("v", C.Value);
        Root.WriteAttributeString("a", C.Value);
        const QByteArray Bytes = Doc.SaveToBytes();
        EXPECT_FALSE(Bytes.contains("&#0;") || Bytes.contains("&#1;") || Bytes.contains("&#31;"))
            << Bytes.data();
        pugi::xml_document Strict;
        EXPECT_TRUE(Strict.load_buffer(Bytes.constData(), static_cast<std::size_t>(Bytes.size()),
                                       pugi::parse_default | pugi::parse_declaration, pugi::encoding_utf8))
            << Bytes.data();
        const TXmlDocument Back = Load(Bytes);
        EXPECT_EQ(Back.Root().ReadString("v"), C.Expected) << Bytes.data();
        EXPECT_EQ(Back.Root().AttributeByName("a"), C.Expected) << Bytes.data();
    }
}

// Neither deleting nor printing a deep tree recurses; loading one is refused early.
TEST(XmlDocument, DeepTrees) {
    const int Depth = 200000;
    TXmlDocument Doc;
    TXmlNode N = Doc.CreateRoot("r");
    for (int I = 0; I < Depth; ++I)
        N = N.NodeNew("n");
    EXPECT_GT(Doc.SaveToBytes().size(), 4 * Depth);
    Doc.Root().DeleteChildren();
    EXPECT_EQ(Doc.SaveToBytes(), QByteArray("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<r/>\n"));
    N = Doc.Root();
    for (int I = 0; I < Depth; ++I)
        N = N.NodeNew("n");
    EXPECT_TRUE(Doc.Root().NodeDelete(0));
    EXPECT_EQ(Doc.Root().NodeCount(), 0);
    const QByteArray Deep = QByteArray("<a>").repeated(1000000) + QByteArray("</a>").repeated(1000000);
    EXPECT_THROW_MSG(Doc.LoadFromBytes(Deep), EXmlError, "elements nested deeper than 1000 levels");
    EXPECT_EQ(Doc.Root().Name(), QStringLiteral("r"));
}

TEST(XmlNode, ReadingDecodesReferencesAndLineEnds) {
    TXmlDocument Doc = Load("<r a=\"x&#10;y\nz\t&amp;&e;\" b='&#x1F600;&#1;&#xZ;'>"
                            "<t>1\r\n2\r3&lt;&#x41;&unknown; & done</t>"
                            "<m>\n  <c/>\n  text <![CDATA[&lt;\r\n]]>\n</m><ws>  </ws></r>");
    TXmlNode R = Doc.Root();
    EXPECT_EQ(R.AttributeByName("a"), QStringLiteral("x\ny z &&e;"));
    EXPECT_EQ(R.AttributeByName("b"),
              QStringLiteral("😀\u0001&#xZ;")); // earlier versions wrote control references
    EXPECT_EQ(R.ReadString("t"), QStringLiteral("1\n2\n3<A&unknown; & done"));
    // Blank runs between child elements are layout; other text and CDATA are the value.
    EXPECT_EQ(R.ReadString("m"), QStringLiteral("\n  text &lt;\n"));
    EXPECT_EQ(R.ReadString("ws"), QStringLiteral("  "));
    EXPECT_EQ(R.ReadString("missing", "dflt"), QStringLiteral("dflt"));
}

TEST(XmlNode, TypedReadersWithDefaultsAndWrongTypes) {
    constexpr double Inf = std::numeric_limits<double>::infinity();
    const struct {
        const char* Text;
        std::optional<int> Int;
        std::optional<bool> Bool;
        std::optional<double> Float; // NaN: any NaN
    } Cases[] = {
        {"42", 42, true, 42},
        {" -7 ", -7, true, -7},
        {"+3", 3, true, 3},
        {"0", 0, false, 0},
        {"2147483647", 2147483647, true, 2147483647.0},
        {"2147483648", {}, true, 2147483648.0},
        {"1.5", {}, true, 1.5},
        {"0.0", {}, false, 0},
        {"-2.5e-3", {}, true, -2.5e-3},
        {"True", {}, true, {}},
        {"fALSE", {}, false, {}},
        {"yes", {}, {}, {}},
        {"", {}, {}, {}},
        {"12abc", {}, {}, {}},
        {"1,5", {}, {}, {}},
        {"0x10", {}, {}, {}},
        {"+-1", {}, {}, {}},
        {"NAN", {}, {}, std::numeric_limits<double>::quiet_NaN()},
        {"-INF", {}, true, -Inf},
        {"1e999", {}, {}, {}},
        {"٣", {}, {}, {}}, // a non-ASCII digit
    };
    for (const auto& C : Cases) {
        SCOPED_TRACE(C.Text);
        TXmlDocument Doc;
        TXmlNode R = Doc.CreateRoot("r"), V = R.NodeNew("v");
        V.SetValueAsString(QString::fromUtf8(C.Text));
        EXPECT_EQ(Strict<int>([&] { return V.ValueAsInteger(); }), C.Int);
        EXPECT_EQ(V.ValueAsIntegerDef(-99), C.Int.value_or(-99));
        EXPECT_EQ(R.ReadInteger("v", -99), C.Int.value_or(-99));
        EXPECT_EQ(Strict<bool>([&] { return V.ValueAsBool(); }), C.Bool);
        EXPECT_EQ(R.ReadBool("v", true), C.Bool.value_or(true));
        EXPECT_EQ(R.ReadBool("v", false), C.Bool.value_or(false));
        const std::optional<double> F = Strict<double>([&] { return V.ValueAsFloat(); });
        ASSERT_EQ(F.has_value(), C.Float.has_value());
        if (F)
            EXPECT_TRUE(*F == *C.Float || (std::isnan(*F) && std::isnan(*C.Float))) << *F;
        else
            EXPECT_EQ(R.ReadFloat("v", 8.5), 8.5);
    }
    TXmlDocument Doc;
    TXmlNode R = Doc.CreateRoot("r");
    R.WriteString("v", "abc");
    try {
        R.NodeByName("v").ValueAsInteger();
        ADD_FAILURE() << "'abc' read as an integer";
    } catch (const EConvertError& E) {
        EXPECT_EQ(E.Message(), QStringLiteral("'abc' is not a valid integer value"));
    }
    EXPECT_EQ(R.ReadInteger("missing", 5), 5);
    EXPECT_EQ(R.ReadBool("missing", true), true);
}

TEST(XmlNode, TypedWritersUseTheFileForms) {
    TXmlDocument Doc;
    TXmlNode R = Doc.CreateRoot("r");
    const QDateTime D(QDate(2024, 2, 29), QTime(13, 45, 7)), Ms(QDate(1899, 12, 30), QTime(0, 0, 0, 250));
    R.WriteBool("t", true);
    R.WriteBool("f", false);
    R.WriteInteger("i", -2147483647 - 1);
    R.WriteFloat("x", 0.1);
    R.WriteFloat("n", std::numeric_limits<double>::quiet_NaN());
    R.WriteFloat("big", 1e300);
    R.WriteDateTime("d", D);
    R.WriteDateTime("ms", Ms);
    R.WriteDateTime("none", QDateTime());
    R.WriteAttributeBool("ab", true);
    R.WriteAttributeInteger("ai", 12);
    EXPECT_EQ(R.ReadString("t"), QStringLiteral("True"));
    EXPECT_EQ(R.ReadString("f"), QStringLiteral("False"));
    EXPECT_EQ(R.ReadString("i"), QStringLiteral("-2147483648"));
    EXPECT_EQ(R.ReadString("x"), QStringLiteral("0.1"));
    EXPECT_EQ(R.ReadString("n"), QStringLiteral("NAN"));
    EXPECT_EQ(R.ReadString("d"), QStringLiteral("2024-02-29T13:45:07"));
    EXPECT_EQ(R.ReadString("ms"), QStringLiteral("1899-12-30T00:00:00.250"));
    EXPECT_EQ(R.ReadString("none"), QString());
    EXPECT_EQ(R.ReadFloat("big"), 1e300);
    EXPECT_EQ(R.ReadDateTime("d"), D);
    EXPECT_EQ(R.ReadDateTime("ms"), Ms);
    EXPECT_EQ(R.AttributeByName("ab"), QStringLiteral("True"));
    EXPECT_EQ(R.ReadAttributeInteger("ai"), 12);
    EXPECT_EQ(R.ReadAttributeInteger("ab", 3), 3);
    EXPECT_TRUE(R.ReadAttributeBool("ab"));
}

TEST(XmlNode, DateTimeTextForms) {
    const QDateTime Noon(QDate(2023, 7, 1), QTime(12, 0)), Default(QDate(2000, 1, 1), QTime(0, 0));
    const struct {
        const char* Text;
        QDateTime Expected; // invalid: not a date-time
    } Cases[] = {
        {"2023-07-01T12:00:00", Noon},
        {"2023-07-01 12:00:00", Noon},
        {" 2023-07-01T12:00 ", Noon},
        {"2023-07-01", QDateTime(QDate(2023, 7, 1), QTime(0, 0))},
        {"2023-07-01T12:00:00.5", QDateTime(QDate(2023, 7, 1), QTime(12, 0, 0, 500))},
        {"2023-13-01", {}},
        {"2023-02-30T00:00:00", {}},
        {"01.07.2023", {}},
        {"45000", {}},
        {"", {}},
    };
    for (const auto& C : Cases) {
        SCOPED_TRACE(C.Text);
        TXmlDocument Doc;
        TXmlNode V = Doc.CreateRoot("r").NodeNew("v");
        V.SetValueAsString(QString::fromLatin1(C.Text));
        const bool Valid = C.Expected.isValid();
        EXPECT_EQ(Strict<QDateTime>([&] { return V.ValueAsDateTime(); }),
                  Valid ? std::optional(C.Expected) : std::nullopt);
        EXPECT_EQ(V.ValueAsDateTimeDef(Default), Valid ? C.Expected : Default);
    }
}

// --- Navigation ----------------------------------------------------------------------------------

TEST(XmlNode, ChildSearchesLookAtElementsOnly) {
    TXmlDocument Doc = Load("<Form>text<!--c--><INumFld ID=\"a\" ClassName=\"X\"/>"
                            "<Frame><INumFld ID=\"deep\"/></Frame>"
                            "<Other ID=\"b\"/><INumFld ID=\"b&amp;c\"/><INumFld ID=\"a\" n=\"2\"/></Form>");
    TXmlNode F = Doc.Root();
    EXPECT_EQ(F.NodeCount(), 5);
    EXPECT_EQ(F.ChildNodes().size(), 5);
    EXPECT_EQ(F.Nodes(1).Name(), QStringLiteral("Frame"));
    EXPECT_TRUE(F.Nodes(5).IsNull() && F.Nodes(-1).IsNull());
    const QList<TXmlNode> Fields = F.NodesByName("INumFld");
    ASSERT_EQ(Fields.size(), 3);
    EXPECT_EQ(Fields[2].AttributeByName("n"), QStringLiteral("2"));

    EXPECT_EQ(F.NodeByAttributeValue("INumFld", "ID", "a"), Fields[0]);
    EXPECT_EQ(F.NodeByAttributeValue("", "ID", "b").Name(), QStringLiteral("Other"));
    EXPECT_TRUE(F.NodeByAttributeValue("INumFld", "ID", "b").IsNull());
    EXPECT_EQ(F.NodeByAttributeValue("INumFld", "ID", "b&c"), Fields[1]);
    EXPECT_TRUE(F.NodeByAttributeValue("INumFld", "ID", "A").IsNull()); // values are exact
    EXPECT_TRUE(F.NodeByAttributeValue("INumFld", "ID", "deep").IsNull());
    EXPECT_EQ(F.NodeByAttributeValue("INumFld", "ID", "deep", true).Parent().Name(), QStringLiteral("Frame"));

    EXPECT_EQ(F.FirstChild("INumFld").NextSibling("INumFld"), Fields[1]);
    EXPECT_EQ(F.FirstChild().Name(), QStringLiteral("INumFld"));
    EXPECT_TRUE(F.NodeByName("inumfld").IsNull()); // names are case-sensitive
    EXPECT_TRUE(F.Parent().IsNull());
    EXPECT_FALSE(Doc.Root().Delete());
    EXPECT_EQ(F.NodeFindOrCreate("Other"), F.NodeByName("Other"));
    EXPECT_EQ(F.NodeCount(), 5);
}

TEST(XmlNode, AttributesInOrderAndDeleted) {
    TXmlDocument Doc = Load("<r z=\"1\" a=\"2\" z=\"dup\"/>");
    TXmlNode R = Doc.Root();
    EXPECT_EQ(R.AttributeNames(), QStringList({"z", "a", "z"}));
    EXPECT_EQ(R.AttributeByName("z"), QStringLiteral("1"));
    EXPECT_EQ(R.AttributeValue(1), QStringLiteral("2"));
    EXPECT_EQ(R.AttributeName(9), QString());
    R.WriteAttributeString("new", "v");
    EXPECT_TRUE(R.AttributeDelete("a"));
    EXPECT_FALSE(R.AttributeDelete("a"));
    EXPECT_FALSE(R.HasAttribute("a"));
    EXPECT_EQ(R.AttributeCount(), 3);
    EXPECT_EQ(Doc.SaveToBytes(), QByteArray("<r z=\"1\" z=\"dup\" new=\"v\"/>"));
}

TEST(XmlNode, NullHandlesAndBadNames) {
    TXmlNode Null;
    EXPECT_TRUE(Null.IsNull());
    EXPECT_EQ(Null.Name(), QString());
    EXPECT_EQ(Null.NodeCount(), 0);
    EXPECT_EQ(Null.ReadInteger("x", 4), 4);
    EXPECT_EQ(Null.AttributeByName("x", "d"), QStringLiteral("d"));
    EXPECT_TRUE(Null.NodeByAttributeValue("a", "b", "c").IsNull());
    EXPECT_TRUE(Null.NodeNew("x").IsNull());
    Null.WriteString("x", "y");
    Null.DeleteChildren();
    EXPECT_FALSE(Null.Delete());

    TXmlDocument Doc;
    EXPECT_TRUE(Doc.IsEmpty());
    EXPECT_EQ(Doc.SaveToBytes(), QByteArray());
    TXmlNode R = Doc.CreateRoot("r");
    for (const char* Bad : {"", "1a", "a b", "a<b", "-x", "a\"b"}) {
        EXPECT_THROW_MSG(R.NodeNew(QString::fromLatin1(Bad)), EXmlError, "is not a valid XML name");
        EXPECT_THROW_MSG(R.WriteAttributeString(QString::fromLatin1(Bad), "v"), EXmlError,
                         "is not a valid XML name");
    }
    EXPECT_THROW_MSG(R.NodeNew(QStringLiteral("a") + QChar(0xD800)), EXmlError, "is not a valid XML name");
    EXPECT_THROW_MSG(Doc.CreateRoot("a b"), EXmlError, "\"a b\" is not a valid XML name");
    EXPECT_EQ(Doc.Root().Name(), QStringLiteral("r"));
    EXPECT_NO_THROW(R.NodeNew(QStringLiteral("a😀")));
    EXPECT_NO_THROW(R.NodeNew("ns:x-1.y_ü"));
    // Names are kept as written, a leading U+FEFF included.
    const QString Odd = QString(QChar(0xFEFF)) + QStringLiteral("n");
    R.WriteAttributeString(Odd, "v");
    EXPECT_EQ(R.NodeNew(Odd).Name(), Odd);
    EXPECT_EQ(R.AttributeNames().last(), Odd);
    EXPECT_EQ(R.AttributeByName(Odd), QStringLiteral("v"));
    Doc.Clear();
    EXPECT_TRUE(Doc.IsEmpty());
}

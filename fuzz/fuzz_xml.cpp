// TXmlDocument over arbitrary bytes: loading either fails with EXmlError or gives a document
// that saves back unchanged, whose values can all be read, and which still saves and loads
// after edits.
#include <qxnum/xml.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>

using namespace qxnum;

namespace {

[[noreturn]] void Fault(const char* What) {
    std::fprintf(stderr, "fuzz_xml: %s\n", What);
    std::abort();
}

// The text as a document carries it: what XML 1.0 cannot hold (controls other than tab and line
// ends, unpaired surrogates, U+FFFE, U+FFFF) is written as U+FFFD.
QString AsCarried(QString S) {
    for (qsizetype I = 0; I < S.size(); ++I) {
        const char16_t C = S[I].unicode();
        const bool High = QChar::isHighSurrogate(C), Low = QChar::isLowSurrogate(C);
        if (High && I + 1 < S.size() && QChar::isLowSurrogate(S[I + 1].unicode())) {
            ++I;
            continue;
        }
        if ((C < 0x20 && C != 0x9 && C != 0xA && C != 0xD) || High || Low || C == 0xFFFE || C == 0xFFFF)
            S[I] = QChar::ReplacementCharacter;
    }
    return S;
}

// Reads everything an element offers; returns some decoded text for the edits below.
QString ReadAll(const TXmlNode& N) {
    const QString Text = N.ValueAsString();
    (void)N.ValueAsIntegerDef(0);
    (void)N.ValueAsBoolDef(false);
    (void)N.ValueAsFloatDef(0.0);
    (void)N.ValueAsDateTimeDef(QDateTime());
    const QStringList Names = N.AttributeNames();
    for (int I = 0; I < Names.size(); ++I) {
        const QString V = N.AttributeValue(I);
        if (N.AttributeByName(Names[I]).isNull() && !V.isNull()) Fault("attribute lookup lost a value");
        (void)N.ReadAttributeInteger(Names[I], 0);
    }
    if (!Names.isEmpty() && N.Parent() &&
        N.Parent().NodeByAttributeValue(N.Name(), Names[0], N.AttributeByName(Names[0])).IsNull())
        Fault("NodeByAttributeValue missed an element");
    return Text;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* Data, std::size_t Size) {
    const QByteArray In(reinterpret_cast<const char*>(Data), static_cast<qsizetype>(Size));
    TXmlDocument Doc;
    try {
        Doc.LoadFromBytes(In);
    } catch (const EXmlError&) {
        if (!Doc.IsEmpty()) Fault("a failed load changed the document");
        return 0;
    }
    if (Doc.SaveToBytes() != In) Fault("an unchanged document saved differently");

    // Every element, depth first, without recursion.
    QString SomeText, SomeAttr;
    const TXmlNode Root = Doc.Root();
    TXmlNode Cur = Root;
    while (Cur) {
        const QString T = ReadAll(Cur);
        if (SomeText.isEmpty()) SomeText = T;
        if (SomeAttr.isEmpty() && Cur.AttributeCount() > 0) SomeAttr = Cur.AttributeValue(0);
        TXmlNode Next = Cur.FirstChild();
        while (!Next && Cur) {
            if (Cur == Root) break;
            Next = Cur.NextSibling();
            if (!Next) Cur = Cur.Parent();
        }
        Cur = Next;
    }

    // Edits, then the document must load again and read back what was written.
    TXmlNode R = Doc.Root();
    R.NodeDelete(0);
    R.WriteString("FuzzValue", SomeText);
    R.WriteAttributeString("fuzz", SomeAttr);
    R.NodeNew("FuzzNew").WriteBool("Flag", true);
    const QByteArray Saved = Doc.SaveToBytes();
    TXmlDocument Back;
    try {
        Back.LoadFromBytes(Saved);
    } catch (const EXmlError& E) {
        std::fprintf(stderr, "%s\n", E.what());
        Fault("an edited document did not load again");
    }
    if (Back.SaveToBytes() != Saved) Fault("a reloaded document saved differently");
    if (Back.Root().ReadString("FuzzValue") != AsCarried(SomeText)) Fault("element text did not read back");
    if (Back.Root().AttributeByName("fuzz") != AsCarried(SomeAttr))
        Fault("attribute value did not read back");
    return 0;
}

// qxcase xml: the fields of an XML case file.
#include "casetool.h"

#include <qxnum/xml.h>

#include <algorithm>

namespace qxcase {

namespace {

using qxnum::TXmlNode;

QString Attributes(const TXmlNode& N) {
    QString Out;
    for (int I = 0; I < N.AttributeCount(); ++I)
        Out += QStringLiteral(" %1=%2").arg(N.AttributeName(I), Quote(N.AttributeValue(I)));
    return Out;
}

// Every element below Field, indented by depth: leaves with their text.
void PrintContent(QString& Out, const TXmlNode& Field) {
    int Depth = 0;
    TXmlNode Cur = Field.FirstChild();
    while (Cur) {
        QString Line = QString(4 + 2 * std::min(Depth, 20), QLatin1Char(' ')) + Cur.Name() + Attributes(Cur);
        const TXmlNode Child = Cur.FirstChild();
        if (!Child) Line += QStringLiteral(" = ") + Quote(Cur.ValueAsString());
        Out += Line + QLatin1Char('\n');
        if (Child) {
            Cur = Child;
            ++Depth;
            continue;
        }
        while (Cur && !Cur.NextSibling()) {
            Cur = Cur.Parent();
            if (Cur == Field)
                Cur = TXmlNode();
            else
                --Depth;
        }
        if (Cur) Cur = Cur.NextSibling();
    }
}

} // namespace

bool LoadCase(const QByteArray& Data, qxnum::TXmlDocument& Doc, QString& Error) {
    try {
        Doc.LoadFromBytes(Data);
    } catch (const qxnum::Exception& E) {
        Error = E.Message();
        return false;
    }
    return true;
}

QString ElementPath(TXmlNode N, bool WithAttributes) {
    constexpr int MaxSteps = 12;
    QStringList Steps;
    for (; N; N = N.Parent()) {
        if (Steps.size() == MaxSteps) {
            Steps.prepend(QStringLiteral("..."));
            break;
        }
        QString Step = N.Name();
        if (WithAttributes && N.AttributeCount() > 0)
            Step += QStringLiteral("[%1=%2]").arg(N.AttributeName(0), Quote(N.AttributeValue(0)));
        Steps.prepend(Step);
    }
    return Steps.isEmpty() ? QStringLiteral("(document)") : Steps.join(QLatin1Char('/'));
}

bool ListXmlCase(const QByteArray& Data, QString& Out, QString& Error) {
    qxnum::TXmlDocument Doc;
    if (!LoadCase(Data, Doc, Error)) return false;
    const QString FieldTag = QStringLiteral("INumFld");
    int Fields = 0, Groups = 0;
    QString LastPath;
    const TXmlNode Root = Doc.Root();
    TXmlNode Cur = Root;
    while (Cur) {
        const bool IsField = Cur.Name() == FieldTag;
        if (IsField) {
            const QString Path = ElementPath(Cur.Parent(), true);
            if (Fields == 0 || Path != LastPath) {
                Out += Path + QStringLiteral(":\n");
                LastPath = Path;
                ++Groups;
            }
            Out += QStringLiteral("  INumFld ID=%1 ClassName=%2\n")
                       .arg(Cur.HasAttribute(QStringLiteral("ID"))
                                ? Quote(Cur.AttributeByName(QStringLiteral("ID")))
                                : QStringLiteral("(none)"),
                            Cur.HasAttribute(QStringLiteral("ClassName"))
                                ? Quote(Cur.AttributeByName(QStringLiteral("ClassName")))
                                : QStringLiteral("(none)"));
            PrintContent(Out, Cur);
            ++Fields;
        }
        // Depth first; fields hold no fields, so their content is not searched.
        TXmlNode Next = IsField ? TXmlNode() : Cur.FirstChild();
        while (!Next && Cur && Cur != Root) {
            Next = Cur.NextSibling();
            if (!Next) Cur = Cur.Parent();
        }
        Cur = Next;
    }
    if (Fields == 0)
        Out += QStringLiteral("no INumFld elements\n");
    else
        Out += QStringLiteral("%1 field(s) in %2 group(s)\n").arg(Fields).arg(Groups);
    return true;
}

} // namespace qxcase

// qxcase check: an XML case file against the field classes of the library.
#include "casetool.h"

#include <qxnum/registry.h>
#include <qxnum/widgets/fieldform.h>
#include <qxnum/xml.h>

#include <QHash>

namespace qxcase {

bool CheckXmlCase(const QByteArray& Data, QString& Out, QString& Error, int& Problems) {
    Problems = 0;
    // The widgets library registers its field classes when it is loaded. Reading one of its
    // symbols here keeps the linker from dropping it as unused.
    const char* volatile Loaded = qxnum::TFieldForm::staticMetaObject.className();
    (void)Loaded;
    qxnum::TXmlDocument Doc;
    if (!LoadCase(Data, Doc, Error)) return false;
    const QString FieldTag = QStringLiteral("INumFld");
    const QString IdAttr = QStringLiteral("ID");
    const QString ClassAttr = QStringLiteral("ClassName");
    int Fields = 0;
    using qxnum::TXmlNode;
    const TXmlNode Root = Doc.Root();
    // Each element that holds fields is one form: a form reads its own children only.
    TXmlNode Cur = Root;
    while (Cur) {
        const QList<TXmlNode> Own = Cur.NodesByName(FieldTag);
        if (!Own.isEmpty()) {
            Out += ElementPath(Cur, false) + QStringLiteral(":\n");
            QHash<QString, int> Seen;
            for (const TXmlNode& F : Own) {
                ++Fields;
                const QString Class = F.AttributeByName(ClassAttr);
                QStringList Notes;
                if (!F.HasAttribute(IdAttr) || F.AttributeByName(IdAttr).isEmpty())
                    Notes << QStringLiteral("no ID");
                else if (const int Count = ++Seen[F.AttributeByName(IdAttr)]; Count == 2)
                    Notes << QStringLiteral("duplicate ID");
                else if (Count > 2)
                    Notes << QStringLiteral("duplicate ID (%1th)").arg(Count);
                if (!F.HasAttribute(ClassAttr))
                    Notes << QStringLiteral("no ClassName");
                else if (!qxnum::GetClass(Class))
                    Notes << QStringLiteral("class not registered");
                Problems += static_cast<int>(Notes.size());
                Out += QStringLiteral("  %1 %2: %3\n")
                           .arg(F.HasAttribute(IdAttr) ? Quote(F.AttributeByName(IdAttr))
                                                       : QStringLiteral("(no ID)"),
                                F.HasAttribute(ClassAttr) ? Class : QStringLiteral("(no ClassName)"),
                                Notes.isEmpty() ? QStringLiteral("ok") : Notes.join(QStringLiteral(", ")));
            }
        }
        // Depth first, not into fields: their content is their own.
        TXmlNode Next;
        for (TXmlNode C = Cur.FirstChild(); C; C = C.NextSibling())
            if (C.Name() != FieldTag) {
                Next = C;
                break;
            }
        while (!Next && Cur && Cur != Root) {
            for (Next = Cur.NextSibling(); Next && Next.Name() == FieldTag;)
                Next = Next.NextSibling();
            if (!Next) Cur = Cur.Parent();
        }
        Cur = Next;
    }
    Out += Fields == 0 ? QStringLiteral("no INumFld elements\n")
                       : QStringLiteral("%1 field(s), %2 problem(s)\n").arg(Fields).arg(Problems);
    return true;
}

} // namespace qxcase

// TFieldForm: the persistence half (streams and XML) and the field look-up.
#include "fieldform_p.h"

#include <qxnum/dialogs.h>

#include <map>
#include <memory>
#include <optional>

namespace qxnum {

namespace {

const QString CustomStreamTag = QStringLiteral("CustomWriteToStream");
const QString Probably = QStringLiteral("(probably old model version)");
const QString XmlClosing =
    QStringLiteral("The data is ignored and will be deleted from config/case XML data.\r\n"
                   "\"Save-as\" to different filename or do not save if you wish to keep the original data.");

void Warning(const QString& Msg) {
    MessageDlg(Msg, mtWarning, mbOK);
}

// The library's exceptions keep their message as UTF-8 in what().
QString ExceptionText(const std::exception& E) {
    return QString::fromUtf8(E.what());
}

// Consumes a record of class ClassName through a temporary, ownerless instance; false when the
// class makes no field (then nothing was read).
bool SkipThroughTemporary(const QString& ClassName, TReader& Reader) {
    const std::unique_ptr<QObject> Temp(CreateComponent(ClassName, nullptr));
    INumFld* F = Supports(Temp.get());
    if (!F) return false;
    F->SkipfromStream(Reader);
    return true;
}

} // namespace

// --- Streams ---------------------------------------------------------------------------------

void TFieldForm::WritetoStream(TWriter& Writer) {
    EnsureCreated();
    Writer.WriteSignature();
    Writer.WriteListBegin();
    TFieldFormPrivate::ForEachOwnField(this, [&](QObject* C, INumFld* F) {
        if (F->GetNoSaveWrite()) return;
        Writer.WriteString(FileClassName(C));
        Writer.WriteString(C->objectName());
        F->WritetoStream(Writer);
    });
    CustomWriteToStream(Writer);
    Writer.WriteListEnd();
    WriteStreamCode(Writer, FieldFormEndCode);
}

void TFieldForm::CustomWriteToStream(TWriter& Writer) {
    Writer.WriteString(CustomStreamTag);
}
void TFieldForm::CustomReadFromStream(TReader&) {}

void TFieldForm::ReadfromStream(TReader& Reader, bool Warn) {
    EnsureCreated();
    ReadResultCode = rrcOk;
    const QString Id = IDstr();
    // The name of the record read last: the not-registered message names it.
    QString N;
    bool NotFoundShown = false;
    bool Stopped = false;
    // An unrecoverable record: resynchronise at the end marker and end the read there.
    const auto Stop = [&](std::optional<TReadResultCode> Code) {
        if (Code) ReadResultCode = *Code;
        SkipStreamUntilCode(Reader, EndCode, QStringLiteral("FieldForm ") + Id);
        Stopped = true;
    };
    const TComponentIndex Components(this);
    try {
        Reader.ReadSignature();
        Reader.ReadListBegin();
        while (!Stopped && !Reader.EndOfList()) {
            const QString S = Reader.ReadString();
            if (S == CustomStreamTag) {
                try {
                    CustomReadFromStream(Reader);
                } catch (const std::exception&) {
                    Warning(QStringLiteral("Error in CustomReadFromStream in\r\nFieldForm ") + Id);
                    Stop(rrcStreamError);
                }
                continue;
            }
            if (!GetClass(S)) {
                if (!Warn) continue; // the classic reader then takes the next string as a class name
                Warning(QStringLiteral("Class ") + S + QStringLiteral(" of Field ") + N +
                        QStringLiteral("\r\nnot registered while reading") + Id + QStringLiteral("\r\n") +
                        Probably);
                Stop(rrcUnknownClass);
                continue;
            }
            N = Reader.ReadString();
            QObject* C = Components.Find(N);
            if (!C) {
                ReadResultCode = rrcUnknownComp;
                if (Warn && !NotFoundShown) {
                    NotFoundShown = true;
                    Warning(QStringLiteral("Some fields not found while reading ") + Id +
                            QStringLiteral("\r\ndue to old model version, model is now upgraded"));
                }
                if (!SkipThroughTemporary(S, Reader)) Stop(rrcUnknownClass);
                continue;
            }
            const QString Assigned = FileClassName(C);
            if (Assigned != S) {
                if (Warn) {
                    Warning(QStringLiteral("Classes ") + S + QStringLiteral(" (read) and ") + Assigned +
                            QStringLiteral(" (assigned)\r\nof Field ") + N +
                            QStringLiteral(" do not match while reading FieldForm ") + Id +
                            QStringLiteral("\r\n") + Probably);
                    ReadResultCode = rrcClassMisMatch;
                }
                if (!SkipThroughTemporary(S, Reader)) Stop(std::nullopt);
                continue;
            }
            if (INumFld* F = Supports(C)) {
                try {
                    F->ReadfromStream(Reader);
                } catch (const std::exception&) {
                    Warning(QStringLiteral("Error reading Class ") + S + QStringLiteral(" of Field ") + N +
                            QStringLiteral("\r\nfrom FieldForm ") + Id);
                    Stop(rrcStreamError);
                }
                continue;
            }
            if (!Warn) continue;
            Warning(QStringLiteral("Class ") + S + QStringLiteral(" of Field ") + N +
                    QStringLiteral("\r\nunknown to FieldForm ") + Id + QStringLiteral("\r\n") + Probably);
            Stop(rrcUnknownClass);
        }
        if (!Stopped) {
            Reader.ReadListEnd();
            ReadStreamCode(Reader, EndCode);
        }
    } catch (const std::exception& E) {
        // A stream that is not a form's, or that ends early. Fields read all-or-nothing, so none
        // is half read: report, and resynchronise unless the stream has ended.
        ReadResultCode = rrcStreamError;
        Warning(QStringLiteral("Error reading FieldForm ") + Id + QStringLiteral("\r\n") + ExceptionText(E));
        if (!Stopped && !Reader.AtEnd()) Stop(std::nullopt);
    }
}

// --- XML --------------------------------------------------------------------------------------

void WriteFieldElement(TXmlNode Node, QObject* Component, const QString& Prefix,
                       QHash<QString, TXmlNode>* Elements) {
    INumFld* F = Supports(Component);
    if (!F || F->GetNoSaveWrite() || Node.IsNull()) return;
    const QString ID = Prefix + F->GetIDstring();
    TXmlNode Element = Elements
                           ? Elements->value(ID)
                           : Node.NodeByAttributeValue(QStringLiteral("INumFld"), QStringLiteral("ID"), ID);
    if (!Element) {
        Element = Node.NodeNew(QStringLiteral("INumFld"));
        Element.WriteAttributeString(QStringLiteral("ID"), ID);
        if (Elements) Elements->insert(ID, Element);
    }
    Element.WriteAttributeString(QStringLiteral("ClassName"), FileClassName(Component));
    F->WriteToXML(Element);
}

void WriteINumFldToXml(TXmlNode Node, QObject* Component, const QString& Prefix) {
    WriteFieldElement(Node, Component, Prefix, nullptr);
}

void TFieldForm::WriteToXML(TXmlNode ParentXmlNode) {
    EnsureCreated();
    if (ParentXmlNode.IsNull()) return;
    QHash<QString, TXmlNode> Elements;
    const QString IdAttr = QStringLiteral("ID");
    for (const TXmlNode& E : ParentXmlNode.NodesByName(QStringLiteral("INumFld")))
        if (E.HasAttribute(IdAttr) && !Elements.contains(E.AttributeByName(IdAttr)))
            Elements.insert(E.AttributeByName(IdAttr), E);
    for (QObject* C : ComponentsOf(this)) {
        if (Supports(C)) {
            WriteFieldElement(ParentXmlNode, C, QString(), &Elements);
        } else if (IsFieldFrame(C)) {
            const QString Prefix = C->objectName() + QLatin1Char('.');
            TFieldFormPrivate::ForEachOwnField(C, [&](QObject* Inner, INumFld*) {
                WriteFieldElement(ParentXmlNode, Inner, Prefix, &Elements);
            });
        }
    }
    CustomWriteToXML(ParentXmlNode);
}

void TFieldForm::CustomWriteToXML(TXmlNode Node) {
    FormXmlRootNode = Node;
}
void TFieldForm::CustomReadFromXML(TXmlNode Node) {
    FormXmlRootNode = Node;
}

void TFieldForm::ReadFromXML(TXmlNode ParentXmlNode, bool Warn) {
    EnsureCreated();
    VersionUpdated = false;
    const QString Id = IDstr();
    const TComponentIndex Components(this);
    std::map<QObject*, TComponentIndex> FrameComponents;
    QList<TXmlNode> Stale;
    bool ProblemSeen = false;
    bool FieldErrorShown = false;
    // One message per read: the first problem element's, when Warn.
    const auto Problem = [&](const TXmlNode& Element, const QString& Msg,
                             std::optional<TReadResultCode> Code) {
        Stale.append(Element);
        if (Warn && !ProblemSeen) {
            Warning(Msg);
            if (Code) ReadResultCode = *Code;
        }
        ProblemSeen = true;
    };
    for (const TXmlNode& Element : ParentXmlNode.NodesByName(QStringLiteral("INumFld"))) {
        QString ID = Element.AttributeByName(QStringLiteral("ID"));
        QObject* Frame = nullptr;
        if (const qsizetype Dot = ID.indexOf(QLatin1Char('.')); Dot >= 0) {
            const QString FrameName = ID.left(Dot);
            ID = ID.mid(Dot + 1);
            if (!FrameName.isEmpty()) Frame = Components.Find(FrameName);
        }
        const QString C = Element.AttributeByName(QStringLiteral("ClassName"));
        if (!GetClass(C)) {
            Problem(Element,
                    QStringLiteral("Class \"") + C + QStringLiteral("\" of Field ") + ID +
                        QStringLiteral("\r\nnot registered while reading") + Id + QStringLiteral("\r\n") +
                        Probably + QStringLiteral(".\r\n\r\n") + XmlClosing,
                    rrcUnknownClass);
            continue;
        }
        QObject* Comp = nullptr;
        if (Frame && IsFieldFrame(Frame))
            Comp = FrameComponents.try_emplace(Frame, Frame).first->second.Find(ID);
        else
            Comp = Components.Find(ID);
        if (!Comp) {
            ReadResultCode = rrcUnknownComp;
            Problem(Element,
                    QStringLiteral("Field with name \"") + ID +
                        QStringLiteral("\" not found while reading ") + Id +
                        QStringLiteral("\r\ndue to old model version.\r\n\r\n") + XmlClosing,
                    std::nullopt);
            continue;
        }
        const QString Assigned = FileClassName(Comp);
        if (Assigned != C) {
            Problem(Element,
                    QStringLiteral("Classes \"") + C + QStringLiteral("\" (read) and ") + Assigned +
                        QStringLiteral(" (assigned)\r\nof Field ") + ID +
                        QStringLiteral(" do not match while reading ") + Id + QStringLiteral("\r\n") +
                        Probably + QStringLiteral(".\r\n\r\n") + XmlClosing,
                    rrcClassMisMatch);
            continue;
        }
        INumFld* F = Supports(Comp);
        if (!F) {
            Problem(Element,
                    QStringLiteral("Class ") + C + QStringLiteral(" of Field ") + ID +
                        QStringLiteral("\r\nunknown to ") + Id + QStringLiteral("\r\n") + Probably +
                        QStringLiteral(".\r\n\r\n") + XmlClosing,
                    rrcUnknownClass);
            continue;
        }
        try {
            F->ReadFromXML(Element);
        } catch (const std::exception& E) {
            // The field kept its value; its element is left for the next write to replace.
            ReadResultCode = rrcXmlError;
            if (!FieldErrorShown) {
                FieldErrorShown = true;
                Warning(QStringLiteral("Error reading Field ") +
                        Element.AttributeByName(QStringLiteral("ID")) + QStringLiteral(" from ") + Id +
                        QStringLiteral("\r\n") + ExceptionText(E));
            }
        }
    }
    try {
        CustomReadFromXML(ParentXmlNode);
    } catch (const std::exception&) {
        Warning(QStringLiteral("Error in CustomReadFromXML in\r\nFieldForm ") + Id);
    }
    VersionUpdated = !Stale.isEmpty();
    for (TXmlNode& Element : Stale)
        Element.Delete();
}

// --- Look-up ------------------------------------------------------------------------------------

QObject* TFieldForm::FindNumFld(const QString& NumFldID) const {
    const qsizetype Dot = NumFldID.indexOf(QLatin1Char('.'));
    const bool HasPrefix = Dot >= 0;
    const QString InFrame = HasPrefix ? NumFldID.mid(Dot + 1) : NumFldID;
    for (QObject* C : ComponentsOf(const_cast<TFieldForm*>(this))) {
        if (!HasPrefix && Supports(C) && C->objectName() == NumFldID) return C;
        if (IsFieldFrame(C))
            for (QObject* Inner : ComponentsOf(C))
                if (Supports(Inner) && Inner->objectName() == InFrame) return Inner;
    }
    return nullptr;
}

} // namespace qxnum

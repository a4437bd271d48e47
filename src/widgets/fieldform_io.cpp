// TFieldForm: the persistence half (streams and XML) and the field look-up.
#include "caption_p.h"
#include "fieldform_p.h"

#include <qxnum/dialogs.h>

#include <QSet>

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

// How the lists of a read message name a field of the form: by the caption the user reads.
QString CaptionOf(QObject* Component) {
    const auto* W = qobject_cast<QWidget*>(Component);
    return W ? FieldCaption(W) : Component->objectName();
}

QString CarriedOverLine(const QString& OldID, QObject* Component) {
    return QStringLiteral("- \"") + OldID + QStringLiteral("\" as ") + CaptionOf(Component);
}

} // namespace

void TFieldForm::AddFieldAlias(const QString& OldID, const QString& NewID) {
    if (OldID.isEmpty() || NewID.isEmpty() || OldID == NewID) return;
    d->Aliases.insert(OldID, NewID);
}

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
    const TFieldIdIndex FieldIds(this);
    QStringList CarriedOver;
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
            // The record's name when it reached its field through an alias.
            QString OldName;
            QObject* C = Components.Find(N);
            if (!C) C = FieldIds.Find(N);
            if (!C) {
                if (const auto A = d->Aliases.constFind(N); A != d->Aliases.cend()) {
                    C = Components.Find(*A);
                    if (!C) C = FieldIds.Find(*A);
                    if (C) OldName = N;
                }
            }
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
                    if (!OldName.isEmpty()) CarriedOver << CarriedOverLine(OldName, C);
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
    if (Warn && !CarriedOver.isEmpty())
        Warning(QStringLiteral("Values carried over to renamed fields while reading FieldForm ") + Id +
                QStringLiteral("\r\n(older model version):\r\n") + CarriedOver.join(QStringLiteral("\r\n")));
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
    const TFieldIdIndex FieldIds(this);
    std::map<QObject*, TComponentIndex> FrameComponents;
    std::map<QObject*, TFieldIdIndex> FrameFieldIds;
    QList<TXmlNode> Stale;
    // One message per read. The first problem speaks in its own words; the others, and the values
    // carried over through aliases, are listed after it, each field named by its caption.
    QString FirstProblem;
    QStringList OtherProblems, CarriedOver;
    bool FieldErrorShown = false;
    const auto Problem = [&](const TXmlNode& Element, const QString& Msg, const QString& Line,
                             std::optional<TReadResultCode> Code) {
        Stale.append(Element);
        if (!FirstProblem.isEmpty()) {
            OtherProblems << Line;
            return;
        }
        FirstProblem = Msg;
        if (Warn && Code) ReadResultCode = *Code;
    };
    const QList<TXmlNode> Elements = ParentXmlNode.NodesByName(QStringLiteral("INumFld"));
    QSet<QString> PresentIDs;
    for (const TXmlNode& E : Elements)
        PresentIDs.insert(E.AttributeByName(QStringLiteral("ID")));
    // The component an ID names: "Frame.Field" in the frame (when it is one), else in the form;
    // by object name first, then by the fields' ID strings. ID becomes the part after the dot.
    const auto Locate = [&](QString& ID) -> QObject* {
        QObject* Frame = nullptr;
        if (const qsizetype Dot = ID.indexOf(QLatin1Char('.')); Dot >= 0) {
            const QString FrameName = ID.left(Dot);
            ID = ID.mid(Dot + 1);
            if (!FrameName.isEmpty()) Frame = Components.Find(FrameName);
        }
        if (Frame && IsFieldFrame(Frame)) {
            if (QObject* C = FrameComponents.try_emplace(Frame, Frame).first->second.Find(ID)) return C;
            return FrameFieldIds.try_emplace(Frame, Frame).first->second.Find(ID);
        }
        if (QObject* C = Components.Find(ID)) return C;
        return FieldIds.Find(ID);
    };
    const QString Quoted = QStringLiteral("- \"%1\": %2");
    for (const TXmlNode& Element : Elements) {
        const QString RawID = Element.AttributeByName(QStringLiteral("ID"));
        QString ID = RawID;
        QObject* Comp = Locate(ID);
        const QString C = Element.AttributeByName(QStringLiteral("ClassName"));
        if (!GetClass(C)) {
            Problem(Element,
                    QStringLiteral("Class \"") + C + QStringLiteral("\" of Field ") + ID +
                        QStringLiteral("\r\nnot registered while reading") + Id + QStringLiteral("\r\n") +
                        Probably + QStringLiteral("."),
                    Quoted.arg(RawID, QStringLiteral("a kind of field this program does not know")),
                    rrcUnknownClass);
            continue;
        }
        // A renamed field: the old ID reaches the new field, unless the file has the new one too.
        bool Aliased = false;
        if (!Comp) {
            if (const auto A = d->Aliases.constFind(RawID);
                A != d->Aliases.cend() && !PresentIDs.contains(*A)) {
                QString NewID = *A;
                if (QObject* Renamed = Locate(NewID)) {
                    Comp = Renamed;
                    ID = NewID;
                    Aliased = true;
                }
            }
        }
        if (!Comp) {
            ReadResultCode = rrcUnknownComp;
            Problem(Element,
                    QStringLiteral("Field with name \"") + ID +
                        QStringLiteral("\" not found while reading ") + Id +
                        QStringLiteral("\r\ndue to old model version."),
                    Quoted.arg(RawID, QStringLiteral("no longer in this form")), std::nullopt);
            continue;
        }
        const QString Assigned = FileClassName(Comp);
        if (Assigned != C) {
            Problem(Element,
                    QStringLiteral("Classes \"") + C + QStringLiteral("\" (read) and ") + Assigned +
                        QStringLiteral(" (assigned)\r\nof Field ") + ID +
                        QStringLiteral(" do not match while reading ") + Id + QStringLiteral("\r\n") +
                        Probably + QStringLiteral("."),
                    QStringLiteral("- ") + CaptionOf(Comp) + QStringLiteral(": now another kind of field"),
                    rrcClassMisMatch);
            continue;
        }
        INumFld* F = Supports(Comp);
        if (!F) {
            Problem(Element,
                    QStringLiteral("Class ") + C + QStringLiteral(" of Field ") + ID +
                        QStringLiteral("\r\nunknown to ") + Id + QStringLiteral("\r\n") + Probably +
                        QStringLiteral("."),
                    QStringLiteral("- ") + CaptionOf(Comp) + QStringLiteral(": not a field"),
                    rrcUnknownClass);
            continue;
        }
        try {
            F->ReadFromXML(Element);
            if (Aliased) {
                // Read; the element under the old ID goes, so that saving writes the new one.
                Stale.append(Element);
                CarriedOver << CarriedOverLine(RawID, Comp);
            }
        } catch (const std::exception& E) {
            // The field kept its value; its element is left for the next write to replace.
            ReadResultCode = rrcXmlError;
            if (!FieldErrorShown) {
                FieldErrorShown = true;
                Warning(QStringLiteral("Error reading Field ") + RawID + QStringLiteral(" from ") + Id +
                        QStringLiteral("\r\n") + ExceptionText(E));
            }
        }
    }
    if (Warn && (!FirstProblem.isEmpty() || !CarriedOver.isEmpty())) {
        QString Msg = FirstProblem.isEmpty()
                          ? QStringLiteral("Values carried over to renamed fields while reading ") + Id +
                                QStringLiteral("\r\n(older model version).")
                          : FirstProblem;
        if (!OtherProblems.isEmpty())
            Msg += QStringLiteral("\r\n\r\nNot carried over either:\r\n") +
                   OtherProblems.join(QStringLiteral("\r\n"));
        if (!CarriedOver.isEmpty())
            Msg += QStringLiteral("\r\n\r\nCarried over to renamed fields:\r\n") +
                   CarriedOver.join(QStringLiteral("\r\n"));
        if (!FirstProblem.isEmpty()) Msg += QStringLiteral("\r\n\r\n") + XmlClosing;
        Warning(Msg);
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
    const QList<QObject*> Own = ComponentsOf(const_cast<TFieldForm*>(this));
    // By object name, as the classic form; then by ID string (deliberate deviation 6).
    for (const bool ByID : {false, true}) {
        const auto Named = [ByID](QObject* C, const QString& Name) {
            INumFld* F = Supports(C);
            return F && (ByID ? F->GetIDstring() : C->objectName()) == Name;
        };
        for (QObject* C : Own) {
            if (!HasPrefix && Named(C, NumFldID)) return C;
            if (IsFieldFrame(C))
                for (QObject* Inner : ComponentsOf(C))
                    if (Named(Inner, InFrame)) return Inner;
        }
    }
    return nullptr;
}

} // namespace qxnum

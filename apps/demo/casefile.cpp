#include "casefile.h"

#include "sections.h"

#include <QBuffer>
#include <QFile>
#include <QSaveFile>

namespace demo {

using namespace qxnum;

namespace {

const QString Magic = QStringLiteral("QXNumCtrls case");
constexpr int Version = 2;
constexpr int MaxSections = 1000;

QString UnitsName(TUnitSystem U) {
    return U == usImperial ? QStringLiteral("Imperial") : QStringLiteral("SI");
}
TUnitSystem UnitsOf(const QString& Name) {
    return Name.compare(QStringLiteral("Imperial"), Qt::CaseInsensitive) == 0 ? usImperial : usSI;
}

} // namespace

TCase::TCase(QWidget* Parent) {
    FSections = {new TAmbientForm(Parent), new TEngineForm(Parent), new TFuelForm(Parent),
                 new TCompressorForm(Parent), new TMissionForm(Parent)};
}

TFieldForm* TCase::Section(const QString& Name) const {
    for (TFieldForm* F : FSections)
        if (F->IDstr() == Name) return F;
    return nullptr;
}

std::vector<std::pair<QString, INumFld*>> TCase::Fields(QObject* Section) {
    std::vector<std::pair<QString, INumFld*>> Out;
    for (QObject* C : ComponentsOf(Section)) {
        if (qobject_cast<TFieldFrame*>(C)) {
            for (auto& [Name, F] : Fields(C))
                Out.emplace_back(C->objectName() + QLatin1Char('.') + Name, F);
        } else if (INumFld* F = Supports(C)) {
            Out.emplace_back(C->objectName(), F);
        }
    }
    return Out;
}

QString TCase::FieldLine(const QString& Section, const QString& Name, INumFld* Field) {
    QString Value;
    if (auto* Grid = dynamic_cast<TNumGrid*>(Field)) {
        // The value text of a grid is cut short; every cell counts here.
        for (int R = 0; R < Grid->RowCount(); ++R)
            Value += Grid->Rows(R).join(QLatin1Char(';')) + QLatin1Char('|');
    } else {
        Value = Field->GetValueText();
    }
    return Section + QLatin1Char('.') + Name + QLatin1Char('=') + Value;
}

QStringList TCase::Snapshot() const {
    QStringList Lines;
    for (TFieldForm* S : FSections)
        for (auto& [Name, F] : Fields(S))
            Lines << FieldLine(S->IDstr(), Name, F);
    return Lines;
}

void TCase::SetUnitSystem(TUnitSystem U) {
    FUnits = U;
    for (TFieldForm* S : FSections) {
        for (TCustomNumEdit* E : S->findChildren<TCustomNumEdit*>())
            E->SetUnitSystem(U);
        // One pass per grid; columns already in U keep their texts (a text that is no number, kept
        // as read from a file, would become 0). A read restores the columns' unit systems but not
        // the unit lines of the titles: made anew.
        for (TNumGrid* G : S->findChildren<TNumGrid*>()) {
            G->SwitchUnitSystem(U);
            G->ResetTitles();
        }
    }
}

TCase::~TCase() {
    for (TFieldForm* S : FSections)
        delete S;
}

void TCase::Load(const QString& FileName) {
    FVersionUpdated = false;
    IsBinary(FileName) ? LoadBinary(FileName) : LoadXml(FileName);
}

void TCase::LoadXml(const QString& FileName) {
    TXmlDocument Doc;
    Doc.LoadFromFile(FileName); // raises before any section changes
    const TXmlNode Case = Doc.Root().NodeByName(QStringLiteral("case"));
    if (Doc.Root().Name() != QStringLiteral("config") || Case.IsNull())
        throw Exception(QObject::tr("%1 is not a case file: it has no <config><case> element").arg(FileName));
    for (TFieldForm* S : FSections) {
        const TXmlNode Node = Case.NodeByName(S->IDstr());
        if (Node.IsNull()) continue; // a section the file does not have keeps its values
        S->ReadFromXML(Node, true);
        FVersionUpdated = FVersionUpdated || S->VersionUpdated;
    }
    SetUnitSystem(UnitsOf(Case.AttributeByName(QStringLiteral("units"))));
}

void TCase::LoadBinary(const QString& FileName) {
    QFile File(FileName);
    if (!File.open(QIODevice::ReadOnly))
        throw Exception(QObject::tr("Cannot open %1: %2").arg(FileName, File.errorString()));
    // The whole container is read and checked first; the sections change only after that.
    std::vector<std::pair<QString, QByteArray>> Parts;
    TUnitSystem Units = usSI;
    {
        TReader R(&File);
        R.ReadSignature();
        if (R.ReadString() != Magic)
            throw Exception(QObject::tr("%1 is not a QXNumCtrls case file").arg(FileName));
        const int V = R.ReadInteger();
        if (V < 1 || V > Version)
            throw Exception(QObject::tr("%1 was written by a newer version (%2) of the case editor")
                                .arg(FileName)
                                .arg(V));
        Units = UnitsOf(R.ReadString());
        R.ReadListBegin();
        while (!R.EndOfList()) {
            if (static_cast<int>(Parts.size()) >= MaxSections)
                throw Exception(QObject::tr("Too many sections"));
            QString Name = R.ReadString();
            Parts.emplace_back(std::move(Name), R.ReadBinary());
        }
        R.ReadListEnd();
    }
    for (auto& [Name, Bytes] : Parts) {
        TFieldForm* S = Section(Name);
        if (!S) continue; // a section of a newer version: passed over
        QBuffer Buf(&Bytes);
        Buf.open(QIODevice::ReadOnly);
        TReader R(&Buf);
        S->ReadfromStream(R, true);
        FVersionUpdated = FVersionUpdated || S->ReadResultCode != rrcOk;
    }
    SetUnitSystem(Units);
}

void TCase::Save(const QString& FileName) const {
    if (!IsBinary(FileName)) {
        TXmlDocument Doc;
        TXmlNode Case = Doc.CreateRoot(QStringLiteral("config")).NodeNew(QStringLiteral("case"));
        Case.WriteAttributeInteger(QStringLiteral("version"), Version);
        Case.WriteAttributeString(QStringLiteral("units"), UnitsName(FUnits));
        for (TFieldForm* S : FSections)
            S->WriteToXML(Case.NodeNew(S->IDstr()));
        Doc.SaveToFile(FileName); // atomic
        return;
    }
    QSaveFile File(FileName);
    if (!File.open(QIODevice::WriteOnly))
        throw Exception(QObject::tr("Cannot write %1: %2").arg(FileName, File.errorString()));
    {
        TWriter W(&File);
        W.WriteSignature();
        W.WriteString(Magic);
        W.WriteInteger(Version);
        W.WriteString(UnitsName(FUnits));
        W.WriteListBegin();
        for (TFieldForm* S : FSections) {
            QBuffer Buf;
            Buf.open(QIODevice::WriteOnly);
            {
                TWriter SW(&Buf);
                S->WritetoStream(SW);
            }
            W.WriteString(S->IDstr());
            W.WriteBinary(Buf.data());
        }
        W.WriteListEnd();
        W.FlushBuffer();
    }
    if (!File.commit()) throw Exception(QObject::tr("Cannot write %1: %2").arg(FileName, File.errorString()));
}

} // namespace demo

// TCheckListBoxFld: the check-list field, tolerant of an item list that changed since writing.
#include "fieldbase_p.h"

#include <qxnum/registry.h>
#include <qxnum/widgets/fields.h>

#include <QCoreApplication>
#include <QHash>

namespace qxnum {

namespace {

const QString ItemsElement = QStringLiteral("Items");
const QString ItemElement = QStringLiteral("Item");
const QString CaptionAttribute = QStringLiteral("Caption");
constexpr qsizetype ShownChars = 120;

const TClassRegistrar CheckListBoxFldRegistrar("TCheckListBoxFld", [](QObject* Owner) -> QObject* {
    return new TCheckListBoxFld(qobject_cast<QWidget*>(Owner));
});

// The stored entries of "Items" by caption; the first entry of a caption wins. Entries without a
// "Caption" attribute belong to no item.
QHash<QString, TXmlNode> EntriesByCaption(TXmlNode Items, int* EntryCount = nullptr) {
    QHash<QString, TXmlNode> Map;
    int N = 0;
    for (TXmlNode It = Items.FirstChild(ItemElement); It; It = It.NextSibling(ItemElement)) {
        ++N;
        if (!It.HasAttribute(CaptionAttribute)) continue;
        const QString Caption = It.AttributeByName(CaptionAttribute);
        if (!Map.contains(Caption)) Map.insert(Caption, It);
    }
    if (EntryCount) *EntryCount = N;
    return Map;
}

// -1 for text that names no state.
int StateOf(TXmlNode Entry) {
    return GetEnumValue<TCheckBoxState>(Entry.ValueAsString().trimmed());
}

} // namespace

QString JoinCaptions(const QStringList& Captions) {
    QString R;
    for (qsizetype I = 0; I < Captions.size(); ++I) {
        if (I > 0) R += QStringLiteral("; ");
        R += Captions[I];
        if (R.size() > ShownChars) {
            R += QStringLiteral("...");
            break;
        }
    }
    return R;
}

class TCheckListBoxFldPrivate : public TFieldBasePrivate {
public:
    bool FAllowGrayed = false;
};

TCheckListBoxFld::TCheckListBoxFld(QWidget* Parent)
    : QListWidget(Parent), TValueField(this, new TCheckListBoxFldPrivate) {
    // Items a host adds straight through QListWidget get their check box as well.
    connect(model(), &QAbstractItemModel::rowsInserted, this,
            [this](const QModelIndex&, int First, int Last) {
                for (int R = First; R <= Last; ++R)
                    if (QListWidgetItem* It = item(R)) PrepareItem(It);
            });
}

TCheckListBoxFld::~TCheckListBoxFld() = default;

TCheckListBoxFldPrivate* TCheckListBoxFld::Priv() const {
    return static_cast<TCheckListBoxFldPrivate*>(FieldPrivate());
}

bool TCheckListBoxFld::AllowGrayed() const {
    return Priv()->FAllowGrayed;
}

void TCheckListBoxFld::PrepareItem(QListWidgetItem* Item) const {
    Qt::ItemFlags F = Item->flags() | Qt::ItemIsUserCheckable;
    F.setFlag(Qt::ItemIsUserTristate, Priv()->FAllowGrayed);
    if (F != Item->flags()) Item->setFlags(F);
    if (!Item->data(Qt::CheckStateRole).isValid()) Item->setCheckState(Qt::Unchecked);
}

QStringList TCheckListBoxFld::Items() const {
    QStringList L;
    L.reserve(count());
    for (int I = 0; I < count(); ++I)
        L.append(item(I)->text());
    return L;
}

void TCheckListBoxFld::SetItems(const QStringList& AValue) {
    clear();
    addItems(AValue);
}

void TCheckListBoxFld::AddItem(const QString& Caption, TCheckBoxState AState) {
    addItem(Caption);
    item(count() - 1)->setCheckState(CheckStateToQt(AState));
}

TCheckBoxState TCheckListBoxFld::State(int Index) const {
    const QListWidgetItem* It = item(Index);
    return It ? CheckStateFromQt(It->checkState()) : cbUnchecked;
}

void TCheckListBoxFld::SetState(int Index, TCheckBoxState AValue) {
    if (QListWidgetItem* It = item(Index)) It->setCheckState(CheckStateToQt(AValue));
}

void TCheckListBoxFld::SetAllowGrayed(bool AValue) {
    if (AValue == Priv()->FAllowGrayed) return;
    Priv()->FAllowGrayed = AValue;
    for (int I = 0; I < count(); ++I)
        PrepareItem(item(I));
}

QList<TCheckBoxState> TCheckListBoxFld::States() const {
    QList<TCheckBoxState> L;
    L.reserve(count());
    for (int I = 0; I < count(); ++I)
        L.append(CheckStateFromQt(item(I)->checkState()));
    return L;
}

void TCheckListBoxFld::SetStates(const QList<TCheckBoxState>& AValue) {
    const int N = std::min(count(), static_cast<int>(AValue.size()));
    for (int I = 0; I < N; ++I)
        item(I)->setCheckState(CheckStateToQt(AValue[I]));
}

void TCheckListBoxFld::Assign(QObject* Source) {
    if (const auto* S = qobject_cast<TCheckListBoxFld*>(Source))
        SetStates(S->States());
    else
        AssignError(Source);
}

bool TCheckListBoxFld::XmlValueChanged(TXmlNode ParentXmlNode) {
    return XmlChildChanged(ParentXmlNode, ItemsElement, [this](TXmlNode Items) {
        int Entries = 0;
        const QHash<QString, TXmlNode> Map = EntriesByCaption(Items, &Entries);
        if (Entries != count()) return true;
        for (int I = 0; I < count(); ++I) {
            const auto It = Map.constFind(item(I)->text());
            if (It == Map.cend() || StateOf(*It) != State(I)) return true;
        }
        return false;
    });
}

QVariant TCheckListBoxFld::GetVariantValue() {
    QVariantList L;
    for (const TCheckBoxState S : States())
        L.append(static_cast<int>(S));
    return L;
}

QString TCheckListBoxFld::GetValueText() {
    QStringList Checked;
    for (int I = 0; I < count(); ++I)
        if (State(I) != cbUnchecked) Checked.append(item(I)->text());
    return JoinCaptions(Checked);
}

QString TCheckListBoxFld::GetXMLValueText(TXmlNode ParentXmlNode) {
    const TXmlNode Items = ParentXmlNode.NodeByName(ItemsElement);
    if (!Items) return NoValueText();
    QStringList Checked;
    for (TXmlNode It = Items.FirstChild(ItemElement); It; It = It.NextSibling(ItemElement)) {
        const int S = StateOf(It);
        if (S > cbUnchecked) Checked.append(It.AttributeByName(CaptionAttribute));
    }
    return JoinCaptions(Checked);
}

void TCheckListBoxFld::WriteStreamValue(TWriter& Writer) {
    Writer.WriteInteger(count());
    for (int I = 0; I < count(); ++I)
        Writer.WriteInteger(static_cast<int>(State(I)));
}

TFieldBase::TApplyValue TCheckListBoxFld::ReadStreamValue(TReader& Reader) {
    const int N = Reader.ReadInteger();
    if (N < 0)
        StreamValueError(
            Reader, QCoreApplication::translate("qxnum::TCheckListBoxFld", "negative item count %1").arg(N));
    QList<TCheckBoxState> L;
    // Every state is read, also those beyond the current items, so the reader ends after the
    // record; each takes two bytes, so a lying count ends at the end of the stream.
    for (int I = 0; I < N; ++I) {
        const int S = Reader.ReadInteger();
        if (I >= count()) continue;
        if (S < cbUnchecked || S > cbGrayed)
            StreamValueError(
                Reader,
                QCoreApplication::translate("qxnum::TCheckListBoxFld", "invalid check state %1").arg(S));
        L.append(static_cast<TCheckBoxState>(S));
    }
    return [this, L] { SetStates(L); };
}

void TCheckListBoxFld::WriteXmlValue(TXmlNode Node) {
    // "NoMSND" (older content) is left as it is.
    const QList<TXmlNode> Old = Node.NodesByName(ItemsElement);
    for (qsizetype I = 1; I < Old.size(); ++I)
        Node.NodeRemove(Old[I]);
    TXmlNode Items = Old.isEmpty() ? Node.NodeNew(ItemsElement) : Old.first();
    Items.DeleteChildren();
    for (int I = 0; I < count(); ++I) {
        TXmlNode It = Items.NodeNew(ItemElement);
        It.WriteAttributeString(CaptionAttribute, item(I)->text());
        It.SetValueAsString(GetEnumName(State(I)));
    }
}

TFieldBase::TApplyValue TCheckListBoxFld::ReadXmlValue(TXmlNode Node) {
    const TXmlNode Items = Node.NodeByName(ItemsElement);
    if (!Items) return {};
    const QHash<QString, TXmlNode> Map = EntriesByCaption(Items);
    QList<std::pair<int, TCheckBoxState>> Found;
    for (int I = 0; I < count(); ++I) {
        const auto It = Map.constFind(item(I)->text());
        if (It == Map.cend()) continue;
        const int S = StateOf(*It);
        if (S < 0)
            XmlConvertError(ItemsElement,
                            QCoreApplication::translate("qxnum::TCheckListBoxFld",
                                                        "'%1' is not a valid check box state (item \"%2\")")
                                .arg(It->ValueAsString(), item(I)->text()));
        Found.append({I, static_cast<TCheckBoxState>(S)});
    }
    return [this, Found] {
        for (const auto& [Index, S] : Found)
            SetState(Index, S);
    };
}

} // namespace qxnum

// Private state of TFieldForm and the walks over its fields that both halves use.
#pragma once

#include <qxnum/registry.h>
#include <qxnum/widgets/fieldform.h>

#include <QHash>
#include <QPointer>
#include <QPushButton>

#include <utility>
#include <vector>

namespace qxnum {

class TFieldFramePrivate {};

// FindComponent over one owner's components in constant time (exact name first, then ignoring
// case): a read looks up the name of every record, and a walk per look-up would make reading a
// large form quadratic. The case-folded index is made only when an exact look-up first misses
// (a file written by the form itself never needs it), from the names as they were at the start.
class TComponentIndex {
public:
    explicit TComponentIndex(QObject* Owner) {
        for (QObject* C : ComponentsOf(Owner)) {
            QString Name = C->objectName();
            if (Name.isEmpty()) continue;
            // The first of equal names wins, as in FindComponent.
            if (!Exact.contains(Name)) Exact.insert(Name, C);
            Named.emplace_back(std::move(Name), C);
        }
    }
    QObject* Find(const QString& Name) const {
        if (Name.isEmpty()) return nullptr;
        if (QObject* C = Exact.value(Name)) return C;
        if (!FoldedMade) {
            for (const auto& [N, C] : Named) {
                const QString Key = N.toCaseFolded();
                if (!Folded.contains(Key)) Folded.insert(Key, C);
            }
            FoldedMade = true;
        }
        return Folded.value(Name.toCaseFolded());
    }

private:
    QHash<QString, QObject*> Exact;
    std::vector<std::pair<QString, QObject*>> Named;
    mutable QHash<QString, QObject*> Folded;
    mutable bool FoldedMade = false;
};

// The fields of one owner by their ID string (GetIDstring), for the look-up that follows a failed
// search by object name. The first of equal IDs wins. Made on the first look-up: a file whose
// records all carry object names never needs it.
class TFieldIdIndex {
public:
    explicit TFieldIdIndex(QObject* AOwner) : Owner(AOwner) {}
    QObject* Find(const QString& ID) const {
        if (ID.isEmpty()) return nullptr;
        if (!Made) {
            for (QObject* C : ComponentsOf(Owner))
                if (INumFld* F = Supports(C)) {
                    const QString FieldID = F->GetIDstring();
                    if (!FieldID.isEmpty() && !Ids.contains(FieldID)) Ids.insert(FieldID, C);
                }
            Made = true;
        }
        return Ids.value(ID);
    }

private:
    QObject* Owner;
    mutable QHash<QString, QObject*> Ids;
    mutable bool Made = false;
};

// Writes one field's element; Elements (the node's "INumFld" children by ID) replaces the search
// among the children when given, and learns the elements created.
void WriteFieldElement(TXmlNode Node, QObject* Component, const QString& Prefix,
                       QHash<QString, TXmlNode>* Elements);

class TFieldFormPrivate {
public:
    QWidget* Client = nullptr;
    QWidget* Panel = nullptr;
    QPushButton* OK = nullptr;
    QPushButton* Cancel = nullptr;
    QPushButton* Help = nullptr;
    int HelpContext = 0;
    bool Created = false;
    int ModalResult = 0;
    // The field ShowModalFocused wants focused once the form shows.
    QPointer<QWidget> PendingFocus;
    // Old field ID -> new field ID (AddFieldAlias).
    QHash<QString, QString> Aliases;

    // Calls Do(component, field) for each directly owned field, in component order.
    template <typename F> static void ForEachOwnField(QObject* Owner, F&& Do) {
        for (QObject* C : ComponentsOf(Owner))
            if (INumFld* Fld = Supports(C)) Do(C, Fld);
    }
    // The same, then the fields of each directly owned frame (one level, as the frame is a unit).
    template <typename F> static void ForEachFieldAndFrameField(QObject* Owner, F&& Do) {
        for (QObject* C : ComponentsOf(Owner)) {
            if (INumFld* Fld = Supports(C))
                Do(C, Fld);
            else if (IsFieldFrame(C))
                ForEachOwnField(C, Do);
        }
    }
};

} // namespace qxnum

// An engine case: its sections (field forms) and its files.
//
// XML case file:  <config><case version="2" units="SI"><Ambient>...fields...</Ambient>...
// Binary case file, in the filer's encoding: the signature "TPF0", the string "QXNumCtrls case",
// the integer version (2), the units the case is shown in ("SI" or "Imperial"), then a list of
// sections, each a string (the section's name) and a
// binary value holding the section's own stream (TFieldForm::WritetoStream), so that a reader
// can pass over a section it does not know. Both are written atomically: a failed save leaves the
// previous file as it was.
#pragma once

#include <qxnum/qxnum.h>

#include <QString>
#include <QStringList>

#include <utility>
#include <vector>

namespace demo {

class TCase {
public:
    // Makes the sections as children of Parent; the destructor deletes them.
    explicit TCase(QWidget* Parent);
    ~TCase();
    TCase(const TCase&) = delete;
    TCase& operator=(const TCase&) = delete;

    const std::vector<qxnum::TFieldForm*>& Sections() const { return FSections; }
    qxnum::TFieldForm* Section(const QString& Name) const;

    // Both raise qxnum::Exception (or EReadError, EXmlError) before changing any section when the
    // file is not a case file; a section that reads badly shows the library's message.
    void Load(const QString& FileName);
    void Save(const QString& FileName) const;
    static bool IsBinary(const QString& FileName) {
        return FileName.endsWith(QStringLiteral(".qxc"), Qt::CaseInsensitive);
    }

    // True when the last load met fields of an older version of a section (renamed, removed,
    // changed class): the case differs from its file.
    bool VersionUpdated() const { return FVersionUpdated; }

    // Every field's value as a line of text, "Section.Field=value", in a fixed order; a grid's
    // line holds all its cells.
    QStringList Snapshot() const;
    static QString FieldLine(const QString& Section, const QString& Name, qxnum::INumFld* Field);
    // The fields of a section, with the names the files give them (a frame's as "Frame.Field").
    static std::vector<std::pair<QString, qxnum::INumFld*>> Fields(QObject* Section);

    // The units every section shows; kept in the case files.
    void SetUnitSystem(qxnum::TUnitSystem U);
    qxnum::TUnitSystem UnitSystem() const { return FUnits; }

private:
    void LoadXml(const QString& FileName);
    void LoadBinary(const QString& FileName);
    std::vector<qxnum::TFieldForm*> FSections;
    bool FVersionUpdated = false;
    qxnum::TUnitSystem FUnits = qxnum::usSI;
};

} // namespace demo

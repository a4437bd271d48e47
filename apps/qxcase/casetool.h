// The two reports of qxcase, as functions so that they can be tested without the executable.
#pragma once

#include <QByteArray>
#include <QString>

namespace qxcase {

// Prints a binary stream value by value (offset, tag, kind, value). A field-form stream ("TPF0",
// a list of class and component name records, the end marker) is grouped by record, and the
// values of the library's field classes are labelled. Returns false for a stream that cannot be
// read to its end: Out then holds everything up to the fault and Error says what and where.
bool DumpStream(const QByteArray& Data, QString& Out, QString& Error);

// Lists the fields of an XML case file: every "INumFld" element with its ID, ClassName and the
// texts of its content, under the path of the element that holds it. False (with Error) for a
// malformed document.
bool ListXmlCase(const QByteArray& Data, QString& Out, QString& Error);

} // namespace qxcase

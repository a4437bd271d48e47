// The two reports of qxcase, as functions so that they can be tested without the executable.
#pragma once

#include <qxnum/xml.h>

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace qxcase {

// S in double quotes, with quotes, backslashes and control characters escaped, so that every
// value prints on one line.
inline QString Quote(const QString& S) {
    QString Out = QStringLiteral("\"");
    for (const QChar C : S) {
        switch (C.unicode()) {
        case '"':
            Out += QStringLiteral("\\\"");
            break;
        case '\\':
            Out += QStringLiteral("\\\\");
            break;
        case '\r':
            Out += QStringLiteral("\\r");
            break;
        case '\n':
            Out += QStringLiteral("\\n");
            break;
        case '\t':
            Out += QStringLiteral("\\t");
            break;
        default:
            if (C.unicode() < 0x20 || C.unicode() == 0x7F)
                Out += QStringLiteral("\\x%1").arg(C.unicode(), 2, 16, QLatin1Char('0'));
            else
                Out += C;
        }
    }
    return Out + QLatin1Char('"');
}

// Loads an XML case file; false with the parser's message in Error.
bool LoadCase(const QByteArray& Data, qxnum::TXmlDocument& Doc, QString& Error);

// Root/.../N, each step with its first attribute when WithAttributes. Only the last steps are
// shown for deep elements, so that a listing stays proportional to the document.
QString ElementPath(qxnum::TXmlNode N, bool WithAttributes);

// Prints a binary stream value by value (offset, tag, kind, value). A field-form stream ("TPF0",
// a list of class and component name records, the end marker) is grouped by record, and the
// values of the library's field classes are labelled. Returns false for a stream that cannot be
// read to its end: Out then holds everything up to the fault and Error says what and where.
bool DumpStream(const QByteArray& Data, QString& Out, QString& Error);

// Lists the fields of an XML case file: every "INumFld" element with its ID, ClassName and the
// texts of its content, under the path of the element that holds it. False (with Error) for a
// malformed document.
bool ListXmlCase(const QByteArray& Data, QString& Out, QString& Error);

// Checks the "INumFld" elements of an XML case file, form by form (each element that holds such
// children): whether each class is registered, and elements without an "ID" or with an ID that
// occurs twice in one form. Problems counts what was found; false (with Error) for a malformed
// document.
bool CheckXmlCase(const QByteArray& Data, QString& Out, QString& Error, int& Problems);

// The whole tool on its arguments (without the program name): the report, the messages and the
// exit status (0 done, 1 unreadable or malformed file, 2 wrong command line, 3 the check found
// problems).
int Run(const QStringList& Args, QString& Out, QString& Err);

} // namespace qxcase

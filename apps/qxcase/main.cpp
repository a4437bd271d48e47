// qxcase: inspects the case files of programs built with QXNumCtrls.
#include "casetool.h"

#include <QFile>
#include <QString>

#include <cstdio>
#include <cstring>
#include <new>

namespace {

const char Usage[] = "Usage: qxcase COMMAND FILE\n"
                     "Inspects the case files of programs built with QXNumCtrls.\n"
                     "\n"
                     "Commands:\n"
                     "  dump FILE   print a binary stream value by value (offset, tag, kind, value);\n"
                     "              a field-form stream is grouped by record under its class and\n"
                     "              component name, and the values of known field classes are named\n"
                     "  xml FILE    list the fields of an XML case file: every \"INumFld\" element with\n"
                     "              its ID, ClassName and the texts of its content\n"
                     "  --help      show this text\n"
                     "\n"
                     "Exit status: 0 on success, 1 when the file cannot be read or is malformed,\n"
                     "2 for a wrong command line.\n";

void Write(std::FILE* To, const QString& Text) {
    const QByteArray Bytes = Text.toUtf8();
    std::fwrite(Bytes.constData(), 1, static_cast<std::size_t>(Bytes.size()), To);
}

} // namespace

int main(int argc, char** argv) {
    if (argc == 2 && (std::strcmp(argv[1], "--help") == 0 || std::strcmp(argv[1], "-h") == 0)) {
        std::fputs(Usage, stdout);
        return 0;
    }
    if (argc != 3 || (std::strcmp(argv[1], "dump") != 0 && std::strcmp(argv[1], "xml") != 0)) {
        std::fputs(Usage, stderr);
        return 2;
    }
    const bool Dump = std::strcmp(argv[1], "dump") == 0;
    const QString FileName = QString::fromLocal8Bit(argv[2]);
    QFile File(FileName);
    if (!File.open(QIODevice::ReadOnly)) {
        Write(stderr, QStringLiteral("qxcase: cannot open %1: %2\n").arg(FileName, File.errorString()));
        return 1;
    }
    try {
        const QByteArray Data = File.readAll();
        if (File.error() != QFileDevice::NoError) {
            Write(stderr, QStringLiteral("qxcase: cannot read %1: %2\n").arg(FileName, File.errorString()));
            return 1;
        }
        QString Out, Error;
        const bool Ok = Dump ? qxcase::DumpStream(Data, Out, Error) : qxcase::ListXmlCase(Data, Out, Error);
        Write(stdout, Out);
        std::fflush(stdout);
        if (!Ok) {
            Write(stderr, QStringLiteral("qxcase: %1: %2\n").arg(FileName, Error));
            return 1;
        }
    } catch (const std::bad_alloc&) {
        Write(stderr, QStringLiteral("qxcase: %1: out of memory\n").arg(FileName));
        return 1;
    }
    return 0;
}

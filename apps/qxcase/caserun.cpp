// qxcase's command line, apart from main so that the tests can run it.
#include "casetool.h"

#include <QFile>

#include <new>

namespace qxcase {

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
                     "  check FILE  check the fields of an XML case file: is each class registered,\n"
                     "              has each element an ID, does an ID occur twice in one form\n"
                     "  --help      show this text\n"
                     "  --version   show the version\n"
                     "\n"
                     "Exit status: 0 on success, 1 when the file cannot be read or is malformed,\n"
                     "2 for a wrong command line, 3 when check found problems.\n";

// An XML file handed to dump: it starts with '<', after a byte order mark and blanks.
bool LooksLikeXml(const QByteArray& Data) {
    QByteArrayView V(Data);
    if (V.startsWith("\xEF\xBB\xBF")) V = V.sliced(3);
    return V.trimmed().startsWith('<');
}

} // namespace

int Run(const QStringList& Args, QString& Out, QString& Err) {
    if (Args.size() == 1 && (Args[0] == QLatin1String("--help") || Args[0] == QLatin1String("-h"))) {
        Out = QString::fromLatin1(Usage);
        return 0;
    }
    if (Args.size() == 1 && Args[0] == QLatin1String("--version")) {
        Out = QStringLiteral("qxcase %1\n").arg(QLatin1String(QXCASE_VERSION));
        return 0;
    }
    const bool Known =
        !Args.isEmpty() && (Args[0] == QLatin1String("dump") || Args[0] == QLatin1String("xml") ||
                            Args[0] == QLatin1String("check"));
    if (!Known || Args.size() != 2) {
        if (!Known && !Args.isEmpty()) Err = QStringLiteral("qxcase: unknown command \"%1\"\n").arg(Args[0]);
        Err += QString::fromLatin1(Usage);
        return 2;
    }
    const bool Dump = Args[0] == QLatin1String("dump");
    const QString& FileName = Args[1];
    QFile File(FileName);
    if (!File.open(QIODevice::ReadOnly)) {
        Err = QStringLiteral("qxcase: cannot open %1: %2\n").arg(FileName, File.errorString());
        return 1;
    }
    try {
        const QByteArray Data = File.readAll();
        if (File.error() != QFileDevice::NoError) {
            Err = QStringLiteral("qxcase: cannot read %1: %2\n").arg(FileName, File.errorString());
            return 1;
        }
        if (Data.isEmpty()) {
            Err = QStringLiteral("qxcase: %1: the file is empty\n").arg(FileName);
            return 1;
        }
        QString Error;
        int Problems = 0;
        const bool Ok = Dump                                ? DumpStream(Data, Out, Error)
                        : Args[0] == QLatin1String("check") ? CheckXmlCase(Data, Out, Error, Problems)
                                                            : ListXmlCase(Data, Out, Error);
        if (!Ok) {
            Err = QStringLiteral("qxcase: %1: %2\n").arg(FileName, Error);
            if (Dump && LooksLikeXml(Data))
                Err += QStringLiteral("qxcase: %1 looks like an XML case file; try: qxcase xml %1\n")
                           .arg(FileName);
            return 1;
        }
        if (Problems > 0) return 3;
    } catch (const std::bad_alloc&) {
        Err = QStringLiteral("qxcase: %1: out of memory\n").arg(FileName);
        return 1;
    }
    return 0;
}

} // namespace qxcase

// qxcase: inspects the case files of programs built with QXNumCtrls.
#include "casetool.h"

#include <QStringList>

#include <cstdio>

namespace {

void Write(std::FILE* To, const QString& Text) {
    const QByteArray Bytes = Text.toUtf8();
    std::fwrite(Bytes.constData(), 1, static_cast<std::size_t>(Bytes.size()), To);
}

} // namespace

int main(int argc, char** argv) {
    QStringList Args;
    for (int I = 1; I < argc; ++I)
        Args.append(QString::fromLocal8Bit(argv[I]));
    QString Out, Err;
    const int Status = qxcase::Run(Args, Out, Err);
    Write(stdout, Out);
    std::fflush(stdout);
    Write(stderr, Err);
    return Status;
}

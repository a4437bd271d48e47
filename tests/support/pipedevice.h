// A read-only device that cannot seek, like a pipe or a socket: the readers' sequential path.
// Header-only, shared by the tests and the fuzzers.
#pragma once

#include <QByteArray>
#include <QIODevice>

#include <algorithm>
#include <cstring>

namespace qxnum::test {

class TPipe : public QIODevice {
public:
    explicit TPipe(const QByteArray& Data, OpenMode Mode = QIODevice::ReadOnly) : FData(Data) { open(Mode); }
    bool isSequential() const override { return true; }
    qint64 bytesAvailable() const override { return FData.size() - FPos + QIODevice::bytesAvailable(); }

protected:
    qint64 readData(char* Data, qint64 MaxSize) override {
        const qint64 N = std::min<qint64>(MaxSize, FData.size() - FPos);
        if (N <= 0) return -1;
        std::memcpy(Data, FData.constData() + FPos, static_cast<std::size_t>(N));
        FPos += N;
        return N;
    }
    qint64 writeData(const char*, qint64) override { return -1; }

private:
    QByteArray FData;
    qint64 FPos = 0;
};

} // namespace qxnum::test

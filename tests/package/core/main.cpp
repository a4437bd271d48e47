// A QtCore-only host: picture formatting and a binary round trip through memory.
#include <qxnum/core.h>

#include <QBuffer>

#include <cstdio>
#include <cstring>

int main() {
    using namespace qxnum;
    const TFormatSettings Invariant = TFormatSettings::Invariant();
    const QString Text = FormatFloat(QStringLiteral("0.000##"), 2.5L, Invariant);
    std::printf("%s\n", Text.toUtf8().constData());
    if (Text != QStringLiteral("2.500")) return 1;

    const Extended Value = 1.0L / 3.0L; // needs all 64 significand bits
    QBuffer Buffer;
    Buffer.open(QIODevice::ReadWrite);
    {
        TWriter Writer(&Buffer);
        Writer.WriteFloat(Value);
        Writer.WriteString(QStringLiteral("Druck °C"));
        Writer.WriteInteger(qint64(1) << 40);
    }
    Buffer.seek(0);
    TReader Reader(&Buffer);
    const Extended Back = Reader.ReadFloat();
    const QString Name = Reader.ReadString();
    const qint64 Big = Reader.ReadInt64();
    if (std::memcmp(&Back, &Value, 10) != 0 || Name != QStringLiteral("Druck °C") || Big != qint64(1) << 40 ||
        !Reader.AtEnd())
        return 2;
    std::printf("round trip of %lld bytes\n", static_cast<long long>(Buffer.size()));
    return 0;
}

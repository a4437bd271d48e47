// TReader over arbitrary bytes: values of every kind are read in turn until the stream ends.
// Every value that reads must write and read back to the same value.
#include <qxnum/filer.h>

#include "../tests/support/pipedevice.h"

#include <QBuffer>

#include <cmath>
#include <cstdlib>
#include <cstring>

using namespace qxnum;

namespace {

// Unbuffered, so that the reader itself hands peeked tags back.
struct TPipe : qxnum::test::TPipe {
    explicit TPipe(const QByteArray& Data)
        : qxnum::test::TPipe(Data, QIODevice::ReadOnly | QIODevice::Unbuffered) {}
};

void Check(bool Ok) {
    if (!Ok) std::abort();
}

template <typename Write, typename Read> void RoundTrip(Write W, Read R) {
    QByteArray Bytes;
    QBuffer Out(&Bytes);
    Out.open(QIODevice::WriteOnly);
    {
        TWriter Writer(&Out, 64);
        W(Writer);
    }
    QBuffer In(&Bytes);
    In.open(QIODevice::ReadOnly);
    TReader Reader(&In, 64);
    R(Reader);
    Check(Reader.AtEnd());
}

bool SameExtended(Extended A, Extended B) {
    return ExtendedToExt80(A) == ExtendedToExt80(B);
}

void ReadOne(TReader& R, int Op) {
    switch (Op) {
    case 0: {
        const int V = R.ReadInteger();
        RoundTrip([&](TWriter& W) { W.WriteInteger(V); }, [&](TReader& Rd) { Check(Rd.ReadInteger() == V); });
        break;
    }
    case 1: {
        const qint64 V = R.ReadInt64();
        RoundTrip([&](TWriter& W) { W.WriteInteger(V); }, [&](TReader& Rd) { Check(Rd.ReadInt64() == V); });
        break;
    }
    case 2: {
        const Extended V = R.ReadFloat();
        RoundTrip([&](TWriter& W) { W.WriteFloat(V); },
                  [&](TReader& Rd) { Check(SameExtended(Rd.ReadFloat(), V)); });
        break;
    }
    case 3: {
        const double V = R.ReadDouble();
        RoundTrip([&](TWriter& W) { W.WriteDouble(V); },
                  [&](TReader& Rd) {
                      const double B = Rd.ReadDouble();
                      Check(std::memcmp(&B, &V, sizeof V) == 0);
                  });
        break;
    }
    case 4: {
        const QString V = R.ReadString();
        RoundTrip([&](TWriter& W) { W.WriteString(V); }, [&](TReader& Rd) { Check(Rd.ReadString() == V); });
        break;
    }
    case 5:
        R.ReadBoolean();
        break;
    case 6:
        R.ReadIdent();
        break;
    case 7:
        R.ReadSet();
        break;
    case 8:
        R.ReadBinary();
        break;
    case 9:
        R.ReadSingle();
        break;
    case 10:
        R.ReadCurrency();
        break;
    case 11:
        R.ReadDateTime();
        break;
    case 12:
        R.ReadListBegin();
        break;
    case 13:
        R.ReadListEnd();
        break;
    case 14:
        R.ReadSignature();
        break;
    default:
        R.SkipValue();
        break;
    }
}

// The read operation that fits a tag; 15 (SkipValue) for the rest.
int OpFor(quint8 Tag) {
    static const quint8 Ops[0x16] = {13, 12, 0, 0, 0, 2, 4, 6, 5, 5, 8, 7, 4, 6, 15, 9, 10, 11, 4, 1, 4, 3};
    return Tag < 0x16 ? Ops[Tag] : 15;
}

void ReadAll(QIODevice* Device, int BufSize, quint8 Seed) {
    TReader R(Device, BufSize);
    for (int Step = 0; Step < 100000 && !R.AtEnd(); ++Step) {
        const qint64 Before = R.Position();
        try {
            // Mostly the reader that fits the next tag, sometimes any other one.
            const quint8 Tag = R.NextValue();
            ReadOne(R, (Step + Seed) % 8 == 0 ? (Step * 7 + Seed) % 16 : OpFor(Tag));
        } catch (const EReadError&) {
            if (R.Position() == Before) R.ReadByte(); // step over a refused tag
        }
        Check(R.Position() > Before);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* Data, size_t Size) {
    if (Size == 0) return 0;
    const quint8 Seed = Data[0];
    const QByteArray Bytes(reinterpret_cast<const char*>(Data + 1), static_cast<qsizetype>(Size - 1));
    try {
        if (Seed & 0x80) {
            TPipe Pipe(Bytes);
            ReadAll(&Pipe, 16 + (Seed & 0x3F), Seed);
        } else {
            QBuffer Buf;
            Buf.setData(Bytes);
            Buf.open(QIODevice::ReadOnly);
            ReadAll(&Buf, 16 + (Seed & 0x3F), Seed);
        }
    } catch (const EReadError&) {
        // AtEnd or the step over a refused tag may meet the end of the stream.
    }
    return 0;
}

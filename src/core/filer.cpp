#include <qxnum/filer.h>

#include "ext80_p.h"
#include "textcodec.h"
#include "tr_p.h"

#include <QDate>
#include <QIODevice>
#include <QStringDecoder>
#include <QTime>
#include <QtEndian>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>

namespace qxnum {

namespace {

// Larger payloads are read straight into their destination, or in chunks of this size from a
// sequential device, instead of through the read-ahead buffer.
constexpr qint64 ChunkSize = 64 * 1024;

QString TagText(quint8 Tag) {
    const QString Hex = QStringLiteral("%1").arg(static_cast<uint>(Tag), 2, 16, QLatin1Char('0')).toUpper();
    if (Tag <= vaDouble) return QStringLiteral("%1 (%2)").arg(Hex, GetEnumName(static_cast<TValueType>(Tag)));
    return Hex;
}

bool IsAscii(const quint8* P, qint64 N) {
    quint8 Or = 0;
    for (qint64 I = 0; I < N; ++I)
        Or |= P[I];
    return Or < 0x80;
}

QString Utf8Text(const char* P, qint64 N) {
    return detail::Utf8KeepBom(QByteArrayView(P, N));
}

// CodePage 0: UTF-8 when valid, else Windows-1252, the rule for files of unknown origin.
QString Decode8Bit(int CodePage, const quint8* P, qint64 N) {
    if (IsAscii(P, N)) return QString::fromLatin1(reinterpret_cast<const char*>(P), N);
    const QByteArrayView Bytes(P, N);
    if (CodePage == 0 && Bytes.isValidUtf8()) return detail::Utf8KeepBom(Bytes);
    return detail::DecodeCodePage(CodePage == 0 ? 1252 : CodePage, Bytes);
}

bool IsIntTag(quint8 Tag) {
    return Tag == vaInt8 || Tag == vaInt16 || Tag == vaInt32 || Tag == vaInt64;
}

} // namespace

// --- Dates ---------------------------------------------------------------------------------------

namespace {
constexpr qint64 MsecsPerDay = 86400000;
qint64 EpochJulianDay() {
    return QDate(1899, 12, 30).toJulianDay();
}
} // namespace

bool CodePageAvailable(int CodePage) {
    return detail::CodePageAvailable(CodePage);
}

double DateTimeToFileDate(const QDateTime& Value) {
    if (!Value.isValid()) return std::numeric_limits<double>::quiet_NaN();
    const double Days = static_cast<double>(Value.date().toJulianDay() - EpochJulianDay());
    const double Frac = static_cast<double>(Value.time().msecsSinceStartOfDay()) / MsecsPerDay;
    return Days < 0 ? Days - Frac : Days + Frac;
}

QDateTime FileDateToDateTime(double Days) {
    // QDate covers far more, but no file date beyond a few million days is meaningful.
    if (!std::isfinite(Days) || std::fabs(Days) > 1e9) return {};
    double Whole = std::trunc(Days);
    qint64 Msecs = std::llround(std::fabs(Days - Whole) * MsecsPerDay);
    if (Msecs >= MsecsPerDay) { // rounded up to midnight of the next calendar day
        Msecs -= MsecsPerDay;
        Whole += 1;
    }
    const QDate D = QDate::fromJulianDay(EpochJulianDay() + static_cast<qint64>(Whole));
    return QDateTime(D, QTime::fromMSecsSinceStartOfDay(static_cast<int>(Msecs)));
}

// --- Writer --------------------------------------------------------------------------------------

TWriter::TWriter(QIODevice* Stream, int BufSize)
    : FStream(Stream), FBuffer(static_cast<std::size_t>(std::max(BufSize, 64))) {}

TWriter::~TWriter() {
    try {
        FlushBuffer();
    } catch (const EWriteError&) {
        // Destructors must not throw; FlushBuffer reports this to callers who ask.
    }
}

void TWriter::FlushBuffer() {
    if (FBufPos == 0) return;
    const qint64 Count = static_cast<qint64>(FBufPos);
    FBufPos = 0;
    if (!FStream || FStream->write(reinterpret_cast<const char*>(FBuffer.data()), Count) != Count)
        throw EWriteError(detail::Tr("qxnum::TWriter", "Stream write error"));
}

qint64 TWriter::Position() const {
    return (FStream ? FStream->pos() : 0) + static_cast<qint64>(FBufPos);
}

void TWriter::Put(const void* Buf, qint64 Count) {
    if (Count <= 0) return;
    const auto N = static_cast<std::size_t>(Count);
    if (N > FBuffer.size() - FBufPos) {
        FlushBuffer();
        if (N >= FBuffer.size()) {
            if (!FStream || FStream->write(static_cast<const char*>(Buf), Count) != Count)
                throw EWriteError(detail::Tr("qxnum::TWriter", "Stream write error"));
            return;
        }
    }
    std::memcpy(FBuffer.data() + FBufPos, Buf, N);
    FBufPos += N;
}

void TWriter::Write(const void* Buf, qint64 Count) {
    Put(Buf, Count);
}

void TWriter::WriteValue(TValueType Value) {
    PutByte(Value);
}

void TWriter::WriteSignature() {
    Put("TPF0", 4);
}

void TWriter::WriteListBegin() {
    PutByte(vaList);
}

void TWriter::WriteListEnd() {
    PutByte(vaNull);
}

void TWriter::WriteInteger(int Value) {
    quint8 B[5];
    if (Value >= -128 && Value <= 127) {
        B[0] = vaInt8;
        B[1] = static_cast<quint8>(Value);
        Put(B, 2);
    } else if (Value >= -32768 && Value <= 32767) {
        B[0] = vaInt16;
        qToLittleEndian<qint16>(static_cast<qint16>(Value), B + 1);
        Put(B, 3);
    } else {
        B[0] = vaInt32;
        qToLittleEndian<qint32>(Value, B + 1);
        Put(B, 5);
    }
}

void TWriter::WriteInteger(qint64 Value) {
    if (Value >= std::numeric_limits<qint32>::min() && Value <= std::numeric_limits<qint32>::max()) {
        WriteInteger(static_cast<int>(Value));
        return;
    }
    quint8 B[9];
    B[0] = vaInt64;
    qToLittleEndian<qint64>(Value, B + 1);
    Put(B, 9);
}

void TWriter::WriteBoolean(bool Value) {
    PutByte(Value ? vaTrue : vaFalse);
}

void TWriter::WriteFloat(Extended Value) {
    quint8 B[11];
    B[0] = vaExtended;
    const TExt80Bytes E = ExtendedToExt80(Value);
    std::memcpy(B + 1, E.data(), 10);
    Put(B, 11);
}

void TWriter::WriteDouble(double Value) {
    quint8 B[9];
    B[0] = vaDouble;
    qToLittleEndian<quint64>(std::bit_cast<quint64>(Value), B + 1);
    Put(B, 9);
}

void TWriter::WriteSingle(float Value) {
    quint8 B[5];
    B[0] = vaSingle;
    qToLittleEndian<quint32>(std::bit_cast<quint32>(Value), B + 1);
    Put(B, 5);
}

void TWriter::WriteCurrency(Extended Value) {
    const Extended Scaled = std::nearbyint(Value * 10000.0L);
    // 2^63 is exact in every long double; the check also rejects NaN.
    if (!(Scaled >= -9223372036854775808.0L && Scaled < 9223372036854775808.0L))
        throw EWriteError(detail::Tr("qxnum::TWriter", "Currency value out of range"));
    quint8 B[9];
    B[0] = vaCurrency;
    qToLittleEndian<qint64>(static_cast<qint64>(Scaled), B + 1);
    Put(B, 9);
}

void TWriter::WriteDate(double Days) {
    quint8 B[9];
    B[0] = vaDate;
    qToLittleEndian<quint64>(std::bit_cast<quint64>(Days), B + 1);
    Put(B, 9);
}

// The tag and length of an 8-bit string: the short form up to 255 bytes, else the long one.
static qsizetype EightBitHead(qsizetype Len, quint8* Head) {
    if (Len <= 255) {
        Head[0] = vaString;
        Head[1] = static_cast<quint8>(Len);
        return 2;
    }
    Head[0] = vaLString;
    qToLittleEndian<qint32>(static_cast<qint32>(Len), Head + 1);
    return 5;
}

void TWriter::Write8Bit(const char* Text, qsizetype Len) {
    quint8 Head[5];
    Put(Head, EightBitHead(Len, Head));
    Put(Text, Len);
}

void TWriter::WriteString(const QString& Value) {
    const qsizetype Len = Value.size();
    const char16_t* U = reinterpret_cast<const char16_t*>(Value.utf16());
    char16_t Or = 0;
    for (qsizetype I = 0; I < Len; ++I)
        Or |= U[I];
    if (Len > std::numeric_limits<qint32>::max() / 3)
        throw EWriteError(detail::Tr("qxnum::TWriter", "String too long for the stream"));

    if (Or < 0x80 && FStringMode <= smAnsi) {
        quint8 Head[5];
        Put(Head, EightBitHead(Len, Head));
        if (static_cast<std::size_t>(Len) <= FBuffer.size() - FBufPos) {
            quint8* D = FBuffer.data() + FBufPos;
            for (qsizetype I = 0; I < Len; ++I)
                D[I] = static_cast<quint8>(U[I]);
            FBufPos += static_cast<std::size_t>(Len);
        } else {
            const QByteArray Latin = Value.toLatin1();
            Put(Latin.constData(), Latin.size());
        }
        return;
    }
    if (FStringMode == smAnsi) {
        QByteArray Bytes;
        if (detail::EncodeCodePage(FCodePage, Value, Bytes)) {
            Write8Bit(Bytes.constData(), Bytes.size());
            return;
        }
    }

    // Text with an unpaired surrogate has no UTF-8 form; UTF-16 keeps it as it is.
    const bool Utf16Only = FStringMode == smUtf16 || !Value.isValidUtf16();
    const QByteArray Utf8 = Utf16Only ? QByteArray() : Value.toUtf8();
    quint8 Head[5];
    if (!Utf16Only && (FStringMode == smUtf8 || Utf8.size() < 2 * Len)) {
        Head[0] = vaUTF8String;
        qToLittleEndian<qint32>(static_cast<qint32>(Utf8.size()), Head + 1);
        Put(Head, 5);
        Put(Utf8.constData(), Utf8.size());
    } else {
        Head[0] = vaWString;
        qToLittleEndian<qint32>(static_cast<qint32>(Len), Head + 1);
        Put(Head, 5);
        if constexpr (Q_BYTE_ORDER == Q_LITTLE_ENDIAN) {
            Put(U, Len * 2);
        } else {
            QByteArray Le(Len * 2, Qt::Uninitialized);
            qToLittleEndian<quint16>(U, Len, Le.data());
            Put(Le.constData(), Le.size());
        }
    }
}

void TWriter::SetStringMode(TStringMode Mode, int CodePage) {
    if (Mode == smAnsi && !detail::CodePageAvailable(CodePage))
        throw Exception(detail::Tr("qxnum::TWriter", "Code page %1 is not available").arg(CodePage));
    FStringMode = Mode;
    FCodePage = CodePage;
}

void TWriter::WriteShortStr(const QByteArray& Bytes) {
    if (Bytes.size() > 255)
        throw EWriteError(detail::Tr("qxnum::TWriter", "Name longer than 255 bytes: %1")
                              .arg(QString::fromUtf8(Bytes.left(40))));
    PutByte(static_cast<quint8>(Bytes.size()));
    Put(Bytes.constData(), Bytes.size());
}

void TWriter::WriteIdent(const QString& Ident) {
    static const struct {
        const char* Name;
        TValueType Tag;
    } Special[] = {{"False", vaFalse}, {"True", vaTrue}, {"nil", vaNil}, {"Null", vaNull}};
    for (const auto& S : Special) {
        if (Ident.compare(QLatin1String(S.Name), Qt::CaseInsensitive) == 0) {
            PutByte(S.Tag);
            return;
        }
    }
    const QByteArray Bytes = Ident.toUtf8();
    if (Bytes.size() > 255)
        throw EWriteError(detail::Tr("qxnum::TWriter", "Identifier longer than 255 bytes"));
    PutByte(vaIdent);
    WriteShortStr(Bytes);
}

void TWriter::WriteSet(const QStringList& Names) {
    QList<QByteArray> Encoded;
    for (const QString& N : Names) {
        Encoded.append(N.toUtf8());
        if (Encoded.back().isEmpty() || Encoded.back().size() > 255)
            throw EWriteError(detail::Tr("qxnum::TWriter", "Set element must have 1 to 255 bytes"));
    }
    PutByte(vaSet);
    for (const QByteArray& E : Encoded)
        WriteShortStr(E);
    PutByte(0);
}

void TWriter::WriteBinary(const QByteArray& Data) {
    if (Data.size() > std::numeric_limits<qint32>::max())
        throw EWriteError(detail::Tr("qxnum::TWriter", "Binary value too long for the stream"));
    quint8 Head[5];
    Head[0] = vaBinary;
    qToLittleEndian<qint32>(static_cast<qint32>(Data.size()), Head + 1);
    Put(Head, 5);
    Put(Data.constData(), Data.size());
}

// --- Reader --------------------------------------------------------------------------------------

TReader::TReader(QIODevice* Stream, int BufSize)
    : FStream(Stream), FSequential(Stream ? Stream->isSequential() : true),
      FBuffer(static_cast<std::size_t>(std::max(BufSize, 64))),
      FBufStart(Stream && !FSequential ? Stream->pos() : 0) {}

TReader::~TReader() {
    FlushBuffer();
}

void TReader::FlushBuffer() {
    if (FBufPos < FBufEnd && FStream) {
        if (!FSequential) {
            FStream->seek(Position());
        } else {
            // Only a peeked tag can be left over here; hand it back to the device.
            for (std::size_t I = FBufEnd; I > FBufPos; --I)
                FStream->ungetChar(static_cast<char>(FBuffer[I - 1]));
        }
    }
    FBufStart = Position();
    FBufPos = FBufEnd = 0;
}

// Makes Count bytes available from FBufPos; false when the stream ends first.
bool TReader::Fill(std::size_t Count) {
    std::size_t Have = FBufEnd - FBufPos;
    if (Have >= Count) return true;
    if (!FStream) return false;
    if (FBufPos > 0) {
        std::memmove(FBuffer.data(), FBuffer.data() + FBufPos, Have);
        FBufStart += static_cast<qint64>(FBufPos);
        FBufPos = 0;
        FBufEnd = Have;
    }
    if (Count > FBuffer.size()) FBuffer.resize(Count);
    while (FBufEnd < Count) {
        // A sequential device cannot be rewound, so take only what is needed.
        const std::size_t Want = FSequential ? Count - FBufEnd : FBuffer.size() - FBufEnd;
        const qint64 Got =
            FStream->read(reinterpret_cast<char*>(FBuffer.data() + FBufEnd), static_cast<qint64>(Want));
        if (Got <= 0) return false;
        FBufEnd += static_cast<std::size_t>(Got);
    }
    return true;
}

const quint8* TReader::Need(std::size_t Count) {
    if (FBufEnd - FBufPos < Count && !Fill(Count)) ReadFailed(FBufStart + static_cast<qint64>(FBufEnd));
    const quint8* P = FBuffer.data() + FBufPos;
    FBufPos += Count;
    return P;
}

void TReader::ReadFailed(qint64 At) const {
    throw EReadError(detail::Tr("qxnum::TReader", "Stream read error at offset %1").arg(At), At);
}

void TReader::InvalidValue(qint64 TagPos, quint8 Tag, const char* Expected) const {
    throw EReadError(
        detail::Tr("qxnum::TReader", "Invalid property value at offset %1: expected %2, found tag %3")
            .arg(TagPos)
            .arg(detail::Tr("qxnum::TReader", Expected), TagText(Tag)),
        TagPos);
}

bool TReader::AtEnd() {
    if (FBufPos < FBufEnd) return false;
    return !Fill(1);
}

void TReader::CheckLength(qint64 Count) {
    if (Count < 0) ReadFailed(Position());
    if (FSequential || !FStream) return;
    const qint64 Left = FStream->size() - Position();
    if (Count > Left)
        throw EReadError(
            detail::Tr("qxnum::TReader", "Stream read error at offset %1: %2 bytes declared, %3 left")
                .arg(Position())
                .arg(Count)
                .arg(std::max<qint64>(Left, 0)),
            Position());
}

void TReader::Read(void* Buf, qint64 Count) {
    if (Count <= 0) return;
    auto* Dst = static_cast<quint8*>(Buf);
    std::size_t Have = FBufEnd - FBufPos;
    if (static_cast<quint64>(Count) <= Have) {
        std::memcpy(Dst, FBuffer.data() + FBufPos, static_cast<std::size_t>(Count));
        FBufPos += static_cast<std::size_t>(Count);
        return;
    }
    if (Count < static_cast<qint64>(FBuffer.size())) {
        std::memcpy(Dst, Need(static_cast<std::size_t>(Count)), static_cast<std::size_t>(Count));
        return;
    }
    // Long block: drain the buffer, then read straight into the destination.
    CheckLength(Count);
    std::memcpy(Dst, FBuffer.data() + FBufPos, Have);
    FBufStart += static_cast<qint64>(FBufEnd);
    FBufPos = FBufEnd = 0;
    qint64 Done = static_cast<qint64>(Have);
    while (Done < Count) {
        const qint64 Got = FStream ? FStream->read(reinterpret_cast<char*>(Dst + Done), Count - Done) : -1;
        if (Got <= 0) ReadFailed(FBufStart);
        Done += Got;
        FBufStart += Got;
    }
}

quint8 TReader::ReadByte() {
    return *Need(1);
}

QByteArray TReader::ReadBytes(qint64 Count) {
    CheckLength(Count);
    if (!FSequential || Count <= ChunkSize) {
        QByteArray Result(Count, Qt::Uninitialized);
        Read(Result.data(), Count);
        return Result;
    }
    // The length of a sequential stream is unknown: grow with what really arrives.
    QByteArray Result;
    qint64 Done = 0;
    while (Done < Count) {
        const qint64 Step = std::min(ChunkSize, Count - Done);
        Result.resize(Done + Step);
        Read(Result.data() + Done, Step);
        Done += Step;
    }
    return Result;
}

void TReader::SkipBytes(qint64 Count) {
    if (Count < 0) ReadFailed(Position());
    if (Count == 0) return;
    const std::size_t Have = FBufEnd - FBufPos;
    if (static_cast<quint64>(Count) <= Have) {
        FBufPos += static_cast<std::size_t>(Count);
        return;
    }
    CheckLength(Count);
    if (!FSequential && FStream) {
        const qint64 Target = Position() + Count;
        FBufStart = Target;
        FBufPos = FBufEnd = 0;
        FStream->seek(Target);
        return;
    }
    char Scratch[4096];
    while (Count > 0) {
        const qint64 Step = std::min<qint64>(Count, sizeof Scratch);
        Read(Scratch, Step);
        Count -= Step;
    }
}

TValueType TReader::NextValue() {
    if (FBufPos < FBufEnd) return static_cast<TValueType>(FBuffer[FBufPos]);
    if (!Fill(1)) ReadFailed(Position());
    return static_cast<TValueType>(FBuffer[FBufPos]);
}

TValueType TReader::ReadValue() {
    return static_cast<TValueType>(ReadByte());
}

void TReader::ReadSignature() {
    const qint64 At = Position();
    char Sig[4];
    Read(Sig, 4);
    if (std::memcmp(Sig, "TPF0", 4) != 0)
        throw EReadError(
            detail::Tr("qxnum::TReader", "Invalid stream format at offset %1: no TPF0 signature").arg(At),
            At);
}

void TReader::ReadListBegin() {
    const quint8 Tag = NextValue();
    if (Tag != vaList) InvalidValue(Position(), Tag, "a list begin");
    ++FBufPos;
}

void TReader::ReadListEnd() {
    const quint8 Tag = NextValue();
    if (Tag != vaNull) InvalidValue(Position(), Tag, "a list end");
    ++FBufPos;
}

qint64 TReader::ReadIntPayload(quint8 Tag) {
    switch (Tag) {
    case vaInt8:
        return static_cast<qint8>(*Need(1));
    case vaInt16:
        return qFromLittleEndian<qint16>(Need(2));
    case vaInt32:
        return qFromLittleEndian<qint32>(Need(4));
    default:
        return qFromLittleEndian<qint64>(Need(8));
    }
}

// The tag is peeked, checked and only then consumed, so a refused value stays in the stream.
int TReader::ReadInteger() {
    const quint8 Tag = NextValue();
    if (Tag != vaInt8 && Tag != vaInt16 && Tag != vaInt32) InvalidValue(Position(), Tag, "an integer");
    ++FBufPos;
    return static_cast<int>(ReadIntPayload(Tag));
}

qint64 TReader::ReadInt64() {
    const quint8 Tag = NextValue();
    if (!IsIntTag(Tag)) InvalidValue(Position(), Tag, "an integer");
    ++FBufPos;
    return ReadIntPayload(Tag);
}

bool TReader::ReadBoolean() {
    const quint8 Tag = NextValue();
    if (Tag != vaTrue && Tag != vaFalse) InvalidValue(Position(), Tag, "a boolean");
    ++FBufPos;
    return Tag == vaTrue;
}

Extended TReader::ReadFloat() {
    const quint8 Tag = NextValue();
    if (Tag == vaExtended) {
        ++FBufPos;
        TExt80Bytes B;
        std::memcpy(B.data(), Need(10), 10);
        return Ext80ToExtended(B);
    }
    if (Tag == vaDouble) {
        ++FBufPos;
        return std::bit_cast<double>(qFromLittleEndian<quint64>(Need(8)));
    }
    if (!IsIntTag(Tag)) InvalidValue(Position(), Tag, "a float");
    ++FBufPos;
    return static_cast<Extended>(ReadIntPayload(Tag));
}

double TReader::ReadDouble() {
    const quint8 Tag = NextValue();
    if (Tag == vaExtended) {
        ++FBufPos;
        return ext80::DoubleFromExt(ext80::Unpack(Need(10)));
    }
    if (Tag == vaDouble) {
        ++FBufPos;
        return std::bit_cast<double>(qFromLittleEndian<quint64>(Need(8)));
    }
    if (!IsIntTag(Tag)) InvalidValue(Position(), Tag, "a float");
    ++FBufPos;
    return static_cast<double>(ReadIntPayload(Tag));
}

float TReader::ReadSingle() {
    const quint8 Tag = NextValue();
    if (Tag == vaSingle) {
        ++FBufPos;
        return std::bit_cast<float>(qFromLittleEndian<quint32>(Need(4)));
    }
    if (!IsIntTag(Tag)) InvalidValue(Position(), Tag, "a single");
    ++FBufPos;
    return static_cast<float>(ReadIntPayload(Tag));
}

Extended TReader::ReadCurrency() {
    const quint8 Tag = NextValue();
    if (Tag == vaCurrency) {
        ++FBufPos;
        return static_cast<Extended>(qFromLittleEndian<qint64>(Need(8))) / 10000.0L;
    }
    if (!IsIntTag(Tag)) InvalidValue(Position(), Tag, "a currency value");
    ++FBufPos;
    return static_cast<Extended>(ReadIntPayload(Tag));
}

double TReader::ReadDate() {
    const quint8 Tag = NextValue();
    if (Tag == vaDate) {
        ++FBufPos;
        return std::bit_cast<double>(qFromLittleEndian<quint64>(Need(8)));
    }
    if (!IsIntTag(Tag)) InvalidValue(Position(), Tag, "a date");
    ++FBufPos;
    return static_cast<double>(ReadIntPayload(Tag));
}

QString TReader::Read8Bit(qint64 Count) {
    if (Count < 0) ReadFailed(Position());
    if (Count <= static_cast<qint64>(FBuffer.size())) {
        const quint8* P = Need(static_cast<std::size_t>(Count));
        return Decode8Bit(FCodePage, P, Count);
    }
    const QByteArray Bytes = ReadBytes(Count);
    return Decode8Bit(FCodePage, reinterpret_cast<const quint8*>(Bytes.constData()), Bytes.size());
}

QString TReader::ReadString() {
    const qint64 TagPos = Position();
    const quint8 Tag = NextValue();
    switch (Tag) {
    case vaString:
        ++FBufPos;
        return Read8Bit(ReadByte());
    case vaLString:
        ++FBufPos;
        return Read8Bit(qFromLittleEndian<qint32>(Need(4)));
    case vaUTF8String: {
        ++FBufPos;
        const qint64 Count = qFromLittleEndian<qint32>(Need(4));
        CheckLength(Count);
        if (Count <= static_cast<qint64>(FBuffer.size()))
            return Utf8Text(reinterpret_cast<const char*>(Need(static_cast<std::size_t>(Count))), Count);
        const QByteArray Bytes = ReadBytes(Count);
        return Utf8Text(Bytes.constData(), Bytes.size());
    }
    case vaWString: {
        ++FBufPos;
        const qint64 Units = qFromLittleEndian<qint32>(Need(4));
        if (Units < 0) ReadFailed(Position());
        const QByteArray Bytes = ReadBytes(Units * 2);
        QString S(Units, Qt::Uninitialized);
        qFromLittleEndian<quint16>(Bytes.constData(), Units, S.data());
        return S;
    }
    default:
        InvalidValue(TagPos, Tag, "a string");
    }
}

QByteArray TReader::ReadShortStrBytes() {
    const std::size_t Len = ReadByte();
    const quint8* P = Need(Len);
    return QByteArray(reinterpret_cast<const char*>(P), static_cast<qsizetype>(Len));
}

QString TReader::ReadIdent() {
    const quint8 Tag = NextValue();
    switch (Tag) {
    case vaIdent: {
        ++FBufPos;
        const std::size_t Len = ReadByte();
        return Decode8Bit(FCodePage, Need(Len), static_cast<qint64>(Len));
    }
    case vaFalse:
        ++FBufPos;
        return QStringLiteral("False");
    case vaTrue:
        ++FBufPos;
        return QStringLiteral("True");
    case vaNil:
        ++FBufPos;
        return QStringLiteral("nil");
    case vaNull:
        ++FBufPos;
        return QStringLiteral("Null");
    default:
        InvalidValue(Position(), Tag, "an identifier");
    }
}

QStringList TReader::ReadSet() {
    const quint8 Tag = NextValue();
    if (Tag != vaSet) InvalidValue(Position(), Tag, "a set");
    ++FBufPos;
    QStringList Names;
    for (;;) {
        const std::size_t Len = ReadByte();
        if (Len == 0) break;
        Names.append(Decode8Bit(FCodePage, Need(Len), static_cast<qint64>(Len)));
    }
    return Names;
}

QByteArray TReader::ReadBinary() {
    const quint8 Tag = NextValue();
    if (Tag != vaBinary) InvalidValue(Position(), Tag, "binary data");
    ++FBufPos;
    return ReadBytes(qFromLittleEndian<qint32>(Need(4)));
}

void TReader::SetCodePage(int CodePage) {
    if (CodePage != 0 && !detail::CodePageAvailable(CodePage))
        throw Exception(detail::Tr("qxnum::TReader", "Code page %1 is not available").arg(CodePage));
    FCodePage = CodePage;
}

void TReader::SkipValue() {
    // An explicit stack instead of recursion: a hostile stream of nested lists must not
    // exhaust the C++ stack.
    enum : quint8 { InList, InCollection, InItemProps };
    std::vector<quint8> Open;
    do {
        if (!Open.empty()) {
            if (NextValue() == vaNull) {
                ++FBufPos;
                Open.pop_back();
                continue;
            }
            if (Open.back() == InCollection) {
                // An item: an optional integer index, then a list of properties.
                const quint8 Next = NextValue();
                if (Next == vaInt8 || Next == vaInt16 || Next == vaInt32) {
                    ++FBufPos;
                    ReadIntPayload(Next);
                }
                ReadListBegin();
                Open.push_back(InItemProps);
                continue;
            }
            if (Open.back() == InItemProps) SkipBytes(ReadByte()); // property name
        }
        const qint64 TagPos = Position();
        // Peeked, not read: an unknown tag stays unread, as with the typed reads.
        const quint8 Tag = NextValue();
        if (Tag > vaDouble) InvalidValue(TagPos, Tag, "a value");
        ++FBufPos;
        switch (Tag) {
        case vaNull:
        case vaFalse:
        case vaTrue:
        case vaNil:
            break;
        case vaList:
            Open.push_back(InList);
            break;
        case vaCollection:
            Open.push_back(InCollection);
            break;
        case vaInt8:
            SkipBytes(1);
            break;
        case vaInt16:
            SkipBytes(2);
            break;
        case vaInt32:
        case vaSingle:
            SkipBytes(4);
            break;
        case vaInt64:
        case vaCurrency:
        case vaDate:
        case vaDouble:
            SkipBytes(8);
            break;
        case vaExtended:
            SkipBytes(10);
            break;
        case vaString:
        case vaIdent:
            SkipBytes(ReadByte());
            break;
        case vaSet:
            for (std::size_t Len = ReadByte(); Len != 0; Len = ReadByte())
                SkipBytes(static_cast<qint64>(Len));
            break;
        case vaBinary:
        case vaLString:
        case vaUTF8String:
            SkipBytes(qFromLittleEndian<qint32>(Need(4)));
            break;
        case vaWString: {
            const qint64 Units = qFromLittleEndian<qint32>(Need(4));
            if (Units < 0) ReadFailed(Position());
            SkipBytes(Units * 2);
            break;
        }
        default:
            InvalidValue(TagPos, Tag, "a value");
        }
    } while (!Open.empty());
}

} // namespace qxnum

/// \file
/// The binary filer: typed values in the classic component-stream encoding, so that streams written
/// here and by existing programs read each other byte for byte.
///
/// Encoding: every value is one tag byte (TValueType) and a little-endian payload:
///   02/03/04/13 signed 1/2/4/8-byte integers; 05 an 80-bit extended float (64-bit significand with
///   explicit integer bit, then sign and 15-bit exponent biased by 16383); 06/07 a 1-byte length and
///   8-bit text (string / identifier); 08/09 false/true; 0A a 4-byte count and raw bytes; 0B short
///   strings up to an empty one (a set); 0C a 4-byte length and 8-bit text; 0D nil; 0F a single;
///   10 currency (8-byte integer, value x 10000); 11 a date (double, days since 1899-12-30);
///   12 a 4-byte count of UTF-16 units and UTF-16LE text; 14 a 4-byte byte count and UTF-8 text;
///   15 a double. 01 begins a list, 00 ends it. "TPF0" is the stream signature.
///
/// Writing picks the smallest integer form, and for text: pure ASCII -> 06 (up to 255 bytes) or 0C;
/// other text -> 14 when its UTF-8 form is shorter than twice its UTF-16 length, else 12 (also
/// for text with an unpaired surrogate, which UTF-8 cannot carry).
///
/// TWriter::SetStringMode chooses another layout, to reproduce files of a given generation of
/// older tools byte for byte (see TStringMode).
///
/// Reading is tolerant where the classic reader was: ReadInteger takes 02/03/04, ReadInt64 also 13,
/// ReadFloat takes 05, 15 and the integer tags, ReadString takes 06, 0C, 12 and 14. 8-bit text was
/// written in the writer's ANSI code page: by default it is decoded as UTF-8 when valid, otherwise
/// as Windows-1252; TReader::SetCodePage names the code page of the writing machine instead.
/// Code pages: Windows-1250 to 1258 are always available (built-in tables); others, such as 936
/// (GBK), through Qt's named decoders, present when Qt was built with ICU (CodePageAvailable).
///
/// Errors: a tag that does not fit the requested kind raises EReadError "Invalid property value"
/// (with the offset of the tag and the kind expected); a stream that ends inside a value raises
/// EReadError "Stream read error" (with the offset). A refused tag is left unread, so a caller may
/// still SkipValue it. A declared length larger than what is left of a seekable stream is refused
/// before anything is allocated; on a sequential device long payloads are read in bounded chunks,
/// so a lying length costs at most what the stream really holds.
///
/// 80-bit floats are converted with integer operations and frexp/ldexp, never by reinterpreting the
/// memory of a long double, so the byte layout is right whatever long double is on the host. Where
/// long double is narrower than 80 bits, reading rounds half to even.
///
/// Buffering: the writer collects bytes in an internal buffer and hands them to the device in blocks;
/// they reach the device on FlushBuffer() and when the writer is destroyed. The reader reads ahead
/// in blocks from a seekable device; Position() is always the logical position (the next byte a
/// read will return), and FlushBuffer() / the destructor seek the device back to that position, so
/// a caller can go on reading the device after the reader is gone. A sequential device is read
/// without read-ahead (only the bytes that are needed; a tag peeked by NextValue is handed back with
/// QIODevice::ungetChar), so nothing is lost there either.
/// Neither class owns the device. Both are meant for one thread at a time.
#pragma once

#include <qxnum/global.h>

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QStringList>

#include <array>
#include <vector>

class QIODevice;

namespace qxnum {

/// Tag bytes of the filer encoding.
enum TValueType : quint8 {
    vaNull,       // 00 end of a list
    vaList,       // 01 begin of a list
    vaInt8,       // 02
    vaInt16,      // 03
    vaInt32,      // 04
    vaExtended,   // 05 80-bit float
    vaString,     // 06 short 8-bit string
    vaIdent,      // 07 identifier
    vaFalse,      // 08
    vaTrue,       // 09
    vaBinary,     // 0A
    vaSet,        // 0B
    vaLString,    // 0C long 8-bit string
    vaNil,        // 0D
    vaCollection, // 0E
    vaSingle,     // 0F
    vaCurrency,   // 10
    vaDate,       // 11
    vaWString,    // 12 UTF-16LE
    vaInt64,      // 13
    vaUTF8String, // 14
    vaDouble,     // 15
};
QXNUM_ENUM_NAMES(TValueType, "vaNull", "vaList", "vaInt8", "vaInt16", "vaInt32", "vaExtended", "vaString",
                 "vaIdent", "vaFalse", "vaTrue", "vaBinary", "vaSet", "vaLString", "vaNil", "vaCollection",
                 "vaSingle", "vaCurrency", "vaDate", "vaWString", "vaInt64", "vaUTF8String", "vaDouble")

/// Raised by TReader for malformed or truncated streams. Offset is the stream position the
/// message refers to (the tag of the offending value, or where the data ran out).
class QXNUM_CORE_EXPORT EReadError : public Exception {
public:
    explicit EReadError(const QString& Message, qint64 Offset = -1) : Exception(Message), FOffset(Offset) {}
    qint64 Offset() const noexcept { return FOffset; }

private:
    qint64 FOffset;
};

/// Raised by TWriter when the device refuses data ("Stream write error"), or for a value the
/// encoding cannot hold (an identifier longer than 255 bytes).
class QXNUM_CORE_EXPORT EWriteError : public Exception {
public:
    using Exception::Exception;
};

/// --- 80-bit extended float, portable conversions ------------------------------------------------

/// The 10 bytes of an 80-bit extended float as stored in streams (little-endian).
using TExt80Bytes = std::array<quint8, 10>;

/// Exact on hosts whose long double has a 64-bit significand (x86-64); NaN keeps its sign, not its
/// payload (written as the quiet NaN C000000000000000).
QXNUM_CORE_EXPORT TExt80Bytes ExtendedToExt80(Extended Value);
/// Reads an 80-bit pattern: normals and denormals by value, pseudo-denormals (exponent 0 with the
/// integer bit set) by value as the x87 does, infinities and NaNs as such. Unnormals, pseudo-
/// infinities and pseudo-NaNs (integer bit clear with a non-zero exponent) are invalid operands on
/// every FPU since the 387: they read as a quiet NaN with the pattern's sign.
QXNUM_CORE_EXPORT Extended Ext80ToExtended(const TExt80Bytes& Bytes);
/// The same pattern rounded to a double, half to even, from the bits (overflow -> infinity,
/// denormal results rounded correctly, infinities and NaN kept).
QXNUM_CORE_EXPORT double Ext80ToDouble(const TExt80Bytes& Bytes);
/// The value of a pattern given by its fields, e.g. MakeExtended(true, 0x7FE1, 0x89705F4136B4A597).
QXNUM_CORE_EXPORT Extended MakeExtended(bool Negative, quint16 Exponent, quint64 Mantissa);

/// --- Dates: double days since 1899-12-30 --------------------------------------------------------

/// Wall-clock date and time (no time zone conversion), to the millisecond. The integer part counts
/// days, the fraction is the time of day also for dates before 1899-12-30 (-1.25 is 1899-12-29 06:00).
QXNUM_CORE_EXPORT double DateTimeToFileDate(const QDateTime& Value);
/// Invalid QDateTime for NaN, infinities and days outside QDate's range; local-time spec.
QXNUM_CORE_EXPORT QDateTime FileDateToDateTime(double Days);

/// --- Text encodings -----------------------------------------------------------------------------

/// True when 8-bit text in the given Windows code page (1250, 1251, ..., 936) can be read and written.
QXNUM_CORE_EXPORT bool CodePageAvailable(int CodePage);

/// How TWriter tags text.
enum TStringMode : quint8 {
    smDefault, // ASCII -> 06/0C; other text -> 14 or 12, whichever is shorter (see above)
    smAnsi,    // 06/0C in the writer's code page when every character has a byte there, else as smDefault
    smUtf8,    // always 14 (12 for text with an unpaired surrogate, which UTF-8 cannot carry)
    smUtf16,   // always 12
};

/// --- Writer -------------------------------------------------------------------------------------

class QXNUM_CORE_EXPORT TWriter {
public:
    explicit TWriter(QIODevice* Stream, int BufSize = 4096);
    /// Flushes; a device error at this point is swallowed (call FlushBuffer to see it).
    ~TWriter();
    TWriter(const TWriter&) = delete;
    TWriter& operator=(const TWriter&) = delete;

    QIODevice* Device() const { return FStream; }
    /// Hands the buffered bytes to the device; EWriteError when it takes fewer.
    void FlushBuffer();
    /// Logical position: the device position plus what is still buffered.
    qint64 Position() const;

    /// Raw bytes, no tag.
    void Write(const void* Buf, qint64 Count);
    void WriteValue(TValueType Value);

    void WriteSignature();
    void WriteListBegin();
    void WriteListEnd();

    void WriteInteger(int Value);
    /// 13 only when the value needs more than 32 bits.
    void WriteInteger(qint64 Value);
    void WriteBoolean(bool Value);
    void WriteFloat(Extended Value);
    void WriteDouble(double Value);
    void WriteSingle(float Value);
    /// Value x 10000 rounded half to even; EWriteError when outside the 64-bit range or NaN.
    void WriteCurrency(Extended Value);
    void WriteDate(double Days);
    void WriteDate(const QDateTime& Value) { WriteDate(DateTimeToFileDate(Value)); }
    void WriteString(const QString& Value);
    /// "False", "True", "nil", "Null" (any case) get their own tags, like the classic writer.
    void WriteIdent(const QString& Ident);
    void WriteSet(const QStringList& Names);
    void WriteBinary(const QByteArray& Data);

    /// CodePage serves smAnsi; Exception when it is not available.
    void SetStringMode(TStringMode Mode, int CodePage = 1252);
    TStringMode StringMode() const { return FStringMode; }

private:
    void Put(const void* Buf, qint64 Count);
    void PutByte(quint8 B) {
        if (FBufPos == FBuffer.size()) FlushBuffer();
        FBuffer[FBufPos++] = B;
    }
    void WriteShortStr(const QByteArray& Bytes);
    void Write8Bit(const char* Text, qsizetype Len);

    QIODevice* FStream;
    std::vector<quint8> FBuffer;
    std::size_t FBufPos = 0;
    TStringMode FStringMode = smDefault;
    int FCodePage = 1252;
};

/// --- Reader -------------------------------------------------------------------------------------

class QXNUM_CORE_EXPORT TReader {
public:
    explicit TReader(QIODevice* Stream, int BufSize = 4096);
    /// Gives back the read-ahead (seeks the device to Position()).
    ~TReader();
    TReader(const TReader&) = delete;
    TReader& operator=(const TReader&) = delete;

    QIODevice* Device() const { return FStream; }
    /// Seeks the device back to the logical position; reading may continue afterwards.
    void FlushBuffer();
    /// Logical position: the offset of the next byte to be read.
    qint64 Position() const { return FBufStart + static_cast<qint64>(FBufPos); }
    /// True when no byte is left.
    bool AtEnd();

    /// Raw bytes, no tag; EReadError when fewer than Count are left.
    void Read(void* Buf, qint64 Count);
    quint8 ReadByte();

    /// The next tag without consuming it. An unknown tag byte is returned as it is (outside the
    /// enumerators); the read that follows will refuse it.
    TValueType NextValue();
    TValueType ReadValue();
    bool EndOfList() { return NextValue() == vaNull; }

    void ReadSignature();
    void ReadListBegin();
    void ReadListEnd();

    int ReadInteger();
    qint64 ReadInt64();
    bool ReadBoolean();
    Extended ReadFloat();
    /// From 05 rounded half to even; from 15 and the integer tags as they are.
    double ReadDouble();
    /// 0F and the integer tags.
    float ReadSingle();
    /// 10 (as value / 10000) and the integer tags.
    Extended ReadCurrency();
    /// 11 and the integer tags, days since 1899-12-30.
    double ReadDate();
    QDateTime ReadDateTime() { return FileDateToDateTime(ReadDate()); }
    QString ReadString();
    /// 07, and 08/09/0D/00 as "False", "True", "nil", "Null".
    QString ReadIdent();
    QStringList ReadSet();
    QByteArray ReadBinary();

    /// Consumes one value of any known tag: a list up to and including its 00, a set up to its
    /// empty name, a collection with its items. Nesting depth is limited only by the stream.
    void SkipValue();

    /// The code page of 8-bit text (06, 0C, 07, 0B); 0, the default, is UTF-8 when valid, else
    /// Windows-1252. Exception when it is not available.
    void SetCodePage(int CodePage);
    int CodePage() const { return FCodePage; }

private:
    const quint8* Need(std::size_t Count);
    bool Fill(std::size_t Count);
    [[noreturn]] void ReadFailed(qint64 At) const;
    [[noreturn]] void InvalidValue(qint64 TagPos, quint8 Tag, const char* Expected) const;
    void CheckLength(qint64 Count);
    QByteArray ReadBytes(qint64 Count);
    QByteArray ReadShortStrBytes();
    qint64 ReadIntPayload(quint8 Tag);
    QString Read8Bit(qint64 Count);
    void SkipBytes(qint64 Count);

    QIODevice* FStream;
    bool FSequential;
    std::vector<quint8> FBuffer;
    std::size_t FBufPos = 0; // next byte in FBuffer
    std::size_t FBufEnd = 0; // valid bytes in FBuffer
    qint64 FBufStart = 0;    // device offset of FBuffer[0]
    int FCodePage = 0;
};

} // namespace qxnum

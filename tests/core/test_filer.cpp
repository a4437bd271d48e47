#include <qxnum/filer.h>

#include "pipedevice.h"
#include "throwmsg.h"

#include <QBuffer>
#include <QDate>
#include <QTime>
#include <gtest/gtest.h>

#include <bit>
#include <cfloat>
#include <cmath>
#include <functional>
#include <limits>
#include <random>

using namespace qxnum;

namespace {

QByteArray Hex(const QByteArray& Text) {
    return QByteArray::fromHex(Text);
}

QByteArray Written(const std::function<void(TWriter&)>& Write, int BufSize = 4096) {
    QBuffer Buf;
    Buf.open(QIODevice::WriteOnly);
    {
        TWriter W(&Buf, BufSize);
        Write(W);
    }
    return Buf.data();
}

// Owns the buffer a reader works on.
struct TSource {
    explicit TSource(const QByteArray& Data) {
        Buf.setData(Data);
        Buf.open(QIODevice::ReadOnly);
    }
    QBuffer Buf;
};

using qxnum::test::TPipe;

QByteArray ExtBytes(Extended V) {
    const TExt80Bytes B = ExtendedToExt80(V);
    return QByteArray(reinterpret_cast<const char*>(B.data()), 10);
}

TExt80Bytes Ext(bool Negative, quint16 Exponent, quint64 Mantissa) {
    TExt80Bytes B;
    for (std::size_t I = 0; I < 8; ++I)
        B[I] = static_cast<quint8>(Mantissa >> (8 * I));
    const quint16 SE = static_cast<quint16>((Negative ? 0x8000 : 0) | Exponent);
    B[8] = static_cast<quint8>(SE);
    B[9] = static_cast<quint8>(SE >> 8);
    return B;
}

constexpr bool X87 = LDBL_MANT_DIG == 64;

// Reads values of every kind until the stream ends; only EReadError may escape.
void ReadEverything(const QByteArray& Data) {
    const std::function<void(TReader&)> Reads[] = {
        [](TReader& R) { R.ReadInteger(); }, [](TReader& R) { R.ReadFloat(); },
        [](TReader& R) { R.ReadString(); },  [](TReader& R) { R.ReadBoolean(); },
        [](TReader& R) { R.ReadDouble(); },  [](TReader& R) { R.ReadIdent(); },
        [](TReader& R) { R.ReadSet(); },     [](TReader& R) { R.ReadBinary(); },
        [](TReader& R) { R.SkipValue(); }};
    TSource S(Data);
    TReader R(&S.Buf, 64);
    for (int Step = 0; Step < 100000 && !R.AtEnd(); ++Step) {
        const qint64 Before = R.Position();
        try {
            Reads[static_cast<std::size_t>(Step) % std::size(Reads)](R);
        } catch (const EReadError&) {
            if (R.Position() == Before) R.ReadByte(); // make progress past a refused tag
        }
    }
}

void ExpectReadError(const std::function<void()>& Read, const char* Start, const std::string& What) {
    try {
        Read();
        ADD_FAILURE() << What << ": no error";
    } catch (const EReadError& E) {
        EXPECT_TRUE(E.Message().startsWith(Start)) << What << ": " << E.what();
    }
}

} // namespace

// --- Writing: the byte layouts of the classic filer ------------------------------------------

struct TWriteCase {
    const char* Name;
    std::function<void(TWriter&)> Write;
    QByteArray Expected; // hex
};

const std::vector<TWriteCase>& WriteCases() {
    static const std::vector<TWriteCase> Cases = {
        {"signature", [](TWriter& W) { W.WriteSignature(); }, "54504630"},
        {"list", [](TWriter& W) { W.WriteListBegin(), W.WriteListEnd(); }, "0100"},
        {"int 127", [](TWriter& W) { W.WriteInteger(127); }, "027f"},
        {"int -128", [](TWriter& W) { W.WriteInteger(-128); }, "0280"},
        {"int 128", [](TWriter& W) { W.WriteInteger(128); }, "038000"},
        {"int -129", [](TWriter& W) { W.WriteInteger(-129); }, "037fff"},
        {"int -32768", [](TWriter& W) { W.WriteInteger(-32768); }, "030080"},
        {"int 32768", [](TWriter& W) { W.WriteInteger(32768); }, "0400800000"},
        {"int min", [](TWriter& W) { W.WriteInteger(std::numeric_limits<int>::min()); }, "0400000080"},
        {"int64 small", [](TWriter& W) { W.WriteInteger(qint64(-1)); }, "02ff"},
        {"int64 32-bit", [](TWriter& W) { W.WriteInteger(qint64(2147483647)); }, "04ffffff7f"},
        {"int64 2^32", [](TWriter& W) { W.WriteInteger(qint64(1) << 32); }, "130000000001000000"},
        {"int64 min", [](TWriter& W) { W.WriteInteger(std::numeric_limits<qint64>::min()); },
         "130000000000000080"},
        {"false", [](TWriter& W) { W.WriteBoolean(false); }, "08"},
        {"true", [](TWriter& W) { W.WriteBoolean(true); }, "09"},
        {"float 1", [](TWriter& W) { W.WriteFloat(1.0L); }, "050000000000000080ff3f"},
        {"float 2.5", [](TWriter& W) { W.WriteFloat(2.5L); }, "0500000000000000a00040"},
        {"float -1", [](TWriter& W) { W.WriteFloat(-1.0L); }, "050000000000000080ffbf"},
        {"float 0", [](TWriter& W) { W.WriteFloat(0.0L); }, "0500000000000000000000"},
        {"float -0", [](TWriter& W) { W.WriteFloat(-0.0L); }, "0500000000000000000080"},
        {"float 0.1 double", [](TWriter& W) { W.WriteFloat(0.1); }, "05 00 d0 cc cc cc cc cc cc fb 3f"},
        {"float inf", [](TWriter& W) { W.WriteFloat(std::numeric_limits<Extended>::infinity()); },
         "050000000000000080ff7f"},
        {"float -inf", [](TWriter& W) { W.WriteFloat(-std::numeric_limits<Extended>::infinity()); },
         "050000000000000080ffff"},
        {"float nan", [](TWriter& W) { W.WriteFloat(std::numeric_limits<Extended>::quiet_NaN()); },
         "0500000000000000c0ff7f"},
        {"string abc", [](TWriter& W) { W.WriteString("abc"); }, "0603616263"},
        {"string empty", [](TWriter& W) { W.WriteString(""); }, "0600"},
        {"string 255", [](TWriter& W) { W.WriteString(QString(255, 'x')); },
         QByteArray("06ff") + QByteArray(255, 'x').toHex()},
        {"string 256", [](TWriter& W) { W.WriteString(QString(256, 'x')); },
         QByteArray("0c00010000") + QByteArray(256, 'x').toHex()},
        {"string Größe", [](TWriter& W) { W.WriteString(QString::fromUtf8("Größe")); },
         "14070000004772c3b6c39f65"},
        {"string [m²]", [](TWriter& W) { W.WriteString(QString::fromUtf8("[m²]")); }, "14050000005b6dc2b25d"},
        {"string CJK", [](TWriter& W) { W.WriteString(QString::fromUtf8("日本語")); },
         "1203000000e5652c679e8a"},
        {"string lone surrogate", [](TWriter& W) { W.WriteString(QString(QChar(0xDC00)) + "ab"); },
         "120300000000dc61006200"},
        {"double", [](TWriter& W) { W.WriteDouble(1.5); }, "15000000000000f83f"},
        {"single", [](TWriter& W) { W.WriteSingle(1.5f); }, "0f0000c03f"},
        {"currency", [](TWriter& W) { W.WriteCurrency(1.5L); }, "10983a000000000000"},
        {"currency rounded", [](TWriter& W) { W.WriteCurrency(-1.23456L); }, "10c6cfffffffffffff"},
        {"date", [](TWriter& W) { W.WriteDate(1.5); }, "11000000000000f83f"},
        {"ident", [](TWriter& W) { W.WriteIdent("ptPress"); }, "07 07 70 74 50 72 65 73 73"},
        {"ident true", [](TWriter& W) { W.WriteIdent("true"); }, "09"},
        {"ident nil", [](TWriter& W) { W.WriteIdent("NIL"); }, "0d"},
        {"set",
         [](TWriter& W) {
             W.WriteSet({"a", "bc"});
         },
         "0b 01 61 02 62 63 00"},
        {"binary", [](TWriter& W) { W.WriteBinary(Hex("f4002c")); }, "0a03000000f4002c"},
    };
    return Cases;
}

// Each encoding byte for byte, also through a one-byte buffer; each is exactly one value to
// SkipValue, and every truncation of it is a read error.
TEST(Filer, EncodingsByteForByteSkippedWholeAndTruncationFails) {
    for (const TWriteCase& C : WriteCases()) {
        const QByteArray Data = Hex(C.Expected);
        EXPECT_EQ(Written(C.Write).toHex(), Data.toHex()) << C.Name;
        EXPECT_EQ(Written(C.Write, 1).toHex(), Data.toHex()) << C.Name << " (small buffer)";
        if (Data.startsWith("TPF0") || Data == Hex("0100")) continue;
        TSource S(Data + Hex("77"));
        TReader R(&S.Buf);
        R.SkipValue();
        EXPECT_EQ(R.Position(), Data.size()) << C.Name;
        for (qsizetype Len = 1; Len < Data.size(); ++Len) {
            TSource T(Data.left(Len));
            TReader RT(&T.Buf);
            ExpectReadError([&] { RT.SkipValue(); }, "Stream read error",
                            std::string(C.Name) + " truncated to " + std::to_string(Len));
        }
    }
}

// --- Reading ------------------------------------------------------------------------------------

TEST(FilerRead, IntegersAndTheirTolerance) {
    const struct {
        const char* Bytes;
        qint64 Value;
    } Cases[] = {{"02ff", -1},
                 {"0280", -128},
                 {"03ff7f", 32767},
                 {"030080", -32768},
                 {"04ffffffff", -1},
                 {"04ffffff7f", 2147483647},
                 {"13ffffffffffffff7f", std::numeric_limits<qint64>::max()}};
    for (const auto& C : Cases) {
        TSource S1(Hex(C.Bytes)), S2(Hex(C.Bytes)), S3(Hex(C.Bytes));
        TReader R1(&S1.Buf), R2(&S2.Buf), R3(&S3.Buf);
        EXPECT_EQ(R1.ReadInt64(), C.Value) << C.Bytes;
        if (C.Value <= std::numeric_limits<int>::max()) {
            EXPECT_EQ(R2.ReadInteger(), C.Value) << C.Bytes;
        } else {
            EXPECT_THROW_MSG(R2.ReadInteger(), EReadError, "Invalid property value");
        }
        EXPECT_EQ(R3.ReadFloat(), static_cast<Extended>(C.Value)) << C.Bytes;
    }
}

TEST(FilerRead, WrongTagNamesOffsetAndKindAndStaysUnread) {
    TSource S(Hex("0900060161"));
    TReader R(&S.Buf);
    EXPECT_TRUE(R.ReadBoolean());
    EXPECT_TRUE(R.EndOfList());
    R.ReadListEnd();
    try {
        R.ReadInteger();
        FAIL() << "a string read as an integer";
    } catch (const EReadError& E) {
        EXPECT_TRUE(E.Message().startsWith("Invalid property value")) << E.what();
        EXPECT_TRUE(E.Message().contains("offset 2") && E.Message().contains("integer")) << E.what();
        EXPECT_EQ(E.Offset(), 2);
    }
    EXPECT_EQ(R.NextValue(), vaString);
    EXPECT_THROW_MSG(R.ReadFloat(), EReadError, "expected a float, found tag 06 (vaString)");
    // SkipValue too leaves an unknown tag unread, also inside a list.
    for (const char* Bytes : {"42", "01020742"}) {
        TSource U(Hex(Bytes));
        TReader RU(&U.Buf);
        EXPECT_THROW_MSG(RU.SkipValue(), EReadError, "Invalid property value");
        EXPECT_EQ(RU.Position(), Hex(Bytes).size() - 1) << Bytes;
        EXPECT_EQ(RU.ReadByte(), 0x42);
    }
    EXPECT_THROW_MSG(R.ReadBoolean(), EReadError, "offset 2: expected a boolean");
    EXPECT_THROW_MSG(R.ReadListBegin(), EReadError, "offset 2: expected a list begin");
    EXPECT_EQ(R.ReadString(), "a");
    EXPECT_TRUE(R.AtEnd());
    try {
        R.NextValue();
        FAIL() << "peek past the end";
    } catch (const EReadError& E) {
        EXPECT_TRUE(E.Message().startsWith("Stream read error")) << E.what();
        EXPECT_EQ(E.Offset(), 5);
    }
}

TEST(FilerRead, StringsOfEveryTagAndCodePage) {
    const char* Cases[][2] = {
        {"0603616263", "abc"},
        {"0600", ""},
        {"0602c3a4", "ä"},                     // valid UTF-8
        {"0601e4", "ä"},                       // Windows-1252
        {"060580819f8d20", "€\u0081Ÿ\u008d "}, // 1252 high block, unassigned bytes as C1 controls
        {"0602c0af", "À¯"},                    // overlong UTF-8 is not UTF-8
        {"0603eda080", "í\u00a0\u20ac"},       // an encoded surrogate is not UTF-8 either
        {"0c03000000616263", "abc"},
        {"0c00000000", ""},
        {"14070000004772c3b6c39f65", "Größe"},
        {"1203000000e5652c679e8a", "日本語"},
        {"12020000003dd800de", "😀"},
    };
    for (const auto& C : Cases) {
        TSource S(Hex(C[0]));
        TReader R(&S.Buf);
        EXPECT_EQ(R.ReadString(), QString::fromUtf8(C[1])) << C[0];
        EXPECT_TRUE(R.AtEnd()) << C[0];
    }
    // A leading byte order mark is text like any other, in both 8-bit and UTF-8 records.
    for (const char* Bytes : {"0606efbbbf616263", "1406000000efbbbf616263"}) {
        TSource S(Hex(Bytes));
        TReader R(&S.Buf);
        EXPECT_EQ(R.ReadString(), QString(QChar(0xFEFF)) + QStringLiteral("abc")) << Bytes;
    }
}

TEST(FilerRead, ChosenCodePageDecodesEightBitText) {
    const struct {
        int CodePage;
        const char* Bytes;
        const char* Text;
    } Cases[] = {
        {1250,
         "0607"
         "8a8ee8f8f99db3",
         "ŠŽčřůťł"},
        {1250, "070394e8e1", "”čá"}, // identifiers too
        {1251, "0603cff0e8", "При"},
        {1253, "0602e1e2", "αβ"},
        {1252, "0602c3a4", "Ã¤"}, // a chosen code page is taken as it is, valid UTF-8 or not
        {0, "0602c3a4", "ä"},
    };
    for (const auto& C : Cases) {
        TSource S(Hex(C.Bytes));
        TReader R(&S.Buf);
        R.SetCodePage(C.CodePage);
        const QString Text = Hex(C.Bytes)[0] == vaIdent ? R.ReadIdent() : R.ReadString();
        EXPECT_EQ(Text, QString::fromUtf8(C.Text)) << C.CodePage << " " << C.Bytes;
    }
    for (int Cp = 1250; Cp <= 1258; ++Cp)
        EXPECT_TRUE(CodePageAvailable(Cp)) << Cp;
    TSource S(Hex("0600"));
    TReader R(&S.Buf);
    EXPECT_THROW_MSG(R.SetCodePage(12345), Exception, "Code page 12345 is not available");
    EXPECT_EQ(R.CodePage(), 0);
    if (CodePageAvailable(936)) { // GBK through Qt, when Qt has it
        TSource G(Hex("0604d6d0cec4"));
        TReader RG(&G.Buf);
        RG.SetCodePage(936);
        EXPECT_EQ(RG.ReadString(), QString::fromUtf8("中文"));
    }
}

// The same strings under each writer setting, byte for byte; each reads back.
TEST(FilerWrite, StringModes) {
    const QString Strings[] = {QStringLiteral("ab"), QString::fromUtf8("Größe"), QString::fromUtf8("Łódź"),
                               QString::fromUtf8("日本"), QString(QChar(0xD800))};
    const struct {
        TStringMode Mode;
        int CodePage;
        const char* Expected;
    } Cases[] = {
        {smDefault, 1252,
         "06026162 14070000004772c3b6c39f65 1407000000c581c3b364c5ba 1202000000e5652c67 120100000000d8"},
        {smAnsi, 1252, "06026162 06054772f6df65 1407000000c581c3b364c5ba 1202000000e5652c67 120100000000d8"},
        {smAnsi, 1250, "06026162 06054772f6df65 0604a3f3649f 1202000000e5652c67 120100000000d8"},
        {smUtf8, 1252,
         "14020000006162 14070000004772c3b6c39f65 1407000000c581c3b364c5ba 1406000000e697a5e69cac "
         "120100000000d8"},
        {smUtf16, 1252,
         "120200000061006200 120500000047007200f600df006500 12040000004101f30064007a01 "
         "1202000000e5652c67 120100000000d8"},
    };
    for (const auto& C : Cases) {
        const QByteArray Bytes = Written([&](TWriter& W) {
            W.SetStringMode(C.Mode, C.CodePage);
            for (const QString& S : Strings)
                W.WriteString(S);
        });
        EXPECT_EQ(Bytes.toHex(), Hex(C.Expected).toHex()) << int(C.Mode) << " " << C.CodePage;
        TSource S(Bytes);
        TReader R(&S.Buf);
        R.SetCodePage(C.Mode == smAnsi ? C.CodePage : 0);
        for (const QString& Str : Strings)
            EXPECT_EQ(R.ReadString(), Str) << int(C.Mode);
    }
}

TEST(FilerRead, IdentSetBinaryDateCurrencySingleSignature) {
    TSource S(Hex("54504630 070270740809 0d 00 0b016102626300 0a02000000f400 11000000000000f83f "
                  "10983a000000000000 0f0000c03f 02 07 15000000000000f83f"));
    TReader R(&S.Buf);
    R.ReadSignature();
    for (const char* Ident : {"pt", "False", "True", "nil", "Null"})
        EXPECT_EQ(R.ReadIdent(), Ident);
    EXPECT_EQ(R.ReadSet(), QStringList({"a", "bc"}));
    EXPECT_EQ(R.ReadBinary(), Hex("f400"));
    EXPECT_EQ(R.ReadDate(), 1.5);
    EXPECT_EQ(R.ReadCurrency(), 1.5L);
    EXPECT_EQ(R.ReadSingle(), 1.5f);
    EXPECT_EQ(R.ReadDouble(), 7.0);
    EXPECT_EQ(R.ReadFloat(), 1.5L);
    EXPECT_TRUE(R.AtEnd());

    TSource Bad(Hex("54504631"));
    TReader R2(&Bad.Buf);
    EXPECT_THROW_MSG(R2.ReadSignature(), EReadError, "no TPF0 signature");
}

// --- 80-bit patterns ----------------------------------------------------------------------------

TEST(FilerFloat, SpecialPatterns) {
    // Field reference-value sentinel and the threshold below which a reference counts as unset.
    const Extended Sentinel = MakeExtended(true, 0x7FE1, 0x89705F4136B4A597ULL);
    EXPECT_EQ(ExtBytes(Sentinel).toHex(), "97a5b436415f7089e1ff");
    if constexpr (X87) {
        EXPECT_NEAR(static_cast<double>(Sentinel / -1.189731495357231765e4923L), 1.0, 1e-15);
        TSource S(Hex("0597a5b436415f7089e1ff"));
        TReader R(&S.Buf);
        EXPECT_EQ(ExtBytes(R.ReadFloat()), ExtBytes(Sentinel));
        EXPECT_LT(Sentinel, MakeExtended(true, 0x7FA5, 0x9E74D1B791E07E48ULL));
    }

    const Extended Inf = std::numeric_limits<Extended>::infinity();
    EXPECT_EQ(Ext80ToExtended(Ext(false, 0x7FFF, 0x8000000000000000ULL)), Inf);
    EXPECT_EQ(Ext80ToExtended(Ext(true, 0x7FFF, 0x8000000000000000ULL)), -Inf);
    const Extended NaN = Ext80ToExtended(Ext(true, 0x7FFF, 0xC000000000000000ULL));
    EXPECT_TRUE(std::isnan(NaN) && std::signbit(NaN));
    EXPECT_EQ(ExtBytes(NaN).toHex(), "00000000000000c0ffff");
    EXPECT_TRUE(std::isnan(Ext80ToExtended(Ext(false, 0x7FFF, 0x8000000000000001ULL)))); // signalling
    const Extended NegZero = Ext80ToExtended(Ext(true, 0, 0));
    EXPECT_TRUE(NegZero == 0.0L && std::signbit(NegZero));

    // Unnormals, pseudo-infinities and pseudo-NaNs are invalid operands: no value.
    EXPECT_TRUE(std::isnan(Ext80ToExtended(Ext(false, 0x3FFF, 0x4000000000000000ULL))));
    EXPECT_TRUE(std::isnan(Ext80ToExtended(Ext(false, 0x7FFF, 0))));
    EXPECT_TRUE(std::isnan(Ext80ToExtended(Ext(true, 0x7FFF, 0x4000000000000000ULL))));
    EXPECT_TRUE(std::isnan(Ext80ToDouble(Ext(false, 0x0001, 0x7FFFFFFFFFFFFFFFULL))));

    if constexpr (X87) {
        const Extended MinNormal = std::numeric_limits<Extended>::min();
        const Extended DenormMin = std::numeric_limits<Extended>::denorm_min();
        EXPECT_EQ(Ext80ToExtended(Ext(false, 0, 1)), DenormMin);
        EXPECT_EQ(ExtBytes(DenormMin).toHex(), "01000000000000000000");
        EXPECT_EQ(ExtBytes(MinNormal - DenormMin).toHex(), "ffffffffffffff7f0000");
        // A pseudo-denormal carries the value the x87 gives it: the smallest normal here.
        EXPECT_EQ(Ext80ToExtended(Ext(false, 0, 0x8000000000000000ULL)), MinNormal);
        EXPECT_EQ(ExtBytes(std::numeric_limits<Extended>::max()).toHex(), "fffffffffffffffffe7f");
    }
}

TEST(FilerFloat, ReadDoubleRoundsHalfToEvenFromTheBits) {
    const double DMax = std::numeric_limits<double>::max();
    const double DMin = std::numeric_limits<double>::denorm_min();
    const double Inf = std::numeric_limits<double>::infinity();
    const struct {
        quint16 Exponent;
        quint64 Mantissa;
        double Expected;
    } Cases[] = {
        {0x3FFF, 0x8000000000000400ULL, 1.0},           // tie, even stays
        {0x3FFF, 0x8000000000000C00ULL, 1.0 + 0x1p-51}, // tie, odd goes up
        {0x3FFF, 0x8000000000000401ULL, 1.0 + 0x1p-52}, // above the tie
        {0x3FFF, 0xFFFFFFFFFFFFFC00ULL, 2.0},           // carry into the exponent
        {0x43FE, 0xFFFFFFFFFFFFF800ULL, DMax},
        {0x43FE, 0xFFFFFFFFFFFFFBFFULL, DMax},
        {0x43FE, 0xFFFFFFFFFFFFFC00ULL, Inf},                                // rounds past the largest double
        {0x3BCD, 0x8000000000000000ULL, DMin},                               // 2^-1074
        {0x3BCC, 0x8000000000000000ULL, 0.0},                                // half of it, tie to even zero
        {0x3BCC, 0x8000000000000001ULL, DMin},                               // just above the half
        {0x3BCD, 0xC000000000000000ULL, 2 * DMin},                           // 1.5 units, tie to even 2
        {0x3C00, 0xFFFFFFFFFFFFFFFFULL, std::numeric_limits<double>::min()}, // denormal rounds up to normal
        {0x0000, 0x0000000000000001ULL, 0.0},                                // 80-bit denormal
    };
    for (const auto& C : Cases) {
        for (bool Negative : {false, true}) {
            const double Got = Ext80ToDouble(Ext(Negative, C.Exponent, C.Mantissa));
            const double Want = Negative ? -C.Expected : C.Expected;
            EXPECT_EQ(std::bit_cast<quint64>(Got), std::bit_cast<quint64>(Want))
                << std::hex << C.Exponent << " " << C.Mantissa << (Negative ? " negative" : "");
        }
    }
    TSource S(Hex("050000000000000080ff7f 0500000000000000c0ffff"));
    TReader R(&S.Buf);
    EXPECT_EQ(R.ReadDouble(), Inf);
    EXPECT_TRUE(std::isnan(R.ReadDouble()));
}

// The hardware conversion rounds to nearest even as well: both must agree on every pattern.
TEST(FilerFloat, ReadDoubleAgreesWithHardwareConversion) {
    if constexpr (!X87) GTEST_SKIP() << "long double is not the 80-bit format here";
    std::mt19937_64 Rng(20240501);
    for (int I = 0; I < 200000; ++I) {
        const quint64 Bits = Rng();
        // Concentrate on the interesting exponents: around the double range limits and the ties.
        const quint16 Exponents[] = {static_cast<quint16>(Rng() % 0x7FFF),
                                     static_cast<quint16>(0x3BC0 + Rng() % 0x60),
                                     static_cast<quint16>(0x43F0 + Rng() % 0x20), 0x3FFF};
        const quint16 E = Exponents[I % 4];
        quint64 M = Bits | 0x8000000000000000ULL;
        if (I % 3 == 0) M = (M & ~0x7FFULL) | (Rng() % 2 ? 0x400 : 0); // exact ties
        if (E == 0) M &= 0x7FFFFFFFFFFFFFFFULL;
        const TExt80Bytes B = Ext(Bits & 1, E, M);
        const double Soft = Ext80ToDouble(B);
        const double Hard = static_cast<double>(Ext80ToExtended(B));
        ASSERT_EQ(std::bit_cast<quint64>(Soft), std::bit_cast<quint64>(Hard)) << std::hex << E << " " << M;
    }
}

TEST(FilerFloat, RandomPatternsRoundTripBitExact) {
    if constexpr (!X87) GTEST_SKIP() << "long double is not the 80-bit format here";
    std::mt19937_64 Rng(7);
    QByteArray Expected;
    std::vector<Extended> Values;
    for (int I = 0; I < 20000; ++I) {
        const quint16 E = static_cast<quint16>(I % 50 == 0 ? 0 : Rng() % 0x7FFF);
        quint64 M = Rng();
        M = E == 0 ? (M & 0x7FFFFFFFFFFFFFFFULL) : (M | 0x8000000000000000ULL);
        const TExt80Bytes B = Ext(Rng() & 1, E, M);
        Values.push_back(Ext80ToExtended(B));
        Expected.append('\x05').append(reinterpret_cast<const char*>(B.data()), 10);
    }
    const QByteArray Data = Written([&](TWriter& W) {
        for (Extended V : Values)
            W.WriteFloat(V);
    });
    ASSERT_EQ(Data, Expected);
    TSource S(Data);
    TReader R(&S.Buf, 100); // odd buffer size: values straddle refills
    for (Extended V : Values)
        ASSERT_EQ(ExtBytes(R.ReadFloat()), ExtBytes(V));
}

// Random values of every kind written in one stream and read back exactly.
TEST(FilerRoundTrip, MixedRandomValues) {
    struct TItem {
        int Kind;
        qint64 Int;
        double Dbl;
        QString Str;
    };
    std::mt19937_64 Rng(99);
    std::vector<TItem> Items;
    for (int I = 0; I < 5000; ++I) {
        TItem It{static_cast<int>(Rng() % 6), 0, 0, {}};
        if (It.Kind == 0) It.Int = static_cast<int>(Rng()) >> (Rng() % 32);
        if (It.Kind == 1) It.Int = static_cast<qint64>(Rng()) >> (Rng() % 64);
        if (It.Kind == 2) It.Dbl = std::bit_cast<double>(Rng());
        if (It.Kind == 3) // any UTF-16 text, surrogate pairs included
            for (int K = static_cast<int>(Rng() % 300); K > 0; --K) {
                const char32_t Cp = Rng() % 4 == 0 ? static_cast<char32_t>(0x80 + Rng() % 0x10FF80)
                                                   : static_cast<char32_t>(0x20 + Rng() % 0x5F);
                if (Cp < 0xD800 || Cp > 0xDFFF) It.Str.append(QString::fromUcs4(&Cp, 1));
            }
        if (It.Kind == 4) It.Int = Rng() & 1;
        if (It.Kind == 5) It.Dbl = static_cast<double>(Rng() % 2000000) / 7.0;
        Items.push_back(It);
    }
    const QByteArray Data = Written([&](TWriter& W) {
        for (const TItem& It : Items) {
            if (It.Kind == 0) W.WriteInteger(static_cast<int>(It.Int));
            if (It.Kind == 1) W.WriteInteger(It.Int);
            if (It.Kind == 2) W.WriteDouble(It.Dbl);
            if (It.Kind == 3) W.WriteString(It.Str);
            if (It.Kind == 4) W.WriteBoolean(It.Int != 0);
            if (It.Kind == 5) W.WriteFloat(It.Dbl);
        }
    });
    TSource S(Data);
    TReader R(&S.Buf, 256);
    for (std::size_t I = 0; I < Items.size(); ++I) {
        const TItem& It = Items[I];
        SCOPED_TRACE(testing::Message() << "item " << I << " kind " << It.Kind);
        TItem Got{It.Kind, 0, 0, {}};
        if (It.Kind == 0) Got.Int = R.ReadInteger();
        if (It.Kind == 1) Got.Int = R.ReadInt64();
        if (It.Kind == 2 || It.Kind == 5) Got.Dbl = R.ReadDouble();
        if (It.Kind == 3) Got.Str = R.ReadString();
        if (It.Kind == 4) Got.Int = R.ReadBoolean();
        EXPECT_EQ(Got.Int, It.Int);
        EXPECT_EQ(std::bit_cast<quint64>(Got.Dbl), std::bit_cast<quint64>(It.Dbl));
        EXPECT_EQ(Got.Str, It.Str);
    }
    EXPECT_TRUE(R.AtEnd());
}

// --- Lengths, nesting, buffering ------------------------------------------------------------------

TEST(FilerRead, LyingLengthsAreErrorsNotAllocations) {
    for (const char* C : {"0cffffff7f61", "14ffffff7f", "12ffffff3f0000", "0affffff7f00", "0c00000080",
                          "12000000c0", "0a00000080"}) {
        for (bool Sequential : {false, true}) {
            TSource S(Hex(C));
            TPipe P(Hex(C));
            TReader R(Sequential ? static_cast<QIODevice*>(&P) : &S.Buf);
            const bool Binary = R.NextValue() == vaBinary;
            ExpectReadError([&] { Binary ? void(R.ReadBinary()) : void(R.ReadString()); },
                            "Stream read error", std::string(C) + (Sequential ? " (pipe)" : ""));
        }
        TSource S2(Hex(C));
        TReader R2(&S2.Buf);
        EXPECT_THROW_MSG(R2.SkipValue(), EReadError, "Stream read error");
    }
}

TEST(FilerRead, DeepNestingAndCollections) {
    const int Depth = 1000000;
    {
        TSource S(QByteArray(Depth, '\x01') + QByteArray(Depth, '\x00') + "\x09");
        TReader R(&S.Buf);
        R.SkipValue();
        EXPECT_EQ(R.Position(), 2 * Depth);
        EXPECT_TRUE(R.ReadBoolean());
    }
    {
        TSource S(QByteArray(Depth, '\x01'));
        TReader R(&S.Buf);
        EXPECT_THROW_MSG(R.SkipValue(), EReadError, "Stream read error");
    }
    // A collection: items with and without an index, each a list of named properties.
    TSource S(Hex("0e 020501 0141 0201 0142 01 0603616263 00 00 01 00 00 09"));
    TReader R(&S.Buf);
    R.SkipValue();
    EXPECT_TRUE(R.ReadBoolean());
    EXPECT_TRUE(R.AtEnd());
}

TEST(FilerBuffering, ReaderGivesBackItsReadAhead) {
    const QByteArray Data = Written([](TWriter& W) {
        W.WriteInteger(300);
        W.WriteString("abc");
        W.WriteBoolean(true);
    });
    TSource S(Data);
    {
        TReader R(&S.Buf);
        EXPECT_EQ(R.ReadInteger(), 300);
        EXPECT_EQ(R.Position(), 3);
    }
    EXPECT_EQ(S.Buf.pos(), 3);
    {
        TReader R(&S.Buf);
        EXPECT_EQ(R.Position(), 3);
        EXPECT_EQ(R.ReadString(), "abc");
        R.FlushBuffer();
        EXPECT_EQ(S.Buf.pos(), 8);
        EXPECT_TRUE(R.ReadBoolean());
    }

    // A pipe cannot seek: the reader takes only what it needs, and a peeked tag goes back.
    TPipe P(Data);
    {
        TReader R(&P);
        EXPECT_EQ(R.ReadInteger(), 300);
        EXPECT_EQ(R.NextValue(), vaString);
    }
    TReader R(&P);
    EXPECT_EQ(R.ReadString(), "abc");
    EXPECT_TRUE(R.ReadBoolean());
    EXPECT_TRUE(R.AtEnd());
}

TEST(FilerBuffering, WriterPositionFlushAndErrors) {
    QBuffer Buf;
    Buf.open(QIODevice::WriteOnly);
    TWriter W(&Buf);
    W.WriteSignature();
    W.WriteInteger(1000);
    EXPECT_EQ(W.Position(), 7);
    EXPECT_EQ(Buf.size(), 0); // still buffered
    W.FlushBuffer();
    EXPECT_EQ(Buf.data(), Hex("5450463003e803"));
    const QByteArray Big(100000, 'z');
    W.WriteBinary(Big); // larger than the buffer: goes straight through
    EXPECT_EQ(W.Position(), 7 + 5 + Big.size());

    QBuffer ReadOnly;
    ReadOnly.open(QIODevice::ReadOnly);
    TWriter Bad(&ReadOnly);
    Bad.WriteBoolean(true);
    EXPECT_THROW_MSG(Bad.FlushBuffer(), EWriteError, "Stream write error");
    EXPECT_THROW_MSG(
        Written([](TWriter& W2) { W2.WriteCurrency(std::numeric_limits<Extended>::quiet_NaN()); }),
        EWriteError, "Currency value out of range");
    EXPECT_THROW_MSG(Written([](TWriter& W2) { W2.WriteIdent(QString(256, 'a')); }), EWriteError,
                     "Identifier longer than 255 bytes");
}

TEST(FilerDate, DaysSince18991230) {
    const struct {
        double Days;
        QDate Date;
        QTime Time;
        bool Canonical; // converts back to Days
    } Cases[] = {
        {0.0, {1899, 12, 30}, {0, 0}, true},     {1.5, {1899, 12, 31}, {12, 0}, true},
        {-1.25, {1899, 12, 29}, {6, 0}, true},   {-0.5, {1899, 12, 30}, {12, 0}, false},
        {45000.25, {2023, 3, 15}, {6, 0}, true}, {2.0 - 1e-10, {1900, 1, 1}, {0, 0}, false}, // next midnight
    };
    for (const auto& C : Cases) {
        const QDateTime Dt = FileDateToDateTime(C.Days);
        EXPECT_EQ(Dt.date(), C.Date) << C.Days;
        EXPECT_EQ(Dt.time(), C.Time) << C.Days;
        if (C.Canonical) {
            EXPECT_EQ(DateTimeToFileDate(QDateTime(C.Date, C.Time)), C.Days);
        }
    }
    EXPECT_FALSE(FileDateToDateTime(std::numeric_limits<double>::quiet_NaN()).isValid());
    EXPECT_FALSE(FileDateToDateTime(1e300).isValid());
    const QDateTime Stamp(QDate(2024, 2, 29), QTime(13, 45, 30, 250));
    TSource S(Written([&](TWriter& W) { W.WriteDate(Stamp); }));
    TReader R(&S.Buf);
    EXPECT_EQ(R.ReadDateTime(), Stamp);
}

// --- Hostile input ------------------------------------------------------------------------------

TEST(FilerHostile, RandomAndMutatedStreamsOnlyRaiseReadErrors) {
    std::mt19937 Rng(12345);
    // Random bytes biased towards valid tags, and mutations of a valid stream.
    const QByteArray Valid = Written([](TWriter& W) {
        W.WriteSignature();
        W.WriteListBegin();
        W.WriteString("TNumFld");
        W.WriteFloat(3.25L);
        W.WriteString(QString::fromUtf8("Größe"));
        W.WriteSet({"a"});
        W.WriteBinary("xyz");
        W.WriteInteger(qint64(1) << 40);
        W.WriteListEnd();
    });
    for (int I = 0; I < 3000; ++I) {
        QByteArray Data;
        if (I % 2) {
            Data.resize(static_cast<qsizetype>(Rng() % 200));
            for (char& C : Data)
                C = static_cast<char>(Rng() % 3 ? Rng() % 0x17 : Rng());
        } else {
            Data = Valid.left(static_cast<qsizetype>(Rng() % static_cast<quint64>(Valid.size() + 1)));
            for (int K = 0; K < 3 && !Data.isEmpty(); ++K)
                Data[static_cast<qsizetype>(Rng() % static_cast<quint64>(Data.size()))] =
                    static_cast<char>(Rng());
        }
        ASSERT_NO_THROW(ReadEverything(Data)) << Data.toHex().constData();
    }
}

#include <qxnum/streamcode.h>

#include "dialogrecorder.h"

#include <QBuffer>
#include <gtest/gtest.h>

#include <functional>

using namespace qxnum;

namespace {

struct TSource {
    explicit TSource(const QByteArray& Data) {
        Buf.setData(Data);
        Buf.open(QIODevice::ReadOnly);
    }
    QBuffer Buf;
};

QByteArray Written(const std::function<void(TWriter&)>& Write) {
    QBuffer Out;
    Out.open(QIODevice::WriteOnly);
    {
        TWriter W(&Out);
        Write(W);
    }
    return Out.data();
}

} // namespace

TEST(StreamCode, EqualityLooksAtEveryByte) {
    EXPECT_TRUE(StreamCodesEqual(FieldFormEndCode, TStreamCode{0x2C, 0x2C, 0x2C, 0x2C}));
    EXPECT_TRUE(StreamCodesEqual(NullStreamCode, TStreamCode{}));
    for (std::size_t I = 0; I < 4; ++I) {
        TStreamCode C = FieldFormEndCode;
        C[I] = 0x2D;
        EXPECT_FALSE(StreamCodesEqual(FieldFormEndCode, C)) << I;
        EXPECT_FALSE(StreamCodesEqual(C, FieldFormEndCode)) << I;
    }
}

TEST(StreamCode, WrittenAndReadRawWithoutTag) {
    const QByteArray Data = Written([](TWriter& W) {
        W.WriteBoolean(true);
        WriteStreamCode(W, FieldFormEndCode);
        WriteStreamCode(W, TStreamCode{1, 2, 3, 0xF4});
    });
    EXPECT_EQ(Data, QByteArray::fromHex("092c2c2c2c010203f4"));

    TSource S(Data + "\x2c\x2c");
    TReader R(&S.Buf);
    EXPECT_TRUE(R.ReadBoolean());
    EXPECT_TRUE(ReadStreamCode(R, FieldFormEndCode));
    EXPECT_FALSE(ReadStreamCode(R, FieldFormEndCode)); // consumed all the same
    EXPECT_EQ(R.Position(), 9);
    EXPECT_THROW(ReadStreamCode(R, FieldFormEndCode), EReadError); // only two bytes left
}

TEST(StreamCode, SkipUntilCode) {
    const QByteArray End(4, ',');
    const QByteArray F4(1, '\xF4');
    const TStreamCode Abcd = {'A', 'B', 'C', 'D'};
    const struct {
        const char* Name;
        QByteArray Data;
        TStreamCode Code;
        bool Found;
        qint64 StopsAt; // bytes consumed
    } Cases[] = {
        {"after a partial match", QByteArray::fromHex("2c2c582c2c2c2c99"), FieldFormEndCode, true, 7},
        {"five in a row", QByteArray(5, ','), FieldFormEndCode, true, 4},
        {"breaking byte not retried", "AABCDABCD", Abcd, true, 9},
        {"1000 F4 are tolerated", F4.repeated(1000) + End, FieldFormEndCode, true, 1004},
        {"1001 F4 give up", F4.repeated(1001) + End, FieldFormEndCode, false, 1001},
        {"F4 of the code itself count", F4.repeated(1001) + "ABC", {0xF4, 'A', 'B', 'C'}, false, 1001},
        {"completed by byte 100000", QByteArray(99996, 'q') + End, FieldFormEndCode, true, 100000},
        {"completed by byte 100001", QByteArray(99997, 'q') + End, FieldFormEndCode, false, 100001},
        {"more than 100000 bytes", QByteArray(200000, 'q'), FieldFormEndCode, false, 100001},
        // The accumulator starts empty, so a null code is "found" by the first byte.
        {"null code", QByteArray::fromHex("7700000000"), NullStreamCode, true, 1},
    };
    for (const auto& C : Cases) {
        test::DialogRecorder Dialogs;
        TSource S(C.Data);
        TReader R(&S.Buf);
        EXPECT_EQ(SkipStreamUntilCode(R, C.Code, "FieldForm Test"), C.Found) << C.Name;
        EXPECT_EQ(R.Position(), C.StopsAt) << C.Name;
        EXPECT_EQ(Dialogs.Count(), 0) << C.Name;
    }
}

TEST(StreamCode, SkipReportsTheEndOfTheStream) {
    for (const QByteArray& Data : {QByteArray(), QByteArray::fromHex("2c2c2c"), QByteArray(5000, 'q')}) {
        test::DialogRecorder Dialogs;
        TSource S(Data);
        TReader R(&S.Buf);
        EXPECT_FALSE(SkipStreamUntilCode(R, FieldFormEndCode, "FieldForm Pump"));
        ASSERT_EQ(Dialogs.Count(), 1);
        EXPECT_EQ(Dialogs.Dialogs()[0].Msg, "Error reading Stream code in\r\nFieldForm Pump");
        EXPECT_EQ(Dialogs.Dialogs()[0].DlgType, mtError);
        EXPECT_EQ(Dialogs.Dialogs()[0].Buttons, TMsgDlgButtons(mbOK));
    }
}

// The recovery use: a damaged section is skipped and the reader goes on after the marker.
TEST(StreamCode, ReadingResumesAfterTheMarker) {
    QByteArray Data = Written([](TWriter& W) {
        W.WriteSignature();
        W.WriteListBegin();
        W.WriteString("TNumFld");
        W.WriteFloat(1.5L);
        W.WriteListEnd();
        WriteStreamCode(W, FieldFormEndCode);
        W.WriteString("next");
    });
    Data[6] = '\x77'; // damage the first string's length
    TSource S(Data);
    TReader R(&S.Buf);
    R.ReadSignature();
    R.ReadListBegin();
    EXPECT_THROW(R.ReadString(), EReadError);
    EXPECT_TRUE(SkipStreamUntilCode(R, FieldFormEndCode, "FieldForm X"));
    EXPECT_EQ(R.ReadString(), "next");
}

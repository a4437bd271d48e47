// SkipStreamUntilCode over arbitrary bytes. The first input byte picks the code: even values the
// field form end code, odd values the next four input bytes.
#include <qxnum/dialogs.h>
#include <qxnum/streamcode.h>

#include <QBuffer>

#include <cstdlib>

using namespace qxnum;

namespace {

int GMessages = 0;

void Check(bool Ok) {
    if (!Ok) std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* Data, size_t Size) {
    static const bool Installed = [] {
        // Record instead of showing: the fuzzer has no one to press OK.
        SetMessageDlgHandler([](const QString&, TMsgDlgType, TMsgDlgButtons) {
            ++GMessages;
            return mrOk;
        });
        return true;
    }();
    (void)Installed;
    if (Size == 0) return 0;

    TStreamCode Code = FieldFormEndCode;
    std::size_t Start = 1;
    if ((Data[0] & 1) && Size >= 5) {
        for (std::size_t I = 0; I < 4; ++I)
            Code[I] = Data[1 + I];
        Start = 5;
    }
    QBuffer Buf;
    // The QByteArray overload: the (pointer, length) one takes an int length.
    Buf.setData(
        QByteArray(reinterpret_cast<const char*>(Data + Start), static_cast<qsizetype>(Size - Start)));
    Buf.open(QIODevice::ReadOnly);
    TReader R(&Buf, 16 + (Data[0] >> 2));

    const int MessagesBefore = GMessages;
    const bool Found = SkipStreamUntilCode(R, Code, QStringLiteral("FieldForm Fuzz"));
    const bool Reported = GMessages != MessagesBefore;
    const qint64 Pos = R.Position();
    Check(Pos >= 1 || Reported);
    Check(Pos <= 100001);
    if (Reported) Check(!Found && Pos == Buf.size());
    // Without 00 bytes in the code nothing is matched before it is read: the code ends the skip.
    const bool HasZero = Code[0] == 0 || Code[1] == 0 || Code[2] == 0 || Code[3] == 0;
    if (Found && !HasZero)
        Check(Pos >= 4 &&
              Buf.data().mid(Pos - 4, 4) == QByteArray(reinterpret_cast<const char*>(Code.data()), 4));
    // The reader is still usable after the skip.
    if (!Reported) {
        try {
            R.SkipValue();
        } catch (const EReadError&) {
        }
    }
    return 0;
}

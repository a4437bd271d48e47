#include <qxnum/dialogs.h>
#include <qxnum/streamcode.h>

#include "tr_p.h"

namespace qxnum {

void WriteStreamCode(TWriter& Writer, const TStreamCode& Code) {
    Writer.Write(Code.data(), 4);
}

bool ReadStreamCode(TReader& Reader, const TStreamCode& Code) {
    TStreamCode Buf = NullStreamCode;
    Reader.Read(Buf.data(), 4);
    return StreamCodesEqual(Buf, Code);
}

bool StreamCodesEqual(const TStreamCode& A, const TStreamCode& B) {
    for (std::size_t I = 0; I < A.size(); ++I)
        if (A[I] != B[I]) return false;
    return true;
}

bool SkipStreamUntilCode(TReader& Reader, const TStreamCode& Code, const QString& Context) {
    // Limits that stop a search through a stream that does not hold the code: a long run of F4
    // bytes, or too much data in all.
    constexpr int MaxF4Count = 1000;
    constexpr int MaxTotal = 100000;
    TStreamCode Acc = NullStreamCode;
    std::size_t P = 0;
    int Total = 0;
    int F4Count = 0;
    try {
        do {
            const quint8 B = Reader.ReadByte();
            ++Total;
            if (B == 0xF4) ++F4Count;
            if (B != Code[P]) {
                // The byte that broke a partial match is not tried as a first byte again.
                Acc = NullStreamCode;
                P = 0;
            } else {
                Acc[P++] = B;
            }
        } while (!StreamCodesEqual(Acc, Code) && F4Count <= MaxF4Count && Total <= MaxTotal);
    } catch (const EReadError&) {
        MessageDlg(detail::Tr("qxnum::StreamCode", "Error reading Stream code in\r\n") + Context, mtError,
                   mbOK);
        return false;
    }
    return F4Count <= MaxF4Count && Total <= MaxTotal;
}

} // namespace qxnum

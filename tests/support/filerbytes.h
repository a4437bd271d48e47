// Filer values written by hand from the encoding, so that tests read layouts not produced by our
// own writer: integers as 02 nn, booleans as 08/09, short strings as 06 nn text.
#pragma once

#include <QByteArray>

namespace qxnum::test {

struct Bytes {
    QByteArray B;
    Bytes& Raw(const char* S, int N) {
        B.append(S, N);
        return *this;
    }
    Bytes& Int(int V) {
        B.append('\x02').append(static_cast<char>(V));
        return *this;
    }
    Bytes& Bool(bool V) {
        B.append(V ? '\x09' : '\x08');
        return *this;
    }
    Bytes& Str(const char* S) {
        B.append('\x06').append(static_cast<char>(qstrlen(S))).append(S);
        return *this;
    }
    // 2.5 as an 80-bit float: mantissa A000000000000000, exponent 4000.
    Bytes& Ext2p5() { return Raw("\x05\x00\x00\x00\x00\x00\x00\x00\xA0\x00\x40", 11); }
    Bytes& Signature() { return Raw("TPF0", 4); }
    Bytes& ListBegin() { return Raw("\x01", 1); }
    Bytes& ListEnd() { return Raw("\x00", 1); }
    // FieldFormEndCode.
    Bytes& EndMarker() { return Raw(",,,,", 4); }
};

} // namespace qxnum::test

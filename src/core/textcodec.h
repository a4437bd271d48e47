// Text codecs shared by the filer and the XML layer (not installed).
#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QStringView>

#include <cstddef>

namespace qxnum::detail {

// Offset of the first byte that is not strict UTF-8 (no overlong forms, surrogates or values
// above U+10FFFF), or npos when every byte is.
std::size_t Utf8ErrorOffset(QByteArrayView Bytes);
inline constexpr std::size_t Utf8Valid = static_cast<std::size_t>(-1);

// UTF-8 as text, a leading U+FEFF included: QString::fromUtf8 drops it, but here it is a
// character that was stored.
QString Utf8KeepBom(QByteArrayView Bytes);

// 8-bit code pages: Windows-1250 to 1258 from our own tables, anything else through Qt's named
// decoders when Qt has them.
bool CodePageAvailable(int CodePage);
QString DecodeCodePage(int CodePage, QByteArrayView Bytes);
// False, and Out unspecified, when a character has no byte of its own in the code page.
bool EncodeCodePage(int CodePage, QStringView Text, QByteArray& Out);

} // namespace qxnum::detail

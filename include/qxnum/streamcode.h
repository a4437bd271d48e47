/// \file
/// Stream codes: four raw bytes (no tag) that mark sections of a binary field stream.
#pragma once

#include <qxnum/filer.h>

#include <QString>

#include <array>

namespace qxnum {

using TStreamCode = std::array<quint8, 4>;

/// The empty marker, the starting value of every marker buffer.
inline constexpr TStreamCode NullStreamCode = {0x00, 0x00, 0x00, 0x00};
/// ",,,,": closes the field section of a field form stream.
inline constexpr TStreamCode FieldFormEndCode = {0x2C, 0x2C, 0x2C, 0x2C};

/// Writes the four bytes as they are.
QXNUM_CORE_EXPORT void WriteStreamCode(TWriter& Writer, const TStreamCode& Code);
/// Reads four bytes; true when they are Code. A stream that ends first raises EReadError.
QXNUM_CORE_EXPORT bool ReadStreamCode(TReader& Reader, const TStreamCode& Code);
QXNUM_CORE_EXPORT bool StreamCodesEqual(const TStreamCode& A, const TStreamCode& B);
/// Reads byte by byte until Code has been read, and returns true then. The matching is the classic
/// simple one: a byte that breaks a partial match is not tried again as a first byte (for the code
/// "ABCD", the input "AABCD" does not match at its second "A").
/// Gives up (false, no message) after more than 1000 bytes F4 or more than 100000 bytes in all.
/// The end of the stream shows `"Error reading Stream code in\r\n"` + Context (error, OK) and
/// returns false. Note that the accumulator starts as NullStreamCode, so with Code = NullStreamCode
/// the search ends after the first byte read.
QXNUM_CORE_EXPORT bool SkipStreamUntilCode(TReader& Reader, const TStreamCode& Code, const QString& Context);

} // namespace qxnum

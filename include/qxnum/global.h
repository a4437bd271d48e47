/// \file
/// Basic types shared by the whole library: the extended float, the exception family and the
/// enumeration-name helpers used for the names written into files.
#pragma once

#include <qxnum/core_export.h>

#include <QByteArray>
#include <QString>

#include <array>
#include <exception>
#include <string_view>

namespace qxnum {

/// 80-bit extended precision on x86-64, the storage type of every value in the library.
using Extended = long double;

/// Base of every exception the library raises; the message is kept as Unicode text.
class QXNUM_CORE_EXPORT Exception : public std::exception {
public:
    explicit Exception(const QString& Message) : FMessage(Message), FUtf8(Message.toUtf8()) {}
    const QString& Message() const noexcept { return FMessage; }
    const char* what() const noexcept override { return FUtf8.constData(); }

private:
    QString FMessage;
    QByteArray FUtf8;
};

/// Text that is not a number, a boolean or a name where one is required.
class QXNUM_CORE_EXPORT EConvertError : public Exception {
public:
    using Exception::Exception;
};

/// A computation without a result: coincident points, a zero divisor.
class QXNUM_CORE_EXPORT EMathError : public Exception {
public:
    using Exception::Exception;
};

/// Enumeration names as written to files. Each enumeration that appears in files specialises
/// TEnumNames with the declared names in ordinal order.
template <typename E> struct TEnumNames;

#define QXNUM_ENUM_NAMES(EnumType, ...)                                                                      \
    template <> struct TEnumNames<EnumType> { static constexpr std::string_view Names[] = {__VA_ARGS__}; };

/// The declared name of V, or an empty string for an ordinal outside the enumeration.
template <typename E> QString GetEnumName(E V) {
    const auto& Names = TEnumNames<E>::Names;
    const auto Index = static_cast<std::size_t>(V);
    if (Index >= std::size(Names)) return {};
    return QString::fromLatin1(Names[Index].data(), static_cast<qsizetype>(Names[Index].size()));
}

/// The ordinal of a declared name, matched case-insensitively; -1 for an unknown name.
template <typename E> int GetEnumValue(const QString& Name) {
    const auto& Names = TEnumNames<E>::Names;
    for (std::size_t I = 0; I < std::size(Names); ++I) {
        if (Name.compare(QLatin1String(Names[I].data(), static_cast<qsizetype>(Names[I].size())),
                         Qt::CaseInsensitive) == 0)
            return static_cast<int>(I);
    }
    return -1;
}

} // namespace qxnum

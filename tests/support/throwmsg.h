// EXPECT_THROW_MSG(Statement, Type, Substring): Statement throws Type (or a class derived from it)
// and the message contains Substring. Another exception, or none, fails the test.
#pragma once

#include <QString>
#include <gtest/gtest.h>

namespace qxnum::test {

// The library's exceptions keep their text as Unicode; anything else has what().
template <typename E> QString ExceptionText(const E& Ex) {
    if constexpr (requires { Ex.Message(); })
        return Ex.Message();
    else
        return QString::fromUtf8(Ex.what());
}

// The expected text as a QString, whether given as one or as a string literal (a functional cast
// would be a useless cast for the former).
inline QString ExpectedText(const QString& S) {
    return S;
}

} // namespace qxnum::test

#define EXPECT_THROW_MSG(Statement, Type, Substring)                                                         \
    do {                                                                                                     \
        try {                                                                                                \
            Statement;                                                                                       \
            ADD_FAILURE() << "no exception from " #Statement;                                                \
        } catch (const Type& ThrowMsgE_) {                                                                   \
            const QString ThrowMsgText_ = ::qxnum::test::ExceptionText(ThrowMsgE_);                          \
            EXPECT_TRUE(ThrowMsgText_.contains(::qxnum::test::ExpectedText(Substring)))                      \
                << #Statement " threw \"" << ThrowMsgText_.toStdString() << "\", expected \""                \
                << ::qxnum::test::ExpectedText(Substring).toStdString() << '"';                              \
        } catch (...) {                                                                                      \
            ADD_FAILURE() << #Statement " threw another exception than " #Type;                              \
        }                                                                                                    \
    } while (false)

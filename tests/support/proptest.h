// Sets a property through the meta-object, as Designer and QML do, after checking that it is
// published and writable; with ReadsBack the property must then read as the value set.
#pragma once

#include <QMetaProperty>
#include <QObject>
#include <QVariant>
#include <gtest/gtest.h>

namespace qxnum::test {

inline void SetPublished(QObject& O, const char* Name, const QVariant& Value, bool ReadsBack = true) {
    const QMetaObject* M = O.metaObject();
    const int Index = M->indexOfProperty(Name);
    ASSERT_GE(Index, 0) << Name << " is not published";
    EXPECT_TRUE(M->property(Index).isWritable()) << Name;
    EXPECT_TRUE(O.setProperty(Name, Value)) << Name;
    if (ReadsBack) {
        EXPECT_EQ(O.property(Name), Value) << Name;
    }
}

} // namespace qxnum::test

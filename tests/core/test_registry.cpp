#include <qxnum/registry.h>

#include <QColor>
#include <QObject>
#include <gtest/gtest.h>

#include <memory>

using namespace qxnum;

namespace {

// The smallest field: enough to tell the registry and Supports apart from plain objects.
class TTestField : public QObject, public INumFld {
    Q_OBJECT
    Q_INTERFACES(qxnum::INumFld)
public:
    explicit TTestField(QObject* Owner = nullptr) : QObject(Owner) {}
    bool HasChanged() override { return false; }
    void SetCopyValue() override {}
    void RestoreCopyValue() override {}
    void OkChanges() override {}
    QColor FontColor() const override { return {}; }
    void SetFontColor(const QColor&) override {}
    void ReadfromStream(TReader&) override {}
    void SkipfromStream(TReader&) override {}
    void WritetoStream(TWriter&) override {}
    void WriteToXML(TXmlNode) override {}
    void ReadFromXML(TXmlNode) override {}
    bool GetNoSaveWrite() const override { return false; }
    void SetNoSaveWrite(bool) override {}
    QString GetIDstring() const override { return objectName(); }
    int GetTag() const override { return 0; }
    int GetTagXML() const override { return 0; }
    bool GetReadOnly() const override { return false; }
    void AssignXmlWriteValueChanged(TXmlNodeEvent) override {}
    bool XmlValueChanged(TXmlNode) override { return false; }
    QVariant GetVariantValue() override { return {}; }
    QString GetValueText() override { return {}; }
    QString GetXMLValueText(TXmlNode) override { return {}; }
    void SetFormCreateVal() override {}
    void ResetToFormCreateVal() override {}
};

class TTestFrame : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;
};

// Registered before main runs, the way library classes register themselves.
const TClassRegistrar Reg("TTestField", [](QObject* Owner) -> QObject* { return new TTestField(Owner); });

template <typename T = QObject> T* Make(QObject* Parent, const char* Name) {
    auto* O = new T(Parent);
    O->setObjectName(QLatin1String(Name));
    return O;
}

QStringList NamesOf(const QList<QObject*>& List) {
    QStringList Names;
    for (const QObject* O : List)
        Names.append(O->objectName());
    return Names;
}

} // namespace

TEST(Registry, CreatesReplacesAndUnregistersClassesByName) {
    QObject Owner;
    QObject* Made = CreateComponent("TTestField", &Owner);
    ASSERT_NE(dynamic_cast<TTestField*>(Made), nullptr);
    EXPECT_EQ(Made->parent(), &Owner);
    // Names are looked up ignoring case, as the class lists of existing programs were.
    std::unique_ptr<QObject> Lower(CreateComponent("ttestfield", nullptr));
    ASSERT_NE(Lower, nullptr);
    EXPECT_EQ(Lower->parent(), nullptr);
    EXPECT_TRUE(RegisteredClasses().contains(QStringLiteral("TTestField")));
    EXPECT_EQ(CreateComponent("TNoSuchClass", &Owner), nullptr);
    EXPECT_FALSE(GetClass("TNoSuchClass"));
    EXPECT_EQ(CreateComponent("", &Owner), nullptr);
    EXPECT_EQ(Owner.children().size(), 1);

    // A later registration under the same name in any case replaces the earlier one.
    int Calls = 0;
    const auto Counting = [&Calls](int Step) {
        return [&Calls, Step](QObject* Parent) -> QObject* {
            Calls += Step;
            return new QObject(Parent);
        };
    };
    RegisterClass("TReplaced", Counting(1));
    RegisterClass("treplaced", Counting(10));
    std::unique_ptr<QObject> O(CreateComponent("TReplaced", nullptr));
    EXPECT_EQ(Calls, 10);
    EXPECT_TRUE(UnRegisterClass("TREPLACED"));
    EXPECT_FALSE(UnRegisterClass("TReplaced"));
    EXPECT_EQ(CreateComponent("TReplaced", nullptr), nullptr);
}

TEST(Registry, SupportsFindsTheFieldContractOnly) {
    TTestField Field;
    QObject Plain;
    EXPECT_EQ(Supports(&Field), static_cast<INumFld*>(&Field));
    EXPECT_EQ(qobject_cast<INumFld*>(&Field), static_cast<INumFld*>(&Field));
    EXPECT_EQ(Supports(&Plain), nullptr);
    EXPECT_EQ(Supports(nullptr), nullptr);
    INumFld* Out = &Field;
    EXPECT_FALSE(Supports(&Plain, Out));
    EXPECT_EQ(Out, nullptr);
    EXPECT_TRUE(Supports(&Field, Out));
    EXPECT_EQ(Out, static_cast<INumFld*>(&Field));
}

TEST(Registry, ComponentsInDepthFirstOrderStoppingAtFramesAndFields) {
    RegisterFrameClass("TTestFrame");
    QObject Form;
    QObject* A = Make(&Form, "a");
    Make(A, "a1");
    Make(Make(A, "a2"), "a2x");
    auto* Frame = Make<TTestFrame>(&Form, "frame");
    Make(Make(Frame, "f1"), "f1x");
    Make(Frame, "f2");
    Make(Make<TTestField>(&Form, "field"), "inner");
    Make(&Form, "b");

    EXPECT_EQ(NamesOf(ComponentsOf(&Form)), QStringList({"a", "a1", "a2", "a2x", "frame", "field", "b"}));
    EXPECT_EQ(NamesOf(ComponentsOf(Frame)), QStringList({"f1", "f1x", "f2"}));
    EXPECT_TRUE(ComponentsOf(nullptr).isEmpty());
    EXPECT_TRUE(IsFieldFrame(Frame));
    EXPECT_FALSE(IsFieldFrame(A));
    EXPECT_FALSE(IsFieldFrame(nullptr));

    EXPECT_EQ(FindComponent(&Form, "a2x")->objectName(), QStringLiteral("a2x"));
    EXPECT_EQ(FindComponent(&Form, "f1"), nullptr);
    EXPECT_EQ(FindComponent(&Form, "inner"), nullptr);
    EXPECT_EQ(FindComponent(Frame, "F2")->objectName(), QStringLiteral("f2"));
    EXPECT_EQ(FindComponent(&Form, ""), nullptr);
    // An exact match wins over an earlier one that differs in case.
    Make(A, "B");
    EXPECT_EQ(FindComponent(&Form, "b")->objectName(), QStringLiteral("b"));
    EXPECT_EQ(FindComponent(&Form, "B")->objectName(), QStringLiteral("B"));
}

#include "test_registry.moc"

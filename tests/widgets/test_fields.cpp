// The eight control fields and the numeric field against the common contract: round trips through both media,
// the copy / form-create bookkeeping, the XML write events, registration, and hostile input.
#include <qxnum/registry.h>
#include <qxnum/widgets/fields.h>
#include <qxnum/widgets/numfld.h>

#include <QBuffer>
#include <QMetaProperty>
#include <QRandomGenerator>
#include <gtest/gtest.h>

#include "fieldtest.h"
#include "proptest.h"
#include "throwmsg.h"

using namespace qxnum;
using qxnum::test::ReadRecord;
using qxnum::test::WriteRecord;

namespace {

// --- The table of field kinds -------------------------------------------------------------------

const QString Unicode = QStringLiteral("°C m² m³ \U0001F600 \U0001D11E Größe");

using TSetter = std::function<void(QWidget*)>;
using TGetter = std::function<QString(QWidget*)>;

template <typename T> T* As(QWidget* W) {
    T* F = qobject_cast<T*>(W);
    EXPECT_NE(F, nullptr);
    return F;
}

QString Str(const QString& S) {
    return S;
}
QString Str(int I) {
    return QString::number(I);
}
QString Str(const QDateTime& D) {
    return TDateTimePickerFld::XmlText(D);
}
QString Str(const QList<TCheckBoxState>& L) {
    QStringList S;
    for (const TCheckBoxState St : L)
        S.append(GetEnumName(St));
    return S.join(QLatin1Char(','));
}

// One setter per value, applied through Set.
template <typename T, typename V>
std::vector<TSetter> Values(void (T::*Set)(V), const std::vector<std::decay_t<V>>& Vals) {
    std::vector<TSetter> R;
    for (const auto& X : Vals)
        R.push_back([Set, X](QWidget* W) { (As<T>(W)->*Set)(X); });
    return R;
}

template <typename T, typename R> TGetter Show(R (T::*Get)() const) {
    return [Get](QWidget* W) { return Str((As<T>(W)->*Get)()); };
}

template <typename T> TSetter Items(const QStringList& L) {
    return [L](QWidget* W) { As<T>(W)->SetItems(L); };
}

TSetter ComboText(int Index, const QString& Text) {
    return [=](QWidget* W) {
        As<TComboBoxFld>(W)->SetItemIndex(Index);
        if (Index < 0) As<TComboBoxFld>(W)->SetText(Text);
    };
}

std::vector<std::pair<QString, QString>> Bad(const QString& Element, const QStringList& Texts) {
    std::vector<std::pair<QString, QString>> R;
    for (const QString& T : Texts)
        R.emplace_back(Element, T);
    return R;
}

struct TFieldKind {
    const char* ClassName;
    bool EditLike;                // GetReadOnly is ReadOnly, not !Enabled
    std::vector<TSetter> Samples; // distinct values; the last is the empty one
    TGetter Snapshot;             // the whole value as text
    TSetter Prepare = {};         // items and the like
    // Value elements with text that is not of their type (empty: the field takes any text).
    std::vector<std::pair<QString, QString>> BadXml = {};
    TGetter CopyKey = {}; // what the copy value compares (empty: Snapshot)
};

const std::vector<TFieldKind>& Kinds() {
    const TSetter ButtonText = [](QWidget* W) { As<QAbstractButton>(W)->setText(Unicode); };
    const auto Date = [](int Y, int M, int D, int H, int Mi, int S, int Ms) {
        return QDateTime(QDate(Y, M, D), QTime(H, Mi, S, Ms));
    };
    static const std::vector<TFieldKind> K = {
        {"TStringFld", true, Values(&TStringFld::SetText, {"Pressure 5 bar", Unicode, ""}),
         Show(&TStringFld::Text)},
        {"TMemoFld", true,
         Values(&TMemoFld::SetText, {"first line\nsecond\n\nfourth", Unicode + "\n10\u00a0kg\n", ""}),
         Show(&TMemoFld::Text)},
        {"TCheckFld", false, Values(&TCheckFld::SetChecked, {true, false}), Show(&TCheckFld::Checked),
         ButtonText, Bad("Value", {"abc", "", "on"})},
        {"TRadioBtnFld", false, Values(&TRadioBtnFld::SetChecked, {true, false}),
         Show(&TRadioBtnFld::Checked), ButtonText, Bad("Value", {"yes", "  "})},
        {"TRadioGrpFld", false, Values(&TRadioGrpFld::SetItemIndex, {0, 1, -1}),
         Show(&TRadioGrpFld::ItemIndex), Items<TRadioGrpFld>({"bar", Unicode, "psi"}),
         Bad("ItemIndex", {"abc", "1.5", "99999999999", ""})},
        {"TCheckListBoxFld", false,
         Values(&TCheckListBoxFld::SetStates, {{cbChecked, cbGrayed, cbUnchecked},
                                               {cbUnchecked, cbChecked, cbGrayed},
                                               {cbUnchecked, cbUnchecked, cbUnchecked}}),
         Show(&TCheckListBoxFld::States), Items<TCheckListBoxFld>({"Alpha", Unicode, "\U0001F600"})},
        {"TComboBoxFld", false,
         std::vector<TSetter>(
             {ComboText(1, {}), ComboText(2, {}), ComboText(-1, "free \U0001D11E text"), ComboText(-1, "")}),
         [](QWidget* W) {
             return Str(As<TComboBoxFld>(W)->ItemIndex()) + QLatin1Char('|') + As<TComboBoxFld>(W)->Text();
         },
         Items<TComboBoxFld>({"one", "two", Unicode}), Bad("ItemIndex", {"two", "0x1"}),
         Show(&TComboBoxFld::ItemIndex)},
        {"TDateTimePickerFld", false,
         Values(&TDateTimePickerFld::SetDateTime,
                {Date(2024, 2, 29, 13, 45, 12, 345), Date(100, 1, 1, 0, 0, 0, 1),
                 Date(9999, 12, 31, 23, 59, 59, 999), Date(1899, 12, 30, 0, 0, 0, 0)}),
         Show(&TDateTimePickerFld::DateTime), nullptr,
         Bad("Value", {"yesterday", "2024-13-01", "2024-02-30T10:00:00", "0099-12-31T23:59:59", "12345"})},
        // The numeric field without range checks, so that every value is taken; any text is its value.
        {"TNumFld", true, Values(&TNumFld::SetValue, {-0.75L, 1e300L, 2.5L}), Show(&TNumFld::text),
         [](QWidget* W) { As<TNumFld>(W)->SetValidate(false); }},
    };
    return K;
}

// --- Helpers ------------------------------------------------------------------------------------

// Assign is not virtual: call it through the concrete class of Dst.
template <typename... T> void AssignAs(QWidget* Dst, QObject* Src) {
    (void)((qobject_cast<T*>(Dst) ? (qobject_cast<T*>(Dst)->Assign(Src), true) : false) || ...);
}

void CallAssign(QWidget* Dst, QObject* Src) {
    AssignAs<TStringFld, TMemoFld, TCheckFld, TRadioBtnFld, TRadioGrpFld, TCheckListBoxFld, TComboBoxFld,
             TDateTimePickerFld, TNumFld>(Dst, Src);
}

class FieldTest : public ::testing::Test {
protected:
    // Every field sits in a panel of its own, so that radio buttons do not exclude each other.
    QWidget* Make(const TFieldKind& K) {
        QObject* O = CreateComponent(QString::fromLatin1(K.ClassName), new QWidget(&Window));
        EXPECT_NE(O, nullptr) << K.ClassName;
        auto* W = qobject_cast<QWidget*>(O);
        W->setObjectName(QStringLiteral("Fld%1").arg(++Count));
        if (K.Prepare) K.Prepare(W);
        return W;
    }
    static TFieldBase* Base(QWidget* W) { return dynamic_cast<TFieldBase*>(W); }
    static QString CopyKey(const TFieldKind& K, QWidget* W) {
        return K.CopyKey ? K.CopyKey(W) : K.Snapshot(W);
    }

    QWidget Window;
    int Count = 0;
};

struct TCase {
    std::size_t Kind;
    std::size_t Sample;
};

std::vector<TCase> AllSamples() {
    std::vector<TCase> V;
    for (std::size_t K = 0; K < Kinds().size(); ++K)
        for (std::size_t S = 0; S < Kinds()[K].Samples.size(); ++S)
            V.push_back({K, S});
    return V;
}

// --- Round trips, one value of one class per case -----------------------------------------------

class FieldRoundTrip : public FieldTest, public ::testing::WithParamInterface<TCase> {
protected:
    const TFieldKind& K() const { return Kinds()[GetParam().Kind]; }
    // A source field holding the sample, hidden and disabled, and a target holding another value.
    void MakePair(QWidget*& Src, QWidget*& Dst) {
        const auto& Samples = K().Samples;
        const std::size_t S = GetParam().Sample;
        Src = Make(K());
        Samples[S](Src);
        Base(Src)->SetFieldVisible(false);
        Base(Src)->SetFieldEnabled(false);
        Dst = Make(K());
        Samples[(S + 1) % Samples.size()](Dst);
        ASSERT_NE(K().Snapshot(Src), K().Snapshot(Dst)) << "samples must differ";
    }
};

TEST_P(FieldRoundTrip, StreamKeepsValueAndGatesVisibleEnabled) {
    for (const bool Gate : {false, true}) {
        SCOPED_TRACE(Gate ? "StreamReadVisibleandEnabled" : "plain");
        QWidget *Src = nullptr, *Dst = nullptr;
        MakePair(Src, Dst);
        const QByteArray Bytes = WriteRecord(*Base(Src));
        Base(Dst)->SetStreamReadVisibleandEnabled(Gate);
        Base(Dst)->ChangedAfterOK = true;
        int AfterRead = 0;
        Base(Dst)->SetOnAfterRead([&](QObject* Sender) {
            EXPECT_EQ(Sender, Dst);
            // The copy value is taken before the event: the field reads as unchanged here.
            EXPECT_FALSE(Base(Dst)->HasChanged());
            ++AfterRead;
        });
        // Skipping consumes the record (and nothing after it) and changes nothing.
        const QString Before = K().Snapshot(Dst);
        EXPECT_EQ(ReadRecord(*Base(Dst), Bytes + QByteArray::fromHex("0603656E64"), true), Bytes.size());
        EXPECT_EQ(K().Snapshot(Dst), Before);
        EXPECT_TRUE(Base(Dst)->FieldVisible());
        EXPECT_EQ(AfterRead, 0);

        EXPECT_EQ(ReadRecord(*Base(Dst), Bytes), Bytes.size());
        EXPECT_EQ(K().Snapshot(Dst), K().Snapshot(Src));
        EXPECT_FALSE(Base(Dst)->HasChanged());
        EXPECT_FALSE(Base(Dst)->ChangedAfterOK);
        EXPECT_EQ(AfterRead, 1);
        // The memo's record has no Visible / Enabled pair.
        const bool Applied = Gate && QLatin1String(K().ClassName) != QLatin1String("TMemoFld");
        EXPECT_EQ(Base(Dst)->FieldVisible(), !Applied);
        EXPECT_EQ(Base(Dst)->FieldEnabled(), !Applied);
    }
}

TEST_P(FieldRoundTrip, XmlKeepsValueAndGatesVisibleEnabled) {
    for (const bool Gate : {false, true}) {
        SCOPED_TRACE(Gate ? "StreamReadVisibleandEnabled" : "plain");
        QWidget *Src = nullptr, *Dst = nullptr;
        MakePair(Src, Dst);
        TXmlDocument Doc;
        TXmlNode Node = Doc.CreateRoot("INumFld");
        Base(Src)->SetStreamReadVisibleandEnabled(Gate);
        Base(Src)->WriteToXML(Node);
        EXPECT_EQ(bool(Node.NodeByName("Visible")), Gate);
        EXPECT_EQ(bool(Node.NodeByName("Enabled")), Gate);
        EXPECT_FALSE(Base(Src)->XmlValueChanged(Node));
        // A reader without the flag ignores the elements even when present; with it, it reads
        // the source's hidden and disabled state.
        if (!Gate) {
            Node.WriteBool("Visible", false);
            Node.WriteBool("Enabled", false);
        }

        // Through text, so that what is kept is what a file keeps.
        TXmlDocument Reloaded;
        Reloaded.LoadFromBytes(Doc.SaveToBytes());
        Base(Dst)->SetStreamReadVisibleandEnabled(Gate);
        Base(Dst)->ChangedAfterOK = true;
        Base(Dst)->SetCopyValue();
        const QString CopyBefore = CopyKey(K(), Dst);
        int AfterRead = 0;
        Base(Dst)->SetOnAfterRead([&](QObject*) { ++AfterRead; });
        Base(Dst)->ReadFromXML(Reloaded.Root());
        EXPECT_EQ(K().Snapshot(Dst), K().Snapshot(Src));
        EXPECT_EQ(Base(Dst)->GetXMLValueText(Reloaded.Root()), Base(Src)->GetValueText());
        EXPECT_FALSE(Base(Dst)->XmlValueChanged(Reloaded.Root()));
        EXPECT_FALSE(Base(Dst)->ChangedAfterOK);
        EXPECT_EQ(AfterRead, 1);
        // The XML read takes no copy value.
        EXPECT_EQ(Base(Dst)->HasChanged(), CopyKey(K(), Dst) != CopyBefore);
        EXPECT_EQ(Base(Dst)->FieldVisible(), !Gate);
        EXPECT_EQ(Base(Dst)->FieldEnabled(), !Gate);
    }
}

TEST_P(FieldRoundTrip, CopyFormCreateAndAssign) {
    QWidget *Src = nullptr, *Other = nullptr;
    MakePair(Src, Other);
    TFieldBase* F = Base(Src);
    const QString Original = K().Snapshot(Src);
    const QString OriginalKey = CopyKey(K(), Src);
    // Another sample that the copy value tells apart.
    std::size_t Next = GetParam().Sample;
    do {
        Next = (Next + 1) % K().Samples.size();
        K().Samples[Next](Other);
    } while (CopyKey(K(), Other) == OriginalKey);
    F->SetCopyValue();
    F->SetFormCreateVal();
    EXPECT_FALSE(F->HasChanged());
    F->OkChanges();
    EXPECT_FALSE(F->ChangedAfterOK);

    K().Samples[Next](Src);
    EXPECT_TRUE(F->HasChanged());
    F->OkChanges();
    EXPECT_TRUE(F->ChangedAfterOK);
    F->RestoreCopyValue();
    EXPECT_EQ(CopyKey(K(), Src), OriginalKey);
    EXPECT_FALSE(F->HasChanged());
    F->OkChanges();
    EXPECT_TRUE(F->ChangedAfterOK) << "OkChanges never clears the flag";

    K().Samples[Next](Src);
    F->SetCopyValue();
    F->ResetToFormCreateVal();
    EXPECT_EQ(K().Snapshot(Src), Original);
    EXPECT_TRUE(F->HasChanged());

    K().Samples[Next](Src);
    CallAssign(Other, Src);
    EXPECT_EQ(K().Snapshot(Other), K().Snapshot(Src));
}

INSTANTIATE_TEST_SUITE_P(AllFields, FieldRoundTrip, ::testing::ValuesIn(AllSamples()),
                         [](const ::testing::TestParamInfo<TCase>& I) {
                             return std::string(Kinds()[I.param.Kind].ClassName + 1) + "_" +
                                    std::to_string(I.param.Sample);
                         });

// --- The common contract, once per class ---------------------------------------------------------

class FieldContract : public FieldTest, public ::testing::WithParamInterface<std::size_t> {
protected:
    const TFieldKind& K() const { return Kinds()[GetParam()]; }
    void SetSample(QWidget* W, std::size_t I) { K().Samples[I % K().Samples.size()](W); }
};

TEST_P(FieldContract, RegistrationIdentifierAndFlags) {
    QWidget* W = Make(K());
    TFieldBase* F = Base(W);
    EXPECT_EQ(W->parentWidget()->parentWidget(), &Window);
    EXPECT_EQ(Supports(W), static_cast<INumFld*>(F));
    EXPECT_NE(qobject_cast<INumFld*>(W), nullptr);

    // With an empty CustomIDstring (the properties test sets one).
    EXPECT_EQ(F->GetIDstring(), W->objectName());
    const QColor Red(200, 10, 20);
    F->SetFontColor(Red);
    EXPECT_EQ(F->FontColor(), Red);

    // ReadOnly is the edit's flag for edit-like fields, else "not enabled".
    EXPECT_FALSE(F->GetReadOnly());
    F->SetFieldEnabled(false);
    EXPECT_EQ(F->GetReadOnly(), !K().EditLike);
    F->SetFieldEnabled(true);
    if (auto* E = qobject_cast<QLineEdit*>(W)) E->setReadOnly(true);
    if (auto* E = qobject_cast<QPlainTextEdit*>(W)) E->setReadOnly(true);
    EXPECT_EQ(F->GetReadOnly(), K().EditLike);

    // Visible and Enabled are the control's own flags: the window is never shown, nor enabled here.
    EXPECT_FALSE(W->isVisible());
    EXPECT_TRUE(F->FieldVisible());
    Window.setEnabled(false);
    EXPECT_FALSE(W->isEnabled());
    EXPECT_TRUE(F->FieldEnabled());
    Window.setEnabled(true);
    F->SetFieldVisible(false);
    EXPECT_TRUE(W->isHidden());
    F->SetFieldVisible(true);
    EXPECT_FALSE(W->isHidden());
}

TEST_P(FieldContract, MissingElementsLeaveTheFieldAndCountAsChangedAfterOK) {
    QWidget* W = Make(K());
    TFieldBase* F = Base(W);
    SetSample(W, 0);
    F->SetFieldEnabled(false);
    F->SetStreamReadVisibleandEnabled(true);
    TXmlDocument Doc;
    TXmlNode Node = Doc.CreateRoot("INumFld");
    Node.WriteString("Unrelated", "x");
    EXPECT_FALSE(F->XmlValueChanged(Node));
    EXPECT_EQ(F->GetXMLValueText(Node), QStringLiteral("<no value>"));
    F->ChangedAfterOK = true;
    EXPECT_TRUE(F->XmlValueChanged(Node));

    const QString Before = K().Snapshot(W);
    int AfterRead = 0;
    F->SetOnAfterRead([&](QObject*) { ++AfterRead; });
    F->ReadFromXML(Node);
    EXPECT_EQ(K().Snapshot(W), Before);
    EXPECT_FALSE(F->FieldEnabled());
    EXPECT_FALSE(F->ChangedAfterOK);
    EXPECT_EQ(AfterRead, 1);

    F->WriteToXML(Node);
    EXPECT_FALSE(F->XmlValueChanged(Node));
    SetSample(W, 1);
    EXPECT_TRUE(F->XmlValueChanged(Node));
}

TEST_P(FieldContract, WriteEventsSeeTheNodeBeforeAndAfter) {
    QWidget* W = Make(K());
    TFieldBase* F = Base(W);
    SetSample(W, 0);
    TXmlDocument Doc;
    TXmlNode Node = Doc.CreateRoot("INumFld");
    F->WriteToXML(Node);
    QString Stored = F->GetXMLValueText(Node);
    SetSample(W, 1);
    const QString Current = F->GetValueText();
    ASSERT_NE(Stored, Current);

    std::vector<std::string> Log;
    F->SetOnXmlWriteValueChanged([&](QObject* Sender, TXmlNode N) {
        EXPECT_EQ(Sender, W);
        EXPECT_EQ(N, Node);
        // Still the old content: the new value is written after this event.
        EXPECT_EQ(F->GetXMLValueText(N), Stored);
        EXPECT_TRUE(F->EnforceXMLchanged() || F->XmlValueChanged(N));
        Log.push_back("changed");
    });
    F->SetOnAfterXMLWrite([&](QObject* Sender, TXmlNode N) {
        EXPECT_EQ(Sender, W);
        EXPECT_EQ(F->GetXMLValueText(N), Current);
        EXPECT_FALSE(F->EnforceXMLchanged());
        Stored = Current;
        Log.push_back("after");
    });
    F->WriteToXML(Node);
    EXPECT_EQ(Log, (std::vector<std::string>{"changed", "after"}));

    // Unchanged: no event, unless enforced, and enforcing lasts for exactly one write.
    Log.clear();
    F->WriteToXML(Node);
    F->SetEnforceXMLchanged(true);
    F->WriteToXML(Node);
    F->WriteToXML(Node);
    EXPECT_EQ(Log, (std::vector<std::string>{"after", "changed", "after", "after"}));

    // AssignXmlWriteValueChanged replaces the handler.
    int Other = 0;
    F->AssignXmlWriteValueChanged([&](QObject*, TXmlNode) { ++Other; });
    F->SetEnforceXMLchanged(true);
    F->WriteToXML(Node);
    EXPECT_EQ(Other, 1);
}

TEST_P(FieldContract, AssignFromAnotherClassRaises) {
    const TFieldKind& Foreign = Kinds()[(GetParam() + 1) % Kinds().size()];
    EXPECT_THROW_MSG(CallAssign(Make(K()), Make(Foreign)), EConvertError,
                     QStringLiteral("Cannot assign a %1 to a %2")
                         .arg(QLatin1String(Foreign.ClassName), QLatin1String(K().ClassName)));
}

// --- Qt properties ------------------------------------------------------------------------------

TEST_F(FieldTest, PropertiesGoThroughTheSetters) {
    using TGet = std::function<QVariant(QWidget*)>;
    const auto B = [](QWidget* W) { return Base(W); };
    const struct {
        const char* Class; // nullptr: every field class, the numeric field included
        const char* Name;
        QVariant Value;
        TGet Get;
        QVariant Expected = {}; // when not Value
    } Table[] = {
        // Enumerations are written by name (State, Style): that works only for registered ones.
        {nullptr, "TagXML", 17, [=](QWidget* W) { return QVariant(B(W)->GetTagXML()); }},
        {nullptr, "Tag", -4, [=](QWidget* W) { return QVariant(B(W)->GetTag()); }},
        {nullptr, "CustomIDstring", QStringLiteral("Old"),
         [=](QWidget* W) { return QVariant(B(W)->GetIDstring()); }},
        {nullptr, "EnforceXMLchanged", true, [=](QWidget* W) { return QVariant(B(W)->EnforceXMLchanged()); }},
        {nullptr, "StreamReadVisibleandEnabled", true,
         [=](QWidget* W) { return QVariant(B(W)->StreamReadVisibleandEnabled()); }},
        {nullptr, "NoSaveWrite", true, [=](QWidget* W) { return QVariant(B(W)->GetNoSaveWrite()); }},
        {"TStringFld", "Text", QStringLiteral("abc"),
         [](QWidget* W) { return QVariant(As<TStringFld>(W)->Text()); }},
        {"TMemoFld", "Text", QStringLiteral("a\nb"),
         [](QWidget* W) { return QVariant(As<TMemoFld>(W)->Text()); }},
        {"TMemoFld", "Lines", QStringList{"x", "y"},
         [](QWidget* W) { return QVariant(As<TMemoFld>(W)->Lines()); }},
        {"TCheckFld", "Checked", true, [](QWidget* W) { return QVariant(As<TCheckFld>(W)->Checked()); }},
        {"TCheckFld", "State", QStringLiteral("cbGrayed"),
         [](QWidget* W) { return QVariant(As<TCheckFld>(W)->checkState() == Qt::PartiallyChecked); }, true},
        {"TCheckFld", "AllowGrayed", true,
         [](QWidget* W) { return QVariant(As<TCheckFld>(W)->isTristate()); }},
        {"TRadioBtnFld", "Checked", true,
         [](QWidget* W) { return QVariant(As<TRadioBtnFld>(W)->isChecked()); }},
        {"TRadioGrpFld", "Caption", QStringLiteral("Unit"),
         [](QWidget* W) { return QVariant(As<TRadioGrpFld>(W)->title()); }},
        {"TRadioGrpFld", "Items", QStringList{"a", "b"},
         [](QWidget* W) { return QVariant(As<TRadioGrpFld>(W)->Items()); }},
        {"TRadioGrpFld", "ItemIndex", 1,
         [](QWidget* W) { return QVariant(As<TRadioGrpFld>(W)->Button(1)->isChecked() ? 1 : 0); }},
        {"TRadioGrpFld", "Columns", 2, [](QWidget* W) { return QVariant(As<TRadioGrpFld>(W)->Columns()); }},
        {"TCheckListBoxFld", "Items", QStringList{"p", "q"},
         [](QWidget* W) { return QVariant(As<TCheckListBoxFld>(W)->Items()); }},
        {"TCheckListBoxFld", "AllowGrayed", true,
         [](QWidget* W) {
             return QVariant(bool(As<TCheckListBoxFld>(W)->item(0)->flags() & Qt::ItemIsUserTristate));
         }},
        {"TComboBoxFld", "Style", QStringLiteral("csDropDownList"),
         [](QWidget* W) {
             return QVariant(int(As<TComboBoxFld>(W)->Style()) * 10 + As<TComboBoxFld>(W)->isEditable());
         },
         20},
        {"TComboBoxFld", "Items", QStringList{"u", "v"},
         [](QWidget* W) { return QVariant(As<TComboBoxFld>(W)->Items()); }},
        {"TComboBoxFld", "ItemIndex", 1,
         [](QWidget* W) { return QVariant(As<TComboBoxFld>(W)->currentIndex()); }},
        {"TComboBoxFld", "Text", QStringLiteral("typed"),
         [](QWidget* W) { return QVariant(As<TComboBoxFld>(W)->currentText()); }},
        {"TDateTimePickerFld", "DateTime", QDateTime(QDate(2001, 2, 3), QTime(4, 5, 6, 7)),
         [](QWidget* W) { return QVariant(As<TDateTimePickerFld>(W)->dateTime()); }},
    };
    for (const TFieldKind& K : Kinds()) {
        for (const auto& R : Table) {
            if (R.Class && QLatin1String(R.Class) != QLatin1String(K.ClassName)) continue;
            SCOPED_TRACE(std::string(K.ClassName) + "." + R.Name);
            QWidget* W = Make(K);
            test::SetPublished(*W, R.Name, R.Value, false);
            EXPECT_EQ(R.Get(W), R.Expected.isValid() ? R.Expected : R.Value);
        }
    }
}

// --- Hostile input ------------------------------------------------------------------------------

TEST_P(FieldContract, TruncatedRecordsRaiseAndChangeNothing) {
    QWidget* Src = Make(K());
    SetSample(Src, 0);
    const QByteArray Bytes = WriteRecord(*Base(Src));
    QWidget* Dst = Make(K());
    SetSample(Dst, 1);
    Base(Dst)->SetStreamReadVisibleandEnabled(true);
    Base(Dst)->SetOnAfterRead([](QObject*) { ADD_FAILURE() << "OnAfterRead after a failed read"; });
    const QString Before = K().Snapshot(Dst);
    for (qsizetype N = 0; N < Bytes.size(); ++N) {
        SCOPED_TRACE(N);
        EXPECT_THROW_MSG(ReadRecord(*Base(Dst), Bytes.left(N)), EReadError, "Stream read error");
        EXPECT_THROW_MSG(ReadRecord(*Base(Dst), Bytes.left(N), true), EReadError, "Stream read error");
        EXPECT_EQ(K().Snapshot(Dst), Before);
        EXPECT_TRUE(Base(Dst)->FieldVisible());
        EXPECT_TRUE(Base(Dst)->FieldEnabled());
    }
}

TEST_P(FieldContract, MutatedAndRandomRecordsReadOrRaise) {
    QWidget* Src = Make(K());
    SetSample(Src, 0);
    const QByteArray Bytes = WriteRecord(*Base(Src));
    QWidget* Dst = Make(K());
    for (qsizetype At = 0; At < Bytes.size(); ++At) {
        for (int V = 0; V < 256; V += 3) {
            QByteArray M = Bytes;
            M[At] = static_cast<char>(V);
            SetSample(Dst, 1);
            const QString Before = K().Snapshot(Dst);
            try {
                EXPECT_LE(ReadRecord(*Base(Dst), M), M.size());
                EXPECT_FALSE(Base(Dst)->HasChanged());
            } catch (const EReadError&) {
                EXPECT_EQ(K().Snapshot(Dst), Before) << "byte " << At << " = " << V;
            }
        }
    }
    // Random bytes, mostly small tags so that the readers get past the first value now and then.
    QRandomGenerator Rng(1234 + static_cast<quint32>(GetParam()));
    for (int I = 0; I < 2000; ++I) {
        QByteArray R(static_cast<qsizetype>(Rng.bounded(40)), Qt::Uninitialized);
        for (char& C : R)
            C = static_cast<char>(Rng.bounded(4) ? Rng.bounded(0x16) : Rng.bounded(256));
        for (const bool Skip : {false, true}) {
            try {
                ReadRecord(*Base(Dst), R, Skip);
            } catch (const EReadError&) {
            }
        }
    }
}

TEST_P(FieldContract, XmlOfTheWrongTypeRaisesAndLeavesTheValue) {
    std::vector<std::pair<QString, QString>> Bad = K().BadXml;
    // Visible and Enabled are booleans for every field.
    Bad.push_back({"Visible", "sometimes"});
    Bad.push_back({"Enabled", "2x"});
    QWidget* Src = Make(K());
    SetSample(Src, 0);
    QWidget* Dst = Make(K());
    SetSample(Dst, 1);
    Base(Dst)->SetStreamReadVisibleandEnabled(true);
    Base(Src)->SetStreamReadVisibleandEnabled(true);
    const QString Before = K().Snapshot(Dst);
    const auto Check = [&](TXmlNode Node, const QString& Element) {
        SCOPED_TRACE(Element.toStdString());
        Base(Dst)->ChangedAfterOK = false;
        Base(Dst)->SetOnAfterRead([](QObject*) { ADD_FAILURE() << "OnAfterRead after a failed read"; });
        EXPECT_THROW_MSG(Base(Dst)->ReadFromXML(Node), EConvertError,
                         QStringLiteral("Field \"%1\", element \"%2\": ").arg(Dst->objectName(), Element));
        EXPECT_EQ(K().Snapshot(Dst), Before);
        EXPECT_TRUE(Base(Dst)->FieldVisible());
        EXPECT_TRUE(Base(Dst)->FieldEnabled());
        // A changed-value query on the same node does not raise.
        EXPECT_NO_THROW(Base(Dst)->XmlValueChanged(Node));
        EXPECT_NO_THROW(Base(Dst)->GetXMLValueText(Node));
    };
    for (const auto& [Element, Text] : Bad) {
        TXmlDocument Doc;
        TXmlNode Node = Doc.CreateRoot("INumFld");
        // A good record with one element spoilt: nothing of it may be applied.
        Base(Src)->WriteToXML(Node);
        Node.WriteString(Element, Text);
        Check(Node, Element);
        // Such text counts as a change.
        if (Element != "Visible" && Element != "Enabled") {
            EXPECT_TRUE(Base(Dst)->XmlValueChanged(Node));
        }
    }
    // The check list's states: an unknown state name.
    if (QLatin1String(K().ClassName) == QLatin1String("TCheckListBoxFld")) {
        TXmlDocument Doc;
        TXmlNode Node = Doc.CreateRoot("INumFld");
        TXmlNode It = Node.NodeFindOrCreate("Items").NodeNew("Item");
        It.WriteAttributeString("Caption", "Alpha");
        It.SetValueAsString("cbMaybe");
        Check(Node, "Items");
    }
}

INSTANTIATE_TEST_SUITE_P(AllFields, FieldContract, ::testing::Range<std::size_t>(0, Kinds().size()),
                         [](const ::testing::TestParamInfo<std::size_t>& I) {
                             return std::string(Kinds()[I.param].ClassName + 1);
                         });

} // namespace

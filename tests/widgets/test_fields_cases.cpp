// What each control field does on its own: byte layouts of the stream records, the combo box's
// two layouts and saved text, the check list's tolerance of changed items, the memo's lines, the
// radio group's index, the date-time precision and texts.
#include <qxnum/widgets/fields.h>

#include <QBuffer>
#include <QSignalSpy>
#include <QTest>
#include <QTranslator>
#include <gtest/gtest.h>

#include <cstring>

#include "fieldtest.h"
#include "throwmsg.h"

using namespace qxnum;
using qxnum::test::ReadRecord;
using qxnum::test::WriteRecord;

namespace {

// Hex text to bytes; blanks and "|" only group the items for the reader.
QByteArray Hex(const char* Text) {
    return QByteArray::fromHex(Text);
}

class Fields : public ::testing::Test {
protected:
    QWidget Window;
    TXmlDocument Doc;
    TXmlNode Node = Doc.CreateRoot(QStringLiteral("INumFld"));
};

template <typename T> std::function<INumFld*(QWidget*)> New(std::function<void(T*)> Init = {}) {
    return [Init](QWidget* P) {
        auto* F = new T(P);
        if (Init) Init(F);
        return static_cast<INumFld*>(F);
    };
}

// --- Byte layouts -------------------------------------------------------------------------------

TEST_F(Fields, StreamRecordsHaveTheClassicLayout) {
    const auto Date = [](QDate D, QTime T) {
        return New<TDateTimePickerFld>([=](auto* F) { F->SetDateTime(QDateTime(D, T)); });
    };
    const auto Abc = [](auto* F) { F->SetItems({"a", "b", "c"}); };
    const auto OneTwo = [](auto* F) { F->SetItems({"one", "two"}); };
    // Make builds the writer; Fresh a reader holding another value, so that reading proves itself.
    const struct {
        const char* Name;
        std::function<INumFld*(QWidget*)> Make, Fresh;
        const char* Bytes;
    } Table[] = {
        {"text", New<TStringFld>([](auto* F) { F->SetText("abc"); }), New<TStringFld>(),
         "06 03 616263 | 09 09"},
        {"empty text, hidden", New<TStringFld>([](auto* F) { F->SetFieldVisible(false); }),
         New<TStringFld>([](auto* F) { F->SetText("x"); }), "06 00 | 08 09"},
        {"memo lines, no Visible/Enabled", New<TMemoFld>([](auto* F) { F->SetText("a\nb"); }),
         New<TMemoFld>(), "02 02 | 06 01 61 | 06 01 62"},
        {"empty memo", New<TMemoFld>(), New<TMemoFld>([](auto* F) { F->SetText("x"); }), "02 00"},
        {"check box, disabled",
         New<TCheckFld>([](auto* F) { F->SetChecked(true), F->SetFieldEnabled(false); }), New<TCheckFld>(),
         "09 | 09 08"},
        {"radio button", New<TRadioBtnFld>(), New<TRadioBtnFld>([](auto* F) { F->SetChecked(true); }),
         "08 | 09 09"},
        {"radio group", New<TRadioGrpFld>([=](auto* F) { Abc(F), F->SetItemIndex(2); }),
         New<TRadioGrpFld>(Abc), "02 02 | 09 09"},
        {"radio group without selection", New<TRadioGrpFld>(),
         New<TRadioGrpFld>([=](auto* F) { Abc(F), F->SetItemIndex(0); }), "02 FF | 09 09"},
        {"check list", New<TCheckListBoxFld>([=](auto* F) {
             Abc(F), F->SetStates({cbChecked, cbGrayed, cbUnchecked});
         }),
         New<TCheckListBoxFld>(Abc), "02 03 | 02 01 | 02 02 | 02 00 | 09 09"},
        {"combo box", New<TComboBoxFld>([=](auto* F) { OneTwo(F), F->SetItemIndex(1); }),
         New<TComboBoxFld>(OneTwo), "02 01 | 06 03 74776F | 09 09"},
        {"combo box with UTF-8 text", New<TComboBoxFld>([](auto* F) { F->SetText(QStringLiteral("m²")); }),
         New<TComboBoxFld>(), "02 FF | 14 03000000 6DC2B2 | 09 09"},
        {"date-time, one day after the epoch", Date(QDate(1899, 12, 31), QTime(0, 0)),
         Date(QDate(2000, 1, 1), QTime(0, 0)), "05 0000000000000080 FF3F | 09 09"},
        {"date-time, noon", Date(QDate(1900, 1, 1), QTime(12, 0)), Date(QDate(1900, 1, 1), QTime(0, 0)),
         "05 00000000000000A0 0040 | 09 09"},
    };
    for (const auto& L : Table) {
        SCOPED_TRACE(L.Name);
        const QByteArray Bytes = Hex(L.Bytes);
        EXPECT_EQ(WriteRecord(*L.Make(&Window)).toHex(), Bytes.toHex());
        INumFld* G = L.Fresh(&Window);
        dynamic_cast<TFieldBase*>(G)->SetStreamReadVisibleandEnabled(true);
        ASSERT_NE(WriteRecord(*G).toHex(), Bytes.toHex());
        EXPECT_EQ(ReadRecord(*G, Bytes), Bytes.size());
        EXPECT_EQ(WriteRecord(*G).toHex(), Bytes.toHex());
    }
}

// Texts go through Qt's translation under their English source text.
TEST_F(Fields, TextsAreTranslatable) {
    struct TShout : QTranslator {
        TShout() { QCoreApplication::installTranslator(this); }
        ~TShout() override { QCoreApplication::removeTranslator(this); }
        bool isEmpty() const override { return false; }
        QString translate(const char* Context, const char* Source, const char*, int) const override {
            return QByteArrayView(Context).startsWith("qxnum::") ? QString::fromUtf8(Source).toUpper()
                                                                 : QString();
        }
    } Shout;
    auto* F = new TCheckFld(&Window);
    EXPECT_EQ(F->GetValueText(), QStringLiteral("UNCHECKED"));
    EXPECT_EQ(F->GetXMLValueText(Node), QStringLiteral("<NO VALUE>"));
    EXPECT_THROW_MSG(ReadRecord(*new TMemoFld(&Window), Hex("02FE")), EReadError, "NEGATIVE LINE COUNT -2");
}

// --- Combo box ----------------------------------------------------------------------------------

class ComboBox : public Fields {
protected:
    void SetUp() override {
        C = new TComboBoxFld(&Window);
        C->SetItems({"one", "two", "three"});
    }
    TComboBoxFld* C = nullptr;
};

TEST_F(ComboBox, OlderLayoutRestoresTheIndexAndKeepsTheText) {
    C->SetText(QStringLiteral("typed by hand"));
    C->SetSavedText(QStringLiteral("older"));
    C->SetStreamReadVisibleandEnabled(true);
    // ItemIndex 2, then straight to Visible (false) and Enabled (true): no text.
    EXPECT_EQ(ReadRecord(*C, Hex("02 02 | 08 | 09")), 4);
    EXPECT_EQ(C->ItemIndex(), 2);
    EXPECT_EQ(C->Text(), QStringLiteral("typed by hand"));
    EXPECT_EQ(C->SavedText(), QStringLiteral("typed by hand"));
    EXPECT_TRUE(C->isHidden());
    EXPECT_TRUE(C->FieldEnabled());
    EXPECT_FALSE(C->HasChanged());

    // A drop-down list follows the index.
    C->SetStyle(csDropDownList);
    C->SetItemIndex(0);
    EXPECT_EQ(ReadRecord(*C, Hex("02 01 | 09 09")), 4);
    EXPECT_EQ(C->ItemIndex(), 1);
    EXPECT_EQ(C->Text(), QStringLiteral("two"));
    EXPECT_EQ(C->SavedText(), QStringLiteral("one"));
}

TEST_F(ComboBox, EveryStringTagIsTheText) {
    const std::vector<std::pair<const char*, QString>> Table = {
        {"06 02 6162", "ab"},
        {"0C 03000000 616263", "abc"},
        {"12 02000000 B000 4300", QStringLiteral("°C")},
        {"14 03000000 6DC2B3", QStringLiteral("m³")},
        {"12 04000000 3DD8 00DE 34D8 1EDD", QStringLiteral("\U0001F600\U0001D11E")},
    };
    for (const auto& [Text, Expected] : Table) {
        SCOPED_TRACE(Text);
        C->SetItemIndex(2);
        const QByteArray Bytes = Hex("02FF") + Hex(Text) + Hex("0909");
        EXPECT_EQ(ReadRecord(*C, Bytes), Bytes.size());
        EXPECT_EQ(C->ItemIndex(), -1);
        EXPECT_EQ(C->Text(), Expected);
        EXPECT_EQ(C->SavedText(), Expected);
    }
}

TEST_F(ComboBox, OddRecords) {
    // A non-string, non-boolean after the index is an error.
    C->SetItemIndex(1);
    C->SetText(QStringLiteral("kept"));
    EXPECT_THROW_MSG(ReadRecord(*C, Hex("02 02 | 02 05 | 09 09")), EReadError,
                     "Invalid property value at offset 2");
    EXPECT_EQ(C->ItemIndex(), 1);
    EXPECT_EQ(C->Text(), QStringLiteral("kept"));
    // An index beyond the items selects none.
    C->SetText(QStringLiteral("x"));
    ReadRecord(*C, Hex("02 09 | 06 01 78 | 09 09"));
    EXPECT_EQ(C->ItemIndex(), -1);
    EXPECT_EQ(C->Text(), QStringLiteral("x"));
}

TEST_F(ComboBox, XmlIndexAndTextFollowTheStyle) {
    // Without text the text stays, and is saved when not empty.
    Node.WriteInteger("ItemIndex", 1);
    C->SetText(QStringLiteral("before"));
    C->SetSavedText(QStringLiteral("saved"));
    C->ReadFromXML(Node);
    EXPECT_EQ(C->ItemIndex(), 1);
    EXPECT_EQ(C->Text(), QStringLiteral("before"));
    EXPECT_EQ(C->SavedText(), QStringLiteral("before"));
    C->SetItemIndex(-1);
    C->SetText(QString());
    C->ReadFromXML(Node);
    EXPECT_EQ(C->ItemIndex(), 1);
    EXPECT_EQ(C->Text(), QString());
    EXPECT_EQ(C->SavedText(), QStringLiteral("before"));

    // Text alone leaves the index.
    Node.NodesDelete("ItemIndex");
    C->SetItemIndex(2);
    Node.WriteString("Text", QStringLiteral("°F"));
    C->ReadFromXML(Node);
    EXPECT_EQ(C->ItemIndex(), 2);
    EXPECT_EQ(C->Text(), QStringLiteral("°F"));
    EXPECT_EQ(C->SavedText(), QStringLiteral("°F"));
    EXPECT_EQ(C->GetXMLValueText(Node), QStringLiteral("°F"));

    // A drop-down list takes the index over the stored text; without an index the text picks the item.
    C->SetStyle(csDropDownList);
    Node.WriteInteger("ItemIndex", 2);
    Node.WriteString("Text", QStringLiteral("one"));
    C->ReadFromXML(Node);
    EXPECT_EQ(C->ItemIndex(), 2);
    EXPECT_EQ(C->Text(), QStringLiteral("three"));
    EXPECT_EQ(C->SavedText(), QStringLiteral("one"));
    Node.NodesDelete("ItemIndex");
    C->ReadFromXML(Node);
    EXPECT_EQ(C->ItemIndex(), 0);
}

TEST_F(ComboBox, ADropDownListReportsAChangeOnlyByIndex) {
    C->SetItemIndex(1);
    C->WriteToXML(Node);
    Node.WriteString("Text", QStringLiteral("something else"));
    EXPECT_TRUE(C->XmlValueChanged(Node));
    C->SetStyle(csDropDownList);
    EXPECT_FALSE(C->XmlValueChanged(Node));
    Node.WriteInteger("ItemIndex", 0);
    EXPECT_TRUE(C->XmlValueChanged(Node));
    // Without "ItemIndex" the editable box looks at the text, falling back to ChangedAfterOK.
    C->SetStyle(csDropDown);
    Node.NodesDelete("ItemIndex");
    EXPECT_TRUE(C->XmlValueChanged(Node));
    Node.NodesDelete("Text");
    EXPECT_FALSE(C->XmlValueChanged(Node));
    C->ChangedAfterOK = true;
    EXPECT_TRUE(C->XmlValueChanged(Node));
}

TEST_F(ComboBox, UserChangesSaveTheTextAndRevertGoesBack) {
    int Changes = 0;
    C->SetOnChange([&](QObject* Sender) {
        EXPECT_EQ(Sender, C);
        ++Changes;
    });
    QSignalSpy Spy(C, &TComboBoxFld::changed);
    // A program setting the text is not a user change.
    C->SetText(QStringLiteral("program"));
    EXPECT_EQ(C->SavedText(), QString());
    QTest::keyClicks(C->lineEdit(), QStringLiteral("ab"));
    EXPECT_EQ(Changes, 2);
    EXPECT_EQ(Spy.count(), 2);
    EXPECT_EQ(C->SavedText(), QStringLiteral("programab"));
    C->SetText(QStringLiteral("later"));
    C->RevertToSavedText();
    EXPECT_EQ(C->Text(), QStringLiteral("programab"));
    EXPECT_EQ(C->ItemIndex(), -1);

    // What the popup does when the user picks "two".
    C->setCurrentIndex(1);
    Q_EMIT C->activated(1);
    EXPECT_EQ(C->SavedText(), QStringLiteral("two"));
    C->SetItemIndex(0);
    C->RevertToSavedText();
    EXPECT_EQ(C->ItemIndex(), 1);
    EXPECT_EQ(C->Text(), QStringLiteral("two"));
}

// Text typed over an item is none of the items: index -1 in both media; an item's text keeps its index.
TEST_F(ComboBox, TypedTextThatIsNoItemIsStoredWithoutIndex) {
    for (const auto& [Typed, Index] : {std::pair("Kerosene", -1), std::pair("two", 1), std::pair("one", 0)}) {
        SCOPED_TRACE(Typed);
        C->SetItemIndex(0);
        C->SetText(QString::fromUtf8(Typed));
        C->WriteToXML(Node);
        EXPECT_EQ(Node.ReadInteger("ItemIndex", 99), Index);
        EXPECT_EQ(Node.ReadString("Text"), QString::fromUtf8(Typed));
        EXPECT_FALSE(C->XmlValueChanged(Node));
        QByteArray Expected = Hex("02") + char(Index) + Hex("06") + char(std::strlen(Typed)) + Typed;
        EXPECT_EQ(WriteRecord(*C).left(Expected.size()).toHex(), Expected.toHex());
    }
}

// What a read brought in is written back as read, in both media, until the box shows something else.
TEST_F(ComboBox, ReadIndexAndTextWriteBackAsRead) {
    const auto ReadXml = [this](int Index, const QString& Text) {
        TXmlDocument D;
        TXmlNode N = D.CreateRoot(QStringLiteral("INumFld"));
        N.WriteInteger("ItemIndex", Index);
        N.WriteString("Text", Text);
        C->ReadFromXML(N);
    };
    const auto XmlIndex = [this] {
        C->WriteToXML(Node);
        return Node.ReadInteger("ItemIndex", 99);
    };
    const auto ReadStream = [this](int Index, const QString& Text) {
        ReadRecord(*C,
                   Hex("02") + char(Index) + Hex("06") + char(Text.size()) + Text.toLatin1() + Hex("0909"));
    };
    const auto StreamIndex = [this] { return int(static_cast<signed char>(WriteRecord(*C).at(1))); };
    struct Medium {
        const char* Name;
        std::function<void(int, const QString&)> Read;
        std::function<int()> Written;
    };
    for (const Medium& M : {Medium{"xml", ReadXml, XmlIndex}, Medium{"stream", ReadStream, StreamIndex}}) {
        SCOPED_TRACE(M.Name);
        for (int Round = 0; Round < 2; ++Round) {
            M.Read(1, QStringLiteral("other"));
            EXPECT_EQ(C->ItemIndex(), 1);
            EXPECT_EQ(C->Text(), QStringLiteral("other"));
            EXPECT_EQ(M.Written(), 1);
        }
        // Once the text changes, the classic rule again: a text that is no item has no index.
        C->SetText(QStringLiteral("another"));
        EXPECT_EQ(M.Written(), -1);
    }
}

TEST_F(ComboBox, ValueTextAndSavedValues) {
    C->SetItemIndex(1);
    C->SetText(QStringLiteral("custom"));
    EXPECT_EQ(C->GetValueText(), QStringLiteral("two"));
    EXPECT_EQ(C->GetVariantValue().toString(), QStringLiteral("custom"));
    // The copy value is the index alone (the round trips cover restoring both values).
    C->SetCopyValue();
    C->SetText(QStringLiteral("other text"));
    EXPECT_FALSE(C->HasChanged());

    C->SetItemIndex(-1);
    C->SetText(QStringLiteral("free"));
    EXPECT_EQ(C->GetValueText(), QStringLiteral("free"));
}

// --- Check list ---------------------------------------------------------------------------------

class CheckList : public Fields {
protected:
    TCheckListBoxFld* Make(const QStringList& Items, const QList<TCheckBoxState>& States = {}) {
        auto* F = new TCheckListBoxFld(&Window);
        F->SetItems(Items);
        F->SetStates(States);
        return F;
    }
};

TEST_F(CheckList, ReorderedItemsAreRestoredByCaption) {
    Make({"A", "B", "C", "Gone"}, {cbChecked, cbGrayed, cbUnchecked, cbChecked})->WriteToXML(Node);
    TCheckListBoxFld* F = Make({"C", "New", "A", "B"}, {cbChecked, cbGrayed, cbUnchecked, cbUnchecked});
    F->ReadFromXML(Node);
    EXPECT_EQ(F->States(), (QList<TCheckBoxState>{cbUnchecked, cbGrayed, cbChecked, cbGrayed}));
    EXPECT_EQ(F->GetXMLValueText(Node), QStringLiteral("A; B; Gone"));
    // "Gone" has no item and "New" no entry: the node no longer describes the list.
    EXPECT_TRUE(F->XmlValueChanged(Node));

    // State names are read ignoring case and blanks.
    TXmlNode Other = Doc.Root().NodeNew("Other");
    TXmlNode It = Other.NodeNew("Items").NodeNew("Item");
    It.WriteAttributeString("Caption", "A");
    It.SetValueAsString(" CBGRAYED ");
    F->ReadFromXML(Other);
    EXPECT_EQ(F->State(2), cbGrayed);
}

TEST_F(CheckList, XmlRewritesItemsWholeAndLeavesNoMSNDAlone) {
    Node.NodeNew("Items").NodeNew("Item").WriteAttributeString("Caption", "Stale");
    Node.NodeNew("Items").NodeNew("Item");
    Node.WriteString("NoMSND", "keep me");
    TCheckListBoxFld* F = Make({"x", "\U0001F600 y"}, {cbGrayed, cbChecked});
    F->WriteToXML(Node);
    EXPECT_EQ(Node.NodesByName("Items").size(), 1);
    EXPECT_EQ(Node.ReadString("NoMSND"), QStringLiteral("keep me"));
    const QList<TXmlNode> Items = Node.NodeByName("Items").NodesByName("Item");
    ASSERT_EQ(Items.size(), 2);
    EXPECT_EQ(Items[0].AttributeByName("Caption"), QStringLiteral("x"));
    EXPECT_EQ(Items[0].ValueAsString(), QStringLiteral("cbGrayed"));
    EXPECT_EQ(Items[1].AttributeByName("Caption"), QStringLiteral("\U0001F600 y"));
    EXPECT_EQ(Items[1].ValueAsString(), QStringLiteral("cbChecked"));
    EXPECT_FALSE(F->XmlValueChanged(Node));

    TXmlNode Fresh = Doc.Root().NodeNew("Other");
    F->WriteToXML(Fresh);
    EXPECT_FALSE(Fresh.NodeByName("NoMSND"));
}

// A document nested far too deep is refused on load; one built deep in memory is rewritten
// without recursion. Either way nothing crashes.
TEST_F(CheckList, DeepDocuments) {
    TCheckListBoxFld* F = Make({"a"}, {cbChecked});
    const int Depth = 200000;
    const QByteArray Text = "<INumFld><Items>" + QByteArray("<n>").repeated(Depth) +
                            QByteArray("</n>").repeated(Depth) + "</Items></INumFld>";
    EXPECT_THROW(Doc.LoadFromBytes(Text), EXmlError);
    TXmlNode N = Node.NodeNew("Items");
    for (int I = 0; I < Depth; ++I)
        N = N.NodeNew("n");
    F->WriteToXML(Node);
    EXPECT_EQ(Node.NodeByName("Items").NodeCount(), 1);
    EXPECT_EQ(Node.NodeByName("Items").Nodes(0).ValueAsString(), QStringLiteral("cbChecked"));
}

TEST_F(CheckList, StreamStateCountsAndRanges) {
    // More states than items: the extra ones are read and dropped.
    const QByteArray Five =
        WriteRecord(*Make({"1", "2", "3", "4", "5"}, {cbChecked, cbGrayed, cbChecked, cbChecked, cbGrayed}));
    TCheckListBoxFld* F = Make({"1", "2"});
    F->SetStreamReadVisibleandEnabled(true);
    EXPECT_EQ(ReadRecord(*F, Five + Hex("06 03 656E64")), Five.size()); // then "end"
    EXPECT_EQ(F->States(), (QList<TCheckBoxState>{cbChecked, cbGrayed}));
    EXPECT_TRUE(F->FieldVisible());

    // Fewer states than items: the rest keep theirs.
    TCheckListBoxFld* G = Make({"1", "2", "3"}, {cbUnchecked, cbUnchecked, cbGrayed});
    ReadRecord(*G, Hex("02 02 | 02 01 | 02 01 | 09 09"));
    EXPECT_EQ(G->States(), (QList<TCheckBoxState>{cbChecked, cbChecked, cbGrayed}));
    EXPECT_FALSE(G->HasChanged());

    // States outside the enumeration are errors, except past the items, where they are dropped.
    F->SetStates({cbChecked, cbChecked});
    EXPECT_THROW_MSG(ReadRecord(*F, Hex("02 02 | 02 00 | 02 03 | 09 09")), EReadError,
                     "invalid check state 3");
    EXPECT_THROW_MSG(ReadRecord(*F, Hex("02 FF | 09 09")), EReadError, "negative item count -1");
    EXPECT_EQ(F->States(), (QList<TCheckBoxState>{cbChecked, cbChecked}));
    EXPECT_NO_THROW(ReadRecord(*F, Hex("02 03 | 02 00 | 02 00 | 02 63 | 09 09")));
    EXPECT_EQ(F->States(), (QList<TCheckBoxState>{cbUnchecked, cbUnchecked}));
}

TEST_F(CheckList, ValueTextJoinsCheckedAndGrayedCaptions) {
    TCheckListBoxFld* F = Make({"one", "two", "three"}, {cbChecked, cbUnchecked, cbGrayed});
    EXPECT_EQ(F->GetValueText(), QStringLiteral("one; three"));
    EXPECT_EQ(F->GetVariantValue().toList(), (QVariantList{1, 0, 2}));
    EXPECT_EQ(Make({})->GetValueText(), QString());

    // Stops after passing 120 characters: 60 + 2 + 56 = 118, + 2 + 2 = 122: over, so "...".
    const QString A(60, QLatin1Char('a')), B(56, QLatin1Char('b')), Exact(120, QLatin1Char('x'));
    EXPECT_EQ(JoinCaptions({A, B}), A + "; " + B);
    EXPECT_EQ(JoinCaptions({A, B, "cc", "d"}), A + "; " + B + "; cc...");
    EXPECT_EQ(JoinCaptions({Exact}), Exact);
    EXPECT_EQ(JoinCaptions({Exact + "y", "z"}), Exact + "y...");
}

TEST_F(CheckList, ItemsAddedStraightToTheListAreCheckable) {
    TCheckListBoxFld* F = Make({});
    F->addItem(QStringLiteral("plain"));
    EXPECT_TRUE(F->item(0)->flags() & Qt::ItemIsUserCheckable);
    EXPECT_FALSE(F->item(0)->flags() & Qt::ItemIsUserTristate);
    EXPECT_EQ(F->State(0), cbUnchecked);
    F->SetAllowGrayed(true);
    EXPECT_TRUE(F->item(0)->flags() & Qt::ItemIsUserTristate);
    F->AddItem(QStringLiteral("grey"), cbGrayed);
    EXPECT_TRUE(F->item(1)->flags() & Qt::ItemIsUserTristate);
    EXPECT_EQ(F->State(1), cbGrayed);
    EXPECT_EQ(F->State(7), cbUnchecked);
}

// --- Text and memo ------------------------------------------------------------------------------

TEST_F(Fields, MemoValueTextShowsAtMost120Characters) {
    auto* M = new TMemoFld(&Window);
    const QString S120(120, QLatin1Char('m'));
    M->SetText(S120);
    EXPECT_EQ(M->GetValueText(), S120);
    M->SetText(S120 + "n");
    EXPECT_EQ(M->GetValueText(), S120 + "...");
    // Half a character is not shown.
    M->SetText(QString(119, QLatin1Char('m')) + QStringLiteral("\U0001F600"));
    EXPECT_EQ(M->GetValueText(), QString(119, QLatin1Char('m')) + QStringLiteral("..."));
}

TEST_F(Fields, MemoLinesAndLongTexts) {
    auto* M = new TMemoFld(&Window);
    M->SetText(QStringLiteral("a\n\nb\u00a0c\n"));
    EXPECT_EQ(M->Lines(), (QStringList{"a", "", QStringLiteral("b\u00a0c"), ""}));
    EXPECT_THROW_MSG(ReadRecord(*M, Hex("02FE")), EReadError, "negative line count -2");

    // Longer than QLineEdit's default limit.
    auto* S = new TStringFld(&Window);
    S->SetText(QString(40000, QLatin1Char('L')));
    auto* T = new TStringFld(&Window);
    ReadRecord(*T, WriteRecord(*S));
    EXPECT_EQ(T->Text(), S->Text());
}

// --- Buttons ------------------------------------------------------------------------------------

TEST_F(Fields, CheckAndRadioButtonValues) {
    auto* A = new TRadioBtnFld(&Window);
    auto* B = new TRadioBtnFld(&Window);
    A->SetChecked(true);
    ReadRecord(*A, Hex("08 | 09 09"));
    EXPECT_FALSE(A->Checked()) << "reads false even when exclusive";
    A->SetChecked(true);
    Node.WriteBool("Value", true);
    B->ReadFromXML(Node);
    EXPECT_TRUE(B->Checked());
    EXPECT_FALSE(A->Checked()) << "siblings still exclude each other";

    // A check box's value is "checked" only.
    auto* F = new TCheckFld(&Window);
    F->setTristate(true);
    F->setCheckState(Qt::PartiallyChecked);
    EXPECT_FALSE(F->Checked());
    EXPECT_EQ(F->GetValueText(), QStringLiteral("unchecked"));
    Node.WriteString("Value", "1");
    F->ReadFromXML(Node);
    EXPECT_TRUE(F->Checked());
    EXPECT_EQ(F->GetXMLValueText(Node), QStringLiteral("checked"));
    Node.WriteString("Value", "perhaps");
    EXPECT_EQ(F->GetXMLValueText(Node), QStringLiteral("perhaps"));
}

TEST_F(Fields, RadioGroupKeepsAnIndexWithoutButton) {
    auto* G = new TRadioGrpFld(&Window);
    G->SetItems({"bar", "psi"});
    EXPECT_EQ(G->GetValueText(), QString());
    ReadRecord(*G, Hex("02 03 | 09 09"));
    EXPECT_EQ(G->ItemIndex(), 3);
    EXPECT_EQ(G->GetValueText(), QString());
    EXPECT_FALSE(G->Button(0)->isChecked() || G->Button(1)->isChecked());
    EXPECT_EQ(WriteRecord(*G), Hex("02 03 | 09 09"));
    // More items later: the stored index finds its button.
    G->SetItems({"bar", "psi", "kPa", "°C²"});
    EXPECT_TRUE(G->Button(3)->isChecked());
    EXPECT_EQ(G->GetValueText(), QStringLiteral("°C²"));
    Node.WriteInteger("ItemIndex", 2);
    EXPECT_EQ(G->GetXMLValueText(Node), QStringLiteral("kPa"));
    Node.WriteInteger("ItemIndex", 9);
    EXPECT_EQ(G->GetXMLValueText(Node), QString());
    G->SetItemIndex(-1);
    for (int I = 0; I < 4; ++I)
        EXPECT_FALSE(G->Button(I)->isChecked());
}

TEST_F(Fields, RadioGroupFollowsTheUser) {
    auto* G = new TRadioGrpFld(&Window);
    G->SetColumns(2);
    G->SetItems({"a", "b", "c"});
    int Clicks = 0;
    G->SetOnClick([&](QObject*) { ++Clicks; });
    G->Button(1)->click();
    EXPECT_EQ(G->ItemIndex(), 1);
    EXPECT_EQ(Clicks, 1);
    G->Button(1)->click();
    EXPECT_TRUE(G->Button(1)->isChecked());
    G->Button(2)->setChecked(true);
    EXPECT_EQ(G->ItemIndex(), 2);
    EXPECT_FALSE(G->Button(1)->isChecked());
    G->SetColumns(0);
    EXPECT_EQ(G->Columns(), 1);
    EXPECT_TRUE(G->Button(2)->isChecked());
}

// --- Date and time ------------------------------------------------------------------------------

class DateTime : public Fields {
protected:
    void SetUp() override { F = new TDateTimePickerFld(&Window); }
    TDateTimePickerFld* F = nullptr;
    const QDateTime Leap{QDate(2024, 2, 29), QTime(13, 45, 12, 345)};
};

TEST_F(DateTime, XmlTextHasMillisecondsAndAcceptsShorterForms) {
    // Changes count to the millisecond.
    F->SetDateTime(Leap);
    F->SetCopyValue();
    F->SetDateTime(Leap.addMSecs(1));
    EXPECT_TRUE(F->HasChanged());
    F->SetDateTime(Leap);
    EXPECT_FALSE(F->HasChanged());

    F->WriteToXML(Node);
    EXPECT_EQ(Node.ReadString("Value"), QStringLiteral("2024-02-29T13:45:12.345"));
    F->SetDateTime(QDateTime(QDate(2024, 3, 1), QTime(0, 0)));
    F->WriteToXML(Node);
    EXPECT_EQ(Node.ReadString("Value"), QStringLiteral("2024-03-01T00:00:00.000"));

    const std::vector<std::pair<QString, QDateTime>> Table = {
        {"2024-03-02", QDateTime(QDate(2024, 3, 2), QTime(0, 0))},
        {"2024-03-02 08:30:00", QDateTime(QDate(2024, 3, 2), QTime(8, 30))},
        {" 2024-03-02T08:30:00.5 ", QDateTime(QDate(2024, 3, 2), QTime(8, 30, 0, 500))},
        {"0100-01-01T00:00:00.000", QDateTime(QDate(100, 1, 1), QTime(0, 0))},
    };
    for (const auto& [Text, Expected] : Table) {
        SCOPED_TRACE(Text.toStdString());
        Node.WriteString("Value", Text);
        F->ReadFromXML(Node);
        EXPECT_EQ(F->DateTime(), Expected);
        EXPECT_FALSE(F->XmlValueChanged(Node));
    }
}

TEST_F(DateTime, ValueTextUsesTheFormatSettings) {
    F->SetDateTime(Leap);
    EXPECT_EQ(F->GetValueText(), QStringLiteral("2/29/2024 13:45:12"));
    F->SetDateTime(QDateTime(QDate(2024, 2, 29), QTime(0, 0)));
    EXPECT_EQ(F->GetValueText(), QStringLiteral("2/29/2024"));
    Node.WriteString("Value", "2001-12-24T18:00:00");
    EXPECT_EQ(F->GetXMLValueText(Node), QStringLiteral("12/24/2001 18:00:00"));
    Node.WriteString("Value", "christmas");
    EXPECT_EQ(F->GetXMLValueText(Node), QStringLiteral("christmas"));
}

TEST_F(DateTime, StreamDaysThatNameNoDateAreErrors) {
    F->SetDateTime(Leap);
    for (const char* Days : {
             "05 00000000000000C0 FF7F", // NaN
             "05 0000000000000080 FF7F", // infinity
             "05 0000000000000080 3F40", // 2^64 days
             "15 000000000000F87F",      // a double NaN
             "04 C0BDF0FF",              // -1000000 days, before the year 100
         }) {
        SCOPED_TRACE(Days);
        EXPECT_THROW_MSG(ReadRecord(*F, Hex(Days) + Hex("0909")), EReadError, "out of range");
        EXPECT_EQ(F->DateTime(), Leap);
    }
    // A plain integer is a whole number of days, as the classic reader takes it.
    ReadRecord(*F, Hex("02 02 | 09 09"));
    EXPECT_EQ(F->DateTime(), QDateTime(QDate(1900, 1, 1), QTime(0, 0)));
}

} // namespace

// What each control field does on its own: byte layouts of the stream records, the combo box's
// two layouts and saved text, the check list's tolerance of changed items, the memo's lines, the
// radio group's index, the date-time precision and texts.
#include <qxnum/widgets/fields.h>

#include <QBuffer>
#include <QSignalSpy>
#include <QTest>
#include <gtest/gtest.h>

QT_BEGIN_NAMESPACE
inline void PrintTo(const QString& S, std::ostream* Os) {
    *Os << '"' << S.toStdString() << '"';
}
QT_END_NAMESPACE

using namespace qxnum;

namespace {

QByteArray Hex(const char* Text) {
    return QByteArray::fromHex(Text);
}

QByteArray WriteRecord(INumFld& F) {
    QBuffer B;
    B.open(QIODevice::WriteOnly);
    {
        TWriter W(&B);
        F.WritetoStream(W);
    }
    return B.data();
}

// Reads one record and returns the reader's position afterwards.
qint64 ReadRecord(INumFld& F, const QByteArray& Bytes) {
    QBuffer B;
    B.setData(Bytes);
    B.open(QIODevice::ReadOnly);
    TReader R(&B);
    F.ReadfromStream(R);
    return R.Position();
}

class Fields : public ::testing::Test {
protected:
    QWidget Window;
    TXmlDocument Doc;
    TXmlNode Node = Doc.CreateRoot(QStringLiteral("INumFld"));
};

// --- Byte layouts -------------------------------------------------------------------------------

TEST_F(Fields, StreamRecordsHaveTheClassicLayout) {
    struct TLayout {
        const char* Name;
        std::function<INumFld*(QWidget*)> Make;
        const char* Bytes;
    };
    const std::vector<TLayout> Table = {
        {"text",
         [](QWidget* P) {
             auto* F = new TStringFld(P);
             F->SetText("abc");
             return F;
         },
         "0603616263"
         "0909"},
        {"empty text, hidden",
         [](QWidget* P) {
             auto* F = new TStringFld(P);
             F->SetFieldVisible(false);
             return F;
         },
         "0600"
         "0809"},
        {"memo lines, no Visible/Enabled",
         [](QWidget* P) {
             auto* F = new TMemoFld(P);
             F->SetText("a\nb");
             return F;
         },
         "0202"
         "060161"
         "060162"},
        {"empty memo", [](QWidget* P) { return new TMemoFld(P); }, "0200"},
        {"check box, disabled",
         [](QWidget* P) {
             auto* F = new TCheckFld(P);
             F->SetChecked(true);
             F->SetFieldEnabled(false);
             return F;
         },
         "09"
         "0908"},
        {"radio button", [](QWidget* P) { return new TRadioBtnFld(P); },
         "08"
         "0909"},
        {"radio group",
         [](QWidget* P) {
             auto* F = new TRadioGrpFld(P);
             F->SetItems({"a", "b", "c"});
             F->SetItemIndex(2);
             return F;
         },
         "0202"
         "0909"},
        {"radio group without selection", [](QWidget* P) { return new TRadioGrpFld(P); },
         "02FF"
         "0909"},
        {"check list",
         [](QWidget* P) {
             auto* F = new TCheckListBoxFld(P);
             F->SetItems({"a", "b", "c"});
             F->SetStates({cbChecked, cbGrayed, cbUnchecked});
             return F;
         },
         "0203"
         "0201"
         "0202"
         "0200"
         "0909"},
        {"combo box",
         [](QWidget* P) {
             auto* F = new TComboBoxFld(P);
             F->SetItems({"one", "two"});
             F->SetItemIndex(1);
             return F;
         },
         "0201"
         "060374776F"
         "0909"},
        {"combo box with UTF-8 text",
         [](QWidget* P) {
             auto* F = new TComboBoxFld(P);
             F->SetText(QStringLiteral("m²"));
             return F;
         },
         "02FF"
         "14030000006DC2B2"
         "0909"},
        {"date-time, one day after the epoch",
         [](QWidget* P) {
             auto* F = new TDateTimePickerFld(P);
             F->SetDateTime(QDateTime(QDate(1899, 12, 31), QTime(0, 0)));
             return F;
         },
         "0500000000000000"
         "80FF3F"
         "0909"},
        {"date-time, noon",
         [](QWidget* P) {
             auto* F = new TDateTimePickerFld(P);
             F->SetDateTime(QDateTime(QDate(1900, 1, 1), QTime(12, 0)));
             return F;
         },
         "0500000000000000"
         "A00040"
         "0909"},
    };
    for (const TLayout& L : Table) {
        SCOPED_TRACE(L.Name);
        INumFld* F = L.Make(&Window);
        EXPECT_EQ(WriteRecord(*F).toHex(), Hex(L.Bytes).toHex());
        // And the same bytes read back into a fresh field give the same record.
        INumFld* G = L.Make(&Window);
        EXPECT_EQ(ReadRecord(*G, Hex(L.Bytes)), Hex(L.Bytes).size());
        EXPECT_EQ(WriteRecord(*G).toHex(), Hex(L.Bytes).toHex());
    }
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
    const QByteArray Bytes = Hex("0202"
                                 "08"
                                 "09");
    EXPECT_EQ(ReadRecord(*C, Bytes), 4);
    EXPECT_EQ(C->ItemIndex(), 2);
    EXPECT_EQ(C->Text(), QStringLiteral("typed by hand"));
    EXPECT_EQ(C->SavedText(), QStringLiteral("typed by hand"));
    EXPECT_TRUE(C->isHidden());
    EXPECT_TRUE(C->FieldEnabled());
    EXPECT_FALSE(C->HasChanged());
}

TEST_F(ComboBox, OlderLayoutInADropDownListFollowsTheIndex) {
    C->SetStyle(csDropDownList);
    C->SetItemIndex(0);
    EXPECT_EQ(ReadRecord(*C, Hex("0201"
                                 "0909")),
              4);
    EXPECT_EQ(C->ItemIndex(), 1);
    EXPECT_EQ(C->Text(), QStringLiteral("two"));
    EXPECT_EQ(C->SavedText(), QStringLiteral("one"));
}

TEST_F(ComboBox, EveryStringTagIsTheText) {
    const std::vector<std::pair<const char*, QString>> Table = {
        {"06026162", "ab"},
        {"0C03000000616263", "abc"},
        {"1202000000B0004300", QStringLiteral("°C")},
        {"14030000006DC2B3", QStringLiteral("m³")},
        {"1204000000"
         "3DD800DE"
         "34D81EDD",
         QStringLiteral("\U0001F600\U0001D11E")},
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

TEST_F(ComboBox, ANonStringNonBooleanAfterTheIndexIsAnError) {
    C->SetItemIndex(1);
    C->SetText(QStringLiteral("kept"));
    EXPECT_THROW(ReadRecord(*C, Hex("0202"
                                    "0205"
                                    "0909")),
                 EReadError);
    EXPECT_EQ(C->ItemIndex(), 1);
    EXPECT_EQ(C->Text(), QStringLiteral("kept"));
}

TEST_F(ComboBox, AnIndexBeyondTheItemsSelectsNone) {
    C->SetText(QStringLiteral("x"));
    ReadRecord(*C, Hex("0209"
                       "060178"
                       "0909"));
    EXPECT_EQ(C->ItemIndex(), -1);
    EXPECT_EQ(C->Text(), QStringLiteral("x"));
}

TEST_F(ComboBox, XmlWithoutTextKeepsTheTextAndSavesItWhenNotEmpty) {
    Node.WriteInteger("ItemIndex", 1);
    C->SetText(QStringLiteral("before"));
    C->SetSavedText(QStringLiteral("saved"));
    C->ReadFromXML(Node);
    EXPECT_EQ(C->ItemIndex(), 1);
    EXPECT_EQ(C->Text(), QStringLiteral("before"));
    EXPECT_EQ(C->SavedText(), QStringLiteral("before"));

    C->SetItemIndex(-1);
    C->SetText(QString());
    C->SetSavedText(QStringLiteral("saved"));
    C->ReadFromXML(Node);
    EXPECT_EQ(C->ItemIndex(), 1);
    EXPECT_EQ(C->Text(), QString());
    EXPECT_EQ(C->SavedText(), QStringLiteral("saved"));
}

TEST_F(ComboBox, XmlTextAloneLeavesTheIndex) {
    C->SetItemIndex(2);
    Node.WriteString("Text", QStringLiteral("°F"));
    C->ReadFromXML(Node);
    EXPECT_EQ(C->ItemIndex(), 2);
    EXPECT_EQ(C->Text(), QStringLiteral("°F"));
    EXPECT_EQ(C->SavedText(), QStringLiteral("°F"));
    EXPECT_EQ(C->GetXMLValueText(Node), QStringLiteral("°F"));
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

TEST_F(ComboBox, ADropDownListTakesTheIndexOverTheStoredText) {
    C->SetStyle(csDropDownList);
    Node.WriteInteger("ItemIndex", 2);
    Node.WriteString("Text", QStringLiteral("one"));
    C->ReadFromXML(Node);
    EXPECT_EQ(C->ItemIndex(), 2);
    EXPECT_EQ(C->Text(), QStringLiteral("three"));
    EXPECT_EQ(C->SavedText(), QStringLiteral("one"));
    // Without an index, the text picks the item.
    Node.NodesDelete("ItemIndex");
    C->ReadFromXML(Node);
    EXPECT_EQ(C->ItemIndex(), 0);
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

TEST_F(ComboBox, ValueTextIsTheItemOrTheEditText) {
    C->SetItemIndex(1);
    C->SetText(QStringLiteral("edited"));
    EXPECT_EQ(C->GetValueText(), QStringLiteral("two"));
    EXPECT_EQ(C->GetVariantValue().toString(), QStringLiteral("edited"));
    C->SetItemIndex(-1);
    C->SetText(QStringLiteral("free"));
    EXPECT_EQ(C->GetValueText(), QStringLiteral("free"));
}

TEST_F(ComboBox, FormCreateKeepsIndexAndTextCopyOnlyTheIndex) {
    C->SetItemIndex(1);
    C->SetText(QStringLiteral("custom"));
    C->SetFormCreateVal();
    C->SetCopyValue();
    C->SetText(QStringLiteral("other text"));
    EXPECT_FALSE(C->HasChanged());
    C->SetItemIndex(2);
    EXPECT_TRUE(C->HasChanged());
    C->RestoreCopyValue();
    EXPECT_EQ(C->ItemIndex(), 1);
    C->SetItemIndex(0);
    C->ResetToFormCreateVal();
    EXPECT_EQ(C->ItemIndex(), 1);
    EXPECT_EQ(C->Text(), QStringLiteral("custom"));
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
}

TEST_F(CheckList, XmlRewritesItemsWholeAndLeavesNoMSNDAlone) {
    TXmlNode Stale = Node.NodeNew("Items");
    Stale.NodeNew("Item").WriteAttributeString("Caption", "Stale");
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

TEST_F(CheckList, XmlStateNamesAreReadIgnoringCase) {
    TXmlNode It = Node.NodeNew("Items").NodeNew("Item");
    It.WriteAttributeString("Caption", "A");
    It.SetValueAsString(" CBGRAYED ");
    TCheckListBoxFld* F = Make({"A"});
    F->ReadFromXML(Node);
    EXPECT_EQ(F->State(0), cbGrayed);
}

TEST_F(CheckList, ExtraStatesInAStreamAreReadAndDropped) {
    const QByteArray Five =
        WriteRecord(*Make({"1", "2", "3", "4", "5"}, {cbChecked, cbGrayed, cbChecked, cbChecked, cbGrayed}));
    const QByteArray Bytes = Five + Hex("0603656E64"); // then "end"
    TCheckListBoxFld* F = Make({"1", "2"});
    F->SetStreamReadVisibleandEnabled(true);
    EXPECT_EQ(ReadRecord(*F, Bytes), Five.size());
    EXPECT_EQ(F->States(), (QList<TCheckBoxState>{cbChecked, cbGrayed}));
    EXPECT_TRUE(F->FieldVisible());

    // Fewer states than items: the rest keep theirs.
    TCheckListBoxFld* G = Make({"1", "2", "3"}, {cbUnchecked, cbUnchecked, cbGrayed});
    ReadRecord(*G, Hex("0202"
                       "0201"
                       "0201"
                       "0909"));
    EXPECT_EQ(G->States(), (QList<TCheckBoxState>{cbChecked, cbChecked, cbGrayed}));
    EXPECT_FALSE(G->HasChanged());
}

TEST_F(CheckList, StatesOutsideTheEnumerationAreErrors) {
    TCheckListBoxFld* F = Make({"1", "2"}, {cbChecked, cbChecked});
    EXPECT_THROW(ReadRecord(*F, Hex("0202"
                                    "0200"
                                    "0203"
                                    "0909")),
                 EReadError);
    EXPECT_THROW(ReadRecord(*F, Hex("02FF"
                                    "0909")),
                 EReadError);
    EXPECT_EQ(F->States(), (QList<TCheckBoxState>{cbChecked, cbChecked}));
    // A state past the items is dropped unread as a state.
    EXPECT_NO_THROW(ReadRecord(*F, Hex("0203"
                                       "0200"
                                       "0200"
                                       "0263"
                                       "0909")));
    EXPECT_EQ(F->States(), (QList<TCheckBoxState>{cbUnchecked, cbUnchecked}));
}

TEST_F(CheckList, ValueTextJoinsCheckedAndGrayedCaptions) {
    TCheckListBoxFld* F = Make({"one", "two", "three"}, {cbChecked, cbUnchecked, cbGrayed});
    EXPECT_EQ(F->GetValueText(), QStringLiteral("one; three"));
    EXPECT_EQ(F->GetVariantValue().toList(), (QVariantList{1, 0, 2}));
    EXPECT_EQ(Make({})->GetValueText(), QString());
}

TEST(JoinCaptions, StopsAfterPassing120Characters) {
    const QString A(60, QLatin1Char('a'));
    const QString B(56, QLatin1Char('b'));
    // 60 + 2 + 56 = 118, + 2 + 2 = 122: over, so "..." and nothing after.
    EXPECT_EQ(JoinCaptions({A, B}), A + "; " + B);
    EXPECT_EQ(JoinCaptions({A, B, "cc", "d"}), A + "; " + B + "; cc...");
    const QString Exact(120, QLatin1Char('x'));
    EXPECT_EQ(JoinCaptions({Exact}), Exact);
    EXPECT_EQ(JoinCaptions({Exact + "y", "z"}), Exact + "y...");
    EXPECT_EQ(JoinCaptions({}), QString());
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

// --- Memo ---------------------------------------------------------------------------------------

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

TEST_F(Fields, MemoLinesRoundTrip) {
    auto* M = new TMemoFld(&Window);
    M->SetText(QStringLiteral("a\n\nb\u00a0c\n"));
    EXPECT_EQ(M->Lines(), (QStringList{"a", "", QStringLiteral("b\u00a0c"), ""}));
    auto* N = new TMemoFld(&Window);
    N->SetLines({"x"});
    N->SetStreamReadVisibleandEnabled(true);
    const QByteArray Bytes = WriteRecord(*M) + Hex("08");
    EXPECT_EQ(ReadRecord(*N, Bytes), Bytes.size() - 1);
    EXPECT_EQ(N->Text(), M->Text());
    EXPECT_THROW(ReadRecord(*N, Hex("02FE")), EReadError);
    EXPECT_EQ(N->Text(), M->Text());
}

TEST_F(Fields, LongTextsAreNotCut) {
    auto* S = new TStringFld(&Window);
    const QString Long(40000, QLatin1Char('L'));
    S->SetText(Long);
    auto* T = new TStringFld(&Window);
    ReadRecord(*T, WriteRecord(*S));
    EXPECT_EQ(T->Text().size(), Long.size());
}

// --- Buttons ------------------------------------------------------------------------------------

TEST_F(Fields, RadioButtonsReadFalseEvenWhenExclusive) {
    auto* A = new TRadioBtnFld(&Window);
    auto* B = new TRadioBtnFld(&Window);
    A->SetChecked(true);
    ReadRecord(*A, Hex("08"
                       "0909"));
    EXPECT_FALSE(A->Checked());
    A->SetChecked(true);
    Node.WriteBool("Value", true);
    B->ReadFromXML(Node);
    EXPECT_TRUE(B->Checked());
    EXPECT_FALSE(A->Checked()) << "siblings still exclude each other";
    EXPECT_EQ(B->GetXMLValueText(Node), QStringLiteral("checked"));
    EXPECT_EQ(A->GetValueText(), QStringLiteral("unchecked"));
}

TEST_F(Fields, CheckBoxValueIsCheckedOnly) {
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
    ReadRecord(*G, Hex("0203"
                       "0909"));
    EXPECT_EQ(G->ItemIndex(), 3);
    EXPECT_EQ(G->GetValueText(), QString());
    EXPECT_FALSE(G->Button(0)->isChecked() || G->Button(1)->isChecked());
    EXPECT_EQ(WriteRecord(*G), Hex("0203"
                                   "0909"));
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

TEST_F(DateTime, ChangesCountToTheMillisecond) {
    F->SetDateTime(Leap);
    F->SetCopyValue();
    EXPECT_FALSE(F->HasChanged());
    F->SetDateTime(Leap.addMSecs(1));
    EXPECT_TRUE(F->HasChanged());
    F->SetDateTime(Leap);
    EXPECT_FALSE(F->HasChanged());
}

TEST_F(DateTime, XmlTextHasMillisecondsAndAcceptsShorterForms) {
    F->SetDateTime(Leap);
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
    const std::vector<const char*> Bad = {
        "0500000000000000"
        "C0FF7F", // NaN
        "0500000000000000"
        "80FF7F", // infinity
        "0500000000000000"
        "803F40",             // 2^64 days
        "15000000000000F87F", // a double NaN
        "04C0BDF0FF",         // -1000000 days, before the year 100
    };
    for (const char* Days : Bad) {
        SCOPED_TRACE(Days);
        EXPECT_THROW(ReadRecord(*F, Hex(Days) + Hex("0909")), EReadError);
        EXPECT_EQ(F->DateTime(), Leap);
    }
    // A plain integer is a whole number of days, as the classic reader takes it.
    ReadRecord(*F, Hex("0202"
                       "0909"));
    EXPECT_EQ(F->DateTime(), QDateTime(QDate(1900, 1, 1), QTime(0, 0)));
}

} // namespace

// Field forms in files: both media, old and new versions of one form, the hooks of a derived
// form, and hostile input.
#include <qxnum/registry.h>
#include <qxnum/widgets/fieldform.h>
#include <qxnum/widgets/fields.h>
#include <qxnum/widgets/numfld.h>
#include <qxnum/widgets/numgrid.h>

#include "dialogrecorder.h"
#include "fieldtest.h"
#include "filerbytes.h"
#include "settingsguard.h"

#include <QBuffer>
#include <QLabel>
#include <QVBoxLayout>
#include <gtest/gtest.h>

#include <random>

using namespace qxnum;
using qxnum::test::Bytes;
using qxnum::test::DialogRecorder;
using qxnum::test::SettingsGuard;

namespace {

template <typename T> T* Add(QObject* Owner, const char* Name) {
    auto* W = new T(qobject_cast<QWidget*>(Owner));
    W->setObjectName(QString::fromLatin1(Name));
    return W;
}

// A numeric field with room for the test values (a new one has the limits 0..0).
TNumFld* NumField(QObject* Owner, const char* Name) {
    auto* F = Add<TNumFld>(Owner, Name);
    F->SetMin(-1e6);
    F->SetMax(1e6);
    return F;
}

// Version 1 of a form: A numeric, B text, C check box.
struct FormV1 : TFieldForm {
    TNumFld* A = NumField(ClientArea(), "A");
    TStringFld* B = Add<TStringFld>(ClientArea(), "B");
    TCheckFld* C = Add<TCheckFld>(ClientArea(), "C");
    FormV1() {
        setObjectName(QStringLiteral("Form2"));
        FormCreate();
    }
};

// Version 2: B removed, C became a text field, D added.
struct FormV2 : TFieldForm {
    TNumFld* A = NumField(ClientArea(), "A");
    TStringFld* C = Add<TStringFld>(ClientArea(), "C");
    TCheckFld* D = Add<TCheckFld>(ClientArea(), "D");
    FormV2() {
        setObjectName(QStringLiteral("Form2"));
        C->setText(QStringLiteral("c2"));
        A->SetValue(7);
        FormCreate();
    }
};

QByteArray V1Stream() {
    Bytes S;
    S.Signature().ListBegin();
    S.Str("TNumFld").Str("A").Ext2p5().Bool(true).Bool(true);
    S.Str("TStringFld").Str("B").Str("hello").Bool(true).Bool(true);
    S.Str("TCheckFld").Str("C").Bool(true).Bool(true).Bool(true);
    S.Str("CustomWriteToStream").ListEnd().EndMarker();
    return S.B;
}

QByteArray V1Xml() {
    return "<Case><Form2>"
           "<INumFld ID=\"A\" ClassName=\"TNumFld\"><Value>2.5</Value></INumFld>"
           "<INumFld ID=\"B\" ClassName=\"TStringFld\"><Value>hello</Value></INumFld>"
           "<INumFld ID=\"C\" ClassName=\"TCheckFld\"><Value>True</Value></INumFld>"
           "</Form2></Case>";
}

QByteArray WriteForm(TFieldForm& F) {
    QBuffer Buf;
    Buf.open(QIODevice::WriteOnly);
    {
        TWriter W(&Buf);
        F.WritetoStream(W);
    }
    return Buf.data();
}

// Reads and returns the reader's position afterwards.
qint64 ReadForm(TFieldForm& F, const QByteArray& Data, bool Warn) {
    QBuffer Buf;
    Buf.setData(Data);
    Buf.open(QIODevice::ReadOnly);
    TReader R(&Buf);
    F.ReadfromStream(R, Warn);
    return R.Position();
}

struct FormIoTest : ::testing::Test {
    SettingsGuard Guard{TFormatSettings::Invariant(), TFormatSettings::Invariant()};
    DialogRecorder Dialogs;
};

const QString Closing =
    QStringLiteral("The data is ignored and will be deleted from config/case XML data.\r\n"
                   "\"Save-as\" to different filename or do not save if you wish to keep the original data.");

TEST_F(FormIoTest, AnOldStreamIsReadIntoTheNewFormWithAndWithoutWarnings) {
    struct Case {
        bool Warn;
        QStringList Messages;
        TReadResultCode Result;
    };
    const Case Cases[] = {
        {true,
         {QStringLiteral(
              "Some fields not found while reading Form2\r\ndue to old model version, model is now upgraded"),
          QStringLiteral(
              "Classes TCheckFld (read) and TStringFld (assigned)\r\nof Field C do not match while "
              "reading FieldForm Form2\r\n(probably old model version)")},
         rrcClassMisMatch},
        {false, {}, rrcUnknownComp},
    };
    const QByteArray Data = V1Stream();
    for (const Case& K : Cases) {
        SCOPED_TRACE(K.Warn);
        Dialogs.Clear();
        FormV2 F;
        EXPECT_EQ(ReadForm(F, Data, K.Warn), Data.size());
        EXPECT_EQ(Dialogs.Messages(), K.Messages);
        EXPECT_EQ(F.ReadResultCode, K.Result);
        EXPECT_EQ(F.A->Value(), 2.5L);
        EXPECT_EQ(F.C->text(), QStringLiteral("c2"));
        EXPECT_FALSE(F.D->isChecked());
    }
}

TEST_F(FormIoTest, AnOldXmlIsReadIntoTheNewFormAndItsStaleElementsDeleted) {
    for (const bool Warn : {true, false}) {
        SCOPED_TRACE(Warn);
        Dialogs.Clear();
        TXmlDocument Doc;
        Doc.LoadFromBytes(V1Xml());
        TXmlNode Node = Doc.Root().NodeByName(QStringLiteral("Form2"));
        FormV2 F;
        F.ReadFromXML(Node, Warn);
        // One message: the first problem (B not found) in its own words, then C's mismatch listed.
        const QStringList Expected{
            QStringLiteral(
                "Field with name \"B\" not found while reading Form2\r\ndue to old model version.\r\n\r\n"
                "Not carried over either:\r\n- C: now another kind of field\r\n\r\n") +
            Closing};
        EXPECT_EQ(Dialogs.Messages(), Warn ? Expected : QStringList());
        EXPECT_EQ(F.ReadResultCode, rrcUnknownComp);
        EXPECT_TRUE(F.VersionUpdated);
        EXPECT_EQ(F.A->Value(), 2.5L);
        EXPECT_EQ(F.C->text(), QStringLiteral("c2"));
        const QList<TXmlNode> Left = Node.NodesByName(QStringLiteral("INumFld"));
        ASSERT_EQ(Left.size(), 1);
        EXPECT_EQ(Left[0].AttributeByName(QStringLiteral("ID")), QStringLiteral("A"));
    }
}

TEST_F(FormIoTest, EachXmlProblemHasItsMessageAndCode) {
    struct Case {
        const char* Element;
        QString Message;
        TReadResultCode Result;
    };
    const QString P = QStringLiteral("(probably old model version).\r\n\r\n") + Closing;
    const Case Cases[] = {
        {"<INumFld ID=\"A\" ClassName=\"TOldFld\"/>",
         QStringLiteral("Class \"TOldFld\" of Field A\r\nnot registered while readingForm2\r\n") + P,
         rrcUnknownClass},
        {"<INumFld ID=\"C\" ClassName=\"TCheckFld\"/>",
         QStringLiteral(
             "Classes \"TCheckFld\" (read) and TStringFld (assigned)\r\nof Field C do not match while "
             "reading Form2\r\n") +
             P,
         rrcClassMisMatch},
        {"<INumFld ClassName=\"TNumFld\"/>",
         QStringLiteral(
             "Field with name \"\" not found while reading Form2\r\ndue to old model version.\r\n\r\n") +
             Closing,
         rrcUnknownComp},
    };
    for (const Case& K : Cases) {
        SCOPED_TRACE(K.Element);
        Dialogs.Clear();
        TXmlDocument Doc;
        Doc.LoadFromBytes(QByteArray("<F>") + K.Element + "</F>");
        FormV2 F;
        F.ReadFromXML(Doc.Root(), true);
        EXPECT_EQ(Dialogs.Messages(), QStringList{K.Message});
        ASSERT_EQ(Dialogs.Count(), 1);
        EXPECT_EQ(Dialogs.Dialogs()[0].DlgType, mtWarning);
        EXPECT_EQ(F.ReadResultCode, K.Result);
        EXPECT_TRUE(F.VersionUpdated);
        EXPECT_EQ(Doc.Root().NodeCount(), 0);
    }
}

// A component that is registered but is no field: the "unknown" problem.
TEST_F(FormIoTest, ARegisteredClassThatIsNoFieldIsUnknownInBothMedia) {
    RegisterClass(QStringLiteral("QWidget"),
                  [](QObject* O) { return new QWidget(qobject_cast<QWidget*>(O)); });
    FormV2 F;
    Add<QWidget>(F.ClientArea(), "Box");
    TXmlDocument Doc;
    Doc.LoadFromBytes("<F><INumFld ID=\"Box\" ClassName=\"QWidget\"/></F>");
    F.ReadFromXML(Doc.Root(), true);
    EXPECT_EQ(
        Dialogs.Messages(),
        QStringList{QStringLiteral("Class QWidget of Field Box\r\nunknown to Form2\r\n(probably old model "
                                   "version).\r\n\r\n") +
                    Closing});
    EXPECT_EQ(F.ReadResultCode, rrcUnknownClass);

    Dialogs.Clear();
    F.EndCode = FieldFormEndCode;
    Bytes S;
    S.Signature().ListBegin().Str("QWidget").Str("Box").Str("TNumFld").Str("A").Ext2p5().Bool(true).Bool(
        true);
    S.ListEnd().EndMarker();
    EXPECT_EQ(ReadForm(F, S.B, true), S.B.size());
    EXPECT_EQ(Dialogs.Messages(),
              QStringList{
                  QStringLiteral("Class QWidget of Field Box\r\nunknown to FieldForm Form2\r\n(probably old "
                                 "model version)")});
    EXPECT_EQ(F.ReadResultCode, rrcUnknownClass);
    EXPECT_EQ(F.A->Value(), 7.0L) << "the read stops at the unknown record";
    UnRegisterClass(QStringLiteral("QWidget"));
}

TEST_F(FormIoTest, AnUnregisteredClassEndsTheReadAtTheEndCode) {
    Bytes S;
    S.Signature().ListBegin();
    S.Str("TNumFld").Str("A").Ext2p5().Bool(true).Bool(true);
    S.Str("TOldFld").Str("X").Int(1);
    S.ListEnd().EndMarker().Raw("tail", 4);
    const qsizetype Marker = S.B.indexOf(",,,,") + 4;
    const qsizetype OldRecord = S.B.indexOf("\x06\x07TOldFld") + 9;
    struct Case {
        TStreamCode EndCode;
        qint64 End;
    };
    // A base form's all-zero EndCode ends the skip after one byte; the written marker after it.
    for (const Case& K : {Case{NullStreamCode, OldRecord + 1}, Case{FieldFormEndCode, Marker}}) {
        Dialogs.Clear();
        FormV2 F;
        F.EndCode = K.EndCode;
        EXPECT_EQ(ReadForm(F, S.B, true), K.End);
        EXPECT_EQ(Dialogs.Messages(),
                  QStringList{QStringLiteral("Class TOldFld of Field A\r\nnot registered while "
                                             "readingForm2\r\n(probably old model version)")});
        EXPECT_EQ(F.ReadResultCode, rrcUnknownClass);
        EXPECT_EQ(F.A->Value(), 2.5L);
    }
}

TEST_F(FormIoTest, ABrokenFieldRecordIsAStreamErrorThatKeepsTheField) {
    FormV2 F;
    F.EndCode = FieldFormEndCode;
    F.D->setChecked(true);
    Bytes S;
    S.Signature().ListBegin();
    S.Str("TNumFld").Str("A").Ext2p5().Bool(true).Bool(true);
    S.Str("TCheckFld").Str("D").Str("yes").Bool(true).Bool(true);
    S.ListEnd().EndMarker();
    EXPECT_EQ(ReadForm(F, S.B, false), S.B.size());
    EXPECT_EQ(Dialogs.Messages(), QStringList{QStringLiteral(
                                      "Error reading Class TCheckFld of Field D\r\nfrom FieldForm Form2")});
    EXPECT_EQ(F.ReadResultCode, rrcStreamError);
    EXPECT_EQ(F.A->Value(), 2.5L);
    EXPECT_TRUE(F.D->isChecked());
}

TEST_F(FormIoTest, StreamsThatAreNoFormStreamsAreStreamErrors) {
    const QByteArray Cases[] = {QByteArray(), QByteArray("TPF"), QByteArray("XXXX\x01\x00,,,,", 10),
                                QByteArray("TPF0\x01\x02\x05", 7)};
    for (const QByteArray& Data : Cases) {
        SCOPED_TRACE(Data.toHex().toStdString());
        Dialogs.Clear();
        FormV2 F;
        ReadForm(F, Data, false);
        EXPECT_EQ(F.ReadResultCode, rrcStreamError);
        ASSERT_GE(Dialogs.Count(), 1);
        EXPECT_TRUE(Dialogs.Messages()[0].startsWith(QStringLiteral("Error reading FieldForm Form2\r\n")));
        EXPECT_EQ(F.A->Value(), 7.0L);
    }
}

// A derived form that keeps data of its own after the fields.
struct NotesForm : TFieldForm {
    TStringFld* Name = Add<TStringFld>(ClientArea(), "Name");
    QString Note;
    int Count = 0;
    bool Fail = false;
    NotesForm() { setObjectName(QStringLiteral("Notes")); }
    void CustomWriteToStream(TWriter& W) override {
        TFieldForm::CustomWriteToStream(W);
        W.WriteString(Note);
        W.WriteInteger(Count);
    }
    void CustomReadFromStream(TReader& R) override {
        if (Fail) throw EReadError(QStringLiteral("no"));
        Note = R.ReadString();
        Count = R.ReadInteger();
    }
    void CustomWriteToXML(TXmlNode Node) override {
        TFieldForm::CustomWriteToXML(Node);
        Node.WriteString(QStringLiteral("Note"), Note);
    }
    void CustomReadFromXML(TXmlNode Node) override {
        TFieldForm::CustomReadFromXML(Node);
        if (Fail) throw EConvertError(QStringLiteral("no"));
        Note = Node.ReadString(QStringLiteral("Note"));
    }
};

TEST_F(FormIoTest, ADerivedFormReadsItsOwnDataAfterTheFields) {
    // Written by hand: the fields, then the hook's tag and the form's own values.
    Bytes S;
    S.Signature().ListBegin().Str("TStringFld").Str("Name").Str("n1").Bool(true).Bool(true);
    S.Str("CustomWriteToStream").Str("remark").Int(42).ListEnd().EndMarker();
    NotesForm F;
    EXPECT_EQ(ReadForm(F, S.B, true), S.B.size());
    EXPECT_EQ(F.Name->text(), QStringLiteral("n1"));
    EXPECT_EQ(F.Note, QStringLiteral("remark"));
    EXPECT_EQ(F.Count, 42);
    EXPECT_EQ(F.ReadResultCode, rrcOk);
    EXPECT_EQ(WriteForm(F), S.B) << "our writer produces the same bytes";

    NotesForm G;
    G.Fail = true;
    G.EndCode = FieldFormEndCode;
    EXPECT_EQ(ReadForm(G, S.B, false), S.B.size());
    EXPECT_EQ(Dialogs.Messages().last(),
              QStringLiteral("Error in CustomReadFromStream in\r\nFieldForm Notes"));
    EXPECT_EQ(G.ReadResultCode, rrcStreamError);
    EXPECT_EQ(G.Name->text(), QStringLiteral("n1"));

    // XML: the hook's node is the form's node; a failing hook speaks and the cleanup still runs.
    TXmlDocument Doc;
    Doc.LoadFromBytes("<Notes><INumFld ID=\"Gone\" ClassName=\"TStringFld\"/><Note>x</Note></Notes>");
    Dialogs.Clear();
    G.ReadFromXML(Doc.Root(), false);
    EXPECT_EQ(Dialogs.Messages(),
              QStringList{QStringLiteral("Error in CustomReadFromXML in\r\nFieldForm Notes")});
    EXPECT_TRUE(G.FormXmlRootNode == Doc.Root());
    EXPECT_TRUE(G.VersionUpdated);
    EXPECT_FALSE(Doc.Root().NodeByName(QStringLiteral("INumFld")));
}

// Every field class, a grid and a frame on one form.
struct AllForm : TFieldForm {
    TNumFld* Num = NumField(ClientArea(), "Num");
    TStringFld* Str = Add<TStringFld>(ClientArea(), "Str");
    TMemoFld* Memo = Add<TMemoFld>(ClientArea(), "Memo");
    TCheckFld* Check = Add<TCheckFld>(ClientArea(), "Check");
    TComboBoxFld* Combo = Add<TComboBoxFld>(ClientArea(), "Combo");
    TDateTimePickerFld* Date = Add<TDateTimePickerFld>(ClientArea(), "Date");
    TNumGrid* Grid = Add<TNumGrid>(ClientArea(), "Grid");
    TStringFld* Hidden = Add<TStringFld>(ClientArea(), "Hidden");
    TFieldFrame* Frame = Add<TFieldFrame>(ClientArea(), "Amb");
    TNumFld* FrameNum = NumField(Frame, "T");
    AllForm() {
        setObjectName(QStringLiteral("All"));
        EndCode = FieldFormEndCode;
        Hidden->SetNoSaveWrite(true);
        Combo->addItems({QStringLiteral("one"), QStringLiteral("two")});
        Grid->SetColCount(3);
        Grid->SetRowCount(4);
        FormCreate();
    }
    void Fill(int K) {
        Num->SetValue(K + 0.25L);
        Str->setText(QStringLiteral("s%1").arg(K));
        Memo->setPlainText(QStringLiteral("a%1\nb").arg(K));
        Check->setChecked(K % 2 != 0);
        Combo->setCurrentIndex(K % 2);
        Date->setDateTime(QDateTime(QDate(2020, 1, 1 + K), QTime(12, 0)));
        Grid->SetCells(1, 2, QString::number(K * 10));
        Hidden->setText(QStringLiteral("h%1").arg(K));
        FrameNum->SetValue(K * 3);
    }
    QStringList Values() {
        QStringList L;
        for (INumFld* F :
             std::initializer_list<INumFld*>{Num, Str, Memo, Check, Combo, Date, Grid, Hidden, FrameNum})
            L << F->GetValueText();
        return L;
    }
};

TEST_F(FormIoTest, EveryFieldClassRoundTripsInBothMedia) {
    AllForm Source;
    Source.Fill(1);
    const QStringList Written = Source.Values();

    AllForm FromStream;
    FromStream.Fill(2);
    const QByteArray Data = WriteForm(Source);
    EXPECT_EQ(ReadForm(FromStream, Data, true), Data.size());
    EXPECT_EQ(FromStream.ReadResultCode, rrcOk);
    QStringList Expected = Written;
    Expected[7] = QStringLiteral("h2");                // not saved
    Expected[8] = FromStream.FrameNum->GetValueText(); // frames are not in streams
    EXPECT_EQ(FromStream.Values(), Expected);
    EXPECT_EQ(FromStream.FrameNum->Value(), 6.0L);
    EXPECT_LT(Data.indexOf("Hidden"), 0);

    AllForm FromXml;
    FromXml.Fill(2);
    TXmlDocument Doc;
    Source.WriteToXML(Doc.CreateRoot(QStringLiteral("All")));
    EXPECT_TRUE(Doc.Root().NodeByAttributeValue(QStringLiteral("INumFld"), QStringLiteral("ID"),
                                                QStringLiteral("Amb.T")));
    EXPECT_FALSE(Doc.Root().NodeByAttributeValue(QStringLiteral("INumFld"), QStringLiteral("ID"),
                                                 QStringLiteral("Hidden")));
    FromXml.ReadFromXML(Doc.Root(), true);
    EXPECT_EQ(Dialogs.Count(), 0) << Dialogs.Messages().join(QStringLiteral(" | ")).toStdString();
    Expected[8] = Written[8];
    EXPECT_EQ(FromXml.Values(), Expected);
    EXPECT_FALSE(FromXml.VersionUpdated);
    EXPECT_EQ(
        Doc.Root()
            .NodeByAttributeValue(QStringLiteral("INumFld"), QStringLiteral("ID"), QStringLiteral("Grid"))
            .AttributeByName(QStringLiteral("ClassName")),
        QStringLiteral("TNumGrid"));
}

TEST_F(FormIoTest, WritingTwiceUpdatesInPlaceAndLeavesForeignElementsAlone) {
    AllForm F;
    F.Fill(1);
    TXmlDocument Doc;
    Doc.LoadFromBytes("<All><Other a=\"1\">keep</Other><INumFld ID=\"Foreign\">x</INumFld></All>");
    F.WriteToXML(Doc.Root());
    const QByteArray First = Doc.SaveToBytes();
    const int Count = Doc.Root().NodeCount();
    F.Fill(3);
    F.WriteToXML(Doc.Root());
    EXPECT_EQ(Doc.Root().NodeCount(), Count);
    EXPECT_NE(Doc.SaveToBytes(), First);
    EXPECT_EQ(Doc.Root().NodeByName(QStringLiteral("Other")).ValueAsString(), QStringLiteral("keep"));
    EXPECT_TRUE(Doc.Root().NodeByAttributeValue(QStringLiteral("INumFld"), QStringLiteral("ID"),
                                                QStringLiteral("Foreign")));
    EXPECT_EQ(Doc.Root().Nodes(0).Name(), QStringLiteral("Other")) << "the order of what was there stays";
}

TEST_F(FormIoTest, AFieldWithTextOfTheWrongTypeKeepsItsValueAndTheReadGoesOn) {
    FormV2 F;
    TXmlDocument Doc;
    Doc.LoadFromBytes("<F><INumFld ID=\"D\" ClassName=\"TCheckFld\"><Value>perhaps</Value></INumFld>"
                      "<INumFld ID=\"A\" ClassName=\"TNumFld\"><Value>2.5</Value></INumFld>"
                      "<INumFld ID=\"C\" ClassName=\"TStringFld\"><Visible>x</Visible></INumFld></F>");
    F.C->SetStreamReadVisibleandEnabled(true);
    F.ReadFromXML(Doc.Root(), false);
    ASSERT_EQ(Dialogs.Count(), 1);
    EXPECT_TRUE(Dialogs.Messages()[0].startsWith(QStringLiteral("Error reading Field D from Form2\r\n")));
    EXPECT_EQ(F.ReadResultCode, rrcXmlError);
    EXPECT_FALSE(F.D->isChecked());
    EXPECT_EQ(F.A->Value(), 2.5L);
    EXPECT_FALSE(F.VersionUpdated) << "a field's own element is not deleted";
}

// A numeric field is stored under its caption; when no object name matches, the form looks for
// the field by its ID string: in XML, in a frame, in streams and in FindNumFld.
TEST_F(FormIoTest, AFieldIsFoundByItsIdStringWhenNoNameMatches) {
    struct Form : TFieldForm {
        TFieldFrame* Frame = Add<TFieldFrame>(ClientArea(), "Losses");
        TNumFld* P = NumField(ClientArea(), "Pout");
        TNumFld* L = NumField(Frame, "Loss");
        TNumFld* Q = NumField(ClientArea(), "Qnew");
        Form() {
            setObjectName(QStringLiteral("Form3"));
            P->EditLabel()->SetCaption(QStringLiteral("Outlet pressure"));
            L->EditLabel()->SetCaption(QStringLiteral("Inlet loss"));
            Q->SetCustomIDstring(QStringLiteral("Qold"));
            FormCreate();
        }
    };
    Form Src;
    Src.P->SetValue(3.5L);
    Src.L->SetValue(1.25L);
    TXmlDocument Doc;
    Src.WriteToXML(Doc.CreateRoot(QStringLiteral("Form3")));
    QStringList IDs;
    for (const TXmlNode& E : Doc.Root().NodesByName(QStringLiteral("INumFld")))
        IDs << E.AttributeByName(QStringLiteral("ID"));
    EXPECT_EQ(IDs, (QStringList{"Losses.Inlet loss", "Outlet pressure", "Qold"}));
    Form Dst;
    Dst.ReadFromXML(Doc.Root(), true);
    EXPECT_EQ(Dst.P->Value(), 3.5L);
    EXPECT_EQ(Dst.L->Value(), 1.25L);
    EXPECT_FALSE(Dst.VersionUpdated);
    EXPECT_EQ(Doc.Root().NodeCount(), 3);

    // A stream of the older form, when Qnew was called Qold.
    Bytes S;
    S.Signature().ListBegin().Str("TNumFld").Str("Qold").Ext2p5().Bool(true).Bool(true);
    S.Str("CustomWriteToStream").ListEnd().EndMarker();
    EXPECT_EQ(ReadForm(Dst, S.B, true), S.B.size());
    EXPECT_EQ(Dst.Q->Value(), 2.5L);
    EXPECT_EQ(Dst.ReadResultCode, rrcOk);
    EXPECT_EQ(Dialogs.Count(), 0);

    EXPECT_EQ(Dst.FindNumFld(QStringLiteral("Outlet pressure")), Dst.P);
    EXPECT_EQ(Dst.FindNumFld(QStringLiteral("Losses.Inlet loss")), Dst.L);
    EXPECT_EQ(Dst.FindNumFld(QStringLiteral("Qold")), Dst.Q);
}

// Version 3 of the form: B renamed to Text (its label reads "Remark"), C removed.
struct FormV3 : TFieldForm {
    TNumFld* A = NumField(ClientArea(), "A");
    TStringFld* Text = Add<TStringFld>(ClientArea(), "Text");
    FormV3() {
        setObjectName(QStringLiteral("Form2"));
        (new QLabel(QStringLiteral("&Remark:"), ClientArea()))->setBuddy(Text);
        AddFieldAlias(QStringLiteral("B"), QStringLiteral("Text"));
        FormCreate();
    }
};

TEST_F(FormIoTest, AnAliasCarriesARenamedValueOverInBothMedia) {
    const QString CarriedOver = QStringLiteral("Carried over to renamed fields:\r\n- \"B\" as Remark");
    {
        FormV3 F;
        TXmlDocument Doc;
        Doc.LoadFromBytes(V1Xml());
        TXmlNode Node = Doc.Root().NodeByName(QStringLiteral("Form2"));
        F.ReadFromXML(Node, true);
        EXPECT_EQ(F.Text->text(), QStringLiteral("hello"));
        EXPECT_EQ(
            Dialogs.Messages(),
            QStringList{QStringLiteral("Field with name \"C\" not found while reading Form2\r\ndue to old "
                                       "model version.\r\n\r\n") +
                        CarriedOver + QStringLiteral("\r\n\r\n") + Closing});
        EXPECT_TRUE(F.VersionUpdated);
        // Saving brings the file up to date: the old ID is gone, the new one written.
        F.WriteToXML(Node);
        QStringList IDs;
        for (const TXmlNode& E : Node.NodesByName(QStringLiteral("INumFld")))
            IDs << E.AttributeByName(QStringLiteral("ID"));
        EXPECT_EQ(IDs, (QStringList{"A", "Text"}));

        // A file with elements of both IDs: the new one counts, the old one is stale.
        Dialogs.Clear();
        Node.NodeNew(QStringLiteral("INumFld"))
            .WriteAttributeString(QStringLiteral("ID"), QStringLiteral("B"));
        Node.NodesByName(QStringLiteral("INumFld"))
            .back()
            .WriteAttributeString(QStringLiteral("ClassName"), QStringLiteral("TStringFld"));
        Node.NodesByName(QStringLiteral("INumFld"))
            .back()
            .WriteString(QStringLiteral("Value"), QStringLiteral("old"));
        F.ReadFromXML(Node, false);
        EXPECT_EQ(F.Text->text(), QStringLiteral("hello"));
        EXPECT_EQ(Node.NodeCount(), 2);
    }
    {
        Dialogs.Clear();
        FormV3 F;
        const QByteArray Data = V1Stream();
        EXPECT_EQ(ReadForm(F, Data, true), Data.size());
        EXPECT_EQ(F.Text->text(), QStringLiteral("hello"));
        EXPECT_EQ(F.A->Value(), 2.5L);
        EXPECT_EQ(Dialogs.Messages(),
                  (QStringList{QStringLiteral("Some fields not found while reading Form2\r\ndue to old model "
                                              "version, model is now upgraded"),
                               QStringLiteral("Values carried over to renamed fields while reading FieldForm "
                                              "Form2\r\n(older model version):\r\n- \"B\" as Remark")}));
    }
}

TEST_F(FormIoTest, FindNumFldLooksIntoFramesWithoutComparingTheFrameName) {
    AllForm F;
    struct Case {
        const char* ID;
        QObject* Expected;
    };
    const Case Cases[] = {{"Num", F.Num},          {"T", F.FrameNum}, {"Amb.T", F.FrameNum},
                          {"Other.T", F.FrameNum}, {"num", nullptr},  {"Amb.Num", nullptr},
                          {"", nullptr},           {"Amb", nullptr},  {"OKbtn", nullptr}};
    for (const Case& K : Cases)
        EXPECT_EQ(F.FindNumFld(QString::fromLatin1(K.ID)), K.Expected) << K.ID;
}

// Truncations at every length: a stream error or a complete read, and every field either read or
// exactly as it was; random mutations never crash.
TEST_F(FormIoTest, TruncatedAndMutatedStreamsNeverCrashAndLeaveFieldsReadOrAsTheyWere) {
    AllForm Source;
    Source.Fill(1);
    const QByteArray Data = WriteForm(Source);
    const QStringList New = Source.Values();
    AllForm F;
    F.Fill(2);
    const QStringList Old = F.Values();
    const QByteArray OldData = WriteForm(F);
    for (qsizetype Len = 0; Len < Data.size(); Len += 3) {
        ReadForm(F, OldData, false); // back to the old values
        Dialogs.Clear();
        ReadForm(F, Data.left(Len), false);
        EXPECT_EQ(F.ReadResultCode, rrcStreamError) << Len;
        const QStringList Now = F.Values();
        for (qsizetype I = 0; I < Now.size(); ++I)
            EXPECT_TRUE(Now[I] == Old[I] || Now[I] == New[I]) << "length " << Len << " field " << I;
    }
    std::mt19937 Rng(12);
    for (int Round = 0; Round < 300; ++Round) {
        QByteArray M = Data;
        const int Changes = 1 + static_cast<int>(Rng() % 4);
        for (int K = 0; K < Changes; ++K)
            M[static_cast<qsizetype>(Rng() % static_cast<unsigned>(M.size()))] = static_cast<char>(Rng());
        Dialogs.Clear();
        ReadForm(F, M, Round % 2 == 0);
        EXPECT_LE(static_cast<int>(F.ReadResultCode), static_cast<int>(rrcXmlError));
    }
}

TEST_F(FormIoTest, MutatedXmlNeverCrashesAndLeavesTheDocumentLoadable) {
    AllForm Source;
    Source.Fill(1);
    TXmlDocument Doc;
    Source.WriteToXML(Doc.CreateRoot(QStringLiteral("All")));
    const QByteArray Text = Doc.SaveToBytes();
    std::mt19937 Rng(5);
    AllForm F;
    int Loaded = 0;
    for (int Round = 0; Round < 300; ++Round) {
        QByteArray M = Text;
        M[static_cast<qsizetype>(Rng() % static_cast<unsigned>(M.size()))] = "<>\"=/ aZ9.&;"[Rng() % 12];
        TXmlDocument D;
        try {
            D.LoadFromBytes(M);
        } catch (const EXmlError&) {
            continue;
        }
        ++Loaded;
        Dialogs.Clear();
        F.ReadFromXML(D.Root(), Round % 2 == 0);
        TXmlDocument Again;
        EXPECT_NO_THROW(Again.LoadFromBytes(D.SaveToBytes()));
    }
    EXPECT_GT(Loaded, 100) << "the mutations should mostly keep the document well-formed";
}

} // namespace

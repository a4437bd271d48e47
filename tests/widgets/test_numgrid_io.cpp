// The grid's files: XML elements and the stream record, the reading flags, the skip rules, and
// hostile input that must raise and leave the grid as it was.
#include <qxnum/widgets/numgrid.h>

#include "dialogrecorder.h"
#include "filerbytes.h"
#include "settingsguard.h"

#include <QBuffer>
#include <QWidget>
#include <gtest/gtest.h>

#include <random>

using namespace qxnum;
using qxnum::test::Bytes;
using qxnum::test::DialogRecorder;
using qxnum::test::SettingsGuard;

namespace {

QByteArray WriteGrid(TNumGrid& G) {
    QBuffer Buf;
    Buf.open(QIODevice::WriteOnly);
    {
        TWriter W(&Buf);
        G.WritetoStream(W);
    }
    return Buf.data();
}

void ReadGrid(TNumGrid& G, const QByteArray& Data, qint64* End = nullptr) {
    QBuffer Buf;
    Buf.setData(Data);
    Buf.open(QIODevice::ReadOnly);
    TReader R(&Buf);
    G.ReadfromStream(R);
    if (End) *End = R.Position();
}

struct GridIoTest : ::testing::Test {
    SettingsGuard Guard{TFormatSettings::Invariant(), TFormatSettings::Invariant()};
    DialogRecorder Dialogs;
    QWidget Form;
    TNumGrid* Grid = new TNumGrid(&Form);
    GridIoTest() {
        Form.setObjectName(QStringLiteral("F"));
        Grid->setObjectName(QStringLiteral("G"));
    }
};

// A 3 x 3 grid: a title row, two data rows; columns 0 and 2 string columns, column 2 in Imperial.
QByteArray HandMadeStream() {
    Bytes S;
    S.Int(3).Int(3);
    S.Int(0).Int(0).Int(1);
    S.Bool(true).Bool(false).Bool(true);
    S.Str("t0").Str("t1").Str("t2");
    S.Str("a").Str("1.5").Str("x");
    S.Str("b").Str("2.5").Str("y");
    S.Bool(true).Bool(true);
    return S.B;
}

TEST_F(GridIoTest, AHandMadeStreamIsReadAndWrittenBackByteForByte) {
    Grid->SetColFormats({});
    qint64 End = 0;
    ReadGrid(*Grid, HandMadeStream(), &End);
    EXPECT_EQ(End, HandMadeStream().size());
    EXPECT_EQ(Grid->RowCount(), 3);
    EXPECT_EQ(Grid->ColCount(), 3);
    EXPECT_EQ(Grid->Cells(2, 2), QStringLiteral("y"));
    EXPECT_EQ(Grid->Cells(1, 1), QStringLiteral("1.5"));
    EXPECT_EQ(Grid->Columns()->Items(2)->UnitSystem(), usImperial) << "stored without conversion";
    EXPECT_TRUE(Grid->Columns()->Items(2)->StringCol());
    EXPECT_FALSE(Grid->HasChanged()) << "a stream read takes the copy value";
    // The title row is the grid's own, so write the stream's titles back before comparing.
    for (int C = 0; C < 3; ++C)
        Grid->SetCells(C, 0, QStringLiteral("t%1").arg(C));
    EXPECT_EQ(WriteGrid(*Grid).toHex(' ').toStdString(), HandMadeStream().toHex(' ').toStdString());
}

TEST_F(GridIoTest, StreamRoundTripAndSkip) {
    Grid->SetColCount(4);
    Grid->SetRowCount(6);
    Grid->Columns()->Items(3)->SetStringCol(true);
    Grid->SetCells(3, 4, QStringLiteral("Ωmega ; text"));
    Grid->Columns()->Items(1)->SetParType(ptPress);
    Grid->SetDValues(1, 2, 250000);
    const QByteArray Data = WriteGrid(*Grid) + Bytes().Str("after").B;
    TNumGrid Back;
    Back.SetColFormats({});
    Back.Columns()->Items(1)->SetParType(ptPress);
    ReadGrid(Back, Data);
    for (int R = 1; R < 6; ++R)
        for (int C = 0; C < 4; ++C)
            EXPECT_EQ(Back.Cells(C, R), Grid->Cells(C, R)) << C << "," << R;

    // Skipping reads the counts, the unit systems, every cell and two booleans, but not the run of
    // string flags: on a grid record it stops inside the flags, as older readers did.
    QBuffer Buf;
    Buf.setData(Bytes().Int(1).Int(2).Int(0).Int(0).Str("a").Str("b").Bool(true).Bool(false).Str("z").B);
    Buf.open(QIODevice::ReadOnly);
    TReader R(&Buf);
    Grid->SkipfromStream(R);
    EXPECT_EQ(R.ReadString(), QStringLiteral("z"));
}

TEST_F(GridIoTest, StreamReadingFlags) {
    // Fewer rows kept than stored: one string is skipped per further row, not one row's worth.
    Grid->SetColCount(2);
    Grid->SetRowCount(2);
    Grid->SetIgnoreRowCountRead(true);
    Grid->SetColFormats({});
    const QByteArray Data = Bytes()
                                .Int(4)
                                .Int(2)
                                .Int(0)
                                .Int(0)
                                .Bool(false)
                                .Bool(false)
                                .Str("h0")
                                .Str("h1")
                                .Str("a")
                                .Str("1")
                                .Str("r2")
                                .Str("r3")
                                .Bool(true)
                                .Bool(true)
                                .B;
    qint64 End = 0;
    ReadGrid(*Grid, Data, &End);
    EXPECT_EQ(Grid->RowCount(), 2);
    EXPECT_EQ(Grid->Cells(1, 1), QStringLiteral("1"));
    EXPECT_EQ(End, Data.size());

    // Titles from the stream: the title strings are not read at all.
    TNumGrid T;
    T.SetReadColTitlesFromStream(true);
    T.SetColFormats({});
    const QByteArray Titles = Bytes().Int(2).Int(1).Int(0).Bool(true).Str("only").Bool(true).Bool(false).B;
    ReadGrid(T, Titles);
    EXPECT_EQ(T.Cells(0, 1), QStringLiteral("only"));
    EXPECT_EQ(T.RowCount(), 2);

    // Visible and Enabled only with the flag.
    TNumGrid V;
    V.SetColFormats({});
    V.SetStreamReadVisibleandEnabled(true);
    ReadGrid(V, Bytes().Int(1).Int(1).Int(0).Bool(false).Str("t").Bool(true).Bool(false).B);
    EXPECT_FALSE(V.isEnabled());
}

TEST_F(GridIoTest, ColFormatsMarkStringColumnsUnlessTheStreamSaysOtherwise) {
    Grid->SetColCount(2);
    Grid->SetColFormats({QStringLiteral("string"), QStringLiteral("###0.00")});
    ReadGrid(*Grid, Bytes().Int(1).Int(2).Int(0).Int(0).Str("a").Str("b").Bool(true).Bool(true).B);
    EXPECT_TRUE(Grid->Columns()->Items(0)->StringCol());
    EXPECT_FALSE(Grid->Columns()->Items(1)->StringCol());
}

TEST_F(GridIoTest, XmlLayout) {
    Grid->SetColCount(3);
    Grid->SetRowCount(12);
    Grid->Columns()->Items(1)->SetParType(ptPress);
    Grid->Columns()->Items(1)->Title()->SetCaption(QStringLiteral("Pressure"));
    Grid->Columns()->Items(2)->SetStringCol(true);
    Grid->SetCells(2, 3, QStringLiteral("a;b"));
    Grid->SetStoreParTypes(true);
    TXmlDocument Doc;
    TXmlNode Node = Doc.CreateRoot(QStringLiteral("INumFld"));
    Grid->WriteToXML(Node);
    EXPECT_EQ(Node.ReadString(QStringLiteral("Delimiter")), QStringLiteral(";"));
    EXPECT_EQ(Node.ReadString(QStringLiteral("Colcount")), QStringLiteral("3"));
    EXPECT_EQ(Node.ReadString(QStringLiteral("Rowcount")), QStringLiteral("12"));
    const TXmlNode Cols = Node.NodeByName(QStringLiteral("Cols"));
    EXPECT_EQ(Cols.ReadString(QStringLiteral("Units")), QStringLiteral("usSI;usSI;usSI"));
    EXPECT_EQ(Cols.ReadString(QStringLiteral("StringCols")), QStringLiteral("False;False;True"));
    EXPECT_EQ(Cols.ReadString(QStringLiteral("ParTypes")), QStringLiteral("ptNone;ptPress;ptNone"));
    const TXmlNode Rows = Node.NodeByName(QStringLiteral("Rows"));
    ASSERT_EQ(Rows.NodeCount(), 12);
    EXPECT_EQ(Rows.Nodes(0).Name(), QStringLiteral("Row00"));
    EXPECT_EQ(Rows.Nodes(11).Name(), QStringLiteral("Row11"));
    EXPECT_TRUE(Rows.Nodes(0).ValueAsString().contains(QStringLiteral("Pressure\r\n[bar]")));
    EXPECT_TRUE(Doc.SaveToBytes().contains("<Row00>Title 0,1&#13;\nTitle 0,2;Pressure&#13;\n[bar];"));
    EXPECT_TRUE(Rows.Nodes(3).ValueAsString().endsWith(QStringLiteral(";ab")));
    EXPECT_FALSE(Grid->XmlValueChanged(Node));
    Grid->SetCells(1, 5, QStringLiteral("9"));
    EXPECT_TRUE(Grid->XmlValueChanged(Node));
    Grid->WriteToXML(Node);
    EXPECT_EQ(Node.NodeByName(QStringLiteral("Rows")).NodeCount(), 12) << "rows are written afresh";

    TNumGrid Small;
    Small.SetRowCount(9);
    TXmlDocument D2;
    Small.WriteToXML(D2.CreateRoot(QStringLiteral("x")));
    EXPECT_EQ(D2.Root().NodeByName(QStringLiteral("Rows")).Nodes(8).Name(), QStringLiteral("Row8"));
}

TEST_F(GridIoTest, XmlReadTakesRowNamesAndRawColumnProperties) {
    TXmlDocument Doc;
    Doc.LoadFromString(
        QStringLiteral("<g><Colcount>3</Colcount><Rowcount>4</Rowcount>"
                       "<Cols><Units>usSI;usImperial;usSI</Units><StringCols>False;False;True"
                       "</StringCols></Cols><Rows><Row1>a;1;x</Row1><Row2>b</Row2></Rows></g>"));
    Grid->Columns()->Items(1)->SetParType(ptPress);
    Grid->SetCopyValue();
    Grid->ReadFromXML(Doc.Root());
    EXPECT_EQ(Grid->ColCount(), 3);
    EXPECT_EQ(Grid->RowCount(), 4);
    EXPECT_EQ(Grid->Cells(1, 1), QStringLiteral("1"));
    EXPECT_EQ(Grid->Cells(2, 1), QStringLiteral("x"));
    EXPECT_EQ(Grid->Cells(0, 2), QStringLiteral("b"));
    EXPECT_EQ(Grid->Cells(1, 2), QString()) << "a short row leaves its other cells empty";
    EXPECT_EQ(Grid->Columns()->Items(1)->UnitSystem(), usImperial);
    EXPECT_FALSE(Grid->Columns()->Items(1)->UnitSystemSet()) << "raw field, not the setter";
    EXPECT_TRUE(Grid->Columns()->Items(2)->StringCol());
    EXPECT_TRUE(Grid->HasChanged()) << "an XML read takes no copy value";

    TNumGrid Titles;
    Titles.SetReadColTitlesFromStream(true);
    TXmlDocument T;
    // The line break as a reference, and as the characters of a reference.
    T.LoadFromString(
        QStringLiteral("<g><Rows><Row0>a;Pressure&#13;&#10;[bar];T&amp;#13;&amp;#10;[K]</Row0></Rows></g>"));
    Titles.ReadFromXML(T.Root());
    EXPECT_EQ(Titles.Columns()->Items(1)->Title()->Caption(), QStringLiteral("Pressure\r\n[bar]"));
    EXPECT_EQ(Titles.Columns()->Items(2)->Title()->Caption(), QStringLiteral("T\r\n[K]"));
}

TEST_F(GridIoTest, BadXmlRaisesAndLeavesTheGridAsItWas) {
    Grid->SetCells(1, 1, QStringLiteral("7"));
    const char* Cases[] = {
        "<g><Colcount>x</Colcount></g>",
        "<g><Rowcount>-4</Rowcount></g>",
        "<g><Colcount>100000</Colcount><Rowcount>100000</Rowcount></g>",
        "<g><Rows><RowX>1</RowX></Rows></g>",
        "<g><Rows><Row99>1</Row99></Rows></g>",
        "<g><Rows><Row-1>1</Row-1></Rows></g>",
        "<g><Cols><StringCols>maybe</StringCols></Cols><Rowcount>2</Rowcount></g>",
    };
    for (const char* Xml : Cases) {
        TXmlDocument Doc;
        Doc.LoadFromString(QString::fromLatin1(Xml));
        EXPECT_THROW(Grid->ReadFromXML(Doc.Root()), EConvertError) << Xml;
        EXPECT_EQ(Grid->RowCount(), 5) << Xml;
        EXPECT_EQ(Grid->Cells(1, 1), QStringLiteral("7")) << Xml;
    }
    EXPECT_EQ(Grid->GetXMLValueText(TXmlNode()), QString());
}

TEST_F(GridIoTest, HostileStreamsEitherReadOrRaise) {
    const QByteArray Good = HandMadeStream();
    const QByteArray Bad[] = {
        Bytes().Int(-1).Int(2).B,
        QByteArray("\x04\xff\xff\xff\x7f\x04\xff\xff\xff\x7f", 10), // 2^31 - 1 rows and columns
        Bytes().Int(1).Int(1).Int(7).B,
        Bytes().Int(2).Int(2).Str("x").B,
        Good.left(Good.size() - 3),
    };
    for (const QByteArray& B : Bad) {
        TNumGrid G;
        G.SetCells(1, 1, QStringLiteral("keep"));
        EXPECT_THROW(ReadGrid(G, B), EReadError) << B.toHex().toStdString();
        EXPECT_EQ(G.RowCount(), 5);
        EXPECT_EQ(G.Cells(1, 1), QStringLiteral("keep"));
        EXPECT_FALSE(G.ReadingFromStream());
    }
    // Random mutations: every read either succeeds or raises one of the documented errors.
    std::mt19937 Rng(7);
    for (int I = 0; I < 400; ++I) {
        QByteArray M = Good;
        const auto Size = static_cast<unsigned>(M.size());
        for (int K = 0; K < 3; ++K)
            M[static_cast<int>(Rng() % Size)] = static_cast<char>(Rng());
        M.truncate(static_cast<int>(Rng() % (Size + 1)));
        TNumGrid G;
        G.SetColFormats({});
        try {
            ReadGrid(G, M);
        } catch (const EReadError&) {
        }
    }
}

} // namespace

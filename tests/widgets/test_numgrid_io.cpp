// The grid's files: XML elements and the stream record, the reading flags, the skip rules, and
// hostile input that must raise and leave the grid as it was.
#include <qxnum/widgets/numgrid.h>

#include "dialogrecorder.h"
#include "fieldtest.h"
#include "filerbytes.h"
#include "settingsguard.h"

#include <qxnum/widgets/fieldform.h>
#include <qxnum/widgets/fields.h>

#include <QBuffer>
#include <QFile>
#include <QUndoStack>
#include <QWidget>
#include <gtest/gtest.h>

#include <functional>
#include <random>

using namespace qxnum;
using qxnum::test::Bytes;
using qxnum::test::DialogRecorder;
using qxnum::test::ReadRecord;
using qxnum::test::SettingsGuard;
using qxnum::test::WriteRecord;

namespace {

void ReadGrid(TNumGrid& G, const QByteArray& Data, qint64* End = nullptr) {
    const qint64 At = ReadRecord(G, Data);
    if (End) *End = At;
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
    EXPECT_EQ(WriteRecord(*Grid).toHex(' ').toStdString(), HandMadeStream().toHex(' ').toStdString());
}

TEST_F(GridIoTest, StreamRoundTripAndSkip) {
    Grid->SetColCount(4);
    Grid->SetRowCount(6);
    Grid->Columns()->Items(3)->SetStringCol(true);
    Grid->SetCells(3, 4, QStringLiteral("Ωmega ; text"));
    Grid->Columns()->Items(1)->SetParType(ptPress);
    Grid->SetDValues(1, 2, 250000);
    const QByteArray Data = WriteRecord(*Grid) + Bytes().Str("after").B;
    TNumGrid Back;
    Back.SetColFormats({});
    Back.Columns()->Items(1)->SetParType(ptPress);
    ReadGrid(Back, Data);
    for (int R = 1; R < 6; ++R)
        for (int C = 0; C < 4; ++C)
            EXPECT_EQ(Back.Cells(C, R), Grid->Cells(C, R)) << C << "," << R;

    // A record without string flags (older writers) is skipped as well as one with them.
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
        "<g><Colcount>16385</Colcount><Rowcount>1</Rowcount></g>", // within the cells, too many columns
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
        Bytes().Int(0).Int(9'000'000).B, // no rows: within the cells, too many columns
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

// Grid set-ups that writer and reader share (Shape) and the content only the writer has (Fill).
struct TSetUp {
    const char* Name;
    std::function<void(TNumGrid&)> Shape;
    std::function<void(TNumGrid&)> Fill;
};

const std::vector<TSetUp>& SetUps() {
    static const std::vector<TSetUp> List = {
        {"5 x 5 as made", [](TNumGrid&) {}, [](TNumGrid& G) { G.SetDValues(2, 3, -2.5); }},
        {"no rows", [](TNumGrid& G) { G.SetRowCount(0); }, [](TNumGrid&) {}},
        {"no columns", [](TNumGrid& G) { G.SetColCount(0); }, [](TNumGrid&) {}},
        {"no rows, no columns",
         [](TNumGrid& G) {
             G.SetRowCount(0);
             G.SetColCount(0);
         },
         [](TNumGrid&) {}},
        {"no data rows, string flags", [](TNumGrid& G) { G.SetRowCount(1); },
         [](TNumGrid& G) { G.Columns()->Items(3)->SetStringCol(true); }},
        {"string, check-box and Imperial columns, cells without numbers",
         [](TNumGrid& G) {
             G.SetColCount(4);
             G.Columns()->Items(1)->SetParType(ptPress);
         },
         [](TNumGrid& G) {
             G.Columns()->Items(1)->SetUnitSystem(usImperial);
             G.Columns()->Items(2)->SetStringCol(true);
             G.Columns()->Items(3)->SetCheckBoxCol(true);
             G.SetDValues(1, 1, 250000);
             G.SetCells(1, 2, QStringLiteral("abc"));
             G.SetCells(1, 3, QString());
             G.SetCells(2, 1, QStringLiteral("two\r\nlines"));
             G.SetCells(3, 1, QStringLiteral("TRUE"));
         }},
    };
    return List;
}

// Every grid reads back what it wrote, in both media, and the reader ends where the record ends:
// in a form, the fields after the grid are read.
TEST_F(GridIoTest, EveryGridReadsBackItsOwnOutputInBothMedia) {
    for (const TSetUp& U : SetUps()) {
        for (const bool Xml : {false, true}) {
            SCOPED_TRACE(std::string(U.Name) + (Xml ? " / XML" : " / stream"));
            TNumGrid Source;
            U.Shape(Source);
            U.Fill(Source);
            TNumGrid Back;
            U.Shape(Back);
            Back.SetColFormats({});
            if (Xml) {
                TXmlDocument Doc;
                Source.WriteToXML(Doc.CreateRoot(QStringLiteral("g")));
                ASSERT_NO_THROW(Back.ReadFromXML(Doc.Root()));
            } else {
                const QByteArray Data = WriteRecord(Source) + Bytes().Str("next").B;
                QBuffer Buf;
                Buf.setData(Data);
                Buf.open(QIODevice::ReadOnly);
                TReader R(&Buf);
                ASSERT_NO_THROW(Back.ReadfromStream(R));
                EXPECT_EQ(R.ReadString(), QStringLiteral("next"));
            }
            ASSERT_EQ(Back.RowCount(), Source.RowCount());
            ASSERT_EQ(Back.ColCount(), Source.ColCount());
            for (int R = Source.FixedRows(); R < Source.RowCount(); ++R)
                EXPECT_EQ(Back.Rows(R), Source.Rows(R)) << "row " << R;
            for (int C = 0; C < Source.ColCount(); ++C) {
                EXPECT_EQ(Back.Columns()->Items(C)->UnitSystem(), Source.Columns()->Items(C)->UnitSystem())
                    << C;
                EXPECT_EQ(Back.Columns()->Items(C)->StringCol(), Source.Columns()->Items(C)->StringCol())
                    << C;
            }
        }
    }
}

// Skipping a grid's record consumes exactly what it wrote, string flags included, so a form that
// no longer has the grid goes on with the next field.
TEST_F(GridIoTest, SkipConsumesTheWholeRecord) {
    for (const TSetUp& U : SetUps()) {
        SCOPED_TRACE(U.Name);
        TNumGrid Source;
        U.Shape(Source);
        U.Fill(Source);
        const QByteArray Record = WriteRecord(Source);
        EXPECT_EQ(ReadRecord(*Grid, Record + Bytes().Str("next").B, true), Record.size());
    }

    struct WithGrid : TFieldForm {
        TNumGrid* G = new TNumGrid(ClientArea());
        TStringFld* After = new TStringFld(ClientArea());
        WithGrid() {
            setObjectName(QStringLiteral("Case"));
            G->setObjectName(QStringLiteral("G"));
            G->Columns()->Items(2)->SetStringCol(true);
            After->setObjectName(QStringLiteral("After"));
            After->setText(QStringLiteral("kept"));
        }
    };
    struct WithoutGrid : TFieldForm {
        TStringFld* After = new TStringFld(ClientArea());
        WithoutGrid() {
            setObjectName(QStringLiteral("Case"));
            After->setObjectName(QStringLiteral("After"));
        }
    };
    WithGrid Old;
    QBuffer Buf;
    Buf.open(QIODevice::WriteOnly);
    {
        TWriter W(&Buf);
        Old.WritetoStream(W);
    }
    WithoutGrid New;
    QBuffer In;
    In.setData(Buf.data());
    In.open(QIODevice::ReadOnly);
    TReader R(&In);
    New.ReadfromStream(R, false);
    EXPECT_EQ(New.ReadResultCode, rrcUnknownComp);
    EXPECT_EQ(New.After->text(), QStringLiteral("kept"));
}

// A stream read into a grid whose column collection is shorter than ColCount fills the columns
// that exist and leaves the others alone.
TEST_F(GridIoTest, AStreamReadFitsAShortColumnCollection) {
    Grid->Columns()->Delete(4);
    ASSERT_EQ(Grid->Columns()->Count(), 4);
    Grid->SetColFormats({});
    Bytes S;
    S.Int(2).Int(5);
    for (int C = 0; C < 5; ++C)
        S.Int(1);
    for (int C = 0; C < 5; ++C)
        S.Bool(true);
    for (const char* T : {"t0", "t1", "t2", "t3", "t4", "a", "b", "c", "d", "e"})
        S.Str(T);
    S.Bool(true).Bool(true);
    ReadGrid(*Grid, S.B);
    EXPECT_EQ(Grid->Rows(1), QStringList({"a", "b", "c", "d", "e"}));
    EXPECT_EQ(Grid->Columns()->Items(3)->UnitSystem(), usImperial);
    EXPECT_TRUE(Grid->Columns()->Items(3)->StringCol());
}

// A grid whose unit or size change raises once asked (as a descendant's SizeChanged may).
struct RaisingGrid : TNumGrid {
    bool Raise = false;
    void SizeChanged(int OldCols, int OldRows) override {
        TNumGrid::SizeChanged(OldCols, OldRows);
        if (Raise) throw EConvertError(QStringLiteral("refused"));
    }
};

// A read that fails, also in the step that puts it into the grid, leaves the grid and its undo
// history as they were; so does a refused ColCount.
TEST_F(GridIoTest, AFailedReadKeepsCellsCountsAndHistory) {
    TNumGrid Source;
    Source.SetColCount(3);
    Source.SetRowCount(7);
    Source.SetCells(1, 1, QStringLiteral("9"));
    TXmlDocument Doc;
    Source.WriteToXML(Doc.CreateRoot(QStringLiteral("g")));
    const QByteArray Record = WriteRecord(Source);

    struct Case {
        const char* What;
        int Rows; // the grid's rows before
        std::function<void(RaisingGrid&)> Fail;
    };
    const Case Cases[] = {
        {"XML, raising in its apply step", 5, [&](RaisingGrid& G) { G.ReadFromXML(Doc.Root()); }},
        {"stream, raising in its apply step", 5, [&](RaisingGrid& G) { ReadGrid(G, Record); }},
        {"ColCount beyond the cell limit", 5, [](RaisingGrid& G) { G.SetColCount(10'000'000); }},
        // Rows kept from the grid, columns from the record: too many cells together.
        {"stream, kept rows times stored columns", 100'001,
         [](RaisingGrid& G) { ReadGrid(G, Bytes().Int(1).Int(200).B); }},
    };
    for (const Case& K : Cases) {
        SCOPED_TRACE(K.What);
        RaisingGrid G;
        G.SetRowCount(K.Rows);
        G.SetIgnoreRowCountRead(K.Rows != 5);
        G.Columns()->Items(2)->SetStringCol(true);
        G.SetCells(1, 1, QStringLiteral("keep")); // no number: a check would rewrite it
        G.UndoStack()->push(new QUndoCommand(QStringLiteral("step")));
        G.Raise = true;
        EXPECT_ANY_THROW(K.Fail(G));
        G.Raise = false;
        EXPECT_EQ(G.UndoStack()->count(), 1);
        EXPECT_EQ(G.RowCount(), K.Rows);
        EXPECT_EQ(G.ColCount(), 5);
        EXPECT_EQ(G.Cells(1, 1), QStringLiteral("keep"));
        EXPECT_TRUE(G.Columns()->Items(2)->StringCol());
    }

    // A read that fits the limit is not refused for a size on the way: 1 x 100,001 cells become
    // 200 x 2 (the columns would meet the old rows first).
    TNumGrid Tall;
    Tall.SetColCount(1);
    Tall.SetRowCount(100'001);
    TXmlDocument Wide;
    Wide.LoadFromString(QStringLiteral("<g><Colcount>200</Colcount><Rowcount>2</Rowcount></g>"));
    ASSERT_NO_THROW(Tall.ReadFromXML(Wide.Root()));
    EXPECT_EQ(Tall.ColCount() * Tall.RowCount(), 400);
}

// Reading keeps a numeric cell whose text is no number (or empty) as it was read; numbers are
// checked, clamped and reformatted as ever (the stream read checks every cell).
TEST_F(GridIoTest, AReadKeepsNumericCellsWithoutANumber) {
    struct Case {
        const char* Stored;
        const char* Read;
    };
    const Case Cases[] = {
        {"2", "2.000"}, {"12", "10.000"}, {"0.5", "1.000"}, {"abc", "abc"}, {"", ""}, {"n/a", "n/a"},
    };
    Grid->SetColCount(2);
    Grid->SetRowCount(7);
    Grid->SetColFormats({});
    TNumColumn* P = Grid->Columns()->Items(1);
    P->SetParType(ptPress);
    P->SetMax(1e6); // 1 to 10 bar
    P->SetMin(1e5);
    Bytes S;
    S.Int(7).Int(2).Int(0).Int(0).Bool(false).Bool(false).Str("t0").Str("t1");
    for (const Case& K : Cases)
        S.Str("x").Str(K.Stored);
    ReadGrid(*Grid, S.Bool(true).Bool(true).B);
    for (int R = 1; R < 7; ++R)
        EXPECT_EQ(Grid->Cells(1, R), QString::fromLatin1(Cases[R - 1].Read)) << Cases[R - 1].Stored;
    EXPECT_EQ(Dialogs.Count(), 0);

    // What a host then gets: text that is no number reads as 0 clamped to the limits, an empty
    // cell as 0; either way the cell is rewritten with the number's text.
    EXPECT_EQ(Grid->GetDValues(1, 4), 1e5L);
    EXPECT_EQ(Grid->Cells(1, 4), QStringLiteral("1.000"));
    EXPECT_EQ(Grid->GetDValues(1, 5), 0.0L);
    EXPECT_EQ(Grid->Cells(1, 5), QStringLiteral("0.000"));

    // XML: entries are stored as they stand, the characters of a line-break reference too (they
    // hold the delimiter, so they part cells as in any other row text).
    TXmlDocument Doc;
    Doc.LoadFromString(QStringLiteral("<g><Colcount>3</Colcount><Rows><Row0>t</Row0><Row1>x;abc</Row1>"
                                      "<Row2>x;</Row2><Row3>a&amp;#13;&amp;#10;b</Row3></Rows></g>"));
    Grid->ReadFromXML(Doc.Root());
    EXPECT_EQ(Grid->Cells(1, 1), QStringLiteral("abc"));
    EXPECT_EQ(Grid->Cells(1, 2), QString());
    EXPECT_EQ(Grid->Rows(3), QStringList({"a&#13", "&#10", "b"}));
}

// Titles read from the file become captions without the unit line the grid adds itself, so
// round trips do not stack unit lines.
TEST_F(GridIoTest, TitlesReadBackKeepTheirCaption) {
    Grid->SetColCount(2);
    Grid->SetRowCount(2);
    Grid->SetColFormats({});
    Grid->SetReadColTitlesFromStream(true);
    TNumColumn* P = Grid->Columns()->Items(1);
    P->SetParType(ptPress);
    P->Title()->SetCaption(QStringLiteral("P"));
    TXmlDocument Doc;
    Grid->WriteToXML(Doc.CreateRoot(QStringLiteral("g")));
    // The stream holds no title strings for a grid that takes its titles from itself.
    const QByteArray Record =
        Bytes().Int(2).Int(2).Int(0).Int(0).Bool(false).Bool(false).Str("a").Str("1").B +
        Bytes().Bool(true).Bool(true).B;
    for (int Round = 0; Round < 2; ++Round) {
        Grid->ReadFromXML(Doc.Root());
        EXPECT_EQ(P->Title()->Caption(), QStringLiteral("P"));
        ReadGrid(*Grid, Record);
        EXPECT_EQ(P->Title()->Caption(), QStringLiteral("P"));
        EXPECT_EQ(Grid->Cells(1, 0), QStringLiteral("P\r\n[bar]"));
    }
    // A caption that is the unit text alone reads back as no caption.
    TXmlDocument Unit;
    Unit.LoadFromString(QStringLiteral("<g><Rows><Row0>a;[bar]</Row0></Rows></g>"));
    Grid->ReadFromXML(Unit.Root());
    EXPECT_EQ(P->Title()->Caption(), QString());
}

TEST_F(GridIoTest, ReadingFromStreamIsOverWhenOnAfterReadFires) {
    bool During = true;
    Grid->SetOnAfterRead([&](QObject*) { During = Grid->ReadingFromStream(); });
    ReadGrid(*Grid, WriteRecord(*Grid));
    EXPECT_FALSE(During);
}

// A unit system the grid cannot hold is an error only when the column properties are read; an
// empty list of them in XML has no entries.
TEST_F(GridIoTest, ColumnPropertiesAreCheckedOnlyWhenTaken) {
    const QByteArray Record = Bytes().Int(1).Int(1).Int(7).Bool(false).Str("t").Bool(true).Bool(true).B;
    for (const bool Ignore : {false, true}) {
        TNumGrid G;
        G.SetColFormats({});
        G.SetIgnoreColPropsRead(Ignore);
        if (Ignore)
            EXPECT_NO_THROW(ReadGrid(G, Record));
        else
            EXPECT_THROW(ReadGrid(G, Record), EReadError);
    }
    Grid->Columns()->Items(1)->SetStringCol(true);
    TXmlDocument Doc;
    Doc.LoadFromString(QStringLiteral("<g><Cols><Units></Units><StringCols/><ParTypes/></Cols></g>"));
    Grid->SetStoreParTypes(true);
    ASSERT_NO_THROW(Grid->ReadFromXML(Doc.Root()));
    EXPECT_TRUE(Grid->Columns()->Items(1)->StringCol());
}

// The fuzz target's seeds for the cases above are the grid's own output, led by the target's mode
// byte (0 read, 1 skip, 2 XML; bit 7: a column collection one item short). QXNUM_WRITE_SEEDS=1
// writes them afresh; otherwise the committed files must be what the grid writes today.
TEST_F(GridIoTest, FuzzSeedsAreTheGridsOwnOutput) {
    const auto Record = [](const std::function<void(TNumGrid&)>& Shape) {
        TNumGrid G;
        Shape(G);
        return WriteRecord(G);
    };
    const auto Xml = [](const std::function<void(TNumGrid&)>& Shape) {
        TNumGrid G;
        Shape(G);
        TXmlDocument Doc;
        G.WriteToXML(Doc.CreateRoot(QStringLiteral("g")));
        return Doc.SaveToBytes();
    };
    const auto Flags = [](TNumGrid& G) {
        G.SetRowCount(3);
        G.Columns()->Items(3)->SetStringCol(true);
        G.Columns()->Items(4)->SetUnitSystem(usImperial);
    };
    const auto NoRows = [](TNumGrid& G) { G.SetRowCount(0); };
    const auto NoCols = [](TNumGrid& G) { G.SetColCount(0); };
    const std::pair<const char*, QByteArray> Seeds[] = {
        {"stream-short-collection", QByteArray(1, '\x80') + Record(Flags)},
        {"stream-no-rows", QByteArray(1, '\0') + Record(NoRows)},
        {"stream-no-columns", QByteArray(1, '\0') + Record(NoCols)},
        {"skip-string-flags", QByteArray(1, '\1') + Record(Flags) + Bytes().Str("next").B},
        {"skip-no-rows", QByteArray(1, '\1') + Record(NoRows) + Bytes().Str("next").B},
        {"xml-no-rows", QByteArray(1, '\2') + Xml(NoRows)},
        {"xml-no-columns", QByteArray(1, '\2') + Xml(NoCols)},
    };
    const QString Dir = QStringLiteral(QT_TESTCASE_SOURCEDIR "/../fuzz/corpus/fuzz_grid/");
    const bool Write = qEnvironmentVariableIntValue("QXNUM_WRITE_SEEDS") == 1;
    for (const auto& [Name, Data] : Seeds) {
        QFile F(Dir + QString::fromLatin1(Name));
        if (Write) {
            ASSERT_TRUE(F.open(QIODevice::WriteOnly)) << Name;
            F.write(Data);
        } else {
            ASSERT_TRUE(F.open(QIODevice::ReadOnly)) << Name;
            EXPECT_EQ(F.readAll(), Data) << Name;
        }
    }
}

} // namespace

// The reports of the qxcase tool, compiled in from its sources.
#include "../../apps/qxcase/casedump.cpp"
#include "../../apps/qxcase/casexml.cpp"

#include <qxnum/filer.h>
#include <qxnum/streamcode.h>

#include <QBuffer>
#include <gtest/gtest.h>

#include <limits>
#include <random>

using namespace qxnum;

namespace {

template <typename F> QByteArray Stream(F&& Write) {
    QByteArray Bytes;
    QBuffer Buffer(&Bytes);
    Buffer.open(QIODevice::WriteOnly);
    {
        TWriter W(&Buffer);
        Write(W);
    }
    return Bytes;
}

QByteArray FormStream() {
    return Stream([](TWriter& W) {
        W.WriteSignature();
        W.WriteListBegin();
        W.WriteString("TNumFld");
        W.WriteString("Pressure");
        W.WriteFloat(250000.0L);
        W.WriteBoolean(true);
        W.WriteBoolean(false);
        // The older combo box layout: no text between the item index and Visible.
        W.WriteString("TComboBoxFld");
        W.WriteString("Combo");
        W.WriteInteger(2);
        W.WriteBoolean(true);
        W.WriteBoolean(true);
        // Cell texts that look like a record must not end the grid's record.
        W.WriteString("TNumGrid");
        W.WriteString("Grid");
        W.WriteInteger(2);
        W.WriteInteger(2);
        W.WriteInteger(0);
        W.WriteInteger(1);
        W.WriteBoolean(false);
        W.WriteBoolean(true);
        for (const char* Cell : {"Time", "p", "TStringFld", "Name"})
            W.WriteString(Cell);
        W.WriteBoolean(true);
        W.WriteBoolean(true);
        // A class the tool does not know: its record runs up to the next record.
        W.WriteString("TAppFld");
        W.WriteString("Mine");
        W.WriteInteger(7);
        W.WriteListBegin();
        W.WriteString("nested");
        W.WriteListEnd();
        W.WriteString("TStringFld");
        W.WriteString("Note");
        W.WriteString("Größe\r\n");
        W.WriteBoolean(true);
        W.WriteBoolean(true);
        W.WriteString("CustomWriteToStream");
        W.WriteInteger(99);
        W.WriteListEnd();
        WriteStreamCode(W, FieldFormEndCode);
    });
}

QString Dump(const QByteArray& Data, bool Expected = true) {
    QString Out, Error;
    EXPECT_EQ(qxcase::DumpStream(Data, Out, Error), Expected) << Error.toStdString();
    EXPECT_EQ(Error.isEmpty(), Expected);
    return Out;
}

// The lines of Text that follow Header, up to the next record header.
QStringList RecordLines(const QString& Text, const QString& Header) {
    const QStringList Lines = Text.split(QLatin1Char('\n'));
    QStringList Record;
    bool In = false;
    for (const QString& L : Lines) {
        const bool IsHeader = L.trimmed().startsWith(QLatin1Char('['));
        if (IsHeader)
            In = L.trimmed() == Header;
        else if (In)
            Record.append(L.mid(35).trimmed());
    }
    return Record;
}

} // namespace

TEST(QxcaseDump, GroupsAFieldFormByRecord) {
    const QString Out = Dump(FormStream());
    EXPECT_TRUE(Out.contains(QStringLiteral("000018  05 vaExtended   float          Value = 250000\n")))
        << Out.toStdString();
    EXPECT_EQ(RecordLines(Out, "[TNumFld \"Pressure\"]"),
              QStringList({"class = \"TNumFld\"", "name = \"Pressure\"", "Value = 250000", "Visible = True",
                           "Enabled = False"}));
    EXPECT_EQ(RecordLines(Out, "[TComboBoxFld \"Combo\"]"),
              QStringList({"class = \"TComboBoxFld\"", "name = \"Combo\"", "ItemIndex = 2", "Visible = True",
                           "Enabled = True"}));
    const QStringList Grid = RecordLines(Out, "[TNumGrid \"Grid\"]");
    ASSERT_EQ(Grid.size(), 14) << Out.toStdString();
    EXPECT_EQ(Grid[5], QStringLiteral("UnitSystem col 1 = 1 (usImperial)"));
    EXPECT_EQ(Grid[10], QStringLiteral("Cell(0, 1) = \"TStringFld\""));
    EXPECT_EQ(Grid[13], QStringLiteral("Enabled = True"));
    EXPECT_EQ(RecordLines(Out, "[TAppFld \"Mine\"]"),
              QStringList({"class = \"TAppFld\"", "name = \"Mine\"", "7", "begin", "\"nested\"", "end"}));
    EXPECT_EQ(RecordLines(Out, "[TStringFld \"Note\"]")[2], QStringLiteral("Text = \"Größe\\r\\n\""));
    EXPECT_EQ(
        RecordLines(Out, "[custom data of the form]"),
        QStringList({"marker = \"CustomWriteToStream\"", "99", "end", "2C 2C 2C 2C (FieldFormEndCode)", ""}));
}

TEST(QxcaseDump, PlainStreamsAndEveryValueKind) {
    const QByteArray Data = Stream([](TWriter& W) {
        W.WriteInteger(qint64(1) << 40);
        W.WriteDouble(0.5);
        W.WriteSingle(1.5f);
        W.WriteCurrency(12.3456L);
        W.WriteDate(45000.5);
        W.WriteIdent("Ident");
        W.WriteBinary(QByteArray("\x01\xAB", 2));
        W.WriteSet({"a", "b"});
        W.WriteValue(vaNil);
        W.WriteFloat(std::numeric_limits<Extended>::infinity());
        W.WriteString(QStringLiteral("漢字"));
    });
    const QString Out = Dump(Data);
    for (const char* Expected :
         {"integer    1099511627776", "double     0.5", "single     1.5", "currency   12.3456",
          "date       45000.5 (2023-03-15 12:00:00.000)", "ident      Ident", "binary     2 bytes: 01 AB",
          "set        [a, b]", "nil        nil", "float      +Inf", "12 vaWString    string     \"漢字\""}) {
        EXPECT_TRUE(Out.contains(QString::fromUtf8(Expected))) << Expected << "\n" << Out.toStdString();
    }
}

TEST(QxcaseDump, BrokenStreamsEndWithAnErrorAndWhatWasRead) {
    const QByteArray Full = FormStream();
    const qsizetype ListEnd = Full.size() - 5; // the 00 before the end marker
    for (qsizetype Len = 1; Len < ListEnd; ++Len) {
        QString Out, Error;
        EXPECT_FALSE(qxcase::DumpStream(Full.left(Len), Out, Error)) << Len;
        EXPECT_TRUE(Error.contains(QStringLiteral("offset"))) << Error.toStdString();
        EXPECT_TRUE(Out.startsWith(QStringLiteral("offset  tag"))) << Len;
    }
    QString Out, Error;
    EXPECT_FALSE(qxcase::DumpStream(Full.left(Full.size() - 2), Out, Error)); // half an end marker
    // A tag that does not exist, a length far beyond the data, an unclosed list.
    const QByteArray Bad[] = {QByteArray("\x02\x05\x42", 3), QByteArray("\x0C\xFF\xFF\xFF\x7F", 5),
                              QByteArray("\x01\x01\x00", 3), QByteArray("TPF0\x02\x01", 6)};
    for (const QByteArray& B : Bad) {
        Out.clear();
        Error.clear();
        EXPECT_FALSE(qxcase::DumpStream(B, Out, Error)) << B.toHex().toStdString();
        EXPECT_FALSE(Error.isEmpty());
    }
}

TEST(QxcaseDump, SurvivesNestingAndMutatedStreams) {
    QByteArray Deep(50000, '\x01');
    Deep += QByteArray(50000, '\x00');
    EXPECT_TRUE(Dump(Deep).endsWith(QStringLiteral("end\n")));

    const QByteArray Full = FormStream();
    std::mt19937 Rng(20240229);
    for (int Round = 0; Round < 1500; ++Round) {
        QByteArray M = Full;
        const int Edits = 1 + static_cast<int>(Rng() % 4);
        for (int E = 0; E < Edits; ++E)
            M[Rng() % M.size()] = static_cast<char>(Rng() & 0xFF);
        if (Round % 3 == 0) M.truncate(static_cast<qsizetype>(Rng() % M.size()));
        QString Out, Error;
        const bool Ok = qxcase::DumpStream(M, Out, Error);
        EXPECT_EQ(Ok, Error.isEmpty());
        EXPECT_TRUE(Out.startsWith(QStringLiteral("offset  tag")));
    }
}

TEST(QxcaseXml, ListsFieldsUnderTheirForms) {
    const QByteArray Case =
        "<?xml version=\"1.0\"?>\n"
        "<Case>\n"
        " <Form Name=\"Main\">\n"
        "  <INumFld ID=\"p\" ClassName=\"TNumFld\"><ParType>ptPress</ParType><Value>2.5</Value>"
        "</INumFld>\n"
        "  <Other><INumFld ID=\"x\"/></Other>\n"
        "  <INumFld ID=\"Frame1.c\" ClassName=\"TCheckListBoxFld\"><Items>"
        "<Item Caption=\"a&amp;b\">cbChecked</Item><Item Caption=\"\">cbGrayed</Item></Items>"
        "</INumFld>\n"
        " </Form>\n"
        " <INumFld ClassName=\"TMemoFld\"><Value>two\r\nlines</Value></INumFld>\n"
        "</Case>\n";
    QString Out, Error;
    ASSERT_TRUE(qxcase::ListXmlCase(Case, Out, Error)) << Error.toStdString();
    EXPECT_EQ(Out, QStringLiteral("Case/Form[Name=\"Main\"]:\n"
                                  "  INumFld ID=\"p\" ClassName=\"TNumFld\"\n"
                                  "    ParType = \"ptPress\"\n"
                                  "    Value = \"2.5\"\n"
                                  "Case/Form[Name=\"Main\"]/Other:\n"
                                  "  INumFld ID=\"x\" ClassName=(none)\n"
                                  "Case/Form[Name=\"Main\"]:\n"
                                  "  INumFld ID=\"Frame1.c\" ClassName=\"TCheckListBoxFld\"\n"
                                  "    Items\n"
                                  "      Item Caption=\"a&b\" = \"cbChecked\"\n"
                                  "      Item Caption=\"\" = \"cbGrayed\"\n"
                                  "Case:\n"
                                  "  INumFld ID=(none) ClassName=\"TMemoFld\"\n"
                                  "    Value = \"two\\nlines\"\n"
                                  "4 field(s) in 4 group(s)\n"));

    Out.clear();
    ASSERT_TRUE(qxcase::ListXmlCase("<INumFld ID=\"only\"/>", Out, Error));
    EXPECT_EQ(Out, QStringLiteral(
                       "(document):\n  INumFld ID=\"only\" ClassName=(none)\n1 field(s) in 1 group(s)\n"));
    Out.clear();
    ASSERT_TRUE(qxcase::ListXmlCase("<Case><Form/></Case>", Out, Error));
    EXPECT_EQ(Out, QStringLiteral("no INumFld elements\n"));
    // Deep documents give a listing that grows with the document, not faster.
    QByteArray Deep;
    for (int I = 0; I < 20000; ++I)
        Deep += "<Level><INumFld ID=\"f\"><V><W/></V></INumFld>";
    Deep += QByteArray("</Level>").repeated(20000);
    Out.clear();
    ASSERT_TRUE(qxcase::ListXmlCase(Deep, Out, Error));
    EXPECT_LT(Out.size(), 300 * 20000);
    EXPECT_TRUE(Out.contains(QStringLiteral("\n20000 field(s) in "))) << Out.right(100).toStdString();
    EXPECT_TRUE(Out.contains(
        QStringLiteral("\n.../Level/Level/Level/Level/Level/Level/Level/Level/Level/Level/Level/Level:\n")));

    Out.clear();
    EXPECT_FALSE(qxcase::ListXmlCase("<Case>\n<Form></Case>", Out, Error));
    EXPECT_TRUE(Error.startsWith(QStringLiteral("line 2, column 9: "))) << Error.toStdString();
}

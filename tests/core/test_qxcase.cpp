// The reports of the qxcase tool, compiled in from its sources.
#include "../../apps/qxcase/casecheck.cpp"
#include "../../apps/qxcase/casedump.cpp"
#include "../../apps/qxcase/caserun.cpp"
#include "../../apps/qxcase/casexml.cpp"

#include <qxnum/filer.h>
#include <qxnum/streamcode.h>

#include <QBuffer>
#include <QTemporaryDir>
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

// Writes each value with the writer call for its type.
void Put1(TWriter& W, bool V) {
    W.WriteBoolean(V);
}
void Put1(TWriter& W, int V) {
    W.WriteInteger(V);
}
void Put1(TWriter& W, Extended V) {
    W.WriteFloat(V);
}
void Put1(TWriter& W, const char* V) {
    W.WriteString(QString::fromUtf8(V));
}
template <typename... T> void Put(TWriter& W, T... V) {
    (Put1(W, V), ...);
}

QByteArray FormStream() {
    return Stream([](TWriter& W) {
        W.WriteSignature();
        W.WriteListBegin();
        Put(W, "TNumFld", "Pressure", 250000.0L, true, false);
        // The older combo box layout: no text between the item index and Visible.
        Put(W, "TComboBoxFld", "Combo", 2, true, true);
        // Cell texts that look like a record must not end the grid's record.
        Put(W, "TNumGrid", "Grid", 2, 2, 0, 1, false, true, "Time", "p", "TStringFld", "Name", true, true);
        // A class the tool does not know: its record runs up to the next record.
        Put(W, "TAppFld", "Mine", 7);
        W.WriteListBegin();
        Put(W, "nested");
        W.WriteListEnd();
        Put(W, "TStringFld", "Note", "Größe\r\n", true, true, "CustomWriteToStream", 99);
        W.WriteListEnd();
        WriteStreamCode(W, FieldFormEndCode);
    });
}

// The dump of Data; checks that it succeeds (or fails) with an error text to match.
QString Dump(const QByteArray& Data, bool Expected = true) {
    QString Out, Error;
    EXPECT_EQ(qxcase::DumpStream(Data, Out, Error), Expected) << Data.left(64).toHex().toStdString();
    EXPECT_EQ(Error.isEmpty(), Expected) << Error.toStdString();
    EXPECT_TRUE(Out.startsWith(QStringLiteral("offset  tag")));
    return Expected ? Out : Error;
}

// The lines of Text that follow Header, up to the next record header.
QStringList RecordLines(const QString& Text, const QString& Header) {
    QStringList Record;
    bool In = false;
    for (const QString& L : Text.split(QLatin1Char('\n'))) {
        if (L.trimmed().startsWith(QLatin1Char('[')))
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
    const QString Out = Dump(Stream([](TWriter& W) {
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
    }));
    for (const char* Expected :
         {"integer    1099511627776", "double     0.5", "single     1.5", "currency   12.3456",
          "date       45000.5 (2023-03-15 12:00:00.000)", "ident      Ident", "binary     2 bytes: 01 AB",
          "set        [a, b]", "nil        nil", "float      +Inf", "12 vaWString    string     \"漢字\""})
        EXPECT_TRUE(Out.contains(QString::fromUtf8(Expected))) << Expected << "\n" << Out.toStdString();
}

TEST(QxcaseDump, SurvivesBrokenNestedAndMutatedStreams) {
    // Cut anywhere before the list end, or in the end marker: an error with its offset.
    const QByteArray Full = FormStream();
    for (qsizetype Len = 1; Len < Full.size() - 5; ++Len)
        EXPECT_TRUE(Dump(Full.left(Len), false).contains(QStringLiteral("offset"))) << Len;
    Dump(Full.left(Full.size() - 2), false);
    // A tag that does not exist, a length far beyond the data, an unclosed list, a signed one.
    for (const QByteArray& B : {QByteArray("\x02\x05\x42", 3), QByteArray("\x0C\xFF\xFF\xFF\x7F", 5),
                                QByteArray("\x01\x01\x00", 3), QByteArray("TPF0\x02\x01", 6)})
        Dump(B, false);

    QByteArray Deep(50000, '\x01');
    Deep += QByteArray(50000, '\x00');
    EXPECT_TRUE(Dump(Deep).endsWith(QStringLiteral("end\n")));

    std::mt19937 Rng(20240229);
    for (int Round = 0; Round < 1500; ++Round) {
        QByteArray M = Full;
        for (int E = 0, Edits = 1 + static_cast<int>(Rng() % 4); E < Edits; ++E)
            M[static_cast<qsizetype>(Rng() % static_cast<quint64>(M.size()))] =
                static_cast<char>(Rng() & 0xFF);
        if (Round % 3 == 0) M.truncate(static_cast<qsizetype>(Rng() % static_cast<quint64>(M.size())));
        QString Out, Error;
        const bool Ok = qxcase::DumpStream(M, Out, Error);
        EXPECT_EQ(Ok, Error.isEmpty()) << Round;
        EXPECT_TRUE(Out.startsWith(QStringLiteral("offset  tag"))) << Round;
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
    const auto List = [](const QByteArray& Data) {
        QString Out, Error;
        EXPECT_TRUE(qxcase::ListXmlCase(Data, Out, Error)) << Error.toStdString();
        return Out;
    };
    EXPECT_EQ(List(Case), QStringLiteral("Case/Form[Name=\"Main\"]:\n"
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
    EXPECT_EQ(
        List("<INumFld ID=\"only\"/>"),
        QStringLiteral("(document):\n  INumFld ID=\"only\" ClassName=(none)\n1 field(s) in 1 group(s)\n"));
    EXPECT_EQ(List("<Case><Form/></Case>"), QStringLiteral("no INumFld elements\n"));
    // Deep documents give a listing that grows with the document, not faster.
    const QString Deep = List(QByteArray("<Level><INumFld ID=\"f\"><V><W/></V></INumFld>").repeated(990) +
                              QByteArray("</Level>").repeated(990));
    EXPECT_LT(Deep.size(), 300 * 990);
    EXPECT_TRUE(Deep.contains(QStringLiteral("\n990 field(s) in "))) << Deep.right(100).toStdString();
    EXPECT_TRUE(Deep.contains(
        QStringLiteral("\n.../Level/Level/Level/Level/Level/Level/Level/Level/Level/Level/Level/Level:\n")));

    QString Out, Error;
    EXPECT_FALSE(qxcase::ListXmlCase("<Case>\n<Form></Case>", Out, Error));
    EXPECT_TRUE(Error.startsWith(QStringLiteral("line 2, column 9: "))) << Error.toStdString();
}

TEST(QxcaseCheck, FindsUnregisteredClassesMissingAndDuplicateIds) {
    const QByteArray Data = "<Case>"
                            "<Engine><INumFld ID=\"Power\" ClassName=\"TNumFld\"><Value>1</Value></INumFld>"
                            "<INumFld ID=\"Fuel\" ClassName=\"TOldFld\"/>"
                            "<INumFld ClassName=\"TCheckFld\"/>"
                            "<INumFld ID=\"Power\" ClassName=\"tnumgrid\"/></Engine>"
                            "<Ambient><INumFld ID=\"Power\" ClassName=\"TStringFld\"/><Sub/></Ambient>"
                            "</Case>";
    QString Out, Error;
    int Problems = -1;
    ASSERT_TRUE(qxcase::CheckXmlCase(Data, Out, Error, Problems)) << Error.toStdString();
    EXPECT_EQ(Out, QStringLiteral("Case/Engine:\n"
                                  "  \"Power\" TNumFld: ok\n"
                                  "  \"Fuel\" TOldFld: class not registered\n"
                                  "  (no ID) TCheckFld: no ID\n"
                                  "  \"Power\" tnumgrid: duplicate ID\n"
                                  "Case/Ambient:\n"
                                  "  \"Power\" TStringFld: ok\n"
                                  "5 field(s), 3 problem(s)\n"));
    EXPECT_EQ(Problems, 3);
    EXPECT_FALSE(qxcase::CheckXmlCase("<Case><F></Case>", Out, Error, Problems));
    Out.clear();
    ASSERT_TRUE(qxcase::CheckXmlCase("<Case/>", Out, Error, Problems));
    EXPECT_EQ(Out, QStringLiteral("no INumFld elements\n"));
}

TEST(QxcaseCommandLine, StatusAndMessages) {
    QTemporaryDir Dir;
    ASSERT_TRUE(Dir.isValid());
    const auto File = [&](const char* Name, const QByteArray& Data) {
        QFile F(Dir.filePath(QString::fromLatin1(Name)));
        EXPECT_TRUE(F.open(QIODevice::WriteOnly) && F.write(Data) == Data.size());
        return F.fileName();
    };
    const QString Empty = File("empty.bin", {}), Xml = File("case.xml", "\xEF\xBB\xBF <Form/>");
    const QString Stale = File("stale.xml", "<Form><INumFld ID=\"X\" ClassName=\"TGone\"/></Form>");
    const struct {
        QStringList Args;
        int Status;
        QString Out, Err; // parts of the texts
    } Cases[] = {
        {{"--version"}, 0, "qxcase " QXCASE_VERSION "\n", {}},
        {{"--help"}, 0, "Usage: qxcase", {}},
        {{"frobnicate", Xml}, 2, {}, "qxcase: unknown command \"frobnicate\"\nUsage: qxcase"},
        {{"dump"}, 2, {}, "Usage: qxcase"},
        {{"dump", Empty}, 1, {}, "the file is empty"},
        {{"xml", Empty}, 1, {}, "the file is empty"},
        {{"dump", Xml}, 1, {}, "try: qxcase xml " + Xml},
        {{"xml", Xml}, 0, {}, {}},
        {{"check", Xml}, 0, "no INumFld elements", {}},
        {{"check", Stale}, 3, "Form:\n  \"X\" TGone: class not registered", {}},
    };
    for (const auto& C : Cases) {
        SCOPED_TRACE(C.Args.join(' ').toStdString());
        QString Out, Err;
        EXPECT_EQ(qxcase::Run(C.Args, Out, Err), C.Status);
        EXPECT_TRUE(Out.startsWith(C.Out)) << Out.toStdString();
        EXPECT_TRUE(C.Err.isEmpty() ? Err.isEmpty() : Err.contains(C.Err)) << Err.toStdString();
    }
}

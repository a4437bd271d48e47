// Hostile input for the readers of the grid and of a field form: truncated and mutated streams and
// XML, from fixed seeds. Every read ends without a crash (and within a second in a release build),
// a read that fails leaves the whole state as it was (cells, counts, column properties, the undo
// history, field values), and the unmutated input reads back to exactly the state that wrote it.
#include <qxnum/widgets/numgrid.h>
#include <qxnum/widgets/timeseriesgrid.h>
#include <qxnum/xml.h>

#include "allfieldsform.h"
#include "dialogrecorder.h"
#include "settingsguard.h"

#include <QBuffer>
#include <QElapsedTimer>
#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <random>
#include <set>

using namespace qxnum;
using qxnum::test::AddHistory;
using qxnum::test::DialogRecorder;
using qxnum::test::SettingsGuard;
using qxnum::test::State;
using qxnum::test::TAllFieldsForm;

namespace {

// Instrumented or unoptimised builds are too slow for the time bound.
#if defined(__SANITIZE_ADDRESS__)
constexpr bool Sanitized = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(undefined_behavior_sanitizer)
constexpr bool Sanitized = true;
#else
constexpr bool Sanitized = false;
#endif
#else
constexpr bool Sanitized = false;
#endif
#ifdef NDEBUG
constexpr bool TimeBound = !Sanitized;
#else
constexpr bool TimeBound = false;
#endif
constexpr qint64 MaxReadMs = 1000;

// ---- State ---------------------------------------------------------------------------------------

// The first line that differs, empty when none does.
std::string Diff(const QStringList& Was, const QStringList& Now) {
    for (qsizetype I = 0; I < std::max(Was.size(), Now.size()); ++I) {
        const QString A = Was.value(I, QStringLiteral("<none>")), B = Now.value(I, QStringLiteral("<none>"));
        if (A != B)
            return QStringLiteral("[%1] \"%2\" became \"%3\"")
                .arg(I)
                .arg(A.left(90), B.left(90))
                .toStdString();
    }
    return {};
}

// Without the title rows: they are the grid's own (made from its columns), not the file's.
QStringList DataOnly(TNumGrid& G, QStringList S) {
    for (int R = 0; R < G.FixedRows() && R < G.RowCount(); ++R)
        S.removeIf([R](const QString& L) { return L.startsWith(QStringLiteral("row %1: ").arg(R)); });
    return S;
}

// ---- Reading -----------------------------------------------------------------------------------

// One read: whether it raised, what it raised, how long it took.
struct TOutcome {
    bool Raised = false;
    QString Error;
    qint64 Ms = 0;
};

TOutcome Timed(const std::function<void()>& Read) {
    TOutcome O;
    QElapsedTimer T;
    T.start();
    try {
        Read();
    } catch (const EReadError&) {
        O.Raised = true;
    } catch (const EConvertError&) {
        O.Raised = true;
    } catch (const EXmlError&) {
        O.Raised = true;
    } catch (const std::exception& E) {
        O.Raised = true;
        O.Error = QStringLiteral("undocumented exception: ") + QString::fromUtf8(E.what());
    }
    O.Ms = T.elapsed();
    return O;
}

void ReadStream(const std::function<void(TReader&)>& Read, const QByteArray& Data) {
    QBuffer Buf;
    Buf.setData(Data);
    Buf.open(QIODevice::ReadOnly);
    TReader R(&Buf);
    Read(R);
}

QByteArray WriteStream(const std::function<void(TWriter&)>& Write) {
    QBuffer Buf;
    Buf.open(QIODevice::WriteOnly);
    {
        TWriter W(&Buf);
        Write(W);
    }
    return Buf.data();
}

// Collects the failures of a campaign and reports the first few of each kind, with counts.
struct TFindings {
    std::map<std::string, std::pair<int, std::string>> Kinds;
    void Add(const std::string& Kind, const std::string& Example) {
        auto& K = Kinds[Kind];
        if (K.first++ == 0) K.second = Example;
    }
    void Report(const char* Where, int Reads) const {
        for (const auto& [Kind, K] : Kinds)
            ADD_FAILURE() << Where << ": " << Kind << " in " << K.first << " of " << Reads
                          << " reads; first: " << K.second;
    }
};

void CheckTime(TFindings& F, const TOutcome& O, const std::string& Input) {
    if (TimeBound && O.Ms > MaxReadMs)
        F.Add("a read over 1 s", Input + " took " + std::to_string(O.Ms) + " ms");
    if (!O.Error.isEmpty()) F.Add("an undocumented exception", Input + ": " + O.Error.toStdString());
}

// ---- Mutations ------------------------------------------------------------------------------------

// A mutant and the byte offsets it touched (none for a truncation: what is left is unchanged).
struct TMutant {
    QByteArray Data;
    std::string Name;
    std::vector<qsizetype> At;
};

// Truncations at up to 60 lengths, then Count random mutants of one to three changes: a byte set to
// anything or to one of Interesting, a byte inserted, a byte deleted.
std::vector<TMutant> ByteMutants(const QByteArray& In, unsigned Seed, int Count,
                                 const QByteArray& Interesting) {
    std::vector<TMutant> Out;
    const qsizetype Step = std::max<qsizetype>(1, In.size() / 60);
    for (qsizetype Len = 0; Len < In.size(); Len += Step)
        Out.push_back({In.left(Len), "truncated to " + std::to_string(Len), {}});
    std::mt19937 Rng(Seed);
    for (int I = 0; I < Count; ++I) {
        TMutant M{In, "mutant " + std::to_string(I), {}};
        const int Changes = 1 + static_cast<int>(Rng() % 3);
        for (int K = 0; K < Changes && !M.Data.isEmpty(); ++K) {
            const auto At = static_cast<qsizetype>(Rng() % static_cast<unsigned>(M.Data.size()));
            const char Byte =
                Rng() % 2
                    ? Interesting[static_cast<qsizetype>(Rng() % static_cast<unsigned>(Interesting.size()))]
                    : static_cast<char>(Rng());
            switch (Rng() % 4) {
            case 0:
                M.Data.insert(At, Byte);
                break;
            case 1:
                M.Data.remove(At, 1);
                break;
            default:
                M.Data[At] = Byte;
                break;
            }
            M.At.push_back(At);
        }
        Out.push_back(std::move(M));
    }
    return Out;
}

// Filer tags worth putting anywhere: list end and begin, integers, extended, strings, booleans.
const QByteArray StreamTags("\x00\x01\x02\x03\x04\x05\x06\x08\x09\x0c\x12\x14\x7f\xff", 14);
const QByteArray XmlChars("<>\"=/ aZ9.&;#-", 14);

// Texts that no element should hold, for every element of the document in turn.
const QStringList Hostile{QString(),
                          QStringLiteral("0"),
                          QStringLiteral("-1"),
                          QStringLiteral("2"),
                          QStringLiteral("7"),
                          QStringLiteral("2147483648"),
                          QStringLiteral("abc"),
                          QStringLiteral(" 3 "),
                          QStringLiteral("usImperial;usFoo;usSI"),
                          QStringLiteral("True;perhaps"),
                          QStringLiteral("ptPress;ptNothing"),
                          QStringLiteral(";;;;;;;;;;"),
                          QStringLiteral("&#13;&#10;"),
                          QStringLiteral("1e308;-1e308;nan;inf"),
                          QString(3000, QLatin1Char('x'))};

// Every element, depth first.
QList<TXmlNode> AllElements(const TXmlNode& Root) {
    QList<TXmlNode> L{Root};
    for (qsizetype I = 0; I < L.size(); ++I)
        L += L[I].ChildNodes();
    return L;
}

// Element-level mutants: every element's text replaced by some of the hostile texts, every
// element deleted, renamed and doubled. Edit(Doc, Index) applies mutant Index to a fresh copy.
struct TXmlMutants {
    QByteArray Original;
    int Elements = 0;
    std::vector<std::pair<int, int>> Cases; // element, kind (< Hostile.size(): that text)
    // Texts: how many hostile texts each element gets (all of them, or that many chosen at random).
    TXmlMutants(const QByteArray& Bytes, unsigned Seed, int Texts) : Original(Bytes) {
        TXmlDocument D;
        D.LoadFromBytes(Original);
        Elements = static_cast<int>(AllElements(D.Root()).size());
        std::mt19937 Rng(Seed);
        const int Kinds = static_cast<int>(Hostile.size()) + 3;
        for (int E = 1; E < Elements; ++E) {
            for (int K = static_cast<int>(Hostile.size()); K < Kinds; ++K)
                Cases.emplace_back(E, K);
            for (int N = 0; N < Texts; ++N)
                Cases.emplace_back(E, Texts >= Hostile.size()
                                          ? N
                                          : static_cast<int>(Rng() % static_cast<unsigned>(Hostile.size())));
        }
    }
    void Edit(TXmlDocument& Doc, size_t Index, std::string& Name) const {
        Doc.LoadFromBytes(Original);
        const auto [E, K] = Cases[Index];
        const int Texts = static_cast<int>(Hostile.size());
        TXmlNode N = AllElements(Doc.Root())[E];
        Name = "element " + N.Name().toStdString() + " ";
        if (K < Texts) {
            N.SetValueAsString(Hostile[K]);
            Name += "= \"" + Hostile[K].left(30).toStdString() + "\"";
        } else if (K == Texts) {
            N.Parent().NodeRemove(N);
            Name += "deleted";
        } else if (K == Texts + 1) {
            TXmlNode Twin = N.Parent().NodeNew(N.Name());
            Twin.SetValueAsString(N.ValueAsString());
            Name += "doubled";
        } else {
            TXmlNode Other = N.Parent().NodeNew(N.Name() + QStringLiteral("9"));
            Other.SetValueAsString(N.ValueAsString());
            N.Parent().NodeRemove(N);
            Name += "renamed";
        }
    }
};

// ---- Grids ----------------------------------------------------------------------------------------

// A grid set-up: how to make it and the two states it is tried in, 1 (the state that writes the
// input) and 2 (the state that reads it), which differ in everything the files carry.
struct TGridSetUp {
    const char* Name;
    std::function<TNumGrid*(QWidget* Owner)> Make;
    std::function<void(TNumGrid& G, int K)> Shape;
};

TNumGrid* Plain(QWidget* Owner) {
    return new TNumGrid(Owner);
}

// Numbers in the data cells of columns 1 and 2 (pressure and temperature), column 2 in Imperial in
// state 1.
void Numbers(TNumGrid& G, int K) {
    G.Columns()->Items(1)->SetParType(ptPress);
    G.Columns()->Items(2)->SetParType(ptTemp);
    G.Columns()->Items(2)->SetUnitSystem(K == 1 ? usImperial : usSI);
    for (int R = G.FixedRows(); R < G.RowCount(); ++R)
        for (int C = 1; C < 3; ++C)
            G.SetDValues(C, R, 1000.0 * K + R * 10 + C);
}

void PrintTo(const TGridSetUp& S, std::ostream* Os) {
    *Os << S.Name;
}

const TGridSetUp GridSetUps[] = {
    {"OneFixedRow", Plain,
     [](TNumGrid& G, int K) {
         G.SetColCount(4);
         G.SetRowCount(3 + K);
         Numbers(G, K);
     }},
    {"TwoFixedRows", Plain,
     [](TNumGrid& G, int K) {
         G.SetColCount(4);
         G.SetRowCount(7 - K);
         G.SetFixedRows(2);
         Numbers(G, K);
     }},
    {"StringAndCheckBoxColumns", Plain,
     [](TNumGrid& G, int K) {
         G.SetStoreParTypes(true);
         G.SetColCount(5);
         G.SetRowCount(4);
         Numbers(G, K);
         G.Columns()->Items(3)->SetStringCol(true);
         G.Columns()->Items(4)->SetCheckBoxCol(true);
         for (int R = 1; R < 4; ++R) {
             G.SetCells(3, R, QStringLiteral("Ω text %1.%2").arg(K).arg(R));
             G.SetCheckedStatus(4, R, (R + K) % 2 == 0);
         }
         // Texts that are no number stay as read.
         G.SetCells(1, 3, K == 1 ? QStringLiteral("n/a") : QStringLiteral("5"));
         G.SetCells(2, 3, K == 1 ? QString() : QStringLiteral("6"));
     }},
    {"TitlesFromTheFile", Plain,
     [](TNumGrid& G, int K) {
         G.SetReadColTitlesFromStream(true);
         G.SetColCount(3);
         G.SetRowCount(4);
         Numbers(G, K);
         G.Columns()->Items(1)->Title()->SetCaption(QStringLiteral("P%1").arg(K));
         G.Columns()->Items(2)->Title()->SetCaption(QStringLiteral("T%1").arg(K));
     }},
    {"TimeSeries", [](QWidget* Owner) -> TNumGrid* { return new TTimeSeriesGrid(Owner); },
     [](TNumGrid& G, int K) {
         G.SetColCount(3);
         G.SetRowCount(3 + K);
         Numbers(G, K);
         for (int R = 1; R < G.RowCount(); ++R)
             G.SetDValues(0, R, 10.0 * R + K);
     }},
    {"NoRows", Plain,
     [](TNumGrid& G, int K) {
         G.SetColCount(3);
         G.SetRowCount(K == 1 ? 0 : 2);
         G.SetCells(1, 1, QStringLiteral("3"));
     }},
    {"NoColumns", Plain,
     [](TNumGrid& G, int K) {
         G.SetColCount(K == 1 ? 0 : 2);
         G.SetRowCount(3);
         G.SetCells(1, 1, QStringLiteral("3"));
     }},
    // A host removed a column description: the collection is shorter than ColCount.
    {"ShortColumnCollection", Plain,
     [](TNumGrid& G, int K) {
         G.SetColCount(4);
         G.SetRowCount(4);
         Numbers(G, K);
         G.Columns()->Delete(3);
     }},
};

// Grid records with counts that no file of this grid had: zero, one, many.
std::vector<TMutant> CountMutants(const QByteArray& Original) {
    qint64 Rest = 0;
    ReadStream(
        [&](TReader& R) {
            R.ReadInteger();
            R.ReadInteger();
            Rest = R.Position();
        },
        Original);
    std::vector<TMutant> Out;
    const std::pair<int, int> Counts[] = {{0, 0}, {0, 3}, {3, 0},   {1, 1},
                                          {1, 9}, {9, 1}, {2, 200}, {3000, 2}};
    for (const auto& [Rows, Cols] : Counts)
        Out.push_back({WriteStream([&](TWriter& W) {
                           W.WriteInteger(Rows);
                           W.WriteInteger(Cols);
                       }) + Original.mid(Rest),
                       "counts " + std::to_string(Rows) + " x " + std::to_string(Cols),
                       {0}});
    // A complete record of one row and 2000 columns: reading it must stay fast.
    Out.push_back({WriteStream([](TWriter& W) {
                       const int Wide = 2000;
                       W.WriteInteger(1);
                       W.WriteInteger(Wide);
                       for (int C = 0; C < Wide; ++C)
                           W.WriteInteger(0);
                       for (int C = 0; C < Wide; ++C)
                           W.WriteBoolean(C % 2 == 0);
                       for (int C = 0; C < Wide; ++C)
                           W.WriteString(QStringLiteral("c%1").arg(C));
                       W.WriteBoolean(true);
                       W.WriteBoolean(true);
                   }),
                   "1 row, 2000 columns",
                   {0}});
    return Out;
}

class HostileGrid : public ::testing::TestWithParam<TGridSetUp> {
protected:
    SettingsGuard Guard{TFormatSettings::Invariant(), TFormatSettings::Invariant()};
    DialogRecorder Dialogs;
    QWidget Form;
    HostileGrid() { Form.setObjectName(QStringLiteral("HostileForm")); }

    std::unique_ptr<TNumGrid> Make(int K) {
        std::unique_ptr<TNumGrid> G(GetParam().Make(&Form));
        G->setObjectName(QStringLiteral("Grid"));
        GetParam().Shape(*G, K);
        if (K == 2) AddHistory(*G);
        return G;
    }

    // Reads the original into a grid in state 2 (it must become state 1), then every mutant: a
    // read that raises must leave the grid exactly as it was.
    void Campaign(const std::function<void(TNumGrid&, const QByteArray&)>& Read, const QByteArray& Original,
                  const std::vector<TMutant>& Mutants, const std::string& Medium, const QStringList& Written,
                  bool ReadsBack = true) {
        TFindings Found;
        std::unique_ptr<TNumGrid> G = Make(2);
        TOutcome O = Timed([&] { Read(*G, Original); });
        CheckTime(Found, O, "the original");
        if (ReadsBack) {
            if (O.Raised)
                Found.Add("the original does not read back", "it raised");
            else if (const std::string D = Diff(Written, DataOnly(*G, State(G.get(), false))); !D.empty())
                Found.Add("the original does not read back to the state that wrote it", D);
        }
        int Reads = 1;
        G = Make(2);
        QStringList Before = State(G.get());
        for (const TMutant& M : Mutants) {
            O = Timed([&] { Read(*G, M.Data); });
            ++Reads;
            CheckTime(Found, O, M.Name);
            const QStringList After = State(G.get());
            if (O.Raised) {
                if (const std::string D = Diff(Before, After); !D.empty())
                    Found.Add("a read that raised changed the grid", M.Name + ": " + D);
            } else {
                // Whatever a read accepted, the grid checks and writes.
                G->CheckAllCells();
                WriteStream([&](TWriter& W) { G->WritetoStream(W); });
                TXmlDocument Doc;
                G->WriteToXML(Doc.CreateRoot(QStringLiteral("Grid")));
            }
            if (State(G.get()) != Before) {
                G = Make(2);
                Before = State(G.get());
            }
        }
        Found.Report((std::string(GetParam().Name) + ", " + Medium).c_str(), Reads);
    }
};

TEST_P(HostileGrid, Streams) {
    std::unique_ptr<TNumGrid> Source = Make(1);
    const QByteArray Original = WriteStream([&](TWriter& W) { Source->WritetoStream(W); });
    std::vector<TMutant> Mutants = ByteMutants(Original, 11, 220, StreamTags);
    for (TMutant& M : CountMutants(Original))
        Mutants.push_back(std::move(M));
    Campaign([](TNumGrid& G,
                const QByteArray& Data) { ReadStream([&](TReader& R) { G.ReadfromStream(R); }, Data); },
             Original, Mutants, "stream", DataOnly(*Source, State(Source.get(), false)),
             // The stream layout's reader takes the titles from the grid and reads no title strings,
             // while its writer writes them: such a record is for grids that read titles elsewhere.
             !Source->ReadColTitlesFromStream());

    // The skip consumes exactly the record, whatever the grid that skips it.
    std::unique_ptr<TNumGrid> Other = Make(2);
    qint64 End = -1;
    const TOutcome O = Timed([&] {
        ReadStream(
            [&](TReader& R) {
                Other->SkipfromStream(R);
                End = R.Position();
            },
            Original);
    });
    EXPECT_FALSE(O.Raised) << GetParam().Name << ": the skip of the grid's own record raised";
    EXPECT_EQ(End, Original.size()) << GetParam().Name << ": the skip ends elsewhere than the record";
}

TEST_P(HostileGrid, Xml) {
    std::unique_ptr<TNumGrid> Source = Make(1);
    TXmlDocument Doc;
    Source->WriteToXML(Doc.CreateRoot(QStringLiteral("Grid")));
    const QByteArray Original = Doc.SaveToBytes();
    const TXmlMutants Edits(Original, 23, static_cast<int>(Hostile.size()));
    std::vector<TMutant> Mutants = ByteMutants(Original, 17, 150, XmlChars);
    for (size_t I = 0; I < Edits.Cases.size(); ++I) {
        TXmlDocument D;
        std::string Name;
        Edits.Edit(D, I, Name);
        Mutants.push_back({D.SaveToBytes(), Name, {0}});
    }
    Mutants.push_back({"<Grid><Colcount>2000</Colcount></Grid>", "2000 columns", {0}});
    const auto Read = [](TNumGrid& G, const QByteArray& Data) {
        TXmlDocument D;
        try {
            D.LoadFromBytes(Data);
        } catch (const EXmlError&) {
            return; // not a document: nothing to read
        }
        G.ReadFromXML(D.Root());
    };
    Campaign(Read, Original, Mutants, "XML", DataOnly(*Source, State(Source.get(), false)));

    // Counts within the cell limit, but beyond it with the grid's present row count: the new column
    // count must not be applied before the new row count is known to fit.
    std::unique_ptr<TNumGrid> Tall = Make(2);
    Tall->SetRowCount(2000);
    AddHistory(*Tall);
    const qint64 Cols = TNumGrid::MaxCellCount() / Tall->RowCount() + 1;
    const QStringList Before = State(Tall.get());
    const TOutcome O = Timed([&] {
        Read(*Tall,
             QStringLiteral("<Grid><Colcount>%1</Colcount><Rowcount>1</Rowcount></Grid>").arg(Cols).toUtf8());
    });
    EXPECT_TRUE(!O.Raised || State(Tall.get()) == Before)
        << GetParam().Name << ": " << Cols << " columns of one row: " << Diff(Before, State(Tall.get()));
    EXPECT_TRUE(!TimeBound || O.Ms <= MaxReadMs) << GetParam().Name << ": " << O.Ms << " ms";
}

INSTANTIATE_TEST_SUITE_P(SetUps, HostileGrid, ::testing::ValuesIn(GridSetUps),
                         [](const ::testing::TestParamInfo<TGridSetUp>& I) {
                             return std::string(I.param.Name);
                         });

// ---- A form with every field class -------------------------------------------------------------------

class HostileForm : public ::testing::Test {
protected:
    SettingsGuard Guard{TFormatSettings::Invariant(), TFormatSettings::Invariant()};
    DialogRecorder Dialogs;

    // Reads the original into a form in state 2 (the fields in the input become state 1, the others
    // stay), then every mutant into a form in state 1. After each: a field that was not read is
    // exactly as it was, undo history included; a field that was read from input the mutant left
    // alone is as it was but for its history (a read starts a new one).
    void Campaign(const std::function<void(TAllFieldsForm&, const QByteArray&)>& Read,
                  const QByteArray& Original, const std::vector<TMutant>& Mutants,
                  const std::function<std::set<QString>(const TMutant&)>& Touched,
                  const std::set<QString>& InInput, const std::string& Medium) {
        TFindings Found;
        const std::vector<QStringList> Written = TAllFieldsForm(1).States(false);
        {
            TAllFieldsForm F(2);
            const std::vector<QStringList> Before = F.States(false);
            const TOutcome O = Timed([&] { Read(F, Original); });
            CheckTime(Found, O, "the original");
            if (O.Raised || F.ReadResultCode != rrcOk)
                Found.Add("the original does not read back",
                          "read result " + std::to_string(F.ReadResultCode));
            const std::vector<QStringList> Now = F.States(false);
            for (size_t I = 0; I < Now.size(); ++I) {
                const QString& Id = F.Fields[I].second;
                const std::string D = Diff(InInput.count(Id) ? Written[I] : Before[I], Now[I]);
                if (!D.empty()) Found.Add("the original does not read back", Id.toStdString() + ": " + D);
            }
        }
        auto F = std::make_unique<TAllFieldsForm>(1);
        std::vector<QStringList> Before = F->States(), BeforePlain = F->States(false);
        int Reads = 1;
        for (size_t N = 0; N < Mutants.size(); ++N) {
            const TMutant& M = Mutants[N];
            F->Read.clear();
            const TOutcome O = Timed([&] { Read(*F, M.Data); });
            ++Reads;
            CheckTime(Found, O, M.Name);
            if (O.Raised) Found.Add("the form's read raised", M.Name);
            const std::set<QString> Changed = Touched(M);
            const std::string Result = "read result " + std::to_string(F->ReadResultCode);
            const std::vector<QStringList> Now = F->States(), NowPlain = F->States(false);
            for (size_t I = 0; I < Now.size(); ++I) {
                const auto& [Field, Id] = F->Fields[I];
                const std::string Where = M.Name + ", " + Id.toStdString() + ": ";
                if (F->Read.count(Field) == 0) {
                    if (const std::string D = Diff(Before[I], Now[I]); !D.empty())
                        Found.Add("a field that was not read changed (" + Result + ")", Where + D);
                } else if (Changed.count(Id) == 0) {
                    if (const std::string D = Diff(BeforePlain[I], NowPlain[I]); !D.empty())
                        Found.Add("a field read from unchanged input changed (" + Result + ")", Where + D);
                }
            }
            if (Now != Before) {
                F = std::make_unique<TAllFieldsForm>(1);
                Before = F->States();
                BeforePlain = F->States(false);
            }
        }
        Found.Report(("form, " + Medium).c_str(), Reads);
    }
};

QString FileClassName(const QObject* C) {
    return QString::fromLatin1(C->metaObject()->className()).section(QStringLiteral("::"), -1);
}

TEST_F(HostileForm, Streams) {
    TAllFieldsForm Source(1);
    const QByteArray Original = WriteStream([&](TWriter& W) { Source.WritetoStream(W); });
    // Where each field's record (with its class and component name) lies; frames are not in streams.
    std::vector<std::tuple<qsizetype, qsizetype, QString>> Records;
    std::set<QString> InInput;
    qsizetype At = 5; // signature and list begin
    for (const auto& [F, Id] : Source.Fields) {
        if (Id.contains(QLatin1Char('.'))) continue;
        QObject* C = dynamic_cast<QObject*>(F);
        const QByteArray Record = WriteStream([&](TWriter& W) {
            W.WriteString(FileClassName(C));
            W.WriteString(C->objectName());
            F->WritetoStream(W);
        });
        ASSERT_EQ(Original.mid(At, Record.size()), Record) << "stream order differs at " << Id.toStdString();
        Records.emplace_back(At, At + Record.size(), Id);
        InInput.insert(Id);
        At += Record.size();
    }
    std::vector<TMutant> Mutants = ByteMutants(Original, 31, 300, StreamTags);
    const auto Touched = [&](const TMutant& M) {
        std::set<QString> S;
        for (qsizetype P : M.At)
            for (const auto& [First, End, Id] : Records)
                if (P >= First && P < End) S.insert(Id);
        return S;
    };
    int N = 0;
    Campaign(
        [&](TAllFieldsForm& F, const QByteArray& Data) {
            ReadStream([&](TReader& R) { F.ReadfromStream(R, ++N % 2 == 0); }, Data);
        },
        Original, Mutants, Touched, InInput, "stream");
}

// An element's whole content as one text, to tell which fields' elements a mutant changed.
QString Canonical(const TXmlNode& N) {
    QString S = N.Name();
    for (int I = 0; I < N.AttributeCount(); ++I)
        S += QLatin1Char(' ') + N.AttributeName(I) + QLatin1Char('=') + N.AttributeValue(I);
    S += QLatin1Char('{') + N.ValueAsString();
    for (const TXmlNode& C : N.ChildNodes())
        S += Canonical(C);
    return S + QLatin1Char('}');
}

std::map<QString, QString> FieldElements(const QByteArray& Bytes) {
    std::map<QString, QString> M;
    TXmlDocument D;
    try {
        D.LoadFromBytes(Bytes);
    } catch (const EXmlError&) {
        return M;
    }
    for (const TXmlNode& E : D.Root().NodesByName(QStringLiteral("INumFld")))
        M[E.AttributeByName(QStringLiteral("ID"))] += Canonical(E);
    return M;
}

TEST_F(HostileForm, Xml) {
    TAllFieldsForm Source(1);
    TXmlDocument Doc;
    Source.WriteToXML(Doc.CreateRoot(QStringLiteral("All")));
    const QByteArray Original = Doc.SaveToBytes();
    const std::map<QString, QString> Was = FieldElements(Original);
    std::set<QString> InInput;
    for (const auto& [F, Id] : Source.Fields)
        InInput.insert(Id);
    std::vector<TMutant> Mutants = ByteMutants(Original, 37, 200, XmlChars);
    const TXmlMutants Edits(Original, 41, 4);
    for (size_t I = 0; I < Edits.Cases.size(); ++I) {
        TXmlDocument D;
        std::string Name;
        Edits.Edit(D, I, Name);
        Mutants.push_back({D.SaveToBytes(), Name, {}});
    }
    const auto Touched = [&](const TMutant& M) {
        std::set<QString> S;
        const std::map<QString, QString> Now = FieldElements(M.Data);
        for (const auto& [Id, Text] : Now)
            if (Was.count(Id) == 0 || Was.at(Id) != Text) S.insert(Id);
        return S;
    };
    int N = 0;
    Campaign(
        [&](TAllFieldsForm& F, const QByteArray& Data) {
            TXmlDocument D;
            try {
                D.LoadFromBytes(Data);
            } catch (const EXmlError&) {
                return;
            }
            F.ReadFromXML(D.Root(), ++N % 2 == 0);
        },
        Original, Mutants, Touched, InInput, "XML");
}

} // namespace

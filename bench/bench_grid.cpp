// The grid's bulk operations beside plain code doing the same work on the same texts:
// - unit switch: every numeric cell read and written again, twice (SI -> Imperial -> SI); the
//   baseline parses each text with from_chars and prints it with to_chars, twice;
// - XML: the grid written under a node, the document saved to memory, loaded and read back; the
//   baseline builds a pugixml document of the same shape from the same texts (rows joined with
//   ";"), saves it to memory, parses it and splits the rows into cells again;
// - stream: WritetoStream + ReadfromStream through a buffer; the baseline writes the same counts,
//   flags and strings with QDataStream and reads them back into a vector;
// - wide unit switch: a 100,000 x 20 grid switched SI -> Imperial -> SI one column at a time,
//   without an update bracket, as a host writes it naively; the baseline multiplies the same
//   values held as doubles by the unit factor and prints each with to_chars, per switch.
#include <qxnum/qxnum.h>

#include <QBuffer>
#include <QDataStream>
#include <benchmark/benchmark.h>
#include <pugixml.hpp>

#include <charconv>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace qxnum;

constexpr int DataRows = 10000;
constexpr int DataCols = 20;

// A 10,000 x 20 grid of pressures, temperatures and mass flows below one title row and one fixed
// column, filled with values that need all their digits.
std::unique_ptr<TNumGrid> MakeGrid() {
    NumInpFormatSettings = TFormatSettings::Invariant();
    auto Grid = std::make_unique<TNumGrid>();
    Grid->setObjectName(QStringLiteral("Bench"));
    Grid->BeginUpdate();
    Grid->SetColCount(DataCols + 1);
    Grid->SetRowCount(DataRows + 1);
    const TParType Types[] = {ptPress, ptTemp, ptMassflow};
    const Extended Bases[] = {101325.0L, 288.15L, 120.5L};
    for (int C = 1; C <= DataCols; ++C) {
        TNumColumn* Col = Grid->Columns()->Items(C);
        Col->SetParType(Types[C % 3]);
        Col->SetUnitSystem(usSI); // the first setting only records the unit system
        for (int R = 1; R <= DataRows; ++R)
            Grid->SetDValues(C, R, Bases[C % 3] * (1.0L + 0.000137L * R + 0.01L * C));
    }
    Grid->EndUpdate();
    return Grid;
}

std::vector<std::string> DataTexts(TNumGrid& Grid) {
    std::vector<std::string> Texts;
    Texts.reserve(static_cast<size_t>(DataRows) * DataCols);
    for (int R = 1; R <= DataRows; ++R)
        for (int C = 1; C <= DataCols; ++C)
            Texts.push_back(Grid.Cells(C, R).toStdString());
    return Texts;
}

void SwitchAll(TNumGrid& Grid, TUnitSystem U) {
    // As a host switching a form does: every numeric column at once.
    Grid.SwitchUnitSystem(U);
}

void BM_GridUnitSwitch(benchmark::State& State) {
    auto Grid = MakeGrid();
    for (auto _ : State) {
        SwitchAll(*Grid, usImperial);
        SwitchAll(*Grid, usSI);
    }
    State.SetItemsProcessed(State.iterations() * 2 * DataRows * DataCols);
}
BENCHMARK(BM_GridUnitSwitch)->Unit(benchmark::kMillisecond);

void BM_GridUnitSwitch_Baseline(benchmark::State& State) {
    auto Grid = MakeGrid();
    std::vector<std::string> Texts = DataTexts(*Grid);
    char Buf[64];
    for (auto _ : State) {
        for (int Pass = 0; Pass < 2; ++Pass) {
            for (std::string& T : Texts) {
                double V = 0;
                std::from_chars(T.data(), T.data() + T.size(), V);
                const auto End =
                    std::to_chars(Buf, Buf + sizeof Buf, V * 1.0000001, std::chars_format::fixed, 3);
                T.assign(Buf, End.ptr);
            }
        }
        benchmark::DoNotOptimize(Texts.data());
    }
    State.SetItemsProcessed(State.iterations() * 2 * DataRows * DataCols);
}
BENCHMARK(BM_GridUnitSwitch_Baseline)->Unit(benchmark::kMillisecond);

constexpr int WideRows = 100000;
constexpr int WideCols = 20; // the fixed column with the row numbers and 19 numeric ones

TParType WideType(int C) {
    return C % 2 ? ptPress : ptTemp;
}

long double WideValue(int C, int R) {
    return (C % 2 ? 101325.0L : 288.15L) * (1.0L + 0.0000137L * R + 0.01L * C);
}

// Decimal places a column's standard picture always shows ("0.000##" -> 3).
int PictureDecimals(TParType T, TUnitSystem U) {
    const QString& F = ParFormatOf(T, U);
    const qsizetype Dot = F.indexOf(QLatin1Char('.'));
    return Dot < 0 ? 0 : static_cast<int>(F.mid(Dot + 1).count(QLatin1Char('0')));
}

void BM_GridUnitSwitchWide(benchmark::State& State) {
    NumInpFormatSettings = TFormatSettings::Invariant();
    auto Grid = std::make_unique<TNumGrid>();
    Grid->BeginUpdate();
    Grid->SetColCount(WideCols);
    Grid->SetRowCount(WideRows + 1);
    for (int C = 1; C < WideCols; ++C) {
        Grid->Columns()->Items(C)->SetParType(WideType(C));
        Grid->Columns()->Items(C)->SetUnitSystem(usSI);
    }
    for (int R = 1; R <= WideRows; ++R) {
        Grid->SetCells(0, R, QString::number(R));
        for (int C = 1; C < WideCols; ++C)
            Grid->SetDValues(C, R, WideValue(C, R));
    }
    Grid->EndUpdate();
    for (auto _ : State) {
        for (const TUnitSystem U : {usImperial, usSI})
            for (int C = 1; C < WideCols; ++C)
                Grid->Columns()->Items(C)->SetUnitSystem(U);
    }
    State.SetItemsProcessed(State.iterations() * 2 * WideRows * (WideCols - 1));
}
BENCHMARK(BM_GridUnitSwitchWide)->Unit(benchmark::kMillisecond);

void BM_GridUnitSwitchWide_Baseline(benchmark::State& State) {
    const size_t Cells = static_cast<size_t>(WideRows) * (WideCols - 1);
    std::vector<double> Values(Cells);
    std::vector<std::string> Texts(Cells);
    for (int R = 1; R <= WideRows; ++R)
        for (int C = 1; C < WideCols; ++C)
            Values[static_cast<size_t>(R - 1) * (WideCols - 1) + static_cast<size_t>(C - 1)] =
                static_cast<double>(WideValue(C, R));
    char Buf[64];
    for (auto _ : State) {
        for (const TUnitSystem U : {usImperial, usSI}) {
            double Factor[WideCols];
            int Decimals[WideCols];
            for (int C = 1; C < WideCols; ++C) {
                Factor[C] = 1.0 / ParScaleOf(WideType(C), U);
                Decimals[C] = PictureDecimals(WideType(C), U);
            }
            size_t I = 0;
            for (int R = 1; R <= WideRows; ++R)
                for (int C = 1; C < WideCols; ++C, ++I) {
                    const auto End = std::to_chars(Buf, Buf + sizeof Buf, Values[I] * Factor[C],
                                                   std::chars_format::fixed, Decimals[C]);
                    Texts[I].assign(Buf, End.ptr);
                }
        }
        benchmark::DoNotOptimize(Texts.data());
    }
    State.SetItemsProcessed(State.iterations() * 2 * WideRows * (WideCols - 1));
}
BENCHMARK(BM_GridUnitSwitchWide_Baseline)->Unit(benchmark::kMillisecond);

void BM_GridXmlRoundTrip(benchmark::State& State) {
    auto Grid = MakeGrid();
    auto Back = MakeGrid();
    for (auto _ : State) {
        TXmlDocument Doc;
        Grid->WriteToXML(Doc.CreateRoot(QStringLiteral("config")).NodeNew(QStringLiteral("INumFld")));
        const QByteArray Bytes = Doc.SaveToBytes();
        TXmlDocument In;
        In.LoadFromBytes(Bytes);
        Back->ReadFromXML(In.Root().NodeByName(QStringLiteral("INumFld")));
        benchmark::DoNotOptimize(Bytes.size());
    }
}
BENCHMARK(BM_GridXmlRoundTrip)->Unit(benchmark::kMillisecond);

void BM_GridXmlRoundTrip_Baseline(benchmark::State& State) {
    auto Grid = MakeGrid();
    const int Rows = Grid->RowCount(), Cols = Grid->ColCount();
    std::vector<std::string> Cells;
    for (int R = 0; R < Rows; ++R)
        for (int C = 0; C < Cols; ++C)
            Cells.push_back(Grid->Cells(C, R).toStdString());
    std::vector<std::string> Back(Cells.size());
    for (auto _ : State) {
        pugi::xml_document Doc;
        pugi::xml_node Fld = Doc.append_child("config").append_child("INumFld");
        Fld.append_child("Delimiter").text().set(";");
        Fld.append_child("Colcount").text().set(Cols);
        Fld.append_child("Rowcount").text().set(Rows);
        pugi::xml_node RowsNode = Fld.append_child("Rows");
        std::string Line;
        for (int R = 0; R < Rows; ++R) {
            Line.clear();
            for (int C = 0; C < Cols; ++C) {
                if (C) Line += ';';
                Line += Cells[static_cast<size_t>(R * Cols + C)];
            }
            RowsNode.append_child(("Row" + std::to_string(R)).c_str()).text().set(Line.c_str());
        }
        std::ostringstream Out;
        Doc.save(Out);
        const std::string Text = Out.str();
        pugi::xml_document In;
        In.load_buffer(Text.data(), Text.size());
        size_t I = 0;
        for (pugi::xml_node Row : In.child("config").child("INumFld").child("Rows").children()) {
            const std::string_view S = Row.text().get();
            size_t Start = 0;
            for (;;) {
                const size_t Semi = S.find(';', Start);
                if (I < Back.size()) Back[I++].assign(S.substr(Start, Semi - Start));
                if (Semi == std::string_view::npos) break;
                Start = Semi + 1;
            }
        }
        benchmark::DoNotOptimize(Back.data());
    }
}
BENCHMARK(BM_GridXmlRoundTrip_Baseline)->Unit(benchmark::kMillisecond);

void BM_GridStreamRoundTrip(benchmark::State& State) {
    auto Grid = MakeGrid();
    auto Back = MakeGrid();
    for (auto _ : State) {
        QBuffer Buf;
        Buf.open(QIODevice::ReadWrite);
        {
            TWriter W(&Buf);
            Grid->WritetoStream(W);
        }
        Buf.seek(0);
        {
            TReader R(&Buf);
            Back->ReadfromStream(R);
        }
        benchmark::DoNotOptimize(Buf.size());
    }
}
BENCHMARK(BM_GridStreamRoundTrip)->Unit(benchmark::kMillisecond);

void BM_GridStreamRoundTrip_Baseline(benchmark::State& State) {
    auto Grid = MakeGrid();
    const int Rows = Grid->RowCount(), Cols = Grid->ColCount();
    std::vector<QString> Cells;
    for (int R = 0; R < Rows; ++R)
        for (int C = 0; C < Cols; ++C)
            Cells.push_back(Grid->Cells(C, R));
    std::vector<QString> Back(Cells.size());
    for (auto _ : State) {
        QBuffer Buf;
        Buf.open(QIODevice::ReadWrite);
        {
            QDataStream Out(&Buf);
            Out << Rows << Cols;
            for (int C = 0; C < Cols; ++C)
                Out << 0;
            for (int C = 0; C < Cols; ++C)
                Out << false;
            for (const QString& S : Cells)
                Out << S;
            Out << true << true;
        }
        Buf.seek(0);
        QDataStream In(&Buf);
        qint32 R = 0, C = 0, U = 0;
        bool B = false;
        In >> R >> C;
        for (int I = 0; I < C; ++I)
            In >> U;
        for (int I = 0; I < C; ++I)
            In >> B;
        for (QString& S : Back)
            In >> S;
        In >> B >> B;
        benchmark::DoNotOptimize(Back.data());
    }
}
BENCHMARK(BM_GridStreamRoundTrip_Baseline)->Unit(benchmark::kMillisecond);

} // namespace

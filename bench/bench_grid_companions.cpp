// The grid's clipboard paste and table look-up beside plain code doing the same work:
// - paste: 10,000 rows x 10 numeric columns of TAB / CR LF text through PasteFromClipboard (the
//   question answered No by the message handler, so the rows go below the first data row), into
//   columns of pressures, temperatures and mass flows; the baseline splits the same text at the
//   same delimiters and parses each field with from_chars into a vector; a second baseline
//   (ParseFormat) also prints each parsed field with to_chars in its column's decimals, the
//   paste's unavoidable work;
// - look-up: 100,000 GetInterpPars + GetInterpVal in a 1,000-row table; the baseline is
//   std::upper_bound and the linear formula on two vectors of doubles.
#include <qxnum/qxnum.h>

#include <QApplication>
#include <QClipboard>
#include <benchmark/benchmark.h>

#include <algorithm>
#include <charconv>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace qxnum;

constexpr int PasteRows = 10000;
constexpr int PasteCols = 10;

QString PasteText() {
    QString Text;
    for (int R = 0; R < PasteRows; ++R) {
        for (int C = 0; C < PasteCols; ++C) {
            Text += QString::number(1000.0 + R * 0.731 + C * 17.25, 'g', 10);
            Text += C + 1 < PasteCols ? QLatin1Char('\t') : QLatin1Char('\r');
        }
        Text += QLatin1Char('\n');
    }
    return Text;
}

std::unique_ptr<TNumGrid> PasteTarget() {
    auto Grid = std::make_unique<TNumGrid>();
    Grid->setObjectName(QStringLiteral("Bench"));
    Grid->SetColCount(PasteCols + 1);
    Grid->SetRowCount(2);
    const TParType Types[] = {ptPress, ptTemp, ptMassflow};
    for (int C = 1; C <= PasteCols; ++C)
        Grid->Columns()->Items(C)->SetParType(Types[C % 3]);
    Grid->SetCol(1);
    Grid->SetRow(1);
    return Grid;
}

void BM_GridPaste(benchmark::State& State) {
    NumInpFormatSettings = TFormatSettings::Invariant();
    FormatSettings = TFormatSettings::Invariant();
    const TMessageDlgHandler Previous = SetMessageDlgHandler(
        [](const QString&, TMsgDlgType, TMsgDlgButtons) { return static_cast<int>(mrNo); });
    QGuiApplication::clipboard()->setText(PasteText());
    for (auto _ : State) {
        State.PauseTiming();
        auto Grid = PasteTarget();
        State.ResumeTiming();
        Grid->PasteFromClipboard();
        if (Grid->RowCount() != PasteRows + 1) State.SkipWithError("the paste did not fill the grid");
        State.PauseTiming();
        Grid.reset();
        State.ResumeTiming();
    }
    SetMessageDlgHandler(Previous);
}
BENCHMARK(BM_GridPaste)->Unit(benchmark::kMillisecond);

// Calls Field(start, end) for each field of clipboard text delimited as the paste reads it.
template <typename F> void ForEachField(const std::string& Text, F&& Field) {
    const auto Delimiter = [](char Ch) {
        return Ch == '\t' || Ch == '\r' || Ch == '\n' || Ch == ' ' || Ch == ';';
    };
    const char* P = Text.data();
    const char* End = P + Text.size();
    while (P < End) {
        while (P < End && Delimiter(*P))
            ++P;
        const char* Start = P;
        while (P < End && !Delimiter(*P))
            ++P;
        if (P != Start) Field(Start, P);
    }
}

void BM_GridPaste_Baseline(benchmark::State& State) {
    const std::string Text = PasteText().toStdString();
    for (auto _ : State) {
        std::vector<double> Values;
        Values.reserve(static_cast<size_t>(PasteRows) * PasteCols);
        ForEachField(Text, [&](const char* Start, const char* Stop) {
            double V = 0.0;
            std::from_chars(Start, Stop, V);
            Values.push_back(V);
        });
        benchmark::DoNotOptimize(Values.data());
        if (Values.size() != static_cast<size_t>(PasteRows) * PasteCols) State.SkipWithError("wrong count");
    }
}
BENCHMARK(BM_GridPaste_Baseline)->Unit(benchmark::kMillisecond);

void BM_GridPaste_ParseFormat(benchmark::State& State) {
    NumInpFormatSettings = TFormatSettings::Invariant();
    FormatSettings = TFormatSettings::Invariant();
    const std::string Text = PasteText().toStdString();
    // Decimal places each target column's picture always shows ("0.000##" -> 3).
    int Decimals[PasteCols];
    {
        auto Grid = PasteTarget();
        for (int C = 0; C < PasteCols; ++C) {
            const TNumColumn* Col = Grid->Columns()->Items(C + 1);
            const QString& F = ParFormatOf(Col->ParType(), Col->UnitSystem());
            const qsizetype Dot = F.indexOf(QLatin1Char('.'));
            Decimals[C] = Dot < 0 ? 0 : static_cast<int>(F.mid(Dot + 1).count(QLatin1Char('0')));
        }
    }
    std::vector<std::string> Cells(static_cast<size_t>(PasteRows) * PasteCols);
    char Buf[64];
    for (auto _ : State) {
        size_t I = 0;
        ForEachField(Text, [&](const char* Start, const char* Stop) {
            if (I >= Cells.size()) return;
            double V = 0.0;
            std::from_chars(Start, Stop, V);
            const auto Out =
                std::to_chars(Buf, Buf + sizeof Buf, V, std::chars_format::fixed, Decimals[I % PasteCols]);
            Cells[I++].assign(Buf, Out.ptr);
        });
        benchmark::DoNotOptimize(Cells.data());
        if (I != Cells.size()) State.SkipWithError("wrong count");
    }
}
BENCHMARK(BM_GridPaste_ParseFormat)->Unit(benchmark::kMillisecond);

constexpr int TableRows = 1000;
constexpr int Lookups = 100000;

std::vector<double> LookupInputs() {
    std::vector<double> In(Lookups);
    for (int I = 0; I < Lookups; ++I)
        In[static_cast<size_t>(I)] = 1.0 + static_cast<double>(static_cast<long long>(I) * 7919 % Lookups) *
                                               (TableRows - 1.0) / Lookups;
    return In;
}

void BM_GridInterp(benchmark::State& State) {
    NumInpFormatSettings = TFormatSettings::Invariant();
    FormatSettings = TFormatSettings::Invariant();
    TNumGrid Grid;
    Grid.SetColCount(3);
    Grid.SetRowCount(TableRows + 1);
    for (int R = 1; R <= TableRows; ++R) {
        Grid.SetDValues(1, R, R);
        Grid.SetDValues(2, R, R * 0.5 + 3.0);
    }
    const std::vector<double> In = LookupInputs();
    for (auto _ : State) {
        double Sum = 0.0;
        for (double X : In) {
            int Row2 = 0;
            double F = 0.0, V = 0.0;
            Grid.GetInterpPars(1, true, X, Row2, F);
            Grid.GetInterpVal(2, Row2, F, V);
            Sum += V;
        }
        benchmark::DoNotOptimize(Sum);
    }
}
BENCHMARK(BM_GridInterp)->Unit(benchmark::kMillisecond);

void BM_GridInterp_Baseline(benchmark::State& State) {
    std::vector<double> X(TableRows), Y(TableRows);
    for (int R = 0; R < TableRows; ++R) {
        X[static_cast<size_t>(R)] = R + 1;
        Y[static_cast<size_t>(R)] = (R + 1) * 0.5 + 3.0;
    }
    const std::vector<double> In = LookupInputs();
    for (auto _ : State) {
        double Sum = 0.0;
        for (double V : In) {
            auto It = std::upper_bound(X.begin() + 1, X.end() - 1, V);
            const auto I = static_cast<size_t>(It - X.begin());
            const double F = (V - X[I - 1]) / (X[I] - X[I - 1]);
            Sum += Y[I - 1] + (Y[I] - Y[I - 1]) * F;
        }
        benchmark::DoNotOptimize(Sum);
    }
}
BENCHMARK(BM_GridInterp_Baseline)->Unit(benchmark::kMillisecond);

} // namespace

// Painting a 100,000 x 20 grid: one full repaint of the viewport scrolled to the top and to row
// 99,990. The ratio of the two shows that painting does not depend on where the view is; the
// second benchmark also reports the heap bytes per cell of the cell store (mallinfo2 around
// filling the grid with typical numeric texts).
#include <qxnum/qxnum.h>

#include <QImage>
#include <QPainter>
#include <benchmark/benchmark.h>

#include <malloc.h>

#include <memory>

namespace {

using namespace qxnum;

constexpr int Rows = 100000;
constexpr int Cols = 20;

std::unique_ptr<TNumGrid> MakeGrid(size_t* BytesPerCell = nullptr) {
    NumInpFormatSettings = TFormatSettings::Invariant();
    auto Grid = std::make_unique<TNumGrid>();
    Grid->resize(1200, 800);
    Grid->SetColCount(Cols);
    for (int C = 1; C < Cols; ++C)
        Grid->Columns()->Items(C)->SetParType(C % 2 ? ptPress : ptTemp);
    const size_t Before = mallinfo2().uordblks;
    Grid->BeginUpdate();
    Grid->SetRowCount(Rows + 1);
    for (int R = 1; R <= Rows; ++R) {
        Grid->SetCells(0, R, QString::number(R));
        for (int C = 1; C < Cols; ++C)
            Grid->SetDValues(C, R, 101325.0L + R * 0.37L + C);
    }
    const size_t After = mallinfo2().uordblks;
    if (BytesPerCell) *BytesPerCell = (After - Before) / (static_cast<size_t>(Rows) * Cols);
    Grid->show();
    return Grid;
}

void Paint(benchmark::State& State, int TopRow) {
    size_t PerCell = 0;
    auto Grid = MakeGrid(&PerCell);
    Grid->SetTopRow(TopRow);
    QImage Image(Grid->viewport()->size(), QImage::Format_ARGB32_Premultiplied);
    for (auto _ : State) {
        Grid->viewport()->render(&Image);
        benchmark::DoNotOptimize(Image.bits());
    }
    State.counters["bytes_per_cell"] = static_cast<double>(PerCell);
    State.counters["top_row"] = Grid->TopRow();
}

void BM_GridPaint_Top(benchmark::State& State) {
    Paint(State, 1);
}
BENCHMARK(BM_GridPaint_Top)->Unit(benchmark::kMicrosecond);

void BM_GridPaint_Row99990(benchmark::State& State) {
    Paint(State, 99990);
}
BENCHMARK(BM_GridPaint_Row99990)->Unit(benchmark::kMicrosecond);

} // namespace

// The grid's paste over arbitrary clipboard text. The first byte picks the answer to the question,
// the grid class, the start cell and the column kinds. Whatever the text, the paste ends (no
// crash, no hang), leaves no paste state behind, stays within the row limit, and is one undo step
// that takes the grid back exactly and forward again.
#include <qxnum/dialogs.h>
#include <qxnum/widgets/numgrid.h>
#include <qxnum/widgets/timeseriesgrid.h>

#include "fuzz_widgets.h"

#include <QApplication>
#include <QClipboard>
#include <QUndoStack>

#include <cstdlib>
#include <memory>

using namespace qxnum;

namespace {

int Answer = mrNo;

QApplication& App() {
    return fuzz::App("fuzz_paste", [](const QString&, TMsgDlgType, TMsgDlgButtons Buttons) {
        return Buttons == mbYesNoCancel ? Answer : static_cast<int>(mrOk);
    });
}

std::vector<QStringList> Rows(TNumGrid& G) {
    std::vector<QStringList> S;
    for (int R = 0; R < G.RowCount(); ++R)
        S.push_back(G.Rows(R));
    return S;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* Data, size_t Size) {
    App();
    if (Size == 0) return 0;
    const quint8 Mode = Data[0];
    Answer = (Mode & 3) == 0 ? mrYes : (Mode & 3) == 3 ? mrCancel : mrNo;
    std::unique_ptr<TNumGrid> Grid;
    if (Mode & 4) {
        auto* Series = new TTimeSeriesGrid;
        Series->SetAllowDataDialog(false); // no modal dialog without a person
        Grid.reset(Series);
    } else {
        Grid = std::make_unique<TNumGrid>();
    }
    Grid->SetColCount(4);
    Grid->SetRowCount(3);
    Grid->SetAlwaysPasteFromLeftCol(Mode & 8);
    Grid->Columns()->Items(1)->SetParType(ptPress);
    Grid->Columns()->Items(2)->SetStringCol(Mode & 16);
    Grid->Columns()->Items(3)->SetReadOnly(Mode & 32);
    if (Mode & 64) Grid->Columns()->Items(3)->SetUnitSystem(usImperial);
    for (int R = 1; R < 3; ++R)
        Grid->SetDValues(1, R, 1e5 * R);
    Grid->SetCol(1 + (Mode >> 7));
    Grid->SetRow(1);
    Grid->UndoStack()->clear();
    const std::vector<QStringList> Before = Rows(*Grid);
    const int RowsBefore = Grid->RowCount();

    QGuiApplication::clipboard()->setText(
        QString::fromUtf8(reinterpret_cast<const char*>(Data + 1), static_cast<qsizetype>(Size - 1)));
    Grid->PasteFromClipboard();

    fuzz::Check(!Grid->PastingOrCopying());
    fuzz::Check(!Grid->DialogCancelled());
    fuzz::Check(Grid->RowCount() <= std::max(RowsBefore, 10002));
    fuzz::Check(Grid->UndoStack()->count() <= 1);
    const std::vector<QStringList> After = Rows(*Grid);
    if (Grid->UndoStack()->count() == 1) {
        Grid->UndoStack()->undo();
        fuzz::Check(Rows(*Grid) == Before);
        Grid->UndoStack()->redo();
        fuzz::Check(Rows(*Grid) == After);
    } else {
        fuzz::Check(After == Before);
    }
    return 0;
}

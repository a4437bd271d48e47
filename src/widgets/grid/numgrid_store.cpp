// The grid's cell store.
#include "numgrid_p.h"

#include <algorithm>

namespace qxnum {

namespace {

template <typename T> void MoveItem(std::vector<T>& V, size_t From, size_t To) {
    if (From < To)
        std::rotate(V.begin() + static_cast<std::ptrdiff_t>(From),
                    V.begin() + static_cast<std::ptrdiff_t>(From) + 1,
                    V.begin() + static_cast<std::ptrdiff_t>(To) + 1);
    else if (To < From)
        std::rotate(V.begin() + static_cast<std::ptrdiff_t>(To),
                    V.begin() + static_cast<std::ptrdiff_t>(From),
                    V.begin() + static_cast<std::ptrdiff_t>(From) + 1);
}

} // namespace

void TCellStore::SetObject(int C, int R, QObject* O) {
    if (!Contains(C, R)) return;
    if (FObjects.empty()) {
        if (!O) return;
        FObjects.assign(FRows.size(), std::vector<QObject*>(static_cast<size_t>(FColCount), nullptr));
    }
    FObjects[static_cast<size_t>(R)][static_cast<size_t>(C)] = O;
}

void TCellStore::ClearColumnObjects(int C) {
    if (C < 0 || C >= FColCount) return;
    for (auto& Row : FObjects)
        Row[static_cast<size_t>(C)] = nullptr;
}

void TCellStore::PutRow(int R, const TCellRow& Cells) {
    TCellRow& Row = FRows[static_cast<size_t>(R)];
    for (size_t C = 0; C < Row.size(); ++C)
        Row[C] = C < Cells.size() ? Cells[C] : TCell();
    TouchAll();
}

void TCellStore::Resize(int Cols, int Rows) {
    Cols = std::max(Cols, 0);
    Rows = std::max(Rows, 0);
    TouchAll();
    if (Cols != FColCount) {
        FVersions.resize(static_cast<size_t>(Cols), 0);
        for (auto& Row : FRows)
            Row.resize(static_cast<size_t>(Cols));
        for (auto& Row : FObjects)
            Row.resize(static_cast<size_t>(Cols), nullptr);
        FColCount = Cols;
    }
    FRows.resize(static_cast<size_t>(Rows), TCellRow(static_cast<size_t>(FColCount)));
    if (!FObjects.empty())
        FObjects.resize(static_cast<size_t>(Rows),
                        std::vector<QObject*>(static_cast<size_t>(FColCount), nullptr));
}

void TCellStore::MoveRow(int From, int To) {
    if (From == To || From < 0 || To < 0 || From >= RowCount() || To >= RowCount()) return;
    TouchAll();
    MoveItem(FRows, static_cast<size_t>(From), static_cast<size_t>(To));
    if (!FObjects.empty()) MoveItem(FObjects, static_cast<size_t>(From), static_cast<size_t>(To));
}

void TCellStore::MoveColumn(int From, int To) {
    if (From == To || From < 0 || To < 0 || From >= FColCount || To >= FColCount) return;
    TouchAll();
    for (auto& Row : FRows)
        MoveItem(Row, static_cast<size_t>(From), static_cast<size_t>(To));
    for (auto& Row : FObjects)
        MoveItem(Row, static_cast<size_t>(From), static_cast<size_t>(To));
}

void TCellStore::DeleteRow(int R) {
    if (R < 0 || R >= RowCount()) return;
    TouchAll();
    FRows.erase(FRows.begin() + R);
    if (!FObjects.empty()) FObjects.erase(FObjects.begin() + R);
}

void TCellStore::Splice(int At, int Remove, std::vector<TCellRow> Insert) {
    TouchAll();
    const auto Pos = FRows.begin() + At;
    const auto InsertCount = static_cast<std::ptrdiff_t>(Insert.size());
    FRows.erase(Pos, Pos + Remove);
    FRows.insert(FRows.begin() + At, std::make_move_iterator(Insert.begin()),
                 std::make_move_iterator(Insert.end()));
    if (!FObjects.empty()) {
        FObjects.erase(FObjects.begin() + At, FObjects.begin() + At + Remove);
        FObjects.insert(FObjects.begin() + At, static_cast<size_t>(InsertCount),
                        std::vector<QObject*>(static_cast<size_t>(FColCount), nullptr));
    }
}

size_t TCellStore::MemoryBytes() const {
    size_t Bytes = FRows.capacity() * sizeof(TCellRow);
    for (const auto& Row : FRows) {
        Bytes += Row.capacity() * sizeof(TCell);
        for (const TCell& Cell : Row) {
            const QString& S = Cell.Text();
            // Shared texts (the same default in many cells) are counted once per cell all the same.
            if (S.capacity() > 0)
                Bytes += sizeof(QArrayData) + static_cast<size_t>(S.capacity() + 1) * sizeof(QChar);
        }
    }
    for (const auto& Row : FObjects)
        Bytes += sizeof(Row) + Row.capacity() * sizeof(QObject*);
    return Bytes;
}

} // namespace qxnum

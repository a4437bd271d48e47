// The grid's readers over arbitrary bytes. The first byte picks the medium (stream record, XML
// content, or the stream skip), a few reading flags and (bit 7) a column collection one item
// shorter than the grid, as a host that removed a column leaves it. Every read either succeeds or
// raises EReadError / EConvertError / EXmlError, and a read that raises leaves the grid as it was,
// undo history included. What a read accepted can be checked and written, and a grid that keeps
// the counts it reads (and its own titles) reads its own record back to the same table; a skip
// consumes exactly the grid's own record. fuzz_timeseries runs the same on the time-series grid.
#include <qxnum/dialogs.h>
#include <qxnum/widgets/numgrid.h>
#include <qxnum/widgets/timeseriesgrid.h>

#include "fuzz_widgets.h"

#include <QApplication>
#include <QBuffer>
#include <QUndoCommand>
#include <QUndoStack>

#include <cstdlib>
#include <memory>

#ifndef QXNUM_FUZZ_GRID
#define QXNUM_FUZZ_GRID TNumGrid
#endif

using namespace qxnum;

namespace {

QApplication& App() {
    return fuzz::App("fuzz_grid",
                     [](const QString&, TMsgDlgType, TMsgDlgButtons) { return static_cast<int>(mrOk); });
}

// Counts, cells (title rows too unless Data), column properties and the undo history.
QStringList Snapshot(TNumGrid& G, bool Data = false) {
    QStringList S{QString::number(G.ColCount()), QString::number(G.RowCount())};
    for (int R = Data ? G.FixedRows() : 0; R < G.RowCount(); ++R)
        S += G.Rows(R);
    if (!Data) S += QString::number(G.UndoStack()->count());
    for (int C = 0; C < G.Columns()->Count(); ++C)
        S += QStringLiteral("%1/%2")
                 .arg(G.Columns()->Items(C)->UnitSystem())
                 .arg(G.Columns()->Items(C)->StringCol());
    return S;
}

// The grid the first byte asks for, with a step of a host's own in its history.
std::unique_ptr<TNumGrid> MakeGrid(quint8 Mode) {
    auto G = std::make_unique<QXNUM_FUZZ_GRID>();
    G->SetIgnoreRowCountRead(Mode & 4);
    G->SetIgnoreColCountRead(Mode & 8);
    G->SetIgnoreColPropsRead(Mode & 16);
    G->SetReadColTitlesFromStream(Mode & 32);
    G->SetStoreParTypes(Mode & 64);
    G->Columns()->Items(1)->SetParType(ptPress);
    if (Mode & 128) G->Columns()->Delete(G->Columns()->Count() - 1);
    G->SetCells(1, 1, QStringLiteral("1.5"));
    G->UndoStack()->push(new QUndoCommand(QStringLiteral("host step")));
    return G;
}

// Whether G's record carries all that makes its columns: the stream holds no parameter types (an
// XML read with StoreParTypes may have changed them), and the stream reader refuses the error value
// that an XML read keeps for an unknown unit name.
bool StreamCarriesColumns(TNumGrid& G, TNumGrid& Fresh) {
    for (int C = 0; C < G.Columns()->Count(); ++C) {
        const TNumColumn* Col = G.Columns()->Items(C);
        if (Col->UnitSystem() > usImperial) return false;
        const TNumColumn* Other = C < Fresh.Columns()->Count() ? Fresh.Columns()->Items(C) : nullptr;
        if (Other && Other->ParType() != Col->ParType()) return false;
    }
    return true;
}

QByteArray WriteRecord(TNumGrid& G) {
    QBuffer Out;
    Out.open(QIODevice::WriteOnly);
    {
        TWriter W(&Out);
        G.WritetoStream(W);
    }
    return Out.data();
}

// Reads (or skips) Record into G; false when that raises. End: where the reader stopped.
bool ReadBack(TNumGrid& G, const QByteArray& Record, bool Skip, qint64& End) {
    QBuffer In;
    In.setData(Record);
    In.open(QIODevice::ReadOnly);
    TReader R(&In);
    try {
        if (Skip)
            G.SkipfromStream(R);
        else
            G.ReadfromStream(R);
    } catch (const EReadError&) {
        return false;
    }
    End = R.Position();
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* Data, size_t Size) {
    App();
    if (Size == 0) return 0;
    const quint8 Mode = Data[0];
    const QByteArray Body(reinterpret_cast<const char*>(Data + 1), static_cast<qsizetype>(Size - 1));

    const std::unique_ptr<TNumGrid> Made = MakeGrid(Mode);
    TNumGrid& Grid = *Made;
    const QStringList Before = Snapshot(Grid);
    bool Failed = false;
    try {
        switch (Mode & 3) {
        case 0:
        case 1: {
            QBuffer Buf;
            Buf.setData(Body);
            Buf.open(QIODevice::ReadOnly);
            TReader R(&Buf);
            if (Mode & 1)
                Grid.SkipfromStream(R);
            else
                Grid.ReadfromStream(R);
            break;
        }
        default: {
            TXmlDocument Doc;
            Doc.LoadFromBytes(Body);
            if (!Doc.IsEmpty()) Grid.ReadFromXML(Doc.Root());
            break;
        }
        }
    } catch (const EReadError&) {
        Failed = true;
    } catch (const EConvertError&) {
        Failed = true;
    } catch (const EXmlError&) {
        Failed = true;
    }
    if (Failed || (Mode & 3) == 1) fuzz::Check(Snapshot(Grid) == Before);
    fuzz::Check(!Grid.ReadingFromStream());
    // Whatever was read can be checked and written again.
    Grid.CheckAllCells();
    const QByteArray Record = WriteRecord(Grid);
    qint64 End = -1;
    if ((Mode & 3) == 1) {
        // The skip consumes exactly what the write wrote, string-column flags included.
        fuzz::Check(ReadBack(*MakeGrid(Mode), Record, true, End) && End == Record.size());
    } else if (const std::unique_ptr<TNumGrid> Back = MakeGrid(Mode);
               !Failed && (Mode & 60) == 0 && StreamCarriesColumns(Grid, *Back)) {
        // Not with titles from the stream: the layout's rules leave the title row unread then.
        fuzz::Check(ReadBack(*Back, Record, false, End) && End == Record.size());
        fuzz::Check(Snapshot(*Back, true) == Snapshot(Grid, true));
    }
    TXmlDocument Doc;
    Grid.WriteToXML(Doc.CreateRoot(QStringLiteral("g")));
    return 0;
}

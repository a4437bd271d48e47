// The grid's readers over arbitrary bytes. The first byte picks the medium (stream record, XML
// content, or the stream skip) and a few reading flags; with its top bit set, a second byte picks
// the grid: bit 0 a time-series grid, bit 1 one column description fewer than columns (a host
// removed it). Every read either succeeds or raises EReadError / EConvertError / EXmlError, a read
// that raises leaves the grid as it was, and what a read accepted can be checked and written.
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

// A grid of the kind the input asks for, with a step of a host's own in its history.
std::unique_ptr<TNumGrid> MakeGrid(quint8 Mode, quint8 Kind) {
    std::unique_ptr<TNumGrid> G(Kind & 1 ? new TTimeSeriesGrid : new TNumGrid);
    G->SetIgnoreRowCountRead(Mode & 4);
    G->SetIgnoreColCountRead(Mode & 8);
    G->SetIgnoreColPropsRead(Mode & 16);
    G->SetReadColTitlesFromStream(Mode & 32);
    G->SetStoreParTypes(Mode & 64);
    G->Columns()->Items(1)->SetParType(ptPress);
    G->SetCells(1, 1, QStringLiteral("1.5"));
    if (Kind & 2) G->Columns()->Delete(G->Columns()->Count() - 1);
    G->UndoStack()->push(new QUndoCommand(QStringLiteral("host step")));
    return G;
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

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* Data, size_t Size) {
    App();
    if (Size == 0) return 0;
    const quint8 Mode = Data[0];
    const size_t Head = (Mode & 0x80) && Size > 1 ? 2 : 1;
    const quint8 Kind = Head == 2 ? Data[1] : 0;
    const QByteArray Body(reinterpret_cast<const char*>(Data + Head), static_cast<qsizetype>(Size - Head));

    const std::unique_ptr<TNumGrid> Made = MakeGrid(Mode, Kind);
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
    if ((Mode & 3) == 1) {
        // The skip consumes exactly what the write wrote, string-column flags included.
        const QByteArray Own = WriteRecord(Grid);
        QBuffer In;
        In.setData(Own);
        In.open(QIODevice::ReadOnly);
        TReader R(&In);
        try {
            MakeGrid(Mode, Kind)->SkipfromStream(R);
        } catch (const EReadError&) {
            fuzz::Check(false);
        }
        fuzz::Check(R.Position() == Own.size());
    }
    fuzz::Check(!Grid.ReadingFromStream());
    // Whatever was read can be checked and written again, and a grid that keeps the counts it
    // reads reads its own record back to the same table.
    Grid.CheckAllCells();
    const QByteArray Record = WriteRecord(Grid);
    if (!Failed && (Mode & 3) != 1 && (Mode & 28) == 0) {
        const std::unique_ptr<TNumGrid> Back = MakeGrid(Mode, Kind);
        QBuffer In;
        In.setData(Record);
        In.open(QIODevice::ReadOnly);
        TReader R(&In);
        try {
            Back->ReadfromStream(R);
        } catch (const EReadError&) {
            fuzz::Check(false);
        }
        fuzz::Check(R.Position() == Record.size());
        fuzz::Check(Snapshot(*Back, true) == Snapshot(Grid, true));
    }
    TXmlDocument Doc;
    Grid.WriteToXML(Doc.CreateRoot(QStringLiteral("g")));
    return 0;
}

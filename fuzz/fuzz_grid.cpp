// The grid's readers over arbitrary bytes. The first byte picks the medium (stream record, XML
// content, or the stream skip), a few reading flags and (bit 7) a column collection one item
// shorter than the grid, as a host that removed a column leaves it. Every read either succeeds or
// raises EReadError / EConvertError / EXmlError, and a read that raises leaves the grid as it was.
#include <qxnum/dialogs.h>
#include <qxnum/widgets/numgrid.h>

#include "fuzz_widgets.h"

#include <QApplication>
#include <QBuffer>

#include <cstdlib>

using namespace qxnum;

namespace {

QApplication& App() {
    return fuzz::App("fuzz_grid",
                     [](const QString&, TMsgDlgType, TMsgDlgButtons) { return static_cast<int>(mrOk); });
}

QStringList Snapshot(TNumGrid& G) {
    QStringList S{QString::number(G.ColCount()), QString::number(G.RowCount())};
    for (int R = 0; R < G.RowCount(); ++R)
        S += G.Rows(R);
    for (int C = 0; C < G.Columns()->Count(); ++C)
        S += QStringLiteral("%1/%2")
                 .arg(G.Columns()->Items(C)->UnitSystem())
                 .arg(G.Columns()->Items(C)->StringCol());
    return S;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* Data, size_t Size) {
    App();
    if (Size == 0) return 0;
    const quint8 Mode = Data[0];
    const QByteArray Body(reinterpret_cast<const char*>(Data + 1), static_cast<qsizetype>(Size - 1));

    TNumGrid Grid;
    Grid.SetIgnoreRowCountRead(Mode & 4);
    Grid.SetIgnoreColCountRead(Mode & 8);
    Grid.SetIgnoreColPropsRead(Mode & 16);
    Grid.SetReadColTitlesFromStream(Mode & 32);
    Grid.SetStoreParTypes(Mode & 64);
    Grid.Columns()->Items(1)->SetParType(ptPress);
    if (Mode & 128) Grid.Columns()->Delete(Grid.Columns()->Count() - 1);
    Grid.SetCells(1, 1, QStringLiteral("1.5"));
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
    // Whatever was read can be written again.
    QBuffer Out;
    Out.open(QIODevice::WriteOnly);
    {
        TWriter W(&Out);
        Grid.WritetoStream(W);
    }
    TXmlDocument Doc;
    Grid.WriteToXML(Doc.CreateRoot(QStringLiteral("g")));
    return 0;
}

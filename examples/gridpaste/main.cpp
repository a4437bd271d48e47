// A grid filled from pasted text and interpolated: a compressor's efficiency against its pressure
// ratio, pasted as a spreadsheet would put it on the clipboard, then looked up at any ratio.
#include <qxnum/qxnum.h>

#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QVBoxLayout>

#include <cstdio>

using namespace qxnum;

int main(int argc, char** argv) {
    QApplication App(argc, argv);
    const bool Check = App.arguments().contains(QStringLiteral("--check"));
    FormatSettings = NumInpFormatSettings = TFormatSettings::Invariant();

    QWidget Window;
    auto* Grid = new TNumGrid(&Window);
    Grid->setObjectName(QStringLiteral("Characteristic"));
    Grid->SetColCount(3);
    Grid->SetRowCount(2);
    Grid->Columns()->Items(1)->SetParType(ptPR);
    Grid->Columns()->Items(1)->Title()->SetCaption(QStringLiteral("Pressure ratio"));
    Grid->Columns()->Items(2)->SetParType(ptFraction);
    Grid->Columns()->Items(2)->Title()->SetCaption(QStringLiteral("Efficiency"));
    auto* Result = new QLabel(&Window);
    auto* Layout = new QVBoxLayout(&Window);
    Layout->addWidget(Grid);
    Layout->addWidget(Result);

    // The user's Ctrl+V does the same; here the question it asks is answered by program.
    QGuiApplication::clipboard()->setText(QStringLiteral("Ratio\tEta\r\n"
                                                         "11.2\t0.800\r\n"
                                                         "14.5\t0.861\r\n"
                                                         "17.0\t0.860\r\n"
                                                         "18.5\t0.795\r\n"));
    const TMessageDlgHandler Previous = SetMessageDlgHandler(
        [](const QString&, TMsgDlgType, TMsgDlgButtons) { return static_cast<int>(mrYes); }); // from the top
    Grid->PasteFromClipboard();
    SetMessageDlgHandler(Previous);

    int Row2 = 0;
    double F = 0.0, Linear = 0.0, Quadratic = 0.0;
    const double Ratio = 16.0;
    const bool Ok = Grid->GetInterpPars(1, coAutoDetermine, Ratio, Row2, F) &&
                    Grid->GetInterpVal(2, Row2, F, Linear) &&
                    Grid->GetQuadInterpVal(1, 2, coAscending, Ratio, Quadratic);
    Result->setText(QStringLiteral("At a ratio of %1: efficiency %2 (linear), %3 (quadratic)")
                        .arg(Ratio)
                        .arg(Linear, 0, 'f', 4)
                        .arg(Quadratic, 0, 'f', 4));
    std::printf("%d rows; %s\n", Grid->RowCount() - 1, qPrintable(Result->text()));
    if (Check) return Ok && Grid->RowCount() == 5 && Linear > 0.86 && Linear < 0.861 ? 0 : 1;
    Window.resize(420, 260);
    Window.show();
    return App.exec();
}

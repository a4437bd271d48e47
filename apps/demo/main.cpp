// QXNumCtrls demo: an overview of the parameter types with a sample value shown in both unit
// systems. Run with --screenshot FILE to render the window into a PNG and exit.
#include <qxnum/qxnum.h>

#include <QApplication>
#include <QCommandLineParser>
#include <QHeaderView>
#include <QLabel>
#include <QMainWindow>
#include <QTableWidget>
#include <QVBoxLayout>

using namespace qxnum;

namespace {

// A plausible base-unit value for each parameter type, so the table reads like real data.
constexpr Extended SampleValues[ParTypeCount] = {
    12345.678L, // ptNone
    0.785398L,  // ptAngle
    1.25L,      // ptArea
    0.0123L,    // ptConcM
    0.0456L,    // ptConcV
    42.0L,      // ptCount
    1004.5L,    // ptCpS
    85.3L,      // ptdB
    2.5e6L,     // ptEnergy
    125000.0L,  // ptForce
    0.125L,     // ptFraction
    3.0e5L,     // ptH
    12.5L,      // ptMomInertia
    1.2345L,    // ptLength
    75.0L,      // ptMass
    120.5L,     // ptMassflow
    1.8e-5L,    // ptMu
    10250.0L,   // ptNrpm
    12.75L,     // ptPercent
    101325.0L,  // ptPress
    14.2L,      // ptPR
    25.0e6L,    // ptPower
    1.5e6L,     // ptQ
    0.82L,      // ptRatio
    1.225L,     // ptRho
    5.8e-8L,    // ptSFCshaft
    288.15L,    // ptTemp
    3600.0L,    // ptTime
    1250.0L,    // ptTorque
    1.6e-5L,    // ptTSFC
    250.0L,     // ptVelocity
    0.75L,      // ptVolume
    10668.0L,   // ptZp
    45.0L,      // pthtcoef
};

QString Display(Extended Base, TParType P, TUnitSystem U) {
    return ValueString(Base, dtExtended, ntParType, 18, 3, P, U, QString(), 1.0L, 0.0L, true, false,
                       NumInpFormatSettings);
}

QTableWidget* MakeUnitTable(QWidget* Parent) {
    const QStringList Headers = {QObject::tr("Parameter"), QObject::tr("Base value"),
                                 QObject::tr("SI"),        QObject::tr("SI unit"),
                                 QObject::tr("Imperial"),  QObject::tr("Imperial unit")};
    auto* Table = new QTableWidget(ParTypeCount, Headers.size(), Parent);
    Table->setHorizontalHeaderLabels(Headers);
    Table->verticalHeader()->setVisible(false);
    Table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    for (int Row = 0; Row < ParTypeCount; ++Row) {
        const auto P = static_cast<TParType>(Row);
        const Extended V = SampleValues[Row];
        const QString Cells[] = {
            GetEnumName(P),      FloatToStr(V, NumInpFormatSettings), Display(V, P, usSI),
            ParUnitStr[P][usSI], Display(V, P, usImperial),           ParUnitStr[P][usImperial]};
        for (int Col = 0; Col < Headers.size(); ++Col) {
            auto* Item = new QTableWidgetItem(Cells[Col]);
            if (Col == 1 || Col == 2 || Col == 4) Item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
            Table->setItem(Row, Col, Item);
        }
    }
    Table->resizeColumnsToContents();
    Table->horizontalHeader()->setStretchLastSection(true);
    return Table;
}

} // namespace

int main(int argc, char** argv) {
    QApplication App(argc, argv);
    QApplication::setApplicationName(QStringLiteral("QXNumCtrls demo"));

    QCommandLineParser Parser;
    Parser.addHelpOption();
    QCommandLineOption Screenshot(QStringLiteral("screenshot"),
                                  QStringLiteral("Render the window to FILE and exit."),
                                  QStringLiteral("FILE"));
    Parser.addOption(Screenshot);
    Parser.process(App);

    QMainWindow Window;
    Window.setWindowTitle(QStringLiteral("QXNumCtrls — parameter types"));
    auto* Central = new QWidget(&Window);
    auto* Layout = new QVBoxLayout(Central);
    Layout->addWidget(
        new QLabel(QObject::tr("Each value is held in base units and shown with the standard format of "
                               "its parameter type in both unit systems."),
                   Central));
    Layout->addWidget(MakeUnitTable(Central));
    Window.setCentralWidget(Central);
    Window.resize(820, 900);

    if (Parser.isSet(Screenshot)) {
        Window.show();
        const QString File = Parser.value(Screenshot);
        if (!Window.grab().save(File)) {
            qCritical("Cannot write %s", qPrintable(File));
            return 1;
        }
        return 0;
    }
    Window.show();
    return App.exec();
}

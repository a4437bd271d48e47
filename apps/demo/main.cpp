// The QXNumCtrls case editor: an engine case in five sections (field forms), kept in XML or binary
// case files, shown in SI or Imperial units. Built from the library's public API only.
//   qxnum_demo [CASE]               the editor
//   qxnum_demo --screenshot FILE    renders the window into FILE and exits
//   qxnum_demo --selftest DIR       round-trips every sample case in DIR through both formats
//   qxnum_demo --print FILE         prints every field of a case
//   qxnum_demo --save-new FILE      writes a new case
//   qxnum_demo --screenshots DIR    renders the editor, its sections and the controls, light and dark
#include "caseeditor.h"

#include <qxnum/qxnum.h>

#include <QApplication>
#include <QCommandLineParser>
#include <QDialog>
#include <QDir>
#include <QFormLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMenuBar>
#include <QPalette>
#include <QPushButton>
#include <QRegularExpression>
#include <QScreen>
#include <QSet>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QVBoxLayout>

#include <cstdio>

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
    auto* Table = new QTableWidget(ParTypeCount, static_cast<int>(Headers.size()), Parent);
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

// The editor's own checks: it fits its screen (a 1000-pixel-high screen at scale factor 2 is 500
// pixels high), every section has its guide section behind its Help button, and switching units
// leaves the marks of changed fields as they were. Prints what fails; the number of failures.
int EditorCheck() {
    int Failures = 0;
    const auto Fail = [&Failures](const QString& What) {
        ++Failures;
        std::printf("editor: %s\n", qPrintable(What));
    };
    demo::TCaseEditor Editor;
    Editor.show();
    QApplication::processEvents();
    const QRect Avail = Editor.screen()->availableGeometry();
    if (Editor.frameGeometry().height() > Avail.height() || Editor.frameGeometry().width() > Avail.width())
        Fail(QStringLiteral("the window (%1 x %2) does not fit the screen (%3 x %4)")
                 .arg(Editor.frameGeometry().width())
                 .arg(Editor.frameGeometry().height())
                 .arg(Avail.width())
                 .arg(Avail.height()));
    for (TFieldForm* S : Editor.Case().Sections())
        if (S->HelpBtn()->isHidden()) Fail(S->IDstr() + QStringLiteral(": no guide section behind Help"));
    if (!Editor.ChangedFields().isEmpty()) Fail(QStringLiteral("a new case has changed fields"));
    auto* Pamb = qobject_cast<TNumFld*>(
        Editor.Case().Section(QStringLiteral("Ambient"))->FindNumFld(QStringLiteral("Pamb")));
    auto* Grid = Editor.Case().Section(QStringLiteral("Compressor"))->findChild<TNumGrid*>();
    if (!Pamb || !Grid) return Failures + 1;
    // Choosing the units the case already shows changes no cell, not even one that is no number.
    const QString Kept = Grid->Cells(1, 2);
    Grid->SetCells(1, 2, QStringLiteral("n/a"));
    Editor.SetUnits(usSI);
    if (Grid->Cells(1, 2) != QStringLiteral("n/a"))
        Fail(QStringLiteral("SI units chosen again turned \"n/a\" into \"%1\"").arg(Grid->Cells(1, 2)));
    Grid->SetCells(1, 2, Kept);
    Pamb->SetValue(95000);
    Grid->SetDValues(1, 1, 130);
    const QStringList Changed = {QStringLiteral("Ambient.Pamb"), QStringLiteral("Compressor.SpeedLine")};
    for (const TUnitSystem U : {usSI, usImperial, usSI, usImperial}) {
        Editor.SetUnits(U);
        if (Editor.ChangedFields() != Changed)
            Fail(QStringLiteral("in %1 units the changed fields are %2, not %3")
                     .arg(U == usSI ? QStringLiteral("SI") : QStringLiteral("Imperial"),
                          Editor.ChangedFields().join(QLatin1Char(',')), Changed.join(QLatin1Char(','))));
    }
    // The units differ from the case's file until it is saved.
    if (!Editor.isWindowModified())
        Fail(QStringLiteral("the switch to Imperial units is not a change of the case"));
    return Failures;
}

// "Section ID" of every field element of an XML case file.
QSet<QString> FieldIDs(const QString& File) {
    TXmlDocument Doc;
    Doc.LoadFromFile(File);
    QSet<QString> IDs;
    const TXmlNode Case = Doc.Root().NodeByName(QStringLiteral("case"));
    for (int I = 0; I < Case.NodeCount(); ++I) {
        const TXmlNode Section = Case.Nodes(I);
        for (const TXmlNode& E : Section.NodesByName(QStringLiteral("INumFld")))
            IDs.insert(Section.Name() + QLatin1Char(' ') + E.AttributeByName(QStringLiteral("ID")));
    }
    return IDs;
}

// Opens every sample case in Dir, writes it to XML and to a binary file and reads both back into
// fresh cases: every field must read back as it was. Messages are printed, not shown. Reading an
// older sample must name, in its messages, every value that the case no longer stores under its
// ID (carried over to a renamed field or dropped).
int SelfTest(const QString& Dir) {
    QStringList Messages;
    SetMessageDlgHandler([&Messages](const QString& Msg, TMsgDlgType, TMsgDlgButtons Buttons) {
        Messages << Msg;
        return DefaultDialogResult(Buttons);
    });
    const QFileInfoList Samples =
        QDir(Dir).entryInfoList({QStringLiteral("*.xml"), QStringLiteral("*.qxc")}, QDir::Files, QDir::Name);
    if (Samples.isEmpty()) {
        std::fprintf(stderr, "selftest: no samples in %s\n", qPrintable(Dir));
        return 1;
    }
    QTemporaryDir Temp;
    int Failures = EditorCheck();
    for (const QFileInfo& Sample : Samples) {
        Messages.clear();
        QWidget Owner;
        demo::TCase Original(&Owner);
        try {
            Original.Load(Sample.filePath());
            const int Read = static_cast<int>(Messages.size());
            const int Fields = static_cast<int>(Original.Snapshot().size());
            if (!demo::TCase::IsBinary(Sample.filePath())) {
                const QString Current = Temp.filePath(Sample.completeBaseName() + QStringLiteral(".now.xml"));
                Original.Save(Current);
                const QString Said = Messages.join(QLatin1Char('\n'));
                for (const QString& Gone : FieldIDs(Sample.filePath()) - FieldIDs(Current)) {
                    const QString ID = Gone.section(QLatin1Char(' '), 1);
                    if (Said.contains(QRegularExpression(
                            QStringLiteral("\\b") + QRegularExpression::escape(ID) + QStringLiteral("\\b"))))
                        continue;
                    ++Failures;
                    std::printf("%s: %s was not read and no message names it\n",
                                qPrintable(Sample.fileName()), qPrintable(Gone));
                }
            }
            // Both formats, in the units the file has and then in the others (kept in the file).
            const TUnitSystem Other = Original.UnitSystem() == usSI ? usImperial : usSI;
            for (const auto& [Ext, Units] :
                 {std::pair{"xml", Original.UnitSystem()}, std::pair{"qxc", Original.UnitSystem()},
                  std::pair{"xml", Other}, std::pair{"qxc", Other}}) {
                Original.SetUnitSystem(Units);
                const QStringList Expected = Original.Snapshot();
                const QString Copy =
                    Temp.filePath(Sample.completeBaseName() + QLatin1Char('.') + QLatin1String(Ext));
                Original.Save(Copy);
                QWidget Owner2;
                demo::TCase Again(&Owner2);
                Again.Load(Copy);
                const QStringList Got = Again.Snapshot();
                if (Got != Expected || Again.VersionUpdated()) {
                    ++Failures;
                    std::printf("%s: the %s round trip in %s units differs\n", qPrintable(Sample.fileName()),
                                Ext, Units == usSI ? "SI" : "Imperial");
                    for (qsizetype I = 0; I < std::min(Got.size(), Expected.size()); ++I)
                        if (Got[I] != Expected[I])
                            std::printf("  read  %s\n  wrote %s\n", qPrintable(Got[I]),
                                        qPrintable(Expected[I]));
                }
            }
            std::printf("%s: %d fields, %s, %d message(s) on reading%s\n", qPrintable(Sample.fileName()),
                        Fields,
                        Original.VersionUpdated() ? "updated from an older version" : "current version", Read,
                        Messages.size() > Read ? ", more on the round trips" : "");
            for (const QString& M : Messages)
                std::printf("  message: %s\n",
                            qPrintable(QString(M).replace(QStringLiteral("\r\n"), QStringLiteral(" | "))));
            if (Messages.size() > Read) ++Failures;
        } catch (const std::exception& E) {
            ++Failures;
            std::printf("%s: %s\n", qPrintable(Sample.fileName()), E.what());
        }
    }
    SetMessageDlgHandler({});
    return Failures == 0 ? 0 : 1;
}

// The palette of a dark desktop theme.
QPalette DarkPalette() {
    QPalette P;
    const QColor Window(45, 45, 48), Base(30, 30, 32), Text(225, 225, 225), Disabled(120, 120, 120);
    P.setColor(QPalette::Window, Window);
    P.setColor(QPalette::WindowText, Text);
    P.setColor(QPalette::Base, Base);
    P.setColor(QPalette::AlternateBase, Window);
    P.setColor(QPalette::Text, Text);
    P.setColor(QPalette::Button, Window);
    P.setColor(QPalette::ButtonText, Text);
    P.setColor(QPalette::ToolTipBase, Base);
    P.setColor(QPalette::ToolTipText, Text);
    P.setColor(QPalette::Highlight, QColor(42, 130, 218));
    P.setColor(QPalette::HighlightedText, Qt::white);
    P.setColor(QPalette::Light, QColor(70, 70, 74));
    P.setColor(QPalette::Midlight, QColor(60, 60, 64));
    P.setColor(QPalette::Mid, QColor(35, 35, 38));
    P.setColor(QPalette::Dark, QColor(20, 20, 22));
    for (QPalette::ColorRole R : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        P.setColor(QPalette::Disabled, R, Disabled);
    return P;
}

// A picture is blank when it has a single colour: nothing was drawn.
bool Blank(const QImage& Image) {
    const QRgb First = Image.pixel(0, 0);
    for (int Y = 0; Y < Image.height(); Y += 2)
        for (int X = 0; X < Image.width(); X += 2)
            if (Image.pixel(X, Y) != First) return false;
    return true;
}

// Renders the editor, each section and a gallery of the controls, in a light and a dark palette,
// into Dir as <name>-light.png and <name>-dark.png; 1 when a picture cannot be written or is blank.
int Screenshots(const QString& Dir) {
    QDir().mkpath(Dir);
    const QPalette Light = QApplication::palette();
    int Failures = 0;
    for (const auto& [Theme, Palette] : {std::pair{"light", Light}, std::pair{"dark", DarkPalette()}}) {
        QApplication::setPalette(Palette);
        demo::TCaseEditor Editor;
        std::vector<std::pair<QString, QWidget*>> Shots = {{QStringLiteral("editor"), &Editor}};
        for (TFieldForm* S : Editor.Case().Sections())
            Shots.emplace_back(S->IDstr().toLower(), S);
        // The controls side by side, as a host places them.
        QWidget Gallery;
        auto* G = new QFormLayout(&Gallery);
        auto* Edit = new TNumEdit(&Gallery);
        Edit->SetParType(ptPower);
        Edit->SetMax(1e8L);
        Edit->SetValue(2.5e7L);
        G->addRow(QObject::tr("TNumEdit"), Edit);
        auto* Inp = new TNumInp(&Gallery);
        Inp->SetParType(ptTemp);
        Inp->SetMax(2000);
        Inp->SetValue(288.15L);
        Inp->SetNameLabelVisible(false);
        G->addRow(QObject::tr("TNumInp"), Inp);
        auto* Neg = new TNumEdit(&Gallery);
        Neg->SetMin(-100);
        Neg->SetValue(-12.5L);
        G->addRow(QObject::tr("negative value"), Neg);
        auto* Combo = new TComboBoxFld(&Gallery);
        Combo->addItems({QStringLiteral("Jet A-1"), QStringLiteral("Diesel")});
        G->addRow(QObject::tr("TComboBoxFld"), Combo);
        auto* Check = new TCheckFld(&Gallery);
        Check->setText(QObject::tr("TCheckFld"));
        Check->setChecked(true);
        G->addRow(QString(), Check);
        auto* Nav = new TNumGridNavigator(&Gallery);
        G->addRow(QObject::tr("TNumGridNavigator"), Nav);
        auto* Off = new TNumGridNavigator(&Gallery);
        Off->setEnabled(false);
        G->addRow(QObject::tr("disabled"), Off);
        Shots.emplace_back(QStringLiteral("controls"), &Gallery);
        for (auto& [Name, W] : Shots) {
            W->show();
            QApplication::processEvents();
            const QImage Image = W->grab().toImage();
            W->hide();
            const QString File =
                QDir(Dir).filePath(QStringLiteral("%1-%2.png").arg(Name, QLatin1String(Theme)));
            if (Blank(Image) || !Image.save(File)) {
                std::fprintf(stderr, "screenshot %s: blank or not written\n", qPrintable(File));
                ++Failures;
            } else {
                std::printf("%s\n", qPrintable(File));
            }
        }
    }
    QApplication::setPalette(Light);
    return Failures == 0 ? 0 : 1;
}

} // namespace

int main(int argc, char** argv) {
    QApplication App(argc, argv);
    QApplication::setApplicationName(QStringLiteral("QXNumCtrls case editor"));

    QCommandLineParser Parser;
    Parser.setApplicationDescription(
        QStringLiteral("An engine case editor built from the QXNumCtrls library."));
    Parser.addHelpOption();
    QCommandLineOption Screenshot(QStringLiteral("screenshot"),
                                  QStringLiteral("Render the window to FILE and exit."),
                                  QStringLiteral("FILE"));
    QCommandLineOption Test(QStringLiteral("selftest"),
                            QStringLiteral("Round-trip every sample case in DIR through both file formats."),
                            QStringLiteral("DIR"));
    QCommandLineOption SaveNew(QStringLiteral("save-new"),
                               QStringLiteral("Write a new case to FILE (.xml or .qxc) and exit."),
                               QStringLiteral("FILE"));
    Parser.addOption(Screenshot);
    Parser.addOption(Test);
    QCommandLineOption Print(QStringLiteral("print"),
                             QStringLiteral("Read the case FILE and print its fields."),
                             QStringLiteral("FILE"));
    QCommandLineOption Shots(
        QStringLiteral("screenshots"),
        QStringLiteral("Render the editor, its sections and the controls, light and dark, into DIR."),
        QStringLiteral("DIR"));
    Parser.addOption(SaveNew);
    Parser.addOption(Print);
    Parser.addOption(Shots);
    Parser.addPositionalArgument(QStringLiteral("case"), QStringLiteral("A case file to open."));
    Parser.process(App);
    if (Parser.isSet(Test)) return SelfTest(Parser.value(Test));
    if (Parser.isSet(Shots)) return Screenshots(Parser.value(Shots));
    if (Parser.isSet(Print)) {
        // Every field as the editor lists it: section, name, value and unit.
        QWidget Owner;
        SetMessageDlgHandler([](const QString& Msg, TMsgDlgType, TMsgDlgButtons Buttons) {
            std::printf("message: %s\n",
                        qPrintable(QString(Msg).replace(QStringLiteral("\r\n"), QStringLiteral(" | "))));
            return DefaultDialogResult(Buttons);
        });
        try {
            demo::TCase Case(&Owner);
            Case.Load(Parser.value(Print));
            for (TFieldForm* S : Case.Sections())
                for (auto& [Name, F] : demo::TCase::Fields(S)) {
                    QString Unit;
                    if (const auto* Edit = dynamic_cast<TCustomNumEdit*>(F);
                        Edit && Edit->NumericType() == ntParType)
                        Unit = QLatin1Char(' ') + ParUnitStrOf(Edit->ParType(), Edit->UnitSystem());
                    std::printf("%s.%s = %s%s\n", qPrintable(S->IDstr()), qPrintable(Name),
                                qPrintable(F->GetValueText()), qPrintable(Unit));
                }
        } catch (const std::exception& E) {
            std::fprintf(stderr, "%s\n", E.what());
            return 1;
        }
        return 0;
    }
    if (Parser.isSet(SaveNew)) {
        QWidget Owner;
        try {
            demo::TCase(&Owner).Save(Parser.value(SaveNew));
        } catch (const std::exception& E) {
            std::fprintf(stderr, "%s\n", E.what());
            return 1;
        }
        return 0;
    }

    demo::TCaseEditor Window;
    QMenu* Help = Window.menuBar()->actions().constLast()->menu();
    Help->addAction(QObject::tr("&Parameter types"), &Window, [&Window] {
        QDialog Dlg(&Window);
        Dlg.setWindowTitle(QObject::tr("Parameter types"));
        auto* L = new QVBoxLayout(&Dlg);
        L->addWidget(
            new QLabel(QObject::tr("Each value is held in base units and shown with the standard format of "
                                   "its parameter type in both unit systems."),
                       &Dlg));
        L->addWidget(MakeUnitTable(&Dlg));
        // No taller than the screen: at scale factor 2 a 1000-pixel-high screen is 500 high.
        const QRect Avail = Window.screen()->availableGeometry();
        Dlg.resize(QSize(720, 640).boundedTo(QSize(Avail.width() - 16, Avail.height() - 48)));
        Dlg.exec();
    });
    if (!Parser.positionalArguments().isEmpty()) Window.OpenFile(Parser.positionalArguments().constFirst());

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

// One numeric field that shows a pressure in SI or Imperial units. The value is held in pascals
// whatever the units shown; typing "2*1.5" works as well as "3".
#include <qxnum/qxnum.h>

#include <QApplication>
#include <QComboBox>
#include <QFormLayout>
#include <QWidget>

#include <cstdio>

using namespace qxnum;

int main(int argc, char** argv) {
    QApplication App(argc, argv);
    const bool Check = App.arguments().contains(QStringLiteral("--check"));

    QWidget Window;
    Window.setWindowTitle(QStringLiteral("Pressure"));
    auto* Pressure = new TNumFld(&Window);
    Pressure->setObjectName(QStringLiteral("Pamb"));
    Pressure->SetParType(ptPress);     // bar in SI, psi in Imperial
    Pressure->SetRange(1000.0, 2.0e5); // limits in base units (Pa)
    Pressure->SetExpressionInput(true);
    Pressure->SetValue(101325.0);
    Pressure->SetNameLabelVisible(false); // the form layout gives the caption
    auto* Units = new QComboBox(&Window);
    Units->addItems({QStringLiteral("SI"), QStringLiteral("Imperial")});
    auto* Layout = new QFormLayout(&Window);
    Layout->addRow(QStringLiteral("Ambient pressure"), Pressure);
    Layout->addRow(QStringLiteral("Units"), Units);
    QObject::connect(Units, &QComboBox::currentIndexChanged, Pressure,
                     [Pressure](int Index) { Pressure->SetUnitSystem(Index == 1 ? usImperial : usSI); });
    QObject::connect(Pressure, &TNumFld::valueChanged, [](double Pa) { std::printf("%.1f Pa\n", Pa); });

    if (Check) {
        FormatSettings = NumInpFormatSettings = TFormatSettings::Invariant();
        Pressure->SetValue(101325.0);
        const QString Si = Pressure->text();
        Units->setCurrentIndex(1);
        const QString Imperial = Pressure->text();
        std::printf("%s bar = %s psi\n", qPrintable(Si), qPrintable(Imperial));
        // Switching the units changes the text, never the value held.
        return Pressure->GetValue() == 101325.0L && Si != Imperial ? 0 : 1;
    }
    Window.show();
    return App.exec();
}

// A field form saved to an XML case file and read back. OK keeps what was typed, Cancel restores it;
// a file written by an older version of the form is read with what still fits.
#include <qxnum/qxnum.h>

#include <QApplication>
#include <QDir>
#include <QFormLayout>
#include <QVBoxLayout>

#include <cstdio>

using namespace qxnum;

class TAmbientForm : public TFieldForm {
public:
    explicit TAmbientForm(QWidget* Parent = nullptr) : TFieldForm(Parent) {
        setObjectName(QStringLiteral("AmbientForm"));
        setWindowTitle(QStringLiteral("Ambient conditions"));
        EndCode = FieldFormEndCode;
        auto* Layout = new QFormLayout(ClientArea());
        Pressure = Add(Layout, "Pamb", "Pressure", ptPress, 101325.0, 1000.0, 2.0e5);
        Temperature = Add(Layout, "Tamb", "Temperature", ptTemp, 288.15, 180.0, 350.0);
        Name = new TStringFld(ClientArea());
        Name->setObjectName(QStringLiteral("Station"));
        Name->setText(QStringLiteral("Sea level"));
        Layout->addRow(QStringLiteral("Station"), Name);
        FormCreate(); // the values a reset returns to
    }
    TNumFld* Pressure;
    TNumFld* Temperature;
    TStringFld* Name;

private:
    TNumFld* Add(QFormLayout* Layout, const char* Id, const char* Caption, TParType P, double V, double Min,
                 double Max) {
        auto* F = new TNumFld(ClientArea());
        F->setObjectName(QLatin1String(Id)); // the element name in the file
        F->SetParType(P);
        F->SetRange(Min, Max);
        F->SetValue(V);
        F->SetNameLabelVisible(false);
        Layout->addRow(QLatin1String(Caption), F);
        return F;
    }
};

int main(int argc, char** argv) {
    QApplication App(argc, argv);
    const bool Check = App.arguments().contains(QStringLiteral("--check"));
    const QString File = QDir::temp().filePath(QStringLiteral("qxnum_example_case.xml"));

    TAmbientForm Form;
    if (!Check && Form.exec() != QDialog::Accepted) return 0;
    if (Check) Form.Pressure->SetValue(95000.0);

    // Save: the form writes its fields under one element.
    TXmlDocument Out;
    Form.WriteToXML(Out.CreateRoot(QStringLiteral("config")).NodeNew(QStringLiteral("case")));
    Out.SaveToFile(File);
    std::printf("%s\n", qPrintable(Out.SaveToString()));

    // Read into a fresh form, as a program does on Open.
    TAmbientForm Again;
    TXmlDocument In;
    In.LoadFromFile(File);
    Again.ReadFromXML(In.Root().NodeByName(QStringLiteral("case")), true);
    std::printf("read back: %.0f Pa, result code %d\n", static_cast<double>(Again.Pressure->GetValue()),
                static_cast<int>(Again.ReadResultCode));
    return Again.Pressure->GetValue() == Form.Pressure->GetValue() && Again.ReadResultCode == rrcOk ? 0 : 1;
}

// A field form's two file media beside plain code storing the same values:
// - XML: the form (1,000 fields of mixed classes and one 10,000 x 10 grid) written under a node,
//   the document saved to memory, loaded and read back into a second form; the baseline builds a
//   pugixml document of the same shape from the same texts, saves, parses and reads the texts back;
// - stream: WritetoStream + ReadfromStream through a buffer; the baseline writes the same class
//   names, names, values and grid texts with QDataStream and reads them back.
#include <qxnum/qxnum.h>

#include <QBuffer>
#include <QDataStream>
#include <benchmark/benchmark.h>
#include <pugixml.hpp>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace qxnum;

constexpr int FieldCount = 1000;
constexpr int GridRows = 10000;
constexpr int GridCols = 10;

class TBenchForm : public TFieldForm {
public:
    std::vector<QObject*> Fields;
    TNumGrid* Grid = nullptr;
    explicit TBenchForm(int Seed) {
        setObjectName(QStringLiteral("BenchForm"));
        EndCode = FieldFormEndCode;
        for (int I = 0; I < FieldCount; ++I) {
            QWidget* W = nullptr;
            switch (I % 5) {
            case 0:
            case 1: {
                auto* F = new TNumFld(ClientArea());
                F->SetRange(-1e9L, 1e9L);
                F->SetParType(I % 2 ? ptPress : ptTemp);
                F->SetValue(101325.0L + I * 1.37L + Seed);
                W = F;
                break;
            }
            case 2:
                W = new TStringFld(ClientArea());
                static_cast<TStringFld*>(W)->setText(QStringLiteral("text %1 %2").arg(I).arg(Seed));
                break;
            case 3:
                W = new TCheckFld(ClientArea());
                static_cast<TCheckFld*>(W)->setChecked((I + Seed) % 2 != 0);
                break;
            default:
                W = new TComboBoxFld(ClientArea());
                static_cast<TComboBoxFld*>(W)->addItems({QStringLiteral("one"), QStringLiteral("two")});
                static_cast<TComboBoxFld*>(W)->setCurrentIndex((I + Seed) % 2);
                break;
            }
            W->setObjectName(QStringLiteral("F%1").arg(I));
            Fields.push_back(W);
        }
        Grid = new TNumGrid(ClientArea());
        Grid->setObjectName(QStringLiteral("Grid"));
        Grid->SetColCount(GridCols + 1);
        Grid->SetRowCount(GridRows + 1);
        for (int C = 1; C <= GridCols; ++C) {
            Grid->Columns()->Items(C)->SetParType(ptPress);
            Grid->Columns()->Items(C)->SetUnitSystem(usSI);
            for (int R = 1; R <= GridRows; ++R)
                Grid->SetDValues(C, R, 101325.0L * (1.0L + 0.000137L * R + 0.01L * C) + Seed);
        }
        FormCreate();
    }
};

// The values as the baselines store them: class name, name and value text of each field, then
// the grid's cells.
struct TPlainValues {
    std::vector<std::string> Classes, Names, Values, Cells;
    int Rows = 0, Cols = 0;
    explicit TPlainValues(TBenchForm& F) {
        for (QObject* O : F.Fields) {
            Classes.push_back(FileClassName(O).toStdString());
            Names.push_back(O->objectName().toStdString());
            Values.push_back(Supports(O)->GetValueText().toStdString());
        }
        Rows = F.Grid->RowCount();
        Cols = F.Grid->ColCount();
        for (int R = 0; R < Rows; ++R)
            for (int C = 0; C < Cols; ++C)
                Cells.push_back(F.Grid->Cells(C, R).toStdString());
    }
};

void BM_FormXmlRoundTrip(benchmark::State& State) {
    NumInpFormatSettings = TFormatSettings::Invariant();
    TBenchForm Source(0), Back(1);
    for (auto _ : State) {
        TXmlDocument Doc;
        Source.WriteToXML(Doc.CreateRoot(QStringLiteral("config")).NodeNew(QStringLiteral("BenchForm")));
        const QByteArray Bytes = Doc.SaveToBytes();
        TXmlDocument In;
        In.LoadFromBytes(Bytes);
        Back.ReadFromXML(In.Root().NodeByName(QStringLiteral("BenchForm")), false);
        benchmark::DoNotOptimize(Bytes.size());
    }
}
BENCHMARK(BM_FormXmlRoundTrip)->Unit(benchmark::kMillisecond);

void BM_FormXmlRoundTrip_Baseline(benchmark::State& State) {
    NumInpFormatSettings = TFormatSettings::Invariant();
    TBenchForm Source(0);
    const TPlainValues V(Source);
    std::vector<std::string> BackValues(V.Values.size()), BackCells(V.Cells.size());
    for (auto _ : State) {
        pugi::xml_document Doc;
        pugi::xml_node Form = Doc.append_child("config").append_child("BenchForm");
        for (size_t I = 0; I < V.Names.size(); ++I) {
            pugi::xml_node F = Form.append_child("INumFld");
            F.append_attribute("ID").set_value(V.Names[I].c_str());
            F.append_attribute("ClassName").set_value(V.Classes[I].c_str());
            F.append_child("Value").text().set(V.Values[I].c_str());
        }
        pugi::xml_node G = Form.append_child("INumFld");
        G.append_attribute("ID").set_value("Grid");
        G.append_attribute("ClassName").set_value("TNumGrid");
        G.append_child("Colcount").text().set(V.Cols);
        G.append_child("Rowcount").text().set(V.Rows);
        pugi::xml_node RowsNode = G.append_child("Rows");
        std::string Line;
        for (int R = 0; R < V.Rows; ++R) {
            Line.clear();
            for (int C = 0; C < V.Cols; ++C) {
                if (C) Line += ';';
                Line += V.Cells[static_cast<size_t>(R * V.Cols + C)];
            }
            RowsNode.append_child(("Row" + std::to_string(R)).c_str()).text().set(Line.c_str());
        }
        std::ostringstream Out;
        Doc.save(Out);
        const std::string Text = Out.str();
        pugi::xml_document In;
        In.load_buffer(Text.data(), Text.size());
        size_t I = 0, K = 0;
        for (pugi::xml_node F : In.child("config").child("BenchForm").children("INumFld")) {
            if (I < BackValues.size()) {
                BackValues[I++] = F.child("Value").text().get();
                continue;
            }
            for (pugi::xml_node Row : F.child("Rows").children()) {
                const std::string_view S = Row.text().get();
                size_t Start = 0;
                for (;;) {
                    const size_t Semi = S.find(';', Start);
                    if (K < BackCells.size()) BackCells[K++].assign(S.substr(Start, Semi - Start));
                    if (Semi == std::string_view::npos) break;
                    Start = Semi + 1;
                }
            }
        }
        benchmark::DoNotOptimize(BackCells.data());
    }
}
BENCHMARK(BM_FormXmlRoundTrip_Baseline)->Unit(benchmark::kMillisecond);

void BM_FormStreamRoundTrip(benchmark::State& State) {
    NumInpFormatSettings = TFormatSettings::Invariant();
    TBenchForm Source(0), Back(1);
    for (auto _ : State) {
        QBuffer Buf;
        Buf.open(QIODevice::ReadWrite);
        {
            TWriter W(&Buf);
            Source.WritetoStream(W);
        }
        Buf.seek(0);
        {
            TReader R(&Buf);
            Back.ReadfromStream(R, false);
        }
        benchmark::DoNotOptimize(Buf.size());
    }
}
BENCHMARK(BM_FormStreamRoundTrip)->Unit(benchmark::kMillisecond);

void BM_FormStreamRoundTrip_Baseline(benchmark::State& State) {
    NumInpFormatSettings = TFormatSettings::Invariant();
    TBenchForm Source(0);
    const TPlainValues V(Source);
    std::vector<QString> Cells;
    for (const std::string& S : V.Cells)
        Cells.push_back(QString::fromStdString(S));
    std::vector<QString> Classes, Names, Values;
    for (size_t I = 0; I < V.Names.size(); ++I) {
        Classes.push_back(QString::fromStdString(V.Classes[I]));
        Names.push_back(QString::fromStdString(V.Names[I]));
        Values.push_back(QString::fromStdString(V.Values[I]));
    }
    std::vector<QString> Back(Cells.size()), BackValues(Values.size());
    for (auto _ : State) {
        QBuffer Buf;
        Buf.open(QIODevice::ReadWrite);
        {
            QDataStream Out(&Buf);
            for (size_t I = 0; I < Names.size(); ++I)
                Out << Classes[I] << Names[I] << Values[I] << true << true;
            Out << V.Rows << V.Cols;
            for (const QString& S : Cells)
                Out << S;
        }
        Buf.seek(0);
        QDataStream In(&Buf);
        QString Class, Name;
        bool B = false;
        for (QString& S : BackValues)
            In >> Class >> Name >> S >> B >> B;
        qint32 R = 0, C = 0;
        In >> R >> C;
        for (QString& S : Back)
            In >> S;
        benchmark::DoNotOptimize(Back.data());
    }
}
BENCHMARK(BM_FormStreamRoundTrip_Baseline)->Unit(benchmark::kMillisecond);

} // namespace

// A field form with every field class, a grid and a frame, reading arbitrary bytes. The first byte
// picks the medium (bit 0: XML, else stream), the warnings (bit 1) and the end marker the stream
// recovery looks for (bit 2: the written one, else four zero bytes). A form read never raises;
// a field whose read did not succeed is exactly as it was (its value, and a grid's cells, counts,
// column properties and undo history); and what was read writes a stream that reads back into a
// form in the same state.
#include <qxnum/dialogs.h>

#include "../tests/support/allfieldsform.h"
#include "fuzz_widgets.h"

#include <QBuffer>

using namespace qxnum;
using qxnum::test::TAllFieldsForm;

namespace {

QApplication& App() {
    return fuzz::App("fuzz_form",
                     [](const QString&, TMsgDlgType, TMsgDlgButtons) { return static_cast<int>(mrOk); });
}

QByteArray Write(TFieldForm& F) {
    QBuffer Out;
    Out.open(QIODevice::WriteOnly);
    {
        TWriter W(&Out);
        F.WritetoStream(W);
    }
    return Out.data();
}

void Read(TFieldForm& F, const QByteArray& Data, bool Warn) {
    QBuffer In;
    In.setData(Data);
    In.open(QIODevice::ReadOnly);
    TReader R(&In);
    F.ReadfromStream(R, Warn);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* Data, size_t Size) {
    App();
    if (Size == 0) return 0;
    const quint8 Mode = Data[0];
    const QByteArray Body(reinterpret_cast<const char*>(Data + 1), static_cast<qsizetype>(Size - 1));
    const bool Warn = Mode & 2;

    // The grid's text column is a string column here, so that what the form holds is always
    // what a stream read of it gives (the hostile-input test covers the numeric case).
    TAllFieldsForm Form(1);
    Form.Grid->Columns()->Items(2)->SetStringCol(true);
    if (!(Mode & 4)) Form.EndCode = NullStreamCode;
    const std::vector<QStringList> Before = Form.States();
    try {
        if (Mode & 1) {
            TXmlDocument Doc;
            try {
                Doc.LoadFromBytes(Body);
            } catch (const EXmlError&) {
                return 0;
            }
            Form.ReadFromXML(Doc.Root(), Warn);
        } else {
            Read(Form, Body, Warn);
        }
    } catch (...) {
        fuzz::Check(false);
    }
    fuzz::Check(Form.ReadResultCode <= rrcXmlError);
    const std::vector<QStringList> After = Form.States();
    for (size_t I = 0; I < After.size(); ++I)
        if (Form.Read.count(Form.Fields[I].first) == 0) fuzz::Check(After[I] == Before[I]);

    // The stream carries the fields the form owns directly, not those of its frames.
    const QByteArray Own = Write(Form);
    TAllFieldsForm Back(2);
    Back.Grid->Columns()->Items(2)->SetStringCol(true);
    Read(Back, Own, true);
    fuzz::Check(Back.ReadResultCode == rrcOk);
    const std::vector<QStringList> Again = Back.States(false), Now = Form.States(false);
    for (size_t I = 0; I < Now.size(); ++I)
        if (!Form.Fields[I].second.contains(QLatin1Char('.'))) fuzz::Check(Again[I] == Now[I]);
    TXmlDocument Doc;
    Form.WriteToXML(Doc.CreateRoot(QStringLiteral("All")));
    return 0;
}

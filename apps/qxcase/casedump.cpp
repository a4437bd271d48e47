// qxcase dump: a binary stream, value by value, grouped by field record where the stream is a
// field form.
//
// The stream is read in one pass into a flat list of values (lists are flattened with their
// nesting depth, so hostile nesting costs no stack); the grouping then looks ahead freely in that
// list. Records of the library's own field classes are labelled from their known layout; for any
// other class the record runs up to the next class-and-name pair.
#include "casetool.h"

#include <qxnum/filer.h>
#include <qxnum/streamcode.h>
#include <qxnum/xml.h>

#include <QBuffer>

#include <algorithm>
#include <cmath>
#include <vector>

namespace qxcase {

namespace {

using namespace qxnum;

enum TKind : quint8 { kSignature, kCode, kList, kEnd, kInt, kFloat, kBool, kString, kOther };

struct TItem {
    qint64 Offset = 0;
    int Tag = -1;  // -1 for raw bytes (signature, stream code)
    int Depth = 0; // lists open around the value
    TKind Kind = kOther;
    QString KindName;
    QString Text; // the value as shown
    QString Str;  // kString: the text itself
    qint64 Int = 0;
    Extended Num = 0;
    QString Label;
};

// The library's shortest exact text; the dump's own words for the values that are no numbers.
QString FloatText(Extended V) {
    if (std::isnan(V)) return QStringLiteral("NaN");
    if (std::isinf(V)) return V > 0 ? QStringLiteral("+Inf") : QStringLiteral("-Inf");
    return XmlExtendedToStr(V);
}

QString DateText(double Days) {
    const QDateTime D = FileDateToDateTime(Days);
    return D.isValid() ? D.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss.zzz"))
                       : QStringLiteral("invalid date");
}

QString HexBytes(const QByteArray& B, qsizetype Max) {
    QString Out;
    for (qsizetype I = 0; I < B.size() && I < Max; ++I) {
        if (I) Out += QLatin1Char(' ');
        Out += QStringLiteral("%1").arg(static_cast<quint8>(B[I]), 2, 16, QLatin1Char('0')).toUpper();
    }
    if (B.size() > Max) Out += QStringLiteral(" ...");
    return Out;
}

// --- Reading -------------------------------------------------------------------------------------

class TScanner {
public:
    TScanner(TReader& Reader, const QByteArray& Data, std::vector<TItem>& Items)
        : R(Reader), FData(Data), FItems(Items) {}

    int Depth = 0;

    void Run() {
        while (!R.AtEnd()) {
            if (FData.mid(R.Position(), 4) == "TPF0")
                ReadForm();
            else
                ReadValue();
        }
    }

private:
    void ReadValue() {
        TItem I;
        I.Offset = R.Position();
        const quint8 Tag = R.NextValue();
        I.Tag = Tag;
        I.Depth = Depth;
        switch (Tag) {
        case vaList:
            R.ReadListBegin();
            Set(I, kList, "list", QStringLiteral("begin"));
            ++Depth;
            break;
        case vaNull:
            R.ReadListEnd();
            if (Depth > 0) --Depth;
            I.Depth = Depth;
            Set(I, kEnd, "list", QStringLiteral("end"));
            break;
        case vaInt8:
        case vaInt16:
        case vaInt32:
        case vaInt64:
            I.Int = R.ReadInt64();
            I.Num = static_cast<Extended>(I.Int);
            Set(I, kInt, "integer", QString::number(I.Int));
            break;
        case vaExtended:
            I.Num = R.ReadFloat();
            Set(I, kFloat, "float", FloatText(I.Num));
            break;
        case vaDouble:
            I.Num = R.ReadDouble();
            Set(I, kFloat, "double", FloatText(I.Num));
            break;
        case vaSingle:
            I.Num = R.ReadSingle();
            Set(I, kFloat, "single", FloatText(I.Num));
            break;
        case vaCurrency:
            I.Num = R.ReadCurrency();
            Set(I, kFloat, "currency", FloatText(I.Num));
            break;
        case vaDate: {
            const double Days = R.ReadDate();
            I.Num = Days;
            Set(I, kFloat, "date",
                FloatText(Days) + QStringLiteral(" (") + DateText(Days) + QLatin1Char(')'));
            break;
        }
        case vaString:
        case vaLString:
        case vaWString:
        case vaUTF8String:
            I.Str = R.ReadString();
            Set(I, kString, "string", Quote(I.Str));
            break;
        case vaIdent:
            Set(I, kOther, "ident", R.ReadIdent());
            break;
        case vaFalse:
        case vaTrue:
            I.Int = R.ReadBoolean();
            Set(I, kBool, "boolean", I.Int ? QStringLiteral("True") : QStringLiteral("False"));
            break;
        case vaBinary: {
            const QByteArray B = R.ReadBinary();
            Set(I, kOther, "binary", QStringLiteral("%1 bytes: %2").arg(B.size()).arg(HexBytes(B, 32)));
            break;
        }
        case vaSet:
            Set(I, kOther, "set",
                QLatin1Char('[') + R.ReadSet().join(QStringLiteral(", ")) + QLatin1Char(']'));
            break;
        case vaNil:
            R.ReadValue();
            Set(I, kOther, "nil", QStringLiteral("nil"));
            break;
        default: {
            // A collection is skipped whole; any other tag makes the reader raise its error.
            R.SkipValue();
            Set(I, kOther, "collection", QStringLiteral("%1 bytes, not shown").arg(R.Position() - I.Offset));
        }
        }
        FItems.push_back(I);
    }

    static void Set(TItem& I, TKind Kind, const char* KindName, const QString& Text) {
        I.Kind = Kind;
        I.KindName = QLatin1String(KindName);
        I.Text = Text;
    }

    void ReadForm() {
        TItem Sig;
        Sig.Offset = R.Position();
        Sig.Depth = Depth;
        R.ReadSignature();
        Set(Sig, kSignature, "signature", QStringLiteral("TPF0"));
        FItems.push_back(Sig);
        // A form's records are in a list; anything else after the signature is a broken stream.
        if (R.NextValue() != vaList) R.ReadListBegin();
        const int Outer = Depth;
        ReadValue();
        while (!(Depth == Outer + 1 && R.NextValue() == vaNull))
            ReadValue();
        ReadValue();
        if (R.AtEnd()) return;
        TItem Code;
        Code.Offset = R.Position();
        Code.Depth = Depth;
        TStreamCode Bytes{};
        R.Read(Bytes.data(), 4);
        QString Text = HexBytes(QByteArray(reinterpret_cast<const char*>(Bytes.data()), 4), 4);
        if (StreamCodesEqual(Bytes, FieldFormEndCode))
            Text += QStringLiteral(" (FieldFormEndCode)");
        else if (StreamCodesEqual(Bytes, NullStreamCode))
            Text += QStringLiteral(" (NullStreamCode)");
        Set(Code, kCode, "code", Text);
        FItems.push_back(Code);
    }

    TReader& R;
    const QByteArray& FData;
    std::vector<TItem>& FItems;
};

// --- Record layouts of the library's field classes -----------------------------------------------

class TCursor {
public:
    TCursor(std::vector<TItem>& Items, std::size_t P, std::size_t E, int Depth)
        : FItems(Items), Pos(P), FEnd(E), FDepth(Depth) {}

    // Labels the next value when it is of the kind; floats also take integers, as the reader does.
    bool Take(TKind Kind, const QString& Label) {
        if (Pos >= FEnd) return false;
        TItem& I = FItems[Pos];
        if (I.Depth != FDepth || !(I.Kind == Kind || (Kind == kFloat && I.Kind == kInt))) return false;
        I.Label = Label;
        ++Pos;
        return true;
    }
    TItem& Last() { return FItems[Pos - 1]; }
    bool VisibleEnabled() {
        return Take(kBool, QStringLiteral("Visible")) && Take(kBool, QStringLiteral("Enabled"));
    }

private:
    std::vector<TItem>& FItems;

public:
    std::size_t Pos;

private:
    std::size_t FEnd;
    int FDepth;
};

const char* const KnownClasses[] = {"TStringFld",   "TMemoFld",         "TCheckFld",    "TRadioBtnFld",
                                    "TRadioGrpFld", "TCheckListBoxFld", "TComboBoxFld", "TDateTimePickerFld",
                                    "TNumFld",      "TNumGrid"};

// Labels the record of a known class. Returns where the labelled part ends; Complete tells
// whether the whole layout was found.
std::size_t LabelRecord(std::vector<TItem>& Items, std::size_t P, std::size_t E, int Depth,
                        const QString& Class, bool& Complete) {
    TCursor C(Items, P, E, Depth);
    auto Indexed = [](const char* Name, qint64 I) {
        return QStringLiteral("%1 %2").arg(QLatin1String(Name)).arg(I);
    };
    bool Ok = false;
    if (Class == QLatin1String("TStringFld")) {
        Ok = C.Take(kString, QStringLiteral("Text")) && C.VisibleEnabled();
    } else if (Class == QLatin1String("TMemoFld")) {
        // No Visible and Enabled in this record.
        Ok = C.Take(kInt, QStringLiteral("LineCount"));
        const qint64 N = Ok ? C.Last().Int : 0;
        for (qint64 I = 0; Ok && I < N; ++I)
            Ok = C.Take(kString, Indexed("Line", I));
    } else if (Class == QLatin1String("TCheckFld") || Class == QLatin1String("TRadioBtnFld")) {
        Ok = C.Take(kBool, QStringLiteral("Checked")) && C.VisibleEnabled();
    } else if (Class == QLatin1String("TRadioGrpFld")) {
        Ok = C.Take(kInt, QStringLiteral("ItemIndex")) && C.VisibleEnabled();
    } else if (Class == QLatin1String("TCheckListBoxFld")) {
        static const char* const States[] = {"cbUnchecked", "cbChecked", "cbGrayed"};
        Ok = C.Take(kInt, QStringLiteral("ItemCount"));
        const qint64 N = Ok ? C.Last().Int : 0;
        for (qint64 I = 0; Ok && I < N; ++I) {
            Ok = C.Take(kInt, Indexed("State", I));
            if (Ok && C.Last().Int >= 0 && C.Last().Int < 3)
                C.Last().Text += QStringLiteral(" (%1)").arg(QLatin1String(States[C.Last().Int]));
        }
        Ok = Ok && C.VisibleEnabled();
    } else if (Class == QLatin1String("TComboBoxFld")) {
        // The older layout has no text: Visible follows the item index directly.
        Ok = C.Take(kInt, QStringLiteral("ItemIndex"));
        if (Ok) C.Take(kString, QStringLiteral("Text"));
        Ok = Ok && C.VisibleEnabled();
    } else if (Class == QLatin1String("TDateTimePickerFld")) {
        Ok = C.Take(kFloat, QStringLiteral("DateTime"));
        if (Ok) C.Last().Text += QStringLiteral(" (%1)").arg(DateText(static_cast<double>(C.Last().Num)));
        Ok = Ok && C.VisibleEnabled();
    } else if (Class == QLatin1String("TNumFld")) {
        Ok = C.Take(kFloat, QStringLiteral("Value"));
        if (Ok && std::isnan(C.Last().Num)) C.Last().Text += QStringLiteral(" (no value)");
        Ok = Ok && C.VisibleEnabled();
    } else if (Class == QLatin1String("TNumGrid")) {
        Ok = C.Take(kInt, QStringLiteral("RowCount"));
        const qint64 Rows = Ok ? C.Last().Int : 0;
        Ok = Ok && C.Take(kInt, QStringLiteral("ColCount"));
        const qint64 Cols = Ok ? C.Last().Int : 0;
        for (qint64 I = 0; Ok && I < Cols; ++I) {
            Ok = C.Take(kInt, Indexed("UnitSystem col", I));
            if (Ok && (C.Last().Int == 0 || C.Last().Int == 1))
                C.Last().Text += C.Last().Int ? QStringLiteral(" (usImperial)") : QStringLiteral(" (usSI)");
        }
        for (qint64 I = 0; Ok && I < Cols; ++I)
            Ok = C.Take(kBool, Indexed("StringCol col", I));
        for (qint64 Row = 0; Ok && Row < Rows; ++Row)
            for (qint64 Col = 0; Ok && Col < Cols; ++Col)
                Ok = C.Take(kString, QStringLiteral("Cell(%1, %2)").arg(Col).arg(Row));
        Ok = Ok && C.VisibleEnabled();
    }
    Complete = Ok;
    return C.Pos;
}

bool IsKnownClass(const QString& S) {
    for (const char* K : KnownClasses)
        if (S == QLatin1String(K)) return true;
    return false;
}

bool LooksLikeIdent(const QString& S, bool ClassName) {
    if (S.isEmpty() || (ClassName && (S.size() < 2 || S[0] != QLatin1Char('T')))) return false;
    for (qsizetype I = 0; I < S.size(); ++I) {
        const char16_t C = S[I].unicode();
        const bool Letter = (C >= 'A' && C <= 'Z') || (C >= 'a' && C <= 'z') || C == '_';
        if (!Letter && !(I > 0 && C >= '0' && C <= '9')) return false;
    }
    return true;
}

bool IsMarker(const TItem& I, int Depth) {
    return I.Depth == Depth && I.Kind == kString && I.Str == QLatin1String("CustomWriteToStream");
}

// A class name and a component name at record level.
bool IsRecordStart(const std::vector<TItem>& Items, std::size_t K, std::size_t E, int Depth, bool Strict) {
    if (K + 1 >= E) return false;
    const TItem& A = Items[K];
    const TItem& B = Items[K + 1];
    if (A.Depth != Depth || B.Depth != Depth || A.Kind != kString || B.Kind != kString) return false;
    return !Strict || ((IsKnownClass(A.Str) || LooksLikeIdent(A.Str, true)) &&
                       (B.Str.isEmpty() || LooksLikeIdent(B.Str, false)));
}

// --- Printing ------------------------------------------------------------------------------------

void PrintItem(QString& Out, const TItem& I, int Indent) {
    Out += QStringLiteral("%1  ").arg(I.Offset, 6, 16, QLatin1Char('0')).toUpper();
    if (I.Tag >= 0) {
        QString Name = GetEnumName(static_cast<TValueType>(I.Tag));
        if (Name.isEmpty()) Name = QStringLiteral("?");
        Out += QStringLiteral("%1 %2").arg(I.Tag, 2, 16, QLatin1Char('0')).toUpper().arg(Name, -13);
    } else {
        Out += QString(16, QLatin1Char(' '));
    }
    Out += QStringLiteral("%1 ").arg(I.KindName, -10); // the value column starts at 35
    Out += QString(Indent, QLatin1Char(' '));
    if (!I.Label.isEmpty()) Out += I.Label + QStringLiteral(" = ");
    Out += I.Text;
    Out += QLatin1Char('\n');
}

void PrintHeader(QString& Out, const QString& Title, int Indent) {
    Out += QString(35 + Indent, QLatin1Char(' ')) + Title + QLatin1Char('\n');
}

// Nested values are indented by their depth below the record level, up to a limit, so that a
// stream of deeply nested lists gives an output proportional to its size.
void PrintRange(QString& Out, const std::vector<TItem>& Items, std::size_t From, std::size_t To,
                int RecordDepth, int Indent) {
    for (std::size_t K = From; K < To; ++K)
        PrintItem(Out, Items[K], Indent + 2 * std::clamp(Items[K].Depth - RecordDepth, 0, 20));
}

// The records of one form: items [B, E) are the content of its main list, at depth D.
void PrintForm(QString& Out, std::vector<TItem>& Items, std::size_t B, std::size_t E, int D) {
    std::size_t I = B;
    while (I < E) {
        if (IsMarker(Items[I], D)) {
            PrintHeader(Out, QStringLiteral("[custom data of the form]"), 2);
            Items[I].Label = QStringLiteral("marker");
            PrintRange(Out, Items, I, E, D, 2);
            return;
        }
        if (!IsRecordStart(Items, I, E, D, false)) {
            PrintRange(Out, Items, I, I + 1, D, 2);
            ++I;
            continue;
        }
        const QString Class = Items[I].Str;
        PrintHeader(Out, QStringLiteral("[%1 %2]").arg(Class, Quote(Items[I + 1].Str)), 2);
        Items[I].Label = QStringLiteral("class");
        Items[I + 1].Label = QStringLiteral("name");
        PrintRange(Out, Items, I, I + 2, D, 2);
        I += 2;
        bool Complete = false;
        std::size_t End = LabelRecord(Items, I, E, D, Class, Complete);
        // Where the layout is unknown or broken, the record runs up to the next likely record.
        if (!Complete)
            while (End < E && !IsMarker(Items[End], D) && !IsRecordStart(Items, End, E, D, true))
                ++End;
        PrintRange(Out, Items, I, End, D, 4);
        I = End;
    }
}

void Print(QString& Out, std::vector<TItem>& Items) {
    Out += QStringLiteral("offset  tag             kind       value\n");
    std::size_t I = 0;
    while (I < Items.size()) {
        const TItem& It = Items[I];
        // A form: signature, list begin, records, list end.
        if (It.Kind == kSignature && I + 1 < Items.size() && Items[I + 1].Kind == kList) {
            const int D = Items[I + 1].Depth;
            std::size_t End = I + 2;
            while (End < Items.size() && !(Items[End].Kind == kEnd && Items[End].Depth == D))
                ++End;
            PrintHeader(Out, QStringLiteral("[field form]"), 0);
            PrintRange(Out, Items, I, I + 2, D, 0);
            PrintForm(Out, Items, I + 2, End, D + 1);
            I = End;
            continue;
        }
        PrintRange(Out, Items, I, I + 1, 0, 0);
        ++I;
    }
}

} // namespace

bool DumpStream(const QByteArray& Data, QString& Out, QString& Error) {
    std::vector<TItem> Items;
    QByteArray Copy = Data;
    QBuffer Buffer(&Copy);
    Buffer.open(QIODevice::ReadOnly);
    bool Ok = true;
    {
        TReader Reader(&Buffer);
        TScanner Scanner(Reader, Data, Items);
        try {
            Scanner.Run();
            if (Scanner.Depth > 0) {
                Ok = false;
                Error = QStringLiteral("the stream ends inside %1 open list(s) at offset %2")
                            .arg(Scanner.Depth)
                            .arg(Data.size());
            }
        } catch (const Exception& E) {
            Ok = false;
            Error = E.Message();
        }
    }
    Print(Out, Items);
    return Ok;
}

} // namespace qxcase

// The grid's files: the XML content and the stream record of the field contract.
//
// Both readers parse and check the whole section before the grid changes (TFieldBase runs the
// returned action only after everything has been read), and the action itself runs as one unit
// (ApplyRead), so a failed read leaves the grid and its undo history as they were. Every count
// from a file is bounded before anything is allocated for it.
#include "numcolumn_p.h"
#include "numgrid_p.h"
#include "numgridmodel_p.h"

#include <qxnum/xml.h>

#include <QCoreApplication>
#include <QUndoStack>

#include <cmath>

namespace qxnum {

namespace {

QString Tr(const char* Source) {
    return QCoreApplication::translate("TNumGrid", Source);
}

const QString LineBreak = QStringLiteral("\r\n");
// A title's line break inside a row text. Written as the line break itself, which the XML writer
// stores as "&#13;" and a line feed, so that every XML reader gets the two characters back (and a
// row text still splits at ";"); files whose writer escaped the references themselves hold the
// characters "&#13;&#10;", which a read turns back into the line break.
const QString LineBreakRef = QStringLiteral("&#13;&#10;");
const QLatin1Char Delimiter(';');
constexpr int MaxRun = 100000; // longest run of unit systems or string flags read

bool IsIntegerTag(TValueType T) {
    return T == vaInt8 || T == vaInt16 || T == vaInt32 || T == vaInt64;
}

// "Row" + the index padded with "0" to the digits of the row count (written once per row: by hand,
// without QString::arg's parsing of the pattern).
QString RowName(int Row, int Width) {
    char Digits[16];
    int N = 0;
    for (unsigned V = static_cast<unsigned>(Row); N == 0 || V > 0; V /= 10)
        Digits[N++] = static_cast<char>('0' + V % 10);
    QString S(3 + std::max(N, Width), QLatin1Char('0'));
    QChar* Out = S.data();
    Out[0] = QLatin1Char('R');
    Out[1] = QLatin1Char('o');
    Out[2] = QLatin1Char('w');
    for (int I = 0; I < N; ++I)
        Out[S.size() - 1 - I] = QLatin1Char(Digits[I]);
    return S;
}

// Entries of a "Cols" list: an empty text has none (a grid without columns writes it so).
QStringList ColumnEntries(const QString& Text) {
    return Text.isEmpty() ? QStringList() : Text.split(Delimiter);
}

// The caption a title cell stands for: the grid adds the unit line itself (TitleString), so a
// title read back without taking it off would gain the line once more with every round trip.
QString CaptionOfTitle(const QString& Title, const QString& Unit) {
    if (Unit.isEmpty()) return Title;
    if (Title == Unit) return QString();
    if (Title.endsWith(LineBreak + Unit)) return Title.left(Title.size() - Unit.size() - LineBreak.size());
    return Title;
}

int RowNameWidth(int RowCount) {
    return RowCount > 0 ? static_cast<int>(std::floor(std::log10(static_cast<double>(RowCount)))) + 1 : 1;
}

} // namespace

// ---- applying a read -----------------------------------------------------------------------------------

void TNumGridPrivate::ApplyRead(const std::function<void()>& Apply) {
    struct TColumnState {
        TParType ParType;
        TUnitSystem UnitSystem;
        bool StringCol;
        QString Caption;
    };
    const TCellStore Saved = Store;
    const int FixedRows = FFixedRows, FixedCols = FFixedCols, SavedCol = FCol, SavedRow = FRow;
    std::vector<TColumnState> Columns;
    for (int C = 0; C < FColumns->Count(); ++C) {
        const TNumColumn* Column = FColumns->Items(C);
        const TNumColumnPrivate* P = Column->Priv();
        Columns.push_back({P->FParType, P->FUnitSystem, P->FStringCol, Column->Title()->Caption()});
    }
    const TModelHold ModelHold(this); // the model tells the whole read once, when it is done
    // The history stays while the step runs (no shape change clears it) and goes when it is done.
    ++UndoDepth;
    KeepReadTexts = true;
    try {
        Apply();
    } catch (...) {
        KeepReadTexts = false;
        // Columns the step removed come back with their defaults; those it added go again.
        FColumns->BeginUpdate();
        while (FColumns->Count() > static_cast<int>(Columns.size()))
            FColumns->Delete(FColumns->Count() - 1);
        while (FColumns->Count() < static_cast<int>(Columns.size()))
            FColumns->Add();
        FColumns->EndUpdate();
        for (size_t C = 0; C < Columns.size(); ++C) {
            TNumColumn* Column = FColumns->Items(static_cast<int>(C));
            TNumColumnPrivate* P = Column->Priv();
            P->FParType = Columns[C].ParType;
            P->FUnitSystem = Columns[C].UnitSystem;
            P->FStringCol = Columns[C].StringCol;
            Column->Title()->SetCaption(Columns[C].Caption);
        }
        const int Cols = Store.ColCount(), Rows = Store.RowCount();
        Store = Saved;
        FFixedRows = FixedRows;
        FFixedCols = FixedCols;
        FCol = SavedCol;
        FRow = SavedRow;
        try {
            q->SizeChanged(Cols, Rows);
        } catch (...) {
            // What raised in the step raises again here; the step's error is the one reported.
        }
        LayoutChanged();
        CellsChanged();
        --UndoDepth;
        throw;
    }
    KeepReadTexts = false;
    --UndoDepth;
    if (Undo) Undo->clear();
}

namespace {

// Shrinks first and then grows, in the medium's order of the counts, so that no size on the way
// is larger than the grid before or after the read: a read within the cell limit never meets it.
void SetCountsForRead(TNumGrid& G, int Cols, int Rows, bool RowsFirst) {
    if (Rows < G.RowCount()) G.SetRowCount(Rows);
    if (Cols < G.ColCount()) G.SetColCount(Cols);
    if (RowsFirst) G.SetRowCount(Rows);
    G.SetColCount(Cols);
    G.SetRowCount(Rows);
}

} // namespace

// ---- XML ---------------------------------------------------------------------------------------------

QString TNumGrid::XmlRowText(int ARow) const {
    // One pass over the cells into a string of the final size; a cell cannot carry the delimiter,
    // so any ";" in it is dropped.
    const auto& Row = Priv()->Store.Row(ARow);
    qsizetype Length = Row.empty() ? 0 : static_cast<qsizetype>(Row.size()) - 1;
    for (const TCell& Cell : Row)
        Length += Cell.Text().size();
    QString S(Length, Qt::Uninitialized);
    QChar* Out = S.data();
    for (size_t C = 0; C < Row.size(); ++C) {
        if (C > 0) *Out++ = Delimiter;
        const QString& Text = Row[C].Text();
        const QChar* In = Text.constData();
        for (const QChar* End = In + Text.size(); In != End; ++In)
            if (*In != Delimiter) *Out++ = *In;
    }
    S.truncate(Out - S.constData());
    return S;
}

QString TNumGrid::XmlColumnList(int Kind) const {
    QString S;
    TNumColumns* Cols = Priv()->FColumns;
    for (int C = 0; C < ColCount(); ++C) {
        if (C > 0) S += Delimiter;
        // A grid column without a description (a host deleted one) is written with a new column's
        // properties, so that every entry reads back.
        const TNumColumnPrivate* P = Cols->Items(C) ? Cols->Items(C)->Priv() : nullptr;
        switch (Kind) {
        case 0:
            S += GetEnumName(P ? P->FUnitSystem : usSI);
            break;
        case 1:
            S += XmlBoolToStr(P ? P->FStringCol : false);
            break;
        default:
            S += GetEnumName(P ? P->FParType : ptNone);
            break;
        }
    }
    return S;
}

void TNumGrid::WriteXmlValue(TXmlNode Node) {
    Node.WriteString(QStringLiteral("Delimiter"), QString(Delimiter));
    Node.WriteInteger(QStringLiteral("Colcount"), ColCount());
    Node.WriteInteger(QStringLiteral("Rowcount"), RowCount());
    TXmlNode Cols = Node.NodeFindOrCreate(QStringLiteral("Cols"));
    Cols.WriteString(QStringLiteral("Units"), XmlColumnList(0));
    Cols.WriteString(QStringLiteral("StringCols"), XmlColumnList(1));
    if (Priv()->FStoreParTypes) Cols.WriteString(QStringLiteral("ParTypes"), XmlColumnList(2));
    TXmlNode Rows = Node.NodeFindOrCreate(QStringLiteral("Rows"));
    Rows.DeleteChildren();
    const int Width = RowNameWidth(RowCount());
    for (int R = 0; R < RowCount(); ++R)
        Rows.NodeNew(RowName(R, Width)).SetValueAsString(XmlRowText(R));
}

bool TNumGrid::XmlValueChanged(TXmlNode ParentXmlNode) {
    // Counts, column properties and rows as this grid would write them; anything missing counts
    // as a change.
    if (ParentXmlNode.IsNull()) return true;
    const TXmlNode Rows = ParentXmlNode.NodeByName(QStringLiteral("Rows"));
    const TXmlNode Cols = ParentXmlNode.NodeByName(QStringLiteral("Cols"));
    if (Rows.IsNull() || Cols.IsNull()) return true;
    if (ParentXmlNode.ReadString(QStringLiteral("Colcount")) != QString::number(ColCount()) ||
        ParentXmlNode.ReadString(QStringLiteral("Rowcount")) != QString::number(RowCount()))
        return true;
    if (Cols.ReadString(QStringLiteral("Units")) != XmlColumnList(0) ||
        Cols.ReadString(QStringLiteral("StringCols")) != XmlColumnList(1))
        return true;
    if (Priv()->FStoreParTypes && Cols.ReadString(QStringLiteral("ParTypes")) != XmlColumnList(2))
        return true;
    int R = 0;
    for (TXmlNode N = Rows.FirstChild(); !N.IsNull(); N = N.NextSibling(), ++R)
        if (R >= RowCount() || N.ValueAsString() != XmlRowText(R)) return true;
    return R != RowCount();
}

TFieldBase::TApplyValue TNumGrid::ReadXmlValue(TXmlNode Node) {
    TNumGridPrivate* D = Priv();
    int NewCols = ColCount(), NewRows = RowCount();
    int V = 0;
    if (!D->FIgnoreColCountRead && ReadXmlInteger(Node, QStringLiteral("Colcount"), V)) NewCols = V;
    if (!D->FIgnoreRowCountRead && ReadXmlInteger(Node, QStringLiteral("Rowcount"), V)) NewRows = V;
    if (!GridSizeAllowed(NewCols, NewRows))
        XmlConvertError(QStringLiteral("Colcount"),
                        Tr("%1 columns and %2 rows are beyond the limits of %3 cells and %4 columns")
                            .arg(NewCols)
                            .arg(NewRows)
                            .arg(MaxCellCount())
                            .arg(MaxGridCols));

    // Column properties: raw values per column, applied without the setters' coupling.
    struct TColProps {
        std::vector<int> ParTypes, Units, StringCols;
    };
    auto Props = std::make_shared<TColProps>();
    const TXmlNode Cols = Node.NodeByName(QStringLiteral("Cols"));
    if (!D->FIgnoreColPropsRead && !Cols.IsNull()) {
        auto Entries = [&](const QString& Name) { return ColumnEntries(Cols.ReadString(Name)); };
        const TXmlNode P = Cols.NodeByName(QStringLiteral("ParTypes"));
        if (!P.IsNull() && D->FStoreParTypes)
            for (const QString& E : Entries(QStringLiteral("ParTypes")))
                Props->ParTypes.push_back(static_cast<quint8>(GetEnumValue<TParType>(E)));
        if (!Cols.NodeByName(QStringLiteral("Units")).IsNull())
            for (const QString& E : Entries(QStringLiteral("Units")))
                Props->Units.push_back(static_cast<quint8>(GetEnumValue<TUnitSystem>(E)));
        if (!Cols.NodeByName(QStringLiteral("StringCols")).IsNull()) {
            for (const QString& E : Entries(QStringLiteral("StringCols"))) {
                bool B = false;
                if (!XmlTryStrToBool(E, B))
                    XmlConvertError(QStringLiteral("StringCols"),
                                    Tr("'%1' is not a valid boolean value").arg(E.left(40)));
                Props->StringCols.push_back(B);
            }
        }
    }

    // Rows: the first Min(RowCount, children) children, each naming its row. The texts are split
    // into cells only when they are applied.
    struct TRowText {
        int Row;
        QString Text;
    };
    auto RowTexts = std::make_shared<std::vector<TRowText>>();
    const TXmlNode Rows = Node.NodeByName(QStringLiteral("Rows"));
    if (!Rows.IsNull()) {
        int Taken = 0;
        for (TXmlNode N = Rows.FirstChild(); !N.IsNull() && Taken < NewRows; N = N.NextSibling(), ++Taken) {
            const QString Name = N.Name();
            bool Ok = false;
            const int R = QStringView(Name).startsWith(u"Row")
                              ? QStringView(Name).mid(3).toInt(&Ok)
                              : QString(Name).remove(QStringLiteral("Row")).toInt(&Ok);
            if (!Ok)
                XmlConvertError(QStringLiteral("Rows"),
                                Tr("'%1' is not a valid row element name").arg(Name.left(40)));
            if (R < 0 || R >= NewRows)
                XmlConvertError(
                    QStringLiteral("Rows"),
                    Tr("%1 names a row outside the %2 rows of the grid").arg(Name.left(40)).arg(NewRows));
            RowTexts->push_back({R, N.ValueAsString()});
        }
    }

    return [this, NewCols, NewRows, Props, RowTexts] {
        TNumGridPrivate* const GD = Priv();
        GD->ApplyRead([&] {
            SetCountsForRead(*this, NewCols, NewRows, false);
            TNumColumns* Columns = GD->FColumns;
            const int NC = std::min(ColCount(), Columns->Count());
            for (int C = 0; C < NC; ++C) {
                TNumColumnPrivate* P = Columns->Items(C)->Priv();
                const auto I = static_cast<size_t>(C);
                if (I < Props->ParTypes.size()) P->FParType = static_cast<TParType>(Props->ParTypes[I]);
                if (I < Props->Units.size()) P->FUnitSystem = static_cast<TUnitSystem>(Props->Units[I]);
                if (I < Props->StringCols.size()) P->FStringCol = Props->StringCols[I] != 0;
            }
            bool Titles = false;
            const int CellCols = ColCount();
            for (const TRowText& T : *RowTexts) {
                const bool Data = T.Row >= GD->FFixedRows;
                if (!Data && !(T.Row == 0 && GD->FReadColTitlesFromStream)) continue;
                // Data entries are stored as they stand, each cut straight out of the row text;
                // only the title row turns the characters of a line-break reference back into
                // the line break (before the split, since they hold the delimiter).
                const QString Title = Data ? QString() : QString(T.Text).replace(LineBreakRef, LineBreak);
                const QString& Text = Data ? T.Text : Title;
                const QChar* P = Text.constData();
                const QChar* const End = P + Text.size();
                bool More = true; // an entry follows (an empty text holds one empty entry)
                for (int C = 0; C < CellCols; ++C) {
                    QString Entry;
                    if (More) {
                        const QChar* E = P;
                        while (E != End && *E != Delimiter)
                            ++E;
                        Entry = QString(P, E - P);
                        More = E != End;
                        P = E + 1;
                    }
                    if (Data) {
                        GD->Store.Put(C, T.Row, Entry);
                    } else if (C < NC) {
                        TNumColumn* Column = Columns->Items(C);
                        Column->Title()->d->FCaption = CaptionOfTitle(Entry, Column->UnitString());
                    }
                }
                Titles = Titles || !Data;
            }
            if (Titles) ResetTitles();
            GD->CellsChanged();
        });
    };
}

// ---- stream ------------------------------------------------------------------------------------------

void TNumGrid::WriteStreamValue(TWriter& Writer) {
    TNumColumns* Cols = Priv()->FColumns;
    Writer.WriteInteger(RowCount());
    Writer.WriteInteger(ColCount());
    for (int C = 0; C < ColCount(); ++C)
        Writer.WriteInteger(Cols->Items(C) ? static_cast<int>(Cols->Items(C)->Priv()->FUnitSystem) : 0);
    for (int C = 0; C < ColCount(); ++C)
        Writer.WriteBoolean(Cols->Items(C) ? Cols->Items(C)->Priv()->FStringCol : false);
    for (int R = 0; R < RowCount(); ++R)
        for (const TCell& Cell : Priv()->Store.Row(R))
            Writer.WriteString(Cell.Text());
}

namespace {

[[noreturn]] void SizeError(const QString& ID, int Rows, int Cols, qint64 At) {
    throw EReadError(Tr("Grid %1: %2 rows and %3 columns are beyond the limits of %4 cells and %5 columns")
                         .arg(ID)
                         .arg(Rows)
                         .arg(Cols)
                         .arg(TNumGrid::MaxCellCount())
                         .arg(MaxGridCols),
                     At);
}

} // namespace

void TNumGrid::ReadCounts(TReader& Reader, int& Rows, int& Cols) const {
    const qint64 At = Reader.Position();
    Rows = Reader.ReadInteger();
    Cols = Reader.ReadInteger();
    if (!GridSizeAllowed(Cols, Rows)) SizeError(GetIDstring(), Rows, Cols, At);
}

namespace {

// How many string flags a record holds at most. Reading does not rely on the counts, but with no
// cells in the record nothing but Visible and Enabled follows the flags, and they must not be
// taken for flags: then the record holds exactly one flag per column.
int FlagRunLimit(int Rows, int Cols) {
    return Rows == 0 || Cols == 0 ? std::min(Cols, MaxRun) : MaxRun;
}

} // namespace

TFieldBase::TApplyValue TNumGrid::ReadStreamValue(TReader& Reader) {
    TNumGridPrivate* D = Priv();
    int Rows = 0, Cols = 0;
    const qint64 Start = Reader.Position();
    ReadCounts(Reader, Rows, Cols);
    const int NewRows = D->FIgnoreRowCountRead ? RowCount() : Rows;
    const int NewCols = D->FIgnoreColCountRead ? ColCount() : Cols;
    // The counts kept from the grid may meet the stored ones beyond the limit.
    if (!GridSizeAllowed(NewCols, NewRows)) SizeError(GetIDstring(), NewRows, NewCols, Start);
    const int FillRows = std::min(Rows, NewRows);
    const int FillCols = std::min(Cols, NewCols);
    // Fixed rows as they will be once the counts are set.
    const int Fixed = std::min(D->FFixedRows, std::max(NewRows - 1, 0));

    auto Units = std::make_shared<std::vector<int>>();
    auto Strings = std::make_shared<std::vector<bool>>();
    while (IsIntegerTag(Reader.NextValue()) && Units->size() < MaxRun) {
        const qint64 At = Reader.Position();
        const int U = Reader.ReadInteger();
        // A unit system the grid cannot hold matters only when the column properties are taken.
        if (!D->FIgnoreColPropsRead && U != usSI && U != usImperial)
            throw EReadError(Tr("Grid %1: %2 is not a unit system").arg(GetIDstring()).arg(U), At);
        Units->push_back(U);
    }
    const auto Flags = static_cast<size_t>(FlagRunLimit(Rows, Cols));
    while ((Reader.NextValue() == vaFalse || Reader.NextValue() == vaTrue) && Strings->size() < Flags)
        Strings->push_back(Reader.ReadBoolean());

    // Cells in row order; title rows are read and dropped, or not read at all when the titles come
    // from the grid itself.
    // One block of FillCols texts per data row.
    auto Cells = std::make_shared<std::vector<QString>>();
    Cells->reserve(static_cast<size_t>(std::max(FillRows - Fixed, 0)) * static_cast<size_t>(FillCols));
    for (int R = 0; R < FillRows; ++R) {
        if (R >= Fixed) {
            for (int C = 0; C < FillCols; ++C)
                Cells->push_back(Reader.ReadString());
        } else if (!D->FReadColTitlesFromStream) {
            for (int C = 0; C < FillCols; ++C)
                Reader.ReadString();
        }
        for (int C = FillCols; C < Cols; ++C)
            Reader.ReadString();
    }
    // One string per further row; a record without columns holds none.
    if (Cols > 0)
        for (int R = FillRows; R < Rows; ++R)
            Reader.ReadString();

    return [this, NewRows, NewCols, FillCols, Fixed, Units, Strings, Texts = std::move(Cells)] {
        TNumGridPrivate* const GD = Priv();
        GD->ApplyRead([&] {
            SetCountsForRead(*this, NewCols, NewRows, true);
            TNumColumns* Columns = GD->FColumns;
            // The collection may hold fewer columns than the grid (a host removed some).
            const int Described = std::min(FillCols, Columns->Count());
            // Captions from the title cells as the grid shows them now, with the unit line it adds
            // itself taken off before the unit systems change.
            QStringList Captions;
            if (GD->FReadColTitlesFromStream && Fixed > 0)
                for (int C = 0; C < Described; ++C)
                    Captions << CaptionOfTitle(this->Cells(C, 0), Columns->Items(C)->UnitString());
            if (!GD->FIgnoreColPropsRead) {
                for (int C = 0; C < std::min(static_cast<int>(GD->FColFormats.size()), Columns->Count()); ++C)
                    Columns->Items(C)->Priv()->FStringCol =
                        GD->FColFormats[C].toUpper().contains(QLatin1String("STRING"));
                for (int C = 0; C < std::min(static_cast<int>(Units->size()), Described); ++C)
                    Columns->Items(C)->Priv()->FUnitSystem =
                        static_cast<TUnitSystem>((*Units)[static_cast<size_t>(C)]);
                for (int C = 0; C < std::min(static_cast<int>(Strings->size()), Described); ++C)
                    Columns->Items(C)->Priv()->FStringCol = (*Strings)[static_cast<size_t>(C)];
            }
            const int PutCols = std::min(FillCols, ColCount());
            for (size_t I = 0; I < Texts->size(); ++I) {
                const int C = static_cast<int>(I % static_cast<size_t>(FillCols));
                if (C < PutCols)
                    GD->Store.Put(C, Fixed + static_cast<int>(I / static_cast<size_t>(FillCols)),
                                  (*Texts)[I]);
            }
            for (int C = 0; C < Captions.size(); ++C)
                Columns->Items(C)->Title()->d->FCaption = Captions[C];
            if (!Captions.isEmpty()) ResetTitles();
            GD->CellsChanged();
            CheckAllCells();
        });
    };
}

void TNumGrid::ReadfromStream(TReader& Reader) {
    // The base's sequence, with ReadingFromStream over before OnAfterRead fires.
    TNumGridPrivate* D = Priv();
    ChangedAfterOK = false;
    D->ReadingFromStream = true;
    try {
        const TApplyValue Apply = ReadStreamValue(Reader);
        const bool Visible = Reader.ReadBoolean();
        const bool Enabled = Reader.ReadBoolean();
        Apply();
        if (D->FStreamReadVisibleandEnabled) {
            SetFieldVisible(Visible);
            SetFieldEnabled(Enabled);
        }
        SetCopyValue();
    } catch (...) {
        D->ReadingFromStream = false;
        throw;
    }
    D->ReadingFromStream = false;
    DoAfterRead();
}

void TNumGrid::SkipfromStream(TReader& Reader) {
    // Exactly what WritetoStream wrote, string flags included (deliberate deviation 10), so that a
    // form reading past a grid it no longer has goes on with the next field.
    int Rows = 0, Cols = 0;
    ReadCounts(Reader, Rows, Cols);
    for (int N = 0; IsIntegerTag(Reader.NextValue()) && N < MaxRun; ++N)
        Reader.ReadInteger();
    for (int N = 0, Flags = FlagRunLimit(Rows, Cols);
         (Reader.NextValue() == vaFalse || Reader.NextValue() == vaTrue) && N < Flags; ++N)
        Reader.ReadBoolean();
    const qint64 Count = qint64(Rows) * Cols;
    for (qint64 I = 0; I < Count; ++I)
        Reader.ReadString();
    Reader.ReadBoolean();
    Reader.ReadBoolean();
}

} // namespace qxnum

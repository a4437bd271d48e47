// Table look-up in the grid: bracketing, linear and quadratic interpolation, column order and
// column statistics.
//
// Values are the cells' held base values (deliberate deviation 4), read without parsing. The
// bracketing and the column order work on a copy of the column's data values that is kept until
// the column's cells, settings or the row counts change; on a column whose values never fall (or
// never rise) the bracketing row is found by halving, and it is the row the row-by-row search
// would find.
#include "numcolumn_p.h"
#include "numgrid_p.h"

#include <qxnum/dialogs.h>
#include <qxnum/mathutil.h>

#include <QCoreApplication>

#include <algorithm>
#include <cmath>
#include <functional>

namespace qxnum {

namespace {

constexpr double Tolerance = 1e-14;

QString Tr(const char* Source) {
    return QCoreApplication::translate("TNumGrid", Source);
}

double LookupValue(TNumGrid* G, int C, int R) {
    return TNumGridPrivate::Of(G)->QuietValue(C, R);
}

// Whether the value v of a row brackets x. The tolerance scales with x, sign included. For a
// fixed x this is a rounded v - c (or v + c) compared with x, so it never turns false again once
// true along values that never fall (ascending) or never rise (descending).
inline bool Brackets(bool Ascending, double x, double v) {
    return Ascending ? x < v - Tolerance * x : v + Tolerance * x < x;
}

using TLookupColumn = TNumGridPrivate::TLookupColumn;

// The bucket of the look-up index that z falls in: never falls as z rises, so a key's place is
// between the rows of the buckets before its own and those of the buckets after it.
inline size_t BucketOf(const TLookupColumn& L, double z) {
    const double t = (z - L.IndexLo) * L.IndexScale;
    const size_t Last = L.Index.size() - 2;
    if (!(t > 0.0)) return 0;
    if (t >= static_cast<double>(Last)) return Last;
    return static_cast<size_t>(t);
}

// Builds the index of the data rows after the first, which never fall (Sign 1) or never rise
// (Sign -1); none when their range is empty or not finite.
void MakeIndex(TLookupColumn& L, double Sign) {
    L.Index.clear();
    if (L.Values.size() < 2) return;
    const double Lo = Sign * L.Values[1], Hi = Sign * L.Values.back();
    if (!(Hi > Lo) || !std::isfinite(Hi - Lo)) return;
    const size_t Buckets = L.Values.size() - 1;
    const double Scale = static_cast<double>(Buckets) / (Hi - Lo);
    if (!std::isfinite(Scale)) return;
    L.IndexLo = Lo;
    L.IndexScale = Scale;
    L.Index.assign(Buckets + 2, 0);
    for (size_t I = 1; I < L.Values.size(); ++I)
        ++L.Index[BucketOf(L, Sign * L.Values[I]) + 1];
    for (size_t B = 1; B < L.Index.size(); ++B)
        L.Index[B] += L.Index[B - 1];
}

// The first index after the first whose value brackets x, or the size when none does, for values
// along which Brackets never turns false again. A plain search for the edge of the tolerance band
// (narrowed by the index) lands on that index but for rounding at the edge; the neighbours of
// where it lands decide, and only when they disagree is the whole band halved with the exact test.
template <bool Ascending> size_t FirstBracketing(const TLookupColumn& L, double x) {
    const std::vector<double>& Values = L.Values;
    if (Values.size() < 2) return Values.size();
    const auto P = [x](double v) { return Brackets(Ascending, x, v); };
    const auto Begin = Values.begin() + 1, End = Values.end();
    const double Band = Tolerance * x;
    const double Key = Ascending ? x + Band : x - Band;
    auto From = Begin, To = End;
    if (!L.Index.empty() && (Ascending ? L.Rising : !L.Rising)) {
        const size_t B = BucketOf(L, Ascending ? Key : -Key);
        From = Begin + L.Index[B];
        To = Begin + L.Index[B + 1];
    }
    const auto Guess =
        Ascending ? std::upper_bound(From, To, Key) : std::upper_bound(From, To, Key, std::greater<double>());
    if ((Guess == End || P(*Guess)) && (Guess == Begin || !P(*(Guess - 1))))
        return static_cast<size_t>(Guess - Values.begin());
    return static_cast<size_t>(std::partition_point(Begin, End, [&P](double v) { return !P(v); }) -
                               Values.begin());
}

// The order of the data rows Fixed .. Rows - 1 as Value(row) reads them; the first pair counts as
// equal within the tolerance inclusive, the later pairs exclusive (kept as the original has it).
template <typename TValue> TColumnOrder OrderOf(int Fixed, int Rows, const TValue& Value) {
    if (Fixed + 1 >= Rows) return coNeitherAnorD;
    const double First = Value(Fixed);
    double v = Value(Fixed + 1);
    if (std::abs(First - v) <= Tolerance) return coNeitherAnorD;
    const bool Rising = First < v;
    for (int r = Fixed + 1; r <= Rows - 2; ++r) {
        const double Next = Value(r + 1);
        if ((v < Next) != Rising || std::abs(v - Next) < Tolerance) return coNeitherAnorD;
        v = Next;
    }
    return Rising ? coAscending : coDescending;
}

// The look-up's messages: one error box; the caller returns false.
bool Report(const QString& Msg) {
    MessageDlg(Msg, mtError, mbOK);
    return false;
}
QString ColumnText(const char* Text, int Col) {
    return Tr(Text) + QString::number(Col);
}

bool IsStringCol(TNumGrid* G, int C) {
    const TNumColumn* Column = G->Columns()->Items(C);
    return Column && Column->StringCol();
}

// Reads column C's base values: from the look-up's copy when there is one, else cell by cell.
class TColumnReader {
public:
    TColumnReader(TNumGridPrivate* Grid, TNumColumn* Column, int Col, bool Make)
        : D(Grid), C(Col), L(Grid->LookupColumn(Column, Col, Make)) {}
    TColumnReader(TNumGridPrivate* Grid, int Col, bool Make)
        : D(Grid), C(Col), L(Grid->LookupColumn(Col, Make)) {}
    const TNumGridPrivate::TLookupColumn* Copy() const { return L; }
    double operator()(int R) const {
        if (L && R >= L->Fixed && R < L->Rows) return L->Values[static_cast<size_t>(R - L->Fixed)];
        return D->QuietValue(C, R);
    }

private:
    TNumGridPrivate* const D;
    const int C;
    const TNumGridPrivate::TLookupColumn* const L;
};

} // namespace

namespace {

// Brings L up to the column's present state (the Key): counts a single read, or makes the copy.
// Out of line, so that the check of a copy that is up to date stays small.
Q_NEVER_INLINE const TLookupColumn* Refresh(TNumGridPrivate* D, TLookupColumn& L, const TLookupColumn& Key,
                                            const TNumColumnPrivate* P, int C, bool Make) {
    if (L.Column != Key.Column || L.Version != Key.Version || L.Stamp != Key.Stamp || L.Rows != Key.Rows ||
        L.Fixed != Key.Fixed) {
        L.Column = Key.Column;
        L.Version = Key.Version;
        L.Stamp = Key.Stamp;
        L.Rows = Key.Rows;
        L.Fixed = Key.Fixed;
        L.Made = false;
        L.Reads = 0;
    }
    const int Rows = L.Rows, Fixed = L.Fixed;
    // Making the copy reads every data cell once: worth it after about a quarter of that in
    // single reads.
    if (!Make && ++L.Reads < std::max(Rows - Fixed, 8) / 4) return nullptr;

    L.Values.clear();
    L.Values.reserve(static_cast<size_t>(std::max(Rows - Fixed, 0)));
    bool Numbers = true;
    for (int R = Fixed; R < Rows; ++R) {
        const TCell& Cell = D->Store.At(C, R);
        if (!Cell.HasValue()) {
            bool Ok = false;
            if (!Cell.Text().isEmpty()) P->ParseBase(Cell.Text(), Ok);
            Numbers = Numbers && Ok;
        }
        L.Values.push_back(D->QuietValue(C, R));
    }
    const std::vector<double>& V = L.Values;
    const size_t N = V.size();
    // The first data row is never tested by the search, so it does not count here.
    bool Rising = N >= 2, Falling = N >= 2;
    for (size_t I = 1; I < N && (Rising || Falling); ++I) {
        if (std::isnan(V[I])) Rising = Falling = false;
        if (I + 1 < N) {
            if (!(V[I] <= V[I + 1])) Rising = false;
            if (!(V[I] >= V[I + 1])) Falling = false;
        }
    }
    L.Numbers = Numbers;
    L.Rising = Rising;
    L.Falling = Falling;
    L.Order = OrderOf(Fixed, Rows, [&V, Fixed](int R) { return V[static_cast<size_t>(R - Fixed)]; });
    L.Index.clear();
    if (Numbers && (Rising || Falling)) MakeIndex(L, Rising ? 1.0 : -1.0);
    L.Made = true;
    return &L;
}

} // namespace

const TNumGridPrivate::TLookupColumn* TNumGridPrivate::LookupColumn(TNumColumn* Column, int C, bool Make) {
    if (!Column || C >= Store.ColCount() || FFixedRows < 0) return nullptr;
    const TNumColumnPrivate* P = Column->Priv();
    const auto Slot = static_cast<size_t>(C);
    // Expressions and hooks may give another value at each read: such a column is read cell by
    // cell, as often as the search reads it.
    if (!P->HoldsValues() || !P->ChecksRepeatable()) {
        if (Slot < Lookup.size()) Lookup[Slot].reset();
        return nullptr;
    }
    if (Slot >= Lookup.size()) Lookup.resize(Slot + 1);
    if (!Lookup[Slot]) Lookup[Slot] = std::make_unique<TLookupColumn>();
    TLookupColumn& L = *Lookup[Slot];
    const quint64 Version = Store.ColumnVersion(C);
    const int Rows = Store.RowCount();
    if (L.Made && L.Version == Version && L.Stamp == P->Stamp && L.Rows == Rows && L.Fixed == FFixedRows &&
        L.Column == Column)
        return &L;
    TLookupColumn Key;
    Key.Column = Column;
    Key.Version = Version;
    Key.Stamp = P->Stamp;
    Key.Rows = Rows;
    Key.Fixed = FFixedRows;
    return Refresh(this, L, Key, P, C, Make);
}

bool TNumGrid::GetInterpPars(int ACol, bool ascending, double InValue, int& row2, double& Intfactor) {
    return GetInterpPars(ACol, ascending ? coAscending : coDescending, InValue, row2, Intfactor);
}

bool TNumGrid::GetInterpPars(int ACol, TColumnOrder AColOrder, double InValue, int& row2, double& Intfactor) {
    const auto Failed = [&] {
        return Report(GridMessage(ColumnText("Exception error interpolating column nr.", ACol)));
    };
    // The order is settled before anything else, under the same guard as the search: an order
    // that is none, or one that cannot be found (a text column, fewer than two data rows), fails
    // with the look-up message. Its own texts stay in the error object.
    try {
        if (AColOrder == coNeitherAnorD) throw EMathError(Tr("Invalid ColOrder value in ") + OwnerName());
        if (AColOrder == coAutoDetermine) {
            AColOrder = ColumnOrder(ACol);
            if (AColOrder == coNeitherAnorD)
                throw EMathError(Tr("Inconsistent Column order for interpolation in ") + OwnerName());
        }
    } catch (const std::exception&) {
        return Failed();
    }
    TNumGridPrivate* const D = Priv();
    TNumColumn* const Column = D->FColumns->Items(ACol);
    if (Column && Column->Priv()->FStringCol) {
        return Report(GridMessage(ColumnText("Cannot interpolate in non-numerical column nr.", ACol)));
    }
    const int Fixed = D->FFixedRows;
    const int Last = D->Store.RowCount() - 1;
    // Fewer than two data rows: nothing to bracket, and that counts as success.
    if (Fixed >= Last) {
        row2 = 0;
        return true;
    }
    try {
        const bool Ascending = AColOrder == coAscending;
        const double x = InValue;
        const TColumnReader Value(D, Column, ACol, true);
        const TNumGridPrivate::TLookupColumn* L = Value.Copy();
        // The first data row after the first that brackets x, or the last row when none does.
        int r = Fixed;
        if (L && L->Numbers && (Ascending ? L->Rising : L->Falling)) {
            const size_t Found = Ascending ? FirstBracketing<true>(*L, x) : FirstBracketing<false>(*L, x);
            r = Found == L->Values.size() ? Last : L->Fixed + static_cast<int>(Found);
        } else {
            do {
                ++r;
            } while (!Brackets(Ascending, x, Value(r)) && r != Last);
        }
        const double v1 = Value(r - 1);
        const double Denominator = Value(r) - v1;
        if (Denominator == 0.0) throw EMathError(Tr("Division by zero"));
        double f = (x - v1) / Denominator;
        if (!std::isfinite(f) && !std::isnan(f)) throw EMathError(Tr("Floating point overflow"));
        if (!D->FExtrapolate) {
            if (f < 0.0 || std::isnan(f))
                f = 0.0;
            else if (f > 1.0)
                f = 1.0;
        }
        row2 = r;
        Intfactor = f;
        return true;
    } catch (const std::exception&) {
        return Failed();
    }
}

bool TNumGrid::GetInterpVal(int ACol, int row2, double Intfactor, double& Value) {
    TNumGridPrivate* const D = Priv();
    TNumColumn* const Column = D->FColumns->Items(ACol);
    if (Column && Column->Priv()->FStringCol) {
        return Report(GridMessage(ColumnText("Cannot interpolate in non-numerical column nr.", ACol)));
    }
    try {
        const int Rows = D->Store.RowCount();
        if (Rows == D->FFixedRows + 1) {
            Value = LookupValue(this, ACol, D->FFixedRows);
            return true;
        }
        if (row2 < 1 || row2 >= Rows) throw EMathError(Tr("Row out of range"));
        // Two cells alone are not worth a copy of the column, but one at hand is used.
        const TColumnReader Read(D, Column, ACol, false);
        const double v1 = Read(row2 - 1);
        const double v = v1 + (Read(row2) - v1) * Intfactor;
        if (!std::isfinite(v)) throw EMathError(Tr("Invalid floating point operation"));
        Value = v;
        return true;
    } catch (const std::exception&) {
        return Report(GridMessage(ColumnText("Exception error interpolating column nr.", ACol)));
    }
}

bool TNumGrid::GetQuadInterpVal(int Incol, int Outcol, bool ascending, double InValue, double& Value) {
    return GetQuadInterpVal(Incol, Outcol, ascending ? coAscending : coDescending, InValue, Value);
}

bool TNumGrid::GetQuadInterpVal(int Incol, int Outcol, TColumnOrder AColOrder, double InValue,
                                double& Value) {
    if (IsStringCol(this, Incol) || IsStringCol(this, Outcol)) {
        return Report(Tr("Cannot interpolate in non-numerical column\r\nin ") + OwnerName());
    }
    const int Fixed = FixedRows();
    try {
        if (RowCount() == Fixed + 1) {
            Value = LookupValue(this, Outcol, Fixed);
            return true;
        }
    } catch (const std::exception&) {
        return Report(GridMessage(ColumnText("Exception error quadr. interp. column nr.", Outcol)));
    }
    int row2 = 0;
    double f = 0.0;
    if (!GetInterpPars(Incol, AColOrder, InValue, row2, f)) return false;
    try {
        const int m = std::min(std::max(row2, Fixed), RowCount() - 2);
        const int r1 = std::max(m - 1, Fixed), r2 = m, r3 = m + 1;
        const TColumnReader In(Priv(), Incol, false), Out(Priv(), Outcol, false);
        double x = InValue;
        if (!Extrapolate()) {
            if (f < 0.0)
                x = In(Fixed);
            else if (f > 1.0)
                x = In(RowCount() - 1);
        }
        double A = 0.0, B = 0.0, C = 0.0;
        parabola(In(r1), Out(r1), In(r2), Out(r2), In(r3), Out(r3), A, B, C);
        Value = (A * x + B) * x + C;
        return true;
    } catch (const std::exception&) {
        return Report(GridMessage(ColumnText("Exception error quadr. interp. column nr.", Outcol)));
    }
}

TColumnOrder TNumGrid::ColumnOrder(int ACol) {
    const int Fixed = FixedRows();
    if (IsStringCol(this, ACol) || Fixed + 1 >= RowCount()) return coNeitherAnorD;
    if (const TNumGridPrivate::TLookupColumn* L = Priv()->LookupColumn(ACol)) return L->Order;
    return OrderOf(Fixed, RowCount(), [&](int R) { return static_cast<double>(GetDValues(ACol, R)); });
}

namespace {

// A column whose cells read the same each time and never raise: its held values are read as they
// are, without the message and reformat of GetDValues.
bool ReadsQuietly(const TNumColumnPrivate* P) {
    return P->HoldsValues() && P->ChecksRepeatable();
}

} // namespace

double TNumGrid::ColSum(int icol, int startrow, int endrow) {
    // Rows outside the grid add nothing, so the limits are clamped to it before the loop (the
    // caller's limits may span the whole integer range).
    TNumColumn* Column = Columns()->Items(icol);
    if (!Column) return 0.0;
    startrow = std::max(startrow, 0);
    endrow = std::min(endrow, RowCount() - 1);
    const bool Quiet = ReadsQuietly(Column->Priv());
    double Sum = 0.0;
    for (int r = startrow; r <= endrow; ++r)
        Sum += Quiet ? Priv()->QuietValue(icol, r) : static_cast<double>(GetDValues(icol, r));
    return Sum;
}

void TNumGrid::GetColMinMax(int icol, double& ColMin, double& ColMax, bool ResetColMinMax, bool Scale) {
    if (ResetColMinMax) {
        ColMin = 1e20;
        ColMax = -1e20;
    }
    // Neither a text column nor a column that does not exist has values to widen them by.
    TNumColumn* Column = Columns()->Items(icol);
    if (!Column || Column->StringCol()) return;
    // Unscaled values are those the texts show: read from the texts.
    const bool Quiet = Scale && ReadsQuietly(Column->Priv());
    for (int r = FixedRows(); r < RowCount(); ++r) {
        const double v = Quiet ? Priv()->QuietValue(icol, r)
                               : static_cast<double>(Scale ? GetDValues(icol, r) : GetCValues(icol, r));
        if (v < ColMin) ColMin = v;
        if (v > ColMax) ColMax = v;
    }
}

} // namespace qxnum

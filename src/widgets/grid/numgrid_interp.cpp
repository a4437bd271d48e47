// Table look-up in the grid: bracketing, linear and quadratic interpolation, column order and
// column statistics.
#include "numcolumn_p.h"
#include "numgrid_p.h"

#include <qxnum/dialogs.h>
#include <qxnum/mathutil.h>

#include <QCoreApplication>

#include <cmath>

namespace qxnum {

namespace {

constexpr double Tolerance = 1e-14;

QString Tr(const char* Source) {
    return QCoreApplication::translate("TNumGrid", Source);
}

double LookupValue(TNumGrid* G, int C, int R) {
    return TNumGridPrivate::Of(G)->QuietValue(C, R);
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

} // namespace

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
    if (IsStringCol(this, ACol)) {
        return Report(GridMessage(ColumnText("Cannot interpolate in non-numerical column nr.", ACol)));
    }
    const int Fixed = FixedRows();
    // Fewer than two data rows: nothing to bracket, and that counts as success.
    if (Fixed + 1 >= RowCount()) {
        row2 = 0;
        return true;
    }
    try {
        const bool Ascending = AColOrder == coAscending;
        const double x = InValue;
        int r = Fixed;
        do {
            ++r;
            const double v = LookupValue(this, ACol, r);
            if (Ascending ? x < v - Tolerance * x : v + Tolerance * x < x) break;
        } while (r != RowCount() - 1);
        const double v1 = LookupValue(this, ACol, r - 1);
        const double Denominator = LookupValue(this, ACol, r) - v1;
        if (Denominator == 0.0) throw EMathError(Tr("Division by zero"));
        double f = (x - v1) / Denominator;
        if (!std::isfinite(f) && !std::isnan(f)) throw EMathError(Tr("Floating point overflow"));
        if (!Extrapolate()) {
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
    if (IsStringCol(this, ACol)) {
        return Report(GridMessage(ColumnText("Cannot interpolate in non-numerical column nr.", ACol)));
    }
    try {
        if (RowCount() == FixedRows() + 1) {
            Value = LookupValue(this, ACol, FixedRows());
            return true;
        }
        if (row2 < 1 || row2 >= RowCount()) throw EMathError(Tr("Row out of range"));
        const double v1 = LookupValue(this, ACol, row2 - 1);
        const double v = v1 + (LookupValue(this, ACol, row2) - v1) * Intfactor;
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
        double x = InValue;
        if (!Extrapolate()) {
            if (f < 0.0)
                x = LookupValue(this, Incol, Fixed);
            else if (f > 1.0)
                x = LookupValue(this, Incol, RowCount() - 1);
        }
        double A = 0.0, B = 0.0, C = 0.0;
        parabola(LookupValue(this, Incol, r1), LookupValue(this, Outcol, r1), LookupValue(this, Incol, r2),
                 LookupValue(this, Outcol, r2), LookupValue(this, Incol, r3), LookupValue(this, Outcol, r3),
                 A, B, C);
        Value = (A * x + B) * x + C;
        return true;
    } catch (const std::exception&) {
        return Report(GridMessage(ColumnText("Exception error quadr. interp. column nr.", Outcol)));
    }
}

TColumnOrder TNumGrid::ColumnOrder(int ACol) {
    const int Fixed = FixedRows();
    if (IsStringCol(this, ACol) || Fixed + 1 >= RowCount()) return coNeitherAnorD;
    const auto First = static_cast<double>(GetDValues(ACol, Fixed));
    const auto Second = static_cast<double>(GetDValues(ACol, Fixed + 1));
    if (std::abs(First - Second) <= Tolerance) return coNeitherAnorD;
    const bool Rising = First < Second;
    double v = Second;
    for (int r = Fixed + 1; r <= RowCount() - 2; ++r) {
        const auto Next = static_cast<double>(GetDValues(ACol, r + 1));
        if ((v < Next) != Rising || std::abs(v - Next) < Tolerance) return coNeitherAnorD;
        v = Next;
    }
    return Rising ? coAscending : coDescending;
}

double TNumGrid::ColSum(int icol, int startrow, int endrow) {
    // Rows outside the grid add nothing, so the limits are clamped to it before the loop (the
    // caller's limits may span the whole integer range).
    if (!Columns()->Items(icol)) return 0.0;
    startrow = std::max(startrow, 0);
    endrow = std::min(endrow, RowCount() - 1);
    double Sum = 0.0;
    for (int r = startrow; r <= endrow; ++r)
        Sum += static_cast<double>(GetDValues(icol, r));
    return Sum;
}

void TNumGrid::GetColMinMax(int icol, double& ColMin, double& ColMax, bool ResetColMinMax, bool Scale) {
    if (ResetColMinMax) {
        ColMin = 1e20;
        ColMax = -1e20;
    }
    // Neither a text column nor a column that does not exist has values to widen them by.
    if (!Columns()->Items(icol) || IsStringCol(this, icol)) return;
    for (int r = FixedRows(); r < RowCount(); ++r) {
        const auto v = static_cast<double>(Scale ? GetDValues(icol, r) : GetCValues(icol, r));
        if (v < ColMin) ColMin = v;
        if (v > ColMax) ColMax = v;
    }
}

} // namespace qxnum

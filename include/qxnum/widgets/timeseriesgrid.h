/// \file
/// A numeric grid whose column 0 holds time, strictly ascending from row to row, and whose other
/// columns hold the values of a time series.
///
/// The time row is one snapshot of all columns at a chosen time: a copy of a grid row
/// (SetTimeRowtoRow) or interpolated between the two rows that bracket the time
/// (CalcTimeRowAtTime; text columns take the earlier row's text). New rows get sensible times (the
/// midpoint before a following row, the last step repeated at the end), and with AllowDataDialog
/// and a fixed column an inserted row asks for its time (TimeEditDialog, through NumInputQuery).
///
/// Times that do not ascend are reported: leaving a cell names the neighbour it collides with;
/// CheckRow (and so the grid checks) says "please update grid !". A new row is never timed from a
/// neighbouring time that is no number: that text is reported (the grid's "is no valid numeric
/// input" message) and the row keeps its defaults. A grid without columns (read so from a file)
/// has no time column and nothing to keep in order. The persistence is the grid's; the class is
/// registered as "TTimeSeriesGrid".
#pragma once

#include <qxnum/widgets/numgrid.h>

#include <memory>
#include <vector>

namespace qxnum {

class TTimeSeriesGridPrivate;

class QXNUM_WIDGETS_EXPORT TTimeSeriesGrid : public TNumGrid {
    Q_OBJECT

public:
    explicit TTimeSeriesGrid(QWidget* Owner = nullptr);
    ~TTimeSeriesGrid() override;

    /// The time row: one value per column (element 0 is the time) and, for text columns, the text.
    std::vector<double> TimeRow;
    std::vector<QString> TimeRowStrings;

    /// Copies row irow into the time row.
    void SetTimeRowtoRow(int irow);
    /// Interpolates the time row at ATime; false (with the look-up's message) when that fails.
    bool CalcTimeRowAtTime(double ATime);
    /// The last row's time; 1e20 while there is only one data row (open-ended).
    double EndTime();
    /// Asks the user for the time of row ARow, between its neighbours' times. Cancel rewrites the old
    /// time and sets DialogCancelled, which also stops a running paste.
    void TimeEditDialog(int ARow);

    void InitRow(int irow) override;
    /// Never inserts in front of a start time of zero; gives the new row a time from its neighbours.
    void InsertRow(int atrow) override;
    bool CheckRow(int ARow) override;
    bool CheckCell(int icol, int irow) override;

protected:
    void SizeChanged(int OldColCount, int OldRowCount) override;

private:
    double Time(int ARow);
    bool Exempt() const;
    std::unique_ptr<TTimeSeriesGridPrivate> d;
};

} // namespace qxnum

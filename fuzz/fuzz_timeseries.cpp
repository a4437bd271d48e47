// fuzz_grid's readers and checks on the time-series grid, whose checks assume its time column.
#define QXNUM_FUZZ_GRID TTimeSeriesGrid
#include "fuzz_grid.cpp"

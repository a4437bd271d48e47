/// \file
/// Umbrella header of QXNumCtrls::Widgets: the numeric edit, the labelled input, the fields, the grid
/// and its companions, the numeric input query and the field form.
#pragma once

#include <qxnum/core.h>

#include <qxnum/widgets/fieldbase.h>
#include <qxnum/widgets/fieldform.h>
#include <qxnum/widgets/fields.h>
#include <qxnum/widgets/messagebox.h>
#include <qxnum/widgets/numcolumn.h>
#include <qxnum/widgets/numedit.h>
#include <qxnum/widgets/numfld.h>
#include <qxnum/widgets/numgrid.h>
#include <qxnum/widgets/numgridmodel.h>
#include <qxnum/widgets/numgridnav.h>
#include <qxnum/widgets/numinp.h>
#include <qxnum/widgets/numinpdlg.h>
#include <qxnum/widgets/timeseriesgrid.h>

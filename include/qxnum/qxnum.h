// Umbrella header: every public header of the library.
#pragma once

#include <qxnum/dialogs.h>
#include <qxnum/filer.h>
#include <qxnum/formatsettings.h>
#include <qxnum/global.h>
#include <qxnum/numconv.h>
#include <qxnum/numfld_intf.h>
#include <qxnum/numtext.h>
#include <qxnum/parser.h>
#include <qxnum/registry.h>
#include <qxnum/streamcode.h>
#include <qxnum/units.h>
#include <qxnum/xml.h>

#include <qxnum/widgets/fieldbase.h>
#include <qxnum/widgets/fields.h>
#include <qxnum/widgets/numedit.h>
#include <qxnum/widgets/numfld.h>
#include <qxnum/widgets/numinp.h>

// Umbrella header: every public header of the library.
#pragma once

#include <qxnum/dialogs.h>
#include <qxnum/formatsettings.h>
#include <qxnum/global.h>
#include <qxnum/numconv.h>
#include <qxnum/numtext.h>
#include <qxnum/units.h>

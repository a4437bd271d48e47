/// \file
/// Umbrella header of QXNumCtrls::Core (QtCore only): units, number text, parser, filer, XML,
/// stream codes, the class registry and the message-dialog service.
#pragma once

#include <qxnum/dialogs.h>
#include <qxnum/enums.h>
#include <qxnum/filer.h>
#include <qxnum/formatsettings.h>
#include <qxnum/global.h>
#include <qxnum/mathutil.h>
#include <qxnum/numconv.h>
#include <qxnum/numfld_intf.h>
#include <qxnum/numtext.h>
#include <qxnum/parser.h>
#include <qxnum/registry.h>
#include <qxnum/streamcode.h>
#include <qxnum/units.h>
#include <qxnum/xml.h>

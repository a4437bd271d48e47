/// \file
/// Umbrella header: the whole library (both QXNumCtrls::Core and QXNumCtrls::Widgets).
#pragma once

#include <qxnum/core.h>
#include <qxnum/widgets.h>

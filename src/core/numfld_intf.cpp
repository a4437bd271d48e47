#include <qxnum/numfld_intf.h>

namespace qxnum {

// Out of line so that the type information of INumFld lives in this library only, and
// dynamic_cast to it works across the libraries and the host.
INumFld::~INumFld() = default;

} // namespace qxnum

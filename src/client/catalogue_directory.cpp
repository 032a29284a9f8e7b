// Compiled once for the build folder and once for what is installed.
#include "client/catalogue.h"

namespace pvr {

const char PVR_SERVICE_API_MO_LOCALE[] = PVR_CATALOGUES;

} // namespace pvr

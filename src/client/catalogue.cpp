#include "client/catalogue.h"

#include <atomic>
#include <clocale>
#include <libintl.h>

namespace pvr {
namespace {

constinit std::atomic<bool> bDomainInit{false};

} // namespace

void bind_catalogue(Here here) noexcept
{
    PLAIN_INFO_AT(here, "bDomainInit:%d PVR_SERVICE_API_MO_NAME:%s, PVR_SERVICE_API_MO_LOCALE:%s\n", bDomainInit.load(),
                  PVR_SERVICE_API_MO_NAME, PVR_SERVICE_API_MO_LOCALE);
    if (bDomainInit)
        return;
    const char *directory = bindtextdomain(PVR_SERVICE_API_MO_NAME, PVR_SERVICE_API_MO_LOCALE);
    PLAIN_INFO_AT(here, "pbindtextdomain:%s\n", directory);
    bDomainInit = true;
}

const char *translated(const char *message_id) noexcept
{
    return dcgettext(PVR_SERVICE_API_MO_NAME, message_id, LC_MESSAGES);
}

} // namespace pvr

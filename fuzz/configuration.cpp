// The development service's configuration file, of any content.
#include "config_file.h"
#include "pvr_gdbus_generated.h"
#include "support/check.h"
#include "support/described_set.h"
#include "support/settings.h"

using namespace fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    simulator::Equipment equipment;
    const auto read = [&] { equipment = simulator::configured(settings_path); };
    if (is_accepted({data, size}, read))
        check_equipment(equipment);
    return 0;
}

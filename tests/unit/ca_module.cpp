// The module is a table of functions made by hand, so that each question is seen to go to its place in the closed
// library's table.
#include "ca_module.h"

#include "pvr_service_api.h"

#include <array>
#include <ca_service.h>
#include <cstring>
#include <stdexcept>
#include <system_info.h>
#include <typeinfo>

namespace support {

Module module;

namespace {

using Sections = std::vector<std::pair<int, int>>;

std::optional<int> standard_of_product;
std::optional<int> slots_of_product;

bool asked(int slot, const std::string &about)
{
    module.slot = slot;
    module.path = about;
    if (module.is_throwing)
        throw std::runtime_error("the module was pulled");
    return module.is_answering;
}

template <int slot>
bool answer_flag(void *, std::string &about, bool *flag)
{
    const bool is_answered = asked(slot, about);
    if (module.is_writing)
        *flag = module.value != 0;
    return is_answered;
}

bool answer_type(void *, std::string &about, int *type)
{
    const bool is_answered = asked(3, about);
    if (module.is_writing)
        *type = module.value;
    return is_answered;
}

bool answer_content(void *, std::string &about, int *type, unsigned char *play_count)
{
    const bool is_answered = asked(4, about);
    if (module.is_writing) {
        *type = module.value;
        *play_count = static_cast<unsigned char>(module.play_count);
    }
    return is_answered;
}

bool answer_sections(void *, std::string &about, Sections &sections)
{
    const bool is_answered = asked(5, about);
    sections = module.sections;
    return is_answered;
}

bool answer_validity(void *self, std::string &about, int *position, bool *valid)
{
    module.position = *position;
    return answer_flag<7>(self, about, valid);
}

template <typename Function>
const void *address(Function *function)
{
    return reinterpret_cast<const void *>(function);
}

/// An object as the closed library makes it: a pointer to its table, behind the type's own entries.
struct Object {
    const void *const *table;
};

CA_API::CAService *made_by_hand()
{
    static const std::array<const void *, 10> table{nullptr,
                                                    &typeid(CA_API::CAService),
                                                    nullptr, // slots 0 and 1: whoever calls them ends here
                                                    nullptr,
                                                    address(answer_flag<2>),
                                                    address(answer_type),
                                                    address(answer_content),
                                                    address(answer_sections),
                                                    address(answer_flag<6>),
                                                    address(answer_validity)};
    static Object object{table.data() + 2};
    return reinterpret_cast<CA_API::CAService *>(&object);
}

int read(const std::optional<int> &known, int *value)
{
    if (!known)
        return -1;
    *value = *known;
    return 0;
}

} // namespace

void reset_module()
{
    module = Module();
    standard_of_product = PVR_DTV_DVB_ISDB;
    slots_of_product = 1;
}

void set_standard(std::optional<int> standard) { standard_of_product = standard; }
void set_ci_slots(std::optional<int> slots) { slots_of_product = slots; }

} // namespace support

CA_API::CAService *CA_API::CAService::CAPVRInstance()
{
    return support::module.is_fitted ? support::made_by_hand() : nullptr;
}

int system_info_get_value_int(int key, int *value)
{
    return key == 333 ? support::read(support::standard_of_product, value) : -1;
}

int system_info_get_custom_int(const char *key, int *value)
{
    const bool is_known = std::strcmp(key, "com.brimmel/featureconf/product.num_of_ci") == 0;
    return is_known ? support::read(support::slots_of_product, value) : -1;
}

// The methods for storage devices.
#pragma once

#include "method_room.h"
#include "outcome.h"
#include "pvr_gdbus_generated.h"

#include <string>
#include <tuple>

namespace simulator {

class DeviceMethods : public MethodRoom {
public:
    DeviceMethods(OrgVexanTvPvr *object, Television &set);

private:
    Outcome format(int handle, int dev_type);
    std::tuple<int> is_need_performance_test(int handle);
    Outcome start_performance_test(int handle);
    std::tuple<int> get_performance_test_result(int handle);
    Outcome check_device(int handle);
    std::tuple<int, int> get_default_rec_device();
    std::tuple<int, int> get_potential_rec_dev();
    std::tuple<int, int> get_next_def_rec_dev();
    std::tuple<GVariant *, int, int> get_device_list(int length);
    std::tuple<GVariant *, int, int> get_rec_device_list(int length);
    std::tuple<GVariant *, int> get_device_info(int handle);
    std::tuple<int, int> get_dev_total();
    std::tuple<int, int> get_record_dev_total();
    std::tuple<std::string, int> get_rec_device_name();
    std::tuple<std::string, int> get_rec_dev_name(int handle);
    Outcome set_default_rec_device(int handle);
    std::tuple<gint64, gint64> get_rec_dev_capacity();
    std::tuple<int> is_exist_rec_device();
    std::tuple<int> is_available();
    std::tuple<std::string> get_product_name(const char *mount_path);
    Outcome mkdir(const char *path, int permissions);
};

} // namespace simulator

#include "bus/row_shapes.h"
#include "pvr_service_api.h"
#include "support/little_endian.h"

#include <cstring>
#include <ostream>
#include <vector>

using namespace support;
using Result = RemoteCall::Result;

namespace {

std::ostream &operator<<(std::ostream &out, const device_info &info)
{
    return out << as_little_endian(info.device_type) << "|" << as_little_endian(info.file_format) << "|"
               << info.device_name << "|" << info.product_name << "|" << info.mnt_path << "|"
               << as_little_endian(info.total_size) << "|" << as_little_endian(info.avail_size);
}

std::string device_line(const std::string &name)
{
    return plain_info(
        "device_type[1] file_format[-2] device_name[" + name +
        "] product_name[Größe %s] mnt_path[/m %n] total_size[4294967296] avail_size[-9223372036854775808]");
}

Outcome device_outcome(const std::string &name, const std::string &stored, int result)
{
    return {"((1, -2, '" + name + "', 'Größe %s', '/m %n', int64 4294967296, int64 -9223372036854775808), " +
                std::to_string(result) + ")",
            0,
            "1|-2|" + stored + "|Größe %s|/m %n|4294967296|-9223372036854775808",
            {device_line(name)}};
}

const std::string long_name(300, 'n');

const RemoteCall get_device_info{
    .name = "svc_pvr_get_device_info",
    .call =
        [](std::ostream &outputs) {
            device_info info{};
            info.device_type = as_little_endian(-77);
            const int returned = svc_pvr_get_device_info(9, &info);
            outputs << info;
            return returned;
        },
    .untouched = "-77|0||||0|0",
    .entry = entry("[dev_handle:9]"),
    .is_checked = true,
    .request = request("get_device_info", "i", "(9,)"),
    .result = Result::is_published,
    .outcomes = {device_outcome("Stick ä", "Stick ä", 1), device_outcome(long_name, long_name.substr(0, 254), 0),
                 device_outcome(std::string(253, 'n') + "ä", std::string(253, 'n') + "\xc3", -1)},
    .call_with_null_outputs = {}, // null is refused: see records_test.cpp
};

const RemoteCall get_default_rec_device{
    .name = "svc_pvr_get_default_rec_device",
    .call =
        [](std::ostream &outputs) {
            int handle = -77;
            const int returned = svc_pvr_get_default_rec_device(&handle);
            outputs << handle;
            return returned;
        },
    .untouched = "-77",
    .entry = plain_entry("My maste" + my_master().substr(std::strlen("My master"))),
    .is_checked = true,
    .request = request("get_default_rec_device", "", "()"),
    .result = Result::is_published,
    .outcomes = {{"(4, 1)", 0, "4", {info(" final [dev_handle:4]")}},
                 {"(-1, -4)", 0, "-1", {info(" final [dev_handle:-1]")}}},
    .call_with_null_outputs = [] { return svc_pvr_get_default_rec_device(nullptr); },
};

const RemoteCall get_rec_dev_capacity{
    .name = "svc_pvr_get_rec_dev_capacity",
    .call =
        [](std::ostream &outputs) {
            rec_dev_capacity capacity{as_little_endian(std::int64_t{-77}), as_little_endian(std::int64_t{-78})};
            const int returned = svc_pvr_get_rec_dev_capacity(9, &capacity);
            outputs << as_little_endian(capacity.available_size) << "|" << as_little_endian(capacity.total_size);
            return returned;
        },
    .untouched = "-77|-78",
    .entry = entry("[dev_handle:9]"),
    .is_checked = true,
    .request = request("get_rec_dev_capacity", "", "()"),
    .result = Result::is_the_answer,
    .outcomes = {{"(int64 4294967297, int64 -1)", 0, "4294967297|-1", {}}},
    .call_with_null_outputs = [] { return svc_pvr_get_rec_dev_capacity(9, nullptr); },
};

/// The names that are only logged.
RemoteCall get_rec_dev_name()
{
    RemoteCall row = control(
        "svc_pvr_get_rec_dev_name", [] { return svc_pvr_get_rec_dev_name(-9); }, "[device_key:-9]",
        request("get_rec_dev_name", "i", "(-9,)"));
    row.outcomes.clear();
    for (const std::string &name : {std::string("Stick %n ä"), std::string(), long_name, std::string(100'000, 'n')})
        row.outcomes.push_back({"('" + name + "', -3)", 0, "", {info(" get name: " + name)}});
    return row;
}

RemoteCall get_default_rec_dev_name()
{
    RemoteCall row = text("svc_pvr_get_default_rec_dev_name", svc_pvr_get_default_rec_dev_name, "",
                          request("get_rec_device_name", "", "()"), 255, Beside::result);
    for (Outcome &outcome : row.outcomes)
        if (outcome.outputs.empty())
            outcome.lines = {info(" dev_name is null")};
    return row;
}

// clang-format off
const std::vector<RemoteCall> rows{
    number("svc_pvr_get_dev_total", svc_pvr_get_dev_total, "", request("get_dev_total", "", "()"), Beside::result,
           {info(", dev_total[%]")}),
    number("svc_pvr_get_rec_dev_total", svc_pvr_get_rec_dev_total, "", request("get_record_dev_total", "", "()"),
           Beside::result, {info(", rec_dev_total[%]")}),
    text("svc_pvr_get_rec_product_name", [](char *name) { return svc_pvr_get_rec_product_name("/m/%s", name); },
         "[mnt_path:/m/%s]", request("get_product_name", "s", "('/m/%s',)"), 255),
    control("svc_pvr_set_default_rec_device", [] { return svc_pvr_set_default_rec_device(9); },
            "[dev_handle:9]", request("set_default_rec_device", "i", "(9,)")),
    number("svc_pvr_get_next_def_rec_dev", svc_pvr_get_next_def_rec_dev, "", request("get_next_def_rec_dev", "", "()"),
           Beside::result),
    number("svc_pvr_get_potential_rec_dev", svc_pvr_get_potential_rec_dev, "",
           request("get_potential_rec_dev", "", "()"), Beside::result),
    number("svc_pvr_is_exist_rec_device", svc_pvr_is_exist_rec_device, "", request("is_exist_rec_device", "", "()")),
    number("svc_pvr_is_available", svc_pvr_is_available, "", request("is_available", "", "()")),
    control("svc_pvr_check_device", [] { return svc_pvr_check_device(9); },
            "[dev_handle:9]", request("check_device", "i", "(9,)")),
    control("svc_pvr_format", [] { return svc_pvr_format(9, -1); },
            "[dev_handle:9][dev_type:-1]", request("format", "ii", "(9, -1)"), Rule::zero,
            {info(" format done g_result:%")}),
    control("svc_pvr_start_performance_test", [] { return svc_pvr_start_performance_test(9); },
            "[dev_handle:9]", request("start_performance_test", "i", "(9,)"), Rule::zero),
    number("svc_pvr_get_performance_test_result", [](int *out) { return svc_pvr_get_performance_test_result(9, out); },
           "[dev_handle:9]", request("get_performance_test_result", "i", "(9,)")),
    // the service is asked about device 0, whatever the caller asks
    control("svc_pvr_is_need_performance_test", [] { return svc_pvr_is_need_performance_test(5); },
            "[dev_handle:5]", request("is_need_performance_test", "i", "(0,)"), Rule::one_is_success),
};
// clang-format on

} // namespace

std::vector<RemoteCall> device_calls()
{
    return joined({rows,
                   {get_device_info, get_default_rec_device, get_rec_dev_capacity, get_rec_dev_name(),
                    get_default_rec_dev_name()}});
}

#include "bus/remote_call.h"
#include "pvr_service_api.h"

#include <cstring>
#include <ostream>

using namespace support;
using Result = RemoteCall::Result;

namespace {

std::ostream &operator<<(std::ostream &out, const device_info &info)
{
    return out << info.device_type << "|" << info.file_format << "|" << info.device_name << "|" << info.product_name
               << "|" << info.mnt_path << "|" << info.total_size << "|" << info.avail_size;
}

std::string device_line(const std::string &name)
{
    return plain_info("device_type[1] file_format[-2] device_name[" + name +
                      "] product_name[] mnt_path[/m %n] total_size[4294967296] avail_size[-9223372036854775808]");
}

Outcome device_outcome(const std::string &name, const std::string &stored, int result)
{
    return {"((1, -2, '" + name + "', '', '/m %n', int64 4294967296, int64 -9223372036854775808), " +
                std::to_string(result) + ")",
            0,
            "1|-2|" + stored + "||/m %n|4294967296|-9223372036854775808",
            {device_line(name)}};
}

const std::string long_name(300, 'n');

const RemoteCall get_device_info{
    .name = "svc_pvr_get_device_info",
    .call =
        [](std::ostream &outputs) {
            device_info info{};
            info.device_type = -77;
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
    .call_with_null_outputs = {}, // null is refused: see below
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
                 {"(-1, 0)", 0, "-1", {info(" final [dev_handle:-1]")}}},
    .call_with_null_outputs = [] { return svc_pvr_get_default_rec_device(nullptr); },
};

const RemoteCall remove_inf{
    .name = "svc_pvr_remove_inf",
    .call = [](std::ostream &) { return svc_pvr_remove_inf("/m/a.inf", 2); },
    .untouched = "",
    .entry = entry("[file_path:/m/a.inf][mode:2]"),
    .is_checked = true,
    .request = request("remove_inf", "si", "('/m/a.inf', 2)"),
    .result = Result::is_published,
    .outcomes = {{"(1,)", 0, "", {info(" The inf file removed success!")}},
                 {"(-1,)", 0, "", {info(" The inf file removed success!")}}},
    .call_with_null_outputs = {},
};

} // namespace

INSTANTIATE_TEST_SUITE_P(Devices, RemoteCalls, testing::Values(get_device_info, get_default_rec_device, remove_inf),
                         name_of);

TEST(GetDeviceInfo, RefusesANullRecordOnceTheServiceHasAnswered)
{
    ScriptedService service;
    service.script("get_device_info", answers(get_device_info.outcomes.front().answer));
    ASSERT_EQ(svc_pvr_service_init(), PS_SESSION_READY);
    logged();
    EXPECT_EQ(svc_pvr_get_device_info(9, nullptr), PS_CALL_METHOD_FAILED);
    EXPECT_EQ(service.requests(), std::vector{get_device_info.request});
    EXPECT_EQ(logged_lines().back(), plain_entry("[PS_CALL_METHOD_FAILED][info == NULL]"));
}

TEST(RemoveInf, RefusesAPathThatIsNoRecording)
{
    ScriptedService service;
    ASSERT_EQ(svc_pvr_service_init(), PS_SESSION_READY);
    for (const char *path : {static_cast<const char *>(nullptr), "", "inf", "/m/a.INF", "/m/a.bak", "/m/inf"}) {
        logged();
        EXPECT_EQ(svc_pvr_remove_inf(path, 0), PS_CALL_METHOD_FAILED);
        const std::string shown = path != nullptr ? path : "(null)";
        EXPECT_EQ(logged_lines().back(), failure(" file_path[" + shown + "] is invalid pvr inf file"));
    }
    EXPECT_EQ(service.requests(), std::vector<Request>());
}

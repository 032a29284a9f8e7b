/* A C99 program against the shared library: every call here is answered without a bus. */
#include "pvr_service_api.h"

#include <stddef.h>
#include <stdint.h>
#include <stdio.h>

static int failures;

static void check(int holds, const char *what, int line)
{
    if (!holds) {
        fprintf(stderr, "from_c.c:%d: %s\n", line, what);
        ++failures;
    }
}

#define CHECK(condition) check((condition), #condition, __LINE__)

static void on_signal(pvr_service_signal signal, void *user_data)
{
    (void)signal;
    (void)user_data;
}

static void on_result(pvr_service_result result, void *user_data)
{
    (void)result;
    (void)user_data;
}

static void the_records_have_the_size_that_the_library_says(void)
{
    CHECK(sizeof(device_info) == 789);
    CHECK(sizeof(device_info) == get_size_of_device_info());
    CHECK(sizeof(channel_info) == 526);
    CHECK(sizeof(pvr_service_signal) == 291);
    CHECK(sizeof(pvr_service_signal) == (size_t)get_size_of_pvr_service_signal());
    CHECK(sizeof(pvr_service_result) == 287);
    CHECK(sizeof(pvr_service_result) == (size_t)get_size_of_pvr_service_result());
    CHECK(offsetof(device_info, avail_size) == 781);
    CHECK(offsetof(channel_info, program_title) == 271);
    CHECK(offsetof(pvr_service_signal, current_state) == 283);
    CHECK(offsetof(pvr_service_result, service_id) == 275);
}

static void the_result_codes_are_numbers_that_programs_have_built_in(void)
{
    CHECK(PS_SUCCESS == 0 && PS_SESSION_READY == 1);
    CHECK(PS_CALL_METHOD_FAILED == -2 && PS_NO_PROXY == -3 && PS_FACTORY_ERROR == -4);
    CHECK(PVR_CA_SUCCESS == 0 && PVR_CA_BAD_ARGUMENT == 4 && PVR_CA_NO_ANSWER == 7);
    CHECK(PVR_DTV_ATSC == 0 && PVR_DTV_DVB == 1 && PVR_DTV_DVB_ISDB == 2);
}

static void retired_calls_take_null_and_answer_success(void)
{
    CHECK(svc_pvr_is_recording_available(NULL) == PS_SUCCESS);
    CHECK(svc_pvr_get_recording_time(NULL) == PS_SUCCESS);
    CHECK(svc_pvr_get_recording_channel(NULL) == PS_SUCCESS);
    CHECK(svc_pvr_is_pvr_operating(NULL) == PS_SUCCESS);
    CHECK(svc_pvr_is_recording_pause(NULL) == PS_SUCCESS);
    CHECK(svc_pvr_get_rec_default_dev_index(NULL) == PS_SUCCESS);
    CHECK(svc_pvr_get_rec_device_key_by_index(NULL) == PS_SUCCESS);
    CHECK(svc_pvr_get_recording_file_info(NULL) == PS_SUCCESS);
    CHECK(svc_pvr_remove_recording_info(NULL) == PS_SUCCESS);
}

static void retired_calls_write_nothing(void)
{
    int64_t untouched = 0x0123456789abcdef;
    CHECK(svc_pvr_is_recording_available(&untouched) == PS_SUCCESS);
    CHECK(svc_pvr_get_recording_time(&untouched) == PS_SUCCESS);
    CHECK(svc_pvr_get_rec_default_dev_index(&untouched) == PS_SUCCESS);
    CHECK(untouched == 0x0123456789abcdef);
}

static void what_the_library_knows_by_itself(void)
{
    int blocked = 5;
    CHECK(svc_pvr_set_highlight_player_flag(1) == PS_CALL_METHOD_FAILED); /* no call has got an answer yet */
    CHECK(GetDtvType() == PVR_DTV_DVB);
    CHECK(GetTVStandard() == PVR_DTV_DVB);
    CHECK(IsSupportCI() == 0);
    CHECK(IsBlockedByParentalControl("/recordings/one.srf", NULL) == PVR_CA_BAD_ARGUMENT);
    CHECK(IsBlockedByParentalControl(NULL, &blocked) == PVR_CA_BAD_ARGUMENT && blocked == 1);
    blocked = 5;
    CHECK(IsBlockedByParentalControl("", &blocked) == PVR_CA_BAD_ARGUMENT && blocked == 1);
    blocked = 5;
    CHECK(IsBlockedByParentalControl("/recordings/one.srf", &blocked) == PVR_CA_NO_ANSWER && blocked == 1);
}

static void calls_that_need_the_bus_fail_and_write_nothing_without_one(void)
{
    int number = 5;
    int handles[2] = {6, 7};
    char text[255] = "untouched";
    device_info device = {.device_type = 8};
    channel_info channel = {.major = 9};

    CHECK(svc_pvr_service_destroy() == PS_SUCCESS);
    CHECK(svc_pvr_is_support_pvr(&number) == PS_CALL_METHOD_FAILED && number == 5);
    CHECK(svc_pvr_register_signal_cb(on_signal, NULL) == PS_SUCCESS);
    CHECK(svc_pvr_register_result_pvr_cb(on_result, NULL) == PS_SUCCESS);
    CHECK(svc_pvr_remove_inf("/recordings/one.txt", 0) == PS_CALL_METHOD_FAILED);
    CHECK(svc_pvr_service_init() == PS_NO_PROXY);
    CHECK(svc_pvr_play_start(1, "/recordings/one.srf", 0) == PS_CALL_METHOD_FAILED);
    CHECK(svc_pvr_stop_playing_sync("from_c") == PS_CALL_METHOD_FAILED);
    CHECK(svc_pvr_stop_pvr_sync(UINT64_C(0x100000001), "from_c") == PS_CALL_METHOD_FAILED);
    CHECK(svc_pvr_set_share_data(1, INT64_C(-1)) == PS_CALL_METHOD_FAILED);
    CHECK(svc_pvr_get_handle_for_record(handles, 2, &number) == PS_CALL_METHOD_FAILED && number == 5);
    CHECK(handles[0] == 6 && handles[1] == 7);
    CHECK(svc_pvr_get_default_rec_device(&number) == PS_CALL_METHOD_FAILED && number == 5);
    CHECK(svc_pvr_get_playback_uri_by_handle(1, text) == PS_CALL_METHOD_FAILED && text[0] == 'u');
    CHECK(svc_pvr_get_device_info(1, &device) == PS_CALL_METHOD_FAILED && device.device_type == 8);
    CHECK(svc_pvr_get_channel_info(1, &channel) == PS_CALL_METHOD_FAILED && channel.major == 9);
    CHECK(svc_pvr_set_highlight_player_flag(0) == PS_CALL_METHOD_FAILED);
}

int main(void)
{
    the_records_have_the_size_that_the_library_says();
    the_result_codes_are_numbers_that_programs_have_built_in();
    retired_calls_take_null_and_answer_success();
    retired_calls_write_nothing();
    what_the_library_knows_by_itself();
    calls_that_need_the_bus_fail_and_write_nothing_without_one();
    printf("%d checks failed\n", failures);
    return failures == 0 ? 0 : 1;
}

// Calls that older applications still make and that the library answers by itself.
#include "client/call.h"
#include "events/browser_queue.h"

#include <cinttypes>

using namespace pvr;

namespace {

/// Handed out in place of an application's own; only logs what it is called with.
void _autohighlight_cb(int event, int iIndex, long lStartTime, long lEndTime, unsigned char *pThumbnail,
                       int nThumbnailSize) noexcept
{
    ENTRY("[event:%d][iIndex:%d][lStartTime:%ld][lEndTime:%ld][pThumbnail:%p][nThumbnailSize:%d]\n", event, iIndex,
          lStartTime, lEndTime, static_cast<void *>(pThumbnail), nThumbnailSize);
}

} // namespace

// ---- highlight player, sports mode and bookmarks are gone

int svc_pvr_is_highlight_player_available() noexcept
{
    ENTRY("\n");
    return PS_SUCCESS;
}

int svc_pvr_is_auto_highlight() noexcept
{
    ENTRY("\n");
    return PS_SUCCESS;
}

int svc_pvr_is_notify_game() noexcept
{
    ENTRY("\n");
    return PS_SUCCESS;
}

int svc_pvr_get_sports_type() noexcept
{
    ENTRY("\n");
    return PS_SUCCESS;
}

int svc_pvr_is_sports_mode() noexcept
{
    ENTRY("\n");
    return PS_SUCCESS;
}

int svc_pvr_send_thumbnail_request() noexcept
{
    ENTRY("\n");
    return PS_SUCCESS;
}

int svc_pvr_get_bookmark_list() noexcept
{
    ENTRY("\n");
    return PS_SUCCESS;
}

int svc_pvr_get_highlight_player_flag(int *flag) noexcept
{
    write_out(flag, 0); // deliberately written although the call fails, and deliberately without a line
    return PS_CALL_METHOD_FAILED;
}

int svc_pvr_get_last_bookmark(const char *uri) noexcept
{
    ENTRY("[uri:%s]\n", uri);
    FAILURE("[PS_CALL_METHOD_FAILED]\n"); // deliberately logged by a call that succeeds
    return PS_SUCCESS;
}

int svc_pvr_get_autohighlight_cb(autohighlight_cb *cb) noexcept
{
    ENTRY("\n");
    if (cb == nullptr) {
        FAILURE(" * callback:NULL\n");
        return PS_CALL_METHOD_FAILED;
    }
    *cb = _autohighlight_cb;
    return PS_SUCCESS;
}

// ---- these answer from the result of whatever call came last, deliberately

int svc_pvr_set_highlight_player_flag(int flag) noexcept
{
    ENTRY("[flag:%d]\n", flag);
    return judged(Success::is_one, g_result);
}

int svc_pvr_enter_highlight_player() noexcept
{
    ENTRY("\n");
    return judged(Success::is_one, g_result);
}

int svc_pvr_notify_enter_and_exist_highlight_player(int enter) noexcept
{
    ENTRY("[enter:%d]\n", enter);
    return judged(Success::is_one, g_result);
}

int svc_pvr_get_mls_service_id_by_screen_id(int screen_id) noexcept
{
    ENTRY("[screen_id:%d]\n", screen_id);
    return judged(Success::is_zero, g_result);
}

int svc_pvr_set_bookmark(const char *uri) noexcept
{
    ENTRY("[uri:%s]\n", uri);
    return judged(Success::is_zero, g_result);
}

// ---- these say no more than whether there is a session

int svc_pvr_can_show_record_stop_msg(std::uint64_t service_id) noexcept
{
    Call call(ENTRY("[service_id:%" PRIu64 "]\n", service_id));
    return call.session_rule();
}

int svc_pvr_can_show_record_stop_msg_type(std::uint64_t service_id) noexcept
{
    Call call(ENTRY("[service_id:%" PRIu64 "]\n", service_id));
    return call.session_rule();
}

int svc_pvr_is_show_record_banner_by_info_key(std::uint64_t service_id) noexcept
{
    Call call(ENTRY("[service_id:%" PRIu64 "]\n", service_id));
    return call.session_rule();
}

// ---- the media browser's thumbnails

int svr_pvr_clear_thumbnail_callback() noexcept
{
    Call call(ENTRY("\n"));
    if (call)
        cancel_browser_queue();
    return call.code();
}

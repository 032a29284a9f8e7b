/**
 * @file pvr_legacy.h
 * Calls that older applications make. None of them asks the service for anything.
 * The conventions at the head of pvr_service_api.h hold here and are not repeated.
 */
#ifndef PVR_LEGACY_H
#define PVR_LEGACY_H

#include "pvr_base.h"
#include "pvr_events.h"

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** @name Answered by the library
 *  Calls that older applications make. The service is not asked. */
/** @{ */

/** There is no highlight player. @return 0. */
PVR_API int svc_pvr_is_highlight_player_available(void) PVR_NOEXCEPT;
/** There are no automatic highlights. @return 0. */
PVR_API int svc_pvr_is_auto_highlight(void) PVR_NOEXCEPT;
/** No game is announced. @return 0. */
PVR_API int svc_pvr_is_notify_game(void) PVR_NOEXCEPT;
/** There is no sports mode. @return 0. */
PVR_API int svc_pvr_get_sports_type(void) PVR_NOEXCEPT;
/** There is no sports mode. @return 0. */
PVR_API int svc_pvr_is_sports_mode(void) PVR_NOEXCEPT;
/** Sends nothing. @return PS_SUCCESS. */
PVR_API int svc_pvr_send_thumbnail_request(void) PVR_NOEXCEPT;
/** There are no bookmarks. @return PS_SUCCESS. */
PVR_API int svc_pvr_get_bookmark_list(void) PVR_NOEXCEPT;

/**
 * There is no highlight player.
 *
 * @param flag  receives 0, although the call fails
 * @return PS_CALL_METHOD_FAILED.
 */
PVR_API int svc_pvr_get_highlight_player_flag(int *flag) PVR_NOEXCEPT;

/**
 * Does nothing with its argument.
 *
 * @param flag  only logged
 * @return PS_SUCCESS when the last call of this process that asked the service for a result got 1, else
 *         PS_CALL_METHOD_FAILED.
 */
PVR_API int svc_pvr_set_highlight_player_flag(int flag) PVR_NOEXCEPT;

/**
 * Enters nothing.
 *
 * @return PS_SUCCESS when the last call of this process that asked the service for a result got 1, else
 *         PS_CALL_METHOD_FAILED.
 */
PVR_API int svc_pvr_enter_highlight_player(void) PVR_NOEXCEPT;

/**
 * Tells nobody.
 *
 * @param enter  only logged
 * @return PS_SUCCESS when the last call of this process that asked the service for a result got 1, else
 *         PS_CALL_METHOD_FAILED.
 */
PVR_API int svc_pvr_notify_enter_and_exist_highlight_player(int enter) PVR_NOEXCEPT;

/**
 * Finds no channel.
 *
 * @param screen_id  only logged
 * @return PS_SUCCESS when the last call of this process that asked the service for a result got 0, else
 *         PS_CALL_METHOD_FAILED; without such a call too.
 */
PVR_API int svc_pvr_get_mls_service_id_by_screen_id(int screen_id) PVR_NOEXCEPT;

/**
 * Sets no bookmark.
 *
 * @param uri  only logged
 * @return PS_SUCCESS when the last call of this process that asked the service for a result got 0, else
 *         PS_CALL_METHOD_FAILED; without such a call too.
 */
PVR_API int svc_pvr_set_bookmark(const char *uri) PVR_NOEXCEPT;

/**
 * Gives no bookmark.
 *
 * @param uri  only logged
 * @return PS_SUCCESS.
 */
PVR_API int svc_pvr_get_last_bookmark(const char *uri) PVR_NOEXCEPT;

/**
 * Hands out the library's own callback for highlights, which only logs what it is called with.
 *
 * @param cb  receives the callback; null is refused
 * @return PS_SUCCESS; PS_CALL_METHOD_FAILED when cb is null.
 */
PVR_API int svc_pvr_get_autohighlight_cb(autohighlight_cb *cb) PVR_NOEXCEPT;

/**
 * Says only whether there is a session; makes one if there is none.
 *
 * @param service_id  only logged
 * @return PS_SUCCESS when there is a session, else PS_CALL_METHOD_FAILED.
 */
PVR_API int svc_pvr_can_show_record_stop_msg(uint64_t service_id) PVR_NOEXCEPT;

/**
 * As svc_pvr_can_show_record_stop_msg.
 *
 * @param service_id  only logged
 * @return PS_SUCCESS when there is a session, else PS_CALL_METHOD_FAILED.
 */
PVR_API int svc_pvr_can_show_record_stop_msg_type(uint64_t service_id) PVR_NOEXCEPT;

/**
 * As svc_pvr_can_show_record_stop_msg.
 *
 * @param service_id  only logged
 * @return PS_SUCCESS when there is a session, else PS_CALL_METHOD_FAILED.
 */
PVR_API int svc_pvr_is_show_record_banner_by_info_key(uint64_t service_id) PVR_NOEXCEPT;

/**
 * Cancels the media browser's thumbnail callbacks for the life of the process. The name is spelled so.
 *
 * @return PS_SUCCESS; PS_CALL_METHOD_FAILED, with nothing cancelled, when the product does not record.
 */
PVR_API int svr_pvr_clear_thumbnail_callback(void) PVR_NOEXCEPT;

/** @} */

/** @name Retired
 *  Kept so that old applications load. Each logs that it is gone, writes nothing and returns PS_SUCCESS. */
/** @{ */

/** Does nothing. @param out ignored @return PS_SUCCESS */
PVR_API PVR_RETIRED int svc_pvr_is_recording_available(void *out) PVR_NOEXCEPT;
/** Does nothing. @param out ignored @return PS_SUCCESS */
PVR_API PVR_RETIRED int svc_pvr_get_recording_time(void *out) PVR_NOEXCEPT;
/** Does nothing. @param out ignored @return PS_SUCCESS */
PVR_API PVR_RETIRED int svc_pvr_get_recording_channel(void *out) PVR_NOEXCEPT;
/** Does nothing. @param out ignored @return PS_SUCCESS */
PVR_API PVR_RETIRED int svc_pvr_is_pvr_operating(void *out) PVR_NOEXCEPT;
/** Does nothing. @param out ignored @return PS_SUCCESS */
PVR_API PVR_RETIRED int svc_pvr_is_recording_pause(void *out) PVR_NOEXCEPT;
/** Does nothing. @param out ignored @return PS_SUCCESS */
PVR_API PVR_RETIRED int svc_pvr_get_rec_default_dev_index(void *out) PVR_NOEXCEPT;
/** Does nothing. @param out ignored @return PS_SUCCESS */
PVR_API PVR_RETIRED int svc_pvr_get_rec_device_key_by_index(void *out) PVR_NOEXCEPT;
/** Does nothing. @param out ignored @return PS_SUCCESS */
PVR_API PVR_RETIRED int svc_pvr_get_recording_file_info(void *out) PVR_NOEXCEPT;
/** Does nothing. @param out ignored @return PS_SUCCESS */
PVR_API PVR_RETIRED int svc_pvr_remove_recording_info(void *out) PVR_NOEXCEPT;

/** @} */

#ifdef __cplusplus
}
#endif

#endif

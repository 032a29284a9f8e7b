/**
 * @file pvr_storage.h
 * Storage devices and the files on them.
 * The conventions at the head of pvr_service_api.h hold here and are not repeated.
 */
#ifndef PVR_STORAGE_H
#define PVR_STORAGE_H

#include "pvr_base.h"
#include "pvr_records.h"

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** @name Storage devices */
/** @{ */

/** @return sizeof(device_info) as the library sees it, 789. */
PVR_API unsigned get_size_of_device_info(void) PVR_NOEXCEPT;

/**
 * Describes a storage device.
 *
 * @param dev_handle  a device handle issued by the service
 * @param info        receives the whole record; null is refused once the service has answered
 * @return PS_SUCCESS; PS_CALL_METHOD_FAILED, with info untouched, when it is null.
 */
PVR_API int svc_pvr_get_device_info(int dev_handle, device_info *info) PVR_NOEXCEPT;

/**
 * Lists the storage devices.
 *
 * @param list         receives at most length device handles, in the service's order; null to ask for the count
 * @param length       how many handles the list has room for; sent to the service, and nothing is stored when
 *                     it is not above 0
 * @param num_of_list  receives the service's count, which may exceed length
 * @return PS_SUCCESS once the service has answered.
 */
PVR_API int svc_pvr_get_device_list(int *list, int length, int *num_of_list) PVR_NOEXCEPT;

/**
 * Lists the storage devices that can be recorded to.
 *
 * @param list         receives at most length device handles, in the service's order; null to ask for the count
 * @param length       how many handles the list has room for; sent to the service, and nothing is stored when
 *                     it is not above 0
 * @param num_of_list  receives the service's count, which may exceed length
 * @return PS_SUCCESS once the service has answered.
 */
PVR_API int svc_pvr_get_rec_device_list(int *list, int length, int *num_of_list) PVR_NOEXCEPT;

/**
 * Counts the storage devices.
 *
 * @param dev_total  receives the count
 * @return PS_SUCCESS once the service has answered.
 */
PVR_API int svc_pvr_get_dev_total(int *dev_total) PVR_NOEXCEPT;

/**
 * Counts the storage devices that can be recorded to.
 *
 * @param rec_dev_total  receives the count
 * @return PS_SUCCESS once the service has answered.
 */
PVR_API int svc_pvr_get_rec_dev_total(int *rec_dev_total) PVR_NOEXCEPT;

/**
 * Fetches a device's name into the log and nowhere else. Use svc_pvr_get_device_info.
 *
 * @param device_key  a device handle issued by the service
 * @return PS_SUCCESS once the service has answered.
 */
PVR_API int svc_pvr_get_rec_dev_name(int device_key) PVR_NOEXCEPT;

/**
 * Names the device that recordings go to.
 *
 * @param dev_name  receives the name; 255 bytes, at most 254 of them text
 * @return PS_SUCCESS once the service has answered.
 */
PVR_API int svc_pvr_get_default_rec_dev_name(char *dev_name) PVR_NOEXCEPT;

/**
 * Names the product of the device that is mounted somewhere.
 *
 * @param mnt_path      where it is mounted; null is refused
 * @param product_name  receives the name; 255 bytes, at most 254 of them text
 * @return PS_SUCCESS once the service has answered; PS_CALL_METHOD_FAILED, without asking it, when mnt_path is
 *         null.
 */
PVR_API int svc_pvr_get_rec_product_name(const char *mnt_path, char *product_name) PVR_NOEXCEPT;

/**
 * Tells which storage device recordings go to.
 *
 * @param dev_handle  receives the device's handle, as the service gives it when there is no such device
 * @return PS_SUCCESS once the service has answered.
 */
PVR_API int svc_pvr_get_default_rec_device(int *dev_handle) PVR_NOEXCEPT;

/**
 * Chooses the device that recordings go to.
 *
 * @param dev_handle  a device handle issued by the service
 * @return PS_SUCCESS once the service has answered, whatever it answered.
 */
PVR_API int svc_pvr_set_default_rec_device(int dev_handle) PVR_NOEXCEPT;

/**
 * Tells which device would become the default one after the present one.
 *
 * @param dev_handle  receives the device's handle, as the service gives it when there is no such device
 * @return PS_SUCCESS once the service has answered.
 */
PVR_API int svc_pvr_get_next_def_rec_dev(int *dev_handle) PVR_NOEXCEPT;

/**
 * Tells which device could be recorded to.
 *
 * @param dev_handle  receives the device's handle, as the service gives it when there is no such device
 * @return PS_SUCCESS once the service has answered.
 */
PVR_API int svc_pvr_get_potential_rec_dev(int *dev_handle) PVR_NOEXCEPT;

/**
 * Tells how much the device that recordings go to holds.
 *
 * @param dev_handle  only logged
 * @param capacity    receives the whole record
 * @return PS_SUCCESS once the service has answered.
 */
PVR_API int svc_pvr_get_rec_dev_capacity(int dev_handle, rec_dev_capacity *capacity) PVR_NOEXCEPT;

/**
 * Tells whether there is a device that can be recorded to.
 *
 * @param exists  receives 1 when there is one, else 0, as the service gives it
 * @return PS_SUCCESS once the service has answered.
 */
PVR_API int svc_pvr_is_exist_rec_device(int *exists) PVR_NOEXCEPT;

/**
 * Tells whether recording is possible.
 *
 * @param available  receives 1 when it is, else 0, as the service gives it
 * @return PS_SUCCESS once the service has answered.
 */
PVR_API int svc_pvr_is_available(int *available) PVR_NOEXCEPT;

/**
 * Says nothing: the service is not asked, whatever the product is. Use svc_pvr_is_exist_rec_device.
 *
 * @return PS_SUCCESS.
 */
PVR_API int svc_pvr_is_available_device(void) PVR_NOEXCEPT;

/**
 * Has the service check a device.
 *
 * @param dev_handle  a device handle issued by the service
 * @return PS_SUCCESS once the service has answered, whatever it answered.
 */
PVR_API int svc_pvr_check_device(int dev_handle) PVR_NOEXCEPT;

/**
 * Formats a device: everything on it is lost. How it went arrives as a result (PS_FORMAT).
 *
 * @param dev_handle  a device handle issued by the service
 * @param dev_type    file system or kind of device, a code of the service
 * @return PS_SUCCESS when the service answered 0; PS_CALL_METHOD_FAILED when it answered anything else, which
 *         says that it does not even begin.
 */
PVR_API int svc_pvr_format(int dev_handle, int dev_type) PVR_NOEXCEPT;

/**
 * Begins to measure how fast a device is. How it went arrives as a result (PS_PERFORMANCE_TEST).
 *
 * @param dev_handle  a device handle issued by the service
 * @return PS_SUCCESS when the service answered 0; PS_CALL_METHOD_FAILED when it answered anything else.
 */
PVR_API int svc_pvr_start_performance_test(int dev_handle) PVR_NOEXCEPT;

/**
 * Tells how the last measurement of a device went.
 *
 * @param dev_handle  a device handle issued by the service
 * @param result      receives the service's answer; the development service gives 1 for fast enough, 0 for too
 *                    slow and -2 for not measured
 * @return PS_SUCCESS once the service has answered.
 */
PVR_API int svc_pvr_get_performance_test_result(int dev_handle, int *result) PVR_NOEXCEPT;

/**
 * Tells whether the first device has to be measured before it is recorded to, whichever device is asked about.
 *
 * @param dev_handle  only logged: the service is asked about device 0
 * @return PS_SUCCESS when the service answered 1, which is yes; PS_CALL_METHOD_FAILED when it answered anything
 *         else.
 */
PVR_API int svc_pvr_is_need_performance_test(int dev_handle) PVR_NOEXCEPT;

/** @} */

/** @name Files on the storage devices */
/** @{ */

/**
 * Has the service make a folder.
 *
 * @param path  the folder
 * @param mode  a code of the service; the development service takes the permissions of mkdir(2)
 * @return PS_CALL_METHOD_FAILED when the service answered a negative number, else PS_SUCCESS.
 */
PVR_API int svc_pvr_mkdir(const char *path, int mode) PVR_NOEXCEPT;

/**
 * Deletes a recording and the files beside it.
 *
 * @param file_path  the recording
 * @param ret        receives the service's answer; 0 when it is deleted, in the development service
 * @return PS_SUCCESS once the service has answered.
 */
PVR_API int svc_pvr_delete_record_file(const char *file_path, int *ret) PVR_NOEXCEPT;

/**
 * Deletes a channel's segment recording.
 *
 * @param service_id  the channel
 * @return PS_SUCCESS once the service has answered, whatever it answered.
 */
PVR_API int svc_pvr_delete_segment_file(uint64_t service_id) PVR_NOEXCEPT;

/**
 * Removes a recording's info file.
 *
 * @param file_path  the recording or its info file; must end in .srf, .inf or .tmp, in lower case
 * @param mode       a code of the service
 * @return PS_SUCCESS once the service has answered; PS_CALL_METHOD_FAILED, without asking it, for any
 *         other path and for null.
 */
PVR_API int svc_pvr_remove_inf(const char *file_path, int mode) PVR_NOEXCEPT;

/**
 * Tells whether a recording is being written.
 *
 * @param file_path  the recording
 * @param result     receives 1 when it is, else 0, as the service gives it
 * @return PS_SUCCESS once the service has answered.
 */
PVR_API int svc_pvr_is_recording_file(const char *file_path, int *result) PVR_NOEXCEPT;

/**
 * Counts the recordings that the service knows of.
 *
 * @param num  receives the count
 * @return PS_SUCCESS once the service has answered.
 */
PVR_API int svc_pvr_get_system_record_num(int *num) PVR_NOEXCEPT;

/**
 * Tells whether a recording is locked for its parental rating.
 *
 * @param file_path  the recording
 * @param result     receives 1 when it is, else 0, as the service gives it
 * @return PS_SUCCESS once the service has answered.
 */
PVR_API int svc_pvr_check_parent_lock(const char *file_path, int *result) PVR_NOEXCEPT;

/**
 * Has the service make a thumbnail of a recording. How it went arrives as PS_SEND_THUMBNAIL_RESULT.
 *
 * @param uri       the recording
 * @param userdata  handed through
 * @param width     in pixels
 * @param height    in pixels
 * @return PS_SUCCESS once the service has answered, whatever it answered.
 */
PVR_API int svc_pvr_make_thumbnail_file(const char *uri, int userdata, int width, int height) PVR_NOEXCEPT;

/**
 * Tells where a recording's info file is.
 *
 * @param handle  a recording handle issued by the service
 * @param uri     receives the path; 255 bytes, at most 254 of them text
 * @return PS_SUCCESS once the service has answered.
 */
PVR_API int svc_pvr_get_inf_uri(int handle, char *uri) PVR_NOEXCEPT;

/**
 * Tells where a recording is written.
 *
 * @param handle  a recording handle issued by the service
 * @param uri     receives the path; 255 bytes, at most 254 of them text
 * @return PS_SUCCESS once the service has answered.
 */
PVR_API int svc_pvr_get_recording_uri(int handle, char *uri) PVR_NOEXCEPT;

/**
 * Tells where a channel's recording is written.
 *
 * @param service_id  the channel
 * @param uri         receives the path; 255 bytes, at most 254 of them text
 * @return PS_SUCCESS once the service has answered.
 */
PVR_API int svc_pvr_get_recording_uri_by_service_id(uint64_t service_id, char *uri) PVR_NOEXCEPT;

/**
 * Tells where the current recording is written.
 *
 * @param uri  receives the path; 256 bytes, one more than elsewhere, at most 255 of them text
 * @return PS_SUCCESS once the service has answered.
 */
PVR_API int svc_pvr_get_current_recording_uri(char *uri) PVR_NOEXCEPT;

/** @} */

#ifdef __cplusplus
}
#endif

#endif

// The methods for the files of recordings.
#pragma once

#include "method_room.h"
#include "outcome.h"
#include "pvr_gdbus_generated.h"
#include "stored_recordings.h"

#include <tuple>

namespace simulator {

class RecordingFileMethods : public MethodRoom {
public:
    RecordingFileMethods(OrgVexanTvPvr *object, Television &set);

private:
    Outcome delete_record_file(const char *uri);
    Outcome delete_segment_record(guint64 service_id);
    Outcome remove_inf(const char *path, int mode);
    std::tuple<int> is_recording_file(const char *path);
    std::tuple<int> check_parent_lock(const char *path);
    std::tuple<int> get_system_record_num();
    Outcome make_thumbnail_file(const char *path, int user_data, int height, int width);
    Outcome set_pvr_file_info(const char *path, const char *info, int length);
    Outcome set_fp_rec_time(const char *uri, int rec_time);

    /// Does something to a recording that is on a device and neither written nor played.
    template <typename Action>
    Outcome on_idle_recording(const std::string &uri, Action action);

    /// Takes note of what was said about a recording that is on a device.
    Outcome on_recording(const std::string &uri) const;

    StoredRecordings stored_;
};

} // namespace simulator

// Every golden and every broken file, read by the library, beside what its dump says. The dumps are made by a
// program that knows nothing of the library.
#include "files/info_reader.h"
#include "files/record_layout.h"
#include "pvr_service_api.h"
#include "support/files.h"
#include "support/little_endian.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <glib.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

using namespace support;
using nlohmann::json;

namespace {

const std::string folders[] = {PVR_GOLDEN_FILES, PVR_BROKEN_FILES};

/// A side file and what its dump says; a reader's result where the list of the broken says it.
struct SideFile {
    std::string path;
    json dump;
    json broken;

    int result() const { return broken.value("result", 0); }
    /// As applications name it.
    std::string recording() const { return path.substr(0, path.size() - 3) + "srf"; }
};

/// A field's type as dumps call it.
std::string type_of(const pvr::RecordField &field)
{
    switch (field.kind) {
    case pvr::FieldKind::number:
        return "u" + std::to_string(8 * field.width);
    case pvr::FieldKind::signed_number:
        return "i" + std::to_string(8 * field.width);
    case pvr::FieldKind::numbers:
        return std::to_string(field.width / 4) + " × u32";
    case pvr::FieldKind::text:
        return "text";
    case pvr::FieldKind::bytes:
        return "bytes";
    }
    return "";
}

json parsed(const std::string &path) { return json::parse(content_of(path)); }

std::vector<SideFile> side_files(const std::string &extension)
{
    std::vector<SideFile> files;
    for (const std::string &folder : folders) {
        json broken = json::object();
        if (folder == PVR_BROKEN_FILES) {
            const json list = parsed(folder + "/broken.json");
            for (const json &file : list["files"])
                broken[file["file"].get<std::string>()] = file;
        }
        for (const auto &entry : std::filesystem::directory_iterator(folder)) {
            if (entry.path().extension() != extension)
                continue;
            SideFile file{entry.path(), {}, json::object()};
            if (!broken.empty())
                file.broken = broken.at(entry.path().filename());
            if (std::filesystem::exists(file.path + ".json"))
                file.dump = parsed(file.path + ".json");
            files.push_back(std::move(file));
        }
    }
    EXPECT_GE(files.size(), 8U) << extension;
    return files;
}

std::string from_hexadecimal(const std::string &digits)
{
    std::string bytes;
    for (std::size_t i = 0; i < digits.size(); i += 2)
        bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
    return bytes;
}

std::string little_endian(std::int64_t number, std::size_t width)
{
    std::string bytes;
    for (; bytes.size() < width; number >>= 8)
        bytes += static_cast<char>(number & 0xff);
    return bytes;
}

/// The bytes that a row of a dump stands for.
std::string bytes_of(const json &row)
{
    const auto size = row["size"].get<std::size_t>();
    std::string bytes;
    if (row.contains("text"))
        bytes = row["text"].get<std::string>();
    else if (row.contains("hex"))
        for (const std::string piece : row["hex"])
            bytes += from_hexadecimal(piece);
    else if (row["value"].is_array())
        for (const std::int64_t number : row["value"])
            bytes += little_endian(number, size / row["value"].size());
    else
        bytes = little_endian(row["value"].get<std::int64_t>(), size);
    EXPECT_LE(bytes.size(), size) << row;
    bytes.resize(size, '\0');
    return bytes;
}

std::string record_of(const json &dump)
{
    std::string record;
    for (const json &row : dump["record"]) {
        EXPECT_EQ(row["offset"], record.size()) << row;
        record += bytes_of(row);
    }
    return record;
}

template <typename Record>
std::string bytes_of_record(const Record &record)
{
    return {reinterpret_cast<const char *>(&record), sizeof record};
}

/// Says where two records differ rather than showing both.
void expect_equal(const std::string &found, const std::string &expected)
{
    ASSERT_EQ(found.size(), expected.size());
    const auto [at, other] = std::mismatch(found.begin(), found.end(), expected.begin());
    EXPECT_TRUE(at == found.end()) << "they differ from offset " << at - found.begin() << " on";
}

std::string checksum(const std::string &bytes)
{
    gchar *text =
        g_compute_checksum_for_data(G_CHECKSUM_SHA256, reinterpret_cast<const guchar *>(bytes.data()), bytes.size());
    std::string result = text;
    g_free(text);
    return result;
}

pvr_file_info_s garbage()
{
    pvr_file_info_s info;
    std::memset(&info, 0xa5, sizeof info);
    return info;
}

class GoldenFiles : public testing::Test {
protected:
    // Nobody can be asked whether a recording runs.
    GoldenFiles() { setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/bus", 1); }
};

} // namespace

TEST_F(GoldenFiles, OfInfoAreReadAsTheirDumpsSay)
{
    for (const SideFile &file : side_files(".inf")) {
        SCOPED_TRACE(file.path);
        pvr_file_info_s info = garbage();
        EXPECT_EQ(svc_pvr_get_pvr_file_info(file.recording().c_str(), &info), file.result());
        if (file.result() == 0)
            expect_equal(bytes_of_record(info), record_of(file.dump));
    }
}

TEST_F(GoldenFiles, OfInfoNameTheFieldsOfTheRecord)
{
    for (const SideFile &file : side_files(".inf")) {
        if (file.dump.is_null())
            continue;
        SCOPED_TRACE(file.path);
        const json &rows = file.dump["record"];
        ASSERT_EQ(rows.size(), std::size(pvr::record_fields));
        for (std::size_t i = 0; i < rows.size(); ++i) {
            EXPECT_EQ(rows[i]["name"], pvr::record_fields[i].name);
            EXPECT_EQ(rows[i]["offset"], pvr::record_fields[i].offset);
            EXPECT_EQ(rows[i]["size"], pvr::record_fields[i].width);
            EXPECT_EQ(rows[i]["type"], type_of(pvr::record_fields[i]));
        }
    }
}

TEST_F(GoldenFiles, OfInfoTellWhetherThereIsSoundAlone)
{
    for (const SideFile &file : side_files(".inf")) {
        SCOPED_TRACE(file.path);
        int is_audio_only = -7;
        const int result = svc_pvr_is_audio_only(file.recording().c_str(), &is_audio_only);
        pvr_file_info_s info{};
        const bool is_read = svc_pvr_get_pvr_file_info(file.recording().c_str(), &info) == 0;
        const std::uint32_t thumbnail_type = as_little_endian(info.nThumbnailType);
        const bool is_told = is_read && thumbnail_type <= 1;
        EXPECT_EQ(result, is_told ? 0 : -2);
        EXPECT_EQ(is_audio_only, is_told ? static_cast<int>(thumbnail_type) : -7);
        EXPECT_EQ(result, file.broken.value("audio_only", result));
    }
}

TEST_F(GoldenFiles, OfInfoAreAllTheSameToTheLeanReader)
{
    for (const SideFile &file : side_files(".inf")) {
        SCOPED_TRACE(file.path);
        const std::string content = content_of(file.path);
        const bool is_whole = content.size() >= sizeof(pvr_file_info_s);
        pvr_file_info_s info = garbage();
        EXPECT_EQ(pvr::_svc_pvr_get_pvr_file_info_vexan(file.recording().c_str(), &info), is_whole ? 0 : -2);
        if (is_whole)
            expect_equal(bytes_of_record(info), content.substr(0, sizeof info));
    }
}

TEST_F(GoldenFiles, OfFingerprintsGiveTheFirstBlockOfATime)
{
    for (const SideFile &file : side_files(".sas")) {
        if (!file.broken.empty())
            continue;
        SCOPED_TRACE(file.path);
        std::vector<std::int64_t> seen;
        for (const json &block : file.dump["blocks"]) {
            const auto time = block["time"].get<std::int64_t>();
            if (std::find(seen.begin(), seen.end(), time) != seen.end())
                continue; // there is an earlier one
            seen.push_back(time);
            int size = -7;
            EXPECT_EQ(svc_pvr_read_sas_file(file.recording().c_str(), time, &size, nullptr), 0) << block;
            ASSERT_EQ(size, block["size"]) << block;
            std::string bytes(static_cast<std::size_t>(size) + 1, '!');
            EXPECT_EQ(svc_pvr_read_sas_file(file.recording().c_str(), time, &size, bytes.data()), 0) << block;
            EXPECT_EQ(bytes.back(), '!') << block;
            bytes.pop_back();
            EXPECT_EQ(checksum(bytes), block["sha256"]) << block;
        }
        EXPECT_FALSE(seen.empty());
    }
}

TEST_F(GoldenFiles, OfFingerprintsThatAreBrokenAreRefused)
{
    for (const SideFile &file : side_files(".sas")) {
        if (file.broken.empty())
            continue;
        for (const json &read : file.broken["reads"]) {
            SCOPED_TRACE(file.broken.dump());
            int size = -7;
            std::vector<char> room(64, '!');
            EXPECT_EQ(
                svc_pvr_read_sas_file(file.recording().c_str(), read["time"].get<std::int64_t>(), &size, room.data()),
                read["result"]);
            EXPECT_EQ(size, read["size"].is_null() ? -7 : read["size"].get<int>());
            const auto untouched = std::count(room.begin(), room.end(), '!');
            EXPECT_EQ(untouched, read["result"] == 0 ? 64 - size : 64);
        }
    }
}

TEST_F(GoldenFiles, OfColourFormatsAreReadAsTheirDumpsSay)
{
    for (const SideFile &file : side_files(".cft")) {
        SCOPED_TRACE(file.path);
        yuv_info info;
        std::memset(&info, 0xa5, sizeof info);
        EXPECT_EQ(svc_pvr_get_yuv_info(file.recording().c_str(), &info), file.result());
        if (file.result() == 0)
            expect_equal(bytes_of_record(info), content_of(file.path).substr(0, sizeof info));
        if (!file.dump.is_null())
            expect_equal(bytes_of_record(info), record_of(file.dump));
    }
}

// The conditional-access queries against a conditional-access library of the test's own.
#include "ca_module.h"
#include "pvr_service_api.h"
#include "support/log_capture.h"
#include "support/temporary_folder.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <optional>
#include <ostream>
#include <stdexcept>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

using namespace support;

namespace {

constexpr char path[] = "/m/a.srf";

// ---- The questions.

/// One that has a number for an answer.
struct Question {
    const char *name;
    int slot;
    const char *logged_name;
    int (*ask)(const char *path, int *out);
    bool is_flag;     ///< starts from 1, and only a cleared flag turns it to 0
    const char *gate; ///< how the gate logs the answer; null when there is none
    int answer_of_gate;
};

int ask_thumbnail(const char *about, int *valid) { return IsThumbnailValid(about, 42, valid); }

const Question questions[] = {
    {"IsBlockedByParentalControl", 6, "IsBlockedByParentalControl", IsBlockedByParentalControl, true, nullptr, 0},
    {"IsThumbnailValid", 7, "CheckThumbnailValidation", ask_thumbnail, true, "bResult", 1},
    {"IsThisWholeFileExceededRetentionLimit", 2, "IsFileExceededRetentionLimit", IsThisWholeFileExceededRetentionLimit,
     true, "bResult", 0},
    {"GetCIThumbType", 3, "GetCIThumbType", GetCIThumbType, false, "thumbValue", 0},
};

std::ostream &operator<<(std::ostream &out, const Question &question) { return out << question.name; }

class ConditionalAccess : public testing::Test {
protected:
    void SetUp() override
    {
        reset_module();
        logged();
    }

    /// The lines behind those of the gate.
    static Lines lines_of_answer()
    {
        Lines lines = logged_lines();
        std::erase_if(lines, [](const std::string &line) {
            return line.find("dtv type [") != line.npos || line.find("num_of_ci") != line.npos ||
                   line.find("support CI") != line.npos;
        });
        return lines;
    }
};

class EachQuestion : public ConditionalAccess, public testing::WithParamInterface<Question> {};

const std::string called = plain_info("This func is called");

} // namespace

// ---- the set

TEST_F(ConditionalAccess, KnowsTheBroadcastStandard)
{
    EXPECT_EQ(GetDtvType(), PVR_DTV_DVB_ISDB);
    EXPECT_EQ(logged_lines(), Lines());
    EXPECT_EQ(GetTVStandard(), PVR_DTV_DVB_ISDB);
    EXPECT_EQ(logged_lines(), Lines{plain_entry("[FAT]dtv type [2](0:atsc,1:dvb,2:dvbisdb)")});
    set_standard(std::nullopt);
    EXPECT_EQ(GetTVStandard(), PVR_DTV_DVB);
    EXPECT_EQ(logged_lines(),
              (Lines{plain_entry("get dtv type failure"), plain_entry("[FAT]dtv type [1](0:atsc,1:dvb,2:dvbisdb)")}));
}

TEST_F(ConditionalAccess, CountsCiSlotsAnewOnEveryCall)
{
    const auto asked_for = [](int slots) {
        return plain_entry(
            "system_info_get_custom_int for com.brimmel/featureconf/product.num_of_ci is called, retValue[" +
            std::to_string(slots) + "]");
    };
    EXPECT_EQ(IsSupportCI(), 1);
    EXPECT_EQ(logged_lines(), (Lines{asked_for(1), plain_entry("support CI")}));
    for (const int slots : {0, -1}) {
        set_ci_slots(slots);
        EXPECT_EQ(IsSupportCI(), 0);
        EXPECT_EQ(logged_lines(), (Lines{asked_for(slots), plain_entry("don't support CI")}));
    }
    set_ci_slots(std::nullopt);
    EXPECT_EQ(IsSupportCI(), 0);
    EXPECT_EQ(logged_lines(), (Lines{asked_for(0), plain_entry("don't support CI")}));
}

// ---- what the conditional-access library answers

TEST_P(EachQuestion, GoesToItsPlaceInTheTable)
{
    int out = untouched;
    EXPECT_EQ(GetParam().ask(path, &out), PVR_CA_SUCCESS);
    EXPECT_EQ(module.slot, GetParam().slot);
    EXPECT_EQ(module.path, path);
    EXPECT_EQ(module.position, GetParam().slot == 7 ? 42 : untouched);
}

TEST_P(EachQuestion, HandsOutTheAnswer)
{
    const Question &question = GetParam();
    struct Row {
        bool is_answering;
        bool is_writing;
        int value;
        int returned;
        int flag; ///< what comes out of a flag
        int type; ///< and of a type
    };
    const Row rows[] = {
        {true, true, 1, PVR_CA_SUCCESS, 1, 1},    {true, true, 0, PVR_CA_SUCCESS, 0, 0},
        {true, false, 0, PVR_CA_SUCCESS, 1, 0},   {false, false, 0, PVR_CA_NO_ANSWER, 1, 0},
        {false, true, 0, PVR_CA_NO_ANSWER, 0, 0}, {false, true, 1, PVR_CA_NO_ANSWER, 1, 1},
    };
    for (const Row &row : rows) {
        module.is_answering = row.is_answering;
        module.is_writing = row.is_writing;
        module.value = row.value;
        int out = untouched;
        EXPECT_EQ(question.ask(path, &out), row.returned);
        const int expected = question.is_flag ? row.flag : row.type;
        EXPECT_EQ(out, expected);
        EXPECT_EQ(lines_of_answer(), (Lines{called, plain_entry(std::string(question.logged_name) + " result[" +
                                                                std::to_string(row.is_answering) + "] bResult[" +
                                                                std::to_string(expected) + "]")}));
    }
    if (!question.is_flag) {
        module.value = -5;
        int out = untouched;
        question.ask(path, &out);
        EXPECT_EQ(out, -5) << "types are passed through";
    }
}

TEST_P(EachQuestion, IsNotPutWithoutAPathOrAnOutput)
{
    const int preset = GetParam().is_flag ? 1 : 0;
    int out = untouched;
    EXPECT_EQ(GetParam().ask(nullptr, &out), PVR_CA_BAD_ARGUMENT);
    EXPECT_EQ(out, preset);
    EXPECT_EQ(lines_of_answer(), (Lines{called, plain_entry("invalid buf pointer")}));
    out = untouched;
    EXPECT_EQ(GetParam().ask("", &out), PVR_CA_BAD_ARGUMENT);
    EXPECT_EQ(out, preset);
    EXPECT_EQ(lines_of_answer(), (Lines{called, plain_entry("strUrl[] is null")}));
    EXPECT_EQ(GetParam().ask(path, nullptr), PVR_CA_BAD_ARGUMENT);
    EXPECT_EQ(lines_of_answer(), (Lines{called, plain_entry("invalid buf pointer")}));
    EXPECT_EQ(module.slot, -1);
}

TEST_P(EachQuestion, HasNoAnswerWithoutAModule)
{
    module.is_fitted = false;
    int out = untouched;
    EXPECT_EQ(GetParam().ask(path, &out), PVR_CA_NO_ANSWER);
    EXPECT_EQ(out, GetParam().is_flag ? 1 : 0);
    EXPECT_EQ(lines_of_answer(), Lines{called});
}

TEST_P(EachQuestion, LetsAnExceptionPass)
{
    module.is_throwing = true;
    int out = untouched;
    EXPECT_THROW(GetParam().ask(path, &out), std::runtime_error);
    EXPECT_EQ(out, GetParam().is_flag ? 1 : 0);
}

TEST_P(EachQuestion, IsAnsweredByTheGateWhereItHasOne)
{
    struct Row {
        int standard;
        int slots;
        int has_ci;
    };
    for (const Row &row :
         {Row{PVR_DTV_ATSC, 1, 1}, Row{PVR_DTV_ATSC, 0, 0}, Row{PVR_DTV_DVB, 0, 0}, Row{PVR_DTV_DVB_ISDB, -1, 0}}) {
        set_standard(row.standard);
        set_ci_slots(row.slots);
        module.slot = -1;
        for (const char *about : {path, "", static_cast<const char *>(nullptr)}) {
            int out = untouched;
            logged();
            const int returned = GetParam().ask(about, &out);
            if (GetParam().gate == nullptr) {
                EXPECT_EQ(returned, about == path ? PVR_CA_SUCCESS : PVR_CA_BAD_ARGUMENT);
                continue;
            }
            EXPECT_EQ(returned, PVR_CA_SUCCESS);
            EXPECT_EQ(out, GetParam().answer_of_gate);
            EXPECT_EQ(logged_lines().back(), plain_entry("eCurrStd[" + std::to_string(row.standard) +
                                                         "] is DTV_STANDARD_ATSC, and IsSupportCI()[" +
                                                         std::to_string(row.has_ci) + "] is false, " + GetParam().gate +
                                                         "[" + std::to_string(GetParam().answer_of_gate) + "]"));
            EXPECT_EQ(GetParam().ask(about, nullptr), PVR_CA_SUCCESS) << "the gate comes before the arguments";
            EXPECT_EQ(module.slot, -1);
        }
    }
    set_standard(std::nullopt); // counts as DVB
    set_ci_slots(1);
    int out = untouched;
    EXPECT_EQ(GetParam().ask(path, &out), PVR_CA_SUCCESS);
    EXPECT_EQ(module.slot, GetParam().slot);
}

INSTANTIATE_TEST_SUITE_P(All, EachQuestion, testing::ValuesIn(questions),
                         [](const auto &info) { return std::string(info.param.name); });

TEST_F(ConditionalAccess, NamesTheFunctionInItsOwnFile)
{
    int out = 0;
    IsThumbnailValid(path, 1, &out);
    for (const LoggedLine &line : logged()) {
        EXPECT_EQ(line.file, "pvr_cim_wrapper.cpp") << line.text;
        if (line.text.find("CheckThumbnail") != line.text.npos) {
            EXPECT_EQ(line.function, "IsThumbnailValid");
        }
    }
}

TEST_F(ConditionalAccess, TellsWhatARecordingIsAndHowOftenItWasPlayed)
{
    module.value = 3;
    int type = untouched;
    unsigned char play_count = 7;
    EXPECT_EQ(GetContentInfo(path, &type, &play_count), PVR_CA_SUCCESS);
    EXPECT_EQ(module.slot, 4);
    EXPECT_EQ(type, 3);
    EXPECT_EQ(play_count, 200);
    EXPECT_EQ(logged_lines(), (Lines{called, plain_entry("GetContentInfo result[1] infoType[3] playCount[200]")}));

    module.is_answering = false; // what it writes counts all the same
    type = untouched;
    EXPECT_EQ(GetContentInfo(path, &type, &play_count), PVR_CA_NO_ANSWER);
    EXPECT_EQ(type, 3);

    EXPECT_EQ(GetContentInfo(nullptr, &type, &play_count), PVR_CA_BAD_ARGUMENT);
    EXPECT_EQ(type, 0);
    EXPECT_EQ(play_count, 0);
    EXPECT_EQ(GetContentInfo("", &type, &play_count), PVR_CA_BAD_ARGUMENT);
    EXPECT_EQ(GetContentInfo(path, nullptr, &play_count), PVR_CA_BAD_ARGUMENT);
    EXPECT_EQ(GetContentInfo(path, &type, nullptr), PVR_CA_BAD_ARGUMENT);
    module.is_fitted = false;
    EXPECT_EQ(GetContentInfo(path, &type, &play_count), PVR_CA_NO_ANSWER);
    module.is_fitted = true;
    module.is_throwing = true;
    EXPECT_THROW(GetContentInfo(path, &type, &play_count), std::runtime_error);
}

TEST_F(ConditionalAccess, HandsOutTheFirstExpiredSection)
{
    module.sections = {{60, 120}, {300, 360}};
    int count = untouched;
    int start = untouched;
    int end = untouched;
    EXPECT_EQ(GetExpiredContentSections(path, &count, &start, &end), PVR_CA_SUCCESS);
    EXPECT_EQ(module.slot, 5);
    EXPECT_EQ(std::tuple(count, start, end), std::tuple(0, 60, 120));
    EXPECT_EQ(logged_lines(), (Lines{called, plain_entry("GetExpiredContentSections result[1]"),
                                     plain_entry("startTime [60], endTime [120]")}));

    for (const bool is_answering : {true, false}) { // without a section, or without an answer
        module.is_answering = is_answering;
        module.sections = is_answering ? std::vector<std::pair<int, int>>{} : std::vector{std::pair(1, 2)};
        start = end = untouched;
        EXPECT_EQ(GetExpiredContentSections(path, &count, &start, &end),
                  is_answering ? PVR_CA_SUCCESS : PVR_CA_NO_ANSWER);
        EXPECT_EQ(std::tuple(count, start, end), std::tuple(0, untouched, untouched));
        EXPECT_EQ(logged_lines().back(),
                  plain_entry("GetExpiredContentSections result[" + std::to_string(is_answering) + "]"));
    }
    count = untouched;
    EXPECT_EQ(GetExpiredContentSections(nullptr, &count, &start, &end), PVR_CA_BAD_ARGUMENT);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(GetExpiredContentSections("", &count, &start, &end), PVR_CA_BAD_ARGUMENT);
    EXPECT_EQ(GetExpiredContentSections(path, nullptr, &start, &end), PVR_CA_BAD_ARGUMENT);
    EXPECT_EQ(GetExpiredContentSections(path, &count, nullptr, &end), PVR_CA_BAD_ARGUMENT);
    EXPECT_EQ(GetExpiredContentSections(path, &count, &start, nullptr), PVR_CA_BAD_ARGUMENT);
    module.is_fitted = false;
    EXPECT_EQ(GetExpiredContentSections(path, &count, &start, &end), PVR_CA_NO_ANSWER);
}

// ---- by the info file

TEST_F(ConditionalAccess, TellsAnAtsc3RecordingByItsInfoFile)
{
    const TemporaryFolder folder;
    const std::string golden = PVR_GOLDEN_FILES "/";
    struct Row {
        const char *file;
        int returned;
        const char *line;
    };
    const Row rows[] = {
        {"vexan-atsc3.inf", 1, "[EST] PS_CONTENT_VERSION_ATSC3"},
        {"vexan-television.inf", 0, "[EST] content_version[0] not PS_CONTENT_VERSION_ATSC3"},
    };
    const std::string recording = folder / "a.srf";
    for (const Row &row : rows) {
        std::filesystem::copy_file(golden + row.file, folder / "a.inf",
                                   std::filesystem::copy_options::overwrite_existing);
        logged();
        EXPECT_EQ(IsATSC3Url(recording.c_str()), row.returned);
        const Lines lines = logged_lines();
        EXPECT_EQ(lines.front(), detail("the path of inf file is [" + recording + "]"));
        EXPECT_EQ(lines.back(), plain_info(row.line));
    }
    EXPECT_EQ(IsATSC3Url((folder / "missing.srf").c_str()), 0);
    EXPECT_EQ(logged_lines().back(), plain_info("[EST] content_version[0] not PS_CONTENT_VERSION_ATSC3"));
    EXPECT_EQ(IsATSC3Url("no recording"), 0);
    logged();
    EXPECT_EQ(IsATSC3Url(nullptr), 0);
    EXPECT_EQ(logged_lines(), Lines{plain_info("the file path of srf is null")});
}

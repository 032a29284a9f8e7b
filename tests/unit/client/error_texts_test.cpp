// The text of every code, without a translation and in every language that has a catalogue.
#include "client/identity.h"
#include "pvr_service_api.h"
#include "support/log_capture.h"
#include "support/platform.h"

#include <clocale>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <libintl.h>
#include <map>
#include <set>
#include <string>

using namespace support;

namespace {

constexpr char domain[] = "org.vexan.pvr-service-api";

const std::map<std::string, std::set<int>> ids{
    {"TV_SID_FAIL_TO_RECORD", {2, 3, 4, 5, 6, 7, 8, 9, 11, 12, 13, 14, 15, 16, 17, 18, 103, 258, 259}},
    {"SID_CANNOT_START_RECORDING_BECAUSE_CURRENT_CHANNEL_IS_LOCKED", {10, 253}},
    {"SID_STORAGE_DEVICE_HAS_PROBLEM_MSG", {100, 155, 156}},
    {"SID_NO_STORAGE_DEVICE_FOR_RECORDING", {101, 159}},
    {"SID_THERE_IS_NO_SIGNAL_OR_A_WEAK_SIGNAL_ON_THE_RECORDING_CHANNEL", {102}},
    {"SID_NO_TIME_INFORMATION", {104}},
    {"TV_SID_FAIL_TIMER_RECORDING_DEVICE_MANAGING_MSG", {150, 151, 154}},
    {"SID_UPGRADING_SW_NOW", {152}},
    {"SID_DELETING_FILES_ON_THE_STORAGE_DEVICE", {153, 161}},
    {"TV_SID_FORMATTING_DEVICE_REQUIRED", {157}},
    {"SID_THE_DEVICE_FAILED_PERFORMANCE_TEST", {158}},
    {"SID_INSUFFICIENT_SPACE_ON_STORAGE_DEVICE", {160}},
    {"SID_THE_CURRENT_BROADCAST_IS_NOT_RECORDABLE", {200}},
    {"SID_CANNOT_START_RECORDING_BECAUSE_THE_SERVICE_IS_NOT_AVAILABLE", {202, 260}},
    {"TV_SID_TIMER_RECORDING_FAIL_DEMO_ON_MSG", {250}},
    {"SID_SET_THE_CURRENT_TIME_AND_DATE_FIRST", {251}},
    {"TV_SMART_DUAL_VIEW", {252}},
    {"SID_TIMER_RECORDING_FAILED_BECAUSE_CURRENT_PROGRAM_HAS_PARENTAL_LOCK_ON", {254}},
    {"SID_CANNOT_START_RECORDING_AS_IT_IS_A_DATA_SERVICE_CHANNEL", {255}},
    {"SID_CANNOT_START_RECORDING_DUE_TO_A_SCRAMBLED_SIGNAL", {256}},
    {"SID_NOT_RECORD_COPYRIGHT_BROADCASTING_MSG", {257}},
};

std::string id_of(int code)
{
    for (const auto &[id, codes] : ids)
        if (codes.contains(code))
            return id;
    return code == 0 ? "" : "SID_AN_UNKNOWN_ERROR_HAS_OCCURRED_WHILE_RECORDING";
}

std::string text_of(int code)
{
    char text[255];
    EXPECT_EQ(svc_pvr_get_err_text(code, 0, text), PS_SUCCESS) << code;
    return text;
}

/// What an application does that shows its texts in a language.
void speak(const char *language)
{
    setenv("LANGUAGE", language, 1);
    setlocale(LC_ALL, "C"); // the same locale again would not be news to gettext
    ASSERT_NE(setlocale(LC_ALL, "C.UTF-8"), nullptr);
}

} // namespace

TEST(ErrorTexts, AreTheirIdsWithoutATranslation)
{
    for (int code = -5; code <= 300; ++code)
        EXPECT_EQ(text_of(code), id_of(code)) << code;
    for (const int code : {-2147483647 - 1, 2147483647})
        EXPECT_EQ(text_of(code), id_of(-1)) << code;
}

TEST(ErrorTexts, AreLogged)
{
    pvr::_get_pid_name();
    logged();
    char text[255];
    EXPECT_EQ(svc_pvr_get_err_text(257, -3, text), PS_SUCCESS);
    const Lines lines = logged_lines();
    ASSERT_EQ(lines.size(), 5U);
    EXPECT_EQ(lines[0], entry("|error_num:257 flag:-3"));
    EXPECT_EQ(lines[1], detail(support_line(1)));
    EXPECT_TRUE(lines[2].starts_with(
        plain_info("bDomainInit:0 PVR_SERVICE_API_MO_NAME:" + std::string(domain) + ", PVR_SERVICE_API_MO_LOCALE:/")))
        << lines[2];
    EXPECT_TRUE(lines[3].starts_with(plain_info("pbindtextdomain:/"))) << lines[3];
    EXPECT_EQ(lines[4], plain_info("|text:SID_NOT_RECORD_COPYRIGHT_BROADCASTING_MSG"));
    EXPECT_EQ(svc_pvr_get_err_text(257, -3, text), PS_SUCCESS);
    EXPECT_TRUE(logged_lines().at(2).starts_with(plain_info("bDomainInit:1 ")));
}

TEST(ErrorTexts, BindTheCatalogueAlsoWithoutABuffer)
{
    pvr::_get_pid_name();
    logged();
    EXPECT_EQ(svc_pvr_get_err_text(2, 0, nullptr), PS_CALL_METHOD_FAILED);
    const Lines lines = logged_lines();
    ASSERT_EQ(lines.size(), 5U);
    EXPECT_TRUE(lines[3].starts_with(plain_info("pbindtextdomain:/")));
    EXPECT_EQ(lines[4], plain_entry("The param text is null."));
}

TEST(ErrorTexts, AreRefusedOnAProductThatDoesNotRecord)
{
    set_product(Product::does_not_record);
    pvr::_get_pid_name();
    char text[255] = "untouched";
    EXPECT_EQ(svc_pvr_get_err_text(2, 0, text), PS_CALL_METHOD_FAILED);
    EXPECT_STREQ(text, "untouched");
    EXPECT_EQ(logged_lines().back(), info(" did not support PVR!!"));
}

TEST(ErrorTexts, AreTranslatedIntoTheLanguageThatTheApplicationHasSet)
{
    std::map<std::string, std::set<std::string>> texts;
    for (const char *language : {"en", "de", "fr", "es"}) {
        speak(language);
        for (int code = -5; code <= 300; ++code) {
            const std::string text = text_of(code);
            EXPECT_EQ(text.empty(), code == 0) << language << ' ' << code;
            if (code != 0) {
                EXPECT_NE(text, id_of(code)) << language;
                texts[id_of(code)].insert(text);
            }
        }
    }
    EXPECT_EQ(texts.size(), ids.size() + 1);
    for (const auto &[id, translations] : texts)
        EXPECT_EQ(translations.size(), 4U) << id << " reads the same in two languages, or in two ways in one";
    EXPECT_EQ(text_of(202), "No se puede iniciar la grabación porque el servicio no está disponible.");
}

TEST(ErrorTexts, AreTheirIdsInTheLocaleOfC)
{
    setenv("LANGUAGE", "de", 1);
    ASSERT_NE(setlocale(LC_ALL, "C"), nullptr);
    EXPECT_EQ(text_of(104), id_of(104));
}

TEST(ErrorTexts, EndWithTheirBufferAndAreNoFormat)
{
    EXPECT_EQ(text_of(104), id_of(104));
    bindtextdomain(domain, PVR_LONG_TEXT);
    speak("xx");
    char text[256];
    std::memset(text, '#', sizeof text);
    EXPECT_EQ(svc_pvr_get_err_text(104, 0, text), PS_SUCCESS);
    const std::string whole = dgettext(domain, "SID_NO_TIME_INFORMATION");
    ASSERT_GT(whole.size(), 254U);
    EXPECT_TRUE(whole.starts_with("%s%n%d 100 % %%: "));
    EXPECT_EQ(text, whole.substr(0, 254));
    EXPECT_EQ(whole.substr(253, 2), "é") << "the cut splits a character";
    EXPECT_EQ(text[254], '\0');
    EXPECT_EQ(text[255], '#');
}

// The handler itself, with what no bus would bring, and the media browser that waits for a thumbnail.
#include "events/browser_queue.h"
#include "events/callbacks.h"
#include "events/subscribe.h"
#include "support/log_capture.h"

#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace pvr;

namespace {

std::vector<std::string> told;

void on_signal(pvr_service_signal, void *) { told.emplace_back("signal"); }
void on_result(pvr_service_result, void *) { told.emplace_back("result"); }

void on_thumbnail(int event, int one, int two, int status, void *data)
{
    told.push_back(std::to_string(event) + " " + std::to_string(one) + " " + std::to_string(two) + " " +
                   std::to_string(status) + " " + static_cast<const char *>(data));
}

char data[] = "data";

/// Puts one node into the queue.
BrowserNode *wait_for(const char *location, BrowserCallback callback)
{
    auto *node = static_cast<BrowserNode *>(std::calloc(1, sizeof(BrowserNode)));
    std::strcpy(node->location, location);
    node->callback = callback;
    node->user_data = data;
    node->next = browser_queue;
    browser_queue = node;
    return node;
}

/// Hands the handler a signal; the parameters are GVariant text with types, null for none.
void receive(const char *name, const char *parameters)
{
    GVariant *value = parameters != nullptr ? g_variant_ref_sink(g_variant_new_parsed(parameters)) : nullptr;
    _signal_subscribe(nullptr, ":1.1", name, value, nullptr);
    if (value != nullptr)
        g_variant_unref(value);
}

class Subscribe : public testing::Test {
protected:
    Subscribe()
    {
        told.clear();
        signal_cb_func.set(on_signal, nullptr);
        to_pvr_app.set(on_result, nullptr);
    }
    ~Subscribe() override
    {
        signal_cb_func.clear();
        to_pvr_app.clear();
        cancel_browser_queue();
        cancelCallback = false;
    }
};

using Told = std::vector<std::string>;

} // namespace

TEST_F(Subscribe, DropsParametersOfAnotherType)
{
    for (const char *name : {"send_pvr_signal_to_apps", "result_to_apps"})
        for (const char *parameters : {"()", "(int32 1,)", "(int32 1, int32 2)", "('text', int32 1)", "int32 1",
                                       "'text'", "(int32 1, 'text', int32 2)", "@av []", "(uint32 1, <int32 1>)"})
            receive(name, parameters);
    receive("send_pvr_signal_to_apps", nullptr);
    receive("result_to_apps", nullptr);
    receive(nullptr, "(int32 1,)");
    EXPECT_EQ(told, Told());
}

TEST_F(Subscribe, CallsTheMediaBrowserOnceForTheThumbnailThatItWaitsFor)
{
    wait_for("/m/b.srf", on_thumbnail);
    wait_for("/m/a.srf", on_thumbnail);
    receive("result_to_apps", "(int32 104, <(int32 -5, '/m/b.srf')>)");
    EXPECT_EQ(told, (Told{"6 0 0 -5 data"}));
    receive("result_to_apps", "(int32 104, <(int32 -5, '/m/b.srf')>)");
    receive("result_to_apps", "(int32 104, <(int32 -5, '/m/')>)");
    EXPECT_EQ(told.size(), 1U);
    receive("result_to_apps", "(int32 104, <(int32 0, '/m/a.srf')>)");
    EXPECT_EQ(told.back(), "6 0 0 0 data");
    EXPECT_EQ(browser_queue, nullptr);
}

TEST_F(Subscribe, LogsAMediaBrowserWithoutACallback)
{
    wait_for("/m/a.srf", nullptr);
    support::logged();
    receive("result_to_apps", "(int32 104, <(int32 0, '/m/a.srf')>)");
    std::vector<std::string> lines;
    for (const support::LoggedLine &line : support::logged())
        if (line.function == "_call_third_party_callback_func")
            lines.push_back(std::to_string(line.priority) + " " + line.text.substr(line.text.find("10.8.1]") + 7));
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0].substr(0, 2), "3 ");
    EXPECT_NE(lines[0].find("/m/a.srf"), std::string::npos);
    EXPECT_EQ(lines[1], "6 cur_node->callback == NULL");
    EXPECT_EQ(browser_queue, nullptr);
}

TEST_F(Subscribe, LetsTheMediaBrowserClearTheQueueItIsCalledFrom)
{
    wait_for("/m/b.srf", on_thumbnail);
    wait_for("/m/a.srf", [](int, int, int, int, void *) { cancel_browser_queue(); });
    receive("result_to_apps", "(int32 104, <(int32 0, '/m/a.srf')>)");
    receive("result_to_apps", "(int32 104, <(int32 0, '/m/b.srf')>)");
    EXPECT_EQ(told, Told()) << "cancelled for good";
}

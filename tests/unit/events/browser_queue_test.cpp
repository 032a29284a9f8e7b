#include "events/browser_queue.h"
#include "pvr_service_api.h"
#include "support/log_capture.h"
#include "support/platform.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace pvr;

namespace {

/// Puts nodes into the queue, the first one first.
std::vector<BrowserNode *> queued(int count)
{
    std::vector<BrowserNode *> nodes;
    BrowserNode **link = &browser_queue;
    for (int i = 0; i < count; ++i) {
        *link = static_cast<BrowserNode *>(std::calloc(1, sizeof(BrowserNode)));
        nodes.push_back(*link);
        link = &(*link)->next;
    }
    return nodes;
}

std::vector<BrowserNode *> in_queue()
{
    std::vector<BrowserNode *> nodes;
    for (BrowserNode *node = browser_queue; node != nullptr; node = node->next)
        nodes.push_back(node);
    return nodes;
}

class BrowserQueue : public testing::Test {
protected:
    void TearDown() override
    {
        cancel_browser_queue();
        EXPECT_TRUE(in_queue().empty());
        cancelCallback = false;
    }
};

} // namespace

TEST_F(BrowserQueue, LosesTheNodeThatIsAskedFor)
{
    for (std::size_t asked = 0; asked < 3; ++asked) {
        std::vector<BrowserNode *> nodes = queued(3);
        remove_from_browser_queue(nodes[asked]);
        nodes.erase(nodes.begin() + static_cast<std::ptrdiff_t>(asked));
        EXPECT_EQ(in_queue(), nodes);
        cancel_browser_queue();
    }
}

TEST_F(BrowserQueue, GivesTheFirstNodeThatWaitsForALocation)
{
    const std::vector<BrowserNode *> nodes = queued(4);
    std::strcpy(nodes[1]->location, "/m/a.srf");
    std::strcpy(nodes[2]->location, "/m/a.srf");
    std::memset(nodes[3]->location, 'x', sizeof nodes[3]->location); // full, without a NUL
    EXPECT_FALSE(take_from_browser_queue("/m/a.sr"));
    EXPECT_FALSE(take_from_browser_queue("/m/a.srf2"));
    const TakenNode taken = take_from_browser_queue("/m/a.srf");
    EXPECT_EQ(taken.get(), nodes[1]);
    EXPECT_EQ(in_queue(), (std::vector<BrowserNode *>{nodes[0], nodes[2], nodes[3]}));
    EXPECT_FALSE(take_from_browser_queue(std::string(257, 'x').c_str()));
    EXPECT_EQ(take_from_browser_queue(std::string(256, 'x').c_str()).get(), nodes[3]);
}

TEST_F(BrowserQueue, GivesNothingOnceItIsCancelled)
{
    cancel_browser_queue();
    queued(1);
    EXPECT_FALSE(take_from_browser_queue(""));
}

TEST_F(BrowserQueue, OfOneNodeIsEmptiedWhicheverNodeIsAskedFor)
{
    queued(1);
    const BrowserNode other{};
    remove_from_browser_queue(&other);
    EXPECT_TRUE(in_queue().empty());
    remove_from_browser_queue(&other); // an empty one stays empty
    EXPECT_TRUE(in_queue().empty());
}

TEST_F(BrowserQueue, LeavesANodeAloneThatIsNotInIt)
{
    const std::vector<BrowserNode *> nodes = queued(2);
    const BrowserNode other{};
    remove_from_browser_queue(&other);
    EXPECT_EQ(in_queue(), nodes);
}

TEST_F(BrowserQueue, IsCancelledForGood)
{
    EXPECT_FALSE(cancelCallback);
    queued(3);
    cancel_browser_queue();
    EXPECT_TRUE(in_queue().empty());
    EXPECT_TRUE(cancelCallback);
}

TEST_F(BrowserQueue, IsClearedByTheExportedCallWhereTheProductRecords)
{
    const std::vector<BrowserNode *> nodes = queued(2);
    support::set_product(support::Product::does_not_record);
    EXPECT_EQ(svr_pvr_clear_thumbnail_callback(), PS_CALL_METHOD_FAILED);
    EXPECT_EQ(in_queue(), nodes);
    EXPECT_FALSE(cancelCallback);

    support::set_product(support::Product::records);
    support::logged();
    EXPECT_EQ(svr_pvr_clear_thumbnail_callback(), PS_SUCCESS);
    const support::LoggedLine first = support::logged().front();
    EXPECT_EQ(first.function, "svr_pvr_clear_thumbnail_callback");
    EXPECT_TRUE(first.text.ends_with("]")) << first.text; // the caller's name, and nothing more
    EXPECT_TRUE(in_queue().empty());
    EXPECT_TRUE(cancelCallback);
}

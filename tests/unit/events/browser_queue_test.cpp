#include "events/browser_queue.h"

#include <cstddef>
#include <cstdlib>
#include <gtest/gtest.h>
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

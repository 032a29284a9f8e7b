#include "events/browser_queue.h"

#include <cstdlib>
#include <cstring>
#include <string_view>
#include <utility>

namespace pvr {

constinit std::mutex browser_queue_mutex;
constinit BrowserNode *browser_queue = nullptr;
constinit bool cancelCallback = false;

void ReleaseNode::operator()(BrowserNode *node) const noexcept { std::free(node); }

TakenNode take_from_browser_queue(const char *location) noexcept
{
    const std::lock_guard lock(browser_queue_mutex);
    if (cancelCallback)
        return nullptr;
    for (BrowserNode **link = &browser_queue; *link != nullptr; link = &(*link)->next) {
        const std::string_view waited((*link)->location, strnlen((*link)->location, sizeof(*link)->location));
        if (waited == location)
            return TakenNode(std::exchange(*link, (*link)->next));
    }
    return nullptr;
}

void remove_from_browser_queue(const BrowserNode *node) noexcept
{
    const std::lock_guard lock(browser_queue_mutex);
    if (browser_queue == nullptr)
        return;
    if (browser_queue->next == nullptr) {
        std::free(std::exchange(browser_queue, nullptr)); // deliberately, whichever node was asked for
        return;
    }
    for (BrowserNode **link = &browser_queue; *link != nullptr; link = &(*link)->next)
        if (*link == node) {
            std::free(std::exchange(*link, (*link)->next));
            return;
        }
}

void cancel_browser_queue() noexcept
{
    const std::lock_guard lock(browser_queue_mutex);
    cancelCallback = true;
    while (browser_queue != nullptr)
        std::free(std::exchange(browser_queue, browser_queue->next));
}

} // namespace pvr

// The media browser's queue of callbacks that wait for a thumbnail. The library serves and empties it;
// nothing in the library fills it.
#pragma once

#include <memory>
#include <mutex>

namespace pvr {

/// Takes 6, 0, 0, the status of the thumbnail, and the node's user data.
using BrowserCallback = void (*)(int, int, int, int, void *);

struct BrowserNode {
    BrowserCallback callback;
    void *user_data;
    char location[256]; ///< of the recording whose thumbnail was asked for
    BrowserNode *next;
};

/// Guards the queue and its cancellation; never held while a callback runs.
extern std::mutex browser_queue_mutex;

/// The queue's first node, null when it is empty. Nodes are made by std::malloc.
extern BrowserNode *browser_queue;

/// Whether the queue was cancelled, which lasts as long as the process.
extern bool cancelCallback;

struct ReleaseNode {
    void operator()(BrowserNode *node) const noexcept;
};
using TakenNode = std::unique_ptr<BrowserNode, ReleaseNode>;

/// Takes the first node out that waits for this location, which is compared within a node's room for it. Null when
/// there is none, and when the queue was cancelled.
TakenNode take_from_browser_queue(const char *location) noexcept;

/// Takes one node out and releases it. Deliberately, a queue of one node is emptied whichever node was
/// asked for; otherwise a node that is not in the queue is left alone.
void remove_from_browser_queue(const BrowserNode *node) noexcept;

/// Cancels the queue for good and releases its nodes.
void cancel_browser_queue() noexcept;

} // namespace pvr

// Ownership as types: what GLib hands out is released where its owner ends.
#pragma once

#include <gio/gio.h>
#include <utility>

namespace pvr {

/// Owns one T that Release frees, and offers an empty slot for a callee to fill.
template <typename T, auto Release>
class Owned {
public:
    Owned() noexcept = default;
    explicit Owned(T *owned) noexcept : owned_(owned) {}
    Owned(Owned &&other) noexcept : owned_(std::exchange(other.owned_, nullptr)) {}
    Owned &operator=(Owned &&other) noexcept
    {
        std::swap(owned_, other.owned_);
        return *this;
    }
    ~Owned()
    {
        if (owned_ != nullptr)
            Release(owned_);
    }

    T *get() const noexcept { return owned_; }
    T *operator->() const noexcept { return owned_; }
    explicit operator bool() const noexcept { return owned_ != nullptr; }

    /// The slot for a callee to store into; whatever was owned is released first.
    T **slot() noexcept
    {
        *this = Owned();
        return &owned_;
    }
    [[nodiscard]] T *release() noexcept { return std::exchange(owned_, nullptr); }

private:
    T *owned_ = nullptr;
};

using OwnedText = Owned<char, g_free>;
using OwnedVariant = Owned<GVariant, g_variant_unref>;
using OwnedError = Owned<GError, g_error_free>;
using OwnedProxy = Owned<GDBusProxy, g_object_unref>;
using OwnedConnection = Owned<GDBusConnection, g_object_unref>;
using OwnedContext = Owned<GMainContext, g_main_context_unref>;

} // namespace pvr

// A handle that a command has the service issue, given back when the command fails.
#pragma once

#include "service.h"

namespace pvrctl {

class IssuedHandle {
public:
    /// Throws when the service issues none. The call is one of the library's that issue handles.
    IssuedHandle(Service &service, int (*get)(int *handle));
    ~IssuedHandle();
    IssuedHandle(const IssuedHandle &) = delete;
    IssuedHandle &operator=(const IssuedHandle &) = delete;

    int number() const noexcept { return number_; }

    /// The command has succeeded: the handle is its user's.
    void keep() noexcept { is_kept_ = true; }

private:
    const Service &service_;
    int number_ = -1;
    bool is_kept_ = false;
};

} // namespace pvrctl

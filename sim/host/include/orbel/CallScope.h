// SPDX-License-Identifier: MIT
#pragma once

class CSI_base;

namespace orbel {

// Marks, for the lifetime of the scope, the driver that the current host thread is calling
// into, so that log lines written meanwhile are attributed to it. With a null driver the scope
// is a creation scope: it binds to the first driver object constructed within it.
class CallScope {
public:
    explicit CallScope(const CSI_base* driver);
    ~CallScope();
    CallScope(const CallScope&) = delete;
    CallScope& operator=(const CallScope&) = delete;

    // The driver bound to the innermost scope of this thread, or null.
    static const CSI_base* current();

private:
    friend class ::CSI_base;

    // Called by every CSI_base constructor: an unbound creation scope takes that driver.
    static void bindCreated(const CSI_base* driver);

    const CSI_base* previous_;
    bool previousCreating_;
};

}  // namespace orbel

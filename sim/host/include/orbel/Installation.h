// SPDX-License-Identifier: MIT
#pragma once

namespace orbel {

// Keeps something installed in the host while it lives: `install` as it is made, `uninstall` as
// it goes. Something that installs itself holds one as its last member: it is then installed only
// once the rest of it is made, and taken out before any of the rest is taken apart.
template <class Installed, void (*install)(Installed&), void (*uninstall)(Installed&)>
class Installation {
public:
    explicit Installation(Installed& installed) : installed_(installed) { install(installed_); }
    ~Installation() { uninstall(installed_); }
    Installation(const Installation&) = delete;
    Installation& operator=(const Installation&) = delete;

private:
    Installed& installed_;
};

}  // namespace orbel

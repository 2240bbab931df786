// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "DriverFactory.h"

namespace hosting {

// The driver library, loaded with dlopen the way the host runtime loads it, and used only
// through its factory CreateSiObject and the CSI_base interface of what it returns.
class DriverLibrary {
public:
    // Throws std::runtime_error when the library cannot be loaded or has no factory.
    explicit DriverLibrary(const std::string& path);

    DriverFactory factory() const { return factory_; }

    // The address of a symbol the library exports, or null.
    void* symbol(const char* name) const;

    const std::string& path() const { return path_; }

    // Where a built or installed program finds the driver: ../lib beside the program, else the
    // program's own directory.
    static std::string besideProgram();

private:
    std::string path_;
    void* handle_ = nullptr;
    DriverFactory factory_ = nullptr;
};

}  // namespace hosting

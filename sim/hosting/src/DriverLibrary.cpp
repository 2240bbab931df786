// SPDX-License-Identifier: MIT
#include "hosting/DriverLibrary.h"

#include <dlfcn.h>
#include <unistd.h>

#include <filesystem>
#include <stdexcept>

namespace hosting {

namespace {

constexpr const char* kLibraryName = "libplcnext_driver.so";

}  // namespace

// The library is never unloaded: it has registered its PLC operation handler with the runtime,
// which keeps calling it for the life of the process.
DriverLibrary::DriverLibrary(const std::string& path) : path_(path) {
    handle_ = dlopen(path.c_str(), RTLD_NOW);
    if (handle_ == nullptr) {
        throw std::runtime_error(std::string("cannot load the driver: ") + dlerror());
    }
    factory_ = reinterpret_cast<DriverFactory>(symbol(kDriverFactorySymbol));
    if (factory_ == nullptr) {
        throw std::runtime_error(path + " has no " + kDriverFactorySymbol);
    }
}

void* DriverLibrary::symbol(const char* name) const {
    return dlsym(handle_, name);
}

std::string DriverLibrary::besideProgram() {
    std::error_code error;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error) {
        return kLibraryName;
    }
    const std::filesystem::path directory = program.parent_path();
    const std::filesystem::path built = directory / ".." / "lib" / kLibraryName;
    if (std::filesystem::exists(built, error)) {
        return built.lexically_normal().string();
    }
    return (directory / kLibraryName).string();
}

}  // namespace hosting

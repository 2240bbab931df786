// SPDX-License-Identifier: MIT
#include "axlsim/base/CaughtException.h"

#include <cxxabi.h>

#include <cstdlib>
#include <exception>
#include <memory>
#include <typeinfo>

namespace axlsim {

namespace {

std::string demangled(const char* name) {
    int status = 0;
    std::unique_ptr<char, decltype(&std::free)> text(
        abi::__cxa_demangle(name, nullptr, nullptr, &status), &std::free);
    return status == 0 && text != nullptr ? std::string(text.get()) : std::string(name);
}

}  // namespace

CaughtException CaughtException::current() {
    CaughtException caught;
    const std::type_info* type = abi::__cxa_current_exception_type();
    caught.type = type != nullptr ? demangled(type->name()) : "unknown";
    try {
        throw;
    } catch (const std::exception& exception) {
        caught.what = exception.what();
    } catch (...) {
    }
    return caught;
}

}  // namespace axlsim

// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "axlsim/configuration/ConfigError.h"

namespace axlsimtest {

// The error that reading the text gives; a failure of the test, and an empty error, when it gives
// none.
template <class Read>
axlsim::ConfigError readError(Read read, const std::string& text) {
    try {
        read(text);
    } catch (const axlsim::ConfigError& error) {
        return error;
    }
    ADD_FAILURE() << "no error for " << text;
    return axlsim::ConfigError("", "", "");
}

}  // namespace axlsimtest

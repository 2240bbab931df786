// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <ostream>
#include <string>
#include <variant>

#include "axlsim/render/OutputSink.h"

namespace axlsim {

// A file that a run writes as it goes (the VCD, the report), opened before the run.
class OutputFile {
public:
    // The file, emptied; or the errno of open() when it cannot be written.
    static std::variant<std::unique_ptr<OutputFile>, int> open(const std::string& path);

    OutputFile(std::string path, int fd);

    std::ostream& stream() { return stream_; }

    // Once everything is written: false, and said on standard error, when it could not be.
    bool written();

private:
    std::string path_;
    OutputSink sink_;
    std::ostream stream_;
};

}  // namespace axlsim

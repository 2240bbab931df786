// SPDX-License-Identifier: MIT
#include "axlsim/render/OutputFile.h"

#include <cstring>
#include <iostream>

namespace axlsim {

std::variant<std::unique_ptr<OutputFile>, int> OutputFile::open(const std::string& path) {
    int fd = -1;
    if (const int error = openForWriting(path, fd); error != 0) {
        return error;
    }
    return std::make_unique<OutputFile>(path, fd);
}

OutputFile::OutputFile(std::string path, int fd)
    : path_(std::move(path)), sink_(fd, true), stream_(&sink_) {}

bool OutputFile::written() {
    if (sink_.flush()) {
        return true;
    }
    std::cerr << "axlsim: cannot write " << path_ << ": " << std::strerror(sink_.error()) << '\n';
    return false;
}

}  // namespace axlsim

// SPDX-License-Identifier: MIT
#include "FrameLayout.h"

namespace vplc {

namespace {

constexpr std::string_view kInBufferId = "1:IN";
constexpr std::string_view kOutBufferId = "1:OUT";

std::size_t evenFrom(std::size_t offset) {
    return offset + offset % 2;
}

}  // namespace

std::string_view FrameLayout::bufferId(Frame frame) {
    return frame == Frame::In ? kInBufferId : kOutBufferId;
}

std::optional<Frame> FrameLayout::frameOf(std::string_view bufferId) {
    if (bufferId == kInBufferId) {
        return Frame::In;
    }
    if (bufferId == kOutBufferId) {
        return Frame::Out;
    }
    return std::nullopt;
}

std::string FrameLayout::variableName(int position, std::string_view port) {
    return std::string(kIoSystem) + "/" + std::to_string(position - 1) + ".~" + std::string(port);
}

FrameLayout::FrameLayout(const std::vector<TerminalModule>& modules) {
    int position = 1;
    for (const TerminalModule& module : modules) {
        const std::size_t inOffset = evenFrom(in_.size);
        in_.offsets.push_back(inOffset);
        in_.size = inOffset + module.inputSize();
        in_.variables.emplace(variableName(position, module.inputPort()), inOffset);

        const std::size_t outOffset = evenFrom(out_.size);
        out_.offsets.push_back(outOffset);
        out_.size = outOffset + module.outputSize();
        out_.variables.emplace(variableName(position, module.outputPort()), outOffset);
        ++position;
    }
}

std::size_t FrameLayout::size(Frame frame) const {
    return layout(frame).size;
}

std::size_t FrameLayout::offset(Frame frame, int position) const {
    return layout(frame).offsets.at(static_cast<std::size_t>(position - 1));
}

std::optional<std::size_t> FrameLayout::variableOffset(Frame frame, std::string_view name) const {
    const auto& variables = layout(frame).variables;
    auto variable = variables.find(name);
    if (variable == variables.end()) {
        return std::nullopt;
    }
    return variable->second;
}

const FrameLayout::Layout& FrameLayout::layout(Frame frame) const {
    return frame == Frame::In ? in_ : out_;
}

}  // namespace vplc

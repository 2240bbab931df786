// SPDX-License-Identifier: MIT
#include "vplc/Station.h"

#include <stdexcept>
#include <string>
#include <utility>

#include "Bus.h"
#include "Controller.h"
#include "FrameLayout.h"
#include "GdsFrame.h"
#include "GdsFrameLock.h"
#include "HostQueries.h"
#include "vplc/PlatformCalls.h"

namespace vplc {

namespace {

// Runs `action` on the frame's data under the frame's lock, or under the lock that the calling
// thread already holds on it.
template <class Action>
auto withFrame(const Bus& bus, Frame which, Access access, Action action) {
    const std::shared_ptr<GdsFrame>& frame = bus.frame(which);
    const std::optional<Access> held = frame->heldByCaller();
    if (held) {
        if (access == Access::Write && *held == Access::Read) {
            throw std::logic_error("The calling thread holds a read lock on buffer '" +
                                   std::string(frame->bufferId()) + "' and cannot write to it");
        }
        return action(*frame);
    }
    GdsFrameLock frameLock(*frame, access);
    return action(*frame);
}

std::vector<uint8_t> bytesOf(GdsFrame& frame, std::size_t offset, std::size_t count) {
    const auto* first = reinterpret_cast<const uint8_t*>(frame.data()) + offset;
    return std::vector<uint8_t>(first, first + count);
}

}  // namespace

Station::Builder& Station::Builder::module(Module module) {
    modules_.push_back(module);
    return *this;
}

Station Station::Builder::build() {
    return Station(modules_);
}

Station::Builder Station::builder() {
    return Builder();
}

Station Station::of(std::initializer_list<Module> modules) {
    return Station(std::vector(modules));
}

Station::Station(std::vector<Module> modules) {
    Controller& controller = Controller::instance();
    auto lock = controller.lock();
    auto bus = std::make_unique<Bus>(modules, controller.nextBusSerial());
    controller.install(*bus);
    bus_ = std::move(bus);
}

Station::Station(Station&& other) noexcept : bus_(std::move(other.bus_)) {}

Station::~Station() {
    if (!bus_) {
        return;
    }
    Controller& controller = Controller::instance();
    auto lock = controller.lock();
    controller.uninstall(*bus_);
    bus_.reset();
}

std::vector<Module> Station::modules() const {
    return bus_->modules();
}

void Station::setDigitalInput(int position, int pin, bool on) {
    auto lock = Controller::instance().lock();
    bus_->module(position).setDigitalInput(pin, on);
}

void Station::setDigitalInputs(int position, uint8_t byte) {
    auto lock = Controller::instance().lock();
    bus_->module(position).setDigitalInputs(byte);
}

void Station::setAnalogInput(int position, int channel, uint16_t raw) {
    auto lock = Controller::instance().lock();
    bus_->module(position).setAnalogInput(channel, raw);
}

uint8_t Station::digitalOutputsOnBus(int position) const {
    auto lock = Controller::instance().lock();
    return bus_->module(position).digitalOutputs();
}

uint16_t Station::analogOutputOnBus(int position, int channel) const {
    auto lock = Controller::instance().lock();
    return bus_->module(position).analogOutput(channel);
}

std::vector<uint8_t> Station::outputsOnBus(int position) const {
    auto lock = Controller::instance().lock();
    return bus_->module(position).outputs();
}

std::vector<uint8_t> Station::inputsOnBus(int position) const {
    auto lock = Controller::instance().lock();
    return bus_->module(position).inputs();
}

void Station::onInputCopy(std::function<void()> hook) {
    if (const int running = hostQueries::runningDriverThreads(); running > 0) {
        throw std::logic_error(
            "vplc::Station::onInputCopy: " + std::to_string(running) +
            (running == 1 ? " driver thread is" : " driver threads are") +
            " running and may be calling the input-copy hook; set the hook before any driver "
            "thread starts and remove it after every driver thread has ended");
    }
    auto lock = Controller::instance().lock();
    bus_->setInputCopyHook(std::move(hook));
}

std::vector<uint8_t> Station::frameBytes(Frame frame) const {
    return withFrame(*bus_, frame, Access::Read,
                     [](GdsFrame& data) { return bytesOf(data, 0, data.size()); });
}

std::vector<uint8_t> Station::inputsInGds(int position) const {
    const std::size_t size = bus_->module(position).inputSize();
    const std::size_t offset = bus_->layout().offset(Frame::In, position);
    return withFrame(*bus_, Frame::In, Access::Read,
                     [&](GdsFrame& data) { return bytesOf(data, offset, size); });
}

std::vector<uint8_t> Station::outputsInGds(int position) const {
    const std::size_t size = bus_->module(position).outputSize();
    const std::size_t offset = bus_->layout().offset(Frame::Out, position);
    return withFrame(*bus_, Frame::Out, Access::Read,
                     [&](GdsFrame& data) { return bytesOf(data, offset, size); });
}

void Station::setFrameBytes(Frame frame, std::size_t offset, std::vector<uint8_t> bytes) {
    const std::size_t size = bus_->layout().size(frame);
    if (offset > size || bytes.size() > size - offset) {
        throw std::out_of_range("Bytes " + std::to_string(offset) + " to " +
                                std::to_string(offset + bytes.size()) + " lie outside buffer '" +
                                std::string(FrameLayout::bufferId(frame)) + "' of " +
                                std::to_string(size) + " bytes");
    }
    withFrame(*bus_, frame, Access::Write, [&](GdsFrame& data) {
        std::copy(bytes.begin(), bytes.end(), data.data() + offset);
        return 0;
    });
}

std::optional<std::size_t> Station::variableOffset(std::string_view variableName) const {
    if (auto offset = bus_->layout().variableOffset(Frame::In, variableName)) {
        return offset;
    }
    return bus_->layout().variableOffset(Frame::Out, variableName);
}

int Station::calls(std::string_view function) const {
    return vplc::calls(function);
}

void Station::inject(std::string_view function, Fault fault) {
    vplc::inject(function, std::move(fault));
}

void Station::clearFaults() {
    vplc::clearFaults();
}

void Station::resetCounters() {
    resetCallCounts();
    auto lock = Controller::instance().lock();
    bus_->counters().unmatchedEnds = 0;
    bus_->counters().nestedBegins = 0;
}

int Station::buffersHeld() const {
    auto lock = Controller::instance().lock();
    return bus_->counters().buffersHeld;
}

int Station::unmatchedEnds() const {
    auto lock = Controller::instance().lock();
    return bus_->counters().unmatchedEnds;
}

int Station::nestedBegins() const {
    auto lock = Controller::instance().lock();
    return bus_->counters().nestedBegins;
}

int Station::openLocks() const {
    auto lock = Controller::instance().lock();
    return bus_->openLocks();
}

}  // namespace vplc

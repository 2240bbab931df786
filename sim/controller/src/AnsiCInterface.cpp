#include "vplc/AnsiCInterface.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <thread>

#include "Bus.h"
#include "Controller.h"
#include "FrameLayout.h"
#include "GdsFrame.h"
#include "GdsFrameLock.h"
#include "LastError.h"
#include "orbel/PauseClock.h"
#include "vplc/VirtualClock.h"

namespace vplc::ansic {

namespace {

constexpr std::string_view kNoBus = "No Axioline bus is running";

bool fail(std::string_view text) {
    lastError::set(text);
    return false;
}

std::string quoted(std::string_view text) {
    return std::string("'").append(text).append("'");
}

std::string nullArgument(std::string_view function, std::string_view argument) {
    return std::string(function) + ": " + std::string(argument) + " is null";
}

// The frame that a handle names on the running bus, or null with the last error set. The caller
// holds the controller's lock.
std::shared_ptr<GdsFrame> frameOf(Controller& controller, std::string_view function,
                                  const TGdsBuffer* pBuffer) {
    if (pBuffer == nullptr) {
        fail(nullArgument(function, "pBuffer"));
        return nullptr;
    }
    const TGdsBuffer* handle = controller.handles().find(pBuffer);
    if (handle == nullptr) {
        fail(std::string(function) + ": unknown GDS buffer handle");
        return nullptr;
    }
    // The buffer's name is only put together for a failure: this runs on every Begin and End.
    if (handle->released) {
        fail("GDS buffer " + quoted(FrameLayout::bufferId(handle->frame)) + " has been released");
        return nullptr;
    }
    Bus* bus = controller.bus();
    if (bus == nullptr) {
        fail(kNoBus);
        return nullptr;
    }
    if (bus->serial() != handle->busSerial) {
        fail("GDS buffer " + quoted(FrameLayout::bufferId(handle->frame)) +
             " belongs to an Axioline bus that is no longer running");
        return nullptr;
    }
    return bus->frame(handle->frame);
}

bool begin(std::string_view function, TGdsBuffer* pBuffer, char** ppData, Access access) {
    Controller& controller = Controller::instance();
    const auto self = std::this_thread::get_id();
    std::shared_ptr<GdsFrame> frame;
    {
        auto lock = controller.lock();
        if (controller.dueFault(function))
            return false;
        frame = frameOf(controller, function, pBuffer);
        if (frame == nullptr)
            return false;
        if (ppData == nullptr)
            return fail(nullArgument(function, "ppData"));
        if (frame->heldBy(self)) {
            ++controller.bus()->counters().nestedBegins;
            return fail(std::string(function) + ": the calling thread already holds a lock on " +
                        "buffer " + quoted(frame->bufferId()));
        }
    }
    frame->lock(access);
    auto lock = controller.lock();
    if (frame->retired()) {
        frame->unlock(access);
        return fail(kNoBus);
    }
    try {
        frame->addHolder(self, access);
    } catch (...) {
        // Out of memory: the lock must not outlive the failed call.
        frame->unlock(access);
        throw;
    }
    *ppData = frame->data();
    return true;
}

bool end(std::string_view function, TGdsBuffer* pBuffer, Access access) {
    Controller& controller = Controller::instance();
    const auto self = std::this_thread::get_id();
    auto lock = controller.lock();
    if (controller.dueFault(function))
        return false;
    std::shared_ptr<GdsFrame> frame = frameOf(controller, function, pBuffer);
    if (frame == nullptr)
        return false;
    if (frame->heldBy(self) != access) {
        ++controller.bus()->counters().unmatchedEnds;
        return fail(std::string(function) + ": the calling thread holds no " +
                    (access == Access::Read ? "read" : "write") + " lock on buffer " +
                    quoted(frame->bufferId()));
    }
    frame->removeHolder(self);
    frame->unlock(access);
    return true;
}

bool busCycle(std::string_view function, Frame which, Access access, void (Bus::*copy)()) {
    Controller& controller = Controller::instance();
    std::shared_ptr<GdsFrame> frame;
    {
        auto lock = controller.lock();
        if (controller.dueFault(function))
            return false;
        if (controller.bus() == nullptr)
            return fail(kNoBus);
        frame = controller.bus()->frame(which);
        if (frame->heldBy(std::this_thread::get_id()))
            return fail(std::string(function) + ": the calling thread holds a lock on buffer " +
                        quoted(frame->bufferId()));
    }
    GdsFrameLock frameLock(*frame, access);
    auto lock = controller.lock();
    if (frame->retired())
        return fail(kNoBus);
    (controller.bus()->*copy)();
    return true;
}

}  // namespace

void getLastError(char* pBuffer, std::size_t bufferSize) {
    Controller& controller = Controller::instance();
    {
        // A due fault replaces the text handed out by its own.
        auto lock = controller.lock();
        controller.dueFault("ArpPlc_GetLastError");
    }
    lastError::take(pBuffer, bufferSize);
}

bool getBufferPtrByBufferID(const char* ioSystemName, const char* bufferId, TGdsBuffer** ppBuffer) {
    constexpr std::string_view kFunction = "ArpPlcIo_GetBufferPtrByBufferID";
    Controller& controller = Controller::instance();
    auto lock = controller.lock();
    if (controller.dueFault(kFunction))
        return false;
    if (ioSystemName == nullptr)
        return fail(nullArgument(kFunction, "ioSystemName"));
    if (bufferId == nullptr)
        return fail(nullArgument(kFunction, "bufferId"));
    if (ppBuffer == nullptr)
        return fail(nullArgument(kFunction, "ppBuffer"));
    Bus* bus = controller.bus();
    if (bus == nullptr)
        return fail(kNoBus);
    if (ioSystemName != FrameLayout::kIoSystem)
        return fail("I/O system " + quoted(ioSystemName) + " does not exist");
    const std::optional<Frame> frame = FrameLayout::frameOf(bufferId);
    if (!frame)
        return fail("Buffer " + quoted(bufferId) + " does not exist in I/O system " +
                    quoted(FrameLayout::kIoSystem));
    *ppBuffer = controller.handles().issue(bus->serial(), *frame);
    ++bus->counters().buffersHeld;
    return true;
}

bool releaseGdsBuffer(TGdsBuffer* pBuffer) {
    constexpr std::string_view kFunction = "ArpPlcIo_ReleaseGdsBuffer";
    Controller& controller = Controller::instance();
    auto lock = controller.lock();
    if (controller.dueFault(kFunction))
        return false;
    if (frameOf(controller, kFunction, pBuffer) == nullptr)
        return false;
    controller.handles().find(pBuffer)->released = true;
    --controller.bus()->counters().buffersHeld;
    return true;
}

bool getVariableOffset(TGdsBuffer* pBuffer, const char* variableName, std::size_t* pOffset) {
    constexpr std::string_view kFunction = "ArpPlcGds_GetVariableOffset";
    Controller& controller = Controller::instance();
    auto lock = controller.lock();
    if (controller.dueFault(kFunction))
        return false;
    std::shared_ptr<GdsFrame> frame = frameOf(controller, kFunction, pBuffer);
    if (frame == nullptr)
        return false;
    if (variableName == nullptr)
        return fail(nullArgument(kFunction, "variableName"));
    if (pOffset == nullptr)
        return fail(nullArgument(kFunction, "pOffset"));
    const std::optional<std::size_t> offset =
        controller.bus()->layout().variableOffset(frame->which(), variableName);
    if (!offset)
        return fail("Variable " + quoted(variableName) + " does not exist in buffer " +
                    quoted(frame->bufferId()));
    *pOffset = *offset;
    return true;
}

bool beginRead(TGdsBuffer* pBuffer, char** ppData) {
    return begin("ArpPlcGds_BeginRead", pBuffer, ppData, Access::Read);
}

bool endRead(TGdsBuffer* pBuffer) {
    return end("ArpPlcGds_EndRead", pBuffer, Access::Read);
}

bool beginWrite(TGdsBuffer* pBuffer, char** ppData) {
    return begin("ArpPlcGds_BeginWrite", pBuffer, ppData, Access::Write);
}

bool endWrite(TGdsBuffer* pBuffer) {
    return end("ArpPlcGds_EndWrite", pBuffer, Access::Write);
}

bool readFromAxioToGds(unsigned long) {
    if (auto* clock = dynamic_cast<VirtualClock*>(orbel::pauseClock()))
        clock->atScanStart();
    const std::function<void()>* hook = nullptr;
    {
        auto lock = Controller::instance().lock();
        if (Bus* bus = Controller::instance().bus())
            hook = &bus->inputCopyHook();
    }
    if (hook != nullptr && *hook)
        (*hook)();
    return busCycle("ArpPlcAxio_ReadFromAxioToGds", Frame::In, Access::Write,
                    &Bus::copyInputsToGds);
}

bool writeFromGdsToAxio(unsigned long) {
    return busCycle("ArpPlcAxio_WriteFromGdsToAxio", Frame::Out, Access::Read,
                    &Bus::copyGdsToOutputs);
}

void setHandler(ArpPlcDomainHandler handler) {
    Controller& controller = Controller::instance();
    auto lock = controller.lock();
    if (!controller.dueFault("ArpPlcDomain_SetHandler"))
        controller.setHandler(handler);
}

}  // namespace vplc::ansic

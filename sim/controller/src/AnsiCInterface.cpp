// SPDX-License-Identifier: MIT
#include "vplc/AnsiCInterface.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "Bus.h"
#include "Controller.h"
#include "FrameLayout.h"
#include "GdsFrame.h"
#include "HostQueries.h"
#include "LastError.h"

namespace vplc::ansic {

namespace {

constexpr std::string_view kNoBus = "No Axioline bus is running";

// A platform function, with its call counter looked up once for its call site.
struct PlatformFunction {
    explicit PlatformFunction(std::string_view functionName)
        : name(functionName), slot(Controller::instance().calls().slot(functionName)) {}

    std::string_view name;
    CallRegistry::Slot& slot;
};

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
// holds the controller's lock, shared or exclusive, while it uses the result.
const std::shared_ptr<GdsFrame>* frameOf(Controller& controller, std::string_view function,
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
    return &bus->frame(handle->frame);
}

// Takes the frame's lock. Mostly it is free and is taken at once, under the controller's shared
// lock, which keeps the bus in place meanwhile. Otherwise the controller's lock is let go while
// the call waits (the frame kept alive by a reference of its own), and the call fails if the bus
// was removed in the meantime: false, with the frame unlocked and the last error set. On true the
// shared lock is held and the frame's bus is still installed, so `frame` is still the bus's.
bool lockFrame(std::shared_lock<std::shared_mutex>& lock, const std::shared_ptr<GdsFrame>& frame,
               Access access) {
    if (frame->tryLock(access)) {
        return true;
    }
    const std::shared_ptr<GdsFrame> kept = frame;
    lock.unlock();
    kept->lock(access);
    lock.lock();
    if (kept->retired()) {
        kept->unlock(access);
        return fail(kNoBus);
    }
    return true;
}

// A call on a frame buffer, under the controller's shared lock: counted (failing if a fault is
// due), then `onFrame(controller, lock, frame)` with its frame as frameOf finds it.
template <class OnFrame>
bool onCalledFrame(const PlatformFunction& call, const TGdsBuffer* pBuffer, OnFrame onFrame) {
    Controller& controller = Controller::instance();
    auto lock = controller.share();
    if (controller.dueFault(call.slot, call.name)) {
        return false;
    }
    const std::shared_ptr<GdsFrame>* found = frameOf(controller, call.name, pBuffer);
    if (found == nullptr) {
        return false;
    }
    return onFrame(controller, lock, *found);
}

// Begin and End of either access, each platform function with its counter looked up once.
const PlatformFunction& beginCall(Access access) {
    static const PlatformFunction read("ArpPlcGds_BeginRead");
    static const PlatformFunction write("ArpPlcGds_BeginWrite");
    return access == Access::Read ? read : write;
}

const PlatformFunction& endCall(Access access) {
    static const PlatformFunction read("ArpPlcGds_EndRead");
    static const PlatformFunction write("ArpPlcGds_EndWrite");
    return access == Access::Read ? read : write;
}

bool begin(TGdsBuffer* pBuffer, char** ppData, Access access) {
    const PlatformFunction& call = beginCall(access);
    return onCalledFrame(
        call, pBuffer,
        [&](Controller& controller, auto& lock, const std::shared_ptr<GdsFrame>& found) {
            GdsFrame& frame = *found;
            if (ppData == nullptr) {
                return fail(nullArgument(call.name, "ppData"));
            }
            if (frame.heldByCaller()) {
                ++controller.bus()->counters().nestedBegins;
                return fail(std::string(call.name) +
                            ": the calling thread already holds a lock on buffer " +
                            quoted(frame.bufferId()));
            }
            if (!lockFrame(lock, found, access)) {
                return false;
            }
            try {
                frame.addCaller(access);
            } catch (...) {
                // Out of memory: the lock must not outlive the failed call.
                frame.unlock(access);
                throw;
            }
            *ppData = frame.data();
            return true;
        });
}

bool end(TGdsBuffer* pBuffer, Access access) {
    const PlatformFunction& call = endCall(access);
    return onCalledFrame(
        call, pBuffer, [&](Controller& controller, auto&, const std::shared_ptr<GdsFrame>& found) {
            GdsFrame& frame = *found;
            if (frame.heldByCaller() != access) {
                ++controller.bus()->counters().unmatchedEnds;
                return fail(std::string(call.name) + ": the calling thread holds no " +
                            (access == Access::Read ? "read" : "write") + " lock on buffer " +
                            quoted(frame.bufferId()));
            }
            frame.removeCaller();
            frame.unlock(access);
            return true;
        });
}

bool busCycle(const PlatformFunction& call, Frame which, Access access, void (Bus::*copy)()) {
    const std::string_view function = call.name;
    Controller& controller = Controller::instance();
    auto lock = controller.share();
    if (controller.dueFault(call.slot, function)) {
        return false;
    }
    if (controller.bus() == nullptr) {
        return fail(kNoBus);
    }
    const std::shared_ptr<GdsFrame>& frame = controller.bus()->frame(which);
    if (frame->heldByCaller()) {
        return fail(std::string(function) + ": the calling thread holds a lock on buffer " +
                    quoted(frame->bufferId()));
    }
    if (!lockFrame(lock, frame, access)) {
        return false;
    }
    (controller.bus()->*copy)();
    frame->unlock(access);
    return true;
}

}  // namespace

void getLastError(char* pBuffer, std::size_t bufferSize) {
    static const PlatformFunction call("ArpPlc_GetLastError");
    Controller& controller = Controller::instance();
    {
        // A due fault replaces the text handed out by its own.
        auto lock = controller.share();
        controller.dueFault(call.slot, call.name);
    }
    lastError::take(pBuffer, bufferSize);
}

bool getBufferPtrByBufferID(const char* ioSystemName, const char* bufferId, TGdsBuffer** ppBuffer) {
    constexpr std::string_view kFunction = "ArpPlcIo_GetBufferPtrByBufferID";
    Controller& controller = Controller::instance();
    auto lock = controller.lock();
    if (controller.dueFault(kFunction)) {
        return false;
    }
    if (ioSystemName == nullptr) {
        return fail(nullArgument(kFunction, "ioSystemName"));
    }
    if (bufferId == nullptr) {
        return fail(nullArgument(kFunction, "bufferId"));
    }
    if (ppBuffer == nullptr) {
        return fail(nullArgument(kFunction, "ppBuffer"));
    }
    Bus* bus = controller.bus();
    if (bus == nullptr) {
        return fail(kNoBus);
    }
    if (ioSystemName != FrameLayout::kIoSystem) {
        return fail("I/O system " + quoted(ioSystemName) + " does not exist");
    }
    const std::optional<Frame> frame = FrameLayout::frameOf(bufferId);
    if (!frame) {
        return fail("Buffer " + quoted(bufferId) + " does not exist in I/O system " +
                    quoted(FrameLayout::kIoSystem));
    }
    *ppBuffer = controller.handles().issue(bus->serial(), *frame);
    ++bus->counters().buffersHeld;
    return true;
}

bool releaseGdsBuffer(TGdsBuffer* pBuffer) {
    constexpr std::string_view kFunction = "ArpPlcIo_ReleaseGdsBuffer";
    Controller& controller = Controller::instance();
    auto lock = controller.lock();
    if (controller.dueFault(kFunction)) {
        return false;
    }
    if (frameOf(controller, kFunction, pBuffer) == nullptr) {
        return false;
    }
    controller.handles().find(pBuffer)->released = true;
    --controller.bus()->counters().buffersHeld;
    return true;
}

bool getVariableOffset(TGdsBuffer* pBuffer, const char* variableName, std::size_t* pOffset) {
    constexpr std::string_view kFunction = "ArpPlcGds_GetVariableOffset";
    Controller& controller = Controller::instance();
    auto lock = controller.lock();
    if (controller.dueFault(kFunction)) {
        return false;
    }
    const std::shared_ptr<GdsFrame>* found = frameOf(controller, kFunction, pBuffer);
    if (found == nullptr) {
        return false;
    }
    const GdsFrame* frame = found->get();
    if (variableName == nullptr) {
        return fail(nullArgument(kFunction, "variableName"));
    }
    if (pOffset == nullptr) {
        return fail(nullArgument(kFunction, "pOffset"));
    }
    const std::optional<std::size_t> offset =
        controller.bus()->layout().variableOffset(frame->which(), variableName);
    if (!offset) {
        return fail("Variable " + quoted(variableName) + " does not exist in buffer " +
                    quoted(frame->bufferId()));
    }
    *pOffset = *offset;
    return true;
}

bool beginRead(TGdsBuffer* pBuffer, char** ppData) {
    return begin(pBuffer, ppData, Access::Read);
}

bool endRead(TGdsBuffer* pBuffer) {
    return end(pBuffer, Access::Read);
}

bool beginWrite(TGdsBuffer* pBuffer, char** ppData) {
    return begin(pBuffer, ppData, Access::Write);
}

bool endWrite(TGdsBuffer* pBuffer) {
    return end(pBuffer, Access::Write);
}

bool readFromAxioToGds(unsigned long) {
    static const PlatformFunction call("ArpPlcAxio_ReadFromAxioToGds");
    hostQueries::scanStarting();
    // A copy, taken under the lock: the bus that holds the hook may be removed, or the hook
    // changed by a thread that is no driver's, once the lock is let go. The hook is called
    // without the lock, since it sets the station's inputs, which takes the lock exclusively.
    std::function<void()> hook;
    {
        auto share = Controller::instance().share();
        if (Bus* bus = Controller::instance().bus()) {
            hook = bus->inputCopyHook();
        }
    }
    if (hook) {
        hook();
    }
    return busCycle(call, Frame::In, Access::Write, &Bus::copyInputsToGds);
}

bool writeFromGdsToAxio(unsigned long) {
    static const PlatformFunction call("ArpPlcAxio_WriteFromGdsToAxio");
    return busCycle(call, Frame::Out, Access::Read, &Bus::copyGdsToOutputs);
}

void setHandler(ArpPlcDomainHandler handler) {
    Controller& controller = Controller::instance();
    auto lock = controller.lock();
    if (!controller.dueFault("ArpPlcDomain_SetHandler")) {
        controller.setHandler(handler);
    }
}

}  // namespace vplc::ansic

// SPDX-License-Identifier: MIT
// A test double of a terminal module that writes its output byte straight into the GDS frame,
// without the frame's lock, from two threads. Each thread also makes platform calls, each on a
// frame of its own (the scan's copy of the inputs, the event's copy of the outputs).
// ThreadSanitizer must report the race: nothing in the virtual controller may order the two
// threads. With the argument "locked" the module brackets its writes with
// ArpPlcGds_BeginWrite/EndWrite, and there is no race.

#include <atomic>
#include <cstring>
#include <thread>

#include "Arp/Plc/AnsiC/Gds/DataLayout.h"
#include "Arp/Plc/AnsiC/Io/Axio.h"
#include "GdsAccess.h"
#include "vplc/Station.h"

namespace {

class RacyModule {
public:
    RacyModule(TGdsBuffer* out, bool locked) : out_(out), locked_(locked) {
        ArpPlcGds_BeginWrite(out_, &data_);
        ArpPlcGds_EndWrite(out_);
    }

    // Not inlined, so that both stacks of the race name it whatever the optimiser does.
    __attribute__((noinline)) void writeOutputs(char byte) {
        if (!locked_) {
            data_[2] = byte;
            return;
        }
        char* data = nullptr;
        ArpPlcGds_BeginWrite(out_, &data);
        data[2] = byte;
        ArpPlcGds_EndWrite(out_);
    }

private:
    TGdsBuffer* out_;
    bool locked_;
    char* data_ = nullptr;
};

}  // namespace

int main(int argc, char** argv) {
    const bool locked = argc > 1 && std::strcmp(argv[1], "locked") == 0;
    auto station = vplc::Station::of({vplc::Module::DI8_DO8});
    TGdsBuffer* out = controllertest::acquire("1:OUT");
    RacyModule module(out, locked);
    // Each call site's first call sets up its bookkeeping; that is done here, before the threads.
    ArpPlcAxio_ReadFromAxioToGds(0);
    ArpPlcAxio_WriteFromGdsToAxio(0);

    // Relaxed: the flag orders the two threads in time without ordering them for the sanitizer.
    std::atomic<bool> firstDone{false};
    std::thread first([&] {
        ArpPlcAxio_ReadFromAxioToGds(0);
        module.writeOutputs(1);
        ArpPlcAxio_ReadFromAxioToGds(0);
        firstDone.store(true, std::memory_order_relaxed);
    });
    std::thread second([&] {
        while (!firstDone.load(std::memory_order_relaxed)) {
            std::this_thread::yield();
        }
        ArpPlcAxio_WriteFromGdsToAxio(0);
        module.writeOutputs(2);
        ArpPlcAxio_WriteFromGdsToAxio(0);
    });
    first.join();
    second.join();
    return 0;
}

// SPDX-License-Identifier: MIT
#include "Steps.h"

#include <cstddef>
#include <stdexcept>
#include <utility>

#include <gtest/gtest.h>

#include "Arp/System/Commons/Exceptions/Exceptions.h"
#include "Scenario.h"
#include "hosting/FloatBytes.h"

namespace faultmatrix {

using hosting::floatBytes;
using vplc::Fault;
using vplc::Runtime;

namespace {

// The one check of a reading: `read` taken from the row's driver equals `expected`.
Step reads(const char* what, std::function<int(Scenario&)> read, int expected) {
    return [what, read = std::move(read), expected](Scenario& s) {
        EXPECT_EQ(read(s), expected) << what;
    };
}

void armRowFailure(Scenario& s, const Fault& fault) {
    s.station().inject(s.row().fault.call, fault);
}

// The exception a restart event lets out, as "type: message", or "" when it lets none out.
std::string restartFailure(Scenario& s) {
    try {
        s.rig().deliver(kRestart, {1});
    } catch (const Arp::System::Commons::ArgumentException& e) {
        return "ArgumentException: " + e.GetMessage();
    } catch (const Arp::System::Commons::InvalidOperationException& e) {
        return "InvalidOperationException: " + e.GetMessage();
    } catch (const Arp::System::Commons::InvalidCastException& e) {
        return "InvalidCastException: " + e.GetMessage();
    } catch (const Arp::Exception& e) {
        return "Arp::Exception: " + e.GetMessage();
    } catch (const std::logic_error&) {
        return "std::logic_error";
    }
    return "";
}

}  // namespace

void createDigital(Scenario& s) {
    s.rig().create(digitalRecords());
    s.station().setDigitalInput(DriverRig::kDigitalPosition, 3, true);
}

void createAnalog(Scenario& s) {
    s.rig().create(analogRecords());
    s.station().setAnalogInput(DriverRig::kAnalogPosition, 0, 30000);
}

void startDigital(Scenario& s) {
    createDigital(s);
    initialize(s);
    passGate(s);
}

void startAnalog(Scenario& s) {
    createAnalog(s);
    initialize(s);
    passGate(s);
}

void initialize(Scenario& s) {
    s.rig().initialize();
}

void passGate(Scenario& s) {
    s.rig().passGate();
}

void destroy(Scenario& s) {
    s.rig().destroy();
}

void failNext(Scenario& s) {
    armRowFailure(s, Fault::next(s.row().fault.error));
}

void failTwice(Scenario& s) {
    armRowFailure(s, Fault::times(2, s.row().fault.error));
}

Step fail(const char* function, const char* error) {
    return [function, error](Scenario& s) { s.station().inject(function, Fault::next(error)); };
}

Step digitalInput(bool on) {
    return [on](Scenario& s) { s.station().setDigitalInput(DriverRig::kDigitalPosition, 3, on); };
}

Step analogInput(uint16_t word) {
    return [word](Scenario& s) { s.station().setAnalogInput(DriverRig::kAnalogPosition, 0, word); };
}

Step deliver(uint32_t id, uint8_t value) {
    return [id, value](Scenario& s) { s.rig().deliver(id, {value}); };
}

Step deliverFloat(uint32_t id, float value) {
    return [id, value](Scenario& s) { s.rig().deliverFloat(id, value); };
}

Step serviceLookup(Runtime::Lookup mode) {
    return [mode](Scenario&) { Runtime::setServiceLookup(mode); };
}

void forgetPublished(Scenario& s) {
    s.takePublished();
}

Step published(Publications expected) {
    return [expected = std::move(expected)](Scenario& s) {
        EXPECT_EQ(s.takePublished(), expected) << "published";
    };
}

Step publishedDigital(uint8_t value) {
    return published({{kDigitalIn, {value}}});
}

Step publishedAnalog(float value) {
    return published({{kAnalogIn, floatBytes(value)}});
}

Step digitalOnBus(uint8_t expected) {
    return reads(
        "digital outputs on the bus",
        [](Scenario& s) { return s.station().digitalOutputsOnBus(DriverRig::kDigitalPosition); },
        expected);
}

Step digitalInGds(uint8_t expected) {
    return reads(
        "digital outputs in the GDS",
        [](Scenario& s) { return s.station().outputsInGds(DriverRig::kDigitalPosition).at(0); },
        expected);
}

Step analogOnBus(int channel, uint16_t expected) {
    return reads(
        "analog output on the bus",
        [channel](Scenario& s) {
            return s.station().analogOutputOnBus(DriverRig::kAnalogPosition, channel);
        },
        expected);
}

Step analogInGds(int channel, uint16_t expected) {
    return reads(
        "analog output in the GDS",
        [channel](Scenario& s) {
            const auto bytes = s.station().outputsInGds(DriverRig::kAnalogPosition);
            const auto at = static_cast<std::size_t>(2 * channel);
            return (bytes.at(at) << 8) | bytes.at(at + 1);
        },
        expected);
}

Step calls(const char* function, int expected) {
    return reads(
        function, [function](Scenario& s) { return s.station().calls(function); }, expected);
}

Step openLocks(int expected) {
    return reads(
        "open frame locks", [](Scenario& s) { return s.station().openLocks(); }, expected);
}

Step nestedBegins(int expected) {
    return reads(
        "nested Begins", [](Scenario& s) { return s.station().nestedBegins(); }, expected);
}

Step threadStarted(bool expected) {
    return reads(
        "driver thread started", [](Scenario& s) { return s.rig().threadStarted() ? 1 : 0; },
        expected ? 1 : 0);
}

Step restarts(int expected) {
    return reads(
        "device restarts", [](Scenario&) { return Runtime::restarts(); }, expected);
}

Step liveServices(int expected) {
    return reads(
        "live service objects", [](Scenario&) { return Runtime::liveServices(); }, expected);
}

Step markCalls(const char* function) {
    return [function](Scenario& s) { s.markCalls(function); };
}

Step callsSinceMark(const char* function, int expected) {
    return reads(
        function, [function](Scenario& s) { return s.callsSinceMark(function); }, expected);
}

Step restartThrows(std::string expected) {
    return [expected = std::move(expected)](Scenario& s) {
        EXPECT_EQ(restartFailure(s), expected) << "exception of a restart event";
    };
}

}  // namespace faultmatrix

// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <optional>
#include <stdexcept>
#include <vector>

#include "DriverFactory.h"
#include "SI_base.h"
#include "hosting/DriverConfig.h"
#include "hosting/DriverPtr.h"
#include "hosting/FloatBytes.h"
#include "hosting/HostCalls.h"
#include "orbel/CallScope.h"

namespace host = hosting::host;
using hosting::DriverConfig;

namespace {

// What the probe saw of one call from its host.
struct Seen {
    const CSI_base* scope = nullptr;
    bool throughReceiveEvent = false;
    uint32_t id = 0;
    uint32_t size = 0;
    std::optional<std::vector<uint8_t>> leastPayload;  // the first four bytes, if any
};

Seen inScope() {
    Seen call;
    call.scope = orbel::CallScope::current();
    return call;
}

// Everything the probes of a test saw, in order: the constructor, initialize, every event and
// the destructor each add one.
std::vector<Seen> seen;

// A driver of the host contract that notes the call scope each host call runs in.
class ProbeDriver : public CSI_base {
public:
    ProbeDriver(stSP_Params_t params, std::map<unsigned, stMappingElem_t> mappings,
                std::map<unsigned, stServiceParams_t> services)
        : CSI_base(std::move(params), std::move(mappings), std::move(services)) {
        seen.push_back(inScope());
        if (m_spParams.mapParams.count("Fail") != 0) {
            throw std::invalid_argument("stoi");
        }
    }
    ~ProbeDriver() override { seen.push_back(inScope()); }

    void receiveEvent(const stEventParams_t& event) override {
        entering_ = true;
        CSI_base::receiveEvent(event);
    }
    void onReceiveEvent(stEventParams_t event) override {
        Seen call{orbel::CallScope::current(), entering_, event.nId, event.nSize, std::nullopt};
        if (event.pData != nullptr) {
            call.leastPayload = std::vector<uint8_t>(event.pData, event.pData + 4);
        }
        seen.push_back(call);
        entering_ = false;
    }
    void initialize() override { seen.push_back(inScope()); }
    void run() override {}

private:
    bool entering_ = false;
};

CSI_base* makeProbe(stSP_Params_t params, std::map<unsigned, stMappingElem_t>* mappings,
                    std::map<unsigned, stServiceParams_t>* services) {
    // Changes the host's tables, which a factory must not, so that a test sees whose they were.
    mappings->clear();
    return new ProbeDriver(std::move(params), *mappings, *services);
}

class HostCalls : public ::testing::Test {
protected:
    HostCalls() { seen.clear(); }

    const DriverConfig records = DriverConfig::digital().digitalOut(20, "3", "0");
};

}  // namespace

TEST_F(HostCalls, EachCallRunsUnderTheScopeOfTheDriverItIsFor) {
    auto driver = host::create(records, &makeProbe);
    host::initialize(*driver);
    host::deliver(*driver, 20, {1});
    const CSI_base* self = driver.get();
    host::destroy(driver);

    ASSERT_EQ(seen.size(), 4u);
    EXPECT_EQ(seen[0].scope, self);  // the creation scope binds to the driver being made
    EXPECT_EQ(seen[1].scope, self);
    EXPECT_EQ(seen[2].scope, self);
    EXPECT_EQ(seen[3].scope, self);
    EXPECT_EQ(orbel::CallScope::current(), nullptr);
}

TEST_F(HostCalls, AnOwnedDriverGoesUnderItsOwnScope) {
    const CSI_base* self = nullptr;
    {
        hosting::DriverPtr<> driver = host::create(records, &makeProbe);
        self = driver.get();
    }

    ASSERT_EQ(seen.size(), 2u);
    EXPECT_EQ(seen[1].scope, self);
}

TEST_F(HostCalls, EventsEnterThroughReceiveEventWithAtLeastFourPayloadBytes) {
    auto driver = host::create(records, &makeProbe);
    seen.clear();

    host::deliver(*driver, 20, {7});
    std::vector<uint8_t> payload = hosting::floatBytes(2.5f);
    host::deliver(*driver, 21, payload, 1);
    host::deliverNull(*driver, 22, 3);

    ASSERT_EQ(seen.size(), 3u);
    for (const Seen& call : seen) {
        EXPECT_TRUE(call.throughReceiveEvent);
    }
    EXPECT_EQ(seen[0].id, 20u);
    EXPECT_EQ(seen[0].size, 1u);
    EXPECT_EQ(seen[0].leastPayload, (std::vector<uint8_t>{7, 0, 0, 0}));
    EXPECT_EQ(seen[1].id, 21u);
    EXPECT_EQ(seen[1].size, 1u);
    EXPECT_EQ(seen[1].leastPayload, payload);
    EXPECT_EQ(seen[2].id, 22u);
    EXPECT_EQ(seen[2].size, 3u);
    EXPECT_EQ(seen[2].leastPayload, std::nullopt);
}

TEST_F(HostCalls, TheFactoryGetsCopiesOfConstRecordsAndTheRecordsOfOthers) {
    DriverConfig handed = records;

    host::create(records, &makeProbe);
    host::create(handed, &makeProbe);

    EXPECT_EQ(records.mappings.size(), 1u);
    EXPECT_TRUE(handed.mappings.empty());
}

TEST_F(HostCalls, AFactorysExceptionReachesTheHostAndLeavesNoScopeBehind) {
    EXPECT_THROW(host::create(DriverConfig(records).param("Fail", "1"), &makeProbe),
                 std::invalid_argument);
    EXPECT_EQ(orbel::CallScope::current(), nullptr);
}

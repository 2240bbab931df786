// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <cstddef>
#include <ctime>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "HostRecords.h"
#include "PosixThread.h"
#include "SI_base.h"

namespace hosttest {

stSP_Params_t driverParams(const std::string& serviceName);

// A driver shaped like the real one: CSI_base first, the thread base private. Its constructor
// logs the version line and throws std::invalid_argument("stoi") if the parameter "Fail" is set;
// initialize() starts the thread, which runs the body given at construction.
class TestDriver : public CSI_base, private CPosixThread {
public:
    using Body = std::function<void(TestDriver&)>;

    explicit TestDriver(stSP_Params_t params, Body body = {},
                        std::map<unsigned, stMappingElem_t> mappings = {},
                        std::map<unsigned, stServiceParams_t> services = {});

    void onReceiveEvent(stEventParams_t event) override;
    void initialize() override;
    void run() override;

    void joinThread() { join(); }

    const std::map<unsigned, stMappingElem_t>& mappings() const { return m_mapMappings; }
    const std::map<unsigned, stServiceParams_t>& services() const { return m_mapServices; }
    const stSP_Params_t& params() const { return m_spParams; }
    bool stopped() const { return m_bStopped; }
    const std::vector<stEventParams_t>& received() const { return received_; }

    // Counts the rounds of a body's loop; touching it shows the driver is still alive.
    std::atomic<int> rounds{0};

private:
    Body body_;
    std::vector<stEventParams_t> received_;
};

// Sleeps like the real driver's scan: resumes the rest of the time after a signal.
void pauseLikeTheDriver(time_t seconds, long nanoseconds);

}  // namespace hosttest

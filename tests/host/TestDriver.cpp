// SPDX-License-Identifier: MIT
#include "TestDriver.h"

#include <cerrno>
#include <ctime>
#include <stdexcept>
#include <utility>

#include "LogMessage.h"

namespace hosttest {

stSP_Params_t driverParams(const std::string& serviceName) {
    stSP_Params_t params;
    params.sName = "PLCNext";
    params.sServiceName = serviceName;
    params.sDeviceType = "AXL_F_DI8_1_DO8_1";
    params.mapParams["Consecutive Number"] = "1";
    return params;
}

TestDriver::TestDriver(stSP_Params_t params, Body body,
                       std::map<unsigned, stMappingElem_t> mappings,
                       std::map<unsigned, stServiceParams_t> services)
    : CSI_base(std::move(params), std::move(mappings), std::move(services)),
      CPosixThread(0),
      body_(std::move(body)) {
    logMessage(4, "CPLCNext: Drivername[%s]-Version [%d.%d.%d] - Service[%s]", "Plc Next", 1, 3, 2,
               m_spParams.sServiceName.c_str());
    if (m_spParams.mapParams.count("Fail") != 0) {
        throw std::invalid_argument("stoi");
    }
}

void TestDriver::onReceiveEvent(stEventParams_t event) {
    received_.push_back(event);
}

void TestDriver::initialize() {
    start();
}

void TestDriver::run() {
    // A copy, so that a body outlives a driver deleted under it.
    const Body body = body_;
    if (body) {
        body(*this);
    }
}

void pauseLikeTheDriver(time_t seconds, long nanoseconds) {
    timespec pause{seconds, nanoseconds};
    while (nanosleep(&pause, &pause) == -1 && errno == EINTR) {
    }
}

}  // namespace hosttest

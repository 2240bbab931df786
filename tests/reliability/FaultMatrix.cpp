// SPDX-License-Identifier: MIT
#include "FaultMatrix.h"

#include <cstddef>
#include <vector>

#include "MatrixPrinter.h"
#include "Scenario.h"
#include "hosting/DriverRig.h"
#include "orbel/Recorder.h"
#include "vplc/Station.h"

namespace faultmatrix {

namespace {

std::string balanceOf(const vplc::Station& station) {
    return "R " + std::to_string(station.calls(kBeginRead)) + "/" +
           std::to_string(station.calls(kEndRead)) + ", W " +
           std::to_string(station.calls(kBeginWrite)) + "/" +
           std::to_string(station.calls(kEndWrite));
}

}  // namespace

std::string rowName(const testing::TestParamInfo<FaultRow>& info) {
    return info.param.name;
}

TEST_P(FaultMatrix, Row) {
    const FaultRow& row = GetParam();
    SCOPED_TRACE(row.fault.call + " at " + row.fault.site);
    MatrixPrinter& printer = MatrixPrinter::instance();
    DriverRig rig;
    Scenario scenario(row, rig);
    for (std::size_t step = 0; step < row.steps.size(); ++step) {
        SCOPED_TRACE("step " + std::to_string(step + 1));
        row.steps[step](scenario);
    }

    const vplc::Station& station = rig.station();
    EXPECT_EQ(station.openLocks(), 0);
    EXPECT_EQ(station.calls(kBeginRead), station.calls(kEndRead));
    EXPECT_EQ(station.calls(kBeginWrite), station.calls(kEndWrite));
    const std::string balance = balanceOf(station);

    rig.destroy();
    // Every buffer the module asked for is given back at teardown, whether it came or not.
    EXPECT_EQ(station.calls(kRelease), station.calls(kGetBuffer));
    EXPECT_EQ(station.buffersHeld(), row.buffersKept);
    EXPECT_EQ(rig.recorder().threadExits().size(), rig.recorder().threadStarts().size());
    EXPECT_EQ(hosting::linesAfterVersion(rig.recorder()), row.log);
    std::vector<std::string> stops;
    for (const orbel::Stop& stop : rig.recorder().stops()) {
        stops.push_back(stop.message);
    }
    EXPECT_EQ(stops, row.stops);
    if (!row.fault.error.empty()) {
        EXPECT_GT(station.calls(row.fault.call), 0) << "the failing call was never made";
    }
    printer.add({row.fault.call, row.fault.site, describeLog(row.log), row.notes.neutral, balance,
                 row.notes.teardown, row.notes.next, !HasFailure()});
}

}  // namespace faultmatrix

// SPDX-License-Identifier: MIT
// The runtime attachment's rows of the fault matrix. The attachment happens once per process, so
// each row runs in a forked child of a process that has not attached: a program of its own.

#include <gtest/gtest.h>

#include <condition_variable>
#include <functional>
#include <iostream>
#include <map>
#include <mutex>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "Arp/Plc/AnsiC/Domain/PlcOperationHandler.h"
#include "ArpModuleLoader.h"
#include "FaultRow.h"
#include "MatrixPrinter.h"
#include "hosting/ChildProcess.h"
#include "hosting/DriverRig.h"
#include "hosting/HostCalls.h"
#include "orbel/Recorder.h"
#include "vplc/PlatformCalls.h"
#include "vplc/Runtime.h"
#include "vplc/Station.h"
#include "vplc/VirtualClock.h"

using namespace faultmatrix;
using vplc::Fault;
using vplc::Runtime;

namespace {

// The runtime attachment happens once per process, so its rows run in child processes, before
// this process starts any thread. A child reports what it saw as lines, and the parent checks
// them against the row.

struct AttachmentRow {
    std::string name = {};  // the call and the place, as the test case is named
    std::string call = {};
    std::string site = {};
    std::vector<std::string> printed = {};  // lines the driver writes to standard output
    std::vector<LoggedLine> log = {};
    RowNotes notes = {};
    std::function<int()> child = {};                // runs the row in the child process
    std::vector<std::string> stops = {};            // of both drivers
    std::map<std::string, std::string> facts = {};  // what the child must report
};

// What a child saw, one fact per line: "log\t<level>\t<format>\t<text>", "stop\t<message>" or
// "fact\t<name>\t<value>". Any other line is the driver's own output.
struct ChildReport {
    std::vector<std::string> printed;
    std::vector<LoggedLine> log;
    std::vector<std::string> stops;
    std::map<std::string, std::string> facts;
};

std::vector<std::string> fieldsOf(const std::string& line) {
    std::vector<std::string> fields;
    std::stringstream stream(line);
    std::string field;
    while (std::getline(stream, field, '\t')) {
        fields.push_back(field);
    }
    return fields;
}

ChildReport parseReport(const std::string& output) {
    ChildReport report;
    std::stringstream stream(output);
    std::string line;
    while (std::getline(stream, line)) {
        const auto fields = fieldsOf(line);
        if (fields.size() == 4 && fields[0] == "log") {
            report.log.push_back({std::stoi(fields[1]), fields[2], fields[3]});
        } else if (fields.size() == 2 && fields[0] == "stop") {
            report.stops.push_back(fields[1]);
        } else if (fields.size() == 3 && fields[0] == "fact") {
            report.facts[fields[1]] = fields[2];
        } else {
            report.printed.push_back(line);
        }
    }
    return report;
}

void printFact(const std::string& name, int value) {
    std::cout << "fact\t" << name << "\t" << value << "\n";
}

void printRecorded(const orbel::Recorder& recorder) {
    for (const LoggedLine& line : hosting::linesAfterVersion(recorder)) {
        std::cout << "log\t" << line.level << "\t" << line.format << "\t" << line.text << "\n";
    }
    for (const orbel::Stop& stop : recorder.stops()) {
        std::cout << "stop\t" << stop.message << "\n";
    }
}

// A load that fails: the first driver stops at once, and so does a second one, without a retry.
int failedAttachmentChild(const std::function<void()>& arm) {
    hosting::DriverRig rig;
    const orbel::Recorder& recorder = rig.recorder();
    const vplc::Station& station = rig.station();
    arm();
    hosting::host::initialize(rig.create(digitalRecords()));
    printFact("buffersAcquired", station.calls(kGetBuffer));
    rig.destroy();
    hosting::host::initialize(rig.create(digitalRecords()));
    rig.destroy();
    printFact("loads", static_cast<int>(Runtime::moduleMainCalls().size()));
    printFact("threadsStarted", static_cast<int>(recorder.threadStarts().size()));
    printFact("buffersHeld", station.buffersHeld());
    printRecorded(recorder);
    return 0;
}

// The handler registered before the driver's (here the child's own) receives the start.
std::mutex startsMutex;
std::condition_variable startsChanged;
int startsSeen = 0;

void previousHandler(PlcOperation operation) {
    if (operation != PlcOperation_StartCold) {
        return;
    }
    std::lock_guard lock(startsMutex);
    ++startsSeen;
    startsChanged.notify_all();
}

int missedStartChild() {
    hosting::DriverRig rig;
    const orbel::Recorder& recorder = rig.recorder();
    const vplc::Station& station = rig.station();
    ArpPlcDomain_SetHandler(previousHandler);
    vplc::inject(kSetHandler, Fault::next("handler table full"));
    CSI_base& driver = rig.create(digitalRecords());
    std::thread host([&driver] { hosting::host::initialize(driver); });
    {
        std::unique_lock lock(startsMutex);
        startsChanged.wait(lock, [] { return startsSeen > 0; });
    }
    Runtime::waitUntilDelivered();
    {
        std::lock_guard lock(plcStateMutex);
        printFact("startedWhileWaiting", plcStarted ? 1 : 0);
    }
    printFact("threadWhileWaiting", static_cast<int>(recorder.threadStarts().size()));
    PlcOperationHandler(PlcOperation_StartCold);
    host.join();
    rig.clock().settle();
    printFact("threadAfterStart", static_cast<int>(recorder.threadStarts().size()));
    rig.destroy();
    printFact("buffersHeld", station.buffersHeld());
    printRecorded(recorder);
    return 0;
}

std::function<void()> failNext(std::string_view function, const char* error) {
    return [function, error] { vplc::inject(function, Fault::next(error)); };
}

// A row whose load of the runtime fails once `arm` has run in the child: both drivers stop, nothing
// is acquired, and the load is not tried again. `thrown` is the text of the exception the loader
// prints, if it throws one.
AttachmentRow failedLoadRow(const std::string& name, const std::string& call,
                            const std::string& site, const std::string& thrown,
                            std::function<void()> arm) {
    const LoggedLine notAttached = {2, kNotAttached, kNotAttached};
    std::vector<std::string> printed;
    if (!thrown.empty()) {
        printed.push_back(
            "Exception of type Arp::Exception occured during call of "
            "ArpSystemModule_Load : " +
            thrown);
    }
    return {.name = name,
            .call = call,
            .site = site,
            .printed = printed,
            .log = {notAttached, notAttached},
            .notes = {.neutral = "no module, no GDS buffer, no thread; stopped",
                      .next = "a second driver stops the same way; the load is not retried",
                      .teardown = "nothing was acquired"},
            .child = [arm = std::move(arm)] { return failedAttachmentChild(arm); },
            .stops = {"PLCnext runtime not available", "PLCnext runtime not available"},
            .facts = {{"buffersAcquired", "0"},
                      {"loads", "1"},
                      {"threadsStarted", "0"},
                      {"buffersHeld", "0"}}};
}

std::vector<AttachmentRow> attachmentRows() {
    const std::string loading = "runtime attachment: loading the system module";
    return {
        {
            .name = "AttachmentSetHandlerFails",
            .call = kSetHandler,
            .site = "runtime attachment: registering the start handler",
            .printed = {},
            .log = {},
            .notes = {.neutral = "the start reaches the handler registered before; initialize "
                                 "waits",
                      .next = "initialize returns once a start reaches the loader's handler; the "
                              "driver then runs"},
            .child = missedStartChild,
            .stops = {},
            .facts = {{"startedWhileWaiting", "0"},
                      {"threadWhileWaiting", "0"},
                      {"threadAfterStart", "1"},
                      {"buffersHeld", "0"}},
        },
        failedLoadRow("AttachmentModuleMainThrows", std::string(Runtime::kModuleMain), loading,
                      "settings file unreadable",
                      failNext(Runtime::kModuleMain, "settings file unreadable")),
        failedLoadRow("AttachmentModuleMainGivesNoApplicationDomain",
                      std::string(Runtime::kModuleMain) + " (no application domain)", loading, "",
                      [] { Runtime::setModuleMain(Runtime::MainOutcome::NullDomain); }),
        failedLoadRow("AttachmentLogManagerBindingFails", std::string(Runtime::kLogAssignAppDomain),
                      "runtime attachment: binding the log manager", "log manager unavailable",
                      failNext(Runtime::kLogAssignAppDomain, "log manager unavailable")),
        failedLoadRow("AttachmentRscManagerBindingFails", std::string(Runtime::kRscAssignAppDomain),
                      "runtime attachment: binding the RSC manager", "RSC manager unavailable",
                      failNext(Runtime::kRscAssignAppDomain, "RSC manager unavailable")),
    };
}

void PrintTo(const AttachmentRow& row, std::ostream* out) {
    *out << row.call << " at " << row.site;
}

class Attachment : public testing::TestWithParam<AttachmentRow> {};

}  // namespace

TEST_P(Attachment, Row) {
    // Forking is sound only while this process has not attached to the runtime: until then it
    // has started no thread, and each child attaches afresh.
    ASSERT_TRUE(Runtime::moduleMainCalls().empty());
    const AttachmentRow& row = GetParam();
    const hosting::ChildResult child = hosting::runInChild(row.child);
    const ChildReport report = parseReport(child.output);
    EXPECT_EQ(child.exitCode, 0);
    EXPECT_EQ(report.printed, row.printed);
    EXPECT_EQ(report.log, row.log);
    EXPECT_EQ(report.stops, row.stops);
    EXPECT_EQ(report.facts, row.facts);
    std::string log;
    for (const std::string& line : row.printed) {
        log += "stdout: " + line + " / ";
    }
    log += describeLog(row.log);
    MatrixPrinter::instance().add({row.call, row.site, log, row.notes.neutral, "no frame access",
                                   row.notes.teardown, row.notes.next, !HasFailure()});
}

INSTANTIATE_TEST_SUITE_P(FaultMatrix, Attachment, testing::ValuesIn(attachmentRows()),
                         [](const testing::TestParamInfo<AttachmentRow>& info) {
                             return info.param.name;
                         });

// SPDX-License-Identifier: MIT
#include "axlsim/serve/ServeCommand.h"

#include <pthread.h>
#include <signal.h>

#include <atomic>
#include <cerrno>
#include <charconv>
#include <ctime>
#include <iostream>
#include <optional>
#include <string>
#include <thread>

#include "axlsim/base/ValueText.h"
#include "axlsim/run/InterruptSignals.h"
#include "axlsim/serve/ApiServer.h"
#include "axlsim/serve/ListenAddress.h"
#include "axlsim/serve/LivePage.h"
#include "axlsim/serve/LiveRun.h"
#include "axlsim/serve/ModbusServer.h"
#include "axlsim/serve/Token.h"

namespace axlsim {

namespace {

constexpr int kCannotServe = 2;
constexpr double kLowestSpeed = 0.1;
constexpr double kHighestSpeed = 100000.0;
constexpr const char* kLoopback = "127.0.0.1";

std::optional<LiveRun::Options> paceOf(const serving::Request& request) {
    LiveRun::Options options;
    options.paused = request.paused;
    if (request.speed == "max") {
        options.maxSpeed = true;
        return options;
    }
    double speed = 0;
    const char* end = request.speed.data() + request.speed.size();
    const auto [stop, error] = std::from_chars(request.speed.data(), end, speed);
    if (error != std::errc() || stop != end || !(speed >= kLowestSpeed && speed <= kHighestSpeed)) {
        return std::nullopt;
    }
    options.speed = speed;
    return options;
}

void warnIfOpen(const std::string& address, const char* who) {
    if (address != kLoopback && address != "::1" && address != "localhost") {
        std::cerr << "axlsim: warning: listening on " << address << ": anyone who can reach it"
                  << who << " can drive the plant\n";
    }
}

// Ctrl-C and SIGTERM are taken by the main thread alone, which waits for them: blocked here,
// before any thread starts, so that every thread inherits the block.
sigset_t endingSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return signals;
}

// What ended the server: a signal's name, or the API's stop.
std::string waitForEnd(const sigset_t& signals, const std::atomic<bool>& stopAsked) {
    // Looks for POST /api/stop every tenth of a second while waiting for a signal.
    const timespec patience{0, 100'000'000};
    while (!stopAsked) {
        if (const int signal = sigtimedwait(&signals, nullptr, &patience); signal > 0) {
            return signalName(signal);
        }
    }
    return "POST /api/stop";
}

}  // namespace

int serving::serve(const Config& config, const hosting::DriverLibrary& library,
                   const Request& request) {
    const auto pace = paceOf(request);
    if (!pace) {
        std::cerr << "axlsim: --speed: expected a factor from 0.1 to 100000, or max, not "
                  << inQuotes(request.speed) << '\n';
        return kCannotServe;
    }
    const auto listen = hostOf(request.listen);
    if (!listen) {
        std::cerr << "axlsim: --listen: expected an address or a host name of this machine (an "
                     "IPv6 address also in brackets), not "
                  << inQuotes(request.listen) << '\n';
        return kCannotServe;
    }
    std::optional<ListenAddress> modbusAt;
    if (request.modbus) {
        modbusAt = listenAddressOf(*request.modbus, kLoopback);
        if (!modbusAt) {
            std::cerr << "axlsim: --modbus: expected [ADDR:]PORT with a port from 0 to 65535 in "
                         "decimal digits (an IPv6 ADDR in brackets), not "
                      << inQuotes(*request.modbus) << '\n';
            return kCannotServe;
        }
    }
    const sigset_t signals = endingSignals();
    std::atomic<bool> stopAsked{false};

    LiveRun live(config, library, *pace);
    ApiServer::Settings settings;
    settings.address = *listen;
    settings.token = freshToken();
    settings.page = livePage();
    settings.onStop = [&stopAsked] { stopAsked = true; };
    ApiServer server(config, live, settings);
    const int port = server.bind(request.port);
    if (port < 0) {
        std::cerr << "axlsim: cannot listen on " << *listen << " port " << request.port
                  << ": the port is taken, or the address is not one of this machine's\n";
        return kCannotServe;
    }
    std::optional<ModbusServer> modbus;
    if (modbusAt) {
        modbus.emplace(config, live);
        const int modbusPort = modbus->bind(modbusAt->host, modbusAt->port);
        if (modbusPort < 0) {
            std::cerr << "axlsim: cannot listen on " << modbusAt->host << " port " << modbusAt->port
                      << " for Modbus: " << modbus->why() << '\n';
            return kCannotServe;
        }
        modbusAt->port = modbusPort;
        const std::string shown = hostForUrl(modbusAt->host) + ':' + std::to_string(modbusPort);
        live.showInState("modbus", [shown, &modbus] {
            return nlohmann::ordered_json{{"address", shown}, {"clients", modbus->clients()}};
        });
    }
    std::cout << "axlsim serve: http://" << hostForUrl(*listen) << ':' << port
              << "/?token=" << settings.token << std::endl;
    if (modbusAt) {
        std::cout << "axlsim modbus: " << hostForUrl(modbusAt->host) << ':' << modbusAt->port
                  << std::endl;
    }
    warnIfOpen(*listen, " and has the token");
    if (modbusAt) {
        warnIfOpen(modbusAt->host, " over Modbus");
    }

    live.start();
    std::thread http([&server] { server.serve(); });
    std::thread bus;
    if (modbus) {
        bus = std::thread([&modbus] { modbus->serve(); });
    }
    const std::string ending = waitForEnd(signals, stopAsked);
    server.stop();
    http.join();
    if (modbus) {
        modbus->stop();
        bus.join();
    }
    live.stop();
    std::cout << "axlsim serve: stopped by " << ending << "; the drivers are deleted" << std::endl;
    return 0;
}

}  // namespace axlsim

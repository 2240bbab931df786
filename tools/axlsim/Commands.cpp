// SPDX-License-Identifier: MIT
#include "axlsim/Commands.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <memory>

#include "axlsim/check/CheckReport.h"
#include "axlsim/check/ConfigCheck.h"
#include "axlsim/check/LoopCheck.h"
#include "axlsim/configuration/ConfigError.h"
#include "axlsim/configuration/ConfigReader.h"
#include "axlsim/configuration/DemoConfig.h"
#include "axlsim/render/JsonRenderer.h"
#include "axlsim/render/ProgressBar.h"
#include "axlsim/render/TextRenderer.h"
#include "axlsim/render/VcdWriter.h"
#include "axlsim/run/DriverLibrary.h"
#include "axlsim/run/InterruptSignals.h"
#include "axlsim/run/ScenarioPlayer.h"

#if AXLSIM_SERVE
#include "axlsim/serve/HtmlReport.h"
#endif

namespace axlsim {

namespace {

using namespace std::chrono_literals;

constexpr int kCannotRun = 2;
constexpr int kInterrupted = 130;

// Shorter virtual runs finish before a bar would be worth drawing.
constexpr auto kLongRun = 10s;

bool colourWanted() {
    return isatty(STDOUT_FILENO) != 0 && std::getenv("NO_COLOR") == nullptr;
}

std::optional<Config> readConfig(const std::string& file) {
    try {
        return ConfigReader::readFile(file);
    } catch (const ConfigError& error) {
        std::cerr << "axlsim: " << error.what() << '\n';
        return std::nullopt;
    }
}

// A configuration to run: readable, and with a plant and host that can work.
std::optional<Config> runnableConfig(const std::string& file) {
    auto config = readConfig(file);
    if (!config) {
        return std::nullopt;
    }
    try {
        LoopCheck::requireRunnable(*config);
        return config;
    } catch (const ConfigError& error) {
        std::cerr << "axlsim: " << error.what() << '\n';
        return std::nullopt;
    }
}

std::unique_ptr<DriverLibrary> loadDriver(const std::string& path) {
    try {
        return std::make_unique<DriverLibrary>(path.empty() ? DriverLibrary::besideProgram()
                                                            : path);
    } catch (const std::exception& error) {
        std::cerr << "axlsim: " << error.what() << '\n';
        return nullptr;
    }
}

// Standard output, once everything is written to it: an error when it could not take it all.
bool standardOutputWritten() {
    std::cout.flush();
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0 && std::cout.good()) {
        return true;
    }
    std::cerr << "axlsim: cannot write the standard output: " << std::strerror(errno) << '\n';
    return false;
}

// A file, once everything is written to it: an error when it could not take it all.
bool fileWritten(std::ostream& file, const std::string& path) {
    file.flush();
    if (file) {
        return true;
    }
    std::cerr << "axlsim: cannot write " << path << ": " << std::strerror(errno) << '\n';
    return false;
}

int play(const Config& config, const Commands::RunRequest& request) {
    const auto library = loadDriver(request.driver);
    if (library == nullptr) {
        return kCannotRun;
    }

    // Opened before the run, so that a path that cannot be written is told at once.
    std::ofstream vcd;
    if (!request.vcd.empty()) {
        vcd.open(request.vcd, std::ios::binary | std::ios::trunc);
        if (!vcd) {
            std::cerr << "axlsim: cannot write " << request.vcd << ": " << std::strerror(errno)
                      << '\n';
            return kCannotRun;
        }
    }

    std::unique_ptr<TimelineRenderer> renderer;
    if (request.json) {
        renderer = std::make_unique<JsonRenderer>(std::cout, config);
    } else {
        auto text = std::make_unique<TextRenderer>(std::cout, config, colourWanted());
        text->header(request.realTime);
        renderer = std::move(text);
    }

    const InterruptSignals signals;
    ScenarioPlayer::Options options;
    options.realTime = request.realTime;
    options.until = request.until;
    options.live = [&renderer](const Happening& happening) { renderer->happening(happening); };
    options.stopRequested = [] { return InterruptSignals::received() != 0; };
    std::optional<ProgressBar> bar;
    if (!request.realTime && isatty(STDERR_FILENO) != 0 &&
        options.until.value_or(config.end) >= kLongRun) {
        bar.emplace(std::cerr);
        options.progress = [&bar](auto now, auto end) { bar->update(now, end); };
    }

    const RunResult result = ScenarioPlayer::run(config, *library, options);
    bar.reset();
    renderer->finish(result);
    if (result.interrupted) {
        renderer->interrupted(result.end, InterruptSignals::name(InterruptSignals::received()));
    } else if (request.json && config.expectStop && !result.wentAsExpected) {
        std::cerr << "axlsim: expected a stop (\"expect_stop\": true), but no driver stopped and "
                     "no exception left one\n";
    }

    int status = result.interrupted ? kInterrupted : result.exitStatus();
    if (!request.vcd.empty()) {
        VcdWriter::write(vcd, config, result);
        if (!fileWritten(vcd, request.vcd)) {
            status = kCannotRun;
        }
    }
#if AXLSIM_SERVE
    if (!request.html.empty()) {
        std::ofstream html(request.html);
        HtmlReport::write(html, config, result);
        if (!fileWritten(html, request.html)) {
            status = kCannotRun;
        }
    }
#endif
    if (!standardOutputWritten()) {
        status = kCannotRun;
    }
    return status;
}

}  // namespace

int Commands::run(const RunRequest& request) {
    const auto config = runnableConfig(request.config);
    if (!config) {
        return kCannotRun;
    }
    if (const std::size_t problems =
            ConfigCheck::check(*config).size() + LoopCheck::check(*config).size();
        problems > 0) {
        std::cerr << "axlsim: " << problems << (problems == 1 ? " problem" : " problems")
                  << " that axlsim check explains; running anyway\n";
    }
    return play(*config, request);
}

#if AXLSIM_SERVE
int Commands::serve(const ServeCommand::Request& request) {
    const auto config = runnableConfig(request.config);
    if (!config) {
        return kCannotRun;
    }
    const auto library = loadDriver(request.driver);
    if (library == nullptr) {
        return kCannotRun;
    }
    return ServeCommand::serve(*config, *library, request);
}
#endif

int Commands::check(const std::string& file) {
    const auto config = readConfig(file);
    if (!config) {
        return kCannotRun;
    }
    const auto findings = ConfigCheck::check(*config);
    const auto loop = LoopCheck::check(*config);
    CheckReport::write(std::cout, *config, findings, loop);
    if (!standardOutputWritten()) {
        return kCannotRun;
    }
    return findings.empty() && loop.empty() ? 0 : 1;
}

int Commands::demo(const std::string& driver) {
    const Config config =
        ConfigReader::readText(std::string(demoConfigText()), std::string(demoConfigName()));
    std::cout
        << "axlsim demo\n\n"
           "axlsim plays the host runtime: it loads the real driver library, hands it a\n"
           "configuration (its parameters, the event-id mappings and the services), and runs it\n"
           "on the virtual controller, an Axioline bus with its GDS frames, on a virtual clock.\n"
           "The loop below is closed: a square signal presses the button on input 0, the host's\n"
           "route switches the lamp on output 0 from each button event it sees, and a wire\n"
           "brings the lamp's contact back on input 1 5 ms after output 0 changes. Watch the\n"
           "driver publish every input once at start, scan every 100 ms, publish only what\n"
           "changed, and write its outputs to the bus for each event the host sends it.\n\n";
    Commands::RunRequest request;
    request.driver = driver;
    const int status = play(config, request);
    std::cout
        << "\nTry your own configuration:\n"
           "  axlsim check CONFIG.json         what the driver will refuse, and why\n"
           "  axlsim run CONFIG.json           this timeline for it\n"
           "  axlsim run CONFIG.json --json    one JSON object per line\n"
           "  axlsim run CONFIG.json --vcd run.vcd   the pins and events for GTKWave\n"
#if AXLSIM_SERVE
           "  axlsim run CONFIG.json --html run.html   a report with waveforms, for a browser\n"
           "  axlsim serve CONFIG.json         run it live in a browser, with a JSON API\n"
#endif
           "The examples are in examples/*.json.\n";
    return standardOutputWritten() ? status : kCannotRun;
}

}  // namespace axlsim

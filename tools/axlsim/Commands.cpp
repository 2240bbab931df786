// SPDX-License-Identifier: MIT
#include "axlsim/Commands.h"

#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <memory>
#include <system_error>
#include <variant>

#include "axlsim/base/ValueText.h"
#include "axlsim/check/CheckReport.h"
#include "axlsim/check/ConfigCheck.h"
#include "axlsim/check/LoopCheck.h"
#include "axlsim/configuration/ConfigError.h"
#include "axlsim/configuration/ConfigReader.h"
#include "axlsim/configuration/DemoConfig.h"
#include "axlsim/render/JsonRenderer.h"
#include "axlsim/render/OutputFile.h"
#include "axlsim/render/OutputSink.h"
#include "axlsim/render/ProgressBar.h"
#include "axlsim/render/StandardOutput.h"
#include "axlsim/render/TextRenderer.h"
#include "axlsim/render/VcdWriter.h"
#include "axlsim/run/InterruptSignals.h"
#include "axlsim/run/ScenarioPlayer.h"
#include "hosting/DriverLibrary.h"

#if AXLSIM_SERVE
#include "axlsim/render/HtmlReport.h"
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
        return configreader::readFile(file);
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
        loopcheck::requireRunnable(*config);
        return config;
    } catch (const ConfigError& error) {
        std::cerr << "axlsim: " << error.what() << '\n';
        return std::nullopt;
    }
}

std::unique_ptr<hosting::DriverLibrary> loadDriver(const std::string& path) {
    try {
        return std::make_unique<hosting::DriverLibrary>(
            path.empty() ? hosting::DriverLibrary::besideProgram() : path);
    } catch (const std::exception& error) {
        std::cerr << "axlsim: " << error.what() << '\n';
        return nullptr;
    }
}

std::unique_ptr<OutputFile> openOutput(const std::string& path) {
    auto file = OutputFile::open(path);
    if (const int* error = std::get_if<int>(&file)) {
        std::cerr << "axlsim: cannot write " << path << ": " << std::strerror(*error) << '\n';
        return nullptr;
    }
    return std::move(std::get<std::unique_ptr<OutputFile>>(file));
}

// Whether two paths name one file: the same file on disk, or the same place for one not yet
// made.
bool sameFile(const std::string& a, const std::string& b) {
    std::error_code error;
    if (std::filesystem::equivalent(a, b, error) && !error) {
        return true;
    }
    std::error_code errorA;
    std::error_code errorB;
    const auto placeA = std::filesystem::weakly_canonical(a, errorA);
    const auto placeB = std::filesystem::weakly_canonical(b, errorB);
    return !errorA && !errorB && placeA == placeB;
}

// The output files of a run, each its own and none the configuration or standard output; said
// on standard error when they are not.
bool outputsAccepted(const commands::RunRequest& request) {
    const std::vector<std::pair<std::string, std::string>> outputs = {{"--vcd", request.vcd},
                                                                      {"--html", request.html}};
    for (std::size_t i = 0; i < outputs.size(); ++i) {
        const auto& [option, path] = outputs[i];
        if (path.empty()) {
            continue;
        }
        if (path == "-") {
            std::cerr << "axlsim: " << option
                      << " -: the standard output carries the timeline, so this output needs a "
                         "file; ./- names a file called \"-\"\n";
            return false;
        }
        if (request.config != "-" && sameFile(path, request.config)) {
            std::cerr << "axlsim: " << option << " " << path
                      << " is the configuration, which the output would overwrite; give the "
                         "output a file of its own\n";
            return false;
        }
        for (std::size_t j = 0; j < i; ++j) {
            const auto& [earlier, earlierPath] = outputs[j];
            if (!earlierPath.empty() && sameFile(path, earlierPath)) {
                std::cerr << "axlsim: " << earlier << " " << earlierPath << " and " << option << " "
                          << path
                          << " name the same file, which would keep only one of them; give each "
                             "output a file of its own\n";
                return false;
            }
        }
    }
    return true;
}

int play(const Config& config, const commands::RunRequest& request, StandardOutput& out) {
    const auto library = loadDriver(request.driver);
    if (library == nullptr) {
        return kCannotRun;
    }

    // Checked and opened before the run, so that an output that cannot be written is told at
    // once.
    if (!outputsAccepted(request)) {
        return kCannotRun;
    }
    std::unique_ptr<OutputFile> vcdFile;
    if (!request.vcd.empty() && (vcdFile = openOutput(request.vcd)) == nullptr) {
        return kCannotRun;
    }
    std::unique_ptr<OutputFile> htmlFile;
#if AXLSIM_SERVE
    if (!request.html.empty() && (htmlFile = openOutput(request.html)) == nullptr) {
        return kCannotRun;
    }
#endif

    std::unique_ptr<TimelineRenderer> renderer;
    if (request.json) {
        renderer = std::make_unique<JsonRenderer>(std::cout, config);
    } else {
        auto text = std::make_unique<TextRenderer>(std::cout, config, colourWanted());
        text->header(request.realTime);
        renderer = std::move(text);
    }
    std::optional<VcdWriter> vcd;
    if (vcdFile != nullptr) {
        vcd.emplace(vcdFile->stream(), config);
    }
    const std::chrono::nanoseconds plannedEnd = request.until.value_or(config.end);
#if AXLSIM_SERVE
    std::optional<HtmlReport> report;
    if (htmlFile != nullptr) {
        report.emplace(config, plannedEnd);
    }
#endif

    const InterruptSignals signals;
    scenarioplayer::Options options;
    options.realTime = request.realTime;
    options.until = request.until;
    // The timeline goes to every output as it settles; none keeps it whole.
    options.keepTimeline = false;
    if (request.realTime) {
        options.live = [&renderer](const Happening& happening) { renderer->happening(happening); };
    }
    if (!request.realTime || vcd || htmlFile != nullptr) {
        options.settled = [&](const Happening& happening) {
            if (!request.realTime) {
                renderer->happening(happening);
            }
            if (vcd) {
                vcd->change(happening);
            }
#if AXLSIM_SERVE
            if (report) {
                report->happening(happening);
            }
#endif
        };
    }
    // A standard output that cannot be written stops the run like a signal does.
    options.stopRequested = [&out] {
        out.sink().flushIfDue();
        return receivedInterrupt() != 0 || out.sink().failed();
    };
    std::optional<ProgressBar> bar;
    if (!request.realTime && isatty(STDERR_FILENO) != 0 && plannedEnd >= kLongRun) {
        bar.emplace(std::cerr);
        options.progress = [&bar](auto now, auto end) { bar->update(now, end); };
    }

    const RunResult result = scenarioplayer::run(config, *library, options);
    bar.reset();
    const bool outputLost = out.sink().failed();
    std::string interruption;
    if (outputLost) {
        interruption = "a failed write to the standard output (" +
                       std::string(std::strerror(out.sink().error())) + ")";
    } else if (result.interrupted) {
        interruption = signalName(receivedInterrupt());
    }
    if (!outputLost) {
        renderer->finish(result);
        if (result.interrupted) {
            renderer->interrupted(result.end, interruption);
        } else if (request.json && config.expectStop && !result.wentAsExpected) {
            std::cerr << "axlsim: expected a stop (\"expect_stop\": true), but no driver stopped "
                         "and no exception left one\n";
        }
    }

    int status = result.interrupted ? kInterrupted : result.exitStatus();
    if (vcd) {
        vcd->finish(result.end);
        if (!vcdFile->written()) {
            status = kCannotRun;
        }
    }
#if AXLSIM_SERVE
    if (report) {
        report->write(htmlFile->stream(), result, interruption);
        if (!htmlFile->written()) {
            status = kCannotRun;
        }
    }
#endif
    if (!out.written(outputLost && result.interrupted
                         ? "; the run stopped at " + millisecondsText(result.end) + " ms"
                         : "")) {
        status = kCannotRun;
    }
    return status;
}

}  // namespace

int commands::run(const RunRequest& request) {
    const auto config = runnableConfig(request.config);
    if (!config) {
        return kCannotRun;
    }
    if (const std::size_t problems =
            configcheck::check(*config).size() + loopcheck::check(*config).size();
        problems > 0) {
        std::cerr << "axlsim: " << problems << (problems == 1 ? " problem" : " problems")
                  << " that axlsim check explains; running anyway\n";
    }
    StandardOutput out;
    return play(*config, request, out);
}

#if AXLSIM_SERVE
int commands::serve(const serving::Request& request) {
    const auto config = runnableConfig(request.config);
    if (!config) {
        return kCannotRun;
    }
    const auto library = loadDriver(request.driver);
    if (library == nullptr) {
        return kCannotRun;
    }
    return serving::serve(*config, *library, request);
}
#endif

int commands::printed(const std::function<int()>& print) {
    StandardOutput out;
    const int status = print();
    return out.written() ? status : kCannotRun;
}

int commands::check(const std::string& file) {
    const auto config = readConfig(file);
    if (!config) {
        return kCannotRun;
    }
    StandardOutput out;
    const auto findings = configcheck::check(*config);
    const auto loop = loopcheck::check(*config);
    checkreport::write(std::cout, *config, findings, loop);
    if (!out.written()) {
        return kCannotRun;
    }
    return findings.empty() && loop.empty() ? 0 : 1;
}

int commands::demo(const std::string& driver) {
    const Config config =
        configreader::readText(std::string(demoConfigText()), std::string(demoConfigName()));
    StandardOutput out;
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
    commands::RunRequest request;
    request.driver = driver;
    const int status = play(config, request, out);
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
    return out.written() ? status : kCannotRun;
}

}  // namespace axlsim

// SPDX-License-Identifier: MIT
// axlsim: runs a driver configuration on the virtual controller and shows what the driver does.

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <iostream>

#include "axlsim/Commands.h"
#include "axlsim/base/ValueText.h"
#include "axlsim/configuration/Milliseconds.h"

#if AXLSIM_SERVE
#include "axlsim/serve/ListenAddress.h"
#endif

namespace {

// The first argument, when it is neither an option nor one of the commands.
std::string unknownCommand(const CLI::App& app, int argc, char** argv) {
    if (argc < 2 || argv[1][0] == '-') {
        return "";
    }
    for (const CLI::App* command : app.get_subcommands({})) {
        if (command->get_name() == argv[1]) {
            return "";
        }
    }
    return argv[1];
}

// The first argument of a command that names none of its options ("--bogus" of "--bogus=1"),
// when the parse left one over.
std::string unknownOption(const CLI::App& command) {
    for (const std::string& left : command.remaining(false)) {
        if (left.size() > 1 && left[0] == '-') {
            return left.substr(0, left.find('='));
        }
    }
    return "";
}

std::string commandList(const CLI::App& app) {
    std::string commands;
    for (const CLI::App* known : app.get_subcommands({})) {
        commands += (commands.empty() ? "" : ", ") + known->get_name();
    }
    return commands;
}

// An empty --driver would silently mean the default library.
CLI::Validator driverPath() {
    return CLI::Validator(
        [](const std::string& text) {
            return text.empty() ? std::string(
                                      "expected the path of a driver library, not an "
                                      "empty text (without --driver, axlsim loads the one "
                                      "beside it)")
                                : std::string();
        },
        "", "PATH");
}

}  // namespace

int main(int argc, char** argv) {
    // Lines go out as the run produces them, also into a pipe or a file that someone follows.
    if (isatty(STDOUT_FILENO) == 0) {
        std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
    }

    CLI::App app{"Runs a PLCnext Axioline F driver configuration on the virtual controller.",
                 "axlsim"};
    app.require_subcommand(1);
    app.set_version_flag("--version",
                         "axlsim " AXLSIM_VERSION "\ndriver libplcnext_driver.so " AXLSIM_VERSION,
                         "Print the versions of axlsim and of the driver it is built with");

    axlsim::commands::RunRequest run;
    std::string untilText;
    auto* runCommand = app.add_subcommand(
        "run", "Load the driver, run the configuration's scenario and print the timeline.");
    runCommand
        ->add_option("CONFIG", run.config,
                     "The configuration (JSON, comments allowed); - reads standard input")
        ->required();
    runCommand->add_flag("--json", run.json, "One JSON object per line instead of text");
    runCommand->add_option("--vcd", run.vcd, "Also write a Value Change Dump of the run to FILE")
        ->option_text("FILE");
    runCommand->add_flag("--real-time", run.realTime,
                         "Run on the wall clock instead of the virtual clock");
    runCommand
        ->add_option("--driver", run.driver, "The driver library (default: the one beside axlsim)")
        ->option_text("PATH")
        ->check(driverPath());
#if AXLSIM_SERVE
    runCommand
        ->add_option("--html", run.html,
                     "Also write a self-contained HTML report of the run (waveforms, timeline)")
        ->option_text("FILE");
#endif
    auto* until = runCommand
                      ->add_option("--until", untilText,
                                   "End the run at this time, in whole milliseconds " +
                                       axlsim::millisecondsRange())
                      ->option_text("MS")
                      ->check(CLI::Validator(
                          [](const std::string& text) { return axlsim::millisecondsProblem(text); },
                          "", "MILLISECONDS"));

    std::string checkConfig;
    auto* checkCommand = app.add_subcommand(
        "check", "List what the driver will refuse or read differently in a configuration.");
    checkCommand
        ->add_option("CONFIG", checkConfig,
                     "The configuration (JSON, comments allowed); - reads standard input")
        ->required();

    std::string demoDriver;
    auto* demoCommand = app.add_subcommand("demo", "Run the bundled example, with explanations.");
    demoCommand
        ->add_option("--driver", demoDriver, "The driver library (default: the one beside axlsim)")
        ->option_text("PATH")
        ->check(driverPath());

#if AXLSIM_SERVE
    axlsim::serving::Request serve;
    auto* serveCommand = app.add_subcommand(
        "serve", "Run the configuration live, paced to the wall clock, with a page and an API.");
    serveCommand->add_option("CONFIG", serve.config, "The configuration (JSON, comments allowed)")
        ->required();
    std::string portText = std::to_string(serve.port);
    serveCommand
        ->add_option("--port", portText,
                     "The port to listen on, 0 to 65535 in decimal digits (default 8080); 0 picks "
                     "a free one")
        ->option_text("N")
        ->check(CLI::Validator([](const std::string& text) { return axlsim::portProblem(text); },
                               "", "PORT"))
        ->capture_default_str();
    serveCommand
        ->add_option("--listen", serve.listen,
                     "The address to listen on (default 127.0.0.1; anyone who can reach it and has "
                     "the token can "
                     "drive the plant)")
        ->option_text("ADDR")
        ->capture_default_str();
    serveCommand
        ->add_option(
            "--speed", serve.speed,
            "Virtual time runs X times as fast as real time, 0.1 to 100000, or max (default 1)")
        ->option_text("X")
        ->capture_default_str();
    serveCommand->add_flag("--paused", serve.paused, "Start with the clock paused");
    std::string modbusText;
    auto* modbus = serveCommand->add_option(
        "--modbus", modbusText,
        "Also serve the bus over Modbus TCP on PORT (0 picks a free one), on ADDR "
        "(default 127.0.0.1)");
    modbus->option_text("[ADDR:]PORT");
    serveCommand
        ->add_option("--driver", serve.driver,
                     "The driver library (default: the one beside axlsim)")
        ->option_text("PATH")
        ->check(driverPath());
#endif

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (const std::string command = unknownCommand(app, argc, argv); !command.empty()) {
            std::cerr << "axlsim: " << axlsim::visible(command)
                      << " is not a command; the commands are " << commandList(app)
                      << " (axlsim --help shows them)\n";
            return 2;
        }
        if (const std::string option = unknownOption(app); !option.empty()) {
            std::cerr << "axlsim: " << axlsim::visible(option)
                      << " is not an option of axlsim; the commands are " << commandList(app)
                      << " (axlsim --help shows them)\n";
            return 2;
        }
        for (const CLI::App* command : app.get_subcommands()) {
            if (const std::string option = unknownOption(*command); !option.empty()) {
                std::cerr << "axlsim: " << axlsim::visible(option) << " is not an option of axlsim "
                          << command->get_name() << " (axlsim " << command->get_name()
                          << " --help shows its options)\n";
                return 2;
            }
        }
        return axlsim::commands::printed([&] { return app.exit(error) == 0 ? 0 : 2; });
    }

    if (*runCommand) {
        if (*until) {
            run.until = axlsim::readMilliseconds(untilText);
        }
        return axlsim::commands::run(run);
    }
#if AXLSIM_SERVE
    if (*serveCommand) {
        serve.port = axlsim::portNumber(portText);
        if (*modbus) {
            serve.modbus = modbusText;
        }
        return axlsim::commands::serve(serve);
    }
#endif
    if (*checkCommand) {
        return axlsim::commands::check(checkConfig);
    }
    return axlsim::commands::demo(demoDriver);
}

// axlsim: runs a driver configuration on the virtual controller and shows what the driver does.

#include <CLI/CLI.hpp>

#include "axlsim/Commands.h"

int main(int argc, char** argv) {
    CLI::App app{"Runs a PLCnext Axioline F driver configuration on the virtual controller.",
                 "axlsim"};
    app.require_subcommand(1);

    axlsim::Commands::RunRequest run;
    long untilMs = 0;
    auto* runCommand = app.add_subcommand(
        "run", "Load the driver, run the configuration's scenario and print the timeline.");
    runCommand->add_option("CONFIG", run.config, "The configuration (JSON, comments allowed)")
        ->required();
    runCommand->add_flag("--json", run.json, "One JSON object per line instead of text");
    runCommand->add_option("--vcd", run.vcd, "Also write a Value Change Dump of the run to FILE")
        ->option_text("FILE");
    runCommand->add_flag("--real-time", run.realTime,
                         "Run on the wall clock instead of the virtual clock");
    runCommand
        ->add_option("--driver", run.driver, "The driver library (default: the one beside axlsim)")
        ->option_text("PATH");
    auto* until = runCommand->add_option("--until", untilMs, "End the run at this time")
                      ->option_text("MS")
                      ->check(CLI::NonNegativeNumber);

    std::string checkConfig;
    auto* checkCommand = app.add_subcommand(
        "check", "List what the driver will refuse or read differently in a configuration.");
    checkCommand->add_option("CONFIG", checkConfig, "The configuration (JSON, comments allowed)")
        ->required();

    std::string demoDriver;
    auto* demoCommand = app.add_subcommand("demo", "Run the bundled example, with explanations.");
    demoCommand
        ->add_option("--driver", demoDriver, "The driver library (default: the one beside axlsim)")
        ->option_text("PATH");

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : 2;
    }

    if (*runCommand) {
        if (*until)
            run.untilMs = untilMs;
        return axlsim::Commands::run(run);
    }
    if (*checkCommand)
        return axlsim::Commands::check(checkConfig);
    return axlsim::Commands::demo(demoDriver);
}

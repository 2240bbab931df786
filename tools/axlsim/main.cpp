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
#if AXLSIM_SERVE
    runCommand
        ->add_option("--html", run.html,
                     "Also write a self-contained HTML report of the run (waveforms, timeline)")
        ->option_text("FILE");
#endif
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

#if AXLSIM_SERVE
    axlsim::ServeCommand::Request serve;
    auto* serveCommand = app.add_subcommand(
        "serve", "Run the configuration live, paced to the wall clock, with a page and an API.");
    serveCommand->add_option("CONFIG", serve.config, "The configuration (JSON, comments allowed)")
        ->required();
    serveCommand->add_option("--port", serve.port, "The port to listen on; 0 picks a free one")
        ->option_text("N")
        ->check(CLI::Range(0, 65535))
        ->capture_default_str();
    serveCommand
        ->add_option("--listen", serve.listen,
                     "The address to listen on (anyone who can reach it and has the token can "
                     "drive the plant)")
        ->option_text("ADDR")
        ->capture_default_str();
    serveCommand
        ->add_option("--speed", serve.speed,
                     "Virtual time runs X times as fast as real time, 0.1 to 100000, or max")
        ->option_text("X")
        ->capture_default_str();
    serveCommand->add_flag("--paused", serve.paused, "Start with the clock paused");
    serveCommand
        ->add_option("--driver", serve.driver,
                     "The driver library (default: the one beside axlsim)")
        ->option_text("PATH");
#endif

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
#if AXLSIM_SERVE
    if (*serveCommand)
        return axlsim::Commands::serve(serve);
#endif
    if (*checkCommand)
        return axlsim::Commands::check(checkConfig);
    return axlsim::Commands::demo(demoDriver);
}

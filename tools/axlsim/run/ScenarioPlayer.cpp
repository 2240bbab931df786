// SPDX-License-Identifier: MIT
#include "axlsim/run/ScenarioPlayer.h"

#include "axlsim/run/ScenarioRun.h"

#if defined(__SANITIZE_ADDRESS__)
// The driver keeps the payload buffers of its inputs for the life of the process, by design; a
// host cannot free them, so they are no leak of axlsim's.
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libplcnext_driver.so\n";
}
#endif

namespace axlsim {

RunResult scenarioplayer::run(const Config& config, const hosting::DriverLibrary& library,
                              const Options& options) {
    ScenarioRun run(config, library, options);
    run.start();
    run.playUntil(run.end());
    return run.finish();
}

}  // namespace axlsim

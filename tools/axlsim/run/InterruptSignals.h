// SPDX-License-Identifier: MIT
#pragma once

#include <csignal>
#include <string>

namespace axlsim {

// While it lives, SIGINT and SIGTERM do not end the program at once: they are noted, so that a
// run can stop where it is and still show what it has. A second signal of the same kind ends the
// program as usual, should stopping take too long.
class InterruptSignals {
public:
    InterruptSignals();
    ~InterruptSignals();
    InterruptSignals(const InterruptSignals&) = delete;
    InterruptSignals& operator=(const InterruptSignals&) = delete;

    // The signal that came, 0 for none.
    static int received();

    // "SIGINT", "SIGTERM".
    static std::string name(int signal);

private:
    struct sigaction previousInterrupt_ {};
    struct sigaction previousTerminate_ {};
};

}  // namespace axlsim

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

private:
    struct sigaction previousInterrupt_ {};
    struct sigaction previousTerminate_ {};
};

// The signal that came while an InterruptSignals lives, 0 for none.
int receivedInterrupt();

// "SIGINT", "SIGTERM".
std::string signalName(int signal);

}  // namespace axlsim

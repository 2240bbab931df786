// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <pthread.h>
#include <signal.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "DriverFiber.h"
#include "PosixThread.h"
#include "Sanitizers.h"
#include "ThreadState.h"

using orbel::DriverFiber;

namespace {

// A thread object that is never started: a fiber needs an owner, and these tests look at the
// fiber alone.
class IdleThread : public CPosixThread {
public:
    IdleThread() : CPosixThread(0) {}
    void run() override {}
};

class DriverFiberTest : public ::testing::Test {
protected:
    IdleThread thread_;
    orbel::ThreadState owner_{thread_};
};

// Counts its own destruction, to show that a fiber's locals are unwound.
struct Witness {
    explicit Witness(int& destroyed) : destroyed_(destroyed) {}
    ~Witness() { ++destroyed_; }
    int& destroyed_;
};

// A body that records each of the names in `steps`, suspending between one and the next.
std::function<void()> recordingWithSuspensions(std::vector<std::string>& steps,
                                               std::vector<std::string> names) {
    return [&steps, names = std::move(names)] {
        for (std::size_t i = 0; i < names.size(); ++i) {
            if (i > 0) {
                orbel::suspendFiber();
            }
            steps.push_back(names[i]);
        }
    };
}

}  // namespace

TEST_F(DriverFiberTest, RunsNothingUntilItIsResumed) {
    bool ran = false;
    DriverFiber fiber(owner_, [&] { ran = true; });

    EXPECT_FALSE(ran);
    EXPECT_FALSE(fiber.finished());
}

TEST_F(DriverFiberTest, ResumeRunsTheBodyUpToItsSuspensionAndTheNextResumeGoesOnFromThere) {
    std::vector<std::string> steps;
    DriverFiber fiber(owner_, recordingWithSuspensions(steps, {"first", "second", "third"}));

    fiber.resume();
    EXPECT_EQ(steps, (std::vector<std::string>{"first"}));
    EXPECT_FALSE(fiber.finished());

    fiber.resume();
    EXPECT_EQ(steps, (std::vector<std::string>{"first", "second"}));

    fiber.resume();
    EXPECT_EQ(steps, (std::vector<std::string>{"first", "second", "third"}));
    EXPECT_TRUE(fiber.finished());
}

TEST_F(DriverFiberTest, RunsOnTheThreadThatResumesIt) {
    std::thread::id ranOn;
    DriverFiber fiber(owner_, [&] { ranOn = std::this_thread::get_id(); });

    fiber.resume();

    EXPECT_EQ(ranOn, std::this_thread::get_id());
}

TEST_F(DriverFiberTest, KnowsItselfAsTheCurrentFiberOnlyWhileItRuns) {
    DriverFiber* inside = nullptr;
    orbel::ThreadState* insideOwner = nullptr;
    DriverFiber fiber(owner_, [&] {
        inside = orbel::currentFiber();
        insideOwner = orbel::ThreadState::current();
    });

    EXPECT_EQ(orbel::currentFiber(), nullptr);
    fiber.resume();

    EXPECT_EQ(inside, &fiber);
    EXPECT_EQ(insideOwner, &owner_);
    EXPECT_EQ(orbel::currentFiber(), nullptr);
}

TEST_F(DriverFiberTest, KeepsItsLocalsAcrossSuspensions) {
    std::vector<int> seen;
    DriverFiber fiber(owner_, [&] {
        int counter = 0;
        std::vector<int> ownVector;
        for (int round = 0; round < 3; ++round) {
            ownVector.push_back(++counter * 10);
            orbel::suspendFiber();
        }
        seen = ownVector;
    });

    for (int round = 0; round < 4; ++round) {
        fiber.resume();
    }

    EXPECT_TRUE(fiber.finished());
    EXPECT_EQ(seen, (std::vector<int>{10, 20, 30}));
}

TEST_F(DriverFiberTest, AnEndedFiberIsNotResumedAgain) {
    int runs = 0;
    DriverFiber fiber(owner_, [&] { ++runs; });

    fiber.resume();
    fiber.resume();
    fiber.resume();

    EXPECT_TRUE(fiber.finished());
    EXPECT_EQ(runs, 1);
}

TEST_F(DriverFiberTest, ReleasesWhatItsBodyHoldsOnceTheBodyHasReturned) {
    auto held = std::make_shared<int>(7);
    std::weak_ptr<int> watch = held;
    DriverFiber fiber(owner_, [kept = std::move(held)] { orbel::suspendFiber(); });

    fiber.resume();
    EXPECT_FALSE(watch.expired());

    fiber.resume();
    EXPECT_TRUE(fiber.finished());
    EXPECT_TRUE(watch.expired());
}

TEST_F(DriverFiberTest, AFiberThatNeverStartedCanBeDestroyed) {
    auto held = std::make_shared<int>(7);
    std::weak_ptr<int> watch = held;
    {
        DriverFiber fiber(owner_, [kept = std::move(held)] {});
    }
    EXPECT_TRUE(watch.expired());
}

TEST_F(DriverFiberTest, AnExceptionThrownAndCaughtOnTheFiberUnwindsItsFramesAcrossSuspensions) {
    int destroyed = 0;
    std::string caught;
    DriverFiber fiber(owner_, [&] {
        try {
            Witness outer(destroyed);
            orbel::suspendFiber();
            {
                Witness inner(destroyed);
                orbel::suspendFiber();
                throw std::runtime_error("scan failed");
            }
        } catch (const std::runtime_error& error) {
            caught = error.what();
        }
    });

    fiber.resume();
    fiber.resume();
    EXPECT_EQ(destroyed, 0);
    fiber.resume();

    EXPECT_TRUE(fiber.finished());
    EXPECT_EQ(caught, "scan failed");
    EXPECT_EQ(destroyed, 2);
}

TEST_F(DriverFiberTest, AnExceptionOnTheResumingThreadIsNotDisturbedByAFiberThatThrowsItsOwn) {
    std::string onFiber;
    std::string onThread;
    DriverFiber fiber(owner_, [&] {
        try {
            orbel::suspendFiber();
            throw std::logic_error("inside");
        } catch (const std::logic_error& error) {
            onFiber = error.what();
        }
    });
    fiber.resume();

    try {
        try {
            throw std::runtime_error("outside");
        } catch (const std::runtime_error&) {
            // The fiber throws and catches while the thread's own exception is being handled.
            fiber.resume();
            throw;
        }
    } catch (const std::runtime_error& error) {
        onThread = error.what();
    }

    EXPECT_EQ(onFiber, "inside");
    EXPECT_EQ(onThread, "outside");
}

TEST_F(DriverFiberTest, ManyFibersTakeTurnsInTheOrderTheyAreResumed) {
    constexpr int kFibers = 200;
    constexpr int kRounds = 5;
    std::vector<int> order;
    std::vector<std::unique_ptr<DriverFiber>> fibers;
    for (int i = 0; i < kFibers; ++i) {
        fibers.push_back(std::make_unique<DriverFiber>(owner_, [&order, i] {
            for (int round = 0; round < kRounds; ++round) {
                order.push_back(i);
                orbel::suspendFiber();
            }
        }));
    }

    for (int round = 0; round <= kRounds; ++round) {
        for (int i = kFibers - 1; i >= 0; --i) {
            fibers[static_cast<std::size_t>(i)]->resume();
        }
    }

    ASSERT_EQ(order.size(), static_cast<std::size_t>(kFibers * kRounds));
    for (std::size_t n = 0; n < order.size(); ++n) {
        EXPECT_EQ(order[n], kFibers - 1 - static_cast<int>(n % kFibers)) << "at " << n;
    }
    for (const auto& fiber : fibers) {
        EXPECT_TRUE(fiber->finished());
    }
}

TEST_F(DriverFiberTest, AFiberResumedFromAnotherFiberGivesTheThreadBackToThatFiber) {
    std::vector<std::string> steps;
    DriverFiber inner(owner_, recordingWithSuspensions(steps, {"inner", "inner again"}));
    DriverFiber outer(owner_, [&] {
        steps.push_back("outer");
        inner.resume();
        EXPECT_EQ(orbel::currentFiber(), &outer);
        steps.push_back("outer after inner");
        orbel::suspendFiber();
        inner.resume();
        steps.push_back("outer end");
    });

    outer.resume();
    EXPECT_EQ(orbel::currentFiber(), nullptr);
    outer.resume();

    EXPECT_EQ(steps, (std::vector<std::string>{"outer", "inner", "outer after inner", "inner again",
                                               "outer end"}));
    EXPECT_TRUE(inner.finished());
    EXPECT_TRUE(outer.finished());
}

TEST_F(DriverFiberTest, ADeepCallChainFitsOnTheFibersStack) {
    // Some 100 KiB of frames, well inside the stack the fiber is given.
    std::function<int(int)> descend = [&](int depth) {
        volatile char frame[1024] = {};
        frame[0] = static_cast<char>(depth);
        return depth == 0 ? 0 : frame[0] - static_cast<char>(depth) + 1 + descend(depth - 1);
    };
    int reached = 0;
    DriverFiber fiber(owner_, [&] { reached = descend(100); });

    fiber.resume();

    EXPECT_EQ(reached, 100);
}

namespace {

// Misuses abort the process. The death tests fork without exec: the ARMv7 build runs under
// qemu-user, where the program cannot be started again by itself, and AddressSanitizer's
// detection of stack use after return does not know the stack of the clone used otherwise.
class DriverFiberMisuse : public DriverFiberTest {
protected:
    void SetUp() override { GTEST_FLAG_SET(death_test_style, "fast"); }
};

// Frames of a kilobyte each, so deep that they leave the fiber's stack.
int recurse(int depth) {
    volatile char frame[1024];
    frame[0] = static_cast<char>(depth);
    return depth > 0 ? recurse(depth - 1) + frame[0] : 0;
}

}  // namespace

TEST_F(DriverFiberMisuse, SuspendingInsideACatchBlockAbortsWithAMessage) {
    EXPECT_DEATH(
        {
            DriverFiber fiber(owner_, [] {
                try {
                    throw std::runtime_error("scan failed");
                } catch (const std::runtime_error&) {
                    orbel::suspendFiber();
                }
            });
            fiber.resume();
        },
        "driver fiber: suspended inside a catch block");
}

TEST_F(DriverFiberMisuse, SuspendingWhileAnExceptionIsInFlightAbortsWithAMessage) {
    struct SuspendsWhenDestroyed {
        ~SuspendsWhenDestroyed() { orbel::suspendFiber(); }
    };
    EXPECT_DEATH(
        {
            DriverFiber fiber(owner_, [] {
                try {
                    SuspendsWhenDestroyed unwound;
                    throw std::runtime_error("scan failed");
                } catch (const std::runtime_error&) {
                }
            });
            fiber.resume();
        },
        "driver fiber: suspended while an exception is in flight");
}

TEST_F(DriverFiberMisuse, ResumingAFiberFromItselfAbortsWithAMessage) {
    EXPECT_DEATH(
        {
            DriverFiber* self = nullptr;
            DriverFiber fiber(owner_, [&self] { self->resume(); });
            self = &fiber;
            fiber.resume();
        },
        "driver fiber: resumed while it is running or resuming another fiber");
}

TEST_F(DriverFiberMisuse, ResumingAFiberOnAnotherThreadAbortsWithAMessage) {
    EXPECT_DEATH(
        {
            DriverFiber fiber(owner_, [] { orbel::suspendFiber(); });
            fiber.resume();
            std::thread other([&fiber] { fiber.resume(); });
            other.join();
        },
        "driver fiber: resumed on another thread than the one it started on");
}

TEST_F(DriverFiberMisuse, AnOverflowOfItsStackFaultsAtOnce) {
    if (testsupport::builtWithAddressSanitizer() || testsupport::builtWithThreadSanitizer()) {
        GTEST_SKIP()
            << "the sanitizers report an overflow themselves, with stacks of their own size";
    }
    EXPECT_EXIT(
        {
            DriverFiber fiber(owner_, [] { recurse(4096); });
            fiber.resume();
        },
        ::testing::KilledBySignal(SIGSEGV), "");
}

TEST_F(DriverFiberTest, AResumerInsideACatchBlockMayResumeAFiberThatSuspends) {
    std::vector<std::string> steps;
    DriverFiber fiber(owner_, recordingWithSuspensions(steps, {"first", "second"}));
    try {
        throw std::runtime_error("the host's own");
    } catch (const std::runtime_error&) {
        fiber.resume();
    }
    fiber.resume();

    EXPECT_TRUE(fiber.finished());
    EXPECT_EQ(steps, (std::vector<std::string>{"first", "second"}));
}

// The fiber's context is made when it is first entered, on the thread that enters it: made in the
// constructor, it would restore the constructing thread's signal mask.
TEST_F(DriverFiberTest, StartsWithTheSignalMaskOfTheThreadThatFirstResumesIt) {
    std::unique_ptr<DriverFiber> fiber;
    bool blockedInside = true;
    std::thread maker([&] {
        sigset_t blocked;
        sigemptyset(&blocked);
        sigaddset(&blocked, SIGUSR1);
        pthread_sigmask(SIG_BLOCK, &blocked, nullptr);
        fiber = std::make_unique<DriverFiber>(owner_, [&blockedInside] {
            sigset_t mask;
            pthread_sigmask(SIG_SETMASK, nullptr, &mask);
            blockedInside = sigismember(&mask, SIGUSR1) == 1;
        });
    });
    maker.join();
    sigset_t mine;
    pthread_sigmask(SIG_SETMASK, nullptr, &mine);
    ASSERT_EQ(sigismember(&mine, SIGUSR1), 0);

    fiber->resume();

    EXPECT_TRUE(fiber->finished());
    EXPECT_FALSE(blockedInside);
}

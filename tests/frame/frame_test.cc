// SPDX-License-Identifier: Apache-2.0
//
// The protected region, compiled with exactly the library's flags at every level of optimisation:
// what a body stored before an escape must be there for the handler, whatever the compiler thinks
// of calls that do not return.
#include "str/core/frame.h"

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>

using namespace libstr;

namespace
{

int failures = 0;

void Check(bool holds, const char *what)
{
    if (!holds) {
        std::printf("FAILED: %s\n", what);
        ++failures;
    }
}

[[noreturn]] void Raise(int escapeClass, int code)
{
    er_TracedEscape(escapeClass, code, "tests/frame", 1);
}

// Stores of every sort, the last right before the escape and none of them read again by the body.
struct Held {
    bool open = false;
    int count = 0;
    const char *name = nullptr;
    char buffer[32] = {};
};

void TakeAndFail(Held &held, int escapeClass)
{
    frame::Protect(
        "tests/frame", frame::Accept(3),
        [&] {
            held.open = true;
            held.count += 2;
            held.name = "taken";
            for (char &c : held.buffer)
                c = 'x';
            held.count += 40;
            Raise(escapeClass, 7);
        },
        [&] {
            Check(held.open && held.count == 42 && held.name != nullptr && held.buffer[31] == 'x',
                  "the handler sees what the body stored");
            held.open = false;
        });
}

void StoresSurviveTheEscape()
{
    Held held;
    TakeAndFail(held, 3);
    Check(!held.open && held.count == 42, "so does the caller, and what the handler stored");

    // The same with everything in one frame, where the optimiser sees most.
    bool open = false;
    int steps = 0;
    const bool completed = frame::Protect(
        "tests/frame", frame::Clear(),
        [&] {
            open = true;
            ++steps;
            Raise(9, 8);
        },
        [&] { steps += open ? 10 : 100; });
    Check(!completed && open && steps == 11, "stores to locals of one frame");
}

void ABodyThatCompletesIsNotHandled()
{
    sigjmp_buf *const before = er_GetCurrEnv();
    int done = 0;
    const bool completed = frame::Protect(
        "tests/frame", frame::Propagate(), [&] { done = 1; }, [&] { done = 2; });
    Check(completed && done == 1, "a body that completes is not handled");
    Check(er_GetCurrEnv() == before, "the enclosing environment is back after a body");
}

// What each verdict makes of an escape of class `escapeClass`: 1 when it was swallowed, 2 when it
// came through to the enclosing region.
int Outcome(frame::Verdict verdict, int escapeClass)
{
    int outcome = 0;
    frame::Protect(
        "tests/frame", frame::Clear(),
        [&] {
            sigjmp_buf *const mine = er_GetCurrEnv();
            frame::Protect(
                "tests/frame", verdict, [&] { Raise(escapeClass, 5); },
                [&] {
                    Check(er_GetCurrEnv() == mine, "the enclosing one is current in a handler");
                });
            outcome = 1;
        },
        [&] { outcome = 2; });
    Check(er_GetLive() == 0, "nothing is live in the end");
    return outcome;
}

void VerdictsDecide()
{
    Check(Outcome(frame::Accept(3), 3) == 1, "accept swallows its class");
    Check(Outcome(frame::Accept(3), 5) == 2, "accept passes another class on");
    Check(Outcome(frame::Accept(5), 5) == 1, "accept of another class");
    Check(Outcome(frame::Propagate(), 3) == 2, "propagate passes everything on");
    Check(Outcome(frame::Clear(), 3) == 1, "clear swallows everything");
}

// An escape that the clean-up raises belongs to the enclosing region.
void CleanUpMayEscape()
{
    int outer = 0;
    frame::Protect(
        "tests/frame", frame::Accept(3),
        [&] {
            frame::Protect(
                "tests/frame", frame::Accept(3), [&] { Raise(3, 1); }, [&] { Raise(3, 2); });
            outer = 100;
        },
        [&] { ++outer; });
    Check(outer == 1, "an escape from the clean-up goes to the enclosing region");
}

void RegionsNestDeeply(int depth, int &unwound)
{
    frame::Protect(
        "tests/frame", frame::Propagate(),
        [&] {
            if (depth == 0)
                Raise(3, 4);
            RegionsNestDeeply(depth - 1, unwound);
        },
        [&] { ++unwound; });
}

// Passes an escape on from a region around which there is none.
int HowTheProcessEnds()
{
    const pid_t child = fork();
    if (child == 0) {
        frame::Protect(
            "tests/frame", frame::Propagate(), [] { Raise(3, 6); }, [] {});
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFSIGNALED(status) ? WTERMSIG(status) : 0;
}

} // namespace

// A service that returns, whether or not there is an environment to jump to.
extern "C" void er_TraceBeforeJump(const char *, int) {}

int main()
{
    StoresSurviveTheEscape();
    ABodyThatCompletesIsNotHandled();
    VerdictsDecide();
    CleanUpMayEscape();
    int unwound = 0;
    frame::Protect(
        "tests/frame", frame::Accept(3), [&] { RegionsNestDeeply(100, unwound); }, [] {});
    Check(unwound == 101, "every region on the way is unwound once");
    Check(er_GetCurrEnv() == nullptr, "no environment is left behind");
    Check(HowTheProcessEnds() == SIGABRT, "an escape that has nowhere to go aborts");
    return failures == 0 ? 0 : 1;
}

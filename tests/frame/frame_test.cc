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
#include <cstdlib>

using namespace libstr;

namespace
{

#define CHECK(holds) ((holds) ? void() : (std::puts("FAILED: " #holds), std::exit(1)))

[[noreturn]] void Raise(int escapeClass) { er_TracedEscape(escapeClass, 7, "tests/frame", 1); }

template <class Body, class Handler>
bool Protect(frame::Verdict verdict, Body body, Handler handler)
{
    return frame::Protect("tests/frame", verdict, body, handler);
}

// Stores of every sort, the last right before the escape and none of them read again by the body.
struct Held {
    bool open = false;
    int count = 0;
    const char *name = nullptr;
    char buffer[32] = {};
};

void StoresSurviveTheEscape(Held &held)
{
    Protect(
        frame::Accept(3),
        [&] {
            held.open = true;
            held.count += 2;
            held.name = "taken";
            for (char &c : held.buffer)
                c = 'x';
            held.count += 40;
            Raise(3);
        },
        [&] {
            CHECK(held.open && held.count == 42 && held.name != nullptr && held.buffer[31] == 'x');
            held.open = false;
        });
}

// What each verdict makes of an escape of class `escapeClass`: 1 when it was swallowed, 2 when it
// came through to the enclosing region.  All in one frame, where the optimiser sees most.
int Outcome(frame::Verdict verdict, int escapeClass, int cleanUpRaises = 0)
{
    int outcome = 0, steps = 0;
    Protect(
        frame::Clear(),
        [&] {
            sigjmp_buf *const mine = er_GetCurrEnv();
            const auto cleanUp = [&] {
                CHECK(++steps == 2 && er_GetCurrEnv() == mine);
                if (cleanUpRaises != 0)
                    Raise(cleanUpRaises);
            };
            CHECK(!Protect(
                verdict, [&] { ++steps, Raise(escapeClass); }, cleanUp));
            outcome = 1;
        },
        [&] { outcome = 2; });
    CHECK(steps == 2 && er_GetLive() == 0);
    return outcome;
}

void RegionsNestDeeply(int depth, int &unwound)
{
    const auto deeper = [&] { depth == 0 ? Raise(3) : RegionsNestDeeply(depth - 1, unwound); };
    Protect(frame::Propagate(), deeper, [&] { ++unwound; });
}

} // namespace

// A service that returns, whether or not there is an environment to jump to.
extern "C" void er_TraceBeforeJump(const char *, int) {}

int main()
{
    Held held;
    StoresSurviveTheEscape(held);
    CHECK(!held.open && held.count == 42);
    int done = 0, unwound = 0;
    CHECK(Protect(
              frame::Propagate(), [&] { done = 1; }, [&] { done = 2; }) &&
          done == 1);
    CHECK(Outcome(frame::Accept(3), 3) == 1 && Outcome(frame::Accept(5), 5) == 1);
    CHECK(Outcome(frame::Accept(3), 5) == 2 && Outcome(frame::Propagate(), 3) == 2);
    CHECK(Outcome(frame::Clear(), 3) == 1 && Outcome(frame::Accept(3), 3, 3) == 2);
    Protect(
        frame::Accept(3), [&] { RegionsNestDeeply(100, unwound); }, [] {});
    CHECK(unwound == 101 && er_GetCurrEnv() == nullptr);
    const pid_t child = fork(); // it passes an escape on from a region around which there is none
    if (child == 0)
        Protect(
            frame::Propagate(), [] { Raise(3); }, [] {});
    int status = 0;
    CHECK(waitpid(child, &status, 0) == child && WIFSIGNALED(status) &&
          WTERMSIG(status) == SIGABRT);
}

// SPDX-License-Identifier: Apache-2.0
//
// The protected region, compiled with the library's flags at every level of optimisation: what a
// body stored before an escape must be there for the handler.
#include "str/core/frame.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>

using namespace libstr;

namespace
{

#define CHECK(holds) ((holds) ? void() : (std::puts("FAILED: " #holds), std::exit(1)))

[[noreturn]] void Raise(int escapeClass) { er_TracedEscape(escapeClass, 7, "tests/frame", 1); }

// Stores of every sort, the last right before the escape and none of them read again by the body.
void StoresSurviveTheEscape()
{
    bool open = false;
    int count = 0;
    char buffer[32] = {};
    auto body = [&] {
        open = true;
        count += 2;
        for (char &c : buffer)
            c = 'x';
        count += 40;
        Raise(3);
    };
    frame::Protect("", frame::Accept(3), body, [&] {
        CHECK(open && count == 42 && buffer[31] == 'x');
        open = false;
    });
    CHECK(!open && count == 42);
}

// What each verdict makes of an escape of class `escapeClass`: 1 when it was swallowed, 2 when it
// came through to the enclosing region.  All in one frame, where the optimiser sees most.
int Outcome(frame::Verdict verdict, int escapeClass, int cleanUpRaises = 0)
{
    int outcome = 0, steps = 0;
    auto raise = [&] { ++steps, Raise(escapeClass); };
    auto region = [&] {
        sigjmp_buf *const mine = er_GetCurrEnv();
        CHECK(!frame::Protect("", verdict, raise, [&] {
            CHECK(++steps == 2 && er_GetCurrEnv() == mine);
            if (cleanUpRaises != 0)
                Raise(cleanUpRaises);
        }));
        outcome = 1;
    };
    frame::Protect("", frame::Clear(), region, [&] { outcome = 2; });
    CHECK(steps == 2 && er_GetLive() == 0);
    return outcome;
}

} // namespace

// A service that returns, whether or not there is an environment to jump to.
extern "C" void er_TraceBeforeJump(const char *, int) {}

int main()
{
    StoresSurviveTheEscape();
    CHECK(Outcome(frame::Accept(3), 3) == 1 && Outcome(frame::Accept(5), 5) == 1);
    CHECK(Outcome(frame::Accept(3), 5) == 2 && Outcome(frame::Propagate(), 3) == 2);
    CHECK(Outcome(frame::Clear(), 3) == 1 && Outcome(frame::Accept(3), 3, 3) == 2);
    // An escape that is passed on from a region around which there is none ends the process.
    std::signal(SIGABRT, [](int) { std::_Exit(0); });
    auto raise = [] { Raise(3); };
    frame::Protect("", frame::Propagate(), raise, [] {});
    return 1;
}

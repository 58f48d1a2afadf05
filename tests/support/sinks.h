// SPDX-License-Identifier: Apache-2.0
//
// What the library traces and logs while a test runs.
#ifndef TESTS_SUPPORT_SINKS_H
#define TESTS_SUPPORT_SINKS_H

#include "services/services.h"

#include <platform/er.h>

#include <string>

// Both sinks are its own while it lives; the trace level is 0 afterwards.
struct Sinks {
    inline static std::string traced; // "19+name 17-name "
    inline static std::string logged; // a line each: the code and the text

    Sinks()
    {
        traced.clear();
        logged.clear();
        er_SetTraceSink([](int traceClass, const char *text, int marker) {
            if (marker >= 0)
                traced += std::to_string(traceClass) + (marker == 1 ? "+" : "-") + text + " ";
        });
        er_SetLogSink(
            [](int code, const char *text) { logged += std::to_string(code) + " " + text + "\n"; });
    }
    ~Sinks()
    {
        er_SetTraceSink(nullptr);
        er_SetLogSink(nullptr);
        er_SubSystemLoggingLevel = 0;
    }
    Sinks(const Sinks &) = delete;
    Sinks &operator=(const Sinks &) = delete;
};

#endif

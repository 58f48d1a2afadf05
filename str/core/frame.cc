// SPDX-License-Identifier: Apache-2.0
#include "str/core/frame.h"

#include <cstdio>
#include <cstdlib>

template bool libstr::RunProtected<er_SetCurrEnv>(void (*body)(void *), void *context);

namespace libstr::frame
{

void PassOn(const char *source, int line)
{
    if (er_GetLive() == 0)
        return;
    er_TraceBeforeJump(source, line);
    sigjmp_buf *const environment = er_GetCurrEnv();
    if (environment == nullptr) { // the default service's trace has aborted already
        std::fputs("libstr: an escape is passed on, and there is no error environment\n", stderr);
        std::abort();
    }
    siglongjmp(*environment, 1);
}

} // namespace libstr::frame

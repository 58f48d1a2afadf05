// SPDX-License-Identifier: Apache-2.0
//
// What nearly every test includes.
#ifndef TESTS_SUPPORT_TEST_H
#define TESTS_SUPPORT_TEST_H

#include "services/services.h"
#include "tests/support/escape.h"
#include "tests/support/guarded.h"
#include "tests/support/sinks.h"
#include "tests/support/text.h"

#include <gtest/gtest.h>
#include <platform/ccs.h>
#include <platform/er.h>
#include <platform/os.h>
#include <str/str.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

using namespace std::string_literals;

#endif

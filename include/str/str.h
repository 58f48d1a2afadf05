/* SPDX-License-Identifier: Apache-2.0 */
/* All of libstr: include this one, or the header of a family alone. */
#ifndef STR_STR_H
#define STR_STR_H

#include <str/case.h>
#include <str/casetable.h>
#include <str/charset.h>
#include <str/compare.h>
#include <str/concat.h>
#include <str/display.h>
#include <str/format.h>
#include <str/match.h>
#include <str/split.h>
#include <str/transform.h>
#include <str/truncate.h>

#endif

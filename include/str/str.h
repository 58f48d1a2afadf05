/* SPDX-License-Identifier: Apache-2.0 */
/*
 * All of libstr.  Include this header, or only that of a family.  charset.h shows how to begin:
 * with the descriptor of a character set.
 */
#ifndef STR_STR_H
#define STR_STR_H

#include <str/case.h>
#include <str/casetable.h>
#include <str/charset.h>
#include <str/codes.h>
#include <str/compare.h>
#include <str/concat.h>
#include <str/display.h>
#include <str/format.h>
#include <str/match.h>
#include <str/split.h>
#include <str/transform.h>
#include <str/truncate.h>

#endif

// SPDX-License-Identifier: Apache-2.0
//
// A slow and obvious reader of ISO 2022 text: byte by byte, from the standard's words, with no
// tables of classes, no runs and no blocks.  What the engine answers must be what it answers.
#ifndef TESTS_SUPPORT_READER_H
#define TESTS_SUPPORT_READER_H

#include <string>
#include <string_view>

// The segments of `bytes`, in the notation of text.h, read as a string of the named set with
// escapes allowed.  Knows the sets whose names are in reader.cc.
std::string ReadSlowly(const std::string &setName, std::string_view bytes);

#endif

// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_PROCESS_DIGEST_H
#define TESTS_PROCESS_DIGEST_H

#include <str/casetable.h>

#include <string>

// All that a record of this process or of the attached image holds, in hexadecimal: what stands
// behind the header of its compiled file, with 0 for each reference.
std::string Digest(const CaseTableRecord &record);

#endif

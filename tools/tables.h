// SPDX-License-Identifier: Apache-2.0
#ifndef TOOLS_TABLES_H
#define TOOLS_TABLES_H

#include <str/charset.h>

#include <string>

namespace strtool
{

// Throws a TextError, which says what is missing and where, unless the text's set and the sets that
// it switches to have their case tables.  The library leaves text without a table as it is, which
// would look like a result here.
void DemandTables(const std::string &text, const CSDescriptor &cs);

} // namespace strtool

#endif

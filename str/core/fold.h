// SPDX-License-Identifier: Apache-2.0
//
// UTF-8 text compared without regard to case.
#ifndef STR_CORE_FOLD_H
#define STR_CORE_FOLD_H

namespace libstr
{

// Whether two NUL-terminated texts are equal after case-folding by GLib (g_utf8_casefold).  A
// malformed byte is equal only to itself.
bool AreAlikeFolded(const char *s1, const char *s2);

} // namespace libstr

#endif

// SPDX-License-Identifier: Apache-2.0
//
// UTF-8 text compared without regard to case.
#ifndef STR_CORE_FOLD_H
#define STR_CORE_FOLD_H

namespace libstr
{

// Whether two NUL-terminated texts are the same once GLib has case-folded them (g_utf8_casefold).
// A byte of no well-formed character stands for itself.
bool AreAlikeFolded(const char *s1, const char *s2);

} // namespace libstr

#endif

// SPDX-License-Identifier: Apache-2.0
//
// What upper case and comparison without regard to case need: the shipped case tables, and for
// toupper_l and strcasecmp_l a locale of ISO 8859-1, which the system may not have.
#ifndef BENCH_TABLES_H
#define BENCH_TABLES_H

#include "services/services.h"
#include "tests/support/home.h"

#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace bench
{

inline locale_t theLatin1; // null if there is none

// A service home with the tables, and the locale of ISO 8859-1.  A table that is used in its
// lifetime stays in the registry.
class ShippedTables
{
  public:
    ShippedTables()
    {
        er_SetTraceSink([](int, const char *, int) {});
        std::filesystem::copy(STR_DATA_DIR "/toupper", home.PathOf("toupper"));
        if (theLatin1 == nullptr)
            MakeLatin1();
    }

  private:
    TempHome home;

    void MakeLatin1() const
    {
        const std::string command = "localedef -i en_US -f ISO-8859-1 " +
                                    home.PathOf("en_US.ISO-8859-1") + " >/dev/null 2>&1";
        if (std::system(command.c_str()) != 0)
            return;
        setenv("LOCPATH", home.path().c_str(), 1);
        theLatin1 = newlocale(LC_CTYPE_MASK, "en_US.ISO-8859-1", nullptr);
        unsetenv("LOCPATH");
    }
};

} // namespace bench

#endif

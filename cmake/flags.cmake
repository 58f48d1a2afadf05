# SPDX-License-Identifier: Apache-2.0
# What the sources are compiled with, as INTERFACE targets to link to:
#   str_headers        the include folders of the project
#   str_warnings       the warnings that our own sources keep to
#   str_runtime_flags  code that needs no C++ runtime and that escapes may jump over
#   str_library_flags  the same, and nothing exported except what a header declares
include(CheckCXXCompilerFlag)

add_library(str_headers INTERFACE)
target_include_directories(str_headers INTERFACE ${PROJECT_SOURCE_DIR}
                                                 ${PROJECT_SOURCE_DIR}/include)

if(STR_NO_VECTOR)
    target_compile_definitions(str_headers INTERFACE STR_NO_VECTOR)
endif()

add_library(str_warnings INTERFACE)
target_compile_options(str_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast -Wcast-qual
    -Wcast-align -Wformat=2 -Wundef -Wnull-dereference -Wdouble-promotion -Wimplicit-fallthrough
    $<$<BOOL:${STR_WERROR}>:-Werror>)

# GCC 12 wrongly reports overlapping copies inside std::string, and null where threads are watched.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    target_compile_options(str_warnings INTERFACE -Wno-restrict)
    if(CMAKE_CXX_FLAGS MATCHES "-fsanitize=thread")
        target_compile_options(str_warnings INTERFACE -Wno-null-dereference)
    endif()
endif()

set(STR_SANITIZED OFF)
if(CMAKE_CXX_FLAGS MATCHES "-fsanitize=")
    set(STR_SANITIZED ON)
endif()

add_library(str_runtime_flags INTERFACE)
target_compile_options(str_runtime_flags INTERFACE -fno-exceptions -fno-rtti)

# Inter-procedural modification analysis drops stores before a call that does not return, although
# the handler of the escape reads them.
check_cxx_compiler_flag(-fno-ipa-modref STR_HAVE_NO_IPA_MODREF)
if(STR_HAVE_NO_IPA_MODREF)
    target_compile_options(str_runtime_flags INTERFACE -fno-ipa-modref)
endif()

# Needs an optimising build, and hides calls from the sanitizers.
if(NOT STR_SANITIZED AND NOT CMAKE_BUILD_TYPE STREQUAL "Debug")
    target_compile_options(str_runtime_flags INTERFACE
        "SHELL:-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2")
endif()

add_library(str_library_flags INTERFACE)
target_link_libraries(str_library_flags INTERFACE str_runtime_flags)
target_compile_options(str_library_flags INTERFACE
    -fvisibility=hidden -fvisibility-inlines-hidden)

# Unique symbols, one for the process, would stay global in the archives.
check_cxx_compiler_flag(-fno-gnu-unique STR_HAVE_NO_GNU_UNIQUE)
if(STR_HAVE_NO_GNU_UNIQUE)
    target_compile_options(str_library_flags INTERFACE -fno-gnu-unique)
endif()

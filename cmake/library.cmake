# SPDX-License-Identifier: Apache-2.0
# str_library(<name> FLAGS <target> MAP <file> SOURCES <file>...)
#
# Compiles the sources once and makes of them lib<name>.a (target <name>) and lib<name>.so (target
# <name>_shared), which exports what the version script MAP lists. The shared one is linked as C
# and depends on what it uses alone, so that the C++ runtime, which it does not use, is no
# dependency. Services that the library calls stay undefined until the host is linked.
function(str_library name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "FLAGS;MAP" "SOURCES")

    add_library(${name}_objects OBJECT ${arg_SOURCES})
    set_target_properties(${name}_objects PROPERTIES POSITION_INDEPENDENT_CODE ON)
    target_link_libraries(${name}_objects
        PRIVATE ${arg_FLAGS} str_warnings str_headers PkgConfig::GLIB)

    add_library(${name} STATIC $<TARGET_OBJECTS:${name}_objects>)
    add_library(${name}_shared SHARED $<TARGET_OBJECTS:${name}_objects>)
    target_link_libraries(${name} PUBLIC str_headers PkgConfig::GLIB)
    target_link_libraries(${name}_shared PUBLIC str_headers PkgConfig::GLIB)
    target_link_options(${name}_shared PRIVATE
        -Wl,--as-needed -Wl,--version-script=${arg_MAP})
    set_target_properties(${name}_shared PROPERTIES
        OUTPUT_NAME ${name}
        LINKER_LANGUAGE C
        LINK_DEPENDS ${arg_MAP}
        VERSION ${PROJECT_VERSION}
        SOVERSION 0)
endfunction()

# SPDX-License-Identifier: Apache-2.0
# str_library(<name> [WEAK] MAP <file> SOURCES <file>...)
#
# Compiles the sources once and makes lib<name>.a (target <name>) and lib<name>.so (target
# <name>_shared) of them. Both export only what the version script MAP lists; with WEAK, the symbols
# of the archive give way to those of the host. The shared library is linked as C and depends only on
# what it uses, so it does not depend on the C++ runtime. Services that the library calls stay
# undefined until the host is linked.
#
# Link-time optimisation is always off: it would make weak symbols strong, inline one service into
# another although a host may replace either, and analyse protected regions, which escapes leave by
# a jump.
function(str_library name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "WEAK" "MAP" "SOURCES")

    add_library(${name}_objects OBJECT ${arg_SOURCES})
    set_target_properties(${name}_objects PROPERTIES
        POSITION_INDEPENDENT_CODE ON
        INTERPROCEDURAL_OPTIMIZATION OFF)
    target_compile_options(${name}_objects PRIVATE -fno-lto)
    target_link_libraries(${name}_objects
        PRIVATE str_library_flags str_warnings str_headers PkgConfig::GLIB)

    # The archive holds one object, whose sections a host may leave out with -Wl,--gc-sections.
    target_compile_options(${name}_objects PRIVATE -ffunction-sections -fdata-sections)
    set(combined ${CMAKE_CURRENT_BINARY_DIR}/${name}.o)
    set(combine ${PROJECT_SOURCE_DIR}/cmake/combine.sh)
    separate_arguments(flags NATIVE_COMMAND "${CMAKE_CXX_FLAGS}")
    add_custom_command(OUTPUT ${combined}
        COMMAND ${CMAKE_COMMAND} -E env OBJCOPY=${CMAKE_OBJCOPY}
            bash ${combine} ${arg_MAP} $<IF:$<BOOL:${arg_WEAK}>,weak,strong> ${combined}
            ${CMAKE_CXX_COMPILER} ${flags} -- $<TARGET_OBJECTS:${name}_objects>
        DEPENDS ${combine} ${arg_MAP} ${name}_objects $<TARGET_OBJECTS:${name}_objects>
        COMMAND_EXPAND_LISTS VERBATIM)
    add_library(${name} STATIC ${combined})
    set_target_properties(${name} PROPERTIES LINKER_LANGUAGE CXX)
    target_link_libraries(${name} PUBLIC str_headers PkgConfig::GLIB)

    add_library(${name}_shared SHARED $<TARGET_OBJECTS:${name}_objects>)
    target_link_libraries(${name}_shared PUBLIC str_headers PkgConfig::GLIB)
    # It stays loaded: a thread that ends after dlclose still releases its memory with it.
    target_link_options(${name}_shared PRIVATE
        -Wl,--as-needed -Wl,-z,nodelete -Wl,--version-script=${arg_MAP})
    set_target_properties(${name}_shared PROPERTIES
        OUTPUT_NAME ${name}
        LINKER_LANGUAGE C
        LINK_DEPENDS ${arg_MAP}
        VERSION ${PROJECT_VERSION}
        SOVERSION 0)
endfunction()

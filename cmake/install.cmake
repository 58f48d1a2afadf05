# SPDX-License-Identifier: Apache-2.0
install(TARGETS str str_shared strservices strservices_shared strtool)
install(DIRECTORY include/str platform TYPE INCLUDE FILES_MATCHING PATTERN "*.h")
install(FILES services/services.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/services)

# The default service home: the case tables, compiled since not every user may write there, and the
# lock file, which a reader needs.
set(default_home ${CMAKE_INSTALL_DATADIR}/libstr)
file(GLOB case_tables CONFIGURE_DEPENDS data/toupper/*.s)
install(FILES data/toupper/README.md ${case_tables} DESTINATION ${default_home}/toupper)
file(TOUCH ${PROJECT_BINARY_DIR}/toupper.lk)
install(FILES ${PROJECT_BINARY_DIR}/toupper.lk DESTINATION ${default_home}/sys)

if(CMAKE_CROSSCOMPILING AND NOT CMAKE_CROSSCOMPILING_EMULATOR)
    message(STATUS "The case tables are not compiled: strtool does not run on this machine")
else()
    set(compiled_dir ${PROJECT_BINARY_DIR}/toupper)
    file(MAKE_DIRECTORY ${compiled_dir})
    list(TRANSFORM case_tables REPLACE ".*/(.+)\\.s$" "${compiled_dir}/\\1.b"
        OUTPUT_VARIABLE compiled_tables)
    add_custom_command(OUTPUT ${compiled_tables}
        COMMAND strtool casetable compile -d ${compiled_dir} ${case_tables}
        DEPENDS strtool ${case_tables}
        COMMENT "Compiling the case tables"
        VERBATIM)
    add_custom_target(case_tables ALL DEPENDS ${compiled_tables})
    install(FILES ${compiled_tables} DESTINATION ${default_home}/toupper)
endif()

# The prefix is relative to the file, so that an installed tree may be moved.
set(pkgconfig_dir ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH pkgconfig_to_prefix ${pkgconfig_dir} ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" pkgconfig_to_prefix "${pkgconfig_to_prefix}")
configure_file(cmake/libstr.pc.in libstr.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/libstr.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# SPDX-License-Identifier: Apache-2.0
install(TARGETS str str_shared strservices strservices_shared strtool)
install(DIRECTORY include/str platform TYPE INCLUDE FILES_MATCHING PATTERN "*.h")
install(FILES services/services.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/services)

# The prefix is given from where the file stands, so that an installed tree may be moved.
set(pkgconfig_dir ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH pkgconfig_to_prefix ${pkgconfig_dir} ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" pkgconfig_to_prefix "${pkgconfig_to_prefix}")
configure_file(cmake/libstr.pc.in libstr.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/libstr.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

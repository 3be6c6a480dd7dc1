# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
# Client code for Wayland protocol extensions, made from their descriptions.
pkg_get_variable(OSTREL_WAYLAND_SCANNER wayland-scanner wayland_scanner)
pkg_get_variable(OSTREL_WAYLAND_PROTOCOLS wayland-protocols pkgdatadir)
if(NOT OSTREL_WAYLAND_SCANNER OR NOT OSTREL_WAYLAND_PROTOCOLS)
  message(FATAL_ERROR "wayland-scanner or wayland-protocols is missing")
endif()
enable_language(C) # the scanner writes C

# ostrel_wayland_protocol(TARGET PATH): PATH is that of the description, in wayland-protocols where it
# is not absolute, without ".xml"; the header is included as "NAME-client-protocol.h".
function(ostrel_wayland_protocol target path)
  get_filename_component(name "${path}" NAME)
  cmake_path(ABSOLUTE_PATH path BASE_DIRECTORY "${OSTREL_WAYLAND_PROTOCOLS}")
  set(description "${path}.xml")
  set(folder "${CMAKE_CURRENT_BINARY_DIR}/protocols")
  file(MAKE_DIRECTORY "${folder}")
  set(header "${folder}/${name}-client-protocol.h")
  set(code "${folder}/${name}-protocol.c")
  add_custom_command(OUTPUT "${header}"
    COMMAND "${OSTREL_WAYLAND_SCANNER}" client-header "${description}" "${header}"
    DEPENDS "${description}" VERBATIM)
  add_custom_command(OUTPUT "${code}"
    COMMAND "${OSTREL_WAYLAND_SCANNER}" private-code "${description}" "${code}"
    DEPENDS "${description}" VERBATIM)
  set_source_files_properties("${code}" PROPERTIES COMPILE_OPTIONS "-w")
  target_sources(${target} PRIVATE "${header}" "${code}")
  target_include_directories(${target} SYSTEM PRIVATE "${folder}")
endfunction()

# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
# Every build starts with the layer check, so that an upward include stops it.

add_custom_target(check-layers ALL
  COMMAND "${CMAKE_COMMAND}" -D "ROOT=${PROJECT_SOURCE_DIR}"
          -P "${PROJECT_SOURCE_DIR}/cmake/CheckLayers.cmake"
  COMMENT "Checking that no layer includes a higher one" VERBATIM)

# ostrel_layer(TARGET): the target sees the source tree and is built after the layer check.
function(ostrel_layer target)
  target_include_directories(${target} PUBLIC "${PROJECT_SOURCE_DIR}")
  add_dependencies(${target} check-layers)
  ostrel_renew_moc(${target})
endfunction()

# ostrel_renew_moc(TARGET): has moc look at all sources again when some have come or gone. CMake 3.25
# overlooks a header that only a glob has found.
function(ostrel_renew_moc target)
  get_target_property(sources ${target} SOURCES)
  set(record "${CMAKE_CURRENT_BINARY_DIR}/${target}_sources.txt")
  set(before "")
  if(EXISTS "${record}")
    file(READ "${record}" before)
  endif()
  if(NOT sources STREQUAL before)
    file(WRITE "${record}" "${sources}")
    file(REMOVE "${CMAKE_CURRENT_BINARY_DIR}/${target}_autogen/timestamp")
  endif()
endfunction()

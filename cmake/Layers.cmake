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
endfunction()

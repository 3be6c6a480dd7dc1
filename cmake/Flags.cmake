# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
# Language level, warnings and sanitizers. Every target links ostrel-flags, most of them through the
# libraries that they use.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")

find_program(OSTREL_CCACHE ccache)
if(OSTREL_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER "${OSTREL_CCACHE}")
endif()

add_library(ostrel-flags INTERFACE)
target_include_directories(ostrel-flags INTERFACE "${PROJECT_SOURCE_DIR}")

# A program loads only the libraries that it uses, of all that the layers below could need.
target_link_options(ostrel-flags INTERFACE -Wl,--as-needed)

# What nothing calls stays out of the programs that people use: less to load.
set(optimised "$<NOT:$<CONFIG:Debug>>")
target_compile_options(ostrel-flags INTERFACE
  $<${optimised}:-ffunction-sections> $<${optimised}:-fdata-sections>)
target_link_options(ostrel-flags INTERFACE $<${optimised}:-Wl,--gc-sections>)

target_compile_options(ostrel-flags INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wimplicit-fallthrough
  "$<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor;-Woverloaded-virtual;-Wold-style-cast>"
  $<$<BOOL:${OSTREL_WARNINGS_AS_ERRORS}>:-Werror>)
if(OSTREL_SANITIZE)
  target_compile_options(ostrel-flags INTERFACE
    -fsanitize=${OSTREL_SANITIZE} -fno-omit-frame-pointer)
  target_link_options(ostrel-flags INTERFACE -fsanitize=${OSTREL_SANITIZE})
endif()

target_compile_definitions(ostrel-flags INTERFACE
  QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_CAST_FROM_BYTEARRAY
  QT_NO_URL_CAST_FROM_STRING QT_NO_KEYWORDS QT_NO_FOREACH QT_STRICT_ITERATORS
  QT_DISABLE_DEPRECATED_BEFORE=0x050F00)

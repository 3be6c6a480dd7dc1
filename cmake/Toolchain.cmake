# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
# Language level, warnings, sanitizers and where things are built.

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

# A program loads only the libraries that it uses, of all that the layers below could need.
add_link_options(-Wl,--as-needed)

# What nothing calls stays out of the programs that people use: less to load.
set(optimised "$<NOT:$<CONFIG:Debug>>")
add_compile_options($<${optimised}:-ffunction-sections> $<${optimised}:-fdata-sections>)
add_link_options($<${optimised}:-Wl,--gc-sections>)

add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion
                    -Wimplicit-fallthrough)
add_compile_options("$<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor;-Woverloaded-virtual;-Wold-style-cast>")
if(OSTREL_WARNINGS_AS_ERRORS)
  add_compile_options(-Werror)
endif()
if(OSTREL_SANITIZE)
  add_compile_options(-fsanitize=${OSTREL_SANITIZE} -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${OSTREL_SANITIZE})
endif()

# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
# Tests run in a sandbox with a "/Library", "/Applications", "/Volumes" and home of their own.

set(OSTREL_SANDBOX "${PROJECT_SOURCE_DIR}/Tests/Support/sandbox")

set(OSTREL_TEST_ENVIRONMENT "")
if(OSTREL_SANITIZE MATCHES "thread")
  set(OSTREL_TEST_ENVIRONMENT
      "TSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/Tests/Support/thread-sanitizer.supp")
endif()

# ostrel_test_program(NAME LIBRARIES...): the program for the test classes of a room. All its calls of
# the system can be made to fail.
function(ostrel_test_program name)
  add_executable(${name})
  target_link_libraries(${name} PRIVATE TestSupport Faults ${ARGN})
endfunction()

# ostrel_test(PROGRAM CLASS [AS user root] [SESSION_BUS] [X_SERVER] [WAYLAND] [OWN_COMMANDS] [WHEEL]
#             [TIMEOUT SECONDS])
# Adds the class, in a source of its name, to the program and registers it once per account; the default
# is both accounts.
function(ostrel_test program class)
  cmake_parse_arguments(arg "SESSION_BUS;X_SERVER;WAYLAND;OWN_COMMANDS;WHEEL" "TIMEOUT" "AS" ${ARGN})
  if(NOT arg_AS)
    set(arg_AS user root)
  endif()
  if(NOT arg_TIMEOUT)
    set(arg_TIMEOUT 600)
  endif()
  if(OSTREL_SANITIZE)
    math(EXPR arg_TIMEOUT "${arg_TIMEOUT} * 10")
  endif()
  target_sources(${program} PRIVATE ${class}.cpp)
  set(options "")
  foreach(option SESSION_BUS X_SERVER WAYLAND OWN_COMMANDS WHEEL)
    if(arg_${option})
      string(TOLOWER "--${option}" flag)
      string(REPLACE "_" "-" flag "${flag}")
      list(APPEND options ${flag})
    endif()
  endforeach()
  foreach(account IN LISTS arg_AS)
    add_test(NAME ${class}.${account}
      COMMAND "${OSTREL_SANDBOX}" --as ${account} --build "${PROJECT_BINARY_DIR}" ${options}
              -- "$<TARGET_FILE:${program}>" ${class})
    set_tests_properties(${class}.${account} PROPERTIES
      TIMEOUT ${arg_TIMEOUT} ENVIRONMENT "${OSTREL_TEST_ENVIRONMENT}")
  endforeach()
endfunction()

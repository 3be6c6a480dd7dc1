# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
# Tests run in a sandbox with a "/Library", "/Applications", "/Volumes" and home of their own.

set(OSTREL_SANDBOX "${PROJECT_SOURCE_DIR}/Tests/Support/sandbox")

set(OSTREL_TEST_ENVIRONMENT "")
if(OSTREL_SANITIZE MATCHES "thread")
  set(OSTREL_TEST_ENVIRONMENT
      "TSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/Tests/Support/thread-sanitizer.supp")
endif()

# ostrel_test(NAME SOURCES... LIBRARIES... [AS user root] [SESSION_BUS] [X_SERVER] [WAYLAND]
#             [OWN_COMMANDS] [WHEEL])
# Builds a Qt test and registers it once per account; the default is both accounts.
function(ostrel_test name)
  cmake_parse_arguments(arg "SESSION_BUS;X_SERVER;WAYLAND;OWN_COMMANDS;WHEEL" "" "SOURCES;LIBRARIES;AS" ${ARGN})
  if(NOT arg_AS)
    set(arg_AS user root)
  endif()
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE TestSupport ${arg_LIBRARIES} Qt::Test)
  set(options "")
  if(arg_SESSION_BUS)
    list(APPEND options --session-bus)
  endif()
  if(arg_X_SERVER)
    list(APPEND options --x-server)
  endif()
  if(arg_WAYLAND)
    list(APPEND options --wayland)
  endif()
  if(arg_OWN_COMMANDS)
    list(APPEND options --own-commands)
  endif()
  if(arg_WHEEL)
    list(APPEND options --wheel)
  endif()
  foreach(account IN LISTS arg_AS)
    add_test(NAME ${name}.${account}
      COMMAND "${OSTREL_SANDBOX}" --as ${account} --build "${PROJECT_BINARY_DIR}" ${options}
              -- "$<TARGET_FILE:${name}>")
    set_tests_properties(${name}.${account} PROPERTIES TIMEOUT 120 ENVIRONMENT "${OSTREL_TEST_ENVIRONMENT}")
  endforeach()
endfunction()

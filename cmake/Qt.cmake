# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
# Qt 5.15 or Qt 6, reached through the versionless Qt:: targets only.

# The pane must share the Qt of the settings application that loads it. Looking for the module's
# library already takes the versionless targets for Qt 5.
if(NOT OSTREL_QT_MAJOR EQUAL 6)
  find_package(KF5KCMUtils 5.100 QUIET)
endif()
if(NOT OSTREL_QT_MAJOR)
  if(KF5KCMUtils_FOUND)
    set(OSTREL_QT_MAJOR 5)
  else()
    find_package(QT NAMES Qt6 Qt5 REQUIRED COMPONENTS Core)
    set(OSTREL_QT_MAJOR ${QT_VERSION_MAJOR})
  endif()
endif()
if(OSTREL_QT_MAJOR EQUAL 5)
  find_package(Qt5 5.15 REQUIRED COMPONENTS Core Gui Widgets DBus Test)
else()
  find_package(Qt6 6.4 REQUIRED COMPONENTS Core Gui Widgets DBus Test)
  find_package(Qt6 QUIET COMPONENTS GuiPrivate) # a package of its own since 6.9
endif()

set(CMAKE_AUTOMOC ON)
set(CMAKE_AUTOUIC ON)
set(CMAKE_AUTORCC ON)

add_compile_definitions(
  QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_CAST_FROM_BYTEARRAY
  QT_NO_URL_CAST_FROM_STRING QT_NO_KEYWORDS QT_NO_FOREACH QT_STRICT_ITERATORS
  QT_DISABLE_DEPRECATED_BEFORE=0x050F00)

# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
# The libraries that we use. Qt 5.15 or Qt 6 is reached through the versionless Qt:: targets only.

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
set(components Core Gui Widgets DBus)
if(BUILD_TESTING)
  list(APPEND components Test)
endif()
if(OSTREL_QT_MAJOR EQUAL 5)
  find_package(Qt5 5.15 REQUIRED COMPONENTS ${components})
else()
  find_package(Qt6 6.4 REQUIRED COMPONENTS ${components})
  find_package(Qt6 QUIET COMPONENTS GuiPrivate) # a package of its own since 6.9
endif()
set(CMAKE_AUTOMOC ON)

find_package(Threads REQUIRED)
find_package(PkgConfig REQUIRED)
pkg_check_modules(ARCHIVE REQUIRED IMPORTED_TARGET libarchive)
pkg_check_modules(PLIST REQUIRED IMPORTED_TARGET libplist-2.0>=2.2)
pkg_check_modules(SYSTEMD REQUIRED IMPORTED_TARGET libsystemd)
pkg_check_modules(WAYLAND REQUIRED IMPORTED_TARGET wayland-client)
pkg_check_modules(XKB REQUIRED IMPORTED_TARGET xkbcommon xkbcommon-x11 xcb xcb-xkb)

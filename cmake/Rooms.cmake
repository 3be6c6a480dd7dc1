# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
# Which room may include which others. Read by CheckRooms.cmake.

# room(FOLDER [OTHER ...]): sources in the folder may include their own room, the others and all rooms
# below those. A room is named after those that it may include, so there is no circle.

room(Platform/Core/Text)
room(Platform/Core/Basics Platform/Core/Text)
room(Platform/Core/Threads Platform/Core/Text)
room(Platform/Core/Bus)
room(Platform/Core/Notifications Platform/Core/Text Platform/Core/Bus)
room(Platform/Core/Keys Platform/Core/Basics)
room(Platform/Core/Files Platform/Core/Basics Platform/Core/Text)
room(Platform/Core/Trees Platform/Core/Basics Platform/Core/Text Platform/Core/Threads
     Platform/Core/Files)
room(Platform/Core/Folders Platform/Core/Basics Platform/Core/Text Platform/Core/Files
     Platform/Core/Trees)
room(Platform/Core/PropertyLists Platform/Core/Basics Platform/Core/Text Platform/Core/Files)
room(Platform/Core/Bundles Platform/Core/Basics Platform/Core/Text Platform/Core/Folders
     Platform/Core/PropertyLists)
room(Platform/Core/Processes Platform/Core/Basics Platform/Core/Text Platform/Core/Threads
     Platform/Core/Files Platform/Core/Bundles)
room(Platform/Core/Authorization Platform/Core/Basics Platform/Core/Text Platform/Core/Bus
     Platform/Core/Threads Platform/Core/Files Platform/Core/Processes)
room(Platform/Core/Applications Platform/Core/Basics Platform/Core/Text Platform/Core/Threads
     Platform/Core/Files Platform/Core/Trees Platform/Core/Folders Platform/Core/PropertyLists
     Platform/Core/Bundles)

room(Platform/Desktop/Alerts Platform/Core)
room(Platform/Desktop/Tables Platform/Core)
room(Platform/Desktop/KeyCapture Platform/Core)
room(Platform/Desktop/PaneLoading Platform/Core)
room(Platform/Desktop/ApplicationPanel Platform/Core Platform/Desktop/Alerts)

room(Shared/Basics Platform/Core)
room(Shared/Log Platform/Core Shared/Basics)
room(Shared/Tasks Platform/Core Shared/Basics Shared/Log)
room(Shared/Authorization Platform/Core Shared/Basics Shared/Log Shared/Tasks)
room(Shared/Files Platform/Core Shared/Basics Shared/Log Shared/Tasks Shared/Authorization)
room(Shared/Alerts Platform Shared/Basics Shared/Log)
room(Shared/Jobs Platform Shared/Basics Shared/Log Shared/Tasks Shared/Authorization Shared/Files
     Shared/Alerts)
room(Shared/Support Platform Shared/Basics Shared/Log Shared/Tasks Shared/Files)

room(Ostrel Platform/Core Shared/Basics)

room("Preference Pane/Switch" Platform)
room("Preference Pane/Shortcut" Platform Shared Ostrel)
room("Preference Pane/Authorization" Platform Shared)
room("Preference Pane/Presets" Platform Shared Ostrel "Preference Pane/Shortcut"
     "Preference Pane/Authorization")
room("Preference Pane/Pane" Platform Shared Ostrel "Preference Pane/Switch"
     "Preference Pane/Authorization" "Preference Pane/Presets")
room("Preference Pane/Plugin" Platform Shared "Preference Pane/Pane")

# Programs of their own. The hosts know the pane as a plug-in only.
room(Listener Platform/Core Ostrel)
room(Commands/Jobs Platform/Core)
room(Commands/authorization-helper Platform/Core)
room(Commands/chown Platform/Core)
room(Commands/ditto Platform/Core)
room(Commands/job-generator Platform/Core Commands/Jobs)
room(Commands/job-supervisor Platform/Core Commands/Jobs)
room(Commands/launchctl Platform/Core Commands/Jobs)
room(Commands/system_profiler Platform/Core)
room(Hosts/SettingsWindow Platform)
room(Hosts/SystemSettings Platform)
room(Packaging/ManualMaker)

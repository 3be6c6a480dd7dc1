# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
# What is installed serves all users, whatever the mask of who builds and installs.

set(OSTREL_EVERYBODY_READS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
set(OSTREL_EVERYBODY_RUNS ${OSTREL_EVERYBODY_READS} OWNER_EXECUTE GROUP_EXECUTE WORLD_EXECUTE)

# ostrel_install_folder(PATH [COMPONENT NAME]): makes the folder for what is installed next, with those
# above it that are missing. What is there already stays as it is. CMake itself, with
# CMAKE_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS too, leaves new folders to the mask.
function(ostrel_install_folder path)
  install(CODE "
    set(folder \"\$ENV{DESTDIR}${path}\")
    set(missing \"\")
    while(folder AND NOT EXISTS \"\${folder}\")
      list(PREPEND missing \"\${folder}\")
      get_filename_component(folder \"\${folder}\" DIRECTORY)
    endwhile()
    foreach(folder IN LISTS missing)
      file(MAKE_DIRECTORY \"\${folder}\")
      file(CHMOD \"\${folder}\" PERMISSIONS ${OSTREL_EVERYBODY_RUNS})
    endforeach()" ${ARGN})
endfunction()

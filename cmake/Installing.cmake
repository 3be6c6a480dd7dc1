# SPDX-FileCopyrightText: 2026 Corvane
# SPDX-License-Identifier: MIT
# What is installed serves all users, whatever the mask of who builds and installs.

set(OSTREL_EVERYBODY_READS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
set(OSTREL_EVERYBODY_RUNS ${OSTREL_EVERYBODY_READS} OWNER_EXECUTE GROUP_EXECUTE WORLD_EXECUTE)

# ostrel_install_folder(PATH [COMPONENT NAME]): makes the folder for what is installed next, with those
# above it that are missing. What is there already stays as it is. A relative path is one below the
# prefix. CMake itself, with CMAKE_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS too, leaves new folders to the
# mask.
function(ostrel_install_folder path)
  if(NOT IS_ABSOLUTE "${path}")
    string(PREPEND path "\${CMAKE_INSTALL_PREFIX}/")
  endif()
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

# ostrel_install_configured(TEMPLATE PATH [COMPONENT NAME]): installs a file that names the folder of our
# commands, which only an installation knows: it may have a prefix of its own.
function(ostrel_install_configured template path)
  install(CODE "
    set(OSTREL_ADMINISTER_ACTION ${OSTREL_ADMINISTER_ACTION})
    set(OSTREL_COMMAND_FOLDER \"\${CMAKE_INSTALL_PREFIX}/${OSTREL_COMMANDS}\")
    if(NOT OSTREL_COMMAND_FOLDER STREQUAL \"${OSTREL_COMMAND_FOLDER}\")
      message(WARNING \"The pane looks for its helper in ${OSTREL_COMMAND_FOLDER}; configure with \"
                      \"this prefix to have it authorised.\")
    endif()
    get_filename_component(file \"\$ENV{DESTDIR}${path}\" ABSOLUTE)
    message(STATUS \"Installing: \${file}\")
    configure_file(\"${template}\" \"\${file}\" @ONLY)
    file(CHMOD \"\${file}\" PERMISSIONS ${OSTREL_EVERYBODY_READS})
    list(APPEND CMAKE_INSTALL_MANIFEST_FILES \"\${file}\")" ${ARGN})
endfunction()

# ostrel_install_link(COMMAND PATH [COMPONENT NAME]): installs a link to one of our commands.
function(ostrel_install_link command path)
  install(CODE "
    set(link \"\$ENV{DESTDIR}${path}\")
    message(STATUS \"Installing: \${link}\")
    file(CREATE_LINK \"\${CMAKE_INSTALL_PREFIX}/${OSTREL_COMMANDS}/${command}\" \"\${link}\" SYMBOLIC)
    list(APPEND CMAKE_INSTALL_MANIFEST_FILES \"\${link}\")" ${ARGN})
endfunction()

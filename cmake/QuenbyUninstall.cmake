# SPDX-FileCopyrightText: Quenby contributors
# SPDX-License-Identifier: MIT
#
# usage: cmake -DMANIFEST=build/…/install_manifest.txt -P QuenbyUninstall.cmake
# Removes what the last `cmake --install` of that build put there, and the folders of the pane that are empty then.

if(NOT EXISTS "${MANIFEST}")
  message(FATAL_ERROR "Nothing was installed from here: there is no ${MANIFEST}")
endif()
file(STRINGS "${MANIFEST}" files ENCODING UTF-8)
set(folders)
foreach(file IN LISTS files)
  set(file "$ENV{DESTDIR}${file}")
  if(EXISTS "${file}" OR IS_SYMLINK "${file}")
    message(STATUS "Removing ${file}")
    file(REMOVE "${file}")
  endif()
  if(EXISTS "${file}" OR IS_SYMLINK "${file}")
    message(FATAL_ERROR "${file} cannot be removed")
  endif()
  # All that is above it in the pane, and the pane.
  while(file MATCHES "[.]prefPane/")
    cmake_path(GET file PARENT_PATH file)
    list(APPEND folders "${file}")
  endwhile()
endforeach()
list(REMOVE_DUPLICATES folders)
# The longer path is the deeper folder.
list(SORT folders ORDER DESCENDING)
foreach(folder IN LISTS folders)
  file(GLOB left LIST_DIRECTORIES true "${folder}/*" "${folder}/.*")
  list(FILTER left EXCLUDE REGEX "/[.][.]?$")
  if(IS_DIRECTORY "${folder}" AND NOT left)
    file(REMOVE_RECURSE "${folder}")
  endif()
endforeach()

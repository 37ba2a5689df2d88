# SPDX-FileCopyrightText: Quenby contributors
# SPDX-License-Identifier: MIT
#
# What an installation does when the prefix is known. CMakeLists.txt sets `identifier`, the places `programs`, `data`
# and `bundle`, which may be relative to the prefix, and `made`, the folder for what is made on the way.

foreach(folder IN ITEMS programs data bundle)
  cmake_path(ABSOLUTE_PATH ${folder} BASE_DIRECTORY "${CMAKE_INSTALL_PREFIX}")
endforeach()

# The bus starts nothing by its name alone. It reads the line as a shell does, after the escapes of such a file.
string(REPLACE "\\" "\\\\" program "${programs}/QNBHelper")
string(REPLACE "'" "'\\\\''" program "${program}")
configure_file("${CMAKE_CURRENT_LIST_DIR}/org.quenby.QNBHelper.service.in" "${made}/org.quenby.QNBHelper.service" @ONLY)
file(INSTALL "${made}/org.quenby.QNBHelper.service" DESTINATION "${data}/dbus-1/services")

# The first version had its bundle among the data, and another name for what software centres read. Whatever else is
# called so is somebody else's.
set(earlier "$ENV{DESTDIR}${data}/PreferencePanes/Quenby.prefPane")
set(information "${earlier}/Contents/Info.plist")
if(NOT earlier STREQUAL "$ENV{DESTDIR}${bundle}" AND NOT IS_SYMLINK "${earlier}" AND EXISTS "${information}")
  file(READ "${information}" text)
  string(FIND "${text}" "<string>${identifier}</string>" place)
  if(place GREATER_EQUAL 0)
    message(STATUS "Removing: ${earlier}, of an earlier version")
    file(REMOVE_RECURSE "${earlier}")
    # Only if nobody else has a pane there.
    execute_process(COMMAND rmdir "$ENV{DESTDIR}${data}/PreferencePanes" ERROR_QUIET)
  endif()
endif()
file(REMOVE "$ENV{DESTDIR}${data}/metainfo/${identifier}.metainfo.xml")

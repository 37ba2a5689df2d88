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

# The first version had its bundle among the data, where users put panes by hand, too; and another name for what software
# centres read.
set(earlier "$ENV{DESTDIR}${data}/PreferencePanes/Quenby.prefPane")
if(NOT earlier STREQUAL "$ENV{DESTDIR}${bundle}" AND EXISTS "${earlier}/Contents/Info.plist")
  message(NOTICE "There is another pane in ${earlier}, of an earlier version or put there by hand. Its helper would be "
                 "found first: remove it if nobody needs it.")
endif()
file(REMOVE "$ENV{DESTDIR}${data}/metainfo/${identifier}.metainfo.xml")

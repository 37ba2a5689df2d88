# SPDX-FileCopyrightText: Quenby contributors
# SPDX-License-Identifier: MIT

# What most files of a kind include, compiled once instead of in each of them. A build without it finds the includes
# that are missing.

# _quenby_headers(KIND LIBRARIES... HEADERS... [OPTIONS...]): the target that compiles the headers of that kind.
function(_quenby_headers kind)
  cmake_parse_arguments(arg "" "" "LIBRARIES;HEADERS;OPTIONS" ${ARGN})
  set(target quenby-headers-${kind})
  set(source "${CMAKE_CURRENT_BINARY_DIR}/${target}.cpp")
  file(CONFIGURE OUTPUT "${source}" CONTENT "")
  add_library(${target} OBJECT "${source}")
  set_target_properties(${target} PROPERTIES AUTOMOC OFF AUTOUIC OFF AUTORCC OFF)
  target_link_libraries(${target} PRIVATE quenby-options ${arg_LIBRARIES})
  target_compile_options(${target} PRIVATE ${arg_OPTIONS})
  target_precompile_headers(${target} PRIVATE ${arg_HEADERS})
endfunction()

set(standard_headers <algorithm> <chrono> <functional> <memory> <optional> <utility> <vector>)
if(QUENBY_PRECOMPILE)
  _quenby_headers(core LIBRARIES Qt6::Core HEADERS <QtCore> ${standard_headers})
  _quenby_headers(windows LIBRARIES Qt6::Widgets HEADERS <QtWidgets> ${standard_headers})
  if(QUENBY_BUILD_TESTS)
    # Not Qt6::Test: it defines where each of the programs is built. Compiled as the tests, which are programs: with
    # their kind of position-independent code, and not optimised.
    _quenby_headers(tests LIBRARIES Qt6::Core GTest::gmock
                    OPTIONS ${CMAKE_CXX_COMPILE_OPTIONS_PIE} ${QUENBY_TEST_OPTIONS}
                    HEADERS <gmock/gmock.h> <gtest/gtest.h> <QtCore> ${standard_headers})
  endif()
endif()

# quenby_precompile(TARGET KIND): gives the target the headers of that kind: core, windows or tests.
function(quenby_precompile target kind)
  if(QUENBY_PRECOMPILE)
    target_precompile_headers(${target} REUSE_FROM quenby-headers-${kind})
  endif()
endfunction()

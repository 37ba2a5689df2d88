# SPDX-FileCopyrightText: Quenby contributors
# SPDX-License-Identifier: MIT

# Everything our own targets share: warnings, sanitizers, Qt's strict string rules.
add_library(quenby-options INTERFACE)
target_compile_options(quenby-options INTERFACE -Wall -Wextra -Wpedantic -Wnon-virtual-dtor
                       # Of several files as one, what is global in the first is global in the next.
                       $<$<NOT:$<BOOL:$<TARGET_PROPERTY:UNITY_BUILD>>>:-Wshadow>)
target_compile_definitions(quenby-options INTERFACE QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII
                           QT_NO_URL_CAST_FROM_STRING QT_NO_KEYWORDS QT_NO_NARROWING_CONVERSIONS_IN_CONNECT
                           QT_DISABLE_DEPRECATED_BEFORE=0x060400)
target_include_directories(quenby-options INTERFACE "${PROJECT_SOURCE_DIR}")
if(QUENBY_WARNINGS_AS_ERRORS)
  target_compile_options(quenby-options INTERFACE -Werror)
endif()
if(QUENBY_SANITIZE)
  add_compile_options(-fsanitize=${QUENBY_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${QUENBY_SANITIZE})
endif()
if(QUENBY_SANITIZE MATCHES "address")
  target_sources(quenby-options INTERFACE
                 "$<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:${PROJECT_SOURCE_DIR}/Tests/AddressSanitizerOptions.cpp>")
endif()

# Optimising the tests themselves took longer than running them.
set(QUENBY_TEST_OPTIONS -O0)

# quenby_add_tests(ROOM [WINDOWS] SOURCES... LIBRARIES... [WITH_HELPERS PATTERN]): the program
# quenby-tests-<room>, each case a ctest test. WINDOWS gives it a QApplication instead of a QCoreApplication. The
# tests that PATTERN names start processes that are called like the helper, or end those: never two at a time, and
# where the system gives one, in a process namespace of their own.
function(quenby_add_tests room)
  cmake_parse_arguments(arg "WINDOWS" "WITH_HELPERS" "SOURCES;LIBRARIES" ${ARGN})
  set(target quenby-tests-${room})
  set(main "${PROJECT_SOURCE_DIR}/Tests/main.cpp")
  if(arg_WINDOWS)
    set(main "${PROJECT_SOURCE_DIR}/Tests/mainWithWindows.cpp")
  endif()
  add_executable(${target} ${arg_SOURCES} "${main}" "${PROJECT_SOURCE_DIR}/Tests/OwnProcesses.cpp")
  if(QUENBY_SANITIZE MATCHES "thread")
    target_sources(${target} PRIVATE "${PROJECT_SOURCE_DIR}/Tests/ThreadSanitizerForQt.cpp")
  endif()
  target_link_libraries(${target} PRIVATE quenby-options ${arg_LIBRARIES} Qt6::Test GTest::gtest GTest::gmock)
  target_compile_options(${target} PRIVATE ${QUENBY_TEST_OPTIONS})
  quenby_precompile(${target} tests)
  if(QUENBY_UNITY_TESTS)
    set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 8)
    # A test's fixture has no linkage, which only a header's must have.
    target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>)
  endif()
  target_compile_definitions(${target} PRIVATE QUENBY_TEST_DATA="${CMAKE_CURRENT_SOURCE_DIR}/data")
  set(discovery TEST_PREFIX "${room}." DISCOVERY_MODE PRE_TEST NO_PRETTY_VALUES)
  set(properties LABELS ${room})
  if(arg_WITH_HELPERS)
    gtest_discover_tests(${target} ${discovery} TEST_FILTER "-${arg_WITH_HELPERS}" PROPERTIES ${properties})
    gtest_discover_tests(${target} ${discovery} TEST_FILTER "${arg_WITH_HELPERS}" TEST_LIST ${target}_WITH_HELPERS
                         PROPERTIES ${properties} RESOURCE_LOCK QNBHelper
                         ENVIRONMENT QUENBY_TESTS_OWN_PROCESSES=1)
  else()
    gtest_discover_tests(${target} ${discovery} PROPERTIES ${properties})
  endif()
endfunction()

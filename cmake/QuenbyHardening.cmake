# SPDX-FileCopyrightText: Quenby contributors
# SPDX-License-Identifier: MIT

# What makes a mistake in our code harder to use by whoever made the files that we read. Linking is the same in every
# build; the compiler's checks are in all but debug builds, and not beside the sanitizers, which check more.
# Tests/Rules/BinaryRulesTest.cpp reads the result.
include(CheckCXXCompilerFlag)
include(CheckCXXSourceCompiles)
include(CheckPIESupported)

check_pie_supported(LANGUAGES CXX)
# Everything is bound at the start, and read-only from then on.
target_link_options(quenby-options INTERFACE "LINKER:-z,relro" "LINKER:-z,now")

set(QUENBY_IS_HARDENED OFF)
if(NOT QUENBY_SANITIZE AND NOT CMAKE_BUILD_TYPE STREQUAL "Debug")
  set(QUENBY_IS_HARDENED ON)
endif()

# Control flow has another flag on each kind of processor; there only its own is known.
set(QUENBY_HARDENING_FLAGS)
foreach(flag IN ITEMS -fstack-protector-strong -fstack-clash-protection -fcf-protection -mbranch-protection=standard)
  string(MAKE_C_IDENTIFIER "QUENBY_HAS${flag}" known)
  check_cxx_compiler_flag(${flag} ${known})
  if(${known})
    list(APPEND QUENBY_HARDENING_FLAGS ${flag})
  endif()
endforeach()
if(QUENBY_IS_HARDENED)
  target_compile_options(quenby-options INTERFACE ${QUENBY_HARDENING_FLAGS})
  # The tests are not optimised; the library's checks, below, want that.
  list(APPEND QUENBY_TEST_OPTIONS -U_FORTIFY_SOURCE)
endif()

# The library's checks need an optimising compiler, and its own word for it: a distribution may have said it already.
set(CMAKE_REQUIRED_FLAGS "-O2 -Werror")
set(CMAKE_REQUIRED_DEFINITIONS -D_FORTIFY_SOURCE=3)
check_cxx_source_compiles("#include <cstring>
int main() { return int(std::strlen(\"\")); }" QUENBY_HAS_FORTIFY_3)
unset(CMAKE_REQUIRED_FLAGS)
unset(CMAKE_REQUIRED_DEFINITIONS)
if(QUENBY_IS_HARDENED AND NOT "${CMAKE_CXX_FLAGS}" MATCHES "_FORTIFY_SOURCE")
  set(level 2)
  if(QUENBY_HAS_FORTIFY_3)
    set(level 3)
  endif()
  target_compile_definitions(quenby-options INTERFACE
                             $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:_FORTIFY_SOURCE=${level}>)
endif()

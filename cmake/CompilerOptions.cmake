# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

# Compiler settings that every target of the project shares.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 99)
set(CMAKE_C_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

if(MSVC)
  # Each floating-point operation is rounded by itself; no contraction into fused operations.
  add_compile_options(/fp:strict /W4)
  # Exported functions, of C linkage, may let an exception out.
  add_compile_options($<$<COMPILE_LANGUAGE:CXX>:/EHc->)
  if(KV_WARNINGS_AS_ERRORS)
    add_compile_options(/WX)
  endif()
else()
  # g++ fuses multiplications and additions by default as soon as a target offers FMA.
  add_compile_options(-ffp-contract=off)
  add_compile_options(-Wall -Wextra -Wpedantic -Wconversion -Wshadow)
  if(KV_WARNINGS_AS_ERRORS)
    add_compile_options(-Werror)
  endif()
  # No path of the build machine in the binaries; gcovr looks for sources by theirs.
  if(NOT KV_COVERAGE)
    add_compile_options(-ffile-prefix-map=${PROJECT_SOURCE_DIR}/=)
  endif()
endif()

if(UNIX OR MINGW)
  # Archives without times and users, whatever the tools were configured for.
  foreach(language C CXX)
    set(CMAKE_${language}_ARCHIVE_CREATE "<CMAKE_AR> qcD <TARGET> <LINK_FLAGS> <OBJECTS>")
    set(CMAKE_${language}_ARCHIVE_APPEND "<CMAKE_AR> qD <TARGET> <LINK_FLAGS> <OBJECTS>")
    set(CMAKE_${language}_ARCHIVE_FINISH "<CMAKE_RANLIB> -D <TARGET>")
  endforeach()
endif()

if(MINGW)
  # The files ask for libraries of the system only, and equal sources give equal files.
  add_link_options(-static LINKER:--no-insert-timestamp)
endif()

if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # A UNIQUE symbol would pin a shared library in the process, and its unload step would never run.
  add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-fno-gnu-unique>)
endif()

# For some vector blocks: hundreds of instructions without a branch, of whose chains a processor
# overlaps only what lies close together. g++ orders them for that only when told to.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  set(KV_SCHEDULING_OPTIONS -fschedule-insns -fsched-pressure)
endif()

# Blocks of wide vectors are instances of the templates that the library's own blocks are made of: what is
# undefined in them is found there, and looking for it here too takes minutes a file.
if(CMAKE_CXX_FLAGS MATCHES "-fsanitize=[a-z,]*undefined")
  set(KV_BLOCK_OPTIONS -fno-sanitize=undefined)
endif()

# Thousands of unrolled kernels, which a sanitizer looks at all the better where they are not optimised:
# optimising them would take most of its build. Fuzzers steer by what chooses between them.
if(CMAKE_CXX_FLAGS MATCHES "-fsanitize")
  set(KV_KERNEL_OPTIONS -O0)
  if(KV_BUILD_FUZZERS)
    list(APPEND KV_KERNEL_OPTIONS -fno-sanitize=fuzzer-no-link)
  endif()
endif()

# Tests are counted too: a function of a header is in many objects, and the linker takes any of them.
if(KV_COVERAGE)
  add_compile_options(--coverage -fprofile-update=atomic)
  add_link_options(--coverage)
endif()

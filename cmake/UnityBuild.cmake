# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

# Headers of command lines, JSON, matrices and tests take seconds a file, and more under sanitizers. With
# the sources of a folder compiled as one, all takes a third of the time; names within a folder have to
# differ for it, and within the tool. PROGRAMS leaves out the toolkit's libraries, which can be installed:
# programs link of them the files that they use. ALL is for builds that are made once, to be tested: in
# those the tool is a few pieces. That every file includes what it needs, the release build tells of
# libraries, and the preset debug of all.
set(KV_UNITY_BUILD OFF CACHE STRING "Compile the sources of a folder as one: OFF, PROGRAMS or ALL")

# unite_by_folder(TARGET), after all sources of it are named.
function(unite_by_folder target)
  set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_MODE GROUP)
  get_target_property(sources ${target} SOURCES)
  foreach(source IN LISTS sources)
    cmake_path(GET source PARENT_PATH folder)
    string(MAKE_C_IDENTIFIER "folder_${folder}" group)
    set_source_files_properties(${source} PROPERTIES UNITY_GROUP ${group})
  endforeach()
endfunction()

function(unite_program target)
  if(KV_UNITY_BUILD STREQUAL "ALL")
    set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_MODE BATCH UNITY_BUILD_BATCH_SIZE 30)
  elseif(KV_UNITY_BUILD STREQUAL "PROGRAMS")
    unite_by_folder(${target})
  endif()
endfunction()

function(unite_library target)
  if(KV_UNITY_BUILD STREQUAL "ALL")
    unite_by_folder(${target})
  endif()
endfunction()

function(unite_tests target)
  if(KV_UNITY_BUILD)
    set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_MODE BATCH UNITY_BUILD_BATCH_SIZE 8)
    # A table's type within a test may have the name of one in the file before.
    target_compile_options(${target} PRIVATE -Wno-shadow)
  endif()
endfunction()

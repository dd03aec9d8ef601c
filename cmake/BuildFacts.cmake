# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

# How the build is made, which `kv-polarize --version` and Python's build_info() tell. No flags from
# outside of the project: those of a packager may hold folders of the machine.

add_library(kv_build_facts INTERFACE)

# Notes a library that the build takes in; an unknown version may be empty.
function(note_library name version)
  set_property(TARGET kv_build_facts APPEND PROPERTY KV_LIBRARIES "${name}=${version}")
endfunction()

# The numbers of macros in a header, with points between them.
function(version_from_header variable header)
  set(numbers)
  foreach(macro IN LISTS ARGN)
    file(STRINGS ${header} line REGEX "#[ \t]*define[ \t]+${macro}[ \t]")
    if(line MATCHES "([0-9][0-9.]*)")
      list(APPEND numbers ${CMAKE_MATCH_1})
    endif()
  endforeach()
  list(JOIN numbers . version)
  set(${variable} ${version} PARENT_SCOPE)
endfunction()

# Gives the target's sources the facts, as they stand when everything is configured.
function(tell_build_facts target)
  string(TOUPPER "${CMAKE_BUILD_TYPE}" configuration)
  set(options)
  foreach(option KV_BUILD_LOGGER KV_WITH_PNG KV_WITH_TIFF)
    list(APPEND options "${option}=$<IF:$<BOOL:${${option}}>,ON,OFF>")
  endforeach()
  list(JOIN options "$<COMMA>" options)
  set(compiler "${CMAKE_CXX_COMPILER_ID} ${CMAKE_CXX_COMPILER_VERSION}")
  string(STRIP "${CMAKE_BUILD_TYPE} ${CMAKE_CXX_FLAGS_${configuration}}" flags)
  target_compile_definitions(${target} PRIVATE
    KV_VERSION="${PROJECT_VERSION}"
    KV_COMPILER="${compiler}"
    KV_BUILD_FLAGS="${flags}"
    KV_OPTIONS="${options}"
    "KV_LIBRARIES=\"$<JOIN:$<TARGET_PROPERTY:kv_build_facts,KV_LIBRARIES>,$<COMMA>>\"")
endfunction()

# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

# What the project's shared libraries have in common, and how the library is found by what is linked to it.

# File names without `lib`, companions found beside the library, and no export but those of the
# export map. On Windows the exports are those that the sources declare as such.
function(shape_shared_library target export_map)
  set_target_properties(${target} PROPERTIES
    PREFIX ""
    INSTALL_RPATH "$ORIGIN"
    BUILD_WITH_INSTALL_RPATH ON)
  harden_file(${target})
  if(NOT WIN32)
    cmake_path(ABSOLUTE_PATH export_map)
    set_target_properties(${target} PROPERTIES LINK_DEPENDS ${export_map})
    target_link_options(${target} PRIVATE LINKER:--version-script=${export_map})
  endif()
endfunction()

# The library lies in INSTALLED_PLACE, or where the build puts it. One run path for both trees: where they
# differ, CMake fills the shorter one up with empty elements, each of which is the working folder.
function(set_run_path target installed_place)
  set(library kevrinth::kevrinth_qrm_polarization_processor)
  set(built_place $<PATH:RELATIVE_PATH,$<TARGET_FILE_DIR:${library}>,$<TARGET_FILE_DIR:${target}>>)
  set_target_properties(${target} PROPERTIES
    INSTALL_RPATH "${installed_place};$ORIGIN/${built_place}"
    BUILD_WITH_INSTALL_RPATH ON)
endfunction()

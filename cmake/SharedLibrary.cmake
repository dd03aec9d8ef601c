# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

# What the project's shared libraries have in common.

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

# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

# A library that is headers alone can be taken from the building machine in a cross-build too.

# Makes an interface library of header folders of the building machine, and of nothing that lies
# beside them: its other headers are none of the target's.
function(add_host_headers target)
  add_library(${target} INTERFACE)
  set(lone_headers ${CMAKE_CURRENT_BINARY_DIR}/host_headers)
  file(MAKE_DIRECTORY ${lone_headers})
  foreach(folder IN LISTS ARGN)
    find_path(KV_HEADERS_OF_${folder} ${folder} PATHS /usr/include NO_DEFAULT_PATH
              NO_CMAKE_FIND_ROOT_PATH REQUIRED)
    file(CREATE_LINK ${KV_HEADERS_OF_${folder}}/${folder} ${lone_headers}/${folder} SYMBOLIC)
  endforeach()
  target_include_directories(${target} SYSTEM INTERFACE ${lone_headers})
endfunction()

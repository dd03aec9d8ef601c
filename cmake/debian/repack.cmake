# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

# Called by CPack 3.25 behind packing. It cannot write Multi-Arch, and calls ldconfig in scripts where the
# package has a trigger already; and dpkg-deb makes the same bytes of the same files.

if(NOT CPACK_GENERATOR STREQUAL "DEB")
  return()
endif()

foreach(package ${CPACK_PACKAGE_FILES})
  set(content ${package}.content)
  file(REMOVE_RECURSE ${content})
  execute_process(COMMAND dpkg-deb --raw-extract ${package} ${content} COMMAND_ERROR_IS_FATAL ANY)

  set(control ${content}/DEBIAN)
  if(EXISTS ${control}/triggers)
    file(REMOVE ${control}/postinst ${control}/postrm)
  endif()
  cmake_path(GET package FILENAME name)
  if(name MATCHES "^lib")
    set(multi_arch same)
  elseif(name MATCHES "^kv-")
    set(multi_arch foreign)
  else()
    set(multi_arch no)
  endif()
  file(READ ${control}/control fields)
  string(STRIP "${fields}" fields)
  file(WRITE ${control}/control "${fields}\nMulti-Arch: ${multi_arch}\n")

  execute_process(COMMAND dpkg-deb --root-owner-group -Zxz --build ${content} ${package}
                  OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
  file(REMOVE_RECURSE ${content})
endforeach()

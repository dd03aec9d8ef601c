# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

# Turns each component's installation into what Debian's policy wants of a package.

set(source ${CMAKE_CURRENT_LIST_DIR}/../..)

function(run)
  execute_process(COMMAND ${ARGV} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# compress(FILE TARGET): as policy wants it, without name and time.
function(compress file target)
  cmake_path(GET target PARENT_PATH folder)
  file(MAKE_DIRECTORY ${folder})
  execute_process(COMMAND gzip -9nc ${file} OUTPUT_FILE ${target} COMMAND_ERROR_IS_FATAL ANY)
  run(chmod 644 ${target})
endfunction()

set(version ${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})
# English names, whatever the locale of the builder.
set(ENV{LC_ALL} C)
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
set(changelog ${CPACK_TOPLEVEL_DIRECTORY}/changelog)
file(WRITE ${changelog} "${CPACK_DEBIAN_PACKAGE_SOURCE} (${version}) unstable; urgency=medium

  * Packages of version ${CPACK_PACKAGE_VERSION}, made by the project itself.

 -- ${CPACK_DEBIAN_PACKAGE_MAINTAINER}  ${date}
")

foreach(component ${CPACK_COMPONENTS_ALL})
  string(TOUPPER ${component} key)
  set(package ${CPACK_DEBIAN_${key}_PACKAGE_NAME})
  set(root ${CPACK_TEMPORARY_DIRECTORY}/${component})
  set(documents ${root}/usr/share/doc/${package})
  compress(${source}/CHANGELOG.md ${documents}/changelog.gz)
  compress(${changelog} ${documents}/changelog.Debian.gz)
  run(install -m 644 ${CMAKE_CURRENT_LIST_DIR}/copyright ${documents}/copyright)

  file(GLOB_RECURSE pages ${root}/usr/share/man/*.1)
  foreach(page ${pages})
    compress(${page} ${page}.gz)
    file(REMOVE ${page})
  endforeach()

  # CPack has stripped programs and libraries of their symbols; the compiler's notes are left.
  file(GLOB_RECURSE programs ${root}/usr/bin/* ${root}/usr/lib/*.so ${root}/usr/lib/*.so.*)
  file(GLOB_RECURSE archives ${root}/usr/lib/*.a)
  foreach(file ${programs} ${archives})
    if(NOT IS_SYMLINK ${file})
      run(strip --strip-debug --enable-deterministic-archives --remove-section=.comment --remove-section=.note ${file})
    endif()
  endforeach()

  # The logger reads its configuration beside itself, and administrators change it in /etc.
  file(GLOB_RECURSE configuration ${root}/usr/lib/*/kevrinth_qrm_logger.cfg)
  if(configuration)
    cmake_path(GET configuration PARENT_PATH folder)
    cmake_path(GET folder FILENAME folder)
    file(MAKE_DIRECTORY ${root}/etc/${folder})
    file(RENAME ${configuration} ${root}/etc/${folder}/kevrinth_qrm_logger.cfg)
    file(CREATE_LINK /etc/${folder}/kevrinth_qrm_logger.cfg ${configuration} SYMBOLIC)
  endif()
endforeach()

set(documents ${CPACK_TEMPORARY_DIRECTORY}/development/usr/share/doc/${CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME})
file(COPY ${source}/examples/ DESTINATION ${documents}/examples PATTERN python EXCLUDE)
set(documents ${CPACK_TEMPORARY_DIRECTORY}/python3/usr/share/doc/${CPACK_DEBIAN_PYTHON3_PACKAGE_NAME})
file(COPY ${source}/examples/python/ DESTINATION ${documents}/examples PATTERN __pycache__ EXCLUDE)
run(chmod -R u=rwX,go=rX ${CPACK_TEMPORARY_DIRECTORY})

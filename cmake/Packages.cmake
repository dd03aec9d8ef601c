# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

# What CPack makes of the installation: archives of the whole (TGZ, ZIP), and Debian's packages, a
# component each. scripts/package calls it; docs/packages.md tells what is in which.

set(debian_dir ${CMAKE_CURRENT_LIST_DIR}/debian)

set(CPACK_PACKAGE_NAME kevrinth-qrm-polarization)
set(CPACK_PACKAGE_VENDOR "The kevrinth_qrm_polarization authors")
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_STRIP_FILES ON)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/finish-packages.cmake)
set(CPACK_POST_BUILD_SCRIPTS ${debian_dir}/repack.cmake)

# Archives hold licence and notes too, which an installation by hand has no place for.
install(FILES LICENSE README.md CHANGELOG.md DESTINATION . COMPONENT notices EXCLUDE_FROM_ALL)
set(CPACK_INSTALL_CMAKE_PROJECTS
    "${PROJECT_BINARY_DIR};${PROJECT_NAME};ALL;/;${PROJECT_BINARY_DIR};${PROJECT_NAME};notices;/")
string(TOLOWER ${CMAKE_SYSTEM_NAME}-${CMAKE_SYSTEM_PROCESSOR} platform)
set(CPACK_PACKAGE_FILE_NAME ${CPACK_PACKAGE_NAME}-${PROJECT_VERSION}-${platform})

# All that is installed, without tests and benchmarks.
add_custom_target(kv_packaged)
foreach(target ${installed} ${library} kevrinth_qrm_logger ${library}_vector_avx2 ${library}_vector_avx512
        ${toolkit_libraries} kv-polarize kv_polarize_reference kv_python)
  if(TARGET ${target})
    add_dependencies(kv_packaged ${target})
  endif()
endforeach()

include(${debian_dir}/Debian.cmake)
include(CPack)

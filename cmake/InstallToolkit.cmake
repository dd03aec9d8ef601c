# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

# The toolkit's libraries, static ones as their interface is C++, with headers, a CMake package whose
# components they are, and pkg-config files.

get_property(toolkit_libraries GLOBAL PROPERTY KV_TOOLKIT_LIBRARIES)
if(NOT toolkit_libraries)
  return()
endif()

set(toolkit_dir ${PROJECT_SOURCE_DIR}/polarization_processing_suite/toolkit)
set(toolkit_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/kv_polarization)

install(TARGETS ${toolkit_libraries} EXPORT kv_polarization
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
foreach(folder api calibration image_files pictures)
  install(DIRECTORY ${toolkit_dir}/${folder}/include/
          DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
endforeach()
# The headers include it as "planes/plane_list.h", which is found beside them.
install(FILES ${PROJECT_SOURCE_DIR}/polarization_processing_suite/planes/plane_list.h
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/kv/polarization/planes COMPONENT development)

install(EXPORT kv_polarization FILE kv_polarization-targets.cmake NAMESPACE kv::
        DESTINATION ${toolkit_package_dir} COMPONENT development)
# What inflates and deflates, by its names for CMake and pkg-config.
if(libdeflate_LIBRARY)
  set(deflate_package libdeflate)
  set(deflate_pkg_config libdeflate)
  install(FILES ${CMAKE_CURRENT_LIST_DIR}/Findlibdeflate.cmake
          DESTINATION ${toolkit_package_dir} COMPONENT development)
else()
  set(deflate_package ZLIB)
  set(deflate_pkg_config zlib)
endif()
configure_file(${CMAKE_CURRENT_LIST_DIR}/kv_polarization-config.cmake.in
               ${PROJECT_BINARY_DIR}/kv_polarization-config.cmake @ONLY)
write_basic_package_version_file(
  ${PROJECT_BINARY_DIR}/kv_polarization-config-version.cmake
  VERSION ${PROJECT_VERSION} COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/kv_polarization-config.cmake
              ${PROJECT_BINARY_DIR}/kv_polarization-config-version.cmake
        DESTINATION ${toolkit_package_dir} COMPONENT development)

# Their users need g++'s or clang's -std=c++20.
install_pkg_config(kv-polarization
  DESCRIPTION "C++ layer of ${library}: whole frames, maps, flags, errors"
  REQUIRES "${library} = ${PROJECT_VERSION}"
  LIBS "-lkv_polarization -pthread")
set(image_libraries)
if(KV_WITH_PNG OR KV_WITH_TIFF)
  list(APPEND image_libraries ${deflate_pkg_config})
endif()
if(KV_WITH_TIFF)
  list(APPEND image_libraries libtiff-4)
endif()
list(JOIN image_libraries " " image_libraries)
install_pkg_config(kv-image-files
  DESCRIPTION "Frames from image files, planes into them"
  REQUIRES "kv-polarization = ${PROJECT_VERSION} ${image_libraries}"
  LIBS -lkv_image_files)
install_pkg_config(kv-pictures
  DESCRIPTION "Pictures of polarization"
  REQUIRES "kv-polarization = ${PROJECT_VERSION}"
  LIBS -lkv_pictures)
install_pkg_config(kv-calibration
  DESCRIPTION "Calibration of polarization cameras"
  REQUIRES "kv-image-files = ${PROJECT_VERSION} kv-pictures = ${PROJECT_VERSION}"
  LIBS -lkv_calibration)

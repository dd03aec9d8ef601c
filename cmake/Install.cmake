# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

# What `cmake --install` puts where: the library with its header, a CMake package and a pkg-config
# file, its companions, and the tool with its man pages and completions. The installed tree may be
# moved: it finds its parts by relative paths.

include(CMakePackageConfigHelpers)

set(library kevrinth_qrm_polarization_processor)
set(library_dir ${PROJECT_SOURCE_DIR}/polarization_processing_suite/polarization_processor)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/${library})
# Distributions keep plug-ins out of the folder of libraries. Theirs tells the version, so that libraries
# of two versions can be installed at once.
set(private_companions ${library}-${PROJECT_VERSION_MAJOR})

if(WIN32)
  set(installed ${library})
else()
  # The loader's cache lists only libraries whose names begin with `lib`, so that the installed
  # library is linked under such a name, with the version of its interface: what the tool, the Python
  # package and users' programs ask for. Hosts that load it by its bare name get the same file through
  # a link.
  set(installed ${library}_installed)
  add_library(${installed} SHARED)
  target_link_libraries(${installed} PRIVATE polarization_processor_objects)
  target_include_directories(${installed} INTERFACE
    $<BUILD_INTERFACE:${library_dir}> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  shape_shared_library(${installed} ${library_dir}/exports.map)
  set_target_properties(${installed} PROPERTIES
    PREFIX lib
    OUTPUT_NAME ${library}
    EXPORT_NAME ${library}
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}
    INSTALL_RPATH "$ORIGIN;$ORIGIN/${private_companions}")
  set(bare_name ${PROJECT_BINARY_DIR}/installed/${library}.so)
  file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/installed)
  file(CREATE_LINK lib${library}.so.${PROJECT_VERSION_MAJOR} ${bare_name} SYMBOLIC)
  install(FILES ${bare_name} DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
endif()

# The name that users of the package link to, for users who add this project as a subdirectory too.
add_library(kevrinth::${library} ALIAS ${installed})

install(
  TARGETS ${installed}
  EXPORT ${library}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT library
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT development
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
install(FILES ${library_dir}/${library}.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)

# Optional companions are looked for by bare name: beside the library, on Windows beside the program.
option(KV_PRIVATE_COMPANIONS "Install vector modules and logger into LIBDIR/${library}-${PROJECT_VERSION_MAJOR}" OFF)
if(WIN32)
  set(companion_dir ${CMAKE_INSTALL_BINDIR})
elseif(KV_PRIVATE_COMPANIONS)
  set(companion_dir ${CMAKE_INSTALL_LIBDIR}/${private_companions})
else()
  set(companion_dir ${CMAKE_INSTALL_LIBDIR})
endif()

# The logger looks for its configuration beside itself.
if(TARGET kevrinth_qrm_logger)
  set(logger_dir ${PROJECT_SOURCE_DIR}/polarization_processing_suite/logger)
  install(
    TARGETS kevrinth_qrm_logger
    RUNTIME DESTINATION ${companion_dir} COMPONENT library
    LIBRARY DESTINATION ${companion_dir} COMPONENT library
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
  install(FILES ${logger_dir}/kevrinth_qrm_logger.h
          DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
  install(FILES ${logger_dir}/kevrinth_qrm_logger.cfg
          DESTINATION ${companion_dir} COMPONENT library)
endif()

foreach(module ${library}_vector_avx2 ${library}_vector_avx512)
  if(TARGET ${module})
    install(TARGETS ${module} LIBRARY DESTINATION ${companion_dir} COMPONENT library)
  endif()
endforeach()

if(TARGET kv-polarize)
  cmake_path(RELATIVE_PATH CMAKE_INSTALL_FULL_LIBDIR BASE_DIRECTORY ${CMAKE_INSTALL_FULL_BINDIR}
             OUTPUT_VARIABLE bin_to_lib)
  set_run_path(kv-polarize $ORIGIN/${bin_to_lib})
  install(TARGETS kv-polarize RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
endif()
# Debian's zsh looks into vendor-completions.
set(KV_ZSH_COMPLETIONS_DIR ${CMAKE_INSTALL_DATADIR}/zsh/site-functions
    CACHE STRING "Folder of the completions for zsh")
mark_as_advanced(KV_ZSH_COMPLETIONS_DIR)
if(TARGET kv_polarize_reference)
  set(reference ${PROJECT_BINARY_DIR}/reference)
  install(DIRECTORY ${reference}/man1 DESTINATION ${CMAKE_INSTALL_MANDIR} COMPONENT tools)
  install(
    FILES ${reference}/kv-polarize.bash
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
    RENAME kv-polarize
    COMPONENT tools)
  install(FILES ${reference}/_kv-polarize
          DESTINATION ${KV_ZSH_COMPLETIONS_DIR} COMPONENT tools)
  install(FILES ${reference}/kv-polarize.fish
          DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d COMPONENT tools)
endif()

# find_package(kevrinth_qrm_polarization_processor). The package needs no other one, so that the
# list of targets is the whole of it. Compatible as SOVERSION tells.
install(
  EXPORT ${library}
  FILE ${library}-config.cmake
  NAMESPACE kevrinth::
  DESTINATION ${package_dir}
  COMPONENT development)
write_basic_package_version_file(
  ${PROJECT_BINARY_DIR}/${library}-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/${library}-config-version.cmake
        DESTINATION ${package_dir} COMPONENT development)

# pkg-config
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX BASE_DIRECTORY ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig
           OUTPUT_VARIABLE pc_to_prefix)
cmake_path(APPEND libdir "\${prefix}" ${CMAKE_INSTALL_LIBDIR})
cmake_path(APPEND includedir "\${prefix}" ${CMAKE_INSTALL_INCLUDEDIR})
function(install_pkg_config name)
  cmake_parse_arguments(PARSE_ARGV 1 pc "" "DESCRIPTION;REQUIRES;LIBS" "")
  configure_file(${PROJECT_SOURCE_DIR}/cmake/pkg-config.pc.in ${PROJECT_BINARY_DIR}/${name}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${name}.pc
          DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
endfunction()
install_pkg_config(${library} DESCRIPTION "${PROJECT_DESCRIPTION}" LIBS -l${library})

include(${CMAKE_CURRENT_LIST_DIR}/InstallToolkit.cmake)
include(${CMAKE_CURRENT_LIST_DIR}/InstallPython.cmake)

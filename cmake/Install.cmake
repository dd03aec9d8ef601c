# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

# What `cmake --install` puts where: the library with its header, a CMake package and a pkg-config
# file, its companions, and the tool with its man pages and completions. The installed tree may be
# moved: it finds its parts by relative paths.

include(CMakePackageConfigHelpers)

set(library kevrinth_qrm_polarization_processor)
set(library_dir ${PROJECT_SOURCE_DIR}/polarization_processing_suite/polarization_processor)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/${library})

# The name that users of the package link to, for users who add this project as a subdirectory.
add_library(kevrinth::${library} ALIAS ${library})

if(WIN32)
  set(installed ${library})
else()
  # The loader's cache lists only libraries whose names begin with `lib`, so that the installed
  # library is linked under such a name, with the version of its interface. Hosts that load it by its
  # bare name get the same file through a link.
  set(installed ${library}_installed)
  add_library(${installed} SHARED)
  target_link_libraries(${installed} PRIVATE polarization_processor_objects)
  target_include_directories(${installed} INTERFACE $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  shape_shared_library(${installed} ${library_dir}/exports.map)
  set_target_properties(${installed} PROPERTIES
    PREFIX lib
    OUTPUT_NAME ${library}
    EXPORT_NAME ${library}
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}
    LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/installed)
  set(bare_name ${PROJECT_BINARY_DIR}/installed/${library}.so)
  add_custom_command(TARGET ${installed} POST_BUILD
    COMMAND ${CMAKE_COMMAND} -E create_symlink $<TARGET_SONAME_FILE_NAME:${installed}> ${bare_name})
  install(FILES ${bare_name} DESTINATION ${CMAKE_INSTALL_LIBDIR})
endif()

install(
  TARGETS ${installed}
  EXPORT ${library}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(FILES ${library_dir}/${library}.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

# Optional companions are looked for by bare name: beside the library, on Windows beside the program.
set(companion_dir $<IF:$<PLATFORM_ID:Windows>,${CMAKE_INSTALL_BINDIR},${CMAKE_INSTALL_LIBDIR}>)

# The logger looks for its configuration beside itself.
if(TARGET kevrinth_qrm_logger)
  set(logger_dir ${PROJECT_SOURCE_DIR}/polarization_processing_suite/logger)
  install(
    TARGETS kevrinth_qrm_logger
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
  install(FILES ${logger_dir}/kevrinth_qrm_logger.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
  install(FILES ${logger_dir}/kevrinth_qrm_logger.cfg DESTINATION ${companion_dir})
endif()

foreach(module ${library}_vector_avx2 ${library}_vector_avx512)
  if(TARGET ${module})
    install(TARGETS ${module} LIBRARY DESTINATION ${companion_dir})
  endif()
endforeach()

if(TARGET kv-polarize)
  cmake_path(RELATIVE_PATH CMAKE_INSTALL_FULL_LIBDIR BASE_DIRECTORY ${CMAKE_INSTALL_FULL_BINDIR}
             OUTPUT_VARIABLE bin_to_lib)
  set_run_path(kv-polarize $ORIGIN/${bin_to_lib})
  install(TARGETS kv-polarize RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()
if(TARGET kv_polarize_reference)
  set(reference ${PROJECT_BINARY_DIR}/reference)
  install(DIRECTORY ${reference}/man1 DESTINATION ${CMAKE_INSTALL_MANDIR})
  install(
    FILES ${reference}/kv-polarize.bash
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
    RENAME kv-polarize)
  install(FILES ${reference}/_kv-polarize DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions)
  install(FILES ${reference}/kv-polarize.fish
          DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)
endif()

# find_package(kevrinth_qrm_polarization_processor). The package needs no other one, so that the
# list of targets is the whole of it. Compatible as SOVERSION tells.
install(
  EXPORT ${library}
  FILE ${library}-config.cmake
  NAMESPACE kevrinth::
  DESTINATION ${package_dir})
write_basic_package_version_file(
  ${PROJECT_BINARY_DIR}/${library}-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/${library}-config-version.cmake DESTINATION ${package_dir})

# pkg-config
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX BASE_DIRECTORY ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig
           OUTPUT_VARIABLE pc_to_prefix)
cmake_path(APPEND libdir "\${prefix}" ${CMAKE_INSTALL_LIBDIR})
cmake_path(APPEND includedir "\${prefix}" ${CMAKE_INSTALL_INCLUDEDIR})
function(install_pkg_config name)
  cmake_parse_arguments(PARSE_ARGV 1 pc "" "DESCRIPTION;REQUIRES;LIBS" "")
  configure_file(${PROJECT_SOURCE_DIR}/cmake/pkg-config.pc.in ${PROJECT_BINARY_DIR}/${name}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${name}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endfunction()
install_pkg_config(${library} DESCRIPTION "${PROJECT_DESCRIPTION}" LIBS -l${library})

include(${CMAKE_CURRENT_LIST_DIR}/InstallToolkit.cmake)

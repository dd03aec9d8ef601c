# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

# The Python package for a distribution: in the folder that it names, over the installed library. A wheel
# brings the library along and is made by setup.py.

set(KV_PYTHON_DIR "" CACHE STRING "Install the Python package too, into this folder of the prefix")
if(NOT KV_PYTHON_DIR OR NOT TARGET kv_python_core)
  return()
endif()

set(package_dir ${KV_PYTHON_DIR}/kv_polarization)
cmake_path(ABSOLUTE_PATH package_dir BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX} OUTPUT_VARIABLE package_place)
cmake_path(RELATIVE_PATH CMAKE_INSTALL_FULL_LIBDIR BASE_DIRECTORY ${package_place}
           OUTPUT_VARIABLE package_to_lib)
set_property(TARGET kv_python_core APPEND PROPERTY INSTALL_RPATH $ORIGIN/${package_to_lib})

install(TARGETS kv_python_core LIBRARY DESTINATION ${package_dir} COMPONENT python3)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/polarization_processing_suite/python/kv_polarization/
        DESTINATION ${package_dir} COMPONENT python3
        PATTERN __pycache__ EXCLUDE)

# By which pip and importlib.metadata know it.
configure_file(${CMAKE_CURRENT_LIST_DIR}/python-metadata.in ${PROJECT_BINARY_DIR}/python-metadata @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/python-metadata RENAME METADATA COMPONENT python3
        DESTINATION ${KV_PYTHON_DIR}/kv_polarization-${PROJECT_VERSION}.dist-info)

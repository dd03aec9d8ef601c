# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

# Debian's packages: names, texts, dependencies. The packages preset lays the installation out as they
# want it.

set(KV_PACKAGE_MAINTAINER "The kevrinth_qrm_polarization authors <maintainers@kevrinth.example>"
    CACHE STRING "Who is answerable for the packages, with an address of mail")
mark_as_advanced(KV_PACKAGE_MAINTAINER)

set(CPACK_DEBIAN_PACKAGE_MAINTAINER ${KV_PACKAGE_MAINTAINER})
set(CPACK_DEBIAN_PACKAGE_SOURCE ${CPACK_PACKAGE_NAME})
# Before any revision that Debian itself would give.
set(CPACK_DEBIAN_PACKAGE_RELEASE 0upstream1)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
# repack.cmake makes the packages anew, and small.
set(CPACK_DEBIAN_COMPRESSION_TYPE gzip)
# The first line of each component's description.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
# Where dependencies are looked up besides the system: each on the library is told below.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
set(CPACK_COMPONENTS_ALL library development tools python3)

set(library_package libkevrinth-qrm-polarization-processor${PROJECT_VERSION_MAJOR})
set(development_package libkevrinth-qrm-polarization-processor-dev)
set(this_version ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})

function(describe_package component package)
  cmake_parse_arguments(PARSE_ARGV 2 deb "" "SECTION;DEPENDS;RECOMMENDS;SUGGESTS" "CONTROL")
  string(TOUPPER ${component} key)
  file(READ ${debian_dir}/${component}.description description)
  set(CPACK_DEBIAN_${key}_PACKAGE_NAME ${package} PARENT_SCOPE)
  set(CPACK_DEBIAN_${key}_DESCRIPTION "${description}" PARENT_SCOPE)
  set(CPACK_DEBIAN_${key}_PACKAGE_SECTION "${deb_SECTION}" PARENT_SCOPE)
  set(CPACK_DEBIAN_${key}_PACKAGE_DEPENDS "${deb_DEPENDS}" PARENT_SCOPE)
  set(CPACK_DEBIAN_${key}_PACKAGE_RECOMMENDS "${deb_RECOMMENDS}" PARENT_SCOPE)
  set(CPACK_DEBIAN_${key}_PACKAGE_SUGGESTS "${deb_SUGGESTS}" PARENT_SCOPE)
  set(CPACK_DEBIAN_${key}_PACKAGE_CONTROL_EXTRA "${deb_CONTROL}" PARENT_SCOPE)
  set(CPACK_DEBIAN_${key}_PACKAGE_SHLIBDEPS ON PARENT_SCOPE)
endfunction()

# Control files of the library: what programs that link it depend on, and the symbols since when: the
# first version that was packaged has them all.
set(first_version ${PROJECT_VERSION_MAJOR}.1.0)
set(control ${PROJECT_BINARY_DIR}/debian)
file(STRINGS ${library_dir}/exports.map symbols REGEX "kv_[a-z_]+;")
list(TRANSFORM symbols REPLACE "^ *(kv_[a-z_]+);.*" " \\1@Base ${first_version}")
list(SORT symbols)
list(JOIN symbols "\n" symbols)
set(soname lib${library}.so.${PROJECT_VERSION_MAJOR})
file(CONFIGURE OUTPUT ${control}/symbols CONTENT
     "${soname} ${library_package} #MINVER#\n* Build-Depends-Package: ${development_package}\n${symbols}\n")
file(CONFIGURE OUTPUT ${control}/shlibs CONTENT
     "lib${library} ${PROJECT_VERSION_MAJOR} ${library_package} (>= ${PROJECT_VERSION})\n")
file(CONFIGURE OUTPUT ${control}/triggers CONTENT "activate-noawait ldconfig\n")
file(CONFIGURE OUTPUT ${control}/conffiles CONTENT "/etc/${private_companions}/kevrinth_qrm_logger.cfg\n")

describe_package(library ${library_package}
  SECTION libs
  CONTROL ${control}/shlibs ${control}/symbols ${control}/triggers ${control}/conffiles)
# What the static libraries of image files need.
set(image_libraries)
if(KV_WITH_PNG OR KV_WITH_TIFF)
  if(libdeflate_LIBRARY)
    string(APPEND image_libraries ", libdeflate-dev")
  else()
    string(APPEND image_libraries ", zlib1g-dev")
  endif()
endif()
if(KV_WITH_TIFF)
  string(APPEND image_libraries ", libtiff-dev")
endif()
describe_package(development ${development_package}
  SECTION libdevel
  DEPENDS "${library_package} (= ${this_version})${image_libraries}"
  SUGGESTS "cmake, pkg-config")
describe_package(tools kv-polarize
  SECTION science
  DEPENDS "${library_package} (>= ${PROJECT_VERSION})")
if(NOT TARGET kv_python_core)
  list(REMOVE_ITEM CPACK_COMPONENTS_ALL python3)
  return()
endif()
# The extension module is one of this version of Python.
find_package(Python QUIET COMPONENTS Interpreter)
math(EXPR next_minor "${Python_VERSION_MINOR} + 1")
describe_package(python3 python3-kv-polarization
  SECTION python
  DEPENDS "${library_package} (>= ${PROJECT_VERSION}), python3 (>= 3.${Python_VERSION_MINOR}~), python3 (<< 3.${next_minor}), python3-numpy"
  SUGGESTS "python3-matplotlib, python3-dask, python3-distributed, python3-xarray"
  CONTROL ${debian_dir}/postinst ${debian_dir}/prerm)

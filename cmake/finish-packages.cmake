# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

# Called by CPack between installing and packing, with its variables: what Debian wants to look another
# way than an installation by hand, then one time for all files, so that equal trees give equal bytes.

if(CPACK_GENERATOR STREQUAL "DEB")
  include(${CMAKE_CURRENT_LIST_DIR}/debian/finish.cmake)
endif()

if(DEFINED ENV{SOURCE_DATE_EPOCH} AND UNIX)
  execute_process(
    COMMAND find ${CPACK_TEMPORARY_DIRECTORY} -exec touch --no-dereference --date=@$ENV{SOURCE_DATE_EPOCH} {} +
    COMMAND_ERROR_IS_FATAL ANY)
endif()

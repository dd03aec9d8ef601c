# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

# cmake -D build=BUILD_TREE -D moved=PLACE -P install_and_move.cmake

set(first_place ${moved}-from)
file(REMOVE_RECURSE ${moved} ${first_place})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${build} --prefix ${first_place}
                COMMAND_ERROR_IS_FATAL ANY)
file(RENAME ${first_place} ${moved})

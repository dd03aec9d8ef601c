# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

# What makes a fault in our code harder to use against the process that it runs in, as far as it costs
# no speed. The tests hardening.* hold every file that is shipped to it.

include(CheckCXXCompilerFlag)
include(CheckPIESupported)
check_pie_supported()

# The checks of _FORTIFY_SOURCE need an optimising compiler; sanitizers have stricter ones.
set(optimised $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:)
if(UNIX)
  add_compile_options(
    ${optimised}-fstack-protector-strong> ${optimised}-fstack-clash-protection>
    ${optimised}-U_FORTIFY_SOURCE> ${optimised}-D_FORTIFY_SOURCE=2>)
  add_link_options(LINKER:-z,relro,-z,now,-z,noexecstack,-z,text)
endif()

# Landing pads for indirect jumps and returns that a shadow stack can check (Intel CET). The linker
# marks a file only if all that it holds is marked, and the C library's start files of some systems are
# not: harden_file takes them out of the way and asks for the marks.
check_cxx_compiler_flag(-fcf-protection=full KV_HAVE_CF_PROTECTION)
if(UNIX AND KV_HAVE_CF_PROTECTION)
  add_compile_options(-fcf-protection=full)
endif()

# The loader calls _init and _fini of the start files, which hold nothing but a hook for gprof, without
# a landing pad; an option that names no symbol leaves them uncalled. In a program _start is such a
# place too: the entry gets a pad of its own.
function(harden_file target)
  if(NOT UNIX OR NOT KV_HAVE_CF_PROTECTION)
    return()
  endif()
  target_link_options(${target} PRIVATE
    LINKER:-z,ibt,-z,shstk LINKER:-init=kv_none,-fini=kv_none)
  get_target_property(type ${target} TYPE)
  if(type STREQUAL "EXECUTABLE")
    target_sources(${target} PRIVATE 
      ${PROJECT_SOURCE_DIR}/polarization_processing_suite/platform/linux/marked_entry.cpp)
    target_link_options(${target} PRIVATE LINKER:--entry=kv_start)
  endif()
endfunction()

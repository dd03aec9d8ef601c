// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// The loader jumps to a program's entry by register. A processor that checks such jumps wants a
// landing pad there, which the C library's start file does not have on every system; a linker
// option names this entry in its place.
asm(R"(
  .text
  .globl kv_start
  .type kv_start, @function
kv_start:
  endbr64
  jmp _start
  .size kv_start, . - kv_start
)");

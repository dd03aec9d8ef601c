#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0
#
# A shipped file has what cmake/Hardening.cmake asks for.
#
#   hardening_test.sh READELF OBJDUMP FILE program|library COMPILER
#
# COMPILER is CMake's name of it.
set -euo pipefail
readelf=$1 objdump=$2 file=$3 kind=$4 compiler=$5
faults=0

fault() {
  printf '%s: %s\n' "$file" "$1" >&2
  faults=1
}

segments=$("$readelf" -W -l "$file")
dynamic=$("$readelf" -W -d "$file")
notes=$("$readelf" -W -n "$file")
symbols=$("$readelf" -W --dyn-syms "$file")
calls=$(awk '$7 == "UND" { sub(/@.*/, "", $8); print $8 }' <<<"$symbols")

# What is filled in when the file is loaded cannot be written afterwards.
grep -q GNU_RELRO <<<"$segments" || fault 'no read-only relocations (-z relro)'
grep -qE '\(FLAGS\).*BIND_NOW|\(FLAGS_1\).* NOW' <<<"$dynamic" || fault 'binds lazily (-z now)'
grep -qE '\(TEXTREL\)|\(FLAGS\).*TEXTREL' <<<"$dynamic" && fault 'relocations in code (-z text)'

# Nothing can be both written and run.
grep -qE '^ *GNU_STACK .* RW +0x' <<<"$segments" || fault 'a stack that can be run (-z noexecstack)'
grep -qE '^ *[A-Z_]+ +0x.* RWE +0x' <<<"$segments" && fault 'a segment to write and to run'

if [[ $kind == program ]]; then
  grep -qE '\(FLAGS_1\).* PIE' <<<"$dynamic" || fault 'a fixed address (-pie)'
fi

features=$(sed -n 's/.*x86 feature: //p' <<<"$notes")
grep -qw IBT <<<"$features" || fault 'no mark of indirect branch tracking (-fcf-protection, -z ibt)'
grep -qw SHSTK <<<"$features" || fault 'no mark of shadow stacks (-fcf-protection, -z shstk)'

# The linker is told to set the marks: the code has to bear them out, where others enter it.
entries=$(awk '$4 == "FUNC" && $7 ~ /^[0-9]+$/ { print "0x" $2 }' <<<"$symbols")
[[ $kind == library ]] || entries=$("$readelf" -h "$file" | sed -n 's/.*Entry point address: *//p')
[[ -n $entries ]] || fault 'no function to enter'
for entry in $entries; do
  "$objdump" -d --start-address="$entry" --stop-address=$((entry + 4)) "$file" | grep -w endbr64 >/dev/null ||
    fault "no landing pad at $entry (-fcf-protection)"
done

# An empty element is the working folder, which may be somebody else's.
path=$(sed -nE 's/.*\((RUNPATH|RPATH)\).*\[(.*)\]/\2/p' <<<"$dynamic")
if [[ -z $path || :$path: == *::* ]] || tr : '\n' <<<"$path" | grep -qvE '^[$]ORIGIN(/|$)'; then
  fault "looks for libraries in '$path', not only relative to itself"
fi

# Each of the files has functions with arrays on the stack.
grep -qx __stack_chk_fail <<<"$calls" || fault 'no guards of the stack (-fstack-protector-strong)'

# With its checks on, g++ calls none of the left ones by their plain name, and of the right ones some
# by the checked one. A file that calls none at all has nothing to check. clang does not check the left
# ones in C++. vsnprintf is left out: the standard library takes its address.
if [[ $compiler == GNU ]]; then
  plain=$(grep -xE 'v?(f|s|d|as)?printf|snprintf|longjmp|syslog' <<<"$calls" || true)
  [[ -z $plain ]] || fault "unchecked calls (_FORTIFY_SOURCE): ${plain//$'\n'/ }"
  if grep -qxE 'v?snprintf|mem(cpy|move|set)|f?read|str(n?cpy|n?cat)' <<<"$calls"; then
    grep -qE '^__.*_chk$' <<<"$calls" || fault 'no checked call of the C library (_FORTIFY_SOURCE)'
  fi
fi

exit "$faults"

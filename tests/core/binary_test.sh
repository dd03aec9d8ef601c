#!/usr/bin/env bash
# What the library's file shows to the world: its exports, how it is loaded and unloaded, and no
# folder of the machine that built it.
set -euo pipefail
library=$1 source_folder=$2 build_folder=$3
faults=0

expect_same() {
  if [[ $2 != "$3" ]]; then
    printf '%s\n--- expected\n%s\n--- found\n%s\n' "$1" "$2" "$3" >&2
    faults=1
  fi
}

prefix=kv_polarization_processor
exports=$(printf '%s\n' \
  ${prefix}_create_polarization_processor \
  ${prefix}_destroy_polarization_processor \
  ${prefix}_get_custom_calibration_coefficients \
  ${prefix}_module_initialize \
  ${prefix}_module_terminate \
  ${prefix}_set_custom_calibration_coefficients \
  ${prefix}_transform)
expect_same 'exported symbols' "$exports" \
  "$(nm -D --defined-only "$library" | awk '{ print $3 }' | LC_ALL=C sort)"

# One of these would keep the library in the process for good.
expect_same 'unique symbols' '' "$(readelf -W --dyn-syms "$library" | grep -w UNIQUE || true)"

# Companions are found beside the library, and nowhere else.
expect_same 'run path' '[$ORIGIN]' \
  "$(readelf -W -d "$library" | awk '$2 ~ /RUNPATH|RPATH/ { print $NF }')"

# Debugging information names the folder of the compilation.
if ! readelf -W -S "$library" | grep -q '\.debug_info'; then
  for folder in "$source_folder" "$build_folder"; do
    expect_same 'folders of the build machine' '' "$(strings -a "$library" | grep -F "$folder" || true)"
  done
fi

exit $faults

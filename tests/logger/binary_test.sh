#!/usr/bin/env bash
# The library exports its three functions and nothing else, and can be unloaded.
set -euo pipefail
library=$1

exports=$(nm -D --defined-only "$library" | awk '{ print $3 }' | LC_ALL=C sort | paste -sd ' ')
if [[ $exports != 'qrm_free_log qrm_get_log qrm_log' ]]; then
  echo "exported symbols: $exports" >&2
  exit 1
fi
if readelf -W --dyn-syms "$library" | grep -w UNIQUE; then
  echo 'these unique symbols would keep the library in the process' >&2
  exit 1
fi

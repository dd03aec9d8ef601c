#!/bin/sh
# Builds a C program with the flags that pkg-config tells, and runs it.
#
#   pkg_config_consumer.sh PREFIX_OF_PKGCONFIG SOURCE PROGRAM COMPILER [FLAG...]
set -eu
export PKG_CONFIG_PATH="$1"
source=$2
program=$3
shift 3

package=kevrinth_qrm_polarization_processor
# The flags are a list of words.
# shellcheck disable=SC2046
"$@" "$source" $(pkg-config --cflags --libs "$package") -o "$program"
LD_LIBRARY_PATH=$(pkg-config --variable=libdir "$package") "$program"

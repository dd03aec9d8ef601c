#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0
#
# Installs to /usr/local of a root folder of its own, builds a program there with the flags of
# pkg-config, and runs it as after `ldconfig`: only the loader's cache tells where the library is.
#
#   loader_cache_test.sh BUILD LIBDIR VERSION ROOT COMPILER [FLAG...]
set -euo pipefail
build=$1 lib=/usr/local/$2 version=$3 root=$4
shift 4
source ../expect_same.sh
PATH=$PATH:/usr/sbin:/sbin

name=kevrinth_qrm_polarization_processor
rm -rf "$root"
DESTDIR=$root cmake --install "$build" --prefix /usr/local >/dev/null

export PKG_CONFIG_PATH=$root$lib/pkgconfig
expect_same 'version' "$version" "$(pkg-config --modversion $name)"
# The flags are a list of words.
# shellcheck disable=SC2046
"$@" consumer/consumer.c $(pkg-config --cflags --libs $name) -o "$root/consumer"

# The libraries of the system that these need, and the loader.
ldd "$root/consumer" "$root$lib"/*.so | grep -o '/[^ ]* (0x' | sort -u |
  while read -r library _; do
    [[ $library == "$root"* ]] || cp --dereference --parents "$library" "$root"
  done
cp --recursive --parents /etc/ld.so.conf* "$root"
ldconfig -r "$root"

chroot=$(command -v chroot)
for enter in "$chroot" "$(command -v unshare) --map-root-user $chroot"; do
  if $enter / true 2>/dev/null; then
    # A command and its options.
    # shellcheck disable=SC2086
    ROOT=$root ./program_test.sh "$root$lib" $enter "$root" /consumer
    exit "$faults"
  fi
done
echo 'Skipped: this user may not change the root folder.'
exit 77

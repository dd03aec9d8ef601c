# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0
#
# Nothing is left of the packages when they are purged, files made behind their installation neither.
set -euo pipefail
source /test/tests/expect_same.sh
cd /

mapfile -t packages <<<"$(dpkg-query --show --showformat '${Package} ${source:Package}\n' |
  sed -n 's/ kevrinth-qrm-polarization$//p')"
expect_same 'number of packages' 4 "${#packages[@]}"
dpkg -L "${packages[@]}" | grep -v '^/\.$' | sort -u >/test/files
apt-get -q -y purge "${packages[@]}" >/test/purge.log 2>&1 || { cat /test/purge.log; exit 1; }

# Folders stay where other packages have something in them.
left=$(while read -r file; do
  [[ -e $file || -L $file ]] && ! dpkg -S "$file" >/dev/null 2>&1 && echo "$file"
done </test/files || true)
expect_same 'files of the packages' '' "$left"
expect_same 'files with their names' '' \
  "$(find / \( -path /proc -o -path /sys -o -path /test -o -path /packages -o -path /var/cache -o -path /var/lib/apt \) -prune \
    -o \( -name '*kevrinth*' -o -name '*kv[-_]polari*' \) -print)"
expect_same 'library in the cache of the loader' '' "$(ldconfig -p | grep kevrinth || true)"

exit "$faults"

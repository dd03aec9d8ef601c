# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0
#
# The tool, of its package and the library's alone: the README's tour, companions, manual, completions.
set -euo pipefail
source /test/tests/expect_same.sh
mkdir -p /test/tour
cd /test/tour

sed -n '/^## From the shell/,/^`transform`/s/^    \(kv-polarize .*\)/\1/p' /test/README.md >tour.sh
bash -e tour.sh >tour.log || { cat tour.log; exit 1; }
for result in planes/frame_0020_dolp.png planes/frame_0001_angle_picture.png camera.html sheet.png; do
  expect_same "$result" there "$([[ -s $result ]] && echo there)"
done

# found WORD: the file that `info` tells, which the loader may have come to through a link to /usr.
found() {
  "${environment[@]}" kv-polarize info | sed -n "s/^  $1  *//p" | xargs realpath --no-symlinks |
    sed 's|^/lib/|/usr/lib/|'
}
# The module that this processor can run, none where it has neither.
module=
for set in avx512dq:avx512 avx2:avx2; do
  if grep -qw "${set%:*}" /proc/cpuinfo 2>/dev/null; then
    module=kevrinth_qrm_polarization_processor_vector_${set#*:}.so
    break
  fi
done

lib=$(dirname "$(dpkg -L libkevrinth-qrm-polarization-processor0 | grep '\.so\.0$')")
companions=$lib/kevrinth_qrm_polarization_processor-0
environment=(env)
expect_same 'library' "$lib/libkevrinth_qrm_polarization_processor.so.0" "$(found library)"
expect_same 'logger' "$companions/kevrinth_qrm_logger.so" "$(found logger)"
[[ -z $module ]] || expect_same 'module' "$companions/$module" "$(found 'vector module')"

# Companions beside the library go before those of the package.
mkdir -p /test/side
cp "$lib"/libkevrinth_qrm_polarization_processor.so.0 "$companions"/* /test/side
environment=(env LD_LIBRARY_PATH=/test/side)
expect_same 'logger beside a copy of the library' /test/side/kevrinth_qrm_logger.so "$(found logger)"
[[ -z $module ]] ||
  expect_same 'module beside a copy of the library' "/test/side/$module" "$(found 'vector module')"

# The logger is set up in /etc.
configuration=/etc/kevrinth_qrm_polarization_processor-0/kevrinth_qrm_logger.cfg
sed -i.before 's/^level = 2/level = 7/' $configuration
expect_same 'lines of the logger' yes \
  "$(kv-polarize transform night/frame_0001.tiff -o logged 2>&1 |
    sed -n '/\[debug\].*transform takes/s/.*/yes/p' | sort -u)"
mv $configuration.before $configuration

for command in '' $(kv-polarize --help | sed -n '/^Commands:/,/^$/s|^  \([a-z-]\+\) .*|-\1|p'); do
  expect_same "manual of kv-polarize$command" '.TH' \
    "$(zcat "/usr/share/man/man1/kv-polarize$command.1.gz" | grep -o -m 1 '^\.TH')"
done
expect_same 'completions of bash' 'transform' "$(
  source /usr/share/bash-completion/completions/kv-polarize
  COMP_WORDS=(kv-polarize tra) COMP_CWORD=1
  "$(complete -p kv-polarize | sed 's/.*-F \([^ ]*\).*/\1/')" kv-polarize tra kv-polarize
  echo "${COMPREPLY[0]}" | sed 's/ *$//'
)"

exit "$faults"

#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0
#
# Puts the fuzzers into $OUT, each with its seeds and dictionary, and the libraries that they ask for
# beside them. The preset brings the sanitizers, so that the flags of the environment stay unused.
set -euo pipefail
cd "$SRC/kevrinth_qrm_polarization"

unset CFLAGS CXXFLAGS CC CXX
cmake --preset asan -DKV_COVERAGE=OFF
cmake --build --preset asan --target fuzzers
# The target python wants an interpreter and its packages, which are not where the fuzzers run.
for program in build/asan/fuzz_*; do
  name=$(basename "$program")
  target=${name#fuzz_}
  target=${target%_failing_allocations}
  [[ -x $program && $target != python ]] || continue
  cp "$program" "$OUT/"
  (cd "tests/fuzzing/seeds/$target" && cmake -E tar cf "$OUT/${name}_seed_corpus.zip" --format=zip .)
  if [[ -f tests/fuzzing/dictionaries/$target.dict ]]; then
    cp "tests/fuzzing/dictionaries/$target.dict" "$OUT/$name.dict"
  fi
  # What runs them may lack the libraries; the programs look beside themselves, $ORIGIN.
  ldd "$program" | awk '$2 == "=>" && /tiff|deflate|jpeg|webp|zstd|lzma|jbig|Lerc|kevrinth/ { print $3 }' |
    xargs -r cp -t "$OUT"
done
cp build/asan/*.so "$OUT/"

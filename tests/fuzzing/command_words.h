// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <string_view>

namespace kv::fuzzing {

inline constexpr std::array<std::string_view, 12> kCommands = {
    "transform", "measure",   "view",     "info",    "bench",  "again",
    "simulate",  "calibrate", "identify", "compare", "manual", "completion"};

/// Words that the tool knows, and files that are there. Sizes, counts and threads are small.
inline constexpr auto kWords = std::to_array<std::string_view>(
    {// Files and folders. "any" has the content that the input chooses.
     "any", "any", "any", "a.png", "b.tiff", "c.npy", "d.pgm", "e.raw", "night.tiff", "stack",
     "stack/stack.csv", "camera.json", "planes", "planes/a_dolp.png", ".", "*.png", "*", "new",
     "new.png", "new.tiff", "new.npy", "new.pgm", "new.json", "new.csv", "new.html", "sub/new.png",
     "-", "@any", "missing.png",
     // Options of several commands.
     "-o", "-o", "-o", "--output", "--overwrite", "-r", "--recursive", "--skip", "--phase",
     "--origin", "--width", "--height", "--bit-depth", "--raw-format", "--raw-bits",
     "--calibration", "--calibration=camera.json", "--json", "--help", "--version", "--black-level",
     "--clip-level", "--sensor-noise", "--page", "--pages", "--region", "--", "--no-overwrite",
     "--planes=?", "--format=?", "--width=16", "--height=12",
     // transform
     "--names", "--stack", "--resume", "--dry-run", "--planes", "--output-max", "--format",
     "--compression", "--pictures", "--dolp-white", "-j", "--jobs", "--jobs=2", "-q", "-v",
     "--list-failed", "--no-planes", "--planes=all",
     // measure, view, simulate
     "--rescue", "--regions", "--regions=any", "--as", "--as=csv", "--as=json", "--as=table",
     "--sheet-width", "--seed", "--noise", "--frames", "--frames=2", "--sensor", "--sensor=1",
     "--bad-pixels", "--calibration-stack",
     // calibrate, identify, compare, bench, again, manual, completion
     "--manifest", "--manifest=any", "--manifest=stack/stack.csv", "--report", "--source-dolp",
     "--unknown-angles", "--camera", "--date", "--turned", "--turned=20", "--angle",
     "--angle-error", "--not-mirrored", "--tolerance", "--bytes", "--file", "--threads", "--time",
     "--time=0.001", "--from", "man", "markdown", "text", "bash", "zsh", "fish",
     // Values.
     "0", "1", "2", "3", "4", "8", "12", "16", "45", "90", "135", "-1", "0.5", "1e9", "nan", "0,0",
     "1,1", "2,2,8,8", "film=2,2,8,8", "1..3", "all", "none", "fast", "small", "dolp,azimuth",
     "normalized_stokes", "contact_sheet", "intensity", "png", "tiff", "npy", "raw", "pgm",
     "Mono12p", "Mono8", "{name}_{plane}", "{page:05}", ""});

}  // namespace kv::fuzzing

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <type_traits>

#include "kv/calibration/calibration.h"

namespace kv::polarization {

// What the JSON says of each record: an archive that writes or reads gets each field with its name.
// A Record is const for one that writes.

template <class Record, class Type>
concept MaybeConst = std::is_same_v<std::remove_const_t<Record>, Type>;

template <class Archive, MaybeConst<Measured> Record>
void visit_fields(Archive& archive, Record& record) {
  archive("value", record.value);
  archive("error", record.error);
}

template <class Archive, MaybeConst<SensorNoise> Record>
void visit_fields(Archive& archive, Record& record) {
  archive("gain", record.gain);
  archive("read_noise", record.read_noise);
}

template <class Archive, MaybeConst<Mosaic> Record>
void visit_fields(Archive& archive, Record& record) {
  archive.phase("phase", record.phase);
  archive("x_origin", record.x_origin);
  archive("y_origin", record.y_origin);
}

template <class Archive, MaybeConst<PixelClass> Record>
void visit_fields(Archive& archive, Record& record) {
  archive("nominal_angle", record.nominal_angle);
  archive("pixels", record.pixels);
  archive("black", record.black);
  archive("gain", record.gain);
  archive("diattenuation", record.diattenuation);
  archive("orientation", record.orientation);
  archive("gain_scatter", record.gain_scatter);
  archive("diattenuation_scatter", record.diattenuation_scatter);
  archive("orientation_scatter", record.orientation_scatter);
}

template <class Archive, MaybeConst<FrameRecord> Record>
void visit_fields(Archive& archive, Record& record) {
  archive("name", record.name);
  archive.frame_kind("kind", record.kind);
  archive("angle", record.angle);
  archive("used", record.used);
  archive("refusal", record.refusal);
  archive("level", record.level);
  archive("class_means", record.class_means);
  archive("angle_deviation", record.angle_deviation);
  archive("excess", record.excess);
}

template <class Archive, MaybeConst<Finding> Record>
void visit_fields(Archive& archive, Record& record) {
  archive("name", record.name);
  archive("found", record.found);
  archive("expected", record.expected);
  archive("unit", record.unit);
  archive("good", record.good);
  archive("verdict", record.verdict);
}

/// Without the maps.
template <class Archive, MaybeConst<Calibration> Record>
void visit_fields(Archive& archive, Record& record) {
  archive("camera", record.camera);
  archive("date", record.date);
  archive("software", record.software);
  archive("width", record.width);
  archive("height", record.height);
  archive("mosaic", record.mosaic);
  archive("bit_depth", record.bit_depth);
  archive("clip_level", record.clip_level);
  archive("noise", record.noise);
  archive("source_offset", record.source_offset);
  archive("source_dolp", record.source_dolp);
  archive("angles_solved", record.angles_solved);
  archive("condition", record.condition);
  archive("classes", record.classes);
  archive("findings", record.findings);
  archive("frames", record.frames);
}

/// The type of elements, files and units of the maps.
template <class Visitor, MaybeConst<PixelMaps> Record>
void visit_maps(Visitor&& visit, Record& maps) {
  visit("black", "counts", maps.black);
  visit("gain", "", maps.gain);
  visit("diattenuation", "", maps.diattenuation);
  visit("orientation", "degrees from the nominal angle", maps.orientation);
  visit("gain_error", "", maps.gain_error);
  visit("diattenuation_error", "", maps.diattenuation_error);
  visit("orientation_error", "degrees", maps.orientation_error);
  visit("bad", "sum of 1 clipped, 2 noisy, 4 out of range, 8 dark defect", maps.bad);
}

}  // namespace kv::polarization

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

/// Frames from files, planes and pictures into files.

#include "kv/image_files/frame_reader.h"
#include "kv/image_files/image_format.h"
#include "kv/image_files/image_reader.h"
#include "kv/image_files/image_writer.h"
#include "kv/image_files/pending_file.h"
#include "kv/image_files/pixel_format.h"
#include "kv/image_files/provenance.h"
#include "kv/image_files/stack_writer.h"
#include "kv/polarization/fault.h"

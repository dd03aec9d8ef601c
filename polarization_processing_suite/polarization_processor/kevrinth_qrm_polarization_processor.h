/* SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors */
/* SPDX-License-Identifier: Apache-2.0 */

/*
 * Planes of polarization from one raw frame of a polarization camera.
 *
 * The sensor carries a repeating 2x2 cell of linear polarizers at 0, 45, 90 and 135 degrees, so
 * that each pixel sees the scene through one polarizer. From the four samples of its
 * neighbourhood the library estimates the linear Stokes values of each pixel,
 *
 *     S0 = (I0 + I45 + I90 + I135) / 2,   S1 = I0 - I90,   S2 = I45 - I135,
 *
 * and writes any of six planes into the caller's buffers.
 *
 * Planes
 *
 *   name               element   per pixel  value
 *   normalized_stokes  float     2          S1/S0, then S2/S0; -1 to 1 in a consistent scene. NaN
 *                                           where all four samples are 0.
 *   intensity          uint16_t  1          S0, from 0 to output_max
 *   stokes_s1          uint16_t  1          S1; negative values are stored as 0
 *   stokes_s2          uint16_t  1          S2; negative values are stored as 0
 *   azimuth            uint16_t  1          atan2(S2, S1) / 2 in degrees, -90 to +90 standing for
 *                                           0 to output_max. An unpolarized or black pixel reads as
 *                                           half of output_max.
 *   dolp               uint16_t  1          degree of linear polarization, sqrt(S1^2 + S2^2) / S0,
 *                                           0 to 1 standing for 0 to output_max; 0 where S0 is 0
 *
 *   The angle in degrees is azimuth * 180 / output_max - 90: 0 along the rows of the image, its two
 *   ends -90 and +90 being one orientation. The arctangent is a cubic polynomial, within 0.15
 *   degree of the true angle.
 *
 *   intensity, stokes_s1 and stokes_s2 are in the units of the samples when output_max is
 *   2^bit_depth - 1, and are else multiplied by output_max / (2^bit_depth - 1). Values above
 *   output_max are stored as output_max. S0 is half the SUM of four samples: a uniform frame of
 *   value v has S0 = 2v, and reaches full scale at half of the samples' range.
 *
 *   Rounding follows the calling thread's floating-point rounding mode, by default to nearest with
 *   ties to even.
 *
 * Frames
 *
 *   The input and each 16-bit plane are packed row by row without gaps, width elements a row.
 *   normalized_stokes holds its two floats of pixel (row, column) at element
 *   (row * width + column) * 2. No alignment beyond that of the element is asked for. Buffers must
 *   not overlap.
 *
 *   Most of a frame is computed four columns at a time, the vector area: all rows but the last two
 *   (the last one of an odd height), columns 0 to 4 * (width / 4 - 1) - 1. There
 *   - the weights are the default ones, whatever was set;
 *   - S0 is the sum times the processor's approximate reciprocal of 2 (0.49987793 on Intel and AMD
 *     processors), 0.024 per cent below that of the other pixels, and scaling multiplies by an
 *     approximate reciprocal too;
 *   - on processors with SSE4.1, columns 3, 7, 11, ... repeat their left neighbour;
 *   - normalized_stokes pairs are packed one behind the other: with k = 4 * (width / 4 - 1), the
 *     pairs of row 2p stand from pixel position p * k on, those of row 2p + 1 from width + p * k
 *     on, and replace what they fall upon; places that no pair reaches are not written. Frames of
 *     height up to 4 or width below 8 have every pair at its place. For a true plane of a larger
 *     frame, call for strips of three rows (2p to 2p + 2, from top to bottom, the last one reaching
 *     the frame's end) with pointers into the same planes.
 *
 *   The last pixel of a frame with just one odd side takes the weights of an even row and column:
 *   its S1 and S2 are exchanged, and with an odd height negated as well.
 *
 * Life and threads
 *
 *   initialize, create, any number of transforms and coefficient calls, destroy, terminate.
 *   initialize and terminate nest and may be called from any thread. A transform only reads the
 *   instance, so that several threads may transform on one handle. The caller keeps these apart:
 *   setting coefficients or destroying an instance while a transform runs on it, and the last
 *   terminate while any other call runs. The library starts no thread and keeps no pointer to a
 *   caller's buffer after a call.
 *
 * Every function returns a ProcessorStatus. No function but initialize and terminate lets a C++
 * exception out. Both do, with nothing changed, when the operating system refuses their lock.
 * initialize does when there is no memory for the log, or when the logger throws: the module then
 * stays uninitialised for good, since the lock stays taken, and a later initialize or terminate
 * waits for ever.
 */
#ifndef KEVRINTH_QRM_POLARIZATION_PROCESSOR_H
#define KEVRINTH_QRM_POLARIZATION_PROCESSOR_H

#include <stdint.h>

#if defined(_WIN32)
#if defined(KV_POLARIZATION_PROCESSOR_BUILD)
#define KV_POLARIZATION_PROCESSOR_API __declspec(dllexport)
#else
#define KV_POLARIZATION_PROCESSOR_API __declspec(dllimport)
#endif
#else
#define KV_POLARIZATION_PROCESSOR_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Result of every function. */
typedef int32_t ProcessorStatus;
enum {
  kv_status_ok = 0,                   /* all went well */
  kv_status_general_failure = 1,      /* create: no SSE on this processor, or an unknown error */
  kv_status_not_initialized = 2,      /* the module is not initialised */
  kv_status_out_of_memory = 3,        /* create */
  kv_status_null_handle = 4,          /* the handle is null */
  kv_status_null_input = 5,           /* transform: input is null */
  kv_status_no_outputs = 6,           /* transform: all six planes are null */
  kv_status_input_aliases_output = 7, /* transform: a plane is the input */
  kv_status_outputs_alias = 8,        /* transform: two planes are one buffer */
  kv_status_invalid_polar_phase = 9,  /* transform: polar_phase is 4 or more */
  kv_status_zero_output_max = 10,     /* transform: output_max is 0 */
  kv_status_invalid_width = 11,       /* transform: width is less than 2 */
  kv_status_invalid_height = 12,      /* transform: height is less than 2 */
  kv_status_invalid_bit_depth = 13    /* transform: bit_depth is more than 16 */
};

/* The polarizer behind the sensor's top-left pixel. With it the whole mosaic is known:
 *
 *   0:    0 135     45:  45  90     90:  90  45    135: 135   0
 *        45  90           0 135         135   0          90  45
 *
 * A negative number acts as kv_polar_phase_0. */
typedef int32_t PolarPhase;
enum {
  kv_polar_phase_0 = 0,  /* 0 degrees: along the rows */
  kv_polar_phase_45 = 1, /* 45 degrees: counter-clockwise from them */
  kv_polar_phase_90 = 2, /* 90 degrees: along the columns */
  kv_polar_phase_135 = 3 /* 135 degrees */
};

/* One processor: the calibration weights of one camera. Made by create, freed by destroy. */
typedef struct PolarizationProcessor PolarizationProcessor;

/* Opens the library for the process; each call asks for one terminate. Looks for the optional
 * logger library and works without it. Always kv_status_ok. */
KV_POLARIZATION_PROCESSOR_API ProcessorStatus kv_polarization_processor_module_initialize(void);

/* Ends what one initialize began; without one it does nothing. Instances stay allocated: their
 * handles work again after another initialize. Always kv_status_ok. */
KV_POLARIZATION_PROCESSOR_API ProcessorStatus kv_polarization_processor_module_terminate(void);

/* Makes a processor with the default weights and writes its handle to *handle, which must not be
 * null and is written on success only.
 *
 * kv_status_ok, kv_status_not_initialized, kv_status_out_of_memory, kv_status_general_failure. */
KV_POLARIZATION_PROCESSOR_API ProcessorStatus
kv_polarization_processor_create_polarization_processor(PolarizationProcessor** handle);

/* Frees a processor. With kv_status_not_initialized nothing is freed.
 *
 * kv_status_ok, kv_status_not_initialized, kv_status_null_handle. */
KV_POLARIZATION_PROCESSOR_API ProcessorStatus
kv_polarization_processor_destroy_polarization_processor(PolarizationProcessor* handle);

/* Fills the requested planes from one frame.
 *
 *   handle        a processor
 *   polar_phase   of the sensor's top-left pixel, kv_polar_phase_0 to kv_polar_phase_135
 *   input         width * height samples; all 16 bits of a sample count
 *   x_origin,     column and row of the frame's first pixel on the sensor; only whether they are
 *   y_origin      odd matters. Not negative: an odd negative origin is taken as a shift by one row
 *                 and one column.
 *   width,        of the frame, from 2 up. A width of 2 or 3 is sound with a height of 2 only:
 *   height        with more rows the call runs past its buffers and never returns.
 *   bit_depth     significant bits of a sample, 0 to 16
 *   output_max    stands for full scale in the 16-bit planes, 1 to 65535
 *   the planes    each width * height elements, normalized_stokes 2 * width * height; null for a
 *                 plane that is not wanted
 *
 * The arguments are tested in this order, and the first fault is returned, with no plane touched:
 * kv_status_not_initialized, kv_status_null_handle, kv_status_invalid_polar_phase,
 * kv_status_null_input, kv_status_no_outputs, kv_status_input_aliases_output,
 * kv_status_outputs_alias, kv_status_invalid_width, kv_status_invalid_height,
 * kv_status_zero_output_max, kv_status_invalid_bit_depth; else kv_status_ok. */
KV_POLARIZATION_PROCESSOR_API ProcessorStatus kv_polarization_processor_transform(
    PolarizationProcessor* handle, PolarPhase polar_phase, const uint16_t* input, int32_t x_origin,
    int32_t y_origin, int32_t width, int32_t height, uint32_t bit_depth, uint16_t output_max,
    float* normalized_stokes, uint16_t* intensity, uint16_t* stokes_s1, uint16_t* stokes_s2,
    uint16_t* azimuth, uint16_t* dolp);

/* Weights of the Stokes estimate.
 *
 * A set is 16 floats, 4 rows of 4. Rows: the weights of S0 (whose sum is halved afterwards), of S1,
 * of S2, and a spare row that is kept and never used. Columns: the pixel itself, its horizontal,
 * its vertical and its diagonal neighbour in the 2x2 neighbourhood; at the frame's right and bottom
 * edges the neighbour on the other side takes the place. There is one set for the pixels behind
 * each polarizer; a new processor has
 *
 *     polarizer   S0 weights   S1 weights    S2 weights
 *     0           1 1 1 1      1  0  0 -1    0 -1  1  0
 *     45          1 1 1 1      0 -1  1  0    1  0  0 -1
 *     90          1 1 1 1     -1  0  0  1    0  1 -1  0
 *     135         1 1 1 1      0  1 -1  0   -1  0  0  1
 *
 * Weights reach all but the vector area of a frame. A frame of height 2 has no vector area, and so
 * strips of two rows carry weights to every pixel.
 *
 * get copies sets out of a processor, set copies them in, for all later transforms. A null pointer
 * leaves that set alone. Values are not checked. To have the defaults back, set what get gave
 * before the first set.
 *
 * kv_status_ok, kv_status_not_initialized, kv_status_null_handle. */
KV_POLARIZATION_PROCESSOR_API ProcessorStatus
kv_polarization_processor_get_custom_calibration_coefficients(PolarizationProcessor* handle,
                                                              float* coefficients_0,
                                                              float* coefficients_45,
                                                              float* coefficients_90,
                                                              float* coefficients_135);
KV_POLARIZATION_PROCESSOR_API ProcessorStatus
kv_polarization_processor_set_custom_calibration_coefficients(PolarizationProcessor* handle,
                                                              const float* coefficients_0,
                                                              const float* coefficients_45,
                                                              const float* coefficients_90,
                                                              const float* coefficients_135);

#ifdef __cplusplus
}
#endif

#endif

/* SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors */
/* SPDX-License-Identifier: Apache-2.0 */

/* The C interface on the smallest frame there is, one mosaic cell:
 *
 *   cc mosaic_cell.c $(pkg-config --cflags --libs kevrinth_qrm_polarization_processor) -o
 * mosaic_cell
 */

#include <kevrinth_qrm_polarization_processor.h>
#include <stdio.h>

enum { kBitDepth = 12, kOutputMax = 65535 };

int main(void) {
  static const uint16_t frame[4] = {1000, 600, 600, 200};
  uint16_t azimuth[4] = {0}, dolp[4] = {0};
  PolarizationProcessor* processor = NULL;
  ProcessorStatus status;

  kv_polarization_processor_module_initialize();
  status = kv_polarization_processor_create_polarization_processor(&processor);
  if (status == kv_status_ok) {
    status = kv_polarization_processor_transform(processor, kv_polar_phase_0, frame, 0, 0, 2, 2,
                                                 kBitDepth, kOutputMax, NULL, NULL, NULL, NULL,
                                                 azimuth, dolp);
    kv_polarization_processor_destroy_polarization_processor(processor);
  }
  kv_polarization_processor_module_terminate();
  if (status != kv_status_ok) {
    fprintf(stderr, "the processor library refuses: status %d\n", (int)status);
    return 1;
  }
  printf("angle %.1f degrees, DoLP %.2f\n", azimuth[0] * 180.0 / kOutputMax - 90,
         dolp[0] / (double)kOutputMax);
  return 0;
}

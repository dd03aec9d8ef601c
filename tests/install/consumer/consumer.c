/* SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors */
/* SPDX-License-Identifier: Apache-2.0 */

#include <kevrinth_qrm_polarization_processor.h>
#include <stdio.h>

/* One mosaic cell: I0 3000, I135 2000, I45 2000, I90 1000. So S0 is 4000 and S1 is 2000. */
int main(void) {
  const uint16_t frame[4] = {3000, 2000, 2000, 1000};
  uint16_t s0[4] = {0}, s1[4] = {0};
  PolarizationProcessor* processor = NULL;
  kv_polarization_processor_module_initialize();
  kv_polarization_processor_create_polarization_processor(&processor);
  ProcessorStatus status = kv_polarization_processor_transform(
      processor, kv_polar_phase_0, frame, 0, 0, 2, 2, 12, 4095, NULL, s0, s1, NULL, NULL, NULL);
  kv_polarization_processor_destroy_polarization_processor(processor);
  kv_polarization_processor_module_terminate();
  printf("status %d, S0 %d, S1 %d\n", (int)status, s0[0], s1[0]);
  return status == kv_status_ok && s0[0] == 4000 && s1[0] == 2000 ? 0 : 1;
}

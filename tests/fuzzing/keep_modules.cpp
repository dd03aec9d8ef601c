// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// In the place of the system's: libFuzzer reads the counters of modules even after those were
// unloaded. Tests look at unloading, in programs without libFuzzer.
extern "C" __attribute__((visibility("default"))) int dlclose(void*);
int dlclose(void*) { return 0; }

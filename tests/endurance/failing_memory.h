// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

// Where it is linked in, std::terminate writes the calls to standard error before it aborts.
//
// An allocator in front of malloc's own that can let one allocation fail, of all that a process
// makes: operator new of C++ comes here, and so do the C libraries.
extern "C" {

/// From here on allocations are counted, on all threads, and the one of that number fails, from 1
/// up. 0 ends it. Returns whether an allocation has failed since the last call.
bool kv_fail_allocation(long number);

/// Has a failure noted there, too, such as in memory that another process sees.
void kv_note_failure_in(bool* place);

/// Pieces of memory that are in use.
long kv_allocations_alive(void);
}

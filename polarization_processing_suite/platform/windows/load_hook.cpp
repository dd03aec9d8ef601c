// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include <windows.h>

/// Threads that start and end in the host process never enter the library. Setting the module up
/// and the unload step are the work of a static object, which the C runtime makes and destroys.
BOOL WINAPI DllMain(HINSTANCE library, DWORD reason, LPVOID) {
  if (reason == DLL_PROCESS_ATTACH) DisableThreadLibraryCalls(library);
  return TRUE;
}

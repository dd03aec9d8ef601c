/* SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors */
/* SPDX-License-Identifier: Apache-2.0 */

/*
 * Log lines of the libraries in a process, to standard error and to a file.
 *
 * A library that logs loads this one by name, gets a log for itself and writes finished lines to
 * it. How much is written, and where, is the user's choice: the configuration file, which the
 * sample kevrinth_qrm_logger.cfg explains line by line. It lies beside this library, or where the
 * environment variable KEVRINTH_QRM_LOGGER_CONFIG says, and is never looked for in the working
 * folder: that may hold somebody else's files.
 *
 * All functions may be called from any thread at any time. None lets a C++ exception out, and none
 * ends the process. What is wrong with a configuration or a log file is said once, in one line on
 * standard error, and logging goes on with the defaults: errors to standard error, nothing else.
 *
 * Strings end in a null character; a null pointer is taken as an empty string.
 */
#ifndef KEVRINTH_QRM_LOGGER_H
#define KEVRINTH_QRM_LOGGER_H

#include <stdint.h>

#if defined(_WIN32)
#if defined(KV_LOGGER_BUILD)
#define KV_LOGGER_API __declspec(dllexport)
#else
#define KV_LOGGER_API __declspec(dllimport)
#endif
#else
#define KV_LOGGER_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* The log of a module, or of a group of lines within it.
 *
 *   module_name       stands in the lines
 *   group_name        stands behind the module's name in the lines; may be empty
 *   config_file_name  an absolute path is taken as it is. Instead of a bare name or relative path
 *                     the file that KEVRINTH_QRM_LOGGER_CONFIG names is taken; where that is not
 *                     set, a relative path starts at the folder of this library. Without the file
 *                     the defaults hold; that the variable names none is said.
 *
 * The log stays until qrm_free_log was called as often as qrm_get_log for the same two names.
 * Until then every further call gives the same log and reads no configuration.
 *
 * Null when there is no memory for it. */
KV_LOGGER_API void* qrm_get_log(const char* module_name, const char* group_name,
                                const char* config_file_name);

/* Writes one line.
 *
 *   log       from qrm_get_log
 *   severity  0 to 7, lower is more severe. 2 is an error and 7 a duration in the lines of
 *             kevrinth_qrm_polarization_processor. Numbers above the configured level are dropped.
 *   file, line, function  the place in the source
 *   message   the finished text
 *
 * 0 when the line was written or is not wanted; else 1: a null log, or a file that takes no more,
 * which is also said once on standard error. */
KV_LOGGER_API int32_t qrm_log(void* log, int32_t severity, const char* file, int32_t line,
                              const char* function, const char* message);

/* Gives a log back. After the last one its file is closed, and the pointer is not to be used
 * again. Names that were never got are ignored. */
KV_LOGGER_API void qrm_free_log(const char* module_name, const char* group_name);

#ifdef __cplusplus
}
#endif

#endif

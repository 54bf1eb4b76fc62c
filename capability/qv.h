/* SPDX-FileCopyrightText: 2026 TARVA developers */
/* SPDX-License-Identifier: MIT */

/* The capability library: six functions through which every OpenCL call of the process travels.
 *
 * A root device is one device of the machine. A node is one capability of a root device, that is one OpenCL
 * version under which the device can be used. A call handle binds one node of one root device; each command
 * is a number and an argument record (capability/commands.h), and the capability of the handle decides how
 * the number is read.
 *
 * WHICH DEVICES THERE ARE
 *
 * All devices of all platforms of the machine's OpenCL loader, custom devices among them. Those of a platform that does not
 * list them are left out, and a device
 *   - that does not tell its name, vendor, version, driver's version, profile and extensions, each in one piece of at most
 *     1 MiB,
 *   - whose version is not of the form "OpenCL 1.2 ...",
 *   - that does not tell its byte order,
 *   - that gives no context, or not two queues in it, one of which measures times.
 * A device whose version is none of OpenCL's, such as 1.7, is there, but has no node. Built-in kernels are not listed if no
 * program can be made of them. One that is not available now is offered nevertheless, and its CL_DEVICE_AVAILABLE says so;
 * that is false, too, for a device that did not answer the question when it was first looked at, until it does.
 *
 * With the environment variable QV_LOG set to anything but "0", a line on the standard error stream tells of each that is
 * left out why.
 *
 * UNDER WHICH VERSIONS
 *
 * A device that reports OpenCL 1.0 to 2.2 has one node, of the capability of that version. One that reports 3.0 or later has
 * one, too: of 2.2 if it takes SPIR-V, and with it specialization constants; else of the highest of 2.1 and 2.0 all of whose
 * mandatory features it has; else of 1.2. What it lacks all the same, it answers with 0 or refuses, save the default
 * on-device queue, for which a plain queue stands in.
 *
 * The environment variable QV_OPENCL_VERSIONS, such as "1.2,2.0", gives each device nodes of exactly these versions instead.
 * An entry that is none of 1.0, 1.1, 1.2, 2.0, 2.1 and 2.2 is passed over, which a line on the standard error stream tells
 * once; if no entry is left, it is as if the variable were not set. Neither variable is read in a process with more rights
 * than its caller.
 *
 * WHAT COMMANDS PROMISE
 *
 * The library answers for the implementation below it. Three rules follow, which OpenCL itself does not have:
 *   - Work that is refused when it is enqueued, whoever refuses it, succeeds as a command and yields an event whose
 *     execution status is the refusal. Without a place for an event the command fails.
 *   - clFinish succeeds although the queue cannot be finished: all that can be waited for has ended then, and every
 *     other event of the queue has that failure as its status. Only if work was enqueued without an event it fails.
 *   - A kernel that is made while another of its program and name lives is taken to be made for a launch. That it
 *     cannot be made, or that it refuses an argument, is told by the event of its launch. It answers questions all the
 *     same, once it can be made.
 * Queues, events, programs and kernels that are given out are objects of this library, for its own commands alone.
 *
 * All functions may be called from any thread. A trailing `reserved` is 0. */
#ifndef QV_H
#define QV_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

typedef struct qv_call_handle qv_call_handle;

/* The only value of qv_version() that this interface is known under. */
#define QV_VERSION UINT64_C(0x8000000000000000)

/* Transport codes: the outcome of reaching a command, not of the command itself. */
#define QV_OK 0
#define QV_UNRECOVERABLE_ERROR (-1)
#define QV_INVALID_COMMAND_ID (-2)

/* The version of this interface. Cannot fail. */
uint64_t qv_version(void);

/* Writes up to `count` root-device handles to `array` and the number of root devices to `*out_count`.
 * `array` may be NULL if `count` is 0. A machine without OpenCL has no root device; that is no failure. If there is
 * too little memory to look at the machine, the next call looks again. */
int32_t qv_get_root_devices(uint64_t count, uint64_t* array, uint64_t* out_count, uint64_t reserved);

/* Writes up to `count` handles of the nodes that `root` has under capability `capability_id` (1 to 6 for
 * OpenCL 1.0, 1.1, 1.2, 2.0, 2.1, 2.2) to `array` and their number to `*out_count`. `array` may be NULL if
 * `count` is 0. */
int32_t qv_find_capability_nodes(uint64_t root, uint64_t capability_id, uint64_t count, uint64_t* array,
                                 uint64_t* out_count, uint64_t reserved);

/* Binds `node` of `root`. The handle belongs to the caller, who gives it to qv_close_call_handle once. */
int32_t qv_create_call_handle(uint64_t root, uint64_t node, qv_call_handle** out_handle, uint64_t reserved);

/* Ends a call handle. NULL is ignored. */
int32_t qv_close_call_handle(qv_call_handle* handle);

/* Performs one command. `record` is the command's argument record; its output fields, the OpenCL status among
 * them, are written only if the result is QV_OK. */
int32_t qv_call_capability(qv_call_handle* handle, uint64_t command_id, void* record, uint64_t reserved);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif

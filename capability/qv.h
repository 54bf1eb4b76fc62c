/* The capability library: six functions through which every OpenCL call of the process travels.
 *
 * A root device is one device of the machine. A node is one capability of a root device, that is one OpenCL
 * version under which the device can be used. A call handle binds one node of one root device; each command
 * is a number and an argument record (capability/commands.h), and the capability of the handle decides how
 * the number is read.
 *
 * Devices that cannot be used are left out. With the environment variable QV_LOG set to anything but "0", a line
 * on the standard error stream tells of each why.
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

#ifdef __cplusplus
}
#endif

#endif

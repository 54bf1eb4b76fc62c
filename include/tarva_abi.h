/* SPDX-FileCopyrightText: 2026 TARVA developers */
/* SPDX-License-Identifier: MIT */

/*
 * tarva_abi.h - the interface of liboryn-tarva.so.0
 *
 * TARVA gives a program one plain function interface to all OpenCL devices of a machine, of the versions 1.0
 * to 2.2. A program takes the list of devices, loads a program for a device, takes a kernel out of it,
 * allocates memory objects, and launches the kernel on them. Memory objects belong to no device: the library
 * moves them to where they are used.
 *
 *     tarva_abi_get_devices            the devices of the machine
 *     tarva_abi_load_device_ir         source, SPIR, SPIR-V or a device binary -> a program of one device
 *     tarva_abi_get_kernel             a program and a name -> a kernel
 *     tarva_abi_memory_allocate_typed  a memory object
 *     tarva_abi_async_write_memory     the caller's data -> a memory object, with a future
 *     tarva_abi_kernel_call            a launch
 *     tarva_abi_async_read_memory      a memory object -> the caller's data, with a future
 *     tarva_abi_wait_future            how a read or a write ended
 *
 * Everything in this first part holds for all functions and records unless one says otherwise.
 *
 * RESULTS AND ERRORS
 *
 * A function that can fail returns a tarva_abi_result and takes as its last argument out_error, which must
 * point to writable memory.
 *
 *     TARVA_ABI_OK               success; *out_error is not written
 *     TARVA_ABI_UNKNOWN_FAILURE  *out_error is set to NULL
 *     TARVA_ABI_OUT_OF_MEMORY    *out_error is set to NULL
 *     TARVA_ABI_LOGIC_FAILURE    *out_error is a new error object: the call makes no sense
 *     TARVA_ABI_RUNTIME_FAILURE  *out_error is a new error object: the call could not be carried out
 *
 * A function that fails writes none of its other out-arguments and changes nothing. The error object tells
 * what happened: its property EXCEPTION_MESSAGE is a text for people, and EXCEPTION_TYPE is a number. The
 * names of the third column are those that this text uses.
 *
 *     EXCEPTION_TYPE  result                     name
 *     1               TARVA_ABI_LOGIC_FAILURE    logic error
 *     2               TARVA_ABI_LOGIC_FAILURE    invalid argument
 *     3               TARVA_ABI_LOGIC_FAILURE    length error: a count that no process could hold
 *     4               TARVA_ABI_RUNTIME_FAILURE  out of range
 *     5               TARVA_ABI_RUNTIME_FAILURE  runtime error
 *     6               TARVA_ABI_RUNTIME_FAILURE  not a standard error
 *     7               TARVA_ABI_RUNTIME_FAILURE  any other standard error: above all, whatever OpenCL reports
 *
 * What a function says under "Errors" comes on top of these, which are the same for all:
 *
 *   - An out-argument or a data pointer that must not be NULL and is NULL is an invalid argument. Other
 *     pointers must be valid, which cannot be tested.
 *   - A handle that is NULL, that the library does not know, that is of another kind than is asked for, or
 *     that has already been given up is a runtime error; it is never followed. The message depends on the
 *     function. Those that return a result, tarva_abi_release_memory and tarva_abi_abandon_future say
 *     "Lookup of internal type map failed."; the other retain and release functions and the two that free
 *     handles tell in the log, each in words of its own, what is wrong with it.
 *   - A number that is no value of its enumeration is refused. A tarva_abi_data_type or tarva_abi_ir_type of
 *     that sort is a runtime error.
 *
 * A function that returns nothing ignores a call that it cannot carry out and leaves one line at error level
 * in the log.
 *
 * Only a read and a write have a future. Allocating, filling, copying, launching and freeing have none:
 * tarva_abi_memory_allocate_typed, tarva_abi_fill_memory, tarva_abi_copy_memory, tarva_abi_kernel_call and
 * tarva_abi_release_memory check the call, and tell what is wrong with it; but if the work itself then
 * fails, on the device or for want of memory, the result is TARVA_ABI_OK all the same, and one line at error
 * level in the log says what failed. No content is lost by such a failure: a memory object is left where it
 * was or where it had been moved to, and a range that was to be filled, copied to or computed may have been
 * written in part. Reading the result back, and waiting for that read, is how a program makes sure.
 *
 * What an OpenCL implementation refuses although the library had no reason to, and what a device refuses
 * that is lost, such as one behind a network, fails as told above: the work fails, and the process, the
 * other devices, and all content that is not on that device go on. A device that cannot be prepared at the
 * start is left out; QV_LOG=1 in the environment has the reason written to the standard error stream.
 *
 * Two things are beyond this. A kernel that follows a bad pointer may end the process, as in any OpenCL
 * program. And each device is served by a thread of the library: should the capability library be exchanged
 * for one that fails a command outright, that thread writes a line at critical level and ends the process
 * with status 1.
 *
 * OWNERSHIP
 *
 * Handles are opaque pointers. A handle that a function returns belongs to the caller, who gives it up with
 * the function of its kind, and never with free:
 *
 *     device, program, kernel, memory  counted: a new handle has a count of 1, the retain function of its
 *                                      kind adds 1, the release function takes 1, and the last one ends it
 *     future                           exactly one tarva_abi_wait_future or tarva_abi_abandon_future
 *     error                            one tarva_abi_free_error
 *     property                         one tarva_abi_free_property
 *     array of devices                 one tarva_abi_free_device_array
 *     array of properties              one tarva_abi_free_property_array
 *     build result                     one tarva_abi_free_build_result
 *     string of a property tree        one tarva_abi_free_property_tree_string
 *
 * A handle in an array or in a build result is the caller's too: giving up the container leaves it alive. A
 * function that returns a handle returns a new one each time, also for an object that has one already.
 * Handles may be given up in any order: a kernel keeps its program alive, a program its device, and a
 * property the object that it describes.
 *
 * The library keeps no pointer that the caller passes in. Values, labels, names, options, data and records
 * are copied during the call. The one exception: the storage that a read or a write works on, see there.
 *
 * THREADS
 *
 * Any function may be called from any thread at any time; the library synchronises. Handles may be passed
 * between threads. A handle must not be given up by one thread while another thread without a reference of
 * its own is still using it: nothing is followed that is gone, but the other call fails. A record or string
 * that the library has handed out never changes, so any number of threads may read it until one gives it up;
 * what is passed in must not change during the call. No function is a cancellation point, and none may be
 * called by the handler of a signal: in the middle of another call it ends like one after the stop.
 *
 * The library's threads take no signal that is sent to the process. If all threads of the program end, as they
 * can after a pthread_exit of the main one, the last that has called the library stays, with the signals that
 * it takes, since nothing else could end the process.
 *
 * Operations on memory (allocate, fill, copy, read, write, launch, free) run one at a time, in the order in
 * which the calls are accepted, and a call returns when its operation has ended. With TARVA_SCHEDULER=concurrent
 * in the environment that holds for operations that share a memory object or a device; others may overlap.
 *
 * UNITS
 *
 * Positions, counts and sizes of memory objects are numbers of elements of the object's type, and positions
 * begin at 0. Only data_size counts bytes. Sizes of launches are numbers of work-items unless said to be of
 * groups.
 *
 * BYTE ORDER
 *
 * The host is little-endian, and elements are in its order. On a big-endian device (one whose property
 * CL_DEVICE_ENDIAN_LITTLE is 0) the kernel finds them in the device's order: values passed to a launch and
 * values to fill with are turned around, and so is a memory object's content when it moves from the host to
 * that device, component by component, save those of one byte and TARVA_ABI_TYPE_BOOLEAN. It is turned
 * around that one time only. From then on a read, a write or a copy passes the bytes as they are stored, so
 * the caller turns them around.
 *
 * RECORDS
 *
 * Every field is one 64-bit word. Flags are tested against 0. Strings end with a NUL byte. The library hands
 * out records for reading only.
 *
 * START AND END
 *
 * Loading the library does nothing. The first call of any function, save the two that ask for a version,
 * starts it: it looks for devices and prepares each. No device is a success, with an empty list. If the
 * library cannot start, it writes the reason to the standard error stream and ends the process with status 1.
 * It stops by itself when the process exits or the library is unloaded. From then on, a call returns
 * TARVA_ABI_UNKNOWN_FAILURE or does nothing. Calls of other threads that are inside the library at that
 * moment are waited for: up to about ten seconds, but as long as it takes for what a device is doing; calls
 * that other threads begin meanwhile may be held up for as long. A process should not exit while its first
 * program is being loaded or its first kernel launched, since many OpenCL compilers do not survive that. A
 * child that was forked after the start has no library: its calls end like those after the stop, and the
 * first of them leaves a line at error level in the log. If the library itself has to end the process, calls
 * that are waiting never return; since an exit handler may wait for one of them, the handlers then have about
 * ten seconds.
 *
 * LOG
 *
 * The library is silent unless the environment asks for lines. TARVA_LOG_LEVEL and SKERV_LOG_LEVEL take
 * trace, debug, info, warn, error, critical or off; TARVA_LOG_TARGET and SKERV_LOG_TARGET take console
 * (standard error), file (tarva.log or skerv.log in the working directory, appended to) or none. The first
 * pair is for the library, the second for its OpenCL layer. A file is made for its owner alone, and must be a
 * regular one and no link; if it cannot be had, there is no log. When memory is short a line is cut, or
 * stands without its details, and when a disk is full it is lost. Control characters are shown as \xNN,
 * and a backslash as \\, so that a line is one line. A process that has more rights than its caller reads
 * none of these variables. Lines at info level tell of start and stop, those at warning level of handles
 * that were never given up, those at error level of failures, and those at critical level of failures that
 * cannot be mended, above all those that end the process.
 *
 * WAITING
 *
 * A call that waits for a device's thread sleeps, and so does that thread between two operations: nothing
 * polls. TARVA_BUSY_WAIT_US in the environment, a number of microseconds, makes both look for that long
 * before they sleep. It is read at the start; 0 unless set, at most 1000, for which larger numbers count, and
 * 0 with a line at warning level for what is no number. Where two processors are free, that saves most of the
 * way to the other one and back, in each operation. The price is that both are busy meanwhile, and for up to
 * that long after each operation; on a loaded machine it makes all slower. A thread whose waits turn out
 * longer stops looking by itself, and tries again now and then; one that may use a single processor never
 * looks.
 *
 * PROPERTIES
 *
 * Devices, programs, kernels, memory objects and errors describe themselves by a tree of properties. Its root
 * is named ROOT, has no value, and comes from the root function of the kind; children are asked for by name,
 * or all at once, in the order of this table. The last column tells the value's type, without
 * TARVA_ABI_TYPE_, and the number of elements if it is not 1. A value is read when its property is asked for,
 * and is the same from then on.
 *
 *     device   FRIENDLY_SHORT_DESCRIPTION  OpenCL version and name, for people       STRING
 *              FRIENDLY_SUMMARY            the same                                  STRING
 *              NAME                        the name                                  STRING
 *              OBJECT_ID                   a number that no other object has         UINT64
 *              OPENCL                      the node of OpenCL's own answers          no value
 *                CL_DEVICE_...             see below
 *                CL_DRIVER_VERSION         version of the implementation             STRING
 *     program  USER_LABEL                  the caller's label                        STRING
 *              KERNEL_NAMES                the names of its kernels                  STRING, one for each
 *              OPENCL                      the node of OpenCL's own answers          no value
 *                CL_PROGRAM_SOURCE         source text                               STRING
 *                CL_PROGRAM_IL             SPIR-V module, from OpenCL 2.1 on         UINT8, one for each byte
 *                CL_PROGRAM_BINARY         device binary                             UINT8, one for each byte
 *              OBJECT_ID                   as above                                  UINT64
 *     kernel   MAX_WORK_ITEM_DIMENSIONS    most dimensions of a launch               UINT64
 *              MAX_WORK_GROUP_SIZE         most work-items of a group                UINT64
 *              KERNEL_NAME                 the name                                  STRING
 *              OPENCL                      the node of OpenCL's own answers          no value
 *                CL_KERNEL_NUM_ARGS        number of parameters                      UINT64
 *                CL_KERNEL_ATTRIBUTES      attributes, from OpenCL 1.2 on            STRING, one for each
 *                CL_KERNEL_COMPILE_WORK_GROUP_SIZE
 *                                          group size fixed in the source, or zeros  UINT64, 3
 *                CL_KERNEL_PREFERRED_WORK_GROUP_SIZE_MULTIPLE
 *                                          work-items, from OpenCL 1.1 on            UINT64
 *              OBJECT_ID                   as above                                  UINT64
 *              REQUIRED_WORK_GROUP_SIZE    group size fixed in the source, or zeros  UINT64, 3
 *              MAX_GLOBAL_WORK_SIZE        most work-items of a launch               UINT64, 3
 *     memory   USER_LABEL                  the caller's label                        STRING
 *              NUM_ELEMENTS                number of elements                        UINT64
 *              TYPE                        their type, a tarva_abi_data_type         UINT64
 *              OBJECT_ID                   as above                                  UINT64
 *     error    EXCEPTION_TYPE              see RESULTS AND ERRORS                    UINT64
 *              EXCEPTION_MESSAGE           what happened, for people                 STRING
 *
 * A program without kernels, be it that its build failed or that the device has none built in, has no OPENCL.
 *
 * The children of a device's OPENCL are the OpenCL queries that its version knows, by their OpenCL names and
 * in OpenCL's units:
 *
 *     a number                              UINT64, such as CL_DEVICE_GLOBAL_MEM_SIZE, in bytes
 *     CL_DEVICE_MAX_WORK_ITEM_SIZES         UINT64, one for each dimension
 *     a flag                                BOOLEAN, such as CL_DEVICE_AVAILABLE
 *     a text                                STRING, such as CL_DEVICE_VENDOR
 *     CL_DEVICE_EXTENSIONS                  STRING, one for each extension
 *     CL_DEVICE_BUILT_IN_KERNELS            STRING, one for each kernel
 *     CL_DEVICE_TYPE_...                    BOOLEAN: 1 if the device is of that type and of no other
 *     CL_DEVICE_PROFILE_FULL, _EMBEDDED     BOOLEAN
 *     CL_DEVICE_IMAGE_SUPPORT               BOOLEAN, and a node: what concerns images
 *     CL_DEVICE_SINGLE_FP_CONFIG            a node without value: a flag for each case, named by it and the
 *     CL_DEVICE_DOUBLE_FP_CONFIG            case, such as CL_DEVICE_SINGLE_FP_CONFIG_FMA; likewise the others
 *     CL_DEVICE_GLOBAL_MEM_CACHE_TYPE
 *     CL_DEVICE_EXECUTION_CAPABILITIES
 *     CL_DEVICE_QUEUE_ON_HOST_PROPERTIES
 *     CL_DEVICE_QUEUE_ON_DEVICE_PROPERTIES  from OpenCL 2.0 on; numbers too
 *     CL_DEVICE_SVM_CAPABILITIES            from OpenCL 2.0 on
 *
 * The children of CL_DEVICE_IMAGE_SUPPORT are listed for every device; without images they are as properties
 * of unknown names. DEDICATED_LOCAL_MEMORY, a BOOLEAN below OPENCL, is in no list and only asked for by name.
 *
 * "reserved", the first argument of most functions, is never read; pass NULL.
 */
#ifndef TARVA_ABI_H
#define TARVA_ABI_H

#include <stdint.h>

/* The version that this header belongs to. One with a larger MINOR has more, and all of this one. */
#define TARVA_ABI_VERSION_MAJOR 0
#define TARVA_ABI_VERSION_MINOR 1
#define TARVA_ABI_VERSION_PATCH 0

#if defined(__GNUC__)
#define TARVA_ABI_EXPORT __attribute__((visibility("default")))
#else
#define TARVA_ABI_EXPORT
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ----------------------------------------------------------------------------------------------------------
 * Enumerations
 */

/* How a call, or the operation behind a future, ended. */
typedef int64_t tarva_abi_result;
enum tarva_abi_result_value {
  TARVA_ABI_OK = 0,
  TARVA_ABI_UNKNOWN_FAILURE = -1, /* no more is known; also every call after the library has stopped */
  TARVA_ABI_OUT_OF_MEMORY = -2,   /* the host is out of memory */
  TARVA_ABI_LOGIC_FAILURE = -3,   /* the call makes no sense; see the error object */
  TARVA_ABI_RUNTIME_FAILURE = -4  /* any other failure; see the error object */
};

/* What a handle stands for. The one field of a handle's record that all kinds have. */
typedef uint64_t tarva_abi_object_kind;
enum tarva_abi_object_kind_value {
  TARVA_ABI_OBJECT_PROPERTY = 0,
  TARVA_ABI_OBJECT_DEVICE = 1,
  TARVA_ABI_OBJECT_PROGRAM = 2,
  TARVA_ABI_OBJECT_KERNEL = 3,
  TARVA_ABI_OBJECT_MEMORY = 4,
  TARVA_ABI_OBJECT_ERROR = 5,
  TARVA_ABI_OBJECT_FUTURE = 6
};

/*
 * The type of the elements of a memory object, of a kernel argument, of a specialization constant or of a
 * property's value. The number behind INT and UINT is that of the bits of a component. An element of n
 * components (V2 to V16, HALF2 to DOUBLE16) takes n times the bytes of its component, except that three
 * components take the room of four, as in OpenCL. Elements stand directly behind one another.
 *
 * TARVA_ABI_TYPE_STRING means two things: an element of a memory object, or an argument, is 1 byte of text;
 * an element of a property's value is a pointer to a whole string, so the value is an array of const char*.
 */
typedef uint64_t tarva_abi_data_type;
enum tarva_abi_data_type_value {
  TARVA_ABI_TYPE_NONE = 0,    /* no type; refused wherever a type is asked for */
  TARVA_ABI_TYPE_STRING = 1,  /* text; see above */
  TARVA_ABI_TYPE_BOOLEAN = 2, /* 4 bytes, non-zero is true */
  TARVA_ABI_TYPE_UINT8 = 3,
  TARVA_ABI_TYPE_INT8 = 4,
  TARVA_ABI_TYPE_UINT16 = 5,
  TARVA_ABI_TYPE_INT16 = 6,
  TARVA_ABI_TYPE_UINT32 = 7,
  TARVA_ABI_TYPE_INT32 = 8,
  TARVA_ABI_TYPE_UINT64 = 9,
  TARVA_ABI_TYPE_INT64 = 10,
  TARVA_ABI_TYPE_HALF = 11,   /* IEEE 754 binary16 */
  TARVA_ABI_TYPE_FLOAT = 12,  /* IEEE 754 binary32 */
  TARVA_ABI_TYPE_DOUBLE = 13, /* IEEE 754 binary64 */
  TARVA_ABI_TYPE_UINT8V2 = 14,
  TARVA_ABI_TYPE_UINT8V3 = 15,
  TARVA_ABI_TYPE_UINT8V4 = 16,
  TARVA_ABI_TYPE_UINT8V8 = 17,
  TARVA_ABI_TYPE_UINT8V16 = 18,
  TARVA_ABI_TYPE_INT8V2 = 19,
  TARVA_ABI_TYPE_INT8V3 = 20,
  TARVA_ABI_TYPE_INT8V4 = 21,
  TARVA_ABI_TYPE_INT8V8 = 22,
  TARVA_ABI_TYPE_INT8V16 = 23,
  TARVA_ABI_TYPE_UINT16V2 = 24,
  TARVA_ABI_TYPE_UINT16V3 = 25,
  TARVA_ABI_TYPE_UINT16V4 = 26,
  TARVA_ABI_TYPE_UINT16V8 = 27,
  TARVA_ABI_TYPE_UINT16V16 = 28,
  TARVA_ABI_TYPE_INT16V2 = 29,
  TARVA_ABI_TYPE_INT16V3 = 30,
  TARVA_ABI_TYPE_INT16V4 = 31,
  TARVA_ABI_TYPE_INT16V8 = 32,
  TARVA_ABI_TYPE_INT16V16 = 33,
  TARVA_ABI_TYPE_UINT32V2 = 34,
  TARVA_ABI_TYPE_UINT32V3 = 35,
  TARVA_ABI_TYPE_UINT32V4 = 36,
  TARVA_ABI_TYPE_UINT32V8 = 37,
  TARVA_ABI_TYPE_UINT32V16 = 38,
  TARVA_ABI_TYPE_INT32V2 = 39,
  TARVA_ABI_TYPE_INT32V3 = 40,
  TARVA_ABI_TYPE_INT32V4 = 41,
  TARVA_ABI_TYPE_INT32V8 = 42,
  TARVA_ABI_TYPE_INT32V16 = 43,
  TARVA_ABI_TYPE_UINT64V2 = 44,
  TARVA_ABI_TYPE_UINT64V3 = 45,
  TARVA_ABI_TYPE_UINT64V4 = 46,
  TARVA_ABI_TYPE_UINT64V8 = 47,
  TARVA_ABI_TYPE_UINT64V16 = 48,
  TARVA_ABI_TYPE_INT64V2 = 49,
  TARVA_ABI_TYPE_INT64V3 = 50,
  TARVA_ABI_TYPE_INT64V4 = 51,
  TARVA_ABI_TYPE_INT64V8 = 52,
  TARVA_ABI_TYPE_INT64V16 = 53,
  TARVA_ABI_TYPE_HALF2 = 54,
  TARVA_ABI_TYPE_HALF3 = 55,
  TARVA_ABI_TYPE_HALF4 = 56,
  TARVA_ABI_TYPE_HALF8 = 57,
  TARVA_ABI_TYPE_HALF16 = 58,
  TARVA_ABI_TYPE_FLOAT2 = 59,
  TARVA_ABI_TYPE_FLOAT3 = 60,
  TARVA_ABI_TYPE_FLOAT4 = 61,
  TARVA_ABI_TYPE_FLOAT8 = 62,
  TARVA_ABI_TYPE_FLOAT16 = 63,
  TARVA_ABI_TYPE_DOUBLE2 = 64,
  TARVA_ABI_TYPE_DOUBLE3 = 65,
  TARVA_ABI_TYPE_DOUBLE4 = 66,
  TARVA_ABI_TYPE_DOUBLE8 = 67,
  TARVA_ABI_TYPE_DOUBLE16 = 68
};

/*
 * What the data given to tarva_abi_load_device_ir is, and which devices can take it. SPIR is taken by devices
 * that list its version, and SPIR-V before OpenCL 2.1 by those with the extension cl_khr_il_program.
 */
typedef uint64_t tarva_abi_ir_type;
enum tarva_abi_ir_type_value {
  TARVA_ABI_IR_SOURCE_1_0 = 1,   /* OpenCL C source text; any device */
  TARVA_ABI_IR_SOURCE_1_1 = 2,   /* OpenCL C source text; OpenCL 1.1 or later */
  TARVA_ABI_IR_SOURCE_1_2 = 3,   /* OpenCL C source text; OpenCL 1.2 or later */
  TARVA_ABI_IR_SOURCE_2_0 = 4,   /* OpenCL C source text; OpenCL 2.0 or later */
  TARVA_ABI_IR_SOURCE_2_1 = 5,   /* OpenCL C source text; OpenCL 2.1 or later */
  TARVA_ABI_IR_SPIR_1_2 = 6,     /* SPIR 1.2 binary; OpenCL 1.2 or later, some */
  TARVA_ABI_IR_SPIR_2_0 = 7,     /* SPIR 2.0 binary; OpenCL 1.2 or later, some */
  TARVA_ABI_IR_SPIR_V = 8,       /* SPIR-V module; OpenCL 2.1 or later, and some of 1.2 and 2.0 */
  TARVA_ABI_IR_DEVICE_BINARY = 9 /* CL_PROGRAM_BINARY of a program of such a device; any device */
};

/* What accompanies the data of a program; see tarva_abi_ir_header_s. */
typedef uint64_t tarva_abi_ir_header_kind;
enum tarva_abi_ir_header_kind_value {
  TARVA_ABI_IR_HEADER_EMPTY = 1,                   /* nothing; the same as no header at all */
  TARVA_ABI_IR_HEADER_SPECIALIZATION_CONSTANTS = 2 /* values for constants of a SPIR-V module; OpenCL 2.2 */
};

/* What a kernel argument is; see tarva_abi_kernel_argument_s. */
typedef uint64_t tarva_abi_argument_kind;
enum tarva_abi_argument_kind_value {
  TARVA_ABI_ARGUMENT_NULL = 0,        /* a null buffer */
  TARVA_ABI_ARGUMENT_VALUE = 1,       /* one element, passed by value */
  TARVA_ABI_ARGUMENT_MEMORY = 2,      /* a memory object */
  TARVA_ABI_ARGUMENT_LOCAL_MEMORY = 3 /* memory local to a work-group, without content */
};

/* How the range of a launch is given; see tarva_abi_launch_range_s. */
typedef uint64_t tarva_abi_launch_type;
enum tarva_abi_launch_type_value {
  TARVA_ABI_LAUNCH_EXPLICIT = 1,            /* offset, global size and local size are all given */
  TARVA_ABI_LAUNCH_GLOBAL_SIZE = 2,         /* a wanted global size; the kernel chooses the local size */
  TARVA_ABI_LAUNCH_GROUPS = 3,              /* a number of groups, whose size the kernel chooses */
  TARVA_ABI_LAUNCH_GROUPS_SIZED = 4,        /* a number of groups of a given size */
  TARVA_ABI_LAUNCH_GROUPS_PER_UNIT = 5,     /* a number of groups for each compute unit, size as for 3 */
  TARVA_ABI_LAUNCH_GROUP_PER_UNIT_SIZED = 6 /* one group of a given size for each compute unit */
};

/* The form in which a property tree is written; see tarva_abi_tree_format_s. */
typedef uint64_t tarva_abi_tree_kind;
enum tarva_abi_tree_kind_value {
  TARVA_ABI_TREE_TEXT = 1, /* lines for people */
  TARVA_ABI_TREE_XML = 2   /* XML elements */
};

/* ----------------------------------------------------------------------------------------------------------
 * Handles
 */

/* One device, under one OpenCL version. Offered under several versions, it is listed once for each. */
typedef struct tarva_abi_device_s tarva_abi_device_s;
/* A program of one device. */
typedef struct tarva_abi_program_s tarva_abi_program_s;
/* One function of a program that can be launched. It holds no arguments, so threads may share it. */
typedef struct tarva_abi_kernel_s tarva_abi_kernel_s;
/* A block of elements of one type, which belongs to no device. */
typedef struct tarva_abi_memory_s tarva_abi_memory_s;
/* The caller's hold on one read or write. */
typedef struct tarva_abi_future_s tarva_abi_future_s;
/* A failure. */
typedef struct tarva_abi_error_s tarva_abi_error_s;

/* ----------------------------------------------------------------------------------------------------------
 * Records
 */

/*
 * A property: a named value in the tree that describes a device, program, kernel, memory object or error; see
 * PROPERTIES. The handle is this record, and the caller may read every field until it gives the handle to
 * tarva_abi_free_property. Strings and data belong to the library and go with the handle.
 *
 * By data_type, data is an array of
 *
 *     TARVA_ABI_TYPE_STRING   const char*, each to a string
 *     TARVA_ABI_TYPE_BOOLEAN  uint32_t
 *     TARVA_ABI_TYPE_UINT8    uint8_t
 *     TARVA_ABI_TYPE_UINT64   uint64_t
 *
 * and there are no others. A property of an unknown name has empty strings, no value and no children.
 */
typedef struct tarva_abi_property_s {
  tarva_abi_object_kind kind;    /* TARVA_ABI_OBJECT_PROPERTY */
  const char* name;              /* the name that distinguishes it from its siblings */
  const char* friendly_name;     /* a short text for people */
  const char* description;       /* a longer text for people */
  uint64_t has_data;             /* 1 if the property has a value, else 0 */
  tarva_abi_data_type data_type; /* the type of the value's elements; all bits set if has_data is 0 */
  uint64_t element_count;        /* the number of elements; 0 if has_data is 0, and for an empty list */
  const void* data;              /* the first element, or NULL if there is none */
} tarva_abi_property_s;

/* Devices. The handles in it are the caller's, one release each; the array itself goes with its free. */
typedef struct tarva_abi_device_array_s {
  uint64_t count;               /* number of handles */
  tarva_abi_device_s** devices; /* count handles; NULL if count is 0 */
} tarva_abi_device_array_s;

/*
 * Properties. The handles in it are the caller's, one free each; the array itself goes with its free. If
 * memory ran out while the handles were made, count is as it should be and every entry is NULL: there are
 * either all handles or none.
 */
typedef struct tarva_abi_property_array_s {
  uint64_t count;                    /* number of entries */
  tarva_abi_property_s** properties; /* count entries; NULL if count is 0 */
} tarva_abi_property_array_s;

/* What became of a program. The log goes with the record's free, and the program stays. */
typedef struct tarva_abi_build_result_s {
  tarva_abi_program_s* program; /* never NULL; without kernels if the build failed; the caller's to release */
  const char* build_log;        /* what the compiler said, or NULL if it said nothing */
  uint64_t success;             /* 1 if the program was built, else 0 */
} tarva_abi_build_result_s;

/* A value for one specialization constant of a SPIR-V module. Read during the call. */
typedef struct tarva_abi_specialization_constant_s {
  uint64_t id;                   /* the SPIR-V id of the constant; below 2^32 */
  tarva_abi_data_type data_type; /* the type of the value */
  const void* value;             /* one element of that type; not NULL */
} tarva_abi_specialization_constant_s;

/*
 * What accompanies the data of a program. Read during the call.
 *
 *     kind                                          constants and count
 *     TARVA_ABI_IR_HEADER_EMPTY                     not read
 *     TARVA_ABI_IR_HEADER_SPECIALIZATION_CONSTANTS  read
 */
typedef struct tarva_abi_ir_header_s {
  tarva_abi_ir_header_kind kind;
  const tarva_abi_specialization_constant_s* constants; /* count records; NULL only if there are none */
  uint64_t count;                                       /* the number of constants */
} tarva_abi_ir_header_s;

/*
 * One argument of a launch. Read during the call. A pointer is put into a word by a cast through uintptr_t.
 *
 *     kind                             first                  second
 *     TARVA_ABI_ARGUMENT_NULL          not read               not read
 *     TARVA_ABI_ARGUMENT_VALUE         a tarva_abi_data_type  a pointer to one element of that type, not NULL
 *     TARVA_ABI_ARGUMENT_MEMORY        a tarva_abi_memory_s*  not read
 *     TARVA_ABI_ARGUMENT_LOCAL_MEMORY  a tarva_abi_data_type  the number of elements of that type, not 0
 */
typedef struct tarva_abi_kernel_argument_s {
  tarva_abi_argument_kind kind;
  uint64_t first;
  uint64_t second;
} tarva_abi_kernel_argument_s;

/*
 * The range of a launch: its number of dimensions (work_dim, 1 to 3), and for each dimension an offset, a
 * global size and a local size, all in work-items. Read during the call, and no further than the type needs.
 *
 * Below, w1 to w10 are words[0] to words[9]. Three words together are the values of the dimensions x, y and
 * z, of which the first work_dim count. D is the work-group size that the kernel prefers for work_dim: the
 * one fixed in its source if there is one, else about as large as the kernel can have it, and equally long in
 * each dimension. U is the number of compute units of the kernel's device.
 *
 *     type                                   work_dim  offset  global size                  local size
 *     TARVA_ABI_LAUNCH_EXPLICIT              w1        w2-w4   w5-w7                        w8-w10
 *     TARVA_ABI_LAUNCH_GLOBAL_SIZE           w1        0       the larger of w2-w4 and D    D
 *     TARVA_ABI_LAUNCH_GROUPS                1         0       w1 * D.x                     D.x
 *     TARVA_ABI_LAUNCH_GROUPS_SIZED          w1        0       w2 * w3-w5                   w3-w5
 *     TARVA_ABI_LAUNCH_GROUPS_PER_UNIT       1         0       w1 * D.x * U                 D.x
 *     TARVA_ABI_LAUNCH_GROUP_PER_UNIT_SIZED  w1        0       U * w3-w5 (w2 is not read)   w3-w5
 *
 * All is meant dimension by dimension. For TARVA_ABI_LAUNCH_GLOBAL_SIZE a kernel so gets no fewer work-items
 * than D has; and a wanted size above D that D does not divide is refused, not rounded up, where a local size has
 * to divide the global size (see tarva_abi_kernel_call). Elsewhere the last group is then smaller, if the program
 * is OpenCL C 2.0 or later.
 *
 * For TARVA_ABI_LAUNCH_EXPLICIT, a local size of 0 in all dimensions stands for the size that is fixed in the
 * kernel's source, or lets the device choose if none is.
 */
typedef struct tarva_abi_launch_range_s {
  tarva_abi_launch_type type;
  uint64_t words[10];
} tarva_abi_launch_range_s;

/*
 * How a property tree is written. Read during the call. TARVA_ABI_TREE_TEXT reads all flags and leaves out
 * what is not asked for; with no flag but recursive the text is empty. TARVA_ABI_TREE_XML reads recursive
 * only and writes everything.
 */
typedef struct tarva_abi_tree_format_s {
  tarva_abi_tree_kind kind;
  uint64_t recursive;          /* the property's descendants too */
  uint64_t show_name;          /* the name */
  uint64_t show_friendly_name; /* the short text */
  uint64_t show_type;          /* the name of the value's type */
  uint64_t show_description;   /* the longer text */
  uint64_t show_value;         /* the value */
} tarva_abi_tree_format_s;

/* ----------------------------------------------------------------------------------------------------------
 * Version
 */

/* The version of this interface, 0. Cannot fail and does not start the library. */
TARVA_ABI_EXPORT uint64_t tarva_abi_get_abi_version(void);

/* The version of the library, 0. Cannot fail and does not start the library. */
TARVA_ABI_EXPORT uint64_t tarva_abi_get_library_version(void);

/* ----------------------------------------------------------------------------------------------------------
 * Devices and programs
 */

/*
 * The devices of the machine: all of OpenCL 1.0 first, then 1.1, 1.2, 2.0, 2.1 and 2.2. The list is the same
 * for the whole run; the handles are new ones each time.
 *
 * out_devices  receives the array: to be given to tarva_abi_free_device_array, and every handle in it to
 *              tarva_abi_release_device
 *
 * Errors: no others than the common ones. Without a device the array is empty.
 */
TARVA_ABI_EXPORT tarva_abi_result tarva_abi_get_devices(void* reserved,
                                                        tarva_abi_device_array_s** out_devices,
                                                        tarva_abi_error_s** out_error);

/*
 * The root of the device's property tree. Values are read from the device when a property is asked for; one
 * that the device does not answer fails alone.
 *
 * device        the device
 * out_property  receives the property: to be given to tarva_abi_free_property. It keeps the device alive.
 *
 * Errors: no others than the common ones.
 */
TARVA_ABI_EXPORT tarva_abi_result tarva_abi_get_device_root_property(void* reserved,
                                                                     tarva_abi_device_s* device,
                                                                     tarva_abi_property_s** out_property,
                                                                     tarva_abi_error_s** out_error);

/*
 * The program of the kernels that are built into the device. Every device has one; it may hold no kernel.
 *
 * device       the device
 * out_program  receives the program: to be given to tarva_abi_release_program
 *
 * Errors: no others than the common ones.
 */
TARVA_ABI_EXPORT tarva_abi_result tarva_abi_get_builtin_program(void* reserved, tarva_abi_device_s* device,
                                                                tarva_abi_program_s** out_program,
                                                                tarva_abi_error_s** out_error);

/*
 * Whether the device can take this kind of data as a program. Nothing is built, and what the data says is not
 * looked at.
 *
 * device         the device
 * ir_header      what accompanies the data, or NULL
 * ir_type        what the data is
 * data           data_size bytes; NULL counts as empty
 * data_size      the number of bytes; with 0, data is not read
 * options        options for the compiler, not NULL; "" for none
 * out_supported  receives 1 or 0; 0 is a success of the call
 *
 * Errors: runtime error for an unknown type of data, or of a constant. Logic error for NULL options, an
 * unknown kind of header, a missing array of constants or value in it, and for constants if the device is
 * below OpenCL 2.2 or the data is not a SPIR-V module.
 */
TARVA_ABI_EXPORT tarva_abi_result tarva_abi_check_device_ir_support(
    void* reserved, tarva_abi_device_s* device, tarva_abi_ir_header_s* ir_header, tarva_abi_ir_type ir_type,
    const void* data, uint64_t data_size, const char* options, uint64_t* out_supported,
    tarva_abi_error_s** out_error);

/*
 * Builds a program for the device. A build that fails is a success of this call: the result then holds
 * success 0, the compiler's log, and a program without kernels.
 *
 * device      the device
 * ir_header   what accompanies the data, or NULL
 * ir_type     what the data is
 * data        data_size bytes; NULL counts as empty. Source text need not end with a NUL byte, and ends at
 *             the first one.
 * data_size   the number of bytes; with 0, data is not read
 * options     options for the compiler, not NULL; "" for none
 * user_label  the name that the program shows in its properties; NULL counts as ""
 * out_result  receives the record: to be given to tarva_abi_free_build_result, and the program in it to
 *             tarva_abi_release_program
 *
 * Errors: those of tarva_abi_check_device_ir_support; logic error for data of a kind that the device cannot
 * take, and for a constant's id of more than 32 bits; whatever OpenCL reports, as for data that is no binary
 * of the device or options that it does not know.
 */
TARVA_ABI_EXPORT tarva_abi_result tarva_abi_load_device_ir(
    void* reserved, tarva_abi_device_s* device, tarva_abi_ir_header_s* ir_header, tarva_abi_ir_type ir_type,
    const void* data, uint64_t data_size, const char* options, const char* user_label,
    tarva_abi_build_result_s** out_result, tarva_abi_error_s** out_error);

/*
 * The root of the program's property tree: its label, its kernels, its source and its binary.
 *
 * program       the program
 * out_property  receives the property: to be given to tarva_abi_free_property. It keeps the program alive.
 *
 * Errors: no others than the common ones.
 */
TARVA_ABI_EXPORT tarva_abi_result tarva_abi_get_program_root_property(void* reserved,
                                                                      tarva_abi_program_s* program,
                                                                      tarva_abi_property_s** out_property,
                                                                      tarva_abi_error_s** out_error);

/* ----------------------------------------------------------------------------------------------------------
 * Kernels
 */

/*
 * A kernel of the program. Each call makes a new kernel. The first for a name also learns what the kernel's
 * parameters take, as far as the device tells, so that a launch with arguments that do not fit can be refused.
 *
 * program      the program
 * kernel_name  the name of the kernel in the program; not NULL
 * out_kernel   receives the kernel: to be given to tarva_abi_release_kernel. It keeps the program alive.
 *
 * Errors: logic error if the program has no kernels at all; what OpenCL reports for a name that it has not.
 */
TARVA_ABI_EXPORT tarva_abi_result tarva_abi_get_kernel(void* reserved, tarva_abi_program_s* program,
                                                       const char* kernel_name,
                                                       tarva_abi_kernel_s** out_kernel,
                                                       tarva_abi_error_s** out_error);

/*
 * The root of the kernel's property tree.
 *
 * kernel        the kernel
 * out_property  receives the property: to be given to tarva_abi_free_property. It keeps the kernel alive.
 *
 * Errors: no others than the common ones.
 */
TARVA_ABI_EXPORT tarva_abi_result tarva_abi_get_kernel_root_property(void* reserved,
                                                                     tarva_abi_kernel_s* kernel,
                                                                     tarva_abi_property_s** out_property,
                                                                     tarva_abi_error_s** out_error);

/*
 * Launches the kernel on its device, and returns when the launch has ended. Memory objects among the
 * arguments are moved to the device first, each as a whole, and stay there. An object without content, see
 * tarva_abi_memory_allocate_typed, is made there, and nothing is transferred; where the kernel does not write
 * it holds what the device's OpenCL implementation puts into fresh storage. The launch has no future: a
 * failure of its work shows in the log only.
 *
 * kernel          the kernel
 * arguments       argument_count records, in the order of the kernel's parameters; NULL only for none. A
 *                 value has to have the parameter's bytes; of its type the device knows no more
 * argument_count  the number of arguments; has to be that of the kernel's parameters
 * launch_range    the range of the launch; not NULL
 *
 * Errors: invalid argument for an unknown launch type, missing arguments, or a global size that does not fit
 * into 64 bits; runtime error for an argument of unknown kind or type, and if the kernel is to choose a group
 * size for more than 3 dimensions or for none; logic error for a value that is NULL.
 *
 * What the device could not run is refused with a logic error before anything is moved:
 *
 *   - a wrong number of arguments, or of dimensions
 *   - an argument that its parameter does not take: a value of another size, and a value, a memory object or
 *     local memory where another of the three belongs; TARVA_ABI_ARGUMENT_NULL fits where a memory object
 *     does. No argument fits an image, a sampler, a device queue, or a value of a size that no
 *     tarva_abi_data_type has, such as most structures
 *   - memory, or local memory, of no elements
 *   - a memory object larger than the device can allocate, unless it is there already
 *   - more bytes of local memory than the device has beside what the kernel itself declares
 *   - an offset on a device of OpenCL 1.0
 *   - a global size of 0 in a dimension, below OpenCL 2.1
 *   - global ids that the device cannot count: offset and size together beyond its address bits
 *   - a local size of 0 in some dimensions only, or of other numbers, in the dimensions of the launch, than
 *     the kernel's source fixes
 *   - a group of more work-items, in all or in a dimension, than the kernel or the device can have
 *   - a local size that does not divide the global size, on a device that reports OpenCL 1.x, is used below 2.0,
 *     or reports 3.0 and no work-groups of unequal sizes
 *
 * A message about an argument names the kernel, the argument's index, what is wanted and what was given. What
 * the device does not tell of a limit or of a parameter is not checked: that it fits is the caller's to see
 * to, and RESULTS AND ERRORS tells what happens if it does not.
 */
TARVA_ABI_EXPORT tarva_abi_result tarva_abi_kernel_call(void* reserved, tarva_abi_kernel_s* kernel,
                                                        const tarva_abi_kernel_argument_s* arguments,
                                                        uint64_t argument_count,
                                                        const tarva_abi_launch_range_s* launch_range,
                                                        tarva_abi_error_s** out_error);

/* ----------------------------------------------------------------------------------------------------------
 * Memory
 */

/*
 * Allocates a memory object. It has no content until it is filled, written or copied to, or a kernel is
 * launched with it; one element, also of such an operation that fails, makes all of it content, of which the
 * elements that nobody has given are undefined. To read an object without content, or to copy out of it,
 * succeeds and leaves the destination as it is.
 *
 * user_label  the name that the object shows in its properties; NULL counts as ""
 * type        the type of its elements
 * count       the number of its elements; may be 0, but a kernel cannot take such an object
 * out_memory  receives the object: to be given to tarva_abi_release_memory
 *
 * Errors: runtime error for an unknown type; logic error if the machine has no device, and for a size of more
 * than 2^63 - 1 bytes. If the memory itself is not to be had, the call succeeds with one line in the log, and
 * nothing can be done with the object but release it.
 */
TARVA_ABI_EXPORT tarva_abi_result tarva_abi_memory_allocate_typed(void* reserved, const char* user_label,
                                                                  tarva_abi_data_type type, uint64_t count,
                                                                  tarva_abi_memory_s** out_memory,
                                                                  tarva_abi_error_s** out_error);

/*
 * The root of the memory object's property tree.
 *
 * memory        the memory object
 * out_property  receives the property: to be given to tarva_abi_free_property. It keeps the object's
 *               description alive, but not its content.
 *
 * Errors: no others than the common ones.
 */
TARVA_ABI_EXPORT tarva_abi_result tarva_abi_get_memory_root_property(void* reserved,
                                                                     tarva_abi_memory_s* memory,
                                                                     tarva_abi_property_s** out_property,
                                                                     tarva_abi_error_s** out_error);

/*
 * Fills a range of a memory object with one value, where the object is. The operation has no future: a
 * failure of its work shows in the log only.
 *
 * memory          the memory object
 * value           one element of the object's type, copied during the call; not NULL
 * start_position  the first element to fill
 * count           the number of elements; 0 does nothing
 *
 * Errors: logic error for a range that does not lie within the object; nothing is changed.
 */
TARVA_ABI_EXPORT tarva_abi_result tarva_abi_fill_memory(void* reserved, tarva_abi_memory_s* memory,
                                                        const void* value, uint64_t start_position,
                                                        uint64_t count, tarva_abi_error_s** out_error);

/*
 * Copies a range from one memory object to another of the same type, or within one. Both stay where they are,
 * which may be on different devices. The operation has no future: a failure of its work shows in the log
 * only.
 *
 * src                  the memory object to copy from
 * src_start_position   the first element to copy
 * dest                 the memory object to copy to
 * dest_start_position  the first element to write
 * count                the number of elements; 0 does nothing
 *
 * Errors: logic error for objects of different types, a range that does not lie within its object, and ranges
 * of one object that overlap; nothing is changed.
 */
TARVA_ABI_EXPORT tarva_abi_result tarva_abi_copy_memory(void* reserved, tarva_abi_memory_s* src,
                                                        uint64_t src_start_position, tarva_abi_memory_s* dest,
                                                        uint64_t dest_start_position, uint64_t count,
                                                        tarva_abi_error_s** out_error);

/*
 * Reads a range of a memory object into the caller's storage.
 *
 * memory              the memory object
 * src_start_position  the first element to read
 * count               the number of elements; 0 does nothing
 * dest                room for count elements; not NULL, also if count is 0. It belongs to the operation
 *                     until the future has been waited for.
 * out_future          receives the future: to be given to tarva_abi_wait_future or tarva_abi_abandon_future
 *
 * Errors: a range that does not lie within the object (a logic error), and every failure of the work, is
 * delivered by the future.
 */
TARVA_ABI_EXPORT tarva_abi_result tarva_abi_async_read_memory(void* reserved, tarva_abi_memory_s* memory,
                                                              uint64_t src_start_position, uint64_t count,
                                                              void* dest, tarva_abi_future_s** out_future,
                                                              tarva_abi_error_s** out_error);

/*
 * Writes the caller's storage into a range of a memory object.
 *
 * memory               the memory object
 * dest_start_position  the first element to write
 * count                the number of elements; 0 does nothing
 * src                  count elements; not NULL, also if count is 0. They must not change until the future
 *                      has been waited for.
 * out_future           receives the future: to be given to tarva_abi_wait_future or tarva_abi_abandon_future
 *
 * Errors: a range that does not lie within the object (a logic error), and every failure of the work, is
 * delivered by the future.
 */
TARVA_ABI_EXPORT tarva_abi_result tarva_abi_async_write_memory(void* reserved, tarva_abi_memory_s* memory,
                                                               uint64_t dest_start_position, uint64_t count,
                                                               const void* src,
                                                               tarva_abi_future_s** out_future,
                                                               tarva_abi_error_s** out_error);

/* ----------------------------------------------------------------------------------------------------------
 * Futures
 */

/*
 * Waits until the future's operation has ended, tells how, and ends the future, whatever the outcome. The
 * result speaks of the waiting only: it is TARVA_ABI_OK also for an operation that failed.
 *
 * future             the future; its handle is gone when the call succeeds
 * future_error_code  receives how the operation ended, a tarva_abi_result; not NULL
 * future_error       receives the operation's error object, or NULL if it has none: to be given to
 *                    tarva_abi_free_error. May be NULL if the code is enough.
 *
 * Errors: no others than the common ones. With a NULL future_error_code the future stays as it was.
 */
TARVA_ABI_EXPORT tarva_abi_result tarva_abi_wait_future(void* reserved, tarva_abi_future_s* future,
                                                        long* future_error_code,
                                                        tarva_abi_error_s** future_error,
                                                        tarva_abi_error_s** out_error);

/* Ends the future without waiting. The operation is not touched, and how it ended is lost. */
TARVA_ABI_EXPORT void tarva_abi_abandon_future(void* reserved, tarva_abi_future_s* future);

/* ----------------------------------------------------------------------------------------------------------
 * Errors
 */

/*
 * The root of the error's property tree: EXCEPTION_TYPE (a number) and EXCEPTION_MESSAGE (a text).
 *
 * error         the error
 * out_property  receives the property: to be given to tarva_abi_free_property. It keeps the error object
 *               alive.
 *
 * Errors: no others than the common ones.
 */
TARVA_ABI_EXPORT tarva_abi_result tarva_abi_get_error_root_property(void* reserved, tarva_abi_error_s* error,
                                                                    tarva_abi_property_s** out_property,
                                                                    tarva_abi_error_s** out_error);

/*
 * The error behind an error: what it came from.
 *
 * error         the error; its handle stays
 * nested_error  receives a new handle, to be given to tarva_abi_free_error, or NULL if there is none
 *
 * Errors: no others than the common ones.
 */
TARVA_ABI_EXPORT tarva_abi_result tarva_abi_get_nested_error(void* reserved, tarva_abi_error_s* error,
                                                             tarva_abi_error_s** nested_error,
                                                             tarva_abi_error_s** out_error);

/* ----------------------------------------------------------------------------------------------------------
 * Properties
 */

/*
 * One child of a property.
 *
 * parent        the property to search; not NULL
 * name          the child's name, as in PROPERTIES; not NULL
 * out_property  receives the child: to be given to tarva_abi_free_property. A name that does not exist gives
 *               a property with empty strings and no value.
 *
 * Errors: invalid argument for a NULL parent; logic error for a parent of an unknown name; whatever OpenCL
 * reports when the value cannot be read.
 */
TARVA_ABI_EXPORT tarva_abi_result tarva_abi_get_child_property_by_name(void* reserved,
                                                                       tarva_abi_property_s* parent,
                                                                       const char* name,
                                                                       tarva_abi_property_s** out_property,
                                                                       tarva_abi_error_s** out_error);

/*
 * All children of a property, in a fixed order.
 *
 * parent          the property; not NULL
 * out_properties  receives the array: to be given to tarva_abi_free_property_array, and every handle in it to
 *                 tarva_abi_free_property. A property without children gives an empty array.
 *
 * Errors: a NULL parent or out_properties is a runtime error here; logic error for a parent of an unknown
 * name. One child that cannot be read fails the call with what OpenCL reports.
 */
TARVA_ABI_EXPORT tarva_abi_result tarva_abi_get_all_children_properties(
    void* reserved, tarva_abi_property_s* parent, tarva_abi_property_array_s** out_properties,
    tarva_abi_error_s** out_error);

/*
 * A property, or a property and its descendants, as one string.
 *
 * property    the property; not NULL
 * format      the form and what to show; not NULL
 * out_string  receives the string: to be given to tarva_abi_free_property_tree_string
 *
 * Errors: invalid argument for a NULL property or an unknown form. One descendant that cannot be read fails
 * the call with what OpenCL reports.
 */
TARVA_ABI_EXPORT tarva_abi_result tarva_abi_get_property_tree_string(void* reserved,
                                                                     tarva_abi_property_s* property,
                                                                     const tarva_abi_tree_format_s* format,
                                                                     char** out_string,
                                                                     tarva_abi_error_s** out_error);

/* ----------------------------------------------------------------------------------------------------------
 * Retain and release
 */

/* One reference more. */
TARVA_ABI_EXPORT void tarva_abi_retain_device(void* reserved, tarva_abi_device_s* device);
TARVA_ABI_EXPORT void tarva_abi_retain_program(void* reserved, tarva_abi_program_s* program);
TARVA_ABI_EXPORT void tarva_abi_retain_kernel(void* reserved, tarva_abi_kernel_s* kernel);
TARVA_ABI_EXPORT void tarva_abi_retain_memory(void* reserved, tarva_abi_memory_s* memory);

/* One reference less; the last one ends the handle. The device itself stays. */
TARVA_ABI_EXPORT void tarva_abi_release_device(void* reserved, tarva_abi_device_s* device);
TARVA_ABI_EXPORT void tarva_abi_release_program(void* reserved, tarva_abi_program_s* program);
TARVA_ABI_EXPORT void tarva_abi_release_kernel(void* reserved, tarva_abi_kernel_s* kernel);

/* One reference less; the last one ends the handle and frees the content, behind all operations before it. */
TARVA_ABI_EXPORT void tarva_abi_release_memory(void* reserved, tarva_abi_memory_s* memory);

/* ----------------------------------------------------------------------------------------------------------
 * Free
 */

/* End a handle. NULL is ignored. Strings and data of a property go with it. */
TARVA_ABI_EXPORT void tarva_abi_free_error(void* reserved, tarva_abi_error_s* error);
TARVA_ABI_EXPORT void tarva_abi_free_property(void* reserved, tarva_abi_property_s* property);

/*
 * Free a record and what is part of it, but not the handles in it, which stay alive; or a string. NULL is
 * ignored. What is given here must have come from the library and not have been freed, and is not tested.
 */
TARVA_ABI_EXPORT void tarva_abi_free_device_array(void* reserved, tarva_abi_device_array_s* array);
TARVA_ABI_EXPORT void tarva_abi_free_property_array(void* reserved, tarva_abi_property_array_s* array);
TARVA_ABI_EXPORT void tarva_abi_free_build_result(void* reserved, tarva_abi_build_result_s* result);
TARVA_ABI_EXPORT void tarva_abi_free_property_tree_string(void* reserved, char* string);

#ifdef __cplusplus
}
#endif

#endif /* TARVA_ABI_H */

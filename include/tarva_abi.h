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
 * Everything below holds for all functions and records unless one says otherwise.
 *
 * RESULTS AND ERRORS
 *
 * A function that can fail returns a tarva_abi_result and takes as its last argument out_error, which must
 * point to writable memory.
 *
 *     TARVA_ABI_OK                success; *out_error is not written
 *     TARVA_ABI_UNKNOWN_FAILURE   *out_error is set to NULL
 *     TARVA_ABI_OUT_OF_MEMORY     *out_error is set to NULL
 *     TARVA_ABI_LOGIC_FAILURE     *out_error is a new error object: the request makes no sense
 *     TARVA_ABI_RUNTIME_FAILURE   *out_error is a new error object: the request could not be carried out
 *
 * A function that fails writes none of its other out-arguments and changes nothing, so far as its own text
 * does not say otherwise. The error object tells what happened: its properties EXCEPTION_MESSAGE (a text for
 * people) and EXCEPTION_TYPE (a number: 1 logic error, 2 invalid argument, 3 length error, 4 out of range, 5
 * runtime error, 6 not a standard error, 7 any other standard error, which includes all failures that OpenCL
 * reports). "invalid argument" below means TARVA_ABI_LOGIC_FAILURE with type 2, "logic error"
 * TARVA_ABI_LOGIC_FAILURE with type 1, and "runtime error" TARVA_ABI_RUNTIME_FAILURE with type 5. A failure
 * that OpenCL reports is TARVA_ABI_RUNTIME_FAILURE with type 7.
 *
 * A function that returns nothing ignores a request that it cannot fulfil and leaves one line in the log.
 *
 * A handle that the library does not know, or of another kind than is asked for, or that has already been
 * given up, is refused with a runtime error ("Lookup of internal type map failed."); it is never followed. An
 * out-argument or a data pointer that must not be NULL is refused with an invalid argument; other pointers
 * must be valid.
 *
 * OWNERSHIP
 *
 * Handles are opaque pointers. A handle that a function returns belongs to the caller, who gives it up with
 * the function of its kind, and never with free():
 *
 *     device, program, kernel, memory   counted: a new handle has a count of 1, tarva_abi_retain_... adds 1,
 *                                       tarva_abi_release_... takes 1, and the last release ends the handle
 *     future                            exactly one tarva_abi_wait_future or tarva_abi_abandon_future
 *     error, property                   one tarva_abi_free_error, tarva_abi_free_property
 *     arrays, build results, strings    one tarva_abi_free_... of the kind
 *
 * A handle in an array or in a build result is the caller's too: giving up the container leaves it alive. A
 * function that returns a handle returns a new one each time, also for an object that has one already.
 * Handles may be given up in any order: a kernel keeps its program alive, a program its device, and a
 * property the object that it describes.
 *
 * The library keeps no pointer that the caller passes in. Values, labels, options, data and argument records
 * are copied during the call. The one exception: the storage that a read or a write works on, see below.
 *
 * THREADS
 *
 * Any function may be called from any thread at any time; the library synchronises. Handles may be passed
 * between threads. A handle must not be given up by one thread while another thread without a reference of
 * its own is still using it: nothing is followed that is gone, but the other call fails. Operations on memory
 * (allocate, fill, copy, read, write, launch, free) run one at a time, in the order in which the calls are
 * accepted, and a call returns when its operation has ended.
 *
 * UNITS
 *
 * Positions, counts and sizes of memory objects are numbers of elements of the object's type. Only data_size
 * counts bytes. Elements are in the byte order of the host. Sizes of launches are numbers of work-items
 * unless said to be of groups.
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
 * moment are waited for; yet a process should not exit while another thread is loading a program or launching
 * a kernel for the first time, since many OpenCL compilers do not survive that. A process that has forked
 * after the start must not call the library in the child.
 *
 * LOG
 *
 * The library is silent unless the environment asks for lines. TARVA_LOG_LEVEL and SKERV_LOG_LEVEL take
 * trace, debug, info, warn, error, critical or off; TARVA_LOG_TARGET and SKERV_LOG_TARGET take console
 * (standard error), file (tarva.log or skerv.log in the working directory, appended to) or none. The first
 * pair is for the library, the second for its OpenCL layer. Handles that were never given up are reported at
 * warning level when the library stops.
 *
 * "reserved", the first argument of most functions, is never read; pass NULL.
 */
#ifndef TARVA_ABI_H
#define TARVA_ABI_H

#include <stdint.h>

#if defined(__GNUC__)
#define TARVA_ABI_EXPORT __attribute__((visibility("default")))
#else
#define TARVA_ABI_EXPORT
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ------------------------------------------------------------------------------------------------
 * Enumerations */

/* How a call, or the operation behind a future, ended. */
typedef int64_t tarva_abi_result;
enum tarva_abi_result_value {
  TARVA_ABI_OK = 0,
  TARVA_ABI_UNKNOWN_FAILURE = -1, /* no more is known; also every call after the library has stopped */
  TARVA_ABI_OUT_OF_MEMORY = -2,   /* the host is out of memory */
  TARVA_ABI_LOGIC_FAILURE = -3,   /* the request makes no sense; see the error object */
  TARVA_ABI_RUNTIME_FAILURE = -4  /* any other failure; see the error object */
};

/* What a handle stands for. */
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
 * The type of the elements of a memory object, of a kernel argument or of a property's value. An element of n
 * components takes n times the bytes of its component, except that three components take the room of four, as
 * in OpenCL. Elements stand directly behind one another.
 */
typedef uint64_t tarva_abi_data_type;
enum tarva_abi_data_type_value {
  TARVA_ABI_TYPE_NONE = 0,    /* no type; refused wherever a type is asked for */
  TARVA_ABI_TYPE_STRING = 1,  /* text; 1 byte an element */
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

/* What the data given to tarva_abi_load_device_ir is, and the oldest OpenCL version whose devices can take
 * it. */
typedef uint64_t tarva_abi_ir_type;
enum tarva_abi_ir_type_value {
  TARVA_ABI_IR_SOURCE_1_0 = 1,   /* OpenCL C source text, 1.0 */
  TARVA_ABI_IR_SOURCE_1_1 = 2,   /* OpenCL C source text, 1.1 */
  TARVA_ABI_IR_SOURCE_1_2 = 3,   /* OpenCL C source text, 1.2 */
  TARVA_ABI_IR_SOURCE_2_0 = 4,   /* OpenCL C source text, 2.0 */
  TARVA_ABI_IR_SOURCE_2_1 = 5,   /* OpenCL C source text, 2.1 */
  TARVA_ABI_IR_SPIR_1_2 = 6,     /* SPIR 1.2 binary, 1.2 if the device lists SPIR version 1.2 */
  TARVA_ABI_IR_SPIR_2_0 = 7,     /* SPIR 2.0 binary, 1.2 if the device lists SPIR version 2.0 */
  TARVA_ABI_IR_SPIR_V = 8,       /* SPIR-V module, if the device reports that it takes SPIR-V */
  TARVA_ABI_IR_DEVICE_BINARY = 9 /* a binary of this very kind of device, 1.0 */
};

/* What accompanies the data of a program. */
typedef uint64_t tarva_abi_ir_header_kind;
enum tarva_abi_ir_header_kind_value {
  TARVA_ABI_IR_HEADER_EMPTY = 1, /* nothing; the same as no header at all */
  TARVA_ABI_IR_HEADER_SPECIALIZATION_CONSTANTS =
      2 /* values for the specialization constants of a SPIR-V module */
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
  TARVA_ABI_LAUNCH_EXPLICIT = 1,     /* offset, global and local size are all given */
  TARVA_ABI_LAUNCH_GLOBAL_SIZE = 2,  /* a wanted global size; the kernel chooses the local size */
  TARVA_ABI_LAUNCH_GROUPS = 3,       /* a number of groups, whose size the kernel chooses */
  TARVA_ABI_LAUNCH_GROUPS_SIZED = 4, /* a number of groups of a given size */
  TARVA_ABI_LAUNCH_GROUPS_PER_UNIT =
      5, /* a number of groups for each compute unit; the kernel chooses their size */
  TARVA_ABI_LAUNCH_GROUP_PER_UNIT_SIZED =
      6 /* as many groups of a given size as the device has compute units */
};

/* The form in which a property tree is written; see tarva_abi_tree_format_s. */
typedef uint64_t tarva_abi_tree_kind;
enum tarva_abi_tree_kind_value {
  TARVA_ABI_TREE_TEXT = 1, /* lines for people */
  TARVA_ABI_TREE_XML = 2   /* XML elements */
};

/* -----------------------------------------------------------------------------------------------------
 * Handles */

/* One device, under one OpenCL version. A device that is offered under several versions is listed once for
 * each. */
typedef struct tarva_abi_device_s tarva_abi_device_s;
/* A program of one device. */
typedef struct tarva_abi_program_s tarva_abi_program_s;
/* One function of a program that can be launched. */
typedef struct tarva_abi_kernel_s tarva_abi_kernel_s;
/* A block of elements of one type, which belongs to no device. */
typedef struct tarva_abi_memory_s tarva_abi_memory_s;
/* The caller's hold on one read or write. */
typedef struct tarva_abi_future_s tarva_abi_future_s;
/* A failure. */
typedef struct tarva_abi_error_s tarva_abi_error_s;

/* -----------------------------------------------------------------------------------------------------
 * Records */

/*
 * A property: a named value in the tree that describes a device, program, kernel, memory object or error. The
 * handle is this record, and the caller may read every field until it gives the handle to
 * tarva_abi_free_property. Strings and data belong to the library.
 *
 * A property of an unknown name has empty strings and no value.
 */
typedef struct tarva_abi_property_s {
  tarva_abi_object_kind kind;    /* TARVA_ABI_OBJECT_PROPERTY */
  const char* name;              /* the name that distinguishes it from its siblings */
  const char* friendly_name;     /* a short text for people */
  const char* description;       /* a longer text for people */
  uint64_t has_data;             /* 1 if the property has a value, else 0 */
  tarva_abi_data_type data_type; /* the type of the value's elements; all bits set if has_data is 0 */
  uint64_t element_count;        /* the number of elements; 0 if has_data is 0 */
  const void* data;              /* the first element, or NULL if there is none. By data_type:
                                    TARVA_ABI_TYPE_STRING  const char*[], TARVA_ABI_TYPE_BOOLEAN  uint32_t[],
                                    TARVA_ABI_TYPE_UINT8   uint8_t[],     TARVA_ABI_TYPE_UINT64   uint64_t[] */
} tarva_abi_property_s;

/* A list of devices. The handles in it are the caller's, one release each; the array itself goes with its
 * free. */
typedef struct tarva_abi_device_array_s {
  uint64_t count;
  tarva_abi_device_s** devices; /* count handles; NULL if count is 0 */
} tarva_abi_device_array_s;

/* A list of properties. The handles in it are the caller's, one free each; the array itself goes with its
 * free. */
typedef struct tarva_abi_property_array_s {
  uint64_t count;
  tarva_abi_property_s**
      properties; /* count handles; NULL if count is 0. An entry may be NULL if memory ran out. */
} tarva_abi_property_array_s;

/* What became of a program. */
typedef struct tarva_abi_build_result_s {
  tarva_abi_program_s*
      program; /* the program, without a kernel if the build failed; the caller's to release either way */
  const char* build_log; /* what the compiler said, or NULL if it said nothing; goes with the record's free */
  uint64_t success;      /* 1 if the program was built, else 0 */
} tarva_abi_build_result_s;

/* A value for one specialization constant of a SPIR-V module. Read during the call. */
typedef struct tarva_abi_specialization_constant_s {
  uint64_t id;                   /* the SPIR-V id of the constant */
  tarva_abi_data_type data_type; /* the type of the value */
  const void* value;             /* one element of that type; not NULL */
} tarva_abi_specialization_constant_s;

/* What accompanies the data of a program. Read during the call. */
typedef struct tarva_abi_ir_header_s {
  tarva_abi_ir_header_kind kind;
  const tarva_abi_specialization_constant_s*
      constants;  /* read for TARVA_ABI_IR_HEADER_SPECIALIZATION_CONSTANTS only */
  uint64_t count; /* the number of constants; read for that kind only */
} tarva_abi_ir_header_s;

/*
 * One argument of a launch. Read during the call. A pointer is put into a word by a cast through uintptr_t.
 *
 *     kind                              first                    second
 *     TARVA_ABI_ARGUMENT_NULL           not read                 not read
 *     TARVA_ABI_ARGUMENT_VALUE          a tarva_abi_data_type    a pointer to one element of that type, not
 * NULL TARVA_ABI_ARGUMENT_MEMORY         a tarva_abi_memory_s*    not read TARVA_ABI_ARGUMENT_LOCAL_MEMORY a
 * tarva_abi_data_type    the number of elements
 */
typedef struct tarva_abi_kernel_argument_s {
  tarva_abi_argument_kind kind;
  uint64_t first;
  uint64_t second;
} tarva_abi_kernel_argument_s;

/*
 * The range of a launch: its number of dimensions (work_dim, 1 to 3), and for each dimension an offset, a
 * global and a local size. Read during the call, and no further than the type needs. Below, w1 to w10 are
 * words[0] to words[9]; three words together are the values of the dimensions x, y and z, of which the first
 * work_dim count. D is the work-group size that the kernel prefers for the number of dimensions, and U the
 * number of the device's compute units. Offsets that are not given are 0.
 *
 *     type                                    work_dim  offset  global size                 local size
 *     TARVA_ABI_LAUNCH_EXPLICIT               w1        w2-w4   w5-w7                       w8-w10
 *     TARVA_ABI_LAUNCH_GLOBAL_SIZE            w1                max(w2-w4, D), each by each D
 *     TARVA_ABI_LAUNCH_GROUPS                 1                 w1 * D.x                    D.x
 *     TARVA_ABI_LAUNCH_GROUPS_SIZED           w1                w2 * each of w3-w5          w3-w5
 *     TARVA_ABI_LAUNCH_GROUPS_PER_UNIT        1                 w1 * D.x * U                D.x
 *     TARVA_ABI_LAUNCH_GROUP_PER_UNIT_SIZED   w1                U * each of w3-w5           w3-w5
 *
 * A local size of zeros throughout lets the device choose.
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

/* -----------------------------------------------------------------------------------------------------
 * Version */

/* The version of this interface, 0. Cannot fail and does not start the library. */
TARVA_ABI_EXPORT uint64_t tarva_abi_get_abi_version(void);

/* The version of the library, 0. Cannot fail and does not start the library. */
TARVA_ABI_EXPORT uint64_t tarva_abi_get_library_version(void);

/* --------------------------------------------------------------------------------------- Devices and
 * programs */

/*
 * The devices of the machine: all of OpenCL 1.0 first, then 1.1, 1.2, 2.0, 2.1 and 2.2. The list is the same
 * for the whole run.
 *
 * out_devices  receives the array: to be given to tarva_abi_free_device_array, and every handle in it to
 *              tarva_abi_release_device.
 */
TARVA_ABI_EXPORT tarva_abi_result tarva_abi_get_devices(void* reserved,
                                                        tarva_abi_device_array_s** out_devices,
                                                        tarva_abi_error_s** out_error);

/*
 * The root of the device's property tree. Values are read from the device when a property is asked for; one
 * that the device does not answer fails alone.
 *
 * out_property  receives the property: to be given to tarva_abi_free_property. It keeps the device alive.
 */
TARVA_ABI_EXPORT tarva_abi_result tarva_abi_get_device_root_property(void* reserved,
                                                                     tarva_abi_device_s* device,
                                                                     tarva_abi_property_s** out_property,
                                                                     tarva_abi_error_s** out_error);

/*
 * The program of the kernels that are built into the device. Every device has one; it may hold no kernel.
 *
 * out_program  receives the program: to be given to tarva_abi_release_program. Must not be NULL, which is not
 * tested.
 */
TARVA_ABI_EXPORT tarva_abi_result tarva_abi_get_builtin_program(void* reserved, tarva_abi_device_s* device,
                                                                tarva_abi_program_s** out_program,
                                                                tarva_abi_error_s** out_error);

/*
 * Whether the device can take this data as a program, as far as that can be told without building it.
 *
 * ir_header      what accompanies the data, or NULL
 * data           data_size bytes; may be NULL
 * options        options for the compiler, not NULL; "" for none
 * out_supported  receives 1 or 0; 0 is a success of the call
 *
 * Errors: logic error for a NULL options, an unknown kind of header or a NULL value in it; runtime error for
 * an unknown type of data.
 */
TARVA_ABI_EXPORT tarva_abi_result tarva_abi_check_device_ir_support(
    void* reserved, tarva_abi_device_s* device, tarva_abi_ir_header_s* ir_header, tarva_abi_ir_type ir_type,
    const void* data, uint64_t data_size, const char* options, uint64_t* out_supported,
    tarva_abi_error_s** out_error);

/*
 * Builds a program for the device. A build that fails is a success of this call: the result then holds
 * success 0, the compiler's log, and a program without kernels.
 *
 * ir_header   what accompanies the data, or NULL
 * data        data_size bytes; source text need not end with a NUL byte
 * options     options for the compiler, not NULL; "" for none
 * user_label  the name that the program shows in its properties; may be NULL
 * out_result  receives the record: to be given to tarva_abi_free_build_result, and the program in it to
 *             tarva_abi_release_program.
 *
 * Errors: those of tarva_abi_check_device_ir_support, and what the device says to data of a kind that it
 * cannot take.
 */
TARVA_ABI_EXPORT tarva_abi_result tarva_abi_load_device_ir(
    void* reserved, tarva_abi_device_s* device, tarva_abi_ir_header_s* ir_header, tarva_abi_ir_type ir_type,
    const void* data, uint64_t data_size, const char* options, const char* user_label,
    tarva_abi_build_result_s** out_result, tarva_abi_error_s** out_error);

/*
 * The root of the program's property tree: its kernels, its source, its binary where it has them.
 *
 * out_property  receives the property: to be given to tarva_abi_free_property. It keeps the program alive.
 */
TARVA_ABI_EXPORT tarva_abi_result tarva_abi_get_program_root_property(void* reserved,
                                                                      tarva_abi_program_s* program,
                                                                      tarva_abi_property_s** out_property,
                                                                      tarva_abi_error_s** out_error);

/* -----------------------------------------------------------------------------------------------------
 * Kernels */

/*
 * A kernel of the program. Each call makes a new kernel.
 *
 * kernel_name  the name of the kernel in the program; not NULL
 * out_kernel   receives the kernel: to be given to tarva_abi_release_kernel. It keeps the program alive.
 *
 * Errors: a name that the program does not have fails with what the program says to it.
 */
TARVA_ABI_EXPORT tarva_abi_result tarva_abi_get_kernel(void* reserved, tarva_abi_program_s* program,
                                                       const char* kernel_name,
                                                       tarva_abi_kernel_s** out_kernel,
                                                       tarva_abi_error_s** out_error);

/*
 * The root of the kernel's property tree.
 *
 * out_property  receives the property: to be given to tarva_abi_free_property. It keeps the kernel alive.
 */
TARVA_ABI_EXPORT tarva_abi_result tarva_abi_get_kernel_root_property(void* reserved,
                                                                     tarva_abi_kernel_s* kernel,
                                                                     tarva_abi_property_s** out_property,
                                                                     tarva_abi_error_s** out_error);

/*
 * Launches the kernel on its device, and returns when the launch has ended. Memory objects among the
 * arguments are moved to the device first. A failure of the work itself on the device is not told here, as
 * the launch has no future: the log has a line at error level.
 *
 * arguments       argument_count records, in the order of the kernel's parameters; NULL only if there are
 * none argument_count  the number of arguments; has to be that of the kernel's parameters launch_range    the
 * range of the launch; not NULL
 *
 * Errors: invalid argument for an unknown launch type or a missing record; runtime error for an argument of
 * unknown kind or type; logic error for a value that is NULL. A launch that the device could not run is
 * refused before anything is moved: a wrong number of arguments or of dimensions, memory that has been freed
 * or has no elements, local memory that does not fit, an offset on a device of OpenCL 1.0, a group that is
 * too large, of another size than the kernel demands, or that does not divide the global size (below 2.0), a
 * global size of 0 (below 2.1).
 */
TARVA_ABI_EXPORT tarva_abi_result tarva_abi_kernel_call(void* reserved, tarva_abi_kernel_s* kernel,
                                                        const tarva_abi_kernel_argument_s* arguments,
                                                        uint64_t argument_count,
                                                        const tarva_abi_launch_range_s* launch_range,
                                                        tarva_abi_error_s** out_error);

/* ------------------------------------------------------------------------------------------------------
 * Memory */

/*
 * Allocates a memory object. Its content is undefined until it is filled or written.
 *
 * user_label  the name that the object shows in its properties; may be NULL
 * type        the type of its elements
 * count       the number of its elements
 * out_memory  receives the object: to be given to tarva_abi_release_memory.
 *
 * Errors: runtime error for an unknown type. A size that cannot exist is refused.
 */
TARVA_ABI_EXPORT tarva_abi_result tarva_abi_memory_allocate_typed(void* reserved, const char* user_label,
                                                                  tarva_abi_data_type type, uint64_t count,
                                                                  tarva_abi_memory_s** out_memory,
                                                                  tarva_abi_error_s** out_error);

/*
 * The root of the memory object's property tree.
 *
 * out_property  receives the property: to be given to tarva_abi_free_property. It keeps the object's
 * description alive, but not its content.
 */
TARVA_ABI_EXPORT tarva_abi_result tarva_abi_get_memory_root_property(void* reserved,
                                                                     tarva_abi_memory_s* memory,
                                                                     tarva_abi_property_s** out_property,
                                                                     tarva_abi_error_s** out_error);

/*
 * Fills count elements, from start_position on, with one value.
 *
 * value  one element of the object's type, copied during the call; not NULL
 *
 * Errors: a range that does not lie within the object is refused and nothing is changed.
 */
TARVA_ABI_EXPORT tarva_abi_result tarva_abi_fill_memory(void* reserved, tarva_abi_memory_s* memory,
                                                        const void* value, uint64_t start_position,
                                                        uint64_t count, tarva_abi_error_s** out_error);

/*
 * Copies count elements from one memory object to another of the same type, or within one. The objects may be
 * on different devices.
 *
 * Errors: logic error for objects of different types. A range that does not lie within its object is refused
 * and nothing is changed, as are ranges of one object that overlap.
 */
TARVA_ABI_EXPORT tarva_abi_result tarva_abi_copy_memory(void* reserved, tarva_abi_memory_s* src,
                                                        uint64_t src_start_position, tarva_abi_memory_s* dest,
                                                        uint64_t dest_start_position, uint64_t count,
                                                        tarva_abi_error_s** out_error);

/*
 * Reads count elements, from src_start_position on, into the caller's storage.
 *
 * dest        room for count elements; not NULL. It belongs to the operation until the future has been waited
 * for. out_future  receives the future: to be given to tarva_abi_wait_future or tarva_abi_abandon_future.
 *
 * Errors: what is wrong with the range, and every failure of the work, is delivered by the future.
 */
TARVA_ABI_EXPORT tarva_abi_result tarva_abi_async_read_memory(void* reserved, tarva_abi_memory_s* memory,
                                                              uint64_t src_start_position, uint64_t count,
                                                              void* dest, tarva_abi_future_s** out_future,
                                                              tarva_abi_error_s** out_error);

/*
 * Writes count elements of the caller's storage into a memory object, from dest_start_position on.
 *
 * src         count elements; not NULL. They must not change until the future has been waited for.
 * out_future  receives the future: to be given to tarva_abi_wait_future or tarva_abi_abandon_future.
 *
 * Errors: what is wrong with the range, and every failure of the work, is delivered by the future.
 */
TARVA_ABI_EXPORT tarva_abi_result tarva_abi_async_write_memory(void* reserved, tarva_abi_memory_s* memory,
                                                               uint64_t dest_start_position, uint64_t count,
                                                               const void* src,
                                                               tarva_abi_future_s** out_future,
                                                               tarva_abi_error_s** out_error);

/* -----------------------------------------------------------------------------------------------------
 * Futures */

/*
 * Waits until the future's operation has ended, tells how, and ends the future, whatever the outcome. The
 * result speaks of the waiting only: it is TARVA_ABI_OK also for an operation that failed.
 *
 * future_error_code  receives how the operation ended, a tarva_abi_result; not NULL
 * future_error       receives the operation's error object, or NULL if it has none: to be given to
 * tarva_abi_free_error. May be NULL if the code is enough.
 *
 * Errors: with a NULL future_error_code the future stays as it was.
 */
TARVA_ABI_EXPORT tarva_abi_result tarva_abi_wait_future(void* reserved, tarva_abi_future_s* future,
                                                        long* future_error_code,
                                                        tarva_abi_error_s** future_error,
                                                        tarva_abi_error_s** out_error);

/* Ends the future without waiting. The operation runs on, and how it ends is lost. */
TARVA_ABI_EXPORT void tarva_abi_abandon_future(void* reserved, tarva_abi_future_s* future);

/* ------------------------------------------------------------------------------------------------------
 * Errors */

/*
 * The root of the error's property tree: EXCEPTION_TYPE (a number) and EXCEPTION_MESSAGE (a text).
 *
 * out_property  receives the property: to be given to tarva_abi_free_property. It keeps the error object
 * alive.
 */
TARVA_ABI_EXPORT tarva_abi_result tarva_abi_get_error_root_property(void* reserved, tarva_abi_error_s* error,
                                                                    tarva_abi_property_s** out_property,
                                                                    tarva_abi_error_s** out_error);

/*
 * The error behind an error: what it came from.
 *
 * nested_error  receives a new handle, to be given to tarva_abi_free_error, or NULL if there is none behind
 * it.
 */
TARVA_ABI_EXPORT tarva_abi_result tarva_abi_get_nested_error(void* reserved, tarva_abi_error_s* error,
                                                             tarva_abi_error_s** nested_error,
                                                             tarva_abi_error_s** out_error);

/* --------------------------------------------------------------------------------------------------
 * Properties */

/*
 * One child of a property.
 *
 * name          the child's name, in capitals; not NULL
 * out_property  receives the child: to be given to tarva_abi_free_property. A name that does not exist gives
 * a property with empty strings and no value.
 *
 * Errors: runtime error for an unknown parent; what the object says when its value cannot be read.
 */
TARVA_ABI_EXPORT tarva_abi_result tarva_abi_get_child_property_by_name(void* reserved,
                                                                       tarva_abi_property_s* parent,
                                                                       const char* name,
                                                                       tarva_abi_property_s** out_property,
                                                                       tarva_abi_error_s** out_error);

/*
 * All children of a property, in a fixed order.
 *
 * out_properties  receives the array: to be given to tarva_abi_free_property_array, and every handle in it to
 *                 tarva_abi_free_property.
 *
 * Errors: a NULL parent or out_properties is a runtime error here. One child that cannot be read fails the
 * call.
 */
TARVA_ABI_EXPORT tarva_abi_result tarva_abi_get_all_children_properties(
    void* reserved, tarva_abi_property_s* parent, tarva_abi_property_array_s** out_properties,
    tarva_abi_error_s** out_error);

/*
 * A property, or a property and its descendants, as one string.
 *
 * format      the form and what to show; not NULL
 * out_string  receives the string: to be given to tarva_abi_free_property_tree_string.
 *
 * Errors: invalid argument for an unknown form.
 */
TARVA_ABI_EXPORT tarva_abi_result tarva_abi_get_property_tree_string(void* reserved,
                                                                     tarva_abi_property_s* property,
                                                                     const tarva_abi_tree_format_s* format,
                                                                     char** out_string,
                                                                     tarva_abi_error_s** out_error);

/* ------------------------------------------------------------------------------------------ Retain and
 * release */

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

/* --------------------------------------------------------------------------------------------------------
 * Free */

/* End a handle. NULL is ignored. Strings and data of a property go with it. */
TARVA_ABI_EXPORT void tarva_abi_free_error(void* reserved, tarva_abi_error_s* error);
TARVA_ABI_EXPORT void tarva_abi_free_property(void* reserved, tarva_abi_property_s* property);

/*
 * Free a record and what is part of it, but not the handles in it, which stay alive. NULL is ignored. What is
 * given here must have come from the library, and is not tested.
 */
TARVA_ABI_EXPORT void tarva_abi_free_device_array(void* reserved, tarva_abi_device_array_s* array);
TARVA_ABI_EXPORT void tarva_abi_free_property_array(void* reserved, tarva_abi_property_array_s* array);
TARVA_ABI_EXPORT void tarva_abi_free_build_result(void* reserved, tarva_abi_build_result_s* result);
TARVA_ABI_EXPORT void tarva_abi_free_property_tree_string(void* reserved, char* string);

#ifdef __cplusplus
}
#endif

#endif /* TARVA_ABI_H */

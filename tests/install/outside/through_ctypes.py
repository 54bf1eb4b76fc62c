# SPDX-FileCopyrightText: 2026 TARVA developers
# SPDX-License-Identifier: MIT

"""Fills a memory object and reads it back through ctypes.   through_ctypes.py <liboryn-tarva.so.0>"""
import ctypes
import sys
from ctypes import byref, c_int64, c_long, c_uint64, c_void_p

TYPE_UINT16 = 5

library = ctypes.CDLL(sys.argv[1])
library.tarva_abi_release_memory.argtypes = [c_void_p, c_void_p]
library.tarva_abi_release_memory.restype = None


def call(name, *arguments):
    """Calls a function between `reserved` and `out_error`, and takes nothing but success."""
    function = getattr(library, name)
    function.restype = c_int64
    error = c_void_p()
    result = function(c_void_p(), *arguments, byref(error))
    if result != 0:
        sys.exit(f"{name} failed with result {result}")


memory, future, code = c_void_p(), c_void_p(), c_long(1)
value, content = ctypes.c_uint16(0xABCD), (ctypes.c_uint16 * 5)()
call("tarva_abi_memory_allocate_typed", b"from Python", c_uint64(TYPE_UINT16), c_uint64(5), byref(memory))
call("tarva_abi_fill_memory", memory, byref(value), c_uint64(1), c_uint64(4))
call("tarva_abi_async_read_memory", memory, c_uint64(1), c_uint64(4), content, byref(future))
call("tarva_abi_wait_future", future, byref(code), c_void_p())
library.tarva_abi_release_memory(None, memory)
sys.exit(0 if code.value == 0 and list(content) == [0xABCD] * 4 + [0] else "wrong content")

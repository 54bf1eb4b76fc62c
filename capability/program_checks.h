// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// What may be handed to an implementation as part of a program: options, names, device binaries and modules.
//
// OpenCL leaves it open what an implementation does with garbage, and several end the process: a compiler runs in it. Each
// check says for its kind of input whether it is harmless, that is, whether the implementation, with its known quirks, will
// judge it and return a status. A harmless input may still be wrong; that is for OpenCL to tell.
//
// All are functions of their arguments: any thread may call them. They read nothing past the lengths that they are given,
// and throw std::bad_alloc only.
#pragma once

#include "capability/opencl_functions.h"
#include "capability/quirks.h"

#include <cstddef>
#include <string_view>

namespace qv {

bool is_utf8(std::string_view text);

// False if an implementation with these quirks would end the process over these options of a build. All options
// that OpenCL names are harmless, as far as the implementation can read them.
bool are_harmless_options(const quirks& known, std::string_view options);

// Whether an implementation with these quirks can be given the binary: as far as it can be told, the binary
// is one of its own and whole. An implementation without such quirks can be given anything.
bool is_harmless_binary(const quirks& known, const unsigned char* binary, std::size_t length);

// False if `bytes` begin as a SPIR-V module and do not go on as one: an instruction that does not fit, or a
// function without end; or if the module is newer than what a device of `context` says that it takes. Other languages
// are not judged.
bool is_harmless_module(const opencl_functions& cl, cl_context context, const void* bytes,
                        std::size_t length);

} // namespace qv

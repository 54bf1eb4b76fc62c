// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The exported functions for memory objects, the operations on them, and the futures of reads and writes.
#include "abi/entry_point.h"
#include "ir/logical_operation.h"
#include "memory/library_memory.h"
#include "scheduler/scheduler.h"

#include <memory>

using namespace oryn::tarva::library;

namespace {

// Frees the object's content. If there is no memory for an operation that does it, the scheduler gives the content up at
// once: nobody can name the object any more.
void free_memory(tarva_singleton& library, const std::shared_ptr<library_memory>& object) {
  try {
    library.submit_without_future(logical_ir::free_memory::create(object));
  } catch (...) {
    library.get_scheduler().forget(object);
    throw;
  }
}

} // namespace

// Memory objects.

// The operation comes before the handle: nobody else can see the object yet, so it can still be freed without one.
tarva_abi_result tarva_abi_memory_allocate_typed(void*, const char* user_label, tarva_abi_data_type type,
                                                 uint64_t count, tarva_abi_memory_s** out_memory,
                                                 tarva_abi_error_s** out_error) {
  return call_with_result(out_error, [&](tarva_singleton& library) {
    require(out_memory,
            "tarva_abi_memory_allocate_typed: allocation result argument is NULL, but expected a memory "
            "location to return the memory object.");
    std::string label = user_label ? user_label : "";
    auto memory = std::make_shared<library_memory>(to_data_type(type), count, std::move(label));
    library.submit_without_future(logical_ir::allocate_memory::create(memory));
    try {
      *out_memory = library.bridge.make_handle<tarva_abi_memory_s>(memory);
    } catch (...) {
      free_memory(library, memory);
      throw;
    }
  });
}

tarva_abi_result tarva_abi_get_memory_root_property(void*, tarva_abi_memory_s* memory,
                                                    tarva_abi_property_s** out_property,
                                                    tarva_abi_error_s** out_error) {
  return get_root_property(
      out_error, memory, out_property,
      "tarva_abi_get_memory_root_property: property argument is NULL, but expected a memory location to write the result property.");
}

void tarva_abi_retain_memory(void*, tarva_abi_memory_s* memory) {
  call_without_result([&](tarva_singleton& library) { library.bridge.retain(memory); });
}

// The object is held beyond its last handle, until its content has been freed.
void tarva_abi_release_memory(void*, tarva_abi_memory_s* memory) {
  call_without_result([&](tarva_singleton& library) {
    const auto object = library.bridge.get_library_object(memory);
    if (library.bridge.release(memory))
      free_memory(library, object);
  });
}

// Operations. Fills and copies have no future; a failure of their work is only logged.

tarva_abi_result tarva_abi_fill_memory(void*, tarva_abi_memory_s* memory, const void* value,
                                       uint64_t start_position, uint64_t count,
                                       tarva_abi_error_s** out_error) {
  return call_with_result(out_error, [&](tarva_singleton& library) {
    require(value,
            "tarva_abi_fill_memory: value argument is NULL, but expected a memory location that contains a "
            "value to write.");
    library.submit_without_future(
        logical_ir::fill::create(library.bridge.get_library_object(memory), value, start_position, count));
  });
}

tarva_abi_result tarva_abi_copy_memory(void*, tarva_abi_memory_s* src, uint64_t src_start_position,
                                       tarva_abi_memory_s* dest, uint64_t dest_start_position, uint64_t count,
                                       tarva_abi_error_s** out_error) {
  return call_with_result(out_error, [&](tarva_singleton& library) {
    auto source = library.bridge.get_library_object(src);
    auto destination = library.bridge.get_library_object(dest);
    library.submit_without_future(logical_ir::copy_tarva_to_tarva::create(
        std::move(source), std::move(destination), src_start_position, dest_start_position, count));
  });
}

// The storage behind `dest`, and `src` below, stays the caller's, who keeps it valid until the future has been waited for.
tarva_abi_result tarva_abi_async_read_memory(void*, tarva_abi_memory_s* memory, uint64_t src_start_position,
                                             uint64_t count, void* dest, tarva_abi_future_s** out_future,
                                             tarva_abi_error_s** out_error) {
  return call_with_result(out_error, [&](tarva_singleton& library) {
    require(out_future,
            "tarva_abi_async_read_memory: future argument is NULL, but expected a memory location to "
            "store the returned future object.");
    require(dest,
            "tarva_abi_async_read_memory: dest argument is NULL, but expected a memory location to write "
            "memory contents.");
    *out_future = library.submit_with_future(logical_ir::copy_tarva_to_user::create(
        library.bridge.get_library_object(memory), src_start_position, count, dest));
  });
}

tarva_abi_result tarva_abi_async_write_memory(void*, tarva_abi_memory_s* memory, uint64_t dest_start_position,
                                              uint64_t count, const void* src,
                                              tarva_abi_future_s** out_future,
                                              tarva_abi_error_s** out_error) {
  return call_with_result(out_error, [&](tarva_singleton& library) {
    require(out_future,
            "tarva_abi_async_write_memory: future argument is NULL, but expected a memory location to "
            "store the returned future object.");
    require(
        src,
        "tarva_abi_async_write_memory: src argument is NULL, but expected a memory location to read memory "
        "contents.");
    *out_future = library.submit_with_future(logical_ir::copy_user_to_tarva::create(
        library.bridge.get_library_object(memory), dest_start_position, count, src));
  });
}

// Futures.

// Ends the future whatever the outcome. The result says how the waiting went, `future_error_code` how the operation did.
tarva_abi_result tarva_abi_wait_future(void*, tarva_abi_future_s* future, long* future_error_code,
                                       tarva_abi_error_s** future_error, tarva_abi_error_s** out_error) {
  static_assert(sizeof(long) == sizeof(tarva_abi_result));
  return call_with_result(out_error, [&](tarva_singleton& library) {
    require(future_error_code,
            "tarva_abi_wait_future: The argument future_error_code is NULL and a memory location "
            "to return an error code is required.");
    abi_bridge& bridge = library.bridge;
    const auto operation = bridge.get_library_object(future)->get_operation();
    library.get_scheduler().prepare_wait(operation);
    operation->wait_until_complete();

    const auto [code, error] = library.convert_exception(operation->get_error());
    try {
      bridge.release_future(future);
    } catch (...) {
      bridge.release_error(error); // another thread has ended the future, and was given the error
      throw;
    }
    *future_error_code = code;
    if (future_error)
      *future_error = error;
    else
      bridge.release_error(error);
  });
}

// The operation runs on.
void tarva_abi_abandon_future(void*, tarva_abi_future_s* future) {
  call_without_result([&](tarva_singleton& library) {
    library.bridge.get_library_object(future); // refuses NULL in the words of a look-up
    library.bridge.release_future(future);
  });
}

#include "abi/argument_checks.h"
#include "abi/tarva_singleton.h"
#include "ir/logical_operation.h"
#include "scheduler/scheduler.h"
#include "memory/library_memory.h"

// Memory objects and the operations on them.
namespace oryn::tarva::library {

void tarva_singleton::tarva_abi_memory_allocate_typed(const char* user_label, tarva_abi_data_type type,
                                                      std::uint64_t count, tarva_abi_memory_s** out_memory) {
  require(out_memory,
          "tarva_abi_memory_allocate_typed: allocation result argument is NULL, but expected a memory "
          "location to return the memory object.");
  std::string label = user_label ? user_label : "";
  auto memory = std::make_shared<library_memory>(to_data_type(type), count, std::move(label));
  submit_without_future(logical_ir::allocate_memory::create(memory));
  try {
    *out_memory = bridge_.make_handle<tarva_abi_memory_s>(memory);
  } catch (...) {
    free_memory(memory);
    throw;
  }
}

void tarva_singleton::tarva_abi_fill_memory(tarva_abi_memory_s* memory, const void* value,
                                            std::uint64_t start_position, std::uint64_t count) {
  require(value,
          "tarva_abi_fill_memory: value argument is NULL, but expected a memory location that contains a "
          "value to write.");
  submit_without_future(
      logical_ir::fill::create(bridge_.get_library_object(memory), value, start_position, count));
}

void tarva_singleton::tarva_abi_copy_memory(tarva_abi_memory_s* src, std::uint64_t src_start_position,
                                            tarva_abi_memory_s* dest, std::uint64_t dest_start_position,
                                            std::uint64_t count) {
  auto source = bridge_.get_library_object(src);
  auto destination = bridge_.get_library_object(dest);
  submit_without_future(logical_ir::copy_tarva_to_tarva::create(
      std::move(source), std::move(destination), src_start_position, dest_start_position, count));
}

void tarva_singleton::tarva_abi_async_read_memory(tarva_abi_memory_s* memory,
                                                  std::uint64_t src_start_position, std::uint64_t count,
                                                  void* dest, tarva_abi_future_s** out_future) {
  require(out_future,
          "tarva_abi_async_read_memory: future argument is NULL, but expected a memory location to "
          "store the returned future object.");
  require(dest, "tarva_abi_async_read_memory: dest argument is NULL, but expected a memory location to write "
                "memory contents.");
  *out_future = submit_with_future(logical_ir::copy_tarva_to_user::create(bridge_.get_library_object(memory),
                                                                          src_start_position, count, dest));
}

void tarva_singleton::tarva_abi_async_write_memory(tarva_abi_memory_s* memory,
                                                   std::uint64_t dest_start_position, std::uint64_t count,
                                                   const void* src, tarva_abi_future_s** out_future) {
  require(out_future,
          "tarva_abi_async_write_memory: future argument is NULL, but expected a memory location to "
          "store the returned future object.");
  require(src,
          "tarva_abi_async_write_memory: src argument is NULL, but expected a memory location to read memory "
          "contents.");
  *out_future = submit_with_future(logical_ir::copy_user_to_tarva::create(bridge_.get_library_object(memory),
                                                                          dest_start_position, count, src));
}

void tarva_singleton::tarva_abi_retain_memory(tarva_abi_memory_s* memory) {
  bridge_.retain(memory);
}

// The object is held beyond its last handle, until the scheduler has dealt with it.
void tarva_singleton::tarva_abi_release_memory(tarva_abi_memory_s* memory) {
  const auto object = bridge_.get_library_object(memory);
  if (bridge_.release(memory))
    free_memory(object);
}

// Without memory for the operation the storage must go all the same: nobody can name the object any more.
void tarva_singleton::free_memory(const std::shared_ptr<library_memory>& object) {
  try {
    submit_without_future(logical_ir::free_memory::create(object));
  } catch (...) {
    scheduler_->forget(object);
    throw;
  }
}

} // namespace oryn::tarva::library

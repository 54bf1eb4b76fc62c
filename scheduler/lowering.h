// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// How a logical operation becomes physical operations.
#pragma once

#include "ir/logical_operation.h"
#include "ir/range_operations.h"
#include "scheduler/dispatch_operations.h"
#include "scheduler/memory_table.h"

#include <atomic>
#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <vector>

namespace oryn::tarva::library {

// Turns one logical operation into its graph of physical operations, and enters in the table where each memory object will
// be. What is wrong with the operation is found before anything changes: then nothing is entered, and no worker sees it.
//
// Lives for one operation, as long as the scheduler lets this operation alone use its memory objects, and with no work of
// theirs in flight. It keeps what it takes to put the table right if the work fails.
class lowering {
public:
  // Refers to all four for as long as it lives.
  lowering(const std::shared_ptr<logical_ir::logical_operation>& operation,
           const std::shared_ptr<library_device>& host_device, memory_table& table,
           std::atomic<std::uint64_t>& last_sync_id);
  // A shared pointer to a derived class would become a temporary one, which is gone as soon as the constructor returns.
  lowering(std::shared_ptr<logical_ir::logical_operation>&&, const std::shared_ptr<library_device>&,
           memory_table&, std::atomic<std::uint64_t>&) = delete;

  // Makes the graph; once. Empty if nothing is to be done: then the operation has succeeded, or failed with `get_refusal()`.
  const physical_graph& lower();
  std::exception_ptr get_refusal() const { return refusal_; }
  // Whether all of the graph is work on host memory that belongs to no launch and no device. Its operations have to name a
  // device all the same, and name the first of the library.
  bool is_host_work() const { return is_host_work_; }
  // After a failure, when every command of the operation has ended: frees what nobody needs, and lets each object be where
  // its content is.
  void settle_after_failure() noexcept;
  // After a failure that the caller is told of: no handle will be made for what the operation was to allocate.
  void withdraw_allocation();

private:
  using physical_pointer = std::shared_ptr<physical_ir::physical_operation>;

  void lower(const logical_ir::allocate_memory& operation);
  void lower(const logical_ir::free_memory& operation);
  void lower(const logical_ir::fill& operation);
  void lower(const logical_ir::kernel& operation);
  void lower(const logical_ir::copy_tarva_to_user& operation);
  void lower(const logical_ir::copy_user_to_tarva& operation);
  void lower(const logical_ir::copy_tarva_to_tarva& operation);

  template <class Operation, class... Arguments>
  std::shared_ptr<Operation> add(Arguments&&... arguments) {
    auto added = Operation::create(operation_, std::forward<Arguments>(arguments)...);
    graph_.insert_node(added);
    return added;
  }
  // The only work of its operation.
  template <class Operation, class... Arguments>
  void add_host_work(Arguments&&... arguments) {
    add<Operation>(host_device_, std::forward<Arguments>(arguments)...);
    is_host_work_ = true;
  }
  // Edges from each to the next.
  void add_chain(const std::vector<physical_pointer>& chain);

  void copy_between_devices(const memory_state& source, const memory_state& destination,
                            const logical_ir::copy_tarva_to_tarva& operation);

  physical_pointer move_to(const std::shared_ptr<library_device>& device,
                           const std::shared_ptr<library_memory>& memory, memory_state& state);
  physical_pointer move_from_host(const std::shared_ptr<library_device>& device,
                                  const std::shared_ptr<library_memory>& memory, memory_state& state);
  physical_pointer move_between_devices(const std::shared_ptr<library_device>& device,
                                        const std::shared_ptr<library_memory>& memory, memory_state& state);

  const std::shared_ptr<logical_ir::logical_operation>& operation_;
  const std::shared_ptr<library_device>& host_device_;
  memory_table& table_;
  std::atomic<std::uint64_t>& last_sync_id_;
  physical_graph graph_;
  std::exception_ptr refusal_;
  bool is_host_work_ = false;
  std::vector<block_move> moves_;
  std::shared_ptr<library_memory> allocated_;
  std::optional<memory_state> freed_; // what the operation is to free
};

} // namespace oryn::tarva::library

// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The interface that decides when, where and how operations run.
#pragma once

#include <memory>

namespace oryn::tarva::library {

class library_memory;

namespace logical_ir {
class logical_operation;
}

// Knows where the content of every memory object is, and turns logical operations into work for devices. Any thread may
// call each function; a thread that is inside one must not call another.
class scheduler : public std::enable_shared_from_this<scheduler> {
public:
  scheduler() = default;
  virtual ~scheduler() = default;
  scheduler(const scheduler&) = delete;
  scheduler& operator=(const scheduler&) = delete;

  // Runs the operation, and returns when all of its work has ended. Throws what is wrong with the operation, and then has
  // changed nothing; a failure of the work itself is not thrown but stays in the operation.
  virtual void submit(const std::shared_ptr<logical_ir::logical_operation>& operation) = 0;
  // Gives up the object's content at once, where an operation that would free it could not be run.
  virtual void forget(const std::shared_ptr<library_memory>& memory) noexcept = 0;
  // Called before a thread begins to wait for the operation.
  virtual void prepare_wait(const std::shared_ptr<logical_ir::logical_operation>& operation) = 0;
};

} // namespace oryn::tarva::library

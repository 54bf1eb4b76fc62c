// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// What is handed out as a program and as a kernel.
//
// Both are objects of this library that wrap OpenCL's. A launch makes a kernel, sets its arguments, and enqueues it, where a
// failed command would end the process; so a kernel that is made for a launch, that is, while another of its name lives,
// accepts all arguments, and its launch fails. A kernel that is released is kept for the next one of its program and name.
//
// Programs may be used by any thread at any time, and a kernel by one thread at a time, as OpenCL has it. One lock for all
// programs guards what their kernels share; it is never held while OpenCL is called, and no other lock is taken under it. A
// launch takes it twice, to make its kernel and to release it.
#pragma once

#include "base/thread_annotations.h"
#include "capability/kernel_arguments.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qv {

class kernel_object;

// Guards the kernels of all programs, the order of the spares, and what a program was built with.
extern oryn::mutex kernels_lock;

// The kernels of one name in one program. It is there as long as a kernel holds it, one is kept in it, or it knows the
// parameters.
struct kernel_family {
  // Kernels handed out, and those that are being made.
  std::uint32_t holders TARVA_GUARDED_BY(kernels_lock) = 0;
  // Kernels handed out.
  std::uint32_t live TARVA_GUARDED_BY(kernels_lock) = 0;
  bool knows_parameters TARVA_GUARDED_BY(kernels_lock) = false;
  // Constant once they are known. A kernel reads those of the arguments that it knows, and needs no lock for it.
  std::vector<parameter> parameters;
  std::optional<group_size> required_size TARVA_GUARDED_BY(kernels_lock); // if it was asked for
  std::vector<kernel_object*> spares TARVA_GUARDED_BY(kernels_lock);      // the one released last at the end
};

// A program: OpenCL's, and the families of its kernels. Ends with its last reference, of a holder or of a kernel.
class program_object {
public:
  static constexpr cl_int invalid = CL_INVALID_PROGRAM;

  program_object(cl_program program, bool is_from_source) noexcept
      : program(program), is_from_source(is_from_source) {}
  program_object(const program_object&) = delete;
  program_object& operator=(const program_object&) = delete;

  const cl_program program;
  const bool is_from_source;

  // OpenCL is asked for one reference only, and so cannot refuse another.
  void retain() noexcept { references_.fetch_add(1, std::memory_order_relaxed); }
  cl_int release(const opencl_functions& cl) noexcept TARVA_EXCLUDES(kernels_lock);
  std::uint32_t references() const noexcept { return references_.load(std::memory_order_relaxed); }

  // Before a new build: ends the kept kernels, which would block it, and forgets what they told. False, with nothing changed,
  // if a kernel is in use.
  bool forget_kernels(const opencl_functions& cl) noexcept TARVA_EXCLUDES(kernels_lock);

  // For questions about binaries. An implementation may work a binary out when it is first asked for one, and tell any size
  // to a thread that asks meanwhile: PoCL tells 256 MiB.
  oryn::mutex& binaries_lock() const noexcept TARVA_RETURNS_LOCK(binaries_lock_) { return binaries_lock_; }

  // The options that the caller gave to the last build, if OpenCL was given others; null if they were the caller's.
  void set_callers_options(const char* options) TARVA_EXCLUDES(kernels_lock);
  std::optional<std::string> callers_options() const TARVA_EXCLUDES(kernels_lock);

private:
  friend class kernel_object;

  std::atomic<std::uint32_t> references_{1};
  mutable oryn::mutex binaries_lock_;
  std::optional<std::string> callers_options_ TARVA_GUARDED_BY(kernels_lock);
  // Entries stay in their places, as kernels point to theirs.
  std::map<std::string, kernel_family, std::less<>> families_ TARVA_GUARDED_BY(kernels_lock);
};

// A kernel: OpenCL's, or why it could not be made. It holds its program. Between its uses it may be a spare, which belongs to
// the families and holds nothing; the spares of all programs stand in one order, so that the oldest can make room.
class kernel_object {
public:
  static constexpr cl_int invalid = CL_INVALID_KERNEL;

  kernel_object(const kernel_object&) = delete;
  kernel_object& operator=(const kernel_object&) = delete;

  // Null and a status, if OpenCL refuses and no other kernel of the name lives.
  static kernel_object* make(const root_device& device, program_object& program, const char* name,
                             cl_int& status) noexcept TARVA_EXCLUDES(kernels_lock);
  // For a kernel that OpenCL has made unasked. Takes over its reference, also if it fails.
  static kernel_object* wrap(const root_device& device, program_object& program, cl_kernel kernel,
                             cl_int& status) noexcept TARVA_EXCLUDES(kernels_lock);

  // Null if OpenCL has refused to make it.
  cl_kernel kernel = nullptr;
  // Why that is so, else CL_SUCCESS.
  cl_int failure() const noexcept { return failure_; }
  // Both null if there was no memory for more than this object.
  program_object* program = nullptr;
  const std::string* name = nullptr;

  // The status for the caller. A kernel that is made for a launch takes everything, and its launch tells.
  cl_int set_argument(const root_device& device, std::uint32_t index, std::size_t size,
                      const void* value) noexcept;
  // What the attributes of the kernel demand, asked for once. Throws std::bad_alloc.
  group_size required_size(const opencl_functions& cl) const TARVA_EXCLUDES(kernels_lock);

  // CL_SUCCESS, or why a launch must not reach OpenCL.
  cl_int launch_status() const noexcept;

  // Ends the object, or keeps it for the next of its name. The status is OpenCL's, if it was asked.
  cl_int release(const opencl_functions& cl) noexcept TARVA_EXCLUDES(kernels_lock);

  // To be called before a buffer is released: no kernel that is kept may hold it as an argument.
  static void drop_spares_with(const opencl_functions& cl, cl_mem buffer) noexcept
      TARVA_EXCLUDES(kernels_lock);

private:
  friend class program_object;
  using family_entry = std::pair<const std::string, kernel_family>;

  // What OpenCL's kernel has at one parameter.
  struct argument {
    cl_mem buffer = nullptr;      // or any other value of that size or less
    std::size_t size = 0;         // of what is there; 0: it is not known
    std::uint64_t seen_alive = 0; // when, by the count of removed buffers
    cl_int refusal = CL_SUCCESS;  // of what was set last
    bool is_set = false;
  };

  explicit constexpr kernel_object(cl_int failure = CL_SUCCESS) noexcept : failure_(failure) {}
  static kernel_object* out_of_memory() noexcept;

  // The family of a name, made if there is none. What is held does not go.
  static family_entry* hold_family(program_object& program, std::string_view name)
      TARVA_REQUIRES(kernels_lock);
  static void release_family(program_object& program, family_entry& family) noexcept
      TARVA_REQUIRES(kernels_lock);
  static kernel_object* take_spare(program_object& program, family_entry& family) noexcept
      TARVA_REQUIRES(kernels_lock);
  static cl_int end_all(const opencl_functions& cl, kernel_object* first) noexcept;

  // Makes this a kernel of the family. Takes over the kernel, if there is one, and the hold on the family, if this succeeds.
  void join(const root_device& device, program_object& program, family_entry& family, cl_kernel kernel)
      TARVA_EXCLUDES(kernels_lock);
  cl_int check_argument(const root_device& device, std::uint32_t index, std::size_t size, const void* value,
                        std::uint64_t removed_before) const noexcept;
  bool has_argument(std::uint32_t index, std::size_t size, const void* value,
                    std::uint64_t removed_before) const noexcept;
  cl_int refuse_argument(cl_int status) noexcept;
  bool holds(cl_mem buffer) const noexcept;
  void remove_from_spares() noexcept TARVA_REQUIRES(kernels_lock);

  const root_device* device_ = nullptr;
  family_entry* family_ = nullptr;
  std::vector<argument> arguments_; // one for each parameter, if OpenCL tells of them
  std::size_t set_count_ = 0;
  cl_int failure_ = CL_SUCCESS;
  bool is_for_launch_ = false; // made while another of its family lived
  bool is_reused_ = false;     // a spare before, so that OpenCL's kernel still has arguments
  bool was_refused_ = false;   // an argument; or its parameter is not known
  // Among all spares, in the order of their release, and then guarded by the lock; `newer_` also links those that are to be
  // ended, which nobody else knows.
  kernel_object* older_ = nullptr;
  kernel_object* newer_ = nullptr;
};

} // namespace qv

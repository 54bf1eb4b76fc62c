// What is handed out as a program and as a kernel.
//
// Both are objects of this library that wrap OpenCL's. A launch makes a kernel, sets its arguments, and enqueues it, where a
// failed command would end the process; so a kernel that is made for a launch, that is, while another of its name lives,
// accepts all arguments, and its launch fails. A kernel that is released is kept for the next one of its program and name.
#pragma once

#include "capability/kernel_parameters.h"
#include "capability/opencl_functions.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qv {

struct root_device;
class kernel_object;

// The kernels of one name in one program.
struct kernel_family {
  std::uint32_t holders = 0; // those handed out, and those that are being made
  std::uint32_t live = 0;    // those handed out
  bool is_told = false;      // whether `parameters` has been asked for, and told
  std::vector<parameter> parameters;
  std::optional<group_size> required_size;
  std::vector<kernel_object*> spares; // the one released last at the end
};

class program_object {
public:
  program_object(cl_program program, bool is_from_source) noexcept
      : program_(program), is_from_source_(is_from_source) {}
  program_object(const program_object&) = delete;
  program_object& operator=(const program_object&) = delete;

  cl_program program() const noexcept { return program_; }
  bool is_from_source() const noexcept { return is_from_source_; }

  // OpenCL is asked for one reference only, and so cannot refuse another.
  void retain() noexcept { references_.fetch_add(1, std::memory_order_relaxed); }
  cl_int release(const opencl_functions& cl) noexcept;
  std::uint32_t references() const noexcept { return references_.load(std::memory_order_relaxed); }

  // Before a new build: ends the kept kernels, which would block it, and forgets what they told.
  void forget_kernels(const opencl_functions& cl) noexcept;

  // The options of the last build, if it was given others than the caller's.
  const std::string* given_options() const noexcept { return has_other_options_ ? &given_options_ : nullptr; }
  void set_given_options(const char* options);

private:
  friend class kernel_object;

  const cl_program program_;
  const bool is_from_source_;
  bool has_other_options_ = false;
  std::atomic<std::uint32_t> references_{1};
  std::string given_options_;
  std::map<std::string, kernel_family, std::less<>> families_; // guarded by the lock of all kernels
};

class kernel_object {
public:
  kernel_object(const kernel_object&) = delete;
  kernel_object& operator=(const kernel_object&) = delete;

  // Null and a status, if OpenCL refuses and no other kernel of the name lives.
  static kernel_object* make(const root_device& device, program_object& program, const char* name,
                             cl_int& status) noexcept;
  // For a kernel that OpenCL has made unasked. Takes over its reference, also if it fails.
  static kernel_object* wrap(const root_device& device, program_object& program, cl_kernel kernel,
                             cl_int& status) noexcept;

  // Null if OpenCL has refused to make it.
  cl_kernel kernel() const noexcept { return kernel_; }
  // Why that is so, else CL_SUCCESS.
  cl_int failure() const noexcept { return failure_; }
  // Null if there was no memory for more than this object.
  program_object* program() const noexcept { return program_; }
  const std::string& name() const noexcept { return family_->first; }

  cl_int set_argument(const root_device& device, std::uint32_t index, std::size_t size,
                      const void* value) noexcept;
  // What the attributes of the kernel demand, asked for once.
  group_size required_size(const opencl_functions& cl) const;

  // CL_SUCCESS, or why a launch must not reach OpenCL.
  cl_int launch_status() const noexcept;

  // Ends the object, or keeps it for the next of its name.
  cl_int release(const opencl_functions& cl) noexcept;

  // To be called before a buffer is released: no kernel that is kept may hold it as an argument.
  static void drop_spares_with(const opencl_functions& cl, cl_mem buffer) noexcept;

private:
  friend class program_object;
  using family_entry = std::pair<const std::string, kernel_family>;

  struct argument {
    cl_mem buffer = nullptr;      // or any other value of that size
    std::uint64_t seen_alive = 0; // when, by the count of forgotten buffers
    cl_int refusal = CL_SUCCESS;
    bool is_set = false;
  };

  explicit constexpr kernel_object(cl_int failure = CL_SUCCESS) noexcept : failure_(failure) {}
  static kernel_object* for_want_of_memory() noexcept;

  static family_entry* hold_family(program_object& program, std::string_view name);
  static void let_go(program_object& program, family_entry& family) noexcept;
  static kernel_object* take_spare(program_object& program, family_entry& family) noexcept;
  static cl_int end_all(const opencl_functions& cl, kernel_object* first) noexcept;

  // Takes over the kernel, if there is one, and the hold on the family, if this succeeds.
  void join(const root_device& device, program_object& program, family_entry& family, cl_kernel kernel);
  cl_int check_argument(const root_device& device, std::uint32_t index, std::size_t size, const void* value,
                        std::uint64_t now) const noexcept;
  cl_int note_refusal(cl_int status) noexcept;
  bool can_be_kept() const noexcept;
  bool holds(cl_mem buffer) const noexcept;
  void become_spare() noexcept;
  void leave_spares() noexcept;

  cl_kernel kernel_ = nullptr;
  const root_device* device_ = nullptr;
  program_object* program_ = nullptr;
  family_entry* family_ = nullptr;
  std::vector<argument> arguments_; // one for each parameter, if OpenCL tells of them
  std::size_t set_count_ = 0;
  cl_int failure_ = CL_SUCCESS;
  bool is_for_launch_ = false;
  bool is_reused_ = false;
  bool was_refused_ = false; // an argument; or its parameter is not known
  // Among all spares, in the order of their release; `newer_` also links those that are to be ended.
  kernel_object* older_ = nullptr;
  kernel_object* newer_ = nullptr;
};

} // namespace qv

#include "capability/kernels.h"

#include "capability/buffers.h"
#include "capability/opencl_call.h"
#include "capability/root_device.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <stdexcept>
#include <utility>

namespace qv {
namespace {

constexpr std::size_t most_spares_of_family = 4;
constexpr std::size_t most_spares = 64;

// Guards the families of all programs and the list of spares. Never held while OpenCL is called.
std::mutex kernels_lock;
kernel_object* oldest_spare = nullptr;
kernel_object* newest_spare = nullptr;
std::size_t spare_count = 0;

// Empty if OpenCL does not tell it.
std::string text_of(const opencl_functions& cl, cl_kernel kernel, cl_kernel_info name) {
  constexpr std::size_t longest = 1 << 20;
  std::size_t size = 0;
  if (call_or_refuse(cl.get_kernel_info, kernel, name, std::size_t{0}, static_cast<void*>(nullptr), &size) !=
          CL_SUCCESS ||
      size == 0 || size > longest)
    return {};
  std::string text(size, '\0');
  if (call_or_refuse(cl.get_kernel_info, kernel, name, size, static_cast<void*>(text.data()),
                     static_cast<std::size_t*>(nullptr)) != CL_SUCCESS)
    return {};
  text.resize(std::strlen(text.c_str()));
  return text;
}

cl_int as_failure(cl_int status) {
  return status < 0 ? status : CL_OUT_OF_RESOURCES;
}

} // namespace

cl_int program_object::release(const opencl_functions& cl) noexcept {
  if (references_.fetch_sub(1, std::memory_order_acq_rel) != 1)
    return CL_SUCCESS;
  forget_kernels(cl);
  const cl_int status = call_or_refuse(cl.release_program, program_);
  delete this;
  return status;
}

void program_object::forget_kernels(const opencl_functions& cl) noexcept {
  kernel_object* ended = nullptr;
  {
    const std::lock_guard guard(kernels_lock);
    for (auto family = families_.begin(); family != families_.end();) {
      for (kernel_object* spare : family->second.spares) {
        spare->leave_spares();
        spare->newer_ = std::exchange(ended, spare);
      }
      family->second.spares.clear();
      family = family->second.holders == 0 ? families_.erase(family) : std::next(family);
    }
  }
  kernel_object::end_all(cl, ended);
}

void program_object::set_given_options(const char* options) {
  has_other_options_ = options != nullptr;
  given_options_ = options == nullptr ? "" : options;
}

// Never ended: there is no destructor that would run at the end of the process.
kernel_object* kernel_object::for_want_of_memory() noexcept {
  union immortal {
    constexpr immortal() : object(CL_OUT_OF_HOST_MEMORY) {}
    ~immortal() {}
    kernel_object object;
  };
  static constinit immortal only;
  return &only.object;
}

// With the lock held. What is held does not go.
kernel_object::family_entry* kernel_object::hold_family(program_object& program, std::string_view name) {
  auto found = program.families_.find(name);
  if (found == program.families_.end())
    found = program.families_.try_emplace(std::string(name)).first;
  ++found->second.holders;
  return &*found;
}

// With the lock held. A name that no kernel has had is forgotten.
void kernel_object::let_go(program_object& program, family_entry& family) noexcept {
  if (--family.second.holders == 0 && !family.second.is_told && family.second.spares.empty())
    program.families_.erase(program.families_.find(family.first));
}

// With the lock held. Null if there is none.
kernel_object* kernel_object::take_spare(program_object& program, family_entry& family) noexcept {
  if (family.second.spares.empty())
    return nullptr;
  kernel_object* const spare = family.second.spares.back();
  family.second.spares.pop_back();
  spare->leave_spares();
  spare->is_reused_ = true;
  spare->is_for_launch_ = family.second.live++ != 0;
  spare->set_count_ = 0;
  for (argument& each : spare->arguments_)
    each.is_set = false;
  program.retain();
  return spare;
}

void kernel_object::join(const root_device& device, program_object& program, family_entry& family,
                         cl_kernel kernel) {
  bool is_told = kernel == nullptr;
  if (!is_told) {
    const std::lock_guard guard(kernels_lock);
    is_told = family.second.is_told;
  }
  std::optional<std::vector<parameter>> told;
  if (!is_told)
    told = parameters_of(device.cl, kernel);

  const std::lock_guard guard(kernels_lock);
  if (told && !family.second.is_told) {
    family.second.spares.reserve(most_spares_of_family);
    family.second.parameters = std::move(*told);
    family.second.is_told = true;
  }
  arguments_.resize(family.second.parameters.size());
  ++family.second.live;
  kernel_ = kernel;
  device_ = &device;
  family_ = &family;
  program_ = &program;
  program.retain();
}

kernel_object* kernel_object::make(const root_device& device, program_object& program, const char* name,
                                   cl_int& status) noexcept {
  family_entry* family = nullptr;
  cl_kernel kernel = nullptr;
  bool is_for_launch = false;
  try {
    {
      const std::lock_guard guard(kernels_lock);
      family = hold_family(program, name);
      is_for_launch = family->second.live != 0;
      status = CL_SUCCESS;
      if (kernel_object* const spare = take_spare(program, *family))
        return spare;
    }
    auto object = std::unique_ptr<kernel_object>(new kernel_object);
    object->is_for_launch_ = is_for_launch;
    kernel = make_or_refuse(status, device.cl.create_kernel, program.program(), name);
    if (kernel != nullptr || is_for_launch) {
      if (kernel == nullptr)
        object->failure_ = as_failure(std::exchange(status, CL_SUCCESS));
      object->join(device, program, *family, kernel);
      return object.release();
    }
  } catch (...) {
    status = status_of_exception();
  }
  if (kernel != nullptr)
    static_cast<void>(call_or_refuse(device.cl.release_kernel, kernel));
  if (family != nullptr) {
    const std::lock_guard guard(kernels_lock);
    let_go(program, *family);
  }
  if (!is_for_launch)
    return nullptr;
  status = CL_SUCCESS;
  return for_want_of_memory();
}

kernel_object* kernel_object::wrap(const root_device& device, program_object& program, cl_kernel kernel,
                                   cl_int& status) noexcept {
  family_entry* family = nullptr;
  status = CL_OUT_OF_RESOURCES;
  if (kernel == nullptr)
    return nullptr;
  try {
    const std::string name = text_of(device.cl, kernel, CL_KERNEL_FUNCTION_NAME);
    if (name.empty())
      throw std::runtime_error("OpenCL does not tell the name of a kernel");
    auto object = std::unique_ptr<kernel_object>(new kernel_object);
    {
      const std::lock_guard guard(kernels_lock);
      family = hold_family(program, name);
    }
    object->join(device, program, *family, kernel);
    status = CL_SUCCESS;
    return object.release();
  } catch (...) {
    status = status_of_exception();
  }
  static_cast<void>(call_or_refuse(device.cl.release_kernel, kernel));
  if (family != nullptr) {
    const std::lock_guard guard(kernels_lock);
    let_go(program, *family);
  }
  return nullptr;
}

// A buffer that was alive at some count of forgotten ones is alive as long as the count stays.
cl_int kernel_object::check_argument(const root_device& device, std::uint32_t index, std::size_t size,
                                     const void* value, std::uint64_t now) const noexcept {
  if (index >= arguments_.size())
    return check_kind(device, parameter::unknown, size, value);
  const parameter wanted = family_->second.parameters[index];
  const cl_int status = check_kind(device, wanted, size, value);
  if (status != CL_SUCCESS || wanted != parameter::buffer || value == nullptr)
    return status;
  cl_mem buffer = nullptr;
  std::memcpy(&buffer, value, sizeof(cl_mem));
  const argument& known = arguments_[index];
  const bool is_alive =
      buffer == nullptr || (buffer == known.buffer && now == known.seen_alive) || is_live_buffer(buffer);
  return is_alive ? CL_SUCCESS : CL_INVALID_MEM_OBJECT;
}

// What the caller is told of an argument that was refused.
cl_int kernel_object::note_refusal(cl_int status) noexcept {
  was_refused_ = true;
  return is_for_launch_ ? CL_SUCCESS : status;
}

cl_int kernel_object::set_argument(const root_device& device, std::uint32_t index, std::size_t size,
                                   const void* value) noexcept {
  if (kernel_ == nullptr)
    return CL_SUCCESS; // the launch tells
  const std::uint64_t now = forgotten_buffers();
  cl_int status = check_argument(device, index, size, value, now);
  if (status == CL_SUCCESS)
    status = call_or_refuse(device.cl.set_kernel_arg, kernel_, index, size, value);
  if (index >= arguments_.size()) {
    if (status != CL_SUCCESS && is_for_launch_)
      failure_ = as_failure(status);
    return note_refusal(status);
  }
  argument& set = arguments_[index];
  set.refusal = status;
  set.buffer = nullptr;
  if (status != CL_SUCCESS)
    return note_refusal(status);
  if (!std::exchange(set.is_set, true))
    ++set_count_;
  if (value != nullptr && size == sizeof(cl_mem))
    std::memcpy(&set.buffer, value, size);
  set.seen_alive = now;
  return CL_SUCCESS;
}

group_size kernel_object::required_size(const opencl_functions& cl) const {
  {
    const std::lock_guard guard(kernels_lock);
    if (family_->second.required_size)
      return *family_->second.required_size;
  }
  if (kernel_ == nullptr)
    return {};
  const group_size told = group_size_in(text_of(cl, kernel_, CL_KERNEL_ATTRIBUTES));
  const std::lock_guard guard(kernels_lock);
  family_->second.required_size = told;
  return told;
}

cl_int kernel_object::launch_status() const noexcept {
  if (failure_ != CL_SUCCESS)
    return failure_;
  if (was_refused_ && is_for_launch_)
    for (const argument& each : arguments_)
      if (each.refusal != CL_SUCCESS)
        return as_failure(each.refusal);
  // Else OpenCL would take what the kernel had before.
  return is_reused_ && set_count_ != arguments_.size() ? CL_INVALID_KERNEL_ARGS : CL_SUCCESS;
}

bool kernel_object::can_be_kept() const noexcept {
  return kernel_ != nullptr && !was_refused_ && family_->second.is_told &&
         family_->second.spares.size() < most_spares_of_family;
}

bool kernel_object::holds(cl_mem buffer) const noexcept {
  return std::any_of(arguments_.begin(), arguments_.end(),
                     [buffer](const argument& each) { return each.buffer == buffer; });
}

void kernel_object::become_spare() noexcept {
  family_->second.spares.push_back(this); // there is room
  older_ = std::exchange(newest_spare, this);
  newer_ = nullptr;
  (older_ == nullptr ? oldest_spare : older_->newer_) = this;
  ++spare_count;
}

void kernel_object::leave_spares() noexcept {
  (older_ == nullptr ? oldest_spare : older_->newer_) = newer_;
  (newer_ == nullptr ? newest_spare : newer_->older_) = older_;
  --spare_count;
}

cl_int kernel_object::release(const opencl_functions& cl) noexcept {
  if (this == for_want_of_memory())
    return CL_SUCCESS;
  program_object* const program = program_;
  kernel_object* ended = nullptr;
  {
    const std::lock_guard guard(kernels_lock);
    --family_->second.live;
    --family_->second.holders;
    if (can_be_kept()) {
      become_spare();
      if (spare_count > most_spares) {
        ended = oldest_spare;
        std::erase(ended->family_->second.spares, ended);
        ended->leave_spares();
      }
    } else {
      ended = this;
    }
    if (ended != nullptr)
      ended->newer_ = nullptr;
  }
  // The oldest spare may be of another device, so `cl` may be wrong for it.
  const bool is_another = ended != nullptr && ended != this;
  const cl_int status = end_all(is_another ? as_it_is_now(*ended->device_).cl : cl, ended);
  program->release(cl);
  return status;
}

void kernel_object::drop_spares_with(const opencl_functions& cl, cl_mem buffer) noexcept {
  kernel_object* ended = nullptr;
  {
    const std::lock_guard guard(kernels_lock);
    for (kernel_object *each = oldest_spare, *next = nullptr; each != nullptr; each = next) {
      next = each->newer_;
      if (!each->holds(buffer))
        continue;
      std::erase(each->family_->second.spares, each);
      each->leave_spares();
      each->newer_ = std::exchange(ended, each);
    }
  }
  end_all(cl, ended);
}

// Objects that nothing leads to any more, linked by `newer_`. The status is that of the last.
cl_int kernel_object::end_all(const opencl_functions& cl, kernel_object* first) noexcept {
  cl_int status = CL_SUCCESS;
  while (first != nullptr) {
    const std::unique_ptr<kernel_object> ended(std::exchange(first, first->newer_));
    if (ended->kernel_ != nullptr)
      status = call_or_refuse(cl.release_kernel, ended->kernel_);
  }
  return status;
}

} // namespace qv

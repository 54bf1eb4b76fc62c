// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "capability/kernels.h"

#include "capability/opencl_queries.h"
#include "capability/root_device.h"

#include <algorithm>
#include <memory>
#include <new>
#include <stdexcept>
#include <utility>

namespace qv {
namespace {

// More of one name are needed by none but as many launches of it at once. All together they are bounded, since each holds
// memory of an implementation and perhaps a buffer that nobody releases.
constexpr std::size_t most_spares_of_family = 4;
constexpr std::size_t most_spares = 64;

// The spares of all programs, linked by `older_` and `newer_`.
kernel_object* oldest_spare TARVA_GUARDED_BY(kernels_lock) = nullptr;
kernel_object* newest_spare TARVA_GUARDED_BY(kernels_lock) = nullptr;
std::size_t spare_count TARVA_GUARDED_BY(kernels_lock) = 0;

} // namespace

constinit oryn::mutex kernels_lock;

// A kernel holds its program, and a spare does not: the last reference goes with no kernel in use.
cl_int program_object::release(const opencl_functions& cl) noexcept {
  if (references_.fetch_sub(1, std::memory_order_acq_rel) != 1)
    return CL_SUCCESS;
  static_cast<void>(forget_kernels(cl));
  const cl_int status = call_or_refuse(cl.release_program, program);
  delete this;
  return status;
}

bool program_object::forget_kernels(const opencl_functions& cl) noexcept {
  kernel_object* ended = nullptr;
  {
    const oryn::lock_guard guard(kernels_lock);
    for (const auto& [name, family] : families_)
      if (family.holders != 0)
        return false;
    for (const auto& [name, family] : families_)
      for (kernel_object* spare : family.spares) {
        spare->remove_from_spares();
        spare->newer_ = std::exchange(ended, spare);
      }
    families_.clear();
  }
  kernel_object::end_all(cl, ended);
  return true;
}

void program_object::set_callers_options(const char* options) {
  std::optional<std::string> copy;
  if (options != nullptr)
    copy = options;
  const oryn::lock_guard guard(kernels_lock);
  callers_options_.swap(copy);
}

std::optional<std::string> program_object::callers_options() const {
  const oryn::lock_guard guard(kernels_lock);
  return callers_options_;
}

// Never ended: there is no destructor that would run at the end of the process.
kernel_object* kernel_object::out_of_memory() noexcept {
  union immortal {
    constexpr immortal() : object(CL_OUT_OF_HOST_MEMORY) {}
    ~immortal() {}
    kernel_object object;
  };
  static constinit immortal only;
  return &only.object;
}

kernel_object::family_entry* kernel_object::hold_family(program_object& program, std::string_view name) {
  auto found = program.families_.find(name);
  if (found == program.families_.end())
    found = program.families_.try_emplace(std::string(name)).first;
  ++found->second.holders;
  return &*found;
}

// A name that no kernel has had is forgotten: callers may try any names.
void kernel_object::release_family(program_object& program, family_entry& family) noexcept {
  if (--family.second.holders == 0 && !family.second.knows_parameters && family.second.spares.empty())
    program.families_.erase(program.families_.find(family.first));
}

// Null if there is none. The spare was released last, so that its memory is the warmest.
kernel_object* kernel_object::take_spare(program_object& program, family_entry& family) noexcept {
  if (family.second.spares.empty())
    return nullptr;
  kernel_object* const spare = family.second.spares.back();
  family.second.spares.pop_back();
  spare->remove_from_spares();
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
  // Without OpenCL's kernel there is nobody to ask; else whoever is first asks, and without the lock, as it takes calls.
  bool is_to_be_asked = kernel != nullptr;
  if (is_to_be_asked) {
    const oryn::lock_guard guard(kernels_lock);
    is_to_be_asked = !family.second.knows_parameters;
  }
  std::optional<std::vector<parameter>> told;
  if (is_to_be_asked)
    told = parameters_of(device.cl, kernel);

  const oryn::lock_guard guard(kernels_lock);
  if (told && !family.second.knows_parameters) {
    family.second.spares.reserve(most_spares_of_family); // no release may fail for want of memory
    family.second.parameters = std::move(*told);
    family.second.knows_parameters = true;
  }
  arguments_.resize(family.second.parameters.size());
  ++family.second.live;
  this->kernel = kernel;
  device_ = &device;
  family_ = &family;
  name = &family.first;
  this->program = &program;
  program.retain();
}

// The hold on the family comes first, so that it stays while OpenCL is asked without the lock. Whatever fails from then on, a
// kernel for a launch is given out: at the worst the one that needs no memory.
kernel_object* kernel_object::make(const root_device& device, program_object& program, const char* name,
                                   cl_int& status) noexcept {
  family_entry* family = nullptr;
  cl_kernel kernel = nullptr;
  bool is_for_launch = false;
  try {
    {
      const oryn::lock_guard guard(kernels_lock);
      family = hold_family(program, name);
      is_for_launch = family->second.live != 0;
      status = CL_SUCCESS;
      if (kernel_object* const spare = take_spare(program, *family))
        return spare;
    }
    auto object = std::unique_ptr<kernel_object>(new kernel_object);
    object->is_for_launch_ = is_for_launch;
    kernel = make_or_refuse(status, device.cl.create_kernel, program.program, name);
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
    const oryn::lock_guard guard(kernels_lock);
    release_family(program, *family);
  }
  if (!is_for_launch)
    return nullptr;
  status = CL_SUCCESS;
  return out_of_memory();
}

kernel_object* kernel_object::wrap(const root_device& device, program_object& program, cl_kernel kernel,
                                   cl_int& status) noexcept {
  family_entry* family = nullptr;
  status = CL_OUT_OF_RESOURCES;
  if (kernel == nullptr)
    return nullptr;
  try {
    const auto name = ask_text(CL_KERNEL_FUNCTION_NAME, device.cl.get_kernel_info, kernel);
    if (!name || name->empty())
      throw std::runtime_error("OpenCL does not tell the name of a kernel");
    auto object = std::unique_ptr<kernel_object>(new kernel_object);
    {
      const oryn::lock_guard guard(kernels_lock);
      family = hold_family(program, *name);
    }
    object->join(device, program, *family, kernel);
    status = CL_SUCCESS;
    return object.release();
  } catch (...) {
    status = status_of_exception();
  }
  static_cast<void>(call_or_refuse(device.cl.release_kernel, kernel));
  if (family != nullptr) {
    const oryn::lock_guard guard(kernels_lock);
    release_family(program, *family);
  }
  return nullptr;
}

void kernel_object::remove_from_spares() noexcept {
  (older_ == nullptr ? oldest_spare : older_->newer_) = newer_;
  (newer_ == nullptr ? newest_spare : newer_->older_) = older_;
  --spare_count;
}

// Kept is only what nothing was odd about, and whose arguments are known, so that a buffer among them can be found. The place among
// the spares of the family was reserved when the parameters became known.
cl_int kernel_object::release(const opencl_functions& cl) noexcept {
  if (program == nullptr)
    return CL_SUCCESS; // there was no memory for one: it is everybody's
  program_object* const held = program;
  kernel_object* ended = nullptr;
  {
    const oryn::lock_guard guard(kernels_lock);
    kernel_family& family = family_->second;
    --family.live;
    --family.holders;
    if (kernel != nullptr && !was_refused_ && family.knows_parameters &&
        family.spares.size() < most_spares_of_family) {
      family.spares.push_back(this);
      older_ = std::exchange(newest_spare, this);
      newer_ = nullptr;
      (older_ == nullptr ? oldest_spare : older_->newer_) = this;
      ++spare_count;
      if (spare_count > most_spares) {
        ended = oldest_spare;
        std::erase(ended->family_->second.spares, ended);
        ended->remove_from_spares();
      }
    } else {
      ended = this;
    }
    if (ended != nullptr)
      ended->newer_ = nullptr;
  }
  // The oldest spare may be of another device, so `cl` may be wrong for it.
  const bool is_another = ended != nullptr && ended != this;
  const cl_int status = ended == nullptr
                            ? CL_SUCCESS
                            : end_all(is_another ? device_or_stand_in(*ended->device_).cl : cl, ended);
  held->release(cl);
  return status;
}

bool kernel_object::holds(cl_mem buffer) const noexcept {
  return std::any_of(arguments_.begin(), arguments_.end(),
                     [buffer](const argument& each) { return each.buffer == buffer; });
}

// A look at every spare, of which there are few, each time a buffer goes: cheaper than to remember who holds what at each
// argument of each launch.
void kernel_object::drop_spares_with(const opencl_functions& cl, cl_mem buffer) noexcept {
  kernel_object* ended = nullptr;
  {
    const oryn::lock_guard guard(kernels_lock);
    for (kernel_object *each = oldest_spare, *next = nullptr; each != nullptr; each = next) {
      next = each->newer_;
      if (!each->holds(buffer))
        continue;
      std::erase(each->family_->second.spares, each);
      each->remove_from_spares();
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
    if (ended->kernel != nullptr)
      status = call_or_refuse(cl.release_kernel, ended->kernel);
  }
  return status;
}

} // namespace qv

#include "capability/device_queries.h"
#include "capability/executor.h"
#include "capability/kernels.h"
#include "capability/queues.h"

#include <algorithm>
#include <cstring>

namespace qv {
namespace {

// Answers a query in OpenCL's way, with a value of `size` bytes.
template <typename Record>
void answer(Record& record, const void* value, std::size_t size) {
  if (record.param_value != nullptr) {
    if (record.param_value_size < size) {
      record.status = CL_INVALID_VALUE;
      return;
    }
    std::memcpy(record.param_value, value, size);
  }
  if (record.param_value_size_ret != nullptr)
    *record.param_value_size_ret = size;
  record.status = CL_SUCCESS;
}

// Puts the record's question to OpenCL. `about` is the object, and the device if the query is about both.
template <typename Record, typename Query, typename... Objects>
void ask(Record& record, Query query, Objects... about) {
  record.status = call_or_refuse(query, about..., record.param_name, record.param_value_size,
                                 record.param_value, record.param_value_size_ret);
}

void answer_largest_group(const root_device& device, get_object_device_info_record& record) {
  if (const std::size_t size = device_number(device.cl, device.id, CL_DEVICE_MAX_WORK_GROUP_SIZE); size != 0)
    answer(record, &size, sizeof size);
}

// Where the attributes alone tell a size that was fixed.
void complete_required_size(const root_device& device, const kernel_object& kernel,
                            get_object_device_info_record& record) {
  group_size told{};
  std::memcpy(&told, record.param_value, std::min(record.param_value_size, sizeof told));
  if (told != group_size{} || record.param_value_size < sizeof told)
    return;
  told = kernel.required_size(device.cl);
  std::memcpy(record.param_value, &told, sizeof told);
}

} // namespace

void get_device_info(const root_device& device, get_device_info_record& record) {
  const bool is_known = record.device == device.id;
  const std::string* const text = is_known ? device.find_text(record.param_name) : nullptr;
  const cl_uint* const number = is_known ? device.find_number(record.param_name) : nullptr;
  if (text != nullptr)
    answer(record, text->c_str(), text->size() + 1);
  else if (number != nullptr)
    answer(record, number, sizeof *number);
  else
    ask(record, device.cl.get_device_info, static_cast<cl_device_id>(record.device));
}

void get_context_info(const root_device& device, get_context_info_record& record) {
  if (record.param_name == CL_CONTEXT_REFERENCE_COUNT && record.context != nullptr) {
    const cl_uint references = references_of_context(record.context);
    answer(record, &references, sizeof references);
    return;
  }
  ask(record, device.cl.get_context_info, static_cast<cl_context>(record.context));
}

// OpenCL's kernel, to be asked. One that could not be made is made anew for each question, since the refusal may have
// passed.
class kernel_to_ask {
public:
  kernel_to_ask(const root_device& device, const kernel_object& object)
      : cl_(device.cl), kernel_(object.kernel()) {
    if (kernel_ == nullptr && object.program() != nullptr)
      kernel_ = made_ =
          make_or_refuse(status_, cl_.create_kernel, object.program()->program(), object.name().c_str());
    else if (kernel_ == nullptr)
      status_ = object.failure();
  }
  kernel_to_ask(const kernel_to_ask&) = delete;
  kernel_to_ask& operator=(const kernel_to_ask&) = delete;
  ~kernel_to_ask() {
    if (made_ != nullptr)
      static_cast<void>(call_or_refuse(cl_.release_kernel, made_));
  }

  template <typename Record, typename Query, typename... Objects>
  void ask(Record& record, Query query, Objects... about) const {
    record.status = status_;
    if (kernel_ != nullptr)
      qv::ask(record, query, kernel_, about...);
  }

private:
  const opencl_functions& cl_;
  cl_kernel kernel_;
  cl_kernel made_ = nullptr;
  cl_int status_ = CL_SUCCESS;
};

// Where a kernel comes from is known here, so that no launch can fail over it.
void get_kernel_info(const root_device& device, get_object_info_record& record) {
  const auto* const kernel = static_cast<const kernel_object*>(record.object);
  if (kernel == nullptr) {
    record.status = CL_INVALID_KERNEL;
    return;
  }
  void* const program = kernel->program();
  const bool has_name = program != nullptr && !kernel->name().empty();
  if (record.param_name == CL_KERNEL_PROGRAM && program != nullptr)
    answer(record, &program, sizeof program);
  else if (record.param_name == CL_KERNEL_FUNCTION_NAME && has_name)
    answer(record, kernel->name().c_str(), kernel->name().size() + 1);
  else if (record.param_name == CL_KERNEL_ATTRIBUTES && device.quirks.tells_wrong_kernel_attributes)
    answer(record, "", 1);
  else
    kernel_to_ask(device, *kernel).ask(record, device.cl.get_kernel_info);
}

void get_kernel_work_group_info(const root_device& device, get_object_device_info_record& record) {
  const auto* const kernel = static_cast<const kernel_object*>(record.object);
  if (kernel == nullptr)
    record.status = CL_INVALID_KERNEL;
  else
    kernel_to_ask(device, *kernel)
        .ask(record, device.cl.get_kernel_work_group_info, static_cast<cl_device_id>(record.device));
  if (record.status != CL_SUCCESS || record.param_value == nullptr)
    return;
  if (record.param_name == CL_KERNEL_WORK_GROUP_SIZE && device.quirks.understates_group_sizes)
    answer_largest_group(device, record);
  if (record.param_name == CL_KERNEL_COMPILE_WORK_GROUP_SIZE && !device.quirks.tells_wrong_kernel_attributes)
    complete_required_size(device, *kernel, record);
}

void get_program_info(const root_device& device, get_object_info_record& record) {
  const auto* const program = static_cast<const program_object*>(record.object);
  if (program == nullptr) {
    record.status = CL_INVALID_PROGRAM;
    return;
  }
  const cl_uint references = program->references();
  if (record.param_name == CL_PROGRAM_REFERENCE_COUNT)
    answer(record, &references, sizeof references);
  else
    ask(record, device.cl.get_program_info, program->program());
}

void get_program_build_info(const root_device& device, get_object_device_info_record& record) {
  const auto* const program = static_cast<const program_object*>(record.object);
  if (program == nullptr) {
    record.status = CL_INVALID_PROGRAM;
    return;
  }
  const std::string* const options =
      record.param_name == CL_PROGRAM_BUILD_OPTIONS ? program->given_options() : nullptr;
  if (options != nullptr)
    answer(record, options->c_str(), options->size() + 1);
  else
    ask(record, device.cl.get_program_build_info, program->program(),
        static_cast<cl_device_id>(record.device));
}

void get_event_info(const root_device& device, get_object_info_record& record) {
  const auto* const event = static_cast<const event_object*>(record.object);
  if (event == nullptr) {
    record.status = CL_INVALID_EVENT;
    return;
  }
  const cl_int failure = event->failure();
  const cl_uint references = event->references();
  void* const queue = event->queue();
  if (record.param_name == CL_EVENT_COMMAND_EXECUTION_STATUS && failure != CL_SUCCESS)
    answer(record, &failure, sizeof failure);
  else if (record.param_name == CL_EVENT_REFERENCE_COUNT)
    answer(record, &references, sizeof references);
  else if (record.param_name == CL_EVENT_COMMAND_QUEUE && queue != nullptr)
    answer(record, &queue, sizeof queue);
  else if (event->event() == nullptr)
    record.status = CL_INVALID_EVENT;
  else
    ask(record, device.cl.get_event_info, event->event());
}

void get_event_profiling_info(const root_device& device, get_object_info_record& record) {
  const auto* const event = static_cast<const event_object*>(record.object);
  if (event == nullptr)
    record.status = CL_INVALID_EVENT;
  else if (event->failure() != CL_SUCCESS || event->event() == nullptr)
    record.status = CL_PROFILING_INFO_NOT_AVAILABLE;
  else
    ask(record, device.cl.get_event_profiling_info, event->event());
}

void retain_event(const root_device&, object_record& record) {
  auto* const event = static_cast<event_object*>(record.object);
  record.status = event == nullptr ? CL_INVALID_EVENT : CL_SUCCESS;
  if (event != nullptr)
    event->retain();
}

void release_event(const root_device& device, object_record& record) {
  auto* const event = static_cast<event_object*>(record.object);
  record.status = event == nullptr ? CL_INVALID_EVENT : event->release(device.cl);
}

void device_of_handle(const root_device& device, device_of_handle_record& record) {
  record.result = device.id;
}

// OpenCL counts sub-devices alone, and the devices here are none.
void count_device(const root_device&, object_record& record) {
  record.status = record.object == nullptr ? CL_INVALID_DEVICE : CL_SUCCESS;
}

} // namespace qv

#pragma once

#include "abi/bridge.h"
#include "include/tarva_abi.h"

#include <atomic>
#include <cstdint>
#include <exception>
#include <memory>
#include <utility>
#include <vector>

namespace oryn::tarva::library {

class call_gate;
class scheduler;
namespace logical_ir {
class logical_operation;
}

// The running library: its devices, the handle tables and the scheduler, and the receiver of every exported
// call.
class tarva_singleton {
public:
  // Starts the library. If it cannot start, the process ends with status 1.
  tarva_singleton();
  tarva_singleton(const tarva_singleton&) = delete;
  tarva_singleton& operator=(const tarva_singleton&) = delete;

  // The first call starts the library. To be asked only by calls that the gate has let in: once it is closed
  // the library may be gone.
  static tarva_singleton& get_instance();
  static call_gate& get_call_gate();
  bool has_devices() const { return !devices_.empty(); }

  // Reports what was not given up and ends the work of the devices. Lets nothing escape.
  void shut_down() noexcept;

  std::pair<tarva_abi_result, tarva_abi_error_s*>
  convert_exception(const std::exception_ptr& exception) noexcept;
  void release_error(tarva_abi_error_s* error) { bridge_.release_error(error); }

  // The bodies of the exported functions. Each checks its arguments, turns handles into library objects,
  // hands the work on, and makes the handles that go back. One that throws has written none of its
  // out-arguments.

  void tarva_abi_get_devices(tarva_abi_device_array_s** out_devices);
  void tarva_abi_get_device_root_property(tarva_abi_device_s* device, tarva_abi_property_s** out_property);
  void tarva_abi_get_builtin_program(tarva_abi_device_s* device, tarva_abi_program_s** out_program);
  void tarva_abi_check_device_ir_support(tarva_abi_device_s* device, const tarva_abi_ir_header_s* ir_header,
                                         tarva_abi_ir_type ir_type, const void* data, std::uint64_t data_size,
                                         const char* options, std::uint64_t* out_supported);
  void tarva_abi_load_device_ir(tarva_abi_device_s* device, const tarva_abi_ir_header_s* ir_header,
                                tarva_abi_ir_type ir_type, const void* data, std::uint64_t data_size,
                                const char* options, const char* user_label,
                                tarva_abi_build_result_s** out_result);
  void tarva_abi_retain_device(tarva_abi_device_s* device);
  void tarva_abi_release_device(tarva_abi_device_s* device);
  void tarva_abi_free_device_array(tarva_abi_device_array_s* array);
  void tarva_abi_free_build_result(tarva_abi_build_result_s* result);

  void tarva_abi_get_program_root_property(tarva_abi_program_s* program, tarva_abi_property_s** out_property);
  void tarva_abi_get_kernel(tarva_abi_program_s* program, const char* kernel_name,
                            tarva_abi_kernel_s** out_kernel);
  void tarva_abi_retain_program(tarva_abi_program_s* program);
  void tarva_abi_release_program(tarva_abi_program_s* program);

  void tarva_abi_get_kernel_root_property(tarva_abi_kernel_s* kernel, tarva_abi_property_s** out_property);
  void tarva_abi_kernel_call(tarva_abi_kernel_s* kernel, const tarva_abi_kernel_argument_s* arguments,
                             std::uint64_t argument_count, const tarva_abi_launch_range_s* launch_range);
  void tarva_abi_retain_kernel(tarva_abi_kernel_s* kernel);
  void tarva_abi_release_kernel(tarva_abi_kernel_s* kernel);

  void tarva_abi_get_memory_root_property(tarva_abi_memory_s* memory, tarva_abi_property_s** out_property);
  void tarva_abi_memory_allocate_typed(const char* user_label, tarva_abi_data_type type, std::uint64_t count,
                                       tarva_abi_memory_s** out_memory);
  void tarva_abi_fill_memory(tarva_abi_memory_s* memory, const void* value, std::uint64_t start_position,
                             std::uint64_t count);
  void tarva_abi_copy_memory(tarva_abi_memory_s* src, std::uint64_t src_start_position,
                             tarva_abi_memory_s* dest, std::uint64_t dest_start_position,
                             std::uint64_t count);
  void tarva_abi_async_read_memory(tarva_abi_memory_s* memory, std::uint64_t src_start_position,
                                   std::uint64_t count, void* dest, tarva_abi_future_s** out_future);
  void tarva_abi_async_write_memory(tarva_abi_memory_s* memory, std::uint64_t dest_start_position,
                                    std::uint64_t count, const void* src, tarva_abi_future_s** out_future);
  void tarva_abi_retain_memory(tarva_abi_memory_s* memory);
  void tarva_abi_release_memory(tarva_abi_memory_s* memory);

  void tarva_abi_wait_future(tarva_abi_future_s* future, long* future_error_code,
                             tarva_abi_error_s** future_error);
  void tarva_abi_abandon_future(tarva_abi_future_s* future);

  void tarva_abi_get_error_root_property(tarva_abi_error_s* error, tarva_abi_property_s** out_property);
  void tarva_abi_get_nested_error(tarva_abi_error_s* error, tarva_abi_error_s** nested_error);
  void tarva_abi_free_error(tarva_abi_error_s* error);

  void tarva_abi_get_child_property_by_name(tarva_abi_property_s* parent, const char* name,
                                            tarva_abi_property_s** out_property);
  void tarva_abi_get_all_children_properties(tarva_abi_property_s* parent,
                                             tarva_abi_property_array_s** out_properties);
  void tarva_abi_get_property_tree_string(tarva_abi_property_s* property,
                                          const tarva_abi_tree_format_s* format, char** out_string);
  void tarva_abi_free_property(tarva_abi_property_s* property);
  void tarva_abi_free_property_array(tarva_abi_property_array_s* array);
  void tarva_abi_free_property_tree_string(char* string);

private:
  // Lives while an OpenCL compiler may be used, and notes it then, however that ends.
  class use_of_compiler {
  public:
    explicit use_of_compiler(tarva_singleton& library) : library_(library) {}
    use_of_compiler(const use_of_compiler&) = delete;
    use_of_compiler& operator=(const use_of_compiler&) = delete;
    ~use_of_compiler() { library_.note_compilation(); }

  private:
    tarva_singleton& library_;
  };

  void note_compilation() noexcept;
  void start();
  void initialize_devices();
  void release_devices();

  template <typename record>
  void get_root_property(const char* null_message, const record* handle, tarva_abi_property_s** out_property);

  void submit(const std::shared_ptr<logical_ir::logical_operation>& operation);
  // For operations whose end nobody can ask for: what went wrong goes to the log.
  void free_memory(const std::shared_ptr<library_memory>& object);
  void submit_without_future(const std::shared_ptr<logical_ir::logical_operation>& operation);
  tarva_abi_future_s* submit_with_future(const std::shared_ptr<logical_ir::logical_operation>& operation);

  std::vector<std::shared_ptr<library_device>> devices_;
  abi_bridge bridge_;
  std::shared_ptr<scheduler> scheduler_;
  std::atomic<std::uint64_t> compilations_{0};
};

} // namespace oryn::tarva::library

#pragma once

namespace oryn::tarva::library::physical_ir {

class allocate_device_memory;
class allocate_host_memory;
class free_host_memory;
class free_device_memory;
class fill_on_device;
class fill_on_host;
class kernel;
class copy_same_device;
class copy_host_to_device;
class copy_device_to_host;
class copy_host_to_host;
class convert_endianness_host;
class convert_endianness_device;
class synchronize_device_to_device_release;
class synchronize_device_to_device_acquire;

// One function for each kind of step.
class operation_visitor {
public:
  virtual ~operation_visitor() = default;

  virtual void visit(const allocate_device_memory& operation) = 0;
  virtual void visit(const allocate_host_memory& operation) = 0;
  virtual void visit(const free_host_memory& operation) = 0;
  virtual void visit(const free_device_memory& operation) = 0;
  virtual void visit(const fill_on_device& operation) = 0;
  virtual void visit(const fill_on_host& operation) = 0;
  virtual void visit(const kernel& operation) = 0;
  virtual void visit(const copy_same_device& operation) = 0;
  virtual void visit(const copy_host_to_device& operation) = 0;
  virtual void visit(const copy_device_to_host& operation) = 0;
  virtual void visit(const copy_host_to_host& operation) = 0;
  virtual void visit(const convert_endianness_host& operation) = 0;
  virtual void visit(const convert_endianness_device& operation) = 0;
  virtual void visit(const synchronize_device_to_device_release& operation) = 0;
  virtual void visit(const synchronize_device_to_device_acquire& operation) = 0;
  // For an operation of a class that is not among these.
  virtual void visit_unknown() = 0;
};

} // namespace oryn::tarva::library::physical_ir

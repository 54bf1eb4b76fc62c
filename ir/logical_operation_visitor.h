#pragma once

namespace oryn::tarva::library::logical_ir {

class allocate_memory;
class free_memory;
class fill;
class kernel;
class copy_tarva_to_user;
class copy_user_to_tarva;
class copy_tarva_to_tarva;

// One function for each kind of request.
class operation_visitor {
public:
  virtual ~operation_visitor() = default;

  virtual void visit(const allocate_memory& operation) = 0;
  virtual void visit(const free_memory& operation) = 0;
  virtual void visit(const fill& operation) = 0;
  virtual void visit(const kernel& operation) = 0;
  virtual void visit(const copy_tarva_to_user& operation) = 0;
  virtual void visit(const copy_user_to_tarva& operation) = 0;
  virtual void visit(const copy_tarva_to_tarva& operation) = 0;
  // For an operation of a class that is not among these.
  virtual void visit_unknown() = 0;
};

} // namespace oryn::tarva::library::logical_ir

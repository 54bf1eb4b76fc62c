#pragma once

#include <memory>
#include <string>
#include <utility>

namespace oryn::tarva::library {

class library_program;

// What load_ir() gives: after a failed build `success` is false and `program` is an empty program.
struct build_result {
  build_result(bool is_success, std::shared_ptr<library_program> made, std::string text)
      : success(is_success), program(std::move(made)), log(std::move(text)) {}

  bool success;
  std::shared_ptr<library_program> program;
  std::string log;
};

} // namespace oryn::tarva::library

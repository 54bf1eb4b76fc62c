// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "abi/error_object.h"

#include "abi/bridge.h"
#include "properties/property_value.h"

#include <new>
#include <stdexcept>
#include <utility>

namespace oryn::tarva::library {

error_object::error_object(std::uint64_t exception_type, std::string message)
    : message_(std::move(message)), exception_type_(exception_type) {}

std::shared_ptr<error_object> error_object::set_nested_error(std::uint64_t exception_type,
                                                             std::string message) {
  if (nested_ != nullptr)
    throw std::logic_error("Error object already has a nested error, cannot set another one.");
  nested_ = std::make_shared<error_object>(exception_type, std::move(message));
  return nested_;
}

std::shared_ptr<property_base> error_object::get_property(property_path path) {
  if (is_path(path, {"ROOT"})) {
    return make_described_property(
        this, std::move(path), "Root property.",
        "The root property of an error, simply provided as the main root element.");
  }
  if (is_path(path, {"ROOT", "EXCEPTION_TYPE"})) {
    return make_described_property(this, std::move(path), "Exception type.",
                                   "The type of exception encountered.", exception_type_);
  }
  if (is_path(path, {"ROOT", "EXCEPTION_MESSAGE"})) {
    return make_described_property(this, std::move(path), "Exception message.",
                                   "A helpful message relating to the exception encountered.", message_);
  }
  return std::make_shared<property_base>();
}

std::vector<std::string> error_object::get_child_names(const property_path& path) {
  if (is_path(path, {"ROOT"}))
    return {"EXCEPTION_TYPE", "EXCEPTION_MESSAGE"};
  return {};
}

namespace {

// What the property EXCEPTION_TYPE shows.
enum exception_type : std::uint64_t {
  LOGIC_ERROR = 1,
  INVALID_ARGUMENT = 2,
  LENGTH_ERROR = 3,
  OUT_OF_RANGE = 4,
  RUNTIME_ERROR = 5,
  UNKNOWN = 6,
  STANDARD_EXCEPTION = 7
};

// The first three are mistakes of the caller; all others are failures at run time.
tarva_abi_result result_of(std::uint64_t type) {
  return type <= LENGTH_ERROR ? TARVA_ABI_LOGIC_FAILURE : TARVA_ABI_RUNTIME_FAILURE;
}

// What an error object holds, and the exception inside, if there is one.
struct exception_facts {
  std::uint64_t type;
  std::string message;
  std::exception_ptr nested;
};

exception_facts facts_of(exception_type type, const std::exception& exception) {
  const auto* outer = dynamic_cast<const std::nested_exception*>(&exception);
  return {type, exception.what(), outer ? outer->nested_ptr() : nullptr};
}

// Of classes that derive from each other the nearest one counts, so derived classes stand first.
exception_facts facts_of(const std::exception_ptr& exception, const char* unknown_message) {
  try {
    std::rethrow_exception(exception);
  } catch (const std::invalid_argument& caught) {
    return facts_of(INVALID_ARGUMENT, caught);
  } catch (const std::length_error& caught) {
    return facts_of(LENGTH_ERROR, caught);
  } catch (const std::out_of_range& caught) {
    return facts_of(OUT_OF_RANGE, caught);
  } catch (const std::logic_error& caught) {
    return facts_of(LOGIC_ERROR, caught);
  } catch (const std::runtime_error& caught) {
    return facts_of(RUNTIME_ERROR, caught);
  } catch (const std::exception& caught) {
    return facts_of(STANDARD_EXCEPTION, caught);
  } catch (...) {
    return {UNKNOWN, unknown_message, nullptr};
  }
}

// Such an exception gets no object, which would itself take memory.
bool is_lack_of_memory(const std::exception_ptr& exception) {
  try {
    std::rethrow_exception(exception);
  } catch (const std::bad_alloc&) {
    return true;
  } catch (...) {
    return false;
  }
}

// A nested exception is described even if it is a lack of memory: only the outermost one decides about the result.
void attach_nested_errors(std::exception_ptr nested, std::shared_ptr<error_object> error) {
  while (nested) {
    exception_facts facts = facts_of(nested, "Unknown exception.");
    error = error->set_nested_error(facts.type, std::move(facts.message));
    nested = std::move(facts.nested);
  }
}

} // namespace

error_description describe_exception(const std::exception_ptr& exception) {
  if (!exception)
    return {TARVA_ABI_OK, nullptr};
  if (is_lack_of_memory(exception))
    return {TARVA_ABI_OUT_OF_MEMORY, nullptr};
  exception_facts facts = facts_of(exception, "Uknown exception");
  auto error = std::make_shared<error_object>(facts.type, std::move(facts.message));
  attach_nested_errors(std::move(facts.nested), error);
  return {result_of(facts.type), std::move(error)};
}

std::pair<tarva_abi_result, tarva_abi_error_s*>
convert_exception(abi_bridge& bridge, const std::exception_ptr& exception) noexcept {
  try {
    auto [result, error] = describe_exception(exception);
    return {result, error ? bridge.make_handle<tarva_abi_error_s>(std::move(error)) : nullptr};
  } catch (...) {
    return {TARVA_ABI_UNKNOWN_FAILURE, nullptr};
  }
}

} // namespace oryn::tarva::library

// One parameter of one object as the info commands of OpenCL give it: the command, the objects it is asked
// about, and the parameter's name. What to ask in which order is in access/common/info_forms.h.
#pragma once

#include "access/common/call_handle.h"
#include "access/common/errors.h"
#include "capability/commands.h"

#include <cstddef>
#include <cstdint>

namespace oryn::skerv::common {

template <qv::operation Op>
class info_query {
public:
  // `command` is the number of `Op` under the capability of `handle`, which must outlive the query.
  info_query(const call_handle& handle, std::uint64_t command, void* object, void* device,
             std::uint32_t parameter)
      : handle_(&handle), command_(command), object_(object), device_(device), parameter_(parameter) {}

  // `reported` receives the size that the implementation tells.
  void ask(std::size_t size, void* value, std::size_t* reported) const {
    qv::record<Op> record{};
    name_objects(record);
    record.param_name = parameter_;
    record.param_value_size = size;
    record.param_value = value;
    record.param_value_size_ret = reported;
    handle_->send(command_, &record);
    check_status(record.status);
  }

  std::size_t ask_size() const {
    std::size_t size = 0;
    ask(0, nullptr, &size);
    return size;
  }

private:
  template <typename Record>
  void name_objects(Record& record) const {
    if constexpr (requires { record.context; }) {
      record.context = object_;
    } else if constexpr (requires { record.object; }) {
      record.object = object_;
      if constexpr (requires { record.device; })
        record.device = device_;
    } else {
      record.device = object_;
    }
  }

  const call_handle* handle_;
  std::uint64_t command_;
  void* object_;
  void* device_;
  std::uint32_t parameter_;
};

} // namespace oryn::skerv::common

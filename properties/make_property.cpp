#include "properties/make_property.h"

#include "properties/property.h"

#include <stdexcept>

namespace oryn::tarva::library {
namespace {

// The elements, copied; `stored` is how one of them lies there.
template <typename T, typename stored>
typename property<T>::values_type copy_elements(const value_view& value) {
  const auto* first = static_cast<const stored*>(value.data);
  return {first, first + value.element_count};
}

} // namespace

std::shared_ptr<property_base> make_property(property_interface* owner, property_path path,
                                             std::shared_ptr<const property_texts> texts,
                                             property_value& value) {
  if (path.empty())
    throw std::logic_error("Expected path to be non-empty.");
  const value_view view = value.view();
  switch (view.type) {
  case data_type::string_:
    return std::make_shared<property<std::string>>(owner, std::move(path), std::move(texts),
                                                   copy_elements<std::string, const char*>(view));
  case data_type::boolean_:
    return std::make_shared<property<bool>>(owner, std::move(path), std::move(texts),
                                            copy_elements<bool, std::uint32_t>(view));
  case data_type::uint8_:
    return std::make_shared<property<unsigned char>>(owner, std::move(path), std::move(texts),
                                                     value.take_bytes());
  case data_type::uint64_:
    return std::make_shared<property<unsigned long>>(owner, std::move(path), std::move(texts),
                                                     copy_elements<unsigned long, std::uint64_t>(view));
  default:
    return std::make_shared<property_base>(owner, std::move(path), std::move(texts));
  }
}

} // namespace oryn::tarva::library

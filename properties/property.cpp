#include "properties/property.h"

namespace oryn::tarva::library {

property<std::string>::property(property_interface* owner, property_path path,
                                std::shared_ptr<const property_texts> texts, values_type values)
    : property_base(owner, std::move(path), std::move(texts)), values_(std::move(values)) {
  value_pointers_.reserve(values_.size());
  for (const std::string& value : values_)
    value_pointers_.push_back(value.c_str());
}

template class property<bool>;
template class property<unsigned char>;
template class property<unsigned long>;

} // namespace oryn::tarva::library

#pragma once

#include <memory>
#include <utility>

namespace oryn::tarva::library {

// What every concrete operation has: its factory, since it always lives in a shared pointer, and its way to a
// visitor.
template <class Self, class Base>
class concrete_operation : public Base {
public:
  using Base::Base;

  template <class... Arguments>
  static std::shared_ptr<Self> create(Arguments&&... arguments) {
    return std::make_shared<Self>(std::forward<Arguments>(arguments)...);
  }

  void accept(typename Base::visitor& visitor) const override {
    visitor.visit(static_cast<const Self&>(*this));
  }
};

} // namespace oryn::tarva::library

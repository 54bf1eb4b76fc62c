#include "objects/kernel_signature.h"

#include <algorithm>
#include <charconv>
#include <string_view>
#include <utility>

namespace oryn::tarva::library {

bool kernel_signature::tells_something() const {
  return parameters.empty() || std::any_of(parameters.begin(), parameters.end(), [](const auto& each) {
           return each.fitting != kernel_parameter::anything && each.fitting != all_value_sizes;
         });
}

std::optional<size_triple> find_required_group_size(const std::vector<std::string>& attribute_words) {
  std::string text;
  for (const std::string& word : attribute_words)
    text += word;
  constexpr std::string_view opening = "reqd_work_group_size(";
  const std::size_t found = text.find(opening);
  if (found == std::string::npos)
    return std::nullopt;
  const char* next = text.data() + found + opening.size();
  const char* const end = text.data() + text.size();
  size_triple sizes{};
  for (std::size_t dimension = 0; dimension < sizes.size(); ++dimension) {
    const auto [behind, fault] = std::from_chars(next, end, sizes[dimension]);
    if (fault != std::errc() || sizes[dimension] == 0 || behind == end ||
        *behind != (dimension < 2 ? ',' : ')'))
      return std::nullopt;
    next = behind + 1;
  }
  return sizes;
}

std::shared_ptr<const kernel_signature> signature_table::find(const std::string& name) const {
  const std::lock_guard guard(lock_);
  const auto found = known_.find(name);
  return found == known_.end() ? nullptr : found->second;
}

void signature_table::keep(const std::string& name, std::shared_ptr<const kernel_signature> signature) {
  const std::lock_guard guard(lock_);
  known_.insert_or_assign(name, std::move(signature));
}

} // namespace oryn::tarva::library

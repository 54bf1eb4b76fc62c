#pragma once

#include "objects/kernel_parameter.h"
#include "objects/library_kernel.h"

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace oryn::tarva::library {

// What all kernels of one name of a program have in common. To learn it takes several calls for each parameter.
struct kernel_signature {
  std::vector<kernel_parameter> parameters;
  std::optional<size_triple> required_group_size; // as the attributes tell, if it had to be looked for there

  // A device that tells nothing may do so for the moment only.
  bool tells_something() const;
};

// The size in the attribute reqd_work_group_size, which implementations write with and without blanks.
std::optional<size_triple> find_required_group_size(const std::vector<std::string>& attribute_words);

// What has been learnt of the kernels of one program, by their names. For any thread.
class signature_table {
public:
  // Null: not learnt yet.
  std::shared_ptr<const kernel_signature> find(const std::string& name) const;
  void keep(const std::string& name, std::shared_ptr<const kernel_signature> signature);
  // To be held while a kernel is made and its signature learnt. An implementation may be open about the arguments of a
  // name's first kernel alone, so a second must not come between.
  std::unique_lock<std::mutex> take_turn() { return std::unique_lock(turn_); }

private:
  mutable std::mutex lock_;
  std::mutex turn_;
  std::unordered_map<std::string, std::shared_ptr<const kernel_signature>> known_;
};

} // namespace oryn::tarva::library

// The graph that each request becomes, and where its objects are afterwards, from every place they can be at.
#include "ir/logical_operation.h"
#include "scheduler/lowering.h"
#include "memory/library_memory.h"
#include "tests/pipeline/fakes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <regex>

namespace oryn::tarva::library {
namespace {

constexpr std::uint64_t object_size = 6;
std::int32_t users_block[object_size];

using objects = std::vector<std::shared_ptr<library_memory>>;
using device = std::shared_ptr<library_device>;
using request_pointer = std::shared_ptr<logical_ir::logical_operation>;

// Objects stand where the letters say: h on the host, b there in big-endian order, otherwise on that device.
struct lowered_row {
  const char* name;
  const char* places;
  request_pointer (*request)(const objects& on, const device& target);
  std::string steps; // a line each, with the letter of the device, and blocks numbered in order of appearance
  std::string edges;
  const char* places_after;
  char target = 'K';
};

request_pointer launch(const objects& on, const device& target) {
  kernel_argument_list arguments;
  for (const auto& object : on)
    arguments.add_memory(object);
  return logical_ir::kernel::create(std::make_shared<fake_kernel>(target),
                                    kernel_argument_capture(std::move(arguments)),
                                    nd_range{1, {}, {1, 1, 1}, {}});
}
request_pointer launch_twice(const objects& on, const device& target) {
  return launch({on[0], on[0]}, target);
}
request_pointer read(const objects& on, const device& /*target*/) {
  return logical_ir::copy_tarva_to_user::create(on[0], 2, 3, users_block);
}
request_pointer write(const objects& on, const device& /*target*/) {
  return logical_ir::copy_user_to_tarva::create(on[0], 2, 3, users_block);
}
request_pointer fill(const objects& on, const device& /*target*/) {
  return logical_ir::fill::create(on[0], users_block, 2, 3);
}
request_pointer free_object(const objects& on, const device& /*target*/) {
  return logical_ir::free_memory::create(on[0]);
}
request_pointer copy(const objects& on, const device& /*target*/) {
  return logical_ir::copy_tarva_to_tarva::create(on[0], on[1], 1, 2, 3);
}

std::string copy_step(const char* name, const char* blocks, const char* from, const char* to,
                      const char* count, char where) {
  return std::string(name) + ": {src_object_id=" + blocks[0] + ", dest_object_id=" + blocks[1] +
         ", src_start_position=" + from + ", dest_start_position=" + to + ", count=" + count + "} " + where +
         "\n";
}
// The release or the acquire between two devices.
std::string synchronize_step(const char* which, char from, char to, char where) {
  return std::string("synchronize_device_to_device_") + which + ": {, release_device=" + from +
         ", acquire_device=" + to + ", sync_id=1} " + where + "\n";
}
// From the host to the device.
std::string steps_to(char device, const std::string& change_of_byte_order = "") {
  return std::string("allocate_device_memory: {memory_id=1, type=int32_t, count=6} ") + device + "\n" +
         change_of_byte_order + copy_step("copy_host_to_device", "21", "0", "0", "6", device) +
         "host_memory: {memory_object_id=2} " + device + "\n";
}
// From the device, over the host, to the device K.
std::string steps_from(char device, const char* blocks) {
  const std::string old(1, blocks[0]), staging(1, blocks[1]), made(1, blocks[2]);
  return "allocate_host_memory: {memory_id=" + staging + ", type=int32_t, count=6} " + device + "\n" +
         copy_step("copy_device_to_host", (old + staging).c_str(), "0", "0", "6", device) +
         synchronize_step("release", device, 'K', device) + "free_device_memory: {memory_object_id=" + old +
         "} " + device + "\nallocate_device_memory: {memory_id=" + made + ", type=int32_t, count=6} K\n" +
         synchronize_step("acquire", device, 'K', 'K') +
         copy_step("copy_host_to_device", (staging + made).c_str(), "0", "0", "6", 'K') +
         "host_memory: {memory_object_id=" + staging + "} K\n";
}

const std::string kernel_step = "kernel: { <omitted> } K\n", kernel_on_b = "kernel: { <omitted> } B\n",
                  filled = "{memory_object_id=1, value=<omitted>, start_position=2, count=3}";
const char* const edges_of_a_move = "0>1 1>2 2>3 4>5 5>6 6>7 6>8 ";

const lowered_row rows[] = {
    {"read_host", "h", read, copy_step("copy_host_to_host", "12", "2", "0", "3", 'H'), "", "h"},
    {"read_device", "P", read, copy_step("copy_device_to_host", "12", "2", "0", "3", 'P'), "", "P"},
    {"write_host", "h", write, copy_step("copy_host_to_host", "12", "0", "2", "3", 'H'), "", "h"},
    {"write_device", "P", write, copy_step("copy_host_to_device", "12", "0", "2", "3", 'P'), "", "P"},
    {"fill_host", "h", fill, "fill_on_host: " + filled + " H\n", "", "h"},
    {"fill_device", "P", fill, "fill_on_device: " + filled + " P\n", "", "P"},
    {"free_host", "h", free_object, "host_memory: {memory_object_id=1} H\n", "", "-"},
    {"free_device", "P", free_object, "free_device_memory: {memory_object_id=1} P\n", "", "-"},
    {"copy_host_host", "hh", copy, copy_step("copy_host_to_host", "12", "1", "2", "3", 'H'), "", "hh"},
    {"copy_no_storage", "nn", copy, copy_step("copy_host_to_host", "12", "1", "2", "3", 'H'), "", "hh"},
    {"copy_host_device", "hP", copy, copy_step("copy_host_to_device", "12", "1", "2", "3", 'P'), "", "hP"},
    {"copy_device_host", "Ph", copy, copy_step("copy_device_to_host", "12", "1", "2", "3", 'P'), "", "Ph"},
    {"copy_same_device", "PP", copy, copy_step("copy_same_device", "12", "1", "2", "3", 'P'), "", "PP"},
    {"copy_between_devices", "PK", copy,
     "allocate_host_memory: {memory_id=1, type=int32_t, count=3} P\n" +
         copy_step("copy_device_to_host", "21", "1", "0", "3", 'P') +
         synchronize_step("release", 'P', 'K', 'P') + synchronize_step("acquire", 'P', 'K', 'K') +
         copy_step("copy_host_to_device", "13", "0", "2", "3", 'K') + "host_memory: {memory_object_id=1} K\n",
     "0>1 1>2 3>4 4>5 ", "PK"},
    {"launch_without_memory", "", launch, kernel_step, "", ""},
    {"launch_from_host", "h", launch, steps_to('K') + kernel_step, "0>1 1>2 2>3 ", "K"},
    {"launch_with_change_of_byte_order", "h", launch,
     steps_to('B', "convert_endianness_host: {memory_id=2} B\n") + kernel_on_b, "0>2 1>2 2>3 3>4 ", "B", 'B'},
    {"launch_with_content_in_the_order_already", "b", launch, steps_to('B') + kernel_on_b, "0>1 1>2 2>3 ",
     "B", 'B'},
    {"launch_on_the_spot", "K", launch, kernel_step, "", "K"},
    {"launch_with_one_object_twice", "K", launch_twice, kernel_step, "", "K"},
    {"launch_from_another_device", "P", launch, steps_from('P', "213") + kernel_step, edges_of_a_move, "K"},
    {"launch_from_another_device_twice", "P", launch_twice, steps_from('P', "213") + kernel_step,
     edges_of_a_move, "K"},
    {"launch_from_everywhere", "hPK", launch, steps_to('K') + steps_from('P', "435") + kernel_step,
     "0>1 1>2 2>11 3>4 4>5 5>6 7>8 8>9 9>10 9>11 ", "KKK"},
    {"launch_from_a_big_endian_device", "B", launch, steps_from('B', "213") + kernel_step, edges_of_a_move,
     "k"},
};

class lowering_of : public testing::TestWithParam<lowered_row> {
protected:
  // The host's work is done by the first device of the list.
  lowering_of() {
    for (const char letter : {'H', 'P', 'K', 'B'})
      devices_[letter] = std::make_shared<fake_device>(letter != 'B');
  }
  void TearDown() override {
    table = {};
    testing::internal::GetCapturedStderr();
  }
  void SetUp() override { testing::internal::CaptureStderr(); } // nothing of the graph is ever run

  void place(const std::shared_ptr<library_memory>& object, char where) {
    memory_state& state = table.add(object);
    if (where == 'h' || where == 'b' || where == 'n') {
      const auto block = std::make_shared<host_memory>();
      block->set_allocation(object->get_type(), object->get_num_elements());
      if (where != 'n') // an allocation that failed left no storage
        block->allocate();
      state.set_host_block(block);
    } else {
      const auto block = std::make_shared<device_memory>(devices_.at(where));
      block->set_allocation(object->get_type(), object->get_num_elements());
      state.set_device_block(block);
    }
    state.set_little_endian(where != 'b' && where != 'B');
  }
  // As in the table's rows; k and p are devices with content in the wrong order.
  char place_of(const std::shared_ptr<library_memory>& object) {
    try {
      const memory_state& state = table.find(object);
      if (state.is_on_host())
        return state.is_little_endian() ? 'h' : 'b';
      const char letter = letter_of(state.get_device_block()->get_device());
      return state.is_little_endian() == (letter != 'B') ? letter : static_cast<char>(std::tolower(letter));
    } catch (const std::logic_error& error) {
      EXPECT_STREQ(error.what(), "Could not find the last memory state in the tracking table.");
      return '-';
    }
  }
  char letter_of(const device& wanted) const {
    for (const auto& [letter, known] : devices_)
      if (known == wanted)
        return letter;
    return '?';
  }
  std::string readable(const physical_ir::physical_operation& step) {
    std::string text = step.to_string(), result;
    const std::regex identifier("(object_id|memory_id|release_device|acquire_device)=([0-9]+)");
    for (std::smatch match; std::regex_search(text, match, identifier); text = match.suffix())
      result += match.prefix().str() + match[1].str() + "=" + name_of(match[1], std::stoull(match[2]));
    return result + text + " " + letter_of(step.get_device()) + "\n";
  }
  std::string name_of(const std::string& kind, std::uint64_t identifier) {
    for (const auto& [letter, known] : devices_)
      if (kind.ends_with("device") && known->get_unique_identifier() == identifier)
        return std::string(1, letter);
    return std::to_string(blocks_.emplace(identifier, blocks_.size() + 1).first->second);
  }

  std::map<char, device> devices_;
  std::map<std::uint64_t, std::size_t> blocks_;
  memory_table table;
  std::uint64_t last_sync_id = 0;
};

TEST_P(lowering_of, request) {
  const lowered_row& row = GetParam();
  objects made;
  for (const char* where = row.places; *where != 0; ++where) {
    made.push_back(std::make_shared<library_memory>(data_type::int32_, object_size, ""));
    place(made.back(), *where);
  }
  const auto request = row.request(made, devices_.at(row.target));
  lowering lowered(request, devices_.at('H'), table, last_sync_id);
  request->accept(lowered);

  const physical_graph& graph = lowered.get_graph();
  std::string steps, edges, after;
  for (std::size_t from = 0; from < graph.nodes().size(); ++from) {
    steps += readable(*graph.nodes()[from]);
    EXPECT_EQ(graph.nodes()[from]->get_logical_operation(), request);
    for (const std::size_t to : graph.successor_indices(from))
      edges += std::to_string(from) + ">" + std::to_string(to) + " ";
  }
  EXPECT_EQ(steps, row.steps);
  EXPECT_EQ(edges, row.edges);
  for (const auto& object : made)
    after += place_of(object);
  EXPECT_EQ(after, row.places_after);
}

INSTANTIATE_TEST_SUITE_P(each, lowering_of, testing::ValuesIn(rows),
                         [](const auto& info) { return std::string(info.param.name); });

using allocation = lowering_of;

TEST_F(allocation, is_entered_once_and_its_absence_is_told) {
  const auto object = std::make_shared<library_memory>(data_type::uint8v16_, object_size, "");
  const request_pointer request = logical_ir::allocate_memory::create(object);
  lowering first(request, devices_.at('H'), table, last_sync_id),
      second(request, devices_.at('H'), table, last_sync_id);
  request->accept(first);
  ASSERT_EQ(first.get_graph().nodes().size(), 1U);
  EXPECT_EQ(readable(*first.get_graph().nodes()[0]),
            "allocate_host_memory: {memory_id=1, type=uint8v16_t, count=6} H\n");
  EXPECT_EQ(place_of(object), 'h');
  EXPECT_EQ(message_of([&] { request->accept(second); }),
            "Last memory state already exists in the tracking table, but it should not.");
  first.withdraw_allocation();
  for (const decltype(lowered_row::request) one : {read, write, fill, free_object})
    EXPECT_EQ(message_of([&] { one({object}, {})->accept(second); }),
              "Could not find the last memory state in the tracking table.");
}

} // namespace
} // namespace oryn::tarva::library

// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Values, trees and texts of properties.
#include "properties/catalogue.h"
#include "properties/element.h"
#include "properties/property_strings.h"
#include "properties/property_value.h"
#include "tests/error_of.h"

#include <gtest/gtest.h>

#include <functional>

namespace oryn::tarva::library {
namespace {

// Callers go by them, so they are on record: by their checksum.
TEST(data_types, sizes_and_names_of_all_68) {
  std::string all;
  for (std::uint64_t value = 1; value <= 68; ++value)
    all += std::string(data_type_name(data_type{value})) + " " +
           std::to_string(element_size(data_type{value})) + "\n";
  EXPECT_EQ(checksum_of(all), 16538978507871038778u) << all;
}

TEST(data_types, values_outside_the_table_are_refused) {
  static const double value = 0;
  for (const data_type type : {data_type{0}, data_type{69}, data_type{~std::uint64_t{0}}}) {
    EXPECT_EQ(error_of([&] { element_size(type); }), "Unsupported type.");
    EXPECT_EQ(error_of([&] { data_type_name(type); }), "Unsupported type.");
    EXPECT_EQ(error_of<std::runtime_error>([&] { element_to_text(&value, type, 0); }),
              "Unhandled case.  Report a bug.");
  }
}

template <class... T>
std::string text_of_second(data_type type, T... values) {
  const std::common_type_t<T...> data[] = {values...};
  return element_to_text(data, type, 1);
}

TEST(element_text, of_every_kind) {
  EXPECT_EQ(text_of_second(data_type::string_, "one", "two"), "two");
  EXPECT_EQ(text_of_second(data_type::boolean_, 1u, 0u), "false");
  EXPECT_EQ(text_of_second(data_type::boolean_, 0u, 256u), "true");
  EXPECT_EQ(text_of_second(data_type::uint8_, std::uint8_t{1}, std::uint8_t{65}), "A");
  EXPECT_EQ(text_of_second(data_type::int8_, std::int8_t{1}, std::int8_t{-1}), "\xff");
  EXPECT_EQ(text_of_second(data_type::int16_, std::int16_t{1}, std::int16_t{-32768}), "-32768");
  EXPECT_EQ(text_of_second(data_type::uint64_, 1ul, ~0ul), "18446744073709551615");
  EXPECT_EQ(text_of_second(data_type::half_, std::uint16_t{0}, std::uint16_t{0x83ff}), "-6.09756e-05");
  EXPECT_EQ(text_of_second(data_type::float_, 0.0f, 0.1f), "0.1");
  EXPECT_EQ(text_of_second(data_type::double_, 0.0, 1234567.0), "1.23457e+06");
  const std::uint16_t numbers[] = {1, 2, 3, 4, 5, 6, 7, 8};
  EXPECT_EQ(element_to_text(numbers, data_type::uint16v3_, 1), "{5, 6, 7}");
  EXPECT_EQ(element_to_text("abcdefgh", data_type::uint8v4_, 1), "{e, f, g, h}");
}

// A tree of ready-made values, by the last key of the path; "ROOT" alone has children.
class fake_owner : public property_interface {
public:
  using maker = std::function<std::shared_ptr<property_base>(fake_owner&, const property_path&)>;

  std::vector<std::pair<std::string, maker>> children;

  std::shared_ptr<property_base> get_property(property_path path) override {
    if (path == property_path{"ROOT"})
      return make_described_property(this, path, "Root <friend>", "All of 'it' & \"more\".");
    for (const auto& [name, make] : children)
      if (path == property_path{"ROOT", name})
        return make(*this, path);
    return std::make_shared<property_base>();
  }

  std::vector<std::string> get_child_names(const property_path& path) override {
    std::vector<std::string> names;
    for (const auto& [name, make] : children)
      if (path.size() == 1)
        names.push_back(name);
    return names;
  }

  template <class T>
  void add(const std::string& name, T value) {
    children.emplace_back(name, [value](fake_owner& owner, const property_path& path) {
      return make_described_property(&owner, path, "F", "D", value);
    });
  }

  std::shared_ptr<property_base> root() { return get_property({"ROOT"}); }
};

TEST(properties, without_owner_or_value) {
  EXPECT_EQ(error_of([] { property_base().get_children(); }),
            "Expected property to have a valid pointer to an object inherited from property_interface.");
  fake_owner owner;
  const auto root = owner.root();
  EXPECT_EQ(root->get_element_count(), 0u);
  EXPECT_EQ(root->get_data(), nullptr);
  EXPECT_TRUE(root->get_child("NO_SUCH")->is_empty());
  EXPECT_EQ(error_of([&] { root->element_to_string(0); }), "Expected property to contain data.");
  EXPECT_EQ(error_of([&] { root->get_data_type(); }),
            "This property has no data, therefore it cannot have a type.");
}

TEST(properties, hold_what_the_caller_reads) {
  fake_owner owner;
  const auto make_value = [&](auto value) {
    return make_described_property(&owner, {"ROOT", "X"}, "Friend", "Text.", std::move(value));
  };
  const auto strings = make_value(std::vector<std::string>{"first", "second"});
  EXPECT_EQ(strings->get_data_type(), data_type{1});
  EXPECT_STREQ(static_cast<const char* const*>(strings->get_data())[1], "second");
  EXPECT_EQ(error_of<std::out_of_range>([&] { strings->element_to_string(2); }),
            "Attempting to access element index 2 of the property but only 2 elements exist.");
  const auto expect_value = [&](auto value, std::uint64_t type, const auto& stored, const char* text) {
    const auto made = make_value(value);
    EXPECT_EQ(made->get_data_type(), data_type{type});
    EXPECT_EQ(made->get_element_count() * element_size(data_type{type}), sizeof stored);
    EXPECT_EQ(std::memcmp(made->get_data(), &stored, sizeof stored), 0) << type;
    EXPECT_EQ(made->element_to_string(made->get_element_count() - 1), text);
  };
  expect_value(true, 2, std::uint32_t{1}, "true");
  expect_value(std::vector<unsigned char>{0, 65}, 3, std::array<char, 2>{0, 65}, "A");
  expect_value(std::uint32_t{4294967295u}, 9, std::uint64_t{4294967295u}, "4294967295");
  expect_value(std::array<std::uint64_t, 3>{7, 8, 9}, 9, std::array<std::uint64_t, 3>{7, 8, 9}, "9");
  EXPECT_EQ(error_of([&] { make_described_property(&owner, {}, "", "", true); }),
            "Expected path to be non-empty.");
  EXPECT_EQ(make_value(std::vector<std::string>{})->get_data(), nullptr);
}

TEST(property_dictionaries, refuse_duplicates_and_unknown_names) {
  property_dictionary dictionary;
  dictionary.add("KEY", "first", "one");
  EXPECT_EQ(error_of([&] { dictionary.add("KEY", "second", "two"); }),
            "Inserting a duplicate entry for the fieldname \"KEY\" into the property dictionary.");
  EXPECT_EQ(dictionary.get_texts("KEY")->friendly_name, "first");
  EXPECT_EQ(error_of([&] { dictionary.get_texts("OTHER"); }),
            "Could not find the fieldname \"OTHER\" in the property dictionary.");
}

fake_owner make_tree() {
  fake_owner owner;
  owner.add("FLAG", false);
  owner.add("WORDS", std::vector<std::string>{"a<b", "plain up to the last character >"});
  owner.add("NOTHING", std::vector<unsigned char>{});
  owner.children.emplace_back("GONE", [](auto&, auto&) { return std::make_shared<property_base>(); });
  return owner;
}

TEST(text_trees, are_written_byte_for_byte) {
  fake_owner owner = make_tree();
  const auto root = owner.root();
  EXPECT_EQ(to_text_tree(root, true, true, true, true, true, true).view(),
            "Name          : ROOT\nFriendly Name : Root <friend>\n"
            "Description   : All of 'it' & \"more\".\n\n"
            "Name          : FLAG\nFriendly Name : F\nDescription   : D\n"
            "Type          : boolean\nValue         : false\n\n"
            "Name          : WORDS\nFriendly Name : F\nDescription   : D\n"
            "Type          : string\nValue         : { \n"
            "                     [0]  a<b\n"
            "                     [1]  plain up to the last character >\n"
            "                } \n"
            "Name          : NOTHING\nFriendly Name : F\nDescription   : D\n\n");
  EXPECT_EQ(to_text_tree(root, false, true, false, true, false, true).view(), "Name          : ROOT\n\n");
  EXPECT_EQ(to_text_tree(root, true, false, false, true, false, false).view(),
            "\nType          : boolean\n\nType          : string\n\n\n");
  EXPECT_EQ(to_text_tree(root, true, false, false, false, false, false).view(), "");
  EXPECT_EQ(to_text_tree(std::make_shared<property_base>(), true, true, true, true, true, true).view(), "");
}

TEST(xml_trees, are_written_byte_for_byte) {
  fake_owner owner = make_tree();
  const std::string head = "<property>\n<distinct_name>ROOT</distinct_name>\n"
                           "<friendly_name>Root &lt;friend&gt;</friendly_name>\n"
                           "<description>All of &apos;it&apos; &amp; &quot;more&quot;.</description>\n";
  const std::string texts = "</distinct_name>\n<friendly_name>F</friendly_name>\n"
                            "<description>D</description>\n";
  EXPECT_EQ(to_xml_tree(owner.root(), false).view(), head + "</property>\n");
  EXPECT_EQ(to_xml_tree(owner.root(), true).view(),
            head + "<property>\n<distinct_name>FLAG" + texts +
                "<data num_elements=\"1\" type=\"boolean\">\n<value index=\"0\">false</value>\n</data>\n"
                "</property>\n\n"
                "<property>\n<distinct_name>WORDS" +
                texts +
                "<data num_elements=\"2\" type=\"string\">\n<value index=\"0\">a&lt;b</value>\n"
                "<value index=\"1\">plain up to the last character &gt;</value>\n</data>\n</property>\n\n"
                "<property>\n<distinct_name>NOTHING" +
                texts +
                "<data num_elements=\"0\" type=\"uint8_t\">\n</data>\n</property>\n\n"
                "<property/>\n</property>\n");
  EXPECT_EQ(to_xml_tree(std::make_shared<property_base>(), true).view(), "<property/>");
}

// A caller sees a text up to its first zero byte.
TEST(text_and_xml_trees, end_where_a_caller_stops_reading_and_have_a_most_size) {
  fake_owner owner;
  owner.add("BYTES", std::vector<unsigned char>{'a', 0, 'b'});
  const std::string zero(1, '\0');
  EXPECT_TRUE(to_text_tree(owner.root(), true, false, false, false, false, true)
                  .view()
                  .ends_with("[0]  a\n" + std::string(21, ' ') + "[1]  " + zero));
  EXPECT_TRUE(to_xml_tree(owner.root(), true).view().ends_with("\">a</value>\n<value index=\"1\">" + zero));
  text_buffer text;
  text.append("kept");
  EXPECT_THROW(text.room_for(text_buffer::most_bytes), std::length_error);
  EXPECT_EQ(text.view(), "kept");
}

} // namespace
} // namespace oryn::tarva::library

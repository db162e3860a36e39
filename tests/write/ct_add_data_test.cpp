// SPDX-License-Identifier: MIT
//
// Texts and descriptors: what is laid down once, what is not, and where.
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <string_view>

#include "ctwrite/ct_keyed_hash.h"
#include "trace_builder.h"
#include "written_trace.h"

namespace CT::Test {
namespace {

using Write::ClassInfo;
using Write::FunctionInfo;
using Write::Reference;
using Write::TraceWriter;

TEST(WriteAddData, WhatSaysTheSameIsLaidDownOnce) {
  TraceWriter writer(options_of(ByteOrder::little));
  const Reference name = writer.text("name");
  EXPECT_EQ(writer.text("name"), name);
  EXPECT_NE(writer.text("na"), name);
  EXPECT_NE(writer.text("name2"), name);
  EXPECT_EQ(writer.text(std::string_view("name\0behind", 11)), name);
  const FunctionInfo info = {.type = 2, .name = name, .flags = 3, .file = name, .line = 4};
  const Reference function = writer.function(info);
  EXPECT_EQ(writer.function(info), function);
  for (FunctionInfo other : {FunctionInfo{1, name, 0, 3, name, 4},
                             {2, 0, 0, 3, name, 4},
                             {2, name, name, 3, name, 4},
                             {2, name, 0, 2, name, 4},
                             {2, name, 0, 3, 0, 4},
                             {2, name, 0, 3, name, 5}}) {
    EXPECT_NE(writer.function(other), function);
  }
  const Reference klass = writer.class_entry({.name = name});
  EXPECT_EQ(writer.class_entry({.name = name}), klass);
  EXPECT_NE(writer.class_entry({.name = 0}), klass);
}

TEST(WriteAddData, NewOnesAreSharedWithNothing) {
  TraceWriter writer(options_of(ByteOrder::little));
  std::set<Reference> seen;
  for (int i = 0; i != 3; ++i) {
    EXPECT_TRUE(seen.insert(writer.new_text("n")).second);
    EXPECT_TRUE(seen.insert(writer.new_function({})).second);
    EXPECT_TRUE(seen.insert(writer.new_class_entry({})).second);
  }
  EXPECT_TRUE(seen.insert(writer.text("n")).second);
  EXPECT_TRUE(seen.insert(writer.function({})).second);
  EXPECT_TRUE(seen.insert(writer.class_entry({})).second);
}

// A text and a descriptor are never the same, whatever their bytes.
TEST(WriteAddData, KindsDoNotMeet) {
  TraceWriter writer(options_of(ByteOrder::little));
  EXPECT_EQ(writer.class_entry({.type = 'a'}), TraceBuilder::default_orig_add_data);
  EXPECT_EQ(writer.add_data_size(), 40U);
  EXPECT_NE(writer.text("a"), TraceBuilder::default_orig_add_data);
  EXPECT_NE(writer.text(""), 0U);
}

TEST(WriteAddData, DescriptorsAreTheBuildersBytes) {
  for (const ByteOrder order : {ByteOrder::little, ByteOrder::big}) {
    TraceWriter writer(options_of(order));
    const Reference name = writer.text("1234567");
    writer.class_entry({.type = 2, .name = name, .flags = 7, .file = name, .line = 8});
    writer.function(
        {.type = 2, .name = name, .class_entry = name + 8, .flags = 9, .file = name, .line = 10});
    TraceBuilder expected(order);
    const Ref text = expected.text("1234567");
    const Ref klass = expected.klass({.name = "1234567", .flags = 7, .file = "1234567", .line = 8});
    EXPECT_EQ(klass, text + 8);
    expected.add_data(Fields().u32(0));
    expected.function(
        {.name = "1234567", .class_entry = klass, .flags = 9, .file = "1234567", .line = 10});
    expected.add_data(Fields().u32(0));
    EXPECT_EQ(finished(writer), expected.build());
  }
}

TEST(WriteAddData, DescriptorsAreAlignedAndTextsAreNot) {
  TraceWriter writer(options_of(ByteOrder::little));
  const Reference origin = TraceBuilder::default_orig_add_data;
  EXPECT_EQ(writer.text("ab"), origin);
  EXPECT_EQ(writer.text("c"), origin + 3);
  EXPECT_EQ(writer.function({}), origin + 8);
  EXPECT_EQ(writer.text("d"), origin + 56);
  EXPECT_EQ(writer.class_entry({}), origin + 64);
  EXPECT_EQ(writer.raw_add_data(as_bytes("xyz")), origin + 104);
  EXPECT_EQ(writer.text("e"), origin + 107);
}

TEST(WriteAddData, NothingLiesAtAddressNull) {
  Write::Options options = options_of(ByteOrder::little);
  options.orig_add_data = 0;
  TraceWriter first_text(options);
  EXPECT_EQ(first_text.text("a"), 1U);
  TraceWriter first_function(options);
  EXPECT_EQ(first_function.function({}), 8U);
  // Addresses go on behind the last one.
  options.orig_add_data = 0xFFFF'FFFF'FFFF'FFFE;
  TraceWriter wrapping(options);
  EXPECT_EQ(wrapping.text("a"), 0xFFFF'FFFF'FFFF'FFFE);
  EXPECT_EQ(wrapping.text("b"), 1U);
}

TEST(WriteAddData, ManyTextsStayApart) {
  TraceWriter writer(options_of(ByteOrder::little));
  std::set<Reference> seen;
  constexpr int count = 20'000;
  for (int i = 0; i != count; ++i) seen.insert(writer.text("name " + std::to_string(i)));
  EXPECT_EQ(seen.size(), static_cast<std::size_t>(count));
  const std::uint64_t size = writer.add_data_size();
  for (int i = 0; i != count; ++i) seen.insert(writer.text("name " + std::to_string(i)));
  EXPECT_EQ(seen.size(), static_cast<std::size_t>(count));
  EXPECT_EQ(writer.add_data_size(), size);
}

TEST(WriteKeyedHash, DependsOnEveryByteAndOnTheKey) {
  const std::string text = "a text of some more bytes than a word";
  const auto hash = [](const Write::KeyedHash& of, std::string_view bytes) {
    return of(as_bytes(bytes).data(), bytes.size());
  };
  const Write::KeyedHash keyed(1, 2);
  std::set<std::uint64_t> seen;
  for (std::size_t size = 0; size <= text.size(); ++size) {
    EXPECT_TRUE(seen.insert(hash(keyed, std::string_view(text).substr(0, size))).second);
  }
  for (std::size_t i = 0; i != text.size(); ++i) {
    std::string changed = text;
    changed[i] ^= 1;
    EXPECT_TRUE(seen.insert(hash(keyed, changed)).second);
  }
  EXPECT_EQ(hash(keyed, text), hash(Write::KeyedHash(1, 2), text));
  EXPECT_NE(hash(keyed, text), hash(Write::KeyedHash(2, 2), text));
  EXPECT_NE(hash(Write::KeyedHash(), text), hash(Write::KeyedHash(), text));
}

}  // namespace
}  // namespace CT::Test

// SPDX-License-Identifier: MIT
//
// The table of functions and classes when memory ends while something is added to it.
#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <string>
#include <vector>

#include "codetrace/model/ct_entity.h"
#include "failing_new.h"
#include "open_trace.h"

namespace CT::Test {
namespace {

// Enough that the tables grow several times.
constexpr std::size_t count = 300;

// A trace of many functions, each in a class of its own.
class Crowd {
 public:
  Crowd() : trace_(made(references_)) {}

  const CT::Function* function(std::size_t number) const {
    return resolve_function(trace_.file(), references_[number]);
  }
  std::shared_ptr<Entities> table() const { return Entities::make(trace_.file()); }

 private:
  static TraceBuilder made(std::vector<Ref>& references) {
    TraceBuilder trace;
    for (std::size_t i = 0; i != count; ++i) {
      const std::string number = std::to_string(i);
      const Ref klass = trace.klass({.name = "C" + number});
      references.push_back(trace.function({.name = "f" + number, .class_entry = klass}));
    }
    return trace;
  }

  std::vector<Ref> references_;
  OpenTrace trace_;
};

// Every entry of the table, and that it is found again.
std::string described(const Entities& table) {
  std::string all;
  for (const auto& entry : table.classes()) {
    EXPECT_EQ(table.find(entry.record()), &entry);
    all += text_of(entry.name()) + '#' + std::to_string(entry.id()) + ' ';
  }
  for (const auto& function : table.functions()) {
    EXPECT_EQ(&table.classes()[static_cast<std::size_t>(function.class_entry()->id())],
              function.class_entry());
    all += text_of(function.name()) + '#' + std::to_string(function.index()) + ' ';
  }
  return all;
}

TEST(EntityMemory, AFailedAllocationLeavesTheTableAsItWas) {
  const Crowd crowd;
  const auto undisturbed = crowd.table();
  for (std::size_t i = 0; i != count; ++i) undisturbed->add(crowd.function(i));
  const auto table = crowd.table();
  std::size_t failures = 0;
  for (std::size_t i = 0; i != count; ++i) {
    SCOPED_TRACE(i);
    const std::string before = described(*table);
    // Later and later, until there is no allocation left to fail.
    for (std::size_t after = 0;; ++after) {
      bool failed = false;
      {
        const FailingNew failing(after);
        try {
          table->add(crowd.function(i));
        } catch (const std::bad_alloc&) {
          failed = true;
        }
        ASSERT_EQ(failed, FailingNew::has_failed());
      }
      if (!failed) break;
      ++failures;
      ASSERT_EQ(described(*table), before) << after;
      ASSERT_EQ(table->find(crowd.function(i)), nullptr);
      ASSERT_EQ(table->functions().size(), i);
    }
    ASSERT_EQ(table->functions().size(), i + 1);
    ASSERT_EQ(table->find(crowd.function(i)), &table->functions().back());
  }
  EXPECT_EQ(described(*table), described(*undisturbed));
  EXPECT_GT(failures, 10U);
}

TEST(EntityMemory, AFailedAllocationAddsNoClass) {
  const Crowd crowd;
  const auto table = crowd.table();
  const auto all = crowd.table();
  for (std::size_t i = 0; i != count; ++i) all->add(crowd.function(i));
  std::size_t failures = 0;
  for (std::size_t i = 0; i != count; ++i) {
    const CT::ClassEntry* record = all->classes()[i].record();
    for (std::size_t after = 0;; ++after) {
      bool failed = false;
      {
        const FailingNew failing(after);
        try {
          table->add(record);
        } catch (const std::bad_alloc&) {
          failed = true;
        }
      }
      if (!failed) break;
      ++failures;
      ASSERT_EQ(table->find(record), nullptr);
      ASSERT_EQ(table->classes().size(), i);
    }
    ASSERT_EQ(table->find(record), &table->classes().back());
  }
  EXPECT_GT(failures, 5U);
}

}  // namespace
}  // namespace CT::Test

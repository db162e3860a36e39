// SPDX-License-Identifier: MIT
//
// Records that a storage is given but that were not made for it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QJsonDocument>
#include <string>
#include <utility>
#include <vector>

#include "codetrace/ct_storage.h"
#include "open_trace.h"
#include "rich_trace.h"

namespace CT::Test {
namespace {

using testing::IsEmpty;

TEST(StorageOthers, AddFunctionsRefuseRecordsOfAnotherFileWithoutAWord) {
  constexpr std::string_view text = R"(
    F: function user "f"
    startup
    c: call fn F
    return of c
    exception of c value null
    include_return of c
    include_exception of c value null
    shutdown
  )";
  for_both_orders(text, [&](OpenTrace& trace) {
    Storage& storage = trace.storage();
    trace.add(0);
    trace.add(1);
    for_both_orders(text, [&](OpenTrace& other) {
      for (std::size_t number = 0; number != 7; ++number) {
        const auto record = other.record(number);
        EXPECT_EQ(storage.add_checkpoint(*record), Storage::no_node);
        EXPECT_EQ(storage.add_function_return(*record), Storage::no_node);
        EXPECT_EQ(storage.add_function_exception(*record), Storage::no_node);
        EXPECT_EQ(storage.add_include_return(*record), Storage::no_node);
        EXPECT_EQ(storage.add_include_exception(*record), Storage::no_node);
        EXPECT_EQ(storage.add_shutdown(*record), Storage::no_node);
      }
    });
    EXPECT_THAT(trace.findings(), IsEmpty());
    EXPECT_TRUE(storage.summary().is_clean());
    EXPECT_EQ(storage.node_count(), 2);
    EXPECT_FALSE(storage.node(1)->is_complete());
    EXPECT_EQ(storage.functions().size(), 1U);
  });
}

// Numbers of the members "class" and "function" anywhere in the document.
void collect_numbers(const QJsonValue& value, const QString& key, std::vector<int>& numbers) {
  for (const QJsonValue& element : value.toArray()) collect_numbers(element, key, numbers);
  const QJsonObject object = value.toObject();
  for (auto at = object.begin(); at != object.end(); ++at) {
    if (at.key() == key) numbers.push_back(at.value().isDouble() ? at.value().toInt() : -1);
    collect_numbers(at.value(), key, numbers);
  }
}

TEST(StorageOthers, RecordsMadeWithoutAStorageAreNumberedWhenTheyAreAdded) {
  for (const ByteOrder order : both_orders) {
    OpenTrace trace(rich_trace(order));
    for (CheckpointView view(trace.file()); view.step();) {
      const auto record = Checkpoint::make_record(view, nullptr);
      if (record != nullptr) trace.storage().add_checkpoint(*record);
    }
    OpenTrace walked(rich_trace(order));
    walked.read();
    EXPECT_EQ(trace.json(), walked.json());
    EXPECT_EQ(trace.text(), walked.text());
    const QJsonObject document =
        QJsonDocument::fromJson(QByteArray::fromStdString(trace.json())).object();
    for (const auto& [key, list] : {std::pair("class", "cl"), std::pair("function", "fn")}) {
      std::vector<int> numbers;
      collect_numbers(document, QString::fromLatin1(key), numbers);
      const auto size = document.value(QLatin1String(list)).toArray().size();
      EXPECT_GT(numbers.size(), 2U);
      for (const int number : numbers) {
        EXPECT_GE(number, 0) << key;
        EXPECT_LT(number, size) << key;
      }
    }
  }
}

}  // namespace
}  // namespace CT::Test

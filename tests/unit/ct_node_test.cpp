// SPDX-License-Identifier: MIT
#include "codetrace/tree/ct_node.h"

#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <string_view>
#include <type_traits>

#include "open_trace.h"

namespace CT::Test {
namespace {

using KTime::Timestamp;
using NodeType = Node::Base::Type;

TEST(NodeType, NamesOfAllValues) {
  constexpr std::array<std::string_view, 12> names = {
      "STARTUP",     "FUNCTION_CALL", "FUNCTION_CALL", "INCLUDE_CALL",
      "SAPI_WRITE",  "SAPI_FLUSH",    "SAPI_HEADER",   "SAPI_SEND_HEADERS",
      "SCRIPT_EXIT", "SCRIPT_ERROR",  "CRASH",         "USER_EVENT"};
  for (std::size_t row = 0; row != names.size(); ++row) {
    EXPECT_EQ(Node::type_name(static_cast<NodeType>(row)), names[row]);
  }
  for (const int value : {12, 13, 1000, -1, INT32_MIN}) {
    EXPECT_EQ(Node::type_name(static_cast<NodeType>(value)), "INVALID");
  }
  static_assert(sizeof(NodeType) == 4);
}

TEST(NodeType, OfTheCheckpointThatBeginsIt) {
  constexpr std::array<NodeType, 19> begins = {NodeType::STARTUP,       NodeType::CRASH,
                                               NodeType::FUNCTION_CALL, NodeType::METHOD_CALL,
                                               NodeType::CRASH,         NodeType::CRASH,
                                               NodeType::INCLUDE_CALL,  NodeType::CRASH,
                                               NodeType::CRASH,         NodeType::SAPI_WRITE,
                                               NodeType::CRASH,         NodeType::SAPI_FLUSH,
                                               NodeType::SAPI_HEADER,   NodeType::SAPI_SEND_HEADERS,
                                               NodeType::SCRIPT_EXIT,   NodeType::SCRIPT_ERROR,
                                               NodeType::CRASH,         NodeType::USER_EVENT,
                                               NodeType::CRASH};
  for (std::size_t code = 0; code != begins.size(); ++code) {
    EXPECT_EQ(Node::type_of_begin(static_cast<Checkpoint::Type>(code)), begins[code]) << code;
  }
}

// A node begun by a record, or by none for null.
template <class Class>
std::shared_ptr<Class> make(const std::shared_ptr<const Checkpoint::Base>& begin,
                            const Timestamp& start = {}, std::uint64_t memory = 0) {
  return std::make_shared<Class>(begin != nullptr ? *begin : Checkpoint::Base(), start, memory, 5,
                                 3);
}

TEST(Node, KeepsWhatItIsMadeOf) {
  for_both_orders("include \"a\"", [](OpenTrace& trace) {
    const auto begin = trace.record();
    const Node::IncludeCall node(*begin, {}, 0, 5, 3);
    EXPECT_EQ(node.type(), NodeType::INCLUDE_CALL);
    EXPECT_EQ(node.id(), 5);
    EXPECT_EQ(node.parent_id(), 3);
    EXPECT_EQ(node.begin().checkpoint(), begin->checkpoint());
    EXPECT_EQ(node.begin().type(), begin->type());
    EXPECT_EQ(node.end(), nullptr);
  });
}

TEST(Node, GivesItsRecordsAsTheirClass) {
  for_both_orders("include \"a\"\ninclude_return of 1", [](OpenTrace& trace) {
    const auto node = make<Node::IncludeCall>(trace.record(0));
    ASSERT_TRUE(node->begin_as<Checkpoint::IncludeCall>());
    EXPECT_EQ(node->begin_as<Checkpoint::IncludeCall>()->checkpoint(), node->begin().checkpoint());
    EXPECT_EQ(text_of(node->begin_as<Checkpoint::IncludeCall>()->include()), "a");
    EXPECT_FALSE(node->begin_as<Checkpoint::FunctionCall>());
    EXPECT_FALSE(node->end_as<Checkpoint::IncludeReturn>());
    node->add_end(*trace.record(1));
    ASSERT_TRUE(node->end_as<Checkpoint::IncludeReturn>());
    EXPECT_EQ(node->end_as<Checkpoint::IncludeReturn>()->checkpoint(), node->end()->checkpoint());
    EXPECT_FALSE(node->end_as<Checkpoint::IncludeException>());
  });
}

TEST(Node, MethodCallHasATypeOfItsOwnAndTheNameOfAFunctionCall) {
  for_both_orders("F: function user \"f\"\nmethod fn F this null\ncall fn F", [](OpenTrace& trace) {
    const auto method = make<Node::FunctionCall>(trace.record(0));
    EXPECT_EQ(method->type(), NodeType::METHOD_CALL);
    EXPECT_EQ(static_cast<int>(method->type()), 2);
    EXPECT_EQ(Node::type_name(method->type()), "FUNCTION_CALL");
    EXPECT_EQ(make<Node::FunctionCall>(trace.record(1))->type(), NodeType::FUNCTION_CALL);
    EXPECT_EQ(make<Node::FunctionCall>(nullptr)->type(), NodeType::FUNCTION_CALL);
  });
}

TEST(Node, FiguresWithoutTheirFieldsAreZero) {
  for_both_orders("include \"a\"\ninclude_return @9 mem 9 of 1", [](OpenTrace& trace) {
    const auto node = make<Node::IncludeCall>(trace.record(0), {4, 0}, 100);
    node->add_end(*trace.record(1));
    EXPECT_EQ(node->ms(), 0.0);
    EXPECT_EQ(node->mem(), 0);
    EXPECT_EQ(node->ms_delta(), 0.0);
    EXPECT_EQ(node->mem_delta(), 0);
  });
}

TEST(Node, EndWithoutTimeOrMemoryLeavesTheDeltasAtZero) {
  for_both_orders("include @9 mem 900 \"a\"\ninclude_return of 1", [](OpenTrace& trace) {
    const auto node = make<Node::IncludeCall>(trace.record(0), {4, 0}, 100);
    node->add_end(*trace.record(1));
    EXPECT_EQ(node->ms(), 5000.0);
    EXPECT_EQ(node->mem(), 800);
    EXPECT_EQ(node->ms_delta(), 0.0);
    EXPECT_EQ(node->mem_delta(), 0);
  });
}

TEST(Node, NanosecondsBorrowFromTheSeconds) {
  for_both_orders("include @5.1 \"a\"\ninclude_return @4.95 of 1", [](OpenTrace& trace) {
    const auto node = make<Node::IncludeCall>(trace.record(0), {4, 900'000'000});
    EXPECT_EQ(node->ms(), 200.0);
    node->add_end(*trace.record(1));
    EXPECT_EQ(node->ms_delta(), -150.0);
  });
}

TEST(Node, LessMemoryThanAtTheStartIsNegative) {
  for_both_orders("include mem 400 \"a\"\ninclude_return mem 300 of 1", [](OpenTrace& trace) {
    const auto node = make<Node::IncludeCall>(trace.record(0), {}, 1000);
    EXPECT_EQ(node->mem(), -600);
    node->add_end(*trace.record(1));
    EXPECT_EQ(node->mem_delta(), -100);
  });
}

TEST(Node, MemoryDifferencesWrap) {
  for_both_orders("include mem 0x8000000000000000 \"a\"\ninclude_return mem 0 of 1",
                  [](OpenTrace& trace) {
                    const auto node = make<Node::IncludeCall>(trace.record(0), {}, 1);
                    EXPECT_EQ(node->mem(), INT64_MAX);
                    node->add_end(*trace.record(1));
                    EXPECT_EQ(node->mem_delta(), INT64_MIN);
                  });
}

TEST(Node, SecondEndReplacesTheFirstAndKeepsFiguresThatItCannotTell) {
  for_both_orders(R"(
    include @1 mem 100 "a"
    include_return @2 mem 150 of 1
    include_return mem 130 of 1
  )",
                  [](OpenTrace& trace) {
                    const auto node = make<Node::IncludeCall>(trace.record(0));
                    const auto first = trace.record(1);
                    node->add_end(*first);
                    ASSERT_NE(node->end(), nullptr);
                    EXPECT_EQ(node->end()->checkpoint(), first->checkpoint());
                    EXPECT_EQ(node->ms_delta(), 1000.0);
                    EXPECT_EQ(node->mem_delta(), 50);
                    node->add_end(*trace.record(2));
                    EXPECT_EQ(node->end()->checkpoint(), trace.view(2).checkpoint());
                    EXPECT_EQ(node->ms_delta(), 1000.0);
                    EXPECT_EQ(node->mem_delta(), 30);
                  });
}

// One node of each class with its fixed type, begun by any record.
template <class Class>
void expect_span(OpenTrace& trace, NodeType type) {
  const auto node = make<Class>(trace.record());
  EXPECT_EQ(node->type(), type);
  EXPECT_TRUE(node->is_valid());
  EXPECT_FALSE(node->is_complete());
  node->add_end(*trace.record());
  EXPECT_TRUE(node->is_complete());
  const auto empty = make<Class>(nullptr);
  EXPECT_FALSE(empty->is_valid());
  empty->add_end(*trace.record());
  EXPECT_FALSE(empty->is_complete());
}

template <class Class>
void expect_point(OpenTrace& trace, NodeType type) {
  const auto node = make<Class>(trace.record());
  EXPECT_EQ(node->type(), type);
  EXPECT_TRUE(node->is_valid());
  EXPECT_TRUE(node->is_complete());
  EXPECT_FALSE(make<Class>(nullptr)->is_valid());
  EXPECT_FALSE(make<Class>(nullptr)->is_complete());
}

TEST(Node, SpansAreCompleteWithAnEndAndPointsAtOnce) {
  for_both_orders("exit @1 mem 1", [](OpenTrace& trace) {
    expect_span<Node::Startup>(trace, NodeType::STARTUP);
    expect_span<Node::FunctionCall>(trace, NodeType::FUNCTION_CALL);
    expect_span<Node::IncludeCall>(trace, NodeType::INCLUDE_CALL);
    expect_span<Node::SapiWrite>(trace, NodeType::SAPI_WRITE);
    expect_point<Node::SapiFlush>(trace, NodeType::SAPI_FLUSH);
    expect_point<Node::SapiHeader>(trace, NodeType::SAPI_HEADER);
    expect_point<Node::SapiSendHeaders>(trace, NodeType::SAPI_SEND_HEADERS);
    expect_point<Node::ScriptExit>(trace, NodeType::SCRIPT_EXIT);
    expect_point<Node::ScriptError>(trace, NodeType::SCRIPT_ERROR);
    expect_point<Node::UserEvent>(trace, NodeType::USER_EVENT);
  });
}

// A class without line and members of its own.
struct Plain : Node::Base {
  Plain() : Base(static_cast<Type>(12), Record(), {}, 0, 7, -1) {}
};

TEST(Node, BaseHasNoLineAndTheCommonMembers) {
  const Plain node;
  QString text = QStringLiteral("before");
  EXPECT_FALSE(node.to_text(text));
  EXPECT_EQ(text, QStringLiteral("before"));
  QJsonObject object;
  EXPECT_TRUE(node.to_json(object));
  EXPECT_EQ(object, (QJsonObject{{QStringLiteral("id"), 7},
                                 {QStringLiteral("name"), QStringLiteral("INVALID")}}));
}

TEST(Node, WithoutBeginItHasALineWithNothingOnIt) {
  const auto line = [](const Node::Base& node) {
    QString text;
    EXPECT_TRUE(node.to_text(text));
    return text.toStdString();
  };
  EXPECT_EQ(line(*make<Node::SapiHeader>(nullptr)), "");
  EXPECT_EQ(line(*make<Node::SapiWrite>(nullptr)), "");
  EXPECT_EQ(line(*make<Node::IncludeCall>(nullptr)), "");
  EXPECT_EQ(line(*make<Node::ScriptError>(nullptr)), "");
  EXPECT_EQ(line(*make<Node::UserEvent>(nullptr)), "");
}

TEST(Node, BegunByARecordOfAnotherClassItHasNoFieldsOfItsOwn) {
  for_both_orders("exit mem 7", [](OpenTrace& trace) {
    QJsonObject object;
    EXPECT_TRUE(make<Node::ScriptError>(trace.record())->to_json(object));
    EXPECT_EQ(object.keys(), (QStringList{QStringLiteral("id"), QStringLiteral("mem"),
                                          QStringLiteral("name"), QStringLiteral("parent_id")}));
    QString text;
    EXPECT_TRUE(make<Node::FunctionCall>(trace.record())->to_text(text));
    EXPECT_TRUE(text.isEmpty());
  });
}

}  // namespace
}  // namespace CT::Test

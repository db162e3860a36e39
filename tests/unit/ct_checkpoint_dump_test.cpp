// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <QTextStream>
#include <bit>
#include <string>

#include "codetrace/model/ct_records.h"
#include "open_trace.h"
#include "rich_trace.h"

namespace CT::Test {
namespace {

std::string dump_of(const Checkpoint::Base& record) {
  return written([&](Writer& out) { record.dump(out); });
}

// As Qt prints it.
std::string pointer(const void* address) {
  QString text;
  QTextStream(&text) << address;
  return text.toStdString();
}

// The first line of a block.
std::string head(const Checkpoint::Base& record) {
  return "*** CHECKPOINT " + std::string(type_name(record.type())) + " [" +
         pointer(record.checkpoint()) + "]\n";
}

// The lines behind the first one.
std::string lines_of(OpenTrace& trace, std::size_t number = 0) {
  const auto record = trace.record(number);
  const std::string dump = dump_of(*record);
  const std::string first = head(*record);
  EXPECT_EQ(dump.substr(0, first.size()), first);
  return dump.substr(first.size());
}

std::string line(std::string_view label, std::string_view value) {
  return std::string(label) + std::string(value) + '\n';
}

TEST(CheckpointDump, RecordWithoutCommonFieldsHasItsAddressAndItsOwnLines) {
  for_both_orders("exit\nraw 11 more u8(1)\nshutdown\nevent \"hidden\" sequence 7\nflush keep 0",
                  [](OpenTrace& trace) {
                    for (std::size_t number = 0; number != 5; ++number) {
                      EXPECT_EQ(lines_of(trace, number), "");
                    }
                  });
}

TEST(CheckpointDump, CommonFieldsComeFirst) {
  for_both_orders("exit @12+1500 mem 18446744073709551615 at \"/a.php\":4294967295",
                  [](OpenTrace& trace) {
                    EXPECT_EQ(lines_of(trace),
                              "\tTIMESTAMP: 12.000002\n"
                              "\tMEMORY USAGE: 18446744073709551615\n"
                              "\tFILENAME: /a.php, LINENO: 4294967295\n");
                  });
}

TEST(CheckpointDump, MicrosecondsAreRoundedHalfUpAndNeverCarried) {
  for_both_orders(R"(
    exit @12+1499
    exit @12+999999499
    exit @12+999999500
    exit @18446744073709551615
  )",
                  [](OpenTrace& trace) {
                    EXPECT_EQ(lines_of(trace, 0), "\tTIMESTAMP: 12.000001\n");
                    EXPECT_EQ(lines_of(trace, 1), "\tTIMESTAMP: 12.999999\n");
                    EXPECT_EQ(lines_of(trace, 2), "\tTIMESTAMP: 12.1000000\n");
                    EXPECT_EQ(lines_of(trace, 3), "\tTIMESTAMP: -1.000000\n");
                  });
}

TEST(CheckpointDump, Startup) {
  for_both_orders("startup url \"u\" host \"h\" method \"GET\"", [](OpenTrace& trace) {
    EXPECT_EQ(lines_of(trace), "\tFINAL URL: u\n\tORIG URI: \n\tHOST: h\n\tMETHOD: GET\n");
  });
}

TEST(CheckpointDump, InvalidRecordsAreShownToo) {
  for_both_orders(
      "startup keep 0\nwrite_end of none keep 0\ncall fn none keep 0", [](OpenTrace& trace) {
        EXPECT_EQ(lines_of(trace, 0), "\tFINAL URL: \n\tORIG URI: \n\tHOST: \n\tMETHOD: \n");
        EXPECT_EQ(lines_of(trace, 1), "\tSTART: 0x0\n");
        EXPECT_EQ(lines_of(trace, 2), "\tFUNCTION: 0x0\n\tARG_COUNT: 0\n");
      });
}

TEST(CheckpointDump, IncludeAndItsEnds) {
  for_both_orders(R"(
    i: include "a'b.php"
    include_return of i
    write_end of none
  )",
                  [](OpenTrace& trace) {
                    EXPECT_EQ(lines_of(trace, 0), "\tINCLUDE: a'b.php\n");
                    EXPECT_EQ(lines_of(trace, 1),
                              line("\tSTART: ", pointer(trace.view(0).checkpoint())));
                    EXPECT_EQ(lines_of(trace, 2), "\tSTART: 0x0\n");
                  });
}

TEST(CheckpointDump, ExceptionOfAnIncludeIsCompactJsonOfArraysAndObjectsOnly) {
  for_both_orders(R"(
    C: class user "Err"
    include_exception of none value 5
    include_exception of none value null
    include_exception of none value undef
    include_exception of none value 1.5
    include_exception of none value [1, "k" => "v", []]
    include_exception of none value obj(C, 7)
    include_exception of none value res(none, 3)
    include_exception of none value cut("a\"b", 9)
  )",
                  [](OpenTrace& trace) {
                    const auto exception = [&](std::size_t number) {
                      const std::string label = "\tSTART: 0x0\n\tEXCEPTION: ";
                      const std::string lines = lines_of(trace, number);
                      EXPECT_EQ(lines.substr(0, label.size()), label);
                      return lines.substr(label.size());
                    };
                    for (std::size_t scalar = 0; scalar != 4; ++scalar) {
                      EXPECT_EQ(exception(scalar), "\n");
                    }
                    EXPECT_EQ(exception(4),
                              "{\"array\":{\"\\\"k\\\"\":{\"string\":\"v\"},\"0\":1,"
                              "\"2\":{\"array\":[]}}}\n");
                    EXPECT_EQ(exception(5), "{\"class\":0,\"handle\":7}\n");
                    EXPECT_EQ(exception(6), "{\"handle\":3,\"resource\":\"\"}\n");
                    EXPECT_EQ(exception(7), "{\"orig_sz\":9,\"string\":\"a\\\"b\"}\n");
                  });
}

TEST(CheckpointDump, WrittenBodyIsBareText) {
  for_both_orders("write cut(\"<b>\\n\\\"\", 10)\nwrite \"\"\nwrite \"x\" keep 0",
                  [](OpenTrace& trace) {
                    EXPECT_EQ(lines_of(trace, 0), "\tBODY: <b>\n\"**CUT**\n");
                    EXPECT_EQ(lines_of(trace, 1), "\tBODY: \n");
                    EXPECT_EQ(lines_of(trace, 2), "\tBODY: \n");
                  });
}

TEST(CheckpointDump, HeaderLineOnlyWhereThereIsOne) {
  for_both_orders(R"(
    header 3
    header 0 "X: 1"
    header 1 cut("X: ", 9)
    header 2 ""
    header 2 "\0x"
    header 255
  )",
                  [](OpenTrace& trace) {
                    EXPECT_EQ(lines_of(trace, 0), "\tOP: 3\n");
                    EXPECT_EQ(lines_of(trace, 1), "\tOP: 0\n\tHDR: X: 1\n");
                    EXPECT_EQ(lines_of(trace, 2), "\tOP: 1\n\tHDR: X: **CUT**\n");
                    EXPECT_EQ(lines_of(trace, 3), "\tOP: 2\n");
                    EXPECT_EQ(lines_of(trace, 4), "\tOP: 2\n");
                    EXPECT_EQ(lines_of(trace, 5), "\tOP: 255\n");
                  });
}

TEST(CheckpointDump, SentHeadersAndErrors) {
  for_both_orders(R"(
    send_headers 200 "HTTP/1.1 200 OK"
    send_headers 4294967295
    error 8 "it's"
    error 2147483648
  )",
                  [](OpenTrace& trace) {
                    EXPECT_EQ(lines_of(trace, 0),
                              "\tHTTP_RESPONSE_CODE: 200\n\tHTTP_STATUS_LINE: HTTP/1.1 200 OK\n");
                    EXPECT_EQ(lines_of(trace, 1), "\tHTTP_RESPONSE_CODE: -1\n");
                    EXPECT_EQ(lines_of(trace, 2), "\tERROR NUM: 8\n\tERROR MESSAGE: it's\n");
                    EXPECT_EQ(lines_of(trace, 3), "\tERROR NUM: -2147483648\n\tERROR MESSAGE: \n");
                  });
}

TEST(CheckpointDump, BuiltInFunctionWithoutClass) {
  for_both_orders(R"(
    F: function internal "strlen" flags 4294967295 file "/no" line 3
    call fn F
    call fn F args ["a'b", [1, "k" => null], cut("x", 5)]
    call fn F count 2
  )",
                  [](OpenTrace& trace) {
                    const std::string function =
                        "\tFUNCTION: 0x0\n\t\tTYPE: 1\n\t\tNAME: strlen\n\t\tFN_FLAGS: "
                        "4294967295\n";
                    EXPECT_EQ(lines_of(trace, 0), function + "\tARG_COUNT: 0\n");
                    EXPECT_EQ(lines_of(trace, 1),
                              function +
                                  "\tARG_COUNT: 3\n\tARGS: \"a'b\", array(0 => 1, \"k\" => null), "
                                  "\"x**CUT**\"\n");
                    EXPECT_EQ(lines_of(trace, 2), function + "\tARG_COUNT: 2\n\tARGS: \n");
                  });
}

TEST(CheckpointDump, UserMethodOfAUserClass) {
  for_both_orders(
      R"(
    C: class user "App\\A" flags 5 file "/a.php" line 3
    F: function user "run" class C flags 6 file "/f.php" line 9
    D: class internal "B" flags 7 file "/no" line 1
    G: function user "make" class D
    method fn F this obj(C, 7) args [true]
    call fn G
  )",
      [](OpenTrace& trace) {
        const auto* entry =
            trace.record<Checkpoint::FunctionCall>(0)->function()->class_entry()->record();
        EXPECT_EQ(lines_of(trace, 0),
                  "\tFUNCTION: 0x0\n\t\tTYPE: 2\n\t\tNAME: run\n\t\tCE: " + pointer(entry) +
                      "\n\t\t\tTYPE: 2\n\t\t\tNAME: App\\A\n\t\t\tCE_FLAGS: 5\n"
                      "\t\t\tFILENAME: /a.php, LINENO: 3\n\t\tFN_FLAGS: 6\n"
                      "\t\tFILENAME: /f.php, LINENO: 9\n\tTHIS: object(App\\A#7)\n"
                      "\tARG_COUNT: 1\n\tARGS: true\n");
        const std::string lines = lines_of(trace, 1);
        EXPECT_NE(lines.find("\t\t\tCE_FLAGS: 7\n\t\tFN_FLAGS: 0\n\tARG_COUNT: 0\n"),
                  std::string::npos);
      });
}

TEST(CheckpointDump, ReturnedAndThrownValuesAreTextInQuotes) {
  for_both_orders("return of none value \"a\\\"\\n\"\nexception of none value cut(\"x\", 5)",
                  [](OpenTrace& trace) {
                    EXPECT_EQ(lines_of(trace, 0), "\tSTART: 0x0\n\tRVAL: \"a\"\n\"\n");
                    EXPECT_EQ(lines_of(trace, 1), "\tSTART: 0x0\n\tEXCEPTION: \"x**CUT**\"\n");
                  });
}

TEST(CheckpointDump, TextStreamOfQtGetsTheSameBytes) {
  for (const ByteOrder order : both_orders) {
    OpenTrace trace(rich_trace(order));
    QByteArray streamed;
    QTextStream stream(&streamed);
    std::string expected;
    trace.read([&](const Checkpoint::Base& record) {
      EXPECT_EQ(&record.dump(stream), &stream);
      expected += dump_of(record);
      return true;
    });
    stream.flush();
    EXPECT_GT(expected.size(), 1000U);
    EXPECT_EQ(streamed.toStdString(), expected);
  }
}

}  // namespace
}  // namespace CT::Test

// SPDX-License-Identifier: MIT
//
// Which calls talk to a database, with which text, and who asked for it.
#include "ctmeasure/ct_queries.h"

#include <gtest/gtest.h>

#include <string>

#include "ctmeasure/ct_database_call.h"
#include "open_trace.h"

namespace CT::Test {
namespace {

const std::string entities =
    "P: class internal \"PDO\"\nS: class internal \"PDOStatement\"\n"
    "M: class internal \"mysqli\"\nMS: class internal \"mysqli_stmt\"\n"
    "L: class internal \"SQLite3\"\nLS: class internal \"SQLite3Stmt\"\n"
    "D: class user \"Acme\\\\Dbal\\\\Link\"\nR: class user \"Acme\\\\Notes\"\n"
    "query: function internal \"query\" class P\nexec: function internal \"exec\" class P\n"
    "prepare: function internal \"prepare\" class P\n"
    "execute: function internal \"execute\" class S\n"
    "fetch: function internal \"fetch\" class S\n"
    "mquery: function internal \"real_query\" class M\n"
    "mprepare: function internal \"prepare\" class M\n"
    "mexecute: function internal \"execute\" class MS\n"
    "mnew: function internal \"__construct\" class MS\n"
    "fquery: function internal \"mysqli_query\"\nfprepare: function internal \"mysqli_prepare\"\n"
    "fsprepare: function internal \"mysqli_stmt_prepare\"\n"
    "fexecute: function internal \"mysqli_stmt_execute\"\n"
    "pquery: function internal \"pg_query\"\npprepare: function internal \"pg_prepare\"\n"
    "pexecute: function internal \"pg_execute\"\npsend: function internal \"pg_send_query\"\n"
    "single: function internal \"querySingle\" class L\n"
    "lprepare: function internal \"prepare\" class L\n"
    "lexecute: function internal \"execute\" class LS\n"
    "own: function user \"query\" class P\nlayer: function user \"run\" class D\n"
    "notes: function user \"load\" class R\nmap: function internal \"array_map\"\n"
    "startup @10\n";

struct Found {
  Trace trace;
  Measures measures;
  std::vector<Query> list;
};

Found found_in(const std::string& text, std::size_t order = 0) {
  Found found;
  const std::string bytes = build_traces(entities + text)[order].bytes;
  EXPECT_TRUE(found.trace.open(as_bytes(bytes), bytes.size()));
  found.measures = Measures(found.trace);
  found.list = queries(found.trace, found.measures);
  return found;
}

// A query a line: its node, by whom it was prepared and entered, and its text.
std::string lines_of(const std::string& text) {
  std::string first;
  for (std::size_t order = 0; order != 2; ++order) {
    const Found found = found_in(text, order);
    std::string lines;
    for (const Query& query : found.list) {
      lines += std::to_string(query.id) + (query.only_prepares ? "p" : "") + " " +
               std::to_string(query.prepared_by) + " " + std::to_string(query.entered_by) + " " +
               std::string(query.text.view()) + (query.text.is_cut() ? "..." : "") + "\n";
    }
    if (order == 0) first = lines;
    EXPECT_EQ(lines, first);
  }
  return first;
}

TEST(Queries, AreThoseOfPhpItself) {
  EXPECT_EQ(lines_of("a: method fn query this obj(P, 1) args [\"select 1\"]\nreturn of a\n"
                     "b: method fn exec this obj(P, 1) args [cut(\"delete\", 90)]\nreturn of b\n"
                     "c: method fn own this obj(P, 1) args [\"none\"]\nreturn of c\n"
                     "d: method fn fetch this obj(S, 1) args [\"none\"]\nreturn of d\n"
                     "e: method fn mquery this obj(M, 1) args [\"select 2\"]\nreturn of e\n"
                     "f: call fn fquery args [obj(M, 1), \"select 3\"]\nreturn of f\n"
                     "g: call fn pquery args [\"select 4\"]\nreturn of g\n"
                     "h: call fn psend args [res(\"pgsql link\", 2), \"select 5\"]\nreturn of h\n"
                     "i: method fn single this obj(L, 1) args [\"select 6\", true]\nreturn of i\n"
                     "j: call fn pquery args []\nreturn of j\n"),
            "1 -1 1 select 1\n2 -1 2 delete...\n5 -1 5 select 2\n6 -1 6 select 3\n"
            "7 -1 7 select 4\n8 -1 8 select 5\n9 -1 9 select 6\n10 -1 10 \n");
}

TEST(Queries, ExecuteTheTextThatWasPreparedLast) {
  EXPECT_EQ(lines_of("a: method fn prepare this obj(P, 1) args [\"one\"]\n"
                     "return of a value obj(S, 5)\n"
                     "b: method fn prepare this obj(P, 1) args [\"two\"]\n"
                     "return of b value obj(S, 6)\n"
                     "c: method fn execute this obj(S, 5)\nreturn of c\n"
                     "d: method fn prepare this obj(P, 1) args [\"three\"]\n"
                     "return of d value obj(S, 5)\n"
                     "e: method fn execute this obj(S, 5)\nreturn of e\n"
                     "f: method fn execute this obj(S, 6)\nreturn of f\n"
                     "g: method fn execute this obj(S, 7)\nreturn of g\n"
                     "h: method fn prepare this obj(P, 1) args [\"bad\"]\n"
                     "return of h value false\n"
                     "i: method fn execute this obj(S, 0)\nreturn of i\n"),
            "1p -1 1 one\n2p -1 2 two\n3 1 3 one\n4p -1 4 three\n5 4 5 three\n6 2 6 two\n"
            "7 -1 7 \n8p -1 8 bad\n9 -1 9 \n");
}

TEST(Queries, KnowStatementsOfEachExtension) {
  EXPECT_EQ(lines_of("a: method fn mprepare this obj(M, 1) args [\"one\"]\n"
                     "return of a value obj(MS, 5)\n"
                     "b: method fn mexecute this obj(MS, 5)\nreturn of b\n"
                     "c: method fn mnew this obj(MS, 8) args [obj(M, 1), \"two\"]\nreturn of c\n"
                     "d: call fn fexecute args [obj(MS, 8)]\nreturn of d\n"
                     "e: call fn fsprepare args [obj(MS, 8), \"three\"]\nreturn of e\n"
                     "f: call fn fexecute args [obj(MS, 8)]\nreturn of f\n"
                     "g: call fn fprepare args [obj(M, 1), \"four\"]\n"
                     "return of g value obj(MS, 9)\n"
                     "h: call fn fexecute args [obj(MS, 9)]\nreturn of h\n"
                     "i: method fn lprepare this obj(L, 1) args [\"five\"]\n"
                     "return of i value obj(LS, 9)\n"
                     "j: method fn lexecute this obj(LS, 9)\nreturn of j\n"),
            "1p -1 1 one\n2 1 2 one\n3p -1 3 two\n4 3 4 two\n5p -1 5 three\n6 5 6 three\n"
            "7p -1 7 four\n8 7 8 four\n9p -1 9 five\n10 9 10 five\n");
}

TEST(Queries, KnowStatementsByNameOnTheirConnection) {
  EXPECT_EQ(lines_of("a: call fn pprepare args [res(\"l\", 1), \"s\", \"one\"]\nreturn of a\n"
                     "b: call fn pprepare args [res(\"l\", 2), \"s\", \"two\"]\nreturn of b\n"
                     "c: call fn pexecute args [res(\"l\", 1), \"s\", [7]]\nreturn of c\n"
                     "d: call fn pexecute args [res(\"l\", 2), \"s\", [7]]\nreturn of d\n"
                     "e: call fn pexecute args [\"s\", [7]]\nreturn of e\n"
                     "f: call fn pexecute args [\"t\", [7]]\nreturn of f\n"),
            "1p -1 1 one\n2p -1 2 two\n3 1 3 one\n4 2 4 two\n5 2 5 two\n6 -1 6 \n");
}

TEST(Queries, AreAskedForByTheCallerOutsideOfTheLayer) {
  EXPECT_EQ(lines_of("a: method fn notes this obj(R, 1)\n"
                     "b: call fn map args []\n"
                     "c: method fn layer this obj(D, 1)\nd: method fn layer this obj(D, 1)\n"
                     "e: method fn query this obj(P, 1) args [\"one\"]\nreturn of e\n"
                     "return of d\nreturn of c\nreturn of b\n"
                     "f: method fn query this obj(P, 1) args [\"two\"]\nreturn of f\n"
                     "return of a\n"
                     "g: method fn layer this obj(D, 1)\n"
                     "h: method fn notes this obj(R, 1)\n"
                     "i: method fn query this obj(P, 1) args [\"three\"]\n"),
            "5 -1 2 one\n6 -1 6 two\n9 -1 9 three\n");
}

TEST(Queries, AreAlikeByTextAndStack) {
  const Found found = found_in(
      "a: method fn notes this obj(R, 1)\n"
      "b: method @10+1 at \"n.php\":3 fn query this obj(P, 1) args [\"select 1\"]\n"
      "return @10+3 of b\n"
      "c: method @10+3 at \"n.php\":3 fn query this obj(P, 1) args [\"select 2\"]\n"
      "return @10+7 of c\n"
      "d: method @10+7 at \"n.php\":9 fn query this obj(P, 1) args [\"select  3\"]\n"
      "return @10+8 of d\n"
      "e: method @10+8 at \"n.php\":3 fn query this obj(P, 1) args [\"delete 3\"]\n"
      "return @10+9 of e\nreturn of a\n"
      "f: method @10+9 at \"n.php\":3 fn query this obj(P, 1) args [\"select 4\"]\n");
  const auto anywhere = like_queries(found.list, found.measures, false);
  ASSERT_EQ(anywhere.size(), 2U);
  EXPECT_EQ(anywhere[0].text, "select ?");
  EXPECT_EQ(anywhere[0].which, (std::vector<std::size_t>{0, 1, 2, 4}));
  EXPECT_EQ(anywhere[0].total_ns, 7);
  EXPECT_EQ(anywhere[0].slowest, 3);
  EXPECT_EQ(anywhere[1].text, "delete ?");
  const auto there = like_queries(found.list, found.measures, true);
  ASSERT_EQ(there.size(), 4U);
  EXPECT_EQ(there[0].which, (std::vector<std::size_t>{0, 1}));
  EXPECT_EQ(there[0].executions, 2);
  EXPECT_EQ(there[0].total_ns, 6);
  EXPECT_EQ(there[0].first, 2);
  EXPECT_EQ(there[1].which, (std::vector<std::size_t>{2}));
}

TEST(Queries, LayersAreToldByWords) {
  Trace trace;
  const std::string bytes =
      build_traces(
          "A: class user \"Wikimedia\\\\Rdbms\\\\Loader\"\nB: class user \"App\\\\NotesPage\"\n"
          "C: class user \"MyPDO\"\nE: class user \"DBConnector\"\nG: class user \"Feedback\"\n"
          "a: function user \"x\" class A\nb: function user \"sql\" class B\n"
          "c: function user \"x\" class C\nd: function user \"db_query\"\n"
          "e: function user \"x\" class E\ng: function user \"x\" class G\n"
          "h: function user \"feedback\"\n"
          "startup\ncall fn a\ncall fn b\ncall fn c\ncall fn d\ncall fn e\ncall fn g\ncall fn h\n")
          .front()
          .bytes;
  ASSERT_TRUE(trace.open(as_bytes(bytes), bytes.size()));
  std::string layers;
  for (const auto& function : trace.functions()) layers += is_database_layer(function) ? "y" : "n";
  EXPECT_EQ(layers, "ynyyynn");
}

}  // namespace
}  // namespace CT::Test

// SPDX-License-Identifier: MIT
//
// sql_calls TRACE: every SQL text that was handed to PDO or mysqli, with the place of the call and
// the time it took. A prepared statement's text is named again wherever it is executed.
#include <QRegularExpression>
#include <map>

#include "trace.h"

using CT::Checkpoint::FunctionCall, CT::Checkpoint::FunctionReturn;

// Texts of prepared statements, by the handle of the statement's object.
using Prepared = std::map<std::uint32_t, std::string>;

// The SQL text that a call handed over or executed; empty if it did neither.
std::string sql_of(const CT::Node::Base& node, const FunctionCall& call, Prepared& prepared) {
  static const QRegularExpression takes_sql(
      QStringLiteral("^(PDO::|mysqli::|mysqli_)"
                     "(exec|execute_query|multi_query|prepare|query|real_query)$"));
  const std::string name = name_of(*call.function());
  if (name == "PDOStatement::execute" || name == "mysqli_stmt::execute") {
    return prepared[call.this_value().object_handle()];
  }
  // Functions take the connection before it.
  const std::size_t place = call.function()->class_entry() == nullptr ? 1 : 0;
  const auto args = call.args();
  if (!takes_sql.match(call.function()->full_name()).hasMatch() || place >= args.size()) return {};
  std::string sql = args[place].to_escaped_string(true).toStdString();
  if (const auto returned = node.end_as<FunctionReturn>()) {
    prepared[returned->value().object_handle()] = sql;
  }
  return sql;
}

int main(int argc, char** argv) {
  if (argc != 2) return usage("sql_calls TRACE");
  const CT::Trace trace = open_trace(argv[1]);
  Prepared prepared;
  for (CT::NodeId id = 0; id != trace.node_count(); ++id) {
    const CT::Node::Base node = trace.node(id);
    const auto call = node.begin_as<FunctionCall>();
    const std::string sql = call ? sql_of(node, *call, prepared) : "";
    if (sql.empty()) continue;
    fmt::print("{}:{}  {}  {}\n", call->filename().to_string().toStdString(), call->line_no(),
               node.is_complete() ? fmt::format("{:.3f} ms", node.ms_delta()) : "never ended", sql);
  }
  return 0;
}

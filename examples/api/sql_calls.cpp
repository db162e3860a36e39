// SPDX-License-Identifier: MIT
//
// sql_calls TRACE: every SQL text that was handed to PDO or mysqli, with the place of the call and
// the time it took. A prepared statement's text is named again wherever it is executed.
#include <QRegularExpression>
#include <map>

#include "trace.h"

using CT::Checkpoint::FunctionCall, CT::Checkpoint::FunctionReturn;

// Texts of prepared statements, by the handle of the statement's object.
using Prepared = std::map<std::uint32_t, QString>;

// The SQL text that a call handed over or executed; null if it did neither.
QString sql_of(const CT::Node::Base& node, const FunctionCall& call, Prepared& prepared) {
  static const QRegularExpression takes_sql(
      QStringLiteral("^(PDO::|mysqli::|mysqli_)"
                     "(exec|execute_query|multi_query|prepare|query|real_query)$"));
  const QString name = call.function()->full_name();
  if (name == u"PDOStatement::execute" || name == u"mysqli_stmt::execute") {
    return prepared[call.this_value().object_handle()];
  }
  // Functions take the connection before it.
  const std::size_t place = call.function()->class_entry() == nullptr ? 1 : 0;
  const auto args = call.args();
  if (!takes_sql.match(name).hasMatch() || place >= args.size()) return {};
  QString sql = args[place].to_escaped_string(true);
  const auto* returned = node.end_as<FunctionReturn>();
  if (returned != nullptr) prepared[returned->value().object_handle()] = sql;
  return sql;
}

int main(int argc, char** argv) {
  if (argc != 2) {
    fmt::print(stderr, "Usage: sql_calls TRACE\n");
    return 1;
  }
  const auto trace = open_trace(argv[1]);
  if (trace == nullptr) return 1;

  Prepared prepared;
  CT::NodeReader nodes(trace->storage);
  for (CT::Storage::NodeId id = 0; id != trace->storage.node_count(); ++id) {
    const CT::Node::Base& node = nodes.read(id);
    const auto* call = node.begin_as<FunctionCall>();
    const QString sql = call == nullptr ? QString() : sql_of(node, *call, prepared);
    if (sql.isNull()) continue;
    const std::string time =
        node.is_complete() ? fmt::format("{:.3f} ms", node.ms_delta()) : "never ended";
    fmt::print("{}:{}  {}  {}\n", call->filename().to_string().toStdString(), call->line_no(), time,
               sql.toStdString());
  }
  return 0;
}

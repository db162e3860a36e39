// SPDX-License-Identifier: MIT
//
// plain_qt -S|-T|-J|-D FILE   the same outputs as a program writes them that takes the library's
//                             objects and Qt's classes: an object a record and node, QString lines
//                             through a QTextStream, one QJsonDocument
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTextStream>
#include <cstdio>
#include <memory>
#include <vector>

#include "codetrace/ct_file.h"
#include "codetrace/ct_storage.h"
#include "codetrace/render/ct_document.h"

namespace {

void write_text(const std::vector<std::shared_ptr<const CT::Node::Base>>& nodes, QTextStream& out) {
  CT::Outline outline;
  for (const auto& node : nodes) {
    const auto depth = static_cast<int>(outline.place(node->id(), node->parent_id()));
    QString line(2 * depth, QLatin1Char(' '));
    if (!node->is_complete()) line += QLatin1String("? ");
    if (node->to_text(line)) out << line << '\n';
  }
}

int run(char format, const char* name) {
  CT::File file(QFile::decodeName(name));
  if (!file.open()) return 1;
  QFile output;
  if (!output.open(stdout, QIODevice::WriteOnly)) return 1;
  QTextStream out(&output);
  CT::Storage storage(file);
  CT::CheckpointView view(file);
  std::vector<std::shared_ptr<const CT::Checkpoint::Base>> records;
  while (view.step()) {
    records.push_back(CT::Checkpoint::make_record(view, &storage.entities()));
    if (records.back() == nullptr) continue;
    storage.add_checkpoint(records.back());
    if (format == 'D') records.back()->dump(out);
  }
  std::vector<std::shared_ptr<const CT::Node::Base>> nodes;
  for (CT::Storage::NodeId id = 0; id != storage.node_count(); ++id) {
    nodes.push_back(storage.node(id));
  }
  if (format == 'T') write_text(nodes, out);
  if (format == 'J') out << QJsonDocument(CT::as_json(storage)).toJson() << "\n";
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 3 && argv[1][0] == '-') return run(argv[1][1], argv[2]);
  std::fprintf(stderr, "%s -S|-T|-J|-D FILE\n", argv[0]);
  return 2;
}

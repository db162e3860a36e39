// SPDX-License-Identifier: MIT
#include "tools/cttool/ct_tree_json.h"

#include "ctmeasure/ct_grouping.h"
#include "tools/cttool/ct_notable.h"

namespace CT::Tool {

void TreeJson::write_cut(const TreeCut& cut) {
  if (cut.folds == 0) return out_.null();
  out_.begin_object();
  out_.key("folds");
  out_.number(cut.folds);
  out_.key("nodes");
  out_.number(cut.nodes);
  out_.key("total_ns");
  out_.number(cut.total_ns);
  out_.end_object();
}

void TreeJson::write_values(const Fold& fold) {
  out_.key("text");
  out_.text(fold.count == 1 ? lines_.line(fold.first) : lines_.label(fold.first));
  if (form_ != ValueForm::full) return;
  if (fold.count == 1) return nodes_.write_values(fold.first, out_);
  for (const std::string_view name : {"this", "args", "returned", "thrown"}) {
    out_.key(name);
    out_.null();
  }
}

bool TreeJson::line(const TreeLine& line) {
  const auto id_or_null = [&](NodeId id) {
    id != Storage::no_node ? out_.number(std::int64_t{id}) : out_.null();
  };
  const Measure& first = measures_[line.fold.first];
  out_.element();
  out_.begin_object();
  out_.key("id");
  out_.number(std::int64_t{line.fold.first});
  out_.key("parent");
  id_or_null(line.parent);
  out_.key("depth");
  out_.number(std::int64_t{line.depth});
  out_.key("count");
  out_.number(std::int64_t{line.fold.count});
  out_.key("kind");
  out_.word(kind_of(trace_.type(line.fold.first)));
  out_.key("name");
  if (first.function >= 0) {
    out_.text(name_of(trace_.functions()[static_cast<std::size_t>(first.function)]));
  } else {
    out_.null();
  }
  out_.key("start_ns");
  out_.number(first.start_ns);
  out_.key("total_ns");
  out_.number(line.sums.total_ns);
  out_.key("own_ns");
  out_.number(line.sums.own_ns);
  out_.key("memory_delta");
  line.sums.has_delta ? out_.number(line.sums.memory_delta) : out_.null();
  out_.key("slowest");
  out_.number(std::int64_t{line.sums.slowest});
  const FoldOutcomes outcomes = outcomes_of(trace_, measures_, folder_, line.fold);
  out_.key("threw");
  out_.number(outcomes.threw);
  out_.key("open");
  out_.number(outcomes.open);
  write_values(line.fold);
  out_.key("left_out");
  write_cut(line.cut);
  out_.end_object();
  return out_.ok();
}

}  // namespace CT::Tool

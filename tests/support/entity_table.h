// SPDX-License-Identifier: MIT
//
// Functions and classes of a trace that is nothing but ADD DATA.
#pragma once

#include <gtest/gtest.h>

#include <QJsonDocument>
#include <memory>
#include <string>

#include "codetrace/model/ct_entity.h"
#include "codetrace/render/ct_fields_json.h"
#include "open_trace.h"
#include "trace_builder.h"
#include "written.h"

namespace CT::Test {

// A trace of ADD DATA alone, and two tables of what is in it: one that numbers, one that does not.
class Table {
 public:
  explicit Table(const TraceBuilder& trace)
      : trace_(trace),
        entities_(Entities::make(trace_.file())),
        unnumbered_(Entities::make(trace_.file(), Entities::Numbering::none)) {}

  const File& file() const { return trace_.file(); }
  const Entities& entities() const { return *entities_; }

  const ClassEntry* find_class(Ref ref) const { return resolve_class(file(), ref); }
  const Function* find_function(Ref ref) const { return resolve_function(file(), ref); }

  const Checkpoint::ClassEntry* klass(Ref ref) { return &entities_->add(find_class(ref)); }
  const Checkpoint::Function* function(Ref ref) { return &entities_->add(find_function(ref)); }
  const Checkpoint::ClassEntry& lone_class(Ref ref) const {
    return unnumbered_->add(find_class(ref));
  }
  const Checkpoint::Function& lone_function(Ref ref) const {
    return unnumbered_->add(find_function(ref));
  }

 private:
  OpenTrace trace_;
  std::shared_ptr<Entities> entities_;
  std::shared_ptr<Entities> unnumbered_;
};

// Both JSON forms, which must agree.
template <class Entry>
std::string json_of(const Entry& entry) {
  const std::string text =
      written_json(JsonWriter::Form::compact, [&](JsonWriter& out) { write_json(entry, out); });
  EXPECT_EQ(QJsonDocument(entry.as_json()).toJson(QJsonDocument::Compact).toStdString(), text);
  return text;
}

}  // namespace CT::Test
